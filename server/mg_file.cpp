#include "server/http_conn.h"

void open_file_endpoint(struct connection *conn, const char *, const struct stat *, const char *) {
  send_http_error(conn, 404, nullptr);
}

void transfer_file_data(struct connection *) {}

void mg_send_file(struct mg_connection *conn, const char *, const char *) {
  send_http_error(connection_of(conn), 404, nullptr);
}

void print_etag(const struct stat *, char *out) {
  out[0] = 0;
}
