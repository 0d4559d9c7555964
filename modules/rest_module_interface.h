/* Interfaces: /if. Lists and describes the switch's interfaces, changes their settings, their part in VLANs
 * and their switchport mode, and reads and resets their counters. */
#ifndef KESTREL_MODULES_REST_MODULE_INTERFACE_H
#define KESTREL_MODULES_REST_MODULE_INTERFACE_H

#include "engine/rest_route.h"

int interface_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> interface_api_routes(void);

int api_interface_delete_specified_num_from_vlan(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_delete_switchport_trunk_vlan(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_update_pvid(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_update_accept_frame_type(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_update_admin_state(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_update_auto_neg_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_update_description(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_update_mtu_size(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_update_speed(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_update_to_vlan_tagging_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_update_counters_reset(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_update_switchport_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_update_switchport_trunk_pvid(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_update_switchport_access_vlan(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_update_switchport_trunk_vlan(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_get_specified_num(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_get_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_get_list_pending(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_get_to_vlan(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_get_to_vlan_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_get_counters(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_get_switchport_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_create_specified_num_to_vlan(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_interface_create_switchport_trunk_vlan(openapiClientHandle_t *client_handle, mg_connection *conn);

/* Not routed: no URI reaches it. It is for "/if/{ifNum}/softShutdownState". */
int api_interface_update_soft_shutdown_state(openapiClientHandle_t *client_handle, mg_connection *conn);

/* The name of a counter (0..62), up to 32 bytes, and the text of a speed (OPEN_IF_SPEED_t), up to 16 bytes;
 * an unknown counter has no name, an unknown speed is "-". RC_FALSE for an unknown counter. */
RC_t get_counter_name_by_id(uint32_t id, char *dst);
RC_t get_speed_string_by_eum(uint32_t speed, char *dst);

#endif
