/* Logging: of the lines of scripts ("CLI commands"), to the console, and to remote hosts by syslog (RFC 5424
 * over UDP, RFC 5426). Severities are those of RFC 5424: 0 emergency .. 7 debug; a line goes where the
 * threshold is its severity or a larger number.
 *
 * Modes are OPEN_CONTROL_t. Setters answer OPEN_E_PARAM for a value out of range and OPEN_E_FAIL when the
 * change cannot be stored. */
#ifndef OPENAPI_LOGGING_H
#define OPENAPI_LOGGING_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t OPEN_LOG_SEVERITY_t;
enum {
  OPEN_LOG_SEVERITY_UNDEFINED = -1, /* of a host that has none */
  OPEN_LOG_SEVERITY_EMERGENCY = 0,
  OPEN_LOG_SEVERITY_ALERT = 1,
  OPEN_LOG_SEVERITY_CRITICAL = 2,
  OPEN_LOG_SEVERITY_ERROR = 3,
  OPEN_LOG_SEVERITY_WARNING = 4,
  OPEN_LOG_SEVERITY_NOTICE = 5,
  OPEN_LOG_SEVERITY_INFO = 6,
  OPEN_LOG_SEVERITY_DEBUG = 7
};

/* --- The lines of scripts ------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiCliCmdLoggingModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode);
open_error_t rpcclt_openapiCliCmdLoggingModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode);

/* --- The console ---------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiConsoleLoggingModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode);
open_error_t rpcclt_openapiConsoleLoggingModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode);
open_error_t rpcclt_openapiConsoleLoggingSeverityGet(openapiClientHandle_t *handle,
                                                     OPEN_LOG_SEVERITY_t *severity);
/* 0..7 */
open_error_t rpcclt_openapiConsoleLoggingSeveritySet(openapiClientHandle_t *handle,
                                                     OPEN_LOG_SEVERITY_t severity);

/* --- Syslog --------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiSysLogModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode);
open_error_t rpcclt_openapiSysLogModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode);
/* The UDP port of the hosts that have none of their own. */
open_error_t rpcclt_openapiSysLogPortGet(openapiClientHandle_t *handle, uint32_t *port);
/* 1..65535; 0 brings the default, 514, back. */
open_error_t rpcclt_openapiSysLogPortSet(openapiClientHandle_t *handle, uint32_t port);

/* --- Remote hosts --------------------------------------------------------------------------------------- */

/* A host is known by its address as it was given: an IPv4 or IPv6 address or a host name (RFC 1123, at most
 * 253 characters). Names are not looked up by any of these calls. Two texts of one address are two hosts.
 * OPEN_E_PARAM: the text is no such address. OPEN_E_NOT_FOUND: there is no such host. */
open_error_t rpcclt_openapiMaxLoggingHostsSupportedGet(openapiClientHandle_t *handle, uint32_t *max);
/* Bytes of a buffer for any host's address, terminator included. */
open_error_t rpcclt_openapiLoggingHostMaxAddrLenGet(openapiClientHandle_t *handle, uint32_t *length);
/* OPEN_E_EXISTS   the host is there already
 * OPEN_E_FULL     there is no room for another */
open_error_t rpcclt_openapiLoggingHostAdd(openapiClientHandle_t *handle, open_buffdesc *address);
open_error_t rpcclt_openapiLoggingHostRemove(openapiClientHandle_t *handle, open_buffdesc *address);
/* The host that comes after `address` in the order of the texts, which need not be there; an empty text comes
 * before all. In and out; on the way out `size` must be that of the whole buffer.
 * OPEN_E_FAIL     there is none */
open_error_t rpcclt_openapiLoggingHostIpAddrNextGet(openapiClientHandle_t *handle, open_buffdesc *address);
/* The port that is sent to: the host's own, else that of syslog. */
open_error_t rpcclt_openapiLoggingHostPortGet(openapiClientHandle_t *handle, open_buffdesc *address,
                                              uint32_t *port);
/* 1..65535; 0 lets the host follow the port of syslog. */
open_error_t rpcclt_openapiLoggingHostPortSet(openapiClientHandle_t *handle, open_buffdesc *address,
                                              uint32_t port);
open_error_t rpcclt_openapiLoggingHostSeverityGet(openapiClientHandle_t *handle, open_buffdesc *address,
                                                  OPEN_LOG_SEVERITY_t *severity);
/* 0..7 */
open_error_t rpcclt_openapiLoggingHostSeveritySet(openapiClientHandle_t *handle, open_buffdesc *address,
                                                  OPEN_LOG_SEVERITY_t severity);

#ifdef __cplusplus
}
#endif
#endif
