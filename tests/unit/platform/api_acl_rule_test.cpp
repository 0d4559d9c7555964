/* Tests of the functions of the C interface that make, number, compare, walk and delete the rules of access
 * control lists. */
#include "tests/unit/platform/acl_test_support.h"

namespace {

using AclRules = AclSwitch;
using numbers = std::vector<uint32_t>;

TEST_F(AclRules, NewRuleHasItsActionAlone) {
  ASSERT_EQ(add_rule(mac, 20, OPEN_ACL_ACTION_DENY), 20);
  EXPECT_EQ(describe(ip, 10), "permit every 0 protocol 255");
  EXPECT_EQ(describe(mac, 20), "deny every 0");
  EXPECT_EQ(describe(ipv6, 10), "permit every 0 protocol 255");
}

TEST_F(AclRules, ActionIsPermitOrDeny) {
  for (uint32_t action : {2u, UINT32_MAX}) EXPECT_EQ(add_rule(ip, 20, action), OPEN_E_PARAM);
  EXPECT_EQ(rules(ip), numbers{10});
}

TEST_F(AclRules, NumberZeroPicksTheNextMultipleOfTenAfterTheLastRule) {
  uint32_t acl = make(OPEN_ACL_TYPE_IP, "numbers");
  EXPECT_EQ(add_rule(acl, 0), 10);
  EXPECT_EQ(add_rule(acl, 0), 20);
  EXPECT_EQ(add_rule(acl, 25), 25);
  EXPECT_EQ(add_rule(acl, 0), 30);
  ASSERT_EQ(delete_rule(acl, 20), OPEN_E_NONE);
  EXPECT_EQ(add_rule(acl, 0), 40) << "a gap stays one";
  EXPECT_EQ(add_rule(acl, 15), 15);
  EXPECT_EQ(rules(acl), (numbers{10, 15, 25, 30, 40}));
  restart();
  EXPECT_EQ(rules(acl), (numbers{10, 15, 25, 30, 40}));
  for (uint32_t number : {10u, 25u, 30u, 40u}) ASSERT_EQ(delete_rule(acl, number), OPEN_E_NONE);
  EXPECT_EQ(add_rule(acl, 0), 20) << "after 15";
  ASSERT_EQ(add_rule(acl, 1), 1);
  ASSERT_EQ(delete_rule(acl, 15), OPEN_E_NONE);
  ASSERT_EQ(delete_rule(acl, 20), OPEN_E_NONE);
  EXPECT_EQ(add_rule(acl, 0), 10) << "after 1";
}

TEST_F(AclRules, NumbersGoFromOneTo2147483647) {
  EXPECT_EQ(add_rule(ip, 1), 1);
  EXPECT_EQ(add_rule(ip, 2147483647), 2147483647);
  EXPECT_EQ(add_rule(ip, 0), OPEN_E_FULL) << "there is no multiple of 10 after it";
  for (uint32_t number : {2147483648u, UINT32_MAX}) {
    EXPECT_EQ(add_rule(ip, number), OPEN_E_PARAM);
    EXPECT_FALSE(rpcclt_openapiAclRuleNumCheckValid(&handle, ip, number));
  }
  EXPECT_EQ(rules(ip), (numbers{1, 10, 2147483647}));
  uint32_t next = 5;
  EXPECT_EQ(rpcclt_openapiAclRuleGetNext(&handle, ip, UINT32_MAX, &next), OPEN_E_FAIL);
  EXPECT_EQ(next, 0u);
}

TEST_F(AclRules, LastMultipleOfTenIs2147483640) {
  ASSERT_EQ(add_rule(ip, 2147483639), 2147483639);
  EXPECT_EQ(add_rule(ip, 0), 2147483640);
  EXPECT_EQ(add_rule(ip, 0), OPEN_E_FULL);
}

TEST_F(AclRules, NumberOfARuleIsTaken) {
  EXPECT_EQ(add_rule(ip, 10), OPEN_E_EXISTS);
  EXPECT_EQ(add_rule(ip, 10, OPEN_ACL_ACTION_DENY), OPEN_E_EXISTS);
  EXPECT_EQ(describe(ip, 10), "permit every 0 protocol 255");
}

TEST_F(AclRules, NumberCheckSaysWhetherARuleCanBeMade) {
  EXPECT_TRUE(rpcclt_openapiAclRuleNumCheckValid(&handle, ip, 1));
  EXPECT_TRUE(rpcclt_openapiAclRuleNumCheckValid(&handle, ip, 2147483647));
  EXPECT_FALSE(rpcclt_openapiAclRuleNumCheckValid(&handle, ip, 10)) << "taken";
  EXPECT_FALSE(rpcclt_openapiAclRuleNumCheckValid(&handle, ip, 0));
  EXPECT_FALSE(rpcclt_openapiAclRuleNumCheckValid(&handle, 4, 1)) << "no such list";
  ASSERT_TRUE(softswitch::set_limit("acl-rules", 1));
  EXPECT_FALSE(rpcclt_openapiAclRuleNumCheckValid(&handle, ip, 1)) << "full";
  ASSERT_EQ(delete_rule(ip, 10), OPEN_E_NONE);
  EXPECT_TRUE(rpcclt_openapiAclRuleNumCheckValid(&handle, ip, 10));
}

TEST_F(AclRules, ThousandAndTwentyThreeRulesFitInAList) {
  for (int count = 2; count <= 1023; count++) ASSERT_EQ(add_rule(ip, 0), count * 10);
  EXPECT_EQ(rule_count(ip), 1023u);
  EXPECT_EQ(add_rule(ip, 0), OPEN_E_FULL);
  EXPECT_EQ(add_rule(ip, 1), OPEN_E_FULL);
  EXPECT_EQ(add_rule(ip, 10), OPEN_E_EXISTS);
  EXPECT_EQ(add_rule(mac, 0), 20) << "each list has room of its own";
  EXPECT_EQ(rpcclt_openapiAclRuleMatchDscpAdd(&handle, ip, 5120, 7), OPEN_E_NONE) << "no rule more";
  ASSERT_EQ(delete_rule(ip, 500), OPEN_E_NONE);
  EXPECT_EQ(add_rule(ip, 1), 1);
  EXPECT_EQ(rules(ip).size(), 1023u);
  EXPECT_FALSE(softswitch::set_limit("acl-rules", 1024));
}

TEST_F(AclRules, WalkGoesOnAfterARuleThatIsGoneOrWasNever) {
  for (uint32_t number : {20u, 30u}) ASSERT_EQ(add_rule(ip, number), static_cast<int>(number));
  ASSERT_EQ(delete_rule(ip, 20), OPEN_E_NONE);
  for (const auto &[after, expected] : {std::pair(0u, 10u), std::pair(9u, 10u), std::pair(10u, 30u),
                                        std::pair(20u, 30u), std::pair(29u, 30u)}) {
    uint32_t next = 0;
    EXPECT_EQ(rpcclt_openapiAclRuleGetNext(&handle, ip, after, &next), OPEN_E_NONE) << after;
    EXPECT_EQ(next, expected) << after;
  }
}

TEST_F(AclRules, WalkOfAnEmptyListEndsAtOnceWithZero) {
  ASSERT_EQ(delete_rule(ip, 10), OPEN_E_NONE);
  EXPECT_EQ(rules(ip), numbers());
  EXPECT_EQ(rule_count(ip), 0u);
  uint32_t number;
  EXPECT_EQ(rpcclt_openapiAclRuleGetFirst(&handle, 4, &number), OPEN_E_NOT_FOUND);
  EXPECT_EQ(rpcclt_openapiAclRuleGetNext(&handle, 4, 0, &number), OPEN_E_NOT_FOUND);
}

TEST_F(AclRules, DeletedRuleIsGone) {
  ASSERT_EQ(add_rule(ip, 20), 20);
  ASSERT_EQ(delete_rule(ip, 10), OPEN_E_NONE);
  EXPECT_EQ(delete_rule(ip, 10), OPEN_E_NOT_FOUND);
  EXPECT_EQ(rules(ip), numbers{20});
  EXPECT_EQ(add_rule(ip, 10, OPEN_ACL_ACTION_DENY), 10);
  EXPECT_EQ(describe(ip, 10), "deny every 0 protocol 255");
}

/* --- Duplicates ----------------------------------------------------------------------------------------- */

/* Lines of rules. No two of a list are equal, and each differs from the first of its list in one thing. */
const std::pair<const char *, std::vector<const char *>> different_rules[] = {
    {"mac",
     {"permit", "deny", "permit every", "permit source-mac 00:00:00:00:00:01 mask FF:FF:FF:FF:FF:FF",
      "permit source-mac 00:00:00:00:00:02 mask FF:FF:FF:FF:FF:FF",
      "permit source-mac 00:00:00:00:00:01 mask FF:FF:FF:FF:FF:FE",
      "permit destination-mac 00:00:00:00:00:01 mask FF:FF:FF:FF:FF:FF",
      "permit destination-mac 00:00:00:00:00:01 mask FF:FF:FF:FF:FF:FE", "permit ethertype 2048",
      "permit ethertype 2054", "permit vlan 5", "permit vlan 6", "permit vlan-range 5 5",
      "permit vlan-range 5 6", "permit vlan-range 4 6", "permit cos 0", "permit cos 7"}},
    {"ip",
     {"permit protocol 6",
      "deny protocol 6",
      "permit protocol 17",
      "permit",
      "permit protocol 6 source 10.0.0.1 mask 255.0.0.0",
      "permit protocol 6 source 10.0.0.1 mask 255.255.0.0",
      "permit protocol 6 source 10.0.0.2 mask 255.0.0.0",
      "permit protocol 6 destination 10.0.0.1 mask 255.0.0.0",
      "permit protocol 6 source-port equal 80",
      "permit protocol 6 source-port not-equal 80",
      "permit protocol 6 source-port less 80",
      "permit protocol 6 source-port greater 80",
      "permit protocol 6 source-port equal 81",
      "permit protocol 6 source-port-range 80 80",
      "permit protocol 6 source-port-range 80 81",
      "permit protocol 6 destination-port equal 80",
      "permit protocol 6 destination-port-range 80 81",
      "permit protocol 6 dscp 0",
      "permit protocol 6 dscp 1",
      "permit protocol 6 precedence 0",
      "permit protocol 6 tos 00 mask ff",
      "permit protocol 6 tos 01 mask ff",
      "permit protocol 6 tos 00 mask fe",
      "permit protocol 2 igmp-type 1",
      "permit protocol 2 igmp-type 2",
      "permit protocol 1 icmp-type 8",
      "permit protocol 1 icmp-type 8 icmp-code 0",
      "permit protocol 1 icmp-type 8 icmp-code 1",
      "permit protocol 6 tcp-flags 0 mask 2",
      "permit protocol 6 tcp-flags 2 mask 2",
      "permit protocol 6 tcp-flags 2 mask 3",
      "permit protocol 6 established off",
      "permit protocol 6 established on",
      "permit protocol 6 fragments off",
      "permit protocol 6 fragments on"}},
    {"ipv6",
     {"permit",
      "permit source-prefix 2001:db8::/32",
      "permit source-prefix 2001:db8::/33",
      "permit source-prefix 2001:db8::1/32",
      "permit destination-prefix 2001:db8::/32",
      "permit routing off",
      "permit routing on",
      "permit flow-label 0",
      "permit flow-label 1",
      "permit log off",
      "permit log on",
      "permit queue 0",
      "permit queue 1",
      "permit mirror 0/1",
      "permit mirror 3/1",
      "permit redirect 0/1",
      "permit redirect 0/2",
      "permit time-range a",
      "permit time-range A",
      "permit rate-limit 1 burst 1",
      "permit rate-limit 2 burst 1",
      "permit rate-limit 1 burst 2"}}};

TEST_F(AclRules, RulesThatDifferInAnythingAreNoDuplicates) {
  for (const auto &[type, lines] : different_rules) {
    std::string list = std::string("acl ") + type + " " + type + "-list rule ";
    uint32_t acl = type == std::string("ip") ? ip : type == std::string("mac") ? mac : ipv6;
    uint32_t number = 10;
    for (const char *line : lines) {
      ASSERT_EQ(commit(list + std::to_string(number) + " " + line), OPEN_E_NONE) << line;
      number += 10;
    }
    for (uint32_t rule : rules(acl)) {
      OPEN_BOOL_t duplicated = 9;
      ASSERT_EQ(rpcclt_openapiAclRuleDuplicateCheck(&handle, acl, rule, &duplicated), OPEN_E_NONE);
      EXPECT_EQ(duplicated, 0u) << lines[rule / 10 - 1];
    }
  }
}

TEST_F(AclRules, EqualRulesAreDuplicatesOfEachOther) {
  for (const auto &[type, lines] : different_rules) {
    std::string list = std::string("acl ") + type + " " + type + "-list rule ";
    uint32_t acl = type == std::string("ip") ? ip : type == std::string("mac") ? mac : ipv6;
    ASSERT_EQ(commit("no " + list + "10"), OPEN_E_NONE);
    for (const char *line : lines) {
      ASSERT_EQ(commit(list + "7 " + line), OPEN_E_NONE) << line;
      ASSERT_EQ(commit(list + "9 " + line), OPEN_E_NONE) << line;
      for (uint32_t rule : {7u, 9u}) {
        OPEN_BOOL_t duplicated = 9;
        ASSERT_EQ(rpcclt_openapiAclRuleDuplicateCheck(&handle, acl, rule, &duplicated), OPEN_E_NONE);
        EXPECT_EQ(duplicated, 1u) << line;
      }
    }
  }
}

TEST_F(AclRules, RulesOfOtherListsAreNoDuplicates) {
  make(OPEN_ACL_TYPE_IP, "other");
  ASSERT_EQ(add_rule(4, 10), 10);
  OPEN_BOOL_t duplicated = 9;
  ASSERT_EQ(rpcclt_openapiAclRuleDuplicateCheck(&handle, ip, 10, &duplicated), OPEN_E_NONE);
  EXPECT_EQ(duplicated, 0u);
}

TEST_F(AclRules, ProtocolAnyIsNoProtocol) {
  ASSERT_EQ(add_rule(ip, 20), 20);
  ASSERT_EQ(set_protocol(ip, 20, 255), OPEN_E_NONE);
  OPEN_BOOL_t duplicated = 9;
  ASSERT_EQ(rpcclt_openapiAclRuleDuplicateCheck(&handle, ip, 20, &duplicated), OPEN_E_NONE);
  EXPECT_EQ(duplicated, 1u);
  ASSERT_EQ(set_protocol(ip, 20, 17), OPEN_E_NONE);
  ASSERT_EQ(set_protocol(ip, 20, 255), OPEN_E_NONE);
  EXPECT_EQ(describe(ip, 20), "permit every 0 protocol 255");
}

} // namespace
