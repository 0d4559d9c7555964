/* The switch as a whole; the contracts are in platform/api/openapi_system.h. */
#include "platform/api/openapi_system.h"

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/model/inet_address.h"

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

/* --- Settings ------------------------------------------------------------------------------------------- */

/* Sets what a line says. */
static open_error_t set_by_line(const char *function, openapiClientHandle_t *handle, const char *line) {
  return api_call(function, handle, {}, [&](switch_model &model) { return commit(model, line, {}); });
}

static open_error_t set_text(const char *function, openapiClientHandle_t *handle, const char *pattern,
                             const open_buffdesc *text) {
  return api_call(function, handle, {text_in(text)},
                  [&](switch_model &model) { return commit(model, pattern, {text_of(*text)}); });
}

open_error_t rpcclt_openapiSystemHostnameSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return api_call(__func__, handle, {size}, [&](switch_model &) {
    *size = hostname_max + 1;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiSystemHostnameGet(openapiClientHandle_t *handle, open_buffdesc *name) {
  return api_call(__func__, handle, {text_out(name)},
                  [&](switch_model &model) { return fill_text(name, model.system->hostname); });
}

open_error_t rpcclt_openapiSystemHostnameSet(openapiClientHandle_t *handle, open_buffdesc *name) {
  return set_text(__func__, handle, "hostname <text>", name);
}

open_error_t rpcclt_openapiSystemPromptSet(openapiClientHandle_t *handle, open_buffdesc *prompt) {
  return set_text(__func__, handle, "prompt <text>", prompt);
}

open_error_t rpcclt_openapiSerialTimeoutGet(openapiClientHandle_t *handle, uint32_t *minutes) {
  return api_call(__func__, handle, {minutes}, [&](switch_model &model) {
    *minutes = model.system->serial_timeout;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiSerialTimeoutSet(openapiClientHandle_t *handle, uint32_t minutes) {
  return api_call(__func__, handle, {minutes},
                  [&](switch_model &model) { return commit(model, "serial timeout <number>", {minutes}); });
}

open_error_t rpcclt_openapiSerialTimeoutDefaultSet(openapiClientHandle_t *handle) {
  return set_by_line(__func__, handle, "no serial timeout");
}

open_error_t rpcclt_openapiTelnetServerAdminModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode) {
  return api_call(__func__, handle, {mode}, [&](switch_model &model) {
    *mode = model.system->telnet;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiTelnetServerAdminModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode) {
  return api_call(__func__, handle, {mode}, [&](switch_model &model) {
    if (mode > OPEN_ENABLE) return OPEN_E_PARAM;
    return commit(model, mode == OPEN_ENABLE ? "telnet server" : "no telnet server", {});
  });
}

open_error_t rpcclt_openapiServicePortMaskGet(openapiClientHandle_t *handle, open_inet_addr_t *mask) {
  return api_call(__func__, handle, {address_out(mask)}, [&](switch_model &model) {
    *mask = inet_ipv4(model.profile->service_port_mask);
    return OPEN_E_NONE;
  });
}

/* --- The network port ----------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiNetworkPortIPv4AddrGet(openapiClientHandle_t *handle, open_inet_addr_t *address,
                                                  open_inet_addr_t *mask) {
  return api_call(__func__, handle, {address_out(address), address_out(mask)}, [&](switch_model &model) {
    const open_inet_pfx_t &prefix = model.system->network_port.address;
    *address = inet_ipv4(prefix.ipAddr.addr.ipv4);
    *mask = inet_ipv4(ipv4_mask(prefix.pfxLen));
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiNetworkPortGatewayIPv4AddrGet(openapiClientHandle_t *handle,
                                                         open_inet_addr_t *gateway) {
  return api_call(__func__, handle, {address_out(gateway)}, [&](switch_model &model) {
    *gateway = inet_ipv4(model.system->network_port.gateway);
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiNetworkPortIPv4ParametersSet(openapiClientHandle_t *handle,
                                                        const open_inet_addr_t *address,
                                                        const open_inet_addr_t *mask,
                                                        const open_inet_addr_t *gateway) {
  call_arguments arguments = {address_in(address), address_in(mask), address_in(gateway)};
  return api_call(__func__, handle, arguments, [&](switch_model &model) {
    open_inet_pfx_t prefix = {*address, 0, 0};
    bool ipv4 =
        address->family == OPEN_AF_INET && mask->family == OPEN_AF_INET && gateway->family == OPEN_AF_INET;
    if (!ipv4 || !ipv4_mask_length(mask->addr.ipv4, &prefix.pfxLen)) return OPEN_E_PARAM;
    return commit(model, "network-port ip address <ip-prefix> gateway <ip>", {prefix, *gateway});
  });
}

open_error_t rpcclt_openapiNetworkPortIPv4ParametersDelete(openapiClientHandle_t *handle) {
  return set_by_line(__func__, handle, "no network-port ip address");
}

open_error_t rpcclt_openapiNetworkPortIPv4ProtocolModeGet(openapiClientHandle_t *handle,
                                                          OPEN_NETWORK_PROTOCOL_t *mode) {
  return api_call(__func__, handle, {mode}, [&](switch_model &model) {
    *mode = model.system->network_port.protocol;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiNetworkPortIPv4ProtocolModeSet(openapiClientHandle_t *handle,
                                                          OPEN_NETWORK_PROTOCOL_t mode) {
  return api_call(__func__, handle, {mode}, [&](switch_model &model) {
    if (mode == OPEN_NETWORK_PROTOCOL_NONE) return commit(model, "no network-port protocol", {});
    if (mode < OPEN_NETWORK_PROTOCOL_BOOTP || mode > OPEN_NETWORK_PROTOCOL_DHCP) return OPEN_E_PARAM;
    return commit(model, "network-port protocol bootp|dhcp", {mode - OPEN_NETWORK_PROTOCOL_BOOTP});
  });
}

/* --- Reloading ------------------------------------------------------------------------------------------ */

open_error_t rpcclt_openapiSystemReloadSet(openapiClientHandle_t *handle, uint32_t mode) {
  return api_call_unlocked(__func__, handle, {mode},
                           [&] { return request_reload(mode) ? OPEN_E_NONE : OPEN_E_PARAM; });
}

open_error_t rpcclt_openapiSystemUnsavedConfigStatusGet(openapiClientHandle_t *handle, OPEN_BOOL_t *unsaved) {
  return api_call_unlocked(__func__, handle, {unsaved}, [&] {
    *unsaved = configuration_unsaved() ? OPEN_TRUE : OPEN_FALSE;
    return OPEN_E_NONE;
  });
}
