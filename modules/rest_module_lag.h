/* Link aggregation groups: /lag. Lists and describes LAGs and changes their members. Here LAGs are told by
 * their port-channel id, never by their interface number. */
#ifndef KESTREL_MODULES_REST_MODULE_LAG_H
#define KESTREL_MODULES_REST_MODULE_LAG_H

#include "engine/rest_route.h"

int lag_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> lag_api_routes(void);

int api_lag_delete_specified_id_member(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_lag_get_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_lag_get_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_lag_create_specified_id_member(openapiClientHandle_t *client_handle, mg_connection *conn);

/* Not routed: no URI reaches them. They are for "/lag/{lagId}". */
int api_lag_create_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_lag_delete_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn);

/* From one number to the other; 0 when the platform does not know it. */
int32_t get_lag_interface_num_by_port_channel_id(openapiClientHandle_t *client_handle, int32_t portChannelId);
int32_t get_port_channel_id_by_lag_interface_num(openapiClientHandle_t *client_handle, int32_t ifNum);

#endif
