/* The HTTP server's chief header: the server object and its options, the request record handed to the
 * application's event handler, the events, and the calls that read a request and write its reply.
 *
 * A program creates a server with one event handler, sets its options and calls mg_poll_server() for ever.
 * Everything runs on the thread that polls; handlers must not block. */
#ifndef KESTREL_SERVER_TIDEWELL_H
#define KESTREL_SERVER_TIDEWELL_H

#include "server/ns_conn.h"

enum {
  MG_MAX_HEADERS = 30,         /* header lines kept of a request; the rest are ignored */
  MG_MAX_REQUEST_HEAD = 16384, /* bytes buffered without a complete head before 413 */
  MG_MAX_URI_SIZE = 256,       /* a decoded URI of this length or more is malformed (400) */
  MG_NUM_OPTIONS = 18,
};

/* Flag bits of ns_connection::flags that belong to this layer. */
enum {
  CONN_HEADERS_SENT = 0x100000,  /* the header block of a chunked reply has been written */
  CONN_REQUEST_BIT21 = 0x200000, /* cleared at the end of each request; never set */
  CONN_CGI_PIPE = 0x400000,      /* the pipe to a CGI process */
  CONN_PROXY_PEER = 0x800000,    /* the outbound side of a proxied connection */
};

enum mg_event {
  MG_POLL = 100,         /* once per pass for every client; MG_TRUE ends the current request */
  MG_CONNECT = 101,      /* outbound client: connected, or not (status_code) */
  MG_AUTH = 102,         /* head parsed, body not attached; MG_FALSE asks for digest credentials (401) */
  MG_REQUEST = 103,      /* whole body arrived; see enum mg_result */
  MG_REPLY = 104,        /* outbound client: reply received; MG_FALSE closes the connection */
  MG_RECV = 105,         /* body bytes arrived; n >= 0 consumes n bytes, n < 0 closes after sending */
  MG_CLOSE = 106,        /* the connection closes */
  MG_WS_HANDSHAKE = 107, /* WebSocket upgrade asked for; non-zero = the handler answered it */
  MG_WS_CONNECT = 108,   /* WebSocket established */
  MG_HTTP_ERROR = 109,   /* an error reply is due (status_code); MG_TRUE = the handler has answered */
};

enum mg_result {
  MG_FALSE = 0, /* MG_REQUEST: the server handles the request itself (a WebSocket's frame: it closes) */
  MG_TRUE = 1,  /* MG_REQUEST: answered, the request ends */
  MG_MORE = 2,  /* MG_REQUEST: stays open until an MG_POLL returns MG_TRUE (not for datagrams) */
};

struct mg_header {
  const char *name;
  const char *value;
};

/* A request as the handler sees it. Texts live until the request ends. */
struct mg_connection {
  const char *request_method; /* "GET", "POST", ... */
  const char *uri;            /* URL-decoded and normalised, at most 255 characters */
  const char *http_version;   /* "1.0" or "1.1" */
  const char *query_string;   /* text after the first "?", not decoded; null when there is none */

  char remote_ip[48]; /* dotted IPv4 text */
  char local_ip[48];
  unsigned short remote_port;
  unsigned short local_port;

  int num_headers;
  struct mg_header http_headers[MG_MAX_HEADERS];

  char *content;      /* body, not terminated; null at MG_AUTH */
  size_t content_len; /* its length in bytes; at MG_AUTH the declared Content-Length */

  int is_websocket;       /* non-zero once upgraded */
  int status_code;        /* status sent, 0 before; of an outbound reply the status received */
  int wsbits;             /* first byte of the current WebSocket frame */
  void *server_param;     /* the server's user data */
  void *connection_param; /* free for the handler; null at the start of each request */
  void *callback_param;   /* event-specific */
};

typedef int (*mg_handler_t)(struct mg_connection *, enum mg_event);

struct mg_server {
  struct ns_mgr ns_mgr;
  union socket_address lsa; /* not used */
  mg_handler_t event_handler;
  char *config_options[MG_NUM_OPTIONS]; /* heap texts in the order of the option table; null = unset */
};

/* --- Server -------------------------------------------------------------------------------------------- */

/* Makes a server with the default options; nothing listens yet. Null when memory is exhausted. */
struct mg_server *mg_create_server(void *server_data, mg_handler_t handler);
/* Closes everything, frees the server and sets the caller's pointer to null. */
void mg_destroy_server(struct mg_server **);
/* Sets an option (null or "" unsets it). Null on success, else "No such option", "Cannot bind to port",
 * "Unknown user", "setgid() failed" or "setuid() failed". */
const char *mg_set_option(struct mg_server *, const char *name, const char *value);
/* Null for an unknown name, "" for an unset option. `listening_port` reads as the port bound last. */
const char *mg_get_option(const struct mg_server *, const char *name);
/* Name/default pairs, ended by a null name; a default may be null. */
const char **mg_get_valid_option_names(void);
/* One pass of the event loop, waiting up to `milliseconds`. Returns the time in seconds. */
time_t mg_poll_server(struct mg_server *, int milliseconds);
/* Ends the current wait of mg_poll_server() early. For other threads; waits until the loop has noticed. */
void mg_wakeup_server(struct mg_server *);
/* Calls `cb` with MG_POLL for every client connection inside the loop, callback_param pointing at the
 * formatted text (at most 8191 bytes with the callback's own prefix). For other threads. */
void mg_wakeup_server_ex(struct mg_server *, mg_handler_t cb, const char *fmt, ...)
    __attribute__((format(printf, 3, 4)));
/* Iterates the client connections accepted after the last listener was created; null prev starts. */
struct mg_connection *mg_next(struct mg_server *, struct mg_connection *prev);
/* Gives `to` every listener of `from`; the sockets are shared. Each server holds them by descriptors of its
 * own and either may be destroyed first. */
void mg_copy_listeners(struct mg_server *from, struct mg_server *to);
/* Starts an outbound HTTP client connection. At MG_CONNECT the handler writes its request with mg_printf();
 * MG_REPLY comes when Content-Length bytes have arrived, or, without that header, when the server closes; a
 * chunked body is handed over as it came. Null when it cannot be started. */
struct mg_connection *mg_connect(struct mg_server *, const char *address);
/* Starts a detached thread; returns null. */
void *mg_start_thread(void *(*fn)(void *), void *param);

/* --- Reading the request ------------------------------------------------------------------------------- */

/* Value of the first header of that name (any case), or null. */
const char *mg_get_header(const struct mg_connection *, const char *name);
/* Reads a request variable from the query string, else from the body, URL-decoded, into dst (always
 * terminated). Returns its length, -1 absent (dst is empty), -2 dst is null, empty or too small (dst then
 * holds what fits). */
int mg_get_var(const struct mg_connection *, const char *name, char *dst, size_t dst_len);
/* Extracts var=value or var="value" from a header value. Returns its length, 0 absent, -1 buffer too small.
 */
int mg_parse_header(const char *header_value, const char *var, char *buf, size_t buf_size);
/* Splits the first part off a multipart body. Returns the offset of the next part, 0 when there is none. */
int mg_parse_multipart(const char *buf, int buf_len, char *var_name, int var_name_len, char *file_name,
                       int file_name_len, const char **data, int *data_len);
/* URL-decodes src into dst (terminated). Returns the decoded length, -1 when dst is too small. */
int mg_url_decode(const char *src, size_t src_len, char *dst, size_t dst_len, int is_form_url_encoded);

/* --- Writing the reply --------------------------------------------------------------------------------- */

/* Writes the status line unless one was written already. */
void mg_send_status(struct mg_connection *, int status_code);
/* Writes a header line, after the status line "200 OK" when none was written yet. */
void mg_send_header(struct mg_connection *, const char *name, const char *value);
/* Sends one chunk, ending the header block first when need be; no chunk for empty data, as that would end the
 * reply. Returns the bytes waiting to be sent. A
 * formatted text of exactly 8192 characters ends with a NUL byte in place of its last character. */
size_t mg_send_data(struct mg_connection *, const void *data, int data_len);
size_t mg_printf_data(struct mg_connection *, const char *fmt, ...) __attribute__((format(printf, 2, 3)));
/* Raw output without framing. Return the bytes waiting to be sent. */
size_t mg_write(struct mg_connection *, const void *data, int data_len);
size_t mg_printf(struct mg_connection *, const char *fmt, ...) __attribute__((format(printf, 2, 3)));
/* Answers with a file, whatever document_root says: 404 when there is none, 304 and 206 as the request's
 * headers ask. `extra_headers` are whole header lines, each ended by "\r\n", or null. For MG_REQUEST, whose
 * handler then returns MG_MORE: the server ends the request once all has been sent. Nothing happens when the
 * connection has no request that the handler serves, as after another call. */
void mg_send_file(struct mg_connection *, const char *path, const char *extra_headers);

/* Copies a template to the connection as it is, but for its keywords: in their place the handler of the first
 * entry whose keyword stands there is called and writes what it likes. The table ends with a null keyword. */
struct mg_expansion {
  const char *keyword;
  void (*handler)(struct mg_connection *);
};
void mg_template(struct mg_connection *, const char *text, const struct mg_expansion *expansions);

/* --- WebSocket ----------------------------------------------------------------------------------------- */

/* Opcodes of frames (RFC 6455 section 5.2); the low four bits of mg_connection::wsbits. */
enum {
  WEBSOCKET_OPCODE_CONTINUATION = 0,
  WEBSOCKET_OPCODE_TEXT = 1,
  WEBSOCKET_OPCODE_BINARY = 2,
  WEBSOCKET_OPCODE_CLOSE = 8,
  WEBSOCKET_OPCODE_PING = 9,
  WEBSOCKET_OPCODE_PONG = 10,
};
/* Sends one whole, unmasked frame. Return the bytes waiting to be sent. */
size_t mg_websocket_write(struct mg_connection *, int opcode, const void *data, size_t data_len);
size_t mg_websocket_printf(struct mg_connection *, int opcode, const char *fmt, ...)
    __attribute__((format(printf, 3, 4)));

#endif
