/* Platform functions of routing that record their arguments: see recorded_calls.h. */
#include "platform/api/openapi_routing.h"
#include "tests/unit/modules/recorded_calls.h"

static open_error_t record_mode(const char *function, openapiClientHandle_t *handle, uint32_t of,
                                uint32_t mode) {
  record_call(function, written(of, mode));
  return carry_out(function, handle, of, mode);
}

open_error_t rpcclt_openapiRtrAdminModeSet(openapiClientHandle_t *handle, uint32_t family, uint32_t mode) {
  return record_mode(__func__, handle, family, mode);
}

open_error_t rpcclt_openapiRtrIntfRtrAdminModeSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                  uint32_t mode) {
  return record_mode(__func__, handle, ifNum, mode);
}

static open_error_t record_vlan(const char *function, openapiClientHandle_t *handle, uint32_t vlanId) {
  record_call(function, written(vlanId));
  return carry_out(function, handle, vlanId);
}

open_error_t rpcclt_openapiRtrVlanIntfCreate(openapiClientHandle_t *handle, uint32_t vlanId) {
  return record_vlan(__func__, handle, vlanId);
}

open_error_t rpcclt_openapiRtrVlanIntfDelete(openapiClientHandle_t *handle, uint32_t vlanId) {
  return record_vlan(__func__, handle, vlanId);
}

static open_error_t record_address(const char *function, openapiClientHandle_t *handle, uint32_t family,
                                   uint32_t ifNum, uint32_t method, const open_inet_pfx_t *prefix,
                                   uint32_t extArg) {
  record_call(function, written(family, ifNum, method, &prefix->ipAddr, prefix->pfxLen, extArg));
  return carry_out(function, handle, family, ifNum, method, prefix, extArg);
}

open_error_t rpcclt_openapiRtrIntfIpAddrAdd(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                            uint32_t method, const open_inet_pfx_t *prefix, uint32_t extArg) {
  return record_address(__func__, handle, family, ifNum, method, prefix, extArg);
}

open_error_t rpcclt_openapiRtrIntfIpAddrDel(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                            uint32_t method, const open_inet_pfx_t *prefix, uint32_t extArg) {
  return record_address(__func__, handle, family, ifNum, method, prefix, extArg);
}
