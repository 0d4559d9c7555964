/* Routing; the contracts are in platform/api/openapi_routing.h. */
#include "platform/api/openapi_routing.h"

#include "platform/softswitch/api/call.h"

using namespace softswitch;

/* Callers hand over prefixes as so many bytes. */
static_assert(sizeof(open_inet_pfx_t) == 28);

static open_error_t get_primary(const switch_model &model, uint32_t interface, open_inet_pfx_t *prefix) {
  const open_inet_pfx_t &primary = addresses_of(model, interface).primary;
  if (primary.ipAddr.family == OPEN_AF_NONE) return OPEN_E_NOT_FOUND;
  *prefix = primary;
  return OPEN_E_NONE;
}

static open_error_t get_next_ipv6(const switch_model &model, uint32_t interface, open_inet_pfx_t *prefix) {
  const open_inet_pfx_t *next = address_next_ipv6(model, interface, prefix->ipAddr);
  if (!next) return OPEN_E_FAIL;
  *prefix = *next;
  return OPEN_E_NONE;
}

open_error_t rpcclt_openapiRtrIntfIpAddrGet(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                            open_inet_pfx_t *prefix) {
  return api_call(__func__, handle, {family, ifNum, output(prefix)}, [&](switch_model &model) {
    if (family != OPEN_AF_INET && family != OPEN_AF_INET6) return OPEN_E_PARAM;
    open_error_t rc = interface_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    return family == OPEN_AF_INET ? get_primary(model, ifNum, prefix) : get_next_ipv6(model, ifNum, prefix);
  });
}

open_error_t rpcclt_openapiRtrIntfSecIpAddrGet(openapiClientHandle_t *handle, uint32_t family, uint32_t ifNum,
                                               open_inet_pfx_t *prefix, uint32_t *index) {
  return api_call(__func__, handle, {family, ifNum, output(prefix), index}, [&](switch_model &model) {
    if (family != OPEN_AF_INET) return OPEN_E_PARAM;
    open_error_t rc = interface_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    const auto &secondary = addresses_of(model, ifNum).secondary;
    if (*index >= secondary.size()) return OPEN_E_FAIL;
    *prefix = secondary[*index];
    ++*index;
    return OPEN_E_NONE;
  });
}
