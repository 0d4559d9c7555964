/* Hiding credentials; see log_redaction.h. */
#include "platform/softswitch/services/log_redaction.h"

#include <algorithm>
#include <strings.h>

namespace softswitch {

/* Whether a text goes on at `at` with a character, as it is or percent-encoded ("%3A", of any case); `at` is
 * then behind it. */
static bool take(std::string_view text, size_t *at, char plain, std::string_view encoded) {
  std::string_view next = text.substr(*at, encoded.size());
  bool is_plain = next.starts_with(plain);
  bool is_encoded =
      next.size() == encoded.size() && strncasecmp(next.data(), encoded.data(), next.size()) == 0;
  if (!is_plain && !is_encoded) return false;
  *at += is_plain ? 1 : encoded.size();
  return true;
}

/* The position behind the "://" that begins at `at`; npos when none does. With ":/" it is a URL as well for
 * those that read them leniently. */
static size_t behind_scheme(std::string_view text, size_t at) {
  if (!take(text, &at, ':', "%3A") || !take(text, &at, '/', "%2F")) return std::string_view::npos;
  take(text, &at, '/', "%2F");
  return at;
}

/* The first position from `at` on at which "://" may begin. */
static size_t next_candidate(std::string_view text, size_t at) {
  auto found = std::find_if(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(),
                            [](char byte) { return byte == ':' || byte == '%'; });
  return static_cast<size_t>(found - text.begin());
}

/* How much of what follows "://" up to the end of the URL at the latest is to be hidden. */
static size_t hidden_size(std::string_view rest, bool maybe_cut) {
  if (maybe_cut) return rest.size();
  size_t plain = rest.rfind('@'), encoded = rest.rfind("%40");
  if (plain != std::string_view::npos && encoded != std::string_view::npos) return std::max(plain, encoded);
  if (plain != std::string_view::npos || encoded != std::string_view::npos) return std::min(plain, encoded);
  return 0;
}

/* Where a URL that reaches to `at` at least ends, when it holds neither blanks nor "&" as they are. */
static size_t url_end(std::string_view text, size_t at) {
  return std::min(text.find_first_of(" &", at), text.size());
}

/* The position behind the first "?" or "#" from `at` on; `end` when there is none before it. */
static size_t behind_query_mark(std::string_view text, size_t at, size_t end) {
  while (at < end && !take(text, &at, '?', "%3F") && !take(text, &at, '#', "%23")) at++;
  return std::min(at, end);
}

/* A line that grows by the parts of a text, in their order. */
struct redacted_line {
  std::string *line;
  std::string_view text;
  size_t done; /* what is before it has been appended */

  void hide(size_t from, size_t to) {
    if (from == to) return;
    line->append(text.substr(done, from - done)).append("****");
    done = to;
  }
};

/* Hides what is secret of a URL: its credentials, `hidden` bytes from `start` on, and its query. A "?" within
 * those may begin the query already. */
static void hide_secrets(redacted_line *into, size_t start, size_t hidden) {
  size_t end = url_end(into->text, start + hidden);
  size_t query = behind_query_mark(into->text, start, end);
  if (query <= start + hidden) return into->hide(start, end);
  into->hide(start, start + hidden);
  into->hide(query, end);
}

void append_redacted(std::string *line, std::string_view text) {
  bool maybe_cut = text.size() >= log_text_maybe_cut;
  redacted_line into = {line, text, 0};
  size_t clean = 0; /* an encoded URL that begins before it ends there, and holds no "@" behind `into.done` */
  size_t at = 0;
  while ((at = next_candidate(text, at)) < text.size()) {
    size_t start = behind_scheme(text, at);
    bool found = start != std::string_view::npos;
    bool encoded = found && text.substr(at, start - at).find('%') != std::string_view::npos;
    if (!found || (encoded && at < clean)) {
      at++;
      continue;
    }
    clean = encoded ? url_end(text, start) : text.size();
    hide_secrets(&into, start,
                 hidden_size(text.substr(start, clean - start), maybe_cut && clean == text.size()));
    if (!encoded) break;
    at = std::max(start, into.done);
  }
  line->append(text.substr(into.done));
}

} // namespace softswitch
