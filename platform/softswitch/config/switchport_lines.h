/* The lines of the configuration language about switchport modes: what the rows of commands.cpp point to.
 * Apply functions take the arguments of their pattern in order. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_SWITCHPORT_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_SWITCHPORT_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

open_error_t apply_switchport_mode(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_switchport_mode(switch_model &, std::span<const argument>, std::string *error);
void print_switchport_modes(const config_printer &);

open_error_t apply_access_vlan(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_access_vlan(switch_model &, std::span<const argument>, std::string *error);
void print_access_vlans(const config_printer &);

open_error_t apply_native_vlan(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_native_vlan(switch_model &, std::span<const argument>, std::string *error);
void print_native_vlans(const config_printer &);

/* What the line does to the list of a trunk: its words in order. */
enum trunk_vlans_change : uint32_t { trunk_vlans_add, trunk_vlans_remove, trunk_vlans_only };

open_error_t apply_trunk_vlans(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_trunk_vlans(switch_model &, std::span<const argument>, std::string *error);
void print_trunk_vlans(const config_printer &);

} // namespace softswitch

#endif
