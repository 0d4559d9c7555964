/* The environment of a CGI program (RFC 3875 section 4.1): what the request and the server say about
 * themselves, as NAME=value texts in a block of fixed size. A request whose variables do not fit is refused,
 * as a program that sees only a part of it would do something else than what was asked for. */
#include "server/http_conn.h"

#include <assert.h>
#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

#define ARRAY_SIZE(array) (sizeof(array) / sizeof((array)[0]))

/* --- The block ----------------------------------------------------------------------------------------- */

/* Prints behind what is used of the block. Returns the length, -1 when it does not fit. */
__attribute__((format(printf, 2, 0))) static int print_at_end(struct cgi_env_block *blk, const char *fmt,
                                                              va_list ap) {
  const size_t left = sizeof(blk->buf) - static_cast<size_t>(blk->len);
  const int n = vsnprintf(blk->buf + blk->len, left, fmt, ap);
  return n < 0 || static_cast<size_t>(n) >= left ? -1 : n;
}

bool add_variable(struct cgi_env_block *blk, const char *fmt, ...) {
  if (blk->nvars + 1 >= CGI_ENV_VARS) return false; /* the last pointer ends the list */
  va_list ap;
  va_start(ap, fmt);
  const int n = print_at_end(blk, fmt, ap);
  va_end(ap);
  if (n < 0) return false;
  blk->vars[blk->nvars++] = blk->buf + blk->len;
  blk->len += n + 1;
  return true;
}

/* Appends to the variable added last. */
__attribute__((format(printf, 2, 3))) static bool extend_variable(struct cgi_env_block *blk, const char *fmt,
                                                                  ...) {
  blk->len--; /* over the terminator */
  va_list ap;
  va_start(ap, fmt);
  const int n = print_at_end(blk, fmt, ap);
  va_end(ap);
  blk->len += n < 0 ? 1 : n + 1;
  return n >= 0;
}

/* --- The server ---------------------------------------------------------------------------------------- */

void make_absolute(const char *path, char *out, size_t size) {
  char directory[MG_MAX_PATH] = "";
  const bool relative = path[0] != '\0' && path[0] != '/';
  if (relative && getcwd(directory, sizeof(directory)) == nullptr) directory[0] = '\0';
  snprintf(out, size, "%s%s%s", directory, directory[0] == '\0' ? "" : "/", path);
}

/* Adds a variable whose value is a path and what follows it. The program runs in another directory, so the
 * path must not depend on that. */
static bool add_path(struct cgi_env_block *blk, const char *name, const char *path, const char *rest) {
  char absolute[2 * MG_MAX_PATH];
  make_absolute(path, absolute, sizeof(absolute));
  return add_variable(blk, "%s=%s%s", name, absolute, rest);
}

/* The name is the one that the server was given: what the client calls it is in HTTP_HOST. */
static bool add_server(struct cgi_env_block *blk, const struct file_target *target) {
  char *const *options = blk->conn->server->config_options;
  const char *name = options[AUTH_DOMAIN] == nullptr ? blk->conn->mg_conn.local_ip : options[AUTH_DOMAIN];
  const char *root = options[DOCUMENT_ROOT] == nullptr ? target->root : options[DOCUMENT_ROOT];
  return add_variable(blk, "SERVER_NAME=%s", name) && add_path(blk, "SERVER_ROOT", root, "") &&
         add_path(blk, "DOCUMENT_ROOT", root, "") &&
         add_variable(blk, "SERVER_SOFTWARE=%s/%s", "Tidewell", KESTREL_VERSION) &&
         add_variable(blk, "GATEWAY_INTERFACE=CGI/1.1") && add_variable(blk, "SERVER_PROTOCOL=HTTP/1.1") &&
         add_variable(blk, "REDIRECT_STATUS=200");
}

static bool add_inherited(struct cgi_env_block *blk) {
  static const char *const names[] = {"PATH", "TEMP", "TMPDIR", "PERLLIB", "TIDEWELL_CGI", "LD_LIBRARY_PATH"};
  for (const char *name : names) {
    const char *value = getenv(name);
    if (value != nullptr && !add_variable(blk, "%s=%s", name, value)) return false;
  }
  return true;
}

/* --- The request --------------------------------------------------------------------------------------- */

/* The URI's path up to the program: without what follows it, and with its name when the URI is that of the
 * directory whose index it is. */
static bool add_script_name(struct cgi_env_block *blk, const struct file_target *target) {
  const char *uri = blk->conn->mg_conn.uri;
  const char *path_info = blk->conn->path_info == nullptr ? "" : blk->conn->path_info;
  const size_t uri_len = strlen(uri), info_len = strlen(path_info);
  const bool at_end = info_len <= uri_len && strcmp(uri + uri_len - info_len, path_info) == 0;
  const size_t len = at_end ? uri_len - info_len : uri_len;
  const char *slash = strrchr(target->path, '/');
  const bool is_index = len > 0 && uri[len - 1] == '/' && slash != nullptr;
  return add_variable(blk, "SCRIPT_NAME=%.*s%s", static_cast<int>(len), uri, is_index ? slash + 1 : "");
}

/* The URI as a client would write it. */
static bool add_request_uri(struct cgi_env_block *blk) {
  const struct mg_connection *c = &blk->conn->mg_conn;
  char uri[3 * MG_MAX_URI_SIZE] = "";
  append_url_encoded(uri, sizeof(uri), c->uri);
  const bool has_query = c->query_string != nullptr;
  return add_variable(blk, "REQUEST_URI=%s%s%s", uri, has_query ? "?" : "", has_query ? c->query_string : "");
}

static bool add_path_info(struct cgi_env_block *blk, const struct file_target *target) {
  const char *path_info = blk->conn->path_info;
  if (path_info == nullptr || path_info[0] == '\0') return true;
  const char *root = blk->conn->server->config_options[DOCUMENT_ROOT];
  return add_variable(blk, "PATH_INFO=%s", path_info) &&
         add_path(blk, "PATH_TRANSLATED", root == nullptr ? target->root : root, path_info);
}

static bool add_request(struct cgi_env_block *blk, const struct file_target *target) {
  const struct mg_connection *c = &blk->conn->mg_conn;
  return add_variable(blk, "REQUEST_METHOD=%s", c->request_method) &&
         add_variable(blk, "REMOTE_ADDR=%s", c->remote_ip) &&
         add_variable(blk, "REMOTE_PORT=%d", c->remote_port) && add_request_uri(blk) &&
         add_script_name(blk, target) && add_path_info(blk, target) &&
         add_path(blk, "SCRIPT_FILENAME", target->path, "") &&
         add_variable(blk, "HTTPS=%s", blk->conn->ns_conn->ssl == nullptr ? "off" : "on") &&
         add_variable(blk, "QUERY_STRING=%s", c->query_string == nullptr ? "" : c->query_string);
}

/* --- Its headers --------------------------------------------------------------------------------------- */

/* Only names that no other name is turned into become variables; so "X_Forwarded" cannot pass for
 * "X-Forwarded". A header Proxy would become HTTP_PROXY, which makes programs send their own requests through
 * a server of the client's choice. */
static bool becomes_variable(const char *name) {
  for (const char *p = name; *p != '\0'; p++) {
    if (!isalnum(static_cast<unsigned char>(*p)) && *p != '-') return false;
  }
  return name[0] != '\0' && strcasecmp(name, "Proxy") != 0;
}

static void make_variable_name(char *variable) {
  for (char *p = variable; *p != '='; p++) {
    *p = *p == '-' ? '_' : static_cast<char>(toupper(static_cast<unsigned char>(*p)));
  }
}

static bool came_before(const struct mg_connection *c, int i) {
  for (int k = 0; k < i; k++) {
    if (strcasecmp(c->http_headers[k].name, c->http_headers[i].name) == 0) return true;
  }
  return false;
}

/* Adds a header, and as parts of the same value those further down that have the same name. */
static bool add_header(struct cgi_env_block *blk, int i) {
  const struct mg_connection *c = &blk->conn->mg_conn;
  const char *name = c->http_headers[i].name;
  if (!becomes_variable(name) || came_before(c, i)) return true;
  if (!add_variable(blk, "HTTP_%s=%s", name, c->http_headers[i].value)) return false;
  make_variable_name(blk->vars[blk->nvars - 1]);
  const char *separator = strcasecmp(name, "Cookie") == 0 ? "; " : ", ";
  for (int k = i + 1; k < c->num_headers; k++) {
    const struct mg_header *other = &c->http_headers[k];
    if (strcasecmp(other->name, name) != 0) continue;
    if (!extend_variable(blk, "%s%s", separator, other->value)) return false;
  }
  return true;
}

static bool add_headers(struct cgi_env_block *blk) {
  const struct mg_connection *c = &blk->conn->mg_conn;
  const char *type = mg_get_header(c, "Content-Type");
  if (type != nullptr && !add_variable(blk, "CONTENT_TYPE=%s", type)) return false;
  const auto length = static_cast<long long>(blk->conn->cl);
  const bool has_length = mg_get_header(c, "Content-Length") != nullptr;
  if (has_length && !add_variable(blk, "CONTENT_LENGTH=%lld", length)) return false;
  for (int i = 0; i < c->num_headers; i++) {
    if (!add_header(blk, i)) return false;
  }
  return true;
}

int prepare_cgi_environment(struct connection *conn, const struct file_target *target,
                            struct cgi_env_block *blk) {
  *blk = {};
  blk->conn = conn;
  if (!add_server(blk, target) || !add_inherited(blk)) return 500;
  if (!add_request(blk, target)) return 414;
  if (!add_headers(blk)) return 431;
  /* What does not fit has been refused above. */
  /* clang-format off */
  assert(blk->nvars < (int) ARRAY_SIZE(blk->vars));
  assert(blk->len > 0);
  assert(blk->len < (int) sizeof(blk->buf));
  /* clang-format on */
  return 0;
}
