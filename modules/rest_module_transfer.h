/* File transfers: /download and /upload. The platform carries them out; the module starts them and reports.
 * It also keeps a record of the startup configuration (rest_startupcfg_info.h). */
#ifndef KESTREL_MODULES_REST_MODULE_TRANSFER_H
#define KESTREL_MODULES_REST_MODULE_TRANSFER_H

#include "engine/rest_route.h"

int transfer_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> transfer_api_routes(void);

int api_transfer_get_download_status(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_transfer_get_upload_status(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_transfer_get_download_startupcfg_info(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_transfer_download_image(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_transfer_download_config(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_transfer_upload_config(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_transfer_download_script(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_transfer_upload_script(openapiClientHandle_t *client_handle, mg_connection *conn);

#endif
