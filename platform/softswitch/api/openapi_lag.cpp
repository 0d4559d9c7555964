/* Link aggregation groups; the contracts are in platform/api/openapi_lag.h. Setters come down to a line of
 * the configuration language, which is what the journal keeps. */
#include "platform/api/openapi_lag.h"

#include "platform/softswitch/api/call.h"

#include <algorithm>

using namespace softswitch;

/* Bytes of the longest name, terminator included. */
static constexpr uint32_t lag_name_size = sizeof "lag64";
static_assert(port_channel_max < 100);

/* --- Numbers -------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiLagPortChannelIdToIfNumZYL(openapiClientHandle_t *handle, uint32_t portChannelId,
                                                      uint32_t *ifNum) {
  return api_call(__func__, handle, {portChannelId, ifNum}, [&](switch_model &) {
    *ifNum = lag_of_port_channel(portChannelId);
    return *ifNum != 0 ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
  });
}

open_error_t rpcclt_openapiLagIfNumToPortChannelIdZYL(openapiClientHandle_t *handle, uint32_t ifNum,
                                                      uint32_t *portChannelId) {
  return api_call(__func__, handle, {ifNum, portChannelId}, [&](switch_model &) {
    *portChannelId = port_channel_of_lag(ifNum);
    return *portChannelId != 0 ? OPEN_E_NONE : interface_refusal(ifNum);
  });
}

/* --- LAGs ----------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiLagCreateZYL(openapiClientHandle_t *handle, uint32_t ifNum) {
  return api_call(__func__, handle, {ifNum}, [&](switch_model &model) {
    uint32_t id = port_channel_of_lag(ifNum);
    if (id == 0) return interface_refusal(ifNum);
    /* For the line an existing LAG is as wanted; who creates wants to hear of it. */
    if (interface_exists(model, ifNum)) return OPEN_E_EXISTS;
    return commit(model, "lag <port-channel>", {id});
  });
}

open_error_t rpcclt_openapiLagDeleteZYL(openapiClientHandle_t *handle, uint32_t ifNum) {
  return api_call(__func__, handle, {ifNum}, [&](switch_model &model) {
    open_error_t rc = lag_check(model, ifNum);
    return rc == OPEN_E_NONE ? commit(model, "no lag <port-channel>", {port_channel_of_lag(ifNum)}) : rc;
  });
}

open_error_t rpcclt_openapiLagNameMaxLengthGet(openapiClientHandle_t *handle, uint32_t *size) {
  return api_call(__func__, handle, {size}, [&](switch_model &) {
    *size = lag_name_size;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiLagNameGet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *name) {
  return api_call(__func__, handle, {ifNum, text_out(name)}, [&](switch_model &model) {
    open_error_t rc = lag_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    return fill_text(name, "lag" + std::to_string(port_channel_of_lag(ifNum)));
  });
}

/* --- Members -------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiLagMaxMemberCountGet(openapiClientHandle_t *handle, uint32_t *max) {
  return api_call(__func__, handle, {max}, [&](switch_model &) {
    /* As built in: members beyond a lowered limit stay, and who makes room for this many has room for all. */
    *max = limits().lag_members;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiLagMembersGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *count,
                                         uint32_t *ports) {
  return api_call(__func__, handle, {ifNum, count, output(ports)}, [&](switch_model &model) {
    open_error_t rc = lag_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    std::vector<uint32_t> members = lag_members(model, ifNum);
    if (members.size() > *count) return OPEN_E_PARAM;
    std::copy(members.begin(), members.end(), ports);
    *count = static_cast<uint32_t>(members.size());
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiLagPortAdd(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t port) {
  return api_call(__func__, handle, {ifNum, port}, [&](switch_model &model) {
    open_error_t rc = lag_and_port_check(model, ifNum, port);
    if (rc != OPEN_E_NONE) return rc;
    if (model.interfaces->at[port].lag == ifNum) return OPEN_E_EXISTS;
    return commit(model, "interface <port> lag <port-channel>", {port, port_channel_of_lag(ifNum)});
  });
}

open_error_t rpcclt_openapiLagPortDelete(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t port) {
  return api_call(__func__, handle, {ifNum, port}, [&](switch_model &model) {
    open_error_t rc = lag_and_port_check(model, ifNum, port);
    if (rc != OPEN_E_NONE) return rc;
    if (model.interfaces->at[port].lag != ifNum) return OPEN_E_NOT_FOUND;
    return commit(model, "no interface <port> lag", {port});
  });
}
