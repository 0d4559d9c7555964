/* Tests of access control lists in the model: what no function of the C interface reaches. */
#include "platform/softswitch/model/switch.h"

#include <gtest/gtest.h>

using namespace softswitch;

namespace {

constexpr acl_place port_1_in = {acl_place::interface, 1, OPEN_ACL_DIRECTION_IN};
constexpr acl_place port_1_out = {acl_place::interface, 1, OPEN_ACL_DIRECTION_OUT};
constexpr acl_place port_2_in = {acl_place::interface, 2, OPEN_ACL_DIRECTION_IN};
constexpr acl_place vlan_1_in = {acl_place::vlan, 1, OPEN_ACL_DIRECTION_IN};

/* Lists 1 and 2 of type IP with one and two rules, and 3 of type MAC with three; nothing pending. */
switch_model prepared() {
  switch_model model = make_switch(built_in_profile());
  EXPECT_EQ(acl_make(model, OPEN_ACL_TYPE_IP, "one", 1), OPEN_E_NONE);
  EXPECT_EQ(acl_make(model, OPEN_ACL_TYPE_IP, "two", 2), OPEN_E_NONE);
  EXPECT_EQ(acl_make(model, OPEN_ACL_TYPE_MAC, "three", 3), OPEN_E_NONE);
  for (uint32_t id : {1u, 2u, 3u}) {
    for (uint32_t number = 1; number <= id; number++)
      EXPECT_EQ(acl_rule_put(model, id, number, acl_rule(), nullptr), OPEN_E_NONE);
  }
  changes_taken(model, model.change);
  return model;
}

const acl_rules *rules_of(const switch_model &model, uint32_t id) {
  return &*acl_find(model, id)->rules;
}

TEST(Acl, RulesInUseAreThoseOfBoundListsEachOnce) {
  switch_model model = prepared();
  EXPECT_EQ(acl_rules_in_use(model, OPEN_ACL_TYPE_IP, OPEN_ACL_DIRECTION_IN), 0u);
  for (const acl_place &place : {port_1_in, port_2_in, vlan_1_in})
    ASSERT_EQ(acl_bind(model, place, 2, 5), OPEN_E_NONE);
  EXPECT_EQ(acl_rules_in_use(model, OPEN_ACL_TYPE_IP, OPEN_ACL_DIRECTION_IN), 2u);
  ASSERT_EQ(acl_bind(model, vlan_1_in, 1, 6), OPEN_E_NONE);
  EXPECT_EQ(acl_rules_in_use(model, OPEN_ACL_TYPE_IP, OPEN_ACL_DIRECTION_IN), 3u);
  EXPECT_EQ(acl_rules_in_use(model, OPEN_ACL_TYPE_IP, OPEN_ACL_DIRECTION_OUT), 0u);
  EXPECT_EQ(acl_rules_in_use(model, OPEN_ACL_TYPE_MAC, OPEN_ACL_DIRECTION_IN), 0u);
  ASSERT_EQ(acl_bind(model, port_1_out, 3, 1), OPEN_E_NONE);
  EXPECT_EQ(acl_rules_in_use(model, OPEN_ACL_TYPE_MAC, OPEN_ACL_DIRECTION_OUT), 3u);
  ASSERT_EQ(acl_unbind(model, vlan_1_in, 1), OPEN_E_NONE);
  EXPECT_EQ(acl_rules_in_use(model, OPEN_ACL_TYPE_IP, OPEN_ACL_DIRECTION_IN), 2u);
}

TEST(Acl, ListIsBoundUntilItIsTakenOffItsLastPlace) {
  switch_model model = prepared();
  const acl_place vlan_2_out = {acl_place::vlan, 2, OPEN_ACL_DIRECTION_OUT};
  const acl_place lag_in = {acl_place::interface, lag_first, OPEN_ACL_DIRECTION_IN};
  const acl_place lag_out = {acl_place::interface, lag_first, OPEN_ACL_DIRECTION_OUT};
  ASSERT_EQ(vlan_create(model, 2), OPEN_E_NONE);
  for (const acl_place &place : {vlan_2_out, lag_in, lag_out, port_2_in}) {
    ASSERT_EQ(acl_bind(model, place, 2, 5), OPEN_E_NONE);
    ASSERT_EQ(acl_bind(model, place, 1, 6), OPEN_E_NONE);
  }
  EXPECT_EQ(acl_bind(model, port_2_in, 2, 5), OPEN_E_NONE) << "again, which changes nothing";
  ASSERT_EQ(lag_delete(model, lag_first), OPEN_E_NONE);
  EXPECT_EQ(acl_rules_in_use(model, OPEN_ACL_TYPE_IP, OPEN_ACL_DIRECTION_IN), 3u) << "port 2";
  EXPECT_EQ(acl_rules_in_use(model, OPEN_ACL_TYPE_IP, OPEN_ACL_DIRECTION_OUT), 3u) << "VLAN 2";
  ASSERT_EQ(vlan_delete(model, 2), OPEN_E_NONE);
  EXPECT_EQ(acl_rules_in_use(model, OPEN_ACL_TYPE_IP, OPEN_ACL_DIRECTION_OUT), 0u);
  EXPECT_EQ(acl_remove(model, 2), OPEN_E_FAIL);
  ASSERT_EQ(acl_unbind(model, port_2_in, 2), OPEN_E_NONE);
  EXPECT_EQ(acl_rules_in_use(model, OPEN_ACL_TYPE_IP, OPEN_ACL_DIRECTION_IN), 1u) << "list 1";
  EXPECT_EQ(acl_remove(model, 2), OPEN_E_NONE);
  EXPECT_EQ(acl_remove(model, 1), OPEN_E_FAIL);
}

TEST(Acl, ChangeOfARuleCopiesTheRulesOfItsListAlone) {
  switch_model model = prepared(), copy = model;
  acl_rule deny;
  deny.action = OPEN_ACL_ACTION_DENY;
  ASSERT_EQ(acl_rule_put(model, 2, 1, deny, nullptr), OPEN_E_NONE);
  EXPECT_EQ(rules_of(copy, 1), rules_of(model, 1));
  EXPECT_EQ(rules_of(copy, 3), rules_of(model, 3));
  EXPECT_NE(rules_of(copy, 2), rules_of(model, 2));
  EXPECT_EQ(acl_rule_find(*acl_find(copy, 2), 2), acl_rule_find(*acl_find(model, 2), 2))
      << "its other rules stay shared";
  EXPECT_EQ(acl_rule_find(*acl_find(copy, 2), 1)->action, 0u);
  EXPECT_EQ(acl_rule_find(*acl_find(model, 2), 1)->action, 1u);
  EXPECT_EQ(&*copy.acls->bindings, &*model.acls->bindings);
}

TEST(Acl, ResetDeletesListsAndBindings) {
  switch_model model = prepared();
  ASSERT_EQ(acl_bind(model, port_1_in, 2, 5), OPEN_E_NONE);
  ASSERT_TRUE(time_range_set(model, "office", OPEN_ACL_RULE_STATUS_ACTIVE));
  switch_reset(model);
  EXPECT_TRUE(model.acls->lists.empty());
  EXPECT_TRUE(model.acls->bindings->empty());
  EXPECT_EQ(time_range_state(model, "office"), OPEN_ACL_RULE_STATUS_ACTIVE) << "that is not configuration";
}

TEST(Acl, UnbindingEverythingOfWhatHasNothingIsNoChange) {
  switch_model model = prepared(), copy = model;
  ASSERT_EQ(acl_bind(model, port_1_in, 2, 5), OPEN_E_NONE);
  copy = model;
  acl_unbind_all(model, acl_place::interface, 2);
  acl_unbind_all(model, acl_place::vlan, 1);
  EXPECT_EQ(&*copy.acls, &*model.acls);
  acl_unbind_all(model, acl_place::interface, 1);
  EXPECT_TRUE(model.acls->bindings->empty());
}

TEST(Acl, ListWithATargetIsFound) {
  switch_model model = prepared();
  acl_rule rule;
  rule.redirect = 60;
  ASSERT_EQ(acl_rule_put(model, 3, 9, rule, nullptr), OPEN_E_NONE);
  ASSERT_NE(acl_with_target(model, 60), nullptr);
  EXPECT_EQ(acl_with_target(model, 60)->id, 3u);
  EXPECT_EQ(acl_with_target(model, 61), nullptr);
}

TEST(Acl, IdsAreWithinTheirRangeAndOfOneListEach) {
  switch_model model = prepared();
  EXPECT_EQ(acl_make(model, OPEN_ACL_TYPE_IP, "new", 0), OPEN_E_PARAM);
  EXPECT_EQ(acl_make(model, OPEN_ACL_TYPE_IP, "new", 101), OPEN_E_PARAM);
  EXPECT_EQ(acl_make(model, OPEN_ACL_TYPE_IP, "new", 3), OPEN_E_EXISTS);
  EXPECT_EQ(acl_make(model, 4, "new", 4), OPEN_E_PARAM);
  EXPECT_EQ(acl_make(model, OPEN_ACL_TYPE_IP, "new", 100), OPEN_E_NONE);
  EXPECT_EQ(acl_free_id(model), 4u);
}

/* --- Time ranges ---------------------------------------------------------------------------------------- */

TEST(TimeRanges, StateIsNoneUntilDefinedAndAfterwards) {
  switch_model model = prepared();
  EXPECT_EQ(time_range_state(model, "office"), OPEN_ACL_RULE_STATUS_NONE);
  EXPECT_TRUE(time_range_set(model, "office", OPEN_ACL_RULE_STATUS_INACTIVE));
  EXPECT_TRUE(time_range_set(model, "office", OPEN_ACL_RULE_STATUS_ACTIVE));
  EXPECT_EQ(time_range_state(model, "office"), OPEN_ACL_RULE_STATUS_ACTIVE);
  EXPECT_EQ(model.time_ranges->states.size(), 1u);
  EXPECT_TRUE(time_range_set(model, "office", OPEN_ACL_RULE_STATUS_NONE));
  EXPECT_TRUE(model.time_ranges->states.empty());
  for (const char *bad : {"", "a b", "a/b", "12345678901234567890123456789012"})
    EXPECT_FALSE(time_range_set(model, bad, OPEN_ACL_RULE_STATUS_ACTIVE)) << bad;
}

} // namespace
