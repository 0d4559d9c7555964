/* Platform functions of access control lists with bent outputs: see bent_platform.h. A function that can be
 * bent in several places has a name for each but the first: its own and a word. */
#include "platform/api/openapi_acl.h"
#include "tests/unit/modules/bent_calls.h"

/* --- Lists and bindings -----------------------------------------------------------------------------------
 */

open_error_t rpcclt_openapiAclCountGet(openapiClientHandle_t *handle, uint32_t *count) {
  return call_library(__func__, count, handle, count);
}

open_error_t rpcclt_openapiAclMaxCountGet(openapiClientHandle_t *handle, uint32_t *max) {
  return call_library(__func__, max, handle, max);
}

open_error_t rpcclt_openapiAclNameGet(openapiClientHandle_t *handle, uint32_t aclId, open_buffdesc *name) {
  uint32_t room = name->size;
  open_error_t rc = library_call(__func__, handle, aclId, name);
  bend_text(__func__, name, room);
  return rc;
}

open_error_t rpcclt_openapiAclGetNext(openapiClientHandle_t *handle, OPEN_ACL_TYPE_t type, uint32_t aclId,
                                      uint32_t *next) {
  return call_library(__func__, next, handle, type, aclId, next);
}

static open_error_t bent_dir_list(const char *function, openapiClientHandle_t *handle, uint32_t number,
                                  OPEN_ACL_DIRECTION_t direction, OPEN_ACL_INTF_DIR_LIST_t *list) {
  open_error_t rc = call_library(function, &list->listEntry[0].aclType, handle, number, direction, list);
  bend(std::string(function) + " count", &list->count);
  bend(std::string(function) + " seqNum", &list->listEntry[0].seqNum);
  bend(std::string(function) + " aclId", &list->listEntry[0].aclId);
  return rc;
}

open_error_t rpcclt_openapiAclIntfDirListGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                             OPEN_ACL_DIRECTION_t direction, OPEN_ACL_INTF_DIR_LIST_t *list) {
  return bent_dir_list(__func__, handle, ifNum, direction, list);
}

open_error_t rpcclt_openapiAclVlanDirListGet(openapiClientHandle_t *handle, uint32_t vlanId,
                                             OPEN_ACL_DIRECTION_t direction, OPEN_ACL_VLAN_DIR_LIST_t *list) {
  return bent_dir_list(__func__, handle, vlanId, direction, list);
}

open_error_t rpcclt_openapiAclAssignedIntfDirListGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     OPEN_ACL_DIRECTION_t direction,
                                                     OPEN_ACL_ASSIGNED_INTF_LIST_t *list) {
  return call_library(__func__, &list->count, handle, aclId, direction, list);
}

open_error_t rpcclt_openapiAclAssignedVlanDirListGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     OPEN_ACL_DIRECTION_t direction,
                                                     OPEN_ACL_ASSIGNED_VLAN_LIST_t *list) {
  return call_library(__func__, &list->count, handle, aclId, direction, list);
}

/* --- Rules ------------------------------------------------------------------------------------------------
 */

open_error_t rpcclt_openapiAclRuleCountGet(openapiClientHandle_t *handle, uint32_t aclId, uint32_t *count) {
  return call_library(__func__, count, handle, aclId, count);
}

open_error_t rpcclt_openapiAclRuleGetFirst(openapiClientHandle_t *handle, uint32_t aclId, uint32_t *ruleId) {
  return call_library(__func__, ruleId, handle, aclId, ruleId);
}

open_error_t rpcclt_openapiAclRuleGetNext(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                          uint32_t *next) {
  return call_library(__func__, next, handle, aclId, ruleId, next);
}

open_error_t rpcclt_openapiAclRuleActionGet(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                            OPEN_ACL_ACTION_t *action) {
  return call_library(__func__, action, handle, aclId, ruleId, action);
}

open_error_t rpcclt_openapiAclRuleMatchEveryGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                uint32_t ruleId, OPEN_BOOL_t *match) {
  return call_library(__func__, match, handle, aclId, ruleId, match);
}

open_error_t rpcclt_openapiAclRuleDuplicateCheck(openapiClientHandle_t *handle, uint32_t aclId,
                                                 uint32_t ruleId, OPEN_BOOL_t *isDuplicated) {
  return call_library(__func__, isDuplicated, handle, aclId, ruleId, isDuplicated);
}

/* --- Matches and attributes -------------------------------------------------------------------------------
 */

static open_error_t bent_texts(const char *function, openapiClientHandle_t *handle, uint32_t aclId,
                               uint32_t ruleId, open_buffdesc *first, open_buffdesc *second) {
  uint32_t first_room = first->size, second_room = second->size;
  open_error_t rc = library_call(function, handle, aclId, ruleId, first, second);
  bend_text(function, first, first_room);
  bend_text(function, second, second_room);
  return rc;
}

open_error_t rpcclt_openapiAclRuleMatchMacSrcMacGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *mac,
                                                    open_buffdesc *mask) {
  return bent_texts(__func__, handle, aclId, ruleId, mac, mask);
}

open_error_t rpcclt_openapiAclRuleMatchMacDstMacGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *mac,
                                                    open_buffdesc *mask) {
  return bent_texts(__func__, handle, aclId, ruleId, mac, mask);
}

open_error_t rpcclt_openapiAclRuleMatchMacVlanGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_ACL_VLAN_OPERATOR_t *oper,
                                                  uint32_t *first, uint32_t *last) {
  return call_library(__func__, oper, handle, aclId, ruleId, oper, first, last);
}

open_error_t rpcclt_openapiAclRuleMatchMacEtherTypeGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                       uint32_t ruleId, uint32_t *etherType) {
  return call_library(__func__, etherType, handle, aclId, ruleId, etherType);
}

open_error_t rpcclt_openapiAclRuleMatchProtocolGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t *protocol) {
  return call_library(__func__, protocol, handle, aclId, ruleId, protocol);
}

/* What is bent of an address is its family. */
static void bend_family(const std::string &name, open_inet_addr_t *address) {
  uint32_t family = address->family;
  bend(name, &family);
  address->family = family;
}

static open_error_t bent_masks(const char *function, openapiClientHandle_t *handle, uint32_t aclId,
                               uint32_t ruleId, open_inet_addr_t *addr, open_inet_addr_t *mask) {
  open_error_t rc = library_call(function, handle, aclId, ruleId, addr, mask);
  bend_family(function, addr);
  bend_family(std::string(function) + " mask", mask);
  return rc;
}

open_error_t rpcclt_openapiAclRuleMatchIpSrcMaskGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_inet_addr_t *addr,
                                                    open_inet_addr_t *mask) {
  return bent_masks(__func__, handle, aclId, ruleId, addr, mask);
}

open_error_t rpcclt_openapiAclRuleMatchIpDstMaskGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_inet_addr_t *addr,
                                                    open_inet_addr_t *mask) {
  return bent_masks(__func__, handle, aclId, ruleId, addr, mask);
}

open_error_t rpcclt_openapiAclRuleMatchIpv6SrcPfxGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, open_inet_addr_t *prefix,
                                                     uint32_t *length) {
  open_error_t rc = library_call(__func__, handle, aclId, ruleId, prefix, length);
  bend_family(__func__, prefix);
  return rc;
}

open_error_t rpcclt_openapiAclRuleMatchL4SrcPortGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_ACL_L4_PORT_OPERATOR_t *oper,
                                                    uint32_t *port, uint32_t *port2) {
  return call_library(__func__, oper, handle, aclId, ruleId, oper, port, port2);
}

open_error_t rpcclt_openapiAclRuleMatchL4DstPortGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_ACL_L4_PORT_OPERATOR_t *oper,
                                                    uint32_t *port, uint32_t *port2) {
  return call_library(__func__, oper, handle, aclId, ruleId, oper, port, port2);
}

open_error_t rpcclt_openapiAclRuleMatchTosGet(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                              open_buffdesc *tos, open_buffdesc *tosMask) {
  return bent_texts(__func__, handle, aclId, ruleId, tos, tosMask);
}

open_error_t rpcclt_openapiAclRuleMatchTimeRangeGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *name) {
  uint32_t room = name->size;
  open_error_t rc = library_call(__func__, handle, aclId, ruleId, name);
  bend_text(__func__, name, room);
  return rc;
}

open_error_t rpcclt_openapiAclRuleMatchTimeRangeStatusGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                          uint32_t ruleId, OPEN_ACL_RULE_STATUS_t *status) {
  return call_library(__func__, status, handle, aclId, ruleId, status);
}

/* --- Numbers of rules -------------------------------------------------------------------------------------
 */

open_error_t rpcclt_openapiAclRuleMatchMacCosGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                 uint32_t ruleId, uint32_t *cos) {
  return call_library(__func__, cos, handle, aclId, ruleId, cos);
}

open_error_t rpcclt_openapiAclRuleMatchDscpGet(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                               uint32_t *dscp) {
  return call_library(__func__, dscp, handle, aclId, ruleId, dscp);
}

open_error_t rpcclt_openapiAclRuleMatchPrecedenceGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, uint32_t *precedence) {
  return call_library(__func__, precedence, handle, aclId, ruleId, precedence);
}

open_error_t rpcclt_openapiAclRuleMatchFlowLabelGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, uint32_t *label) {
  return call_library(__func__, label, handle, aclId, ruleId, label);
}

open_error_t rpcclt_openapiAclRuleMatchAssignQueueGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                      uint32_t ruleId, uint32_t *queue) {
  return call_library(__func__, queue, handle, aclId, ruleId, queue);
}

open_error_t rpcclt_openapiAclRuleMatchMirrorGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                 uint32_t ruleId, uint32_t *ifNum) {
  return call_library(__func__, ifNum, handle, aclId, ruleId, ifNum);
}

open_error_t rpcclt_openapiAclRuleMatchRedirectGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t *ifNum) {
  return call_library(__func__, ifNum, handle, aclId, ruleId, ifNum);
}

open_error_t rpcclt_openapiAclRuleMatchRateLimitGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, uint32_t *rate, uint32_t *burst) {
  return call_library(__func__, burst, handle, aclId, ruleId, rate, burst);
}
