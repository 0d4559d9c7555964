/* The lines of the configuration language about access control lists: what the rows of commands.cpp point to.
 * The clauses of a rule are acl_clauses.cpp. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_ACL_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_ACL_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

open_error_t apply_acl(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_acl_with_id(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_acl(switch_model &, std::span<const argument>, std::string *error);
void print_acls(const config_printer &);

open_error_t apply_acl_rule(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_acl_rule(switch_model &, std::span<const argument>, std::string *error);
void print_acl_rules(const config_printer &);

open_error_t apply_interface_acl(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_interface_acl(switch_model &, std::span<const argument>, std::string *error);
void print_interface_acls(const config_printer &);

open_error_t apply_vlan_acl(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_vlan_acl(switch_model &, std::span<const argument>, std::string *error);
void print_vlan_acls(const config_printer &);

/* --- A rule as a line, also for the C interface, which stores changes as lines ------------------------ */

/* The arguments of the line of a rule. The rule has passed acl_rule_check(). */
std::vector<argument> acl_rule_arguments(const switch_model &model, const acl_list &list, uint32_t number,
                                         const acl_rule &rule);

/* What the words that follow permit or deny say of a rule; false with the reason. */
bool read_acl_clauses(const switch_model &model, std::span<const token> words, acl_rule *rule,
                      std::string *error);
/* The other way round; each clause begins with a blank. */
std::string print_acl_clauses(const switch_model &model, const acl_rule &rule);

} // namespace softswitch

#endif
