/* The TCAM module when the platform fails: every call of every operation with every result, and outputs that
 * the software switch never gives. */
#include "engine/rest_request.h"
#include "tests/unit/modules/failing_calls.h"
#include "tests/unit/modules/tcam_fixture.h"

TEST_F(TcamTest, EveryCallThatFailsIsAnsweredOnceAndEndsTheRequest) {
  const operation_calls operations[] = {
      {"DELETE", "/tcam/policy/1", "", {"rpcclt_openapiTcamPolicyDestroy"}},
      {"DELETE", "/tcam/policy", "", {"rpcclt_openapiTcamPolicyDeleteAll"}},
      {"DELETE", "/tcam/policy/1/port/5", "", {"rpcclt_openapiTcamPolicyIntfRem"}},
      {"GET",
       "/tcam/groupStats",
       "",
       {"rpcclt_openapiTcamGroupStatsGetZYL", "rpcclt_openapiTcamGroupStatsIngressSlicesCountGetZYL",
        "rpcclt_openapiTcamGroupStatsEgressSlicesCountGetZYL"}},
      {"GET", "/tcam/policy/1", "", {"rpcclt_openapiTcamPolicyGet"}},
      {"POST", "/tcam/policy", "actionDrop=1", {"rpcclt_openapiTcamPolicyCreate"}},
      {"POST", "/tcam/policy/1/port/6", "", {"rpcclt_openapiTcamPolicyIntfAdd"}},
  };
  for (const operation_calls &operation : operations)
    expect_every_failure_answered(tcam_api_handler, handle, operation);
  EXPECT_EQ(get("/tcam/policy"), expected_policies({}));
}

TEST_F(TcamTest, FailureAtTheSecondStageIsAnsweredWithoutTheFirst) {
  expect_failures_answered(tcam_api_handler, handle, {"GET", "/tcam/groupStats", "", {}},
                           "rpcclt_openapiTcamGroupStatsGetZYL", 1);
}

TEST_F(TcamTest, TextThatIsNoAddressForThePlatformIsRefused) {
  const struct {
    const char *name;
    int code;
  } rows[] = {{"matchDstIp", 3}, {"matchDstIpMask", 4}, {"matchSrcIp", 5}, {"matchSrcIpMask", 6}};
  for (const auto &row : rows) {
    for (open_error_t rc : all_platform_errors()) {
      fault("rpcclt_openapiInetAddrGet", rc, 2);
      EXPECT_EQ(
          call(tcam_api_handler, "POST", "/tcam/policy", std::string(row.name) + "=10.0.0.1"),
          expected_answers(row.code, std::string("The value of parameter ") + row.name + " is invalid."))
          << row.name << " " << rc;
    }
  }
}

/* --- Lists ---------------------------------------------------------------------------------------------- */

TEST_F(TcamTest, OnlyTheEndOfTheWalkEndsTheList) {
  configure("tcam policy 1 openflow\ntcam policy 2 egress\n");
  for (open_error_t rc : all_platform_errors()) {
    bool end = rc == OPEN_E_FAIL;
    fault("rpcclt_openapiTcamPolicyGetFirst", rc);
    EXPECT_EQ(call_xml(tcam_api_handler, "GET", "/tcam/policy"),
              expected_policies(end ? std::vector<unsigned>() : std::vector<unsigned>{0, 1, 2}).xml)
        << rc;
    fault("rpcclt_openapiTcamPolicyGetNext", rc, 1, 1);
    std::string listed = call_xml(tcam_api_handler, "GET", "/tcam/policy");
    if (end) {
      EXPECT_EQ(listed, expected_policies({1, 2}).xml);
    } else { /* the id that the failed step left stands again, and the walk goes on from it */
      EXPECT_EQ(listed, expected_policies({1, 2, 2}).xml) << rc;
    }
  }
}

TEST_F(TcamTest, ListWithoutAnEndIsGivenUp) {
  configure("tcam policy 1 openflow\ntcam policy 2 egress\n");
  bent_output first_again("rpcclt_openapiTcamPolicyGetNext", 1);
  EXPECT_EQ(get("/tcam/policy"), expected_platform_error(OPEN_E_INTERNAL));
}

/* --- Outputs -------------------------------------------------------------------------------------------- */

TEST_F(TcamTest, UnknownPolicyTypeAnswers97) {
  make("");
  {
    bent_output end_value("rpcclt_openapiTcamPolicyGet", 4);
    shown_policy expected;
    expected.type = "End value";
    EXPECT_EQ(get("/tcam/policy/1"), expected_policy(expected));
  }
  for (uint32_t type : {0u, 5u, UINT32_MAX}) {
    bent_output bent("rpcclt_openapiTcamPolicyGet", type);
    EXPECT_EQ(get("/tcam/policy/1"), expected_platform_error(OPEN_E_INTERNAL)) << type;
  }
}

TEST_F(TcamTest, HeaderAndPrioritiesAreThoseOfTheRecord) {
  make("");
  const std::string get_policy = "rpcclt_openapiTcamPolicyGet";
  bent_output priority((get_policy + " policyPrio").c_str(), UINT32_MAX);
  bent_output rule_priority((get_policy + " rulePrio").c_str(), UINT32_MAX);
  bent_output major((get_policy + " major").c_str(), 2);
  bent_output minor((get_policy + " minor").c_str(), UINT32_MAX);
  bent_output length((get_policy + " headerLen").c_str(), 16);
  shown_policy expected;
  expected.priority = expected.rule_priority = 4294967295;
  expected.version = "2.-1";
  expected.header_length = 16;
  EXPECT_EQ(get("/tcam/policy/1"), expected_policy(expected));
}

/* The platform is given the place of an id; what it writes there is not answered. */
TEST_F(TcamTest, IdOfTheRequestIsAnsweredWhateverThePlatformMakesOfIt) {
  make("");
  struct {
    const char *method, *uri, *function, *message;
  } rows[] = {{"POST", "/tcam/policy/1/port/5", "rpcclt_openapiTcamPolicyIntfAdd",
               "Configure the policy 1 to port 5 successfully."},
              {"DELETE", "/tcam/policy/1/port/5", "rpcclt_openapiTcamPolicyIntfRem",
               "Delete the policy 1 from port 5 successfully."},
              {"DELETE", "/tcam/policy/1", "rpcclt_openapiTcamPolicyDestroy",
               "Delete the policy ID 1 successfully."}};
  {
    bent_output bent("rpcclt_openapiTcamPolicyGet policyId", 7);
    EXPECT_EQ(get("/tcam/policy/1"), expected_policy({}));
  }
  for (const auto &row : rows) {
    bent_output bent(row.function, 7);
    EXPECT_EQ(done(row.method, row.uri), expected_answers(0, row.message).xml) << row.uri;
  }
}

/* GET /tcam/groupStats of two OpenFlow policies and a Gen policy, with these ingress groups. */
static Answers expected_stats(const std::vector<shown_group> &ingress) {
  return expected_data({branch(
      "group_stats", {shown_stage("stage_ingress", ingress, {4, 206076, 206080}, {3, 2, 5}, {0, 400, 400}),
                      shown_stage("stage_egress", {unused_group, unused_group, unused_group, unused_group},
                                  {0, 205056, 205056}, {0, 801, 801}, {})})});
}

class TcamGroupTest : public TcamTest {
protected:
  TcamGroupTest() { configure("tcam policy 1 openflow\ntcam policy 2 openflow\ntcam policy 3 ipv6\n"); }

  shown_group openflow = {1, "OpenFlow policy", 1, 1, 2, 254, 256};
  shown_group gen = {2, "Gen (IPv6) policy", 2, 1, 1, 255, 256};
};

TEST_F(TcamGroupTest, NameThatCannotBeReadIsEmpty) {
  for (open_error_t rc : all_platform_errors()) {
    for (unsigned skip : {0u, 1u}) {
      shown_group first = openflow, second = gen;
      (skip == 0 ? first : second).type = "";
      fault("rpcclt_openapiTcamHapiBroadPolicyTypeNameGetZYL", rc, 1, skip);
      EXPECT_EQ(call_xml(tcam_api_handler, "GET", "/tcam/groupStats"),
                expected_stats({first, second, unused_group, unused_group, unused_group}).xml)
          << rc << " " << skip;
    }
  }
}

TEST_F(TcamGroupTest, AsManyGroupsAreShownAsThePlatformSays) {
  bent_output one("rpcclt_openapiTcamGroupStatsGetZYL", 1);
  Answers expected = expected_data({branch(
      "group_stats", {shown_stage("stage_ingress", {openflow}, {4, 206076, 206080}, {3, 2, 5}, {0, 400, 400}),
                      shown_stage("stage_egress", {unused_group}, {0, 205056, 205056}, {0, 801, 801}, {})})});
  EXPECT_EQ(get("/tcam/groupStats"), expected);
}

TEST_F(TcamGroupTest, MoreGroupsThanTheRecordHoldsAreNotRead) {
  std::vector<shown_group> ingress(OPEN_TCAM_GROUPS_MAX, unused_group);
  ingress[0] = openflow;
  ingress[1] = gen;
  Answers expected = expected_data(
      {branch("group_stats",
              {shown_stage("stage_ingress", ingress, {4, 206076, 206080}, {3, 2, 5}, {0, 400, 400}),
               shown_stage("stage_egress", std::vector<shown_group>(OPEN_TCAM_GROUPS_MAX, unused_group),
                           {0, 205056, 205056}, {0, 801, 801}, {})})});
  for (uint32_t size : {uint32_t{OPEN_TCAM_GROUPS_MAX}, uint32_t{OPEN_TCAM_GROUPS_MAX} + 1, UINT32_MAX}) {
    bent_output bent("rpcclt_openapiTcamGroupStatsGetZYL", size);
    EXPECT_EQ(get("/tcam/groupStats"), expected) << size;
  }
}

TEST_F(TcamGroupTest, GroupIsUsedForOneOnly) {
  Answers not_used = expected_stats({unused_group, gen, unused_group, unused_group, unused_group});
  for (uint32_t in_use : {0u, 2u, UINT32_MAX}) {
    bent_output bent("rpcclt_openapiTcamGroupStatsGetZYL inUse", in_use);
    std::string shown = call_xml(tcam_api_handler, "GET", "/tcam/groupStats");
    EXPECT_EQ(shown, not_used.xml) << in_use;
  }
}

TEST_F(TcamGroupTest, NameWithoutTerminatorIsCutAtItsBuffer) {
  shown_group first = openflow, second = gen;
  first.type = second.type = std::string(256, 'x');
  bent_output bent("rpcclt_openapiTcamHapiBroadPolicyTypeNameGetZYL", 'x');
  EXPECT_EQ(get("/tcam/groupStats"),
            expected_stats({first, second, unused_group, unused_group, unused_group}));
}
