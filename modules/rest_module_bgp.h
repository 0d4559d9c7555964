/* BGP: /bgp. The speaker's own settings, the networks that it originates, its IPv4 and IPv6 neighbours, and
 * what it redistributes from other protocols. */
#ifndef KESTREL_MODULES_REST_MODULE_BGP_H
#define KESTREL_MODULES_REST_MODULE_BGP_H

#include "engine/rest_route.h"

int bgp_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> bgp_api_routes(void);

int api_bgp_delete_originated_network(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_delete_ipv4_redistribution(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_delete_ipv6_redistribution(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_update_hold_time(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_update_keep_alive_time(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_update_local_AS(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_update_router_id(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_update_local_pref(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_update_log_neighbor_changes(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_update_ipv4_neighbor_next_hop_self_mode(openapiClientHandle_t *client_handle,
                                                    mg_connection *conn);
int api_bgp_update_ipv4_neighbor_update_source(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_update_ipv6_neighbor_activate(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_update_ipv6_neighbor_next_hop_self_mode(openapiClientHandle_t *client_handle,
                                                    mg_connection *conn);
int api_bgp_update_ipv6_neighbor_update_source(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_get_info(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_get_ipv4_neighbor_info(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_get_ipv6_neighbor_info(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_create_originated_network(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_create_ipv4_neighbor(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_create_ipv4_redistribution(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_create_ipv6_neighbor(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_bgp_create_ipv6_redistribution(openapiClientHandle_t *client_handle, mg_connection *conn);

/* Not routed: no URI reaches it. It is for "/bgp/ipv4/neighbor/{address}/activate". */
int api_bgp_update_ipv4_neighbor_activate(openapiClientHandle_t *client_handle, mg_connection *conn);

#endif
