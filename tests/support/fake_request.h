/* A request without a socket, for tests that call a handler directly: fill in method, URI, query string, body
 * and the client's address, give conn() to the handler, and read the bytes that it queued.
 *
 *   FakeRequest request("GET", "/vlans/10", "sessionkey=abc&format=json");
 *   vlan_api_handler(&handle, request.conn());
 *   EXPECT_EQ(request.reply().body, "...");
 *
 * The server ends a chunked reply itself once the handler has returned, so the terminating chunk is never
 * among these bytes. */
#ifndef KESTREL_TESTS_SUPPORT_FAKE_REQUEST_H
#define KESTREL_TESTS_SUPPORT_FAKE_REQUEST_H

#include "server/http_conn.h"

#include <string>

/* A reply split in two. */
struct FakeReply {
  std::string head; /* status line and header lines with the blank line that ends them */
  std::string body; /* what follows; chunked replies are put together */
  bool well_formed; /* false: no header block, or broken chunk framing */
  bool terminated;  /* the terminating chunk was there (replies of a running server) */
};

/* Splits the bytes of one reply. A body counts as chunked when the head says so. */
FakeReply split_reply(const std::string &bytes);

/* Non-copyable: the records point at each other. */
struct FakeRequest {
  FakeRequest(std::string method, std::string uri, std::string query_string = "", std::string body = "");
  ~FakeRequest();
  FakeRequest(const FakeRequest &) = delete;
  FakeRequest &operator=(const FakeRequest &) = delete;

  /* What a handler is given. An empty query string is passed as null, an empty body as null and 0. */
  struct mg_connection *conn() {
    return &record.mg_conn;
  }

  void set_remote(const std::string &ip, unsigned short port); /* default 127.0.0.1, 40000 */
  void add_header(const std::string &name, const std::string &value);
  /* As at MG_AUTH: the body is not attached, content_len is its declared length. */
  void detach_body();

  /* All bytes queued so far; reply() splits them; clear_reply() forgets them, for another call. */
  std::string bytes() const;
  FakeReply reply() const { return split_reply(bytes()); }
  void clear_reply();

  struct mg_server server;
  struct ns_connection socket;
  struct connection record;

private:
  std::string method_, uri_, query_, body_;
  std::string header_texts_[2 * MG_MAX_HEADERS];
};

#endif
