#include "engine/rest_web_request_hdr.h"

#include "engine/rest_engine_session_hdr.h"
#include "engine/rest_settings.h"
#include "modules/rest_module_acl.h"
#include "modules/rest_module_base.h"
#include "modules/rest_module_bgp.h"
#include "modules/rest_module_boxs.h"
#include "modules/rest_module_help.h"
#include "modules/rest_module_interface.h"
#include "modules/rest_module_lag.h"
#include "modules/rest_module_logging.h"
#include "modules/rest_module_login.h"
#include "modules/rest_module_pml.h"
#include "modules/rest_module_process.h"
#include "modules/rest_module_routing.h"
#include "modules/rest_module_script.h"
#include "modules/rest_module_ssh.h"
#include "modules/rest_module_system.h"
#include "modules/rest_module_tcam.h"
#include "modules/rest_module_transfer.h"
#include "modules/rest_module_vlan.h"
#include "modules/rest_module_vxlan.h"
#include "modules/rest_startupcfg_info.h"
#include "platform/api/l7proc.h"

#include <stdio.h>
#include <string.h>
#include <unistd.h>

openapiClientHandle_t client_handle;
int32_t auth_pass = 1;

/* --- Modules ------------------------------------------------------------------------------------------- */

struct rest_module {
  const char *name; /* first segment of the URI, exactly */
  int (*handler)(openapiClientHandle_t *client_handle, mg_connection *conn);
};

static const rest_module modules[] = {
    {"login", login_api_handler},     {"vlans", vlan_api_handler},    {"if", interface_api_handler},
    {"base", base_api_handler},       {"lag", lag_api_handler},       {"routing", routing_api_handler},
    {"logging", logging_api_handler}, {"system", system_api_handler}, {"bgp", bgp_api_handler},
    {"tcam", tcam_api_handler},       {"boxs", boxs_api_handler},     {"download", transfer_api_handler},
    {"upload", transfer_api_handler}, {"vxlan", vxlan_api_handler},   {"ssh", ssh_api_handler},
    {"script", script_api_handler},   {"pml", pml_api_handler},       {"process", process_api_handler},
    {"acl", acl_api_handler},         {"help", help_api_handler},
};

static const rest_module *find_module(const char *name) {
  for (const rest_module &module : modules) {
    if (strcmp(module.name, name) == 0) return &module;
  }
  return nullptr;
}

/* --- Requests ------------------------------------------------------------------------------------------ */

/* Logging in and the help pages are open to everyone. */
static bool needs_session(const char *module_name, request_method_t method) {
  if (strcmp(module_name, "login") == 0 && method == REQUEST_METHOD_POST) return false;
  return strcmp(module_name, "help") != 0;
}

int auth_session(mg_connection *conn) {
  char uri_mod_name[REQUEST_URI_SIZE], sessionKey[SESSION_KEY_SIZE];
  auth_pass = 1;
  get_module_name(conn->uri, uri_mod_name);
  request_method_t method = parse_request_method(conn);
  clear_expired_session();
  if (needs_session(uri_mod_name, method)) {
    parse_session_key(conn, sessionKey);
    if (get_session_id(conn->remote_ip, sessionKey) == 0) return 1;
  }
  auth_pass = 0;
  return 1;
}

static void refuse_unauthorised(mg_connection *conn, const char *sessionKey) {
  if (sessionKey[0] == '\0') {
    send_response(conn, RESULT_NO_SESSION_KEY, "Null Session Key", nullptr);
  } else {
    send_response(conn, RESULT_SESSION_ENDED, "Session time out or log out. Please log in again.", nullptr);
  }
}

static void call_module(mg_connection *conn, const char *module_name) {
  const rest_module *module = find_module(module_name);
  if (module == nullptr) {
    send_response(conn, RESULT_UNKNOWN_MODULE, "The module name dose not exist.", nullptr);
  } else {
    module->handler(&client_handle, conn);
  }
}

int api_access_handler(mg_connection *conn) {
  char uri_mod_name[REQUEST_URI_SIZE], sessionKey[SESSION_KEY_SIZE];
  get_module_name(conn->uri, uri_mod_name);
  request_method_t method = parse_request_method(conn);
  parse_session_key(conn, sessionKey);

  if (auth_pass == 1) {
    refuse_unauthorised(conn, sessionKey);
    return 1;
  }
  if (!needs_session(uri_mod_name, method)) {
    call_module(conn, uri_mod_name);
    return 1;
  }
  /* A body that overrides the method of a POST /login was not there yet when the request was let in. */
  if (sessionKey[0] == '\0' && strcmp(uri_mod_name, "login") == 0) {
    refuse_unauthorised(conn, sessionKey);
    return 1;
  }
  uint32_t ssid = sessionKey[0] == '\0' ? 0 : get_session_id(conn->remote_ip, sessionKey);
  if (sessionKey[0] != '\0' && ssid == 0) {
    send_response(conn, 1, "Authentication failed.", nullptr);
    return 1;
  }
  call_module(conn, uri_mod_name);
  if (ssid != 0) update_last_activity_time(ssid);
  return 1;
}

/* While the body of a request is on its way, other requests may come in and set auth_pass. What MG_AUTH found
 * therefore stays with its own request; without that, a client could borrow the session of another. */
static int authorise(mg_connection *conn) {
  int result = auth_session(conn);
  conn->connection_param = auth_pass == 0 ? &auth_pass : nullptr;
  return result;
}

static int serve(mg_connection *conn) {
  auth_pass = conn->connection_param == nullptr ? 1 : 0;
  return api_access_handler(conn);
}

int evt_handler(mg_connection *conn, enum mg_event ev) {
  if (ev == MG_AUTH) return authorise(conn);
  if (ev == MG_REQUEST) return serve(conn);
  return MG_FALSE;
}

/* --- Start-up ------------------------------------------------------------------------------------------ */

/* A server that cannot listen goes on (its other listeners may serve), but says so. */
static void set_server_option(mg_server *server, const char *name, const std::string &value) {
  const char *error = mg_set_option(server, name, value.c_str());
  if (error == nullptr) return;
  l7proc_logf(L7PROC_ERROR, 0, "rest_web_request_hdr.c", __LINE__, "%s: %s=%s", error, name, value.c_str());
}

mg_server *start_engine(void) {
  l7proc_crashlog_register();
  open_error_t result = openapiClientRegister("restful_api_engine", &client_handle);
  if (result != OPEN_E_NONE) {
    printf("\nFailed to initialize RPC to OpEN. Exiting (result = %d)\n", result);
    fflush(stdout);
    return nullptr;
  }
  while (rpcclt_openapiConnectivityCheck(&client_handle) != OPEN_E_NONE) sleep(1);

  l7proc_logf(L7PROC_INFO, 0, "rest_web_request_hdr.c", 251, "Starting RESTful API Engine application");
  printf("\n");
  fflush(stdout);

  initialize_transfer_variables();
  mg_server *server = mg_create_server(nullptr, evt_handler);
  if (server == nullptr) return nullptr;
  set_server_option(server, "listening_port", rest_settings().listening_port);
  set_server_option(server, "document_root", rest_settings().root);
  return server;
}
