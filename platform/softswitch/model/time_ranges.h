/* Time ranges, in which rules of access control lists count. The switch keeps no times of its own: lab
 * control says which ranges there are and whether each is active now. Like cables they are no configuration.
 */
#ifndef KESTREL_SOFTSWITCH_MODEL_TIME_RANGES_H
#define KESTREL_SOFTSWITCH_MODEL_TIME_RANGES_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace softswitch {

struct switch_model;

struct time_range_table {
  std::map<std::string, uint32_t, std::less<>> states; /* OPEN_ACL_RULE_STATUS_t by name, those defined */
};

/* Defines a range with its state, or with OPEN_ACL_RULE_STATUS_NONE makes it undefined. False, with nothing
 * changed, for what is no name (acl_name_valid()). */
bool time_range_set(switch_model &model, std::string_view name, uint32_t state);
/* The state of a range; OPEN_ACL_RULE_STATUS_NONE when it is not defined. */
uint32_t time_range_state(const switch_model &model, std::string_view name);

} // namespace softswitch

#endif
