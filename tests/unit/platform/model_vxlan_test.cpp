/* Tests of VXLAN in the model: what no function of the C interface reaches. */
#include "platform/softswitch/model/switch.h"

#include <gtest/gtest.h>

using namespace softswitch;

namespace {

constexpr uint32_t vtep = 0x0a000001;
constexpr uint32_t group = 0xef000001;

/* A switch with nothing pending and a tenant that has everything. */
switch_model prepared() {
  switch_model model = make_switch(built_in_profile());
  EXPECT_EQ(vlan_create(model, 10), OPEN_E_NONE);
  EXPECT_EQ(vxlan_tenant_bind(model, 5000, 10), OPEN_E_NONE);
  EXPECT_EQ(vxlan_tenant_set_group(model, 5000, group), OPEN_E_NONE);
  EXPECT_EQ(vxlan_remote_vtep_add(model, vtep), OPEN_E_NONE);
  EXPECT_EQ(vxlan_set_source_interface(model, loopback_first), OPEN_E_NONE);
  EXPECT_EQ(vxlan_set_udp_port(model, 5000), OPEN_E_NONE);
  EXPECT_EQ(vxlan_set_mode(model, vxlan_mode::unicast), OPEN_E_NONE);
  EXPECT_EQ(vxlan_set_default_group(model, group + 1), OPEN_E_NONE);
  changes_taken(model, model.change);
  return model;
}

TEST(Vxlan, ResetReturnsEverythingToFactoryState) {
  switch_model model = prepared();
  switch_reset(model);
  EXPECT_EQ(model.vxlan->mode, vxlan_mode::off);
  EXPECT_EQ(model.vxlan->udp_port, 4789u);
  EXPECT_EQ(model.vxlan->source_interface, 0u);
  EXPECT_EQ(model.vxlan->default_group, 0u);
  EXPECT_TRUE(model.vxlan->remote_vteps.empty());
  EXPECT_TRUE(model.vxlan->tenants.empty());
  EXPECT_EQ(vxlan_tenant_of_vlan(model, 10), 0u);
  EXPECT_GT(model.change, model.applied);
}

TEST(Vxlan, TenantOfAVlanIsFoundForEveryNumber) {
  switch_model model = prepared();
  for (uint32_t vlan : {0u, 1u, 9u, 11u, 4094u, 4095u, UINT32_MAX})
    EXPECT_EQ(vxlan_tenant_of_vlan(model, vlan), 0u) << vlan;
  EXPECT_EQ(vxlan_tenant_of_vlan(model, 10), 5000u);
  ASSERT_EQ(vxlan_tenant_unbind(model, 5000, 10), OPEN_E_NONE);
  EXPECT_EQ(vxlan_tenant_of_vlan(model, 10), 0u);
}

TEST(Vxlan, SourceInterfaceAloneIsUsed) {
  switch_model model = prepared();
  EXPECT_TRUE(vxlan_uses_interface(model, loopback_first));
  EXPECT_FALSE(vxlan_uses_interface(model, loopback_first + 1));
  ASSERT_EQ(vxlan_set_source_interface(model, 0), OPEN_E_NONE);
  EXPECT_FALSE(vxlan_uses_interface(model, loopback_first));
  EXPECT_FALSE(vxlan_uses_interface(model, 0)) << "none is no interface";
}

TEST(Vxlan, FirstTenantWithAGroupIsNamed) {
  switch_model model = prepared();
  EXPECT_EQ(vxlan_tenant_of_group(model, group), 5000u);
  ASSERT_EQ(vxlan_tenant_make(model, 1), OPEN_E_NONE);
  ASSERT_EQ(vxlan_tenant_set_group(model, 1, group), OPEN_E_NONE);
  EXPECT_EQ(vxlan_tenant_of_group(model, group), 1u);
  EXPECT_EQ(vxlan_tenant_of_group(model, group + 1), 0u) << "the default group is nobody's own";
  ASSERT_EQ(vxlan_tenant_make(model, 2), OPEN_E_NONE);
  EXPECT_EQ(vxlan_tenant_of_group(model, 0), 0u) << "to have none is not to have group 0";
}

TEST(Vxlan, WhatIsAsWantedIsNoChange) {
  switch_model model = prepared();
  EXPECT_EQ(vxlan_tenant_bind(model, 5000, 10), OPEN_E_NONE);
  EXPECT_EQ(vxlan_tenant_set_remote_vteps(model, 5000, true), OPEN_E_NONE);
  EXPECT_EQ(vxlan_tenant_set_group(model, 5000, group), OPEN_E_NONE);
  EXPECT_EQ(vxlan_remote_vtep_add(model, vtep), OPEN_E_NONE);
  EXPECT_EQ(vxlan_set_source_interface(model, loopback_first), OPEN_E_NONE);
  EXPECT_EQ(vxlan_set_udp_port(model, 5000), OPEN_E_NONE);
  EXPECT_EQ(vxlan_set_mode(model, vxlan_mode::unicast), OPEN_E_NONE);
  EXPECT_EQ(vxlan_set_default_group(model, group + 1), OPEN_E_NONE);
  EXPECT_EQ(model.change, model.applied);
}

TEST(Vxlan, CopyOfTheSwitchKeepsItsTenants) {
  switch_model model = prepared(), copy = model;
  EXPECT_EQ(&*copy.vxlan, &*model.vxlan) << "shared until one of them changes";
  ASSERT_EQ(vxlan_tenant_remove(model, 5000), OPEN_E_NONE);
  EXPECT_EQ(vxlan_tenant_of_vlan(model, 10), 0u);
  EXPECT_EQ(vxlan_tenant_of_vlan(copy, 10), 5000u);
  EXPECT_TRUE(vxlan_tenant_find(copy, 5000));
}

} // namespace
