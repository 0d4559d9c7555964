/* The chassis: temperature sensors, fans, power supplies and the transceivers in the ports. All of it is read
 * only. Sensors, fans and power supplies are numbered from 0 to their count - 1.
 *
 * OPEN_E_NOT_FOUND: there is no sensor, fan or power supply of this number, or no transceiver in this port.
 * OPEN_E_PARAM: the interface number is outside every range; a text does not fit its buffer. */
#ifndef OPENAPI_BOXS_H
#define OPENAPI_BOXS_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t OPEN_BOXS_ITEM_TYPE_t;
enum { OPEN_BOXS_ITEM_TYPE_NONE = 0, OPEN_BOXS_ITEM_TYPE_FIXED = 1, OPEN_BOXS_ITEM_TYPE_REMOVABLE = 2 };

typedef uint32_t OPEN_BOXS_ITEM_STATE_t;
enum {
  OPEN_BOXS_ITEM_STATE_NONE = 0,
  OPEN_BOXS_ITEM_STATE_NOT_PRESENT = 1,
  OPEN_BOXS_ITEM_STATE_OPERATIONAL = 2,
  OPEN_BOXS_ITEM_STATE_FAILED = 3,
  OPEN_BOXS_ITEM_STATE_POWERING = 4,
  OPEN_BOXS_ITEM_STATE_NOT_POWERED = 5,
  OPEN_BOXS_ITEM_STATE_NOT_POWERING = 6,
  OPEN_BOXS_ITEM_STATE_INCOMPATIBLE = 7
};

typedef uint32_t OPEN_BOXS_TEMP_STATE_t;
enum {
  OPEN_BOXS_TEMP_STATE_NONE = 0,
  OPEN_BOXS_TEMP_STATE_NORMAL = 1,
  OPEN_BOXS_TEMP_STATE_WARNING = 2,
  OPEN_BOXS_TEMP_STATE_CRITICAL = 3,
  OPEN_BOXS_TEMP_STATE_SHUTDOWN = 4,
  OPEN_BOXS_TEMP_STATE_NOT_PRESENT = 5,
  OPEN_BOXS_TEMP_STATE_NOT_OPERATIONAL = 6
};

/* Transceivers, and from OPEN_SFP_TYPE_XFP_MODULE on the switch's own plug-in modules. */
typedef uint32_t OPEN_SFP_MODULE_TYPE_t;
enum {
  OPEN_SFP_TYPE_NONE = 0,
  OPEN_SFP_TYPE_SFP = 1,
  OPEN_SFP_TYPE_SFP_PLUS = 2,
  OPEN_SFP_TYPE_QSFP = 3,
  OPEN_SFP_TYPE_DIRECT_ATTACH = 4,
  OPEN_SFP_TYPE_XFP_MODULE = 5,
  OPEN_SFP_TYPE_STACKING_MODULE = 6,
  OPEN_SFP_TYPE_SFP_PLUS_MODULE = 7,
  OPEN_SFP_TYPE_CX4_MODULE = 8,
  OPEN_SFP_TYPE_COPPER_MODULE = 9
};

/* --- Temperature sensors -------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiBoxsNumOfTempSensorsGet(openapiClientHandle_t *handle, uint32_t *count);
open_error_t rpcclt_openapiBoxsTempSensorStatusGet(openapiClientHandle_t *handle, uint32_t sensor,
                                                   OPEN_BOXS_TEMP_STATE_t *state);
/* Degrees Celsius; below zero is possible. */
open_error_t rpcclt_openapiBoxsTempGet(openapiClientHandle_t *handle, uint32_t sensor, int32_t *temperature);
/* Bytes of a buffer for any sensor's description, terminator included. */
open_error_t rpcclt_openapiBoxsTempSensorDescripSizeGet(openapiClientHandle_t *handle, uint32_t *size);
open_error_t rpcclt_openapiBoxsTempSensorDescripGet(openapiClientHandle_t *handle, uint32_t sensor,
                                                    open_buffdesc *description);

/* --- Fans ----------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiBoxsNumOfFansGet(openapiClientHandle_t *handle, uint32_t *count);
open_error_t rpcclt_openapiBoxsFanStateGet(openapiClientHandle_t *handle, uint32_t fan,
                                           OPEN_BOXS_ITEM_STATE_t *state);
open_error_t rpcclt_openapiBoxsFanTypeGet(openapiClientHandle_t *handle, uint32_t fan,
                                          OPEN_BOXS_ITEM_TYPE_t *type);
/* Revolutions per minute. Means something while the fan is operational. */
open_error_t rpcclt_openapiBoxsFanSpeedGet(openapiClientHandle_t *handle, uint32_t fan, uint32_t *speed);
/* Percent, 0..100. Means something while the fan is operational. */
open_error_t rpcclt_openapiBoxsFanDutyCycleGet(openapiClientHandle_t *handle, uint32_t fan,
                                               uint32_t *dutyCycle);

/* --- Power supplies ------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiBoxsNumOfPowSuppliesGet(openapiClientHandle_t *handle, uint32_t *count);
open_error_t rpcclt_openapiBoxsPowSupplyStateGet(openapiClientHandle_t *handle, uint32_t supply,
                                                 OPEN_BOXS_ITEM_STATE_t *state);
open_error_t rpcclt_openapiBoxsPowSupplyTypeGet(openapiClientHandle_t *handle, uint32_t supply,
                                                OPEN_BOXS_ITEM_TYPE_t *type);

/* --- Transceivers --------------------------------------------------------------------------------------- */

/* What a transceiver says of itself. The size calls give the bytes of a buffer for that text of any
 * transceiver, terminator included. */
open_error_t rpcclt_openapiBoxsSfpTypeGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                          OPEN_SFP_MODULE_TYPE_t *type);
open_error_t rpcclt_openapiBoxsSfpVendorNameSizeGet(openapiClientHandle_t *handle, uint32_t *size);
open_error_t rpcclt_openapiBoxsSfpVendorNameGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                open_buffdesc *name);
open_error_t rpcclt_openapiBoxsSfpVendorRevSizeGet(openapiClientHandle_t *handle, uint32_t *size);
open_error_t rpcclt_openapiBoxsSfpVendorRevisionGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    open_buffdesc *revision);
/* Metres of 50 and of 62.5 micrometre multi-mode fibre that it is made for; 0 = not for such fibre. */
open_error_t rpcclt_openapiBoxsSfpLinkLength50umGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    uint32_t *metres);
open_error_t rpcclt_openapiBoxsSfpLinkLength62_5umGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                      uint32_t *metres);
open_error_t rpcclt_openapiBoxsSfpSerialNumberSizeGet(openapiClientHandle_t *handle, uint32_t *size);
open_error_t rpcclt_openapiBoxsSfpSerialNumberGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                  open_buffdesc *number);
open_error_t rpcclt_openapiBoxsSfpPartNumberSizeGet(openapiClientHandle_t *handle, uint32_t *size);
open_error_t rpcclt_openapiBoxsSfpPartNumberGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                open_buffdesc *number);
/* Megabits per second. */
open_error_t rpcclt_openapiBoxsSfpNominalSignalRate(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    uint32_t *rate);
open_error_t rpcclt_openapiBoxsSfpComplianceSizeGet(openapiClientHandle_t *handle, uint32_t *size);
/* The standard it complies to: "10GBASE-SR". */
open_error_t rpcclt_openapiBoxsSfpComplianceGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                open_buffdesc *compliance);

#ifdef __cplusplus
}
#endif
#endif
