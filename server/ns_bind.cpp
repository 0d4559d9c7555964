/* Opening sockets: listeners and outbound connections. */
#include "server/ns_internal.h"

#include <errno.h>
#include <unistd.h>

enum { LISTEN_BACKLOG = 4096 };

/* An address in the syntax of ns_bind(), taken apart. */
struct address {
  union socket_address sa;
  int protocol; /* SOCK_STREAM or SOCK_DGRAM */
  int use_ssl;
  char cert[100];
  char ca[100];
};

static bool parse_address(const char *text, struct address *a) {
  *a = {};
  return ns_parse_address(text, &a->sa, &a->protocol, &a->use_ssl, a->cert, a->ca) > 0;
}

/* The connection of a socket just opened (-1: it could not be); null, with the socket closed, without memory.
 */
static struct ns_connection *wrap_or_close(struct ns_mgr *mgr, sock_t sock, ns_callback_t callback,
                                           void *user_data) {
  if (sock == -1) return nullptr;
  struct ns_connection *c = ns_wrap_sock(mgr, sock, callback, user_data);
  if (c == nullptr) close(sock);
  return c;
}

/* Binds and listens; *sa then holds the port that was bound. */
static bool start_listening(sock_t sock, union socket_address *sa, int protocol) {
  const int on = 1;
  socklen_t len = sizeof(sa->sin);
  return setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)) == 0 && bind(sock, &sa->sa, len) == 0 &&
         (protocol == SOCK_DGRAM || listen(sock, LISTEN_BACKLOG) == 0) &&
         getsockname(sock, &sa->sa, &len) == 0;
}

static sock_t open_listening_socket(union socket_address *sa, int protocol) {
  const sock_t sock = socket(AF_INET, protocol | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (sock == -1) return -1;
  if (start_listening(sock, sa, protocol)) return sock;
  close(sock);
  return -1;
}

struct ns_connection *ns_bind(struct ns_mgr *mgr, const char *text, ns_callback_t callback, void *user_data) {
  struct address a;
  if (!parse_address(text, &a)) return nullptr;
  if (a.use_ssl && a.cert[0] == '\0') return nullptr;
  const sock_t sock = open_listening_socket(&a.sa, a.protocol);
  struct ns_connection *c = wrap_or_close(mgr, sock, callback, user_data);
  if (c == nullptr) return nullptr;
  c->sa = a.sa;
  c->flags |= CONN_LISTENING;
  if (a.protocol == SOCK_DGRAM) c->flags |= CONN_UDP;
  if (a.use_ssl && (c->ssl_ctx = ns_tls_server_context(a.cert, a.ca)) == nullptr) {
    ns_close_conn(c);
    return nullptr;
  }
  return c;
}

/* A socket on its way to the peer; a datagram socket needs no way. */
static sock_t open_connecting_socket(const union socket_address *sa, int protocol) {
  const sock_t sock = socket(AF_INET, protocol | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (sock == -1 || protocol == SOCK_DGRAM) return sock;
  if (connect(sock, &sa->sa, sizeof(sa->sin)) == 0 || errno == EINPROGRESS) return sock;
  close(sock);
  return -1;
}

struct ns_connection *ns_connect(struct ns_mgr *mgr, const char *text, ns_callback_t callback,
                                 void *user_data) {
  struct address a;
  if (!parse_address(text, &a)) return nullptr;
  const sock_t sock = open_connecting_socket(&a.sa, a.protocol);
  struct ns_connection *c = wrap_or_close(mgr, sock, callback, user_data);
  if (c == nullptr) return nullptr;
  c->sa = a.sa;
  c->flags |= a.protocol == SOCK_DGRAM ? CONN_UDP : CONN_CONNECTING;
  if (a.use_ssl) c->ssl_ctx = ns_tls_client_context(a.cert, a.ca);
  if (a.use_ssl && (c->ssl_ctx == nullptr || !ns_tls_attach(c, c->ssl_ctx))) {
    ns_close_conn(c);
    return nullptr;
  }
  return c;
}
