/* Queuing output on a connection, raw and formatted. Nothing is written to a stream socket here: the bytes
 * leave in the next pass of the event loop (server/ns_mgr.cpp). */
#include "server/ns_conn.h"

#include <limits.h>
#include <stdio.h>
#include <stdlib.h>

/* The one way out of the layer above. */
static int ns_out(struct ns_connection *c, const void *buf, int len) {
  if (len <= 0) return 0;
  if (c->flags & CONN_UDP) {
    const ssize_t sent = sendto(c->sock, buf, static_cast<size_t>(len), 0, &c->sa.sa, sizeof(c->sa.sin));
    return sent < 0 ? 0 : static_cast<int>(sent);
  }
  return static_cast<int>(iobuf_append(&c->send_iobuf, buf, static_cast<size_t>(len)));
}

int ns_send(struct ns_connection *c, const void *buf, int len) {
  return ns_out(c, buf, len);
}

/* The formatter cannot tell how long the text would be: tries ever larger blocks. */
__attribute__((format(printf, 3, 0))) static int format_by_doubling(char **buf, size_t size, const char *fmt,
                                                                    va_list ap) {
  *buf = nullptr;
  while (size <= INT_MAX / 2) {
    size *= 2;
    free(*buf);
    *buf = static_cast<char *>(malloc(size));
    if (*buf == nullptr) return -1;
    va_list copy;
    va_copy(copy, ap);
    const int len = vsnprintf(*buf, size, fmt, copy);
    va_end(copy);
    if (len >= 0) return len;
  }
  free(*buf);
  *buf = nullptr;
  return -1;
}

int ns_avprintf(char **buf, size_t size, const char *fmt, va_list ap) {
  va_list copy;
  va_copy(copy, ap);
  const int len = vsnprintf(*buf, size, fmt, copy);
  va_end(copy);
  if (len < 0) return format_by_doubling(buf, size, fmt, ap);

  /* A text of exactly `size` characters stays as it was cut: its last place holds the terminator. */
  if (static_cast<size_t>(len) <= size) return len;
  *buf = static_cast<char *>(malloc(static_cast<size_t>(len) + 1));
  if (*buf == nullptr) return -1;
  va_copy(copy, ap);
  vsnprintf(*buf, static_cast<size_t>(len) + 1, fmt, copy);
  va_end(copy);
  return len;
}

int ns_vprintf(struct ns_connection *c, const char *fmt, va_list ap) {
  char stack[500];
  char *text = stack;
  const int len = ns_avprintf(&text, sizeof(stack), fmt, ap);
  ns_out(c, text, len);
  if (text != stack) free(text);
  return len;
}

int ns_printf(struct ns_connection *c, const char *fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  const int len = ns_vprintf(c, fmt, ap);
  va_end(ap);
  return len;
}
