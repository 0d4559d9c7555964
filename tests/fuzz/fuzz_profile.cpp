/* Fuzz target: chassis profiles. Whatever the bytes, parsing ends with a good profile, or with a reason and
 * the profile as it was. */
#include "platform/softswitch/services/profile.h"

#include <stdint.h>
#include <stdlib.h>

using namespace softswitch;

static bool is_good(const chassis_profile &profile) {
  if (profile.ports.empty() || profile.ports.size() > 54 || profile.mac.size() != 17) return false;
  for (const port_profile &port : profile.ports) {
    if (!port.name.starts_with("0/") || port.speed_mbps < 100 || port.speed_mbps > 40000) return false;
  }
  for (const std::string *text :
       {&profile.model, &profile.serial, &profile.description, &profile.os_version, &profile.storage}) {
    if (text->empty() || text->size() > 255) return false;
  }
  return true;
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
