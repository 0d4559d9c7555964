/* Access control lists; see acl.h. */
#include "platform/softswitch/model/acl.h"

#include "platform/softswitch/model/switch.h"

#include <algorithm>
#include <tuple>

namespace softswitch {

void acls_reset(switch_model &model) {
  *model.acls.edit() = acl_table();
}

/* --- Lists ---------------------------------------------------------------------------------------------- */

/* Where the list with this id is, or where it belongs. */
template <typename Lists> static auto place_of(Lists &lists, uint32_t id) {
  return std::lower_bound(lists.begin(), lists.end(), id,
                          [](const acl_list &list, uint32_t wanted) { return list.id < wanted; });
}

const acl_list *acl_find(const switch_model &model, uint32_t id) {
  const auto &lists = model.acls->lists;
  auto place = place_of(lists, id);
  return place != lists.end() && place->id == id ? &*place : nullptr;
}

template <typename Wanted> static const acl_list *first_list(const switch_model &model, Wanted wanted) {
  const auto &lists = model.acls->lists;
  auto found = std::find_if(lists.begin(), lists.end(), wanted);
  return found != lists.end() ? &*found : nullptr;
}

const acl_list *acl_by_name(const switch_model &model, uint32_t type, std::string_view name) {
  return first_list(model, [&](const acl_list &list) { return list.type == type && list.name == name; });
}

const acl_list *acl_next(const switch_model &model, uint32_t type, uint32_t after) {
  return first_list(model, [&](const acl_list &list) { return list.type == type && list.id > after; });
}

uint32_t acl_free_id(const switch_model &model) {
  uint32_t id = 1;
  for (const acl_list &list : model.acls->lists) {
    if (list.id != id) break;
    id++;
  }
  return id;
}

open_error_t acl_make(switch_model &model, uint32_t type, std::string_view name, uint32_t id) {
  if (!acl_type_valid(type) || !acl_name_valid(name)) return OPEN_E_PARAM;
  if (acl_by_name(model, type, name)) return OPEN_E_EXISTS;
  if (model.acls->lists.size() >= model.limits.acls) return OPEN_E_FULL;
  if (id < 1 || id > acl_id_max) return OPEN_E_PARAM;
  if (acl_find(model, id)) return OPEN_E_EXISTS;
  auto &lists = model.acls.edit()->lists;
  lists.insert(place_of(lists, id), acl_list{id, type, std::string(name), {}});
  next_change(model);
  return OPEN_E_NONE;
}

static bool is_bound(const acl_list &list) {
  return list.bound[OPEN_ACL_DIRECTION_IN] != 0 || list.bound[OPEN_ACL_DIRECTION_OUT] != 0;
}

open_error_t acl_remove(switch_model &model, uint32_t id) {
  const acl_list *list = acl_find(model, id);
  if (!list) return OPEN_E_NOT_FOUND;
  if (is_bound(*list)) return OPEN_E_FAIL;
  auto &lists = model.acls.edit()->lists;
  lists.erase(place_of(lists, id));
  next_change(model);
  return OPEN_E_NONE;
}

/* --- Rules ---------------------------------------------------------------------------------------------- */

/* Where the rule with this number is, or where it belongs. */
template <typename Rules> static auto rule_place(Rules &rules, uint32_t number) {
  return std::lower_bound(
      rules.begin(), rules.end(), number,
      [](const acl_numbered_rule &entry, uint32_t wanted) { return entry.number < wanted; });
}

const acl_rule *acl_rule_find(const acl_list &list, uint32_t number) {
  auto place = rule_place(*list.rules, number);
  return place != list.rules->end() && place->number == number ? place->rule.get() : nullptr;
}

uint32_t acl_rule_next(const acl_list &list, uint32_t after) {
  if (after >= acl_rule_number_max) return 0;
  auto place = rule_place(*list.rules, after + 1);
  return place != list.rules->end() ? place->number : 0;
}

uint32_t acl_rule_free_number(const acl_list &list) {
  uint32_t last = list.rules->empty() ? 0 : list.rules->back().number;
  uint32_t next = last - last % acl_rule_step + acl_rule_step;
  return next <= acl_rule_number_max ? next : 0;
}

bool acl_rule_duplicated(const acl_list &list, uint32_t number) {
  const acl_rule *rule = acl_rule_find(list, number);
  return std::any_of(list.rules->begin(), list.rules->end(), [&](const acl_numbered_rule &other) {
    return other.number != number && *other.rule == *rule;
  });
}

open_error_t acl_rule_fits(const switch_model &model, const acl_list &list, const acl_rule &rule,
                           std::string *error) {
  open_error_t rc = acl_rule_check(model, list.type, rule, error);
  if (rc != OPEN_E_NONE || (!rule.mirror && !rule.redirect)) return rc;
  for (const acl_binding &binding : *model.acls->bindings) {
    if (binding.acl != list.id || binding.place.where != acl_place::interface) continue;
    uint32_t interface = binding.place.number;
    if (rule.mirror != interface && rule.redirect != interface) continue;
    if (error) *error = list.name + " is bound to " + interface_name(model, interface) + " itself";
    return OPEN_E_FAIL;
  }
  return OPEN_E_NONE;
}

/* The rules of a list that exists, for changing. */
static acl_rules *edit_rules(switch_model &model, uint32_t id) {
  next_change(model);
  return place_of(model.acls.edit()->lists, id)->rules.edit();
}

/* Whether the TCAM holds the rules of a list wherever it is bound. */
static bool has_hardware_room(const switch_model &model, const acl_list &list) {
  for (uint32_t direction : {OPEN_ACL_DIRECTION_IN, OPEN_ACL_DIRECTION_OUT}) {
    if (list.bound[direction] != 0 && !tcam_has_room(model, tcam_stage_of(direction))) return false;
  }
  return true;
}

static open_error_t refuse_full(const std::string &reason, std::string *error) {
  if (error) *error = reason;
  return OPEN_E_FULL;
}

open_error_t acl_rule_put(switch_model &model, uint32_t id, uint32_t number, const acl_rule &rule,
                          std::string *error) {
  const acl_list *list = acl_find(model, id);
  if (!list) return OPEN_E_NOT_FOUND;
  if (number < 1 || number > acl_rule_number_max) return OPEN_E_PARAM;
  open_error_t rc = acl_rule_fits(model, *list, rule, error);
  if (rc != OPEN_E_NONE) return rc;
  auto kept = std::make_shared<acl_rule>(rule);
  if (kept->protocol == OPEN_ACL_PROTOCOL_IP) kept->protocol.reset();
  const acl_rule *present = acl_rule_find(*list, number);
  if (present && *present == *kept) return OPEN_E_NONE;
  bool is_new = !present; /* the rule there is not to be looked at after the edit */
  if (is_new && list->rules->size() >= model.limits.acl_rules)
    return refuse_full("there is room for " + std::to_string(model.limits.acl_rules) + " rules only", error);
  acl_rules *rules = edit_rules(model, id);
  auto place = rule_place(*rules, number);
  if (is_new) place = rules->insert(place, {number, nullptr});
  place->rule = std::move(kept);
  if (!is_new || has_hardware_room(model, *acl_find(model, id))) return OPEN_E_NONE;
  return refuse_full("the TCAM has no room for another rule", error);
}

open_error_t acl_rule_remove(switch_model &model, uint32_t id, uint32_t number) {
  const acl_list *list = acl_find(model, id);
  if (!list || !acl_rule_find(*list, number)) return OPEN_E_NOT_FOUND;
  acl_rules *rules = edit_rules(model, id);
  rules->erase(rule_place(*rules, number));
  return OPEN_E_NONE;
}

static bool has_target(const acl_list &list, uint32_t interface) {
  return std::any_of(list.rules->begin(), list.rules->end(), [&](const acl_numbered_rule &entry) {
    return entry.rule->mirror == interface || entry.rule->redirect == interface;
  });
}

const acl_list *acl_with_target(const switch_model &model, uint32_t interface) {
  return first_list(model, [&](const acl_list &list) { return has_target(list, interface); });
}

uint32_t acl_rules_in_use(const switch_model &model, uint32_t type, uint32_t direction) {
  size_t rules = 0;
  for (const acl_list &list : model.acls->lists) {
    if (list.type == type && list.bound[direction] != 0) rules += list.rules->size();
  }
  return static_cast<uint32_t>(rules);
}

/* --- Bindings ------------------------------------------------------------------------------------------- */

/* Where the first binding of a place from this sequence number on is, or where it belongs. */
template <typename Bindings>
static auto binding_place(Bindings &bindings, const acl_place &place, uint32_t sequence) {
  return std::lower_bound(bindings.begin(), bindings.end(), std::tie(place, sequence),
                          [](const acl_binding &binding, const auto &wanted) {
                            return std::tie(binding.place, binding.sequence) < wanted;
                          });
}

open_error_t acl_place_check(const switch_model &model, const acl_place &place) {
  if (place.direction > OPEN_ACL_DIRECTION_OUT) return OPEN_E_PARAM;
  if (place.where == acl_place::vlan) return vlan_check(model, place.number);
  return interface_switches_check(model, place.number);
}

std::span<const acl_binding> acl_bindings_at(const switch_model &model, const acl_place &place) {
  const acl_bindings &bindings = *model.acls->bindings;
  auto first = binding_place(bindings, place, 0);
  auto end =
      std::find_if(first, bindings.end(), [&](const acl_binding &binding) { return binding.place != place; });
  return {first, end};
}

uint32_t acl_bound_sequence(const switch_model &model, const acl_place &place, uint32_t id) {
  for (const acl_binding &binding : acl_bindings_at(model, place)) {
    if (binding.acl == id) return binding.sequence;
  }
  return 0;
}

uint32_t acl_next_sequence(const switch_model &model, const acl_place &place) {
  auto present = acl_bindings_at(model, place);
  return present.empty() ? 1 : present.back().sequence + 1;
}

std::vector<uint32_t> acl_bound_to(const switch_model &model, uint32_t id, acl_place::kind where,
                                   uint32_t direction) {
  std::vector<uint32_t> numbers;
  for (const acl_binding &binding : *model.acls->bindings) {
    const acl_place &place = binding.place;
    if (binding.acl == id && place.where == where && place.direction == direction)
      numbers.push_back(place.number);
  }
  return numbers;
}

/* Notes a change of what is bound to an interface or VLAN that exists. */
static void note_change(switch_model &model, const acl_place &place) {
  if (place.where == acl_place::vlan) vlan_edit(model, place.number);
  if (place.where == acl_place::interface) interface_edit(model, place.number);
}

open_error_t acl_bind(switch_model &model, const acl_place &place, uint32_t id, uint32_t sequence) {
  open_error_t rc = acl_place_check(model, place);
  if (rc != OPEN_E_NONE) return rc;
  const acl_list *list = acl_find(model, id);
  if (!list) return OPEN_E_NOT_FOUND;
  if (sequence == 0) return OPEN_E_PARAM;
  uint32_t present = acl_bound_sequence(model, place, id);
  if (present != 0) return present == sequence ? OPEN_E_NONE : OPEN_E_EXISTS;
  auto others = acl_bindings_at(model, place);
  if (std::any_of(others.begin(), others.end(),
                  [&](const acl_binding &other) { return other.sequence == sequence; }))
    return OPEN_E_FAIL;
  if (place.where == acl_place::interface && has_target(*list, place.number)) return OPEN_E_FAIL;
  if (others.size() >= model.limits.acl_bindings) return OPEN_E_FULL;
  acl_table *acls = model.acls.edit();
  acl_bindings *bindings = acls->bindings.edit();
  bindings->insert(binding_place(*bindings, place, sequence), {place, sequence, id});
  place_of(acls->lists, id)->bound[place.direction]++;
  note_change(model, place);
  return tcam_has_room(model, tcam_stage_of(place.direction)) ? OPEN_E_NONE : OPEN_E_FULL;
}

open_error_t acl_unbind(switch_model &model, const acl_place &place, uint32_t id) {
  open_error_t rc = acl_place_check(model, place);
  if (rc != OPEN_E_NONE) return rc;
  uint32_t sequence = acl_bound_sequence(model, place, id);
  if (sequence == 0) return OPEN_E_NOT_FOUND;
  acl_table *acls = model.acls.edit();
  acl_bindings *bindings = acls->bindings.edit();
  bindings->erase(binding_place(*bindings, place, sequence));
  place_of(acls->lists, id)->bound[place.direction]--;
  note_change(model, place);
  return OPEN_E_NONE;
}

void acl_unbind_all(switch_model &model, acl_place::kind where, uint32_t number) {
  for (uint32_t direction : {OPEN_ACL_DIRECTION_IN, OPEN_ACL_DIRECTION_OUT}) {
    acl_place place = {where, number, direction};
    size_t count = acl_bindings_at(model, place).size();
    if (count == 0) continue;
    acl_table *acls = model.acls.edit();
    acl_bindings *bindings = acls->bindings.edit();
    auto first = binding_place(*bindings, place, 0);
    auto end = first + static_cast<std::ptrdiff_t>(count);
    for (auto binding = first; binding != end; ++binding)
      place_of(acls->lists, binding->acl)->bound[direction]--;
    bindings->erase(first, end);
  }
}

} // namespace softswitch
