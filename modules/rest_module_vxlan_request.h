/* What the operations of the VXLAN module begin with: what the URI names, and the mode. */
#ifndef KESTREL_MODULES_REST_MODULE_VXLAN_REQUEST_H
#define KESTREL_MODULES_REST_MODULE_VXLAN_REQUEST_H

#include "engine/rest_common.h"

enum { VXLAN_INSTANCE = 1, VXLAN_TENANT_ID_MAX = 0xFFFFFE };
enum { VXLAN_MODE_DISABLED = 0, VXLAN_MODE_UNICAST = 1, VXLAN_MODE_MULTICAST = 2 };

/* Those that end in _or_reply answer the request and return false when what they look for is missing or not
 * valid. */

/* --- What the URI names --------------------------------------------------------------------------------- */

/* The instance must be the one that there is. */
bool vxlan_instance_or_reply(mg_connection *conn);
/* The instance, and a tenant id in range. */
bool vxlan_tenant_or_reply(mg_connection *conn, uint32_t *tenantId);
/* The instance, a tenant and a VLAN, these two in no particular range. */
bool vxlan_tenant_and_vlan_or_reply(mg_connection *conn, uint32_t *tenantId, uint32_t *vlanId);
/* Whether a tenant id is in range. */
bool vxlan_tenant_valid_or_reply(mg_connection *conn, uint32_t tenantId);

/* --- The mode ------------------------------------------------------------------------------------------- */

open_error_t read_vxlan_mode_flags(openapiClientHandle_t *client_handle, uint32_t *unicast,
                                   uint32_t *multicast);

/* The mode, whichever it is. */
bool vxlan_mode_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t *mode);
/* The mode, unicast or multicast. */
bool vxlan_enabled_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t *mode);
/* The mode must be the wanted one. Otherwise a refusal sends the tree, which may be null, and a failure frees
 * it. */
bool vxlan_mode_is_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, uint32_t wanted,
                            node_t *tree);

#endif
