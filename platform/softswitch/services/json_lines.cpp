/* Positions in JSON texts; see json_lines.h. */
#include "platform/softswitch/services/json_lines.h"

#include <algorithm>
#include <vector>

namespace softswitch {

/* An object or list whose end has not come yet. */
struct open_value {
  std::string path;
  bool is_object;
  size_t next_entry;  /* lists: index of the entry to come */
  std::string member; /* objects: path of the member whose value is to come; empty before its colon */
};

/* Reads a text from left to right, keeping a stack instead of recursing. */
struct json_scanner {
  std::string_view text;
  size_t at = 0;
  size_t line = 1;
  std::vector<open_value> open = {};
  json_line_index index = {};
};

size_t line_at(std::string_view text, size_t position) {
  std::string_view before = text.substr(0, std::min(position, text.size()));
  return 1 + static_cast<size_t>(std::count(before.begin(), before.end(), '\n'));
}

/* Takes a string with the cursor on its first quote; answers what stands between the quotes. */
static std::string_view take_string(json_scanner &scan) {
  size_t start = ++scan.at;
  while (scan.at < scan.text.size() && scan.text[scan.at] != '"') {
    if (scan.text[scan.at] == '\\') scan.at++;
    if (scan.at < scan.text.size() && scan.text[scan.at] == '\n') scan.line++;
    scan.at++;
  }
  std::string_view inside = scan.text.substr(std::min(start, scan.text.size()));
  inside = inside.substr(0, std::min(scan.at, scan.text.size()) - std::min(start, scan.text.size()));
  scan.at++;
  return inside;
}

static bool member_name_is_next(const json_scanner &scan) {
  return !scan.open.empty() && scan.open.back().is_object && scan.open.back().member.empty();
}

static void note_odd_name(json_scanner &scan, size_t line) {
  if (scan.index.odd_name_line == 0) scan.index.odd_name_line = line;
}

static void take_member_name(json_scanner &scan) {
  size_t line = scan.line;
  open_value &parent = scan.open.back();
  std::string name(take_string(scan).substr(0, json_name_length_max));
  parent.member = parent.path.empty() ? name : parent.path + "." + name;
  if (name.empty() || name.find('\\') != name.npos) note_odd_name(scan, line);
  bool is_new = scan.index.lines.emplace(parent.member, line).second;
  if (is_new || scan.index.duplicate_line > 0) return;
  scan.index.lines[parent.member] = line;
  scan.index.duplicate = parent.member;
  scan.index.duplicate_line = line;
}

/* The path of the value that begins here; moves its parent on to the value after it. */
static std::string begin_value(json_scanner &scan) {
  if (scan.open.empty()) return "";
  open_value &parent = scan.open.back();
  if (parent.is_object) {
    std::string path = std::move(parent.member);
    parent.member.clear();
    return path;
  }
  return parent.path + "[" + std::to_string(parent.next_entry++) + "]";
}

static void take_value(json_scanner &scan, char first) {
  if (member_name_is_next(scan)) note_odd_name(scan, scan.line);
  std::string path = begin_value(scan);
  scan.index.lines.emplace(path, scan.line);
  if (first == '{' || first == '[') {
    scan.open.push_back({path, first == '{', 0, ""});
    scan.at++;
  } else if (first == '"') {
    take_string(scan);
  } else {
    scan.at = std::min(scan.text.find_first_of(",]} \t\r\n", scan.at), scan.text.size());
  }
}

json_line_index index_json_lines(std::string_view text) {
  json_scanner scan{text};
  while (scan.at < text.size()) {
    char c = text[scan.at];
    if (c == '"' && member_name_is_next(scan)) {
      take_member_name(scan);
    } else if (c == '}' || c == ']') {
      if (!scan.open.empty()) scan.open.pop_back();
      scan.at++;
    } else if (c == '\n' || c == ' ' || c == '\t' || c == '\r' || c == ',' || c == ':') {
      if (c == '\n') scan.line++;
      scan.at++;
    } else {
      take_value(scan, c);
    }
  }
  return scan.index;
}

} // namespace softswitch
