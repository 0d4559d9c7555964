/* Remote logging hosts: lines of the log as RFC 5424 messages over UDP (RFC 5426), facility local7. Lines are
 * queued and sent by a thread of its own that waits for nobody: a host that cannot be sent to now is tried
 * again later, and when the queue is full its oldest line goes; each host that has not got that yet is told
 * how many lines it has missed once it can be reached. Names are looked up by threads that end with the
 * lookup. Used by log.cpp. Nothing runs while there is no host to send to. */
#ifndef KESTREL_SOFTSWITCH_SYSLOG_H
#define KESTREL_SOFTSWITCH_SYSLOG_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <vector>

namespace softswitch {

/* The longest message in bytes; the rest is cut, at the end of a character. RFC 5424 section 6.1 has
 * receivers take that much. */
inline constexpr size_t syslog_message_max = 2048;

struct syslog_host {
  std::string address; /* an IPv4 or IPv6 address, or a name */
  uint16_t port = 0;
  int severity = 0; /* lines of this severity and the more severe ones are sent */
};

/* Where something is sent to. */
struct socket_address {
  struct sockaddr_storage storage = {};
  socklen_t size = 0;
};

/* Looks a name up (getaddrinfo(3)), which may take long. The port is left at 0. False with the reason. */
bool socket_address_look_up(const std::string &name, socket_address *address, std::string *error);

struct syslog_settings {
  std::string hostname; /* the switch's own, which messages bear */
  std::vector<syslog_host> hosts;

  /* What only tests set. */
  bool (*look_up)(const std::string &name, socket_address *address,
                  std::string *error) = socket_address_look_up;
  size_t queue_bytes_max = size_t{256} * 1024; /* a burst of some thousand ordinary lines */
  int64_t good_ms = 60 * 1000;                 /* how long the outcome of a lookup is good for */
  int64_t bad_ms = 30 * 1000;                  /* when to try again after a lookup or sending has failed */
};

/* Takes settings over. Hosts that stay get what is queued for them; new ones get the lines from now on.
 * Without hosts the service ends and what is queued is dropped. */
void syslog_configure(const syslog_settings &settings);
/* The least severe lines that any host gets; less than any severity when there is none. */
int syslog_severity();
/* Queues a line as log_format() builds it. Returns at once. */
void syslog_write(int severity, std::string_view line);
/* Sends out what is queued, as far as that can be done within a second, and ends the service. */
void syslog_stop();

} // namespace softswitch

#endif
