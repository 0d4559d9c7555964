/* Switchport modes; see switchport.h. */
#include "platform/softswitch/model/switchport.h"

#include "platform/softswitch/model/switch.h"

namespace softswitch {

static const switchport_settings &settings_of(const switch_model &model, uint32_t interface) {
  return model.interfaces->at[interface].switchport;
}

/* --- What is in force ----------------------------------------------------------------------------------- */

static bool in_trunk_list(const switchport_settings &settings, uint32_t id) {
  return settings.trunk_vlans && (*settings.trunk_vlans)[id];
}

bool vlan_has_member(const switch_model &model, const vlan_entry &vlan, uint32_t interface) {
  if (!interface_switches(model, interface) || model.interfaces->at[interface].lag != 0) return false;
  const switchport_settings &settings = settings_of(model, interface);
  if (settings.mode == OPEN_SWITCHPORT_MODE_ACCESS) return vlan.id == settings.access_vlan;
  if (settings.mode == OPEN_SWITCHPORT_MODE_TRUNK)
    return vlan.id == settings.native_vlan || in_trunk_list(settings, vlan.id);
  return vlan.included[interface];
}

/* Whether what was set for mode general counts. */
static bool general_in_force(const switch_model &model, uint32_t interface) {
  const interface_entry &entry = model.interfaces->at[interface];
  return entry.lag == 0 && entry.switchport.mode == OPEN_SWITCHPORT_MODE_GENERAL;
}

uint32_t vlan_participation_in_force(const switch_model &model, const vlan_entry &vlan, uint32_t interface) {
  if (general_in_force(model, interface)) return vlan_participation(vlan, interface);
  return vlan_has_member(model, vlan, interface) ? OPEN_VLAN_PARTICIPATION_MODE_INCLUDE
                                                 : OPEN_VLAN_PARTICIPATION_MODE_EXCLUDE;
}

bool vlan_tagging_in_force(const switch_model &model, const vlan_entry &vlan, uint32_t interface) {
  if (general_in_force(model, interface)) return vlan.tagged[interface];
  /* An access VLAN and a native VLAN are the port VLAN id, and all else that there is comes from the list. */
  return vlan_has_member(model, vlan, interface) && vlan.id != pvid_in_force(model, interface);
}

uint32_t pvid_in_force(const switch_model &model, uint32_t interface) {
  if (!interface_switches(model, interface)) return 0;
  const switchport_settings &settings = settings_of(model, interface);
  if (settings.mode == OPEN_SWITCHPORT_MODE_ACCESS) return settings.access_vlan;
  if (settings.mode == OPEN_SWITCHPORT_MODE_TRUNK) return settings.native_vlan;
  return model.interfaces->at[interface].pvid;
}

/* --- Settings ------------------------------------------------------------------------------------------- */

vlan_part vlan_part_of(const switch_model &model, uint32_t interface) {
  vlan_part part;
  for (const vlan_entry &vlan : model.vlans->entries) {
    if (!vlan.exists) continue;
    part.member[vlan.id] = vlan_has_member(model, vlan, interface);
    part.tagged[vlan.id] = vlan_tagging_in_force(model, vlan, interface);
  }
  return part;
}

void note_vlan_part(switch_model &model, uint32_t interface, const vlan_part &before) {
  vlan_part after = vlan_part_of(model, interface);
  vlan_set changed = (before.member ^ after.member) | (before.tagged ^ after.tagged);
  for (uint32_t id = vlan_id_min; id <= vlan_id_max; id++) {
    if (changed[id]) vlan_edit(model, id);
  }
}

/* Takes over settings, all of which have been checked. */
static void replace(switch_model &model, uint32_t interface, const switchport_settings &settings) {
  vlan_part before = vlan_part_of(model, interface);
  interface_edit(model, interface)->switchport = settings;
  note_vlan_part(model, interface, before);
}

open_error_t switchport_set_mode(switch_model &model, uint32_t interface, uint32_t mode) {
  open_error_t rc = interface_switches_check(model, interface);
  if (rc != OPEN_E_NONE) return rc;
  if (mode < OPEN_SWITCHPORT_MODE_GENERAL || mode > OPEN_SWITCHPORT_MODE_TRUNK) return OPEN_E_PARAM;
  switchport_settings settings = settings_of(model, interface);
  if (settings.mode == mode) return OPEN_E_NONE;
  settings.mode = static_cast<uint8_t>(mode);
  replace(model, interface, settings);
  return OPEN_E_NONE;
}

/* Sets one of the two VLANs. */
static open_error_t set_vlan(switch_model &model, uint32_t interface, uint32_t id,
                             uint16_t switchport_settings::*which) {
  open_error_t rc = interface_switches_check(model, interface);
  if (rc == OPEN_E_NONE) rc = vlan_check(model, id);
  if (rc != OPEN_E_NONE) return rc;
  switchport_settings settings = settings_of(model, interface);
  if (settings.*which == id) return OPEN_E_NONE;
  settings.*which = static_cast<uint16_t>(id);
  replace(model, interface, settings);
  return OPEN_E_NONE;
}

open_error_t switchport_set_access_vlan(switch_model &model, uint32_t interface, uint32_t id) {
  return set_vlan(model, interface, id, &switchport_settings::access_vlan);
}

open_error_t switchport_set_native_vlan(switch_model &model, uint32_t interface, uint32_t id) {
  return set_vlan(model, interface, id, &switchport_settings::native_vlan);
}

vlan_set switchport_trunk_vlans(const switch_model &model, uint32_t interface) {
  const switchport_settings &settings = settings_of(model, interface);
  return settings.trunk_vlans ? *settings.trunk_vlans : vlan_set();
}

static bool trunk_in_force(const interface_entry &entry) {
  return entry.lag == 0 && entry.switchport.mode == OPEN_SWITCHPORT_MODE_TRUNK;
}

/* Notes as changed the VLANs that join or leave the list of a trunk. For the native VLAN it makes no
 * difference. A long list is read from many lines, so no other VLANs are looked at. */
static void note_trunk_vlans(switch_model &model, const vlan_set &changed, uint32_t native_vlan) {
  for (uint32_t id = vlan_id_min; id <= vlan_id_max; id++) {
    if (changed[id] && id != native_vlan && vlan_exists(model, id)) vlan_edit(model, id);
  }
}

open_error_t switchport_set_trunk_vlans(switch_model &model, uint32_t interface, const vlan_set &vlans) {
  open_error_t rc = interface_switches_check(model, interface);
  if (rc != OPEN_E_NONE) return rc;
  vlan_set changed = switchport_trunk_vlans(model, interface) ^ vlans;
  if (changed.none()) return OPEN_E_NONE;
  interface_entry *entry = interface_edit(model, interface);
  entry->switchport.trunk_vlans = vlans.any() ? std::make_shared<const vlan_set>(vlans) : nullptr;
  if (trunk_in_force(*entry)) note_trunk_vlans(model, changed, entry->switchport.native_vlan);
  return OPEN_E_NONE;
}

void switchport_release_vlan(switch_model &model, uint32_t interface, uint32_t id) {
  if (settings_of(model, interface).access_vlan == id) switchport_set_access_vlan(model, interface, 1);
  if (settings_of(model, interface).native_vlan == id) switchport_set_native_vlan(model, interface, 1);
}

} // namespace softswitch
