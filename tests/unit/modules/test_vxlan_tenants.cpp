/* The VXLAN module, tenants: making, deleting, reading and listing them. Platform failures:
 * test_vxlan_tenant_failures.cpp. */
#include "tests/unit/modules/vxlan_fixture.h"

class VxlanTenantTest : public VxlanTest {
protected:
  /* VLAN of a tenant, -1 when there is no such tenant. */
  int64_t vlan_of(uint32_t tenantId) const {
    open_l2oL3TenantConfig_t config = {};
    open_error_t rc = rpcclt_openapiL2oL3TenantGet(handle, tenantId, &config);
    if (rc == OPEN_E_NONE) return config.vlanId;
    EXPECT_EQ(rc, OPEN_E_NOT_FOUND);
    return -1;
  }
  unsigned tunnels_of(uint32_t tenantId) const {
    open_l2oL3TunnelInfo_t tunnel = {};
    unsigned count = 0;
    while (rpcclt_openapiL2oL3TunnelGetNextTenant(handle, tenantId, tunnel.tunnelId, &tunnel) == OPEN_E_NONE)
      count++;
    return count;
  }
  /* A tenant without a VLAN and without remote VTEPs. */
  void make_bare(uint32_t tenantId) const {
    open_l2oL3TenantConfig_t config = {};
    config.tunnelType = OPEN_L2OL3_TUNNEL_VXLAN;
    must(rpcclt_openapiL2oL3TenantCreate(handle, 1, tenantId, &config));
  }
};

static std::string tenant_uri(const std::string &tenantId, const std::string &vlanId) {
  return "/vxlan/1/tenant/" + tenantId + "/vlan/" + vlanId;
}

/* --- Making --------------------------------------------------------------------------------------------- */

TEST_F(VxlanTenantTest, TenantIsMadeWithItsVlanAndAllRemoteVteps) {
  for (tunnel_mode mode : {UNICAST, MULTICAST}) {
    begin(mode);
    expect_done("POST", "/vxlan/1/tenant/7/vlan/30", "", "Create VxLAN tenant 7 successfully.");
    EXPECT_EQ(vlan_of(7), 30);
    EXPECT_EQ(tunnels_of(7), 2u);
    EXPECT_EQ(get("/vxlan/1/tenant/7"), expected_tenant(7, 30));
    EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants({{5, 10}, {6, 20}, {7, 30}}));
    EXPECT_EQ(get("/vxlan/1/sourceIntf"), expected_source("loopback", 0));
  }
}

TEST_F(VxlanTenantTest, IdsRunFrom1To16777214) {
  for (tunnel_mode mode : {UNICAST, MULTICAST}) {
    begin_empty(mode);
    expect_done("POST", tenant_uri("1", "10"), "", "Create VxLAN tenant 1 successfully.");
    expect_done("POST", tenant_uri("0016777214", "0020"), "", "Create VxLAN tenant 16777214 successfully.");
    EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants({{1, 10}, {16777214, 20}}));
    EXPECT_EQ(get("/vxlan/1/tenant/016777214"), expected_tenant(16777214, 20));
  }
}

/* In factory state a switch has no source; none is set again then. */
TEST_F(VxlanTenantTest, SourceIsSetAgainOnlyWhenThereIsOne) {
  set_mode(UNICAST);
  forget_calls();
  expect_done("POST", "/vxlan/1/tenant/7/vlan/30", "", "Create VxLAN tenant 7 successfully.");
  EXPECT_EQ(calls_made(),
            (std::vector<std::string>{"TenantGet 7", "TenantCreate 1 7 2 0", "TenantVlanAdd 7 2 30",
                                      "VxlanSourcePortGet", "TenantAddAllVtep 7"}));
}

TEST_F(VxlanTenantTest, TenantThatIsThereIsBoundButNotMadeAgain) {
  begin(UNICAST);
  make_bare(7);
  forget_calls();
  expect_done("POST", "/vxlan/1/tenant/7/vlan/30", "", "Create VxLAN tenant 7 successfully.");
  EXPECT_EQ(calls_made(),
            (std::vector<std::string>{"TenantGet 7", "TenantVlanAdd 7 2 30", "VxlanSourcePortGet",
                                      "VxlanSourcePortSet 120", "TenantAddAllVtep 7"}));
  EXPECT_EQ(vlan_of(7), 30);
  EXPECT_EQ(tunnels_of(7), 2u);
}

TEST_F(VxlanTenantTest, TenantThatIsBoundKeepsItsVlan) {
  for (tunnel_mode mode : {UNICAST, MULTICAST}) {
    begin(mode);
    EXPECT_EQ(serve("POST", "/vxlan/1/tenant/5/vlan/10"), expected_platform_error(OPEN_E_EXISTS));
    EXPECT_EQ(serve("POST", "/vxlan/1/tenant/5/vlan/30"), expected_platform_error(OPEN_E_FAIL));
    EXPECT_EQ(serve("POST", "/vxlan/1/tenant/5/vlan/20"), expected_platform_error(OPEN_E_FAIL));
    EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants({{5, 10}, {6, 20}}));
    EXPECT_EQ(tunnels_of(5), 2u);
  }
}

TEST_F(VxlanTenantTest, NoTenantIsMadeForAVlanThatHasOne) {
  for (tunnel_mode mode : {UNICAST, MULTICAST}) {
    begin(mode);
    EXPECT_EQ(serve("POST", "/vxlan/1/tenant/7/vlan/10"), expected_platform_error(OPEN_E_FAIL));
    EXPECT_EQ(vlan_of(7), -1);
    EXPECT_EQ(vlan_of(5), 10);
  }
}

TEST_F(VxlanTenantTest, NoMoreTenantsAreMadeThanThereMayBe) {
  lower_limit("vxlan-tenants", 2);
  for (tunnel_mode mode : {UNICAST, MULTICAST}) {
    begin(mode);
    EXPECT_EQ(serve("POST", "/vxlan/1/tenant/7/vlan/30"), expected_platform_error(OPEN_E_FULL));
    EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants({{5, 10}, {6, 20}}));
    once("DELETE", "/vxlan/1/tenant/5/vlan/10");
    expect_done("POST", "/vxlan/1/tenant/7/vlan/30", "", "Create VxLAN tenant 7 successfully.");
  }
  lower_limit("vxlan-tenants", 1024);
}

/* --- Making: refusals in the order of their checks --------------------------------------------------------
 */

static const char *const BAD_TENANTS[] = {"0",          "000",        "16777215",   "16777216",
                                          "2147483648", "4294967301", "4311744510", "99999999999999999999"};
static const char *const BAD_VLANS[] = {"0", "000", "4095", "4106", "2147483648", "4294967306"};

TEST_F(VxlanTenantTest, TenantIdOutOfRangeIsRefusedBeforeAllElse) {
  for (tunnel_mode mode : ALL_MODES) {
    begin(mode);
    for (const char *tenantId : BAD_TENANTS) {
      for (const char *vlanId : {"10", "0", "4095", "50"})
        EXPECT_EQ(serve("POST", tenant_uri(tenantId, vlanId)), refused("Invalid tenant ID.")) << tenantId;
      EXPECT_EQ(get(std::string("/vxlan/1/tenant/") + tenantId), refused("Invalid tenant ID.")) << tenantId;
    }
    EXPECT_EQ(calls_made(), std::vector<std::string>());
  }
}

TEST_F(VxlanTenantTest, VlanIdOutOfRangeIsRefusedBeforeItIsLookedFor) {
  for (tunnel_mode mode : ALL_MODES) {
    begin(mode);
    for (const char *vlanId : BAD_VLANS)
      EXPECT_EQ(serve("POST", tenant_uri("7", vlanId)), refused("VLAN ID not valid.")) << vlanId;
    EXPECT_EQ(calls_made(), std::vector<std::string>());
  }
}

TEST_F(VxlanTenantTest, VlanMustExistBeforeTheModeIsLookedAt) {
  for (tunnel_mode mode : ALL_MODES) {
    begin(mode);
    EXPECT_EQ(serve("POST", "/vxlan/1/tenant/7/vlan/50"), refused("VLAN 50 not yet created."));
    EXPECT_EQ(serve("POST", "/vxlan/1/tenant/7/vlan/04094"), refused("VLAN 4094 not yet created."));
    EXPECT_EQ(serve("POST", "/vxlan/1/tenant/5/vlan/50"), refused("VLAN 50 not yet created."));
    EXPECT_EQ(calls_made(), std::vector<std::string>());
    EXPECT_EQ(vlan_of(7), -1);
  }
}

TEST_F(VxlanTenantTest, AnswersOfTheVlanCheckAreTold) {
  for (tunnel_mode mode : ALL_MODES) {
    begin(mode);
    for (open_error_t rc : all_platform_errors()) {
      Answers expected = expected_platform_error(rc);
      if (rc == OPEN_E_PARAM) expected = expected_answers(1, "The value of parameter is invalid.");
      if (rc == OPEN_E_FAIL) expected = refused("VLAN 30 not yet created.");
      fault("openapiVlanCreatedCheck", rc, 2);
      EXPECT_EQ(serve("POST", "/vxlan/1/tenant/7/vlan/30"), expected) << rc;
    }
    EXPECT_EQ(calls_made(), std::vector<std::string>());
  }
}

TEST_F(VxlanTenantTest, NoVlanIsValidWhenTheHighestIdIsNotTold) {
  begin(UNICAST);
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiDot1VlanMaxGet", rc, 2);
    EXPECT_EQ(serve("POST", "/vxlan/1/tenant/7/vlan/30"), refused("VLAN ID not valid.")) << rc;
    fault("rpcclt_openapiDot1VlanMaxGet", rc, 2);
    EXPECT_EQ(serve("DELETE", "/vxlan/1/tenant/5/vlan/10"), refused("VLAN ID not valid.")) << rc;
  }
  EXPECT_EQ(calls_made(), std::vector<std::string>());
}

/* --- Deleting ------------------------------------------------------------------------------------------- */

TEST_F(VxlanTenantTest, TenantIsDeletedAndItsVlanIsFree) {
  for (tunnel_mode mode : {UNICAST, MULTICAST}) {
    begin(mode);
    expect_done("DELETE", "/vxlan/1/tenant/5/vlan/10", "", "Delete VxLAN tenant 5 successfully.");
    EXPECT_EQ(vlan_of(5), -1);
    EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants({{6, 20}}));
    expect_done("POST", "/vxlan/1/tenant/0008/vlan/10", "", "Create VxLAN tenant 8 successfully.");
    expect_done("DELETE", "/vxlan/1/tenant/0008/vlan/0010", "", "Delete VxLAN tenant 8 successfully.");
    must(rpcclt_openapiRtrVlanIntfDelete(handle, 10));
    must(rpcclt_openapiVlanDelete(handle, 10));
  }
}

TEST_F(VxlanTenantTest, TenantOfAnotherVlanIsNotDeleted) {
  for (tunnel_mode mode : {UNICAST, MULTICAST}) {
    begin(mode);
    for (const char *uri : {"/vxlan/1/tenant/5/vlan/20", "/vxlan/1/tenant/5/vlan/30",
                            "/vxlan/1/tenant/5/vlan/50", "/vxlan/1/tenant/7/vlan/10"})
      EXPECT_EQ(serve("DELETE", uri), expected_platform_error(OPEN_E_NOT_FOUND)) << uri;
    EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants({{5, 10}, {6, 20}}));
    EXPECT_EQ(tunnels_of(5), 2u);
  }
}

/* The other way round than in making one. */
TEST_F(VxlanTenantTest, DeletingChecksTheVlanIdBeforeTheTenantId) {
  for (tunnel_mode mode : ALL_MODES) {
    begin(mode);
    for (const char *vlanId : BAD_VLANS) {
      for (const char *tenantId : {"5", "0", "16777215"})
        EXPECT_EQ(serve("DELETE", tenant_uri(tenantId, vlanId)), refused("VLAN ID not valid.")) << vlanId;
    }
    for (const char *tenantId : BAD_TENANTS)
      EXPECT_EQ(serve("DELETE", tenant_uri(tenantId, "10")), refused("Invalid tenant ID.")) << tenantId;
    EXPECT_EQ(calls_made(), std::vector<std::string>());
  }
}

/* --- Reading -------------------------------------------------------------------------------------------- */

TEST_F(VxlanTenantTest, AnswersAreTheseDocuments) {
  begin(UNICAST);
  Answers one = get("/vxlan/1/tenant/5"), list = get("/vxlan/1/tenant");
  const std::string head = "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg>"
                           "<rlt_data>";
  const std::string json_head =
      "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { ";
  EXPECT_EQ(one.xml, head + "<tenant><tenantId>5</tenantId><vlan>10</vlan></tenant></rlt_data></result>\n");
  EXPECT_EQ(one.json, json_head + "\"tenant\": { \"tenantId\": 5, \"vlan\": 10 } } } }\n");
  EXPECT_EQ(list.xml, head +
                          "<tenants><tenant><tenantId>5</tenantId><vlan>10</vlan></tenant><tenant>"
                          "<tenantId>6</tenantId><vlan>20</vlan></tenant></tenants></rlt_data></result>\n");
  EXPECT_EQ(list.json, json_head + "\"tenants\": { \"1\": { \"tenantId\": 5, \"vlan\": 10 }, \"2\": { "
                                   "\"tenantId\": 6, \"vlan\": 20 } } } } }\n");
}

TEST_F(VxlanTenantTest, TenantWithoutAVlanIsShownWith0) {
  for (tunnel_mode mode : {UNICAST, MULTICAST}) {
    begin_empty(mode);
    make_bare(7);
    EXPECT_EQ(get("/vxlan/1/tenant/7"), expected_tenant(7, 0));
    EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants({{7, 0}}));
  }
}

/* In unicast mode the platform has no such tenant; in multicast mode the walk ends without it. */
TEST_F(VxlanTenantTest, TenantThatIsNotThereIsNotRead) {
  begin(UNICAST);
  for (const char *uri : {"/vxlan/1/tenant/1", "/vxlan/1/tenant/7", "/vxlan/1/tenant/16777214"})
    EXPECT_EQ(get(uri), expected_platform_error(OPEN_E_NOT_FOUND)) << uri;
  begin(MULTICAST);
  for (const char *uri : {"/vxlan/1/tenant/1", "/vxlan/1/tenant/7", "/vxlan/1/tenant/16777214"})
    EXPECT_EQ(get(uri), expected_platform_error(OPEN_E_FAIL)) << uri;
  begin_empty(MULTICAST);
  EXPECT_EQ(get("/vxlan/1/tenant/5"), expected_platform_error(OPEN_E_FAIL));
}

TEST_F(VxlanTenantTest, ListWithoutTenantsIsEmpty) {
  for (tunnel_mode mode : {UNICAST, MULTICAST}) {
    begin_empty(mode);
    EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants({}));
  }
}

TEST_F(VxlanTenantTest, ListIsInTheOrderOfTheIds) {
  for (tunnel_mode mode : {UNICAST, MULTICAST}) {
    begin_empty(mode);
    for (const char *uri : {"/vxlan/1/tenant/70000/vlan/10", "/vxlan/1/tenant/3/vlan/40",
                            "/vxlan/1/tenant/16777214/vlan/30", "/vxlan/1/tenant/500/vlan/20"})
      once("POST", uri);
    EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants({{3, 40}, {500, 20}, {70000, 10}, {16777214, 30}}));
    EXPECT_EQ(get("/vxlan/1/tenant/70000"), expected_tenant(70000, 10));
    EXPECT_EQ(get("/vxlan/1/tenant/16777214"), expected_tenant(16777214, 30));
  }
}

TEST_F(VxlanTenantTest, TenantsStayWhenTheModeChanges) {
  begin_empty(UNICAST);
  once("POST", "/vxlan/1/tenant/5/vlan/10");
  once("PUT", "/vxlan/1/mode", "value=0");
  EXPECT_EQ(get("/vxlan/1/tenant"), refused(NOT_ENABLED));
  once("PUT", "/vxlan/1/mode", "value=2");
  EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants({{5, 10}}));
}
