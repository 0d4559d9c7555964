/* Routing; see routing.h. */
#include "platform/softswitch/model/routing.h"

#include "platform/softswitch/model/switch.h"

namespace softswitch {

/* --- The switch as a router ----------------------------------------------------------------------------- */

static bool routing_table::*member_of(OPEN_AF_t family) {
  return family == OPEN_AF_INET6 ? &routing_table::ipv6 : &routing_table::ipv4;
}

void routing_reset(switch_model &model) {
  *model.routing.edit() = routing_table();
}

bool routing_enabled(const switch_model &model, OPEN_AF_t family) {
  return (*model.routing).*member_of(family);
}

void routing_set_enabled(switch_model &model, OPEN_AF_t family, bool on) {
  if (routing_enabled(model, family) == on) return;
  next_change(model);
  model.routing.edit()->*member_of(family) = on;
}

/* --- Routing interfaces --------------------------------------------------------------------------------- */

open_error_t interface_set_routing(switch_model &model, uint32_t number, bool on) {
  open_error_t rc = interface_check(model, number);
  if (rc != OPEN_E_NONE) return rc;
  OPEN_INTF_TYPE_t type = interface_type(number);
  if (type == OPEN_INTF_TYPE_CPU || type == OPEN_INTF_TYPE_LOOPBACK) return OPEN_E_UNAVAIL;
  if (model.interfaces->at[number].routing != on) interface_edit(model, number)->routing = on;
  return OPEN_E_NONE;
}

bool interface_is_routing(const switch_model &model, uint32_t number) {
  if (!interface_exists(model, number) || number == cpu_interface) return false;
  const interface_entry &entry = model.interfaces->at[number];
  return !interface_switches(model, number) || (entry.routing && entry.lag == 0);
}

open_error_t interface_is_routing_check(const switch_model &model, uint32_t number) {
  return interface_is_routing(model, number) ? OPEN_E_NONE : interface_refusal(number);
}

open_error_t interface_next_routing(const switch_model &model, uint32_t after, uint32_t *next) {
  for (uint64_t number = uint64_t{after} + 1; number <= interface_last; number++) {
    if (!interface_is_routing(model, static_cast<uint32_t>(number))) continue;
    *next = static_cast<uint32_t>(number);
    return OPEN_E_NONE;
  }
  return OPEN_E_FAIL;
}

} // namespace softswitch
