/* TCAM policies and the use of the TCAM; the contracts are in platform/api/openapi_tcam.h. Setters come down
 * to a line of the configuration language. */
#include "platform/api/openapi_tcam.h"

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/api/tcam_trace.h"
#include "platform/softswitch/config/tcam_lines.h"
#include "platform/softswitch/model/tcam_usage.h"

#include <string.h>

using namespace softswitch;

/* --- Policies ------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiTcamPolicyCreate(openapiClientHandle_t *handle, open_tcamApiPolicy_t policy,
                                            uint32_t *policyId) {
  return api_call(__func__, handle, {input(&policy, tcam_record_trace), policyId}, [&](switch_model &model) {
    open_tcamApiPolicy_t record = tcam_normal_form(policy);
    open_error_t rc = tcam_record_check(model, record);
    if (rc != OPEN_E_NONE) return rc;
    uint32_t id = tcam_policy_free_id(model);
    if (id == 0) return OPEN_E_FULL;
    rc = commit(model, "tcam policy <number> openflow|ipv6|egress ...",
                tcam_policy_arguments(model, id, record));
    if (rc == OPEN_E_NONE) *policyId = id;
    return rc;
  });
}

open_error_t rpcclt_openapiTcamPolicyGet(openapiClientHandle_t *handle, uint32_t *policyId,
                                         open_tcamApiPolicy_t *policy) {
  return api_call(__func__, handle, {number_in(policyId), output(policy)}, [&](switch_model &model) {
    const tcam_policy *found = tcam_policy_find(model, *policyId);
    if (!found) return OPEN_E_NOT_FOUND;
    *policy = found->record;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiTcamPolicyDestroy(openapiClientHandle_t *handle, uint32_t *policyId) {
  return api_call(__func__, handle, {number_in(policyId)},
                  [&](switch_model &model) { return commit(model, "no tcam policy <number>", {*policyId}); });
}

open_error_t rpcclt_openapiTcamPolicyDeleteAll(openapiClientHandle_t *handle) {
  return api_call(__func__, handle, {},
                  [&](switch_model &model) { return commit(model, "no tcam policies", {}); });
}

/* Answers with the first policy after an id. */
static open_error_t answer_next(const switch_model &model, uint32_t after, open_tcamApiPolicy_t *policy,
                                uint32_t *id) {
  uint32_t next = tcam_policy_next(model, after);
  if (next == 0) return OPEN_E_FAIL;
  *policy = tcam_policy_find(model, next)->record;
  *id = next;
  return OPEN_E_NONE;
}

open_error_t rpcclt_openapiTcamPolicyGetFirst(openapiClientHandle_t *handle, open_tcamApiPolicy_t *policy,
                                              uint32_t *policyId) {
  return api_call(__func__, handle, {output(policy), policyId},
                  [&](switch_model &model) { return answer_next(model, 0, policy, policyId); });
}

open_error_t rpcclt_openapiTcamPolicyGetNext(openapiClientHandle_t *handle, uint32_t *policyId,
                                             open_tcamApiPolicy_t *policy, uint32_t *nextId) {
  return api_call(__func__, handle, {number_in(policyId), output(policy), nextId},
                  [&](switch_model &model) { return answer_next(model, *policyId, policy, nextId); });
}

open_error_t rpcclt_openapiTcamPolicyIntfAdd(openapiClientHandle_t *handle, uint32_t *policyId,
                                             uint32_t ifNum) {
  return api_call(__func__, handle, {number_in(policyId), ifNum}, [&](switch_model &model) {
    /* For the line a policy that is applied here is as wanted; who adds wants to hear of it. */
    open_error_t rc = tcam_policy_apply_check(model, *policyId, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    return commit(model, "interface <port> tcam-policy <number>", {ifNum, *policyId});
  });
}

open_error_t rpcclt_openapiTcamPolicyIntfRem(openapiClientHandle_t *handle, uint32_t *policyId,
                                             uint32_t ifNum) {
  return api_call(__func__, handle, {number_in(policyId), ifNum}, [&](switch_model &model) {
    if (!tcam_policy_find(model, *policyId)) return OPEN_E_NOT_FOUND;
    open_error_t rc = interface_switches_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    return commit(model, "no interface <port> tcam-policy <number>", {ifNum, *policyId});
  });
}

/* --- Use of the TCAM ------------------------------------------------------------------------------------ */

/* What is left of a total; nothing when a limit was lowered below the use. */
static uint32_t rest_of(uint32_t total, uint32_t used) {
  return total > used ? total - used : 0;
}

/* A group as the interface shows it; `gid` is its place at its stage, from 1. */
static open_zylUsmdbTcamGroup_t group_record(const tcam_group &group, uint32_t gid) {
  open_zylUsmdbTcamGroup_t shown = {};
  if (group.count == 0) return shown;
  shown.inUse = 1;
  shown.gid = gid;
  shown.typeId = group.kind;
  shown.count = group.count;
  shown.total = group.depth * group.slice_entries;
  shown.free = shown.total - shown.count;
  shown.width = group.width;
  shown.depth = group.depth;
  return shown;
}

open_error_t rpcclt_openapiTcamGroupStatsGetZYL(openapiClientHandle_t *handle, uint32_t stage,
                                                open_zylUsmdbTcamGroupsStats_t *groups, uint32_t *sliceSize,
                                                uint32_t *entryCount, uint32_t *entryFree,
                                                uint32_t *entryTotal) {
  call_arguments arguments = {stage, output(groups), sliceSize, entryCount, entryFree, entryTotal};
  return api_call(__func__, handle, arguments, [&](switch_model &model) {
    if (stage != OPEN_TCAM_STAGE_INGRESS && stage != OPEN_TCAM_STAGE_EGRESS) return OPEN_E_PARAM;
    memset(groups, 0, sizeof *groups);
    *sliceSize = 0;
    *entryCount = 0;
    for (const tcam_group &group : tcam_groups(model, stage)) {
      groups->group[*sliceSize] = group_record(group, *sliceSize + 1);
      ++*sliceSize;
      *entryCount += group.count * group.width;
    }
    *entryTotal = 0;
    for (uint32_t entries : {256, 512}) *entryTotal += tcam_slices_of(model, stage, entries).total * entries;
    *entryFree = rest_of(*entryTotal, *entryCount);
    return OPEN_E_NONE;
  });
}

static void answer_slices(const switch_model &model, uint32_t stage, uint32_t slice_entries, uint32_t *count,
                          uint32_t *free, uint32_t *total) {
  tcam_slices slices = tcam_slices_of(model, stage, slice_entries);
  *count = slices.used;
  *total = slices.total;
  *free = rest_of(slices.total, slices.used);
}

open_error_t rpcclt_openapiTcamGroupStatsIngressSlicesCountGetZYL(openapiClientHandle_t *handle,
                                                                  uint32_t *count256, uint32_t *free256,
                                                                  uint32_t *total256, uint32_t *count512,
                                                                  uint32_t *free512, uint32_t *total512) {
  call_arguments arguments = {count256, free256, total256, count512, free512, total512};
  return api_call(__func__, handle, arguments, [&](switch_model &model) {
    answer_slices(model, OPEN_TCAM_STAGE_INGRESS, 256, count256, free256, total256);
    answer_slices(model, OPEN_TCAM_STAGE_INGRESS, 512, count512, free512, total512);
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiTcamGroupStatsEgressSlicesCountGetZYL(openapiClientHandle_t *handle,
                                                                 uint32_t *count256, uint32_t *free256,
                                                                 uint32_t *total256) {
  return api_call(__func__, handle, {count256, free256, total256}, [&](switch_model &model) {
    answer_slices(model, OPEN_TCAM_STAGE_EGRESS, 256, count256, free256, total256);
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiTcamHapiBroadPolicyTypeNameGetZYL(openapiClientHandle_t *handle, uint32_t typeId,
                                                             open_buffdesc *name) {
  return api_call_unlocked(__func__, handle, {typeId, text_out(name)}, [&] {
    std::string_view found = tcam_kind_name(typeId);
    return found.empty() ? OPEN_E_NOT_FOUND : fill_text(name, found);
  });
}
