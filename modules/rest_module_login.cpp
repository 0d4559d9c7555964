/* REST sessions, from the client's side. The table itself is engine/rest_engine_session_hdr. */
#include "modules/rest_module_login.h"

#include "engine/rest_engine_session_hdr.h"
#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "platform/api/openapi_user.h"

#include <stdio.h>
#include <string.h>

enum {
  TIMEOUT_TO_DEFAULT = -1, /* the value that restores the default time-out */
  TIMEOUT_MINUTES_MIN = 1,
  TIMEOUT_MINUTES_MAX = 160,
};

/* --- Helpers ------------------------------------------------------------------------------------------- */

RC_t authenticate_user(openapiClientHandle_t *client_handle, const char *userName, const char *password) {
  platform_text_256 user, secret;
  snprintf(user.text, user.SIZE, "%s", userName);
  snprintf(secret.text, secret.SIZE, "%s", password);
  open_buffdesc user_desc = describe_text(user.text);
  open_buffdesc secret_desc = describe_text(secret.text);
  OPEN_LOGIN_ACCESS_LEVELS_t level = OPEN_LOGIN_ACCESS_NONE;
  open_error_t rc = rpcclt_openapiAuthenticateUser(client_handle, &user_desc, &secret_desc, &level);
  explicit_bzero(secret.text, sizeof secret.text);
  return rc == OPEN_E_NONE ? RC_TRUE : RC_FALSE;
}

/* Number of the session whose key the request carries; 0 if none. */
static uint32_t session_of_request(mg_connection *conn) {
  char sessionKey[SESSION_KEY_SIZE];
  parse_session_key(conn, sessionKey);
  return get_session_id(conn->remote_ip, sessionKey);
}

/* The time from `then` to `now`; none when the clock has been set back meanwhile. */
static void append_duration(node_t *node, const char *name, uint32_t then, uint32_t now) {
  uint32_t seconds = now > then ? now - then : 0;
  char text[32];
  snprintf(text, sizeof text, "%02u:%02u:%02u", seconds / 3600, seconds / 60 % 60, seconds % 60);
  append_tree_string(node, name, name, text);
}

/* --- Operations ---------------------------------------------------------------------------------------- */

int api_login_get_info(openapiClientHandle_t *, mg_connection *conn) {
  uint32_t timeout = 0;
  get_session_timeout(&timeout);
  node_t *tree = new_tree();
  node_t *infomation = append_branch(tree, "infomation");
  append_tree_int(infomation, "rest_session_max", "rest_session_max", MAX_SESSIONS);
  append_tree_int(infomation, "rest_session_timeout_in_minutes", "rest_session_timeout_in_minutes",
                  static_cast<int>(timeout / 60));
  return succeed(conn, tree, "Get data successfully.");
}

static void append_session(node_t *sessions, uint32_t position, const api_loginsession_t &session,
                           uint32_t now) {
  node_t *entry = append_entry(sessions, position, "rest_session");
  append_tree_string(entry, "user_name", "user_name", session.user_name);
  append_tree_string(entry, "remote_ip", "remote_ip", session.remote_ip);
  append_duration(entry, "login_time", session.login_time, now);
  append_duration(entry, "idle_time", session.last_activity_time, now);
}

int api_login_get_rest_session_list(openapiClientHandle_t *, mg_connection *conn) {
  uint32_t now = static_cast<uint32_t>(rest_time());
  int32_t numbers[MAX_SESSIONS];
  uint32_t count = 0;
  uint32_t own = session_of_request(conn);
  if (own == 0 || update_last_activity_time(own) != RC_TRUE ||
      get_session_id_list(numbers, &count) != RC_TRUE) {
    return fail(conn, OPEN_E_PARAM, nullptr);
  }

  node_t *tree = new_tree();
  node_t *sessions = append_branch(tree, "rest_sessions");
  uint32_t position = 1;
  for (uint32_t i = 0; i < count; i++) {
    api_loginsession_t session;
    if (get_the_session_by_id(static_cast<uint32_t>(numbers[i]), &session) != RC_TRUE) continue;
    append_session(sessions, position++, session, now);
  }
  return succeed(conn, tree, "Get data successfully.");
}

int api_login(openapiClientHandle_t *client_handle, mg_connection *conn) {
  request_variable user = read_variable(conn, "user");
  request_variable password = read_variable(conn, "password");
  RC_t accepted = authenticate_user(client_handle, user.text, password.text);
  explicit_bzero(&password, sizeof password);
  if (accepted != RC_TRUE) return refuse(conn, 1, "Authentication failed.");
  if (session_of_request(conn) != 0) return succeed(conn, nullptr, "You already logged in.");

  unsigned char sessionKey[SESSION_KEY_SIZE];
  if (create_session(user.text, conn->remote_ip, conn->remote_port, sessionKey) != RC_TRUE) {
    return refuse(conn, 2, "The Number of sessions has reached the upper limit. Please try later.");
  }
  node_t *tree = new_tree();
  append_tree_string(tree, "sessionKey", "sessionKey", reinterpret_cast<const char *>(sessionKey));
  return succeed(conn, tree, "Log in successfully.");
}

int api_logout(openapiClientHandle_t *, mg_connection *conn) {
  uint32_t ssid = session_of_request(conn);
  if (ssid == 0) return succeed(conn, nullptr, "You never log in or the session already expired.");
  if (delete_session(ssid) == RC_TRUE) return succeed(conn, nullptr, "Log out successfully.");
  send_exception_error(conn, nullptr);
  return 0;
}

int api_login_update_rest_session_timeout(openapiClientHandle_t *, mg_connection *conn) {
  request_variable value = read_variable(conn, "value");
  int32_t minutes = 0;
  bool is_number = value.length > 0 && check_string_is_number(value.text, &minutes) == RC_TRUE;
  if (is_number && minutes == TIMEOUT_TO_DEFAULT) {
    set_session_timeout(SESSION_TIMEOUT_DEFAULT);
    return succeed(conn, nullptr, "Update timeout value to default for REST Sessions successfully.");
  }
  if (!is_number || minutes < TIMEOUT_MINUTES_MIN || minutes > TIMEOUT_MINUTES_MAX) {
    return refuse(conn, 1, "The value of parameter is invalid.");
  }
  set_session_timeout(static_cast<uint32_t>(minutes) * 60);
  return succeed(conn, nullptr, "Update timeout value for REST Sessions successfully.");
}

/* --- Routes -------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_GET, "/login%s", ROUTE_EXACT, nullptr, api_login_get_info},
    {REQUEST_METHOD_GET, "/login/RESTSessions%s", ROUTE_EXACT, nullptr, api_login_get_rest_session_list},
    {REQUEST_METHOD_POST, "/login%s", ROUTE_EXACT, nullptr, api_login},
    {REQUEST_METHOD_DELETE, "/login%s", ROUTE_EXACT, nullptr, api_logout},
    {REQUEST_METHOD_PUT, "/login/RESTTimeout%s", ROUTE_EXACT, nullptr, api_login_update_rest_session_timeout},
};

int login_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> login_api_routes(void) {
  return routes;
}
