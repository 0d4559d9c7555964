/* The help pages as HTML. Programs and eyes are used to these pages: every text stays as it is. */
#include "engine/rest_dyn_string.h"
#include "modules/rest_module_help.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* clang-format off */
static const char LIST_HEAD[] =
    "<html>"
    "<style>table, tr, "
    "td, "
    "th{    border-collapse:collapse;    border:1px solid #FFF;    padding: 5px;    background-color: #DDEEFF;}"
    "th{    background-color: #0066AA;    color: #FFF;}"
    ".mod_name{ width:120px;  text-align:center; }"
    ".mod_desc{ width:350px; }"
    "td.mod_name{ font-size:larger; font-weight:bold; }"
    "</style><body>"
    "    <h1>RESTful API Help Document</h1>"
    "    <h2>Module List</h2>"
    " "
    "   <table>"
    "       <tr/>"
    "           <th class='mod_name'/>Module Name"
    "           <th class='mod_desc'/>Module Description";

/* With the module's name and description. */
static const char MODULE_HEAD[] =
    "<html>"
    "<style>table, tr, "
    "td, "
    "th{    border-collapse:collapse;    border:1px solid #FFF;    padding: 5px;    background-color: #DDEEFF;}"
    "th{    background-color: #0066AA;    color: #FFF;}"
    "/*.api_name{ width:200px; }*/td.api_name{ font-weight:bold; }"
    ".api_desc{ width:300px; }"
    ".api_method{ width:80px; }"
    ".api_uri{ width:300px; }"
    ".api_param{ width:500px; }"
    "</style><body>"
    "    <h1>RESTful API Help Document</h1>"
    "    <h2>API List of Module [%s]: %s</h2>"
    "   <table>"
    "       <tr/>"
    "           <th class='api_name'/>API Name"
    "           <th class='api_desc'/>Description"
    "           <th class='api_method'/>Method"
    "           <th class='api_uri'/>URI"
    "           <th class='api_param'/>Paramters";
/* clang-format on */

static const char LIST_ROW[] =
    "<tr/><td class='mod_name'/>[<a href='/help/%s?format=html'>%s</a>]<td class='mod_desc'/>%s";
static const char API_ROW[] =
    "<tr/>      <td class='api_name'/>%s      <td class='api_desc'/>%s      <td class='api_method'/>%s      "
    "<td class='api_uri'/>%s      <td class='api_param'/>%s";
static const char FOOT[] = "</table></body></html>";

enum {
  HELP_VALUE_SIZE = 1024,       /* a value of the tree */
  HELP_PARAMETERS_SIZE = 16384, /* the parameters of one API; what is beyond is cut off */
};

/* --- Values and texts ---------------------------------------------------------------------------------- */

/* Value of a node; empty for one that is not there. */
struct help_value {
  char text[HELP_VALUE_SIZE] = "";
  void read(const node_t *node) { get_node_val_data_string(node, text, sizeof text); }
};

/* The values of the first nodes of a list, one after the other. */
template <size_t N> static void read_values(const node_t *list, help_value (&values)[N]) {
  const node_t *node = list;
  for (help_value &value : values) {
    node = get_next_node(node);
    value.read(node);
  }
}

/* A page being put together. */
struct page {
  dyn_string_t *string = dynStringNew();
  bool complete = string != nullptr;

  page() = default;
  ~page() { dynStringFree(&string); }
  page(const page &) = delete;
  page &operator=(const page &) = delete;

  void add(const char *text) {
    if (complete) complete = dynStringAppend(string, text) == DYN_STRING_RC_TRUE;
  }
  __attribute__((format(printf, 2, 3))) void add_formatted(const char *format, ...);
  /* The whole page, which the caller frees; null when memory was exhausted. */
  char *take() const { return complete ? strdup(string->text) : nullptr; }
};

void page::add_formatted(const char *format, ...) {
  char *text = nullptr;
  va_list ap;
  va_start(ap, format);
  if (vasprintf(&text, format, ap) < 0) text = nullptr;
  va_end(ap);
  complete = complete && text != nullptr;
  add(text == nullptr ? "" : text);
  free(text);
}

/* --- The list of modules ------------------------------------------------------------------------------- */

void print_help_doc_html_for_list(node_t *tree, char **out) {
  page html;
  html.add(LIST_HEAD);
  const node_t *modules = get_subtree_node1(get_next_node(tree));
  for (node_t *module = get_next_node(modules); module != nullptr; module = get_next_node(module)) {
    help_value values[2];
    read_values(get_subtree_node1(module), values);
    html.add_formatted(LIST_ROW, values[0].text, values[0].text, values[1].text);
  }
  html.add(FOOT);
  *out = html.take();
}

/* --- A module ------------------------------------------------------------------------------------------ */

/* The parameters of an API as a list. */
struct parameter_list {
  char text[HELP_PARAMETERS_SIZE] = "";
  size_t length = 0;

  __attribute__((format(printf, 2, 3))) void add(const char *format, ...);
};

void parameter_list::add(const char *format, ...) {
  va_list ap;
  va_start(ap, format);
  vsnprintf(text + length, sizeof text - length, format, ap);
  va_end(ap);
  length += strlen(text + length);
}

/* An API without parameters shows those in `last`, the last ones shown before it: the page has always been
 * so. */
static void list_parameters(const node_t *parameters, help_value (&last)[2], parameter_list *list) {
  list->add("<ul>");
  node_t *param = get_next_node(parameters);
  do {
    if (param != nullptr) read_values(get_subtree_node1(param), last);
    list->add("<li>%s: %s</li>", last[0].text, last[1].text);
    param = get_next_node(param);
  } while (param != nullptr);
  list->add("</ul>");
}

static void add_api(page *html, const node_t *api, help_value (&last)[2]) {
  help_value values[4]; /* name, description, URI, method */
  const node_t *list = get_subtree_node1(api);
  read_values(list, values);
  const node_t *parameters = list;
  for (int i = 0; i < 5; i++) parameters = get_next_node(parameters);

  parameter_list shown;
  list_parameters(get_subtree_node1(parameters), last, &shown);
  html->add_formatted(API_ROW, values[0].text, values[1].text, values[3].text, values[2].text, shown.text);
}

void print_help_doc_html_for_specified_module_name(node_t *module, char **out) {
  page html;
  help_value values[2], last_parameter[2];
  const node_t *list = get_subtree_node1(module);
  read_values(list, values);
  html.add_formatted(MODULE_HEAD, values[0].text, values[1].text);
  const node_t *apis = list;
  for (int i = 0; i < 3; i++) apis = get_next_node(apis);
  for (node_t *api = get_next_node(get_subtree_node1(apis)); api != nullptr; api = get_next_node(api)) {
    add_api(&html, api, last_parameter);
  }
  html.add(FOOT);
  *out = html.take();
}
