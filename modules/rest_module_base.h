/* The switch and the API themselves: /base. Software versions, readiness and the identity of the device. */
#ifndef KESTREL_MODULES_REST_MODULE_BASE_H
#define KESTREL_MODULES_REST_MODULE_BASE_H

#include "engine/rest_route.h"

int base_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> base_api_routes(void);

int api_base_get_info(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_base_idname_get_info(openapiClientHandle_t *client_handle, mg_connection *conn);

#endif
