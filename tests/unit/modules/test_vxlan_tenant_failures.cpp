/* The VXLAN module when the platform fails while it makes or deletes a tenant: every call with every result,
 * and what is left of the tenant. */
#include "tests/unit/modules/vxlan_fixture.h"

#include <algorithm>
#include <string.h>

class VxlanTenantFailureTest : public VxlanTest {
protected:
  static constexpr char NAMES[] = "rpcclt_openapiL2oL3";

  /* The switch with tenants 5 and 6, and a tenant 8 without a VLAN and without remote VTEPs. */
  void begin_with_bare_tenant() const {
    begin(UNICAST);
    open_l2oL3TenantConfig_t config = {};
    config.tunnelType = OPEN_L2OL3_TUNNEL_VXLAN;
    must(rpcclt_openapiL2oL3TenantCreate(handle, 1, 8, &config));
    forget_calls();
  }
  open_error_t read(uint32_t tenantId) const {
    open_l2oL3TenantConfig_t config = {};
    return rpcclt_openapiL2oL3TenantGet(handle, tenantId, &config);
  }
  /* What is there before any request. */
  void expect_untouched(const std::vector<listed_tenant> &tenants) const {
    EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants(tenants));
    EXPECT_EQ(get("/vxlan/1/sourceIntf"), expected_source("loopback", 0));
    EXPECT_EQ(get("/vxlan/1/unicastGroup"), expected_data({unicast_groups({"10.0.0.1", "10.0.0.2"})}));
  }
};

/* The name of a call, without its arguments. */
static std::string name_of(const std::string &call) {
  return call.substr(0, call.find(' '));
}

/* The calls up to the one at `last`, and `then`. */
static std::vector<std::string> calls_up_to(const std::vector<std::string> &calls, size_t last,
                                            const std::vector<std::string> &then = {}) {
  std::vector<std::string> made(calls.begin(), calls.begin() + static_cast<long>(last) + 1);
  made.insert(made.end(), then.begin(), then.end());
  return made;
}

/* --- A new tenant in unicast mode ----------------------------------------------------------------------- */

static const std::vector<std::string> NEW_TENANT = {
    "TenantGet 7",        "TenantCreate 1 7 2 0",   "TenantVlanAdd 7 2 30",
    "VxlanSourcePortGet", "VxlanSourcePortSet 120", "TenantAddAllVtep 7"};

TEST_F(VxlanTenantFailureTest, NewTenantIsNeverLeftHalfMade) {
  begin(UNICAST);
  for (size_t step = 1; step < NEW_TENANT.size(); step++) {
    for (open_error_t rc : all_platform_errors()) {
      for (const char *format : {"xml", "json"}) {
        SCOPED_TRACE(NEW_TENANT[step] + " " + std::to_string(rc));
        fault(NAMES + name_of(NEW_TENANT[step]), rc);
        forget_calls();
        Answers expected = expected_platform_error(rc);
        EXPECT_EQ(once("POST", "/vxlan/1/tenant/7/vlan/30", "", format),
                  *format == 'x' ? expected.xml : expected.json);
        /* Nothing was made when making it is what failed. */
        EXPECT_EQ(calls_made(),
                  step == 1 ? calls_up_to(NEW_TENANT, 1) : calls_up_to(NEW_TENANT, step, {"TenantDelete 7"}));
        EXPECT_EQ(read(7), OPEN_E_NOT_FOUND);
      }
    }
  }
  expect_untouched({{5, 10}, {6, 20}});
  /* The VLAN is free for another tenant, and the tenant for another VLAN. */
  expect_done("POST", "/vxlan/1/tenant/9/vlan/30", "", "Create VxLAN tenant 9 successfully.");
  expect_done("POST", "/vxlan/1/tenant/7/vlan/40", "", "Create VxLAN tenant 7 successfully.");
}

TEST_F(VxlanTenantFailureTest, FailureOfTheUndoingIsNotAnswered) {
  for (size_t step = 2; step < NEW_TENANT.size(); step++) {
    for (open_error_t rc : all_platform_errors()) {
      SCOPED_TRACE(NEW_TENANT[step] + " " + std::to_string(rc));
      begin(UNICAST);
      fault(NAMES + name_of(NEW_TENANT[step]), OPEN_E_EXISTS);
      fault("rpcclt_openapiL2oL3TenantDelete", rc);
      EXPECT_EQ(once("POST", "/vxlan/1/tenant/7/vlan/30"), expected_platform_error(OPEN_E_EXISTS).xml);
      EXPECT_EQ(calls_made(), calls_up_to(NEW_TENANT, step, {"TenantDelete 7"}));
    }
  }
}

/* Whatever the platform says when it is asked for the tenant, it is the making that tells. */
TEST_F(VxlanTenantFailureTest, TenantThatCannotBeReadIsMade) {
  for (open_error_t rc : all_platform_errors()) {
    begin(UNICAST);
    fault("rpcclt_openapiL2oL3TenantGet", rc);
    expect_done("POST", "/vxlan/1/tenant/7/vlan/30", "", "Create VxLAN tenant 7 successfully.");
    EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants({{5, 10}, {6, 20}, {7, 30}}));
  }
}

TEST_F(VxlanTenantFailureTest, TenantThatIsThereButCannotBeReadIsLeftAlone) {
  for (open_error_t rc : all_platform_errors()) {
    begin_with_bare_tenant();
    fault("rpcclt_openapiL2oL3TenantGet", rc, 2);
    EXPECT_EQ(serve("POST", "/vxlan/1/tenant/8/vlan/30"), expected_platform_error(OPEN_E_EXISTS)) << rc;
    expect_untouched({{5, 10}, {6, 20}, {8, 0}});
  }
}

/* --- A tenant that was there, in unicast mode --------------------------------------------------------------
 */

static const std::vector<std::string> OLD_TENANT = {"TenantGet 8", "TenantVlanAdd 8 2 30",
                                                    "VxlanSourcePortGet", "VxlanSourcePortSet 120",
                                                    "TenantAddAllVtep 8"};

TEST_F(VxlanTenantFailureTest, TenantThatWasThereBeforeIsNotDeleted) {
  for (size_t step = 1; step < OLD_TENANT.size(); step++) {
    for (open_error_t rc : all_platform_errors()) {
      SCOPED_TRACE(OLD_TENANT[step] + " " + std::to_string(rc));
      begin_with_bare_tenant();
      fault(NAMES + name_of(OLD_TENANT[step]), rc);
      EXPECT_EQ(once("POST", "/vxlan/1/tenant/8/vlan/30"), expected_platform_error(rc).xml);
      std::vector<std::string> made = calls_made();
      EXPECT_EQ(calls_up_to(made, step), calls_up_to(OLD_TENANT, step));
      EXPECT_EQ(std::count(made.begin(), made.end(), "TenantDelete 8"), 0);
      EXPECT_EQ(read(8), OPEN_E_NONE);
    }
  }
}

TEST_F(VxlanTenantFailureTest, TenantThatIsBoundElsewhereIsLeftAsItWas) {
  begin(UNICAST);
  for (const char *uri :
       {"/vxlan/1/tenant/5/vlan/10", "/vxlan/1/tenant/5/vlan/20", "/vxlan/1/tenant/5/vlan/30"}) {
    forget_calls();
    once("POST", uri);
    EXPECT_EQ(calls_made(), (std::vector<std::string>{"TenantGet 5", std::string("TenantVlanAdd 5 2 ") +
                                                                         (strrchr(uri, '/') + 1)}));
  }
  expect_untouched({{5, 10}, {6, 20}});
}

/* --- Deleting in unicast mode --------------------------------------------------------------------------- */

static const std::vector<std::string> DELETING = {"TenantVlanRemove 5 2 10", "TenantRemoveAllVtep 5",
                                                  "TenantDelete 5"};

TEST_F(VxlanTenantFailureTest, DeletingEndsAtTheFirstFailure) {
  for (size_t step = 0; step < DELETING.size(); step++) {
    for (open_error_t rc : all_platform_errors()) {
      for (const char *format : {"xml", "json"}) {
        SCOPED_TRACE(DELETING[step] + " " + std::to_string(rc));
        begin(UNICAST);
        fault(NAMES + name_of(DELETING[step]), rc);
        Answers expected = expected_platform_error(rc);
        EXPECT_EQ(once("DELETE", "/vxlan/1/tenant/5/vlan/10", "", format),
                  *format == 'x' ? expected.xml : expected.json);
        EXPECT_EQ(calls_made(), calls_up_to(DELETING, step));
        EXPECT_EQ(read(5), OPEN_E_NONE);
      }
    }
  }
}

TEST_F(VxlanTenantFailureTest, DeletionThatFailedHalfWayCanBeRepeatedOrTakenBack) {
  for (size_t step = 1; step < DELETING.size(); step++) {
    begin(UNICAST);
    fault(NAMES + name_of(DELETING[step]), OPEN_E_FAIL);
    once("DELETE", "/vxlan/1/tenant/5/vlan/10");
    EXPECT_EQ(get("/vxlan/1/tenant/5"), expected_tenant(5, 0));
    expect_done("POST", "/vxlan/1/tenant/5/vlan/10", "", "Create VxLAN tenant 5 successfully.");
    expect_untouched({{5, 10}, {6, 20}});
    fault(NAMES + name_of(DELETING[step]), OPEN_E_FAIL);
    once("DELETE", "/vxlan/1/tenant/5/vlan/10");
    expect_done("DELETE", "/vxlan/1/tenant/5/vlan/10", "", "Delete VxLAN tenant 5 successfully.");
    EXPECT_EQ(read(5), OPEN_E_NOT_FOUND);
  }
}

/* --- Multicast mode: one call each ------------------------------------------------------------------------
 */

TEST_F(VxlanTenantFailureTest, MulticastTenantIsMadeAndDeletedWholeOrNotAtAll) {
  begin(MULTICAST);
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiL2oL3TenantSet", rc, 2);
    EXPECT_EQ(serve("POST", "/vxlan/1/tenant/7/vlan/30"), expected_platform_error(rc)) << rc;
    EXPECT_EQ(calls_made(), (std::vector<std::string>{"TenantSet 1 7 30 1", "TenantSet 1 7 30 1"}));
    EXPECT_EQ(read(7), OPEN_E_NOT_FOUND);
    fault("rpcclt_openapiL2oL3TenantSet", rc, 2);
    forget_calls();
    EXPECT_EQ(serve("DELETE", "/vxlan/1/tenant/5/vlan/10"), expected_platform_error(rc)) << rc;
    EXPECT_EQ(calls_made(), (std::vector<std::string>{"TenantSet 1 5 10 0", "TenantSet 1 5 10 0"}));
    EXPECT_EQ(get("/vxlan/1/tenant"), expected_tenants({{5, 10}, {6, 20}}));
    forget_calls();
  }
}
