/* Applying and printing the lines about TCAM policies; see tcam_lines.h. The rules are those of model/tcam.h;
 * here they get their words. */
#include "platform/softswitch/config/tcam_lines.h"

#include "platform/softswitch/config/tcam_clauses.h"

namespace softswitch {

static std::string policy_words(uint32_t id) {
  return "TCAM policy " + std::to_string(id);
}

/* --- tcam policy <number> openflow|ipv6|egress ... ------------------------------------------------------ */

/* Whether a policy there is, which may be none, is made of this record. */
static bool is_made_of(const switch_model &model, const tcam_policy *policy,
                       const open_tcamApiPolicy_t &record) {
  return policy && policy->record.policyType == record.policyType &&
         print_tcam_clauses(model, policy->record) == print_tcam_clauses(model, record);
}

static std::string refusal_words(const switch_model &model, open_error_t rc, uint32_t id, uint32_t type) {
  if (rc == OPEN_E_EXISTS) return policy_words(id) + " is there already and is another";
  if (rc == OPEN_E_PARAM) return "policy number out of range 1.." + std::to_string(tcam_policy_id_max);
  if (!tcam_has_room(model, tcam_stage_of_policy(type)))
    return policy_words(id) + ": there is no room in the TCAM";
  bool egress = type == OPEN_TCAM_POLICY_EGRESS;
  return policy_words(id) + ": there is room for " +
         std::to_string(egress ? model.limits.tcam_egress_policies : model.limits.tcam_ingress_policies) +
         (egress ? " egress policies only" : " ingress policies only");
}

open_error_t apply_tcam_policy(switch_model &model, std::span<const argument> arguments, std::string *error) {
  uint32_t id = arguments[0].number;
  open_tcamApiPolicy_t record = {};
  record.policyHeader = tcam_policy_header;
  record.policyType = OPEN_TCAM_POLICY_OPENFLOW + arguments[1].number;
  if (!read_tcam_clauses(model, arguments[2].words, &record, error)) return OPEN_E_PARAM;
  *error = tcam_record_fault(record);
  if (!error->empty()) return OPEN_E_PARAM;
  if (is_made_of(model, tcam_policy_find(model, id), record)) return OPEN_E_NONE;
  open_error_t rc = tcam_policy_create(model, id, record);
  if (rc != OPEN_E_NONE) *error = refusal_words(model, rc, id, record.policyType);
  return rc;
}

open_error_t apply_no_tcam_policy(switch_model &model, std::span<const argument> arguments,
                                  std::string *error) {
  open_error_t rc = tcam_policy_delete(model, arguments[0].number);
  if (rc != OPEN_E_NONE) *error = policy_words(arguments[0].number) + " does not exist";
  return rc;
}

open_error_t apply_no_tcam_policies(switch_model &model, std::span<const argument>, std::string *) {
  while (uint32_t id = tcam_policy_next(model, 0)) tcam_policy_delete(model, id);
  return OPEN_E_NONE;
}

std::vector<argument> tcam_policy_arguments(const switch_model &model, uint32_t id,
                                            const open_tcamApiPolicy_t &record) {
  return {id, record.policyType - OPEN_TCAM_POLICY_OPENFLOW,
          std::string_view(print_tcam_clauses(model, record))};
}

void print_tcam_policies(const config_printer &print) {
  for (const auto &[id, policy] : print.model.tcam->policies)
    print.line(tcam_policy_arguments(print.model, id, policy.record));
}

/* --- interface <port> tcam-policy <number> -------------------------------------------------------------- */

/* A policy that is applied already stays so: the line says what shall be, not what shall be done. */
open_error_t apply_interface_tcam_policy(switch_model &model, std::span<const argument> arguments,
                                         std::string *error) {
  uint32_t interface = arguments[0].number, id = arguments[1].number;
  open_error_t rc = tcam_policy_apply(model, id, interface);
  if (rc == OPEN_E_EXISTS) return OPEN_E_NONE;
  if (rc == OPEN_E_NOT_FOUND) *error = policy_words(id) + " does not exist";
  if (rc == OPEN_E_FAIL) *error = policy_words(id) + " redirects to " + interface_name(model, interface);
  return rc;
}

open_error_t apply_no_interface_tcam_policy(switch_model &model, std::span<const argument> arguments,
                                            std::string *error) {
  uint32_t interface = arguments[0].number, id = arguments[1].number;
  open_error_t rc = tcam_policy_take_off(model, id, interface);
  if (rc == OPEN_E_NOT_FOUND)
    *error = policy_words(id) + " is not applied to " + interface_name(model, interface);
  return rc;
}

void print_interface_tcam_policies(const config_printer &print) {
  for (uint32_t interface = port_first; interface <= lag_last; interface++) {
    for (const auto &[id, policy] : print.model.tcam->policies) {
      if (policy.applied[interface]) print.line({interface, id});
    }
  }
}

} // namespace softswitch
