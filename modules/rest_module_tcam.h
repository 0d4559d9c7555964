/* TCAM policies: /tcam. Raw classification policies, the ports they are applied to, and what the TCAM is used
 * for. The module keeps no state: every operation asks the platform. */
#ifndef KESTREL_MODULES_REST_MODULE_TCAM_H
#define KESTREL_MODULES_REST_MODULE_TCAM_H

#include "engine/rest_route.h"
#include "platform/api/openapi_tcam.h"

int tcam_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> tcam_api_routes(void);

int api_tcam_delete_policy_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_tcam_delete_policy_all(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_tcam_delete_policy_specified_id_from_port(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_tcam_get_info(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_tcam_get_group_stats(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_tcam_get_policy_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_tcam_get_policy_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_tcam_create_new_policy(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_tcam_create_policy_specified_id_to_port(openapiClientHandle_t *client_handle, mg_connection *conn);

/* The text of a policy type: 0, or 1 with nothing written for an unknown one. */
int get_tcam_policy_type_string_by_eum(OPEN_TCAM_POLICY_TYPE_t type, char *out_typeStr);
/* Whether a set of actions holds all bits of `action`: 0 when it does, otherwise 1. No bits at all are held
 * by the empty set alone. */
int get_if_tcam_action_type_contain_specified_action(uint32_t actionType, uint32_t action);

#endif
