/* Routing. The module keeps no state: every operation asks the platform. */
#include "modules/rest_module_routing.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "modules/rest_interface_addresses.h"
#include "platform/api/openapi_if.h"
#include "platform/api/openapi_routing.h"

#include <string.h>

/* What the variable addrType selects. */
struct address_kind {
  OPEN_INTF_IP_ADDR_TYPE_t method;
  OPEN_AF_t family;
};

static const address_kind address_kinds[] = {
    {OPEN_INTF_IP_ADDR_PRIMARY, OPEN_AF_INET}, {OPEN_INTF_IP_ADDR_SECONDARY, OPEN_AF_INET},
    {OPEN_INTF_IP_ADDR_AUTO, OPEN_AF_INET},    {OPEN_INTF_IP_ADDR_PRIMARY, OPEN_AF_INET6},
    {OPEN_INTF_IP_ADDR_AUTO, OPEN_AF_INET6},
};
static const int32_t ADDRESS_KINDS = sizeof address_kinds / sizeof *address_kinds;

/* --- Interfaces ----------------------------------------------------------------------------------------- */

/* The number of the first VLAN routing interface. Where there is none, or the platform does not tell, it is
 * the number that the first one made will have. */
static uint32_t first_vlan_interface(openapiClientHandle_t *client_handle) {
  const uint32_t FALLBACK = 226;
  uint32_t first = FALLBACK;
  open_error_t rc =
      rpcclt_openapiIfFirstGet(client_handle, OPEN_INTF_TYPE_VLAN_RTR, OPEN_INTF_STATE_ANY, &first);
  return rc == OPEN_E_NONE ? first : FALLBACK;
}

int32_t get_logical_id_by_vlan_routing_interface_num(openapiClientHandle_t *client_handle, uint32_t ifNum) {
  uint32_t type = 0;
  if (rpcclt_openapiRtrIntfTypeGet(client_handle, ifNum, &type) != OPEN_E_NONE) return -1;
  if (type != OPEN_INTF_TYPE_VLAN_RTR) return -2;
  return static_cast<int32_t>(ifNum - first_vlan_interface(client_handle) + 1);
}

int32_t get_vlan_routing_interface_num_by_logical_id(openapiClientHandle_t *client_handle,
                                                     int32_t logical_id) {
  return static_cast<int32_t>(static_cast<uint32_t>(logical_id) + first_vlan_interface(client_handle) - 1);
}

/* The numbers of the interfaces that the URIs of addresses name; without a number in the URI one that no
 * interface has. */
static uint32_t interface_of_uri(const mg_connection *conn) {
  uint32_t ifNum = 0;
  uri_numbers(conn, "/routing/if/%[0-9]", {&ifNum});
  return ifNum;
}

static uint32_t vlan_interface_of_uri(openapiClientHandle_t *client_handle, const mg_connection *conn) {
  uint32_t logical_id = 0;
  uri_numbers(conn, "/routing/vlanRtrIf/%[0-9]", {&logical_id});
  return static_cast<uint32_t>(
      get_vlan_routing_interface_num_by_logical_id(client_handle, static_cast<int32_t>(logical_id)));
}

/* --- Taking an address out of the request --------------------------------------------------------------- */

/* What the variables of a request say of an address. */
struct address_request {
  address_kind kind;
  char text[REQUEST_VALUE_SIZE]; /* the address as given; empty when it was not */
  open_inet_pfx_t prefix;        /* zero where nothing was given */
  uint32_t extArg;
};

static bool obtained(const address_request &request) {
  return request.kind.method == OPEN_INTF_IP_ADDR_AUTO;
}

/* `shortest` is how many characters the variable must have at least; an empty one selects 0. */
static open_error_t read_kind(const mg_connection *conn, int shortest, address_request *request) {
  request_variable variable = read_variable(conn, "addrType");
  if (variable.length < shortest) return OPEN_E_NOT_FOUND;
  int32_t selector = text_to_int(variable.text);
  if (selector < 0 || selector >= ADDRESS_KINDS) return OPEN_E_PARAM;
  request->kind = address_kinds[selector];
  return OPEN_E_NONE;
}

static open_error_t read_address(openapiClientHandle_t *client_handle, const mg_connection *conn,
                                 address_request *request) {
  request_variable variable = read_variable(conn, "addr");
  if (variable.length < 1) return obtained(*request) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
  memcpy(request->text, variable.text, sizeof request->text);
  if (convert_ip_string_to_inet_addr(client_handle, variable.text, &request->prefix.ipAddr) == RC_FALSE)
    return OPEN_E_FAIL;
  bool fits = obtained(*request) || request->prefix.ipAddr.family == request->kind.family;
  return fits ? OPEN_E_NONE : OPEN_E_PARAM;
}

static open_error_t read_prefix_length(const mg_connection *conn, address_request *request) {
  request_variable variable = read_variable(conn, "pfxLen");
  if (variable.length < 1) return obtained(*request) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
  int32_t length = text_to_int(variable.text);
  int32_t most = request->kind.family == OPEN_AF_INET ? 32 : 128;
  if (length < 0 || length > most) return OPEN_E_PARAM;
  if (length == 0 && !obtained(*request)) return OPEN_E_PARAM;
  request->prefix.pfxLen = static_cast<uint32_t>(length);
  return OPEN_E_NONE;
}

static open_error_t read_ext_arg(const mg_connection *conn, address_request *request) {
  request_variable variable = read_variable(conn, "extArg");
  if (variable.length < 0) return OPEN_E_NOT_FOUND;
  int32_t number = text_to_int(variable.text);
  if (number != OPEN_DISABLE && number != OPEN_ENABLE) return OPEN_E_PARAM;
  request->extArg = static_cast<uint32_t>(number);
  return OPEN_E_NONE;
}

/* Reads them all, in the order in which they are answered for. When one is missing or wrong the request is
 * answered and the result is false. */
static bool address_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, int shortest_kind,
                             address_request *request) {
  open_error_t rc = read_kind(conn, shortest_kind, request);
  if (rc == OPEN_E_NONE) rc = read_address(client_handle, conn, request);
  if (rc == OPEN_E_NONE) rc = read_prefix_length(conn, request);
  if (rc == OPEN_E_NONE) rc = read_ext_arg(conn, request);
  if (rc == OPEN_E_NONE) return true;
  send_open_error_response(conn, rc, nullptr);
  return false;
}

/* --- Shared by operations ------------------------------------------------------------------------------- */

static int update_admin_mode(openapiClientHandle_t *client_handle, mg_connection *conn, OPEN_AF_t family,
                             const char *family_word) {
  uint32_t mode = 0;
  if (!number_or_reply(conn, "value", &mode)) return 0;

  open_error_t rc = rpcclt_openapiRtrAdminModeSet(client_handle, family, mode);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update routing admin mode for %s successfully.", family_word);
}

/* `kind_word` is what messages call the kind of interface. */
static int create_ip_address(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t ifNum,
                             int shortest_kind, const char *kind_word) {
  address_request request = {};
  if (!address_or_reply(client_handle, conn, shortest_kind, &request)) return 0;

  open_error_t rc = rpcclt_openapiRtrIntfIpAddrAdd(client_handle, request.kind.family, ifNum,
                                                   request.kind.method, &request.prefix, request.extArg);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Create %s IP address (address: %s, prefix length: %u) successfully.",
                 kind_word, request.text, request.prefix.pfxLen);
}

static int delete_ip_address(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t ifNum,
                             const char *kind_word) {
  address_request request = {};
  if (!address_or_reply(client_handle, conn, 0, &request)) return 0;

  open_error_t rc = rpcclt_openapiRtrIntfIpAddrDel(client_handle, request.kind.family, ifNum,
                                                   request.kind.method, &request.prefix, request.extArg);
  if (rc == OPEN_E_ERROR && obtained(request))
    return refuse(conn, 1,
                  "Operation failed. The interface is assigned an IP address by manual configuration, or "
                  "DHCP client has already been disabled.");
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (obtained(request)) return succeed(conn, nullptr, "Disable the DHCP client on the interface.");
  return succeed(conn, nullptr, "Delete %s IP address (address: %s, prefix length: %u) successfully.",
                 kind_word, request.text, request.prefix.pfxLen);
}

static const char PHYSICAL[] = "Routing Interface";
static const char VLAN[] = "Routing Vlan Interface";

static void append_list_addresses(openapiClientHandle_t *client_handle, uint32_t ifNum, node_t *entry) {
  append_ipv4_and_mask(client_handle, ifNum, entry);
  append_ipv6(client_handle, ifNum, entry);
}

/* The next routing interface, when it is of this type; false when it is not, or there is none. */
static bool next_of_type(openapiClientHandle_t *client_handle, uint32_t wanted, uint32_t *ifNum) {
  uint32_t next = 0, type = 0;
  if (rpcclt_openapiRtrIntfNextGet(client_handle, *ifNum, &next) != OPEN_E_NONE) return false;
  *ifNum = next;
  return rpcclt_openapiRtrIntfTypeGet(client_handle, next, &type) == OPEN_E_NONE && type == wanted;
}

/* --- Operations ----------------------------------------------------------------------------------------- */

int api_routing_delete_vlan_interface_specified_id(openapiClientHandle_t *client_handle,
                                                   mg_connection *conn) {
  uint32_t vlanId = 0;
  if (!number_or_reply(conn, "vlanId", &vlanId)) return 0;

  open_error_t rc = rpcclt_openapiRtrVlanIntfDelete(client_handle, vlanId);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete Vlan Routing Interface with VLAN %d successfully.", vlanId);
}

int api_routing_delete_interface_ip_address(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return delete_ip_address(client_handle, conn, interface_of_uri(conn), PHYSICAL);
}

int api_routing_delete_vlan_interface_ip_address(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return delete_ip_address(client_handle, conn, vlan_interface_of_uri(client_handle, conn), VLAN);
}

int api_routing_update_ipv4_admin_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_admin_mode(client_handle, conn, OPEN_AF_INET, "IPv4");
}

int api_routing_update_ipv6_admin_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_admin_mode(client_handle, conn, OPEN_AF_INET6, "IPv6");
}

int api_routing_update_interface_admin_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uri_fields_t fields;
  uint32_t mode = 0;
  /* Whatever follows adminMode would be a second field. */
  if (scan_uri(conn->uri, "/routing/if/%[0-9]/adminMode%s", fields) != 1)
    return fail(conn, OPEN_E_PARAM, nullptr);
  if (!number_or_reply(conn, "value", &mode)) return 0;

  uint32_t ifNum = static_cast<uint32_t>(text_to_int(fields[0]));
  open_error_t rc = rpcclt_openapiRtrIntfRtrAdminModeSet(client_handle, ifNum, mode);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update routing admin mode for this interface successfully.");
}

int api_routing_get_info(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t mode4 = 0, mode6 = 0;
  open_error_t rc = rpcclt_openapiRtrAdminModeGet(client_handle, OPEN_AF_INET, &mode4);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiRtrAdminModeGet(client_handle, OPEN_AF_INET6, &mode6);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *information = append_branch(tree, "infomation");
  append_tree_control(information, "ipv4_admin_mode", mode4);
  append_tree_control(information, "ipv6_admin_mode", mode6);
  return succeed(conn, tree, "Get data successfully.");
}

static open_error_t append_vlan_interface(openapiClientHandle_t *client_handle, uint32_t ifNum,
                                          node_t *tree) {
  platform_text name;
  open_error_t rc =
      name.read(client_handle, rpcclt_openapiIntfNameSizeGet, rpcclt_openapiRtrIntfNameGet, ifNum);
  if (rc != OPEN_E_NONE) return rc;

  node_t *interface = append_branch(tree, "vlan_routing_interface");
  append_tree_int(interface, "logical_interface_id", "logical_interface_id",
                  get_logical_id_by_vlan_routing_interface_num(client_handle, ifNum));
  append_tree_number(interface, "vlan_routing_interface_num", ifNum);
  append_tree_string(interface, "vlan_routing_interface_name", "vlan_routing_interface_name", name.text());

  uint32_t vlanId = 0;
  rc = rpcclt_openapiRtrIntfVlanIdGet(client_handle, ifNum, &vlanId);
  if (rc != OPEN_E_NONE) return rc;
  append_tree_number(interface, "vlan_id", vlanId);
  append_primary_ipv4(client_handle, ifNum, interface, "primary_ipv4_address");
  append_secondary_ipv4(client_handle, ifNum, interface, "secondary_ipv4_addresses");
  append_ipv6(client_handle, ifNum, interface);
  return OPEN_E_NONE;
}

int api_routing_get_vlan_interface_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = vlan_interface_of_uri(client_handle, conn);
  node_t *tree = new_tree();
  open_error_t rc = append_vlan_interface(client_handle, ifNum, tree);
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

/* Lists an interface; `first` is the number of the first one of its kind. */
static void append_listed_vlan_interface(openapiClientHandle_t *client_handle, uint32_t ifNum, uint32_t first,
                                         node_t *entry) {
  append_tree_number(entry, "logical_interface_id", ifNum - first + 1);
  append_tree_number(entry, "vlan_routing_interface_num", ifNum);
  append_list_addresses(client_handle, ifNum, entry);
}

int api_routing_get_vlan_interface_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  node_t *tree = new_tree();
  node_t *list = append_branch(tree, "vlan_routing_interfaces");
  uint32_t first = 0, listed = 0, visited = 0;
  bool more = rpcclt_openapiIfFirstGet(client_handle, OPEN_INTF_TYPE_VLAN_RTR, OPEN_INTF_STATE_ANY, &first) ==
              OPEN_E_NONE;
  for (uint32_t ifNum = first; more; more = next_of_type(client_handle, OPEN_INTF_TYPE_VLAN_RTR, &ifNum)) {
    if (++visited > MAX_LIST_ENTRIES) return fail(conn, OPEN_E_INTERNAL, tree);
    uint32_t vlanId = 0;
    if (rpcclt_openapiRtrIntfVlanIdGet(client_handle, ifNum, &vlanId) != OPEN_E_NONE) continue;
    append_listed_vlan_interface(client_handle, ifNum, first,
                                 append_entry(list, ++listed, "vlan_routing_interface"));
  }
  if (listed == 0) return refuse_with_tree(conn, 1, "VLAN Routing interface doesn't exist.", tree);
  return succeed(conn, tree, "Get data successfully.");
}

int api_routing_get_interface_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0, type = 0, listed = 0;
  open_error_t rc = rpcclt_openapiRtrIntfNextGet(client_handle, 0, &ifNum);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *list = append_branch(tree, "interfaces");
  /* Routing ports come first in the platform's order; whatever follows them is not listed. */
  bool more =
      rpcclt_openapiRtrIntfTypeGet(client_handle, ifNum, &type) == OPEN_E_NONE && type == OPEN_INTF_TYPE_PHY;
  for (; more; more = next_of_type(client_handle, OPEN_INTF_TYPE_PHY, &ifNum)) {
    if (listed == MAX_LIST_ENTRIES) return fail(conn, OPEN_E_INTERNAL, tree);
    node_t *entry = append_entry(list, ++listed, "interface");
    append_tree_number(entry, "ifNum", ifNum);
    append_list_addresses(client_handle, ifNum, entry);
  }
  if (listed == 0) return refuse_with_tree(conn, 1, "Physical routing interface doesn't exist.", tree);
  return succeed(conn, tree, "Get data successfully.");
}

int api_routing_create_vlan_interface_specified_id(openapiClientHandle_t *client_handle,
                                                   mg_connection *conn) {
  uint32_t vlanId = 0;
  if (!number_or_reply(conn, "vlanId", &vlanId)) return 0;

  open_error_t rc = rpcclt_openapiRtrVlanIntfCreate(client_handle, vlanId);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Create Vlan Routing Interface with VLAN %d successfully.", vlanId);
}

int api_routing_create_interface_ip_address(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return create_ip_address(client_handle, conn, interface_of_uri(conn), 1, PHYSICAL);
}

/* Unlike for ports, an empty addrType is good here: it selects 0. */
int api_routing_create_vlan_interface_ip_address(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return create_ip_address(client_handle, conn, vlan_interface_of_uri(client_handle, conn), 0, VLAN);
}

/* --- Routes --------------------------------------------------------------------------------------------- */

/* Where text follows the last number counted, a URI that ends before that text, or has another one there,
 * matches as well: POST /routing/if/5 adds an address. */
static const rest_route routes[] = {
    {REQUEST_METHOD_DELETE, "/routing/vlanRtrIf%s", ROUTE_EXACT, nullptr,
     api_routing_delete_vlan_interface_specified_id},
    {REQUEST_METHOD_DELETE, "/routing/if/%[0-9]/ip%s", 1, nullptr, api_routing_delete_interface_ip_address},
    {REQUEST_METHOD_DELETE, "/routing/vlanRtrIf/%[0-9]/ip%s", 1, nullptr,
     api_routing_delete_vlan_interface_ip_address},
    {REQUEST_METHOD_PUT, "/routing/ipv4/adminMode%s", ROUTE_EXACT, nullptr,
     api_routing_update_ipv4_admin_mode},
    {REQUEST_METHOD_PUT, "/routing/ipv6/adminMode%s", ROUTE_EXACT, nullptr,
     api_routing_update_ipv6_admin_mode},
    {REQUEST_METHOD_PUT, "/routing/if/%[0-9]/adminMode%s", 1, nullptr,
     api_routing_update_interface_admin_mode},
    {REQUEST_METHOD_GET, "/routing%s", ROUTE_EXACT, nullptr, api_routing_get_info},
    {REQUEST_METHOD_GET, "/routing/vlanRtrIf/%[0-9]%s", 1, nullptr,
     api_routing_get_vlan_interface_specified_id},
    {REQUEST_METHOD_GET, "/routing/vlanRtrIf%s", ROUTE_EXACT, nullptr, api_routing_get_vlan_interface_list},
    {REQUEST_METHOD_GET, "/routing/if%s", ROUTE_EXACT, nullptr, api_routing_get_interface_list},
    {REQUEST_METHOD_POST, "/routing/vlanRtrIf%s", ROUTE_EXACT, nullptr,
     api_routing_create_vlan_interface_specified_id},
    {REQUEST_METHOD_POST, "/routing/if/%[0-9]/ip%s", 1, nullptr, api_routing_create_interface_ip_address},
    {REQUEST_METHOD_POST, "/routing/vlanRtrIf/%[0-9]/ip%s", 1, nullptr,
     api_routing_create_vlan_interface_ip_address},
};

int routing_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> routing_api_routes(void) {
  return routes;
}
