/* TLS connections. */
#include "tests/unit/server/server_harness.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <time.h>

static const char get_request[] = "GET /x HTTP/1.1\r\n\r\n";

/* A TLS server with a certificate of its own. */
struct TlsServer : TempDir, TestServer {
  TlsServer() : TestServer("") {
    write_certificate(file("ssl.pem"));
    EXPECT_EQ(mg_set_option(server, "listening_port", ("ssl://127.0.0.1:0:" + file("ssl.pem")).c_str()),
              nullptr);
  }
};

TEST(Tls, RequestsAreServedOnAKeptConnection) {
  TlsServer server;
  server.on_event = answer_with("secret");
  Client client(server.port(), true);
  for (int i = 0; i < 3; i++) EXPECT_EQ(server.ask(client, get_request), chunked_reply("secret"));
  EXPECT_EQ(server.client_count(), 1);
}

TEST(Tls, AcceptedConnectionSharesTheListenersContext) {
  TlsServer server;
  Client client(server.port(), true);
  ASSERT_TRUE(server.run_until([&] { return client.handshake_done; }, {&client}));
  server.run_passes(2, {&client});
  const ns_connection *c = server.first_client();
  ASSERT_NE(c, nullptr);
  EXPECT_NE(c->ssl, nullptr);
  EXPECT_EQ(c->ssl_ctx, nullptr);
  EXPECT_TRUE(c->flags & CONN_TLS_HANDSHAKE_DONE);
}

TEST(Tls, CloseIsToldToThePeer) {
  TlsServer server;
  server.on_event = answer_with("bye");
  Client client(server.port(), true);
  EXPECT_EQ(server.ask(client, "GET / HTTP/1.0\r\n\r\n"), chunked_reply("bye"));
  EXPECT_TRUE(client.closed);
  EXPECT_TRUE(SSL_get_shutdown(client.ssl) & SSL_RECEIVED_SHUTDOWN);
}

TEST(Tls, BothOlderAndNewestVersionsAreServed) {
  for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
    TlsServer server;
    server.on_event = answer_with("ok");
    Client client(server.port(), true);
    SSL_set_max_proto_version(client.ssl, version);
    EXPECT_EQ(server.ask(client, get_request), chunked_reply("ok")) << version;
  }
}

TEST(Tls, CipherWithoutAPlaceInTheListIsRefused) {
  TlsServer server;
  server.on_event = answer_with("ok");
  Client client(server.port(), true);
  SSL_set_max_proto_version(client.ssl, TLS1_2_VERSION);
  SSL_set_cipher_list(client.ssl, "ECDHE-ECDSA-CHACHA20-POLY1305");
  EXPECT_EQ(server.ask(client, get_request), "");
  EXPECT_TRUE(client.closed);
}

TEST(Tls, SmallRecordsOfOneRequestAreReadToTheEnd) {
  TlsServer server;
  server.on_event = answer_with("ok");
  Client client(server.port(), true);
  ASSERT_TRUE(server.run_until([&] { return client.handshake_done; }, {&client}));
  server.run_passes(3, {&client});
  for (const char c : std::string(get_request)) client.send(std::string(1, c)); /* one record each */
  EXPECT_EQ(server.ask(client, ""), chunked_reply("ok"));
}

TEST(Tls, LargeBodyAndLargeReplyPassWhole) {
  TlsServer server;
  const std::string body(500000, 'b');
  const std::string reply(3000000, 'r');
  bool same = false;
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event == MG_REQUEST) same = std::string(c->content, c->content_len) == body;
    return answer_with(reply)(c, event);
  };
  Client client(server.port(), true);
  client.send("POST /x HTTP/1.1\r\nContent-Length: 500000\r\n\r\n" + body);
  ASSERT_TRUE(
      server.run_until([&] { return client.received.size() >= chunked_reply(reply).size(); }, {&client}));
  EXPECT_EQ(client.take(), chunked_reply(reply));
  EXPECT_TRUE(same);
}

TEST(Tls, SlowReaderOfALargeReplyIsHeardAgain) {
  TlsServer server;
  const std::string large(8000000, 'l');
  server.on_event = answer_with(large);
  Client client(server.port(), true);
  ASSERT_TRUE(server.run_until([&] { return client.handshake_done; }, {&client}));
  client.reading = false;
  client.send(get_request);
  ASSERT_TRUE(server.run_until(
      [&] { return server.first_client() && server.first_client()->flags & CONN_WANT_WRITE; }));
  server.run_passes(5);
  EXPECT_TRUE(server.first_client()->send_blocked);
  EXPECT_EQ(server.first_client()->ready, 0u); /* it waits instead of trying again and again */
  client.reading = true;
  ASSERT_TRUE(
      server.run_until([&] { return client.received.size() == chunked_reply(large).size(); }, {&client}));
  client.take();
  server.on_event = answer_with("second");
  EXPECT_EQ(server.ask(client, get_request), chunked_reply("second"));
}

TEST(Tls, SilentClientStaysInTheHandshakeUntilTheIdleTimeout) {
  TlsServer server;
  Client silent(server.port());
  ASSERT_TRUE(server.run_until([&] { return server.client_count() == 1; }));
  server.run_passes(5, {&silent});
  EXPECT_FALSE(server.first_client()->flags & CONN_TLS_HANDSHAKE_DONE);
  EXPECT_FALSE(silent.closed);
  server.first_client()->last_io_time = time(nullptr) - 301;
  ASSERT_TRUE(server.run_until([&] { return silent.closed; }, {&silent}));
  EXPECT_EQ(silent.received, "");
}

TEST(Tls, HalfHandshakeIsClosedByTheIdleTimeout) {
  TlsServer server;
  Client half(server.port());
  half.send(std::string("\x16\x03\x01\x02\x00\x01", 6)); /* the beginning of a client hello */
  ASSERT_TRUE(server.run_until(
      [&] { return server.first_client() && server.first_client()->flags & CONN_WANT_READ; }, {&half}));
  EXPECT_FALSE(half.closed);
  server.first_client()->last_io_time = time(nullptr) - 301;
  ASSERT_TRUE(server.run_until([&] { return half.closed; }, {&half}));
}

TEST(Tls, PlainRequestOnTheTlsPortIsClosedAndOthersGoOn) {
  TlsServer server;
  server.on_event = answer_with("ok");
  Client good(server.port(), true);
  EXPECT_EQ(server.ask(good, get_request), chunked_reply("ok"));
  Client bad(server.port());
  bad.send(get_request);
  ASSERT_TRUE(server.run_until([&] { return bad.closed; }, {&bad}));
  EXPECT_EQ(server.ask(good, get_request), chunked_reply("ok"));
}

TEST(Tls, BrokenRecordClosesItsConnectionOnly) {
  TlsServer server;
  server.on_event = answer_with("ok");
  Client good(server.port(), true), bad(server.port(), true);
  EXPECT_EQ(server.ask(good, get_request), chunked_reply("ok"));
  EXPECT_EQ(server.ask(bad, get_request), chunked_reply("ok"));
  const std::string record("\x17\x03\x03\x00\x20" + std::string(32, 'x'));
  ASSERT_EQ(::send(bad.fd, record.data(), record.size(), MSG_NOSIGNAL), static_cast<ssize_t>(record.size()));
  good.send(get_request); /* served in the same pass, next to the error */
  ASSERT_TRUE(server.run_until([&] { return bad.closed; }, {&bad, &good}));
  server.run_passes(10, {&good});
  EXPECT_EQ(good.take(), chunked_reply("ok"));
  EXPECT_FALSE(good.closed);
}

TEST(Tls, PartOfARecordDoesNotKeepTheLoopBusy) {
  TlsServer server;
  server.on_event = answer_with("ok");
  Client client(server.port(), true);
  EXPECT_EQ(server.ask(client, get_request), chunked_reply("ok"));
  ASSERT_EQ(::send(client.fd, "\x17\x03\x03\x00\x20xx", 7, MSG_NOSIGNAL), 7);
  server.run_passes(5, {&client});
  const ns_connection *c = server.first_client();
  ASSERT_NE(c, nullptr);
  EXPECT_FALSE(c->tls_unread);
  EXPECT_EQ(c->ready, 0u);
}

TEST(Tls, ListenerWithACaAsksForACertificate) {
  TempDir dir;
  write_certificate(dir.file("ssl.pem"));
  const std::string port = "ssl://127.0.0.1:0:" + dir.file("ssl.pem") + ":" + dir.file("ssl.pem");
  TestServer server(port);
  server.on_event = answer_with("ok");
  Client without(server.port(), true);
  EXPECT_EQ(server.ask(without, get_request), "");
  EXPECT_TRUE(without.closed);
  Client with(server.port(), true);
  SSL_use_certificate_file(with.ssl, dir.file("ssl.pem").c_str(), SSL_FILETYPE_PEM);
  SSL_use_PrivateKey_file(with.ssl, dir.file("ssl.pem").c_str(), SSL_FILETYPE_PEM);
  EXPECT_EQ(server.ask(with, get_request), chunked_reply("ok"));
}

TEST(Tls, CertificateFunctionsTellWhatFailed) {
  TempDir dir;
  write_certificate(dir.file("ssl.pem"));
  SSL_CTX *ctx = SSL_CTX_new(TLS_server_method());
  EXPECT_EQ(ns_use_cert(nullptr, "x"), -1);
  EXPECT_EQ(ns_use_cert(ctx, nullptr), 0);
  EXPECT_EQ(ns_use_cert(ctx, ""), 0);
  EXPECT_EQ(ns_use_cert(ctx, "/none.pem"), -2);
  EXPECT_EQ(ns_use_cert(ctx, dir.file("ssl.pem").c_str()), 0);
  EXPECT_EQ(ns_use_ca_cert(nullptr, "x"), -1);
  EXPECT_EQ(ns_use_ca_cert(ctx, ""), 0);
  EXPECT_EQ(SSL_CTX_get_verify_mode(ctx), SSL_VERIFY_NONE);
  EXPECT_EQ(ns_use_ca_cert(ctx, "/none.pem"), -2);
  EXPECT_EQ(ns_use_ca_cert(ctx, dir.file("ssl.pem").c_str()), 0);
  EXPECT_EQ(SSL_CTX_get_verify_mode(ctx), 3);
  SSL_CTX_free(ctx);
  ERR_clear_error();
}
