/* Routing; the contracts are in platform/api/openapi_routing.h. Setters come down to a line of the
 * configuration language, which is what the journal keeps. */
#include "platform/api/openapi_routing.h"

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/model/interface_settings.h"

#include <algorithm>

using namespace softswitch;

/* Callers hand over prefixes as so many bytes. */
static_assert(sizeof(open_inet_pfx_t) == 28);

/* --- The switch as a router ----------------------------------------------------------------------------- */

open_error_t rpcclt_openapiRtrAdminModeGet(openapiClientHandle_t *handle, uint32_t family, uint32_t *mode) {
  return api_call(__func__, handle, {family, mode}, [&](switch_model &model) {
    if (!inet_family_valid(family)) return OPEN_E_PARAM;
    *mode = routing_enabled(model, family);
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiRtrAdminModeSet(openapiClientHandle_t *handle, uint32_t family, uint32_t mode) {
  return api_call(__func__, handle, {family, mode}, [&](switch_model &model) {
    if (!inet_family_valid(family) || mode > OPEN_ENABLE) return OPEN_E_PARAM;
    if (family == OPEN_AF_INET)
      return commit(model, mode == OPEN_ENABLE ? "ip routing" : "no ip routing", {});
    return commit(model, mode == OPEN_ENABLE ? "ipv6 routing" : "no ipv6 routing", {});
  });
}

/* --- Routing interfaces --------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiRtrIntfRtrAdminModeSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                  uint32_t mode) {
  return api_call(__func__, handle, {ifNum, mode}, [&](switch_model &model) {
    open_error_t rc = interface_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    if (mode > OPEN_ENABLE) return OPEN_E_PARAM;
    bool on = mode == OPEN_ENABLE;
    return commit(model, on ? "interface <interface> routing" : "no interface <interface> routing", {ifNum});
  });
}

open_error_t rpcclt_openapiRtrIntfNextGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                          uint32_t *nextIfNum) {
  return api_call(__func__, handle, {ifNum, nextIfNum},
                  [&](switch_model &model) { return interface_next_routing(model, ifNum, nextIfNum); });
}

open_error_t rpcclt_openapiRtrIntfTypeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *type) {
  return api_call(__func__, handle, {ifNum, type}, [&](switch_model &model) {
    open_error_t rc = interface_is_routing_check(model, ifNum);
    if (rc == OPEN_E_NONE) *type = interface_type(ifNum);
    return rc;
  });
}

open_error_t rpcclt_openapiRtrIntfNameGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                          open_buffdesc *name) {
  return api_call(__func__, handle, {ifNum, text_out(name)}, [&](switch_model &model) {
    open_error_t rc = interface_is_routing_check(model, ifNum);
    return rc == OPEN_E_NONE ? fill_text(name, interface_name(model, ifNum)) : rc;
  });
}

/* Whether there is an interface of a type, as a result. */
static open_error_t check_type(const switch_model &model, uint32_t ifNum, OPEN_INTF_TYPE_t type) {
  open_error_t rc = interface_check(model, ifNum);
  return rc == OPEN_E_NONE && interface_type(ifNum) != type ? OPEN_E_NOT_FOUND : rc;
}

open_error_t rpcclt_openapiRtrIntfVlanIdGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *vlanId) {
  return api_call(__func__, handle, {ifNum, vlanId}, [&](switch_model &model) {
    open_error_t rc = check_type(model, ifNum, OPEN_INTF_TYPE_VLAN_RTR);
    if (rc == OPEN_E_NONE) *vlanId = model.interfaces->at[ifNum].routed_vlan;
    return rc;
  });
}

open_error_t rpcclt_openapiRtrIntfLoopbackIdGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                uint32_t *loopbackId) {
  return api_call(__func__, handle, {ifNum, loopbackId}, [&](switch_model &model) {
    open_error_t rc = check_type(model, ifNum, OPEN_INTF_TYPE_LOOPBACK);
    if (rc == OPEN_E_NONE) *loopbackId = ifNum - loopback_first;
    return rc;
  });
}

open_error_t rpcclt_openapiRtrVlanIntfCreate(openapiClientHandle_t *handle, uint32_t vlanId) {
  return api_call(__func__, handle, {vlanId}, [&](switch_model &model) {
    open_error_t rc = vlan_check(model, vlanId);
    if (rc != OPEN_E_NONE) return rc;
    /* For the line one that exists is as wanted; who creates wants to hear of it. */
    if (interface_of_vlan(model, vlanId) != 0) return OPEN_E_EXISTS;
    return commit(model, "vlan <vlan> routing", {vlanId});
  });
}

open_error_t rpcclt_openapiRtrVlanIntfDelete(openapiClientHandle_t *handle, uint32_t vlanId) {
  return api_call(__func__, handle, {vlanId}, [&](switch_model &model) {
    open_error_t rc = vlan_check(model, vlanId);
    return rc == OPEN_E_NONE ? commit(model, "no vlan <vlan> routing", {vlanId}) : rc;
  });
}

open_error_t rpcclt_openapiRtrVlanIntfNumGetZYL(openapiClientHandle_t *handle, uint32_t vlanId,
                                                uint32_t *ifNum) {
  return api_call(__func__, handle, {vlanId, ifNum}, [&](switch_model &model) {
    open_error_t rc = vlan_check(model, vlanId);
    if (rc != OPEN_E_NONE) return rc;
    uint32_t number = interface_of_vlan(model, vlanId);
    if (number == 0) return OPEN_E_NOT_FOUND;
    *ifNum = number;
    return OPEN_E_NONE;
  });
}

/* --- Changing addresses --------------------------------------------------------------------------------- */

/* What an address can be, with its lines. */
struct address_kind {
  uint32_t family;
  uint32_t method;
  std::string_view add;
  std::string_view remove;
  /* Whether there is what `remove` takes away; nullptr when that says so itself. */
  bool (*present)(const interface_addresses &, const open_inet_pfx_t &);
  open_error_t absent; /* the answer when there is not */
};

static bool is_primary(const interface_addresses &addresses, const open_inet_pfx_t &prefix) {
  return inet_same_prefix(addresses.primary, prefix);
}

static bool uses_dhcp(const interface_addresses &addresses, const open_inet_pfx_t &) {
  return addresses.dhcp;
}

static bool uses_autoconfiguration(const interface_addresses &addresses, const open_inet_pfx_t &) {
  return addresses.autoconfiguration;
}

static constexpr address_kind address_kinds[] = {
    {OPEN_AF_INET, OPEN_INTF_IP_ADDR_PRIMARY, "interface <interface> ip address <ip-prefix>",
     "no interface <interface> ip address", is_primary, OPEN_E_NOT_FOUND},
    {OPEN_AF_INET, OPEN_INTF_IP_ADDR_SECONDARY, "interface <interface> ip secondary-address <ip-prefix>",
     "no interface <interface> ip secondary-address <ip-prefix>", nullptr, OPEN_E_NONE},
    {OPEN_AF_INET, OPEN_INTF_IP_ADDR_AUTO, "interface <interface> ip address dhcp",
     "no interface <interface> ip address dhcp", uses_dhcp, OPEN_E_ERROR},
    {OPEN_AF_INET6, OPEN_INTF_IP_ADDR_PRIMARY, "interface <interface> ipv6 address <ipv6-prefix>",
     "no interface <interface> ipv6 address <ipv6-prefix>", nullptr, OPEN_E_NONE},
    {OPEN_AF_INET6, OPEN_INTF_IP_ADDR_AUTO, "interface <interface> ipv6 address auto",
     "no interface <interface> ipv6 address auto", uses_autoconfiguration, OPEN_E_ERROR},
};

/* An address as a caller gives it. */
struct address_request {
  uint32_t family;
  uint32_t ifNum;
  uint32_t method;
  open_inet_pfx_t prefix;
  uint32_t extArg;
};

/* The prefix of a request becomes that of the address which is meant. False when that is no host's. */
static bool complete_prefix(const switch_model &model, address_request *request) {
  open_inet_pfx_t *prefix = &request->prefix;
  if (prefix->ipAddr.family != request->family) return false;
  if (request->family == OPEN_AF_INET6 && request->extArg == OPEN_ENABLE) {
    mac_address mac;
    if (prefix->pfxLen > ipv6_bits / 2 || !mac_read(interface_mac(model, request->ifNum), &mac)) return false;
    inet_set_interface_id(&prefix->ipAddr, mac);
  }
  return inet_is_host(*prefix);
}

/* Checks a request and makes it complete; finds its kind. */
static open_error_t check_request(const switch_model &model, address_request *request,
                                  const address_kind **kind) {
  *kind = std::find_if(std::begin(address_kinds), std::end(address_kinds), [&](const address_kind &row) {
    return row.family == request->family && row.method == request->method;
  });
  if (*kind == std::end(address_kinds) || request->extArg > OPEN_ENABLE) return OPEN_E_PARAM;
  open_error_t rc = addresses_check(model, request->ifNum);
  if (rc != OPEN_E_NONE || request->method == OPEN_INTF_IP_ADDR_AUTO) return rc;
  return complete_prefix(model, request) ? OPEN_E_NONE : OPEN_E_PARAM;
}

static std::string describe_prefix(const void *prefix) {
  return inet_prefix_text(*static_cast<const open_inet_pfx_t *>(prefix));
}

/* Makes a change by a request whose prefix is not filled in. */
static open_error_t change_address(const char *function, openapiClientHandle_t *handle,
                                   address_request request, const open_inet_pfx_t *prefix,
                                   open_error_t (*change)(switch_model &, const address_kind &,
                                                          const address_request &)) {
  const call_arguments arguments = {request.family, request.ifNum, request.method,
                                    input(prefix, describe_prefix), request.extArg};
  return api_call(function, handle, arguments, [&](switch_model &model) {
    const address_kind *kind;
    request.prefix = *prefix;
    open_error_t rc = check_request(model, &request, &kind);
    return rc == OPEN_E_NONE ? change(model, *kind, request) : rc;
  });
}

static open_error_t add_address(switch_model &model, const address_kind &kind,
                                const address_request &request) {
  return commit(model, kind.add, {request.ifNum, request.prefix});
}

open_error_t rpcclt_openapiRtrIntfIpAddrAdd(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                            uint32_t method, const open_inet_pfx_t *prefix, uint32_t extArg) {
  return change_address(__func__, handle, {family, ifNum, method, {}, extArg}, prefix, add_address);
}

static open_error_t remove_address(switch_model &model, const address_kind &kind,
                                   const address_request &request) {
  const interface_addresses &addresses = addresses_configured(model, request.ifNum);
  if (kind.present && !kind.present(addresses, request.prefix)) return kind.absent;
  return commit(model, kind.remove, {request.ifNum, request.prefix});
}

open_error_t rpcclt_openapiRtrIntfIpAddrDel(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                            uint32_t method, const open_inet_pfx_t *prefix, uint32_t extArg) {
  return change_address(__func__, handle, {family, ifNum, method, {}, extArg}, prefix, remove_address);
}

/* --- Reading addresses ---------------------------------------------------------------------------------- */

static open_error_t get_primary(const switch_model &model, uint32_t interface, open_inet_pfx_t *prefix) {
  open_inet_pfx_t primary = addresses_of(model, interface).primary;
  if (primary.ipAddr.family == OPEN_AF_NONE) return OPEN_E_NOT_FOUND;
  *prefix = primary;
  return OPEN_E_NONE;
}

static open_error_t get_next_ipv6(const switch_model &model, uint32_t interface, open_inet_pfx_t *prefix) {
  return address_next_ipv6(model, interface, prefix->ipAddr, prefix) ? OPEN_E_NONE : OPEN_E_FAIL;
}

open_error_t rpcclt_openapiRtrIntfIpAddrGet(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                            open_inet_pfx_t *prefix) {
  return api_call(__func__, handle, {family, ifNum, output(prefix)}, [&](switch_model &model) {
    if (!inet_family_valid(family)) return OPEN_E_PARAM;
    open_error_t rc = interface_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    return family == OPEN_AF_INET ? get_primary(model, ifNum, prefix) : get_next_ipv6(model, ifNum, prefix);
  });
}

open_error_t rpcclt_openapiRtrIntfSecIpAddrGet(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                               open_inet_pfx_t *prefix, uint32_t *index) {
  return api_call(__func__, handle, {family, ifNum, output(prefix), index}, [&](switch_model &model) {
    if (family != OPEN_AF_INET) return OPEN_E_PARAM;
    open_error_t rc = interface_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    const auto &secondary = addresses_configured(model, ifNum).secondary;
    if (*index >= secondary.size()) return OPEN_E_FAIL;
    *prefix = secondary[*index];
    ++*index;
    return OPEN_E_NONE;
  });
}
