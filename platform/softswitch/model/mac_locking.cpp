/* Port MAC locking; see mac_locking.h. */
#include "platform/softswitch/model/mac_locking.h"

#include "platform/softswitch/model/switch.h"

#include <algorithm>
#include <tuple>

namespace softswitch {

/* What the table is in order of. */
using lock_key = std::tuple<uint32_t, mac_address, uint32_t>;

static lock_key key_of(const mac_lock &lock) {
  return {lock.interface, lock.mac, lock.vlan};
}

/* Where the lock with this key is, or where it belongs. */
template <typename Locks> static auto place_of(Locks &locks, const lock_key &key) {
  return std::lower_bound(locks.begin(), locks.end(), key,
                          [](const mac_lock &lock, const lock_key &wanted) { return key_of(lock) < wanted; });
}

static bool is_full(const switch_model &model, uint32_t interface) {
  auto here = [&](const mac_lock &lock) { return lock.interface == interface; };
  const auto &locks = model.mac_locking->locks;
  return std::count_if(locks.begin(), locks.end(), here) >= std::ptrdiff_t{model.limits.static_macs};
}

/* --- Everything at once --------------------------------------------------------------------------------- */

void mac_locking_reset(switch_model &model) {
  *model.mac_locking.edit() = mac_locking_table();
}

void mac_locks_forget(switch_model &model, uint32_t interface) {
  if (interface > lag_last) return; /* neither port nor LAG: nothing was ever locked */
  bool locked = mac_lock_next(model, interface, mac_address{}, 0) != nullptr;
  if (!locked && !model.mac_locking->sticky_mode[interface]) return;
  mac_locking_table *table = model.mac_locking.edit();
  table->sticky_mode[interface] = false;
  std::erase_if(table->locks, [&](const mac_lock &lock) { return lock.interface == interface; });
  interface_edit(model, interface);
}

void mac_locks_release_vlan(switch_model &model, uint32_t vlan) {
  auto released = [&](const mac_lock &lock) { return lock.vlan == vlan; };
  const auto &locks = model.mac_locking->locks;
  if (std::none_of(locks.begin(), locks.end(), released)) return;
  for (const mac_lock &lock : locks) {
    if (released(lock)) interface_edit(model, lock.interface);
  }
  std::erase_if(model.mac_locking.edit()->locks, released);
}

/* --- One setting ---------------------------------------------------------------------------------------- */

open_error_t mac_locking_set_sticky_mode(switch_model &model, uint32_t interface, bool on) {
  open_error_t rc = interface_switches_check(model, interface);
  if (rc != OPEN_E_NONE) return rc;
  if (model.mac_locking->sticky_mode[interface] == on) return OPEN_E_NONE;
  interface_edit(model, interface);
  model.mac_locking.edit()->sticky_mode[interface] = on;
  return OPEN_E_NONE;
}

open_error_t mac_lock_set(switch_model &model, uint32_t interface, const mac_address &mac, uint32_t vlan,
                          bool sticky) {
  open_error_t rc = vlan_and_interface_check(model, vlan, interface);
  if (rc != OPEN_E_NONE) return rc;
  uint32_t holder = mac_lock_interface(model, mac, vlan);
  if (holder != 0 && holder != interface) return OPEN_E_EXISTS;
  if (holder == 0 && is_full(model, interface)) return OPEN_E_FULL;
  lock_key key = {interface, mac, vlan};
  if (holder != 0 && place_of(model.mac_locking->locks, key)->sticky == sticky) return OPEN_E_NONE;
  interface_edit(model, interface);
  auto &locks = model.mac_locking.edit()->locks;
  auto place = place_of(locks, key);
  if (holder == 0) place = locks.insert(place, mac_lock());
  *place = {static_cast<uint16_t>(interface), mac, static_cast<uint16_t>(vlan), sticky};
  return OPEN_E_NONE;
}

open_error_t mac_lock_release(switch_model &model, uint32_t interface, const mac_address &mac,
                              uint32_t vlan) {
  open_error_t rc = vlan_and_interface_check(model, vlan, interface);
  if (rc != OPEN_E_NONE) return rc;
  if (mac_lock_interface(model, mac, vlan) != interface) return OPEN_E_NOT_FOUND;
  interface_edit(model, interface);
  auto &locks = model.mac_locking.edit()->locks;
  locks.erase(place_of(locks, {interface, mac, vlan}));
  return OPEN_E_NONE;
}

/* --- Finding -------------------------------------------------------------------------------------------- */

uint32_t mac_lock_interface(const switch_model &model, const mac_address &mac, uint32_t vlan) {
  for (const mac_lock &lock : model.mac_locking->locks) {
    if (lock.mac == mac && lock.vlan == vlan) return lock.interface;
  }
  return 0;
}

const mac_lock *mac_lock_next(const switch_model &model, uint32_t interface, const mac_address &mac,
                              uint32_t vlan) {
  const auto &locks = model.mac_locking->locks;
  auto place = place_of(locks, {interface, mac, vlan + 1});
  return place != locks.end() && place->interface == interface ? &*place : nullptr;
}

} // namespace softswitch
