/* Link aggregation groups (IEEE 802.1AX). A LAG is an interface with a number like any other, and has a
 * port-channel id from 1 on. All LAGs that there is room for exist in factory state, without members.
 *
 * A port is a member of one LAG at most. While it is, the LAG takes part in VLANs in its place; the port's
 * own settings stay and count again when it leaves.
 *
 * Unless a function says otherwise: OPEN_E_PARAM for an interface number outside every range that the switch
 * numbers interfaces in, OPEN_E_NOT_FOUND for one that is no existing LAG (or port). Every function that
 * changes something answers OPEN_E_FAIL when the change cannot be stored; nothing was changed then. */
#ifndef OPENAPI_LAG_H
#define OPENAPI_LAG_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* --- Numbers -------------------------------------------------------------------------------------------- */

/* The interface number of a port-channel id, whether that LAG exists at the moment or not.
 * OPEN_E_NOT_FOUND  the switch has no LAG with this id */
open_error_t rpcclt_openapiLagPortChannelIdToIfNumZYL(openapiClientHandle_t *handle, uint32_t portChannelId,
                                                      uint32_t *ifNum);
/* The port-channel id of an interface number, whether that LAG exists at the moment or not. */
open_error_t rpcclt_openapiLagIfNumToPortChannelIdZYL(openapiClientHandle_t *handle, uint32_t ifNum,
                                                      uint32_t *portChannelId);

/* --- LAGs ----------------------------------------------------------------------------------------------- */

/* Makes a LAG that was deleted, in factory state.
 * OPEN_E_NOT_FOUND  not the number of a LAG
 * OPEN_E_EXISTS  exists already */
open_error_t rpcclt_openapiLagCreateZYL(openapiClientHandle_t *handle, uint32_t ifNum);
/* Deletes a LAG with all its settings; its members leave it.
 * OPEN_E_FAIL    also: a rule of an access control list or a TCAM policy sends packets to it */
open_error_t rpcclt_openapiLagDeleteZYL(openapiClientHandle_t *handle, uint32_t ifNum);

/* Bytes that a buffer for a LAG's name needs, the terminator included. */
open_error_t rpcclt_openapiLagNameMaxLengthGet(openapiClientHandle_t *handle, uint32_t *size);
/* Reads a LAG's name, "lag1" for port-channel 1.
 * OPEN_E_PARAM   the buffer is too small */
open_error_t rpcclt_openapiLagNameGet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *name);

/* --- Members -------------------------------------------------------------------------------------------- */

/* The most members that a LAG may have. */
open_error_t rpcclt_openapiLagMaxMemberCountGet(openapiClientHandle_t *handle, uint32_t *max);
/* Reads a LAG's members, in ascending order.
 *   count   in: how many `ports` has room for; out: how many there are
 *   ports   interface numbers
 * OPEN_E_PARAM   there are more than there is room for */
open_error_t rpcclt_openapiLagMembersGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *count,
                                         uint32_t *ports);
/* Makes a port a member.
 * OPEN_E_EXISTS  it is a member of this LAG already
 * OPEN_E_FAIL    it is a member of another LAG
 * OPEN_E_FULL    the LAG has as many members as it may have */
open_error_t rpcclt_openapiLagPortAdd(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t port);
/* Takes a port out.
 * OPEN_E_NOT_FOUND  also: it is not a member of this LAG */
open_error_t rpcclt_openapiLagPortDelete(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t port);

#ifdef __cplusplus
}
#endif
#endif
