/* The head of a CGI program's output. */
#include "server/http_conn.h"

#include <gtest/gtest.h>

static std::string text_of(const struct vec &piece) {
  return std::string(piece.ptr == nullptr ? "" : piece.ptr, piece.len);
}

/* Describes what is read: "INCOMPLETE", "MALFORMED", or the fields and header lines. */
static std::string head_of(const std::string &output) {
  struct cgi_head head;
  const std::string copy(output); /* exactly as long */
  switch (parse_cgi_head(copy.data(), copy.size(), &head)) {
  case CGI_HEAD_INCOMPLETE:
    return "INCOMPLETE";
  case CGI_HEAD_MALFORMED:
    return "MALFORMED";
  case CGI_HEAD_COMPLETE:
    break;
  }
  std::string text =
      std::to_string(head.len) + " " + std::to_string(head.status) + " '" + text_of(head.reason) + "'";
  struct vec rest = head.lines, name, value;
  while (next_cgi_header(&rest, &name, &value)) text += " " + text_of(name) + "=[" + text_of(value) + "]";
  EXPECT_EQ(rest.len, 0u);
  return text;
}

TEST(CgiHead, EndsWithAnEmptyLine) {
  EXPECT_EQ(head_of("A: b\n\nbody"), "6 200 '' A=[b]");
  EXPECT_EQ(head_of("A: b\r\n\r\nbody"), "8 200 '' A=[b]");
  EXPECT_EQ(head_of("A: b\r\n\nbody"), "7 200 '' A=[b]");
  EXPECT_EQ(head_of("A: b\n\r\nbody\n\n"), "7 200 '' A=[b]");
  EXPECT_EQ(head_of("A: b\nC: d\n\n"), "11 200 '' A=[b] C=[d]");
}

TEST(CgiHead, IsIncompleteBeforeThat) {
  for (const char *output :
       {"", "A", "A: b", "A: b\n", "A: b\r\n", "A: b\r\n\r", "no header at all\n", "\r"}) {
    EXPECT_EQ(head_of(output), "INCOMPLETE") << output;
  }
}

TEST(CgiHead, BlanksAroundAValueDoNotCount) {
  EXPECT_EQ(head_of("A:b\nB: \t c d\t \nC:\nD:  \n\n"), "24 200 '' A=[b] B=[c d] C=[] D=[]");
}

TEST(CgiHead, NamesMayHaveTheCharactersOfTokens) {
  EXPECT_EQ(head_of("!#$%&'*+-.^_`|~09azAZ: x\n\n"), "26 200 '' !#$%&'*+-.^_`|~09azAZ=[x]");
  EXPECT_EQ(head_of("A: \xc3\xa9: \"x\"\n\n"), "12 200 '' A=[\xc3\xa9: \"x\"]");
}

TEST(CgiHead, MalformedLines) {
  const std::string lines[] = {
      "", /* no header line at all */
      "A",      "A b: c",   "A : b",   ": b",      " A: b",   "A: b\n c", "HTTP/1.1 200 OK",
      "<html>", "A: b\x01", "A: b\rc", "A\x80: b", "A: \x7f", "A@: b",    "A: b\nB",
  };
  for (const std::string &line : lines) {
    EXPECT_EQ(head_of(line + "\n\n"), "MALFORMED") << line;
    EXPECT_EQ(head_of(line + "\r\n\r\n"), "MALFORMED") << line;
  }
  EXPECT_EQ(head_of(std::string("A: b\0c\n\n", 8)), "MALFORMED");
  EXPECT_EQ(head_of(std::string("A\0: c\n\n", 7)), "MALFORMED");
}

TEST(CgiHead, StatusAndItsReason) {
  EXPECT_EQ(head_of("Status: 404 Not Found\n\n"), "23 404 'Not Found' Status=[404 Not Found]");
  EXPECT_EQ(head_of("status:201\n\n"), "12 201 '' status=[201]");
  EXPECT_EQ(head_of("STATUS: 599 \n\n"), "14 599 '' STATUS=[599]");
  EXPECT_EQ(head_of("Status: 200\nStatus: 500\n\n"), "25 200 '' Status=[200] Status=[500]")
      << "the first counts";
}

TEST(CgiHead, MalformedStatuses) {
  for (const char *status : {"", "4", "40", "4040", "404x", "abc", "-40", "099", "100", "101", "199", "600",
                             "999", " OK 200", "+200", "0x1"}) {
    EXPECT_EQ(head_of(std::string("Status: ") + status + "\n\n"), "MALFORMED") << status;
  }
}

TEST(CgiHead, LocationAloneRedirects) {
  EXPECT_EQ(head_of("Location: /x\n\n"), "14 302 '' Location=[/x]");
  EXPECT_EQ(head_of("Status: 301 Moved\nlocation: /x\n\n"),
            "32 301 'Moved' Status=[301 Moved] location=[/x]");
  EXPECT_EQ(head_of("Location: /x\nStatus: 200\n\n"), "26 200 '' Location=[/x] Status=[200]");
}

TEST(CgiHead, MayHave16384BytesOfLines) {
  const std::string longest = "A: " + std::string(CGI_MAX_HEAD - 4, 'x') + "\n";
  EXPECT_EQ(head_of(longest), "INCOMPLETE");
  EXPECT_EQ(head_of(longest + "\n"), "16385 200 '' A=[" + std::string(CGI_MAX_HEAD - 4, 'x') + "]");
  EXPECT_EQ(head_of("x" + longest), "MALFORMED");
  EXPECT_EQ(head_of("x" + longest + "\n"), "MALFORMED");
  EXPECT_EQ(head_of(std::string(CGI_MAX_HEAD + 1, 'x')), "MALFORMED");
}
