/* See mg_proxy.h. Everything here reads bytes that came from outside, and is strict: what two readers could
 * understand in two ways is not passed on. */
#include "server/mg_proxy.h"

#include <string.h>
#include <strings.h>

/* --- Header lines -------------------------------------------------------------------------------------- */

void append_text(struct iobuf *out, const char *text) {
  iobuf_append(out, text, strlen(text));
}

/* A line of a message's head, taken apart. */
struct header_line {
  struct vec name;
  struct vec value; /* without blanks around it */
};

/* Takes the next line off *lines. False at their end, which is an empty line too. */
static bool next_line(struct vec *lines, struct vec *line) {
  return take_line(lines, line) && line->len > 0;
}

/* False when the line is malformed; the continuation of another (an obsolete form) counts as that. */
static bool split_line(struct vec line, struct header_line *header) {
  return split_header_line(line, &header->name, &header->value);
}

/* Takes the next entry off a comma-separated list, without blanks around it. False at its end. */
static bool next_entry(struct vec *list, struct vec *entry) {
  if (list->len == 0) return false;
  const void *comma = memchr(list->ptr, ',', list->len);
  const size_t len =
      comma == nullptr ? list->len : static_cast<size_t>(static_cast<const char *>(comma) - list->ptr);
  *entry = without_blanks({list->ptr, len});
  const size_t taken = len == list->len ? len : len + 1;
  *list = {list->ptr + taken, list->len - taken};
  return true;
}

static bool same_name(struct vec a, struct vec b) {
  return a.len == b.len && strncasecmp(a.ptr, b.ptr, a.len) == 0;
}

/* The names of lines that lines "Connection" say are for the next hop alone. */
struct nominations {
  struct vec names[16];
  size_t count;
};

static bool is_nominated(const struct nominations *nominations, struct vec name) {
  for (size_t i = 0; i < nominations->count; i++) {
    if (same_name(nominations->names[i], name)) return true;
  }
  return false;
}

/* False when there are more than anybody needs. */
static bool nominate(struct vec list, struct nominations *nominations) {
  struct vec entry;
  while (next_entry(&list, &entry)) {
    if (nominations->count == sizeof(nominations->names) / sizeof(nominations->names[0])) return false;
    nominations->names[nominations->count++] = entry;
  }
  return true;
}

/* Collects them. False when a line is malformed. */
static bool find_nominations(struct vec lines, struct nominations *nominations) {
  nominations->count = 0;
  struct vec line;
  struct header_line header;
  while (next_line(&lines, &line)) {
    if (!split_line(line, &header)) return false;
    if (is_word(header.name, "Connection") && !nominate(header.value, nominations)) return false;
  }
  return true;
}

static bool stands_in(struct vec name, const char *const names[]) {
  for (; *names != nullptr; names++) {
    if (is_word(name, *names)) return true;
  }
  return false;
}

/* Reads a length. False when it is not one, or another line has told another. */
static bool take_length(struct vec value, struct framing *framing) {
  uint64_t length = 0;
  if (value.len == 0 || value.len > 18) return false; /* 18 digits cannot overflow */
  for (size_t i = 0; i < value.len; i++) {
    if (value.ptr[i] < '0' || value.ptr[i] > '9') return false;
    length = length * 10 + static_cast<uint64_t>(value.ptr[i] - '0');
  }
  if (framing->has_length && framing->length != length) return false;
  framing->has_length = true;
  framing->length = length;
  return true;
}

/* False when there is a second line of this kind. */
static bool take_coding(struct vec value, struct framing *framing) {
  if (framing->has_coding) return false;
  framing->has_coding = true;
  struct vec coding;
  while (next_entry(&value, &coding)) framing->chunked = is_word(coding, "chunked");
  return true;
}

static void append_line(struct iobuf *out, struct vec line) {
  iobuf_append(out, line.ptr, line.len);
  append_text(out, "\r\n");
}

bool pass_headers_on(struct vec lines, const char *const also_dropped[], struct iobuf *out,
                     struct framing *framing) {
  static const char *const next_hop_only[] = {
      "Keep-Alive", "Proxy-Connection", "Proxy-Authenticate", "Proxy-Authorization", "TE", "Upgrade",
      nullptr};
  *framing = {};
  struct nominations nominations;
  if (!find_nominations(lines, &nominations)) return false;
  struct vec line;
  struct header_line header;
  while (next_line(&lines, &line) && split_line(line, &header)) {
    if (is_word(header.name, "Content-Length")) {
      const bool repeated = framing->has_length;
      if (!take_length(header.value, framing)) return false;
      if (!repeated) append_line(out, line);
    } else if (is_word(header.name, "Transfer-Encoding")) {
      if (!take_coding(header.value, framing)) return false;
      append_line(out, line);
    } else if (!is_word(header.name, "Connection") && !stands_in(header.name, next_hop_only) &&
               !stands_in(header.name, also_dropped) && !is_nominated(&nominations, header.name)) {
      append_line(out, line);
    }
  }
  framing->closes = is_nominated(&nominations, {"close", 5});
  return !(framing->has_length && framing->has_coding);
}

/* --- Bodies -------------------------------------------------------------------------------------------- */

static int hex_value(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

/* The size's digits; what follows them is an extension or the line's end. */
static enum chunk_place after_size_char(struct body *body, char c) {
  const int digit = hex_value(c);
  if (digit >= 0) {
    body->left = body->left << 4 | static_cast<unsigned>(digit);
    return ++body->digits > 15 ? CHUNKS_MALFORMED : CHUNK_SIZE;
  }
  if (body->digits == 0) return CHUNKS_MALFORMED;
  if (c == ';' || c == ' ' || c == '\t') return CHUNK_EXTENSION;
  return c == '\r' ? CHUNK_SIZE_END : CHUNKS_MALFORMED;
}

/* In a line whose content does not matter. */
static enum chunk_place after_line_char(char c, enum chunk_place here, enum chunk_place end) {
  if (c == '\n') return CHUNKS_MALFORMED; /* alone it is no line's end */
  return c == '\r' ? end : here;
}

static enum chunk_place after_chunk_char(struct body *body, char c) {
  switch (body->place) {
  case CHUNK_SIZE:
    return after_size_char(body, c);
  case CHUNK_EXTENSION:
    return after_line_char(c, CHUNK_EXTENSION, CHUNK_SIZE_END);
  case CHUNK_SIZE_END:
    if (c != '\n') return CHUNKS_MALFORMED;
    body->digits = 0;
    return body->left == 0 ? TRAILER_START : CHUNK_DATA;
  case CHUNK_DATA_CR:
    return c == '\r' ? CHUNK_DATA_END : CHUNKS_MALFORMED;
  case CHUNK_DATA_END:
    return c == '\n' ? CHUNK_SIZE : CHUNKS_MALFORMED;
  case TRAILER_START:
    return after_line_char(c, TRAILER_LINE, LAST_LINE_END);
  case TRAILER_LINE:
    return after_line_char(c, TRAILER_LINE, TRAILER_LINE_END);
  case TRAILER_LINE_END:
    return c == '\n' ? TRAILER_START : CHUNKS_MALFORMED;
  case LAST_LINE_END:
    return c == '\n' ? CHUNKS_ENDED : CHUNKS_MALFORMED;
  case CHUNK_DATA:
  case CHUNKS_ENDED:
  case CHUNKS_MALFORMED:
    break;
  }
  return body->place;
}

static size_t take_left(struct body *body, size_t len) {
  const size_t n = len < body->left ? len : static_cast<size_t>(body->left);
  body->left -= n;
  return n;
}

static size_t follow_chunks(struct body *body, const char *bytes, size_t len) {
  size_t n = 0;
  while (n < len && body->place != CHUNKS_ENDED && body->place != CHUNKS_MALFORMED) {
    if (body->place == CHUNK_DATA) {
      n += take_left(body, len - n);
      if (body->left == 0) body->place = CHUNK_DATA_CR;
    } else {
      body->place = after_chunk_char(body, bytes[n]);
      if (body->place != CHUNKS_MALFORMED) n++;
    }
  }
  return n;
}

size_t follow_body(struct body *body, const char *bytes, size_t len) {
  if (body->kind == BODY_TO_CLOSE) return len;
  return body->kind == BODY_CHUNKED ? follow_chunks(body, bytes, len) : take_left(body, len);
}

bool body_has_ended(const struct body *body) {
  if (body->kind == BODY_TO_CLOSE) return false;
  return body->kind == BODY_CHUNKED ? body->place == CHUNKS_ENDED : body->left == 0;
}

bool body_is_malformed(const struct body *body) {
  return body->kind == BODY_CHUNKED && body->place == CHUNKS_MALFORMED;
}
