/* Tests of the TCAM functions of the C interface: every result code of every function, and what they do. What
 * policies are made of is api_tcam_records_test.cpp, what the TCAM is used for tcam_usage_test.cpp. */
#include "platform/api/openapi_lag.h"
#include "platform/api/openapi_tcam.h"

#include "tests/support/full_disk.h"
#include "tests/unit/platform/tcam_test_support.h"

#include <string.h>

namespace {

using record = open_tcamApiPolicy_t;

/* --- Ids and walks -------------------------------------------------------------------------------------- */

TEST_F(Tcam, NewPolicyGetsTheLowestFreeId) {
  for (int id = 1; id <= 4; id++) EXPECT_EQ(create(), id);
  ASSERT_EQ(destroy(2), OPEN_E_NONE);
  ASSERT_EQ(destroy(3), OPEN_E_NONE);
  restart();
  EXPECT_EQ(create(OPEN_TCAM_POLICY_EGRESS), 2) << "types share their ids";
  EXPECT_EQ(create(), 3);
  EXPECT_EQ(create(), 5);
}

TEST_F(Tcam, RefusedPolicyTakesNoId) {
  EXPECT_EQ(create(7u), OPEN_E_PARAM);
  EXPECT_EQ(create(), 1);
}

TEST_F(Tcam, EqualPoliciesAreTwoPolicies) {
  EXPECT_EQ(create(largest_policy()), 1);
  EXPECT_EQ(create(largest_policy()), 2);
  EXPECT_EQ(walk(), (ids{1, 2}));
}

TEST_F(Tcam, WalkGoesInTheOrderOfIdsAndOnAfterAnyNumber) {
  for (int id = 1; id <= 5; id++) ASSERT_EQ(create(1u + static_cast<uint32_t>(id) % 3), id);
  ASSERT_EQ(destroy(1), OPEN_E_NONE);
  ASSERT_EQ(destroy(4), OPEN_E_NONE);
  EXPECT_EQ(walk(), (ids{2, 3, 5}));
  EXPECT_EQ(next_after(0), 2);
  EXPECT_EQ(next_after(1), 2);
  EXPECT_EQ(next_after(3), 5);
  EXPECT_EQ(next_after(4), 5);
  for (uint32_t id : {5u, 6u, UINT32_MAX}) EXPECT_EQ(next_after(id), OPEN_E_FAIL) << id;
}

/* --- Deleting ------------------------------------------------------------------------------------------- */

TEST_F(Tcam, DeletedPolicyIsGone) {
  ASSERT_EQ(create(), 1);
  ASSERT_EQ(create(), 2);
  EXPECT_EQ(destroy(1), OPEN_E_NONE);
  EXPECT_EQ(destroy(1), OPEN_E_NOT_FOUND);
  for (uint32_t id : {0u, 3u, 641u, UINT32_MAX}) EXPECT_EQ(destroy(id), OPEN_E_NOT_FOUND) << id;
  EXPECT_EQ(read(1), std::to_string(OPEN_E_NOT_FOUND));
  EXPECT_EQ(walk(), ids{2});
}

TEST_F(Tcam, DeletingAllLeavesNoneAndIsNoFailureWhenThereIsNone) {
  EXPECT_EQ(rpcclt_openapiTcamPolicyDeleteAll(&handle), OPEN_E_NONE);
  for (uint32_t type : {1u, 2u, 3u}) ASSERT_GT(create(type), 0);
  ASSERT_EQ(apply(1, 5), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiTcamPolicyDeleteAll(&handle), OPEN_E_NONE);
  EXPECT_EQ(walk(), ids());
  EXPECT_EQ(softswitch::running_config(), "");
  EXPECT_EQ(create(), 1);
}

/* --- Ports ---------------------------------------------------------------------------------------------- */

TEST_F(Tcam, PolicyIsAppliedToPortsAndLagsAndTakenOff) {
  ASSERT_EQ(create(), 1);
  ASSERT_EQ(create(OPEN_TCAM_POLICY_EGRESS), 2);
  for (uint32_t interface : {1u, 54u, 56u, 119u}) EXPECT_EQ(apply(1, interface), OPEN_E_NONE) << interface;
  EXPECT_EQ(apply(2, 1), OPEN_E_NONE) << "a port can have several";
  EXPECT_EQ(softswitch::running_config(), "tcam policy 1 openflow\ntcam policy 2 egress\n"
                                          "interface 0/1 tcam-policy 1\ninterface 0/1 tcam-policy 2\n"
                                          "interface 0/54 tcam-policy 1\ninterface 3/1 tcam-policy 1\n"
                                          "interface 3/64 tcam-policy 1\n");
  restart_keeps_configuration();
  EXPECT_EQ(take_off(1, 1), OPEN_E_NONE);
  EXPECT_EQ(take_off(1, 56), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "tcam policy 1 openflow\ntcam policy 2 egress\n"
                                          "interface 0/1 tcam-policy 2\ninterface 0/54 tcam-policy 1\n"
                                          "interface 3/64 tcam-policy 1\n");
}

TEST_F(Tcam, PolicyIsAppliedToAPortOnlyOnce) {
  ASSERT_EQ(create(), 1);
  ASSERT_EQ(apply(1, 5), OPEN_E_NONE);
  EXPECT_EQ(apply(1, 5), OPEN_E_EXISTS);
  ASSERT_EQ(take_off(1, 5), OPEN_E_NONE);
  EXPECT_EQ(take_off(1, 5), OPEN_E_NOT_FOUND);
  EXPECT_EQ(take_off(1, 6), OPEN_E_NOT_FOUND);
  EXPECT_EQ(apply(1, 5), OPEN_E_NONE);
}

TEST_F(Tcam, UnknownPoliciesAreAppliedNowhere) {
  ASSERT_EQ(create(), 1);
  for (uint32_t id : {0u, 2u, 641u, UINT32_MAX}) {
    EXPECT_EQ(apply(id, 1), OPEN_E_NOT_FOUND) << id;
    EXPECT_EQ(take_off(id, 1), OPEN_E_NOT_FOUND) << id;
  }
}

TEST_F(Tcam, OnlyPortsAndLagsHavePolicies) {
  ASSERT_EQ(create(), 1);
  for (const auto &[interface, result] : not_switching) {
    EXPECT_EQ(apply(1, interface), result) << interface;
    EXPECT_EQ(take_off(1, interface), result) << interface;
  }
}

TEST_F(Tcam, PolicyIsNotAppliedToTheInterfaceThatItRedirectsTo) {
  record policy = plain_policy();
  policy.actionType = OPEN_TCAM_ACTION_REDIRECT;
  policy.actionVal.ifNum = 5;
  ASSERT_EQ(create(policy), 1);
  EXPECT_EQ(apply(1, 5), OPEN_E_FAIL);
  EXPECT_EQ(apply(1, 6), OPEN_E_NONE);
  EXPECT_EQ(take_off(1, 5), OPEN_E_NOT_FOUND);
}

TEST_F(Tcam, DeletingAPolicyTakesItOffItsPorts) {
  ASSERT_EQ(create(), 1);
  ASSERT_EQ(create(), 2);
  ASSERT_EQ(apply(1, 5), OPEN_E_NONE);
  ASSERT_EQ(apply(1, 119), OPEN_E_NONE);
  ASSERT_EQ(apply(2, 7), OPEN_E_NONE);
  take_and_hold();
  ASSERT_EQ(destroy(1), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), (std::vector<int>{5, 119}));
  ASSERT_EQ(create(), 1);
  EXPECT_EQ(take_off(1, 5), OPEN_E_NOT_FOUND) << "a new policy is applied nowhere";
  EXPECT_EQ(take_off(2, 7), OPEN_E_NONE);
}

TEST_F(Tcam, DeletingALagTakesItsPoliciesOff) {
  ASSERT_EQ(create(), 1);
  ASSERT_EQ(create(), 2);
  for (uint32_t interface : {56u, 57u}) ASSERT_EQ(apply(1, interface), OPEN_E_NONE);
  ASSERT_EQ(apply(2, 56), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 56), OPEN_E_NONE);
  EXPECT_EQ(apply(1, 56), OPEN_E_NOT_FOUND);
  EXPECT_EQ(take_off(1, 56), OPEN_E_NOT_FOUND);
  ASSERT_EQ(rpcclt_openapiLagCreateZYL(&handle, 56), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(),
            "tcam policy 1 openflow\ntcam policy 2 openflow\ninterface 3/2 tcam-policy 1\n");
}

TEST_F(Tcam, LagThatAPolicyRedirectsToCannotBeDeleted) {
  record policy = plain_policy(OPEN_TCAM_POLICY_EGRESS);
  policy.actionType = OPEN_TCAM_ACTION_REDIRECT | OPEN_TCAM_ACTION_DROP;
  policy.actionVal.ifNum = 60;
  ASSERT_EQ(create(policy), 1);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 60), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 61), OPEN_E_NONE);
  ASSERT_EQ(destroy(1), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 60), OPEN_E_NONE);
}

TEST_F(Tcam, ApplyingAndTakingOffMakeTheInterfacePending) {
  take_and_hold();
  ASSERT_EQ(create(), 1);
  EXPECT_EQ(pending_interfaces(), std::vector<int>()) << "a policy by itself concerns no interface";
  ASSERT_EQ(apply(1, 5), OPEN_E_NONE);
  ASSERT_EQ(apply(1, 119), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), (std::vector<int>{5, 119}));
  take_and_hold();
  EXPECT_EQ(apply(1, 5), OPEN_E_EXISTS);
  EXPECT_EQ(take_off(1, 6), OPEN_E_NOT_FOUND);
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
  ASSERT_EQ(take_off(1, 119), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), std::vector<int>{119});
}

/* --- Room ----------------------------------------------------------------------------------------------- */

TEST_F(Tcam, StagesHoldWhatTheyPromise) {
  for (int id = 1; id <= 512; id++) ASSERT_EQ(create(1u + static_cast<uint32_t>(id) % 2), id);
  for (uint32_t type : {0u, 1u, 2u}) EXPECT_EQ(create(type), OPEN_E_FULL) << type;
  for (int id = 513; id <= 640; id++) ASSERT_EQ(create(OPEN_TCAM_POLICY_EGRESS), id);
  for (uint32_t type : {1u, 2u, 3u}) EXPECT_EQ(create(type), OPEN_E_FULL) << type;
  EXPECT_EQ(walk().size(), 640u);
  ASSERT_EQ(destroy(640), OPEN_E_NONE);
  EXPECT_EQ(create(OPEN_TCAM_POLICY_GEN), OPEN_E_FULL) << "the stages have room of their own";
  EXPECT_EQ(create(OPEN_TCAM_POLICY_EGRESS), 640);
  ASSERT_EQ(destroy(7), OPEN_E_NONE);
  EXPECT_EQ(create(OPEN_TCAM_POLICY_EGRESS), OPEN_E_FULL);
  EXPECT_EQ(create(OPEN_TCAM_POLICY_GEN), 7);
}

TEST_F(Tcam, FullStageRefusesOneMoreUntilOneIsDeleted) {
  EXPECT_FALSE(softswitch::set_limit("tcam-ingress-policies", 513));
  EXPECT_FALSE(softswitch::set_limit("tcam-egress-policies", 129));
  ASSERT_TRUE(softswitch::set_limit("tcam-ingress-policies", 2));
  ASSERT_TRUE(softswitch::set_limit("tcam-egress-policies", 1));
  ASSERT_EQ(create(1u), 1);
  ASSERT_EQ(create(2u), 2);
  EXPECT_EQ(create(1u), OPEN_E_FULL);
  EXPECT_EQ(create(2u), OPEN_E_FULL);
  EXPECT_EQ(create(3u), 3);
  EXPECT_EQ(create(3u), OPEN_E_FULL);
  ASSERT_EQ(destroy(1), OPEN_E_NONE);
  EXPECT_EQ(create(2u), 1);
  ASSERT_TRUE(softswitch::set_limit("tcam-egress-policies", 0));
  EXPECT_EQ(create(3u), OPEN_E_FULL);
  EXPECT_EQ(walk(), (ids{1, 2, 3})) << "what is there stays";
}

TEST_F(Tcam, RefusalForTheRecordComesBeforeThatForRoom) {
  ASSERT_TRUE(softswitch::set_limit("tcam-ingress-policies", 0));
  record policy = plain_policy();
  policy.matchVlanPrio = 8;
  EXPECT_EQ(create(policy), OPEN_E_PARAM);
  policy.matchVlanPrio = 7;
  EXPECT_EQ(create(policy), OPEN_E_FULL);
}

TEST_F(Tcam, PolicyThatNeedsMoreSlicesThanThereAreIsRefused) {
  EXPECT_FALSE(softswitch::set_limit("tcam-ingress-slices-256", 6));
  ASSERT_TRUE(softswitch::set_limit("tcam-ingress-slices-256", 2));
  ASSERT_EQ(create(1u), 1);
  EXPECT_EQ(create(2u), OPEN_E_FULL) << "its row needs two, one is left";
  EXPECT_EQ(create(1u), 2) << "there is room in the slice that is in use";
  ASSERT_TRUE(softswitch::set_limit("tcam-ingress-slices-256", 3));
  EXPECT_EQ(create(2u), 3);
  EXPECT_EQ(create(3u), 4);
  ASSERT_EQ(destroy(4), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::set_limit("tcam-egress-slices-256", 0));
  EXPECT_EQ(create(3u), OPEN_E_FULL);
  EXPECT_EQ(walk(), (ids{1, 2, 3}));
}

/* --- Storing -------------------------------------------------------------------------------------------- */

TEST_F(Tcam, ChangeThatCannotBeStoredIsRefused) {
  ASSERT_EQ(create(), 1);
  ASSERT_EQ(apply(1, 5), OPEN_E_NONE);
  take_and_hold();
  std::string before = softswitch::running_config();
  {
    full_disk full(file_content(dir.path + "/journal-1").size());
    EXPECT_EQ(create(), OPEN_E_FAIL);
    EXPECT_EQ(destroy(1), OPEN_E_FAIL);
    EXPECT_EQ(rpcclt_openapiTcamPolicyDeleteAll(&handle), OPEN_E_FAIL);
    EXPECT_EQ(apply(1, 6), OPEN_E_FAIL);
    EXPECT_EQ(take_off(1, 5), OPEN_E_FAIL);
  }
  EXPECT_EQ(softswitch::running_config(), before);
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
  EXPECT_EQ(create(), 2);
  EXPECT_EQ(take_off(1, 5), OPEN_E_NONE);
}

TEST_F(Tcam, WhatChangesNothingIsNotStored) {
  ASSERT_EQ(create(largest_policy()), 1);
  ASSERT_EQ(apply(1, 5), OPEN_E_NONE);
  std::string config = softswitch::running_config();
  std::string journal = file_content(dir.path + "/journal-1");
  EXPECT_EQ(commit(config.substr(0, config.find('\n'))), OPEN_E_NONE);
  EXPECT_EQ(commit("interface 0/5 tcam-policy 1"), OPEN_E_NONE);
  EXPECT_EQ(file_content(dir.path + "/journal-1"), journal);
  ASSERT_EQ(rpcclt_openapiTcamPolicyDeleteAll(&handle), OPEN_E_NONE);
  journal = file_content(dir.path + "/journal-1");
  EXPECT_EQ(rpcclt_openapiTcamPolicyDeleteAll(&handle), OPEN_E_NONE);
  EXPECT_EQ(file_content(dir.path + "/journal-1"), journal);
}

TEST_F(Tcam, ReloadReturnsToWhatWasSaved) {
  ASSERT_EQ(create(largest_policy()), 1);
  ASSERT_EQ(apply(1, 5), OPEN_E_NONE);
  std::string error;
  ASSERT_TRUE(softswitch::save_startup_config(&error)) << error;
  std::string saved = softswitch::running_config();
  ASSERT_EQ(destroy(1), OPEN_E_NONE);
  ASSERT_EQ(create(3u), 1);
  ASSERT_EQ(apply(1, 6), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_EQ(softswitch::running_config(), saved);
}

/* --- Arguments and trace -------------------------------------------------------------------------------- */

/* Every function with good arguments. */
class TcamCalls : public Tcam {
protected:
  void expect_all(openapiClientHandle_t *with, open_error_t result) {
    EXPECT_EQ(rpcclt_openapiTcamPolicyCreate(with, plain_policy(), &number), result);
    EXPECT_EQ(rpcclt_openapiTcamPolicyGet(with, &number, &policy), result);
    EXPECT_EQ(rpcclt_openapiTcamPolicyDestroy(with, &number), result);
    EXPECT_EQ(rpcclt_openapiTcamPolicyDeleteAll(with), result);
    EXPECT_EQ(rpcclt_openapiTcamPolicyGetFirst(with, &policy, &number), result);
    EXPECT_EQ(rpcclt_openapiTcamPolicyGetNext(with, &number, &policy, &number), result);
    EXPECT_EQ(rpcclt_openapiTcamPolicyIntfAdd(with, &number, 1), result);
    EXPECT_EQ(rpcclt_openapiTcamPolicyIntfRem(with, &number, 1), result);
    uint32_t *n = &number;
    EXPECT_EQ(rpcclt_openapiTcamGroupStatsGetZYL(with, 1, &groups, n, n, n, n), result);
    EXPECT_EQ(rpcclt_openapiTcamGroupStatsIngressSlicesCountGetZYL(with, n, n, n, n, n, n), result);
    EXPECT_EQ(rpcclt_openapiTcamGroupStatsEgressSlicesCountGetZYL(with, n, n, n), result);
    char buffer[32];
    open_buffdesc name = {sizeof buffer, buffer};
    EXPECT_EQ(rpcclt_openapiTcamHapiBroadPolicyTypeNameGetZYL(with, 1, &name), result);
  }

  uint32_t number = 1;
  record policy;
  open_zylUsmdbTcamGroupsStats_t groups;
};

TEST_F(TcamCalls, NullHandleIsRefused) {
  expect_all(nullptr, OPEN_E_PARAM);
}

TEST_F(TcamCalls, UnregisteredHandleIsRefused) {
  openapiClientHandle_t stranger;
  memset(&stranger, 0, sizeof stranger);
  expect_all(&stranger, OPEN_E_RPC);
}

TEST_F(TcamCalls, NullPointersAreRefused) {
  ASSERT_EQ(create(), 1);
  uint32_t *n = &number;
  EXPECT_EQ(rpcclt_openapiTcamPolicyCreate(&handle, plain_policy(), nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiTcamPolicyGet(&handle, nullptr, &policy), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiTcamPolicyGet(&handle, n, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiTcamPolicyDestroy(&handle, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiTcamPolicyGetFirst(&handle, nullptr, n), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiTcamPolicyGetFirst(&handle, &policy, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiTcamPolicyGetNext(&handle, nullptr, &policy, n), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiTcamPolicyGetNext(&handle, n, nullptr, n), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiTcamPolicyGetNext(&handle, n, &policy, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiTcamPolicyIntfAdd(&handle, nullptr, 1), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiTcamPolicyIntfRem(&handle, nullptr, 1), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiTcamGroupStatsGetZYL(&handle, 1, nullptr, n, n, n, n), OPEN_E_PARAM);
  for (int missing = 0; missing < 4; missing++) {
    uint32_t *at[] = {n, n, n, n};
    at[missing] = nullptr;
    EXPECT_EQ(rpcclt_openapiTcamGroupStatsGetZYL(&handle, 1, &groups, at[0], at[1], at[2], at[3]),
              OPEN_E_PARAM);
  }
  for (int missing = 0; missing < 6; missing++) {
    uint32_t *at[] = {n, n, n, n, n, n};
    at[missing] = nullptr;
    EXPECT_EQ(rpcclt_openapiTcamGroupStatsIngressSlicesCountGetZYL(&handle, at[0], at[1], at[2], at[3], at[4],
                                                                   at[5]),
              OPEN_E_PARAM);
    if (missing >= 3) continue;
    EXPECT_EQ(rpcclt_openapiTcamGroupStatsEgressSlicesCountGetZYL(&handle, at[0], at[1], at[2]),
              OPEN_E_PARAM);
  }
  open_buffdesc nowhere = {32, nullptr};
  EXPECT_EQ(rpcclt_openapiTcamHapiBroadPolicyTypeNameGetZYL(&handle, 1, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiTcamHapiBroadPolicyTypeNameGetZYL(&handle, 1, &nowhere), OPEN_E_PARAM);
  EXPECT_EQ(walk(), ids{1});
}

TEST_F(TcamCalls, TraceShowsTheRecordAsItWasPassed) {
  softswitch::stop();
  setenv("KESTREL_TRACE", "platform", 1);
  testing::internal::CaptureStderr();
  openapiClientRegister("tracer", &handle);
  record given = plain_policy(9);
  given.actionVal.ifNum = 3;
  rpcclt_openapiTcamPolicyCreate(&handle, given, &number);
  memset(&given, 0, sizeof given);
  rpcclt_openapiTcamPolicyCreate(&handle, given, &number);
  given = plain_policy();
  given.policyPrio = 70000;
  given.matchDstMac[0] = 0xab;
  given.matchVlanPrio = 7;
  given.matchEthType = 2048;
  given.matchSrcIp = 0x0a000001;
  given.matchSrcIpMask = UINT32_MAX;
  given.actionType = OPEN_TCAM_ACTION_REDIRECT;
  given.actionVal.ifNum = 3;
  rpcclt_openapiTcamPolicyCreate(&handle, given, &number);
  rpcclt_openapiTcamPolicyGet(&handle, &number, &policy);
  rpcclt_openapiTcamPolicyIntfAdd(&handle, &number, 3);
  rpcclt_openapiTcamPolicyGetNext(&handle, nullptr, &policy, &number);
  std::string trace = testing::internal::GetCapturedStderr();
  unsetenv("KESTREL_TRACE");
  EXPECT_EQ(
      trace,
      "platform: openapiClientRegister(\"tracer\") = 0\n"
      "platform: rpcclt_openapiTcamPolicyCreate("
      "{versionMinor=1 headerLen=12 policyType=9 ifNum=3}) = -22\n"
      "platform: rpcclt_openapiTcamPolicyCreate({}) = -22\n"
      "platform: rpcclt_openapiTcamPolicyCreate("
      "{versionMinor=1 headerLen=12 policyType=1 policyPrio=70000 matchDstMac=ab0000000000 matchVlanPrio=7 "
      "matchEthType=2048 matchSrcIp=10.0.0.1 matchSrcIpMask=255.255.255.255 actionType=2 ifNum=3}) = 0 -> 1\n"
      "platform: rpcclt_openapiTcamPolicyGet(1) = 0\n"
      "platform: rpcclt_openapiTcamPolicyIntfAdd(1, 3) = -26\n"
      "platform: rpcclt_openapiTcamPolicyGetNext(null) = -22\n");
}

} // namespace
