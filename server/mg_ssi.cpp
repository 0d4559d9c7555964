/* Server-side includes: a page with directives of the form <!--#word arguments-->.
 *
 *   <!--#include virtual="/a.html"-->   a file below document_root
 *   <!--#include file="a.html"-->       a file named relative to the one that the directive stands in,
 *   <!--#include "a.html"-->            the same
 *   <!--#include abspath="/b/a.html"-->  any file: it is the page's author who names it
 *   <!--#exec "command"-->              what a shell command writes
 *
 * Included files whose names match ssi_pattern may have directives too. What goes wrong is said in the page,
 * in the directive's place.
 *
 * The page is put together in memory and answered with its length. While a command runs nobody waits for it:
 * its output is taken as it comes, as a CGI program's, and the page goes on when the command has ended. A
 * command that never ends is ended with its client, which the idle time-out closes. What a page may cost is
 * bounded: SSI_MAX_SIZE bytes read from files and commands, SSI_MAX_DIRECTIVES directives; beyond that the
 * request is answered with an error. */
#include "server/http_conn.h"
#include "server/mg_child.h"

#include <ctype.h>
#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

enum {
  SSI_MAX_DEPTH = 10,        /* files included within each other, the page itself not counted */
  SSI_MAX_TAG = 8192,        /* bytes of a directive */
  SSI_MAX_SIZE = 8 << 20,    /* bytes read for a page */
  SSI_MAX_DIRECTIVES = 1000, /* carried out for a page */
};

/* A file of the page, of which the directives are carried out one after the other. */
struct ssi_file {
  char *path;
  char *root; /* the directory that the files named relative to this one must lie in */
  struct iobuf text;
  size_t pos; /* up to where it has been dealt with */
};

/* A page being put together. */
struct ssi_page {
  struct ssi_file files[1 + SSI_MAX_DEPTH]; /* the page, the file that it is including, ... */
  int depth;                                /* how many */
  struct iobuf out;
  size_t size_left;    /* bytes that may still be read */
  int directives_left; /* directives that may still be carried out */
  bool too_large;      /* more would have been needed */
};

/* --- The page ------------------------------------------------------------------------------------------ */

static void pop_file(struct ssi_page *page) {
  struct ssi_file *file = &page->files[--page->depth];
  free(file->path);
  free(file->root);
  iobuf_free(&file->text);
}

void free_ssi_page(struct connection *conn) {
  struct ssi_page *page = conn->ssi;
  if (page == nullptr) return;
  while (page->depth > 0) pop_file(page);
  iobuf_free(&page->out);
  free(page);
  conn->ssi = nullptr;
}

/* Takes bytes that were read off what the page may cost. */
static bool charge(struct ssi_page *page, size_t size) {
  if (size > page->size_left) page->too_large = true;
  page->size_left -= page->too_large ? 0 : size;
  return !page->too_large;
}

static void put(struct ssi_page *page, const char *bytes, size_t len) {
  if (!append_piece(&page->out, bytes, len)) page->too_large = true;
}

/* Says in the page what went wrong. */
__attribute__((format(printf, 2, 3))) static void complain(struct ssi_page *page, const char *fmt, ...) {
  char *text = nullptr;
  va_list ap;
  va_start(ap, fmt);
  const int len = vasprintf(&text, fmt, ap);
  va_end(ap);
  if (len < 0) return;
  if (charge(page, static_cast<size_t>(len))) put(page, text, static_cast<size_t>(len));
  free(text);
}

/* --- Files --------------------------------------------------------------------------------------------- */

/* Opens a regular file that is inside `root` and not hidden, and prints its path without links. Returns -1
 * with errno. */
static int open_page_file(const struct mg_server *server, const char *path, const char *root,
                          char real[MG_MAX_PATH]) {
  static_assert(MG_MAX_PATH >= PATH_MAX);
  if (realpath(path, real) == nullptr) return -1;
  if (!may_be_served(server, root, path)) {
    errno = ENOENT;
    return -1;
  }
  struct stat st;
  return open_regular_file(real, &st);
}

/* Reads to the end. False with errno on an error; the page may have become too large. */
static bool read_text(struct ssi_page *page, int fd, struct iobuf *text) {
  char buf[65536];
  ssize_t n;
  while ((n = read(fd, buf, sizeof(buf))) > 0) {
    const auto len = static_cast<size_t>(n);
    if (!charge(page, len)) return true;
    if (!append_piece(text, buf, len)) page->too_large = true;
  }
  return n == 0;
}

/* Makes the file the one that is dealt with next. False with errno when it cannot be read. */
static bool push_file(struct connection *conn, const char *path, const char *root) {
  struct ssi_page *page = conn->ssi;
  char real[MG_MAX_PATH];
  const int fd = open_page_file(conn->server, path, root, real);
  if (fd == -1) return false;
  struct ssi_file file = {strdup(real), strdup(root), {}, 0};
  const bool readable = read_text(page, fd, &file.text);
  const int error = errno;
  close(fd);
  page->files[page->depth++] = file;
  if (readable && file.path != nullptr && file.root != nullptr) return true;
  pop_file(page);
  errno = readable ? ENOMEM : error;
  return false;
}

/* --- Directives ---------------------------------------------------------------------------------------- */

static bool is_blank(char c) {
  return isspace(static_cast<unsigned char>(c));
}

static void skip_blanks(struct vec *text) {
  while (text->len > 0 && is_blank(text->ptr[0])) text->ptr++, text->len--;
}

static struct vec trimmed(struct vec text) {
  skip_blanks(&text);
  while (text.len > 0 && is_blank(text.ptr[text.len - 1])) text.len--;
  return text;
}

/* Takes a directive's word off its text. */
static struct vec take_word(struct vec *text) {
  struct vec word = {text->ptr, 0};
  while (word.len < text->len && isalpha(static_cast<unsigned char>(text->ptr[word.len]))) word.len++;
  text->ptr += word.len;
  text->len -= word.len;
  return word;
}

static bool equals(const struct vec *word, const char *text) {
  return word->len == strlen(text) && memcmp(word->ptr, text, word->len) == 0;
}

/* Reads arguments that are the name followed by a text in quotes, which must not be empty, and copies that.
 */
static bool read_argument(struct vec arguments, const char *name, char *value, size_t size) {
  const size_t name_len = strlen(name);
  if (arguments.len < name_len + 3 || memcmp(arguments.ptr, name, name_len) != 0) return false;
  const char *begin = arguments.ptr + name_len + 1;
  const size_t len = arguments.len - name_len - 2;
  if (begin[-1] != '"' || begin[len] != '"' || len >= size) return false;
  if (memchr(begin, '"', len) != nullptr || memchr(begin, '\0', len) != nullptr) return false;
  memcpy(value, begin, len);
  value[len] = '\0';
  return true;
}

/* The forms of an include directive. */
enum include_base { FROM_ROOT, FROM_FILE, ABSOLUTE };
static const struct {
  const char *name;
  enum include_base base;
} include_forms[] = {
    {"virtual=", FROM_ROOT},
    {"abspath=", ABSOLUTE},
    {"file=", FROM_FILE},
    {"", FROM_FILE},
};

/* What an include directive names. */
struct include_target {
  char path[2 * MG_MAX_PATH];
  const char *root;
};

/* The file that a name stands for; where it must lie is what the files it includes inherit. */
static void locate_include(const struct connection *conn, enum include_base base, const char *name,
                           struct include_target *target) {
  const struct ssi_file *file = &conn->ssi->files[conn->ssi->depth - 1];
  const char *document_root = conn->server->config_options[DOCUMENT_ROOT];
  const int directory_len = static_cast<int>(strrchr(file->path, '/') - file->path);
  switch (base) {
  case FROM_ROOT:
    target->root = document_root == nullptr ? conn->ssi->files[0].root : document_root;
    snprintf(target->path, sizeof(target->path), "%s/%s", target->root, name);
    break;
  case FROM_FILE:
    target->root = file->root;
    snprintf(target->path, sizeof(target->path), "%.*s/%s", directory_len, file->path, name);
    break;
  case ABSOLUTE:
    target->root = "/";
    snprintf(target->path, sizeof(target->path), "%s", name);
    break;
  }
}

static bool read_include(const struct connection *conn, const struct vec *arguments,
                         struct include_target *target) {
  char name[MG_MAX_PATH];
  for (const auto &form : include_forms) {
    if (!read_argument(*arguments, form.name, name, sizeof(name))) continue;
    locate_include(conn, form.base, name, target);
    return form.base != ABSOLUTE || name[0] == '/';
  }
  return false;
}

/* Prints a piece of the page as an argument of "%.*s". */
static int length(const struct vec *text) {
  return static_cast<int>(text->len);
}

static void do_include(struct connection *conn, const struct vec *arguments) {
  struct ssi_page *page = conn->ssi;
  struct include_target target;
  if (!read_include(conn, arguments, &target)) {
    complain(page, "Bad SSI #include: [%.*s]", length(arguments), arguments->ptr);
    return;
  }
  if (page->depth > SSI_MAX_DEPTH) {
    complain(page, "SSI #include level is too deep (%s)", target.path);
    return;
  }
  if (!push_file(conn, target.path, target.root)) {
    complain(page, "Cannot open SSI #include: [%.*s]: fopen(%s): %s", length(arguments), arguments->ptr,
             target.path, strerror(errno));
    return;
  }
  if (option_matches(conn->server, SSI_PATTERN, target.path)) return;
  struct ssi_file *file = &page->files[page->depth - 1];
  put(page, file->text.buf, file->text.len);
  pop_file(page);
}

static void ssi_ev_handler(struct ns_connection *pipe, int event, void *event_data);

/* Returns whether there is a command to wait for now. */
static bool do_exec(struct connection *conn, const struct vec *arguments) {
  char command[SSI_MAX_TAG];
  if (!read_argument(*arguments, "", command, sizeof(command))) {
    complain(conn->ssi, "Bad SSI #exec: [%.*s]", length(arguments), arguments->ptr);
    return false;
  }
  char shell[] = "/bin/sh", option[] = "-c";
  char *const argv[] = {shell, option, command, nullptr};
  if (!start_program(conn, argv, nullptr, nullptr, ssi_ev_handler)) {
    complain(conn->ssi, "Cannot SSI #exec: [%.*s]: %s", length(arguments), arguments->ptr, strerror(errno));
    return false;
  }
  ns_end_output(conn->endpoint.nc);
  return true;
}

/* Returns whether there is a command to wait for now. */
static bool carry_out(struct connection *conn, struct vec directive) {
  struct ssi_page *page = conn->ssi;
  const struct ssi_file *file = &page->files[page->depth - 1];
  if (page->directives_left-- == 0) {
    page->too_large = true;
    return false;
  }
  struct vec rest = directive;
  const struct vec word = take_word(&rest);
  const struct vec arguments = trimmed(rest);
  if (equals(&word, "exec")) return do_exec(conn, &arguments);
  if (equals(&word, "include")) {
    do_include(conn, &arguments);
  } else {
    complain(page, "%s: unknown SSI command: \"%.*s\"", file->path, length(&directive), directive.ptr);
  }
  return false;
}

/* --- Putting the page together ------------------------------------------------------------------------- */

/* Copies the file up to its next directive. False when there is none. */
static bool find_directive(struct ssi_page *page, struct ssi_file *file, struct vec *directive) {
  static const char begin[] = "<!--#", end[] = "-->";
  const char *text = file->text.buf + file->pos;
  const size_t len = file->text.len - file->pos;
  const auto *tag = len == 0 ? nullptr : static_cast<const char *>(memmem(text, len, begin, strlen(begin)));
  put(page, text, tag == nullptr ? len : static_cast<size_t>(tag - text));
  file->pos = file->text.len;
  if (tag == nullptr) return false;

  directive->ptr = tag + strlen(begin);
  const auto left = static_cast<size_t>(text + len - directive->ptr);
  const auto *tag_end = static_cast<const char *>(memmem(directive->ptr, left, end, strlen(end)));
  directive->len = tag_end == nullptr ? left : static_cast<size_t>(tag_end - directive->ptr);
  if (tag_end != nullptr) file->pos = static_cast<size_t>(tag_end + strlen(end) - file->text.buf);
  if (tag_end == nullptr || directive->len > SSI_MAX_TAG) directive->ptr = nullptr;
  return true;
}

static void send_page(struct connection *conn) {
  struct mg_connection *c = &conn->mg_conn;
  const struct iobuf *out = &conn->ssi->out;
  c->status_code = 200;
  mg_printf(c,
            "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: %zu\r\nConnection: close\r\n\r\n",
            out->len);
  if (strcmp(c->request_method, "HEAD") != 0) mg_write(c, out->buf, static_cast<int>(out->len));
  free_ssi_page(conn);
  close_local_endpoint(conn);
}

static void refuse_page(struct connection *conn) {
  free_ssi_page(conn);
  send_http_error(conn, 500, "SSI page is too large");
}

/* Goes on with the page, until there is a command to wait for or the request has been answered. */
static void continue_page(struct connection *conn) {
  struct ssi_page *page = conn->ssi;
  while (page->depth > 0 && !page->too_large) {
    struct ssi_file *file = &page->files[page->depth - 1];
    struct vec directive;
    if (!find_directive(page, file, &directive)) {
      pop_file(page);
    } else if (directive.ptr == nullptr) {
      complain(page, "%s: SSI tag is too large", file->path);
    } else if (carry_out(conn, trimmed(directive))) {
      return;
    }
  }
  if (page->too_large) {
    refuse_page(conn);
  } else {
    send_page(conn);
  }
}

/* --- Commands ------------------------------------------------------------------------------------------ */

static void take_output(struct ssi_page *page, struct iobuf *output) {
  if (charge(page, output->len)) put(page, output->buf, output->len);
  iobuf_free(output);
}

static void on_command_end(struct connection *conn, struct ns_connection *pipe) {
  read_rest_of_output(pipe);
  take_output(conn->ssi, &pipe->recv_iobuf);
  forget_pipe(pipe);
  release_program(conn);
  continue_page(conn);
}

static void ssi_ev_handler(struct ns_connection *pipe, int event, void *) {
  auto *conn = static_cast<connection *>(pipe->user_data);
  if (conn == nullptr) return; /* the request is over */
  switch (event) {
  case NET_EV_RECV:
    take_output(conn->ssi, &pipe->recv_iobuf);
    if (conn->ssi->too_large) refuse_page(conn);
    break;
  case NET_EV_POLL:
    close_pipe_of_ended_program(pipe);
    break;
  case NET_EV_CLOSE:
    on_command_end(conn, pipe);
    break;
  }
}

/* --- The request --------------------------------------------------------------------------------------- */

/* Begins with the page. False with errno when it cannot be read. */
static bool open_page(struct connection *conn, const struct file_target *target) {
  conn->ssi = static_cast<ssi_page *>(calloc(1, sizeof(ssi_page)));
  if (conn->ssi == nullptr) return false;
  conn->ssi->size_left = SSI_MAX_SIZE;
  conn->ssi->directives_left = SSI_MAX_DIRECTIVES;
  return push_file(conn, target->path, target->root);
}

void send_ssi_file(struct connection *conn, const struct file_target *target) {
  if (conn->ns_conn->flags & CONN_UDP) {
    send_http_error(conn, 501, nullptr); /* without a connection nothing can wait for a command */
    return;
  }
  if (open_page(conn, target)) {
    continue_page(conn);
    return;
  }
  const int error = errno;
  free_ssi_page(conn);
  refuse_file(conn, target->path, error);
}
