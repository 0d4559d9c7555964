/* The client's side of digest authentication (RFC 2617), computed with OpenSSL. */
#ifndef KESTREL_TESTS_UNIT_SERVER_DIGEST_CLIENT_H
#define KESTREL_TESTS_UNIT_SERVER_DIGEST_CLIENT_H

#include <string>

/* Whose requests are authorised. */
struct Account {
  std::string user = "anna";
  std::string domain = "mydomain.com";
  std::string password = "open sesame";
};

/* MD5 in lower-case hexadecimal. */
std::string md5_hex(const std::string &text);
/* The account's line of a password file. */
std::string password_line(const Account &);
/* The Authorization header of a request, with its line end. */
std::string digest_line(const Account &, const std::string &method, const std::string &uri);

#endif
