/* The outbound HTTP client: connects, lets the handler write its request with mg_printf() and mg_write(), and
 * raises MG_REPLY when the reply is there. */
#include "server/http_conn.h"

struct mg_connection *mg_connect(struct mg_server *server, const char *address) {
  struct ns_connection *nc = ns_connect(&server->ns_mgr, address, mg_ev_handler, nullptr);
  if (nc == nullptr) return nullptr;
  struct connection *conn = new_connection(nc);
  if (conn == nullptr) {
    nc->flags |= CONN_CLOSE_NOW;
    return nullptr;
  }
  conn->endpoint_type = EP_CLIENT;
  return &conn->mg_conn;
}

/* Delivers the reply, of which `length` bytes of the receive buffer are the body. The handler's MG_FALSE
 * closes the connection; otherwise it may send another request. */
static void deliver_reply(struct connection *conn, size_t length) {
  struct ns_connection *nc = conn->ns_conn;
  struct mg_connection *c = &conn->mg_conn;
  c->content = nc->recv_iobuf.buf;
  c->content_len = length;
  const bool close = call_user(conn, MG_REPLY) == MG_FALSE;
  close_local_endpoint(conn);
  conn->endpoint_type = EP_CLIENT;
  nc->flags &= ~(CONN_FINISHED_SENDING | CONN_CLOSE_NOW);
  if (close) nc->flags |= CONN_CLOSE_NOW;
}

void on_client_data(struct connection *conn) {
  struct ns_connection *nc = conn->ns_conn;
  try_parse_head(conn);
  const bool too_long = conn->request_len == 0 && nc->recv_iobuf.len > MG_MAX_REQUEST_HEAD;
  if (conn->request_len < 0 || too_long) {
    nc->flags |= CONN_CLOSE_NOW;
    return;
  }
  /* Without a length the reply goes on until the server closes. */
  if (conn->request_len == 0 || mg_get_header(&conn->mg_conn, "Content-Length") == nullptr) return;
  if (conn->cl >= 0 && static_cast<uint64_t>(conn->cl) <= nc->recv_iobuf.len) {
    deliver_reply(conn, static_cast<size_t>(conn->cl));
  }
}

void on_client_close(struct connection *conn) {
  if (conn->request_len > 0) deliver_reply(conn, conn->ns_conn->recv_iobuf.len);
}
