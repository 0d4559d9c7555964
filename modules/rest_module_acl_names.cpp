/* The words of access control lists; see rest_module_acl_names.h. */
#include "modules/rest_module_acl_names.h"

#include "engine/rest_util.h"

#include <stdio.h>
#include <string.h>

/* --- The vocabulary ------------------------------------------------------------------------------------- */

static const enum_text type_words[] = {
    {OPEN_ACL_TYPE_IP, "ip"},
    {OPEN_ACL_TYPE_MAC, "mac"},
    {OPEN_ACL_TYPE_IPV6, "ipv6"},
};

static const enum_text type_names[] = {
    {OPEN_ACL_TYPE_IP, "IPv4"},
    {OPEN_ACL_TYPE_MAC, "MAC"},
    {OPEN_ACL_TYPE_IPV6, "IPv6"},
};

static const enum_text direction_words[] = {
    {OPEN_ACL_DIRECTION_IN, "in"},
    {OPEN_ACL_DIRECTION_OUT, "out"},
};

static const enum_text action_words[] = {
    {OPEN_ACL_ACTION_PERMIT, "permit"},
    {OPEN_ACL_ACTION_DENY, "deny"},
};

static const enum_text action_names[] = {
    {OPEN_ACL_ACTION_PERMIT, "Permit"},
    {OPEN_ACL_ACTION_DENY, "Deny"},
};

static const enum_text status_names[] = {
    {OPEN_ACL_RULE_STATUS_NONE, "No State"},
    {OPEN_ACL_RULE_STATUS_INACTIVE, "Inactive"},
    {OPEN_ACL_RULE_STATUS_ACTIVE, "Active"},
};

static const enum_text protocol_names[] = {
    {1, "ICMP"},   {2, "IGMP"},  {6, "TCP"},     {17, "UDP"},  {47, "GRE"}, {58, "ICMPv6"},
    {88, "EIGRP"}, {89, "OSPF"}, {94, "IPINIP"}, {103, "PIM"}, {255, "IP"},
};

static const enum_text ipv4_protocol_words[] = {
    {88, "eigrp"}, {47, "gre"},  {1, "icmp"}, {2, "igmp"}, {255, "ip"},    {94, "ipinip"},
    {89, "ospf"},  {103, "pim"}, {6, "tcp"},  {17, "udp"}, {256, "every"},
};

static const enum_text ipv6_protocol_words[] = {
    {255, "ipv6"}, {58, "icmpv6"}, {6, "tcp"}, {17, "udp"}, {256, "every"},
};

static const enum_text ethertype_words[] = {
    {0x809B, "appletalk"}, {0x0806, "arp"},    {0x80D5, "ibmsna"},    {0x0800, "ipv4"},
    {0x86DD, "ipv6"},      {0x8037, "ipx"},    {0x8848, "mplsmcast"}, {0x8847, "mplsucast"},
    {0x8191, "netbios"},   {0x8137, "novell"}, {0x8138, "novell2"},   {0x8863, "pppoe"},
    {0x8864, "pppoe2"},    {0x8035, "rarp"},
};

static const enum_text port_operator_names[] = {
    {OPEN_ACL_L4_PORT_EQUAL, "equal to"},
    {OPEN_ACL_L4_PORT_NOT_EQUAL, "not equal to"},
    {OPEN_ACL_L4_PORT_LESS_THAN, "less than"},
    {OPEN_ACL_L4_PORT_GREATER_THAN, "greater than"},
};

static const enum_text port_operator_prefixes[] = {
    {OPEN_ACL_L4_PORT_EQUAL, "eq:"},     {OPEN_ACL_L4_PORT_GREATER_THAN, "gt:"},
    {OPEN_ACL_L4_PORT_LESS_THAN, "lt:"}, {OPEN_ACL_L4_PORT_NOT_EQUAL, "neq:"},
    {OPEN_ACL_L4_PORT_RANGE, "range:"},
};

static constexpr int no_code = -1; /* the message is any of its type */

struct icmp_message {
  const char *keyword;
  uint32_t type;
  int code;
};

/* RFC 792 and its successors. */
static const icmp_message icmpv4_messages[] = {
    {"echo", 8, 0},
    {"echo-reply", 0, 0},
    {"host-redirect", 5, 1},
    {"mobile-redirect", 32, 0},
    {"net-redirect", 5, 0},
    {"net-unreachable", 3, 0},
    {"redirect", 5, no_code},
    {"packet-too-big", 3, 4},
    {"port-unreachable", 3, 3},
    {"source-quench", 4, 0},
    {"router-solicitation", 10, 0},
    {"router-advertisement", 9, no_code},
    {"ttl-exceeded", 11, 0},
    {"time-exceeded", 11, no_code},
    {"unreachable", 3, no_code},
};

/* RFC 4443 and its relatives. */
static const icmp_message icmpv6_messages[] = {
    {"echo-reply", 129, 0},
    {"echo-request", 128, 0},
    {"unreachable", 1, no_code},
    {"destination-unreachable", 1, no_code},
    {"time-exceeded", 3, no_code},
    {"port-unreachable", 1, 4},
    {"packet-too-big", 2, 0},
    {"router-solicitation", 133, 0},
    {"router-advertisement", 134, 0},
    {"no-route", 1, 0},
    {"router-renumbering", 138, no_code},
    {"no-admin", 1, 1},
    {"next-header", 4, 1},
    {"header", 4, 0},
    {"hop-limit", 3, 0},
    {"mld-query", 130, 0},
    {"mld-reduction", 132, 0},
    {"mld-report", 131, 0},
    {"nd-na", 136, 0},
    {"nd-ns", 135, 0},
};

/* --- Words to values ------------------------------------------------------------------------------------ */

static open_error_t value_of_word(std::span<const enum_text> table, const char *word, uint32_t *value) {
  int32_t found = 0;
  if (value == nullptr || find_enum_by_text(table, word, &found) != RC_TRUE) return OPEN_E_PARAM;
  *value = static_cast<uint32_t>(found);
  return OPEN_E_NONE;
}

open_error_t get_acl_type_eum_by_string(OPEN_ACL_TYPE_t *type, const char *in_typeStr) {
  return value_of_word(type_words, in_typeStr, type);
}

open_error_t get_acl_direction_eum_by_string(OPEN_ACL_DIRECTION_t *dir, const char *in_dirStr) {
  return value_of_word(direction_words, in_dirStr, dir);
}

open_error_t get_acl_rule_action_eum_by_string(OPEN_ACL_ACTION_t *action, const char *in_actionStr) {
  return value_of_word(action_words, in_actionStr, action);
}

open_error_t get_acl_rule_protocol_value_by_string(bool ipv4, uint32_t *protocol, const char *in_typeStr) {
  std::span<const enum_text> words = ipv6_protocol_words;
  if (ipv4) words = ipv4_protocol_words;
  return value_of_word(words, in_typeStr, protocol);
}

open_error_t get_acl_rule_ethertype_by_string(uint32_t *ethertype, const char *in_typeStr) {
  return value_of_word(ethertype_words, in_typeStr, ethertype);
}

static open_error_t find_icmp_message(std::span<const icmp_message> table, const char *keyword,
                                      uint32_t *type, uint32_t *code, bool *has_code) {
  if (keyword == nullptr || type == nullptr || code == nullptr || has_code == nullptr) return OPEN_E_PARAM;
  *has_code = true;
  for (const icmp_message &row : table) {
    if (strcmp(row.keyword, keyword) != 0) continue;
    *type = row.type;
    *has_code = row.code != no_code;
    if (*has_code) *code = static_cast<uint32_t>(row.code);
    return OPEN_E_NONE;
  }
  return OPEN_E_PARAM;
}

open_error_t get_acl_icmpv4_type_and_code_from_icmp_msg(const char *icmpMsgString, uint32_t *icmpTypeVal,
                                                        uint32_t *icmpCodeVal, bool *icmpCodeValSpecified) {
  return find_icmp_message(icmpv4_messages, icmpMsgString, icmpTypeVal, icmpCodeVal, icmpCodeValSpecified);
}

open_error_t get_acl_icmpv6_type_and_code_from_icmp_msg(const char *icmpMsgString, uint32_t *icmpTypeVal,
                                                        uint32_t *icmpCodeVal, bool *icmpCodeValSpecified) {
  return find_icmp_message(icmpv6_messages, icmpMsgString, icmpTypeVal, icmpCodeVal, icmpCodeValSpecified);
}

open_error_t get_acl_tcp_flags_by_string(const char *in_setStr, uint8_t *tcpFlagVal) {
  uint32_t value = 0;
  if (tcpFlagVal == nullptr || convert_to_32bit_uint(in_setStr, &value) != RC_TRUE || value > 1)
    return OPEN_E_PARAM;
  *tcpFlagVal = static_cast<uint8_t>(value);
  return OPEN_E_NONE;
}

/* --- Ports and flags ------------------------------------------------------------------------------------ */

static constexpr size_t port_text_size = 24; /* a port that is longer is cut and then no number */

/* Splits what follows the operator into one port, or the two of a range. False when one is missing. */
static bool split_ports(const char *text, bool range, char first[port_text_size], char last[port_text_size]) {
  if (range) return sscanf(text, "%23[^:]:%23s", first, last) == 2;
  snprintf(first, port_text_size, "%s", text);
  return true;
}

open_error_t parse_acl_rule_l4_port_and_oper(OPEN_ACL_L4_PORT_OPERATOR_t *oper, uint32_t *val, uint32_t *val2,
                                             const char *in_Str) {
  if (oper == nullptr || val == nullptr || val2 == nullptr || in_Str == nullptr) return OPEN_E_PARAM;
  for (const enum_text &row : port_operator_prefixes) {
    size_t length = strlen(row.text);
    if (strncmp(in_Str, row.text, length) != 0) continue;
    char first[port_text_size] = {}, last[port_text_size] = {};
    if (!split_ports(in_Str + length, row.value == OPEN_ACL_L4_PORT_RANGE, first, last)) return OPEN_E_PARAM;
    uint32_t port = 0, port2 = 0; /* the empty text that stands for "no second port" is 0 too */
    if (convert_to_32bit_uint(first, &port) != RC_TRUE || convert_to_32bit_uint(last, &port2) != RC_TRUE)
      return OPEN_E_PARAM;
    *oper = static_cast<uint32_t>(row.value);
    *val = port;
    *val2 = port2;
    return OPEN_E_NONE;
  }
  return OPEN_E_PARAM;
}

open_error_t parse_acl_tcp_flags(const char *value_str, uint8_t *tcpFlags, uint8_t *tcpFlagSet,
                                 uint8_t filtflag, uint32_t protocol) {
  uint8_t flag = 0;
  if (tcpFlags == nullptr || tcpFlagSet == nullptr || protocol != OPEN_ACL_PROTOCOL_TCP) return OPEN_E_PARAM;
  open_error_t rc = get_acl_tcp_flags_by_string(value_str, &flag);
  if (rc != OPEN_E_NONE) return rc;
  *tcpFlags = static_cast<uint8_t>(*tcpFlags | flag << filtflag);
  *tcpFlagSet = static_cast<uint8_t>(*tcpFlagSet | 1 << filtflag);
  return OPEN_E_NONE;
}

/* --- Values to words ------------------------------------------------------------------------------------ */

static open_error_t word_of_value(std::span<const enum_text> table, uint32_t value, char *out) {
  const char *word = find_text_by_enum(table, static_cast<int32_t>(value));
  if (out == nullptr || word == nullptr) return OPEN_E_PARAM;
  strcpy(out, word);
  return OPEN_E_NONE;
}

open_error_t get_acl_type_string_by_eum(OPEN_ACL_TYPE_t type, char *out_typeStr) {
  return word_of_value(type_names, type, out_typeStr);
}

open_error_t get_acl_rule_action_string_by_eum(OPEN_ACL_ACTION_t action, char *out_actionStr) {
  return word_of_value(action_names, action, out_actionStr);
}

open_error_t get_acl_rule_time_range_status_string_by_eum(OPEN_ACL_RULE_STATUS_t status,
                                                          char *out_statusStr) {
  return word_of_value(status_names, status, out_statusStr);
}

open_error_t get_acl_rule_protocol_string_by_value(uint32_t protocol, char *out_protocolStr) {
  if (out_protocolStr == nullptr) return OPEN_E_PARAM;
  int number = static_cast<int>(protocol);
  const char *name = find_text_by_enum(protocol_names, number);
  if (name == nullptr) {
    sprintf(out_protocolStr, "%d", number);
  } else {
    sprintf(out_protocolStr, "%d(%s)", number, name);
  }
  return OPEN_E_NONE;
}

open_error_t get_acl_rule_l4_port_string_by_oper_value(OPEN_ACL_L4_PORT_OPERATOR_t oper, uint32_t val,
                                                       uint32_t val2, char *out_portStr) {
  if (out_portStr == nullptr) return OPEN_E_PARAM;
  int port = static_cast<int>(val), port2 = static_cast<int>(val2);
  const char *name = find_text_by_enum(port_operator_names, static_cast<int32_t>(oper));
  if (name != nullptr) {
    sprintf(out_portStr, "%s %d", name, port);
  } else if (oper == OPEN_ACL_L4_PORT_RANGE) {
    sprintf(out_portStr, "%d..%d", port, port2);
  } else {
    return OPEN_E_PARAM;
  }
  return OPEN_E_NONE;
}
