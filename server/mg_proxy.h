/* What the forward proxy must know of the messages that it passes on: which header lines go on, and where a
 * body ends (RFC 9110 section 7.6.1, RFC 9112 sections 6 and 7). Used by mg_proxy.cpp alone. */
#ifndef KESTREL_SERVER_MG_PROXY_H
#define KESTREL_SERVER_MG_PROXY_H

#include "server/http_conn.h"

/* --- Header lines (mg_proxy_message.cpp) --------------------------------------------------------------- */

/* What the header lines of a message say of its body. */
struct framing {
  bool has_length;
  uint64_t length; /* Content-Length */
  bool has_coding; /* there is a Transfer-Encoding */
  bool chunked;    /* its last coding is chunked */
  bool closes;     /* the sender closes its connection after the message */
};

/* Appends to `out` those of the header lines that are meant for more than the next hop. `also_dropped` names
 * further lines that do not go on, ended by null. False when a line is malformed, or the lines contradict
 * each other on where the body ends. */
bool pass_headers_on(struct vec lines, const char *const also_dropped[], struct iobuf *out, struct framing *);
/* Appends text; the buffer is left as it is when memory is exhausted. */
void append_text(struct iobuf *out, const char *text);

/* --- Bodies (mg_proxy_message.cpp) --------------------------------------------------------------------- */

enum body_kind { BODY_OF_LENGTH, BODY_CHUNKED, BODY_TO_CLOSE };

/* Where in a chunked body the next byte stands. */
enum chunk_place {
  CHUNK_SIZE,
  CHUNK_EXTENSION,
  CHUNK_SIZE_END,
  CHUNK_DATA,
  CHUNK_DATA_CR,
  CHUNK_DATA_END,
  TRAILER_START,
  TRAILER_LINE,
  TRAILER_LINE_END,
  LAST_LINE_END,
  CHUNKS_ENDED,
  CHUNKS_MALFORMED,
};

/* Follows a body as it passes. All zeros: an empty body. */
struct body {
  enum body_kind kind;
  uint64_t left; /* bytes to come: of the body, or of the chunk */
  int digits;    /* of the chunk's size */
  enum chunk_place place;
};

/* Returns how many of the bytes, which follow on what was given before, belong to the body. */
size_t follow_body(struct body *, const char *bytes, size_t len);
bool body_has_ended(const struct body *);
bool body_is_malformed(const struct body *);

#endif
