/* Box services: /boxs. The chassis: temperature sensors, fans, power supplies, transceivers. All of it is
 * read only. */
#ifndef KESTREL_MODULES_REST_MODULE_BOXS_H
#define KESTREL_MODULES_REST_MODULE_BOXS_H

#include "engine/rest_route.h"

int boxs_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> boxs_api_routes(void);

int api_boxs_get_info(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_boxs_get_fan_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_boxs_get_power_supply_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_boxs_get_temp_sensor_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_boxs_get_sfp_list(openapiClientHandle_t *client_handle, mg_connection *conn);

/* The texts of the platform's values. */
extern const char *const pStr_common_Unknown;

extern const char *const pStr_enumBoxsItemType_None;
extern const char *const pStr_enumBoxsItemType_Fixed;
extern const char *const pStr_enumBoxsItemType_Removable;

extern const char *const pStr_enumBoxsItemState_None;
extern const char *const pStr_enumBoxsItemState_NotPresent;
extern const char *const pStr_enumBoxsItemState_Operational;
extern const char *const pStr_enumBoxsItemState_Failed;
extern const char *const pStr_enumBoxsItemState_Powering;
extern const char *const pStr_enumBoxsItemState_NotPowered;
extern const char *const pStr_enumBoxsItemState_NotPowering;
extern const char *const pStr_enumBoxsItemState_Incompatible;

extern const char *const pStr_enumBoxsTempSensorState_NotApplicable;
extern const char *const pStr_enumBoxsTempSensorState_Normal;
extern const char *const pStr_enumBoxsTempSensorState_Warning;
extern const char *const pStr_enumBoxsTempSensorState_Critical;
extern const char *const pStr_enumBoxsTempSensorState_Shutdown;
extern const char *const pStr_enumBoxsTempSensorState_NotPresent;
extern const char *const pStr_enumBoxsTempSensorState_NotOperational;

extern const char *const pStr_enumSfpModuleType_None;
extern const char *const pStr_enumSfpModuleType_SFP;
extern const char *const pStr_enumSfpModuleType_SFPPlus;
extern const char *const pStr_enumSfpModuleType_QSFP;
extern const char *const pStr_enumSfpModuleType_DirectAttachCable;
extern const char *const pStr_enumSfpModuleType_XFPModule;
extern const char *const pStr_enumSfpModuleType_StackingModule;
extern const char *const pStr_enumSfpModuleType_SFPPlusModule;
extern const char *const pStr_enumSfpModuleType_CX4Module;
extern const char *const pStr_enumSfpModuleType_CopperModule;

/* Copy these texts by value, "Unknown" for one that it does not name, cut to `size` bytes with the
 * terminator. 0, or 1 for a null destination. */
int get_open_boxs_item_type_string_by_enum(uint32_t value, char *text, size_t size);
int get_open_boxs_item_state_string_by_enum(uint32_t value, char *text, size_t size);
int get_open_boxs_tempsensor_state_string_by_enum(uint32_t value, char *text, size_t size);
int get_open_sfp_module_type_string_by_enum(uint32_t value, char *text, size_t size);

#endif
