/* Applying and printing the lines about the IP addresses of interfaces; see address_lines.h. The rules are
 * those of model/addresses.h; here they get their words. */
#include "platform/softswitch/config/address_lines.h"

namespace softswitch {

/* Why an interface cannot have an address that it has otherwise, or that overlaps with another interface's.
 */
static std::string conflict(const switch_model &model, uint32_t interface, const open_inet_pfx_t &prefix) {
  uint32_t other = address_overlap(model, interface, prefix);
  if (other == 0)
    return interface_name(model, interface) + " has the address " + inet_address_text(prefix.ipAddr) +
           " already";
  return inet_prefix_text(prefix) + " overlaps with a prefix of " + interface_name(model, other);
}

/* Says why an interface that exists was refused any address; passes the code on. */
static open_error_t explain_interface(open_error_t rc, const switch_model &model, uint32_t interface,
                                      std::string *error) {
  if (rc == OPEN_E_NOT_FOUND) *error = interface_name(model, interface) + " cannot have IP addresses";
  return rc;
}

/* Says why an address was refused to an interface; passes the code on. */
static open_error_t explain(open_error_t rc, const switch_model &model, uint32_t interface,
                            const open_inet_pfx_t &prefix, std::string *error) {
  if (rc == OPEN_E_PARAM) *error = inet_prefix_text(prefix) + " is not the address of a host";
  if (rc == OPEN_E_EXISTS) *error = conflict(model, interface, prefix);
  return explain_interface(rc, model, interface, error);
}

/* Says which address an interface does not have; passes the code on. */
static open_error_t explain_absence(open_error_t rc, const switch_model &model, uint32_t interface,
                                    const char *kind, const open_inet_pfx_t &prefix, std::string *error) {
  if (rc == OPEN_E_NOT_FOUND)
    *error = interface_name(model, interface) + " has no " + kind + " address " + inet_prefix_text(prefix);
  return rc;
}

static std::string room(const switch_model &model, uint32_t interface, uint32_t limit, const char *kind) {
  return interface_name(model, interface) + ": there is room for " + std::to_string(limit) + " " + kind +
         " addresses only";
}

static std::string secondary_words(const switch_model &model, uint32_t interface) {
  return interface_name(model, interface) + " has secondary addresses";
}

/* --- interface <interface> ip address <ip-prefix> ------------------------------------------------------- */

open_error_t apply_primary_address(switch_model &model, std::span<const argument> arguments,
                                   std::string *error) {
  uint32_t interface = arguments[0].number;
  const open_inet_pfx_t &prefix = arguments[1].prefix;
  return explain(address_set_primary(model, interface, prefix), model, interface, prefix, error);
}

open_error_t apply_no_primary_address(switch_model &model, std::span<const argument> arguments,
                                      std::string *error) {
  open_error_t rc = address_remove_primary(model, arguments[0].number);
  if (rc == OPEN_E_FAIL) *error = secondary_words(model, arguments[0].number);
  return rc;
}

void print_primary_addresses(const config_printer &print) {
  for (const auto &[interface, addresses] : print.model.addresses->by_interface) {
    if (addresses.primary.ipAddr.family != OPEN_AF_NONE) print.line({interface, addresses.primary});
  }
}

/* --- interface <interface> ip address dhcp -------------------------------------------------------------- */

static open_error_t set_dhcp(switch_model &model, uint32_t interface, bool on, std::string *error) {
  open_error_t rc = address_set_dhcp(model, interface, on);
  if (rc == OPEN_E_FAIL) *error = secondary_words(model, interface);
  return explain_interface(rc, model, interface, error);
}

open_error_t apply_dhcp(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return set_dhcp(model, arguments[0].number, true, error);
}

open_error_t apply_no_dhcp(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return set_dhcp(model, arguments[0].number, false, error);
}

void print_dhcp(const config_printer &print) {
  for (const auto &[interface, addresses] : print.model.addresses->by_interface) {
    if (addresses.dhcp) print.line({interface});
  }
}

/* --- interface <interface> ip secondary-address <ip-prefix> --------------------------------------------- */

open_error_t apply_secondary_address(switch_model &model, std::span<const argument> arguments,
                                     std::string *error) {
  uint32_t interface = arguments[0].number;
  const open_inet_pfx_t &prefix = arguments[1].prefix;
  open_error_t rc = address_add_secondary(model, interface, prefix);
  if (rc == OPEN_E_FAIL) *error = interface_name(model, interface) + " has no primary address";
  if (rc == OPEN_E_FULL) *error = room(model, interface, model.limits.secondary_addresses, "secondary");
  return explain(rc, model, interface, prefix, error);
}

open_error_t apply_no_secondary_address(switch_model &model, std::span<const argument> arguments,
                                        std::string *error) {
  uint32_t interface = arguments[0].number;
  const open_inet_pfx_t &prefix = arguments[1].prefix;
  open_error_t rc = address_remove_secondary(model, interface, prefix);
  return explain_absence(rc, model, interface, "secondary", prefix, error);
}

void print_secondary_addresses(const config_printer &print) {
  for (const auto &[interface, addresses] : print.model.addresses->by_interface) {
    for (const open_inet_pfx_t &prefix : addresses.secondary) print.line({interface, prefix});
  }
}

/* --- interface <interface> ipv6 address <ipv6-prefix> --------------------------------------------------- */

open_error_t apply_ipv6_address(switch_model &model, std::span<const argument> arguments,
                                std::string *error) {
  uint32_t interface = arguments[0].number;
  const open_inet_pfx_t &prefix = arguments[1].prefix;
  open_error_t rc = address_add_ipv6(model, interface, prefix);
  if (rc == OPEN_E_FULL) *error = room(model, interface, model.limits.ipv6_addresses, "IPv6");
  return explain(rc, model, interface, prefix, error);
}

open_error_t apply_no_ipv6_address(switch_model &model, std::span<const argument> arguments,
                                   std::string *error) {
  uint32_t interface = arguments[0].number;
  const open_inet_pfx_t &prefix = arguments[1].prefix;
  open_error_t rc = address_remove_ipv6(model, interface, prefix);
  return explain_absence(rc, model, interface, "IPv6", prefix, error);
}

void print_ipv6_addresses(const config_printer &print) {
  for (const auto &[interface, addresses] : print.model.addresses->by_interface) {
    for (const open_inet_pfx_t &prefix : addresses.ipv6) print.line({interface, prefix});
  }
}

/* --- interface <interface> ipv6 address auto ------------------------------------------------------------ */

static open_error_t set_autoconfiguration(switch_model &model, uint32_t interface, bool on,
                                          std::string *error) {
  return explain_interface(address_set_autoconfiguration(model, interface, on), model, interface, error);
}

open_error_t apply_autoconfiguration(switch_model &model, std::span<const argument> arguments,
                                     std::string *error) {
  return set_autoconfiguration(model, arguments[0].number, true, error);
}

open_error_t apply_no_autoconfiguration(switch_model &model, std::span<const argument> arguments,
                                        std::string *error) {
  return set_autoconfiguration(model, arguments[0].number, false, error);
}

void print_autoconfiguration(const config_printer &print) {
  for (const auto &[interface, addresses] : print.model.addresses->by_interface) {
    if (addresses.autoconfiguration) print.line({interface});
  }
}

} // namespace softswitch
