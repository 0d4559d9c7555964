/* SSH server settings: /ssh. The module keeps no state. */
#ifndef KESTREL_MODULES_REST_MODULE_SSH_H
#define KESTREL_MODULES_REST_MODULE_SSH_H

#include "engine/rest_route.h"

int ssh_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> ssh_api_routes(void);

int api_ssh_get_global_settings(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_ssh_update_admin_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_ssh_update_max_sessions(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_ssh_update_protocol_version(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_ssh_update_session_timeout(openapiClientHandle_t *client_handle, mg_connection *conn);

#endif
