/* Sending files: conditional and partial requests (RFC 9110 sections 13 and 14), and the body, which is read
 * and queued part by part as the client takes it. */
#include "server/http_conn.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <time.h>
#include <unistd.h>

/* Bytes read at once; a datagram holds as many. Two such parts are the most that waits to be sent. */
enum { FILE_PART_SIZE = 60 * 1024 };

/* --- Preconditions ------------------------------------------------------------------------------------- */

void print_etag(const struct stat *st, char out[MG_ETAG_SIZE]) {
  snprintf(out, MG_ETAG_SIZE, "\"%lx.%ld\"", static_cast<unsigned long>(st->st_mtime),
           static_cast<long>(st->st_size));
}

/* Whether a list of entity tags names this one, or is "*". `weak`: a tag marked as weak counts too. */
static bool lists_etag(const char *list, const char *etag, bool weak) {
  const size_t len = strlen(etag);
  for (const char *p = list; *p != '\0';) {
    p += strspn(p, " \t,");
    if (*p == '*') return true;
    const bool is_weak = strncmp(p, "W/", 2) == 0;
    if (is_weak) p += 2;
    const bool same = strncmp(p, etag, len) == 0 && strchr(" \t,", p[len]) != nullptr;
    if (same && (weak || !is_weak)) return true;
    if (*p == '"') p += 1 + strcspn(p + 1, "\""); /* a tag may hold commas */
    p += strcspn(p, ",");
  }
  return false;
}

int check_preconditions(const struct mg_connection *conn, const struct stat *st) {
  const char *if_match = mg_get_header(conn, "If-Match");
  const char *if_unmodified = mg_get_header(conn, "If-Unmodified-Since");
  const char *if_none_match = mg_get_header(conn, "If-None-Match");
  const char *if_modified = mg_get_header(conn, "If-Modified-Since");
  const bool reads = strcmp(conn->request_method, "GET") == 0 || strcmp(conn->request_method, "HEAD") == 0;
  if (st == nullptr) return if_match != nullptr ? 412 : 200;
  char etag[MG_ETAG_SIZE];
  print_etag(st, etag);
  if (if_match != nullptr) {
    if (!lists_etag(if_match, etag, false)) return 412;
  } else if (if_unmodified != nullptr) {
    const time_t date = parse_http_date(if_unmodified);
    if (date != 0 && st->st_mtime > date) return 412;
  }
  if (if_none_match != nullptr) {
    if (!lists_etag(if_none_match, etag, true)) return 200;
    return reads ? 304 : 412;
  }
  if (if_modified != nullptr && reads) {
    const time_t date = parse_http_date(if_modified);
    if (date != 0 && st->st_mtime <= date) return 304;
  }
  return 200;
}

/* --- Ranges -------------------------------------------------------------------------------------------- */

/* Reads decimal digits; a number too large for the type becomes its largest value. -1: there are none. */
static int64_t read_position(const char **text) {
  if (**text < '0' || **text > '9') return -1;
  int64_t position = 0;
  for (; **text >= '0' && **text <= '9'; (*text)++) {
    const int digit = **text - '0';
    position = position > (INT64_MAX - digit) / 10 ? INT64_MAX : 10 * position + digit;
  }
  return position;
}

enum range_result parse_range(const char *header, int64_t size, struct byte_range *range) {
  static const char unit[] = "bytes=";
  if (strncasecmp(header, unit, sizeof(unit) - 1) != 0) return RANGE_NONE;
  const char *p = header + sizeof(unit) - 1;
  p += strspn(p, " \t");
  int64_t first = read_position(&p);
  if (*p++ != '-') return RANGE_NONE;
  int64_t last = read_position(&p);
  p += strspn(p, " \t");
  if (*p != '\0') return RANGE_NONE; /* several ranges: the whole file answers them too */
  if (first < 0 && last < 0) return RANGE_NONE;
  if (first >= 0 && last >= 0 && last < first) return RANGE_NONE;

  if (first < 0) { /* the last bytes of the file, as many as that */
    if (last == 0) return RANGE_UNSATISFIABLE;
    if (size == 0) return RANGE_NONE; /* all of nothing */
    first = last < size ? size - last : 0;
    last = size - 1;
  }
  if (first >= size) return RANGE_UNSATISFIABLE;
  *range = {first, last < 0 || last >= size ? size - 1 : last};
  return RANGE_PART;
}

/* Whether the range is asked for of the very file that the client has a part of. */
static bool if_range_holds(const struct mg_connection *conn, const struct stat *st, const char *etag) {
  const char *if_range = mg_get_header(conn, "If-Range");
  if (if_range == nullptr) return true;
  if (if_range[0] == '"' || strncmp(if_range, "W/", 2) == 0) return strcmp(if_range, etag) == 0;
  return parse_http_date(if_range) == st->st_mtime;
}

static enum range_result requested_range(const struct mg_connection *conn, const struct stat *st,
                                         const char *etag, struct byte_range *range) {
  const char *header = mg_get_header(conn, "Range");
  if (header == nullptr || strcmp(conn->request_method, "GET") != 0) return RANGE_NONE;
  if (!if_range_holds(conn, st, etag)) return RANGE_NONE;
  return parse_range(header, st->st_size, range);
}

/* --- The head ------------------------------------------------------------------------------------------ */

/* An answer about a file. */
struct file_answer {
  int status;
  const char *path;
  const struct stat *st;
  struct byte_range range; /* the bytes sent, or that would be sent but for the method or status */
  const char *extra_headers;
};

static int64_t length_of(const struct byte_range *range) {
  return range->last - range->first + 1;
}

/* False when memory is exhausted. */
static bool send_head(struct connection *conn, const struct file_answer *answer, const char *etag) {
  char date[MG_DATE_SIZE], modified[MG_DATE_SIZE], range[96] = "";
  print_http_date(time(nullptr), date);
  print_http_date(answer->st->st_mtime, modified);
  if (answer->status == 206) {
    snprintf(range, sizeof(range), "Content-Range: bytes %ld-%ld/%ld\r\n", answer->range.first,
             answer->range.last, static_cast<long>(answer->st->st_size));
  }
  const struct vec type = mime_type_of(conn->server, answer->path);
  return send_formatted(
      conn,
      "HTTP/1.1 %d %s\r\nDate: %s\r\nLast-Modified: %s\r\nEtag: %s\r\nContent-Type: %.*s\r\n"
      "Content-Length: %ld\r\nConnection: %s\r\nAccept-Ranges: bytes\r\n%s%s%s\r\n",
      answer->status, status_code_to_str(answer->status), date, modified, etag, static_cast<int>(type.len),
      type.ptr, length_of(&answer->range), should_keep_alive(conn) ? "keep-alive" : "close", range,
      answer->extra_headers == nullptr ? "" : answer->extra_headers, "");
}

/* --- The answer ---------------------------------------------------------------------------------------- */

int open_regular_file(const char *path, struct stat *st) {
  const int fd = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (fd == -1) return -1;
  if (fstat(fd, st) == 0 && S_ISREG(st->st_mode)) return fd;
  close(fd);
  errno = S_ISDIR(st->st_mode) ? EISDIR : EACCES;
  return -1;
}

/* The connection cannot go on: what was promised cannot be sent. The client sees that the end is missing. */
static void give_up(struct connection *conn) {
  close_local_endpoint(conn);
  conn->ns_conn->flags |= CONN_FINISHED_SENDING;
}

/* Answers with the open file, which becomes the connection's. */
static void begin_answer(struct connection *conn, int fd, struct file_answer *answer, const char *etag) {
  const bool has_body = answer->status != 304 && strcmp(conn->mg_conn.request_method, "HEAD") != 0;
  conn->endpoint.fd = fd;
  conn->endpoint_type = EP_FILE;
  conn->file_left = has_body ? length_of(&answer->range) : 0;
  conn->mg_conn.status_code = answer->status;
  const bool positioned = lseek(fd, answer->range.first, SEEK_SET) != -1;
  if (!positioned || !send_head(conn, answer, etag)) give_up(conn);
}

/* Decides by the request's headers what of the file is the answer. The status is one of a file's, or that of
 * an error. */
static void decide_answer(const struct mg_connection *conn, const char *etag, struct file_answer *answer) {
  const bool is_get = strcmp(conn->request_method, "GET") == 0;
  const bool is_head = strcmp(conn->request_method, "HEAD") == 0;
  answer->status = is_get || is_head ? check_preconditions(conn, answer->st) : 200;
  answer->range = {0, answer->st->st_size - 1};
  if (answer->status != 200) return;
  const enum range_result result = requested_range(conn, answer->st, etag, &answer->range);
  if (result == RANGE_PART) answer->status = 206;
  if (result == RANGE_UNSATISFIABLE) answer->status = 416;
}

void refuse_file(struct connection *conn, const char *path, int error) {
  if (error == ENOENT || error == ENOTDIR) {
    send_http_error(conn, 404, nullptr);
  } else {
    send_http_error(conn, 500, "open(%s): %s", path, strerror(error));
  }
}

void open_file_endpoint(struct connection *conn, const char *path, const struct stat *expected,
                        const char *extra_headers) {
  struct stat st;
  errno = ENOENT; /* a special file is not opened at all, as that may do something */
  const int fd = S_ISREG(expected->st_mode) ? open_regular_file(path, &st) : -1;
  if (fd == -1) {
    refuse_file(conn, path, errno);
    return;
  }
  char etag[MG_ETAG_SIZE];
  print_etag(&st, etag);
  struct file_answer answer = {200, path, &st, {}, extra_headers};
  decide_answer(&conn->mg_conn, etag, &answer);
  if (answer.status < 400) {
    begin_answer(conn, fd, &answer, etag);
    return;
  }
  close(fd);
  if (answer.status == 416) {
    send_range_error(conn, st.st_size);
  } else {
    send_http_error(conn, answer.status, nullptr);
  }
}

void transfer_file_data(struct connection *conn) {
  struct ns_connection *nc = conn->ns_conn;
  if (nc->send_iobuf.len > FILE_PART_SIZE) return;
  char part[FILE_PART_SIZE];
  const size_t wanted =
      conn->file_left < FILE_PART_SIZE ? static_cast<size_t>(conn->file_left) : sizeof(part);
  const ssize_t n = read(conn->endpoint.fd, part, wanted);
  if (n < 0 && errno == EINTR) return;
  const bool failed = n < 0 || (n == 0 && wanted > 0); /* unreadable, or shorter than it was */
  if (failed || ns_send(nc, part, static_cast<int>(n)) != n) {
    give_up(conn);
    return;
  }
  conn->file_left -= n;
  if (conn->file_left == 0) close_local_endpoint(conn);
}

void mg_send_file(struct mg_connection *c, const char *path, const char *extra_headers) {
  struct connection *conn = connection_of(c);
  struct stat st;
  if (conn->endpoint_type != EP_USER) return; /* there is no request, or it is being answered */
  if (stat(path, &st) == 0) {
    open_file_endpoint(conn, path, &st, extra_headers);
  } else {
    send_http_error(conn, 404, nullptr);
  }
}
