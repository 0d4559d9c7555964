/* Logging; see logging.h. */
#include "platform/softswitch/model/logging.h"

#include "platform/softswitch/model/inet_address.h"
#include "platform/softswitch/model/switch.h"

#include <algorithm>

namespace softswitch {

void logging_reset(switch_model &model) {
  *model.logging.edit() = logging_table();
}

/* --- Modes and thresholds ------------------------------------------------------------------------------- */

void logging_set_cli(switch_model &model, bool on) {
  set_member(model, &switch_model::logging, &logging_table::cli, on);
}

void logging_set_console(switch_model &model, bool on) {
  set_member(model, &switch_model::logging, &logging_table::console, on);
}

open_error_t logging_set_console_severity(switch_model &model, uint32_t severity) {
  if (severity > log_severity_max) return OPEN_E_PARAM;
  set_member(model, &switch_model::logging, &logging_table::console_severity, severity);
  return OPEN_E_NONE;
}

void logging_set_syslog(switch_model &model, bool on) {
  set_member(model, &switch_model::logging, &logging_table::syslog, on);
}

open_error_t logging_set_syslog_port(switch_model &model, uint32_t port) {
  if (port == 0 || port > udp_port_max) return OPEN_E_PARAM;
  set_member(model, &switch_model::logging, &logging_table::syslog_port, port);
  return OPEN_E_NONE;
}

/* --- Addresses ------------------------------------------------------------------------------------------ */

static bool is_digit(char byte) {
  return byte >= '0' && byte <= '9';
}

static bool is_hex_digit(char byte) {
  return is_digit(byte) || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
}

static bool is_label_character(char byte) {
  return is_digit(byte) || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '-';
}

static bool is_label(std::string_view text) {
  return !text.empty() && text.size() <= host_label_max && text.front() != '-' && text.back() != '-' &&
         std::all_of(text.begin(), text.end(), is_label_character);
}

/* Whether a label is a number as inet_aton(3) reads one: "10", "0x0a". */
static bool is_number(std::string_view label) {
  bool hexadecimal = label.starts_with("0x") || label.starts_with("0X");
  if (hexadecimal) label.remove_prefix(2);
  return std::all_of(label.begin(), label.end(), hexadecimal ? is_hex_digit : is_digit);
}

static bool is_host_name(std::string_view name) {
  if (name.size() > host_name_max) return false;
  for (;;) {
    size_t dot = name.find('.');
    if (!is_label(name.substr(0, dot))) return false;
    if (dot == std::string_view::npos) return !is_number(name);
    name.remove_prefix(dot + 1);
  }
}

bool logging_address_valid(std::string_view address) {
  open_inet_addr_t literal;
  return inet_address_read(std::string(address), &literal) || is_host_name(address);
}

/* --- Hosts ---------------------------------------------------------------------------------------------- */

/* The table for changing, the change noted. */
static logging_table *edit(switch_model &model) {
  next_change(model);
  return model.logging.edit();
}

open_error_t logging_host_check(const switch_model &model, std::string_view address) {
  if (!logging_address_valid(address)) return OPEN_E_PARAM;
  return model.logging->hosts.contains(address) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
}

open_error_t logging_host_add(switch_model &model, std::string_view address) {
  open_error_t rc = logging_host_check(model, address);
  if (rc == OPEN_E_PARAM) return rc;
  if (rc == OPEN_E_NONE) return OPEN_E_EXISTS;
  if (model.logging->hosts.size() >= model.limits.logging_hosts) return OPEN_E_FULL;
  edit(model)->hosts.emplace(address, logging_host());
  return OPEN_E_NONE;
}

open_error_t logging_host_remove(switch_model &model, std::string_view address) {
  open_error_t rc = logging_host_check(model, address);
  if (rc == OPEN_E_NONE) edit(model)->hosts.erase(std::string(address));
  return rc;
}

/* Gives a setting of a host a value that is not above `max`. */
static open_error_t set_host(switch_model &model, std::string_view address, uint32_t logging_host::*setting,
                             uint32_t value, uint32_t max) {
  open_error_t rc = logging_host_check(model, address);
  if (rc != OPEN_E_NONE) return rc;
  if (value > max) return OPEN_E_PARAM;
  if (model.logging->hosts.find(address)->second.*setting != value)
    edit(model)->hosts.find(address)->second.*setting = value;
  return OPEN_E_NONE;
}

open_error_t logging_host_set_port(switch_model &model, std::string_view address, uint32_t port) {
  return set_host(model, address, &logging_host::port, port, udp_port_max);
}

open_error_t logging_host_set_severity(switch_model &model, std::string_view address, uint32_t severity) {
  return set_host(model, address, &logging_host::severity, severity, log_severity_max);
}

uint32_t logging_host_port(const logging_table &table, const logging_host &host) {
  return host.port != 0 ? host.port : table.syslog_port;
}

} // namespace softswitch
