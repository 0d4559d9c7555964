/* The scripted platform's functions of the system, logging, SSH and processes: see scripted_platform.h. */
#include "platform/api/openapi_logging.h"
#include "platform/api/openapi_proc.h"
#include "platform/api/openapi_ssh.h"
#include "platform/api/openapi_system.h"
#include "tests/unit/modules/management/scripted_call.h"
#include "tests/unit/modules/management/scripted_platform.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

/* --- The system ---------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiSystemHostnameSizeGet(openapiClientHandle_t *handle, uint32_t *size) {
  return scripted_call(handle, __func__).put(size).result();
}

open_error_t rpcclt_openapiSystemHostnameGet(openapiClientHandle_t *handle, open_buffdesc *name) {
  return scripted_call(handle, __func__).put(name).result();
}

open_error_t rpcclt_openapiSystemHostnameSet(openapiClientHandle_t *handle, open_buffdesc *name) {
  return scripted_call(handle, __func__, name).result();
}

open_error_t rpcclt_openapiSystemPromptSet(openapiClientHandle_t *handle, open_buffdesc *prompt) {
  return scripted_call(handle, __func__, prompt).result();
}

open_error_t rpcclt_openapiSerialTimeoutGet(openapiClientHandle_t *handle, uint32_t *minutes) {
  return scripted_call(handle, __func__).put(minutes).result();
}

open_error_t rpcclt_openapiSerialTimeoutSet(openapiClientHandle_t *handle, uint32_t minutes) {
  return scripted_call(handle, __func__, minutes).result();
}

open_error_t rpcclt_openapiSerialTimeoutDefaultSet(openapiClientHandle_t *handle) {
  return scripted_call(handle, __func__).result();
}

open_error_t rpcclt_openapiTelnetServerAdminModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode) {
  return scripted_call(handle, __func__).put(mode).result();
}

open_error_t rpcclt_openapiTelnetServerAdminModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode) {
  return scripted_call(handle, __func__, mode).result();
}

open_error_t rpcclt_openapiServicePortMaskGet(openapiClientHandle_t *handle, open_inet_addr_t *mask) {
  return scripted_call(handle, __func__).put(mask).result();
}

open_error_t rpcclt_openapiNetworkPortIPv4AddrGet(openapiClientHandle_t *handle, open_inet_addr_t *address,
                                                  open_inet_addr_t *mask) {
  return scripted_call(handle, __func__).put(address, "address").put(mask, "mask").result();
}

open_error_t rpcclt_openapiNetworkPortGatewayIPv4AddrGet(openapiClientHandle_t *handle,
                                                         open_inet_addr_t *gateway) {
  return scripted_call(handle, __func__).put(gateway).result();
}

open_error_t rpcclt_openapiNetworkPortIPv4ParametersSet(openapiClientHandle_t *handle,
                                                        const open_inet_addr_t *address,
                                                        const open_inet_addr_t *mask,
                                                        const open_inet_addr_t *gateway) {
  return scripted_call(handle, __func__, address, mask, gateway).result();
}

open_error_t rpcclt_openapiNetworkPortIPv4ParametersDelete(openapiClientHandle_t *handle) {
  return scripted_call(handle, __func__).result();
}

open_error_t rpcclt_openapiNetworkPortIPv4ProtocolModeGet(openapiClientHandle_t *handle,
                                                          OPEN_NETWORK_PROTOCOL_t *mode) {
  return scripted_call(handle, __func__).put(mode).result();
}

open_error_t rpcclt_openapiNetworkPortIPv4ProtocolModeSet(openapiClientHandle_t *handle,
                                                          OPEN_NETWORK_PROTOCOL_t mode) {
  return scripted_call(handle, __func__, mode).result();
}

open_error_t rpcclt_openapiSystemReloadSet(openapiClientHandle_t *handle, uint32_t mode) {
  return scripted_call(handle, __func__, mode).result();
}

/* Takes IPv4 alone; any other text is no address. */
open_error_t rpcclt_openapiInetAddrGet(openapiClientHandle_t *handle, open_buffdesc *text,
                                       open_inet_addr_t *addr) {
  in_addr address;
  EXPECT_EQ(handle, scripted_handle());
  if (inet_pton(AF_INET, static_cast<const char *>(text->pstart), &address) != 1) return OPEN_E_FAIL;
  *addr = {OPEN_AF_INET, {ntohl(address.s_addr)}};
  return OPEN_E_NONE;
}

/* --- Logging ------------------------------------------------------------------------------------------- */

/* Reads all bytes that the module says are there. */
static open_buffdesc *whole(open_buffdesc *text) {
  volatile char sum = 0;
  for (uint32_t i = 0; i < text->size; i++)
    sum = static_cast<char>(sum + static_cast<char *>(text->pstart)[i]);
  return text;
}

open_error_t rpcclt_openapiCliCmdLoggingModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode) {
  return scripted_call(handle, __func__).put(mode).result();
}

open_error_t rpcclt_openapiCliCmdLoggingModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode) {
  return scripted_call(handle, __func__, mode).result();
}

open_error_t rpcclt_openapiConsoleLoggingModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode) {
  return scripted_call(handle, __func__).put(mode).result();
}

open_error_t rpcclt_openapiConsoleLoggingModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode) {
  return scripted_call(handle, __func__, mode).result();
}

open_error_t rpcclt_openapiConsoleLoggingSeverityGet(openapiClientHandle_t *handle,
                                                     OPEN_LOG_SEVERITY_t *severity) {
  return scripted_call(handle, __func__).put(severity).result();
}

open_error_t rpcclt_openapiConsoleLoggingSeveritySet(openapiClientHandle_t *handle,
                                                     OPEN_LOG_SEVERITY_t severity) {
  return scripted_call(handle, __func__, severity).result();
}

open_error_t rpcclt_openapiSysLogModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode) {
  return scripted_call(handle, __func__).put(mode).result();
}

open_error_t rpcclt_openapiSysLogModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode) {
  return scripted_call(handle, __func__, mode).result();
}

open_error_t rpcclt_openapiSysLogPortGet(openapiClientHandle_t *handle, uint32_t *port) {
  return scripted_call(handle, __func__).put(port).result();
}

open_error_t rpcclt_openapiSysLogPortSet(openapiClientHandle_t *handle, uint32_t port) {
  return scripted_call(handle, __func__, port).result();
}

open_error_t rpcclt_openapiMaxLoggingHostsSupportedGet(openapiClientHandle_t *handle, uint32_t *max) {
  return scripted_call(handle, __func__).put(max).result();
}

open_error_t rpcclt_openapiLoggingHostMaxAddrLenGet(openapiClientHandle_t *handle, uint32_t *length) {
  return scripted_call(handle, __func__).put(length).result();
}

open_error_t rpcclt_openapiLoggingHostAdd(openapiClientHandle_t *handle, open_buffdesc *address) {
  return scripted_call(handle, __func__, whole(address)).result();
}

open_error_t rpcclt_openapiLoggingHostRemove(openapiClientHandle_t *handle, open_buffdesc *address) {
  return scripted_call(handle, __func__, whole(address)).result();
}

open_error_t rpcclt_openapiLoggingHostIpAddrNextGet(openapiClientHandle_t *handle, open_buffdesc *address) {
  return scripted_call(handle, __func__, whole(address)).put(address).result();
}

open_error_t rpcclt_openapiLoggingHostPortGet(openapiClientHandle_t *handle, open_buffdesc *address,
                                              uint32_t *port) {
  return scripted_call(handle, __func__, whole(address)).put(port).result();
}

open_error_t rpcclt_openapiLoggingHostPortSet(openapiClientHandle_t *handle, open_buffdesc *address,
                                              uint32_t port) {
  return scripted_call(handle, __func__, whole(address), port).result();
}

open_error_t rpcclt_openapiLoggingHostSeverityGet(openapiClientHandle_t *handle, open_buffdesc *address,
                                                  OPEN_LOG_SEVERITY_t *severity) {
  return scripted_call(handle, __func__, whole(address)).put(severity).result();
}

open_error_t rpcclt_openapiLoggingHostSeveritySet(openapiClientHandle_t *handle, open_buffdesc *address,
                                                  OPEN_LOG_SEVERITY_t severity) {
  return scripted_call(handle, __func__, whole(address), severity).result();
}

/* --- SSH ----------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiSSHAdminModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode) {
  return scripted_call(handle, __func__).put(mode).result();
}

open_error_t rpcclt_openapiSSHAdminModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode) {
  return scripted_call(handle, __func__, mode).result();
}

open_error_t rpcclt_openapiSSHProtocolVersionGet(openapiClientHandle_t *handle,
                                                 OPEN_SSH_PROTO_VERSION_t *version) {
  return scripted_call(handle, __func__).put(version).result();
}

open_error_t rpcclt_openapiSSHProtocolVersionSet(openapiClientHandle_t *handle,
                                                 OPEN_SSH_PROTO_VERSION_t version) {
  return scripted_call(handle, __func__, version).result();
}

open_error_t rpcclt_openapiSSHActiveSessionsGet(openapiClientHandle_t *handle, uint32_t *sessions) {
  return scripted_call(handle, __func__).put(sessions).result();
}

open_error_t rpcclt_openapiSSHMaxSessionsGet(openapiClientHandle_t *handle, uint32_t *sessions) {
  return scripted_call(handle, __func__).put(sessions).result();
}

open_error_t rpcclt_openapiSSHMaxSessionsSet(openapiClientHandle_t *handle, uint32_t sessions) {
  return scripted_call(handle, __func__, sessions).result();
}

open_error_t rpcclt_openapiSSHMaxSessionsDefaultSet(openapiClientHandle_t *handle) {
  return scripted_call(handle, __func__).result();
}

open_error_t rpcclt_openapiSSHSessionTimeoutGet(openapiClientHandle_t *handle, uint32_t *minutes) {
  return scripted_call(handle, __func__).put(minutes).result();
}

open_error_t rpcclt_openapiSSHSessionTimeoutSet(openapiClientHandle_t *handle, uint32_t minutes) {
  return scripted_call(handle, __func__, minutes).result();
}

/* --- Processes ----------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiProcMemInfoGet(openapiClientHandle_t *handle, uint32_t *total, uint32_t *alloc,
                                          uint32_t *free) {
  return scripted_call(handle, __func__).put(total, "total").put(alloc, "alloc").put(free, "free").result();
}

open_error_t rpcclt_openapiProcTotalCpuUtilGet(openapiClientHandle_t *handle, uint32_t *periods,
                                               open_buffdesc *text) {
  return scripted_call(handle, __func__).expect_zeroed(text).put(periods, "periods").put(text).result();
}

open_error_t rpcclt_openapiProcTaskCpuUtilGet(openapiClientHandle_t *handle, uint32_t *count,
                                              open_buffdesc *text) {
  return scripted_call(handle, __func__).expect_zeroed(text).put(count, "count").put(text).result();
}
