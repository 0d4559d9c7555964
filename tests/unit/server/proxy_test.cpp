/* The forward proxy between a client and a server that the test plays itself. Every byte that either of them
 * gets is compared. */
#include "tests/unit/server/server_harness.h"

#include "server/mg_proxy.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

/* The server beyond the proxy: takes one connection, without blocking. */
struct Far {
  Far() : listener(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0)) {
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
  Far far;
};

static std::string error_text(int status, const std::string &reason, const std::string &detail = "") {
  const std::string body = std::to_string(status) + " " + reason + "\n" + detail;
  return "HTTP/1.1 " + std::to_string(status) + " " + reason +
         "\r\nContent-Length: " + std::to_string(body.size()) + "\r\nContent-Type: text/plain\r\n\r\n" + body;
}

static std::string bytes_of(size_t len) {
  std::string bytes(len, '\0');
  for (size_t i = 0; i < len; i++) bytes[i] = static_cast<char>(i * 31 + i / 251 + i / 65521);
  return bytes;
}

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

static std::string get(const Proxy &proxy, const char *method = "GET") {
  return std::string(method) + " " + proxy.far.uri("/") + " HTTP/1.1\r\n\r\n";
}

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

/* --- Tunnels ------------------------------------------------------------------------------------------- */

static const char established[] = "HTTP/1.1 200 OK\r\n\r\n";

/* A client whose tunnel to the far server stands. */
struct TunnelClient : Client {
  explicit TunnelClient(Proxy &proxy, const std::string &early = "", bool tls = false)
      : Client(proxy.port(), tls) {
    send("CONNECT " + proxy.far.authority() + " HTTP/1.1\r\nHost: x\r\n\r\n" + early);
    EXPECT_TRUE(proxy.run([&] { return received.size() >= strlen(established); }, {this}));
    proxy.rest({this});
    EXPECT_EQ(take(), established);
  }
};

TEST(ProxyTunnel, PassesBytesBothWays) {
  Proxy proxy;
  TunnelClient client(proxy, std::string("early\0\r\n\r\n", 10));
  EXPECT_EQ(proxy.far.received, std::string("early\0\r\n\r\n", 10));
  proxy.far.send(bytes_of(300));
  client.send("GET / HTTP/1.1\r\n\r\n");
  proxy.rest({&client});
  EXPECT_EQ(client.take(), bytes_of(300));
  EXPECT_EQ(proxy.far.received, std::string("early\0\r\n\r\n", 10) + "GET / HTTP/1.1\r\n\r\n");
}

TEST(ProxyTunnel, CarriesMuchBothWaysAtOnce) {
  Proxy proxy;
  TunnelClient client(proxy);
  const std::string up = bytes_of(5000000), down = bytes_of(7000001);
  client.send(up);
  proxy.far.send(down);
  const auto all_there = [&] {
    return client.received.size() >= down.size() && proxy.far.received.size() >= up.size();
  };
  EXPECT_TRUE(proxy.run(all_there, {&client}));
  EXPECT_TRUE(client.take() == down);
  EXPECT_TRUE(proxy.far.received == up);
}

TEST(ProxyTunnel, EndOfTheServerComesAfterAllItsBytes) {
  Proxy proxy;
  TunnelClient client(proxy);
  const std::string down = bytes_of(3000000);
  client.reading = false;
  proxy.far.send(down);
  proxy.far.close_when_sent = true;
  proxy.rest({&client});
  client.reading = true;
  EXPECT_TRUE(proxy.run([&] { return client.closed; }, {&client}));
  EXPECT_TRUE(client.take() == down);
  EXPECT_EQ(proxy.sockets(), 0);
}

TEST(ProxyTunnel, EndOfTheClientComesAfterAllItsBytes) {
  Proxy proxy;
  TunnelClient client(proxy);
  const std::string up = bytes_of(3000000);
  proxy.far.reading = false;
  client.send(up);
  EXPECT_TRUE(proxy.run([&] { return proxy.peer()->send_iobuf.len > 100000; }, {&client}));
  proxy.far.reading = true;
  /* What the client's own socket still holds is sent by its turns; then it closes with the last byte sent. */
  EXPECT_TRUE(proxy.run([&] { return proxy.far.received.size() + 1000000 > up.size(); }, {&client}));
  client.send("last words");
  client.shut_down_sending();
  EXPECT_TRUE(proxy.run([&] { return proxy.far.closed; }, {&client}));
  EXPECT_TRUE(proxy.far.received == up + "last words");
  EXPECT_EQ(proxy.sockets(), 0);
}

TEST(ProxyTunnel, LastBytesOfAClientThatHasGoneDoNotWaitForEver) {
  for (const bool by_answer : {false, true}) {
    Proxy proxy;
    TunnelClient client(proxy);
    proxy.far.reading = false;
    client.send(bytes_of(16000000));
    EXPECT_TRUE(proxy.run([&] { return proxy.peer()->send_iobuf.len > MG_MAX_QUEUED_OUTPUT; }, {&client}));
    proxy.first_client();
    ns_connection *peer = proxy.peer();
    static_cast<connection *>(peer->user_data)->ns_conn->flags |= CONN_CLOSE_NOW;
    proxy.rest();
    ASSERT_EQ(proxy.peer(), peer);
    EXPECT_EQ(proxy.sockets(), 1);
    peer->last_io_time = time(nullptr) - 299;
    proxy.turn();
    EXPECT_EQ(proxy.sockets(), 1);
    if (by_answer) {
      proxy.far.send("nobody hears this");
    } else {
      peer->last_io_time = time(nullptr) - 302;
    }
    proxy.rest();
    EXPECT_EQ(proxy.sockets(), 0);
  }
}

TEST(ProxyTunnel, RunsOverTlsToTheProxyToo) {
  TempDir dir;
  write_certificate(dir.file("ssl.pem"));
  Proxy proxy("ssl://127.0.0.1:0:" + dir.file("ssl.pem"));
  TunnelClient client(proxy, "early", true);
  const std::string up = bytes_of(400000), down = bytes_of(600000);
  client.send(up);
  proxy.far.send(down);
  EXPECT_TRUE(proxy.run(
      [&] { return client.received.size() >= down.size() && proxy.far.received.size() >= up.size() + 5; },
      {&client}));
  EXPECT_TRUE(client.take() == down);
  EXPECT_TRUE(proxy.far.received == "early" + up);
}

/* --- Speed of each side -------------------------------------------------------------------------------- */

TEST(ProxyPace, ServerIsReadOnlyAsFastAsTheClientTakes) {
  for (const bool tunnel : {false, true}) {
    Proxy proxy;
    Client client(proxy.port());
    const std::string body = bytes_of(12000000);
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: 12000000\r\n\r\n";
    client.send(tunnel ? "CONNECT " + proxy.far.authority() + " HTTP/1.1\r\n\r\n" : get(proxy));
    EXPECT_TRUE(proxy.run([&] { return proxy.peer() != nullptr && !(proxy.peer()->flags & CONN_CONNECTING); },
                          {&client}));
    client.reading = false;
    proxy.far.send(head + body);
    for (int i = 0; i < 400; i++) {
      proxy.far.turn();
      proxy.turn();
    }
    EXPECT_LE(proxy.peer()->recv_iobuf.len, 4096u);
    EXPECT_LE(static_cast<connection *>(proxy.peer()->user_data)->ns_conn->send_iobuf.len,
              MG_MAX_QUEUED_OUTPUT + 4096u);
    client.reading = true;
    const std::string expected = (tunnel ? established : "") + head + body;
    EXPECT_TRUE(proxy.run([&] { return client.received.size() >= expected.size(); }, {&client}));
    EXPECT_TRUE(client.take() == expected);
  }
}

TEST(ProxyPace, InterimRepliesWithoutEndDoNotPileUp) {
  Proxy proxy;
  Client client(proxy.port());
  client.send(get(proxy));
  EXPECT_TRUE(proxy.run([&] { return proxy.peer() != nullptr && !(proxy.peer()->flags & CONN_CONNECTING); },
                        {&client}));
  client.reading = false;
  std::string interim;
  while (interim.size() < 12000000) interim += "HTTP/1.1 103 Early Hints\r\nLink: <a>\r\n\r\n";
  proxy.far.send(interim);
  for (int i = 0; i < 400; i++) {
    proxy.far.turn();
    proxy.turn();
  }
  EXPECT_LE(static_cast<connection *>(proxy.peer()->user_data)->ns_conn->send_iobuf.len,
            MG_MAX_QUEUED_OUTPUT + 4096u);
}

TEST(ProxyPace, ClientIsReadOnlyAsFastAsTheServerTakes) {
  Proxy proxy;
  TunnelClient client(proxy);
  const std::string up = bytes_of(12000000);
  proxy.far.reading = false;
  client.send(up);
  for (int i = 0; i < 400; i++) {
    proxy.far.send("chatter"); /* what comes back does not let the client go on */
    proxy.far.turn();
    proxy.turn();
    client.turn();
  }
  EXPECT_LE(proxy.peer()->send_iobuf.len, MG_MAX_QUEUED_OUTPUT + 4096u);
  proxy.far.reading = true;
  EXPECT_TRUE(proxy.run([&] { return proxy.far.received.size() >= up.size(); }, {&client}));
  EXPECT_TRUE(proxy.far.received == up);
}

/* --- Whoever vanishes ---------------------------------------------------------------------------------- */

TEST(ProxyEnd, ClientThatVanishesTakesItsServerAlong) {
  for (const char *request : {"GET http://", "CONNECT "}) {
    Proxy proxy;
    Client client(proxy.port());
    client.send(request + proxy.far.authority() + (request[0] == 'G' ? "/" : "") + " HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(proxy.run([&] { return proxy.peer() != nullptr; }, {&client}));
    proxy.rest({&client});
    client.close();
    EXPECT_TRUE(proxy.run([&] { return proxy.far.closed; }));
    proxy.rest();
    EXPECT_EQ(proxy.sockets(), 0);
  }
}

TEST(ProxyEnd, ClientMayVanishBeforeTheServerIsConnected) {
  Proxy proxy;
  {
    Client client(proxy.port());
    client.send("CONNECT " + proxy.far.authority() + " HTTP/1.1\r\n\r\nearly");
  }
  for (int i = 0; i < 10; i++) proxy.turn();
  EXPECT_EQ(proxy.sockets(), 0);
}

TEST(ProxyEnd, ServerMayBeDestroyedInTheMiddle) {
  Far far;
  Client *left = nullptr;
  {
    Proxy proxy;
    left = new TunnelClient(proxy);
    proxy.far.send("bytes on their way");
  }
  delete left;
  EXPECT_EQ(far.received, "");
}

/* --- Iterating clients --------------------------------------------------------------------------------- */

TEST(ProxyPeer, IsNoClientOfTheServer) {
  Proxy proxy;
  Client first(proxy.port());
  proxy.rest({&first});
  TunnelClient second(proxy);
  std::vector<int> ports;
  for (mg_connection *c = mg_next(proxy.server, nullptr); c != nullptr; c = mg_next(proxy.server, c)) {
    ports.push_back(c->remote_port);
  }
  EXPECT_EQ(ports, (std::vector<int>{second.local_port(), first.local_port()}));
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
