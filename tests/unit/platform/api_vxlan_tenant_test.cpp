/* Tests of the VXLAN functions of the C interface that concern tenants: their VLANs, remote VTEPs and groups;
 * every result code, and what they do. */
#include "tests/unit/platform/vxlan_test_support.h"

namespace {

constexpr uint32_t vtep_1 = ip(10, 0, 0, 1);
constexpr uint32_t vtep_2 = ip(10, 0, 0, 2);
constexpr uint32_t vtep_3 = ip(192, 168, 1, 1);

class VxlanTenants : public VxlanSwitch {
protected:
  void SetUp() override {
    VxlanSwitch::SetUp();
    ASSERT_EQ(commit("vlan 10,20,30"), OPEN_E_NONE);
  }
};

/* --- Making and deleting -------------------------------------------------------------------------------- */

TEST_F(VxlanTenants, CreatedTenantHasNothingYet) {
  ASSERT_EQ(add_vtep(vtep_1), OPEN_E_NONE);
  for (uint32_t tenant : {1u, 5000u, last_tenant}) {
    EXPECT_EQ(create(tenant), OPEN_E_NONE) << tenant;
    EXPECT_EQ(vlan_of(tenant), 0);
    EXPECT_EQ(tunnels(tenant), addresses());
    EXPECT_EQ(group_of(tenant), 0u);
    EXPECT_EQ(create(tenant), OPEN_E_EXISTS) << tenant;
  }
  EXPECT_EQ(tenants(), (list{"1 0", "5000 0", "16777214 0"}));
  restart();
  EXPECT_EQ(tenants(), (list{"1 0", "5000 0", "16777214 0"}));
  EXPECT_EQ(tunnels(1), addresses());
}

TEST_F(VxlanTenants, TenantIdOutOfRangeIsRefusedAndAMissingTenantNotFound) {
  for (const auto &[tenant, result] : absent_tenants) {
    uint32_t group;
    open_l2oL3TunnelInfo_t tunnel;
    if (result == OPEN_E_PARAM) {
      EXPECT_EQ(create(tenant), result) << tenant;
      EXPECT_EQ(set(tenant, 10), result) << tenant;
    }
    EXPECT_EQ(remove(tenant), result) << tenant;
    EXPECT_EQ(vlan_of(tenant), result) << tenant;
    EXPECT_EQ(set(tenant, 10, 0), result) << tenant;
    EXPECT_EQ(add_vlan(tenant, 10), result) << tenant;
    EXPECT_EQ(remove_vlan(tenant, 10), result) << tenant;
    EXPECT_EQ(give_vteps(tenant), result) << tenant;
    EXPECT_EQ(take_vteps(tenant), result) << tenant;
    EXPECT_EQ(next_tunnel(tenant, 0, &tunnel), result) << tenant;
    EXPECT_EQ(rpcclt_openapiL2oL3IPMCGet(&handle, 1, tenant, &group), result) << tenant;
    EXPECT_EQ(set_group(tenant, ip(239, 1, 1, 1)), result) << tenant;
    EXPECT_EQ(set_group(tenant, 0), result) << tenant;
  }
  EXPECT_EQ(tenants(), list());
}

TEST_F(VxlanTenants, RecordOfANewTenantIsAsTheHeaderSays) {
  open_l2oL3TenantConfig_t good = {OPEN_L2OL3_TUNNEL_VXLAN, 0, {}};
  std::vector<open_l2oL3TenantConfig_t> bad(9, good);
  bad[0].tunnelType = 0;
  bad[1].tunnelType = 1;
  bad[2].vlanId = 10;
  for (size_t index = 0; index < 6; index++) bad[3 + index].reserved[index] = 1;
  for (size_t row = 0; row < bad.size(); row++)
    EXPECT_EQ(rpcclt_openapiL2oL3TenantCreate(&handle, 1, 5, &bad[row]), OPEN_E_PARAM) << row;
  EXPECT_EQ(rpcclt_openapiL2oL3TenantCreate(&handle, 1, 5, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(tenants(), list());
  EXPECT_EQ(rpcclt_openapiL2oL3TenantCreate(&handle, 1, 5, &good), OPEN_E_NONE);
}

TEST_F(VxlanTenants, DeletedTenantLeavesNothingButTheListOfRemoteVteps) {
  ASSERT_EQ(set(5000, 10), OPEN_E_NONE);
  ASSERT_EQ(add_vtep(vtep_1), OPEN_E_NONE);
  ASSERT_EQ(set_group(5000, ip(239, 1, 1, 1)), OPEN_E_NONE);
  ASSERT_EQ(remove(5000), OPEN_E_NONE);
  EXPECT_EQ(remove(5000), OPEN_E_NOT_FOUND);
  EXPECT_EQ(softswitch::running_config(), "vlan 10,20,30\nvxlan remote-vtep 10.0.0.1\n");
  EXPECT_EQ(is_specific(ip(239, 1, 1, 1)), 0u);
  EXPECT_EQ(set(5001, 10), OPEN_E_NONE) << "the VLAN is free";
  EXPECT_EQ(tunnels(5001), addresses{vtep_1});
  ASSERT_EQ(create(5000), OPEN_E_NONE);
  EXPECT_EQ(vlan_of(5000), 0) << "making it again brings nothing back";
  EXPECT_EQ(group_of(5000), 0u);
}

TEST_F(VxlanTenants, FullTableRefusesOneMoreUntilOneIsDeleted) {
  EXPECT_FALSE(softswitch::set_limit("vxlan-tenants", 1025));
  ASSERT_TRUE(softswitch::set_limit("vxlan-tenants", 2));
  ASSERT_EQ(create(1), OPEN_E_NONE);
  ASSERT_EQ(set(2, 20), OPEN_E_NONE);
  EXPECT_EQ(create(3), OPEN_E_FULL);
  EXPECT_EQ(set(3, 30), OPEN_E_FULL);
  EXPECT_EQ(create(1), OPEN_E_EXISTS) << "what is there is not one more";
  EXPECT_EQ(set(1, 10), OPEN_E_NONE) << "binding takes no room";
  EXPECT_EQ(set(2, 20), OPEN_E_EXISTS);
  ASSERT_EQ(remove(1), OPEN_E_NONE);
  EXPECT_EQ(set(3, 30), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::set_limit("vxlan-tenants", 0));
  EXPECT_EQ(tenants(), (list{"2 20", "3 30"})) << "what is there stays";
}

TEST_F(VxlanTenants, ThereIsRoomFor1024) {
  std::string lines;
  for (uint32_t tenant = 1; tenant <= 1024; tenant++)
    lines += "vxlan tenant " + std::to_string(tenant) + "\n";
  std::string error;
  ASSERT_TRUE(softswitch::apply_configuration(lines, &error)) << error;
  EXPECT_EQ(create(last_tenant), OPEN_E_FULL);
  EXPECT_EQ(tenants().size(), 1024u);
}

/* --- Binding -------------------------------------------------------------------------------------------- */

TEST_F(VxlanTenants, SetMakesTheWholeTenantInOneLineOfTheJournal) {
  ASSERT_EQ(add_vtep(vtep_1), OPEN_E_NONE);
  std::string before = journal();
  ASSERT_EQ(set(5000, 10), OPEN_E_NONE);
  EXPECT_EQ(journal(), before + "vxlan tenant 5000 vlan 10\n");
  EXPECT_EQ(vlan_of(5000), 10);
  EXPECT_EQ(tunnels(5000), addresses{vtep_1});
  before = journal();
  ASSERT_EQ(set(5000, 10, 0), OPEN_E_NONE);
  EXPECT_EQ(journal(), before + "no vxlan tenant 5000\n");
  EXPECT_EQ(tenants(), list());
  EXPECT_EQ(set(5000, 10, 0), OPEN_E_NOT_FOUND);
}

TEST_F(VxlanTenants, SetBindsATenantWithoutVlanAndLeavesItsRemoteVteps) {
  ASSERT_EQ(add_vtep(vtep_1), OPEN_E_NONE);
  ASSERT_EQ(create(1), OPEN_E_NONE);
  ASSERT_EQ(create(2), OPEN_E_NONE);
  ASSERT_EQ(give_vteps(2), OPEN_E_NONE);
  EXPECT_EQ(set(1, 10), OPEN_E_NONE);
  EXPECT_EQ(set(2, 20), OPEN_E_NONE);
  EXPECT_EQ(tenants(), (list{"1 10", "2 20"}));
  EXPECT_EQ(tunnels(1), addresses());
  EXPECT_EQ(tunnels(2), addresses{vtep_1});
  restart();
  EXPECT_EQ(tunnels(1), addresses());
  EXPECT_EQ(tunnels(2), addresses{vtep_1});
}

TEST_F(VxlanTenants, DeletionThatWasCutShortCanBeRepeated) {
  ASSERT_EQ(set(1, 10), OPEN_E_NONE);
  ASSERT_EQ(set(2, 20), OPEN_E_NONE);
  ASSERT_EQ(remove_vlan(1, 10), OPEN_E_NONE);
  ASSERT_EQ(remove_vlan(2, 20), OPEN_E_NONE);
  std::string before = journal();
  EXPECT_EQ(remove_vlan(1, 10), OPEN_E_NONE);
  EXPECT_EQ(journal(), before) << "nothing to change";
  EXPECT_EQ(remove(1), OPEN_E_NONE);
  EXPECT_EQ(set(2, 20, 0), OPEN_E_NONE) << "in one call";
  EXPECT_EQ(tenants(), list());
}

TEST_F(VxlanTenants, TenantHasOneVlanAndAVlanOneTenant) {
  ASSERT_EQ(set(1, 10), OPEN_E_NONE);
  EXPECT_EQ(set(1, 10), OPEN_E_EXISTS);
  EXPECT_EQ(add_vlan(1, 10), OPEN_E_EXISTS);
  EXPECT_EQ(set(1, 20), OPEN_E_FAIL) << "it is bound to another VLAN";
  EXPECT_EQ(add_vlan(1, 20), OPEN_E_FAIL);
  EXPECT_EQ(set(2, 10), OPEN_E_FAIL) << "the VLAN is bound to another tenant";
  EXPECT_EQ(vlan_of(2), OPEN_E_NOT_FOUND) << "a refused tenant was not made either";
  ASSERT_EQ(create(2), OPEN_E_NONE);
  EXPECT_EQ(set(2, 10), OPEN_E_FAIL);
  EXPECT_EQ(add_vlan(2, 10), OPEN_E_FAIL);
  EXPECT_EQ(add_vlan(2, 20), OPEN_E_NONE);
  EXPECT_EQ(set(1, 20), OPEN_E_FAIL) << "both";
  EXPECT_EQ(set(1, 20, 0), OPEN_E_NOT_FOUND) << "bound, to another tenant";
  EXPECT_EQ(remove_vlan(1, 20), OPEN_E_NOT_FOUND);
  EXPECT_EQ(remove_vlan(1, 30), OPEN_E_NOT_FOUND);
  EXPECT_EQ(remove_vlan(1, 4094), OPEN_E_NOT_FOUND) << "there is no such VLAN";
  EXPECT_EQ(tenants(), (list{"1 10", "2 20"}));
  EXPECT_EQ(remove_vlan(1, 10), OPEN_E_NONE);
  EXPECT_EQ(vlan_of(1), 0) << "the tenant stays";
  EXPECT_EQ(remove_vlan(1, 10), OPEN_E_NONE) << "as wanted";
  EXPECT_EQ(remove_vlan(1, 20), OPEN_E_NONE);
  EXPECT_EQ(set(2, 10), OPEN_E_FAIL) << "its own VLAN stays with it";
  EXPECT_EQ(add_vlan(1, 30), OPEN_E_NONE);
  EXPECT_EQ(tenants(), (list{"1 30", "2 20"}));
}

TEST_F(VxlanTenants, VlanMustExist) {
  ASSERT_EQ(create(1), OPEN_E_NONE);
  ASSERT_EQ(set(3, 10), OPEN_E_NONE);
  for (const auto &[vlan, result] : absent_vlans) {
    EXPECT_EQ(set(1, vlan), result) << vlan;
    EXPECT_EQ(set(2, vlan), result) << vlan;
    EXPECT_EQ(add_vlan(1, vlan), result) << vlan;
    EXPECT_EQ(set(3, vlan, 0), result) << vlan;
    EXPECT_EQ(remove_vlan(3, vlan), result) << vlan;
  }
  EXPECT_EQ(tenants(), (list{"1 0", "3 10"}));
  EXPECT_EQ(set(1, 1), OPEN_E_NONE) << "VLAN 1 is one like others";
}

TEST_F(VxlanTenants, BindingChecksFlagAndTunnelType) {
  ASSERT_EQ(create(1), OPEN_E_NONE);
  for (uint32_t on : {2u, UINT32_MAX}) EXPECT_EQ(set(1, 10, on), OPEN_E_PARAM) << on;
  for (uint32_t type : no_tunnel_types) EXPECT_EQ(add_vlan(1, 10, type), OPEN_E_PARAM) << type;
  ASSERT_EQ(add_vlan(1, 10), OPEN_E_NONE);
  for (uint32_t type : no_tunnel_types) EXPECT_EQ(remove_vlan(1, 10, type), OPEN_E_PARAM) << type;
  EXPECT_EQ(vlan_of(1), 10);
}

TEST_F(VxlanTenants, VlanThatIsBoundCannotBeDeleted) {
  ASSERT_EQ(set(5000, 10), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 20), OPEN_E_NONE);
  EXPECT_EQ(vlan_of(5000), 10);
  restart_keeps_configuration();
  ASSERT_EQ(remove_vlan(5000, 10), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_NONE);
  ASSERT_EQ(set(5001, 30), OPEN_E_NONE);
  ASSERT_EQ(remove(5001), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 30), OPEN_E_NONE);
}

TEST_F(VxlanTenants, BindingAndItsEndMakeTheVlanPending) {
  ASSERT_EQ(create(1), OPEN_E_NONE);
  take_and_hold();
  ASSERT_EQ(add_vlan(1, 10), OPEN_E_NONE);
  ASSERT_EQ(set(2, 20), OPEN_E_NONE);
  ASSERT_EQ(create(3), OPEN_E_NONE);
  EXPECT_EQ(pending_vlans(), (std::vector<int>{10, 20}));
  softswitch::hold_apply(false);
  take_and_hold();
  ASSERT_EQ(give_vteps(1), OPEN_E_NONE);
  ASSERT_EQ(set_group(1, ip(239, 1, 1, 1)), OPEN_E_NONE);
  ASSERT_EQ(remove(3), OPEN_E_NONE);
  EXPECT_EQ(pending_vlans(), std::vector<int>()) << "what a tenant is to others is no change of its VLAN";
  ASSERT_EQ(remove_vlan(1, 10), OPEN_E_NONE);
  ASSERT_EQ(remove(2), OPEN_E_NONE);
  EXPECT_EQ(pending_vlans(), (std::vector<int>{10, 20}));
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
}

/* --- Walks ---------------------------------------------------------------------------------------------- */

TEST_F(VxlanTenants, WalkGoesOnAfterAnyNumber) {
  EXPECT_EQ(first(), end);
  EXPECT_EQ(next(0), end);
  ASSERT_EQ(create(last_tenant), OPEN_E_NONE);
  ASSERT_EQ(set(7, 20), OPEN_E_NONE);
  ASSERT_EQ(create(5000), OPEN_E_NONE);
  EXPECT_EQ(first(), "7 20");
  const std::pair<uint32_t, std::string> rows[] = {{0, "7 20"},          {1, "7 20"},
                                                   {6, "7 20"},          {7, "5000 0"},
                                                   {8, "5000 0"},        {4999, "5000 0"},
                                                   {5000, "16777214 0"}, {last_tenant - 1, "16777214 0"},
                                                   {last_tenant, end},   {last_tenant + 1, end},
                                                   {UINT32_MAX, end}};
  for (const auto &[after, expected] : rows) EXPECT_EQ(next(after), expected) << after;
}

/* --- Remote VTEPs --------------------------------------------------------------------------------------- */

TEST_F(VxlanTenants, AllTenantsHaveTheListFromTheMomentThatAVtepIsAdded) {
  ASSERT_EQ(create(1), OPEN_E_NONE);
  ASSERT_EQ(set(2, 20), OPEN_E_NONE);
  ASSERT_EQ(add_vtep(vtep_3), OPEN_E_NONE);
  ASSERT_EQ(add_vtep(vtep_1), OPEN_E_NONE);
  for (uint32_t tenant : {1u, 2u}) EXPECT_EQ(tunnels(tenant), (addresses{vtep_1, vtep_3})) << tenant;
  ASSERT_EQ(create(3), OPEN_E_NONE);
  ASSERT_EQ(set(4, 10), OPEN_E_NONE);
  EXPECT_EQ(tunnels(3), addresses()) << "made later: none yet";
  EXPECT_EQ(tunnels(4), (addresses{vtep_1, vtep_3})) << "made later as a whole";
  ASSERT_EQ(take_vteps(1), OPEN_E_NONE);
  EXPECT_EQ(tunnels(1), addresses());
  EXPECT_EQ(add_vtep(vtep_1), OPEN_E_EXISTS) << "which gives nobody anything";
  EXPECT_EQ(tunnels(1), addresses());
  ASSERT_EQ(add_vtep(vtep_2), OPEN_E_NONE);
  for (uint32_t tenant : {1u, 2u, 3u, 4u})
    EXPECT_EQ(tunnels(tenant), (addresses{vtep_1, vtep_2, vtep_3})) << tenant;
}

TEST_F(VxlanTenants, RemovedVtepIsTakenFromAllTenants) {
  ASSERT_EQ(set(1, 10), OPEN_E_NONE);
  ASSERT_EQ(set(2, 20), OPEN_E_NONE);
  for (uint32_t address : {vtep_1, vtep_2, vtep_3}) ASSERT_EQ(add_vtep(address), OPEN_E_NONE);
  ASSERT_EQ(take_vteps(2), OPEN_E_NONE);
  ASSERT_EQ(remove_vtep(vtep_2), OPEN_E_NONE);
  EXPECT_EQ(remove_vtep(vtep_2), OPEN_E_NOT_FOUND);
  EXPECT_EQ(remove_vtep(0), OPEN_E_NOT_FOUND);
  EXPECT_EQ(remove_vtep(UINT32_MAX), OPEN_E_NOT_FOUND);
  EXPECT_EQ(tunnels(1), (addresses{vtep_1, vtep_3}));
  EXPECT_EQ(tunnels(2), addresses());
  ASSERT_EQ(give_vteps(2), OPEN_E_NONE);
  EXPECT_EQ(tunnels(2), (addresses{vtep_1, vtep_3}));
}

TEST_F(VxlanTenants, GivenAndTakenVtepsIncludeLaterOnes) {
  ASSERT_EQ(create(1), OPEN_E_NONE);
  ASSERT_EQ(give_vteps(1), OPEN_E_NONE) << "also while there are none";
  std::string before = journal();
  EXPECT_EQ(give_vteps(1), OPEN_E_NONE) << "done already is no error";
  EXPECT_EQ(journal(), before);
  EXPECT_EQ(tunnels(1), addresses());
  restart();
  ASSERT_EQ(add_vtep(vtep_1), OPEN_E_NONE);
  EXPECT_EQ(tunnels(1), addresses{vtep_1});
  ASSERT_EQ(take_vteps(1), OPEN_E_NONE);
  EXPECT_EQ(take_vteps(1), OPEN_E_NONE);
  EXPECT_EQ(tunnels(1), addresses());
}

TEST_F(VxlanTenants, VtepHasTheAddressOfAHost) {
  for (uint32_t address : no_hosts) EXPECT_EQ(add_vtep(address), OPEN_E_PARAM) << address;
  for (uint32_t address : {ip(1, 0, 0, 0), ip(126, 255, 255, 255), ip(128, 0, 0, 0), ip(223, 255, 255, 255)})
    EXPECT_EQ(add_vtep(address), OPEN_E_NONE) << address;
}

TEST_F(VxlanTenants, FullListRefusesOneMoreVtep) {
  EXPECT_FALSE(softswitch::set_limit("remote-vteps", 129));
  ASSERT_TRUE(softswitch::set_limit("remote-vteps", 2));
  ASSERT_EQ(create(1), OPEN_E_NONE);
  ASSERT_EQ(add_vtep(vtep_1), OPEN_E_NONE);
  ASSERT_EQ(add_vtep(vtep_2), OPEN_E_NONE);
  EXPECT_EQ(add_vtep(vtep_3), OPEN_E_FULL);
  EXPECT_EQ(add_vtep(vtep_2), OPEN_E_EXISTS);
  EXPECT_EQ(tunnels(1), (addresses{vtep_1, vtep_2}));
  ASSERT_EQ(remove_vtep(vtep_1), OPEN_E_NONE);
  EXPECT_EQ(add_vtep(vtep_3), OPEN_E_NONE);
  EXPECT_EQ(tunnels(1), (addresses{vtep_2, vtep_3}));
}

TEST_F(VxlanTenants, ThereIsRoomFor128Vteps) {
  for (uint32_t host = 1; host <= 128; host++) ASSERT_EQ(add_vtep(ip(10, 0, 0, host)), OPEN_E_NONE) << host;
  EXPECT_EQ(add_vtep(ip(10, 0, 0, 129)), OPEN_E_FULL);
}

TEST_F(VxlanTenants, TunnelWalkGoesOnAfterATunnelThatIsGoneOrWasNever) {
  ASSERT_EQ(create(1), OPEN_E_NONE);
  for (uint32_t address : {vtep_1, vtep_2, vtep_3}) ASSERT_EQ(add_vtep(address), OPEN_E_NONE);
  open_l2oL3TunnelInfo_t first, second, after;
  ASSERT_EQ(next_tunnel(1, 0, &first), OPEN_E_NONE);
  ASSERT_EQ(next_tunnel(1, first.tunnelId, &second), OPEN_E_NONE);
  EXPECT_EQ(second.remoteAddress, vtep_2);
  ASSERT_EQ(remove_vtep(vtep_2), OPEN_E_NONE);
  ASSERT_EQ(next_tunnel(1, second.tunnelId, &after), OPEN_E_NONE);
  EXPECT_EQ(after.remoteAddress, vtep_3);
  EXPECT_EQ(next_tunnel(1, after.tunnelId, &after), OPEN_E_FAIL);
  EXPECT_EQ(next_tunnel(1, UINT32_MAX, &after), OPEN_E_FAIL);
  ASSERT_EQ(next_tunnel(1, 1, &after), OPEN_E_NONE);
  EXPECT_EQ(after.remoteAddress, vtep_1);
}

/* --- Groups --------------------------------------------------------------------------------------------- */

TEST_F(VxlanTenants, GroupOfATenantIsAnyThatIsForwarded) {
  ASSERT_EQ(set(1, 10), OPEN_E_NONE);
  for (uint32_t group : {ip(224, 0, 1, 0), ip(239, 255, 255, 255)}) {
    EXPECT_EQ(set_group(1, group), OPEN_E_NONE) << group;
    EXPECT_EQ(group_of(1), group);
    EXPECT_EQ(is_specific(group), 1u);
  }
  for (uint32_t group : no_groups) EXPECT_EQ(set_group(1, group), OPEN_E_PARAM) << group;
  EXPECT_EQ(group_of(1), ip(239, 255, 255, 255));
  restart();
  EXPECT_EQ(group_of(1), ip(239, 255, 255, 255));
  EXPECT_EQ(is_specific(ip(224, 0, 1, 0)), 0u) << "it was replaced";
  ASSERT_EQ(set_group(1, 0), OPEN_E_NONE);
  EXPECT_EQ(group_of(1), 0u);
  EXPECT_EQ(set_group(1, 0), OPEN_E_NONE);
}

TEST_F(VxlanTenants, AnyNumberCanBeAskedForAsAGroup) {
  ASSERT_EQ(create(1), OPEN_E_NONE);
  EXPECT_EQ(is_specific(0), 0u) << "none is not a group that a tenant has";
  for (uint32_t group : no_groups) EXPECT_EQ(is_specific(group), 0u) << group;
}

/* --- Changes -------------------------------------------------------------------------------------------- */

TEST_F(VxlanTenants, RefusedAndRepeatedCallsAreNotJournalled) {
  ASSERT_EQ(set(1, 10), OPEN_E_NONE);
  ASSERT_EQ(add_vtep(vtep_1), OPEN_E_NONE);
  ASSERT_EQ(set_group(1, ip(239, 1, 1, 1)), OPEN_E_NONE);
  take_and_hold();
  std::string before = journal();
  EXPECT_EQ(set(1, 10), OPEN_E_EXISTS);
  EXPECT_EQ(set(2, 10), OPEN_E_FAIL);
  EXPECT_EQ(create(1), OPEN_E_EXISTS);
  EXPECT_EQ(add_vlan(1, 10), OPEN_E_EXISTS);
  EXPECT_EQ(add_vtep(vtep_1), OPEN_E_EXISTS);
  EXPECT_EQ(give_vteps(1), OPEN_E_NONE);
  EXPECT_EQ(set_group(1, ip(239, 1, 1, 1)), OPEN_E_NONE);
  EXPECT_EQ(commit("vxlan tenant 1"), OPEN_E_NONE);
  EXPECT_EQ(commit("vxlan tenant 1 vlan 10"), OPEN_E_NONE);
  EXPECT_EQ(commit("vxlan remote-vtep 10.0.0.1"), OPEN_E_NONE);
  EXPECT_EQ(journal(), before);
  EXPECT_EQ(pending_vlans(), std::vector<int>());
}

TEST_F(VxlanTenants, ChangeThatCannotBeStoredIsRefused) {
  ASSERT_EQ(set(1, 10), OPEN_E_NONE);
  ASSERT_EQ(create(2), OPEN_E_NONE);
  ASSERT_EQ(add_vtep(vtep_1), OPEN_E_NONE);
  ASSERT_EQ(set_group(1, ip(239, 1, 1, 1)), OPEN_E_NONE);
  ASSERT_EQ(set_unicast(1), OPEN_E_NONE);
  ASSERT_EQ(set_source(120), OPEN_E_NONE);
  ASSERT_EQ(set_default_group(ip(239, 1, 1, 2)), OPEN_E_NONE);
  take_and_hold();
  std::string before = softswitch::running_config();
  {
    full_disk full(journal().size());
    EXPECT_EQ(create(3), OPEN_E_FAIL);
    EXPECT_EQ(remove(1), OPEN_E_FAIL);
    EXPECT_EQ(set(3, 20), OPEN_E_FAIL);
    EXPECT_EQ(set(1, 10, 0), OPEN_E_FAIL);
    EXPECT_EQ(add_vlan(2, 20), OPEN_E_FAIL);
    EXPECT_EQ(remove_vlan(1, 10), OPEN_E_FAIL);
    EXPECT_EQ(add_vtep(vtep_2), OPEN_E_FAIL);
    EXPECT_EQ(remove_vtep(vtep_1), OPEN_E_FAIL);
    EXPECT_EQ(take_vteps(1), OPEN_E_FAIL);
    EXPECT_EQ(set_group(2, ip(239, 1, 1, 1)), OPEN_E_FAIL);
    EXPECT_EQ(set_group(1, 0), OPEN_E_FAIL);
    EXPECT_EQ(set_default_group(0), OPEN_E_FAIL);
    EXPECT_EQ(set_unicast(0), OPEN_E_FAIL);
    EXPECT_EQ(set_udp_port(5000), OPEN_E_FAIL);
    EXPECT_EQ(set_source_zyl(0), OPEN_E_FAIL);
  }
  EXPECT_EQ(softswitch::running_config(), before);
  EXPECT_EQ(pending_vlans(), std::vector<int>());
  EXPECT_EQ(remove(1), OPEN_E_NONE);
}

TEST_F(VxlanTenants, ReloadReturnsToWhatWasSaved) {
  ASSERT_EQ(set(1, 10), OPEN_E_NONE);
  ASSERT_EQ(add_vtep(vtep_1), OPEN_E_NONE);
  std::string error;
  ASSERT_TRUE(softswitch::save_startup_config(&error)) << error;
  std::string saved = softswitch::running_config();
  ASSERT_EQ(remove(1), OPEN_E_NONE);
  ASSERT_EQ(set(2, 20), OPEN_E_NONE);
  ASSERT_EQ(remove_vtep(vtep_1), OPEN_E_NONE);
  ASSERT_EQ(set_source(60), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_EQ(softswitch::running_config(), saved);
  EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 20), OPEN_E_NONE) << "no tenant is left behind";
}

} // namespace
