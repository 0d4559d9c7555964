/* The access log: one line per answered request. */
#include "server/http_conn.h"

#include <stdio.h>
#include <string.h>
#include <sys/file.h>
#include <time.h>

static void write_header_field(FILE *file, const struct mg_connection *c, const char *name) {
  const char *value = mg_get_header(c, name);
  if (value == nullptr) {
    fputs(" -", file);
  } else {
    fprintf(file, " \"%s\"", value);
  }
}

static void write_line(FILE *file, const struct mg_connection *c) {
  const char *authorization = mg_get_header(c, "Authorization");
  char user[256], date[64], uri[3 * MG_MAX_URI_SIZE] = "-";
  if (mg_parse_header(authorization, "username", user, sizeof(user)) <= 0) strcpy(user, "-");
  const time_t now = time(nullptr);
  struct tm local;
  strftime(date, sizeof(date), "%d/%b/%Y:%H:%M:%S %z", localtime_r(&now, &local));
  if (c->uri != nullptr) print_uri(c->uri, uri, sizeof(uri));

  fprintf(file, "%s - %s [%s] \"%s %s%s%s HTTP/%s\" %d 0", c->remote_ip, user, date,
          c->request_method == nullptr ? "-" : c->request_method, uri, c->query_string == nullptr ? "" : "?",
          c->query_string == nullptr ? "" : c->query_string,
          c->http_version == nullptr ? "" : c->http_version, c->status_code);
  write_header_field(file, c, "Referer");
  write_header_field(file, c, "User-Agent");
  fputc('\n', file);
}

void log_access(const struct connection *conn, const char *path) {
  FILE *file = fopen(path, "a+e");
  if (file == nullptr) return;
  flock(fileno(file), LOCK_EX); /* other servers may write to the same file */
  write_line(file, &conn->mg_conn);
  fflush(file);
  flock(fileno(file), LOCK_UN);
  fclose(file);
}
