/* Raw classification policies; see tcam.h. */
#include "platform/softswitch/model/tcam.h"

#include "platform/softswitch/model/switch.h"

#include <algorithm>
#include <string.h>

namespace softswitch {

static constexpr uint32_t vlan_priority_max = 7; /* IEEE 802.1Q: three bits */
static constexpr uint32_t dscp_max = 63;         /* RFC 2474: six bits */
static constexpr uint32_t protocol_max = 255;
static constexpr uint32_t tpid_max = 65535;

/* --- Everything at once --------------------------------------------------------------------------------- */

void tcam_reset(switch_model &model) {
  *model.tcam.edit() = tcam_table();
}

void tcam_forget_interface(switch_model &model, uint32_t interface) {
  if (interface > lag_last) return; /* neither port nor LAG: nothing was ever applied */
  for (uint32_t id = 0; (id = tcam_policy_next(model, id)) != 0;) {
    if (tcam_policy_find(model, id)->applied[interface]) tcam_policy_take_off(model, id, interface);
  }
}

/* --- Records -------------------------------------------------------------------------------------------- */

static bool asks_for(const open_tcamApiPolicy_t &record, uint32_t action) {
  return (record.actionType & action) != 0;
}

open_tcamApiPolicy_t tcam_normal_form(const open_tcamApiPolicy_t &record) {
  open_tcamApiPolicy_t normal = record;
  if (normal.policyType == 0) normal.policyType = OPEN_TCAM_POLICY_OPENFLOW;
  memset(normal.reserved, 0, sizeof normal.reserved);
  normal.actionVal = {};
  const OPEN_TCAM_ACTION_t &from = record.actionVal;
  OPEN_TCAM_ACTION_t &into = normal.actionVal;
  if (asks_for(record, OPEN_TCAM_ACTION_REDIRECT)) into.ifNum = from.ifNum;
  if (asks_for(record, OPEN_TCAM_ACTION_OUTERVLAN)) into.vlanVal = from.vlanVal;
  if (asks_for(record, OPEN_TCAM_ACTION_SRCMAC_NEW)) memcpy(into.srcMac, from.srcMac, sizeof into.srcMac);
  if (asks_for(record, OPEN_TCAM_ACTION_DSTMAC_NEW)) memcpy(into.dstMac, from.dstMac, sizeof into.dstMac);
  if (asks_for(record, OPEN_TCAM_ACTION_OUTERTPID)) into.etherType = from.etherType;
  if (asks_for(record, OPEN_TCAM_ACTION_USERPRIO)) {
    into.vlanPrio = from.vlanPrio;
    into.dscp = from.dscp;
  }
  return normal;
}

static bool is_zero(const open_in6_addr_t &address) {
  return std::all_of(std::begin(address.addr8), std::end(address.addr8),
                     [](uint8_t byte) { return byte == 0; });
}

static bool matches_ipv6(const open_tcamApiPolicy_t &record) {
  return !is_zero(record.matchSrcIpv6Addr) || !is_zero(record.matchSrcIpv6Mask) ||
         !is_zero(record.matchDstIpv6Addr) || !is_zero(record.matchDstIpv6Mask);
}

static bool has_known_header(const open_tcamPolicyHeader_t &header) {
  const open_tcamPolicyHeader_t &known = tcam_policy_header;
  return header.versionInfo.versionMajor == known.versionInfo.versionMajor &&
         header.versionInfo.versionMinor == known.versionInfo.versionMinor &&
         header.headerLen == known.headerLen;
}

/* The first field of a record that is above its range, in words. */
static std::string range_fault(const open_tcamApiPolicy_t &record) {
  const struct {
    const char *name;
    uint32_t value;
    uint32_t max;
  } fields[] = {
      {"VLAN id", record.matchVlanVal, vlan_id_max},
      {"VLAN priority", record.matchVlanPrio, vlan_priority_max},
      {"protocol", record.matchIpProto, protocol_max},
      {"DSCP", record.matchIpDscp, dscp_max},
      {"new priority", record.actionVal.vlanPrio, vlan_priority_max},
      {"new DSCP", record.actionVal.dscp, dscp_max},
      {"new TPID", record.actionVal.etherType, tpid_max},
  };
  for (const auto &field : fields) {
    if (field.value > field.max)
      return std::string(field.name) + " out of range 0.." + std::to_string(field.max);
  }
  return "";
}

std::string tcam_record_fault(const open_tcamApiPolicy_t &record) {
  if (!has_known_header(record.policyHeader)) return "the record is not of version 0.1";
  if (record.policyType == 0 || record.policyType >= OPEN_TCAM_POLICY_END) return "there is no such type";
  if ((record.actionType & ~uint32_t{OPEN_TCAM_ACTION_ALL}) != 0) return "there is no such action";
  if (asks_for(record, OPEN_TCAM_ACTION_OUTERVLAN) && !vlan_id_valid(record.actionVal.vlanVal))
    return "new VLAN id out of range 1..4094";
  if (matches_ipv6(record) && record.policyType != OPEN_TCAM_POLICY_GEN)
    return "only policies of type ipv6 match IPv6 addresses";
  return range_fault(record);
}

open_error_t tcam_record_check(const switch_model &model, const open_tcamApiPolicy_t &record) {
  if (!tcam_record_fault(record).empty()) return OPEN_E_PARAM;
  if (!asks_for(record, OPEN_TCAM_ACTION_REDIRECT)) return OPEN_E_NONE;
  return interface_switches_check(model, record.actionVal.ifNum);
}

uint32_t tcam_redirect_target(const open_tcamApiPolicy_t &record) {
  return asks_for(record, OPEN_TCAM_ACTION_REDIRECT) ? record.actionVal.ifNum : 0;
}

/* --- Finding -------------------------------------------------------------------------------------------- */

const tcam_policy *tcam_policy_find(const switch_model &model, uint32_t id) {
  auto found = model.tcam->policies.find(id);
  return found == model.tcam->policies.end() ? nullptr : &found->second;
}

uint32_t tcam_policy_next(const switch_model &model, uint32_t after) {
  auto found = model.tcam->policies.upper_bound(after);
  return found == model.tcam->policies.end() ? 0 : found->first;
}

uint32_t tcam_policy_free_id(const switch_model &model) {
  uint32_t id = 1;
  while (tcam_policy_find(model, id)) id++;
  return id <= tcam_policy_id_max ? id : 0;
}

uint32_t tcam_policy_redirecting_to(const switch_model &model, uint32_t interface) {
  for (const auto &[id, policy] : model.tcam->policies) {
    if (tcam_redirect_target(policy.record) == interface) return id;
  }
  return 0;
}

/* --- Changing ------------------------------------------------------------------------------------------- */

uint32_t tcam_stage_of_policy(uint32_t type) {
  return type == OPEN_TCAM_POLICY_EGRESS ? OPEN_TCAM_STAGE_EGRESS : OPEN_TCAM_STAGE_INGRESS;
}

/* Whether a stage has all the policies that it may have. */
static bool stage_full(const switch_model &model, uint32_t stage) {
  const auto &policies = model.tcam->policies;
  auto there = [&](const auto &entry) {
    return tcam_stage_of_policy(entry.second.record.policyType) == stage;
  };
  auto count = std::count_if(policies.begin(), policies.end(), there);
  bool egress = stage == OPEN_TCAM_STAGE_EGRESS;
  return count >= (egress ? model.limits.tcam_egress_policies : model.limits.tcam_ingress_policies);
}

open_error_t tcam_policy_create(switch_model &model, uint32_t id, const open_tcamApiPolicy_t &record) {
  open_tcamApiPolicy_t normal = tcam_normal_form(record);
  if (id == 0 || id > tcam_policy_id_max) return OPEN_E_PARAM;
  open_error_t rc = tcam_record_check(model, normal);
  if (rc != OPEN_E_NONE) return rc;
  if (tcam_policy_find(model, id)) return OPEN_E_EXISTS;
  uint32_t stage = tcam_stage_of_policy(normal.policyType);
  if (stage_full(model, stage)) return OPEN_E_FULL;
  model.tcam.edit()->policies[id].record = normal;
  next_change(model);
  return tcam_has_room(model, stage) ? OPEN_E_NONE : OPEN_E_FULL;
}

open_error_t tcam_policy_delete(switch_model &model, uint32_t id) {
  const tcam_policy *policy = tcam_policy_find(model, id);
  if (!policy) return OPEN_E_NOT_FOUND;
  for (uint32_t interface = port_first; interface <= lag_last; interface++) {
    if (policy->applied[interface]) interface_edit(model, interface);
  }
  next_change(model);
  model.tcam.edit()->policies.erase(id);
  return OPEN_E_NONE;
}

open_error_t tcam_policy_apply_check(const switch_model &model, uint32_t id, uint32_t interface) {
  const tcam_policy *policy = tcam_policy_find(model, id);
  if (!policy) return OPEN_E_NOT_FOUND;
  open_error_t rc = interface_switches_check(model, interface);
  if (rc != OPEN_E_NONE) return rc;
  if (policy->applied[interface]) return OPEN_E_EXISTS;
  return tcam_redirect_target(policy->record) == interface ? OPEN_E_FAIL : OPEN_E_NONE;
}

/* Notes for a policy whether it is applied to an interface, which becomes pending. */
static void set_applied(switch_model &model, uint32_t id, uint32_t interface, bool applied) {
  interface_edit(model, interface);
  model.tcam.edit()->policies.at(id).applied[interface] = applied;
}

open_error_t tcam_policy_apply(switch_model &model, uint32_t id, uint32_t interface) {
  open_error_t rc = tcam_policy_apply_check(model, id, interface);
  if (rc == OPEN_E_NONE) set_applied(model, id, interface, true);
  return rc;
}

open_error_t tcam_policy_take_off(switch_model &model, uint32_t id, uint32_t interface) {
  const tcam_policy *policy = tcam_policy_find(model, id);
  if (!policy) return OPEN_E_NOT_FOUND;
  open_error_t rc = interface_switches_check(model, interface);
  if (rc != OPEN_E_NONE) return rc;
  if (!policy->applied[interface]) return OPEN_E_NOT_FOUND;
  set_applied(model, id, interface, false);
  return OPEN_E_NONE;
}

} // namespace softswitch
