/* Where things stand in a JSON text: json-c keeps no positions and silently takes the last of two members of
 * one name, so the profile reader asks here for both. */
#ifndef KESTREL_SOFTSWITCH_JSON_LINES_H
#define KESTREL_SOFTSWITCH_JSON_LINES_H

#include <map>
#include <string>
#include <string_view>

namespace softswitch {

/* Longer than any name that means something; keeps the paths of a hostile text short. */
inline constexpr size_t json_name_length_max = 64;

/* What was found in a text. Values are named by their path: "" is the whole, "ports" a member,
 * "ports[0].name" a member of the first entry of a list. */
struct json_line_index {
  std::map<std::string, size_t> lines; /* path -> line, from 1; of a duplicate the second one's */
  std::string duplicate;               /* path of the first member that its object has twice */
  size_t duplicate_line = 0;           /* its line; 0 when there is none */
  /* Line of the first member name that is empty, that is not in double quotes, which json-c lets pass, or
   * that is spelled with an escape, by which two spellings could pass for two members; 0 when there is none.
   */
  size_t odd_name_line = 0;
};

/* Indexes a text that json-c has accepted. Of any other text the index may be partial. Member names stand in
 * paths as they are written, escapes too, and cut after json_name_length_max characters. */
json_line_index index_json_lines(std::string_view text);

/* The line of a position in a text, from 1. */
size_t line_at(std::string_view text, size_t position);

} // namespace softswitch

#endif
