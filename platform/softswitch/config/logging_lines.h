/* The lines of the configuration language about logging: what the rows of commands.cpp point to. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_LOGGING_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_LOGGING_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

open_error_t apply_logging_cli(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_logging_cli(switch_model &, std::span<const argument>, std::string *error);
void print_logging_cli(const config_printer &);

open_error_t apply_logging_console(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_logging_console(switch_model &, std::span<const argument>, std::string *error);
void print_no_logging_console(const config_printer &);

open_error_t apply_console_severity(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_console_severity(switch_model &, std::span<const argument>, std::string *error);
void print_console_severity(const config_printer &);

open_error_t apply_logging_syslog(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_logging_syslog(switch_model &, std::span<const argument>, std::string *error);
void print_logging_syslog(const config_printer &);

open_error_t apply_syslog_port(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_syslog_port(switch_model &, std::span<const argument>, std::string *error);
void print_syslog_port(const config_printer &);

open_error_t apply_logging_host(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_logging_host(switch_model &, std::span<const argument>, std::string *error);
void print_logging_hosts(const config_printer &);

open_error_t apply_host_port(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_host_port(switch_model &, std::span<const argument>, std::string *error);
void print_host_ports(const config_printer &);

open_error_t apply_host_severity(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_host_severity(switch_model &, std::span<const argument>, std::string *error);
void print_host_severities(const config_printer &);

} // namespace softswitch

#endif
