/* The switch as a whole: factory state and the counting of changes; see switch.h. */
#include "platform/softswitch/model/switch.h"

namespace softswitch {

switch_model::switch_model() = default;
switch_model::~switch_model() = default;
switch_model::switch_model(const switch_model &) = default;
switch_model &switch_model::operator=(const switch_model &) = default;

switch_model make_switch(const chassis_profile &profile) {
  switch_model model;
  model.profile = std::make_shared<const chassis_profile>(profile);
  interfaces_make(model);
  chassis_make(model);
  switch_reset(model);
  return model;
}

void switch_reset(switch_model &model) {
  system_reset(model);
  ssh_reset(model);
  routing_reset(model);
  addresses_reset(model);
  bgp_reset(model);
  mac_locking_reset(model);
  acls_reset(model);
  tcam_reset(model);
  vxlan_reset(model);
  logging_reset(model);
  interfaces_reset(model);
  vlans_reset(model);
}

uint64_t next_change(switch_model &model) {
  return ++model.change;
}

void changes_taken(switch_model &model, uint64_t change) {
  model.applied = change;
  vlans_forget_deleted(model);
}

} // namespace softswitch
