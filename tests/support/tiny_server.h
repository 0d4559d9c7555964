/* A server of one's own for tests of clients: answers each connection as the test says, byte for byte. */
#ifndef KESTREL_TESTS_TINY_SERVER_H
#define KESTREL_TESTS_TINY_SERVER_H

#include <arpa/inet.h>
#include <functional>
#include <mutex>
#include <netinet/in.h>
#include <string>
#include <sys/poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

/* One connection, from the server's side. */
class tiny_connection {
public:
  explicit tiny_connection(int accepted) : fd(accepted) {}
  ~tiny_connection() { close(fd); }
  tiny_connection(const tiny_connection &) = delete;
  tiny_connection &operator=(const tiny_connection &) = delete;

  /* False when the client has gone. */
  bool send(const std::string &text) const {
    size_t sent = 0;
    while (sent < text.size()) {
      ssize_t size = ::send(fd, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
      if (size <= 0) return false;
      sent += static_cast<size_t>(size);
    }
    return true;
  }
  /* What comes next; empty when nothing more does. */
  std::string receive() const {
    char block[4096];
    struct pollfd ready = {fd, POLLIN, 0};
    if (poll(&ready, 1, patience) != 1) return "";
    ssize_t size = recv(fd, block, sizeof block, 0);
    return size > 0 ? std::string(block, static_cast<size_t>(size)) : "";
  }
  /* A request's head, and what came with it. */
  std::string receive_head() const {
    std::string head;
    while (head.find("\r\n\r\n") == std::string::npos) {
      std::string more = receive();
      if (more.empty()) break;
      head += more;
    }
    return head;
  }
  /* Says nothing until the client gives up. */
  void wait_for_end() const {
    while (!receive().empty()) continue;
  }

private:
  static constexpr int patience = 20000; /* milliseconds; nothing waits as long unless it fails */
  int fd;
};

class tiny_server {
public:
  using service = std::function<void(const tiny_connection &)>;

  explicit tiny_server(service each) : serve(std::move(each)), listener(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address);
    listen(listener, 8);
    getsockname(listener, reinterpret_cast<sockaddr *>(&address), &size);
    port = ntohs(address.sin_port);
    thread = std::thread([this] { run(); });
  }
  ~tiny_server() {
    shutdown(listener, SHUT_RDWR);
    thread.join();
    close(listener);
  }
  tiny_server(const tiny_server &) = delete;
  tiny_server &operator=(const tiny_server &) = delete;

  std::string url(const std::string &path) const { return "http://" + authority() + path; }
  std::string authority() const { return "127.0.0.1:" + std::to_string(port); }
  int port;

private:
  void run() {
    for (int fd; (fd = accept(listener, nullptr, nullptr)) >= 0;) {
      tiny_connection connection(fd);
      serve(connection);
    }
  }

  service serve;
  int listener;
  std::thread thread;
};

/* An answer of HTTP with a body. */
inline std::string http_answer(const std::string &body, const std::string &status = "200 OK",
                               const std::string &headers = "") {
  return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + headers +
         "\r\n" + body;
}

#endif
