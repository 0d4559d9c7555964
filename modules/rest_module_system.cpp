/* The system: host name, serial console, telnet server, reloading. Ranges are the platform's. */
#include "modules/rest_module_system.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "platform/api/openapi_system.h"

enum { SERIAL_TIMEOUT_TO_DEFAULT = -1 };

static const enum_text protocol_mode_texts[] = {
    {OPEN_NETWORK_PROTOCOL_INVALID, "Invalid"},
    {OPEN_NETWORK_PROTOCOL_NONE, "None"},
    {OPEN_NETWORK_PROTOCOL_BOOTP, "BOOTP"},
    {OPEN_NETWORK_PROTOCOL_DHCP, "DHCP"},
};

RC_t get_protocol_mode_string_by_eum(uint32_t mode, char *text) {
  return copy_text_by_enum(protocol_mode_texts, static_cast<int32_t>(mode), text);
}

/* --- Reading -------------------------------------------------------------------------------------------- */

/* The platform has one host name, so that there is no object to name. */
static open_error_t get_hostname(openapiClientHandle_t *client_handle, uint32_t, open_buffdesc *name) {
  return rpcclt_openapiSystemHostnameGet(client_handle, name);
}

/* What holds an address in text; INTERNAL when it is none. */
static open_error_t read_address(openapiClientHandle_t *client_handle, const open_inet_addr_t &address,
                                 char *text) {
  RC_t rc = convert_inet_addr_to_ip_string(client_handle, &address, text);
  return rc == RC_TRUE ? OPEN_E_NONE : OPEN_E_INTERNAL;
}

static open_error_t read_service_port_mask(openapiClientHandle_t *client_handle, char *text) {
  open_inet_addr_t mask = {};
  open_error_t rc = rpcclt_openapiServicePortMaskGet(client_handle, &mask);
  if (rc != OPEN_E_NONE) return rc;
  mask.family = OPEN_AF_INET; /* the platform does not say, but it is never another */
  return read_address(client_handle, mask, text);
}

int api_system_get_global_settings(openapiClientHandle_t *client_handle, mg_connection *conn) {
  platform_text hostname;
  uint32_t serial_timeout = 0, telnet_mode = 0;
  char mask[IP_TEXT_SIZE];
  open_error_t rc = hostname.read(client_handle, rpcclt_openapiSystemHostnameSizeGet, get_hostname, 0);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiSerialTimeoutGet(client_handle, &serial_timeout);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiTelnetServerAdminModeGet(client_handle, &telnet_mode);
  if (rc == OPEN_E_NONE) rc = read_service_port_mask(client_handle, mask);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *infomation = append_branch(tree, "infomation");
  append_tree_string(infomation, "hostname", "hostname", hostname.text());
  append_tree_number(infomation, "serial_timeout", serial_timeout);
  append_tree_control(infomation, "telnet_srver_admin_mode", telnet_mode);
  append_tree_string(infomation, "service_port_mask", "service_port_mask", mask);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Changing ------------------------------------------------------------------------------------------- */

int api_system_update_hostname(openapiClientHandle_t *client_handle, mg_connection *conn) {
  request_variable value;
  if (!variable_or_reply(conn, "value", &value)) return 0;
  open_buffdesc name = describe_text(value.text);
  open_error_t rc = rpcclt_openapiSystemHostnameSet(client_handle, &name);
  return answer(conn, rc, nullptr, "Update system hostname successfully.");
}

int api_system_update_serial_timeout(openapiClientHandle_t *client_handle, mg_connection *conn) {
  int32_t minutes = 0;
  if (!number_or_reply(conn, "value", &minutes)) return 0;
  if (minutes == SERIAL_TIMEOUT_TO_DEFAULT) {
    return answer(conn, rpcclt_openapiSerialTimeoutDefaultSet(client_handle), nullptr,
                  "Update system serial timeout to default successfully.");
  }
  open_error_t rc = rpcclt_openapiSerialTimeoutSet(client_handle, static_cast<uint32_t>(minutes));
  return answer(conn, rc, nullptr, "Update system serial timeout successfully.");
}

int api_system_update_telnet_server_admin_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = 0;
  if (!number_or_reply(conn, "value", &mode)) return 0;
  open_error_t rc = rpcclt_openapiTelnetServerAdminModeSet(client_handle, mode);
  return answer(conn, rc, nullptr, "Update system telnet server admin mode successfully.");
}

int api_system_reload(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode = 0;
  if (!number_or_reply(conn, "value", &mode)) return 0;
  if (mode < OPEN_RELOAD || mode > OPEN_RELOAD_FACTORY) return fail(conn, OPEN_E_PARAM, nullptr);
  open_error_t rc = rpcclt_openapiSystemReloadSet(client_handle, mode);
  return answer(conn, rc, nullptr, "Reset the system is starting.");
}

/* --- Not routed ----------------------------------------------------------------------------------------- */

int api_system_update_prompt(openapiClientHandle_t *client_handle, mg_connection *conn) {
  request_variable value;
  if (!variable_or_reply(conn, "value", &value)) return 0;
  open_buffdesc prompt = describe_text(value.text);
  open_error_t rc = rpcclt_openapiSystemPromptSet(client_handle, &prompt);
  return answer(conn, rc, nullptr, "Update system prompt successfully.");
}

struct networkport_info {
  open_inet_addr_t address = {}, mask = {}, gateway = {};
  uint32_t protocol_mode = OPEN_NETWORK_PROTOCOL_INVALID;
};

static open_error_t read_networkport(openapiClientHandle_t *client_handle, networkport_info *info) {
  open_error_t rc = rpcclt_openapiNetworkPortIPv4AddrGet(client_handle, &info->address, &info->mask);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiNetworkPortGatewayIPv4AddrGet(client_handle, &info->gateway);
  if (rc == OPEN_E_NONE)
    rc = rpcclt_openapiNetworkPortIPv4ProtocolModeGet(client_handle, &info->protocol_mode);
  return rc;
}

int api_system_get_networkport_ipv4(openapiClientHandle_t *client_handle, mg_connection *conn) {
  networkport_info info;
  char address[IP_TEXT_SIZE], mask[IP_TEXT_SIZE], gateway[IP_TEXT_SIZE], mode[sizeof "Invalid"];
  open_error_t rc = read_networkport(client_handle, &info);
  if (rc == OPEN_E_NONE) rc = read_address(client_handle, info.address, address);
  if (rc == OPEN_E_NONE) rc = read_address(client_handle, info.mask, mask);
  if (rc == OPEN_E_NONE) rc = read_address(client_handle, info.gateway, gateway);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (get_protocol_mode_string_by_eum(info.protocol_mode, mode) != RC_TRUE)
    return fail(conn, OPEN_E_INTERNAL, nullptr);

  node_t *tree = new_tree();
  node_t *infomation = append_branch(tree, "infomation");
  append_tree_string(infomation, "ip_address", "ip_address", address);
  append_tree_string(infomation, "netmask", "netmask", mask);
  append_tree_string(infomation, "gateway", "gateway", gateway);
  append_tree_string(infomation, "protocol_mode", "protocol_mode", mode);
  return succeed(conn, tree, "Get data successfully.");
}

int api_system_delete_networkport_ipv4_parameters(openapiClientHandle_t *client_handle, mg_connection *conn) {
  open_error_t rc = rpcclt_openapiNetworkPortIPv4ParametersDelete(client_handle);
  return answer(conn, rc, nullptr, "Delete network port IPv4 parameters successfully.");
}

/* Reads a variable that must hold an address. When it does not, the request is answered. */
static bool address_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, const char *name,
                             open_inet_addr_t *address) {
  char text[IP_TEXT_SIZE];
  if (!text_or_reply(conn, name, text)) return false;
  if (convert_ip_string_to_inet_addr(client_handle, text, address) == RC_TRUE) return true;
  send_open_error_response(conn, OPEN_E_PARAM, nullptr);
  return false;
}

int api_system_update_networkport_ipv4_parameters(openapiClientHandle_t *client_handle, mg_connection *conn) {
  open_inet_addr_t address = {}, mask = {}, gateway = {};
  if (!address_or_reply(client_handle, conn, "ip", &address) ||
      !address_or_reply(client_handle, conn, "mask", &mask) ||
      !address_or_reply(client_handle, conn, "gateway", &gateway))
    return 0;
  open_error_t rc = rpcclt_openapiNetworkPortIPv4ParametersSet(client_handle, &address, &mask, &gateway);
  return answer(conn, rc, nullptr, "Update network port IPv4 parameters successfully.");
}

int api_system_update_networkport_ipv4_protocol_mode(openapiClientHandle_t *client_handle,
                                                     mg_connection *conn) {
  uint32_t mode = 0;
  if (!number_or_reply(conn, "value", &mode)) return 0;
  open_error_t rc = rpcclt_openapiNetworkPortIPv4ProtocolModeSet(client_handle, mode);
  return answer(conn, rc, nullptr, "Update network port IPv4 protocol mode successfully.");
}

/* --- Routes --------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_GET, "/system%s", ROUTE_EXACT, nullptr, api_system_get_global_settings},
    {REQUEST_METHOD_PUT, "/system/hostname%s", ROUTE_EXACT, nullptr, api_system_update_hostname},
    {REQUEST_METHOD_PUT, "/system/serialTimeout%s", ROUTE_EXACT, nullptr, api_system_update_serial_timeout},
    {REQUEST_METHOD_PUT, "/system/telnetServerAdminMode%s", ROUTE_EXACT, nullptr,
     api_system_update_telnet_server_admin_mode},
    {REQUEST_METHOD_POST, "/system/reload%s", ROUTE_EXACT, nullptr, api_system_reload},
};

int system_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> system_api_routes(void) {
  return routes;
}
