/* The API as a page for people: docs/api.md. */
#ifndef KESTREL_TOOLS_REFERENCE_PAGE_H
#define KESTREL_TOOLS_REFERENCE_PAGE_H

#include "tools/api/api_description.h"

/* The page in Markdown; modules and operations stand in the order of the description. */
std::string reference_page(const std::vector<api_module> &modules);

#endif
