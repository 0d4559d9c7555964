/* Access control lists (ACLs): named lists of rules that permit or deny packets, bound to interfaces and
 * VLANs in one direction. A rule is found by its number; rules count in the order of their numbers, and the
 * first that matches a packet decides.
 *
 * A rule is made by giving it its action; matches and attributes are added one by one. Adding what a rule has
 * already replaces it. Conditions must go together: ports need the protocol TCP or UDP, TCP flags and
 * "established" need TCP, an IGMP type needs IGMP, an ICMP type needs ICMP (ICMPv6 in an IPv6 list), and a
 * rule that matches every packet has no other condition.
 *
 * Unless a function says otherwise:
 * OPEN_E_PARAM      a type, direction, action, operator or number outside its range, a text that is not as
 *                   described, an interface number outside every range, a VLAN id outside 1..4094, or a
 *                   condition that does not go with the rule's others
 * OPEN_E_NOT_FOUND  no such list, rule, VLAN, port or LAG; reading: the rule does not have this
 * OPEN_E_UNAVAIL    lists of this type do not have this match
 * OPEN_E_FAIL       the change cannot be stored; nothing was changed then
 * OPEN_E_FULL       the rule's list is bound and the hardware table has no room for the change */
#ifndef OPENAPI_ACL_H
#define OPENAPI_ACL_H

#include "platform/api/openapi_common.h"

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

/* --- Types ---------------------------------------------------------------------------------------------- */

typedef uint32_t OPEN_ACL_TYPE_t;
enum { OPEN_ACL_TYPE_IP = 1, OPEN_ACL_TYPE_MAC = 2, OPEN_ACL_TYPE_IPV6 = 3 };

typedef uint32_t OPEN_ACL_DIRECTION_t;
enum { OPEN_ACL_DIRECTION_IN = 0, OPEN_ACL_DIRECTION_OUT = 1 };

typedef uint32_t OPEN_ACL_ACTION_t;
enum { OPEN_ACL_ACTION_PERMIT = 0, OPEN_ACL_ACTION_DENY = 1 };

/* State of a rule's time range. */
typedef uint32_t OPEN_ACL_RULE_STATUS_t;
enum { OPEN_ACL_RULE_STATUS_NONE = 0, OPEN_ACL_RULE_STATUS_INACTIVE = 1, OPEN_ACL_RULE_STATUS_ACTIVE = 2 };

typedef uint32_t OPEN_ACL_L4_PORT_OPERATOR_t;
enum {
  OPEN_ACL_L4_PORT_EQUAL = 0,
  OPEN_ACL_L4_PORT_NOT_EQUAL = 1,
  OPEN_ACL_L4_PORT_LESS_THAN = 2,
  OPEN_ACL_L4_PORT_GREATER_THAN = 3,
  OPEN_ACL_L4_PORT_RANGE = 4, /* both ends included */
};

typedef uint32_t OPEN_ACL_VLAN_OPERATOR_t;
enum { OPEN_ACL_VLAN_EQUAL = 0, OPEN_ACL_VLAN_RANGE = 1 };

/* Protocol numbers of the IANA registry, and two of our own. */
enum {
  OPEN_ACL_PROTOCOL_ICMP = 1,
  OPEN_ACL_PROTOCOL_IGMP = 2,
  OPEN_ACL_PROTOCOL_TCP = 6,
  OPEN_ACL_PROTOCOL_UDP = 17,
  OPEN_ACL_PROTOCOL_ICMPV6 = 58,
  OPEN_ACL_PROTOCOL_IP = 255,    /* any IP packet */
  OPEN_ACL_PROTOCOL_EVERY = 256, /* every packet; never stored with a rule */
};

enum {
  OPEN_ACL_NAME_SIZE = 32,         /* bytes of a list's name, terminator included */
  OPEN_ACL_MAC_SIZE = 18,          /* bytes of a MAC address or mask as text, terminator included */
  OPEN_ACL_MAX_BINDINGS = 100,     /* lists on one interface or VLAN and direction */
  OPEN_ACL_MAX_ASSIGNMENTS = 1024, /* interfaces or VLANs of one list and direction that are listed */
  OPEN_ACL_ICMP_ANY_CODE = 256,    /* what is read as the code of a rule that takes any */
};

/* The lists bound to one interface or VLAN in one direction. */
typedef struct {
  uint32_t seqNum; /* of the binding; bindings count in this order */
  OPEN_ACL_TYPE_t aclType;
  uint32_t aclId;
} OPEN_ACL_DIR_LIST_ENTRY_t;

typedef struct {
  uint32_t count;
  OPEN_ACL_DIR_LIST_ENTRY_t listEntry[OPEN_ACL_MAX_BINDINGS];
} OPEN_ACL_INTF_DIR_LIST_t;

typedef OPEN_ACL_INTF_DIR_LIST_t OPEN_ACL_VLAN_DIR_LIST_t;

/* The interfaces, or VLANs, that one list is bound to in one direction, in ascending order. */
typedef struct {
  uint32_t count;
  uint32_t intf[OPEN_ACL_MAX_ASSIGNMENTS];
} OPEN_ACL_ASSIGNED_INTF_LIST_t;

typedef struct {
  uint32_t count;
  uint32_t vlan[OPEN_ACL_MAX_ASSIGNMENTS];
} OPEN_ACL_ASSIGNED_VLAN_LIST_t;

/* --- Lists ---------------------------------------------------------------------------------------------- */

/* How many lists there are, and how many there may be. */
open_error_t rpcclt_openapiAclCountGet(openapiClientHandle_t *handle, uint32_t *count);
open_error_t rpcclt_openapiAclMaxCountGet(openapiClientHandle_t *handle, uint32_t *max);

/* Makes an empty list.
 *   name   1..31 bytes, no blank, no control character, no "/"; lists of different types may share a name
 *   aclId  the new list's id, the lowest that is free, from 1
 * OPEN_E_EXISTS  there is a list of this type and name
 * OPEN_E_FULL    there is no room for another */
open_error_t rpcclt_openapiAclCreate(openapiClientHandle_t *handle, OPEN_ACL_TYPE_t type, open_buffdesc *name,
                                     uint32_t *aclId);
/* Deletes a list with its rules.
 * OPEN_E_FAIL  also: it is bound to an interface or VLAN */
open_error_t rpcclt_openapiAclDelete(openapiClientHandle_t *handle, uint32_t aclId);

/* The list of this type and name. A name that no list can have is that of none. */
open_error_t rpcclt_openapiAclGet(openapiClientHandle_t *handle, OPEN_ACL_TYPE_t type, open_buffdesc *name,
                                  uint32_t *aclId);
open_error_t rpcclt_openapiAclNameGet(openapiClientHandle_t *handle, uint32_t aclId, open_buffdesc *name);

/* Walks over the lists of one type in the order of their ids; `aclId` need not exist.
 * OPEN_E_FAIL  there is none: the walk is over */
open_error_t rpcclt_openapiAclGetFirst(openapiClientHandle_t *handle, OPEN_ACL_TYPE_t type, uint32_t *aclId);
open_error_t rpcclt_openapiAclGetNext(openapiClientHandle_t *handle, OPEN_ACL_TYPE_t type, uint32_t aclId,
                                      uint32_t *next);

/* --- Bindings ------------------------------------------------------------------------------------------- */

/* Binds a list to a port, LAG or VLAN.
 *   sequence  its place among the lists bound there in this direction, from 1; 0 stands for the one after
 *             the last
 * OPEN_E_EXISTS  it is bound there in this direction already
 * OPEN_E_FULL    also: 100 lists are, or there is no number after the last
 * OPEN_E_FAIL    also: another list has this sequence number, or a rule mirrors or redirects to this very
 *                interface */
open_error_t rpcclt_openapiAclIntfDirAdd(openapiClientHandle_t *handle, uint32_t ifNum,
                                         OPEN_ACL_DIRECTION_t direction, uint32_t aclId, uint32_t sequence);
open_error_t rpcclt_openapiAclVlanDirAdd(openapiClientHandle_t *handle, uint32_t vlanId,
                                         OPEN_ACL_DIRECTION_t direction, uint32_t aclId, uint32_t sequence);
/* Unbinds a list.
 * OPEN_E_NOT_FOUND  also: it is not bound there in this direction */
open_error_t rpcclt_openapiAclIntfDirDelete(openapiClientHandle_t *handle, uint32_t ifNum,
                                            OPEN_ACL_DIRECTION_t direction, uint32_t aclId);
open_error_t rpcclt_openapiAclVlanDirDelete(openapiClientHandle_t *handle, uint32_t vlanId,
                                            OPEN_ACL_DIRECTION_t direction, uint32_t aclId);

/* The lists bound to an interface or VLAN, in the order of their sequence numbers; none is no failure. */
open_error_t rpcclt_openapiAclIntfDirListGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                             OPEN_ACL_DIRECTION_t direction, OPEN_ACL_INTF_DIR_LIST_t *list);
open_error_t rpcclt_openapiAclVlanDirListGet(openapiClientHandle_t *handle, uint32_t vlanId,
                                             OPEN_ACL_DIRECTION_t direction, OPEN_ACL_VLAN_DIR_LIST_t *list);
/* The interfaces or VLANs that a list is bound to, the first 1024 of them; none is no failure. */
open_error_t rpcclt_openapiAclAssignedIntfDirListGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     OPEN_ACL_DIRECTION_t direction,
                                                     OPEN_ACL_ASSIGNED_INTF_LIST_t *list);
open_error_t rpcclt_openapiAclAssignedVlanDirListGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     OPEN_ACL_DIRECTION_t direction,
                                                     OPEN_ACL_ASSIGNED_VLAN_LIST_t *list);

/* --- Rules ---------------------------------------------------------------------------------------------- */

open_error_t rpcclt_openapiAclRuleCountGet(openapiClientHandle_t *handle, uint32_t aclId, uint32_t *count);

/* Makes a rule.
 *   ruleId  in: its number, 1..2147483647, or 0 for the next multiple of 10 after the last rule's; out: its
 *           number
 * OPEN_E_EXISTS  there is a rule with this number
 * OPEN_E_FULL    the list has 1023 rules, or there is no such multiple of 10 */
open_error_t rpcclt_openapiAclRuleActionAdd(openapiClientHandle_t *handle, uint32_t aclId, uint32_t *ruleId,
                                            OPEN_ACL_ACTION_t action);
open_error_t rpcclt_openapiAclRuleActionGet(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                            OPEN_ACL_ACTION_t *action);
open_error_t rpcclt_openapiAclRuleDelete(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId);

/* Whether a rule with this number can be made: it is in range and free, and the list is not full. False also
 * for a null or unregistered handle and an unknown list. */
bool rpcclt_openapiAclRuleNumCheckValid(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId);

/* Whether another rule of the list equals this one in all but the number. */
open_error_t rpcclt_openapiAclRuleDuplicateCheck(openapiClientHandle_t *handle, uint32_t aclId,
                                                 uint32_t ruleId, OPEN_BOOL_t *isDuplicated);

/* Walks over the rules of a list in the order of their numbers; `ruleId` need not exist.
 * OPEN_E_FAIL  there is none: the walk is over, and the output is 0 */
open_error_t rpcclt_openapiAclRuleGetFirst(openapiClientHandle_t *handle, uint32_t aclId, uint32_t *ruleId);
open_error_t rpcclt_openapiAclRuleGetNext(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                          uint32_t *next);

/* --- Matches of all types ------------------------------------------------------------------------------- */

/* Whether the rule matches every packet; 0 or 1. Reading never answers that the rule does not have this. */
open_error_t rpcclt_openapiAclRuleMatchEveryAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                uint32_t ruleId, OPEN_BOOL_t match);
open_error_t rpcclt_openapiAclRuleMatchEveryGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                uint32_t ruleId, OPEN_BOOL_t *match);

/* --- Matches of MAC lists ------------------------------------------------------------------------------- */

/* Source and destination address. Address and mask are texts of six groups of two hexadecimal digits of any
 * case, separated by colons; reading gives upper case. The bits that are 1 in the mask are compared. */
open_error_t rpcclt_openapiAclRuleMatchMacSrcMacAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *mac, open_buffdesc *mask);
open_error_t rpcclt_openapiAclRuleMatchMacSrcMacGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *mac, open_buffdesc *mask);
open_error_t rpcclt_openapiAclRuleMatchMacDstMacAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *mac, open_buffdesc *mask);
open_error_t rpcclt_openapiAclRuleMatchMacDstMacGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *mac, open_buffdesc *mask);

/* Ethertype, 0x0600..0xFFFF (IEEE 802.3 section 3.2.6: lower values are lengths). */
open_error_t rpcclt_openapiAclRuleMatchMacEtherTypeAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                       uint32_t ruleId, uint32_t etherType);
open_error_t rpcclt_openapiAclRuleMatchMacEtherTypeGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                       uint32_t ruleId, uint32_t *etherType);

/* VLAN of the outer tag: `first` alone, or `first`..`last` for any operator but OPEN_ACL_VLAN_EQUAL; 1..4094.
 * `last` is not looked at, and read as 0, for a single VLAN. The VLANs need not exist. */
open_error_t rpcclt_openapiAclRuleMatchMacVlanAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_ACL_VLAN_OPERATOR_t oper,
                                                  uint32_t first, uint32_t last);
open_error_t rpcclt_openapiAclRuleMatchMacVlanGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_ACL_VLAN_OPERATOR_t *oper,
                                                  uint32_t *first, uint32_t *last);

/* Priority in the outer tag, 0..7 (IEEE 802.1Q class of service). */
open_error_t rpcclt_openapiAclRuleMatchMacCosAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                 uint32_t ruleId, uint32_t cos);
open_error_t rpcclt_openapiAclRuleMatchMacCosGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                 uint32_t ruleId, uint32_t *cos);

/* --- Matches of IPv4 and IPv6 lists --------------------------------------------------------------------- */

/* IP protocol, 0..255; 255 is any. Reading answers 255 for a rule that does not look at it. */
open_error_t rpcclt_openapiAclRuleMatchProtocolAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t protocol);
open_error_t rpcclt_openapiAclRuleMatchProtocolGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t *protocol);

/* IPv4 lists: source and destination address with a mask; the bits that are 1 in the mask are compared. */
open_error_t rpcclt_openapiAclRuleMatchIpSrcMaskAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_inet_addr_t addr,
                                                    open_inet_addr_t mask);
open_error_t rpcclt_openapiAclRuleMatchIpSrcMaskGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_inet_addr_t *addr,
                                                    open_inet_addr_t *mask);
open_error_t rpcclt_openapiAclRuleMatchIpDstMaskAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_inet_addr_t addr,
                                                    open_inet_addr_t mask);
open_error_t rpcclt_openapiAclRuleMatchIpDstMaskGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_inet_addr_t *addr,
                                                    open_inet_addr_t *mask);

/* IPv6 lists: source and destination prefix, length 1..128. */
open_error_t rpcclt_openapiAclRuleMatchIpv6SrcPfxAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, open_inet_addr_t prefix,
                                                     uint32_t length);
open_error_t rpcclt_openapiAclRuleMatchIpv6SrcPfxGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, open_inet_addr_t *prefix,
                                                     uint32_t *length);
open_error_t rpcclt_openapiAclRuleMatchIpv6DstPfxAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, open_inet_addr_t prefix,
                                                     uint32_t length);
open_error_t rpcclt_openapiAclRuleMatchIpv6DstPfxGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, open_inet_addr_t *prefix,
                                                     uint32_t *length);

/* Source and destination port, 0..65535. `port2` is the last port of a range, not below `port`; not looked
 * at, and read as 0, for other operators. */
open_error_t rpcclt_openapiAclRuleMatchL4SrcPortAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_ACL_L4_PORT_OPERATOR_t oper,
                                                    uint32_t port, uint32_t port2);
open_error_t rpcclt_openapiAclRuleMatchL4SrcPortGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_ACL_L4_PORT_OPERATOR_t *oper,
                                                    uint32_t *port, uint32_t *port2);
open_error_t rpcclt_openapiAclRuleMatchL4DstPortAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_ACL_L4_PORT_OPERATOR_t oper,
                                                    uint32_t port, uint32_t port2);
open_error_t rpcclt_openapiAclRuleMatchL4DstPortGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_ACL_L4_PORT_OPERATOR_t *oper,
                                                    uint32_t *port, uint32_t *port2);

/* Differentiated services code point, 0..63 (RFC 2474). */
open_error_t rpcclt_openapiAclRuleMatchDscpAdd(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                               uint32_t dscp);
open_error_t rpcclt_openapiAclRuleMatchDscpGet(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                               uint32_t *dscp);

/* IP precedence, 0..7 (RFC 791). */
open_error_t rpcclt_openapiAclRuleMatchPrecedenceAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, uint32_t precedence);
open_error_t rpcclt_openapiAclRuleMatchPrecedenceGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                     uint32_t ruleId, uint32_t *precedence);

/* Type of service byte (traffic class in IPv6). Bits and mask are texts of two hexadecimal digits of any
 * case; reading gives lower case. The bits that are 1 in the mask are compared. */
open_error_t rpcclt_openapiAclRuleMatchTosAdd(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                              open_buffdesc *tos, open_buffdesc *tosMask);
open_error_t rpcclt_openapiAclRuleMatchTosGet(openapiClientHandle_t *handle, uint32_t aclId, uint32_t ruleId,
                                              open_buffdesc *tos, open_buffdesc *tosMask);

/* IPv4 lists: IGMP type, 0..255. */
open_error_t rpcclt_openapiAclRuleMatchIgmpTypeAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t type);
open_error_t rpcclt_openapiAclRuleMatchIgmpTypeGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t *type);

/* ICMP or ICMPv6 type and code, 0..255.
 *   withCode  1: the code counts; 0: any code, `code` is not looked at, and read as OPEN_ACL_ICMP_ANY_CODE
 *   family    not looked at: the list knows which protocol it is */
open_error_t rpcclt_openapiAclRuleMatchIcmpTypeCodeAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                       uint32_t ruleId, OPEN_BOOL_t withCode, uint32_t type,
                                                       uint32_t code);
open_error_t rpcclt_openapiAclRuleMatchIcmpTypeCodeGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                       uint32_t ruleId, OPEN_BOOL_t family, uint32_t *type,
                                                       uint32_t *code);

/* TCP flags: bit 0 FIN, 1 SYN, 2 RST, 3 PSH, 4 ACK, 5 URG. Those that are 1 in the mask are compared;
 * `flags` has no others. */
open_error_t rpcclt_openapiAclRuleMatchTcpFlagsAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t flags, uint32_t mask);
open_error_t rpcclt_openapiAclRuleMatchTcpFlagsGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t *flags, uint32_t *mask);

/* Packets of established TCP connections (1), or those that open one (0). */
open_error_t rpcclt_openapiAclRuleMatchTcpEstablishedAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                         uint32_t ruleId, OPEN_BOOL_t established);
open_error_t rpcclt_openapiAclRuleMatchTcpEstablishedGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                         uint32_t ruleId, OPEN_BOOL_t *established);

/* Fragments (1), or packets that are none (0). */
open_error_t rpcclt_openapiAclRuleMatchFragmentsAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_BOOL_t fragments);
open_error_t rpcclt_openapiAclRuleMatchFragmentsGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, OPEN_BOOL_t *fragments);

/* IPv6 lists: packets with a routing header (1), or without (0) (RFC 8200 section 4.4). */
open_error_t rpcclt_openapiAclRuleMatchRoutingAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_BOOL_t routing);
open_error_t rpcclt_openapiAclRuleMatchRoutingGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_BOOL_t *routing);

/* IPv6 lists: flow label, 0..1048575 (RFC 8200 section 6). */
open_error_t rpcclt_openapiAclRuleMatchFlowLabelAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, uint32_t label);
open_error_t rpcclt_openapiAclRuleMatchFlowLabelGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, uint32_t *label);

/* --- Attributes of rules of all types ------------------------------------------------------------------- */

/* Whether matching packets are counted in the log; 0 or 1. */
open_error_t rpcclt_openapiAclRuleMatchLoggingAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_BOOL_t logging);
open_error_t rpcclt_openapiAclRuleMatchLoggingGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                  uint32_t ruleId, OPEN_BOOL_t *logging);

/* The queue that matching packets go to, 0..7. */
open_error_t rpcclt_openapiAclRuleMatchAssignQueueAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                      uint32_t ruleId, uint32_t queue);
open_error_t rpcclt_openapiAclRuleMatchAssignQueueGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                      uint32_t ruleId, uint32_t *queue);

/* The port or LAG that matching packets are copied to, or that they leave by instead.
 * OPEN_E_FAIL  also: the list is bound to this very interface */
open_error_t rpcclt_openapiAclRuleMatchMirrorAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                 uint32_t ruleId, uint32_t ifNum);
open_error_t rpcclt_openapiAclRuleMatchMirrorGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                 uint32_t ruleId, uint32_t *ifNum);
open_error_t rpcclt_openapiAclRuleMatchRedirectAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t ifNum);
open_error_t rpcclt_openapiAclRuleMatchRedirectGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                   uint32_t ruleId, uint32_t *ifNum);

/* The time range in which the rule counts: its name, 1..31 bytes as of a list's; and the state of that range,
 * which is OPEN_ACL_RULE_STATUS_NONE for a range that nobody has defined. */
open_error_t rpcclt_openapiAclRuleMatchTimeRangeAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *name);
open_error_t rpcclt_openapiAclRuleMatchTimeRangeGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, open_buffdesc *name);
open_error_t rpcclt_openapiAclRuleMatchTimeRangeStatusGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                          uint32_t ruleId, OPEN_ACL_RULE_STATUS_t *status);

/* How much of the matching traffic is let through: rate in kbit/s, 1..4294967295, burst in Kbyte, 1..128. */
open_error_t rpcclt_openapiAclRuleMatchRateLimitAdd(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, uint32_t rate, uint32_t burst);
open_error_t rpcclt_openapiAclRuleMatchRateLimitGet(openapiClientHandle_t *handle, uint32_t aclId,
                                                    uint32_t ruleId, uint32_t *rate, uint32_t *burst);

#ifdef __cplusplus
}
#endif
#endif
