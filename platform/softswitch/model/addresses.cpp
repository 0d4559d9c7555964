/* The IP addresses of interfaces; see addresses.h. */
#include "platform/softswitch/model/addresses.h"

#include "platform/softswitch/model/switch.h"

#include <algorithm>

namespace softswitch {

using prefix_list = std::vector<open_inet_pfx_t>;

/* --- Finding -------------------------------------------------------------------------------------------- */

const interface_addresses &addresses_configured(const switch_model &model, uint32_t interface) {
  static const interface_addresses none;
  auto found = model.addresses->by_interface.find(interface);
  return found == model.addresses->by_interface.end() ? none : found->second;
}

/* Where the list has this address, with a prefix of whatever length; its end when it does not. */
static auto place_of_address(const prefix_list &list, const open_inet_pfx_t &prefix) {
  return std::find_if(list.begin(), list.end(),
                      [&](const open_inet_pfx_t &entry) { return inet_same_address(entry, prefix); });
}

static bool has_address(const prefix_list &list, const open_inet_pfx_t &prefix) {
  return place_of_address(list, prefix) != list.end();
}

/* Whether the list has this very address and prefix. */
static bool has(const prefix_list &list, const open_inet_pfx_t &prefix) {
  auto place = place_of_address(list, prefix);
  return place != list.end() && inet_same_prefix(*place, prefix);
}

static bool any_overlaps(const interface_addresses &addresses, const open_inet_pfx_t &prefix) {
  auto overlaps = [&](const open_inet_pfx_t &entry) { return inet_conflict(entry, prefix); };
  return overlaps(addresses.primary) ||
         std::any_of(addresses.secondary.begin(), addresses.secondary.end(), overlaps) ||
         std::any_of(addresses.ipv6.begin(), addresses.ipv6.end(), overlaps);
}

uint32_t address_overlap(const switch_model &model, uint32_t interface, const open_inet_pfx_t &prefix) {
  for (const auto &[number, addresses] : model.addresses->by_interface) {
    if (number != interface && any_overlaps(addresses, prefix)) return number;
  }
  return 0;
}

static bool is_above(const open_inet_pfx_t &entry, const open_inet_addr_t &after) {
  return inet_bytes(entry.ipAddr) > inet_bytes(after);
}

/* Puts an IPv6 address into its place. */
static void insert_ipv6(prefix_list &list, const open_inet_pfx_t &prefix) {
  auto above = [&](const open_inet_pfx_t &entry) { return is_above(entry, prefix.ipAddr); };
  list.insert(std::find_if(list.begin(), list.end(), above), prefix);
}

/* Whether an interface that obtains addresses takes this offer. */
static bool accepts(const switch_model &model, uint32_t interface, const open_inet_pfx_t &offer) {
  if (offer.ipAddr.family == OPEN_AF_NONE) return false;
  if (has_address(addresses_configured(model, interface).ipv6, offer)) return false;
  return address_overlap(model, interface, offer) == 0;
}

interface_addresses addresses_of(const switch_model &model, uint32_t interface) {
  interface_addresses all = addresses_configured(model, interface);
  const lease &offered = lease_of(model, interface);
  if (all.dhcp && accepts(model, interface, offered.ipv4)) all.primary = offered.ipv4;
  if (all.autoconfiguration && accepts(model, interface, offered.ipv6)) insert_ipv6(all.ipv6, offered.ipv6);
  return all;
}

/* Whether an offer counts takes a look at all addresses of the switch, and is asked only when the answer may
 * be the offer. */
bool address_next_ipv6(const switch_model &model, uint32_t interface, const open_inet_addr_t &after,
                       open_inet_pfx_t *next) {
  const interface_addresses &present = addresses_configured(model, interface);
  const open_inet_pfx_t &offer = lease_of(model, interface).ipv6;
  auto follows = [&](const open_inet_pfx_t &entry) {
    return after.family != OPEN_AF_INET6 || is_above(entry, after);
  };
  auto given = std::find_if(present.ipv6.begin(), present.ipv6.end(), follows);
  bool any_given = given != present.ipv6.end();
  bool offer_first = present.autoconfiguration && follows(offer) &&
                     (!any_given || is_above(*given, offer.ipAddr)) && accepts(model, interface, offer);
  if (offer_first || any_given) *next = offer_first ? offer : *given;
  return offer_first || any_given;
}

/* --- Changing ------------------------------------------------------------------------------------------- */

/* What an interface has, for changing; its change noted. */
static interface_addresses *edit(switch_model &model, uint32_t interface) {
  interface_edit(model, interface);
  return &model.addresses.edit()->by_interface[interface];
}

void addresses_reset(switch_model &model) {
  model.addresses.edit()->by_interface.clear();
}

void addresses_forget(switch_model &model, uint32_t interface) {
  if (!model.addresses->by_interface.count(interface)) return;
  model.addresses.edit()->by_interface.erase(interface);
  interface_edit(model, interface);
}

/* Interfaces of which nothing is configured are not in the table. */
static void drop_if_empty(switch_model &model, uint32_t interface) {
  const interface_addresses &left = addresses_configured(model, interface);
  bool any =
      left.dhcp || left.autoconfiguration || left.primary.ipAddr.family != OPEN_AF_NONE || !left.ipv6.empty();
  if (!any) model.addresses.edit()->by_interface.erase(interface);
}

open_error_t addresses_check(const switch_model &model, uint32_t interface) {
  open_error_t rc = interface_check(model, interface);
  return rc == OPEN_E_NONE && interface == cpu_interface ? OPEN_E_NOT_FOUND : rc;
}

/* The check of whatever gives an address to an interface. */
static open_error_t check(const switch_model &model, uint32_t interface, OPEN_AF_t family,
                          const open_inet_pfx_t &prefix) {
  open_error_t rc = addresses_check(model, interface);
  if (rc != OPEN_E_NONE) return rc;
  return prefix.ipAddr.family == family && inet_is_host(prefix) ? OPEN_E_NONE : OPEN_E_PARAM;
}

open_error_t address_set_primary(switch_model &model, uint32_t interface, const open_inet_pfx_t &prefix) {
  open_error_t rc = check(model, interface, OPEN_AF_INET, prefix);
  if (rc != OPEN_E_NONE) return rc;
  const interface_addresses &present = addresses_configured(model, interface);
  if (inet_same_prefix(present.primary, prefix)) return OPEN_E_NONE;
  if (has_address(present.secondary, prefix)) return OPEN_E_EXISTS;
  if (address_overlap(model, interface, prefix) != 0) return OPEN_E_EXISTS;
  interface_addresses *addresses = edit(model, interface);
  addresses->primary = prefix;
  addresses->dhcp = false;
  return OPEN_E_NONE;
}

open_error_t address_remove_primary(switch_model &model, uint32_t interface) {
  open_error_t rc = interface_check(model, interface);
  if (rc != OPEN_E_NONE) return rc;
  const interface_addresses &present = addresses_configured(model, interface);
  if (!present.secondary.empty()) return OPEN_E_FAIL;
  if (present.primary.ipAddr.family == OPEN_AF_NONE) return OPEN_E_NONE;
  edit(model, interface)->primary = {};
  drop_if_empty(model, interface);
  return OPEN_E_NONE;
}

open_error_t address_set_dhcp(switch_model &model, uint32_t interface, bool on) {
  open_error_t rc = addresses_check(model, interface);
  if (rc != OPEN_E_NONE) return rc;
  const interface_addresses &present = addresses_configured(model, interface);
  if (present.dhcp == on) return OPEN_E_NONE;
  if (!present.secondary.empty()) return OPEN_E_FAIL;
  interface_addresses *addresses = edit(model, interface);
  addresses->primary = {};
  addresses->dhcp = on;
  drop_if_empty(model, interface);
  return OPEN_E_NONE;
}

open_error_t address_add_secondary(switch_model &model, uint32_t interface, const open_inet_pfx_t &prefix) {
  open_error_t rc = check(model, interface, OPEN_AF_INET, prefix);
  if (rc != OPEN_E_NONE) return rc;
  const interface_addresses &present = addresses_configured(model, interface);
  if (present.primary.ipAddr.family == OPEN_AF_NONE) return OPEN_E_FAIL;
  if (has(present.secondary, prefix)) return OPEN_E_NONE;
  if (inet_same_address(present.primary, prefix)) return OPEN_E_EXISTS;
  if (has_address(present.secondary, prefix)) return OPEN_E_EXISTS;
  if (address_overlap(model, interface, prefix) != 0) return OPEN_E_EXISTS;
  if (present.secondary.size() >= model.limits.secondary_addresses) return OPEN_E_FULL;
  edit(model, interface)->secondary.push_back(prefix);
  return OPEN_E_NONE;
}

open_error_t address_remove_secondary(switch_model &model, uint32_t interface,
                                      const open_inet_pfx_t &prefix) {
  open_error_t rc = interface_check(model, interface);
  if (rc != OPEN_E_NONE) return rc;
  if (!has(addresses_configured(model, interface).secondary, prefix)) return OPEN_E_NOT_FOUND;
  prefix_list &list = edit(model, interface)->secondary;
  list.erase(place_of_address(list, prefix));
  return OPEN_E_NONE;
}

open_error_t address_add_ipv6(switch_model &model, uint32_t interface, const open_inet_pfx_t &prefix) {
  open_error_t rc = check(model, interface, OPEN_AF_INET6, prefix);
  if (rc != OPEN_E_NONE) return rc;
  const prefix_list &present = addresses_configured(model, interface).ipv6;
  if (has(present, prefix)) return OPEN_E_NONE;
  if (has_address(present, prefix)) return OPEN_E_EXISTS;
  if (address_overlap(model, interface, prefix) != 0) return OPEN_E_EXISTS;
  if (present.size() >= model.limits.ipv6_addresses) return OPEN_E_FULL;
  insert_ipv6(edit(model, interface)->ipv6, prefix);
  return OPEN_E_NONE;
}

open_error_t address_remove_ipv6(switch_model &model, uint32_t interface, const open_inet_pfx_t &prefix) {
  open_error_t rc = interface_check(model, interface);
  if (rc != OPEN_E_NONE) return rc;
  if (!has(addresses_configured(model, interface).ipv6, prefix)) return OPEN_E_NOT_FOUND;
  prefix_list &list = edit(model, interface)->ipv6;
  list.erase(place_of_address(list, prefix));
  drop_if_empty(model, interface);
  return OPEN_E_NONE;
}

open_error_t address_set_autoconfiguration(switch_model &model, uint32_t interface, bool on) {
  open_error_t rc = addresses_check(model, interface);
  if (rc != OPEN_E_NONE) return rc;
  if (addresses_configured(model, interface).autoconfiguration == on) return OPEN_E_NONE;
  edit(model, interface)->autoconfiguration = on;
  drop_if_empty(model, interface);
  return OPEN_E_NONE;
}

} // namespace softswitch
