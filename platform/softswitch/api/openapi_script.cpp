/* Scripts; the contracts are in platform/api/openapi_script.h. */
#include "platform/api/openapi_script.h"

#include "platform/api/l7proc.h"
#include "platform/softswitch/api/call.h"
#include "platform/softswitch/model/limits.h"
#include "platform/softswitch/services/stored_files.h"

#include <string.h>

using namespace softswitch;

/* Logs why something was not done. */
static void log_refusal(const std::string &what) {
  l7proc_logf(L7PROC_WARNING, 0, "openapi_script.cpp", __LINE__, "%s", what.c_str());
}

static open_error_t list_scripts(OPEN_CLI_SCRIPT_FILE_LIST_t *list) {
  std::vector<std::string> names;
  std::string error;
  if (!scripts_list(state_directory(), &names, &error)) {
    log_refusal(error);
    return OPEN_E_FAIL;
  }
  memset(list, 0, sizeof *list);
  for (const std::string &name : names) {
    if (list->count == OPEN_CLI_SCRIPT_FILES_MAX) break;
    memcpy(list->filelist[list->count++], name.c_str(), name.size() + 1);
  }
  return OPEN_E_NONE;
}

static open_error_t apply_script(std::string_view name) {
  std::string text, error;
  bool exists;
  if (stored_kind_of(name) != stored_kind::script) return OPEN_E_PARAM;
  if (!stored_read(state_directory(), name, &text, &exists, &error)) {
    log_refusal(error);
    return OPEN_E_FAIL;
  }
  if (!exists) return OPEN_E_NOT_FOUND;
  if (apply_configuration(text, &error)) return OPEN_E_NONE;
  log_refusal("scripts/" + std::string(name) + ", " + error);
  return OPEN_E_FAIL;
}

static open_error_t delete_script(std::string_view name) {
  std::string error;
  bool existed;
  if (stored_kind_of(name) != stored_kind::script) return OPEN_E_PARAM;
  if (script_remove(state_directory(), name, &existed, &error))
    return existed ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
  log_refusal(error);
  return OPEN_E_FAIL;
}

open_error_t rpcclt_openapiTxtCfgFilesListGet(openapiClientHandle_t *handle,
                                              struct OPEN_CLI_SCRIPT_LIST_s *list) {
  return api_call_unlocked(__func__, handle, {output(list)}, [&] { return list_scripts(list); });
}

open_error_t rpcclt_openapiTxtCfgValidateAndApply(openapiClientHandle_t *handle, open_buffdesc *name) {
  return api_call_unlocked(__func__, handle, {text_in(name)}, [&] { return apply_script(text_of(*name)); });
}

open_error_t rpcclt_openapiTxtCfgFileDelete(openapiClientHandle_t *handle, open_buffdesc *name) {
  return api_call_unlocked(__func__, handle, {text_in(name)}, [&] { return delete_script(text_of(*name)); });
}
