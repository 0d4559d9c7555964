/* Tests of the records of TCAM policies in the C interface: what is stored, and what is refused. */
#include "platform/api/openapi_lag.h"

#include "tests/unit/platform/tcam_test_support.h"

#include <string.h>

namespace {

using record = open_tcamApiPolicy_t;

TEST_F(Tcam, FactorySwitchHasNoPolicies) {
  EXPECT_EQ(walk(), ids());
  EXPECT_EQ(read(1), std::to_string(OPEN_E_NOT_FOUND));
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Tcam, PolicyWithEverythingIsReadBackAsItWasGiven) {
  const std::string expected = all_of(largest_policy());
  ASSERT_EQ(create(largest_policy()), 1);
  EXPECT_EQ(read(1), expected);
  restart(); /* from the journal, */
  EXPECT_EQ(read(1), expected);
  restart(); /* and from the snapshot that this has made */
  EXPECT_EQ(read(1), expected);
}

TEST_F(Tcam, PolicyWithNothingIsReadBackAsItWasGiven) {
  for (uint32_t type : {1u, 2u, 3u}) ASSERT_EQ(create(type), static_cast<int>(type));
  for (uint32_t type : {1u, 2u, 3u}) EXPECT_EQ(read(type), all_of(plain_policy(type)));
  EXPECT_EQ(softswitch::running_config(),
            "tcam policy 1 openflow\ntcam policy 2 ipv6\ntcam policy 3 egress\n");
}

/* Sets one member to the largest value that it can have, with the action that it needs. */
const struct {
  const char *name;
  void (*set)(record *);
} single_members[] = {
    {"policyPrio", [](record *p) { p->policyPrio = UINT32_MAX; }},
    {"ruleNum", [](record *p) { p->ruleNum = UINT32_MAX; }},
    {"rulePrio", [](record *p) { p->rulePrio = UINT32_MAX; }},
    {"matchDstMac", [](record *p) { memset(p->matchDstMac, 0xff, 6); }},
    {"one bit of matchDstMac", [](record *p) { p->matchDstMac[5] = 1; }},
    {"matchSrcMac", [](record *p) { memset(p->matchSrcMac, 0xfe, 6); }},
    {"one bit of matchSrcMac", [](record *p) { p->matchSrcMac[0] = 1; }},
    {"matchVlanVal", [](record *p) { p->matchVlanVal = 4094; }},
    {"matchVlanPrio", [](record *p) { p->matchVlanPrio = 7; }},
    {"matchEthType", [](record *p) { p->matchEthType = 65535; }},
    {"matchDstIp", [](record *p) { p->matchDstIp = UINT32_MAX; }},
    {"matchDstIp without mask", [](record *p) { p->matchDstIp = 0x0a000001; }},
    {"matchDstIpMask", [](record *p) { p->matchDstIpMask = 0xff00ff01; }},
    {"matchSrcIp", [](record *p) { p->matchSrcIp = 1; }},
    {"matchSrcIpMask", [](record *p) { p->matchSrcIpMask = 1; }},
    {"matchIpProto", [](record *p) { p->matchIpProto = 255; }},
    {"matchIpProtoMask", [](record *p) { p->matchIpProtoMask = UINT32_MAX; }},
    {"matchIpDscp", [](record *p) { p->matchIpDscp = 63; }},
    {"matchIpDscpMask", [](record *p) { p->matchIpDscpMask = 255; }},
    {"matchSrcPortIcmpType", [](record *p) { p->matchSrcPortIcmpType = 65535; }},
    {"matchSrcPortIcmpTypeMask", [](record *p) { p->matchSrcPortIcmpTypeMask = 65535; }},
    {"matchDstPortIcmpCode", [](record *p) { p->matchDstPortIcmpCode = 65535; }},
    {"matchDstPortIcmpCodeMask", [](record *p) { p->matchDstPortIcmpCodeMask = 65535; }},
    {"matchSrcIpv6Addr", [](record *p) { p->matchSrcIpv6Addr.addr8[15] = 1; }},
    {"matchSrcIpv6Mask", [](record *p) { p->matchSrcIpv6Mask.addr8[0] = 0x80; }},
    {"matchDstIpv6Addr", [](record *p) { p->matchDstIpv6Addr.addr8[0] = 1; }},
    {"matchDstIpv6Mask", [](record *p) { p->matchDstIpv6Mask.addr8[15] = 1; }},
    {"drop", [](record *p) { p->actionType = OPEN_TCAM_ACTION_DROP; }},
    {"redirect to a port",
     [](record *p) {
       p->actionType = OPEN_TCAM_ACTION_REDIRECT;
       p->actionVal.ifNum = 1;
     }},
    {"redirect to a LAG",
     [](record *p) {
       p->actionType = OPEN_TCAM_ACTION_REDIRECT;
       p->actionVal.ifNum = 119;
     }},
    {"new VLAN",
     [](record *p) {
       p->actionType = OPEN_TCAM_ACTION_OUTERVLAN;
       p->actionVal.vlanVal = 1;
     }},
    {"new source MAC",
     [](record *p) {
       p->actionType = OPEN_TCAM_ACTION_SRCMAC_NEW;
       p->actionVal.srcMac[5] = 255;
     }},
    {"new source MAC of zero", [](record *p) { p->actionType = OPEN_TCAM_ACTION_SRCMAC_NEW; }},
    {"new destination MAC",
     [](record *p) {
       p->actionType = OPEN_TCAM_ACTION_DSTMAC_NEW;
       p->actionVal.dstMac[0] = 255;
     }},
    {"new destination MAC of zero", [](record *p) { p->actionType = OPEN_TCAM_ACTION_DSTMAC_NEW; }},
    {"new priority of zero", [](record *p) { p->actionType = OPEN_TCAM_ACTION_USERPRIO; }},
    {"new priority",
     [](record *p) {
       p->actionType = OPEN_TCAM_ACTION_USERPRIO;
       p->actionVal.vlanPrio = 7;
     }},
    {"new DSCP",
     [](record *p) {
       p->actionType = OPEN_TCAM_ACTION_USERPRIO;
       p->actionVal.dscp = 63;
     }},
    {"new TPID",
     [](record *p) {
       p->actionType = OPEN_TCAM_ACTION_OUTERTPID;
       p->actionVal.etherType = 65535;
     }},
    {"new TPID of zero", [](record *p) { p->actionType = OPEN_TCAM_ACTION_OUTERTPID; }},
    {"to the CPU", [](record *p) { p->actionType = OPEN_TCAM_ACTION_REDIRECT_TO_CPU; }},
};

TEST_F(Tcam, EachMemberIsKeptByItself) {
  std::vector<std::string> expected;
  for (const auto &[name, set] : single_members) {
    record policy = plain_policy(OPEN_TCAM_POLICY_GEN);
    set(&policy);
    expected.push_back(all_of(policy));
    uint32_t id = static_cast<uint32_t>(expected.size());
    ASSERT_EQ(create(policy), static_cast<int>(id)) << name;
    EXPECT_EQ(read(id), expected.back()) << name;
  }
  restart();
  restart();
  for (size_t row = 0; row < expected.size(); row++)
    EXPECT_EQ(read(static_cast<uint32_t>(row + 1)), expected[row]) << single_members[row].name;
}

TEST_F(Tcam, TypeZeroStandsForOpenflow) {
  ASSERT_EQ(create(0u), 1);
  EXPECT_EQ(read(1), all_of(plain_policy(OPEN_TCAM_POLICY_OPENFLOW)));
}

TEST_F(Tcam, UnknownTypesAreRefused) {
  for (uint32_t type : {4u, 5u, 256u + 1, UINT32_MAX}) EXPECT_EQ(create(type), OPEN_E_PARAM) << type;
  EXPECT_EQ(walk(), ids());
}

TEST_F(Tcam, HeaderOfAnotherVersionIsRefused) {
  const open_tcamPolicyHeader_t headers[] = {{{0, 0}, 12}, {{0, 2}, 12}, {{1, 1}, 12}, {{1, 0}, 12},
                                             {{0, 1}, 0},  {{0, 1}, 11}, {{0, 1}, 13}};
  for (const open_tcamPolicyHeader_t &header : headers) {
    record policy = plain_policy();
    policy.policyHeader = header;
    EXPECT_EQ(create(policy), OPEN_E_PARAM) << all_of(policy);
  }
}

/* A member with its largest good value, and how it is set. */
const struct {
  const char *name;
  uint32_t max;
  void (*set)(record *, uint32_t);
} limited_members[] = {
    {"matchVlanVal", 4094, [](record *p, uint32_t v) { p->matchVlanVal = static_cast<uint16_t>(v); }},
    {"matchVlanPrio", 7, [](record *p, uint32_t v) { p->matchVlanPrio = static_cast<uint8_t>(v); }},
    {"matchIpProto", 255, [](record *p, uint32_t v) { p->matchIpProto = v; }},
    {"matchIpDscp", 63, [](record *p, uint32_t v) { p->matchIpDscp = v; }},
    {"vlanVal", 4094, [](record *p, uint32_t v) { p->actionVal.vlanVal = static_cast<uint16_t>(v); }},
    {"vlanPrio", 7, [](record *p, uint32_t v) { p->actionVal.vlanPrio = static_cast<uint8_t>(v); }},
    {"dscp", 63, [](record *p, uint32_t v) { p->actionVal.dscp = static_cast<uint8_t>(v); }},
    {"etherType", 65535, [](record *p, uint32_t v) { p->actionVal.etherType = v; }},
};

TEST_F(Tcam, NumbersAboveTheirRangeAreRefused) {
  for (const auto &[name, max, set] : limited_members) {
    record policy = largest_policy();
    set(&policy, max);
    EXPECT_GT(create(policy), 0) << name;
    set(&policy, max + 1);
    EXPECT_EQ(create(policy), OPEN_E_PARAM) << name;
    set(&policy, UINT32_MAX);
    EXPECT_EQ(create(policy), OPEN_E_PARAM) << name;
  }
}

TEST_F(Tcam, NewVlanIsAVlanIdWhenAskedFor) {
  record policy = largest_policy();
  policy.actionVal.vlanVal = 0;
  EXPECT_EQ(create(policy), OPEN_E_PARAM);
  policy.actionVal.vlanVal = 1;
  EXPECT_EQ(create(policy), 1);
}

TEST_F(Tcam, OnlyTheEightActionsAreKnown) {
  for (uint32_t bit = 0; bit < 32; bit++) {
    record policy = plain_policy();
    policy.actionType = 1u << bit;
    policy.actionVal.vlanVal = 10;
    policy.actionVal.ifNum = 1;
    if (bit < 8) {
      EXPECT_GT(create(policy), 0) << bit;
    } else {
      EXPECT_EQ(create(policy), OPEN_E_PARAM) << bit;
    }
  }
}

TEST_F(Tcam, ArgumentsOfActionsNotAskedForDoNotCountAndAreNotKept) {
  record policy = plain_policy();
  memset(&policy.actionVal, 0xff, sizeof policy.actionVal);
  memset(policy.reserved, 0xff, sizeof policy.reserved);
  ASSERT_EQ(create(policy), 1);
  EXPECT_EQ(read(1), all_of(plain_policy()));

  policy.actionType = OPEN_TCAM_ACTION_DROP | OPEN_TCAM_ACTION_REDIRECT_TO_CPU;
  ASSERT_EQ(create(policy), 2);
  record expected = plain_policy();
  expected.actionType = policy.actionType;
  EXPECT_EQ(read(2), all_of(expected));

  policy.actionType = OPEN_TCAM_ACTION_ALL & ~OPEN_TCAM_ACTION_USERPRIO;
  policy.actionVal.ifNum = 1;
  policy.actionVal.vlanVal = 10;
  policy.actionVal.etherType = 0x88a8;
  ASSERT_EQ(create(policy), 3);
  expected = policy;
  memset(expected.reserved, 0, sizeof expected.reserved);
  expected.actionVal.vlanPrio = expected.actionVal.dscp = 0;
  EXPECT_EQ(read(3), all_of(expected));
}

/* Lines of the configuration cannot say what does not count; the model takes it from whoever else makes
 * policies. */
TEST(TcamModel, PolicyIsKeptInNormalForm) {
  softswitch::switch_model model = softswitch::make_switch(softswitch::built_in_profile());
  record policy = plain_policy(0);
  memset(&policy.actionVal, 0xff, sizeof policy.actionVal);
  memset(policy.reserved, 0xff, sizeof policy.reserved);
  ASSERT_EQ(softswitch::tcam_policy_create(model, 640, policy), OPEN_E_NONE);
  EXPECT_EQ(all_of(softswitch::tcam_policy_find(model, 640)->record), all_of(plain_policy()));
  EXPECT_EQ(softswitch::tcam_policy_create(model, 640, policy), OPEN_E_EXISTS);
  EXPECT_EQ(softswitch::tcam_policy_create(model, 0, policy), OPEN_E_PARAM);
  EXPECT_EQ(softswitch::tcam_policy_create(model, 641, policy), OPEN_E_PARAM);
}

TEST_F(Tcam, OnlyGenPoliciesMatchIpv6) {
  void (*const setters[])(record *) = {[](record *p) { p->matchSrcIpv6Addr.addr8[15] = 1; },
                                       [](record *p) { p->matchSrcIpv6Mask.addr8[0] = 1; },
                                       [](record *p) { p->matchDstIpv6Addr.addr8[7] = 1; },
                                       [](record *p) { p->matchDstIpv6Mask.addr8[8] = 1; }};
  for (auto set : setters) {
    for (uint32_t type : {0u, 1u, 3u}) {
      record policy = plain_policy(type);
      set(&policy);
      EXPECT_EQ(create(policy), OPEN_E_PARAM) << all_of(policy);
    }
    record policy = plain_policy(OPEN_TCAM_POLICY_GEN);
    set(&policy);
    EXPECT_GT(create(policy), 0);
  }
}

TEST_F(Tcam, RedirectTargetIsAnExistingPortOrLag) {
  record policy = plain_policy();
  policy.actionType = OPEN_TCAM_ACTION_REDIRECT;
  for (const auto &[interface, result] : not_switching) {
    policy.actionVal.ifNum = interface;
    EXPECT_EQ(create(policy), result) << interface;
  }
  for (uint32_t interface : {1u, 54u, 56u, 119u}) {
    policy.actionVal.ifNum = interface;
    EXPECT_GT(create(policy), 0) << interface;
  }
  ASSERT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 60), OPEN_E_NONE);
  policy.actionVal.ifNum = 60;
  EXPECT_EQ(create(policy), OPEN_E_NOT_FOUND);
}

} // namespace
