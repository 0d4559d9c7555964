/* CGI programs as a client sees them: replies, bodies, slow and vanishing partners on either side. */
#include "server/mg_child.h"
#include "tests/unit/server/program_harness.h"

#include <gtest/gtest.h>
#include <string.h>
#include <unistd.h>

/* A server all of whose requests are served by the program that the URI names. */
struct Cgi : testing::Test {
  Cgi() {
    server.on_event = [this](mg_connection *conn, mg_event event) -> int {
      if (event == MG_AUTH) return MG_TRUE;
      const bool begins = streamed ? event == MG_RECV && !opened : event == MG_REQUEST;
      if (begins) open(conn);
      return event == MG_REQUEST ? MG_MORE : 0;
    };
  }
  ~Cgi() override {
    server.on_event = nullptr;
    mg_destroy_server(&server.server); /* before its children, as it ends them */
    EXPECT_TRUE(all_children_end());
  }

  void open(mg_connection *conn) {
    struct file_target target = {};
    snprintf(target.path, sizeof(target.path), "%s%s", dir.path.c_str(), conn->uri);
    snprintf(target.root, sizeof(target.root), "%s", dir.path.c_str());
    opened = true;
    connection_of(conn)->endpoint_type = EP_NONE; /* as for a request that the handler has declined */
    open_cgi_endpoint(connection_of(conn), &target);
  }
  void script(const std::string &commands, const std::string &name = "run") {
    write_script(dir.file(name), commands);
  }
  /* All that the server sends until it closes. */
  std::string ask(const std::string &request) {
    Client client(server.port());
    client.send(request);
    return rest(client);
  }
  std::string rest(Client &client) {
    EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
    return client.take();
  }
  std::string get() { return ask("GET /run HTTP/1.1\r\n\r\n"); }
  std::string reply_to(const std::string &commands) {
    script(commands);
    return get();
  }
  bool received(Client &client, const std::string &text) {
    return server.run_until([&] { return client.received.find(text) != std::string::npos; }, {&client});
  }
  size_t queued() const {
    size_t most = 0;
    for (ns_connection *c = ns_next(&server.server->ns_mgr, nullptr); c != nullptr;
         c = ns_next(&server.server->ns_mgr, c)) {
      most = std::max({most, c->send_iobuf.len, c->recv_iobuf.len});
    }
    return most;
  }
  /* Turns until nothing moves any more, noting the fullest buffer there was. */
  size_t fullest_after(int passes, const std::vector<Client *> &clients) {
    size_t most = 0;
    for (int i = 0; i < passes; i++) {
      server.run_passes(1, clients);
      most = std::max(most, queued());
      usleep(1000);
    }
    return most;
  }
  bool all_gone() {
    return server.run_until([&] { return ns_next(&server.server->ns_mgr, nullptr)->flags & CONN_LISTENING; });
  }

  TempDir dir;
  TestServer server;
  bool streamed = false; /* the program is started before the body has come */
  bool opened = false;
};

static std::string error_500(const std::string &detail) {
  const std::string body = "500 Internal Server Error\n" + detail;
  return "HTTP/1.1 500 Internal Server Error\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\nContent-Type: text/plain\r\n\r\n" + body;
}

static std::string error_without_detail(int code, const std::string &reason) {
  const std::string body = std::to_string(code) + " " + reason + "\n";
  return "HTTP/1.1 " + std::to_string(code) + " " + reason +
         "\r\nContent-Length: " + std::to_string(body.size()) + "\r\nContent-Type: text/plain\r\n\r\n" + body;
}

static const char plain_head[] = "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\n";
static const std::string plain = "printf 'Content-Type: text/plain\\n\\n'; ";

/* --- Replies ------------------------------------------------------------------------------------------- */

TEST_F(Cgi, StatusLineHeadersAndBody) {
  EXPECT_EQ(reply_to(plain + "echo hello"), plain_head + std::string("hello\n"));
  EXPECT_EQ(reply_to("printf 'Status: 404 Not Here\\r\\nX-A:1\\r\\n\\r\\nbody'"),
            "HTTP/1.1 404 Not Here\r\nX-A: 1\r\n\r\nbody");
  EXPECT_EQ(reply_to("printf 'status: 403\\n\\n'"), "HTTP/1.1 403 Forbidden\r\n\r\n");
  EXPECT_EQ(reply_to("printf 'Location: /there\\n\\n'"), "HTTP/1.1 302 Found\r\nLocation: /there\r\n\r\n");
  EXPECT_EQ(reply_to("printf 'Location: /there\\nStatus: 301\\n\\n'"),
            "HTTP/1.1 301 Moved Permanently\r\nLocation: /there\r\n\r\n");
}

TEST_F(Cgi, BytesOfAnyValueArePassedOn) {
  EXPECT_EQ(reply_to(plain + "printf '\\000\\001\\377\\n\\n\\r\\n'"),
            plain_head + std::string("\0\1\xff\n\n\r\n", 7));
}

TEST_F(Cgi, AReplyByteByByte) {
  EXPECT_EQ(reply_to("for c in A : x '\\n' B: '\\n' '\\n' b o d y; do printf \"$c\"; sleep 0.002; done"),
            "HTTP/1.1 200 OK\r\nA: x\r\nB: \r\n\r\nbody");
}

TEST_F(Cgi, LongHeaderLinesAreWhole) {
  for (const size_t size : {480, 495, 496, 497, 500, 8192, 16000}) {
    const std::string value(size, 'v');
    EXPECT_EQ(reply_to("printf 'Status: 200 " + value + "\\nX: " + value + "\\n\\n'").size(),
              size < 8192 ? strlen("HTTP/1.1 200 \r\nX: \r\n\r\n") + 2 * size : error_500("").size() + 175)
        << size;
  }
}

TEST_F(Cgi, MalformedHeads) {
  EXPECT_EQ(reply_to(""), error_500("CGI program sent malformed headers: []"));
  EXPECT_EQ(reply_to("exit 3"), error_500("CGI program sent malformed headers: []"));
  EXPECT_EQ(reply_to("echo Hello"), error_500("CGI program sent malformed headers: [Hello\n]"));
  EXPECT_EQ(reply_to("printf 'A: b\\n'"), error_500("CGI program sent malformed headers: [A: b\n]"));
  EXPECT_EQ(reply_to("printf '\\nbody'"), error_500("CGI program sent malformed headers: [\nbody]"));
  EXPECT_EQ(reply_to("printf 'Status: 99\\n\\n'"),
            error_500("CGI program sent malformed headers: [Status: 99\n\n]"));
}

TEST_F(Cgi, AHeadWithoutEndIsRefusedWhileTheProgramRuns) {
  const std::string body = "500 Internal Server Error\nCGI program sent malformed headers: [";
  EXPECT_EQ(reply_to("while :; do echo 'A: yyyyyyyyyyyyyyyyyyyyyyyyyyyyyy'; done").substr(0, 90),
            error_500(std::string(174, 'x')).substr(0, 90));
}

TEST_F(Cgi, WhatCannotBeExecutedSaysSo) {
  write_file(dir.file("run"), "#!/bin/sh\n");
  EXPECT_EQ(get(), "HTTP/1.1 500 Internal Server Error\r\n\r\n500 Server Error: " + dir.file("run") +
                       ": Permission denied");
}

TEST_F(Cgi, HeadRequestsHaveNoBody) {
  script(plain + "echo hello");
  EXPECT_EQ(ask("HEAD /run HTTP/1.1\r\n\r\n"), plain_head);
  EXPECT_EQ(reply_to("printf 'Status: 204\\n\\nbody'"), "HTTP/1.1 204 No Content\r\n\r\n");
  EXPECT_EQ(reply_to("printf 'Status: 304\\n\\nbody'"), "HTTP/1.1 304 Not Modified\r\n\r\n");
}

TEST_F(Cgi, AReplyOfManyMegabytesIsWhole) {
  const std::string reply = reply_to(plain + "head -c 5000000 /dev/zero");
  EXPECT_EQ(reply.size(), strlen(plain_head) + 5000000);
  EXPECT_EQ(reply.substr(0, strlen(plain_head)), plain_head);
}

TEST_F(Cgi, RunsInItsOwnDirectoryWithTheRequestInItsEnvironment) {
  script(plain + "pwd -P; echo \"$SCRIPT_FILENAME $QUERY_STRING $HTTP_X_Y\"");
  EXPECT_EQ(ask("GET /run?a=$(id);`id`|id&\"b\" HTTP/1.1\r\nX-y: $(id)\r\n\r\n"),
            plain_head + dir.path + "\n" + dir.file("run") + " a=$(id);`id`|id&\"b\" $(id)\n");
}

TEST_F(Cgi, InterpreterWithArguments) {
  write_file(dir.file("run"), plain + "echo $0 $1 $-");
  mg_set_option(server.server, "cgi_interpreter", "/bin/sh");
  EXPECT_EQ(get(), plain_head + dir.file("run") + "\n");
  mg_set_option(server.server, "cgi_interpreter", "  /bin/sh  -f ");
  EXPECT_EQ(get(), plain_head + dir.file("run") + " f\n");
  mg_set_option(server.server, "cgi_interpreter", "/no/sh -f");
  EXPECT_EQ(get(), "HTTP/1.1 500 Internal Server Error\r\n\r\n500 Server Error: /no/sh -f " +
                       dir.file("run") + ": No such file or directory");
  std::string words = "/bin/sh";
  for (int i = 0; i < MG_MAX_CHILD_ARGUMENTS; i++) words += " -e";
  mg_set_option(server.server, "cgi_interpreter", words.c_str());
  EXPECT_EQ(get(), error_500("start_process(" + dir.file("run") + ") failed"));
}

TEST_F(Cgi, TheAccessLogHasOneLineForEachRequest) {
  const std::string log = dir.file("log");
  mg_set_option(server.server, "access_log_file", log.c_str());
  reply_to("printf 'Status: 404\\n\\n'");
  EXPECT_TRUE(all_gone());
  reply_to("echo malformed");
  EXPECT_TRUE(all_gone());
  std::string text = read_file(log);
  for (size_t open; (open = text.find(" [")) != std::string::npos;)
    text.erase(open, text.find(']') + 1 - open);
  EXPECT_EQ(text, "127.0.0.1 - - \"GET /run HTTP/1.1\" 404 0 - -\n"
                  "127.0.0.1 - - \"GET /run HTTP/1.1\" 500 0 - -\n");
}

/* --- Requests that no program gets --------------------------------------------------------------------- */

TEST_F(Cgi, BodiesWithoutALengthAreRefused) {
  script(plain);
  EXPECT_EQ(ask("POST /run HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n"),
            error_without_detail(411, "Length Required"));
  EXPECT_EQ(ask("POST /run HTTP/1.1\r\nContent-Length: -1\r\n\r\n"),
            error_without_detail(400, "Bad Request"));
}

TEST_F(Cgi, EnvironmentsThatDoNotFitAreRefused) {
  script(plain);
  std::string headers;
  for (int i = 0; i < 30; i++) headers += "X-" + std::to_string(i) + ": " + std::string(500, 'x') + "\r\n";
  EXPECT_EQ(ask("GET /run HTTP/1.1\r\n" + headers + "\r\n"),
            error_without_detail(431, "Request Header Fields Too Large"));
  EXPECT_EQ(ask("GET /run?" + std::string(9000, 'x') + " HTTP/1.1\r\n\r\n"),
            error_without_detail(414, "URI Too Long"));
}

TEST_F(Cgi, ADatagramHasNoProgram) {
  script(plain);
  ns_connection sender = {};
  sender.flags = CONN_UDP;
  sender.sock = -1;
  sender.mgr = &server.server->ns_mgr;
  connection *conn = new_connection(&sender);
  char head[] = "GET /run HTTP/1.1\r\n\r\n";
  ASSERT_GT(parse_http_message(head, sizeof(head) - 1, &conn->mg_conn), 0);
  open(&conn->mg_conn);
  EXPECT_EQ(running_children(), 0);
  EXPECT_EQ(conn->endpoint_type, EP_NONE);
  free(conn);
}

/* --- The request's body -------------------------------------------------------------------------------- */

TEST_F(Cgi, TheBodyIsTheStandardInput) {
  script(plain + "cat");
  EXPECT_EQ(ask("POST /run HTTP/1.1\r\nContent-Length: 5\r\n\r\nhello"), plain_head + std::string("hello"));
  EXPECT_EQ(ask("POST /run HTTP/1.1\r\nContent-Length: 5\r\n\r\nhello and more"),
            plain_head + std::string("hello"));
  EXPECT_EQ(ask("POST /run HTTP/1.1\r\nContent-Length: 0\r\n\r\nx"), plain_head);
  EXPECT_EQ(ask("POST /run HTTP/1.1\r\n\r\nx"), plain_head);
}

TEST_F(Cgi, ABodyIsPassedOnAsItComes) {
  script(plain + "while read -r line; do echo \"got $line\"; done");
  streamed = true;
  Client client(server.port());
  client.send("POST /run HTTP/1.1\r\nContent-Length: 12\r\n\r\none\n");
  EXPECT_TRUE(received(client, "got one\n"));
  client.send("two\n");
  EXPECT_TRUE(received(client, "got two\n"));
  client.send("end\nnot this\n");
  EXPECT_EQ(rest(client), plain_head + std::string("got one\ngot two\ngot end\n"));
}

TEST_F(Cgi, ABodyOfManyMegabytesComesBack) {
  script(plain + "cat");
  for (const bool mode : {false, true}) {
    streamed = mode;
    opened = false;
    std::string body;
    for (int i = 0; body.size() < 1500000; i++) body += std::to_string(i) + ",";
    EXPECT_EQ(ask("POST /run HTTP/1.1\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body),
              plain_head + body);
  }
}

TEST_F(Cgi, AProgramNeedNotReadTheBody) {
  const std::string body(1000000, 'x');
  script(plain + "head -c 2000000 /dev/zero");
  const std::string reply =
      ask("POST /run HTTP/1.1\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
  EXPECT_EQ(reply.size(), strlen(plain_head) + 2000000);
}

TEST_F(Cgi, AProgramMayCloseItsInput) {
  script(plain + "exec <&-; sleep 0.05; echo done");
  EXPECT_EQ(ask("POST /run HTTP/1.1\r\nContent-Length: 100000\r\n\r\n" + std::string(100000, 'x')),
            plain_head + std::string("done\n"));
}

TEST_F(Cgi, AProgramMayEndBeforeTheClientHasSentAll) {
  script(plain + "head -c 100000 /dev/zero");
  streamed = true;
  const std::string reply = ask("POST /run HTTP/1.1\r\nContent-Length: 1000000000\r\n\r\nbegin");
  EXPECT_EQ(reply.size(), strlen(plain_head) + 100000);
}

/* --- Slow and vanishing partners ----------------------------------------------------------------------- */

TEST_F(Cgi, AClientThatDoesNotReadHoldsAFloodingProgramBack) {
  script(plain + "exec cat /dev/zero");
  Client client(server.port());
  client.reading = false;
  client.send("GET /run HTTP/1.1\r\n\r\n");
  const size_t most = fullest_after(300, {&client});
  EXPECT_GT(most, MG_MAX_QUEUED_OUTPUT);
  EXPECT_LT(most, 2 * MG_MAX_QUEUED_OUTPUT);
  client.close();
  EXPECT_TRUE(all_gone());
}

TEST_F(Cgi, AProgramThatDoesNotReadHoldsAFloodingClientBack) {
  script(plain + "exec sleep 1000");
  streamed = true;
  Client client(server.port());
  client.send("POST /run HTTP/1.1\r\nContent-Length: 100000000\r\n\r\n" + std::string(8000000, 'x'));
  const size_t most = fullest_after(300, {&client});
  EXPECT_GT(most, MG_MAX_QUEUED_OUTPUT);
  EXPECT_LT(most, 2 * MG_MAX_QUEUED_OUTPUT);
}

TEST_F(Cgi, AFloodingClientStaysHeldBackWhileTheProgramWrites) {
  script(plain + "while :; do echo line; sleep 0.001; done 2>/dev/null");
  streamed = true;
  Client client(server.port());
  client.send("POST /run HTTP/1.1\r\nContent-Length: 100000000\r\n\r\n" + std::string(8000000, 'x'));
  fullest_after(200, {&client});
  const size_t before = queued();
  EXPECT_GT(before, MG_MAX_QUEUED_OUTPUT);
  client.take();
  EXPECT_TRUE(received(client, "line\nline\nline\nline\nline\nline\nline\nline\n"));
  EXPECT_EQ(queued(), before);
}

TEST_F(Cgi, ASlowClientGetsAllOfAProgramThatHasEnded) {
  script(plain + "cat >/dev/null & head -c 4000000 /dev/zero");
  Client client(server.port());
  client.reading = false;
  client.send("POST /run HTTP/1.1\r\nContent-Length: 1000000\r\n\r\n" + std::string(1000000, 'x'));
  fullest_after(200, {&client});
  client.reading = true;
  EXPECT_EQ(rest(client).size(), strlen(plain_head) + 4000000);
}

TEST_F(Cgi, AProgramEndsWithItsClient) {
  script("echo $$ > pid; exec sleep 1000");
  Client client(server.port());
  client.send("GET /run HTTP/1.1\r\n\r\n");
  ASSERT_TRUE(server.run_until([&] { return read_file(dir.file("pid")).find('\n') != std::string::npos; }));
  const pid_t pid = atoi(read_file(dir.file("pid")).c_str());
  EXPECT_TRUE(process_runs(pid));
  client.close();
  EXPECT_TRUE(server.run_until([&] { return running_children() == 0; }));
  EXPECT_FALSE(process_runs(pid));
  EXPECT_TRUE(all_gone());
}

TEST_F(Cgi, AProgramThatNeverEndsEndsWithTheIdleTimeOut) {
  script(plain + "exec sleep 1000");
  Client client(server.port());
  client.send("GET /run HTTP/1.1\r\n\r\n");
  ASSERT_TRUE(received(client, plain_head));
  for (ns_connection *c = ns_next(&server.server->ns_mgr, nullptr); c != nullptr;
       c = ns_next(&server.server->ns_mgr, c)) {
    if (c->listener != nullptr) c->last_io_time -= MG_IDLE_TIMEOUT_SECONDS + 1;
  }
  EXPECT_EQ(rest(client), plain_head);
  EXPECT_TRUE(server.run_until([&] { return running_children() == 0; }));
}

TEST_F(Cgi, OthersAreServedWhileAProgramHangs) {
  script("exec sleep 1000", "hang");
  Client hanging(server.port());
  hanging.send("GET /hang HTTP/1.1\r\n\r\n");
  EXPECT_TRUE(server.run_until([&] { return running_children() == 1; }));
  EXPECT_EQ(reply_to(plain + "echo hello"), plain_head + std::string("hello\n"));
}

TEST_F(Cgi, TheReplyEndsWithTheProgramThoughABackgroundProcessHoldsItsOutput) {
  EXPECT_EQ(reply_to(plain + "echo hello; sleep 1000 & echo $! > pid"), plain_head + std::string("hello\n"));
  const pid_t background = atoi(read_file(dir.file("pid")).c_str());
  EXPECT_TRUE(process_runs(background)) << "what a program leaves behind is its own affair";
  kill(background, SIGKILL);
}

TEST_F(Cgi, AProgramMayGoOnForAWhileAfterItHasClosedItsOutput) {
  EXPECT_EQ(reply_to(plain + "exec >&- <&-; sleep 0.1; echo done > done"), plain_head);
  EXPECT_TRUE(all_children_end());
  EXPECT_EQ(read_file(dir.file("done")), "done\n");
}

TEST_F(Cgi, NoProcessesOrDescriptorsAreLeftOfManyRequests) {
  script("printf 'A: b\\n\\n'");
  get();
  EXPECT_TRUE(all_children_end());
  const int free_before = dup(0);
  close(free_before);
  for (int i = 0; i < 10; i++) ASSERT_EQ(get(), "HTTP/1.1 200 OK\r\nA: b\r\n\r\n");
  EXPECT_TRUE(all_children_end());
  EXPECT_EQ(own_children(), std::vector<pid_t>{});
  const int free_after = dup(0);
  close(free_after);
  EXPECT_EQ(free_after, free_before);
}

TEST_F(Cgi, AServerThatEndsEndsItsPrograms) {
  for (const std::string &head : {std::string(), plain}) {
    script(head + "trap '' TERM; echo $$ > pid; while :; do sleep 0.01; done");
    TestServer other;
    other.on_event = server.on_event;
    Client client(other.port());
    client.send("GET /run HTTP/1.1\r\n\r\n");
    ASSERT_TRUE(other.run_until([&] { return read_file(dir.file("pid")).find('\n') != std::string::npos; }));
    const pid_t pid = atoi(read_file(dir.file("pid")).c_str());
    other.run_passes(10, {&client});
    EXPECT_TRUE(process_runs(pid));
    other.on_event = nullptr;
    mg_destroy_server(&other.server);
    EXPECT_TRUE(process_ends(pid));
    unlink(dir.file("pid").c_str());
  }
}
