/* Access control lists: making a rule. The rule is first made by its action; then each condition and
 * attribute that the request gives is added to it. They stand in tables of rows, one table for each type of
 * list, in the order in which they are read and added. When anything fails the half-built rule is deleted
 * again. */
#include "engine/rest_request.h"
#include "modules/rest_module_acl_lookup.h"
#include "modules/rest_module_acl_names.h"

#include <span>
#include <string.h>

/* --- A rule that is being built ------------------------------------------------------------------------- */

struct building_rule {
  openapiClientHandle_t *client_handle;
  mg_connection *conn;
  uint32_t aclId;
  uint32_t ruleId;
  OPEN_ACL_ACTION_t actionType;
  uint32_t protocol;   /* IP lists: 0..255, or OPEN_ACL_PROTOCOL_EVERY */
  bool boolSrcAny;     /* the source was given as "any" */
  bool boolDestAny;    /* the destination was */
  bool boolmatchother; /* a condition other than source and destination was added */
  bool icmp_msg;       /* an ICMP message was added */
  uint8_t tcpFlags;    /* TCP flags wanted, of those in tcpFlagSet */
  uint8_t tcpFlagSet;  /* TCP flags that were given */
};

struct rule_row;
typedef open_error_t (*row_adder_t)(building_rule *rule, const rule_row &row, const char *text);
typedef open_error_t (*number_adder_t)(openapiClientHandle_t *client_handle, uint32_t aclId, uint32_t ruleId,
                                       uint32_t number);

/* Whether a row is read when the request does not give its variable, or an empty one. */
enum row_presence { OPTIONAL, ALWAYS };

/* One condition or attribute. */
struct rule_row {
  const char *variable;  /* the request variable; null when the row has none of its own */
  row_presence presence; /* ALWAYS: `add` is called with an empty text when there is no value */
  row_adder_t add;       /* reads the text and adds what it says */
  number_adder_t number; /* for adders of numbers: the platform call */
  bool is_match;         /* success counts as another match than source and destination */
};

/* Goes through a table; the first failure. */
static open_error_t add_rows(building_rule *rule, std::span<const rule_row> rows) {
  for (const rule_row &row : rows) {
    request_variable value = {};
    if (row.variable != nullptr) value = read_variable(rule->conn, row.variable);
    if (value.length < 1 && row.presence == OPTIONAL) continue;
    open_error_t rc = row.add(rule, row, value.length < 1 ? "" : value.text);
    if (rc != OPEN_E_NONE) return rc;
    if (row.is_match) rule->boolmatchother = true;
  }
  return OPEN_E_NONE;
}

/* Whether nothing that was given so far narrows down what the rule matches. */
static bool matches_all(const building_rule &rule) {
  return rule.boolSrcAny && rule.boolDestAny && !rule.boolmatchother;
}

/* --- Values --------------------------------------------------------------------------------------------- */

static open_error_t take_number(const char *text, uint32_t *number) {
  return convert_to_32bit_uint(text, number) == RC_TRUE ? OPEN_E_NONE : OPEN_E_PARAM;
}

static open_error_t add_number(building_rule *rule, const rule_row &row, const char *text) {
  uint32_t number = 0;
  open_error_t rc = take_number(text, &number);
  return rc == OPEN_E_NONE ? row.number(rule->client_handle, rule->aclId, rule->ruleId, number) : rc;
}

/* 0 or 1. */
static open_error_t add_flag(building_rule *rule, const rule_row &row, const char *text) {
  uint32_t flag = 0;
  if (take_number(text, &flag) != OPEN_E_NONE || flag > 1) return OPEN_E_PARAM;
  return row.number(rule->client_handle, rule->aclId, rule->ruleId, flag);
}

/* --- Attributes of rules of all types ------------------------------------------------------------------- */

static open_error_t add_time_range(building_rule *rule, const rule_row &, const char *text) {
  open_buffdesc name = describe_text(text);
  return rpcclt_openapiAclRuleMatchTimeRangeAdd(rule->client_handle, rule->aclId, rule->ruleId, &name);
}

static open_error_t add_rate_limit(building_rule *rule, const rule_row &, const char *text) {
  uint32_t rate = 0, burst = 0;
  if (take_number(text, &rate) != OPEN_E_NONE) return OPEN_E_PARAM;
  request_variable size = read_variable(rule->conn, "burst_size");
  if (size.length < 1 || take_number(size.text, &burst) != OPEN_E_NONE) return OPEN_E_PARAM;
  return rpcclt_openapiAclRuleMatchRateLimitAdd(rule->client_handle, rule->aclId, rule->ruleId, rate, burst);
}

static const rule_row attribute_rows[] = {
    {"log", OPTIONAL, add_flag, rpcclt_openapiAclRuleMatchLoggingAdd, false},
    {"assign_queue", OPTIONAL, add_number, rpcclt_openapiAclRuleMatchAssignQueueAdd, false},
    {"mirror_intf", OPTIONAL, add_number, rpcclt_openapiAclRuleMatchMirrorAdd, false},
    {"redirect_intf", OPTIONAL, add_number, rpcclt_openapiAclRuleMatchRedirectAdd, false},
    {"time_range", OPTIONAL, add_time_range, nullptr, false},
    {"rate_limit", OPTIONAL, add_rate_limit, nullptr, false},
};

open_error_t check_and_add_acl_common_rules(openapiClientHandle_t *client_handle, mg_connection *conn,
                                            uint32_t aclId, uint32_t ruleId) {
  building_rule rule = {};
  rule.client_handle = client_handle;
  rule.conn = conn;
  rule.aclId = aclId;
  rule.ruleId = ruleId;
  return add_rows(&rule, attribute_rows);
}

/* --- Conditions of MAC lists ---------------------------------------------------------------------------- */

/* A MAC address or mask as the platform is given it: unconverted. */
struct mac_text {
  char text[OPEN_ACL_MAC_SIZE + 1] = {};
  open_buffdesc desc = {OPEN_ACL_MAC_SIZE, text};
};

/* False for an empty text, and one longer than the platform takes. */
static bool take_mac(const char *text, mac_text *mac) {
  size_t length = strlen(text);
  if (length < 1 || length > OPEN_ACL_MAC_SIZE) return false;
  memcpy(mac->text, text, length);
  return true;
}

static bool take_mac_variable(const building_rule &rule, const char *variable, mac_text *mac) {
  request_variable value = read_variable(rule.conn, variable);
  return value.length > 0 && take_mac(value.text, mac);
}

static open_error_t add_src_mac(building_rule *rule, const rule_row &, const char *text) {
  mac_text mac, mask;
  if (!take_mac(text, &mac)) return OPEN_E_PARAM;
  rule->boolSrcAny = strcmp(text, "any") == 0;
  if (rule->boolSrcAny) return OPEN_E_NONE;
  if (!take_mac_variable(*rule, "src_mask", &mask)) return OPEN_E_PARAM;
  return rpcclt_openapiAclRuleMatchMacSrcMacAdd(rule->client_handle, rule->aclId, rule->ruleId, &mac.desc,
                                                &mask.desc);
}

static open_error_t add_dest_mac(building_rule *rule, const rule_row &, const char *text) {
  mac_text mac, mask;
  if (!take_mac(text, &mac)) return OPEN_E_PARAM;
  rule->boolDestAny = strcmp(text, "any") == 0;
  if (rule->boolDestAny) return OPEN_E_NONE;
  if (strcmp(text, "bpdu") == 0) { /* the group addresses of IEEE 802.1Q table 8-1 and their neighbours */
    take_mac("01:80:C2:00:00:00", &mac);
    take_mac("FF:FF:FF:00:00:00", &mask);
  } else if (!take_mac_variable(*rule, "dest_mask", &mask)) {
    return OPEN_E_PARAM;
  }
  return rpcclt_openapiAclRuleMatchMacDstMacAdd(rule->client_handle, rule->aclId, rule->ruleId, &mac.desc,
                                                &mask.desc);
}

static open_error_t add_ethertype(building_rule *rule, const rule_row &, const char *text) {
  uint32_t ethertype = 0;
  open_error_t rc = take_number(text, &ethertype);
  if (rc != OPEN_E_NONE) rc = get_acl_rule_ethertype_by_string(&ethertype, text);
  if (rc != OPEN_E_NONE) return rc;
  return rpcclt_openapiAclRuleMatchMacEtherTypeAdd(rule->client_handle, rule->aclId, rule->ruleId, ethertype);
}

static open_error_t add_mac_vlan(building_rule *rule, const rule_row &, const char *text) {
  uint32_t vlan = 0;
  open_error_t rc = take_number(text, &vlan);
  if (rc != OPEN_E_NONE) return rc;
  return rpcclt_openapiAclRuleMatchMacVlanAdd(rule->client_handle, rule->aclId, rule->ruleId,
                                              OPEN_ACL_VLAN_EQUAL, vlan, 0);
}

static open_error_t add_mac_every(building_rule *rule, const rule_row &, const char *) {
  return rpcclt_openapiAclRuleMatchEveryAdd(rule->client_handle, rule->aclId, rule->ruleId,
                                            matches_all(*rule) ? OPEN_TRUE : OPEN_FALSE);
}

static const rule_row mac_rows[] = {
    {"src_mac", ALWAYS, add_src_mac, nullptr, false},
    {"dest_mac", ALWAYS, add_dest_mac, nullptr, false},
    {"ethertype", OPTIONAL, add_ethertype, nullptr, true},
    {"vlan", OPTIONAL, add_mac_vlan, nullptr, true},
    {"cos", OPTIONAL, add_number, rpcclt_openapiAclRuleMatchMacCosAdd, true},
    {nullptr, ALWAYS, add_mac_every, nullptr, false},
};

/* --- Where IP packets come from and go to --------------------------------------------------------------- */

typedef open_error_t (*ip_mask_adder_t)(openapiClientHandle_t *client_handle, uint32_t aclId, uint32_t ruleId,
                                        open_inet_addr_t addr, open_inet_addr_t mask);
typedef open_error_t (*ipv6_prefix_adder_t)(openapiClientHandle_t *client_handle, uint32_t aclId,
                                            uint32_t ruleId, open_inet_addr_t prefix, uint32_t length);

/* The platform is not asked about an empty text: the address is missing. */
static bool take_address(const building_rule &rule, OPEN_AF_t family, const char *text,
                         open_inet_addr_t *addr) {
  return text[0] != '\0' && convert_ip_string_to_inet_addr(rule.client_handle, text, addr) == RC_TRUE &&
         addr->family == family;
}

static open_error_t add_ip(building_rule *rule, const char *text, const char *mask_variable, bool *any,
                           ip_mask_adder_t add) {
  open_inet_addr_t addr = {}, mask = {};
  *any = strcmp(text, "any") == 0;
  if (*any) return OPEN_E_NONE;
  if (!take_address(*rule, OPEN_AF_INET, text, &addr)) return OPEN_E_PARAM;
  request_variable mask_text = read_variable(rule->conn, mask_variable);
  if (mask_text.length < 1 || !take_address(*rule, OPEN_AF_INET, mask_text.text, &mask)) return OPEN_E_PARAM;
  return add(rule->client_handle, rule->aclId, rule->ruleId, addr, mask);
}

static open_error_t add_src_ip(building_rule *rule, const rule_row &, const char *text) {
  return add_ip(rule, text, "src_mask", &rule->boolSrcAny, rpcclt_openapiAclRuleMatchIpSrcMaskAdd);
}

static open_error_t add_dest_ip(building_rule *rule, const rule_row &, const char *text) {
  return add_ip(rule, text, "dest_mask", &rule->boolDestAny, rpcclt_openapiAclRuleMatchIpDstMaskAdd);
}

static open_error_t add_ipv6(building_rule *rule, const char *text, const char *length_variable, bool *any,
                             ipv6_prefix_adder_t add) {
  open_inet_addr_t prefix = {};
  uint32_t length = 0;
  *any = strcmp(text, "any") == 0;
  if (*any) return OPEN_E_NONE;
  if (!take_address(*rule, OPEN_AF_INET6, text, &prefix)) return OPEN_E_PARAM;
  request_variable length_text = read_variable(rule->conn, length_variable);
  if (length_text.length < 1 || take_number(length_text.text, &length) != OPEN_E_NONE) return OPEN_E_PARAM;
  return add(rule->client_handle, rule->aclId, rule->ruleId, prefix, length);
}

static open_error_t add_src_prefix(building_rule *rule, const rule_row &, const char *text) {
  return add_ipv6(rule, text, "src_prefix_length", &rule->boolSrcAny,
                  rpcclt_openapiAclRuleMatchIpv6SrcPfxAdd);
}

static open_error_t add_dest_prefix(building_rule *rule, const rule_row &, const char *text) {
  return add_ipv6(rule, text, "dest_prefix_length", &rule->boolDestAny,
                  rpcclt_openapiAclRuleMatchIpv6DstPfxAdd);
}

/* --- Conditions of IPv4 and IPv6 lists ------------------------------------------------------------------ */

static open_error_t add_tos(building_rule *rule, const rule_row &, const char *text) {
  request_variable mask_text = read_variable(rule->conn, "tos_mask");
  open_buffdesc tos = describe_text(text);
  open_buffdesc mask = describe_text(mask_text.length < 1 ? "ff" : mask_text.text);
  return rpcclt_openapiAclRuleMatchTosAdd(rule->client_handle, rule->aclId, rule->ruleId, &tos, &mask);
}

static open_error_t add_protocol(building_rule *rule, const rule_row &, const char *) {
  if (rule->protocol == OPEN_ACL_PROTOCOL_IP && matches_all(*rule)) return OPEN_E_NONE;
  if (rpcclt_openapiAclRuleMatchProtocolAdd(rule->client_handle, rule->aclId, rule->ruleId, rule->protocol) !=
      OPEN_E_NONE)
    return OPEN_E_PARAM; /* whatever the platform says */
  rule->boolmatchother = true;
  return OPEN_E_NONE;
}

typedef open_error_t (*port_adder_t)(openapiClientHandle_t *client_handle, uint32_t aclId, uint32_t ruleId,
                                     OPEN_ACL_L4_PORT_OPERATOR_t oper, uint32_t port, uint32_t port2);

static open_error_t add_port(building_rule *rule, const char *text, port_adder_t add) {
  OPEN_ACL_L4_PORT_OPERATOR_t oper = 0;
  uint32_t port = 0, port2 = 0;
  if (rule->protocol != OPEN_ACL_PROTOCOL_TCP && rule->protocol != OPEN_ACL_PROTOCOL_UDP) return OPEN_E_PARAM;
  open_error_t rc = parse_acl_rule_l4_port_and_oper(&oper, &port, &port2, text);
  return rc == OPEN_E_NONE ? add(rule->client_handle, rule->aclId, rule->ruleId, oper, port, port2) : rc;
}

static open_error_t add_src_port(building_rule *rule, const rule_row &, const char *text) {
  return add_port(rule, text, rpcclt_openapiAclRuleMatchL4SrcPortAdd);
}

static open_error_t add_dest_port(building_rule *rule, const rule_row &, const char *text) {
  return add_port(rule, text, rpcclt_openapiAclRuleMatchL4DstPortAdd);
}

static open_error_t add_igmp_type(building_rule *rule, const rule_row &row, const char *text) {
  return rule->protocol == OPEN_ACL_PROTOCOL_IGMP ? add_number(rule, row, text) : OPEN_E_PARAM;
}

typedef open_error_t (*icmp_message_reader_t)(const char *message, uint32_t *type, uint32_t *code,
                                              bool *has_code);

static open_error_t add_message(building_rule *rule, uint32_t protocol, icmp_message_reader_t read,
                                const char *text) {
  uint32_t type = 0, code = 0;
  bool withCode = false;
  if (rule->protocol != protocol) return OPEN_E_PARAM;
  open_error_t rc = read(text, &type, &code, &withCode);
  if (rc != OPEN_E_NONE) return rc;
  rc = rpcclt_openapiAclRuleMatchIcmpTypeCodeAdd(rule->client_handle, rule->aclId, rule->ruleId, withCode,
                                                 type, code);
  rule->icmp_msg = rc == OPEN_E_NONE;
  return rc;
}

static open_error_t add_icmp_message(building_rule *rule, const rule_row &, const char *text) {
  return add_message(rule, OPEN_ACL_PROTOCOL_ICMP, get_acl_icmpv4_type_and_code_from_icmp_msg, text);
}

static open_error_t add_icmpv6_message(building_rule *rule, const rule_row &, const char *text) {
  return add_message(rule, OPEN_ACL_PROTOCOL_ICMPV6, get_acl_icmpv6_type_and_code_from_icmp_msg, text);
}

static open_error_t add_type(building_rule *rule, uint32_t protocol, const char *text) {
  uint32_t type = 0, code = 0;
  if (rule->protocol != protocol || rule->icmp_msg) return OPEN_E_PARAM;
  if (take_number(text, &type) != OPEN_E_NONE) return OPEN_E_PARAM;
  request_variable code_text = read_variable(rule->conn, "icmp_code");
  bool withCode = code_text.length > 0;
  if (withCode && take_number(code_text.text, &code) != OPEN_E_NONE) return OPEN_E_PARAM;
  return rpcclt_openapiAclRuleMatchIcmpTypeCodeAdd(rule->client_handle, rule->aclId, rule->ruleId, withCode,
                                                   type, code);
}

static open_error_t add_icmp_type(building_rule *rule, const rule_row &, const char *text) {
  return add_type(rule, OPEN_ACL_PROTOCOL_ICMP, text);
}

static open_error_t add_icmpv6_type(building_rule *rule, const rule_row &, const char *text) {
  return add_type(rule, OPEN_ACL_PROTOCOL_ICMPV6, text);
}

/* All flags are read first and added together. */
static open_error_t add_tcp_flags(building_rule *rule, const rule_row &, const char *) {
  static const char *const flags[] = {"tcp_fin", "tcp_syn", "tcp_rst", "tcp_psh", "tcp_ack", "tcp_urg"};
  uint8_t bit = 0;
  for (const char *flag : flags) {
    request_variable value = read_variable(rule->conn, flag);
    open_error_t rc = OPEN_E_NONE;
    if (value.length > 0)
      rc = parse_acl_tcp_flags(value.text, &rule->tcpFlags, &rule->tcpFlagSet, bit, rule->protocol);
    if (rc != OPEN_E_NONE) return rc;
    bit++;
  }
  if (rule->tcpFlagSet == 0) return OPEN_E_NONE;
  rule->boolmatchother = true;
  return rpcclt_openapiAclRuleMatchTcpFlagsAdd(rule->client_handle, rule->aclId, rule->ruleId, rule->tcpFlags,
                                               rule->tcpFlagSet);
}

/* Connections that are established have RST or ACK set: asking for both contradicts or repeats. */
static constexpr uint8_t flags_of_established = 0x14;

static open_error_t add_established(building_rule *rule, const rule_row &row, const char *text) {
  uint32_t established = 0;
  if (rule->protocol != OPEN_ACL_PROTOCOL_TCP) return OPEN_E_PARAM;
  if (take_number(text, &established) == OPEN_E_NONE && established == 1 &&
      (rule->tcpFlagSet & flags_of_established) != 0)
    return OPEN_E_PARAM;
  return add_flag(rule, row, text);
}

static open_error_t add_ip_every(building_rule *rule, const rule_row &, const char *) {
  if (rule->protocol != OPEN_ACL_PROTOCOL_EVERY && !matches_all(*rule)) return OPEN_E_NONE;
  return rpcclt_openapiAclRuleMatchEveryAdd(rule->client_handle, rule->aclId, rule->ruleId, OPEN_TRUE);
}

static const rule_row ip_rows[] = {
    {"src_ip", ALWAYS, add_src_ip, nullptr, false},
    {"dest_ip", ALWAYS, add_dest_ip, nullptr, false},
    {"dscp", OPTIONAL, add_number, rpcclt_openapiAclRuleMatchDscpAdd, true},
    {"precedence", OPTIONAL, add_number, rpcclt_openapiAclRuleMatchPrecedenceAdd, true},
    {"tos", OPTIONAL, add_tos, nullptr, true},
    {"fragments", OPTIONAL, add_flag, rpcclt_openapiAclRuleMatchFragmentsAdd, true},
    {nullptr, ALWAYS, add_protocol, nullptr, false}, /* says itself whether it counts */
    {"src_l4_port", OPTIONAL, add_src_port, nullptr, true},
    {"dest_l4_port", OPTIONAL, add_dest_port, nullptr, true},
    {"igmp_type", OPTIONAL, add_igmp_type, rpcclt_openapiAclRuleMatchIgmpTypeAdd, true},
    {"icmp_message", OPTIONAL, add_icmp_message, nullptr, true},
    {"icmp_type", OPTIONAL, add_icmp_type, nullptr, true},
    {nullptr, ALWAYS, add_tcp_flags, nullptr, false}, /* likewise */
    {"tcp_established", OPTIONAL, add_established, rpcclt_openapiAclRuleMatchTcpEstablishedAdd, true},
};

static const rule_row ipv6_rows[] = {
    {"src_prefix", ALWAYS, add_src_prefix, nullptr, false},
    {"dest_prefix", ALWAYS, add_dest_prefix, nullptr, false},
    {"dscp", OPTIONAL, add_number, rpcclt_openapiAclRuleMatchDscpAdd, true},
    {"precedence", OPTIONAL, add_number, rpcclt_openapiAclRuleMatchPrecedenceAdd, true},
    {"tos", OPTIONAL, add_tos, nullptr, true},
    {"fragments", OPTIONAL, add_flag, rpcclt_openapiAclRuleMatchFragmentsAdd, true},
    {"routing", OPTIONAL, add_flag, rpcclt_openapiAclRuleMatchRoutingAdd, true},
    {"flow_lable", OPTIONAL, add_number, rpcclt_openapiAclRuleMatchFlowLabelAdd, true},
    {nullptr, ALWAYS, add_protocol, nullptr, false},
    {"src_l4_port", OPTIONAL, add_src_port, nullptr, true},
    {"dest_l4_port", OPTIONAL, add_dest_port, nullptr, true},
    {"icmp_message", OPTIONAL, add_icmpv6_message, nullptr, true},
    {"icmp_type", OPTIONAL, add_icmpv6_type, nullptr, true},
    {nullptr, ALWAYS, add_tcp_flags, nullptr, false},
    {"tcp_established", OPTIONAL, add_established, rpcclt_openapiAclRuleMatchTcpEstablishedAdd, true},
};

static const rule_row ip_every_row[] = {{nullptr, ALWAYS, add_ip_every, nullptr, false}};

/* --- Before the rule exists ----------------------------------------------------------------------------- */

/* What a type of list needs. */
struct rule_kind {
  OPEN_ACL_TYPE_t type;
  std::span<const rule_row> rows;
};

static const rule_kind mac_kind = {OPEN_ACL_TYPE_MAC, mac_rows};
static const rule_kind ip_kind = {OPEN_ACL_TYPE_IP, ip_rows};
static const rule_kind ipv6_kind = {OPEN_ACL_TYPE_IPV6, ipv6_rows};

static const char NO_SUCH_NUMBER[] = "The ACL rules count is full or the sequence number is not available.";

/* The list that the URI names. False when the request is answered. */
static bool list_or_reply(building_rule *rule, const rule_kind &kind, node_t *tree) {
  uri_fields_t fields;
  OPEN_ACL_TYPE_t type = 0;
  acl_name name;
  open_error_t rc = take_uri_acl(rule->conn, "/acl/%[^/]/name/%[^/]/rule%s", fields, &type, &name);
  if (rc != OPEN_E_NONE) {
    fail(rule->conn, rc, tree);
    return false;
  }
  append_tree_string(tree, "acl_type", "acl_type", fields[0]);
  append_tree_string(tree, "acl_name", "acl_name", name.text);
  if (!acl_or_reply(rule->client_handle, rule->conn, kind.type, &name, tree, &rule->aclId)) return false;
  append_tree_uint(tree, "acl_id", "acl_id", rule->aclId);
  return true;
}

/* The number that the rule shall have; the platform chooses when the request gives none. */
static bool number_or_reply(building_rule *rule, node_t *tree) {
  request_variable sequence = read_variable(rule->conn, "sequence");
  if (sequence.length < 1) return true;
  if (take_number(sequence.text, &rule->ruleId) != OPEN_E_NONE) {
    fail(rule->conn, OPEN_E_PARAM, tree);
    return false;
  }
  if (rpcclt_openapiAclRuleNumCheckValid(rule->client_handle, rule->aclId, rule->ruleId)) return true;
  refuse_with_tree(rule->conn, 2, NO_SUCH_NUMBER, tree);
  return false;
}

static open_error_t take_action(building_rule *rule) {
  request_variable action = read_variable(rule->conn, "action");
  if (action.length < 1) return OPEN_E_PARAM;
  return get_acl_rule_action_eum_by_string(&rule->actionType, action.text);
}

/* MAC lists have no protocol. */
static open_error_t take_protocol(building_rule *rule, const rule_kind &kind) {
  if (kind.type == OPEN_ACL_TYPE_MAC) return OPEN_E_NONE;
  request_variable protocol = read_variable(rule->conn, "protocol");
  if (protocol.length < 1) return OPEN_E_PARAM;
  if (take_number(protocol.text, &rule->protocol) == OPEN_E_NONE) return OPEN_E_NONE;
  return get_acl_rule_protocol_value_by_string(kind.type == OPEN_ACL_TYPE_IP, &rule->protocol, protocol.text);
}

/* Makes the rule, without conditions so far. False when the request is answered. */
static bool rule_or_reply(building_rule *rule, const rule_kind &kind, node_t *tree) {
  if (!list_or_reply(rule, kind, tree) || !number_or_reply(rule, tree)) return false;
  open_error_t rc = take_action(rule);
  if (rc == OPEN_E_NONE) rc = take_protocol(rule, kind);
  if (rc == OPEN_E_NONE) {
    rc = rpcclt_openapiAclRuleActionAdd(rule->client_handle, rule->aclId, &rule->ruleId, rule->actionType);
    if (rc == OPEN_E_NONE) return true;
    if (rc == OPEN_E_FULL) {
      refuse_with_tree(rule->conn, 2, NO_SUCH_NUMBER, tree);
      return false;
    }
  }
  fail(rule->conn, rc, tree);
  return false;
}

/* --- Making a rule -------------------------------------------------------------------------------------- */

/* All that the request asks of the rule. */
static open_error_t add_all(building_rule *rule, const rule_kind &kind) {
  open_error_t rc = OPEN_E_NONE;
  if (rule->protocol != OPEN_ACL_PROTOCOL_EVERY) rc = add_rows(rule, kind.rows);
  if (rc == OPEN_E_NONE && kind.type != OPEN_ACL_TYPE_MAC) rc = add_rows(rule, ip_every_row);
  if (rc == OPEN_E_NONE)
    rc = check_and_add_acl_common_rules(rule->client_handle, rule->conn, rule->aclId, rule->ruleId);
  return rc;
}

static bool is_duplicate(const building_rule &rule) {
  OPEN_BOOL_t isDuplicated = OPEN_FALSE;
  open_error_t rc =
      rpcclt_openapiAclRuleDuplicateCheck(rule.client_handle, rule.aclId, rule.ruleId, &isDuplicated);
  return rc == OPEN_E_NONE && isDuplicated == OPEN_TRUE;
}

static int create_rule(openapiClientHandle_t *client_handle, mg_connection *conn, const rule_kind &kind) {
  building_rule rule = {};
  rule.client_handle = client_handle;
  rule.conn = conn;
  node_t *tree = new_tree();
  if (tree == nullptr) return fail(conn, OPEN_E_INTERNAL, tree);
  if (!rule_or_reply(&rule, kind, tree)) return 0;

  open_error_t rc = add_all(&rule, kind);
  if (rc != OPEN_E_NONE) {
    rpcclt_openapiAclRuleDelete(client_handle, rule.aclId, rule.ruleId);
    return fail(conn, rc, tree);
  }
  if (is_duplicate(rule)) {
    rpcclt_openapiAclRuleDelete(client_handle, rule.aclId, rule.ruleId);
    return refuse_with_tree(
        conn, 3, "Failed to create the specified rule as it duplicates already existing one.", tree);
  }
  append_tree_uint(tree, "sequence_number", "sequence_number", rule.ruleId);
  return succeed(conn, tree, "Create successfully.");
}

int api_acl_create_mac_acl_match_rule(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return create_rule(client_handle, conn, mac_kind);
}

int api_acl_create_ip_acl_match_rule(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return create_rule(client_handle, conn, ip_kind);
}

int api_acl_create_ipv6_acl_match_rule(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return create_rule(client_handle, conn, ipv6_kind);
}
