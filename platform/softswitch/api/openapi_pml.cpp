/* Port MAC locking; the contracts are in platform/api/openapi_pml.h. Setters come down to a line of the
 * configuration language. */
#include "platform/api/openapi_pml.h"

#include "platform/softswitch/api/call.h"

using namespace softswitch;

/* --- Sticky mode ---------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiPmlIntfStickyModeGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                uint32_t *mode) {
  return api_call(__func__, handle, {ifNum, mode}, [&](switch_model &model) {
    open_error_t rc = interface_switches_check(model, ifNum);
    if (rc == OPEN_E_NONE) *mode = model.mac_locking->sticky_mode[ifNum];
    return rc;
  });
}

open_error_t rpcclt_openapiPmlIntfStickyModeSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                uint32_t mode) {
  return api_call(__func__, handle, {ifNum, mode}, [&](switch_model &model) {
    open_error_t rc = interface_switches_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    if (mode == OPEN_ENABLE) return commit(model, "interface <port> mac-locking sticky", {ifNum});
    return commit(model, "no interface <port> mac-locking sticky", {ifNum});
  });
}

/* --- Locked addresses ----------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiPmlIntfStaticEntryAdd(openapiClientHandle_t *handle, uint32_t ifNum,
                                                 open_buffdesc *mac, uint32_t vlanId, uint32_t sticky) {
  return api_call(__func__, handle, {ifNum, text_in(mac), vlanId, sticky}, [&](switch_model &model) {
    open_error_t rc = vlan_and_interface_check(model, vlanId, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    mac_address address;
    if (!station_mac_read(text_of(*mac), &address) || sticky > OPEN_ENABLE) return OPEN_E_PARAM;
    /* For the line an address that is locked here is as wanted; who adds wants to hear of it. */
    if (mac_lock_interface(model, address, vlanId) != 0) return OPEN_E_EXISTS;
    return commit(model, "interface <port> mac-locking address <mac> vlan <vlan> static|sticky",
                  {ifNum, address, vlanId, sticky});
  });
}

open_error_t rpcclt_openapiPmlIntfStaticEntryDelete(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    open_buffdesc *mac, uint32_t vlanId) {
  return api_call(__func__, handle, {ifNum, text_in(mac), vlanId}, [&](switch_model &model) {
    open_error_t rc = vlan_and_interface_check(model, vlanId, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    mac_address address;
    if (!station_mac_read(text_of(*mac), &address)) return OPEN_E_PARAM;
    return commit(model, "no interface <port> mac-locking address <mac> vlan <vlan>",
                  {ifNum, address, vlanId});
  });
}

/* Answers with the lock beyond this address and VLAN. */
static open_error_t answer_next(const switch_model &model, uint32_t interface, const mac_address &after,
                                uint32_t after_vlan, open_buffdesc *mac, uint32_t *vlan, uint32_t *sticky) {
  const mac_lock *lock = mac_lock_next(model, interface, after, after_vlan);
  if (!lock) return OPEN_E_FAIL;
  open_error_t rc = fill_text(mac, mac_text(lock->mac));
  if (rc != OPEN_E_NONE) return rc;
  *vlan = lock->vlan;
  *sticky = lock->sticky;
  return OPEN_E_NONE;
}

open_error_t rpcclt_openapiPmlIntfStaticEntryGetFirst(openapiClientHandle_t *handle, uint32_t ifNum,
                                                      open_buffdesc *mac, uint32_t *vlanId,
                                                      uint32_t *sticky) {
  return api_call(__func__, handle, {ifNum, text_out(mac), vlanId, sticky}, [&](switch_model &model) {
    open_error_t rc = interface_switches_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    return answer_next(model, ifNum, mac_address{}, 0, mac, vlanId, sticky);
  });
}

open_error_t rpcclt_openapiPmlIntfStaticEntryGetNext(openapiClientHandle_t *handle, uint32_t ifNum,
                                                     open_buffdesc *mac, uint32_t *vlanId, uint32_t *sticky) {
  return api_call(__func__, handle, {ifNum, text_out(mac), vlanId, sticky}, [&](switch_model &model) {
    open_error_t rc = interface_switches_check(model, ifNum);
    if (rc != OPEN_E_NONE) return rc;
    mac_address after;
    if (!vlan_id_valid(*vlanId) || !station_mac_read(text_of(*mac), &after)) return OPEN_E_PARAM;
    return answer_next(model, ifNum, after, *vlanId, mac, vlanId, sticky);
  });
}
