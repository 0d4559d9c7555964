#include "server/http_conn.h"

void print_http_date(time_t, char *out) {
  out[0] = 0;
}

time_t parse_http_date(const char *) {
  return 0;
}
