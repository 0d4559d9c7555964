/* Access control lists: the routes; rest_module_acl.h names the files of the operations. */
#include "modules/rest_module_acl.h"

#include "engine/rest_route.h"

/* --- Attaching and detaching are one operation ---------------------------------------------------------- */

static int attach_to_interface(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return api_acl_attach_detach_acl_to_specified_interface(client_handle, conn, 0);
}

static int detach_from_interface(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return api_acl_attach_detach_acl_to_specified_interface(client_handle, conn, 1);
}

static int attach_to_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return api_acl_attach_detach_acl_to_specified_vlan(client_handle, conn, 0);
}

static int detach_from_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return api_acl_attach_detach_acl_to_specified_vlan(client_handle, conn, 1);
}

/* --- Routes --------------------------------------------------------------------------------------------- */

/* Scans go on from one URI to the next as long as they convert what they must, so that URIs which end early
 * have a meaning: /acl/ip/name/web with POST makes a rule as /acl/ip/name/web/rule does, /acl/mac a list. */
static const rest_route routes[] = {
    {REQUEST_METHOD_GET, "/acl/count%s", ROUTE_INSIDE, nullptr, api_acl_get_count},
    {REQUEST_METHOD_GET, "/acl/mac/name/%s", 1, nullptr, api_acl_get_mac_acl_by_name},
    {REQUEST_METHOD_GET, "/acl/ip/name/%s", 1, nullptr, api_acl_get_ip_acl_by_name},
    {REQUEST_METHOD_GET, "/acl/ipv6/name/%s", 1, nullptr, api_acl_get_ipv6_acl_by_name},
    {REQUEST_METHOD_GET, "/acl/if/%[0-9]%s", 1, nullptr, api_acl_get_specified_interface},
    {REQUEST_METHOD_GET, "/acl/vlan/%[0-9]%s", 1, nullptr, api_acl_get_specified_vlan},
    {REQUEST_METHOD_GET, "/acl/%s", 1, nullptr, api_acl_get_by_type},

    {REQUEST_METHOD_POST, "/acl/mac/name/%[^/]/rule%s", 1, nullptr, api_acl_create_mac_acl_match_rule},
    {REQUEST_METHOD_POST, "/acl/ip/name/%[^/]/rule%s", 1, nullptr, api_acl_create_ip_acl_match_rule},
    {REQUEST_METHOD_POST, "/acl/ipv6/name/%[^/]/rule%s", 1, nullptr, api_acl_create_ipv6_acl_match_rule},
    {REQUEST_METHOD_POST, "/acl/if/%[0-9]%s", 1, nullptr, attach_to_interface},
    {REQUEST_METHOD_POST, "/acl/vlan/%[0-9]%s", 1, nullptr, attach_to_vlan},
    {REQUEST_METHOD_POST, "/acl/%[^/]/name%s", 1, nullptr, api_acl_create_new_acl},

    {REQUEST_METHOD_DELETE, "/acl/%[^/]/name/%[^/]/rule%s", 2, nullptr, api_acl_delete_acl_match_rule},
    {REQUEST_METHOD_DELETE, "/acl/if/%[0-9]%s", 1, nullptr, detach_from_interface},
    {REQUEST_METHOD_DELETE, "/acl/vlan/%[0-9]%s", 1, nullptr, detach_from_vlan},
    {REQUEST_METHOD_DELETE, "/acl/%[^/]/name%s", 1, nullptr, api_acl_delete_acl_by_name},
};

int acl_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> acl_api_routes(void) {
  return routes;
}
