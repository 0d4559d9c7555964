/* The VXLAN module on a platform that puts out what the software switch never does: walks without an end,
 * numbers of any size. Flags of the mode that are neither 0 nor 1: test_vxlan_mode.cpp. */
#include "engine/rest_request.h"
#include "tests/unit/modules/vxlan_fixture.h"

class VxlanStrangePlatformTest : public VxlanTest {
protected:
  void expect_given_up(const std::string &uri) const {
    EXPECT_EQ(get(uri), expected_platform_error(OPEN_E_INTERNAL)) << uri;
  }
};

TEST_F(VxlanStrangePlatformTest, TenantsWithoutAnEndAreGivenUp) {
  {
    begin(UNICAST);
    bent_output first_again("rpcclt_openapiL2oL3TenantNextGet", 5);
    expect_given_up("/vxlan/1/tenant");
  }
  begin(MULTICAST);
  bent_output first_again("rpcclt_openapiL2oL3TenantNextGetZYL", 5);
  expect_given_up("/vxlan/1/tenant");
  expect_given_up("/vxlan/1/tenant/6"); /* never met */
  expect_given_up("/vxlan/1/multicastGroup");
  must(rpcclt_openapiL2oL3IPMCSet(handle, 1, 5, 0));
  expect_given_up("/vxlan/1/multicastGroup"); /* though nothing is listed */
}

TEST_F(VxlanStrangePlatformTest, RemoteVtepsWithoutAnEndAreGivenUp) {
  begin(UNICAST);
  bent_output begin_again("rpcclt_openapiL2oL3TunnelGetNextTenant", 0);
  expect_given_up("/vxlan/1/unicastGroup");
}

/* Whatever would come after it. */
TEST_F(VxlanStrangePlatformTest, WalkIsOverAtTheTenantThatIsLookedFor) {
  begin(MULTICAST);
  EXPECT_EQ(get("/vxlan/1/tenant/5"), expected_tenant(5, 10));
  EXPECT_EQ(calls_made(), (std::vector<std::string>{"TenantFirstGet 1", "TenantFirstGet 1"}));
}

/* Numbers are shown as signed ones. */
TEST_F(VxlanStrangePlatformTest, HugeNumbersAreShownAsTheyCome) {
  const struct {
    uint32_t value;
    int64_t shown;
  } rows[] = {{0, 0}, {65536, 65536}, {INT32_MAX, INT32_MAX}, {1u << 31, INT32_MIN}, {UINT32_MAX, -1}};
  for (const auto &row : rows) {
    begin(UNICAST);
    {
      bent_output port("rpcclt_openapiL2oL3SwitchVxlanUdpDestPortGet", row.value);
      EXPECT_EQ(get("/vxlan/1/udpPort"), expected_udp_port(row.shown));
      bent_output vlan("rpcclt_openapiL2oL3TenantGet", row.value);
      EXPECT_EQ(get("/vxlan/1/tenant/6"), expected_tenant(6, row.shown));
    }
    set_mode(MULTICAST);
    bent_output port("rpcclt_openapiL2oL3SwitchVxlanUdpDstPortGetZYL", row.value);
    EXPECT_EQ(get("/vxlan/1/udpPort"), expected_udp_port(row.shown));
    bent_output vlan("rpcclt_openapiL2oL3TenantFirstGet vlanId", row.value);
    EXPECT_EQ(get("/vxlan/1/tenant/5"), expected_tenant(5, row.shown));
    EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants({{5, row.shown}, {6, 20}}));
  }
}

TEST_F(VxlanStrangePlatformTest, SourceThatIsNoInterfaceIsShownAsOne) {
  const struct {
    tunnel_mode mode;
    const char *function;
  } rows[] = {{UNICAST, "rpcclt_openapiL2oL3VxlanSourcePortGet"},
              {MULTICAST, "rpcclt_openapiL2oL3VxlanSourcePortGetZYL"}};
  for (const auto &row : rows) {
    begin(row.mode);
    for (uint32_t ifNum : {55u, 300u, 100000u, uint32_t{INT32_MAX}, UINT32_MAX}) {
      bent_output source(row.function, ifNum);
      EXPECT_EQ(get("/vxlan/1/sourceIntf"), expected_source("interface", static_cast<int32_t>(ifNum)));
    }
    bent_output no_source(row.function, 0);
    EXPECT_EQ(get("/vxlan/1/sourceIntf"), expected_source("none", 0));
  }
}

TEST_F(VxlanStrangePlatformTest, GroupsAreShownWhateverTheirAddresses) {
  begin(MULTICAST);
  bent_output default_group("rpcclt_openapiL2oL3DefaultIPMCGetZYL", UINT32_MAX);
  {
    bent_output none("rpcclt_openapiL2oL3IPMCGet", 0);
    EXPECT_EQ(get("/vxlan/1/multicastGroup"), expected_data({multicast_groups("255.255.255.255", {})}));
  }
  bent_output group("rpcclt_openapiL2oL3IPMCGet", 1);
  EXPECT_EQ(get("/vxlan/1/multicastGroup"),
            expected_data({multicast_groups("255.255.255.255", {{5, "0.0.0.1"}, {6, "0.0.0.1"}})}));
}

/* A tenant is made from an empty record, whatever a tenant that is not there was read as. */
TEST_F(VxlanStrangePlatformTest, OutputOfATenantThatIsNotThereIsNotLookedAt) {
  begin(UNICAST);
  bent_output vlan("rpcclt_openapiL2oL3TenantGet", 20);
  expect_done("POST", "/vxlan/1/tenant/7/vlan/30", "", "Create VxLAN tenant 7 successfully.");
  EXPECT_EQ(recorded_arguments("rpcclt_openapiL2oL3TenantCreate"), "1 7 2 0");
}

/* The ids that count are those of the platform. */
TEST_F(VxlanStrangePlatformTest, HighestVlanIdIsThePlatforms) {
  begin(UNICAST);
  bent_output highest("rpcclt_openapiDot1VlanMaxGet", 20);
  EXPECT_EQ(serve("POST", "/vxlan/1/tenant/7/vlan/21"), refused("VLAN ID not valid."));
  EXPECT_EQ(serve("DELETE", "/vxlan/1/tenant/7/vlan/21"), refused("VLAN ID not valid."));
  EXPECT_EQ(serve("PUT", "/vxlan/1/sourceIntf/vlan", "value=21"), refused("VLAN ID not valid."));
  expect_done("PUT", "/vxlan/1/sourceIntf/vlan", "value=10", "Update VxLAN source port successfully.");
  expect_done("DELETE", "/vxlan/1/tenant/6/vlan/20", "", "Delete VxLAN tenant 6 successfully.");
  expect_done("POST", "/vxlan/1/tenant/6/vlan/20", "", "Create VxLAN tenant 6 successfully.");
}

TEST_F(VxlanStrangePlatformTest, GroupEqualToWhateverDefaultThePlatformTellsIsRefused) {
  begin(MULTICAST);
  bent_output default_group("rpcclt_openapiL2oL3DefaultIPMCGetZYL", ipv4(239, 7, 7, 7));
  EXPECT_EQ(serve("PUT", "/vxlan/1/tenant/5/multicastGroup", "value=239.7.7.7"),
            refused(" Conflict with default multicast group!!"));
  EXPECT_EQ(once("PUT", "/vxlan/1/tenant/5/multicastGroup", "value=239.7.7.8"),
            expected_answers(0, "Update VxLAN multicast group successfully.").xml);
}
