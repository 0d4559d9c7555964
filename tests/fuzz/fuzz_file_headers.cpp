/* Fuzzes the headers that ask for a file under conditions: ranges and dates. The input is the file's size
 * (decimal digits) up to the first line feed, and the header's value, which is read as a range and as a date.
 */
#include "server/http_conn.h"

#include <stdlib.h>
#include <string.h>
#include <string>

static void require(bool condition) {
  if (!condition) abort();
}

/* A block of exactly the text's size, so that a read behind its end is found. */
struct Exact {
  explicit Exact(const std::string &text) : bytes(strdup(text.c_str())) {}
  ~Exact() { free(bytes); }
  Exact(const Exact &) = delete;
  Exact &operator=(const Exact &) = delete;
  char *bytes;
};

/* A range that is given lies in the file, and reads the same when it is written plainly. */
static void check_range(const char *header, int64_t size) {
  struct byte_range range = {-7, -7};
  const enum range_result result = parse_range(header, size, &range);
  if (result != RANGE_PART) {
    require(range.first == -7 && range.last == -7);
    return;
  }
  require(range.first >= 0 && range.first <= range.last && range.last < size);
  const std::string plain = "bytes=" + std::to_string(range.first) + "-" + std::to_string(range.last);
  struct byte_range again = {};
  require(parse_range(plain.c_str(), size, &again) == RANGE_PART);
  require(again.first == range.first && again.last == range.last);
}

/* A date that is understood is one of the years 1970 to 9999, and reads the same when it is printed. */
static void check_date(const char *header) {
  const time_t t = parse_http_date(header);
  require(t >= 0 && t <= 253402300800); /* the last second of 9999 may be a leap second */
  if (t == 0 || t == 253402300800) return;
  char printed[MG_DATE_SIZE];
  print_http_date(t, printed);
  require(strlen(printed) == strlen("Sun, 06 Nov 1994 08:49:37 GMT"));
  require(parse_http_date(printed) == t);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string input(reinterpret_cast<const char *>(data), size);
  const size_t line_end = input.find('\n');
  if (line_end == std::string::npos) return 0;
  const long long file_size = strtoll(input.substr(0, line_end).c_str(), nullptr, 10);
  const Exact header(input.substr(line_end + 1));
  check_range(header.bytes, file_size < 0 ? 0 : file_size);
  check_date(header.bytes);
  return 0;
}
