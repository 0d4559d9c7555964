/* Tests of the module of access control lists: making lists and rules behind the module's back, and the
 * documents it answers with. */
#ifndef KESTREL_TESTS_MODULES_ACL_FIXTURE_H
#define KESTREL_TESTS_MODULES_ACL_FIXTURE_H

#include "modules/rest_module_acl.h"
#include "platform/api/openapi_acl.h"
#include "platform/api/openapi_vlan.h"
#include "tests/support/platform_fixture.h"
#include "tests/support/result_data.h"
#include "tests/unit/modules/bent_platform.h"

#include <string.h>

typedef std::vector<result_node> result_nodes;

inline constexpr OPEN_ACL_TYPE_t IPV4_LIST = OPEN_ACL_TYPE_IP;
inline constexpr OPEN_ACL_TYPE_t MAC_LIST = OPEN_ACL_TYPE_MAC;
inline constexpr OPEN_ACL_TYPE_t IPV6_LIST = OPEN_ACL_TYPE_IPV6;

/* Answers of result code 99, whatever part of the request or platform refused. */
inline Answers refused() {
  return expected_platform_error(OPEN_E_PARAM);
}

inline Answers no_such_list(const std::string &xml_data = "", const std::string &json_data = "") {
  return expected_answers(1, "There is no ACL configured with the name.", xml_data, json_data);
}

/* An answer of any result code with these nodes as its data. */
inline Answers expected_with_data(int code, const std::string &message, const result_nodes &data) {
  result_node result =
      branch("result", {number("rlt_code", code), text("rlt_mesg", message), branch("rlt_data", data)});
  return {result.xml + "\n", "{ " + result.json + " }\n"};
}

/* --- Bindings ------------------------------------------------------------------------------------------- */

/* A list of numbers, each with its position as key. */
inline result_node number_list(const std::string &name, const std::string &tag,
                               const std::vector<uint32_t> &numbers) {
  result_nodes nodes;
  for (uint32_t value : numbers) {
    std::string position = std::to_string(nodes.size() + 1), digits = std::to_string(value);
    nodes.push_back({"<" + tag + ">" + digits + "</" + tag + ">", "\"" + position + "\": " + digits});
  }
  return branch(name, nodes);
}

/* "inbound" or "outbound". */
inline result_node bound(const std::string &direction, const std::vector<uint32_t> &interfaces = {},
                         const std::vector<uint32_t> &vlans = {}) {
  return branch(direction,
                {number_list("interfaces", "if", interfaces), number_list("vlans", "vlan", vlans)});
}

/* --- Lists ---------------------------------------------------------------------------------------------- */

/* GET /acl/{type} of lists without bindings. */
struct listed_acl {
  std::string name;
  uint32_t id;
  uint32_t rules;
  result_nodes bindings = {bound("inbound"), bound("outbound")};
};

inline Answers expected_lists(const std::string &type, const std::vector<listed_acl> &lists) {
  result_nodes nodes = {text("acl_type", type)};
  for (const listed_acl &list : lists) {
    result_nodes inside = {text("name", list.name), number("id", list.id),
                           number("rules_number", list.rules)};
    inside.insert(inside.end(), list.bindings.begin(), list.bindings.end());
    nodes.push_back(entry(static_cast<unsigned>(nodes.size()), "acl", inside));
  }
  return expected_data({branch("acls", nodes)},
                       lists.empty() ? "No ACLs are configured." : "Get data successfully.");
}

/* GET /acl/{type}/name/{name}; each rule is what stands in its element. */
inline Answers expected_list(const std::string &name, uint32_t id, const std::vector<result_nodes> &rules,
                             const result_nodes &bindings = {bound("inbound"), bound("outbound")}) {
  result_nodes elements, data = {text("acl_name", name), number("acl_id", id)};
  for (const result_nodes &rule : rules)
    elements.push_back(entry(static_cast<unsigned>(elements.size()) + 1, "rule", rule));
  data.insert(data.end(), bindings.begin(), bindings.end());
  data.push_back(number("rules_number", static_cast<int64_t>(rules.size())));
  data.push_back(branch("rules", elements));
  return expected_data(data, rules.empty() ? "No rules have been configured for this ACL."
                                           : "Get data successfully.");
}

/* What every rule begins with, and then these. */
inline result_nodes rule_nodes(uint32_t sequence, const std::string &action, const std::string &match_all,
                               const result_nodes &rest = {}) {
  result_nodes nodes = {number("sequence_number", sequence), text("action", action),
                        text("match_all", match_all)};
  nodes.insert(nodes.end(), rest.begin(), rest.end());
  return nodes;
}

/* What an IPv4 or IPv6 rule with no condition but its protocol begins with. */
inline result_nodes ip_rule_nodes(uint32_t sequence, const std::string &protocol,
                                  const result_nodes &rest = {}) {
  result_nodes nodes = {text("protocol", protocol), branch("source", {}), branch("destination", {})};
  nodes.insert(nodes.end(), rest.begin(), rest.end());
  return rule_nodes(sequence, "Permit", "FALSE", nodes);
}

/* --- Fixture -------------------------------------------------------------------------------------------- */

class AclTest : public PlatformTest {
protected:
  AclTest() {
    lower_limit("acls", 100);
    lower_limit("acl-rules", 1023);
    lower_limit("acl-bindings", 100);
  }
  Answers get(const std::string &uri, const std::string &query = "") const {
    return call(acl_api_handler, "GET", uri, query);
  }
  /* One request that succeeds: the operation returns 1. Its answer. */
  std::string done(const char *method, const std::string &uri, const std::string &query,
                   const char *format = "xml") const {
    FakeRequest request(method, uri, with_format(query, format));
    EXPECT_EQ(acl_api_handler(handle, request.conn()), 1) << method << " " << uri << " " << query;
    return answer_body(request, format);
  }
  /* One request that fails: the operation returns 0. Its answer. */
  std::string failed(const char *method, const std::string &uri, const std::string &query,
                     const char *format = "xml") const {
    FakeRequest request(method, uri, with_format(query, format));
    EXPECT_EQ(acl_api_handler(handle, request.conn()), 0) << method << " " << uri << " " << query;
    return answer_body(request, format);
  }
  /* The same in both formats. */
  Answers refusal(const char *method, const std::string &uri, const std::string &query = "") const {
    return {failed(method, uri, query, "xml"), failed(method, uri, query, "json")};
  }

  uint32_t create_list(OPEN_ACL_TYPE_t type, std::string name) const {
    uint32_t aclId = 0;
    open_buffdesc text = {static_cast<uint32_t>(name.size()), name.data()};
    EXPECT_EQ(rpcclt_openapiAclCreate(handle, type, &text, &aclId), OPEN_E_NONE) << name;
    return aclId;
  }
  uint32_t add_rule(uint32_t aclId, OPEN_ACL_ACTION_t action = OPEN_ACL_ACTION_PERMIT,
                    uint32_t ruleId = 0) const {
    EXPECT_EQ(rpcclt_openapiAclRuleActionAdd(handle, aclId, &ruleId, action), OPEN_E_NONE);
    return ruleId;
  }
  /* Adds a match or attribute to a rule. */
  template <typename Add, typename... Values>
  void add(Add function, uint32_t aclId, uint32_t ruleId, Values... values) const {
    EXPECT_EQ(function(handle, aclId, ruleId, values...), OPEN_E_NONE);
  }
  template <typename Add>
  void add_texts(Add function, uint32_t aclId, uint32_t ruleId, std::string first, std::string second) const {
    open_buffdesc texts[] = {{static_cast<uint32_t>(first.size()), first.data()},
                             {static_cast<uint32_t>(second.size()), second.data()}};
    EXPECT_EQ(function(handle, aclId, ruleId, &texts[0], &texts[1]), OPEN_E_NONE) << first << second;
  }
  void add_time_range(uint32_t aclId, uint32_t ruleId, std::string name) const {
    open_buffdesc text = {static_cast<uint32_t>(name.size()), name.data()};
    EXPECT_EQ(rpcclt_openapiAclRuleMatchTimeRangeAdd(handle, aclId, ruleId, &text), OPEN_E_NONE) << name;
  }
  open_inet_addr_t address(std::string written) const {
    open_inet_addr_t parsed = {};
    open_buffdesc text = {static_cast<uint32_t>(written.size()), written.data()};
    EXPECT_EQ(rpcclt_openapiInetAddrGet(handle, &text, &parsed), OPEN_E_NONE) << written;
    return parsed;
  }
  uint32_t rule_count(uint32_t aclId) const {
    uint32_t count = 4711;
    EXPECT_EQ(rpcclt_openapiAclRuleCountGet(handle, aclId, &count), OPEN_E_NONE);
    return count;
  }
  uint32_t list_count() const {
    uint32_t count = 4711;
    EXPECT_EQ(rpcclt_openapiAclCountGet(handle, &count), OPEN_E_NONE);
    return count;
  }
  void delete_rule(uint32_t aclId, uint32_t ruleId) const {
    EXPECT_EQ(rpcclt_openapiAclRuleDelete(handle, aclId, ruleId), OPEN_E_NONE) << ruleId;
  }
};

#endif
