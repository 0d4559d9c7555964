/* Walking over what the platform has: what the modules that list interfaces, VLANs and pending changes share.
 * A walk that seems to have no end is given up with OPEN_E_INTERNAL after MAX_LIST_ENTRIES. */
#ifndef KESTREL_MODULES_REST_PLATFORM_WALK_H
#define KESTREL_MODULES_REST_PLATFORM_WALK_H

#include "engine/rest_common.h"
#include "platform/api/openapi_if.h"
#include "platform/api/openapi_vlan.h"

/* Calls visit(ifNum, position) for the interface `first` and those of its type after it, positions from 1 on,
 * until a visit fails, and returns that failure. OPEN_E_FAIL alone ends the walk; after any other answer it
 * goes on with the interface that was named, which is none when none was: OPEN_E_NOT_FOUND then. */
template <typename Visit>
open_error_t walk_interfaces(openapiClientHandle_t *client_handle, OPEN_INTF_TYPE_t type, uint32_t first,
                             Visit visit) {
  uint32_t ifNum = first;
  for (uint32_t position = 1; ifNum != 0; position++) {
    if (position > MAX_LIST_ENTRIES) return OPEN_E_INTERNAL;
    open_error_t rc = visit(ifNum, position);
    if (rc != OPEN_E_NONE) return rc;
    uint32_t next = 0;
    rc = rpcclt_openapiIfNextGet(client_handle, type, OPEN_INTF_STATE_ANY, ifNum, &next);
    if (rc == OPEN_E_FAIL) return OPEN_E_NONE;
    ifNum = next;
  }
  return OPEN_E_NOT_FOUND;
}

/* The same from the first interface of the type on. A failure to find that one is returned too. */
template <typename Visit>
open_error_t each_interface(openapiClientHandle_t *client_handle, OPEN_INTF_TYPE_t type, Visit visit) {
  uint32_t first = 0;
  open_error_t rc = rpcclt_openapiIfFirstGet(client_handle, type, OPEN_INTF_STATE_ANY, &first);
  return rc == OPEN_E_NONE ? walk_interfaces(client_handle, type, first, visit) : rc;
}

/* Calls visit(vlanId, index) for each VLAN from VLAN 1 on, which always exists, indices from 0 on, until a
 * visit fails, and returns that failure. Any answer but OPEN_E_NONE ends the walk. */
template <typename Visit> open_error_t each_vlan(openapiClientHandle_t *client_handle, Visit visit) {
  uint32_t vlanId = 1, index = 0;
  do {
    if (index == MAX_LIST_ENTRIES) return OPEN_E_INTERNAL;
    open_error_t rc = visit(vlanId, index++);
    if (rc != OPEN_E_NONE) return rc;
  } while (rpcclt_openapiVlanNextGet(client_handle, vlanId, &vlanId) == OPEN_E_NONE);
  return OPEN_E_NONE;
}

typedef open_error_t (*next_changed_getter_t)(openapiClientHandle_t *client_handle, uint32_t after,
                                              uint32_t *next, uint32_t *delete_pending);

/* Appends an entry for each VLAN or interface with a pending change that `get_next` names from `after` on:
 * the number as the leaf `number_name`, and what is pending. Any answer but OPEN_E_NONE ends the walk. */
inline open_error_t append_pending(openapiClientHandle_t *client_handle, next_changed_getter_t get_next,
                                   uint32_t after, node_t *list, const char *tagname,
                                   const char *number_name) {
  uint32_t number = after, delete_pending = 0;
  for (uint32_t position = 1; get_next(client_handle, number, &number, &delete_pending) == OPEN_E_NONE;
       position++) {
    if (position > MAX_LIST_ENTRIES) return OPEN_E_INTERNAL;
    node_t *entry = append_entry(list, position, tagname);
    append_tree_int(entry, number_name, number_name, static_cast<int>(number));
    append_tree_string(entry, "pending_type", "pending_type",
                       delete_pending == 1 ? "pending deletion" : "pending change");
  }
  return OPEN_E_NONE;
}

#endif
