/* Raw classification policies in the switch's TCAM: each matches header fields and acts on what matches, on
 * the ports that it is applied to. Also what the TCAM is used for.
 *
 * Unless a function says otherwise: OPEN_E_NOT_FOUND for an unknown policy, port or LAG, OPEN_E_PARAM for an
 * interface number outside every range, OPEN_E_FAIL when a change cannot be stored; nothing was changed
 * then. */
#ifndef OPENAPI_TCAM_H
#define OPENAPI_TCAM_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* --- Policies ------------------------------------------------------------------------------------------- */

typedef uint32_t OPEN_TCAM_POLICY_TYPE_t;
enum {
  OPEN_TCAM_POLICY_OPENFLOW = 1, /* at ingress; headers up to IPv4 */
  OPEN_TCAM_POLICY_GEN = 2,      /* at ingress; IPv6 addresses too, in entries of twice the width */
  OPEN_TCAM_POLICY_EGRESS = 3,   /* at egress; headers up to IPv4 */
  OPEN_TCAM_POLICY_END = 4,      /* no type: the end of the list of types */
};

/* Bits of actionType; the arguments are members of OPEN_TCAM_ACTION_t. */
enum {
  OPEN_TCAM_ACTION_DROP = 0x01,
  OPEN_TCAM_ACTION_REDIRECT = 0x02,        /* ifNum */
  OPEN_TCAM_ACTION_OUTERVLAN = 0x04,       /* vlanVal */
  OPEN_TCAM_ACTION_SRCMAC_NEW = 0x08,      /* srcMac */
  OPEN_TCAM_ACTION_DSTMAC_NEW = 0x10,      /* dstMac */
  OPEN_TCAM_ACTION_USERPRIO = 0x20,        /* vlanPrio, dscp */
  OPEN_TCAM_ACTION_OUTERTPID = 0x40,       /* etherType */
  OPEN_TCAM_ACTION_REDIRECT_TO_CPU = 0x80, /* ruleNum of the policy */
  OPEN_TCAM_ACTION_ALL = 0xff,
};

typedef struct {
  uint32_t ifNum;
  uint8_t srcMac[6];
  uint8_t dstMac[6];
  uint32_t etherType;
  uint16_t vlanVal;
  uint8_t vlanPrio;
  uint8_t dscp;
} OPEN_TCAM_ACTION_t;

typedef struct {
  uint32_t versionMajor;
  uint32_t versionMinor;
} open_tcamVersion_t;

typedef struct {
  open_tcamVersion_t versionInfo; /* of this interface: 0.1 */
  uint32_t headerLen;             /* bytes of this header: 12 */
} open_tcamPolicyHeader_t;

/* A policy. A match field that is zero is not compared; nor is one whose mask is, where it has a mask. IPv4
 * addresses are in host byte order. */
typedef struct tcamApiPolicy_s {
  open_tcamPolicyHeader_t policyHeader;
  OPEN_TCAM_POLICY_TYPE_t policyType;
  uint32_t policyPrio;
  uint32_t ruleNum;
  uint32_t rulePrio;
  uint8_t matchDstMac[6];
  uint8_t matchSrcMac[6];
  uint16_t matchVlanVal;
  uint8_t matchVlanPrio;
  uint16_t matchEthType;
  uint32_t matchDstIp;
  uint32_t matchDstIpMask;
  uint32_t matchSrcIp;
  uint32_t matchSrcIpMask;
  uint32_t matchIpProto;
  uint32_t matchIpProtoMask;
  uint32_t matchIpDscp;
  uint8_t matchIpDscpMask;
  uint16_t matchSrcPortIcmpType;
  uint16_t matchSrcPortIcmpTypeMask;
  uint16_t matchDstPortIcmpCode;
  uint16_t matchDstPortIcmpCodeMask;
  uint8_t reserved[2];
  open_in6_addr_t matchSrcIpv6Addr;
  open_in6_addr_t matchSrcIpv6Mask;
  open_in6_addr_t matchDstIpv6Addr;
  open_in6_addr_t matchDstIpv6Mask;
  uint32_t actionType; /* OPEN_TCAM_ACTION_... bits */
  OPEN_TCAM_ACTION_t actionVal;
} open_tcamApiPolicy_t;

/* Makes a policy, which is applied to no port yet.
 *   policy    header as above. policyType 1..3; 0 stands for OPEN_TCAM_POLICY_OPENFLOW. VLAN ids 0..4094,
 *             priorities 0..7, DSCPs 0..63, protocol 0..255, TPID 0..65535. Arguments of actions that are not
 *             asked for, and reserved bytes, do not count and are stored as 0. A new VLAN id is 1..4094
 *   policyId  the new policy's id, the lowest that is free, from 1
 * OPEN_E_PARAM      a field out of range; an IPv6 match in a policy of another type than OPEN_TCAM_POLICY_GEN
 * OPEN_E_NOT_FOUND  the port or LAG to redirect to does not exist
 * OPEN_E_FULL       there is no room for another policy at this stage */
open_error_t rpcclt_openapiTcamPolicyCreate(openapiClientHandle_t *handle, open_tcamApiPolicy_t policy,
                                            uint32_t *policyId);
open_error_t rpcclt_openapiTcamPolicyGet(openapiClientHandle_t *handle, uint32_t *policyId,
                                         open_tcamApiPolicy_t *policy);
/* Deletes a policy, or all, and takes them off the ports. To delete all of none is no failure. */
open_error_t rpcclt_openapiTcamPolicyDestroy(openapiClientHandle_t *handle, uint32_t *policyId);
open_error_t rpcclt_openapiTcamPolicyDeleteAll(openapiClientHandle_t *handle);

/* Walks over the policies in the order of their ids. `policyId` goes in as the id after which to go on; it
 * need not exist and is not changed.
 * OPEN_E_FAIL  there is none: the walk is over */
open_error_t rpcclt_openapiTcamPolicyGetFirst(openapiClientHandle_t *handle, open_tcamApiPolicy_t *policy,
                                              uint32_t *policyId);
open_error_t rpcclt_openapiTcamPolicyGetNext(openapiClientHandle_t *handle, uint32_t *policyId,
                                             open_tcamApiPolicy_t *policy, uint32_t *nextId);

/* Applies a policy to a port or LAG.
 * OPEN_E_EXISTS  it is applied there already
 * OPEN_E_FAIL    also: it redirects to this very interface */
open_error_t rpcclt_openapiTcamPolicyIntfAdd(openapiClientHandle_t *handle, uint32_t *policyId,
                                             uint32_t ifNum);
/* Takes it off again.
 * OPEN_E_NOT_FOUND  also: it is not applied there */
open_error_t rpcclt_openapiTcamPolicyIntfRem(openapiClientHandle_t *handle, uint32_t *policyId,
                                             uint32_t ifNum);

/* --- Use of the TCAM ------------------------------------------------------------------------------------ */

enum { OPEN_TCAM_STAGE_INGRESS = 1, OPEN_TCAM_STAGE_EGRESS = 2 };

/* A group: the slices that entries of one kind are in. */
typedef struct {
  uint32_t inUse;    /* 1 when it has entries; otherwise the rest is 0 */
  uint32_t gid;      /* group number */
  uint32_t typeId;   /* kind of its entries */
  uint32_t count;    /* entries in use */
  uint32_t free;     /* entries that its slices have room for */
  uint32_t total;    /* both together */
  uint32_t width;    /* slices side by side that one entry takes */
  uint32_t reserved; /* 0 */
  uint32_t depth;    /* such rows of slices */
} open_zylUsmdbTcamGroup_t;

enum { OPEN_TCAM_GROUPS_MAX = 32 };

typedef struct {
  open_zylUsmdbTcamGroup_t group[OPEN_TCAM_GROUPS_MAX];
} open_zylUsmdbTcamGroupsStats_t;

/* The groups of a stage.
 *   sliceSize   how many members of `groups` are filled, at most OPEN_TCAM_GROUPS_MAX
 *   entry...    entries of single width: in use (one of twice the width counts twice), free (also in
 *               slices that no group has), in all
 * OPEN_E_PARAM  no such stage */
open_error_t rpcclt_openapiTcamGroupStatsGetZYL(openapiClientHandle_t *handle, uint32_t stage,
                                                open_zylUsmdbTcamGroupsStats_t *groups, uint32_t *sliceSize,
                                                uint32_t *entryCount, uint32_t *entryFree,
                                                uint32_t *entryTotal);

/* How many slices groups have, how many are free, and how many there are: of 256 and of 512 entries. */
open_error_t rpcclt_openapiTcamGroupStatsIngressSlicesCountGetZYL(openapiClientHandle_t *handle,
                                                                  uint32_t *count256, uint32_t *free256,
                                                                  uint32_t *total256, uint32_t *count512,
                                                                  uint32_t *free512, uint32_t *total512);
open_error_t rpcclt_openapiTcamGroupStatsEgressSlicesCountGetZYL(openapiClientHandle_t *handle,
                                                                 uint32_t *count256, uint32_t *free256,
                                                                 uint32_t *total256);

/* The name of a kind of entries.
 * OPEN_E_NOT_FOUND  there is no such kind
 * OPEN_E_PARAM      the buffer is too small; 32 bytes are enough */
open_error_t rpcclt_openapiTcamHapiBroadPolicyTypeNameGetZYL(openapiClientHandle_t *handle, uint32_t typeId,
                                                             open_buffdesc *name);

/* The record's layout is part of the interface. */
#ifdef __cplusplus
#define OPEN_TCAM_LAYOUT(member, offset)                                                                     \
  static_assert(__builtin_offsetof(open_tcamApiPolicy_t, member) == (offset), #member)
#define OPEN_TCAM_SIZE(type, size) static_assert(sizeof(type) == (size), #type)
#else
#define OPEN_TCAM_LAYOUT(member, offset)                                                                     \
  _Static_assert(__builtin_offsetof(open_tcamApiPolicy_t, member) == (offset), #member)
#define OPEN_TCAM_SIZE(type, size) _Static_assert(sizeof(type) == (size), #type)
#endif
OPEN_TCAM_LAYOUT(policyHeader.headerLen, 8);
OPEN_TCAM_LAYOUT(policyType, 12);
OPEN_TCAM_LAYOUT(policyPrio, 16);
OPEN_TCAM_LAYOUT(ruleNum, 20);
OPEN_TCAM_LAYOUT(rulePrio, 24);
OPEN_TCAM_LAYOUT(matchDstMac, 28);
OPEN_TCAM_LAYOUT(matchSrcMac, 34);
OPEN_TCAM_LAYOUT(matchVlanVal, 40);
OPEN_TCAM_LAYOUT(matchVlanPrio, 42);
OPEN_TCAM_LAYOUT(matchEthType, 44);
OPEN_TCAM_LAYOUT(matchDstIp, 48);
OPEN_TCAM_LAYOUT(matchDstIpMask, 52);
OPEN_TCAM_LAYOUT(matchSrcIp, 56);
OPEN_TCAM_LAYOUT(matchSrcIpMask, 60);
OPEN_TCAM_LAYOUT(matchIpProto, 64);
OPEN_TCAM_LAYOUT(matchIpProtoMask, 68);
OPEN_TCAM_LAYOUT(matchIpDscp, 72);
OPEN_TCAM_LAYOUT(matchIpDscpMask, 76);
OPEN_TCAM_LAYOUT(matchSrcPortIcmpType, 78);
OPEN_TCAM_LAYOUT(matchSrcPortIcmpTypeMask, 80);
OPEN_TCAM_LAYOUT(matchDstPortIcmpCode, 82);
OPEN_TCAM_LAYOUT(matchDstPortIcmpCodeMask, 84);
OPEN_TCAM_LAYOUT(matchSrcIpv6Addr, 88);
OPEN_TCAM_LAYOUT(matchSrcIpv6Mask, 104);
OPEN_TCAM_LAYOUT(matchDstIpv6Addr, 120);
OPEN_TCAM_LAYOUT(matchDstIpv6Mask, 136);
OPEN_TCAM_LAYOUT(actionType, 152);
OPEN_TCAM_LAYOUT(actionVal.ifNum, 156);
OPEN_TCAM_LAYOUT(actionVal.srcMac, 160);
OPEN_TCAM_LAYOUT(actionVal.dstMac, 166);
OPEN_TCAM_LAYOUT(actionVal.etherType, 172);
OPEN_TCAM_LAYOUT(actionVal.vlanVal, 176);
OPEN_TCAM_LAYOUT(actionVal.vlanPrio, 178);
OPEN_TCAM_LAYOUT(actionVal.dscp, 179);
OPEN_TCAM_SIZE(open_tcamApiPolicy_t, 180);
#undef OPEN_TCAM_LAYOUT
#undef OPEN_TCAM_SIZE

#ifdef __cplusplus
}
#endif
#endif
