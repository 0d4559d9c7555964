/* A remote logging host for tests: a UDP socket on loopback. */
#ifndef KESTREL_TESTS_SYSLOG_TEST_SUPPORT_H
#define KESTREL_TESTS_SYSLOG_TEST_SUPPORT_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <string.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

class log_receiver {
public:
  /* `port` 0: any that is free. */
  explicit log_receiver(int family = AF_INET, uint16_t port = 0) {
    struct sockaddr_storage storage = {};
    auto *ipv4 = reinterpret_cast<struct sockaddr_in *>(&storage);
    auto *ipv6 = reinterpret_cast<struct sockaddr_in6 *>(&storage);
    storage.ss_family = static_cast<sa_family_t>(family);
    socklen_t size = family == AF_INET ? sizeof *ipv4 : sizeof *ipv6;
    if (family == AF_INET) {
      ipv4->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
      ipv4->sin_port = htons(port);
    } else {
      ipv6->sin6_addr = in6addr_loopback;
      ipv6->sin6_port = htons(port);
    }
    fd = socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    bound = fd >= 0 && bind(fd, reinterpret_cast<struct sockaddr *>(&storage), size) == 0;
    getsockname(fd, reinterpret_cast<struct sockaddr *>(&storage), &size);
    /* Port numbers have the same place in both families. */
    number = ntohs(ipv4->sin_port);
  }
  ~log_receiver() {
    if (fd >= 0) close(fd);
  }
  log_receiver(const log_receiver &) = delete;
  log_receiver &operator=(const log_receiver &) = delete;

  bool is_bound() const { return bound; }
  uint16_t port() const { return number; }

  /* The next message; "(none)" when there is none for long. */
  std::string hear(int patience_milliseconds = 20000) {
    struct pollfd ready = {fd, POLLIN, 0};
    char block[65536];
    if (poll(&ready, 1, patience_milliseconds) != 1) return "(none)";
    ssize_t size = recv(fd, block, sizeof block, 0);
    return size < 0 ? "(error)" : std::string(block, static_cast<size_t>(size));
  }

  /* The text of the next message behind its header, its severity before it: "4 file:line text". */
  std::string hear_text(int patience_milliseconds = 20000) {
    std::string message = hear(patience_milliseconds);
    size_t begin = message.find(" - - ");
    if (begin == message.npos) return message;
    return std::to_string(atoi(message.c_str() + 1) % 8) + " " + message.substr(begin + strlen(" - - "));
  }

  std::vector<std::string> hear_texts(size_t count) {
    std::vector<std::string> texts;
    while (texts.size() < count) texts.push_back(hear_text());
    return texts;
  }

  /* Whether nothing more has come. */
  bool is_silent() {
    struct pollfd ready = {fd, POLLIN, 0};
    return poll(&ready, 1, 0) == 0;
  }

private:
  int fd;
  bool bound;
  uint16_t number;
};

#endif
