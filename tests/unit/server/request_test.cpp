/* Requests over real sockets: events, body, keep-alive, errors, log, datagrams. */
#include "tests/unit/server/server_harness.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

static const char get_request[] = "GET /x HTTP/1.1\r\n\r\n";
static const char reply_400[] =
    "HTTP/1.1 400 Bad Request\r\nContent-Length: 16\r\nContent-Type: text/plain\r\n\r\n400 Bad Request\n";

using Events = std::vector<std::string>;

TEST(Request, GetIsAuthorisedReceivedAndAnswered) {
  TestServer server;
  server.on_event = answer_with("hello");
  Client client(server.port());
  EXPECT_EQ(server.ask(client, get_request), chunked_reply("hello"));
  EXPECT_EQ(server.events, (Events{"auth", "recv", "request"}));
  EXPECT_FALSE(client.closed);
}

TEST(Request, HandlerSeesTheRequestAndTheAddresses) {
  TestServer server;
  Client client(server.port());
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event == MG_AUTH) return MG_TRUE;
    if (event != MG_REQUEST) return 0;
    EXPECT_STREQ(c->request_method, "PUT");
    EXPECT_STREQ(c->uri, "/vlans/10");
    EXPECT_STREQ(c->http_version, "1.1");
    EXPECT_STREQ(c->query_string, "a=%41");
    EXPECT_STREQ(c->remote_ip, "127.0.0.1");
    EXPECT_EQ(c->remote_port, client.local_port());
    EXPECT_STREQ(c->local_ip, "127.0.0.1");
    EXPECT_EQ(c->local_port, server.port());
    EXPECT_STREQ(mg_get_header(c, "x-test"), "1");
    EXPECT_EQ(c->server_param, &server);
    EXPECT_EQ(c->status_code, 0);
    EXPECT_EQ(c->is_websocket, 0);
    mg_send_status(c, 204);
    mg_printf(c, "\r\n");
    return MG_TRUE;
  };
  EXPECT_EQ(server.ask(client, "PUT /vlans%2f10?a=%41 HTTP/1.1\r\nX-Test: 1\r\n\r\n"),
            "HTTP/1.1 204 No Content\r\n\r\n");
}

TEST(Request, BodyInTwoPacketsGivesTwoReceiveEventsAndOneRequest) {
  TestServer server;
  std::vector<std::string> bodies;
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event == MG_RECV || event == MG_REQUEST) bodies.emplace_back(c->content, c->content_len);
    return answer_with("ok")(c, event);
  };
  Client client(server.port());
  client.send("POST /x HTTP/1.1\r\nContent-Length: 10\r\n\r\n01234");
  ASSERT_TRUE(server.run_until([&] { return bodies.size() == 1; }));
  EXPECT_EQ(server.ask(client, "56789"), chunked_reply("ok"));
  EXPECT_EQ(server.events, (Events{"auth", "recv", "recv", "request"}));
  EXPECT_EQ(bodies, (Events{"01234", "0123456789", "0123456789"}));
}

TEST(Request, BodyIsNotAttachedAtAuthorisationOnAnyRequestOfAConnection) {
  TestServer server;
  int asked = 0;
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event == MG_AUTH) {
      asked++;
      EXPECT_EQ(c->content, nullptr);
      EXPECT_EQ(c->content_len, 3u);
      EXPECT_EQ(c->connection_param, nullptr);
      EXPECT_EQ(c->callback_param, nullptr);
      c->connection_param = &asked;
      c->callback_param = &asked;
    }
    return answer_with("ok")(c, event);
  };
  Client client(server.port());
  for (int i = 0; i < 3; i++) {
    EXPECT_EQ(server.ask(client, "POST /x HTTP/1.1\r\nContent-Length: 3\r\n\r\na=1"), chunked_reply("ok"));
  }
  EXPECT_EQ(asked, 3);
}

TEST(Request, HeadArrivingByteByByteIsOneRequestAndLookedAtOnce) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client client(server.port());
  ASSERT_TRUE(server.run_until([&] { return server.client_count() == 1; }));
  const ns_connection *nc = server.first_client();
  const auto *record = static_cast<const connection *>(nc->user_data);
  int received = 0;
  for (const char c : std::string("GET /slow HTTP/1.1\r\nA: b\r\n\r")) {
    client.send(std::string(1, c));
    received++;
    ASSERT_TRUE(server.run_until([&] { return nc->recv_iobuf.len == static_cast<size_t>(received); }));
    EXPECT_EQ(record->head_scanned, received);
  }
  EXPECT_EQ(server.ask(client, "\n"), chunked_reply("ok"));
}

TEST(Request, LargeBodyIsHeldUntilItIsWhole) {
  TestServer server;
  const std::string body(1000000, 'b');
  bool same = false;
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event == MG_REQUEST) same = std::string(c->content, c->content_len) == body;
    return answer_with("ok")(c, event);
  };
  Client client(server.port());
  EXPECT_EQ(server.ask(client, "POST /x HTTP/1.1\r\nContent-Length: 1000000\r\n\r\n" + body),
            chunked_reply("ok"));
  EXPECT_TRUE(same);
}

TEST(Request, ReceiveResultConsumesThatManyBytes) {
  TestServer server;
  Events seen;
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event == MG_RECV)
      seen.emplace_back(c->content == nullptr ? "" : std::string(c->content, c->content_len));
    if (event == MG_RECV) return c->content_len >= 4 ? 4 : 1000; /* more than there is consumes nothing */
    return answer_with("ok")(c, event);
  };
  Client client(server.port());
  client.send("POST /x HTTP/1.1\r\nContent-Length: 9\r\n\r\n");
  ASSERT_TRUE(server.run_until([&] { return seen.size() == 1; }));
  client.send("012345");
  ASSERT_TRUE(server.run_until([&] { return seen.size() == 2; }));
  EXPECT_EQ(server.ask(client, "678"), chunked_reply("ok"));
  EXPECT_EQ(seen, (Events{"", "012345", "45678"}));
}

TEST(Request, NegativeReceiveResultClosesAfterSending) {
  TestServer server;
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event != MG_RECV) return event == MG_AUTH ? MG_TRUE : 0;
    mg_printf(c, "HTTP/1.1 403 Forbidden\r\n\r\n");
    return -1;
  };
  Client client(server.port());
  EXPECT_EQ(server.ask(client, "POST /x HTTP/1.1\r\nContent-Length: 9\r\n\r\n1"),
            "HTTP/1.1 403 Forbidden\r\n\r\n");
  EXPECT_TRUE(client.closed);
  EXPECT_EQ(server.events, (Events{"auth", "recv", "close"}));
}

TEST(Request, NegativeReceiveResultClosesAlsoWhenTheRequestIsWhole) {
  TestServer server;
  server.on_event = [](mg_connection *c, mg_event event) -> int {
    return event == MG_RECV ? -1 : answer_with("last")(c, event);
  };
  Client client(server.port());
  EXPECT_EQ(server.ask(client, get_request), chunked_reply("last"));
  EXPECT_TRUE(client.closed);
  EXPECT_EQ(server.events, (Events{"auth", "recv", "request", "close"}));
}

TEST(Request, RequestKeptOpenIsFinishedFromThePoll) {
  TestServer server;
  bool finish = false;
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event == MG_AUTH) return MG_TRUE;
    if (event == MG_REQUEST) {
      mg_printf_data(c, "first");
      return MG_MORE;
    }
    if (event != MG_POLL || !finish || c->uri == nullptr) return 0;
    mg_printf_data(c, "second");
    return MG_TRUE;
  };
  Client client(server.port());
  const std::string head = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
  EXPECT_EQ(server.ask(client, get_request), head + "5\r\nfirst\r\n");
  client.send("more bytes");
  server.run_passes(10, {&client});
  EXPECT_EQ(client.take(), ""); /* does not raise the request again */
  finish = true;
  EXPECT_EQ(server.ask(client, ""), "6\r\nsecond\r\n0\r\n\r\n");
  finish = false;
  EXPECT_EQ(server.ask(client, get_request), head + "5\r\nfirst\r\n");
}

TEST(Request, PipelinedRequestIsDiscardedWithTheOneBeforeIt) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client client(server.port());
  EXPECT_EQ(server.ask(client, std::string(get_request) + get_request), chunked_reply("ok"));
  EXPECT_EQ(server.ask(client, get_request), chunked_reply("ok"));
  EXPECT_EQ(server.events, (Events{"auth", "recv", "request", "auth", "recv", "request"}));
}

TEST(Request, ExpectationOf100IsAnsweredAtOnce) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client client(server.port());
  EXPECT_EQ(server.ask(client, "POST /x HTTP/1.1\r\nExpect: 100-Continue\r\nContent-Length: 1\r\n\r\n"),
            "HTTP/1.1 100 Continue\r\n\r\n");
  EXPECT_EQ(server.ask(client, "b"), chunked_reply("ok"));
}

TEST(Request, ContentLengthIsWhateverTheClientLikes) {
  static const struct {
    const char *length;
    bool answered;
  } cases[] = {
      {"-1", true},   {"-9223372036854775808", true}, {"-99999999999999999999999", true}, {"abc", true},
      {"0x10", true}, {"9223372036854775807", false}, {"99999999999999999999999", false}, {"1", false},
  };
  for (const auto &c : cases) {
    TestServer server;
    server.on_event = answer_with("ok");
    Client client(server.port());
    client.send(std::string("POST /x HTTP/1.1\r\nContent-Length: ") + c.length + "\r\n\r\n");
    server.run_until([&] { return server.events.size() >= 2; }, {&client});
    server.run_passes(5, {&client});
    EXPECT_EQ(client.take(), c.answered ? chunked_reply("ok") : "") << c.length;
  }
}

/* --- Keeping and closing ------------------------------------------------------------------------------- */

TEST(KeepAlive, FollowsVersionAndConnectionHeader) {
  static const struct {
    const char *method, *version, *header;
    bool kept;
  } cases[] = {
      {"GET", "1.1", "", true},
      {"GET", "1.0", "", false},
      {"GET", "1.1", "Connection: close\r\n", false},
      {"GET", "1.0", "Connection: keep-alive\r\n", true},
      {"GET", "1.1", "Connection: Keep-Alive\r\n", true},
      {"GET", "1.1", "Connection: upgrade\r\n", false},
      {"GET", "1.1", "Connection: keep-alive, TE\r\n", false},
      {"POST", "1.1", "", true},
      {"POST", "1.0", "", false},
      {"POST", "1.0", "Connection: KEEP-ALIVE\r\n", true},
      {"DELETE", "1.1", "connection: keep-alive\r\n", true},
      {"PUT", "1.1", "Connection: close\r\n", false},
  };
  for (const auto &c : cases) {
    TestServer server;
    server.on_event = answer_with("ok");
    Client client(server.port());
    const std::string request = std::string(c.method) + " / HTTP/" + c.version + "\r\n" + c.header + "\r\n";
    EXPECT_EQ(server.ask(client, request), chunked_reply("ok")) << request;
    EXPECT_EQ(client.closed, !c.kept) << request;
    EXPECT_EQ(server.client_count(), c.kept ? 1 : 0) << request;
    if (c.kept) {
      EXPECT_EQ(server.ask(client, request), chunked_reply("ok")) << request;
    }
  }
}

TEST(KeepAlive, WhatTheHeadSaysOfTheBodyDoesNotMatterToAHandler) {
  for (const char *lines : {"Transfer-Encoding: chunked\r\n", "Content-Length: 0\r\ncontent-length: 1\r\n",
                            "Content-Length: 0\r\nContent-Length: 0\r\n", "Content-Length: -1\r\n"}) {
    TestServer server;
    server.on_event = answer_with("ok");
    Client client(server.port());
    const std::string request = std::string("POST / HTTP/1.1\r\n") + lines + "\r\n";
    EXPECT_EQ(server.ask(client, request), chunked_reply("ok")) << lines;
    EXPECT_EQ(server.ask(client, request), chunked_reply("ok")) << lines;
    EXPECT_FALSE(client.closed) << lines;
  }
}

TEST(KeepAlive, HeaderLinesThatAreNotKeptDoNotMatter) {
  for (const int count : {30, 31, 60}) {
    std::string lines;
    for (int i = 0; i < count; i++) lines += "X-" + std::to_string(i) + ": x\r\n";
    TestServer server;
    server.on_event = answer_with("ok");
    Client client(server.port());
    for (int i = 0; i < 2; i++)
      EXPECT_EQ(server.ask(client, "GET / HTTP/1.1\r\n" + lines + "\r\n"), chunked_reply("ok")) << count;
  }
}

TEST(KeepAlive, ThousandRequestsGoOverOneConnection) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client client(server.port());
  for (int i = 0; i < 1000; i++) {
    client.send(get_request);
    ASSERT_TRUE(
        server.run_until([&] { return client.received.size() >= chunked_reply("ok").size(); }, {&client}));
    ASSERT_EQ(client.take(), chunked_reply("ok"));
  }
  EXPECT_EQ(server.client_count(), 1);
}

TEST(Close, ReachesTheHandlerWhenThePeerGoes) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client client(server.port());
  server.ask(client, get_request);
  client.close();
  ASSERT_TRUE(server.run_until([&] { return server.client_count() == 0; }));
  EXPECT_EQ(server.events, (Events{"auth", "recv", "request", "close"}));
}

TEST(Close, HalfClosedClientGetsNothing) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client client(server.port());
  server.run_passes(2);
  client.send(get_request);
  client.shut_down_sending();
  ASSERT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.received, "");
  EXPECT_EQ(server.events, (Events{"auth", "recv", "request", "close"}));
}

TEST(Close, IdleConnectionIsClosedAfter300Seconds) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client client(server.port());
  server.ask(client, get_request);
  ns_connection *nc = server.first_client();
  ASSERT_NE(nc, nullptr);
  nc->last_io_time = time(nullptr) - 298;
  server.run_passes(3, {&client});
  EXPECT_FALSE(client.closed);
  nc->last_io_time = time(nullptr) - 301;
  ASSERT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.received, "");
  EXPECT_EQ(server.events.back(), "close");
}

TEST(Close, ClosedConnectionIsNotFoundAmongTheClients) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client one(server.port()), two(server.port());
  ASSERT_TRUE(server.run_until([&] { return server.client_count() == 2; }));
  std::vector<int> ports;
  for (mg_connection *c = mg_next(server.server, nullptr); c != nullptr; c = mg_next(server.server, c)) {
    ports.push_back(c->remote_port);
  }
  EXPECT_EQ(ports, (std::vector<int>{two.local_port(), one.local_port()}));
  two.close();
  ASSERT_TRUE(server.run_until([&] { return server.client_count() == 1; }));
  EXPECT_EQ(mg_next(server.server, nullptr)->remote_port, one.local_port());
  EXPECT_EQ(mg_next(server.server, mg_next(server.server, nullptr)), nullptr);
}

/* --- Errors -------------------------------------------------------------------------------------------- */

static std::string first_answer(const std::string &request, Events *events = nullptr) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client client(server.port());
  const std::string answer = server.ask(client, request);
  EXPECT_EQ(client.closed, answer != chunked_reply("ok")) << request;
  if (events != nullptr) *events = server.events;
  return answer;
}

TEST(Errors, MalformedHeadsAndInvalidUrisGet400) {
  for (const std::string request :
       {"PATCH / HTTP/1.1\r\n\r\n", "GET /\r\n\r\n", "GET x HTTP/1.1\r\n\r\n", "GET ** HTTP/1.1\r\n\r\n",
        "\r\n\r\n", "GET /\x01 HTTP/1.1\r\n\r\n", "GET /\t HTTP/1.1", "\x80 / HTTP/1.1\r\n\r\n",
        "HTTP/1.1 200 OK\r\n\r\n", "GET  HTTP/1.1\r\n\r\n"}) {
    EXPECT_EQ(first_answer(request), reply_400) << request;
  }
}

TEST(Errors, UriOf256CharactersGets400) {
  const std::string uri = "/" + std::string(254, 'u');
  EXPECT_EQ(first_answer("GET " + uri + " HTTP/1.1\r\n\r\n"), chunked_reply("ok"));
  Events events;
  EXPECT_EQ(first_answer("GET " + uri + "u HTTP/1.1\r\n\r\n", &events), reply_400);
  EXPECT_EQ(events, (Events{"error", "close"}));
}

TEST(Errors, HeadWithoutEndGets413AtByte16385) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client client(server.port());
  const std::string start = "GET / HTTP/1.1\r\nA: ";
  client.send(start + std::string(16384 - start.size(), 'a'));
  ASSERT_TRUE(server.run_until(
      [&] { return server.first_client() && server.first_client()->recv_iobuf.len == 16384; }));
  server.run_passes(3, {&client});
  EXPECT_EQ(client.received, "");
  EXPECT_EQ(server.ask(client, "a"),
            "HTTP/1.1 413 Payload Too Large\r\nContent-Length: 22\r\nContent-Type: text/plain\r\n\r\n"
            "413 Payload Too Large\n");
  EXPECT_TRUE(client.closed);
}

TEST(Errors, HeadOf16384BytesIsServed) {
  const std::string start = "GET / HTTP/1.1\r\nA: ";
  EXPECT_EQ(first_answer(start + std::string(16384 - start.size() - 4, 'a') + "\r\n\r\n"),
            chunked_reply("ok"));
}

TEST(Errors, OtherVersionsGet505) {
  const std::string reply =
      "HTTP/1.1 505 HTTP Version Not Supported\r\nContent-Length: 31\r\nContent-Type: text/plain\r\n\r\n"
      "505 HTTP Version Not Supported\n";
  for (const char *version : {"2.0", "1.2", "0.9", "", "1.1 ", "1.10"}) {
    EXPECT_EQ(first_answer(std::string("GET / HTTP/") + version + "\r\n\r\n"), reply) << version;
  }
}

TEST(Errors, AHeadThatIsNotUnderstoodGetsTheWholeReplyWhateverItsMethod) {
  for (const char *method : {"GET", "HEAD"}) {
    const std::string start = method;
    EXPECT_EQ(first_answer(start + " /" + std::string(255, 'u') + " HTTP/1.1\r\n\r\n"), reply_400) << start;
    EXPECT_EQ(first_answer(start + " nowhere HTTP/1.1\r\n\r\n"), reply_400) << start;
    EXPECT_EQ(first_answer(start + " / HTTP/2.0\r\n\r\n"),
              "HTTP/1.1 505 HTTP Version Not Supported\r\nContent-Length: 31\r\nContent-Type: "
              "text/plain\r\n\r\n505 HTTP Version Not Supported\n")
        << start;
  }
}

TEST(Errors, LongGarbageGetsOneAnswer) {
  EXPECT_EQ(first_answer(std::string(30000, '\x01')), reply_400);
  EXPECT_EQ(first_answer("POST /" + std::string(300, 'u') + " HTTP/1.1\r\nContent-Length: 9000\r\n\r\n" +
                         std::string(9000, 'x')),
            reply_400);
}

TEST(Errors, HandlerMayAnswerThemItself) {
  TestServer server;
  int status = 0;
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event != MG_HTTP_ERROR) return 0;
    status = c->status_code;
    mg_printf(c, "HTTP/1.1 %d Mine\r\n\r\n", c->status_code);
    return MG_TRUE;
  };
  Client client(server.port());
  EXPECT_EQ(server.ask(client, "NONSENSE\r\n\r\n"), "HTTP/1.1 400 Mine\r\n\r\n");
  EXPECT_EQ(status, 400);
  EXPECT_TRUE(client.closed);
}

TEST(Errors, AreRedirectedByUrlRewrites) {
  TestServer server;
  mg_set_option(server.server, "url_rewrites", "/files=/tmp,500=/five,404=/not%20here,404=/second");
  server.on_event = [](mg_connection *, mg_event event) -> int { return event == MG_AUTH ? MG_TRUE : 0; };
  Client client(server.port());
  EXPECT_EQ(server.ask(client, "GET /a%20b?c=d HTTP/1.1\r\n\r\n"),
            "HTTP/1.1 302 Moved\r\nLocation: /not%20here?code=404&orig_uri=/a b&query_string=c=d\r\n\r\n");
  Client without_query(server.port());
  EXPECT_EQ(server.ask(without_query, "GET /a HTTP/1.1\r\n\r\n"),
            "HTTP/1.1 302 Moved\r\nLocation: /not%20here?code=404&orig_uri=/a&query_string=\r\n\r\n");
  Client forger(server.port());
  EXPECT_EQ(server.ask(forger, "GET /a%0d%0aSet-Cookie:x HTTP/1.1\r\n\r\n"),
            "HTTP/1.1 302 Moved\r\nLocation: "
            "/not%20here?code=404&orig_uri=/a%0D%0ASet-Cookie:x&query_string=\r\n\r\n");
}

/* --- Requests that the handler does not take ----------------------------------------------------------- */

static std::string declined(const std::string &request, const char *enable_proxy = nullptr) {
  TestServer server;
  mg_set_option(server.server, "enable_proxy", enable_proxy);
  server.on_event = [](mg_connection *c, mg_event event) -> int {
    EXPECT_TRUE(event != MG_AUTH || c->content == nullptr);
    return event == MG_AUTH ? MG_TRUE : 0;
  };
  Client client(server.port());
  const std::string answer = server.ask(client, request);
  EXPECT_TRUE(client.closed);
  EXPECT_EQ(server.events[3], "auth"); /* once more, before the server serves it */
  return answer;
}

TEST(Declined, RequestGetsTheServersOwnAnswer) {
  const std::string reply_404 =
      "HTTP/1.1 404 Not Found\r\nContent-Length: 14\r\nContent-Type: text/plain\r\n\r\n404 Not Found\n";
  const std::string reply_405 = "HTTP/1.1 405 Method Not Allowed\r\nContent-Length: 23\r\nContent-Type: "
                                "text/plain\r\n\r\n405 Method Not Allowed\n";
  EXPECT_EQ(declined("GET /x HTTP/1.1\r\n\r\n"), reply_404);
  EXPECT_EQ(declined("POST /x HTTP/1.1\r\nContent-Length: 1\r\n\r\nb"), reply_404);
  EXPECT_EQ(declined("CONNECT host:80 HTTP/1.1\r\n\r\n"), reply_405);
  EXPECT_EQ(declined("GET http://host/ HTTP/1.1\r\n\r\n"), reply_405);
  EXPECT_EQ(declined("GET http://host/ HTTP/1.1\r\n\r\n", "no"), reply_405);
  EXPECT_EQ(
      declined("GET http:// HTTP/1.1\r\n\r\n", "yes"),
      "HTTP/1.1 400 Bad Request\r\nContent-Length: 16\r\nContent-Type: text/plain\r\n\r\n400 Bad Request\n");
  EXPECT_EQ(declined("OPTIONS * HTTP/1.1\r\n\r\n"),
            "HTTP/1.1 200 OK\r\nAllow: GET, POST, HEAD, CONNECT, PUT, DELETE, OPTIONS, PROPFIND, "
            "MKCOL\r\nDAV: 1\r\n\r\n");
}

TEST(Declined, WithoutHandlerEveryRequestIsTheServers) {
  mg_server *server = mg_create_server(nullptr, nullptr);
  ASSERT_EQ(mg_set_option(server, "listening_port", "127.0.0.1:0"), nullptr);
  Client client(atoi(mg_get_option(server, "listening_port")));
  client.send(get_request);
  for (int i = 0; i < 1000 && !client.closed; i++) {
    mg_poll_server(server, 1);
    client.turn();
  }
  EXPECT_EQ(
      client.received,
      "HTTP/1.1 404 Not Found\r\nContent-Length: 14\r\nContent-Type: text/plain\r\n\r\n404 Not Found\n");
  mg_destroy_server(&server);
  EXPECT_EQ(server, nullptr);
}

TEST(Authorisation, RefusalAsksForDigestCredentials) {
  TestServer server;
  mg_set_option(server.server, "auth_domain", "switch");
  server.on_event = [](mg_connection *, mg_event) -> int { return 0; };
  Client client(server.port());
  const unsigned long before = static_cast<unsigned long>(time(nullptr));
  std::string answer = server.ask(client, get_request);
  const std::string start =
      "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Digest qop=\"auth\", realm=\"switch\", nonce=\"";
  ASSERT_EQ(answer.substr(0, start.size()), start);
  const unsigned long nonce = std::stoul(answer.substr(start.size()));
  EXPECT_GE(nonce, before);
  EXPECT_LE(nonce, static_cast<unsigned long>(time(nullptr)));
  EXPECT_EQ(answer.substr(start.size()), std::to_string(nonce) + "\"\r\n\r\n");
  EXPECT_TRUE(client.closed);
  EXPECT_EQ(server.events, (Events{"auth", "close"}));
}

/* --- Access log ---------------------------------------------------------------------------------------- */

/* Replaces the date of each line, after a look at its shape. */
static std::string without_dates(std::string log) {
  for (size_t at = 0; (at = log.find('[', at)) != std::string::npos; at++) {
    struct tm tm = {};
    const std::string date = log.substr(at + 1, 26);
    const char *end = strptime(date.c_str(), "%d/%b/%Y:%H:%M:%S %z", &tm);
    EXPECT_TRUE(end != nullptr && *end == '\0') << date;
    log.replace(at + 1, 26, "date");
  }
  return log;
}

TEST(AccessLog, HasOneLinePerAnsweredRequest) {
  TempDir dir;
  TestServer server;
  mg_set_option(server.server, "access_log_file", dir.file("log").c_str());
  server.on_event = [](mg_connection *c, mg_event event) -> int {
    if (event == MG_AUTH) return MG_TRUE;
    if (event != MG_REQUEST) return 0;
    if (c->uri == std::string("/unanswered")) return MG_TRUE;
    mg_printf_data(c, "ok");
    return MG_TRUE;
  };
  Client client(server.port());
  server.ask(client, "GET /a%20b?c=d HTTP/1.1\r\nReferer: http://r/\r\nUser-Agent: test 1\r\n\r\n");
  server.ask(client,
             "POST /login HTTP/1.1\r\nAuthorization: Digest username=\"ad min\", realm=\"x\"\r\n\r\n");
  server.ask(client, "GET /line%0aforged HTTP/1.1\r\nUser-Agent: test 1\r\n\r\n");
  client.send("GET /unanswered HTTP/1.1\r\n\r\n");
  server.run_passes(5, {&client});
  server.ask(client, "GET / HTTP/3.0\r\n\r\n");
  Client malformed(server.port());
  server.ask(malformed, "NONSENSE\r\n\r\n");
  EXPECT_EQ(without_dates(read_file(dir.file("log"))),
            "127.0.0.1 - - [date] \"GET /a b?c=d HTTP/1.1\" 200 0 \"http://r/\" \"test 1\"\n"
            "127.0.0.1 - ad min [date] \"POST /login HTTP/1.1\" 200 0 - -\n"
            "127.0.0.1 - - [date] \"GET /line%0Aforged HTTP/1.1\" 200 0 - \"test 1\"\n"
            "127.0.0.1 - - [date] \"GET / HTTP/3.0\" 505 0 - -\n");
}

/* --- Datagrams ----------------------------------------------------------------------------------------- */

static Events datagrams_for(const std::string &request, TestServer *server) {
  const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_in sin = {};
  sin.sin_family = AF_INET;
  sin.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  sin.sin_port = htons(static_cast<uint16_t>(server->port()));
  EXPECT_EQ(connect(fd, reinterpret_cast<sockaddr *>(&sin), sizeof(sin)), 0);
  EXPECT_EQ(send(fd, request.data(), request.size(), 0), static_cast<ssize_t>(request.size()));
  Events replies;
  for (int i = 0; i < 200; i++) {
    mg_poll_server(server->server, replies.empty() ? 1 : 0);
    char buf[2000];
    for (ssize_t n; (n = recv(fd, buf, sizeof(buf), MSG_DONTWAIT)) >= 0;)
      replies.emplace_back(buf, static_cast<size_t>(n));
  }
  close(fd);
  return replies;
}

TEST(Datagrams, RepliesAreNotAnswered) {
  TestServer server("udp://127.0.0.1:0");
  EXPECT_EQ(datagrams_for("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n", &server), Events{});
  EXPECT_EQ(datagrams_for("HTTPS / HTTP/1.1\r\n\r\n", &server).size(), 1u);
}

TEST(Datagrams, AreRequestsAndTheirRepliesGoBackToTheSender) {
  TestServer server("udp://127.0.0.1:0");
  std::string body;
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event == MG_AUTH) return MG_TRUE;
    if (event != MG_REQUEST) return 0;
    EXPECT_STREQ(c->remote_ip, "127.0.0.1");
    EXPECT_NE(c->remote_port, 0);
    if (c->content_len > 0) body.assign(c->content, c->content_len);
    mg_printf(c, "%s %s", c->request_method, c->uri);
    return MG_TRUE;
  };
  EXPECT_EQ(datagrams_for(get_request, &server), (Events{"GET /x"}));
  EXPECT_EQ(datagrams_for("GET /no-end HTTP/1.1\r\n", &server), (Events{"GET /no-end"}));
  EXPECT_EQ(datagrams_for("POST /b HTTP/1.1\r\nContent-Length: 4\r\n\r\nbody", &server), (Events{"POST /b"}));
  EXPECT_EQ(body, "body");
  EXPECT_EQ(datagrams_for("\x01\x02", &server),
            (Events{"HTTP/1.1 400 Bad Request\r\nContent-Length: 16\r\nContent-Type: text/plain\r\n\r\n"
                    "400 Bad Request\n"}));
}

TEST(Datagrams, ARedirectionIsOneOfThem) {
  TestServer server("udp://127.0.0.1:0");
  TempDir dir;
  mkdir(dir.file("sub").c_str(), 0700);
  mg_set_option(server.server, "document_root", dir.file("").c_str());
  mg_set_option(server.server, "url_rewrites", "404=/not-here");
  server.on_event = [](mg_connection *, mg_event event) -> int { return event == MG_AUTH; };
  EXPECT_EQ(datagrams_for("GET /sub HTTP/1.1\r\n\r\n", &server),
            Events{"HTTP/1.1 301 Moved Permanently\r\nLocation: /sub/\r\n\r\n"});
  EXPECT_EQ(datagrams_for("GET /a?b HTTP/1.1\r\n\r\n", &server),
            Events{"HTTP/1.1 302 Moved\r\nLocation: /not-here?code=404&orig_uri=/a&query_string=b\r\n\r\n"});
}

TEST(Datagrams, OneThatAnnouncesMoreThanItHoldsDoesNotSilenceTheServer) {
  TestServer server("udp://127.0.0.1:0");
  for (const char *header : {"Content-Length: 10", "Transfer-Encoding: chunked"}) {
    const std::string request = std::string("POST /x HTTP/3.0\r\n") + header + "\r\n\r\n";
    for (int i = 0; i < 2; i++) EXPECT_EQ(datagrams_for(request, &server).size(), 1u) << header;
  }
}
