/* The forward proxy: tunnels (CONNECT) and requests whose URI is absolute. Its socket to the other server has
 * a callback of its own, and user_data points to the record of the client, which it serves until either is
 * gone.
 *
 * A client's connection carries one request to another server and is closed after the reply: what a client
 * sends behind its request is not for that server, so it is dropped. Each side is read only as fast as the
 * other one takes what was read. */
#include "server/mg_proxy.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

enum {
  HTTP_PORT = 80,
  MAX_HOST_SIZE = 200,        /* what ns_connect() takes, with the terminator */
  MAX_REPLY_HEAD = 64 * 1024, /* bytes of a reply without a complete head before it counts as malformed */
};

/* How far a proxied request has been passed on. */
struct proxied {
  bool tunnel;      /* bytes pass both ways as they are; what follows does not matter then */
  bool bodiless;    /* the reply to this request (HEAD) has no body */
  bool reply_begun; /* the head of the reply has been passed on */
  struct body request_body;
  struct body reply_body;
};

/* --- What the client asks for -------------------------------------------------------------------------- */

/* A server and what is asked of it. */
struct target {
  char host[MAX_HOST_SIZE];
  unsigned port;
  const char *path; /* decoded; "" when the URI ends with the server */
};

static bool may_stand_in_host(char c) {
  const bool alphanumeric = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  return alphanumeric || c == '-' || c == '.' || c == '_';
}

/* Reads host:port and sets *end behind it. `port` stands when the text names none; 0: it must name one. */
static bool read_authority(const char *text, unsigned port, struct target *target, const char **end) {
  size_t len = 0;
  while (may_stand_in_host(text[len])) len++;
  if (len == 0 || len >= sizeof(target->host)) return false;
  snprintf(target->host, sizeof(target->host), "%.*s", static_cast<int>(len), text);
  target->port = port;
  *end = text + len;
  if (text[len] != ':') return port != 0;

  const char *digits = text + len + 1;
  const size_t count = strspn(digits, "0123456789");
  *end = digits + count;
  if (count == 0 || count > 5) return count == 0 && port != 0; /* "host:" means the default (RFC 3986) */
  target->port = static_cast<unsigned>(atoi(digits));
  return target->port > 0 && target->port <= 65535;
}

static bool is_tunnel_request(const struct mg_connection *c) {
  return strcmp(c->request_method, "CONNECT") == 0;
}

/* False when the URI is none that can be served: another scheme, user names, IPv6 addresses. */
static bool read_target(const struct mg_connection *c, struct target *target) {
  static const char scheme[] = "http://";
  const char *end;
  if (is_tunnel_request(c)) {
    return read_authority(c->uri, 0, target, &end) && *end == '\0' && c->query_string == nullptr;
  }
  if (strncasecmp(c->uri, scheme, strlen(scheme)) != 0) return false;
  if (!read_authority(c->uri + strlen(scheme), HTTP_PORT, target, &end)) return false;
  target->path = end;
  return *end == '\0' || *end == '/';
}

/* Makes a buffer for what becomes of a head of `len` bytes, so that no line of it can be lost for want of
 * memory: a path may grow, blanks and lines are added. False when memory is exhausted. */
static bool reserve(struct iobuf *io, size_t len) {
  const size_t more = 4096;
  iobuf_init(io, len + more);
  return io->size >= len + more;
}

/* --- The request's head -------------------------------------------------------------------------------- */

/* Appends a decoded path with all bytes %-encoded again that may not stand in one (RFC 3986 section 3.3). */
static void append_path(struct iobuf *out, const char *path) {
  for (; *path != '\0'; path++) {
    const char c = *path;
    const bool alphanumeric = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    if (alphanumeric || strchr("-._~!$&'()*+,;=:@/", c) != nullptr) {
      iobuf_append(out, path, 1);
    } else {
      char encoded[4];
      snprintf(encoded, sizeof(encoded), "%%%02X", static_cast<unsigned char>(c));
      append_text(out, encoded);
    }
  }
}

static void append_request_line(struct iobuf *out, const struct mg_connection *c, const char *path) {
  const bool has_query = c->query_string != nullptr;
  const bool whole_server = strcmp(c->request_method, "OPTIONS") == 0 && path[0] == '\0' && !has_query;
  append_text(out, c->request_method);
  append_text(out, " ");
  append_path(out, path[0] == '\0' && !whole_server ? "/" : path);
  if (whole_server) append_text(out, "*");
  append_text(out, has_query ? "?" : "");
  append_text(out, has_query ? c->query_string : "");
  append_text(out, " HTTP/");
  append_text(out, c->http_version);
  append_text(out, "\r\n");
}

static void append_host(struct iobuf *out, const struct target *target) {
  char line[MAX_HOST_SIZE + 20];
  snprintf(line, sizeof(line), target->port == HTTP_PORT ? "Host: %s\r\n" : "Host: %s:%u\r\n", target->host,
           target->port);
  append_text(out, line);
}

/* The client's header lines as they were, but for blanks. */
static void append_client_headers(struct iobuf *out, const struct mg_connection *c) {
  for (int i = 0; i < c->num_headers; i++) {
    append_text(out, c->http_headers[i].name);
    append_text(out, ": ");
    append_text(out, c->http_headers[i].value);
    append_text(out, "\r\n");
  }
}

/* Writes the head that the server is sent and sets where the body ends. False when the request's header lines
 * are malformed. */
static bool append_request_head(struct iobuf *out, const struct mg_connection *c, const struct target *target,
                                struct proxied *proxied) {
  /* "100 Continue" has been sent already. */
  static const char *const answered[] = {"Host", "Expect", nullptr};
  append_request_line(out, c, target->path);
  append_host(out, target);
  struct iobuf lines;
  struct framing framing;
  if (!reserve(&lines, out->size)) return false;
  append_client_headers(&lines, c);
  const bool sound = pass_headers_on({lines.buf, lines.len}, answered, out, &framing);
  iobuf_free(&lines);
  append_text(out, "Connection: close\r\n\r\n");

  proxied->bodiless = strcmp(c->request_method, "HEAD") == 0;
  proxied->request_body.kind = framing.chunked ? BODY_CHUNKED : BODY_OF_LENGTH;
  proxied->request_body.left = framing.length;
  return sound && framing.has_coding == framing.chunked;
}

/* --- From the client to the server --------------------------------------------------------------------- */

/* Moves the first bytes of a buffer to a socket; a stream with a hole in it must not go on. */
static void pass_on(struct iobuf *from, size_t len, struct ns_connection *to) {
  if (len > 0 && iobuf_append(&to->send_iobuf, from->buf, len) == 0) to->flags |= CONN_CLOSE_NOW;
  iobuf_remove(from, len);
}

static void refuse_malformed_body(struct connection *conn) {
  if (conn->proxied->reply_begun) {
    conn->ns_conn->flags |= CONN_CLOSE_NOW;
  } else {
    send_http_error(conn, 400, nullptr);
  }
}

void forward_to_proxied_server(struct connection *conn) {
  struct proxied *proxied = conn->proxied;
  struct ns_connection *peer = conn->endpoint.nc;
  struct iobuf *io = &conn->ns_conn->recv_iobuf;
  if (peer != nullptr) {
    const size_t len = proxied->tunnel ? io->len : follow_body(&proxied->request_body, io->buf, io->len);
    pass_on(io, len, peer);
    hold_back(conn->ns_conn, peer);
  }
  iobuf_free(io);
  if (peer != nullptr && body_is_malformed(&proxied->request_body)) refuse_malformed_body(conn);
}

/* --- From the server to the client --------------------------------------------------------------------- */

/* Length of the head at the front of the buffer, of which the first `scanned` bytes hold no end; 0 when it is
 * not complete. */
static size_t find_head_end(const struct iobuf *io, size_t scanned) {
  for (size_t i = scanned; i < io->len; i++) {
    if (io->buf[i] != '\n') continue;
    const bool bare = i >= 1 && io->buf[i - 1] == '\n';
    if (bare || (i >= 2 && io->buf[i - 1] == '\r' && io->buf[i - 2] == '\n')) return i + 1;
  }
  return 0;
}

/* The status of a reply, 100 to 999; 0 when its first line is no status line. */
static int read_status(const char *head, size_t len) {
  static const char shape[] = "HTTP/1.0 000";
  if (len <= strlen(shape) || memchr(" \r\n", head[strlen(shape)], 3) == nullptr) return 0;
  for (size_t i = 0; shape[i] != '\0'; i++) {
    const bool digit = head[i] >= '0' && head[i] <= '9';
    if (shape[i] == '0' ? !digit : head[i] != shape[i]) return 0;
  }
  const int status = atoi(head + 9);
  return status >= 100 ? status : 0;
}

static void set_reply_body(struct proxied *proxied, int status, const struct framing *framing) {
  struct body *body = &proxied->reply_body;
  const bool bodiless = proxied->bodiless || status == 204 || status == 304;
  body->kind = bodiless || framing->has_length ? BODY_OF_LENGTH
               : framing->chunked              ? BODY_CHUNKED
                                               : BODY_TO_CLOSE;
  body->left = bodiless ? 0 : framing->length;
}

/* Passes one head on, of the reply or of an interim one before it. False when it is malformed. */
static bool pass_reply_head_on(struct connection *conn, size_t len) {
  static const char *const none[] = {nullptr};
  const struct iobuf *io = &conn->endpoint.nc->recv_iobuf;
  struct iobuf *out = &conn->ns_conn->send_iobuf;
  const int status = read_status(io->buf, len);
  const auto *feed = static_cast<const char *>(memchr(io->buf, '\n', len));
  const size_t first = static_cast<size_t>(feed + 1 - io->buf);
  if (status == 0 || status == 101) return false; /* no upgrade was asked for */

  struct framing framing;
  struct iobuf lines;
  if (!reserve(&lines, len)) return false;
  iobuf_append(&lines, io->buf, first);
  const bool sound = pass_headers_on({io->buf + first, len - first}, none, &lines, &framing);
  if (framing.closes) append_text(&lines, "Connection: close\r\n");
  append_text(&lines, "\r\n");
  if (sound) iobuf_append(out, lines.buf, lines.len);
  iobuf_free(&lines);
  if (!sound || status < 200) return sound;

  conn->mg_conn.status_code = status;
  conn->proxied->reply_begun = true;
  set_reply_body(conn->proxied, status, &framing);
  return true;
}

/* Passes on the heads that are complete. False when the reply is malformed. `count` bytes are new. */
static bool pass_reply_heads_on(struct connection *conn, size_t count) {
  struct iobuf *io = &conn->endpoint.nc->recv_iobuf;
  size_t scanned = io->len > count ? io->len - count : 0;
  while (!conn->proxied->reply_begun) {
    const size_t len = find_head_end(io, scanned);
    if (len == 0) return io->len <= MAX_REPLY_HEAD;
    if (!pass_reply_head_on(conn, len)) return false;
    iobuf_remove(io, len);
    scanned = 0;
  }
  return true;
}

/* Passes on what the buffer holds of a tunnel's bytes or of the reply's body. After a reply's end the server
 * is let go, which releases the client. */
static void pass_bytes_on(struct connection *conn) {
  struct ns_connection *peer = conn->endpoint.nc;
  struct proxied *proxied = conn->proxied;
  struct iobuf *io = &peer->recv_iobuf;
  const size_t len = proxied->tunnel ? io->len : follow_body(&proxied->reply_body, io->buf, io->len);
  pass_on(io, len, conn->ns_conn);
  iobuf_free(io);
  const bool over = body_has_ended(&proxied->reply_body) || body_is_malformed(&proxied->reply_body);
  if (!proxied->tunnel && over) peer->flags |= CONN_CLOSE_NOW;
}

static void on_peer_recv(struct ns_connection *peer, struct connection *conn, size_t count) {
  const struct proxied *proxied = conn->proxied;
  if (!proxied->tunnel && !pass_reply_heads_on(conn, count)) {
    send_http_error(conn, 502, "The server's reply is malformed.\n");
    return;
  }
  if (proxied->tunnel || proxied->reply_begun) pass_bytes_on(conn);
  hold_back(peer, conn->ns_conn);
}

/* --- The server's socket ------------------------------------------------------------------------------- */

static void on_peer_connect(struct connection *conn, int error) {
  if (error != 0) {
    send_http_error(conn, error == ETIMEDOUT ? 504 : 502, "%s\n", strerror(error));
  } else if (conn->proxied->tunnel) {
    conn->mg_conn.status_code = 200;
    mg_printf(&conn->mg_conn, "HTTP/1.1 200 OK\r\n\r\n");
  }
}

static void on_peer_close(struct ns_connection *peer, struct connection *conn) {
  const struct proxied *proxied = conn->proxied;
  if (proxied->tunnel) {
    release_client(peer);
  } else if (proxied->reply_begun) {
    close_local_endpoint(conn);
  } else {
    send_http_error(conn, 502, "The server closed without a reply.\n");
  }
}

/* The client has gone and its last bytes are on their way: nobody wants what the server still says, and it
 * may not take for ever to take them. */
static void serve_without_client(struct ns_connection *peer, int event, void *event_data) {
  const bool late = event == NET_EV_POLL &&
                    *static_cast<time_t *>(event_data) > peer->last_io_time + MG_IDLE_TIMEOUT_SECONDS;
  if (late || event == NET_EV_RECV) peer->flags |= CONN_CLOSE_NOW;
  iobuf_free(&peer->recv_iobuf);
}

static void peer_ev_handler(struct ns_connection *peer, int event, void *event_data) {
  auto *conn = static_cast<connection *>(peer->user_data);
  if (conn == nullptr) {
    serve_without_client(peer, event, event_data);
    return;
  }
  switch (event) {
  case NET_EV_CONNECT:
    on_peer_connect(conn, *static_cast<int *>(event_data));
    break;
  case NET_EV_RECV:
    on_peer_recv(peer, conn, static_cast<size_t>(*static_cast<int *>(event_data)));
    break;
  case NET_EV_SEND:
    let_go(conn->ns_conn, peer, *static_cast<int *>(event_data));
    break;
  case NET_EV_CLOSE:
    on_peer_close(peer, conn);
    break;
  }
}

/* --- Beginning and end --------------------------------------------------------------------------------- */

/* Null, with *problem set, when it cannot even be tried. Looking a name up blocks until it is known. */
static struct ns_connection *connect_to(struct ns_mgr *mgr, const struct target *target,
                                        const char **problem) {
  char ip[48], address[64];
  /* Here and not by ns_connect(), to which a name that nobody knows is this very host. */
  if (ns_resolve(target->host, ip, sizeof(ip)) == 0) {
    *problem = "The host's name is not known.";
    return nullptr;
  }
  snprintf(address, sizeof(address), "tcp://%s:%u", ip, target->port);
  errno = 0;
  struct ns_connection *peer = ns_connect(mgr, address, peer_ev_handler, nullptr);
  if (peer == nullptr) *problem = errno == 0 ? "The port cannot be used." : strerror(errno);
  return peer;
}

/* Gives the socket, which is still connecting, what there is of the request. */
static void begin_exchange(struct connection *conn, struct ns_connection *peer, struct proxied *proxied,
                           struct iobuf *head) {
  peer->flags |= CONN_PROXY_PEER;
  peer->user_data = conn;
  conn->endpoint_type = EP_PROXY;
  conn->endpoint.nc = peer;
  conn->proxied = proxied;
  pass_on(head, head->len, peer);
  forward_to_proxied_server(conn);
}

/* Returns the status of the error that the request deserves, 0 for none. */
static int open_exchange(struct connection *conn, struct proxied *proxied, struct iobuf *head,
                         const char **problem) {
  const struct mg_connection *c = &conn->mg_conn;
  struct target target;
  if (conn->ns_conn->flags & CONN_UDP) return 405; /* no reply would find its record */
  if (!read_target(c, &target)) return 400;
  proxied->tunnel = is_tunnel_request(c);
  if (!proxied->tunnel && !append_request_head(head, c, &target, proxied)) return 400;
  struct ns_connection *peer = connect_to(conn->ns_conn->mgr, &target, problem);
  if (peer == nullptr) return 502;
  begin_exchange(conn, peer, proxied, head);
  return 0;
}

void open_proxy_endpoint(struct connection *conn) {
  auto *proxied = static_cast<struct proxied *>(calloc(1, sizeof(struct proxied)));
  if (proxied == nullptr) {
    send_http_error(conn, 500, nullptr);
    return;
  }
  struct iobuf head;
  const char *problem = "";
  const bool reserved = reserve(&head, static_cast<size_t>(conn->request_len));
  const int error = reserved ? open_exchange(conn, proxied, &head, &problem) : 500;
  iobuf_free(&head);
  if (error == 0) return;
  free(proxied);
  send_http_error(conn, error, "%s%s", problem, problem[0] == '\0' ? "" : "\n");
}

/* A tunnel's last bytes from the client still go to the server. */
void release_proxied_server(struct connection *conn) {
  struct ns_connection *peer = conn->endpoint.nc;
  if (peer != nullptr) {
    const bool connected = (peer->flags & CONN_CONNECTING) == 0;
    const bool unsent = conn->proxied->tunnel && connected && peer->send_iobuf.len > 0;
    peer->flags &= ~CONN_WANT_WRITE;
    peer->flags |= unsent ? CONN_FINISHED_SENDING : CONN_CLOSE_NOW;
    peer->user_data = nullptr;
  }
  free(conn->proxied);
  conn->proxied = nullptr;
}
