/* Box services: /boxs. The chassis: temperature sensors, fans, power supplies, transceivers. All of it is
 * read only. */
#ifndef KESTREL_MODULES_REST_MODULE_BOXS_H
#define KESTREL_MODULES_REST_MODULE_BOXS_H

#include "engine/rest_common.h"

int boxs_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);

int api_boxs_get_info(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_boxs_get_fan_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_boxs_get_power_supply_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_boxs_get_temp_sensor_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_boxs_get_sfp_list(openapiClientHandle_t *client_handle, mg_connection *conn);

/* Texts of the platform's values, "Unknown" for one that it does not name, cut to `size` bytes with the
 * terminator. 0, or 1 for a null destination. */
int get_open_boxs_item_type_string_by_enum(uint32_t value, char *text, size_t size);
int get_open_boxs_item_state_string_by_enum(uint32_t value, char *text, size_t size);
int get_open_boxs_tempsensor_state_string_by_enum(uint32_t value, char *text, size_t size);
int get_open_sfp_module_type_string_by_enum(uint32_t value, char *text, size_t size);

#endif
