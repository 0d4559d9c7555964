/* What holds for every text that the switch keeps: names and descriptions. */
#ifndef KESTREL_SOFTSWITCH_MODEL_TEXT_H
#define KESTREL_SOFTSWITCH_MODEL_TEXT_H

#include <algorithm>
#include <string_view>

namespace softswitch {

/* Whether a text holds a byte that neither a line of the configuration language nor an answer may hold. */
inline bool has_control_character(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](unsigned char byte) { return byte < 0x20 || byte == 0x7f; });
}

} // namespace softswitch

#endif
