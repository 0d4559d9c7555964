/* The rules of access control lists as they are read, attribute by attribute. */
#include "tests/unit/modules/acl_rule_nodes.h"

static const std::string GETTERS = "rpcclt_openapiAclRuleMatch";

/* One rule of each type that has all there is. */
class AclFullRulesTest : public AclRulesTest {
protected:
  AclFullRulesTest() {
    full_mac_rule(create_list(MAC_LIST, "mac"));
    full_ipv4_rule(create_list(IPV4_LIST, "four"));
    full_ipv6_rule(create_list(IPV6_LIST, "six"));
  }
  static Answers mac_answer(const std::string &missing = "") {
    return expected_list("mac", 1, {rule_nodes(10, "Permit", "FALSE", nodes_without(missing, mac_nodes()))});
  }
  static Answers ip_answer(const std::string &name, uint32_t id, const std::string &missing,
                           const std::vector<read_node> &ends, const std::vector<read_node> &rest) {
    return expected_list(name, id,
                         {rule_nodes(10, "Permit", "FALSE", nodes_without(missing, joined(ends, rest)))});
  }
  static Answers ipv4_answer(const std::string &missing = "") {
    return ip_answer("four", 2, missing, ipv4_ends(missing), ipv4_rest(missing));
  }
  static Answers ipv6_answer(const std::string &missing = "") {
    return ip_answer("six", 3, missing, ipv6_ends(missing), ipv6_rest(missing));
  }
  /* Whatever error the read of one attribute answers, the rest of the rule is there. */
  void expect_left_out(const std::string &uri, const std::string &getter, const Answers &expected) const {
    for (open_error_t rc : all_platform_errors()) {
      fault(GETTERS + getter, rc);
      EXPECT_EQ(done("GET", uri, ""), expected.xml) << getter << " " << rc;
      fault(GETTERS + getter, rc);
      EXPECT_EQ(done("GET", uri, "", "json"), expected.json) << getter << " " << rc;
    }
  }
};

TEST_F(AclFullRulesTest, EveryAttributeIsRead) {
  EXPECT_EQ(get("/acl/mac/name/mac"), mac_answer());
  EXPECT_EQ(get("/acl/ip/name/four"), ipv4_answer());
  EXPECT_EQ(get("/acl/ipv6/name/six"), ipv6_answer());
}

TEST_F(AclFullRulesTest, RuleOfAnIpv6ListIsWrittenSo) {
  EXPECT_EQ(
      done("GET", "/acl/ipv6/name/six", ""),
      "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data><acl_name>six"
      "</acl_name><acl_id>3</acl_id><inbound><interfaces></interfaces><vlans></vlans></inbound><outbound>"
      "<interfaces></interfaces><vlans></vlans></outbound><rules_number>1</rules_number><rules><rule>"
      "<sequence_number>10</sequence_number><action>Permit</action><match_all>FALSE</match_all><protocol>"
      "6(TCP)</protocol><source><ipv6>2001:db8::</ipv6><prefix_length>32</prefix_length><l4_port>equal to "
      "80</l4_port></source><destination><ipv6>fe80::1</ipv6><prefix_length>128</prefix_length><l4_port>"
      "not equal to 22</l4_port></destination><dscp>46</dscp><precedence>5</precedence><tos>ToS Bits: a0, "
      "ToS Mask: ff</tos><tcp_flags><fin>set</fin><syn>clear</syn><rst>ignore</rst><psh>ignore</psh><ack>"
      "ignore</ack><urg>ignore</urg><established>TRUE</established></tcp_flags><fragments>TRUE"
      "</fragments><routing>TRUE</routing><flow_lable>1048575</flow_lable><log>TRUE</log><assign_queue>5"
      "</assign_queue><mirror_intf>7</mirror_intf><redirect_intf>56</redirect_intf><time_range>work"
      "</time_range><rule_status>No State</rule_status><rate_limit>4294967295</rate_limit><burst_size>128"
      "</burst_size></rule></rules></rlt_data></result>\n");
}

TEST_F(AclFullRulesTest, AttributeThatCannotBeReadIsLeftOutOfAMacRule) {
  for (const read_node &read : mac_nodes())
    expect_left_out("/acl/mac/name/mac", read.function, mac_answer(read.function));
}

TEST_F(AclFullRulesTest, AttributeThatCannotBeReadIsLeftOutOfAnIpv4Rule) {
  for (const read_node &read : ipv4_rest())
    expect_left_out("/acl/ip/name/four", read.function, ipv4_answer(read.function));
  for (const char *getter :
       {"IpSrcMaskGet", "IpDstMaskGet", "L4SrcPortGet", "L4DstPortGet", "TcpEstablishedGet"})
    expect_left_out("/acl/ip/name/four", getter, ipv4_answer(getter));
}

TEST_F(AclFullRulesTest, AttributeThatCannotBeReadIsLeftOutOfAnIpv6Rule) {
  for (const read_node &read : ipv6_rest())
    expect_left_out("/acl/ipv6/name/six", read.function, ipv6_answer(read.function));
  for (const char *getter :
       {"Ipv6SrcPfxGet", "Ipv6DstPfxGet", "L4SrcPortGet", "L4DstPortGet", "TcpEstablishedGet"})
    expect_left_out("/acl/ipv6/name/six", getter, ipv6_answer(getter));
}

/* The platform of today lets no rule match every packet and have conditions; another one may. */
TEST_F(AclFullRulesTest, RuleThatMatchesAllShowsNoEndsButAllTheRest) {
  bent_output match_all(("rpcclt_openapiAclRuleMatchEveryGet"), 1);
  std::vector<read_node> of_mac = mac_nodes();
  of_mac.erase(of_mac.begin(), of_mac.begin() + 2);
  EXPECT_EQ(get("/acl/mac/name/mac"),
            expected_list("mac", 1, {rule_nodes(10, "Permit", "TRUE", nodes_without("", of_mac))}));
  EXPECT_EQ(get("/acl/ip/name/four"),
            expected_list("four", 2, {rule_nodes(10, "Permit", "TRUE", nodes_without("", ipv4_rest()))}));
  EXPECT_EQ(get("/acl/ipv6/name/six"),
            expected_list("six", 3, {rule_nodes(10, "Permit", "TRUE", nodes_without("", ipv6_rest()))}));
}

/* --- Single values ---------------------------------------------------------------------------------------
 */

TEST_F(AclRulesTest, RuleThatMatchesEveryPacketIsShort) {
  struct {
    OPEN_ACL_TYPE_t type;
    const char *uri;
  } rows[] = {{MAC_LIST, "/acl/mac/name/x"}, {IPV4_LIST, "/acl/ip/name/x"}, {IPV6_LIST, "/acl/ipv6/name/x"}};
  for (const auto &row : rows) {
    uint32_t aclId = create_list(row.type, "x");
    add(rpcclt_openapiAclRuleMatchEveryAdd, aclId, add_rule(aclId, OPEN_ACL_ACTION_DENY, 2147483647), 1u);
    EXPECT_EQ(get(row.uri), expected_list("x", aclId, {rule_nodes(2147483647, "Deny", "TRUE")}));
  }
}

TEST_F(AclRulesTest, RuleOfAMacListWithoutConditionsIsShort) {
  uint32_t aclId = create_list(MAC_LIST, "x");
  add_rule(aclId);
  EXPECT_EQ(get("/acl/mac/name/x"), expected_list("x", aclId, {rule_nodes(10, "Permit", "FALSE")}));
}

TEST_F(AclRulesTest, RulesAreInTheOrderOfTheirNumbers) {
  uint32_t aclId = create_list(MAC_LIST, "x");
  for (uint32_t ruleId : {30u, 5u, 1000000u, 6u}) add_rule(aclId, OPEN_ACL_ACTION_DENY, ruleId);
  EXPECT_EQ(get("/acl/mac/name/x"),
            expected_list("x", aclId,
                          {rule_nodes(5, "Deny", "FALSE"), rule_nodes(6, "Deny", "FALSE"),
                           rule_nodes(30, "Deny", "FALSE"), rule_nodes(1000000, "Deny", "FALSE")}));
}

TEST_F(AclRulesTest, VlansAndEthertypesOfMacRules) {
  uint32_t aclId = create_list(MAC_LIST, "x");
  struct {
    uint32_t oper, first, last, ethertype;
    const char *vlan, *hexadecimal;
  } rows[] = {{0, 1, 0, 0x0600, "1", "0x0600"},
              {0, 4094, 7, 0x86DD, "4094", "0x86DD"},
              {1, 1, 4094, 0xFFFF, "1..4094", "0xFFFF"},
              {1, 7, 7, 0x0800, "7..7", "0x0800"}};
  for (const auto &row : rows) {
    uint32_t ruleId = add_rule(aclId, OPEN_ACL_ACTION_PERMIT, 1);
    add(rpcclt_openapiAclRuleMatchMacVlanAdd, aclId, ruleId, row.oper, row.first, row.last);
    add(rpcclt_openapiAclRuleMatchMacEtherTypeAdd, aclId, ruleId, row.ethertype);
    EXPECT_EQ(get("/acl/mac/name/x"),
              expected_list("x", aclId,
                            {rule_nodes(1, "Permit", "FALSE",
                                        {text("ethertype", row.hexadecimal), text("vlan", row.vlan)})}));
    delete_rule(aclId, ruleId);
  }
}

TEST_F(AclRulesTest, ProtocolsHaveTheirNumberAndName) {
  struct {
    uint32_t protocol;
    const char *text;
  } rows[] = {{0, "0"},           {1, "1(ICMP)"}, {6, "6(TCP)"},   {50, "50"},
              {58, "58(ICMPv6)"}, {254, "254"},   {255, "255(IP)"}};
  for (OPEN_ACL_TYPE_t type : {IPV4_LIST, IPV6_LIST}) {
    uint32_t aclId = create_list(type, "x");
    for (const auto &row : rows) {
      uint32_t ruleId = add_rule(aclId, OPEN_ACL_ACTION_PERMIT, 1);
      add(rpcclt_openapiAclRuleMatchProtocolAdd, aclId, ruleId, row.protocol);
      EXPECT_EQ(get(type == IPV4_LIST ? "/acl/ip/name/x" : "/acl/ipv6/name/x"),
                expected_list("x", aclId, {ip_rule_nodes(1, row.text)}));
      delete_rule(aclId, ruleId);
    }
  }
}

TEST_F(AclRulesTest, IgmpTypeIsThatOfIpv4Rules) {
  uint32_t aclId = create_list(IPV4_LIST, "x"), ruleId = add_rule(aclId);
  add(rpcclt_openapiAclRuleMatchProtocolAdd, aclId, ruleId, 2u);
  add(rpcclt_openapiAclRuleMatchIgmpTypeAdd, aclId, ruleId, 22u);
  EXPECT_EQ(get("/acl/ip/name/x"),
            expected_list("x", aclId, {ip_rule_nodes(10, "2(IGMP)", {number("igmp_type", 22)})}));
}

TEST_F(AclRulesTest, IcmpTypesHaveTheirCode) {
  struct {
    OPEN_ACL_TYPE_t type;
    uint32_t protocol;
    const char *uri, *text;
  } rows[] = {{IPV4_LIST, 1, "/acl/ip/name/x", "1(ICMP)"}, {IPV6_LIST, 58, "/acl/ipv6/name/x", "58(ICMPv6)"}};
  for (const auto &row : rows) {
    uint32_t aclId = create_list(row.type, "x"), ruleId = add_rule(aclId);
    add(rpcclt_openapiAclRuleMatchProtocolAdd, aclId, ruleId, row.protocol);
    add(rpcclt_openapiAclRuleMatchIcmpTypeCodeAdd, aclId, ruleId, OPEN_TRUE, 3u, 4u);
    EXPECT_EQ(get(row.uri),
              expected_list("x", aclId,
                            {ip_rule_nodes(10, row.text, {number("icmp_type", 3), number("icmp_code", 4)})}));
    add(rpcclt_openapiAclRuleMatchIcmpTypeCodeAdd, aclId, ruleId, OPEN_FALSE, 255u, 0u);
    EXPECT_EQ(
        get(row.uri),
        expected_list("x", aclId,
                      {ip_rule_nodes(10, row.text, {number("icmp_type", 255), number("icmp_code", 256)})}));
  }
}

TEST_F(AclRulesTest, BooleansThatAreOffAreShown) {
  uint32_t aclId = create_list(IPV6_LIST, "x"), ruleId = add_rule(aclId);
  add(rpcclt_openapiAclRuleMatchFragmentsAdd, aclId, ruleId, 0u);
  add(rpcclt_openapiAclRuleMatchRoutingAdd, aclId, ruleId, 0u);
  add(rpcclt_openapiAclRuleMatchLoggingAdd, aclId, ruleId, 0u);
  EXPECT_EQ(get("/acl/ipv6/name/x"),
            expected_list("x", aclId,
                          {ip_rule_nodes(10, "255(IP)",
                                         {text("fragments", "FALSE"), text("routing", "FALSE"),
                                          text("log", "FALSE")})}));
}

/* --- TCP flags -------------------------------------------------------------------------------------------
 */

TEST(AclTcpFlags, AreSetClearOrIgnored) {
  struct {
    uint32_t flags, mask;
    const char *xml;
  } rows[] = {
      {0x01, 0x03,
       "<fin>set</fin><syn>clear</syn><rst>ignore</rst><psh>ignore</psh><ack>ignore</ack><urg>ignore</urg>"},
      {0x3F, 0x00,
       "<fin>ignore</fin><syn>ignore</syn><rst>ignore</rst><psh>ignore</psh><ack>ignore</ack><urg>ignore</"
       "urg>"},
      {0x00, 0x3F,
       "<fin>clear</fin><syn>clear</syn><rst>clear</rst><psh>clear</psh><ack>clear</ack><urg>clear</urg>"},
      {0x3F, 0x3F, "<fin>set</fin><syn>set</syn><rst>set</rst><psh>set</psh><ack>set</ack><urg>set</urg>"},
      {0x2A, 0x3C,
       "<fin>ignore</fin><syn>ignore</syn><rst>clear</rst><psh>set</psh><ack>clear</ack><urg>set</urg>"},
      {0xFFFFFFC0, 0xFFFFFFC1,
       "<fin>clear</fin><syn>ignore</syn><rst>ignore</rst><psh>ignore</psh><ack>ignore</ack><urg>ignore</"
       "urg>"},
  };
  for (const auto &row : rows) {
    node_t *tree = new_tree();
    EXPECT_EQ(append_acl_rule_tcp_flags_string_by_value(tree, row.flags, row.mask), OPEN_E_NONE);
    char *xml = nullptr;
    print_tree_by_xml(tree, &xml);
    EXPECT_STREQ(xml, row.xml);
    free(xml);
    free_tree(tree);
  }
  EXPECT_EQ(append_acl_rule_tcp_flags_string_by_value(nullptr, 1, 1), OPEN_E_PARAM);
}

/* --- Where "established" goes ----------------------------------------------------------------------------
 */

/* The same for IPv4 and IPv6. */
class AclEstablishedTest : public AclRulesTest, public testing::WithParamInterface<OPEN_ACL_TYPE_t> {
protected:
  AclEstablishedTest() { aclId = create_list(GetParam(), "x"); }
  uint32_t tcp_rule() const {
    uint32_t ruleId = add_rule(aclId);
    add(rpcclt_openapiAclRuleMatchProtocolAdd, aclId, ruleId, 6u);
    return ruleId;
  }
  void add_syn(uint32_t ruleId) const { add(rpcclt_openapiAclRuleMatchTcpFlagsAdd, aclId, ruleId, 2u, 2u); }
  void add_established(uint32_t ruleId, bool value) const {
    add(rpcclt_openapiAclRuleMatchTcpEstablishedAdd, aclId, ruleId, value ? 1u : 0u);
  }
  void expect_rules(const std::vector<result_nodes> &rest) const {
    std::vector<result_nodes> rules;
    for (const result_nodes &nodes : rest)
      rules.push_back(ip_rule_nodes(static_cast<uint32_t>(10 * rules.size() + 10), "6(TCP)", nodes));
    EXPECT_EQ(get(GetParam() == IPV4_LIST ? "/acl/ip/name/x" : "/acl/ipv6/name/x"),
              expected_list("x", aclId, rules));
  }
  static result_node syn(const result_nodes &established_nodes = {}) {
    return tcp_flags({"ignore", "set", "ignore", "ignore", "ignore", "ignore"}, established_nodes);
  }
  uint32_t aclId;
};

TEST_P(AclEstablishedTest, IntoTheFlagsOfTheSameRule) {
  uint32_t ruleId = tcp_rule();
  add_syn(ruleId);
  add_established(ruleId, false);
  expect_rules({{syn({established(false)})}});
}

TEST_P(AclEstablishedTest, NowhereWhenNoRuleSoFarHasFlags) {
  add_established(tcp_rule(), true);
  add_syn(tcp_rule());
  expect_rules({{}, {syn()}});
}

TEST_P(AclEstablishedTest, IntoTheFlagsOfTheRuleBefore) {
  add_syn(tcp_rule());
  add_established(tcp_rule(), true);
  expect_rules({{syn({established(true)})}, {}});
}

TEST_P(AclEstablishedTest, IntoTheFlagsOfTheLastRuleThatHasSome) {
  add_syn(tcp_rule());
  add_syn(tcp_rule());
  tcp_rule();
  add_established(tcp_rule(), true);
  add_syn(tcp_rule());
  expect_rules({{syn()}, {syn({established(true)})}, {}, {}, {syn()}});
}

/* XML shows each of them, JSON the last. */
TEST_P(AclEstablishedTest, OfSeveralRulesIntoTheSameFlags) {
  uint32_t first = tcp_rule();
  add_syn(first);
  add_established(first, true);
  add_established(tcp_rule(), true);
  add_established(tcp_rule(), false);
  result_node three = {established(true).xml + established(true).xml + established(false).xml,
                       established(false).json};
  expect_rules({{syn({three})}, {}, {}});
}

TEST_P(AclEstablishedTest, FlagsThatCannotBeReadAreNoFlags) {
  add_syn(tcp_rule());
  uint32_t second = tcp_rule();
  add_syn(second);
  add_established(second, true);
  fault("rpcclt_openapiAclRuleMatchTcpFlagsGet", OPEN_E_TIMEOUT, 1, 1);
  Answers expected = expected_list(
      "x", aclId, {ip_rule_nodes(10, "6(TCP)", {syn({established(true)})}), ip_rule_nodes(20, "6(TCP)")});
  EXPECT_EQ(done("GET", GetParam() == IPV4_LIST ? "/acl/ip/name/x" : "/acl/ipv6/name/x", ""), expected.xml);
}

INSTANTIATE_TEST_SUITE_P(Lists, AclEstablishedTest, testing::Values(IPV4_LIST, IPV6_LIST));

/* --- Common attributes on their own ----------------------------------------------------------------------
 */

TEST_F(AclRulesTest, CommonAttributesAnswerForTheLastRead) {
  uint32_t aclId = create_list(MAC_LIST, "x"), bare = add_rule(aclId), full = add_rule(aclId);
  add_common(aclId, full);
  node_t *tree = new_tree();
  EXPECT_EQ(append_acl_rules_common_info(handle, aclId, bare, tree), OPEN_E_NOT_FOUND);
  EXPECT_EQ(get_next_node(tree), nullptr);
  for (const char *getter :
       {"LoggingGet", "AssignQueueGet", "MirrorGet", "RedirectGet", "TimeRangeGet", "TimeRangeStatusGet"}) {
    fault(GETTERS + getter, OPEN_E_TIMEOUT);
    EXPECT_EQ(append_acl_rules_common_info(handle, aclId, full, tree), OPEN_E_NONE) << getter;
  }
  fault(GETTERS + "RateLimitGet", OPEN_E_TIMEOUT);
  EXPECT_EQ(append_acl_rules_common_info(handle, aclId, full, tree), OPEN_E_TIMEOUT);
  free_tree(tree);
}
