/* The API as the help document describes it, taken apart into plain structures. What is made for people and
 * programs outside is made of them: docs/api.md, docs/openapi.json and the commands of kestrelctl. */
#ifndef KESTREL_TOOLS_API_DESCRIPTION_H
#define KESTREL_TOOLS_API_DESCRIPTION_H

#include <optional>
#include <stdint.h>
#include <string>
#include <vector>

enum class parameter_kind { TEXT, INTEGER, CHOICE };

/* One of the values that a parameter may have. */
struct parameter_choice {
  std::string value;
  std::string meaning; /* a word or two; empty when the value speaks for itself */
};

struct api_parameter {
  std::string name;
  std::string description; /* sentences, without "Optional. ", ", in the URI" and the bracket */
  std::string range;       /* the bracket as it stands in the document, with its brackets */
  bool required;           /* `format`, which has a default, never is */
  bool in_uri;             /* a placeholder of the URI; else a request variable */
  parameter_kind kind;
  /* INTEGER, which interface numbers are too: the range, open where the document names none, and the one
   * value outside it with its meaning. */
  std::optional<int64_t> minimum, maximum, special;
  std::string special_meaning; /* "the default" */
  /* TEXT: the length in characters; 0 for a maximum that the document does not name. */
  unsigned min_length, max_length;
  std::vector<parameter_choice> choices; /* CHOICE */
};

struct api_operation {
  std::string name;        /* "Set the name of a VLAN" */
  std::string verb;        /* its first word in lower case: "set" */
  std::string description; /* one sentence */
  std::string method;      /* "PUT" */
  std::string uri;         /* "/vlans/{vlanId}/name" */
  std::vector<api_parameter> parameters;
};

struct api_module {
  std::string name;
  std::string description;
  std::vector<api_operation> operations;
};

/* The modules of the help document in its order. What does not keep to the forms of modules/help/README.md is
 * reported in *error with the module, API and parameter it stands in; the result is then empty. */
std::vector<api_module> describe_api(const char *help_document, std::string *error);
/* The same of the compiled-in document, which is known to be right. */
const std::vector<api_module> &api_modules(void);

#endif
