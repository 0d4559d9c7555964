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

/* The position behind the "://" that begins at `at`; npos when none does. */
static size_t behind_scheme(std::string_view text, size_t at) {
  bool found = take(text, &at, ':', "%3A") && take(text, &at, '/', "%2F") && take(text, &at, '/', "%2F");
  return found ? at : std::string_view::npos;
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

void append_redacted(std::string *line, std::string_view text) {
  bool maybe_cut = text.size() >= log_text_maybe_cut;
  size_t done = 0;  /* what is before it has been appended */
  size_t clean = 0; /* an encoded URL that begins before it ends there, and holds no "@" behind `done` */
  size_t at = 0;
  while ((at = next_candidate(text, at)) < text.size()) {
    size_t start = behind_scheme(text, at);
    bool encoded = start != at + std::string_view("://").size();
    if (start == std::string_view::npos || (encoded && at < clean)) {
      at++;
      continue;
    }
    clean = encoded ? std::min(text.find_first_of(" &", start), text.size()) : text.size();
    size_t hidden = hidden_size(text.substr(start, clean - start), maybe_cut && clean == text.size());
    if (hidden > 0) {
      line->append(text.substr(done, start - done)).append("****");
      done = start + hidden;
    }
    if (!encoded) break;
    at = std::max(start, done);
  }
  line->append(text.substr(done));
}

} // namespace softswitch
