/* The help document is complete and true: it is held against the route tables of the modules in both
 * directions, and against the variables that an operation reads when it is called. */
#include "engine/rest_engine_session_hdr.h"
#include "engine/rest_web_request_hdr.h"
#include "modules/rest_help_document.h"
#include "tests/support/platform_fixture.h"
#include "tests/unit/help/documented_apis.h"

#include <random>
#include <regex>
#include <set>

/* --- Which variables are read -------------------------------------------------------------------------- */

static std::set<std::string> variables_read;

/* The linker gives every call of mg_get_var() to this function; see CMakeLists.txt. */
int real_get_var(const mg_connection *conn, const char *name, char *dst,
                 size_t dst_len) asm("__real__Z10mg_get_varPK13mg_connectionPKcPcm");
int recording_get_var(const mg_connection *conn, const char *name, char *dst,
                      size_t dst_len) asm("__wrap__Z10mg_get_varPK13mg_connectionPKcPcm");

int recording_get_var(const mg_connection *conn, const char *name, char *dst, size_t dst_len) {
  variables_read.insert(name);
  return real_get_var(conn, name, dst, dst_len);
}

/* --- What must not happen ------------------------------------------------------------------------------ */

/* In place of the switch's: no file is transferred here and nothing is reloaded. */
extern "C" {
open_error_t rpcclt_openapiTransferFileDownload(openapiClientHandle_t *, open_buffdesc *, open_buffdesc *) {
  return OPEN_E_FAIL;
}

open_error_t rpcclt_openapiTransferFileUpload(openapiClientHandle_t *, open_buffdesc *, open_buffdesc *) {
  return OPEN_E_FAIL;
}

open_error_t rpcclt_openapiSystemReloadSet(openapiClientHandle_t *, uint32_t) {
  return OPEN_E_FAIL;
}
}

/* --- Requests ------------------------------------------------------------------------------------------ */

/* What operations need to find so that they do not give up before they have read all. */
static const char SCENE[] = "vlan 10,20,30\n"
                            "vlan 10 routing\n"
                            "acl mac web\nacl ip web\nacl ipv6 web\n"
                            "tcam policy 1 openflow\n"
                            "logging host 10.0.0.9\n"
                            "vxlan mode unicast\n"
                            "vxlan tenant 10000 vlan 20\n"
                            "bgp local-as 65000\n"
                            "bgp neighbor 10.0.0.1 remote-as 65001\n";

class HelpDocument : public PlatformTest {
protected:
  HelpDocument() {
    client_handle = *handle; /* the server's own, which it would have from its registration */
    set_session_timeout(SESSION_TIMEOUT_DEFAULT);
  }

  /* Calls the API as the server does, with a session of its own. */
  std::string call_api(const documented_api &api, const std::string &variables) const {
    unsigned char key[SESSION_KEY_SIZE] = "";
    EXPECT_EQ(create_session("admin", "127.0.0.1", 40000, key), RC_TRUE);
    std::string query = std::string("sessionkey=") + reinterpret_cast<char *>(key) + variables;
    FakeRequest request(api.method, sample_uri(api), query);
    evt_handler(request.conn(), MG_AUTH);
    evt_handler(request.conn(), MG_REQUEST);
    delete_session(get_session_id("127.0.0.1", reinterpret_cast<char *>(key)));
    set_session_timeout(SESSION_TIMEOUT_DEFAULT);
    return request.reply().body;
  }
};

static std::string title_of(const documented_module &module, const documented_api &api) {
  return module.name + ": " + api.method + " " + api.uri + " (" + api.name + ")";
}

/* --- The tables of routes ------------------------------------------------------------------------------ */

TEST_F(HelpDocument, HasTheModulesInTheirOrder) {
  std::vector<std::string> names;
  for (const documented_module &module : documented_modules()) names.push_back(module.name);
  EXPECT_EQ(names, (std::vector<std::string>{"login", "help", "base", "bgp", "boxs", "if", "lag", "logging",
                                             "routing", "system", "tcam", "vlans", "transfer", "ssh",
                                             "script", "vxlan", "process", "acl"}));
}

static const rest_route *route_of(const documented_module &module, const documented_api &api) {
  return find_route(routes_of(module.name), method_of(api), sample_uri(api).c_str());
}

TEST_F(HelpDocument, EveryRoutedOperationIsDocumentedOnce) {
  for (const documented_module &module : documented_modules()) {
    std::map<rest_operation_t, int> documented;
    for (const documented_api &api : module.apis) {
      const rest_route *route = api.hidden ? nullptr : route_of(module, api);
      if (route != nullptr) documented[route->operation]++;
    }
    EXPECT_FALSE(routes_of(module.name).empty()) << module.name;
    for (const rest_route &route : routes_of(module.name))
      EXPECT_EQ(documented[route.operation], 1)
          << module.name << ": " << route.method << " " << route.pattern;
  }
}

/* Fields that a pattern takes from the URI; a keyword is no placeholder, and what stands between braces
 * neither. */
static size_t fields_of(const rest_route &route) {
  if (route.count < 0) return 0;
  return static_cast<size_t>(route.count) - (route.keyword != nullptr ? 1 : 0);
}

TEST_F(HelpDocument, EveryDocumentedApiIsRouted) {
  for (const documented_module &module : documented_modules()) {
    for (const documented_api &api : module.apis) {
      const rest_route *route = route_of(module, api);
      if (api.hidden) {
        EXPECT_EQ(route, nullptr) << title_of(module, api) << " is hidden but routed";
        continue;
      }
      ASSERT_NE(route, nullptr) << title_of(module, api);
      EXPECT_EQ(placeholders_of(api.uri).size(), fields_of(*route)) << title_of(module, api);
    }
  }
}

/* --- Parameters ---------------------------------------------------------------------------------------- */

/* Request variables of an API: what it lists but the placeholders of its URI. */
static std::set<std::string> variables_of(const documented_api &api) {
  std::set<std::string> names;
  const std::vector<std::string> placeholders = placeholders_of(api.uri);
  size_t position = 0;
  for (const documented_parameter &parameter : api.parameters) {
    if (position < placeholders.size()) {
      EXPECT_EQ(parameter.name, placeholders[position]) << api.method << " " << api.uri;
    } else {
      EXPECT_TRUE(names.insert(parameter.name).second) << api.uri << " lists " << parameter.name << " twice";
    }
    position++;
  }
  return names;
}

/* A request variable to try an operation with. */
struct sample_variable {
  std::string name;
  unsigned left_out; /* once in so many requests; 0: it is always there */
  std::vector<std::string> values;
};

/* How often a variable is left out: an optional one every other time, but seldom when most values of others
 * need it. */
static unsigned left_out(const documented_parameter &parameter) {
  if (!parameter.description.starts_with("Optional. ")) return 0;
  return std::regex_search(parameter.description, std::regex("[Nn]eeded unless")) ? 8 : 2;
}

static std::vector<sample_variable> sample_variables(const documented_api &api) {
  std::vector<sample_variable> variables;
  for (size_t i = placeholders_of(api.uri).size(); i < api.parameters.size(); i++) {
    const documented_parameter &parameter = api.parameters[i];
    if (parameter.name == "sessionkey") continue; /* call_api() has one */
    variables.push_back({parameter.name, left_out(parameter), sample_values(api, parameter)});
  }
  return variables;
}

/* A query of variables with values that the document allows. */
static std::string sample_query(const std::vector<sample_variable> &variables, std::mt19937 *random) {
  std::string query;
  for (const sample_variable &variable : variables) {
    if (variable.left_out != 0 && (*random)() % variable.left_out == 0) continue;
    query += "&" + variable.name + "=" + variable.values[(*random)() % variable.values.size()];
  }
  return query;
}

TEST_F(HelpDocument, AnOperationReadsTheDocumentedParametersAndNoOthers) {
  std::mt19937 random(7);
  for (const documented_module &module : documented_modules()) {
    for (const documented_api &api : module.apis) {
      if (api.hidden) continue;
      std::set<std::string> expected = variables_of(api);
      expected.insert("method"); /* which all requests understand */
      const std::vector<sample_variable> variables = sample_variables(api);
      variables_read.clear();
      /* Some variables are read only with certain values of others. */
      for (int round = 0; round < 10 || (round < 2000 && variables_read != expected); round++) {
        if (round == 0 || (round % 4 == 0 && api.method != "GET")) configure(SCENE);
        const std::string body = call_api(api, sample_query(variables, &random));
        ASSERT_EQ(body.find("<rlt_code>90"), std::string::npos) << title_of(module, api) << ": " << body;
      }
      EXPECT_EQ(variables_read, expected) << title_of(module, api);
    }
  }
}

/* --- Wording ------------------------------------------------------------------------------------------- */

static bool has_known_form(const std::string &description) {
  static const std::regex form(
      ".*\\. (\\[Integer from -?[0-9]+ to [0-9]+(, or -?[0-9]+ for [a-z ]+)?\\]"
      "|\\[String (up to [0-9]+|from [0-9]+ to [0-9]+|of [0-9]+) characters\\]|\\[String of letters\\]"
      "|\\[Interface number( of a port( or LAG)?)?\\]|\\[(MAC|IPv4|IPv6|IPv4 or IPv6) address\\]"
      "|\\[(?!Integer|String|Interface)[A-Z][^\\[\\]]*\\]|\\{[^{}]+\\})");
  return std::regex_match(description, form);
}

TEST_F(HelpDocument, ParametersAreWordedAlike) {
  for (const documented_module &module : documented_modules()) {
    for (const documented_api &api : module.apis) {
      const std::string title = title_of(module, api);
      ASSERT_GE(api.parameters.size(), 2u) << title;
      const size_t count = api.parameters.size(), in_uri = placeholders_of(api.uri).size();
      EXPECT_EQ(api.parameters[count - 2].name, "sessionkey") << title;
      EXPECT_EQ(api.parameters[count - 1].name, "format") << title;
      EXPECT_EQ(api.parameters[count - 1].description, module.name == "help"
                                                           ? "Specified return format. {xml | json | html}"
                                                           : "Specified return format. {xml | json}");
      for (size_t i = 0; i < count; i++) {
        const documented_parameter &parameter = api.parameters[i];
        EXPECT_TRUE(has_known_form(parameter.description)) << title << ": " << parameter.description;
        const bool says_so = parameter.description.find(", in the URI. ") != std::string::npos;
        EXPECT_EQ(says_so, i < in_uri) << title << ": " << parameter.description;
      }
    }
  }
}

TEST_F(HelpDocument, TextsCanStandInPagesThatEscapeNothing) {
  const std::string text = restGlobalHelpDocText;
  EXPECT_EQ(text.find_first_of("<>&\t\r"), std::string::npos);
  for (const documented_module &module : documented_modules()) {
    for (const documented_api &api : module.apis) {
      for (const std::string &value : {api.name, api.description, api.uri})
        EXPECT_LE(value.size(), 1000u) << value;
      for (const auto &parameter : api.parameters) EXPECT_LE(parameter.description.size(), 1000u) << api.uri;
      EXPECT_TRUE(api.description.ends_with(".")) << title_of(module, api);
    }
  }
}

TEST_F(HelpDocument, VerbsTellTheOperationsOfAUriApart) {
  std::set<std::string> seen;
  for (const documented_module &module : documented_modules()) {
    for (const documented_api &api : module.apis) {
      const std::string verb = api.name.substr(0, api.name.find(' '));
      const std::string words = verb == "Log" ? api.name : verb; /* "Log in" and "Log out" */
      EXPECT_TRUE(seen.insert(api.uri + " " + words).second || api.hidden) << title_of(module, api);
      EXPECT_TRUE(std::regex_match(verb, std::regex("[A-Z][a-z]+"))) << title_of(module, api);
    }
  }
}
