/* BGP (RFC 4271): the switch's BGP speaker, the networks that it originates, its peers and what it
 * redistributes from other protocols.
 *
 * A peer is known by its address and scope: the number of the interface by which an IPv6 address is reached
 * (RFC 4007), 0 for an IPv4 address. A link-local address needs a scope; for other IPv6 addresses it may be
 * 0.
 *
 * Unless a function says otherwise: OPEN_E_PARAM for an address that is no host's, an IPv4 address with a
 * scope, a link-local address without one, or a family that is neither OPEN_AF_INET nor OPEN_AF_INET6;
 * OPEN_E_NOT_FOUND for no such peer. Every function that changes something answers OPEN_E_FAIL when the
 * change cannot be stored; nothing was changed then. Setting what is set already is no error. */
#ifndef OPENAPI_BGP_H
#define OPENAPI_BGP_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* --- The speaker ---------------------------------------------------------------------------------------- */

/* The hold time offered to all peers, in seconds: 0 (none) or 3..65535 (RFC 4271 section 4.2); 90 in factory
 * state.
 * OPEN_E_PARAM   another value */
open_error_t rpcclt_openapiBgpGlobalHoldTimeConfiguredGet(openapiClientHandle_t *handle, uint32_t *seconds);
open_error_t rpcclt_openapiBgpGlobalHoldTimeConfiguredSet(openapiClientHandle_t *handle, uint32_t seconds);

/* The time between keepalives to all peers, in seconds: 0 (none) to 65535; 30 in factory state. In force is
 * at most a third of the hold time agreed on with a peer (RFC 4271 section 4.4): the two can be set in any
 * order.
 * OPEN_E_PARAM   above 65535 */
open_error_t rpcclt_openapiBgpGlobalKeepAliveConfiguredGet(openapiClientHandle_t *handle, uint32_t *seconds);
open_error_t rpcclt_openapiBgpGlobalKeepAliveConfiguredSet(openapiClientHandle_t *handle, uint32_t seconds);

/* The number of the own autonomous system: 1..4294967295 (RFC 6793). 0 in factory state: the speaker does not
 * run.
 * OPEN_E_PARAM   0 */
open_error_t rpcclt_openapiBgpLocalASGet(openapiClientHandle_t *handle, uint32_t *asn);
open_error_t rpcclt_openapiBgpLocalASSet(openapiClientHandle_t *handle, uint32_t asn);

/* The BGP identifier, an IPv4 address in host byte order; 0 in factory state.
 * OPEN_E_PARAM   0 */
open_error_t rpcclt_openapiBgpLocalIdGet(openapiClientHandle_t *handle, uint32_t *routerId);
open_error_t rpcclt_openapiBgpLocalIdSet(openapiClientHandle_t *handle, uint32_t routerId);

/* The degree of preference given to routes from external peers, LOCAL_PREF (RFC 4271 section 5.1.5): any
 * number; 100 in factory state. */
open_error_t rpcclt_openapiBgpLocalPrefGet(openapiClientHandle_t *handle, uint32_t *preference);
open_error_t rpcclt_openapiBgpLocalPrefSet(openapiClientHandle_t *handle, uint32_t preference);

/* Whether changes of peers' states are logged; off in factory state. Any value but OPEN_FALSE is on. */
open_error_t rpcclt_openapiBgpLogNeighborChangesGet(openapiClientHandle_t *handle, OPEN_BOOL_t *on);
open_error_t rpcclt_openapiBgpLogNeighborChangesSet(openapiClientHandle_t *handle, OPEN_BOOL_t on);

/* --- Originated networks -------------------------------------------------------------------------------- */

/* Originates a network, or no longer.
 *   normalMode  OPEN_TRUE adds, or sets the route map of a network that is there; OPEN_FALSE deletes
 *   address     of the network; bits behind the prefix do not count
 *   pfxLen      0..32, or 0..128
 *   useRm       OPEN_TRUE: routes pass the route map named in `routeMap`, which need not exist. Not looked at
 *               for deleting, nor is the name
 *   routeMap    1..31 characters, no control characters
 * OPEN_E_PARAM   a length or name out of range, or an address that no network has: multicast, loopback,
 *                link-local
 * OPEN_E_NOT_FOUND  (delete) no such network
 * OPEN_E_FULL    there are as many as there may be */
open_error_t rpcclt_openapiBgpNetworkAddDelete(openapiClientHandle_t *handle, OPEN_BOOL_t normalMode,
                                               const open_inet_addr_t *address, uint32_t pfxLen,
                                               OPEN_BOOL_t useRm, open_buffdesc *routeMap);

/* --- Peers ---------------------------------------------------------------------------------------------- */

/* The autonomous system of a peer, 1..4294967295. Setting it makes the peer when it is not there.
 * OPEN_E_PARAM   also: 0
 * OPEN_E_NOT_FOUND  (get) no such peer; (set) the scope is no interface
 * OPEN_E_FULL    there are as many peers as there may be */
open_error_t rpcclt_openapiBgpPeerRemoteASGet(openapiClientHandle_t *handle, const open_inet_addr_t *address,
                                              uint32_t scopeId, uint32_t *asn);
open_error_t rpcclt_openapiBgpPeerRemoteASSet(openapiClientHandle_t *handle, const open_inet_addr_t *address,
                                              uint32_t scopeId, uint32_t asn);

/* Whether routes of a family are exchanged with a peer (RFC 4760). In factory state IPv4 routes are with IPv4
 * peers, and nothing else is. Any value but OPEN_FALSE is yes. */
open_error_t rpcclt_openapiBgpPeerActivateGet(openapiClientHandle_t *handle, const open_inet_addr_t *address,
                                              uint32_t scopeId, uint32_t family, OPEN_BOOL_t *active);
open_error_t rpcclt_openapiBgpPeerActivateSet(openapiClientHandle_t *handle, const open_inet_addr_t *address,
                                              uint32_t scopeId, uint32_t family, OPEN_BOOL_t active);

/* Whether the switch names itself as the next hop of the routes of a family that it tells a peer: 1 or 0, off
 * in factory state. Any value but 0 is on. */
open_error_t rpcclt_openapiBgpPeerNextHopSelfModeGet(openapiClientHandle_t *handle,
                                                     const open_inet_addr_t *address, uint32_t scopeId,
                                                     uint32_t family, uint32_t *mode);
open_error_t rpcclt_openapiBgpPeerNextHopSelfModeSet(openapiClientHandle_t *handle,
                                                     const open_inet_addr_t *address, uint32_t scopeId,
                                                     uint32_t family, OPEN_BOOL_t mode);

/* The interface whose address is the source of the session to a peer; 0, also in factory state: the one that
 * the route to the peer leads out of. Interfaces that can have addresses can be it; a LAG or VLAN routing
 * interface that is cannot be deleted.
 * OPEN_E_PARAM   also: an interface number outside every range
 * OPEN_E_NOT_FOUND  also: no such interface
 * OPEN_E_UNAVAIL the CPU interface */
open_error_t rpcclt_openapiBgpPeerUpdateSourceGet(openapiClientHandle_t *handle,
                                                  const open_inet_addr_t *address, uint32_t scopeId,
                                                  uint32_t *ifNum);
open_error_t rpcclt_openapiBgpPeerUpdateSourceSet(openapiClientHandle_t *handle,
                                                  const open_inet_addr_t *address, uint32_t scopeId,
                                                  uint32_t ifNum);

/* --- Redistribution ------------------------------------------------------------------------------------- */

/* OSPF routes that are redistributed; none of them named: all. */
enum {
  OPEN_OSPF_MATCH_INTERNAL = 1,
  OPEN_OSPF_MATCH_EXTERNAL_1 = 2,
  OPEN_OSPF_MATCH_EXTERNAL_2 = 4,
  OPEN_OSPF_MATCH_NSSA_EXTERNAL_1 = 8,
  OPEN_OSPF_MATCH_NSSA_EXTERNAL_2 = 16
};

/* Redistributes the routes of a source protocol to the peers, or no longer.
 *   add            OPEN_TRUE sets everything anew; OPEN_FALSE ends it and looks at source and family alone
 *   source         "connected", "static", "ospf" or "rip"
 *   matchSet       OPEN_TRUE: only the routes that `matchBits` (OPEN_OSPF_MATCH_...) names; "ospf" only
 *   metricSet, metricValueSet  both OPEN_TRUE: routes are told with `metric`, MULTI_EXIT_DISC,
 *                  0..4294967295
 *   routeMapSet    OPEN_TRUE: routes pass the route map `routeMap`, 1..31 characters, no control characters;
 *                  it need not exist
 *   family         of the routes
 * OPEN_E_PARAM   a value out of range, unknown bits or none, or bits for another source than "ospf"
 * OPEN_E_NOT_FOUND  unknown source; (end) it is not redistributed */
open_error_t rpcclt_openapiBgpRedistributionSet(openapiClientHandle_t *handle, OPEN_BOOL_t add,
                                                open_buffdesc *source, OPEN_BOOL_t matchSet,
                                                uint32_t matchBits, OPEN_BOOL_t metricSet,
                                                OPEN_BOOL_t metricValueSet, int64_t metric,
                                                OPEN_BOOL_t routeMapSet, uint32_t family,
                                                open_buffdesc *routeMap);

#ifdef __cplusplus
}
#endif
#endif
