/* Iterating a server's clients, and the calls with which another thread reaches into its loop. */
#include "server/http_conn.h"

#include <stdio.h>
#include <string.h>

/* Sockets that serve a client point to its record too. */
static bool serves_another(const struct ns_connection *nc) {
  return (nc->flags & (CONN_CGI_PIPE | CONN_PROXY_PEER)) != 0;
}

struct mg_connection *mg_next(struct mg_server *server, struct mg_connection *prev) {
  struct ns_connection *from = prev == nullptr ? nullptr : connection_of(prev)->ns_conn;
  struct ns_connection *nc = ns_next(&server->ns_mgr, from);
  while (nc != nullptr && serves_another(nc)) nc = nc->next;
  if (nc == nullptr || nc->user_data == nullptr) return nullptr;
  return &static_cast<connection *>(nc->user_data)->mg_conn;
}

void mg_wakeup_server(struct mg_server *server) {
  char nothing = '\0';
  ns_broadcast(&server->ns_mgr, nullptr, &nothing, 0);
}

/* In the loop, for each connection: the message is the handler's address, a blank and the text. */
static void deliver_wakeup(struct ns_connection *nc, int, void *message) {
  auto *conn = static_cast<connection *>(nc->user_data);
  auto *text = static_cast<char *>(message);
  void *handler = nullptr;
  int start = 0;
  if (conn == nullptr || serves_another(nc) || sscanf(text, "%p %n", &handler, &start) != 1 ||
      handler == nullptr)
    return;
  conn->mg_conn.callback_param = text + start;
  reinterpret_cast<mg_handler_t>(handler)(&conn->mg_conn, MG_POLL);
  conn->mg_conn.callback_param = nullptr; /* the text ends with the message */
}

void mg_wakeup_server_ex(struct mg_server *server, mg_handler_t cb, const char *fmt, ...) {
  char message[8191]; /* what a control message holds; a longer text is cut */
  const int start = snprintf(message, sizeof(message), "%p ", reinterpret_cast<void *>(cb));
  va_list ap;
  va_start(ap, fmt);
  vsnprintf(message + start, sizeof(message) - static_cast<size_t>(start), fmt, ap);
  va_end(ap);
  ns_broadcast(&server->ns_mgr, deliver_wakeup, message, strlen(message) + 1);
}
