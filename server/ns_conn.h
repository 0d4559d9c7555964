/* The connection layer: a single-threaded, non-blocking socket multiplexer.
 *
 * It owns every socket of the server (listeners, accepted clients, TLS sessions, datagram sockets, outbound
 * connections and the loopback control channel), reads bytes into a receive buffer per connection, writes a
 * send buffer per connection, and reports what happened to one callback per connection. It knows nothing of
 * HTTP; the HTTP layer (server/tidewell.h) installs its request state machine as that callback.
 *
 * Everything here runs on the one thread that calls ns_mgr_poll(). The only exception is ns_broadcast(),
 * which another thread may call and which waits until the loop has taken its message. */
#ifndef KESTREL_SERVER_NS_CONN_H
#define KESTREL_SERVER_NS_CONN_H

#include <netinet/in.h>
#include <openssl/types.h>
#include <pthread.h>
#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/socket.h>
#include <time.h>

typedef int sock_t;

/* A growable byte buffer. Invariant: len <= size. */
struct iobuf {
  char *buf;   /* the bytes, owned by the buffer; null when nothing was ever allocated */
  size_t len;  /* valid bytes */
  size_t size; /* allocated bytes */
};

/* A peer's or a bound address. Only IPv4 is ever filled in. */
union socket_address {
  struct sockaddr sa;
  struct sockaddr_in sin;
  struct sockaddr_in6 sin6;
};

/* Connection flags. Bits 20 to 23 belong to the HTTP layer. */
enum {
  CONN_FINISHED_SENDING = 0x1,   /* close once the send buffer has drained */
  CONN_HOLD_OUTPUT = 0x2,        /* buffer output but do not write it */
  CONN_TLS_HANDSHAKE_DONE = 0x4, /* TLS handshake completed */
  CONN_CONNECTING = 0x8,         /* outbound non-blocking connect in progress */
  CONN_CLOSE_NOW = 0x10,         /* close at the next opportunity, discarding unsent data */
  CONN_WANT_READ = 0x20,         /* the TLS layer asked to wait for readability */
  CONN_WANT_WRITE = 0x40,        /* the TLS layer asked to wait for writability */
  CONN_LISTENING = 0x80,         /* listening socket */
  CONN_UDP = 0x100,              /* datagram socket */
};

/* Events given to a connection's callback, with what the pointer argument is. */
enum {
  NET_EV_POLL = 0,    /* time_t*: the current time, once per pass */
  NET_EV_ACCEPT = 1,  /* union socket_address*: the peer of a new client connection */
  NET_EV_CONNECT = 2, /* int*: 0 = outbound connection established, else it failed */
  NET_EV_RECV = 3,    /* int*: bytes just appended to recv_iobuf */
  NET_EV_SEND = 4,    /* int*: result of the last send call */
  NET_EV_CLOSE = 5,   /* null: the connection is about to be destroyed */
};

struct ns_connection;
struct ns_mgr;
typedef void (*ns_callback_t)(struct ns_connection *, int event, void *event_data);

/* One socket. */
struct ns_connection {
  struct ns_connection *next, *prev; /* links of the manager's list */
  struct ns_connection *listener;    /* who accepted this (it may be gone); null: listener or outbound */
  struct ns_mgr *mgr;
  sock_t sock;             /* -1 = none */
  union socket_address sa; /* peer or bound address */
  struct iobuf recv_iobuf; /* received, not yet consumed */
  struct iobuf send_iobuf; /* queued, not yet written */
  SSL *ssl;                /* TLS session; null for plain sockets */
  SSL_CTX *ssl_ctx;        /* context owned by this connection (TLS listeners and TLS clients) */
  void *user_data;         /* the upper layer's record */
  void *proto_data;        /* copied from the listener on accept */
  time_t last_io_time;     /* seconds, last read or write */
  ns_callback_t callback;
  uint32_t flags; /* CONN_* */

  /* The event loop's own bookkeeping. */
  uint32_t poll_events; /* what the descriptor is registered for in the poller; 0 = not registered */
  uint32_t ready;       /* what the poller reported for it in this pass */
  bool send_blocked;    /* the last write left bytes behind: wait for writability before the next one */
  bool tls_unread;      /* bytes were left inside the TLS session, where the poller does not see them */
};

/* The connection manager. */
struct ns_mgr {
  struct ns_connection *active_connections; /* head of the list; new connections are pushed at the head */
  const char *hexdump_file;                 /* traffic trace file; null = no trace */
  sock_t ctl[2];                            /* control channel; -1 = absent */
  void *user_data;

  /* The event loop's own bookkeeping. */
  int poller;               /* epoll descriptor; -1 = absent */
  time_t accept_resume;     /* accepting is paused until then, or until a connection closes; 0 = not paused */
  pthread_mutex_t ctl_lock; /* one broadcast at a time: each waits for its own answer */
};

/* One message on the control channel: the callback, then 0..8191 payload bytes. */
struct ctl_msg {
  ns_callback_t callback;
  char message[8192];
};

/* --- Buffers ------------------------------------------------------------------------------------------- */

/* Zeroes the buffer and allocates `initial_size` bytes for it. */
void iobuf_init(struct iobuf *, size_t initial_size);
/* Frees the bytes and empties the buffer. Null is ignored. */
void iobuf_free(struct iobuf *);
/* Changes the capacity: grows beyond `size`, or shrinks to no less than `len`; anything else, and a failed
 * allocation, leaves the buffer as it was. */
void iobuf_resize(struct iobuf *, size_t new_size);
/* Appends n bytes. Returns n, or 0 when memory is exhausted (the buffer is then unchanged). */
size_t iobuf_append(struct iobuf *, const void *data, size_t n);
/* Drops the first n bytes; ignored when n is 0 or greater than `len`. */
void iobuf_remove(struct iobuf *, size_t n);

/* --- Manager ------------------------------------------------------------------------------------------- */

/* Prepares a manager: ignores SIGPIPE for the process, opens the control channel (retrying until it succeeds)
 * and initialises OpenSSL once per process. */
void ns_mgr_init(struct ns_mgr *, void *user_data);
/* One last pass without waiting, then closes the control channel and every connection. */
void ns_mgr_free(struct ns_mgr *);
/* One pass: NET_EV_POLL to every connection, wait up to `milliseconds` for I/O, serve it, close what is due.
 * Returns the time taken after the wait, in seconds. */
time_t ns_mgr_poll(struct ns_mgr *, int milliseconds);
/* Opens a listening socket. `address` is [tcp://|udp://|ssl://][IPv4 or host name:]port[:certificate[:CA]],
 * port 0..65534 (0 picks a free one). Returns null when the address is malformed, the socket cannot be bound,
 * or the certificate cannot be used. */
struct ns_connection *ns_bind(struct ns_mgr *, const char *address, ns_callback_t, void *user_data);
/* Starts a non-blocking outbound connection (same address syntax; a bare port is not useful here). The
 * callback gets NET_EV_CONNECT. Null when it cannot be started. */
struct ns_connection *ns_connect(struct ns_mgr *, const char *address, ns_callback_t, void *user_data);
/* Wraps an open socket. Null when memory is exhausted; the socket then stays the caller's to close. */
struct ns_connection *ns_add_sock(struct ns_mgr *, sock_t, ns_callback_t, void *user_data);
/* Iterates the connections; null gives the first. Null at the end. */
struct ns_connection *ns_next(struct ns_mgr *, struct ns_connection *prev);
/* Runs `callback` on every connection inside the loop, with event 0 and a copy of `data` as argument; waits
 * until the loop has taken the message. `len` is 0..8191; otherwise, or with null data, nothing is sent. For
 * threads other than the loop's. */
void ns_broadcast(struct ns_mgr *, ns_callback_t callback, void *data, size_t len);
/* Delivers NET_EV_CLOSE, unlinks and destroys the connection. Not for callbacks, whose connection the loop
 * goes on to use: they set CONN_CLOSE_NOW. */
void ns_close_conn(struct ns_connection *);

/* --- Output -------------------------------------------------------------------------------------------- */

/* Queues bytes; they leave in the next pass. On a datagram connection they are sent at once. Returns the
 * number of bytes queued or sent, 0 on failure. */
int ns_send(struct ns_connection *, const void *buf, int len);
/* Formats and queues. Returns the formatted length. A text of exactly 500 characters ends with a NUL byte in
 * place of its last character, see ns_avprintf(). */
int ns_printf(struct ns_connection *, const char *fmt, ...) __attribute__((format(printf, 2, 3)));
int ns_vprintf(struct ns_connection *, const char *fmt, va_list ap) __attribute__((format(printf, 2, 0)));
/* Tells the peer of a connection whose output has been written that no more comes; it is still read. */
void ns_end_output(struct ns_connection *);
/* Formats into *buf of `size` bytes; a text longer than `size` goes to a new heap block of exactly its length
 * plus one, stored in *buf (the caller frees *buf when it is no longer its own). A text of exactly `size`
 * characters is kept where it is, so its last character is the terminator; programs rely on this. Returns the
 * length, -1 when memory is exhausted. */
int ns_avprintf(char **buf, size_t size, const char *fmt, va_list ap) __attribute__((format(printf, 3, 0)));

/* --- Utilities ----------------------------------------------------------------------------------------- */

/* Two connected loopback sockets, close-on-exec. Returns 1; on failure 0 with both set to -1. */
int ns_socketpair2(sock_t sp[2], int sock_type);
int ns_socketpair(sock_t sp[2]); /* the stream form */
/* Resolves a host name to dotted IPv4 text. Returns the text's length, 0 when it cannot be resolved. */
int ns_resolve(const char *host, char *buf, size_t buf_len);
/* Writes a socket's address into buf: flag 1 the address, 2 the port, 4 the peer's instead of the local. */
void ns_sock_to_str(sock_t, char *buf, size_t buf_len, int flags);
/* Hex dump in rows of 16 bytes, as text into dst. Returns the length written. */
int ns_hexdump(const void *buf, int len, char *dst, int dst_len);
void ns_set_non_blocking_mode(sock_t);
void ns_set_close_on_exec(sock_t);
/* Starts a detached POSIX thread; returns null. */
void *ns_start_thread(void *(*fn)(void *), void *param);
/* Parses the address syntax of ns_bind(). Returns the number of characters consumed, 0 when it is invalid.
 * `cert` and `ca` are 100-byte buffers. */
int ns_parse_address(const char *str, union socket_address *, int *protocol, int *use_ssl, char *cert,
                     char *ca);
/* Loads certificate and private key from one PEM file.
 * Returns 0 when loaded or no name was given, -1 for a null context, -2 on failure. */
int ns_use_cert(SSL_CTX *, const char *pem_file);
/* Requires client certificates signed by the CA file. Results as ns_use_cert(). */
int ns_use_ca_cert(SSL_CTX *, const char *ca_file);

#endif
