/* From a URI to a file: document_root and url_rewrites, and the walls around them. No file outside is ever
 * served, whatever the URI's encoding, links or rewrites: what counts is where a path really leads. */
#include "server/http_conn.h"

#include <errno.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <string_view>
#include <unistd.h>

/* --- Inside and hidden --------------------------------------------------------------------------------- */

static bool copy_path(const char *path, char out[MG_MAX_PATH]) {
  const size_t len = strlen(path);
  if (len >= MG_MAX_PATH) return false;
  memcpy(out, path, len + 1);
  return true;
}

/* Cuts the last component off; false when nothing but the root would be left. */
static bool cut_last_component(char *path) {
  char *slash = strrchr(path, '/');
  if (slash == nullptr || slash == path) return false;
  *slash = '\0';
  return true;
}

/* The real path of the longest part of `path` that exists. A link that leads nowhere has no place: a file
 * made by its name would stand wherever it points. */
static bool real_path(const char *path, char out[PATH_MAX]) {
  char part[MG_MAX_PATH];
  if (!copy_path(path, part)) return false;
  while (realpath(part, out) == nullptr) {
    const bool missing = errno == ENOENT || errno == ENOTDIR;
    struct stat st;
    if (!missing || lstat(part, &st) == 0 || !cut_last_component(part)) return false;
  }
  return true;
}

/* Whether one real path is the other or lies below it. */
static bool is_below(const char *real_root, const char *real) {
  const size_t len = strcmp(real_root, "/") == 0 ? 0 : strlen(real_root);
  return strncmp(real, real_root, len) == 0 && (real[len] == '/' || real[len] == '\0');
}

bool is_inside(const char *root, const char *path) {
  char real_root[PATH_MAX], real[PATH_MAX];
  return realpath(root, real_root) != nullptr && real_path(path, real) && is_below(real_root, real);
}

bool has_hidden_name(const struct mg_server *server, const char *path) {
  static const char password_files[] = "**.htpasswd$";
  return mg_match_prefix(password_files, sizeof(password_files) - 1, path) > 0 ||
         option_matches(server, HIDE_FILES_PATTERNS, path);
}

bool must_hide_file(const struct mg_server *server, const char *path) {
  char part[MG_MAX_PATH];
  if (!copy_path(path, part)) return true;
  do {
    if (has_hidden_name(server, part)) return true;
  } while (cut_last_component(part));
  return false;
}

bool may_be_served(const struct mg_server *server, const char *root, const char *path) {
  char real_root[PATH_MAX], real[PATH_MAX];
  if (realpath(root, real_root) == nullptr || !real_path(path, real) || !is_below(real_root, real)) {
    return false;
  }
  return !must_hide_file(server, path) && !must_hide_file(server, real);
}

/* --- The path of a URI --------------------------------------------------------------------------------- */

/* A directory, and what of the URI is to be looked for in it: nothing, or a text that begins with "/". */
struct mapping {
  std::string_view directory;
  std::string_view rest;
};

static std::string_view without_trailing_slashes(std::string_view path) {
  while (path.ends_with('/')) path.remove_suffix(1);
  return path;
}

/* Whether the prefix of a rewrite stands at the beginning of the URI, as whole components. */
static bool is_prefix(std::string_view prefix, std::string_view uri) {
  return uri.starts_with(prefix) && (uri.size() == prefix.size() || uri[prefix.size()] == '/');
}

/* The longest prefix in url_rewrites decides, else document_root. */
static bool find_mapping(const struct mg_server *server, std::string_view uri, struct mapping *mapping) {
  const char *root = server->config_options[DOCUMENT_ROOT];
  bool found = root != nullptr;
  if (found) *mapping = {root, uri};
  size_t longest = 0;
  const char *list = server->config_options[URL_REWRITES];
  struct vec entry, directory;
  while ((list = next_option(list, &entry, &directory)) != nullptr) {
    if (directory.len == 0 || entry.len <= longest || entry.ptr[0] != '/') continue;
    const std::string_view prefix = without_trailing_slashes({entry.ptr, entry.len});
    if (!is_prefix(prefix, uri)) continue;
    longest = entry.len;
    *mapping = {{directory.ptr, directory.len}, uri.substr(prefix.size())};
    found = true;
  }
  return found;
}

/* Appends bytes to a path; false when it would get too long. */
static bool append(char path[MG_MAX_PATH], std::string_view text) {
  const size_t len = strlen(path);
  if (text.size() >= MG_MAX_PATH - len) return false;
  memcpy(path + len, text.data(), text.size());
  path[len + text.size()] = '\0';
  return true;
}

/* Appends "/" and each component of a text, but for empty ones and ".". */
static bool append_components(char path[MG_MAX_PATH], std::string_view text) {
  while (!text.empty()) {
    const size_t slash = text.find('/');
    const std::string_view component = text.substr(0, slash);
    const bool says_nothing = component.empty() || component == ".";
    if (!says_nothing && (!append(path, "/") || !append(path, component))) return false;
    text.remove_prefix(slash == std::string_view::npos ? text.size() : slash + 1);
  }
  return true;
}

/* The absolute path of a configured directory without trailing slashes; "" for "/". */
static bool absolute_directory(std::string_view directory, char out[MG_MAX_PATH]) {
  out[0] = '\0';
  char current[MG_MAX_PATH];
  if (!directory.starts_with('/')) {
    if (getcwd(current, sizeof(current)) == nullptr || !append_components(out, current)) return false;
  }
  return append_components(out, directory);
}

static bool leads_up(std::string_view rest) {
  return rest == "/.." || rest.ends_with("/..") || rest.find("/../") != std::string_view::npos;
}

static bool build_paths(const struct mapping *mapping, struct file_target *target) {
  const std::string_view rest = mapping->rest;
  char *path = target->path;
  if (leads_up(rest) || !absolute_directory(mapping->directory, path)) return false;
  copy_path(path[0] == '\0' ? "/" : path, target->root);
  if (!append_components(path, rest)) return false;
  const bool names_directory = rest.ends_with('/') || rest.ends_with("/.") || path[0] == '\0';
  return !names_directory || append(path, "/");
}

/* --- The target ---------------------------------------------------------------------------------------- */

static bool look_up(struct file_target *target) {
  target->exists = stat(target->path, &target->st) == 0;
  return target->exists;
}

/* When a file that is a CGI program stands in the path's way, it becomes the target, and what follows it the
 * path_info. */
static void split_path_info(struct connection *conn, struct file_target *target) {
  char *slash = strchr(target->path + strlen(target->root), '/');
  for (; slash != nullptr; slash = strchr(slash + 1, '/')) {
    *slash = '\0';
    const bool is_program = look_up(target) && S_ISREG(target->st.st_mode) &&
                            option_matches(conn->server, CGI_PATTERN, target->path);
    *slash = '/';
    if (!is_program) continue;
    free(conn->path_info);
    conn->path_info = strdup(slash);
    *slash = '\0';
    return;
  }
  target->exists = false;
}

/* Other methods are about the very file that they name. */
static bool may_name_program(const struct mg_connection *conn) {
  const char *method = conn->request_method;
  return strcmp(method, "GET") == 0 || strcmp(method, "HEAD") == 0 || strcmp(method, "POST") == 0;
}

static bool is_file_or_directory(const struct stat *st) {
  return S_ISREG(st->st_mode) || S_ISDIR(st->st_mode);
}

bool find_file_target(struct connection *conn, struct file_target *target) {
  const char *uri = conn->mg_conn.uri;
  struct mapping mapping;
  if (uri[0] != '/' || !find_mapping(conn->server, uri, &mapping)) return false;
  if (!build_paths(&mapping, target)) return false;
  if (!look_up(target) && may_name_program(&conn->mg_conn)) split_path_info(conn, target);
  const bool special = target->exists && !is_file_or_directory(&target->st);
  target->forbidden = special || !may_be_served(conn->server, target->root, target->path);
  if (target->forbidden) target->exists = false;
  return true;
}

static bool is_directory(const char *path) {
  struct stat st;
  return stat(path, &st) == 0 && S_ISDIR(st.st_mode);
}

void find_protected_path(const struct mg_server *server, const struct file_target *target,
                         char out[MG_MAX_PATH]) {
  copy_path(target->path, out);
  if (target->exists) return;
  while (cut_last_component(out)) {
    if (is_directory(out) && may_be_served(server, target->root, out)) return;
  }
}

bool find_index_file(struct connection *conn, struct file_target *target) {
  const char *list = conn->server->config_options[INDEX_FILES];
  struct vec name;
  while ((list = next_option(list, &name, nullptr)) != nullptr) {
    struct file_target index = *target;
    if (!append(index.path, {name.ptr, name.len}) || !look_up(&index)) continue;
    if (!S_ISREG(index.st.st_mode) || !may_be_served(conn->server, index.root, index.path)) continue;
    *target = index;
    return true;
  }
  return false;
}
