/* REST sessions: /login. Logs in and out, lists the open sessions and sets their idle time-out. */
#ifndef KESTREL_MODULES_REST_MODULE_LOGIN_H
#define KESTREL_MODULES_REST_MODULE_LOGIN_H

#include "engine/rest_route.h"

int login_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn);
std::span<const rest_route> login_api_routes(void);

int api_login_get_info(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_login_get_rest_session_list(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_login(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_logout(openapiClientHandle_t *client_handle, mg_connection *conn);
int api_login_update_rest_session_timeout(openapiClientHandle_t *client_handle, mg_connection *conn);

/* Asks the switch whether the password is the account's. Both texts are cut to 255 characters. Any account
 * that the switch accepts gets full access. */
RC_t authenticate_user(openapiClientHandle_t *client_handle, const char *userName, const char *password);

#endif
