/* The BGP module, routes: which requests it serves by which operation, and the many that it nearly serves. */
#include "tests/unit/modules/bgp_fixture.h"

#include <memory>

/* Whatever is changed succeeds without being carried out, so that what was called tells the operation. */
class BgpRouteTest : public BgpTest {
protected:
  BgpRouteTest() {
    make_peer("10.0.0.2", 0, 65002);
    make_peer("fe80::1", 3, 65002);
    forget_calls();
    idle = std::make_unique<changes_not_carried_out>();
  }

  /* The function that was called and what with; empty when none was. */
  static std::string last_change() {
    std::string change;
    for (const char *function : CHANGES) {
      std::string arguments = recorded_arguments(function);
      if (!arguments.empty())
        change += (change.empty() ? "" : ", ") + std::string(function) + " " + arguments;
    }
    return change;
  }

  static constexpr const char *CHANGES[] = {
      "rpcclt_openapiBgpGlobalHoldTimeConfiguredSet",
      "rpcclt_openapiBgpGlobalKeepAliveConfiguredSet",
      "rpcclt_openapiBgpLocalASSet",
      "rpcclt_openapiBgpLocalIdSet",
      "rpcclt_openapiBgpLocalPrefSet",
      "rpcclt_openapiBgpLogNeighborChangesSet",
      NETWORK,
      REDISTRIBUTION,
      REMOTE_AS,
      ACTIVATE,
      NEXT_HOP_SELF,
      UPDATE_SOURCE,
  };
  std::unique_ptr<changes_not_carried_out> idle;
};

static const char ALL_VARIABLES[] = "value=1&asn=65002&type=2&addr=10.1.0.0&pfxLen=16&routeMap=blue";

TEST_F(BgpRouteTest, EveryChangeHasItsOperation) {
  const struct {
    const char *method, *uri, *query, *change;
  } rows[] = {
      {"DELETE", "/bgp/originatedNetwork", ALL_VARIABLES, "NetworkAddDelete 0 1:10.1.0.0 16 0 1:"},
      {"DELETE", "/bgp/ipv4/redistribution/ospf", "", "RedistributionSet 0 5:ospf 0 0 0 0 0 0 1 0:"},
      {"DELETE", "/bgp/ipv6/redistribution/ospf", "", "RedistributionSet 0 5:ospf 0 0 0 0 0 0 2 0:"},
      {"PUT", "/bgp/holdTime", "value=1", "GlobalHoldTimeConfiguredSet 1"},
      {"PUT", "/bgp/keepAliveTime", "value=1", "GlobalKeepAliveConfiguredSet 1"},
      {"PUT", "/bgp/localAS", "value=1", "LocalASSet 1"},
      {"PUT", "/bgp/routerId", "value=0.0.0.1", "LocalIdSet 1"},
      {"PUT", "/bgp/localPref", "value=1", "LocalPrefSet 1"},
      {"PUT", "/bgp/logNeighborChanges", "value=1", "LogNeighborChangesSet 1"},
      {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/nextHopSelfMode", ALL_VARIABLES,
       "PeerNextHopSelfModeSet 1:10.0.0.2 0 1 1"},
      {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/updateSource", ALL_VARIABLES,
       "PeerUpdateSourceSet 1:10.0.0.2 0 1"},
      {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/activate", ALL_VARIABLES,
       "PeerActivateSet 2:fe80::1 3 2 1"},
      {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/nextHopSelfMode", ALL_VARIABLES,
       "PeerNextHopSelfModeSet 2:fe80::1 3 2 1"},
      {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/updateSource", ALL_VARIABLES,
       "PeerUpdateSourceSet 2:fe80::1 3 1"},
      {"POST", "/bgp/originatedNetwork", ALL_VARIABLES, "NetworkAddDelete 1 1:10.1.0.0 16 1 5:blue"},
      {"POST", "/bgp/ipv4/neighbor/10.0.0.2", ALL_VARIABLES, "PeerRemoteASSet 1:10.0.0.2 0 65002"},
      {"POST", "/bgp/ipv4/redistribution/ospf", "", "RedistributionSet 1 5:ospf 0 0 0 0 0 0 1 1:"},
      {"POST", "/bgp/ipv6/neighbor/fe80::1/scope/3", ALL_VARIABLES, "PeerRemoteASSet 2:fe80::1 3 65002"},
      {"POST", "/bgp/ipv6/redistribution/ospf", "", "RedistributionSet 1 5:ospf 0 0 0 0 0 0 2 1:"},
  };
  for (const auto &row : rows) {
    forget_calls();
    EXPECT_NE(request(row.method, row.uri, row.query), expected_bad_request()) << row.uri;
    EXPECT_EQ(last_change(), std::string("rpcclt_openapiBgp") + row.change) << row.method << " " << row.uri;
  }
}

TEST_F(BgpRouteTest, EveryReadingHasItsOperation) {
  EXPECT_EQ(get("/bgp"), expected_settings({}));
  EXPECT_EQ(get("/bgp/ipv4/neighbor/10.0.0.2"), expected_neighbor({"10.0.0.2", 65002}));
  EXPECT_EQ(get("/bgp/ipv6/neighbor/fe80::1/scope/3"), expected_neighbor({"fe80::1", 65002, "No"}));
}

/* What stands in the place of an address or a source may be anything but a slash. */
TEST_F(BgpRouteTest, TextsInUrisMayHaveAnyCharacterButASlash) {
  for (const std::string source : {"o%s%n", "-", ".", "a:b", "x y", "\xc3\xa9", "1"}) {
    forget_calls();
    request("POST", "/bgp/ipv4/redistribution/" + source);
    EXPECT_EQ(last_change(), std::string(REDISTRIBUTION) + " 1 " + std::to_string(source.size() + 1) + ":" +
                                 source + " 0 0 0 0 0 0 1 1:");
  }
  std::string longest = "/bgp/ipv4/redistribution/";
  longest += std::string(255 - longest.size(), 'x');
  EXPECT_EQ(request("POST", longest), expected_answers(0, "Create BGP IPv4 Redistribution for " +
                                                              longest.substr(25) + " successfully."));
  EXPECT_EQ(request("POST", longest + "x"), expected_bad_request());
}

static const struct {
  const char *method, *uri;
} NOT_SERVED[] = {
    {"GET", ""},
    {"GET", "/bg"},
    {"GET", "/Bgp"},
    {"GET", "/bgp/"},
    {"GET", "/bgp "},
    {"GET", "/bgps"},
    {"GET", "/bgp/holdTime"},
    {"GET", "/bgp/localAS"},
    {"GET", "/bgp/originatedNetwork"},
    {"GET", "/bgp/ipv4"},
    {"GET", "/bgp/ipv4/neighbor"},
    {"GET", "/bgp/ipv4/neighbor/"},
    {"GET", "/bgp/ipv4/neighbor//"},
    {"GET", "/bgp/ipv4/neighbor/10.0.0.2/"},
    {"GET", "/bgp/ipv4/neighbor/10.0.0.2/updateSource"},
    {"GET", "/bgp/ipv4/neighbor/10.0.0.2/scope/0"},
    {"GET", "/bgp/ipv5/neighbor/10.0.0.2"},
    {"GET", "/bgp/ipv4/redistribution/ospf"},
    {"GET", "/bgp/ipv6/neighbor/fe80::1"},
    {"GET", "/bgp/ipv6/neighbor/fe80::1/"},
    {"GET", "/bgp/ipv6/neighbor/fe80::1/scope"},
    {"GET", "/bgp/ipv6/neighbor/fe80::1/scope/"},
    {"GET", "/bgp/ipv6/neighbor/fe80::1/scope/x"},
    {"GET", "/bgp/ipv6/neighbor/fe80::1/scope/-3"},
    {"GET", "/bgp/ipv6/neighbor/fe80::1/scope/3/"},
    {"GET", "/bgp/ipv6/neighbor/fe80::1/scope/3x"},
    {"GET", "/bgp/ipv6/neighbor/fe80::1/Scope/3"},
    {"GET", "/bgp/ipv6/neighbor//scope/3"},
    {"GET", "/bgp/ipv6/neighbor/fe80::1/scope/3/activate"},
    {"PUT", "/bgp"},
    {"PUT", "/bgp/holdTim"},
    {"PUT", "/bgp/holdtime"},
    {"PUT", "/bgp/holdTimes"},
    {"PUT", "/bgp/holdTime/"},
    {"PUT", "/bgp/keepAliveTime/"},
    {"PUT", "/bgp/keepaliveTime"},
    {"PUT", "/bgp/localAs"},
    {"PUT", "/bgp/localAS1"},
    {"PUT", "/bgp/routerID"},
    {"PUT", "/bgp/routerId/10.0.0.1"},
    {"PUT", "/bgp/localPreference"},
    {"PUT", "/bgp/localPre"},
    {"PUT", "/bgp/logNeighborChange"},
    {"PUT", "/bgp/logNeighbourChanges"},
    {"PUT", "/bgp/originatedNetwork"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/activate"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/nextHopSelf"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/nextHopSelfMod"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/nextHopSelfModee"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/nextHopSelfMode/"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/nextHopModeSelf"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/edoMfleSpoHtxen"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/nexthopselfmode"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/updateSourc"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/updateSources"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/sourceUpdate"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/ecruoSetadpu"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/updateSource/"},
    {"PUT", "/bgp/ipv4/neighbor//updateSource"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/scope/0/updateSource"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/activate"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/activate"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope//activate"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/x/activate"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/activat"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/activated"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/activatee"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/etavitca"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/Activate"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/activate/"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/nextHopSelfModes"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/updateSource/1"},
    {"PUT", "/bgp/ipv6/neighbor//scope/3/updateSource"},
    {"PUT", "/bgp/ipv4/redistribution/ospf"},
    {"POST", "/bgp"},
    {"POST", "/bgp/holdTime"},
    {"POST", "/bgp/originatedNetwork/"},
    {"POST", "/bgp/originatedNetworks"},
    {"POST", "/bgp/originatedNetwor"},
    {"POST", "/bgp/ipv4/neighbor/"},
    {"POST", "/bgp/ipv4/neighbor/10.0.0.2/"},
    {"POST", "/bgp/ipv4/neighbor/10.0.0.2/x"},
    {"POST", "/bgp/ipv6/neighbor/fe80::1"},
    {"POST", "/bgp/ipv6/neighbor/fe80::1/scope/"},
    {"POST", "/bgp/ipv6/neighbor/fe80::1/scope/3/activate"},
    {"POST", "/bgp/ipv4/redistribution"},
    {"POST", "/bgp/ipv4/redistribution/"},
    {"POST", "/bgp/ipv4/redistribution/ospf/"},
    {"POST", "/bgp/ipv6/redistribution/ospf/rip"},
    {"POST", "/bgp/ipv6/redistribution//ospf"},
    {"DELETE", "/bgp"},
    {"DELETE", "/bgp/originatedNetwork/10.1.0.0"},
    {"DELETE", "/bgp/ipv4/neighbor/10.0.0.2"},
    {"DELETE", "/bgp/ipv6/neighbor/fe80::1/scope/3"},
    {"DELETE", "/bgp/ipv4/redistribution/"},
    {"DELETE", "/bgp/ipv4/redistribution/ospf/"},
    {"DELETE", "/bgp/ipv6/redistributions/ospf"},
    {"PATCH", "/bgp"},
};

TEST_F(BgpRouteTest, AnythingElseIsABadRequest) {
  for (const auto &row : NOT_SERVED) {
    expect_refused(row.method, row.uri, ALL_VARIABLES, expected_bad_request());
    EXPECT_EQ(last_change(), "") << row.method << " " << row.uri;
  }
}
