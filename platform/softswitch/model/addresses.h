/* The IP addresses of interfaces. Ports, LAGs, loopbacks and VLAN routing interfaces can have a primary IPv4
 * address, with it secondary ones, and IPv6 addresses. An address comes with the length of its prefix, and no
 * two interfaces have prefixes that overlap; link-local addresses may repeat from one interface to another.
 *
 * Addresses are given, which is configuration, or obtained: an interface with DHCP has the offer of its lease
 * (leases.h) as its primary address, one with autoconfiguration has it among its IPv6 addresses. What is
 * given comes first: an offer that overlaps with a prefix given to another interface, or that has an address
 * given to this one, is declined, and counts as soon as that is gone.
 *
 * Unless a function says otherwise: OPEN_E_PARAM for an interface number outside every range, and for a
 * prefix of the wrong family or that is no host's (inet_is_host()); OPEN_E_NOT_FOUND for no such interface,
 * and for the CPU interface, which has no addresses; OPEN_E_EXISTS when the interface has the same address
 * otherwise, or another interface has an overlapping prefix; OPEN_E_FULL for no room. An operation that finds
 * everything as wanted changes nothing; any other makes the interface pending. */
#ifndef KESTREL_SOFTSWITCH_MODEL_ADDRESSES_H
#define KESTREL_SOFTSWITCH_MODEL_ADDRESSES_H

#include "platform/softswitch/model/inet_address.h"

#include <cstdint>
#include <map>
#include <vector>

namespace softswitch {

struct switch_model;

struct interface_addresses {
  bool dhcp = false;                      /* the primary address is obtained */
  bool autoconfiguration = false;         /* an IPv6 address is obtained */
  open_inet_pfx_t primary = {};           /* of family OPEN_AF_NONE: it has none */
  std::vector<open_inet_pfx_t> secondary; /* in the order in which they were configured */
  std::vector<open_inet_pfx_t> ipv6;      /* in ascending order */
};

struct address_table {
  /* What was configured: no address in it is an obtained one. Only those interfaces with anything. */
  std::map<uint32_t, interface_addresses> by_interface;
};

/* Takes all addresses from all interfaces. interfaces_reset() notes the change. */
void addresses_reset(switch_model &model);
/* Takes all addresses from one interface: what its removal does. */
void addresses_forget(switch_model &model, uint32_t interface);

/* What an interface has, obtained addresses included; nothing for one that does not exist. */
interface_addresses addresses_of(const switch_model &model, uint32_t interface);
/* The same without obtained addresses. */
const interface_addresses &addresses_configured(const switch_model &model, uint32_t interface);
/* Another interface with a given prefix that overlaps with this one; 0 when there is none. */
uint32_t address_overlap(const switch_model &model, uint32_t interface, const open_inet_pfx_t &prefix);

/* Whether this interface can have addresses, as a result. */
open_error_t addresses_check(const switch_model &model, uint32_t interface);

/* Sets the primary address in the place of the one before; ends DHCP. */
open_error_t address_set_primary(switch_model &model, uint32_t interface, const open_inet_pfx_t &prefix);
/* OPEN_E_FAIL: there are secondary addresses. */
open_error_t address_remove_primary(switch_model &model, uint32_t interface);
/* Lets an interface obtain its primary address in the place of the given one, or no longer.
 * OPEN_E_FAIL: there are secondary addresses. */
open_error_t address_set_dhcp(switch_model &model, uint32_t interface, bool on);

/* OPEN_E_FAIL: there is no given primary address. */
open_error_t address_add_secondary(switch_model &model, uint32_t interface, const open_inet_pfx_t &prefix);
/* OPEN_E_NOT_FOUND also: the interface does not have it, or with another prefix length. */
open_error_t address_remove_secondary(switch_model &model, uint32_t interface, const open_inet_pfx_t &prefix);

open_error_t address_add_ipv6(switch_model &model, uint32_t interface, const open_inet_pfx_t &prefix);
/* OPEN_E_NOT_FOUND also: the interface does not have it, or with another prefix length. */
open_error_t address_remove_ipv6(switch_model &model, uint32_t interface, const open_inet_pfx_t &prefix);
/* Lets an interface obtain an IPv6 address besides those given, or no longer. */
open_error_t address_set_autoconfiguration(switch_model &model, uint32_t interface, bool on);

/* The first IPv6 address of an interface above `after`, obtained ones included; false when there is none. An
 * `after` that is no IPv6 address comes before all. */
bool address_next_ipv6(const switch_model &model, uint32_t interface, const open_inet_addr_t &after,
                       open_inet_pfx_t *next);

} // namespace softswitch

#endif
