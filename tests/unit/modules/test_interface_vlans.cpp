/* The interface module, VLANs: membership, tagging and switchport modes. */
#include "tests/unit/modules/interface_fixture.h"

class InterfaceVlanTest : public InterfaceTest {
protected:
  InterfaceVlanTest() { create_vlans({10, 20, 30}); }
};

/* --- Membership ------------------------------------------------------------------------------------------
 */

TEST_F(InterfaceVlanTest, InterfaceJoinsAVlan) {
  EXPECT_EQ(get("/if/3/vlan/10"), expected_participation(3, 10, "Autodetect", 0));
  expect_done("POST", "/if/3/vlan/10", "", "Configure Interface 3 to VLAN 10 successfully.");
  EXPECT_EQ(get("/if/3/vlan/10"), expected_participation(3, 10, "Include", 0));
  EXPECT_EQ(get("/if/4/vlan/10"), expected_participation(4, 10, "Autodetect", 0));
  expect_done("POST", "/if/56/vlan/10", "", "Configure Interface 56 to VLAN 10 successfully.");
  EXPECT_EQ(get("/if/56/vlan/10"), expected_participation(56, 10, "Include", 0));
}

TEST_F(InterfaceVlanTest, InterfaceLeavesAVlan) {
  expect_done("POST", "/if/3/vlan/10", "", "Configure Interface 3 to VLAN 10 successfully.");
  expect_done("DELETE", "/if/3/vlan/10", "", "Delete Interface 3 from VLAN 10 successfully.");
  EXPECT_EQ(get("/if/3/vlan/10"), expected_participation(3, 10, "Autodetect", 0));
}

TEST_F(InterfaceVlanTest, InterfaceDoesNotLeaveItsNativeVlan) {
  EXPECT_EQ(call(interface_api_handler, "DELETE", "/if/3/vlan/1"),
            expected_answers(1, "Delete VLAN 1 failed. VLAN 1 is native vlan."));
  EXPECT_EQ(get("/if/3/vlan/1"), expected_participation(3, 1, "Include", 0));
  put("/if/3/pvid", "value=10");
  EXPECT_EQ(call(interface_api_handler, "DELETE", "/if/3/vlan/10"),
            expected_answers(1, "Delete VLAN 10 failed. VLAN 10 is native vlan."));
  expect_done("DELETE", "/if/3/vlan/1", "", "Delete Interface 3 from VLAN 1 successfully.");
  EXPECT_EQ(get("/if/3/vlan/1"), expected_participation(3, 1, "Autodetect", 0));
}

TEST_F(InterfaceVlanTest, VlansThatDoNotExistAnswer99) {
  for (const char *vlanId : {"0", "11", "4094", "4095", "2147483647", "99999999999999999999"}) {
    for (const char *method : {"GET", "POST", "DELETE"}) {
      EXPECT_EQ(call(interface_api_handler, method, std::string("/if/3/vlan/") + vlanId),
                expected_platform_error(OPEN_E_NOT_FOUND))
          << method << " " << vlanId;
    }
    EXPECT_EQ(put(std::string("/if/3/vlan/") + vlanId + "/taggingMode", "value=1"),
              expected_platform_error(OPEN_E_NOT_FOUND))
        << vlanId;
  }
}

TEST_F(InterfaceVlanTest, InterfacesThatCannotBeMembersAnswer99) {
  for (const char *ifNum : {"55", "120"}) {
    std::string uri = std::string("/if/") + ifNum + "/vlan";
    EXPECT_EQ(get(uri), expected_platform_error(OPEN_E_NOT_FOUND));
    for (const char *method : {"GET", "POST", "DELETE"}) {
      EXPECT_EQ(call(interface_api_handler, method, uri + "/10"), expected_platform_error(OPEN_E_NOT_FOUND));
    }
  }
}

TEST_F(InterfaceVlanTest, ParticipationModesHaveWords) {
  struct {
    uint32_t mode;
    const char *word;
  } rows[] = {{0, "Include"}, {1, "Autodetect"}, {2, "Exclude"}, {3, ""}, {4294967295u, ""}};
  for (const auto &row : rows) {
    bent_output bent("rpcclt_openapiVlanIfParticipationGet", row.mode);
    EXPECT_EQ(get("/if/3/vlan/10"), expected_participation(3, 10, row.word, 0)) << row.mode;
  }
}

TEST_F(InterfaceVlanTest, ExcludedInterfaceIsToldAsThat) {
  ASSERT_EQ(rpcclt_openapiVlanIfParticipationSet(handle, 10, 3, OPEN_VLAN_PARTICIPATION_MODE_EXCLUDE),
            OPEN_E_NONE);
  EXPECT_EQ(get("/if/3/vlan/10"), expected_participation(3, 10, "Exclude", 0));
}

/* --- Tagging ---------------------------------------------------------------------------------------------
 */

TEST_F(InterfaceVlanTest, TaggingModeIsUpdated) {
  expect_done("PUT", "/if/3/vlan/10/taggingMode", "value=1",
              "Update tagging mode of Interface 3 in VLAN 10 successfully.");
  EXPECT_EQ(get("/if/3/vlan/10"), expected_participation(3, 10, "Autodetect", 1));
  EXPECT_EQ(get("/if/3/vlan/20"), expected_participation(3, 20, "Autodetect", 0));
  expect_done("PUT", "/if/3/vlan/10/taggingMode", "value=0",
              "Update tagging mode of Interface 3 in VLAN 10 successfully.");
  EXPECT_EQ(get("/if/3/vlan/10"), expected_participation(3, 10, "Autodetect", 0));
}

TEST_F(InterfaceVlanTest, TaggingIsTheNumberThatThePlatformTells) {
  bent_output bent("openapiVlanIfTaggingGet", 7);
  EXPECT_EQ(get("/if/3/vlan/10"), expected_participation(3, 10, "Autodetect", 7));
}

/* --- List of VLANs ---------------------------------------------------------------------------------------
 */

TEST_F(InterfaceVlanTest, ParticipationsAreKeyedByTheirPlaceAmongAllVlansFromZero) {
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{0, 1}}));
  for (const char *vlanId : {"10", "30"})
    call_xml(interface_api_handler, "POST", std::string("/if/3/vlan/") + vlanId);
  Answers answers = get("/if/3/vlan");
  EXPECT_EQ(answers, expected_participations({{0, 1}, {1, 10}, {3, 30}}));
  EXPECT_EQ(answers.json,
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
            "\"participations\": { \"0\": { \"vlanId\": 1 }, \"1\": { \"vlanId\": 10 }, \"3\": { \"vlanId\": "
            "30 } } } } }\n");
  put("/if/3/pvid", "value=30");
  call_xml(interface_api_handler, "DELETE", "/if/3/vlan/1");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{1, 10}, {3, 30}}));
}

TEST_F(InterfaceVlanTest, InterfaceInNoVlanHasAnEmptyList) {
  put("/if/3/pvid", "value=10");
  call_xml(interface_api_handler, "DELETE", "/if/3/vlan/1");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({}));
}

TEST_F(InterfaceVlanTest, OnlyAStatusOfOneIsAParticipation) {
  for (uint32_t status : {0u, 2u, 4294967295u}) {
    bent_output bent("openapiVlanIfParticipationStatusGet", status);
    EXPECT_EQ(get("/if/3/vlan"), expected_participations({})) << status;
  }
}

TEST_F(InterfaceVlanTest, ListOfVlansEndsQuietlyAtAnyFailureOfTheWalk) {
  call_xml(interface_api_handler, "POST", "/if/3/vlan/10");
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiVlanNextGet", rc);
    EXPECT_EQ(call_xml(interface_api_handler, "GET", "/if/3/vlan"), expected_participations({{0, 1}}).xml);
    fault("rpcclt_openapiVlanNextGet", rc, 1, 1);
    EXPECT_EQ(call_xml(interface_api_handler, "GET", "/if/3/vlan"),
              expected_participations({{0, 1}, {1, 10}}).xml);
  }
}

/* --- Switchport mode -------------------------------------------------------------------------------------
 */

static Answers expected_mode(const std::string &mode) {
  return expected_data({text("mode", mode)});
}

TEST_F(InterfaceVlanTest, SwitchportModeIsUpdated) {
  EXPECT_EQ(get("/if/3/switchportMode"), expected_mode("general"));
  struct {
    const char *value, *word;
  } rows[] = {{"2", "access"}, {"3", "trunk"}, {"1", "general"}};
  for (const auto &row : rows) {
    for (const char *ifNum : {"3", "56"}) {
      std::string uri = std::string("/if/") + ifNum + "/switchportMode";
      expect_done("PUT", uri, std::string("value=") + row.value,
                  std::string("Update switchport mode of Interface ") + ifNum + " successfully.");
      EXPECT_EQ(get(uri), expected_mode(row.word));
    }
  }
}

TEST_F(InterfaceVlanTest, UnknownSwitchportModeHasNoWord) {
  for (uint32_t mode : {0u, 4u, 4294967295u}) {
    bent_output bent("rpcclt_openapiIfSwitchportModeGet", mode);
    EXPECT_EQ(get("/if/3/switchportMode"), expected_mode("")) << mode;
  }
}

TEST_F(InterfaceVlanTest, OnlyPortsAndLagsHaveASwitchportMode) {
  for (const char *ifNum : {"55", "120"}) {
    std::string uri = std::string("/if/") + ifNum;
    EXPECT_EQ(get(uri + "/switchportMode"), expected_platform_error(OPEN_E_NOT_FOUND));
    EXPECT_EQ(put(uri + "/switchportMode", "value=2"), expected_platform_error(OPEN_E_NOT_FOUND));
    EXPECT_EQ(put(uri + "/access/vlan", "value=10"), expected_platform_error(OPEN_E_NOT_FOUND));
    EXPECT_EQ(put(uri + "/trunk/pvid", "value=10"), expected_platform_error(OPEN_E_NOT_FOUND));
    EXPECT_EQ(put(uri + "/trunk/vlan", "value=10"), expected_platform_error(OPEN_E_NOT_FOUND));
  }
}

/* --- Access mode -----------------------------------------------------------------------------------------
 */

TEST_F(InterfaceVlanTest, AccessPortIsInItsAccessVlanOnly) {
  call_xml(interface_api_handler, "POST", "/if/3/vlan/30");
  expect_done("PUT", "/if/3/access/vlan", "value=20", "Update access mode vlan of Interface 3 successfully.");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{0, 1}, {3, 30}})) << "not in force yet";
  put("/if/3/switchportMode", "value=2");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{2, 20}}));
  EXPECT_EQ(get("/if/3/vlan/20"), expected_participation(3, 20, "Include", 0));
  EXPECT_EQ(get("/if/3/vlan/30"), expected_participation(3, 30, "Exclude", 0));
  interface_details details = port_details(3);
  details.pvid = 20;
  EXPECT_EQ(get("/if/3"), expected_details(details));
  EXPECT_EQ(call(interface_api_handler, "DELETE", "/if/3/vlan/20"),
            expected_answers(1, "Delete VLAN 20 failed. VLAN 20 is native vlan."));
  put("/if/3/switchportMode", "value=1");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{0, 1}, {3, 30}}));
}

/* --- Trunk mode ------------------------------------------------------------------------------------------
 */

class InterfaceTrunkTest : public InterfaceVlanTest {
protected:
  InterfaceTrunkTest() {
    create_vlans({40});
    put("/if/3/switchportMode", "value=3");
  }
  void change(const char *method, const char *vlans) const {
    expect_done(method, "/if/3/trunk/vlan", std::string("value=") + vlans,
                *method == 'D' ? "Delete trunk mode vlan of Interface 3 successfully."
                               : "Update trunk mode vlan of Interface 3 successfully.");
  }
};

TEST_F(InterfaceTrunkTest, NativeVlanIsThePvidOfATrunk) {
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{0, 1}}));
  expect_done("PUT", "/if/3/trunk/pvid", "value=20", "Update trunk mode pvid of Interface 3 successfully.");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{2, 20}}));
  EXPECT_EQ(get("/if/3/vlan/20"), expected_participation(3, 20, "Include", 0));
  interface_details details = port_details(3);
  details.pvid = 20;
  EXPECT_EQ(get("/if/3"), expected_details(details));
}

TEST_F(InterfaceTrunkTest, PostAddsToTheListPutMakesItAnewAndDeleteRemoves) {
  change("PUT", "10-20,30");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{0, 1}, {1, 10}, {2, 20}, {3, 30}}));
  EXPECT_EQ(get("/if/3/vlan/10"), expected_participation(3, 10, "Include", 1));
  EXPECT_EQ(get("/if/3/vlan/40"), expected_participation(3, 40, "Exclude", 0));
  change("POST", "40");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{0, 1}, {1, 10}, {2, 20}, {3, 30}, {4, 40}}));
  change("PUT", "20");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{0, 1}, {2, 20}}));
  change("POST", "1-4094");
  change("DELETE", "10,25-40");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{0, 1}, {2, 20}}));
  change("DELETE", "20");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{0, 1}}));
}

/* The two are crossed against their names: creating sets and updating creates. */
TEST_F(InterfaceTrunkTest, PostAndPutCallEachTheOtherPlatformFunction) {
  fault("rpcclt_openapiIfSwitchportTrunkVlanCreate", OPEN_E_EXISTS);
  change("POST", "10");
  change("DELETE", "10");
  EXPECT_EQ(lab("fault list"), "rpcclt_openapiIfSwitchportTrunkVlanCreate OPEN_E_EXISTS 1 0\n");
  lab("fault clear");
  fault("rpcclt_openapiIfSwitchportTrunkVlanSet", OPEN_E_EXISTS);
  change("PUT", "10");
  EXPECT_EQ(lab("fault list"), "rpcclt_openapiIfSwitchportTrunkVlanSet OPEN_E_EXISTS 1 0\n");
  lab("fault clear");
}

TEST_F(InterfaceTrunkTest, ListMayNameVlansThatDoNotExistYet) {
  change("PUT", "10,2000-2002");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{0, 1}, {1, 10}}));
  create_vlans({2001});
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{0, 1}, {1, 10}, {5, 2001}}));
}

TEST_F(InterfaceTrunkTest, TextBehindTheFirstNumberIsThePlatformsToExamine) {
  change("PUT", "10");
  for (const char *vlans : {"10-", "10,", "10x", "10+", "+10", "10%2C0", "10,4095", "20-10", "10--20", "010",
                            "10%0A", "10,%2020", "1%2000"}) {
    for (const char *method : {"POST", "PUT", "DELETE"}) {
      EXPECT_EQ(call(interface_api_handler, method, "/if/3/trunk/vlan", std::string("value=") + vlans),
                expected_platform_error(OPEN_E_PARAM))
          << method << " " << vlans;
    }
  }
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{0, 1}, {1, 10}}));
}

TEST_F(InterfaceTrunkTest, LongestListGoesToThePlatformWhole) {
  std::string vlans = "100"; /* 255 characters, the last of which count */
  while (vlans.size() < 252) vlans += ",20";
  vlans += ",30";
  ASSERT_EQ(vlans.size(), 255u);
  change("PUT", vlans.c_str());
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{0, 1}, {2, 20}, {3, 30}}));
}

/* --- Range of VLAN ids -----------------------------------------------------------------------------------
 */

static const struct {
  const char *method, *uri;
} VLAN_VALUES[] = {
    {"PUT", "/if/3/access/vlan"}, {"PUT", "/if/3/trunk/pvid"},    {"PUT", "/if/3/trunk/vlan"},
    {"POST", "/if/3/trunk/vlan"}, {"DELETE", "/if/3/trunk/vlan"},
};

TEST_F(InterfaceTrunkTest, VlanIdsOutsideTheRangeAreRefused) {
  std::string before = lab("show running-config");
  for (const auto &row : VLAN_VALUES) {
    for (const char *value : {"0", "0,5", "-1", "-10", "4095", "4095,10", "5000-10", "abc", ",10", "x10",
                              "99999999999", "-99999999999", "4294967306", "+"}) {
      EXPECT_EQ(call(interface_api_handler, row.method, row.uri, std::string("value=") + value),
                expected_answers(2, "VLAN ID not valid."))
          << row.method << " " << row.uri << " " << value;
    }
  }
  EXPECT_EQ(lab("show running-config"), before);
}

TEST_F(InterfaceTrunkTest, RangeEndsWhereThePlatformSays) {
  bent_output bent("rpcclt_openapiDot1VlanMaxGet", 20);
  for (const auto &row : VLAN_VALUES) {
    EXPECT_EQ(call(interface_api_handler, row.method, row.uri, "value=21"),
              expected_answers(2, "VLAN ID not valid."));
    FakeRequest request(row.method, row.uri, "value=20");
    EXPECT_EQ(interface_api_handler(handle, request.conn()), 1) << row.method << " " << row.uri;
  }
}

TEST_F(InterfaceTrunkTest, FirstAndLastVlanIdsAreInTheRange) {
  create_vlans({4094});
  for (const auto &row : VLAN_VALUES) {
    for (const char *value : {"1", "4094"}) {
      FakeRequest request(row.method, row.uri, std::string("value=") + value);
      EXPECT_EQ(interface_api_handler(handle, request.conn()), 1) << row.method << " " << row.uri << value;
    }
  }
}

TEST_F(InterfaceTrunkTest, AccessAndNativeVlanMustExist) {
  for (const char *uri : {"/if/3/access/vlan", "/if/3/trunk/pvid"}) {
    EXPECT_EQ(put(uri, "value=50"), expected_platform_error(OPEN_E_NOT_FOUND));
  }
}

/* A number counts as far as it goes. */
TEST_F(InterfaceTrunkTest, TextBehindAnAccessOrNativeVlanDoesNotMatter) {
  expect_done("PUT", "/if/3/trunk/pvid", "value=20x", "Update trunk mode pvid of Interface 3 successfully.");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{2, 20}}));
  expect_done("PUT", "/if/3/access/vlan", "value=+30-40",
              "Update access mode vlan of Interface 3 successfully.");
  put("/if/3/switchportMode", "value=2");
  EXPECT_EQ(get("/if/3/vlan"), expected_participations({{3, 30}}));
}
