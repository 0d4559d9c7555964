/* Many clients, few descriptors, clients that misbehave. */
#include "tests/unit/server/server_harness.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

static const char get_request[] = "GET /x HTTP/1.1\r\n\r\n";

/* Sets the limit of open descriptors and puts the old one back. */
struct DescriptorLimit {
  explicit DescriptorLimit(rlim_t soft) {
    getrlimit(RLIMIT_NOFILE, &old);
    rlimit changed = old;
    changed.rlim_cur = soft;
    works = setrlimit(RLIMIT_NOFILE, &changed) == 0;
  }
  ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &old); }
  DescriptorLimit(const DescriptorLimit &) = delete;
  DescriptorLimit &operator=(const DescriptorLimit &) = delete;
  rlimit old;
  bool works;
};

static int lowest_free_descriptor() {
  const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
  close(fd);
  return fd;
}

TEST(Limits, FifteenHundredClientsAreServed) {
  const DescriptorLimit limit(4096);
  if (!limit.works) GTEST_SKIP() << "the hard limit of descriptors is too low";
  TestServer server;
  server.on_event = answer_with("ok");
  std::vector<std::unique_ptr<Client>> clients;
  for (int i = 0; i < 1500; i++) {
    clients.push_back(std::make_unique<Client>(server.port()));
    ASSERT_NE(clients.back()->fd, -1);
    if (i % 100 == 99) server.run_passes(8);
  }
  ASSERT_TRUE(server.run_until([&] { return server.client_count() == 1500; }));
  for (const auto &client : clients) client->send(get_request);
  for (const auto &client : clients) {
    ASSERT_TRUE(server.run_until([&] { return client->received.size() == chunked_reply("ok").size(); },
                                 {client.get()}));
    EXPECT_EQ(client->take(), chunked_reply("ok"));
  }
}

TEST(Limits, WithoutDescriptorsExistingClientsAreServedAndNewOnesWait) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client first(server.port());
  EXPECT_EQ(server.ask(first, get_request), chunked_reply("ok"));
  Client waiting(server.port());
  const DescriptorLimit limit(static_cast<rlim_t>(lowest_free_descriptor()));
  ASSERT_TRUE(server.run_until([&] { return server.server->ns_mgr.accept_resume != 0; }));
  server.server->ns_mgr.accept_resume = time(nullptr) + 1000; /* only a close may resume it */
  server.run_passes(1);                                       /* takes the listener out of the poller */
  for (ns_connection *c = ns_next(&server.server->ns_mgr, nullptr); c != nullptr; c = c->next) {
    if (c->flags & CONN_LISTENING) {
      EXPECT_EQ(c->poll_events, 0u);
    }
  }
  for (int i = 0; i < 20; i++) EXPECT_EQ(server.ask(first, get_request), chunked_reply("ok"));
  EXPECT_EQ(server.client_count(), 1);
  first.close(); /* frees two descriptors: its own and the server's */
  EXPECT_EQ(server.ask(waiting, get_request), chunked_reply("ok"));
}

TEST(Limits, AcceptingResumesByItselfOnceDescriptorsAreFree) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client waiting(server.port());
  {
    const DescriptorLimit limit(static_cast<rlim_t>(lowest_free_descriptor()));
    ASSERT_TRUE(server.run_until([&] { return server.server->ns_mgr.accept_resume != 0; }));
  }
  server.server->ns_mgr.accept_resume = 1; /* long past */
  EXPECT_EQ(server.ask(waiting, get_request), chunked_reply("ok"));
}

TEST(Limits, ClientClosedBeforeTheWaitMakesTheSamePassAcceptAgain) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client idle(server.port());
  EXPECT_EQ(server.ask(idle, get_request), chunked_reply("ok"));
  server.server->ns_mgr.accept_resume = time(nullptr) + 1000;
  server.run_passes(1); /* takes the listener out of the poller */
  server.first_client()->last_io_time = 1;
  Client waiting(server.port());
  server.run_passes(1);
  EXPECT_EQ(server.events.back(), "close");
  ASSERT_EQ(server.client_count(), 1);
  EXPECT_EQ(server.ask(waiting, get_request), chunked_reply("ok"));
}

/* How many receive events one pass gives when the client sends 2048 bytes more at each of them. */
static int events_of_a_pass(const std::string &listening_port, bool tls) {
  TestServer server(listening_port);
  Client client(server.port(), tls);
  int received = 0;
  server.on_event = [&](mg_connection *, mg_event event) -> int {
    if (event == MG_RECV && ++received < 1000) client.send(std::string(2048, 'x'));
    return event == MG_AUTH ? MG_TRUE : 0;
  };
  client.send("POST /x HTTP/1.1\r\nContent-Length: 9000000\r\n\r\n");
  EXPECT_TRUE(server.run_until([&] { return received > 0; }, {&client}));
  const int before = received;
  server.turn();
  const int one_pass = received - before;
  EXPECT_TRUE(server.run_until([&] { return received >= 1000; }, {&client})); /* it goes on in later passes */
  return one_pass;
}

TEST(Limits, ClientThatSendsAsFastAsItIsReadGetsOnlyItsTurn) {
  TempDir dir;
  write_certificate(dir.file("ssl.pem"));
  EXPECT_LE(events_of_a_pass("127.0.0.1:0", false), 64);
  EXPECT_LE(events_of_a_pass("ssl://127.0.0.1:0:" + dir.file("ssl.pem"), true), 64);
}

TEST(Limits, ClientThatNeverReadsHoldsUpNobody) {
  TestServer server;
  const std::string large(20000000, 'l');
  server.on_event = answer_with(large);
  Client lazy(server.port());
  lazy.reading = false;
  lazy.send(get_request);
  ASSERT_TRUE(server.run_until([&] { return server.first_client() && server.first_client()->send_blocked; }));
  const size_t queued = server.first_client()->send_iobuf.len;
  server.on_event = answer_with("ok");
  Client other(server.port());
  for (int i = 0; i < 20; i++) EXPECT_EQ(server.ask(other, get_request), chunked_reply("ok"));
  EXPECT_EQ(server.first_client()->next->send_iobuf.len, queued);
  lazy.reading = true;
  const size_t whole = chunked_reply(large).size();
  ASSERT_TRUE(server.run_until([&] { return lazy.received.size() == whole; }, {&lazy}));
}

TEST(Limits, BlockedOutputDoesNotKeepTheLoopBusy) {
  TestServer server;
  server.on_event = answer_with(std::string(20000000, 'l'));
  Client lazy(server.port());
  lazy.reading = false;
  lazy.send(get_request);
  ASSERT_TRUE(server.run_until([&] { return server.first_client() && server.first_client()->send_blocked; }));
  server.run_passes(50);
  const ns_connection *c = server.first_client();
  const size_t queued = c->send_iobuf.len;
  server.run_passes(50);
  EXPECT_EQ(c->send_iobuf.len, queued);
  EXPECT_EQ(c->ready, 0u);
}

TEST(Limits, ClientThatAsksOnWithoutReadingIsNotReadAnyMore) {
  TempDir dir;
  write_certificate(dir.file("ssl.pem"));
  for (const bool tls : {false, true}) {
    TestServer server(tls ? "ssl://127.0.0.1:0:" + dir.file("ssl.pem") : "127.0.0.1:0");
    const std::string reply(100000, 'r');
    server.on_event = answer_with(reply);
    Client greedy(server.port(), tls);
    greedy.send(get_request);
    ASSERT_TRUE(
        server.run_until([&] { return greedy.received.size() == chunked_reply(reply).size(); }, {&greedy}));
    greedy.reading = false;
    for (int i = 0; i < 400; i++) {
      greedy.send(get_request);
      server.turn();
    }
    ASSERT_NE(server.first_client(), nullptr);
    EXPECT_TRUE(server.first_client()->flags & CONN_WANT_WRITE);
    EXPECT_LT(server.first_client()->send_iobuf.len, 1300000u);
    const size_t before = server.events.size();
    greedy.reading = true;
    ASSERT_TRUE(server.run_until([&] { return server.events.size() > before; }, {&greedy}));
  }
}

TEST(Limits, IdleConnectionHoldsNoBuffers) {
  TestServer server;
  server.on_event = answer_with("ok");
  Client client(server.port());
  server.ask(client, get_request);
  const ns_connection *c = server.first_client();
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->send_iobuf.buf, nullptr);
  EXPECT_EQ(c->recv_iobuf.buf, nullptr);
  EXPECT_EQ(static_cast<connection *>(c->user_data)->request, nullptr);
  EXPECT_LT(sizeof(ns_connection) + sizeof(connection), 1024u - 2 * 16);
}

TEST(Limits, RandomBytesOnBothPortsDoNoHarm) {
  TempDir dir;
  write_certificate(dir.file("ssl.pem"));
  TestServer server;
  const int plain = server.port();
  mg_set_option(server.server, "listening_port", ("ssl://127.0.0.1:0:" + dir.file("ssl.pem")).c_str());
  const int tls = server.port();
  server.on_event = answer_with("ok");
  std::mt19937 random(12345);
  for (int i = 0; i < 300; i++) {
    std::string bytes = i % 3 == 0   ? "GET / HTTP/1.1\r\n"
                        : i % 3 == 1 ? std::string("\x16\x03\x01\x00\xff", 5)
                                     : "";
    const size_t length = bytes.size() + random() % 3000;
    while (bytes.size() < length) bytes += static_cast<char>(random());
    Client client(i % 2 == 0 ? plain : tls);
    client.send(bytes);
    server.run_passes(3, {&client});
  }
  Client good(plain), good_tls(tls, true);
  EXPECT_EQ(server.ask(good, get_request), chunked_reply("ok"));
  EXPECT_EQ(server.ask(good_tls, get_request), chunked_reply("ok"));
}
