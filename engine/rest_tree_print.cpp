/* Result trees: printing as XML and as JSON. */
#include "engine/rest_dyn_string.h"
#include "engine/rest_tree_obj.h"

#include <charconv>
#include <json-c/json.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace {

/* --- Text, numbers, XML ----------------------------------------------------------------------------------
 */

/* Doubles the room ahead of need: with the plain growth of dynStringAppend() a long list would be copied once
 * for every kilobyte. */
void append(dyn_string_t *out, const char *text, size_t length) {
  int room = out->capacity - out->length;
  if (static_cast<int>(length) >= room) dynStringReserve(out, out->capacity + static_cast<int>(length));
  dynStringAppendN(out, text, static_cast<int>(length));
}

void append_number(dyn_string_t *out, int64_t number) {
  char text[24];
  append(out, text, std::to_chars(text, text + sizeof text, number).ptr - text);
}

void append_float(dyn_string_t *out, float number) {
  char text[64]; /* the largest float has 39 digits before the point */
  int length = snprintf(text, sizeof text, "%f", static_cast<double>(number));
  append(out, text, length);
}

void append_tag(dyn_string_t *out, const char *opening, const char *name) {
  append(out, opening, strlen(opening));
  append(out, name, strlen(name));
  append(out, ">", 1);
}

void append_xml_list(dyn_string_t *out, const node_t *node);

void append_xml_value(dyn_string_t *out, const node_t *node) {
  switch (node->val_type) {
  case VAL_TYPE_INT:
    return append_number(out, node->val_data.val_i);
  case VAL_TYPE_UINT:
    return append_number(out, node->val_data.val_u);
  case VAL_TYPE_FLOAT:
    return append_float(out, node->val_data.val_f);
  case VAL_TYPE_STRING:
    return append(out, node->val_data.val_s, strlen(node->val_data.val_s));
  case VAL_TYPE_SUBTREE:
    return append_xml_list(out, node->val_data.val_subtree_n1_ptr);
  case VAL_TYPE_NULL:
  case VAL_TYPE_START:
    return;
  }
}

void append_xml_list(dyn_string_t *out, const node_t *node) {
  for (; node != nullptr; node = node->next_ptr) {
    if (node->val_type == VAL_TYPE_START) continue;
    append_tag(out, "<", node->tagname);
    append_xml_value(out, node);
    append_tag(out, "</", node->tagname);
  }
}

/* --- JSON ------------------------------------------------------------------------------------------------
 */

/* Null for nodes that JSON leaves out. */
json_object *json_value(const node_t *node) {
  switch (node->val_type) {
  case VAL_TYPE_INT:
    return json_object_new_int(node->val_data.val_i);
  case VAL_TYPE_UINT:
    return json_object_new_int64(node->val_data.val_u);
  case VAL_TYPE_FLOAT:
    return json_object_new_double(static_cast<double>(node->val_data.val_f));
  case VAL_TYPE_STRING:
    return json_object_new_string(node->val_data.val_s);
  case VAL_TYPE_SUBTREE:
    return convert_to_jsonc_obj(node->val_data.val_subtree_n1_ptr);
  case VAL_TYPE_NULL:
  case VAL_TYPE_START:
    return nullptr;
  }
  return nullptr;
}

/* Appends json-c's text of an object and releases it. */
void append_json_object(dyn_string_t *out, json_object *object) {
  const char *text = json_object_to_json_string(object);
  if (text != nullptr) append(out, text, strlen(text));
  json_object_put(object);
}

bool has_member(const node_t *node) {
  return node->val_type != VAL_TYPE_START && node->val_type != VAL_TYPE_NULL;
}

/* Whether key `b` may follow key `a` in a list that is numbered upwards: such keys all differ. */
bool ascends(const char *a, const char *b) {
  size_t a_length = strlen(a), b_length = strlen(b);
  return a_length < b_length || (a_length == b_length && strcmp(a, b) < 0);
}

bool keys_ascend(const node_t *first) {
  const char *previous = nullptr;
  for (const node_t *node = first; node != nullptr; node = node->next_ptr) {
    if (!has_member(node)) continue;
    if (previous != nullptr && !ascends(previous, node->key)) return false;
    previous = node->key;
  }
  return true;
}

/* Compares each key with all before it. False also when there are too many for that. */
bool few_keys_differ(const node_t *first) {
  constexpr int FEW = 16;
  const char *keys[FEW];
  int count = 0;
  for (const node_t *node = first; node != nullptr; node = node->next_ptr) {
    if (!has_member(node)) continue;
    if (count == FEW) return false;
    for (int i = 0; i < count; i++) {
      if (strcmp(keys[i], node->key) == 0) return false;
    }
    keys[count++] = node->key;
  }
  return true;
}

/* Text that JSON holds as it stands. What needs escapes is left to json-c. */
bool is_plain(const char *text) {
  for (; *text != '\0'; text++) {
    if (static_cast<unsigned char>(*text) < ' ' || strchr("\"\\/", *text) != nullptr) return false;
  }
  return true;
}

void append_json_text(dyn_string_t *out, const char *text) {
  if (!is_plain(text)) return append_json_object(out, json_object_new_string(text));
  append(out, "\"", 1);
  append(out, text, strlen(text));
  append(out, "\"", 1);
}

void append_json_list(dyn_string_t *out, const node_t *first);

void append_json_value(dyn_string_t *out, const node_t *node) {
  switch (node->val_type) {
  case VAL_TYPE_INT:
    return append_number(out, node->val_data.val_i);
  case VAL_TYPE_UINT:
    return append_number(out, node->val_data.val_u);
  case VAL_TYPE_FLOAT:
    return append_json_object(out, json_value(node));
  case VAL_TYPE_STRING:
    return append_json_text(out, node->val_data.val_s);
  case VAL_TYPE_SUBTREE:
    return append_json_list(out, node->val_data.val_subtree_n1_ptr);
  case VAL_TYPE_NULL:
  case VAL_TYPE_START:
    return;
  }
}

/* The text that json-c makes of the list, written without making its objects first, which for a long list
 * costs more than everything else together. A list in which keys may repeat goes through json-c after all. */
void append_json_list(dyn_string_t *out, const node_t *first) {
  if (!keys_ascend(first) && !few_keys_differ(first))
    return append_json_object(out, convert_to_jsonc_obj(first));
  const char *separator = "{ ";
  for (const node_t *node = first; node != nullptr; node = node->next_ptr) {
    if (!has_member(node)) continue;
    append(out, separator, 2);
    append_json_text(out, node->key);
    append(out, ": ", 2);
    append_json_value(out, node);
    separator = ", ";
  }
  if (separator[0] == '{') append(out, "{", 1);
  append(out, " }", 2);
}

/* Hands the text over to the caller; only its record is freed here. */
void take_text(dyn_string_t *out, char **out_ptr) {
  *out_ptr = out->text;
  free(out);
}

} // namespace

void print_tree_by_xml(const node_t *n1_ptr, char **out_ptr) {
  dyn_string_t *out = dynStringNew();
  if (out == nullptr) return;
  append_xml_list(out, n1_ptr);
  take_text(out, out_ptr);
}

void print_tree_by_json(const node_t *n1_ptr, char **out_ptr) {
  dyn_string_t *out = dynStringNew();
  if (out == nullptr) return;
  append_json_list(out, n1_ptr);
  take_text(out, out_ptr);
}

json_object *convert_to_jsonc_obj(const node_t *n1_ptr) {
  json_object *object = json_object_new_object();
  for (const node_t *node = n1_ptr; node != nullptr && object != nullptr; node = node->next_ptr) {
    json_object *value = json_value(node);
    if (value != nullptr) json_object_object_add(object, node->key, value);
  }
  return object;
}
