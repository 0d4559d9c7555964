/* Fuzzes the frames of a WebSocket: however the bytes are cut the same frames come out, nothing outside of
 * the buffer is touched, and what is sent is understood by the reader. The first input byte chooses the cut.
 */
#include "server/http_conn.h"

#include <stdlib.h>
#include <string.h>
#include <string>
#include <vector>

static void require(bool condition) {
  if (!condition) abort();
}

struct frame {
  int wsbits;
  std::string payload;
  bool operator==(const frame &) const = default;
};

static std::vector<frame> frames;

/* A payload that begins with "q" ends the connection. */
static int note_frame(struct mg_connection *conn, enum mg_event event) {
  if (event != MG_REQUEST) return 0;
  frames.push_back({conn->wsbits, std::string(conn->content, conn->content_len)});
  return conn->content_len > 0 && conn->content[0] == 'q' ? MG_FALSE : MG_TRUE;
}

/* A connection that has been upgraded, without a socket. */
struct upgraded {
  upgraded() {
    server.event_handler = note_frame;
    conn.server = &server;
    conn.ns_conn = &nc;
    conn.endpoint_type = EP_USER;
    conn.mg_conn.is_websocket = 1;
  }
  ~upgraded() {
    iobuf_free(&nc.recv_iobuf);
    iobuf_free(&nc.send_iobuf);
  }
  upgraded(const upgraded &) = delete;
  upgraded &operator=(const upgraded &) = delete;

  void receive(const char *bytes, size_t len) {
    iobuf_append(&nc.recv_iobuf, bytes, len);
    deliver_websocket_frames(&conn);
    require(conn.mg_conn.content == nullptr && conn.mg_conn.content_len == 0 && conn.mg_conn.wsbits == 0);
    require((nc.flags & CONN_FINISHED_SENDING) == 0 || nc.recv_iobuf.len == 0);
  }
  struct mg_server server = {};
  struct ns_connection nc = {};
  struct connection conn = {};
};

static std::vector<frame> frames_of(const char *bytes, size_t len, size_t step) {
  upgraded socket;
  frames.clear();
  for (size_t at = 0; at < len; at += step) socket.receive(bytes + at, len - at < step ? len - at : step);
  return frames;
}

/* What mg_websocket_write() makes of a payload is one frame that holds it. */
static void check_written(int opcode, const char *payload, size_t len) {
  upgraded socket;
  mg_websocket_write(&socket.conn.mg_conn, opcode, payload, len);
  const std::vector<frame> read = frames_of(socket.nc.send_iobuf.buf, socket.nc.send_iobuf.len, SIZE_MAX);
  require(read == std::vector<frame>{{0x80 | (opcode & 15), std::string(payload, len)}});
}

/* A masked frame of the payload's first bytes is read as them. */
static void check_masked(const char *payload, size_t len) {
  static const char mask[4] = {'\x01', '\x80', '\x7f', '\xff'};
  const std::string expected(payload, len < 125 ? len : 125);
  std::string bytes = {'\x82', static_cast<char>(0x80 | expected.size())};
  bytes.append(mask, sizeof(mask));
  for (size_t i = 0; i < expected.size(); i++) bytes += static_cast<char>(expected[i] ^ mask[i & 3]);
  require(frames_of(bytes.data(), bytes.size(), 3) == std::vector<frame>{{0x82, expected}});
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) return 0;
  const char *bytes = reinterpret_cast<const char *>(data + 1);
  const size_t len = size - 1;
  const std::vector<frame> at_once = frames_of(bytes, len, len);
  require(frames_of(bytes, len, 1 + data[0]) == at_once);
  size_t payloads = 0;
  for (const frame &one : at_once) payloads += 2 + one.payload.size();
  require(payloads <= len);
  check_written(data[0], bytes, len);
  check_masked(bytes, len);
  return 0;
}
