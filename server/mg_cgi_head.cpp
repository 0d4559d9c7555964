/* Reading the head of a CGI program's output (RFC 3875 section 6): header lines, each ended by "\n" or
 * "\r\n", and an empty line. */
#include "server/http_conn.h"

#include <ctype.h>
#include <string.h>

static bool is_valid_value(const struct vec *value) {
  for (size_t i = 0; i < value->len; i++) {
    const auto c = static_cast<unsigned char>(value->ptr[i]);
    if ((c < ' ' && c != '\t') || c == 0x7f) return false;
  }
  return true;
}

bool next_cgi_header(struct vec *rest, struct vec *name, struct vec *value) {
  struct vec line;
  return take_line(rest, &line) && split_header_line(line, name, value) && is_valid_value(value);
}

/* Reads a value such as "404 Not Found" or "404". */
static bool read_status(const struct vec *value, struct cgi_head *head) {
  if (value->len < 3 || (value->len > 3 && value->ptr[3] != ' ')) return false;
  int status = 0;
  for (int i = 0; i < 3; i++) {
    if (!isdigit(static_cast<unsigned char>(value->ptr[i]))) return false;
    status = 10 * status + value->ptr[i] - '0';
  }
  head->status = status;
  head->reason = without_blanks({value->ptr + 3, value->len - 3});
  return status >= 200 && status <= 599;
}

/* Length of the header lines in front of the first empty line; -1 when there is none. */
static long lines_length(const char *buf, size_t len) {
  struct vec rest = {buf, len}, line;
  while (take_line(&rest, &line)) {
    if (line.len == 0) return line.ptr - buf;
  }
  return -1;
}

static bool read_lines(struct cgi_head *head) {
  struct vec rest = head->lines, name, value;
  bool has_status = false, has_location = false;
  while (rest.len > 0) {
    if (!next_cgi_header(&rest, &name, &value)) return false;
    if (is_word(name, "Location")) has_location = true;
    if (is_word(name, "Status") && !has_status) {
      has_status = true;
      if (!read_status(&value, head)) return false;
    }
  }
  if (!has_status) head->status = has_location ? 302 : 200;
  return head->lines.len > 0;
}

enum cgi_head_state parse_cgi_head(const char *buf, size_t len, struct cgi_head *head) {
  *head = {};
  const long lines = len == 0 ? -1 : lines_length(buf, len);
  if (lines < 0 || lines > CGI_MAX_HEAD) return len > CGI_MAX_HEAD ? CGI_HEAD_MALFORMED : CGI_HEAD_INCOMPLETE;
  head->lines = {buf, static_cast<size_t>(lines)};
  head->len = static_cast<size_t>(lines) + (buf[lines] == '\r' ? 2 : 1);
  return read_lines(head) ? CGI_HEAD_COMPLETE : CGI_HEAD_MALFORMED;
}
