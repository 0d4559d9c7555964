/* Tests of the TCAM module: the documents it answers with. */
#ifndef KESTREL_TESTS_MODULES_TCAM_FIXTURE_H
#define KESTREL_TESTS_MODULES_TCAM_FIXTURE_H

#include "modules/rest_module_tcam.h"
#include "platform/api/openapi_tcam.h"
#include "tests/support/platform_fixture.h"
#include "tests/support/result_data.h"
#include "tests/unit/modules/bent_platform.h"

#include <string.h>

/* What GET /tcam/policy/{id} shows; here of a policy that matches everything and does nothing. */
struct shown_policy {
  int64_t id = 1;
  int64_t priority = 0;
  std::string type = "OpenFlow policy";
  std::string rule_num = "0";
  int64_t rule_priority = 0;
  std::string version = "0.1";
  int64_t header_length = 12;

  std::string dst_mac = "0:0:0:0:0:0";
  std::string dst_ip = "0.0.0.0";
  std::string dst_ip_mask = "0.0.0.0";
  std::string dst_ipv6 = "::";
  std::string dst_ipv6_mask = "::";
  int64_t dst_port = 0;
  int64_t dst_port_mask = 0;
  std::string src_mac = "0:0:0:0:0:0";
  std::string src_ip = "0.0.0.0";
  std::string src_ip_mask = "0.0.0.0";
  std::string src_ipv6 = "::";
  std::string src_ipv6_mask = "::";
  int64_t src_port = 0;
  int64_t src_port_mask = 0;
  int64_t dscp = 0;
  int64_t dscp_mask = 0;
  int64_t protocol = 0;
  int64_t protocol_mask = 0;
  int64_t vlan_id = 0;
  int64_t vlan_priority = 0;
  std::string ether_type = "0x0";

  uint32_t actions = 0; /* OPEN_TCAM_ACTION_... bits */

  int64_t new_dscp = 0;
  std::string new_tpid = "0x0";
  int64_t redirect_if_num = 0;
  std::string new_src_mac = "0:0:0:0:0:0";
  std::string new_dst_mac = "0:0:0:0:0:0";
  int64_t new_vlan_id = 0;
  int64_t new_vlan_priority = 0;
};

inline result_node shown_classifiers(const shown_policy &p) {
  return branch("classifiers", {text("dst_mac", p.dst_mac),
                                text("dst_ip", p.dst_ip),
                                text("dst_ip_mask", p.dst_ip_mask),
                                text("dst_ipv6", p.dst_ipv6),
                                text("dst_ipv6_mask", p.dst_ipv6_mask),
                                number("dst_port_icmp_code", p.dst_port),
                                number("dst_port_icmp_code_mask", p.dst_port_mask),
                                text("src_mac", p.src_mac),
                                text("src_ip", p.src_ip),
                                text("src_ip_mask", p.src_ip_mask),
                                text("src_ipv6", p.src_ipv6),
                                text("src_ipv6_mask", p.src_ipv6_mask),
                                number("src_port_icmp_code", p.src_port),
                                number("src_port_icmp_code_mask", p.src_port_mask),
                                number("ip_dscp", p.dscp),
                                number("ip_dscp_mask", p.dscp_mask),
                                number("ip_protocol", p.protocol),
                                number("ip_protocol_mask", p.protocol_mask),
                                number("vlan_id", p.vlan_id),
                                number("vlan_priority", p.vlan_priority),
                                text("ether_type", p.ether_type)});
}

inline result_node shown_actions(uint32_t actions) {
  auto word = [&](uint32_t bit) { return std::string((actions & bit) ? "Yes" : "No"); };
  return branch("action_type", {text("drop", word(0x01)), text("redirect_another_port", word(0x02)),
                                text("rewrite_outer_vlan", word(0x04)), text("rewrite_src_mac", word(0x08)),
                                text("rewrite_dst_mac", word(0x10)), text("rewrite_priority", word(0x20)),
                                text("rewrite_outer_TPID.", "rewrite_outer_TPID", word(0x40)),
                                text("redirect_cpu", word(0x80))});
}

inline Answers expected_policy(const shown_policy &p) {
  result_node header =
      branch("policy_header", {text("version", p.version), number("header_length", p.header_length)});
  result_node values =
      branch("action_value", {number("dscp", p.new_dscp), text("ether_type", p.new_tpid),
                              number("redirect_if_num", p.redirect_if_num), text("src_mac", p.new_src_mac),
                              text("dst_mac", p.new_dst_mac), number("vlan_id", p.new_vlan_id),
                              number("vlan_priority", p.new_vlan_priority)});
  return expected_data({branch("policy", {number("policy_id", p.id), number("policy_priority", p.priority),
                                          text("policy_type", p.type), text("rule_num", p.rule_num),
                                          number("rule_priority", p.rule_priority), header,
                                          shown_classifiers(p), shown_actions(p.actions), values})});
}

/* GET /tcam/policy. */
inline Answers expected_policies(const std::vector<unsigned> &ids) {
  std::vector<result_node> entries;
  for (unsigned id : ids)
    entries.push_back(entry(static_cast<unsigned>(entries.size()) + 1, "policy", {number("policy_id", id)}));
  return expected_data({branch("policies", entries)});
}

/* A group of GET /tcam/groupStats; a gid of 0 is a group that is not used. */
struct shown_group {
  unsigned gid;
  std::string type;
  unsigned width, depth, count, free, total;
};

inline result_node shown_counts(const std::string &name, const std::vector<unsigned> &numbers) {
  return branch(name, {number("count", numbers[0]), number("free", numbers[1]), number("total", numbers[2])});
}

/* A stage; `slice_512` is empty at egress. */
inline result_node shown_stage(const std::string &name, const std::vector<shown_group> &groups,
                               const std::vector<unsigned> &entries, const std::vector<unsigned> &slice_256,
                               const std::vector<unsigned> &slice_512) {
  std::vector<result_node> list;
  for (const shown_group &group : groups) {
    std::vector<result_node> leaves = {text("is_used", group.gid != 0 ? "Yes" : "No")};
    if (group.gid != 0)
      leaves.insert(leaves.end(),
                    {number("gid", group.gid), text("type", group.type), number("width", group.width),
                     number("depth", group.depth), number("count", group.count), number("free", group.free),
                     number("total", group.total)});
    list.push_back(entry(static_cast<unsigned>(list.size()) + 1, "group", leaves));
  }
  std::vector<result_node> slices = {shown_counts("slice_256", slice_256)};
  if (!slice_512.empty()) slices.push_back(shown_counts("slice_512", slice_512));
  return branch(
      name, {branch("groups", list), shown_counts("entry_stats", entries), branch("slice_stats", slices)});
}

inline const shown_group unused_group = {0, "", 0, 0, 0, 0, 0};

class TcamTest : public PlatformTest {
protected:
  TcamTest() {
    lower_limit("tcam-ingress-policies", 512);
    lower_limit("tcam-egress-policies", 128);
  }

  Answers get(const std::string &uri) const { return call(tcam_api_handler, "GET", uri); }
  /* One request that succeeds: the operation returns 1. Its answer. */
  std::string done(const char *method, const std::string &uri, const std::string &query = "",
                   const char *format = "xml") const {
    FakeRequest request(method, uri, with_format(query, format));
    EXPECT_EQ(tcam_api_handler(handle, request.conn()), 1) << method << " " << uri << " " << query;
    return answer_body(request, format);
  }
  /* Makes policy 1 anew with these variables. */
  void make(const std::string &query) const {
    EXPECT_EQ(rpcclt_openapiTcamPolicyDeleteAll(handle), OPEN_E_NONE);
    EXPECT_EQ(done("POST", "/tcam/policy", query), created(1)) << query;
  }
  static std::string created(unsigned id) {
    return expected_answers(0, "Create a new policy successfully (Policy ID is " + std::to_string(id) + ").")
        .xml;
  }
};

#endif
