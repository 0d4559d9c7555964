/* VLANs (IEEE 802.1Q): which exist, their names, who takes part in them and how, and the port VLAN ids.
 * Members are ports and LAGs. What is set here of an interface is in force while its mode is general;
 * switchport.h says who is a member. The rules of the whole family stand here; vlan lines of the
 * configuration language and the C interface only translate.
 *
 * Unless a function says otherwise: OPEN_E_PARAM for a VLAN id or interface number outside every range,
 * OPEN_E_NOT_FOUND when there is no such VLAN, port or LAG. An operation
 * that finds everything as wanted changes nothing, so nothing becomes pending. */
#ifndef KESTREL_SOFTSWITCH_MODEL_VLAN_H
#define KESTREL_SOFTSWITCH_MODEL_VLAN_H

#include "platform/api/openapi_vlan.h"
#include "platform/softswitch/model/limits.h"

#include <bitset>
#include <cstdint>
#include <string_view>
#include <vector>

namespace softswitch {

struct switch_model;

/* One bit per port and LAG, by interface number. */
using member_set = std::bitset<lag_last + 1>;

struct vlan_entry {
  uint16_t id = 0;
  bool exists = false;             /* false: deleted, kept until the data plane has taken the deletion */
  char name[vlan_name_size] = {0}; /* empty when it has none */
  /* As set for switchport mode general: */
  member_set included;  /* members; in neither set: autodetect */
  member_set excluded;  /* never members */
  member_set tagged;    /* frames leave with a tag */
  uint64_t changed = 0; /* number of its latest change, its deletion included */
};

struct vlan_table {
  std::vector<vlan_entry> entries; /* in order of id */
  uint32_t existing = 0;           /* how many of them exist */
};

/* --- Existence ------------------------------------------------------------------------------------------ */

/* Returns all VLANs and what interfaces have of them to factory state: VLAN 1 alone, everybody in it. */
void vlans_reset(switch_model &model);
/* Drops the entries of deleted VLANs whose deletion the data plane has taken. */
void vlans_forget_deleted(switch_model &model);

bool vlan_id_valid(uint32_t id);
/* The VLAN, nullptr when it does not exist. */
const vlan_entry *vlan_find(const switch_model &model, uint32_t id);
bool vlan_exists(const switch_model &model, uint32_t id);
/* The same as a result: OPEN_E_NONE, OPEN_E_NOT_FOUND, or OPEN_E_PARAM outside 1..4094. */
open_error_t vlan_check(const switch_model &model, uint32_t id);

/* OPEN_E_PARAM: outside 1..4094. OPEN_E_EXISTS: exists already. OPEN_E_FULL: no room for another. */
open_error_t vlan_create(switch_model &model, uint32_t id);
/* Deletes a VLAN. Interfaces whose port VLAN id, access VLAN or native VLAN it was fall back to VLAN 1; MAC
 * addresses locked in it are released, access lists bound to it no longer are.
 * OPEN_E_PARAM: outside 1..4094. OPEN_E_FAIL: VLAN 1, or a VLAN with a routing interface or a VXLAN tenant.
 */
open_error_t vlan_delete(switch_model &model, uint32_t id);

/* An existing VLAN for changing, its change noted. */
vlan_entry *vlan_edit(switch_model &model, uint32_t id);

/* Gives a new LAG what it has of VLANs in factory state: it is in VLAN 1. */
void vlans_welcome_interface(switch_model &model, uint32_t interface);
/* Forgets what was set of an interface in any VLAN. Noted as changed are the VLANs in which there was
 * anything, and those in which it was a member. */
void vlans_forget_interface(switch_model &model, uint32_t interface);

/* The first VLAN above `after` (0..4094), and the first with a pending change (`delete_pending` 1 when that
 * is its deletion). OPEN_E_PARAM: `after` above 4094. OPEN_E_FAIL: there is none. */
open_error_t vlan_next(const switch_model &model, uint32_t after, uint32_t *next);
open_error_t vlan_next_changed(const switch_model &model, uint32_t after, uint32_t *next,
                               uint32_t *delete_pending);

/* --- Settings ------------------------------------------------------------------------------------------- */

/* The name a VLAN has as long as nobody names it: "default" for VLAN 1, none for the others. */
std::string_view vlan_factory_name(uint32_t id);
/* OPEN_E_PARAM: more than 32 bytes, or a control character. Empty removes the name. */
open_error_t vlan_set_name(switch_model &model, uint32_t id, std::string_view name);

/* Participation of an interface that nobody has configured: include in VLAN 1, autodetect in others. */
uint32_t vlan_factory_participation(uint32_t id);
/* OPEN_VLAN_PARTICIPATION_MODE_t that was set for a port or LAG in a VLAN. */
uint32_t vlan_participation(const vlan_entry &vlan, uint32_t interface);
/* OPEN_E_PARAM: unknown mode. */
open_error_t vlan_set_participation(switch_model &model, uint32_t id, uint32_t interface, uint32_t mode);

/* OPEN_E_PARAM: neither 0 nor 1. */
open_error_t vlan_set_tagging(switch_model &model, uint32_t id, uint32_t interface, uint32_t tagged);

open_error_t vlan_set_pvid(switch_model &model, uint32_t interface, uint32_t id);
/* OPEN_E_PARAM: not one of OPEN_DOT1Q_ACCEPT_FRAME_TYPE_t. */
open_error_t vlan_set_accept_frames(switch_model &model, uint32_t interface, uint32_t type);

/* The shared check of what concerns one interface in one VLAN: first the VLAN, then the interface. */
open_error_t vlan_and_interface_check(const switch_model &model, uint32_t id, uint32_t interface);

} // namespace softswitch

#endif
