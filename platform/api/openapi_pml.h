/* Port MAC locking: which MAC addresses may send on an interface. A locked address is bound to a VLAN.
 * Ports and LAGs can be locked.
 *
 * MAC addresses are texts. Going in: six groups of two hexadecimal digits of any case, separated by colons,
 * of a single station (not zero, not a group address). Coming out: the same in upper case.
 *
 * Unless a function says otherwise: OPEN_E_PARAM for an interface number outside every range that the switch
 * numbers interfaces in, a VLAN id outside 1..4094 or a text that is no such address; OPEN_E_NOT_FOUND for no
 * such port or LAG. Every function that changes something answers OPEN_E_FAIL when the change cannot be
 * stored; nothing was changed then. */
#ifndef OPENAPI_PML_H
#define OPENAPI_PML_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Sticky mode: 1 means that addresses learnt on the interface stay locked. Setting takes 1 for on and
 * anything else for off; reading gives 1 or 0. */
open_error_t rpcclt_openapiPmlIntfStickyModeGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                uint32_t *mode);
open_error_t rpcclt_openapiPmlIntfStickyModeSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t mode);

/* Locks an address.
 *   sticky  1 marks the entry sticky, 0 does not
 * OPEN_E_PARAM   also: `sticky` is neither 0 nor 1
 * OPEN_E_NOT_FOUND  also: no such VLAN
 * OPEN_E_EXISTS  the address is locked in this VLAN already, here or on another interface
 * OPEN_E_FULL    the interface has as many entries as it may have */
open_error_t rpcclt_openapiPmlIntfStaticEntryAdd(openapiClientHandle_t *handle, uint32_t ifNum,
                                                 open_buffdesc *mac, uint32_t vlanId, uint32_t sticky);
/* Releases an address. Deleting a VLAN, or a LAG, releases what is locked in it.
 * OPEN_E_NOT_FOUND  also: it is not locked on this interface in this VLAN */
open_error_t rpcclt_openapiPmlIntfStaticEntryDelete(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    open_buffdesc *mac, uint32_t vlanId);

/* Walks over the locked addresses of an interface, by address and then by VLAN. For GetNext `mac` and
 * `vlanId` go in as the entry after which to go on (it need not be there) and come out as the next one; the
 * size of `mac` going in is that of its buffer.
 * OPEN_E_PARAM   also: the buffer is too small
 * OPEN_E_FAIL    there is none: the walk is over */
open_error_t rpcclt_openapiPmlIntfStaticEntryGetFirst(openapiClientHandle_t *handle, uint32_t ifNum,
                                                      open_buffdesc *mac, uint32_t *vlanId, uint32_t *sticky);
open_error_t rpcclt_openapiPmlIntfStaticEntryGetNext(openapiClientHandle_t *handle, uint32_t ifNum,
                                                     open_buffdesc *mac, uint32_t *vlanId, uint32_t *sticky);

#ifdef __cplusplus
}
#endif
#endif
