/* Routing: /routing. Switches IPv4 and IPv6 routing on and off, for the switch and by interface, makes and
 * removes the routing interfaces of VLANs, and lists and changes the IP addresses of interfaces. */
#ifndef KESTREL_MODULES_REST_MODULE_ROUTING_H
#define KESTREL_MODULES_REST_MODULE_ROUTING_H

#include "engine/rest_route.h"

int routing_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> routing_api_routes(void);

int api_routing_delete_vlan_interface_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_routing_delete_interface_ip_address(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_routing_delete_vlan_interface_ip_address(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_routing_update_ipv4_admin_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_routing_update_ipv6_admin_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_routing_update_interface_admin_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_routing_get_info(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_routing_get_vlan_interface_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_routing_get_vlan_interface_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_routing_get_interface_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_routing_create_vlan_interface_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_routing_create_interface_ip_address(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_routing_create_vlan_interface_ip_address(openapiClientHandle_t *client_handle, mg_connection *conn);

/* The logical id of a VLAN routing interface: 1 for the first one that there is. -1 when the platform does
 * not know the interface, -2 when it is of another type. */
int32_t get_logical_id_by_vlan_routing_interface_num(openapiClientHandle_t *client_handle, uint32_t ifNum);
/* The other way round, for any number: whether there is such an interface is for the platform to say. */
int32_t get_vlan_routing_interface_num_by_logical_id(openapiClientHandle_t *client_handle,
                                                     int32_t logical_id);

#endif
