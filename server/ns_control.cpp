/* The control channel: a connected pair of loopback datagram sockets. Another thread writes a message to the
 * first; the loop reads it from the second, answers with one byte and runs the message's callback on every
 * connection. Being connected to each other, the two take nothing from anybody else. */
#include "server/ns_internal.h"

#include <arpa/inet.h>
#include <errno.h>
#include <string.h>
#include <unistd.h>

/* --- Socket pairs -------------------------------------------------------------------------------------- */

static bool bind_to_loopback(sock_t sock, struct sockaddr_in *bound) {
  *bound = {};
  bound->sin_family = AF_INET;
  bound->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t len = sizeof(*bound);
  auto *sa = reinterpret_cast<struct sockaddr *>(bound);
  return bind(sock, sa, len) == 0 && getsockname(sock, sa, &len) == 0;
}

static bool connect_to(sock_t sock, const struct sockaddr_in *peer) {
  return connect(sock, reinterpret_cast<const struct sockaddr *>(peer), sizeof(*peer)) == 0;
}

/* A datagram socket is reachable by everybody until it is connected: drops what arrived before. */
static void drop_received(sock_t sock) {
  char byte;
  while (recv(sock, &byte, 1, MSG_DONTWAIT) >= 0) {
  }
}

/* sp[0] is bound and sp[1] connected to it: connects sp[0] back. */
static bool finish_datagram_pair(sock_t sp[2]) {
  struct sockaddr_in second = {};
  socklen_t len = sizeof(second);
  if (getsockname(sp[1], reinterpret_cast<struct sockaddr *>(&second), &len) != 0) return false;
  if (!connect_to(sp[0], &second)) return false;
  drop_received(sp[0]);
  drop_received(sp[1]);
  return true;
}

/* sp[0] listens and sp[1] is connecting to it: the accepted socket takes the listener's place. */
static bool finish_stream_pair(sock_t sp[2]) {
  const sock_t accepted = accept4(sp[0], nullptr, nullptr, SOCK_CLOEXEC);
  if (accepted == -1) return false;
  close(sp[0]);
  sp[0] = accepted;
  return true;
}

static bool open_pair(sock_t sp[2], int sock_type) {
  struct sockaddr_in first;
  const bool stream = sock_type == SOCK_STREAM;
  sp[0] = socket(AF_INET, sock_type | SOCK_CLOEXEC, 0);
  if (sp[0] == -1 || !bind_to_loopback(sp[0], &first)) return false;
  if (stream && listen(sp[0], 1) != 0) return false;
  sp[1] = socket(AF_INET, sock_type | SOCK_CLOEXEC, 0);
  if (sp[1] == -1 || !connect_to(sp[1], &first)) return false;
  return stream ? finish_stream_pair(sp) : finish_datagram_pair(sp);
}

int ns_socketpair2(sock_t sp[2], int sock_type) {
  sp[0] = sp[1] = -1;
  if (open_pair(sp, sock_type)) return 1;
  if (sp[0] != -1) close(sp[0]);
  if (sp[1] != -1) close(sp[1]);
  sp[0] = sp[1] = -1;
  return 0;
}

int ns_socketpair(sock_t sp[2]) {
  return ns_socketpair2(sp, SOCK_STREAM);
}

/* --- Messages ------------------------------------------------------------------------------------------ */

static const size_t callback_size = offsetof(struct ctl_msg, message);

void ns_broadcast(struct ns_mgr *mgr, ns_callback_t callback, void *data, size_t len) {
  if (mgr->ctl[0] == -1 || data == nullptr || len > NS_MAX_BROADCAST) return;
  struct ctl_msg msg;
  msg.callback = callback;
  memcpy(msg.message, data, len);

  /* Two messages under way could overflow the socket's buffer, and the answer of the lost one never come. */
  pthread_mutex_lock(&mgr->ctl_lock);
  if (send(mgr->ctl[0], &msg, callback_size + len, 0) >= 0) {
    char answer;
    while (recv(mgr->ctl[0], &answer, 1, 0) < 0 && errno == EINTR) {
    }
  }
  pthread_mutex_unlock(&mgr->ctl_lock);
}

void ns_serve_control(struct ns_mgr *mgr) {
  struct ctl_msg msg;
  msg.message[0] = '\0';
  const ssize_t n = recv(mgr->ctl[1], &msg, sizeof(msg), MSG_DONTWAIT);
  if (n < 0) return;
  send(mgr->ctl[1], msg.message, 1, 0);
  if (static_cast<size_t>(n) < callback_size || msg.callback == nullptr) return;
  for (struct ns_connection *c = ns_next(mgr, nullptr); c != nullptr; c = ns_next(mgr, c)) {
    msg.callback(c, NET_EV_POLL, msg.message);
  }
}
