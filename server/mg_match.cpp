/* Patterns of file names, as the options cgi_pattern, ssi_pattern and hide_files_patterns hold them. */
#include "server/http_conn.h"

#include <ctype.h>
#include <string.h>
#include <string_view>
#include <vector>

/* Which beginnings of the text the pattern read so far matches: reached[i] stands for the first i characters.
 * Following all of them at once takes pattern times text, whatever the stars. */
struct match {
  std::string_view text;
  std::vector<char> reached;
};

static bool same_letter(char a, char b) {
  return tolower(static_cast<unsigned char>(a)) == tolower(static_cast<unsigned char>(b));
}

/* A part of the pattern that takes exactly one character, for which `fits` tells. */
template <typename Fits> static void take_one(struct match *m, Fits fits) {
  for (size_t i = m->text.size(); i > 0; i--) {
    m->reached[i] = m->reached[i - 1] && fits(m->text[i - 1]);
  }
  m->reached[0] = false;
}

static void take_many(struct match *m, bool slashes_too) {
  for (size_t i = 1; i <= m->text.size(); i++) {
    if (m->reached[i - 1] && (slashes_too || m->text[i - 1] != '/')) m->reached[i] = true;
  }
}

static void require_end(struct match *m) {
  for (size_t i = 0; i < m->text.size(); i++) m->reached[i] = false;
}

/* Length of the longest beginning of the text that one alternative matches, -1 when none does. */
static int match_alternative(std::string_view pattern, std::string_view text) {
  struct match m = {text, std::vector<char>(text.size() + 1)};
  m.reached[0] = true;
  for (size_t i = 0; i < pattern.size(); i++) {
    const char c = pattern[i];
    const bool doubled = c == '*' && pattern.substr(i + 1).starts_with('*');
    if (c == '*') {
      take_many(&m, doubled);
      if (doubled) i++;
    } else if (c == '$') {
      require_end(&m);
    } else if (c == '?') {
      take_one(&m, [](char t) { return t != '/'; });
    } else {
      take_one(&m, [c](char t) { return same_letter(c, t); });
    }
  }
  for (size_t i = text.size() + 1; i > 0; i--) {
    if (m.reached[i - 1]) return static_cast<int>(i - 1);
  }
  return -1;
}

int mg_match_prefix(const char *pattern, int pattern_len, const char *text) {
  std::string_view rest(pattern, pattern_len < 0 ? 0 : static_cast<size_t>(pattern_len));
  int longest = -1;
  for (;;) {
    const size_t bar = rest.find('|');
    const int matched = match_alternative(rest.substr(0, bar), text);
    if (matched > longest) longest = matched;
    if (bar == std::string_view::npos) return longest;
    rest.remove_prefix(bar + 1);
  }
}

/* An alternative that matches nothing of the text, as an empty one does, names no file. */
bool option_matches(const struct mg_server *server, enum mg_option option, const char *text) {
  const char *pattern = server->config_options[option];
  return pattern != nullptr && mg_match_prefix(pattern, static_cast<int>(strlen(pattern)), text) > 0;
}
