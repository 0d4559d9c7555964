/* Rules of access control lists: making, walking and deleting them, matches of MAC lists, and what rules of
 * all types have. The contracts are in platform/api/openapi_acl.h; matches of IP lists are
 * openapi_acl_ip.cpp. */
#include "platform/api/openapi_acl.h"

#include "platform/softswitch/api/acl_rule_call.h"
#include "platform/softswitch/config/acl_lines.h"

using namespace softswitch;

/* --- The frame (acl_rule_call.h) ------------------------------------------------------------------------ */

open_error_t softswitch::find_rule(const switch_model &model, uint32_t acl, uint32_t number,
                                   placed_rule *found) {
  found->list = acl_find(model, acl);
  found->number = number;
  found->rule = found->list ? acl_rule_find(*found->list, number) : nullptr;
  return found->rule ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
}

open_error_t softswitch::find_part(const switch_model &model, const call_arguments &arguments, acl_part part,
                                   placed_rule *found) {
  const call_argument *given = arguments.begin();
  open_error_t rc = find_rule(model, given[0].number, given[1].number, found);
  if (rc != OPEN_E_NONE) return rc;
  return acl_type_has(found->list->type, part) ? OPEN_E_NONE : OPEN_E_UNAVAIL;
}

open_error_t softswitch::commit_rule(switch_model &model, const placed_rule &place, const acl_rule &changed) {
  /* What does not pass cannot be printed as a line either. */
  open_error_t rc = acl_rule_fits(model, *place.list, changed, nullptr);
  if (rc != OPEN_E_NONE) return rc;
  return commit(model, "acl ip|mac|ipv6 <text> rule <number> permit|deny ...",
                acl_rule_arguments(model, *place.list, place.number, changed));
}

open_error_t softswitch::give(const std::optional<uint32_t> &part, uint32_t *value) {
  if (!part) return OPEN_E_NOT_FOUND;
  *value = *part;
  return OPEN_E_NONE;
}

/* --- Rules ---------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiAclRuleCountGet(openapiClientHandle_t *handle, uint32_t aclId, uint32_t *count) {
  return api_call(__func__, handle, {aclId, count}, [&](const switch_model &model) {
    const acl_list *list = acl_find(model, aclId);
    if (!list) return OPEN_E_NOT_FOUND;
    *count = static_cast<uint32_t>(list->rules->size());
    return OPEN_E_NONE;
  });
}

/* Whether a rule can be made with this number. */
static open_error_t check_number(const switch_model &model, const acl_list &list, uint32_t number) {
  if (number < 1 || number > acl_rule_number_max) return OPEN_E_PARAM;
  if (acl_rule_find(list, number)) return OPEN_E_EXISTS;
  return list.rules->size() < model.limits.acl_rules ? OPEN_E_NONE : OPEN_E_FULL;
}

open_error_t rpcclt_openapiAclRuleActionAdd(openapiClientHandle_t *handle, uint32_t aclId, uint32_t *ruleId,
                                            OPEN_ACL_ACTION_t action) {
  return api_call(__func__, handle, {aclId, ruleId, action}, [&](switch_model &model) {
    const acl_list *list = acl_find(model, aclId);
    if (!list) return OPEN_E_NOT_FOUND;
    acl_rule rule;
    rule.action = action;
    uint32_t number = *ruleId != 0 ? *ruleId : acl_rule_free_number(*list);
    if (number == 0) return OPEN_E_FULL;
    open_error_t rc = check_number(model, *list, number);
    if (rc == OPEN_E_NONE) rc = commit_rule(model, {list, number, nullptr}, rule);
    if (rc == OPEN_E_NONE) *ruleId = number;
    return rc;
  });
}

open_error_t rpcclt_openapiAclRuleActionGet(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                            OPEN_ACL_ACTION_t *action) {
  return api_call(__func__, handle, {aclId, ruleId, action}, [&](const switch_model &model) {
    placed_rule found;
    open_error_t rc = find_rule(model, aclId, ruleId, &found);
    if (rc == OPEN_E_NONE) *action = found.rule->action;
    return rc;
  });
}

open_error_t rpcclt_openapiAclRuleDelete(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId) {
  return api_call(__func__, handle, {aclId, ruleId}, [&](switch_model &model) {
    placed_rule found;
    open_error_t rc = find_rule(model, aclId, ruleId, &found);
    if (rc != OPEN_E_NONE) return rc;
    return commit(model, "no acl ip|mac|ipv6 <text> rule <number>",
                  {found.list->type - OPEN_ACL_TYPE_IP, std::string_view(found.list->name), ruleId});
  });
}

bool rpcclt_openapiAclRuleNumCheckValid(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId) {
  open_error_t rc = api_call(__func__, handle, {aclId, ruleId}, [&](const switch_model &model) {
    const acl_list *list = acl_find(model, aclId);
    return list ? check_number(model, *list, ruleId) : OPEN_E_NOT_FOUND;
  });
  return rc == OPEN_E_NONE;
}

open_error_t rpcclt_openapiAclRuleDuplicateCheck(openapiClientHandle_t *handle, uint32_t aclId,
                                                 uint32_t ruleId, OPEN_BOOL_t *isDuplicated) {
  return api_call(__func__, handle, {aclId, ruleId, isDuplicated}, [&](const switch_model &model) {
    placed_rule found;
    open_error_t rc = find_rule(model, aclId, ruleId, &found);
    if (rc == OPEN_E_NONE) *isDuplicated = acl_rule_duplicated(*found.list, ruleId);
    return rc;
  });
}

/* Answers the number of the first rule above `after`; 0 when there is none. */
static open_error_t give_next(const switch_model &model, uint32_t acl, uint32_t after, uint32_t *next) {
  const acl_list *list = acl_find(model, acl);
  if (!list) return OPEN_E_NOT_FOUND;
  *next = acl_rule_next(*list, after);
  return *next != 0 ? OPEN_E_NONE : OPEN_E_FAIL;
}

open_error_t rpcclt_openapiAclRuleGetFirst(openapiClientHandle_t *handle, uint32_t aclId, uint32_t *ruleId) {
  return api_call(__func__, handle, {aclId, ruleId},
                  [&](const switch_model &model) { return give_next(model, aclId, 0, ruleId); });
}

open_error_t rpcclt_openapiAclRuleGetNext(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                          uint32_t *next) {
  return api_call(__func__, handle, {aclId, ruleId, next},
                  [&](const switch_model &model) { return give_next(model, aclId, ruleId, next); });
}

open_error_t rpcclt_openapiAclRuleMatchEveryAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                uint32_t ruleId, OPEN_BOOL_t match) {
  return change_part(__func__, handle, {aclId, ruleId, match}, acl_part::every, [&](acl_rule *rule) {
    rule->every = match;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiAclRuleMatchEveryGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                uint32_t ruleId, OPEN_BOOL_t *match) {
  return read_part(__func__, handle, {aclId, ruleId, match}, acl_part::every,
                   [&](const acl_rule &rule) { return give(rule.every, match); });
}

/* --- Matches of MAC lists ------------------------------------------------------------------------------- */

static open_error_t take_mac(const open_buffdesc &mac, const open_buffdesc &mask,
                             std::optional<acl_mac_match> *part) {
  acl_mac_match match;
  if (!mac_read(text_of(mac), &match.address) || !mac_read(text_of(mask), &match.mask)) return OPEN_E_PARAM;
  *part = match;
  return OPEN_E_NONE;
}

static open_error_t give_mac(const std::optional<acl_mac_match> &part, open_buffdesc *mac,
                             open_buffdesc *mask) {
  if (!part) return OPEN_E_NOT_FOUND;
  open_error_t rc = fill_text(mac, mac_text(part->address));
  return rc == OPEN_E_NONE ? fill_text(mask, mac_text(part->mask)) : rc;
}

open_error_t rpcclt_openapiAclRuleMatchMacSrcMacAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *mac,
                                                    open_buffdesc *mask) {
  return change_part(__func__, handle, {aclId, ruleId, text_in(mac), text_in(mask)}, acl_part::source_mac,
                     [&](acl_rule *rule) { return take_mac(*mac, *mask, &rule->source_mac); });
}

open_error_t rpcclt_openapiAclRuleMatchMacSrcMacGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *mac,
                                                    open_buffdesc *mask) {
  return read_part(__func__, handle, {aclId, ruleId, text_out(mac), text_out(mask)}, acl_part::source_mac,
                   [&](const acl_rule &rule) { return give_mac(rule.source_mac, mac, mask); });
}

open_error_t rpcclt_openapiAclRuleMatchMacDstMacAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *mac,
                                                    open_buffdesc *mask) {
  return change_part(__func__, handle, {aclId, ruleId, text_in(mac), text_in(mask)},
                     acl_part::destination_mac,
                     [&](acl_rule *rule) { return take_mac(*mac, *mask, &rule->destination_mac); });
}

open_error_t rpcclt_openapiAclRuleMatchMacDstMacGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *mac,
                                                    open_buffdesc *mask) {
  return read_part(__func__, handle, {aclId, ruleId, text_out(mac), text_out(mask)},
                   acl_part::destination_mac,
                   [&](const acl_rule &rule) { return give_mac(rule.destination_mac, mac, mask); });
}

open_error_t rpcclt_openapiAclRuleMatchMacVlanAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_ACL_VLAN_OPERATOR_t oper,
                                                  uint32_t first, uint32_t last) {
  return change_part(__func__, handle, {aclId, ruleId, oper, first, last}, acl_part::vlan,
                     [&](acl_rule *rule) {
                       bool range = oper != OPEN_ACL_VLAN_EQUAL;
                       /* In the rule 0 stands for no range. */
                       if (range && last == 0) return OPEN_E_PARAM;
                       rule->vlan = {first, range ? last : 0};
                       return OPEN_E_NONE;
                     });
}

open_error_t rpcclt_openapiAclRuleMatchMacVlanGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_ACL_VLAN_OPERATOR_t *oper,
                                                  uint32_t *first, uint32_t *last) {
  return read_part(__func__, handle, {aclId, ruleId, oper, first, last}, acl_part::vlan,
                   [&](const acl_rule &rule) {
                     if (!rule.vlan) return OPEN_E_NOT_FOUND;
                     *oper = rule.vlan->last != 0 ? OPEN_ACL_VLAN_RANGE : OPEN_ACL_VLAN_EQUAL;
                     *first = rule.vlan->first;
                     *last = rule.vlan->last;
                     return OPEN_E_NONE;
                   });
}

open_error_t rpcclt_openapiAclRuleMatchMacEtherTypeAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                       uint32_t ruleId, uint32_t etherType) {
  return change_number(__func__, handle, {aclId, ruleId, etherType}, acl_part::ethertype,
                       &acl_rule::ethertype, etherType);
}

open_error_t rpcclt_openapiAclRuleMatchMacEtherTypeGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                       uint32_t ruleId, uint32_t *etherType) {
  return read_number(__func__, handle, {aclId, ruleId, etherType}, acl_part::ethertype, &acl_rule::ethertype,
                     etherType);
}

open_error_t rpcclt_openapiAclRuleMatchMacCosAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                 uint32_t ruleId, uint32_t cos) {
  return change_number(__func__, handle, {aclId, ruleId, cos}, acl_part::cos, &acl_rule::cos, cos);
}

open_error_t rpcclt_openapiAclRuleMatchMacCosGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                 uint32_t ruleId, uint32_t *cos) {
  return read_number(__func__, handle, {aclId, ruleId, cos}, acl_part::cos, &acl_rule::cos, cos);
}

/* --- Attributes of rules of all types ------------------------------------------------------------------- */

open_error_t rpcclt_openapiAclRuleMatchLoggingAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_BOOL_t logging) {
  return change_number(__func__, handle, {aclId, ruleId, logging}, acl_part::logging, &acl_rule::logging,
                       logging);
}

open_error_t rpcclt_openapiAclRuleMatchLoggingGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_BOOL_t *logging) {
  return read_number(__func__, handle, {aclId, ruleId, logging}, acl_part::logging, &acl_rule::logging,
                     logging);
}

open_error_t rpcclt_openapiAclRuleMatchAssignQueueAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                      uint32_t ruleId, uint32_t queue) {
  return change_number(__func__, handle, {aclId, ruleId, queue}, acl_part::queue, &acl_rule::queue, queue);
}

open_error_t rpcclt_openapiAclRuleMatchAssignQueueGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                      uint32_t ruleId, uint32_t *queue) {
  return read_number(__func__, handle, {aclId, ruleId, queue}, acl_part::queue, &acl_rule::queue, queue);
}

open_error_t rpcclt_openapiAclRuleMatchMirrorAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                 uint32_t ruleId, uint32_t ifNum) {
  return change_number(__func__, handle, {aclId, ruleId, ifNum}, acl_part::mirror, &acl_rule::mirror, ifNum);
}

open_error_t rpcclt_openapiAclRuleMatchMirrorGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                 uint32_t ruleId, uint32_t *ifNum) {
  return read_number(__func__, handle, {aclId, ruleId, ifNum}, acl_part::mirror, &acl_rule::mirror, ifNum);
}

open_error_t rpcclt_openapiAclRuleMatchRedirectAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t ifNum) {
  return change_number(__func__, handle, {aclId, ruleId, ifNum}, acl_part::redirect, &acl_rule::redirect,
                       ifNum);
}

open_error_t rpcclt_openapiAclRuleMatchRedirectGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t *ifNum) {
  return read_number(__func__, handle, {aclId, ruleId, ifNum}, acl_part::redirect, &acl_rule::redirect,
                     ifNum);
}

open_error_t rpcclt_openapiAclRuleMatchTimeRangeAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *name) {
  return change_part(__func__, handle, {aclId, ruleId, text_in(name)}, acl_part::time_range,
                     [&](acl_rule *rule) {
                       rule->time_range = text_of(*name);
                       return OPEN_E_NONE;
                     });
}

open_error_t rpcclt_openapiAclRuleMatchTimeRangeGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *name) {
  return read_part(__func__, handle, {aclId, ruleId, text_out(name)}, acl_part::time_range,
                   [&](const acl_rule &rule) {
                     return rule.time_range ? fill_text(name, *rule.time_range) : OPEN_E_NOT_FOUND;
                   });
}

open_error_t rpcclt_openapiAclRuleMatchTimeRangeStatusGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                          uint32_t ruleId, OPEN_ACL_RULE_STATUS_t *status) {
  return api_call(__func__, handle, {aclId, ruleId, status}, [&](const switch_model &model) {
    placed_rule found;
    open_error_t rc = find_rule(model, aclId, ruleId, &found);
    if (rc != OPEN_E_NONE) return rc;
    if (!found.rule->time_range) return OPEN_E_NOT_FOUND;
    *status = time_range_state(model, *found.rule->time_range);
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiAclRuleMatchRateLimitAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, uint32_t rate, uint32_t burst) {
  return change_part(__func__, handle, {aclId, ruleId, rate, burst}, acl_part::rate_limit,
                     [&](acl_rule *rule) {
                       rule->rate_limit = {rate, burst};
                       return OPEN_E_NONE;
                     });
}

open_error_t rpcclt_openapiAclRuleMatchRateLimitGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, uint32_t *rate, uint32_t *burst) {
  return read_part(__func__, handle, {aclId, ruleId, rate, burst}, acl_part::rate_limit,
                   [&](const acl_rule &rule) {
                     if (!rule.rate_limit) return OPEN_E_NOT_FOUND;
                     *rate = rule.rate_limit->rate;
                     *burst = rule.rate_limit->burst;
                     return OPEN_E_NONE;
                   });
}
