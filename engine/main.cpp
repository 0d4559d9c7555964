/* restful_api_engine: starts the engine and polls its server for ever. */
#include "engine/rest_web_request_hdr.h"

int main(void) {
  mg_server *server = start_engine();
  if (server == nullptr) return 2;
  for (;;) mg_poll_server(server, 1000);
}
