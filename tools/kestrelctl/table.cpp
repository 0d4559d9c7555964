/* The data is a tree of objects, whose leaves are numbers and texts. A list is an object whose members are
 * objects named by their positions: "1", "2", ... */
#include "tools/kestrelctl/table.h"

#include "tools/kestrelctl/text.h"

#include <algorithm>
#include <string_view>
#include <vector>

static const char INDENT[] = "  ";
static const size_t GAP = 2;       /* blanks between columns */
static const size_t WIDEST = 1000; /* of a table; blanks that align more than that only fill the memory */

static bool is_subtree(json_object *value) {
  return json_object_is_type(value, json_type_object);
}

static bool is_list(json_object *object) {
  json_object_object_foreach(object, key, value) {
    if (!only_digits(key) || !is_subtree(value)) return false;
  }
  return json_object_object_length(object) > 0;
}

/* A leaf as it is shown. */
static std::string leaf_text(json_object *value) {
  if (value == nullptr) return "";
  if (!json_object_is_type(value, json_type_string)) return printable(json_object_to_json_string(value));
  const size_t length = static_cast<size_t>(json_object_get_string_len(value));
  return printable(std::string_view(json_object_get_string(value), length));
}

/* --- Columns ------------------------------------------------------------------------------------------- */

struct column {
  std::string name; /* of the member */
  size_t width;     /* in columns of the terminal */
  bool numbers;     /* nothing but numbers: aligned at the right */
};

static void widen(std::vector<column> *columns, const char *name, json_object *value) {
  const auto same = [&](const column &one) { return one.name == name; };
  auto found = std::find_if(columns->begin(), columns->end(), same);
  if (found == columns->end()) found = columns->insert(found, {name, column_count(printable(name)), true});
  found->width = std::max(found->width, column_count(leaf_text(value)));
  found->numbers = found->numbers && json_object_is_type(value, json_type_int);
}

static bool is_too_wide(const std::vector<column> &columns) {
  size_t width = 0;
  for (const column &one : columns) width += GAP + one.width;
  return width > WIDEST;
}

/* The columns of a list; only some of them when they are too wide for a table. */
static std::vector<column> columns_of(json_object *list) {
  std::vector<column> columns;
  json_object_object_foreach(list, position, row) {
    (void)position;
    json_object_object_foreach(row, name, value) {
      widen(&columns, name, value);
      if (is_too_wide(columns)) return columns;
    }
  }
  return columns;
}

static std::string padded(const std::string &text, const column &in) {
  const std::string blanks(in.width - std::min(in.width, column_count(text)), ' ');
  return in.numbers ? blanks + text : text + blanks;
}

/* Cells side by side, without blanks at the end. */
static std::string line_of(const std::vector<column> &columns, const std::vector<std::string> &cells) {
  std::string line;
  for (size_t i = 0; i < columns.size(); i++)
    line += (i > 0 ? std::string(GAP, ' ') : "") + padded(cells[i], columns[i]);
  return line.erase(line.find_last_not_of(' ') + 1);
}

static std::string print_table(json_object *list, const std::vector<column> &columns,
                               const std::string &indent, bool bold) {
  std::vector<std::string> cells;
  for (const column &one : columns) cells.push_back(printable(one.name));
  const std::string heading = line_of(columns, cells);
  std::string out = indent + (bold ? "\x1b[1m" + heading + "\x1b[0m" : heading) + "\n";
  json_object_object_foreach(list, position, row) {
    (void)position;
    cells.clear();
    for (const column &one : columns)
      cells.push_back(leaf_text(json_object_object_get(row, one.name.c_str())));
    out += indent + line_of(columns, cells) + "\n";
  }
  return out;
}

/* --- Objects ------------------------------------------------------------------------------------------- */

static std::string print_value(json_object *object, const std::string &indent, bool bold);

/* The leaves as "name  value", the values aligned, then what is nested, each below its name. */
static std::string print_object(json_object *object, const std::string &indent, bool bold) {
  std::vector<column> columns = {{"", 0, false}, {"", 0, false}};
  json_object_object_foreach(object, leaf_name, leaf) {
    const size_t width = is_subtree(leaf) ? 0 : column_count(printable(leaf_name));
    if (width <= WIDEST) columns[0].width = std::max(columns[0].width, width);
  }
  std::string leaves, nested;
  json_object_object_foreach(object, name, value) {
    if (is_subtree(value))
      nested += indent + printable(name) + "\n" + print_value(value, indent + INDENT, bold);
    else
      leaves += indent + line_of(columns, {printable(name), leaf_text(value)}) + "\n";
  }
  return leaves + nested;
}

static bool has_subtrees(json_object *object) {
  json_object_object_foreach(object, name, value) {
    (void)name;
    if (is_subtree(value)) return true;
  }
  return false;
}

/* A list whose entries have lists of their own, or too much else, does not fit into columns: one entry below
 * the other. */
static std::string print_entries(json_object *list, const std::string &indent, bool bold) {
  std::string out;
  json_object_object_foreach(list, position, entry) {
    (void)position;
    out += (out.empty() ? "" : "\n") + print_object(entry, indent, bold);
  }
  return out;
}

static std::string print_value(json_object *object, const std::string &indent, bool bold) {
  if (json_object_object_length(object) == 0) return "";
  if (!is_list(object)) return print_object(object, indent, bold);
  json_object_object_foreach(object, position, entry) {
    (void)position;
    if (has_subtrees(entry)) return print_entries(object, indent, bold);
  }
  const std::vector<column> columns = columns_of(object);
  return is_too_wide(columns) ? print_entries(object, indent, bold)
                              : print_table(object, columns, indent, bold);
}

std::string print_data(json_object *data, bool bold) {
  if (data == nullptr) return "";
  if (json_object_object_length(data) == 1 && !is_list(data)) {
    json_object_object_foreach(data, name, value) {
      (void)name;
      if (is_subtree(value)) return print_value(value, "", bold);
    }
  }
  return print_value(data, "", bold);
}
