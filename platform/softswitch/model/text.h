/* What holds for every text that the switch keeps: names and descriptions; and bytes as text. */
#ifndef KESTREL_SOFTSWITCH_MODEL_TEXT_H
#define KESTREL_SOFTSWITCH_MODEL_TEXT_H

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace softswitch {

/* Whether a text holds a byte that neither a line of the configuration language nor an answer may hold. */
inline bool has_control_character(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](unsigned char byte) { return byte < 0x20 || byte == 0x7f; });
}

/* Whether a text is UTF-8 (RFC 3629): no byte out of place, no longer form than needed, no surrogate, nothing
 * above U+10FFFF. */
inline bool utf8_valid(std::string_view text) {
  static constexpr uint32_t smallest[] = {0, 0x80, 0x800, 0x10000}; /* by how many bytes follow the first */
  while (!text.empty()) {
    auto first = static_cast<unsigned char>(text[0]);
    size_t more = first < 0x80 ? 0 : first < 0xe0 ? 1 : first < 0xf0 ? 2 : 3;
    if ((first >= 0x80 && first < 0xc0) || first >= 0xf8 || text.size() <= more) return false;
    uint32_t code = more == 0 ? first : first & (0x3fu >> more);
    for (size_t i = 1; i <= more; i++) {
      auto byte = static_cast<unsigned char>(text[i]);
      if ((byte & 0xc0) != 0x80) return false;
      code = code << 6 | (byte & 0x3f);
    }
    if (code < smallest[more] || code > 0x10ffff || (code >= 0xd800 && code < 0xe000)) return false;
    text.remove_prefix(more + 1);
  }
  return true;
}

/* Reads decimal digits alone, no sign, no leading zero; false for anything else. A number too large for 32
 * bits reads as the largest. */
inline bool decimal_read(std::string_view text, uint32_t *number) {
  bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
  if (!digits || (text.size() > 1 && text[0] == '0')) return false;
  if (std::from_chars(text.data(), text.data() + text.size(), *number).ec != std::errc())
    *number = UINT32_MAX;
  return true;
}

/* Reads two hexadecimal digits of any case; false for anything else. */
inline bool hex_byte_read(std::string_view text, uint32_t *byte) {
  if (text.size() != 2) return false;
  auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), *byte, 16);
  return failure == std::errc() && end == text.data() + text.size();
}

/* A byte as two hexadecimal digits in lower case. */
inline std::string hex_byte_text(uint32_t byte) {
  static constexpr std::string_view digits = "0123456789abcdef";
  return {digits[byte >> 4 & 15], digits[byte & 15]};
}

} // namespace softswitch

#endif
