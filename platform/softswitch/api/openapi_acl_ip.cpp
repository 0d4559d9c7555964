/* Matches of rules of IPv4 and IPv6 access control lists; the contracts are in platform/api/openapi_acl.h. */
#include "platform/api/openapi_acl.h"

#include "platform/softswitch/api/acl_rule_call.h"
#include "platform/softswitch/model/text.h"

#include <string.h>

using namespace softswitch;

/* --- Protocol ------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiAclRuleMatchProtocolAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t protocol) {
  return change_number(__func__, handle, {aclId, ruleId, protocol}, acl_part::protocol, &acl_rule::protocol,
                       protocol);
}

open_error_t rpcclt_openapiAclRuleMatchProtocolGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t *protocol) {
  return read_part(
      __func__, handle, {aclId, ruleId, protocol}, acl_part::protocol,
      [&](const acl_rule &rule) { return give(rule.protocol.value_or(OPEN_ACL_PROTOCOL_IP), protocol); });
}

/* --- Addresses ------------------------------------------------------------------------------------------ */

static open_error_t take_ipv4(const open_inet_addr_t &addr, const open_inet_addr_t &mask,
                              std::optional<acl_ipv4_match> *part) {
  if (addr.family != OPEN_AF_INET || mask.family != OPEN_AF_INET) return OPEN_E_PARAM;
  *part = {addr.addr.ipv4, mask.addr.ipv4};
  return OPEN_E_NONE;
}

static open_error_t give_ipv4(const std::optional<acl_ipv4_match> &part, open_inet_addr_t *addr,
                              open_inet_addr_t *mask) {
  if (!part) return OPEN_E_NOT_FOUND;
  *addr = inet_ipv4(part->address);
  *mask = inet_ipv4(part->mask);
  return OPEN_E_NONE;
}

static open_error_t take_ipv6(const open_inet_addr_t &prefix, uint32_t length,
                              std::optional<acl_ipv6_match> *part) {
  if (prefix.family != OPEN_AF_INET6) return OPEN_E_PARAM;
  *part = {inet_bytes(prefix), length};
  return OPEN_E_NONE;
}

static open_error_t give_ipv6(const std::optional<acl_ipv6_match> &part, open_inet_addr_t *prefix,
                              uint32_t *length) {
  if (!part) return OPEN_E_NOT_FOUND;
  memset(prefix, 0, sizeof *prefix);
  prefix->family = OPEN_AF_INET6;
  memcpy(prefix->addr.ipv6.addr8, part->prefix.data(), part->prefix.size());
  *length = part->length;
  return OPEN_E_NONE;
}

open_error_t rpcclt_openapiAclRuleMatchIpSrcMaskAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_inet_addr_t addr,
                                                    open_inet_addr_t mask) {
  return change_part(__func__, handle, {aclId, ruleId, address_in(addr), address_in(mask)},
                     acl_part::source_ipv4,
                     [&](acl_rule *rule) { return take_ipv4(addr, mask, &rule->source_ipv4); });
}

open_error_t rpcclt_openapiAclRuleMatchIpSrcMaskGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_inet_addr_t *addr,
                                                    open_inet_addr_t *mask) {
  return read_part(__func__, handle, {aclId, ruleId, address_out(addr), address_out(mask)},
                   acl_part::source_ipv4,
                   [&](const acl_rule &rule) { return give_ipv4(rule.source_ipv4, addr, mask); });
}

open_error_t rpcclt_openapiAclRuleMatchIpDstMaskAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_inet_addr_t addr,
                                                    open_inet_addr_t mask) {
  return change_part(__func__, handle, {aclId, ruleId, address_in(addr), address_in(mask)},
                     acl_part::destination_ipv4,
                     [&](acl_rule *rule) { return take_ipv4(addr, mask, &rule->destination_ipv4); });
}

open_error_t rpcclt_openapiAclRuleMatchIpDstMaskGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_inet_addr_t *addr,
                                                    open_inet_addr_t *mask) {
  return read_part(__func__, handle, {aclId, ruleId, address_out(addr), address_out(mask)},
                   acl_part::destination_ipv4,
                   [&](const acl_rule &rule) { return give_ipv4(rule.destination_ipv4, addr, mask); });
}

open_error_t rpcclt_openapiAclRuleMatchIpv6SrcPfxAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, open_inet_addr_t prefix,
                                                     uint32_t length) {
  return change_part(__func__, handle, {aclId, ruleId, address_in(prefix), length}, acl_part::source_ipv6,
                     [&](acl_rule *rule) { return take_ipv6(prefix, length, &rule->source_ipv6); });
}

open_error_t rpcclt_openapiAclRuleMatchIpv6SrcPfxGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, open_inet_addr_t *prefix,
                                                     uint32_t *length) {
  return read_part(__func__, handle, {aclId, ruleId, address_out(prefix), length}, acl_part::source_ipv6,
                   [&](const acl_rule &rule) { return give_ipv6(rule.source_ipv6, prefix, length); });
}

open_error_t rpcclt_openapiAclRuleMatchIpv6DstPfxAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, open_inet_addr_t prefix,
                                                     uint32_t length) {
  return change_part(__func__, handle, {aclId, ruleId, address_in(prefix), length},
                     acl_part::destination_ipv6,
                     [&](acl_rule *rule) { return take_ipv6(prefix, length, &rule->destination_ipv6); });
}

open_error_t rpcclt_openapiAclRuleMatchIpv6DstPfxGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, open_inet_addr_t *prefix,
                                                     uint32_t *length) {
  return read_part(__func__, handle, {aclId, ruleId, address_out(prefix), length}, acl_part::destination_ipv6,
                   [&](const acl_rule &rule) { return give_ipv6(rule.destination_ipv6, prefix, length); });
}

/* --- Ports ---------------------------------------------------------------------------------------------- */

static open_error_t take_port(uint32_t oper, uint32_t port, uint32_t port2,
                              std::optional<acl_port_match> *part) {
  *part = {oper, port, oper == OPEN_ACL_L4_PORT_RANGE ? port2 : 0};
  return OPEN_E_NONE;
}

static open_error_t give_port(const std::optional<acl_port_match> &part, uint32_t *oper, uint32_t *port,
                              uint32_t *port2) {
  if (!part) return OPEN_E_NOT_FOUND;
  *oper = part->oper;
  *port = part->port;
  *port2 = part->last;
  return OPEN_E_NONE;
}

open_error_t rpcclt_openapiAclRuleMatchL4SrcPortAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_ACL_L4_PORT_OPERATOR_t oper,
                                                    uint32_t port, uint32_t port2) {
  return change_part(__func__, handle, {aclId, ruleId, oper, port, port2}, acl_part::source_port,
                     [&](acl_rule *rule) { return take_port(oper, port, port2, &rule->source_port); });
}

open_error_t rpcclt_openapiAclRuleMatchL4SrcPortGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_ACL_L4_PORT_OPERATOR_t *oper,
                                                    uint32_t *port, uint32_t *port2) {
  return read_part(__func__, handle, {aclId, ruleId, oper, port, port2}, acl_part::source_port,
                   [&](const acl_rule &rule) { return give_port(rule.source_port, oper, port, port2); });
}

open_error_t rpcclt_openapiAclRuleMatchL4DstPortAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_ACL_L4_PORT_OPERATOR_t oper,
                                                    uint32_t port, uint32_t port2) {
  return change_part(__func__, handle, {aclId, ruleId, oper, port, port2}, acl_part::destination_port,
                     [&](acl_rule *rule) { return take_port(oper, port, port2, &rule->destination_port); });
}

open_error_t rpcclt_openapiAclRuleMatchL4DstPortGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_ACL_L4_PORT_OPERATOR_t *oper,
                                                    uint32_t *port, uint32_t *port2) {
  return read_part(__func__, handle, {aclId, ruleId, oper, port, port2}, acl_part::destination_port,
                   [&](const acl_rule &rule) { return give_port(rule.destination_port, oper, port, port2); });
}

/* --- The rest of the IP header -------------------------------------------------------------------------- */

open_error_t rpcclt_openapiAclRuleMatchDscpAdd(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                               uint32_t dscp) {
  return change_number(__func__, handle, {aclId, ruleId, dscp}, acl_part::dscp, &acl_rule::dscp, dscp);
}

open_error_t rpcclt_openapiAclRuleMatchDscpGet(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                               uint32_t *dscp) {
  return read_number(__func__, handle, {aclId, ruleId, dscp}, acl_part::dscp, &acl_rule::dscp, dscp);
}

open_error_t rpcclt_openapiAclRuleMatchPrecedenceAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, uint32_t precedence) {
  return change_number(__func__, handle, {aclId, ruleId, precedence}, acl_part::precedence,
                       &acl_rule::precedence, precedence);
}

open_error_t rpcclt_openapiAclRuleMatchPrecedenceGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, uint32_t *precedence) {
  return read_number(__func__, handle, {aclId, ruleId, precedence}, acl_part::precedence,
                     &acl_rule::precedence, precedence);
}

open_error_t rpcclt_openapiAclRuleMatchTosAdd(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                              open_buffdesc *tos, open_buffdesc *tosMask) {
  return change_part(__func__, handle, {aclId, ruleId, text_in(tos), text_in(tosMask)}, acl_part::tos,
                     [&](acl_rule *rule) {
                       acl_bits_match match;
                       bool read = hex_byte_read(text_of(*tos), &match.bits) &&
                                   hex_byte_read(text_of(*tosMask), &match.mask);
                       rule->tos = match;
                       return read ? OPEN_E_NONE : OPEN_E_PARAM;
                     });
}

open_error_t rpcclt_openapiAclRuleMatchTosGet(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                              open_buffdesc *tos, open_buffdesc *tosMask) {
  return read_part(__func__, handle, {aclId, ruleId, text_out(tos), text_out(tosMask)}, acl_part::tos,
                   [&](const acl_rule &rule) {
                     if (!rule.tos) return OPEN_E_NOT_FOUND;
                     open_error_t rc = fill_text(tos, hex_byte_text(rule.tos->bits));
                     return rc == OPEN_E_NONE ? fill_text(tosMask, hex_byte_text(rule.tos->mask)) : rc;
                   });
}

open_error_t rpcclt_openapiAclRuleMatchFragmentsAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_BOOL_t fragments) {
  return change_number(__func__, handle, {aclId, ruleId, fragments}, acl_part::fragments,
                       &acl_rule::fragments, fragments);
}

open_error_t rpcclt_openapiAclRuleMatchFragmentsGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_BOOL_t *fragments) {
  return read_number(__func__, handle, {aclId, ruleId, fragments}, acl_part::fragments, &acl_rule::fragments,
                     fragments);
}

open_error_t rpcclt_openapiAclRuleMatchRoutingAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_BOOL_t routing) {
  return change_number(__func__, handle, {aclId, ruleId, routing}, acl_part::routing, &acl_rule::routing,
                       routing);
}

open_error_t rpcclt_openapiAclRuleMatchRoutingGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_BOOL_t *routing) {
  return read_number(__func__, handle, {aclId, ruleId, routing}, acl_part::routing, &acl_rule::routing,
                     routing);
}

open_error_t rpcclt_openapiAclRuleMatchFlowLabelAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, uint32_t label) {
  return change_number(__func__, handle, {aclId, ruleId, label}, acl_part::flow_label, &acl_rule::flow_label,
                       label);
}

open_error_t rpcclt_openapiAclRuleMatchFlowLabelGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, uint32_t *label) {
  return read_number(__func__, handle, {aclId, ruleId, label}, acl_part::flow_label, &acl_rule::flow_label,
                     label);
}

/* --- IGMP, ICMP and TCP --------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiAclRuleMatchIgmpTypeAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t type) {
  return change_number(__func__, handle, {aclId, ruleId, type}, acl_part::igmp_type, &acl_rule::igmp_type,
                       type);
}

open_error_t rpcclt_openapiAclRuleMatchIgmpTypeGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t *type) {
  return read_number(__func__, handle, {aclId, ruleId, type}, acl_part::igmp_type, &acl_rule::igmp_type,
                     type);
}

open_error_t rpcclt_openapiAclRuleMatchIcmpTypeCodeAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                       uint32_t ruleId, OPEN_BOOL_t withCode, uint32_t type,
                                                       uint32_t code) {
  return change_part(__func__, handle, {aclId, ruleId, withCode, type, code}, acl_part::icmp_type,
                     [&](acl_rule *rule) {
                       rule->icmp_type = type;
                       rule->icmp_code.reset();
                       if (withCode == OPEN_TRUE) rule->icmp_code = code;
                       return withCode <= OPEN_TRUE ? OPEN_E_NONE : OPEN_E_PARAM;
                     });
}

open_error_t rpcclt_openapiAclRuleMatchIcmpTypeCodeGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                       uint32_t ruleId, OPEN_BOOL_t family, uint32_t *type,
                                                       uint32_t *code) {
  return read_part(__func__, handle, {aclId, ruleId, family, type, code}, acl_part::icmp_type,
                   [&](const acl_rule &rule) {
                     *code = rule.icmp_code.value_or(OPEN_ACL_ICMP_ANY_CODE);
                     return give(rule.icmp_type, type);
                   });
}

open_error_t rpcclt_openapiAclRuleMatchTcpFlagsAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t flags, uint32_t mask) {
  return change_part(__func__, handle, {aclId, ruleId, flags, mask}, acl_part::tcp_flags,
                     [&](acl_rule *rule) {
                       rule->tcp_flags = {flags, mask};
                       return OPEN_E_NONE;
                     });
}

open_error_t rpcclt_openapiAclRuleMatchTcpFlagsGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t *flags, uint32_t *mask) {
  return read_part(__func__, handle, {aclId, ruleId, flags, mask}, acl_part::tcp_flags,
                   [&](const acl_rule &rule) {
                     if (!rule.tcp_flags) return OPEN_E_NOT_FOUND;
                     *flags = rule.tcp_flags->bits;
                     *mask = rule.tcp_flags->mask;
                     return OPEN_E_NONE;
                   });
}

open_error_t rpcclt_openapiAclRuleMatchTcpEstablishedAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                         uint32_t ruleId, OPEN_BOOL_t established) {
  return change_number(__func__, handle, {aclId, ruleId, established}, acl_part::established,
                       &acl_rule::established, established);
}

open_error_t rpcclt_openapiAclRuleMatchTcpEstablishedGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                         uint32_t ruleId, OPEN_BOOL_t *established) {
  return read_number(__func__, handle, {aclId, ruleId, established}, acl_part::established,
                     &acl_rule::established, established);
}
