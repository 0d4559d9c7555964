/* See server_harness.h. */
#include "tests/unit/server/server_harness.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <sstream>
#include <unistd.h>

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "server_tests_XXXXXX").string();
  path = mkdtemp(pattern.data());
}

TempDir::~TempDir() {
  std::filesystem::remove_all(path);
}

std::string read_file(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

void write_certificate(const std::string &path) {
  EVP_PKEY *key = EVP_EC_gen("P-256");
  X509 *cert = X509_new();
  X509_set_version(cert, 2);
  ASN1_INTEGER_set(X509_get_serialNumber(cert), 1);
  X509_gmtime_adj(X509_getm_notBefore(cert), -3600);
  X509_gmtime_adj(X509_getm_notAfter(cert), 24 * 3600);
  X509_set_pubkey(cert, key);
  const auto *name = reinterpret_cast<const unsigned char *>("localhost");
  X509_NAME_add_entry_by_txt(X509_get_subject_name(cert), "CN", MBSTRING_ASC, name, -1, -1, 0);
  X509_set_issuer_name(cert, X509_get_subject_name(cert));
  X509_sign(cert, key, EVP_sha256());
  FILE *file = fopen(path.c_str(), "w");
  PEM_write_PrivateKey(file, key, nullptr, nullptr, 0, nullptr, nullptr);
  PEM_write_X509(file, cert);
  fclose(file);
  X509_free(cert);
  EVP_PKEY_free(key);
}

/* --- Client -------------------------------------------------------------------------------------------- */

Client::Client(int port, bool tls) : fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  struct sockaddr_in sin = {};
  sin.sin_family = AF_INET;
  sin.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  sin.sin_port = htons(static_cast<uint16_t>(port));
  if (connect(fd, reinterpret_cast<struct sockaddr *>(&sin), sizeof(sin)) != 0) closed = true;
  fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
  const int on = 1; /* small requests leave one by one */
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  if (!tls) return;
  ctx_ = SSL_CTX_new(TLS_client_method());
  SSL_CTX_set_mode(ctx_, SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER | SSL_MODE_ENABLE_PARTIAL_WRITE);
  ssl = SSL_new(ctx_);
  SSL_set_fd(ssl, fd);
}

Client::~Client() {
  close();
}

void Client::close() {
  SSL_free(ssl);
  SSL_CTX_free(ctx_);
  if (fd != -1) ::close(fd);
  ssl = nullptr;
  ctx_ = nullptr;
  fd = -1;
}

void Client::shut_down_sending() {
  shutdown(fd, SHUT_WR);
}

void Client::send(const std::string &bytes) {
  unsent_ += bytes;
  turn();
}

std::string Client::take() {
  std::string taken;
  taken.swap(received);
  return taken;
}

int Client::local_port() const {
  struct sockaddr_in sin = {};
  socklen_t len = sizeof(sin);
  getsockname(fd, reinterpret_cast<struct sockaddr *>(&sin), &len);
  return ntohs(sin.sin_port);
}

void Client::step_handshake() {
  ERR_clear_error();
  const int n = SSL_connect(ssl);
  handshake_done = n == 1;
  if (n == 1) return;
  const int error = SSL_get_error(ssl, n);
  if (error != SSL_ERROR_WANT_READ && error != SSL_ERROR_WANT_WRITE) closed = true;
}

void Client::write_some() {
  while (!unsent_.empty()) {
    ERR_clear_error();
    const int len = static_cast<int>(unsent_.size());
    const long n =
        ssl ? SSL_write(ssl, unsent_.data(), len) : ::send(fd, unsent_.data(), unsent_.size(), MSG_NOSIGNAL);
    if (n <= 0) return;
    unsent_.erase(0, static_cast<size_t>(n));
  }
}

void Client::read_some() {
  char buf[65536];
  while (true) {
    ERR_clear_error();
    const long n = ssl ? SSL_read(ssl, buf, sizeof(buf)) : recv(fd, buf, sizeof(buf), 0);
    if (n > 0) {
      received.append(buf, static_cast<size_t>(n));
      continue;
    }
    const bool wait =
        ssl ? SSL_get_error(ssl, static_cast<int>(n)) == SSL_ERROR_WANT_READ : n < 0 && errno == EAGAIN;
    if (!wait) closed = true;
    return;
  }
}

void Client::turn() {
  if (fd == -1 || closed) return;
  if (ssl != nullptr && !handshake_done) {
    step_handshake();
    if (!handshake_done) return;
  }
  write_some();
  if (reading) read_some();
}

/* --- Server -------------------------------------------------------------------------------------------- */

static std::string event_name(enum mg_event event) {
  switch (event) {
  case MG_POLL:
    return "poll";
  case MG_CONNECT:
    return "connect";
  case MG_AUTH:
    return "auth";
  case MG_REQUEST:
    return "request";
  case MG_REPLY:
    return "reply";
  case MG_RECV:
    return "recv";
  case MG_CLOSE:
    return "close";
  case MG_WS_HANDSHAKE:
    return "ws-handshake";
  case MG_WS_CONNECT:
    return "ws-connect";
  case MG_HTTP_ERROR:
    return "error";
  }
  return "?";
}

static int dispatch(struct mg_connection *conn, enum mg_event event) {
  auto *test = static_cast<TestServer *>(conn->server_param);
  if (event != MG_POLL) test->events.push_back(event_name(event));
  if (test->on_event) return test->on_event(conn, event);
  return event == MG_AUTH ? MG_TRUE : 0;
}

TestServer::TestServer(const std::string &listening_port) : server(mg_create_server(this, dispatch)) {
  if (listening_port.empty()) return;
  EXPECT_STREQ(mg_set_option(server, "listening_port", listening_port.c_str()), nullptr);
}

TestServer::~TestServer() {
  on_event = nullptr; /* the test's variables are gone already, and there is one more pass */
  mg_destroy_server(&server);
}

void TestServer::turn() {
  mg_poll_server(server, 0);
}

bool TestServer::run_until(const std::function<bool()> &condition, const std::vector<Client *> &clients) {
  for (int i = 0; i < 20000; i++) {
    if (condition()) return true;
    mg_poll_server(server, i < 100 ? 0 : 1);
    for (Client *client : clients) client->turn();
  }
  return condition();
}

void TestServer::run_passes(int passes, const std::vector<Client *> &clients) {
  for (int i = 0; i < passes; i++) {
    turn();
    for (Client *client : clients) client->turn();
  }
}

std::string TestServer::ask(Client &client, const std::string &request) {
  client.send(request);
  run_until([&] { return !client.received.empty() || client.closed; }, {&client});
  run_passes(20, {&client});
  return client.take();
}

int TestServer::client_count() const {
  int n = 0;
  for (ns_connection *c = ns_next(&server->ns_mgr, nullptr); c != nullptr; c = ns_next(&server->ns_mgr, c)) {
    if (c->listener != nullptr) n++;
  }
  return n;
}

struct ns_connection *TestServer::first_client() const {
  ns_connection *c = ns_next(&server->ns_mgr, nullptr);
  return c != nullptr && c->listener != nullptr ? c : nullptr;
}

Handler answer_with(const std::string &text) {
  return [text](mg_connection *conn, mg_event event) -> int {
    if (event == MG_AUTH) return MG_TRUE;
    if (event != MG_REQUEST) return 0;
    mg_send_header(conn, "Content-Type", "text/plain");
    mg_send_data(conn, text.data(), static_cast<int>(text.size()));
    return MG_TRUE;
  };
}

std::string chunked_reply(const std::string &text) {
  char size[16];
  snprintf(size, sizeof(size), "%zX", text.size());
  return std::string("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nTransfer-Encoding: chunked\r\n\r\n") +
         size + "\r\n" + text + "\r\n0\r\n\r\n";
}
