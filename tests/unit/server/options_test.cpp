/* Server options, option lists, access control, listeners. */
#include "tests/unit/server/server_harness.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

struct PlainServer {
  PlainServer() : server(mg_create_server(nullptr, nullptr)) {}
  ~PlainServer() { mg_destroy_server(&server); }
  PlainServer(const PlainServer &) = delete;
  PlainServer &operator=(const PlainServer &) = delete;
  std::string get(const char *name) const { return mg_get_option(server, name); }
  std::string set(const char *name, const char *value) {
    const char *error = mg_set_option(server, name, value);
    return error == nullptr ? "ok" : error;
  }
  mg_server *server;
};

TEST(Options, StartWithTheirDefaults) {
  static const char *const expected[][2] = {
      {"access_control_list", ""},
      {"access_log_file", ""},
      {"auth_domain", "mydomain.com"},
      {"cgi_interpreter", ""},
      {"cgi_pattern", "**.cgi$|**.pl$|**.php$"},
      {"dav_auth_file", ""},
      {"document_root", ""},
      {"enable_directory_listing", "yes"},
      {"enable_proxy", ""},
      {"extra_mime_types", ""},
      {"global_auth_file", ""},
      {"hide_files_patterns", ""},
      {"hexdump_file", ""},
      {"index_files", "index.html,index.htm,index.shtml,index.cgi,index.php"},
      {"listening_port", ""},
      {"run_as_user", ""},
      {"ssi_pattern", "**.shtml$|**.shtm$"},
      {"url_rewrites", ""},
  };
  PlainServer s;
  const char **names = mg_get_valid_option_names();
  for (const auto &option : expected) {
    EXPECT_STREQ(names[0], option[0]);
    EXPECT_STREQ(names[1] == nullptr ? "" : names[1], option[1]);
    EXPECT_EQ(s.get(option[0]), option[1]);
    names += 2;
  }
  EXPECT_EQ(names[0], nullptr);
}

TEST(Options, AreSetUnsetAndUnknown) {
  PlainServer s;
  EXPECT_EQ(s.set("nonsense", "x"), "No such option");
  EXPECT_EQ(mg_get_option(s.server, "nonsense"), nullptr);
  EXPECT_EQ(s.set("document_root", "/a"), "ok");
  EXPECT_EQ(s.set("document_root", "/a"), "ok");
  EXPECT_EQ(s.get("document_root"), "/a");
  EXPECT_EQ(s.set("document_root", "/b"), "ok");
  EXPECT_EQ(s.get("document_root"), "/b");
  EXPECT_EQ(s.set("document_root", ""), "ok");
  EXPECT_EQ(s.server->config_options[DOCUMENT_ROOT], nullptr);
  EXPECT_EQ(s.set("auth_domain", nullptr), "ok");
  EXPECT_EQ(s.set("auth_domain", nullptr), "ok");
  EXPECT_EQ(s.get("auth_domain"), "");
}

TEST(Options, UnsettingTheTraceStopsIt) {
  PlainServer s;
  s.set("hexdump_file", "/nonexistent/trace");
  EXPECT_STREQ(s.server->ns_mgr.hexdump_file, "/nonexistent/trace");
  s.set("hexdump_file", nullptr);
  EXPECT_EQ(s.server->ns_mgr.hexdump_file, nullptr);
}

TEST(Options, ListeningPortReadsAsThePortBoundLast) {
  TempDir dir;
  write_certificate(dir.file("ssl.pem"));
  PlainServer s;
  const std::string ports = "127.0.0.1:0,ssl://127.0.0.1:0:" + dir.file("ssl.pem");
  ASSERT_EQ(s.set("listening_port", ports.c_str()), "ok");
  const ns_connection *tls = ns_next(&s.server->ns_mgr, nullptr);
  const ns_connection *plain = tls->next;
  ASSERT_NE(plain, nullptr);
  EXPECT_EQ(plain->next, nullptr);
  EXPECT_NE(tls->ssl_ctx, nullptr);
  EXPECT_EQ(plain->ssl_ctx, nullptr);
  EXPECT_EQ(s.get("listening_port"), std::to_string(ntohs(tls->sa.sin.sin_port)));
  EXPECT_NE(plain->sa.sin.sin_port, tls->sa.sin.sin_port);
}

TEST(Options, FailedBindKeepsThePortsBoundBefore) {
  PlainServer s;
  EXPECT_EQ(s.set("listening_port", "127.0.0.1:0,8080x,127.0.0.1:0"), "Cannot bind to port");
  const ns_connection *bound = ns_next(&s.server->ns_mgr, nullptr);
  ASSERT_NE(bound, nullptr);
  EXPECT_EQ(bound->next, nullptr);
  EXPECT_EQ(s.get("listening_port"), std::to_string(ntohs(bound->sa.sin.sin_port)));
}

TEST(Options, AddressesThatCannotBeBoundAreRefused) {
  TempDir dir;
  FILE *empty = fopen(dir.file("empty.pem").c_str(), "w");
  fclose(empty);
  write_certificate(dir.file("ssl.pem"));
  TestServer other;
  const std::string taken = "127.0.0.1:" + std::to_string(other.port());
  const std::string bad_cert = "ssl://127.0.0.1:0:" + dir.file("empty.pem");
  const std::string bad_ca = "ssl://127.0.0.1:0:" + dir.file("ssl.pem") + ":" + dir.file("none.pem");
  for (const std::string &address :
       {std::string("65535"), std::string("8080x"), std::string("ssl://127.0.0.1:0"), taken, bad_cert, bad_ca,
        std::string("203.0.113.1:0"), std::string("ssl://8446:/none.pem")}) {
    PlainServer s;
    EXPECT_EQ(s.set("listening_port", address.c_str()), "Cannot bind to port") << address;
    EXPECT_EQ(ns_next(&s.server->ns_mgr, nullptr), nullptr) << address;
  }
}

TEST(Options, UserMustExist) {
  PlainServer s;
  EXPECT_EQ(s.set("run_as_user", "no-such-user-here"), "Unknown user");
  if (getuid() == 0) {
    EXPECT_EQ(s.set("run_as_user", getpwuid(0)->pw_name), "ok");
  } else {
    EXPECT_EQ(s.set("run_as_user", "root"), "setgid() failed");
  }
}

/* --- Lists --------------------------------------------------------------------------------------------- */

TEST(OptionLists, AreSplitAtCommasAndTheFirstEqualsSign) {
  std::vector<std::string> parts;
  vec entry, value;
  const char *list = "a=1,b,=c=d,,e=";
  while ((list = next_option(list, &entry, &value)) != nullptr) {
    parts.push_back(std::string(entry.ptr, entry.len) + "|" +
                    (value.ptr == nullptr ? "-" : std::string(value.ptr, value.len)));
  }
  EXPECT_EQ(parts, (std::vector<std::string>{"a|1", "b|-", "|c=d", "|-", "e|"}));
  EXPECT_EQ(next_option("", &entry, nullptr), nullptr);
  EXPECT_EQ(next_option(nullptr, &entry, nullptr), nullptr);
}

TEST(AccessControl, LastMatchingEntryDecides) {
  static const struct {
    const char *list, *address;
    int allowed;
  } cases[] = {
      {nullptr, "10.0.0.1", 1},
      {"", "10.0.0.1", 0},
      {"+10.0.0.0/8", "10.1.2.3", 1},
      {"+10.0.0.0/8", "11.1.2.3", 0},
      {"+10.9.9.9/8", "10.1.2.3", 1},
      {"+10.0.0.0/8,-10.0.0.5", "10.0.0.5", 0},
      {"+10.0.0.0/8,-10.0.0.5", "10.0.0.6", 1},
      {"-10.0.0.5,+10.0.0.0/8", "10.0.0.5", 1},
      {"+0.0.0.0/0", "255.255.255.255", 1},
      {"-0.0.0.0/0", "1.2.3.4", 0},
      {"+1.2.3.4/32", "1.2.3.4", 1},
      {"+1.2.3.4/32", "1.2.3.5", 0},
      {"1.2.3.4", "1.2.3.4", -1},
      {"+1.2.3", "1.2.3.4", -1},
      {"+1.2.3.4/33", "1.2.3.4", -1},
      {"+1.2.3.4/-1", "1.2.3.4", -1},
      {"+1.2.3.256", "1.2.3.4", -1},
      {"+1.2.3.4x", "1.2.3.4", -1},
      {"+1.2.3.4,,", "1.2.3.4", -1},
      {"-0.0.0.0/0,nonsense", "1.2.3.4", -1},
  };
  for (const auto &c : cases) {
    EXPECT_EQ(check_acl(c.list, ntohl(inet_addr(c.address))), c.allowed)
        << (c.list ? c.list : "(none)") << " " << c.address;
  }
}

TEST(AccessControl, RefusedClientIsClosedWithoutAWord) {
  TestServer server;
  server.on_event = answer_with("ok");
  mg_set_option(server.server, "access_control_list", "+10.0.0.0/8");
  Client client(server.port());
  EXPECT_EQ(server.ask(client, "GET / HTTP/1.1\r\n\r\n"), "");
  EXPECT_TRUE(client.closed);
  EXPECT_TRUE(server.events.empty());
}

TEST(AccessControl, MalformedListLetsEverybodyIn) {
  TestServer server;
  server.on_event = answer_with("ok");
  mg_set_option(server.server, "access_control_list", "-127.0.0.1,nonsense");
  Client client(server.port());
  EXPECT_EQ(server.ask(client, "GET / HTTP/1.1\r\n\r\n"), chunked_reply("ok"));
}

/* --- Shared listeners ---------------------------------------------------------------------------------- */

TEST(CopiedListeners, AreServedByEitherServerAndOutliveTheOther) {
  TempDir dir;
  write_certificate(dir.file("ssl.pem"));
  auto second = std::make_unique<TestServer>("");
  int plain_port, tls_port;
  {
    TestServer first("127.0.0.1:0");
    plain_port = first.port();
    mg_set_option(first.server, "listening_port", ("ssl://127.0.0.1:0:" + dir.file("ssl.pem")).c_str());
    tls_port = first.port();
    mg_copy_listeners(first.server, second->server);
    first.on_event = answer_with("first");
    Client client(plain_port);
    EXPECT_EQ(first.ask(client, "GET / HTTP/1.1\r\n\r\n"), chunked_reply("first"));
  }
  second->on_event = answer_with("second");
  Client plain(plain_port);
  EXPECT_EQ(second->ask(plain, "GET / HTTP/1.1\r\n\r\n"), chunked_reply("second"));
  Client tls(tls_port, true);
  EXPECT_EQ(second->ask(tls, "GET / HTTP/1.1\r\n\r\n"), chunked_reply("second"));
}
