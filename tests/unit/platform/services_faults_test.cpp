/* Faults on order. */
#include "platform/softswitch/services/faults.h"

#include "platform/api/openapi_common.h"
#include "platform/api/openapi_if.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using namespace softswitch;

namespace {

const char *const check = "rpcclt_openapiConnectivityCheck";
const char *const count_get = "openapiMaxInterfaceCountGet";

/* The functions that faults are ordered for here must be in the program that runs the tests. */
[[gnu::used]] void *volatile linked_in[] = {reinterpret_cast<void *>(&rpcclt_openapiConnectivityCheck),
                                            reinterpret_cast<void *>(&openapiMaxInterfaceCountGet)};

class Faults : public testing::Test {
protected:
  void TearDown() override { fault_clear_all(); }
};

/* The codes of so many calls; OPEN_E_NONE for one that is carried out. */
std::vector<int> codes_of_calls(const char *function, int calls) {
  std::vector<int> codes;
  for (int i = 0; i < calls; i++) {
    open_error_t code = OPEN_E_NONE;
    codes.push_back(fault_due(function, &code) ? code : OPEN_E_NONE);
  }
  return codes;
}

TEST_F(Faults, NothingFailsWithoutOrder) {
  open_error_t code = OPEN_E_FULL;
  EXPECT_FALSE(fault_due(check, &code));
  EXPECT_EQ(code, OPEN_E_FULL);
  EXPECT_EQ(fault_list(), "");
}

TEST_F(Faults, OnlyTheNextCountCallsAfterSkipFail) {
  ASSERT_TRUE(fault_order(check, OPEN_E_FAIL, 2, 1));
  EXPECT_EQ(codes_of_calls(check, 5), (std::vector<int>{0, OPEN_E_FAIL, OPEN_E_FAIL, 0, 0}));
  EXPECT_EQ(fault_list(), "");
}

TEST_F(Faults, OtherFunctionsAreCarriedOut) {
  ASSERT_TRUE(fault_order(check, OPEN_E_FAIL, 1, 0));
  EXPECT_EQ(codes_of_calls(count_get, 2), (std::vector<int>{0, 0}));
  EXPECT_EQ(codes_of_calls(check, 1), (std::vector<int>{OPEN_E_FAIL}));
}

TEST_F(Faults, NewOrderReplacesTheOneBefore) {
  ASSERT_TRUE(fault_order(check, OPEN_E_FAIL, 5, 3));
  ASSERT_TRUE(fault_order(check, OPEN_E_FULL, 1, 0));
  EXPECT_EQ(codes_of_calls(check, 2), (std::vector<int>{OPEN_E_FULL, 0}));
}

TEST_F(Faults, CountOfZeroTakesTheOrderBack) {
  ASSERT_TRUE(fault_order(check, OPEN_E_FAIL, 5, 0));
  ASSERT_TRUE(fault_order(count_get, OPEN_E_FAIL, 1, 0));
  ASSERT_TRUE(fault_order(check, OPEN_E_FAIL, 0, 0));
  EXPECT_EQ(fault_list(), "openapiMaxInterfaceCountGet OPEN_E_FAIL 1 0\n");
  EXPECT_EQ(codes_of_calls(check, 1), (std::vector<int>{0}));
}

TEST_F(Faults, ClearTakesAllBack) {
  ASSERT_TRUE(fault_order(check, OPEN_E_FAIL, 5, 0));
  ASSERT_TRUE(fault_order(count_get, OPEN_E_FAIL, 5, 0));
  fault_clear_all();
  EXPECT_EQ(fault_list(), "");
  EXPECT_EQ(codes_of_calls(check, 1), (std::vector<int>{0}));
}

TEST_F(Faults, ListShowsWhatIsLeft) {
  ASSERT_TRUE(fault_order(check, static_cast<open_error_t>(-30), 3, 1));
  ASSERT_TRUE(fault_order(count_get, static_cast<open_error_t>(7), 4294967295u, 0));
  EXPECT_EQ(fault_list(), "openapiMaxInterfaceCountGet 7 4294967295 0\n"
                          "rpcclt_openapiConnectivityCheck OPEN_E_EMPTY 3 1\n");
  codes_of_calls(check, 2);
  EXPECT_EQ(fault_list(), "openapiMaxInterfaceCountGet 7 4294967295 0\n"
                          "rpcclt_openapiConnectivityCheck OPEN_E_EMPTY 2 0\n");
}

TEST_F(Faults, NamesOutsideThePlatformInterfaceAreRefused) {
  for (const char *name :
       {"", "openapi", "rpcclt_openapi", "openapiNoSuchFunction", "rpcclt_openapiNoSuchFunction", "malloc",
        "open", "kestrel_lab_command", "l7proc_logf", "main", "RPCCLT_OPENAPICONNECTIVITYCHECK",
        " rpcclt_openapiConnectivityCheck", "rpcclt_openapiConnectivityCheck "})
    EXPECT_FALSE(fault_order(name, OPEN_E_FAIL, 1, 0)) << "\"" << name << "\"";
  EXPECT_EQ(fault_list(), "");
}

TEST_F(Faults, CodesAreNamesOrNumbers) {
  const struct {
    const char *text;
    int code;
  } good[] = {{"OPEN_E_NONE", 0},
              {"OPEN_E_RPC", -20},
              {"OPEN_E_INTERNAL", -21},
              {"OPEN_E_PARAM", -22},
              {"OPEN_E_FULL", -23},
              {"OPEN_E_EXISTS", -24},
              {"OPEN_E_TIMEOUT", -25},
              {"OPEN_E_FAIL", -26},
              {"OPEN_E_DISABLED", -27},
              {"OPEN_E_UNAVAIL", -28},
              {"OPEN_E_NOT_FOUND", -29},
              {"OPEN_E_EMPTY", -30},
              {"OPEN_E_ERROR", -31},
              {"-26", -26},
              {"0", 0},
              {"1", 1},
              {"-32", -32},
              {"31", 31}};
  for (const auto &row : good) {
    open_error_t code = OPEN_E_NONE;
    EXPECT_TRUE(fault_code_from_text(row.text, &code)) << row.text;
    EXPECT_EQ(static_cast<int>(code), row.code) << row.text;
  }
  for (const char *text : {"", "FAIL", "open_e_fail", "OPEN_E_FAIL ", "OPEN_E_", "-", "+1", "1x", "-33", "32",
                           "0x1", "99999999999999999999"}) {
    open_error_t code = OPEN_E_FULL;
    EXPECT_FALSE(fault_code_from_text(text, &code)) << "\"" << text << "\"";
    EXPECT_EQ(code, OPEN_E_FULL) << text;
  }
}

TEST_F(Faults, CallsFromManyThreadsFailExactlyCountTimes) {
  ASSERT_TRUE(fault_order(check, OPEN_E_FAIL, 1000, 500));
  std::atomic<int> failed{0};
  std::vector<std::thread> callers;
  for (int i = 0; i < 4; i++)
    callers.emplace_back([&failed] {
      for (int call = 0; call < 1000; call++) {
        open_error_t code;
        if (fault_due(check, &code)) failed++;
      }
    });
  for (std::thread &caller : callers) caller.join();
  EXPECT_EQ(failed.load(), 1000);
}

} // namespace
