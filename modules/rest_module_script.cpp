/* Scripts: listing, applying and deleting them. What a name must look like is the platform's affair. */
#include "modules/rest_module_script.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "platform/api/openapi_script.h"

#include <stdio.h>

/* --- Operations ----------------------------------------------------------------------------------------- */

int api_script_get_file_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  OPEN_CLI_SCRIPT_FILE_LIST_t list = {};
  open_error_t rc = rpcclt_openapiTxtCfgFilesListGet(client_handle, &list);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *files = append_branch(tree, "script_files");
  append_tree_number(files, "count_of_files", list.count);
  for (uint32_t i = 0; i < list.count && i < OPEN_CLI_SCRIPT_FILES_MAX; i++) {
    char name[OPEN_CLI_SCRIPT_FILENAME_SIZE];
    snprintf(name, sizeof name, "%.*s", OPEN_CLI_SCRIPT_FILENAME_SIZE - 1, list.filelist[i]);
    append_tree_string(append_entry(files, i + 1, "script_file"), "filename", "filename", name);
  }
  return succeed(conn, tree, "Get script file list successfully.");
}

/* What applying and deleting share: a platform call on the script that "scr" names. */
static int change_script(openapiClientHandle_t *client_handle, mg_connection *conn,
                         open_error_t (*change)(openapiClientHandle_t *, open_buffdesc *name),
                         const char *message) {
  char name[OPEN_CLI_SCRIPT_FILENAME_SIZE];
  if (!text_or_reply(conn, "scr", name)) return 0;
  open_buffdesc desc = describe_text(name);
  return answer(conn, change(client_handle, &desc), new_tree(), message);
}

int api_script_apply(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return change_script(client_handle, conn, rpcclt_openapiTxtCfgValidateAndApply,
                       "Apply script successfully.");
}

int api_script_delete_file(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return change_script(client_handle, conn, rpcclt_openapiTxtCfgFileDelete,
                       "Delete the script file successfully.");
}

/* --- Routes --------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_GET, "/script/list%s", ROUTE_EXACT, nullptr, api_script_get_file_list},
    {REQUEST_METHOD_POST, "/script/apply%s", ROUTE_EXACT, nullptr, api_script_apply},
    {REQUEST_METHOD_DELETE, "/script%s", ROUTE_EXACT, nullptr, api_script_delete_file},
};

int script_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> script_api_routes(void) {
  return routes;
}
