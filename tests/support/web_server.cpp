/* A program that uses the server for what it does by itself: its handler declines every request, and sends
 * back each message that comes over a WebSocket.
 *
 *   web_server OPTION=VALUE...    options of the server, such as document_root=/srv; "listening_port" is one
 *
 * It prints the port bound last on a line of its own and serves until it is told to end (SIGTERM). */
#include "server/tidewell.h"

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static volatile sig_atomic_t ended = 0;

static void end(int) {
  ended = 1;
}

/* The fragments of a message whose last one has not come. */
struct fragments {
  int opcode; /* of the first */
  size_t len;
  char *bytes;
};

static void forget_fragments(struct mg_connection *conn) {
  auto *begun = static_cast<struct fragments *>(conn->connection_param);
  if (begun != nullptr) free(begun->bytes);
  free(begun);
  conn->connection_param = nullptr;
}

/* Keeps a fragment, and sends the whole message back with the last. */
static void echo_fragment(struct mg_connection *conn, bool last) {
  if (conn->connection_param == nullptr) {
    auto *begun = static_cast<struct fragments *>(calloc(1, sizeof(struct fragments)));
    begun->opcode = conn->wsbits & 15;
    conn->connection_param = begun;
  }
  auto *message = static_cast<struct fragments *>(conn->connection_param);
  message->bytes = static_cast<char *>(realloc(message->bytes, message->len + conn->content_len + 1));
  memcpy(message->bytes + message->len, conn->content, conn->content_len);
  message->len += conn->content_len;
  if (!last) return;
  mg_websocket_write(conn, message->opcode, message->bytes, message->len);
  forget_fragments(conn);
}

static int echo(struct mg_connection *conn) {
  const int opcode = conn->wsbits & 15;
  const bool last = (conn->wsbits & 0x80) != 0;
  if (opcode == WEBSOCKET_OPCODE_PONG) return MG_TRUE;
  if (opcode == WEBSOCKET_OPCODE_CONTINUATION || !last) {
    echo_fragment(conn, last);
    return MG_TRUE;
  }
  const int answer = opcode == WEBSOCKET_OPCODE_PING ? WEBSOCKET_OPCODE_PONG : opcode;
  mg_websocket_write(conn, answer, conn->content, conn->content_len);
  return opcode == WEBSOCKET_OPCODE_CLOSE ? MG_FALSE : MG_TRUE;
}

static int handler(struct mg_connection *conn, enum mg_event event) {
  if (event == MG_AUTH) return MG_TRUE;
  if (event == MG_REQUEST && conn->is_websocket) return echo(conn);
  if (event == MG_CLOSE) forget_fragments(conn);
  return MG_FALSE;
}

/* Sets the option that an argument names. */
static bool set_option(struct mg_server *server, char *argument) {
  char *equals = strchr(argument, '=');
  const char *error = "no \"=\"";
  if (equals != nullptr) {
    *equals = '\0';
    error = mg_set_option(server, argument, equals + 1);
  }
  if (error != nullptr) fprintf(stderr, "%s: %s\n", argument, error);
  return error == nullptr;
}

int main(int argc, char **argv) {
  signal(SIGTERM, end);
  struct mg_server *server = mg_create_server(nullptr, handler);
  for (int i = 1; i < argc; i++) {
    if (!set_option(server, argv[i])) return EXIT_FAILURE;
  }
  printf("%s\n", mg_get_option(server, "listening_port"));
  fflush(stdout);
  while (!ended) mg_poll_server(server, 100);
  mg_destroy_server(&server);
  return EXIT_SUCCESS;
}
