/* Whether a server's certificate is trusted. It is looked at while the connection is made, before the first
 * byte of a request, so that no password and no session key goes to a server that is not. */
#ifndef KESTREL_TOOLS_KESTRELCTL_CERTIFICATE_H
#define KESTREL_TOOLS_KESTRELCTL_CERTIFICATE_H

#include <openssl/ssl.h>
#include <string>

enum class trust_in {
  AUTHORITIES, /* one of them has signed it, for the server's name */
  FINGERPRINT, /* it is the certificate with the fingerprint, whoever signed it, whatever its names and dates
                */
  ANYTHING,    /* to see which one it is; no request may follow */
};

struct certificate_check {
  trust_in trust;
  std::string fingerprint; /* the trusted one; empty unless the trust is in it */
  std::string seen;        /* that of the server's certificate, once there is one */
};

/* Has OpenSSL ask the check, which must live as long as the context. */
void install_certificate_check(SSL_CTX *context, certificate_check *check);

/* Brings a fingerprint into its one form, "sha256:" and 32 pairs of upper-case hexadecimal digits with colons
 * between them. Taken are also digits in lower case, without colons, and what openssl prints ("sha256
 * Fingerprint=..."). */
bool read_fingerprint(const std::string &text, std::string *fingerprint);

#endif
