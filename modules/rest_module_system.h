/* The system: /system. Host name, serial console, telnet server, and reloading. The module keeps no state. */
#ifndef KESTREL_MODULES_REST_MODULE_SYSTEM_H
#define KESTREL_MODULES_REST_MODULE_SYSTEM_H

#include "engine/rest_route.h"

int system_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> system_api_routes(void);

int api_system_get_global_settings(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_system_update_hostname(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_system_update_serial_timeout(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_system_update_telnet_server_admin_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_system_reload(openapiClientHandle_t *client_handle, mg_connection *conn);

/* Not routed: no request reaches these. */
int api_system_update_prompt(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_system_get_networkport_ipv4(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_system_delete_networkport_ipv4_parameters(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_system_update_networkport_ipv4_parameters(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_system_update_networkport_ipv4_protocol_mode(openapiClientHandle_t *client_handle,
                                                     mg_connection *conn);

/* The name of a network port's protocol mode (OPEN_NETWORK_PROTOCOL_t), at most 7 characters. RC_FALSE (with
 * an empty text) for another value, RC_FALSE for a null buffer. */
RC_t get_protocol_mode_string_by_eum(uint32_t mode, char *text);

#endif
