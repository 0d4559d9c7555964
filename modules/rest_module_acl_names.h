/* The words that the API of access control lists has for the platform's values, in both directions, and how
 * its composed values (ports, TCP flags) are read.
 *
 * All return OPEN_E_NONE, or OPEN_E_PARAM for a null argument or an unknown value or word; outputs are then
 * untouched unless it is said otherwise. Texts go into buffers of 256 bytes. */
#ifndef KESTREL_MODULES_REST_MODULE_ACL_NAMES_H
#define KESTREL_MODULES_REST_MODULE_ACL_NAMES_H

#include "platform/api/openapi_acl.h"

/* --- Words to values ------------------------------------------------------------------------------------ */

/* "ip", "mac", "ipv6". */
open_error_t get_acl_type_eum_by_string(OPEN_ACL_TYPE_t *type, const char *in_typeStr);
/* "in", "out". */
open_error_t get_acl_direction_eum_by_string(OPEN_ACL_DIRECTION_t *dir, const char *in_dirStr);
/* "permit", "deny". */
open_error_t get_acl_rule_action_eum_by_string(OPEN_ACL_ACTION_t *action, const char *in_actionStr);
/* The keyword of a protocol; those of IPv4 and IPv6 differ. */
open_error_t get_acl_rule_protocol_value_by_string(bool ipv4, uint32_t *protocol, const char *in_typeStr);
open_error_t get_acl_rule_ethertype_by_string(uint32_t *ethertype, const char *in_typeStr);
/* The type and code of an ICMP message. *icmpCodeValSpecified says whether the message has a code of its own;
 * when not, the code is untouched. It is true after an unknown message. */
open_error_t get_acl_icmpv4_type_and_code_from_icmp_msg(const char *icmpMsgString, uint32_t *icmpTypeVal,
                                                        uint32_t *icmpCodeVal, bool *icmpCodeValSpecified);
open_error_t get_acl_icmpv6_type_and_code_from_icmp_msg(const char *icmpMsgString, uint32_t *icmpTypeVal,
                                                        uint32_t *icmpCodeVal, bool *icmpCodeValSpecified);
/* "0", "1", and other decimal forms of these two. */
open_error_t get_acl_tcp_flags_by_string(const char *in_setStr, uint8_t *tcpFlagVal);

/* A port or ports: "eq:80", "gt:1023", "lt:1024", "neq:22", "range:1000:2000". *val2 is 0 but for a range. */
open_error_t parse_acl_rule_l4_port_and_oper(OPEN_ACL_L4_PORT_OPERATOR_t *oper, uint32_t *val, uint32_t *val2,
                                             const char *in_Str);
/* Adds one flag, bit `filtflag` (0..7), to a set of TCP flags and its mask. OPEN_E_PARAM also for another
 * protocol than TCP. */
open_error_t parse_acl_tcp_flags(const char *value_str, uint8_t *tcpFlags, uint8_t *tcpFlagSet,
                                 uint8_t filtflag, uint32_t protocol);

/* --- Values to words ------------------------------------------------------------------------------------ */

/* "IPv4", "MAC", "IPv6". */
open_error_t get_acl_type_string_by_eum(OPEN_ACL_TYPE_t type, char *out_typeStr);
/* "Permit", "Deny". */
open_error_t get_acl_rule_action_string_by_eum(OPEN_ACL_ACTION_t action, char *out_actionStr);
/* "No State", "Inactive", "Active". */
open_error_t get_acl_rule_time_range_status_string_by_eum(OPEN_ACL_RULE_STATUS_t status, char *out_statusStr);
/* "6(TCP)", "50" for a protocol without a name. */
open_error_t get_acl_rule_protocol_string_by_value(uint32_t protocol, char *out_protocolStr);
/* "equal to 80", "1000..2000". */
open_error_t get_acl_rule_l4_port_string_by_oper_value(OPEN_ACL_L4_PORT_OPERATOR_t oper, uint32_t val,
                                                       uint32_t val2, char *out_portStr);

#endif
