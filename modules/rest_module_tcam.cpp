/* TCAM policies. The module keeps no state: the platform stores the policies and hands out their ids. */
#include "modules/rest_module_tcam.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"

#include <algorithm>
#include <limits>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* The version of the interface that policies are made with, and the length of its header. */
enum { TCAM_VERSION_MAJOR = 0, TCAM_VERSION_MINOR = 1, TCAM_HEADER_LENGTH = 12 };

/* --- Words ---------------------------------------------------------------------------------------------- */

static const enum_text policy_type_names[] = {
    {OPEN_TCAM_POLICY_OPENFLOW, "OpenFlow policy"},
    {OPEN_TCAM_POLICY_GEN, "Gen (IPv6) policy"},
    {OPEN_TCAM_POLICY_EGRESS, "Egress policy"},
    {OPEN_TCAM_POLICY_END, "End value"},
};

int get_tcam_policy_type_string_by_eum(OPEN_TCAM_POLICY_TYPE_t type, char *out_typeStr) {
  const char *name = find_text_by_enum(policy_type_names, static_cast<int32_t>(type));
  if (name == nullptr || out_typeStr == nullptr) return 1;
  strcpy(out_typeStr, name);
  return 0;
}

int get_if_tcam_action_type_contain_specified_action(uint32_t actionType, uint32_t action) {
  if (action == 0) return actionType == 0 ? 0 : 1;
  return (actionType & action) == action ? 0 : 1;
}

/* --- Deleting policies ---------------------------------------------------------------------------------- */

int api_tcam_delete_policy_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t policyId = 0;
  if (!uri_numbers_or_reply(conn, "/tcam/policy/%[0-9]", {&policyId})) return 0;
  uint32_t id = policyId; /* the platform's to write to; likewise below */
  open_error_t rc = rpcclt_openapiTcamPolicyDestroy(client_handle, &id);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete the policy ID %d successfully.", policyId);
}

int api_tcam_delete_policy_all(openapiClientHandle_t *client_handle, mg_connection *conn) {
  open_error_t rc = rpcclt_openapiTcamPolicyDeleteAll(client_handle);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete all the policies created by TCAM API successfully.");
}

/* --- Policies on ports ---------------------------------------------------------------------------------- */

typedef open_error_t (*policy_port_setter_t)(openapiClientHandle_t *client_handle, uint32_t *policyId,
                                             uint32_t ifNum);

/* Applies a policy to the port in the URI, or takes it off. False when the request is answered. */
static bool change_port_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn,
                                 policy_port_setter_t change, uint32_t *policyId, uint32_t *port) {
  if (!uri_numbers_or_reply(conn, "/tcam/policy/%[0-9]/port/%[0-9]", {policyId, port})) return false;
  if (*port == 0) {
    refuse(conn, 1, "The port number is invalid.");
    return false;
  }
  uint32_t id = *policyId;
  open_error_t rc = change(client_handle, &id, *port);
  if (rc != OPEN_E_NONE) fail(conn, rc, nullptr);
  return rc == OPEN_E_NONE;
}

int api_tcam_delete_policy_specified_id_from_port(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t policyId = 0, port = 0;
  if (!change_port_or_reply(client_handle, conn, rpcclt_openapiTcamPolicyIntfRem, &policyId, &port)) return 0;
  return succeed(conn, nullptr, "Delete the policy %d from port %d successfully.", policyId, port);
}

int api_tcam_create_policy_specified_id_to_port(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t policyId = 0, port = 0;
  if (!change_port_or_reply(client_handle, conn, rpcclt_openapiTcamPolicyIntfAdd, &policyId, &port)) return 0;
  return succeed(conn, nullptr, "Configure the policy %d to port %d successfully.", policyId, port);
}

/* --- The module ----------------------------------------------------------------------------------------- */

int api_tcam_get_info(openapiClientHandle_t *, mg_connection *conn) {
  node_t *tree = new_tree();
  append_tree_string(append_branch(tree, "infomation"), "tcam_api_version", "tcam_api_version", "0.1");
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Use of the TCAM ------------------------------------------------------------------------------------ */

/* Of the buffer for the names of group types. */
enum { TYPE_NAME_SIZE = 256 };

struct named_number {
  const char *name;
  uint32_t number;
};

static void append_numbers(node_t *list, std::initializer_list<named_number> numbers) {
  for (const named_number &row : numbers) append_tree_uint(list, row.name, row.name, row.number);
}

static void append_group(openapiClientHandle_t *client_handle, const open_zylUsmdbTcamGroup_t &group,
                         const heap_array<char> &type, node_t *into) {
  append_tree_string(into, "is_used", "is_used", group.inUse == 1 ? "Yes" : "No");
  if (group.inUse != 1) return;
  open_buffdesc name = {TYPE_NAME_SIZE, type.get()};
  if (rpcclt_openapiTcamHapiBroadPolicyTypeNameGetZYL(client_handle, group.typeId, &name) != OPEN_E_NONE)
    memset(type.get(), 0, TYPE_NAME_SIZE);
  append_tree_uint(into, "gid", "gid", group.gid);
  append_tree_string(into, "type", "type", type.get());
  append_numbers(into, {{"width", group.width},
                        {"depth", group.depth},
                        {"count", group.count},
                        {"free", group.free},
                        {"total", group.total}});
}

/* The slices of a stage: their numbers in use, free and in all, of 256 entries and of 512. */
struct slice_counts {
  uint32_t count256, free256, total256;
  uint32_t count512, free512, total512;
};

static open_error_t read_slices(openapiClientHandle_t *client_handle, uint32_t stage, slice_counts *slices) {
  if (stage == OPEN_TCAM_STAGE_EGRESS)
    return rpcclt_openapiTcamGroupStatsEgressSlicesCountGetZYL(client_handle, &slices->count256,
                                                               &slices->free256, &slices->total256);
  return rpcclt_openapiTcamGroupStatsIngressSlicesCountGetZYL(
      client_handle, &slices->count256, &slices->free256, &slices->total256, &slices->count512,
      &slices->free512, &slices->total512);
}

static void append_slices(const slice_counts &slices, uint32_t stage, node_t *into) {
  append_numbers(append_branch(into, "slice_256"),
                 {{"count", slices.count256}, {"free", slices.free256}, {"total", slices.total256}});
  if (stage == OPEN_TCAM_STAGE_EGRESS) return; /* has no others */
  append_numbers(append_branch(into, "slice_512"),
                 {{"count", slices.count512}, {"free", slices.free512}, {"total", slices.total512}});
}

static open_error_t append_stage(openapiClientHandle_t *client_handle, uint32_t stage, node_t *into) {
  /* One byte more than the platform may fill, so that its text always ends. */
  heap_array<char> type(static_cast<char *>(calloc(TYPE_NAME_SIZE + 1, 1)));
  if (!type) return OPEN_E_INTERNAL;
  open_zylUsmdbTcamGroupsStats_t stats = {};
  uint32_t groups = 0, count = 0, free_entries = 0, total = 0;
  slice_counts slices = {};
  open_error_t rc = rpcclt_openapiTcamGroupStatsGetZYL(client_handle, stage, &stats, &groups, &count,
                                                       &free_entries, &total);
  if (rc == OPEN_E_NONE) rc = read_slices(client_handle, stage, &slices);
  if (rc != OPEN_E_NONE) return rc;

  node_t *list = append_branch(into, "groups");
  for (uint32_t i = 0; i < std::min<uint32_t>(groups, OPEN_TCAM_GROUPS_MAX); i++)
    append_group(client_handle, stats.group[i], type, append_entry(list, i + 1, "group"));
  append_numbers(append_branch(into, "entry_stats"),
                 {{"count", count}, {"free", free_entries}, {"total", total}});
  append_slices(slices, stage, append_branch(into, "slice_stats"));
  return OPEN_E_NONE;
}

int api_tcam_get_group_stats(openapiClientHandle_t *client_handle, mg_connection *conn) {
  node_t *tree = new_tree();
  node_t *stats = append_branch(tree, "group_stats");
  open_error_t rc =
      append_stage(client_handle, OPEN_TCAM_STAGE_INGRESS, append_branch(stats, "stage_ingress"));
  if (rc == OPEN_E_NONE)
    rc = append_stage(client_handle, OPEN_TCAM_STAGE_EGRESS, append_branch(stats, "stage_egress"));
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Reading policies ----------------------------------------------------------------------------------- */

int api_tcam_get_policy_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  open_tcamApiPolicy_t policy = {};
  uint32_t policyId = 0, nextId = 0;
  node_t *tree = new_tree();
  node_t *policies = append_branch(tree, "policies");
  open_error_t rc = rpcclt_openapiTcamPolicyGetFirst(client_handle, &policy, &policyId);
  /* Only the end of the walk ends it. */
  for (uint32_t position = 1; rc != OPEN_E_FAIL; position++) {
    if (position > MAX_LIST_ENTRIES) return fail(conn, OPEN_E_INTERNAL, tree);
    append_tree_int(append_entry(policies, position, "policy"), "policy_id", "policy_id",
                    static_cast<int>(policyId));
    rc = rpcclt_openapiTcamPolicyGetNext(client_handle, &policyId, &policy, &nextId);
    policyId = nextId;
  }
  return succeed(conn, tree, "Get data successfully.");
}

static void append_mac(node_t *into, const char *name, const uint8_t mac[6]) {
  char text[18];
  convert_uchar_ary_to_mac_string(mac, text, 1, 1);
  append_tree_string(into, name, name, text);
}

static void append_ip(node_t *into, const char *name, uint32_t address) {
  char text[IP_TEXT_SIZE] = "";
  convert_ipv4_with_uint32_to_ip_string(address, text);
  append_tree_string(into, name, name, text);
}

static void append_ipv6(node_t *into, const char *name, const open_in6_addr_t &address) {
  char text[IP_TEXT_SIZE] = "";
  convert_ipv6_with_in6_addr_to_ip_string(&address, text);
  append_tree_string(into, name, name, text);
}

static void append_hexadecimal(node_t *into, const char *name, uint32_t number) {
  char text[16];
  snprintf(text, sizeof text, "0x%x", number);
  append_tree_string(into, name, name, text);
}

static void append_header(const open_tcamPolicyHeader_t &header, node_t *into) {
  char version[32];
  snprintf(version, sizeof version, "%d.%d", static_cast<int>(header.versionInfo.versionMajor),
           static_cast<int>(header.versionInfo.versionMinor));
  append_tree_string(into, "version", "version", version);
  append_tree_uint(into, "header_length", "header_length", header.headerLen);
}

static void append_classifiers(const open_tcamApiPolicy_t &policy, node_t *into) {
  append_mac(into, "dst_mac", policy.matchDstMac);
  append_ip(into, "dst_ip", policy.matchDstIp);
  append_ip(into, "dst_ip_mask", policy.matchDstIpMask);
  append_ipv6(into, "dst_ipv6", policy.matchDstIpv6Addr);
  append_ipv6(into, "dst_ipv6_mask", policy.matchDstIpv6Mask);
  append_numbers(into, {{"dst_port_icmp_code", policy.matchDstPortIcmpCode},
                        {"dst_port_icmp_code_mask", policy.matchDstPortIcmpCodeMask}});
  append_mac(into, "src_mac", policy.matchSrcMac);
  append_ip(into, "src_ip", policy.matchSrcIp);
  append_ip(into, "src_ip_mask", policy.matchSrcIpMask);
  append_ipv6(into, "src_ipv6", policy.matchSrcIpv6Addr);
  append_ipv6(into, "src_ipv6_mask", policy.matchSrcIpv6Mask);
  append_numbers(into, {{"src_port_icmp_code", policy.matchSrcPortIcmpType},
                        {"src_port_icmp_code_mask", policy.matchSrcPortIcmpTypeMask},
                        {"ip_dscp", policy.matchIpDscp},
                        {"ip_dscp_mask", policy.matchIpDscpMask},
                        {"ip_protocol", policy.matchIpProto},
                        {"ip_protocol_mask", policy.matchIpProtoMask},
                        {"vlan_id", policy.matchVlanVal},
                        {"vlan_priority", policy.matchVlanPrio}});
  append_hexadecimal(into, "ether_type", policy.matchEthType);
}

static void append_actions(uint32_t actions, node_t *into) {
  static const struct {
    uint32_t action;
    const char *key, *tagname;
  } rows[] = {
      {OPEN_TCAM_ACTION_DROP, "drop", "drop"},
      {OPEN_TCAM_ACTION_REDIRECT, "redirect_another_port", "redirect_another_port"},
      {OPEN_TCAM_ACTION_OUTERVLAN, "rewrite_outer_vlan", "rewrite_outer_vlan"},
      {OPEN_TCAM_ACTION_SRCMAC_NEW, "rewrite_src_mac", "rewrite_src_mac"},
      {OPEN_TCAM_ACTION_DSTMAC_NEW, "rewrite_dst_mac", "rewrite_dst_mac"},
      {OPEN_TCAM_ACTION_USERPRIO, "rewrite_priority", "rewrite_priority"},
      {OPEN_TCAM_ACTION_OUTERTPID, "rewrite_outer_TPID.", "rewrite_outer_TPID"}, /* on purpose */
      {OPEN_TCAM_ACTION_REDIRECT_TO_CPU, "redirect_cpu", "redirect_cpu"},
  };
  for (const auto &row : rows) {
    bool wanted = get_if_tcam_action_type_contain_specified_action(actions, row.action) == 0;
    append_tree_string(into, row.key, row.tagname, wanted ? "Yes" : "No");
  }
}

static void append_action_values(const OPEN_TCAM_ACTION_t &values, node_t *into) {
  append_tree_uint(into, "dscp", "dscp", values.dscp);
  append_hexadecimal(into, "ether_type", values.etherType);
  append_tree_uint(into, "redirect_if_num", "redirect_if_num", values.ifNum);
  append_mac(into, "src_mac", values.srcMac);
  append_mac(into, "dst_mac", values.dstMac);
  append_tree_uint(into, "vlan_id", "vlan_id", values.vlanVal);
  append_tree_uint(into, "vlan_priority", "vlan_priority", values.vlanPrio);
}

int api_tcam_get_policy_specified_id(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t policyId = 0;
  open_tcamApiPolicy_t policy = {};
  char type[256], rule_num[16];
  if (!uri_numbers_or_reply(conn, "/tcam/policy/%[0-9]", {&policyId})) return 0;
  uint32_t id = policyId;
  open_error_t rc = rpcclt_openapiTcamPolicyGet(client_handle, &id, &policy);
  if (rc == OPEN_E_NONE && get_tcam_policy_type_string_by_eum(policy.policyType, type) != 0)
    rc = OPEN_E_INTERNAL;
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *branch = append_branch(tree, "policy");
  append_tree_int(branch, "policy_id", "policy_id", static_cast<int>(policyId));
  append_tree_uint(branch, "policy_priority", "policy_priority", policy.policyPrio);
  append_tree_string(branch, "policy_type", "policy_type", type);
  snprintf(rule_num, sizeof rule_num, "%ld", static_cast<long>(policy.ruleNum));
  append_tree_string(branch, "rule_num", "rule_num", rule_num);
  append_tree_uint(branch, "rule_priority", "rule_priority", policy.rulePrio);
  append_header(policy.policyHeader, append_branch(branch, "policy_header"));
  append_classifiers(policy, append_branch(branch, "classifiers"));
  append_actions(policy.actionType, append_branch(branch, "action_type"));
  append_action_values(policy.actionVal, append_branch(branch, "action_value"));
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Making a policy ------------------------------------------------------------------------------------ */

/* Puts the text of a variable into the policy. False when the text is no good. */
typedef bool (*policy_setter_t)(openapiClientHandle_t *client_handle, const char *text,
                                open_tcamApiPolicy_t *policy);

static bool set_policy_prio(openapiClientHandle_t *, const char *text, open_tcamApiPolicy_t *policy) {
  policy->policyPrio = static_cast<uint32_t>(text_to_int(text));
  return true;
}

static bool set_policy_type(openapiClientHandle_t *, const char *text, open_tcamApiPolicy_t *policy) {
  policy->policyType = static_cast<uint32_t>(text_to_int(text));
  return true;
}

/* A number for a field that is narrower than an int. What does not fit is the field's largest, which the
 * platform refuses, and never another number. */
template <typename Field> static Field fit_number(const char *text) {
  int32_t number = text_to_int(text);
  constexpr Field largest = std::numeric_limits<Field>::max();
  return number < 0 || number > largest ? largest : static_cast<Field>(number);
}

static bool set_vlan(openapiClientHandle_t *, const char *text, open_tcamApiPolicy_t *policy) {
  policy->matchVlanVal = fit_number<uint16_t>(text);
  return true;
}

static bool set_vlan_prio(openapiClientHandle_t *, const char *text, open_tcamApiPolicy_t *policy) {
  policy->matchVlanPrio = fit_number<uint8_t>(text);
  return true;
}

static bool take_mac(const char *text, uint8_t mac[6]) {
  return convert_mac_string_to_uchar_ary(text, mac, 6) == RC_TRUE;
}

/* Any address that converts will do: of an IPv6 address, on purpose, the word is taken where IPv4 has its. */
static bool take_ip(openapiClientHandle_t *client_handle, const char *text, uint32_t *address) {
  open_inet_addr_t parsed = {};
  if (convert_ip_string_to_inet_addr(client_handle, text, &parsed) != RC_TRUE) return false;
  *address = parsed.addr.ipv4;
  return parsed.family == OPEN_AF_INET;
}

static bool set_dst_mac(openapiClientHandle_t *, const char *text, open_tcamApiPolicy_t *policy) {
  return take_mac(text, policy->matchDstMac);
}

static bool set_src_mac(openapiClientHandle_t *, const char *text, open_tcamApiPolicy_t *policy) {
  return take_mac(text, policy->matchSrcMac);
}

static bool set_dst_ip(openapiClientHandle_t *client_handle, const char *text, open_tcamApiPolicy_t *policy) {
  return take_ip(client_handle, text, &policy->matchDstIp);
}

static bool set_dst_ip_mask(openapiClientHandle_t *client_handle, const char *text,
                            open_tcamApiPolicy_t *policy) {
  return take_ip(client_handle, text, &policy->matchDstIpMask);
}

static bool set_src_ip(openapiClientHandle_t *client_handle, const char *text, open_tcamApiPolicy_t *policy) {
  return take_ip(client_handle, text, &policy->matchSrcIp);
}

static bool set_src_ip_mask(openapiClientHandle_t *client_handle, const char *text,
                            open_tcamApiPolicy_t *policy) {
  return take_ip(client_handle, text, &policy->matchSrcIpMask);
}

static bool set_drop(openapiClientHandle_t *, const char *text, open_tcamApiPolicy_t *policy) {
  policy->actionType |= OPEN_TCAM_ACTION_DROP;
  return text_to_int(text) == 1;
}

static bool set_new_vlan_prio(openapiClientHandle_t *, const char *text, open_tcamApiPolicy_t *policy) {
  policy->actionType |= OPEN_TCAM_ACTION_USERPRIO;
  policy->actionVal.vlanPrio = fit_number<uint8_t>(text);
  return text[0] != '\0';
}

static bool set_new_dst_mac(openapiClientHandle_t *, const char *text, open_tcamApiPolicy_t *policy) {
  policy->actionType |= OPEN_TCAM_ACTION_DSTMAC_NEW;
  return take_mac(text, policy->actionVal.dstMac);
}

static bool set_new_src_mac(openapiClientHandle_t *, const char *text, open_tcamApiPolicy_t *policy) {
  policy->actionType |= OPEN_TCAM_ACTION_SRCMAC_NEW;
  return take_mac(text, policy->actionVal.srcMac);
}

static bool set_redirect_port(openapiClientHandle_t *, const char *text, open_tcamApiPolicy_t *policy) {
  policy->actionType |= OPEN_TCAM_ACTION_REDIRECT;
  policy->actionVal.ifNum = static_cast<uint32_t>(text_to_int(text));
  return text[0] != '\0';
}

static bool set_cpu_rule(openapiClientHandle_t *, const char *text, open_tcamApiPolicy_t *policy) {
  policy->actionType |= OPEN_TCAM_ACTION_REDIRECT_TO_CPU;
  policy->ruleNum = static_cast<uint32_t>(text_to_int(text));
  return text[0] != '\0';
}

struct policy_variable {
  const char *name;
  policy_setter_t set;
  uint16_t failure; /* result code when the value is refused; 0 where none is */
};

/* In the order in which they are read. */
static const policy_variable policy_variables[] = {
    {"policyPrio", set_policy_prio, 0},
    {"policyType", set_policy_type, 0},
    {"matchVlanId", set_vlan, 0},
    {"matchVlanPrio", set_vlan_prio, 0},
    {"matchDstMac", set_dst_mac, 1},
    {"matchSrcMac", set_src_mac, 2},
    {"matchDstIp", set_dst_ip, 3},
    {"matchDstIpMask", set_dst_ip_mask, 4},
    {"matchSrcIp", set_src_ip, 5},
    {"matchSrcIpMask", set_src_ip_mask, 6},
    {"actionDrop", set_drop, 7},
    {"actionNewVlanPrio", set_new_vlan_prio, 8},
    {"actionNewDstMac", set_new_dst_mac, 9},
    {"actionNewSrcMac", set_new_src_mac, 10},
    {"actionRedirPort", set_redirect_port, 11},
    {"actionSendToCpuRule", set_cpu_rule, 12},
};

int api_tcam_create_new_policy(openapiClientHandle_t *client_handle, mg_connection *conn) {
  open_tcamApiPolicy_t policy = {};
  uint32_t policyId = 0;
  policy.policyHeader = {{TCAM_VERSION_MAJOR, TCAM_VERSION_MINOR}, TCAM_HEADER_LENGTH};
  for (const policy_variable &row : policy_variables) {
    request_variable value = read_variable(conn, row.name);
    if (value.length == -1) continue; /* not there; empty is there */
    if (!row.set(client_handle, value.text, &policy))
      return refuse(conn, row.failure, "The value of parameter %s is invalid.", row.name);
  }
  open_error_t rc = rpcclt_openapiTcamPolicyCreate(client_handle, policy, &policyId);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Create a new policy successfully (Policy ID is %d).", policyId);
}

/* --- Routes --------------------------------------------------------------------------------------------- */

/* A URI that stops inside a pattern's text matches it: GET /tcam/g is the group statistics. */
static const rest_route routes[] = {
    {REQUEST_METHOD_DELETE, "/tcam/policy/%[0-9]%s", 1, nullptr, api_tcam_delete_policy_specified_id},
    {REQUEST_METHOD_DELETE, "/tcam/policy%s", ROUTE_INSIDE, nullptr, api_tcam_delete_policy_all},
    {REQUEST_METHOD_DELETE, "/tcam/policy/%[0-9]/port/%[0-9]%s", 2, nullptr,
     api_tcam_delete_policy_specified_id_from_port},
    {REQUEST_METHOD_GET, "/tcam%s", ROUTE_INSIDE, nullptr, api_tcam_get_info},
    {REQUEST_METHOD_GET, "/tcam/groupStats%s", ROUTE_INSIDE, nullptr, api_tcam_get_group_stats},
    {REQUEST_METHOD_GET, "/tcam/policy%s", ROUTE_INSIDE, nullptr, api_tcam_get_policy_list},
    {REQUEST_METHOD_GET, "/tcam/policy/%[0-9]%s", 1, nullptr, api_tcam_get_policy_specified_id},
    {REQUEST_METHOD_POST, "/tcam/policy%s", ROUTE_INSIDE, nullptr, api_tcam_create_new_policy},
    {REQUEST_METHOD_POST, "/tcam/policy/%[0-9]/port/%[0-9]%s", 2, nullptr,
     api_tcam_create_policy_specified_id_to_port},
};

int tcam_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> tcam_api_routes(void) {
  return routes;
}
