/* Reading values out of a request: URL decoding, request variables, header parameters, multipart bodies. */
#include "tests/support/fake_request.h"

#include <gtest/gtest.h>

/* --- URL decoding -------------------------------------------------------------------------------------- */

static std::string decode(const std::string &text, int form) {
  char dst[300];
  const int n = mg_url_decode(text.data(), text.size(), dst, sizeof(dst), form);
  return n < 0 ? "(too long)" : std::string(dst, static_cast<size_t>(n));
}

TEST(UrlDecode, TurnsEscapesIntoBytesAndLeavesTheRest) {
  static const struct {
    const char *text, *plain, *form;
  } cases[] = {
      {"", "", ""},
      {"abc", "abc", "abc"},
      {"a+b", "a+b", "a b"},
      {"%41", "A", "A"},
      {"%4", "%4", "%4"},
      {"%", "%", "%"},
      {"a%", "a%", "a%"},
      {"%%41", "%A", "%A"},
      {"%4g", "%4g", "%4g"},
      {"%g4", "%g4", "%g4"},
      {"%aF%Fa", "\xaf\xfa", "\xaf\xfa"},
      {"%2B%20+", "+ +", "+  "},
      {"%2541", "%41", "%41"},
  };
  for (const auto &c : cases) {
    EXPECT_EQ(decode(c.text, 0), c.plain) << c.text;
    EXPECT_EQ(decode(c.text, 1), c.form) << c.text;
  }
  EXPECT_EQ(decode("a%00b", 0), std::string("a\0b", 3));
}

TEST(UrlDecode, CutsAndTerminatesWhatDoesNotFit) {
  char dst[4];
  EXPECT_EQ(mg_url_decode("%41%42%43", 9, dst, sizeof(dst), 0), 3);
  EXPECT_STREQ(dst, "ABC");
  EXPECT_EQ(mg_url_decode("ABCD", 4, dst, sizeof(dst), 0), -1);
  EXPECT_STREQ(dst, "ABC");
  EXPECT_EQ(mg_url_decode("A", 1, dst, 0, 0), -1);
}

/* --- Request variables --------------------------------------------------------------------------------- */

struct Variable {
  int result;
  std::string value;
  bool operator==(const Variable &) const = default;
};

static std::ostream &operator<<(std::ostream &out, const Variable &v) {
  return out << v.result << " '" << v.value << "'";
}

static Variable get(FakeRequest &request, const char *name, size_t size = 256) {
  std::string dst(size, '#');
  const int result = mg_get_var(request.conn(), name, dst.data(), size);
  return {result, dst.c_str()};
}

static Variable get_from_query(const char *query, const char *name, size_t size = 256) {
  FakeRequest request("GET", "/x", query);
  return get(request, name, size);
}

TEST(Variables, QueryStringIsSearchedByWholeNameWithoutCase) {
  static const struct {
    const char *query, *name;
    Variable expected;
  } cases[] = {
      {"a=1&A=2", "A", {1, "1"}},   {"xa=1", "a", {-1, ""}},
      {"xa=1&a=2", "a", {1, "2"}},  {"a1=1&a=2", "a", {1, "2"}},
      {"a", "a", {-1, ""}},         {"a=", "a", {0, ""}},
      {"a=&b=2", "a", {0, ""}},     {"a&b=1", "b", {1, "1"}},
      {"&a=1", "a", {1, "1"}},      {"&&a=1", "a", {1, "1"}},
      {"a=b=c", "a", {3, "b=c"}},   {"b=a=1", "a", {-1, ""}},
      {" a=1", "a", {-1, ""}},      {";a=1", "a", {-1, ""}},
      {"?a=1", "a", {-1, ""}},      {"a=1+2%2B3", "a", {5, "1 2+3"}},
      {"a=%2", "a", {2, "%2"}},     {"a=%", "a", {1, "%"}},
      {"a=%2&b=0", "a", {2, "%2"}}, {"SessionKey=abc", "sessionkey", {3, "abc"}},
      {"%61=1", "a", {-1, ""}},     {"a=1", "", {-1, ""}},
      {"=1", "", {-1, ""}},
  };
  for (const auto &c : cases) EXPECT_EQ(get_from_query(c.query, c.name), c.expected) << c.query;
}

TEST(Variables, ValueThatDoesNotFitIsCutAndToldSo) {
  FakeRequest request("POST", "/x", "", "v=abcdef");
  EXPECT_EQ(get(request, "v", 7), (Variable{6, "abcdef"}));
  EXPECT_EQ(get(request, "v", 6), (Variable{-2, "abcde"}));
  EXPECT_EQ(get(request, "v", 1), (Variable{-2, ""}));
  EXPECT_EQ(get(request, "none", 1), (Variable{-1, ""}));
}

TEST(Variables, EscapesCountAsOneCharacterOfTheRoom) {
  EXPECT_EQ(get_from_query("v=%41%42", "v", 3), (Variable{2, "AB"}));
}

TEST(Variables, DestinationWithoutRoomIsRefused) {
  FakeRequest request("GET", "/x", "a=1");
  char byte = '#';
  EXPECT_EQ(mg_get_var(request.conn(), "a", &byte, 0), -2);
  EXPECT_EQ(byte, '#');
  EXPECT_EQ(mg_get_var(request.conn(), "a", nullptr, 10), -2);
}

TEST(Variables, QueryStringGoesBeforeTheBody) {
  FakeRequest request("POST", "/x", "a=query", "a=body&b=body");
  EXPECT_EQ(get(request, "a"), (Variable{5, "query"}));
  EXPECT_EQ(get(request, "b"), (Variable{4, "body"}));
}

TEST(Variables, ValueTooLongInTheQueryStringMakesTheSearchGoOnInTheBody) {
  FakeRequest with_body("POST", "/x", "a=123456", "a=12");
  EXPECT_EQ(get(with_body, "a", 4), (Variable{2, "12"}));
  FakeRequest without_body("GET", "/x", "a=123456");
  EXPECT_EQ(get(without_body, "a", 4), (Variable{-1, ""}));
}

TEST(Variables, EmptyValueInTheQueryStringIsAnAnswer) {
  FakeRequest request("POST", "/x", "a=", "a=body");
  EXPECT_EQ(get(request, "a"), (Variable{0, ""}));
}

TEST(Variables, BodyIsNotReadBeforeItIsAttached) {
  FakeRequest request("POST", "/x", "", "sessionkey=abc");
  request.detach_body();
  EXPECT_EQ(request.conn()->content_len, 14u);
  EXPECT_EQ(get(request, "sessionkey"), (Variable{-1, ""}));
}

TEST(Variables, BodyNeedNotBeTerminated) {
  FakeRequest request("POST", "/x", "", "a=12345");
  request.conn()->content_len = 4;
  EXPECT_EQ(get(request, "a"), (Variable{2, "12"}));
  request.conn()->content_len = 1;
  EXPECT_EQ(get(request, "a"), (Variable{-1, ""}));
}

TEST(Variables, NameWithAnAmpersandIsFoundWhole) {
  EXPECT_EQ(get_from_query("x=0&a&b=1&c=2", "a&b"), (Variable{1, "1"}));
}

/* --- Header parameters --------------------------------------------------------------------------------- */

struct Parameter {
  int result;
  std::string value;
  bool operator==(const Parameter &) const = default;
};

static std::ostream &operator<<(std::ostream &out, const Parameter &p) {
  return out << p.result << " '" << p.value << "'";
}

static Parameter parameter(const char *text, const char *name, size_t size = 100) {
  std::string buf(size, '#');
  const int result = mg_parse_header(text, name, buf.data(), size);
  return {result, buf.c_str()};
}

TEST(HeaderParameters, BareAndQuotedValuesAreExtracted) {
  static const struct {
    const char *text, *name;
    Parameter expected;
  } cases[] = {
      {"Digest username=\"admin\", realm=\"x y\", nc=00000001", "username", {5, "admin"}},
      {"Digest username=\"admin\", realm=\"x y\", nc=00000001", "realm", {3, "x y"}},
      {"Digest username=\"admin\", realm=\"x y\", nc=00000001", "nc", {8, "00000001"}},
      {"Digest xuri=1,uri=2", "uri", {1, "2"}},
      {"a=1;b=2", "b", {1, "2"}},
      {"a=1,b=2", "a", {1, "1"}},
      {"a=\"\"", "a", {0, ""}},
      {"a=", "a", {0, ""}},
      {"a", "a", {0, ""}},
      {"xa=1", "a", {0, ""}},
      {"aa=1", "a", {0, ""}},
      {"u=\"x, realm=forged\", realm=real", "realm", {4, "real"}},
      {"u=\"say \\\"hi\\\"\", v=1", "u", {8, "say \"hi\""}},
      {"u=\"say \\\"v=2\\\"\", v=1", "v", {1, "1"}},
      {"u=\"open", "u", {4, "open"}},
      {"", "a", {0, ""}},
      {"a=1", "", {0, ""}},
  };
  for (const auto &c : cases) EXPECT_EQ(parameter(c.text, c.name), c.expected) << c.text << " " << c.name;
}

TEST(HeaderParameters, ValueThatDoesNotFitIsRefused) {
  EXPECT_EQ(parameter("a=12345", "a", 6), (Parameter{5, "12345"}));
  EXPECT_EQ(parameter("a=12345", "a", 5), (Parameter{-1, ""}));
  char byte;
  EXPECT_EQ(mg_parse_header("a=1", "a", &byte, 0), -1);
  EXPECT_EQ(mg_parse_header(nullptr, "a", &byte, 1), 0);
}

TEST(Headers, AreFoundWithoutCaseAndTheFirstOneCounts) {
  FakeRequest request("GET", "/");
  request.add_header("Accept", "one");
  request.add_header("accept", "two");
  EXPECT_STREQ(mg_get_header(request.conn(), "ACCEPT"), "one");
  EXPECT_EQ(mg_get_header(request.conn(), "Accept-Encoding"), nullptr);
}

/* --- Multipart ----------------------------------------------------------------------------------------- */

struct Part {
  int next;
  std::string name, file, data;
};

static Part first_part(const std::string &body) {
  char name[20], file[20];
  const char *data = nullptr;
  int data_len = 0;
  Part p = {};
  p.next = mg_parse_multipart(body.data(), static_cast<int>(body.size()), name, sizeof(name), file,
                              sizeof(file), &data, &data_len);
  p.name = name;
  p.file = file;
  if (data != nullptr) p.data.assign(data, static_cast<size_t>(data_len));
  return p;
}

static const char two_parts[] = "--B1\r\nContent-Disposition: form-data; name=\"f\"; filename=\"a.txt\"\r\n"
                                "Content-Type: text/plain\r\n\r\nfile\r\nbytes\r\n"
                                "--B1\r\ncontent-disposition: form-data; name=second\r\n\r\n\r\n--B1--\r\n";

TEST(Multipart, PartsAreSplitOffOneByOne) {
  const std::string body = two_parts;
  const Part first = first_part(body);
  EXPECT_EQ(first.name, "f");
  EXPECT_EQ(first.file, "a.txt");
  EXPECT_EQ(first.data, "file\r\nbytes");
  ASSERT_GT(first.next, 0);
  const Part second = first_part(body.substr(static_cast<size_t>(first.next)));
  EXPECT_EQ(second.name, "second");
  EXPECT_EQ(second.file, "");
  EXPECT_EQ(second.data, "");
  ASSERT_GT(second.next, 0);
  EXPECT_EQ(first_part(body.substr(static_cast<size_t>(first.next + second.next))).next, 0);
}

TEST(Multipart, EveryCutOfABodyIsHarmlessAndHasNoPartBeforeItsEnd) {
  const std::string body = two_parts;
  const size_t first_end = static_cast<size_t>(first_part(body).next) + 4;
  for (size_t n = 0; n < first_end; n++) EXPECT_EQ(first_part(body.substr(0, n)).next, 0) << n;
}

TEST(Multipart, WhatIsNoMultipartBodyHasNoPart) {
  for (const char *body :
       {"", "-", "--", "--\r\n\r\n", "a=1&b=2", "xx\r\n\r\nxx", "-B\r\n\r\nx\r\n-B", "\n\n", "--\n\n--\n"}) {
    EXPECT_EQ(first_part(body).next, 0) << body;
  }
}

TEST(Multipart, NamesThatDoNotFitAreEmpty) {
  const Part part = first_part(
      "--B1\r\nContent-Disposition: form-data; name=\"a-name-of-twenty-char\"\r\n\r\nx\r\n--B1--\r\n");
  EXPECT_EQ(part.name, "");
  EXPECT_EQ(part.data, "x");
}
