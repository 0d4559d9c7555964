/* The lines of the configuration language about VLANs: what the rows of commands.cpp point to. Apply
 * functions take the arguments of their pattern in order. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_VLAN_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_VLAN_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

/* "VLAN 10" */
std::string vlan_words(uint32_t id);
/* Says why something was refused for its VLAN, which does not exist; passes the code on. For lines of other
 * families that name a VLAN, too. */
open_error_t explain_vlan(open_error_t rc, uint32_t id, std::string *error);

open_error_t apply_vlans(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_vlans(switch_model &, std::span<const argument>, std::string *error);
void print_vlans(const config_printer &);

open_error_t apply_vlan_name(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_vlan_name(switch_model &, std::span<const argument>, std::string *error);
void print_vlan_names(const config_printer &);

open_error_t apply_participation(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_participation(switch_model &, std::span<const argument>, std::string *error);
void print_participation(const config_printer &);

open_error_t apply_tagging(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_tagging(switch_model &, std::span<const argument>, std::string *error);
void print_tagging(const config_printer &);

open_error_t apply_pvid(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_pvid(switch_model &, std::span<const argument>, std::string *error);
void print_pvids(const config_printer &);

open_error_t apply_accept_frames(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_accept_frames(switch_model &, std::span<const argument>, std::string *error);
void print_accept_frames(const config_printer &);

} // namespace softswitch

#endif
