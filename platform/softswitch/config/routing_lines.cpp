/* Applying and printing the lines about routing; see routing_lines.h. The rules are those of model/routing.h
 * and model/interface.h; here they get their words. */
#include "platform/softswitch/config/routing_lines.h"

#include "platform/softswitch/config/interface_lines.h"
#include "platform/softswitch/config/vlan_lines.h"

namespace softswitch {

/* --- vlan <vlan> routing interface <number> ------------------------------------------------------------- */

static std::string room_words(const switch_model &model) {
  return "there is room for " + std::to_string(model.limits.vlan_routing_interfaces) +
         " VLAN routing interfaces only";
}

/* A routing interface that is there already stays as it is: the line says what shall be, not what shall be
 * done. */
open_error_t apply_vlan_routing(switch_model &model, std::span<const argument> arguments,
                                std::string *error) {
  uint32_t number, id = arguments[0].number;
  open_error_t rc = interface_make_vlan_routing(model, id, &number);
  if (rc == OPEN_E_EXISTS) return OPEN_E_NONE;
  if (rc == OPEN_E_FULL) *error = room_words(model);
  return explain_vlan(rc, id, error);
}

/* Why a VLAN cannot have its routing interface under this number. */
static std::string number_conflict(const switch_model &model, uint32_t id, uint32_t number) {
  uint32_t present = interface_of_vlan(model, id);
  if (present != 0) return interface_name(model, present) + " has the number " + std::to_string(present);
  return "the number " + std::to_string(number) + " is that of " + interface_name(model, number);
}

open_error_t apply_vlan_routing_interface(switch_model &model, std::span<const argument> arguments,
                                          std::string *error) {
  uint32_t id = arguments[0].number, number = arguments[1].number;
  if (number != 0 && interface_of_vlan(model, id) == number) return OPEN_E_NONE;
  open_error_t rc = interface_make_vlan_routing_as(model, id, number);
  if (rc == OPEN_E_PARAM)
    *error = "number of a VLAN routing interface out of range " + std::to_string(vlan_routing_first) + ".." +
             std::to_string(vlan_routing_last);
  if (rc == OPEN_E_EXISTS) *error = number_conflict(model, id, number);
  if (rc == OPEN_E_FULL) *error = room_words(model);
  return explain_vlan(rc, id, error);
}

open_error_t apply_no_vlan_routing(switch_model &model, std::span<const argument> arguments,
                                   std::string *error) {
  uint32_t id = arguments[0].number;
  open_error_t rc = interface_remove_vlan_routing(model, id);
  if (rc == OPEN_E_NOT_FOUND) *error = vlan_words(id) + " has no routing interface";
  if (rc == OPEN_E_FAIL) {
    uint32_t number = interface_of_vlan(model, id);
    *error = interface_name(model, number) + interface_use_words(model, number);
  }
  return rc;
}

void print_vlan_routing_interfaces(const config_printer &print) {
  for (uint32_t number = vlan_routing_first; number <= vlan_routing_last; number++) {
    const interface_entry &entry = print.model.interfaces->at[number];
    if (entry.exists) print.line({entry.routed_vlan, number});
  }
}

/* --- ip routing, ipv6 routing --------------------------------------------------------------------------- */

static open_error_t set_routing(switch_model &model, OPEN_AF_t family, bool on) {
  routing_set_enabled(model, family, on);
  return OPEN_E_NONE;
}

open_error_t apply_ip_routing(switch_model &model, std::span<const argument>, std::string *) {
  return set_routing(model, OPEN_AF_INET, true);
}

open_error_t apply_no_ip_routing(switch_model &model, std::span<const argument>, std::string *) {
  return set_routing(model, OPEN_AF_INET, false);
}

void print_ip_routing(const config_printer &print) {
  if (routing_enabled(print.model, OPEN_AF_INET)) print.line({});
}

open_error_t apply_ipv6_routing(switch_model &model, std::span<const argument>, std::string *) {
  return set_routing(model, OPEN_AF_INET6, true);
}

open_error_t apply_no_ipv6_routing(switch_model &model, std::span<const argument>, std::string *) {
  return set_routing(model, OPEN_AF_INET6, false);
}

void print_ipv6_routing(const config_printer &print) {
  if (routing_enabled(print.model, OPEN_AF_INET6)) print.line({});
}

/* --- interface <interface> routing ---------------------------------------------------------------------- */

static open_error_t set_interface_routing(switch_model &model, uint32_t interface, bool on,
                                          std::string *error) {
  open_error_t rc = interface_set_routing(model, interface, on);
  if (rc == OPEN_E_UNAVAIL)
    *error =
        interface_name(model, interface) + (interface == cpu_interface ? " never" : " always") + " routes";
  return rc;
}

open_error_t apply_interface_routing(switch_model &model, std::span<const argument> arguments,
                                     std::string *error) {
  return set_interface_routing(model, arguments[0].number, true, error);
}

open_error_t apply_no_interface_routing(switch_model &model, std::span<const argument> arguments,
                                        std::string *error) {
  return set_interface_routing(model, arguments[0].number, false, error);
}

void print_routing_interfaces(const config_printer &print) {
  each_switching_interface(print.model, [&](uint32_t number) {
    if (print.model.interfaces->at[number].routing) print.line({number});
  });
}

void print_silent_vlan_interfaces(const config_printer &print) {
  for (uint32_t number = vlan_routing_first; number <= vlan_routing_last; number++) {
    const interface_entry &entry = print.model.interfaces->at[number];
    if (entry.exists && !entry.routing) print.line({number});
  }
}

} // namespace softswitch
