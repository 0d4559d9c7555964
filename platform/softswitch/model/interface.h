/* Interfaces: the one number space that ports, the CPU interface, LAGs, loopbacks and VLAN routing interfaces
 * share (limits.h has the ranges), and their names. Settings are interface_settings.h, counters counters.h.
 */
#ifndef KESTREL_SOFTSWITCH_MODEL_INTERFACE_H
#define KESTREL_SOFTSWITCH_MODEL_INTERFACE_H

#include "platform/api/openapi_if.h"
#include "platform/api/openapi_vlan.h"
#include "platform/softswitch/model/limits.h"
#include "platform/softswitch/model/switchport.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace softswitch {

struct switch_model;

struct interface_entry {
  bool exists = false;
  bool enabled = true;                          /* administratively */
  bool soft_shutdown = false;                   /* ports: no link, whatever the administrative state */
  bool auto_negotiation = false;                /* copper ports */
  uint8_t speed = 0;                            /* ports: the fixed speed, OPEN_IF_SPEED_t */
  uint16_t mtu = mtu_min;                       /* ports and LAGs */
  std::string description;                      /* ports, LAGs and loopbacks */
  bool cabled = false;                          /* ports: a cable is in */
  bool far_end_up = true;                       /* ports: the other end of the cable is alive */
  bool link_up = false;                         /* ports: as the data plane reports */
  uint16_t pvid = 1;                            /* ports and LAGs: as set for switchport mode general */
  uint8_t accept_frames = OPEN_DOT1Q_ADMIT_ALL; /* ports and LAGs: OPEN_DOT1Q_ACCEPT_FRAME_TYPE_t */
  switchport_settings switchport;               /* ports and LAGs */
  uint16_t lag = 0;                             /* ports: number of the LAG that it is a member of, or 0 */
  bool routing = false;                         /* ports, LAGs and VLAN routing interfaces: routing is on */
  uint16_t routed_vlan = 0;                     /* VLAN routing interfaces: the VLAN */
  uint64_t changed = 0;                         /* number of its latest change, its removal included */
};

struct interface_table {
  interface_entry at[interface_last + 1]; /* by interface number; 0 is not used */
};

/* --- What there is -------------------------------------------------------------------------------------- */

/* Fills a new model with the interfaces that are always there. */
void interfaces_make(switch_model &model);
/* Returns the configuration of all interfaces to factory state. Comes before vlans_reset(). */
void interfaces_reset(switch_model &model);

bool interface_exists(const switch_model &model, uint32_t number);
/* What a number that means no fitting interface is refused with: OPEN_E_PARAM when it is outside every range
 * of limits.h, otherwise OPEN_E_NOT_FOUND. */
open_error_t interface_refusal(uint32_t number);
/* Whether it exists, as a result: OPEN_E_NONE or that refusal. */
open_error_t interface_check(const switch_model &model, uint32_t number);
/* Whether it exists and can have IP addresses: the codes of interface_check(), and OPEN_E_UNAVAIL for the CPU
 * interface. */
open_error_t interface_addressable_check(const switch_model &model, uint32_t number);
/* The type of an interface that exists. */
OPEN_INTF_TYPE_t interface_type(uint32_t number);
/* Ports and LAGs that exist: what can be a member of VLANs. */
bool interface_switches(const switch_model &model, uint32_t number);
/* The same as a result, with the codes of interface_check(). */
open_error_t interface_switches_check(const switch_model &model, uint32_t number);
bool interface_is_port(const switch_model &model, uint32_t number);
/* Calls `use` with the number of each port and LAG that exists. */
template <typename Use> void each_switching_interface(const switch_model &model, Use use) {
  for (uint32_t number = port_first; number <= lag_last; number++) {
    if (interface_switches(model, number)) use(number);
  }
}
/* Name of an interface: as the profile says for ports, "3/1".. for LAGs, "cpu", "loopback0".., "vlan10" for
 * the routing interface of VLAN 10. Empty when there is no such interface. */
std::string interface_name(const switch_model &model, uint32_t number);
/* The interface with this name; 0 when there is none. */
uint32_t interface_by_name(const switch_model &model, std::string_view name);

/* The first interface of a type (OPEN_INTF_TYPE_t) and link state with a number above `after`.
 * OPEN_E_PARAM for an unknown type or state, OPEN_E_FAIL when there is none. */
open_error_t interface_next(const switch_model &model, uint32_t type, uint32_t state, uint32_t after,
                            uint32_t *next);

/* --- Changes -------------------------------------------------------------------------------------------- */

/* An interface for changing, its change noted. The caller has checked that it exists. */
interface_entry *interface_edit(switch_model &model, uint32_t number);
/* Whether another family refers to an interface, so that it cannot be removed: a rule of an access list or a
 * TCAM policy sends packets to it, it is the scope or update source of a BGP peer, or the source interface of
 * VXLAN. */
bool interface_in_use(const switch_model &model, uint32_t number);
/* Removes an interface with all that any family keeps about it. The caller has checked that it exists and
 * that it is not in use. */
void interface_remove(switch_model &model, uint32_t number);

/* The first interface above `after` with a pending change. OPEN_E_FAIL when there is none. */
open_error_t interface_next_changed(const switch_model &model, uint32_t after, uint32_t *next,
                                    uint32_t *delete_pending);

/* Pulls or plugs a port's cable: no configuration, so nothing becomes pending. OPEN_E_NOT_FOUND: no such
 * port. */
open_error_t interface_set_cabled(switch_model &model, uint32_t number, bool cabled);
/* Wakes or silences what is at the other end of a port's cable, likewise. */
open_error_t interface_set_far_end(switch_model &model, uint32_t number, bool up);
/* Takes over what the data plane says of a port's link. */
void interface_set_link(switch_model &model, uint32_t number, bool up);

/* --- VLAN routing interfaces ---------------------------------------------------------------------------- */

/* Makes the routing interface of a VLAN, with the lowest free number.
 * OPEN_E_NOT_FOUND: no such VLAN. OPEN_E_EXISTS: it has one. OPEN_E_FULL: no room for another. */
open_error_t interface_make_vlan_routing(switch_model &model, uint32_t vlan, uint32_t *number);
/* Makes it with this number. OPEN_E_PARAM: no number of VLAN routing interfaces. OPEN_E_EXISTS also: another
 * VLAN's has this number. */
open_error_t interface_make_vlan_routing_as(switch_model &model, uint32_t vlan, uint32_t number);
/* Removes it with its addresses. OPEN_E_NOT_FOUND: the VLAN has none. OPEN_E_FAIL: it is in use. */
open_error_t interface_remove_vlan_routing(switch_model &model, uint32_t vlan);
/* The routing interface of a VLAN; 0 when it has none. */
uint32_t interface_of_vlan(const switch_model &model, uint32_t vlan);

} // namespace softswitch

#endif
