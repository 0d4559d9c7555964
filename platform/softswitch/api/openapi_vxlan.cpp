/* VXLAN; the contracts are in platform/api/openapi_vxlan.h. Setters come down to a line of the configuration
 * language. */
#include "platform/api/openapi_vxlan.h"

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/model/inet_address.h"

using namespace softswitch;

static constexpr uint32_t only_instance = 1;

static open_error_t instance_check(uint32_t instance) {
  return instance == only_instance ? OPEN_E_NONE : OPEN_E_PARAM;
}

static open_error_t tunnel_type_check(uint32_t type) {
  return type == OPEN_L2OL3_TUNNEL_VXLAN ? OPEN_E_NONE : OPEN_E_PARAM;
}

/* --- Modes ---------------------------------------------------------------------------------------------- */

static open_error_t get_mode(const switch_model &model, uint32_t type, vxlan_mode asked, uint32_t *mode) {
  open_error_t rc = tunnel_type_check(type);
  if (rc == OPEN_E_NONE) *mode = model.vxlan->mode == asked;
  return rc;
}

open_error_t rpcclt_openapiL2oL3SwitchTunnelModeGet(openapiClientHandle_t *handle, uint32_t tunnelType,
                                                    uint32_t *mode) {
  return api_call(__func__, handle, {tunnelType, mode}, [&](switch_model &model) {
    return get_mode(model, tunnelType, vxlan_mode::unicast, mode);
  });
}

open_error_t rpcclt_openapiL2oL3SwitchTunnelMultiModeGet(openapiClientHandle_t *handle, uint32_t tunnelType,
                                                         uint32_t *mode) {
  return api_call(__func__, handle, {tunnelType, mode}, [&](switch_model &model) {
    return get_mode(model, tunnelType, vxlan_mode::multicast, mode);
  });
}

/* Sets or clears the flag of one mode. `rest` is what clearing a flag that is not set answers. */
static open_error_t set_mode(switch_model &model, uint32_t type, vxlan_mode asked, uint32_t flag,
                             open_error_t rest) {
  open_error_t rc = tunnel_type_check(type);
  if (rc != OPEN_E_NONE) return rc;
  if (flag > OPEN_ENABLE) return OPEN_E_PARAM;
  if (flag == OPEN_ENABLE)
    return commit(model, "vxlan mode unicast|multicast", {asked == vxlan_mode::unicast ? 0u : 1u});
  return model.vxlan->mode == asked ? commit(model, "no vxlan mode", {}) : rest;
}

/* Callers turn both modes off by clearing unicast and, only when that is refused, multicast. */
open_error_t rpcclt_openapiL2oL3SwitchTunnelModeSet(openapiClientHandle_t *handle, uint32_t tunnelType,
                                                    uint32_t mode) {
  return api_call(__func__, handle, {tunnelType, mode}, [&](switch_model &model) {
    return set_mode(model, tunnelType, vxlan_mode::unicast, mode, OPEN_E_FAIL);
  });
}

open_error_t rpcclt_openapiL2oL3SwitchTunnelMultiModeSet(openapiClientHandle_t *handle, uint32_t tunnelType,
                                                         uint32_t mode) {
  return api_call(__func__, handle, {tunnelType, mode}, [&](switch_model &model) {
    return set_mode(model, tunnelType, vxlan_mode::multicast, mode, OPEN_E_NONE);
  });
}

/* --- UDP port ------------------------------------------------------------------------------------------- */

static open_error_t get_udp_port(const switch_model &model, uint32_t *port) {
  *port = model.vxlan->udp_port;
  return OPEN_E_NONE;
}

static open_error_t set_udp_port(switch_model &model, uint32_t port) {
  return commit(model, "vxlan udp-port <number>", {port});
}

open_error_t rpcclt_openapiL2oL3SwitchVxlanUdpDestPortGet(openapiClientHandle_t *handle, uint32_t *port) {
  return api_call(__func__, handle, {port}, [&](switch_model &model) { return get_udp_port(model, port); });
}

open_error_t rpcclt_openapiL2oL3SwitchVxlanUdpDestPortSet(openapiClientHandle_t *handle, uint32_t port) {
  return api_call(__func__, handle, {port}, [&](switch_model &model) { return set_udp_port(model, port); });
}

open_error_t rpcclt_openapiL2oL3SwitchVxlanUdpDstPortGetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                            uint32_t *port) {
  return api_call(__func__, handle, {vxlanId, port}, [&](switch_model &model) {
    open_error_t rc = instance_check(vxlanId);
    return rc == OPEN_E_NONE ? get_udp_port(model, port) : rc;
  });
}

open_error_t rpcclt_openapiL2oL3SwitchVxlanUdpDstPortSetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                            uint32_t port) {
  return api_call(__func__, handle, {vxlanId, port}, [&](switch_model &model) {
    open_error_t rc = instance_check(vxlanId);
    return rc == OPEN_E_NONE ? set_udp_port(model, port) : rc;
  });
}

/* --- Source interface ----------------------------------------------------------------------------------- */

static open_error_t get_source(const switch_model &model, uint32_t *interface) {
  *interface = model.vxlan->source_interface;
  return OPEN_E_NONE;
}

static open_error_t set_source(switch_model &model, uint32_t interface) {
  if (interface == 0) return commit(model, "no vxlan source-interface", {});
  open_error_t rc = interface_addressable_check(model, interface);
  return rc == OPEN_E_NONE ? commit(model, "vxlan source-interface <interface>", {interface}) : rc;
}

open_error_t rpcclt_openapiL2oL3VxlanSourcePortGet(openapiClientHandle_t *handle, uint32_t *ifNum) {
  return api_call(__func__, handle, {ifNum}, [&](switch_model &model) { return get_source(model, ifNum); });
}

open_error_t rpcclt_openapiL2oL3VxlanSourcePortSet(openapiClientHandle_t *handle, uint32_t ifNum) {
  return api_call(__func__, handle, {ifNum}, [&](switch_model &model) { return set_source(model, ifNum); });
}

open_error_t rpcclt_openapiL2oL3VxlanSourcePortGetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                      uint32_t *ifNum) {
  return api_call(__func__, handle, {vxlanId, ifNum}, [&](switch_model &model) {
    open_error_t rc = instance_check(vxlanId);
    return rc == OPEN_E_NONE ? get_source(model, ifNum) : rc;
  });
}

open_error_t rpcclt_openapiL2oL3VxlanSourcePortSetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                      uint32_t ifNum) {
  return api_call(__func__, handle, {vxlanId, ifNum}, [&](switch_model &model) {
    open_error_t rc = instance_check(vxlanId);
    return rc == OPEN_E_NONE ? set_source(model, ifNum) : rc;
  });
}

/* --- Making and deleting tenants ------------------------------------------------------------------------ */

/* What the trace shows of a tenant's record. */
static std::string describe_config(const void *at) {
  const auto *config = static_cast<const open_l2oL3TenantConfig_t *>(at);
  return "type " + std::to_string(config->tunnelType) + " vlan " + std::to_string(config->vlanId);
}

/* Whether a record is one to make a tenant with. */
static open_error_t config_check(const open_l2oL3TenantConfig_t &config) {
  if (config.vlanId != 0) return OPEN_E_PARAM;
  for (uint32_t reserved : config.reserved) {
    if (reserved != 0) return OPEN_E_PARAM;
  }
  return tunnel_type_check(config.tunnelType);
}

open_error_t rpcclt_openapiL2oL3TenantCreate(openapiClientHandle_t *handle, uint32_t vxlanId,
                                             uint32_t tenantId, const open_l2oL3TenantConfig_t *config) {
  call_arguments arguments = {vxlanId, tenantId, input(config, describe_config)};
  return api_call(__func__, handle, arguments, [&](switch_model &model) {
    open_error_t rc = instance_check(vxlanId);
    if (rc == OPEN_E_NONE) rc = config_check(*config);
    if (rc != OPEN_E_NONE) return rc;
    /* For the line an existing tenant is as wanted; who creates wants to hear of it. */
    if (vxlan_tenant_find(model, tenantId)) return OPEN_E_EXISTS;
    return commit(model, "vxlan tenant <number>", {tenantId});
  });
}

static open_error_t delete_tenant(switch_model &model, uint32_t tenant) {
  return commit(model, "no vxlan tenant <number>", {tenant});
}

open_error_t rpcclt_openapiL2oL3TenantDelete(openapiClientHandle_t *handle, uint32_t tenantId) {
  return api_call(__func__, handle, {tenantId},
                  [&](switch_model &model) { return delete_tenant(model, tenantId); });
}

/* --- Binding tenants to VLANs --------------------------------------------------------------------------- */

static bool is_bound(const switch_model &model, uint32_t tenant, uint32_t vlan) {
  return vxlan_tenant_of_vlan(model, vlan) == tenant;
}

/* The line makes the tenant when it is not there. */
static open_error_t bind_tenant(switch_model &model, uint32_t tenant, uint32_t vlan) {
  if (is_bound(model, tenant, vlan)) return OPEN_E_EXISTS;
  return commit(model, "vxlan tenant <number> vlan <vlan>", {tenant, vlan});
}

open_error_t rpcclt_openapiL2oL3TenantSet(openapiClientHandle_t *handle, uint32_t vxlanId, uint32_t tenantId,
                                          uint32_t vlanId, uint32_t on) {
  return api_call(__func__, handle, {vxlanId, tenantId, vlanId, on}, [&](switch_model &model) {
    open_error_t rc = instance_check(vxlanId);
    if (rc != OPEN_E_NONE) return rc;
    if (!vxlan_tenant_id_valid(tenantId) || !vlan_id_valid(vlanId) || on > OPEN_ENABLE) return OPEN_E_PARAM;
    if (on == OPEN_ENABLE) return bind_tenant(model, tenantId, vlanId);
    const vxlan_tenant *tenant = vxlan_tenant_find(model, tenantId);
    bool elsewhere = tenant && tenant->vlan != 0 && tenant->vlan != vlanId;
    return elsewhere ? OPEN_E_NOT_FOUND : delete_tenant(model, tenantId);
  });
}

/* The checks that binding an existing tenant and ending that have in common. */
static open_error_t binding_check(const switch_model &model, uint32_t tenant, uint32_t type, uint32_t vlan) {
  open_error_t rc = tunnel_type_check(type);
  if (rc != OPEN_E_NONE) return rc;
  return vlan_id_valid(vlan) ? vxlan_tenant_check(model, tenant) : OPEN_E_PARAM;
}

open_error_t rpcclt_openapiL2oL3TenantVlanAdd(openapiClientHandle_t *handle, uint32_t tenantId,
                                              uint32_t tunnelType, uint32_t vlanId) {
  return api_call(__func__, handle, {tenantId, tunnelType, vlanId}, [&](switch_model &model) {
    open_error_t rc = binding_check(model, tenantId, tunnelType, vlanId);
    return rc == OPEN_E_NONE ? bind_tenant(model, tenantId, vlanId) : rc;
  });
}

open_error_t rpcclt_openapiL2oL3TenantVlanRemove(openapiClientHandle_t *handle, uint32_t tenantId,
                                                 uint32_t tunnelType, uint32_t vlanId) {
  return api_call(__func__, handle, {tenantId, tunnelType, vlanId}, [&](switch_model &model) {
    open_error_t rc = binding_check(model, tenantId, tunnelType, vlanId);
    if (rc != OPEN_E_NONE) return rc;
    return commit(model, "no vxlan tenant <number> vlan <vlan>", {tenantId, vlanId});
  });
}

/* --- Reading tenants ------------------------------------------------------------------------------------ */

static open_l2oL3TenantConfig_t config_of(const vxlan_tenant &tenant) {
  open_l2oL3TenantConfig_t config = {};
  config.tunnelType = OPEN_L2OL3_TUNNEL_VXLAN;
  config.vlanId = tenant.vlan;
  return config;
}

open_error_t rpcclt_openapiL2oL3TenantGet(openapiClientHandle_t *handle, uint32_t tenantId,
                                          open_l2oL3TenantConfig_t *config) {
  return api_call(__func__, handle, {tenantId, output(config)}, [&](switch_model &model) {
    open_error_t rc = vxlan_tenant_check(model, tenantId);
    if (rc == OPEN_E_NONE) *config = config_of(*vxlan_tenant_find(model, tenantId));
    return rc;
  });
}

/* Answers with the first tenant after an id. */
static open_error_t answer_next(const switch_model &model, uint32_t after, uint32_t *id,
                                open_l2oL3TenantConfig_t *config) {
  const vxlan_tenant *next = vxlan_tenant_next(model, after);
  if (!next) return OPEN_E_FAIL;
  *id = next->id;
  *config = config_of(*next);
  return OPEN_E_NONE;
}

open_error_t rpcclt_openapiL2oL3TenantFirstGet(openapiClientHandle_t *handle, uint32_t vxlanId,
                                               uint32_t *tenantId, open_l2oL3TenantConfig_t *config) {
  return api_call(__func__, handle, {vxlanId, tenantId, output(config)}, [&](switch_model &model) {
    open_error_t rc = instance_check(vxlanId);
    return rc == OPEN_E_NONE ? answer_next(model, 0, tenantId, config) : rc;
  });
}

open_error_t rpcclt_openapiL2oL3TenantNextGetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                 uint32_t *tenantId, open_l2oL3TenantConfig_t *config) {
  return api_call(__func__, handle, {vxlanId, tenantId, output(config)}, [&](switch_model &model) {
    open_error_t rc = instance_check(vxlanId);
    return rc == OPEN_E_NONE ? answer_next(model, *tenantId, tenantId, config) : rc;
  });
}

open_error_t rpcclt_openapiL2oL3TenantNextGet(openapiClientHandle_t *handle, uint32_t tenantId,
                                              uint32_t *nextTenantId, open_l2oL3TenantConfig_t *nextConfig) {
  return api_call(__func__, handle, {tenantId, nextTenantId, output(nextConfig)}, [&](switch_model &model) {
    return answer_next(model, tenantId, nextTenantId, nextConfig);
  });
}

/* --- Remote VTEPs --------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiL2oL3RemoteVtepAddAllTenant(openapiClientHandle_t *handle, uint32_t address) {
  return api_call(__func__, handle, {address}, [&](switch_model &model) {
    /* For the line a VTEP in the list is as wanted; who adds wants to hear of it. */
    if (model.vxlan->remote_vteps.count(address)) return OPEN_E_EXISTS;
    return commit(model, "vxlan remote-vtep <ip>", {inet_ipv4(address)});
  });
}

open_error_t rpcclt_openapiL2oL3RemoteVtepRemoveAllTenant(openapiClientHandle_t *handle, uint32_t address) {
  return api_call(__func__, handle, {address}, [&](switch_model &model) {
    return commit(model, "no vxlan remote-vtep <ip>", {inet_ipv4(address)});
  });
}

open_error_t rpcclt_openapiL2oL3TenantAddAllVtep(openapiClientHandle_t *handle, uint32_t tenantId) {
  return api_call(__func__, handle, {tenantId}, [&](switch_model &model) {
    return commit(model, "vxlan tenant <number> remote-vteps", {tenantId});
  });
}

open_error_t rpcclt_openapiL2oL3TenantRemoveAllVtep(openapiClientHandle_t *handle, uint32_t tenantId) {
  return api_call(__func__, handle, {tenantId}, [&](switch_model &model) {
    return commit(model, "no vxlan tenant <number> remote-vteps", {tenantId});
  });
}

/* A tunnel has the address of its VTEP as its id, which stays the same whatever becomes of the others. */
open_error_t rpcclt_openapiL2oL3TunnelGetNextTenant(openapiClientHandle_t *handle, uint32_t tenantId,
                                                    uint32_t tunnelId,
                                                    open_l2oL3TunnelInfo_t *nextTunnelInfo) {
  return api_call(__func__, handle, {tenantId, tunnelId, output(nextTunnelInfo)}, [&](switch_model &model) {
    open_error_t rc = vxlan_tenant_check(model, tenantId);
    if (rc != OPEN_E_NONE) return rc;
    uint32_t next = vxlan_tenant_next_vtep(model, *vxlan_tenant_find(model, tenantId), tunnelId);
    if (next == 0) return OPEN_E_FAIL;
    *nextTunnelInfo = {next, next};
    return OPEN_E_NONE;
  });
}

/* --- Multicast groups ----------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiL2oL3DefaultIPMCGetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                  uint32_t *address) {
  return api_call(__func__, handle, {vxlanId, address}, [&](switch_model &model) {
    open_error_t rc = instance_check(vxlanId);
    if (rc == OPEN_E_NONE) *address = model.vxlan->default_group;
    return rc;
  });
}

open_error_t rpcclt_openapiL2oL3DefaultIPMCSetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                  uint32_t address) {
  return api_call(__func__, handle, {vxlanId, address}, [&](switch_model &model) {
    open_error_t rc = instance_check(vxlanId);
    if (rc != OPEN_E_NONE) return rc;
    if (address == 0) return commit(model, "no vxlan multicast-group", {});
    return commit(model, "vxlan multicast-group <ip>", {inet_ipv4(address)});
  });
}

open_error_t rpcclt_openapiL2oL3IPMCGet(openapiClientHandle_t *handle, uint32_t vxlanId, uint32_t tenantId,
                                        uint32_t *address) {
  return api_call(__func__, handle, {vxlanId, tenantId, address}, [&](switch_model &model) {
    open_error_t rc = instance_check(vxlanId);
    if (rc == OPEN_E_NONE) rc = vxlan_tenant_check(model, tenantId);
    if (rc == OPEN_E_NONE) *address = vxlan_tenant_find(model, tenantId)->group;
    return rc;
  });
}

open_error_t rpcclt_openapiL2oL3IPMCSet(openapiClientHandle_t *handle, uint32_t vxlanId, uint32_t tenantId,
                                        uint32_t address) {
  return api_call(__func__, handle, {vxlanId, tenantId, address}, [&](switch_model &model) {
    open_error_t rc = instance_check(vxlanId);
    if (rc != OPEN_E_NONE) return rc;
    if (address == 0) return commit(model, "no vxlan tenant <number> multicast-group", {tenantId});
    return commit(model, "vxlan tenant <number> multicast-group <ip>", {tenantId, inet_ipv4(address)});
  });
}

open_error_t rpcclt_openapiL2oL3IsVNISpecificIPMC(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                  uint32_t address, OPEN_BOOL_t *isSpecific) {
  return api_call(__func__, handle, {vxlanId, address, isSpecific}, [&](switch_model &model) {
    open_error_t rc = instance_check(vxlanId);
    if (rc == OPEN_E_NONE) *isSpecific = vxlan_tenant_of_group(model, address) != 0;
    return rc;
  });
}
