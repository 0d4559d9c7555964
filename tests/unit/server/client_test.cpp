/* The outbound HTTP client, spoken to by a server of the same process. */
#include "tests/unit/server/server_harness.h"

#include <gtest/gtest.h>
#include <unistd.h>

struct Reply {
  int status;
  std::string body;
  bool operator==(const Reply &) const = default;
};

static std::ostream &operator<<(std::ostream &out, const Reply &r) {
  return out << r.status << " '" << r.body << "'";
}

/* A server that only makes outbound connections, and notes their replies. */
struct Outbound : TestServer {
  explicit Outbound(std::string text) : TestServer(""), request(std::move(text)) {
    on_event = [this](mg_connection *c, mg_event event) -> int {
      if (event == MG_CONNECT) {
        connect_status.push_back(c->status_code);
        if (c->status_code == 0) mg_printf(c, "%s", request.c_str());
      }
      if (event == MG_REPLY) {
        replies.push_back(
            {c->status_code, c->content_len == 0 ? "" : std::string(c->content, c->content_len)});
        return keep ? MG_TRUE : MG_FALSE;
      }
      return 0;
    };
  }
  mg_connection *connect_to(int port) {
    return mg_connect(server, ("127.0.0.1:" + std::to_string(port)).c_str());
  }
  bool run_with(TestServer &other, const std::function<bool()> &condition) {
    return run_until([&] {
      other.turn();
      return condition();
    });
  }
  std::string request;
  bool keep = false;
  std::vector<int> connect_status;
  std::vector<Reply> replies;
};

/* Answers every request with these bytes, and closes when told to. */
static Handler raw_answer(const std::string &bytes) {
  return [bytes](mg_connection *c, mg_event event) -> int {
    if (event == MG_AUTH) return MG_TRUE;
    if (event != MG_REQUEST) return 0;
    mg_write(c, bytes.data(), static_cast<int>(bytes.size()));
    return MG_TRUE;
  };
}

TEST(OutboundClient, ReplyWithALengthIsDeliveredWhenItIsWhole) {
  TestServer server;
  server.on_event = raw_answer("HTTP/1.1 201 Created\r\nContent-Length: 5\r\n\r\nhello");
  Outbound client("GET / HTTP/1.1\r\n\r\n");
  ASSERT_NE(client.connect_to(server.port()), nullptr);
  ASSERT_TRUE(client.run_with(server, [&] { return ns_next(&client.server->ns_mgr, nullptr) == nullptr; }));
  EXPECT_EQ(client.events, (std::vector<std::string>{"connect", "reply", "close"}));
  EXPECT_EQ(client.connect_status, (std::vector<int>{0}));
  EXPECT_EQ(client.replies, (std::vector<Reply>{{201, "hello"}}));
}

TEST(OutboundClient, ReplyWithoutALengthIsDeliveredWhenTheServerCloses) {
  TestServer server;
  server.on_event = raw_answer("HTTP/1.1 200 OK\r\n\r\nuntil the end");
  Outbound client("GET / HTTP/1.0\r\n\r\n");
  client.connect_to(server.port());
  ASSERT_TRUE(client.run_with(server, [&] { return ns_next(&client.server->ns_mgr, nullptr) == nullptr; }));
  EXPECT_EQ(client.events, (std::vector<std::string>{"connect", "reply", "close"}));
  EXPECT_EQ(client.replies, (std::vector<Reply>{{200, "until the end"}}));
}

TEST(OutboundClient, KeptConnectionTakesAnotherRequest) {
  TestServer server;
  server.on_event = raw_answer("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
  Outbound client("GET / HTTP/1.1\r\n\r\n");
  client.keep = true;
  mg_connection *c = client.connect_to(server.port());
  ASSERT_TRUE(client.run_with(server, [&] { return client.replies.size() == 1; }));
  mg_printf(c, "GET /again HTTP/1.1\r\n\r\n");
  ASSERT_TRUE(client.run_with(server, [&] { return client.replies.size() == 2; }));
  EXPECT_EQ(client.replies, (std::vector<Reply>{{200, "ok"}, {200, "ok"}}));
  EXPECT_EQ(client.connect_status.size(), 1u);
}

TEST(OutboundClient, FailedConnectTellsTheError) {
  int unused;
  {
    TestServer gone;
    unused = gone.port();
  }
  Outbound client("");
  ASSERT_NE(client.connect_to(unused), nullptr);
  ASSERT_TRUE(client.run_until([&] { return ns_next(&client.server->ns_mgr, nullptr) == nullptr; }));
  EXPECT_EQ(client.connect_status, (std::vector<int>{ECONNREFUSED}));
  EXPECT_EQ(client.events, (std::vector<std::string>{"connect", "close"}));
}

TEST(OutboundClient, NonsenseFromTheServerClosesWithoutAReply) {
  TestServer server;
  server.on_event = raw_answer("\x01\x02\x03");
  Outbound client("GET / HTTP/1.1\r\n\r\n");
  client.connect_to(server.port());
  ASSERT_TRUE(client.run_with(server, [&] { return ns_next(&client.server->ns_mgr, nullptr) == nullptr; }));
  EXPECT_EQ(client.events, (std::vector<std::string>{"connect", "close"}));
}

TEST(OutboundClient, SpeaksTls) {
  TempDir dir;
  write_certificate(dir.file("ssl.pem"));
  TestServer server("ssl://127.0.0.1:0:" + dir.file("ssl.pem"));
  server.on_event = raw_answer("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
  Outbound client("GET / HTTP/1.1\r\n\r\n");
  ASSERT_NE(mg_connect(client.server, ("ssl://127.0.0.1:" + std::to_string(server.port())).c_str()), nullptr);
  ASSERT_TRUE(client.run_with(server, [&] { return client.replies.size() == 1; }));
  EXPECT_EQ(client.replies, (std::vector<Reply>{{200, "ok"}}));
}

TEST(OutboundClient, MalformedAddressCannotBeStarted) {
  Outbound client("");
  EXPECT_EQ(mg_connect(client.server, "host:99999"), nullptr);
}
