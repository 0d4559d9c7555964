/* VLANs. The module keeps no state: every operation asks the platform. */
#include "modules/rest_module_vlan.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "modules/rest_platform_walk.h"
#include "platform/api/openapi_vlan.h"

static const int VLAN_NAME_LENGTH_MAX = 32;

static const enum_text participation_words[] = {
    {OPEN_VLAN_PARTICIPATION_MODE_INCLUDE, "Include"},
    {OPEN_VLAN_PARTICIPATION_MODE_AUTO, "Autodetect"},
    {OPEN_VLAN_PARTICIPATION_MODE_EXCLUDE, "Exclude"},
};
const std::span<const enum_text> participation_modes = participation_words;

/* --- Helpers ------------------------------------------------------------------------------------------- */

uint32_t check_vlan_exist(openapiClientHandle_t *client_handle, uint32_t vid) {
  return openapiVlanCreatedCheck(client_handle, vid) == OPEN_E_NONE ? 0 : 1;
}

uint32_t get_vlan_num_max(openapiClientHandle_t *client_handle) {
  uint32_t max = 0;
  rpcclt_openapiDot1VlanMaxGet(client_handle, &max);
  return max;
}

open_error_t get_interface_num_max(openapiClientHandle_t *client_handle, uint32_t *max) {
  *max = 0;
  return openapiMaxInterfaceCountGet(client_handle, max);
}

static bool vlan_id_or_reply(mg_connection *conn, uint32_t *vid) {
  return uri_numbers_or_reply(conn, "/vlans/%[0-9]", {vid});
}

static int refuse_absent_vlan(mg_connection *conn, uint32_t vid) {
  return refuse(conn, 1, "VLAN %d does not exist.", vid);
}

/* --- Operations ---------------------------------------------------------------------------------------- */

int api_vlan_delete_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t vid = 0;
  if (!vlan_id_or_reply(conn, &vid)) return 0;
  if (check_vlan_exist(client_handle, vid) == 1) return refuse_absent_vlan(conn, vid);

  open_error_t rc = rpcclt_openapiVlanDelete(client_handle, vid);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete VLAN %d successfully.", vid);
}

int api_vlan_update_name(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t vid = 0;
  if (!vlan_id_or_reply(conn, &vid)) return 0;
  if (check_vlan_exist(client_handle, vid) == 1) return refuse_absent_vlan(conn, vid);
  request_variable value = read_variable(conn, "value");
  if (value.length < 1 || value.length > VLAN_NAME_LENGTH_MAX) {
    return refuse(conn, 2, "The value of parameter is invalid.");
  }

  open_buffdesc name = describe_text(value.text); /* this call takes the terminator as counted */
  open_error_t rc = rpcclt_openapiVlanNameSet(client_handle, vid, &name);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update name of VLAN %d successfully.", vid);
}

static open_error_t append_member(openapiClientHandle_t *client_handle, uint32_t vid, uint32_t ifNum,
                                  uint32_t position, node_t *interfaces) {
  uint32_t mode = 0, tagging = 0;
  open_error_t rc = rpcclt_openapiVlanIfParticipationGet(client_handle, vid, ifNum, &mode);
  if (rc == OPEN_E_NONE) rc = openapiVlanIfTaggingGet(client_handle, ifNum, vid, &tagging);
  if (rc != OPEN_E_NONE) return rc;

  node_t *entry = append_entry(interfaces, position, "interface");
  append_tree_int(entry, "ifNum", "ifNum", static_cast<int>(ifNum));
  append_tree_word(entry, "participationMode", participation_modes, mode);
  append_tree_int(entry, "isTagging", "isTagging", static_cast<int>(tagging));
  return OPEN_E_NONE;
}

/* Every interface visited counts, so the positions of the members have gaps. */
static open_error_t append_members(openapiClientHandle_t *client_handle, uint32_t vid, node_t *interfaces) {
  return each_interface(client_handle, OPEN_INTF_TYPE_PHY, [&](uint32_t ifNum, uint32_t position) {
    uint32_t is_participating = 0;
    open_error_t rc = openapiVlanIfParticipationStatusGet(client_handle, vid, ifNum, &is_participating);
    if (rc == OPEN_E_NONE && is_participating == 1)
      rc = append_member(client_handle, vid, ifNum, position, interfaces);
    return rc;
  });
}

static open_error_t append_vlan(openapiClientHandle_t *client_handle, uint32_t vid, node_t *tree) {
  platform_text name;
  open_error_t rc = name.read(client_handle, rpcclt_openapiVlanNameLenGet, rpcclt_openapiVlanNameGet, vid);
  if (rc != OPEN_E_NONE) return rc;

  node_t *vlan = append_branch(tree, "vlan");
  append_tree_int(vlan, "id", "id", static_cast<int>(vid));
  append_tree_string(vlan, "name", "name", name.text());
  append_tree_string(vlan, "type", "type",
                     openapiVlanIsStatic(client_handle, vid) == 1 ? "static" : "dynamic");
  return append_members(client_handle, vid, append_branch(vlan, "interfaces"));
}

int api_vlan_get_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t vid = 0;
  if (!vlan_id_or_reply(conn, &vid)) return 0;
  if (check_vlan_exist(client_handle, vid) == 1) return refuse_absent_vlan(conn, vid);

  node_t *tree = new_tree();
  open_error_t rc = append_vlan(client_handle, vid, tree);
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

int api_vlan_get_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  node_t *tree = new_tree();
  node_t *vlans = append_branch(tree, "vlans");
  open_error_t rc = each_vlan(client_handle, [&](uint32_t vid, uint32_t index) {
    append_tree_int(append_entry(vlans, index + 1, "vlan"), "id", "id", static_cast<int>(vid));
    return OPEN_E_NONE;
  });
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

int api_vlan_get_list_pending(openapiClientHandle_t *client_handle, mg_connection *conn) {
  node_t *tree = new_tree();
  node_t *vlans = append_branch(tree, "pending_vlans");
  /* The walk begins after VLAN 1, which is never listed. */
  open_error_t rc = append_pending(client_handle, openapiVlanNextChangedGet, 1, vlans, "vlan", "id");
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

int api_vlan_create_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t vid = 0;
  if (!vlan_id_or_reply(conn, &vid)) return 0;
  if (check_vlan_exist(client_handle, vid) == 0) return refuse(conn, 1, "VLAN %d exist.", vid);
  if (vid == 0 || vid > get_vlan_num_max(client_handle)) return refuse(conn, 2, "VLAN ID not valid.");

  open_error_t rc = rpcclt_openapiVlanCreate(client_handle, vid);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Create VLAN %d successfully.", vid);
}

/* --- Routes -------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_DELETE, "/vlans/%[0-9]%s", 1, nullptr, api_vlan_delete_specified_id},
    {REQUEST_METHOD_PUT, "/vlans/%[0-9]/%4[name]%s", 2, "name", api_vlan_update_name},
    {REQUEST_METHOD_GET, "/vlans/%[0-9]%s", 1, nullptr, api_vlan_get_specified_id},
    {REQUEST_METHOD_GET, "/vlans%s", ROUTE_EXACT, nullptr, api_vlan_get_list},
    {REQUEST_METHOD_GET, "/vlans/pendingChanges%s", ROUTE_EXACT, nullptr, api_vlan_get_list_pending},
    {REQUEST_METHOD_POST, "/vlans/%[0-9]%s", 1, nullptr, api_vlan_create_specified_id},
};

int vlan_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> vlan_api_routes(void) {
  return routes;
}
