/* CGI (RFC 3875): a program serves the request. What arrives of the body goes to its standard input, which
 * ends after the last byte of it; what it writes goes to the client behind a status line, until it ends.
 * Either side that takes nothing holds the other back, so that little is kept in memory. A client that goes
 * away ends its program. */
#include "server/http_conn.h"
#include "server/mg_child.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

/* --- The program's output ------------------------------------------------------------------------------ */

/* Queues bytes for either side. When there is no memory for them the client is given up. */
static void queue(struct connection *conn, struct ns_connection *to, const char *bytes, size_t len) {
  if (!append_piece(&to->send_iobuf, bytes, len)) conn->ns_conn->flags |= CONN_CLOSE_NOW;
}

static void write_piece(struct connection *conn, const struct vec *piece) {
  queue(conn, conn->ns_conn, piece->ptr, piece->len);
}

static void write_text(struct connection *conn, const char *text) {
  const struct vec piece = {text, strlen(text)};
  write_piece(conn, &piece);
}

/* The program's header lines, but for those that are meant for the server. */
static void write_headers(struct connection *conn, struct vec rest) {
  struct vec name, value;
  while (next_cgi_header(&rest, &name, &value)) {
    if (is_word(name, "Status")) continue;
    write_piece(conn, &name);
    write_text(conn, ": ");
    write_piece(conn, &value);
    write_text(conn, "\r\n");
  }
}

static void write_head(struct connection *conn, const struct cgi_head *head) {
  conn->mg_conn.status_code = head->status;
  mg_printf(&conn->mg_conn, "HTTP/1.1 %d ", head->status);
  if (head->reason.len > 0) {
    write_piece(conn, &head->reason);
  } else {
    write_text(conn, status_code_to_str(head->status));
  }
  write_text(conn, "\r\n");
  write_headers(conn, head->lines);
  write_text(conn, "\r\n");
}

static void refuse_output(struct connection *conn, const struct iobuf *output) {
  const int len = output->len < MG_ERROR_BODY_SIZE ? static_cast<int>(output->len) : MG_ERROR_BODY_SIZE;
  send_http_error(conn, 500, "CGI program sent malformed headers: [%.*s]", len,
                  output->buf == nullptr ? "" : output->buf);
}

/* Whether the head has been passed on, now or before. Otherwise it is incomplete, or it was malformed and the
 * request has been ended. */
static bool pass_head_on(struct connection *conn, struct iobuf *output, bool ended) {
  if (conn->mg_conn.status_code != 0) return true;
  struct cgi_head head;
  const enum cgi_head_state state = parse_cgi_head(output->buf, output->len, &head);
  if (state == CGI_HEAD_MALFORMED || (state == CGI_HEAD_INCOMPLETE && ended)) refuse_output(conn, output);
  if (state != CGI_HEAD_COMPLETE) return false;
  write_head(conn, &head);
  iobuf_remove(output, head.len);
  return true;
}

static bool has_body(const struct mg_connection *c) {
  return strcmp(c->request_method, "HEAD") != 0 && c->status_code != 204 && c->status_code != 304;
}

/* Passes on what the program has written; `ended`: there is no more. */
static void pass_output_on(struct connection *conn, struct ns_connection *pipe, bool ended) {
  struct iobuf *output = &pipe->recv_iobuf;
  if (!pass_head_on(conn, output, ended)) return;
  const struct vec body = {output->buf, output->len};
  if (has_body(&conn->mg_conn)) write_piece(conn, &body);
  iobuf_remove(output, output->len);
  hold_back(pipe, conn->ns_conn);
}

/* --- The pipe's events --------------------------------------------------------------------------------- */

static bool all_received(const struct connection *conn) {
  return conn->num_bytes_recv - conn->request_len >= conn->cl;
}

/* `sent` bytes of what waits have just been written to the program. */
static void on_input_taken(struct connection *conn, struct ns_connection *pipe, int sent) {
  if (sent <= 0) return;
  let_go(conn->ns_conn, pipe, sent);
  if (all_received(conn) && pipe->send_iobuf.len == static_cast<size_t>(sent)) ns_end_output(pipe);
}

/* The program's output has ended, and with it the request. */
static void on_output_end(struct connection *conn, struct ns_connection *pipe) {
  read_rest_of_output(pipe);
  pass_output_on(conn, pipe, true);
  if (pipe->user_data == nullptr) return; /* an error has ended it already */
  forget_pipe(pipe);
  close_local_endpoint(conn);
}

static void cgi_ev_handler(struct ns_connection *pipe, int event, void *event_data) {
  auto *conn = static_cast<connection *>(pipe->user_data);
  if (conn == nullptr) return; /* the client is gone, and so is this, soon */
  switch (event) {
  case NET_EV_RECV:
    pass_output_on(conn, pipe, false);
    break;
  case NET_EV_SEND:
    on_input_taken(conn, pipe, *static_cast<int *>(event_data));
    break;
  case NET_EV_POLL:
    close_pipe_of_ended_program(pipe);
    break;
  case NET_EV_CLOSE:
    on_output_end(conn, pipe);
    break;
  }
}

/* --- The request --------------------------------------------------------------------------------------- */

/* Makes the command of a program: the words of cgi_interpreter, if it is set, before its path. `words` is the
 * memory of the words. False when there are too many of them. */
static bool make_command(char *words, char *path, char *argv[MG_MAX_CHILD_ARGUMENTS]) {
  int argc = 0;
  char *rest = nullptr;
  for (char *word = strtok_r(words, " ", &rest); word != nullptr; word = strtok_r(nullptr, " ", &rest)) {
    if (argc == MG_MAX_CHILD_ARGUMENTS - 2) return false;
    argv[argc++] = word;
  }
  argv[argc++] = path;
  argv[argc] = nullptr;
  return true;
}

/* Starts the program of the path, which is absolute, in its own directory. */
static bool start_cgi_program(struct connection *conn, char *path, char *const environment[]) {
  const char *interpreter = conn->server->config_options[CGI_INTERPRETER];
  const char *slash = strrchr(path, '/');
  char *words = strdup(interpreter == nullptr ? "" : interpreter);
  char *directory = slash == nullptr ? nullptr : strndup(path, static_cast<size_t>(slash - path) + 1);
  char *argv[MG_MAX_CHILD_ARGUMENTS];
  const bool started = words != nullptr && directory != nullptr && make_command(words, path, argv) &&
                       start_program(conn, argv, environment, directory, cgi_ev_handler);
  free(words);
  free(directory);
  return started;
}

/* The error that a request for any program deserves, 0 when there is none. Without a connection there is
 * nothing that could wait for a program; a body of unknown length has no end that it could be told. */
static int request_error(const struct connection *conn) {
  if (conn->ns_conn->flags & CONN_UDP) return 501;
  if (mg_get_header(&conn->mg_conn, "Transfer-Encoding") != nullptr) return 411;
  if (conn->cl < 0) return 400;
  return running_children() >= MG_MAX_CHILDREN ? 503 : 0;
}

void open_cgi_endpoint(struct connection *conn, const struct file_target *target) {
  struct cgi_env_block environment;
  int error = request_error(conn);
  if (error == 0) error = prepare_cgi_environment(conn, target, &environment);
  if (error != 0) {
    send_http_error(conn, error, nullptr);
    return;
  }
  char path[2 * MG_MAX_PATH];
  make_absolute(target->path, path, sizeof(path));
  if (!start_cgi_program(conn, path, environment.vars)) {
    send_http_error(conn, 500, "start_process(%s) failed", target->path);
  }
}

void forward_to_cgi(struct connection *conn) {
  struct ns_connection *pipe = conn->endpoint.nc;
  struct iobuf *io = &conn->ns_conn->recv_iobuf;
  const auto buffered = static_cast<int64_t>(io->len);
  const int64_t passed_before = conn->num_bytes_recv - conn->request_len - buffered;
  const int64_t wanted = conn->cl - passed_before;
  const int64_t n = wanted < buffered ? wanted : buffered;
  const bool takes_input = pipe != nullptr && conn->ssi == nullptr;
  if (takes_input && n > 0) queue(conn, pipe, io->buf, static_cast<size_t>(n));
  iobuf_free(io);
  if (!takes_input) return;
  if (!all_received(conn)) {
    hold_back(conn->ns_conn, pipe);
  } else if (pipe->send_iobuf.len == 0) {
    ns_end_output(pipe);
  }
}

void release_cgi(struct connection *conn) {
  free_ssi_page(conn);
  release_program(conn);
}
