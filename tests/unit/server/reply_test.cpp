/* Writing a reply, and the formatting functions under it. */
#include "tests/support/fake_request.h"

#include <gtest/gtest.h>
#include <stdarg.h>
#include <stdlib.h>

TEST(Reply, FirstHeaderWritesTheStatusLine) {
  FakeRequest request("GET", "/");
  mg_send_header(request.conn(), "Content-Type", "text/xml; charset=utf-8");
  EXPECT_EQ(request.bytes(), "HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=utf-8\r\n");
  EXPECT_EQ(request.conn()->status_code, 200);
}

TEST(Reply, OnlyTheFirstStatusIsWritten) {
  FakeRequest request("GET", "/");
  mg_send_status(request.conn(), 418);
  mg_send_status(request.conn(), 200);
  mg_send_header(request.conn(), "A", "b");
  EXPECT_EQ(request.bytes(), "HTTP/1.1 418 I'm a teapot\r\nA: b\r\n");
  EXPECT_EQ(request.conn()->status_code, 418);
}

TEST(Reply, FirstDataEndsTheHeadersAndEachCallIsOneChunk) {
  FakeRequest request("GET", "/");
  mg_send_header(request.conn(), "Content-Type", "text/plain");
  mg_printf_data(request.conn(), "%s %d", "number", 7);
  const size_t waiting = mg_send_data(request.conn(), "0123456789abcdef", 16);
  EXPECT_EQ(request.bytes(),
            "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nTransfer-Encoding: chunked\r\n\r\n"
            "8\r\nnumber 7\r\n10\r\n0123456789abcdef\r\n");
  EXPECT_EQ(waiting, request.bytes().size());
}

TEST(Reply, ChunkSizesAreUpperCaseHexadecimal) {
  FakeRequest request("GET", "/");
  mg_send_data(request.conn(), std::string(0xabc, 'x').data(), 0xabc);
  EXPECT_EQ(request.bytes(), "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nABC\r\n" +
                                 std::string(0xabc, 'x') + "\r\n");
}

TEST(Reply, EmptyDataDoesNotEndTheReply) {
  FakeRequest request("GET", "/");
  mg_printf_data(request.conn(), "%s", "");
  EXPECT_EQ(request.bytes(), "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
}

static std::string chunk_of(size_t length) {
  FakeRequest request("GET", "/");
  mg_printf_data(request.conn(), "%s", std::string(length, 'x').c_str());
  EXPECT_TRUE(request.reply().well_formed);
  return request.reply().body;
}

TEST(Reply, TextOfExactly8192CharactersEndsWithANulByte) {
  EXPECT_EQ(chunk_of(8191), std::string(8191, 'x'));
  EXPECT_EQ(chunk_of(8192), std::string(8191, 'x') + '\0');
  EXPECT_EQ(chunk_of(8193), std::string(8193, 'x'));
  EXPECT_EQ(chunk_of(300000), std::string(300000, 'x'));
}

static std::string raw_of(size_t length) {
  FakeRequest request("GET", "/");
  EXPECT_EQ(mg_printf(request.conn(), "%s", std::string(length, 'x').c_str()), length);
  return request.bytes();
}

TEST(Reply, RawTextOfExactly500CharactersEndsWithANulByte) {
  EXPECT_EQ(raw_of(499), std::string(499, 'x'));
  EXPECT_EQ(raw_of(500), std::string(499, 'x') + '\0');
  EXPECT_EQ(raw_of(501), std::string(501, 'x'));
}

TEST(Reply, RawBytesAreNotFramed) {
  FakeRequest request("GET", "/");
  EXPECT_EQ(mg_write(request.conn(), "a\0b", 3), 3u);
  EXPECT_EQ(mg_write(request.conn(), "c", -1), 3u);
  EXPECT_EQ(request.bytes(), std::string("a\0b", 3));
}

TEST(Reply, ReasonPhrasesAreTheStandardOnes) {
  EXPECT_STREQ(status_code_to_str(200), "OK");
  EXPECT_STREQ(status_code_to_str(306), "Switch Proxy");
  EXPECT_STREQ(status_code_to_str(405), "Method Not Allowed");
  EXPECT_STREQ(status_code_to_str(413), "Payload Too Large");
  EXPECT_STREQ(status_code_to_str(414), "URI Too Long");
  EXPECT_STREQ(status_code_to_str(416), "Requested Range Not Satisfiable");
  EXPECT_STREQ(status_code_to_str(505), "HTTP Version Not Supported");
  EXPECT_STREQ(status_code_to_str(299), "Server Error");
  EXPECT_STREQ(status_code_to_str(0), "Server Error");
}

/* --- Formatting ---------------------------------------------------------------------------------------- */

static int format(char **buf, size_t size, const char *fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  const int len = ns_avprintf(buf, size, fmt, ap);
  va_end(ap);
  return len;
}

TEST(Formatting, ShortTextStaysInTheCallersBuffer) {
  char stack[5];
  char *buf = stack;
  EXPECT_EQ(format(&buf, sizeof(stack), "%s", "abcd"), 4);
  EXPECT_EQ(buf, stack);
  EXPECT_STREQ(buf, "abcd");
  EXPECT_EQ(format(&buf, sizeof(stack), "%s", "abcde"), 5);
  EXPECT_EQ(buf, stack);
  EXPECT_STREQ(buf, "abcd");
}

TEST(Formatting, LongerTextGoesToTheHeap) {
  char stack[5];
  char *buf = stack;
  EXPECT_EQ(format(&buf, sizeof(stack), "%s-%d", "abcde", 42), 8);
  ASSERT_NE(buf, stack);
  EXPECT_STREQ(buf, "abcde-42");
  free(buf);
}

TEST(Formatting, TextThatCannotBeFormattedIsGivenUp) {
  char stack[5];
  char *buf = stack;
  const wchar_t bad[] = {0x7fffffff, 0};
  EXPECT_EQ(format(&buf, sizeof(stack), "%ls", bad), -1);
  EXPECT_EQ(buf, nullptr);
}

/* --- Splitting replies, for the tests themselves ------------------------------------------------------- */

TEST(SplitReply, TellsBrokenFramingFromGood) {
  const std::string head = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
  const FakeReply good = split_reply(head + "3\r\nabc\r\n1\r\nd\r\n0\r\n\r\n");
  EXPECT_EQ(good.head, head);
  EXPECT_EQ(good.body, "abcd");
  EXPECT_TRUE(good.well_formed);
  EXPECT_TRUE(good.terminated);
  EXPECT_FALSE(split_reply(head + "3\r\nabc\r\n").terminated);
  for (const char *body : {"3\r\nab\r\n", "3\r\nabcd\r\n", "a\r\n0123456789\r\n", "\r\nabc\r\n", "0\r\n\r\nX",
                           "FFFFFFFFFFFFFFFF\r\n"}) {
    EXPECT_FALSE(split_reply(head + body).well_formed) << body;
  }
  EXPECT_EQ(split_reply("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nab").body, "ab");
  EXPECT_FALSE(split_reply("HTTP/1.1 200 OK\r\n").well_formed);
}
