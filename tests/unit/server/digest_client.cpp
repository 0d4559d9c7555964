/* See digest_client.h. */
#include "tests/unit/server/digest_client.h"

#include <openssl/evp.h>
#include <stdio.h>

std::string md5_hex(const std::string &text) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned len = 0;
  EVP_Digest(text.data(), text.size(), digest, &len, EVP_md5(), nullptr);
  std::string hex;
  for (unsigned i = 0; i < len; i++) {
    char digits[3];
    snprintf(digits, sizeof(digits), "%02x", digest[i]);
    hex += digits;
  }
  return hex;
}

static std::string ha1(const Account &account) {
  return md5_hex(account.user + ":" + account.domain + ":" + account.password);
}

std::string password_line(const Account &account) {
  return account.user + ":" + account.domain + ":" + ha1(account) + "\n";
}

std::string digest_line(const Account &account, const std::string &method, const std::string &uri) {
  const std::string fields = "1700000000:00000001:c0ffee:auth";
  const std::string response = md5_hex(ha1(account) + ":" + fields + ":" + md5_hex(method + ":" + uri));
  return "Authorization: Digest username=\"" + account.user + "\", realm=\"" + account.domain +
         "\", nonce=\"1700000000\", uri=\"" + uri +
         "\", cnonce=\"c0ffee\", nc=00000001, qop=auth, response=\"" + response + "\"\r\n";
}
