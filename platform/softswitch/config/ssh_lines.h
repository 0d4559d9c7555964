/* The lines of the configuration language about the SSH server: what the rows of commands.cpp point to. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_SSH_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_SSH_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

open_error_t apply_ssh_server(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_ssh_server(switch_model &, std::span<const argument>, std::string *error);
void print_ssh_server(const config_printer &);

open_error_t apply_ssh_protocol(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_ssh_protocol(switch_model &, std::span<const argument>, std::string *error);
void print_ssh_protocol(const config_printer &);

open_error_t apply_ssh_max_sessions(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_ssh_max_sessions(switch_model &, std::span<const argument>, std::string *error);
void print_ssh_max_sessions(const config_printer &);

open_error_t apply_ssh_timeout(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_ssh_timeout(switch_model &, std::span<const argument>, std::string *error);
void print_ssh_timeout(const config_printer &);

} // namespace softswitch

#endif
