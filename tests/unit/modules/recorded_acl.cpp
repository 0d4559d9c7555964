/* Platform functions of access control lists that record their arguments: see recorded_calls.h. */
#include "platform/api/openapi_acl.h"
#include "tests/unit/modules/bent_calls.h"
#include "tests/unit/modules/recorded_calls.h"

static open_error_t record_texts(const char *function, openapiClientHandle_t *handle, uint32_t aclId,
                                 uint32_t ruleId, open_buffdesc *first, open_buffdesc *second) {
  record_call(function, written(first, second));
  return library_call(function, handle, aclId, ruleId, first, second);
}

open_error_t rpcclt_openapiAclRuleMatchMacSrcMacAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *mac,
                                                    open_buffdesc *mask) {
  return record_texts(__func__, handle, aclId, ruleId, mac, mask);
}

open_error_t rpcclt_openapiAclRuleMatchMacDstMacAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *mac,
                                                    open_buffdesc *mask) {
  return record_texts(__func__, handle, aclId, ruleId, mac, mask);
}

open_error_t rpcclt_openapiAclRuleMatchTosAdd(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                              open_buffdesc *tos, open_buffdesc *tosMask) {
  return record_texts(__func__, handle, aclId, ruleId, tos, tosMask);
}

open_error_t rpcclt_openapiAclRuleMatchMacVlanAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_ACL_VLAN_OPERATOR_t oper,
                                                  uint32_t first, uint32_t last) {
  record_call(__func__, written(oper, first, last));
  return library_call(__func__, handle, aclId, ruleId, oper, first, last);
}

open_error_t rpcclt_openapiAclRuleMatchIcmpTypeCodeGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                       uint32_t ruleId, OPEN_BOOL_t family, uint32_t *type,
                                                       uint32_t *code) {
  record_call(__func__, written(family));
  return library_call(__func__, handle, aclId, ruleId, family, type, code);
}
