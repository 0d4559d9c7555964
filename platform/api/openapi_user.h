/* The switch's user accounts. */
#ifndef OPENAPI_USER_H
#define OPENAPI_USER_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Access levels of user accounts. */
typedef enum {
  OPEN_LOGIN_ACCESS_NONE = 0,
  OPEN_LOGIN_ACCESS_READ_ONLY = 1,
  OPEN_LOGIN_ACCESS_READ_WRITE = 15
} OPEN_LOGIN_ACCESS_LEVELS_t;

/* Checks a user name and password.
 *   user, password  texts of up to 255 characters
 *   level           the account's access level
 * OPEN_E_FAIL    unknown account, wrong password, or too many failed attempts lately (which of them is not
 *                told; past the limit no password is examined, so the call stays cheap) */
open_error_t rpcclt_openapiAuthenticateUser(openapiClientHandle_t *handle, open_buffdesc *user,
                                            open_buffdesc *password, OPEN_LOGIN_ACCESS_LEVELS_t *level);

#ifdef __cplusplus
}
#endif
#endif
