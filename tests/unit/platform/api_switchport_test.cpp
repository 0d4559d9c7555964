/* Tests of switchport modes through the C interface: every result code of every function, what is in force in
 * each mode, what becomes of it when VLANs come and go, and what becomes pending. */
#include "tests/unit/platform/membership_test_support.h"

namespace {

using pending = std::vector<int>;

class Switchports : public MembershipTest {
protected:
  uint32_t value;
};

/* --- Results -------------------------------------------------------------------------------------------- */

TEST_F(Switchports, FactoryModeIsGeneralForPortsAndLags) {
  for (uint32_t interface = 1; interface <= 119; interface++) {
    if (interface == 55) continue;
    EXPECT_EQ(mode(interface), general) << interface;
    EXPECT_EQ(part_in(1, interface), untagged_member) << interface;
  }
}

TEST_F(Switchports, EveryFunctionRefusesWhatIsNeitherPortNorLag) {
  for (const auto &[interface, result] : not_switching) {
    EXPECT_EQ(rpcclt_openapiIfSwitchportModeGet(&handle, interface, &value), result) << interface;
    EXPECT_EQ(set_mode(interface, access_mode), result) << interface;
    EXPECT_EQ(set_access(interface, 1), result) << interface;
    EXPECT_EQ(set_native(interface, 1), result) << interface;
    EXPECT_EQ(add_to_list(interface, "10"), result) << interface;
    EXPECT_EQ(remove_from_list(interface, "10"), result) << interface;
    EXPECT_EQ(replace_list(interface, "10"), result) << interface;
  }
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Switchports, InterfaceIsCheckedBeforeModeAndModeBeforeList) {
  EXPECT_EQ(set_mode(55, 9), OPEN_E_NOT_FOUND);
  EXPECT_EQ(set_access(55, 9999), OPEN_E_NOT_FOUND);
  EXPECT_EQ(set_native(55, 9999), OPEN_E_NOT_FOUND);
  EXPECT_EQ(change_list(55, 2, "x"), OPEN_E_NOT_FOUND);
  EXPECT_EQ(replace_list(55, "x", 3), OPEN_E_NOT_FOUND);
  EXPECT_EQ(set_access(0, 10), OPEN_E_PARAM) << "VLAN 10 does not exist either";
}

TEST_F(Switchports, UnknownModesAreRefusedAndChangeNothing) {
  for (uint32_t bad : {0u, 4u, 255u, 258u, UINT32_MAX}) EXPECT_EQ(set_mode(1, bad), OPEN_E_PARAM) << bad;
  for (uint32_t bad : {0u, 2u, 4u, UINT32_MAX}) EXPECT_EQ(change_list(1, bad, "10"), OPEN_E_PARAM) << bad;
  for (uint32_t bad : {0u, 2u, 3u, UINT32_MAX}) EXPECT_EQ(replace_list(1, "10", bad), OPEN_E_PARAM) << bad;
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Switchports, ModesAreReadAsSet) {
  for (uint32_t interface : {1u, 54u, 56u, 119u}) {
    for (uint32_t to : {access_mode, trunk, general, trunk, access_mode, general}) {
      ASSERT_EQ(set_mode(interface, to), OPEN_E_NONE);
      EXPECT_EQ(mode(interface), to);
    }
  }
}

TEST_F(Switchports, AccessAndNativeVlanMustExist) {
  create(4094);
  for (uint32_t bad : {0u, 4095u, UINT32_MAX}) {
    EXPECT_EQ(set_access(1, bad), OPEN_E_PARAM) << bad;
    EXPECT_EQ(set_native(1, bad), OPEN_E_PARAM) << bad;
  }
  EXPECT_EQ(set_access(1, 2), OPEN_E_NOT_FOUND);
  EXPECT_EQ(set_native(1, 2), OPEN_E_NOT_FOUND);
  EXPECT_EQ(softswitch::running_config(), "vlan 4094\n");
  EXPECT_EQ(set_access(1, 4094), OPEN_E_NONE);
  EXPECT_EQ(set_native(1, 4094), OPEN_E_NONE);
  EXPECT_EQ(set_access(1, 1), OPEN_E_NONE);
  EXPECT_EQ(set_native(1, 1), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "vlan 4094\n");
}

TEST_F(Switchports, ListsAreReadStrictly) {
  const char *const bad[] = {"",       " ",       "10 ",     " 10",      "10, 20", "010",     "10-020",
                             "+10",    "-10",     "10-",     "10-20-30", "20-10",  "0",       "4095",
                             "0-10",   "10-4095", "10,",     ",10",      "10,,20", "x",       "10x",
                             "0x10",   "1.0",     "10;20",   "10\n",     "all",    "10,20-x", "10\t20",
                             "\"10\"", "!10",     "10 - 20", "1e3",      "99999",  "10--20",  "4294967297"};
  for (const char *list : bad) {
    EXPECT_EQ(add_to_list(1, list), OPEN_E_PARAM) << list;
    EXPECT_EQ(remove_from_list(1, list), OPEN_E_PARAM) << list;
    EXPECT_EQ(replace_list(1, list), OPEN_E_PARAM) << list;
  }
  EXPECT_EQ(softswitch::running_config(), "");
  EXPECT_EQ(journal(), "");
}

TEST_F(Switchports, ListIsReadWithAndWithoutTheTerminatorCounted) {
  char list[] = "10-12";
  for (uint32_t size : {5u, 6u}) {
    open_buffdesc text = {size, list};
    ASSERT_EQ(rpcclt_openapiIfSwitchportTrunkVlanCreate(&handle, 1, 1, &text), OPEN_E_NONE);
    EXPECT_EQ(softswitch::running_config(), "interface 0/1 switchport trunk vlans add 10-12\n");
    text.size = size;
    ASSERT_EQ(rpcclt_openapiIfSwitchportTrunkVlanSet(&handle, 1, 3, &text), OPEN_E_NONE);
    EXPECT_EQ(softswitch::running_config(), "");
  }
  open_buffdesc terminator_alone = {1, list + 5};
  EXPECT_EQ(rpcclt_openapiIfSwitchportTrunkVlanSet(&handle, 1, 1, &terminator_alone), OPEN_E_PARAM);
  open_buffdesc nothing = {0, list};
  EXPECT_EQ(rpcclt_openapiIfSwitchportTrunkVlanSet(&handle, 1, 1, &nothing), OPEN_E_PARAM);
}

TEST_F(Switchports, ListTextHasAtMost16000Characters) {
  std::string longest = "10";
  while (longest.size() < 15998) longest += ",10";
  longest += ",2";
  ASSERT_EQ(longest.size(), 16000u);
  EXPECT_EQ(add_to_list(1, longest + "0"), OPEN_E_PARAM);
  EXPECT_EQ(replace_list(1, longest + "0"), OPEN_E_PARAM);
  EXPECT_EQ(softswitch::running_config(), "");
  EXPECT_EQ(add_to_list(1, longest), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "interface 0/1 switchport trunk vlans add 2,10\n");
}

TEST_F(Switchports, ListWithTheMostRangesIsStored) {
  std::string list;
  for (int id = 1; id <= 4093; id += 3) list += std::to_string(id) + "-" + std::to_string(id + 1) + ",";
  list.pop_back();
  ASSERT_EQ(replace_list(48, list), OPEN_E_NONE);
  restart_keeps_configuration();
  for (int id = 3; id <= 4094; id += 3) ASSERT_EQ(add_to_list(48, std::to_string(id)), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "interface 0/48 switchport trunk vlans add 1-4094\n");
}

/* --- What is in force ----------------------------------------------------------------------------------- */

TEST_F(Switchports, AccessPortIsAnUntaggedMemberOfItsVlanAndOfNoOther) {
  configure("vlan 10,20\n"
            "interface 0/1 vlan 20 participation include\n"
            "interface 0/1 vlan 10,20 tagging\n"
            "interface 0/1 pvid 20\n");
  ASSERT_EQ(set_mode(1, access_mode), OPEN_E_NONE);
  EXPECT_EQ(part_in(1, 1), untagged_member) << "the access VLAN is 1 at first";
  ASSERT_EQ(set_access(1, 10), OPEN_E_NONE);
  EXPECT_EQ(part_in(10, 1), untagged_member);
  EXPECT_EQ(part_in(1, 1), excluded);
  EXPECT_EQ(part_in(20, 1), excluded);
  EXPECT_EQ(pvid(1), 10u);
  EXPECT_EQ(part_in(10, 2), stranger) << "nobody else";
}

TEST_F(Switchports, TrunkCarriesItsNativeVlanUntaggedAndItsListTagged) {
  configure("vlan 10,20,30,40\n"
            "interface 3/1 vlan 40 participation include\n"
            "interface 3/1 pvid 40\n");
  ASSERT_EQ(set_mode(56, trunk), OPEN_E_NONE);
  EXPECT_EQ(part_in(1, 56), untagged_member) << "the native VLAN is 1 at first";
  EXPECT_EQ(pvid(56), 1u);
  ASSERT_EQ(set_native(56, 10), OPEN_E_NONE);
  ASSERT_EQ(add_to_list(56, "20-30"), OPEN_E_NONE);
  EXPECT_EQ(part_in(10, 56), untagged_member);
  EXPECT_EQ(part_in(20, 56), tagged_member);
  EXPECT_EQ(part_in(30, 56), tagged_member);
  EXPECT_EQ(part_in(40, 56), excluded);
  EXPECT_EQ(part_in(1, 56), excluded);
  EXPECT_EQ(pvid(56), 10u);
}

TEST_F(Switchports, NativeVlanInTheListIsUntagged) {
  configure("vlan 10,20\n");
  ASSERT_EQ(set_mode(1, trunk), OPEN_E_NONE);
  ASSERT_EQ(add_to_list(1, "1,10,20"), OPEN_E_NONE);
  EXPECT_EQ(part_in(1, 1), untagged_member);
  EXPECT_EQ(part_in(10, 1), tagged_member);
  ASSERT_EQ(set_native(1, 10), OPEN_E_NONE);
  EXPECT_EQ(part_in(1, 1), tagged_member);
  EXPECT_EQ(part_in(10, 1), untagged_member);
  ASSERT_EQ(remove_from_list(1, "10"), OPEN_E_NONE);
  EXPECT_EQ(part_in(10, 1), untagged_member) << "native still";
}

TEST_F(Switchports, ListGrowsShrinksAndIsReplaced) {
  configure("vlan 10,11,12,20\n");
  ASSERT_EQ(set_mode(1, trunk), OPEN_E_NONE);
  ASSERT_EQ(add_to_list(1, "10-11"), OPEN_E_NONE);
  ASSERT_EQ(add_to_list(1, "11-12"), OPEN_E_NONE);
  EXPECT_EQ(part_in(10, 1), tagged_member);
  EXPECT_EQ(part_in(12, 1), tagged_member);
  ASSERT_EQ(remove_from_list(1, "11,20,4000"), OPEN_E_NONE) << "20 and 4000 are not in it";
  EXPECT_EQ(part_in(11, 1), excluded);
  EXPECT_EQ(part_in(12, 1), tagged_member);
  ASSERT_EQ(replace_list(1, "20"), OPEN_E_NONE);
  EXPECT_EQ(part_in(10, 1), excluded);
  EXPECT_EQ(part_in(12, 1), excluded);
  EXPECT_EQ(part_in(20, 1), tagged_member);
  EXPECT_EQ(softswitch::running_config(), "vlan 10-12,20\n"
                                          "interface 0/1 switchport mode trunk\n"
                                          "interface 0/1 switchport trunk vlans add 20\n");
}

TEST_F(Switchports, SettingsOfAModeStayWhileAnotherIsInForce) {
  configure("vlan 10,20,30,40\n"
            "interface 0/1 vlan 1 participation exclude\n"
            "interface 0/1 vlan 10 participation include\n"
            "interface 0/1 vlan 10 tagging\n"
            "interface 0/1 pvid 10\n");
  ASSERT_EQ(set_access(1, 20), OPEN_E_NONE);
  ASSERT_EQ(set_native(1, 30), OPEN_E_NONE);
  ASSERT_EQ(add_to_list(1, "40"), OPEN_E_NONE);
  for (int round = 0; round < 2; round++) {
    EXPECT_EQ(part_in(1, 1), excluded);
    EXPECT_EQ(part_in(10, 1), tagged_member);
    EXPECT_EQ(part_in(20, 1), stranger);
    EXPECT_EQ(pvid(1), 10u);
    ASSERT_EQ(set_mode(1, access_mode), OPEN_E_NONE);
    EXPECT_EQ(part_in(10, 1), excluded);
    EXPECT_EQ(part_in(20, 1), untagged_member);
    EXPECT_EQ(pvid(1), 20u);
    ASSERT_EQ(set_mode(1, trunk), OPEN_E_NONE);
    EXPECT_EQ(part_in(20, 1), excluded);
    EXPECT_EQ(part_in(30, 1), untagged_member);
    EXPECT_EQ(part_in(40, 1), tagged_member);
    EXPECT_EQ(pvid(1), 30u);
    ASSERT_EQ(set_mode(1, general), OPEN_E_NONE);
  }
}

TEST_F(Switchports, SettingsOfGeneralModeAreKeptWhileTheyAreNotInForce) {
  configure("vlan 10\ninterface 0/1 switchport mode access\n");
  ASSERT_EQ(rpcclt_openapiVlanIfParticipationSet(&handle, 10, 1, include), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiVlanIfTaggingSet(&handle, 1, 10, 1), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiVlanIfPvidSet(&handle, 1, 10), OPEN_E_NONE);
  EXPECT_EQ(part_in(10, 1), excluded);
  EXPECT_EQ(part_in(1, 1), untagged_member);
  EXPECT_EQ(pvid(1), 1u);
  EXPECT_EQ(softswitch::running_config(), "vlan 10\n"
                                          "interface 0/1 vlan 10 participation include\n"
                                          "interface 0/1 vlan 10 tagging\n"
                                          "interface 0/1 pvid 10\n"
                                          "interface 0/1 switchport mode access\n");
  ASSERT_EQ(set_mode(1, general), OPEN_E_NONE);
  EXPECT_EQ(part_in(10, 1), tagged_member);
  EXPECT_EQ(pvid(1), 10u);
}

TEST_F(Switchports, AcceptedFramesAreAsSetInEveryMode) {
  for (uint32_t to : {general, access_mode, trunk}) {
    ASSERT_EQ(set_mode(1, to), OPEN_E_NONE);
    for (uint32_t type : {2u, 3u, 1u}) {
      ASSERT_EQ(rpcclt_openapiVlanIfAcceptFrameTypeSet(&handle, 1, type), OPEN_E_NONE);
      EXPECT_EQ(accept_frames(1), type);
    }
  }
}

/* --- VLANs that come and go ----------------------------------------------------------------------------- */

TEST_F(Switchports, AccessVlanFallsBackToOneWhenDeleted) {
  configure("vlan 10\n");
  ASSERT_EQ(set_access(1, 10), OPEN_E_NONE);
  ASSERT_EQ(set_access(2, 10), OPEN_E_NONE);
  ASSERT_EQ(set_mode(1, access_mode), OPEN_E_NONE);
  take_and_hold();
  delete_vlan(10);
  EXPECT_EQ(part_in(1, 1), untagged_member);
  EXPECT_EQ(pvid(1), 1u);
  EXPECT_EQ(pending_interfaces(), (pending{1, 2})) << "port 2 although it is in mode general";
  EXPECT_EQ(pending_vlans(), (pending{1, -10})) << "port 1 is a member of VLAN 1 now";
  create(10);
  EXPECT_EQ(part_in(10, 1), excluded) << "that it was the access VLAN does not come back";
  EXPECT_EQ(softswitch::running_config(), "vlan 10\ninterface 0/1 switchport mode access\n");
}

TEST_F(Switchports, NativeVlanFallsBackToOneWhenDeleted) {
  configure("vlan 10\n");
  ASSERT_EQ(set_native(1, 10), OPEN_E_NONE);
  ASSERT_EQ(set_native(2, 10), OPEN_E_NONE);
  ASSERT_EQ(add_to_list(1, "1"), OPEN_E_NONE);
  ASSERT_EQ(set_mode(1, trunk), OPEN_E_NONE);
  EXPECT_EQ(part_in(1, 1), tagged_member);
  take_and_hold();
  delete_vlan(10);
  EXPECT_EQ(part_in(1, 1), untagged_member);
  EXPECT_EQ(pvid(1), 1u);
  EXPECT_EQ(pending_interfaces(), (pending{1, 2}));
  EXPECT_EQ(pending_vlans(), (pending{1, -10})) << "port 1 is untagged in VLAN 1 now";
}

TEST_F(Switchports, DeletedVlanStaysInTheListAndIsCarriedAgainWhenItComesBack) {
  configure("vlan 10\n");
  ASSERT_EQ(add_to_list(1, "10"), OPEN_E_NONE);
  ASSERT_EQ(add_to_list(2, "10"), OPEN_E_NONE);
  ASSERT_EQ(set_mode(1, trunk), OPEN_E_NONE);
  take_and_hold();
  delete_vlan(10);
  EXPECT_EQ(pending_interfaces(), pending{1}) << "port 2 was no member";
  EXPECT_EQ(pending_vlans(), pending{-10});
  EXPECT_EQ(softswitch::running_config(), "interface 0/1 switchport mode trunk\n"
                                          "interface 0/1 switchport trunk vlans add 10\n"
                                          "interface 0/2 switchport trunk vlans add 10\n");
  take_and_hold();
  create(10);
  EXPECT_EQ(part_in(10, 1), tagged_member);
  EXPECT_EQ(part_in(10, 2), stranger);
  EXPECT_EQ(pending_interfaces(), pending{1});
  EXPECT_EQ(pending_vlans(), pending{10});
}

TEST_F(Switchports, ReloadBringsFactoryModesBack) {
  configure("vlan 10\n"
            "interface 0/1 switchport mode trunk\n"
            "interface 0/1 switchport access vlan 10\n"
            "interface 0/1 switchport trunk native vlan 10\n"
            "interface 0/1 switchport trunk vlans only 10-20\n");
  std::string error;
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_EQ(mode(1), general);
  EXPECT_EQ(part_in(1, 1), untagged_member);
  EXPECT_EQ(softswitch::running_config(), "");
}

/* --- Pending changes and the journal -------------------------------------------------------------------- */

TEST_F(Switchports, ChangeOfModeIsPendingWithTheVlansWhoseMembershipItChanges) {
  configure("vlan 10,20,30\n"
            "interface 0/1 vlan 10 participation include\n"
            "interface 0/1 switchport access vlan 20\n"
            "interface 0/1 switchport trunk vlans add 10\n");
  take_and_hold();
  ASSERT_EQ(set_mode(1, trunk), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), pending{1});
  EXPECT_EQ(pending_vlans(), pending{10}) << "tagged from now on; in VLAN 1 it is what it was";
  take_and_hold();
  ASSERT_EQ(set_mode(1, access_mode), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), pending{1});
  EXPECT_EQ(pending_vlans(), (pending{1, 10, 20}));
}

TEST_F(Switchports, SettingOfAModeNotInForceIsPendingForItsInterfaceAlone) {
  configure("vlan 10,20\n");
  take_and_hold();
  ASSERT_EQ(set_access(1, 10), OPEN_E_NONE);
  ASSERT_EQ(set_native(56, 10), OPEN_E_NONE);
  ASSERT_EQ(add_to_list(3, "1-4094"), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), (pending{1, 3, 56}));
  EXPECT_EQ(pending_vlans(), pending());
}

TEST_F(Switchports, SettingOfTheModeInForceIsPendingWithTheVlansItMoves) {
  configure("vlan 10,20,30\n"
            "interface 0/1 switchport mode access\n"
            "interface 0/2 switchport mode trunk\n");
  take_and_hold();
  ASSERT_EQ(set_access(1, 10), OPEN_E_NONE);
  EXPECT_EQ(pending_vlans(), (pending{1, 10}));
  take_and_hold();
  ASSERT_EQ(set_native(2, 20), OPEN_E_NONE);
  EXPECT_EQ(pending_vlans(), (pending{1, 20}));
  take_and_hold();
  ASSERT_EQ(add_to_list(2, "10-4000"), OPEN_E_NONE);
  EXPECT_EQ(pending_vlans(), (pending{10, 30})) << "VLAN 20 is native, the others do not exist";
  EXPECT_EQ(pending_interfaces(), pending{2});
}

TEST_F(Switchports, SettingWhatIsSetAlreadyIsNoChange) {
  configure("vlan 10\n"
            "interface 0/1 switchport mode trunk\n"
            "interface 0/1 switchport access vlan 10\n"
            "interface 0/1 switchport trunk native vlan 10\n"
            "interface 0/1 switchport trunk vlans only 10-20\n");
  take_and_hold();
  std::string before = journal();
  EXPECT_EQ(set_mode(1, trunk), OPEN_E_NONE);
  EXPECT_EQ(set_mode(2, general), OPEN_E_NONE);
  EXPECT_EQ(set_access(1, 10), OPEN_E_NONE);
  EXPECT_EQ(set_native(1, 10), OPEN_E_NONE);
  EXPECT_EQ(add_to_list(1, "12-14"), OPEN_E_NONE);
  EXPECT_EQ(remove_from_list(1, "21,9"), OPEN_E_NONE);
  EXPECT_EQ(replace_list(1, "10-15,16-20"), OPEN_E_NONE);
  EXPECT_EQ(remove_from_list(2, "1-4094"), OPEN_E_NONE);
  EXPECT_EQ(journal(), before);
  EXPECT_EQ(pending_interfaces(), pending());
  EXPECT_EQ(pending_vlans(), pending());
}

TEST_F(Switchports, EachCallIsOneLineOfTheJournal) {
  softswitch::hold_apply(true);
  create(10);
  ASSERT_EQ(set_mode(1, trunk), OPEN_E_NONE);
  ASSERT_EQ(set_mode(1, general), OPEN_E_NONE);
  ASSERT_EQ(set_mode(119, access_mode), OPEN_E_NONE);
  ASSERT_EQ(set_access(1, 10), OPEN_E_NONE);
  ASSERT_EQ(set_native(1, 10), OPEN_E_NONE);
  ASSERT_EQ(add_to_list(1, "3,2,1,5-6,6"), OPEN_E_NONE);
  ASSERT_EQ(remove_from_list(1, "2"), OPEN_E_NONE);
  ASSERT_EQ(replace_list(1, "100-200,4094"), OPEN_E_NONE);
  EXPECT_EQ(journal(), "vlan 10\n"
                       "interface 0/1 switchport mode trunk\n"
                       "interface 0/1 switchport mode general\n"
                       "interface 3/64 switchport mode access\n"
                       "interface 0/1 switchport access vlan 10\n"
                       "interface 0/1 switchport trunk native vlan 10\n"
                       "interface 0/1 switchport trunk vlans add 1-3,5-6\n"
                       "interface 0/1 switchport trunk vlans remove 2\n"
                       "interface 0/1 switchport trunk vlans only 100-200,4094\n");
}

TEST_F(Switchports, ListOfACopiedModelIsNotTouchedByChanges) {
  configure("interface 0/1 switchport trunk vlans add 10\n");
  softswitch::switch_model copy;
  {
    softswitch::locked_switch model;
    copy = *model;
  }
  ASSERT_EQ(add_to_list(1, "11"), OPEN_E_NONE);
  EXPECT_EQ(softswitch::print_configuration(copy), "interface 0/1 switchport trunk vlans add 10\n");
  EXPECT_EQ(softswitch::running_config(), "interface 0/1 switchport trunk vlans add 10-11\n");
}

} // namespace
