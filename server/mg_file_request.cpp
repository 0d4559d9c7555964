/* A declined request: who may make it, and which endpoint answers it. Nothing is said about a file, not even
 * whether it exists, before the request is authorised for its directory. */
#include "server/http_conn.h"

#include <string.h>

static const struct {
  const char *method;
  void (*handle)(struct connection *, const struct file_target *);
} dav_methods[] = {
    {"PUT", handle_put},
    {"DELETE", handle_delete},
    {"MKCOL", handle_mkcol},
    {"PROPFIND", handle_propfind},
};

using endpoint_handler = decltype(dav_methods[0].handle);

/* Who handles a method of WebDAV; null for other methods. */
static endpoint_handler dav_handler(const struct connection *conn) {
  for (const auto &entry : dav_methods) {
    if (strcmp(entry.method, conn->mg_conn.request_method) == 0) return entry.handle;
  }
  return nullptr;
}

/* Not by mg_printf(), which ends a text of just 500 characters with a NUL byte. */
static void send_text(struct connection *conn, const char *text) {
  ns_send(conn->ns_conn, text, static_cast<int>(strlen(text)));
}

static void redirect_to_directory(struct connection *conn) {
  char location[3 * MG_MAX_URI_SIZE] = "";
  append_url_encoded(location, sizeof(location), conn->mg_conn.uri);
  conn->mg_conn.status_code = 301;
  send_text(conn, "HTTP/1.1 301 Moved Permanently\r\nLocation: ");
  send_text(conn, location);
  send_text(conn, "/\r\n\r\n");
  close_local_endpoint(conn);
}

static bool ends_with_slash(const struct file_target *target) {
  return target->path[strlen(target->path) - 1] == '/';
}

static void serve_directory(struct connection *conn, const struct file_target *target) {
  const char *listing = conn->server->config_options[ENABLE_DIRECTORY_LISTING];
  if (!ends_with_slash(target)) {
    redirect_to_directory(conn);
  } else if (listing != nullptr && strcmp(listing, "yes") == 0) {
    send_directory_listing(conn, target);
  } else {
    conn->mg_conn.status_code = 403;
    send_text(conn, "HTTP/1.1 403 Directory Listing Denied\r\n\r\n");
    close_local_endpoint(conn);
  }
}

static void serve_target(struct connection *conn, const struct file_target *target) {
  if (!target->exists) {
    send_http_error(conn, 404, nullptr);
  } else if (S_ISDIR(target->st.st_mode)) {
    serve_directory(conn, target);
  } else if (option_matches(conn->server, CGI_PATTERN, target->path)) {
    open_cgi_endpoint(conn, target);
  } else if (option_matches(conn->server, SSI_PATTERN, target->path)) {
    send_ssi_file(conn, target);
  } else {
    open_file_endpoint(conn, target->path, &target->st, nullptr);
  }
}

static bool is_authorised_for(struct connection *conn, const struct file_target *target) {
  char path[MG_MAX_PATH];
  find_protected_path(conn->server, target, path);
  return is_authorised(conn, path);
}

void serve_file_request(struct connection *conn) {
  const endpoint_handler handle_dav = dav_handler(conn);
  struct file_target target;
  if (!find_file_target(conn, &target)) {
    send_http_error(conn, 404, nullptr);
    return;
  }
  const bool is_directory = target.exists && S_ISDIR(target.st.st_mode);
  if (handle_dav == nullptr && is_directory && ends_with_slash(&target)) find_index_file(conn, &target);

  if (!is_authorised_for(conn, &target) || (handle_dav != nullptr && !is_authorised_for_dav(conn))) {
    send_auth_challenge(conn);
  } else if (target.forbidden) {
    send_http_error(conn, 404, nullptr);
  } else if (handle_dav != nullptr) {
    handle_dav(conn, &target);
  } else {
    serve_target(conn, &target);
  }
}
