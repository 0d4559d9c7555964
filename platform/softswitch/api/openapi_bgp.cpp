/* BGP; the contracts are in platform/api/openapi_bgp.h. Setters come down to a line of the configuration
 * language. */
#include "platform/api/openapi_bgp.h"

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/config/bgp_lines.h"

using namespace softswitch;

/* --- The speaker ---------------------------------------------------------------------------------------- */

static open_error_t get_setting(const char *function, openapiClientHandle_t *handle, bgp_setting setting,
                                uint32_t *value) {
  return api_call(function, handle, {value}, [&](const switch_model &model) {
    *value = model.bgp->speaker.*setting;
    return OPEN_E_NONE;
  });
}

/* Sets what a line with one number says. */
static open_error_t set_number(const char *function, openapiClientHandle_t *handle, const char *pattern,
                               uint32_t value) {
  return api_call(function, handle, {value},
                  [&](switch_model &model) { return commit(model, pattern, {value}); });
}

open_error_t rpcclt_openapiBgpGlobalHoldTimeConfiguredGet(openapiClientHandle_t *handle, uint32_t *seconds) {
  return get_setting(__func__, handle, &bgp_speaker::hold_time, seconds);
}

open_error_t rpcclt_openapiBgpGlobalHoldTimeConfiguredSet(openapiClientHandle_t *handle, uint32_t seconds) {
  return set_number(__func__, handle, "bgp hold-time <number>", seconds);
}

open_error_t rpcclt_openapiBgpGlobalKeepAliveConfiguredGet(openapiClientHandle_t *handle, uint32_t *seconds) {
  return get_setting(__func__, handle, &bgp_speaker::keepalive_time, seconds);
}

open_error_t rpcclt_openapiBgpGlobalKeepAliveConfiguredSet(openapiClientHandle_t *handle, uint32_t seconds) {
  return set_number(__func__, handle, "bgp keepalive-time <number>", seconds);
}

open_error_t rpcclt_openapiBgpLocalASGet(openapiClientHandle_t *handle, uint32_t *asn) {
  return get_setting(__func__, handle, &bgp_speaker::local_as, asn);
}

open_error_t rpcclt_openapiBgpLocalASSet(openapiClientHandle_t *handle, uint32_t asn) {
  return set_number(__func__, handle, "bgp local-as <number>", asn);
}

open_error_t rpcclt_openapiBgpLocalIdGet(openapiClientHandle_t *handle, uint32_t *routerId) {
  return get_setting(__func__, handle, &bgp_speaker::router_id, routerId);
}

open_error_t rpcclt_openapiBgpLocalIdSet(openapiClientHandle_t *handle, uint32_t routerId) {
  return api_call(__func__, handle, {routerId}, [&](switch_model &model) {
    return commit(model, "bgp router-id <ip>", {inet_ipv4(routerId)});
  });
}

open_error_t rpcclt_openapiBgpLocalPrefGet(openapiClientHandle_t *handle, uint32_t *preference) {
  return get_setting(__func__, handle, &bgp_speaker::local_preference, preference);
}

open_error_t rpcclt_openapiBgpLocalPrefSet(openapiClientHandle_t *handle, uint32_t preference) {
  return set_number(__func__, handle, "bgp local-preference <number>", preference);
}

open_error_t rpcclt_openapiBgpLogNeighborChangesGet(openapiClientHandle_t *handle, OPEN_BOOL_t *on) {
  return get_setting(__func__, handle, &bgp_speaker::log_neighbor_changes, on);
}

open_error_t rpcclt_openapiBgpLogNeighborChangesSet(openapiClientHandle_t *handle, OPEN_BOOL_t on) {
  return api_call(__func__, handle, {on}, [&](switch_model &model) {
    bool off = on == OPEN_FALSE;
    return commit(model, off ? "no bgp log-neighbor-changes" : "bgp log-neighbor-changes", {});
  });
}

/* --- Originated networks -------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiBgpNetworkAddDelete(openapiClientHandle_t *handle, OPEN_BOOL_t normalMode,
                                               const open_inet_addr_t *address, uint32_t pfxLen,
                                               OPEN_BOOL_t useRm, open_buffdesc *routeMap) {
  call_arguments arguments = {normalMode, address_in(address), pfxLen, useRm, text_in(routeMap)};
  return api_call(__func__, handle, arguments, [&](switch_model &model) {
    open_inet_pfx_t network = {*address, pfxLen, 0};
    if (!bgp_network_valid(network)) return OPEN_E_PARAM;
    if (normalMode == OPEN_FALSE) return commit(model, "no bgp network <network>", {network});
    if (useRm == OPEN_FALSE) return commit(model, "bgp network <network>", {network});
    return commit(model, "bgp network <network> route-map <text>", {network, text_of(*routeMap)});
  });
}

/* --- Peers ---------------------------------------------------------------------------------------------- */

/* Finds a peer that exists. */
static open_error_t find_peer(const switch_model &model, const bgp_peer_id &id, const bgp_peer **peer) {
  *peer = bgp_peer_find(model, id);
  if (!bgp_peer_id_valid(id)) return OPEN_E_PARAM;
  return *peer ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
}

open_error_t rpcclt_openapiBgpPeerRemoteASGet(openapiClientHandle_t *handle, const open_inet_addr_t *address,
                                              uint32_t scopeId, uint32_t *asn) {
  return api_call(__func__, handle, {address_in(address), scopeId, asn}, [&](const switch_model &model) {
    const bgp_peer *peer;
    open_error_t rc = find_peer(model, {*address, scopeId}, &peer);
    if (rc == OPEN_E_NONE) *asn = peer->remote_as;
    return rc;
  });
}

open_error_t rpcclt_openapiBgpPeerRemoteASSet(openapiClientHandle_t *handle, const open_inet_addr_t *address,
                                              uint32_t scopeId, uint32_t asn) {
  return api_call(__func__, handle, {address_in(address), scopeId, asn}, [&](switch_model &model) {
    bgp_peer_id id = {*address, scopeId};
    open_error_t rc = bgp_peer_id_check(model, id);
    if (rc != OPEN_E_NONE) return rc;
    return commit(model, "bgp neighbor <neighbor> remote-as <number>", {id, asn});
  });
}

/* Reads what a peer and one family have. */
static open_error_t get_peer_family(const char *function, openapiClientHandle_t *handle,
                                    const open_inet_addr_t *address, uint32_t scope, uint32_t family,
                                    bool bgp_peer_family::*what, uint32_t *on) {
  return api_call(function, handle, {address_in(address), scope, family, on}, [&](switch_model &model) {
    const bgp_peer *peer;
    if (!inet_family_valid(family)) return OPEN_E_PARAM;
    open_error_t rc = find_peer(model, {*address, scope}, &peer);
    if (rc == OPEN_E_NONE) *on = peer->families[bgp_family_index(family)].*what;
    return rc;
  });
}

/* Sets it by the line for on or off, which take the neighbor and the family. */
static open_error_t set_peer_family(const char *function, openapiClientHandle_t *handle,
                                    const open_inet_addr_t *address, uint32_t scope, uint32_t family,
                                    OPEN_BOOL_t on, const char *on_pattern, const char *off_pattern) {
  return api_call(function, handle, {address_in(address), scope, family, on}, [&](switch_model &model) {
    const bgp_peer *peer;
    bgp_peer_id id = {*address, scope};
    if (!inet_family_valid(family)) return OPEN_E_PARAM;
    open_error_t rc = find_peer(model, id, &peer);
    if (rc != OPEN_E_NONE) return rc;
    return commit(model, on == OPEN_FALSE ? off_pattern : on_pattern, {id, bgp_family_index(family)});
  });
}

open_error_t rpcclt_openapiBgpPeerActivateGet(openapiClientHandle_t *handle, const open_inet_addr_t *address,
                                              uint32_t scopeId, uint32_t family, OPEN_BOOL_t *active) {
  return get_peer_family(__func__, handle, address, scopeId, family, &bgp_peer_family::active, active);
}

open_error_t rpcclt_openapiBgpPeerActivateSet(openapiClientHandle_t *handle, const open_inet_addr_t *address,
                                              uint32_t scopeId, uint32_t family, OPEN_BOOL_t active) {
  return set_peer_family(__func__, handle, address, scopeId, family, active,
                         "bgp neighbor <neighbor> activate ipv4|ipv6",
                         "no bgp neighbor <neighbor> activate ipv4|ipv6");
}

open_error_t rpcclt_openapiBgpPeerNextHopSelfModeGet(openapiClientHandle_t *handle,
                                                     const open_inet_addr_t *address, uint32_t scopeId,
                                                     uint32_t family, uint32_t *mode) {
  return get_peer_family(__func__, handle, address, scopeId, family, &bgp_peer_family::next_hop_self, mode);
}

open_error_t rpcclt_openapiBgpPeerNextHopSelfModeSet(openapiClientHandle_t *handle,
                                                     const open_inet_addr_t *address, uint32_t scopeId,
                                                     uint32_t family, OPEN_BOOL_t mode) {
  return set_peer_family(__func__, handle, address, scopeId, family, mode,
                         "bgp neighbor <neighbor> next-hop-self ipv4|ipv6",
                         "no bgp neighbor <neighbor> next-hop-self ipv4|ipv6");
}

open_error_t rpcclt_openapiBgpPeerUpdateSourceGet(openapiClientHandle_t *handle,
                                                  const open_inet_addr_t *address, uint32_t scopeId,
                                                  uint32_t *ifNum) {
  return api_call(__func__, handle, {address_in(address), scopeId, ifNum}, [&](const switch_model &model) {
    const bgp_peer *peer;
    open_error_t rc = find_peer(model, {*address, scopeId}, &peer);
    if (rc == OPEN_E_NONE) *ifNum = peer->update_source;
    return rc;
  });
}

open_error_t rpcclt_openapiBgpPeerUpdateSourceSet(openapiClientHandle_t *handle,
                                                  const open_inet_addr_t *address, uint32_t scopeId,
                                                  uint32_t ifNum) {
  return api_call(__func__, handle, {address_in(address), scopeId, ifNum}, [&](switch_model &model) {
    const bgp_peer *peer;
    bgp_peer_id id = {*address, scopeId};
    open_error_t rc = find_peer(model, id, &peer);
    if (rc != OPEN_E_NONE) return rc;
    if (ifNum == 0) return commit(model, "no bgp neighbor <neighbor> update-source", {id});
    rc = interface_addressable_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    return commit(model, "bgp neighbor <neighbor> update-source <interface>", {id, ifNum});
  });
}

/* --- Redistribution ------------------------------------------------------------------------------------- */

/* A metric, as far as it is given; false when it is out of range. */
static bool take_metric(OPEN_BOOL_t set, OPEN_BOOL_t value_set, int64_t metric,
                        std::optional<uint32_t> *taken) {
  if (set == OPEN_FALSE || value_set == OPEN_FALSE) return true;
  *taken = static_cast<uint32_t>(metric);
  return metric >= 0 && metric <= UINT32_MAX;
}

open_error_t rpcclt_openapiBgpRedistributionSet(openapiClientHandle_t *handle, OPEN_BOOL_t add,
                                                open_buffdesc *source, OPEN_BOOL_t matchSet,
                                                uint32_t matchBits, OPEN_BOOL_t metricSet,
                                                OPEN_BOOL_t metricValueSet, int64_t metric,
                                                OPEN_BOOL_t routeMapSet, uint32_t family,
                                                open_buffdesc *routeMap) {
  call_arguments arguments = {add,       text_in(source),  matchSet,         matchBits,
                              metricSet, metricValueSet,   number64(metric), routeMapSet,
                              family,    text_in(routeMap)};
  return api_call(__func__, handle, arguments, [&](switch_model &model) {
    uint32_t place;
    if (!inet_family_valid(family)) return OPEN_E_PARAM;
    if (!bgp_source_by_name(text_of(*source), &place)) return OPEN_E_NOT_FOUND;
    if (add == OPEN_FALSE)
      return commit(model, "no bgp redistribute ipv4|ipv6 connected|static|ospf|rip",
                    {bgp_family_index(family), place});
    bgp_redistribution wanted;
    if (matchSet != OPEN_FALSE) wanted.match = matchBits;
    if (matchSet != OPEN_FALSE && matchBits == 0) return OPEN_E_PARAM;
    if (!take_metric(metricSet, metricValueSet, metric, &wanted.metric)) return OPEN_E_PARAM;
    if (routeMapSet != OPEN_FALSE) wanted.route_map = text_of(*routeMap);
    if (!bgp_redistribution_valid(place, wanted)) return OPEN_E_PARAM;
    return commit(model, "bgp redistribute ipv4|ipv6 connected|static|ospf|rip ...",
                  bgp_redistribution_arguments(model, family, place, wanted));
  });
}
