/* The lines of the configuration language about TCAM policies: what the rows of commands.cpp point to. A
 * policy is one line; its clauses are tcam_clauses.cpp. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_TCAM_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_TCAM_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

open_error_t apply_tcam_policy(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_tcam_policy(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_tcam_policies(switch_model &, std::span<const argument>, std::string *error);
void print_tcam_policies(const config_printer &);

open_error_t apply_interface_tcam_policy(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_interface_tcam_policy(switch_model &, std::span<const argument>, std::string *error);
void print_interface_tcam_policies(const config_printer &);

/* The arguments of the line that makes a policy. The record is in normal form and good
 * (tcam_record_check()). */
std::vector<argument> tcam_policy_arguments(const switch_model &model, uint32_t id,
                                            const open_tcamApiPolicy_t &record);

} // namespace softswitch

#endif
