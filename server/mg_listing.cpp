#include "server/http_conn.h"

int scan_directory(struct connection *, const char *, const char *, struct dir_entry **) {
  return -1;
}

void free_directory(struct dir_entry *, int) {}

void append_url_encoded(char *, size_t, const char *) {}

void append_html_escaped(char *, size_t, const char *) {}

void send_directory_listing(struct connection *conn, const struct file_target *) {
  send_http_error(conn, 404, nullptr);
}
