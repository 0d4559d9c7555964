/* Uploads: what ends up in which file, and that what goes wrong changes nothing. */
#include "tests/support/full_disk.h"
#include "tests/unit/server/dav_harness.h"

#include <algorithm>
#include <arpa/inet.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

/* With a handler that declines, the body is there before the upload begins; without one it comes meanwhile.
 */
class Put : public DavTest, public testing::WithParamInterface<bool> {
protected:
  Put() {
    if (!GetParam()) remove_handler();
  }
};
static std::string handler_name(const testing::TestParamInfo<bool> &handler) {
  return handler.param ? "WithHandler" : "WithoutHandler";
}
INSTANTIATE_TEST_SUITE_P(, Put, testing::Bool(), handler_name);

/* An upload whose body is written as it comes. */
class StreamedPut : public DavTest {
protected:
  StreamedPut() { remove_handler(); }

  /* The refusal of an upload of which some bytes have come and a million are to come. */
  void expect_refusal(Client &client) {
    client.send(request("PUT", "/.htpasswd", "hello", "Content-Length: 1000005\r\n"));
    EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
    EXPECT_EQ(client.take(), failure(404));
    EXPECT_EQ(server.client_count(), 1);
  }
};

static std::string large_text(size_t size) {
  std::string text;
  text.reserve(size + 16);
  while (text.size() < size) text += std::to_string(text.size()) + "\n";
  return text.substr(0, size);
}

/* --- What is written ----------------------------------------------------------------------------------- */

TEST_P(Put, NewFileIsCreated) {
  EXPECT_EQ(ask("PUT", "/a.txt", "hello"), success(201));
  EXPECT_EQ(read("a.txt"), "hello");
  EXPECT_EQ(tree(), "a.txt");
  EXPECT_EQ(server.client_count(), 0);
}

TEST_P(Put, NewFileHasThePermissionsThatTheMaskLeaves) {
  const mode_t before = umask(027);
  EXPECT_EQ(ask("PUT", "/a.txt", "hello"), success(201));
  umask(before);
  struct stat st;
  ASSERT_EQ(stat(path("a.txt").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0640u);
}

TEST_P(Put, FileIsReplacedAndKeepsItsPermissions) {
  write("a.txt", "what it held before, which is longer");
  ASSERT_EQ(chmod(path("a.txt").c_str(), 0751), 0);
  EXPECT_EQ(ask("PUT", "/a.txt", "hello"), success(200));
  EXPECT_EQ(read("a.txt"), "hello");
  EXPECT_EQ(tree(), "a.txt");
  struct stat st;
  ASSERT_EQ(stat(path("a.txt").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0751u);
}

TEST_P(Put, EmptyBodyMakesAnEmptyFile) {
  write("b.txt", "old");
  EXPECT_EQ(ask("PUT", "/a.txt"), success(201));
  EXPECT_EQ(ask("PUT", "/b.txt"), success(200));
  EXPECT_EQ(tree(), "a.txt b.txt");
  EXPECT_EQ(read("a.txt") + read("b.txt"), "");
}

TEST_P(Put, EveryByteIsWrittenAsItIs) {
  std::string all;
  for (int i = 0; i < 3000; i++) all += static_cast<char>(i);
  const std::string large = large_text(700000);
  EXPECT_EQ(ask("PUT", "/all", all), success(201));
  EXPECT_EQ(ask("PUT", "/large", large), success(201));
  EXPECT_TRUE(read("all") == all);
  EXPECT_TRUE(read("large") == large);
}

TEST_P(Put, BytesBehindTheBodyAreNotWritten) {
  EXPECT_EQ(ask("PUT", "/a.txt", "helloGET / HTTP/1.1\r\n\r\n", "Content-Length: 5\r\n"), success(201));
  EXPECT_EQ(read("a.txt"), "hello");
}

TEST_P(Put, NamesAreDecoded) {
  EXPECT_EQ(ask("PUT", "/a%20b%26%3c%22%c3%bc", "hello"), success(201));
  EXPECT_EQ(tree(), "a b&<\"\xc3\xbc");
}

TEST_P(Put, MissingDirectoriesAreMade) {
  EXPECT_EQ(ask("PUT", "/x/y/z/a.txt", "hello"), success(201));
  EXPECT_EQ(tree(), "x/ x/y/ x/y/z/ x/y/z/a.txt");
  EXPECT_EQ(read("x/y/z/a.txt"), "hello");
  EXPECT_EQ(ask("PUT", "/x/y/w/b.txt", "hello"), success(201));
  EXPECT_EQ(tree(), "x/ x/y/ x/y/w/ x/y/w/b.txt x/y/z/ x/y/z/a.txt");
}

TEST_P(Put, ExpectationIsMetBeforeTheBodyIsSent) {
  Client client(server.port());
  const std::string whole = request("PUT", "/a.txt", "hello", "Expect: 100-continue\r\n");
  EXPECT_EQ(server.ask(client, whole.substr(0, whole.size() - 5)), "HTTP/1.1 100 Continue\r\n\r\n");
  EXPECT_EQ(server.ask(client, "hello"), success(201));
  EXPECT_EQ(read("a.txt"), "hello");
}

/* --- What comes in pieces, and what never comes -------------------------------------------------------- */

TEST_P(Put, FileIsReplacedOnceTheLastByteHasCome) {
  write("a.txt", "old");
  Client client(server.port());
  const std::string whole = request("PUT", "/a.txt", "hello");
  for (char c : whole.substr(0, whole.size() - 1)) {
    client.send(std::string(1, c));
    server.run_passes(3, {&client});
    ASSERT_EQ(read("a.txt"), "old");
  }
  EXPECT_EQ(client.take(), "");
  EXPECT_EQ(server.ask(client, "o"), success(200));
  EXPECT_EQ(read("a.txt"), "hello");
  EXPECT_EQ(tree(), "a.txt");
}

TEST_F(StreamedPut, UploadInProgressCannotBeSeen) {
  Client client(server.port());
  client.send(request("PUT", "/a.txt", "hello", "Content-Length: 6\r\n"));
  server.run_passes(5, {&client});
  const std::string name = tree();
  ASSERT_EQ(name.substr(0, 8), ".upload-") << name;
  EXPECT_EQ(status("GET", "/" + name), 404);
  EXPECT_EQ(status("PUT", "/" + name, "x"), 404);
  EXPECT_EQ(status("DELETE", "/" + name), 404);
  EXPECT_EQ(ask("PROPFIND", "/").find("upload"), std::string::npos);
  EXPECT_EQ(tree(), name);
}

TEST_F(StreamedPut, BodyIsNotCollected) {
  const std::string text = large_text(1000000);
  Client client(server.port());
  client.send(request("PUT", "/a.txt", text.substr(0, 600000), "Content-Length: 1000000\r\n"));
  server.run_until([&] { return !tree().empty() && read(tree()).size() == 600000; }, {&client});
  EXPECT_TRUE(read(tree()) == text.substr(0, 600000));
  EXPECT_LT(server.first_client()->recv_iobuf.size, 10000u);
  EXPECT_EQ(server.ask(client, text.substr(600000)), success(201));
  EXPECT_TRUE(read("a.txt") == text);
}

/* Whatever ends an upload that is not complete, nothing of it stays. */
class CutPut : public Put {
protected:
  CutPut() {
    write("a.txt", "old");
    for (const char *uri : {"/a.txt", "/b.txt", "/x/y/c.txt"}) {
      clients.push_back(std::make_unique<Client>(server.port()));
      clients.back()->send(request("PUT", uri, "hello", "Content-Length: 6\r\n"));
      server.run_passes(5, {clients.back().get()});
    }
    EXPECT_EQ(server.client_count(), 3);
  }
  void expect_nothing_happened() {
    EXPECT_EQ(server.client_count(), 0);
    EXPECT_EQ(tree(), "a.txt");
    EXPECT_EQ(read("a.txt"), "old");
  }
  std::vector<std::unique_ptr<Client>> clients;
};
INSTANTIATE_TEST_SUITE_P(, CutPut, testing::Bool(), handler_name);

TEST_P(CutPut, ClientThatClosesLeavesNoTrace) {
  for (auto &client : clients) client->close();
  server.run_until([&] { return server.client_count() == 0; });
  expect_nothing_happened();
}

TEST_P(CutPut, ClientThatStopsSendingLeavesNoTrace) {
  for (auto &client : clients) client->shut_down_sending();
  server.run_until([&] { return server.client_count() == 0; });
  expect_nothing_happened();
}

TEST_P(CutPut, ClientThatStallsLeavesNoTrace) {
  for (ns_connection *c = server.first_client(); c != nullptr; c = ns_next(&server.server->ns_mgr, c)) {
    c->last_io_time -= MG_IDLE_TIMEOUT_SECONDS + 1;
  }
  server.run_passes(2);
  expect_nothing_happened();
}

TEST_P(CutPut, ServerThatEndsLeavesNoTrace) {
  server.on_event = nullptr;
  mg_destroy_server(&server.server);
  EXPECT_EQ(tree(), "a.txt");
  EXPECT_EQ(read("a.txt"), "old");
}

TEST_P(Put, DatagramThatHoldsAPartOfTheBodyLeavesNoTrace) {
  ASSERT_STREQ(mg_set_option(server.server, "listening_port", "udp://127.0.0.1:0"), nullptr);
  const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  struct sockaddr_in sin = {};
  sin.sin_family = AF_INET;
  sin.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  sin.sin_port = htons(static_cast<uint16_t>(server.port()));
  for (const char *length : {"Content-Length: 6\r\n", "Content-Length: 5\r\n"}) {
    const std::string datagram = request("PUT", "/a.txt", "hello", length);
    sendto(fd, datagram.data(), datagram.size(), 0, reinterpret_cast<struct sockaddr *>(&sin), sizeof(sin));
    server.run_passes(20);
    const bool whole = length[16] == '5';
    EXPECT_EQ(tree(), whole ? "a.txt" : "");
  }
  close(fd);
}

/* --- Parts --------------------------------------------------------------------------------------------- */

static std::string range_line(const std::string &range) {
  return "Content-Range: " + range + "\r\n";
}

TEST_P(Put, PartIsWrittenInItsPlace) {
  const struct {
    const char *range, *body, *result;
  } cases[] = {
      {"bytes 0-2/10", "abc", "abc3456789"},        {"bytes 3-5/10", "abc", "012abc6789"},
      {"bytes 7-9/10", "abc", "0123456abc"},        {"bytes 8-10/11", "abc", "01234567abc"},
      {"bytes 10-12/13", "abc", "0123456789abc"},   {"bytes 3-5/*", "abc", "012abc6789"},
      {"Bytes 3-3/4", "x", "012x456789"},           {"bytes 003-005/0010", "abc", "012abc6789"},
      {"bytes 0-9/10", "abcdefghij", "abcdefghij"}, {"bytes 3-5/10 ", "abc", "012abc6789"},
  };
  for (const auto &c : cases) {
    write("a.txt", "0123456789");
    EXPECT_EQ(ask("PUT", "/a.txt", c.body, range_line(c.range)), success(200)) << c.range;
    EXPECT_EQ(read("a.txt"), c.result) << c.range;
    EXPECT_EQ(tree(), "a.txt");
  }
}

TEST_P(Put, FileMayBeUploadedPartByPart) {
  const std::string text = large_text(300000);
  for (size_t at = 0; at < text.size(); at += 100000) {
    const std::string range = "bytes " + std::to_string(at) + "-" + std::to_string(at + 99999) + "/300000";
    EXPECT_EQ(ask("PUT", "/x/a.txt", text.substr(at, 100000), range_line(range)),
              success(at == 0 ? 201 : 200));
  }
  EXPECT_TRUE(read("x/a.txt") == text);
}

TEST_P(Put, RangeThatDoesNotFitTheBodyIsMalformed) {
  write("a.txt", "0123456789");
  for (const char *range : {"",
                            "bytes",
                            "bytes ",
                            "bytes */10",
                            "bytes 3-5",
                            "bytes 3-5/",
                            "bytes 3-5/x",
                            "bytes 3-5/10x",
                            "bytes 3-/10",
                            "bytes -3/10",
                            "bytes=3-5/10",
                            "bytes 3 - 5/10",
                            "bytes 3-5,6-7/10",
                            "items 3-5/10",
                            "bytes 5-3/10",
                            "bytes 3-4/10",
                            "bytes 3-6/10",
                            "bytes 3-5/5",
                            "bytes 3-5/3",
                            "bytes 3-5/-10",
                            "bytes -3--1/10",
                            "bytes +3-5/10",
                            "bytes 0x3-5/10",
                            "bytes 9223372036854775807-9223372036854775809/*",
                            "bytes 18446744073709551619-18446744073709551621/*",
                            "bytes 3-5/99999999999999999999",
                            "bytes 999999999999999998-1000000000000000000/*"}) {
    EXPECT_EQ(ask("PUT", "/a.txt", "abc", range_line(range)), failure(400)) << range;
  }
  EXPECT_EQ(ask("PUT", "/a.txt", "", range_line("bytes 3-2/10")), failure(400));
  EXPECT_EQ(read("a.txt"), "0123456789");
}

TEST_P(Put, PartBehindTheEndOfTheFileIsRefused) {
  write("a.txt", "0123456789");
  const auto refusal = [](const std::string &size) {
    std::string reply = failure(416);
    return reply.insert(reply.find("\r\n\r\n"), "\r\nContent-Range: bytes */" + size);
  };
  EXPECT_EQ(ask("PUT", "/a.txt", "abc", range_line("bytes 11-13/14")), refusal("10"));
  EXPECT_EQ(ask("PUT", "/a.txt", "abc", range_line("bytes 999999999999999990-999999999999999992/*")),
            refusal("10"));
  EXPECT_EQ(ask("PUT", "/b.txt", "abc", range_line("bytes 1-3/4")), refusal("0"));
  EXPECT_EQ(read("a.txt"), "0123456789");
  EXPECT_EQ(tree(), "a.txt");
}

/* --- What is refused ----------------------------------------------------------------------------------- */

TEST_P(Put, BodyWithoutALengthIsRefused) {
  for (const char *lines :
       {"Transfer-Encoding: chunked\r\n", "Transfer-Encoding: chunked\r\nContent-Length: 5\r\n"}) {
    Client client(server.port());
    client.send("PUT /a.txt HTTP/1.1\r\n" + digest_line(anna, "PUT", "/a.txt") + lines +
                "\r\n5\r\nhello\r\n0\r\n\r\n");
    EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
    EXPECT_EQ(client.take(), failure(411));
  }
  Client client(server.port());
  EXPECT_EQ(server.ask(client, "PUT /a.txt HTTP/1.1\r\n" + digest_line(anna, "PUT", "/a.txt") + "\r\n"),
            failure(411));
  EXPECT_EQ(tree(), "");
}

TEST_F(StreamedPut, LengthThatIsNoNumberIsRefused) {
  for (const char *length : {"-1", "+5", "5x", "x", "0x5", "5, 5", "5 5", "9999999999999999999",
                             "18446744073709551621", "5\r\nContent-Length: 6"}) {
    Client client(server.port());
    const std::string lines = std::string("Content-Length: ") + length + "\r\n";
    EXPECT_EQ(server.ask(client, request("PUT", "/a.txt", "hello", lines)), failure(400)) << length;
  }
  EXPECT_EQ(tree(), "");
  EXPECT_EQ(ask("PUT", "/a.txt", "hello", "Content-Length: 5 \r\nContent-Length: 5 \r\n"), success(201));
}

TEST_P(Put, DirectoryIsNotReplaced) {
  write("dir/a.txt", "old");
  for (const char *uri : {"/dir", "/dir/", "/", "/new/", "/dir/.", "/new/."}) {
    EXPECT_EQ(ask("PUT", uri, "hello"), failure(405)) << uri;
  }
  EXPECT_EQ(tree(), "dir/ dir/a.txt");
}

TEST_P(Put, FileIsNoDirectory) {
  write("a.txt", "old");
  EXPECT_EQ(ask("PUT", "/a.txt/b.txt", "hello"), failure(500, "put_dir: Not a directory"));
  EXPECT_EQ(ask("PUT", "/a.txt/b/c.txt", "hello"), failure(500, "put_dir: Not a directory"));
  EXPECT_EQ(tree(), "a.txt");
}

TEST_P(Put, ProgramIsNotReplacedByWhatItIsAskedFor) {
  write("a.cgi", "old");
  EXPECT_EQ(ask("PUT", "/a.cgi/b.txt", "hello"), failure(500, "put_dir: Not a directory"));
  EXPECT_EQ(read("a.cgi"), "old");
}

TEST_P(Put, PipeIsNotWrittenTo) {
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(status("PUT", "/pipe", "hello"), 404);
  EXPECT_EQ(status("PUT", "/pipe", "hello", range_line("bytes 0-4/5")), 404);
  EXPECT_EQ(tree(), "pipe");
}

TEST_P(Put, LinkInsideTheRootStaysAndWhatItLeadsToIsWritten) {
  write("dir/a.txt", "old");
  std::filesystem::create_symlink("dir/a.txt", path("link"));
  std::filesystem::create_directory_symlink("dir", path("door"));
  EXPECT_EQ(ask("PUT", "/link", "hello"), success(200));
  EXPECT_EQ(read("dir/a.txt"), "hello");
  EXPECT_EQ(ask("PUT", "/link", "J", range_line("bytes 0-0/5")), success(200));
  EXPECT_EQ(read("dir/a.txt"), "Jello");
  EXPECT_EQ(ask("PUT", "/door/b.txt", "hello"), success(201));
  EXPECT_EQ(tree(), "dir/ dir/a.txt dir/b.txt door/ link");
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
}

TEST_P(Put, NothingOutsideTheRootIsWritten) {
  write("../beside/a.txt", "old");
  std::filesystem::create_symlink("../beside/a.txt", path("link"));
  std::filesystem::create_symlink("../beside/new.txt", path("dangling"));
  std::filesystem::create_directory_symlink("../beside", path("door"));
  for (const char *uri :
       {"/link", "/dangling", "/dangling/x.txt", "/door/a.txt", "/door/new.txt", "/door/x/y.txt"}) {
    EXPECT_EQ(status("PUT", uri, "hello"), 404) << uri;
    EXPECT_EQ(status("PUT", uri, "hello", range_line("bytes 0-4/5")), 404) << uri;
  }
  for (const char *uri : {"/../beside/a.txt", "/%2e%2e/beside/b.txt", "/x/..%2f..%2f..%2fbeside/c.txt"}) {
    status("PUT", uri, "hello");
  }
  EXPECT_EQ(read("../beside/a.txt"), "old");
  size_t files = 0;
  for (const auto &entry : std::filesystem::directory_iterator(path("../beside"))) files += entry.exists();
  EXPECT_EQ(files, 1u);
}

TEST_P(Put, HiddenFilesAreNotThere) {
  write("closed/.htpasswd", password_line(anna));
  set("hide_files_patterns", "**.key$|**/private/**");
  for (const char *uri : {"/.htpasswd", "/%2ehtpasswd", "/closed/.htpasswd", "/new/.htpasswd", "/x.htpasswd",
                          "/a.key", "/private/a.txt"}) {
    EXPECT_EQ(status("PUT", uri, "hello"), 404) << uri;
  }
  EXPECT_EQ(tree(), "closed/ closed/.htpasswd");
  EXPECT_EQ(read("closed/.htpasswd"), password_line(anna));
}

TEST_P(Put, NeedsADigestForTheFileOfWebDav) {
  Client client(server.port());
  const std::string lines = "Content-Length: 5\r\n\r\nhello";
  EXPECT_EQ(server.ask(client, "PUT /a.txt HTTP/1.1\r\n" + lines).substr(0, 12), "HTTP/1.1 401");
  Client other(server.port());
  EXPECT_EQ(
      server.ask(other, "PUT /a.txt HTTP/1.1\r\n" + digest_line(anna, "GET", "/a.txt") + lines).substr(0, 12),
      "HTTP/1.1 401");
  set("dav_auth_file", dir.file("none"));
  EXPECT_EQ(status("PUT", "/a.txt", "hello"), 401);
  set("dav_auth_file", "");
  EXPECT_EQ(status("PUT", "/a.txt", "hello"), 401);
  EXPECT_EQ(tree(), "");
}

TEST_P(Put, PreconditionsAreHeeded) {
  write("a.txt", "old");
  struct stat st;
  ASSERT_EQ(stat(path("a.txt").c_str(), &st), 0);
  char etag[MG_ETAG_SIZE], date[MG_DATE_SIZE];
  print_etag(&st, etag);
  print_http_date(st.st_mtime - 1, date);
  const struct {
    const char *uri;
    std::string line;
    bool holds;
  } cases[] = {
      {"/a.txt", "If-None-Match: *", false},
      {"/a.txt", std::string("If-None-Match: ") + etag, false},
      {"/a.txt", std::string("If-None-Match: W/") + etag, false},
      {"/a.txt", "If-Match: \"x\"", false},
      {"/a.txt", std::string("If-Match: W/") + etag, false},
      {"/a.txt", std::string("If-Unmodified-Since: ") + date, false},
      {"/b.txt", "If-Match: *", false},
      {"/b.txt", std::string("If-Match: ") + etag, false},
      {"/a.txt", std::string("If-Match: \"x\", ") + etag, true},
      {"/b.txt", "If-None-Match: *", true},
  };
  for (const auto &c : cases) {
    const std::string expected = c.holds ? success(c.uri[1] == 'a' ? 200 : 201) : failure(412);
    EXPECT_EQ(ask("PUT", c.uri, "new", c.line + "\r\n"), expected) << c.uri << " " << c.line;
    if (!c.holds) {
      EXPECT_EQ(tree() + "=" + read("a.txt"), "a.txt=old");
    }
  }
}

/* --- Failures ------------------------------------------------------------------------------------------ */

TEST_P(Put, FullDiskLeavesTheOldFileWhole) {
  write("a.txt", "old");
  const std::string large = large_text(100000);
  for (const char *name : {"a.txt", "b.txt", "x/c.txt"}) {
    full_disk full(50000);
    EXPECT_EQ(ask("PUT", std::string("/") + name, large),
              failure(507, "write(" + path(name) + "): File too large"));
  }
  EXPECT_EQ(tree(), "a.txt");
  EXPECT_EQ(read("a.txt"), "old");
}

TEST_P(Put, FileWithoutRoomForANameBesideItIsAFailure) {
  std::string root = path("root");
  while (root.size() < 4075) {
    ASSERT_EQ(mkdir(root.c_str(), 0755), 0);
    root += "/" + std::string(std::min<size_t>(200, 4074 - root.size()), 'd');
  }
  ASSERT_EQ(mkdir(root.c_str(), 0755), 0);
  set("document_root", root);
  EXPECT_EQ(ask("PUT", "/a.txt", "hello"), failure(500, "open(" + root + "/a.txt): File name too long"));
  EXPECT_TRUE(std::filesystem::is_empty(root));
}

/* --- Refusals of bodies that are still coming ---------------------------------------------------------- */

TEST_F(StreamedPut, RefusalIsReadBeforeTheBodyIsSent) {
  Client client(server.port());
  expect_refusal(client);
  const std::string piece(10000, 'x');
  for (int sent = 0; sent < 1000000; sent += 10000) {
    EXPECT_EQ(server.client_count(), 1) << "the rest of the body is still to come";
    EXPECT_EQ(send(client.fd, piece.data(), piece.size(), MSG_NOSIGNAL), static_cast<ssize_t>(piece.size()));
    server.run_passes(5);
  }
  EXPECT_EQ(server.client_count(), 0);
}

TEST_F(StreamedPut, ClientThatClosesAfterARefusalIsForgotten) {
  Client client(server.port());
  expect_refusal(client);
  client.close();
  EXPECT_TRUE(server.run_until([&] { return server.client_count() == 0; }));
}

TEST_F(StreamedPut, RefusalIsReadOverTlsToo) {
  write_certificate(dir.file("cert.pem"));
  set("listening_port", "ssl://127.0.0.1:0:" + dir.file("cert.pem"));
  Client client(server.port(), true);
  expect_refusal(client);
  client.close();
  EXPECT_TRUE(server.run_until([&] { return server.client_count() == 0; }));
}

TEST_F(StreamedPut, CredentialsAreAskedForBeforeTheBodyIsSent) {
  Client client(server.port());
  client.send("PUT /a.txt HTTP/1.1\r\nContent-Length: 1000000\r\n\r\nhello");
  EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.take().substr(0, 12), "HTTP/1.1 401");
  EXPECT_EQ(server.client_count(), 1);
}

TEST_F(StreamedPut, FullDiskIsToldBeforeTheBodyIsSent) {
  full_disk full(100000);
  Client client(server.port());
  client.send(request("PUT", "/a.txt", large_text(200000), "Content-Length: 1000000\r\n"));
  EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.take(), failure(507, "write(" + path("a.txt") + "): File too large"));
  EXPECT_EQ(tree(), "");
}

/* --- At the same time ---------------------------------------------------------------------------------- */

TEST_P(Put, UploadsToOneNameDoNotMix) {
  std::vector<std::unique_ptr<Client>> clients;
  std::vector<Client *> all;
  std::vector<std::string> bodies;
  for (int i = 0; i < 100; i++) {
    bodies.push_back(std::string(20000, static_cast<char>('0' + i % 60)));
    clients.push_back(std::make_unique<Client>(server.port()));
    clients.back()->send(request("PUT", "/x/a.txt", bodies.back()));
    all.push_back(clients.back().get());
  }
  const auto is_closed = [](const Client *client) { return client->closed; };
  EXPECT_TRUE(server.run_until([&] { return std::all_of(all.begin(), all.end(), is_closed); }, all));
  for (const auto &client : clients) {
    const std::string reply = client->take();
    EXPECT_TRUE(reply == success(201) || reply == success(200)) << reply;
  }
  EXPECT_EQ(tree(), "x/ x/a.txt");
  EXPECT_NE(std::find(bodies.begin(), bodies.end(), read("x/a.txt")), bodies.end());
}

TEST_P(Put, FileThatIsBeingReadIsReadToItsEnd) {
  const std::string old = large_text(4000000);
  write("a.txt", old);
  Client reader(server.port());
  reader.reading = false;
  reader.send("GET /a.txt HTTP/1.1\r\nConnection: close\r\n\r\n");
  server.run_passes(10, {&reader});
  EXPECT_EQ(ask("PUT", "/a.txt", "new"), success(200));
  reader.reading = true;
  EXPECT_TRUE(server.run_until([&] { return reader.closed; }, {&reader}));
  const std::string reply = reader.take();
  EXPECT_TRUE(reply.ends_with("\r\n\r\n" + old)) << reply.size();
  EXPECT_EQ(read("a.txt"), "new");
}
