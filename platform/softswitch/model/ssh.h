/* Settings of the SSH server. How many sessions are open is no configuration: lab control says it. An
 * operation that finds everything as wanted changes nothing. */
#ifndef KESTREL_SOFTSWITCH_MODEL_SSH_H
#define KESTREL_SOFTSWITCH_MODEL_SSH_H

#include "platform/api/openapi_ssh.h"
#include "platform/softswitch/model/limits.h"

#include <cstdint>

namespace softswitch {

struct switch_model;

struct ssh_table {
  bool server = false;
  OPEN_SSH_PROTO_VERSION_t protocol = OPEN_SSH_PROTO_2;
  uint32_t sessions_max = ssh_sessions_max;
  uint32_t timeout = factory_idle_minutes; /* in minutes */
};

/* Returns everything to factory state. interfaces_reset() notes the change. */
void ssh_reset(switch_model &model);

void ssh_set_server(switch_model &model, bool on);
/* The version is valid. */
void ssh_set_protocol(switch_model &model, OPEN_SSH_PROTO_VERSION_t version);
/* OPEN_E_PARAM: above ssh_sessions_max. */
open_error_t ssh_set_sessions_max(switch_model &model, uint32_t sessions);
/* In minutes. OPEN_E_PARAM: not 1..idle_minutes_max. */
open_error_t ssh_set_timeout(switch_model &model, uint32_t minutes);

} // namespace softswitch

#endif
