/* The event loop and its connections, without HTTP. */
#include "tests/unit/server/server_harness.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/epoll.h>
#include <unistd.h>

struct Event {
  int number;
  int value;
  bool operator==(const Event &) const = default;
};

static std::ostream &operator<<(std::ostream &out, const Event &e) {
  return out << e.number << ":" << e.value;
}

/* A manager whose connections note their events here. */
struct Loop {
  Loop() { ns_mgr_init(&mgr, this); }
  ~Loop() {
    on_event = nullptr; /* the test's variables are gone already, and there is one more pass */
    ns_mgr_free(&mgr);
  }
  Loop(const Loop &) = delete;
  Loop &operator=(const Loop &) = delete;

  static void note(ns_connection *c, int event, void *data) {
    auto *loop = static_cast<Loop *>(c->mgr->user_data);
    const bool counts = event == NET_EV_RECV || event == NET_EV_SEND || event == NET_EV_CONNECT;
    if (event == NET_EV_POLL) {
      loop->polls++;
    } else {
      loop->events.push_back({event, counts ? *static_cast<int *>(data) : 0});
    }
    if (loop->on_event) loop->on_event(c, event, data);
  }

  int listen(const char *address = "127.0.0.1:0") {
    ns_connection *c = ns_bind(&mgr, address, note, nullptr);
    return c == nullptr ? -1 : ntohs(c->sa.sin.sin_port);
  }

  bool run_until(const std::function<bool()> &condition, const std::vector<Client *> &clients = {}) {
    for (int i = 0; i < 20000 && !condition(); i++) {
      ns_mgr_poll(&mgr, i < 100 ? 0 : 1);
      for (Client *client : clients) client->turn();
    }
    return condition();
  }

  bool seen(int number) const {
    for (const Event &e : events) {
      if (e.number == number) return true;
    }
    return false;
  }

  ns_mgr mgr;
  std::vector<Event> events;
  int polls = 0;
  std::function<void(ns_connection *, int, void *)> on_event;
};

TEST(Loop, IgnoresSigpipeAndOpensItsControlChannel) {
  Loop loop;
  struct sigaction action;
  sigaction(SIGPIPE, nullptr, &action);
  EXPECT_EQ(action.sa_handler, SIG_IGN);
  EXPECT_TRUE(fcntl(loop.mgr.ctl[0], F_GETFD) & FD_CLOEXEC);
  EXPECT_TRUE(fcntl(loop.mgr.ctl[1], F_GETFD) & FD_CLOEXEC);
}

TEST(Loop, NewConnectionsAreFirstInTheList) {
  Loop loop;
  ns_connection *a = ns_bind(&loop.mgr, "127.0.0.1:0", Loop::note, nullptr);
  ns_connection *b = ns_bind(&loop.mgr, "127.0.0.1:0", Loop::note, nullptr);
  EXPECT_EQ(ns_next(&loop.mgr, nullptr), b);
  EXPECT_EQ(ns_next(&loop.mgr, b), a);
  EXPECT_EQ(ns_next(&loop.mgr, a), nullptr);
  ns_close_conn(b);
  EXPECT_EQ(ns_next(&loop.mgr, nullptr), a);
  EXPECT_EQ(a->prev, nullptr);
}

TEST(Loop, PollEventGoesToEveryConnectionButListeners) {
  Loop loop;
  const int port = loop.listen();
  Client client(port);
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_ACCEPT); }));
  loop.polls = 0;
  for (int i = 0; i < 5; i++) ns_mgr_poll(&loop.mgr, 0);
  EXPECT_EQ(loop.polls, 5);
}

TEST(Loop, WrappedSocketIsNonBlockingAndCloseOnExec) {
  Loop loop;
  int sp[2];
  ASSERT_EQ(ns_socketpair(sp), 1);
  ns_connection *c = ns_add_sock(&loop.mgr, sp[0], Loop::note, &loop);
  EXPECT_TRUE(fcntl(sp[0], F_GETFL) & O_NONBLOCK);
  EXPECT_TRUE(fcntl(sp[0], F_GETFD) & FD_CLOEXEC);
  EXPECT_EQ(c->user_data, &loop);
  EXPECT_EQ(send(sp[1], "ping", 4, 0), 4);
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_RECV); }));
  EXPECT_EQ(std::string(c->recv_iobuf.buf, c->recv_iobuf.len), "ping");
  close(sp[1]);
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_CLOSE); }));
}

TEST(Loop, AcceptedConnectionKnowsItsListenerAndPeer) {
  Loop loop;
  int marker = 0;
  const int port = loop.listen();
  ns_connection *listener = ns_next(&loop.mgr, nullptr);
  listener->proto_data = &marker;
  ns_connection *accepted = nullptr;
  int peer_port = 0;
  loop.on_event = [&](ns_connection *c, int event, void *data) {
    if (event != NET_EV_ACCEPT) return;
    accepted = c;
    peer_port = ntohs(static_cast<socket_address *>(data)->sin.sin_port);
  };
  Client client(port);
  ASSERT_TRUE(loop.run_until([&] { return accepted != nullptr; }));
  EXPECT_EQ(accepted->listener, listener);
  EXPECT_EQ(accepted->proto_data, &marker);
  EXPECT_EQ(accepted->ssl_ctx, nullptr);
  EXPECT_EQ(peer_port, client.local_port());
  EXPECT_EQ(listener->listener, nullptr);
}

TEST(Loop, EachChunkOf2048BytesIsAnEventOfItsOwn) {
  Loop loop;
  Client client(loop.listen());
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_ACCEPT); }));
  loop.events.clear();
  client.send(std::string(5000, 'x'));
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_RECV); }));
  EXPECT_EQ(loop.events, (std::vector<Event>{{NET_EV_RECV, 2048}, {NET_EV_RECV, 2048}, {NET_EV_RECV, 904}}));
}

TEST(Loop, PeersCloseIsSeenInTheSamePassAfterItsData) {
  Loop loop;
  Client client(loop.listen());
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_ACCEPT); }));
  loop.events.clear();
  client.send(std::string(3000, 'x'));
  client.close();
  usleep(1000);
  ns_mgr_poll(&loop.mgr, 1000);
  EXPECT_EQ(loop.events, (std::vector<Event>{{NET_EV_RECV, 2048}, {NET_EV_RECV, 952}, {NET_EV_CLOSE, 0}}));
}

TEST(Loop, OutputLeavesInTheNextPassAndItsMemoryGoesBack) {
  Loop loop;
  Client client(loop.listen());
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_ACCEPT); }));
  ns_connection *c = ns_next(&loop.mgr, nullptr);
  loop.events.clear();
  EXPECT_EQ(ns_send(c, "hello", 5), 5);
  EXPECT_EQ(ns_printf(c, " %d", 42), 3);
  EXPECT_EQ(ns_send(c, "x", 0), 0);
  client.turn();
  EXPECT_EQ(client.received, "");
  ns_mgr_poll(&loop.mgr, 1000);
  EXPECT_EQ(loop.events, (std::vector<Event>{{NET_EV_SEND, 8}}));
  EXPECT_EQ(c->send_iobuf.buf, nullptr);
  ASSERT_TRUE(loop.run_until([&] { return client.received == "hello 42"; }, {&client}));
}

TEST(Loop, HeldOutputStaysUntilItIsReleased) {
  Loop loop;
  Client client(loop.listen());
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_ACCEPT); }));
  ns_connection *c = ns_next(&loop.mgr, nullptr);
  c->flags |= CONN_HOLD_OUTPUT;
  ns_send(c, "held", 4);
  for (int i = 0; i < 5; i++) ns_mgr_poll(&loop.mgr, 0);
  EXPECT_FALSE(loop.seen(NET_EV_SEND));
  c->flags &= ~CONN_HOLD_OUTPUT;
  ASSERT_TRUE(loop.run_until([&] { return client.received == "held"; }, {&client}));
}

TEST(Loop, FinishedConnectionStaysOpenUntilAllIsWritten) {
  Loop loop;
  Client client(loop.listen());
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_ACCEPT); }));
  ns_connection *c = ns_next(&loop.mgr, nullptr);
  const std::string much(20000000, 'm'); /* far more than the sockets' buffers hold */
  ns_send(c, much.data(), static_cast<int>(much.size()));
  c->flags |= CONN_FINISHED_SENDING;
  client.reading = false;
  for (int i = 0; i < 50; i++) ns_mgr_poll(&loop.mgr, 0);
  EXPECT_FALSE(loop.seen(NET_EV_CLOSE));
  EXPECT_GT(c->send_iobuf.len, 0u);
  client.reading = true;
  ASSERT_TRUE(loop.run_until([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.received.size(), much.size());
}

TEST(Loop, DoomedConnectionIsClosedWithItsOutputDiscarded) {
  Loop loop;
  Client client(loop.listen());
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_ACCEPT); }));
  ns_connection *c = ns_next(&loop.mgr, nullptr);
  ns_send(c, "never", 5);
  c->flags |= CONN_CLOSE_NOW;
  ASSERT_TRUE(loop.run_until([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.received, "");
  EXPECT_EQ(loop.events.back(), (Event{NET_EV_CLOSE, 0}));
}

TEST(Loop, WriteToAPeerThatIsGoneClosesTheConnection) {
  Loop loop;
  Client client(loop.listen());
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_ACCEPT); }));
  ns_connection *c = ns_next(&loop.mgr, nullptr);
  client.close();
  ns_send(c, "late", 4);
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_CLOSE); }));
}

TEST(Loop, ClosedConnectionIsForgottenWhileAForkedChildHoldsItsSocket) {
  Loop loop;
  Client client(loop.listen());
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_ACCEPT); }));
  ns_connection *c = ns_next(&loop.mgr, nullptr);
  ns_mgr_poll(&loop.mgr, 0);
  const int childs = dup(c->sock);
  c->flags |= CONN_CLOSE_NOW;
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_CLOSE); }));
  loop.events.clear();
  client.send("to nobody");
  struct epoll_event reported;
  EXPECT_EQ(epoll_wait(loop.mgr.poller, &reported, 1, 0), 0);
  close(childs);
}

TEST(Connect, SucceedsWithZeroAndThenCarriesData) {
  Loop server, loop;
  const std::string address = "127.0.0.1:" + std::to_string(server.listen());
  ns_connection *c = ns_connect(&loop.mgr, address.c_str(), Loop::note, nullptr);
  ASSERT_NE(c, nullptr);
  EXPECT_TRUE(c->flags & CONN_CONNECTING);
  ns_send(c, "hello", 5); /* waits for the connection */
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_SEND); }));
  EXPECT_EQ(loop.events, (std::vector<Event>{{NET_EV_CONNECT, 0}, {NET_EV_SEND, 5}}));
  ASSERT_TRUE(server.run_until([&] { return server.seen(NET_EV_RECV); }));
}

TEST(Connect, FailsWithTheErrorAndCloses) {
  Loop loop;
  int unused;
  {
    Loop other;
    unused = other.listen();
  }
  ASSERT_NE(ns_connect(&loop.mgr, ("127.0.0.1:" + std::to_string(unused)).c_str(), Loop::note, nullptr),
            nullptr);
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_CLOSE); }));
  EXPECT_EQ(loop.events, (std::vector<Event>{{NET_EV_CONNECT, ECONNREFUSED}, {NET_EV_CLOSE, 0}}));
}

TEST(Connect, MalformedAddressCannotBeStarted) {
  Loop loop;
  EXPECT_EQ(ns_connect(&loop.mgr, "8080x", Loop::note, nullptr), nullptr);
  EXPECT_EQ(ns_connect(&loop.mgr, "ssl://127.0.0.1:1:/none.pem", Loop::note, nullptr), nullptr);
}

TEST(Datagram, IsAnsweredFromTheCallback) {
  Loop server, loop;
  std::string received;
  server.on_event = [&](ns_connection *c, int event, void *) {
    if (event != NET_EV_RECV) return;
    received.assign(c->recv_iobuf.buf, c->recv_iobuf.len);
    EXPECT_TRUE(c->flags & CONN_UDP);
    EXPECT_EQ(ns_send(c, "pong", 4), 4);
  };
  const std::string address = "udp://127.0.0.1:" + std::to_string(server.listen("udp://127.0.0.1:0"));
  ns_connection *c = ns_connect(&loop.mgr, address.c_str(), Loop::note, nullptr);
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(ns_send(c, "ping", 4), 4);
  ASSERT_TRUE(server.run_until([&] { return server.seen(NET_EV_RECV); }));
  EXPECT_EQ(received, "ping");
  ASSERT_TRUE(loop.run_until([&] { return loop.seen(NET_EV_RECV); }));
  EXPECT_EQ(std::string(c->recv_iobuf.buf, c->recv_iobuf.len), "pong");
}

TEST(Utilities, SocketAddressesAreWrittenAsText) {
  Loop loop;
  const int port = loop.listen();
  Client client(port);
  char buf[60];
  ns_sock_to_str(client.fd, buf, sizeof(buf), 3);
  EXPECT_EQ(buf, "127.0.0.1:" + std::to_string(client.local_port()));
  ns_sock_to_str(client.fd, buf, sizeof(buf), 7);
  EXPECT_EQ(buf, "127.0.0.1:" + std::to_string(port));
  ns_sock_to_str(client.fd, buf, sizeof(buf), 2);
  EXPECT_EQ(buf, std::to_string(client.local_port()));
  ns_sock_to_str(client.fd, buf, sizeof(buf), 5);
  EXPECT_STREQ(buf, "127.0.0.1");
  ns_sock_to_str(-1, buf, sizeof(buf), 3);
  EXPECT_STREQ(buf, "");
}

TEST(Utilities, StreamPairIsConnected) {
  int sp[2];
  char byte = 0;
  ASSERT_EQ(ns_socketpair(sp), 1);
  EXPECT_EQ(send(sp[0], "a", 1, 0), 1);
  EXPECT_EQ(recv(sp[1], &byte, 1, 0), 1);
  EXPECT_EQ(byte, 'a');
  EXPECT_EQ(send(sp[1], "b", 1, 0), 1);
  EXPECT_EQ(recv(sp[0], &byte, 1, 0), 1);
  EXPECT_EQ(byte, 'b');
  close(sp[0]);
  close(sp[1]);
  EXPECT_EQ(ns_socketpair2(sp, 12345), 0);
  EXPECT_EQ(sp[0], -1);
  EXPECT_EQ(sp[1], -1);
}
