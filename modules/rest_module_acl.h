/* Access control lists: /acl. MAC, IPv4 and IPv6 lists, their rules, and their bindings to interfaces and
 * VLANs in either direction. The module keeps no state: every operation asks the platform.
 *
 *   rest_module_acl.cpp           the routes
 *   rest_module_acl_names.h       the words of the API for the platform's values
 *   rest_module_acl_queries.cpp   what is configured
 *   rest_module_acl_rules.cpp     making a rule
 *   rest_module_acl_lists.cpp     making and deleting lists, deleting rules, binding */
#ifndef KESTREL_MODULES_REST_MODULE_ACL_H
#define KESTREL_MODULES_REST_MODULE_ACL_H

#include "engine/rest_route.h"
#include "platform/api/openapi_acl.h"

int acl_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> acl_api_routes(void);

/* --- Queries -------------------------------------------------------------------------------------------- */

int api_acl_get_count(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_acl_get_by_type(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_acl_get_mac_acl_by_name(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_acl_get_ip_acl_by_name(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_acl_get_ipv6_acl_by_name(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_acl_get_specified_interface(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_acl_get_specified_vlan(openapiClientHandle_t *client_handle, mg_connection *conn);

/* Appends what a list is bound to in one direction: a subtree "inbound" or "outbound" with the lists
 * "interfaces" and "vlans". One that cannot be read stays empty. Returns the result of reading the VLANs,
 * OPEN_E_PARAM for a null tree. */
open_error_t append_acl_bounded_interfaces_vlans(openapiClientHandle_t *client_handle, uint32_t aclId,
                                                 OPEN_ACL_DIRECTION_t dir, node_t *data_ptr);
/* Appends those attributes of a rule that can be read. Returns the result of the last read. */
open_error_t append_acl_rules_common_info(openapiClientHandle_t *client_handle, uint32_t aclId,
                                          uint32_t ruleId, node_t *rulSubN_ptr);
/* Appends "fin", "syn", "rst", "psh", "ack" and "urg", each "ignore", "set" or "clear". OPEN_E_PARAM for a
 * null node. */
open_error_t append_acl_rule_tcp_flags_string_by_value(node_t *tcpSubN_ptr, uint32_t tcpFlag,
                                                       uint32_t tcpMask);

/* --- Rules ---------------------------------------------------------------------------------------------- */

int api_acl_create_mac_acl_match_rule(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_acl_create_ip_acl_match_rule(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_acl_create_ipv6_acl_match_rule(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_acl_delete_acl_match_rule(openapiClientHandle_t *client_handle, mg_connection *conn);

/* Adds the attributes that the request gives to a rule. The first failure, OPEN_E_PARAM for a value that
 * cannot be read. */
open_error_t check_and_add_acl_common_rules(openapiClientHandle_t *client_handle, mg_connection *conn,
                                            uint32_t aclId, uint32_t ruleId);

/* --- Lists and bindings --------------------------------------------------------------------------------- */

int api_acl_create_new_acl(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_acl_delete_acl_by_name(openapiClientHandle_t *client_handle, mg_connection *conn);
/* `detach` is 0 to attach, 1 to detach. */
int api_acl_attach_detach_acl_to_specified_interface(openapiClientHandle_t *client_handle,
                                                     mg_connection *conn, int detach);
int api_acl_attach_detach_acl_to_specified_vlan(openapiClientHandle_t *client_handle, mg_connection *conn,
                                                int detach);

#endif
