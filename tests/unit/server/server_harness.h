/* What the tests of the server share: a server on free loopback ports whose handler is set per test, clients
 * (plain and TLS) without blocking calls, and a pump that turns the server's loop and the clients until a
 * condition holds. Everything runs on the test's thread. */
#ifndef KESTREL_TESTS_UNIT_SERVER_HARNESS_H
#define KESTREL_TESTS_UNIT_SERVER_HARNESS_H

#include "server/http_conn.h"

#include <functional>
#include <openssl/types.h>
#include <string>
#include <vector>

/* A directory that disappears with all its files. */
struct TempDir {
  TempDir();
  ~TempDir();
  TempDir(const TempDir &) = delete;
  TempDir &operator=(const TempDir &) = delete;
  std::string file(const std::string &name) const { return path + "/" + name; }
  std::string path;
};

std::string read_file(const std::string &path);
/* Writes a fresh self-signed certificate and its private key into one PEM file. */
void write_certificate(const std::string &path);

/* A non-blocking client socket. */
struct Client {
  explicit Client(int port, bool tls = false);
  ~Client();
  Client(const Client &) = delete;
  Client &operator=(const Client &) = delete;

  void send(const std::string &bytes); /* queued and sent as the socket takes it */
  void turn();                         /* moves bytes both ways as far as possible */
  void close();                        /* closes at once */
  void shut_down_sending();
  std::string take(); /* what was received since the last take */
  int local_port() const;

  int fd;
  std::string received;
  bool closed = false; /* the server has closed */
  bool reading = true; /* false: leaves what the server sends in the socket */
  SSL *ssl = nullptr;
  bool handshake_done = false;

private:
  void step_handshake();
  void write_some();
  void read_some();
  std::string unsent_;
  SSL_CTX *ctx_ = nullptr;
};

using Handler = std::function<int(struct mg_connection *, enum mg_event)>;

/* A server; only one at a time per test (a second one for another purpose passes its own handler). */
struct TestServer {
  explicit TestServer(const std::string &listening_port = "tcp://127.0.0.1:0");
  ~TestServer();
  TestServer(const TestServer &) = delete;
  TestServer &operator=(const TestServer &) = delete;

  void turn(); /* one pass without waiting */
  /* Passes until the condition holds; false when it still does not after very many. The clients listed take
   * part. */
  bool run_until(const std::function<bool()> &condition, const std::vector<Client *> &clients = {});
  void run_passes(int passes, const std::vector<Client *> &clients = {});
  /* Sends a request and returns all that the server sends until it rests (`size` bytes at least). */
  std::string ask(Client &client, const std::string &request);
  int port() const { return atoi(mg_get_option(server, "listening_port")); }
  int client_count() const;
  struct ns_connection *first_client() const;

  struct mg_server *server;
  /* Answers events; unset events are answered with MG_TRUE for MG_AUTH, 0 for others. */
  Handler on_event;
  std::vector<std::string> events; /* names of events other than MG_POLL, in order */
};

/* A handler that answers every request with one chunk holding `text`. */
Handler answer_with(const std::string &text);
std::string chunked_reply(const std::string &text);

#endif
