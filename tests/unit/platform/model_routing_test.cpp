/* Tests of the rules for routing: the switch as a router, which interfaces are routing interfaces, and the
 * numbers of VLAN routing interfaces. */
#include "tests/unit/platform/address_test_support.h"

using namespace softswitch;

namespace {

class RoutingModel : public testing::Test {
protected:
  std::vector<uint32_t> walk() {
    std::vector<uint32_t> found;
    uint32_t number = 0;
    while (interface_next_routing(model, number, &number) == OPEN_E_NONE) found.push_back(number);
    return found;
  }
  void make_vlans() {
    for (uint32_t vlan : {10u, 20u, 30u}) ASSERT_EQ(vlan_create(model, vlan), OPEN_E_NONE);
  }
  void settle() { changes_taken(model, model.change); }

  switch_model model = make_switch(built_in_profile());
  const std::vector<uint32_t> loopbacks = {120, 121, 122, 123, 124, 125, 126, 127};
};

/* --- The switch ----------------------------------------------------------------------------------------- */

TEST_F(RoutingModel, FamiliesAreRoutedEachByItself) {
  EXPECT_FALSE(routing_enabled(model, OPEN_AF_INET));
  EXPECT_FALSE(routing_enabled(model, OPEN_AF_INET6));
  routing_set_enabled(model, OPEN_AF_INET6, true);
  EXPECT_FALSE(routing_enabled(model, OPEN_AF_INET));
  EXPECT_TRUE(routing_enabled(model, OPEN_AF_INET6));
  routing_set_enabled(model, OPEN_AF_INET, true);
  routing_set_enabled(model, OPEN_AF_INET6, false);
  EXPECT_TRUE(routing_enabled(model, OPEN_AF_INET));
  EXPECT_FALSE(routing_enabled(model, OPEN_AF_INET6));
  switch_reset(model);
  EXPECT_FALSE(routing_enabled(model, OPEN_AF_INET));
}

TEST_F(RoutingModel, OnlyWhatIsNotSoAlreadyIsAChange) {
  uint64_t before = model.change;
  routing_set_enabled(model, OPEN_AF_INET, false);
  ASSERT_EQ(interface_set_routing(model, 1, false), OPEN_E_NONE);
  EXPECT_EQ(model.change, before);
  routing_set_enabled(model, OPEN_AF_INET, true);
  EXPECT_GT(model.change, before);
  settle();
  ASSERT_EQ(interface_set_routing(model, 1, true), OPEN_E_NONE);
  EXPECT_TRUE(is_pending(model, 1));
  EXPECT_FALSE(is_pending(model, 2));
  before = model.change;
  ASSERT_EQ(interface_set_routing(model, 1, true), OPEN_E_NONE);
  EXPECT_EQ(model.change, before);
}

/* --- Routing interfaces --------------------------------------------------------------------------------- */

TEST_F(RoutingModel, PortsAndLagsAreRoutingInterfacesWhileTheirRoutingIsOn) {
  EXPECT_EQ(walk(), loopbacks);
  for (uint32_t number : {1u, 54u, 56u, 119u}) {
    EXPECT_EQ(interface_set_routing(model, number, true), OPEN_E_NONE) << number;
    EXPECT_TRUE(interface_is_routing(model, number)) << number;
    EXPECT_EQ(interface_set_routing(model, number, false), OPEN_E_NONE) << number;
    EXPECT_FALSE(interface_is_routing(model, number)) << number;
  }
}

TEST_F(RoutingModel, VlanRoutingInterfacesAreRoutingInterfacesAlsoWithRoutingOff) {
  uint32_t number;
  ASSERT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  EXPECT_TRUE(model.interfaces->at[number].routing);
  EXPECT_EQ(interface_set_routing(model, number, false), OPEN_E_NONE);
  EXPECT_FALSE(model.interfaces->at[number].routing);
  EXPECT_TRUE(interface_is_routing(model, number));
  ASSERT_EQ(interface_remove_vlan_routing(model, 1), OPEN_E_NONE);
  EXPECT_FALSE(interface_is_routing(model, number));
  ASSERT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  EXPECT_TRUE(model.interfaces->at[number].routing) << "a new one is in factory state";
}

TEST_F(RoutingModel, RoutingOfOtherInterfacesIsNotToBeHad) {
  const std::pair<uint32_t, open_error_t> rows[] = {
      {55, OPEN_E_UNAVAIL},    {120, OPEN_E_UNAVAIL},   {127, OPEN_E_UNAVAIL},
      {226, OPEN_E_NOT_FOUND}, {353, OPEN_E_NOT_FOUND}, {0, OPEN_E_PARAM},
      {128, OPEN_E_PARAM},     {354, OPEN_E_PARAM},     {UINT32_MAX, OPEN_E_PARAM}};
  for (const auto &[number, result] : rows) {
    EXPECT_EQ(interface_set_routing(model, number, true), result) << number;
    EXPECT_EQ(interface_set_routing(model, number, false), result) << number;
  }
}

TEST_F(RoutingModel, PortInALagIsNoRoutingInterfaceUntilItLeaves) {
  ASSERT_EQ(interface_set_routing(model, 1, true), OPEN_E_NONE);
  ASSERT_EQ(lag_add_port(model, 56, 1), OPEN_E_NONE);
  EXPECT_FALSE(interface_is_routing(model, 1));
  EXPECT_EQ(interface_is_routing_check(model, 1), OPEN_E_NOT_FOUND);
  EXPECT_EQ(interface_set_routing(model, 2, true), OPEN_E_NONE);
  ASSERT_EQ(lag_add_port(model, 56, 2), OPEN_E_NONE);
  EXPECT_EQ(interface_set_routing(model, 2, false), OPEN_E_NONE) << "it can be set meanwhile";
  EXPECT_EQ(walk(), loopbacks);
  ASSERT_EQ(lag_delete(model, 56), OPEN_E_NONE);
  EXPECT_TRUE(interface_is_routing(model, 1));
  EXPECT_FALSE(interface_is_routing(model, 2));
}

TEST_F(RoutingModel, DeletedLagRoutesNoMoreWhenItIsMadeAgain) {
  ASSERT_EQ(interface_set_routing(model, 56, true), OPEN_E_NONE);
  ASSERT_EQ(lag_delete(model, 56), OPEN_E_NONE);
  EXPECT_FALSE(interface_is_routing(model, 56));
  EXPECT_EQ(interface_set_routing(model, 56, true), OPEN_E_NOT_FOUND);
  ASSERT_EQ(lag_create(model, 56), OPEN_E_NONE);
  EXPECT_FALSE(interface_is_routing(model, 56));
}

TEST_F(RoutingModel, WalkGoesByNumberThroughAllTypes) {
  make_vlans();
  ASSERT_EQ(interface_make_vlan_routing_as(model, 10, 353), OPEN_E_NONE);
  ASSERT_EQ(interface_make_vlan_routing_as(model, 20, 230), OPEN_E_NONE);
  for (uint32_t number : {1u, 54u, 56u, 119u})
    ASSERT_EQ(interface_set_routing(model, number, true), OPEN_E_NONE) << number;
  EXPECT_EQ(walk(),
            (std::vector<uint32_t>{1, 54, 56, 119, 120, 121, 122, 123, 124, 125, 126, 127, 230, 353}));
  uint32_t next = 9;
  EXPECT_EQ(interface_next_routing(model, 100, &next), OPEN_E_NONE);
  EXPECT_EQ(next, 119u) << "what it begins after need not be there";
  for (uint32_t after : {353u, 354u, UINT32_MAX})
    EXPECT_EQ(interface_next_routing(model, after, &next), OPEN_E_FAIL);
}

TEST_F(RoutingModel, RoutingDoesNotChangeVlanMembership) {
  ASSERT_EQ(interface_set_routing(model, 1, true), OPEN_E_NONE);
  EXPECT_TRUE(vlan_has_member(model, *vlan_find(model, 1), 1));
  EXPECT_EQ(pvid_in_force(model, 1), 1u);
}

/* --- The numbers of VLAN routing interfaces ------------------------------------------------------------- */

TEST_F(RoutingModel, VlanRoutingInterfaceIsMadeWithTheNumberThatIsAskedFor) {
  make_vlans();
  EXPECT_EQ(interface_make_vlan_routing_as(model, 10, 353), OPEN_E_NONE);
  EXPECT_EQ(interface_make_vlan_routing_as(model, 20, 226), OPEN_E_NONE);
  EXPECT_EQ(interface_of_vlan(model, 10), 353u);
  EXPECT_EQ(interface_name(model, 353), "vlan10");
  EXPECT_EQ(interface_make_vlan_routing_as(model, 20, 227), OPEN_E_EXISTS) << "it has another";
  EXPECT_EQ(interface_make_vlan_routing_as(model, 20, 226), OPEN_E_EXISTS);
  EXPECT_EQ(interface_make_vlan_routing_as(model, 30, 353), OPEN_E_EXISTS) << "it is another VLAN's";
  EXPECT_EQ(interface_make_vlan_routing_as(model, 40, 300), OPEN_E_NOT_FOUND);
  for (uint32_t number : {0u, 1u, 225u, 354u, UINT32_MAX})
    EXPECT_EQ(interface_make_vlan_routing_as(model, 30, number), OPEN_E_PARAM) << number;
  EXPECT_EQ(interface_of_vlan(model, 30), 0u);
}

TEST_F(RoutingModel, HundredAndTwentyEightVlanRoutingInterfacesFit) {
  uint32_t number = 0;
  for (uint32_t vlan = 2; vlan <= 129; vlan++) {
    ASSERT_EQ(vlan_create(model, vlan), OPEN_E_NONE);
    ASSERT_EQ(interface_make_vlan_routing(model, vlan, &number), OPEN_E_NONE);
    ASSERT_EQ(number, 226 + vlan - 2);
  }
  EXPECT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_FULL);
  EXPECT_EQ(interface_make_vlan_routing_as(model, 1, 226), OPEN_E_FULL);
  ASSERT_EQ(interface_remove_vlan_routing(model, 129), OPEN_E_NONE);
  EXPECT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  EXPECT_EQ(number, 353u);
}

/* --- What is in use ------------------------------------------------------------------------------------- */

TEST_F(RoutingModel, InterfaceInUseIsNotRemoved) {
  uint32_t number;
  ASSERT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  for (uint32_t each : {1u, 56u, 120u, number}) EXPECT_FALSE(interface_in_use(model, each)) << each;
  ASSERT_EQ(acl_make(model, OPEN_ACL_TYPE_IP, "web", 1), OPEN_E_NONE);
  acl_rule rule;
  std::string error;
  rule.every = true;
  rule.redirect = 56;
  ASSERT_EQ(acl_rule_put(model, 1, 10, rule, &error), OPEN_E_NONE) << error;
  EXPECT_TRUE(interface_in_use(model, 56));
  EXPECT_FALSE(interface_in_use(model, 57));
  EXPECT_EQ(lag_delete(model, 56), OPEN_E_FAIL);
  ASSERT_EQ(acl_rule_remove(model, 1, 10), OPEN_E_NONE);
  EXPECT_FALSE(interface_in_use(model, 56));
  EXPECT_EQ(lag_delete(model, 56), OPEN_E_NONE);
}

} // namespace
