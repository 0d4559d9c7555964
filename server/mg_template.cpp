/* Templates: texts in which an application fills in keywords. */
#include "server/http_conn.h"

#include <limits.h>
#include <string.h>

static void write_all(struct mg_connection *conn, const char *text, size_t len) {
  for (; len > INT_MAX; text += INT_MAX, len -= INT_MAX) mg_write(conn, text, INT_MAX);
  mg_write(conn, text, static_cast<int>(len));
}

/* The first entry whose keyword the text begins with; null when there is none. */
static const struct mg_expansion *expansion_at(const char *text, const struct mg_expansion *expansions) {
  if (expansions == nullptr) return nullptr;
  for (const struct mg_expansion *e = expansions; e->keyword != nullptr; e++) {
    const size_t len = strlen(e->keyword);
    if (len > 0 && strncmp(text, e->keyword, len) == 0) return e;
  }
  return nullptr;
}

void mg_template(struct mg_connection *conn, const char *text, const struct mg_expansion *expansions) {
  const char *begin = text; /* of what has not been copied yet */
  while (*text != '\0') {
    const struct mg_expansion *expansion = expansion_at(text, expansions);
    if (expansion == nullptr) {
      text++;
      continue;
    }
    write_all(conn, begin, static_cast<size_t>(text - begin));
    expansion->handler(conn);
    text += strlen(expansion->keyword);
    begin = text;
  }
  write_all(conn, begin, static_cast<size_t>(text - begin));
}
