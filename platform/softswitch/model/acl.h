/* Access control lists: their names and ids, the rules in them by number, and where they are bound. What a
 * single rule may be is acl_rule.h.
 *
 * Unless a function says otherwise: OPEN_E_NOT_FOUND when there is no such list, rule, VLAN, port or LAG;
 * OPEN_E_PARAM for an interface number or VLAN id outside every range. An operation that finds everything as
 * wanted changes nothing. Binding and unbinding make the interface or VLAN pending. */
#ifndef KESTREL_SOFTSWITCH_MODEL_ACL_H
#define KESTREL_SOFTSWITCH_MODEL_ACL_H

#include "platform/softswitch/model/acl_rule.h"
#include "platform/softswitch/model/limits.h"
#include "platform/softswitch/model/shared_table.h"

#include <array>
#include <compare>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace softswitch {

inline constexpr uint32_t acl_rule_number_max = 2147483647;
inline constexpr uint32_t acl_rule_step = 10; /* numbers that the switch picks are multiples of this */
inline constexpr uint32_t acl_id_max = limits().acls;

struct acl_numbered_rule {
  uint32_t number;
  std::shared_ptr<const acl_rule> rule; /* copies of the model share it */
};

using acl_rules = std::vector<acl_numbered_rule>; /* in order of number */

struct acl_list {
  uint32_t id;
  uint32_t type; /* OPEN_ACL_TYPE_t */
  std::string name;
  shared_table<acl_rules> rules;
  std::array<uint32_t, 2> bound = {}; /* by direction: how many bindings are of it */
};

/* One direction of an interface or VLAN. */
struct acl_place {
  enum kind : uint32_t { interface, vlan } where;
  uint32_t number;
  uint32_t direction; /* OPEN_ACL_DIRECTION_t */
  auto operator<=>(const acl_place &) const = default;
};

struct acl_binding {
  acl_place place;
  uint32_t sequence;
  uint32_t acl; /* id */
};

using acl_bindings = std::vector<acl_binding>; /* in order of place and sequence */

struct acl_table {
  std::vector<acl_list> lists; /* in order of id */
  shared_table<acl_bindings> bindings;
};

/* Deletes all lists and bindings. interfaces_reset() and vlans_reset() note the change. */
void acls_reset(switch_model &model);

/* --- Lists ---------------------------------------------------------------------------------------------- */

/* nullptr when there is none. */
const acl_list *acl_find(const switch_model &model, uint32_t id);
const acl_list *acl_by_name(const switch_model &model, uint32_t type, std::string_view name);
/* The first list of a type with an id above `after`; nullptr when there is none. */
const acl_list *acl_next(const switch_model &model, uint32_t type, uint32_t after);
/* The lowest id that no list has. */
uint32_t acl_free_id(const switch_model &model);

/* Makes an empty list. OPEN_E_PARAM: unknown type, no name (acl_name_valid()), or an id outside
 * 1..acl_id_max. OPEN_E_EXISTS: there is one of this type and name, or with this id. OPEN_E_FULL: no room. */
open_error_t acl_make(switch_model &model, uint32_t type, std::string_view name, uint32_t id);
/* Deletes a list. OPEN_E_FAIL: it is bound somewhere. */
open_error_t acl_remove(switch_model &model, uint32_t id);

/* --- Rules ---------------------------------------------------------------------------------------------- */

/* nullptr when there is none. */
const acl_rule *acl_rule_find(const acl_list &list, uint32_t number);
/* The number of the first rule above `after`; 0 when there is none. */
uint32_t acl_rule_next(const acl_list &list, uint32_t after);
/* The next multiple of 10 after the last rule's number; 0 when that is above acl_rule_number_max. */
uint32_t acl_rule_free_number(const acl_list &list);
/* Whether another rule of the list than this one, which exists, equals it. */
bool acl_rule_duplicated(const acl_list &list, uint32_t number);

/* Checks a rule for a list: what acl_rule_check() does, then OPEN_E_FAIL when the list is bound to the
 * interface that the rule mirrors or redirects to. */
open_error_t acl_rule_fits(const switch_model &model, const acl_list &list, const acl_rule &rule,
                           std::string *error);
/* Puts a rule into a list, in the place of the one with this number. OPEN_E_PARAM: a number outside
 * 1..acl_rule_number_max. OPEN_E_FULL: no room for another, in the list or, when it is bound, in the TCAM.
 * Otherwise what acl_rule_fits() says. In `error` the reason in words for what a rule is refused for. */
open_error_t acl_rule_put(switch_model &model, uint32_t id, uint32_t number, const acl_rule &rule,
                          std::string *error);
open_error_t acl_rule_remove(switch_model &model, uint32_t id, uint32_t number);

/* A list with a rule that mirrors or redirects to this interface; nullptr when there is none. */
const acl_list *acl_with_target(const switch_model &model, uint32_t interface);

/* The rules of all lists of a type that are bound anywhere in a direction, those of each list once. */
uint32_t acl_rules_in_use(const switch_model &model, uint32_t type, uint32_t direction);

/* --- Bindings ------------------------------------------------------------------------------------------- */

/* Whether lists can be bound here: OPEN_E_PARAM for an unknown direction, then what vlan_check() or
 * interface_switches_check() says. */
open_error_t acl_place_check(const switch_model &model, const acl_place &place);

/* The bindings of a place in order of their sequence numbers. */
std::span<const acl_binding> acl_bindings_at(const switch_model &model, const acl_place &place);
/* The sequence number of a list in a place; 0 when it is not bound there. */
uint32_t acl_bound_sequence(const switch_model &model, const acl_place &place, uint32_t id);
/* The number after the last one in a place; 0 when there is none. */
uint32_t acl_next_sequence(const switch_model &model, const acl_place &place);
/* The interfaces or VLANs that a list is bound to in a direction, in ascending order. */
std::vector<uint32_t> acl_bound_to(const switch_model &model, uint32_t id, acl_place::kind where,
                                   uint32_t direction);

/* Binds a list. OPEN_E_PARAM also: sequence 0. OPEN_E_EXISTS: it is bound here with another sequence number.
 * OPEN_E_FAIL: another list has this sequence number, or a rule of it mirrors or redirects to this interface.
 * OPEN_E_FULL: no room for another here; or, with the list bound here in the model, no room in the TCAM. */
open_error_t acl_bind(switch_model &model, const acl_place &place, uint32_t id, uint32_t sequence);
/* OPEN_E_NOT_FOUND also: it is not bound here. */
open_error_t acl_unbind(switch_model &model, const acl_place &place, uint32_t id);
/* Takes all bindings from an interface or VLAN: what its removal, which notes the change, does. */
void acl_unbind_all(switch_model &model, acl_place::kind where, uint32_t number);

} // namespace softswitch

#endif
