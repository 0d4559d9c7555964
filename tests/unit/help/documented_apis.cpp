#include "tests/unit/help/documented_apis.h"

#include "modules/rest_help_document.h"
#include "modules/rest_module_acl.h"
#include "modules/rest_module_base.h"
#include "modules/rest_module_bgp.h"
#include "modules/rest_module_boxs.h"
#include "modules/rest_module_help.h"
#include "modules/rest_module_interface.h"
#include "modules/rest_module_lag.h"
#include "modules/rest_module_logging.h"
#include "modules/rest_module_login.h"
#include "modules/rest_module_process.h"
#include "modules/rest_module_routing.h"
#include "modules/rest_module_script.h"
#include "modules/rest_module_ssh.h"
#include "modules/rest_module_system.h"
#include "modules/rest_module_tcam.h"
#include "modules/rest_module_transfer.h"
#include "modules/rest_module_vlan.h"
#include "modules/rest_module_vxlan.h"

#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <sstream>

/* --- Reading the text ---------------------------------------------------------------------------------- */

namespace {

/* Takes lines one after the other; blank lines and banners are passed over. */
struct text_lines {
  std::istringstream input;
  std::string line;
  unsigned number = 0;
  bool hidden = false; /* the line began with "#", which is taken off */

  bool next() {
    static const std::regex passed_over("|#{20,}|# *Module: .*#");
    do {
      if (!std::getline(input, line)) return false;
      number++;
    } while (std::regex_match(line, passed_over));
    hidden = line[0] == '#';
    if (hidden) line.erase(0, 1);
    return true;
  }

  void unexpected(const std::string &wanted) const {
    ADD_FAILURE() << "line " << number << " should be " << wanted << ": " << line;
  }

  /* The next line must be this marker. */
  void marker(const std::string &wanted, bool is_hidden) {
    if (!next() || line != wanted || hidden != is_hidden) unexpected(wanted);
  }

  std::string value(const std::string &key, bool is_hidden) {
    std::smatch match;
    if (next() && hidden == is_hidden && std::regex_match(line, match, std::regex(" +" + key + "=(.+)")))
      return match[1];
    unexpected("a value of " + key);
    return "";
  }
};

void read_parameters(text_lines *lines, documented_api *api) {
  static const std::regex parameter(" +param=([^@]+)@([^@].*)");
  lines->marker("=API-PARAM-START", api->hidden);
  while (lines->next() && lines->line != "=API-PARAM-END") {
    std::smatch match;
    if (lines->hidden != api->hidden || !std::regex_match(lines->line, match, parameter)) {
      lines->unexpected("a parameter");
      return;
    }
    api->parameters.push_back({match[1], match[2]});
  }
}

/* An API, of which the opening marker has been taken. */
documented_api read_api(text_lines *lines) {
  documented_api api = {};
  api.hidden = lines->hidden;
  api.name = lines->value("api_name", api.hidden);
  api.description = lines->value("api_desc", api.hidden);
  api.uri = lines->value("api_uri", api.hidden);
  api.method = lines->value("api_method", api.hidden);
  read_parameters(lines, &api);
  lines->marker("==API-END", api.hidden);
  return api;
}

documented_module read_module(text_lines *lines) {
  documented_module module;
  module.name = lines->value("module_name", false);
  module.description = lines->value("module_desc", false);
  while (lines->next() && lines->line != "===MODULE-END") {
    if (lines->line != "==API-START") {
      lines->unexpected("==API-START");
      break;
    }
    module.apis.push_back(read_api(lines));
  }
  return module;
}

} // namespace

std::vector<documented_module> read_help_text(const std::string &text) {
  text_lines lines{std::istringstream(text), ""};
  std::vector<documented_module> modules;
  while (lines.next()) {
    if (lines.line != "===MODULE-START" || lines.hidden) {
      lines.unexpected("===MODULE-START");
      break;
    }
    modules.push_back(read_module(&lines));
  }
  return modules;
}

const std::vector<documented_module> &documented_modules() {
  static const std::vector<documented_module> modules = read_help_text(restGlobalHelpDocText);
  return modules;
}

/* --- Parts of it --------------------------------------------------------------------------------------- */

std::vector<std::string> placeholders_of(const std::string &uri) {
  static const std::regex placeholder("\\{([^}]*)\\}");
  std::vector<std::string> names;
  for (std::sregex_iterator i(uri.begin(), uri.end(), placeholder), end; i != end; ++i)
    names.push_back((*i)[1]);
  return names;
}

std::string bracket_of(const std::string &description) {
  static const std::regex bracket(".* (\\[([^\\[\\]]+)\\]|\\{([^{}]+)\\})");
  std::smatch match;
  if (!std::regex_match(description, match, bracket)) return "";
  return match[2].matched ? match[2] : match[3];
}

request_method_t method_of(const documented_api &api) {
  static const std::map<std::string, request_method_t> methods = {{"GET", REQUEST_METHOD_GET},
                                                                  {"POST", REQUEST_METHOD_POST},
                                                                  {"PUT", REQUEST_METHOD_PUT},
                                                                  {"DELETE", REQUEST_METHOD_DELETE}};
  auto found = methods.find(api.method);
  return found == methods.end() ? REQUEST_METHOD_OTHER : found->second;
}

std::span<const rest_route> routes_of(const std::string &module) {
  static const std::map<std::string, std::span<const rest_route> (*)(void)> tables = {
      {"login", login_api_routes},       {"help", help_api_routes},       {"base", base_api_routes},
      {"bgp", bgp_api_routes},           {"boxs", boxs_api_routes},       {"if", interface_api_routes},
      {"lag", lag_api_routes},           {"logging", logging_api_routes}, {"routing", routing_api_routes},
      {"system", system_api_routes},     {"tcam", tcam_api_routes},       {"vlans", vlan_api_routes},
      {"transfer", transfer_api_routes}, {"ssh", ssh_api_routes},         {"script", script_api_routes},
      {"vxlan", vxlan_api_routes},       {"process", process_api_routes}, {"acl", acl_api_routes},
  };
  auto table = tables.find(module);
  return table == tables.end() ? std::span<const rest_route>() : table->second();
}

/* --- Samples ------------------------------------------------------------------------------------------- */

namespace {

using values = std::vector<std::string>;

/* "a = x | b" gives a and b. */
values choices_of(const std::string &bracket) {
  static const std::regex choice("([^ |=][^|=]*?)( = [^|]*?)?( \\| |$)");
  values found;
  for (std::sregex_iterator i(bracket.begin(), bracket.end(), choice), end; i != end; ++i)
    found.push_back((*i)[1]);
  return found;
}

/* Values of parameters that are more than a number, a choice or any text, by what stands in the brackets. */
const std::map<std::string, values> &values_by_form() {
  static const std::map<std::string, values> forms = {
      {"MAC address", {"00:11:22:33:44:55"}},
      {"IPv4 address", {"10.0.0.1"}},
      {"IPv6 address", {"2001:db8::1"}},
      {"IPv4 or IPv6 address", {"10.0.0.1", "2001:db8::1"}},
      {"List of VLAN IDs", {"10-20,30"}},
      {"Interface number", {"3"}},
      {"Interface number of a port", {"3"}},
      {"Interface number of a port or LAG", {"3", "56"}},
      {"MAC address or any", {"00:11:22:33:44:55", "any"}},
      {"MAC address, any or bpdu", {"00:11:22:33:44:55", "any", "bpdu"}},
      {"MAC mask", {"FF:FF:FF:00:00:00"}},
      {"IPv4 address or any", {"10.0.0.1", "any"}},
      {"IPv4 mask", {"255.255.255.0"}},
      {"IPv6 address or any", {"2001:db8::1", "any"}},
      {"IPv4 address from 224.0.1.0 to 239.255.255.255", {"239.1.1.1"}},
      {"Keyword, or integer from 0 to 256", {"1", "58", "tcp", "every"}},
      {"Keyword, or integer from 1536 to 65535", {"1536", "65535", "arp"}},
      {"Two hexadecimal digits", {"00", "ff"}},
      {"Condition on ports from 0 to 65535", {"eq:80", "range:0:65535"}},
  };
  return forms;
}

/* Those of parameters that lead to something that the test has put there, by their names. */
const std::map<std::string, values> &values_by_name() {
  static const std::map<std::string, values> names = {
      {"module", {"vlans"}},
      {"vlanId", {"10"}},
      {"ifNum", {"3"}},
      {"port", {"4"}},
      {"lagId", {"1"}},
      {"policyId", {"1"}},
      {"vxlanId", {"1"}},
      {"tenantId", {"10000"}},
      {"addr", {"10.0.0.9"}},
      {"scr", {"racks.scr"}},
      {"url", {"tftp://127.0.0.1/a"}},
  };
  return names;
}

} // namespace

std::vector<std::string> sample_values(const documented_api &api, const documented_parameter &parameter) {
  const std::string bracket = bracket_of(parameter.description);
  if (parameter.name == "name" && api.uri.starts_with("/acl")) return {"web"};
  auto by_name = values_by_name().find(parameter.name);
  if (by_name != values_by_name().end()) return by_name->second;
  if (parameter.description.ends_with("}")) return choices_of(bracket);
  std::smatch match;
  if (std::regex_search(bracket, match, std::regex("^Integer from (-?[0-9]+) to ([0-9]+)")))
    return {match[1], match[2]};
  auto by_form = values_by_form().find(bracket);
  return by_form != values_by_form().end() ? by_form->second : values{"1"};
}

std::string sample_uri(const documented_api &api) {
  std::string uri = api.uri;
  for (const documented_parameter &parameter : api.parameters) {
    const std::string placeholder = "{" + parameter.name + "}";
    for (size_t at; (at = uri.find(placeholder)) != std::string::npos;)
      uri.replace(at, placeholder.size(), sample_values(api, parameter)[0]);
  }
  return uri;
}
