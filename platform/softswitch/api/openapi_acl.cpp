/* Access control lists and their bindings; the contracts are in platform/api/openapi_acl.h. Setters come down
 * to a line of the configuration language. Rules are openapi_acl_rule.cpp. */
#include "platform/api/openapi_acl.h"

#include "platform/softswitch/api/call.h"

#include <algorithm>

using namespace softswitch;

/* Where the choice ip|mac|ipv6 of a line has the type. */
static uint32_t type_choice(uint32_t type) {
  return type - OPEN_ACL_TYPE_IP;
}

/* --- Lists ---------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiAclCountGet(openapiClientHandle_t *handle, uint32_t *count) {
  return api_call(__func__, handle, {count}, [&](const switch_model &model) {
    *count = static_cast<uint32_t>(model.acls->lists.size());
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiAclMaxCountGet(openapiClientHandle_t *handle, uint32_t *max) {
  return api_call(__func__, handle, {max}, [&](const switch_model &model) {
    *max = model.limits.acls;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiAclCreate(openapiClientHandle_t *handle, OPEN_ACL_TYPE_t type, open_buffdesc *name,
                                     uint32_t *aclId) {
  return api_call(__func__, handle, {type, text_in(name), aclId}, [&](switch_model &model) {
    std::string_view text = text_of(*name);
    if (!acl_type_valid(type) || !acl_name_valid(text)) return OPEN_E_PARAM;
    /* For the line a list that is there is as wanted; who makes one wants to hear of it. */
    if (acl_by_name(model, type, text)) return OPEN_E_EXISTS;
    uint32_t id = acl_free_id(model);
    open_error_t rc = commit(model, "acl ip|mac|ipv6 <text> id <number>", {type_choice(type), text, id});
    if (rc == OPEN_E_NONE) *aclId = id;
    return rc;
  });
}

open_error_t rpcclt_openapiAclDelete(openapiClientHandle_t *handle, uint32_t aclId) {
  return api_call(__func__, handle, {aclId}, [&](switch_model &model) {
    const acl_list *list = acl_find(model, aclId);
    if (!list) return OPEN_E_NOT_FOUND;
    return commit(model, "no acl ip|mac|ipv6 <text>",
                  {type_choice(list->type), std::string_view(list->name)});
  });
}

/* Answers the id of a list that may not be there. */
static open_error_t give_id(const acl_list *list, open_error_t when_none, uint32_t *id) {
  if (!list) return when_none;
  *id = list->id;
  return OPEN_E_NONE;
}

open_error_t rpcclt_openapiAclGet(openapiClientHandle_t *handle, OPEN_ACL_TYPE_t type, open_buffdesc *name,
                                  uint32_t *aclId) {
  return api_call(__func__, handle, {type, text_in(name), aclId}, [&](const switch_model &model) {
    if (!acl_type_valid(type)) return OPEN_E_PARAM;
    return give_id(acl_by_name(model, type, text_of(*name)), OPEN_E_NOT_FOUND, aclId);
  });
}

open_error_t rpcclt_openapiAclNameGet(openapiClientHandle_t *handle, uint32_t aclId, open_buffdesc *name) {
  return api_call(__func__, handle, {aclId, text_out(name)}, [&](const switch_model &model) {
    const acl_list *list = acl_find(model, aclId);
    return list ? fill_text(name, list->name) : OPEN_E_NOT_FOUND;
  });
}

open_error_t rpcclt_openapiAclGetFirst(openapiClientHandle_t *handle, OPEN_ACL_TYPE_t type, uint32_t *aclId) {
  return api_call(__func__, handle, {type, aclId}, [&](const switch_model &model) {
    if (!acl_type_valid(type)) return OPEN_E_PARAM;
    return give_id(acl_next(model, type, 0), OPEN_E_FAIL, aclId);
  });
}

open_error_t rpcclt_openapiAclGetNext(openapiClientHandle_t *handle, OPEN_ACL_TYPE_t type, uint32_t aclId,
                                      uint32_t *next) {
  return api_call(__func__, handle, {type, aclId, next}, [&](const switch_model &model) {
    if (!acl_type_valid(type)) return OPEN_E_PARAM;
    return give_id(acl_next(model, type, aclId), OPEN_E_FAIL, next);
  });
}

/* --- Bindings ------------------------------------------------------------------------------------------- */

/* Checks a place, then finds the list. */
static open_error_t find_list(const switch_model &model, const acl_place &place, uint32_t id,
                              const acl_list **list) {
  open_error_t rc = acl_place_check(model, place);
  *list = acl_find(model, id);
  return rc == OPEN_E_NONE && !*list ? OPEN_E_NOT_FOUND : rc;
}

static open_error_t bind(switch_model &model, const char *pattern, const acl_place &place, uint32_t id,
                         uint32_t sequence) {
  const acl_list *list;
  open_error_t rc = find_list(model, place, id, &list);
  if (rc != OPEN_E_NONE) return rc;
  /* For the line a list that is bound with this number is as wanted. */
  if (acl_bound_sequence(model, place, id) != 0) return OPEN_E_EXISTS;
  if (sequence == 0) sequence = acl_next_sequence(model, place);
  if (sequence == 0) return OPEN_E_FULL;
  return commit(
      model, pattern,
      {place.number, place.direction, type_choice(list->type), std::string_view(list->name), sequence});
}

static open_error_t unbind(switch_model &model, const char *pattern, const acl_place &place, uint32_t id) {
  const acl_list *list;
  open_error_t rc = find_list(model, place, id, &list);
  if (rc != OPEN_E_NONE) return rc;
  return commit(model, pattern,
                {place.number, place.direction, type_choice(list->type), std::string_view(list->name)});
}

open_error_t rpcclt_openapiAclIntfDirAdd(openapiClientHandle_t *handle, uint32_t ifNum,
                                         OPEN_ACL_DIRECTION_t direction, uint32_t aclId, uint32_t sequence) {
  return api_call(__func__, handle, {ifNum, direction, aclId, sequence}, [&](switch_model &model) {
    return bind(model, "interface <port> acl in|out ip|mac|ipv6 <text> sequence <number>",
                {acl_place::interface, ifNum, direction}, aclId, sequence);
  });
}

open_error_t rpcclt_openapiAclVlanDirAdd(openapiClientHandle_t *handle, uint32_t vlanId,
                                         OPEN_ACL_DIRECTION_t direction, uint32_t aclId, uint32_t sequence) {
  return api_call(__func__, handle, {vlanId, direction, aclId, sequence}, [&](switch_model &model) {
    return bind(model, "vlan <vlan> acl in|out ip|mac|ipv6 <text> sequence <number>",
                {acl_place::vlan, vlanId, direction}, aclId, sequence);
  });
}

open_error_t rpcclt_openapiAclIntfDirDelete(openapiClientHandle_t *handle, uint32_t ifNum,
                                            OPEN_ACL_DIRECTION_t direction, uint32_t aclId) {
  return api_call(__func__, handle, {ifNum, direction, aclId}, [&](switch_model &model) {
    return unbind(model, "no interface <port> acl in|out ip|mac|ipv6 <text>",
                  {acl_place::interface, ifNum, direction}, aclId);
  });
}

open_error_t rpcclt_openapiAclVlanDirDelete(openapiClientHandle_t *handle, uint32_t vlanId,
                                            OPEN_ACL_DIRECTION_t direction, uint32_t aclId) {
  return api_call(__func__, handle, {vlanId, direction, aclId}, [&](switch_model &model) {
    return unbind(model, "no vlan <vlan> acl in|out ip|mac|ipv6 <text>", {acl_place::vlan, vlanId, direction},
                  aclId);
  });
}

/* Answers what is bound to a place. Limits see to it that it fits. */
static open_error_t give_bindings(const switch_model &model, const acl_place &place,
                                  OPEN_ACL_INTF_DIR_LIST_t *list) {
  open_error_t rc = acl_place_check(model, place);
  if (rc != OPEN_E_NONE) return rc;
  list->count = 0;
  for (const acl_binding &binding : acl_bindings_at(model, place))
    list->listEntry[list->count++] = {binding.sequence, acl_find(model, binding.acl)->type, binding.acl};
  return OPEN_E_NONE;
}

open_error_t rpcclt_openapiAclIntfDirListGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                             OPEN_ACL_DIRECTION_t direction, OPEN_ACL_INTF_DIR_LIST_t *list) {
  return api_call(__func__, handle, {ifNum, direction, output(list)}, [&](const switch_model &model) {
    return give_bindings(model, {acl_place::interface, ifNum, direction}, list);
  });
}

open_error_t rpcclt_openapiAclVlanDirListGet(openapiClientHandle_t *handle, uint32_t vlanId,
                                             OPEN_ACL_DIRECTION_t direction, OPEN_ACL_VLAN_DIR_LIST_t *list) {
  return api_call(__func__, handle, {vlanId, direction, output(list)}, [&](const switch_model &model) {
    return give_bindings(model, {acl_place::vlan, vlanId, direction}, list);
  });
}

/* Answers where a list is bound, as far as there is room for it. */
static open_error_t give_bound_to(const switch_model &model, uint32_t id, acl_place::kind where,
                                  uint32_t direction, uint32_t *count, uint32_t *numbers) {
  if (direction > OPEN_ACL_DIRECTION_OUT) return OPEN_E_PARAM;
  if (!acl_find(model, id)) return OPEN_E_NOT_FOUND;
  std::vector<uint32_t> bound_to = acl_bound_to(model, id, where, direction);
  size_t given = std::min<size_t>(bound_to.size(), OPEN_ACL_MAX_ASSIGNMENTS);
  std::copy_n(bound_to.begin(), given, numbers);
  *count = static_cast<uint32_t>(given);
  return OPEN_E_NONE;
}

open_error_t rpcclt_openapiAclAssignedIntfDirListGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     OPEN_ACL_DIRECTION_t direction,
                                                     OPEN_ACL_ASSIGNED_INTF_LIST_t *list) {
  return api_call(__func__, handle, {aclId, direction, output(list)}, [&](const switch_model &model) {
    return give_bound_to(model, aclId, acl_place::interface, direction, &list->count, list->intf);
  });
}

open_error_t rpcclt_openapiAclAssignedVlanDirListGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     OPEN_ACL_DIRECTION_t direction,
                                                     OPEN_ACL_ASSIGNED_VLAN_LIST_t *list) {
  return api_call(__func__, handle, {aclId, direction, output(list)}, [&](const switch_model &model) {
    return give_bound_to(model, aclId, acl_place::vlan, direction, &list->count, list->vlan);
  });
}
