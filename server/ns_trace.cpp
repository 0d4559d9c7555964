/* Delivery of events, and the traffic trace that records each of them in a file when it is switched on. */
#include "server/ns_internal.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

/* One row of up to 16 bytes: offset, the bytes in hexadecimal, the bytes as text. Returns its length. */
static int format_row(const unsigned char *bytes, int count, int offset, char *row, size_t row_size) {
  char text[17] = "";
  int n = snprintf(row, row_size, "%04x ", static_cast<unsigned>(offset));
  for (int i = 0; i < 16; i++) {
    char *place = row + n;
    const size_t room = row_size - static_cast<size_t>(n);
    if (i >= count) {
      n += snprintf(place, room, "   ");
      continue;
    }
    n += snprintf(place, room, " %02x", static_cast<unsigned>(bytes[i]));
    text[i] = bytes[i] < 32 || bytes[i] > 126 ? '.' : static_cast<char>(bytes[i]);
  }
  return n + snprintf(row + n, row_size - static_cast<size_t>(n), "  %s\n", text);
}

/* Appends as much of a text as fits; dst stays terminated. Returns the length that dst then has. */
static int append_text(char *dst, int dst_len, int n, const char *text, int text_len) {
  const int room = dst_len - 1 - n;
  if (room <= 0) return n;
  const int fits = text_len < room ? text_len : room;
  memcpy(dst + n, text, static_cast<size_t>(fits));
  dst[n + fits] = '\0';
  return n + fits;
}

int ns_hexdump(const void *buf, int len, char *dst, int dst_len) {
  const auto *bytes = static_cast<const unsigned char *>(buf);
  if (dst_len <= 0) return 0;
  dst[0] = '\0';
  int n = 0;
  for (int offset = 0; offset < len; offset += 16) {
    char row[100];
    const int count = len - offset < 16 ? len - offset : 16;
    const int row_len = format_row(bytes + offset, count, offset, row, sizeof(row));
    n = append_text(dst, dst_len, n, row, row_len);
  }
  return len > 0 ? append_text(dst, dst_len, n, "\n", 1) : n;
}

static const char *direction_mark(int event) {
  switch (event) {
  case NET_EV_RECV:
    return "<-";
  case NET_EV_SEND:
    return "->";
  case NET_EV_ACCEPT:
    return "<A";
  case NET_EV_CONNECT:
    return "C>";
  default:
    return "XX";
  }
}

/* The bytes that the event is about: the end of what was received, or the beginning of what was queued. */
static void dump_bytes(FILE *file, const struct ns_connection *c, int event, int count) {
  const size_t n = static_cast<size_t>(count);
  const struct iobuf *io = event == NET_EV_RECV ? &c->recv_iobuf : &c->send_iobuf;
  if (n > io->len) return; /* the bytes were lost for lack of memory */
  const char *bytes = event == NET_EV_RECV ? io->buf + io->len - n : io->buf;
  const size_t size = 5 * n + 100;
  char *dump = size > INT32_MAX ? nullptr : static_cast<char *>(malloc(size));
  if (dump == nullptr) return;
  ns_hexdump(bytes, count, dump, static_cast<int>(size));
  fputs(dump, file);
  free(dump);
}

static void trace(const struct ns_connection *c, int event, const void *event_data) {
  FILE *file = fopen(c->mgr->hexdump_file, "ae");
  if (file == nullptr) return;
  char local[60], remote[60];
  ns_sock_to_str(c->sock, local, sizeof(local), 3);
  ns_sock_to_str(c->sock, remote, sizeof(remote), 7);
  const bool counts = event == NET_EV_RECV || event == NET_EV_SEND;
  const int count = counts ? *static_cast<const int *>(event_data) : 0;
  fprintf(file, "%lu %p %s %s %s %d\n", static_cast<unsigned long>(time(nullptr)), c->user_data, local,
          direction_mark(event), remote, count);
  if (count > 0) dump_bytes(file, c, event, count);
  fclose(file);
}

void ns_call(struct ns_connection *c, int event, void *event_data) {
  if (c->mgr->hexdump_file != nullptr && event != NET_EV_POLL) trace(c, event, event_data);
  if (c->callback != nullptr) c->callback(c, event, event_data);
}
