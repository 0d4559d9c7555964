/* BGP. The module keeps no state: every operation asks the platform. IPv4 and IPv6 neighbours differ in their
 * URIs and texts; the work is the same, told the family. */
#include "modules/rest_module_bgp.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "platform/api/openapi_bgp.h"
#include "platform/api/openapi_if.h"
#include "platform/api/openapi_routing.h"

#include <stdlib.h>
#include <string.h>

enum { ROUTE_MAP_SIZE = 32 }; /* of an originated network's route map, the terminator included */

/* --- What came in --------------------------------------------------------------------------------------- */

/* A variable with the number of an autonomous system. It has 32 bits (RFC 6793), more than an int. When it is
 * missing or has more the request is answered and the result is false. */
static bool as_number_or_reply(mg_connection *conn, const char *name, uint32_t *asn) {
  request_variable variable;
  if (!variable_or_reply(conn, name, &variable)) return false;
  long long number = strtoll(variable.text, nullptr, 10);
  *asn = static_cast<uint32_t>(number);
  if (*asn == number) return true;
  fail(conn, OPEN_E_PARAM, nullptr);
  return false;
}

static bool parse_address(openapiClientHandle_t *client_handle, const char *text, OPEN_AF_t family,
                          open_inet_addr_t *address) {
  return convert_ip_string_to_inet_addr(client_handle, text, address) == RC_TRUE && address->family == family;
}

/* A neighbour as the URI names it. */
struct neighbor {
  char text[REQUEST_URI_SIZE]; /* its address */
  open_inet_addr_t address;
  uint32_t scopeId; /* 0 for IPv4 */
};

/* False when the URI names none, or its address is none of the family. */
static bool take_neighbor(openapiClientHandle_t *client_handle, const mg_connection *conn, OPEN_AF_t family,
                          neighbor *out) {
  const char *pattern =
      family == OPEN_AF_INET ? "/bgp/ipv4/neighbor/%[^/]" : "/bgp/ipv6/neighbor/%[^/]/scope/%[0-9]";
  uri_fields_t fields = {};
  scan_uri(conn->uri, pattern, fields);
  memcpy(out->text, fields[0], sizeof out->text);
  out->scopeId = static_cast<uint32_t>(text_to_int(fields[1]));
  return parse_address(client_handle, out->text, family, &out->address);
}

static bool neighbor_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, OPEN_AF_t family,
                              neighbor *out) {
  if (take_neighbor(client_handle, conn, family, out)) return true;
  fail(conn, OPEN_E_PARAM, nullptr);
  return false;
}

static int refuse_value(mg_connection *conn) {
  return refuse(conn, 1, "The value of parameter is invalid.");
}

/* How an answer ends that concerns a neighbour: what was done to it, before the family's word for it. */
static int succeed_for_neighbor(mg_connection *conn, OPEN_AF_t family, const neighbor &peer,
                                const char *what) {
  if (family == OPEN_AF_INET)
    return succeed(conn, nullptr, "%s BGP IPv4 neighbor (ip address: %s) successfully.", what, peer.text);
  return succeed(conn, nullptr, "%s BGP IPv6 neighbor (ip address: %s, scope: %d) successfully.", what,
                 peer.text, static_cast<int>(peer.scopeId));
}

/* --- Originated networks -------------------------------------------------------------------------------- */

int api_bgp_delete_originated_network(openapiClientHandle_t *client_handle, mg_connection *conn) {
  request_variable addr;
  uint32_t pfxLen = 0;
  if (!variable_or_reply(conn, "addr", &addr) || !number_or_reply(conn, "pfxLen", &pfxLen)) return 0;
  open_inet_addr_t address = {};
  if (convert_ip_string_to_inet_addr(client_handle, addr.text, &address) != RC_TRUE)
    return fail(conn, OPEN_E_PARAM, nullptr);

  open_buffdesc none = describe_text("");
  open_error_t rc =
      rpcclt_openapiBgpNetworkAddDelete(client_handle, OPEN_FALSE, &address, pfxLen, OPEN_FALSE, &none);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr,
                 "Delete BGP originated network (ip address: %s, prefix length: %d) successfully.", addr.text,
                 static_cast<int>(pfxLen));
}

int api_bgp_create_originated_network(openapiClientHandle_t *client_handle, mg_connection *conn) {
  request_variable addr, length, routeMap;
  if (!variable_or_reply(conn, "addr", &addr) || !variable_or_reply(conn, "pfxLen", &length)) return 0;
  uint32_t pfxLen = 0;
  if (convert_to_32bit_uint(length.text, &pfxLen) != RC_TRUE) return fail(conn, OPEN_E_PARAM, nullptr);
  if (!variable_or_reply(conn, "routeMap", &routeMap)) return 0;
  if (routeMap.length >= ROUTE_MAP_SIZE) return fail(conn, OPEN_E_PARAM, nullptr);
  open_inet_addr_t address = {};
  if (convert_ip_string_to_inet_addr(client_handle, addr.text, &address) != RC_TRUE)
    return fail(conn, OPEN_E_PARAM, nullptr);

  open_buffdesc name = describe_text(routeMap.text);
  open_error_t rc =
      rpcclt_openapiBgpNetworkAddDelete(client_handle, OPEN_TRUE, &address, pfxLen, OPEN_TRUE, &name);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr,
                 "Set BGP originated network (ip address: %s, prefix length: %d) successfully.", addr.text,
                 static_cast<int>(pfxLen));
}

/* --- Redistribution ------------------------------------------------------------------------------------- */

/* The variables that select routes, in the order of their result codes, which count from 1. */
struct match_variable {
  const char *name;
  uint32_t bit;
};

static const match_variable match_variables[] = {
    {"matchInternal", OPEN_OSPF_MATCH_INTERNAL},        {"matchExt1", OPEN_OSPF_MATCH_EXTERNAL_1},
    {"matchExt2", OPEN_OSPF_MATCH_EXTERNAL_2},          {"matchNssaExt1", OPEN_OSPF_MATCH_NSSA_EXTERNAL_1},
    {"matchNssaExt2", OPEN_OSPF_MATCH_NSSA_EXTERNAL_2},
};

/* Present, be it empty or longer than the buffer: what fits of it is handed on. */
static bool is_present(const request_variable &variable) {
  return variable.length != -1;
}

/* The bits of the variables that are there. When one of them is not 1 the request is answered and the result
 * is false. */
static bool match_bits_or_reply(mg_connection *conn, uint32_t *bits) {
  uint16_t position = 0;
  *bits = 0;
  for (const match_variable &match : match_variables) {
    position++;
    request_variable variable = read_variable(conn, match.name);
    if (!is_present(variable)) continue;
    if (text_to_int(variable.text) != 1) {
      refuse(conn, position, "The value of parameter %s is invalid.", match.name);
      return false;
    }
    *bits |= match.bit;
  }
  return true;
}

/* The name of the source protocol in the URI; empty when it has none. */
struct source_name {
  uri_fields_t fields = {};
  const char *text() const { return fields[0]; }
};

static void take_source(const mg_connection *conn, OPEN_AF_t family, source_name *out) {
  scan_uri(conn->uri,
           family == OPEN_AF_INET ? "/bgp/ipv4/redistribution/%[^/]" : "/bgp/ipv6/redistribution/%[^/]",
           out->fields);
}

static const char *family_word(OPEN_AF_t family) {
  return family == OPEN_AF_INET ? "IPv4" : "IPv6";
}

static int create_redistribution(openapiClientHandle_t *client_handle, mg_connection *conn,
                                 OPEN_AF_t family) {
  source_name source;
  take_source(conn, family, &source);
  request_variable metric = read_variable(conn, "metric"), routeMap = read_variable(conn, "routeMap");
  uint32_t bits = 0;
  if (!match_bits_or_reply(conn, &bits)) return 0;

  open_buffdesc protocol = describe_text(source.text()), map = describe_text(routeMap.text);
  OPEN_BOOL_t matchSet = bits != 0, metricSet = is_present(metric), routeMapSet = is_present(routeMap);
  /* The platform wants to hear twice that there is a metric. */
  open_error_t rc = rpcclt_openapiBgpRedistributionSet(
      client_handle, OPEN_TRUE, &protocol, matchSet, bits, metricSet, metricSet,
      strtoll(metric.text, nullptr, 10), routeMapSet, family, &map);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Create BGP %s Redistribution for %s successfully.", family_word(family),
                 source.text());
}

static int delete_redistribution(openapiClientHandle_t *client_handle, mg_connection *conn,
                                 OPEN_AF_t family) {
  source_name source;
  take_source(conn, family, &source);

  open_buffdesc protocol = describe_text(source.text()), none = describe_characters("");
  open_error_t rc = rpcclt_openapiBgpRedistributionSet(client_handle, OPEN_FALSE, &protocol, OPEN_FALSE, 0,
                                                       OPEN_FALSE, OPEN_FALSE, 0, OPEN_FALSE, family, &none);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete BGP %s Redistribution for %s successfully.", family_word(family),
                 source.text());
}

int api_bgp_delete_ipv4_redistribution(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return delete_redistribution(client_handle, conn, OPEN_AF_INET);
}

int api_bgp_delete_ipv6_redistribution(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return delete_redistribution(client_handle, conn, OPEN_AF_INET6);
}

int api_bgp_create_ipv4_redistribution(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return create_redistribution(client_handle, conn, OPEN_AF_INET);
}

int api_bgp_create_ipv6_redistribution(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return create_redistribution(client_handle, conn, OPEN_AF_INET6);
}

/* --- The speaker ---------------------------------------------------------------------------------------- */

/* How the updates of the speaker's settings end. */
static int answer_update(mg_connection *conn, open_error_t rc, const char *what) {
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update %s successfully.", what);
}

int api_bgp_update_hold_time(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t seconds = 0;
  if (!number_or_reply(conn, "value", &seconds)) return 0;
  return answer_update(conn, rpcclt_openapiBgpGlobalHoldTimeConfiguredSet(client_handle, seconds),
                       "hold time for all peers");
}

int api_bgp_update_keep_alive_time(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t seconds = 0;
  if (!number_or_reply(conn, "value", &seconds)) return 0;
  return answer_update(conn, rpcclt_openapiBgpGlobalKeepAliveConfiguredSet(client_handle, seconds),
                       "keep alive time for all peers");
}

int api_bgp_update_local_AS(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t asn = 0;
  if (!as_number_or_reply(conn, "value", &asn)) return 0;
  return answer_update(conn, rpcclt_openapiBgpLocalASSet(client_handle, asn),
                       "local Autonomous System (AS) number");
}

int api_bgp_update_router_id(openapiClientHandle_t *client_handle, mg_connection *conn) {
  request_variable value;
  open_inet_addr_t address = {};
  if (!variable_or_reply(conn, "value", &value)) return 0;
  if (!parse_address(client_handle, value.text, OPEN_AF_INET, &address))
    return fail(conn, OPEN_E_PARAM, nullptr);
  return answer_update(conn, rpcclt_openapiBgpLocalIdSet(client_handle, address.addr.ipv4), "BGP router ID");
}

int api_bgp_update_local_pref(openapiClientHandle_t *client_handle, mg_connection *conn) {
  request_variable value;
  uint32_t preference = 0;
  if (!variable_or_reply(conn, "value", &value)) return 0;
  if (convert_to_32bit_uint(value.text, &preference) != RC_TRUE) return fail(conn, OPEN_E_PARAM, nullptr);
  return answer_update(conn, rpcclt_openapiBgpLocalPrefSet(client_handle, preference),
                       "the value of local preference attribute");
}

int api_bgp_update_log_neighbor_changes(openapiClientHandle_t *client_handle, mg_connection *conn) {
  int32_t value = 0;
  if (!number_or_reply(conn, "value", &value)) return 0;
  OPEN_BOOL_t on = value != 0 ? OPEN_TRUE : OPEN_FALSE;
  return answer_update(conn, rpcclt_openapiBgpLogNeighborChangesSet(client_handle, on),
                       "the log neighbor changes parameter");
}

int api_bgp_get_info(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t hold = 0, keep_alive = 0, asn = 0, id = 0, preference = 0;
  OPEN_BOOL_t logs_changes = OPEN_FALSE;
  open_error_t rc = rpcclt_openapiBgpGlobalHoldTimeConfiguredGet(client_handle, &hold);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiBgpGlobalKeepAliveConfiguredGet(client_handle, &keep_alive);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiBgpLocalASGet(client_handle, &asn);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiBgpLocalIdGet(client_handle, &id);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiBgpLocalPrefGet(client_handle, &preference);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiBgpLogNeighborChangesGet(client_handle, &logs_changes);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  char router_id[IP_TEXT_SIZE] = {};
  convert_ipv4_with_uint32_to_ip_string(id, router_id);
  node_t *tree = new_tree();
  node_t *information = append_branch(tree, "infomation");
  append_tree_number(information, "hold_time", hold);
  append_tree_number(information, "keep_alive_time", keep_alive);
  append_tree_number(information, "local_AS_number", asn);
  append_tree_string(information, "local_router_id", "local_router_id", router_id);
  append_tree_number(information, "local_preference", preference);
  append_tree_string(information, "log_neighbor_changes", "log_neighbor_changes",
                     logs_changes != OPEN_FALSE ? "Enable" : "Disable");
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Neighbours: changes -------------------------------------------------------------------------------- */

int api_bgp_create_ipv4_neighbor(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t asn = 0;
  neighbor peer = {};
  if (!as_number_or_reply(conn, "asn", &asn)) return 0;
  if (!neighbor_or_reply(client_handle, conn, OPEN_AF_INET, &peer)) return 0;

  open_error_t rc = rpcclt_openapiBgpPeerRemoteASSet(client_handle, &peer.address, 0, asn);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Set BGP IPv4 neighbor (ip address: %s, AS number: %d) successfully.",
                 peer.text, static_cast<int>(asn));
}

int api_bgp_create_ipv6_neighbor(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t asn = 0;
  neighbor peer = {};
  if (!as_number_or_reply(conn, "asn", &asn)) return 0;
  if (!neighbor_or_reply(client_handle, conn, OPEN_AF_INET6, &peer)) return 0;

  open_error_t rc = rpcclt_openapiBgpPeerRemoteASSet(client_handle, &peer.address, peer.scopeId, asn);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr,
                 "Set BGP IPv6 neighbor (ip address: %s, scope: %d, AS number: %d) successfully.", peer.text,
                 static_cast<int>(peer.scopeId), static_cast<int>(asn));
}

typedef open_error_t (*neighbor_flag_setter_t)(openapiClientHandle_t *client_handle,
                                               const open_inet_addr_t *address, uint32_t scopeId,
                                               uint32_t family, OPEN_BOOL_t value);

/* Sets what a neighbour has or has not. */
static int update_flag(openapiClientHandle_t *client_handle, mg_connection *conn, OPEN_AF_t family,
                       neighbor_flag_setter_t set, const char *what) {
  request_variable value = read_variable(conn, "value");
  int32_t number = 0;
  neighbor peer = {};
  bool valid = value.length > 0 && check_string_is_number_within_rest_control(value.text, &number) == RC_TRUE;
  if (!valid || !take_neighbor(client_handle, conn, family, &peer)) return refuse_value(conn);

  open_error_t rc =
      set(client_handle, &peer.address, peer.scopeId, family, number == 1 ? OPEN_TRUE : OPEN_FALSE);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed_for_neighbor(conn, family, peer, what);
}

static const char ACTIVATE[] = "Update activate state of";
static const char NEXT_HOP_SELF[] = "Update next-hop-self mode of";

int api_bgp_update_ipv4_neighbor_activate(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_flag(client_handle, conn, OPEN_AF_INET, rpcclt_openapiBgpPeerActivateSet, ACTIVATE);
}

int api_bgp_update_ipv6_neighbor_activate(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_flag(client_handle, conn, OPEN_AF_INET6, rpcclt_openapiBgpPeerActivateSet, ACTIVATE);
}

int api_bgp_update_ipv4_neighbor_next_hop_self_mode(openapiClientHandle_t *client_handle,
                                                    mg_connection *conn) {
  return update_flag(client_handle, conn, OPEN_AF_INET, rpcclt_openapiBgpPeerNextHopSelfModeSet,
                     NEXT_HOP_SELF);
}

int api_bgp_update_ipv6_neighbor_next_hop_self_mode(openapiClientHandle_t *client_handle,
                                                    mg_connection *conn) {
  return update_flag(client_handle, conn, OPEN_AF_INET6, rpcclt_openapiBgpPeerNextHopSelfModeSet,
                     NEXT_HOP_SELF);
}

/* What the variable type says of the variable value. */
enum { SOURCE_IS_VLAN = 1, SOURCE_IS_INTERFACE = 2 };

/* False when one of the two is missing or not valid. */
static bool take_update_source(const mg_connection *conn, int32_t *type, int32_t *value) {
  request_variable type_variable = read_variable(conn, "type"), value_variable = read_variable(conn, "value");
  if (type_variable.length <= 0 || check_string_is_number(type_variable.text, type) != RC_TRUE) return false;
  if (*type != SOURCE_IS_VLAN && *type != SOURCE_IS_INTERFACE) return false;
  return value_variable.length > 0 && check_string_is_number(value_variable.text, value) == RC_TRUE;
}

static int update_source(openapiClientHandle_t *client_handle, mg_connection *conn, OPEN_AF_t family) {
  int32_t type = 0, value = 0;
  neighbor peer = {};
  if (!take_update_source(conn, &type, &value) || !take_neighbor(client_handle, conn, family, &peer))
    return refuse_value(conn);

  uint32_t ifNum = static_cast<uint32_t>(value);
  open_error_t rc = OPEN_E_NONE;
  if (type == SOURCE_IS_VLAN)
    rc = rpcclt_openapiRtrVlanIntfNumGetZYL(client_handle, static_cast<uint32_t>(value), &ifNum);
  if (rc == OPEN_E_NONE)
    rc = rpcclt_openapiBgpPeerUpdateSourceSet(client_handle, &peer.address, peer.scopeId, ifNum);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed_for_neighbor(conn, family, peer, "Update update-source of");
}

int api_bgp_update_ipv4_neighbor_update_source(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_source(client_handle, conn, OPEN_AF_INET);
}

int api_bgp_update_ipv6_neighbor_update_source(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_source(client_handle, conn, OPEN_AF_INET6);
}

/* --- Neighbours: reading -------------------------------------------------------------------------------- */

static open_error_t append_activate(openapiClientHandle_t *client_handle, const neighbor &peer,
                                    node_t *tree) {
  OPEN_BOOL_t active = OPEN_FALSE;
  open_error_t rc =
      rpcclt_openapiBgpPeerActivateGet(client_handle, &peer.address, peer.scopeId, OPEN_AF_INET6, &active);
  if (rc == OPEN_E_NONE)
    append_tree_string(tree, "activate", "activate", active != OPEN_FALSE ? "Yes" : "No");
  return rc;
}

static open_error_t append_update_source(openapiClientHandle_t *client_handle, const neighbor &peer,
                                         node_t *tree) {
  uint32_t ifNum = 0;
  platform_text_256 name;
  open_error_t rc = rpcclt_openapiBgpPeerUpdateSourceGet(client_handle, &peer.address, peer.scopeId, &ifNum);
  if (rc == OPEN_E_NONE && ifNum != 0) rc = openapiIfNameGet(client_handle, ifNum, &name.desc);
  if (rc == OPEN_E_NONE)
    append_tree_string(tree, "update_source", "update_source", ifNum != 0 ? name.text : "none");
  return rc;
}

static open_error_t append_neighbor(openapiClientHandle_t *client_handle, OPEN_AF_t family,
                                    const neighbor &peer, node_t *tree) {
  uint32_t asn = 0, next_hop_self = 0;
  open_error_t rc = rpcclt_openapiBgpPeerRemoteASGet(client_handle, &peer.address, peer.scopeId, &asn);
  if (rc != OPEN_E_NONE) return rc;
  append_tree_string(tree, "remote_address", "remote_address", peer.text);
  append_tree_number(tree, "remote_as", asn);

  if (family == OPEN_AF_INET6) rc = append_activate(client_handle, peer, tree);
  if (rc == OPEN_E_NONE)
    rc = rpcclt_openapiBgpPeerNextHopSelfModeGet(client_handle, &peer.address, peer.scopeId, family,
                                                 &next_hop_self);
  if (rc != OPEN_E_NONE) return rc;
  append_tree_control(tree, "next_hop_self_mode", next_hop_self);
  return append_update_source(client_handle, peer, tree);
}

static int get_neighbor_info(openapiClientHandle_t *client_handle, mg_connection *conn, OPEN_AF_t family) {
  neighbor peer = {};
  if (!neighbor_or_reply(client_handle, conn, family, &peer)) return 0;

  node_t *tree = new_tree();
  open_error_t rc = append_neighbor(client_handle, family, peer, append_branch(tree, "neighbor_info"));
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

int api_bgp_get_ipv4_neighbor_info(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return get_neighbor_info(client_handle, conn, OPEN_AF_INET);
}

int api_bgp_get_ipv6_neighbor_info(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return get_neighbor_info(client_handle, conn, OPEN_AF_INET6);
}

/* --- Routes --------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_DELETE, "/bgp/originatedNetwork%s", ROUTE_EXACT, nullptr,
     api_bgp_delete_originated_network},
    {REQUEST_METHOD_DELETE, "/bgp/ipv4/redistribution/%[^/]%s", 1, nullptr,
     api_bgp_delete_ipv4_redistribution},
    {REQUEST_METHOD_DELETE, "/bgp/ipv6/redistribution/%[^/]%s", 1, nullptr,
     api_bgp_delete_ipv6_redistribution},
    {REQUEST_METHOD_PUT, "/bgp/holdTime%s", ROUTE_EXACT, nullptr, api_bgp_update_hold_time},
    {REQUEST_METHOD_PUT, "/bgp/keepAliveTime%s", ROUTE_EXACT, nullptr, api_bgp_update_keep_alive_time},
    {REQUEST_METHOD_PUT, "/bgp/localAS%s", ROUTE_EXACT, nullptr, api_bgp_update_local_AS},
    {REQUEST_METHOD_PUT, "/bgp/routerId%s", ROUTE_EXACT, nullptr, api_bgp_update_router_id},
    {REQUEST_METHOD_PUT, "/bgp/localPref%s", ROUTE_EXACT, nullptr, api_bgp_update_local_pref},
    {REQUEST_METHOD_PUT, "/bgp/logNeighborChanges%s", ROUTE_EXACT, nullptr,
     api_bgp_update_log_neighbor_changes},
    {REQUEST_METHOD_PUT, "/bgp/ipv4/neighbor/%[^/]/%15[nextHopSelfMode]%s", 2, "nextHopSelfMode",
     api_bgp_update_ipv4_neighbor_next_hop_self_mode},
    {REQUEST_METHOD_PUT, "/bgp/ipv4/neighbor/%[^/]/%12[updateSource]%s", 2, "updateSource",
     api_bgp_update_ipv4_neighbor_update_source},
    {REQUEST_METHOD_PUT, "/bgp/ipv6/neighbor/%[^/]/scope/%[0-9]/%8[activate]%s", 3, "activate",
     api_bgp_update_ipv6_neighbor_activate},
    {REQUEST_METHOD_PUT, "/bgp/ipv6/neighbor/%[^/]/scope/%[0-9]/%15[nextHopSelfMode]%s", 3, "nextHopSelfMode",
     api_bgp_update_ipv6_neighbor_next_hop_self_mode},
    {REQUEST_METHOD_PUT, "/bgp/ipv6/neighbor/%[^/]/scope/%[0-9]/%12[updateSource]%s", 3, "updateSource",
     api_bgp_update_ipv6_neighbor_update_source},
    {REQUEST_METHOD_GET, "/bgp%s", ROUTE_EXACT, nullptr, api_bgp_get_info},
    {REQUEST_METHOD_GET, "/bgp/ipv4/neighbor/%[^/]%s", 1, nullptr, api_bgp_get_ipv4_neighbor_info},
    {REQUEST_METHOD_GET, "/bgp/ipv6/neighbor/%[^/]/scope/%[0-9]%s", 2, nullptr,
     api_bgp_get_ipv6_neighbor_info},
    {REQUEST_METHOD_POST, "/bgp/originatedNetwork%s", ROUTE_EXACT, nullptr,
     api_bgp_create_originated_network},
    {REQUEST_METHOD_POST, "/bgp/ipv4/neighbor/%[^/]%s", 1, nullptr, api_bgp_create_ipv4_neighbor},
    {REQUEST_METHOD_POST, "/bgp/ipv4/redistribution/%[^/]%s", 1, nullptr, api_bgp_create_ipv4_redistribution},
    {REQUEST_METHOD_POST, "/bgp/ipv6/neighbor/%[^/]/scope/%[0-9]%s", 2, nullptr,
     api_bgp_create_ipv6_neighbor},
    {REQUEST_METHOD_POST, "/bgp/ipv6/redistribution/%[^/]%s", 1, nullptr, api_bgp_create_ipv6_redistribution},
};

int bgp_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> bgp_api_routes(void) {
  return routes;
}
