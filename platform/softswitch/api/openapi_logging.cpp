/* Logging; the contracts are in platform/api/openapi_logging.h. Setters come down to a line of the
 * configuration language, which is what the journal keeps. */
#include "platform/api/openapi_logging.h"

#include "platform/softswitch/api/call.h"

using namespace softswitch;

/* --- Modes ---------------------------------------------------------------------------------------------- */

static open_error_t get_mode(const char *function, openapiClientHandle_t *handle, bool logging_table::*mode,
                             OPEN_CONTROL_t *into) {
  return api_call(function, handle, {into}, [&](switch_model &model) {
    *into = (*model.logging).*mode ? OPEN_ENABLE : OPEN_DISABLE;
    return OPEN_E_NONE;
  });
}

static open_error_t set_mode(const char *function, openapiClientHandle_t *handle, OPEN_CONTROL_t mode,
                             std::string_view enable, std::string_view disable) {
  return api_call(function, handle, {mode}, [&](switch_model &model) {
    if (mode > OPEN_ENABLE) return OPEN_E_PARAM;
    return commit(model, mode == OPEN_ENABLE ? enable : disable, {});
  });
}

open_error_t rpcclt_openapiCliCmdLoggingModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode) {
  return get_mode(__func__, handle, &logging_table::cli, mode);
}

open_error_t rpcclt_openapiCliCmdLoggingModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode) {
  return set_mode(__func__, handle, mode, "logging cli", "no logging cli");
}

open_error_t rpcclt_openapiConsoleLoggingModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode) {
  return get_mode(__func__, handle, &logging_table::console, mode);
}

open_error_t rpcclt_openapiConsoleLoggingModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode) {
  return set_mode(__func__, handle, mode, "logging console", "no logging console");
}

open_error_t rpcclt_openapiSysLogModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode) {
  return get_mode(__func__, handle, &logging_table::syslog, mode);
}

open_error_t rpcclt_openapiSysLogModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode) {
  return set_mode(__func__, handle, mode, "logging syslog", "no logging syslog");
}

/* --- Severity and port ---------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiConsoleLoggingSeverityGet(openapiClientHandle_t *handle,
                                                     OPEN_LOG_SEVERITY_t *severity) {
  return api_call(__func__, handle, {output(severity)}, [&](switch_model &model) {
    *severity = static_cast<OPEN_LOG_SEVERITY_t>(model.logging->console_severity);
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiConsoleLoggingSeveritySet(openapiClientHandle_t *handle,
                                                     OPEN_LOG_SEVERITY_t severity) {
  uint32_t number = static_cast<uint32_t>(severity);
  return api_call(__func__, handle, {number}, [&](switch_model &model) {
    return commit(model, "logging console severity <number>", {number});
  });
}

open_error_t rpcclt_openapiSysLogPortGet(openapiClientHandle_t *handle, uint32_t *port) {
  return api_call(__func__, handle, {port}, [&](switch_model &model) {
    *port = model.logging->syslog_port;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiSysLogPortSet(openapiClientHandle_t *handle, uint32_t port) {
  return api_call(__func__, handle, {port}, [&](switch_model &model) {
    return commit(model, port == 0 ? "no logging syslog port" : "logging syslog port <number>", {port});
  });
}

/* --- Hosts ---------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiMaxLoggingHostsSupportedGet(openapiClientHandle_t *handle, uint32_t *max) {
  return api_call(__func__, handle, {max}, [&](switch_model &model) {
    *max = model.limits.logging_hosts;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiLoggingHostMaxAddrLenGet(openapiClientHandle_t *handle, uint32_t *length) {
  return api_call_unlocked(__func__, handle, {length}, [&] {
    *length = logging_address_size;
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiLoggingHostAdd(openapiClientHandle_t *handle, open_buffdesc *address) {
  return api_call(__func__, handle, {text_in(address)}, [&](switch_model &model) {
    /* For the line one that exists is as wanted; who adds wants to hear of it. */
    open_error_t rc = logging_host_check(model, text_of(*address));
    if (rc == OPEN_E_PARAM) return rc;
    return rc == OPEN_E_NONE ? OPEN_E_EXISTS : commit(model, "logging host <text>", {text_of(*address)});
  });
}

/* A change of a host that must be there, by a line that begins with its address. */
static open_error_t change_host(switch_model &model, const open_buffdesc &address, std::string_view pattern,
                                uint32_t value = 0) {
  open_error_t rc = logging_host_check(model, text_of(address));
  return rc == OPEN_E_NONE ? commit(model, pattern, {text_of(address), value}) : rc;
}

open_error_t rpcclt_openapiLoggingHostRemove(openapiClientHandle_t *handle, open_buffdesc *address) {
  return api_call(__func__, handle, {text_in(address)}, [&](switch_model &model) {
    return change_host(model, *address, "no logging host <text>");
  });
}

open_error_t rpcclt_openapiLoggingHostIpAddrNextGet(openapiClientHandle_t *handle, open_buffdesc *address) {
  return api_call(__func__, handle, {text_out(address)}, [&](switch_model &model) {
    const auto &hosts = model.logging->hosts;
    auto next = hosts.upper_bound(text_of(*address));
    return next == hosts.end() ? OPEN_E_FAIL : fill_text(address, next->first);
  });
}

open_error_t rpcclt_openapiLoggingHostPortGet(openapiClientHandle_t *handle, open_buffdesc *address,
                                              uint32_t *port) {
  return api_call(__func__, handle, {text_in(address), port}, [&](switch_model &model) {
    open_error_t rc = logging_host_check(model, text_of(*address));
    if (rc != OPEN_E_NONE) return rc;
    *port = logging_host_port(*model.logging, model.logging->hosts.find(text_of(*address))->second);
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiLoggingHostPortSet(openapiClientHandle_t *handle, open_buffdesc *address,
                                              uint32_t port) {
  return api_call(__func__, handle, {text_in(address), port}, [&](switch_model &model) {
    return change_host(model, *address,
                       port == 0 ? "no logging host <text> port" : "logging host <text> port <number>", port);
  });
}

open_error_t rpcclt_openapiLoggingHostSeverityGet(openapiClientHandle_t *handle, open_buffdesc *address,
                                                  OPEN_LOG_SEVERITY_t *severity) {
  return api_call(__func__, handle, {text_in(address), output(severity)}, [&](switch_model &model) {
    open_error_t rc = logging_host_check(model, text_of(*address));
    if (rc != OPEN_E_NONE) return rc;
    const logging_host &host = model.logging->hosts.find(text_of(*address))->second;
    *severity = static_cast<OPEN_LOG_SEVERITY_t>(host.severity);
    return OPEN_E_NONE;
  });
}

open_error_t rpcclt_openapiLoggingHostSeveritySet(openapiClientHandle_t *handle, open_buffdesc *address,
                                                  OPEN_LOG_SEVERITY_t severity) {
  uint32_t number = static_cast<uint32_t>(severity);
  return api_call(__func__, handle, {text_in(address), number}, [&](switch_model &model) {
    return change_host(model, *address, "logging host <text> severity <number>", number);
  });
}
