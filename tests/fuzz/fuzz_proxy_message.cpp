/* Fuzzes what the proxy reads of the messages that it passes on: header lines (what goes on would go on again
 * as it is, and tells the same of the body), and bodies, which end at the same byte however they are cut. The
 * first input byte chooses the cut. */
#include "server/mg_proxy.h"

#include <stdlib.h>
#include <string>

static void require(bool condition) {
  if (!condition) abort();
}

static const char *const dropped[] = {"Host", nullptr};

/* Empty when the lines are malformed. */
static std::string passed_on(const std::string &lines, struct framing *framing) {
  struct iobuf out = {};
  const bool sound = pass_headers_on({lines.data(), lines.size()}, dropped, &out, framing);
  const std::string text = sound && out.len > 0 ? std::string(out.buf, out.len) : "";
  iobuf_free(&out);
  return text;
}

static void check_headers(const std::string &lines) {
  struct framing first, second;
  const std::string once = passed_on(lines, &first);
  if (once.empty()) return;
  require(passed_on(once, &second) == once);
  require(first.has_length == second.has_length && first.length == second.length);
  require(first.has_coding == second.has_coding && first.chunked == second.chunked);
  require(!second.closes && !(first.has_length && first.has_coding));
  for (size_t at = 0; at < once.size(); at = once.find('\n', at) + 1) {
    const size_t end = once.find("\r\n", at);
    require(end != std::string::npos && once.find(':', at) < end);
  }
}

/* How many bytes of the text belong to the chunked body at its front. */
static size_t body_length(const std::string &text, size_t step, struct body *body) {
  *body = {};
  body->kind = BODY_CHUNKED;
  size_t taken = 0;
  for (size_t at = 0; at < text.size(); at += step) {
    const std::string piece = text.substr(at, step);
    taken += follow_body(body, piece.data(), piece.size());
  }
  return taken;
}

static void check_body(const std::string &text, size_t step) {
  struct body whole, cut;
  const size_t len = body_length(text, text.size(), &whole);
  require(len <= text.size());
  require(body_length(text, step, &cut) == len);
  require(body_has_ended(&whole) == body_has_ended(&cut) &&
          body_is_malformed(&whole) == body_is_malformed(&cut));
  require(body_has_ended(&whole) || body_is_malformed(&whole) || len == text.size());
  require(!body_has_ended(&whole) || text.substr(len - 2, 2) == "\r\n");
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) return 0;
  const std::string text(reinterpret_cast<const char *>(data + 1), size - 1);
  check_headers(text);
  check_body(text, 1 + data[0]);
  return 0;
}
