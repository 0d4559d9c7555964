/* WebSocket (RFC 6455): the answer to an upgrade, frames in both directions, pings that keep a connection
 * alive. Fragments, pings and closing are the handler's business: it is given every frame as it came. */
#include "server/http_conn.h"
#include "server/mg_hash.h"

#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum {
  PING_AFTER_SECONDS = 5, /* of idleness */
  MAX_HEADER_SIZE = 10,   /* of a frame that is sent */
  LENGTH_16_BITS = 126,   /* in place of a length: it follows in two bytes, */
  LENGTH_64_BITS = 127,   /* or in eight */
  MASK_BIT = 0x80,
  FIN_BIT = 0x80,
};

/* --- The upgrade --------------------------------------------------------------------------------------- */

/* The value that proves that the key was understood (RFC 6455 section 4.2.2). */
static void print_accept(const char *key, char *out) {
  static const char guid[] = "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";
  size_t key_len = strlen(key);
  while (key_len > 0 && key[key_len - 1] == ' ') key_len--;

  struct SHA1Context context;
  unsigned char digest[SHA1_DIGEST_SIZE];
  SHA1Init(&context);
  SHA1Update(&context, key, key_len);
  SHA1Update(&context, guid, strlen(guid));
  SHA1Final(digest, &context);
  base64_encode(digest, sizeof(digest), out);
}

void answer_websocket_upgrade(struct connection *conn) {
  struct mg_connection *c = &conn->mg_conn;
  const char *key = mg_get_header(c, "Sec-WebSocket-Key");
  if (key == nullptr || mg_get_header(c, "Sec-WebSocket-Version") == nullptr) return;

  c->is_websocket = 1;
  if (call_user(conn, MG_WS_HANDSHAKE) == 0) {
    char accept[4 * ((SHA1_DIGEST_SIZE + 2) / 3) + 1];
    print_accept(key, accept);
    mg_printf(c,
              "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
              "Sec-WebSocket-Accept: %s\r\n\r\n",
              accept);
  }
  call_user(conn, MG_WS_CONNECT);
}

/* --- Frames from the client ---------------------------------------------------------------------------- */

/* Where the parts of a received frame lie. */
struct frame {
  size_t header_len; /* the mask included */
  size_t payload_len;
  bool masked; /* by the last four bytes of the header */
};

static uint32_t read_big_endian(const unsigned char *bytes, int count) {
  uint32_t value = 0;
  for (int i = 0; i < count; i++) value = value << 8 | bytes[i];
  return value;
}

/* Takes the header of the frame at the front of the buffer apart. False while the frame is not complete. */
static bool find_frame(const struct iobuf *io, struct frame *frame) {
  const auto *bytes = reinterpret_cast<const unsigned char *>(io->buf);
  if (io->len < 2) return false;
  const unsigned length = bytes[1] & ~MASK_BIT;
  const size_t length_end = length == LENGTH_64_BITS ? 10 : length == LENGTH_16_BITS ? 4 : 2;
  frame->masked = (bytes[1] & MASK_BIT) != 0;
  frame->header_len = length_end + (frame->masked ? 4 : 0);
  if (io->len < frame->header_len) return false;

  frame->payload_len = length;
  if (length == LENGTH_16_BITS) frame->payload_len = read_big_endian(bytes + 2, 2);
  if (length == LENGTH_64_BITS) frame->payload_len = read_big_endian(bytes + 6, 4); /* the low half alone */
  return io->len - frame->header_len >= frame->payload_len;
}

static void unmask(char *payload, size_t len, const char mask[4]) {
  for (size_t i = 0; i < len; i++) payload[i] = static_cast<char>(payload[i] ^ mask[i % 4]);
}

static void deliver_frame(struct connection *conn, const struct frame *frame) {
  struct mg_connection *c = &conn->mg_conn;
  char *bytes = conn->ns_conn->recv_iobuf.buf;
  char *payload = bytes + frame->header_len;
  if (frame->masked) unmask(payload, frame->payload_len, payload - 4);

  c->wsbits = static_cast<unsigned char>(bytes[0]);
  c->content = payload;
  c->content_len = frame->payload_len;
  if (call_user(conn, MG_REQUEST) == MG_FALSE) conn->ns_conn->flags |= CONN_FINISHED_SENDING;
  c->wsbits = 0;
}

/* Whether frames go both ways: neither has the end been marked, nor has the handler turned the connection to
 * something else. */
static bool is_open_websocket(const struct connection *conn) {
  const bool ending = (conn->ns_conn->flags & (CONN_FINISHED_SENDING | CONN_CLOSE_NOW)) != 0;
  return conn->mg_conn.is_websocket && conn->endpoint_type == EP_USER && !ending;
}

/* Whether the answers that are queued leave room for another. */
static bool has_room(const struct connection *conn) {
  return conn->ns_conn->send_iobuf.len <= MG_MAX_QUEUED_OUTPUT;
}

void deliver_websocket_frames(struct connection *conn) {
  struct iobuf *io = &conn->ns_conn->recv_iobuf;
  struct frame frame;
  while (is_open_websocket(conn) && has_room(conn) && find_frame(io, &frame)) {
    deliver_frame(conn, &frame);
    iobuf_remove(io, frame.header_len + frame.payload_len);
  }
  if (io->len == 0 || !is_open_websocket(conn)) iobuf_free(io);
  conn->mg_conn.content = nullptr; /* the buffer may move before the next event */
  conn->mg_conn.content_len = 0;
}

/* --- Frames to the client ------------------------------------------------------------------------------ */

/* Returns the header's length. */
static size_t print_frame_header(int opcode, size_t data_len, unsigned char header[MAX_HEADER_SIZE]) {
  header[0] = static_cast<unsigned char>(FIN_BIT | (opcode & 15));
  const size_t length_size = data_len < LENGTH_16_BITS ? 0 : data_len <= 65535 ? 2 : 8;
  header[1] = static_cast<unsigned char>(data_len);
  if (length_size == 2) header[1] = LENGTH_16_BITS;
  if (length_size == 8) header[1] = LENGTH_64_BITS;
  for (size_t i = 0; i < length_size; i++) {
    header[2 + i] = static_cast<unsigned char>(data_len >> (8 * (length_size - 1 - i)));
  }
  return 2 + length_size;
}

size_t mg_websocket_write(struct mg_connection *conn, int opcode, const void *data, size_t data_len) {
  struct ns_connection *nc = connection_of(conn)->ns_conn;
  unsigned char header[MAX_HEADER_SIZE];
  const size_t header_len = print_frame_header(opcode, data_len, header);
  if (data_len > INT_MAX - header_len) return nc->send_iobuf.len;

  /* In one piece, so that no half of a frame is queued when memory runs out, and a datagram holds it whole.
   */
  auto *frame = static_cast<char *>(malloc(header_len + data_len));
  if (frame == nullptr) return nc->send_iobuf.len;
  memcpy(frame, header, header_len);
  if (data_len > 0) memcpy(frame + header_len, data, data_len);
  ns_send(nc, frame, static_cast<int>(header_len + data_len));
  free(frame);
  return nc->send_iobuf.len;
}

size_t mg_websocket_printf(struct mg_connection *conn, int opcode, const char *fmt, ...) {
  char *text = nullptr;
  va_list ap;
  va_start(ap, fmt);
  const int len = vasprintf(&text, fmt, ap);
  va_end(ap);
  if (len < 0) return connection_of(conn)->ns_conn->send_iobuf.len;
  const size_t queued = mg_websocket_write(conn, opcode, text, static_cast<size_t>(len));
  free(text);
  return queued;
}

void keep_websocket_alive(struct connection *conn, time_t now) {
  const struct ns_connection *nc = conn->ns_conn;
  if (!is_open_websocket(conn) || now <= nc->last_io_time + PING_AFTER_SECONDS) return;
  /* What is queued already keeps the connection as busy as a ping would. */
  if (nc->send_iobuf.len == 0) mg_websocket_write(&conn->mg_conn, WEBSOCKET_OPCODE_PING, nullptr, 0);
}
