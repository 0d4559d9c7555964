/* The help pages: the list of modules and what each of them serves, out of the help document. */
#ifndef KESTREL_MODULES_REST_MODULE_HELP_H
#define KESTREL_MODULES_REST_MODULE_HELP_H

#include "engine/rest_route.h"

int help_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> help_api_routes(void);

int api_help_get_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_help_get_specified_module_name(openapiClientHandle_t *client_handle, mg_connection *conn);

/* The pages (rest_help_pages.cpp): the list of modules for the tree of modules that hold no more than name
 * and description, and the page of a module for its node. Both store a text that the caller frees, null when
 * memory is exhausted. They read values by their position and escape nothing. */
void print_help_doc_html_for_list(node_t *tree, char **out);
void print_help_doc_html_for_specified_module_name(node_t *module, char **out);

#endif
