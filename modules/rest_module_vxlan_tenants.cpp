/* Tenants of VXLAN. In unicast mode one is made and unmade step by step, in multicast mode by one call. */
#include "modules/rest_module_vxlan.h"

#include "modules/rest_module_vlan.h"
#include "modules/rest_module_vxlan_request.h"
#include "platform/api/openapi_vlan.h"
#include "platform/api/openapi_vxlan.h"

static bool vlan_valid_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t vlanId) {
  if (vlanId != 0 && vlanId <= get_vlan_num_max(client_handle)) return true;
  refuse(conn, 2, "VLAN ID not valid.");
  return false;
}

/* --- Deleting ------------------------------------------------------------------------------------------- */

int api_vxlan_delete_specified_tenant(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t tenantId = 0, vlanId = 0, mode = VXLAN_MODE_DISABLED;
  if (!vxlan_tenant_and_vlan_or_reply(conn, &tenantId, &vlanId)) return 0;
  if (!vlan_valid_or_reply(client_handle, conn, vlanId) || !vxlan_tenant_valid_or_reply(conn, tenantId))
    return 0;
  if (!vxlan_enabled_or_reply(client_handle, conn, &mode)) return 0;

  open_error_t rc = OPEN_E_NONE;
  if (mode == VXLAN_MODE_MULTICAST) {
    rc = rpcclt_openapiL2oL3TenantSet(client_handle, VXLAN_INSTANCE, tenantId, vlanId, 0);
  } else {
    rc = rpcclt_openapiL2oL3TenantVlanRemove(client_handle, tenantId, OPEN_L2OL3_TUNNEL_VXLAN, vlanId);
    if (rc == OPEN_E_NONE) rc = rpcclt_openapiL2oL3TenantRemoveAllVtep(client_handle, tenantId);
    if (rc == OPEN_E_NONE) rc = rpcclt_openapiL2oL3TenantDelete(client_handle, tenantId);
  }
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete VxLAN tenant %d successfully.", tenantId);
}

/* --- Reading -------------------------------------------------------------------------------------------- */

/* The tenant after `tenantId`, which comes out as its id. */
static open_error_t next_tenant(openapiClientHandle_t *client_handle, uint32_t mode, uint32_t *tenantId,
                                open_l2oL3TenantConfig_t *config) {
  if (mode != VXLAN_MODE_UNICAST)
    return rpcclt_openapiL2oL3TenantNextGetZYL(client_handle, VXLAN_INSTANCE, tenantId, config);
  uint32_t next = 0;
  open_error_t rc = rpcclt_openapiL2oL3TenantNextGet(client_handle, *tenantId, &next, config);
  *tenantId = next;
  return rc;
}

/* Calls visit(tenantId, config, position) for each tenant, positions from 1 on, until a visit returns false:
 * OPEN_E_NONE then. Otherwise OPEN_E_FAIL, the end of the walk, or whatever failure cut it short. */
template <typename Visit>
static open_error_t walk_tenants(openapiClientHandle_t *client_handle, uint32_t mode, Visit visit) {
  uint32_t tenantId = 0;
  open_l2oL3TenantConfig_t config = {};
  open_error_t rc = rpcclt_openapiL2oL3TenantFirstGet(client_handle, VXLAN_INSTANCE, &tenantId, &config);
  for (uint32_t position = 1; rc == OPEN_E_NONE; position++) {
    if (position > MAX_LIST_ENTRIES) return OPEN_E_INTERNAL;
    if (!visit(tenantId, config, position)) return OPEN_E_NONE;
    rc = next_tenant(client_handle, mode, &tenantId, &config);
  }
  return rc;
}

static void append_tenant(node_t *tenant, uint32_t tenantId, const open_l2oL3TenantConfig_t &config) {
  append_tree_number(tenant, "tenantId", tenantId);
  append_tree_number(tenant, "vlan", config.vlanId);
}

/* In multicast mode the platform has no call that reads one tenant. */
static open_error_t read_tenant(openapiClientHandle_t *client_handle, uint32_t mode, uint32_t wanted,
                                open_l2oL3TenantConfig_t *config) {
  if (mode == VXLAN_MODE_UNICAST) return rpcclt_openapiL2oL3TenantGet(client_handle, wanted, config);
  return walk_tenants(client_handle, mode,
                      [&](uint32_t tenantId, const open_l2oL3TenantConfig_t &found, uint32_t) {
                        if (tenantId == wanted) *config = found;
                        return tenantId != wanted;
                      });
}

int api_vxlan_get_specified_tenant(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t tenantId = 0, mode = VXLAN_MODE_DISABLED;
  open_l2oL3TenantConfig_t config = {};
  if (!vxlan_tenant_or_reply(conn, &tenantId) || !vxlan_enabled_or_reply(client_handle, conn, &mode))
    return 0;
  open_error_t rc = read_tenant(client_handle, mode, tenantId, &config);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  node_t *tree = new_tree();
  append_tenant(append_branch(tree, "tenant"), tenantId, config);
  return succeed(conn, tree, "Get data successfully.");
}

int api_vxlan_get_tenant_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = VXLAN_MODE_DISABLED;
  if (!vxlan_instance_or_reply(conn) || !vxlan_enabled_or_reply(client_handle, conn, &mode)) return 0;
  node_t *tree = new_tree();
  node_t *tenants = append_branch(tree, "tenants");
  open_error_t rc = walk_tenants(
      client_handle, mode, [&](uint32_t tenantId, const open_l2oL3TenantConfig_t &config, uint32_t position) {
        append_tenant(append_entry(tenants, position, "tenant"), tenantId, config);
        return true;
      });
  if (rc != OPEN_E_FAIL) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Creating ------------------------------------------------------------------------------------------- */

/* Setting the source again makes it hold for a tenant that was added after it. */
static open_error_t renew_source(openapiClientHandle_t *client_handle) {
  uint32_t port = 0;
  open_error_t rc = rpcclt_openapiL2oL3VxlanSourcePortGet(client_handle, &port);
  return rc == OPEN_E_NONE && port != 0 ? rpcclt_openapiL2oL3VxlanSourcePortSet(client_handle, port) : rc;
}

/* Makes a tenant step by step. One that this request has made is removed when a later step fails. */
static open_error_t create_unicast_tenant(openapiClientHandle_t *client_handle, uint32_t tenantId,
                                          uint32_t vlanId) {
  open_l2oL3TenantConfig_t config = {};
  bool is_new = rpcclt_openapiL2oL3TenantGet(client_handle, tenantId, &config) != OPEN_E_NONE;
  if (is_new) {
    config = {};
    config.tunnelType = OPEN_L2OL3_TUNNEL_VXLAN;
    open_error_t rc = rpcclt_openapiL2oL3TenantCreate(client_handle, VXLAN_INSTANCE, tenantId, &config);
    if (rc != OPEN_E_NONE) return rc;
  }
  open_error_t rc =
      rpcclt_openapiL2oL3TenantVlanAdd(client_handle, tenantId, OPEN_L2OL3_TUNNEL_VXLAN, vlanId);
  if (rc == OPEN_E_NONE) rc = renew_source(client_handle);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiL2oL3TenantAddAllVtep(client_handle, tenantId);
  if (rc != OPEN_E_NONE && is_new) rpcclt_openapiL2oL3TenantDelete(client_handle, tenantId);
  return rc;
}

int api_vxlan_create_tenant(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t tenantId = 0, vlanId = 0, mode = VXLAN_MODE_DISABLED;
  if (!vxlan_tenant_and_vlan_or_reply(conn, &tenantId, &vlanId)) return 0;
  if (!vxlan_tenant_valid_or_reply(conn, tenantId) || !vlan_valid_or_reply(client_handle, conn, vlanId))
    return 0;
  open_error_t rc = openapiVlanCreatedCheck(client_handle, vlanId);
  if (rc == OPEN_E_PARAM) return refuse(conn, 1, "The value of parameter is invalid.");
  if (rc == OPEN_E_FAIL) return refuse(conn, 2, "VLAN %d not yet created.", vlanId);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (!vxlan_enabled_or_reply(client_handle, conn, &mode)) return 0;

  rc = mode == VXLAN_MODE_MULTICAST
           ? rpcclt_openapiL2oL3TenantSet(client_handle, VXLAN_INSTANCE, tenantId, vlanId, 1)
           : create_unicast_tenant(client_handle, tenantId, vlanId);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Create VxLAN tenant %d successfully.", tenantId);
}
