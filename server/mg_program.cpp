/* Programs that serve a client, CGI programs and commands of server-side includes: the pipe to one, a
 * connection of its own (CONN_CGI_PIPE) whose user_data is the client's record, null once it is detached.
 *
 * The pipe is a pair of local sockets and not of loopback ones: what a program has written is never lost when
 * it ends with input unread, and no stranger can connect to it. */
#include "server/http_conn.h"
#include "server/mg_child.h"

#include <errno.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

bool append_piece(struct iobuf *io, const void *bytes, size_t len) {
  if (len > io->size - io->len) iobuf_resize(io, 2 * io->size + len);
  return iobuf_append(io, bytes, len) == len;
}

/* A manager that is being freed has no control channel any more: it would not close another connection. */
static bool is_closing_down(const struct ns_mgr *mgr) {
  return mgr->ctl[0] == -1;
}

static struct ns_connection *wrap_pipe(struct connection *conn, int sock, ns_callback_t callback) {
  struct ns_connection *pipe = ns_add_sock(conn->ns_conn->mgr, sock, callback, conn);
  if (pipe == nullptr) {
    close(sock);
    return nullptr;
  }
  pipe->flags |= CONN_CGI_PIPE;
  return pipe;
}

static void drop_pipe(struct ns_connection *pipe) {
  pipe->user_data = nullptr;
  pipe->flags |= CONN_CLOSE_NOW;
}

bool start_program(struct connection *conn, char *const argv[], char *const environment[],
                   const char *directory, ns_callback_t callback) {
  int sp[2];
  errno = ECANCELED;
  if (is_closing_down(conn->ns_conn->mgr)) return false;
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sp) != 0) return false;
  struct ns_connection *pipe = wrap_pipe(conn, sp[0], callback);
  const pid_t pid = pipe == nullptr ? -1 : start_child(argv, environment, directory, sp[1]);
  const int error = errno;
  close(sp[1]);
  if (pid == -1) {
    if (pipe != nullptr) drop_pipe(pipe);
    errno = error;
    return false;
  }
  conn->endpoint.nc = pipe;
  conn->endpoint_type = EP_CGI;
  conn->cgi_pid = pid;
  return true;
}

void forget_pipe(struct ns_connection *pipe) {
  static_cast<connection *>(pipe->user_data)->endpoint.nc = nullptr;
  pipe->user_data = nullptr;
}

void close_pipe_of_ended_program(struct ns_connection *pipe) {
  const auto *conn = static_cast<const connection *>(pipe->user_data);
  const bool held_back = (pipe->flags & CONN_WANT_WRITE) != 0;
  if (conn != nullptr && !held_back && !is_running_child(conn->cgi_pid)) pipe->flags |= CONN_CLOSE_NOW;
}

void read_rest_of_output(struct ns_connection *pipe) {
  int left = 0;
  if (ioctl(pipe->sock, FIONREAD, &left) != 0) return;
  while (left > 0) {
    char buf[8192];
    const ssize_t n = recv(pipe->sock, buf, sizeof(buf), MSG_DONTWAIT);
    if (n <= 0) return;
    append_piece(&pipe->recv_iobuf, buf, static_cast<size_t>(n));
    left -= static_cast<int>(n);
  }
}

void release_program(struct connection *conn) {
  struct ns_connection *pipe = conn->endpoint.nc;
  if (pipe != nullptr) drop_pipe(pipe);
  if (pipe != nullptr || is_closing_down(conn->ns_conn->mgr)) {
    end_child(conn->cgi_pid);
  } else {
    let_child_finish(conn->cgi_pid);
  }
  conn->endpoint.nc = nullptr;
  conn->cgi_pid = 0;
}
