#include "server/http_conn.h"

void open_cgi_endpoint(struct connection *conn, const struct file_target *) {
  send_http_error(conn, 404, nullptr);
}

void forward_to_cgi(struct connection *) {}

void release_cgi(struct connection *) {}
