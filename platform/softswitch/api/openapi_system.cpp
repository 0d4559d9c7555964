/* The switch as a whole; the contracts are in platform/api/openapi_system.h. */
#include "platform/api/openapi_system.h"

#include "platform/softswitch/api/call.h"

using namespace softswitch;

/* The revision of the interface that this library has: 1.0.0.1. */
static constexpr open_revision_data_t api_revision = {1, 0, 0, 1};

/* All texts about the switch are members of its profile. */
static open_error_t profile_text(const char *function, openapiClientHandle_t *handle,
                                 std::string chassis_profile::*member, open_buffdesc *text) {
  return api_call(function, handle, {text_out(text)},
                  [&](switch_model &model) { return fill_text(text, (*model.profile).*member); });
}

open_error_t rpcclt_openapiNetworkOSVersionGet(openapiClientHandle_t *handle, open_buffdesc *text) {
  return profile_text(__func__, handle, &chassis_profile::os_version, text);
}

open_error_t rpcclt_openapiSwStorageGet(openapiClientHandle_t *handle, open_buffdesc *text) {
  return profile_text(__func__, handle, &chassis_profile::storage, text);
}

open_error_t rpcclt_openapiSwDevInfoSerialNumGet(openapiClientHandle_t *handle, open_buffdesc *text) {
  return profile_text(__func__, handle, &chassis_profile::serial, text);
}

open_error_t rpcclt_openapiBurnedInMacAddrGet(openapiClientHandle_t *handle, open_buffdesc *text) {
  return profile_text(__func__, handle, &chassis_profile::mac, text);
}

open_error_t rpcclt_openapiMachineModelNameGet(openapiClientHandle_t *handle, open_buffdesc *text) {
  return profile_text(__func__, handle, &chassis_profile::model, text);
}

open_error_t rpcclt_openapiSystemDescrGet(openapiClientHandle_t *handle, open_buffdesc *text) {
  return profile_text(__func__, handle, &chassis_profile::description, text);
}

open_error_t rpcclt_openapiApiVersionGet(openapiClientHandle_t *handle, open_revision_data_t *revision) {
  return api_call(__func__, handle, {output(revision)}, [&](switch_model &) {
    *revision = api_revision;
    return OPEN_E_NONE;
  });
}

open_error_t openapiSystemReadyStateGet(openapiClientHandle_t *handle, uint32_t *ready) {
  return api_call(__func__, handle, {ready}, [&](switch_model &model) {
    *ready = model.ready;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiOspfEqualCostRoutesMax(openapiClientHandle_t *handle, uint32_t *max) {
  return api_call(__func__, handle, {max}, [&](switch_model &model) {
    *max = model.limits.equal_cost_routes;
    return OPEN_E_NONE;
  });
}
