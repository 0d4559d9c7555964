/* Scripts: /script. Files of configuration commands that the switch keeps. The module keeps no state. */
#ifndef KESTREL_MODULES_REST_MODULE_SCRIPT_H
#define KESTREL_MODULES_REST_MODULE_SCRIPT_H

#include "engine/rest_route.h"

int script_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> script_api_routes(void);

int api_script_get_file_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_script_apply(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_script_delete_file(openapiClientHandle_t *client_handle, mg_connection *conn);

#endif
