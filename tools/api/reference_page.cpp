/* Each module has a table of its requests, a list of what its URIs hold, and for each request that takes
 * variables a list of them. */
#include "tools/api/reference_page.h"

#include "tools/api/letters.h"

#include <set>

/* --- Text ---------------------------------------------------------------------------------------------- */

static const char HEAD[] =
    R"(<!-- Written by the build from modules/help; the target update_api_documents puts it here. -->
# API reference

Every request by module: method, URI and variables. How requests are made, what answers look like and hold, and the
codes are in [the guide](api-guide.md); [openapi.json](openapi.json) tells programs the same as this page. The help
pages of a running switch, `GET /help?format=html`, tell it too, and [kestrelctl](kestrelctl.md) has a command for
each. `pml`, which has no help page, is described in [the guide](api-guide.md#pml) alone.

All requests take `sessionkey`, the key that `POST /login` returned, and `format`, `xml` (the default) or `json`;
neither is repeated below. Only `POST /login` and the module `help` do without a key. Variables are needed unless
they are called optional.
)";

static std::string code(const std::string &words) {
  return "`" + words + "`";
}

/* The words of a cell or list: what Markdown would take for its own is escaped. */
static std::string plain(const std::string &words) {
  std::string escaped;
  for (const char c : words) {
    if (c == '|' || c == '*' || c == '_' || c == '`' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

/* "`0` disable, `1` enable", or the range in the document's words. */
static std::string values_of(const api_parameter &parameter) {
  if (parameter.kind != parameter_kind::CHOICE) {
    return plain(parameter.range.substr(1, parameter.range.size() - 2));
  }
  std::string values;
  for (const parameter_choice &choice : parameter.choices) {
    values += (values.empty() ? "" : ", ") + code(choice.value);
    if (!choice.meaning.empty()) values += " " + plain(choice.meaning);
  }
  return values;
}

static std::string told(const std::string &name, const api_parameter &parameter) {
  return code(name) + (parameter.required ? ": " : " (optional): ") + plain(parameter.description) + " (" +
         values_of(parameter) + ")";
}

/* --- Variables ----------------------------------------------------------------------------------------- */

/* More than these have a list of their own below the table. */
enum { MOST_VARIABLES_IN_A_CELL = 3 };

static std::string request_of(const api_operation &operation) {
  return operation.method + " " + operation.uri;
}

/* Each as it is told; without those that all requests take. */
static std::vector<std::string> variables_of(const api_operation &operation) {
  std::vector<std::string> variables;
  for (const api_parameter &parameter : operation.parameters) {
    const bool is_common = parameter.name == "sessionkey" || parameter.name == "format";
    if (!parameter.in_uri && !is_common) variables.push_back(told(parameter.name, parameter));
  }
  return variables;
}

/* That of the list with the variables of an operation: letters, digits and hyphens of its heading. */
static std::string anchor_of(const api_operation &operation) {
  std::string anchor;
  for (const char c : lower_case(request_of(operation))) {
    if (c == ' ') anchor += '-';
    if (c != ' ' && c != '/' && c != '{' && c != '}') anchor += c;
  }
  return anchor;
}

static std::string cell_of_variables(const api_operation &operation) {
  const std::vector<std::string> variables = variables_of(operation);
  if (variables.size() > MOST_VARIABLES_IN_A_CELL) {
    return "[" + std::to_string(variables.size()) + " variables](#" + anchor_of(operation) + ")";
  }
  std::string cell;
  for (const std::string &variable : variables) cell += (cell.empty() ? "" : "<br>") + variable;
  return cell;
}

/* Empty when there is room for them in the table. */
static std::string list_of_variables(const api_operation &operation) {
  const std::vector<std::string> variables = variables_of(operation);
  if (variables.size() <= MOST_VARIABLES_IN_A_CELL) return "";
  std::string list = "\n### " + code(request_of(operation)) + "\n\n" + operation.name + ".\n\n";
  for (const std::string &variable : variables) list += "- " + variable + "\n";
  return list;
}

/* --- Modules ------------------------------------------------------------------------------------------- */

static std::string table_of_operations(const api_module &module) {
  std::string table = "| request | what it does | variables |\n|---|---|---|\n";
  for (const api_operation &operation : module.operations) {
    table += "| " + code(request_of(operation)) + " | " + plain(operation.description) + " | " +
             cell_of_variables(operation) + " |\n";
  }
  return table;
}

/* The placeholders of all URIs, each once for every range that it has. */
static std::string list_of_placeholders(const api_module &module) {
  std::set<std::string> listed;
  std::string list;
  for (const api_operation &operation : module.operations) {
    for (const api_parameter &parameter : operation.parameters) {
      const bool is_new = parameter.in_uri && listed.insert(parameter.name + parameter.range).second;
      if (is_new) list += "- " + told("{" + parameter.name + "}", parameter) + "\n";
    }
  }
  return list.empty() ? "" : "\nIn the URIs:\n\n" + list;
}

static std::string section_of(const api_module &module) {
  std::string section = "\n## " + module.name + "\n\n" + plain(module.description) + "\n";
  if (module.operations.empty()) return section;
  section += "\n" + table_of_operations(module) + list_of_placeholders(module);
  for (const api_operation &operation : module.operations) section += list_of_variables(operation);
  return section;
}

std::string reference_page(const std::vector<api_module> &modules) {
  std::string page = std::string(HEAD) + "\n| module | what it serves |\n|---|---|\n";
  for (const api_module &module : modules) {
    page += "| [" + module.name + "](#" + module.name + ") | " + plain(module.description) + " |\n";
  }
  for (const api_module &module : modules) page += section_of(module);
  return page;
}
