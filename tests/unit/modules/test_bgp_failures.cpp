/* The BGP module when the platform fails, and when it answers what the software switch never does. */
#include "tests/unit/modules/bgp_fixture.h"
#include "tests/unit/modules/failing_calls.h"

static const char VLAN_INTERFACE[] = "rpcclt_openapiRtrVlanIntfNumGetZYL";
static const char NAME[] = "openapiIfNameGet";

/* Neighbours of both families whose update source is port 5, and VLAN 10 with the routing interface 226. */
class BgpFailureTest : public BgpTest {
protected:
  BgpFailureTest() {
    make_vlan_interface(10);
    make_peer("10.0.0.2", 0, 65002);
    make_peer("fe80::1", 3, 65002);
    call_xml(bgp_api_handler, "PUT", "/bgp/ipv4/neighbor/10.0.0.2/updateSource", "type=2&value=5");
    call_xml(bgp_api_handler, "PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/updateSource", "type=2&value=5");
    forget_calls();
  }
  void expect_unchanged() const {
    EXPECT_EQ(get("/bgp"), expected_settings({}));
    EXPECT_EQ(get("/bgp/ipv4/neighbor/10.0.0.2"),
              expected_neighbor({"10.0.0.2", 65002, "", "disable", "0/5"}));
    EXPECT_EQ(get("/bgp/ipv6/neighbor/fe80::1/scope/3"),
              expected_neighbor({"fe80::1", 65002, "No", "disable", "0/5"}));
  }
};

TEST_F(BgpFailureTest, EveryCallForTheSpeakerThatFailsEndsTheRequest) {
  const operation_calls operations[] = {
      {"PUT", "/bgp/holdTime", "value=180", {"rpcclt_openapiBgpGlobalHoldTimeConfiguredSet"}},
      {"PUT", "/bgp/keepAliveTime", "value=60", {"rpcclt_openapiBgpGlobalKeepAliveConfiguredSet"}},
      {"PUT", "/bgp/localAS", "value=65001", {"rpcclt_openapiBgpLocalASSet"}},
      {"PUT", "/bgp/routerId", "value=10.0.0.1", {"rpcclt_openapiBgpLocalIdSet"}},
      {"PUT", "/bgp/localPref", "value=200", {"rpcclt_openapiBgpLocalPrefSet"}},
      {"PUT", "/bgp/logNeighborChanges", "value=1", {"rpcclt_openapiBgpLogNeighborChangesSet"}},
      {"GET",
       "/bgp",
       "",
       {"rpcclt_openapiBgpGlobalHoldTimeConfiguredGet", "rpcclt_openapiBgpGlobalKeepAliveConfiguredGet",
        "rpcclt_openapiBgpLocalASGet", "rpcclt_openapiBgpLocalIdGet", "rpcclt_openapiBgpLocalPrefGet",
        "rpcclt_openapiBgpLogNeighborChangesGet"}},
      {"POST", "/bgp/originatedNetwork", "addr=10.1.0.0&pfxLen=16&routeMap=blue", {NETWORK}},
      {"DELETE", "/bgp/originatedNetwork", "addr=10.1.0.0&pfxLen=16", {NETWORK}},
      {"POST", "/bgp/ipv4/redistribution/ospf", "metric=1", {REDISTRIBUTION}},
      {"POST", "/bgp/ipv6/redistribution/ospf", "matchExt1=1", {REDISTRIBUTION}},
      {"DELETE", "/bgp/ipv4/redistribution/ospf", "", {REDISTRIBUTION}},
      {"DELETE", "/bgp/ipv6/redistribution/ospf", "", {REDISTRIBUTION}},
  };
  for (const operation_calls &operation : operations)
    expect_every_failure_answered(bgp_api_handler, handle, operation);
  expect_unchanged();
}

TEST_F(BgpFailureTest, EveryCallForANeighborThatFailsEndsTheRequest) {
  const std::string ipv4 = "/bgp/ipv4/neighbor/10.0.0.2", ipv6 = "/bgp/ipv6/neighbor/fe80::1/scope/3";
  const std::string ipv4_mode = ipv4 + "/nextHopSelfMode", ipv6_mode = ipv6 + "/nextHopSelfMode",
                    ipv4_source = ipv4 + "/updateSource", ipv6_source = ipv6 + "/updateSource",
                    ipv6_activate = ipv6 + "/activate";
  const operation_calls operations[] = {
      {"POST", ipv4.c_str(), "asn=7", {REMOTE_AS}},
      {"POST", ipv6.c_str(), "asn=7", {REMOTE_AS}},
      {"PUT", ipv4_mode.c_str(), "value=1", {NEXT_HOP_SELF}},
      {"PUT", ipv6_mode.c_str(), "value=1", {NEXT_HOP_SELF}},
      {"PUT", ipv6_activate.c_str(), "value=1", {ACTIVATE}},
      {"PUT", ipv4_source.c_str(), "type=1&value=10", {VLAN_INTERFACE, UPDATE_SOURCE}},
      {"PUT", ipv6_source.c_str(), "type=1&value=10", {VLAN_INTERFACE, UPDATE_SOURCE}},
      {"PUT", ipv4_source.c_str(), "type=2&value=6", {UPDATE_SOURCE}},
      {"PUT", ipv6_source.c_str(), "type=2&value=6", {UPDATE_SOURCE}},
      {"GET",
       ipv4.c_str(),
       "",
       {"rpcclt_openapiBgpPeerRemoteASGet", "rpcclt_openapiBgpPeerNextHopSelfModeGet",
        "rpcclt_openapiBgpPeerUpdateSourceGet", NAME}},
      {"GET",
       ipv6.c_str(),
       "",
       {"rpcclt_openapiBgpPeerRemoteASGet", "rpcclt_openapiBgpPeerActivateGet",
        "rpcclt_openapiBgpPeerNextHopSelfModeGet", "rpcclt_openapiBgpPeerUpdateSourceGet", NAME}},
  };
  for (const operation_calls &operation : operations)
    expect_every_failure_answered(bgp_api_handler, handle, operation);
  expect_every_failure_answered(api_bgp_update_ipv4_neighbor_activate, handle,
                                {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/activate", "value=1", {ACTIVATE}});
  expect_unchanged();
}

/* An interface number needs no VLAN, and no source has no name. */
TEST_F(BgpFailureTest, WhatIsNotNeededIsNotAskedFor) {
  fault(VLAN_INTERFACE, OPEN_E_TIMEOUT);
  fault(NAME, OPEN_E_TIMEOUT);
  EXPECT_EQ(
      call_xml(bgp_api_handler, "PUT", "/bgp/ipv4/neighbor/10.0.0.2/updateSource", "type=2&value=0"),
      expected_answers(0, "Update update-source of BGP IPv4 neighbor (ip address: 10.0.0.2) successfully.")
          .xml);
  EXPECT_EQ(get("/bgp/ipv4/neighbor/10.0.0.2"), expected_neighbor({"10.0.0.2", 65002}));
  EXPECT_EQ(lab("fault list"),
            std::string(NAME) + " OPEN_E_TIMEOUT 1 0\n" + VLAN_INTERFACE + " OPEN_E_TIMEOUT 1 0\n");
  lab("fault clear");
}

/* --- Outputs ---------------------------------------------------------------------------------------------
 */

TEST_F(BgpFailureTest, NameOfASourceWithoutAnEndIsAsLongAsItsBuffer) {
  bent_output bent(NAME, 'x');
  EXPECT_EQ(get("/bgp/ipv4/neighbor/10.0.0.2"),
            expected_neighbor({"10.0.0.2", 65002, "", "disable", std::string(256, 'x')}));
  EXPECT_EQ(get("/bgp/ipv6/neighbor/fe80::1/scope/3"),
            expected_neighbor({"fe80::1", 65002, "No", "disable", std::string(256, 'x')}));
}

TEST_F(BgpFailureTest, SourceThatIsNoInterfaceAnswers99) {
  for (uint32_t ifNum : {1000u, 0xffffffffu}) {
    bent_output bent("rpcclt_openapiBgpPeerUpdateSourceGet", ifNum);
    EXPECT_EQ(get("/bgp/ipv4/neighbor/10.0.0.2"), expected_platform_error(OPEN_E_PARAM)) << ifNum;
  }
}

TEST_F(BgpFailureTest, NumberOfAVlansInterfaceIsHandedOnAsThePlatformTellsIt) {
  for (uint32_t ifNum : {0u, 6u, 0xffffffffu}) {
    bent_output bent(VLAN_INTERFACE, ifNum);
    request("PUT", "/bgp/ipv4/neighbor/10.0.0.2/updateSource", "type=1&value=10");
    EXPECT_EQ(recorded_arguments(UPDATE_SOURCE), "1:10.0.0.2 0 " + std::to_string(ifNum));
  }
}
