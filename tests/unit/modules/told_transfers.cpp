/* Platform functions of transfers and scripts that do what a test tells: see told_transfers.h. */
#include "tests/unit/modules/told_transfers.h"

#include "platform/api/openapi_script.h"
#include "platform/api/openapi_system.h"
#include "tests/unit/modules/recorded_calls.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string.h>

/* More than any test makes. */
enum { MANY_CALLS = 10000 };

static told_transfers *told = nullptr;

told_transfers::told_transfers() {
  EXPECT_EQ(told, nullptr);
  told = this;
}

told_transfers::~told_transfers() {
  told = nullptr;
}

void told_transfers::fail(const std::string &function, open_error_t rc, unsigned skip) {
  failures[function] = {rc, skip};
}

/* A text with its size, as written() has it; behind the terminator there must be nothing but zeros. */
static std::string whole_text(const open_buffdesc *text) {
  const char *characters = static_cast<const char *>(text->pstart);
  size_t length = strnlen(characters, text->size);
  std::string rest(characters + length, text->size - length);
  EXPECT_EQ(rest, std::string(rest.size(), '\0'));
  return written(text);
}

/* Records the call of an `rpcclt_openapi...` function. Its name without beginnings, by which it is told to
 * fail. */
static std::string begin(const std::string &function, const std::string &arguments = "") {
  std::string name = function;
  for (const std::string &beginning : {std::string("rpcclt_openapi"), std::string("Transfer")}) {
    if (name.compare(0, beginning.size(), beginning) == 0) name.erase(0, beginning.size());
  }
  record_call(name.c_str(), arguments);
  if (told->at_each_call) told->at_each_call();
  return name;
}

static open_error_t result_of(const std::string &name) {
  auto failure = told->failures.find(name);
  if (failure == told->failures.end()) return OPEN_E_NONE;
  if (failure->second.skip == 0) return failure->second.rc;
  failure->second.skip--;
  return OPEN_E_NONE;
}

static open_error_t answer(const std::string &name, uint32_t *output, uint32_t value) {
  open_error_t rc = result_of(name);
  *output = rc == OPEN_E_NONE ? value : told->left_behind;
  return rc;
}

static open_error_t answer(const std::string &name, open_buffdesc *output, const std::string &value) {
  open_error_t rc = result_of(name);
  const std::string text = rc == OPEN_E_NONE ? value : "left behind";
  memcpy(output->pstart, text.c_str(), std::min<size_t>(text.size() + 1, output->size));
  output->size = static_cast<uint32_t>(text.size());
  return rc;
}

/* --- Transfers ------------------------------------------------------------------------------------------ */

open_error_t rpcclt_openapiTransferFileDownload(openapiClientHandle_t *handle, open_buffdesc *url,
                                                open_buffdesc *target) {
  if (told == nullptr) return library_call(__func__, handle, url, target);
  return result_of(begin(__func__, whole_text(url) + " " + whole_text(target)));
}

open_error_t rpcclt_openapiTransferFileUpload(openapiClientHandle_t *handle, open_buffdesc *url,
                                              open_buffdesc *source) {
  if (told == nullptr) return library_call(__func__, handle, url, source);
  return result_of(begin(__func__, whole_text(url) + " " + whole_text(source)));
}

open_error_t rpcclt_openapiTransferCompletedRebootSet(openapiClientHandle_t *handle) {
  if (told == nullptr) return library_call(__func__, handle);
  return result_of(begin(__func__));
}

open_error_t rpcclt_openapiTransferDownloadStatusGet(openapiClientHandle_t *handle, open_buffdesc *text) {
  if (told == nullptr) return library_call(__func__, handle, text);
  return answer(begin(__func__, whole_text(text)), text, told->status);
}

open_error_t rpcclt_openapiTransferUploadStatusGet(openapiClientHandle_t *handle, open_buffdesc *text) {
  if (told == nullptr) return library_call(__func__, handle, text);
  return answer(begin(__func__, whole_text(text)), text, told->status);
}

open_error_t rpcclt_openapiTransferProgressGet(openapiClientHandle_t *handle, uint32_t *percent) {
  if (told == nullptr) return library_call(__func__, handle, percent);
  return answer(begin(__func__), percent, told->percent);
}

open_error_t rpcclt_openapiTransferInProgressGet(openapiClientHandle_t *handle, OPEN_BOOL_t *inProgress) {
  if (told == nullptr) return library_call(__func__, handle, inProgress);
  const std::string name = begin(__func__);
  if (recorded_calls().size() > MANY_CALLS) {
    ADD_FAILURE() << "It is asked without an end.";
    *inProgress = OPEN_FALSE;
    return OPEN_E_NONE;
  }
  bool busy = told->times_in_progress != 0;
  if (busy) told->times_in_progress--;
  return answer(name, inProgress, busy ? OPEN_TRUE : OPEN_FALSE);
}

open_error_t rpcclt_openapiTransferResultCodeGet(openapiClientHandle_t *handle, uint32_t unit,
                                                 OPEN_TRANSFER_CODE_t *code) {
  if (told == nullptr) return library_call(__func__, handle, unit, code);
  return answer(begin(__func__, written(unit)), code, told->result);
}

/* --- Scripts -------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiTxtCfgFilesListGet(openapiClientHandle_t *handle,
                                              struct OPEN_CLI_SCRIPT_LIST_s *list) {
  if (told == nullptr) return library_call(__func__, handle, list);
  const char *bytes = reinterpret_cast<const char *>(list);
  bool cleared = std::all_of(bytes, bytes + sizeof *list, [](char byte) { return byte == '\0'; });
  const std::string name = begin(__func__, cleared ? "cleared" : "not cleared");
  for (size_t i = 0; i < told->scripts.size(); i++) {
    const std::string &script = told->scripts[i];
    memcpy(list->filelist[i], script.c_str(),
           std::min<size_t>(script.size() + 1, OPEN_CLI_SCRIPT_FILENAME_SIZE));
  }
  return answer(name, &list->count, static_cast<uint32_t>(told->scripts.size()) + told->scripts_more);
}

open_error_t rpcclt_openapiTxtCfgValidateAndApply(openapiClientHandle_t *handle, open_buffdesc *script) {
  if (told == nullptr) return library_call(__func__, handle, script);
  return result_of(begin(__func__, whole_text(script)));
}

open_error_t rpcclt_openapiTxtCfgFileDelete(openapiClientHandle_t *handle, open_buffdesc *script) {
  if (told == nullptr) return library_call(__func__, handle, script);
  return result_of(begin(__func__, whole_text(script)));
}

/* --- The system ----------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiSystemUnsavedConfigStatusGet(openapiClientHandle_t *handle, OPEN_BOOL_t *unsaved) {
  if (told == nullptr) return library_call(__func__, handle, unsaved);
  return answer(begin(__func__), unsaved, told->unsaved);
}
