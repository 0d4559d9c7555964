/* Platform functions of BGP that record their arguments: see recorded_calls.h. Those that read record what
 * they read of, and their outputs can be bent as well (bent_platform.h). */
#include "platform/api/openapi_bgp.h"
#include "tests/unit/modules/bent_calls.h"
#include "tests/unit/modules/recorded_calls.h"

/* --- The speaker ----------------------------------------------------------------------------------------
 */

static open_error_t record_number(const char *function, openapiClientHandle_t *handle, uint32_t value) {
  record_call(function, written(value));
  return carry_out(function, handle, value);
}

open_error_t rpcclt_openapiBgpGlobalHoldTimeConfiguredSet(openapiClientHandle_t *handle, uint32_t seconds) {
  return record_number(__func__, handle, seconds);
}

open_error_t rpcclt_openapiBgpGlobalKeepAliveConfiguredSet(openapiClientHandle_t *handle, uint32_t seconds) {
  return record_number(__func__, handle, seconds);
}

open_error_t rpcclt_openapiBgpLocalASSet(openapiClientHandle_t *handle, uint32_t asn) {
  return record_number(__func__, handle, asn);
}

open_error_t rpcclt_openapiBgpLocalIdSet(openapiClientHandle_t *handle, uint32_t routerId) {
  return record_number(__func__, handle, routerId);
}

open_error_t rpcclt_openapiBgpLocalPrefSet(openapiClientHandle_t *handle, uint32_t preference) {
  return record_number(__func__, handle, preference);
}

open_error_t rpcclt_openapiBgpLogNeighborChangesSet(openapiClientHandle_t *handle, OPEN_BOOL_t on) {
  return record_number(__func__, handle, on);
}

open_error_t rpcclt_openapiBgpGlobalHoldTimeConfiguredGet(openapiClientHandle_t *handle, uint32_t *seconds) {
  return call_library(__func__, seconds, handle, seconds);
}

open_error_t rpcclt_openapiBgpGlobalKeepAliveConfiguredGet(openapiClientHandle_t *handle, uint32_t *seconds) {
  return call_library(__func__, seconds, handle, seconds);
}

open_error_t rpcclt_openapiBgpLocalASGet(openapiClientHandle_t *handle, uint32_t *asn) {
  return call_library(__func__, asn, handle, asn);
}

open_error_t rpcclt_openapiBgpLocalIdGet(openapiClientHandle_t *handle, uint32_t *routerId) {
  return call_library(__func__, routerId, handle, routerId);
}

open_error_t rpcclt_openapiBgpLocalPrefGet(openapiClientHandle_t *handle, uint32_t *preference) {
  return call_library(__func__, preference, handle, preference);
}

open_error_t rpcclt_openapiBgpLogNeighborChangesGet(openapiClientHandle_t *handle, OPEN_BOOL_t *on) {
  return call_library(__func__, on, handle, on);
}

/* --- Networks and redistribution ------------------------------------------------------------------------
 */

open_error_t rpcclt_openapiBgpNetworkAddDelete(openapiClientHandle_t *handle, OPEN_BOOL_t normalMode,
                                               const open_inet_addr_t *address, uint32_t pfxLen,
                                               OPEN_BOOL_t useRm, open_buffdesc *routeMap) {
  record_call(__func__, written(normalMode, address, pfxLen, useRm, routeMap));
  return carry_out(__func__, handle, normalMode, address, pfxLen, useRm, routeMap);
}

open_error_t rpcclt_openapiBgpRedistributionSet(openapiClientHandle_t *handle, OPEN_BOOL_t add,
                                                open_buffdesc *source, OPEN_BOOL_t matchSet,
                                                uint32_t matchBits, OPEN_BOOL_t metricSet,
                                                OPEN_BOOL_t metricValueSet, int64_t metric,
                                                OPEN_BOOL_t routeMapSet, uint32_t family,
                                                open_buffdesc *routeMap) {
  record_call(__func__, written(add, source, matchSet, matchBits, metricSet, metricValueSet) + " " +
                            std::to_string(metric) + " " + written(routeMapSet, family, routeMap));
  return carry_out(__func__, handle, add, source, matchSet, matchBits, metricSet, metricValueSet, metric,
                   routeMapSet, family, routeMap);
}

/* --- Peers ----------------------------------------------------------------------------------------------
 */

static open_error_t write_peer(const char *function, openapiClientHandle_t *handle,
                               const open_inet_addr_t *address, uint32_t scopeId, uint32_t value) {
  record_call(function, written(address, scopeId, value));
  return carry_out(function, handle, address, scopeId, value);
}

static open_error_t read_peer(const char *function, openapiClientHandle_t *handle,
                              const open_inet_addr_t *address, uint32_t scopeId, uint32_t *value) {
  record_call(function, written(address, scopeId));
  return call_library(function, value, handle, address, scopeId, value);
}

/* What a peer has for each family. */
static open_error_t write_family(const char *function, openapiClientHandle_t *handle,
                                 const open_inet_addr_t *address, uint32_t scopeId, uint32_t family,
                                 uint32_t value) {
  record_call(function, written(address, scopeId, family, value));
  return carry_out(function, handle, address, scopeId, family, value);
}

static open_error_t read_family(const char *function, openapiClientHandle_t *handle,
                                const open_inet_addr_t *address, uint32_t scopeId, uint32_t family,
                                uint32_t *value) {
  record_call(function, written(address, scopeId, family));
  return call_library(function, value, handle, address, scopeId, family, value);
}

open_error_t rpcclt_openapiBgpPeerRemoteASGet(openapiClientHandle_t *handle, const open_inet_addr_t *address,
                                              uint32_t scopeId, uint32_t *asn) {
  return read_peer(__func__, handle, address, scopeId, asn);
}

open_error_t rpcclt_openapiBgpPeerRemoteASSet(openapiClientHandle_t *handle, const open_inet_addr_t *address,
                                              uint32_t scopeId, uint32_t asn) {
  return write_peer(__func__, handle, address, scopeId, asn);
}

open_error_t rpcclt_openapiBgpPeerActivateGet(openapiClientHandle_t *handle, const open_inet_addr_t *address,
                                              uint32_t scopeId, uint32_t family, OPEN_BOOL_t *active) {
  return read_family(__func__, handle, address, scopeId, family, active);
}

open_error_t rpcclt_openapiBgpPeerActivateSet(openapiClientHandle_t *handle, const open_inet_addr_t *address,
                                              uint32_t scopeId, uint32_t family, OPEN_BOOL_t active) {
  return write_family(__func__, handle, address, scopeId, family, active);
}

open_error_t rpcclt_openapiBgpPeerNextHopSelfModeGet(openapiClientHandle_t *handle,
                                                     const open_inet_addr_t *address, uint32_t scopeId,
                                                     uint32_t family, uint32_t *mode) {
  return read_family(__func__, handle, address, scopeId, family, mode);
}

open_error_t rpcclt_openapiBgpPeerNextHopSelfModeSet(openapiClientHandle_t *handle,
                                                     const open_inet_addr_t *address, uint32_t scopeId,
                                                     uint32_t family, OPEN_BOOL_t mode) {
  return write_family(__func__, handle, address, scopeId, family, mode);
}

open_error_t rpcclt_openapiBgpPeerUpdateSourceGet(openapiClientHandle_t *handle,
                                                  const open_inet_addr_t *address, uint32_t scopeId,
                                                  uint32_t *ifNum) {
  return read_peer(__func__, handle, address, scopeId, ifNum);
}

open_error_t rpcclt_openapiBgpPeerUpdateSourceSet(openapiClientHandle_t *handle,
                                                  const open_inet_addr_t *address, uint32_t scopeId,
                                                  uint32_t ifNum) {
  return write_peer(__func__, handle, address, scopeId, ifNum);
}
