/* The chassis; the contracts are in platform/api/openapi_boxs.h. */
#include "platform/api/openapi_boxs.h"

#include "platform/softswitch/api/call.h"

using namespace softswitch;

/* --- The shape of most functions ------------------------------------------------------------------------ */

/* How many items a list of the chassis has. */
template <class item>
static open_error_t read_count(const char *function, openapiClientHandle_t *handle,
                               std::vector<item> chassis_table::*list, uint32_t *count) {
  return api_call(function, handle, {count}, [&](switch_model &model) {
    *count = static_cast<uint32_t>(((*model.chassis).*list).size());
    return OPEN_E_NONE;
  });
}

/* The item of a list with this number, null when there is none. */
template <class item>
static const item *find_item(const switch_model &model, std::vector<item> chassis_table::*list,
                             uint32_t number) {
  const std::vector<item> &items = (*model.chassis).*list;
  return number < items.size() ? &items[number] : nullptr;
}

/* Reads a number of an item of a list. */
template <class item>
static open_error_t read_number(const char *function, openapiClientHandle_t *handle,
                                std::vector<item> chassis_table::*list, uint32_t number, int32_t item::*what,
                                uint32_t *value) {
  return api_call(function, handle, {number, value}, [&](switch_model &model) {
    const item *found = find_item(model, list, number);
    if (!found) return OPEN_E_NOT_FOUND;
    *value = static_cast<uint32_t>(found->*what);
    return OPEN_E_NONE;
  });
}

/* Bytes of a buffer for any text of the chassis. */
static open_error_t read_text_size(const char *function, openapiClientHandle_t *handle, uint32_t *size) {
  return api_call(function, handle, {size}, [&](switch_model &) {
    *size = chassis_text_max + 1;
    return OPEN_E_NONE;
  });
}

/* The transceiver in a port, null when there is none. */
static const transceiver *find_transceiver(const switch_model &model, uint32_t port) {
  auto found = model.chassis->transceivers.find(port);
  return found == model.chassis->transceivers.end() ? nullptr : &found->second;
}

/* Reads a number of the transceiver in a port. */
static open_error_t read_sfp_number(const char *function, openapiClientHandle_t *handle, uint32_t port,
                                    int32_t transceiver::*what, uint32_t *value) {
  return api_call(function, handle, {port, value}, [&](switch_model &model) {
    const transceiver *found = find_transceiver(model, port);
    if (!found) return interface_refusal(port);
    *value = static_cast<uint32_t>(found->*what);
    return OPEN_E_NONE;
  });
}

/* Reads a text of it. */
static open_error_t read_sfp_text(const char *function, openapiClientHandle_t *handle, uint32_t port,
                                  std::string transceiver::*what, open_buffdesc *text) {
  return api_call(function, handle, {port, text_out(text)}, [&](switch_model &model) {
    const transceiver *found = find_transceiver(model, port);
    return found ? fill_text(text, found->*what) : interface_refusal(port);
  });
}

/* --- Temperature sensors -------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiBoxsNumOfTempSensorsGet(openapiClientHandle_t *handle, uint32_t *count) {
  return read_count(__func__, handle, &chassis_table::temperature_sensors, count);
}

open_error_t rpcclt_openapiBoxsTempSensorStatusGet(openapiClientHandle_t *handle, uint32_t sensor,
                                                   OPEN_BOXS_TEMP_STATE_t *state) {
  return api_call(__func__, handle, {sensor, state}, [&](switch_model &model) {
    const temperature_sensor *found = find_item(model, &chassis_table::temperature_sensors, sensor);
    if (!found) return OPEN_E_NOT_FOUND;
    *state = sensor_state(*found);
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiBoxsTempGet(openapiClientHandle_t *handle, uint32_t sensor, int32_t *temperature) {
  return api_call(__func__, handle, {sensor, output(temperature)}, [&](switch_model &model) {
    const temperature_sensor *found = find_item(model, &chassis_table::temperature_sensors, sensor);
    if (!found) return OPEN_E_NOT_FOUND;
    *temperature = found->temperature;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiBoxsTempSensorDescripSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return read_text_size(__func__, handle, size);
}

open_error_t rpcclt_openapiBoxsTempSensorDescripGet(openapiClientHandle_t *handle, uint32_t sensor,
                                                    open_buffdesc *description) {
  return api_call(__func__, handle, {sensor, text_out(description)}, [&](switch_model &model) {
    const temperature_sensor *found = find_item(model, &chassis_table::temperature_sensors, sensor);
    return found ? fill_text(description, found->description) : OPEN_E_NOT_FOUND;
  });
}

/* --- Fans ----------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiBoxsNumOfFansGet(openapiClientHandle_t *handle, uint32_t *count) {
  return read_count(__func__, handle, &chassis_table::fans, count);
}

open_error_t rpcclt_openapiBoxsFanStateGet(openapiClientHandle_t *handle, uint32_t fan,
                                           OPEN_BOXS_ITEM_STATE_t *state) {
  return read_number(__func__, handle, &chassis_table::fans, fan, &softswitch::fan::state, state);
}

open_error_t rpcclt_openapiBoxsFanTypeGet(openapiClientHandle_t *handle, uint32_t fan,
                                          OPEN_BOXS_ITEM_TYPE_t *type) {
  return read_number(__func__, handle, &chassis_table::fans, fan, &softswitch::fan::type, type);
}

open_error_t rpcclt_openapiBoxsFanSpeedGet(openapiClientHandle_t *handle, uint32_t fan, uint32_t *speed) {
  return read_number(__func__, handle, &chassis_table::fans, fan, &softswitch::fan::speed, speed);
}

open_error_t rpcclt_openapiBoxsFanDutyCycleGet(openapiClientHandle_t *handle, uint32_t fan,
                                               uint32_t *dutyCycle) {
  return read_number(__func__, handle, &chassis_table::fans, fan, &softswitch::fan::duty_cycle, dutyCycle);
}

/* --- Power supplies ------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiBoxsNumOfPowSuppliesGet(openapiClientHandle_t *handle, uint32_t *count) {
  return read_count(__func__, handle, &chassis_table::power_supplies, count);
}

open_error_t rpcclt_openapiBoxsPowSupplyStateGet(openapiClientHandle_t *handle, uint32_t supply,
                                                 OPEN_BOXS_ITEM_STATE_t *state) {
  return read_number(__func__, handle, &chassis_table::power_supplies, supply, &power_supply::state, state);
}

open_error_t rpcclt_openapiBoxsPowSupplyTypeGet(openapiClientHandle_t *handle, uint32_t supply,
                                                OPEN_BOXS_ITEM_TYPE_t *type) {
  return read_number(__func__, handle, &chassis_table::power_supplies, supply, &power_supply::type, type);
}

/* --- Transceivers --------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiBoxsSfpTypeGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                          OPEN_SFP_MODULE_TYPE_t *type) {
  return read_sfp_number(__func__, handle, ifNum, &transceiver::module_type, type);
}

open_error_t rpcclt_openapiBoxsSfpVendorNameSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return read_text_size(__func__, handle, size);
}

open_error_t rpcclt_openapiBoxsSfpVendorNameGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                open_buffdesc *name) {
  return read_sfp_text(__func__, handle, ifNum, &transceiver::vendor_name, name);
}

open_error_t rpcclt_openapiBoxsSfpVendorRevSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return read_text_size(__func__, handle, size);
}

open_error_t rpcclt_openapiBoxsSfpVendorRevisionGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    open_buffdesc *revision) {
  return read_sfp_text(__func__, handle, ifNum, &transceiver::vendor_revision, revision);
}

open_error_t rpcclt_openapiBoxsSfpLinkLength50umGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    uint32_t *metres) {
  return read_sfp_number(__func__, handle, ifNum, &transceiver::link_length_50um, metres);
}

open_error_t rpcclt_openapiBoxsSfpLinkLength62_5umGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                      uint32_t *metres) {
  return read_sfp_number(__func__, handle, ifNum, &transceiver::link_length_62_5um, metres);
}

open_error_t rpcclt_openapiBoxsSfpSerialNumberSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return read_text_size(__func__, handle, size);
}

open_error_t rpcclt_openapiBoxsSfpSerialNumberGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                  open_buffdesc *number) {
  return read_sfp_text(__func__, handle, ifNum, &transceiver::serial_number, number);
}

open_error_t rpcclt_openapiBoxsSfpPartNumberSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return read_text_size(__func__, handle, size);
}

open_error_t rpcclt_openapiBoxsSfpPartNumberGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                open_buffdesc *number) {
  return read_sfp_text(__func__, handle, ifNum, &transceiver::part_number, number);
}

open_error_t rpcclt_openapiBoxsSfpNominalSignalRate(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    uint32_t *rate) {
  return read_sfp_number(__func__, handle, ifNum, &transceiver::nominal_signal_rate, rate);
}

open_error_t rpcclt_openapiBoxsSfpComplianceSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return read_text_size(__func__, handle, size);
}

open_error_t rpcclt_openapiBoxsSfpComplianceGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                open_buffdesc *compliance) {
  return read_sfp_text(__func__, handle, ifNum, &transceiver::compliance, compliance);
}
