/* One client connection's life: the events of its socket, the request state machine, the end of a request.
 *
 *   accepted -> head parsed -> MG_AUTH -> EP_USER: MG_RECV while the body arrives -> MG_REQUEST
 *     -> MG_TRUE: the reply is complete; MG_MORE: completed later from MG_POLL; MG_FALSE: the server answers
 *     -> close_local_endpoint() -> the next request, or draining and closed
 */
#include "server/http_conn.h"

#include <arpa/inet.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

struct connection *connection_of(const struct mg_connection *conn) {
  char *member = reinterpret_cast<char *>(const_cast<mg_connection *>(conn));
  return reinterpret_cast<connection *>(member - offsetof(struct connection, mg_conn));
}

int call_user(struct connection *conn, enum mg_event event) {
  const mg_handler_t handler = conn->server->event_handler;
  return handler == nullptr ? MG_FALSE : handler(&conn->mg_conn, event);
}

/* --- The end of a request ------------------------------------------------------------------------------ */

static bool body_complete(const struct connection *conn) {
  return conn->num_bytes_recv - conn->request_len >= conn->cl; /* no sum: cl is what the client likes */
}

/* Whether nothing of the body can still come and pass for a request. */
static bool body_has_ended(const struct connection *conn) {
  return mg_get_header(&conn->mg_conn, "Transfer-Encoding") == nullptr && body_complete(conn);
}

bool should_keep_alive(const struct connection *conn) {
  const struct mg_connection *c = &conn->mg_conn;
  const enum endpoint_type type = conn->endpoint_type;
  if (c->request_method == nullptr || (type != EP_FILE && type != EP_USER)) return false;
  if (strcmp(c->request_method, "GET") != 0 && type != EP_USER) return false;
  if (type == EP_FILE && !body_has_ended(conn)) return false; /* a handler waits for the whole body itself */
  const char *wish = mg_get_header(c, "Connection");
  return wish == nullptr ? strcmp(c->http_version, "1.1") == 0 : strcasecmp(wish, "keep-alive") == 0;
}

/* Makes the record as it was after the accept; addresses and server data stay. */
static void forget_request(struct connection *conn) {
  iobuf_free(&conn->ns_conn->recv_iobuf);
  free(conn->request);
  free(conn->path_info);
  conn->request = conn->path_info = nullptr;
  conn->endpoint = {};
  conn->endpoint_type = EP_NONE;
  conn->num_bytes_recv = conn->cl = 0;
  conn->request_len = conn->head_scanned = 0;
  conn->request_delivered = false;

  struct mg_connection *c = &conn->mg_conn;
  c->request_method = c->uri = c->http_version = c->query_string = nullptr;
  c->num_headers = 0;
  c->content = nullptr; /* it pointed into the receive buffer */
  c->content_len = 0;
  c->is_websocket = c->status_code = c->wsbits = 0;
  c->connection_param = c->callback_param = nullptr;
}

/* Gives back what the endpoint holds. */
static void release_endpoint(struct connection *conn) {
  switch (conn->endpoint_type) {
  case EP_FILE:
    close(conn->endpoint.fd);
    break;
  case EP_PUT:
    release_upload(conn);
    break;
  case EP_CGI:
    release_cgi(conn);
    break;
  case EP_PROXY:
    release_proxied_server(conn);
    break;
  case EP_NONE:
  case EP_USER:
  case EP_CLIENT:
    break;
  }
}

/* Bytes of the request's body that have not arrived. Of a chunked one nobody knows how many there are; what
 * is missing from a datagram does not come. */
static int64_t missing_body(const struct connection *conn) {
  const bool is_datagram = (conn->ns_conn->flags & CONN_UDP) != 0;
  if (conn->request_len <= 0 || conn->endpoint_type == EP_CLIENT || is_datagram) return 0;
  if (mg_get_header(&conn->mg_conn, "Transfer-Encoding") != nullptr) return INT64_MAX;
  const int64_t arrived = conn->num_bytes_recv - conn->request_len;
  return conn->cl <= arrived ? 0 : conn->cl - arrived;
}

/* Closes once the reply has been written. Not while the client is still sending the request's body, as its
 * system would then throw the reply away before it has read it: what comes is dropped until all has come, or
 * the client closes. */
static void end_connection(struct connection *conn, int64_t body_to_come) {
  struct ns_connection *nc = conn->ns_conn;
  const bool all_written = nc->send_iobuf.len == 0;
  conn->unwanted = body_to_come;
  if (body_to_come == 0) {
    nc->flags |= all_written ? CONN_CLOSE_NOW : CONN_FINISHED_SENDING;
    return;
  }
  nc->flags &= ~CONN_WANT_WRITE; /* nobody is left who would hold it back */
  if (all_written) ns_end_output(nc);
}

void close_local_endpoint(struct connection *conn) {
  struct ns_connection *nc = conn->ns_conn;
  const struct mg_connection *c = &conn->mg_conn;
  const bool keep_alive = should_keep_alive(conn);
  const bool has_reply = c->status_code > 0 || nc->send_iobuf.len > 0;
  const int64_t body_to_come = keep_alive || !has_reply ? 0 : missing_body(conn);
  release_endpoint(conn);

  const char *log = conn->server->config_options[ACCESS_LOG_FILE];
  const bool logged = c->status_code > 0 && c->status_code != 400 && conn->endpoint_type != EP_CLIENT;
  if (log != nullptr && logged) log_access(conn, log);

  forget_request(conn);
  nc->flags &=
      ~(CONN_FINISHED_SENDING | CONN_HOLD_OUTPUT | CONN_CLOSE_NOW | CONN_HEADERS_SENT | CONN_REQUEST_BIT21);

  /* Kept: whatever came behind the request went with its buffer, so the next one has not begun yet. */
  if (!keep_alive) end_connection(conn, body_to_come);
}

/* The handler's reply is complete. */
static void finish_reply(struct connection *conn) {
  if (conn->ns_conn->flags & CONN_HEADERS_SENT) write_terminating_chunk(conn);
  close_local_endpoint(conn);
}

/* --- Opening the endpoint ------------------------------------------------------------------------------ */

/* The request is one that the handler declined, or there is no handler. */
static void serve_declined_request(struct connection *conn) {
  const struct mg_connection *c = &conn->mg_conn;
  const char *enable_proxy = conn->server->config_options[ENABLE_PROXY];
  const bool proxy_allowed = enable_proxy != nullptr && strcmp(enable_proxy, "yes") == 0;
  const bool wants_proxy = strcmp(c->request_method, "CONNECT") == 0 || strncasecmp(c->uri, "http", 4) == 0;

  if (wants_proxy && proxy_allowed) {
    open_proxy_endpoint(conn);
  } else if (wants_proxy) {
    send_http_error(conn, 405, nullptr);
  } else if (strcmp(c->request_method, "OPTIONS") == 0) {
    send_options_reply(conn);
  } else {
    serve_file_request(conn);
  }
}

/* Authorises the request and decides who serves it. `skip_user`: the handler returned MG_FALSE for it. */
static void open_local_endpoint(struct connection *conn, bool skip_user) {
  const bool has_handler = conn->server->event_handler != nullptr;
  conn->endpoint_type = EP_NONE;
  conn->mg_conn.content = nullptr; /* not attached while the request is authorised */
  conn->mg_conn.content_len = static_cast<size_t>(conn->cl);
  if (has_handler && call_user(conn, MG_AUTH) == MG_FALSE) {
    send_auth_challenge(conn);
  } else if (has_handler && !skip_user) {
    conn->endpoint_type = EP_USER;
  } else {
    serve_declined_request(conn);
  }
}

/* --- The request state machine ------------------------------------------------------------------------- */

/* Copies the head out of the receive buffer and parses it. */
static void take_head(struct connection *conn) {
  struct iobuf *io = &conn->ns_conn->recv_iobuf;
  const size_t len = static_cast<size_t>(conn->request_len);
  conn->request = static_cast<char *>(malloc(len));
  if (conn->request == nullptr) {
    conn->request_len = 0;
    conn->ns_conn->flags |= CONN_CLOSE_NOW;
    return;
  }
  memcpy(conn->request, io->buf, len);
  iobuf_remove(io, len);
  conn->request_len = parse_http_message(conn->request, conn->request_len, &conn->mg_conn);
  if (conn->request_len <= 0) return;
  const char *length = mg_get_header(&conn->mg_conn, "Content-Length");
  conn->cl = length == nullptr ? 0 : strtoll(length, nullptr, 10);
  conn->mg_conn.content_len = static_cast<size_t>(conn->cl);
}

void try_parse_head(struct connection *conn) {
  const struct iobuf *io = &conn->ns_conn->recv_iobuf;
  if (conn->request_len != 0) return;
  const int buffered = static_cast<int>(io->len);
  conn->request_len = get_request_len_from(io->buf, buffered, conn->head_scanned);
  conn->head_scanned = buffered; /* so that a head arriving byte by byte is looked at once */
  if (conn->request_len > 0) take_head(conn);
}

/* The error that the head itself deserves, 0 when there is none. */
static int head_error(const struct connection *conn) {
  const struct mg_connection *c = &conn->mg_conn;
  if (conn->request_len < 0) return 400;
  if (conn->request_len == 0) return conn->ns_conn->recv_iobuf.len > MG_MAX_REQUEST_HEAD ? 413 : 0;
  if (!is_valid_uri(c->uri)) return 400;
  const bool known = strcmp(c->http_version, "1.0") == 0 || strcmp(c->http_version, "1.1") == 0;
  return known ? 0 : 505;
}

static void begin_request(struct connection *conn) {
  answer_websocket_upgrade(conn); /* before the request is authorised */
  const char *expect = mg_get_header(&conn->mg_conn, "Expect");
  if (expect != nullptr && strcasecmp(expect, "100-continue") == 0) {
    mg_printf(&conn->mg_conn, "HTTP/1.1 100 Continue\r\n\r\n");
  }
  open_local_endpoint(conn, false);
}

static void call_request_handler(struct connection *conn) {
  conn->request_delivered = true;
  const int result = call_user(conn, MG_REQUEST);
  if (conn->endpoint_type != EP_USER) return; /* mg_send_file() has taken the request over, or ended it */
  if (result == MG_TRUE) {
    finish_reply(conn);
  } else if (result == MG_FALSE) {
    open_local_endpoint(conn, true);
  }
}

/* Gives the handler what has arrived of the body, and the request once the body is whole. */
static void serve_user(struct connection *conn) {
  struct ns_connection *nc = conn->ns_conn;
  conn->mg_conn.content = nc->recv_iobuf.buf;
  conn->mg_conn.content_len = nc->recv_iobuf.len;
  const int consumed = call_user(conn, MG_RECV);
  if (consumed > 0) iobuf_remove(&nc->recv_iobuf, static_cast<size_t>(consumed));
  if (conn->endpoint_type != EP_USER) return; /* answered by mg_send_file() */
  if (conn->mg_conn.is_websocket) {
    deliver_websocket_frames(conn);
  } else if (!conn->request_delivered && body_complete(conn)) {
    call_request_handler(conn);
  }
  if (consumed < 0) nc->flags |= CONN_FINISHED_SENDING; /* last, as the end of a request clears it */
}

/* While a file is sent, nothing is wanted of the client; the body that the handler was given stays. */
static void drop_surplus(struct connection *conn) {
  struct iobuf *io = &conn->ns_conn->recv_iobuf;
  struct mg_connection *c = &conn->mg_conn;
  if (c->content == nullptr) {
    iobuf_free(io);
    return;
  }
  if (io->len > c->content_len) io->len = c->content_len;
  c->content = io->buf;
}

void on_recv_data(struct connection *conn) {
  if (conn->endpoint_type == EP_PROXY) {
    forward_to_proxied_server(conn);
    return;
  }
  try_parse_head(conn);
  const int error = head_error(conn);
  if (error != 0) {
    send_http_error(conn, error, nullptr);
  } else if (conn->request_len > 0 && conn->endpoint_type == EP_NONE) {
    begin_request(conn);
  }
  if (conn->endpoint_type == EP_USER) serve_user(conn);
  /* The handler may have declined just now, with the body still in the buffer. */
  if (conn->endpoint_type == EP_CGI) forward_to_cgi(conn);
  if (conn->endpoint_type == EP_PUT) write_upload(conn);
  if (conn->endpoint_type == EP_FILE) drop_surplus(conn);
}

/* --- Sockets that serve a client ----------------------------------------------------------------------- */

void release_client(struct ns_connection *peer) {
  auto *conn = static_cast<connection *>(peer->user_data);
  peer->user_data = nullptr;
  if (conn == nullptr) return;
  struct ns_connection *nc = conn->ns_conn;
  conn->endpoint.nc = nullptr;
  nc->flags &= ~CONN_HOLD_OUTPUT;
  nc->flags |= nc->send_iobuf.len > 0 ? CONN_FINISHED_SENDING : CONN_CLOSE_NOW;
}

void hold_back(struct ns_connection *from, const struct ns_connection *to) {
  if (to->send_iobuf.len > MG_MAX_QUEUED_OUTPUT) from->flags |= CONN_WANT_WRITE;
}

void let_go(struct ns_connection *from, const struct ns_connection *to, int sent) {
  if (sent <= 0) return;
  const size_t left = to->send_iobuf.len - static_cast<size_t>(sent);
  if (left <= MG_MAX_QUEUED_OUTPUT) from->flags &= ~CONN_WANT_WRITE;
}

/* --- The socket's events ------------------------------------------------------------------------------- */

static void set_addresses(struct connection *conn) {
  struct mg_connection *c = &conn->mg_conn;
  const struct ns_connection *nc = conn->ns_conn;
  inet_ntop(AF_INET, &nc->sa.sin.sin_addr, c->remote_ip, sizeof(c->remote_ip));
  c->remote_port = ntohs(nc->sa.sin.sin_port);

  struct sockaddr_in local = {};
  socklen_t len = sizeof(local);
  if (getsockname(nc->sock, reinterpret_cast<struct sockaddr *>(&local), &len) != 0) return;
  inet_ntop(AF_INET, &local.sin_addr, c->local_ip, sizeof(c->local_ip));
  c->local_port = ntohs(local.sin_port);
}

static void fill_connection(struct connection *conn, struct ns_connection *nc) {
  conn->ns_conn = nc;
  conn->server = reinterpret_cast<mg_server *>(nc->mgr); /* the manager is the server's first member */
  conn->mg_conn.server_param = nc->mgr->user_data;
  set_addresses(conn);
}
static_assert(offsetof(struct mg_server, ns_mgr) == 0);

struct connection *new_connection(struct ns_connection *nc) {
  auto *conn = static_cast<connection *>(calloc(1, sizeof(connection)));
  if (conn == nullptr) return nullptr;
  fill_connection(conn, nc);
  nc->user_data = conn;
  return conn;
}

static void on_accept(struct ns_connection *nc, const union socket_address *peer) {
  const auto *server = reinterpret_cast<const mg_server *>(nc->mgr);
  const char *acl = server->config_options[ACCESS_CONTROL_LIST];
  const bool refused = check_acl(acl, ntohl(peer->sin.sin_addr.s_addr)) == 0;
  if (refused || new_connection(nc) == nullptr) nc->flags |= CONN_CLOSE_NOW;
}

/* A datagram is a whole request, also when the empty line is missing that ends a head. Its sender has no
 * connection: the record lives for this call only, so a handler cannot answer such a request later. */
static void on_datagram(struct ns_connection *nc, int count) {
  /* A reply is no request: two servers would answer each other's errors for ever. */
  if (count >= 5 && memcmp(nc->recv_iobuf.buf, "HTTP/", 5) == 0) return;
  struct connection conn = {};
  fill_connection(&conn, nc);
  conn.num_bytes_recv = count;
  nc->user_data = &conn;

  /* The connection layer lends a buffer on the stack: the state machine wants one that it can free. */
  struct iobuf lent = nc->recv_iobuf;
  nc->recv_iobuf = {};
  if (iobuf_append(&nc->recv_iobuf, lent.buf, lent.len) == 0) return;
  try_parse_head(&conn);
  if (conn.request_len == 0) {
    conn.request_len = count;
    take_head(&conn);
  }
  on_recv_data(&conn);
  if (conn.endpoint_type == EP_FILE) transfer_file_data(&conn); /* as much as a datagram holds */
  /* What would need more is over: a larger file, an upload whose body did not come along, a program. */
  release_endpoint(&conn);
  forget_request(&conn);
}

/* The CGI process's pipe or the proxied server's socket; null when none serves the client. */
static struct ns_connection *serving_socket(const struct connection *conn) {
  const bool served = conn->endpoint_type == EP_CGI || conn->endpoint_type == EP_PROXY;
  return served ? conn->endpoint.nc : nullptr;
}

/* More of a body whose request has been answered. */
static void drop_unwanted(struct connection *conn, int count) {
  struct ns_connection *nc = conn->ns_conn;
  iobuf_free(&nc->recv_iobuf);
  conn->unwanted = count < conn->unwanted ? conn->unwanted - count : 0;
  if (conn->unwanted == 0) end_connection(conn, 0);
}

static void on_recv(struct ns_connection *nc, int count) {
  if ((nc->flags & CONN_UDP) && nc->user_data == nullptr) {
    on_datagram(nc, count);
    return;
  }
  auto *conn = static_cast<connection *>(nc->user_data);
  if (conn == nullptr) return;
  if (conn->unwanted > 0) {
    drop_unwanted(conn, count);
    return;
  }
  if (conn->request_len == 0 && (nc->flags & (CONN_FINISHED_SENDING | CONN_CLOSE_NOW))) {
    iobuf_free(&nc->recv_iobuf); /* the last reply has been given: nothing more is a request */
    return;
  }
  conn->num_bytes_recv += count;
  if (conn->endpoint_type == EP_CLIENT) {
    on_client_data(conn);
  } else {
    on_recv_data(conn);
  }
  /* A client that asks on without taking its replies must not make them pile up. One that is served by
   * another socket is held back by that one: the two directions do not wait for each other. */
  if (serving_socket(conn) == nullptr) hold_back(nc, nc);
}

/* Bytes went out: whoever serves a client that was slow to take its replies may be read again, or the client
 * itself. */
static void on_send(struct ns_connection *nc, int count) {
  const auto *conn = static_cast<connection *>(nc->user_data);
  struct ns_connection *peer = conn == nullptr ? nullptr : serving_socket(conn);
  let_go(peer == nullptr ? nc : peer, nc, count);
  if (conn == nullptr) return;
  if (conn->unwanted > 0 && nc->send_iobuf.len == static_cast<size_t>(count)) ns_end_output(nc);
}

static void on_poll(struct ns_connection *nc, time_t now) {
  auto *conn = static_cast<connection *>(nc->user_data);
  if (conn == nullptr) return;
  const enum endpoint_type before = conn->endpoint_type; /* mg_send_file() changes it */
  const bool finished = call_user(conn, MG_POLL) == MG_TRUE && conn->endpoint_type == before;
  if (finished && before != EP_FILE) finish_reply(conn); /* a file is sent to its end */
  if (conn->endpoint_type == EP_FILE) transfer_file_data(conn);
  if (conn->mg_conn.is_websocket && conn->endpoint_type == EP_USER) {
    deliver_websocket_frames(conn); /* those that waited for room */
    hold_back(nc, nc);
    keep_websocket_alive(conn, now);
  }
  const bool idle = now > nc->last_io_time + MG_IDLE_TIMEOUT_SECONDS;
  if (nc->listener != nullptr && idle) nc->flags |= CONN_CLOSE_NOW;
}

static void on_connect(struct connection *conn, int error) {
  if (conn == nullptr) return;
  conn->mg_conn.status_code = error;
  call_user(conn, MG_CONNECT);
  conn->mg_conn.status_code = 0;
}

static void on_close(struct ns_connection *nc) {
  auto *conn = static_cast<connection *>(nc->user_data);
  if (conn == nullptr) return;
  if (conn->endpoint_type == EP_CLIENT) on_client_close(conn);
  call_user(conn, MG_CLOSE);
  close_local_endpoint(conn);
  nc->user_data = nullptr;
  free(conn);
}

void mg_ev_handler(struct ns_connection *nc, int event, void *event_data) {
  switch (event) {
  case NET_EV_POLL:
    on_poll(nc, *static_cast<time_t *>(event_data));
    break;
  case NET_EV_ACCEPT:
    on_accept(nc, static_cast<socket_address *>(event_data));
    break;
  case NET_EV_CONNECT:
    on_connect(static_cast<connection *>(nc->user_data), *static_cast<int *>(event_data));
    break;
  case NET_EV_RECV:
    on_recv(nc, *static_cast<int *>(event_data));
    break;
  case NET_EV_SEND:
    on_send(nc, *static_cast<int *>(event_data));
    break;
  case NET_EV_CLOSE:
    on_close(nc);
    break;
  }
}
