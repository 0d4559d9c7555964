/* Patterns of file names. */
#include "server/http_conn.h"

#include <gtest/gtest.h>
#include <string.h>

static int match(const std::string &pattern, const char *text) {
  return mg_match_prefix(pattern.c_str(), static_cast<int>(pattern.size()), text);
}

TEST(MatchPrefix, TellsTheLengthOfTheLongestMatch) {
  const struct {
    const char *pattern;
    const char *text;
    int length;
  } rows[] = {
      {"/api", "/api", 4},
      {"/api", "/api/x", 4},
      {"/api", "/ap", -1},
      {"/API", "/api", 4},
      {"/api", "/API", 4},
      {"/api$", "/api", 4},
      {"/api$", "/api/", -1},
      {"*", "/x", 0},
      {"*", "abc", 3},
      {"*", "a/b", 1},
      {"**", "a/b", 3},
      {"**", "", 0},
      {"***", "a/b", 3},
      {"/*/b", "/a/b", 4},
      {"/*/b", "/a/c/b", -1},
      {"/**/b", "/a/c/b/b", 8},
      {"/a/b*c$", "/a/bxxc", 7},
      {"/a/b*c$", "/a/bx/c", -1},
      {"a?c", "abc", 3},
      {"a?c", "a/c", -1},
      {"a?", "a", -1},
      {"**.cgi$", "/x/y.cgi", 8},
      {"**.cgi$", "/x/y.CGI", 8},
      {"**.cgi$", "/x/y.cgi.txt", -1},
      {"**.cgi", "/a.cgi/b.cgi/c", 12},
      {"**.a$|**.b$", "/x.b", 4},
      {"**.a$|**.b$", "/x.c", -1},
      {"/a|/ab", "/abc", 3},
      {"|x", "y", 0},
      {"", "x", 0},
      {"$", "", 0},
      {"$", "x", -1},
      {"a$b", "ab", -1},
      {"*a*b*c*", "aXbXc/", 5},
  };
  for (const auto &row : rows)
    EXPECT_EQ(match(row.pattern, row.text), row.length) << row.pattern << " " << row.text;
}

TEST(MatchPrefix, ReadsNoMoreOfThePatternThanItsLength) {
  EXPECT_EQ(mg_match_prefix("/api$", 4, "/apix"), 4);
  EXPECT_EQ(mg_match_prefix("/api", -1, "/api"), 0);
}

TEST(MatchPrefix, ManyStarsDoNotTakeForEver) {
  std::string pattern, text(300, 'a');
  for (int i = 0; i < 100; i++) pattern += "**a*";
  EXPECT_EQ(match(pattern + "b", text.c_str()), -1);
}

TEST(MatchPrefix, DefaultPatternsMeanWhatTheyName) {
  mg_server *server = mg_create_server(nullptr, nullptr);
  const struct {
    enum mg_option option;
    const char *text;
    bool matches;
  } rows[] = {
      {CGI_PATTERN, "/srv/x.cgi", true},   {CGI_PATTERN, "/srv/x.pl", true},
      {CGI_PATTERN, "/srv/x.php", true},   {CGI_PATTERN, "/srv/x.php5", false},
      {CGI_PATTERN, "/srv/x.cgi/", false}, {SSI_PATTERN, "/srv/x.shtml", true},
      {SSI_PATTERN, "/srv/x.shtm", true},  {SSI_PATTERN, "/srv/x.html", false},
      {HIDE_FILES_PATTERNS, "", false}, /* unset */
  };
  for (const auto &row : rows)
    EXPECT_EQ(option_matches(server, row.option, row.text), row.matches) << row.text;
  mg_set_option(server, "hide_files_patterns", "**.bak$|"); /* an empty alternative hides nothing */
  EXPECT_TRUE(option_matches(server, HIDE_FILES_PATTERNS, "/x.bak"));
  EXPECT_FALSE(option_matches(server, HIDE_FILES_PATTERNS, "/x.txt"));
  mg_destroy_server(&server);
}
