/* The document is built as a tree of json-c objects, which keep the order in which members are added. A tree
 * owns what is added to it. */
#include "tools/api/openapi_document.h"

#include "tools/api/json_text.h"
#include "tools/api/letters.h"
#include "tools/api/text_forms.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <map>
#include <set>
#include <string.h>

/* --- JSON values --------------------------------------------------------------------------------------- */

static json_object *text(const std::string &value) {
  return json_object_new_string_len(value.data(), static_cast<int>(value.size()));
}

static json_object *number(int64_t value) {
  return json_object_new_int64(value);
}

static json_object *truth(bool value) {
  return json_object_new_boolean(value);
}

/* A member whose value is null is left out. */
struct member {
  const char *name;
  json_object *value;
};

static json_object *object(std::initializer_list<member> members) {
  json_object *made = json_object_new_object();
  for (const member &each : members) {
    if (each.value != nullptr) json_object_object_add(made, each.name, each.value);
  }
  return made;
}

static json_object *array(std::initializer_list<json_object *> entries) {
  json_object *made = json_object_new_array();
  for (json_object *entry : entries) json_object_array_add(made, entry);
  return made;
}

static json_object *reference(const char *kind, const char *name) {
  return object({{"$ref", text(std::string("#/components/") + kind + "/" + name)}});
}

/* --- Schemas ------------------------------------------------------------------------------------------- */

/* "Interface number of a port" for "[Interface number of a port]". */
static std::string inside(const std::string &range) {
  return range.substr(1, range.size() - 2);
}

static json_object *integer_schema(const api_parameter &parameter) {
  if (!parameter.minimum.has_value()) {
    return object({{"type", text("integer")}, {"title", text(inside(parameter.range))}});
  }
  json_object *range = object({{"type", text("integer")},
                               {"minimum", number(*parameter.minimum)},
                               {"maximum", number(*parameter.maximum)}});
  if (!parameter.special.has_value()) return range;
  json_object *special =
      object({{"const", number(*parameter.special)}, {"title", text(parameter.special_meaning)}});
  return object({{"anyOf", array({range, special})}});
}

static json_object *text_schema(const api_parameter &parameter) {
  const text_form *form = find_text_form(parameter.range);
  if (form == nullptr) {
    return object({{"type", text("string")},
                   {"minLength", parameter.min_length == 0 ? nullptr : number(parameter.min_length)},
                   {"maxLength", number(parameter.max_length)}});
  }
  return object({{"type", text("string")},
                 {"title", text(inside(parameter.range))},
                 {"format", form->format == nullptr ? nullptr : text(form->format)},
                 {"pattern", form->pattern == nullptr ? nullptr : text(form->pattern)}});
}

static bool is_integer(const std::string &value, int64_t *result) {
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), *result);
  return error == std::errc() && end == value.data() + value.size();
}

static json_object *choice_schema(const api_parameter &parameter) {
  int64_t ignored = 0;
  const bool all_integers =
      std::all_of(parameter.choices.begin(), parameter.choices.end(),
                  [&](const parameter_choice &choice) { return is_integer(choice.value, &ignored); });
  json_object *choices = json_object_new_array();
  for (const parameter_choice &choice : parameter.choices) {
    int64_t integer = 0;
    json_object *value =
        all_integers && is_integer(choice.value, &integer) ? number(integer) : text(choice.value);
    if (!choice.meaning.empty()) value = object({{"const", value}, {"title", text(choice.meaning)}});
    json_object_array_add(choices, value);
  }
  return object({{"type", text(all_integers ? "integer" : "string")},
                 {parameter.choices[0].meaning.empty() ? "enum" : "oneOf", choices}});
}

static json_object *schema_of(const api_parameter &parameter) {
  switch (parameter.kind) {
  case parameter_kind::INTEGER:
    return integer_schema(parameter);
  case parameter_kind::CHOICE:
    return choice_schema(parameter);
  case parameter_kind::TEXT:
    break;
  }
  return text_schema(parameter);
}

/* --- Operations ---------------------------------------------------------------------------------------- */

static const api_parameter &parameter_of(const api_operation &operation, const char *name) {
  return *std::find_if(operation.parameters.begin(), operation.parameters.end(),
                       [&](const api_parameter &parameter) { return parameter.name == name; });
}

static bool is_common(const api_parameter &parameter) {
  return parameter.name == "sessionkey" || parameter.name == "format";
}

/* The help pages come as HTML too. */
static bool has_page(const api_operation &operation) {
  return parameter_of(operation, "format").choices.size() == 3;
}

/* POST and PUT carry their variables in the body, GET and DELETE in the query string. */
static bool has_body(const api_operation &operation) {
  return operation.method == "POST" || operation.method == "PUT";
}

static json_object *parameters_of(const api_operation &operation) {
  json_object *parameters = json_object_new_array();
  for (const api_parameter &parameter : operation.parameters) {
    if (is_common(parameter) || (!parameter.in_uri && has_body(operation))) continue;
    json_object_array_add(parameters, object({{"name", text(parameter.name)},
                                              {"in", text(parameter.in_uri ? "path" : "query")},
                                              {"required", parameter.required ? truth(true) : nullptr},
                                              {"description", text(parameter.description)},
                                              {"schema", schema_of(parameter)}}));
  }
  json_object_array_add(parameters, reference("parameters", has_page(operation) ? "formatOfHelp" : "format"));
  return parameters;
}

/* Null when the operation takes no variables in its body. */
static json_object *body_of(const api_operation &operation) {
  if (!has_body(operation)) return nullptr;
  json_object *properties = nullptr;
  json_object *required = nullptr;
  for (const api_parameter &parameter : operation.parameters) {
    if (is_common(parameter) || parameter.in_uri) continue;
    if (properties == nullptr) properties = json_object_new_object();
    json_object *schema = schema_of(parameter);
    json_object_object_add(schema, "description", text(parameter.description));
    json_object_object_add(properties, parameter.name.c_str(), schema);
    if (!parameter.required) continue;
    if (required == nullptr) required = json_object_new_array();
    json_object_array_add(required, text(parameter.name));
  }
  if (properties == nullptr) return nullptr;
  json_object *is_required = required == nullptr ? nullptr : truth(true);
  json_object *schema =
      object({{"type", text("object")}, {"properties", properties}, {"required", required}});
  json_object *content = object({{"application/x-www-form-urlencoded", object({{"schema", schema}})}});
  return object({{"required", is_required}, {"content", content}});
}

/* Null when the rule for all holds: a session key is needed. */
static json_object *security_of(const api_operation &operation) {
  if (parameter_of(operation, "sessionkey").required) return nullptr;
  return array({object({}), object({{"sessionkey", array({})}})});
}

/* "setVlansByVlanIdName" for PUT /vlans/{vlanId}/name. A last word that is the verb is not said twice. */
static std::string identifier_of(const api_operation &operation) {
  std::string words;
  size_t last_word = 0;
  for (size_t i = 0; i < operation.uri.size(); ++i) {
    const char c = operation.uri[i];
    const bool begins = words.size() == last_word;
    if (c == '/') {
      last_word = words.size();
    } else if (c == '{') {
      words += "By";
      last_word = words.size();
    } else if (c != '}') {
      words += begins && c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
  }
  if (strcasecmp(words.c_str() + last_word, operation.verb.c_str()) == 0) words.resize(last_word);
  return operation.verb + words;
}

static json_object *operation_object(const api_module &module, const api_operation &operation) {
  json_object *answers = reference("responses", has_page(operation) ? "resultOrPage" : "result");
  return object({{"tags", array({text(module.name)})},
                 {"operationId", text(identifier_of(operation))},
                 {"summary", text(operation.name)},
                 {"description", text(operation.description)},
                 {"security", security_of(operation)},
                 {"parameters", parameters_of(operation)},
                 {"requestBody", body_of(operation)},
                 {"responses", object({{"200", answers}})}});
}

/* --- Paths --------------------------------------------------------------------------------------------- */

/* The URI with "{}" for each placeholder. */
static std::string template_of(const std::string &uri) {
  std::string shape;
  bool in_name = false;
  for (const char c : uri) {
    if (c == '}') in_name = false;
    if (!in_name) shape += c;
    if (c == '{') in_name = true;
  }
  return shape;
}

/* What the paths hold so far. */
struct path_collection {
  json_object *paths;
  std::map<std::string, std::string> uris; /* by their templates */
  std::set<std::string> identifiers;
};

/* Returns what OpenAPI cannot express of the operation, empty when it is added. */
static std::string add_operation(path_collection *collection, const api_module &module,
                                 const api_operation &operation) {
  const std::string &uri = operation.uri;
  const auto known = collection->uris.emplace(template_of(uri), uri).first;
  if (known->second != uri)
    return uri + " and " + known->second + " differ in the names of placeholders only";
  if (!collection->identifiers.insert(identifier_of(operation)).second) {
    return operation.method + " " + uri +
           " has the identifier of another operation: " + identifier_of(operation);
  }
  json_object *item = nullptr;
  if (!json_object_object_get_ex(collection->paths, uri.c_str(), &item)) {
    item = json_object_new_object();
    json_object_object_add(collection->paths, uri.c_str(), item);
  }
  const std::string method = lower_case(operation.method);
  if (json_object_object_get_ex(item, method.c_str(), nullptr)) {
    return operation.method + " " + uri + " stands in two modules";
  }
  json_object_object_add(item, method.c_str(), operation_object(module, operation));
  return "";
}

/* --- The parts around ---------------------------------------------------------------------------------- */

static const char DESCRIPTION[] =
    "Reads and changes the configuration and status of the switch. `POST /login` opens a session and returns "
    "its key, which all other requests carry as `sessionkey` in the query string; `DELETE /login` ends "
    "it.\n\n"
    "Every answer has HTTP status 200; whether the request succeeded is told by `rlt_code`. Variables are "
    "taken from the query string as well as from a form-encoded body, and a variable `method` (`GET`, "
    "`POST`, "
    "`PUT` or `DELETE`) overrides the method of HTTP, for clients that have but GET and POST.";

static const char CODES[] =
    "- 0: success.\n"
    "- 1 to 12: refused for the reason that the message gives.\n"
    "- 96: the switch refused or failed.\n"
    "- 97: internal fault, or a time-out in the switch.\n"
    "- 98: set already.\n"
    "- 99: no such object, invalid parameter, or not supported.\n"
    "- 900: the session has ended: timed out, logged out, or the key belongs to another "
    "address.\n"
    "- 901: unknown module.\n"
    "- 902: unknown URI, or a method that it does not serve.\n"
    "- 903: the help document is not available.\n"
    "- 905: no session key.\n"
    "- 909: unexpected internal failure.";

static json_object *server_object(const char *url, const char *description) {
  json_object *host = object({{"default", text("localhost")}, {"description", text("The switch.")}});
  return object(
      {{"url", text(url)}, {"description", text(description)}, {"variables", object({{"host", host}})}});
}

static json_object *tags_of(const std::vector<api_module> &modules) {
  json_object *tags = json_object_new_array();
  for (const api_module &module : modules) {
    json_object_array_add(tags,
                          object({{"name", text(module.name)}, {"description", text(module.description)}}));
  }
  return tags;
}

static json_object *format_parameter(json_object *words) {
  return object({{"name", text("format")},
                 {"in", text("query")},
                 {"description", text("Specified return format.")},
                 {"schema", object({{"type", text("string")}, {"enum", words}, {"default", text("xml")}})}});
}

static json_object *schemas(void) {
  json_object *code = object({{"type", text("integer")},
                              {"minimum", number(0)},
                              {"maximum", number(65535)},
                              {"description", text(CODES)}});
  json_object *message = object(
      {{"type", text("string")}, {"maxLength", number(1023)}, {"description", text("An English sentence.")}});
  json_object *data = object({{"type", text("object")},
                              {"description", text("What was asked for; there when there is data. Lists are "
                                                   "objects whose members are named by position.")}});
  json_object *envelope =
      object({{"type", text("object")},
              {"required", array({text("rlt_code"), text("rlt_mesg")})},
              {"properties", object({{"rlt_code", code}, {"rlt_mesg", message}, {"rlt_data", data}})},
              {"xml", object({{"name", text("result")}})}});
  json_object *document = object({{"type", text("object")},
                                  {"required", array({text("result")})},
                                  {"properties", object({{"result", reference("schemas", "envelope")}})}});
  return object({{"document", document}, {"envelope", envelope}});
}

static json_object *response_object(const char *description, json_object *page) {
  json_object *content = object({{"text/xml", object({{"schema", reference("schemas", "envelope")}})},
                                 {"application/json", object({{"schema", reference("schemas", "document")}})},
                                 {"text/html", page}});
  return object({{"description", text(description)}, {"content", content}});
}

static json_object *components(void) {
  json_object *key = object({{"type", text("apiKey")},
                             {"in", text("query")},
                             {"name", text("sessionkey")},
                             {"description", text("Session key that logging in returned.")}});
  json_object *formats =
      object({{"format", format_parameter(array({text("xml"), text("json")}))},
              {"formatOfHelp", format_parameter(array({text("xml"), text("json"), text("html")}))}});
  json_object *page = object({{"schema", object({{"type", text("string")}})}});
  json_object *responses =
      object({{"result", response_object("The result, good or bad.", nullptr)},
              {"resultOrPage", response_object("The result, or a page to look at.", page)}});
  return object({{"securitySchemes", object({{"sessionkey", key}})},
                 {"parameters", formats},
                 {"responses", responses},
                 {"schemas", schemas()}});
}

static json_object *whole_document(const std::vector<api_module> &modules, const char *version,
                                   json_object *paths) {
  json_object *info = object({{"title", text("RESTful API of the switch")},
                              {"description", text(DESCRIPTION)},
                              {"version", text(version)}});
  json_object *servers = array({server_object("https://{host}:8446", "Encrypted."),
                                server_object("http://{host}:8080", "Not encrypted.")});
  return object({{"openapi", text("3.1.0")},
                 {"info", info},
                 {"servers", servers},
                 {"security", array({object({{"sessionkey", array({})}})})},
                 {"tags", tags_of(modules)},
                 {"paths", paths},
                 {"components", components()}});
}

std::string openapi_document(const std::vector<api_module> &modules, const char *version,
                             std::string *error) {
  path_collection collection = {json_object_new_object(), {}, {}};
  error->clear();
  for (const api_module &module : modules) {
    for (const api_operation &operation : module.operations) {
      if (error->empty()) *error = add_operation(&collection, module, operation);
    }
  }
  const json_owner document(whole_document(modules, version, collection.paths));
  if (!error->empty()) return "";
  return json_text(document.get());
}
