/* The help pages: GET /help lists the modules, GET /help/{module} describes one. The document is parsed anew
 * for each request. */
#include "modules/rest_module_help.h"

#include "engine/rest_request.h"
#include "modules/rest_help_document.h"

#include <stdlib.h>
#include <string.h>
#include <strings.h>

static const char MODULE_NAME_PATTERN[] = "/help/%[A-Za-z1-9]%s";

/* --- Helpers ------------------------------------------------------------------------------------------- */

static bool wants_html(mg_connection *conn) {
  return strncasecmp(read_variable(conn, "format").text, "html", 4) == 0;
}

/* Sends a page as it is, without the envelope, and frees it. */
static int answer_with_page(mg_connection *conn, char *page) {
  if (page == nullptr) {
    send_exception_error(conn, nullptr);
    return 0;
  }
  mg_send_header(conn, "Content-Type", "text/html; charset=utf-8");
  mg_printf_data(conn, "%s\n", page);
  free(page);
  return 1;
}

/* The sentinel of the list of modules. */
static node_t *modules_of(const node_t *tree) {
  return get_subtree_node1(get_next_node(tree));
}

/* Frees what a module holds behind its name and description. */
static void drop_apis(node_t *module) {
  node_t *last_kept = get_subtree_node1(module);
  for (node_t *child = get_next_node(last_kept); child != nullptr; child = get_next_node(last_kept)) {
    if (strcmp(child->key, "module_name") == 0 || strcmp(child->key, "module_desc") == 0) {
      last_kept = child;
      continue;
    }
    set_next_node(last_kept, get_next_node(child));
    set_next_node(child, nullptr);
    free_tree(child);
  }
}

static bool has_name(const node_t *module, const char *name) {
  const node_t *first = get_next_node(get_subtree_node1(module));
  return first != nullptr && strcmp(first->key, "module_name") == 0 &&
         strcmp(first->val_data.val_s, name) == 0;
}

/* Takes the module of that name out of the tree, the last one if there are several; null when there is none.
 */
static node_t *take_module(node_t *tree, const char *name) {
  node_t *found = nullptr;
  node_t *previous = modules_of(tree);
  for (node_t *module = get_next_node(previous); module != nullptr; module = get_next_node(previous)) {
    if (!has_name(module, name)) {
      previous = module;
      continue;
    }
    set_next_node(previous, get_next_node(module));
    set_next_node(module, nullptr);
    free_tree(found);
    found = module;
  }
  return found;
}

/* --- Operations ---------------------------------------------------------------------------------------- */

int api_help_get_list(openapiClientHandle_t *, mg_connection *conn) {
  node_t *tree = parse_help_doc_text_to_tree_obj();
  if (tree == nullptr) {
    send_file_help_doc_error(conn, nullptr);
    return 0;
  }
  for (node_t *module = get_next_node(modules_of(tree)); module != nullptr; module = get_next_node(module)) {
    drop_apis(module);
  }
  if (!wants_html(conn)) return succeed(conn, tree, "Get data successfully.");

  char *page = nullptr;
  print_help_doc_html_for_list(tree, &page);
  free_tree(tree);
  return answer_with_page(conn, page);
}

/* The module as a tree of its own, which takes it over; null when memory is exhausted. */
static node_t *tree_of_module(node_t *module) {
  node_t *tree = new_tree();
  if (tree == nullptr) {
    free_tree(module);
    return nullptr;
  }
  set_node_key(module, "module");
  set_next_node(tree, module);
  return tree;
}

int api_help_get_specified_module_name(openapiClientHandle_t *, mg_connection *conn) {
  uri_fields_t fields = {};
  scan_uri(conn->uri, MODULE_NAME_PATTERN, fields);
  node_t *document = parse_help_doc_text_to_tree_obj();
  if (document == nullptr) {
    send_file_help_doc_error(conn, nullptr);
    return 0;
  }
  node_t *module = take_module(document, fields[0]);
  free_tree(document);
  if (module == nullptr) return refuse(conn, 1, "The module name does not exist.");

  if (wants_html(conn)) {
    char *page = nullptr;
    print_help_doc_html_for_specified_module_name(module, &page);
    free_tree(module);
    return answer_with_page(conn, page);
  }
  node_t *tree = tree_of_module(module);
  if (tree == nullptr) {
    send_exception_error(conn, nullptr);
    return 0;
  }
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Routes -------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_GET, "/help%s", ROUTE_EXACT, nullptr, api_help_get_list},
    {REQUEST_METHOD_GET, MODULE_NAME_PATTERN, 1, nullptr, api_help_get_specified_module_name},
};

int help_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> help_api_routes(void) {
  return routes;
}
