/* The lines of the configuration language about what an interface is by itself: what the rows of commands.cpp
 * point to. Apply functions take the arguments of their pattern in order. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_INTERFACE_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_INTERFACE_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

/* What keeps an interface in use (interface_in_use()) from being removed, as it follows the interface's name:
 * " is the target of an access list's rule". */
std::string interface_use_words(const switch_model &model, uint32_t number);

open_error_t apply_shutdown(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_shutdown(switch_model &, std::span<const argument>, std::string *error);
void print_shutdown(const config_printer &);

open_error_t apply_soft_shutdown(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_soft_shutdown(switch_model &, std::span<const argument>, std::string *error);
void print_soft_shutdown(const config_printer &);

open_error_t apply_description(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_description(switch_model &, std::span<const argument>, std::string *error);
void print_descriptions(const config_printer &);

open_error_t apply_mtu(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_mtu(switch_model &, std::span<const argument>, std::string *error);
void print_mtus(const config_printer &);

open_error_t apply_speed(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_speed(switch_model &, std::span<const argument>, std::string *error);
void print_speeds(const config_printer &);

/* Comes after the speeds, which end auto-negotiation. */
open_error_t apply_auto_negotiation(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_auto_negotiation(switch_model &, std::span<const argument>, std::string *error);
void print_auto_negotiation(const config_printer &);

} // namespace softswitch

#endif
