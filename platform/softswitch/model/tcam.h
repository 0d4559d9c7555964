/* Raw classification policies: kept by id, each with the ports and LAGs that it is applied to. The record is
 * that of the platform interface (platform/api/openapi_tcam.h). How much of the TCAM they and the access
 * lists take is tcam_usage.h.
 *
 * A change of policies is a change of the switch; interfaces become pending when a policy is applied to them
 * or taken off. */
#ifndef KESTREL_SOFTSWITCH_MODEL_TCAM_H
#define KESTREL_SOFTSWITCH_MODEL_TCAM_H

#include "platform/api/openapi_tcam.h"
#include "platform/softswitch/model/vlan.h"

#include <map>
#include <string>

namespace softswitch {

struct tcam_policy {
  open_tcamApiPolicy_t record = {}; /* in normal form */
  member_set applied;               /* the ports and LAGs that it is applied to */
};

struct tcam_table {
  std::map<uint32_t, tcam_policy> policies; /* by id */
};

/* The highest id: there are as many as there can be policies. */
inline constexpr uint32_t tcam_policy_id_max = limits().tcam_ingress_policies + limits().tcam_egress_policies;
/* The header that every record has. */
inline constexpr open_tcamPolicyHeader_t tcam_policy_header = {{0, 1}, 12};

/* Deletes all policies. interfaces_reset() notes the change. */
void tcam_reset(switch_model &model);
/* Takes all policies off an interface: what its removal does. */
void tcam_forget_interface(switch_model &model, uint32_t interface);

/* --- Records -------------------------------------------------------------------------------------------- */

/* A record with type 0 read as OPEN_TCAM_POLICY_OPENFLOW, and with reserved bytes and the arguments of
 * actions that are not asked for as 0. */
open_tcamApiPolicy_t tcam_normal_form(const open_tcamApiPolicy_t &record);
/* What is wrong with a record in normal form, in words; empty when all of it is in range. */
std::string tcam_record_fault(const open_tcamApiPolicy_t &record);
/* OPEN_E_PARAM for such a fault, OPEN_E_NOT_FOUND (also OPEN_E_PARAM) when the port or LAG to redirect to
 * does not exist. */
open_error_t tcam_record_check(const switch_model &model, const open_tcamApiPolicy_t &record);
/* The interface that a record redirects to; 0 when it does not. */
uint32_t tcam_redirect_target(const open_tcamApiPolicy_t &record);

/* --- Policies ------------------------------------------------------------------------------------------- */

/* The policy with an id; nullptr when there is none. */
const tcam_policy *tcam_policy_find(const switch_model &model, uint32_t id);
/* The lowest id above `after` that a policy has; 0 when there is none. */
uint32_t tcam_policy_next(const switch_model &model, uint32_t after);
/* The lowest id that no policy has; 0 when all are taken. */
uint32_t tcam_policy_free_id(const switch_model &model);
/* The first policy that redirects to an interface; 0 when there is none. */
uint32_t tcam_policy_redirecting_to(const switch_model &model, uint32_t interface);

/* Makes a policy, which is applied nowhere, from a record in any form.
 * OPEN_E_PARAM: an id outside 1..tcam_policy_id_max; otherwise the codes of tcam_record_check().
 * OPEN_E_EXISTS: there is a policy with this id. OPEN_E_FULL: no room for another of its stage. */
open_error_t tcam_policy_create(switch_model &model, uint32_t id, const open_tcamApiPolicy_t &record);
/* Deletes a policy and takes it off its interfaces. OPEN_E_NOT_FOUND: there is none with this id. */
open_error_t tcam_policy_delete(switch_model &model, uint32_t id);

/* Whether a policy can be applied to an interface. The codes of tcam_policy_apply(). */
open_error_t tcam_policy_apply_check(const switch_model &model, uint32_t id, uint32_t interface);
/* Applies a policy to a port or LAG. OPEN_E_NOT_FOUND (for the interface also OPEN_E_PARAM): there is no such
 * policy, port or LAG. OPEN_E_EXISTS: it is applied there. OPEN_E_FAIL: it redirects to this interface. */
open_error_t tcam_policy_apply(switch_model &model, uint32_t id, uint32_t interface);
/* Takes it off again. OPEN_E_NOT_FOUND: also when it is not applied there. */
open_error_t tcam_policy_take_off(switch_model &model, uint32_t id, uint32_t interface);

/* --- Room ----------------------------------------------------------------------------------------------- */

/* The stage (OPEN_TCAM_STAGE_...) of policies of a type. */
uint32_t tcam_stage_of_policy(uint32_t type);
/* The stage of access lists that are bound in a direction (OPEN_ACL_DIRECTION_t). */
uint32_t tcam_stage_of(uint32_t direction);
/* Whether the slices of a stage hold its policies and the rules of access lists bound there. Whoever adds to
 * them asks afterwards, on the changed model, and answers OPEN_E_FULL when they do not. */
bool tcam_has_room(const switch_model &model, uint32_t stage);

} // namespace softswitch

#endif
