/* VLANs; see vlan.h. */
#include "platform/softswitch/model/vlan.h"

#include "platform/softswitch/model/switch.h"
#include "platform/softswitch/model/text.h"

#include <algorithm>
#include <string.h>

namespace softswitch {

/* --- Finding and editing -------------------------------------------------------------------------------- */

/* Where the entry with this id is, or where it belongs. */
template <typename Entries> static auto place_of(Entries &entries, uint32_t id) {
  return std::lower_bound(entries.begin(), entries.end(), id,
                          [](const vlan_entry &entry, uint32_t wanted) { return entry.id < wanted; });
}

const vlan_entry *vlan_find(const switch_model &model, uint32_t id) {
  auto place = place_of(model.vlans->entries, id);
  bool found = place != model.vlans->entries.end() && place->id == id && place->exists;
  return found ? &*place : nullptr;
}

vlan_entry *vlan_edit(switch_model &model, uint32_t id) {
  vlan_entry *vlan = &*place_of(model.vlans.edit()->entries, id);
  vlan->changed = next_change(model);
  return vlan;
}

static member_set all_members(const switch_model &model) {
  member_set members;
  each_switching_interface(model, [&](uint32_t number) { members.set(number); });
  return members;
}

/* --- Existence ------------------------------------------------------------------------------------------ */

bool vlan_id_valid(uint32_t id) {
  return id >= vlan_id_min && id <= vlan_id_max;
}

bool vlan_exists(const switch_model &model, uint32_t id) {
  return vlan_find(model, id) != nullptr;
}

open_error_t vlan_check(const switch_model &model, uint32_t id) {
  if (!vlan_id_valid(id)) return OPEN_E_PARAM;
  return vlan_exists(model, id) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
}

/* Puts a new VLAN in its place, over the remains of a deleted one if the data plane still has that. */
static vlan_entry *insert_vlan(switch_model &model, uint32_t id) {
  auto &entries = model.vlans.edit()->entries;
  model.vlans.edit()->existing++;
  auto place = place_of(entries, id);
  if (place == entries.end() || place->id != id) place = entries.insert(place, vlan_entry());
  *place = vlan_entry();
  place->id = static_cast<uint16_t>(id);
  place->exists = true;
  std::string_view name = vlan_factory_name(id);
  memcpy(place->name, name.data(), name.size());
  place->changed = next_change(model);
  return &*place;
}

void vlans_reset(switch_model &model) {
  uint64_t change = next_change(model);
  for (vlan_entry &vlan : model.vlans.edit()->entries) {
    if (vlan.exists) vlan.changed = change;
    vlan.exists = false;
  }
  model.vlans.edit()->existing = 0;
  insert_vlan(model, 1)->included = all_members(model);
}

void vlans_forget_deleted(switch_model &model) {
  auto taken = [&](const vlan_entry &vlan) { return !vlan.exists && vlan.changed <= model.applied; };
  const auto &entries = model.vlans->entries;
  if (std::none_of(entries.begin(), entries.end(), taken)) return;
  std::erase_if(model.vlans.edit()->entries, taken);
}

open_error_t vlan_create(switch_model &model, uint32_t id) {
  if (!vlan_id_valid(id)) return OPEN_E_PARAM;
  if (vlan_exists(model, id)) return OPEN_E_EXISTS;
  /* Deleted VLANs that the data plane still has take no room. */
  if (model.vlans->existing >= model.limits.vlans) return OPEN_E_FULL;
  const vlan_entry *vlan = insert_vlan(model, id);
  /* Trunks with the VLAN in their list are members from the start. */
  for (uint32_t interface = port_first; interface <= lag_last; interface++) {
    bool may_be_trunk = model.interfaces->at[interface].switchport.trunk_vlans != nullptr;
    if (may_be_trunk && vlan_has_member(model, *vlan, interface)) interface_edit(model, interface);
  }
  return OPEN_E_NONE;
}

/* An interface is touched by the deletion of a VLAN when it had any setting in it or was a member. */
static void release_interfaces(switch_model &model, const vlan_entry &vlan) {
  member_set configured = vlan.included | vlan.excluded | vlan.tagged;
  each_switching_interface(model, [&](uint32_t interface) {
    bool touched = configured[interface] || vlan_has_member(model, vlan, interface);
    if (touched) interface_edit(model, interface);
    if (model.interfaces->at[interface].pvid == vlan.id) interface_edit(model, interface)->pvid = 1;
    switchport_release_vlan(model, interface, vlan.id);
  });
}

open_error_t vlan_delete(switch_model &model, uint32_t id) {
  open_error_t rc = vlan_check(model, id);
  if (rc != OPEN_E_NONE) return rc;
  bool in_use = interface_of_vlan(model, id) != 0 || vxlan_tenant_of_vlan(model, id) != 0;
  if (id == 1 || in_use) return OPEN_E_FAIL;
  vlan_entry *vlan = vlan_edit(model, id);
  vlan->exists = false;
  model.vlans.edit()->existing--;
  release_interfaces(model, *vlan);
  mac_locks_release_vlan(model, id);
  acl_unbind_all(model, acl_place::vlan, id);
  return OPEN_E_NONE;
}

void vlans_welcome_interface(switch_model &model, uint32_t interface) {
  vlan_edit(model, 1)->included.set(interface);
}

void vlans_forget_interface(switch_model &model, uint32_t interface) {
  if (!interface_switches(model, interface)) return;
  vlan_set touched;
  for (const vlan_entry &vlan : model.vlans->entries) {
    bool configured = vlan.included[interface] || vlan.excluded[interface] || vlan.tagged[interface];
    touched[vlan.id] = vlan.exists && (configured || vlan_has_member(model, vlan, interface));
  }
  for (uint32_t id = vlan_id_min; id <= vlan_id_max; id++) {
    if (!touched[id]) continue;
    vlan_entry *vlan = vlan_edit(model, id);
    vlan->included.reset(interface);
    vlan->excluded.reset(interface);
    vlan->tagged.reset(interface);
  }
}

open_error_t vlan_next(const switch_model &model, uint32_t after, uint32_t *next) {
  if (after > vlan_id_max) return OPEN_E_PARAM;
  const auto &entries = model.vlans->entries;
  auto place = place_of(entries, after + 1);
  while (place != entries.end() && !place->exists) place++;
  if (place == entries.end()) return OPEN_E_FAIL;
  *next = place->id;
  return OPEN_E_NONE;
}

open_error_t vlan_next_changed(const switch_model &model, uint32_t after, uint32_t *next,
                               uint32_t *delete_pending) {
  if (after > vlan_id_max) return OPEN_E_PARAM;
  const auto &entries = model.vlans->entries;
  auto place = place_of(entries, after + 1);
  while (place != entries.end() && place->changed <= model.applied) place++;
  if (place == entries.end()) return OPEN_E_FAIL;
  *next = place->id;
  *delete_pending = !place->exists;
  return OPEN_E_NONE;
}

/* --- Settings ------------------------------------------------------------------------------------------- */

open_error_t vlan_and_interface_check(const switch_model &model, uint32_t id, uint32_t interface) {
  open_error_t rc = vlan_check(model, id);
  return rc == OPEN_E_NONE ? interface_switches_check(model, interface) : rc;
}

std::string_view vlan_factory_name(uint32_t id) {
  return id == 1 ? "default" : "";
}

open_error_t vlan_set_name(switch_model &model, uint32_t id, std::string_view name) {
  open_error_t rc = vlan_check(model, id);
  if (rc != OPEN_E_NONE) return rc;
  const vlan_entry *vlan = vlan_find(model, id);
  if (name.size() >= sizeof vlan->name) return OPEN_E_PARAM;
  if (has_control_character(name)) return OPEN_E_PARAM;
  if (name == vlan->name) return OPEN_E_NONE;
  vlan_entry *changed = vlan_edit(model, id);
  memset(changed->name, 0, sizeof changed->name);
  memcpy(changed->name, name.data(), name.size());
  return OPEN_E_NONE;
}

uint32_t vlan_factory_participation(uint32_t id) {
  return id == 1 ? OPEN_VLAN_PARTICIPATION_MODE_INCLUDE : OPEN_VLAN_PARTICIPATION_MODE_AUTO;
}

uint32_t vlan_participation(const vlan_entry &vlan, uint32_t interface) {
  if (vlan.included[interface]) return OPEN_VLAN_PARTICIPATION_MODE_INCLUDE;
  if (vlan.excluded[interface]) return OPEN_VLAN_PARTICIPATION_MODE_EXCLUDE;
  return OPEN_VLAN_PARTICIPATION_MODE_AUTO;
}

open_error_t vlan_set_participation(switch_model &model, uint32_t id, uint32_t interface, uint32_t mode) {
  open_error_t rc = vlan_and_interface_check(model, id, interface);
  if (rc != OPEN_E_NONE) return rc;
  if (mode > OPEN_VLAN_PARTICIPATION_MODE_EXCLUDE) return OPEN_E_PARAM;
  if (vlan_participation(*vlan_find(model, id), interface) == mode) return OPEN_E_NONE;
  interface_edit(model, interface);
  vlan_entry *vlan = vlan_edit(model, id);
  vlan->included[interface] = mode == OPEN_VLAN_PARTICIPATION_MODE_INCLUDE;
  vlan->excluded[interface] = mode == OPEN_VLAN_PARTICIPATION_MODE_EXCLUDE;
  return OPEN_E_NONE;
}

open_error_t vlan_set_tagging(switch_model &model, uint32_t id, uint32_t interface, uint32_t tagged) {
  open_error_t rc = vlan_and_interface_check(model, id, interface);
  if (rc != OPEN_E_NONE) return rc;
  if (tagged > OPEN_ENABLE) return OPEN_E_PARAM;
  if (vlan_find(model, id)->tagged[interface] == (tagged == OPEN_ENABLE)) return OPEN_E_NONE;
  interface_edit(model, interface);
  vlan_edit(model, id)->tagged[interface] = tagged == OPEN_ENABLE;
  return OPEN_E_NONE;
}

open_error_t vlan_set_pvid(switch_model &model, uint32_t interface, uint32_t id) {
  open_error_t rc = vlan_and_interface_check(model, id, interface);
  if (rc != OPEN_E_NONE) return rc;
  if (model.interfaces->at[interface].pvid == id) return OPEN_E_NONE;
  interface_edit(model, interface)->pvid = static_cast<uint16_t>(id);
  return OPEN_E_NONE;
}

open_error_t vlan_set_accept_frames(switch_model &model, uint32_t interface, uint32_t type) {
  open_error_t rc = interface_switches_check(model, interface);
  if (rc != OPEN_E_NONE) return rc;
  if (type < OPEN_DOT1Q_ADMIT_ALL || type > OPEN_DOT1Q_ADMIT_ONLY_VLAN_UNTAGGED) return OPEN_E_PARAM;
  if (model.interfaces->at[interface].accept_frames == type) return OPEN_E_NONE;
  interface_edit(model, interface)->accept_frames = static_cast<uint8_t>(type);
  return OPEN_E_NONE;
}

} // namespace softswitch
