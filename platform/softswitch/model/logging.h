/* Logging as it is configured: of the lines of scripts, to the console, to remote hosts by syslog. What is
 * done with it is services/log.h and services/syslog.h.
 *
 * Severities are those of RFC 5424: 0 emergency .. 7 debug. An operation that finds everything as wanted
 * changes nothing; none of these makes an interface or VLAN pending. */
#ifndef KESTREL_SOFTSWITCH_MODEL_LOGGING_H
#define KESTREL_SOFTSWITCH_MODEL_LOGGING_H

#include "platform/api/openapi_common.h"
#include "platform/softswitch/model/limits.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace softswitch {

struct switch_model;

struct logging_host {
  uint32_t port = 0; /* 0: that of syslog */
  uint32_t severity = logging_host_factory_severity;
};

struct logging_table {
  bool cli = false;    /* lines of scripts that have been applied are logged */
  bool console = true; /* anything goes to the console */
  uint32_t console_severity = console_factory_severity;
  bool syslog = false; /* anything goes to the hosts */
  uint32_t syslog_port = syslog_factory_port;
  /* By address as it was given, in the order of these texts. */
  std::map<std::string, logging_host, std::less<>> hosts;
};

/* Returns everything to factory state. */
void logging_reset(switch_model &model);

/* --- Modes and thresholds ------------------------------------------------------------------------------- */

void logging_set_cli(switch_model &model, bool on);
void logging_set_console(switch_model &model, bool on);
/* OPEN_E_PARAM: no severity. */
open_error_t logging_set_console_severity(switch_model &model, uint32_t severity);
void logging_set_syslog(switch_model &model, bool on);
/* OPEN_E_PARAM: outside 1..65535. */
open_error_t logging_set_syslog_port(switch_model &model, uint32_t port);

/* --- Hosts ---------------------------------------------------------------------------------------------- */

/* Whether a text is an IPv4 or IPv6 address or the name of a host (RFC 1123 section 2.1: labels of letters,
 * digits and hyphens). A name whose last label is a number is none, so that a mistyped address is not taken
 * for a name. */
bool logging_address_valid(std::string_view address);

/* Whether there is this host: OPEN_E_PARAM for no address, OPEN_E_NOT_FOUND. */
open_error_t logging_host_check(const switch_model &model, std::string_view address);
/* OPEN_E_PARAM: no address. OPEN_E_EXISTS, OPEN_E_FULL. */
open_error_t logging_host_add(switch_model &model, std::string_view address);

/* The results of logging_host_check(), and OPEN_E_PARAM for a value out of range. Port 0 is that of syslog.
 */
open_error_t logging_host_remove(switch_model &model, std::string_view address);
open_error_t logging_host_set_port(switch_model &model, std::string_view address, uint32_t port);
open_error_t logging_host_set_severity(switch_model &model, std::string_view address, uint32_t severity);

/* The port that a host of the table is sent to. */
uint32_t logging_host_port(const logging_table &table, const logging_host &host);

} // namespace softswitch

#endif
