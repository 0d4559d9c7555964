/* The table of the configuration language: every line that there is. Its order is the order in which the
 * configuration is printed, so what others refer to comes before them. */
#include "platform/softswitch/config/lag_lines.h"
#include "platform/softswitch/config/language.h"
#include "platform/softswitch/config/switchport_lines.h"
#include "platform/softswitch/config/vlan_lines.h"

namespace softswitch {

static constexpr command table[] = {
    {"vlan <vlan-list>", apply_vlans, print_vlans},
    {"no vlan <vlan-list>", apply_no_vlans, nullptr},
    {"vlan <vlan> name <text>", apply_vlan_name, print_vlan_names},
    {"no vlan <vlan> name", apply_no_vlan_name, nullptr},

    /* In factory state all LAGs exist, so that it is the deleted ones that are printed. */
    {"lag <port-channel>", apply_lag, nullptr},
    {"no lag <port-channel>", apply_no_lag, print_deleted_lags},

    {"interface <port> vlan <vlan-list> participation include|auto|exclude", apply_participation,
     print_participation},
    {"no interface <port> vlan <vlan-list> participation", apply_no_participation, nullptr},
    {"interface <port> vlan <vlan-list> tagging", apply_tagging, print_tagging},
    {"no interface <port> vlan <vlan-list> tagging", apply_no_tagging, nullptr},
    {"interface <port> pvid <vlan>", apply_pvid, print_pvids},
    {"no interface <port> pvid", apply_no_pvid, nullptr},
    {"interface <port> accept-frames all|tagged|untagged", apply_accept_frames, print_accept_frames},
    {"no interface <port> accept-frames", apply_no_accept_frames, nullptr},

    {"interface <port> switchport mode general|access|trunk", apply_switchport_mode, print_switchport_modes},
    {"no interface <port> switchport mode", apply_no_switchport_mode, nullptr},
    {"interface <port> switchport access vlan <vlan>", apply_access_vlan, print_access_vlans},
    {"no interface <port> switchport access vlan", apply_no_access_vlan, nullptr},
    {"interface <port> switchport trunk native vlan <vlan>", apply_native_vlan, print_native_vlans},
    {"no interface <port> switchport trunk native vlan", apply_no_native_vlan, nullptr},
    {"interface <port> switchport trunk vlans add|remove|only <vlan-list>", apply_trunk_vlans,
     print_trunk_vlans},
    {"no interface <port> switchport trunk vlans", apply_no_trunk_vlans, nullptr},

    {"interface <port> lag <port-channel>", apply_lag_member, print_lag_members},
    {"no interface <port> lag", apply_no_lag_member, nullptr},
};

std::span<const command> commands() {
  return table;
}

} // namespace softswitch
