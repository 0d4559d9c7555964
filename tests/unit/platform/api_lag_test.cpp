/* Tests of link aggregation through the C interface: every result code of every function, what membership
 * means for VLANs, and LAGs that are deleted and come back. */
#include "tests/unit/platform/membership_test_support.h"

namespace {

using numbers = std::vector<uint32_t>;
using pending = std::vector<int>;

/* Numbers of interfaces that are no LAGs, and of none. */
const refused_number no_lags[] = {{1, OPEN_E_NOT_FOUND},     {54, OPEN_E_NOT_FOUND},  {55, OPEN_E_NOT_FOUND},
                                  {120, OPEN_E_NOT_FOUND},   {353, OPEN_E_NOT_FOUND}, {0, OPEN_E_PARAM},
                                  {128, OPEN_E_PARAM},       {225, OPEN_E_PARAM},     {354, OPEN_E_PARAM},
                                  {UINT32_MAX, OPEN_E_PARAM}};
const refused_number no_ports[] = {
    {55, OPEN_E_NOT_FOUND},  {56, OPEN_E_NOT_FOUND},  {119, OPEN_E_NOT_FOUND},
    {120, OPEN_E_NOT_FOUND}, {353, OPEN_E_NOT_FOUND}, {0, OPEN_E_PARAM},
    {128, OPEN_E_PARAM},     {354, OPEN_E_PARAM},     {UINT32_MAX, OPEN_E_PARAM}};

class Lags : public MembershipTest {
protected:
  open_error_t create_lag(uint32_t lag) { return rpcclt_openapiLagCreateZYL(&handle, lag); }
  open_error_t delete_lag(uint32_t lag) { return rpcclt_openapiLagDeleteZYL(&handle, lag); }

  open_error_t read_name(uint32_t lag, uint32_t size, std::string *name) {
    std::vector<char> buffer(size + 1, '?');
    open_buffdesc text = {size, buffer.data()};
    open_error_t rc = rpcclt_openapiLagNameGet(&handle, lag, &text);
    if (rc == OPEN_E_NONE) name->assign(buffer.data(), text.size);
    EXPECT_EQ(buffer[size], '?');
    return rc;
  }

  numbers walk() {
    numbers found;
    uint32_t lag = 0;
    while (rpcclt_openapiIfNextGet(&handle, OPEN_INTF_TYPE_LAG, OPEN_INTF_STATE_ANY, lag, &lag) ==
           OPEN_E_NONE)
      found.push_back(lag);
    return found;
  }

  uint32_t value;
};

/* --- Numbers and names ---------------------------------------------------------------------------------- */

TEST_F(Lags, PortChannelIdsAndInterfaceNumbersGoBothWays) {
  for (uint32_t id = 1; id <= 64; id++) {
    ASSERT_EQ(rpcclt_openapiLagPortChannelIdToIfNumZYL(&handle, id, &value), OPEN_E_NONE);
    EXPECT_EQ(value, 55 + id);
    ASSERT_EQ(rpcclt_openapiLagIfNumToPortChannelIdZYL(&handle, 55 + id, &value), OPEN_E_NONE);
    EXPECT_EQ(value, id);
  }
  for (uint32_t id : {0u, 65u, UINT32_MAX})
    EXPECT_EQ(rpcclt_openapiLagPortChannelIdToIfNumZYL(&handle, id, &value), OPEN_E_NOT_FOUND) << id;
  for (const auto &[number, result] : no_lags)
    EXPECT_EQ(rpcclt_openapiLagIfNumToPortChannelIdZYL(&handle, number, &value), result) << number;
}

TEST_F(Lags, NumbersAreTranslatedForDeletedLagsToo) {
  ASSERT_EQ(delete_lag(60), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiLagPortChannelIdToIfNumZYL(&handle, 5, &value), OPEN_E_NONE);
  EXPECT_EQ(value, 60u);
  ASSERT_EQ(rpcclt_openapiLagIfNumToPortChannelIdZYL(&handle, 60, &value), OPEN_E_NONE);
  EXPECT_EQ(value, 5u);
}

TEST_F(Lags, NameTellsThePortChannelAndFitsTheBufferOfTheToldSize) {
  std::string name;
  ASSERT_EQ(rpcclt_openapiLagNameMaxLengthGet(&handle, &value), OPEN_E_NONE);
  EXPECT_EQ(value, 6u);
  EXPECT_EQ(read_name(56, value, &name), OPEN_E_NONE);
  EXPECT_EQ(name, "lag1");
  EXPECT_EQ(read_name(119, value, &name), OPEN_E_NONE);
  EXPECT_EQ(name, "lag64");
  EXPECT_EQ(read_name(119, 5, &name), OPEN_E_PARAM);
  EXPECT_EQ(read_name(56, 5, &name), OPEN_E_NONE);
  EXPECT_EQ(read_name(56, 0, &name), OPEN_E_PARAM);
}

TEST_F(Lags, EveryFunctionRefusesWhatIsNoLag) {
  std::string name;
  uint32_t ports[1], count;
  for (const auto &[number, result] : no_lags) {
    count = 1;
    EXPECT_EQ(read_name(number, 6, &name), result) << number;
    EXPECT_EQ(create_lag(number), result) << number;
    EXPECT_EQ(delete_lag(number), result) << number;
    EXPECT_EQ(rpcclt_openapiLagMembersGet(&handle, number, &count, ports), result) << number;
    EXPECT_EQ(add_port(number, 1), result) << number;
    EXPECT_EQ(remove_port(number, 1), result) << number;
  }
  EXPECT_EQ(softswitch::running_config(), "");
}

/* --- Members -------------------------------------------------------------------------------------------- */

TEST_F(Lags, MembersAreReadInAscendingOrder) {
  EXPECT_EQ(members(56), numbers());
  for (uint32_t port : {7u, 54u, 1u, 30u}) ASSERT_EQ(add_port(56, port), OPEN_E_NONE);
  EXPECT_EQ(members(56), (numbers{1, 7, 30, 54}));
  EXPECT_EQ(members(57), numbers());
  ASSERT_EQ(remove_port(56, 7), OPEN_E_NONE);
  EXPECT_EQ(members(56), (numbers{1, 30, 54}));
}

TEST_F(Lags, MembersThatDoNotFitAreRefusedAndNothingIsWritten) {
  ASSERT_EQ(add_port(56, 3), OPEN_E_NONE);
  ASSERT_EQ(add_port(56, 4), OPEN_E_NONE);
  uint32_t ports[3] = {99, 99, 99}, count = 1;
  EXPECT_EQ(rpcclt_openapiLagMembersGet(&handle, 56, &count, ports), OPEN_E_PARAM);
  EXPECT_EQ(ports[0], 99u);
  count = 0;
  EXPECT_EQ(rpcclt_openapiLagMembersGet(&handle, 56, &count, ports), OPEN_E_PARAM);
  count = 2;
  ASSERT_EQ(rpcclt_openapiLagMembersGet(&handle, 56, &count, ports), OPEN_E_NONE);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ((numbers{ports[0], ports[1], ports[2]}), (numbers{3, 4, 99}));
  count = 0;
  EXPECT_EQ(rpcclt_openapiLagMembersGet(&handle, 57, &count, ports), OPEN_E_NONE) << "it has none";
}

TEST_F(Lags, OnlyPortsCanBeMembers) {
  for (const auto &[number, result] : no_ports) {
    EXPECT_EQ(add_port(56, number), result) << number;
    EXPECT_EQ(remove_port(56, number), result) << number;
  }
  EXPECT_EQ(add_port(55, 9999), OPEN_E_NOT_FOUND) << "the LAG is checked first";
}

TEST_F(Lags, PortIsAMemberOfOneLagAtMost) {
  ASSERT_EQ(add_port(56, 1), OPEN_E_NONE);
  EXPECT_EQ(add_port(56, 1), OPEN_E_EXISTS);
  EXPECT_EQ(add_port(57, 1), OPEN_E_FAIL);
  EXPECT_EQ(remove_port(57, 1), OPEN_E_NOT_FOUND);
  EXPECT_EQ(remove_port(56, 2), OPEN_E_NOT_FOUND);
  ASSERT_EQ(remove_port(56, 1), OPEN_E_NONE);
  EXPECT_EQ(remove_port(56, 1), OPEN_E_NOT_FOUND);
  EXPECT_EQ(add_port(57, 1), OPEN_E_NONE);
  EXPECT_EQ(members(57), numbers{1});
}

TEST_F(Lags, LagHoldsAtMost32Members) {
  ASSERT_EQ(rpcclt_openapiLagMaxMemberCountGet(&handle, &value), OPEN_E_NONE);
  EXPECT_EQ(value, 32u);
  for (uint32_t port = 1; port <= 32; port++) ASSERT_EQ(add_port(56, port), OPEN_E_NONE);
  EXPECT_EQ(add_port(56, 33), OPEN_E_FULL);
  EXPECT_EQ(add_port(56, 32), OPEN_E_EXISTS) << "what is a member is not one more";
  EXPECT_EQ(members(56).size(), 32u);
  EXPECT_EQ(add_port(57, 33), OPEN_E_NONE);
  EXPECT_EQ(add_port(56, 33), OPEN_E_FAIL) << "a member of another LAG, full or not";
  ASSERT_EQ(remove_port(56, 1), OPEN_E_NONE);
  EXPECT_EQ(add_port(56, 34), OPEN_E_NONE);
}

TEST_F(Lags, LoweredLimitRefusesFurtherMembersAndKeepsThoseThereAre) {
  for (uint32_t port = 1; port <= 3; port++) ASSERT_EQ(add_port(56, port), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::set_limit("lag-members", 2));
  EXPECT_FALSE(softswitch::set_limit("lag-members", 33));
  EXPECT_EQ(add_port(56, 4), OPEN_E_FULL);
  EXPECT_EQ(members(56), (numbers{1, 2, 3}));
  ASSERT_EQ(rpcclt_openapiLagMaxMemberCountGet(&handle, &value), OPEN_E_NONE);
  EXPECT_GE(value, 3u) << "who makes room for so many has room for all";
}

/* --- What membership means for VLANs -------------------------------------------------------------------- */

TEST_F(Lags, PortInALagIsAMemberOfNoVlanWhateverItsMode) {
  configure("vlan 10,20\n"
            "interface 0/1 vlan 10 participation include\n"
            "interface 0/1 vlan 10 tagging\n"
            "interface 0/1 pvid 10\n"
            "interface 0/1 switchport access vlan 20\n"
            "interface 0/1 switchport trunk native vlan 1\n"
            "interface 0/1 switchport trunk vlans add 10,20\n");
  ASSERT_EQ(add_port(56, 1), OPEN_E_NONE);
  const std::pair<uint32_t, uint32_t> pvids[] = {{general, 10}, {access_mode, 20}, {trunk, 1}};
  for (auto [to, wanted_pvid] : pvids) {
    ASSERT_EQ(set_mode(1, to), OPEN_E_NONE);
    for (uint32_t vlan : {1u, 10u, 20u}) EXPECT_EQ(part_in(vlan, 1), excluded) << vlan << " in mode " << to;
    EXPECT_EQ(pvid(1), wanted_pvid) << "mode " << to;
  }
}

TEST_F(Lags, LagTakesPartInVlansByItsOwnSettings) {
  configure("vlan 10\ninterface 0/1 vlan 10 participation include\n");
  ASSERT_EQ(add_port(56, 1), OPEN_E_NONE);
  EXPECT_EQ(part_in(1, 56), untagged_member);
  EXPECT_EQ(part_in(10, 56), stranger) << "members bring nothing along";
  ASSERT_EQ(rpcclt_openapiVlanIfParticipationSet(&handle, 10, 56, include), OPEN_E_NONE);
  EXPECT_EQ(part_in(10, 56), untagged_member);
  EXPECT_EQ(part_in(10, 1), excluded);
}

TEST_F(Lags, SettingsOfAPortCountAgainWhenItLeaves) {
  configure("vlan 10,20\n"
            "interface 0/1 vlan 10 participation include\n"
            "interface 0/1 lag 1\n"
            "interface 0/1 vlan 10 tagging\n"
            "interface 0/1 pvid 20\n");
  EXPECT_EQ(part_in(10, 1), excluded);
  ASSERT_EQ(remove_port(56, 1), OPEN_E_NONE);
  EXPECT_EQ(part_in(1, 1), untagged_member);
  EXPECT_EQ(part_in(10, 1), tagged_member);
  EXPECT_EQ(part_in(20, 1), stranger);
  EXPECT_EQ(pvid(1), 20u);
}

TEST_F(Lags, AccessVlanOfAMemberFallsBackWhenDeleted) {
  configure("vlan 10\n"
            "interface 0/1 switchport mode access\n"
            "interface 0/1 switchport access vlan 10\n"
            "interface 0/1 lag 1\n");
  take_and_hold();
  delete_vlan(10);
  EXPECT_EQ(pvid(1), 1u);
  EXPECT_EQ(part_in(1, 1), excluded);
  EXPECT_EQ(pending_interfaces(), pending{1});
  EXPECT_EQ(pending_vlans(), pending{-10}) << "in VLAN 1 nothing changes";
}

TEST_F(Lags, ChangeOfMembersIsPendingForPortLagAndTheVlansThePortWasIn) {
  configure("vlan 10,20\ninterface 0/1 vlan 10 participation include\n");
  take_and_hold();
  ASSERT_EQ(add_port(60, 1), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), (pending{1, 60}));
  EXPECT_EQ(pending_vlans(), (pending{1, 10}));
  take_and_hold();
  ASSERT_EQ(remove_port(60, 1), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), (pending{1, 60}));
  EXPECT_EQ(pending_vlans(), (pending{1, 10}));
}

TEST_F(Lags, RefusedCallsChangeNothing) {
  configure("interface 0/1 lag 1\n");
  take_and_hold();
  std::string before = journal();
  EXPECT_EQ(add_port(56, 1), OPEN_E_EXISTS);
  EXPECT_EQ(add_port(57, 1), OPEN_E_FAIL);
  EXPECT_EQ(remove_port(57, 1), OPEN_E_NOT_FOUND);
  EXPECT_EQ(create_lag(56), OPEN_E_EXISTS);
  EXPECT_EQ(journal(), before);
  EXPECT_EQ(pending_interfaces(), pending());
  EXPECT_EQ(pending_vlans(), pending());
}

/* --- LAGs that come and go ------------------------------------------------------------------------------ */

TEST_F(Lags, AllAreThereInFactoryState) {
  numbers all;
  for (uint32_t lag = 56; lag <= 119; lag++) all.push_back(lag);
  EXPECT_EQ(walk(), all);
  for (uint32_t lag : all) EXPECT_EQ(create_lag(lag), OPEN_E_EXISTS) << lag;
}

TEST_F(Lags, DeletedLagIsGoneForEveryFunction) {
  ASSERT_EQ(delete_lag(56), OPEN_E_NONE);
  EXPECT_EQ(delete_lag(56), OPEN_E_NOT_FOUND);
  EXPECT_EQ(walk().size(), 63u);
  EXPECT_EQ(walk()[0], 57u);
  std::string name;
  uint32_t ports[1], count = 1;
  EXPECT_EQ(read_name(56, 6, &name), OPEN_E_NOT_FOUND);
  EXPECT_EQ(rpcclt_openapiLagMembersGet(&handle, 56, &count, ports), OPEN_E_NOT_FOUND);
  EXPECT_EQ(add_port(56, 1), OPEN_E_NOT_FOUND);
  EXPECT_EQ(remove_port(56, 1), OPEN_E_NOT_FOUND);
  EXPECT_EQ(rpcclt_openapiIfSwitchportModeGet(&handle, 56, &value), OPEN_E_NOT_FOUND);
  EXPECT_EQ(set_mode(56, trunk), OPEN_E_NOT_FOUND);
  EXPECT_EQ(openapiVlanIfPvidGet(&handle, 56, &value), OPEN_E_NOT_FOUND);
  EXPECT_EQ(rpcclt_openapiVlanIfAcceptFrameTypeGet(&handle, 56, &value), OPEN_E_NOT_FOUND);
  EXPECT_EQ(openapiVlanIfParticipationStatusGet(&handle, 1, 56, &value), OPEN_E_NOT_FOUND);
  EXPECT_EQ(rpcclt_openapiVlanIfParticipationSet(&handle, 1, 56, include), OPEN_E_NOT_FOUND);
  EXPECT_EQ(softswitch::running_config(), "no lag 1\n");
}

TEST_F(Lags, DeletedLagLetsItsMembersGo) {
  configure("vlan 10\ninterface 0/2 vlan 10 participation include\n"
            "interface 0/1 lag 1\ninterface 0/2 lag 1\ninterface 0/3 lag 2\n");
  take_and_hold();
  ASSERT_EQ(delete_lag(56), OPEN_E_NONE);
  EXPECT_EQ(part_in(1, 1), untagged_member);
  EXPECT_EQ(part_in(10, 2), untagged_member);
  EXPECT_EQ(members(57), numbers{3});
  EXPECT_EQ(pending_interfaces(), (pending{1, 2, -56}));
  EXPECT_EQ(pending_vlans(), (pending{1, 10}));
  EXPECT_EQ(add_port(57, 1), OPEN_E_NONE);
}

TEST_F(Lags, DeletedLagTakesAllItsSettingsAlong) {
  configure("vlan 10,20,30,40\n"
            "interface 3/1 vlan 1 participation exclude\n"
            "interface 3/1 vlan 10 participation include\n"
            "interface 3/1 vlan 20 participation exclude\n"
            "interface 3/1 vlan 30 tagging\n"
            "interface 3/1 pvid 10\n"
            "interface 3/1 accept-frames tagged\n"
            "interface 3/1 switchport mode access\n"
            "interface 3/1 switchport access vlan 40\n"
            "interface 3/1 switchport trunk native vlan 20\n"
            "interface 3/1 switchport trunk vlans add 2-4094\n");
  take_and_hold();
  ASSERT_EQ(delete_lag(56), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), pending{-56});
  EXPECT_EQ(pending_vlans(), (pending{1, 10, 20, 30, 40}));
  EXPECT_EQ(softswitch::running_config(), "vlan 10,20,30,40\nno lag 1\n");
  ASSERT_EQ(create_lag(56), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "vlan 10,20,30,40\n");
  EXPECT_EQ(mode(56), general);
  EXPECT_EQ(pvid(56), 1u);
  EXPECT_EQ(accept_frames(56), OPEN_DOT1Q_ADMIT_ALL);
  EXPECT_EQ(part_in(1, 56), untagged_member);
  for (uint32_t vlan : {10u, 20u, 30u, 40u}) EXPECT_EQ(part_in(vlan, 56), stranger) << vlan;
  EXPECT_EQ(members(56), numbers());
}

TEST_F(Lags, MadeAgainBeforeTheDataPlaneHasNoticedIsAPendingChange) {
  softswitch::hold_apply(true);
  ASSERT_EQ(delete_lag(119), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), pending{-119});
  ASSERT_EQ(create_lag(119), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), pending{119});
  EXPECT_EQ(pending_vlans(), pending{1});
  take_and_hold();
  EXPECT_EQ(pending_interfaces(), pending());
}

TEST_F(Lags, DeletedLagIsNotPendingOnceTaken) {
  ASSERT_EQ(delete_lag(56), OPEN_E_NONE);
  take_and_hold();
  EXPECT_EQ(pending_interfaces(), pending());
  EXPECT_EQ(walk().size(), 63u);
}

TEST_F(Lags, ReloadBringsAllOfThemBack) {
  for (uint32_t lag = 56; lag <= 119; lag++) ASSERT_EQ(delete_lag(lag), OPEN_E_NONE);
  EXPECT_EQ(walk(), numbers());
  std::string error;
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_EQ(walk().size(), 64u);
  EXPECT_EQ(part_in(1, 119), untagged_member);
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Lags, ReloadKeepsThoseDeletedThatTheStartupConfigurationDeletes) {
  configure("no lag 2\ninterface 0/1 lag 1\n");
  std::string error;
  ASSERT_TRUE(softswitch::save_startup_config(&error)) << error;
  configure("lag 2\nno lag 1\n");
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_EQ(softswitch::running_config(), "no lag 2\ninterface 0/1 lag 1\n");
  EXPECT_EQ(members(56), numbers{1});
}

TEST_F(Lags, EachCallIsOneLineOfTheJournalAndAReplayGivesTheSame) {
  softswitch::hold_apply(true);
  ASSERT_EQ(add_port(56, 1), OPEN_E_NONE);
  ASSERT_EQ(add_port(56, 2), OPEN_E_NONE);
  ASSERT_EQ(remove_port(56, 1), OPEN_E_NONE);
  ASSERT_EQ(delete_lag(119), OPEN_E_NONE);
  ASSERT_EQ(create_lag(119), OPEN_E_NONE);
  ASSERT_EQ(delete_lag(118), OPEN_E_NONE);
  EXPECT_EQ(journal(), "interface 0/1 lag 1\n"
                       "interface 0/2 lag 1\n"
                       "no interface 0/1 lag\n"
                       "no lag 64\n"
                       "lag 64\n"
                       "no lag 63\n");
  restart();
  EXPECT_EQ(members(56), numbers{2});
  EXPECT_EQ(walk().size(), 63u);
  EXPECT_EQ(part_in(1, 2), excluded);
  EXPECT_EQ(pending_interfaces(), pending());
}

} // namespace
