/* Directories: reading their entries, and the page that lists one. */
#include "server/http_conn.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <string>
#include <time.h>

/* --- Reading a directory ------------------------------------------------------------------------------- */

/* The array that scan_directory() fills. */
struct entry_list {
  struct dir_entry *entries;
  int count;
  int capacity;
};

static bool add_entry(struct entry_list *list, const struct dir_entry *entry) {
  if (list->count == list->capacity) {
    const int capacity = list->capacity == 0 ? 64 : 2 * list->capacity;
    void *grown = realloc(list->entries, static_cast<size_t>(capacity) * sizeof(dir_entry));
    if (grown == nullptr) return false;
    list->entries = static_cast<dir_entry *>(grown);
    list->capacity = capacity;
  }
  list->entries[list->count++] = *entry;
  return true;
}

/* Where an entry is looked for. */
struct directory {
  struct connection *conn;
  const char *path;
  const char *root;
  int fd;
};

/* Whether an entry is one that a client may know of: a file or directory that is not hidden, and, when it is
 * a link, leads to one inside of the root. The directory itself has passed these tests. */
static bool is_visible(const struct directory *directory, const char *name, struct stat *st) {
  if (strcmp(name, ".") == 0 || strcmp(name, "..") == 0) return false;
  const size_t len = strlen(directory->path);
  const bool has_slash = len > 0 && directory->path[len - 1] == '/';
  char path[MG_MAX_PATH];
  const int n = snprintf(path, sizeof(path), "%s%s%s", directory->path, has_slash ? "" : "/", name);
  if (n >= MG_MAX_PATH || has_hidden_name(directory->conn->server, path)) return false;
  if (fstatat(directory->fd, name, st, AT_SYMLINK_NOFOLLOW) != 0) return false;
  if (S_ISLNK(st->st_mode)) {
    if (!may_be_served(directory->conn->server, directory->root, path) || stat(path, st) != 0) return false;
  }
  return S_ISREG(st->st_mode) || S_ISDIR(st->st_mode);
}

static bool read_entries(const struct directory *directory, DIR *dir, struct entry_list *list) {
  const struct dirent *found;
  while (errno = 0, (found = readdir(dir)) != nullptr) {
    struct dir_entry entry = {directory->conn, nullptr, {}};
    if (!is_visible(directory, found->d_name, &entry.st)) continue;
    entry.file_name = strdup(found->d_name);
    if (entry.file_name == nullptr || !add_entry(list, &entry)) {
      free(entry.file_name);
      return false;
    }
  }
  return errno == 0;
}

int scan_directory(struct connection *conn, const char *path, const char *root, struct dir_entry **entries) {
  *entries = nullptr;
  DIR *dir = opendir(path);
  if (dir == nullptr) return -1;
  const struct directory directory = {conn, path, root, dirfd(dir)};
  struct entry_list list = {};
  const bool complete = read_entries(&directory, dir, &list);
  const int error = errno;
  closedir(dir);
  if (!complete) {
    free_directory(list.entries, list.count);
    errno = error;
    return -1;
  }
  *entries = list.entries;
  return list.count;
}

void free_directory(struct dir_entry *entries, int count) {
  for (int i = 0; i < count; i++) free(entries[i].file_name);
  free(entries);
}

/* --- Texts --------------------------------------------------------------------------------------------- */

/* Appends a piece to a text whole or not at all; false when it does not fit. */
static bool append_piece(char *out, size_t size, size_t *len, const char *piece, size_t piece_len) {
  if (*len + piece_len >= size) return false;
  memcpy(out + *len, piece, piece_len);
  *len += piece_len;
  out[*len] = '\0';
  return true;
}

static bool is_unreserved(unsigned char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         (c != '\0' && strchr("-._~/", c) != nullptr);
}

void append_url_encoded(char *out, size_t size, const char *path) {
  size_t len = strlen(out);
  for (; *path != '\0'; path++) {
    const unsigned char c = static_cast<unsigned char>(*path);
    char escape[4];
    snprintf(escape, sizeof(escape), "%%%02X", c);
    const bool plain = is_unreserved(c);
    if (!append_piece(out, size, &len, plain ? path : escape, plain ? 1 : 3)) return;
  }
}

void append_html_escaped(char *out, size_t size, const char *text) {
  static const struct {
    char c;
    const char *entity;
  } entities[] = {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&#39;"}};
  size_t len = strlen(out);
  for (; *text != '\0'; text++) {
    const char *piece = text;
    size_t piece_len = 1;
    for (const auto &entry : entities) {
      if (entry.c != *text) continue;
      piece = entry.entity;
      piece_len = strlen(piece);
    }
    if (!append_piece(out, size, &len, piece, piece_len)) return;
  }
}

/* The longest result of either for a name of a file, and for a URI. */
enum { MAX_ENCODED = 6 * (NAME_MAX + 1), MAX_ENCODED_URI = 6 * MG_MAX_URI_SIZE };

/* --- The page ------------------------------------------------------------------------------------------ */

/* What the query string asks for: a column ("n" name, "d" date, "s" size) and an order ("a", "d"). */
struct order {
  char column;
  bool descending;
};

static struct order order_of(const char *query) {
  struct order order = {'n', false};
  if (query == nullptr || query[0] == '\0' || strchr("nds", query[0]) == nullptr) return order;
  order.column = query[0];
  order.descending = query[1] == 'd';
  return order;
}

static int compare_times(const struct stat *a, const struct stat *b) {
  return a->st_mtime < b->st_mtime ? -1 : a->st_mtime > b->st_mtime;
}

static int compare_sizes(const struct stat *a, const struct stat *b) {
  if (S_ISDIR(a->st_mode)) return 0; /* the size of a directory is not shown */
  return a->st_size < b->st_size ? -1 : a->st_size > b->st_size;
}

/* Directories come first in every order; entries that are equal otherwise are ordered by name. */
static int compare_entries(const void *left, const void *right, void *param) {
  const auto *a = static_cast<const dir_entry *>(left), *b = static_cast<const dir_entry *>(right);
  const auto *order = static_cast<const struct order *>(param);
  const bool a_first = S_ISDIR(a->st.st_mode), b_first = S_ISDIR(b->st.st_mode);
  if (a_first != b_first) return a_first ? -1 : 1;
  int result = 0;
  if (order->column == 'd') result = compare_times(&a->st, &b->st);
  if (order->column == 's') result = compare_sizes(&a->st, &b->st);
  if (result == 0) result = strcmp(a->file_name, b->file_name);
  return order->descending ? -result : result;
}

static void print_size(const struct stat *st, char out[64]) {
  const double size = static_cast<double>(st->st_size);
  if (S_ISDIR(st->st_mode)) {
    snprintf(out, 64, "[DIRECTORY]");
  } else if (st->st_size < 1 << 10) {
    snprintf(out, 64, "%d", static_cast<int>(st->st_size));
  } else if (st->st_size < 1 << 20) {
    snprintf(out, 64, "%.1fk", size / (1 << 10));
  } else if (st->st_size < 1 << 30) {
    snprintf(out, 64, "%.1fM", size / (1 << 20));
  } else {
    snprintf(out, 64, "%.1fG", size / (1 << 30));
  }
}

static void print_local_time(time_t t, char out[64]) {
  struct tm tm = {};
  tm.tm_mday = 1;
  localtime_r(&t, &tm);
  snprintf(out, 64, "%02d-%s-%d %02d:%02d", tm.tm_mday, month_names[tm.tm_mon], tm.tm_year + 1900, tm.tm_hour,
           tm.tm_min);
}

static std::string row_of(const struct dir_entry *entry) {
  char href[MAX_ENCODED] = "", name[MAX_ENCODED] = "", date[64], size[64];
  append_url_encoded(href, sizeof(href), entry->file_name);
  append_html_escaped(name, sizeof(name), entry->file_name);
  print_local_time(entry->st.st_mtime, date);
  print_size(&entry->st, size);
  const char *slash = S_ISDIR(entry->st.st_mode) ? "/" : "";
  char row[2 * MAX_ENCODED + 256];
  snprintf(row, sizeof(row),
           "<tr><td><a href=\"%s%s\">%s%s</a></td><td>&nbsp;%s</td><td>&nbsp;&nbsp;%s</td></tr>\n", href,
           slash, name, slash, date, size);
  return row;
}

/* A column's heading, which orders the page by it, or the other way round when it is so ordered. */
static std::string heading(const char *title, char column, const struct order *order) {
  const char next = order->column == column && !order->descending ? 'd' : 'a';
  return std::string("<th><a href=\"?") + column + next + "\">" + title + "</a></th>";
}

static std::string page_of(const char *uri, const struct order *order, const struct dir_entry *entries,
                           int count) {
  char title[MAX_ENCODED_URI] = "";
  append_html_escaped(title, sizeof(title), uri);
  std::string page = std::string("<!DOCTYPE html>\n<html><head><title>Index of ") + title +
                     "</title></head>\n<body><h1>Index of " + title + "</h1>\n";
  if (strcmp(uri, "/") != 0) page += "<p><a href=\"../\">Parent directory</a></p>\n";
  page += "<table>\n<tr>" + heading("Name", 'n', order) + heading("Modified", 'd', order) +
          heading("Size", 's', order) + "</tr>\n";
  for (int i = 0; i < count; i++) page += row_of(&entries[i]);
  return page + "</table></body></html>\n";
}

/* The page's length is known, but the connection is not kept: only files keep it. */
static void send_page(struct connection *conn, const std::string &page) {
  struct mg_connection *c = &conn->mg_conn;
  mg_send_status(c, 200);
  mg_send_header(c, "Content-Type", "text/html; charset=utf-8");
  mg_send_header(c, "Content-Length", std::to_string(page.size()).c_str());
  mg_send_header(c, "Connection", "close");
  mg_printf(c, "\r\n");
  if (strcmp(c->request_method, "HEAD") != 0) mg_write(c, page.data(), static_cast<int>(page.size()));
  close_local_endpoint(conn);
}

void send_directory_listing(struct connection *conn, const struct file_target *target) {
  struct dir_entry *entries;
  const int count = scan_directory(conn, target->path, target->root, &entries);
  if (count < 0) {
    send_http_error(conn, 500, "open(%s): %s", target->path, strerror(errno));
    return;
  }
  struct order order = order_of(conn->mg_conn.query_string);
  if (count > 0) qsort_r(entries, static_cast<size_t>(count), sizeof(entries[0]), compare_entries, &order);
  send_page(conn, page_of(conn->mg_conn.uri, &order, entries, count));
  free_directory(entries, count);
}
