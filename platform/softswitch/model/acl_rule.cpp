/* What a rule of an access control list may be; see acl_rule.h. Which parts rules of each type have, which
 * values are good and which parts need a protocol are the tables. */
#include "platform/softswitch/model/acl_rule.h"

#include "platform/softswitch/model/switch.h"
#include "platform/softswitch/model/text.h"

#include <algorithm>

namespace softswitch {

/* --- Types ---------------------------------------------------------------------------------------------- */

bool acl_type_valid(uint32_t type) {
  return type >= OPEN_ACL_TYPE_IP && type <= OPEN_ACL_TYPE_IPV6;
}

std::string_view acl_type_name(uint32_t type) {
  static constexpr std::string_view names[] = {"", "IP", "MAC", "IPv6"};
  return names[type];
}

bool acl_name_valid(std::string_view name) {
  bool length_fits = !name.empty() && name.size() < OPEN_ACL_NAME_SIZE;
  return length_fits && name.find_first_of(" /") == std::string_view::npos && !has_control_character(name);
}

/* --- Parts ---------------------------------------------------------------------------------------------- */

/* Types of lists, to be added up. */
static constexpr uint32_t ip = 1 << OPEN_ACL_TYPE_IP;
static constexpr uint32_t mac = 1 << OPEN_ACL_TYPE_MAC;
static constexpr uint32_t ipv6 = 1 << OPEN_ACL_TYPE_IPV6;

template <auto Member> static bool has(const acl_rule &rule) {
  return (rule.*Member).has_value();
}

struct part_row {
  acl_part part;
  const char *name;
  uint32_t types; /* of the lists whose rules can have it */
  bool (*has)(const acl_rule &);
};

/* By acl_part. */
static constexpr part_row parts[] = {
    {acl_part::source_mac, "source MAC address", mac, has<&acl_rule::source_mac>},
    {acl_part::destination_mac, "destination MAC address", mac, has<&acl_rule::destination_mac>},
    {acl_part::ethertype, "ethertype", mac, has<&acl_rule::ethertype>},
    {acl_part::vlan, "VLAN", mac, has<&acl_rule::vlan>},
    {acl_part::cos, "CoS", mac, has<&acl_rule::cos>},
    {acl_part::protocol, "protocol", ip + ipv6, has<&acl_rule::protocol>},
    {acl_part::source_ipv4, "IPv4 source address", ip, has<&acl_rule::source_ipv4>},
    {acl_part::destination_ipv4, "IPv4 destination address", ip, has<&acl_rule::destination_ipv4>},
    {acl_part::source_ipv6, "IPv6 source prefix", ipv6, has<&acl_rule::source_ipv6>},
    {acl_part::destination_ipv6, "IPv6 destination prefix", ipv6, has<&acl_rule::destination_ipv6>},
    {acl_part::source_port, "source port", ip + ipv6, has<&acl_rule::source_port>},
    {acl_part::destination_port, "destination port", ip + ipv6, has<&acl_rule::destination_port>},
    {acl_part::dscp, "DSCP", ip + ipv6, has<&acl_rule::dscp>},
    {acl_part::precedence, "precedence", ip + ipv6, has<&acl_rule::precedence>},
    {acl_part::tos, "type of service", ip + ipv6, has<&acl_rule::tos>},
    {acl_part::igmp_type, "IGMP type", ip, has<&acl_rule::igmp_type>},
    {acl_part::icmp_type, "ICMP type", ip + ipv6, has<&acl_rule::icmp_type>},
    {acl_part::icmp_code, "ICMP code", ip + ipv6, has<&acl_rule::icmp_code>},
    {acl_part::tcp_flags, "TCP flags", ip + ipv6, has<&acl_rule::tcp_flags>},
    {acl_part::established, "\"established\"", ip + ipv6, has<&acl_rule::established>},
    {acl_part::fragments, "\"fragments\"", ip + ipv6, has<&acl_rule::fragments>},
    {acl_part::routing, "\"routing\"", ipv6, has<&acl_rule::routing>},
    {acl_part::flow_label, "flow label", ipv6, has<&acl_rule::flow_label>},
    {acl_part::logging, "\"log\"", ip + mac + ipv6, has<&acl_rule::logging>},
    {acl_part::queue, "queue", ip + mac + ipv6, has<&acl_rule::queue>},
    {acl_part::mirror, "mirror", ip + mac + ipv6, has<&acl_rule::mirror>},
    {acl_part::redirect, "redirect", ip + mac + ipv6, has<&acl_rule::redirect>},
    {acl_part::time_range, "time range", ip + mac + ipv6, has<&acl_rule::time_range>},
    {acl_part::rate_limit, "rate limit", ip + mac + ipv6, has<&acl_rule::rate_limit>},
    {acl_part::every, "\"every\"", ip + mac + ipv6, [](const acl_rule &rule) { return rule.every != 0; }},
};

static const part_row &row_of(acl_part part) {
  return parts[static_cast<size_t>(part)];
}

bool acl_type_has(uint32_t type, acl_part part) {
  return row_of(part).types & (1u << type);
}

/* What a rule is checked against, and where the reason of a refusal goes. */
struct rule_check {
  uint32_t type;
  const acl_rule &rule;
  std::string *error;
};

static open_error_t refuse(const rule_check &check, open_error_t result, const std::string &reason) {
  if (check.error) *check.error = reason;
  return result;
}

static open_error_t check_parts(const rule_check &check) {
  for (const part_row &row : parts) {
    if (!row.has(check.rule) || acl_type_has(check.type, row.part)) continue;
    std::string list = check.type == OPEN_ACL_TYPE_MAC ? "a " : "an ";
    list += acl_type_name(check.type);
    return refuse(check, OPEN_E_UNAVAIL, "a rule of " + list + " list has no " + row.name);
  }
  return OPEN_E_NONE;
}

/* --- Values --------------------------------------------------------------------------------------------- */

static open_error_t check_range(const rule_check &check, const std::string &name, uint32_t value,
                                uint32_t min, uint32_t max) {
  if (value >= min && value <= max) return OPEN_E_NONE;
  std::string range = std::to_string(min) + ".." + std::to_string(max);
  return refuse(check, OPEN_E_PARAM, name + " out of range " + range);
}

struct number_row {
  acl_part part;
  std::optional<uint32_t> acl_rule::*number;
  uint32_t min;
  uint32_t max;
};

static constexpr number_row numbers[] = {
    {acl_part::ethertype, &acl_rule::ethertype, 0x0600, 0xffff},
    {acl_part::cos, &acl_rule::cos, 0, 7},
    {acl_part::protocol, &acl_rule::protocol, 0, 255},
    {acl_part::dscp, &acl_rule::dscp, 0, 63},
    {acl_part::precedence, &acl_rule::precedence, 0, 7},
    {acl_part::igmp_type, &acl_rule::igmp_type, 0, 255},
    {acl_part::icmp_type, &acl_rule::icmp_type, 0, 255},
    {acl_part::icmp_code, &acl_rule::icmp_code, 0, 255},
    {acl_part::established, &acl_rule::established, 0, 1},
    {acl_part::fragments, &acl_rule::fragments, 0, 1},
    {acl_part::routing, &acl_rule::routing, 0, 1},
    {acl_part::flow_label, &acl_rule::flow_label, 0, 0xfffff},
    {acl_part::logging, &acl_rule::logging, 0, 1},
    {acl_part::queue, &acl_rule::queue, 0, 7},
};

static open_error_t check_numbers(const rule_check &check) {
  open_error_t rc = check_range(check, "action", check.rule.action, 0, OPEN_ACL_ACTION_DENY);
  if (rc == OPEN_E_NONE) rc = check_range(check, "\"every\"", check.rule.every, 0, 1);
  for (const number_row &row : numbers) {
    if (rc != OPEN_E_NONE) return rc;
    const std::optional<uint32_t> &number = check.rule.*row.number;
    if (number) rc = check_range(check, row_of(row.part).name, *number, row.min, row.max);
  }
  return rc;
}

static open_error_t check_vlan(const rule_check &check) {
  const auto &vlan = check.rule.vlan;
  if (!vlan) return OPEN_E_NONE;
  bool range = vlan->last != 0;
  if (!vlan_id_valid(vlan->first) || (range && !vlan_id_valid(vlan->last)))
    return refuse(check, OPEN_E_PARAM, "VLAN id out of range 1..4094");
  if (range && vlan->first > vlan->last)
    return refuse(check, OPEN_E_PARAM, "the range of VLANs runs backwards");
  return OPEN_E_NONE;
}

static open_error_t check_ports(const rule_check &check, acl_part part,
                                const std::optional<acl_port_match> &ports) {
  if (!ports) return OPEN_E_NONE;
  std::string name = row_of(part).name;
  if (ports->oper > OPEN_ACL_L4_PORT_RANGE) return refuse(check, OPEN_E_PARAM, name + ": unknown operator");
  open_error_t rc = check_range(check, name, ports->port, 0, 65535);
  if (rc == OPEN_E_NONE) rc = check_range(check, name, ports->last, 0, 65535);
  if (rc != OPEN_E_NONE) return rc;
  if (ports->oper == OPEN_ACL_L4_PORT_RANGE && ports->port > ports->last)
    return refuse(check, OPEN_E_PARAM, "the range of " + name + "s runs backwards");
  return OPEN_E_NONE;
}

static open_error_t check_bits(const rule_check &check) {
  const auto &tos = check.rule.tos, &flags = check.rule.tcp_flags;
  open_error_t rc = OPEN_E_NONE;
  if (tos) rc = check_range(check, "type of service", std::max(tos->bits, tos->mask), 0, 255);
  if (rc == OPEN_E_NONE && flags)
    rc = check_range(check, "TCP flags", std::max(flags->bits, flags->mask), 0, 63);
  if (rc == OPEN_E_NONE && flags && (flags->bits & ~flags->mask) != 0)
    return refuse(check, OPEN_E_PARAM, "the TCP flags go beyond their mask");
  return rc;
}

static open_error_t check_prefix(const rule_check &check, const std::optional<acl_ipv6_match> &prefix) {
  return prefix ? check_range(check, "prefix length", prefix->length, 1, ipv6_bits) : OPEN_E_NONE;
}

static open_error_t check_attributes(const rule_check &check) {
  const acl_rule &rule = check.rule;
  if (rule.time_range && !acl_name_valid(*rule.time_range))
    return refuse(check, OPEN_E_PARAM, "the name of a time range is 1 to 31 bytes without blanks and \"/\"");
  if (!rule.rate_limit) return OPEN_E_NONE;
  open_error_t rc = check_range(check, "rate limit", rule.rate_limit->rate, 1, UINT32_MAX);
  return rc == OPEN_E_NONE ? check_range(check, "burst", rule.rate_limit->burst, 1, 128) : rc;
}

static open_error_t check_values(const rule_check &check) {
  const acl_rule &rule = check.rule;
  open_error_t rc = check_numbers(check);
  if (rc == OPEN_E_NONE) rc = check_vlan(check);
  if (rc == OPEN_E_NONE) rc = check_ports(check, acl_part::source_port, rule.source_port);
  if (rc == OPEN_E_NONE) rc = check_ports(check, acl_part::destination_port, rule.destination_port);
  if (rc == OPEN_E_NONE) rc = check_bits(check);
  if (rc == OPEN_E_NONE) rc = check_prefix(check, rule.source_ipv6);
  if (rc == OPEN_E_NONE) rc = check_prefix(check, rule.destination_ipv6);
  if (rc == OPEN_E_NONE) rc = check_attributes(check);
  return rc;
}

/* --- What goes together --------------------------------------------------------------------------------- */

/* A condition and the protocols that know what it looks for. */
struct protocol_row {
  acl_part part;
  uint32_t types; /* of lists for which this row is */
  uint32_t protocol;
  uint32_t other; /* the same again when there is one only */
};

static constexpr protocol_row needed_protocols[] = {
    {acl_part::source_port, ip + ipv6, OPEN_ACL_PROTOCOL_TCP, OPEN_ACL_PROTOCOL_UDP},
    {acl_part::destination_port, ip + ipv6, OPEN_ACL_PROTOCOL_TCP, OPEN_ACL_PROTOCOL_UDP},
    {acl_part::tcp_flags, ip + ipv6, OPEN_ACL_PROTOCOL_TCP, OPEN_ACL_PROTOCOL_TCP},
    {acl_part::established, ip + ipv6, OPEN_ACL_PROTOCOL_TCP, OPEN_ACL_PROTOCOL_TCP},
    {acl_part::igmp_type, ip, OPEN_ACL_PROTOCOL_IGMP, OPEN_ACL_PROTOCOL_IGMP},
    {acl_part::icmp_type, ip, OPEN_ACL_PROTOCOL_ICMP, OPEN_ACL_PROTOCOL_ICMP},
    {acl_part::icmp_type, ipv6, OPEN_ACL_PROTOCOL_ICMPV6, OPEN_ACL_PROTOCOL_ICMPV6},
};

static open_error_t check_protocol(const rule_check &check) {
  for (const protocol_row &row : needed_protocols) {
    if (!(row.types & (1u << check.type)) || !row_of(row.part).has(check.rule)) continue;
    if (check.rule.protocol == row.protocol || check.rule.protocol == row.other) continue;
    std::string wanted = std::to_string(row.protocol);
    if (row.other != row.protocol) wanted += " or " + std::to_string(row.other);
    return refuse(check, OPEN_E_PARAM, std::string(row_of(row.part).name) + " only with protocol " + wanted);
  }
  if (check.rule.icmp_code && !check.rule.icmp_type)
    return refuse(check, OPEN_E_PARAM, "ICMP code only with an ICMP type");
  return OPEN_E_NONE;
}

/* Whether a part says which packets the rule is about. Protocol 255 is any. */
static bool is_condition(const acl_rule &rule, const part_row &row) {
  if (row.part >= acl_part::logging || !row.has(rule)) return false;
  return row.part != acl_part::protocol || rule.protocol != OPEN_ACL_PROTOCOL_IP;
}

static open_error_t check_every(const rule_check &check) {
  bool conditions = std::any_of(std::begin(parts), std::end(parts),
                                [&](const part_row &row) { return is_condition(check.rule, row); });
  if (!check.rule.every || !conditions) return OPEN_E_NONE;
  return refuse(check, OPEN_E_PARAM, "a rule that matches every packet has no other condition");
}

static open_error_t check_target(const switch_model &model, const rule_check &check, const char *what,
                                 const std::optional<uint32_t> &target) {
  open_error_t rc = target ? interface_switches_check(model, *target) : OPEN_E_NONE;
  return rc == OPEN_E_NONE ? rc : refuse(check, rc, std::string(what) + " to what is no port or LAG");
}

open_error_t acl_rule_check(const switch_model &model, uint32_t type, const acl_rule &rule,
                            std::string *error) {
  rule_check check = {type, rule, error};
  open_error_t rc = check_parts(check);
  if (rc == OPEN_E_NONE) rc = check_values(check);
  if (rc == OPEN_E_NONE) rc = check_protocol(check);
  if (rc == OPEN_E_NONE) rc = check_every(check);
  if (rc == OPEN_E_NONE) rc = check_target(model, check, "mirror", rule.mirror);
  if (rc == OPEN_E_NONE) rc = check_target(model, check, "redirect", rule.redirect);
  return rc;
}

} // namespace softswitch
