/* Comma-separated option values and the access control list. */
#include "server/http_conn.h"

#include <stdio.h>
#include <string.h>

const char *next_option(const char *list, struct vec *entry, struct vec *value) {
  if (list == nullptr || list[0] == '\0') return nullptr;
  entry->ptr = list;
  entry->len = strcspn(list, ",");
  const char *rest = list + entry->len;
  if (rest[0] == ',') rest++;
  if (value == nullptr) return rest;

  *value = {};
  const auto *equals = static_cast<const char *>(memchr(entry->ptr, '=', entry->len));
  if (equals != nullptr) {
    value->ptr = equals + 1;
    value->len = static_cast<size_t>(entry->ptr + entry->len - value->ptr);
    entry->len = static_cast<size_t>(equals - entry->ptr);
  }
  return rest;
}

/* A network in host byte order. */
struct network {
  uint32_t address;
  uint32_t mask;
};

static bool is_octet(int n) {
  return n >= 0 && n <= 255;
}

/* Parses "a.b.c.d/len" or "a.b.c.d", which must be the whole text. */
static bool parse_network(const char *text, size_t text_len, struct network *net) {
  int a, b, c, d, prefix = 32, used = 0;
  if (sscanf(text, "%d.%d.%d.%d/%d%n", &a, &b, &c, &d, &prefix, &used) != 5) {
    prefix = 32;
    if (sscanf(text, "%d.%d.%d.%d%n", &a, &b, &c, &d, &used) != 4) return false;
  }
  if (!is_octet(a) || !is_octet(b) || !is_octet(c) || !is_octet(d)) return false;
  if (prefix < 0 || prefix > 32 || static_cast<size_t>(used) != text_len) return false;
  net->mask = prefix == 0 ? 0 : UINT32_MAX << (32 - prefix);
  net->address = static_cast<uint32_t>(a) << 24 | static_cast<uint32_t>(b) << 16 |
                 static_cast<uint32_t>(c) << 8 | static_cast<uint32_t>(d);
  return true;
}

int check_acl(const char *acl, uint32_t remote_ip) {
  int allowed = acl == nullptr ? 1 : 0;
  struct vec entry;
  while ((acl = next_option(acl, &entry, nullptr)) != nullptr) {
    struct network net;
    if (entry.len == 0 || (entry.ptr[0] != '+' && entry.ptr[0] != '-')) return -1;
    if (!parse_network(entry.ptr + 1, entry.len - 1, &net)) return -1;
    if (((remote_ip ^ net.address) & net.mask) == 0) allowed = entry.ptr[0] == '+' ? 1 : 0;
  }
  return allowed;
}
