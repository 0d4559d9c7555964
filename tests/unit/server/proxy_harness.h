/* What the tests of the forward proxy share: a proxy, and the server beyond it, which the test plays itself.
 */
#ifndef KESTREL_TESTS_UNIT_PROXY_HARNESS_H
#define KESTREL_TESTS_UNIT_PROXY_HARNESS_H

#include "tests/unit/server/server_harness.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

/* Makes a socket hold little, so that little is enough to fill it. */
inline void make_small(int fd) {
  const int size = 32768;
  setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &size, sizeof(size));
  setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &size, sizeof(size));
}

/* The server beyond the proxy: takes one connection, without blocking. */
struct Far {
  Far() : listener(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0)) {
    make_small(listener); /* and with it what it accepts */
    sockaddr_in sin = {};
    socklen_t size = sizeof(sin);
    sin.sin_family = AF_INET;
    sin.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(bind(listener, reinterpret_cast<sockaddr *>(&sin), size), 0);
    listen(listener, 8);
    getsockname(listener, reinterpret_cast<sockaddr *>(&sin), &size);
    port = ntohs(sin.sin_port);
  }
  ~Far() {
    close_connection();
    close(listener);
  }
  Far(const Far &) = delete;
  Far &operator=(const Far &) = delete;

  std::string authority() const { return "127.0.0.1:" + std::to_string(port); }
  std::string uri(const std::string &path) const { return "http://" + authority() + path; }
  void close_connection() {
    if (fd != -1) close(fd);
    fd = -1;
  }
  void send(const std::string &bytes) { unsent += bytes; }
  void turn() {
    if (fd == -1 && !closed) fd = accept4(listener, nullptr, nullptr, SOCK_NONBLOCK);
    if (fd == -1) return;
    write_some();
    if (reading) read_some();
    if (close_when_sent && sent == unsent.size()) {
      close_connection();
      closed = true;
    }
  }

  int port;
  std::string received;
  bool closed = false; /* the connection has ended */
  bool reading = true;
  bool close_when_sent = false;

private:
  void write_some() {
    while (sent < unsent.size()) {
      const ssize_t n = ::send(fd, unsent.data() + sent, unsent.size() - sent, MSG_NOSIGNAL);
      if (n <= 0) return;
      sent += static_cast<size_t>(n);
    }
  }
  void read_some() {
    char buf[65536];
    ssize_t n;
    while ((n = recv(fd, buf, sizeof(buf), 0)) > 0) received.append(buf, static_cast<size_t>(n));
    if (n == 0 || (n < 0 && errno != EAGAIN)) {
      close_connection();
      closed = true;
    }
  }
  int listener;
  int fd = -1;
  std::string unsent; /* all there is to send */
  size_t sent = 0;
};

/* A server that is a proxy and whose handler declines everything, with the far server beyond it. */
struct Proxy : TestServer {
  explicit Proxy(const std::string &listening_port = "tcp://127.0.0.1:0") : TestServer(listening_port) {
    mg_set_option(server, "enable_proxy", "yes");
  }
  bool run(const std::function<bool()> &condition, const std::vector<Client *> &clients = {}) {
    return run_until(
        [&] {
          far.turn();
          return condition();
        },
        clients);
  }
  /* Turns everything until it has certainly come to rest. */
  void rest(const std::vector<Client *> &clients = {}) {
    for (int i = 0; i < 30; i++) {
      turn();
      far.turn();
      for (Client *client : clients) client->turn();
    }
  }
  /* What the far server is sent for a request that it answers with nothing yet. */
  std::string passed_on(const std::string &request) {
    Client client(port());
    client.send(request);
    rest({&client});
    return far.received;
  }
  /* What the client gets for a request when the far server sends these bytes and, if told so, closes. */
  std::string answer(Client &client, const std::string &request, const std::string &reply, bool close) {
    client.send(request);
    EXPECT_TRUE(run([&] { return !far.received.empty(); }, {&client}));
    far.send(reply);
    far.close_when_sent = close;
    rest({&client});
    return client.take();
  }
  int sockets() const {
    int n = 0;
    for (ns_connection *c = ns_next(&server->ns_mgr, nullptr); c != nullptr;
         c = ns_next(&server->ns_mgr, c)) {
      if (!(c->flags & CONN_LISTENING)) n++;
    }
    return n;
  }
  ns_connection *peer() const {
    ns_connection *c = ns_next(&server->ns_mgr, nullptr);
    while (c != nullptr && !(c->flags & CONN_PROXY_PEER)) c = ns_next(&server->ns_mgr, c);
    return c;
  }
  ns_connection *served_client() const { return static_cast<connection *>(peer()->user_data)->ns_conn; }
  /* Waits until a socket is not read any more, and then goes on for a while. */
  void run_until_held(const ns_connection *nc, const std::vector<Client *> &clients) {
    EXPECT_TRUE(run([&] { return (nc->flags & CONN_WANT_WRITE) != 0; }, clients));
    rest(clients);
  }
  Far far;
};

inline std::string error_text(int status, const std::string &reason, const std::string &detail = "") {
  const std::string body = std::to_string(status) + " " + reason + "\n" + detail;
  return "HTTP/1.1 " + std::to_string(status) + " " + reason +
         "\r\nContent-Length: " + std::to_string(body.size()) + "\r\nContent-Type: text/plain\r\n\r\n" + body;
}

inline std::string bytes_of(size_t len) {
  std::string bytes(len, '\0');
  for (size_t i = 0; i < len; i++) bytes[i] = static_cast<char>(i * 31 + i / 251 + i / 65521);
  return bytes;
}

/* A request for the far server's "/". */
inline std::string get(const Proxy &proxy, const char *method = "GET") {
  return std::string(method) + " " + proxy.far.uri("/") + " HTTP/1.1\r\n\r\n";
}

#endif
