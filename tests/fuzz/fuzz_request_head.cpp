/* Fuzzes the parsing of a request head: finding its end (at once, resumed at a cut, and byte by byte must
 * agree), taking it apart, and the fields that come out. The first input byte chooses the cut. */
#include "server/http_conn.h"

#include <stdlib.h>
#include <string.h>

static void require(bool condition) {
  if (!condition) abort();
}

static int scan_with_cut(const char *buf, int len, int cut) {
  const int first = get_request_len_from(buf, cut, 0);
  return first != 0 ? first : get_request_len_from(buf, len, cut);
}

static int scan_byte_by_byte(const char *buf, int len) {
  for (int n = 1; n <= len; n++) {
    const int result = get_request_len_from(buf, n, n - 1);
    if (result != 0) return result;
  }
  return 0;
}

/* Every text of a parsed head lies inside its copy and is terminated there. */
static void check_text(const char *text, const char *head, size_t len) {
  require(text >= head && text < head + len);
  require(memchr(text, '\0', static_cast<size_t>(head + len - text)) != nullptr);
}

static void check_parsed(const struct mg_connection &conn, const char *head, size_t len) {
  check_text(conn.request_method, head, len);
  check_text(conn.uri, head, len);
  check_text(conn.http_version, head, len);
  require(strlen(conn.uri) < MG_MAX_URI_SIZE);
  if (conn.query_string != nullptr) check_text(conn.query_string, head, len);
  require(conn.num_headers >= 0 && conn.num_headers <= MG_MAX_HEADERS);
  for (int i = 0; i < conn.num_headers; i++) {
    check_text(conn.http_headers[i].name, head, len);
    check_text(conn.http_headers[i].value, head, len);
  }
  const bool rooted = conn.uri[0] == '/';
  require(!rooted || (strstr(conn.uri, "//") == nullptr && strstr(conn.uri, "/..") == nullptr));
  is_valid_uri(conn.uri);
  mg_get_header(&conn, "Content-Length");
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) return 0;
  const char *bytes = reinterpret_cast<const char *>(data + 1);
  const int len = static_cast<int>(size - 1);
  const int head_len = get_request_len(bytes, len);
  require(head_len <= len);
  require(scan_with_cut(bytes, len, data[0] % len) == head_len);
  require(scan_byte_by_byte(bytes, len) == head_len);

  const int parsed_len = head_len > 0 ? head_len : len; /* a datagram is parsed without an end too */
  char *head = static_cast<char *>(malloc(static_cast<size_t>(parsed_len)));
  memcpy(head, bytes, static_cast<size_t>(parsed_len));
  struct mg_connection conn = {};
  if (parse_http_message(head, parsed_len, &conn) > 0)
    check_parsed(conn, head, static_cast<size_t>(parsed_len));
  free(head);
  return 0;
}
