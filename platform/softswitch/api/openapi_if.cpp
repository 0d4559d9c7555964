/* Interfaces; the contracts are in platform/api/openapi_if.h. Setters come down to a line of the
 * configuration language, which is what the journal keeps. */
#include "platform/api/openapi_if.h"

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/model/interface_settings.h"

using namespace softswitch;

/* --- The shape of most functions ------------------------------------------------------------------------ */

/* Reads a number of an interface that exists. */
static open_error_t read_number(const char *function, openapiClientHandle_t *handle, uint32_t ifNum,
                                uint32_t *number, uint32_t (*read)(const switch_model &, uint32_t)) {
  return api_call(function, handle, {ifNum, number}, [&](switch_model &model) {
    open_error_t rc = interface_check(model, ifNum);
    if (rc == OPEN_E_NONE) *number = read(model, ifNum);
    return rc;
  });
}

/* Reads a text of an interface that exists. */
static open_error_t read_text(const char *function, openapiClientHandle_t *handle, uint32_t ifNum,
                              open_buffdesc *text, std::string (*read)(const switch_model &, uint32_t)) {
  return api_call(function, handle, {ifNum, text_out(text)}, [&](switch_model &model) {
    open_error_t rc = interface_check(model, ifNum);
    return rc == OPEN_E_NONE ? fill_text(text, read(model, ifNum)) : rc;
  });
}

/* Sets a number by a line that ends with it. One that the line cannot hold is refused when it is parsed. */
static open_error_t set_number(const char *function, openapiClientHandle_t *handle, uint32_t ifNum,
                               uint32_t number, std::string_view pattern) {
  return api_call(function, handle, {ifNum, number}, [&](switch_model &model) {
    open_error_t rc = interface_check(model, ifNum);
    return rc == OPEN_E_NONE ? commit(model, pattern, {ifNum, number}) : rc;
  });
}

/* Sets an OPEN_CONTROL_t by a line for either state. */
static open_error_t set_state(const char *function, openapiClientHandle_t *handle, uint32_t ifNum,
                              uint32_t state, std::string_view disabled, std::string_view enabled) {
  return api_call(function, handle, {ifNum, state}, [&](switch_model &model) {
    open_error_t rc = interface_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    if (state > OPEN_ENABLE) return OPEN_E_PARAM;
    return commit(model, state == OPEN_ENABLE ? enabled : disabled, {ifNum});
  });
}

/* --- Numbers and walks ---------------------------------------------------------------------------------- */

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

open_error_t openapiIfNextChangedGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *nextIfNum,
                                     uint32_t *deletePending) {
  return api_call(__func__, handle, {ifNum, nextIfNum, deletePending}, [&](switch_model &model) {
    return interface_next_changed(model, ifNum, nextIfNum, deletePending);
  });
}

open_error_t rpcclt_openapiIntfExistCheck(openapiClientHandle_t *handle, uint32_t ifNum) {
  return api_call(__func__, handle, {ifNum},
                  [&](switch_model &model) { return interface_check(model, ifNum); });
}

open_error_t rpcclt_openapiDot1LoopbackIdMaxGet(openapiClientHandle_t *handle, uint32_t *max) {
  return api_call(__func__, handle, {max}, [&](switch_model &) {
    *max = loopback_last - loopback_first;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiLoopbackIfNumGet(openapiClientHandle_t *handle, uint32_t loopbackId,
                                            uint32_t *ifNum) {
  return api_call(__func__, handle, {loopbackId, ifNum}, [&](switch_model &model) {
    if (loopbackId > loopback_last - loopback_first) return OPEN_E_PARAM;
    open_error_t rc = interface_check(model, loopback_first + loopbackId);
    if (rc == OPEN_E_NONE) *ifNum = loopback_first + loopbackId;
    return rc;
  });
}

/* --- Names and addresses -------------------------------------------------------------------------------- */

open_error_t openapiIfNameGet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *name) {
  return read_text(__func__, handle, ifNum, name, interface_name);
}

open_error_t rpcclt_openapiIntfNameSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return api_call(__func__, handle, {size}, [&](switch_model &) {
    *size = interface_name_size;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiIfMacAddrGet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *mac) {
  return read_text(__func__, handle, ifNum, mac, interface_mac);
}

open_error_t rpcclt_openapiIfDescrSizeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *max) {
  return read_number(__func__, handle, ifNum, max,
                     [](const switch_model &, uint32_t) { return description_max; });
}

static std::string description(const switch_model &model, uint32_t ifNum) {
  return model.interfaces->at[ifNum].description;
}

open_error_t rpcclt_openapiIfDescrGet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *text) {
  open_error_t rc = read_text(__func__, handle, ifNum, text, description);
  if (rc == OPEN_E_NONE) text->size++; /* the terminator */
  return rc;
}

open_error_t rpcclt_openapiIfDescrSet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *text) {
  return api_call(__func__, handle, {ifNum, text_in(text)}, [&](switch_model &model) {
    open_error_t rc = interface_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    return commit(model, "interface <interface> description <text>", {ifNum, text_of(*text)});
  });
}

/* --- States --------------------------------------------------------------------------------------------- */

open_error_t openapiIfAdminStateGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *state) {
  return read_number(__func__, handle, ifNum, state, [](const switch_model &model, uint32_t number) {
    return uint32_t{model.interfaces->at[number].enabled};
  });
}

open_error_t rpcclt_openapiIfAdminStateSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t state) {
  return set_state(__func__, handle, ifNum, state, "interface <interface> shutdown",
                   "no interface <interface> shutdown");
}

open_error_t rpcclt_openapiIfSoftShutdownStateGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                  uint32_t *state) {
  return read_number(__func__, handle, ifNum, state, [](const switch_model &model, uint32_t number) {
    return uint32_t{model.interfaces->at[number].soft_shutdown};
  });
}

open_error_t rpcclt_openapiIfSoftShutdownStateSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                  uint32_t state) {
  return set_state(__func__, handle, ifNum, state, "no interface <interface> soft-shutdown",
                   "interface <interface> soft-shutdown");
}

open_error_t openapiIfLinkStateGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *state) {
  return read_number(__func__, handle, ifNum, state, [](const switch_model &model, uint32_t number) {
    return uint32_t{interface_has_link(model, number) ? OPEN_LINK_UP : OPEN_LINK_DOWN};
  });
}

/* --- Speed ---------------------------------------------------------------------------------------------- */

open_error_t openapiIfSpeedGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *speed) {
  return read_number(__func__, handle, ifNum, speed, interface_speed);
}

open_error_t rpcclt_openapiIfSpeedSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t speed) {
  return api_call(__func__, handle, {ifNum, speed}, [&](switch_model &model) {
    open_error_t rc = interface_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    if (speed == OPEN_PORT_AUTO_NEG)
      return commit(model, "interface <interface> auto-negotiation on|off",
                    {ifNum, OPEN_PORT_AUTO_NEGOTIATE_ENABLE});
    return commit(model, "interface <interface> speed <speed>", {ifNum, speed});
  });
}

open_error_t openapiIfDuplexModeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *mode) {
  return read_number(__func__, handle, ifNum, mode, interface_duplex);
}

open_error_t openapiIfAutoNegGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *mode) {
  return read_number(__func__, handle, ifNum, mode, interface_auto_negotiation);
}

/* The words of the line stand in the order of OPEN_PORT_AUTO_NEG_t. */
open_error_t rpcclt_openapiIfAutoNegSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t mode) {
  return set_number(__func__, handle, ifNum, mode, "interface <interface> auto-negotiation on|off");
}

open_error_t rpcclt_openapiIfConnectorTypeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *type) {
  return read_number(__func__, handle, ifNum, type, interface_connector);
}

/* --- Frames --------------------------------------------------------------------------------------------- */

open_error_t openapiIfMtuSizeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *size) {
  return read_number(__func__, handle, ifNum, size, [](const switch_model &model, uint32_t number) {
    return uint32_t{model.interfaces->at[number].mtu};
  });
}

open_error_t rpcclt_openapiIfMtuSizeSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t size) {
  return set_number(__func__, handle, ifNum, size, "interface <interface> mtu <number>");
}
