/* The routes of /vxlan, and what concerns the instance as a whole: mode, UDP port, source interface. Some
 * things the platform does by one call in unicast mode and by another, whose name ends in ZYL, in multicast
 * mode. */
#include "modules/rest_module_vxlan.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "modules/rest_module_vxlan_request.h"
#include "platform/api/openapi_if.h"
#include "platform/api/openapi_routing.h"
#include "platform/api/openapi_vlan.h"
#include "platform/api/openapi_vxlan.h"

enum { UDP_PORT_MAX = 65535 };

static const enum_text mode_words[] = {
    {VXLAN_MODE_DISABLED, "disable"},
    {VXLAN_MODE_UNICAST, "unicast"},
    {VXLAN_MODE_MULTICAST, "multicast"},
};

/* --- Calls that depend on the mode ---------------------------------------------------------------------- */

static open_error_t get_udp_port(openapiClientHandle_t *client_handle, uint32_t mode, uint32_t *port) {
  return mode == VXLAN_MODE_UNICAST
             ? rpcclt_openapiL2oL3SwitchVxlanUdpDestPortGet(client_handle, port)
             : rpcclt_openapiL2oL3SwitchVxlanUdpDstPortGetZYL(client_handle, VXLAN_INSTANCE, port);
}

static open_error_t set_udp_port(openapiClientHandle_t *client_handle, uint32_t mode, uint32_t port) {
  return mode == VXLAN_MODE_UNICAST
             ? rpcclt_openapiL2oL3SwitchVxlanUdpDestPortSet(client_handle, port)
             : rpcclt_openapiL2oL3SwitchVxlanUdpDstPortSetZYL(client_handle, VXLAN_INSTANCE, port);
}

static open_error_t get_source(openapiClientHandle_t *client_handle, uint32_t mode, uint32_t *ifNum) {
  return mode == VXLAN_MODE_UNICAST
             ? rpcclt_openapiL2oL3VxlanSourcePortGet(client_handle, ifNum)
             : rpcclt_openapiL2oL3VxlanSourcePortGetZYL(client_handle, VXLAN_INSTANCE, ifNum);
}

static open_error_t set_source(openapiClientHandle_t *client_handle, uint32_t mode, uint32_t ifNum) {
  return mode == VXLAN_MODE_UNICAST
             ? rpcclt_openapiL2oL3VxlanSourcePortSet(client_handle, ifNum)
             : rpcclt_openapiL2oL3VxlanSourcePortSetZYL(client_handle, VXLAN_INSTANCE, ifNum);
}

/* --- The mode ------------------------------------------------------------------------------------------- */

/* Multicast is cleared only when clearing unicast fails. */
static open_error_t disable_tunnels(openapiClientHandle_t *client_handle) {
  open_error_t rc = rpcclt_openapiL2oL3SwitchTunnelModeSet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, 0);
  if (rc == OPEN_E_NONE) return rc;
  return rpcclt_openapiL2oL3SwitchTunnelMultiModeSet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, 0);
}

int api_vxlan_update_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  int32_t value = 0;
  uint32_t unicast = 0, multicast = 0;
  if (!vxlan_instance_or_reply(conn) || !number_or_reply(conn, "value", &value)) return 0;
  if (read_vxlan_mode_flags(client_handle, &unicast, &multicast) != OPEN_E_NONE)
    return fail(conn, OPEN_E_PARAM, nullptr);
  if (value != VXLAN_MODE_DISABLED && (unicast != 0 || multicast != 0))
    return refuse(conn, 2, "Couldn't change vxlan mode if tunnel still running !");

  open_error_t rc = OPEN_E_NONE;
  if (value == VXLAN_MODE_DISABLED) {
    rc = disable_tunnels(client_handle);
  } else if (value == VXLAN_MODE_UNICAST) {
    rc = rpcclt_openapiL2oL3SwitchTunnelModeSet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, 1);
  } else if (value == VXLAN_MODE_MULTICAST) {
    rc = rpcclt_openapiL2oL3SwitchTunnelMultiModeSet(client_handle, OPEN_L2OL3_TUNNEL_VXLAN, 1);
  } else {
    return refuse(conn, 2, "Invalid mode.");
  }
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update VxLAN mode successfully.");
}

int api_vxlan_get_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = VXLAN_MODE_DISABLED;
  if (!vxlan_instance_or_reply(conn) || !vxlan_mode_or_reply(client_handle, conn, &mode)) return 0;
  node_t *tree = new_tree();
  append_tree_word(tree, "mode", mode_words, mode);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- The UDP port --------------------------------------------------------------------------------------- */

int api_vxlan_update_udp_port(openapiClientHandle_t *client_handle, mg_connection *conn) {
  int32_t port = 0;
  uint32_t mode = VXLAN_MODE_DISABLED;
  if (!vxlan_instance_or_reply(conn) || !number_or_reply(conn, "value", &port)) return 0;
  if (port < 1 || port > UDP_PORT_MAX) return refuse(conn, 2, "Invalid udp port.");
  if (!vxlan_enabled_or_reply(client_handle, conn, &mode)) return 0;

  open_error_t rc = set_udp_port(client_handle, mode, static_cast<uint32_t>(port));
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update VxLAN udp port successfully.");
}

int api_vxlan_get_udp_port(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = VXLAN_MODE_DISABLED, port = 0;
  if (!vxlan_instance_or_reply(conn) || !vxlan_enabled_or_reply(client_handle, conn, &mode)) return 0;
  open_error_t rc = get_udp_port(client_handle, mode, &port);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  node_t *tree = new_tree();
  append_tree_number(tree, "udpPort", port);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- The source interface ------------------------------------------------------------------------------- */

int api_vxlan_delete_src(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = VXLAN_MODE_DISABLED;
  if (!vxlan_instance_or_reply(conn) || !vxlan_enabled_or_reply(client_handle, conn, &mode)) return 0;

  open_error_t rc = set_source(client_handle, mode, 0);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete VxLAN source port successfully.");
}

/* How the updates of the source end, whatever named the interface: `found` is the result of looking it up. */
static int update_source(openapiClientHandle_t *client_handle, mg_connection *conn, open_error_t found,
                         uint32_t ifNum) {
  uint32_t mode = VXLAN_MODE_DISABLED;
  if (found != OPEN_E_NONE) return fail(conn, found, nullptr);
  if (!vxlan_enabled_or_reply(client_handle, conn, &mode)) return 0;

  open_error_t rc = set_source(client_handle, mode, ifNum);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update VxLAN source port successfully.");
}

int api_vxlan_update_src_if(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0;
  if (!vxlan_instance_or_reply(conn) || !number_or_reply(conn, "value", &ifNum)) return 0;
  open_error_t found = rpcclt_openapiIntfExistCheck(client_handle, ifNum);
  return update_source(client_handle, conn, found, ifNum);
}

int api_vxlan_update_src_loopback(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t loopbackId = 0, max = 0, ifNum = 0;
  if (!vxlan_instance_or_reply(conn) || !number_or_reply(conn, "value", &loopbackId)) return 0;
  open_error_t rc = rpcclt_openapiDot1LoopbackIdMaxGet(client_handle, &max);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (loopbackId > max) return refuse(conn, 2, "Invalid loopback id.");
  open_error_t found = rpcclt_openapiLoopbackIfNumGet(client_handle, loopbackId, &ifNum);
  return update_source(client_handle, conn, found, ifNum);
}

int api_vxlan_update_src_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t vlanId = 0, max = 0, ifNum = 0;
  if (!vxlan_instance_or_reply(conn) || !number_or_reply(conn, "value", &vlanId)) return 0;
  open_error_t rc = rpcclt_openapiDot1VlanMaxGet(client_handle, &max);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (vlanId == 0 || vlanId > max) return refuse(conn, 2, "VLAN ID not valid.");
  open_error_t found = rpcclt_openapiRtrVlanIntfNumGetZYL(client_handle, vlanId, &ifNum);
  return update_source(client_handle, conn, found, ifNum);
}

int api_vxlan_get_src(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = VXLAN_MODE_DISABLED, ifNum = 0, id = 0;
  if (!vxlan_instance_or_reply(conn) || !vxlan_enabled_or_reply(client_handle, conn, &mode)) return 0;
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
  append_tree_number(source, "id", id);
  return succeed(conn, tree, "Get data successfully.");
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

std::span<const rest_route> vxlan_api_routes(void) {
  return routes;
}
