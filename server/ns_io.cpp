/* What a ready socket does: accept clients, take datagrams, read, complete a connect, write. */
#include "server/ns_internal.h"

#include <errno.h>
#include <limits.h>
#include <netinet/tcp.h>
#include <unistd.h>

/* --- Accepting ----------------------------------------------------------------------------------------- */

static void accept_one(struct ns_connection *listener, sock_t sock, union socket_address *peer) {
  struct ns_connection *c = ns_wrap_sock(listener->mgr, sock, listener->callback, listener->user_data);
  if (c == nullptr) {
    close(sock);
    return;
  }
  if (listener->ssl_ctx != nullptr && !ns_tls_attach(c, listener->ssl_ctx)) {
    ns_close_conn(c);
    return;
  }
  /* A reply leaves in one piece, so waiting for more to send would only delay it. */
  const int on = 1;
  setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  c->listener = listener;
  c->proto_data = listener->proto_data;
  c->sa = *peer;
  ns_call(c, NET_EV_ACCEPT, peer);
}

void accept_conn(struct ns_connection *listener, time_t now) {
  for (int i = 0; i < NS_ACCEPT_BATCH; i++) {
    union socket_address peer = {};
    socklen_t len = sizeof(peer);
    const sock_t sock = accept4(listener->sock, &peer.sa, &len, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (sock == -1) {
      const bool exhausted = errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS;
      if (exhausted) listener->mgr->accept_resume = now + 1;
      return;
    }
    accept_one(listener, sock, &peer);
  }
}

/* --- Datagrams ----------------------------------------------------------------------------------------- */

void ns_handle_udp(struct ns_connection *listener) {
  char buf[NS_DATAGRAM_SIZE];
  struct ns_connection sender = {};
  socklen_t len = sizeof(sender.sa);
  const ssize_t n = recvfrom(listener->sock, buf, sizeof(buf), 0, &sender.sa.sa, &len);
  if (n <= 0) return;
  sender.mgr = listener->mgr;
  sender.sock = listener->sock;
  sender.callback = listener->callback;
  sender.user_data = listener->user_data;
  sender.proto_data = listener->proto_data;
  sender.flags = CONN_UDP;
  sender.last_io_time = listener->last_io_time;
  sender.recv_iobuf = {buf, static_cast<size_t>(n), sizeof(buf)};
  int count = static_cast<int>(n);
  ns_call(&sender, NET_EV_RECV, &count);
}

/* --- Reading ------------------------------------------------------------------------------------------- */

/* Finishes an outbound connect, with TLS including the handshake. */
static void complete_connect(struct ns_connection *c) {
  int error = 0;
  socklen_t len = sizeof(error);
  if (getsockopt(c->sock, SOL_SOCKET, SO_ERROR, &error, &len) != 0) error = errno;
  if (error == 0 && c->ssl != nullptr) {
    const enum tls_result outcome = ns_tls_handshake(c);
    if (outcome == TLS_WAIT) return;
    if (outcome == TLS_FAILED) error = EPROTO;
  }
  c->flags &= ~CONN_CONNECTING;
  if (error != 0) c->flags |= CONN_CLOSE_NOW;
  ns_call(c, NET_EV_CONNECT, &error);
}

static bool is_temporary(int error) {
  return error == EINTR || error == EINPROGRESS || error == EAGAIN;
}

/* One read. A result below 1 ends the reading; *failed then tells an error or the peer's close from "nothing
 * more for now". */
static int read_once(struct ns_connection *c, char *buf, bool *failed) {
  if (c->ssl != nullptr) {
    enum tls_result outcome;
    const int n = ns_tls_read(c, buf, NS_READ_SIZE, &outcome);
    *failed = n < 1 && outcome == TLS_FAILED;
    return n;
  }
  const ssize_t n = recv(c->sock, buf, NS_READ_SIZE, 0);
  *failed = n == 0 || (n < 0 && !is_temporary(errno));
  return static_cast<int>(n);
}

/* A short read tells that the socket is empty, which saves asking it again. */
static bool may_hold_more(const struct ns_connection *c, int n, bool to_the_end) {
  return to_the_end || n == NS_READ_SIZE || (c->ssl != nullptr && ns_tls_has_unread(c));
}

/* Whether the rest has to wait: for a write, or for the other connections' turn when the peer sends as fast
 * as it is read. What is left of a peer that has closed is read in one pass. */
static bool must_pause(const struct ns_connection *c, int reads, bool to_the_end) {
  return (c->flags & CONN_WANT_WRITE) || (reads >= NS_READ_BATCH && !to_the_end);
}

static void read_all(struct ns_connection *c, bool to_the_end) {
  char buf[NS_READ_SIZE];
  bool failed = false;
  int n;
  for (int reads = 1; (n = read_once(c, buf, &failed)) > 0; reads++) {
    iobuf_append(&c->recv_iobuf, buf, static_cast<size_t>(n));
    ns_call(c, NET_EV_RECV, &n);
    if (must_pause(c, reads, to_the_end)) {
      c->tls_unread = c->ssl != nullptr && ns_tls_has_unread(c); /* the poller does not see it */
      return;
    }
    if (!may_hold_more(c, n, to_the_end)) return;
  }
  if (failed) c->flags |= CONN_CLOSE_NOW;
}

void ns_read_from_socket(struct ns_connection *c, bool to_the_end) {
  if (c->flags & CONN_CONNECTING) {
    complete_connect(c);
    return;
  }
  if (c->ssl != nullptr && !(c->flags & CONN_TLS_HANDSHAKE_DONE)) {
    const enum tls_result outcome = ns_tls_handshake(c);
    if (outcome == TLS_FAILED) c->flags |= CONN_CLOSE_NOW;
    return;
  }
  c->tls_unread = false;
  read_all(c, to_the_end);
}

/* --- Writing ------------------------------------------------------------------------------------------- */

/* Takes what was written off the send buffer, whose memory goes back once it is empty. */
static void remove_written(struct ns_connection *c, size_t written) {
  iobuf_remove(&c->send_iobuf, written);
  if (c->send_iobuf.len == 0) iobuf_free(&c->send_iobuf);
}

void ns_write_to_socket(struct ns_connection *c) {
  const size_t queued = c->send_iobuf.len;
  const int len = queued > INT_MAX ? INT_MAX : static_cast<int>(queued);
  int n;
  bool failed;
  if (c->ssl != nullptr) {
    enum tls_result outcome;
    n = ns_tls_write(c, c->send_iobuf.buf, len, &outcome);
    failed = n < 1 && outcome == TLS_FAILED;
    if (n < 1 && !failed) {
      c->send_blocked = true;
      return;
    }
  } else {
    n = static_cast<int>(send(c->sock, c->send_iobuf.buf, static_cast<size_t>(len), 0));
    failed = n == 0 || (n < 0 && !is_temporary(errno));
  }
  const size_t written = n > 0 ? static_cast<size_t>(n) : 0;
  c->send_blocked = written < queued;
  ns_call(c, NET_EV_SEND, &n);
  if (failed) {
    c->flags |= CONN_CLOSE_NOW;
  } else {
    remove_written(c, written);
  }
}

void ns_end_output(struct ns_connection *c) {
  ns_tls_goodbye(c);
  shutdown(c->sock, SHUT_WR);
}
