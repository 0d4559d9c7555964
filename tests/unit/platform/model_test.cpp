/* Tests of the number space of interfaces, limits and the sharing of tables. */
#include "platform/softswitch/model/switch.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace softswitch;

static std::vector<uint32_t> walk(const switch_model &model, uint32_t type) {
  std::vector<uint32_t> found;
  uint32_t number = 0;
  while (interface_next(model, type, OPEN_INTF_STATE_ANY, number, &number) == OPEN_E_NONE)
    found.push_back(number);
  return found;
}

static std::vector<uint32_t> numbers(uint32_t first, uint32_t last) {
  std::vector<uint32_t> all;
  for (; first <= last; first++) all.push_back(first);
  return all;
}

TEST(Interfaces, FactorySwitchHasPortsCpuLagsAndLoopbacks) {
  switch_model model = make_switch(built_in_profile());
  EXPECT_EQ(walk(model, OPEN_INTF_TYPE_PHY), numbers(1, 54));
  EXPECT_EQ(walk(model, OPEN_INTF_TYPE_CPU), numbers(55, 55));
  EXPECT_EQ(walk(model, OPEN_INTF_TYPE_LAG), numbers(56, 119));
  EXPECT_EQ(walk(model, OPEN_INTF_TYPE_VLAN_RTR), std::vector<uint32_t>());
  EXPECT_EQ(walk(model, OPEN_INTF_TYPE_LOOPBACK), numbers(120, 127));
}

TEST(Interfaces, NamesAndNumbersGoBothWays) {
  switch_model model = make_switch(built_in_profile());
  const std::pair<uint32_t, const char *> named[] = {{1, "0/1"},         {48, "0/48"},      {54, "0/54"},
                                                     {55, "cpu"},        {56, "3/1"},       {119, "3/64"},
                                                     {120, "loopback0"}, {127, "loopback7"}};
  for (auto [number, name] : named) {
    EXPECT_EQ(interface_name(model, number), name);
    EXPECT_EQ(interface_by_name(model, name), number) << name;
  }
}

TEST(Interfaces, NumbersOutsideAndGapsDoNotExist) {
  switch_model model = make_switch(built_in_profile());
  for (uint32_t number : {0u, 128u, 225u, 226u, 353u, 354u, UINT32_MAX}) {
    EXPECT_FALSE(interface_exists(model, number)) << number;
    EXPECT_EQ(interface_name(model, number), "") << number;
  }
  for (const char *name : {"", "0/0", "0/55", "3/0", "3/65", "0/01", "cpu0", "loopback8", "vlan1"}) {
    EXPECT_EQ(interface_by_name(model, name), 0u) << name;
  }
}

TEST(Interfaces, ProfileSaysHowManyPortsThereAre) {
  chassis_profile profile = built_in_profile();
  profile.ports.resize(2);
  profile.ports[1].name = "wan port";
  profile.ports[1].cabled = false;
  switch_model model = make_switch(profile);
  EXPECT_EQ(walk(model, OPEN_INTF_TYPE_PHY), numbers(1, 2));
  EXPECT_EQ(interface_by_name(model, "wan port"), 2u);
  EXPECT_FALSE(interface_switches(model, 3));
  EXPECT_TRUE(model.interfaces->at[1].cabled);
  EXPECT_FALSE(model.interfaces->at[2].cabled);
  EXPECT_TRUE(vlan_has_member(model, *vlan_find(model, 1), 2));
  EXPECT_FALSE(vlan_has_member(model, *vlan_find(model, 1), 3));
}

TEST(Interfaces, OnlyPortsAndLagsSwitch) {
  switch_model model = make_switch(built_in_profile());
  EXPECT_TRUE(interface_switches(model, 54));
  EXPECT_FALSE(interface_switches(model, 55));
  EXPECT_TRUE(interface_switches(model, 56));
  EXPECT_TRUE(interface_switches(model, 119));
  EXPECT_FALSE(interface_switches(model, 120));
}

TEST(Interfaces, NobodyButPortsAndLagsIsAMember) {
  switch_model model = make_switch(built_in_profile());
  for (uint32_t number : {0u, 55u, 120u, 226u, 353u, 354u, UINT32_MAX}) {
    EXPECT_FALSE(vlan_has_member(model, *vlan_find(model, 1), number)) << number;
    EXPECT_EQ(pvid_in_force(model, number), 0u) << number;
  }
}

TEST(Interfaces, UnknownSelectorsOfAWalkAreRefused) {
  switch_model model = make_switch(built_in_profile());
  uint32_t number;
  EXPECT_EQ(interface_next(model, 5, OPEN_INTF_STATE_ANY, 0, &number), OPEN_E_PARAM);
  EXPECT_EQ(interface_next(model, 0, 3, 0, &number), OPEN_E_PARAM);
  EXPECT_EQ(interface_next(model, UINT32_MAX, 4, 0, &number), OPEN_E_PARAM);
}

TEST(VlanRoutingInterfaces, LowestFreeNumberComesFirst) {
  switch_model model = make_switch(built_in_profile());
  uint32_t number;
  for (uint32_t vlan : {10u, 20u, 30u}) {
    ASSERT_EQ(vlan_create(model, vlan), OPEN_E_NONE);
    ASSERT_EQ(interface_make_vlan_routing(model, vlan, &number), OPEN_E_NONE);
  }
  EXPECT_EQ(walk(model, OPEN_INTF_TYPE_VLAN_RTR), numbers(226, 228));
  EXPECT_EQ(interface_name(model, 227), "vlan20");
  EXPECT_EQ(interface_of_vlan(model, 20), 227u);
  ASSERT_EQ(interface_remove_vlan_routing(model, 20), OPEN_E_NONE);
  EXPECT_EQ(interface_by_name(model, "vlan20"), 0u);
  ASSERT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  EXPECT_EQ(number, 227u);
}

TEST(VlanRoutingInterfaces, RefusalsNameTheirReason) {
  switch_model model = make_switch(built_in_profile());
  uint32_t number;
  ASSERT_TRUE(limit_override(&model.limits, "vlan-routing-interfaces", 1));
  EXPECT_EQ(interface_make_vlan_routing(model, 10, &number), OPEN_E_NOT_FOUND);
  ASSERT_EQ(vlan_create(model, 10), OPEN_E_NONE);
  EXPECT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  EXPECT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_EXISTS);
  EXPECT_EQ(interface_make_vlan_routing(model, 10, &number), OPEN_E_FULL);
  EXPECT_EQ(interface_remove_vlan_routing(model, 10), OPEN_E_NOT_FOUND);
}

TEST(VlanRoutingInterfaces, FreeNumberBelowThoseBeyondALoweredLimitIsNoRoom) {
  switch_model model = make_switch(built_in_profile());
  uint32_t number;
  for (uint32_t vlan : {10u, 20u, 30u}) {
    ASSERT_EQ(vlan_create(model, vlan), OPEN_E_NONE);
    ASSERT_EQ(interface_make_vlan_routing(model, vlan, &number), OPEN_E_NONE);
  }
  ASSERT_EQ(interface_remove_vlan_routing(model, 10), OPEN_E_NONE);
  ASSERT_TRUE(limit_override(&model.limits, "vlan-routing-interfaces", 2));
  EXPECT_EQ(interface_make_vlan_routing(model, 10, &number), OPEN_E_FULL);
  ASSERT_EQ(interface_remove_vlan_routing(model, 30), OPEN_E_NONE);
  EXPECT_EQ(interface_make_vlan_routing(model, 10, &number), OPEN_E_NONE);
  EXPECT_EQ(number, 226u);
}

TEST(VlanRoutingInterfaces, VlanWithOneIsNotDeleted) {
  switch_model model = make_switch(built_in_profile());
  uint32_t number;
  ASSERT_EQ(vlan_create(model, 10), OPEN_E_NONE);
  ASSERT_EQ(interface_make_vlan_routing(model, 10, &number), OPEN_E_NONE);
  EXPECT_EQ(vlan_delete(model, 10), OPEN_E_FAIL);
  EXPECT_TRUE(vlan_exists(model, 10));
  ASSERT_EQ(interface_remove_vlan_routing(model, 10), OPEN_E_NONE);
  EXPECT_EQ(vlan_delete(model, 10), OPEN_E_NONE);
}

TEST(PendingInterfaces, RemovalIsListedAsDeletionUntilTaken) {
  switch_model model = make_switch(built_in_profile());
  uint32_t number, deleted;
  changes_taken(model, model.change);
  EXPECT_EQ(interface_next_changed(model, 0, &number, &deleted), OPEN_E_FAIL);
  ASSERT_EQ(vlan_set_accept_frames(model, 3, OPEN_DOT1Q_ADMIT_ONLY_VLAN_TAGGED), OPEN_E_NONE);
  ASSERT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  ASSERT_EQ(interface_remove_vlan_routing(model, 1), OPEN_E_NONE);
  ASSERT_EQ(interface_next_changed(model, 0, &number, &deleted), OPEN_E_NONE);
  EXPECT_EQ(number, 3u);
  EXPECT_EQ(deleted, 0u);
  ASSERT_EQ(interface_next_changed(model, 3, &number, &deleted), OPEN_E_NONE);
  EXPECT_EQ(number, 226u);
  EXPECT_EQ(deleted, 1u);
  EXPECT_EQ(interface_next_changed(model, 226, &number, &deleted), OPEN_E_FAIL);
  EXPECT_EQ(interface_next_changed(model, UINT32_MAX, &number, &deleted), OPEN_E_FAIL);
  changes_taken(model, model.change);
  EXPECT_EQ(interface_next_changed(model, 0, &number, &deleted), OPEN_E_FAIL);
}

TEST(Limits, CanBeLoweredByNameButNotRaised) {
  limits limits;
  EXPECT_TRUE(limit_override(&limits, "vlans", 2));
  EXPECT_EQ(limits.vlans, 2u);
  EXPECT_TRUE(limit_override(&limits, "vlans", 4094));
  EXPECT_FALSE(limit_override(&limits, "vlans", 4095));
  EXPECT_TRUE(limit_override(&limits, "lag-members", 1));
  EXPECT_EQ(limits.lag_members, 1u);
  EXPECT_FALSE(limit_override(&limits, "lag-members", 33));
  EXPECT_FALSE(limit_override(&limits, "vlan", 1));
  EXPECT_FALSE(limit_override(&limits, "", 1));
  EXPECT_EQ(limits.vlans, 4094u);
}

TEST(SharedTable, CopiesAreIndependentOnceEdited) {
  shared_table<int> one;
  *one.edit() = 1;
  shared_table<int> two = one;
  EXPECT_EQ(&*one, &*two);
  *one.edit() = 11;
  *two.edit() = 22;
  EXPECT_EQ(*one, 11);
  EXPECT_EQ(*two, 22);
  one = two;
  *two.edit() = 23;
  EXPECT_EQ(*one, 22);
}
