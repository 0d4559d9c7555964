/* VXLAN. The module keeps no state: every operation asks the platform. Some things the
 * platform does by one call in unicast mode and by another, whose name ends in ZYL, in multicast mode. */
#include "modules/rest_module_vxlan.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "modules/rest_module_vlan.h"
#include "platform/api/openapi_if.h"
#include "platform/api/openapi_routing.h"
#include "platform/api/openapi_vlan.h"
#include "platform/api/openapi_vxlan.h"

enum { INSTANCE = 1, TENANT_ID_MAX = 0xFFFFFE, UDP_PORT_MAX = 65535 };
enum { MODE_DISABLED = 0, MODE_UNICAST = 1, MODE_MULTICAST = 2 };

static const enum_text mode_words[] = {
    {MODE_DISABLED, "disable"},
    {MODE_UNICAST, "unicast"},
    {MODE_MULTICAST, "multicast"},
};

/* --- What the URI names --------------------------------------------------------------------------------- */

/* These answer the request and return false when what they look for is missing or not valid. */

static bool instance_or_reply(mg_connection *conn) {
  uint32_t vxlanId = 0;
  if (!uri_numbers(conn, "/vxlan/%[0-9]", {&vxlanId})) {
    fail(conn, OPEN_E_PARAM, nullptr);
  } else if (vxlanId != INSTANCE) {
    refuse(conn, 2, "Invalid vxlan ID.");
  } else {
    return true;
  }
  return false;
}

static bool tenant_valid_or_reply(mg_connection *conn, uint32_t tenantId) {
  if (tenantId >= 1 && tenantId <= TENANT_ID_MAX) return true;
  refuse(conn, 2, "Invalid tenant ID.");
  return false;
}

static bool tenant_or_reply(mg_connection *conn, uint32_t *tenantId) {
  uint32_t vxlanId = 0;
  if (!instance_or_reply(conn)) return false;
  if (uri_numbers(conn, "/vxlan/%[0-9]/tenant/%[0-9]", {&vxlanId, tenantId}))
    return tenant_valid_or_reply(conn, *tenantId);
  fail(conn, OPEN_E_PARAM, nullptr);
  return false;
}

/* Tenant and VLAN, neither checked yet. */
static bool tenant_and_vlan_or_reply(mg_connection *conn, uint32_t *tenantId, uint32_t *vlanId) {
  uint32_t vxlanId = 0;
  if (!instance_or_reply(conn)) return false;
  if (uri_numbers(conn, "/vxlan/%[0-9]/tenant/%[0-9]/vlan/%[0-9]", {&vxlanId, tenantId, vlanId})) return true;
  fail(conn, OPEN_E_PARAM, nullptr);
  return false;
}

static bool vlan_valid_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t vlanId) {
  if (vlanId != 0 && vlanId <= get_vlan_num_max(client_handle)) return true;
  refuse(conn, 2, "VLAN ID not valid.");
  return false;
}

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

/* --- The mode ------------------------------------------------------------------------------------------- */

static open_error_t read_mode_flags(openapiClientHandle_t *client_handle, uint32_t *unicast,
                                    uint32_t *multicast) {
  open_error_t rc = rpcclt_openapiL2oL3SwitchTunnelModeGet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, unicast);
  if (rc == OPEN_E_NONE)
    rc = rpcclt_openapiL2oL3SwitchTunnelMultiModeGet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, multicast);
  return rc;
}

uint32_t get_vxlan_mode(openapiClientHandle_t *client_handle, uint32_t *mode) {
  uint32_t unicast = 0, multicast = 0;
  if (read_mode_flags(client_handle, &unicast, &multicast) != OPEN_E_NONE) return 1;
  if (unicast == 1) {
    *mode = MODE_UNICAST;
  } else if (multicast == 1) {
    *mode = MODE_MULTICAST;
  } else if (unicast == 0 && multicast == 0) {
    *mode = MODE_DISABLED;
  }
  return 0;
}

/* The mode, whichever it is. Answers, with the tree freed, when the platform does not tell. */
static bool mode_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, node_t *tree,
                          uint32_t *mode) {
  *mode = MODE_DISABLED;
  if (get_vxlan_mode(client_handle, mode) == 0) return true;
  fail(conn, OPEN_E_PARAM, tree);
  return false;
}

/* The mode, unicast or multicast; refused when there is none. */
static bool enabled_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t *mode) {
  if (!mode_or_reply(client_handle, conn, nullptr, mode)) return false;
  if (*mode != MODE_DISABLED) return true;
  refuse(conn, 2, "Vxlan is not enable.");
  return false;
}

/* For what works in one mode alone. A refusal sends the tree; it is freed whenever the result is false. */
static bool mode_is_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t wanted,
                             node_t *tree) {
  uint32_t mode = MODE_DISABLED;
  if (!mode_or_reply(client_handle, conn, tree, &mode)) return false;
  if (mode == wanted) return true;
  refuse_with_tree(conn, 2,
                   wanted == MODE_UNICAST ? "VxLAN unicast mode is not enable."
                                          : "VxLAN multicast mode is not enable.",
                   tree);
  return false;
}

/* --- Calls that depend on the mode ---------------------------------------------------------------------- */

static open_error_t get_udp_port(openapiClientHandle_t *client_handle, uint32_t mode, uint32_t *port) {
  return mode == MODE_UNICAST ? rpcclt_openapiL2oL3SwitchVxlanUdpDestPortGet(client_handle, port)
                              : rpcclt_openapiL2oL3SwitchVxlanUdpDstPortGetZYL(client_handle, INSTANCE, port);
}

static open_error_t set_udp_port(openapiClientHandle_t *client_handle, uint32_t mode, uint32_t port) {
  return mode == MODE_UNICAST ? rpcclt_openapiL2oL3SwitchVxlanUdpDestPortSet(client_handle, port)
                              : rpcclt_openapiL2oL3SwitchVxlanUdpDstPortSetZYL(client_handle, INSTANCE, port);
}

static open_error_t get_source(openapiClientHandle_t *client_handle, uint32_t mode, uint32_t *ifNum) {
  return mode == MODE_UNICAST ? rpcclt_openapiL2oL3VxlanSourcePortGet(client_handle, ifNum)
                              : rpcclt_openapiL2oL3VxlanSourcePortGetZYL(client_handle, INSTANCE, ifNum);
}

static open_error_t set_source(openapiClientHandle_t *client_handle, uint32_t mode, uint32_t ifNum) {
  return mode == MODE_UNICAST ? rpcclt_openapiL2oL3VxlanSourcePortSet(client_handle, ifNum)
                              : rpcclt_openapiL2oL3VxlanSourcePortSetZYL(client_handle, INSTANCE, ifNum);
}

/* The tenant after `tenantId`, which comes out as its id. */
static open_error_t next_tenant(openapiClientHandle_t *client_handle, uint32_t mode, uint32_t *tenantId,
                                open_l2oL3TenantConfig_t *config) {
  if (mode != MODE_UNICAST)
    return rpcclt_openapiL2oL3TenantNextGetZYL(client_handle, INSTANCE, tenantId, config);
  uint32_t next = 0;
  open_error_t rc = rpcclt_openapiL2oL3TenantNextGet(client_handle, *tenantId, &next, config);
  *tenantId = next;
  return rc;
}

/* --- Deleting ------------------------------------------------------------------------------------------- */

int api_vxlan_delete_specified_tenant(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t tenantId = 0, vlanId = 0, mode = MODE_DISABLED;
  if (!tenant_and_vlan_or_reply(conn, &tenantId, &vlanId)) return 0;
  if (!vlan_valid_or_reply(client_handle, conn, vlanId) || !tenant_valid_or_reply(conn, tenantId)) return 0;
  if (!enabled_or_reply(client_handle, conn, &mode)) return 0;

  open_error_t rc = OPEN_E_NONE;
  if (mode == MODE_MULTICAST) {
    rc = rpcclt_openapiL2oL3TenantSet(client_handle, INSTANCE, tenantId, vlanId, 0);
  } else {
    rc = rpcclt_openapiL2oL3TenantVlanRemove(client_handle, tenantId, OPEN_L2OL3_TUNNEL_VXLAN, vlanId);
    if (rc == OPEN_E_NONE) rc = rpcclt_openapiL2oL3TenantRemoveAllVtep(client_handle, tenantId);
    if (rc == OPEN_E_NONE) rc = rpcclt_openapiL2oL3TenantDelete(client_handle, tenantId);
  }
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete VxLAN tenant %d successfully.", tenantId);
}

int api_vxlan_delete_src(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = MODE_DISABLED;
  if (!instance_or_reply(conn) || !enabled_or_reply(client_handle, conn, &mode)) return 0;

  open_error_t rc = set_source(client_handle, mode, 0);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete VxLAN source port successfully.");
}

/* Looks at the unicast flag alone. */
int api_vxlan_delete_unicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  request_variable value;
  if (!instance_or_reply(conn) || !variable_or_reply(conn, "value", &value)) return 0;
  uint32_t unicast = 0, address = 0;
  if (rpcclt_openapiL2oL3SwitchTunnelModeGet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, &unicast) != OPEN_E_NONE)
    return fail(conn, OPEN_E_PARAM, nullptr);
  if (unicast != 1) return refuse(conn, 2, "VxLAN unicast mode is not enable.");
  if (!ipv4_or_reply(client_handle, conn, value.text, &address)) return 0;

  open_error_t rc = rpcclt_openapiL2oL3RemoteVtepRemoveAllTenant(client_handle, address);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete VxLAN unicast group %s successfully.", value.text);
}

int api_vxlan_delete_default_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  if (!instance_or_reply(conn)) return 0;
  if (!mode_is_or_reply(client_handle, conn, MODE_MULTICAST, nullptr)) return 0;

  open_error_t rc = rpcclt_openapiL2oL3DefaultIPMCSetZYL(client_handle, INSTANCE, 0);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete VxLAN default multicast group successfully.");
}

/* Sets the multicast group of a tenant; 0 for none. */
static int set_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t tenantId,
                               uint32_t address, const char *done) {
  open_error_t rc = rpcclt_openapiL2oL3IPMCSet(client_handle, INSTANCE, tenantId, address);
  if (rc == OPEN_E_NOT_FOUND) return refuse(conn, 2, "VxLAN tenant %d does not exist.", tenantId);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "%s VxLAN multicast group successfully.", done);
}

int api_vxlan_delete_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t tenantId = 0;
  if (!tenant_or_reply(conn, &tenantId)) return 0;
  if (!mode_is_or_reply(client_handle, conn, MODE_MULTICAST, nullptr)) return 0;
  return set_multicast_group(client_handle, conn, tenantId, 0, "Delete");
}

/* --- Updating ------------------------------------------------------------------------------------------- */

/* Multicast is cleared only when clearing unicast fails. */
static open_error_t disable_tunnels(openapiClientHandle_t *client_handle) {
  open_error_t rc = rpcclt_openapiL2oL3SwitchTunnelModeSet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, 0);
  if (rc == OPEN_E_NONE) return rc;
  return rpcclt_openapiL2oL3SwitchTunnelMultiModeSet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, 0);
}

int api_vxlan_update_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  int32_t value = 0;
  uint32_t unicast = 0, multicast = 0;
  if (!instance_or_reply(conn) || !number_or_reply(conn, "value", &value)) return 0;
  if (read_mode_flags(client_handle, &unicast, &multicast) != OPEN_E_NONE)
    return fail(conn, OPEN_E_PARAM, nullptr);
  if (value != MODE_DISABLED && (unicast != 0 || multicast != 0))
    return refuse(conn, 2, "Couldn't change vxlan mode if tunnel still running !");

  open_error_t rc = OPEN_E_NONE;
  if (value == MODE_DISABLED) {
    rc = disable_tunnels(client_handle);
  } else if (value == MODE_UNICAST) {
    rc = rpcclt_openapiL2oL3SwitchTunnelModeSet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, 1);
  } else if (value == MODE_MULTICAST) {
    rc = rpcclt_openapiL2oL3SwitchTunnelMultiModeSet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, 1);
  } else {
    return refuse(conn, 2, "Invalid mode.");
  }
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update VxLAN mode successfully.");
}

int api_vxlan_update_udp_port(openapiClientHandle_t *client_handle, mg_connection *conn) {
  int32_t port = 0;
  uint32_t mode = MODE_DISABLED;
  if (!instance_or_reply(conn) || !number_or_reply(conn, "value", &port)) return 0;
  if (port < 1 || port > UDP_PORT_MAX) return refuse(conn, 2, "Invalid udp port.");
  if (!enabled_or_reply(client_handle, conn, &mode)) return 0;

  open_error_t rc = set_udp_port(client_handle, mode, static_cast<uint32_t>(port));
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update VxLAN udp port successfully.");
}

/* How the updates of the source end, whatever named the interface: `found` is the result of looking it up. */
static int update_source(openapiClientHandle_t *client_handle, mg_connection *conn, open_error_t found,
                         uint32_t ifNum) {
  uint32_t mode = MODE_DISABLED;
  if (found != OPEN_E_NONE) return fail(conn, found, nullptr);
  if (!enabled_or_reply(client_handle, conn, &mode)) return 0;

  open_error_t rc = set_source(client_handle, mode, ifNum);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update VxLAN source port successfully.");
}

int api_vxlan_update_src_if(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0;
  if (!instance_or_reply(conn) || !number_or_reply(conn, "value", &ifNum)) return 0;
  open_error_t found = rpcclt_openapiIntfExistCheck(client_handle, ifNum);
  return update_source(client_handle, conn, found, ifNum);
}

int api_vxlan_update_src_loopback(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t loopbackId = 0, max = 0, ifNum = 0;
  if (!instance_or_reply(conn) || !number_or_reply(conn, "value", &loopbackId)) return 0;
  open_error_t rc = rpcclt_openapiDot1LoopbackIdMaxGet(client_handle, &max);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (loopbackId > max) return refuse(conn, 2, "Invalid loopback id.");
  open_error_t found = rpcclt_openapiLoopbackIfNumGet(client_handle, loopbackId, &ifNum);
  return update_source(client_handle, conn, found, ifNum);
}

int api_vxlan_update_src_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t vlanId = 0, max = 0, ifNum = 0;
  if (!instance_or_reply(conn) || !number_or_reply(conn, "value", &vlanId)) return 0;
  open_error_t rc = rpcclt_openapiDot1VlanMaxGet(client_handle, &max);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (vlanId == 0 || vlanId > max) return refuse(conn, 2, "VLAN ID not valid.");
  open_error_t found = rpcclt_openapiRtrVlanIntfNumGetZYL(client_handle, vlanId, &ifNum);
  return update_source(client_handle, conn, found, ifNum);
}

static bool any_tenant(openapiClientHandle_t *client_handle) {
  uint32_t tenantId = 0;
  open_l2oL3TenantConfig_t config = {};
  return rpcclt_openapiL2oL3TenantNextGet(client_handle, 0, &tenantId, &config) == OPEN_E_NONE;
}

int api_vxlan_update_unicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  request_variable value;
  uint32_t address = 0;
  if (!instance_or_reply(conn) || !variable_or_reply(conn, "value", &value)) return 0;
  if (!any_tenant(client_handle)) return refuse(conn, 2, "Must set tenant firstly.");
  if (!mode_is_or_reply(client_handle, conn, MODE_UNICAST, nullptr)) return 0;
  if (!ipv4_or_reply(client_handle, conn, value.text, &address)) return 0;

  open_error_t rc = rpcclt_openapiL2oL3RemoteVtepAddAllTenant(client_handle, address);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update VxLAN unicast group successfully.");
}

/* What the updates of multicast groups begin with: `value` and the mode. To the platform 0 is no group, which
 * a client says by DELETE. */
static bool multicast_group_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn,
                                     uint32_t *address) {
  request_variable value;
  if (!variable_or_reply(conn, "value", &value)) return false;
  if (!mode_is_or_reply(client_handle, conn, MODE_MULTICAST, nullptr)) return false;
  if (!ipv4_or_reply(client_handle, conn, value.text, address)) return false;
  if (*address != 0) return true;
  fail(conn, OPEN_E_PARAM, nullptr);
  return false;
}

int api_vxlan_update_default_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t address = 0;
  if (!instance_or_reply(conn) || !multicast_group_or_reply(client_handle, conn, &address)) return 0;

  OPEN_BOOL_t specific = OPEN_FALSE;
  open_error_t rc = rpcclt_openapiL2oL3IsVNISpecificIPMC(client_handle, INSTANCE, address, &specific);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (specific != OPEN_FALSE) return refuse(conn, 2, "Conflict with VNI specific multicast group!!");
  rc = rpcclt_openapiL2oL3DefaultIPMCSetZYL(client_handle, INSTANCE, address);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update VxLAN default multicast group successfully.");
}

int api_vxlan_update_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t tenantId = 0, address = 0, default_group = 0;
  if (!tenant_or_reply(conn, &tenantId)) return 0;
  if (!multicast_group_or_reply(client_handle, conn, &address)) return 0;

  open_error_t rc = rpcclt_openapiL2oL3DefaultIPMCGetZYL(client_handle, INSTANCE, &default_group);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  /* The blank at the beginning belongs to the text. */
  if (address == default_group) return refuse(conn, 2, " Conflict with default multicast group!!");
  return set_multicast_group(client_handle, conn, tenantId, address, "Update");
}

/* --- Reading -------------------------------------------------------------------------------------------- */

static void append_int(node_t *tree, const char *name, uint32_t value) {
  append_tree_int(tree, name, name, static_cast<int>(value));
}

static void append_tenant(node_t *tenant, uint32_t tenantId, const open_l2oL3TenantConfig_t &config) {
  append_int(tenant, "tenantId", tenantId);
  append_int(tenant, "vlan", config.vlanId);
}

int api_vxlan_get_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = MODE_DISABLED;
  if (!instance_or_reply(conn) || !mode_or_reply(client_handle, conn, nullptr, &mode)) return 0;
  node_t *tree = new_tree();
  append_tree_word(tree, "mode", mode_words, mode);
  return succeed(conn, tree, "Get data successfully.");
}

int api_vxlan_get_udp_port(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = MODE_DISABLED, port = 0;
  if (!instance_or_reply(conn) || !enabled_or_reply(client_handle, conn, &mode)) return 0;
  open_error_t rc = get_udp_port(client_handle, mode, &port);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  node_t *tree = new_tree();
  append_int(tree, "udpPort", port);
  return succeed(conn, tree, "Get data successfully.");
}

/* Calls visit(tenantId, config, position) for each tenant, positions from 1 on, until a visit returns false.
 * OPEN_E_FAIL is the end of the walk and the result when no visit has; any other failure is returned as well.
 */
template <typename Visit>
static open_error_t walk_tenants(openapiClientHandle_t *client_handle, uint32_t mode, Visit visit) {
  uint32_t tenantId = 0;
  open_l2oL3TenantConfig_t config = {};
  open_error_t rc = rpcclt_openapiL2oL3TenantFirstGet(client_handle, INSTANCE, &tenantId, &config);
  for (uint32_t position = 1; rc == OPEN_E_NONE; position++) {
    if (position > MAX_LIST_ENTRIES) return OPEN_E_INTERNAL;
    if (!visit(tenantId, config, position)) return OPEN_E_NONE;
    rc = next_tenant(client_handle, mode, &tenantId, &config);
  }
  return rc;
}

/* In multicast mode the platform has no call that reads one tenant. */
static open_error_t read_tenant(openapiClientHandle_t *client_handle, uint32_t mode, uint32_t wanted,
                                open_l2oL3TenantConfig_t *config) {
  if (mode == MODE_UNICAST) return rpcclt_openapiL2oL3TenantGet(client_handle, wanted, config);
  return walk_tenants(client_handle, mode,
                      [&](uint32_t tenantId, const open_l2oL3TenantConfig_t &found, uint32_t) {
                        if (tenantId == wanted) *config = found;
                        return tenantId != wanted;
                      });
}

int api_vxlan_get_specified_tenant(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t tenantId = 0, mode = MODE_DISABLED;
  open_l2oL3TenantConfig_t config = {};
  if (!tenant_or_reply(conn, &tenantId) || !enabled_or_reply(client_handle, conn, &mode)) return 0;
  open_error_t rc = read_tenant(client_handle, mode, tenantId, &config);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  node_t *tree = new_tree();
  append_tenant(append_branch(tree, "tenant"), tenantId, config);
  return succeed(conn, tree, "Get data successfully.");
}

int api_vxlan_get_tenant_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = MODE_DISABLED;
  if (!instance_or_reply(conn) || !enabled_or_reply(client_handle, conn, &mode)) return 0;
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

int api_vxlan_get_src(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = MODE_DISABLED, ifNum = 0, id = 0;
  if (!instance_or_reply(conn) || !enabled_or_reply(client_handle, conn, &mode)) return 0;
  open_error_t rc = get_source(client_handle, mode, &ifNum);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  const char *type = "interface";
  if (ifNum == 0) {
    type = "none";
  } else if (rpcclt_openapiRtrIntfLoopbackIdGet(client_handle, ifNum, &id) == OPEN_E_NONE) {
    type = "loopback";
  } else if (rpcclt_openapiRtrIntfVlanIdGet(client_handle, ifNum, &id) == OPEN_E_NONE) {
    type = "vlan";
  } else {
    id = ifNum;
  }
  node_t *tree = new_tree();
  node_t *source = append_branch(tree, "sourceInterface");
  append_tree_string(source, "type", "type", type);
  append_int(source, "id", id);
  return succeed(conn, tree, "Get data successfully.");
}

static void append_address(node_t *tree, const char *name, uint32_t address) {
  char text[IP_TEXT_SIZE] = {};
  convert_ipv4_with_uint32_to_ip_string(address, text);
  append_tree_string(tree, name, name, text);
}

/* The remote VTEPs are the same for all tenants, so that those of the first one are the group. */
int api_vxlan_get_unicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  if (!instance_or_reply(conn)) return 0;
  node_t *tree = new_tree();
  node_t *groups = append_branch(tree, "unicastGroups");
  if (!mode_is_or_reply(client_handle, conn, MODE_UNICAST, tree)) return 0;

  uint32_t tenantId = 0;
  open_l2oL3TenantConfig_t config = {};
  open_error_t rc = rpcclt_openapiL2oL3TenantNextGet(client_handle, 0, &tenantId, &config);
  bool found = rc == OPEN_E_NONE;
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

/* Appends the groups of the tenants that have one. OPEN_E_PARAM when a tenant's cannot be read, which is also
 * what comes of having no tenant. */
static open_error_t append_multicast_groups(openapiClientHandle_t *client_handle, node_t *groups) {
  uint32_t tenantId = 0, listed = 0, visited = 0;
  open_l2oL3TenantConfig_t config = {};
  rpcclt_openapiL2oL3TenantFirstGet(client_handle, INSTANCE, &tenantId, &config);
  do {
    if (++visited > MAX_LIST_ENTRIES) return OPEN_E_INTERNAL;
    uint32_t address = 0;
    if (rpcclt_openapiL2oL3IPMCGet(client_handle, INSTANCE, tenantId, &address) != OPEN_E_NONE)
      return OPEN_E_PARAM;
    if (address == 0) continue;
    node_t *entry = append_entry(groups, ++listed, "multicastGroup");
    append_int(entry, "tenantId", tenantId);
    append_address(entry, "address", address);
  } while (rpcclt_openapiL2oL3TenantNextGetZYL(client_handle, INSTANCE, &tenantId, &config) == OPEN_E_NONE);
  return OPEN_E_NONE;
}

int api_vxlan_get_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn) {
  if (!instance_or_reply(conn)) return 0;
  node_t *tree = new_tree();
  node_t *groups = append_branch(tree, "multicastGroups");
  uint32_t address = 0;
  rpcclt_openapiL2oL3DefaultIPMCGetZYL(client_handle, INSTANCE, &address);
  if (address == 0) {
    append_tree_string(groups, "default_multicastGroup", "default_multicastGroup", "none");
  } else {
    append_address(groups, "default_multicastGroup", address);
  }
  if (!mode_is_or_reply(client_handle, conn, MODE_MULTICAST, tree)) return 0;

  open_error_t rc = append_multicast_groups(client_handle, groups);
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Creating a tenant ---------------------------------------------------------------------------------- */

/* Setting the source again makes it hold for a tenant that was added after it. */
static open_error_t renew_source(openapiClientHandle_t *client_handle) {
  uint32_t port = 0;
  open_error_t rc = rpcclt_openapiL2oL3VxlanSourcePortGet(client_handle, &port);
  return rc == OPEN_E_NONE && port != 0 ? rpcclt_openapiL2oL3VxlanSourcePortSet(client_handle, port) : rc;
}

/* In unicast mode a tenant is made step by step. One that this request has made is removed when a step fails.
 */
static open_error_t create_unicast_tenant(openapiClientHandle_t *client_handle, uint32_t tenantId,
                                          uint32_t vlanId) {
  open_l2oL3TenantConfig_t config = {};
  bool is_new = rpcclt_openapiL2oL3TenantGet(client_handle, tenantId, &config) != OPEN_E_NONE;
  if (is_new) {
    config = {};
    config.tunnelType = OPEN_L2OL3_TUNNEL_VXLAN;
    open_error_t rc = rpcclt_openapiL2oL3TenantCreate(client_handle, INSTANCE, tenantId, &config);
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
  uint32_t tenantId = 0, vlanId = 0, mode = MODE_DISABLED;
  if (!tenant_and_vlan_or_reply(conn, &tenantId, &vlanId)) return 0;
  if (!tenant_valid_or_reply(conn, tenantId) || !vlan_valid_or_reply(client_handle, conn, vlanId)) return 0;
  open_error_t rc = openapiVlanCreatedCheck(client_handle, vlanId);
  if (rc == OPEN_E_PARAM) return refuse(conn, 1, "The value of parameter is invalid.");
  if (rc == OPEN_E_FAIL) return refuse(conn, 2, "VLAN %d not yet created.", vlanId);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (!enabled_or_reply(client_handle, conn, &mode)) return 0;

  rc = mode == MODE_MULTICAST ? rpcclt_openapiL2oL3TenantSet(client_handle, INSTANCE, tenantId, vlanId, 1)
                              : create_unicast_tenant(client_handle, tenantId, vlanId);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Create VxLAN tenant %d successfully.", tenantId);
}

/* --- Routes --------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_DELETE, "/vxlan/%[0-9]/tenant/%[0-9]/vlan/%[0-9]%s", 3, nullptr,
     api_vxlan_delete_specified_tenant},
    {REQUEST_METHOD_DELETE, "/vxlan/%[0-9]/%10[sourceIntf]%s", 2, "sourceIntf", api_vxlan_delete_src},
    {REQUEST_METHOD_DELETE, "/vxlan/%[0-9]/%12[unicastGroup]%s", 2, "unicastGroup",
     api_vxlan_delete_unicast_group},
    {REQUEST_METHOD_DELETE, "/vxlan/%[0-9]/%14[multicastGroup]%s", 2, "multicastGroup",
     api_vxlan_delete_default_multicast_group},
    {REQUEST_METHOD_DELETE, "/vxlan/%[0-9]/tenant/%[0-9]/%14[multicastGroup]%s", 3, "multicastGroup",
     api_vxlan_delete_multicast_group},
    {REQUEST_METHOD_PUT, "/vxlan/%[0-9]/%4[mode]%s", 2, "mode", api_vxlan_update_mode},
    {REQUEST_METHOD_PUT, "/vxlan/%[0-9]/%7[udpPort]%s", 2, "udpPort", api_vxlan_update_udp_port},
    {REQUEST_METHOD_PUT, "/vxlan/%[0-9]/sourceIntf/%2[if]%s", 2, "if", api_vxlan_update_src_if},
    {REQUEST_METHOD_PUT, "/vxlan/%[0-9]/sourceIntf/%8[loopback]%s", 2, "loopback",
     api_vxlan_update_src_loopback},
    {REQUEST_METHOD_PUT, "/vxlan/%[0-9]/sourceIntf/%4[vlan]%s", 2, "vlan", api_vxlan_update_src_vlan},
    {REQUEST_METHOD_PUT, "/vxlan/%[0-9]/%12[unicastGroup]%s", 2, "unicastGroup",
     api_vxlan_update_unicast_group},
    {REQUEST_METHOD_PUT, "/vxlan/%[0-9]/%14[multicastGroup]%s", 2, "multicastGroup",
     api_vxlan_update_default_multicast_group},
    {REQUEST_METHOD_PUT, "/vxlan/%[0-9]/tenant/%[0-9]/%14[multicastGroup]%s", 3, "multicastGroup",
     api_vxlan_update_multicast_group},
    {REQUEST_METHOD_GET, "/vxlan/%[0-9]/%4[mode]%s", 2, "mode", api_vxlan_get_mode},
    {REQUEST_METHOD_GET, "/vxlan/%[0-9]/%7[udpPort]%s", 2, "udpPort", api_vxlan_get_udp_port},
    {REQUEST_METHOD_GET, "/vxlan/%[0-9]/tenant/%[0-9]%s", 2, nullptr, api_vxlan_get_specified_tenant},
    {REQUEST_METHOD_GET, "/vxlan/%[0-9]/%6[tenant]%s", 2, "tenant", api_vxlan_get_tenant_list},
    {REQUEST_METHOD_GET, "/vxlan/%[0-9]/%10[sourceIntf]%s", 2, "sourceIntf", api_vxlan_get_src},
    {REQUEST_METHOD_GET, "/vxlan/%[0-9]/%12[unicastGroup]%s", 2, "unicastGroup", api_vxlan_get_unicast_group},
    {REQUEST_METHOD_GET, "/vxlan/%[0-9]/%14[multicastGroup]%s", 2, "multicastGroup",
     api_vxlan_get_multicast_group},
    {REQUEST_METHOD_POST, "/vxlan/%[0-9]/tenant/%[0-9]/vlan/%[0-9]%s", 3, nullptr, api_vxlan_create_tenant},
};

int vxlan_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}
