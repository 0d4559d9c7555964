/* Directories: their entries, and the page that lists them. */
#include "tests/unit/server/server_harness.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <time.h>

namespace fs = std::filesystem;

static std::string url_encoded(const std::string &path, size_t size = 1000) {
  std::string out(size, '\0');
  append_url_encoded(out.data(), size, path.c_str());
  return out.c_str();
}

static std::string html_escaped(const std::string &text, size_t size = 1000) {
  std::string out(size, '\0');
  append_html_escaped(out.data(), size, text.c_str());
  return out.c_str();
}

TEST(UrlEncoding, LeavesUnreservedCharactersAndSlashes) {
  EXPECT_EQ(url_encoded("/azAZ09-._~/"), "/azAZ09-._~/");
  EXPECT_EQ(url_encoded("a b%c?d#e&f:g\"h'i\\j<k>\n\x7f"),
            "a%20b%25c%3Fd%23e%26f%3Ag%22h%27i%5Cj%3Ck%3E%0A%7F");
  EXPECT_EQ(url_encoded("\xc3\xa4\xff"), "%C3%A4%FF");
}

TEST(UrlEncoding, IsUndoneByDecoding) {
  std::string all;
  for (int c = 1; c < 256; c++) all += static_cast<char>(c);
  const std::string encoded = url_encoded(all);
  char decoded[256];
  EXPECT_EQ(mg_url_decode(encoded.data(), encoded.size(), decoded, sizeof(decoded), 0), 255);
  EXPECT_EQ(decoded, all);
}

TEST(HtmlEscaping, ReplacesWhatMeansSomething) {
  EXPECT_EQ(html_escaped("<a href=\"x\" b='y'>&amp;"), "&lt;a href=&quot;x&quot; b=&#39;y&#39;&gt;&amp;amp;");
  EXPECT_EQ(html_escaped("plain \xc3\xa4"), "plain \xc3\xa4");
}

TEST(Escaping, IsCutBetweenCharactersAndAlwaysTerminated) {
  EXPECT_EQ(url_encoded("ab c", 6), "ab%20");
  EXPECT_EQ(url_encoded("ab c", 5), "ab");
  EXPECT_EQ(url_encoded("ab", 1), "");
  EXPECT_EQ(html_escaped("a<b", 6), "a&lt;");
  EXPECT_EQ(html_escaped("a<b", 5), "a");
}

TEST(Escaping, IsAppended) {
  char out[20] = "x=";
  append_url_encoded(out, sizeof(out), " ");
  append_html_escaped(out, sizeof(out), "&");
  EXPECT_STREQ(out, "x=%20&amp;");
}

/* --- Entries and page ---------------------------------------------------------------------------------- */

/* A server that declines everything, over a directory with a few entries, all of one time. */
struct Listing : testing::Test {
  Listing() {
    setenv("TZ", "XYZ-2", 1);
    tzset();
    fs::create_directories(dir.file("root/sub"));
    mg_set_option(server.server, "document_root", dir.file("root").c_str());
    for (const auto &[name, size] : std::map<std::string, off_t>{{"b.txt", 5}, {"a<&>.txt", 1536}})
      add(name, size);
    touch("sub", 784111777);
  }
  ~Listing() override {
    unsetenv("TZ");
    tzset();
  }
  void add(const std::string &name, off_t size, time_t t = 784111777) {
    std::ofstream(dir.file("root/" + name)) << "";
    fs::resize_file(dir.file("root/" + name), static_cast<uintmax_t>(size));
    touch(name, t);
  }
  void touch(const std::string &name, time_t t) {
    const struct timeval times[] = {{t, 0}, {t, 0}};
    ASSERT_EQ(utimes(dir.file("root/" + name).c_str(), times), 0);
  }
  std::string ask(const std::string &uri, const std::string &method = "GET") {
    Client client(server.port());
    client.send(method + " " + uri + " HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
    return client.take();
  }
  /* The names of a page's rows in order. */
  std::vector<std::string> names(const std::string &uri) {
    std::vector<std::string> found;
    const std::string page = ask(uri), begin = "<tr><td><a href=\"";
    for (size_t at = 0; (at = page.find(begin, at)) != std::string::npos;) {
      at += begin.size();
      found.push_back(page.substr(at, page.find('"', at) - at));
    }
    return found;
  }
  TempDir dir;
  TestServer server;
};

using Names = std::vector<std::string>;

static std::string page_reply(const std::string &page, bool head_only = false) {
  return "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: " +
         std::to_string(page.size()) + "\r\nConnection: close\r\n\r\n" + (head_only ? "" : page);
}

static const std::string root_page =
    "<!DOCTYPE html>\n<html><head><title>Index of /</title></head>\n<body><h1>Index of /</h1>\n"
    "<table>\n<tr><th><a href=\"?nd\">Name</a></th><th><a href=\"?da\">Modified</a></th>"
    "<th><a href=\"?sa\">Size</a></th></tr>\n"
    "<tr><td><a href=\"sub/\">sub/</a></td><td>&nbsp;06-Nov-1994 "
    "10:49</td><td>&nbsp;&nbsp;[DIRECTORY]</td></tr>\n"
    "<tr><td><a href=\"a%3C%26%3E.txt\">a&lt;&amp;&gt;.txt</a></td><td>&nbsp;06-Nov-1994 10:49</td>"
    "<td>&nbsp;&nbsp;1.5k</td></tr>\n"
    "<tr><td><a href=\"b.txt\">b.txt</a></td><td>&nbsp;06-Nov-1994 10:49</td><td>&nbsp;&nbsp;5</td></tr>\n"
    "</table></body></html>\n";

TEST_F(Listing, ShowsEveryEntryWithTimeAndSize) {
  EXPECT_EQ(ask("/"), page_reply(root_page));
  EXPECT_EQ(ask("/", "HEAD"), page_reply(root_page, true));
}

TEST_F(Listing, TitleIsTheUriAndThereIsAWayUp) {
  fs::create_directories(dir.file("root/sub/<b>\"&"));
  EXPECT_EQ(
      ask("/sub/%3Cb%3E%22&/?da"),
      page_reply(
          "<!DOCTYPE html>\n<html><head><title>Index of /sub/&lt;b&gt;&quot;&amp;/</title></head>\n"
          "<body><h1>Index of /sub/&lt;b&gt;&quot;&amp;/</h1>\n<p><a href=\"../\">Parent directory</a></p>\n"
          "<table>\n<tr><th><a href=\"?na\">Name</a></th><th><a href=\"?dd\">Modified</a></th>"
          "<th><a href=\"?sa\">Size</a></th></tr>\n</table></body></html>\n"));
}

TEST_F(Listing, IsOrderedByAnyColumnBothWaysDirectoriesFirst) {
  add("c", 1, 1000);
  add("d", 100, 2000);
  touch("sub", 1);
  touch("b.txt", 3000);
  fs::create_directories(dir.file("root/z"));
  const Names by_name = {"sub/", "z/", "a%3C%26%3E.txt", "b.txt", "c", "d"};
  for (const char *query : {"/", "/?", "/?na", "/?n", "/?x", "/?xd", "/?=d", "/?%6ed"})
    EXPECT_EQ(names(query), by_name) << query;
  EXPECT_EQ(names("/?nd"), (Names{"z/", "sub/", "d", "c", "b.txt", "a%3C%26%3E.txt"}));
  EXPECT_EQ(names("/?da"), (Names{"sub/", "z/", "c", "d", "b.txt", "a%3C%26%3E.txt"}));
  EXPECT_EQ(names("/?dd"), (Names{"z/", "sub/", "a%3C%26%3E.txt", "b.txt", "d", "c"}));
  EXPECT_EQ(names("/?sa"), (Names{"sub/", "z/", "c", "b.txt", "d", "a%3C%26%3E.txt"}));
  EXPECT_EQ(names("/?sd"), (Names{"z/", "sub/", "a%3C%26%3E.txt", "d", "b.txt", "c"}));
}

TEST_F(Listing, SizesAreShortTexts) {
  const std::map<std::string, std::pair<off_t, std::string>> sizes = {
      {"s0", {0, "0"}},
      {"s1", {1023, "1023"}},
      {"s2", {1024, "1.0k"}},
      {"s3", {1048575, "1024.0k"}},
      {"s4", {1048576, "1.0M"}},
      {"s5", {1073741823, "1024.0M"}},
      {"s6", {1073741824, "1.0G"}},
      {"s7", {5500000000, "5.1G"}},
  };
  for (const auto &[name, size] : sizes) add(name, size.first);
  const std::string page = ask("/");
  for (const auto &[name, size] : sizes) {
    const std::string row = "<tr><td><a href=\"" + name + "\">" + name +
                            "</a></td><td>&nbsp;06-Nov-1994 10:49</td><td>&nbsp;&nbsp;" + size.second +
                            "</td></tr>\n";
    EXPECT_NE(page.find(row), std::string::npos) << row;
  }
}

TEST_F(Listing, HiddenAndForbiddenEntriesAreNotShown) {
  mg_set_option(server.server, "hide_files_patterns", "**.bak$|**/private$");
  for (const char *name : {"x.bak", "private", "y.htpasswd"}) add(name, 1);
  fs::create_symlink("/etc", dir.file("root/away"));
  fs::create_symlink("x.bak", dir.file("root/bak-by-another-name"));
  fs::create_symlink("nowhere", dir.file("root/dangling"));
  fs::create_symlink("b.txt", dir.file("root/good"));
  fs::create_symlink("sub", dir.file("root/good-directory"));
  ASSERT_EQ(mkfifo(dir.file("root/pipe").c_str(), 0600), 0);
  EXPECT_EQ(names("/"), (Names{"good-directory/", "sub/", "a%3C%26%3E.txt", "b.txt", "good"}));
}

TEST_F(Listing, OfManyEntriesIsComplete) {
  fs::create_directories(dir.file("root/many"));
  std::set<std::string> expected;
  for (int i = 0; i < 500; i++) {
    const std::string name = "file-" + std::to_string(i) + std::string(100, 'x');
    std::ofstream(dir.file("root/many/" + name)) << "";
    expected.insert(name);
  }
  const Names found = names("/many/");
  EXPECT_EQ(found, Names(expected.begin(), expected.end()));
}

TEST_F(Listing, NamesOfAnyLengthAndBytesFit) {
  const std::string quotes(255, '"'), bytes(255, '\xff');
  add(quotes, 1);
  add(bytes, 1);
  const std::string page = ask("/");
  std::string href, text;
  for (int i = 0; i < 255; i++) {
    href += "%22";
    text += "&quot;";
  }
  EXPECT_NE(page.find("<a href=\"" + href + "\">" + text + "</a>"), std::string::npos);
  EXPECT_NE(page.find(">" + bytes + "</a>"), std::string::npos);
}

TEST_F(Listing, IsGivenOnlyWhenItIsEnabled) {
  const std::string denied = "HTTP/1.1 403 Directory Listing Denied\r\n\r\n";
  for (const char *value : {"no", "", "YES"}) {
    mg_set_option(server.server, "enable_directory_listing", value);
    EXPECT_EQ(ask("/"), denied);
  }
  mg_set_option(server.server, "enable_directory_listing", "yes");
  EXPECT_EQ(ask("/"), page_reply(root_page));
}

TEST_F(Listing, ADirectoryIsNamedWithASlash) {
  fs::create_directories(dir.file("root/d \r\nX: y"));
  mg_set_option(server.server, "enable_directory_listing", "no");
  EXPECT_EQ(ask("/sub"), "HTTP/1.1 301 Moved Permanently\r\nLocation: /sub/\r\n\r\n");
  EXPECT_EQ(ask("/sub?x=y"), "HTTP/1.1 301 Moved Permanently\r\nLocation: /sub/\r\n\r\n");
  EXPECT_EQ(ask("/d%20%0d%0aX:%20y"),
            "HTTP/1.1 301 Moved Permanently\r\nLocation: /d%20%0D%0AX%3A%20y/\r\n\r\n");
}

TEST_F(Listing, RedirectionOfAnyLengthIsWhole) {
  /* Among the lengths is one where mg_printf() would put a NUL byte. */
  for (size_t length = 140; length < 156; length++) {
    const std::string name(length, ' ');
    fs::create_directories(dir.file("root/" + name));
    std::string encoded;
    for (size_t i = 0; i < length; i++) encoded += "%20";
    EXPECT_EQ(ask("/" + encoded), "HTTP/1.1 301 Moved Permanently\r\nLocation: /" + encoded + "/\r\n\r\n");
  }
}

TEST_F(Listing, IndexFileTakesItsPlace) {
  add("index.htm", 3);
  const std::string reply = ask("/", "HEAD");
  EXPECT_NE(reply.find("\r\nEtag: \"2ebc98a1.3\"\r\nContent-Type: text/html\r\nContent-Length: 3\r\n"),
            std::string::npos)
      << reply;
}
