/* File transfers. The platform carries them out in the background; the module checks what is asked for,
 * starts them and reports. */
#include "modules/rest_module_transfer.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "modules/rest_startupcfg_info.h"
#include "platform/api/openapi_script.h"
#include "platform/api/openapi_system.h"
#include "platform/api/openapi_transfer.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* --- Variables ------------------------------------------------------------------------------------------ */

struct transfer_url {
  char text[1024] = {};
  open_buffdesc desc = {sizeof text, text}; /* the whole buffer */
};

static bool url_or_reply(mg_connection *conn, transfer_url *url) {
  return text_or_reply(conn, "url", url->text);
}

/* Refuses the value of a variable; false, so that callers can return it. */
static bool refuse_value(mg_connection *conn) {
  send_open_error_response(conn, OPEN_E_PARAM, nullptr);
  return false;
}

/* Reads a variable that must be "y" or "n". */
static bool yes_or_no_or_reply(mg_connection *conn, const char *name, bool *yes) {
  char text[2];
  if (!text_or_reply(conn, name, text)) return false;
  *yes = text[0] == 'y';
  return *yes || text[0] == 'n' || refuse_value(conn);
}

/* Reads "cfg", a number, and gives the file that it stands for: the numbers count from 1. */
static bool config_file_or_reply(mg_connection *conn, std::span<const char *const> files, const char **file) {
  char text[4];
  int32_t number = 0;
  if (!text_or_reply(conn, "cfg", text)) return false;
  if (check_string_is_number(text, &number) != RC_TRUE) return refuse_value(conn);
  if (number < 1 || static_cast<size_t>(number) > files.size()) return refuse_value(conn);
  *file = files[static_cast<size_t>(number) - 1];
  return true;
}

/* --- Starting ------------------------------------------------------------------------------------------- */

typedef open_error_t (*transfer_starter_t)(openapiClientHandle_t *client_handle, open_buffdesc *url,
                                           open_buffdesc *file);

static open_error_t start(openapiClientHandle_t *client_handle, transfer_starter_t start_transfer,
                          transfer_url *url, const char *file) {
  open_buffdesc name = describe_text(file);
  return start_transfer(client_handle, &url->desc, &name);
}

/* Answers as every operation does that starts a transfer. */
static int answer_start(mg_connection *conn, open_error_t rc) {
  if (rc == OPEN_E_NONE) return succeed(conn, new_tree(), "File transfer is starting.");
  if (rc == OPEN_E_ERROR) return refuse_with_tree(conn, 2, "Failed to start a transfer.", new_tree());
  if (rc == OPEN_E_UNAVAIL) return refuse_with_tree(conn, 1, "Another Transfer is in Progress.", new_tree());
  return fail(conn, OPEN_E_PARAM, nullptr);
}

/* --- Downloading ---------------------------------------------------------------------------------------- */

int api_transfer_download_image(openapiClientHandle_t *client_handle, mg_connection *conn) {
  transfer_url url;
  request_variable image;
  bool reboot = false;
  if (!url_or_reply(conn, &url) || !variable_or_reply(conn, "img", &image)) return 0;
  if (strcmp(image.text, "active") != 0 && strcmp(image.text, "backup") != 0) return refuse_value(conn);
  if (!yes_or_no_or_reply(conn, "auto", &reboot)) return 0;

  open_error_t rc = start(client_handle, rpcclt_openapiTransferFileDownload, &url, image.text);
  if (rc != OPEN_E_NONE || !reboot) return answer_start(conn, rc);
  rc = rpcclt_openapiTransferCompletedRebootSet(client_handle);
  return rc == OPEN_E_NONE ? answer_start(conn, rc) : fail(conn, rc, nullptr);
}

static const char STARTUP_CONFIG[] = "startup-config";
static const char *const download_files[] = {STARTUP_CONFIG, "backup-config"};

/* Reads and stores one of the times that come with a startup configuration. */
static bool time_or_reply(mg_connection *conn, const char *name, RC_t (*store)(const char *text)) {
  char text[STARTUPCFG_TIME_SIZE];
  return text_or_reply(conn, name, text) && (store(text) == RC_TRUE || refuse_value(conn));
}

int api_transfer_download_config(openapiClientHandle_t *client_handle, mg_connection *conn) {
  transfer_url url;
  const char *target = nullptr;
  bool reboot = false;
  if (!url_or_reply(conn, &url) || !config_file_or_reply(conn, download_files, &target)) return 0;
  if (target == STARTUP_CONFIG && (!time_or_reply(conn, "cfgtime", set_startup_config_time) ||
                                   !time_or_reply(conn, "updatetime", set_startup_config_update_time)))
    return 0;
  if (!yes_or_no_or_reply(conn, "auto", &reboot)) return 0;

  open_error_t rc = start(client_handle, rpcclt_openapiTransferFileDownload, &url, target);
  if (rc != OPEN_E_NONE) return answer_start(conn, rc);
  if (!reboot) {
    set_startup_config_has_updated_flag(static_cast<RC_t>(0));
    return answer_start(conn, rc);
  }
  rc = rpcclt_openapiTransferCompletedRebootSet(client_handle);
  return rc == OPEN_E_NONE ? answer_start(conn, rc) : fail(conn, rc, nullptr);
}

/* Waits until no transfer is in progress. The whole server waits with it: that is what the operation
 * promises. The platform's call takes a moment by itself, so that this loop costs nothing. */
static open_error_t wait_for_transfer(openapiClientHandle_t *client_handle) {
  OPEN_BOOL_t in_progress = OPEN_TRUE;
  open_error_t rc = OPEN_E_NONE;
  while (rc == OPEN_E_NONE && in_progress != OPEN_FALSE)
    rc = rpcclt_openapiTransferInProgressGet(client_handle, &in_progress);
  return rc;
}

/* Waits for the script that is being fetched and applies it. */
static int finish_and_apply(openapiClientHandle_t *client_handle, mg_connection *conn, const char *script) {
  OPEN_TRANSFER_CODE_t code = OPEN_TRANSFER_NONE;
  open_error_t rc = wait_for_transfer(client_handle);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiTransferResultCodeGet(client_handle, 0, &code);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (code != OPEN_TRANSFER_DONE) return answer_start(conn, OPEN_E_ERROR);
  open_buffdesc name = describe_text(script);
  rc = rpcclt_openapiTxtCfgValidateAndApply(client_handle, &name);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, new_tree(), "Script transfer and apply successfully.");
}

int api_transfer_download_script(openapiClientHandle_t *client_handle, mg_connection *conn) {
  transfer_url url;
  char script[OPEN_CLI_SCRIPT_FILENAME_SIZE];
  bool activate = false;
  if (!url_or_reply(conn, &url) || !text_or_reply(conn, "scr", script) ||
      !yes_or_no_or_reply(conn, "act", &activate))
    return 0;

  open_error_t rc = start(client_handle, rpcclt_openapiTransferFileDownload, &url, script);
  if (!activate) return answer_start(conn, rc);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr); /* on purpose not as a start that failed */
  return finish_and_apply(client_handle, conn, script);
}

/* --- Uploading ------------------------------------------------------------------------------------------ */

static const char *const upload_files[] = {STARTUP_CONFIG, "backup-config", "running-config", "kestrel.cfg"};

/* Reads and stores the serial number that the client gives the configuration; 32 bits of it are kept. */
static bool serial_number_or_reply(mg_connection *conn) {
  request_variable text;
  if (!variable_or_reply(conn, "sn", &text)) return false;
  char *end = nullptr;
  unsigned long long number = strtoull(text.text, &end, 10);
  if (end == text.text) return refuse_value(conn);
  return set_startup_config_serial_number(static_cast<uint32_t>(number)) == RC_TRUE || refuse_value(conn);
}

int api_transfer_upload_config(openapiClientHandle_t *client_handle, mg_connection *conn) {
  transfer_url url;
  const char *source = nullptr;
  if (!url_or_reply(conn, &url) || !config_file_or_reply(conn, upload_files, &source) ||
      !serial_number_or_reply(conn))
    return 0;
  return answer_start(conn, start(client_handle, rpcclt_openapiTransferFileUpload, &url, source));
}

int api_transfer_upload_script(openapiClientHandle_t *client_handle, mg_connection *conn) {
  transfer_url url;
  request_variable script;
  if (!url_or_reply(conn, &url) || !variable_or_reply(conn, "scr", &script)) return 0;
  return answer_start(conn, start(client_handle, rpcclt_openapiTransferFileUpload, &url, script.text));
}

/* --- Reporting ------------------------------------------------------------------------------------------ */

struct transfer_status {
  platform_text_256 text;
  uint32_t percent = 0;
};

static open_error_t read_status(openapiClientHandle_t *client_handle,
                                open_error_t (*get_text)(openapiClientHandle_t *, open_buffdesc *text),
                                transfer_status *status) {
  open_error_t rc = get_text(client_handle, &status->text.desc);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiTransferProgressGet(client_handle, &status->percent);
  return rc;
}

/* Appends the subtree "information" with the status and returns it. */
static node_t *append_status(node_t *tree, const transfer_status &status) {
  char progress[16];
  snprintf(progress, sizeof progress, "%d%%", static_cast<int>(status.percent));
  node_t *information = append_branch(tree, "information");
  append_tree_string(information, "status", "status", status.text.text);
  append_tree_string(information, "progress", "progress", progress);
  return information;
}

int api_transfer_get_download_status(openapiClientHandle_t *client_handle, mg_connection *conn) {
  transfer_status status;
  open_error_t rc = read_status(client_handle, rpcclt_openapiTransferDownloadStatusGet, &status);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  node_t *tree = new_tree();
  append_status(tree, status);
  return succeed(conn, tree, "Get data successfully.");
}

int api_transfer_get_upload_status(openapiClientHandle_t *client_handle, mg_connection *conn) {
  transfer_status status;
  uint32_t serial_number = 0;
  open_error_t rc = read_status(client_handle, rpcclt_openapiTransferUploadStatusGet, &status);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (get_startup_config_serial_number(&serial_number) != RC_TRUE)
    return fail(conn, OPEN_E_INTERNAL, nullptr);

  char text[16];
  snprintf(text, sizeof text, "%u", serial_number);
  node_t *tree = new_tree();
  append_tree_string(append_status(tree, status), "cfg_upload_sn", "cfg_upload_sn", text);
  return succeed(conn, tree, "Get data successfully.");
}

int api_transfer_get_download_startupcfg_info(openapiClientHandle_t *client_handle, mg_connection *conn) {
  char made[STARTUPCFG_TIME_SIZE], updated[STARTUPCFG_TIME_SIZE];
  OPEN_BOOL_t unsaved = OPEN_FALSE;
  RC_t has_updated = RC_FALSE;
  if (get_startup_config_time(made) != RC_TRUE || get_startup_config_update_time(updated) != RC_TRUE)
    return fail(conn, OPEN_E_PARAM, nullptr);
  open_error_t rc = rpcclt_openapiSystemUnsavedConfigStatusGet(client_handle, &unsaved);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  get_startup_config_has_updated_flag(&has_updated);

  bool modified = has_updated == 0 || unsaved == OPEN_TRUE;
  node_t *tree = new_tree();
  node_t *information = append_branch(tree, "information");
  append_tree_string(information, "cfg_time", "cfg_time", made);
  append_tree_string(information, "cfg_update", "cfg_update", updated);
  append_tree_string(information, "cfg_modified", "cfg_modified", modified ? "yes" : "no");
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Routes --------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_GET, "/download/status%s", ROUTE_EXACT, nullptr, api_transfer_get_download_status},
    {REQUEST_METHOD_GET, "/upload/status%s", ROUTE_EXACT, nullptr, api_transfer_get_upload_status},
    {REQUEST_METHOD_GET, "/download/startupCfgInfo%s", ROUTE_EXACT, nullptr,
     api_transfer_get_download_startupcfg_info},
    {REQUEST_METHOD_POST, "/download/image%s", ROUTE_EXACT, nullptr, api_transfer_download_image},
    {REQUEST_METHOD_POST, "/download/config%s", ROUTE_EXACT, nullptr, api_transfer_download_config},
    {REQUEST_METHOD_POST, "/upload/config%s", ROUTE_EXACT, nullptr, api_transfer_upload_config},
    {REQUEST_METHOD_POST, "/download/script%s", ROUTE_EXACT, nullptr, api_transfer_download_script},
    {REQUEST_METHOD_POST, "/upload/script%s", ROUTE_EXACT, nullptr, api_transfer_upload_script},
};

int transfer_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> transfer_api_routes(void) {
  return routes;
}
