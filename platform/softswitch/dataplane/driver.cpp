/* Compiling the wanted state, for all drivers; see driver.h. */
#include "platform/softswitch/dataplane/driver.h"

namespace softswitch {

/* Who takes part in VLANs, by how that is found out. Ports in LAGs take no part. */
struct switching_interfaces {
  member_set general;            /* as set for each VLAN, all at once */
  std::vector<uint32_t> by_mode; /* one by one: few of them are access or trunk where there are many VLANs */
};

static switching_interfaces sort_interfaces(const switch_model &model) {
  switching_interfaces sorted;
  each_switching_interface(model, [&](uint32_t number) {
    const interface_entry &entry = model.interfaces->at[number];
    if (entry.lag != 0) return;
    if (entry.switchport.mode == OPEN_SWITCHPORT_MODE_GENERAL) {
      sorted.general.set(number);
    } else {
      sorted.by_mode.push_back(number);
    }
  });
  return sorted;
}

static wanted_vlan compile_vlan(const switch_model &model, const vlan_entry &vlan,
                                const switching_interfaces &interfaces) {
  member_set members = vlan.included & interfaces.general;
  wanted_vlan wanted = {vlan.id, members, members & vlan.tagged};
  for (uint32_t number : interfaces.by_mode) {
    if (!vlan_has_member(model, vlan, number)) continue;
    wanted.members.set(number);
    wanted.tagged[number] = vlan_tagging_in_force(model, vlan, number);
  }
  return wanted;
}

std::unique_ptr<const wanted_state> compile_wanted(const switch_model &model) {
  auto wanted = std::make_unique<wanted_state>();
  switching_interfaces interfaces = sort_interfaces(model);
  for (const vlan_entry &vlan : model.vlans->entries) {
    if (vlan.exists) wanted->vlans.push_back(compile_vlan(model, vlan, interfaces));
  }
  each_switching_interface(model, [&](uint32_t number) {
    const interface_entry &entry = model.interfaces->at[number];
    uint16_t pvid = static_cast<uint16_t>(pvid_in_force(model, number));
    bool enabled = entry.enabled && !entry.soft_shutdown;
    wanted->ports[number] = {enabled, pvid, entry.accept_frames, entry.lag};
  });
  return wanted;
}

} // namespace softswitch
