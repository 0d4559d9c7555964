/* Result trees: every answer is built as a small tree of named, typed values and printed by the response
 * writer (engine/rest_common.h) as XML or JSON. Modules never print text themselves.
 *
 * A list always begins with a sentinel node of type VAL_TYPE_START; the pointer to it is the list. A subtree
 * node owns a child list. Whoever holds the first node owns the whole tree and releases it with free_tree();
 * handing a tree to a response function hands over ownership. */
#ifndef KESTREL_ENGINE_REST_TREE_OBJ_H
#define KESTREL_ENGINE_REST_TREE_OBJ_H

#include <json-c/json_types.h>
#include <stdint.h>

typedef enum {
  VAL_TYPE_INT = 0,
  VAL_TYPE_UINT = 1,
  VAL_TYPE_FLOAT = 2,
  VAL_TYPE_STRING = 3,
  VAL_TYPE_SUBTREE = 4,
  VAL_TYPE_NULL = 5,
  VAL_TYPE_START = 6, /* the sentinel that begins a list */
} VAL_TYPE_t;

struct node_s;

typedef union val_data_s {
  int val_i;
  uint32_t val_u;
  float val_f;
  char val_s[1024];                  /* at most 1023 characters and the terminator */
  struct node_s *val_subtree_n1_ptr; /* sentinel of the child list */
  void *val_null;
} val_data_t;

typedef struct node_s {
  char key[256];     /* the name in JSON; siblings have different keys */
  char tagname[256]; /* the element's name in XML; may repeat */
  VAL_TYPE_t val_type;
  val_data_t val_data;
  struct node_s *next_ptr; /* next sibling; null at the end */
} node_t;

/* --- Building ------------------------------------------------------------------------------------------ */

/* A new empty list (its sentinel); null when memory is exhausted. */
node_t *new_tree(void);

/* Append a node at the end of the list that `n1_ptr` (any node of it, best its sentinel) belongs to and
 * return it; null for a null list or when memory is exhausted, the list being left as it was. Key and tag
 * name are cut to 255 characters. Appending through the sentinel costs the same however long the list is. */
node_t *append_tree_object(node_t *n1_ptr, const char *key, const char *tagname); /* VAL_TYPE_INT, 0 */
node_t *append_tree_int(node_t *n1_ptr, const char *key, const char *tagname, int val);
node_t *append_tree_uint(node_t *n1_ptr, const char *key, const char *tagname, uint32_t val);
node_t *append_tree_float(node_t *n1_ptr, const char *key, const char *tagname, float val);
/* The text is cut to 1023 characters. */
node_t *append_tree_string(node_t *n1_ptr, const char *key, const char *tagname, const char *val);
/* A string node: "TRUE" when val is exactly 1, else "FALSE". */
node_t *append_tree_bool(node_t *n1_ptr, const char *key, const char *tagname, char val);
/* A subtree with an empty child list, to be filled through get_subtree_node1(). */
node_t *append_tree_subtree(node_t *n1_ptr, const char *key, const char *tagname);

/* Shorthands for the two shapes that nearly all answers have. Both return the new child list, ready to append
 * to: a subtree whose key and tag name are the same word, and the entry number `position` (from 1) of a list
 * whose entries share one tag name. */
node_t *append_branch(node_t *n1_ptr, const char *name);
node_t *append_entry(node_t *n1_ptr, uint32_t position, const char *tagname);

/* --- Walking and changing ------------------------------------------------------------------------------ */

/* Next sibling, last node of the list, child list (the type is not checked); null for a null node. */
node_t *get_next_node(const node_t *node);
node_t *get_last_node(node_t *node);
node_t *get_subtree_node1(const node_t *node);
/* No effect on a null node. */
void set_next_node(node_t *node, node_t *next);
/* Frees the node that `node` holds as its child list (that one node: meant for the empty sentinel a new
 * subtree has) and puts `child` in its place. */
void set_subtree_node1(node_t *node, node_t *child);
/* VAL_TYPE_NULL for a null node. */
VAL_TYPE_t get_node_val_type(const node_t *node);
/* Copy a name or a string value into a buffer of `str_size` bytes, which is zero-filled first. The string
 * stays empty when the node is not of type VAL_TYPE_STRING. */
void get_node_key(const node_t *node, char *key, int str_size);
void get_node_tagname(const node_t *node, char *tagname, int str_size);
void get_node_val_data_string(const node_t *node, char *str, int str_size);
void set_node_key(node_t *node, const char *key);
/* Frees the list from `n1_ptr` on with all its subtrees; null is allowed. */
void free_tree(node_t *n1_ptr);

/* --- Printing ------------------------------------------------------------------------------------------ */

/* Store the printed list in *out_ptr, a block that the caller frees; left untouched when memory is exhausted.
 * XML has no declaration, blanks, attributes or escaping; JSON is json-c's default form, in which subtrees
 * are objects and the last of several siblings with one key wins. */
void print_tree_by_xml(const node_t *n1_ptr, char **out_ptr);
void print_tree_by_json(const node_t *n1_ptr, char **out_ptr);
/* One list as a json-c object; released with json_object_put(). */
json_object *convert_to_jsonc_obj(const node_t *n1_ptr);

#endif
