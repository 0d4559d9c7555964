/* A program that uses the server for what it does by itself: its handler declines every request, and sends
 * back what comes over a WebSocket.
 *
 *   web_server OPTION=VALUE...    options of the server, such as document_root=/srv; "listening_port" among
 * them
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

static int echo(struct mg_connection *conn) {
  const int opcode = conn->wsbits & 15;
  if (opcode == WEBSOCKET_OPCODE_PONG) return MG_TRUE;
  const int answer = opcode == WEBSOCKET_OPCODE_PING ? WEBSOCKET_OPCODE_PONG : opcode;
  mg_websocket_write(conn, answer, conn->content, conn->content_len);
  return opcode == WEBSOCKET_OPCODE_CLOSE ? MG_FALSE : MG_TRUE;
}

static int handler(struct mg_connection *conn, enum mg_event event) {
  if (event == MG_AUTH) return MG_TRUE;
  if (event == MG_REQUEST && conn->is_websocket) return echo(conn);
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
