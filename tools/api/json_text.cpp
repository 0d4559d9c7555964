#include "tools/api/json_text.h"

enum { INDENT = 2, LONGEST_LINE = 110 };

static std::string on_one_line(json_object *value) {
  return json_object_to_json_string_ext(value, JSON_C_TO_STRING_SPACED | JSON_C_TO_STRING_NOSLASHESCAPE);
}

static void append_value(std::string *text, json_object *value, size_t indent);

/* The entries of an array or object, each on lines of its own. */
static void append_entries(std::string *text, json_object *value, size_t indent) {
  const std::string line_start = "\n" + std::string(indent, ' ');
  const char *separator = "";
  if (json_object_is_type(value, json_type_array)) {
    for (size_t i = 0; i < json_object_array_length(value); ++i) {
      *text += separator + line_start;
      append_value(text, json_object_array_get_idx(value, i), indent);
      separator = ",";
    }
    return;
  }
  json_object_object_foreach(value, name, member) {
    const json_owner name_in_quotes(json_object_new_string(name));
    *text += separator + line_start + on_one_line(name_in_quotes.get()) + ": ";
    append_value(text, member, indent);
    separator = ",";
  }
}

/* Appends it behind what its line holds already. */
static void append_value(std::string *text, json_object *value, size_t indent) {
  const bool is_array = json_object_is_type(value, json_type_array);
  if (!is_array && !json_object_is_type(value, json_type_object)) {
    *text += on_one_line(value);
    return;
  }
  const std::string line = on_one_line(value);
  const size_t column = text->size() - (text->rfind('\n') + 1);
  if (column + line.size() <= LONGEST_LINE - 1) {
    *text += line;
    return;
  }
  *text += is_array ? "[" : "{";
  append_entries(text, value, indent + INDENT);
  *text += "\n" + std::string(indent, ' ') + (is_array ? "]" : "}");
}

std::string json_text(json_object *value) {
  std::string text;
  append_value(&text, value, 0);
  return text + "\n";
}
