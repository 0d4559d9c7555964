/* The clauses of TCAM policies; see tcam_clauses.h. One row for each field of the record; a field that is
 * zero, with its mask where it has one, is not printed. */
#include "platform/softswitch/config/tcam_clauses.h"

#include "platform/softswitch/config/clauses.h"

#include <string.h>

namespace softswitch {

using record = open_tcamApiPolicy_t;
using action = OPEN_TCAM_ACTION_t;
using arguments_in = std::span<const argument>;
using arguments_out = std::vector<argument> *;

/* What clauses are read into. */
struct policy_clauses {
  record policy;
  std::string error; /* set when a number does not fit its member */
};

/* --- Numbers -------------------------------------------------------------------------------------------- */

template <typename Member> static void put(policy_clauses *line, Member *member, uint32_t number) {
  *member = static_cast<Member>(number);
  if (*member != number) line->error = "the number " + std::to_string(number) + " is too large";
}

template <auto Member> static void set_number(policy_clauses *line, arguments_in arguments) {
  put(line, &(line->policy.*Member), arguments[0].number);
}

template <auto Member> static bool get_number(const policy_clauses &line, arguments_out arguments) {
  *arguments = {line.policy.*Member};
  return line.policy.*Member != 0;
}

template <auto Member, auto Mask> static void set_masked(policy_clauses *line, arguments_in arguments) {
  put(line, &(line->policy.*Member), arguments[0].number);
  put(line, &(line->policy.*Mask), arguments[1].number);
}

template <auto Member, auto Mask>
static bool get_masked(const policy_clauses &line, arguments_out arguments) {
  *arguments = {line.policy.*Member, line.policy.*Mask};
  return line.policy.*Member != 0 || line.policy.*Mask != 0;
}

/* --- Addresses ------------------------------------------------------------------------------------------ */

static mac_address mac_of(const uint8_t (&bytes)[6]) {
  mac_address mac;
  memcpy(mac.data(), bytes, sizeof bytes);
  return mac;
}

template <auto Member> static void set_mac(policy_clauses *line, arguments_in arguments) {
  memcpy(line->policy.*Member, arguments[0].mac.data(), sizeof(line->policy.*Member));
}

template <auto Member> static bool get_mac(const policy_clauses &line, arguments_out arguments) {
  mac_address mac = mac_of(line.policy.*Member);
  *arguments = {mac};
  return mac != mac_address{};
}

template <auto Member, auto Mask> static void set_ip(policy_clauses *line, arguments_in arguments) {
  line->policy.*Member = arguments[0].prefix.ipAddr.addr.ipv4;
  line->policy.*Mask = arguments[1].prefix.ipAddr.addr.ipv4;
}

template <auto Member, auto Mask> static bool get_ip(const policy_clauses &line, arguments_out arguments) {
  *arguments = {inet_ipv4(line.policy.*Member), inet_ipv4(line.policy.*Mask)};
  return line.policy.*Member != 0 || line.policy.*Mask != 0;
}

template <auto Member, auto Mask> static void set_ipv6(policy_clauses *line, arguments_in arguments) {
  line->policy.*Member = arguments[0].prefix.ipAddr.addr.ipv6;
  line->policy.*Mask = arguments[1].prefix.ipAddr.addr.ipv6;
}

static open_inet_pfx_t ipv6(const open_in6_addr_t &address) {
  open_inet_pfx_t prefix = {};
  prefix.ipAddr.family = OPEN_AF_INET6;
  prefix.ipAddr.addr.ipv6 = address;
  return prefix;
}

template <auto Member, auto Mask> static bool get_ipv6(const policy_clauses &line, arguments_out arguments) {
  static constexpr open_in6_addr_t zero = {};
  const open_in6_addr_t &address = line.policy.*Member, &mask = line.policy.*Mask;
  *arguments = {ipv6(address), ipv6(mask)};
  return memcmp(&address, &zero, sizeof zero) != 0 || memcmp(&mask, &zero, sizeof zero) != 0;
}

/* --- Actions -------------------------------------------------------------------------------------------- */

template <uint32_t Bit> static void set_action(policy_clauses *line, arguments_in) {
  line->policy.actionType |= Bit;
}

template <uint32_t Bit> static bool get_action(const policy_clauses &line, arguments_out) {
  return (line.policy.actionType & Bit) != 0;
}

template <uint32_t Bit, auto Member> static void set_action_number(policy_clauses *line, arguments_in from) {
  line->policy.actionType |= Bit;
  put(line, &(line->policy.actionVal.*Member), from[0].number);
}

template <uint32_t Bit, auto Member>
static bool get_action_number(const policy_clauses &line, arguments_out arguments) {
  *arguments = {line.policy.actionVal.*Member};
  return (line.policy.actionType & Bit) != 0;
}

template <uint32_t Bit, auto Member> static void set_action_mac(policy_clauses *line, arguments_in from) {
  line->policy.actionType |= Bit;
  memcpy(line->policy.actionVal.*Member, from[0].mac.data(), sizeof(line->policy.actionVal.*Member));
}

template <uint32_t Bit, auto Member>
static bool get_action_mac(const policy_clauses &line, arguments_out arguments) {
  *arguments = {mac_of(line.policy.actionVal.*Member)};
  return (line.policy.actionType & Bit) != 0;
}

/* A new DSCP is a part of the action that new-priority stands for; 0 is not printed. */
static bool get_new_dscp(const policy_clauses &line, arguments_out arguments) {
  return get_action_number<OPEN_TCAM_ACTION_USERPRIO, &action::dscp>(line, arguments) &&
         line.policy.actionVal.dscp != 0;
}

/* --- The clauses ---------------------------------------------------------------------------------------- */

static constexpr clause<policy_clauses> table[] = {
    {"policy-priority <number>", set_number<&record::policyPrio>, get_number<&record::policyPrio>},
    {"rule-number <number>", set_number<&record::ruleNum>, get_number<&record::ruleNum>},
    {"rule-priority <number>", set_number<&record::rulePrio>, get_number<&record::rulePrio>},
    {"destination-mac <any-mac>", set_mac<&record::matchDstMac>, get_mac<&record::matchDstMac>},
    {"source-mac <any-mac>", set_mac<&record::matchSrcMac>, get_mac<&record::matchSrcMac>},
    {"vlan <vlan>", set_number<&record::matchVlanVal>, get_number<&record::matchVlanVal>},
    {"vlan-priority <number>", set_number<&record::matchVlanPrio>, get_number<&record::matchVlanPrio>},
    {"ethertype <number>", set_number<&record::matchEthType>, get_number<&record::matchEthType>},
    {"destination-ip <ip> mask <ip>", set_ip<&record::matchDstIp, &record::matchDstIpMask>,
     get_ip<&record::matchDstIp, &record::matchDstIpMask>},
    {"source-ip <ip> mask <ip>", set_ip<&record::matchSrcIp, &record::matchSrcIpMask>,
     get_ip<&record::matchSrcIp, &record::matchSrcIpMask>},
    {"protocol <number> mask <number>", set_masked<&record::matchIpProto, &record::matchIpProtoMask>,
     get_masked<&record::matchIpProto, &record::matchIpProtoMask>},
    {"dscp <number> mask <number>", set_masked<&record::matchIpDscp, &record::matchIpDscpMask>,
     get_masked<&record::matchIpDscp, &record::matchIpDscpMask>},
    {"source-port <number> mask <number>",
     set_masked<&record::matchSrcPortIcmpType, &record::matchSrcPortIcmpTypeMask>,
     get_masked<&record::matchSrcPortIcmpType, &record::matchSrcPortIcmpTypeMask>},
    {"destination-port <number> mask <number>",
     set_masked<&record::matchDstPortIcmpCode, &record::matchDstPortIcmpCodeMask>,
     get_masked<&record::matchDstPortIcmpCode, &record::matchDstPortIcmpCodeMask>},
    {"source-ipv6 <ipv6> mask <ipv6>", set_ipv6<&record::matchSrcIpv6Addr, &record::matchSrcIpv6Mask>,
     get_ipv6<&record::matchSrcIpv6Addr, &record::matchSrcIpv6Mask>},
    {"destination-ipv6 <ipv6> mask <ipv6>", set_ipv6<&record::matchDstIpv6Addr, &record::matchDstIpv6Mask>,
     get_ipv6<&record::matchDstIpv6Addr, &record::matchDstIpv6Mask>},
    {"drop", set_action<OPEN_TCAM_ACTION_DROP>, get_action<OPEN_TCAM_ACTION_DROP>},
    {"redirect <port>", set_action_number<OPEN_TCAM_ACTION_REDIRECT, &action::ifNum>,
     get_action_number<OPEN_TCAM_ACTION_REDIRECT, &action::ifNum>},
    {"new-vlan <vlan>", set_action_number<OPEN_TCAM_ACTION_OUTERVLAN, &action::vlanVal>,
     get_action_number<OPEN_TCAM_ACTION_OUTERVLAN, &action::vlanVal>},
    {"new-source-mac <any-mac>", set_action_mac<OPEN_TCAM_ACTION_SRCMAC_NEW, &action::srcMac>,
     get_action_mac<OPEN_TCAM_ACTION_SRCMAC_NEW, &action::srcMac>},
    {"new-destination-mac <any-mac>", set_action_mac<OPEN_TCAM_ACTION_DSTMAC_NEW, &action::dstMac>,
     get_action_mac<OPEN_TCAM_ACTION_DSTMAC_NEW, &action::dstMac>},
    {"new-priority <number>", set_action_number<OPEN_TCAM_ACTION_USERPRIO, &action::vlanPrio>,
     get_action_number<OPEN_TCAM_ACTION_USERPRIO, &action::vlanPrio>},
    {"new-dscp <number>", set_action_number<OPEN_TCAM_ACTION_USERPRIO, &action::dscp>, get_new_dscp},
    {"new-tpid <number>", set_action_number<OPEN_TCAM_ACTION_OUTERTPID, &action::etherType>,
     get_action_number<OPEN_TCAM_ACTION_OUTERTPID, &action::etherType>},
    {"to-cpu", set_action<OPEN_TCAM_ACTION_REDIRECT_TO_CPU>, get_action<OPEN_TCAM_ACTION_REDIRECT_TO_CPU>},
};

bool read_tcam_clauses(const switch_model &model, std::span<const token> words, record *into,
                       std::string *error) {
  policy_clauses line = {*into, ""};
  if (!read_clauses<policy_clauses>(model, table, words, &line, error)) return false;
  *into = line.policy;
  *error = line.error;
  return error->empty();
}

std::string print_tcam_clauses(const switch_model &model, const record &from) {
  return print_clauses<policy_clauses>(model, table, {from, ""});
}

} // namespace softswitch
