/* Tests of the VLAN functions of the C interface: every result code of every function, and what they do. */
#include "tests/unit/platform/membership_test_support.h"

namespace {

class Vlans : public MembershipTest {
protected:
  std::vector<uint32_t> walk() {
    std::vector<uint32_t> found;
    uint32_t vlan = 0;
    while (rpcclt_openapiVlanNextGet(&handle, vlan, &vlan) == OPEN_E_NONE) found.push_back(vlan);
    return found;
  }

  uint32_t participation(uint32_t vlan, uint32_t interface) {
    uint32_t mode = 99;
    EXPECT_EQ(rpcclt_openapiVlanIfParticipationGet(&handle, vlan, interface, &mode), OPEN_E_NONE);
    return mode;
  }

  uint32_t is_member(uint32_t vlan, uint32_t interface) {
    uint32_t member = 99;
    EXPECT_EQ(openapiVlanIfParticipationStatusGet(&handle, vlan, interface, &member), OPEN_E_NONE);
    return member;
  }

  uint32_t tagging(uint32_t interface, uint32_t vlan) {
    uint32_t tagged = 99;
    EXPECT_EQ(openapiVlanIfTaggingGet(&handle, interface, vlan, &tagged), OPEN_E_NONE);
    return tagged;
  }

  uint32_t value;
};

/* --- Existence ------------------------------------------------------------------------------------------ */

TEST_F(Vlans, FactorySwitchHasVlanOneWithEverybodyUntagged) {
  EXPECT_EQ(walk(), std::vector<uint32_t>{1});
  EXPECT_EQ(name_of(1), "default");
  EXPECT_EQ(openapiVlanIsStatic(&handle, 1), 1u);
  for (uint32_t interface = 1; interface <= 119; interface++) {
    if (interface == 55) continue;
    EXPECT_EQ(participation(1, interface), OPEN_VLAN_PARTICIPATION_MODE_INCLUDE);
    EXPECT_EQ(is_member(1, interface), 1u);
    EXPECT_EQ(tagging(interface, 1), 0u);
    EXPECT_EQ(pvid(interface), 1u);
    EXPECT_EQ(accept_frames(interface), OPEN_DOT1Q_ADMIT_ALL);
  }
  EXPECT_EQ(softswitch::running_config(), "");
  EXPECT_EQ(pending_vlans(), std::vector<int>());
}

TEST_F(Vlans, CreatedCheckTellsAbsentFromImpossible) {
  EXPECT_EQ(openapiVlanCreatedCheck(&handle, 1), OPEN_E_NONE);
  EXPECT_EQ(openapiVlanCreatedCheck(&handle, 2), OPEN_E_FAIL);
  EXPECT_EQ(openapiVlanCreatedCheck(&handle, 4094), OPEN_E_FAIL);
  EXPECT_EQ(openapiVlanCreatedCheck(&handle, 0), OPEN_E_PARAM);
  EXPECT_EQ(openapiVlanCreatedCheck(&handle, 4095), OPEN_E_PARAM);
  EXPECT_EQ(openapiVlanCreatedCheck(&handle, UINT32_MAX), OPEN_E_PARAM);
}

TEST_F(Vlans, HighestIdIs4094) {
  ASSERT_EQ(rpcclt_openapiDot1VlanMaxGet(&handle, &value), OPEN_E_NONE);
  EXPECT_EQ(value, 4094u);
}

TEST_F(Vlans, NewVlanIsStaticNamelessAndWithoutMembers) {
  create(10);
  EXPECT_EQ(openapiVlanCreatedCheck(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(openapiVlanIsStatic(&handle, 10), 1u);
  EXPECT_EQ(name_of(10), "");
  EXPECT_EQ(participation(10, 1), OPEN_VLAN_PARTICIPATION_MODE_AUTO);
  EXPECT_EQ(is_member(10, 1), 0u);
  EXPECT_EQ(is_member(10, 119), 0u);
  EXPECT_EQ(tagging(1, 10), 0u);
}

TEST_F(Vlans, CreatingRefusesWhatIsOutsideOrThereAlready) {
  EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 0), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 4095), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, UINT32_MAX), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 1), OPEN_E_EXISTS);
  EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 4094), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 4094), OPEN_E_EXISTS);
}

TEST_F(Vlans, FullTableRefusesOneMoreUntilOneIsDeleted) {
  ASSERT_TRUE(softswitch::set_limit("vlans", 3));
  create(10);
  create(20);
  EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 30), OPEN_E_FULL);
  EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 20), OPEN_E_EXISTS) << "what exists is not one more";
  EXPECT_EQ(walk(), (std::vector<uint32_t>{1, 10, 20}));
  ASSERT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 30), OPEN_E_NONE);
}

TEST_F(Vlans, AllOfThemCanExistAtOnce) {
  ASSERT_EQ(commit("vlan 1-4094"), OPEN_E_NONE);
  EXPECT_EQ(walk().size(), 4094u);
  EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 4094), OPEN_E_EXISTS);
  EXPECT_EQ(softswitch::running_config(), "vlan 2-4094\n");
}

TEST_F(Vlans, DeletingRefusesVlanOneAndWhatDoesNotExist) {
  EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 0), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 4095), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 1), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 2), OPEN_E_NOT_FOUND);
  EXPECT_EQ(walk(), std::vector<uint32_t>{1});
}

TEST_F(Vlans, DeletedVlanTakesItsSettingsAlong) {
  create(10);
  ASSERT_EQ(set_name(10, "blue"), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiVlanIfParticipationSet(&handle, 10, 1, OPEN_VLAN_PARTICIPATION_MODE_INCLUDE),
            OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiVlanIfTaggingSet(&handle, 1, 10, 1), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(openapiVlanCreatedCheck(&handle, 10), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_NOT_FOUND);
  create(10);
  EXPECT_EQ(name_of(10), "");
  EXPECT_EQ(participation(10, 1), OPEN_VLAN_PARTICIPATION_MODE_AUTO);
  EXPECT_EQ(tagging(1, 10), 0u);
}

TEST_F(Vlans, DeletingMakesPortVlanIdsFallBackToOne) {
  create(10);
  create(20);
  ASSERT_EQ(rpcclt_openapiVlanIfPvidSet(&handle, 1, 10), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiVlanIfPvidSet(&handle, 119, 10), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiVlanIfPvidSet(&handle, 2, 20), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(pvid(1), 1u);
  EXPECT_EQ(pvid(119), 1u);
  EXPECT_EQ(pvid(2), 20u);
}

TEST_F(Vlans, WalkGoesInOrderOfIdsAndNeedsNoExistingStart) {
  create(4094);
  create(20);
  create(10);
  EXPECT_EQ(walk(), (std::vector<uint32_t>{1, 10, 20, 4094}));
  ASSERT_EQ(rpcclt_openapiVlanNextGet(&handle, 11, &value), OPEN_E_NONE);
  EXPECT_EQ(value, 20u);
  EXPECT_EQ(rpcclt_openapiVlanNextGet(&handle, 4094, &value), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiVlanNextGet(&handle, 4095, &value), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiVlanNextGet(&handle, UINT32_MAX, &value), OPEN_E_PARAM);
}

TEST_F(Vlans, OnlyExistingVlansAreStatic) {
  for (const auto &[vlan, result] : absent_vlans) EXPECT_EQ(openapiVlanIsStatic(&handle, vlan), 0u) << vlan;
  EXPECT_EQ(openapiVlanIsStatic(nullptr, 1), 0u);
}

/* --- Names ---------------------------------------------------------------------------------------------- */

TEST_F(Vlans, NamesHoldUpTo32Bytes) {
  create(10);
  ASSERT_EQ(rpcclt_openapiVlanNameLenGet(&handle, &value), OPEN_E_NONE);
  EXPECT_EQ(value, 33u);
  for (size_t length : {1u, 31u, 32u}) {
    EXPECT_EQ(set_name(10, std::string(length, 'n')), OPEN_E_NONE) << length;
    EXPECT_EQ(name_of(10), std::string(length, 'n'));
  }
  EXPECT_EQ(set_name(10, std::string(33, 'x')), OPEN_E_PARAM);
  EXPECT_EQ(set_name(10, std::string(20000, 'x')), OPEN_E_PARAM);
  EXPECT_EQ(name_of(10), std::string(32, 'n'));
}

TEST_F(Vlans, NameIsReadWithAndWithoutTheTerminatorCounted) {
  create(10);
  char name[] = "blue";
  for (uint32_t size : {4u, 5u}) {
    ASSERT_EQ(set_name(10, ""), OPEN_E_NONE);
    open_buffdesc desc = {size, name};
    ASSERT_EQ(rpcclt_openapiVlanNameSet(&handle, 10, &desc), OPEN_E_NONE);
    EXPECT_EQ(name_of(10), "blue");
  }
  std::string longest(32, 'n');
  open_buffdesc desc = {33, longest.data()};
  EXPECT_EQ(rpcclt_openapiVlanNameSet(&handle, 10, &desc), OPEN_E_NONE);
}

TEST_F(Vlans, EmptyNameRemovesTheName) {
  create(10);
  ASSERT_EQ(set_name(10, "blue"), OPEN_E_NONE);
  ASSERT_EQ(set_name(10, ""), OPEN_E_NONE);
  EXPECT_EQ(name_of(10), "");
  EXPECT_EQ(softswitch::running_config(), "vlan 10\n");
}

TEST_F(Vlans, VlanOneCanBeRenamedAndEvenNameless) {
  ASSERT_EQ(set_name(1, "office"), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "vlan 1 name office\n");
  ASSERT_EQ(set_name(1, ""), OPEN_E_NONE);
  EXPECT_EQ(name_of(1), "");
  EXPECT_EQ(softswitch::running_config(), "vlan 1 name \"\"\n");
  ASSERT_EQ(set_name(1, "default"), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Vlans, AnyCharactersButControlOnesMakeAName) {
  create(10);
  for (const char *good :
       {" ", "a b", "\"", "\\", "!x", "no", "B\xc3\xbcro \xe2\x82\xac", "a,b|<c>", "\xff\xfe"}) {
    EXPECT_EQ(set_name(10, good), OPEN_E_NONE) << good;
    EXPECT_EQ(name_of(10), good);
    restart_keeps_configuration();
    EXPECT_EQ(name_of(10), good);
  }
  for (const char *bad : {"\t", "a\nb", "\x01", "\x7f", "a\r", "\x1b[2J"}) {
    EXPECT_EQ(set_name(10, bad), OPEN_E_PARAM);
    EXPECT_EQ(name_of(10), "\xff\xfe");
  }
}

TEST_F(Vlans, NamesOfAbsentVlansAreNotFound) {
  for (const auto &[vlan, result] : absent_vlans) {
    char buffer[33];
    open_buffdesc name = {sizeof buffer, buffer};
    EXPECT_EQ(rpcclt_openapiVlanNameGet(&handle, vlan, &name), result) << vlan;
    EXPECT_EQ(set_name(vlan, "x"), result) << vlan;
  }
}

TEST_F(Vlans, NameThatDoesNotFitTheBufferIsRefused) {
  char buffer[8];
  open_buffdesc name = {7, buffer};
  EXPECT_EQ(rpcclt_openapiVlanNameGet(&handle, 1, &name), OPEN_E_PARAM) << "default takes 8";
  name.size = 8;
  EXPECT_EQ(rpcclt_openapiVlanNameGet(&handle, 1, &name), OPEN_E_NONE);
  EXPECT_EQ(name.size, 7u);
  EXPECT_STREQ(buffer, "default");
}

/* --- Membership ----------------------------------------------------------------------------------------- */

TEST_F(Vlans, IncludedInterfacesAreMembersAndOthersAreNot) {
  create(10);
  for (uint32_t mode : {0u, 2u, 1u, 0u}) {
    ASSERT_EQ(rpcclt_openapiVlanIfParticipationSet(&handle, 10, 119, mode), OPEN_E_NONE);
    EXPECT_EQ(participation(10, 119), mode);
    EXPECT_EQ(is_member(10, 119), mode == 0 ? 1u : 0u);
  }
  EXPECT_EQ(is_member(10, 118), 0u);
  EXPECT_EQ(softswitch::running_config(), "vlan 10\ninterface 3/64 vlan 10 participation include\n");
}

TEST_F(Vlans, InterfacesCanLeaveVlanOne) {
  ASSERT_EQ(rpcclt_openapiVlanIfParticipationSet(&handle, 1, 3, OPEN_VLAN_PARTICIPATION_MODE_AUTO),
            OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiVlanIfParticipationSet(&handle, 1, 4, OPEN_VLAN_PARTICIPATION_MODE_EXCLUDE),
            OPEN_E_NONE);
  EXPECT_EQ(is_member(1, 3), 0u);
  EXPECT_EQ(softswitch::running_config(), "interface 0/3 vlan 1 participation auto\n"
                                          "interface 0/4 vlan 1 participation exclude\n");
}

TEST_F(Vlans, MembershipOfWhatDoesNotExistIsNotFound) {
  for (const auto &[vlan, result] : absent_vlans) {
    EXPECT_EQ(openapiVlanIfParticipationStatusGet(&handle, vlan, 1, &value), result) << vlan;
    EXPECT_EQ(rpcclt_openapiVlanIfParticipationGet(&handle, vlan, 1, &value), result) << vlan;
    EXPECT_EQ(rpcclt_openapiVlanIfParticipationSet(&handle, vlan, 1, 0), result) << vlan;
    EXPECT_EQ(openapiVlanIfTaggingGet(&handle, 1, vlan, &value), result) << vlan;
    EXPECT_EQ(rpcclt_openapiVlanIfTaggingSet(&handle, 1, vlan, 1), result) << vlan;
    EXPECT_EQ(rpcclt_openapiVlanIfPvidSet(&handle, 1, vlan), result) << vlan;
  }
  for (const auto &[interface, result] : not_switching) {
    EXPECT_EQ(openapiVlanIfParticipationStatusGet(&handle, 1, interface, &value), result) << interface;
    EXPECT_EQ(rpcclt_openapiVlanIfParticipationGet(&handle, 1, interface, &value), result) << interface;
    EXPECT_EQ(rpcclt_openapiVlanIfParticipationSet(&handle, 1, interface, 0), result) << interface;
    EXPECT_EQ(openapiVlanIfTaggingGet(&handle, interface, 1, &value), result) << interface;
    EXPECT_EQ(rpcclt_openapiVlanIfTaggingSet(&handle, interface, 1, 1), result) << interface;
    EXPECT_EQ(rpcclt_openapiVlanIfPvidSet(&handle, interface, 1), result) << interface;
    EXPECT_EQ(rpcclt_openapiVlanIfAcceptFrameTypeSet(&handle, interface, 1), result) << interface;
  }
}

TEST_F(Vlans, InterfacesThatDoNotSwitchReadAsWithoutPortVlanIdAndLettingAllFramesIn) {
  ASSERT_EQ(rpcclt_openapiVlanIfAcceptFrameTypeSet(&handle, 1, 2), OPEN_E_NONE);
  {
    softswitch::locked_switch model;
    ASSERT_EQ(interface_make_vlan_routing(*model, 1, &value), OPEN_E_NONE);
  }
  for (uint32_t interface : {55u, 120u, 127u, 226u}) {
    EXPECT_EQ(pvid(interface), 0u) << interface;
    EXPECT_EQ(accept_frames(interface), OPEN_DOT1Q_ADMIT_ALL) << interface;
  }
  softswitch::locked_switch model;
  ASSERT_EQ(interface_remove_vlan_routing(*model, 1), OPEN_E_NONE);
}

TEST_F(Vlans, PortVlanIdAndAcceptedFramesOfNoInterfaceAreNotFound) {
  const refused_number no_interfaces[] = {{226, OPEN_E_NOT_FOUND}, {353, OPEN_E_NOT_FOUND},
                                          {0, OPEN_E_PARAM},       {128, OPEN_E_PARAM},
                                          {354, OPEN_E_PARAM},     {UINT32_MAX, OPEN_E_PARAM}};
  for (const auto &[interface, result] : no_interfaces) {
    EXPECT_EQ(openapiVlanIfPvidGet(&handle, interface, &value), result) << interface;
    EXPECT_EQ(rpcclt_openapiVlanIfAcceptFrameTypeGet(&handle, interface, &value), result) << interface;
  }
}

TEST_F(Vlans, UnknownModesAreRefusedAndChangeNothing) {
  for (uint32_t mode : {3u, 4u, UINT32_MAX}) {
    EXPECT_EQ(rpcclt_openapiVlanIfParticipationSet(&handle, 1, 1, mode), OPEN_E_PARAM);
  }
  for (uint32_t tagged : {2u, UINT32_MAX})
    EXPECT_EQ(rpcclt_openapiVlanIfTaggingSet(&handle, 1, 1, tagged), OPEN_E_PARAM);
  for (uint32_t type : {0u, 4u, UINT32_MAX}) {
    EXPECT_EQ(rpcclt_openapiVlanIfAcceptFrameTypeSet(&handle, 1, type), OPEN_E_PARAM);
  }
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Vlans, TaggingIsPerInterfaceAndVlan) {
  create(10);
  ASSERT_EQ(rpcclt_openapiVlanIfTaggingSet(&handle, 5, 10, 1), OPEN_E_NONE);
  EXPECT_EQ(tagging(5, 10), 1u);
  EXPECT_EQ(tagging(10, 10), 0u);
  EXPECT_EQ(tagging(5, 1), 0u);
  ASSERT_EQ(rpcclt_openapiVlanIfTaggingSet(&handle, 5, 10, 0), OPEN_E_NONE);
  EXPECT_EQ(tagging(5, 10), 0u);
}

TEST_F(Vlans, PortVlanIdNeedsAnExistingVlan) {
  create(10);
  ASSERT_EQ(rpcclt_openapiVlanIfPvidSet(&handle, 54, 10), OPEN_E_NONE);
  EXPECT_EQ(pvid(54), 10u);
  EXPECT_EQ(rpcclt_openapiVlanIfPvidSet(&handle, 54, 11), OPEN_E_NOT_FOUND);
  EXPECT_EQ(pvid(54), 10u);
  ASSERT_EQ(rpcclt_openapiVlanIfPvidSet(&handle, 54, 1), OPEN_E_NONE);
  EXPECT_EQ(pvid(54), 1u);
}

TEST_F(Vlans, AcceptedFramesAreSetPerInterface) {
  for (uint32_t type : {2u, 3u, 1u, 3u}) {
    ASSERT_EQ(rpcclt_openapiVlanIfAcceptFrameTypeSet(&handle, 7, type), OPEN_E_NONE);
    EXPECT_EQ(accept_frames(7), type);
  }
  EXPECT_EQ(accept_frames(8), 1u);
  EXPECT_EQ(softswitch::running_config(), "interface 0/7 accept-frames untagged\n");
}

/* --- Pending changes ------------------------------------------------------------------------------------ */

TEST_F(Vlans, ChangesStayPendingWhileHeldAndAreTakenOnRelease) {
  softswitch::hold_apply(true);
  create(10);
  create(20);
  ASSERT_EQ(set_name(1, "x"), OPEN_E_NONE);
  EXPECT_FALSE(softswitch::wait_applied(1));
  EXPECT_EQ(pending_vlans(), (std::vector<int>{1, 10, 20}));
  softswitch::hold_apply(false);
  ASSERT_TRUE(softswitch::wait_applied(patience_ms));
  EXPECT_EQ(pending_vlans(), std::vector<int>());
}

TEST_F(Vlans, DeletedVlanIsListedAsDeletionUntilTaken) {
  create(10);
  ASSERT_TRUE(softswitch::wait_applied(patience_ms));
  softswitch::hold_apply(true);
  ASSERT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(pending_vlans(), std::vector<int>{-10});
  EXPECT_EQ(walk(), std::vector<uint32_t>{1});
  softswitch::hold_apply(false);
  ASSERT_TRUE(softswitch::wait_applied(patience_ms));
  EXPECT_EQ(pending_vlans(), std::vector<int>());
}

TEST_F(Vlans, CreatingADeletedVlanAgainMakesItAPendingChange) {
  create(10);
  ASSERT_TRUE(softswitch::wait_applied(patience_ms));
  softswitch::hold_apply(true);
  ASSERT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_NONE);
  create(10);
  EXPECT_EQ(pending_vlans(), std::vector<int>{10});
}

TEST_F(Vlans, SettingWhatIsSetAlreadyIsNoChange) {
  create(10);
  ASSERT_EQ(set_name(10, "blue"), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::wait_applied(patience_ms));
  softswitch::hold_apply(true);
  std::string journal = file_content(dir.path + "/journal-1");
  EXPECT_EQ(set_name(10, "blue"), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiVlanIfPvidSet(&handle, 1, 1), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiVlanIfTaggingSet(&handle, 1, 10, 0), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiVlanIfParticipationSet(&handle, 10, 1, 1), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiVlanIfAcceptFrameTypeSet(&handle, 1, 1), OPEN_E_NONE);
  EXPECT_EQ(pending_vlans(), std::vector<int>());
  EXPECT_EQ(file_content(dir.path + "/journal-1"), journal);
}

TEST_F(Vlans, RefusedChangeIsNotPending) {
  softswitch::hold_apply(true);
  EXPECT_EQ(commit("vlan 10,20,5000"), OPEN_E_PARAM);
  EXPECT_EQ(commit("no vlan 10"), OPEN_E_NOT_FOUND);
  ASSERT_TRUE(softswitch::set_limit("vlans", 2));
  EXPECT_EQ(commit("vlan 10,20"), OPEN_E_FULL) << "VLAN 10 alone would have fitted";
  EXPECT_EQ(walk(), std::vector<uint32_t>{1});
  EXPECT_EQ(pending_vlans(), std::vector<int>());
  EXPECT_TRUE(softswitch::wait_applied(0));
}

TEST_F(Vlans, PendingWalkRefusesWhatIsOutside) {
  uint32_t deleted;
  EXPECT_EQ(openapiVlanNextChangedGet(&handle, 4094, &value, &deleted), OPEN_E_FAIL);
  EXPECT_EQ(openapiVlanNextChangedGet(&handle, 4095, &value, &deleted), OPEN_E_PARAM);
  EXPECT_EQ(openapiVlanNextChangedGet(&handle, UINT32_MAX, &value, &deleted), OPEN_E_PARAM);
}

TEST_F(Vlans, NothingIsPendingAfterAStart) {
  create(10);
  restart();
  EXPECT_EQ(pending_vlans(), std::vector<int>());
}

} // namespace
