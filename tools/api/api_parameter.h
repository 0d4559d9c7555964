/* Takes the description of a parameter apart: sentences, and the bracket that tells its type and range. */
#ifndef KESTREL_TOOLS_API_PARAMETER_H
#define KESTREL_TOOLS_API_PARAMETER_H

#include "tools/api/api_description.h"

#include <string_view>

/* Fills all of *parameter but its name. Returns what is wrong with the description, empty when nothing is. */
std::string describe_parameter(std::string_view description, api_parameter *parameter);

#endif
