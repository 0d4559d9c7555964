/* Port MAC locking: /pml. Per interface the sticky mode and the statically locked MAC addresses, each bound
 * to a VLAN. */
#ifndef KESTREL_MODULES_REST_MODULE_PML_H
#define KESTREL_MODULES_REST_MODULE_PML_H

#include "engine/rest_route.h"

int pml_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> pml_api_routes(void);

int api_pml_delete_static_mac(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_pml_update_sticky(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_pml_get_sticky(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_pml_get_static_mac(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_pml_create_static_mac(openapiClientHandle_t *client_handle, mg_connection *conn);

#endif
