/* Leases: the addresses that the world outside offers to interfaces that obtain theirs, by DHCP in IPv4 and
 * by autoconfiguration in IPv6. Lab control says what is offered; like cables that is no configuration, and
 * nothing about it is journalled or pending. Which offers are in force is decided where addresses are read
 * (addresses_of()). */
#ifndef KESTREL_SOFTSWITCH_MODEL_LEASES_H
#define KESTREL_SOFTSWITCH_MODEL_LEASES_H

#include "platform/softswitch/model/inet_address.h"

#include <cstdint>
#include <map>

namespace softswitch {

struct switch_model;

/* What is offered to one interface; of family OPEN_AF_NONE where nothing is. */
struct lease {
  open_inet_pfx_t ipv4 = {};
  open_inet_pfx_t ipv6 = {};
};

struct lease_table {
  std::map<uint32_t, lease> by_interface; /* only those with an offer */
};

/* Offers an address, in the place of the one of its family that was offered before.
 * OPEN_E_PARAM: an interface number outside every range, or no host's address. OPEN_E_NOT_FOUND: no such
 * interface, or the CPU interface. OPEN_E_EXISTS: it overlaps with what is offered to another interface. */
open_error_t lease_offer(switch_model &model, uint32_t interface, const open_inet_pfx_t &offer);
/* Withdraws what is offered to an interface. */
void lease_withdraw(switch_model &model, uint32_t interface);

/* What is offered to an interface. */
const lease &lease_of(const switch_model &model, uint32_t interface);
/* Another interface with an offer that overlaps with this one; 0 when there is none. */
uint32_t lease_overlap(const switch_model &model, uint32_t interface, const open_inet_pfx_t &offer);

} // namespace softswitch

#endif
