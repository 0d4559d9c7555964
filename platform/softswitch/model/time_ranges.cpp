/* Time ranges; see time_ranges.h. */
#include "platform/softswitch/model/time_ranges.h"

#include "platform/softswitch/model/switch.h"

namespace softswitch {

bool time_range_set(switch_model &model, std::string_view name, uint32_t state) {
  if (!acl_name_valid(name)) return false;
  auto &states = model.time_ranges.edit()->states;
  states.erase(std::string(name));
  if (state != OPEN_ACL_RULE_STATUS_NONE) states.emplace(name, state);
  return true;
}

uint32_t time_range_state(const switch_model &model, std::string_view name) {
  auto found = model.time_ranges->states.find(name);
  if (found == model.time_ranges->states.end()) return OPEN_ACL_RULE_STATUS_NONE;
  return found->second;
}

} // namespace softswitch
