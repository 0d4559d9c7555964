/* Link aggregation groups; see lag.h. */
#include "platform/softswitch/model/lag.h"

#include "platform/softswitch/model/switch.h"

namespace softswitch {

/* --- Numbers -------------------------------------------------------------------------------------------- */

uint32_t lag_of_port_channel(uint32_t id) {
  return id >= 1 && id <= port_channel_max ? lag_first + id - 1 : 0;
}

uint32_t port_channel_of_lag(uint32_t number) {
  return number >= lag_first && number <= lag_last ? number - lag_first + 1 : 0;
}

open_error_t lag_check(const switch_model &model, uint32_t number) {
  bool found = port_channel_of_lag(number) != 0 && interface_exists(model, number);
  return found ? OPEN_E_NONE : interface_refusal(number);
}

/* --- LAGs ----------------------------------------------------------------------------------------------- */

open_error_t lag_create(switch_model &model, uint32_t number) {
  if (port_channel_of_lag(number) == 0) return interface_refusal(number);
  if (interface_exists(model, number)) return OPEN_E_EXISTS;
  interface_edit(model, number)->exists = true;
  vlans_welcome_interface(model, number);
  return OPEN_E_NONE;
}

open_error_t lag_delete(switch_model &model, uint32_t number) {
  open_error_t rc = lag_check(model, number);
  if (rc != OPEN_E_NONE) return rc;
  if (interface_in_use(model, number)) return OPEN_E_FAIL;
  for (uint32_t port : lag_members(model, number)) lag_remove_port(model, number, port);
  interface_remove(model, number);
  return OPEN_E_NONE;
}

/* --- Members -------------------------------------------------------------------------------------------- */

std::vector<uint32_t> lag_members(const switch_model &model, uint32_t number) {
  std::vector<uint32_t> members;
  for (uint32_t port = port_first; port <= port_last; port++) {
    if (model.interfaces->at[port].lag == number) members.push_back(port);
  }
  return members;
}

open_error_t lag_and_port_check(const switch_model &model, uint32_t number, uint32_t port) {
  open_error_t rc = lag_check(model, number);
  if (rc != OPEN_E_NONE) return rc;
  return interface_is_port(model, port) ? OPEN_E_NONE : interface_refusal(port);
}

/* Puts a port into a LAG, or with 0 into none. The LAG has other members by that, which is a change of it. */
static void move_port(switch_model &model, uint32_t number, uint32_t port, uint32_t into) {
  vlan_part before = vlan_part_of(model, port);
  interface_edit(model, port)->lag = static_cast<uint16_t>(into);
  interface_edit(model, number);
  note_vlan_part(model, port, before);
}

open_error_t lag_add_port(switch_model &model, uint32_t number, uint32_t port) {
  open_error_t rc = lag_and_port_check(model, number, port);
  if (rc != OPEN_E_NONE) return rc;
  uint32_t present = model.interfaces->at[port].lag;
  if (present != 0) return present == number ? OPEN_E_EXISTS : OPEN_E_FAIL;
  if (lag_members(model, number).size() >= model.limits.lag_members) return OPEN_E_FULL;
  move_port(model, number, port, number);
  return OPEN_E_NONE;
}

open_error_t lag_remove_port(switch_model &model, uint32_t number, uint32_t port) {
  open_error_t rc = lag_and_port_check(model, number, port);
  if (rc != OPEN_E_NONE) return rc;
  if (model.interfaces->at[port].lag != number) return OPEN_E_NOT_FOUND;
  move_port(model, number, port, 0);
  return OPEN_E_NONE;
}

} // namespace softswitch
