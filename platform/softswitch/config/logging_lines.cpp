/* Applying and printing the lines about logging; see logging_lines.h. The rules are those of model/logging.h;
 * here they get their words. */
#include "platform/softswitch/config/logging_lines.h"

#include "platform/softswitch/config/words.h"

namespace softswitch {

static const std::string severity_range = range_words("severity", 0, log_severity_max);
static const std::string port_range = range_words("UDP port", 1, udp_port_max);

/* Says what is wrong with a value that a rule refused; passes the code on. */
static open_error_t explain_range(open_error_t rc, const std::string &range, std::string *error) {
  if (rc == OPEN_E_PARAM) *error = range;
  return rc;
}

/* --- logging cli ---------------------------------------------------------------------------------------- */

open_error_t apply_logging_cli(switch_model &model, std::span<const argument>, std::string *) {
  logging_set_cli(model, true);
  return OPEN_E_NONE;
}

open_error_t apply_no_logging_cli(switch_model &model, std::span<const argument>, std::string *) {
  logging_set_cli(model, false);
  return OPEN_E_NONE;
}

void print_logging_cli(const config_printer &print) {
  if (print.model.logging->cli) print.line({});
}

/* --- logging console ------------------------------------------------------------------------------------ */

open_error_t apply_logging_console(switch_model &model, std::span<const argument>, std::string *) {
  logging_set_console(model, true);
  return OPEN_E_NONE;
}

open_error_t apply_no_logging_console(switch_model &model, std::span<const argument>, std::string *) {
  logging_set_console(model, false);
  return OPEN_E_NONE;
}

void print_no_logging_console(const config_printer &print) {
  if (!print.model.logging->console) print.line({});
}

/* --- logging console severity <number> ------------------------------------------------------------------ */

open_error_t apply_console_severity(switch_model &model, std::span<const argument> arguments,
                                    std::string *error) {
  return explain_range(logging_set_console_severity(model, arguments[0].number), severity_range, error);
}

open_error_t apply_no_console_severity(switch_model &model, std::span<const argument>, std::string *) {
  return logging_set_console_severity(model, console_factory_severity);
}

void print_console_severity(const config_printer &print) {
  uint32_t severity = print.model.logging->console_severity;
  if (severity != console_factory_severity) print.line({severity});
}

/* --- logging syslog ------------------------------------------------------------------------------------- */

open_error_t apply_logging_syslog(switch_model &model, std::span<const argument>, std::string *) {
  logging_set_syslog(model, true);
  return OPEN_E_NONE;
}

open_error_t apply_no_logging_syslog(switch_model &model, std::span<const argument>, std::string *) {
  logging_set_syslog(model, false);
  return OPEN_E_NONE;
}

void print_logging_syslog(const config_printer &print) {
  if (print.model.logging->syslog) print.line({});
}

/* --- logging syslog port <number> ----------------------------------------------------------------------- */

open_error_t apply_syslog_port(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return explain_range(logging_set_syslog_port(model, arguments[0].number), port_range, error);
}

open_error_t apply_no_syslog_port(switch_model &model, std::span<const argument>, std::string *) {
  return logging_set_syslog_port(model, syslog_factory_port);
}

void print_syslog_port(const config_printer &print) {
  uint32_t port = print.model.logging->syslog_port;
  if (port != syslog_factory_port) print.line({port});
}

/* --- logging host <text> -------------------------------------------------------------------------------- */

/* Says why a host was refused; passes the code on. */
static open_error_t explain_host(open_error_t rc, const std::string &address, std::string *error) {
  if (rc == OPEN_E_PARAM) *error = "\"" + address + "\" is neither an IP address nor the name of a host";
  if (rc == OPEN_E_NOT_FOUND) *error = "there is no logging host " + address;
  return rc;
}

/* A host that is there already stays as it is: the line says what shall be, not what shall be done. */
open_error_t apply_logging_host(switch_model &model, std::span<const argument> arguments,
                                std::string *error) {
  open_error_t rc = logging_host_add(model, arguments[0].text);
  if (rc == OPEN_E_EXISTS) return OPEN_E_NONE;
  if (rc == OPEN_E_FULL)
    *error = "there is room for " + std::to_string(model.limits.logging_hosts) + " logging hosts only";
  return explain_host(rc, arguments[0].text, error);
}

open_error_t apply_no_logging_host(switch_model &model, std::span<const argument> arguments,
                                   std::string *error) {
  return explain_host(logging_host_remove(model, arguments[0].text), arguments[0].text, error);
}

void print_logging_hosts(const config_printer &print) {
  for (const auto &[address, host] : print.model.logging->hosts) print.line({std::string_view(address)});
}

/* --- logging host <text> port <number> ------------------------------------------------------------------ */

/* Whether a line may go on to its host's settings. */
static open_error_t check_host(const switch_model &model, const std::string &address, std::string *error) {
  return explain_host(logging_host_check(model, address), address, error);
}

/* The port that means syslog's own cannot be given as a number: the `no` form says that. */
open_error_t apply_host_port(switch_model &model, std::span<const argument> arguments, std::string *error) {
  const std::string &address = arguments[0].text;
  open_error_t rc = check_host(model, address, error);
  if (rc != OPEN_E_NONE) return rc;
  uint32_t port = arguments[1].number;
  rc = port == 0 ? OPEN_E_PARAM : logging_host_set_port(model, address, port);
  return explain_range(rc, port_range, error);
}

open_error_t apply_no_host_port(switch_model &model, std::span<const argument> arguments,
                                std::string *error) {
  return explain_host(logging_host_set_port(model, arguments[0].text, 0), arguments[0].text, error);
}

void print_host_ports(const config_printer &print) {
  for (const auto &[address, host] : print.model.logging->hosts) {
    if (host.port != 0) print.line({std::string_view(address), host.port});
  }
}

/* --- logging host <text> severity <number> -------------------------------------------------------------- */

open_error_t apply_host_severity(switch_model &model, std::span<const argument> arguments,
                                 std::string *error) {
  const std::string &address = arguments[0].text;
  open_error_t rc = check_host(model, address, error);
  if (rc != OPEN_E_NONE) return rc;
  return explain_range(logging_host_set_severity(model, address, arguments[1].number), severity_range, error);
}

open_error_t apply_no_host_severity(switch_model &model, std::span<const argument> arguments,
                                    std::string *error) {
  const std::string &address = arguments[0].text;
  return explain_host(logging_host_set_severity(model, address, logging_host_factory_severity), address,
                      error);
}

void print_host_severities(const config_printer &print) {
  for (const auto &[address, host] : print.model.logging->hosts) {
    if (host.severity != logging_host_factory_severity)
      print.line({std::string_view(address), host.severity});
  }
}

} // namespace softswitch
