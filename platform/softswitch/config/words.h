/* Reasons that several families of lines give. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_WORDS_H
#define KESTREL_SOFTSWITCH_CONFIG_WORDS_H

#include <cstdint>
#include <string>

namespace softswitch {

inline std::string range_words(const std::string &what, const std::string &first, const std::string &last) {
  return what + " out of range " + first + ".." + last;
}

inline std::string range_words(const std::string &what, uint32_t first, uint32_t last) {
  return range_words(what, std::to_string(first), std::to_string(last));
}

} // namespace softswitch

#endif
