/* Parsing a request head: finding its end, taking it apart in place, normalising the URI. Everything here
 * reads bytes that came from outside. */
#include "server/http_conn.h"

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

/* --- Finding the end ----------------------------------------------------------------------------------- */

static bool may_stand_in_head(unsigned char c) {
  return (c >= 0x20 && c != 0x7f) || c == '\r' || c == '\n';
}

/* Whether the line feed at buf[i] ends an empty line, so that "\n\n" or "\n\r\n" has been read. */
static bool ends_empty_line(const char *buf, int i) {
  if (i >= 1 && buf[i - 1] == '\n') return true;
  return i >= 2 && buf[i - 1] == '\r' && buf[i - 2] == '\n';
}

int get_request_len_from(const char *buf, int buf_len, int scanned) {
  for (int i = scanned; i < buf_len; i++) {
    if (!may_stand_in_head(static_cast<unsigned char>(buf[i]))) return -1;
    if (buf[i] == '\n' && ends_empty_line(buf, i)) return i + 1;
  }
  return 0;
}

int get_request_len(const char *buf, int buf_len) {
  return get_request_len_from(buf, buf_len, 0);
}

/* --- Taking it apart ----------------------------------------------------------------------------------- */

/* Cuts the text at *rest before the first of the delimiters and moves *rest behind the whole run of them,
 * which becomes NUL bytes. Returns the text cut off. */
static char *skip(char **rest, const char *delimiters) {
  char *word = *rest;
  char *p = word + strcspn(word, delimiters);
  const size_t run = strspn(p, delimiters);
  memset(p, 0, run);
  *rest = p + run;
  return word;
}

static bool is_valid_method(const char *word) {
  static const char *const methods[] = {"GET",    "POST",    "HEAD",     "CONNECT", "PUT",
                                        "DELETE", "OPTIONS", "PROPFIND", "MKCOL"};
  for (const char *method : methods) {
    if (strcmp(word, method) == 0) return true;
  }
  return false;
}

/* After each slash drops the whole run of slashes, backslashes and ".." pairs that follows. */
static void normalise_uri(char *uri) {
  char *out = uri;
  for (const char *in = uri; *in != '\0';) {
    const char c = *in++;
    *out++ = c;
    if (c != '/' && c != '\\') continue;
    while (*in == '/' || *in == '\\' || (in[0] == '.' && in[1] == '.')) in += *in == '.' ? 2 : 1;
  }
  *out = '\0';
}

static void parse_headers(char *rest, struct mg_connection *conn) {
  for (int i = 0; i < MG_MAX_HEADERS; i++) {
    const char *name = skip(&rest, ": ");
    const char *value = skip(&rest, "\r\n");
    if (name[0] == '\0') return;
    conn->http_headers[i] = {name, value};
    conn->num_headers = i + 1;
  }
}

static void clear_request_fields(struct mg_connection *conn) {
  conn->request_method = conn->uri = conn->http_version = conn->query_string = nullptr;
  conn->num_headers = 0;
}

const char *split_uri(char *uri) {
  char *question_mark = strchr(uri, '?');
  if (question_mark != nullptr) *question_mark = '\0';
  const size_t len = strlen(uri);
  mg_url_decode(uri, len, uri, len + 1, 0);
  if (uri[0] == '/' || uri[0] == '.') normalise_uri(uri);
  return question_mark == nullptr ? nullptr : question_mark + 1;
}

int parse_http_message(char *buf, int len, struct mg_connection *conn) {
  clear_request_fields(conn);
  if (len < 1) return -1;
  buf[len - 1] = '\0';
  char *rest = buf;
  while (isspace(static_cast<unsigned char>(*rest))) rest++;
  const char *method = skip(&rest, " ");
  char *uri = skip(&rest, " ");
  const char *version = skip(&rest, "\r\n");
  conn->request_method = method;
  conn->uri = uri;
  conn->http_version = version;

  if (is_valid_method(method)) {
    if (strncmp(version, "HTTP/", 5) != 0) return -1;
    conn->http_version += 5;
  } else if (strncmp(method, "HTTP/", 5) == 0) {
    conn->status_code = atoi(uri); /* a response: version, status, reason */
  } else {
    return -1;
  }
  parse_headers(rest, conn);
  conn->query_string = split_uri(uri);
  return strlen(uri) >= MG_MAX_URI_SIZE ? -1 : len;
}

/* --- Valid forms of a URI ------------------------------------------------------------------------------ */

static bool is_host_and_port(const char *uri) {
  const char *colon = strrchr(uri, ':');
  if (colon == nullptr || colon == uri || colon[1] == '\0') return false;
  return strspn(colon + 1, "0123456789") == strlen(colon + 1);
}

bool is_valid_uri(const char *uri) {
  return uri[0] == '/' || strcmp(uri, "*") == 0 || strncasecmp(uri, "http", 4) == 0 || is_host_and_port(uri);
}
