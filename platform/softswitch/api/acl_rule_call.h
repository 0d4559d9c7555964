/* The frame of the functions of the C interface that read or change one rule of an access control list. The
 * first two arguments of such a function are the list's id and the rule's number:
 *
 *   return read_part(__func__, handle, {aclId, ruleId, dscp}, acl_part::dscp,
 *                    [&](const acl_rule &rule) { return give(rule.dscp, dscp); });
 *   return change_part(__func__, handle, {aclId, ruleId, dscp}, acl_part::dscp, [&](acl_rule *rule) {
 *     rule->dscp = dscp;
 *     return OPEN_E_NONE;
 *   });
 *
 * Values are not checked there: a changed rule is checked as a whole. */
#ifndef KESTREL_SOFTSWITCH_API_ACL_RULE_CALL_H
#define KESTREL_SOFTSWITCH_API_ACL_RULE_CALL_H

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/model/acl.h"

#include <optional>

namespace softswitch {

/* A rule where it is. */
struct placed_rule {
  const acl_list *list = nullptr;
  uint32_t number = 0;
  const acl_rule *rule = nullptr;
};

/* Finds a rule. OPEN_E_NOT_FOUND: there is no such list or rule. */
open_error_t find_rule(const switch_model &model, uint32_t acl, uint32_t number, placed_rule *found);
/* Finds the rule that a call names, for a part of it. OPEN_E_UNAVAIL: rules of its list do not have this
 * part. */
open_error_t find_part(const switch_model &model, const call_arguments &arguments, acl_part part,
                       placed_rule *found);

/* Puts the changed rule in the place of the one that was found, as a change of the configuration. */
open_error_t commit_rule(switch_model &model, const placed_rule &place, const acl_rule &changed);

/* Answers a part that a rule has as a number; OPEN_E_NOT_FOUND when it does not have it. */
open_error_t give(const std::optional<uint32_t> &part, uint32_t *value);

/* Calls `read` with the rule. */
template <typename Read>
open_error_t read_part(const char *function, const openapiClientHandle_t *handle, call_arguments arguments,
                       acl_part part, Read read) {
  return api_call(function, handle, arguments, [&](const switch_model &model) {
    placed_rule found;
    open_error_t rc = find_part(model, arguments, part, &found);
    return rc == OPEN_E_NONE ? read(*found.rule) : rc;
  });
}

/* Calls `change` with a copy of the rule, which takes its place unless that answers a failure. */
template <typename Change>
open_error_t change_part(const char *function, const openapiClientHandle_t *handle, call_arguments arguments,
                         acl_part part, Change change) {
  return api_call(function, handle, arguments, [&](switch_model &model) {
    placed_rule found;
    open_error_t rc = find_part(model, arguments, part, &found);
    if (rc != OPEN_E_NONE) return rc;
    acl_rule changed = *found.rule;
    rc = change(&changed);
    return rc == OPEN_E_NONE ? commit_rule(model, found, changed) : rc;
  });
}

/* The two for a part that is one number. */
inline open_error_t read_number(const char *function, const openapiClientHandle_t *handle,
                                call_arguments arguments, acl_part part,
                                std::optional<uint32_t> acl_rule::*member, uint32_t *value) {
  return read_part(function, handle, arguments, part,
                   [&](const acl_rule &rule) { return give(rule.*member, value); });
}

inline open_error_t change_number(const char *function, const openapiClientHandle_t *handle,
                                  call_arguments arguments, acl_part part,
                                  std::optional<uint32_t> acl_rule::*member, uint32_t value) {
  return change_part(function, handle, arguments, part, [&](acl_rule *rule) {
    rule->*member = value;
    return OPEN_E_NONE;
  });
}

} // namespace softswitch

#endif
