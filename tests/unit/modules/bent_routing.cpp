/* Platform functions of routing with bent outputs: see bent_platform.h. */
#include "platform/api/openapi_routing.h"
#include "tests/unit/modules/bent_calls.h"

open_error_t rpcclt_openapiRtrAdminModeGet(openapiClientHandle_t *handle, uint32_t family, uint32_t *mode) {
  return call_library(__func__, mode, handle, family, mode);
}

open_error_t rpcclt_openapiRtrIntfNextGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                          uint32_t *nextIfNum) {
  return call_library(__func__, nextIfNum, handle, ifNum, nextIfNum);
}

open_error_t rpcclt_openapiRtrIntfTypeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *type) {
  return call_library(__func__, type, handle, ifNum, type);
}

open_error_t rpcclt_openapiRtrIntfNameGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                          open_buffdesc *name) {
  return read_from_library(__func__, handle, ifNum, name);
}

open_error_t rpcclt_openapiRtrIntfVlanIdGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *vlanId) {
  return call_library(__func__, vlanId, handle, ifNum, vlanId);
}

open_error_t rpcclt_openapiRtrVlanIntfNumGetZYL(openapiClientHandle_t *handle, uint32_t vlanId,
                                                uint32_t *ifNum) {
  return call_library(__func__, ifNum, handle, vlanId, ifNum);
}

open_error_t rpcclt_openapiRtrIntfIpAddrGet(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                            open_inet_pfx_t *prefix) {
  open_error_t rc = call_library(__func__, &prefix->pfxLen, handle, family, ifNum, prefix);
  uint32_t bent_family = prefix->ipAddr.family;
  bend("rpcclt_openapiRtrIntfIpAddrGet family", &bent_family);
  prefix->ipAddr.family = bent_family;
  return rc;
}

open_error_t rpcclt_openapiRtrIntfSecIpAddrGet(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                               open_inet_pfx_t *prefix, uint32_t *index) {
  return call_library(__func__, index, handle, family, ifNum, prefix, index);
}
