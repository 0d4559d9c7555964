/* Any text as the help document: it is parsed, and every page that can be made of it is made. */
#include "modules/rest_help_document.h"
#include "modules/rest_module_help.h"

#include <stdlib.h>
#include <string.h>
#include <string>

static void check(bool holds) {
  if (!holds) abort();
}

/* A page is whole from its head to its foot. */
static void check_page(char *page) {
  static const char FOOT[] = "</table></body></html>";
  check(page != nullptr && strncmp(page, "<html><style>", 13) == 0);
  const size_t length = strlen(page), foot = strlen(FOOT);
  check(length > foot && strcmp(page + length - foot, FOOT) == 0);
  free(page);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);
  node_t *tree = parse_help_doc_to_tree_obj(text.c_str());
  check(tree != nullptr);
  const node_t *modules = get_next_node(tree);
  check(modules != nullptr && strcmp(modules->key, "modules") == 0 && get_next_node(modules) == nullptr);

  char *page = nullptr;
  for (node_t *module = get_next_node(get_subtree_node1(modules)); module != nullptr;
       module = get_next_node(module)) {
    print_help_doc_html_for_specified_module_name(module, &page);
    check_page(page);
  }
  print_help_doc_html_for_list(tree, &page);
  check_page(page);
  free_tree(tree);
  return 0;
}
