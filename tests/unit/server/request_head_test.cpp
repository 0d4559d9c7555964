/* Finding the end of a request head and taking it apart. */
#include "server/http_conn.h"

#include <gtest/gtest.h>
#include <string>

static int head_length(const std::string &bytes) {
  return get_request_len(bytes.data(), static_cast<int>(bytes.size()));
}

TEST(HeadLength, EndsAfterAnEmptyLine) {
  EXPECT_EQ(head_length(""), 0);
  EXPECT_EQ(head_length("GET / HTTP/1.1\r\n"), 0);
  EXPECT_EQ(head_length("GET / HTTP/1.1\r\n\r"), 0);
  EXPECT_EQ(head_length("GET / HTTP/1.1\r\n\r\n"), 18);
  EXPECT_EQ(head_length("GET / HTTP/1.1\r\n\r\nbody\n\n"), 18);
  EXPECT_EQ(head_length("GET / HTTP/1.1\n\n"), 16);
  EXPECT_EQ(head_length("GET / HTTP/1.1\n\r\n"), 17);
  EXPECT_EQ(head_length("GET / HTTP/1.1\r\r\n"), 0);
  EXPECT_EQ(head_length("\r\n\r\n"), 4);
  EXPECT_EQ(head_length("\n\n"), 2);
}

TEST(HeadLength, ControlBytesMakeTheHeadMalformed) {
  for (int c = 0; c < 256; c++) {
    const std::string bytes = std::string("GET /") + static_cast<char>(c) + " HTTP/1.1\r\nA: b\r\n\r\n";
    const bool control = (c < 32 && c != '\r' && c != '\n') || c == 127;
    EXPECT_EQ(head_length(bytes), control ? -1 : static_cast<int>(bytes.size())) << c;
  }
}

TEST(HeadLength, BytesBehindTheHeadAreNotLookedAt) {
  EXPECT_EQ(head_length(std::string("GET / HTTP/1.1\r\n\r\n\0\1", 20)), 18);
}

TEST(HeadLength, ResumedScanFindsTheSameEndAtEveryCut) {
  for (const std::string bytes : {"GET / HTTP/1.1\r\nA: b\r\n\r\n", "GET /\n\n", "GET /\r\n\n", "A\n\r\n"}) {
    for (int cut = 0; cut < static_cast<int>(bytes.size()); cut++) {
      ASSERT_EQ(get_request_len(bytes.data(), cut), 0);
      EXPECT_EQ(get_request_len_from(bytes.data(), static_cast<int>(bytes.size()), cut), head_length(bytes))
          << bytes << cut;
    }
  }
}

struct Head {
  explicit Head(std::string bytes) : text(std::move(bytes)), conn{} {
    result = parse_http_message(text.data(), static_cast<int>(text.size()), &conn);
  }
  std::string text;
  mg_connection conn;
  int result;
};

TEST(ParseHead, TakesARequestApart) {
  Head head(
      "POST /vlans/10?a=1&b=%41?x HTTP/1.1\r\nHost: switch\r\nX-Empty:\r\nContent-Length:   5  \r\n\r\n");
  ASSERT_EQ(head.result, static_cast<int>(head.text.size()));
  EXPECT_STREQ(head.conn.request_method, "POST");
  EXPECT_STREQ(head.conn.uri, "/vlans/10");
  EXPECT_STREQ(head.conn.http_version, "1.1");
  EXPECT_STREQ(head.conn.query_string, "a=1&b=%41?x");
  ASSERT_EQ(head.conn.num_headers, 3);
  EXPECT_STREQ(head.conn.http_headers[0].name, "Host");
  EXPECT_STREQ(head.conn.http_headers[0].value, "switch");
  EXPECT_STREQ(head.conn.http_headers[1].name, "X-Empty");
  EXPECT_STREQ(head.conn.http_headers[1].value, "");
  EXPECT_STREQ(head.conn.http_headers[2].value, "5  ");
}

TEST(ParseHead, WithoutQuestionMarkThereIsNoQueryString) {
  Head without("GET / HTTP/1.1\r\n\r\n");
  EXPECT_EQ(without.conn.query_string, nullptr);
  Head empty("GET /? HTTP/1.1\r\n\r\n");
  EXPECT_STREQ(empty.conn.query_string, "");
}

TEST(ParseHead, RunsOfDelimitersCountAsOne) {
  Head head("\r\n  GET   /a    HTTP/1.0\r\n\n\r\nA:: : b\r\n\r\n");
  ASSERT_GT(head.result, 0);
  EXPECT_STREQ(head.conn.request_method, "GET");
  EXPECT_STREQ(head.conn.uri, "/a");
  EXPECT_STREQ(head.conn.http_version, "1.0");
  ASSERT_EQ(head.conn.num_headers, 1);
  EXPECT_STREQ(head.conn.http_headers[0].name, "A");
  EXPECT_STREQ(head.conn.http_headers[0].value, "b");
}

TEST(ParseHead, UriIsDecodedAndNormalised) {
  static const struct {
    const char *raw, *uri;
  } cases[] = {
      {"/a%2fb", "/a/b"},
      {"//a/../b", "/a/b"},
      {"/a+b", "/a+b"},
      {"/..%2f..%2fetc", "/etc"},
      {"/a//b", "/a/b"},
      {"/a/./b", "/a/./b"},
      {"/a/.../b", "/a/./b"},
      {"/a\\\\..\\b", "/a\\b"},
      {"/....//x", "/x"},
      {"/%", "/%"},
      {"/%4", "/%4"},
      {"/%zz", "/%zz"},
      {"*", "*"},
      {"./..//x", "./x"},
      {"http://h//x", "http://h//x"},
      {"/a%3fb", "/a?b"},
      {"/%00/x", "/"},
  };
  for (const auto &c : cases) {
    Head head(std::string("GET ") + c.raw + " HTTP/1.1\r\n\r\n");
    ASSERT_GT(head.result, 0) << c.raw;
    EXPECT_STREQ(head.conn.uri, c.uri) << c.raw;
  }
}

TEST(ParseHead, NineMethodsAreKnownInExactCase) {
  for (const char *method :
       {"GET", "POST", "HEAD", "CONNECT", "PUT", "DELETE", "OPTIONS", "PROPFIND", "MKCOL"}) {
    EXPECT_GT(Head(std::string(method) + " / HTTP/1.1\r\n\r\n").result, 0) << method;
  }
  for (const char *method : {"PATCH", "get", "TRACE", "GETX", "GE", "HTTP", "http/1.1"}) {
    EXPECT_EQ(Head(std::string(method) + " / HTTP/1.1\r\n\r\n").result, -1) << method;
  }
}

TEST(ParseHead, VersionMustBeHttp) {
  EXPECT_EQ(Head("GET /\r\n\r\n").result, -1);
  EXPECT_EQ(Head("GET / FTP/1.1\r\n\r\n").result, -1);
  EXPECT_EQ(Head("GET / http/1.1\r\n\r\n").result, -1);
  EXPECT_STREQ(Head("GET / HTTP/\r\n\r\n").conn.http_version, "");
  EXPECT_STREQ(Head("GET / HTTP/1.1 x\r\n\r\n").conn.http_version, "1.1 x");
}

TEST(ParseHead, ResponseGivesItsStatus) {
  Head head("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n");
  ASSERT_GT(head.result, 0);
  EXPECT_EQ(head.conn.status_code, 404);
  EXPECT_EQ(head.conn.num_headers, 1);
}

TEST(ParseHead, ThirtyHeadersAreKeptAndTheRestIgnored) {
  for (const int count : {29, 30, 31, 100}) {
    std::string text = "GET / HTTP/1.1\r\n";
    for (int i = 0; i < count; i++) text += "H" + std::to_string(i) + ": v" + std::to_string(i) + "\r\n";
    Head head(text + "\r\n");
    ASSERT_GT(head.result, 0);
    const int kept = count < 30 ? count : 30;
    ASSERT_EQ(head.conn.num_headers, kept);
    EXPECT_EQ(head.conn.http_headers[kept - 1].value, "v" + std::to_string(kept - 1));
  }
}

TEST(ParseHead, UriOf256CharactersIsMalformed) {
  const auto uri = [](size_t length) { return "/" + std::string(length - 1, 'a'); };
  EXPECT_GT(Head("GET " + uri(255) + " HTTP/1.1\r\n\r\n").result, 0);
  EXPECT_EQ(Head("GET " + uri(256) + " HTTP/1.1\r\n\r\n").result, -1);
  /* The length counts after decoding and without the query string. */
  EXPECT_GT(Head("GET " + uri(254) + "%41?" + uri(300) + " HTTP/1.1\r\n\r\n").result, 0);
  EXPECT_EQ(Head("GET " + uri(255) + "%41 HTTP/1.1\r\n\r\n").result, -1);
}

TEST(ParseHead, EmptyAndBlankHeadsAreMalformed) {
  EXPECT_EQ(Head("").result, -1);
  EXPECT_EQ(Head("\r\n\r\n").result, -1);
  EXPECT_EQ(Head("\n").result, -1);
}

TEST(ValidUri, HasOneOfFourForms) {
  for (const char *uri : {"/", "/x", "*", "http://x", "HTTPS://x", "httpx", "host:80", "[::1]:80"}) {
    EXPECT_TRUE(is_valid_uri(uri)) << uri;
  }
  for (const char *uri : {"", "x", "**", "*x", "host:", ":80", "host:80x", "host:x", "200", "ftp://h/"}) {
    EXPECT_FALSE(is_valid_uri(uri)) << uri;
  }
}
