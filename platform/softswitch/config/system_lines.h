/* The lines of the configuration language about the switch as a whole: what the rows of commands.cpp point
 * to. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_SYSTEM_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_SYSTEM_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

open_error_t apply_hostname(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_hostname(switch_model &, std::span<const argument>, std::string *error);
void print_hostname(const config_printer &);

open_error_t apply_prompt(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_prompt(switch_model &, std::span<const argument>, std::string *error);
void print_prompt(const config_printer &);

open_error_t apply_serial_timeout(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_serial_timeout(switch_model &, std::span<const argument>, std::string *error);
void print_serial_timeout(const config_printer &);

open_error_t apply_telnet_server(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_telnet_server(switch_model &, std::span<const argument>, std::string *error);
void print_telnet_server(const config_printer &);

/* With and without a gateway; each prints the network port that has what it says. */
open_error_t apply_network_port_address(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_network_port_gateway(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_network_port_address(switch_model &, std::span<const argument>, std::string *error);
void print_network_port_address(const config_printer &);
void print_network_port_gateway(const config_printer &);

open_error_t apply_network_port_protocol(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_network_port_protocol(switch_model &, std::span<const argument>, std::string *error);
void print_network_port_protocol(const config_printer &);

} // namespace softswitch

#endif
