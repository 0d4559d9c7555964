/* Letters of ASCII, whatever the locale says. */
#ifndef KESTREL_TOOLS_LETTERS_H
#define KESTREL_TOOLS_LETTERS_H

#include <string>
#include <string_view>

inline bool is_letter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

inline std::string lower_case(std::string_view text) {
  std::string lower(text);
  for (char &c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

#endif
