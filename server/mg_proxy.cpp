#include "server/http_conn.h"

void open_proxy_endpoint(struct connection *conn) {
  send_http_error(conn, 405, nullptr);
}

void forward_to_proxied_server(struct connection *) {}

void release_proxied_server(struct connection *) {}
