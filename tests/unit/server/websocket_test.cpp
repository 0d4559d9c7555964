/* WebSocket: the upgrade, frames from and to the client, closing, pings. Every byte is compared. */
#include "tests/unit/server/server_harness.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

using Events = std::vector<std::string>;

static const char upgrade[] =
    "GET /chat HTTP/1.1\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
    "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n";
/* RFC 6455 section 1.3. */
static const char upgraded[] =
    "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
    "Sec-WebSocket-Accept: s3pPLMBiTxaQ9kYGzzhZRbK+xOo=\r\n\r\n";

/* The bytes of a frame with the shortest header for its length. */
static std::string frame(int first_byte, const std::string &payload, const std::string &mask = "") {
  const size_t len = payload.size();
  const int mask_bit = mask.empty() ? 0 : 0x80;
  std::string bytes(1, static_cast<char>(first_byte));
  const size_t length_size = len < 126 ? 0 : len < 65536 ? 2 : 8;
  bytes += static_cast<char>(mask_bit | static_cast<int>(len < 126 ? len : len < 65536 ? 126 : 127));
  for (size_t i = length_size; i > 0; i--) bytes += static_cast<char>(len >> (8 * (i - 1)));
  bytes += mask;
  for (size_t i = 0; i < len; i++) {
    bytes += static_cast<char>(mask.empty() ? payload[i] : payload[i] ^ mask[i % 4]);
  }
  return bytes;
}

static std::string some_payload(size_t len) {
  std::string payload;
  for (size_t i = 0; i < len; i++) payload += static_cast<char>(i * 31 + i / 256);
  return payload;
}

/* A frame as the handler was given it. */
struct Got {
  int wsbits;
  std::string payload;
  bool operator==(const Got &) const = default;
};

static std::ostream &operator<<(std::ostream &out, const Got &got) {
  return out << std::hex << got.wsbits << " '" << got.payload.substr(0, 40) << "' " << got.payload.size();
}

/* A server that notes frames; `answer` says what its handler returns for each. */
struct FrameServer : TestServer {
  explicit FrameServer(const std::string &listening_port = "tcp://127.0.0.1:0") : TestServer(listening_port) {
    on_event = [this](mg_connection *c, mg_event event) -> int {
      if (event == MG_AUTH) return MG_TRUE;
      if (event == MG_POLL) check_between_frames(c);
      if (event != MG_REQUEST || !c->is_websocket) return 0;
      frames.push_back({c->wsbits, std::string(c->content, c->content_len)});
      return answer ? answer(c) : MG_TRUE;
    };
  }
  /* Sends bytes and waits until the handler has been given that many frames in all. */
  void feed(Client &client, const std::string &bytes, size_t total) {
    client.send(bytes);
    EXPECT_TRUE(run_until([&] { return frames.size() >= total; }, {&client}));
    run_passes(3, {&client});
  }
  /* No other event sees a frame that is gone. */
  void check_between_frames(const mg_connection *c) {
    EXPECT_TRUE(c->content == nullptr && c->content_len == 0 && c->wsbits == 0);
  }
  std::function<int(mg_connection *)> answer;
  std::vector<Got> frames;
};

static int closing_flags(const TestServer &server) {
  return static_cast<int>(server.first_client()->flags & (CONN_FINISHED_SENDING | CONN_CLOSE_NOW));
}

/* --- The upgrade --------------------------------------------------------------------------------------- */

TEST(WebSocketUpgrade, IsAnsweredBeforeTheRequestIsAuthorised) {
  FrameServer server;
  Client client(server.port());
  EXPECT_EQ(server.ask(client, upgrade), upgraded);
  EXPECT_EQ(server.events, (Events{"ws-handshake", "ws-connect", "auth", "recv"}));
  EXPECT_FALSE(client.closed);
}

TEST(WebSocketUpgrade, NeedsBothHeadersAndNoOthers) {
  for (const char *headers : {"Sec-WebSocket-Version: 13\r\n", "Sec-WebSocket-Key: x\r\n",
                              "Upgrade: websocket\r\nConnection: Upgrade\r\n"}) {
    TestServer server;
    server.on_event = answer_with("no");
    Client client(server.port());
    const std::string request = std::string("GET / HTTP/1.1\r\n") + headers + "\r\n";
    EXPECT_EQ(server.ask(client, request), chunked_reply("no")) << headers;
  }
  FrameServer server;
  Client client(server.port());
  EXPECT_EQ(server.ask(client, "POST / HTTP/1.0\r\nSEC-WEBSOCKET-KEY: dGhlIHNhbXBsZSBub25jZQ==  \r\n"
                               "sec-websocket-version: \r\n\r\n"),
            upgraded);
}

TEST(WebSocketUpgrade, LeavesTheStatusToTheHandler) {
  FrameServer server;
  server.answer = [](mg_connection *c) {
    EXPECT_EQ(c->status_code, 0);
    return MG_TRUE;
  };
  Client client(server.port());
  server.ask(client, upgrade + frame(0x81, "x"));
  EXPECT_EQ(server.frames, (std::vector<Got>{{0x81, "x"}}));
}

TEST(WebSocketUpgrade, TakesAKeyOfAnyLength) {
  FrameServer server;
  Client client(server.port());
  const std::string head = "GET / HTTP/1.1\r\nSec-WebSocket-Version: 13\r\nSec-WebSocket-Key: ";
  const std::string answer = server.ask(client, head + std::string(16000, 'k') + "\r\n\r\n");
  /* Computed with another implementation of the digest. */
  EXPECT_EQ(answer, "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                    "Sec-WebSocket-Accept: DiXkzKPf9GK9+ApPRuwXazCaqH8=\r\n\r\n");
}

TEST(WebSocketUpgrade, HandlerMayAnswerItself) {
  FrameServer server;
  const Handler frames = server.on_event;
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event != MG_WS_HANDSHAKE) return frames(c, event);
    EXPECT_EQ(c->is_websocket, 1);
    mg_printf(c, "HTTP/1.1 101 Mine\r\n\r\n");
    return 1;
  };
  Client client(server.port());
  EXPECT_EQ(server.ask(client, upgrade + frame(0x82, "x")), "HTTP/1.1 101 Mine\r\n\r\n");
  EXPECT_EQ(server.events, (Events{"ws-handshake", "ws-connect", "auth", "recv", "request"}));
  EXPECT_EQ(server.frames, (std::vector<Got>{{0x82, "x"}}));
}

TEST(WebSocketUpgrade, RefusedAuthorisationFollowsTheAnswer) {
  TestServer server;
  server.on_event = [](mg_connection *, mg_event) -> int { return 0; };
  Client client(server.port());
  const std::string answer = server.ask(client, upgrade);
  const std::string start = std::string(upgraded) + "HTTP/1.1 401 Unauthorized\r\n";
  EXPECT_EQ(answer.substr(0, start.size()), start);
  EXPECT_TRUE(client.closed);
}

TEST(WebSocketUpgrade, ContentLengthMeansNothing) {
  FrameServer server;
  Client client(server.port());
  const std::string head = "POST / HTTP/1.1\r\nContent-Length: 3\r\nSec-WebSocket-Version: 13\r\n"
                           "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n";
  EXPECT_EQ(server.ask(client, head + frame(0x81, "x") + frame(0x81, "yz")), upgraded);
  EXPECT_EQ(server.frames, (std::vector<Got>{{0x81, "x"}, {0x81, "yz"}}));
}

TEST(WebSocketUpgrade, ExpectationIsAnsweredToo) {
  FrameServer server;
  Client client(server.port());
  const std::string expecting = std::string(upgrade).insert(20, "Expect: 100-continue\r\n");
  EXPECT_EQ(server.ask(client, expecting), std::string(upgraded) + "HTTP/1.1 100 Continue\r\n\r\n");
}

TEST(WebSocketUpgrade, DatagramIsAnsweredToItsSender) {
  FrameServer server("udp://127.0.0.1:0");
  server.answer = [](mg_connection *c) {
    mg_websocket_write(c, c->wsbits, c->content, c->content_len);
    return MG_TRUE;
  };
  const int fd = socket(AF_INET, SOCK_DGRAM, 0);
  sockaddr_in to = {};
  to.sin_family = AF_INET;
  to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  to.sin_port = htons(static_cast<uint16_t>(server.port()));
  const std::string request = upgrade + frame(0x82, "ping?", "abcd") + frame(0x82, "cut off").substr(0, 4);
  sendto(fd, request.data(), request.size(), 0, reinterpret_cast<sockaddr *>(&to), sizeof(to));

  std::vector<std::string> answers;
  server.run_until([&] {
    char buf[2000];
    const ssize_t n = recv(fd, buf, sizeof(buf), MSG_DONTWAIT);
    if (n > 0) answers.emplace_back(buf, static_cast<size_t>(n));
    return answers.size() == 2;
  });
  EXPECT_EQ(answers, (std::vector<std::string>{upgraded, frame(0x82, "ping?")}));
  EXPECT_EQ(server.frames, (std::vector<Got>{{0x82, "ping?"}}));
  close(fd);
}

/* --- Frames from the client ---------------------------------------------------------------------------- */

/* A client whose connection has been upgraded. */
struct FrameClient : Client {
  explicit FrameClient(TestServer &server, bool tls = false) : Client(server.port(), tls) {
    EXPECT_EQ(server.ask(*this, upgrade), upgraded);
  }
};

TEST(WebSocketFrames, OfEveryLengthFormAndMaskAreDelivered) {
  for (const size_t len : {0u, 1u, 3u, 4u, 125u, 126u, 127u, 65535u, 65536u, 300000u}) {
    for (const char *mask : {"", "\x11\x22\xf3\x44"}) {
      FrameServer server;
      FrameClient client(server);
      client.send(frame(0x82, some_payload(len), mask));
      EXPECT_TRUE(server.run_until([&] { return !server.frames.empty(); }, {&client}));
      server.run_passes(3, {&client});
      EXPECT_EQ(server.frames, (std::vector<Got>{{0x82, some_payload(len)}})) << len;
      EXPECT_EQ(server.first_client()->recv_iobuf.size, 0u); /* its memory went back */
    }
  }
}

TEST(WebSocketFrames, LengthMayStandInALongerFormThanItNeeds) {
  FrameServer server;
  FrameClient client(server);
  server.feed(client, std::string("\x81\x7e\x00\x02", 4) + "ab", 1);
  server.feed(client, std::string("\x81\x7f\x00\x00\x00\x00\x00\x00\x00\x03", 10) + "cde", 2);
  EXPECT_EQ(server.frames, (std::vector<Got>{{0x81, "ab"}, {0x81, "cde"}}));
}

TEST(WebSocketFrames, OfA64BitLengthOnlyTheLowHalfCounts) {
  FrameServer server;
  FrameClient client(server);
  const std::string length = std::string("\x82\x7f\xff\xff\xff\xff\x00\x00\x00\x02", 10);
  server.feed(client, length + "ab" + frame(0x81, "next"), 2);
  EXPECT_EQ(server.frames, (std::vector<Got>{{0x82, "ab"}, {0x81, "next"}}));
}

TEST(WebSocketFrames, AllBitsOfTheFirstByteAreTheHandlers) {
  FrameServer server;
  FrameClient client(server);
  std::string bytes;
  std::vector<Got> expected;
  for (int first = 0; first < 256; first++) {
    bytes += frame(first, "x", "mask");
    expected.push_back({first, "x"});
  }
  server.feed(client, bytes, 256);
  EXPECT_EQ(server.frames, expected);
}

TEST(WebSocketFrames, MayComeInOnePacketWithTheUpgradeOrByteByByte) {
  const std::string bytes = frame(0x01, "Hel", "abcd") + frame(0x89, "", "efgh") + frame(0x80, "lo", "ijkl") +
                            frame(0x82, some_payload(300), "mnop");
  const std::vector<Got> expected = {{0x01, "Hel"}, {0x89, ""}, {0x80, "lo"}, {0x82, some_payload(300)}};
  FrameServer at_once;
  Client client(at_once.port());
  EXPECT_EQ(at_once.ask(client, upgrade + bytes), upgraded);
  EXPECT_EQ(at_once.frames, expected);

  FrameServer in_pieces;
  Client slow(in_pieces.port());
  for (const char byte : upgrade + bytes) {
    slow.send(std::string(1, byte));
    in_pieces.run_passes(1, {&slow});
  }
  EXPECT_TRUE(in_pieces.run_until([&] { return in_pieces.frames.size() == 4; }, {&slow}));
  EXPECT_EQ(in_pieces.frames, expected);
}

TEST(WebSocketFrames, WhatHasArrivedOfAFrameIsShownAsItComes) {
  FrameServer server;
  const Handler frames = server.on_event;
  std::vector<std::string> received;
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event == MG_RECV)
      received.push_back(c->content_len == 0 ? "" : std::string(c->content, c->content_len));
    if (event == MG_CLOSE) server.check_between_frames(c);
    return frames(c, event);
  };
  FrameClient client(server);
  client.send(frame(0x81, "abc").substr(0, 3));
  server.run_passes(5, {&client});
  server.feed(client, "bc" + frame(0x81, "d"), 2);
  EXPECT_EQ(received, (Events{"", frame(0x81, "abc").substr(0, 3), frame(0x81, "abc") + frame(0x81, "d")}));
  EXPECT_EQ(server.frames, (std::vector<Got>{{0x81, "abc"}, {0x81, "d"}}));
  client.close();
  EXPECT_TRUE(server.run_until([&] { return server.client_count() == 0; }));
}

/* MG_RECV may take bytes off before frames are looked for. */
TEST(WebSocketFrames, BeginBehindWhatTheHandlerHasConsumed) {
  FrameServer server;
  const Handler frames = server.on_event;
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event == MG_RECV && c->content_len > 0) return 2;
    return frames(c, event);
  };
  FrameClient client(server);
  server.feed(client, "??" + frame(0x81, "abc"), 1);
  EXPECT_EQ(server.frames, (std::vector<Got>{{0x81, "abc"}}));
}

TEST(WebSocketFrames, RunOverTlsToo) {
  TempDir dir;
  write_certificate(dir.file("ssl.pem"));
  FrameServer server("ssl://127.0.0.1:0:" + dir.file("ssl.pem"));
  FrameClient client(server, true);
  client.send(frame(0x82, some_payload(100000), "abcd") + frame(0x81, "end"));
  EXPECT_TRUE(server.run_until([&] { return server.frames.size() == 2; }, {&client}));
  EXPECT_EQ(server.frames, (std::vector<Got>{{0x82, some_payload(100000)}, {0x81, "end"}}));
}

/* --- Closing ------------------------------------------------------------------------------------------- */

TEST(WebSocketClosing, FalseClosesAfterWhatIsQueued) {
  FrameServer server;
  server.answer = [](mg_connection *c) {
    mg_websocket_write(c, WEBSOCKET_OPCODE_CLOSE, c->content, c->content_len);
    return MG_FALSE;
  };
  FrameClient client(server);
  client.send(frame(0x88, "\x03\xe8", "abcd"));
  EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.take(), frame(0x88, "\x03\xe8"));
  EXPECT_EQ(server.events.back(), "close");
}

TEST(WebSocketClosing, FalseClosesAlsoWithNothingQueued) {
  FrameServer server;
  server.answer = [](mg_connection *) { return MG_FALSE; };
  FrameClient client(server);
  client.send(frame(0x81, "x"));
  EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.take(), "");
  EXPECT_EQ(server.client_count(), 0);
}

TEST(WebSocketClosing, NoFrameIsDeliveredAfterIt) {
  FrameServer server;
  server.answer = [](mg_connection *c) {
    mg_websocket_write(c, WEBSOCKET_OPCODE_TEXT, std::string(8 << 20, 'x').data(), 8 << 20);
    return MG_FALSE;
  };
  FrameClient client(server);
  client.reading = false;
  client.send(frame(0x81, "last") + frame(0x81, "too late"));
  EXPECT_TRUE(server.run_until([&] { return !server.frames.empty(); }, {&client}));
  server.run_passes(5, {&client});
  EXPECT_EQ(closing_flags(server), CONN_FINISHED_SENDING);
  client.send(frame(0x81, "much too late") + frame(0x82, some_payload(5000)));
  server.run_passes(20, {&client});
  EXPECT_EQ(server.first_client()->recv_iobuf.len, 0u);
  client.reading = true;
  EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.take().size(), (8u << 20) + 10);
  EXPECT_EQ(server.frames, (std::vector<Got>{{0x81, "last"}}));
}

TEST(WebSocketClosing, ConnectionMayEndAtAnyByteOfAFrame) {
  const std::string bytes = upgrade + frame(0x82, some_payload(200), "abcd");
  for (size_t len = sizeof(upgrade) - 2; len < bytes.size(); len += 7) {
    FrameServer server;
    Client client(server.port());
    client.send(bytes.substr(0, len));
    server.run_passes(3, {&client});
    client.close();
    EXPECT_TRUE(server.run_until([&] { return server.client_count() == 0; }));
    EXPECT_EQ(server.frames, (std::vector<Got>{}));
  }
}

TEST(WebSocketClosing, HandlerThatAnswersAFrameWithAFileTurnsTheConnectionToHttp) {
  TempDir dir;
  FrameServer server;
  server.answer = [&](mg_connection *c) {
    mg_send_file(c, dir.file("missing").c_str(), nullptr);
    return MG_TRUE;
  };
  FrameClient client(server);
  client.send(frame(0x81, "first") + frame(0x81, "second"));
  EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.take(), "HTTP/1.1 404 Not Found\r\nContent-Length: 14\r\nContent-Type: text/plain\r\n\r\n"
                           "404 Not Found\n");
  EXPECT_EQ(server.frames, (std::vector<Got>{{0x81, "first"}}));
}

TEST(WebSocketFrames, WaitWhileTheClientDoesNotTakeTheirAnswers) {
  FrameServer server;
  const std::string answer(20000, 'a');
  server.answer = [&](mg_connection *c) {
    mg_websocket_write(c, WEBSOCKET_OPCODE_TEXT, answer.data(), answer.size());
    return MG_TRUE;
  };
  Client client(server.port());
  server.ask(client, upgrade);
  client.reading = false;
  std::string frames;
  for (int i = 0; i < 3000; i++) frames += frame(0x81, "");
  for (int i = 0; i < 3; i++) client.send(frames);
  server.run_passes(200, {&client});
  const ns_connection *nc = server.first_client();
  EXPECT_LE(nc->send_iobuf.len, MG_MAX_QUEUED_OUTPUT + frame(0x81, answer).size());
  EXPECT_LT(server.frames.size(), 1000u);
  client.reading = true;
  size_t received = 0;
  EXPECT_TRUE(server.run_until(
      [&] {
        received += client.take().size();
        EXPECT_LE(nc->send_iobuf.len, MG_MAX_QUEUED_OUTPUT + frame(0x81, answer).size());
        EXPECT_LE(nc->recv_iobuf.len, 3 * frames.size());
        return received == 9000 * frame(0x81, answer).size();
      },
      {&client}));
  EXPECT_EQ(server.frames.size(), 9000u);
}

/* --- Frames to the client ------------------------------------------------------------------------------ */

TEST(WebSocketWriting, HeaderHasTheShortestFormOfTheLength) {
  for (const size_t len : {0u, 1u, 125u, 126u, 127u, 65535u, 65536u, 1000000u}) {
    FrameServer server;
    server.answer = [&](mg_connection *c) {
      EXPECT_EQ(mg_websocket_write(c, 0xf2, some_payload(len).data(), len),
                frame(0x82, some_payload(len)).size());
      return MG_TRUE;
    };
    FrameClient client(server);
    client.send(frame(0x81, "go"));
    const std::string expected = frame(0x82, some_payload(len));
    EXPECT_TRUE(server.run_until([&] { return client.received.size() >= expected.size(); }, {&client}));
    EXPECT_EQ(client.take(), expected) << len;
  }
  EXPECT_EQ(frame(0x82, std::string(126, 'x')).substr(0, 4), std::string("\x82\x7e\x00\x7e", 4));
  EXPECT_EQ(frame(0x82, std::string(65536, 'x')).substr(0, 10), std::string("\x82\x7f\0\0\0\0\0\1\0\0", 10));
}

TEST(WebSocketWriting, FormattedTextIsSentWholeWhateverItsLength) {
  for (const size_t len : {0u, 1u, 499u, 500u, 501u, 8191u, 8192u, 8193u, 70000u}) {
    FrameServer server;
    server.answer = [&](mg_connection *c) {
      mg_websocket_printf(c, WEBSOCKET_OPCODE_TEXT, "%s", std::string(len, 'x').c_str());
      return MG_TRUE;
    };
    FrameClient client(server);
    client.send(frame(0x81, "go"));
    const std::string expected = frame(0x81, std::string(len, 'x'));
    EXPECT_TRUE(server.run_until([&] { return client.received.size() >= expected.size(); }, {&client}));
    EXPECT_EQ(client.take(), expected) << len;
  }
}

/* --- Pings --------------------------------------------------------------------------------------------- */

static void set_idle(TestServer &server, int seconds) {
  server.first_client()->last_io_time = time(nullptr) - seconds;
}

TEST(WebSocketPing, IsSentOnceAfterMoreThanFiveSecondsOfIdleness) {
  FrameServer server;
  FrameClient client(server);
  set_idle(server, 4); /* a second may pass meanwhile */
  server.turn();
  client.turn();
  EXPECT_EQ(client.take(), "");
  for (int i = 0; i < 3; i++) {
    set_idle(server, 6);
    server.run_passes(10, {&client});
    EXPECT_EQ(client.take(), std::string("\x89\x00", 2));
  }
}

TEST(WebSocketPing, WaitsWhileOutputIsQueued) {
  FrameServer server;
  server.answer = [](mg_connection *c) {
    mg_websocket_write(c, WEBSOCKET_OPCODE_TEXT, std::string(16 << 20, 'x').data(), 16 << 20);
    return MG_TRUE;
  };
  FrameClient client(server);
  client.reading = false;
  client.send(frame(0x81, "go"));
  server.run_passes(50, {&client});
  const size_t queued = server.first_client()->send_iobuf.len;
  ASSERT_GT(queued, 0u);
  for (int i = 0; i < 10; i++) {
    set_idle(server, 60);
    server.turn();
  }
  EXPECT_LE(server.first_client()->send_iobuf.len, queued);
}

TEST(WebSocketPing, IsNotSentOnOtherConnectionsNorOnceClosingIsMarked) {
  FrameServer server;
  Client plain(server.port());
  plain.send("GET / HT");
  server.run_passes(3, {&plain});
  set_idle(server, 100);
  server.run_passes(3, {&plain});
  EXPECT_EQ(plain.take(), "");

  FrameClient client(server);
  server.first_client()->flags |= CONN_FINISHED_SENDING;
  set_idle(server, 100);
  EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.take(), "");
}

TEST(WebSocketPing, KeepsAConnectionOverTheIdleTimeOut) {
  FrameServer server;
  FrameClient client(server);
  set_idle(server, 299);
  server.run_passes(3, {&client});
  EXPECT_EQ(client.take(), std::string("\x89\x00", 2));
  EXPECT_GE(server.first_client()->last_io_time, time(nullptr) - 2);
}
