/* The API as an OpenAPI 3.1 document: docs/openapi.json. */
#ifndef KESTREL_TOOLS_OPENAPI_DOCUMENT_H
#define KESTREL_TOOLS_OPENAPI_DOCUMENT_H

#include "tools/api/api_description.h"

/* The document, JSON indented by two blanks with a newline at its end. Paths and operations stand in the
 * order of the description. What OpenAPI cannot express (URIs that differ in the names of their placeholders
 * only, operations that would have the same identifier) is reported in *error; the result is then empty. */
std::string openapi_document(const std::vector<api_module> &modules, const char *version, std::string *error);

#endif
