/* The forward proxy: tunnels, the pace of both sides, and whoever vanishes. */
#include "tests/unit/server/proxy_harness.h"

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
  const std::string up = bytes_of(2000000), down = bytes_of(3000001);
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
    make_small(proxy.peer()->sock);
    client.send(bytes_of(2500000));
    EXPECT_TRUE(proxy.run([&] { return proxy.peer()->send_iobuf.len > MG_MAX_QUEUED_OUTPUT; }, {&client}));
    ns_connection *peer = proxy.peer();
    proxy.served_client()->flags |= CONN_CLOSE_NOW;
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
    make_small(client.fd);
    const std::string body = bytes_of(3000000);
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: 3000000\r\n\r\n";
    client.send(tunnel ? "CONNECT " + proxy.far.authority() + " HTTP/1.1\r\n\r\n" : get(proxy));
    EXPECT_TRUE(proxy.run([&] { return proxy.peer() != nullptr && !(proxy.peer()->flags & CONN_CONNECTING); },
                          {&client}));
    make_small(proxy.served_client()->sock);
    client.reading = false;
    proxy.far.send(head + body);
    proxy.run_until_held(proxy.peer(), {&client});
    EXPECT_LE(proxy.served_client()->send_iobuf.len, MG_MAX_QUEUED_OUTPUT + 4096u);
    EXPECT_EQ(proxy.peer()->recv_iobuf.len, 0u);
    client.reading = true;
    const std::string expected = (tunnel ? established : "") + head + body;
    EXPECT_TRUE(proxy.run([&] { return client.received.size() >= expected.size(); }, {&client}));
    EXPECT_TRUE(client.take() == expected);
  }
}

TEST(ProxyPace, InterimRepliesAreNoWayAround) {
  Proxy proxy;
  Client client(proxy.port());
  make_small(client.fd);
  client.send(get(proxy));
  EXPECT_TRUE(proxy.run([&] { return !proxy.far.received.empty(); }, {&client}));
  make_small(proxy.served_client()->sock);
  client.reading = false;
  std::string flood;
  for (int i = 0; i < 1500; i++) flood += "HTTP/1.1 102 \r\nX: " + std::string(2000, 'x') + "\r\n\r\n";
  proxy.far.send(flood);
  proxy.run_until_held(proxy.peer(), {&client});
  EXPECT_LE(proxy.served_client()->send_iobuf.len, MG_MAX_QUEUED_OUTPUT + 4096u);
}

TEST(ProxyPace, ClientIsReadOnlyAsFastAsTheServerTakes) {
  Proxy proxy;
  TunnelClient client(proxy);
  make_small(proxy.peer()->sock);
  const std::string up = bytes_of(3000000);
  proxy.far.reading = false;
  client.send(up);
  proxy.run_until_held(proxy.served_client(), {&client});
  for (int i = 0; i < 100; i++) {
    proxy.far.send("chatter"); /* what comes back does not let the client go on */
    proxy.rest({&client});
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
