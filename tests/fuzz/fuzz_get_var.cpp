/* Fuzzes what reads values out of texts: request variables, URL decoding and header parameters. The input is
 * the size of the destination (one byte), a name up to the first line feed, and the text. */
#include "server/http_conn.h"

#include <stdlib.h>
#include <string.h>
#include <string>
#include <vector>

static void require(bool condition) {
  if (!condition) abort();
}

/* A block of exactly the text's size, so that a read behind its end is found. */
struct Exact {
  explicit Exact(const std::string &text)
      : bytes(static_cast<char *>(malloc(text.size() + 1))), size(text.size()) {
    memcpy(bytes, text.data(), text.size());
    bytes = static_cast<char *>(realloc(bytes, size == 0 ? 1 : size));
  }
  ~Exact() { free(bytes); }
  Exact(const Exact &) = delete;
  Exact &operator=(const Exact &) = delete;
  char *bytes;
  size_t size;
};

static void check_result(int result, const std::vector<char> &dst) {
  if (dst.empty()) {
    require(result == -2);
    return;
  }
  require(result >= -2 && result < static_cast<int>(dst.size()));
  require(memchr(dst.data(), '\0', dst.size()) != nullptr);
  if (result >= 0) require(dst[static_cast<size_t>(result)] == '\0');
  if (result == -1) require(dst[0] == '\0');
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1) return 0;
  const size_t dst_size = data[0];
  const std::string input(reinterpret_cast<const char *>(data + 1), size - 1);
  const size_t line_end = input.find('\n');
  const std::string name = input.substr(0, line_end);
  const std::string text = line_end == std::string::npos ? "" : input.substr(line_end + 1);

  const Exact body(text);
  struct mg_connection conn = {};
  conn.content = body.bytes;
  conn.content_len = body.size;
  std::vector<char> dst(dst_size);
  const int from_body = mg_get_var(&conn, name.c_str(), dst.data(), dst.size());
  check_result(from_body, dst);

  /* The same text as a query string gives the same answer, up to its first NUL byte. */
  conn.query_string = text.c_str();
  conn.content = nullptr;
  conn.content_len = 0;
  const int from_query = mg_get_var(&conn, name.c_str(), dst.data(), dst.size());
  check_result(from_query, dst);
  const bool same_text = strlen(text.c_str()) == text.size();
  require(!same_text || from_body < 0 || from_query == from_body);

  const int parameter = mg_parse_header(text.c_str(), name.c_str(), dst.data(), dst.size());
  require(parameter >= -1 && parameter <= static_cast<int>(dst_size));
  const Exact decoded(text);
  const int len = mg_url_decode(decoded.bytes, decoded.size, decoded.bytes, decoded.size, 0);
  require(len < static_cast<int>(decoded.size) || decoded.size == 0);
  return 0;
}
