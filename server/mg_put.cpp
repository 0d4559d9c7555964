#include "server/http_conn.h"

void handle_put(struct connection *conn, const struct file_target *) {
  send_http_error(conn, 405, nullptr);
}

void write_upload(struct connection *) {}

void release_upload(struct connection *) {}
