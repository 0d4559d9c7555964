/* The growable byte buffer of the connection layer. It grows to exactly what is needed, so a program that
 * queues a large reply in small pieces reserves the room first with iobuf_resize(). */
#include "server/ns_conn.h"

#include <assert.h>
#include <stdlib.h>
#include <string.h>

void iobuf_init(struct iobuf *io, size_t initial_size) {
  *io = {};
  iobuf_resize(io, initial_size);
}

void iobuf_free(struct iobuf *io) {
  if (io == nullptr) return;
  free(io->buf);
  iobuf_init(io, 0);
}

void iobuf_resize(struct iobuf *io, size_t new_size) {
  const bool grows = new_size > io->size;
  const bool shrinks = new_size < io->size && new_size >= io->len;
  if (!grows && !shrinks) return;
  if (new_size == 0) {
    free(io->buf); /* realloc() to nothing would leave it open whether a block remains */
    *io = {};
    return;
  }
  char *moved = static_cast<char *>(realloc(io->buf, new_size));
  if (moved == nullptr) return;
  io->buf = moved;
  io->size = new_size;
}

size_t iobuf_append(struct iobuf *io, const void *data, size_t n) {
  assert(io != NULL);
  assert(io->len <= io->size);
  if (n == 0 || n > SIZE_MAX - io->len) return 0;
  if (n > io->size - io->len) {
    iobuf_resize(io, io->len + n);
    if (n > io->size - io->len) return 0;
  }
  memcpy(io->buf + io->len, data, n);
  io->len += n;
  return n;
}

void iobuf_remove(struct iobuf *io, size_t n) {
  if (n == 0 || n > io->len) return;
  memmove(io->buf, io->buf + n, io->len - n);
  io->len -= n;
}
