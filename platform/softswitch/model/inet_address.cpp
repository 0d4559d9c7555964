/* IPv4 and IPv6 addresses; see inet_address.h. */
#include "platform/softswitch/model/inet_address.h"

#include "platform/softswitch/model/text.h"

#include <algorithm>
#include <arpa/inet.h>
#include <bit>
#include <string.h>

namespace softswitch {

std::array<uint8_t, 16> inet_bytes(const open_inet_addr_t &address) {
  std::array<uint8_t, 16> bytes = {};
  if (address.family == OPEN_AF_INET6) {
    memcpy(bytes.data(), address.addr.ipv6.addr8, bytes.size());
  } else {
    uint32_t ipv4 = htonl(address.addr.ipv4);
    memcpy(bytes.data(), &ipv4, sizeof ipv4);
  }
  return bytes;
}

open_inet_addr_t inet_ipv4(uint32_t address) {
  open_inet_addr_t result = {};
  result.family = OPEN_AF_INET;
  result.addr.ipv4 = address;
  return result;
}

uint32_t ipv4_mask(uint32_t length) {
  return length == 0 ? 0 : UINT32_MAX << (ipv4_bits - length);
}

bool ipv4_mask_length(uint32_t mask, uint32_t *length) {
  *length = static_cast<uint32_t>(std::countl_one(mask));
  return mask == ipv4_mask(*length);
}

/* --- Text ----------------------------------------------------------------------------------------------- */

bool inet_address_read(const std::string &text, open_inet_addr_t *address) {
  in_addr ipv4;
  memset(address, 0, sizeof *address);
  if (inet_pton(AF_INET, text.c_str(), &ipv4) == 1) {
    address->family = OPEN_AF_INET;
    address->addr.ipv4 = ntohl(ipv4.s_addr);
    return true;
  }
  in6_addr ipv6;
  if (inet_pton(AF_INET6, text.c_str(), &ipv6) != 1) return false;
  address->family = OPEN_AF_INET6;
  memcpy(address->addr.ipv6.addr8, &ipv6, sizeof ipv6);
  return true;
}

bool inet_prefix_read(const std::string &text, open_inet_pfx_t *prefix) {
  size_t slash = text.find('/');
  return slash != std::string::npos && inet_address_read(text.substr(0, slash), &prefix->ipAddr) &&
         decimal_read(std::string_view(text).substr(slash + 1), &prefix->pfxLen);
}

std::string inet_address_text(const open_inet_addr_t &address) {
  char text[INET6_ADDRSTRLEN] = "";
  int family = address.family == OPEN_AF_INET6 ? AF_INET6 : AF_INET;
  inet_ntop(family, inet_bytes(address).data(), text, sizeof text);
  return text;
}

std::string inet_prefix_text(const open_inet_pfx_t &prefix) {
  return inet_address_text(prefix.ipAddr) + '/' + std::to_string(prefix.pfxLen);
}

/* --- Comparing ------------------------------------------------------------------------------------------ */

bool inet_same_address(const open_inet_pfx_t &one, const open_inet_pfx_t &other) {
  return one.ipAddr.family == other.ipAddr.family && inet_bytes(one.ipAddr) == inet_bytes(other.ipAddr);
}

bool inet_same_prefix(const open_inet_pfx_t &one, const open_inet_pfx_t &other) {
  return inet_same_address(one, other) && one.pfxLen == other.pfxLen;
}

bool inet_overlap(const open_inet_pfx_t &one, const open_inet_pfx_t &other) {
  if (one.ipAddr.family != other.ipAddr.family) return false;
  uint32_t bits = std::min(one.pfxLen, other.pfxLen);
  if (one.ipAddr.family != OPEN_AF_INET6)
    return bits == 0 || (one.ipAddr.addr.ipv4 ^ other.ipAddr.addr.ipv4) >> (ipv4_bits - bits) == 0;
  const uint8_t *bytes = one.ipAddr.addr.ipv6.addr8, *other_bytes = other.ipAddr.addr.ipv6.addr8;
  uint32_t whole = bits / 8, rest = bits % 8;
  if (memcmp(bytes, other_bytes, whole) != 0) return false;
  return rest == 0 || (bytes[whole] ^ other_bytes[whole]) >> (8 - rest) == 0;
}

bool inet_conflict(const open_inet_pfx_t &one, const open_inet_pfx_t &other) {
  return inet_overlap(one, other) && !inet_link_local(one.ipAddr) && !inet_link_local(other.ipAddr);
}

open_inet_pfx_t inet_masked(const open_inet_pfx_t &prefix) {
  open_inet_pfx_t masked = prefix;
  uint32_t bits = prefix.pfxLen;
  if (prefix.ipAddr.family != OPEN_AF_INET6) {
    masked.ipAddr.addr.ipv4 &= ipv4_mask(bits);
    return masked;
  }
  uint8_t *bytes = masked.ipAddr.addr.ipv6.addr8;
  uint32_t whole = bits / 8;
  for (uint32_t index = whole; index < 16; index++)
    bytes[index] &= static_cast<uint8_t>(index == whole ? 0xff00 >> bits % 8 : 0);
  return masked;
}

/* --- Kinds of addresses --------------------------------------------------------------------------------- */

bool inet_link_local(const open_inet_addr_t &address) {
  const uint8_t *bytes = address.addr.ipv6.addr8;
  return address.family == OPEN_AF_INET6 && bytes[0] == 0xfe && (bytes[1] & 0xc0) == 0x80;
}

static bool is_ipv4_host(uint32_t address, uint32_t length) {
  uint32_t network = address >> 24;
  if (network == 0 || network == 127 || network >= 224) return false;
  if (length >= 31) return true;
  uint32_t host_mask = UINT32_MAX >> length;
  uint32_t host = address & host_mask;
  return host != 0 && host != host_mask;
}

static bool is_ipv6_host(const open_in6_addr_t &address) {
  const uint8_t *last = address.addr8 + 15;
  bool unspecified_or_loopback =
      *last <= 1 && std::all_of(address.addr8, last, [](uint8_t byte) { return byte == 0; });
  bool multicast = address.addr8[0] == 0xff;
  return !unspecified_or_loopback && !multicast;
}

bool inet_is_host(const open_inet_pfx_t &prefix) {
  uint32_t length = prefix.pfxLen;
  switch (prefix.ipAddr.family) {
  case OPEN_AF_NONE:
    return false;
  case OPEN_AF_INET:
    return length >= 1 && length <= ipv4_bits && is_ipv4_host(prefix.ipAddr.addr.ipv4, length);
  case OPEN_AF_INET6:
    return length >= 1 && length <= ipv6_bits && is_ipv6_host(prefix.ipAddr.addr.ipv6);
  }
  return false;
}

/* --- Interface identifiers ------------------------------------------------------------------------------ */

void inet_set_interface_id(open_inet_addr_t *address, const mac_address &mac) {
  const uint8_t universal = 0x02; /* the bit that says so; it is inverted */
  const uint8_t id[8] = {
      static_cast<uint8_t>(mac[0] ^ universal), mac[1], mac[2], 0xff, 0xfe, mac[3], mac[4], mac[5]};
  memcpy(address->addr.ipv6.addr8 + 8, id, sizeof id);
}

} // namespace softswitch
