#include "server/http_conn.h"

int mg_match_prefix(const char *, int, const char *) {
  return -1;
}

bool option_matches(const struct mg_server *, enum mg_option, const char *) {
  return false;
}
