/* SSH server settings. Upper limits are the platform's. */
#include "modules/rest_module_ssh.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "platform/api/openapi_ssh.h"

enum { MAX_SESSIONS_TO_DEFAULT = -1 };

/* What clients call the protocol versions, and what the platform does. */
enum { VERSION_1 = 1, VERSION_2 = 2, VERSION_BOTH = 3 };

static const enum_text version_texts[] = {
    {OPEN_SSH_PROTO_1, "1"},
    {OPEN_SSH_PROTO_2, "2"},
    {OPEN_SSH_PROTO_BOTH, "1 and 2"},
};

/* --- Reading -------------------------------------------------------------------------------------------- */

struct ssh_settings {
  uint32_t admin_mode = 0, version = 0, active_sessions = 0, max_sessions = 0, timeout = 0;
};

static open_error_t read_settings(openapiClientHandle_t *client_handle, ssh_settings *ssh) {
  open_error_t rc = rpcclt_openapiSSHAdminModeGet(client_handle, &ssh->admin_mode);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiSSHProtocolVersionGet(client_handle, &ssh->version);
  if (rc == OPEN_E_NONE && ssh->version > OPEN_SSH_PROTO_BOTH) rc = OPEN_E_INTERNAL;
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiSSHActiveSessionsGet(client_handle, &ssh->active_sessions);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiSSHMaxSessionsGet(client_handle, &ssh->max_sessions);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiSSHSessionTimeoutGet(client_handle, &ssh->timeout);
  return rc;
}

int api_ssh_get_global_settings(openapiClientHandle_t *client_handle, mg_connection *conn) {
  ssh_settings ssh;
  open_error_t rc = read_settings(client_handle, &ssh);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *infomation = append_branch(tree, "infomation");
  append_tree_control(infomation, "admin_mode", ssh.admin_mode);
  append_tree_word(infomation, "version", version_texts, ssh.version);
  append_tree_number(infomation, "active_sessions", ssh.active_sessions);
  append_tree_number(infomation, "max_sessions", ssh.max_sessions);
  append_tree_number(infomation, "timeout", ssh.timeout);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Changing ------------------------------------------------------------------------------------------- */

/* The successful answers have, on purpose, an empty data tree. */

/* Reads the number "value", which must be in a range. When it is not, the request is answered. */
static bool value_or_reply(mg_connection *conn, int32_t min, int32_t max, int32_t *value) {
  if (!number_or_reply(conn, "value", value)) return false;
  if (*value >= min && *value <= max) return true;
  send_open_error_response(conn, OPEN_E_PARAM, nullptr);
  return false;
}

int api_ssh_update_admin_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  int32_t mode = 0;
  if (!value_or_reply(conn, OPEN_DISABLE, OPEN_ENABLE, &mode)) return 0;
  open_error_t rc = rpcclt_openapiSSHAdminModeSet(client_handle, static_cast<uint32_t>(mode));
  return answer(conn, rc, new_tree(), "Update SSH admin mode successfully.");
}

int api_ssh_update_max_sessions(openapiClientHandle_t *client_handle, mg_connection *conn) {
  int32_t sessions = 0;
  if (!value_or_reply(conn, MAX_SESSIONS_TO_DEFAULT, INT32_MAX, &sessions)) return 0;
  open_error_t rc = sessions == MAX_SESSIONS_TO_DEFAULT
                        ? rpcclt_openapiSSHMaxSessionsDefaultSet(client_handle)
                        : rpcclt_openapiSSHMaxSessionsSet(client_handle, static_cast<uint32_t>(sessions));
  return answer(conn, rc, new_tree(), "Update SSH maximum sessions successfully.");
}

int api_ssh_update_protocol_version(openapiClientHandle_t *client_handle, mg_connection *conn) {
  int32_t version = 0;
  if (!value_or_reply(conn, VERSION_1, VERSION_BOTH, &version)) return 0;
  uint32_t proto = static_cast<uint32_t>(version - VERSION_1); /* the same order */
  open_error_t rc = rpcclt_openapiSSHProtocolVersionSet(client_handle, proto);
  return answer(conn, rc, new_tree(), "Update SSH protocol version successfully.");
}

int api_ssh_update_session_timeout(openapiClientHandle_t *client_handle, mg_connection *conn) {
  int32_t minutes = 0;
  if (!value_or_reply(conn, 0, INT32_MAX, &minutes)) return 0;
  open_error_t rc = rpcclt_openapiSSHSessionTimeoutSet(client_handle, static_cast<uint32_t>(minutes));
  return answer(conn, rc, new_tree(), "Update SSH session timeout successfully.");
}

/* --- Routes --------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_GET, "/ssh%s", ROUTE_EXACT, nullptr, api_ssh_get_global_settings},
    {REQUEST_METHOD_PUT, "/ssh/adminMode%s", ROUTE_EXACT, nullptr, api_ssh_update_admin_mode},
    {REQUEST_METHOD_PUT, "/ssh/maxSessions%s", ROUTE_EXACT, nullptr, api_ssh_update_max_sessions},
    {REQUEST_METHOD_PUT, "/ssh/protoVersion%s", ROUTE_EXACT, nullptr, api_ssh_update_protocol_version},
    {REQUEST_METHOD_PUT, "/ssh/timeout%s", ROUTE_EXACT, nullptr, api_ssh_update_session_timeout},
};

int ssh_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> ssh_api_routes(void) {
  return routes;
}
