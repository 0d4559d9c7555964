/* The scripted platform's functions of the chassis and its interfaces: see scripted_platform.h. */
#include "platform/api/openapi_boxs.h"
#include "platform/api/openapi_if.h"
#include "tests/unit/modules/management/scripted_call.h"

open_error_t rpcclt_openapiIfFirstGet(openapiClientHandle_t *handle, uint32_t type, uint32_t state,
                                      uint32_t *ifNum) {
  return scripted_call(handle, __func__, type, state).put(ifNum).result();
}

open_error_t rpcclt_openapiIfNextGet(openapiClientHandle_t *handle, uint32_t type, uint32_t state,
                                     uint32_t ifNum, uint32_t *nextIfNum) {
  return scripted_call(handle, __func__, type, state, ifNum).put(nextIfNum).result();
}

open_error_t rpcclt_openapiBoxsNumOfTempSensorsGet(openapiClientHandle_t *handle, uint32_t *count) {
  return scripted_call(handle, __func__).put(count).result();
}

open_error_t rpcclt_openapiBoxsTempSensorStatusGet(openapiClientHandle_t *handle, uint32_t sensor,
                                                   OPEN_BOXS_TEMP_STATE_t *state) {
  return scripted_call(handle, __func__, sensor).put(state).result();
}

open_error_t rpcclt_openapiBoxsTempGet(openapiClientHandle_t *handle, uint32_t sensor, int32_t *temperature) {
  return scripted_call(handle, __func__, sensor).put(temperature).result();
}

open_error_t rpcclt_openapiBoxsTempSensorDescripSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return scripted_call(handle, __func__).put(size).result();
}

open_error_t rpcclt_openapiBoxsTempSensorDescripGet(openapiClientHandle_t *handle, uint32_t sensor,
                                                    open_buffdesc *description) {
  return scripted_call(handle, __func__, sensor).put(description).result();
}

open_error_t rpcclt_openapiBoxsNumOfFansGet(openapiClientHandle_t *handle, uint32_t *count) {
  return scripted_call(handle, __func__).put(count).result();
}

open_error_t rpcclt_openapiBoxsFanStateGet(openapiClientHandle_t *handle, uint32_t fan,
                                           OPEN_BOXS_ITEM_STATE_t *state) {
  return scripted_call(handle, __func__, fan).put(state).result();
}

open_error_t rpcclt_openapiBoxsFanTypeGet(openapiClientHandle_t *handle, uint32_t fan,
                                          OPEN_BOXS_ITEM_TYPE_t *type) {
  return scripted_call(handle, __func__, fan).put(type).result();
}

open_error_t rpcclt_openapiBoxsFanSpeedGet(openapiClientHandle_t *handle, uint32_t fan, uint32_t *speed) {
  return scripted_call(handle, __func__, fan).put(speed).result();
}

open_error_t rpcclt_openapiBoxsFanDutyCycleGet(openapiClientHandle_t *handle, uint32_t fan,
                                               uint32_t *dutyCycle) {
  return scripted_call(handle, __func__, fan).put(dutyCycle).result();
}

open_error_t rpcclt_openapiBoxsNumOfPowSuppliesGet(openapiClientHandle_t *handle, uint32_t *count) {
  return scripted_call(handle, __func__).put(count).result();
}

open_error_t rpcclt_openapiBoxsPowSupplyStateGet(openapiClientHandle_t *handle, uint32_t supply,
                                                 OPEN_BOXS_ITEM_STATE_t *state) {
  return scripted_call(handle, __func__, supply).put(state).result();
}

open_error_t rpcclt_openapiBoxsPowSupplyTypeGet(openapiClientHandle_t *handle, uint32_t supply,
                                                OPEN_BOXS_ITEM_TYPE_t *type) {
  return scripted_call(handle, __func__, supply).put(type).result();
}

open_error_t rpcclt_openapiBoxsSfpTypeGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                          OPEN_SFP_MODULE_TYPE_t *type) {
  return scripted_call(handle, __func__, ifNum).put(type).result();
}

open_error_t rpcclt_openapiBoxsSfpVendorNameSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return scripted_call(handle, __func__).put(size).result();
}

open_error_t rpcclt_openapiBoxsSfpVendorNameGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                open_buffdesc *name) {
  return scripted_call(handle, __func__, ifNum).put(name).result();
}

open_error_t rpcclt_openapiBoxsSfpVendorRevSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return scripted_call(handle, __func__).put(size).result();
}

open_error_t rpcclt_openapiBoxsSfpVendorRevisionGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    open_buffdesc *revision) {
  return scripted_call(handle, __func__, ifNum).put(revision).result();
}

open_error_t rpcclt_openapiBoxsSfpLinkLength50umGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    uint32_t *metres) {
  return scripted_call(handle, __func__, ifNum).put(metres).result();
}

open_error_t rpcclt_openapiBoxsSfpLinkLength62_5umGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                      uint32_t *metres) {
  return scripted_call(handle, __func__, ifNum).put(metres).result();
}

open_error_t rpcclt_openapiBoxsSfpSerialNumberSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return scripted_call(handle, __func__).put(size).result();
}

open_error_t rpcclt_openapiBoxsSfpSerialNumberGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                  open_buffdesc *number) {
  return scripted_call(handle, __func__, ifNum).put(number).result();
}

open_error_t rpcclt_openapiBoxsSfpPartNumberSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return scripted_call(handle, __func__).put(size).result();
}

open_error_t rpcclt_openapiBoxsSfpPartNumberGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                open_buffdesc *number) {
  return scripted_call(handle, __func__, ifNum).put(number).result();
}

open_error_t rpcclt_openapiBoxsSfpNominalSignalRate(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    uint32_t *rate) {
  return scripted_call(handle, __func__, ifNum).put(rate).result();
}

open_error_t rpcclt_openapiBoxsSfpComplianceSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return scripted_call(handle, __func__).put(size).result();
}

open_error_t rpcclt_openapiBoxsSfpComplianceGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                open_buffdesc *compliance) {
  return scripted_call(handle, __func__, ifNum).put(compliance).result();
}
