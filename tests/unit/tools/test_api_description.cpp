/* Reading the help document strictly: what it yields, and each mistake that it refuses. */
#include "modules/rest_help_document.h"
#include "tools/api/api_description.h"

#include <gtest/gtest.h>

static const char DOCUMENT[] = "#####\n"
                               "===MODULE-START\n"
                               "    module_name=vlans\n"
                               "    module_desc=VLANs: made and named.\n"
                               "\n"
                               "==API-START\n"
                               "    api_name=Set the name of a VLAN\n"
                               "    api_desc=Names a VLAN.\n"
                               "    api_uri=/vlans/{vlanId}/name\n"
                               "    api_method=PUT\n"
                               "=API-PARAM-START\n"
                               "    param=vlanId@VLAN ID, in the URI. [Integer from 1 to 4094]\n"
                               "    param=value@Name. Blanks count. [String from 1 to 32 characters]\n"
                               "    param=mode@Optional. Mode. {0 = disable | 1 = enable}\n"
                               "    param=sessionkey@Session key that logging in returned. "
                               "[String of 32 characters]\n"
                               "    param=format@Specified return format. {xml | json}\n"
                               "=API-PARAM-END\n"
                               "==API-END\n"
                               "#==API-START\n"
                               "#    api_name=Delete everything\n"
                               "#==API-END\n"
                               "===MODULE-END\n"
                               "===MODULE-START\n"
                               "    module_name=lag\n"
                               "    module_desc=Aggregation.\n"
                               "===MODULE-END\n";

static std::string replaced(std::string text, const std::string &from, const std::string &to) {
  const size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

/* The description of a document that is right. */
static std::vector<api_module> described(const std::string &document) {
  std::string error;
  std::vector<api_module> modules = describe_api(document.c_str(), &error);
  EXPECT_EQ(error, "");
  return modules;
}

/* What is wrong with a document that is not. */
static std::string mistake_in(const std::string &document) {
  std::string error = "stale";
  EXPECT_TRUE(describe_api(document.c_str(), &error).empty());
  return error;
}

/* --- What is read -------------------------------------------------------------------------------------- */

TEST(ApiDescription, ModulesAndOperationsComeInTheirOrder) {
  const std::vector<api_module> modules = described(DOCUMENT);
  ASSERT_EQ(modules.size(), 2u);
  EXPECT_EQ(modules[0].name, "vlans");
  EXPECT_EQ(modules[0].description, "VLANs: made and named.");
  EXPECT_EQ(modules[1].name, "lag");
  EXPECT_TRUE(modules[1].operations.empty());
  ASSERT_EQ(modules[0].operations.size(), 1u) << "hidden ones are left out";
  const api_operation &operation = modules[0].operations[0];
  EXPECT_EQ(operation.name, "Set the name of a VLAN");
  EXPECT_EQ(operation.verb, "set");
  EXPECT_EQ(operation.description, "Names a VLAN.");
  EXPECT_EQ(operation.method, "PUT");
  EXPECT_EQ(operation.uri, "/vlans/{vlanId}/name");
  EXPECT_EQ(operation.parameters.size(), 5u);
}

TEST(ApiDescription, PlaceholdersAreToldFromVariables) {
  const std::vector<api_parameter> parameters = described(DOCUMENT)[0].operations[0].parameters;
  EXPECT_EQ(parameters[0].name, "vlanId");
  EXPECT_EQ(parameters[0].description, "VLAN ID.");
  EXPECT_TRUE(parameters[0].in_uri);
  EXPECT_TRUE(parameters[0].required);
  EXPECT_EQ(parameters[1].description, "Name. Blanks count.");
  EXPECT_FALSE(parameters[1].in_uri);
  EXPECT_TRUE(parameters[1].required);
  EXPECT_EQ(parameters[2].description, "Mode.");
  EXPECT_FALSE(parameters[2].required);
}

TEST(ApiDescription, FormatMayAlwaysBeMissing) {
  const std::vector<api_parameter> parameters = described(DOCUMENT)[0].operations[0].parameters;
  EXPECT_TRUE(parameters[3].required) << "the session key";
  EXPECT_FALSE(parameters[4].required) << "the format";
}

TEST(ApiDescription, EmptyDocumentHasNoModules) {
  EXPECT_TRUE(described("").empty());
}

/* --- Types and ranges ---------------------------------------------------------------------------------- */

/* The parameter `value` when its bracket is this one. */
static api_parameter with_range(const std::string &range) {
  const std::vector<api_module> modules =
      described(replaced(DOCUMENT, "[String from 1 to 32 characters]", range));
  if (modules.empty()) return {};
  const api_parameter &parameter = modules[0].operations[0].parameters[1];
  EXPECT_EQ(parameter.range, range);
  return parameter;
}

TEST(ApiDescription, IntegersHaveARangeAndAtMostOneValueOutsideIt) {
  const api_parameter plain = with_range("[Integer from 0 to 4294967295]");
  EXPECT_EQ(plain.kind, parameter_kind::INTEGER);
  EXPECT_EQ(plain.minimum, 0);
  EXPECT_EQ(plain.maximum, 4294967295);
  EXPECT_FALSE(plain.special.has_value());
  const api_parameter special = with_range("[Integer from 1 to 160, or -1 for the default]");
  EXPECT_EQ(special.minimum, 1);
  EXPECT_EQ(special.maximum, 160);
  EXPECT_EQ(special.special, -1);
  EXPECT_EQ(special.special_meaning, "the default");
}

TEST(ApiDescription, InterfaceNumbersAreIntegersWithoutARange) {
  for (const char *range :
       {"[Interface number]", "[Interface number of a port]", "[Interface number of a port or LAG]"}) {
    const api_parameter parameter = with_range(range);
    EXPECT_EQ(parameter.kind, parameter_kind::INTEGER) << range;
    EXPECT_FALSE(parameter.minimum.has_value()) << range;
    EXPECT_FALSE(parameter.maximum.has_value()) << range;
  }
}

TEST(ApiDescription, TextsHaveLengths) {
  const struct {
    const char *range;
    unsigned minimum, maximum;
  } rows[] = {
      {"[String up to 32 characters]", 0, 32},
      {"[String from 2 to 32 characters]", 2, 32},
      {"[String of 32 characters]", 32, 32},
      {"[String of letters]", 0, 0},
      {"[MAC address]", 0, 0},
      {"[List of VLAN IDs]", 0, 0},
  };
  for (const auto &row : rows) {
    const api_parameter parameter = with_range(row.range);
    EXPECT_EQ(parameter.kind, parameter_kind::TEXT) << row.range;
    EXPECT_EQ(parameter.min_length, row.minimum) << row.range;
    EXPECT_EQ(parameter.max_length, row.maximum) << row.range;
  }
}

/* "value=meaning" of each choice, with a comma behind it. */
static std::string choices_of(const api_parameter &parameter) {
  std::string text;
  for (const parameter_choice &choice : parameter.choices) text += choice.value + "=" + choice.meaning + ",";
  return text;
}

TEST(ApiDescription, ChoicesHaveMeaningsOrSpeakForThemselves) {
  const api_parameter words = with_range("{in | out}");
  EXPECT_EQ(words.kind, parameter_kind::CHOICE);
  EXPECT_EQ(choices_of(words), "in=,out=,");
  EXPECT_EQ(choices_of(with_range("{1 = half 100 Mbit/s | 2 = 10/100}")), "1=half 100 Mbit/s,2=10/100,");
  EXPECT_EQ(choices_of(with_range("{-1 = all}")), "-1=all,");
}

/* --- Mistakes ------------------------------------------------------------------------------------------ */

TEST(ApiDescription, BracketsOfOtherFormsAreRefused) {
  for (const char *range :
       {"[]", "{}", "[Integer]", "[Integer from 1]", "[Integer from 4 to 1]", "[Integer from 1 to 4 ]",
        "[Integer from 1 to 99999999999999999999]", "[Integer from 1 to 160, or -1 for ]",
        "[Integer from 1 to 160, or 7 for the default]", "[Integer from 1 to 160 or -1 for the default]",
        "[String]", "[String up to 0 characters]", "[String up to -1 characters]",
        "[String up to 32 letters]", "[String from 3 to 2 characters]", "[string of letters]",
        "[MAC addresses]", "[Something]"}) {
    const std::string mistake = mistake_in(replaced(DOCUMENT, "[String from 1 to 32 characters]", range));
    EXPECT_TRUE(mistake.starts_with("module vlans, API \"Set the name of a VLAN\", parameter value: "))
        << range << " " << mistake;
  }
}

struct mistake {
  const char *from, *to; /* the change that makes the document wrong */
  const char *place;
  const char *what;
};

static const char IN_VALUE[] = "module vlans, API \"Set the name of a VLAN\", parameter value: ";
static const char IN_MODE[] = "module vlans, API \"Set the name of a VLAN\", parameter mode: ";
static const char IN_API[] = "module vlans, API \"Set the name of a VLAN\": ";
static const char IN_MODULE[] = "module vlans: ";

static void expect_refused(std::initializer_list<mistake> rows) {
  for (const mistake &row : rows) {
    EXPECT_EQ(mistake_in(replaced(DOCUMENT, row.from, row.to)), std::string(row.place) + row.what) << row.to;
  }
}

TEST(ApiDescription, ChoicesOfOtherFormsAreRefused) {
  expect_refused({
      {"{0 = disable | 1 = enable}", "{0 = disable | 1}", IN_MODE, "only some choices have a meaning"},
      {"{0 = disable | 1 = enable}", "{0 = disable | 1 = }", IN_MODE, "a choice has an empty meaning"},
      {"{0 = disable | 1 = enable}", "{0 | }", IN_MODE, "a choice is empty"},
      {"{0 = disable | 1 = enable}", "{0|1 | 2 }", IN_MODE, "the value of a choice holds a blank"},
      {"{0 = disable | 1 = enable}", "{on | off | on}", IN_MODE, "a choice stands twice"},
      {"{0 = disable | 1 = enable}", "{0 = on | 1 = on}", IN_MODE, "two choices mean the same"},
  });
}

TEST(ApiDescription, DescriptionsOfOtherFormsAreRefused) {
  const char *const end = "the text does not end with its one bracket";
  const char *const sentence = "no sentence stands before the bracket";
  expect_refused({
      {"[String from 1 to 32 characters]", "String", IN_VALUE, "there is no bracket"},
      {"32 characters]", "32 characters].", IN_VALUE, end},
      {"32 characters]", "32 characters}", IN_VALUE, end},
      {"Blanks count.", "[Blanks] count.", IN_VALUE, end},
      {"Blanks count.", "Blanks count", IN_VALUE, sentence},
      {"Name. Blanks count. ", "", IN_VALUE, sentence},
      {"Optional. Mode. ", "Optional. ", IN_MODE, "no sentence stands before the bracket"},
      {"value@", "value@@", IN_VALUE, sentence},
      {"value@Name", "value@ Name", IN_VALUE, sentence},
      {"value@Name. Blanks count. [String from 1 to 32 characters]", "value", IN_VALUE,
       "the description is missing"},
      {"param=value@", "param=vlanId@",
       "module vlans, API \"Set the name of a VLAN\", parameter vlanId: ", "the name stands twice"},
      {"param=value@", "param=a b@",
       "module vlans, API \"Set the name of a VLAN\", parameter a b: ", "this is no name"},
  });
}

TEST(ApiDescription, ParametersInAnotherOrderAreRefused) {
  const char *const first = "the placeholders of the URI do not come first, in its order";
  expect_refused({
      {"/{vlanId}", "/{vlan}", IN_API, first},
      {"/{vlanId}", "/{vlanId}/{other}", IN_API, first},
      {"/{vlanId}", "", IN_API, "vlanId is not in the URI"},
      {", in the URI", "", IN_API, "vlanId is in the URI"},
      {"@VLAN ID, in", "@Optional. VLAN ID, in", IN_API, "vlanId is in the URI and cannot be optional"},
      {"@Name. Blanks count.", "@Name, in the URI.", IN_API, "value is not in the URI"},
  });
}

TEST(ApiDescription, SessionKeyAndFormatInOtherWordsAreRefused) {
  const char *const last = "the last two parameters are not sessionkey and format";
  const char *const key = "sessionkey is not described in the usual words";
  const char *const format = "format is not described in the usual words";
  expect_refused({
      {"param=sessionkey@", "param=key@", IN_API, last},
      {"{xml | json}\n", "{xml | json}\n param=more@More. [Interface number]\n", IN_API, last},
      {" that logging in returned", "", IN_API, key},
      {"[String of 32 characters]", "[String of 31 characters]", IN_API, key},
      {"Specified return", "Return", IN_API, format},
      {"{xml | json}", "{json | xml}", IN_API, format},
      {"Specified return", "Optional. Specified return", IN_API, format},
  });
}

TEST(ApiDescription, ApisOfOtherFormsAreRefused) {
  const char *const uri = " in the URI is neither a word nor a placeholder";
  expect_refused({
      {"api_name=Set the", "api_name=set the",
       "module vlans, API \"set the name of a VLAN\": ", "the name does not begin with a verb"},
      {"api_name=Set the", "api_name=Set-up the",
       "module vlans, API \"Set-up the name of a VLAN\": ", "the name does not begin with a verb"},
      {"api_name=Set the", "api_name=Show the",
       "module vlans, API \"Show the name of a VLAN\": ", "the verb does not suit PUT"},
      {"=PUT", "=GET", IN_API, "the verb does not suit GET"},
      {"=PUT", "=PATCH", IN_API, "there is no method PATCH"},
      {"Names a VLAN.", "Names a VLAN", IN_API, "api_desc is not one sentence"},
      {"Names a VLAN.", "Names a VLAN. Or not.", IN_API, "api_desc is not one sentence"},
      {"Names a VLAN.", "names a VLAN.", IN_API, "api_desc is not one sentence"},
      {"=/vlans", "=vlans", IN_API, "the URI does not begin with a slash"},
      {"{vlanId}/", "{}/", IN_API, (std::string("\"{}\"") + uri).c_str()},
      {"{vlanId}/", "{vlanId/", IN_API, (std::string("\"{vlanId\"") + uri).c_str()},
      {"{vlanId}/", "/", IN_API, (std::string("\"\"") + uri).c_str()},
      {"/name\n", "/\n", IN_API, (std::string("\"\"") + uri).c_str()},
  });
}

TEST(ApiDescription, TheVerbMayBeTheLastWordOfTheUri) {
  const std::string reset = replaced(DOCUMENT, "Set the name", "Name the name");
  EXPECT_EQ(described(reset)[0].operations[0].verb, "name");
}

/* The document with a second API behind the first. */
static std::string with_second_api(const std::string &name, const std::string &uri,
                                   const std::string &method) {
  return replaced(DOCUMENT, "#==API-START\n",
                  "==API-START\n api_name=" + name + "\n api_desc=Does it.\n api_uri=" + uri +
                      "\n api_method=" + method +
                      "\n=API-PARAM-START\n param=vlanId@VLAN ID, in the URI. [Integer from 1 to 4094]\n"
                      " param=sessionkey@Session key that logging in returned. [String of 32 characters]\n"
                      " param=format@Specified return format. {xml | json}\n=API-PARAM-END\n==API-END\n");
}

TEST(ApiDescription, ApisWithOneUriDifferInMethodAndVerb) {
  EXPECT_EQ(
      described(with_second_api("Delete the name", "/vlans/{vlanId}/name", "DELETE"))[0].operations.size(),
      2u);
  EXPECT_EQ(described(with_second_api("Set the colour", "/vlans/{vlanId}", "PUT"))[0].operations.size(), 2u);
  const std::string same = "\"Set the name of a VLAN\" has the same URI, and the same method or verb";
  EXPECT_EQ(mistake_in(with_second_api("Set it anew", "/vlans/{vlanId}/name", "POST")),
            "module vlans, API \"Set it anew\": " + same);
  EXPECT_EQ(mistake_in(with_second_api("Name it", "/vlans/{vlanId}/name", "PUT")),
            "module vlans, API \"Name it\": " + same);
}

TEST(ApiDescription, ValuesThatThePagesCannotShowAreRefused) {
  const std::string unwanted = "api_desc holds <, >, & or a control character";
  for (const char *text : {"<", ">", "&", "\t", "\r"}) {
    EXPECT_EQ(mistake_in(replaced(DOCUMENT, "Names a", std::string("Names ") + text + " a")),
              IN_API + unwanted)
        << text;
  }
  const std::string longest(1000 - 2, 'x');
  EXPECT_EQ(described(replaced(DOCUMENT, "Names a VLAN", "N" + longest)).size(), 2u);
  EXPECT_EQ(mistake_in(replaced(DOCUMENT, "Names a VLAN", "Nx" + longest)),
            std::string(IN_API) + "api_desc is too long");
  EXPECT_EQ(mistake_in(replaced(DOCUMENT, "Names a VLAN.", "Names a VLAN. ")),
            std::string(IN_API) + "api_desc is empty, or blanks stand around it");
}

TEST(ApiDescription, LinesOutsideTheGrammarAreRefused) {
  expect_refused({
      {"===MODULE-START\n    module_name=vlans", "    module_name=vlans",
       "document: ", "===MODULE-START is missing before the line \"    module_name=vlans\""},
      {"    module_name=vlans", "module_name=vlans",
       "document: ", "module_name is missing before the line \"module_name=vlans\""},
      {"    module_name=vlans\n", "\n    module_name=vlans\n",
       "document: ", "module_name is missing before the line \"\""},
      {"    module_desc=", "    module_text=", IN_MODULE,
       "module_desc is missing before the line \"    module_text=VLANs: made and named.\""},
      {"\n\n==API-START", "\nVLANs\n==API-START", IN_MODULE,
       "===MODULE-END is missing before the line \"VLANs\""},
      {"    api_desc=Names a VLAN.\n", "", IN_API,
       "api_desc is missing before the line \"    api_uri=/vlans/{vlanId}/name\""},
      {"=API-PARAM-START\n", "", IN_API,
       "=API-PARAM-START is missing before the line \"    param=vlanId@VLAN ID, in the URI. "
       "[Integer from 1 to 4094]\""},
      {"    param=value", "param=value", IN_API,
       "param is missing before the line \"param=value@Name. Blanks count. [String from 1 to 32 "
       "characters]\""},
      {"=API-PARAM-END\n", "", IN_API, "param is missing before the line \"==API-END\""},
      {"==API-END\n", "", IN_API, "==API-END is missing before the line \"===MODULE-END\""},
      {"===MODULE-END\n===MODULE-START", "===MODULE-START", IN_MODULE,
       "===MODULE-END is missing before the line \"===MODULE-START\""},
      {"Aggregation.\n===MODULE-END\n", "Aggregation.\n", "module lag: ", "===MODULE-END is missing"},
      {"Aggregation.\n===MODULE-END\n", "Aggregation.\n===MODULE-END",
       "module lag: ", "the last line has no newline"},
      {"===MODULE-END\n===MODULE-START\n", "===MODULE-END\nlag\n===MODULE-START\n",
       "document, behind module vlans: ", "===MODULE-START is missing before the line \"lag\""},
  });
}

TEST(ApiDescription, ModulesOfOtherFormsAreRefused) {
  expect_refused({
      {"module_name=lag", "module_name=vlans", IN_MODULE, "the module stands twice"},
      {"module_name=vlans", "module_name=vlans0", "module vlans0: ", "the name does not consist of letters"},
      {"Aggregation.", "Aggregation", "module lag: ", "module_desc is not a sentence"},
  });
}

TEST(ApiDescription, EveryCutOfTheDocumentIsRefusedOrHasWholeModules) {
  const std::string document = DOCUMENT;
  const size_t first_end = document.find("===MODULE-END\n") + strlen("===MODULE-END\n");
  for (size_t length = 0; length < document.size(); ++length) {
    std::string error;
    const std::vector<api_module> modules = describe_api(document.substr(0, length).c_str(), &error);
    if (error.empty()) {
      EXPECT_TRUE(length <= strlen("#####\n") || length == first_end) << length;
      EXPECT_EQ(modules.size(), length == first_end ? 1u : 0u) << length;
    } else {
      EXPECT_TRUE(modules.empty()) << length;
    }
  }
}

/* --- The compiled-in document -------------------------------------------------------------------------- */

/* The string children of a node, each in a line of its own. */
static void append_values(const node_t *node, std::string *text) {
  for (node = get_next_node(get_subtree_node1(node)); node != nullptr; node = get_next_node(node)) {
    if (get_node_val_type(node) == VAL_TYPE_STRING) {
      *text += std::string(node->val_data.val_s) + "\n";
    } else {
      append_values(node, text);
    }
  }
}

static std::string values_of(const std::vector<api_module> &modules) {
  std::string text;
  for (const api_module &module : modules) {
    text += module.name + "\n" + module.description + "\n";
    for (const api_operation &operation : module.operations) {
      for (const std::string &value :
           {operation.name, operation.description, operation.uri, operation.method}) {
        text += value + "\n";
      }
      for (const api_parameter &parameter : operation.parameters) {
        std::string sentences = parameter.description.substr(0, parameter.description.size() - 1);
        text += parameter.name + "\n";
        text += parameter.required || parameter.name == "format" ? "" : "Optional. ";
        text += sentences + (parameter.in_uri ? ", in the URI. " : ". ") + parameter.range + "\n";
      }
    }
  }
  return text;
}

/* The daemon's parser and this one agree on every word; putting it together again leaves nothing out. */
TEST(ApiDescription, HelpPagesSayTheSame) {
  node_t *tree = parse_help_doc_text_to_tree_obj();
  std::string told;
  append_values(get_next_node(tree), &told);
  free_tree(tree);
  EXPECT_EQ(told, values_of(api_modules()));
}

TEST(ApiDescription, CompiledInDocumentHasTheModulesInTheirOrder) {
  std::string names;
  for (const api_module &module : api_modules()) names += module.name + " ";
  EXPECT_EQ(names,
            "login help base bgp boxs if lag logging routing system tcam vlans transfer ssh script vxlan "
            "process acl ");
}
