/* Digest authentication (RFC 2617 with the quality of protection "auth") against password files.
 *
 * A digest opens the URI that it was made for, with the method that it was made for. The nonce of a challenge
 * is a time, and its age is not looked at: who sees a request go by in the clear can send it again. TLS
 * helps. */
#include "server/mg_auth.h"

#include <errno.h>
#include <openssl/crypto.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

/* --- The header ---------------------------------------------------------------------------------------- */

bool parse_digest(const char *authorization, struct digest *digest) {
  static const char scheme[] = "Digest ";
  const size_t scheme_len = sizeof(scheme) - 1;
  if (authorization == nullptr || strncasecmp(authorization, scheme, scheme_len) != 0) return false;
  const struct {
    const char *name;
    char *value;
    size_t size;
  } fields[] = {
      {"username", digest->username, sizeof(digest->username)},
      {"nonce", digest->nonce, sizeof(digest->nonce)},
      {"cnonce", digest->cnonce, sizeof(digest->cnonce)},
      {"nc", digest->nc, sizeof(digest->nc)},
      {"qop", digest->qop, sizeof(digest->qop)},
      {"response", digest->response, sizeof(digest->response)},
      {"uri", digest->uri, sizeof(digest->uri)},
  };
  for (const auto &field : fields) {
    if (mg_parse_header(authorization + scheme_len, field.name, field.value, field.size) <= 0) return false;
  }
  return strcmp(digest->qop, "auth") == 0;
}

static bool is_same_text(const char *a, const char *b) {
  return a == nullptr || b == nullptr ? a == b : strcmp(a, b) == 0;
}

/* The request's own URI has been decoded in place, so that of the header is decoded the same way. */
bool is_for_this_uri(const struct digest *digest, const struct mg_connection *c) {
  char uri[sizeof(digest->uri)];
  strcpy(uri, digest->uri);
  const char *query_string = split_uri(uri);
  return strcmp(uri, c->uri) == 0 && is_same_text(query_string, c->query_string);
}

bool is_right_response(const struct digest *digest, const char *method, const char *ha1) {
  char ha2[MD5_TEXT_SIZE], expected[MD5_TEXT_SIZE];
  mg_md5(ha2, method, ":", digest->uri, nullptr);
  mg_md5(expected, ha1, ":", digest->nonce, ":", digest->nc, ":", digest->cnonce, ":", digest->qop, ":", ha2,
         nullptr);
  /* How long the comparison takes must not tell how much of a guess is right. */
  return strlen(digest->response) == MD5_TEXT_SIZE - 1 &&
         CRYPTO_memcmp(digest->response, expected, MD5_TEXT_SIZE - 1) == 0;
}

/* --- The password file --------------------------------------------------------------------------------- */

static bool is_ha1(const char *text) {
  const size_t len = MD5_TEXT_SIZE - 1;
  return strlen(text) == len && strspn(text, "0123456789abcdef") == len;
}

/* Reads the line of a password file if it is that of the user. */
static bool read_line_of(const char *line, const char *user, const char *domain, char ha1[MD5_TEXT_SIZE]) {
  char line_user[256], line_domain[256], line_ha1[MD5_TEXT_SIZE + 1];
  if (line[0] == '#') return false;
  if (sscanf(line, "%255[^:]:%255[^:]:%33s", line_user, line_domain, line_ha1) != 3) return false;
  if (strcmp(line_user, user) != 0 || strcmp(line_domain, domain) != 0 || !is_ha1(line_ha1)) return false;
  strcpy(ha1, line_ha1);
  return true;
}

bool find_ha1(FILE *file, const char *user, const char *domain, char ha1[MD5_TEXT_SIZE]) {
  char line[1024];
  bool line_begins = true;
  while (fgets(line, sizeof(line), file) != nullptr) {
    const bool line_ends = strchr(line, '\n') != nullptr || feof(file);
    if (line_begins && line_ends && read_line_of(line, user, domain, ha1)) return true;
    line_begins = line_ends;
  }
  return false;
}

/* Null for whatever is not a file that can be read. */
static FILE *open_password_file(const char *path) {
  struct stat st;
  const int fd = open_regular_file(path, &st);
  FILE *file = fd == -1 ? nullptr : fdopen(fd, "r");
  if (file == nullptr && fd != -1) close(fd);
  return file;
}

/* --- The request --------------------------------------------------------------------------------------- */

static bool carries_digest_for(const struct connection *conn, const char *password_file) {
  const struct mg_connection *c = &conn->mg_conn;
  const char *domain = conn->server->config_options[AUTH_DOMAIN];
  struct digest digest;
  if (!parse_digest(mg_get_header(c, "Authorization"), &digest) || !is_for_this_uri(&digest, c)) return false;

  FILE *file = open_password_file(password_file);
  if (file == nullptr) return false;
  char ha1[MD5_TEXT_SIZE];
  const bool known = find_ha1(file, digest.username, domain == nullptr ? "" : domain, ha1);
  fclose(file);
  return known && is_right_response(&digest, c->request_method, ha1);
}

/* The path of the password file in the directory of `path`. False when it is too long. */
static bool find_directory_password_file(const char *path, char out[MG_MAX_PATH]) {
  struct stat st;
  const char *slash = strrchr(path, '/');
  const bool is_directory = stat(path, &st) == 0 && S_ISDIR(st.st_mode);
  const size_t directory_len = is_directory ? strlen(path) : slash == nullptr ? 0 : slash - path + 1u;
  const char *separator = is_directory ? "/" : "";
  const int len =
      snprintf(out, MG_MAX_PATH, "%.*s%s.htpasswd", static_cast<int>(directory_len), path, separator);
  return len < MG_MAX_PATH;
}

/* Whether nothing of that name is there; a dangling link is something that cannot be read. */
static bool is_missing(const char *path) {
  struct stat st;
  return lstat(path, &st) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

bool is_authorised(struct connection *conn, const char *path) {
  const char *global = conn->server->config_options[GLOBAL_AUTH_FILE];
  char in_directory[MG_MAX_PATH];
  if (global != nullptr) return carries_digest_for(conn, global);
  if (!find_directory_password_file(path, in_directory)) return false;
  return is_missing(in_directory) || carries_digest_for(conn, in_directory);
}

bool is_authorised_for_dav(struct connection *conn) {
  const char *file = conn->server->config_options[DAV_AUTH_FILE];
  return file != nullptr && carries_digest_for(conn, file);
}
