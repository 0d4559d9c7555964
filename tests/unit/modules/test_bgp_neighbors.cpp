/* The BGP module: its neighbours. */
#include "tests/unit/modules/bgp_fixture.h"

#include <string.h>

/* A neighbour of each kind, with how its URI and its messages name it, and how the platform is told. */
struct neighbor_kind {
  const char *uri, *set_message; /* the message up to the number of the autonomous system */
  const char *named, *recorded, *family;
};

static const neighbor_kind KINDS[] = {
    {"/bgp/ipv4/neighbor/10.0.0.2", "Set BGP IPv4 neighbor (ip address: 10.0.0.2",
     "IPv4 neighbor (ip address: 10.0.0.2)", "1:10.0.0.2 0", "1"},
    {"/bgp/ipv6/neighbor/2001:DB8::2/scope/0", "Set BGP IPv6 neighbor (ip address: 2001:DB8::2, scope: 0",
     "IPv6 neighbor (ip address: 2001:DB8::2, scope: 0)", "2:2001:db8::2 0", "2"},
    {"/bgp/ipv6/neighbor/fe80::1/scope/3", "Set BGP IPv6 neighbor (ip address: fe80::1, scope: 3",
     "IPv6 neighbor (ip address: fe80::1, scope: 3)", "2:fe80::1 3", "2"},
};

class BgpNeighborTest : public BgpTest {
protected:
  /* All kinds of neighbours, in the autonomous system 65002. */
  void make_peers() const {
    make_peer("10.0.0.2", 0, 65002);
    make_peer("2001:db8::2", 0, 65002);
    make_peer("fe80::1", 3, 65002);
    forget_calls();
  }
  neighbor_info info_of(const neighbor_kind &kind) const {
    neighbor_info info = {kind.named, 65002};
    info.address = info.address.substr(info.address.find(": ") + 2);
    info.address.resize(info.address.find_first_of(",)"));
    if (*kind.family == '2') info.activate = "No";
    return info;
  }
};

/* --- Making ----------------------------------------------------------------------------------------------
 */

TEST_F(BgpNeighborTest, NeighborIsSetWithItsAutonomousSystem) {
  for (const neighbor_kind &kind : KINDS) {
    neighbor_info info = info_of(kind);
    for (int asn : {65002, 7}) {
      expect_done("POST", kind.uri, "asn=" + std::to_string(asn),
                  std::string(kind.set_message) + ", AS number: " + std::to_string(asn) + ") successfully.");
      EXPECT_EQ(recorded_arguments(REMOTE_AS), kind.recorded + (" " + std::to_string(asn)));
      info.remote_as = asn;
      EXPECT_EQ(get(kind.uri), expected_neighbor(info));
    }
  }
}

TEST_F(BgpNeighborTest, NeighborNeedsTheNumberOfAnAutonomousSystem) {
  const std::string overlong = "asn=" + std::string(256, '1');
  for (const neighbor_kind &kind : KINDS) {
    forget_calls();
    for (const std::string &query :
         {std::string(), std::string("asn"), std::string("asn="), std::string("value=65002"), overlong}) {
      expect_refused("POST", kind.uri, query, expected_parameter_error());
      EXPECT_EQ(recorded_arguments(REMOTE_AS), "") << kind.uri << " " << query;
    }
    expect_refused("POST", kind.uri, "asn=0", expected_parameter_error());
    expect_refused("POST", kind.uri, "asn=x", expected_parameter_error());
  }
}

/* 32 bits, and signed in the message. */
TEST_F(BgpNeighborTest, NumberOfAnAutonomousSystemMayHave32Bits) {
  for (const neighbor_kind &kind : KINDS) {
    expect_done("POST", kind.uri, "asn=4294967295",
                std::string(kind.set_message) + ", AS number: -1) successfully.");
    EXPECT_EQ(recorded_arguments(REMOTE_AS), kind.recorded + std::string(" 4294967295"));
    neighbor_info info = info_of(kind);
    info.remote_as = -1;
    EXPECT_EQ(get(kind.uri), expected_neighbor(info));
    forget_calls();
    for (const char *query : {"asn=4294967296", "asn=99999999999999999999"})
      expect_refused("POST", kind.uri, query, expected_parameter_error());
    EXPECT_EQ(recorded_arguments(REMOTE_AS), "");
  }
}

static const char *const UNPARSABLE_URIS[] = {
    "/bgp/ipv4/neighbor/10.0.0",
    "/bgp/ipv4/neighbor/x",
    "/bgp/ipv4/neighbor/10.0.0.256",
    "/bgp/ipv4/neighbor/111111111111111111111111111111111111111111111111",
    "/bgp/ipv6/neighbor/2001:db8::x/scope/0",
    "/bgp/ipv6/neighbor/fe80::1%3/scope/3",
    "/bgp/ipv6/neighbor/0000:0000:0000:0000:0000:0000:0000:000000000001/scope/0",
};

TEST_F(BgpNeighborTest, AddressThatIsNoneAnswers99) {
  for (const char *uri : UNPARSABLE_URIS) {
    expect_refused("POST", uri, "asn=65002", expected_parameter_error());
    expect_refused("GET", uri, "", expected_parameter_error());
    EXPECT_EQ(recorded_arguments(REMOTE_AS) + recorded_arguments("rpcclt_openapiBgpPeerRemoteASGet"), "")
        << uri;
  }
}

TEST_F(BgpNeighborTest, AddressThatThePlatformCannotParseAnswers99) {
  for (const neighbor_kind &kind : KINDS) {
    for (open_error_t rc : all_platform_errors()) {
      fault("rpcclt_openapiInetAddrGet", rc, 3);
      expect_refused("POST", kind.uri, "asn=65002", expected_parameter_error());
      fault("rpcclt_openapiInetAddrGet", rc, 3);
      expect_refused("GET", kind.uri, "", expected_parameter_error());
    }
  }
  EXPECT_EQ(recorded_arguments(REMOTE_AS) + recorded_arguments("rpcclt_openapiBgpPeerRemoteASGet"), "");
}

TEST_F(BgpNeighborTest, NeighborThatThePlatformRefusesAnswers99) {
  for (const char *uri :
       {"/bgp/ipv4/neighbor/224.0.0.1", "/bgp/ipv4/neighbor/0.0.0.0", "/bgp/ipv6/neighbor/fe80::1/scope/0",
        "/bgp/ipv6/neighbor/ff02::1/scope/3", "/bgp/ipv6/neighbor/fe80::1/scope/1000",
        "/bgp/ipv6/neighbor/fe80::1/scope/99999999999"})
    expect_refused("POST", uri, "asn=65002", expected_parameter_error());
  EXPECT_EQ(recorded_arguments(REMOTE_AS), "2:fe80::1 2147483647 65002");
}

TEST_F(BgpNeighborTest, ScopesTellNeighborsApart) {
  make_peer("fe80::1", 3, 65003);
  make_peer("fe80::1", 5, 65005);
  EXPECT_EQ(get("/bgp/ipv6/neighbor/fe80::1/scope/3"), expected_neighbor({"fe80::1", 65003, "No"}));
  EXPECT_EQ(get("/bgp/ipv6/neighbor/fe80::1/scope/005"), expected_neighbor({"fe80::1", 65005, "No"}));
  EXPECT_EQ(get("/bgp/ipv6/neighbor/fe80::1/scope/4"), expected_platform_error(OPEN_E_NOT_FOUND));
}

/* --- Reading ---------------------------------------------------------------------------------------------
 */

TEST_F(BgpNeighborTest, Ipv4NeighborIsWholeInBothFormats) {
  make_peers();
  EXPECT_EQ(get("/bgp/ipv4/neighbor/10.0.0.2").xml,
            "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
            "<neighbor_info><remote_address>10.0.0.2</remote_address><remote_as>65002</remote_as>"
            "<next_hop_self_mode>disable</next_hop_self_mode><update_source>none</update_source>"
            "</neighbor_info></rlt_data></result>\n");
  EXPECT_EQ(get("/bgp/ipv4/neighbor/10.0.0.2").json,
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
            "\"neighbor_info\": { \"remote_address\": \"10.0.0.2\", \"remote_as\": 65002, "
            "\"next_hop_self_mode\": \"disable\", \"update_source\": \"none\" } } } }\n");
}

TEST_F(BgpNeighborTest, Ipv6NeighborIsWholeInBothFormats) {
  make_peers();
  EXPECT_EQ(get("/bgp/ipv6/neighbor/fe80::1/scope/3").xml,
            "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
            "<neighbor_info><remote_address>fe80::1</remote_address><remote_as>65002</remote_as>"
            "<activate>No</activate><next_hop_self_mode>disable</next_hop_self_mode>"
            "<update_source>none</update_source></neighbor_info></rlt_data></result>\n");
  EXPECT_EQ(
      get("/bgp/ipv6/neighbor/fe80::1/scope/3").json,
      "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
      "\"neighbor_info\": { \"remote_address\": \"fe80::1\", \"remote_as\": 65002, \"activate\": \"No\", "
      "\"next_hop_self_mode\": \"disable\", \"update_source\": \"none\" } } } }\n");
}

/* The address stands as the URI has it, the family and scope are the URI's. */
TEST_F(BgpNeighborTest, NeighborIsReadByAddressScopeAndFamily) {
  make_peers();
  for (const neighbor_kind &kind : KINDS) {
    forget_calls();
    EXPECT_EQ(get(kind.uri), expected_neighbor(info_of(kind))) << kind.uri;
    EXPECT_EQ(recorded_arguments("rpcclt_openapiBgpPeerRemoteASGet"), kind.recorded);
    EXPECT_EQ(recorded_arguments("rpcclt_openapiBgpPeerNextHopSelfModeGet"),
              kind.recorded + std::string(" ") + kind.family);
    EXPECT_EQ(recorded_arguments("rpcclt_openapiBgpPeerUpdateSourceGet"), kind.recorded);
    EXPECT_EQ(recorded_arguments("rpcclt_openapiBgpPeerActivateGet"),
              *kind.family == '2' ? kind.recorded + std::string(" 2") : "");
  }
}

TEST_F(BgpNeighborTest, NeighborThatIsNoneAnswers99) {
  for (const neighbor_kind &kind : KINDS)
    EXPECT_EQ(get(kind.uri), expected_platform_error(OPEN_E_NOT_FOUND)) << kind.uri;
}

TEST_F(BgpNeighborTest, HugeAutonomousSystemIsWrittenSigned) {
  make_peers();
  bent_output bent("rpcclt_openapiBgpPeerRemoteASGet", 0x80000001u);
  EXPECT_EQ(get("/bgp/ipv4/neighbor/10.0.0.2"), expected_neighbor({"10.0.0.2", -2147483647}));
}

TEST_F(BgpNeighborTest, NextHopSelfModeThatIsNeitherOnNorOffIsAnEmptyText) {
  make_peers();
  for (uint32_t mode : {2u, 0xffffffffu}) {
    bent_output bent("rpcclt_openapiBgpPeerNextHopSelfModeGet", mode);
    for (const neighbor_kind &kind : KINDS) {
      neighbor_info info = info_of(kind);
      info.next_hop_self = "";
      EXPECT_EQ(get(kind.uri), expected_neighbor(info)) << mode;
    }
  }
}

/* --- Activation and next hop self ------------------------------------------------------------------------
 */

TEST_F(BgpNeighborTest, Ipv6NeighborIsActivated) {
  make_peers();
  for (const neighbor_kind &kind : {KINDS[1], KINDS[2]}) {
    neighbor_info info = info_of(kind);
    for (const char *value : {"1", "01", "0", "-0"}) {
      bool on = strchr(value, '1') != nullptr;
      expect_done("PUT", std::string(kind.uri) + "/activate", std::string("value=") + value,
                  std::string("Update activate state of BGP ") + kind.named + " successfully.");
      EXPECT_EQ(recorded_arguments(ACTIVATE), kind.recorded + std::string(on ? " 2 1" : " 2 0"));
      info.activate = on ? "Yes" : "No";
      EXPECT_EQ(get(kind.uri), expected_neighbor(info));
    }
  }
}

TEST_F(BgpNeighborTest, NextHopSelfModeIsUpdated) {
  make_peers();
  for (const neighbor_kind &kind : KINDS) {
    neighbor_info info = info_of(kind);
    for (const char *value : {"1", "01", "0", "-0"}) {
      bool on = strchr(value, '1') != nullptr;
      expect_done("PUT", std::string(kind.uri) + "/nextHopSelfMode", std::string("value=") + value,
                  std::string("Update next-hop-self mode of BGP ") + kind.named + " successfully.");
      EXPECT_EQ(recorded_arguments(NEXT_HOP_SELF),
                kind.recorded + std::string(" ") + kind.family + (on ? " 1" : " 0"));
      info.next_hop_self = on ? "enable" : "disable";
      EXPECT_EQ(get(kind.uri), expected_neighbor(info));
    }
  }
}

static std::string all_changes() {
  return recorded_arguments(ACTIVATE) + recorded_arguments(NEXT_HOP_SELF) + recorded_arguments(UPDATE_SOURCE);
}

TEST_F(BgpNeighborTest, StateThatIsNot0Or1IsInvalid) {
  make_peers();
  const std::string overlong = "value=" + std::string(256, '1');
  for (const neighbor_kind &kind : KINDS) {
    for (const std::string &query :
         {std::string(), std::string("value"), std::string("value="), std::string("value=2"),
          std::string("value=-1"), std::string("value=x"), std::string("value=1x"), std::string("value=%201"),
          std::string("value=%2B1"), std::string("value=enable"), overlong}) {
      expect_refused("PUT", std::string(kind.uri) + "/nextHopSelfMode", query, expected_invalid_value());
      if (*kind.family == '2')
        expect_refused("PUT", std::string(kind.uri) + "/activate", query, expected_invalid_value());
    }
  }
  EXPECT_EQ(all_changes(), "");
}

TEST_F(BgpNeighborTest, StateOfAnUnparsableAddressIsInvalid) {
  for (const char *uri : UNPARSABLE_URIS) {
    expect_refused("PUT", std::string(uri) + "/nextHopSelfMode", "value=1", expected_invalid_value());
    expect_refused("PUT", std::string(uri) + "/updateSource", "type=2&value=3", expected_invalid_value());
    if (strstr(uri, "ipv6") != nullptr)
      expect_refused("PUT", std::string(uri) + "/activate", "value=1", expected_invalid_value());
  }
  EXPECT_EQ(all_changes(), "");
}

TEST_F(BgpNeighborTest, StateOfAnAddressThatThePlatformCannotParseIsInvalid) {
  for (const neighbor_kind &kind : KINDS) {
    for (open_error_t rc : all_platform_errors()) {
      fault("rpcclt_openapiInetAddrGet", rc, 3);
      expect_refused("PUT", std::string(kind.uri) + "/nextHopSelfMode", "value=1", expected_invalid_value());
      fault("rpcclt_openapiInetAddrGet", rc, 3);
      expect_refused("PUT", std::string(kind.uri) + "/updateSource", "type=2&value=3",
                     expected_invalid_value());
    }
  }
  EXPECT_EQ(all_changes(), "");
}

TEST_F(BgpNeighborTest, StateOfANeighborThatIsNoneAnswers99) {
  for (const neighbor_kind &kind : KINDS) {
    expect_refused("PUT", std::string(kind.uri) + "/nextHopSelfMode", "value=1",
                   expected_platform_error(OPEN_E_NOT_FOUND));
    expect_refused("PUT", std::string(kind.uri) + "/updateSource", "type=2&value=5",
                   expected_platform_error(OPEN_E_NOT_FOUND));
  }
  expect_refused("PUT", "/bgp/ipv6/neighbor/fe80::1/scope/4/activate", "value=1",
                 expected_platform_error(OPEN_E_NOT_FOUND));
}

/* No URI reaches the activation of an IPv4 neighbour; the operation is there. */
TEST_F(BgpNeighborTest, Ipv4NeighborIsActivatedByTheOperationOnly) {
  make_peers();
  const std::string uri = "/bgp/ipv4/neighbor/10.0.0.2/activate";
  for (const char *format : {"xml", "json"}) {
    for (const char *value : {"0", "1"}) {
      expect_done_once("PUT", uri, std::string("value=") + value,
                       "Update activate state of BGP IPv4 neighbor (ip address: 10.0.0.2) successfully.",
                       format, api_bgp_update_ipv4_neighbor_activate);
      EXPECT_EQ(recorded_arguments(ACTIVATE), std::string("1:10.0.0.2 0 1 ") + value);
    }
  }
  EXPECT_EQ(call(api_bgp_update_ipv4_neighbor_activate, "PUT", uri, "value=2"), expected_invalid_value());
  EXPECT_EQ(call(api_bgp_update_ipv4_neighbor_activate, "PUT", uri), expected_invalid_value());
  EXPECT_EQ(call(api_bgp_update_ipv4_neighbor_activate, "PUT", "/bgp/ipv4/neighbor/x/activate", "value=1"),
            expected_invalid_value());
  EXPECT_EQ(
      call(api_bgp_update_ipv4_neighbor_activate, "PUT", "/bgp/ipv4/neighbor/10.0.0.3/activate", "value=1"),
      expected_platform_error(OPEN_E_NOT_FOUND));
  forget_calls();
  expect_refused("PUT", uri, "value=1", expected_bad_request());
  EXPECT_EQ(recorded_arguments(ACTIVATE), "");
}

/* --- Update source ---------------------------------------------------------------------------------------
 */

static std::string source_message(const neighbor_kind &kind) {
  return std::string("Update update-source of BGP ") + kind.named + " successfully.";
}

TEST_F(BgpNeighborTest, UpdateSourceIsAVlansRoutingInterface) {
  make_peers();
  for (uint32_t vlan : {10, 20}) make_vlan_interface(vlan);
  for (const neighbor_kind &kind : KINDS) {
    expect_done("PUT", std::string(kind.uri) + "/updateSource", "type=1&value=20", source_message(kind));
    EXPECT_EQ(recorded_arguments(UPDATE_SOURCE), kind.recorded + std::string(" 227"));
    neighbor_info info = info_of(kind);
    info.update_source = "vlan20";
    EXPECT_EQ(get(kind.uri), expected_neighbor(info));
  }
}

TEST_F(BgpNeighborTest, UpdateSourceIsAnInterface) {
  make_peers();
  const struct {
    const char *value, *ifNum, *name;
  } rows[] = {{"5", "5", "0/5"}, {"120", "120", "loopback0"}, {"0056", "56", "3/1"}, {"0", "0", "none"}};
  for (const neighbor_kind &kind : KINDS) {
    for (const auto &row : rows) {
      expect_done("PUT", std::string(kind.uri) + "/updateSource", std::string("type=02&value=") + row.value,
                  source_message(kind));
      EXPECT_EQ(recorded_arguments(UPDATE_SOURCE), kind.recorded + std::string(" ") + row.ifNum);
      neighbor_info info = info_of(kind);
      info.update_source = row.name;
      EXPECT_EQ(get(kind.uri), expected_neighbor(info));
    }
  }
}

TEST_F(BgpNeighborTest, SourceOfAnotherTypeOrWithoutANumberIsInvalid) {
  make_peers();
  const std::string overlong = "type=2&value=" + std::string(256, '1');
  for (const neighbor_kind &kind : KINDS) {
    for (const std::string &query :
         {std::string(), std::string("type=1"), std::string("value=5"), std::string("type=&value=5"),
          std::string("type=0&value=5"), std::string("type=3&value=5"), std::string("type=-1&value=5"),
          std::string("type=1x&value=5"), std::string("type=x&value=5"), std::string("type=2&value="),
          std::string("type=2&value=x"), std::string("type=2&value=5x"), std::string("type=1&value=%205"),
          std::string("type=2&value=0/5"), overlong})
      expect_refused("PUT", std::string(kind.uri) + "/updateSource", query, expected_invalid_value());
  }
  EXPECT_EQ(all_changes(), "");
}

TEST_F(BgpNeighborTest, VlanWithoutARoutingInterfaceIsThePlatformsToRefuse) {
  make_peers();
  EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
  for (const neighbor_kind &kind : KINDS) {
    for (const char *vlan : {"10", "11", "0", "4095", "-1", "99999999999"})
      expect_refused("PUT", std::string(kind.uri) + "/updateSource", std::string("type=1&value=") + vlan,
                     expected_platform_error(OPEN_E_NOT_FOUND));
  }
  EXPECT_EQ(all_changes(), "");
}

TEST_F(BgpNeighborTest, InterfaceThatCannotBeASourceIsThePlatformsToRefuse) {
  make_peers();
  for (const neighbor_kind &kind : KINDS) {
    for (const char *ifNum : {"55", "226", "1000", "-1", "99999999999"})
      expect_refused("PUT", std::string(kind.uri) + "/updateSource", std::string("type=2&value=") + ifNum,
                     expected_platform_error(OPEN_E_NOT_FOUND));
  }
  EXPECT_EQ(recorded_arguments(UPDATE_SOURCE), "2:fe80::1 3 2147483647");
}
