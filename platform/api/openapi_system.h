/* The switch as a whole: versions, identity, readiness. */
#ifndef OPENAPI_SYSTEM_H
#define OPENAPI_SYSTEM_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The revision of this interface. */
typedef struct {
  uint8_t release;
  uint8_t version;
  uint8_t maint_level;
  uint8_t build_num;
} open_revision_data_t;

/* Texts about the switch. Each fills `text` (give 256 bytes) and answers OPEN_E_PARAM when it does not fit.
 */

/* Version of the switch's operating system. */
open_error_t rpcclt_openapiNetworkOSVersionGet(openapiClientHandle_t *handle, open_buffdesc *text);
/* Where the software is stored. */
open_error_t rpcclt_openapiSwStorageGet(openapiClientHandle_t *handle, open_buffdesc *text);
/* Serial number of the switch. */
open_error_t rpcclt_openapiSwDevInfoSerialNumGet(openapiClientHandle_t *handle, open_buffdesc *text);
/* Burned-in MAC address as text, six groups of two upper-case hexadecimal digits with colons. */
open_error_t rpcclt_openapiBurnedInMacAddrGet(openapiClientHandle_t *handle, open_buffdesc *text);
/* Machine model. */
open_error_t rpcclt_openapiMachineModelNameGet(openapiClientHandle_t *handle, open_buffdesc *text);
/* One-line description of the system. */
open_error_t rpcclt_openapiSystemDescrGet(openapiClientHandle_t *handle, open_buffdesc *text);

/* Revision of this interface. */
open_error_t rpcclt_openapiApiVersionGet(openapiClientHandle_t *handle, open_revision_data_t *revision);

/* Says whether the switch has come up: 1 ready, 0 not yet. */
open_error_t openapiSystemReadyStateGet(openapiClientHandle_t *handle, uint32_t *ready);

/* The largest number of equal-cost routes to one destination. */
open_error_t rpcclt_openapiOspfEqualCostRoutesMax(openapiClientHandle_t *handle, uint32_t *max);

#ifdef __cplusplus
}
#endif
#endif
