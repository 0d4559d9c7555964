#include "server/http_conn.h"

void handle_propfind(struct connection *conn, const struct file_target *) {
  send_http_error(conn, 405, nullptr);
}

void handle_mkcol(struct connection *conn, const struct file_target *) {
  send_http_error(conn, 405, nullptr);
}

void handle_delete(struct connection *conn, const struct file_target *) {
  send_http_error(conn, 405, nullptr);
}
