/* Fuzzes digest authentication. The input is the value of an Authorization header, a NUL byte, and the
 * content of a password file. What is taken from either must be there as a whole, and the right response only
 * may open. */
#include "server/mg_auth.h"

#include <stdlib.h>
#include <string.h>
#include <string>

static void require(bool condition) {
  if (!condition) abort();
}

/* Every field is a text that the header holds, but for backslashes that the reader takes away. */
static void check_field(const std::string &header, const char *field, size_t size) {
  require(field[0] != '\0' && memchr(field, '\0', size) != nullptr);
  if (strchr(field, '"') == nullptr) require(header.find(field) != std::string::npos);
}

static void check_header(const std::string &header, const struct digest *digest) {
  check_field(header, digest->username, sizeof(digest->username));
  check_field(header, digest->nonce, sizeof(digest->nonce));
  check_field(header, digest->cnonce, sizeof(digest->cnonce));
  check_field(header, digest->nc, sizeof(digest->nc));
  check_field(header, digest->response, sizeof(digest->response));
  check_field(header, digest->uri, sizeof(digest->uri));
  require(strcmp(digest->qop, "auth") == 0);
}

/* The header opens the request that it names, and neither another file nor another query. */
static void check_uri(const struct digest *digest) {
  std::string uri = digest->uri;
  struct mg_connection conn = {};
  conn.query_string = split_uri(uri.data());
  conn.uri = uri.c_str();
  require(is_for_this_uri(digest, &conn));
  const std::string longer = std::string(conn.uri) + "x";
  conn.uri = longer.c_str();
  require(!is_for_this_uri(digest, &conn));
  conn.uri = uri.c_str();
  conn.query_string = conn.query_string == nullptr ? "" : nullptr;
  require(!is_for_this_uri(digest, &conn));
}

/* What is found stands in a line of its own in the file, after the user and the domain. */
static void check_file(const std::string &text, const struct digest *digest) {
  char ha1[MD5_TEXT_SIZE];
  FILE *file = fmemopen(const_cast<char *>(text.data()), text.size(), "r");
  if (file == nullptr) return; /* an empty file */
  const bool found = find_ha1(file, digest->username, "d", ha1);
  fclose(file);
  if (!found) return;
  require(strlen(ha1) == MD5_TEXT_SIZE - 1);
  const size_t at = ("\n" + text).find("\n" + std::string(digest->username) + ":d:");
  require(at != std::string::npos && text.find(ha1, at) != std::string::npos);

  /* The response is right when it is computed from that, and only then. */
  struct digest answer = *digest;
  char ha2[MD5_TEXT_SIZE];
  mg_md5(ha2, "GET", ":", digest->uri, nullptr);
  mg_md5(answer.response, ha1, ":", digest->nonce, ":", digest->nc, ":", digest->cnonce, ":auth:", ha2,
         nullptr);
  require(is_right_response(&answer, "GET", ha1) && !is_right_response(&answer, "PUT", ha1));
  answer.response[MD5_TEXT_SIZE - 2] ^= 1;
  require(!is_right_response(&answer, "GET", ha1));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string input(reinterpret_cast<const char *>(data), size);
  const std::string header = input.c_str();
  struct digest digest;
  if (!parse_digest(header.c_str(), &digest)) return 0;
  check_header(header, &digest);
  check_uri(&digest);
  if (header.size() < input.size()) check_file(input.substr(header.size() + 1), &digest);
  return 0;
}
