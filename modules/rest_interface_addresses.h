/* The IP addresses of an interface in a result tree: what the modules that describe interfaces share. An
 * interface without such addresses gets nothing; that is no failure. Neither is a list that seems to have no
 * end: it is cut off after MAX_LIST_ENTRIES. */
#ifndef KESTREL_MODULES_REST_INTERFACE_ADDRESSES_H
#define KESTREL_MODULES_REST_INTERFACE_ADDRESSES_H

#include "engine/rest_common.h"

/* The leaves ipv4_address and subnet_mask with the primary IPv4 address. */
void append_ipv4_and_mask(openapiClientHandle_t *client_handle, uint32_t ifNum, node_t *tree);
/* The leaf `key` with the primary IPv4 address, "10.0.0.1/255.255.255.0". */
void append_primary_ipv4(openapiClientHandle_t *client_handle, uint32_t ifNum, node_t *tree, const char *key);
/* The subtree `key` with the secondary IPv4 addresses, each under the index that the platform gives it. */
void append_secondary_ipv4(openapiClientHandle_t *client_handle, uint32_t ifNum, node_t *tree,
                           const char *key);
/* The subtree ipv6_addresses, "2001:db8::1/64", numbered from 1. */
void append_ipv6(openapiClientHandle_t *client_handle, uint32_t ifNum, node_t *tree);

#endif
