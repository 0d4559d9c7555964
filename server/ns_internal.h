/* The inside of the connection layer: what its units (ns_*.cpp) share. The layer's interface is
 * server/ns_conn.h.
 *
 * Reading order: ns_mgr.cpp (manager and the pass of the event loop), ns_io.cpp (what a ready socket does),
 * ns_output.cpp (queuing), ns_bind.cpp (opening sockets), ns_address.cpp (address syntax), ns_tls.cpp (TLS),
 * ns_control.cpp (waking the loop), ns_trace.cpp (traffic trace), ns_util.cpp, iobuf.cpp. */
#ifndef KESTREL_SERVER_NS_INTERNAL_H
#define KESTREL_SERVER_NS_INTERNAL_H

#include "server/ns_conn.h"

enum {
  NS_READ_SIZE = 2048,     /* one read of a stream socket */
  NS_READ_BATCH = 64,      /* reads per pass and connection while the peer goes on sending */
  NS_DATAGRAM_SIZE = 2000, /* one datagram */
  NS_ACCEPT_BATCH = 16,    /* clients accepted per pass and listener */
  NS_MAX_BROADCAST = 8191, /* payload of a control message */
};

/* Delivers an event to the connection's callback, after its record in the traffic trace. */
void ns_call(struct ns_connection *, int event, void *event_data);

/* ns_add_sock() for a socket that is non-blocking and close-on-exec already. */
struct ns_connection *ns_wrap_sock(struct ns_mgr *, sock_t, ns_callback_t, void *user_data);

/* What a ready socket does (ns_io.cpp). `to_the_end` tells that the peer's close or an error was reported
 * too: a short read then is not the end of what can be read. */
void accept_conn(struct ns_connection *listener, time_t now);
void ns_handle_udp(struct ns_connection *listener);
void ns_read_from_socket(struct ns_connection *, bool to_the_end);
void ns_write_to_socket(struct ns_connection *);

/* Serves one message of the control channel (ns_control.cpp). */
void ns_serve_control(struct ns_mgr *);

/* TLS (ns_tls.cpp). */
enum tls_result {
  TLS_FAILED = -1,
  TLS_WAIT = 0, /* CONN_WANT_READ or CONN_WANT_WRITE has been set */
  TLS_DONE = 1,
};
/* Initialises OpenSSL; only the first call of the process does anything. */
void ns_tls_init(void);
/* Makes the context and loads certificate and CA file (either may be empty). Null on failure. */
SSL_CTX *ns_tls_server_context(const char *cert, const char *ca);
SSL_CTX *ns_tls_client_context(const char *cert, const char *ca);
/* Starts a session on the connection's socket. False when memory is exhausted. */
bool ns_tls_attach(struct ns_connection *, SSL_CTX *);
/* One step of the handshake; sets CONN_TLS_HANDSHAKE_DONE when it is complete. */
enum tls_result ns_tls_handshake(struct ns_connection *);
/* As recv() and send() on the session. A result below 1 is classified in *outcome. */
int ns_tls_read(struct ns_connection *, void *buf, int len, enum tls_result *outcome);
int ns_tls_write(struct ns_connection *, const void *buf, int len, enum tls_result *outcome);
/* Whether OpenSSL holds received bytes that were not read from it. */
bool ns_tls_has_unread(const struct ns_connection *);
/* Says goodbye to the peer as far as that goes without waiting; before the socket is closed. */
void ns_tls_goodbye(struct ns_connection *);
/* Releases session and context. */
void ns_tls_free(struct ns_connection *);

#endif
