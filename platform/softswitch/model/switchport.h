/* Switchport modes: how ports and LAGs take part in VLANs. Mode general takes participation, tagging and port
 * VLAN id as they were set (vlan.h); access and trunk take them from settings of their own; a port in a LAG
 * (lag.h) takes no part at all. Each mode's settings stay while they are not in force.
 *
 * What is in force is never stored: it follows from the settings at any time.
 *
 * Unless a function says otherwise: OPEN_E_PARAM for a VLAN id or interface number outside every range,
 * OPEN_E_NOT_FOUND when there is no such port or LAG, or no such VLAN. A setting becomes pending with its
 * interface, and with each VLAN in which the interface's membership or tagging is another by it; one that
 * finds everything as wanted changes nothing. */
#ifndef KESTREL_SOFTSWITCH_MODEL_SWITCHPORT_H
#define KESTREL_SOFTSWITCH_MODEL_SWITCHPORT_H

#include "platform/api/openapi_if.h"
#include "platform/softswitch/model/limits.h"

#include <bitset>
#include <cstdint>
#include <memory>

namespace softswitch {

struct switch_model;
struct vlan_entry;

/* One bit per VLAN, by id. */
using vlan_set = std::bitset<vlan_id_max + 1>;

/* What is set of an interface's modes, besides what vlan.h keeps for mode general. */
struct switchport_settings {
  uint8_t mode = OPEN_SWITCHPORT_MODE_GENERAL; /* OPEN_SWITCHPORT_MODE_t */
  uint16_t access_vlan = 1;
  uint16_t native_vlan = 1;
  /* VLANs that the trunk carries tagged, existing or not; null for none. Replaced and never changed, as
   * copies of the model share it. */
  std::shared_ptr<const vlan_set> trunk_vlans;
};

/* --- What is in force ----------------------------------------------------------------------------------- */

/* Whether an interface is a member of a VLAN right now. Nothing is learnt dynamically so far, so in mode
 * general that is whether it is included. False for what is neither port nor LAG. */
bool vlan_has_member(const switch_model &model, const vlan_entry &vlan, uint32_t interface);
/* OPEN_VLAN_PARTICIPATION_MODE_t of a port or LAG in a VLAN. */
uint32_t vlan_participation_in_force(const switch_model &model, const vlan_entry &vlan, uint32_t interface);
/* Whether frames of a VLAN leave a port or LAG tagged. */
bool vlan_tagging_in_force(const switch_model &model, const vlan_entry &vlan, uint32_t interface);
/* Port VLAN id of an interface; 0 for what is neither port nor LAG. */
uint32_t pvid_in_force(const switch_model &model, uint32_t interface);

/* --- Settings ------------------------------------------------------------------------------------------- */

/* OPEN_E_PARAM: not one of OPEN_SWITCHPORT_MODE_t. */
open_error_t switchport_set_mode(switch_model &model, uint32_t interface, uint32_t mode);
open_error_t switchport_set_access_vlan(switch_model &model, uint32_t interface, uint32_t id);
open_error_t switchport_set_native_vlan(switch_model &model, uint32_t interface, uint32_t id);
/* The list of the trunk, empty for a port or LAG that nobody has configured. */
vlan_set switchport_trunk_vlans(const switch_model &model, uint32_t interface);
/* Makes the list anew. Its VLANs need not exist. */
open_error_t switchport_set_trunk_vlans(switch_model &model, uint32_t interface, const vlan_set &vlans);

/* --- For other nouns ------------------------------------------------------------------------------------ */

/* What a port or LAG is in all VLANs at once. */
struct vlan_part {
  vlan_set member;
  vlan_set tagged;
};

vlan_part vlan_part_of(const switch_model &model, uint32_t interface);
/* Notes as changed the VLANs in which an interface's part is not what it was. */
void note_vlan_part(switch_model &model, uint32_t interface, const vlan_part &before);

/* Lets an interface that has a deleted VLAN as access or native VLAN fall back to VLAN 1. */
void switchport_release_vlan(switch_model &model, uint32_t interface, uint32_t id);

} // namespace softswitch

#endif
