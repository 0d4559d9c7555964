/* VLANs; the contracts are in platform/api/openapi_vlan.h. Setters come down to a line of the configuration
 * language, which is what the journal keeps. */
#include "platform/api/openapi_vlan.h"

#include "platform/softswitch/api/call.h"

using namespace softswitch;

/* --- Existence ------------------------------------------------------------------------------------------ */

open_error_t openapiVlanCreatedCheck(openapiClientHandle_t *handle, uint32_t vlanId) {
  return api_call(__func__, handle, {vlanId}, [&](switch_model &model) {
    if (!vlan_id_valid(vlanId)) return OPEN_E_PARAM;
    return vlan_exists(model, vlanId) ? OPEN_E_NONE : OPEN_E_FAIL;
  });
}

open_error_t rpcclt_openapiDot1VlanMaxGet(openapiClientHandle_t *handle, uint32_t *max) {
  return api_call(__func__, handle, {max}, [&](switch_model &) {
    *max = vlan_id_max;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiVlanCreate(openapiClientHandle_t *handle, uint32_t vlanId) {
  return api_call(__func__, handle, {vlanId}, [&](switch_model &model) {
    /* For the line an existing VLAN is as wanted; who creates wants to hear of it. */
    if (vlan_exists(model, vlanId)) return OPEN_E_EXISTS;
    return commit(model, "vlan <vlan-list>", {vlanId});
  });
}

open_error_t rpcclt_openapiVlanDelete(openapiClientHandle_t *handle, uint32_t vlanId) {
  return api_call(__func__, handle, {vlanId},
                  [&](switch_model &model) { return commit(model, "no vlan <vlan-list>", {vlanId}); });
}

open_error_t rpcclt_openapiVlanNextGet(openapiClientHandle_t *handle, uint32_t vlanId, uint32_t *nextVlanId) {
  return api_call(__func__, handle, {vlanId, nextVlanId},
                  [&](switch_model &model) { return vlan_next(model, vlanId, nextVlanId); });
}

open_error_t openapiVlanNextChangedGet(openapiClientHandle_t *handle, uint32_t vlanId, uint32_t *nextVlanId,
                                       uint32_t *deletePending) {
  return api_call(__func__, handle, {vlanId, nextVlanId, deletePending}, [&](switch_model &model) {
    return vlan_next_changed(model, vlanId, nextVlanId, deletePending);
  });
}

uint32_t openapiVlanIsStatic(openapiClientHandle_t *handle, uint32_t vlanId) {
  uint32_t is_static = 0;
  open_error_t result = api_call(__func__, handle, {vlanId, &is_static}, [&](switch_model &model) {
    is_static = vlan_exists(model, vlanId);
    return OPEN_E_NONE;
  });
  return result == OPEN_E_NONE ? is_static : 0;
}

/* --- Names ---------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiVlanNameLenGet(openapiClientHandle_t *handle, uint32_t *size) {
  return api_call(__func__, handle, {size}, [&](switch_model &) {
    *size = vlan_name_size;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiVlanNameGet(openapiClientHandle_t *handle, uint32_t vlanId, open_buffdesc *name) {
  return api_call(__func__, handle, {vlanId, text_out(name)}, [&](switch_model &model) {
    open_error_t rc = vlan_check(model, vlanId);
    return rc == OPEN_E_NONE ? fill_text(name, vlan_find(model, vlanId)->name) : rc;
  });
}

open_error_t rpcclt_openapiVlanNameSet(openapiClientHandle_t *handle, uint32_t vlanId, open_buffdesc *name) {
  return api_call(__func__, handle, {vlanId, text_in(name)}, [&](switch_model &model) {
    open_error_t rc = vlan_check(model, vlanId);
    return rc == OPEN_E_NONE ? commit(model, "vlan <vlan> name <text>", {vlanId, text_of(*name)}) : rc;
  });
}

/* --- Membership ----------------------------------------------------------------------------------------- */

open_error_t openapiVlanIfParticipationStatusGet(openapiClientHandle_t *handle, uint32_t vlanId,
                                                 uint32_t ifNum, uint32_t *isMember) {
  return api_call(__func__, handle, {vlanId, ifNum, isMember}, [&](switch_model &model) {
    open_error_t rc = vlan_and_interface_check(model, vlanId, ifNum);
    if (rc == OPEN_E_NONE) *isMember = vlan_has_member(model, *vlan_find(model, vlanId), ifNum);
    return rc;
  });
}

open_error_t rpcclt_openapiVlanIfParticipationGet(openapiClientHandle_t *handle, uint32_t vlanId,
                                                  uint32_t ifNum, uint32_t *mode) {
  return api_call(__func__, handle, {vlanId, ifNum, mode}, [&](switch_model &model) {
    open_error_t rc = vlan_and_interface_check(model, vlanId, ifNum);
    if (rc == OPEN_E_NONE) *mode = vlan_participation_in_force(model, *vlan_find(model, vlanId), ifNum);
    return rc;
  });
}

open_error_t rpcclt_openapiVlanIfParticipationSet(openapiClientHandle_t *handle, uint32_t vlanId,
                                                  uint32_t ifNum, uint32_t mode) {
  return api_call(__func__, handle, {vlanId, ifNum, mode}, [&](switch_model &model) {
    open_error_t rc = vlan_and_interface_check(model, vlanId, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    return commit(model, "interface <port> vlan <vlan-list> participation include|auto|exclude",
                  {ifNum, vlanId, mode});
  });
}

open_error_t openapiVlanIfTaggingGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t vlanId,
                                     uint32_t *tagging) {
  return api_call(__func__, handle, {ifNum, vlanId, tagging}, [&](switch_model &model) {
    open_error_t rc = vlan_and_interface_check(model, vlanId, ifNum);
    if (rc == OPEN_E_NONE) *tagging = vlan_tagging_in_force(model, *vlan_find(model, vlanId), ifNum);
    return rc;
  });
}

open_error_t rpcclt_openapiVlanIfTaggingSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t vlanId,
                                            uint32_t tagging) {
  return api_call(__func__, handle, {ifNum, vlanId, tagging}, [&](switch_model &model) {
    open_error_t rc = vlan_and_interface_check(model, vlanId, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    if (tagging > OPEN_ENABLE) return OPEN_E_PARAM;
    if (tagging == OPEN_ENABLE)
      return commit(model, "interface <port> vlan <vlan-list> tagging", {ifNum, vlanId});
    return commit(model, "no interface <port> vlan <vlan-list> tagging", {ifNum, vlanId});
  });
}

/* --- What concerns an interface alone ------------------------------------------------------------------- */

open_error_t openapiVlanIfPvidGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *vlanId) {
  return api_call(__func__, handle, {ifNum, vlanId}, [&](switch_model &model) {
    open_error_t rc = interface_check(model, ifNum);
    if (rc == OPEN_E_NONE) *vlanId = pvid_in_force(model, ifNum);
    return rc;
  });
}

open_error_t rpcclt_openapiVlanIfPvidSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t vlanId) {
  return api_call(__func__, handle, {ifNum, vlanId}, [&](switch_model &model) {
    open_error_t rc = vlan_and_interface_check(model, vlanId, ifNum);
    return rc == OPEN_E_NONE ? commit(model, "interface <port> pvid <vlan>", {ifNum, vlanId}) : rc;
  });
}

open_error_t rpcclt_openapiVlanIfAcceptFrameTypeGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    uint32_t *type) {
  return api_call(__func__, handle, {ifNum, type}, [&](switch_model &model) {
    open_error_t rc = interface_check(model, ifNum);
    /* Interfaces that do not switch cannot be set and are in factory state: all. */
    if (rc == OPEN_E_NONE) *type = model.interfaces->at[ifNum].accept_frames;
    return rc;
  });
}

open_error_t rpcclt_openapiVlanIfAcceptFrameTypeSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    uint32_t type) {
  return api_call(__func__, handle, {ifNum, type}, [&](switch_model &model) {
    open_error_t rc = interface_switches_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    /* The words stand in the order of the types, which count from 1; a type out of range gives no word. */
    return commit(model, "interface <port> accept-frames all|tagged|untagged",
                  {ifNum, type - OPEN_DOT1Q_ADMIT_ALL});
  });
}
