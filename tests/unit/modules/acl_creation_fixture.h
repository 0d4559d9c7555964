/* Making rules of access control lists by request: one list of each type, and what is expected of a request
 * that makes a rule and of one that does not. */
#ifndef KESTREL_TESTS_MODULES_ACL_CREATION_FIXTURE_H
#define KESTREL_TESTS_MODULES_ACL_CREATION_FIXTURE_H

#include "tests/unit/modules/acl_rule_nodes.h"

/* A list in which rules are made. `plain` is a request for a rule that matches every packet; `conditions` one
 * for a rule that does not, of which `rule` are the nodes after "match_all". */
struct rule_list {
  const char *type, *name;
  uint32_t id;
  const char *plain, *conditions;
  result_nodes rule;

  std::string list_uri() const { return std::string("/acl/") + type + "/name/" + name; }
  std::string uri() const { return list_uri() + "/rule"; }
  /* The data of answers when the list is known. */
  result_nodes data() const { return {text("acl_type", type), text("acl_name", name), number("acl_id", id)}; }
};

inline void PrintTo(const rule_list &list, std::ostream *os) {
  *os << list.type;
}

inline const rule_list &mac_list() {
  static const rule_list list = {"mac",
                                 "m",
                                 1,
                                 "action=permit&src_mac=any&dest_mac=any",
                                 "action=permit&src_mac=any&dest_mac=any&cos=3",
                                 {number("cos", 3)}};
  return list;
}

inline const rule_list &ipv4_list() {
  static const rule_list list = {
      "ip",
      "four",
      2,
      "action=permit&protocol=ip&src_ip=any&dest_ip=any",
      "action=permit&protocol=tcp&src_ip=any&dest_ip=any",
      {text("protocol", "6(TCP)"), branch("source", {}), branch("destination", {})}};
  return list;
}

inline const rule_list &ipv6_list() {
  static const rule_list list = {
      "ipv6",
      "six",
      3,
      "action=permit&protocol=ipv6&src_prefix=any&dest_prefix=any",
      "action=permit&protocol=tcp&src_prefix=any&dest_prefix=any",
      {text("protocol", "6(TCP)"), branch("source", {}), branch("destination", {})}};
  return list;
}

inline Answers created(const rule_list &list, uint32_t sequence) {
  result_nodes data = list.data();
  data.push_back(number("sequence_number", sequence));
  return expected_data(data, "Create successfully.");
}

inline Answers refused_as_full(const rule_list &list) {
  return expected_with_data(2, "The ACL rules count is full or the sequence number is not available.",
                            list.data());
}

inline Answers refused_as_duplicate(const rule_list &list) {
  return expected_with_data(3, "Failed to create the specified rule as it duplicates already existing one.",
                            list.data());
}

class AclCreationTest : public AclRulesTest {
protected:
  AclCreationTest() {
    create_list(MAC_LIST, "m");
    create_list(IPV4_LIST, "four");
    create_list(IPV6_LIST, "six");
  }
  /* In both formats: the request makes the list's only rule, which is number `sequence` and reads so. */
  void expect_rule(const rule_list &list, const std::string &query, const result_nodes &rule,
                   uint32_t sequence = 10) const {
    SCOPED_TRACE(query);
    Answers read = expected_list(list.name, list.id, {rule});
    EXPECT_EQ(done("POST", list.uri(), query), created(list, sequence).xml);
    EXPECT_EQ(done("GET", list.list_uri(), ""), read.xml);
    delete_rule(list.id, sequence);
    EXPECT_EQ(done("POST", list.uri(), query, "json"), created(list, sequence).json);
    EXPECT_EQ(done("GET", list.list_uri(), "", "json"), read.json);
    delete_rule(list.id, sequence);
  }
  /* In both formats: the request is answered so and leaves no rule behind. */
  void expect_no_rule(const rule_list &list, const std::string &query,
                      const Answers &expected = refused()) const {
    uint32_t rules = rule_count(list.id);
    EXPECT_EQ(refusal("POST", list.uri(), query), expected) << list.type << " " << query;
    EXPECT_EQ(rule_count(list.id), rules) << list.type << " " << query;
  }
  /* The same, and the platform is not asked to make one. */
  void expect_none_begun(const rule_list &list, const std::string &query) const {
    fault("rpcclt_openapiAclRuleActionAdd", OPEN_E_EXISTS);
    expect_no_rule(list, query);
    EXPECT_EQ(lab("fault list"), "rpcclt_openapiAclRuleActionAdd OPEN_E_EXISTS 1 0\n") << query;
    lab("fault clear");
  }
};

/* For what all three types have in common. */
class AclAnyCreationTest : public AclCreationTest, public testing::WithParamInterface<rule_list> {
protected:
  std::string plain(const std::string &more = "") const { return GetParam().plain + more; }
  std::string conditions(const std::string &more = "") const { return GetParam().conditions + more; }
};

#endif
