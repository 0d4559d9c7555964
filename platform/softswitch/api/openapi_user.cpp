/* Authentication; the contract is in platform/api/openapi_user.h. */
#include "platform/api/openapi_user.h"

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/services/accounts.h"

#include <time.h>

using namespace softswitch;

/* Names and passwords are at most this long; what is longer is nobody's, without a look. */
static constexpr size_t credential_max = 255;

static open_error_t authenticate(std::string_view user, std::string_view password,
                                 OPEN_LOGIN_ACCESS_LEVELS_t *level) {
  if (user.size() > credential_max || password.size() > credential_max) return OPEN_E_FAIL;
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  int found;
  if (!accounts_check(user, password, now.tv_sec, &found)) return OPEN_E_FAIL;
  *level = static_cast<OPEN_LOGIN_ACCESS_LEVELS_t>(found);
  return OPEN_E_NONE;
}

/* Hashing takes long, so the model stays free meanwhile. */
open_error_t rpcclt_openapiAuthenticateUser(openapiClientHandle_t *handle, open_buffdesc *user,
                                            open_buffdesc *password, OPEN_LOGIN_ACCESS_LEVELS_t *level) {
  return api_call_unlocked(__func__, handle, {text_in(user), secret(password), output(level)},
                           [&] { return authenticate(text_of(*user), text_of(*password), level); });
}
