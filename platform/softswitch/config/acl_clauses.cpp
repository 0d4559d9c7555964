/* The clauses of the line of an access list's rule: what may stand after permit or deny. One table, in the
 * order in which they are printed. Values are checked with the rule as a whole (model/acl_rule.h). */
#include "platform/softswitch/config/acl_lines.h"

#include "platform/softswitch/config/clauses.h"

#include <string.h>

namespace softswitch {

using values = std::span<const argument>;
using value_list = std::vector<argument>;

/* --- Numbers and words ---------------------------------------------------------------------------------- */

template <auto Member> static void set_number(acl_rule *rule, values given) {
  rule->*Member = given[0].number;
}

template <auto Member> static bool get_number(const acl_rule &rule, value_list *list) {
  if (rule.*Member) list->emplace_back(*(rule.*Member));
  return (rule.*Member).has_value();
}

/* "on" stands first in the patterns. */
template <auto Member> static void set_switch(acl_rule *rule, values given) {
  rule->*Member = given[0].number == 0 ? 1 : 0;
}

template <auto Member> static bool get_switch(const acl_rule &rule, value_list *list) {
  if (rule.*Member) list->emplace_back(*(rule.*Member) == 0 ? 1u : 0u);
  return (rule.*Member).has_value();
}

static void set_every(acl_rule *rule, values) {
  rule->every = OPEN_TRUE;
}

static bool get_every(const acl_rule &rule, value_list *) {
  return rule.every == OPEN_TRUE;
}

static void set_time_range(acl_rule *rule, values given) {
  rule->time_range = given[0].text;
}

static bool get_time_range(const acl_rule &rule, value_list *list) {
  if (rule.time_range) list->emplace_back(std::string_view(*rule.time_range));
  return rule.time_range.has_value();
}

/* --- Values with masks, and other pairs ----------------------------------------------------------------- */

template <auto Member> static void set_mac(acl_rule *rule, values given) {
  rule->*Member = {given[0].mac, given[1].mac};
}

template <auto Member> static bool get_mac(const acl_rule &rule, value_list *list) {
  if (rule.*Member) *list = {(rule.*Member)->address, (rule.*Member)->mask};
  return (rule.*Member).has_value();
}

/* Two numbers that are the members of a structure, in their order. */
template <auto Member> static void set_pair(acl_rule *rule, values given) {
  rule->*Member = {given[0].number, given[1].number};
}

template <auto Member, auto First, auto Second> static bool get_pair(const acl_rule &rule, value_list *list) {
  const auto &pair = rule.*Member;
  if (pair) *list = {*pair.*First, *pair.*Second};
  return pair.has_value();
}

template <auto Member> static void set_ipv4(acl_rule *rule, values given) {
  rule->*Member = {given[0].prefix.ipAddr.addr.ipv4, given[1].prefix.ipAddr.addr.ipv4};
}

template <auto Member> static bool get_ipv4(const acl_rule &rule, value_list *list) {
  const std::optional<acl_ipv4_match> &match = rule.*Member;
  if (match) *list = {inet_ipv4(match->address), inet_ipv4(match->mask)};
  return match.has_value();
}

template <auto Member> static bool get_bits(const acl_rule &rule, value_list *list) {
  return get_pair<Member, &acl_bits_match::bits, &acl_bits_match::mask>(rule, list);
}

static bool get_rate_limit(const acl_rule &rule, value_list *list) {
  return get_pair<&acl_rule::rate_limit, &acl_rate_limit::rate, &acl_rate_limit::burst>(rule, list);
}

template <auto Member> static void set_ipv6(acl_rule *rule, values given) {
  rule->*Member = {inet_bytes(given[0].prefix.ipAddr), given[0].prefix.pfxLen};
}

template <auto Member> static bool get_ipv6(const acl_rule &rule, value_list *list) {
  if (!(rule.*Member)) return false;
  open_inet_pfx_t prefix = {};
  prefix.ipAddr.family = OPEN_AF_INET6;
  memcpy(prefix.ipAddr.addr.ipv6.addr8, (rule.*Member)->prefix.data(), (rule.*Member)->prefix.size());
  prefix.pfxLen = (rule.*Member)->length;
  list->emplace_back(prefix);
  return true;
}

/* --- One or a range ------------------------------------------------------------------------------------- */

static void set_vlan(acl_rule *rule, values given) {
  rule->vlan = {given[0].number, 0};
}

static bool get_vlan(const acl_rule &rule, value_list *list) {
  if (rule.vlan) list->emplace_back(rule.vlan->first);
  return rule.vlan && rule.vlan->last == 0;
}

static bool get_vlan_range(const acl_rule &rule, value_list *list) {
  return get_pair<&acl_rule::vlan, &acl_vlan_match::first, &acl_vlan_match::last>(rule, list) &&
         rule.vlan->last != 0;
}

/* The words of the patterns stand in the order of the operators' numbers. */
template <auto Member> static void set_port(acl_rule *rule, values given) {
  rule->*Member = {given[0].number, given[1].number, 0};
}

template <auto Member> static bool get_port(const acl_rule &rule, value_list *list) {
  const std::optional<acl_port_match> &ports = rule.*Member;
  if (ports) *list = {ports->oper, ports->port};
  return ports && ports->oper != OPEN_ACL_L4_PORT_RANGE;
}

template <auto Member> static void set_port_range(acl_rule *rule, values given) {
  rule->*Member = {OPEN_ACL_L4_PORT_RANGE, given[0].number, given[1].number};
}

template <auto Member> static bool get_port_range(const acl_rule &rule, value_list *list) {
  const std::optional<acl_port_match> &ports = rule.*Member;
  if (ports) *list = {ports->port, ports->last};
  return ports && ports->oper == OPEN_ACL_L4_PORT_RANGE;
}

/* --- The table ------------------------------------------------------------------------------------------ */

static constexpr clause<acl_rule> clauses[] = {
    {"every", set_every, get_every},
    {"source-mac <any-mac> mask <any-mac>", set_mac<&acl_rule::source_mac>, get_mac<&acl_rule::source_mac>},
    {"destination-mac <any-mac> mask <any-mac>", set_mac<&acl_rule::destination_mac>,
     get_mac<&acl_rule::destination_mac>},
    {"ethertype <number>", set_number<&acl_rule::ethertype>, get_number<&acl_rule::ethertype>},
    {"vlan <vlan>", set_vlan, get_vlan, "vlan-range"},
    {"vlan-range <vlan> <vlan>", set_pair<&acl_rule::vlan>, get_vlan_range, "vlan"},
    {"cos <number>", set_number<&acl_rule::cos>, get_number<&acl_rule::cos>},
    {"protocol <number>", set_number<&acl_rule::protocol>, get_number<&acl_rule::protocol>},
    {"source <ip> mask <ip>", set_ipv4<&acl_rule::source_ipv4>, get_ipv4<&acl_rule::source_ipv4>},
    {"destination <ip> mask <ip>", set_ipv4<&acl_rule::destination_ipv4>,
     get_ipv4<&acl_rule::destination_ipv4>},
    {"source-prefix <ipv6-prefix>", set_ipv6<&acl_rule::source_ipv6>, get_ipv6<&acl_rule::source_ipv6>},
    {"destination-prefix <ipv6-prefix>", set_ipv6<&acl_rule::destination_ipv6>,
     get_ipv6<&acl_rule::destination_ipv6>},
    {"source-port equal|not-equal|less|greater <number>", set_port<&acl_rule::source_port>,
     get_port<&acl_rule::source_port>, "source-port-range"},
    {"source-port-range <number> <number>", set_port_range<&acl_rule::source_port>,
     get_port_range<&acl_rule::source_port>, "source-port"},
    {"destination-port equal|not-equal|less|greater <number>", set_port<&acl_rule::destination_port>,
     get_port<&acl_rule::destination_port>, "destination-port-range"},
    {"destination-port-range <number> <number>", set_port_range<&acl_rule::destination_port>,
     get_port_range<&acl_rule::destination_port>, "destination-port"},
    {"dscp <number>", set_number<&acl_rule::dscp>, get_number<&acl_rule::dscp>},
    {"precedence <number>", set_number<&acl_rule::precedence>, get_number<&acl_rule::precedence>},
    {"tos <hex-byte> mask <hex-byte>", set_pair<&acl_rule::tos>, get_bits<&acl_rule::tos>},
    {"igmp-type <number>", set_number<&acl_rule::igmp_type>, get_number<&acl_rule::igmp_type>},
    {"icmp-type <number>", set_number<&acl_rule::icmp_type>, get_number<&acl_rule::icmp_type>},
    {"icmp-code <number>", set_number<&acl_rule::icmp_code>, get_number<&acl_rule::icmp_code>},
    {"tcp-flags <number> mask <number>", set_pair<&acl_rule::tcp_flags>, get_bits<&acl_rule::tcp_flags>},
    {"established on|off", set_switch<&acl_rule::established>, get_switch<&acl_rule::established>},
    {"fragments on|off", set_switch<&acl_rule::fragments>, get_switch<&acl_rule::fragments>},
    {"routing on|off", set_switch<&acl_rule::routing>, get_switch<&acl_rule::routing>},
    {"flow-label <number>", set_number<&acl_rule::flow_label>, get_number<&acl_rule::flow_label>},
    {"log on|off", set_switch<&acl_rule::logging>, get_switch<&acl_rule::logging>},
    {"queue <number>", set_number<&acl_rule::queue>, get_number<&acl_rule::queue>},
    {"mirror <port>", set_number<&acl_rule::mirror>, get_number<&acl_rule::mirror>},
    {"redirect <port>", set_number<&acl_rule::redirect>, get_number<&acl_rule::redirect>},
    {"time-range <text>", set_time_range, get_time_range},
    {"rate-limit <number> burst <number>", set_pair<&acl_rule::rate_limit>, get_rate_limit},
};

bool read_acl_clauses(const switch_model &model, std::span<const token> words, acl_rule *rule,
                      std::string *error) {
  return read_clauses<acl_rule>(model, clauses, words, rule, error);
}

std::string print_acl_clauses(const switch_model &model, const acl_rule &rule) {
  return print_clauses<acl_rule>(model, clauses, rule);
}

} // namespace softswitch
