/* The address syntax of listeners and outbound connections, and name resolution. */
#include "server/ns_internal.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <stdio.h>
#include <string.h>

/* First IPv4 address of a host; 0.0.0.0 when it cannot be resolved. */
static bool look_up(const char *host, struct in_addr *address) {
  const struct hostent *found = gethostbyname(host);
  *address = {};
  if (found == nullptr || found->h_addrtype != AF_INET || found->h_addr_list[0] == nullptr) return false;
  memcpy(address, found->h_addr_list[0], sizeof(*address));
  return true;
}

int ns_resolve(const char *host, char *buf, size_t buf_len) {
  struct in_addr address;
  char text[INET_ADDRSTRLEN];
  if (!look_up(host, &address) || inet_ntop(AF_INET, &address, text, sizeof(text)) == nullptr) return 0;
  const int len = snprintf(buf, buf_len, "%s", text);
  return len < 0 || static_cast<size_t>(len) >= buf_len ? 0 : len;
}

static const char *skip_scheme(const char *str, int *protocol, int *use_ssl) {
  *protocol = SOCK_STREAM;
  *use_ssl = 0;
  if (strncmp(str, "ssl://", 6) == 0) {
    *use_ssl = 1;
    return str + 6;
  }
  if (strncmp(str, "udp://", 6) == 0) {
    *protocol = SOCK_DGRAM;
    return str + 6;
  }
  return strncmp(str, "tcp://", 6) == 0 ? str + 6 : str;
}

/* Reads host and port; numbers of more than nine digits are not read whole, so that none overflows. Returns
 * the characters consumed, 0 when there is no port. */
static int scan_host_and_port(const char *str, struct in_addr *address, unsigned *port) {
  unsigned a, b, c, d;
  char host[200];
  int len = 0;
  *address = {};
  if (sscanf(str, "%9u.%9u.%9u.%9u:%9u%n", &a, &b, &c, &d, port, &len) == 5) {
    address->s_addr = htonl((a << 24) | (b << 16) | (c << 8) | d);
  } else if (sscanf(str, "%199[^ :]:%9u%n", host, port, &len) == 2) {
    look_up(host, address);
  } else if (sscanf(str, "%9u%n", port, &len) != 1) {
    return 0;
  }
  return len;
}

/* Reads ":certificate" or ":certificate:CA". Returns the characters consumed. */
static int scan_certificates(const char *str, char *cert, char *ca) {
  int len = 0;
  if (sscanf(str, ":%99[^:]:%99[^:]%n", cert, ca, &len) == 2) return len;
  ca[0] = '\0';
  return sscanf(str, ":%99[^:]%n", cert, &len) == 1 ? len : 0;
}

int ns_parse_address(const char *str, union socket_address *sa, int *protocol, int *use_ssl, char *cert,
                     char *ca) {
  *sa = {};
  sa->sin.sin_family = AF_INET;
  cert[0] = ca[0] = '\0';
  if (str == nullptr) return 0;

  const char *host = skip_scheme(str, protocol, use_ssl);
  unsigned port = 0;
  const int len = scan_host_and_port(host, &sa->sin.sin_addr, &port);
  if (len == 0) return 0;
  const char *end = host + len;
  if (*use_ssl) end += scan_certificates(end, cert, ca);
  if (port >= 65535 || *end != '\0') return 0;
  sa->sin.sin_port = htons(static_cast<uint16_t>(port));
  return static_cast<int>(end - str);
}
