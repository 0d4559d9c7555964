/* The forward proxy: requests with an absolute URI, refusals, replies. Every byte that the client or the far
 * server gets is compared. */
#include "tests/unit/server/proxy_harness.h"

#include "server/mg_proxy.h"

/* --- Requests ------------------------------------------------------------------------------------------ */

TEST(ProxyRequest, ReachesTheServerThatItsUriNames) {
  Proxy proxy;
  const std::string request = "GET " + proxy.far.uri("/a/b.html?x=%20y&z?") + " HTTP/1.1\r\n";
  const std::string line = "GET /a/b.html?x=%20y&z? HTTP/1.1\r\nHost: " + proxy.far.authority() + "\r\n";
  EXPECT_EQ(proxy.passed_on(request + "Host: another\r\nAccept: */*\r\nX-Empty: \r\n\r\n"),
            line + "Accept: */*\r\nX-Empty: \r\nConnection: close\r\n\r\n");
}

TEST(ProxyRequest, OnlyLinesForTheServerGoOn) {
  Proxy proxy;
  EXPECT_EQ(proxy.passed_on("GET " + proxy.far.uri("/") +
                            " HTTP/1.0\r\nConnection: keep-alive, x-hop\r\nCookie: a=b\r\nX-Hop: 1\r\n"
                            "Proxy-Connection: keep-alive\r\nKeep-Alive: timeout=5\r\nTE: trailers\r\n"
                            "Upgrade: h2c\r\nProxy-Authorization: Basic x\r\nExpect: 200-maybe\r\n"
                            "CONNECTION: X-Other\r\nx-other: 2\r\nVia: 1.1 x\r\n\r\n"),
            "GET / HTTP/1.0\r\nHost: " + proxy.far.authority() +
                "\r\nCookie: a=b\r\nVia: 1.1 x\r\nConnection: close\r\n\r\n");
}

TEST(ProxyRequest, PathIsEncodedAgainSoThatItStaysOneWord) {
  const struct {
    const char *path, *passed_on;
  } rows[] = {
      {"", "/"},
      {"?q", "/?q"},
      {"/", "/"},
      {"/%20%0d%0aX:%20y", "/%20%0D%0AX:%20y"},
      {"/100%25", "/100%25"},
      {"/%3Fnot=query?query", "/%3Fnot=query?query"},
      {"/%23%22%3c%3e%5c%5e%60%7b%7c%7d%7f%ff", "/%23%22%3C%3E%5C%5E%60%7B%7C%7D%7F%FF"},
      {"/-._~!$&'()*+,;=:@/%41", "/-._~!$&'()*+,;=:@/A"},
      {"/a//b/../c", "/a//b/../c"},
      {"/\xc3\xa4", "/%C3%A4"},
  };
  for (const auto &row : rows) {
    Proxy proxy;
    EXPECT_EQ(proxy.passed_on("GET " + proxy.far.uri(row.path) + " HTTP/1.1\r\n\r\n"),
              std::string("GET ") + row.passed_on + " HTTP/1.1\r\nHost: " + proxy.far.authority() +
                  "\r\nConnection: close\r\n\r\n");
  }
}

TEST(ProxyRequest, OptionsOfAWholeServerAsksForTheStar) {
  Proxy proxy;
  EXPECT_EQ(proxy.passed_on("OPTIONS " + proxy.far.uri("") + " HTTP/1.1\r\n\r\n"),
            "OPTIONS * HTTP/1.1\r\nHost: " + proxy.far.authority() + "\r\nConnection: close\r\n\r\n");
}

TEST(ProxyRequest, LongQueryIsPassedOnWhole) {
  for (const size_t len : {400u, 485u, 486u, 487u, 500u, 8192u, 15000u}) {
    Proxy proxy;
    const std::string query(len, 'q');
    const std::string passed_on = proxy.passed_on("GET " + proxy.far.uri("/?" + query) + " HTTP/1.1\r\n\r\n");
    EXPECT_EQ(passed_on, "GET /?" + query + " HTTP/1.1\r\nHost: " + proxy.far.authority() +
                             "\r\nConnection: close\r\n\r\n");
  }
}

TEST(ProxyRequest, BodyIsPassedOnAndNothingBehindIt) {
  Proxy proxy;
  Client client(proxy.port());
  client.send("POST " + proxy.far.uri("/p") + " HTTP/1.1\r\nContent-Length: 10\r\n\r\n01234");
  proxy.rest({&client});
  client.send("56789GET " + proxy.far.uri("/secret") + " HTTP/1.1\r\n\r\n");
  proxy.rest({&client});
  client.send("GET " + proxy.far.uri("/secret") + " HTTP/1.1\r\n\r\n");
  proxy.rest({&client});
  EXPECT_EQ(proxy.far.received, "POST /p HTTP/1.1\r\nHost: " + proxy.far.authority() +
                                    "\r\nContent-Length: 10\r\nConnection: close\r\n\r\n0123456789");
}

TEST(ProxyRequest, BodyIsPassedOnAsItComesWithoutHandler) {
  Proxy proxy;
  proxy.server->event_handler = nullptr;
  Client client(proxy.port());
  client.send("POST " + proxy.far.uri("/p") + " HTTP/1.1\r\nContent-Length: 6\r\n\r\nabc");
  proxy.rest({&client});
  const std::string head = "POST /p HTTP/1.1\r\nHost: " + proxy.far.authority() +
                           "\r\nContent-Length: 6\r\nConnection: close\r\n\r\n";
  EXPECT_EQ(proxy.far.received, head + "abc");
  client.send("defghi");
  proxy.rest({&client});
  EXPECT_EQ(proxy.far.received, head + "abcdef");
}

TEST(ProxyRequest, ChunkedBodyIsPassedOnToItsEnd) {
  const std::string chunks = "5;x=y\r\nhello\r\n0\r\nTrailer: t\r\n\r\n";
  for (const bool byte_by_byte : {false, true}) {
    Proxy proxy;
    Client client(proxy.port());
    client.send("POST " + proxy.far.uri("/p") + " HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n");
    const size_t step = byte_by_byte ? 1 : chunks.size();
    for (size_t at = 0; at < chunks.size(); at += step) {
      client.send(chunks.substr(at, step));
      proxy.turn();
    }
    client.send("GET /secret HTTP/1.1\r\n\r\n");
    proxy.rest({&client});
    EXPECT_EQ(proxy.far.received, "POST /p HTTP/1.1\r\nHost: " + proxy.far.authority() +
                                      "\r\nTransfer-Encoding: chunked\r\nConnection: close\r\n\r\n" + chunks);
  }
}

TEST(ProxyRequest, ReachesTheProxyOnlyAfterTheHandlerDeclined) {
  Proxy proxy;
  proxy.on_event = answer_with("mine");
  Client client(proxy.port());
  EXPECT_EQ(proxy.ask(client, "GET " + proxy.far.uri("/") + " HTTP/1.1\r\n\r\n"), chunked_reply("mine"));
  proxy.rest({&client});
  EXPECT_EQ(proxy.far.received, "");
  EXPECT_FALSE(client.closed);
}

/* --- Refusals ------------------------------------------------------------------------------------------ */

static void expect_refusal(Proxy &proxy, const std::string &request, const std::string &expected) {
  Client client(proxy.port());
  client.send(request);
  EXPECT_TRUE(proxy.run([&] { return client.closed; }, {&client})) << request;
  EXPECT_EQ(client.take(), expected) << request;
  EXPECT_EQ(proxy.far.received, "");
  client.close(); /* which the server waits for when the body had not come to its end */
  proxy.rest();
  EXPECT_EQ(proxy.sockets(), 0);
}

TEST(ProxyRefusal, UriThatNamesNoServer) {
  const std::string long_host(200, 'h');
  for (const std::string &uri : std::vector<std::string>{
           "https://127.0.0.1/", "http:/", "http://", "http:///x", "http://user@127.0.0.1/", "http://[::1]/",
           "http://127.0.0.1:x/", "http://127.0.0.1:0/", "http://127.0.0.1:65536/",
           "http://127.0.0.1:123456/", "http://127.0.0.1%20/", "http://127.0.0.1%0d%0a/", "httpx://a/",
           "http://" + long_host + "/"}) {
    Proxy proxy;
    expect_refusal(proxy, "GET " + uri + " HTTP/1.1\r\n\r\n", error_text(400, "Bad Request"));
  }
  for (const std::string uri : {"127.0.0.1:0", "127.0.0.1:65536", "/", "*", "http://127.0.0.1:80/", "a/b:80",
                                "a%20b:80", "127.0.0.1:80?x"}) {
    Proxy proxy;
    expect_refusal(proxy, "CONNECT " + uri + " HTTP/1.1\r\n\r\n", error_text(400, "Bad Request"));
  }
}

TEST(ProxyRefusal, HeadersThatServersCouldReadInTwoWays) {
  for (const std::string headers :
       {"Content-Length: 1\r\nContent-Length: 2\r\n", "Content-Length: -1\r\n", "Content-Length: +1\r\n",
        "Content-Length: 1x\r\n", "Content-Length: 1, 1\r\n", "Content-Length: \r\n",
        "Content-Length: 1\r\nTransfer-Encoding: chunked\r\n", "Transfer-Encoding: gzip\r\n",
        "Transfer-Encoding: chunked, gzip\r\n",
        "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n",
        "Foo\r\nTransfer-Encoding: chunked\r\n", "Transfer-Encoding : chunked\r\n", "B@d: x\r\n",
        "Connection: a,a,a,a,a,a,a,a,a,a,a,a,a,a,a,a,a\r\n"}) {
    Proxy proxy;
    expect_refusal(proxy, "GET " + proxy.far.uri("/") + " HTTP/1.1\r\n" + headers + "\r\nx",
                   error_text(400, "Bad Request"));
  }
}

TEST(ProxyRefusal, LinesThatFrameTheBodyCannotBeNominatedAway) {
  Proxy proxy;
  EXPECT_EQ(proxy.passed_on("POST " + proxy.far.uri("/") +
                            " HTTP/1.1\r\nConnection: content-length\r\nContent-Length: 2\r\n\r\nok"),
            "POST / HTTP/1.1\r\nHost: " + proxy.far.authority() +
                "\r\nContent-Length: 2\r\nConnection: close\r\n\r\nok");
}

TEST(ProxyRefusal, MalformedChunks) {
  for (const std::string chunks :
       {"x", "\r\n", "1\n", "1\r\nab\r\n", "1\r\na\n", "1\r\na\rx", "fffffffffffffffff\r\n", "0\r\n\n",
        "0\r\na\n", "1;\n", ";\r\n", "-1\r\n", "0\r\n\rx", "0\rx"}) {
    Proxy proxy;
    Client client(proxy.port());
    client.send("POST " + proxy.far.uri("/") + " HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n" + chunks);
    EXPECT_TRUE(proxy.run([&] { return client.closed; }, {&client})) << chunks;
    EXPECT_EQ(client.take(), error_text(400, "Bad Request")) << chunks;
    client.close();
    proxy.rest();
    EXPECT_EQ(proxy.sockets(), 0);
  }
}

TEST(ProxyRefusal, ServerThatCannotBeReached) {
  const std::string port = std::to_string(Far().port); /* closed again */
  for (const std::string &request : {"GET http://127.0.0.1:" + port + "/", "CONNECT 127.0.0.1:" + port}) {
    Proxy proxy;
    expect_refusal(proxy, request + " HTTP/1.1\r\n\r\n",
                   error_text(502, "Bad Gateway", "Connection refused\n"));
  }
  Proxy proxy;
  expect_refusal(proxy, "CONNECT 127.0.0.1:65535 HTTP/1.1\r\n\r\n",
                 error_text(502, "Bad Gateway", "The port cannot be used.\n"));
}

/* A name that cannot be resolved must not lead to this host, as the connection layer's 0.0.0.0 would. */
TEST(ProxyRefusal, NameThatNobodyKnows) {
  Proxy proxy;
  const std::string name(64, 'x'); /* longer than a label may be, so that nobody is asked */
  expect_refusal(proxy, "GET http://" + name + ":" + std::to_string(proxy.far.port) + "/ HTTP/1.1\r\n\r\n",
                 error_text(502, "Bad Gateway", "The host's name is not known.\n"));
}

TEST(ProxyRefusal, Datagram) {
  Proxy proxy("udp://127.0.0.1:0");
  const int fd = socket(AF_INET, SOCK_DGRAM, 0);
  sockaddr_in to = {};
  to.sin_family = AF_INET;
  to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  to.sin_port = htons(static_cast<uint16_t>(proxy.port()));
  const std::string request = "CONNECT " + proxy.far.authority() + " HTTP/1.1\r\n\r\n";
  sendto(fd, request.data(), request.size(), 0, reinterpret_cast<sockaddr *>(&to), sizeof(to));
  char buf[2000];
  ssize_t n = 0;
  EXPECT_TRUE(proxy.run([&] { return (n = recv(fd, buf, sizeof(buf), MSG_DONTWAIT)) > 0; }));
  EXPECT_EQ(std::string(buf, static_cast<size_t>(n)), error_text(405, "Method Not Allowed"));
  EXPECT_EQ(proxy.sockets(), 0);
  close(fd);
}

/* --- Replies ------------------------------------------------------------------------------------------- */

TEST(ProxyReply, IsPassedOnAndEndsTheConnection) {
  const struct {
    const char *method, *reply, *behind;
  } rows[] = {
      {"GET", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello", "next"},
      {"GET", "HTTP/1.1 200 OK\r\nServer: x\r\ncontent-length: 0\r\n\r\n", "next"},
      {"GET", "HTTP/1.1 404 Not Found\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n0\r\nT: 1\r\n\r\n",
       "next"},
      {"GET", "HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, Chunked\r\n\r\n0\r\n\r\n", "next"},
      {"HEAD", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n", "next"},
      {"HEAD", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n", "next"},
      {"GET", "HTTP/1.1 204 No Content\r\n\r\n", "next"},
      {"GET", "HTTP/1.1 304 Not Modified\r\nContent-Length: 9\r\n\r\n", "next"},
      {"GET", "HTTP/1.1 103 Early Hints\r\nLink: </x>\r\n\r\nHTTP/1.0 200 OK\r\nContent-Length: 1\r\n\r\nx",
       "next"},
      {"GET", "HTTP/1.0 200 \r\nContent-Length: 1\r\nConnection: close\r\n\r\nx", "next"},
  };
  for (const auto &row : rows) {
    for (const bool byte_by_byte : {false, true}) {
      Proxy proxy;
      Client client(proxy.port());
      client.send(get(proxy, row.method));
      EXPECT_TRUE(proxy.run([&] { return !proxy.far.received.empty(); }, {&client}));
      const std::string bytes = std::string(row.reply) + row.behind;
      for (size_t at = 0; at < bytes.size() && byte_by_byte; at++) {
        proxy.far.send(bytes.substr(at, 1));
        proxy.far.turn();
        proxy.turn();
      }
      if (!byte_by_byte) proxy.far.send(bytes);
      EXPECT_TRUE(proxy.run([&] { return client.closed; }, {&client})) << row.reply;
      EXPECT_EQ(client.take(), row.reply);
      proxy.rest();
      EXPECT_EQ(proxy.sockets(), 0);
    }
  }
}

TEST(ProxyReply, WithoutALengthEndsWithItsConnection) {
  const std::string reply = "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\n\r\nall of it";
  Proxy proxy;
  Client client(proxy.port());
  EXPECT_EQ(proxy.answer(client, get(proxy), reply, false), reply);
  EXPECT_FALSE(client.closed);
  proxy.far.send(" and more");
  proxy.far.close_when_sent = true;
  EXPECT_TRUE(proxy.run([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.take(), " and more");
}

TEST(ProxyReply, LinesForTheNextHopStayBehind) {
  Proxy proxy;
  Client client(proxy.port());
  EXPECT_EQ(
      proxy.answer(client, get(proxy),
                   "HTTP/1.1 200 OK\nX-Hop: 1\nConnection: x-hop, Close\nKeep-Alive: 5\nUpgrade: x\n"
                   "Proxy-Authenticate: x\nSet-Cookie: a\nSet-Cookie: b\nContent-Length: 2\n"
                   "Content-Length: 2\n\nok",
                   false),
      "HTTP/1.1 200 OK\nSet-Cookie: a\r\nSet-Cookie: b\r\nContent-Length: 2\r\nConnection: close\r\n\r\nok");
  EXPECT_TRUE(client.closed);
}

TEST(ProxyReply, CutShortIsCutShortForTheClientToo) {
  Proxy proxy;
  Client client(proxy.port());
  const std::string reply = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nonly this";
  EXPECT_EQ(proxy.answer(client, get(proxy), reply, true), reply);
  EXPECT_TRUE(client.closed);
  EXPECT_EQ(proxy.sockets(), 0);
}

TEST(ProxyReply, NoneOrAMalformedOneIsABadGateway) {
  const struct {
    std::string reply, detail;
  } rows[] = {
      {"", "The server closed without a reply.\n"},
      {"HTTP/1.1 200 OK\r\nContent-Le", "The server closed without a reply.\n"},
      {"HTTP/1.1 100 Continue", "The server closed without a reply.\n"},
      {"hello\r\n\r\n", "The server's reply is malformed.\n"},
      {"\r\n\r\n", "The server's reply is malformed.\n"},
      {"HTTP/2.0 200 OK\r\n\r\n", "The server's reply is malformed.\n"},
      {"HTTP/1.1 +20 OK\r\n\r\n", "The server's reply is malformed.\n"},
      {"HTTP/1.1 2000 OK\r\n\r\n", "The server's reply is malformed.\n"},
      {"HTTP/1.1 099 OK\r\n\r\n", "The server's reply is malformed.\n"},
      {"HTTP/1.1 20 OK\r\n\r\n", "The server's reply is malformed.\n"},
      {"HTTP/1.1 101 Switching Protocols\r\nUpgrade: x\r\n\r\n", "The server's reply is malformed.\n"},
      {"HTTP/1.1 200 OK\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n",
       "The server's reply is malformed.\n"},
      {"HTTP/1.1 200 OK\r\nno colon\r\n\r\n", "The server's reply is malformed.\n"},
      {"HTTP/1.1 200 OK\r\nX: " + std::string(70000, 'x'), "The server's reply is malformed.\n"},
  };
  for (const auto &row : rows) {
    Proxy proxy;
    Client client(proxy.port());
    EXPECT_EQ(proxy.answer(client, get(proxy), row.reply, true), error_text(502, "Bad Gateway", row.detail))
        << row.reply.substr(0, 60);
    EXPECT_TRUE(client.closed);
    EXPECT_EQ(proxy.sockets(), 0);
  }
}

TEST(ProxyReply, StatusGoesToTheAccessLog) {
  TempDir dir;
  Proxy proxy;
  mg_set_option(proxy.server, "access_log_file", dir.file("log").c_str());
  Client client(proxy.port());
  proxy.answer(client, get(proxy), "HTTP/1.1 503 Busy\r\nContent-Length: 0\r\n\r\n", false);
  const std::string line = "\"GET " + proxy.far.uri("/") + " HTTP/1.1\" 503 0 - -\n";
  const std::string log = read_file(dir.file("log"));
  EXPECT_EQ(log.substr(log.find('"')), line);
}

TEST(ProxyReply, OfTheServerItselfIsServedOnce) {
  Proxy proxy;
  Client client(proxy.port());
  const std::string own = "http://127.0.0.1:" + std::to_string(proxy.port());
  /* Asked by itself the server gets no absolute URI, so that no request goes round in circles. */
  proxy.on_event = [](mg_connection *c, mg_event event) -> int {
    if (event == MG_AUTH) return MG_TRUE;
    if (event != MG_REQUEST || strncmp(c->uri, "http", 4) == 0) return 0;
    mg_printf_data(c, "%s", c->uri);
    return MG_TRUE;
  };
  client.send("GET " + own + "/http://127.0.0.1/x HTTP/1.1\r\n\r\n");
  EXPECT_TRUE(proxy.run([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.take(), "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                           "12\r\n/http:/127.0.0.1/x\r\n0\r\n\r\n");
}

/* --- Bodies -------------------------------------------------------------------------------------------- */

TEST(ProxyBody, EndsAtTheSameByteHoweverItComes) {
  const std::string chunks = "A\r\n0123456789\r\n1 ; a=\"b\"\r\nx\r\n000\r\nT: 1\r\nU: 2\r\n\r\n";
  const std::string bytes = chunks + "behind";
  for (size_t cut = 0; cut <= bytes.size(); cut++) {
    struct body body = {};
    body.kind = BODY_CHUNKED;
    size_t taken = follow_body(&body, bytes.data(), cut);
    EXPECT_EQ(taken, std::min(cut, chunks.size()));
    taken += follow_body(&body, bytes.data() + cut, bytes.size() - cut);
    EXPECT_EQ(taken, chunks.size());
    EXPECT_TRUE(body_has_ended(&body));
    EXPECT_FALSE(body_is_malformed(&body));
  }
}
