/* WebDAV beside uploads (mg_put.cpp): preconditions, PROPFIND, MKCOL and DELETE (RFC 4918). There are no
 * locks and no properties but those that a file has by itself. */
#include "server/http_conn.h"

#include <errno.h>
#include <fts.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

/* --- What several methods share ------------------------------------------------------------------------ */

void send_dav_success(struct connection *conn, int status) {
  conn->mg_conn.status_code = status;
  mg_printf(&conn->mg_conn, "HTTP/1.1 %d OK\r\nContent-Length: 0\r\n\r\n", status);
  close_local_endpoint(conn);
}

bool precondition_fails(const struct connection *conn, const struct file_target *target) {
  return check_preconditions(&conn->mg_conn, target->exists ? &target->st : nullptr) == 412;
}

/* The status that tells a client why the file system refuses. */
static int status_of(int error) {
  switch (error) {
  case EACCES:
  case EPERM:
  case EROFS:
    return 403;
  case EEXIST:
    return 405;
  case EBUSY:
  case ENOENT:
  case ENOTDIR:
  case ENOTEMPTY:
    return 409;
  case EDQUOT:
  case ENOSPC:
    return 507;
  default:
    return 500;
  }
}

static void send_system_error(struct connection *conn, int error) {
  send_http_error(conn, status_of(error), "%s", strerror(error));
}

/* Copies a path without a slash at its end, by which a link would be followed. */
static void copy_without_slash(const char *path, char out[MG_MAX_PATH]) {
  size_t len = strlen(path);
  if (len > 1 && path[len - 1] == '/') len--;
  memcpy(out, path, len);
  out[len] = '\0';
}

/* --- PROPFIND ------------------------------------------------------------------------------------------ */

enum { HREF_SIZE = 3 * 2 * MG_MAX_URI_SIZE }; /* the URI of a directory and the name of an entry, encoded */

/* Appends the entry of one file or directory. `uri` and `name`, one behind the other, say where it is. */
static void append_response(struct iobuf *body, const char *uri, const char *name, const struct stat *st) {
  const bool is_directory = S_ISDIR(st->st_mode);
  char href[HREF_SIZE] = "", date[MG_DATE_SIZE], etag[MG_ETAG_SIZE], of_file[256] = "", text[HREF_SIZE + 512];
  append_url_encoded(href, sizeof(href), uri);
  append_url_encoded(href, sizeof(href), name);
  const bool ends_well = !is_directory || href[strlen(href) - 1] == '/';
  print_http_date(st->st_mtime, date);
  print_etag(st, etag);
  if (!is_directory) {
    snprintf(of_file, sizeof(of_file),
             "<d:getcontentlength>%lld</d:getcontentlength><d:getetag>%s</d:getetag>",
             static_cast<long long>(st->st_size), etag);
  }
  const int len = snprintf(text, sizeof(text),
                           "<d:response><d:href>%s%s</d:href><d:propstat><d:prop>"
                           "<d:resourcetype>%s</d:resourcetype>%s"
                           "<d:getlastmodified>%s</d:getlastmodified></d:prop>"
                           "<d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response>\n",
                           href, ends_well ? "" : "/", is_directory ? "<d:collection/>" : "", of_file, date);
  iobuf_append(body, text, static_cast<size_t>(len));
}

/* Appends the entries of a directory. False when it cannot be read. */
static bool append_members(struct iobuf *body, struct connection *conn, const struct file_target *target) {
  const char *uri = conn->mg_conn.uri;
  char directory_uri[MG_MAX_URI_SIZE + 1];
  const bool ends_well = uri[strlen(uri) - 1] == '/';
  snprintf(directory_uri, sizeof(directory_uri), "%s%s", uri, ends_well ? "" : "/");

  struct dir_entry *entries = nullptr;
  const int count = scan_directory(conn, target->path, target->root, &entries);
  if (count < 0) return false;
  for (int i = 0; i < count; i++) {
    const bool is_resource = S_ISREG(entries[i].st.st_mode) || S_ISDIR(entries[i].st.st_mode);
    if (is_resource) append_response(body, directory_uri, entries[i].file_name, &entries[i].st);
  }
  free_directory(entries, count);
  return true;
}

static void send_multistatus(struct connection *conn, const struct iobuf *body) {
  conn->mg_conn.status_code = 207;
  mg_printf(&conn->mg_conn,
            "HTTP/1.1 207 Multi-Status\r\nContent-Type: application/xml; charset=utf-8\r\n"
            "Content-Length: %zu\r\nConnection: close\r\n\r\n",
            body->len);
  mg_write(&conn->mg_conn, body->buf, static_cast<int>(body->len));
  close_local_endpoint(conn);
}

void handle_propfind(struct connection *conn, const struct file_target *target) {
  static const char head[] = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<d:multistatus xmlns:d=\"DAV:\">\n";
  static const char tail[] = "</d:multistatus>\n";
  const char *depth = mg_get_header(&conn->mg_conn, "Depth");
  const bool self_only = depth != nullptr && strcmp(depth, "0") == 0;
  const bool members_too = depth == nullptr || strcmp(depth, "1") == 0 || strcasecmp(depth, "infinity") == 0;
  if (!target->exists) {
    send_http_error(conn, 404, nullptr);
    return;
  }
  if (!self_only && !members_too) {
    send_http_error(conn, 400, nullptr);
    return;
  }
  struct iobuf body = {};
  iobuf_append(&body, head, sizeof(head) - 1);
  append_response(&body, conn->mg_conn.uri, "", &target->st);
  const bool lists_members = members_too && S_ISDIR(target->st.st_mode);
  if (lists_members && !append_members(&body, conn, target)) {
    send_system_error(conn, errno);
  } else {
    iobuf_append(&body, tail, sizeof(tail) - 1);
    send_multistatus(conn, &body);
  }
  iobuf_free(&body);
}

/* --- MKCOL --------------------------------------------------------------------------------------------- */

void handle_mkcol(struct connection *conn, const struct file_target *target) {
  const bool has_body = conn->cl != 0 || mg_get_header(&conn->mg_conn, "Transfer-Encoding") != nullptr;
  char path[MG_MAX_PATH];
  copy_without_slash(target->path, path);
  if (has_body) {
    send_http_error(conn, 415, nullptr); /* there is no kind of body that this understands */
  } else if (mkdir(path, 0755) != 0) {
    send_system_error(conn, errno);
  } else {
    send_dav_success(conn, 201);
  }
}

/* --- DELETE -------------------------------------------------------------------------------------------- */

/* A walk through a directory that does not follow links. */
struct tree_walk {
  explicit tree_walk(char *directory) {
    char *const paths[] = {directory, nullptr};
    fts = fts_open(paths, FTS_PHYSICAL | FTS_NOCHDIR, nullptr);
  }
  ~tree_walk() {
    if (fts != nullptr) fts_close(fts);
  }
  tree_walk(const tree_walk &) = delete;
  tree_walk &operator=(const tree_walk &) = delete;
  FTS *fts;
};

/* What keeps a tree from being removed before anything of it is: hidden files are not the client's to remove,
 * and what cannot be read may hold some. An error number, 0 when there is nothing. */
static int find_obstacle(const struct mg_server *server, char *directory) {
  tree_walk walk(directory);
  if (walk.fts == nullptr) return errno;
  errno = 0;
  while (const FTSENT *entry = fts_read(walk.fts)) {
    if (entry->fts_info == FTS_DNR || entry->fts_info == FTS_ERR) return entry->fts_errno;
    if (has_hidden_name(server, entry->fts_path)) return EPERM;
    errno = 0;
  }
  return errno;
}

/* Removes a directory with all that is in it. An error number, 0 when it is gone. */
static int remove_tree(char *directory) {
  tree_walk walk(directory);
  if (walk.fts == nullptr) return errno;
  errno = 0;
  while (const FTSENT *entry = fts_read(walk.fts)) {
    if (entry->fts_info == FTS_DNR || entry->fts_info == FTS_ERR) return entry->fts_errno;
    const bool on_the_way_down = entry->fts_info == FTS_D;
    if (!on_the_way_down && remove(entry->fts_path) != 0) return errno;
    errno = 0;
  }
  return errno;
}

/* Removes a file, a link (not what it leads to) or a directory. Returns an error number or 0. */
static int remove_target(const struct mg_server *server, char *path) {
  struct stat st;
  if (lstat(path, &st) != 0) return errno;
  if (!S_ISDIR(st.st_mode)) return unlink(path) == 0 ? 0 : errno;
  const int obstacle = find_obstacle(server, path);
  return obstacle != 0 ? obstacle : remove_tree(path);
}

static bool is_root(const struct file_target *target) {
  struct stat root;
  return stat(target->root, &root) == 0 && root.st_dev == target->st.st_dev &&
         root.st_ino == target->st.st_ino;
}

/* The status of a request that is not even tried, 0 for any other. */
static int delete_refusal(const struct connection *conn, const struct file_target *target) {
  const char *depth = mg_get_header(&conn->mg_conn, "Depth");
  if (!target->exists) return 404;
  if (precondition_fails(conn, target)) return 412;
  if (is_root(target)) return 403;
  const bool partly = depth != nullptr && strcasecmp(depth, "infinity") != 0;
  return S_ISDIR(target->st.st_mode) && partly ? 400 : 0; /* a directory goes with all that is in it */
}

void handle_delete(struct connection *conn, const struct file_target *target) {
  const int refusal = delete_refusal(conn, target);
  if (refusal != 0) {
    send_http_error(conn, refusal, nullptr);
    return;
  }
  char path[MG_MAX_PATH];
  copy_without_slash(target->path, path);
  const int error = remove_target(conn->server, path);
  if (error != 0) {
    send_system_error(conn, error);
  } else {
    send_dav_success(conn, 200);
  }
}
