/* Small helpers around sockets and threads. */
#include "server/ns_conn.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <pthread.h>
#include <stdio.h>
#include <string.h>

void ns_set_non_blocking_mode(sock_t sock) {
  const int flags = fcntl(sock, F_GETFL, 0);
  if (flags != -1) fcntl(sock, F_SETFL, flags | O_NONBLOCK);
}

void ns_set_close_on_exec(sock_t sock) {
  fcntl(sock, F_SETFD, FD_CLOEXEC);
}

void ns_sock_to_str(sock_t sock, char *buf, size_t buf_len, int flags) {
  if (buf == nullptr || buf_len == 0) return;
  buf[0] = '\0';
  union socket_address sa = {};
  socklen_t len = sizeof(sa);
  if ((flags & 4 ? getpeername(sock, &sa.sa, &len) : getsockname(sock, &sa.sa, &len)) != 0) return;
  if (sa.sa.sa_family != AF_INET) return;
  if (flags & 1) {
    if (inet_ntop(AF_INET, &sa.sin.sin_addr, buf, static_cast<socklen_t>(buf_len)) == nullptr) buf[0] = '\0';
  }
  if (flags & 2) {
    const size_t used = strlen(buf);
    snprintf(buf + used, buf_len - used, "%s%d", flags & 1 ? ":" : "", ntohs(sa.sin.sin_port));
  }
}

void *ns_start_thread(void *(*fn)(void *), void *param) {
  pthread_t thread;
  pthread_attr_t attr;
  pthread_attr_init(&attr);
  pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
  pthread_create(&thread, &attr, fn, param);
  pthread_attr_destroy(&attr);
  return nullptr;
}
