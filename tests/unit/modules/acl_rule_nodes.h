/* Rules that have every match and attribute there is, and how the module answers for them, in full or without
 * what one platform function reads. */
#ifndef KESTREL_TESTS_MODULES_ACL_RULE_NODES_H
#define KESTREL_TESTS_MODULES_ACL_RULE_NODES_H

#include "tests/unit/modules/acl_fixture.h"

/* A node and the function, without "rpcclt_openapiAclRuleMatch", that reads what is in it. */
struct read_node {
  std::string function;
  result_node node;
};

/* The nodes but those that the function `missing` reads. */
inline result_nodes nodes_without(const std::string &missing, const std::vector<read_node> &nodes) {
  result_nodes left;
  for (const read_node &read : nodes) {
    if (read.function != missing) left.push_back(read.node);
  }
  return left;
}

/* Each of the words is "ignore", "set" or "clear". */
inline result_node tcp_flags(const std::vector<const char *> &words, const result_nodes &established = {}) {
  static const char *const names[] = {"fin", "syn", "rst", "psh", "ack", "urg"};
  result_nodes nodes;
  for (const char *word : words) nodes.push_back(text(names[nodes.size()], word));
  nodes.insert(nodes.end(), established.begin(), established.end());
  return branch("tcp_flags", nodes);
}

inline result_node established(bool value) {
  return text("established", value ? "TRUE" : "FALSE");
}

inline std::vector<read_node> common_nodes() {
  return {
      {"LoggingGet", text("log", "TRUE")},
      {"AssignQueueGet", number("assign_queue", 5)},
      {"MirrorGet", number("mirror_intf", 7)},
      {"RedirectGet", number("redirect_intf", 56)},
      {"TimeRangeGet", text("time_range", "work")},
      {"TimeRangeStatusGet", text("rule_status", "No State")},
      {"RateLimitGet", number("rate_limit", 4294967295)},
      {"RateLimitGet", number("burst_size", 128)},
  };
}

inline result_node mac_address(const std::string &end, const std::string &mac, const std::string &mask) {
  return branch(end, {text("mac", mac), text("mask", mask)});
}

inline std::vector<read_node> joined(std::vector<read_node> nodes, const std::vector<read_node> &more) {
  nodes.insert(nodes.end(), more.begin(), more.end());
  return nodes;
}

inline std::vector<read_node> mac_nodes() {
  return joined(
      {
          {"MacSrcMacGet", mac_address("source", "02:00:5E:00:00:0A", "FF:FF:FF:00:00:00")},
          {"MacDstMacGet", mac_address("destination", "01:80:C2:00:00:00", "FF:FF:FF:FF:FF:FF")},
          {"MacEtherTypeGet", text("ethertype", "0x0806")},
          {"MacVlanGet", text("vlan", "10..20")},
          {"MacCosGet", number("cos", 7)},
      },
      common_nodes());
}

/* --- IPv4 and IPv6 ---------------------------------------------------------------------------------------
 */

inline result_node ip_end(const std::string &end, const std::string &missing, const std::string &read,
                          const std::string &address, const std::string &mask, const std::string &port_read,
                          const std::string &port) {
  return branch(end, nodes_without(missing, {{read, text("ip", address)},
                                             {read, text("mask", mask)},
                                             {port_read, text("l4_port", port)}}));
}

inline result_node ipv6_end(const std::string &end, const std::string &missing, const std::string &read,
                            const std::string &prefix, int length, const std::string &port_read,
                            const std::string &port) {
  return branch(end, nodes_without(missing, {{read, text("ipv6", prefix)},
                                             {read, number("prefix_length", length)},
                                             {port_read, text("l4_port", port)}}));
}

/* What IPv4 and IPv6 rules for TCP have in the same order. */
inline std::vector<read_node> tcp_nodes(const std::string &missing) {
  result_nodes inside = nodes_without(missing, {{"TcpEstablishedGet", established(true)}});
  return {
      {"DscpGet", number("dscp", 46)},
      {"PrecedenceGet", number("precedence", 5)},
      {"TosGet", text("tos", "ToS Bits: a0, ToS Mask: ff")},
      {"TcpFlagsGet", tcp_flags({"set", "clear", "ignore", "ignore", "ignore", "ignore"}, inside)},
      {"FragmentsGet", text("fragments", "TRUE")},
  };
}

inline std::vector<read_node> ipv4_ends(const std::string &missing = "") {
  return {
      {"never", text("protocol", "6(TCP)")},
      {"never", ip_end("source", missing, "IpSrcMaskGet", "10.0.0.0", "255.0.0.0", "L4SrcPortGet",
                       "greater than 1023")},
      {"never", ip_end("destination", missing, "IpDstMaskGet", "192.0.2.1", "255.255.255.255", "L4DstPortGet",
                       "1000..2000")},
  };
}

inline std::vector<read_node> ipv6_ends(const std::string &missing = "") {
  return {
      {"never", text("protocol", "6(TCP)")},
      {"never",
       ipv6_end("source", missing, "Ipv6SrcPfxGet", "2001:db8::", 32, "L4SrcPortGet", "equal to 80")},
      {"never",
       ipv6_end("destination", missing, "Ipv6DstPfxGet", "fe80::1", 128, "L4DstPortGet", "not equal to 22")},
  };
}

/* All that follows the ends. */
inline std::vector<read_node> ipv4_rest(const std::string &missing = "") {
  return joined(tcp_nodes(missing), common_nodes());
}

inline std::vector<read_node> ipv6_rest(const std::string &missing = "") {
  return joined(joined(tcp_nodes(missing), {{"RoutingGet", text("routing", "TRUE")},
                                            {"FlowLabelGet", number("flow_lable", 1048575)}}),
                common_nodes());
}

/* --- The rules themselves --------------------------------------------------------------------------------
 */

class AclRulesTest : public AclTest {
protected:
  void add_common(uint32_t aclId, uint32_t ruleId) const {
    add(rpcclt_openapiAclRuleMatchLoggingAdd, aclId, ruleId, 1u);
    add(rpcclt_openapiAclRuleMatchAssignQueueAdd, aclId, ruleId, 5u);
    add(rpcclt_openapiAclRuleMatchMirrorAdd, aclId, ruleId, 7u);
    add(rpcclt_openapiAclRuleMatchRedirectAdd, aclId, ruleId, 56u);
    add_time_range(aclId, ruleId, "work");
    add(rpcclt_openapiAclRuleMatchRateLimitAdd, aclId, ruleId, 4294967295u, 128u);
  }
  void add_tcp(uint32_t aclId, uint32_t ruleId) const {
    add(rpcclt_openapiAclRuleMatchDscpAdd, aclId, ruleId, 46u);
    add(rpcclt_openapiAclRuleMatchPrecedenceAdd, aclId, ruleId, 5u);
    add_texts(rpcclt_openapiAclRuleMatchTosAdd, aclId, ruleId, "A0", "ff");
    add(rpcclt_openapiAclRuleMatchFragmentsAdd, aclId, ruleId, 1u);
    add(rpcclt_openapiAclRuleMatchTcpFlagsAdd, aclId, ruleId, 0x01u, 0x03u);
    add(rpcclt_openapiAclRuleMatchTcpEstablishedAdd, aclId, ruleId, 1u);
  }
  uint32_t full_mac_rule(uint32_t aclId) const {
    uint32_t ruleId = add_rule(aclId);
    add_texts(rpcclt_openapiAclRuleMatchMacSrcMacAdd, aclId, ruleId, "02:00:5e:00:00:0a",
              "ff:ff:ff:00:00:00");
    add_texts(rpcclt_openapiAclRuleMatchMacDstMacAdd, aclId, ruleId, "01:80:C2:00:00:00",
              "FF:FF:FF:FF:FF:FF");
    add(rpcclt_openapiAclRuleMatchMacEtherTypeAdd, aclId, ruleId, 0x0806u);
    add(rpcclt_openapiAclRuleMatchMacVlanAdd, aclId, ruleId, OPEN_ACL_VLAN_RANGE, 10u, 20u);
    add(rpcclt_openapiAclRuleMatchMacCosAdd, aclId, ruleId, 7u);
    add_common(aclId, ruleId);
    return ruleId;
  }
  uint32_t full_ipv4_rule(uint32_t aclId) const {
    uint32_t ruleId = add_rule(aclId);
    add(rpcclt_openapiAclRuleMatchProtocolAdd, aclId, ruleId, 6u);
    add(rpcclt_openapiAclRuleMatchIpSrcMaskAdd, aclId, ruleId, address("10.0.0.0"), address("255.0.0.0"));
    add(rpcclt_openapiAclRuleMatchIpDstMaskAdd, aclId, ruleId, address("192.0.2.1"),
        address("255.255.255.255"));
    add(rpcclt_openapiAclRuleMatchL4SrcPortAdd, aclId, ruleId, OPEN_ACL_L4_PORT_GREATER_THAN, 1023u, 0u);
    add(rpcclt_openapiAclRuleMatchL4DstPortAdd, aclId, ruleId, OPEN_ACL_L4_PORT_RANGE, 1000u, 2000u);
    add_tcp(aclId, ruleId);
    add_common(aclId, ruleId);
    return ruleId;
  }
  uint32_t full_ipv6_rule(uint32_t aclId) const {
    uint32_t ruleId = add_rule(aclId);
    add(rpcclt_openapiAclRuleMatchProtocolAdd, aclId, ruleId, 6u);
    add(rpcclt_openapiAclRuleMatchIpv6SrcPfxAdd, aclId, ruleId, address("2001:db8::"), 32u);
    add(rpcclt_openapiAclRuleMatchIpv6DstPfxAdd, aclId, ruleId, address("fe80::1"), 128u);
    add(rpcclt_openapiAclRuleMatchL4SrcPortAdd, aclId, ruleId, OPEN_ACL_L4_PORT_EQUAL, 80u, 0u);
    add(rpcclt_openapiAclRuleMatchL4DstPortAdd, aclId, ruleId, OPEN_ACL_L4_PORT_NOT_EQUAL, 22u, 0u);
    add_tcp(aclId, ruleId);
    add(rpcclt_openapiAclRuleMatchRoutingAdd, aclId, ruleId, 1u);
    add(rpcclt_openapiAclRuleMatchFlowLabelAdd, aclId, ruleId, 1048575u);
    add_common(aclId, ruleId);
    return ruleId;
  }
};

#endif
