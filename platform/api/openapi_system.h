/* The switch as a whole: versions, identity, readiness, settings, reloading. */
#ifndef OPENAPI_SYSTEM_H
#define OPENAPI_SYSTEM_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The revision of this interface. */
typedef struct {
  uint8_t release;
  uint8_t version;
  uint8_t maint_level;
  uint8_t build_num;
} open_revision_data_t;

/* Texts about the switch. Each fills `text` (give 256 bytes) and answers OPEN_E_PARAM when it does not fit.
 */

/* Version of the switch's operating system. */
open_error_t rpcclt_openapiNetworkOSVersionGet(openapiClientHandle_t *handle, open_buffdesc *text);
/* Where the software is stored. */
open_error_t rpcclt_openapiSwStorageGet(openapiClientHandle_t *handle, open_buffdesc *text);
/* Serial number of the switch. */
open_error_t rpcclt_openapiSwDevInfoSerialNumGet(openapiClientHandle_t *handle, open_buffdesc *text);
/* Burned-in MAC address as text, six groups of two upper-case hexadecimal digits with colons. */
open_error_t rpcclt_openapiBurnedInMacAddrGet(openapiClientHandle_t *handle, open_buffdesc *text);
/* Machine model. */
open_error_t rpcclt_openapiMachineModelNameGet(openapiClientHandle_t *handle, open_buffdesc *text);
/* One-line description of the system. */
open_error_t rpcclt_openapiSystemDescrGet(openapiClientHandle_t *handle, open_buffdesc *text);

/* Revision of this interface. */
open_error_t rpcclt_openapiApiVersionGet(openapiClientHandle_t *handle, open_revision_data_t *revision);

/* Says whether the switch has come up: 1 ready, 0 not yet. */
open_error_t openapiSystemReadyStateGet(openapiClientHandle_t *handle, uint32_t *ready);

/* The largest number of equal-cost routes to one destination. */
open_error_t rpcclt_openapiOspfEqualCostRoutesMax(openapiClientHandle_t *handle, uint32_t *max);

/* --- Settings ------------------------------------------------------------------------------------------- */

/* Setters answer OPEN_E_PARAM for a value out of range and OPEN_E_FAIL when the change cannot be stored. */

/* Bytes of a buffer for the host name, terminator included. */
open_error_t rpcclt_openapiSystemHostnameSizeGet(openapiClientHandle_t *handle, uint32_t *size);
open_error_t rpcclt_openapiSystemHostnameGet(openapiClientHandle_t *handle, open_buffdesc *name);
/* 1..64 characters of A-Z, a-z, 0-9, "-", "_" and ".", the first a letter or digit. */
open_error_t rpcclt_openapiSystemHostnameSet(openapiClientHandle_t *handle, open_buffdesc *name);

/* The prompt of the command line: 1..64 printable ASCII characters. */
open_error_t rpcclt_openapiSystemPromptSet(openapiClientHandle_t *handle, open_buffdesc *prompt);

/* Minutes after which an idle session on the serial console is closed; 0 = never. */
open_error_t rpcclt_openapiSerialTimeoutGet(openapiClientHandle_t *handle, uint32_t *minutes);
/* 0..160; 5 is the default. */
open_error_t rpcclt_openapiSerialTimeoutSet(openapiClientHandle_t *handle, uint32_t minutes);
open_error_t rpcclt_openapiSerialTimeoutDefaultSet(openapiClientHandle_t *handle);

open_error_t rpcclt_openapiTelnetServerAdminModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode);
open_error_t rpcclt_openapiTelnetServerAdminModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode);

/* Network mask of the service port, an IPv4 address. */
open_error_t rpcclt_openapiServicePortMaskGet(openapiClientHandle_t *handle, open_inet_addr_t *mask);

/* --- The network port ----------------------------------------------------------------------------------- */

/* The port by which the switch itself is managed in-band. How it gets its address: */
typedef uint32_t OPEN_NETWORK_PROTOCOL_t;
enum {
  OPEN_NETWORK_PROTOCOL_INVALID = 0,
  OPEN_NETWORK_PROTOCOL_NONE = 1, /* as set here */
  OPEN_NETWORK_PROTOCOL_BOOTP = 2,
  OPEN_NETWORK_PROTOCOL_DHCP = 3
};

/* IPv4; 0.0.0.0 where there is none. */
open_error_t rpcclt_openapiNetworkPortIPv4AddrGet(openapiClientHandle_t *handle, open_inet_addr_t *address,
                                                  open_inet_addr_t *mask);
open_error_t rpcclt_openapiNetworkPortGatewayIPv4AddrGet(openapiClientHandle_t *handle,
                                                         open_inet_addr_t *gateway);
/* OPEN_E_PARAM also: no host's IPv4 address, no contiguous mask of 1..31 bits, a gateway that is neither
 * 0.0.0.0 nor a host's address in the same network. OPEN_E_FAIL also: the address is obtained by a protocol.
 */
open_error_t rpcclt_openapiNetworkPortIPv4ParametersSet(openapiClientHandle_t *handle,
                                                        const open_inet_addr_t *address,
                                                        const open_inet_addr_t *mask,
                                                        const open_inet_addr_t *gateway);
open_error_t rpcclt_openapiNetworkPortIPv4ParametersDelete(openapiClientHandle_t *handle);
open_error_t rpcclt_openapiNetworkPortIPv4ProtocolModeGet(openapiClientHandle_t *handle,
                                                          OPEN_NETWORK_PROTOCOL_t *mode);
/* 1..3. A protocol takes the place of the address that was set. */
open_error_t rpcclt_openapiNetworkPortIPv4ProtocolModeSet(openapiClientHandle_t *handle,
                                                          OPEN_NETWORK_PROTOCOL_t mode);

/* --- Reloading ------------------------------------------------------------------------------------------ */

/* What a reload does. The program that serves the interface goes on; the switch is not ready for a moment. */
enum {
  OPEN_RELOAD = 1,        /* begin anew with the startup configuration, or factory state without one */
  OPEN_RELOAD_WARM = 2,   /* begin anew with the running configuration */
  OPEN_RELOAD_FACTORY = 3 /* begin anew in factory state; configurations, scripts and images are removed */
};

/* Lets the switch reload, a moment after the call has returned. A transfer that is in progress is cancelled.
 *   mode   OPEN_RELOAD*
 * OPEN_E_PARAM   another mode
 * OPEN_E_ERROR   the reload cannot be started */
open_error_t rpcclt_openapiSystemReloadSet(openapiClientHandle_t *handle, uint32_t mode);

/* Whether a reload would lose something: OPEN_TRUE when the running configuration is not what the startup
 * configuration gives. */
open_error_t rpcclt_openapiSystemUnsavedConfigStatusGet(openapiClientHandle_t *handle, OPEN_BOOL_t *unsaved);

#ifdef __cplusplus
}
#endif
#endif
