/* Messages and addresses of remote logging; see syslog_message.h. */
#include "platform/softswitch/services/syslog_message.h"

#include <algorithm>
#include <arpa/inet.h>
#include <errno.h>
#include <netdb.h>
#include <netinet/in.h>
#include <string.h>
#include <unistd.h>

namespace softswitch {

/* --- Messages ------------------------------------------------------------------------------------------- */

static constexpr int facility_local7 = 23;
/* RFC 5424 section 6: the longest of these fields. */
static constexpr size_t hostname_max = 255;
static constexpr size_t app_name_max = 48;

/* A text as a field of the header: printable ASCII without blanks; "-" when it is empty. */
static std::string header_field(std::string_view text, size_t size_max) {
  if (text.empty()) return "-";
  std::string field(text.substr(0, size_max));
  std::replace_if(
      field.begin(), field.end(), [](char byte) { return byte < 33 || byte > 126; }, '?');
  return field;
}

/* Cuts a message where a character of UTF-8 begins. */
static void cut(std::string *message) {
  if (message->size() <= syslog_message_max) return;
  size_t size = syslog_message_max;
  while (size > syslog_message_max - 3 && ((*message)[size] & 0xc0) == 0x80) size--;
  message->resize(size);
}

/* Takes the next word off the front of a line. */
static std::string_view take_word(std::string_view *line) {
  std::string_view word = line->substr(0, line->find(' '));
  line->remove_prefix(std::min(word.size() + 1, line->size()));
  return word;
}

std::string syslog_message(std::string_view hostname, int severity, std::string_view line) {
  if (line.ends_with('\n')) line.remove_suffix(1);
  std::string message = "<" + std::to_string(facility_local7 * 8 + severity) + ">1 ";
  message.append(take_word(&line)).append(" ").append(header_field(hostname, hostname_max)).append(" ");
  message.append(header_field(program_invocation_short_name, app_name_max)).append(" ");
  message.append(std::to_string(getpid())).append(" - - ");
  take_word(&line);
  message.append(line);
  cut(&message);
  return message;
}

/* --- Addresses ------------------------------------------------------------------------------------------ */

bool socket_address_read(const std::string &text, socket_address *address) {
  auto *ipv4 = reinterpret_cast<struct sockaddr_in *>(&address->storage);
  auto *ipv6 = reinterpret_cast<struct sockaddr_in6 *>(&address->storage);
  *address = socket_address();
  if (inet_pton(AF_INET, text.c_str(), &ipv4->sin_addr) == 1) {
    address->storage.ss_family = AF_INET;
    address->size = sizeof *ipv4;
  } else if (inet_pton(AF_INET6, text.c_str(), &ipv6->sin6_addr) == 1) {
    address->storage.ss_family = AF_INET6;
    address->size = sizeof *ipv6;
  }
  return address->size > 0;
}

bool socket_address_look_up(const std::string &name, socket_address *address, std::string *error) {
  struct addrinfo hints = {};
  struct addrinfo *found = nullptr;
  hints.ai_socktype = SOCK_DGRAM;
  int failure = getaddrinfo(name.c_str(), nullptr, &hints, &found);
  if (failure != 0) {
    *error = failure == EAI_SYSTEM ? strerror(errno) : gai_strerror(failure);
    return false;
  }
  /* They come in the order of preference (RFC 6724); nothing tells whether a datagram has arrived. */
  memcpy(&address->storage, found->ai_addr, found->ai_addrlen);
  address->size = found->ai_addrlen;
  freeaddrinfo(found);
  return true;
}

void socket_address_set_port(socket_address *address, uint16_t port) {
  if (address->storage.ss_family == AF_INET)
    reinterpret_cast<struct sockaddr_in *>(&address->storage)->sin_port = htons(port);
  else
    reinterpret_cast<struct sockaddr_in6 *>(&address->storage)->sin6_port = htons(port);
}

} // namespace softswitch
