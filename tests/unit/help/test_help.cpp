/* The help module: what GET /help and GET /help/{module} answer, the parser of the document, and the pages.
 */
#include "modules/rest_help_document.h"
#include "modules/rest_module_help.h"
#include "tests/support/platform_fixture.h"
#include "tests/unit/help/documented_apis.h"

#include <fstream>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

class Help : public PlatformTest {};

/* --- Memory that runs out ------------------------------------------------------------------------------ */

/* Copies of texts to be made before one fails; negative: none does. The linker gives every call of strdup()
 * in this program to the function below; see CMakeLists.txt. */
static int copies_until_failure = -1;

extern "C" char *__real_strdup(const char *text);
extern "C" char *__wrap_strdup(const char *text);

extern "C" char *__wrap_strdup(const char *text) {
  if (copies_until_failure == 0) return nullptr;
  if (copies_until_failure > 0) copies_until_failure--;
  return __real_strdup(text);
}

/* The answer when the copy after `copies` others cannot be made. */
static std::string answer_without_memory(openapiClientHandle_t *handle, int copies, const std::string &uri,
                                         const std::string &query) {
  FakeRequest request("GET", uri, query);
  copies_until_failure = copies;
  EXPECT_EQ(help_api_handler(handle, request.conn()), 0);
  copies_until_failure = -1;
  return request.reply().body;
}

TEST_F(Help, DocumentThatCannotBeParsedIsAnsweredWith903) {
  const Answers expected = expected_answers(903, "Open the file of help documents failed!");
  for (const char *uri : {"/help", "/help/vlans", "/help/none"}) {
    EXPECT_EQ(answer_without_memory(handle, 0, uri, ""), expected.xml) << uri;
    EXPECT_EQ(answer_without_memory(handle, 0, uri, "format=json"), expected.json) << uri;
    EXPECT_EQ(answer_without_memory(handle, 0, uri, "format=html"), expected.xml) << uri;
  }
}

TEST_F(Help, PageThatCannotBeMadeIsAnsweredWith909) {
  FakeRequest general("GET", "/");
  send_exception_error(general.conn(), nullptr);
  for (const char *uri : {"/help", "/help/vlans"})
    EXPECT_EQ(answer_without_memory(handle, 1, uri, "format=html"), general.reply().body) << uri;
}

/* --- Trees as text ------------------------------------------------------------------------------------- */

/* Frees a tree and returns its text: "key/tag" and in parentheses the children, or "=" and the value. */
static std::string print(node_t *list, bool top = true) {
  std::string text;
  for (const node_t *node = get_next_node(list); node != nullptr; node = get_next_node(node)) {
    text += text.empty() ? "" : " ";
    text += node->key;
    if (strcmp(node->key, node->tagname) != 0) text += std::string("/") + node->tagname;
    text += node->val_type == VAL_TYPE_SUBTREE ? "(" + print(get_subtree_node1(node), false) + ")"
                                               : std::string("=") + node->val_data.val_s;
  }
  if (top) free_tree(list);
  return text;
}

static std::string parsed(const std::string &text) {
  return print(parse_help_doc_to_tree_obj(text.c_str()));
}

/* --- The parser ---------------------------------------------------------------------------------------- */

static const char ONE_OF_ALL[] = "### a banner\n"
                                 "===MODULE-START\n"
                                 "  module_name=m\n"
                                 "  module_desc=does things\n"
                                 "\n"
                                 "==API-START\n"
                                 "  api_name=Show it\n"
                                 "  api_desc=Shows it.\n"
                                 "  api_uri=/m/{id}\n"
                                 "  api_method=GET\n"
                                 "=API-PARAM-START\n"
                                 "  param=id@The id. [Integer from 1 to 2]\n"
                                 "  param=format@@@Format = {xml | json} @ last\n"
                                 "=API-PARAM-END\n"
                                 "==API-END\n"
                                 "===MODULE-END\n";

static const char ONE_OF_ALL_PARSED[] =
    "modules(1/module(module_name=m module_desc=does things apis(1/api(api_name=Show it api_desc=Shows it. "
    "api_uri=/m/{id} api_method=GET parameters(1/param(param_name=id param_desc=The id. [Integer from 1 to "
    "2]) "
    "2/param(param_name=format param_desc=Format = {xml | json} @ last))))))";

TEST(HelpParser, MakesATreeOfAllThatTheGrammarHas) {
  EXPECT_EQ(parsed(ONE_OF_ALL), ONE_OF_ALL_PARSED);
}

TEST(HelpParser, NumbersModulesApisAndParametersFromOneInEachList) {
  const std::string api = "==API-START\n api_name=a\n api_desc=d\n api_uri=u\n api_method=GET\n"
                          "=API-PARAM-START\n param=p@x\n param=q@y\n=API-PARAM-END\n==API-END\n";
  const std::string module =
      "===MODULE-START\n module_name=m\n module_desc=d\n" + api + api + "===MODULE-END\n";
  const std::string parameters =
      "parameters(1/param(param_name=p param_desc=x) 2/param(param_name=q param_desc=y))";
  const std::string values = "(api_name=a api_desc=d api_uri=u api_method=GET " + parameters + ")";
  const std::string tree = "(module_name=m module_desc=d apis(1/api" + values + " 2/api" + values + "))";
  EXPECT_EQ(parsed(module + module), "modules(1/module" + tree + " 2/module" + tree + ")");
}

struct odd_text {
  const char *what, *text, *tree;
};

class OddHelpText : public testing::TestWithParam<odd_text> {};

TEST_P(OddHelpText, IsRead) {
  EXPECT_EQ(parsed(GetParam().text), std::string("modules(") + GetParam().tree + ")") << GetParam().what;
}

#define MODULE "===MODULE-START\n module_name=m\n module_desc=d\n"
#define API "==API-START\n api_name=a\n api_desc=d\n api_uri=u\n api_method=GET\n"
#define M "module_name=m module_desc=d "
#define A "api_name=a api_desc=d api_uri=u api_method=GET "

static const odd_text ODD_TEXTS[] = {
    {"nothing", "", ""},
    {"no newline at the end of the last line", "===MODULE-START", ""},
    {"a value line without newline at the end", "===MODULE-START\n module_name=m\n module_desc=d",
     "1/module(module_name=m apis())"},
    {"a value line without blanks before it", "===MODULE-START\nmodule_name=m\n module_desc=d\n",
     "1/module(module_desc=d apis())"},
    {"a tab is no blank", "===MODULE-START\n\tmodule_name=m\n module_desc=d\n",
     "1/module(module_desc=d apis())"},
    {"values in the wrong order", "===MODULE-START\n module_desc=d\n module_name=m\n", "1/module(apis())"},
    {"an empty value", "===MODULE-START\n module_name=\n module_desc=d\n", "1/module(module_desc=d apis())"},
    {"a marker with blanks before it", " ===MODULE-START\n module_name=m\n", ""},
    {"a marker with a blank behind it", "===MODULE-START \n module_name=m\n", ""},
    {"a marker in place of a value is consumed",
     "===MODULE-START\n module_name=m\n==API-START\n api_name=a\n", "1/module(module_name=m apis())"},
    {"a hidden API",
     MODULE "#==API-START\n# api_name=a\n# api_desc=d\n# api_uri=u\n# api_method=GET\n"
            "#=API-PARAM-START\n# param=p@x\n#=API-PARAM-END\n#==API-END\n",
     "1/module(" M "apis())"},
    {"a value line left in a hidden API", MODULE "#==API-START\n api_name=a\n#==API-END\n" API,
     "1/module(" M "apis(1/api(" A "parameters())))"},
    {"an API before any module", API MODULE, "1/module(" M "apis())"},
    {"parameters before any API", MODULE "=API-PARAM-START\n param=p@x\n=API-PARAM-END\n",
     "1/module(" M "apis())"},
    {"parameters of no API of this module",
     MODULE API MODULE "=API-PARAM-START\n param=p@x\n=API-PARAM-END\n",
     "1/module(" M "apis(1/api(" A "parameters()))) 2/module(" M "apis())"},
    {"an API without parameters", MODULE API "==API-END\n", "1/module(" M "apis(1/api(" A "parameters())))"},
    {"other lines among parameters",
     MODULE API "=API-PARAM-START\nparam=no@blank\n param=\n param=no\n param=no@\n param=@no\n==API-START\n"
                " param=p@x\n=API-PARAM-END\n",
     "1/module(" M "apis(1/api(" A "parameters(1/param(param_name=p param_desc=x)))))"},
    {"the end of the text among parameters", MODULE API "=API-PARAM-START\n param=p@x\n",
     "1/module(" M "apis(1/api(" A "parameters(1/param(param_name=p param_desc=x)))))"},
    {"a value with an equals sign", "===MODULE-START\n module_name=a=b \n module_desc= c\n",
     "1/module(module_name=a=b  module_desc= c apis())"},
};

INSTANTIATE_TEST_SUITE_P(All, OddHelpText, testing::ValuesIn(ODD_TEXTS));

TEST(HelpParser, LongLinesAreCutAndValuesAreAtMost1023Characters) {
  const std::string tree =
      parsed(" " MODULE "===MODULE-START\n module_name=" + std::string(20000, 'x') + "\n module_desc=d\n");
  EXPECT_EQ(tree, "modules(1/module(module_name=" + std::string(1023, 'x') + " module_desc=d apis()))");
}

TEST(HelpParser, HandsOutLinesOnlyWhileATextIsParsed) {
  char line[HELP_LINE_SIZE];
  EXPECT_EQ(parse_help_doc_text_to_tree_obj_subfunc_get_new_line(line, sizeof line), RC_FALSE);
  free_tree(parse_help_doc_text_to_tree_obj());
  EXPECT_EQ(parse_help_doc_text_to_tree_obj_subfunc_get_new_line(line, sizeof line), RC_FALSE);
}

/* Entries with one tag name, numbered from 1. */
static std::string numbered(const std::string &tag, const std::vector<std::string> &entries) {
  std::string list;
  for (size_t i = 0; i < entries.size(); i++)
    list += (i == 0 ? "" : " ") + std::to_string(i + 1) + "/" + tag + "(" + entries[i] + ")";
  return list;
}

static std::string tree_of(const documented_api &api) {
  std::vector<std::string> parameters;
  for (const documented_parameter &parameter : api.parameters)
    parameters.push_back("param_name=" + parameter.name + " param_desc=" + parameter.description);
  return "api_name=" + api.name + " api_desc=" + api.description + " api_uri=" + api.uri +
         " api_method=" + api.method + " parameters(" + numbered("param", parameters) + ")";
}

TEST(HelpParser, TheCompiledInTextHasWhatALineByLineReaderFinds) {
  std::vector<std::string> modules;
  for (const documented_module &module : documented_modules()) {
    std::vector<std::string> apis;
    for (const documented_api &api : module.apis) {
      if (!api.hidden) apis.push_back(tree_of(api));
    }
    modules.push_back("module_name=" + module.name + " module_desc=" + module.description + " apis(" +
                      numbered("api", apis) + ")");
  }
  EXPECT_EQ(print(parse_help_doc_text_to_tree_obj()), "modules(" + numbered("module", modules) + ")");
}

/* --- A document in a file ------------------------------------------------------------------------------ */

class HelpFile : public PlatformTest {
protected:
  HelpFile() : path(testing::TempDir() + "help_doc_" + std::to_string(getpid())) {}
  ~HelpFile() override { remove(path.c_str()); }

  std::string parsed_file(const std::string &text) const {
    std::ofstream(path) << text;
    return print(parse_help_doc_file_to_tree_obj(path.c_str()));
  }

  std::string path;
};

TEST_F(HelpFile, IsReadByTheSameGrammar) {
  EXPECT_EQ(parsed_file(ONE_OF_ALL), ONE_OF_ALL_PARSED);
  EXPECT_EQ(parsed_file("===MODULE-START\n module_name=m\n module_desc=d"),
            "modules(1/module(module_name=m apis()))");
}

TEST_F(HelpFile, LinesAreReadInPiecesOf255Characters) {
  /* The rest of the name stands where the description should. */
  EXPECT_EQ(parsed_file("===MODULE-START\n module_name=" + std::string(300, 'x') + "\n module_desc=d\n"),
            "modules(1/module(module_name=" + std::string(255 - 13, 'x') + " apis()))");
}

TEST_F(HelpFile, ThatCannotBeOpenedIsLogged) {
  const size_t before = log_lines().size();
  EXPECT_EQ(parse_help_doc_file_to_tree_obj((path + "/none").c_str()), nullptr);
  ASSERT_EQ(log_lines().size(), before + 1);
  const std::string line = log_lines().back();
  EXPECT_TRUE(line.starts_with("WARNING rest_module_help.c:")) << line;
  EXPECT_TRUE(line.ends_with(" RESTful API Engine: Open the Help document file failed!")) << line;
}

/* --- Answers ------------------------------------------------------------------------------------------- */

static std::string xml_element(const std::string &name, const std::string &content) {
  return "<" + name + ">" + content + "</" + name + ">";
}

static std::string json_member(const std::string &name, const std::string &value) {
  return json_text(name) + ": " + json_text(value);
}

TEST_F(Help, ListTellsNameAndDescriptionOfEveryModule) {
  std::string xml, json;
  int position = 0;
  for (const documented_module &module : documented_modules()) {
    xml += xml_element("module", xml_element("module_name", module.name) +
                                     xml_element("module_desc", module.description));
    json += (position ? ", " : "") + json_text(std::to_string(position + 1)) + ": { " +
            json_member("module_name", module.name) + ", " + json_member("module_desc", module.description) +
            " }";
    position++;
  }
  EXPECT_EQ(position, 18);
  EXPECT_EQ(call(help_api_handler, "GET", "/help"),
            expected_answers(0, "Get data successfully.", xml_element("modules", xml),
                             "\"modules\": { " + json + " }"));
}

static std::string module_xml(const documented_module &module) {
  std::string apis;
  for (const documented_api &api : module.apis) {
    if (api.hidden) continue;
    std::string parameters;
    for (const documented_parameter &parameter : api.parameters)
      parameters += xml_element("param", xml_element("param_name", parameter.name) +
                                             xml_element("param_desc", parameter.description));
    apis += xml_element("api", xml_element("api_name", api.name) + xml_element("api_desc", api.description) +
                                   xml_element("api_uri", api.uri) + xml_element("api_method", api.method) +
                                   xml_element("parameters", parameters));
  }
  return xml_element("module", xml_element("module_name", module.name) +
                                   xml_element("module_desc", module.description) +
                                   xml_element("apis", apis));
}

/* Texts one behind the other as members "1", "2", ... */
static std::string json_list(const std::vector<std::string> &entries) {
  std::string list;
  for (size_t i = 0; i < entries.size(); i++)
    list += (i ? ", " : "") + json_text(std::to_string(i + 1)) + ": { " + entries[i] + " }";
  return "{ " + list + (list.empty() ? "}" : " }");
}

static std::string module_json(const documented_module &module) {
  std::vector<std::string> apis;
  for (const documented_api &api : module.apis) {
    if (api.hidden) continue;
    std::vector<std::string> parameters;
    for (const documented_parameter &parameter : api.parameters)
      parameters.push_back(json_member("param_name", parameter.name) + ", " +
                           json_member("param_desc", parameter.description));
    apis.push_back(json_member("api_name", api.name) + ", " + json_member("api_desc", api.description) +
                   ", " + json_member("api_uri", api.uri) + ", " + json_member("api_method", api.method) +
                   ", \"parameters\": " + json_list(parameters));
  }
  return "\"module\": { " + json_member("module_name", module.name) + ", " +
         json_member("module_desc", module.description) + ", \"apis\": " + json_list(apis) + " }";
}

TEST_F(Help, EachModuleIsDescribedWithAllItsApis) {
  for (const documented_module &module : documented_modules())
    EXPECT_EQ(call(help_api_handler, "GET", "/help/" + module.name),
              expected_answers(0, "Get data successfully.", module_xml(module), module_json(module)))
        << module.name;
}

TEST_F(Help, UnknownModuleIsRefused) {
  const Answers refused = expected_answers(1, "The module name does not exist.");
  for (const char *name : {"Vlans", "VLANS", "vlan", "download", "upload", "pml", "x", "1", "vlans9"})
    EXPECT_EQ(call(help_api_handler, "GET", std::string("/help/") + name), refused) << name;
}

TEST_F(Help, OtherPathsAndMethodsAreBadRequests) {
  for (const char *uri : {"/help/", "/help/vlans/x", "/help/vlans/", "/help/0", "/help/a0", "/help/vlans0",
                          "/help/a-b", "/help/a b", "/helpx", "/help/_", "/help//vlans"})
    EXPECT_EQ(call(help_api_handler, "GET", uri), expected_bad_request()) << uri;
  for (const char *method : {"POST", "PUT", "DELETE", "HEAD"}) {
    EXPECT_EQ(call(help_api_handler, method, "/help"), expected_bad_request()) << method;
    EXPECT_EQ(call(help_api_handler, method, "/help/vlans"), expected_bad_request()) << method;
  }
}

/* --- Pages --------------------------------------------------------------------------------------------- */

static const char LIST_HEAD[] =
    "<html><style>table, tr, td, th{    border-collapse:collapse;    border:1px solid #FFF;    padding: 5px; "
    "   "
    "background-color: #DDEEFF;}th{    background-color: #0066AA;    color: #FFF;}.mod_name{ width:120px;  "
    "text-align:center; }.mod_desc{ width:350px; }td.mod_name{ font-size:larger; font-weight:bold; "
    "}</style><body>  "
    "  <h1>RESTful API Help Document</h1>    <h2>Module List</h2>    <table>       <tr/>           <th "
    "class='mod_name'/>Module Name           <th class='mod_desc'/>Module Description";

static std::string module_head(const std::string &name, const std::string &description) {
  return "<html><style>table, tr, td, th{    border-collapse:collapse;    border:1px solid #FFF;    padding: "
         "5px;    "
         "background-color: #DDEEFF;}th{    background-color: #0066AA;    color: #FFF;}/*.api_name{ "
         "width:200px; "
         "}*/td.api_name{ font-weight:bold; }.api_desc{ width:300px; }.api_method{ width:80px; }.api_uri{ "
         "width:300px; "
         "}.api_param{ width:500px; }</style><body>    <h1>RESTful API Help Document</h1>    <h2>API List of "
         "Module [" +
         name + "]: " + description +
         "</h2>   <table>       <tr/>           <th class='api_name'/>API Name           <th "
         "class='api_desc'/>Description           <th class='api_method'/>Method           <th "
         "class='api_uri'/>URI   "
         "        <th class='api_param'/>Paramters";
}

static std::string api_row(const std::string &name, const std::string &description, const std::string &method,
                           const std::string &uri, const std::string &items) {
  return "<tr/>      <td class='api_name'/>" + name + "      <td class='api_desc'/>" + description +
         "      <td class='api_method'/>" + method + "      <td class='api_uri'/>" + uri +
         "      <td class='api_param'/><ul>" + items + "</ul>";
}

static const char FOOT[] = "</table></body></html>";

/* The whole reply to a request for a page. */
static std::string page_reply(openapiClientHandle_t *handle, const std::string &uri,
                              const std::string &query) {
  FakeRequest request("GET", uri, query);
  EXPECT_EQ(help_api_handler(handle, request.conn()), 1) << uri;
  const FakeReply reply = request.reply();
  EXPECT_EQ(reply.head, "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\n"
                        "Transfer-Encoding: chunked\r\n\r\n");
  return reply.body;
}

TEST_F(Help, ListPageHasARowForEachModule) {
  std::string page = LIST_HEAD;
  for (const documented_module &module : documented_modules())
    page += "<tr/><td class='mod_name'/>[<a href='/help/" + module.name + "?format=html'>" + module.name +
            "</a>]<td class='mod_desc'/>" + module.description;
  for (const char *format : {"format=html", "format=HTML", "format=htmlx", "a=1&Format=HtMl5"})
    EXPECT_EQ(page_reply(handle, "/help", format), page + FOOT + "\n") << format;
  EXPECT_EQ(call_xml(help_api_handler, "GET", "/help", "format=htm"),
            call(help_api_handler, "GET", "/help").xml);
}

TEST_F(Help, ModulePageHasARowForEachApi) {
  for (const documented_module &module : documented_modules()) {
    std::string page = module_head(module.name, module.description);
    for (const documented_api &api : module.apis) {
      if (api.hidden) continue;
      std::string items;
      for (const documented_parameter &parameter : api.parameters)
        items += "<li>" + parameter.name + ": " + parameter.description + "</li>";
      page += api_row(api.name, api.description, api.method, api.uri, items);
    }
    EXPECT_EQ(page_reply(handle, "/help/" + module.name, "format=html"), page + FOOT + "\n") << module.name;
  }
}

TEST_F(Help, PageOfAnUnknownModuleIsTheRefusalInXml) {
  EXPECT_EQ(call_xml(help_api_handler, "GET", "/help/none", "format=html"),
            expected_answers(1, "The module name does not exist.").xml);
}

/* The page of the first module of a text. */
static std::string page_of(const std::string &text) {
  node_t *tree = parse_help_doc_to_tree_obj(text.c_str());
  char *page = nullptr;
  print_help_doc_html_for_specified_module_name(get_next_node(get_subtree_node1(get_next_node(tree))), &page);
  free_tree(tree);
  const std::string result = page;
  free(page);
  return result;
}

#define PARAMETER "=API-PARAM-START\n param=p@x\n param=q@y\n=API-PARAM-END\n"

TEST(HelpPage, AnApiWithoutParametersShowsTheLastOneShownBefore) {
  EXPECT_EQ(page_of(MODULE API API PARAMETER API API),
            module_head("m", "d") + api_row("a", "d", "GET", "u", "<li>: </li>") +
                api_row("a", "d", "GET", "u", "<li>p: x</li><li>q: y</li>") +
                api_row("a", "d", "GET", "u", "<li>q: y</li>") +
                api_row("a", "d", "GET", "u", "<li>q: y</li>") + FOOT);
}

TEST(HelpPage, NothingIsRememberedFromOnePageToTheNext) {
  page_of(MODULE API PARAMETER);
  EXPECT_EQ(page_of(MODULE API), module_head("m", "d") + api_row("a", "d", "GET", "u", "<li>: </li>") + FOOT);
}

TEST(HelpPage, ValuesAreReadByPositionAndNotEscaped) {
  EXPECT_EQ(page_of("===MODULE-START\n module_name=<b>&\n module_desc=%s%n\n" API),
            module_head("<b>&", "%s%n") + api_row("a", "d", "GET", "u", "<li>: </li>") + FOOT);
  /* Without its description a module's list of APIs is taken for it, and what comes third is no list. */
  EXPECT_EQ(page_of("===MODULE-START\n module_name=m\n\n" API), module_head("m", "") + FOOT);
  EXPECT_EQ(page_of(MODULE "==API-START\n api_name=a\n\n api_uri=u\n api_method=GET\n" PARAMETER),
            module_head("m", "d") + api_row("a", "u", "", "GET", "<li>: </li>") + FOOT);
}

TEST(HelpPage, ParametersOfAnApiAreCutAt16383Characters) {
  std::string text = MODULE API "=API-PARAM-START\n", items;
  for (int i = 0; i < 20; i++) {
    text += " param=" + std::string(1000, 'n') + "@" + std::string(1000, 'd') + "\n";
    items += "<li>" + std::string(1000, 'n') + ": " + std::string(1000, 'd') + "</li>";
  }
  const std::string list = ("<ul>" + items + "</ul>").substr(0, 16383);
  const std::string row = api_row("a", "d", "GET", "u", "");
  EXPECT_EQ(page_of(text + "=API-PARAM-END\n"),
            module_head("m", "d") + row.substr(0, row.size() - strlen("<ul></ul>")) + list + FOOT);
}

TEST(HelpPage, ListOfNoModulesHasNoRows) {
  node_t *tree = parse_help_doc_to_tree_obj("");
  char *page = nullptr;
  print_help_doc_html_for_list(tree, &page);
  free_tree(tree);
  EXPECT_EQ(std::string(page), std::string(LIST_HEAD) + FOOT);
  free(page);
}
