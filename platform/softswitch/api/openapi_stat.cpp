/* Statistics; the contracts are in platform/api/openapi_stat.h. */
#include "platform/api/openapi_stat.h"

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/services/clock.h"

using namespace softswitch;

open_error_t rpcclt_openapiStatHighLowGet(openapiClientHandle_t *handle, uint32_t counterId, uint32_t ifNum,
                                          uint32_t *low, uint32_t *high) {
  return api_call(__func__, handle, {counterId, ifNum, low, high}, [&](switch_model &model) {
    open_error_t rc = counter_check(model, ifNum, counterId);
    if (rc != OPEN_E_NONE) return rc;
    uint64_t value = counter_at(model, ifNum, counterId, monotonic_ms()).value;
    *low = static_cast<uint32_t>(value);
    *high = static_cast<uint32_t>(value >> 32);
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiStatReset(openapiClientHandle_t *handle, uint32_t counterId, uint32_t ifNum) {
  return api_call(__func__, handle, {counterId, ifNum}, [&](switch_model &model) {
    return counter_set(model, ifNum, counterId, 0, monotonic_ms());
  });
}

open_error_t rpcclt_openapiInterfaceStatsReset(openapiClientHandle_t *handle, uint32_t ifNum) {
  return api_call(__func__, handle, {ifNum},
                  [&](switch_model &model) { return counters_clear(model, ifNum, monotonic_ms()); });
}
