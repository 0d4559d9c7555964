/* The help document as the tests see it: read here line by line, by its grammar and by nothing of the
 * product's. */
#ifndef KESTREL_TESTS_HELP_DOCUMENTED_APIS_H
#define KESTREL_TESTS_HELP_DOCUMENTED_APIS_H

#include "engine/rest_route.h"

#include <span>
#include <string>
#include <vector>

struct documented_parameter {
  std::string name, description;
};

struct documented_api {
  std::string name, description, uri, method;
  std::vector<documented_parameter> parameters;
  bool hidden; /* its lines begin with "#" */
};

struct documented_module {
  std::string name, description;
  std::vector<documented_api> apis;
};

/* The modules of the text. A line that is not where the grammar wants it is a failure of the test. */
std::vector<documented_module> read_help_text(const std::string &text);
/* Those of the compiled-in text. */
const std::vector<documented_module> &documented_modules();

/* Names of the placeholders of a URI in their order. */
std::vector<std::string> placeholders_of(const std::string &uri);
/* The bracket that a description ends with, without its brackets; empty if there is none. */
std::string bracket_of(const std::string &description);
/* The request method by its name; REQUEST_METHOD_OTHER for anything else. */
request_method_t method_of(const documented_api &api);

/* The route table of a documented module. */
std::span<const rest_route> routes_of(const std::string &module);
/* A URI of the API with a value that fits in place of each placeholder. */
std::string sample_uri(const documented_api &api);
/* Values that a parameter may have. */
std::vector<std::string> sample_values(const documented_api &api, const documented_parameter &parameter);

#endif
