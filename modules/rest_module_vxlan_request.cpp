#include "modules/rest_module_vxlan_request.h"

#include "engine/rest_route.h"
#include "modules/rest_module_vxlan.h"
#include "platform/api/openapi_vxlan.h"

/* --- What the URI names --------------------------------------------------------------------------------- */

bool vxlan_instance_or_reply(mg_connection *conn) {
  uint32_t vxlanId = 0;
  if (!uri_numbers(conn, "/vxlan/%[0-9]", {&vxlanId})) {
    fail(conn, OPEN_E_PARAM, nullptr);
  } else if (vxlanId != VXLAN_INSTANCE) {
    refuse(conn, 2, "Invalid vxlan ID.");
  } else {
    return true;
  }
  return false;
}

bool vxlan_tenant_valid_or_reply(mg_connection *conn, uint32_t tenantId) {
  if (tenantId >= 1 && tenantId <= VXLAN_TENANT_ID_MAX) return true;
  refuse(conn, 2, "Invalid tenant ID.");
  return false;
}

bool vxlan_tenant_or_reply(mg_connection *conn, uint32_t *tenantId) {
  uint32_t vxlanId = 0;
  if (!vxlan_instance_or_reply(conn)) return false;
  if (uri_numbers(conn, "/vxlan/%[0-9]/tenant/%[0-9]", {&vxlanId, tenantId}))
    return vxlan_tenant_valid_or_reply(conn, *tenantId);
  fail(conn, OPEN_E_PARAM, nullptr);
  return false;
}

bool vxlan_tenant_and_vlan_or_reply(mg_connection *conn, uint32_t *tenantId, uint32_t *vlanId) {
  uint32_t vxlanId = 0;
  if (!vxlan_instance_or_reply(conn)) return false;
  if (uri_numbers(conn, "/vxlan/%[0-9]/tenant/%[0-9]/vlan/%[0-9]", {&vxlanId, tenantId, vlanId})) return true;
  fail(conn, OPEN_E_PARAM, nullptr);
  return false;
}

/* --- The mode ------------------------------------------------------------------------------------------- */

open_error_t read_vxlan_mode_flags(openapiClientHandle_t *client_handle, uint32_t *unicast,
                                   uint32_t *multicast) {
  open_error_t rc = rpcclt_openapiL2oL3SwitchTunnelModeGet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, unicast);
  if (rc == OPEN_E_NONE)
    rc = rpcclt_openapiL2oL3SwitchTunnelMultiModeGet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, multicast);
  return rc;
}

uint32_t get_vxlan_mode(openapiClientHandle_t *client_handle, uint32_t *mode) {
  uint32_t unicast = 0, multicast = 0;
  if (read_vxlan_mode_flags(client_handle, &unicast, &multicast) != OPEN_E_NONE) return 1;
  if (unicast == 1) {
    *mode = VXLAN_MODE_UNICAST;
  } else if (multicast == 1) {
    *mode = VXLAN_MODE_MULTICAST;
  } else if (unicast == 0 && multicast == 0) {
    *mode = VXLAN_MODE_DISABLED;
  }
  return 0;
}

bool vxlan_mode_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t *mode) {
  *mode = VXLAN_MODE_DISABLED;
  if (get_vxlan_mode(client_handle, mode) == 0) return true;
  fail(conn, OPEN_E_PARAM, nullptr);
  return false;
}

bool vxlan_enabled_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t *mode) {
  if (!vxlan_mode_or_reply(client_handle, conn, mode)) return false;
  if (*mode != VXLAN_MODE_DISABLED) return true;
  refuse(conn, 2, "Vxlan is not enable.");
  return false;
}

bool vxlan_mode_is_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t wanted,
                            node_t *tree) {
  uint32_t mode = VXLAN_MODE_DISABLED;
  if (get_vxlan_mode(client_handle, &mode) != 0) {
    fail(conn, OPEN_E_PARAM, tree);
  } else if (mode != wanted) {
    const char *message = wanted == VXLAN_MODE_UNICAST ? "VxLAN unicast mode is not enable."
                                                       : "VxLAN multicast mode is not enable.";
    refuse_with_tree(conn, 2, message, tree);
  } else {
    return true;
  }
  return false;
}
