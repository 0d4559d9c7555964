/* Interfaces; the contracts are in platform/api/openapi_if.h. */
#include "platform/api/openapi_if.h"

#include "platform/softswitch/api/call.h"

using namespace softswitch;

open_error_t openapiMaxInterfaceCountGet(openapiClientHandle_t *handle, uint32_t *max) {
  return api_call(__func__, handle, {max}, [&](switch_model &) {
    *max = interface_last;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiCpuIntfGet(openapiClientHandle_t *handle, uint32_t *ifNum) {
  return api_call(__func__, handle, {ifNum}, [&](switch_model &) {
    *ifNum = cpu_interface;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiIfFirstGet(openapiClientHandle_t *handle, uint32_t type, uint32_t state,
                                      uint32_t *ifNum) {
  return api_call(__func__, handle, {type, state, ifNum},
                  [&](switch_model &model) { return interface_next(model, type, state, 0, ifNum); });
}

open_error_t rpcclt_openapiIfNextGet(openapiClientHandle_t *handle, uint32_t type, uint32_t state,
                                     uint32_t ifNum, uint32_t *nextIfNum) {
  return api_call(__func__, handle, {type, state, ifNum, nextIfNum},
                  [&](switch_model &model) { return interface_next(model, type, state, ifNum, nextIfNum); });
}
