/* Reads the help document line by line. The daemon's parser passes over what it does not understand; this one
 * refuses it, so that a mistake in the text is not quietly left out of the documents made of it. */
#include "tools/api/api_description.h"

#include "modules/rest_help_document.h"
#include "tools/api/api_parameter.h"
#include "tools/api/letters.h"

#include <algorithm>
#include <stdio.h>
#include <stdlib.h>
#include <string_view>

enum { LONGEST_VALUE = 1000 };

/* --- Lines --------------------------------------------------------------------------------------------- */

struct document_reader {
  std::string_view rest; /* behind the line taken last */
  std::string_view line; /* that line, without its newline */
  std::string place;     /* the module, API and parameter being read */
  std::string *error;    /* what is wrong; the first mistake ends the reading */
};

static bool wrong(document_reader *reader, const std::string &what) {
  *reader->error = reader->place + ": " + what;
  return false;
}

/* False at the end of the document, and with an error when its last line has no newline. */
static bool next_line(document_reader *reader) {
  if (reader->rest.empty()) return false;
  const size_t newline = reader->rest.find('\n');
  if (newline == std::string_view::npos) return wrong(reader, "the last line has no newline");
  reader->line = reader->rest.substr(0, newline);
  reader->rest.remove_prefix(newline + 1);
  return true;
}

/* The same, passing over empty lines, banners and what is hidden. */
static bool next_telling_line(document_reader *reader) {
  while (next_line(reader)) {
    if (!reader->line.empty() && reader->line[0] != '#') return true;
  }
  return false;
}

static bool unexpected_line(document_reader *reader, const std::string &expected) {
  if (!reader->error->empty()) return false;
  const bool at_end = reader->rest.empty() && !reader->line.starts_with("=");
  return wrong(reader, expected + " is missing" +
                           (at_end ? "" : " before the line \"" + std::string(reader->line) + "\""));
}

static bool expect_marker(document_reader *reader, const char *marker) {
  if (next_telling_line(reader) && reader->line == marker) return true;
  return unexpected_line(reader, marker);
}

/* Takes the value out of the current line, which has the form " key=value". */
static bool take_value(document_reader *reader, const char *key, std::string *value) {
  const std::string start = std::string(key) + "=";
  const size_t blanks = reader->line.find_first_not_of(' ');
  if (blanks == 0 || blanks == std::string_view::npos || !reader->line.substr(blanks).starts_with(start)) {
    return unexpected_line(reader, key);
  }
  *value = reader->line.substr(blanks + start.size());
  if (value->empty() || value->front() == ' ' || value->back() == ' ') {
    return wrong(reader, std::string(key) + " is empty, or blanks stand around it");
  }
  if (value->size() > LONGEST_VALUE) return wrong(reader, std::string(key) + " is too long");
  const auto is_unwanted = [](unsigned char c) { return c < ' ' || c == '<' || c == '>' || c == '&'; };
  if (std::any_of(value->begin(), value->end(), is_unwanted)) {
    return wrong(reader, std::string(key) + " holds <, >, & or a control character");
  }
  return true;
}

/* The value of the very next line: nothing may stand between a marker and its values. */
static bool read_value(document_reader *reader, const char *key, std::string *value) {
  if (!next_line(reader)) return unexpected_line(reader, key);
  return take_value(reader, key, value);
}

/* --- Words --------------------------------------------------------------------------------------------- */

static bool is_name_character(char c) {
  return is_letter(c) || (c >= '0' && c <= '9') || c == '_' || c == '-';
}

static bool is_name(std::string_view text) {
  return !text.empty() && is_letter(text[0]) && std::all_of(text.begin(), text.end(), is_name_character);
}

static bool is_sentence(std::string_view text) {
  return text.size() > 1 && text[0] >= 'A' && text[0] <= 'Z' && text.back() == '.' &&
         text.find(". ") == std::string_view::npos;
}

/* --- URIs ---------------------------------------------------------------------------------------------- */

/* The words between the slashes of a URI that begins with one. */
static std::vector<std::string_view> segments_of(std::string_view uri) {
  std::vector<std::string_view> segments;
  while (!uri.empty()) {
    uri.remove_prefix(1);
    const size_t end = std::min(uri.find('/'), uri.size());
    segments.push_back(uri.substr(0, end));
    uri.remove_prefix(end);
  }
  return segments;
}

static bool is_placeholder(std::string_view segment) {
  return segment.starts_with("{") && segment.ends_with("}") && is_name(segment.substr(1, segment.size() - 2));
}

static std::vector<std::string> placeholders_of(std::string_view uri) {
  std::vector<std::string> names;
  for (const std::string_view segment : segments_of(uri)) {
    if (is_placeholder(segment)) names.emplace_back(segment.substr(1, segment.size() - 2));
  }
  return names;
}

static bool check_uri(document_reader *reader, const std::string &uri) {
  if (uri[0] != '/') return wrong(reader, "the URI does not begin with a slash");
  for (const std::string_view segment : segments_of(uri)) {
    if (!is_name(segment) && !is_placeholder(segment)) {
      return wrong(reader, "\"" + std::string(segment) + "\" in the URI is neither a word nor a placeholder");
    }
  }
  return true;
}

/* --- Parameters ---------------------------------------------------------------------------------------- */

static bool read_parameter(document_reader *reader, api_operation *operation) {
  std::string value;
  if (!take_value(reader, "param", &value)) return false;
  const size_t at = std::min(value.find('@'), value.size());
  api_parameter parameter = {};
  parameter.name = value.substr(0, at);
  reader->place += ", parameter " + parameter.name;
  if (!is_name(parameter.name)) return wrong(reader, "this is no name");
  for (const api_parameter &other : operation->parameters) {
    if (other.name == parameter.name) return wrong(reader, "the name stands twice");
  }
  if (at == value.size()) return wrong(reader, "the description is missing");
  const std::string mistake = describe_parameter(std::string_view(value).substr(at + 1), &parameter);
  if (!mistake.empty()) return wrong(reader, mistake);
  operation->parameters.push_back(parameter);
  return true;
}

/* The words that `sessionkey` and `format` have everywhere, but for what the modules login and help do with
 * them. `format` says nothing of it, but may be missing like anything that has a default. */
static bool check_common_parameters(document_reader *reader, api_operation *operation) {
  std::vector<api_parameter> &parameters = operation->parameters;
  const size_t count = parameters.size();
  if (count < 2 || parameters[count - 2].name != "sessionkey" || parameters[count - 1].name != "format") {
    return wrong(reader, "the last two parameters are not sessionkey and format");
  }
  const api_parameter &key = parameters[count - 2];
  if (key.range != "[String of 32 characters]" ||
      (key.required && key.description != "Session key that logging in returned.")) {
    return wrong(reader, "sessionkey is not described in the usual words");
  }
  api_parameter &format = parameters[count - 1];
  if (format.description != "Specified return format." || !format.required ||
      (format.range != "{xml | json}" && format.range != "{xml | json | html}")) {
    return wrong(reader, "format is not described in the usual words");
  }
  format.required = false;
  return true;
}

/* The placeholders of the URI come first, in its order, and they alone are said to be in the URI. */
static bool check_placeholders(document_reader *reader, const api_operation &operation) {
  const std::vector<std::string> placeholders = placeholders_of(operation.uri);
  for (size_t i = 0; i < std::max(placeholders.size(), operation.parameters.size()); ++i) {
    if (i >= operation.parameters.size() ||
        (i < placeholders.size() && operation.parameters[i].name != placeholders[i])) {
      return wrong(reader, "the placeholders of the URI do not come first, in its order");
    }
    const api_parameter &parameter = operation.parameters[i];
    if (parameter.in_uri != (i < placeholders.size())) {
      return wrong(reader, parameter.name + (parameter.in_uri ? " is not in the URI" : " is in the URI"));
    }
    if (parameter.in_uri && !parameter.required) {
      return wrong(reader, parameter.name + " is in the URI and cannot be optional");
    }
  }
  return true;
}

static bool read_parameters(document_reader *reader, api_operation *operation) {
  const std::string place = reader->place;
  if (!expect_marker(reader, "=API-PARAM-START")) return false;
  while (next_telling_line(reader) && reader->line != "=API-PARAM-END") {
    if (!read_parameter(reader, operation)) return false;
    reader->place = place;
  }
  if (reader->line != "=API-PARAM-END") return unexpected_line(reader, "=API-PARAM-END");
  return check_placeholders(reader, *operation) && check_common_parameters(reader, operation);
}

/* --- APIs ---------------------------------------------------------------------------------------------- */

/* What is read is listed or shown, what is put is set; or the URI ends with the verb. */
static bool check_verb(document_reader *reader, const api_operation &operation) {
  const std::string last = lower_case(segments_of(operation.uri).back());
  const bool is_usual = operation.method == "GET"   ? operation.verb == "list" || operation.verb == "show"
                        : operation.method == "PUT" ? operation.verb == "set"
                                                    : operation.verb != "list" && operation.verb != "show";
  return is_usual || operation.verb == last || wrong(reader, "the verb does not suit " + operation.method);
}

static bool check_api(document_reader *reader, api_operation *operation) {
  const size_t verb_length = std::min(operation->name.find(' '), operation->name.size());
  operation->verb = lower_case(operation->name.substr(0, verb_length));
  if (!is_sentence(operation->name + ".") ||
      !std::all_of(operation->verb.begin(), operation->verb.end(), is_letter)) {
    return wrong(reader, "the name does not begin with a verb");
  }
  if (!is_sentence(operation->description)) return wrong(reader, "api_desc is not one sentence");
  const std::string &method = operation->method;
  if (method != "GET" && method != "POST" && method != "PUT" && method != "DELETE") {
    return wrong(reader, "there is no method " + method);
  }
  return check_uri(reader, operation->uri) && check_verb(reader, *operation);
}

/* Among the APIs of a module, the method and the verb tell apart those with the same URI. */
static bool check_against_others(document_reader *reader, const api_module &module,
                                 const api_operation &added) {
  for (const api_operation &other : module.operations) {
    if (other.uri == added.uri && (other.method == added.method || other.verb == added.verb)) {
      return wrong(reader, "\"" + other.name + "\" has the same URI, and the same method or verb");
    }
  }
  return true;
}

static bool read_api(document_reader *reader, api_module *module) {
  api_operation operation = {};
  if (!read_value(reader, "api_name", &operation.name)) return false;
  reader->place += ", API \"" + operation.name + "\"";
  const bool right = read_value(reader, "api_desc", &operation.description) &&
                     read_value(reader, "api_uri", &operation.uri) &&
                     read_value(reader, "api_method", &operation.method) && check_api(reader, &operation) &&
                     read_parameters(reader, &operation) && expect_marker(reader, "==API-END") &&
                     check_against_others(reader, *module, operation);
  if (right) module->operations.push_back(operation);
  return right;
}

/* --- Modules ------------------------------------------------------------------------------------------- */

/* GET /help/{module} finds names of letters only. */
static bool check_module(document_reader *reader, const std::vector<api_module> &others,
                         const api_module &module) {
  if (!std::all_of(module.name.begin(), module.name.end(), is_letter)) {
    return wrong(reader, "the name does not consist of letters");
  }
  if (module.description.back() != '.') return wrong(reader, "module_desc is not a sentence");
  for (const api_module &other : others) {
    if (other.name == module.name) return wrong(reader, "the module stands twice");
  }
  return true;
}

static bool read_module(document_reader *reader, std::vector<api_module> *modules) {
  api_module module = {};
  if (!read_value(reader, "module_name", &module.name)) return false;
  reader->place = "module " + module.name;
  if (!read_value(reader, "module_desc", &module.description) || !check_module(reader, *modules, module)) {
    return false;
  }
  const std::string place = reader->place;
  while (next_telling_line(reader) && reader->line == "==API-START") {
    if (!read_api(reader, &module)) return false;
    reader->place = place;
  }
  if (reader->line != "===MODULE-END") return unexpected_line(reader, "===MODULE-END");
  modules->push_back(module);
  return true;
}

static bool read_modules(document_reader *reader, std::vector<api_module> *modules) {
  while (next_telling_line(reader)) {
    if (reader->line != "===MODULE-START") return unexpected_line(reader, "===MODULE-START");
    if (!read_module(reader, modules)) return false;
    reader->place = "document, behind " + reader->place;
  }
  return reader->error->empty();
}

std::vector<api_module> describe_api(const char *help_document, std::string *error) {
  error->clear();
  document_reader reader = {help_document, "", "document", error};
  std::vector<api_module> modules;
  if (!read_modules(&reader, &modules)) modules.clear();
  return modules;
}

static std::vector<api_module> describe_compiled_in_document(void) {
  std::string error;
  std::vector<api_module> modules = describe_api(restGlobalHelpDocText, &error);
  if (!error.empty()) {
    fprintf(stderr, "help document: %s\n", error.c_str());
    abort();
  }
  return modules;
}

const std::vector<api_module> &api_modules(void) {
  static const std::vector<api_module> modules = describe_compiled_in_document();
  return modules;
}
