/* The link aggregation module when the platform fails: every call of every operation with every result. */
#include "tests/unit/modules/failing_calls.h"
#include "tests/unit/modules/lag_fixture.h"

class LagFailureTest : public LagTest {
protected:
  LagFailureTest() {
    add(1, 3);
    add(1, 7);
  }
};

static const char TO_IFNUM[] = "rpcclt_openapiLagPortChannelIdToIfNumZYL";
static const char TO_ID[] = "rpcclt_openapiLagIfNumToPortChannelIdZYL";

TEST_F(LagFailureTest, EveryCallThatFailsIsAnsweredOnceAndEndsTheRequest) {
  const operation_calls operations[] = {
      {"GET",
       "/lag/1",
       "",
       {"rpcclt_openapiLagNameMaxLengthGet", "rpcclt_openapiLagNameGet", "rpcclt_openapiLagMaxMemberCountGet",
        "rpcclt_openapiLagMembersGet"}},
      {"POST", "/lag/1/port/5", "", {"rpcclt_openapiLagPortAdd"}, {TO_ID}},
      {"DELETE", "/lag/1/port/3", "", {"rpcclt_openapiLagPortDelete"}, {TO_ID}},
  };
  for (const operation_calls &operation : operations)
    expect_every_failure_answered(lag_api_handler, handle, operation);
  expect_every_failure_answered(api_lag_create_specified_id, handle,
                                {"POST", "/lag/1", "", {"rpcclt_openapiLagCreateZYL"}});
  expect_every_failure_answered(api_lag_delete_specified_id, handle,
                                {"DELETE", "/lag/1", "", {"rpcclt_openapiLagDeleteZYL"}});
  EXPECT_EQ(get("/lag/1"), expected_lag(1, {3, 7}));
}

/* Whatever the platform answers, an id or a number that it does not know is a wrong parameter. */
TEST_F(LagFailureTest, NumberThatIsNotToldAnswers99) {
  struct {
    rest_handler_t handler;
    const char *method, *uri, *next;
  } rows[] = {
      {lag_api_handler, "GET", "/lag/1", "rpcclt_openapiLagNameMaxLengthGet"},
      {lag_api_handler, "POST", "/lag/1/port/5", "rpcclt_openapiLagPortAdd"},
      {lag_api_handler, "DELETE", "/lag/1/port/3", "rpcclt_openapiLagPortDelete"},
      {api_lag_create_specified_id, "POST", "/lag/1", "rpcclt_openapiLagCreateZYL"},
      {api_lag_delete_specified_id, "DELETE", "/lag/1", "rpcclt_openapiLagDeleteZYL"},
  };
  for (const auto &row : rows) {
    for (open_error_t rc : all_platform_errors()) {
      fault(TO_IFNUM, rc, 2);
      fault(row.next, OPEN_E_EXISTS); /* never called */
      EXPECT_EQ(call(row.handler, row.method, row.uri), expected_platform_error(OPEN_E_PARAM)) << rc;
      EXPECT_EQ(lab("fault list"), std::string(row.next) + " OPEN_E_EXISTS 1 0\n");
      lab("fault clear");
    }
  }
}

TEST_F(LagFailureTest, IdThatIsNotToldAnswers99) {
  for (open_error_t rc : all_platform_errors()) {
    fault(TO_ID, rc, 2);
    fault("rpcclt_openapiLagMaxMemberCountGet", OPEN_E_EXISTS);
    EXPECT_EQ(get("/lag/1"), expected_platform_error(OPEN_E_PARAM)) << rc;
    EXPECT_EQ(lab("fault list"), "rpcclt_openapiLagMaxMemberCountGet OPEN_E_EXISTS 1 0\n");
    lab("fault clear");
  }
}

/* The port is added or removed by then all the same. */
TEST_F(LagFailureTest, IdThatIsNotToldForTheMessageAnswers99) {
  for (open_error_t rc : all_platform_errors()) {
    fault(TO_ID, rc);
    EXPECT_EQ(call_xml(lag_api_handler, "POST", "/lag/1/port/5"), expected_platform_error(OPEN_E_PARAM).xml);
    EXPECT_EQ(get("/lag/1"), expected_lag(1, {3, 5, 7}));
    fault(TO_ID, rc);
    EXPECT_EQ(call_xml(lag_api_handler, "DELETE", "/lag/1/port/5"),
              expected_platform_error(OPEN_E_PARAM).xml);
    EXPECT_EQ(get("/lag/1"), expected_lag(1, {3, 7}));
  }
}

TEST_F(LagFailureTest, MessageNamesTheIdThatThePlatformTells) {
  bent_output bent(TO_ID, 9);
  expect_done(lag_api_handler, "POST", "/lag/1/port/5", "Configure port 5 to LAG 9 successfully.");
  expect_done(lag_api_handler, "DELETE", "/lag/1/port/5", "Delete port 5 from LAG 9 successfully.");
}

/* --- List ------------------------------------------------------------------------------------------------
 */

TEST_F(LagFailureTest, ListIsEmptyWhateverTheFirstInterfaceFailsWith) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiIfFirstGet", rc, 2);
    EXPECT_EQ(get("/lag"), expected_lags({})) << rc;
  }
}

TEST_F(LagFailureTest, ListFailsWhenAnIdIsNotTold) {
  for (open_error_t rc : all_platform_errors()) {
    for (unsigned skip : {0u, 5u, 63u}) {
      fault(TO_ID, rc, 1, skip);
      FakeRequest request("GET", "/lag");
      EXPECT_EQ(lag_api_handler(handle, request.conn()), 0);
      EXPECT_EQ(answer_body(request, "xml"), expected_platform_error(OPEN_E_PARAM).xml) << rc << " " << skip;
    }
  }
  bent_output bent(TO_ID, 0);
  EXPECT_EQ(get("/lag"), expected_platform_error(OPEN_E_PARAM));
}

TEST_F(LagFailureTest, ListEndsAtTheFirstFailOfTheNextInterface) {
  fault("rpcclt_openapiIfNextGet", OPEN_E_FAIL, 1, 4);
  EXPECT_EQ(call_xml(lag_api_handler, "GET", "/lag"), expected_lags(ids_between(1, 5)).xml);
}

/* Only that ends the list; any other answer goes on with whatever interface was named, here none. */
TEST_F(LagFailureTest, ListThatCannotGoOnAnswers99) {
  for (open_error_t rc : all_platform_errors()) {
    if (rc == OPEN_E_FAIL) continue;
    fault("rpcclt_openapiIfNextGet", rc, 1, 4);
    EXPECT_EQ(call_xml(lag_api_handler, "GET", "/lag"), expected_platform_error(OPEN_E_PARAM).xml) << rc;
  }
}

/* --- Buffers ---------------------------------------------------------------------------------------------
 */

TEST_F(LagFailureTest, NameMayFillTheBufferToTheLastByte) {
  for (uint32_t size : {5u, 6u, 5000u}) { /* "lag1" and its end */
    bent_output bent("rpcclt_openapiLagNameMaxLengthGet", size);
    EXPECT_EQ(get("/lag/1"), expected_lag(1, {3, 7})) << size;
  }
  for (uint32_t size : {0u, 4u}) { /* the platform refuses a buffer that is too small */
    bent_output bent("rpcclt_openapiLagNameMaxLengthGet", size);
    EXPECT_EQ(get("/lag/1"), expected_platform_error(OPEN_E_PARAM)) << size;
  }
}

TEST_F(LagFailureTest, MembersMayFillTheBufferToTheLastEntry) {
  for (uint32_t max : {2u, 3u, 5000u}) {
    bent_output bent("rpcclt_openapiLagMaxMemberCountGet", max);
    EXPECT_EQ(get("/lag/1"), expected_lag(1, {3, 7})) << max;
  }
  for (uint32_t max : {0u, 1u}) {
    bent_output bent("rpcclt_openapiLagMaxMemberCountGet", max);
    EXPECT_EQ(get("/lag/1"), expected_platform_error(OPEN_E_PARAM)) << max;
  }
  bent_output bent("rpcclt_openapiLagMaxMemberCountGet", 0);
  EXPECT_EQ(get("/lag/2"), expected_lag(2, {}));
}

TEST_F(LagFailureTest, NoMoreMembersAreListedThanThereIsRoomFor) {
  bent_output room("rpcclt_openapiLagMaxMemberCountGet", 2);
  for (uint32_t count : {0u, 1u, 2u, 3u, 100000u}) {
    bent_output bent("rpcclt_openapiLagMembersGet", count);
    std::vector<unsigned> members = {3, 7};
    if (count < 2) members.resize(count);
    EXPECT_EQ(get("/lag/1"), expected_lag(1, members)) << count;
  }
}

TEST_F(LagFailureTest, NoMoreMembersAreListedThanAnyListHas) {
  bent_output room("rpcclt_openapiLagMaxMemberCountGet", 2 * MAX_LIST_ENTRIES);
  bent_output bent("rpcclt_openapiLagMembersGet", 2 * MAX_LIST_ENTRIES);
  std::vector<unsigned> members(MAX_LIST_ENTRIES);
  members[0] = 3;
  members[1] = 7;
  EXPECT_TRUE(get("/lag/1") == expected_lag(1, members));
}

TEST_F(LagFailureTest, BuffersThatCannotBeAllocatedAnswer97) {
  little_memory limit;
  for (const char *function : {"rpcclt_openapiLagNameMaxLengthGet", "rpcclt_openapiLagMaxMemberCountGet"}) {
    bent_output bent(function, 0xffffffffu);
    EXPECT_EQ(get("/lag/1"), expected_platform_error(OPEN_E_INTERNAL)) << function;
  }
}
