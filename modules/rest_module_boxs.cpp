/* Box services: what the platform knows of the chassis, as texts and numbers. */
#include "modules/rest_module_boxs.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "platform/api/openapi_boxs.h"
#include "platform/api/openapi_if.h"

#include <stdio.h>

/* --- Texts ---------------------------------------------------------------------------------------------- */

const char *const pStr_common_Unknown = "Unknown";

const char *const pStr_enumBoxsItemType_None = "None";
const char *const pStr_enumBoxsItemType_Fixed = "Fixed";
const char *const pStr_enumBoxsItemType_Removable = "Removable";

const char *const pStr_enumBoxsItemState_None = "None";
const char *const pStr_enumBoxsItemState_NotPresent = "Not present";
const char *const pStr_enumBoxsItemState_Operational = "Operational";
const char *const pStr_enumBoxsItemState_Failed = "Failed";
const char *const pStr_enumBoxsItemState_Powering = "Powering";
const char *const pStr_enumBoxsItemState_NotPowered = "Not powered";
const char *const pStr_enumBoxsItemState_NotPowering = "Not powering";
const char *const pStr_enumBoxsItemState_Incompatible = "Incompatible";

const char *const pStr_enumBoxsTempSensorState_NotApplicable = "Not applicable";
const char *const pStr_enumBoxsTempSensorState_Normal = "Normal";
const char *const pStr_enumBoxsTempSensorState_Warning = "Warning";
const char *const pStr_enumBoxsTempSensorState_Critical = "Critical";
const char *const pStr_enumBoxsTempSensorState_Shutdown = "Shutdown";
const char *const pStr_enumBoxsTempSensorState_NotPresent = "Not present";
const char *const pStr_enumBoxsTempSensorState_NotOperational = "Not operational";

const char *const pStr_enumSfpModuleType_None = "None";
const char *const pStr_enumSfpModuleType_SFP = "SFP";
const char *const pStr_enumSfpModuleType_SFPPlus = "SFP+";
const char *const pStr_enumSfpModuleType_QSFP = "QSFP";
const char *const pStr_enumSfpModuleType_DirectAttachCable = "Direct Attach Cable";
const char *const pStr_enumSfpModuleType_XFPModule = "10G XFP Plug-in Module KM-10XFP";
const char *const pStr_enumSfpModuleType_StackingModule = "Stacking Module KM-STK";
const char *const pStr_enumSfpModuleType_SFPPlusModule = "SFP+ Plug-in Module KM-10SFP";
const char *const pStr_enumSfpModuleType_CX4Module = "CX4 Plug-in Module KM-10CX4";
const char *const pStr_enumSfpModuleType_CopperModule = "10G Copper Plug-in Module KM-10GT";

static const enum_text item_types[] = {
    {OPEN_BOXS_ITEM_TYPE_NONE, pStr_enumBoxsItemType_None},
    {OPEN_BOXS_ITEM_TYPE_FIXED, pStr_enumBoxsItemType_Fixed},
    {OPEN_BOXS_ITEM_TYPE_REMOVABLE, pStr_enumBoxsItemType_Removable},
};

static const enum_text item_states[] = {
    {OPEN_BOXS_ITEM_STATE_NONE, pStr_enumBoxsItemState_None},
    {OPEN_BOXS_ITEM_STATE_NOT_PRESENT, pStr_enumBoxsItemState_NotPresent},
    {OPEN_BOXS_ITEM_STATE_OPERATIONAL, pStr_enumBoxsItemState_Operational},
    {OPEN_BOXS_ITEM_STATE_FAILED, pStr_enumBoxsItemState_Failed},
    {OPEN_BOXS_ITEM_STATE_POWERING, pStr_enumBoxsItemState_Powering},
    {OPEN_BOXS_ITEM_STATE_NOT_POWERED, pStr_enumBoxsItemState_NotPowered},
    {OPEN_BOXS_ITEM_STATE_NOT_POWERING, pStr_enumBoxsItemState_NotPowering},
    {OPEN_BOXS_ITEM_STATE_INCOMPATIBLE, pStr_enumBoxsItemState_Incompatible},
};

static const enum_text temp_sensor_states[] = {
    {OPEN_BOXS_TEMP_STATE_NONE, pStr_enumBoxsTempSensorState_NotApplicable},
    {OPEN_BOXS_TEMP_STATE_NORMAL, pStr_enumBoxsTempSensorState_Normal},
    {OPEN_BOXS_TEMP_STATE_WARNING, pStr_enumBoxsTempSensorState_Warning},
    {OPEN_BOXS_TEMP_STATE_CRITICAL, pStr_enumBoxsTempSensorState_Critical},
    {OPEN_BOXS_TEMP_STATE_SHUTDOWN, pStr_enumBoxsTempSensorState_Shutdown},
    {OPEN_BOXS_TEMP_STATE_NOT_PRESENT, pStr_enumBoxsTempSensorState_NotPresent},
    {OPEN_BOXS_TEMP_STATE_NOT_OPERATIONAL, pStr_enumBoxsTempSensorState_NotOperational},
};

static const enum_text module_types[] = {
    {OPEN_SFP_TYPE_NONE, pStr_enumSfpModuleType_None},
    {OPEN_SFP_TYPE_SFP, pStr_enumSfpModuleType_SFP},
    {OPEN_SFP_TYPE_SFP_PLUS, pStr_enumSfpModuleType_SFPPlus},
    {OPEN_SFP_TYPE_QSFP, pStr_enumSfpModuleType_QSFP},
    {OPEN_SFP_TYPE_DIRECT_ATTACH, pStr_enumSfpModuleType_DirectAttachCable},
    {OPEN_SFP_TYPE_XFP_MODULE, pStr_enumSfpModuleType_XFPModule},
    {OPEN_SFP_TYPE_STACKING_MODULE, pStr_enumSfpModuleType_StackingModule},
    {OPEN_SFP_TYPE_SFP_PLUS_MODULE, pStr_enumSfpModuleType_SFPPlusModule},
    {OPEN_SFP_TYPE_CX4_MODULE, pStr_enumSfpModuleType_CX4Module},
    {OPEN_SFP_TYPE_COPPER_MODULE, pStr_enumSfpModuleType_CopperModule},
};

static int copy_text(std::span<const enum_text> table, uint32_t value, char *text, size_t size) {
  if (text == nullptr) return 1;
  const char *found = find_text_by_enum(table, static_cast<int32_t>(value));
  snprintf(text, size, "%s", found == nullptr ? pStr_common_Unknown : found);
  return 0;
}

int get_open_boxs_item_type_string_by_enum(uint32_t value, char *text, size_t size) {
  return copy_text(item_types, value, text, size);
}

int get_open_boxs_item_state_string_by_enum(uint32_t value, char *text, size_t size) {
  return copy_text(item_states, value, text, size);
}

int get_open_boxs_tempsensor_state_string_by_enum(uint32_t value, char *text, size_t size) {
  return copy_text(temp_sensor_states, value, text, size);
}

int get_open_sfp_module_type_string_by_enum(uint32_t value, char *text, size_t size) {
  return copy_text(module_types, value, text, size);
}

/* --- Helpers -------------------------------------------------------------------------------------------- */

typedef int (*text_by_enum_t)(uint32_t value, char *text, size_t size);
typedef open_error_t (*number_getter_t)(openapiClientHandle_t *client_handle, uint32_t id, uint32_t *number);
typedef open_error_t (*count_getter_t)(openapiClientHandle_t *client_handle, uint32_t *count);

/* Each of these reads one value of an item and appends it as a leaf. */

static open_error_t append_word(openapiClientHandle_t *client_handle, uint32_t id, node_t *entry,
                                const char *name, number_getter_t get, text_by_enum_t text_of,
                                uint32_t *value) {
  char text[64];
  open_error_t rc = get(client_handle, id, value);
  if (rc != OPEN_E_NONE) return rc;
  text_of(*value, text, sizeof text);
  append_tree_string(entry, name, name, text);
  return OPEN_E_NONE;
}

static open_error_t append_number(openapiClientHandle_t *client_handle, uint32_t id, node_t *entry,
                                  const char *name, number_getter_t get) {
  uint32_t number = 0;
  open_error_t rc = get(client_handle, id, &number);
  if (rc == OPEN_E_NONE) append_tree_number(entry, name, number);
  return rc;
}

static open_error_t append_text(openapiClientHandle_t *client_handle, uint32_t id, node_t *entry,
                                const char *name, text_size_getter_t size_of, text_getter_t text_of) {
  platform_text text;
  open_error_t rc = text.read(client_handle, size_of, text_of, id);
  if (rc == OPEN_E_NONE) append_tree_string(entry, name, name, text.text());
  return rc;
}

/* Answers with a list: `append` fills the entry of each item, from 0 on. */
static int answer_list(openapiClientHandle_t *client_handle, mg_connection *conn, const char *list_name,
                       const char *entry_name, count_getter_t get_count,
                       open_error_t (*append)(openapiClientHandle_t *, uint32_t index, node_t *entry)) {
  uint32_t count = 0;
  open_error_t rc = get_count(client_handle, &count);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (count > MAX_LIST_ENTRIES) return fail(conn, OPEN_E_INTERNAL, nullptr);

  node_t *tree = new_tree();
  node_t *list = append_branch(tree, list_name);
  for (uint32_t i = 0; i < count && rc == OPEN_E_NONE; i++)
    rc = append(client_handle, i, append_entry(list, i + 1, entry_name));
  return rc == OPEN_E_NONE ? succeed(conn, tree, "Get data successfully.") : fail(conn, rc, tree);
}

/* --- Summary -------------------------------------------------------------------------------------------- */

int api_boxs_get_info(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t temp_sensors = 0, fans = 0, power_supplies = 0;
  open_error_t rc = rpcclt_openapiBoxsNumOfTempSensorsGet(client_handle, &temp_sensors);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiBoxsNumOfFansGet(client_handle, &fans);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiBoxsNumOfPowSuppliesGet(client_handle, &power_supplies);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *infomation = append_branch(tree, "infomation");
  append_tree_number(infomation, "temp_sensors_number", temp_sensors);
  append_tree_number(infomation, "fans_number", fans);
  append_tree_number(infomation, "power_supplies_number", power_supplies);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Fans ----------------------------------------------------------------------------------------------- */

/* Speed and duty cycle of a fan that does not work mean nothing, but the platform is asked all the same. */
static open_error_t append_while_operational(openapiClientHandle_t *client_handle, uint32_t fan,
                                             node_t *entry, const char *name, number_getter_t get,
                                             uint32_t state) {
  uint32_t number = 0;
  open_error_t rc = get(client_handle, fan, &number);
  if (rc != OPEN_E_NONE) return rc;
  char text[16] = "-";
  if (state == OPEN_BOXS_ITEM_STATE_OPERATIONAL) snprintf(text, sizeof text, "%d", static_cast<int>(number));
  append_tree_string(entry, name, name, text);
  return OPEN_E_NONE;
}

static open_error_t append_fan(openapiClientHandle_t *client_handle, uint32_t fan, node_t *entry) {
  uint32_t state = 0, type = 0;
  open_error_t rc = append_word(client_handle, fan, entry, "state", rpcclt_openapiBoxsFanStateGet,
                                get_open_boxs_item_state_string_by_enum, &state);
  if (rc == OPEN_E_NONE)
    rc = append_word(client_handle, fan, entry, "type", rpcclt_openapiBoxsFanTypeGet,
                     get_open_boxs_item_type_string_by_enum, &type);
  if (rc == OPEN_E_NONE)
    rc = append_while_operational(client_handle, fan, entry, "speed", rpcclt_openapiBoxsFanSpeedGet, state);
  if (rc == OPEN_E_NONE)
    rc = append_while_operational(client_handle, fan, entry, "duty_cycle", rpcclt_openapiBoxsFanDutyCycleGet,
                                  state);
  return rc;
}

int api_boxs_get_fan_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return answer_list(client_handle, conn, "fans", "fan", rpcclt_openapiBoxsNumOfFansGet, append_fan);
}

/* --- Power supplies ------------------------------------------------------------------------------------- */

static open_error_t append_power_supply(openapiClientHandle_t *client_handle, uint32_t supply,
                                        node_t *entry) {
  uint32_t state = 0, type = 0;
  open_error_t rc = append_word(client_handle, supply, entry, "state", rpcclt_openapiBoxsPowSupplyStateGet,
                                get_open_boxs_item_state_string_by_enum, &state);
  if (rc == OPEN_E_NONE)
    rc = append_word(client_handle, supply, entry, "type", rpcclt_openapiBoxsPowSupplyTypeGet,
                     get_open_boxs_item_type_string_by_enum, &type);
  return rc;
}

int api_boxs_get_power_supply_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return answer_list(client_handle, conn, "power_supplies", "power_supply",
                     rpcclt_openapiBoxsNumOfPowSuppliesGet, append_power_supply);
}

/* --- Temperature sensors -------------------------------------------------------------------------------- */

static open_error_t append_temp_sensor(openapiClientHandle_t *client_handle, uint32_t sensor, node_t *entry) {
  uint32_t state = 0;
  int32_t temperature = 0;
  open_error_t rc = append_word(client_handle, sensor, entry, "state", rpcclt_openapiBoxsTempSensorStatusGet,
                                get_open_boxs_tempsensor_state_string_by_enum, &state);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiBoxsTempGet(client_handle, sensor, &temperature);
  if (rc != OPEN_E_NONE) return rc;
  append_tree_int(entry, "temperature", "temperature", temperature);
  return append_text(client_handle, sensor, entry, "description", rpcclt_openapiBoxsTempSensorDescripSizeGet,
                     rpcclt_openapiBoxsTempSensorDescripGet);
}

int api_boxs_get_temp_sensor_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return answer_list(client_handle, conn, "temp_sensors", "temp_sensor",
                     rpcclt_openapiBoxsNumOfTempSensorsGet, append_temp_sensor);
}

/* --- Transceivers --------------------------------------------------------------------------------------- */

static open_error_t append_sfp(openapiClientHandle_t *client, uint32_t port, node_t *entry) {
  uint32_t type = 0;
  append_tree_number(entry, "port", port);
  open_error_t rc = append_word(client, port, entry, "module_type", rpcclt_openapiBoxsSfpTypeGet,
                                get_open_sfp_module_type_string_by_enum, &type);
  if (rc == OPEN_E_NONE)
    rc = append_text(client, port, entry, "vendor_name", rpcclt_openapiBoxsSfpVendorNameSizeGet,
                     rpcclt_openapiBoxsSfpVendorNameGet);
  if (rc == OPEN_E_NONE)
    rc = append_text(client, port, entry, "vendor_revision", rpcclt_openapiBoxsSfpVendorRevSizeGet,
                     rpcclt_openapiBoxsSfpVendorRevisionGet);
  if (rc == OPEN_E_NONE)
    rc = append_number(client, port, entry, "link_length_50um", rpcclt_openapiBoxsSfpLinkLength50umGet);
  if (rc == OPEN_E_NONE)
    rc = append_number(client, port, entry, "link_length_62_5um", rpcclt_openapiBoxsSfpLinkLength62_5umGet);
  if (rc == OPEN_E_NONE)
    rc = append_text(client, port, entry, "serial_number", rpcclt_openapiBoxsSfpSerialNumberSizeGet,
                     rpcclt_openapiBoxsSfpSerialNumberGet);
  if (rc == OPEN_E_NONE)
    rc = append_text(client, port, entry, "part_number", rpcclt_openapiBoxsSfpPartNumberSizeGet,
                     rpcclt_openapiBoxsSfpPartNumberGet);
  if (rc == OPEN_E_NONE)
    rc = append_number(client, port, entry, "nominal_signal_rate", rpcclt_openapiBoxsSfpNominalSignalRate);
  if (rc == OPEN_E_NONE)
    rc = append_text(client, port, entry, "compliance", rpcclt_openapiBoxsSfpComplianceSizeGet,
                     rpcclt_openapiBoxsSfpComplianceGet);
  return rc;
}

/* The signal rate is what tells whether there is a transceiver: only then can it be read. */
static bool has_transceiver(openapiClientHandle_t *client_handle, uint32_t port) {
  uint32_t rate = 0;
  return rpcclt_openapiBoxsSfpNominalSignalRate(client_handle, port, &rate) == OPEN_E_NONE;
}

int api_boxs_get_sfp_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t port = 0, found = 0, seen = 0;
  open_error_t rc = rpcclt_openapiIfFirstGet(client_handle, OPEN_INTF_TYPE_PHY, OPEN_INTF_STATE_ANY, &port);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *list = append_branch(tree, "sfp_transceivers");
  do {
    if (++seen > MAX_LIST_ENTRIES) return fail(conn, OPEN_E_INTERNAL, tree);
    if (!has_transceiver(client_handle, port)) continue;
    rc = append_sfp(client_handle, port, append_entry(list, ++found, "sfp"));
    if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  } while (rpcclt_openapiIfNextGet(client_handle, OPEN_INTF_TYPE_PHY, OPEN_INTF_STATE_ANY, port, &port) ==
           OPEN_E_NONE);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Routes --------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_GET, "/boxs%s", ROUTE_EXACT, nullptr, api_boxs_get_info},
    {REQUEST_METHOD_GET, "/boxs/fans%s", ROUTE_EXACT, nullptr, api_boxs_get_fan_list},
    {REQUEST_METHOD_GET, "/boxs/powSupplies%s", ROUTE_EXACT, nullptr, api_boxs_get_power_supply_list},
    {REQUEST_METHOD_GET, "/boxs/tempSensors%s", ROUTE_EXACT, nullptr, api_boxs_get_temp_sensor_list},
    {REQUEST_METHOD_GET, "/boxs/sfp%s", ROUTE_EXACT, nullptr, api_boxs_get_sfp_list},
};

int boxs_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> boxs_api_routes(void) {
  return routes;
}
