/* Port MAC locking: the addresses that may send on a port or LAG, each in one VLAN, and sticky mode, in which
 * addresses learnt on an interface stay locked. An address is locked in a VLAN on one interface at most.
 *
 * Unless a function says otherwise: OPEN_E_PARAM for a VLAN id or interface number outside every range,
 * OPEN_E_NOT_FOUND when there is no such VLAN, port or LAG. An operation that finds everything as wanted
 * changes nothing; any other makes the interface pending. */
#ifndef KESTREL_SOFTSWITCH_MODEL_MAC_LOCKING_H
#define KESTREL_SOFTSWITCH_MODEL_MAC_LOCKING_H

#include "platform/softswitch/model/mac_address.h"
#include "platform/softswitch/model/vlan.h"

#include <vector>

namespace softswitch {

struct mac_lock {
  uint16_t interface;
  mac_address mac;
  uint16_t vlan;
  bool sticky; /* marked sticky; otherwise static */
};

struct mac_locking_table {
  member_set sticky_mode;      /* the interfaces in sticky mode */
  std::vector<mac_lock> locks; /* in order of interface, address and VLAN */
};

/* Returns all interfaces to factory state: nothing locked, sticky mode off. interfaces_reset() notes the
 * change. */
void mac_locking_reset(switch_model &model);
/* Returns one interface to factory state: what its removal does. */
void mac_locks_forget(switch_model &model, uint32_t interface);
/* Releases everything locked in a VLAN: what its deletion does. */
void mac_locks_release_vlan(switch_model &model, uint32_t vlan);

open_error_t mac_locking_set_sticky_mode(switch_model &model, uint32_t interface, bool on);

/* Locks an address, or marks one that is locked here otherwise.
 * OPEN_E_EXISTS: it is locked in this VLAN on another interface. OPEN_E_FULL: no room for another here. */
open_error_t mac_lock_set(switch_model &model, uint32_t interface, const mac_address &mac, uint32_t vlan,
                          bool sticky);
/* OPEN_E_NOT_FOUND also: it is not locked on this interface in this VLAN. */
open_error_t mac_lock_release(switch_model &model, uint32_t interface, const mac_address &mac, uint32_t vlan);

/* The interface on which an address is locked in a VLAN; 0 when it is locked on none. */
uint32_t mac_lock_interface(const switch_model &model, const mac_address &mac, uint32_t vlan);
/* The first lock of an interface beyond this address and VLAN, which need not be locked; nullptr when there
 * is none. A zero address comes before all. */
const mac_lock *mac_lock_next(const switch_model &model, uint32_t interface, const mac_address &mac,
                              uint32_t vlan);

} // namespace softswitch

#endif
