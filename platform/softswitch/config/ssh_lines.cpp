/* Applying and printing the lines about the SSH server; see ssh_lines.h. The rules are those of model/ssh.h;
 * here they get their words. */
#include "platform/softswitch/config/ssh_lines.h"

#include "platform/softswitch/config/words.h"

namespace softswitch {

static constexpr ssh_table factory;

/* --- ssh server ----------------------------------------------------------------------------------------- */

open_error_t apply_ssh_server(switch_model &model, std::span<const argument>, std::string *) {
  ssh_set_server(model, true);
  return OPEN_E_NONE;
}

open_error_t apply_no_ssh_server(switch_model &model, std::span<const argument>, std::string *) {
  ssh_set_server(model, false);
  return OPEN_E_NONE;
}

void print_ssh_server(const config_printer &print) {
  if (print.model.ssh->server) print.line({});
}

/* --- ssh protocol 1|2|both ------------------------------------------------------------------------------ */

/* The words are in the order of OPEN_SSH_PROTO_VERSION_t. */
open_error_t apply_ssh_protocol(switch_model &model, std::span<const argument> arguments, std::string *) {
  ssh_set_protocol(model, arguments[0].number);
  return OPEN_E_NONE;
}

open_error_t apply_no_ssh_protocol(switch_model &model, std::span<const argument>, std::string *) {
  ssh_set_protocol(model, factory.protocol);
  return OPEN_E_NONE;
}

void print_ssh_protocol(const config_printer &print) {
  OPEN_SSH_PROTO_VERSION_t version = print.model.ssh->protocol;
  if (version != factory.protocol) print.line({version});
}

/* --- ssh max-sessions <number>, ssh timeout <number> ---------------------------------------------------- */

open_error_t apply_ssh_max_sessions(switch_model &model, std::span<const argument> arguments,
                                    std::string *error) {
  open_error_t rc = ssh_set_sessions_max(model, arguments[0].number);
  if (rc == OPEN_E_PARAM) *error = range_words("number of SSH sessions", 0, ssh_sessions_max);
  return rc;
}

open_error_t apply_no_ssh_max_sessions(switch_model &model, std::span<const argument>, std::string *) {
  return ssh_set_sessions_max(model, factory.sessions_max);
}

void print_ssh_max_sessions(const config_printer &print) {
  uint32_t sessions = print.model.ssh->sessions_max;
  if (sessions != factory.sessions_max) print.line({sessions});
}

open_error_t apply_ssh_timeout(switch_model &model, std::span<const argument> arguments, std::string *error) {
  open_error_t rc = ssh_set_timeout(model, arguments[0].number);
  if (rc == OPEN_E_PARAM) *error = range_words("SSH timeout", 1, idle_minutes_max);
  return rc;
}

open_error_t apply_no_ssh_timeout(switch_model &model, std::span<const argument>, std::string *) {
  return ssh_set_timeout(model, factory.timeout);
}

void print_ssh_timeout(const config_printer &print) {
  uint32_t minutes = print.model.ssh->timeout;
  if (minutes != factory.timeout) print.line({minutes});
}

} // namespace softswitch
