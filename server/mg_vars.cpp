/* Reading values out of a request: URL decoding, request variables, header parameters and multipart bodies.
 * Everything here reads bytes that came from outside. */
#include "server/http_conn.h"

#include <ctype.h>
#include <string.h>
#include <strings.h>

static int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

/* dst may be src itself: the decoded text never runs ahead of the encoded one. */
int mg_url_decode(const char *src, size_t src_len, char *dst, size_t dst_len, int is_form_url_encoded) {
  if (dst_len == 0) return -1;
  size_t i = 0, j = 0;
  for (; i < src_len && j < dst_len - 1; i++, j++) {
    const bool escape =
        src[i] == '%' && src_len - i > 2 && hex_digit(src[i + 1]) >= 0 && hex_digit(src[i + 2]) >= 0;
    if (escape) {
      dst[j] = static_cast<char>(hex_digit(src[i + 1]) << 4 | hex_digit(src[i + 2]));
      i += 2;
    } else {
      dst[j] = is_form_url_encoded && src[i] == '+' ? ' ' : src[i];
    }
  }
  dst[j] = '\0';
  return i >= src_len ? static_cast<int>(j) : -1;
}

/* Looks for the variable in one buffer; results as mg_get_var(). */
static int get_var(const char *data, size_t data_len, const char *name, char *dst, size_t dst_len) {
  if (dst == nullptr || dst_len == 0) return -2;
  dst[0] = '\0';
  if (data == nullptr || name == nullptr || name[0] == '\0') return -1;

  const size_t name_len = strlen(name);
  const char *end = data + data_len;
  for (const char *p = data; static_cast<size_t>(end - p) > name_len;) {
    const char *amp = static_cast<const char *>(memchr(p, '&', static_cast<size_t>(end - p)));
    if (p[name_len] == '=' && strncasecmp(p, name, name_len) == 0) {
      const char *value = p + name_len + 1;
      /* The name itself may hold a "&": the value then ends at the first one after it. */
      if (amp != nullptr && amp < value) {
        amp = static_cast<const char *>(memchr(value, '&', static_cast<size_t>(end - value)));
      }
      const char *value_end = amp == nullptr ? end : amp;
      const int len = mg_url_decode(value, static_cast<size_t>(value_end - value), dst, dst_len, 1);
      return len == -1 ? -2 : len;
    }
    if (amp == nullptr) break;
    p = amp + 1;
  }
  return -1;
}

int mg_get_var(const struct mg_connection *conn, const char *name, char *dst, size_t dst_len) {
  const char *query = conn->query_string;
  const int len = get_var(query, query == nullptr ? 0 : strlen(query), name, dst, dst_len);
  if (len >= 0) return len;
  return get_var(conn->content, conn->content_len, name, dst, dst_len);
}

const char *mg_get_header(const struct mg_connection *conn, const char *name) {
  for (int i = 0; i < conn->num_headers; i++) {
    if (strcasecmp(conn->http_headers[i].name, name) == 0) return conn->http_headers[i].value;
  }
  return nullptr;
}

/* --- Parameters of a header value ---------------------------------------------------------------------- */

static bool separates_parameters(char c) {
  return c == ' ' || c == ',' || c == ';';
}

/* The place right after `var=` in the text, null when it has no such parameter. A quoted value cannot pass
 * for a parameter: what stands between double quotes is skipped. */
static const char *find_parameter(const char *text, const char *end, const char *var) {
  const size_t var_len = strlen(var);
  bool quoted = false;
  for (const char *p = text; p < end; p++) {
    if (quoted && *p == '\\' && p + 1 < end) {
      p++;
    } else if (*p == '"') {
      quoted = !quoted;
    } else if (!quoted && (p == text || separates_parameters(p[-1])) &&
               static_cast<size_t>(end - p) > var_len && p[var_len] == '=' && memcmp(p, var, var_len) == 0) {
      return p + var_len + 1;
    }
  }
  return nullptr;
}

/* mg_parse_header() over a text that need not be terminated. */
static int parse_parameter(const char *text, size_t text_len, const char *var, char *buf, size_t buf_size) {
  if (buf == nullptr || buf_size == 0) return -1;
  buf[0] = '\0';
  if (text == nullptr || var == nullptr || var[0] == '\0') return 0;
  const char *end = text + text_len;
  const char *p = find_parameter(text, end, var);
  if (p == nullptr) return 0;

  const bool quoted = p < end && *p == '"';
  if (quoted) p++;
  size_t len = 0;
  for (; p < end && (quoted ? *p != '"' : !separates_parameters(*p)); p++) {
    if (quoted && *p == '\\' && p + 1 < end && p[1] == '"') p++;
    if (len + 1 >= buf_size) {
      buf[0] = '\0';
      return -1;
    }
    buf[len++] = *p;
  }
  buf[len] = '\0';
  return static_cast<int>(len);
}

int mg_parse_header(const char *header_value, const char *var, char *buf, size_t buf_size) {
  const size_t len = header_value == nullptr ? 0 : strlen(header_value);
  return parse_parameter(header_value, len, var, buf, buf_size);
}

/* --- Multipart bodies ---------------------------------------------------------------------------------- */

/* Length of the first line with its line feed; 0 when it has none. */
static size_t line_length(const char *buf, size_t len) {
  const char *lf = static_cast<const char *>(memchr(buf, '\n', len));
  return lf == nullptr ? 0 : static_cast<size_t>(lf - buf) + 1;
}

static size_t without_line_end(const char *line, size_t len) {
  while (len > 0 && (line[len - 1] == '\n' || line[len - 1] == '\r')) len--;
  return len;
}

/* Reads "name" and "filename" from the Content-Disposition line among a part's header lines. */
static void read_disposition(const char *lines, size_t len, char *var_name, int var_name_len, char *file_name,
                             int file_name_len) {
  static const char disposition[] = "Content-Disposition:";
  const size_t word = sizeof(disposition) - 1;
  for (size_t line; (line = line_length(lines, len)) > 0; lines += line, len -= line) {
    if (line <= word || strncasecmp(lines, disposition, word) != 0) continue;
    const char *value = lines + word;
    const size_t value_len = without_line_end(value, line - word);
    parse_parameter(value, value_len, "name", var_name, static_cast<size_t>(var_name_len));
    parse_parameter(value, value_len, "filename", file_name, static_cast<size_t>(file_name_len));
  }
}

/* Where the boundary stands next at or after `from`; `len` when nowhere. */
static size_t find_boundary(const char *buf, size_t len, size_t from, size_t boundary_len) {
  const void *hit = memmem(buf + from, len - from, buf, boundary_len);
  return hit == nullptr ? len : static_cast<size_t>(static_cast<const char *>(hit) - buf);
}

int mg_parse_multipart(const char *buf, int buf_len, char *var_name, int var_name_len, char *file_name,
                       int file_name_len, const char **data, int *data_len) {
  if (var_name != nullptr && var_name_len > 0) var_name[0] = '\0';
  if (file_name != nullptr && file_name_len > 0) file_name[0] = '\0';
  if (buf == nullptr || buf_len <= 0) return 0;
  const size_t len = static_cast<size_t>(buf_len);
  const int head_len = get_request_len(buf, buf_len);
  if (head_len <= 0) return 0;

  const size_t head = static_cast<size_t>(head_len);
  const size_t first_line = line_length(buf, head);
  const size_t boundary_len = without_line_end(buf, first_line);
  if (boundary_len < 3 || buf[0] != '-' || buf[1] != '-') return 0;
  read_disposition(buf + first_line, head - first_line, var_name, var_name_len > 0 ? var_name_len : 0,
                   file_name, file_name_len > 0 ? file_name_len : 0);

  const size_t next = find_boundary(buf, len, head, boundary_len);
  if (next == len) return 0;
  size_t part_end = next; /* the line end before a boundary belongs to the boundary */
  if (part_end > head && buf[part_end - 1] == '\n') part_end--;
  if (part_end > head && buf[part_end - 1] == '\r') part_end--;
  if (data != nullptr) *data = buf + head;
  if (data_len != nullptr) *data_len = static_cast<int>(part_end - head);
  return static_cast<int>(next);
}
