/* Settings of the SSH server. Setters answer OPEN_E_PARAM for a value out of range and OPEN_E_FAIL when the
 * change cannot be stored. */
#ifndef OPENAPI_SSH_H
#define OPENAPI_SSH_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t OPEN_SSH_PROTO_VERSION_t;
enum { OPEN_SSH_PROTO_1 = 0, OPEN_SSH_PROTO_2 = 1, OPEN_SSH_PROTO_BOTH = 2 };

open_error_t rpcclt_openapiSSHAdminModeGet(openapiClientHandle_t *handle, OPEN_CONTROL_t *mode);
open_error_t rpcclt_openapiSSHAdminModeSet(openapiClientHandle_t *handle, OPEN_CONTROL_t mode);

open_error_t rpcclt_openapiSSHProtocolVersionGet(openapiClientHandle_t *handle,
                                                 OPEN_SSH_PROTO_VERSION_t *version);
open_error_t rpcclt_openapiSSHProtocolVersionSet(openapiClientHandle_t *handle,
                                                 OPEN_SSH_PROTO_VERSION_t version);

/* Sessions that are open now. */
open_error_t rpcclt_openapiSSHActiveSessionsGet(openapiClientHandle_t *handle, uint32_t *sessions);
open_error_t rpcclt_openapiSSHMaxSessionsGet(openapiClientHandle_t *handle, uint32_t *sessions);
/* 0..5; 5 is the default. Sessions that are open already stay. */
open_error_t rpcclt_openapiSSHMaxSessionsSet(openapiClientHandle_t *handle, uint32_t sessions);
open_error_t rpcclt_openapiSSHMaxSessionsDefaultSet(openapiClientHandle_t *handle);

/* Minutes after which an idle session is closed. */
open_error_t rpcclt_openapiSSHSessionTimeoutGet(openapiClientHandle_t *handle, uint32_t *minutes);
/* 1..160; 5 is the default. */
open_error_t rpcclt_openapiSSHSessionTimeoutSet(openapiClientHandle_t *handle, uint32_t minutes);

#ifdef __cplusplus
}
#endif
#endif
