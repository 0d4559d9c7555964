/* Statistics: the counters of interfaces. A counter is 64 bits wide and wraps.
 *
 * For all functions: OPEN_E_PARAM for a counter id above 62 or an interface that does not exist
 * (OPEN_E_NOT_FOUND says that it exists and has no such counter). */
#ifndef OPENAPI_STAT_H
#define OPENAPI_STAT_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Counters have ids 0..62; "kestrel-lab counter names" lists them. */
enum { OPEN_STAT_COUNTERS = 63 };

/* Reads a counter.
 *   low, high   its lower and upper 32 bits
 * OPEN_E_NOT_FOUND  the interface has no such counter */
open_error_t rpcclt_openapiStatHighLowGet(openapiClientHandle_t *handle, uint32_t counterId, uint32_t ifNum,
                                          uint32_t *low, uint32_t *high);

/* Sets a counter, or all counters of an interface, to 0. That is no change of the configuration.
 * OPEN_E_NOT_FOUND  the interface has no such counter */
open_error_t rpcclt_openapiStatReset(openapiClientHandle_t *handle, uint32_t counterId, uint32_t ifNum);
open_error_t rpcclt_openapiInterfaceStatsReset(openapiClientHandle_t *handle, uint32_t ifNum);

#ifdef __cplusplus
}
#endif
#endif
