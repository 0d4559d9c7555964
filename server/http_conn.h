/* The inside of the HTTP layer: the private record of a client connection and the functions that its units
 * (mg_*.cpp) share. Programs include server/tidewell.h; only this layer and its tests include this file.
 *
 * Reading order: mg_server.cpp (server and options), mg_conn.cpp (one connection's life: events, request
 * state machine, end of a request), mg_request.cpp (parsing a head), mg_vars.cpp (request variables),
 * mg_reply.cpp (status, headers, chunks, error replies), mg_log.cpp (access log), mg_wakeup.cpp (calls from
 * other threads, iteration), mg_client.cpp (outbound client), mg_websocket.cpp (WebSocket).
 *
 * A request that the handler declines is served by the endpoints that the server has by itself:
 * mg_file_request.cpp decides which one; mg_path.cpp (from URI to file), mg_match.cpp (patterns),
 * mg_mime.cpp, mg_date.cpp, mg_file.cpp (files), mg_listing.cpp (directories), mg_auth.cpp (digest
 * authentication), mg_dav.cpp and mg_put.cpp (WebDAV), mg_cgi.cpp, mg_cgi_environment.cpp and
 * mg_cgi_head.cpp (CGI), mg_ssi.cpp (server-side includes), mg_program.cpp and mg_child.cpp (the programs
 * that these two run), mg_template.cpp, mg_proxy.cpp and mg_proxy_message.cpp (forward proxy),
 * mg_header_lines.cpp. */
#ifndef KESTREL_SERVER_HTTP_CONN_H
#define KESTREL_SERVER_HTTP_CONN_H

#include "server/tidewell.h"

#include <sys/stat.h>
#include <sys/types.h>

enum {
  MG_IDLE_TIMEOUT_SECONDS = 300,  /* a client connection without any read or write for longer is closed */
  MG_DATA_BUFFER_SIZE = 8192,     /* mg_printf_data() formats into this much stack */
  MG_MAX_QUEUED_OUTPUT = 1 << 20, /* a client with more waiting for it is not read until it takes some */
  MG_ERROR_BODY_SIZE = 200,       /* the text of an error reply is cut to this length */
  MG_MAX_PATH = 4096,             /* bytes of a file's path with its terminator */
};

/* Who serves the current request. */
enum endpoint_type {
  EP_NONE = 0,   /* request head not yet handled */
  EP_FILE = 1,   /* a file is being sent */
  EP_CGI = 2,    /* a CGI process is attached */
  EP_USER = 3,   /* the application handles the request */
  EP_PUT = 4,    /* an upload is written to a file */
  EP_CLIENT = 5, /* outbound HTTP client */
  EP_PROXY = 6,  /* proxied to another server */
};

union endpoint {
  int fd;                   /* EP_FILE, EP_PUT */
  struct ns_connection *nc; /* EP_CGI, EP_PROXY */
};

/* The private record of one client connection; ns_connection::user_data points to it. */
struct connection {
  struct ns_connection *ns_conn;
  struct mg_connection mg_conn; /* what handlers see; see connection_of() */
  struct mg_server *server;
  union endpoint endpoint;
  enum endpoint_type endpoint_type;
  char *path_info;        /* heap text or null */
  char *request;          /* heap copy of the request head, taken apart in place */
  int64_t num_bytes_recv; /* received since the last request ended, head included */
  int64_t cl;             /* the request's Content-Length, 0 when absent */
  int request_len;        /* length of the head; 0 not complete yet, negative malformed */

  /* This layer's own bookkeeping. */
  int head_scanned;          /* bytes of the incomplete head looked at already */
  bool request_delivered;    /* MG_REQUEST has been raised for the current request */
  int64_t unwanted;          /* bytes that the last request's body still owes; dropped as they come */
  int64_t file_left;         /* EP_FILE: bytes of the file still to be sent */
  struct put_upload *upload; /* EP_PUT: what is being written (mg_put.cpp) */
  pid_t cgi_pid;             /* EP_CGI: the process */
  struct ssi_page *ssi;      /* EP_CGI: the page that the process is a command of; null: a CGI program */
  struct proxied *proxied;   /* EP_PROXY: how far request and reply have been passed on (mg_proxy.cpp) */
};

/* The record around the mg_connection that a handler was given. */
struct connection *connection_of(const struct mg_connection *);

/* Index of each option in mg_server::config_options. */
enum mg_option {
  ACCESS_CONTROL_LIST,
  ACCESS_LOG_FILE,
  AUTH_DOMAIN,
  CGI_INTERPRETER,
  CGI_PATTERN,
  DAV_AUTH_FILE,
  DOCUMENT_ROOT,
  ENABLE_DIRECTORY_LISTING,
  ENABLE_PROXY,
  EXTRA_MIME_TYPES,
  GLOBAL_AUTH_FILE,
  HIDE_FILES_PATTERNS,
  HEXDUMP_FILE,
  INDEX_FILES,
  LISTENING_PORT,
  RUN_AS_USER,
  SSI_PATTERN,
  URL_REWRITES,
};
static_assert(URL_REWRITES + 1 == MG_NUM_OPTIONS);

/* --- Option lists (mg_options.cpp) --------------------------------------------------------------------- */

/* A piece of a text, not terminated. */
struct vec {
  const char *ptr;
  size_t len;
};

/* Takes the next entry off a comma-separated list into `entry`; with `value`, an entry name=value is split at
 * its first "=" (value->ptr is null when there is none). Returns the rest of the list, null at the end. */
const char *next_option(const char *list, struct vec *entry, struct vec *value);

/* Whether an IPv4 address (host byte order) may connect: 1 yes, 0 no, -1 the list is malformed. Null allows
 * every address. */
int check_acl(const char *acl, uint32_t remote_ip);

/* --- Requests (mg_request.cpp) ------------------------------------------------------------------------- */

/* Looks for the end of a head in buf, of which the first `scanned` bytes were looked at before. Returns the
 * head's length with its terminator, 0 when it is incomplete, -1 when it holds a forbidden byte. */
int get_request_len_from(const char *buf, int buf_len, int scanned);
int get_request_len(const char *buf, int buf_len);

/* Takes a head of `len` bytes apart in place; the fields of `conn` then point into it. The head may be a
 * request's or a response's. Returns len, -1 when it is malformed. */
int parse_http_message(char *buf, int len, struct mg_connection *conn);

/* Takes a request's URI apart in place: cuts the query string off and returns it (null: there is none), then
 * decodes and normalises what is left. */
const char *split_uri(char *uri);

/* Whether a decoded URI has one of the forms that are served: /path, *, http..., host:port. */
bool is_valid_uri(const char *uri);

/* --- One connection's life (mg_conn.cpp) --------------------------------------------------------------- */

/* The callback of every socket of this layer. */
void mg_ev_handler(struct ns_connection *, int event, void *event_data);
/* Makes the record of a new client and links it both ways. Null when memory is exhausted. */
struct connection *new_connection(struct ns_connection *);
/* Calls the application's handler; 0 when there is none. */
int call_user(struct connection *, enum mg_event);
/* Measures, copies and parses the head once it is complete: sets request_len, request, cl and content_len. */
void try_parse_head(struct connection *);
/* Whether the connection will wait for another request after the current one, whose endpoint is set. */
bool should_keep_alive(const struct connection *);
/* Serves what has been received so far. */
void on_recv_data(struct connection *);
/* Ends the current request: logs it, forgets it, and keeps or closes the connection. */
void close_local_endpoint(struct connection *);
/* For the callbacks of sockets that serve a client (a CGI process's pipe, a proxied server): `peer` closes,
 * so its client (user_data; null when it is gone) is drained and closed. */
void release_client(struct ns_connection *peer);
/* Stops reading `from` while more than MG_MAX_QUEUED_OUTPUT bytes wait to be written to `to`. Called when
 * bytes were queued to `to`. */
void hold_back(struct ns_connection *from, const struct ns_connection *to);
/* The counterpart, at NET_EV_SEND of `to` (whose `sent` bytes are still at the front of its send buffer). */
void let_go(struct ns_connection *from, const struct ns_connection *to, int sent);

/* --- WebSocket (mg_websocket.cpp; RFC 6455) ------------------------------------------------------------ */

/* If the request asks for an upgrade: sets is_websocket, raises MG_WS_HANDSHAKE, answers 101 unless the
 * handler has answered, and raises MG_WS_CONNECT. */
void answer_websocket_upgrade(struct connection *);
/* Gives the complete frames of the receive buffer to the handler and removes them, as far as there is room
 * for its answers: many small frames may ask for much. The rest follows from on_poll(). */
void deliver_websocket_frames(struct connection *);
/* Sends an empty ping on a connection that has been idle for more than 5 seconds. */
void keep_websocket_alive(struct connection *, time_t now);

/* --- Declined requests (mg_file_request.cpp) ----------------------------------------------------------- */

/* Serves a request under document_root: authorises it, and gives it to WebDAV, CGI, SSI, listing or file
 * sending; 404 without document_root. */
void serve_file_request(struct connection *);

/* --- From URI to file (mg_path.cpp, mg_match.cpp) ------------------------------------------------------ */

/* Where a URI leads. */
struct file_target {
  char path[MG_MAX_PATH]; /* the file, absolute; it need not exist. It ends with "/" when the URI does */
  char root[MG_MAX_PATH]; /* the directory that the path must not leave: document_root or that of a rewrite */
  bool exists;            /* whether there is such a file or directory; st is filled in then */
  bool forbidden;         /* hidden, neither file nor directory, or outside of root by way of a link: to be
                             answered as what does not exist, and not to be touched */
  struct stat st;
};
/* Maps the request's URI under document_root or the directory of the longest matching entry of url_rewrites,
 * whose prefixes stand for whole components. When nothing is there and a leading part of the path is a file
 * that cgi_pattern matches, that file is the target and the rest becomes the connection's path_info (GET,
 * HEAD and POST). False when document_root is unset and no rewrite matches, or the path is too long. */
bool find_file_target(struct connection *, struct file_target *);
/* The target is a directory, its path ending with "/": makes the first name of index_files that is a file
 * there the target. False, the target unchanged, when there is none. */
bool find_index_file(struct connection *, struct file_target *);
/* The path by which a request for the target is authorised: its own; when nothing is there, or nothing that a
 * client may know of, that of the nearest directory above, which is what may be changed. */
void find_protected_path(const struct mg_server *, const struct file_target *, char out[MG_MAX_PATH]);
/* Whether a path (links followed; its last components need not exist) lies in the directory `root` or is it.
 */
bool is_inside(const char *root, const char *path);
/* Whether hide_files_patterns or the built-in pattern of password files matches the path itself. */
bool has_hidden_name(const struct mg_server *, const char *path);
/* The same for the path and for all directories that it leads through. */
bool must_hide_file(const struct mg_server *, const char *path);
/* Whether a path lies inside of `root` and is hidden neither by its name nor by where it leads. */
bool may_be_served(const struct mg_server *, const char *root, const char *path);
/* Matches a text from its beginning with a pattern of alternatives separated by "|": "**" stands for any
 * characters, "*" for any but "/", "?" for one but "/", "$" for the end; all others for themselves in any
 * case. Returns the length of the longest match, -1 when nothing did. */
int mg_match_prefix(const char *pattern, int pattern_len, const char *text);
/* Whether the patterns of an option match; false when it is unset. */
bool option_matches(const struct mg_server *, enum mg_option, const char *text);

/* --- Files (mg_file.cpp, mg_mime.cpp, mg_date.cpp, mg_listing.cpp) ------------------------------------- */

/* Bytes of a file, both ends included. */
struct byte_range {
  int64_t first;
  int64_t last;
};
enum range_result {
  RANGE_NONE,          /* no range, one that is not understood, or several: the whole file is the answer */
  RANGE_PART,          /* *range is the part that is asked for */
  RANGE_UNSATISFIABLE, /* it begins behind the file's end */
};
/* Reads a Range header: "bytes=%ld-%ld", "bytes=%ld-" or "bytes=-%ld". */
enum range_result parse_range(const char *header, int64_t file_size, struct byte_range *range);
/* Opens a regular file for reading and fills in its status; a pipe of that name is not waited for. -1 with
 * errno: EISDIR for a directory, EACCES for what is no regular file either. */
int open_regular_file(const char *path, struct stat *st);
/* Answers that a file cannot be opened, by the error number: 404 when it is not there, else 500. */
void refuse_file(struct connection *, const char *path, int error);
/* Answers with the file, or 304, 206, 412, 416 as the request's headers ask, and begins to send it.
 * `extra_headers`: whole header lines, or null. */
void open_file_endpoint(struct connection *, const char *path, const struct stat *,
                        const char *extra_headers);
/* Queues the next part of the file being sent; ends the request after the last. Called in every pass. */
void transfer_file_data(struct connection *);
/* The content type of a file by its name: of extra_mime_types, else of the built-in table. Not terminated. */
struct vec mime_type_of(const struct mg_server *, const char *path);
/* Names of the months, January first. */
extern const char month_names[12][4];
/* "%a, %d %b %Y %H:%M:%S GMT" (RFC 9110 section 5.6.7), whatever the locale. */
enum { MG_DATE_SIZE = 40 };
void print_http_date(time_t, char out[MG_DATE_SIZE]);
/* Reads a date of a request header in any of the four forms that are understood; 0 for anything else. */
time_t parse_http_date(const char *text);
/* The entity tag of a file, with its quotes. */
enum { MG_ETAG_SIZE = 64 };
void print_etag(const struct stat *, char out[MG_ETAG_SIZE]);
/* The status that the request's preconditions give (RFC 9110 section 13): 200 when they hold or there are
 * none, 304 for reading what the client has already, else 412. `st` is null when there is no such file. */
int check_preconditions(const struct mg_connection *, const struct stat *st);
/* One entry of a directory. */
struct dir_entry {
  struct connection *conn;
  char *file_name; /* heap text */
  struct stat st;
};
/* Reads the files and directories that stand in a directory, but hidden ones and links that lead out of
 * `root`. Returns their number, -1 with errno when it cannot be read. free_directory() releases them. */
int scan_directory(struct connection *, const char *directory, const char *root, struct dir_entry **entries);
void free_directory(struct dir_entry *entries, int count);
/* Appends a path to `out` with all but unreserved characters and "/" %-encoded (RFC 3986), cut at the size;
 * and a text with the characters that mean something in HTML and XML replaced. Both terminate. */
void append_url_encoded(char *out, size_t size, const char *path);
void append_html_escaped(char *out, size_t size, const char *text);
/* Answers with the page that lists a directory and ends the request. */
void send_directory_listing(struct connection *, const struct file_target *);

/* --- Digest authentication (mg_auth.cpp; RFC 2617) ----------------------------------------------------- */

/* Whether the request carries the right digest for the password file that protects `path`: global_auth_file,
 * else ".htpasswd" in its directory (a directory's own). True when there is no ".htpasswd"; a file that
 * cannot be read, and a global_auth_file that is not there, open nothing. */
bool is_authorised(struct connection *, const char *path);
/* Whether it carries one for dav_auth_file; false when that is unset or cannot be read. */
bool is_authorised_for_dav(struct connection *);

/* --- WebDAV (mg_dav.cpp, mg_put.cpp; RFC 4918) --------------------------------------------------------- */

/* Whether If-Match, If-None-Match or If-Unmodified-Since keeps the request from changing the target: 412
 * (RFC 9110 section 13). */
bool precondition_fails(const struct connection *, const struct file_target *);
/* Answers with a status of success and ends the request. */
void send_dav_success(struct connection *, int status);
/* The methods: each answers and ends the request. The target may not exist, and is not a forbidden one. Where
 * the file system refuses, the status is 403, 405 (it is there already), 409 (its directory is not), 507 (the
 * disk is full) or 500.
 *
 * 207 with an entry for the target, and with "Depth: 1" for each file and directory in it. A missing depth
 * and "infinity" are taken for 1. A body is not looked at: every property is told. 404, 400. */
void handle_propfind(struct connection *, const struct file_target *);
/* 201. A body: 415. */
void handle_mkcol(struct connection *, const struct file_target *);
/* 200. Removes a file, a link (never what it leads to), or a directory with all that is in it: not the root,
 * and nothing at all of one that holds hidden files (403). 404, 400 for a depth but "infinity", 412. */
void handle_delete(struct connection *, const struct file_target *);
/* Begins an upload (EP_PUT): 201 for a new file, 200 for one that is replaced, or of which the part that
 * Content-Range names is. 400, 403, 405 for a directory, 411 without Content-Length, 412, 416 for a part that
 * begins behind the file's end; 507 when the disk is full; 500 "put_dir: ..." and "open(...): ..." when
 * directories or the file cannot be made. write_upload() takes what has arrived of the body, and answers
 * after the last byte. release_upload() at the end of the request: what is incomplete leaves no trace. */
void handle_put(struct connection *, const struct file_target *);
void write_upload(struct connection *);
void release_upload(struct connection *);

/* --- CGI (mg_cgi.cpp; RFC 3875) ------------------------------------------------------------------------ */

/* Starts the program (EP_CGI). */
void open_cgi_endpoint(struct connection *, const struct file_target *);
/* Passes what has arrived of the body on to the program. */
void forward_to_cgi(struct connection *);
/* At the end of the request: detaches the pipe, and ends the program when it is still running. */
void release_cgi(struct connection *);

/* The environment of a program (mg_cgi_environment.cpp). Not to be copied, as vars point into buf. */
enum { CGI_ENV_SIZE = 8192, CGI_ENV_VARS = 64 };
struct cgi_env_block {
  struct connection *conn;
  char buf[CGI_ENV_SIZE];   /* NAME=value texts back to back, each terminated */
  char *vars[CGI_ENV_VARS]; /* pointers to them, ended by null */
  int len;                  /* bytes of buf used */
  int nvars;                /* elements of vars used */
};
/* Adds a NAME=value text. False when it does not fit; the block is then as it was. */
bool add_variable(struct cgi_env_block *, const char *fmt, ...) __attribute__((format(printf, 2, 3)));
/* Fills in the block. Returns 0, or the status of the error that the request deserves when it does not fit:
 * 414 its URI, 431 its headers, 500 the server's own part. */
int prepare_cgi_environment(struct connection *, const struct file_target *, struct cgi_env_block *);
/* Copies a path, a relative one behind the current directory's. */
void make_absolute(const char *path, char *out, size_t size);

/* The head of a program's output (mg_cgi_head.cpp). */
enum { CGI_MAX_HEAD = 16384 }; /* bytes of its header lines */
enum cgi_head_state { CGI_HEAD_INCOMPLETE, CGI_HEAD_COMPLETE, CGI_HEAD_MALFORMED };
struct cgi_head {
  size_t len;        /* with the empty line */
  struct vec lines;  /* the header lines */
  int status;        /* that of "Status"; else 302 with "Location", 200 without */
  struct vec reason; /* behind it; empty when there is none */
};
/* Reads the head at the beginning of an output. The texts of a complete one lie in buf. */
enum cgi_head_state parse_cgi_head(const char *buf, size_t len, struct cgi_head *);
/* Takes the next header off the lines of a head. False at the end, or when it is malformed. */
bool next_cgi_header(struct vec *lines, struct vec *name, struct vec *value);

/* --- Programs that serve a client (mg_program.cpp) ----------------------------------------------------- */

/* Appends bytes to a buffer that many small pieces come to, making room for more of them. False when there is
 * no memory; the buffer is then unchanged. */
bool append_piece(struct iobuf *, const void *bytes, size_t len);

/* Starts a program whose output serves the client: the request becomes EP_CGI, its endpoint the pipe to the
 * program, whose events go to `callback` and whose user_data is the connection. Arguments as start_child().
 * False with errno when it cannot be started. */
bool start_program(struct connection *, char *const argv[], char *const environment[], const char *directory,
                   ns_callback_t callback);
/* For NET_EV_POLL: the output ends with the program, also when processes that it left behind hold the pipe
 * open. */
void close_pipe_of_ended_program(struct ns_connection *pipe);
/* For NET_EV_CLOSE: takes into the receive buffer what was written before. */
void read_rest_of_output(struct ns_connection *pipe);
/* Detaches the connection from a pipe that closes. */
void forget_pipe(struct ns_connection *pipe);
/* Detaches the request from its program: ends it while its pipe is open, else lets it finish. */
void release_program(struct connection *);

/* --- Server-side includes (mg_ssi.cpp) ----------------------------------------------------------------- */

/* Answers with the file, its directives carried out, and ends the request: at once, or when the commands of
 * the page have ended (EP_CGI). */
void send_ssi_file(struct connection *, const struct file_target *);
/* At the end of the request: forgets the page, if there is one. */
void free_ssi_page(struct connection *);

/* --- Forward proxy (mg_proxy.cpp) ---------------------------------------------------------------------- */

/* Serves CONNECT and requests with an absolute URI: connects to the server that it names (EP_PROXY). */
void open_proxy_endpoint(struct connection *);
/* Passes what the client has sent on to the server. */
void forward_to_proxied_server(struct connection *);
/* At the end of the request: detaches and dooms the server's socket. */
void release_proxied_server(struct connection *);

/* --- Header lines (mg_header_lines.cpp) ---------------------------------------------------------------- */

/* Takes the next line, which "\n" or "\r\n" ends, off a text. False when there is no whole line. */
bool take_line(struct vec *text, struct vec *line);
/* Splits a header line (RFC 9110 section 5.1) into its name, a token, and its value without the blanks around
 * it. False when it is malformed. */
bool split_header_line(struct vec line, struct vec *name, struct vec *value);
/* A text without the blanks and tabs around it. */
struct vec without_blanks(struct vec text);
/* Whether a text is this word in any case. */
bool is_word(struct vec text, const char *word);

/* --- Outbound client (mg_client.cpp) ------------------------------------------------------------------- */

/* Raises MG_REPLY once a whole reply has been received. */
void on_client_data(struct connection *);
/* The server closed: raises MG_REPLY for a reply that only the end of the connection completes. */
void on_client_close(struct connection *);

/* --- Replies (mg_reply.cpp) and log (mg_log.cpp) ------------------------------------------------------- */

/* The reason phrase of a status code; "Server Error" for one without. */
const char *status_code_to_str(int status_code);
/* Answers with an error and ends the request. The optional detail (null: none) follows the first line. */
void send_http_error(struct connection *, int code, const char *fmt, ...)
    __attribute__((format(printf, 3, 4)));
/* Answers 416 (RFC 9110 section 15.5.17) for a file of that size and ends the request. */
void send_range_error(struct connection *, int64_t file_size);
/* Queues a text in one piece, of any length: mg_printf() would end one of just 500 characters with a NUL
 * byte. False when memory is exhausted. */
bool send_formatted(struct connection *, const char *fmt, ...) __attribute__((format(printf, 2, 3)));
/* Ends a chunked reply. */
void write_terminating_chunk(struct connection *);
/* Asks for digest credentials and ends the request. */
void send_auth_challenge(struct connection *);
/* Answers OPTIONS and ends the request. */
void send_options_reply(struct connection *);
/* Copies a decoded URI into dst (terminated, cut if need be) with its control bytes %-encoded, so that it can
 * stand in a header or log line. */
void print_uri(const char *uri, char *dst, size_t dst_size);
/* Appends the request's line to the access log. */
void log_access(const struct connection *, const char *path);

#endif
