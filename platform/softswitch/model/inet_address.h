/* IPv4 and IPv6 addresses and prefixes as text, and how prefixes compare. */
#ifndef KESTREL_SOFTSWITCH_MODEL_INET_ADDRESS_H
#define KESTREL_SOFTSWITCH_MODEL_INET_ADDRESS_H

#include "platform/api/openapi_routing.h"
#include "platform/softswitch/model/mac_address.h"

#include <array>
#include <cstdint>
#include <string>

namespace softswitch {

inline constexpr uint32_t ipv4_bits = 32;
inline constexpr uint32_t ipv6_bits = 128;

/* Whether a number is that of IPv4 or IPv6. */
inline bool inet_family_valid(uint32_t family) {
  return family == OPEN_AF_INET || family == OPEN_AF_INET6;
}

/* An address in network order, IPv4 in the first four bytes. */
std::array<uint8_t, 16> inet_bytes(const open_inet_addr_t &address);

/* An IPv4 address, given in host byte order. */
open_inet_addr_t inet_ipv4(uint32_t address);

/* The mask of a prefix of 0..32 bits, in host byte order, and back: false for a mask whose ones do not stand
 * together at its front. */
uint32_t ipv4_mask(uint32_t length);
bool ipv4_mask_length(uint32_t mask, uint32_t *length);

/* Reads four decimal numbers without leading zeros, or IPv6 text (RFC 4291 section 2.2); no blanks, no zone.
 * False, with `address` cleared, for anything else. */
bool inet_address_read(const std::string &text, open_inet_addr_t *address);
/* Reads an address, "/" and a decimal number without leading zeros, which may be too large for a prefix
 * length. False for anything else. */
bool inet_prefix_read(const std::string &text, open_inet_pfx_t *prefix);

/* The text of an address; that of an IPv6 address as RFC 5952 has it. */
std::string inet_address_text(const open_inet_addr_t &address);
/* The same with "/" and the prefix length. */
std::string inet_prefix_text(const open_inet_pfx_t &prefix);

bool inet_same_address(const open_inet_pfx_t &one, const open_inet_pfx_t &other);
/* Whether address and prefix length are the same. */
bool inet_same_prefix(const open_inet_pfx_t &one, const open_inet_pfx_t &other);
/* Whether one prefix holds the other. Prefixes of different families do not. */
bool inet_overlap(const open_inet_pfx_t &one, const open_inet_pfx_t &other);
/* Whether two interfaces cannot have these two at a time: they overlap, and neither is a link-local one. */
bool inet_conflict(const open_inet_pfx_t &one, const open_inet_pfx_t &other);
/* The prefix with the bits behind it zero. Its length is that of a prefix of the family. */
open_inet_pfx_t inet_masked(const open_inet_pfx_t &prefix);
/* Whether an IPv6 address is a link-local one (RFC 4291 section 2.5.6). */
bool inet_link_local(const open_inet_addr_t &address);

/* Whether a host can have this address with a prefix of this length: no unspecified, loopback, multicast or
 * reserved address and, in IPv4, not the first or last address of a prefix shorter than 31 bits (RFC 3021).
 * False also for a length outside 1..32 or 1..128, and an unknown family. */
bool inet_is_host(const open_inet_pfx_t &prefix);

/* Makes the last 64 bits of an IPv6 address the interface identifier of a station: its MAC address as
 * modified EUI-64 (RFC 4291 appendix A). */
void inet_set_interface_id(open_inet_addr_t *address, const mac_address &mac);

} // namespace softswitch

#endif
