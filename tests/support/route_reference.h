/* Route matching as sscanf(3) does it, to compare engine/rest_route with: every URI pattern of the API, and
 * what it converts. Used by the unit tests and the fuzz target. */
#ifndef KESTREL_TESTS_SUPPORT_ROUTE_REFERENCE_H
#define KESTREL_TESTS_SUPPORT_ROUTE_REFERENCE_H

#include "engine/rest_route.h"

#include <string>
#include <vector>

/* Every pattern that a module's route table may hold, each with the count of fields it requires and the word
 * that its last field must be. */
const std::vector<rest_route> &all_api_routes();

/* What sscanf(3) itself returns for the URI, and the fields, each in a buffer that cannot overflow. */
int plain_sscanf(const std::string &uri, const char *pattern, std::vector<std::string> *fields);

/* Compares the engine's answer to a URI for each of the routes with sscanf's. Empty when they agree, else a
 * sentence that says where they do not. */
std::string find_disagreement(const std::string &uri);

#endif
