/* Leases; see leases.h. */
#include "platform/softswitch/model/leases.h"

#include "platform/softswitch/model/switch.h"

namespace softswitch {

open_error_t lease_offer(switch_model &model, uint32_t interface, const open_inet_pfx_t &offer) {
  open_error_t rc = addresses_check(model, interface);
  if (rc != OPEN_E_NONE) return rc;
  if (!inet_is_host(offer)) return OPEN_E_PARAM;
  if (lease_overlap(model, interface, offer) != 0) return OPEN_E_EXISTS;
  lease &offered = model.leases.edit()->by_interface[interface];
  (offer.ipAddr.family == OPEN_AF_INET6 ? offered.ipv6 : offered.ipv4) = offer;
  return OPEN_E_NONE;
}

void lease_withdraw(switch_model &model, uint32_t interface) {
  if (model.leases->by_interface.contains(interface)) model.leases.edit()->by_interface.erase(interface);
}

const lease &lease_of(const switch_model &model, uint32_t interface) {
  static const lease none;
  auto found = model.leases->by_interface.find(interface);
  return found == model.leases->by_interface.end() ? none : found->second;
}

uint32_t lease_overlap(const switch_model &model, uint32_t interface, const open_inet_pfx_t &offer) {
  for (const auto &[number, offered] : model.leases->by_interface) {
    if (number == interface) continue;
    if (inet_conflict(offered.ipv4, offer) || inet_conflict(offered.ipv6, offer)) return number;
  }
  return 0;
}

} // namespace softswitch
