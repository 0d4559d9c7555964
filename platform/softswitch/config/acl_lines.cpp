/* Applying and printing the lines about access control lists; see acl_lines.h. The rules are those of
 * model/acl.h; here they get their words. Types are printed by their place among ip|mac|ipv6. */
#include "platform/softswitch/config/acl_lines.h"

#include "platform/softswitch/config/vlan_lines.h"

namespace softswitch {

/* --- Words ---------------------------------------------------------------------------------------------- */

/* A list as a line names it: its type, and its name behind it. */
struct list_name {
  explicit list_name(std::span<const argument> at)
      : type(at[0].number + OPEN_ACL_TYPE_IP), name(at[1].text) {}
  uint32_t type;
  const std::string &name;
};

static std::string list_words(const list_name &named) {
  return std::string(acl_type_name(named.type)) + " list " + named.name;
}

static std::string room_words(uint32_t limit, const char *what) {
  return "there is room for " + std::to_string(limit) + " " + what + " only";
}

/* The list; nullptr with the reason when there is none. */
static const acl_list *find_list(const switch_model &model, const list_name &named, std::string *error) {
  const acl_list *list = acl_by_name(model, named.type, named.name);
  if (!list) *error = "there is no " + list_words(named);
  return list;
}

static argument type_argument(const acl_list &list) {
  return list.type - OPEN_ACL_TYPE_IP;
}

/* --- acl ip|mac|ipv6 <text> id <number> ----------------------------------------------------------------- */

static open_error_t make_list(switch_model &model, const list_name &named, uint32_t id, std::string *error) {
  open_error_t rc = acl_make(model, named.type, named.name, id);
  if (rc == OPEN_E_FULL) *error = room_words(model.limits.acls, "access lists");
  if (rc == OPEN_E_EXISTS) *error = "another access list has the id " + std::to_string(id);
  if (rc == OPEN_E_PARAM && !acl_name_valid(named.name))
    *error = "the name of an access list is 1 to 31 bytes without blanks and \"/\"";
  else if (rc == OPEN_E_PARAM)
    *error = "id out of range 1.." + std::to_string(acl_id_max);
  return rc;
}

/* A list that is there already stays as it is: the line says what shall be, not what shall be done. */
open_error_t apply_acl(switch_model &model, std::span<const argument> arguments, std::string *error) {
  list_name named(arguments);
  if (acl_by_name(model, named.type, named.name)) return OPEN_E_NONE;
  return make_list(model, named, acl_free_id(model), error);
}

open_error_t apply_acl_with_id(switch_model &model, std::span<const argument> arguments, std::string *error) {
  list_name named(arguments);
  const acl_list *present = acl_by_name(model, named.type, named.name);
  if (!present) return make_list(model, named, arguments[2].number, error);
  if (present->id == arguments[2].number) return OPEN_E_NONE;
  *error = list_words(named) + " has the id " + std::to_string(present->id);
  return OPEN_E_EXISTS;
}

open_error_t apply_no_acl(switch_model &model, std::span<const argument> arguments, std::string *error) {
  list_name named(arguments);
  const acl_list *list = find_list(model, named, error);
  if (!list) return OPEN_E_NOT_FOUND;
  open_error_t rc = acl_remove(model, list->id);
  if (rc == OPEN_E_FAIL) *error = list_words(named) + " is bound to an interface or VLAN";
  return rc;
}

void print_acls(const config_printer &print) {
  for (const acl_list &list : print.model.acls->lists)
    print.line({type_argument(list), std::string_view(list.name), list.id});
}

/* --- acl ip|mac|ipv6 <text> rule <number> permit|deny ... ----------------------------------------------- */

open_error_t apply_acl_rule(switch_model &model, std::span<const argument> arguments, std::string *error) {
  list_name named(arguments);
  const acl_list *list = find_list(model, named, error);
  if (!list) return OPEN_E_NOT_FOUND;
  uint32_t number = arguments[2].number;
  if (number < 1 || number > acl_rule_number_max) {
    *error = "rule number out of range 1.." + std::to_string(acl_rule_number_max);
    return OPEN_E_PARAM;
  }
  acl_rule rule;
  rule.action = arguments[3].number;
  if (!read_acl_clauses(model, arguments[4].words, &rule, error)) return OPEN_E_PARAM;
  return acl_rule_put(model, list->id, number, rule, error);
}

open_error_t apply_no_acl_rule(switch_model &model, std::span<const argument> arguments, std::string *error) {
  list_name named(arguments);
  const acl_list *list = find_list(model, named, error);
  if (!list) return OPEN_E_NOT_FOUND;
  open_error_t rc = acl_rule_remove(model, list->id, arguments[2].number);
  if (rc == OPEN_E_NOT_FOUND)
    *error = list_words(named) + " has no rule " + std::to_string(arguments[2].number);
  return rc;
}

std::vector<argument> acl_rule_arguments(const switch_model &model, const acl_list &list, uint32_t number,
                                         const acl_rule &rule) {
  std::string clauses = print_acl_clauses(model, rule);
  return {type_argument(list), std::string_view(list.name), number, rule.action, std::string_view(clauses)};
}

void print_acl_rules(const config_printer &print) {
  for (const acl_list &list : print.model.acls->lists) {
    for (const acl_numbered_rule &entry : *list.rules)
      print.line(acl_rule_arguments(print.model, list, entry.number, *entry.rule));
  }
}

/* --- interface <port> | vlan <vlan> acl in|out ip|mac|ipv6 <text> sequence <number> --------------------- */

static acl_place place_of(acl_place::kind where, std::span<const argument> arguments) {
  return {where, arguments[0].number, arguments[1].number};
}

static std::string place_words(const switch_model &model, const acl_place &place) {
  const char *direction = place.direction == OPEN_ACL_DIRECTION_IN ? " in" : " out";
  if (place.where == acl_place::vlan) return "VLAN " + std::to_string(place.number) + direction;
  return interface_name(model, place.number) + direction;
}

/* Why a list that exists was not bound to a place that exists. */
static std::string refusal_words(const switch_model &model, open_error_t rc, const acl_place &place,
                                 uint32_t id, uint32_t sequence) {
  const acl_list &list = *acl_find(model, id);
  std::string where = place_words(model, place);
  if (rc == OPEN_E_PARAM) return "sequence number out of range 1.." + std::to_string(UINT32_MAX);
  if (rc == OPEN_E_EXISTS)
    return list.name + " is bound to " + where + " with sequence number " +
           std::to_string(acl_bound_sequence(model, place, list.id));
  if (rc == OPEN_E_FULL && acl_bound_sequence(model, place, list.id) != 0)
    return "the TCAM has no room for the rules of " + list.name;
  if (rc == OPEN_E_FULL) return where + ": " + room_words(model.limits.acl_bindings, "access lists");
  for (const acl_binding &other : acl_bindings_at(model, place)) {
    if (other.sequence == sequence)
      return where + ": another access list has the sequence number " + std::to_string(sequence);
  }
  return "a rule of " + list.name + " mirrors or redirects to " + interface_name(model, place.number);
}

static open_error_t bind(switch_model &model, acl_place::kind where, std::span<const argument> arguments,
                         std::string *error) {
  acl_place place = place_of(where, arguments);
  open_error_t rc = acl_place_check(model, place);
  if (rc != OPEN_E_NONE) return explain_vlan(rc, place.number, error);
  const acl_list *list = find_list(model, list_name(arguments.subspan(2)), error);
  if (!list) return OPEN_E_NOT_FOUND;
  uint32_t id = list->id, sequence = arguments[4].number;
  rc = acl_bind(model, place, id, sequence);
  if (rc != OPEN_E_NONE) *error = refusal_words(model, rc, place, id, sequence);
  return rc;
}

static open_error_t unbind(switch_model &model, acl_place::kind where, std::span<const argument> arguments,
                           std::string *error) {
  acl_place place = place_of(where, arguments);
  open_error_t rc = acl_place_check(model, place);
  if (rc != OPEN_E_NONE) return explain_vlan(rc, place.number, error);
  const acl_list *list = find_list(model, list_name(arguments.subspan(2)), error);
  if (!list) return OPEN_E_NOT_FOUND;
  rc = acl_unbind(model, place, list->id);
  if (rc != OPEN_E_NONE) *error = list->name + " is not bound to " + place_words(model, place);
  return rc;
}

static void print_bindings(const config_printer &print, acl_place::kind where) {
  for (const acl_binding &binding : *print.model.acls->bindings) {
    if (binding.place.where != where) continue;
    const acl_list &list = *acl_find(print.model, binding.acl);
    print.line({binding.place.number, binding.place.direction, type_argument(list),
                std::string_view(list.name), binding.sequence});
  }
}

open_error_t apply_interface_acl(switch_model &model, std::span<const argument> arguments,
                                 std::string *error) {
  return bind(model, acl_place::interface, arguments, error);
}

open_error_t apply_no_interface_acl(switch_model &model, std::span<const argument> arguments,
                                    std::string *error) {
  return unbind(model, acl_place::interface, arguments, error);
}

void print_interface_acls(const config_printer &print) {
  print_bindings(print, acl_place::interface);
}

open_error_t apply_vlan_acl(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return bind(model, acl_place::vlan, arguments, error);
}

open_error_t apply_no_vlan_acl(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return unbind(model, acl_place::vlan, arguments, error);
}

void print_vlan_acls(const config_printer &print) {
  print_bindings(print, acl_place::vlan);
}

} // namespace softswitch
