/* VLANs: /vlans. Creates, deletes, names, lists and describes IEEE 802.1Q VLANs and lists those with changes
 * that the switch has not taken over yet. */
#ifndef KESTREL_MODULES_REST_MODULE_VLAN_H
#define KESTREL_MODULES_REST_MODULE_VLAN_H

#include "engine/rest_route.h"

int vlan_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> vlan_api_routes(void);

int api_vlan_delete_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vlan_update_name(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vlan_get_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vlan_get_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vlan_get_list_pending(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_vlan_create_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn);

/* Words of OPEN_VLAN_PARTICIPATION_MODE_t. */
extern const std::span<const enum_text> participation_modes;

/* 1 when the VLAN does NOT exist, 0 when it does. */
uint32_t check_vlan_exist(openapiClientHandle_t *client_handle, uint32_t vid);
/* The highest VLAN id that can be created; 0 when the platform does not tell. */
uint32_t get_vlan_num_max(openapiClientHandle_t *client_handle);
/* Sets *max to the highest interface number, 0 when the platform does not tell, and returns its result. */
open_error_t get_interface_num_max(openapiClientHandle_t *client_handle, uint32_t *max);

#endif
