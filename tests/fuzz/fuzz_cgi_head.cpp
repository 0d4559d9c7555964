/* Fuzzes the reading of what a CGI program's output begins with. What is read must lie in the output, be
 * clean enough for a reply, and not depend on how much has come behind it. */
#include "server/http_conn.h"

#include <stdlib.h>
#include <string.h>

static void require(bool condition) {
  if (!condition) abort();
}

static void check_piece(const struct vec &piece, const char *buf, size_t len) {
  if (piece.len == 0) return;
  require(piece.ptr >= buf && piece.ptr + piece.len <= buf + len);
  for (size_t i = 0; i < piece.len; i++) {
    const auto c = static_cast<unsigned char>(piece.ptr[i]);
    require(c == '\t' || (c >= ' ' && c != 0x7f));
  }
}

static void check_complete(const struct cgi_head &head, const char *buf, size_t len) {
  require(head.len <= len && head.lines.len > 0 && head.lines.len < head.len);
  require(buf[head.len - 1] == '\n' && buf[head.lines.len - 1] == '\n');
  require(head.status >= 200 && head.status <= 599);
  check_piece(head.reason, buf, head.lines.len);
  struct vec rest = head.lines, name, value;
  while (rest.len > 0) {
    require(next_cgi_header(&rest, &name, &value));
    require(name.len > 0 && memchr(name.ptr, ' ', name.len) == nullptr);
    check_piece(name, buf, head.lines.len);
    check_piece(value, buf, head.lines.len);
  }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const char *bytes = reinterpret_cast<const char *>(data);
  struct cgi_head head, shorter;
  const enum cgi_head_state state = parse_cgi_head(bytes, size, &head);
  require(state != CGI_HEAD_INCOMPLETE || size <= CGI_MAX_HEAD);
  if (state != CGI_HEAD_COMPLETE) return 0;
  check_complete(head, bytes, size);
  require(parse_cgi_head(bytes, head.len, &shorter) == CGI_HEAD_COMPLETE);
  require(shorter.len == head.len && shorter.status == head.status);
  require(parse_cgi_head(bytes, head.lines.len, &shorter) == CGI_HEAD_INCOMPLETE);
  return 0;
}
