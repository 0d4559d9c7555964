/* The connection manager and the pass of its event loop, the heart of the server:
 *
 *   1. NET_EV_POLL to every connection; find out what each one waits for;
 *   2. wait;
 *   3. control channel, then reads and writes in list order;
 *   4. close what is due.
 *
 * The poller is epoll, level-triggered. A descriptor's registration is changed only when what it waits for
 * changes; an ordinary connection is registered once, for reading. Output is tried at once in the pass after
 * it was queued, and only when a write comes up short does the connection wait for writability. */
#include "server/ns_internal.h"

#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/epoll.h>
#include <unistd.h>

static const uint32_t read_events = EPOLLIN | EPOLLRDHUP;

/* --- Connections of the list --------------------------------------------------------------------------- */

struct ns_connection *ns_next(struct ns_mgr *mgr, struct ns_connection *prev) {
  return prev == nullptr ? mgr->active_connections : prev->next;
}

static void push_connection(struct ns_mgr *mgr, struct ns_connection *c) {
  c->next = mgr->active_connections;
  c->prev = nullptr;
  if (c->next != nullptr) c->next->prev = c;
  mgr->active_connections = c;
}

static void unlink_connection(struct ns_connection *c) {
  if (c->prev == nullptr) c->mgr->active_connections = c->next;
  if (c->prev != nullptr) c->prev->next = c->next;
  if (c->next != nullptr) c->next->prev = c->prev;
}

struct ns_connection *ns_wrap_sock(struct ns_mgr *mgr, sock_t sock, ns_callback_t callback, void *user_data) {
  auto *c = static_cast<ns_connection *>(calloc(1, sizeof(ns_connection)));
  if (c == nullptr) return nullptr;
  c->sock = sock;
  c->user_data = user_data;
  c->callback = callback;
  c->mgr = mgr;
  c->last_io_time = time(nullptr);
  push_connection(mgr, c);
  return c;
}

struct ns_connection *ns_add_sock(struct ns_mgr *mgr, sock_t sock, ns_callback_t callback, void *user_data) {
  struct ns_connection *c = ns_wrap_sock(mgr, sock, callback, user_data);
  if (c == nullptr) return nullptr;
  ns_set_non_blocking_mode(sock);
  ns_set_close_on_exec(sock);
  return c;
}

static void destroy_connection(struct ns_connection *c) {
  /* A forked child may still hold the descriptor, so closing it need not end its registration. */
  if (c->poll_events != 0) epoll_ctl(c->mgr->poller, EPOLL_CTL_DEL, c->sock, nullptr);
  ns_tls_goodbye(c);
  if (c->sock != -1) close(c->sock);
  iobuf_free(&c->recv_iobuf);
  iobuf_free(&c->send_iobuf);
  ns_tls_free(c);
  free(c);
}

void ns_close_conn(struct ns_connection *c) {
  struct ns_mgr *mgr = c->mgr;
  ns_call(c, NET_EV_CLOSE, nullptr);
  unlink_connection(c);
  destroy_connection(c);
  mgr->accept_resume = 0; /* a descriptor is free again */
}

/* --- Manager ------------------------------------------------------------------------------------------- */

static bool open_poller(struct ns_mgr *mgr) {
  mgr->poller = epoll_create1(EPOLL_CLOEXEC);
  if (mgr->poller == -1) return false;
  struct epoll_event ev = {};
  ev.events = EPOLLIN; /* the null pointer in ev.data stands for the control channel */
  if (epoll_ctl(mgr->poller, EPOLL_CTL_ADD, mgr->ctl[1], &ev) == 0) return true;
  close(mgr->poller);
  mgr->poller = -1;
  return false;
}

static void pause_between_attempts(void) {
  poll(nullptr, 0, 10);
}

void ns_mgr_init(struct ns_mgr *mgr, void *user_data) {
  *mgr = {};
  mgr->ctl[0] = mgr->ctl[1] = -1;
  mgr->poller = -1;
  mgr->user_data = user_data;
  pthread_mutex_init(&mgr->ctl_lock, nullptr);
  signal(SIGPIPE, SIG_IGN);
  while (!ns_socketpair2(mgr->ctl, SOCK_DGRAM)) pause_between_attempts();
  while (!open_poller(mgr)) pause_between_attempts();
  ns_tls_init();
}

static void close_control_channel(struct ns_mgr *mgr) {
  if (mgr->ctl[0] != -1) {
    shutdown(mgr->ctl[0], SHUT_RDWR); /* releases a thread that still waits for its answer */
    close(mgr->ctl[0]);
  }
  if (mgr->ctl[1] != -1) close(mgr->ctl[1]);
  mgr->ctl[0] = mgr->ctl[1] = -1;
}

void ns_mgr_free(struct ns_mgr *mgr) {
  if (mgr == nullptr) return;
  ns_mgr_poll(mgr, 0);
  close_control_channel(mgr);
  struct ns_connection *next;
  for (struct ns_connection *c = mgr->active_connections; c != nullptr; c = next) {
    next = c->next;
    ns_close_conn(c);
  }
  if (mgr->poller != -1) close(mgr->poller);
  mgr->poller = -1;
  pthread_mutex_destroy(&mgr->ctl_lock);
}

/* --- 1. Before the wait -------------------------------------------------------------------------------- */

/* Accepting is paused when descriptors or memory have run out; until it resumes, the listeners are not
 * polled, as their waiting clients would only make the loop spin. Listeners are asked about last, as the
 * oldest in the list: a client that this very pass closes makes them accept again. */
static bool accepting(struct ns_mgr *mgr, time_t now) {
  if (now >= mgr->accept_resume) mgr->accept_resume = 0;
  return mgr->accept_resume == 0;
}

static bool has_output_to_write(const struct ns_connection *c) {
  return c->send_iobuf.len > 0 && !(c->flags & (CONN_CONNECTING | CONN_HOLD_OUTPUT));
}

static uint32_t wanted_events(const struct ns_connection *c, time_t now) {
  const uint32_t flags = c->flags;
  if ((flags & (CONN_LISTENING | CONN_UDP)) == CONN_LISTENING && !accepting(c->mgr, now)) return 0;
  uint32_t wanted = 0;
  if (!(flags & CONN_WANT_WRITE)) wanted |= read_events;
  if ((flags & CONN_CONNECTING) && !(flags & CONN_WANT_READ)) wanted |= EPOLLOUT;
  if (c->send_blocked && has_output_to_write(c)) wanted |= EPOLLOUT;
  return wanted;
}

static void register_events(struct ns_connection *c, uint32_t wanted) {
  if (wanted == c->poll_events || c->sock == -1) return;
  const int op = c->poll_events == 0 ? EPOLL_CTL_ADD : wanted == 0 ? EPOLL_CTL_DEL : EPOLL_CTL_MOD;
  struct epoll_event ev = {};
  ev.events = wanted;
  ev.data.ptr = c;
  if (epoll_ctl(c->mgr->poller, op, c->sock, &ev) == 0) c->poll_events = wanted;
}

/* Returns whether some connection can go on without waiting; its `ready` then says how. */
static bool prepare_connection(struct ns_connection *c, time_t now) {
  if (!(c->flags & (CONN_CONNECTING | CONN_LISTENING))) ns_call(c, NET_EV_POLL, &now);
  if (c->flags & CONN_CLOSE_NOW) {
    ns_close_conn(c);
    return false;
  }
  register_events(c, wanted_events(c, now));
  c->ready = 0;
  if (has_output_to_write(c) && !c->send_blocked) c->ready |= EPOLLOUT;
  if (c->tls_unread && !(c->flags & CONN_WANT_WRITE)) c->ready |= EPOLLIN;
  return c->ready != 0;
}

static bool prepare_connections(struct ns_mgr *mgr, time_t now) {
  bool some_ready = false;
  struct ns_connection *next;
  for (struct ns_connection *c = mgr->active_connections; c != nullptr; c = next) {
    next = c->next;
    if (prepare_connection(c, now)) some_ready = true;
  }
  return some_ready;
}

/* --- 2. The wait --------------------------------------------------------------------------------------- */

struct wait_result {
  bool any;     /* something is ready */
  bool control; /* a control message waits */
};

static struct wait_result wait_for_events(struct ns_mgr *mgr, int milliseconds) {
  struct wait_result result = {};
  struct epoll_event events[512]; /* what does not fit is reported in the next pass */
  const int n = epoll_wait(mgr->poller, events, sizeof(events) / sizeof(events[0]), milliseconds);
  for (int i = 0; i < n; i++) {
    auto *c = static_cast<ns_connection *>(events[i].data.ptr);
    if (c == nullptr) {
      result.control = true;
    } else {
      c->ready |= events[i].events;
    }
    result.any = true;
  }
  return result;
}

static int wait_time(const struct ns_mgr *mgr, bool some_ready, int milliseconds) {
  if (some_ready || milliseconds < 0) return 0;
  if (mgr->accept_resume != 0 && milliseconds > 1000) return 1000; /* to see that accepting may resume */
  return milliseconds;
}

/* --- 3. Input and output ------------------------------------------------------------------------------- */

static bool is_readable(const struct ns_connection *c) {
  if (c->ready & read_events) return true;
  /* An error or hang-up is reported unasked. Whoever waits for writability sees it there. */
  return (c->ready & (EPOLLERR | EPOLLHUP)) != 0 && !(c->poll_events & EPOLLOUT);
}

static bool is_writable(const struct ns_connection *c) {
  if (c->ready & EPOLLOUT) return true;
  return (c->ready & (EPOLLERR | EPOLLHUP)) != 0 && (c->poll_events & EPOLLOUT) != 0;
}

static void serve_readable(struct ns_connection *c, bool to_the_end, time_t now) {
  if (c->flags & CONN_LISTENING) {
    if (c->flags & CONN_UDP) {
      ns_handle_udp(c);
    } else {
      accept_conn(c, now);
    }
    return;
  }
  c->last_io_time = now;
  ns_read_from_socket(c, to_the_end);
}

static void serve_writable(struct ns_connection *c, time_t now) {
  if (c->flags & CONN_CONNECTING) {
    ns_read_from_socket(c, false);
  } else if (has_output_to_write(c)) {
    c->last_io_time = now;
    ns_write_to_socket(c);
  }
}

static void serve_connections(struct ns_mgr *mgr, time_t now) {
  struct ns_connection *next;
  for (struct ns_connection *c = mgr->active_connections; c != nullptr; c = next) {
    next = c->next;
    if (c->ready == 0) continue;
    const bool writable = is_writable(c); /* before reading, which may queue output for the next pass */
    const bool to_the_end = (c->ready & (EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0;
    if (is_readable(c)) serve_readable(c, to_the_end, now);
    if (writable) serve_writable(c, now);
    c->ready = 0;
  }
}

/* --- 4. Closing ---------------------------------------------------------------------------------------- */

static void close_finished(struct ns_mgr *mgr) {
  struct ns_connection *next;
  for (struct ns_connection *c = mgr->active_connections; c != nullptr; c = next) {
    next = c->next;
    const bool drained = c->send_iobuf.len == 0 && (c->flags & CONN_FINISHED_SENDING);
    if ((c->flags & CONN_CLOSE_NOW) || drained) ns_close_conn(c);
  }
}

time_t ns_mgr_poll(struct ns_mgr *mgr, int milliseconds) {
  time_t now = time(nullptr);
  const bool some_ready = prepare_connections(mgr, now);
  const struct wait_result waited = wait_for_events(mgr, wait_time(mgr, some_ready, milliseconds));
  if (waited.any || some_ready) {
    now = time(nullptr);
    if (waited.control) ns_serve_control(mgr);
    serve_connections(mgr, now);
  }
  close_finished(mgr);
  return now;
}
