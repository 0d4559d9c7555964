/* The parser of the help document: it takes lines from a source and opens a module, an API or a list of
 * parameters with each marker line. */
#include "modules/rest_help_document.h"

#include "platform/api/l7proc.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* --- Where lines come from ----------------------------------------------------------------------------- */

/* Reading position and end of a private copy of the text; null when nothing is being parsed. */
static const char *now_p;
static const char *end_p;

RC_t parse_help_doc_text_to_tree_obj_subfunc_get_new_line(char *line, int size) {
  if (now_p == nullptr || size < 1) return RC_FALSE;
  const char *newline = static_cast<const char *>(memchr(now_p, '\n', static_cast<size_t>(end_p - now_p)));
  if (newline == nullptr) return RC_FALSE;
  snprintf(line, static_cast<size_t>(size), "%.*s", static_cast<int>(newline + 1 - now_p), now_p);
  now_p = newline + 1;
  return RC_TRUE;
}

static FILE *help_file;

static RC_t get_new_line_of_file(char *line, int size) {
  if (fgets(line, size, help_file) == nullptr) return RC_FALSE;
  const bool unfinished = strchr(line, '\n') == nullptr && feof(help_file);
  return unfinished ? RC_FALSE : RC_TRUE;
}

/* One line after the other, each with its newline, until RC_FALSE. */
struct line_source {
  RC_t (*get_new_line)(char *line, int size);
  int line_size;
};

/* A source and the line taken from it last. */
struct line_reader {
  const line_source *source;
  bool out_of_memory; /* a node could not be made: the tree is not complete */
  char line[HELP_LINE_SIZE];

  bool next() { return source->get_new_line(line, source->line_size) == RC_TRUE; }
  bool is(const char *marker) const { return strcmp(line, marker) == 0; }
  /* Notes when there is no node. */
  node_t *made(node_t *node) {
    if (node == nullptr) out_of_memory = true;
    return node;
  }
};

/* --- Values -------------------------------------------------------------------------------------------- */

/* The value of a line of the form " key=value", which stands behind at least one blank; null for any other.
 */
static char *value_of(char *line, const char *key) {
  char *p = line + strspn(line, " ");
  const size_t length = strlen(key);
  if (p == line || strncmp(p, key, length) != 0 || p[length] != '=') return nullptr;
  char *value = p + length + 1;
  value[strcspn(value, "\n")] = '\0';
  return value[0] == '\0' ? nullptr : value;
}

/* Takes the next line for the value of `key` and appends it if it is one. */
static void append_next_value(line_reader *reader, const char *key, node_t *list) {
  if (!reader->next()) return;
  const char *value = value_of(reader->line, key);
  if (value != nullptr) reader->made(append_tree_string(list, key, key, value));
}

/* Appends a parameter if the line is one: name, one or more at-signs, description. */
static void append_parameter(line_reader *reader, node_t *parameters, uint32_t *count) {
  char *name = value_of(reader->line, "param");
  if (name == nullptr) return;
  char *at = strchr(name, '@');
  if (at == nullptr || at == name) return;
  const char *description = at + strspn(at, "@");
  if (description[0] == '\0') return;
  *at = '\0';
  node_t *param = append_entry(parameters, ++*count, "param");
  reader->made(append_tree_string(param, "param_name", "param_name", name));
  reader->made(append_tree_string(param, "param_desc", "param_desc", description));
}

/* --- Blocks -------------------------------------------------------------------------------------------- */

/* The lists that entries are appended to; null where nothing is open. */
struct open_blocks {
  node_t *modules, *apis, *parameters;
  uint32_t module_count, api_count, parameter_count;
};

static void open_module(line_reader *reader, open_blocks *open) {
  node_t *module = append_entry(open->modules, ++open->module_count, "module");
  append_next_value(reader, "module_name", module);
  append_next_value(reader, "module_desc", module);
  open->apis = reader->made(append_branch(module, "apis"));
  open->api_count = 0;
  open->parameters = nullptr;
}

static void open_api(line_reader *reader, open_blocks *open) {
  node_t *api = append_entry(open->apis, ++open->api_count, "api");
  for (const char *key : {"api_name", "api_desc", "api_uri", "api_method"}) {
    append_next_value(reader, key, api);
  }
  open->parameters = reader->made(append_branch(api, "parameters"));
  open->parameter_count = 0;
}

static void take_parameters(line_reader *reader, open_blocks *open) {
  while (reader->next() && !reader->is("=API-PARAM-END\n")) {
    append_parameter(reader, open->parameters, &open->parameter_count);
  }
}

static void parse_lines(line_reader *reader, node_t *modules) {
  open_blocks open = {modules, nullptr, nullptr, 0, 0, 0};
  while (reader->next()) {
    if (reader->is("===MODULE-START\n")) {
      open_module(reader, &open);
    } else if (reader->is("==API-START\n") && open.apis != nullptr) {
      open_api(reader, &open);
    } else if (reader->is("=API-PARAM-START\n") && open.parameters != nullptr) {
      take_parameters(reader, &open);
    }
  }
}

static node_t *parse(const line_source *source) {
  auto *reader = static_cast<line_reader *>(malloc(sizeof(line_reader)));
  node_t *tree = new_tree();
  node_t *modules = append_branch(tree, "modules");
  if (reader == nullptr || modules == nullptr) {
    free(reader);
    free_tree(tree);
    return nullptr;
  }
  reader->source = source;
  reader->out_of_memory = false;
  parse_lines(reader, modules);
  if (reader->out_of_memory) {
    free_tree(tree);
    tree = nullptr;
  }
  free(reader);
  return tree;
}

/* --- Documents ----------------------------------------------------------------------------------------- */

node_t *parse_help_doc_to_tree_obj(const char *text) {
  static const line_source source = {parse_help_doc_text_to_tree_obj_subfunc_get_new_line, HELP_LINE_SIZE};
  char *copy = strdup(text);
  if (copy == nullptr) return nullptr;
  now_p = copy;
  end_p = copy + strlen(copy);
  node_t *tree = parse(&source);
  now_p = end_p = nullptr;
  free(copy);
  return tree;
}

node_t *parse_help_doc_text_to_tree_obj(void) {
  return parse_help_doc_to_tree_obj(restGlobalHelpDocText);
}

node_t *parse_help_doc_file_to_tree_obj(const char *path) {
  static const line_source source = {get_new_line_of_file, HELP_FILE_LINE_SIZE};
  help_file = fopen(path, "re");
  if (help_file == nullptr) {
    l7proc_logf(L7PROC_WARNING, 0, "rest_module_help.c", __LINE__,
                "RESTful API Engine: Open the Help document file failed!");
    return nullptr;
  }
  node_t *tree = parse(&source);
  fclose(help_file);
  help_file = nullptr;
  return tree;
}
