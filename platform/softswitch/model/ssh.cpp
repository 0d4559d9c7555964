/* Settings of the SSH server; see ssh.h. */
#include "platform/softswitch/model/ssh.h"

#include "platform/softswitch/model/switch.h"

namespace softswitch {

void ssh_reset(switch_model &model) {
  *model.ssh.edit() = ssh_table();
}

void ssh_set_server(switch_model &model, bool on) {
  set_member(model, &switch_model::ssh, &ssh_table::server, on);
}

void ssh_set_protocol(switch_model &model, OPEN_SSH_PROTO_VERSION_t version) {
  set_member(model, &switch_model::ssh, &ssh_table::protocol, version);
}

open_error_t ssh_set_sessions_max(switch_model &model, uint32_t sessions) {
  if (sessions > ssh_sessions_max) return OPEN_E_PARAM;
  set_member(model, &switch_model::ssh, &ssh_table::sessions_max, sessions);
  return OPEN_E_NONE;
}

open_error_t ssh_set_timeout(switch_model &model, uint32_t minutes) {
  if (minutes == 0 || minutes > idle_minutes_max) return OPEN_E_PARAM;
  set_member(model, &switch_model::ssh, &ssh_table::timeout, minutes);
  return OPEN_E_NONE;
}

} // namespace softswitch
