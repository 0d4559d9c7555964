/* File transfers; the contracts are in platform/api/openapi_transfer.h. None of them takes the model's lock,
 * which a transfer itself takes while it is cancelled or waited for. */
#include "platform/api/openapi_transfer.h"

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/services/transfer.h"

using namespace softswitch;

open_error_t rpcclt_openapiTransferFileDownload(openapiClientHandle_t *handle, open_buffdesc *url,
                                                open_buffdesc *target) {
  return api_call_unlocked(__func__, handle, {secret(url), text_in(target)},
                           [&] { return transfer_download(std::string(text_of(*url)), text_of(*target)); });
}

open_error_t rpcclt_openapiTransferFileUpload(openapiClientHandle_t *handle, open_buffdesc *url,
                                              open_buffdesc *source) {
  return api_call_unlocked(__func__, handle, {secret(url), text_in(source)},
                           [&] { return transfer_upload(std::string(text_of(*url)), text_of(*source)); });
}

open_error_t rpcclt_openapiTransferCompletedRebootSet(openapiClientHandle_t *handle) {
  return api_call_unlocked(__func__, handle, {},
                           [] { return transfer_reload_when_done() ? OPEN_E_NONE : OPEN_E_FAIL; });
}

open_error_t rpcclt_openapiTransferDownloadStatusGet(openapiClientHandle_t *handle, open_buffdesc *text) {
  return api_call_unlocked(__func__, handle, {text_out(text)},
                           [&] { return fill_text(text, transfer_status(false)); });
}

open_error_t rpcclt_openapiTransferUploadStatusGet(openapiClientHandle_t *handle, open_buffdesc *text) {
  return api_call_unlocked(__func__, handle, {text_out(text)},
                           [&] { return fill_text(text, transfer_status(true)); });
}

open_error_t rpcclt_openapiTransferProgressGet(openapiClientHandle_t *handle, uint32_t *percent) {
  return api_call_unlocked(__func__, handle, {percent}, [&] {
    *percent = transfer_percent();
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiTransferInProgressGet(openapiClientHandle_t *handle, OPEN_BOOL_t *inProgress) {
  return api_call_unlocked(__func__, handle, {inProgress}, [&] {
    *inProgress = transfer_in_progress();
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiTransferResultCodeGet(openapiClientHandle_t *handle, uint32_t unit,
                                                 OPEN_TRANSFER_CODE_t *code) {
  return api_call_unlocked(__func__, handle, {unit, code}, [&] {
    if (unit != 0) return OPEN_E_PARAM;
    *code = transfer_code();
    return OPEN_E_NONE;
  });
}
