/* Interfaces: numbers and walks. Ports, the CPU interface, LAGs, VLAN routing interfaces and loopbacks share
 * one number space counted from 1. */
#ifndef OPENAPI_IF_H
#define OPENAPI_IF_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Interface types, as the first selector of the walks takes them. */
typedef enum {
  OPEN_INTF_TYPE_PHY = 0,      /* physical ports */
  OPEN_INTF_TYPE_CPU = 1,      /* the CPU interface */
  OPEN_INTF_TYPE_LAG = 2,      /* link aggregation groups */
  OPEN_INTF_TYPE_VLAN_RTR = 3, /* VLAN routing interfaces */
  OPEN_INTF_TYPE_LOOPBACK = 4  /* loopbacks */
} OPEN_INTF_TYPE_t;

/* Link states, as the second selector of the walks takes them. */
enum { OPEN_INTF_STATE_ANY = 4 };

/* The highest interface number of this switch; numbers run from 1 to `max`. */
open_error_t openapiMaxInterfaceCountGet(openapiClientHandle_t *handle, uint32_t *max);

/* The interface number of the CPU. */
open_error_t rpcclt_openapiCpuIntfGet(openapiClientHandle_t *handle, uint32_t *ifNum);

/* First interface of a type.
 *   type    OPEN_INTF_TYPE_t
 *   state   OPEN_INTF_STATE_ANY
 * OPEN_E_PARAM   unknown type or state
 * OPEN_E_FAIL    there is no interface of that type */
open_error_t rpcclt_openapiIfFirstGet(openapiClientHandle_t *handle, uint32_t type, uint32_t state,
                                      uint32_t *ifNum);

/* The next interface of a type after `ifNum` (which need not exist).
 * OPEN_E_PARAM   unknown type or state
 * OPEN_E_FAIL    there is none: the walk is over */
open_error_t rpcclt_openapiIfNextGet(openapiClientHandle_t *handle, uint32_t type, uint32_t state,
                                     uint32_t ifNum, uint32_t *nextIfNum);

#ifdef __cplusplus
}
#endif
#endif
