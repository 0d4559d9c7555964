#include "server/http_conn.h"

void mg_template(struct mg_connection *, const char *, const struct mg_expansion *) {}
