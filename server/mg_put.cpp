/* Uploads (PUT; RFC 9110 section 9.3.4, RFC 4918 section 9.7). A body is written as it comes to a file beside
 * the one that it is for, which it replaces once it is whole: whoever reads the old file meanwhile reads it
 * to its end, and an upload that is cut or fails changes nothing. A part of a file (Content-Range) is written
 * into the file itself. */
#include "server/http_conn.h"

#include <atomic>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

/* An upload in progress; connection::endpoint holds the file that is written. */
struct put_upload {
  int64_t left;              /* bytes of the body still to come */
  off_t offset;              /* where the next one goes */
  int status;                /* of the reply once all is written */
  size_t existing_len;       /* length of the part of `path` that is a directory already */
  char path[MG_MAX_PATH];    /* the file that the body is for */
  char written[MG_MAX_PATH]; /* the file beside it that is written; empty when it is `path` itself */
};
static_assert(MG_MAX_PATH >= PATH_MAX); /* realpath() fills a path */

/* --- What the head asks for ---------------------------------------------------------------------------- */

/* Takes a number off the text: 1 to 18 digits, so that neither it nor the sum of two overflows. */
static bool take_number(const char **text, int64_t *number) {
  const size_t digits = strspn(*text, "0123456789");
  if (digits < 1 || digits > 18) return false;
  *number = strtoll(*text, nullptr, 10);
  *text += digits;
  return true;
}

static bool take_character(const char **text, char c) {
  if (**text != c) return false;
  (*text)++;
  return true;
}

/* Reads "bytes first-last/length" (or "*" for the length), which must fit a body of `body_len` bytes. */
static bool parse_content_range(const char *text, int64_t body_len, int64_t *first) {
  static const char unit[] = "bytes ";
  int64_t last, length = INT64_MAX;
  if (strncasecmp(text, unit, sizeof(unit) - 1) != 0) return false;
  text += sizeof(unit) - 1;
  if (!take_number(&text, first) || !take_character(&text, '-') || !take_number(&text, &last)) return false;
  if (!take_character(&text, '/')) return false;
  if (!take_character(&text, '*') && !take_number(&text, &length)) return false;
  while (*text == ' ') text++;
  return *text == '\0' && *first <= last && last < length && last - *first + 1 == body_len;
}

/* The status that the body's framing deserves, 0 when its length is told, once and plainly. */
static int length_refusal(const struct mg_connection *c, int64_t *length) {
  const char *text = mg_get_header(c, "Content-Length");
  if (text == nullptr || mg_get_header(c, "Transfer-Encoding") != nullptr) return 411;
  for (int i = 0; i < c->num_headers; i++) {
    const struct mg_header *header = &c->http_headers[i];
    const bool other_length = strcmp(header->value, text) != 0;
    if (strcasecmp(header->name, "Content-Length") == 0 && other_length) return 400;
  }
  if (!take_number(&text, length)) return 400;
  while (*text == ' ') text++;
  return *text == '\0' ? 0 : 400;
}

static bool names_directory(const struct file_target *target) {
  const bool by_its_name = target->path[strlen(target->path) - 1] == '/';
  return by_its_name || (target->exists && S_ISDIR(target->st.st_mode));
}

/* Decides what is written where. Returns the status of a refusal, or 0. */
static int plan_upload(const struct connection *conn, const struct file_target *target,
                       struct put_upload *upload) {
  const char *range = mg_get_header(&conn->mg_conn, "Content-Range");
  int64_t first = 0;
  if (names_directory(target)) return 405;
  const int refusal = length_refusal(&conn->mg_conn, &upload->left);
  if (refusal != 0) return refusal;
  if (range != nullptr && !parse_content_range(range, upload->left, &first)) return 400;
  if (precondition_fails(conn, target)) return 412;
  if (first > (target->exists ? target->st.st_size : 0)) return 416; /* no holes */
  upload->offset = first;
  upload->status = target->exists ? 200 : 201;
  return 0;
}

/* --- The file that is written -------------------------------------------------------------------------- */

static void send_open_error(struct connection *conn, const char *path, int error) {
  send_http_error(conn, 500, "open(%s): %s", path, strerror(error));
}

/* Finds the leading part of upload->path that is a directory, in which the new file is written until it is
 * whole: directories that are missing are made no sooner. An error number or 0. */
static int find_existing_directory(struct put_upload *upload) {
  char directory[MG_MAX_PATH];
  struct stat st;
  strcpy(directory, upload->path);
  do {
    char *slash = strrchr(directory, '/');
    slash[slash == directory ? 1 : 0] = '\0';
    errno = stat(directory, &st) == 0 ? 0 : errno;
  } while (errno == ENOENT && strcmp(directory, "/") != 0);
  upload->existing_len = strlen(directory);
  return errno != 0 || S_ISDIR(st.st_mode) ? errno : ENOTDIR;
}

/* Opens a file of its own in that directory. Its name is one that is hidden from every request. */
static int open_file_beside(struct put_upload *upload) {
  static std::atomic<unsigned> serial{0};
  int fd;
  do {
    const int len = snprintf(upload->written, sizeof(upload->written), "%.*s/.upload-%ld-%u.htpasswd",
                             static_cast<int>(upload->existing_len), upload->path,
                             static_cast<long>(getpid()), serial.fetch_add(1));
    errno = ENAMETOOLONG;
    fd = len < MG_MAX_PATH ? open(upload->written, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644) : -1;
  } while (fd == -1 && errno == EEXIST);
  if (fd == -1) upload->written[0] = '\0';
  return fd;
}

/* Begins to write a file anew. */
static void begin_file(struct connection *conn, const struct file_target *target) {
  struct put_upload *upload = conn->upload;
  const int error = find_existing_directory(upload);
  if (error != 0) {
    send_http_error(conn, 500, "put_dir: %s", strerror(error));
    return;
  }
  /* What must not be written must not be replaced either. */
  const bool writable = !target->exists || faccessat(AT_FDCWD, upload->path, W_OK, AT_EACCESS) == 0;
  const int fd = writable ? open_file_beside(upload) : -1;
  if (fd != -1 && target->exists) fchmod(fd, target->st.st_mode & 0777);
  conn->endpoint.fd = fd;
  if (fd == -1) send_open_error(conn, upload->path, errno);
}

/* Begins to write into a file. */
static void begin_part(struct connection *conn) {
  const char *path = conn->upload->path;
  conn->endpoint.fd = open(path, O_WRONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (conn->endpoint.fd == -1) send_open_error(conn, path, errno);
}

static void send_refusal(struct connection *conn, const struct file_target *target, int status) {
  if (status == 416) {
    send_range_error(conn, target->exists ? target->st.st_size : 0); /* where the next part has to begin */
  } else {
    send_http_error(conn, status, nullptr);
  }
}

void handle_put(struct connection *conn, const struct file_target *target) {
  auto *upload = static_cast<put_upload *>(calloc(1, sizeof(put_upload)));
  const int refusal = upload == nullptr ? 500 : plan_upload(conn, target, upload);
  if (refusal != 0) {
    free(upload);
    send_refusal(conn, target, refusal);
    return;
  }
  conn->endpoint_type = EP_PUT;
  conn->endpoint.fd = -1;
  conn->upload = upload;
  strcpy(upload->path, target->path);
  const bool is_part = target->exists && mg_get_header(&conn->mg_conn, "Content-Range") != nullptr;
  /* A link stays: what it leads to is written. */
  if (target->exists && realpath(target->path, upload->path) == nullptr) {
    send_open_error(conn, target->path, errno);
  } else if (is_part) {
    begin_part(conn);
  } else {
    begin_file(conn, target);
  }
}

/* --- The body ------------------------------------------------------------------------------------------ */

static bool write_at(int fd, const char *data, size_t len, off_t offset) {
  while (len > 0) {
    const ssize_t n = pwrite(fd, data, len, offset);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    data += n;
    len -= static_cast<size_t>(n);
    offset += n;
  }
  return true;
}

/* Makes the directories that the file's path misses. False with errno on failure. */
static bool make_directories(struct put_upload *upload) {
  char *rest = upload->path + upload->existing_len;
  while (*rest == '/') rest++;
  for (char *slash = strchr(rest, '/'); slash != nullptr; slash = strchr(slash + 1, '/')) {
    *slash = '\0';
    const bool made = mkdir(upload->path, 0755) == 0 || errno == EEXIST;
    *slash = '/';
    if (!made) return false;
  }
  return true;
}

static void send_write_error(struct connection *conn, int error) {
  const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG;
  send_http_error(conn, full ? 507 : 500, "write(%s): %s", conn->upload->path, strerror(error));
}

/* The whole body has been written: puts the file in its place and answers. */
static void finish_upload(struct connection *conn) {
  struct put_upload *upload = conn->upload;
  if (fsync(conn->endpoint.fd) != 0) {
    send_write_error(conn, errno);
  } else if (upload->written[0] == '\0') {
    send_dav_success(conn, upload->status);
  } else if (!make_directories(upload)) {
    send_http_error(conn, 500, "put_dir: %s", strerror(errno));
  } else if (rename(upload->written, upload->path) != 0) {
    send_open_error(conn, upload->path, errno);
  } else {
    upload->written[0] = '\0';
    send_dav_success(conn, upload->status);
  }
}

void write_upload(struct connection *conn) {
  struct put_upload *upload = conn->upload;
  struct iobuf *io = &conn->ns_conn->recv_iobuf;
  const size_t n = static_cast<int64_t>(io->len) < upload->left ? io->len : static_cast<size_t>(upload->left);
  if (!write_at(conn->endpoint.fd, io->buf, n, upload->offset)) {
    send_write_error(conn, errno);
    return;
  }
  iobuf_remove(io, n);
  upload->offset += static_cast<off_t>(n);
  upload->left -= static_cast<int64_t>(n);
  if (upload->left == 0) finish_upload(conn);
}

void release_upload(struct connection *conn) {
  struct put_upload *upload = conn->upload;
  if (conn->endpoint.fd != -1) close(conn->endpoint.fd);
  if (upload->written[0] != '\0') unlink(upload->written);
  free(upload);
  conn->upload = nullptr;
}
