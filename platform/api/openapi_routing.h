/* Routing: the IP addresses of interfaces. */
#ifndef OPENAPI_ROUTING_H
#define OPENAPI_ROUTING_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* An address with the length of its prefix in bits. */
typedef struct {
  open_inet_addr_t ipAddr;
  uint32_t pfxLen;
  uint32_t reserved; /* 0 */
} open_inet_pfx_t;

/* Reads an interface's addresses of one family.
 *   family  OPEN_AF_INET: the primary address, whatever `prefix` holds. OPEN_AF_INET6: the address after the
 *           one in `prefix`, which need not be there, in ascending order; the first one when `prefix` is
 *           all zero or holds an IPv4 address
 *   prefix  comes out as the address; untouched unless the call returns OPEN_E_NONE
 * OPEN_E_PARAM   unknown family, or an interface number outside every range
 * OPEN_E_NOT_FOUND  no such interface, or it has no IPv4 address
 * OPEN_E_FAIL    there is no further IPv6 address */
open_error_t rpcclt_openapiRtrIntfIpAddrGet(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                            open_inet_pfx_t *prefix);

/* Reads an interface's secondary IPv4 addresses, one a call.
 *   family  OPEN_AF_INET
 *   index   in: the position of the address before, 0 to begin; out: the position of this one, from 1
 * OPEN_E_PARAM   another family, or an interface number outside every range
 * OPEN_E_NOT_FOUND  no such interface
 * OPEN_E_FAIL    there is no further address */
open_error_t rpcclt_openapiRtrIntfSecIpAddrGet(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                               open_inet_pfx_t *prefix, uint32_t *index);

#ifdef __cplusplus
}
#endif
#endif
