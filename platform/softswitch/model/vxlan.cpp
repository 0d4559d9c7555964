/* VXLAN; see vxlan.h. */
#include "platform/softswitch/model/vxlan.h"

#include "platform/softswitch/model/inet_address.h"
#include "platform/softswitch/model/switch.h"

#include <algorithm>

namespace softswitch {

void vxlan_reset(switch_model &model) {
  *model.vxlan.edit() = vxlan_table();
}

/* The table for changing, the change noted. */
static vxlan_table *edit(switch_model &model) {
  next_change(model);
  return model.vxlan.edit();
}

/* Gives a setting a value, as a change when that is another one. */
template <typename T> static open_error_t set(switch_model &model, T vxlan_table::*setting, T value) {
  set_member(model, &switch_model::vxlan, setting, value);
  return OPEN_E_NONE;
}

/* --- The instance --------------------------------------------------------------------------------------- */

open_error_t vxlan_set_mode(switch_model &model, vxlan_mode mode) {
  vxlan_mode present = model.vxlan->mode;
  bool refused = present != mode && present != vxlan_mode::off && mode != vxlan_mode::off;
  return refused ? OPEN_E_FAIL : set(model, &vxlan_table::mode, mode);
}

open_error_t vxlan_set_udp_port(switch_model &model, uint32_t port) {
  if (port == 0 || port > udp_port_max) return OPEN_E_PARAM;
  return set(model, &vxlan_table::udp_port, port);
}

open_error_t vxlan_set_source_interface(switch_model &model, uint32_t interface) {
  open_error_t rc = interface == 0 ? OPEN_E_NONE : interface_addressable_check(model, interface);
  return rc == OPEN_E_NONE ? set(model, &vxlan_table::source_interface, interface) : rc;
}

bool vxlan_uses_interface(const switch_model &model, uint32_t interface) {
  return interface != 0 && model.vxlan->source_interface == interface;
}

/* --- Finding tenants ------------------------------------------------------------------------------------ */

/* Where the tenant with this id is, or where it belongs. */
template <typename Tenants> static auto place_of(Tenants &tenants, uint32_t id) {
  return std::lower_bound(tenants.begin(), tenants.end(), id,
                          [](const vxlan_tenant &tenant, uint32_t wanted) { return tenant.id < wanted; });
}

bool vxlan_tenant_id_valid(uint32_t id) {
  return id >= 1 && id <= vxlan_tenant_id_max;
}

const vxlan_tenant *vxlan_tenant_find(const switch_model &model, uint32_t id) {
  const auto &tenants = model.vxlan->tenants;
  auto place = place_of(tenants, id);
  return place != tenants.end() && place->id == id ? &*place : nullptr;
}

open_error_t vxlan_tenant_check(const switch_model &model, uint32_t id) {
  if (!vxlan_tenant_id_valid(id)) return OPEN_E_PARAM;
  return vxlan_tenant_find(model, id) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
}

const vxlan_tenant *vxlan_tenant_next(const switch_model &model, uint32_t after) {
  if (after >= vxlan_tenant_id_max) return nullptr;
  auto place = place_of(model.vxlan->tenants, after + 1);
  return place != model.vxlan->tenants.end() ? &*place : nullptr;
}

/* The first tenant with this in a setting, as its id; 0 when there is none. There are not so many tenants
 * that an index would be worth its upkeep. */
template <typename T>
static uint32_t tenant_with(const switch_model &model, T vxlan_tenant::*setting, uint32_t value) {
  if (value == 0) return 0;
  const auto &tenants = model.vxlan->tenants;
  auto found = std::find_if(tenants.begin(), tenants.end(),
                            [&](const vxlan_tenant &tenant) { return tenant.*setting == value; });
  return found != tenants.end() ? found->id : 0;
}

uint32_t vxlan_tenant_of_vlan(const switch_model &model, uint32_t vlan) {
  return tenant_with(model, &vxlan_tenant::vlan, vlan);
}

uint32_t vxlan_tenant_of_group(const switch_model &model, uint32_t group) {
  return tenant_with(model, &vxlan_tenant::group, group);
}

/* --- Changing tenants ----------------------------------------------------------------------------------- */

/* A tenant that exists, for changing. */
static vxlan_tenant *edit_tenant(switch_model &model, uint32_t id) {
  return &*place_of(edit(model)->tenants, id);
}

/* Binds a tenant to a VLAN, or ends that. */
static void set_binding(switch_model &model, uint32_t id, uint32_t vlan, bool bound) {
  edit_tenant(model, id)->vlan = bound ? static_cast<uint16_t>(vlan) : 0;
  vlan_edit(model, vlan);
}

open_error_t vxlan_tenant_make(switch_model &model, uint32_t id) {
  if (!vxlan_tenant_id_valid(id)) return OPEN_E_PARAM;
  if (vxlan_tenant_find(model, id)) return OPEN_E_EXISTS;
  if (model.vxlan->tenants.size() >= model.limits.vxlan_tenants) return OPEN_E_FULL;
  auto &tenants = edit(model)->tenants;
  tenants.insert(place_of(tenants, id), vxlan_tenant())->id = id;
  return OPEN_E_NONE;
}

open_error_t vxlan_tenant_remove(switch_model &model, uint32_t id) {
  open_error_t rc = vxlan_tenant_check(model, id);
  if (rc != OPEN_E_NONE) return rc;
  uint32_t vlan = vxlan_tenant_find(model, id)->vlan;
  if (vlan != 0) set_binding(model, id, vlan, false);
  auto &tenants = edit(model)->tenants;
  tenants.erase(place_of(tenants, id));
  return OPEN_E_NONE;
}

open_error_t vxlan_tenant_bind(switch_model &model, uint32_t id, uint32_t vlan) {
  if (!vxlan_tenant_id_valid(id)) return OPEN_E_PARAM;
  open_error_t rc = vlan_check(model, vlan);
  if (rc != OPEN_E_NONE) return rc;
  if (vxlan_tenant_of_vlan(model, vlan) == id) return OPEN_E_NONE;
  rc = vxlan_tenant_make(model, id);
  if (rc == OPEN_E_FULL) return rc;
  const vxlan_tenant *tenant = vxlan_tenant_find(model, id);
  if (tenant->vlan != 0 || vxlan_tenant_of_vlan(model, vlan) != 0) return OPEN_E_FAIL;
  set_binding(model, id, vlan, true);
  return rc == OPEN_E_NONE ? vxlan_tenant_set_remote_vteps(model, id, true) : OPEN_E_NONE;
}

open_error_t vxlan_tenant_unbind(switch_model &model, uint32_t id, uint32_t vlan) {
  if (!vlan_id_valid(vlan)) return OPEN_E_PARAM;
  open_error_t rc = vxlan_tenant_check(model, id);
  if (rc != OPEN_E_NONE) return rc;
  uint32_t present = vxlan_tenant_find(model, id)->vlan;
  if (present == 0) return OPEN_E_NONE;
  if (present != vlan) return OPEN_E_NOT_FOUND;
  set_binding(model, id, vlan, false);
  return OPEN_E_NONE;
}

/* --- Remote VTEPs --------------------------------------------------------------------------------------- */

bool vxlan_vtep_address_valid(uint32_t address) {
  return inet_is_host({inet_ipv4(address), ipv4_bits, 0});
}

open_error_t vxlan_remote_vtep_add(switch_model &model, uint32_t address) {
  if (!vxlan_vtep_address_valid(address)) return OPEN_E_PARAM;
  if (model.vxlan->remote_vteps.count(address)) return OPEN_E_NONE;
  if (model.vxlan->remote_vteps.size() >= model.limits.remote_vteps) return OPEN_E_FULL;
  vxlan_table *table = edit(model);
  table->remote_vteps.insert(address);
  for (vxlan_tenant &tenant : table->tenants) tenant.remote_vteps = true;
  return OPEN_E_NONE;
}

open_error_t vxlan_remote_vtep_remove(switch_model &model, uint32_t address) {
  if (!model.vxlan->remote_vteps.count(address)) return OPEN_E_NOT_FOUND;
  edit(model)->remote_vteps.erase(address);
  return OPEN_E_NONE;
}

open_error_t vxlan_tenant_set_remote_vteps(switch_model &model, uint32_t id, bool has) {
  open_error_t rc = vxlan_tenant_check(model, id);
  if (rc != OPEN_E_NONE) return rc;
  if (vxlan_tenant_find(model, id)->remote_vteps != has) edit_tenant(model, id)->remote_vteps = has;
  return OPEN_E_NONE;
}

uint32_t vxlan_tenant_next_vtep(const switch_model &model, const vxlan_tenant &tenant, uint32_t after) {
  if (!tenant.remote_vteps) return 0;
  auto found = model.vxlan->remote_vteps.upper_bound(after);
  return found != model.vxlan->remote_vteps.end() ? *found : 0;
}

/* --- Multicast groups ----------------------------------------------------------------------------------- */

bool vxlan_group_valid(uint32_t group) {
  return group >= vxlan_group_min && group <= vxlan_group_max;
}

open_error_t vxlan_set_default_group(switch_model &model, uint32_t group) {
  if (group != 0 && !vxlan_group_valid(group)) return OPEN_E_PARAM;
  if (vxlan_tenant_of_group(model, group) != 0) return OPEN_E_EXISTS;
  return set(model, &vxlan_table::default_group, group);
}

open_error_t vxlan_tenant_set_group(switch_model &model, uint32_t id, uint32_t group) {
  if (group != 0 && !vxlan_group_valid(group)) return OPEN_E_PARAM;
  open_error_t rc = vxlan_tenant_check(model, id);
  if (rc != OPEN_E_NONE) return rc;
  if (group != 0 && group == model.vxlan->default_group) return OPEN_E_EXISTS;
  if (vxlan_tenant_find(model, id)->group != group) edit_tenant(model, id)->group = group;
  return OPEN_E_NONE;
}

} // namespace softswitch
