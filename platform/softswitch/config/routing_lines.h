/* The lines of the configuration language about routing: what the rows of commands.cpp point to. The IP
 * addresses of interfaces are address_lines.h. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_ROUTING_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_ROUTING_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

open_error_t apply_vlan_routing(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_vlan_routing_interface(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_vlan_routing(switch_model &, std::span<const argument>, std::string *error);
void print_vlan_routing_interfaces(const config_printer &);

open_error_t apply_ip_routing(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_ip_routing(switch_model &, std::span<const argument>, std::string *error);
void print_ip_routing(const config_printer &);

open_error_t apply_ipv6_routing(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_ipv6_routing(switch_model &, std::span<const argument>, std::string *error);
void print_ipv6_routing(const config_printer &);

open_error_t apply_interface_routing(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_interface_routing(switch_model &, std::span<const argument>, std::string *error);
void print_routing_interfaces(const config_printer &);
void print_silent_vlan_interfaces(const config_printer &);

} // namespace softswitch

#endif
