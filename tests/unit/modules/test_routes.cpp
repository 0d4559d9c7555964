/* The route tables of the modules: every URI pattern of the API (route_reference.h) is served by its module,
 * and every URI under its own methods only. Near misses stand in the tests of each module. */
#include "modules/rest_module_acl.h"
#include "modules/rest_module_base.h"
#include "modules/rest_module_bgp.h"
#include "modules/rest_module_interface.h"
#include "modules/rest_module_lag.h"
#include "modules/rest_module_pml.h"
#include "modules/rest_module_routing.h"
#include "modules/rest_module_vlan.h"
#include "modules/rest_module_vxlan.h"
#include "tests/support/platform_fixture.h"
#include "tests/support/route_reference.h"

#include <string.h>

class RouteTest : public PlatformTest {
protected:
  bool is_served(rest_handler_t handler, const std::string &method, const std::string &uri) const {
    return call_xml(handler, method, uri) != expected_bad_request().xml;
  }
};

static const struct {
  const char *name;
  rest_handler_t handler;
} MODULES[] = {
    {"acl", acl_api_handler},         {"base", base_api_handler},  {"bgp", bgp_api_handler},
    {"if", interface_api_handler},    {"lag", lag_api_handler},    {"pml", pml_api_handler},
    {"routing", routing_api_handler}, {"vlans", vlan_api_handler}, {"vxlan", vxlan_api_handler},
};

/* A URI that the pattern takes: 1 for each number, the keyword for the word, and "ip", which is a type of
 * lists and as good a name as any, for each free text. */
static std::string uri_of(const rest_route &route) {
  std::string uri;
  int fields = 0;
  for (const char *p = route.pattern; strcmp(p, "%s") != 0;) {
    if (*p != '%') {
      uri += *p++;
      continue;
    }
    uri += p[1] != '[' ? route.keyword : p[2] == '^' ? "ip" : "1";
    p = strchr(p, ']') + 1;
    fields++;
  }
  return fields < route.count ? uri + "ip" : uri; /* the last field is what catches the rest */
}

static bool is_of_module(const rest_route &route, const std::string &name) {
  std::string first = "/" + name, pattern = route.pattern;
  return pattern.compare(0, first.size(), first) == 0 && strchr("/%", pattern[first.size()]) != nullptr;
}

TEST_F(RouteTest, EveryPatternOfTheApiIsServedByItsModule) {
  for (const auto &module : MODULES) {
    unsigned patterns = 0;
    for (const rest_route &route : all_api_routes()) {
      if (!is_of_module(route, module.name)) continue;
      patterns++;
      bool served = false;
      for (const char *method : {"GET", "POST", "PUT", "DELETE"})
        served = served || is_served(module.handler, method, uri_of(route));
      EXPECT_TRUE(served) << route.pattern;
    }
    EXPECT_GT(patterns, 0u) << module.name;
  }
}

/* The methods of each URI, all four of them tried. */
TEST_F(RouteTest, EveryUriIsServedUnderItsMethodsOnly) {
  struct {
    rest_handler_t handler;
    const char *uri, *methods;
  } rows[] = {
      {acl_api_handler, "/acl", "GET"},
      {acl_api_handler, "/acl/", "GET"},
      {acl_api_handler, "/acl/count", "GET POST DELETE"}, /* as a list's type with POST and DELETE */
      {acl_api_handler, "/acl/ip", "GET POST DELETE"},
      {acl_api_handler, "/acl/ip/name", "POST DELETE"},
      {acl_api_handler, "/acl/ip/name/web", "GET POST DELETE"},
      {acl_api_handler, "/acl/ip/name/web/rule", "GET POST DELETE"}, /* GET: a name with a slash */
      {acl_api_handler, "/acl/if/1", "GET POST DELETE"},
      {acl_api_handler, "/acl/vlan/1", "GET POST DELETE"},
      {interface_api_handler, "/if", "GET"},
      {interface_api_handler, "/if/pendingChanges", "GET"},
      {interface_api_handler, "/if/1", "GET"},
      {interface_api_handler, "/if/1/counters", "GET"},
      {interface_api_handler, "/if/1/vlan", "GET"},
      {interface_api_handler, "/if/1/vlan/1", "GET POST DELETE"},
      {interface_api_handler, "/if/1/vlan/1/taggingMode", "PUT"},
      {interface_api_handler, "/if/1/switchportMode", "GET PUT"},
      {interface_api_handler, "/if/1/trunk/vlan", "POST PUT DELETE"},
      {interface_api_handler, "/if/1/trunk/pvid", "PUT"},
      {interface_api_handler, "/if/1/access/vlan", "PUT"},
      {interface_api_handler, "/if/1/pvid", "PUT"},
      {interface_api_handler, "/if/1/acceptFrameType", "PUT"},
      {interface_api_handler, "/if/1/adminState", "PUT"},
      {interface_api_handler, "/if/1/autoNegMode", "PUT"},
      {interface_api_handler, "/if/1/description", "PUT"},
      {interface_api_handler, "/if/1/mtuSize", "PUT"},
      {interface_api_handler, "/if/1/speed", "PUT"},
      {interface_api_handler, "/if/1/counters/reset", "PUT"},
      {interface_api_handler, "/if/1/softShutdownState", ""},
      {lag_api_handler, "/lag", "GET"},
      {lag_api_handler, "/lag/1", "GET"},
      {lag_api_handler, "/lag/1/port/1", "POST DELETE"},
      {pml_api_handler, "/pml/if/1/sticky", "GET PUT"},
      {pml_api_handler, "/pml/if/1/mac", "GET"},
      {pml_api_handler, "/pml/if/1/vlan/1/mac", "DELETE"},
      {pml_api_handler, "/pml/if/1/vlan/1/sticky/1/mac", "POST"},
      {bgp_api_handler, "/bgp", "GET"},
      {bgp_api_handler, "/bgp/holdTime", "PUT"},
      {bgp_api_handler, "/bgp/keepAliveTime", "PUT"},
      {bgp_api_handler, "/bgp/localAS", "PUT"},
      {bgp_api_handler, "/bgp/routerId", "PUT"},
      {bgp_api_handler, "/bgp/localPref", "PUT"},
      {bgp_api_handler, "/bgp/logNeighborChanges", "PUT"},
      {bgp_api_handler, "/bgp/originatedNetwork", "POST DELETE"},
      {bgp_api_handler, "/bgp/ipv4/neighbor/x", "GET POST"},
      {bgp_api_handler, "/bgp/ipv4/neighbor/x/activate", ""},
      {bgp_api_handler, "/bgp/ipv4/neighbor/x/nextHopSelfMode", "PUT"},
      {bgp_api_handler, "/bgp/ipv4/neighbor/x/updateSource", "PUT"},
      {bgp_api_handler, "/bgp/ipv6/neighbor/x", ""},
      {bgp_api_handler, "/bgp/ipv6/neighbor/x/scope/1", "GET POST"},
      {bgp_api_handler, "/bgp/ipv6/neighbor/x/scope/1/activate", "PUT"},
      {bgp_api_handler, "/bgp/ipv6/neighbor/x/scope/1/nextHopSelfMode", "PUT"},
      {bgp_api_handler, "/bgp/ipv6/neighbor/x/scope/1/updateSource", "PUT"},
      {bgp_api_handler, "/bgp/ipv4/redistribution/x", "POST DELETE"},
      {bgp_api_handler, "/bgp/ipv6/redistribution/x", "POST DELETE"},
      {routing_api_handler, "/routing", "GET"},
      {routing_api_handler, "/routing/ipv4/adminMode", "PUT"},
      {routing_api_handler, "/routing/ipv6/adminMode", "PUT"},
      {routing_api_handler, "/routing/if", "GET"},
      {routing_api_handler, "/routing/if/1", "POST PUT DELETE"}, /* as beginnings of the next two */
      {routing_api_handler, "/routing/if/1/ip", "POST PUT DELETE"},
      {routing_api_handler, "/routing/if/1/adminMode", "POST PUT DELETE"},
      {routing_api_handler, "/routing/vlanRtrIf", "GET POST DELETE"},
      {routing_api_handler, "/routing/vlanRtrIf/1", "GET POST DELETE"},
      {routing_api_handler, "/routing/vlanRtrIf/1/ip", "POST DELETE"},
      {vxlan_api_handler, "/vxlan", ""},
      {vxlan_api_handler, "/vxlan/1", ""},
      {vxlan_api_handler, "/vxlan/1/mode", "GET PUT"},
      {vxlan_api_handler, "/vxlan/1/udpPort", "GET PUT"},
      {vxlan_api_handler, "/vxlan/1/sourceIntf", "GET DELETE"},
      {vxlan_api_handler, "/vxlan/1/sourceIntf/if", "PUT"},
      {vxlan_api_handler, "/vxlan/1/sourceIntf/loopback", "PUT"},
      {vxlan_api_handler, "/vxlan/1/sourceIntf/vlan", "PUT"},
      {vxlan_api_handler, "/vxlan/1/tenant", "GET"},
      {vxlan_api_handler, "/vxlan/1/tenant/1", "GET"},
      {vxlan_api_handler, "/vxlan/1/tenant/1/vlan/1", "POST DELETE"},
      {vxlan_api_handler, "/vxlan/1/tenant/1/multicastGroup", "PUT DELETE"},
      {vxlan_api_handler, "/vxlan/1/unicastGroup", "GET PUT DELETE"},
      {vxlan_api_handler, "/vxlan/1/multicastGroup", "GET PUT DELETE"},
  };
  for (const auto &row : rows) {
    for (const char *method : {"GET", "POST", "PUT", "DELETE"}) {
      EXPECT_EQ(is_served(row.handler, method, row.uri), strstr(row.methods, method) != nullptr)
          << method << " " << row.uri;
    }
  }
}
