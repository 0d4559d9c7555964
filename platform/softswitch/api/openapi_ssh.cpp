/* The SSH server's settings; the contracts are in platform/api/openapi_ssh.h. Setters come down to a line of
 * the configuration language. */
#include "platform/api/openapi_ssh.h"

#include "platform/softswitch/api/call.h"

using namespace softswitch;

static open_error_t get_setting(const char *function, openapiClientHandle_t *handle,
                                uint32_t ssh_table::*setting, uint32_t *value) {
  return api_call(function, handle, {value}, [&](switch_model &model) {
    *value = (*model.ssh).*setting;
    return OPEN_E_NONE;
  });
}

/* Sets what a line with one number says. */
static open_error_t set_number(const char *function, openapiClientHandle_t *handle, const char *pattern,
                               uint32_t value) {
  return api_call(function, handle, {value},
                  [&](switch_model &model) { return commit(model, pattern, {value}); });
}

open_error_t rpcclt_openapiSSHAdminModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode) {
  return api_call(__func__, handle, {mode}, [&](switch_model &model) {
    *mode = model.ssh->server;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiSSHAdminModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode) {
  return api_call(__func__, handle, {mode}, [&](switch_model &model) {
    if (mode > OPEN_ENABLE) return OPEN_E_PARAM;
    return commit(model, mode == OPEN_ENABLE ? "ssh server" : "no ssh server", {});
  });
}

open_error_t rpcclt_openapiSSHProtocolVersionGet(openapiClientHandle_t *handle,
                                                 OPEN_SSH_PROTO_VERSION_t *version) {
  return get_setting(__func__, handle, &ssh_table::protocol, version);
}

open_error_t rpcclt_openapiSSHProtocolVersionSet(openapiClientHandle_t *handle,
                                                 OPEN_SSH_PROTO_VERSION_t version) {
  return api_call(__func__, handle, {version}, [&](switch_model &model) {
    if (version > OPEN_SSH_PROTO_BOTH) return OPEN_E_PARAM;
    return commit(model, "ssh protocol 1|2|both", {version});
  });
}

open_error_t rpcclt_openapiSSHActiveSessionsGet(openapiClientHandle_t *handle, uint32_t *sessions) {
  return api_call(__func__, handle, {sessions}, [&](switch_model &model) {
    *sessions = model.ssh_sessions;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiSSHMaxSessionsGet(openapiClientHandle_t *handle, uint32_t *sessions) {
  return get_setting(__func__, handle, &ssh_table::sessions_max, sessions);
}

open_error_t rpcclt_openapiSSHMaxSessionsSet(openapiClientHandle_t *handle, uint32_t sessions) {
  return set_number(__func__, handle, "ssh max-sessions <number>", sessions);
}

open_error_t rpcclt_openapiSSHMaxSessionsDefaultSet(openapiClientHandle_t *handle) {
  return api_call(__func__, handle, {},
                  [](switch_model &model) { return commit(model, "no ssh max-sessions", {}); });
}

open_error_t rpcclt_openapiSSHSessionTimeoutGet(openapiClientHandle_t *handle, uint32_t *minutes) {
  return get_setting(__func__, handle, &ssh_table::timeout, minutes);
}

open_error_t rpcclt_openapiSSHSessionTimeoutSet(openapiClientHandle_t *handle, uint32_t minutes) {
  return set_number(__func__, handle, "ssh timeout <number>", minutes);
}
