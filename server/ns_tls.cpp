/* TLS on a connection, with OpenSSL. Each thread has one error queue for all its connections, so it is
 * emptied before every call: an error that one peer caused must not be taken for another's. */
#include "server/ns_internal.h"

#include <atomic>
#include <openssl/err.h>
#include <openssl/ssl.h>

static const char server_ciphers[] = "AESGCM:AES128:AES256:SHA256:SHA384:!aNULL:!SHA:!NULL";

void ns_tls_init(void) {
  static std::atomic<int> initialised{0};
  if (initialised.fetch_add(1) == 0) OPENSSL_init_ssl(0, nullptr);
}

int ns_use_cert(SSL_CTX *ctx, const char *pem_file) {
  if (ctx == nullptr) return -1;
  if (pem_file == nullptr || pem_file[0] == '\0') return 0;
  ERR_clear_error();
  if (SSL_CTX_use_certificate_file(ctx, pem_file, SSL_FILETYPE_PEM) != 1 ||
      SSL_CTX_use_PrivateKey_file(ctx, pem_file, SSL_FILETYPE_PEM) != 1) {
    return -2;
  }
  SSL_CTX_set_mode(ctx, SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
  SSL_CTX_use_certificate_chain_file(ctx, pem_file); /* the file may hold nothing beyond the certificate */
  return 0;
}

int ns_use_ca_cert(SSL_CTX *ctx, const char *ca_file) {
  if (ctx == nullptr) return -1;
  if (ca_file == nullptr || ca_file[0] == '\0') return 0;
  ERR_clear_error();
  SSL_CTX_set_verify(ctx, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
  return SSL_CTX_load_verify_locations(ctx, ca_file, nullptr) == 1 ? 0 : -2;
}

static SSL_CTX *new_context(const SSL_METHOD *method, const char *cert, const char *ca) {
  ERR_clear_error();
  SSL_CTX *ctx = SSL_CTX_new(method);
  if (ctx == nullptr) return nullptr;
  /* The send buffer moves while a write waits to be repeated; an idle session gives its buffers back; one
   * call reads a record's header and body. Sessions resume by ticket, so no cache grows with the clients. */
  SSL_CTX_set_mode(ctx, SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER | SSL_MODE_RELEASE_BUFFERS);
  SSL_CTX_set_read_ahead(ctx, 1);
  SSL_CTX_set_session_cache_mode(ctx, SSL_SESS_CACHE_OFF);
  if (ns_use_cert(ctx, cert) != 0 || ns_use_ca_cert(ctx, ca) != 0) {
    SSL_CTX_free(ctx);
    return nullptr;
  }
  return ctx;
}

SSL_CTX *ns_tls_server_context(const char *cert, const char *ca) {
  SSL_CTX *ctx = new_context(TLS_server_method(), cert, ca);
  if (ctx == nullptr) return nullptr;
  /* Without a context id, a session of a client that showed a certificate could not be resumed. */
  static const unsigned char context_id[] = "kestrel";
  if (SSL_CTX_set_session_id_context(ctx, context_id, sizeof(context_id) - 1) == 1 &&
      SSL_CTX_set_cipher_list(ctx, server_ciphers) == 1) {
    return ctx;
  }
  SSL_CTX_free(ctx);
  return nullptr;
}

SSL_CTX *ns_tls_client_context(const char *cert, const char *ca) {
  return new_context(TLS_client_method(), cert, ca);
}

bool ns_tls_attach(struct ns_connection *c, SSL_CTX *ctx) {
  c->ssl = SSL_new(ctx);
  return c->ssl != nullptr && SSL_set_fd(c->ssl, c->sock) == 1;
}

/* Notes what a call with a result below 1 waits for. */
static enum tls_result ns_ssl_err(struct ns_connection *c, int result) {
  switch (SSL_get_error(c->ssl, result)) {
  case SSL_ERROR_WANT_READ:
    c->flags |= CONN_WANT_READ;
    return TLS_WAIT;
  case SSL_ERROR_WANT_WRITE:
    c->flags |= CONN_WANT_WRITE;
    return TLS_WAIT;
  default:
    return TLS_FAILED;
  }
}

enum tls_result ns_tls_handshake(struct ns_connection *c) {
  ERR_clear_error();
  const int n = c->flags & CONN_CONNECTING ? SSL_connect(c->ssl) : SSL_accept(c->ssl);
  if (n != 1) return ns_ssl_err(c, n);
  c->flags |= CONN_TLS_HANDSHAKE_DONE;
  /* The peer's first bytes may have come with its last handshake message; the socket will not report them. */
  c->tls_unread = ns_tls_has_unread(c);
  return TLS_DONE;
}

int ns_tls_read(struct ns_connection *c, void *buf, int len, enum tls_result *outcome) {
  ERR_clear_error();
  const int n = SSL_read(c->ssl, buf, len);
  *outcome = n > 0 ? TLS_DONE : ns_ssl_err(c, n);
  return n;
}

int ns_tls_write(struct ns_connection *c, const void *buf, int len, enum tls_result *outcome) {
  ERR_clear_error();
  const int n = SSL_write(c->ssl, buf, len);
  *outcome = n > 0 ? TLS_DONE : ns_ssl_err(c, n);
  return n;
}

bool ns_tls_has_unread(const struct ns_connection *c) {
  return SSL_has_pending(c->ssl) == 1;
}

void ns_tls_goodbye(struct ns_connection *c) {
  if (c->ssl == nullptr || !(c->flags & CONN_TLS_HANDSHAKE_DONE)) return;
  ERR_clear_error();
  SSL_shutdown(c->ssl);
}

void ns_tls_free(struct ns_connection *c) {
  SSL_free(c->ssl);
  SSL_CTX_free(c->ssl_ctx);
  ERR_clear_error();
}
