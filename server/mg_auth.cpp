#include "server/http_conn.h"

bool is_authorised(struct connection *, const char *) {
  return false;
}

bool is_authorised_for_dav(struct connection *) {
  return false;
}
