/* The spine of the engine: start-up, the server's event handler, authorisation and the choice of the module.
 */
#ifndef KESTREL_ENGINE_REST_WEB_REQUEST_HDR_H
#define KESTREL_ENGINE_REST_WEB_REQUEST_HDR_H

#include "engine/rest_common.h"

/* The platform client handle, filled at start-up and passed to every module. */
extern openapiClientHandle_t client_handle;
/* Set at MG_AUTH, read at MG_REQUEST of the same request: 1 = no valid session, 0 = may proceed. */
extern int32_t auth_pass;

/* Registers with the platform, waits for its configuration service and makes the server listen. Null when the
 * platform refuses the registration; the reason is then on standard output and the program is to exit with 2.
 */
mg_server *start_engine(void);

/* The server's event handler. */
int evt_handler(mg_connection *conn, enum mg_event ev);
/* MG_AUTH: sweeps expired sessions and sets auth_pass. Always 1. */
int auth_session(mg_connection *conn);
/* MG_REQUEST: answers the request through the module that its URI names. Always 1. */
int api_access_handler(mg_connection *conn);

#endif
