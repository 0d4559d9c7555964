/* The lines of the configuration language about BGP: what the rows of commands.cpp point to. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_BGP_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_BGP_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

/* --- The speaker ---------------------------------------------------------------------------------------- */

/* Lines that set one of the speaker's settings to a number, and the one that prints it. */
open_error_t set_bgp_number(switch_model &, bgp_setting, uint32_t value, std::string *error);
void print_bgp_number(const config_printer &, bgp_setting);

template <bgp_setting Setting>
open_error_t apply_bgp_number(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return set_bgp_number(model, Setting, arguments[0].number, error);
}
template <bgp_setting Setting> void print_bgp_number(const config_printer &print) {
  print_bgp_number(print, Setting);
}

open_error_t apply_bgp_router_id(switch_model &, std::span<const argument>, std::string *error);
void print_bgp_router_id(const config_printer &);
open_error_t apply_bgp_log_neighbor_changes(switch_model &, std::span<const argument>, std::string *error);
void print_bgp_log_neighbor_changes(const config_printer &);

/* Returns one of the speaker's settings to factory state. */
template <bgp_setting Setting>
open_error_t apply_no_bgp_setting(switch_model &model, std::span<const argument>, std::string *) {
  bgp_restore(model, Setting);
  return OPEN_E_NONE;
}

/* --- Networks ------------------------------------------------------------------------------------------- */

open_error_t apply_bgp_network(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_bgp_network_with_route_map(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_bgp_network(switch_model &, std::span<const argument>, std::string *error);
void print_bgp_networks(const config_printer &);
void print_bgp_networks_with_route_map(const config_printer &);

/* --- Neighbors ------------------------------------------------------------------------------------------ */

open_error_t apply_bgp_remote_as(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_bgp_neighbor(switch_model &, std::span<const argument>, std::string *error);
void print_bgp_remote_as(const config_printer &);

open_error_t apply_bgp_activate(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_bgp_activate(switch_model &, std::span<const argument>, std::string *error);
void print_bgp_activated(const config_printer &);
void print_bgp_deactivated(const config_printer &);

open_error_t apply_bgp_next_hop_self(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_bgp_next_hop_self(switch_model &, std::span<const argument>, std::string *error);
void print_bgp_next_hop_self(const config_printer &);

open_error_t apply_bgp_update_source(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_bgp_update_source(switch_model &, std::span<const argument>, std::string *error);
void print_bgp_update_sources(const config_printer &);

/* --- Redistribution ------------------------------------------------------------------------------------- */

open_error_t apply_bgp_redistribute(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_bgp_redistribute(switch_model &, std::span<const argument>, std::string *error);
void print_bgp_redistributions(const config_printer &);

/* The arguments of the line that redistributes the routes of a family from a source; both are valid. */
std::vector<argument> bgp_redistribution_arguments(const switch_model &model, uint32_t family,
                                                   uint32_t source, const bgp_redistribution &wanted);

} // namespace softswitch

#endif
