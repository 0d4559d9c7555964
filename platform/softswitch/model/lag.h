/* Link aggregation groups (IEEE 802.1AX): which of them exist, and their members. A LAG is an interface of
 * the number space of interface.h with a port-channel id from 1 on; that a port is a member is kept with the
 * port (interface_entry.lag). What membership means for VLANs is said by switchport.h.
 *
 * Unless a function says otherwise: OPEN_E_PARAM for an interface number outside every range,
 * OPEN_E_NOT_FOUND for one that is no existing LAG, or no port. Members and LAGs become pending with what
 * changes about them, and with them each VLAN in which that changes a membership or tagging. */
#ifndef KESTREL_SOFTSWITCH_MODEL_LAG_H
#define KESTREL_SOFTSWITCH_MODEL_LAG_H

#include "platform/api/openapi_lag.h"
#include "platform/softswitch/model/limits.h"

#include <cstdint>
#include <vector>

namespace softswitch {

struct switch_model;

/* --- Numbers -------------------------------------------------------------------------------------------- */

inline constexpr uint32_t port_channel_max = lag_last - lag_first + 1;

/* The interface number of a port-channel id; 0 when the switch has no LAG with this id. */
uint32_t lag_of_port_channel(uint32_t id);
/* The port-channel id of the number of a LAG, existing or not; 0 for any other. */
uint32_t port_channel_of_lag(uint32_t number);

/* Whether there is this LAG, as a result. */
open_error_t lag_check(const switch_model &model, uint32_t number);
/* The shared check of what concerns a LAG and a port: first the LAG, then the port. */
open_error_t lag_and_port_check(const switch_model &model, uint32_t number, uint32_t port);

/* --- LAGs ----------------------------------------------------------------------------------------------- */

/* Makes a LAG that was deleted, in factory state. OPEN_E_EXISTS: exists already. */
open_error_t lag_create(switch_model &model, uint32_t number);
/* Deletes a LAG with all its settings; its members leave it. OPEN_E_FAIL: it is in use (interface_in_use()).
 */
open_error_t lag_delete(switch_model &model, uint32_t number);

/* --- Members -------------------------------------------------------------------------------------------- */

/* The members of a LAG in ascending order. */
std::vector<uint32_t> lag_members(const switch_model &model, uint32_t number);
/* Makes a port a member. OPEN_E_EXISTS: is one already. OPEN_E_FAIL: is a member of another LAG.
 * OPEN_E_FULL: the LAG has as many as it may have. */
open_error_t lag_add_port(switch_model &model, uint32_t number, uint32_t port);
/* Takes a port out. OPEN_E_NOT_FOUND: also when it is not a member of this LAG. */
open_error_t lag_remove_port(switch_model &model, uint32_t number, uint32_t port);

} // namespace softswitch

#endif
