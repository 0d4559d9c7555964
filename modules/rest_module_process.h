/* Memory and CPU: /process. The platform gives the CPU figures as text, which is cut into the result tree. */
#ifndef KESTREL_MODULES_REST_MODULE_PROCESS_H
#define KESTREL_MODULES_REST_MODULE_PROCESS_H

#include "engine/rest_route.h"

int process_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> process_api_routes(void);

int api_process_get_memory(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_process_get_cpu(openapiClientHandle_t *client_handle, mg_connection *conn);

#endif
