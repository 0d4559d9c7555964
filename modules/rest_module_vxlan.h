/* VXLAN: /vxlan. The tunnel mode, the UDP port, the source interface, the tenants and their unicast and
 * multicast groups. Every URI names the VXLAN instance first; there is one, number 1. The module keeps no
 * state: every operation asks the platform.
 *
 *   rest_module_vxlan.cpp          the routes; the mode, the UDP port and the source interface
 *   rest_module_vxlan_tenants.cpp  tenants
 *   rest_module_vxlan_groups.cpp   unicast and multicast groups
 *   rest_module_vxlan_request.h    what all of these begin with */
#ifndef KESTREL_MODULES_REST_MODULE_VXLAN_H
#define KESTREL_MODULES_REST_MODULE_VXLAN_H

#include "engine/rest_route.h"

int vxlan_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> vxlan_api_routes(void);

int api_vxlan_delete_specified_tenant(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_delete_src(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_delete_unicast_group(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_delete_default_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_delete_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_update_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_update_udp_port(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_update_src_if(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_update_src_loopback(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_update_src_vlan(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_update_unicast_group(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_update_default_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_update_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_get_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_get_udp_port(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_get_specified_tenant(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_get_tenant_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_get_src(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_get_unicast_group(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_get_multicast_group(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vxlan_create_tenant(openapiClientHandle_t *client_handle, mg_connection *conn);

/* Reads the tunnel mode: 0 disabled, 1 unicast, 2 multicast. 1, with *mode undefined, when the platform does
 * not tell; otherwise 0, with *mode untouched when it tells of neither 0 nor 1. */
uint32_t get_vxlan_mode(openapiClientHandle_t *client_handle, uint32_t *mode);

#endif
