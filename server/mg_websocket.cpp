#include "server/http_conn.h"

void answer_websocket_upgrade(struct connection *) {}

void deliver_websocket_frames(struct connection *) {}

void keep_websocket_alive(struct connection *, time_t) {}

size_t mg_websocket_write(struct mg_connection *, int, const void *, size_t) {
  return 0;
}

size_t mg_websocket_printf(struct mg_connection *, int, const char *, ...) {
  return 0;
}
