/* Compiling the wanted state, for all drivers; see driver.h. */
#include "platform/softswitch/dataplane/driver.h"

namespace softswitch {

std::unique_ptr<const wanted_state> compile_wanted(const switch_model &model) {
  auto wanted = std::make_unique<wanted_state>();
  for (const vlan_entry &vlan : model.vlans->entries) {
    if (vlan.exists) wanted->vlans.push_back({vlan.id, vlan.included, vlan.included & vlan.tagged});
  }
  for (uint32_t number = port_first; number <= lag_last; number++) {
    if (!interface_switches(model, number)) continue;
    const interface_entry &entry = model.interfaces->at[number];
    wanted->ports[number] = {entry.enabled && !entry.soft_shutdown, entry.pvid, entry.accept_frames};
  }
  return wanted;
}

} // namespace softswitch
