/* Interfaces; see interface.h. */
#include "platform/softswitch/model/interface.h"

#include "platform/softswitch/model/counters.h"
#include "platform/softswitch/model/interface_settings.h"
#include "platform/softswitch/model/switch.h"

namespace softswitch {

struct number_range {
  uint32_t first;
  uint32_t last;
};

/* By OPEN_INTF_TYPE_t. */
static constexpr number_range ranges[] = {
    {port_first, port_last},         {cpu_interface, cpu_interface},
    {lag_first, lag_last},           {vlan_routing_first, vlan_routing_last},
    {loopback_first, loopback_last},
};

static bool in_range(uint32_t number, OPEN_INTF_TYPE_t type) {
  return number >= ranges[type].first && number <= ranges[type].last;
}

/* --- What there is -------------------------------------------------------------------------------------- */

void interfaces_make(switch_model &model) {
  interface_table *table = model.interfaces.edit();
  uint32_t number = port_first;
  for (const port_profile &port : model.profile->ports) {
    if (number > port_last) break;
    interface_entry &entry = table->at[number++];
    entry.exists = true;
    entry.cabled = port.cabled;
    port_factory_settings(port, &entry);
  }
  table->at[cpu_interface].exists = true;
  for (number = lag_first; number <= lag_last; number++) table->at[number].exists = true;
  for (number = loopback_first; number <= loopback_last; number++) table->at[number].exists = true;
}

/* An interface in factory state in the place of this one, which exists or is a deleted LAG. What comes from
 * outside stays. */
static interface_entry factory_interface(const switch_model &model, uint32_t number) {
  const interface_entry &entry = model.interfaces->at[number];
  interface_entry factory;
  factory.exists = interface_type(number) != OPEN_INTF_TYPE_VLAN_RTR;
  factory.cabled = entry.cabled;
  factory.far_end_up = entry.far_end_up;
  factory.link_up = entry.link_up;
  if (interface_is_port(model, number))
    port_factory_settings(model.profile->ports[number - port_first], &factory);
  return factory;
}

void interfaces_reset(switch_model &model) {
  interface_table *table = model.interfaces.edit();
  uint64_t change = next_change(model);
  for (uint32_t number = port_first; number <= interface_last; number++) {
    interface_entry &entry = table->at[number];
    if (!entry.exists && !in_range(number, OPEN_INTF_TYPE_LAG)) continue;
    if (in_range(number, OPEN_INTF_TYPE_VLAN_RTR)) {
      counters_forget(model, number);
      lease_withdraw(model, number);
    }
    entry = factory_interface(model, number);
    entry.changed = change;
  }
}

bool interface_exists(const switch_model &model, uint32_t number) {
  return number <= interface_last && model.interfaces->at[number].exists;
}

OPEN_INTF_TYPE_t interface_type(uint32_t number) {
  uint32_t type = OPEN_INTF_TYPE_PHY;
  while (!in_range(number, static_cast<OPEN_INTF_TYPE_t>(type))) type++;
  return static_cast<OPEN_INTF_TYPE_t>(type);
}

bool interface_is_port(const switch_model &model, uint32_t number) {
  return in_range(number, OPEN_INTF_TYPE_PHY) && interface_exists(model, number);
}

bool interface_switches(const switch_model &model, uint32_t number) {
  bool switching = in_range(number, OPEN_INTF_TYPE_PHY) || in_range(number, OPEN_INTF_TYPE_LAG);
  return switching && interface_exists(model, number);
}

open_error_t interface_refusal(uint32_t number) {
  for (const number_range &range : ranges) {
    if (number >= range.first && number <= range.last) return OPEN_E_NOT_FOUND;
  }
  return OPEN_E_PARAM;
}

open_error_t interface_check(const switch_model &model, uint32_t number) {
  return interface_exists(model, number) ? OPEN_E_NONE : interface_refusal(number);
}

open_error_t interface_addressable_check(const switch_model &model, uint32_t number) {
  open_error_t rc = interface_check(model, number);
  return rc == OPEN_E_NONE && number == cpu_interface ? OPEN_E_UNAVAIL : rc;
}

open_error_t interface_switches_check(const switch_model &model, uint32_t number) {
  return interface_switches(model, number) ? OPEN_E_NONE : interface_refusal(number);
}

std::string interface_name(const switch_model &model, uint32_t number) {
  if (!interface_exists(model, number)) return "";
  if (in_range(number, OPEN_INTF_TYPE_PHY)) return model.profile->ports[number - port_first].name;
  if (in_range(number, OPEN_INTF_TYPE_LAG)) return "3/" + std::to_string(number - lag_first + 1);
  if (in_range(number, OPEN_INTF_TYPE_LOOPBACK)) return "loopback" + std::to_string(number - loopback_first);
  if (number == cpu_interface) return "cpu";
  return "vlan" + std::to_string(model.interfaces->at[number].routed_vlan);
}

uint32_t interface_by_name(const switch_model &model, std::string_view name) {
  if (name.empty()) return 0;
  for (uint32_t number = port_first; number <= interface_last; number++) {
    if (interface_exists(model, number) && interface_name(model, number) == name) return number;
  }
  return 0;
}

open_error_t interface_next(const switch_model &model, uint32_t type, uint32_t state, uint32_t after,
                            uint32_t *next) {
  if (type >= sizeof ranges / sizeof *ranges || state != OPEN_INTF_STATE_ANY) return OPEN_E_PARAM;
  for (uint32_t number = ranges[type].first; number <= ranges[type].last; number++) {
    if (number <= after || !interface_exists(model, number)) continue;
    *next = number;
    return OPEN_E_NONE;
  }
  return OPEN_E_FAIL;
}

/* --- Changes -------------------------------------------------------------------------------------------- */

interface_entry *interface_edit(switch_model &model, uint32_t number) {
  interface_entry *entry = &model.interfaces.edit()->at[number];
  entry->changed = next_change(model);
  return entry;
}

bool interface_in_use(const switch_model &model, uint32_t number) {
  return acl_with_target(model, number) || tcam_policy_redirecting_to(model, number) != 0 ||
         bgp_uses_interface(model, number) || vxlan_uses_interface(model, number);
}

void interface_remove(switch_model &model, uint32_t number) {
  vlans_forget_interface(model, number);
  mac_locks_forget(model, number);
  acl_unbind_all(model, acl_place::interface, number);
  tcam_forget_interface(model, number);
  addresses_forget(model, number);
  lease_withdraw(model, number);
  counters_forget(model, number);
  interface_entry *entry = interface_edit(model, number);
  uint64_t change = entry->changed;
  *entry = interface_entry();
  entry->changed = change;
}

open_error_t interface_next_changed(const switch_model &model, uint32_t after, uint32_t *next,
                                    uint32_t *delete_pending) {
  for (uint64_t number = uint64_t{after} + 1; number <= interface_last; number++) {
    const interface_entry &entry = model.interfaces->at[number];
    if (entry.changed <= model.applied) continue;
    *next = static_cast<uint32_t>(number);
    *delete_pending = !entry.exists;
    return OPEN_E_NONE;
  }
  return OPEN_E_FAIL;
}

open_error_t interface_set_cabled(switch_model &model, uint32_t number, bool cabled) {
  if (!interface_is_port(model, number)) return OPEN_E_NOT_FOUND;
  model.interfaces.edit()->at[number].cabled = cabled;
  return OPEN_E_NONE;
}

open_error_t interface_set_far_end(switch_model &model, uint32_t number, bool up) {
  if (!interface_is_port(model, number)) return OPEN_E_NOT_FOUND;
  model.interfaces.edit()->at[number].far_end_up = up;
  return OPEN_E_NONE;
}

void interface_set_link(switch_model &model, uint32_t number, bool up) {
  if (model.interfaces->at[number].link_up != up) model.interfaces.edit()->at[number].link_up = up;
}

/* --- VLAN routing interfaces ---------------------------------------------------------------------------- */

uint32_t interface_of_vlan(const switch_model &model, uint32_t vlan) {
  for (uint32_t number = vlan_routing_first; number <= vlan_routing_last; number++) {
    const interface_entry &entry = model.interfaces->at[number];
    if (entry.exists && entry.routed_vlan == vlan) return number;
  }
  return 0;
}

open_error_t interface_make_vlan_routing(switch_model &model, uint32_t vlan, uint32_t *number) {
  uint32_t free = vlan_routing_first;
  while (free < vlan_routing_last && interface_exists(model, free)) free++;
  open_error_t rc = interface_make_vlan_routing_as(model, vlan, free);
  if (rc == OPEN_E_NONE) *number = free;
  return rc;
}

static bool vlan_routing_full(const switch_model &model) {
  uint32_t existing = 0;
  for (uint32_t number = vlan_routing_first; number <= vlan_routing_last; number++)
    existing += interface_exists(model, number) ? 1 : 0;
  return existing >= model.limits.vlan_routing_interfaces;
}

open_error_t interface_make_vlan_routing_as(switch_model &model, uint32_t vlan, uint32_t number) {
  if (!in_range(number, OPEN_INTF_TYPE_VLAN_RTR)) return OPEN_E_PARAM;
  if (!vlan_exists(model, vlan)) return OPEN_E_NOT_FOUND;
  if (interface_of_vlan(model, vlan) != 0) return OPEN_E_EXISTS;
  if (vlan_routing_full(model)) return OPEN_E_FULL;
  if (interface_exists(model, number)) return OPEN_E_EXISTS;
  interface_entry *entry = interface_edit(model, number);
  entry->exists = true;
  entry->routing = true;
  entry->routed_vlan = static_cast<uint16_t>(vlan);
  return OPEN_E_NONE;
}

open_error_t interface_remove_vlan_routing(switch_model &model, uint32_t vlan) {
  uint32_t number = interface_of_vlan(model, vlan);
  if (number == 0) return OPEN_E_NOT_FOUND;
  if (interface_in_use(model, number)) return OPEN_E_FAIL;
  interface_remove(model, number);
  return OPEN_E_NONE;
}

} // namespace softswitch
