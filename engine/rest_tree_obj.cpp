/* Result trees: building, walking and freeing. Printing is in rest_tree_print.cpp.
 *
 * Nodes are large (1.5 KiB) and a long list needs thousands of them for one request, so freed nodes are kept,
 * zero-filled again, for the next tree. Only the bytes that were used are cleared: that is what makes a list
 * of 4094 VLANs cheap. Builds with AddressSanitizer keep none, so that it sees every use after free. */
#include "engine/rest_tree_obj.h"

#include <charconv>
#include <stdlib.h>
#include <string.h>

namespace {

#ifdef KESTREL_SANITIZED
constexpr unsigned MAX_SPARE_NODES = 0;
#else
constexpr unsigned MAX_SPARE_NODES = 16384; /* a list of all 4094 VLANs takes 12 289 */
#endif

node_t *spare_nodes = nullptr; /* zero-filled but for next_ptr, which links them */
unsigned num_spare_nodes = 0;

/* Where a list ends, remembered in its sentinel's unused value so that appending does not walk the list. Such
 * a note holds only while no list anywhere was cut or freed since it was made. */
struct tail_note {
  node_t *tail;
  uint64_t generation;
};
uint64_t structure_generation = 1;

char *tail_note_bytes(node_t *sentinel) {
  return sentinel->val_data.val_s + sizeof sentinel->val_data.val_s - sizeof(tail_note);
}

node_t *allocate_node() {
  if (spare_nodes == nullptr) return static_cast<node_t *>(calloc(1, sizeof(node_t)));
  node_t *node = spare_nodes;
  spare_nodes = node->next_ptr;
  node->next_ptr = nullptr;
  num_spare_nodes--;
  return node;
}

void clear_text(char *text, size_t size) {
  memset(text, 0, strnlen(text, size));
}

void clear_used_bytes(node_t *node) {
  clear_text(node->key, sizeof node->key);
  clear_text(node->tagname, sizeof node->tagname);
  if (node->val_type == VAL_TYPE_STRING) clear_text(node->val_data.val_s, sizeof node->val_data.val_s);
  if (node->val_type == VAL_TYPE_START) memset(tail_note_bytes(node), 0, sizeof(tail_note));
  node->val_data.val_subtree_n1_ptr = nullptr;
  node->val_type = VAL_TYPE_INT;
}

void release_node(node_t *node) {
  if (num_spare_nodes >= MAX_SPARE_NODES) {
    free(node);
    return;
  }
  clear_used_bytes(node);
  node->next_ptr = spare_nodes;
  spare_nodes = node;
  num_spare_nodes++;
}

/* Terminates what it copies: a caller may have changed the type of a node, whose bytes were then not all
 * cleared. */
void copy_text(char *dst, size_t size, const char *src) {
  size_t length = src == nullptr ? 0 : strnlen(src, size - 1);
  if (length > 0) memcpy(dst, src, length);
  dst[length] = '\0';
}

node_t *walk_to_end(node_t *node) {
  while (node->next_ptr != nullptr) node = node->next_ptr;
  return node;
}

node_t *find_tail(node_t *node) {
  if (node->val_type != VAL_TYPE_START) return walk_to_end(node);
  tail_note note;
  memcpy(&note, tail_note_bytes(node), sizeof note);
  return walk_to_end(note.generation == structure_generation ? note.tail : node);
}

void note_tail(node_t *first, node_t *tail) {
  if (first->val_type != VAL_TYPE_START) return;
  tail_note note = {tail, structure_generation};
  memcpy(tail_note_bytes(first), &note, sizeof note);
}

void copy_out(char *dst, int size, const char *src) {
  if (dst == nullptr || size <= 0) return;
  memset(dst, 0, size);
  copy_text(dst, size, src);
}

} // namespace

node_t *new_tree(void) {
  node_t *sentinel = allocate_node();
  if (sentinel != nullptr) sentinel->val_type = VAL_TYPE_START;
  return sentinel;
}

node_t *append_tree_object(node_t *n1_ptr, const char *key, const char *tagname) {
  if (n1_ptr == nullptr) return nullptr;
  node_t *node = allocate_node();
  if (node == nullptr) return nullptr;
  copy_text(node->key, sizeof node->key, key);
  copy_text(node->tagname, sizeof node->tagname, tagname);
  find_tail(n1_ptr)->next_ptr = node;
  note_tail(n1_ptr, node);
  return node;
}

node_t *append_tree_int(node_t *n1_ptr, const char *key, const char *tagname, int val) {
  node_t *node = append_tree_object(n1_ptr, key, tagname);
  if (node != nullptr) node->val_data.val_i = val;
  return node;
}

node_t *append_tree_uint(node_t *n1_ptr, const char *key, const char *tagname, uint32_t val) {
  node_t *node = append_tree_object(n1_ptr, key, tagname);
  if (node == nullptr) return nullptr;
  node->val_type = VAL_TYPE_UINT;
  node->val_data.val_u = val;
  return node;
}

node_t *append_tree_float(node_t *n1_ptr, const char *key, const char *tagname, float val) {
  node_t *node = append_tree_object(n1_ptr, key, tagname);
  if (node == nullptr) return nullptr;
  node->val_type = VAL_TYPE_FLOAT;
  node->val_data.val_f = val;
  return node;
}

node_t *append_tree_string(node_t *n1_ptr, const char *key, const char *tagname, const char *val) {
  node_t *node = append_tree_object(n1_ptr, key, tagname);
  if (node == nullptr) return nullptr;
  node->val_type = VAL_TYPE_STRING;
  copy_text(node->val_data.val_s, sizeof node->val_data.val_s, val);
  return node;
}

node_t *append_tree_bool(node_t *n1_ptr, const char *key, const char *tagname, char val) {
  return append_tree_string(n1_ptr, key, tagname, val == 1 ? "TRUE" : "FALSE");
}

node_t *append_tree_subtree(node_t *n1_ptr, const char *key, const char *tagname) {
  if (n1_ptr == nullptr) return nullptr;
  node_t *children = new_tree();
  if (children == nullptr) return nullptr;
  node_t *node = append_tree_object(n1_ptr, key, tagname);
  if (node == nullptr) {
    release_node(children);
    return nullptr;
  }
  node->val_type = VAL_TYPE_SUBTREE;
  node->val_data.val_subtree_n1_ptr = children;
  return node;
}

node_t *append_branch(node_t *n1_ptr, const char *name) {
  return get_subtree_node1(append_tree_subtree(n1_ptr, name, name));
}

node_t *append_entry(node_t *n1_ptr, uint32_t position, const char *tagname) {
  char key[16] = {};
  std::to_chars(key, key + sizeof key - 1, position);
  return get_subtree_node1(append_tree_subtree(n1_ptr, key, tagname));
}

node_t *get_next_node(const node_t *node) {
  return node == nullptr ? nullptr : node->next_ptr;
}

node_t *get_last_node(node_t *node) {
  return node == nullptr ? nullptr : walk_to_end(node);
}

node_t *get_subtree_node1(const node_t *node) {
  return node == nullptr ? nullptr : node->val_data.val_subtree_n1_ptr;
}

void set_next_node(node_t *node, node_t *next) {
  if (node == nullptr) return;
  structure_generation++;
  node->next_ptr = next;
}

void set_subtree_node1(node_t *node, node_t *child) {
  if (node == nullptr) return;
  structure_generation++;
  if (node->val_data.val_subtree_n1_ptr != nullptr) release_node(node->val_data.val_subtree_n1_ptr);
  node->val_data.val_subtree_n1_ptr = child;
}

VAL_TYPE_t get_node_val_type(const node_t *node) {
  return node == nullptr ? VAL_TYPE_NULL : node->val_type;
}

void get_node_key(const node_t *node, char *key, int str_size) {
  copy_out(key, str_size, node == nullptr ? nullptr : node->key);
}

void get_node_tagname(const node_t *node, char *tagname, int str_size) {
  copy_out(tagname, str_size, node == nullptr ? nullptr : node->tagname);
}

void get_node_val_data_string(const node_t *node, char *str, int str_size) {
  bool is_string = get_node_val_type(node) == VAL_TYPE_STRING;
  copy_out(str, str_size, is_string ? node->val_data.val_s : nullptr);
}

void set_node_key(node_t *node, const char *key) {
  if (node == nullptr) return;
  memset(node->key, 0, sizeof node->key);
  copy_text(node->key, sizeof node->key, key);
}

void free_tree(node_t *n1_ptr) {
  structure_generation++;
  while (n1_ptr != nullptr) {
    node_t *next = n1_ptr->next_ptr;
    if (n1_ptr->val_type == VAL_TYPE_SUBTREE) free_tree(n1_ptr->val_data.val_subtree_n1_ptr);
    release_node(n1_ptr);
    n1_ptr = next;
  }
}
