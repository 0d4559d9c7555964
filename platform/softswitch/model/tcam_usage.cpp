/* What the TCAM is used for; see tcam_usage.h. */
#include "platform/softswitch/model/tcam_usage.h"

#include "platform/api/openapi_acl.h"
#include "platform/softswitch/model/switch.h"

#include <algorithm>

namespace softswitch {

/* --- Entries in use ------------------------------------------------------------------------------------- */

static uint32_t count_policies(const switch_model &model, uint32_t, uint32_t type) {
  const auto &policies = model.tcam->policies;
  auto of_type = [&](const auto &entry) { return entry.second.record.policyType == type; };
  return static_cast<uint32_t>(std::count_if(policies.begin(), policies.end(), of_type));
}

static uint32_t count_rules(const switch_model &model, uint32_t stage, uint32_t type) {
  bool egress = stage == OPEN_TCAM_STAGE_EGRESS;
  return acl_rules_in_use(model, type, egress ? OPEN_ACL_DIRECTION_OUT : OPEN_ACL_DIRECTION_IN);
}

/* --- Kinds of entries ----------------------------------------------------------------------------------- */

struct tcam_kind {
  uint32_t number;
  const char *name;
  uint32_t width;
  /* Entries of the kind at a stage; `type` is that of policies or of access lists. */
  uint32_t (*count)(const switch_model &, uint32_t stage, uint32_t type);
  uint32_t type;
};

static constexpr tcam_kind openflow_policies = {1, "OpenFlow policy", 1, count_policies,
                                                OPEN_TCAM_POLICY_OPENFLOW};
static constexpr tcam_kind gen_policies = {2, "Gen (IPv6) policy", 2, count_policies, OPEN_TCAM_POLICY_GEN};
static constexpr tcam_kind egress_policies = {3, "Egress policy", 1, count_policies, OPEN_TCAM_POLICY_EGRESS};
static constexpr tcam_kind ip_rules = {4, "IPv4 ACL", 1, count_rules, OPEN_ACL_TYPE_IP};
static constexpr tcam_kind mac_rules = {5, "MAC ACL", 1, count_rules, OPEN_ACL_TYPE_MAC};
static constexpr tcam_kind ipv6_rules = {6, "IPv6 ACL", 2, count_rules, OPEN_ACL_TYPE_IPV6};

/* Where the entries of a kind are, in the order in which groups are listed. */
struct tcam_place {
  uint32_t stage;
  uint32_t slice_entries;
  const tcam_kind &kind;
};

static constexpr tcam_place places[] = {
    {OPEN_TCAM_STAGE_INGRESS, 256, openflow_policies}, {OPEN_TCAM_STAGE_INGRESS, 256, gen_policies},
    {OPEN_TCAM_STAGE_INGRESS, 512, ip_rules},          {OPEN_TCAM_STAGE_INGRESS, 512, mac_rules},
    {OPEN_TCAM_STAGE_INGRESS, 512, ipv6_rules},        {OPEN_TCAM_STAGE_EGRESS, 256, egress_policies},
    {OPEN_TCAM_STAGE_EGRESS, 256, ip_rules},           {OPEN_TCAM_STAGE_EGRESS, 256, mac_rules},
    {OPEN_TCAM_STAGE_EGRESS, 256, ipv6_rules},
};

std::string_view tcam_kind_name(uint32_t kind) {
  for (const tcam_place &place : places) {
    if (place.kind.number == kind) return place.kind.name;
  }
  return "";
}

/* --- Groups and slices ---------------------------------------------------------------------------------- */

std::vector<tcam_group> tcam_groups(const switch_model &model, uint32_t stage) {
  std::vector<tcam_group> groups;
  for (const tcam_place &place : places) {
    if (place.stage != stage) continue;
    uint32_t entries = place.slice_entries;
    uint32_t count = place.kind.count(model, stage, place.kind.type);
    uint32_t depth = (count + entries - 1) / entries;
    groups.push_back({place.kind.number, entries, place.kind.width, count, depth});
  }
  return groups;
}

/* How many slices the switch has; see limits.h. */
static uint32_t slice_limit(const switch_model &model, uint32_t stage, uint32_t slice_entries) {
  const limits &limits = model.limits;
  if (stage == OPEN_TCAM_STAGE_INGRESS && slice_entries == 256) return limits.tcam_ingress_slices_256;
  if (stage == OPEN_TCAM_STAGE_INGRESS) return limits.tcam_ingress_slices_512;
  return slice_entries == 256 ? limits.tcam_egress_slices_256 : 0;
}

tcam_slices tcam_slices_of(const switch_model &model, uint32_t stage, uint32_t slice_entries) {
  tcam_slices slices = {0, slice_limit(model, stage, slice_entries)};
  for (const tcam_group &group : tcam_groups(model, stage)) {
    if (group.slice_entries == slice_entries) slices.used += group.depth * group.width;
  }
  return slices;
}

uint32_t tcam_stage_of(uint32_t direction) {
  return direction == OPEN_ACL_DIRECTION_OUT ? OPEN_TCAM_STAGE_EGRESS : OPEN_TCAM_STAGE_INGRESS;
}

bool tcam_has_room(const switch_model &model, uint32_t stage) {
  for (uint32_t slice_entries : {256, 512}) {
    tcam_slices slices = tcam_slices_of(model, stage, slice_entries);
    if (slices.used > slices.total) return false;
  }
  return true;
}

} // namespace softswitch
