/* One rule of an access control list as a plain value: its action, what it looks for in a packet, and what
 * becomes of the packets that it finds. What goes with what stands here; lists, numbers and bindings are
 * acl.h. */
#ifndef KESTREL_SOFTSWITCH_MODEL_ACL_RULE_H
#define KESTREL_SOFTSWITCH_MODEL_ACL_RULE_H

#include "platform/api/openapi_acl.h"
#include "platform/softswitch/model/inet_address.h"
#include "platform/softswitch/model/mac_address.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace softswitch {

struct switch_model;

/* Where there are a value and a mask, the bits that are 1 in the mask are compared. */
struct acl_mac_match {
  mac_address address;
  mac_address mask;
  bool operator==(const acl_mac_match &) const = default;
};

struct acl_ipv4_match {
  uint32_t address; /* host byte order, like the mask */
  uint32_t mask;
  bool operator==(const acl_ipv4_match &) const = default;
};

struct acl_ipv6_match {
  std::array<uint8_t, 16> prefix; /* network byte order */
  uint32_t length;
  bool operator==(const acl_ipv6_match &) const = default;
};

struct acl_vlan_match {
  uint32_t first;
  uint32_t last; /* 0: a single VLAN */
  bool operator==(const acl_vlan_match &) const = default;
};

struct acl_port_match {
  uint32_t oper; /* OPEN_ACL_L4_PORT_OPERATOR_t */
  uint32_t port;
  uint32_t last; /* of a range; otherwise 0 */
  bool operator==(const acl_port_match &) const = default;
};

struct acl_bits_match {
  uint32_t bits;
  uint32_t mask;
  bool operator==(const acl_bits_match &) const = default;
};

struct acl_rate_limit {
  uint32_t rate;  /* kbit/s */
  uint32_t burst; /* Kbyte */
  bool operator==(const acl_rate_limit &) const = default;
};

struct acl_rule {
  uint32_t action = OPEN_ACL_ACTION_PERMIT; /* OPEN_ACL_ACTION_t */
  uint32_t every = OPEN_FALSE;              /* OPEN_BOOL_t: matches every packet */

  /* Conditions. All that are there must hold. */
  std::optional<acl_mac_match> source_mac;
  std::optional<acl_mac_match> destination_mac;
  std::optional<uint32_t> ethertype;
  std::optional<acl_vlan_match> vlan;
  std::optional<uint32_t> cos;
  std::optional<uint32_t> protocol; /* never stored as OPEN_ACL_PROTOCOL_IP, which looks for nothing */
  std::optional<acl_ipv4_match> source_ipv4;
  std::optional<acl_ipv4_match> destination_ipv4;
  std::optional<acl_ipv6_match> source_ipv6;
  std::optional<acl_ipv6_match> destination_ipv6;
  std::optional<acl_port_match> source_port;
  std::optional<acl_port_match> destination_port;
  std::optional<uint32_t> dscp;
  std::optional<uint32_t> precedence;
  std::optional<acl_bits_match> tos;
  std::optional<uint32_t> igmp_type;
  std::optional<uint32_t> icmp_type;
  std::optional<uint32_t> icmp_code; /* none: any */
  std::optional<acl_bits_match> tcp_flags;
  std::optional<uint32_t> established; /* this and the next two: 0 or 1 */
  std::optional<uint32_t> fragments;
  std::optional<uint32_t> routing;
  std::optional<uint32_t> flow_label;

  /* Attributes. */
  std::optional<uint32_t> logging; /* 0 or 1 */
  std::optional<uint32_t> queue;
  std::optional<uint32_t> mirror;   /* a port or LAG */
  std::optional<uint32_t> redirect; /* a port or LAG */
  std::optional<std::string> time_range;
  std::optional<acl_rate_limit> rate_limit;

  bool operator==(const acl_rule &) const = default;
};

/* Everything that a rule may have or not, by the names of its members. */
enum class acl_part {
  source_mac,
  destination_mac,
  ethertype,
  vlan,
  cos,
  protocol,
  source_ipv4,
  destination_ipv4,
  source_ipv6,
  destination_ipv6,
  source_port,
  destination_port,
  dscp,
  precedence,
  tos,
  igmp_type,
  icmp_type,
  icmp_code,
  tcp_flags,
  established,
  fragments,
  routing,
  flow_label,
  logging,
  queue,
  mirror,
  redirect,
  time_range,
  rate_limit,
  every,
};

bool acl_type_valid(uint32_t type);
/* "IP", "MAC", "IPv6"; the type is a valid one. */
std::string_view acl_type_name(uint32_t type);
/* Whether rules of lists of this type can have this. */
bool acl_type_has(uint32_t type, acl_part part);

/* Whether a text names a list or a time range: 1..31 bytes, no blank, no control character, no "/". */
bool acl_name_valid(std::string_view name);

/* Checks a rule of a list of this type as a whole, save what depends on where the list is bound. In `error`
 * the reason in words; nullptr when nobody wants to know.
 * OPEN_E_UNAVAIL: a part that lists of this type do not have. OPEN_E_PARAM: a value outside its range, or
 * parts that do not go together. Of a target that is no port or LAG what interface_switches_check() says. */
open_error_t acl_rule_check(const switch_model &model, uint32_t type, const acl_rule &rule,
                            std::string *error);

} // namespace softswitch

#endif
