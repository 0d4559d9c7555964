/* What the tests of TCAM policies share: records, all members of a record as text, and the C interface with
 * ids as numbers. */
#ifndef KESTREL_TESTS_TCAM_TEST_SUPPORT_H
#define KESTREL_TESTS_TCAM_TEST_SUPPORT_H

#include "platform/api/openapi_tcam.h"
#include "tests/unit/platform/softswitch_test_support.h"

#include <sstream>
#include <string.h>
#include <string>

/* A policy that matches everything and does nothing. */
inline open_tcamApiPolicy_t plain_policy(uint32_t type = OPEN_TCAM_POLICY_OPENFLOW) {
  open_tcamApiPolicy_t policy;
  memset(&policy, 0, sizeof policy);
  policy.policyHeader = {{0, 1}, 12};
  policy.policyType = type;
  return policy;
}

/* A policy with every member set to the largest value that it can have. */
inline open_tcamApiPolicy_t largest_policy() {
  open_tcamApiPolicy_t policy;
  memset(&policy, 0xff, sizeof policy);
  policy.policyHeader = {{0, 1}, 12};
  policy.policyType = OPEN_TCAM_POLICY_GEN;
  policy.matchVlanVal = 4094;
  policy.matchVlanPrio = 7;
  policy.matchIpProto = 255;
  policy.matchIpDscp = 63;
  policy.reserved[0] = policy.reserved[1] = 0;
  policy.actionType = OPEN_TCAM_ACTION_ALL;
  policy.actionVal.ifNum = 119;
  policy.actionVal.etherType = 65535;
  policy.actionVal.vlanVal = 4094;
  policy.actionVal.vlanPrio = 7;
  policy.actionVal.dscp = 63;
  return policy;
}

template <size_t Size> void put_bytes(std::ostringstream &text, const uint8_t (&bytes)[Size]) {
  for (unsigned byte : bytes) text << byte << '.';
  text << ' ';
}

/* All members, none left out, so that equal texts mean equal records. */
inline std::string all_of(const open_tcamApiPolicy_t &p) {
  std::ostringstream text;
  text << p.policyHeader.versionInfo.versionMajor << ' ' << p.policyHeader.versionInfo.versionMinor << ' '
       << p.policyHeader.headerLen << " type " << p.policyType << ' ' << p.policyPrio << ' ' << p.ruleNum
       << ' ' << p.rulePrio << " mac ";
  put_bytes(text, p.matchDstMac);
  put_bytes(text, p.matchSrcMac);
  text << p.matchVlanVal << ' ' << unsigned{p.matchVlanPrio} << ' ' << p.matchEthType << " ip "
       << p.matchDstIp << ' ' << p.matchDstIpMask << ' ' << p.matchSrcIp << ' ' << p.matchSrcIpMask << ' '
       << p.matchIpProto << ' ' << p.matchIpProtoMask << ' ' << p.matchIpDscp << ' '
       << unsigned{p.matchIpDscpMask} << " ports " << p.matchSrcPortIcmpType << ' '
       << p.matchSrcPortIcmpTypeMask << ' ' << p.matchDstPortIcmpCode << ' ' << p.matchDstPortIcmpCodeMask
       << " reserved ";
  put_bytes(text, p.reserved);
  put_bytes(text, p.matchSrcIpv6Addr.addr8);
  put_bytes(text, p.matchSrcIpv6Mask.addr8);
  put_bytes(text, p.matchDstIpv6Addr.addr8);
  put_bytes(text, p.matchDstIpv6Mask.addr8);
  text << "actions " << p.actionType << ' ' << p.actionVal.ifNum << ' ';
  put_bytes(text, p.actionVal.srcMac);
  put_bytes(text, p.actionVal.dstMac);
  text << p.actionVal.etherType << ' ' << p.actionVal.vlanVal << ' ' << unsigned{p.actionVal.vlanPrio} << ' '
       << unsigned{p.actionVal.dscp};
  return text.str();
}

/* A running switch and its policies. Where a call can answer an id, a code stands in its place when it fails.
 */
class Tcam : public SoftSwitch {
protected:
  /* The id of a new policy; the code in its place when there is none. */
  int create(const open_tcamApiPolicy_t &policy) {
    uint32_t id = 99999;
    open_error_t rc = rpcclt_openapiTcamPolicyCreate(&handle, policy, &id);
    return rc == OPEN_E_NONE ? static_cast<int>(id) : rc;
  }

  int create(uint32_t type = OPEN_TCAM_POLICY_OPENFLOW) { return create(plain_policy(type)); }

  /* A policy as text; the code in its place. */
  std::string read(uint32_t id) {
    open_tcamApiPolicy_t policy;
    memset(&policy, 0xaa, sizeof policy);
    open_error_t rc = rpcclt_openapiTcamPolicyGet(&handle, &id, &policy);
    return rc == OPEN_E_NONE ? all_of(policy) : std::to_string(rc);
  }

  open_error_t destroy(uint32_t id) { return rpcclt_openapiTcamPolicyDestroy(&handle, &id); }

  open_error_t apply(uint32_t id, uint32_t interface) {
    return rpcclt_openapiTcamPolicyIntfAdd(&handle, &id, interface);
  }

  open_error_t take_off(uint32_t id, uint32_t interface) {
    return rpcclt_openapiTcamPolicyIntfRem(&handle, &id, interface);
  }

  /* The ids that a walk finds. Each record must be that of its id. */
  std::vector<uint32_t> walk() {
    std::vector<uint32_t> found;
    open_tcamApiPolicy_t policy;
    uint32_t id, next;
    open_error_t rc = rpcclt_openapiTcamPolicyGetFirst(&handle, &policy, &id);
    while (rc == OPEN_E_NONE) {
      EXPECT_EQ(all_of(policy), read(id));
      found.push_back(id);
      rc = rpcclt_openapiTcamPolicyGetNext(&handle, &id, &policy, &next);
      EXPECT_EQ(id, found.back()) << "the id that goes in stays";
      id = next;
    }
    EXPECT_EQ(rc, OPEN_E_FAIL);
    return found;
  }

  int next_after(uint32_t id) {
    open_tcamApiPolicy_t policy;
    uint32_t next = 99999;
    open_error_t rc = rpcclt_openapiTcamPolicyGetNext(&handle, &id, &policy, &next);
    return rc == OPEN_E_NONE ? static_cast<int>(next) : rc;
  }

  using ids = std::vector<uint32_t>;
};

#endif
