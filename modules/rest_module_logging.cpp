/* Logging: of CLI commands, to the console, by syslog and to its hosts. Severity ranges, the syntax of host
 * addresses and the number of hosts are the platform's. */
#include "modules/rest_module_logging.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "platform/api/openapi_logging.h"

#include <stdio.h>
#include <string.h>

enum { PORT_TO_DEFAULT = -1, PORT_MAX = 65535 };

static const enum_text severity_texts[] = {
    {OPEN_LOG_SEVERITY_UNDEFINED, "Severity level undefined."},
    {OPEN_LOG_SEVERITY_EMERGENCY, "Emergency conditions."},
    {OPEN_LOG_SEVERITY_ALERT, "Alert conditions."},
    {OPEN_LOG_SEVERITY_CRITICAL, "Critical conditions."},
    {OPEN_LOG_SEVERITY_ERROR, "Error conditions."},
    {OPEN_LOG_SEVERITY_WARNING, "Warning conditions."},
    {OPEN_LOG_SEVERITY_NOTICE, "Normal but significant conditions."},
    {OPEN_LOG_SEVERITY_INFO, "Informational messages."},
    {OPEN_LOG_SEVERITY_DEBUG, "Debug-level messages."},
};

enum { SEVERITY_TEXT_SIZE = sizeof "Normal but significant conditions." };

RC_t get_log_severity_level_string_by_eum(int32_t level, char *text) {
  return copy_text_by_enum(severity_texts, level, text);
}

open_error_t get_logging_host_addr_len_max(openapiClientHandle_t *client_handle, uint32_t *length) {
  return rpcclt_openapiLoggingHostMaxAddrLenGet(client_handle, length);
}

/* --- Helpers -------------------------------------------------------------------------------------------- */

/* A logging host as the URI names it. */
struct logging_host {
  char address[REQUEST_URI_SIZE] = {}; /* the text as given */
  /* The same in a buffer as long as the platform's longest address, but never shorter than the text. */
  heap_array<char> buffer;
  open_buffdesc desc = {};
};

/* When the host cannot be described to the platform the request is answered. */
static bool host_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, logging_host *host) {
  uint32_t length = 0;
  uri_fields_t fields;
  if (scan_uri(conn->uri, "/logging/hosts/%[^/]", fields) != 1) {
    send_bad_request(conn, nullptr);
    return false;
  }
  snprintf(host->address, sizeof host->address, "%s", fields[0]);
  open_error_t rc = get_logging_host_addr_len_max(client_handle, &length);
  if (rc == OPEN_E_NONE) {
    size_t size = length > REQUEST_URI_SIZE ? size_t{length} : size_t{REQUEST_URI_SIZE};
    host->buffer.reset(static_cast<char *>(calloc(size, 1)));
    if (!host->buffer) rc = OPEN_E_INTERNAL;
  }
  if (rc != OPEN_E_NONE) {
    send_open_error_response(conn, rc, nullptr);
    return false;
  }
  memcpy(host->buffer.get(), host->address, sizeof host->address);
  host->desc = {length, host->buffer.get()};
  return true;
}

/* Reads "value" as a UDP port, 0 for the default. When it is none the request is answered. */
static bool port_or_reply(mg_connection *conn, uint32_t *port) {
  int32_t value = 0;
  if (!number_or_reply(conn, "value", &value)) return false;
  bool valid = value == PORT_TO_DEFAULT || (value >= 1 && value <= PORT_MAX);
  if (!valid) {
    refuse(conn, 1, "The value of parameter is invalid.");
    return false;
  }
  *port = value == PORT_TO_DEFAULT ? 0 : static_cast<uint32_t>(value);
  return true;
}

/* --- Reading -------------------------------------------------------------------------------------------- */

struct logging_info {
  uint32_t cli_mode = 0, console_mode = 0, syslog_mode = 0, syslog_port = 0, max_hosts = 0;
  char console_severity[SEVERITY_TEXT_SIZE] = {};
};

static open_error_t read_console_severity(openapiClientHandle_t *client_handle, char *text) {
  OPEN_LOG_SEVERITY_t severity = 0;
  open_error_t rc = rpcclt_openapiConsoleLoggingSeverityGet(client_handle, &severity);
  if (rc != OPEN_E_NONE) return rc;
  return get_log_severity_level_string_by_eum(severity, text) == RC_TRUE ? OPEN_E_NONE : OPEN_E_INTERNAL;
}

static open_error_t read_info(openapiClientHandle_t *client_handle, logging_info *info) {
  open_error_t rc = rpcclt_openapiCliCmdLoggingModeGet(client_handle, &info->cli_mode);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiConsoleLoggingModeGet(client_handle, &info->console_mode);
  if (rc == OPEN_E_NONE) rc = read_console_severity(client_handle, info->console_severity);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiSysLogModeGet(client_handle, &info->syslog_mode);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiSysLogPortGet(client_handle, &info->syslog_port);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiMaxLoggingHostsSupportedGet(client_handle, &info->max_hosts);
  return rc;
}

int api_logging_get_info(openapiClientHandle_t *client_handle, mg_connection *conn) {
  logging_info info;
  open_error_t rc = read_info(client_handle, &info);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *logging = append_branch(tree, "logging");
  node_t *cli = append_branch(logging, "cli");
  append_tree_control(cli, "logging_mode", info.cli_mode);
  node_t *console = append_branch(logging, "console");
  append_tree_control(console, "logging_mode", info.console_mode);
  append_tree_string(console, "severity_level", "severity_level", info.console_severity);
  node_t *syslog = append_branch(logging, "syslog");
  append_tree_control(syslog, "logging_mode", info.syslog_mode);
  append_tree_number(syslog, "port", info.syslog_port);
  append_tree_number(logging, "max_logging_hosts", info.max_hosts);
  return succeed(conn, tree, "Get data successfully.");
}

int api_logging_get_host_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t length = 0;
  open_error_t rc = get_logging_host_addr_len_max(client_handle, &length);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  /* One byte more than the platform may fill, so that its text always ends. */
  heap_array<char> address(static_cast<char *>(calloc(size_t{length} + 1, 1)));
  if (!address) return fail(conn, OPEN_E_INTERNAL, nullptr);

  node_t *tree = new_tree();
  node_t *hosts = append_branch(tree, "logging_hosts");
  open_buffdesc desc = {length, address.get()};
  for (uint32_t n = 1; rpcclt_openapiLoggingHostIpAddrNextGet(client_handle, &desc) == OPEN_E_NONE; n++) {
    if (n > MAX_LIST_ENTRIES) return fail(conn, OPEN_E_INTERNAL, tree);
    append_tree_string(append_entry(hosts, n, "logging_host"), "address", "address", address.get());
    desc.size = length; /* the platform made it the length of the text */
  }
  return succeed(conn, tree, "Get data successfully.");
}

int api_logging_get_host_specified_addr(openapiClientHandle_t *client_handle, mg_connection *conn) {
  logging_host host;
  uint32_t port = 0;
  OPEN_LOG_SEVERITY_t severity = OPEN_LOG_SEVERITY_UNDEFINED;
  char severity_text[SEVERITY_TEXT_SIZE];
  if (!host_or_reply(client_handle, conn, &host)) return 0;
  open_error_t rc = rpcclt_openapiLoggingHostPortGet(client_handle, &host.desc, &port);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiLoggingHostSeverityGet(client_handle, &host.desc, &severity);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (get_log_severity_level_string_by_eum(severity, severity_text) != RC_TRUE)
    return fail(conn, OPEN_E_INTERNAL, nullptr);

  node_t *tree = new_tree();
  node_t *info = append_branch(tree, "logging_host");
  append_tree_string(info, "address", "address", host.address);
  append_tree_number(info, "port", port);
  append_tree_string(info, "severity_level", "severity_level", severity_text);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Hosts ---------------------------------------------------------------------------------------------- */

int api_logging_create_host_specified_addr(openapiClientHandle_t *client_handle, mg_connection *conn) {
  logging_host host;
  if (!host_or_reply(client_handle, conn, &host)) return 0;
  open_error_t rc = rpcclt_openapiLoggingHostAdd(client_handle, &host.desc);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Create a logging host %s successfully.", host.address);
}

int api_logging_delete_host_specified_addr(openapiClientHandle_t *client_handle, mg_connection *conn) {
  logging_host host;
  if (!host_or_reply(client_handle, conn, &host)) return 0;
  open_error_t rc = rpcclt_openapiLoggingHostRemove(client_handle, &host.desc);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete a logging host %s successfully.", host.address);
}

int api_logging_update_host_specified_addr_port(openapiClientHandle_t *client_handle, mg_connection *conn) {
  logging_host host;
  uint32_t port = 0;
  if (!port_or_reply(conn, &port) || !host_or_reply(client_handle, conn, &host)) return 0;
  open_error_t rc = rpcclt_openapiLoggingHostPortSet(client_handle, &host.desc, port);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update port of logging host %s%s successfully.", host.address,
                 port == 0 ? " to default" : "");
}

int api_logging_update_host_specified_addr_severity_level(openapiClientHandle_t *client_handle,
                                                          mg_connection *conn) {
  logging_host host;
  int32_t level = 0;
  if (!number_or_reply(conn, "value", &level) || !host_or_reply(client_handle, conn, &host)) return 0;
  open_error_t rc = rpcclt_openapiLoggingHostSeveritySet(client_handle, &host.desc, level);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update severity level of logging host %s successfully.", host.address);
}

/* --- Settings ------------------------------------------------------------------------------------------- */

/* Exactly "0" or "1": this one does not take what merely begins with a number. */
int api_logging_update_cli_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  request_variable value;
  if (!variable_or_reply(conn, "value", &value)) return 0;
  bool on = strcmp(value.text, "1") == 0;
  if (!on && strcmp(value.text, "0") != 0) return fail(conn, OPEN_E_PARAM, nullptr);
  open_error_t rc = rpcclt_openapiCliCmdLoggingModeSet(client_handle, on ? OPEN_ENABLE : OPEN_DISABLE);
  return answer(conn, rc, nullptr, "Update mode of CLI logging successfully.");
}

int api_logging_update_console_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = 0;
  if (!number_or_reply(conn, "value", &mode)) return 0;
  open_error_t rc = rpcclt_openapiConsoleLoggingModeSet(client_handle, mode);
  return answer(conn, rc, nullptr, "Update mode of Console logging successfully.");
}

int api_logging_update_console_severity_level(openapiClientHandle_t *client_handle, mg_connection *conn) {
  int32_t level = 0;
  if (!number_or_reply(conn, "value", &level)) return 0;
  open_error_t rc = rpcclt_openapiConsoleLoggingSeveritySet(client_handle, level);
  return answer(conn, rc, nullptr, "Update severity level of Console logging successfully.");
}

int api_logging_update_syslog_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = 0;
  if (!number_or_reply(conn, "value", &mode)) return 0;
  open_error_t rc = rpcclt_openapiSysLogModeSet(client_handle, mode);
  return answer(conn, rc, nullptr, "Update mode of Syslog successfully.");
}

int api_logging_update_syslog_port(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t port = 0;
  if (!port_or_reply(conn, &port)) return 0;
  open_error_t rc = rpcclt_openapiSysLogPortSet(client_handle, port);
  return answer(conn, rc, nullptr,
                port == 0 ? "Update port of Syslog to default successfully."
                          : "Update port of Syslog successfully.");
}

/* --- Routes --------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_GET, "/logging%s", ROUTE_EXACT, nullptr, api_logging_get_info},
    {REQUEST_METHOD_GET, "/logging/hosts%s", ROUTE_EXACT, nullptr, api_logging_get_host_list},
    {REQUEST_METHOD_GET, "/logging/hosts/%[^/]%s", 1, nullptr, api_logging_get_host_specified_addr},
    {REQUEST_METHOD_POST, "/logging/hosts/%[^/]%s", 1, nullptr, api_logging_create_host_specified_addr},
    {REQUEST_METHOD_DELETE, "/logging/hosts/%[^/]%s", 1, nullptr, api_logging_delete_host_specified_addr},
    {REQUEST_METHOD_PUT, "/logging/cli/mode%s", ROUTE_EXACT, nullptr, api_logging_update_cli_mode},
    {REQUEST_METHOD_PUT, "/logging/console/mode%s", ROUTE_EXACT, nullptr, api_logging_update_console_mode},
    {REQUEST_METHOD_PUT, "/logging/console/severityLevel%s", ROUTE_EXACT, nullptr,
     api_logging_update_console_severity_level},
    {REQUEST_METHOD_PUT, "/logging/syslog/mode%s", ROUTE_EXACT, nullptr, api_logging_update_syslog_mode},
    {REQUEST_METHOD_PUT, "/logging/syslog/port%s", ROUTE_EXACT, nullptr, api_logging_update_syslog_port},
    {REQUEST_METHOD_PUT, "/logging/hosts/%[^/]/%4[port]%s", 2, "port",
     api_logging_update_host_specified_addr_port},
    {REQUEST_METHOD_PUT, "/logging/hosts/%[^/]/%13[severityLevel]%s", 2, "severityLevel",
     api_logging_update_host_specified_addr_severity_level},
};

int logging_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> logging_api_routes(void) {
  return routes;
}
