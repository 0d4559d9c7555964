/* The VLAN module: every route, its refusals and its near misses. Platform failures: test_vlan_failures.cpp.
 */
#include "modules/rest_module_vlan.h"
#include "tests/unit/modules/vlan_fixture.h"

/* --- Create ----------------------------------------------------------------------------------------------
 */

TEST_F(VlanTest, CreatedVlanExists) {
  EXPECT_EQ(call_xml(vlan_api_handler, "POST", "/vlans/10"),
            expected_answers(0, "Create VLAN 10 successfully.").xml);
  FakeRequest json("POST", "/vlans/0011", "format=json");
  EXPECT_EQ(vlan_api_handler(handle, json.conn()), 1);
  EXPECT_EQ(answer_body(json, "json"), expected_answers(0, "Create VLAN 11 successfully.").json);
  EXPECT_EQ(listed_vlans(), expected_list({1, 10, 11}));
}

TEST_F(VlanTest, FirstAndLastIdCanBeCreated) {
  for (const char *vid : {"2", "4094"}) {
    EXPECT_EQ(call_xml(vlan_api_handler, "POST", std::string("/vlans/") + vid),
              expected_answers(0, std::string("Create VLAN ") + vid + " successfully.").xml);
  }
  EXPECT_EQ(listed_vlans(), expected_list({1, 2, 4094}));
}

TEST_F(VlanTest, ExistingVlanIsNotCreatedAgain) {
  EXPECT_EQ(call(vlan_api_handler, "POST", "/vlans/1"), expected_answers(1, "VLAN 1 exist."));
  create(10);
  EXPECT_EQ(call(vlan_api_handler, "POST", "/vlans/10"), expected_answers(1, "VLAN 10 exist."));
}

TEST_F(VlanTest, IdsOutsideTheRangeAreNotValid) {
  for (const char *vid :
       {"0", "000", "4095", "4096", "2147483647", "4294967296", "4294967297", "99999999999999999999"}) {
    EXPECT_EQ(call(vlan_api_handler, "POST", std::string("/vlans/") + vid),
              expected_answers(2, "VLAN ID not valid."))
        << vid;
  }
  EXPECT_EQ(call(vlan_api_handler, "POST", "/vlans/" + std::string(248, '9')),
            expected_answers(2, "VLAN ID not valid."));
  EXPECT_EQ(call(vlan_api_handler, "POST", "/vlans/" + std::string(248, '0')),
            expected_answers(2, "VLAN ID not valid."));
  EXPECT_EQ(call(vlan_api_handler, "POST", "/vlans/" + std::string(249, '9')), expected_bad_request());
  EXPECT_EQ(listed_vlans(), expected_list({1}));
}

TEST_F(VlanTest, FullTableAnswers99) {
  lower_limit("vlans", 2);
  EXPECT_EQ(call_xml(vlan_api_handler, "POST", "/vlans/10"),
            expected_answers(0, "Create VLAN 10 successfully.").xml);
  EXPECT_EQ(call(vlan_api_handler, "POST", "/vlans/11"), expected_platform_error(OPEN_E_FULL));
  EXPECT_EQ(listed_vlans(), expected_list({1, 10}));
}

/* --- Delete ----------------------------------------------------------------------------------------------
 */

TEST_F(VlanTest, DeletedVlanIsGone) {
  create(10);
  create(20);
  EXPECT_EQ(call_xml(vlan_api_handler, "DELETE", "/vlans/10"),
            expected_answers(0, "Delete VLAN 10 successfully.").xml);
  wait_applied();
  EXPECT_EQ(listed_vlans(), expected_list({1, 20}));
  EXPECT_EQ(call(vlan_api_handler, "DELETE", "/vlans/10"), expected_answers(1, "VLAN 10 does not exist."));
}

TEST_F(VlanTest, AbsentVlanCannotBeDeletedNamedOrRead) {
  for (const char *vid : {"0", "2", "4095", "2147483647"}) {
    Answers absent = expected_answers(1, std::string("VLAN ") + vid + " does not exist.");
    std::string uri = std::string("/vlans/") + vid;
    EXPECT_EQ(call(vlan_api_handler, "DELETE", uri), absent);
    EXPECT_EQ(call(vlan_api_handler, "GET", uri), absent);
    EXPECT_EQ(call(vlan_api_handler, "PUT", uri + "/name", "value=x"), absent);
    EXPECT_EQ(call(vlan_api_handler, "PUT", uri + "/name"), absent); /* told before the value is looked at */
  }
}

TEST_F(VlanTest, DefaultVlanCannotBeDeleted) {
  EXPECT_EQ(call(vlan_api_handler, "DELETE", "/vlans/1"), expected_platform_error(OPEN_E_FAIL));
  EXPECT_EQ(listed_vlans(), expected_list({1}));
}

/* --- Name ------------------------------------------------------------------------------------------------
 */

TEST_F(VlanTest, NameOfOneTo32CharactersIsTaken) {
  create(10);
  for (const std::string &name :
       {std::string("x"), std::string("servers"), std::string(31, 'n'), std::string(32, 'n')}) {
    EXPECT_EQ(call(vlan_api_handler, "PUT", "/vlans/10/name", "value=" + name),
              expected_answers(0, "Update name of VLAN 10 successfully."));
    EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10"), expected_details(10, name, {}));
  }
}

TEST_F(VlanTest, NameIsUrlDecodedAndMayStandInTheBody) {
  create(10);
  FakeRequest request("PUT", "/vlans/10/name", "", "value=a%26b+%3Cc%3E");
  EXPECT_EQ(vlan_api_handler(handle, request.conn()), 1);
  EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10"), expected_details(10, "a&b <c>", {}));
}

TEST_F(VlanTest, OtherNamesAreRefused) {
  create(10);
  Answers refused = expected_answers(2, "The value of parameter is invalid.");
  for (const std::string &query : {std::string(), std::string("value="), "value=" + std::string(33, 'n'),
                                   "value=" + std::string(255, 'n'), "value=" + std::string(256, 'n'),
                                   "value=" + std::string(5000, 'n'), std::string("name=x")}) {
    EXPECT_EQ(call(vlan_api_handler, "PUT", "/vlans/10/name", query), refused) << query;
  }
  FakeRequest in_body("PUT", "/vlans/10/name", "", "value=" + std::string(300, 'n'));
  vlan_api_handler(handle, in_body.conn());
  EXPECT_EQ(answer_body(in_body, "xml"), refused.xml);
  EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10"), expected_details(10, "", {}));
}

TEST_F(VlanTest, ControlCharactersAreThePlatformsRefusal) {
  create(10);
  EXPECT_EQ(call(vlan_api_handler, "PUT", "/vlans/10/name", "value=a%0Ab"),
            expected_platform_error(OPEN_E_PARAM));
}

/* --- Details ---------------------------------------------------------------------------------------------
 */

TEST_F(VlanTest, DefaultVlanHasEveryPort) {
  std::vector<vlan_member> members;
  for (unsigned port = 1; port <= 54; port++) members.push_back({port, port, "Include", 0});
  EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/1"), expected_details(1, "default", members));
}

TEST_F(VlanTest, MembersAreKeyedByTheirPlaceAmongAllPorts) {
  create(10);
  EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10"), expected_details(10, "", {}));
  for (uint32_t port : {3, 7, 54}) include(10, port);
  ASSERT_EQ(rpcclt_openapiVlanIfTaggingSet(handle, 7, 10, 1), OPEN_E_NONE);
  std::vector<vlan_member> members = {{3, 3, "Include", 0}, {7, 7, "Include", 1}, {54, 54, "Include", 0}};
  EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10"), expected_details(10, "", members));
}

TEST_F(VlanTest, PortsThatAreNotMembersAndLagsAreNotListed) {
  create(10);
  include(10, 4);
  include(10, 56);
  ASSERT_EQ(rpcclt_openapiVlanIfParticipationSet(handle, 10, 5, OPEN_VLAN_PARTICIPATION_MODE_AUTO),
            OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiVlanIfParticipationSet(handle, 10, 6, OPEN_VLAN_PARTICIPATION_MODE_EXCLUDE),
            OPEN_E_NONE);
  EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10"), expected_details(10, "", {{4, 4, "Include", 0}}));
}

TEST_F(VlanTest, ParticipationModesHaveWords) {
  create(10);
  include(10, 3);
  struct {
    uint32_t mode;
    const char *word;
  } rows[] = {{0, "Include"}, {1, "Autodetect"}, {2, "Exclude"}, {3, ""}, {4294967295u, ""}};
  for (const auto &row : rows) {
    bent_output bent("rpcclt_openapiVlanIfParticipationGet", row.mode);
    EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10"), expected_details(10, "", {{3, 3, row.word, 0}}))
        << row.mode;
  }
}

TEST_F(VlanTest, NameMayFillTheBufferToTheLastByte) {
  create(10);
  std::string name(32, 'n');
  call(vlan_api_handler, "PUT", "/vlans/10/name", "value=" + name);
  for (uint32_t size : {33u, 34u, 5000u}) {
    bent_output bent("rpcclt_openapiVlanNameLenGet", size);
    EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10"), expected_details(10, name, {}));
  }
  bent_output bent("rpcclt_openapiVlanNameLenGet", 32); /* the platform refuses a buffer that is too small */
  EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10"), expected_platform_error(OPEN_E_PARAM));
}

/* --- List ------------------------------------------------------------------------------------------------
 */

TEST_F(VlanTest, ListOfAFreshSwitchHasVlan1Only) {
  EXPECT_EQ(listed_vlans(), expected_list({1}));
}

TEST_F(VlanTest, ListIsInAscendingOrderWithoutGapsInItsKeys) {
  for (uint32_t vid : {4094, 10, 2, 300}) create(vid);
  EXPECT_EQ(listed_vlans(), expected_list({1, 2, 10, 300, 4094}));
}

TEST_F(VlanTest, ListOfAllVlansIsWhole) {
  std::vector<unsigned> all = {1};
  for (uint32_t vid = 2; vid <= 4094; vid++) {
    create(vid);
    all.push_back(vid);
  }
  EXPECT_EQ(listed_vlans(), expected_list(all));
}

/* --- Pending changes --------------------------------------------------------------------------------------
 */

TEST_F(VlanTest, NothingIsPendingOnceChangesAreTaken) {
  create(10);
  wait_applied();
  EXPECT_EQ(pending_vlans(), expected_pending({}));
}

TEST_F(VlanTest, HeldChangesAndDeletionsArePending) {
  create(20);
  create(30);
  wait_applied();
  hold_changes();
  create(10);
  include(20, 3);
  ASSERT_EQ(rpcclt_openapiVlanDelete(handle, 30), OPEN_E_NONE);
  EXPECT_EQ(pending_vlans(),
            expected_pending({{10, "pending change"}, {20, "pending change"}, {30, "pending deletion"}}));
  EXPECT_EQ(listed_vlans(), expected_list({1, 10, 20}));
  release_changes();
  wait_applied();
  EXPECT_EQ(pending_vlans(), expected_pending({}));
}

TEST_F(VlanTest, PendingChangeOfVlan1IsNeverListed) {
  hold_changes();
  call(vlan_api_handler, "PUT", "/vlans/1/name", "value=ground");
  uint32_t vid = 0, deletion = 9;
  ASSERT_EQ(openapiVlanNextChangedGet(handle, 0, &vid, &deletion), OPEN_E_NONE)
      << "the switch has it pending";
  ASSERT_EQ(vid, 1u);
  EXPECT_EQ(pending_vlans(), expected_pending({}));
  create(2);
  EXPECT_EQ(pending_vlans(), expected_pending({{2, "pending change"}}));
  release_changes();
}

TEST_F(VlanTest, DeletedVlanThatIsMadeAgainIsAPendingChange) {
  create(10);
  wait_applied();
  hold_changes();
  call_xml(vlan_api_handler, "DELETE", "/vlans/10");
  EXPECT_EQ(pending_vlans(), expected_pending({{10, "pending deletion"}}));
  EXPECT_EQ(call_xml(vlan_api_handler, "POST", "/vlans/10"),
            expected_answers(0, "Create VLAN 10 successfully.").xml);
  EXPECT_EQ(pending_vlans(), expected_pending({{10, "pending change"}}));
  release_changes();
}

/* --- Routes ----------------------------------------------------------------------------------------------
 */

TEST_F(VlanTest, NothingElseIsServed) {
  create(10);
  struct {
    const char *method, *uri;
  } rows[] = {
      {"GET", "/vlans/"},
      {"GET", "/vlans/x"},
      {"GET", "/vlans/10/"},
      {"GET", "/vlans/10/name"},
      {"GET", "/vlans/10x"},
      {"GET", "/vlans/-1"},
      {"GET", "/vlans/ 10"},
      {"GET", "/vlans/+10"},
      {"GET", "/vlans//10"},
      {"GET", "/Vlans"},
      {"GET", "/vlans/pendingChanges/"},
      {"GET", "/vlans/pendingchanges"},
      {"GET", "/vlans/pendingChange"},
      {"GET", "/vlans/pendingChangesx"},
      {"GET", "/vlans/pendingChanges "},
      {"GET", "/vlans "},
      {"GET", "/vlan"},
      {"GET", ""},
      {"GET", "/vlans/10%"},
      {"GET", "/vlans/%s%s%n"},
      {"GET", "/vlans/10\x01"},
      {"POST", "/vlans"},
      {"POST", "/vlans/"},
      {"POST", "/vlans/20/"},
      {"POST", "/vlans/10/name"},
      {"POST", "/vlans/20x"},
      {"POST", "/vlans/pendingChanges"},
      {"PUT", "/vlans/10"},
      {"PUT", "/vlans/10/"},
      {"PUT", "/vlans"},
      {"PUT", "/vlans/10/nam"},
      {"PUT", "/vlans/10/eman"},
      {"PUT", "/vlans/10/names"},
      {"PUT", "/vlans/10/name/"},
      {"PUT", "/vlans/10/Name"},
      {"PUT", "/vlans/10/namename"},
      {"PUT", "/vlans//name"},
      {"PUT", "/vlans/x/name"},
      {"PUT", "/vlans/10//name"},
      {"DELETE", "/vlans"},
      {"DELETE", "/vlans/10/"},
      {"DELETE", "/vlans/10/name"},
      {"DELETE", "/vlans/all"},
      {"PATCH", "/vlans/10"},
      {"HEAD", "/vlans"},
      {"OPTIONS", "/vlans"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(call(vlan_api_handler, row.method, row.uri, "value=x"), expected_bad_request())
        << row.method << " " << row.uri;
  }
  EXPECT_EQ(listed_vlans(), expected_list({1, 10}));
}

TEST_F(VlanTest, MethodVariableChoosesTheOperation) {
  EXPECT_EQ(call_xml(vlan_api_handler, "GET", "/vlans/10", "method=post"),
            expected_answers(0, "Create VLAN 10 successfully.").xml);
  EXPECT_EQ(call_xml(vlan_api_handler, "GET", "/vlans/10/name", "method=PUT&value=x"),
            expected_answers(0, "Update name of VLAN 10 successfully.").xml);
  EXPECT_EQ(call(vlan_api_handler, "DELETE", "/vlans/10", "method=getAll"), expected_details(10, "x", {}));
  EXPECT_EQ(call_xml(vlan_api_handler, "GET", "/vlans/10", "method=Deleted"),
            expected_answers(0, "Delete VLAN 10 successfully.").xml);
}

TEST_F(VlanTest, BlanksAfterANumberAreNoExtraText) {
  create(10);
  EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10 \n"), expected_details(10, "", {}));
}

/* --- Helpers that other modules call ----------------------------------------------------------------------
 */

TEST_F(VlanTest, CheckVlanExistIsOneForAnAbsentVlan) {
  EXPECT_EQ(check_vlan_exist(handle, 1), 0u);
  EXPECT_EQ(check_vlan_exist(handle, 2), 1u);
  EXPECT_EQ(check_vlan_exist(handle, 0), 1u);
  EXPECT_EQ(check_vlan_exist(handle, 4095), 1u);
  for (open_error_t rc : all_platform_errors()) {
    fault("openapiVlanCreatedCheck", rc);
    EXPECT_EQ(check_vlan_exist(handle, 1), 1u) << rc;
  }
}

TEST_F(VlanTest, HighestVlanIdIsZeroWhenThePlatformDoesNotTell) {
  EXPECT_EQ(get_vlan_num_max(handle), 4094u);
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiDot1VlanMaxGet", rc);
    EXPECT_EQ(get_vlan_num_max(handle), 0u) << rc;
  }
}

TEST_F(VlanTest, HighestInterfaceNumberComesWithThePlatformsResult) {
  uint32_t max = 7;
  EXPECT_EQ(get_interface_num_max(handle, &max), OPEN_E_NONE);
  EXPECT_EQ(max, 353u);
  for (open_error_t rc : all_platform_errors()) {
    max = 7;
    fault("openapiMaxInterfaceCountGet", rc);
    EXPECT_EQ(get_interface_num_max(handle, &max), rc);
    EXPECT_EQ(max, 0u);
  }
}
