#include "tools/kestrelctl/certificate.h"

#include "tools/kestrelctl/text.h"

#include <openssl/evp.h>
#include <openssl/x509.h>
#include <stdio.h>
#include <string_view>

static std::string written(const unsigned char *digest, size_t size) {
  std::string text = "sha256:";
  char pair[4];
  for (size_t i = 0; i < size; i++) {
    snprintf(pair, sizeof pair, "%s%02X", i > 0 ? ":" : "", digest[i]);
    text += pair;
  }
  return text;
}

static std::string fingerprint_of(const X509 *certificate) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned size = 0;
  if (certificate == nullptr || X509_digest(certificate, EVP_sha256(), digest, &size) != 1) return "";
  return written(digest, size);
}

/* Takes the place of OpenSSL's own verification: 1 to go on, 0 to end the handshake. */
static int verify(X509_STORE_CTX *chain, void *argument) {
  certificate_check *check = static_cast<certificate_check *>(argument);
  check->seen = fingerprint_of(X509_STORE_CTX_get0_cert(chain));
  if (check->trust == trust_in::AUTHORITIES) return X509_verify_cert(chain);
  const bool trusted =
      !check->seen.empty() && (check->trust == trust_in::ANYTHING || check->seen == check->fingerprint);
  X509_STORE_CTX_set_error(chain, trusted ? X509_V_OK : X509_V_ERR_CERT_REJECTED);
  return trusted ? 1 : 0;
}

void install_certificate_check(SSL_CTX *context, certificate_check *check) {
  SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
  SSL_CTX_set_cert_verify_callback(context, verify, check);
}

static int digit_value(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  return digit >= 'A' && digit <= 'F' ? digit - 'A' + 10 : -1;
}

bool read_fingerprint(const std::string &text, std::string *fingerprint) {
  std::string_view rest = trimmed(text);
  if (rest.size() < 6 || !equal_without_case(rest.substr(0, 6), "sha256")) return false;
  rest.remove_prefix(6);
  if (equal_without_case(rest.substr(0, 13), " fingerprint="))
    rest.remove_prefix(13);
  else if (rest.starts_with(':'))
    rest.remove_prefix(1);
  else
    return false;
  unsigned char digest[32];
  for (size_t i = 0; i < sizeof digest; i++) {
    if (i > 0 && rest.starts_with(':')) rest.remove_prefix(1);
    if (rest.size() < 2 || digit_value(rest[0]) < 0 || digit_value(rest[1]) < 0) return false;
    digest[i] = static_cast<unsigned char>(digit_value(rest[0]) * 16 + digit_value(rest[1]));
    rest.remove_prefix(2);
  }
  if (rest.empty()) *fingerprint = written(digest, sizeof digest);
  return rest.empty();
}
