/* Platform functions of VXLAN that record their arguments (recorded_calls.h) and of which a test may bend the
 * output (bent_platform.h). */
#include "platform/api/openapi_vxlan.h"
#include "tests/unit/modules/bent_calls.h"
#include "tests/unit/modules/recorded_calls.h"

template <typename... Numbers> static void record_numbers(const char *function, Numbers... numbers) {
  if constexpr (sizeof...(numbers) == 0) {
    record_call(function, "");
  } else {
    record_call(function, written(numbers...));
  }
}

/* A function that puts one number out, and one that puts none out. */
template <typename... Numbers>
static open_error_t read_number(const char *function, uint32_t *output, openapiClientHandle_t *handle,
                                Numbers... numbers) {
  record_numbers(function, numbers...);
  return call_library(function, output, handle, numbers..., output);
}

template <typename... Numbers>
static open_error_t change(const char *function, openapiClientHandle_t *handle, Numbers... numbers) {
  record_numbers(function, numbers...);
  return library_call(function, handle, numbers...);
}

/* --- The instance --------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiL2oL3SwitchTunnelModeGet(openapiClientHandle_t *handle, uint32_t tunnelType,
                                                    uint32_t *mode) {
  return read_number(__func__, mode, handle, tunnelType);
}

open_error_t rpcclt_openapiL2oL3SwitchTunnelModeSet(openapiClientHandle_t *handle, uint32_t tunnelType,
                                                    uint32_t mode) {
  return change(__func__, handle, tunnelType, mode);
}

open_error_t rpcclt_openapiL2oL3SwitchTunnelMultiModeGet(openapiClientHandle_t *handle, uint32_t tunnelType,
                                                         uint32_t *mode) {
  return read_number(__func__, mode, handle, tunnelType);
}

open_error_t rpcclt_openapiL2oL3SwitchTunnelMultiModeSet(openapiClientHandle_t *handle, uint32_t tunnelType,
                                                         uint32_t mode) {
  return change(__func__, handle, tunnelType, mode);
}

open_error_t rpcclt_openapiL2oL3SwitchVxlanUdpDestPortGet(openapiClientHandle_t *handle, uint32_t *port) {
  return read_number(__func__, port, handle);
}

open_error_t rpcclt_openapiL2oL3SwitchVxlanUdpDestPortSet(openapiClientHandle_t *handle, uint32_t port) {
  return change(__func__, handle, port);
}

open_error_t rpcclt_openapiL2oL3SwitchVxlanUdpDstPortGetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                            uint32_t *port) {
  return read_number(__func__, port, handle, vxlanId);
}

open_error_t rpcclt_openapiL2oL3SwitchVxlanUdpDstPortSetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                            uint32_t port) {
  return change(__func__, handle, vxlanId, port);
}

open_error_t rpcclt_openapiL2oL3VxlanSourcePortGet(openapiClientHandle_t *handle, uint32_t *ifNum) {
  return read_number(__func__, ifNum, handle);
}

open_error_t rpcclt_openapiL2oL3VxlanSourcePortSet(openapiClientHandle_t *handle, uint32_t ifNum) {
  return change(__func__, handle, ifNum);
}

open_error_t rpcclt_openapiL2oL3VxlanSourcePortGetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                      uint32_t *ifNum) {
  return read_number(__func__, ifNum, handle, vxlanId);
}

open_error_t rpcclt_openapiL2oL3VxlanSourcePortSetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                      uint32_t ifNum) {
  return change(__func__, handle, vxlanId, ifNum);
}

/* --- Tenants -------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiL2oL3TenantCreate(openapiClientHandle_t *handle, uint32_t vxlanId,
                                             uint32_t tenantId, const open_l2oL3TenantConfig_t *config) {
  uint32_t others = config->vlanId;
  for (uint32_t reserved : config->reserved) others |= reserved;
  record_numbers(__func__, vxlanId, tenantId, config->tunnelType, others);
  return library_call(__func__, handle, vxlanId, tenantId, config);
}

open_error_t rpcclt_openapiL2oL3TenantDelete(openapiClientHandle_t *handle, uint32_t tenantId) {
  return change(__func__, handle, tenantId);
}

open_error_t rpcclt_openapiL2oL3TenantSet(openapiClientHandle_t *handle, uint32_t vxlanId, uint32_t tenantId,
                                          uint32_t vlanId, uint32_t on) {
  return change(__func__, handle, vxlanId, tenantId, vlanId, on);
}

open_error_t rpcclt_openapiL2oL3TenantVlanAdd(openapiClientHandle_t *handle, uint32_t tenantId,
                                              uint32_t tunnelType, uint32_t vlanId) {
  return change(__func__, handle, tenantId, tunnelType, vlanId);
}

open_error_t rpcclt_openapiL2oL3TenantVlanRemove(openapiClientHandle_t *handle, uint32_t tenantId,
                                                 uint32_t tunnelType, uint32_t vlanId) {
  return change(__func__, handle, tenantId, tunnelType, vlanId);
}

open_error_t rpcclt_openapiL2oL3TenantGet(openapiClientHandle_t *handle, uint32_t tenantId,
                                          open_l2oL3TenantConfig_t *config) {
  record_numbers(__func__, tenantId);
  return call_library(__func__, &config->vlanId, handle, tenantId, config);
}

/* What can be bent of the walks over tenants is the tenant id, and under the name with " vlanId" the VLAN. */
open_error_t rpcclt_openapiL2oL3TenantFirstGet(openapiClientHandle_t *handle, uint32_t vxlanId,
                                               uint32_t *tenantId, open_l2oL3TenantConfig_t *config) {
  record_numbers(__func__, vxlanId);
  open_error_t rc = call_library(__func__, tenantId, handle, vxlanId, tenantId, config);
  bend("rpcclt_openapiL2oL3TenantFirstGet vlanId", &config->vlanId);
  return rc;
}

open_error_t rpcclt_openapiL2oL3TenantNextGetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                 uint32_t *tenantId, open_l2oL3TenantConfig_t *config) {
  record_numbers(__func__, vxlanId, *tenantId);
  return call_library(__func__, tenantId, handle, vxlanId, tenantId, config);
}

open_error_t rpcclt_openapiL2oL3TenantNextGet(openapiClientHandle_t *handle, uint32_t tenantId,
                                              uint32_t *nextTenantId, open_l2oL3TenantConfig_t *nextConfig) {
  record_numbers(__func__, tenantId);
  return call_library(__func__, nextTenantId, handle, tenantId, nextTenantId, nextConfig);
}

/* --- Groups --------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiL2oL3RemoteVtepAddAllTenant(openapiClientHandle_t *handle, uint32_t address) {
  return change(__func__, handle, address);
}

open_error_t rpcclt_openapiL2oL3RemoteVtepRemoveAllTenant(openapiClientHandle_t *handle, uint32_t address) {
  return change(__func__, handle, address);
}

open_error_t rpcclt_openapiL2oL3TenantAddAllVtep(openapiClientHandle_t *handle, uint32_t tenantId) {
  return change(__func__, handle, tenantId);
}

open_error_t rpcclt_openapiL2oL3TenantRemoveAllVtep(openapiClientHandle_t *handle, uint32_t tenantId) {
  return change(__func__, handle, tenantId);
}

open_error_t rpcclt_openapiL2oL3TunnelGetNextTenant(openapiClientHandle_t *handle, uint32_t tenantId,
                                                    uint32_t tunnelId,
                                                    open_l2oL3TunnelInfo_t *nextTunnelInfo) {
  record_numbers(__func__, tenantId, tunnelId);
  return call_library(__func__, &nextTunnelInfo->tunnelId, handle, tenantId, tunnelId, nextTunnelInfo);
}

open_error_t rpcclt_openapiL2oL3DefaultIPMCGetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                  uint32_t *address) {
  return read_number(__func__, address, handle, vxlanId);
}

open_error_t rpcclt_openapiL2oL3DefaultIPMCSetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                  uint32_t address) {
  return change(__func__, handle, vxlanId, address);
}

open_error_t rpcclt_openapiL2oL3IPMCGet(openapiClientHandle_t *handle, uint32_t vxlanId, uint32_t tenantId,
                                        uint32_t *address) {
  return read_number(__func__, address, handle, vxlanId, tenantId);
}

open_error_t rpcclt_openapiL2oL3IPMCSet(openapiClientHandle_t *handle, uint32_t vxlanId, uint32_t tenantId,
                                        uint32_t address) {
  return change(__func__, handle, vxlanId, tenantId, address);
}

open_error_t rpcclt_openapiL2oL3IsVNISpecificIPMC(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                  uint32_t address, OPEN_BOOL_t *isSpecific) {
  record_numbers(__func__, vxlanId, address);
  return library_call(__func__, handle, vxlanId, address, isSpecific);
}
