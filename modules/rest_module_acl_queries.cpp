/* Access control lists: what is configured. A rule is read attribute by attribute; what the platform does not
 * answer for is left out. */
#include "engine/rest_request.h"
#include "modules/rest_module_acl_lookup.h"
#include "modules/rest_module_acl_names.h"

#include <algorithm>
#include <stdio.h>
#include <string.h>

/* --- Bindings of a list --------------------------------------------------------------------------------- */

static void append_numbers(node_t *list, const char *tagname, const uint32_t *numbers, uint32_t count) {
  for (uint32_t i = 0; i < std::min<uint32_t>(count, OPEN_ACL_MAX_ASSIGNMENTS); i++) {
    char key[16];
    snprintf(key, sizeof key, "%u", i + 1);
    append_tree_int(list, key, tagname, static_cast<int>(numbers[i]));
  }
}

open_error_t append_acl_bounded_interfaces_vlans(openapiClientHandle_t *client_handle, uint32_t aclId,
                                                 OPEN_ACL_DIRECTION_t dir, node_t *data_ptr) {
  if (data_ptr == nullptr) return OPEN_E_PARAM;
  node_t *bound = append_branch(data_ptr, dir == OPEN_ACL_DIRECTION_IN ? "inbound" : "outbound");

  node_t *interfaces = append_branch(bound, "interfaces");
  OPEN_ACL_ASSIGNED_INTF_LIST_t intf_list = {};
  open_error_t rc = rpcclt_openapiAclAssignedIntfDirListGet(client_handle, aclId, dir, &intf_list);
  if (rc == OPEN_E_NONE) append_numbers(interfaces, "if", intf_list.intf, intf_list.count);

  node_t *vlans = append_branch(bound, "vlans");
  OPEN_ACL_ASSIGNED_VLAN_LIST_t vlan_list = {};
  rc = rpcclt_openapiAclAssignedVlanDirListGet(client_handle, aclId, dir, &vlan_list);
  if (rc == OPEN_E_NONE) append_numbers(vlans, "vlan", vlan_list.vlan, vlan_list.count);
  return rc;
}

/* Both directions. OPEN_E_PARAM is the one failure that counts. */
static open_error_t append_bindings(openapiClientHandle_t *client_handle, uint32_t aclId, node_t *tree) {
  for (OPEN_ACL_DIRECTION_t dir : {OPEN_ACL_DIRECTION_IN, OPEN_ACL_DIRECTION_OUT}) {
    if (append_acl_bounded_interfaces_vlans(client_handle, aclId, dir, tree) == OPEN_E_PARAM)
      return OPEN_E_PARAM;
  }
  return OPEN_E_NONE;
}

/* --- How many lists ------------------------------------------------------------------------------------- */

int api_acl_get_count(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t count = 0, max = 0;
  open_error_t rc = rpcclt_openapiAclCountGet(client_handle, &count);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiAclMaxCountGet(client_handle, &max);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  if (tree == nullptr) return fail(conn, OPEN_E_INTERNAL, tree);
  append_tree_uint(tree, "current_number", "current_number", count);
  append_tree_uint(tree, "max_number", "max_number", max);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- The lists of one type ------------------------------------------------------------------------------ */

static open_error_t append_list(openapiClientHandle_t *client_handle, uint32_t aclId, node_t *list) {
  acl_name name;
  uint32_t rules = 0;
  open_error_t rc = rpcclt_openapiAclNameGet(client_handle, aclId, &name.desc);
  if (rc != OPEN_E_NONE) return rc;
  append_tree_string(list, "name", "name", name.text);
  append_tree_uint(list, "id", "id", aclId);
  rc = rpcclt_openapiAclRuleCountGet(client_handle, aclId, &rules);
  if (rc != OPEN_E_NONE) return rc;
  append_tree_uint(list, "rules_number", "rules_number", rules);
  return append_bindings(client_handle, aclId, list);
}

/* All lists of a type from `aclId` on. */
static open_error_t append_lists(openapiClientHandle_t *client_handle, OPEN_ACL_TYPE_t type, uint32_t aclId,
                                 node_t *lists) {
  for (uint32_t position = 1; position <= MAX_LIST_ENTRIES; position++) {
    open_error_t rc = append_list(client_handle, aclId, append_entry(lists, position, "acl"));
    if (rc != OPEN_E_NONE) return rc;
    rc = rpcclt_openapiAclGetNext(client_handle, type, aclId, &aclId);
    if (rc == OPEN_E_FAIL) return OPEN_E_NONE; /* that was the last */
    if (rc != OPEN_E_NONE) return rc;
  }
  return OPEN_E_INTERNAL;
}

int api_acl_get_by_type(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uri_fields_t fields;
  OPEN_ACL_TYPE_t type = 0;
  uint32_t aclId = 0;
  if (scan_uri(conn->uri, "/acl/%s", fields) != 1) return fail(conn, OPEN_E_PARAM, nullptr);
  if (strchr(fields[0], '/') != nullptr) { /* no type, but a URI that nothing serves: /acl/if/7/extra */
    send_bad_request(conn, nullptr);
    return 0;
  }
  open_error_t rc = get_acl_type_eum_by_string(&type, fields[0]);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  if (tree == nullptr) return fail(conn, OPEN_E_INTERNAL, tree);
  node_t *lists = append_branch(tree, "acls");
  append_tree_string(lists, "acl_type", "acl_type", fields[0]);
  rc = rpcclt_openapiAclGetFirst(client_handle, type, &aclId);
  if (rc == OPEN_E_FAIL) return succeed(conn, tree, "No ACLs are configured.");
  if (rc == OPEN_E_NONE) rc = append_lists(client_handle, type, aclId, lists);
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Reading a rule ------------------------------------------------------------------------------------- */

typedef open_error_t (*rule_number_getter_t)(openapiClientHandle_t *client_handle, uint32_t aclId,
                                             uint32_t ruleId, uint32_t *number);

/* A rule on its way into the tree. */
struct rule_reading {
  openapiClientHandle_t *client_handle;
  uint32_t aclId;
  uint32_t ruleId;
  node_t *rule;      /* the rule's element */
  node_t *tcp_flags; /* the subtree "tcp_flags" of the latest rule that had one, or null */
};

/* These append one value when the platform has it. */
static open_error_t append_int(const rule_reading &at, const char *name, rule_number_getter_t get) {
  uint32_t number = 0;
  open_error_t rc = get(at.client_handle, at.aclId, at.ruleId, &number);
  if (rc == OPEN_E_NONE) append_tree_int(at.rule, name, name, static_cast<int>(number));
  return rc;
}

static open_error_t append_uint(const rule_reading &at, const char *name, rule_number_getter_t get) {
  uint32_t number = 0;
  open_error_t rc = get(at.client_handle, at.aclId, at.ruleId, &number);
  if (rc == OPEN_E_NONE) append_tree_uint(at.rule, name, name, number);
  return rc;
}

static open_error_t append_bool(const rule_reading &at, node_t *into, const char *name,
                                rule_number_getter_t get) {
  OPEN_BOOL_t value = OPEN_FALSE;
  open_error_t rc = get(at.client_handle, at.aclId, at.ruleId, &value);
  if (rc == OPEN_E_NONE && into != nullptr) append_tree_bool(into, name, name, value == OPEN_TRUE);
  return rc;
}

/* --- Attributes of all rules ---------------------------------------------------------------------------- */

static void append_time_range(const rule_reading &at) {
  platform_text_256 name;
  open_error_t rc = rpcclt_openapiAclRuleMatchTimeRangeGet(at.client_handle, at.aclId, at.ruleId, &name.desc);
  if (rc == OPEN_E_NONE) append_tree_string(at.rule, "time_range", "time_range", name.text);

  OPEN_ACL_RULE_STATUS_t status = OPEN_ACL_RULE_STATUS_NONE;
  char text[256];
  rc = rpcclt_openapiAclRuleMatchTimeRangeStatusGet(at.client_handle, at.aclId, at.ruleId, &status);
  if (rc == OPEN_E_NONE && get_acl_rule_time_range_status_string_by_eum(status, text) == OPEN_E_NONE)
    append_tree_string(at.rule, "rule_status", "rule_status", text);
}

open_error_t append_acl_rules_common_info(openapiClientHandle_t *client_handle, uint32_t aclId,
                                          uint32_t ruleId, node_t *rulSubN_ptr) {
  rule_reading at = {client_handle, aclId, ruleId, rulSubN_ptr, nullptr};
  append_bool(at, at.rule, "log", rpcclt_openapiAclRuleMatchLoggingGet);
  append_int(at, "assign_queue", rpcclt_openapiAclRuleMatchAssignQueueGet);
  append_int(at, "mirror_intf", rpcclt_openapiAclRuleMatchMirrorGet);
  append_int(at, "redirect_intf", rpcclt_openapiAclRuleMatchRedirectGet);
  append_time_range(at);

  uint32_t rate = 0, burst = 0;
  open_error_t rc = rpcclt_openapiAclRuleMatchRateLimitGet(client_handle, aclId, ruleId, &rate, &burst);
  if (rc != OPEN_E_NONE) return rc;
  append_tree_uint(at.rule, "rate_limit", "rate_limit", rate);
  append_tree_uint(at.rule, "burst_size", "burst_size", burst);
  return rc;
}

/* --- Rules of MAC lists --------------------------------------------------------------------------------- */

typedef open_error_t (*mac_getter_t)(openapiClientHandle_t *client_handle, uint32_t aclId, uint32_t ruleId,
                                     open_buffdesc *mac, open_buffdesc *mask);

static void append_mac(const rule_reading &at, const char *end, mac_getter_t get) {
  char mac[OPEN_ACL_MAC_SIZE + 1] = {}, mask[OPEN_ACL_MAC_SIZE + 1] = {};
  open_buffdesc mac_desc = {OPEN_ACL_MAC_SIZE, mac}, mask_desc = {OPEN_ACL_MAC_SIZE, mask};
  if (get(at.client_handle, at.aclId, at.ruleId, &mac_desc, &mask_desc) != OPEN_E_NONE) return;
  node_t *address = append_branch(at.rule, end);
  append_tree_string(address, "mac", "mac", mac);
  append_tree_string(address, "mask", "mask", mask);
}

static void append_mac_vlan(const rule_reading &at) {
  OPEN_ACL_VLAN_OPERATOR_t oper = OPEN_ACL_VLAN_EQUAL;
  uint32_t first = 0, last = 0;
  open_error_t rc =
      rpcclt_openapiAclRuleMatchMacVlanGet(at.client_handle, at.aclId, at.ruleId, &oper, &first, &last);
  if (rc != OPEN_E_NONE) return;
  char text[32];
  snprintf(text, sizeof text, oper == OPEN_ACL_VLAN_EQUAL ? "%d" : "%d..%d", static_cast<int>(first),
           static_cast<int>(last));
  append_tree_string(at.rule, "vlan", "vlan", text);
}

static open_error_t append_mac_fields(rule_reading *at, bool match_all) {
  if (!match_all) {
    append_mac(*at, "source", rpcclt_openapiAclRuleMatchMacSrcMacGet);
    append_mac(*at, "destination", rpcclt_openapiAclRuleMatchMacDstMacGet);
  }
  uint32_t ethertype = 0;
  if (rpcclt_openapiAclRuleMatchMacEtherTypeGet(at->client_handle, at->aclId, at->ruleId, &ethertype) ==
      OPEN_E_NONE) {
    char text[16];
    snprintf(text, sizeof text, "0x%04X", ethertype);
    append_tree_string(at->rule, "ethertype", "ethertype", text);
  }
  append_mac_vlan(*at);
  append_int(*at, "cos", rpcclt_openapiAclRuleMatchMacCosGet);
  return OPEN_E_NONE;
}

/* --- Rules of IP lists ---------------------------------------------------------------------------------- */

typedef open_error_t (*ip_mask_getter_t)(openapiClientHandle_t *client_handle, uint32_t aclId,
                                         uint32_t ruleId, open_inet_addr_t *addr, open_inet_addr_t *mask);
typedef open_error_t (*ipv6_prefix_getter_t)(openapiClientHandle_t *client_handle, uint32_t aclId,
                                             uint32_t ruleId, open_inet_addr_t *prefix, uint32_t *length);
typedef open_error_t (*port_getter_t)(openapiClientHandle_t *client_handle, uint32_t aclId, uint32_t ruleId,
                                      OPEN_ACL_L4_PORT_OPERATOR_t *oper, uint32_t *port, uint32_t *port2);

typedef void (*address_appender_t)(const rule_reading &at, bool is_source, node_t *end);

static void append_ip_mask(const rule_reading &at, bool is_source, node_t *end) {
  ip_mask_getter_t get =
      is_source ? rpcclt_openapiAclRuleMatchIpSrcMaskGet : rpcclt_openapiAclRuleMatchIpDstMaskGet;
  open_inet_addr_t addr = {}, mask = {};
  char addr_text[IP_TEXT_SIZE], mask_text[IP_TEXT_SIZE];
  if (get(at.client_handle, at.aclId, at.ruleId, &addr, &mask) != OPEN_E_NONE) return;
  if (convert_inet_addr_to_ip_string(at.client_handle, &addr, addr_text) != RC_TRUE) return;
  if (convert_inet_addr_to_ip_string(at.client_handle, &mask, mask_text) != RC_TRUE) return;
  append_tree_string(end, "ip", "ip", addr_text);
  append_tree_string(end, "mask", "mask", mask_text);
}

static void append_ipv6_prefix(const rule_reading &at, bool is_source, node_t *end) {
  ipv6_prefix_getter_t get =
      is_source ? rpcclt_openapiAclRuleMatchIpv6SrcPfxGet : rpcclt_openapiAclRuleMatchIpv6DstPfxGet;
  open_inet_addr_t prefix = {};
  uint32_t length = 0;
  char text[IP_TEXT_SIZE];
  if (get(at.client_handle, at.aclId, at.ruleId, &prefix, &length) != OPEN_E_NONE) return;
  if (convert_inet_addr_to_ip_string(at.client_handle, &prefix, text) != RC_TRUE) return;
  append_tree_string(end, "ipv6", "ipv6", text);
  append_tree_int(end, "prefix_length", "prefix_length", static_cast<int>(length));
}

static void append_l4_port(const rule_reading &at, port_getter_t get, node_t *end) {
  OPEN_ACL_L4_PORT_OPERATOR_t oper = OPEN_ACL_L4_PORT_EQUAL;
  uint32_t port = 0, port2 = 0;
  char text[256];
  if (get(at.client_handle, at.aclId, at.ruleId, &oper, &port, &port2) != OPEN_E_NONE) return;
  if (get_acl_rule_l4_port_string_by_oper_value(oper, port, port2, text) != OPEN_E_NONE) return;
  append_tree_string(end, "l4_port", "l4_port", text);
}

static open_error_t append_protocol(const rule_reading &at) {
  uint32_t protocol = 0;
  char text[256];
  open_error_t rc = rpcclt_openapiAclRuleMatchProtocolGet(at.client_handle, at.aclId, at.ruleId, &protocol);
  if (rc == OPEN_E_NONE) rc = get_acl_rule_protocol_string_by_value(protocol, text);
  if (rc == OPEN_E_NONE) append_tree_string(at.rule, "protocol", "protocol", text);
  return rc;
}

static void append_tos(const rule_reading &at) {
  platform_text_256 bits, mask;
  if (rpcclt_openapiAclRuleMatchTosGet(at.client_handle, at.aclId, at.ruleId, &bits.desc, &mask.desc) !=
      OPEN_E_NONE)
    return;
  char text[2 * platform_text_256::SIZE + 32];
  snprintf(text, sizeof text, "ToS Bits: %s, ToS Mask: %s", bits.text, mask.text);
  append_tree_string(at.rule, "tos", "tos", text);
}

static void append_icmp(const rule_reading &at) {
  uint32_t type = 0, code = 0;
  open_error_t rc = rpcclt_openapiAclRuleMatchIcmpTypeCodeGet(at.client_handle, at.aclId, at.ruleId,
                                                              OPEN_TRUE, &type, &code);
  if (rc != OPEN_E_NONE) return;
  append_tree_int(at.rule, "icmp_type", "icmp_type", static_cast<int>(type));
  append_tree_int(at.rule, "icmp_code", "icmp_code", static_cast<int>(code));
}

open_error_t append_acl_rule_tcp_flags_string_by_value(node_t *tcpSubN_ptr, uint32_t tcpFlag,
                                                       uint32_t tcpMask) {
  static const enum_text flags[] = {{0x01, "fin"}, {0x02, "syn"}, {0x04, "rst"},
                                    {0x08, "psh"}, {0x10, "ack"}, {0x20, "urg"}};
  if (tcpSubN_ptr == nullptr) return OPEN_E_PARAM;
  for (const enum_text &flag : flags) {
    uint32_t bit = static_cast<uint32_t>(flag.value);
    const char *word = (tcpFlag & bit) != 0 ? "set" : "clear";
    append_tree_string(tcpSubN_ptr, flag.text, flag.text, (tcpMask & bit) != 0 ? word : "ignore");
  }
  return OPEN_E_NONE;
}

static open_error_t append_tcp(rule_reading *at) {
  uint32_t flags = 0, mask = 0;
  open_error_t rc =
      rpcclt_openapiAclRuleMatchTcpFlagsGet(at->client_handle, at->aclId, at->ruleId, &flags, &mask);
  if (rc == OPEN_E_NONE) {
    at->tcp_flags = append_branch(at->rule, "tcp_flags");
    rc = append_acl_rule_tcp_flags_string_by_value(at->tcp_flags, flags, mask);
    if (rc != OPEN_E_NONE) return rc;
  }
  /* On purpose: it goes into the flags of this rule or else of the latest rule before that has some. */
  append_bool(*at, at->tcp_flags, "established", rpcclt_openapiAclRuleMatchTcpEstablishedGet);
  return OPEN_E_NONE;
}

/* Where matching packets come from and go to. A rule that matches all does not say. */
static open_error_t append_ends(const rule_reading &at, address_appender_t append_address) {
  open_error_t rc = append_protocol(at);
  if (rc != OPEN_E_NONE) return rc;
  node_t *source = append_branch(at.rule, "source");
  append_address(at, true, source);
  append_l4_port(at, rpcclt_openapiAclRuleMatchL4SrcPortGet, source);
  node_t *destination = append_branch(at.rule, "destination");
  append_address(at, false, destination);
  append_l4_port(at, rpcclt_openapiAclRuleMatchL4DstPortGet, destination);
  return OPEN_E_NONE;
}

static void append_service_class(const rule_reading &at) {
  append_int(at, "dscp", rpcclt_openapiAclRuleMatchDscpGet);
  append_int(at, "precedence", rpcclt_openapiAclRuleMatchPrecedenceGet);
  append_tos(at);
}

static open_error_t append_ip_fields(rule_reading *at, bool match_all) {
  open_error_t rc = match_all ? OPEN_E_NONE : append_ends(*at, append_ip_mask);
  if (rc != OPEN_E_NONE) return rc;
  append_service_class(*at);
  append_int(*at, "igmp_type", rpcclt_openapiAclRuleMatchIgmpTypeGet);
  append_icmp(*at);
  rc = append_tcp(at);
  append_bool(*at, at->rule, "fragments", rpcclt_openapiAclRuleMatchFragmentsGet);
  return rc;
}

static open_error_t append_ipv6_fields(rule_reading *at, bool match_all) {
  open_error_t rc = match_all ? OPEN_E_NONE : append_ends(*at, append_ipv6_prefix);
  if (rc != OPEN_E_NONE) return rc;
  append_service_class(*at);
  append_icmp(*at);
  rc = append_tcp(at);
  append_bool(*at, at->rule, "fragments", rpcclt_openapiAclRuleMatchFragmentsGet);
  append_bool(*at, at->rule, "routing", rpcclt_openapiAclRuleMatchRoutingGet);
  append_uint(*at, "flow_lable", rpcclt_openapiAclRuleMatchFlowLabelGet);
  return rc;
}

/* --- One list ------------------------------------------------------------------------------------------- */

typedef open_error_t (*fields_appender_t)(rule_reading *at, bool match_all);

static open_error_t append_rule(rule_reading *at, fields_appender_t append_fields) {
  OPEN_ACL_ACTION_t action = 0;
  OPEN_BOOL_t match_all = OPEN_FALSE;
  char text[256];
  append_tree_uint(at->rule, "sequence_number", "sequence_number", at->ruleId);
  open_error_t rc = rpcclt_openapiAclRuleActionGet(at->client_handle, at->aclId, at->ruleId, &action);
  if (rc == OPEN_E_NONE) rc = get_acl_rule_action_string_by_eum(action, text);
  if (rc != OPEN_E_NONE) return rc;
  append_tree_string(at->rule, "action", "action", text);
  rc = rpcclt_openapiAclRuleMatchEveryGet(at->client_handle, at->aclId, at->ruleId, &match_all);
  if (rc != OPEN_E_NONE) return rc;
  append_tree_bool(at->rule, "match_all", "match_all", match_all == OPEN_TRUE);
  rc = append_fields(at, match_all == OPEN_TRUE);
  if (rc != OPEN_E_NONE) return rc;
  append_acl_rules_common_info(at->client_handle, at->aclId, at->ruleId, at->rule);
  return OPEN_E_NONE;
}

/* All rules of a list from `ruleId` on. */
static open_error_t append_rules(openapiClientHandle_t *client_handle, uint32_t aclId, uint32_t ruleId,
                                 fields_appender_t append_fields, node_t *rules) {
  rule_reading at = {client_handle, aclId, ruleId, nullptr, nullptr};
  for (uint32_t position = 1; position <= MAX_LIST_ENTRIES; position++) {
    at.rule = append_entry(rules, position, "rule");
    open_error_t rc = append_rule(&at, append_fields);
    if (rc != OPEN_E_NONE) return rc;
    rc = rpcclt_openapiAclRuleGetNext(client_handle, aclId, at.ruleId, &at.ruleId);
    if (rc == OPEN_E_FAIL) return OPEN_E_NONE; /* that was the last */
    if (rc != OPEN_E_NONE) return rc;
  }
  return OPEN_E_INTERNAL;
}

static int get_by_name(openapiClientHandle_t *client_handle, mg_connection *conn, OPEN_ACL_TYPE_t type,
                       fields_appender_t append_fields) {
  uri_fields_t fields;
  OPEN_ACL_TYPE_t type_in_uri = 0;
  acl_name name;
  uint32_t aclId = 0, count = 0, ruleId = 0;
  open_error_t rc = take_uri_acl(conn, "/acl/%[^/]/name/%s", fields, &type_in_uri, &name);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  if (tree == nullptr) return fail(conn, OPEN_E_INTERNAL, tree);
  append_tree_string(tree, "acl_name", "acl_name", name.text);
  if (!acl_or_reply(client_handle, conn, type, &name, tree, &aclId)) return 0;
  append_tree_uint(tree, "acl_id", "acl_id", aclId);
  rc = append_bindings(client_handle, aclId, tree);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiAclRuleCountGet(client_handle, aclId, &count);
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  append_tree_uint(tree, "rules_number", "rules_number", count);
  node_t *rules = append_branch(tree, "rules");

  rc = rpcclt_openapiAclRuleGetFirst(client_handle, aclId, &ruleId);
  if (ruleId == 0) return succeed(conn, tree, "No rules have been configured for this ACL.");
  if (rc == OPEN_E_NONE) rc = append_rules(client_handle, aclId, ruleId, append_fields, rules);
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

int api_acl_get_mac_acl_by_name(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return get_by_name(client_handle, conn, OPEN_ACL_TYPE_MAC, append_mac_fields);
}

int api_acl_get_ip_acl_by_name(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return get_by_name(client_handle, conn, OPEN_ACL_TYPE_IP, append_ip_fields);
}

int api_acl_get_ipv6_acl_by_name(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return get_by_name(client_handle, conn, OPEN_ACL_TYPE_IPV6, append_ipv6_fields);
}

/* --- The lists on one interface or VLAN ----------------------------------------------------------------- */

typedef open_error_t (*dir_list_getter_t)(openapiClientHandle_t *client_handle, uint32_t number,
                                          OPEN_ACL_DIRECTION_t direction, OPEN_ACL_INTF_DIR_LIST_t *list);

static open_error_t append_bound_list(openapiClientHandle_t *client_handle,
                                      const OPEN_ACL_DIR_LIST_ENTRY_t &bound, node_t *list) {
  char type[256];
  acl_name name;
  open_error_t rc = get_acl_type_string_by_eum(bound.aclType, type);
  if (rc != OPEN_E_NONE) return rc;
  append_tree_string(list, "type", "type", type);
  if (rpcclt_openapiAclNameGet(client_handle, bound.aclId, &name.desc) == OPEN_E_NONE)
    append_tree_string(list, "name", "name", name.text);
  append_tree_uint(list, "id", "id", bound.aclId);
  append_tree_uint(list, "sequence_number", "sequence_number", bound.seqNum);
  return OPEN_E_NONE;
}

static int get_bound_lists(openapiClientHandle_t *client_handle, mg_connection *conn, const char *pattern,
                           dir_list_getter_t get) {
  uint32_t number = 0;
  request_variable word;
  OPEN_ACL_DIRECTION_t direction = 0;
  OPEN_ACL_INTF_DIR_LIST_t list = {};
  if (!uri_numbers(conn, pattern, {&number})) return fail(conn, OPEN_E_PARAM, nullptr);
  if (!variable_or_reply(conn, "direction", &word)) return 0;
  open_error_t rc = get_acl_direction_eum_by_string(&direction, word.text);
  if (rc == OPEN_E_NONE) rc = get(client_handle, number, direction, &list);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  if (tree == nullptr) return fail(conn, OPEN_E_INTERNAL, tree);
  if (list.count == 0) return succeed(conn, tree, "No ACLs are configured.");
  node_t *lists = append_branch(tree, "acls");
  for (uint32_t i = 0; i < std::min<uint32_t>(list.count, OPEN_ACL_MAX_BINDINGS); i++) {
    rc = append_bound_list(client_handle, list.listEntry[i], append_entry(lists, i + 1, "acl"));
    if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  }
  return succeed(conn, tree, "Get data successfully.");
}

int api_acl_get_specified_interface(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return get_bound_lists(client_handle, conn, "/acl/if/%[0-9]", rpcclt_openapiAclIntfDirListGet);
}

int api_acl_get_specified_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return get_bound_lists(client_handle, conn, "/acl/vlan/%[0-9]", rpcclt_openapiAclVlanDirListGet);
}
