#include "server/http_conn.h"

void serve_file_request(struct connection *conn) {
  send_http_error(conn, 404, nullptr);
}
