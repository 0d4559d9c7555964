/* Messages to remote logging hosts, and the addresses that they are sent to. Used by syslog.cpp. */
#ifndef KESTREL_SOFTSWITCH_SYSLOG_MESSAGE_H
#define KESTREL_SOFTSWITCH_SYSLOG_MESSAGE_H

#include "platform/softswitch/services/syslog.h"

#include <string>
#include <string_view>

namespace softswitch {

/* A line as log_format() builds it as a message of RFC 5424: facility local7, the line's own time, this
 * program's name and process id, neither message id nor structured data, and as text what stands behind the
 * line's severity. No byte order mark: nothing says that a text is UTF-8, and without one it need not be. */
std::string syslog_message(std::string_view hostname, int severity, std::string_view line);

/* Reads an IPv4 or IPv6 address; false for anything else. The port is left at 0. */
bool socket_address_read(const std::string &text, socket_address *address);
void socket_address_set_port(socket_address *address, uint16_t port);

} // namespace softswitch

#endif
