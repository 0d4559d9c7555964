/* The link aggregation module: every route, its refusals and its near misses. Platform failures:
 * test_lag_failures.cpp. */
#include "tests/unit/modules/lag_fixture.h"

/* --- List ------------------------------------------------------------------------------------------------
 */

TEST_F(LagTest, ListHasEveryLagByItsPortChannelId) {
  EXPECT_EQ(get("/lag"), expected_lags(ids_between(1, LAGS)));
}

TEST_F(LagTest, DeletedLagIsNotListed) {
  ASSERT_EQ(rpcclt_openapiLagDeleteZYL(handle, FIRST_LAG), OPEN_E_NONE);
  EXPECT_EQ(get("/lag"), expected_lags(ids_between(2, LAGS)));
}

TEST_F(LagTest, SwitchWithoutLagsHasAnEmptyList) {
  for (uint32_t ifNum = FIRST_LAG; ifNum < FIRST_LAG + LAGS; ifNum++)
    ASSERT_EQ(rpcclt_openapiLagDeleteZYL(handle, ifNum), OPEN_E_NONE);
  Answers answers = get("/lag");
  EXPECT_EQ(answers, expected_lags({}));
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<lag_interfaces></lag_interfaces></rlt_data></result>\n");
}

/* --- One LAG ---------------------------------------------------------------------------------------------
 */

TEST_F(LagTest, LagWithoutMembersIsDescribed) {
  Answers answers = get("/lag/1");
  EXPECT_EQ(answers, expected_lag(1, {}));
  EXPECT_EQ(answers.xml,
            "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
            "<lag_interface><id>1</id><name>lag1</name><members></members></lag_interface></rlt_data>"
            "</result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"lag_interface\": { \"id\": 1, \"name\": \"lag1\", \"members\": "
                          "{ } } } } }\n");
  EXPECT_EQ(get("/lag/064"), expected_lag(64, {}));
}

TEST_F(LagTest, MembersAreListedInAscendingOrder) {
  for (unsigned port : {54u, 3u, 7u}) add(2, port);
  Answers answers = get("/lag/2");
  EXPECT_EQ(answers, expected_lag(2, {3, 7, 54}));
  EXPECT_NE(answers.xml.find("<members><member><portNum>3</portNum></member><member><portNum>7</portNum>"),
            std::string::npos);
  EXPECT_NE(answers.json.find("\"members\": { \"1\": { \"portNum\": 3 }, \"2\": { \"portNum\": 7 }, \"3\""),
            std::string::npos);
  EXPECT_EQ(get("/lag/1"), expected_lag(1, {}));
}

TEST_F(LagTest, IdsWithoutALagAnswer99) {
  for (const char *id :
       {"0", "000", "65", "119", "2147483647", "2147483648", "4294967297", "99999999999999999999"}) {
    EXPECT_EQ(get(std::string("/lag/") + id), expected_platform_error(OPEN_E_PARAM)) << id;
    std::string member = std::string("/lag/") + id + "/port/5";
    for (const char *method : {"POST", "DELETE"}) {
      EXPECT_EQ(call(lag_api_handler, method, member), expected_platform_error(OPEN_E_PARAM)) << id;
    }
  }
}

TEST_F(LagTest, DeletedLagAnswers99) {
  ASSERT_EQ(rpcclt_openapiLagDeleteZYL(handle, FIRST_LAG), OPEN_E_NONE);
  EXPECT_EQ(get("/lag/1"), expected_platform_error(OPEN_E_NOT_FOUND));
  EXPECT_EQ(call(lag_api_handler, "POST", "/lag/1/port/5"), expected_platform_error(OPEN_E_NOT_FOUND));
  EXPECT_EQ(call(lag_api_handler, "DELETE", "/lag/1/port/5"), expected_platform_error(OPEN_E_NOT_FOUND));
}

/* --- Members ---------------------------------------------------------------------------------------------
 */

TEST_F(LagTest, PortIsAddedAndRemoved) {
  expect_done(lag_api_handler, "POST", "/lag/1/port/5", "Configure port 5 to LAG 1 successfully.");
  expect_done(lag_api_handler, "POST", "/lag/01/port/0054", "Configure port 54 to LAG 1 successfully.",
              "json");
  EXPECT_EQ(get("/lag/1"), expected_lag(1, {5, 54}));
  expect_done(lag_api_handler, "DELETE", "/lag/1/port/5", "Delete port 5 from LAG 1 successfully.");
  EXPECT_EQ(get("/lag/1"), expected_lag(1, {54}));
  expect_done(lag_api_handler, "DELETE", "/lag/1/port/54", "Delete port 54 from LAG 1 successfully.", "json");
  EXPECT_EQ(get("/lag/1"), expected_lag(1, {}));
}

TEST_F(LagTest, PortThatIsAMemberAlreadyIsNotAddedAgain) {
  add(1, 5);
  EXPECT_EQ(call(lag_api_handler, "POST", "/lag/1/port/5"), expected_platform_error(OPEN_E_EXISTS));
  EXPECT_EQ(call(lag_api_handler, "POST", "/lag/2/port/5"), expected_platform_error(OPEN_E_FAIL));
  EXPECT_EQ(get("/lag/1"), expected_lag(1, {5}));
  EXPECT_EQ(get("/lag/2"), expected_lag(2, {}));
}

TEST_F(LagTest, PortThatIsNoMemberCannotBeRemoved) {
  add(1, 5);
  EXPECT_EQ(call(lag_api_handler, "DELETE", "/lag/1/port/6"), expected_platform_error(OPEN_E_NOT_FOUND));
  EXPECT_EQ(call(lag_api_handler, "DELETE", "/lag/2/port/5"), expected_platform_error(OPEN_E_NOT_FOUND));
  EXPECT_EQ(get("/lag/1"), expected_lag(1, {5}));
}

TEST_F(LagTest, OnlyPortsCanBeMembers) {
  for (const char *port : {"0", "55", "56", "57", "120", "200", "226", "354", "2147483647", "4294967301"}) {
    for (const char *method : {"POST", "DELETE"}) {
      EXPECT_EQ(call(lag_api_handler, method, std::string("/lag/1/port/") + port),
                expected_platform_error(OPEN_E_NOT_FOUND))
          << port;
    }
  }
  EXPECT_EQ(get("/lag/1"), expected_lag(1, {}));
}

TEST_F(LagTest, FullLagAnswers99) {
  lower_limit("lag-members", 2);
  add(1, 1);
  add(1, 2);
  EXPECT_EQ(call(lag_api_handler, "POST", "/lag/1/port/3"), expected_platform_error(OPEN_E_FULL));
  EXPECT_EQ(get("/lag/1"), expected_lag(1, {1, 2}));
}

TEST_F(LagTest, LagHasRoomFor32Members) {
  for (unsigned port = 1; port <= 32; port++) add(1, port);
  EXPECT_EQ(get("/lag/1"), expected_lag(1, ids_between(1, 32)));
  EXPECT_EQ(call(lag_api_handler, "POST", "/lag/1/port/33"), expected_platform_error(OPEN_E_FULL));
}

/* --- Routes ----------------------------------------------------------------------------------------------
 */

TEST_F(LagTest, NothingElseIsServed) {
  struct {
    const char *method, *uri;
  } rows[] = {
      {"GET", ""},
      {"GET", "/la"},
      {"GET", "/Lag"},
      {"GET", "/lags"},
      {"GET", "/lag "},
      {"GET", "/lag/"},
      {"GET", "/lag/x"},
      {"GET", "/lag/-1"},
      {"GET", "/lag/+1"},
      {"GET", "/lag/ 1"},
      {"GET", "/lag//1"},
      {"GET", "/lag/1/"},
      {"GET", "/lag/1x"},
      {"GET", "/lag/1/port"},
      {"GET", "/lag/1/port/"},
      {"GET", "/lag/1/port/5"},
      {"GET", "/lag/%n%s"},
      {"POST", "/lag"},
      {"POST", "/lag/"},
      {"POST", "/lag/1"}, /* making and deleting LAGs is not served */
      {"POST", "/lag/1/"},
      {"POST", "/lag/1/port"},
      {"POST", "/lag/1/port/"},
      {"POST", "/lag/1/port/5/"},
      {"POST", "/lag/1/port/5x"},
      {"POST", "/lag/1/port/x"},
      {"POST", "/lag/1/port/-5"},
      {"POST", "/lag/1/port//5"},
      {"POST", "/lag/1/ports/5"},
      {"POST", "/lag/1/por/5"},
      {"POST", "/lag/1/Port/5"},
      {"POST", "/lag//port/5"},
      {"POST", "/lag/x/port/5"},
      {"POST", "/lag/1//port/5"},
      {"PUT", "/lag"},
      {"PUT", "/lag/1"},
      {"PUT", "/lag/1/port/5"},
      {"DELETE", "/lag"},
      {"DELETE", "/lag/1"},
      {"DELETE", "/lag/1/"},
      {"DELETE", "/lag/1/port"},
      {"DELETE", "/lag/1/port/"},
      {"DELETE", "/lag/1/port/5/"},
      {"DELETE", "/lag/1/port/5x"},
      {"DELETE", "/lag//port/5"},
      {"PATCH", "/lag/1/port/5"},
      {"HEAD", "/lag"},
  };
  add(1, 5);
  for (const auto &row : rows) {
    EXPECT_EQ(call(lag_api_handler, row.method, row.uri, "value=1"), expected_bad_request())
        << row.method << " " << row.uri;
  }
  EXPECT_EQ(get("/lag/1"), expected_lag(1, {5}));
  EXPECT_EQ(get("/lag"), expected_lags(ids_between(1, LAGS)));
}

TEST_F(LagTest, MethodVariableChoosesTheOperation) {
  EXPECT_EQ(call_xml(lag_api_handler, "GET", "/lag/1/port/5", "method=post"),
            expected_answers(0, "Configure port 5 to LAG 1 successfully.").xml);
  EXPECT_EQ(call(lag_api_handler, "DELETE", "/lag/1", "method=GET"), expected_lag(1, {5}));
  EXPECT_EQ(call_xml(lag_api_handler, "POST", "/lag/1/port/5", "method=delete"),
            expected_answers(0, "Delete port 5 from LAG 1 successfully.").xml);
}

TEST_F(LagTest, LongestUriIsServedAndOneMoreCharacterIsNot) {
  std::string uri = "/lag/" + std::string(255 - 6, '0') + "1";
  ASSERT_EQ(uri.size(), 255u);
  EXPECT_EQ(get(uri), expected_lag(1, {}));
  EXPECT_EQ(get(uri.insert(5, "0")), expected_bad_request());
}

/* --- Operations without a route ---------------------------------------------------------------------------
 */

TEST_F(LagTest, LagIsDeletedAndMadeByTheOperationsThemselves) {
  add(1, 5);
  expect_done(api_lag_delete_specified_id, "DELETE", "/lag/1", "Delete LAG 1 successfully.");
  EXPECT_EQ(get("/lag"), expected_lags(ids_between(2, LAGS)));
  EXPECT_EQ(call(api_lag_delete_specified_id, "DELETE", "/lag/1"), expected_platform_error(OPEN_E_NOT_FOUND));
  expect_done(api_lag_create_specified_id, "POST", "/lag/1", "Create LAG 1 successfully.", "json");
  EXPECT_EQ(get("/lag/1"), expected_lag(1, {}));
  EXPECT_EQ(call(api_lag_create_specified_id, "POST", "/lag/1"), expected_platform_error(OPEN_E_EXISTS));
}

TEST_F(LagTest, LagWithoutAnInterfaceIsNeitherMadeNorDeleted) {
  for (const char *uri : {"/lag/0", "/lag/65", "/lag/2147483648"}) {
    EXPECT_EQ(call(api_lag_create_specified_id, "POST", uri), expected_platform_error(OPEN_E_PARAM));
    EXPECT_EQ(call(api_lag_delete_specified_id, "DELETE", uri), expected_platform_error(OPEN_E_PARAM));
  }
}

/* --- From one number to the other -------------------------------------------------------------------------
 */

TEST_F(LagTest, NumbersAreFoundBothWays) {
  struct {
    int32_t id, ifNum;
  } rows[] = {{1, 56}, {2, 57}, {64, 119}};
  for (const auto &row : rows) {
    EXPECT_EQ(get_lag_interface_num_by_port_channel_id(handle, row.id), row.ifNum);
    EXPECT_EQ(get_port_channel_id_by_lag_interface_num(handle, row.ifNum), row.id);
  }
  for (int32_t id : {0, -1, 65, 2147483647}) {
    EXPECT_EQ(get_lag_interface_num_by_port_channel_id(handle, id), 0) << id;
  }
  for (int32_t ifNum : {0, -1, 1, 54, 55, 120, 354, 2147483647}) {
    EXPECT_EQ(get_port_channel_id_by_lag_interface_num(handle, ifNum), 0) << ifNum;
  }
}

TEST_F(LagTest, NumbersThatThePlatformDoesNotTellAreZero) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiLagPortChannelIdToIfNumZYL", rc);
    EXPECT_EQ(get_lag_interface_num_by_port_channel_id(handle, 1), 0) << rc;
    fault("rpcclt_openapiLagIfNumToPortChannelIdZYL", rc);
    EXPECT_EQ(get_port_channel_id_by_lag_interface_num(handle, 56), 0) << rc;
  }
  /* What is left in the place of the number counts for one of them only. */
  fault("rpcclt_openapiLagPortChannelIdToIfNumZYL", OPEN_E_FAIL);
  bent_output bent("rpcclt_openapiLagPortChannelIdToIfNumZYL", 56);
  EXPECT_EQ(get_lag_interface_num_by_port_channel_id(handle, 1), 0);
}
