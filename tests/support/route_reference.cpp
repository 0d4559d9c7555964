/* Route matching as sscanf(3) does it: see route_reference.h. */
#include "tests/support/route_reference.h"

#include <stdio.h>
#include <string.h>

static int no_operation(openapiClientHandle_t *, mg_connection *) {
  return 1;
}

static rest_route row(const char *pattern, int count, const char *keyword = nullptr) {
  return {REQUEST_METHOD_GET, pattern, count, keyword, no_operation};
}

const std::vector<rest_route> &all_api_routes() {
  static const std::vector<rest_route> routes = {
      row("/acl/%[^/]/name%s", 1),
      row("/acl/%[^/]/name/%[^/]/rule%s", 2),
      row("/acl/%[^/]/name/%s", 2),
      row("/acl/%s", 1),
      row("/acl/count%s", ROUTE_INSIDE),
      row("/acl/if/%[0-9]%s", 1),
      row("/acl/vlan/%[0-9]%s", 1),
      row("/base%s", ROUTE_EXACT),
      row("/base/idname%s", ROUTE_EXACT),
      row("/bgp%s", ROUTE_EXACT),
      row("/bgp/holdTime%s", ROUTE_EXACT),
      row("/bgp/ipv4/neighbor/%[^/]%s", 1),
      row("/bgp/ipv4/neighbor/%[^/]/%12[updateSource]%s", 2, "updateSource"),
      row("/bgp/ipv4/neighbor/%[^/]/%15[nextHopSelfMode]%s", 2, "nextHopSelfMode"),
      row("/bgp/ipv4/redistribution/%[^/]%s", 1),
      row("/bgp/ipv6/neighbor/%[^/]/scope/%[0-9]%s", 2),
      row("/bgp/ipv6/neighbor/%[^/]/scope/%[0-9]/%12[updateSource]%s", 3, "updateSource"),
      row("/bgp/ipv6/neighbor/%[^/]/scope/%[0-9]/%15[nextHopSelfMode]%s", 3, "nextHopSelfMode"),
      row("/bgp/ipv6/neighbor/%[^/]/scope/%[0-9]/%8[activate]%s", 3, "activate"),
      row("/bgp/ipv6/redistribution/%[^/]%s", 1),
      row("/bgp/keepAliveTime%s", ROUTE_EXACT),
      row("/bgp/localAS%s", ROUTE_EXACT),
      row("/bgp/localPref%s", ROUTE_EXACT),
      row("/bgp/logNeighborChanges%s", ROUTE_EXACT),
      row("/bgp/originatedNetwork%s", ROUTE_EXACT),
      row("/bgp/routerId%s", ROUTE_EXACT),
      row("/help%s", ROUTE_EXACT),
      row("/help/%[A-Za-z1-9]%s", 1),
      row("/if%s", ROUTE_EXACT),
      row("/if/%[0-9]%s", 1),
      row("/if/%[0-9]/%10[adminState]%s", 2, "adminState"),
      row("/if/%[0-9]/%11[autoNegMode]%s", 2, "autoNegMode"),
      row("/if/%[0-9]/%11[description]%s", 2, "description"),
      row("/if/%[0-9]/%14[switchportMode]%s", 2, "switchportMode"),
      row("/if/%[0-9]/%15[acceptFrameType]%s", 2, "acceptFrameType"),
      row("/if/%[0-9]/%4[pvid]%s", 2, "pvid"),
      row("/if/%[0-9]/%4[vlan]%s", 2, "vlan"),
      row("/if/%[0-9]/%5[speed]%s", 2, "speed"),
      row("/if/%[0-9]/%7[mtuSize]%s", 2, "mtuSize"),
      row("/if/%[0-9]/%8[counters]%s", 2, "counters"),
      row("/if/%[0-9]/access/%4[vlan]%s", 2, "vlan"),
      row("/if/%[0-9]/counters/%5[reset]%s", 2, "reset"),
      row("/if/%[0-9]/trunk/%4[pvid]%s", 2, "pvid"),
      row("/if/%[0-9]/trunk/%4[vlan]%s", 2, "vlan"),
      row("/if/%[0-9]/vlan/%[0-9]%s", 2),
      row("/if/%[0-9]/vlan/%[0-9]/%11[taggingMode]%s", 3, "taggingMode"),
      row("/if/pendingChanges%s", ROUTE_EXACT),
      row("/lag%s", ROUTE_EXACT),
      row("/lag/%[0-9]%s", 1),
      row("/lag/%[0-9]/port/%[0-9]%s", 2),
      row("/pml/if/%[0-9]/%3[mac]%s", 2, "mac"),
      row("/pml/if/%[0-9]/%6[sticky]%s", 2, "sticky"),
      row("/pml/if/%[0-9]/vlan/%[0-9]/%3[mac]%s", 3, "mac"),
      row("/pml/if/%[0-9]/vlan/%[0-9]/sticky/%[0-1]/%3[mac]%s", 4, "mac"),
      row("/routing%s", ROUTE_EXACT),
      row("/routing/if%s", ROUTE_EXACT),
      row("/routing/if/%[0-9]/adminMode%s", 1),
      row("/routing/if/%[0-9]/ip%s", 1),
      row("/routing/ipv4/adminMode%s", ROUTE_EXACT),
      row("/routing/ipv6/adminMode%s", ROUTE_EXACT),
      row("/routing/vlanRtrIf%s", ROUTE_EXACT),
      row("/routing/vlanRtrIf/%[0-9]%s", 1),
      row("/routing/vlanRtrIf/%[0-9]/ip%s", 1),
      row("/tcam%s", ROUTE_INSIDE),
      row("/tcam/groupStats%s", ROUTE_INSIDE),
      row("/tcam/policy%s", ROUTE_INSIDE),
      row("/tcam/policy/%[0-9]%s", 1),
      row("/tcam/policy/%[0-9]/port/%[0-9]%s", 2),
      row("/vlans%s", ROUTE_EXACT),
      row("/vlans/%[0-9]%s", 1),
      row("/vlans/%[0-9]/%4[name]%s", 2, "name"),
      row("/vlans/pendingChanges%s", ROUTE_EXACT),
      row("/vxlan/%[0-9]/%10[sourceIntf]%s", 2, "sourceIntf"),
      row("/vxlan/%[0-9]/%12[unicastGroup]%s", 2, "unicastGroup"),
      row("/vxlan/%[0-9]/%14[multicastGroup]%s", 2, "multicastGroup"),
      row("/vxlan/%[0-9]/%4[mode]%s", 2, "mode"),
      row("/vxlan/%[0-9]/%6[tenant]%s", 2, "tenant"),
      row("/vxlan/%[0-9]/%7[udpPort]%s", 2, "udpPort"),
      row("/vxlan/%[0-9]/sourceIntf/%2[if]%s", 2, "if"),
      row("/vxlan/%[0-9]/sourceIntf/%4[vlan]%s", 2, "vlan"),
      row("/vxlan/%[0-9]/sourceIntf/%8[loopback]%s", 2, "loopback"),
      row("/vxlan/%[0-9]/tenant/%[0-9]%s", 2),
      row("/vxlan/%[0-9]/tenant/%[0-9]/%14[multicastGroup]%s", 3, "multicastGroup"),
      row("/vxlan/%[0-9]/tenant/%[0-9]/vlan/%[0-9]%s", 3),
  };
  return routes;
}

int plain_sscanf(const std::string &uri, const char *pattern, std::vector<std::string> *fields) {
  static constexpr size_t FIELDS = 8;
  const size_t size = strlen(uri.c_str()) + 1; /* no field is longer than the URI */
  std::vector<char> buffers(FIELDS * size, '\0');
  char *b = buffers.data();
  int count = sscanf(uri.c_str(), pattern, b, b + size, b + 2 * size, b + 3 * size, b + 4 * size,
                     b + 5 * size, b + 6 * size, b + 7 * size);
  fields->clear();
  for (int i = 0; i < count; i++) fields->push_back(b + static_cast<size_t>(i) * size);
  return count;
}

/* End of input is what sscanf reports for three things: the whole literal text, which is the route; a URI
 * that stops within it; and blanks after it, which %s skips. */
static bool is_only_end_of_input(const std::string &uri, const std::string &literal) {
  if (uri.size() < literal.size()) return literal.compare(0, uri.size(), uri) == 0;
  return uri.size() > literal.size() && uri.compare(0, literal.size(), literal) == 0 &&
         uri.find_first_not_of(" \t\n\v\f\r", literal.size()) == std::string::npos;
}

static bool expected_to_match(const rest_route &route, const std::string &uri) {
  std::vector<std::string> fields;
  int count = plain_sscanf(uri, route.pattern, &fields);
  int wanted = route.count == ROUTE_EXACT || route.count == ROUTE_INSIDE ? EOF : route.count;
  if (uri.size() >= REQUEST_URI_SIZE || count != wanted) return false;
  if (route.count == ROUTE_EXACT) {
    return !is_only_end_of_input(uri, std::string(route.pattern, strcspn(route.pattern, "%")));
  }
  return route.keyword == nullptr || fields.back() == route.keyword;
}

/* The fields that scan_uri() fills are those of sscanf. */
static bool same_fields(const rest_route &route, const std::string &uri) {
  uri_fields_t scanned = {};
  std::vector<std::string> fields;
  int count = plain_sscanf(uri, route.pattern, &fields);
  if (scan_uri(uri.c_str(), route.pattern, scanned) != (uri.size() >= REQUEST_URI_SIZE ? 0 : count))
    return false;
  if (uri.size() >= REQUEST_URI_SIZE) return true;
  for (size_t i = 0; i < fields.size(); i++) {
    if (fields[i] != scanned[i]) return false;
  }
  return true;
}

std::string find_disagreement(const std::string &bytes) {
  const std::string uri = bytes.c_str(); /* a URI ends at its first zero byte */
  const std::vector<rest_route> &routes = all_api_routes();
  const rest_route *first = nullptr;
  for (const rest_route &route : routes) {
    bool expected = expected_to_match(route, uri);
    if (expected && first == nullptr) first = &route;
    bool found = find_route({&route, 1}, REQUEST_METHOD_GET, uri.c_str()) == &route;
    if (found != expected) return uri + (found ? " is" : " is not") + " taken by " + route.pattern;
    if (!same_fields(route, uri)) return uri + " is scanned differently by " + route.pattern;
  }
  if (find_route(routes, REQUEST_METHOD_GET, uri.c_str()) != first)
    return uri + " is not taken by the first route";
  if (find_route(routes, REQUEST_METHOD_PUT, uri.c_str()) != nullptr)
    return uri + " is taken whatever the method";
  return "";
}
