/* Sending files: ranges, preconditions, and the body part by part. */
#include "tests/unit/server/server_harness.h"

#include <arpa/inet.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace fs = std::filesystem;

/* --- Ranges -------------------------------------------------------------------------------------------- */

TEST(Range, IsReadAsTheHeaderSays) {
  const struct {
    const char *header;
    int64_t size;
    enum range_result result;
    int64_t first;
    int64_t last;
  } rows[] = {
      {"bytes=0-0", 10, RANGE_PART, 0, 0},
      {"bytes=2-5", 10, RANGE_PART, 2, 5},
      {"bytes=0-9", 10, RANGE_PART, 0, 9},
      {"bytes=9-9", 10, RANGE_PART, 9, 9},
      {"bytes=5-", 10, RANGE_PART, 5, 9},
      {"bytes=-3", 10, RANGE_PART, 7, 9},
      {"bytes=-10", 10, RANGE_PART, 0, 9},
      {"bytes=-11", 10, RANGE_PART, 0, 9},
      {"bytes=5-100", 10, RANGE_PART, 5, 9},
      {"bytes=5-99999999999999999999999", 10, RANGE_PART, 5, 9},
      {"bytes=-99999999999999999999999", 10, RANGE_PART, 0, 9},
      {"Bytes= 1-2 ", 10, RANGE_PART, 1, 2},
      {"bytes=1-2", INT64_MAX, RANGE_PART, 1, 2},
      {"bytes=9223372036854775806-", INT64_MAX, RANGE_PART, INT64_MAX - 1, INT64_MAX - 1},
      {"bytes=9223372036854775806-9223372036854775808", INT64_MAX, RANGE_PART, INT64_MAX - 1, INT64_MAX - 1},
      {"bytes=10-", 10, RANGE_UNSATISFIABLE, -7, -7},
      {"bytes=10-10", 10, RANGE_UNSATISFIABLE, -7, -7},
      {"bytes=99999999999999999999999-", 10, RANGE_UNSATISFIABLE, -7, -7},
      {"bytes=-0", 10, RANGE_UNSATISFIABLE, -7, -7},
      {"bytes=0-", 0, RANGE_UNSATISFIABLE, -7, -7},
      {"bytes=0-0", 0, RANGE_UNSATISFIABLE, -7, -7},
      {"bytes=-1", 0, RANGE_NONE, -7, -7},
      {"bytes=5-2", 10, RANGE_NONE, -7, -7},
      {"bytes=0-1,3-4", 10, RANGE_NONE, -7, -7},
      {"bytes=-", 10, RANGE_NONE, -7, -7},
      {"bytes=", 10, RANGE_NONE, -7, -7},
      {"bytes", 10, RANGE_NONE, -7, -7},
      {"bytes=1", 10, RANGE_NONE, -7, -7},
      {"bytes=a-b", 10, RANGE_NONE, -7, -7},
      {"bytes=1-b", 10, RANGE_NONE, -7, -7},
      {"bytes=+1-2", 10, RANGE_NONE, -7, -7},
      {"bytes=--2", 10, RANGE_NONE, -7, -7},
      {"bytes=1--2", 10, RANGE_NONE, -7, -7},
      {"bytes=0x1-2", 10, RANGE_NONE, -7, -7},
      {"bytes=1-2x", 10, RANGE_NONE, -7, -7},
      {"lines=1-2", 10, RANGE_NONE, -7, -7},
      {"", 10, RANGE_NONE, -7, -7},
  };
  for (const auto &row : rows) {
    struct byte_range range = {-7, -7};
    EXPECT_EQ(parse_range(row.header, row.size, &range), row.result) << row.header;
    EXPECT_EQ(range.first, row.first) << row.header;
    EXPECT_EQ(range.last, row.last) << row.header;
  }
}

TEST(Etag, IsTimeInHexadecimalAndSizeInDecimal) {
  struct stat st = {};
  char etag[MG_ETAG_SIZE];
  st.st_mtime = 0x5ec0ffee;
  st.st_size = 5000000000;
  print_etag(&st, etag);
  EXPECT_STREQ(etag, "\"5ec0ffee.5000000000\"");
  st.st_mtime = -1;
  st.st_size = INT64_MAX;
  print_etag(&st, etag);
  EXPECT_STREQ(etag, "\"ffffffffffffffff.9223372036854775807\"");
}

/* --- Requests ------------------------------------------------------------------------------------------ */

static const time_t file_time = 784111777; /* Sun, 06 Nov 1994 08:49:37 GMT */
static const char file_date[] = "Sun, 06 Nov 1994 08:49:37 GMT";

static void set_time(const std::string &path, time_t t) {
  const struct timeval times[] = {{t, 0}, {t, 0}};
  ASSERT_EQ(utimes(path.c_str(), times), 0);
}

/* Replaces the value of the Date header, which is checked to be a date of now. */
static std::string without_date(std::string reply) {
  const size_t at = reply.find("Date: ");
  if (at == std::string::npos) return reply;
  const size_t end = reply.find("\r\n", at);
  const time_t date = parse_http_date(reply.substr(at + 6, end - at - 6).c_str());
  EXPECT_LE(date, time(nullptr));
  EXPECT_GE(date, time(nullptr) - 60);
  return reply.replace(at + 6, end - at - 6, "NOW");
}

/* A server that declines everything, with one file "a.html" of ten bytes in its document root. */
struct Files : testing::Test {
  Files() {
    write("a.html", "0123456789");
    mg_set_option(server.server, "document_root", dir.path.c_str());
  }
  void write(const std::string &name, const std::string &content) {
    std::ofstream(dir.file(name)) << content;
    set_time(dir.file(name), file_time);
  }
  /* A whole reply; the connection is a new one. */
  std::string ask(const std::string &method, const std::string &uri, const std::string &headers = "",
                  const char *version = "1.1") {
    Client client(server.port());
    const std::string request = method + " " + uri + " HTTP/" + version + "\r\n" + headers + "\r\n";
    const std::string reply = server.ask(client, request);
    closed = client.closed;
    return without_date(reply);
  }
  static std::string reply_of(const std::string &status, const std::string &body, long length = -1,
                              const std::string &extra = "", const char *connection = "keep-alive",
                              const std::string &etag = "2ebc98a1.10", const char *type = "text/html") {
    return "HTTP/1.1 " + status + "\r\nDate: NOW\r\nLast-Modified: " + file_date + "\r\nEtag: \"" + etag +
           "\"\r\nContent-Type: " + type +
           "\r\nContent-Length: " + std::to_string(length < 0 ? static_cast<long>(body.size()) : length) +
           "\r\nConnection: " + connection + "\r\nAccept-Ranges: bytes\r\n" + extra + "\r\n" + body;
  }
  TempDir dir;
  TestServer server;
  bool closed = false;
};

static const std::string not_found =
    "HTTP/1.1 404 Not Found\r\nContent-Length: 14\r\nContent-Type: text/plain\r\n\r\n404 Not Found\n";

TEST_F(Files, AFileIsSentWhole) {
  EXPECT_EQ(ask("GET", "/a.html"), reply_of("200 OK", "0123456789"));
  EXPECT_FALSE(closed);
  EXPECT_EQ(server.events, (std::vector<std::string>{"auth", "recv", "request", "auth"}));
}

TEST_F(Files, ARequestWithABodyOfUnknownEndEndsTheConnection) {
  EXPECT_EQ(ask("GET", "/a.html", "Transfer-Encoding: chunked\r\n"),
            reply_of("200 OK", "0123456789", -1, "", "close"));
  EXPECT_TRUE(closed);
}

TEST_F(Files, AnEmptyFileIsSentWhole) {
  write("empty", "");
  EXPECT_EQ(ask("GET", "/empty"), reply_of("200 OK", "", 0, "", "keep-alive", "2ebc98a1.0", "text/plain"));
  EXPECT_FALSE(closed);
}

TEST_F(Files, ConnectionIsKeptAsTheRequestAsks) {
  const std::string kept = reply_of("200 OK", "0123456789");
  const std::string ended = reply_of("200 OK", "0123456789", -1, "", "close");
  EXPECT_EQ(ask("GET", "/a.html", "Connection: close\r\n"), ended);
  EXPECT_TRUE(closed);
  EXPECT_EQ(ask("GET", "/a.html", "", "1.0"), ended);
  EXPECT_TRUE(closed);
  EXPECT_EQ(ask("GET", "/a.html", "Connection: Keep-Alive\r\n", "1.0"), kept);
  EXPECT_FALSE(closed);
  EXPECT_EQ(ask("POST", "/a.html"), ended);
  EXPECT_TRUE(closed);
}

TEST_F(Files, SeveralAreSentOverOneConnection) {
  write("b.css", "bb");
  Client client(server.port());
  for (int i = 0; i < 3; i++) {
    EXPECT_EQ(without_date(server.ask(client, "GET /a.html HTTP/1.1\r\n\r\n")),
              reply_of("200 OK", "0123456789"));
    EXPECT_EQ(without_date(server.ask(client, "GET /b.css HTTP/1.1\r\n\r\n")),
              reply_of("200 OK", "bb", 2, "", "keep-alive", "2ebc98a1.2", "text/css"));
  }
  EXPECT_FALSE(client.closed);
}

TEST_F(Files, HeadHasNoBody) {
  EXPECT_EQ(ask("HEAD", "/a.html"), reply_of("200 OK", "", 10, "", "close"));
  EXPECT_EQ(ask("HEAD", "/a.html", "Range: bytes=1-2\r\n"), reply_of("200 OK", "", 10, "", "close"));
  EXPECT_EQ(ask("HEAD", "/nope"), not_found); /* error replies are the same for all methods */
  EXPECT_TRUE(closed);
}

TEST_F(Files, APartIsSentForARange) {
  EXPECT_EQ(ask("GET", "/a.html", "Range: bytes=2-5\r\n"),
            reply_of("206 Partial Content", "2345", 4, "Content-Range: bytes 2-5/10\r\n"));
  EXPECT_FALSE(closed);
  EXPECT_EQ(ask("GET", "/a.html", "Range: bytes=-1\r\n"),
            reply_of("206 Partial Content", "9", 1, "Content-Range: bytes 9-9/10\r\n"));
  EXPECT_EQ(ask("GET", "/a.html", "Range: bytes=3-\r\n"),
            reply_of("206 Partial Content", "3456789", 7, "Content-Range: bytes 3-9/10\r\n"));
  EXPECT_EQ(ask("GET", "/a.html", "Range: bytes=0-1,4-5\r\n"), reply_of("200 OK", "0123456789"));
  EXPECT_EQ(ask("POST", "/a.html", "Range: bytes=0-1\r\n"),
            reply_of("200 OK", "0123456789", -1, "", "close"));
}

TEST_F(Files, ARangeBehindTheEndIsRefused) {
  EXPECT_EQ(
      ask("GET", "/a.html", "Range: bytes=10-\r\n"),
      "HTTP/1.1 416 Requested Range Not Satisfiable\r\nContent-Length: 36\r\nContent-Type: text/plain\r\n"
      "Content-Range: bytes */10\r\n\r\n416 Requested Range Not Satisfiable\n");
  EXPECT_EQ(server.events.back(), "close");
  EXPECT_EQ(server.events[server.events.size() - 2], "error");
}

TEST_F(Files, ARangeIsSentOnlyOfTheFileThatTheClientKnows) {
  const std::string range = "Range: bytes=0-0\r\nIf-Range: ";
  const std::string part = reply_of("206 Partial Content", "0", 1, "Content-Range: bytes 0-0/10\r\n");
  const std::string whole = reply_of("200 OK", "0123456789");
  EXPECT_EQ(ask("GET", "/a.html", range + "\"2ebc98a1.10\"\r\n"), part);
  EXPECT_EQ(ask("GET", "/a.html", range + file_date + "\r\n"), part);
  EXPECT_EQ(ask("GET", "/a.html", range + "\"2ebc98a1.11\"\r\n"), whole);
  EXPECT_EQ(ask("GET", "/a.html", range + "W/\"2ebc98a1.10\"\r\n"), whole);
  EXPECT_EQ(ask("GET", "/a.html", range + "Sun, 06 Nov 1994 08:49:38 GMT\r\n"), whole);
  EXPECT_EQ(ask("GET", "/a.html", range + "nonsense\r\n"), whole);
  EXPECT_EQ(ask("GET", "/a.html", "Range: bytes=99-\r\nIf-Range: \"x\"\r\n"), whole);
}

TEST_F(Files, AnUnchangedFileIsNotSentAgain) {
  const std::string unchanged = reply_of("304 Not Modified", "", 10);
  const std::string whole = reply_of("200 OK", "0123456789");
  for (const char *tags : {"\"2ebc98a1.10\"", "W/\"2ebc98a1.10\"", "*", "\"x\", \"2ebc98a1.10\"",
                           "\"a,b\",\"2ebc98a1.10\" ,\"y\""}) {
    EXPECT_EQ(ask("GET", "/a.html", std::string("If-None-Match: ") + tags + "\r\n"), unchanged) << tags;
    EXPECT_FALSE(closed);
  }
  for (const char *tags : {"\"2ebc98a1.1\"", "\"2ebc98a1.100\"", "2ebc98a1.10", "\"x\",\"y\"", "\"", "W/",
                           ",", "\"x,\"2ebc98a1.10\""})
    EXPECT_EQ(ask("GET", "/a.html", std::string("If-None-Match: ") + tags + "\r\n"), whole) << tags;
  for (const char *date :
       {file_date, "Sun, 06 Nov 1994 08:49:38 GMT", "6/Nov/1994 08:49:37", "06-Nov-1994 08:49:37"})
    EXPECT_EQ(ask("GET", "/a.html", std::string("If-Modified-Since: ") + date + "\r\n"), unchanged) << date;
  for (const char *date : {"Sun, 06 Nov 1994 08:49:36 GMT", "nonsense", "0"})
    EXPECT_EQ(ask("GET", "/a.html", std::string("If-Modified-Since: ") + date + "\r\n"), whole) << date;
  EXPECT_EQ(ask("HEAD", "/a.html", "If-None-Match: *\r\n"),
            reply_of("304 Not Modified", "", 10, "", "close"));
}

TEST_F(Files, TheTagDecidesWhenADateIsGivenToo) {
  const std::string old_date = "If-Modified-Since: Sun, 06 Nov 1994 08:49:36 GMT\r\n";
  const std::string new_date = std::string("If-Modified-Since: ") + file_date + "\r\n";
  EXPECT_EQ(ask("GET", "/a.html", "If-None-Match: \"2ebc98a1.10\"\r\n" + old_date),
            reply_of("304 Not Modified", "", 10));
  EXPECT_EQ(ask("GET", "/a.html", "If-None-Match: \"x\"\r\n" + new_date), reply_of("200 OK", "0123456789"));
}

TEST_F(Files, AChangedFileFailsThePreconditions) {
  const std::string refused = "HTTP/1.1 412 Precondition Failed\r\nContent-Length: 24\r\nContent-Type: "
                              "text/plain\r\n\r\n412 Precondition Failed\n";
  const std::string whole = reply_of("200 OK", "0123456789");
  EXPECT_EQ(ask("GET", "/a.html", "If-Match: \"x\"\r\n"), refused);
  EXPECT_EQ(ask("GET", "/a.html", "If-Match: W/\"2ebc98a1.10\"\r\n"), refused);
  EXPECT_EQ(ask("GET", "/a.html", "If-Match: \"x\", \"2ebc98a1.10\"\r\n"), whole);
  EXPECT_EQ(ask("GET", "/a.html", "If-Match: *\r\n"), whole);
  EXPECT_EQ(ask("GET", "/a.html", "If-Unmodified-Since: Sun, 06 Nov 1994 08:49:36 GMT\r\n"), refused);
  EXPECT_EQ(ask("GET", "/a.html", std::string("If-Unmodified-Since: ") + file_date + "\r\n"), whole);
  EXPECT_EQ(ask("GET", "/a.html", "If-Unmodified-Since: nonsense\r\n"), whole);
  EXPECT_EQ(ask("GET", "/a.html", "If-Match: *\r\nIf-Unmodified-Since: Sun, 06 Nov 1994 08:49:36 GMT\r\n"),
            whole);
}

TEST_F(Files, PreconditionsComeBeforeTheRange) {
  EXPECT_EQ(ask("GET", "/a.html", "Range: bytes=99-\r\nIf-None-Match: *\r\n"),
            reply_of("304 Not Modified", "", 10));
}

TEST_F(Files, MissingAndForbiddenFilesAreNotFound) {
  ASSERT_EQ(mkfifo(dir.file("pipe").c_str(), 0600), 0);
  fs::create_symlink("/etc/passwd", dir.file("link"));
  for (const char *uri : {"/nope", "/pipe", "/link", "/a.html/", "/.htpasswd", "/a.html/x", "/dir/../a.html"})
    EXPECT_EQ(ask("GET", uri), not_found) << uri;
}

TEST_F(Files, AHeadOfAnyLengthIsWhole) {
  /* Among the lengths is one where mg_printf() would put a NUL byte. */
  for (size_t length = 190; length < 330; length++) {
    mg_set_option(server.server, "extra_mime_types", ("html=" + std::string(length, 't')).c_str());
    const std::string type(length, 't');
    ASSERT_EQ(ask("GET", "/a.html"),
              reply_of("200 OK", "0123456789", -1, "", "keep-alive", "2ebc98a1.10", type.c_str()));
  }
}

TEST_F(Files, MgSendFileAddsHeadersAndIsFinishedByTheServer) {
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event == MG_AUTH) return MG_TRUE;
    if (event != MG_REQUEST) return 0;
    mg_send_file(c, dir.file(c->uri + 1).c_str(), "X-One: 1\r\nX-Two: 2\r\n");
    return MG_MORE;
  };
  mg_set_option(server.server, "document_root", nullptr);
  EXPECT_EQ(ask("GET", "/a.html"), reply_of("200 OK", "0123456789", -1, "X-One: 1\r\nX-Two: 2\r\n"));
  EXPECT_FALSE(closed);
  EXPECT_EQ(
      ask("GET", "/a.html", "Range: bytes=0-0\r\n"),
      reply_of("206 Partial Content", "0", 1, "Content-Range: bytes 0-0/10\r\nX-One: 1\r\nX-Two: 2\r\n"));
  EXPECT_EQ(ask("GET", "/nope"), not_found);
  /* Errors have their body whatever the method, but not where it would be taken for the next reply. */
  EXPECT_EQ(ask("HEAD", "/nope"), not_found.substr(0, not_found.size() - 14));
  EXPECT_FALSE(closed);
  EXPECT_EQ(ask("HEAD", "/nope", "Connection: close\r\n"), not_found);
  fs::create_directories(dir.file("sub"));
  EXPECT_EQ(ask("GET", "/sub"), not_found);
  EXPECT_EQ(ask("POST", "/a.html"),
            reply_of("200 OK", "0123456789", -1, "X-One: 1\r\nX-Two: 2\r\n", "close"));
}

TEST_F(Files, MgSendFileAnswersOnceWhateverTheHandlerDoesBesides) {
  const std::string file = dir.file("a.html"), nope = dir.file("nope");
  mg_set_option(server.server, "document_root", dir.path.c_str());
  for (const mg_event when : {MG_RECV, MG_REQUEST, MG_POLL}) {
    for (const int result : {MG_FALSE, MG_TRUE, MG_MORE}) {
      for (const bool missing : {false, true}) {
        server.on_event = [&](mg_connection *c, mg_event event) -> int {
          if (event == MG_AUTH) return MG_TRUE;
          if (event == MG_REQUEST && when == MG_POLL) return MG_MORE;
          if (event != when || c->uri == nullptr) return 0;
          for (int i = 0; i < 2; i++) mg_send_file(c, (missing ? nope : file).c_str(), nullptr);
          return event == MG_RECV ? 0 : result;
        };
        for (int i = 0; i < 2; i++)
          EXPECT_EQ(ask("GET", "/b.txt"), missing ? not_found : reply_of("200 OK", "0123456789"))
              << when << result;
        EXPECT_FALSE(closed) << when << result;
      }
    }
  }
}

TEST_F(Files, MgSendFileDoesNothingWithoutARequestOfTheHandler) {
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event != MG_RECV && event != MG_REQUEST) mg_send_file(c, dir.file("a.html").c_str(), nullptr);
    return event == MG_AUTH || event == MG_HTTP_ERROR ? MG_TRUE : MG_FALSE;
  };
  mg_set_option(server.server, "document_root", dir.path.c_str());
  Client client(server.port());
  server.run_passes(5, {&client});
  EXPECT_EQ(client.take(), "");
  EXPECT_EQ(server.ask(client, "GET /nope HTTP/1.1\r\n\r\n"), "");
  EXPECT_TRUE(client.closed);
}

/* --- The body, part by part ---------------------------------------------------------------------------- */

/* A text of which no part looks like another. */
static std::string pattern_of(size_t size) {
  std::string text;
  for (int i = 0; text.size() < size; i++) text += std::to_string(i) + std::string(1000, ' ');
  return text.substr(0, size);
}

static const size_t large_size = 16 << 20;

/* A file larger than what sockets and buffers hold. */
struct LargeFile : Files {
  LargeFile() : content(pattern_of(large_size)) { write("large", content); }
  std::string large_head() const {
    return reply_of("200 OK", "", large_size, "", "keep-alive", "2ebc98a1.16777216", "text/plain");
  }
  std::string content;
};

TEST_F(LargeFile, ComesWholeAndIsQueuedOnlyAsItIsTaken) {
  Client client(server.port());
  client.reading = false;
  client.send("GET /large HTTP/1.1\r\n\r\n");
  server.run_passes(300, {&client});
  ASSERT_NE(server.first_client(), nullptr);
  EXPECT_LE(server.first_client()->send_iobuf.len, 128u * 1024);
  client.reading = true;
  const size_t whole = large_head().size() - 3 + 29 + content.size();
  ASSERT_TRUE(server.run_until([&] { return client.received.size() >= whole; }, {&client}));
  EXPECT_TRUE(without_date(client.take()) == large_head() + content);
  EXPECT_EQ(without_date(server.ask(client, "GET /a.html HTTP/1.1\r\n\r\n")),
            reply_of("200 OK", "0123456789"));
}

TEST_F(LargeFile, AClientThatGoesAwayTakesNothingWithIt) {
  auto client = std::make_unique<Client>(server.port());
  client->reading = false;
  client->send("GET /large HTTP/1.1\r\n\r\n");
  server.run_passes(100, {client.get()});
  EXPECT_EQ(server.client_count(), 1);
  client.reset();
  EXPECT_TRUE(server.run_until([&] { return server.client_count() == 0; }));
}

TEST_F(LargeFile, WhatTheClientSendsMeanwhileIsNotKept) {
  Client client(server.port());
  client.reading = false;
  client.send("GET /large HTTP/1.1\r\n\r\n");
  server.run_passes(100, {&client});
  for (int i = 0; i < 50; i++) {
    client.send(std::string(10000, 'x'));
    server.run_passes(5, {&client});
    ASSERT_EQ(server.first_client()->recv_iobuf.len, 0u);
  }
}

TEST_F(LargeFile, TheBodyStaysWithTheHandlerMeanwhile) {
  std::string seen;
  server.on_event = [&](mg_connection *c, mg_event event) -> int {
    if (event == MG_AUTH) return MG_TRUE;
    if (event == MG_REQUEST) {
      mg_send_file(c, dir.file("large").c_str(), nullptr);
      return MG_MORE;
    }
    if (event == MG_POLL && c->content != nullptr) seen.assign(c->content, c->content_len);
    return 0;
  };
  Client client(server.port());
  client.reading = false;
  client.send("POST /x HTTP/1.1\r\nContent-Length: 4\r\n\r\nbody");
  for (int i = 0; i < 50; i++) {
    server.run_passes(5, {&client});
    ASSERT_EQ(seen, "body");
    client.send(std::string(10000, 'x'));
  }
}

TEST_F(LargeFile, AFileThatShrinksEndsTheConnection) {
  Client client(server.port());
  client.reading = false;
  client.send("GET /large HTTP/1.1\r\n\r\n");
  server.run_passes(100, {&client});
  fs::resize_file(dir.file("large"), large_size / 2);
  client.reading = true;
  ASSERT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
  const std::string received = without_date(client.take());
  EXPECT_TRUE(received == large_head() + content.substr(0, large_size / 2));
}

TEST_F(LargeFile, AFileThatGrowsOrIsReplacedIsSentAsItWas) {
  Client client(server.port());
  client.reading = false;
  client.send("GET /large HTTP/1.1\r\n\r\n");
  server.run_passes(100, {&client});
  std::ofstream(dir.file("large"), std::ios::app) << "more";
  fs::rename(dir.file("a.html"), dir.file("large"));
  client.reading = true;
  const size_t whole = large_head().size() - 3 + 29 + content.size();
  ASSERT_TRUE(server.run_until([&] { return client.received.size() >= whole; }, {&client}));
  server.run_passes(20, {&client});
  EXPECT_TRUE(without_date(client.take()) == large_head() + content);
  EXPECT_FALSE(client.closed);
}

TEST_F(Files, APartBehindFourGigabytesIsFound) {
  write("sparse", "");
  fs::resize_file(dir.file("sparse"), 5000000000);
  std::fstream(dir.file("sparse"), std::ios::in | std::ios::out).seekp(4999999998) << "ab";
  set_time(dir.file("sparse"), file_time);
  EXPECT_EQ(ask("GET", "/sparse", "Range: bytes=-3\r\n"),
            reply_of("206 Partial Content", std::string("\0ab", 3), 3,
                     "Content-Range: bytes 4999999997-4999999999/5000000000\r\n", "keep-alive",
                     "2ebc98a1.5000000000", "text/plain"));
  EXPECT_EQ(ask("HEAD", "/sparse"),
            reply_of("200 OK", "", 5000000000, "", "close", "2ebc98a1.5000000000", "text/plain"));
}

TEST_F(Files, WithoutHandlerTheRestOfABodyIsNoRequest) {
  mg_server *plain = mg_create_server(nullptr, nullptr);
  mg_set_option(plain, "document_root", dir.path.c_str());
  ASSERT_EQ(mg_set_option(plain, "listening_port", "127.0.0.1:0"), nullptr);
  Client client(atoi(mg_get_option(plain, "listening_port")));
  client.send("GET /a.html HTTP/1.1\r\nContent-Length: 27\r\n\r\n");
  for (int i = 0; i < 50; i++) {
    mg_poll_server(plain, 1);
    client.turn();
    if (i == 30) client.send("GET /a.html HTTP/1.1\r\n\r\nabc");
  }
  EXPECT_TRUE(client.closed);
  EXPECT_EQ(without_date(client.received), reply_of("200 OK", "0123456789", -1, "", "close"));
  mg_destroy_server(&plain);
}

TEST_F(Files, ADatagramIsAnsweredWithASmallFileAndNothingStaysOpen) {
  TestServer datagrams("udp://127.0.0.1:0");
  mg_set_option(datagrams.server, "document_root", dir.path.c_str());
  write("large", pattern_of(200000));
  const int sock = socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  struct sockaddr_in sin = {};
  sin.sin_family = AF_INET;
  sin.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  sin.sin_port = htons(static_cast<uint16_t>(datagrams.port()));
  ASSERT_EQ(connect(sock, reinterpret_cast<struct sockaddr *>(&sin), sizeof(sin)), 0);
  const auto open_files = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); };
  const auto before = open_files();
  const auto ask_datagram = [&](const std::string &uri) {
    const std::string request = "GET " + uri + " HTTP/1.1\r\n\r\n";
    EXPECT_EQ(::send(sock, request.data(), request.size(), 0), static_cast<ssize_t>(request.size()));
    datagrams.run_passes(20);
    std::string answer;
    char part[65536];
    for (ssize_t n; (n = recv(sock, part, sizeof(part), 0)) > 0;) answer.append(part, static_cast<size_t>(n));
    return without_date(answer);
  };
  EXPECT_EQ(ask_datagram("/a.html"), reply_of("200 OK", "0123456789"));
  EXPECT_LT(ask_datagram("/large").size(), 70000u);
  EXPECT_EQ(open_files(), before);
  close(sock);
}
