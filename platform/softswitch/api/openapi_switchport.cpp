/* Switchport modes; the contracts are in platform/api/openapi_if.h. Setters come down to a line of the
 * configuration language, which is what the journal keeps. */
#include "platform/api/openapi_if.h"

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/config/switchport_lines.h"

using namespace softswitch;

/* The longest text that is read as a list of VLANs, in characters. */
static constexpr size_t vlan_list_max = 16000;

open_error_t rpcclt_openapiIfSwitchportModeGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                               uint32_t *mode) {
  return api_call(__func__, handle, {ifNum, mode}, [&](switch_model &model) {
    open_error_t rc = interface_switches_check(model, ifNum);
    if (rc == OPEN_E_NONE) *mode = model.interfaces->at[ifNum].switchport.mode;
    return rc;
  });
}

/* Sets a number by a line that ends with it, written as `argument`. */
static open_error_t set_number(const char *function, openapiClientHandle_t *handle, uint32_t ifNum,
                               uint32_t number, std::string_view pattern, uint32_t argument) {
  return api_call(function, handle, {ifNum, number}, [&](switch_model &model) {
    open_error_t rc = interface_switches_check(model, ifNum);
    return rc == OPEN_E_NONE ? commit(model, pattern, {ifNum, argument}) : rc;
  });
}

/* The words stand in the order of the modes, which count from 1; a mode out of range gives no word. */
open_error_t rpcclt_openapiIfSwitchportModeSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t mode) {
  return set_number(__func__, handle, ifNum, mode, "interface <port> switchport mode general|access|trunk",
                    mode - OPEN_SWITCHPORT_MODE_GENERAL);
}

open_error_t rpcclt_openapiIfSwitchportAccessVlanSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                     uint32_t vlanId) {
  return set_number(__func__, handle, ifNum, vlanId, "interface <port> switchport access vlan <vlan>",
                    vlanId);
}

open_error_t rpcclt_openapiIfSwitchportTrunkNativeVlanSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                          uint32_t vlanId) {
  return set_number(__func__, handle, ifNum, vlanId, "interface <port> switchport trunk native vlan <vlan>",
                    vlanId);
}

/* --- The list of the trunk ------------------------------------------------------------------------------ */

/* The line holds the list folded, so that it is not longer than a line may be. */
static open_error_t commit_trunk_vlans(switch_model &model, uint32_t ifNum, trunk_vlans_change change,
                                       const open_buffdesc &vlans) {
  id_list ids;
  std::string reason;
  std::string_view text = text_of(vlans);
  if (text.size() > vlan_list_max || !read_vlan_list(text, &ids, &reason)) return OPEN_E_PARAM;
  return commit(model, "interface <port> switchport trunk vlans add|remove|only <vlan-list>",
                {ifNum, change, ids});
}

open_error_t rpcclt_openapiIfSwitchportTrunkVlanSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    uint32_t mode, open_buffdesc *vlans) {
  return api_call(__func__, handle, {ifNum, mode, text_in(vlans)}, [&](switch_model &model) {
    open_error_t rc = interface_switches_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    if (mode == OPEN_SWITCHPORT_TRUNK_VLAN_ADD)
      return commit_trunk_vlans(model, ifNum, trunk_vlans_add, *vlans);
    if (mode == OPEN_SWITCHPORT_TRUNK_VLAN_REMOVE)
      return commit_trunk_vlans(model, ifNum, trunk_vlans_remove, *vlans);
    return OPEN_E_PARAM;
  });
}

open_error_t rpcclt_openapiIfSwitchportTrunkVlanCreate(openapiClientHandle_t *handle, uint32_t ifNum,
                                                       uint32_t mode, open_buffdesc *vlans) {
  return api_call(__func__, handle, {ifNum, mode, text_in(vlans)}, [&](switch_model &model) {
    open_error_t rc = interface_switches_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    if (mode != OPEN_SWITCHPORT_TRUNK_VLAN_ADD) return OPEN_E_PARAM;
    return commit_trunk_vlans(model, ifNum, trunk_vlans_only, *vlans);
  });
}
