/* The table of the configuration language: every line that there is. Its order is the order in which the
 * configuration is printed, so what others refer to comes before them. */
#include "platform/softswitch/config/acl_lines.h"
#include "platform/softswitch/config/address_lines.h"
#include "platform/softswitch/config/bgp_lines.h"
#include "platform/softswitch/config/interface_lines.h"
#include "platform/softswitch/config/lag_lines.h"
#include "platform/softswitch/config/language.h"
#include "platform/softswitch/config/mac_locking_lines.h"
#include "platform/softswitch/config/routing_lines.h"
#include "platform/softswitch/config/ssh_lines.h"
#include "platform/softswitch/config/switchport_lines.h"
#include "platform/softswitch/config/system_lines.h"
#include "platform/softswitch/config/tcam_lines.h"
#include "platform/softswitch/config/vlan_lines.h"
#include "platform/softswitch/config/vxlan_lines.h"

namespace softswitch {

static constexpr command table[] = {
    {"hostname <text>", apply_hostname, print_hostname},
    {"no hostname", apply_no_hostname, nullptr},
    {"prompt <text>", apply_prompt, print_prompt},
    {"no prompt", apply_no_prompt, nullptr},
    {"serial timeout <number>", apply_serial_timeout, print_serial_timeout},
    {"no serial timeout", apply_no_serial_timeout, nullptr},
    {"telnet server", apply_telnet_server, print_telnet_server},
    {"no telnet server", apply_no_telnet_server, nullptr},
    {"network-port ip address <ip-prefix>", apply_network_port_address, print_network_port_address},
    {"network-port ip address <ip-prefix> gateway <ip>", apply_network_port_gateway,
     print_network_port_gateway},
    {"no network-port ip address", apply_no_network_port_address, nullptr},
    {"network-port protocol bootp|dhcp", apply_network_port_protocol, print_network_port_protocol},
    {"no network-port protocol", apply_no_network_port_protocol, nullptr},

    {"ssh server", apply_ssh_server, print_ssh_server},
    {"no ssh server", apply_no_ssh_server, nullptr},
    {"ssh protocol 1|2|both", apply_ssh_protocol, print_ssh_protocol},
    {"no ssh protocol", apply_no_ssh_protocol, nullptr},
    {"ssh max-sessions <number>", apply_ssh_max_sessions, print_ssh_max_sessions},
    {"no ssh max-sessions", apply_no_ssh_max_sessions, nullptr},
    {"ssh timeout <number>", apply_ssh_timeout, print_ssh_timeout},
    {"no ssh timeout", apply_no_ssh_timeout, nullptr},

    {"vlan <vlan-list>", apply_vlans, print_vlans},
    {"no vlan <vlan-list>", apply_no_vlans, nullptr},
    {"vlan <vlan> name <text>", apply_vlan_name, print_vlan_names},
    {"no vlan <vlan> name", apply_no_vlan_name, nullptr},
    {"vlan <vlan> routing", apply_vlan_routing, nullptr},
    {"vlan <vlan> routing interface <number>", apply_vlan_routing_interface, print_vlan_routing_interfaces},
    {"no vlan <vlan> routing", apply_no_vlan_routing, nullptr},

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

    {"interface <interface> shutdown", apply_shutdown, print_shutdown},
    {"no interface <interface> shutdown", apply_no_shutdown, nullptr},
    {"interface <interface> soft-shutdown", apply_soft_shutdown, print_soft_shutdown},
    {"no interface <interface> soft-shutdown", apply_no_soft_shutdown, nullptr},
    {"interface <interface> description <text>", apply_description, print_descriptions},
    {"no interface <interface> description", apply_no_description, nullptr},
    {"interface <interface> mtu <number>", apply_mtu, print_mtus},
    {"no interface <interface> mtu", apply_no_mtu, nullptr},
    {"interface <interface> speed <speed>", apply_speed, print_speeds},
    {"no interface <interface> speed", apply_no_speed, nullptr},
    {"interface <interface> auto-negotiation on|off", apply_auto_negotiation, print_auto_negotiation},
    {"no interface <interface> auto-negotiation", apply_no_auto_negotiation, nullptr},

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

    {"interface <port> mac-locking sticky", apply_sticky_mode, print_sticky_modes},
    {"no interface <port> mac-locking sticky", apply_no_sticky_mode, nullptr},
    {"interface <port> mac-locking address <mac> vlan <vlan> static|sticky", apply_mac_lock, print_mac_locks},
    {"no interface <port> mac-locking address <mac> vlan <vlan>", apply_no_mac_lock, nullptr},

    {"acl ip|mac|ipv6 <text>", apply_acl, nullptr},
    {"acl ip|mac|ipv6 <text> id <number>", apply_acl_with_id, print_acls},
    {"no acl ip|mac|ipv6 <text>", apply_no_acl, nullptr},
    {"acl ip|mac|ipv6 <text> rule <number> permit|deny ...", apply_acl_rule, print_acl_rules},
    {"no acl ip|mac|ipv6 <text> rule <number>", apply_no_acl_rule, nullptr},
    {"interface <port> acl in|out ip|mac|ipv6 <text> sequence <number>", apply_interface_acl,
     print_interface_acls},
    {"no interface <port> acl in|out ip|mac|ipv6 <text>", apply_no_interface_acl, nullptr},
    {"vlan <vlan> acl in|out ip|mac|ipv6 <text> sequence <number>", apply_vlan_acl, print_vlan_acls},
    {"no vlan <vlan> acl in|out ip|mac|ipv6 <text>", apply_no_vlan_acl, nullptr},

    {"tcam policy <number> openflow|ipv6|egress ...", apply_tcam_policy, print_tcam_policies},
    {"no tcam policy <number>", apply_no_tcam_policy, nullptr},
    {"no tcam policies", apply_no_tcam_policies, nullptr},
    {"interface <port> tcam-policy <number>", apply_interface_tcam_policy, print_interface_tcam_policies},
    {"no interface <port> tcam-policy <number>", apply_no_interface_tcam_policy, nullptr},

    {"ip routing", apply_ip_routing, print_ip_routing},
    {"no ip routing", apply_no_ip_routing, nullptr},
    {"ipv6 routing", apply_ipv6_routing, print_ipv6_routing},
    {"no ipv6 routing", apply_no_ipv6_routing, nullptr},
    /* In factory state VLAN routing interfaces route and others do not. */
    {"interface <interface> routing", apply_interface_routing, print_routing_interfaces},
    {"no interface <interface> routing", apply_no_interface_routing, print_silent_vlan_interfaces},

    {"interface <interface> ip address <ip-prefix>", apply_primary_address, print_primary_addresses},
    {"no interface <interface> ip address", apply_no_primary_address, nullptr},
    {"interface <interface> ip address dhcp", apply_dhcp, print_dhcp},
    {"no interface <interface> ip address dhcp", apply_no_dhcp, nullptr},
    {"interface <interface> ip secondary-address <ip-prefix>", apply_secondary_address,
     print_secondary_addresses},
    {"no interface <interface> ip secondary-address <ip-prefix>", apply_no_secondary_address, nullptr},
    {"interface <interface> ipv6 address <ipv6-prefix>", apply_ipv6_address, print_ipv6_addresses},
    {"no interface <interface> ipv6 address <ipv6-prefix>", apply_no_ipv6_address, nullptr},
    {"interface <interface> ipv6 address auto", apply_autoconfiguration, print_autoconfiguration},
    {"no interface <interface> ipv6 address auto", apply_no_autoconfiguration, nullptr},

    {"bgp local-as <number>", apply_bgp_number<&bgp_speaker::local_as>,
     print_bgp_number<&bgp_speaker::local_as>},
    {"no bgp local-as", apply_no_bgp_setting<&bgp_speaker::local_as>, nullptr},
    {"bgp router-id <ip>", apply_bgp_router_id, print_bgp_router_id},
    {"no bgp router-id", apply_no_bgp_setting<&bgp_speaker::router_id>, nullptr},
    {"bgp hold-time <number>", apply_bgp_number<&bgp_speaker::hold_time>,
     print_bgp_number<&bgp_speaker::hold_time>},
    {"no bgp hold-time", apply_no_bgp_setting<&bgp_speaker::hold_time>, nullptr},
    {"bgp keepalive-time <number>", apply_bgp_number<&bgp_speaker::keepalive_time>,
     print_bgp_number<&bgp_speaker::keepalive_time>},
    {"no bgp keepalive-time", apply_no_bgp_setting<&bgp_speaker::keepalive_time>, nullptr},
    {"bgp local-preference <number>", apply_bgp_number<&bgp_speaker::local_preference>,
     print_bgp_number<&bgp_speaker::local_preference>},
    {"no bgp local-preference", apply_no_bgp_setting<&bgp_speaker::local_preference>, nullptr},
    {"bgp log-neighbor-changes", apply_bgp_log_neighbor_changes, print_bgp_log_neighbor_changes},
    {"no bgp log-neighbor-changes", apply_no_bgp_setting<&bgp_speaker::log_neighbor_changes>, nullptr},
    {"bgp network <network>", apply_bgp_network, print_bgp_networks},
    {"bgp network <network> route-map <text>", apply_bgp_network_with_route_map,
     print_bgp_networks_with_route_map},
    {"no bgp network <network>", apply_no_bgp_network, nullptr},
    {"bgp neighbor <neighbor> remote-as <number>", apply_bgp_remote_as, print_bgp_remote_as},
    {"no bgp neighbor <neighbor>", apply_no_bgp_neighbor, nullptr},
    {"bgp neighbor <neighbor> activate ipv4|ipv6", apply_bgp_activate, print_bgp_activated},
    {"no bgp neighbor <neighbor> activate ipv4|ipv6", apply_no_bgp_activate, print_bgp_deactivated},
    {"bgp neighbor <neighbor> next-hop-self ipv4|ipv6", apply_bgp_next_hop_self, print_bgp_next_hop_self},
    {"no bgp neighbor <neighbor> next-hop-self ipv4|ipv6", apply_no_bgp_next_hop_self, nullptr},
    {"bgp neighbor <neighbor> update-source <interface>", apply_bgp_update_source, print_bgp_update_sources},
    {"no bgp neighbor <neighbor> update-source", apply_no_bgp_update_source, nullptr},
    {"bgp redistribute ipv4|ipv6 connected|static|ospf|rip ...", apply_bgp_redistribute,
     print_bgp_redistributions},
    {"no bgp redistribute ipv4|ipv6 connected|static|ospf|rip", apply_no_bgp_redistribute, nullptr},

    {"vxlan mode unicast|multicast", apply_vxlan_mode, print_vxlan_mode},
    {"no vxlan mode", apply_no_vxlan_mode, nullptr},
    {"vxlan udp-port <number>", apply_vxlan_udp_port, print_vxlan_udp_port},
    {"no vxlan udp-port", apply_no_vxlan_udp_port, nullptr},
    {"vxlan source-interface <interface>", apply_vxlan_source, print_vxlan_source},
    {"no vxlan source-interface", apply_no_vxlan_source, nullptr},
    {"vxlan remote-vtep <ip>", apply_remote_vtep, print_remote_vteps},
    {"no vxlan remote-vtep <ip>", apply_no_remote_vtep, nullptr},
    {"vxlan multicast-group <ip>", apply_default_group, print_default_group},
    {"no vxlan multicast-group", apply_no_default_group, nullptr},
    {"vxlan tenant <number>", apply_tenant, print_tenants},
    {"no vxlan tenant <number>", apply_no_tenant, nullptr},
    {"vxlan tenant <number> vlan <vlan>", apply_tenant_vlan, print_tenant_vlans},
    {"no vxlan tenant <number> vlan <vlan>", apply_no_tenant_vlan, nullptr},
    {"vxlan tenant <number> remote-vteps", apply_tenant_vteps, print_tenant_vteps},
    {"no vxlan tenant <number> remote-vteps", apply_no_tenant_vteps, nullptr},
    {"vxlan tenant <number> multicast-group <ip>", apply_tenant_group, print_tenant_groups},
    {"no vxlan tenant <number> multicast-group", apply_no_tenant_group, nullptr},
};

std::span<const command> commands() {
  return table;
}

} // namespace softswitch
