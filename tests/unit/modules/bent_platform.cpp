/* Platform functions with bent outputs: see bent_platform.h. Those of access control lists:
 * bent_acl.cpp; of routing: bent_routing.cpp; of BGP: recorded_bgp.cpp. */
#include "tests/unit/modules/bent_platform.h"

#include "platform/api/openapi_if.h"
#include "platform/api/openapi_lag.h"
#include "platform/api/openapi_pml.h"
#include "platform/api/openapi_tcam.h"
#include "platform/api/openapi_vlan.h"
#include "tests/unit/modules/bent_calls.h"

#include <gtest/gtest.h>
#include <map>
#include <string.h>

struct bent_number {
  uint32_t value;
  bool used;
};

static std::map<std::string, bent_number> bent_numbers;

bent_output::bent_output(const char *function, uint32_t value) : function_(function) {
  bent_numbers[function_] = {value, false};
}

bent_output::~bent_output() {
  EXPECT_TRUE(bent_numbers[function_].used) << function_;
  bent_numbers.erase(function_);
}

void bend(const std::string &name, uint32_t *output) {
  auto bent = bent_numbers.find(name);
  if (bent == bent_numbers.end()) return;
  *output = bent->second.value;
  bent->second.used = true;
}

void bend_text(const std::string &name, open_buffdesc *text, uint32_t room) {
  uint32_t character = '\0';
  bend(name, &character);
  if (character == '\0') return;
  memset(text->pstart, static_cast<int>(character), room);
  text->size = 2 * room + 1;
}

open_error_t read_from_library(const char *function, openapiClientHandle_t *handle, uint32_t id,
                               open_buffdesc *text) {
  uint32_t room = text->size;
  open_error_t rc = library_call(function, handle, id, text);
  bend_text(function, text, room);
  return rc;
}

/* The number that can be bent is the first one given to call_library(). */

open_error_t rpcclt_openapiVlanNameLenGet(openapiClientHandle_t *handle, uint32_t *size) {
  return call_library(__func__, size, handle, size);
}

open_error_t rpcclt_openapiDot1VlanMaxGet(openapiClientHandle_t *handle, uint32_t *max) {
  return call_library(__func__, max, handle, max);
}

open_error_t rpcclt_openapiVlanIfParticipationGet(openapiClientHandle_t *handle, uint32_t vlanId,
                                                  uint32_t ifNum, uint32_t *mode) {
  return call_library(__func__, mode, handle, vlanId, ifNum, mode);
}

open_error_t openapiVlanIfParticipationStatusGet(openapiClientHandle_t *handle, uint32_t vlanId,
                                                 uint32_t ifNum, uint32_t *isMember) {
  return call_library(__func__, isMember, handle, vlanId, ifNum, isMember);
}

open_error_t openapiVlanIfTaggingGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t vlanId,
                                     uint32_t *tagging) {
  return call_library(__func__, tagging, handle, ifNum, vlanId, tagging);
}

open_error_t openapiVlanIfPvidGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *vlanId) {
  return call_library(__func__, vlanId, handle, ifNum, vlanId);
}

open_error_t rpcclt_openapiVlanIfAcceptFrameTypeGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    uint32_t *type) {
  return call_library(__func__, type, handle, ifNum, type);
}

open_error_t openapiIfAdminStateGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *state) {
  return call_library(__func__, state, handle, ifNum, state);
}

open_error_t openapiIfAutoNegGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *mode) {
  return call_library(__func__, mode, handle, ifNum, mode);
}

open_error_t openapiIfDuplexModeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *mode) {
  return call_library(__func__, mode, handle, ifNum, mode);
}

open_error_t openapiIfLinkStateGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *state) {
  return call_library(__func__, state, handle, ifNum, state);
}

open_error_t openapiIfMtuSizeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *size) {
  return call_library(__func__, size, handle, ifNum, size);
}

open_error_t openapiIfSpeedGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *speed) {
  return call_library(__func__, speed, handle, ifNum, speed);
}

open_error_t rpcclt_openapiIfDescrSizeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *max) {
  return call_library(__func__, max, handle, ifNum, max);
}

open_error_t rpcclt_openapiIfDescrGet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *text) {
  return call_library(__func__, &text->size, handle, ifNum, text);
}

open_error_t rpcclt_openapiIfSwitchportModeGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                               uint32_t *mode) {
  return call_library(__func__, mode, handle, ifNum, mode);
}

open_error_t rpcclt_openapiIfFirstGet(openapiClientHandle_t *handle, uint32_t type, uint32_t state,
                                      uint32_t *ifNum) {
  return call_library(__func__, ifNum, handle, type, state, ifNum);
}

open_error_t rpcclt_openapiIntfNameSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return call_library(__func__, size, handle, size);
}

open_error_t rpcclt_openapiIfNextGet(openapiClientHandle_t *handle, uint32_t type, uint32_t state,
                                     uint32_t ifNum, uint32_t *nextIfNum) {
  return call_library(__func__, nextIfNum, handle, type, state, ifNum, nextIfNum);
}

open_error_t openapiIfNextChangedGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *nextIfNum,
                                     uint32_t *deletePending) {
  open_error_t rc = call_library(__func__, deletePending, handle, ifNum, nextIfNum, deletePending);
  bend("openapiIfNextChangedGet nextIfNum", nextIfNum);
  return rc;
}

open_error_t openapiIfNameGet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *name) {
  return read_from_library(__func__, handle, ifNum, name);
}

open_error_t rpcclt_openapiIfMacAddrGet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *mac) {
  return read_from_library(__func__, handle, ifNum, mac);
}

open_error_t rpcclt_openapiVlanNextGet(openapiClientHandle_t *handle, uint32_t vlanId, uint32_t *nextVlanId) {
  return call_library(__func__, nextVlanId, handle, vlanId, nextVlanId);
}

open_error_t openapiVlanNextChangedGet(openapiClientHandle_t *handle, uint32_t vlanId, uint32_t *nextVlanId,
                                       uint32_t *deletePending) {
  return call_library(__func__, nextVlanId, handle, vlanId, nextVlanId, deletePending);
}

open_error_t rpcclt_openapiLagPortChannelIdToIfNumZYL(openapiClientHandle_t *handle, uint32_t portChannelId,
                                                      uint32_t *ifNum) {
  return call_library(__func__, ifNum, handle, portChannelId, ifNum);
}

open_error_t rpcclt_openapiLagIfNumToPortChannelIdZYL(openapiClientHandle_t *handle, uint32_t ifNum,
                                                      uint32_t *portChannelId) {
  return call_library(__func__, portChannelId, handle, ifNum, portChannelId);
}

open_error_t rpcclt_openapiLagNameMaxLengthGet(openapiClientHandle_t *handle, uint32_t *size) {
  return call_library(__func__, size, handle, size);
}

open_error_t rpcclt_openapiLagMaxMemberCountGet(openapiClientHandle_t *handle, uint32_t *max) {
  return call_library(__func__, max, handle, max);
}

open_error_t rpcclt_openapiLagMembersGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *count,
                                         uint32_t *ports) {
  return call_library(__func__, count, handle, ifNum, count, ports);
}

open_error_t rpcclt_openapiPmlIntfStickyModeGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                uint32_t *mode) {
  return call_library(__func__, mode, handle, ifNum, mode);
}

open_error_t rpcclt_openapiPmlIntfStaticEntryGetFirst(openapiClientHandle_t *handle, uint32_t ifNum,
                                                      open_buffdesc *mac, uint32_t *vlanId,
                                                      uint32_t *sticky) {
  return call_library(__func__, sticky, handle, ifNum, mac, vlanId, sticky);
}

open_error_t rpcclt_openapiPmlIntfStaticEntryGetNext(openapiClientHandle_t *handle, uint32_t ifNum,
                                                     open_buffdesc *mac, uint32_t *vlanId, uint32_t *sticky) {
  return call_library(__func__, vlanId, handle, ifNum, mac, vlanId, sticky);
}

open_error_t rpcclt_openapiTcamPolicyGet(openapiClientHandle_t *handle, uint32_t *policyId,
                                         open_tcamApiPolicy_t *policy) {
  open_error_t rc = call_library(__func__, &policy->policyType, handle, policyId, policy);
  bend("rpcclt_openapiTcamPolicyGet policyId", policyId);
  bend("rpcclt_openapiTcamPolicyGet policyPrio", &policy->policyPrio);
  bend("rpcclt_openapiTcamPolicyGet rulePrio", &policy->rulePrio);
  bend("rpcclt_openapiTcamPolicyGet major", &policy->policyHeader.versionInfo.versionMajor);
  bend("rpcclt_openapiTcamPolicyGet minor", &policy->policyHeader.versionInfo.versionMinor);
  bend("rpcclt_openapiTcamPolicyGet headerLen", &policy->policyHeader.headerLen);
  return rc;
}

open_error_t rpcclt_openapiTcamPolicyDestroy(openapiClientHandle_t *handle, uint32_t *policyId) {
  return call_library(__func__, policyId, handle, policyId);
}

open_error_t rpcclt_openapiTcamPolicyIntfAdd(openapiClientHandle_t *handle, uint32_t *policyId,
                                             uint32_t ifNum) {
  return call_library(__func__, policyId, handle, policyId, ifNum);
}

open_error_t rpcclt_openapiTcamPolicyIntfRem(openapiClientHandle_t *handle, uint32_t *policyId,
                                             uint32_t ifNum) {
  return call_library(__func__, policyId, handle, policyId, ifNum);
}

open_error_t rpcclt_openapiTcamPolicyGetNext(openapiClientHandle_t *handle, uint32_t *policyId,
                                             open_tcamApiPolicy_t *policy, uint32_t *nextId) {
  return call_library(__func__, nextId, handle, policyId, policy, nextId);
}

open_error_t rpcclt_openapiTcamGroupStatsGetZYL(openapiClientHandle_t *handle, uint32_t stage,
                                                open_zylUsmdbTcamGroupsStats_t *groups, uint32_t *sliceSize,
                                                uint32_t *entryCount, uint32_t *entryFree,
                                                uint32_t *entryTotal) {
  open_error_t rc =
      call_library(__func__, sliceSize, handle, stage, groups, sliceSize, entryCount, entryFree, entryTotal);
  bend("rpcclt_openapiTcamGroupStatsGetZYL inUse", &groups->group[0].inUse);
  return rc;
}

open_error_t rpcclt_openapiTcamHapiBroadPolicyTypeNameGetZYL(openapiClientHandle_t *handle, uint32_t typeId,
                                                             open_buffdesc *name) {
  return read_from_library(__func__, handle, typeId, name);
}
