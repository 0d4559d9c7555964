/* Credentials of URLs never reach the log. */
#include "platform/softswitch/services/log_redaction.h"

#include "platform/api/l7proc.h"
#include "platform/softswitch/services/log.h"
#include "tests/unit/platform/services_test_support.h"

#include <random>

using namespace softswitch;

namespace {

std::string redacted(const std::string &text) {
  std::string line = "before ";
  append_redacted(&line, text);
  return line.substr(sizeof "before " - 1);
}

TEST(LogRedaction, TextsWithoutCredentialsStayAsTheyAre) {
  for (const char *text :
       {"",
        ":",
        "%",
        "://",
        "%3A%2F%2F",
        "a:b@c",
        "user@host",
        "10:20 50% done",
        "http://host/file",
        "http://@h",
        "http:a@b",
        "http:%2a%2fa@b",
        "http://host/file?",
        "see http://host/file ?",
        "%3a%2f",
        "x%3",
        "x%3A%2",
        "12:34:56.789Z a@b",
        "User from [10.0.0.1] accesses API [POST /vlans/5?name=a%40b&format=json]: Create VLAN 5. (0)",
        "[POST /transfer?url=ftp%3A%2F%2Fhost%2Ffile&note=a%40b]: see a@b (0)"})
    EXPECT_EQ(redacted(text), text);
}

TEST(LogRedaction, CredentialsAreHidden) {
  const std::pair<const char *, const char *> rows[] = {
      {"ftp://u:p@h/f", "ftp://****@h/f"},
      {"ftp://u@h", "ftp://****@h"},
      {"ftp://u:p%40h/f", "ftp://****%40h/f"},
      {"ftp://u:p@q@h/f", "ftp://****@h/f"},
      {"ftp://u:a/b+e&f'g\"h<i>j;k@h/f", "ftp://****@h/f"},
      {"ftp://u:a/b?c#d+e&f'g\"h<i>j;k@h/f", "ftp://****"},
      {"http:/u:p@h/f", "http:/****@h/f"},
      {"http:%2fu:p@h/f", "http:%2f****@h/f"},
      {"http:///u:p@h/f", "http://****@h/f"},
      {"ftp://u:two words@h/f", "ftp://****@h/f"},
      {"ftp%3A%2F%2Fu%3Ap%40h%2Ff", "ftp%3A%2F%2F****%40h%2Ff"},
      {"ftp%3a%2f%2fu%3ap%40h%2ff", "ftp%3a%2f%2f****%40h%2ff"},
      {"ftp%3A//u:p@h/f", "ftp%3A//****@h/f"},
      {"ftp:%2F%2Fu:p@h/f", "ftp:%2F%2F****@h/f"},
      {"ftp:/%2fu:p%40h/f", "ftp:/%2f****%40h/f"},
      {"url=ftp:%2F/u:p@h/f&url=scp%3A//v:q%40i/g end", "url=ftp:%2F/****@h/f&url=scp%3A//****%40i/g end"},
      {"url=a%3A%2F%2Fu%3Ap%40h%2Ff&b=c%40d", "url=a%3A%2F%2F****%40h%2Ff&b=c%40d"},
      {"a%3A%2F%2Fu%26v%20w%40h&x", "a%3A%2F%2F****%40h&x"},
      {"a%3A//b:c@d e@f g://h:i@j", "a%3A//****@d e@f g://****@j"},
      {"a%3A//b%3A//c:d@e", "a%3A//****@e"},
      {"a%3A//b&c%3A//d&e://f:g@h", "a%3A//b&c%3A//d&e://****@h"},
      {"a://b c://d:e@f", "a://****@f"},
  };
  for (const auto &[text, expected] : rows) EXPECT_EQ(redacted(text), expected) << text;
}

TEST(LogRedaction, QueriesAndFragmentsAreHidden) {
  const std::pair<const char *, const char *> rows[] = {
      {"http://h/f?key=1;s=2", "http://h/f?****"},
      {"http://h/f#part", "http://h/f#****"},
      {"http://h?key begins", "http://h?**** begins"},
      {"http://u:p@h/f?key: done", "http://****@h/f?**** done"},
      {"http://h/f?mail=a@b;key=c: done", "http://**** done"},
      {"url=http://h/f?key&img=active]: done", "url=http://h/f?****&img=active]: done"},
      {"url=http%3A%2F%2Fh%2Ff%3Fkey%3D1%26s%3D2&b=c?d", "url=http%3A%2F%2Fh%2Ff%3F****&b=c?d"},
      {"url=http%3a%2f%2fu%40h%2ff%23part&b", "url=http%3a%2f%2f****%40h%2ff%23****&b"},
      {"url=http%3A//h/f?a%40b&url=http%3A//h/g?key end", "url=http%3A//****&url=http%3A//h/g?**** end"},
  };
  for (const auto &[text, expected] : rows) EXPECT_EQ(redacted(text), expected) << text;
}

TEST(LogRedaction, WhatMayHaveBeenCutIsHiddenToItsEnd) {
  const std::string filling(log_text_maybe_cut, 'x');
  for (const std::string begin : {"ftp://", "a ftp%3A%2F%2F"}) {
    EXPECT_EQ(redacted(begin + "user:" + filling), begin + "****");
    EXPECT_EQ(redacted(begin + "user:a@b" + filling), begin + "****");
  }
  EXPECT_EQ(redacted("a%3A//b&" + filling), "a%3A//b&" + filling) << "this URL has not been cut";
  EXPECT_EQ(redacted("a%3A//b@c&d%3A//" + filling), "a%3A//****@c&d%3A//****");
}

/* A text with its characters encoded at random; those of `always` always. */
std::string encode(const std::string &text, const std::string &always, std::mt19937 &random) {
  std::string encoded;
  for (char byte : text) {
    char code[4];
    snprintf(code, sizeof code, random() % 2 ? "%%%02X" : "%%%02x", static_cast<unsigned char>(byte));
    bool must = always.find(byte) != std::string::npos;
    encoded += must || random() % 3 == 0 ? code : std::string(1, byte);
  }
  return encoded;
}

std::string decode(const std::string &text) {
  std::string decoded;
  for (size_t at = 0; at < text.size(); at++) {
    unsigned code;
    bool encoded = sscanf(text.c_str() + at, "%%%2x", &code) == 1;
    decoded += encoded ? static_cast<char>(code) : text[at];
    if (encoded) at += 2;
  }
  return decoded;
}

std::string random_text(const std::string &alphabet, size_t size, std::mt19937 &random) {
  std::string text;
  while (text.size() < size) text += alphabet[random() % alphabet.size()];
  return text;
}

TEST(LogRedaction, RandomPasswordsNeverAppearHoweverTheyAreEncoded) {
  const std::string special = "@/?#+:;&='\"<>()[]{}|\\^~`!$*,.-_ %";
  std::mt19937 random(1);
  for (int round = 0; round < 5000; round++) {
    /* What must not appear: ten letters that nothing else has, in the middle of anything. */
    std::string secret = random_text("QVWXYZ", 10, random);
    std::string password =
        random_text(special, random() % 8, random) + secret + random_text(special, random() % 8, random);
    std::string url = "ftp://user:" + password + "@host/file";
    /* In a query blanks, "&" and "%" are always encoded, so that the value ends where it ends. */
    std::string query = "a=1&url=" + encode(url, " &%", random) + "&b=2%40c";
    for (const std::string &text : {"[POST /transfer?" + query + "]: fine (0)", "cannot read " + url}) {
      std::string shown = decode(redacted(text));
      for (size_t at = 0; at + 4 <= secret.size(); at++)
        ASSERT_EQ(shown.find(secret.substr(at, 4)), std::string::npos) << text << "\n" << shown;
      ASSERT_NE(shown.find("****"), std::string::npos) << shown;
    }
  }
}

TEST(LogRedaction, HostileTextsTakeNoLongerThanOthers) {
  /* Would take minutes if each part were looked at once more for each other. */
  for (const std::string part :
       {"://", "%3A//", "%3A//@&", "%3A%2F%2Fa%40 ", ":%2F/", "://@", "&%3A//", "%3A//?@", "%3A//@?"}) {
    std::string text;
    while (text.size() < 1024 * 1024) text += part;
    EXPECT_GT(redacted(text).size(), 0u) << part;
  }
}

TEST(LogRedaction, LinesOfTheLogAreRedacted) {
  temporary_directory directory;
  std::string error;
  ASSERT_TRUE(log_open(directory.path, &error)) << error;
  l7proc_logf(L7PROC_INFO, 0, "f", 1, "from %s", "sftp://me:pass word@host/x");
  l7proc_logf(L7PROC_INFO, 0, "f", 1, "ftp://u:%s@host", std::string(100000, 'p').c_str());
  log_close();
  std::string content = file_content(directory.path + "/log");
  std::vector<std::string> lines = lines_of(content);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].substr(25), "INFO f:1 from sftp://****@host/x");
  EXPECT_EQ(lines[1].substr(25), "INFO f:1 ftp://****");
}

} // namespace
