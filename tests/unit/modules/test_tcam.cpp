/* The TCAM module: every route, its refusals and its near misses. Platform failures: test_tcam_failures.cpp.
 */
#include "tests/unit/modules/tcam_fixture.h"

/* --- Names ---------------------------------------------------------------------------------------------- */

TEST(TcamNames, PolicyTypesHaveNames) {
  const char *const names[] = {"OpenFlow policy", "Gen (IPv6) policy", "Egress policy", "End value"};
  for (uint32_t type = 1; type <= 4; type++) {
    char name[256] = "before";
    EXPECT_EQ(get_tcam_policy_type_string_by_eum(type, name), 0);
    EXPECT_STREQ(name, names[type - 1]);
  }
  for (uint32_t type : {0u, 5u, 256u + 1, UINT32_MAX}) {
    char name[256] = "before";
    EXPECT_NE(get_tcam_policy_type_string_by_eum(type, name), 0) << type;
    EXPECT_STREQ(name, "before") << type;
  }
}

TEST(TcamNames, ActionIsContainedWhenAllItsBitsAreSet) {
  const struct {
    uint32_t actions, action;
    int result;
  } rows[] = {{0, 0, 0},
              {1, 0, 1},
              {0xff, 0, 1},
              {0, 1, 1},
              {1, 1, 0},
              {0xff, 0x80, 0},
              {0x7f, 0x80, 1},
              {0x03, 0x03, 0},
              {0x01, 0x03, 1},
              {0x02, 0x03, 1},
              {0x07, 0x03, 0},
              {UINT32_MAX, UINT32_MAX, 0},
              {0x7fffffff, UINT32_MAX, 1}};
  for (const auto &row : rows)
    EXPECT_EQ(get_if_tcam_action_type_contain_specified_action(row.actions, row.action), row.result)
        << row.actions << " " << row.action;
}

/* --- GET /tcam ------------------------------------------------------------------------------------------ */

TEST_F(TcamTest, InformationIsTheVersionOfTheInterface) {
  Answers answers = get("/tcam");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<infomation><tcam_api_version>0.1</tcam_api_version></infomation></rlt_data>"
                         "</result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"infomation\": { \"tcam_api_version\": \"0.1\" } } } }\n");
}

/* --- Listing and deleting ------------------------------------------------------------------------------- */

TEST_F(TcamTest, PoliciesAreListedByTheirIds) {
  Answers none = get("/tcam/policy");
  EXPECT_EQ(none.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                      "<policies></policies></rlt_data></result>\n");
  EXPECT_EQ(none.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                       "\"rlt_data\": { \"policies\": { } } } }\n");
  configure("tcam policy 2 egress\ntcam policy 640 openflow\n");
  Answers two = get("/tcam/policy");
  EXPECT_EQ(two.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                     "<policies><policy><policy_id>2</policy_id></policy><policy><policy_id>640</policy_id>"
                     "</policy></policies></rlt_data></result>\n");
  EXPECT_EQ(two.json,
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
            "\"rlt_data\": { \"policies\": { \"1\": { \"policy_id\": 2 }, \"2\": { \"policy_id\": 640 "
            "} } } } }\n");
}

TEST_F(TcamTest, OnePolicyIsDeleted) {
  configure("tcam policy 6 egress\ntcam policy 7 openflow\ntcam policy 8 openflow\n");
  EXPECT_EQ(done("DELETE", "/tcam/policy/7"),
            "<result><rlt_code>0</rlt_code><rlt_mesg>Delete the policy ID 7 successfully.</rlt_mesg></result>"
            "\n");
  EXPECT_EQ(done("DELETE", "/tcam/policy/0008", "", "json"),
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Delete the policy ID 8 successfully.\" } }\n");
  EXPECT_EQ(get("/tcam/policy"), expected_policies({6}));
}

TEST_F(TcamTest, AllPoliciesAreDeleted) {
  Answers deleted = expected_answers(0, "Delete all the policies created by TCAM API successfully.");
  EXPECT_EQ(call(tcam_api_handler, "DELETE", "/tcam/policy"), deleted) << "of none";
  for (const char *uri : {"/tcam/policy", "/tcam/polic", "/tcam/p", "/tcam/", "/tcam"}) {
    configure("tcam policy 1 egress\ntcam policy 7 openflow\ninterface 0/1 tcam-policy 7\n");
    EXPECT_EQ(done("DELETE", uri), deleted.xml) << uri;
    EXPECT_EQ(get("/tcam/policy"), expected_policies({})) << uri;
  }
}

TEST_F(TcamTest, PolicyThatIsNotThereAnswers99) {
  make("");
  Answers refused = expected_platform_error(OPEN_E_NOT_FOUND);
  for (const char *id : {"0", "2", "640", "641", "2147483647", "4294967297", "99999999999999999999"}) {
    std::string uri = std::string("/tcam/policy/") + id;
    EXPECT_EQ(get(uri), refused) << id;
    EXPECT_EQ(call(tcam_api_handler, "DELETE", uri), refused) << id;
    EXPECT_EQ(call(tcam_api_handler, "POST", uri + "/port/5"), refused) << id;
    EXPECT_EQ(call(tcam_api_handler, "DELETE", uri + "/port/5"), refused) << id;
  }
  EXPECT_EQ(get("/tcam/policy"), expected_policies({1}));
}

/* --- Ports ---------------------------------------------------------------------------------------------- */

TEST_F(TcamTest, PolicyIsAppliedToAPortAndTakenOff) {
  configure("tcam policy 3 openflow\n");
  EXPECT_EQ(
      done("POST", "/tcam/policy/3/port/5"),
      "<result><rlt_code>0</rlt_code><rlt_mesg>Configure the policy 3 to port 5 successfully.</rlt_mesg>"
      "</result>\n");
  EXPECT_EQ(done("POST", "/tcam/policy/3/port/56", "", "json"),
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Configure the policy 3 to port 56 "
            "successfully.\" } }\n");
  EXPECT_EQ(call(tcam_api_handler, "POST", "/tcam/policy/3/port/5"), expected_platform_error(OPEN_E_EXISTS));
  EXPECT_EQ(done("DELETE", "/tcam/policy/3/port/5"),
            "<result><rlt_code>0</rlt_code><rlt_mesg>Delete the policy 3 from port 5 successfully.</rlt_mesg>"
            "</result>\n");
  EXPECT_EQ(done("DELETE", "/tcam/policy/3/port/56", "", "json"),
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Delete the policy 3 from port 56 "
            "successfully.\" } }\n");
  EXPECT_EQ(call(tcam_api_handler, "DELETE", "/tcam/policy/3/port/5"),
            expected_platform_error(OPEN_E_NOT_FOUND));
}

TEST_F(TcamTest, PortZeroIsInvalidAndThePlatformIsNotAsked) {
  fault("rpcclt_openapiTcamPolicyIntfAdd", OPEN_E_EXISTS);
  fault("rpcclt_openapiTcamPolicyIntfRem", OPEN_E_EXISTS);
  Answers refused = expected_answers(1, "The port number is invalid.");
  for (const char *uri : {"/tcam/policy/3/port/0", "/tcam/policy/3/port/000"}) {
    EXPECT_EQ(call(tcam_api_handler, "POST", uri), refused) << uri;
    EXPECT_EQ(call(tcam_api_handler, "DELETE", uri), refused) << uri;
  }
  EXPECT_EQ(
      lab("fault list"),
      "rpcclt_openapiTcamPolicyIntfAdd OPEN_E_EXISTS 1 0\nrpcclt_openapiTcamPolicyIntfRem OPEN_E_EXISTS 1 "
      "0\n");
  lab("fault clear");
}

TEST_F(TcamTest, OnlyPortsAndLagsHavePolicies) {
  make("");
  for (const char *port : {"55", "120", "128", "354", "2147483647", "99999999999999999999"}) {
    std::string uri = std::string("/tcam/policy/1/port/") + port;
    EXPECT_EQ(call(tcam_api_handler, "POST", uri), expected_platform_error(OPEN_E_NOT_FOUND)) << port;
    EXPECT_EQ(call(tcam_api_handler, "DELETE", uri), expected_platform_error(OPEN_E_NOT_FOUND)) << port;
  }
}

TEST_F(TcamTest, PolicyIsNotAppliedToThePortThatItRedirectsTo) {
  make("actionRedirPort=5");
  EXPECT_EQ(call(tcam_api_handler, "POST", "/tcam/policy/1/port/5"), expected_platform_error(OPEN_E_FAIL));
  EXPECT_EQ(done("POST", "/tcam/policy/1/port/6"),
            expected_answers(0, "Configure the policy 1 to port 6 successfully.").xml);
}

/* --- Group statistics ----------------------------------------------------------------------------------- */

TEST_F(TcamTest, UnusedTcamShowsItsGroupsWithoutNumbers) {
  Answers answers = get("/tcam/groupStats");
  std::string unused = "<group><is_used>No</is_used></group>";
  EXPECT_EQ(
      answers.xml,
      "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data><group_stats>"
      "<stage_ingress><groups>" +
          unused + unused + unused + unused + unused +
          "</groups><entry_stats><count>0</count><free>206080</free><total>206080</total></entry_stats>"
          "<slice_stats><slice_256><count>0</count><free>5</free><total>5</total></slice_256><slice_512>"
          "<count>0</count><free>400</free><total>400</total></slice_512></slice_stats></stage_ingress>"
          "<stage_egress><groups>" +
          unused + unused + unused + unused +
          "</groups><entry_stats><count>0</count><free>205056</free><total>205056</total></entry_stats>"
          "<slice_stats><slice_256><count>0</count><free>801</free><total>801</total></slice_256>"
          "</slice_stats></stage_egress></group_stats></rlt_data></result>\n");
  EXPECT_EQ(answers,
            expected_data(
                {branch("group_stats",
                        {shown_stage("stage_ingress",
                                     {unused_group, unused_group, unused_group, unused_group, unused_group},
                                     {0, 206080, 206080}, {0, 5, 5}, {0, 400, 400}),
                         shown_stage("stage_egress", {unused_group, unused_group, unused_group, unused_group},
                                     {0, 205056, 205056}, {0, 801, 801}, {})})}));
}

TEST_F(TcamTest, UsedGroupsAreShownWithTheirNumbers) {
  configure("tcam policy 1 openflow\ntcam policy 2 ipv6\ntcam policy 3 ipv6\ntcam policy 4 egress\n");
  Answers expected = expected_data({branch(
      "group_stats",
      {shown_stage("stage_ingress",
                   {{1, "OpenFlow policy", 1, 1, 1, 255, 256},
                    {2, "Gen (IPv6) policy", 2, 1, 2, 254, 256},
                    unused_group,
                    unused_group,
                    unused_group},
                   {5, 206075, 206080}, {3, 2, 5}, {0, 400, 400}),
       shown_stage("stage_egress",
                   {{1, "Egress policy", 1, 1, 1, 255, 256}, unused_group, unused_group, unused_group},
                   {1, 205055, 205056}, {1, 800, 801}, {})})});
  for (const char *uri : {"/tcam/groupStats", "/tcam/", "/tcam/g", "/tcam/groupStat"})
    EXPECT_EQ(get(uri), expected) << uri;
  EXPECT_NE(
      expected.xml.find("<group><is_used>Yes</is_used><gid>2</gid><type>Gen (IPv6) policy</type><width>2"
                        "</width><depth>1</depth><count>2</count><free>254</free><total>256</total>"
                        "</group>"),
      std::string::npos);
}

/* --- Routes --------------------------------------------------------------------------------------------- */

TEST_F(TcamTest, UrisThatStopInsideAWordReachWhatItBegins) {
  make("actionDrop=1");
  for (const char *uri : {"/tcam/p", "/tcam/pol", "/tcam/policy"})
    EXPECT_EQ(get(uri), expected_policies({1})) << uri;
  unsigned id = 1;
  for (const char *uri : {"/tcam", "/tcam/", "/tcam/p", "/tcam/polic", "/tcam/policy"})
    EXPECT_EQ(done("POST", uri), created(++id)) << uri;
}

TEST_F(TcamTest, NothingElseIsServed) {
  struct {
    const char *method, *uri;
  } rows[] = {
      {"GET", "/tcamx"},
      {"GET", "/tcam/x"},
      {"GET", "/tcam/G"},
      {"GET", "/tcam/groupstats"},
      {"GET", "/tcam/groupStatsx"},
      {"GET", "/tcam/groupStats/"},
      {"GET", "/tcam/groupStats/1"},
      {"GET", "/tcam/P"},
      {"GET", "/tcam/policyx"},
      {"GET", "/tcam/policies"},
      {"GET", "/tcam/policy/"},
      {"GET", "/tcam/policy/x"},
      {"GET", "/tcam/policy/-1"},
      {"GET", "/tcam/policy//1"},
      {"GET", "/tcam/policy/1x"},
      {"GET", "/tcam/policy/1/"},
      {"GET", "/tcam/policy/1/port"},
      {"GET", "/tcam/policy/1/port/5"},
      {"PUT", "/tcam"},
      {"PUT", "/tcam/policy"},
      {"PUT", "/tcam/policy/1"},
      {"PUT", "/tcam/policy/1/port/5"},
      {"PUT", "/tcam/groupStats"},
      {"POST", "/tcam/g"},
      {"POST", "/tcam/groupStats"},
      {"POST", "/tcam/policyx"},
      {"POST", "/tcam/policy/"},
      {"POST", "/tcam/policy/1"},
      {"POST", "/tcam/policy/1/"},
      {"POST", "/tcam/policy/1/port"},
      {"POST", "/tcam/policy/1/port/"},
      {"POST", "/tcam/policy/1/port/x"},
      {"POST", "/tcam/policy/1/port/-5"},
      {"POST", "/tcam/policy/1/port/5x"},
      {"POST", "/tcam/policy/1/port/5/"},
      {"POST", "/tcam/policy/1/Port/5"},
      {"POST", "/tcam/policy//port/5"},
      {"POST", "/tcam/policy/1/ports/5"},
      {"DELETE", "/tcam/g"},
      {"DELETE", "/tcam/groupStats"},
      {"DELETE", "/tcam/policyx"},
      {"DELETE", "/tcam/policy/"},
      {"DELETE", "/tcam/policy/x"},
      {"DELETE", "/tcam/policy/1x"},
      {"DELETE", "/tcam/policy/1/"},
      {"DELETE", "/tcam/policy/1/port"},
      {"DELETE", "/tcam/policy/1/port/"},
      {"DELETE", "/tcam/policy/1/port/5x"},
      {"DELETE", "/tcam/policy/1/port/5/"},
      {"DELETE", "/tcam/policy//port/5"},
      {"PATCH", "/tcam"},
      {"HEAD", "/tcam/policy"},
  };
  make("");
  EXPECT_EQ(done("POST", "/tcam/policy/1/port/5"),
            expected_answers(0, "Configure the policy 1 to port 5 successfully.").xml);
  for (const auto &row : rows)
    EXPECT_EQ(call(tcam_api_handler, row.method, row.uri), expected_bad_request())
        << row.method << " " << row.uri;
  EXPECT_EQ(get("/tcam/policy"), expected_policies({1}));
  EXPECT_EQ(call(tcam_api_handler, "POST", "/tcam/policy/1/port/5"), expected_platform_error(OPEN_E_EXISTS));
}

TEST_F(TcamTest, MethodVariableChoosesTheOperation) {
  EXPECT_EQ(call_xml(tcam_api_handler, "GET", "/tcam/policy", "method=post"), created(1));
  EXPECT_EQ(call(tcam_api_handler, "POST", "/tcam/policy", "method=GET"), expected_policies({1}));
  EXPECT_EQ(call_xml(tcam_api_handler, "GET", "/tcam/policy/1", "method=delete"),
            expected_answers(0, "Delete the policy ID 1 successfully.").xml);
  EXPECT_EQ(call(tcam_api_handler, "GET", "/tcam/policy", "method=put"), expected_bad_request());
}

TEST_F(TcamTest, LongestUriIsServed) {
  make("");
  std::string uri = "/tcam/policy/" + std::string(255 - 14, '0') + "1";
  ASSERT_EQ(uri.size(), 255u);
  EXPECT_EQ(get(uri), expected_policy({}));
}
