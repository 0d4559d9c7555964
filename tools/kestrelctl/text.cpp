/* UTF-8 is decoded here, so that what is shown does not depend on the locale that somebody has set. */
#include "tools/kestrelctl/text.h"

#include <algorithm>
#include <ctype.h>
#include <locale.h>
#include <stdio.h>
#include <strings.h>
#include <wchar.h>

/* One character: its code point and its length in bytes; a length of 1 and a code point below 0 for a byte
 * that begins no character. */
struct decoded {
  int32_t code_point;
  size_t length;
};

static size_t sequence_length(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xc2 && first < 0xe0) return 2;
  if (first >= 0xe0 && first < 0xf0) return 3;
  return first >= 0xf0 && first < 0xf5 ? 4 : 0;
}

static decoded decode(std::string_view text) {
  static const int32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const unsigned char first = static_cast<unsigned char>(text[0]);
  const size_t length = sequence_length(first);
  if (length == 0 || length > text.size()) return {-1, 1};
  if (length == 1) return {first, 1};
  int32_t code_point = first & (0x7f >> length);
  for (size_t i = 1; i < length; i++) {
    const unsigned char byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xc0) != 0x80) return {-1, 1};
    code_point = code_point << 6 | (byte & 0x3f);
  }
  const bool surrogate = code_point >= 0xd800 && code_point < 0xe000;
  if (code_point < smallest[length] || code_point > 0x10ffff || surrogate) return {-1, 1};
  return {code_point, length};
}

/* Columns of a character; below 1 for what cannot be shown. Combining marks have none and are fine. */
static int width_of(int32_t code_point) {
  static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
  if (utf8 == static_cast<locale_t>(nullptr)) return code_point < 0x20 || code_point == 0x7f ? -1 : 1;
  const locale_t before = uselocale(utf8);
  const int width = wcwidth(static_cast<wchar_t>(code_point));
  uselocale(before);
  return width;
}

/* Marks of direction, and other characters that nobody sees. */
static bool is_invisible(int32_t code_point) {
  return (code_point >= 0x200b && code_point <= 0x200f) || (code_point >= 0x2028 && code_point <= 0x202e) ||
         (code_point >= 0x2060 && code_point <= 0x206f) || code_point == 0xfeff || code_point == 0x061c ||
         (code_point >= 0xe0000 && code_point <= 0xe007f);
}

static std::string escaped_byte(char byte) {
  if (byte == '\n') return "\\n";
  if (byte == '\t') return "\\t";
  if (byte == '\r') return "\\r";
  char text[8];
  snprintf(text, sizeof text, "\\x%02x", static_cast<unsigned char>(byte));
  return text;
}

static std::string escaped(std::string_view bytes, int32_t code_point) {
  if (code_point < 0x80) return escaped_byte(bytes[0]);
  char text[16];
  snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned>(code_point));
  return text;
}

std::string printable(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const decoded next = decode(text);
    const std::string_view bytes = text.substr(0, next.length);
    const bool shown = next.code_point >= 0 && width_of(next.code_point) >= 0 && next.code_point != 0 &&
                       !is_invisible(next.code_point);
    out += shown ? std::string(bytes) : escaped(bytes, next.code_point);
    text.remove_prefix(next.length);
  }
  return out;
}

size_t column_count(std::string_view text) {
  size_t columns = 0;
  while (!text.empty()) {
    const decoded next = decode(text);
    const int width = next.code_point < 0 ? 1 : width_of(next.code_point);
    columns += width > 0 ? static_cast<size_t>(width) : 0;
    text.remove_prefix(next.length);
  }
  return columns;
}

std::string percent_encoded(std::string_view text) {
  std::string out;
  for (char byte : text) {
    const unsigned char code = static_cast<unsigned char>(byte);
    if (code < 0x80 && (isalnum(code) || code == '-' || code == '.' || code == '_')) {
      out += byte;
      continue;
    }
    char hex[4];
    snprintf(hex, sizeof hex, "%%%02X", code);
    out += hex;
  }
  return out;
}

size_t edit_distance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); j++) row[j] = j;
  for (size_t i = 1; i <= a.size(); i++) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); j++) {
      const size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row[b.size()];
}

bool equal_without_case(std::string_view a, std::string_view b) {
  return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

bool only_digits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

std::string_view trimmed(std::string_view text) {
  const size_t start = text.find_first_not_of(" \t\r\n");
  if (start == text.npos) return {};
  return text.substr(start, text.find_last_not_of(" \t\r\n") + 1 - start);
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  for (;;) {
    const size_t end = text.find(separator);
    parts.emplace_back(text.substr(0, end));
    if (end == text.npos) return parts;
    text.remove_prefix(end + 1);
  }
}

std::string joined(const std::vector<std::string> &words, std::string_view separator) {
  std::string out;
  for (size_t i = 0; i < words.size(); i++) out += (i > 0 ? std::string(separator) : "") + words[i];
  return out;
}
