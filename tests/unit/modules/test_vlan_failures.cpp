/* The VLAN module when the platform fails: every call of every operation with every result. */
#include "tests/unit/modules/vlan_fixture.h"

class VlanFailureTest : public VlanTest {
protected:
  VlanFailureTest() {
    create(10);
    include(10, 3);
    include(10, 7);
    wait_applied();
  }
};

static const Answers ABSENT = expected_answers(1, "VLAN 10 does not exist.");

TEST_F(VlanFailureTest, WhateverTheCreatedCheckAnswersTheVlanCountsAsAbsent) {
  for (open_error_t rc : all_platform_errors()) {
    fault("openapiVlanCreatedCheck", rc, 2);
    EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10"), ABSENT) << rc;
    fault("openapiVlanCreatedCheck", rc, 2);
    EXPECT_EQ(call(vlan_api_handler, "DELETE", "/vlans/10"), ABSENT) << rc;
    fault("openapiVlanCreatedCheck", rc, 2);
    EXPECT_EQ(call(vlan_api_handler, "PUT", "/vlans/10/name", "value=x"), ABSENT) << rc;
    fault("openapiVlanCreatedCheck", rc, 2);
    EXPECT_EQ(call(vlan_api_handler, "POST", "/vlans/10"), expected_platform_error(OPEN_E_EXISTS)) << rc;
  }
  EXPECT_EQ(listed_vlans(), expected_list({1, 10}));
}

TEST_F(VlanFailureTest, CreatingFailsWithThePlatformsResult) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiVlanCreate", rc, 2);
    EXPECT_EQ(call(vlan_api_handler, "POST", "/vlans/20"), expected_platform_error(rc)) << rc;
  }
  EXPECT_EQ(listed_vlans(), expected_list({1, 10}));
}

TEST_F(VlanFailureTest, NoIdIsValidWhenTheMaximumCannotBeRead) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiDot1VlanMaxGet", rc, 2);
    EXPECT_EQ(call(vlan_api_handler, "POST", "/vlans/20"), expected_answers(2, "VLAN ID not valid.")) << rc;
  }
  fault("rpcclt_openapiDot1VlanMaxGet", OPEN_E_FAIL, 2);
  EXPECT_EQ(call(vlan_api_handler, "POST", "/vlans/0"), expected_answers(2, "VLAN ID not valid."));
  lab("fault clear"); /* id 0 is refused without asking */
}

TEST_F(VlanFailureTest, DeletingFailsWithThePlatformsResult) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiVlanDelete", rc, 2);
    EXPECT_EQ(call(vlan_api_handler, "DELETE", "/vlans/10"), expected_platform_error(rc)) << rc;
  }
  EXPECT_EQ(listed_vlans(), expected_list({1, 10}));
}

TEST_F(VlanFailureTest, NamingFailsWithThePlatformsResult) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiVlanNameSet", rc, 2);
    EXPECT_EQ(call(vlan_api_handler, "PUT", "/vlans/10/name", "value=x"), expected_platform_error(rc)) << rc;
  }
}

TEST_F(VlanFailureTest, DetailsFailWithTheResultOfAnyCall) {
  struct {
    const char *function;
    unsigned skip; /* calls that succeed before: a failure in the middle of the walk */
  } rows[] = {
      {"rpcclt_openapiVlanNameLenGet", 0},
      {"rpcclt_openapiVlanNameGet", 0},
      {"rpcclt_openapiIfFirstGet", 0},
      {"openapiVlanIfParticipationStatusGet", 0},
      {"openapiVlanIfParticipationStatusGet", 5},
      {"openapiVlanIfParticipationStatusGet", 53},
      {"rpcclt_openapiVlanIfParticipationGet", 0},
      {"rpcclt_openapiVlanIfParticipationGet", 1},
      {"openapiVlanIfTaggingGet", 0},
      {"openapiVlanIfTaggingGet", 1},
  };
  for (const auto &row : rows) {
    for (open_error_t rc : all_platform_errors()) {
      for (const char *format : {"xml", "json"}) {
        fault(row.function, rc, 1, row.skip);
        FakeRequest request("GET", "/vlans/10", std::string("format=") + format);
        EXPECT_EQ(vlan_api_handler(handle, request.conn()), 0);
        Answers expected = expected_platform_error(rc);
        EXPECT_EQ(answer_body(request, format), *format == 'x' ? expected.xml : expected.json)
            << row.function << rc;
      }
    }
  }
}

TEST_F(VlanFailureTest, NoCallOfTheDetailsIsMadeAfterTheFirstFailure) {
  const char *calls[] = {"rpcclt_openapiVlanNameLenGet",
                         "rpcclt_openapiVlanNameGet",
                         "openapiVlanIsStatic",
                         "rpcclt_openapiIfFirstGet",
                         "openapiVlanIfParticipationStatusGet",
                         "rpcclt_openapiVlanIfParticipationGet",
                         "openapiVlanIfTaggingGet",
                         "rpcclt_openapiIfNextGet"};
  for (size_t i = 0; i + 1 < std::size(calls); i++) {
    if (std::string(calls[i]) == "openapiVlanIsStatic") continue; /* answers no result */
    fault(calls[i], OPEN_E_EXISTS);
    unsigned already_made =
        std::string(calls[i + 1]) == "rpcclt_openapiIfNextGet" ? 2 : 0; /* ports 1 and 2 */
    fault(calls[i + 1], OPEN_E_TIMEOUT, 1, already_made);
    EXPECT_EQ(call_xml(vlan_api_handler, "GET", "/vlans/10"), expected_platform_error(OPEN_E_EXISTS).xml)
        << calls[i];
    EXPECT_EQ(lab("fault list"), std::string(calls[i + 1]) + " OPEN_E_TIMEOUT 1 0\n");
    lab("fault clear");
  }
}

TEST_F(VlanFailureTest, VlanThatIsNotKnownToBeStaticIsDynamic) {
  fault("openapiVlanIsStatic", OPEN_E_FAIL, 2);
  EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10"),
            expected_details(10, "", {{3, 3, "Include", 0}, {7, 7, "Include", 0}}, "dynamic"));
}

TEST_F(VlanFailureTest, WalkEndsAtTheFirstFailOfTheNextInterface) {
  for (const char *format : {"xml", "json"}) {
    fault("rpcclt_openapiIfNextGet", OPEN_E_FAIL, 1, 4); /* after port 5 */
    FakeRequest request("GET", "/vlans/10", std::string("format=") + format);
    EXPECT_EQ(vlan_api_handler(handle, request.conn()), 1);
    Answers expected = expected_details(10, "", {{3, 3, "Include", 0}});
    EXPECT_EQ(answer_body(request, format), *format == 'x' ? expected.xml : expected.json);
  }
}

/* Any other answer goes on with whatever interface it named: none, which the next call then refuses. */
TEST_F(VlanFailureTest, WalkGoesOnAfterAnyOtherAnswerAndStillEnds) {
  for (open_error_t rc : all_platform_errors()) {
    if (rc == OPEN_E_FAIL) continue;
    fault("rpcclt_openapiIfNextGet", rc, 1, 4);
    EXPECT_EQ(call_xml(vlan_api_handler, "GET", "/vlans/10"), expected_platform_error(OPEN_E_NOT_FOUND).xml)
        << rc;
  }
}

TEST_F(VlanFailureTest, NameBufferThatCannotBeAllocatedAnswers97) {
  bent_output bent("rpcclt_openapiVlanNameLenGet", 0xffffffffu);
  little_memory limit;
  EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10"), expected_platform_error(OPEN_E_INTERNAL));
}

TEST_F(VlanFailureTest, NameBufferOfNoBytesIsThePlatformsRefusal) {
  bent_output bent("rpcclt_openapiVlanNameLenGet", 0);
  EXPECT_EQ(call(vlan_api_handler, "GET", "/vlans/10"), expected_platform_error(OPEN_E_PARAM));
}

TEST_F(VlanFailureTest, ListEndsQuietlyAtAnyFailure) {
  create(20);
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiVlanNextGet", rc);
    EXPECT_EQ(call_xml(vlan_api_handler, "GET", "/vlans"), expected_list({1}).xml) << rc;
    fault("rpcclt_openapiVlanNextGet", rc, 1, 1);
    EXPECT_EQ(call_xml(vlan_api_handler, "GET", "/vlans"), expected_list({1, 10}).xml) << rc;
  }
}

TEST_F(VlanFailureTest, PendingListEndsQuietlyAtAnyFailure) {
  hold_changes();
  create(20);
  create(30);
  for (open_error_t rc : all_platform_errors()) {
    fault("openapiVlanNextChangedGet", rc);
    EXPECT_EQ(call_xml(vlan_api_handler, "GET", "/vlans/pendingChanges"), expected_pending({}).xml) << rc;
    fault("openapiVlanNextChangedGet", rc, 1, 1);
    EXPECT_EQ(call_xml(vlan_api_handler, "GET", "/vlans/pendingChanges"),
              expected_pending({{20, "pending change"}}).xml)
        << rc;
  }
  release_changes();
}
