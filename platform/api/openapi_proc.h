/* Memory and CPU of the machine that the switch runs on. */
#ifndef OPENAPI_PROC_H
#define OPENAPI_PROC_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Kibibytes; what does not fit 32 bits is the largest number. `alloc` and `free` together are `total`. */
open_error_t rpcclt_openapiProcMemInfoGet(openapiClientHandle_t *handle, uint32_t *total, uint32_t *alloc,
                                          uint32_t *free);

/* How busy all CPUs together were over each of the measuring periods.
 *   periods  how many there are
 *   text     give 256 bytes: one "NAME: PERCENT%" for each period, separated by ";" */
open_error_t rpcclt_openapiProcTotalCpuUtilGet(openapiClientHandle_t *handle, uint32_t *periods,
                                               open_buffdesc *text);

/* The same by process, as parts of all CPUs together.
 *   count    how many processes the text has
 *   text     give 16384 bytes: one line "PID,NAME,PERIOD:PERCENT%;PERIOD:PERCENT%;..." for each process, in
 *            order of PID. When there are more than fit, the least busy ones are left out. */
open_error_t rpcclt_openapiProcTaskCpuUtilGet(openapiClientHandle_t *handle, uint32_t *count,
                                              open_buffdesc *text);

#ifdef __cplusplus
}
#endif
#endif
