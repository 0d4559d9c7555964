/* Reading the head of a CGI program's output (RFC 3875 section 6): header lines, each ended by "\n" or
 * "\r\n", and an empty line. */
#include "server/http_conn.h"

#include <ctype.h>
#include <string.h>
#include <strings.h>

/* Takes the first line off a head, without its end. False when there is no whole line. */
static bool take_line(struct vec *rest, struct vec *line) {
  const auto *end = static_cast<const char *>(memchr(rest->ptr, '\n', rest->len));
  if (end == nullptr) return false;
  line->ptr = rest->ptr;
  line->len = static_cast<size_t>(end - rest->ptr);
  rest->len -= line->len + 1;
  rest->ptr = end + 1;
  if (line->len > 0 && line->ptr[line->len - 1] == '\r') line->len--;
  return true;
}

static bool may_stand_in_name(char c) {
  return isalnum(static_cast<unsigned char>(c)) || (c != '\0' && strchr("!#$%&'*+-.^_`|~", c) != nullptr);
}

static bool is_valid_value(const struct vec *value) {
  for (size_t i = 0; i < value->len; i++) {
    const auto c = static_cast<unsigned char>(value->ptr[i]);
    if ((c < ' ' && c != '\t') || c == 0x7f) return false;
  }
  return true;
}

static struct vec trimmed(struct vec text) {
  while (text.len > 0 && (text.ptr[0] == ' ' || text.ptr[0] == '\t')) text.ptr++, text.len--;
  while (text.len > 0 && (text.ptr[text.len - 1] == ' ' || text.ptr[text.len - 1] == '\t')) text.len--;
  return text;
}

bool next_cgi_header(struct vec *rest, struct vec *name, struct vec *value) {
  struct vec line;
  if (!take_line(rest, &line)) return false;
  size_t len = 0;
  while (len < line.len && may_stand_in_name(line.ptr[len])) len++;
  if (len == 0 || len == line.len || line.ptr[len] != ':') return false;
  *name = {line.ptr, len};
  *value = trimmed({line.ptr + len + 1, line.len - len - 1});
  return is_valid_value(value);
}

bool is_cgi_header(const struct vec *name, const char *wanted) {
  return name->len == strlen(wanted) && strncasecmp(name->ptr, wanted, name->len) == 0;
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
  head->reason = trimmed({value->ptr + 3, value->len - 3});
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
    if (is_cgi_header(&name, "Location")) has_location = true;
    if (is_cgi_header(&name, "Status") && !has_status) {
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
