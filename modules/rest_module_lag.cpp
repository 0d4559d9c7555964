/* Link aggregation groups. The module keeps no state: every operation asks the platform. */
#include "modules/rest_module_lag.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "modules/rest_platform_walk.h"
#include "platform/api/openapi_lag.h"

#include <algorithm>
#include <stdlib.h>

/* --- Helpers -------------------------------------------------------------------------------------------- */

int32_t get_lag_interface_num_by_port_channel_id(openapiClientHandle_t *client_handle,
                                                 int32_t portChannelId) {
  uint32_t ifNum = 0;
  open_error_t rc =
      rpcclt_openapiLagPortChannelIdToIfNumZYL(client_handle, static_cast<uint32_t>(portChannelId), &ifNum);
  return rc == OPEN_E_NONE ? static_cast<int32_t>(ifNum) : 0;
}

int32_t get_port_channel_id_by_lag_interface_num(openapiClientHandle_t *client_handle, int32_t ifNum) {
  uint32_t id = 0;
  rpcclt_openapiLagIfNumToPortChannelIdZYL(client_handle, static_cast<uint32_t>(ifNum), &id);
  return static_cast<int32_t>(id);
}

/* The interface number of a LAG. When there is none the request is answered and the result is false. */
static bool lag_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t lagId,
                         uint32_t *ifNum) {
  int32_t number = get_lag_interface_num_by_port_channel_id(client_handle, static_cast<int32_t>(lagId));
  *ifNum = static_cast<uint32_t>(number);
  if (number != 0) return true;
  send_open_error_response(conn, OPEN_E_PARAM, nullptr);
  return false;
}

/* The leaf `id`. OPEN_E_PARAM when the platform does not know the id. */
static open_error_t append_id(openapiClientHandle_t *client_handle, uint32_t ifNum, node_t *tree) {
  int32_t id = get_port_channel_id_by_lag_interface_num(client_handle, static_cast<int32_t>(ifNum));
  if (id == 0) return OPEN_E_PARAM;
  append_tree_int(tree, "id", "id", id);
  return OPEN_E_NONE;
}

/* --- Reading -------------------------------------------------------------------------------------------- */

static open_error_t append_name(openapiClientHandle_t *client_handle, uint32_t ifNum, node_t *lag) {
  platform_text name;
  open_error_t rc =
      name.read(client_handle, rpcclt_openapiLagNameMaxLengthGet, rpcclt_openapiLagNameGet, ifNum);
  if (rc == OPEN_E_NONE) rc = append_id(client_handle, ifNum, lag);
  if (rc == OPEN_E_NONE) append_tree_string(lag, "name", "name", name.text());
  return rc;
}

static open_error_t append_members(openapiClientHandle_t *client_handle, uint32_t ifNum, node_t *members) {
  uint32_t max = 0;
  open_error_t rc = rpcclt_openapiLagMaxMemberCountGet(client_handle, &max);
  if (rc != OPEN_E_NONE) return rc;
  heap_array<uint32_t> ports(static_cast<uint32_t *>(calloc(std::max(max, 1u), sizeof(uint32_t))));
  if (!ports) return OPEN_E_INTERNAL;
  uint32_t count = max;
  rc = rpcclt_openapiLagMembersGet(client_handle, ifNum, &count, ports.get());
  if (rc != OPEN_E_NONE) return rc;
  count = std::min<uint32_t>({count, max, MAX_LIST_ENTRIES});
  for (uint32_t i = 0; i < count; i++) {
    append_tree_int(append_entry(members, i + 1, "member"), "portNum", "portNum", static_cast<int>(ports[i]));
  }
  return OPEN_E_NONE;
}

int api_lag_get_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t lagId = 0, ifNum = 0;
  if (!uri_numbers_or_reply(conn, "/lag/%[0-9]", {&lagId})) return 0;
  if (!lag_or_reply(client_handle, conn, lagId, &ifNum)) return 0;
  node_t *tree = new_tree();
  node_t *lag = append_branch(tree, "lag_interface");
  open_error_t rc = append_name(client_handle, ifNum, lag);
  if (rc == OPEN_E_NONE) rc = append_members(client_handle, ifNum, append_branch(lag, "members"));
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

int api_lag_get_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  node_t *tree = new_tree();
  node_t *lags = append_branch(tree, "lag_interfaces");
  uint32_t first = 0;
  /* A switch without LAGs has an empty list, however the platform says so. */
  if (rpcclt_openapiIfFirstGet(client_handle, OPEN_INTF_TYPE_LAG, OPEN_INTF_STATE_ANY, &first) != OPEN_E_NONE)
    return succeed(conn, tree, "Get data successfully.");

  auto append = [&](uint32_t ifNum, uint32_t position) {
    return append_id(client_handle, ifNum, append_entry(lags, position, "lag_interface"));
  };
  open_error_t rc = walk_interfaces(client_handle, OPEN_INTF_TYPE_LAG, first, append);
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Members -------------------------------------------------------------------------------------------- */

typedef open_error_t (*member_setter_t)(openapiClientHandle_t *client_handle, uint32_t ifNum, uint32_t port);

/* Adds or removes the port in the URI. `id` becomes the LAG's id as the answer is to name it. False when the
 * request is answered. */
static bool change_member_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn,
                                   member_setter_t change, uint32_t *port, int32_t *id) {
  uint32_t lagId = 0, ifNum = 0;
  if (!uri_numbers_or_reply(conn, "/lag/%[0-9]/port/%[0-9]", {&lagId, port})) return false;
  if (!lag_or_reply(client_handle, conn, lagId, &ifNum)) return false;
  open_error_t rc = change(client_handle, ifNum, *port);
  if (rc == OPEN_E_NONE) {
    *id = get_port_channel_id_by_lag_interface_num(client_handle, static_cast<int32_t>(ifNum));
    if (*id != 0) return true;
    rc = OPEN_E_PARAM;
  }
  fail(conn, rc, nullptr);
  return false;
}

int api_lag_create_specified_id_member(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t port = 0;
  int32_t id = 0;
  if (!change_member_or_reply(client_handle, conn, rpcclt_openapiLagPortAdd, &port, &id)) return 0;
  return succeed(conn, nullptr, "Configure port %d to LAG %d successfully.", port, id);
}

int api_lag_delete_specified_id_member(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t port = 0;
  int32_t id = 0;
  if (!change_member_or_reply(client_handle, conn, rpcclt_openapiLagPortDelete, &port, &id)) return 0;
  return succeed(conn, nullptr, "Delete port %d from LAG %d successfully.", port, id);
}

/* --- LAGs ----------------------------------------------------------------------------------------------- */

typedef open_error_t (*lag_setter_t)(openapiClientHandle_t *client_handle, uint32_t ifNum);

static int change_lag(openapiClientHandle_t *client_handle, mg_connection *conn, lag_setter_t change,
                      const char *verb) {
  uint32_t lagId = 0, ifNum = 0;
  if (!uri_numbers_or_reply(conn, "/lag/%[0-9]", {&lagId})) return 0;
  if (!lag_or_reply(client_handle, conn, lagId, &ifNum)) return 0;
  open_error_t rc = change(client_handle, ifNum);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "%s LAG %d successfully.", verb, lagId);
}

int api_lag_create_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return change_lag(client_handle, conn, rpcclt_openapiLagCreateZYL, "Create");
}

int api_lag_delete_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return change_lag(client_handle, conn, rpcclt_openapiLagDeleteZYL, "Delete");
}

/* --- Routes --------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_DELETE, "/lag/%[0-9]/port/%[0-9]%s", 2, nullptr, api_lag_delete_specified_id_member},
    {REQUEST_METHOD_GET, "/lag/%[0-9]%s", 1, nullptr, api_lag_get_specified_id},
    {REQUEST_METHOD_GET, "/lag%s", ROUTE_EXACT, nullptr, api_lag_get_list},
    {REQUEST_METHOD_POST, "/lag/%[0-9]/port/%[0-9]%s", 2, nullptr, api_lag_create_specified_id_member},
};

int lag_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> lag_api_routes(void) {
  return routes;
}
