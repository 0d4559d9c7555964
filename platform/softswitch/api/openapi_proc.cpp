/* Memory and CPU of the machine; the contracts are in platform/api/openapi_proc.h. */
#include "platform/api/openapi_proc.h"

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/services/process_figures.h"

#include <algorithm>

using namespace softswitch;

open_error_t rpcclt_openapiProcMemInfoGet(openapiClientHandle_t *handle, uint32_t *total, uint32_t *alloc,
                                          uint32_t *free) {
  return api_call_unlocked(__func__, handle, {total, alloc, free}, [&] {
    memory_figures memory;
    if (!process_memory(&memory)) return OPEN_E_FAIL;
    *total = static_cast<uint32_t>(std::min<uint64_t>(memory.total, UINT32_MAX));
    *free = static_cast<uint32_t>(std::min<uint64_t>(memory.free, UINT32_MAX));
    *alloc = *total - *free;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiProcTotalCpuUtilGet(openapiClientHandle_t *handle, uint32_t *periods,
                                               open_buffdesc *text) {
  return api_call_unlocked(__func__, handle, {periods, text_out(text)}, [&] {
    std::string figures;
    if (!process_total_text(&figures)) return OPEN_E_FAIL;
    *periods = cpu_period_count;
    return fill_text(text, figures);
  });
}

open_error_t rpcclt_openapiProcTaskCpuUtilGet(openapiClientHandle_t *handle, uint32_t *count,
                                              open_buffdesc *text) {
  return api_call_unlocked(__func__, handle, {count, text_out(text)}, [&] {
    std::string figures;
    if (text->size == 0) return OPEN_E_PARAM;
    if (!process_list_text(text->size - 1, &figures, count)) return OPEN_E_FAIL;
    return fill_text(text, figures);
  });
}
