/* Writing a reply: status line, header lines, chunks, and the replies that the server gives by itself. All of
 * it only queues bytes; the connection layer writes them in the next pass. */
#include "server/http_conn.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

static const struct {
  int code;
  const char *reason;
} reasons[] = {
    {100, "Continue"},
    {101, "Switching Protocols"},
    {102, "Processing"},
    {103, "Early Hints"},
    {200, "OK"},
    {201, "Created"},
    {202, "Accepted"},
    {203, "Non-Authoritative Information"},
    {204, "No Content"},
    {205, "Reset Content"},
    {206, "Partial Content"},
    {207, "Multi-Status"},
    {208, "Already Reported"},
    {226, "IM Used"},
    {300, "Multiple Choices"},
    {301, "Moved Permanently"},
    {302, "Found"},
    {303, "See Other"},
    {304, "Not Modified"},
    {305, "Use Proxy"},
    {306, "Switch Proxy"},
    {307, "Temporary Redirect"},
    {308, "Permanent Redirect"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {402, "Payment Required"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {406, "Not Acceptable"},
    {407, "Proxy Authentication Required"},
    {408, "Request Timeout"},
    {409, "Conflict"},
    {410, "Gone"},
    {411, "Length Required"},
    {412, "Precondition Failed"},
    {413, "Payload Too Large"},
    {414, "URI Too Long"},
    {415, "Unsupported Media Type"},
    {416, "Requested Range Not Satisfiable"},
    {417, "Expectation Failed"},
    {418, "I'm a teapot"},
    {421, "Misdirected Request"},
    {422, "Unprocessable Entity"},
    {423, "Locked"},
    {424, "Failed Dependency"},
    {425, "Too Early"},
    {426, "Upgrade Required"},
    {428, "Precondition Required"},
    {429, "Too Many Requests"},
    {431, "Request Header Fields Too Large"},
    {451, "Unavailable For Legal Reasons"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {502, "Bad Gateway"},
    {503, "Service Unavailable"},
    {504, "Gateway Timeout"},
    {505, "HTTP Version Not Supported"},
    {506, "Variant Also Negotiates"},
    {507, "Insufficient Storage"},
    {508, "Loop Detected"},
    {510, "Not Extended"},
    {511, "Network Authentication Required"},
};

const char *status_code_to_str(int status_code) {
  for (const auto &entry : reasons) {
    if (entry.code == status_code) return entry.reason;
  }
  return "Server Error";
}

/* --- Raw output ---------------------------------------------------------------------------------------- */

static struct ns_connection *socket_of(struct mg_connection *conn) {
  return connection_of(conn)->ns_conn;
}

size_t mg_write(struct mg_connection *conn, const void *data, int data_len) {
  ns_send(socket_of(conn), data, data_len);
  return socket_of(conn)->send_iobuf.len;
}

size_t mg_printf(struct mg_connection *conn, const char *fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  ns_vprintf(socket_of(conn), fmt, ap);
  va_end(ap);
  return socket_of(conn)->send_iobuf.len;
}

static void write_text(struct mg_connection *conn, const char *text) {
  mg_write(conn, text, static_cast<int>(strlen(text)));
}

/* --- Status line, header lines, chunks ----------------------------------------------------------------- */

void mg_send_status(struct mg_connection *conn, int status_code) {
  if (conn->status_code != 0) return;
  conn->status_code = status_code;
  mg_printf(conn, "HTTP/1.1 %d %s\r\n", status_code, status_code_to_str(status_code));
}

void mg_send_header(struct mg_connection *conn, const char *name, const char *value) {
  if (conn->status_code == 0) mg_send_status(conn, 200);
  mg_printf(conn, "%s: %s\r\n", name, value);
}

/* Ends the header block of a chunked reply, once. */
static void end_header_block(struct mg_connection *conn) {
  struct ns_connection *nc = socket_of(conn);
  if (nc->flags & CONN_HEADERS_SENT) return;
  mg_send_header(conn, "Transfer-Encoding", "chunked");
  write_text(conn, "\r\n");
  nc->flags |= CONN_HEADERS_SENT;
}

size_t mg_send_data(struct mg_connection *conn, const void *data, int data_len) {
  end_header_block(conn);
  if (data_len > 0) { /* an empty chunk would end the reply */
    mg_printf(conn, "%X\r\n", static_cast<unsigned>(data_len));
    mg_write(conn, data, data_len);
    write_text(conn, "\r\n");
  }
  return socket_of(conn)->send_iobuf.len;
}

size_t mg_printf_data(struct mg_connection *conn, const char *fmt, ...) {
  char stack[MG_DATA_BUFFER_SIZE];
  char *text = stack;
  va_list ap;
  va_start(ap, fmt);
  const int len = ns_avprintf(&text, sizeof(stack), fmt, ap);
  va_end(ap);
  const size_t queued = mg_send_data(conn, text, len);
  if (text != stack) free(text);
  return queued;
}

void write_terminating_chunk(struct connection *conn) {
  write_text(&conn->mg_conn, "0\r\n\r\n");
}

/* --- Replies of the server itself ---------------------------------------------------------------------- */

void print_uri(const char *uri, char *dst, size_t dst_size) {
  size_t n = 0;
  for (; *uri != '\0' && n + 4 <= dst_size; uri++) {
    const unsigned char c = static_cast<unsigned char>(*uri);
    if (c < ' ' || c == 0x7f) {
      snprintf(dst + n, 4, "%%%02X", c);
      n += 3;
    } else {
      dst[n++] = *uri;
    }
  }
  dst[n] = '\0';
}

/* The place that url_rewrites gives for an error code; false when it gives none. */
static bool error_location(const struct connection *conn, int code, struct vec *location) {
  const char *list = conn->server->config_options[URL_REWRITES];
  struct vec left;
  while ((list = next_option(list, &left, location)) != nullptr) {
    const int listed = atoi(left.ptr);
    if (listed > 0 && listed == code) return true;
  }
  return false;
}

/* In pieces, as mg_printf() ends a text of just 500 characters with a NUL byte. */
static void redirect_error(struct connection *conn, int code, const struct vec *location) {
  struct mg_connection *c = &conn->mg_conn;
  char uri[3 * MG_MAX_URI_SIZE];
  print_uri(c->uri == nullptr ? "" : c->uri, uri, sizeof(uri));
  c->status_code = 302;
  mg_printf(c, "HTTP/1.1 %d Moved\r\nLocation: ", c->status_code);
  mg_write(c, location->ptr, static_cast<int>(location->len));
  mg_printf(c, "?code=%d&orig_uri=", code);
  write_text(c, uri);
  write_text(c, "&query_string=");
  write_text(c, c->query_string == nullptr ? "" : c->query_string);
  write_text(c, "\r\n\r\n");
}

/* Writes an error reply. `header_lines` are further ones, each with its end. */
static void write_error(struct connection *conn, int code, const char *header_lines, const char *detail) {
  char body[MG_ERROR_BODY_SIZE + 1] = "";
  const bool has_body = code != 204 && (code < 300 || code > 399);
  if (has_body) snprintf(body, sizeof(body), "%d %s\n%s", code, status_code_to_str(code), detail);
  mg_printf(&conn->mg_conn, "HTTP/1.1 %d %s\r\nContent-Length: %d\r\nContent-Type: text/plain\r\n%s\r\n%s",
            code, status_code_to_str(code), static_cast<int>(strlen(body)), header_lines, body);
}

static void send_error(struct connection *conn, int code, const char *header_lines, const char *detail) {
  conn->mg_conn.status_code = code;
  struct vec location;
  if (call_user(conn, MG_HTTP_ERROR) == MG_TRUE) {
    close_local_endpoint(conn);
    return;
  }
  if (error_location(conn, code, &location)) {
    redirect_error(conn, code, &location);
  } else {
    write_error(conn, code, header_lines, detail);
  }
  close_local_endpoint(conn);
}

void send_http_error(struct connection *conn, int code, const char *fmt, ...) {
  char detail[MG_ERROR_BODY_SIZE + 1] = "";
  if (fmt != nullptr) {
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(detail, sizeof(detail), fmt, ap);
    va_end(ap);
  }
  send_error(conn, code, "", detail);
}

void send_range_error(struct connection *conn, int64_t file_size) {
  char line[64];
  snprintf(line, sizeof(line), "Content-Range: bytes */%ld\r\n", file_size);
  send_error(conn, 416, line, "");
}

void send_auth_challenge(struct connection *conn) {
  const char *domain = conn->server->config_options[AUTH_DOMAIN];
  conn->mg_conn.status_code = 401;
  mg_printf(&conn->mg_conn,
            "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Digest qop=\"auth\", realm=\"%s\", "
            "nonce=\"%lu\"\r\n\r\n",
            domain == nullptr ? "" : domain, static_cast<unsigned long>(time(nullptr)));
  close_local_endpoint(conn);
}

void send_options_reply(struct connection *conn) {
  conn->mg_conn.status_code = 200;
  write_text(&conn->mg_conn, "HTTP/1.1 200 OK\r\n"
                             "Allow: GET, POST, HEAD, CONNECT, PUT, DELETE, OPTIONS, PROPFIND, MKCOL\r\n"
                             "DAV: 1\r\n\r\n");
  close_local_endpoint(conn);
}
