/* The routing module, routes: which requests it serves by which operation, and the many that it nearly
 * serves. */
#include "tests/unit/modules/routing_fixture.h"

#include <string.h>

static const char SWITCH_MODE[] = "rpcclt_openapiRtrAdminModeSet";
static const char INTERFACE_MODE[] = "rpcclt_openapiRtrIntfRtrAdminModeSet";
static const char CREATE[] = "rpcclt_openapiRtrVlanIntfCreate";
static const char DELETE[] = "rpcclt_openapiRtrVlanIntfDelete";

/* Whatever is changed succeeds without being carried out, so that what was called tells the operation. */
class RoutingRouteTest : public RoutingTest {
protected:
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

  static constexpr const char *CHANGES[] = {SWITCH_MODE, INTERFACE_MODE, CREATE,
                                            DELETE,      ADDRESS_ADD,    ADDRESS_DELETE};
  changes_not_carried_out idle;
};

static const char ALL_VARIABLES[] = "value=1&vlanId=10&addrType=0&addr=10.0.0.1&pfxLen=24&extArg=0";

TEST_F(RoutingRouteTest, EveryChangeHasItsOperation) {
  const std::string mode = SWITCH_MODE, interface_mode = INTERFACE_MODE, add = ADDRESS_ADD,
                    remove = ADDRESS_DELETE, on_5 = " 1 5 0 1:10.0.0.1 24 0",
                    on_226 = " 1 226 0 1:10.0.0.1 24 0";
  const struct {
    const char *method, *uri;
    std::string change;
  } rows[] = {
      {"DELETE", "/routing/vlanRtrIf", std::string(DELETE) + " 10"},
      {"DELETE", "/routing/if/5/ip", remove + on_5},
      {"DELETE", "/routing/vlanRtrIf/1/ip", remove + on_226},
      {"PUT", "/routing/ipv4/adminMode", mode + " 1 1"},
      {"PUT", "/routing/ipv6/adminMode", mode + " 2 1"},
      {"PUT", "/routing/if/5/adminMode", interface_mode + " 5 1"},
      {"POST", "/routing/vlanRtrIf", std::string(CREATE) + " 10"},
      {"POST", "/routing/if/5/ip", add + on_5},
      {"POST", "/routing/vlanRtrIf/1/ip", add + on_226},
  };
  for (const auto &row : rows) {
    forget_calls();
    EXPECT_NE(request(row.method, row.uri, ALL_VARIABLES), expected_bad_request()) << row.uri;
    EXPECT_EQ(last_change(), row.change) << row.method << " " << row.uri;
  }
}

/* One number is all that is asked of these URIs: what stands behind it counts only when all of the pattern is
 * there and more follows. */
TEST_F(RoutingRouteTest, UriMayStopOrDifferBehindItsNumber) {
  const std::string on_5 = " 1 5 0 1:10.0.0.1 24 0", on_226 = " 1 226 0 1:10.0.0.1 24 0";
  for (const char *rest :
       {"", "/", "/i", "/xyz", "/ix", "/ip ", "x", "/adminMode", "//", " /ip", "/IP", "/if"}) {
    for (const char *start : {"/routing/if/5", "/routing/vlanRtrIf/1"}) {
      const std::string uri = std::string(start) + rest, on = strstr(start, "/if") != nullptr ? on_5 : on_226;
      forget_calls();
      EXPECT_NE(request("POST", uri, ALL_VARIABLES), expected_bad_request()) << uri;
      EXPECT_EQ(last_change(), ADDRESS_ADD + on) << uri;
      forget_calls();
      EXPECT_NE(request("DELETE", uri, ALL_VARIABLES), expected_bad_request()) << uri;
      EXPECT_EQ(last_change(), ADDRESS_DELETE + on) << uri;
    }
  }
  for (const char *rest :
       {"", "/", "/a", "/adminmode", "/adminMod", "/adminModX", "/ip", "x", "//adminMode"}) {
    forget_calls();
    EXPECT_NE(request("PUT", std::string("/routing/if/5") + rest, ALL_VARIABLES), expected_bad_request());
    EXPECT_EQ(last_change(), std::string(INTERFACE_MODE) + " 5 1") << rest;
  }
}

TEST_F(RoutingRouteTest, NumbersInUrisAreDecimalAndAtMostTheLargest) {
  const struct {
    const char *number, *ifNum;
  } rows[] = {{"0", "0"},
              {"005", "5"},
              {"2147483647", "2147483647"},
              {"2147483648", "2147483647"},
              {"99999999999999999999", "2147483647"}};
  for (const auto &row : rows) {
    forget_calls();
    request("PUT", std::string("/routing/if/") + row.number + "/adminMode", "value=0");
    EXPECT_EQ(last_change(), std::string(INTERFACE_MODE) + " " + row.ifNum + " 0") << row.number;
    forget_calls();
    request("POST", std::string("/routing/if/") + row.number + "/ip", "addrType=2&extArg=1");
    EXPECT_EQ(last_change(), std::string(ADDRESS_ADD) + " 1 " + row.ifNum + " 2 0: 0 1") << row.number;
  }
}

TEST_F(RoutingRouteTest, MethodIsTheVariablesWhenThereIsOne) {
  EXPECT_EQ(request("GET", "/routing/vlanRtrIf", "method=post&vlanId=10"),
            expected_answers(0, "Create Vlan Routing Interface with VLAN 10 successfully."));
  EXPECT_EQ(request("GET", "/routing/vlanRtrIf", "method=delete&vlanId=10"),
            expected_answers(0, "Delete Vlan Routing Interface with VLAN 10 successfully."));
}

static const struct {
  const char *method, *uri;
} NOT_SERVED[] = {
    {"GET", ""},
    {"GET", "/"},
    {"GET", "/r"},
    {"GET", "/routin"},
    {"GET", "/Routing"},
    {"GET", "/routing/"},
    {"GET", "/routing "},
    {"GET", "/routings"},
    {"GET", "/routing/i"},
    {"GET", "/routing/IF"},
    {"GET", "/routing/if/"},
    {"GET", "/routing/if/5"},
    {"GET", "/routing/if/5/ip"},
    {"GET", "/routing/ifs"},
    {"GET", "/routing/if "},
    {"GET", "/routing/vlan"},
    {"GET", "/routing/vlanRtrI"},
    {"GET", "/routing/vlanrtrif"},
    {"GET", "/routing/vlanRtrIf/"},
    {"GET", "/routing/vlanRtrIfs"},
    {"GET", "/routing/vlanRtrIf1"},
    {"GET", "/routing/vlanRtrIf/x"},
    {"GET", "/routing/vlanRtrIf/-1"},
    {"GET", "/routing/vlanRtrIf/+1"},
    {"GET", "/routing/vlanRtrIf/ 1"},
    {"GET", "/routing/vlanRtrIf/1/"},
    {"GET", "/routing/vlanRtrIf/1x"},
    {"GET", "/routing/vlanRtrIf/1/ip"},
    {"GET", "/routing/vlanRtrIf//1"},
    {"GET", "/routing/ipv4"},
    {"GET", "/routing/ipv4/adminMode"},
    {"GET", "/routing/ipv6/adminMode"},
    {"PUT", "/routing"},
    {"PUT", "/routing/ipv4"},
    {"PUT", "/routing/ipv4/"},
    {"PUT", "/routing/ipv4/adminMod"},
    {"PUT", "/routing/ipv4/adminmode"},
    {"PUT", "/routing/ipv4/adminMode/"},
    {"PUT", "/routing/ipv4/adminModes"},
    {"PUT", "/routing/ipv6/adminMode/"},
    {"PUT", "/routing/ipv6/adminMode1"},
    {"PUT", "/routing/ipv5/adminMode"},
    {"PUT", "/routing/if"},
    {"PUT", "/routing/if/"},
    {"PUT", "/routing/if//adminMode"},
    {"PUT", "/routing/if/x/adminMode"},
    {"PUT", "/routing/if/-5/adminMode"},
    {"PUT", "/routing/if/5/adminMode/"},
    {"PUT", "/routing/if/5/adminModes"},
    {"PUT", "/routing/if/5/adminModeadminMode"},
    {"PUT", "/routing/vlanRtrIf"},
    {"PUT", "/routing/vlanRtrIf/1"},
    {"PUT", "/routing/vlanRtrIf/1/adminMode"},
    {"POST", "/routing"},
    {"POST", "/routing/if"},
    {"POST", "/routing/if/"},
    {"POST", "/routing/if//ip"},
    {"POST", "/routing/if/x/ip"},
    {"POST", "/routing/if/-5/ip"},
    {"POST", "/routing/if/5/ip/"},
    {"POST", "/routing/if/5/ips"},
    {"POST", "/routing/if/5/ip/1"},
    {"POST", "/routing/vlanRtrIf/"},
    {"POST", "/routing/vlanRtrIfx"},
    {"POST", "/routing/vlanRtrIf/x/ip"},
    {"POST", "/routing/vlanRtrIf/1/ip/"},
    {"POST", "/routing/vlanRtrIf/1/ips"},
    {"POST", "/routing/ipv4/adminMode"},
    {"DELETE", "/routing"},
    {"DELETE", "/routing/if"},
    {"DELETE", "/routing/if//ip"},
    {"DELETE", "/routing/if/5/ip/"},
    {"DELETE", "/routing/if/5/ips"},
    {"DELETE", "/routing/vlanRtrIf/"},
    {"DELETE", "/routing/vlanRtrIf//ip"},
    {"DELETE", "/routing/vlanRtrIf/1/ipx"},
    {"DELETE", "/routing/ipv6/adminMode"},
    {"PATCH", "/routing"},
    {"HEAD", "/routing/if"},
};

TEST_F(RoutingRouteTest, AnythingElseIsABadRequest) {
  for (const auto &row : NOT_SERVED) {
    forget_calls();
    expect_refused(row.method, row.uri, ALL_VARIABLES, expected_bad_request());
    EXPECT_EQ(last_change(), "") << row.method << " " << row.uri;
  }
}

TEST_F(RoutingRouteTest, UriOfMoreThan255CharactersIsABadRequest) {
  std::string uri = "/routing/if/" + std::string(255 - 12, '1');
  EXPECT_NE(request("PUT", uri, ALL_VARIABLES), expected_bad_request());
  EXPECT_EQ(request("PUT", uri + "1", ALL_VARIABLES), expected_bad_request());
}

/* Called directly, an operation finds no number in a URI of another shape. */
TEST_F(RoutingRouteTest, OperationWithoutANumberInItsUriRefuses) {
  for (const char *uri : {"/routing/if", "/routing/if//adminMode", "/routing/if/x/adminMode", ""}) {
    EXPECT_EQ(call(api_routing_update_interface_admin_mode, "PUT", uri, "value=1"),
              expected_platform_error(OPEN_E_PARAM))
        << uri;
  }
  EXPECT_EQ(last_change(), "");
}
