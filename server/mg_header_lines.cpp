/* Header lines of messages that are taken apart where they lie: replies of proxied servers, output of
 * programs. */
#include "server/http_conn.h"

#include <string.h>
#include <strings.h>

bool take_line(struct vec *text, struct vec *line) {
  const void *feed = text->len == 0 ? nullptr : memchr(text->ptr, '\n', text->len);
  if (feed == nullptr) return false;
  const size_t len = static_cast<size_t>(static_cast<const char *>(feed) - text->ptr);
  *line = {text->ptr, len};
  if (len > 0 && line->ptr[len - 1] == '\r') line->len--;
  *text = {text->ptr + len + 1, text->len - len - 1};
  return true;
}

static bool is_token_char(char c) {
  const bool alphanumeric = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  return alphanumeric || (c != '\0' && strchr("!#$%&'*+-.^_`|~", c) != nullptr);
}

static bool is_blank(char c) {
  return c == ' ' || c == '\t';
}

struct vec without_blanks(struct vec text) {
  while (text.len > 0 && is_blank(text.ptr[0])) text = {text.ptr + 1, text.len - 1};
  while (text.len > 0 && is_blank(text.ptr[text.len - 1])) text.len--;
  return text;
}

bool split_header_line(struct vec line, struct vec *name, struct vec *value) {
  size_t len = 0;
  while (len < line.len && is_token_char(line.ptr[len])) len++;
  if (len == 0 || len == line.len || line.ptr[len] != ':') return false;
  *name = {line.ptr, len};
  *value = without_blanks({line.ptr + len + 1, line.len - len - 1});
  return true;
}

bool is_word(struct vec text, const char *word) {
  return text.len == strlen(word) && strncasecmp(text.ptr, word, text.len) == 0;
}
