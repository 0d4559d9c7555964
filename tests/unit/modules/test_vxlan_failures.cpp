/* The VXLAN module when the platform fails: every call of every operation with every result. Making and
 * deleting tenants: test_vxlan_tenant_failures.cpp. */
#include "tests/unit/modules/failing_calls.h"
#include "tests/unit/modules/vxlan_fixture.h"

class VxlanFailureTest : public VxlanTest {
protected:
  /* Answered so, whatever the result of the function's call. */
  void expect_always(const Answers &answers, const operation_calls &operation, const std::string &function,
                     unsigned skip = 0) const {
    for (open_error_t rc : all_platform_errors()) {
      SCOPED_TRACE(std::string(operation.method) + " " + operation.uri + ": " + function + " " +
                   std::to_string(rc));
      fault(function, rc, 1, skip);
      EXPECT_EQ(once(operation.method, operation.uri, operation.query), answers.xml);
      fault(function, rc, 1, skip);
      EXPECT_EQ(once(operation.method, operation.uri, operation.query, "json"), answers.json);
    }
  }
};

/* --- The mode ------------------------------------------------------------------------------------------- */

TEST_F(VxlanFailureTest, ModeThatCannotBeReadAnswers99) {
  begin(UNICAST);
  for (const vxlan_operation &listed : VXLAN_OPERATIONS) {
    if (listed.operation == api_vxlan_update_mode) continue; /* it reads the flags itself */
    std::string uri = std::string("/vxlan/1") + listed.uri;
    operation_calls operation = {listed.method, uri.c_str(), listed.query, {}};
    expect_always(expected_platform_error(OPEN_E_PARAM), operation, "rpcclt_openapiL2oL3SwitchTunnelModeGet");
  }
  for (const std::string &call : recorded_calls()) {
    for (const char *change : {"Set ", "Create ", "Delete ", "Add ", "Remove "})
      EXPECT_EQ(call.find(change), std::string::npos) << call;
  }
}

TEST_F(VxlanFailureTest, FlagsAreNotChangedWhenOneCannotBeRead) {
  for (tunnel_mode mode : ALL_MODES) {
    set_mode(mode);
    forget_calls();
    for (const char *query : {"value=0", "value=1", "value=2", "value=3"}) {
      for (const char *function :
           {"rpcclt_openapiL2oL3SwitchTunnelModeGet", "rpcclt_openapiL2oL3SwitchTunnelMultiModeGet"})
        expect_always(expected_platform_error(OPEN_E_PARAM), {"PUT", "/vxlan/1/mode", query, {}}, function);
    }
    EXPECT_EQ(calls_made(), std::vector<std::string>());
  }
}

TEST_F(VxlanFailureTest, ModeThatCannotBeSetIsAnswered) {
  expect_every_failure_answered(
      vxlan_api_handler, handle,
      {"PUT", "/vxlan/1/mode", "value=1", {"rpcclt_openapiL2oL3SwitchTunnelModeSet"}});
  expect_every_failure_answered(
      vxlan_api_handler, handle,
      {"PUT", "/vxlan/1/mode", "value=2", {"rpcclt_openapiL2oL3SwitchTunnelMultiModeSet"}});
  EXPECT_EQ(get("/vxlan/1/mode"), expected_mode(OFF));
}

/* That the first flag cannot be cleared is no failure when the second one can. */
TEST_F(VxlanFailureTest, MulticastIsClearedWhateverClearingUnicastFailsWith) {
  const Answers done = expected_answers(0, "Update VxLAN mode successfully.");
  for (open_error_t rc : all_platform_errors()) {
    set_mode(MULTICAST);
    fault("rpcclt_openapiL2oL3SwitchTunnelModeSet", rc);
    EXPECT_EQ(once("PUT", "/vxlan/1/mode", "value=0"), done.xml) << rc;
    EXPECT_EQ(get("/vxlan/1/mode"), expected_mode(OFF));
  }
}

TEST_F(VxlanFailureTest, FailureToClearBothFlagsIsThatOfTheSecond) {
  for (open_error_t rc : all_platform_errors()) {
    set_mode(MULTICAST);
    fault("rpcclt_openapiL2oL3SwitchTunnelMultiModeSet", rc);
    EXPECT_EQ(once("PUT", "/vxlan/1/mode", "value=0"), expected_platform_error(rc).xml) << rc;
    EXPECT_EQ(get("/vxlan/1/mode"), expected_mode(MULTICAST));
  }
}

/* --- Single settings ------------------------------------------------------------------------------------ */

TEST_F(VxlanFailureTest, EveryCallOfUnicastModeThatFailsIsAnswered) {
  const operation_calls operations[] = {
      {"GET", "/vxlan/1/udpPort", "", {"rpcclt_openapiL2oL3SwitchVxlanUdpDestPortGet"}},
      {"PUT", "/vxlan/1/udpPort", "value=5000", {"rpcclt_openapiL2oL3SwitchVxlanUdpDestPortSet"}},
      {"GET",
       "/vxlan/1/sourceIntf",
       "",
       {"rpcclt_openapiL2oL3VxlanSourcePortGet"},
       {"rpcclt_openapiRtrIntfLoopbackIdGet"}},
      {"PUT",
       "/vxlan/1/sourceIntf/if",
       "value=3",
       {"rpcclt_openapiIntfExistCheck", "rpcclt_openapiL2oL3VxlanSourcePortSet"}},
      {"PUT",
       "/vxlan/1/sourceIntf/loopback",
       "value=3",
       {"rpcclt_openapiDot1LoopbackIdMaxGet", "rpcclt_openapiLoopbackIfNumGet",
        "rpcclt_openapiL2oL3VxlanSourcePortSet"}},
      {"PUT",
       "/vxlan/1/sourceIntf/vlan",
       "value=10",
       {"rpcclt_openapiDot1VlanMaxGet", "rpcclt_openapiRtrVlanIntfNumGetZYL",
        "rpcclt_openapiL2oL3VxlanSourcePortSet"}},
      {"DELETE", "/vxlan/1/sourceIntf", "", {"rpcclt_openapiL2oL3VxlanSourcePortSet"}},
      {"GET", "/vxlan/1/tenant/5", "", {"rpcclt_openapiL2oL3TenantGet"}},
      {"PUT", "/vxlan/1/unicastGroup", "value=10.0.0.3", {"rpcclt_openapiL2oL3RemoteVtepAddAllTenant"}},
      {"DELETE", "/vxlan/1/unicastGroup", "value=10.0.0.1", {"rpcclt_openapiL2oL3RemoteVtepRemoveAllTenant"}},
  };
  begin(UNICAST);
  for (const operation_calls &operation : operations)
    expect_every_failure_answered(vxlan_api_handler, handle, operation);
  EXPECT_EQ(get("/vxlan/1/udpPort"), expected_udp_port(4789));
  EXPECT_EQ(get("/vxlan/1/sourceIntf"), expected_source("loopback", 0));
  EXPECT_EQ(get("/vxlan/1/unicastGroup"), expected_data({unicast_groups({"10.0.0.1", "10.0.0.2"})}));
}

TEST_F(VxlanFailureTest, EveryCallOfMulticastModeThatFailsIsAnswered) {
  const operation_calls operations[] = {
      {"GET", "/vxlan/1/udpPort", "", {"rpcclt_openapiL2oL3SwitchVxlanUdpDstPortGetZYL"}},
      {"PUT", "/vxlan/1/udpPort", "value=5000", {"rpcclt_openapiL2oL3SwitchVxlanUdpDstPortSetZYL"}},
      {"GET",
       "/vxlan/1/sourceIntf",
       "",
       {"rpcclt_openapiL2oL3VxlanSourcePortGetZYL"},
       {"rpcclt_openapiRtrIntfLoopbackIdGet"}},
      {"PUT",
       "/vxlan/1/sourceIntf/if",
       "value=3",
       {"rpcclt_openapiIntfExistCheck", "rpcclt_openapiL2oL3VxlanSourcePortSetZYL"}},
      {"PUT",
       "/vxlan/1/sourceIntf/loopback",
       "value=3",
       {"rpcclt_openapiDot1LoopbackIdMaxGet", "rpcclt_openapiLoopbackIfNumGet",
        "rpcclt_openapiL2oL3VxlanSourcePortSetZYL"}},
      {"PUT",
       "/vxlan/1/sourceIntf/vlan",
       "value=10",
       {"rpcclt_openapiDot1VlanMaxGet", "rpcclt_openapiRtrVlanIntfNumGetZYL",
        "rpcclt_openapiL2oL3VxlanSourcePortSetZYL"}},
      {"DELETE", "/vxlan/1/sourceIntf", "", {"rpcclt_openapiL2oL3VxlanSourcePortSetZYL"}},
      {"GET",
       "/vxlan/1/tenant/6",
       "",
       {"rpcclt_openapiL2oL3TenantFirstGet", "rpcclt_openapiL2oL3TenantNextGetZYL"}},
      {"PUT",
       "/vxlan/1/multicastGroup",
       "value=239.0.0.2",
       {"rpcclt_openapiL2oL3IsVNISpecificIPMC", "rpcclt_openapiL2oL3DefaultIPMCSetZYL"}},
      {"DELETE", "/vxlan/1/multicastGroup", "", {"rpcclt_openapiL2oL3DefaultIPMCSetZYL"}},
  };
  begin(MULTICAST);
  for (const operation_calls &operation : operations)
    expect_every_failure_answered(vxlan_api_handler, handle, operation);
  EXPECT_EQ(get("/vxlan/1/udpPort"), expected_udp_port(4789));
  EXPECT_EQ(get("/vxlan/1/sourceIntf"), expected_source("loopback", 0));
  EXPECT_EQ(get("/vxlan/1/multicastGroup"),
            expected_data({multicast_groups("239.0.0.1", {{5, "239.1.1.1"}})}));
}

TEST_F(VxlanFailureTest, GroupOfATenantThatIsNotFoundNamesTheTenant) {
  begin(MULTICAST);
  const char uri[] = "/vxlan/1/tenant/5/multicastGroup", set[] = "rpcclt_openapiL2oL3IPMCSet";
  const operation_calls operations[] = {{"PUT", uri, "value=239.1.1.2", {}}, {"DELETE", uri, "", {}}};
  for (const operation_calls &operation : operations) {
    for (open_error_t rc : all_platform_errors()) {
      fault(set, rc, 2);
      EXPECT_EQ(serve(operation.method, uri, operation.query), rc == OPEN_E_NOT_FOUND
                                                                   ? refused("VxLAN tenant 5 does not exist.")
                                                                   : expected_platform_error(rc))
          << operation.method << " " << rc;
    }
  }
  expect_calls_end_at_a_failure(
      vxlan_api_handler, handle,
      {"PUT", uri, "value=239.1.1.2", {"rpcclt_openapiL2oL3DefaultIPMCGetZYL", set}}, OPEN_E_EXISTS);
  expect_failures_answered(vxlan_api_handler, handle, {"PUT", uri, "value=239.1.1.2", {}},
                           "rpcclt_openapiL2oL3DefaultIPMCGetZYL");
}

TEST_F(VxlanFailureTest, TextThatIsNoAddressForThePlatformAnswers99) {
  const Answers refusal = expected_platform_error(OPEN_E_PARAM);
  begin(UNICAST);
  for (const char *method : {"PUT", "DELETE"})
    expect_always(refusal, {method, "/vxlan/1/unicastGroup", "value=10.0.0.1", {}},
                  "rpcclt_openapiInetAddrGet");
  begin(MULTICAST);
  for (const char *uri : {"/vxlan/1/multicastGroup", "/vxlan/1/tenant/5/multicastGroup"})
    expect_always(refusal, {"PUT", uri, "value=239.0.0.2", {}}, "rpcclt_openapiInetAddrGet");
}

TEST_F(VxlanFailureTest, NoTenantIsSeenWhenTheFirstCannotBeRead) {
  for (tunnel_mode mode : ALL_MODES) {
    begin(mode);
    expect_always(refused("Must set tenant firstly."), {"PUT", "/vxlan/1/unicastGroup", "value=10.0.0.3", {}},
                  "rpcclt_openapiL2oL3TenantNextGet");
  }
}

/* --- Kinds of sources ----------------------------------------------------------------------------------- */

TEST_F(VxlanFailureTest, SourceOfWhichTheKindIsNotToldIsAnInterface) {
  for (tunnel_mode mode : {UNICAST, MULTICAST}) {
    begin(mode);
    expect_always(expected_source("interface", FIRST_LOOPBACK), {"GET", "/vxlan/1/sourceIntf", "", {}},
                  "rpcclt_openapiRtrIntfLoopbackIdGet");
    once("PUT", "/vxlan/1/sourceIntf/vlan", "value=10");
    expect_always(expected_source("interface", FIRST_VLAN_INTERFACE), {"GET", "/vxlan/1/sourceIntf", "", {}},
                  "rpcclt_openapiRtrIntfVlanIdGet");
  }
}

/* --- Lists ---------------------------------------------------------------------------------------------- */

TEST_F(VxlanFailureTest, TenantsThatCannotBeReadAreAnswered) {
  const struct {
    tunnel_mode mode;
    const char *next;
  } rows[] = {{UNICAST, "rpcclt_openapiL2oL3TenantNextGet"},
              {MULTICAST, "rpcclt_openapiL2oL3TenantNextGetZYL"}};
  for (const auto &row : rows) {
    begin(row.mode);
    for (open_error_t rc : all_platform_errors()) {
      bool end = rc == OPEN_E_FAIL;
      fault("rpcclt_openapiL2oL3TenantFirstGet", rc, 2);
      EXPECT_EQ(get("/vxlan/1/tenant"), end ? expected_tenants({}) : expected_platform_error(rc)) << rc;
      fault(row.next, rc);
      EXPECT_EQ(once("GET", "/vxlan/1/tenant"),
                (end ? expected_tenants({{5, 10}}) : expected_platform_error(rc)).xml)
          << rc;
    }
  }
}

TEST_F(VxlanFailureTest, UnicastGroupWhoseFirstTenantCannotBeReadAnswers99) {
  begin(UNICAST);
  expect_always(expected_platform_error(OPEN_E_PARAM), {"GET", "/vxlan/1/unicastGroup", "", {}},
                "rpcclt_openapiL2oL3TenantNextGet");
}

TEST_F(VxlanFailureTest, AnyAnswerEndsTheWalkOverRemoteVteps) {
  begin(UNICAST);
  const operation_calls operation = {"GET", "/vxlan/1/unicastGroup", "", {}};
  const char walk[] = "rpcclt_openapiL2oL3TunnelGetNextTenant";
  expect_always(expected_data({unicast_groups({})}), operation, walk);
  expect_always(expected_data({unicast_groups({"10.0.0.1"})}), operation, walk, 1);
  expect_always(expected_data({unicast_groups({"10.0.0.1", "10.0.0.2"})}), operation, walk, 2);
}

TEST_F(VxlanFailureTest, MulticastGroupsGoOnWithoutTheDefaultOne) {
  const operation_calls operation = {"GET", "/vxlan/1/multicastGroup", "", {}};
  for (tunnel_mode mode : {OFF, UNICAST}) {
    begin(mode);
    expect_always(refused(NOT_MULTICAST, multicast_groups("none", {})), operation,
                  "rpcclt_openapiL2oL3DefaultIPMCGetZYL");
  }
  begin(MULTICAST);
  expect_always(expected_data({multicast_groups("none", {{5, "239.1.1.1"}})}), operation,
                "rpcclt_openapiL2oL3DefaultIPMCGetZYL");
}

TEST_F(VxlanFailureTest, GroupThatCannotBeReadEndsTheRequest) {
  begin(MULTICAST);
  const operation_calls operation = {"GET", "/vxlan/1/multicastGroup", "", {}};
  for (unsigned skip : {0u, 1u}) {
    expect_always(expected_platform_error(OPEN_E_PARAM), operation, "rpcclt_openapiL2oL3IPMCGet", skip);
  }
  /* Nor is there a group of the tenant that was not told. */
  expect_always(expected_platform_error(OPEN_E_PARAM), operation, "rpcclt_openapiL2oL3TenantFirstGet");
}

TEST_F(VxlanFailureTest, AnyAnswerEndsTheWalkOverMulticastGroups) {
  begin(MULTICAST);
  once("PUT", "/vxlan/1/tenant/6/multicastGroup", "value=239.1.1.6");
  const operation_calls operation = {"GET", "/vxlan/1/multicastGroup", "", {}};
  const char walk[] = "rpcclt_openapiL2oL3TenantNextGetZYL";
  expect_always(expected_data({multicast_groups("239.0.0.1", {{5, "239.1.1.1"}})}), operation, walk);
  expect_always(expected_data({multicast_groups("239.0.0.1", {{5, "239.1.1.1"}, {6, "239.1.1.6"}})}),
                operation, walk, 1);
}
