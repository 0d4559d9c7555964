/* Declined requests: who may make them, and that nothing is told before that is decided. */
#include "tests/unit/server/server_harness.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <string.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

/* A document root with a directory that a password file protects, and the answers to requests without
 * credentials. */
struct FileRequest : testing::Test {
  FileRequest() {
    for (const char *path : {"root/open", "root/secret/sub", "other"}) fs::create_directories(dir.file(path));
    for (const char *path : {"root/open/a.txt", "root/secret/a.txt", "root/secret/index.html",
                             "root/secret/p.cgi", "root/secret/s.shtml", "other/o.txt"})
      std::ofstream(dir.file(path)) << "text";
    std::ofstream(dir.file("root/secret/.htpasswd"))
        << "user:mydomain.com:0123456789abcdef0123456789abcdef\n";
    fs::create_symlink(dir.file("other"), dir.file("root/secret/away"));
    fs::create_symlink(dir.file("other/o.txt"), dir.file("root/secret/away.txt"));
    fs::create_symlink("secret", dir.file("root/alias"));
    mkfifo(dir.file("root/secret/pipe").c_str(), 0600);
    mg_set_option(server.server, "document_root", dir.file("root").c_str());
  }
  /* A reply's status line; whatever else a challenge says is checked. */
  std::string status(const std::string &method, const std::string &uri, const std::string &headers = "") {
    Client client(server.port());
    const std::string reply = server.ask(client, method + " " + uri + " HTTP/1.1\r\n" + headers + "\r\n");
    const std::string line = reply.substr(0, reply.find("\r\n"));
    static const std::regex challenge("HTTP/1\\.1 401 Unauthorized\r\nWWW-Authenticate: Digest qop=\"auth\", "
                                      "realm=\"mydomain\\.com\", nonce=\"[0-9]+\"\r\n\r\n");
    EXPECT_TRUE(line != "HTTP/1.1 401 Unauthorized" || std::regex_match(reply, challenge)) << reply;
    return line.substr(sizeof("HTTP/1.1 ") - 1);
  }
  TempDir dir;
  TestServer server;
};

static const char unauthorised[] = "401 Unauthorized", missing[] = "404 Not Found";

TEST_F(FileRequest, NothingIsToldOfAProtectedDirectory) {
  for (const char *method : {"GET", "HEAD", "POST", "PUT", "DELETE", "MKCOL", "PROPFIND"}) {
    for (const char *name :
         {"",      "a.txt",  "index.html", "nope",    "p.cgi",     "p.cgi/x",     "s.shtml",
          "pipe",  "pipe/",  "away.txt",   "away",    "away/",     "away/o.txt",  "away/nope",
          "nope/", "nope/x", "a.txt/",     "a.txt/x", ".htpasswd", "new.htpasswd"}) {
      for (const char *directory : {"/secret/", "/alias/"}) {
        const std::string uri = std::string(directory) + name;
        EXPECT_EQ(status(method, uri), unauthorised) << method << " " << uri;
      }
    }
    EXPECT_EQ(status(method, "/secret"), unauthorised) << method;
    EXPECT_EQ(status(method, "/alias"), unauthorised) << method;
  }
}

TEST_F(FileRequest, AConditionOrRangeTellsNothingEither) {
  for (const char *header : {"If-None-Match: *\r\n", "If-Match: \"x\"\r\n", "Range: bytes=99-\r\n",
                             "If-Modified-Since: Sun, 06 Nov 2094 08:49:37 GMT\r\n"})
    EXPECT_EQ(status("GET", "/secret/a.txt", header), unauthorised) << header;
}

TEST_F(FileRequest, FilesChangeOnlyWithAnAuthorisationOfTheirOwn) {
  for (const char *method : {"PUT", "DELETE", "MKCOL", "PROPFIND"}) {
    for (const char *uri : {"/open/a.txt", "/open/", "/open/nope", "/open/.htpasswd", "/"})
      EXPECT_EQ(status(method, uri), unauthorised) << method << " " << uri;
  }
  EXPECT_EQ(read_file(dir.file("root/open/a.txt")), "text");
}

TEST_F(FileRequest, HiddenNamesAreAnsweredAlikeWhetherTheyExistOrNot) {
  std::ofstream(dir.file("root/open/there.htpasswd")) << "text";
  for (const char *method : {"GET", "HEAD", "POST"}) {
    for (const char *uri :
         {"/open/there.htpasswd", "/open/not.htpasswd", "/open/there.htpasswd/", "/open/not.htpasswd/"})
      EXPECT_EQ(status(method, uri), missing) << method << " " << uri;
  }
}

TEST_F(FileRequest, OneThatCannotBeMappedIsNotFound) {
  EXPECT_EQ(status("GET", "*"), missing);
  EXPECT_EQ(status("GET", "../etc/passwd:80"), missing);
  EXPECT_EQ(status("PUT", "../etc/new:80"), missing);
  mg_set_option(server.server, "document_root", nullptr);
  for (const char *method : {"GET", "PUT", "PROPFIND"}) EXPECT_EQ(status(method, "/open/a.txt"), missing);
}

TEST_F(FileRequest, WhatIsFoundDecidesWhoAnswers) {
  EXPECT_EQ(status("GET", "/open/a.txt"), "200 OK");
  EXPECT_EQ(status("GET", "/open/"), "200 OK");
  EXPECT_EQ(status("GET", "/open"), "301 Moved Permanently");
  EXPECT_EQ(status("GET", "/open/nope"), missing);
  mg_set_option(server.server, "enable_directory_listing", "no");
  EXPECT_EQ(status("GET", "/open/"), "403 Directory Listing Denied");
  std::ofstream(dir.file("root/open/index.html")) << "text";
  EXPECT_EQ(status("GET", "/open/"), "200 OK");
}

TEST_F(FileRequest, RedirectedErrorOfAnyLengthIsWhole) {
  mg_set_option(server.server, "url_rewrites", "404=/error,404=/other");
  /* Among the lengths is one where mg_printf() would put a NUL byte. */
  for (size_t length = 400; length < 480; length++) {
    const std::string query(length, 'q');
    Client client(server.port());
    EXPECT_EQ(server.ask(client, "GET /no%0ape?" + query + " HTTP/1.1\r\n\r\n"),
              "HTTP/1.1 302 Moved\r\nLocation: /error?code=404&orig_uri=/no%0Ape&query_string=" + query +
                  "\r\n\r\n");
  }
}
