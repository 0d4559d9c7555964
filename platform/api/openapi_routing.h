/* Routing: whether the switch routes, which interfaces do, and the IP addresses of interfaces.
 *
 * Ports and LAGs are routing interfaces while their routing is on and they are in no LAG. Loopbacks and VLAN
 * routing interfaces always are. Addresses can be given to any of these at any time, whether or not routing
 * is on; the CPU interface has none.
 *
 * Unless a function says otherwise: OPEN_E_PARAM for an interface number outside every range that the switch
 * numbers interfaces in, OPEN_E_NOT_FOUND for one inside that does not exist, or is not of the kind that the
 * function is about. Every function that changes something answers OPEN_E_FAIL when the change cannot be
 * stored; nothing was changed then. */
#ifndef OPENAPI_ROUTING_H
#define OPENAPI_ROUTING_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* --- The switch as a router ----------------------------------------------------------------------------- */

/* Whether the switch routes packets of a family (OPEN_AF_INET, OPEN_AF_INET6): OPEN_CONTROL_t, off in factory
 * state.
 * OPEN_E_PARAM   unknown family; (set) neither 0 nor 1 */
open_error_t rpcclt_openapiRtrAdminModeGet(openapiClientHandle_t *handle, uint32_t family, uint32_t *mode);
open_error_t rpcclt_openapiRtrAdminModeSet(openapiClientHandle_t *handle, uint32_t family, uint32_t mode);

/* --- Routing interfaces --------------------------------------------------------------------------------- */

/* Turns the routing of an interface on or off, OPEN_CONTROL_t. In factory state it is off for ports and LAGs
 * and on for VLAN routing interfaces, which stay routing interfaces when it is off.
 * OPEN_E_PARAM   also: neither 0 nor 1
 * OPEN_E_UNAVAIL loopbacks, which always route, and the CPU interface, which never does */
open_error_t rpcclt_openapiRtrIntfRtrAdminModeSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                  uint32_t mode);

/* The next routing interface after `ifNum` (0 begins; it need not exist), by number: ports, LAGs, loopbacks,
 * VLAN routing interfaces.
 * OPEN_E_FAIL    there is none: the walk is over */
open_error_t rpcclt_openapiRtrIntfNextGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *nextIfNum);

/* The type (OPEN_INTF_TYPE_t) of a routing interface. */
open_error_t rpcclt_openapiRtrIntfTypeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *type);

/* The name of a routing interface; rpcclt_openapiIntfNameSizeGet() says how large the buffer must be.
 * OPEN_E_PARAM   also: the buffer is too small */
open_error_t rpcclt_openapiRtrIntfNameGet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *name);

/* The VLAN of a VLAN routing interface. */
open_error_t rpcclt_openapiRtrIntfVlanIdGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *vlanId);

/* The id of a loopback, from 0. */
open_error_t rpcclt_openapiRtrIntfLoopbackIdGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                uint32_t *loopbackId);

/* Makes the routing interface of a VLAN, with the lowest free number.
 * OPEN_E_PARAM   outside 1..4094
 * OPEN_E_NOT_FOUND  no such VLAN
 * OPEN_E_EXISTS  it has one
 * OPEN_E_FULL    there are as many as there may be */
open_error_t rpcclt_openapiRtrVlanIntfCreate(openapiClientHandle_t *handle, uint32_t vlanId);
/* Removes it with its addresses.
 * OPEN_E_PARAM   outside 1..4094
 * OPEN_E_NOT_FOUND  no such VLAN, or it has none
 * OPEN_E_FAIL    also: it is the source of VXLAN, or a BGP peer's update source or scope */
open_error_t rpcclt_openapiRtrVlanIntfDelete(openapiClientHandle_t *handle, uint32_t vlanId);
/* Its number.
 * OPEN_E_PARAM   outside 1..4094
 * OPEN_E_NOT_FOUND  no such VLAN, or it has none */
open_error_t rpcclt_openapiRtrVlanIntfNumGetZYL(openapiClientHandle_t *handle, uint32_t vlanId,
                                                uint32_t *ifNum);

/* --- Addresses ------------------------------------------------------------------------------------------ */

/* An address with the length of its prefix in bits. */
typedef struct {
  open_inet_addr_t ipAddr;
  uint32_t pfxLen;
  uint32_t reserved; /* 0 */
} open_inet_pfx_t;

/* How an interface comes by an address. */
typedef uint32_t OPEN_INTF_IP_ADDR_TYPE_t;
enum {
  OPEN_INTF_IP_ADDR_PRIMARY = 0,   /* given; in IPv4 the primary address, in IPv6 one of its addresses */
  OPEN_INTF_IP_ADDR_SECONDARY = 1, /* given; IPv4 only: one of the secondary addresses */
  OPEN_INTF_IP_ADDR_AUTO = 2 /* obtained: DHCP in IPv4 (RFC 2131), autoconfiguration in IPv6 (RFC 4862) */
};

/* Gives an interface an address, or lets it obtain one.
 *   family  of the address: OPEN_AF_INET, OPEN_AF_INET6
 *   method  PRIMARY in IPv4 sets the primary address in the place of the one before, and ends DHCP. AUTO in
 *           IPv4 takes the place of the primary address
 *   prefix  a host's address with a prefix of 1..32 or 1..128 bits; not looked at for AUTO
 *   extArg  OPEN_CONTROL_t. 1 for a given IPv6 address: its last 64 bits are made from the interface's MAC
 *           address (modified EUI-64, RFC 4291 appendix A), and the prefix has at most 64 bits. Means nothing
 *           otherwise
 * What is set already is no error. No two interfaces have overlapping prefixes, IPv6 link-local ones
 * excepted.
 * OPEN_E_PARAM   also: unknown family or method, SECONDARY in IPv6, `extArg` neither 0 nor 1, the prefix
 *                is of another family or no host's
 * OPEN_E_EXISTS  the interface has the same address with another prefix length or in another part, or
 *                another interface has an overlapping prefix
 * OPEN_E_FULL    the interface has as many as it may have
 * OPEN_E_FAIL    also: SECONDARY without a given primary address; AUTO in IPv4 with secondary addresses */
open_error_t rpcclt_openapiRtrIntfIpAddrAdd(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                            uint32_t method, const open_inet_pfx_t *prefix, uint32_t extArg);

/* Takes an address from an interface, or ends its obtaining one. Arguments as above.
 * OPEN_E_PARAM   as above
 * OPEN_E_NOT_FOUND  also: the interface does not have this address with this prefix length in this part
 * OPEN_E_FAIL    also: the primary address, while there are secondary ones
 * OPEN_E_ERROR   AUTO: the interface does not obtain its address */
open_error_t rpcclt_openapiRtrIntfIpAddrDel(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                            uint32_t method, const open_inet_pfx_t *prefix, uint32_t extArg);

/* Reads an interface's addresses of one family, obtained ones included.
 *   family  OPEN_AF_INET: the primary address, whatever `prefix` holds. OPEN_AF_INET6: the address after the
 *           one in `prefix`, which need not be there, in ascending order; the first one when `prefix` is
 *           all zero or holds an IPv4 address
 *   prefix  comes out as the address; untouched unless the call returns OPEN_E_NONE
 * OPEN_E_PARAM   also: unknown family
 * OPEN_E_NOT_FOUND  also: it has no IPv4 address
 * OPEN_E_FAIL    there is no further IPv6 address */
open_error_t rpcclt_openapiRtrIntfIpAddrGet(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                            open_inet_pfx_t *prefix);

/* Reads an interface's secondary IPv4 addresses, one a call.
 *   family  OPEN_AF_INET
 *   index   in: the position of the address before, 0 to begin; out: the position of this one, from 1
 * OPEN_E_PARAM   also: another family
 * OPEN_E_FAIL    there is no further address */
open_error_t rpcclt_openapiRtrIntfSecIpAddrGet(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                               open_inet_pfx_t *prefix, uint32_t *index);

#ifdef __cplusplus
}
#endif
#endif
