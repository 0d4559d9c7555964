/* Walking over the interfaces of a type: what the modules that list interfaces share. */
#ifndef KESTREL_MODULES_REST_INTERFACE_WALK_H
#define KESTREL_MODULES_REST_INTERFACE_WALK_H

#include "engine/rest_common.h"
#include "platform/api/openapi_if.h"

/* Calls visit(ifNum, position) for the interface `first` and those of its type after it, positions from 1 on,
 * until a visit fails, and returns that failure. OPEN_E_FAIL alone ends the walk; after any other answer it
 * goes on with the interface that was named, which is none when none was: OPEN_E_NOT_FOUND then.
 * OPEN_E_INTERNAL when there seems to be no end. */
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

#endif
