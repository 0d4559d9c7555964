/* Applying and printing the lines about switchport modes; see switchport_lines.h. The rules are those of
 * model/switchport.h. */
#include "platform/softswitch/config/switchport_lines.h"

#include "platform/softswitch/config/vlan_lines.h"

namespace softswitch {

/* Calls `print` with the number and the settings of each port and LAG. */
template <typename Print> static void each_switchport(const switch_model &model, Print print) {
  each_switching_interface(
      model, [&](uint32_t interface) { print(interface, model.interfaces->at[interface].switchport); });
}

/* --- interface <port> switchport mode general|access|trunk ---------------------------------------------- */

/* The words stand in the order of OPEN_SWITCHPORT_MODE_t, which counts from 1. */
open_error_t apply_switchport_mode(switch_model &model, std::span<const argument> arguments, std::string *) {
  return switchport_set_mode(model, arguments[0].number, arguments[1].number + OPEN_SWITCHPORT_MODE_GENERAL);
}

open_error_t apply_no_switchport_mode(switch_model &model, std::span<const argument> arguments,
                                      std::string *) {
  return switchport_set_mode(model, arguments[0].number, OPEN_SWITCHPORT_MODE_GENERAL);
}

void print_switchport_modes(const config_printer &print) {
  each_switchport(print.model, [&](uint32_t interface, const switchport_settings &settings) {
    uint32_t word = settings.mode - uint32_t{OPEN_SWITCHPORT_MODE_GENERAL};
    if (settings.mode != OPEN_SWITCHPORT_MODE_GENERAL) print.line({interface, word});
  });
}

/* --- interface <port> switchport access vlan <vlan> ----------------------------------------------------- */

open_error_t apply_access_vlan(switch_model &model, std::span<const argument> arguments, std::string *error) {
  uint32_t id = arguments[1].number;
  return explain_vlan(switchport_set_access_vlan(model, arguments[0].number, id), id, error);
}

open_error_t apply_no_access_vlan(switch_model &model, std::span<const argument> arguments, std::string *) {
  return switchport_set_access_vlan(model, arguments[0].number, 1);
}

void print_access_vlans(const config_printer &print) {
  each_switchport(print.model, [&](uint32_t interface, const switchport_settings &settings) {
    if (settings.access_vlan != 1) print.line({interface, settings.access_vlan});
  });
}

/* --- interface <port> switchport trunk native vlan <vlan> ----------------------------------------------- */

open_error_t apply_native_vlan(switch_model &model, std::span<const argument> arguments, std::string *error) {
  uint32_t id = arguments[1].number;
  return explain_vlan(switchport_set_native_vlan(model, arguments[0].number, id), id, error);
}

open_error_t apply_no_native_vlan(switch_model &model, std::span<const argument> arguments, std::string *) {
  return switchport_set_native_vlan(model, arguments[0].number, 1);
}

void print_native_vlans(const config_printer &print) {
  each_switchport(print.model, [&](uint32_t interface, const switchport_settings &settings) {
    if (settings.native_vlan != 1) print.line({interface, settings.native_vlan});
  });
}

/* --- interface <port> switchport trunk vlans add|remove|only <vlan-list> -------------------------------- */

open_error_t apply_trunk_vlans(switch_model &model, std::span<const argument> arguments, std::string *) {
  uint32_t interface = arguments[0].number, change = arguments[1].number;
  vlan_set vlans = change == trunk_vlans_only ? vlan_set() : switchport_trunk_vlans(model, interface);
  for (uint32_t id : arguments[2].list) vlans[id] = change != trunk_vlans_remove;
  return switchport_set_trunk_vlans(model, interface, vlans);
}

open_error_t apply_no_trunk_vlans(switch_model &model, std::span<const argument> arguments, std::string *) {
  return switchport_set_trunk_vlans(model, arguments[0].number, vlan_set());
}

void print_trunk_vlans(const config_printer &print) {
  each_switchport(print.model, [&](uint32_t interface, const switchport_settings &settings) {
    if (!settings.trunk_vlans) return;
    id_list ids;
    for (uint32_t id = vlan_id_min; id <= vlan_id_max; id++) {
      if ((*settings.trunk_vlans)[id]) ids.push_back(id);
    }
    for (const id_list &part : split_list(ids)) print.line({interface, trunk_vlans_add, part});
  });
}

} // namespace softswitch
