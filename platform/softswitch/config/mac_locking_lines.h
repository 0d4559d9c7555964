/* The lines of the configuration language about port MAC locking: what the rows of commands.cpp point to. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_MAC_LOCKING_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_MAC_LOCKING_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

open_error_t apply_sticky_mode(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_sticky_mode(switch_model &, std::span<const argument>, std::string *error);
void print_sticky_modes(const config_printer &);

open_error_t apply_mac_lock(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_mac_lock(switch_model &, std::span<const argument>, std::string *error);
void print_mac_locks(const config_printer &);

} // namespace softswitch

#endif
