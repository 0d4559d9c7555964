/* The lines of the configuration language about the IP addresses of interfaces: what the rows of commands.cpp
 * point to. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_ADDRESS_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_ADDRESS_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

open_error_t apply_primary_address(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_primary_address(switch_model &, std::span<const argument>, std::string *error);
void print_primary_addresses(const config_printer &);

open_error_t apply_dhcp(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_dhcp(switch_model &, std::span<const argument>, std::string *error);
void print_dhcp(const config_printer &);

open_error_t apply_secondary_address(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_secondary_address(switch_model &, std::span<const argument>, std::string *error);
void print_secondary_addresses(const config_printer &);

open_error_t apply_ipv6_address(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_ipv6_address(switch_model &, std::span<const argument>, std::string *error);
void print_ipv6_addresses(const config_printer &);

open_error_t apply_autoconfiguration(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_autoconfiguration(switch_model &, std::span<const argument>, std::string *error);
void print_autoconfiguration(const config_printer &);

} // namespace softswitch

#endif
