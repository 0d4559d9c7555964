/* Waking the loop from another thread. */
#include "tests/unit/server/server_harness.h"

#include <arpa/inet.h>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

static const char get_request[] = "GET /x HTTP/1.1\r\n\r\n";

/* Runs `work` on another thread while this one turns the server's loop. */
static void run_beside(TestServer &server, const std::function<void()> &work) {
  std::atomic<bool> done{false};
  std::thread thread([&] {
    work();
    done = true;
  });
  while (!done) mg_poll_server(server.server, 10);
  thread.join();
}

TEST(Broadcast, WithNullDataOrTooMuchOfItSendsNothing) {
  TestServer server;
  char big[8192] = "";
  ns_broadcast(&server.server->ns_mgr, nullptr, nullptr, 1); /* would block if anything were sent */
  ns_broadcast(&server.server->ns_mgr, nullptr, big, sizeof(big));
  char byte;
  EXPECT_EQ(recv(server.server->ns_mgr.ctl[1], &byte, 1, MSG_DONTWAIT), -1);
}

static std::vector<std::string> broadcast_seen;
static void note_broadcast(ns_connection *c, int event, void *data) {
  EXPECT_EQ(event, 0);
  broadcast_seen.push_back((c->flags & CONN_LISTENING ? "listener " : "client ") +
                           std::string(static_cast<char *>(data)).substr(0, 10));
}

TEST(Broadcast, ReachesEveryConnectionInListOrder) {
  TestServer server;
  Client client(server.port());
  ASSERT_TRUE(server.run_until([&] { return server.client_count() == 1; }));
  broadcast_seen.clear();
  char text[] = "hi";
  run_beside(server, [&] { ns_broadcast(&server.server->ns_mgr, note_broadcast, text, sizeof(text)); });
  server.run_passes(1);
  EXPECT_EQ(broadcast_seen, (std::vector<std::string>{"client hi", "listener hi"}));
}

TEST(Broadcast, OfTheLargestSizeArrivesWhole) {
  TestServer server;
  static std::string seen;
  seen.clear();
  std::string big(8190, 'b');
  const ns_callback_t note = [](ns_connection *, int, void *data) { seen = static_cast<char *>(data); };
  run_beside(server, [&] { ns_broadcast(&server.server->ns_mgr, note, big.data(), big.size() + 1); });
  server.run_passes(1);
  EXPECT_EQ(seen, big);
}

TEST(Broadcast, ManyThreadsAtOnceAllGetTheirAnswer) {
  TestServer server;
  static std::atomic<int> runs{0};
  runs = 0;
  const ns_callback_t count = [](ns_connection *, int, void *) { runs++; };
  run_beside(server, [&] {
    std::vector<std::thread> threads;
    for (int t = 0; t < 40; t++) {
      threads.emplace_back([&] {
        std::string big(8191, 'b');
        for (int i = 0; i < 5; i++) ns_broadcast(&server.server->ns_mgr, count, big.data(), big.size());
      });
    }
    for (std::thread &thread : threads) thread.join();
  });
  server.run_passes(1);
  EXPECT_EQ(runs, 200);
}

TEST(Wakeup, EndsTheWaitWithoutCallingAnything) {
  TestServer server;
  Client client(server.port());
  ASSERT_TRUE(server.run_until([&] { return server.client_count() == 1; }));
  std::thread thread([&] { mg_wakeup_server(server.server); });
  mg_poll_server(server.server, 600000); /* comes back long before */
  thread.join();
  EXPECT_TRUE(server.events.empty());
}

static std::vector<std::string> wakeup_seen;
static int note_wakeup(mg_connection *c, mg_event event) {
  EXPECT_EQ(event, MG_POLL);
  wakeup_seen.push_back(static_cast<char *>(c->callback_param));
  return 0;
}

TEST(Wakeup, WithTextCallsBackForEveryClient) {
  TestServer server;
  Client one(server.port()), two(server.port());
  ASSERT_TRUE(server.run_until([&] { return server.client_count() == 2; }));
  wakeup_seen.clear();
  run_beside(server, [&] { mg_wakeup_server_ex(server.server, note_wakeup, "%s %d", "number", 7); });
  server.run_passes(1);
  EXPECT_EQ(wakeup_seen, (std::vector<std::string>{"number 7", "number 7"}));
  EXPECT_EQ(mg_next(server.server, nullptr)->callback_param, nullptr);
}

TEST(Wakeup, TextTooLongForOneMessageIsCut) {
  TestServer server;
  Client client(server.port());
  ASSERT_TRUE(server.run_until([&] { return server.client_count() == 1; }));
  wakeup_seen.clear();
  const std::string text(10000, 't');
  run_beside(server, [&] { mg_wakeup_server_ex(server.server, note_wakeup, "%s", text.c_str()); });
  server.run_passes(1);
  ASSERT_EQ(wakeup_seen.size(), 1u);
  EXPECT_GT(wakeup_seen[0].size(), 8000u);
  EXPECT_EQ(wakeup_seen[0], std::string(wakeup_seen[0].size(), 't'));
}

TEST(ControlChannel, TakesNothingFromOtherSockets) {
  TestServer server;
  server.on_event = answer_with("ok");
  sockaddr_in control = {};
  socklen_t len = sizeof(control);
  ASSERT_EQ(getsockname(server.server->ns_mgr.ctl[1], reinterpret_cast<sockaddr *>(&control), &len), 0);
  EXPECT_EQ(control.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
  const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  const std::string message(100, '\x41'); /* its first eight bytes would be called */
  sendto(fd, message.data(), message.size(), 0, reinterpret_cast<sockaddr *>(&control), sizeof(control));
  Client client(server.port());
  EXPECT_EQ(server.ask(client, get_request), chunked_reply("ok"));
  char byte;
  EXPECT_EQ(recv(fd, &byte, 1, MSG_DONTWAIT), -1);
  close(fd);
}

TEST(Threads, StartDetached) {
  static std::atomic<bool> ran{false};
  ran = false;
  EXPECT_EQ(mg_start_thread(
                [](void *) -> void * {
                  ran = true;
                  return nullptr;
                },
                nullptr),
            nullptr);
  for (int i = 0; i < 10000 && !ran; i++) usleep(1000);
  EXPECT_TRUE(ran);
}
