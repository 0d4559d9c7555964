/* The request variables of a command: the words behind it, as name=value, or bare where there is no doubt
 * which is meant. */
#ifndef KESTREL_TOOLS_KESTRELCTL_VARIABLES_H
#define KESTREL_TOOLS_KESTRELCTL_VARIABLES_H

#include "tools/api/api_description.h"

#include <string>
#include <vector>

struct request_variable {
  std::string name;
  std::string value;
};

/* The documented variables that are typed; not the session key and the format, which kestrelctl adds. */
std::vector<const api_parameter *> variables_of(const api_operation &operation);

/* Makes variables of words. Bare words stand for the required variables that are not named, in their order,
 * if there are as many. Returns false with what is wrong in *complaint: a variable that is not documented,
 * given twice or missing. */
bool assign_variables(const api_operation &operation, const std::vector<std::string> &words,
                      std::vector<request_variable> *out, std::string *complaint);

/* The value to send: that of the choice whose meaning the text is ("enable": "1"), else the text itself. */
std::string sent_value(const api_parameter &parameter, const std::string &text);

/* What in a value is not as documented: "mtuSize: Integer from 1518 to 12270", empty when nothing is. Said
 * only after the server has refused, which alone decides. */
std::string doubt_about(const api_parameter &parameter, const std::string &value);

#endif
