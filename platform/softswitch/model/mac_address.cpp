/* MAC addresses; see mac_address.h. */
#include "platform/softswitch/model/mac_address.h"

#include <charconv>

namespace softswitch {

static constexpr size_t group_size = 3; /* two digits and the colon after them */
static constexpr size_t text_size = std::tuple_size_v<mac_address> * group_size - 1;

bool mac_read(std::string_view text, mac_address *mac) {
  if (text.size() != text_size) return false;
  for (size_t group = 0; group < mac->size(); group++) {
    const char *digits = text.data() + group * group_size;
    std::from_chars_result read = std::from_chars(digits, digits + 2, (*mac)[group], 16);
    if (read.ec != std::errc() || read.ptr != digits + 2) return false;
    if (group + 1 < mac->size() && digits[2] != ':') return false;
  }
  return true;
}

bool station_mac_read(std::string_view text, mac_address *mac) {
  if (!mac_read(text, mac)) return false;
  bool group_address = (*mac)[0] & 1;
  return !group_address && *mac != mac_address{};
}

std::string mac_text(const mac_address &mac) {
  static constexpr char digits[] = "0123456789ABCDEF";
  std::string text;
  for (uint8_t byte : mac) {
    if (!text.empty()) text += ':';
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

} // namespace softswitch
