/* Result trees: printing as XML and as JSON. */
#include "engine/rest_dyn_string.h"
#include "engine/rest_tree_obj.h"

#include <charconv>
#include <json-c/json.h>
#include <stdio.h>
#include <string.h>
#include <stdlib.h>

namespace {

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

} // namespace

void print_tree_by_xml(const node_t *n1_ptr, char **out_ptr) {
  dyn_string_t *out = dynStringNew();
  if (out == nullptr) return;
  append_xml_list(out, n1_ptr);
  *out_ptr = out->text; /* the text itself is the result; only its record is freed here */
  free(out);
}

json_object *convert_to_jsonc_obj(const node_t *n1_ptr) {
  json_object *object = json_object_new_object();
  for (const node_t *node = n1_ptr; node != nullptr && object != nullptr; node = node->next_ptr) {
    json_object *value = json_value(node);
    if (value != nullptr) json_object_object_add(object, node->key, value);
  }
  return object;
}

void print_tree_by_json(const node_t *n1_ptr, char **out_ptr) {
  json_object *object = convert_to_jsonc_obj(n1_ptr);
  const char *text = json_object_to_json_string(object);
  char *copy = text == nullptr ? nullptr : strdup(text);
  if (copy != nullptr) *out_ptr = copy;
  json_object_put(object);
}
