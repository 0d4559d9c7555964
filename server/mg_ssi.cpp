#include "server/http_conn.h"

void send_ssi_file(struct connection *conn, const struct file_target *) {
  send_http_error(conn, 404, nullptr);
}
