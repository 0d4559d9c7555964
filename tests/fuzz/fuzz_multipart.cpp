/* Fuzzes the splitting of a multipart body: every part must lie inside the body, and each step must move on.
 * The first input byte is the room for the names. */
#include "server/http_conn.h"

#include <stdlib.h>
#include <string.h>
#include <vector>

static void require(bool condition) {
  if (!condition) abort();
}

/* Splits the first part off. Returns the offset of the next. */
static int split_part(const char *buf, int len, size_t room) {
  std::vector<char> name(room), file(room);
  const char *data = nullptr;
  int data_len = 0;
  const int next = mg_parse_multipart(buf, len, name.data(), static_cast<int>(room), file.data(),
                                      static_cast<int>(room), &data, &data_len);
  if (room > 0) {
    require(memchr(name.data(), '\0', room) != nullptr);
    require(memchr(file.data(), '\0', room) != nullptr);
  }
  require(next >= 0 && next < (len > 0 ? len : 1));
  if (next > 0) require(data > buf && data_len >= 0 && data + data_len <= buf + next);
  return next;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1) return 0;
  const size_t len = size - 1;
  char *body = static_cast<char *>(malloc(len == 0 ? 1 : len)); /* exact, so that a read behind it is found */
  memcpy(body, data + 1, len);
  int at = 0;
  for (int step; (step = split_part(body + at, static_cast<int>(len) - at, data[0])) > 0;) at += step;
  free(body);
  return 0;
}
