/* The inside of the HTTP layer: the private record of a client connection and the functions that its units
 * (mg_*.cpp) share. Programs include server/tidewell.h; only this layer and its tests include this file.
 *
 * Reading order: mg_server.cpp (server and options), mg_conn.cpp (one connection's life: events, request
 * state machine, end of a request), mg_request.cpp (parsing a head), mg_vars.cpp (request variables),
 * mg_reply.cpp (status, headers, chunks, error replies), mg_log.cpp (access log), mg_wakeup.cpp (calls from
 * other threads, iteration), mg_client.cpp (outbound client). */
#ifndef KESTREL_SERVER_HTTP_CONN_H
#define KESTREL_SERVER_HTTP_CONN_H

#include "server/tidewell.h"

enum {
  MG_IDLE_TIMEOUT_SECONDS = 300,  /* a client connection without any read or write for longer is closed */
  MG_DATA_BUFFER_SIZE = 8192,     /* mg_printf_data() formats into this much stack */
  MG_MAX_QUEUED_OUTPUT = 1 << 20, /* a client with more waiting for it is not read until it takes some */
  MG_ERROR_BODY_SIZE = 200,       /* the text of an error reply is cut to this length */
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
  int head_scanned;       /* bytes of the incomplete head looked at already */
  bool request_delivered; /* MG_REQUEST has been raised for the current request */
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
/* Serves what has been received so far. */
void on_recv_data(struct connection *);
/* Ends the current request: logs it, forgets it, and keeps or closes the connection. */
void close_local_endpoint(struct connection *);

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
