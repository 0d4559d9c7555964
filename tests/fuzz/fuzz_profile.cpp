/* Fuzz target: chassis profiles. Whatever the bytes, parsing ends with a good profile, or with a reason and
 * the profile as it was. */
#include "platform/softswitch/model/chassis_fields.h"
#include "platform/softswitch/services/profile.h"

#include <set>
#include <stdint.h>
#include <stdlib.h>

using namespace softswitch;

/* Whether each field of an item holds what its own rule takes. */
template <class item>
static bool fields_are_good(std::span<const chassis_field<item>> fields, const item &of) {
  for (const auto &field : fields) {
    item copy = of;
    bool number = field.rule.what == field_rule::kind::number;
    bool good = number ? field_set_number(field, of.*field.number, &copy)
                       : field_set_text(field, field_text(field, of), &copy);
    if (!good || field_text(field, copy) != field_text(field, of)) return false;
  }
  return true;
}

template <class item>
static bool items_are_good(const std::vector<item> &items, std::span<const chassis_field<item>> fields,
                           size_t max) {
  for (const item &each : items) {
    if (!fields_are_good(fields, each)) return false;
  }
  return items.size() <= max;
}

static bool transceivers_are_good(const chassis_profile &profile) {
  std::set<std::string> cages;
  for (const port_profile &port : profile.ports) {
    if (!port.copper) cages.insert(port.name);
  }
  for (const transceiver_profile &given : profile.transceivers) {
    if (cages.erase(given.port) == 0 || !fields_are_good(transceiver_fields, given.fitted)) return false;
  }
  return true;
}

static bool chassis_is_good(const chassis_profile &profile) {
  for (const temperature_sensor &sensor : profile.temperature_sensors) {
    if (!sensor_thresholds_rise(sensor)) return false;
  }
  return items_are_good(profile.fans, fan_fields, fans_max) &&
         items_are_good(profile.power_supplies, power_supply_fields, power_supplies_max) &&
         items_are_good(profile.temperature_sensors, temperature_sensor_fields, temperature_sensors_max) &&
         transceivers_are_good(profile);
}

static bool is_good(const chassis_profile &profile) {
  if (profile.ports.empty() || profile.ports.size() > 54 || profile.mac.size() != 17) return false;
  for (const port_profile &port : profile.ports) {
    if (!port.name.starts_with("0/") || port.speed_mbps < 100 || port.speed_mbps > 40000) return false;
  }
  return fields_are_good(identity_fields, profile) && chassis_is_good(profile);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::string text(reinterpret_cast<const char *>(data), size);
  std::string error;
  chassis_profile profile;
  profile.model = "untouched";
  bool taken = parse_profile(text, "profile", &profile, &error);
  if (taken && !is_good(profile)) abort();
  if (!taken && (profile.model != "untouched" || !error.starts_with("profile:"))) abort();
  return 0;
}
