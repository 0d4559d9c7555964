/* Small services on text: what a terminal may be shown, how wide it is there, how alike two words are. */
#ifndef KESTREL_TOOLS_KESTRELCTL_TEXT_H
#define KESTREL_TOOLS_KESTRELCTL_TEXT_H

#include <string>
#include <string_view>
#include <vector>

/* The text with everything escaped that would command a terminal instead of showing there: control
 * characters and bytes that are no UTF-8 as \x1b, line feeds and tabs as \n and \t, characters that have no
 * width or turn the direction of writing as \u202e. Anything else stays as it is. */
std::string printable(std::string_view text);

/* How many columns of a terminal a text takes that printable() has returned. */
size_t column_count(std::string_view text);

/* Every byte but letters, digits, "-", "." and "_" as %XX. */
std::string percent_encoded(std::string_view text);

/* How many letters must be added, removed or replaced to make one word of the other. */
size_t edit_distance(std::string_view a, std::string_view b);

bool equal_without_case(std::string_view a, std::string_view b);
bool only_digits(std::string_view text);
/* The text without blanks, tabs and line ends around it. */
std::string_view trimmed(std::string_view text);
std::vector<std::string> split(std::string_view text, char separator);
std::string joined(const std::vector<std::string> &words, std::string_view separator);

#endif
