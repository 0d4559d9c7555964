/* Logging: /logging. Logging of CLI commands, console logging, syslog and its remote hosts. The module keeps
 * no state. */
#ifndef KESTREL_MODULES_REST_MODULE_LOGGING_H
#define KESTREL_MODULES_REST_MODULE_LOGGING_H

#include "engine/rest_route.h"

int logging_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> logging_api_routes(void);

int api_logging_get_info(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_logging_get_host_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_logging_get_host_specified_addr(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_logging_create_host_specified_addr(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_logging_delete_host_specified_addr(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_logging_update_cli_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_logging_update_console_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_logging_update_console_severity_level(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_logging_update_syslog_mode(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_logging_update_syslog_port(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_logging_update_host_specified_addr_port(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_logging_update_host_specified_addr_severity_level(openapiClientHandle_t *client_handle,
                                                          mg_connection *conn);

/* Bytes that a host's address takes at most, as the platform says; fails as it does. */
open_error_t get_logging_host_addr_len_max(openapiClientHandle_t *client_handle, uint32_t *length);
/* The sentence of a severity (-1..7), at most 35 characters. RC_FALSE (with an empty text) for another value,
 * RC_FALSE for a null buffer. */
RC_t get_log_severity_level_string_by_eum(int32_t level, char *text);

#endif
