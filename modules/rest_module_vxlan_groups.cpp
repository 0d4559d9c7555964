/* The groups of VXLAN: the remote VTEPs of unicast mode, the same for all tenants, and the multicast groups
 * of multicast mode, a default one and one for each tenant. */
#include "modules/rest_module_vxlan.h"

#include "engine/rest_request.h"
#include "modules/rest_module_vxlan_request.h"
#include "platform/api/openapi_vxlan.h"

/* An IPv4 address that a variable holds. */
static bool ipv4_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, const char *text,
                          uint32_t *address) {
  open_inet_addr_t parsed = {};
  if (convert_ip_string_to_inet_addr(client_handle, text, &parsed) == RC_TRUE &&
      parsed.family == OPEN_AF_INET) {
    *address = parsed.addr.ipv4;
    return true;
  }
  fail(conn, OPEN_E_PARAM, nullptr);
  return false;
}

static void append_address(node_t *tree, const char *name, uint32_t address) {
  char text[IP_TEXT_SIZE] = {};
  convert_ipv4_with_uint32_to_ip_string(address, text);
  append_tree_string(tree, name, name, text);
}

/* --- The unicast group ---------------------------------------------------------------------------------- */

/* Looks at the unicast flag alone. */
int api_vxlan_delete_unicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  request_variable value;
  if (!vxlan_instance_or_reply(conn) || !variable_or_reply(conn, "value", &value)) return 0;
  uint32_t unicast = 0, address = 0;
  if (rpcclt_openapiL2oL3SwitchTunnelModeGet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, &unicast) != OPEN_E_NONE)
    return fail(conn, OPEN_E_PARAM, nullptr);
  if (unicast != 1) return refuse(conn, 2, "VxLAN unicast mode is not enable.");
  if (!ipv4_or_reply(client_handle, conn, value.text, &address)) return 0;

  open_error_t rc = rpcclt_openapiL2oL3RemoteVtepRemoveAllTenant(client_handle, address);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete VxLAN unicast group %s successfully.", value.text);
}

static bool any_tenant(openapiClientHandle_t *client_handle) {
  uint32_t tenantId = 0;
  open_l2oL3TenantConfig_t config = {};
  return rpcclt_openapiL2oL3TenantNextGet(client_handle, 0, &tenantId, &config) == OPEN_E_NONE;
}

int api_vxlan_update_unicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  request_variable value;
  uint32_t address = 0;
  if (!vxlan_instance_or_reply(conn) || !variable_or_reply(conn, "value", &value)) return 0;
  if (!any_tenant(client_handle)) return refuse(conn, 2, "Must set tenant firstly.");
  if (!vxlan_mode_is_or_reply(client_handle, conn, VXLAN_MODE_UNICAST, nullptr)) return 0;
  if (!ipv4_or_reply(client_handle, conn, value.text, &address)) return 0;

  open_error_t rc = rpcclt_openapiL2oL3RemoteVtepAddAllTenant(client_handle, address);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update VxLAN unicast group successfully.");
}

/* The remote VTEPs are the same for all tenants, so that those of the first one are the group. Only where
 * there is neither a tenant nor a VTEP the request fails; a tenant without VTEPs gives an empty list. */
int api_vxlan_get_unicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  if (!vxlan_instance_or_reply(conn)) return 0;
  node_t *tree = new_tree();
  node_t *groups = append_branch(tree, "unicastGroups");
  if (!vxlan_mode_is_or_reply(client_handle, conn, VXLAN_MODE_UNICAST, tree)) return 0;

  uint32_t tenantId = 0;
  open_l2oL3TenantConfig_t config = {};
  bool found = rpcclt_openapiL2oL3TenantNextGet(client_handle, 0, &tenantId, &config) == OPEN_E_NONE;
  open_l2oL3TunnelInfo_t tunnel = {};
  for (uint32_t position = 1; rpcclt_openapiL2oL3TunnelGetNextTenant(client_handle, tenantId, tunnel.tunnelId,
                                                                     &tunnel) == OPEN_E_NONE;
       position++) {
    if (position > MAX_LIST_ENTRIES) return fail(conn, OPEN_E_INTERNAL, tree);
    found = true;
    append_address(append_entry(groups, position, "unicastGroup"), "address", tunnel.remoteAddress);
  }
  if (!found) return fail(conn, OPEN_E_PARAM, tree);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Multicast groups ----------------------------------------------------------------------------------- */

int api_vxlan_delete_default_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  if (!vxlan_instance_or_reply(conn)) return 0;
  if (!vxlan_mode_is_or_reply(client_handle, conn, VXLAN_MODE_MULTICAST, nullptr)) return 0;

  open_error_t rc = rpcclt_openapiL2oL3DefaultIPMCSetZYL(client_handle, VXLAN_INSTANCE, 0);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete VxLAN default multicast group successfully.");
}

/* Sets the multicast group of a tenant; 0 for none. */
static int set_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t tenantId,
                               uint32_t address, const char *done) {
  open_error_t rc = rpcclt_openapiL2oL3IPMCSet(client_handle, VXLAN_INSTANCE, tenantId, address);
  if (rc == OPEN_E_NOT_FOUND) return refuse(conn, 2, "VxLAN tenant %d does not exist.", tenantId);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "%s VxLAN multicast group successfully.", done);
}

int api_vxlan_delete_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t tenantId = 0;
  if (!vxlan_tenant_or_reply(conn, &tenantId)) return 0;
  if (!vxlan_mode_is_or_reply(client_handle, conn, VXLAN_MODE_MULTICAST, nullptr)) return 0;
  return set_multicast_group(client_handle, conn, tenantId, 0, "Delete");
}

/* What the updates of multicast groups begin with: `value` and the mode. To the platform 0 is no group, which
 * a client says by DELETE. */
static bool multicast_group_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn,
                                     uint32_t *address) {
  request_variable value;
  if (!variable_or_reply(conn, "value", &value)) return false;
  if (!vxlan_mode_is_or_reply(client_handle, conn, VXLAN_MODE_MULTICAST, nullptr)) return false;
  if (!ipv4_or_reply(client_handle, conn, value.text, address)) return false;
  if (*address != 0) return true;
  fail(conn, OPEN_E_PARAM, nullptr);
  return false;
}

int api_vxlan_update_default_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t address = 0;
  if (!vxlan_instance_or_reply(conn) || !multicast_group_or_reply(client_handle, conn, &address)) return 0;

  OPEN_BOOL_t specific = OPEN_FALSE;
  open_error_t rc = rpcclt_openapiL2oL3IsVNISpecificIPMC(client_handle, VXLAN_INSTANCE, address, &specific);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (specific != OPEN_FALSE) return refuse(conn, 2, "Conflict with VNI specific multicast group!!");
  rc = rpcclt_openapiL2oL3DefaultIPMCSetZYL(client_handle, VXLAN_INSTANCE, address);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update VxLAN default multicast group successfully.");
}

int api_vxlan_update_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t tenantId = 0, address = 0, default_group = 0;
  if (!vxlan_tenant_or_reply(conn, &tenantId)) return 0;
  if (!multicast_group_or_reply(client_handle, conn, &address)) return 0;

  open_error_t rc = rpcclt_openapiL2oL3DefaultIPMCGetZYL(client_handle, VXLAN_INSTANCE, &default_group);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  /* The blank at the beginning belongs to the text. */
  if (address == default_group) return refuse(conn, 2, " Conflict with default multicast group!!");
  return set_multicast_group(client_handle, conn, tenantId, address, "Update");
}

/* Appends the groups of the tenants that have one. OPEN_E_PARAM when a tenant's cannot be read, which is also
 * what comes of having no tenant. */
static open_error_t append_multicast_groups(openapiClientHandle_t *client_handle, node_t *groups) {
  uint32_t tenantId = 0, listed = 0, visited = 0;
  open_l2oL3TenantConfig_t config = {};
  rpcclt_openapiL2oL3TenantFirstGet(client_handle, VXLAN_INSTANCE, &tenantId, &config);
  do {
    if (++visited > MAX_LIST_ENTRIES) return OPEN_E_INTERNAL;
    uint32_t address = 0;
    if (rpcclt_openapiL2oL3IPMCGet(client_handle, VXLAN_INSTANCE, tenantId, &address) != OPEN_E_NONE)
      return OPEN_E_PARAM;
    if (address == 0) continue;
    node_t *entry = append_entry(groups, ++listed, "multicastGroup");
    append_tree_number(entry, "tenantId", tenantId);
    append_address(entry, "address", address);
  } while (rpcclt_openapiL2oL3TenantNextGetZYL(client_handle, VXLAN_INSTANCE, &tenantId, &config) ==
           OPEN_E_NONE);
  return OPEN_E_NONE;
}

int api_vxlan_get_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  if (!vxlan_instance_or_reply(conn)) return 0;
  node_t *tree = new_tree();
  node_t *groups = append_branch(tree, "multicastGroups");
  uint32_t address = 0; /* stays so when the platform does not tell: none */
  rpcclt_openapiL2oL3DefaultIPMCGetZYL(client_handle, VXLAN_INSTANCE, &address);
  if (address == 0) {
    append_tree_string(groups, "default_multicastGroup", "default_multicastGroup", "none");
  } else {
    append_address(groups, "default_multicastGroup", address);
  }
  if (!vxlan_mode_is_or_reply(client_handle, conn, VXLAN_MODE_MULTICAST, tree)) return 0;

  open_error_t rc = append_multicast_groups(client_handle, groups);
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}
