/* VLANs (IEEE 802.1Q): existence, names, membership, tagging, port VLAN ids. VLAN ids are 1..4094; members
 * are physical ports and LAGs. A VLAN id outside that range, and an interface number outside every range that
 * the switch numbers interfaces in, is OPEN_E_PARAM.
 *
 * What is read about an interface is what is in force. What is set is in force while the interface is in
 * switchport mode general (openapi_if.h) and in no LAG (openapi_lag.h), and kept meanwhile. An interface in
 * mode access or trunk reads as included in its VLANs and excluded from all others, one in a LAG as excluded
 * from all. */
#ifndef OPENAPI_VLAN_H
#define OPENAPI_VLAN_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* How an interface is configured to take part in a VLAN. */
typedef enum {
  OPEN_VLAN_PARTICIPATION_MODE_INCLUDE = 0, /* a member */
  OPEN_VLAN_PARTICIPATION_MODE_AUTO = 1,    /* a member when learnt dynamically; otherwise not */
  OPEN_VLAN_PARTICIPATION_MODE_EXCLUDE = 2  /* never a member */
} OPEN_VLAN_PARTICIPATION_MODE_t;

/* Frames an interface lets in. */
typedef enum {
  OPEN_DOT1Q_ADMIT_ALL = 1,
  OPEN_DOT1Q_ADMIT_ONLY_VLAN_TAGGED = 2,
  OPEN_DOT1Q_ADMIT_ONLY_VLAN_UNTAGGED = 3
} OPEN_DOT1Q_ACCEPT_FRAME_TYPE_t;

/* Says whether a VLAN exists.
 * OPEN_E_NONE    it does
 * OPEN_E_FAIL    it does not
 * OPEN_E_PARAM   outside 1..4094 */
open_error_t openapiVlanCreatedCheck(openapiClientHandle_t *handle, uint32_t vlanId);

/* The highest VLAN id that can be created. */
open_error_t rpcclt_openapiDot1VlanMaxGet(openapiClientHandle_t *handle, uint32_t *max);

/* Creates a VLAN, static, without a name and without members.
 * OPEN_E_PARAM   outside 1..4094
 * OPEN_E_EXISTS  exists already
 * OPEN_E_FULL    no room for another VLAN
 * OPEN_E_FAIL    the change cannot be stored; nothing was changed */
open_error_t rpcclt_openapiVlanCreate(openapiClientHandle_t *handle, uint32_t vlanId);

/* Deletes a VLAN. Interfaces whose port VLAN id it was fall back to VLAN 1.
 * OPEN_E_PARAM   outside 1..4094
 * OPEN_E_NOT_FOUND  does not exist
 * OPEN_E_FAIL    VLAN 1, a VLAN in use, or the change cannot be stored; nothing was changed */
open_error_t rpcclt_openapiVlanDelete(openapiClientHandle_t *handle, uint32_t vlanId);

/* The next VLAN after `vlanId` (0..4094; it need not exist).
 * OPEN_E_PARAM   outside 0..4094
 * OPEN_E_FAIL    there is none: the walk is over */
open_error_t rpcclt_openapiVlanNextGet(openapiClientHandle_t *handle, uint32_t vlanId, uint32_t *nextVlanId);

/* The next VLAN after `vlanId` (0..4094) with a change that the data plane has not taken yet.
 *   deletePending  1 when the pending change is its deletion, else 0
 * OPEN_E_PARAM   outside 0..4094
 * OPEN_E_FAIL    there is none: the walk is over */
open_error_t openapiVlanNextChangedGet(openapiClientHandle_t *handle, uint32_t vlanId, uint32_t *nextVlanId,
                                       uint32_t *deletePending);

/* 1 when the VLAN was created by configuration, 0 when it was learnt or does not exist. Not an open_error_t.
 */
uint32_t openapiVlanIsStatic(openapiClientHandle_t *handle, uint32_t vlanId);

/* Bytes that a buffer for a VLAN name needs, the terminator included. */
open_error_t rpcclt_openapiVlanNameLenGet(openapiClientHandle_t *handle, uint32_t *size);

/* Reads a VLAN's name; empty when it has none.
 * OPEN_E_NOT_FOUND  no such VLAN
 * OPEN_E_PARAM   the buffer is too small */
open_error_t rpcclt_openapiVlanNameGet(openapiClientHandle_t *handle, uint32_t vlanId, open_buffdesc *name);

/* Names a VLAN: up to 32 characters, no control characters; empty removes the name.
 * OPEN_E_NOT_FOUND  no such VLAN
 * OPEN_E_PARAM   the name is too long or holds a control character
 * OPEN_E_FAIL    the change cannot be stored; nothing was changed */
open_error_t rpcclt_openapiVlanNameSet(openapiClientHandle_t *handle, uint32_t vlanId, open_buffdesc *name);

/* Says whether an interface is a member of a VLAN right now: 1 yes, 0 no.
 * OPEN_E_NOT_FOUND  no such VLAN, or no such port or LAG */
open_error_t openapiVlanIfParticipationStatusGet(openapiClientHandle_t *handle, uint32_t vlanId,
                                                 uint32_t ifNum, uint32_t *isMember);

/* Reads or sets how an interface is configured to take part in a VLAN (OPEN_VLAN_PARTICIPATION_MODE_t).
 * Note the order: VLAN, interface.
 * OPEN_E_NOT_FOUND  no such VLAN, or no such port or LAG
 * OPEN_E_PARAM   unknown mode
 * OPEN_E_FAIL    the change cannot be stored; nothing was changed */
open_error_t rpcclt_openapiVlanIfParticipationGet(openapiClientHandle_t *handle, uint32_t vlanId,
                                                  uint32_t ifNum, uint32_t *mode);
open_error_t rpcclt_openapiVlanIfParticipationSet(openapiClientHandle_t *handle, uint32_t vlanId,
                                                  uint32_t ifNum, uint32_t mode);

/* Reads or sets whether frames of a VLAN leave an interface tagged: 1 tagged, 0 untagged. Note the order:
 * interface, VLAN.
 * OPEN_E_NOT_FOUND  no such VLAN, or no such port or LAG
 * OPEN_E_PARAM   neither 0 nor 1
 * OPEN_E_FAIL    the change cannot be stored; nothing was changed */
open_error_t openapiVlanIfTaggingGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t vlanId,
                                     uint32_t *tagging);
open_error_t rpcclt_openapiVlanIfTaggingSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t vlanId,
                                            uint32_t tagging);

/* Reads or sets an interface's port VLAN id, the VLAN of frames that come in untagged. Reads as 0 of an
 * interface that is neither port nor LAG.
 * OPEN_E_NOT_FOUND  no such interface; (set) no such VLAN, or neither port nor LAG
 * OPEN_E_FAIL    the change cannot be stored; nothing was changed */
open_error_t openapiVlanIfPvidGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *vlanId);
open_error_t rpcclt_openapiVlanIfPvidSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t vlanId);

/* Reads or sets which frames an interface lets in (OPEN_DOT1Q_ACCEPT_FRAME_TYPE_t). Reads as all of an
 * interface that is neither port nor LAG.
 * OPEN_E_NOT_FOUND  no such interface; (set) neither port nor LAG
 * OPEN_E_PARAM   unknown type
 * OPEN_E_FAIL    the change cannot be stored; nothing was changed */
open_error_t rpcclt_openapiVlanIfAcceptFrameTypeGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    uint32_t *type);
open_error_t rpcclt_openapiVlanIfAcceptFrameTypeSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    uint32_t type);

#ifdef __cplusplus
}
#endif
#endif
