/* The interface module, counters. */
#include "tests/unit/modules/interface_fixture.h"

#include <sstream>

struct counter_row {
  uint32_t id, low, high;
};

static std::string counter_name(uint32_t id) {
  char name[32];
  EXPECT_EQ(get_counter_name_by_id(id, name), RC_TRUE) << id;
  return name;
}

static Answers expected_counters(const std::vector<counter_row> &counters) {
  std::vector<result_node> entries;
  for (const counter_row &row : counters) {
    entries.push_back(entry(static_cast<unsigned>(entries.size()) + 1, "counter",
                            {number("counterId", row.id), text("counterName", counter_name(row.id)),
                             number("counterValueL", row.low), number("counterValueH", row.high)}));
  }
  return expected_data({branch("counters", entries)});
}

class InterfaceCounterTest : public InterfaceTest {
protected:
  ~InterfaceCounterTest() override {
    for (const std::string &name : touched) rpcclt_openapiInterfaceStatsReset(handle, number_of(name));
  }

  static uint32_t number_of(const std::string &port) {
    return static_cast<uint32_t>(std::stoul(port.substr(2)));
  }
  void set_counter(const std::string &port, uint32_t id, const std::string &value) {
    lab("counter set " + port + " " + counter_name(id) + " " + value);
    touched.push_back(port);
  }
  /* The counters that an interface has, as the platform tells them one by one. */
  std::vector<counter_row> counters_of(uint32_t ifNum) const {
    std::vector<counter_row> counters;
    for (uint32_t id = 0; id < OPEN_STAT_COUNTERS; id++) {
      counter_row row = {id, 0, 0};
      if (rpcclt_openapiStatHighLowGet(handle, id, ifNum, &row.low, &row.high) == OPEN_E_NONE)
        counters.push_back(row);
    }
    return counters;
  }
  void expect_value(uint32_t ifNum, uint32_t id, uint32_t low, uint32_t high) const {
    uint32_t read_low = 1, read_high = 1;
    EXPECT_EQ(rpcclt_openapiStatHighLowGet(handle, id, ifNum, &read_low, &read_high), OPEN_E_NONE);
    EXPECT_EQ(read_low, low) << id;
    EXPECT_EQ(read_high, high) << id;
  }

  std::vector<std::string> touched;
};

enum { RX_64 = 2, RX_256_511 = 5, TX_64 = 21, COUNTER_OF_NONE = 63 };

/* --- Names -----------------------------------------------------------------------------------------------
 */

/* The words of a text but those that are numbers. */
static std::vector<std::string> words_of(const std::string &text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) {
    if (word.find_first_not_of("0123456789") != std::string::npos) words.push_back(word);
  }
  return words;
}

TEST_F(InterfaceCounterTest, NamesAreTheDocumentedOnesAndThePlatformsOwn) {
  const char documented[] =
      "CTR_RESERVED CTR_RX_TOTAL_BYTES CTR_RX_64 CTR_RX_65_127 CTR_RX_128_255 CTR_RX_256_511 "
      "CTR_RX_512_1023 CTR_RX_1024_1518 CTR_RX_1519_1530 CTR_RX_GOOD_OVERSIZE "
      "CTR_RX_ERROR_OVERSIZE CTR_RX_GOOD_UNDERSIZE CTR_RX_ERROR_UNDERSIZE CTR_RX_UCAST_FRAMES "
      "CTR_RX_MCAST_FRAMES CTR_RX_BCAST_FRAMES CTR_RX_ALIGN_ERRORS CTR_RX_FCS_ERRORS "
      "CTR_RX_OVERRUNS CTR_RX_FRAME_TOO_LONG CTR_TX_TOTAL_BYTES CTR_TX_64 CTR_TX_65_127 "
      "CTR_TX_128_255 CTR_TX_256_511 CTR_TX_512_1023 CTR_TX_1024_1518 CTR_TX_1519_1530 "
      "CTR_TX_UCAST_FRAMES CTR_TX_MCAST_FRAMES CTR_TX_BCAST_FRAMES CTR_TX_FCS_ERRORS "
      "CTR_TX_OVERSIZED CTR_TX_UNDERRUN_ERRORS CTR_TX_ONE_COLLISION CTR_TX_MULTIPLE_COLLISION "
      "CTR_TX_EXCESSIVE_COLLISION CTR_TX_LATE_COLLISION CTR_TX_RX_64 CTR_TX_RX_65_127 "
      "CTR_TX_RX_128_255 CTR_TX_RX_256_511 CTR_TX_RX_512_1023 CTR_TX_RX_1024_1518 "
      "CTR_TX_RX_1519_1522 CTR_TX_RX_1523_2047 CTR_TX_RX_2048_4095 CTR_TX_RX_4096_9216 "
      "CTR_ETHER_STATS_DROP_EVENTS CTR_SNMPIFOUTDISCARD_FRAMES CTR_SNMPIFINDISCARD_FRAMES "
      "CTR_RX_TOTAL_FRAMES CTR_RX_TOTAL_ERROR_FRAMES CTR_TX_TOTAL_FRAMES "
      "CTR_TX_TOTAL_ERROR_FRAMES CTR_TX_TOTAL_COLLISION_FRAMES CTR_RX_CRC_ERRORS "
      "CTR_RX_TOTAL_MAC_ERROR_FRAMES CTR_RX_RATE_BITS CTR_TX_RATE_BITS CTR_RX_RATE_FRAMES "
      "CTR_TX_RATE_FRAMES CTR_ETHER_STATS_HOLD";
  std::vector<std::string> own;
  for (uint32_t id = 0; id < OPEN_STAT_COUNTERS; id++) own.push_back(counter_name(id));
  EXPECT_EQ(own, words_of(documented));
  EXPECT_EQ(own, words_of(lab("counter names")));
}

TEST_F(InterfaceCounterTest, UnknownCounterHasNoName) {
  for (uint32_t id : {uint32_t{COUNTER_OF_NONE}, 64u, 2147483647u, 4294967295u}) {
    char name[32] = "left";
    EXPECT_EQ(get_counter_name_by_id(id, name), RC_FALSE);
    EXPECT_STREQ(name, "");
  }
}

/* --- Reading ---------------------------------------------------------------------------------------------
 */

TEST_F(InterfaceCounterTest, CountersOfAnInterfaceAreListed) {
  std::vector<counter_row> counters = counters_of(3);
  ASSERT_GT(counters.size(), 1u);
  Answers answers = get("/if/3/counters");
  EXPECT_EQ(answers, expected_counters(counters));
  std::string second = std::to_string(counters[1].id);
  EXPECT_NE(answers.xml.find("<counter><counterId>" + second + "</counterId><counterName>" +
                             counter_name(counters[1].id) +
                             "</counterName><counterValueL>0</counterValueL><counterValueH>0</counterValueH>"
                             "</counter>"),
            std::string::npos);
  EXPECT_NE(answers.json.find("\"2\": { \"counterId\": " + second + ", \"counterName\": \"" +
                              counter_name(counters[1].id) +
                              "\", \"counterValueL\": 0, \"counterValueH\": 0 }"),
            std::string::npos);
}

TEST_F(InterfaceCounterTest, ValuesBeyond32BitsAreSplit) {
  struct {
    const char *value;
    uint32_t low, high;
  } rows[] = {
      {"1", 1, 0},
      {"2147483648", 2147483648u, 0}, /* no sign */
      {"4294967295", 4294967295u, 0},
      {"4294967296", 0, 1},
      {"9223372036854775808", 0, 2147483648u},
      {"18446744073709551615", 4294967295u, 4294967295u},
  };
  for (const auto &row : rows) {
    set_counter("0/3", RX_64, row.value);
    std::vector<counter_row> expected = counters_of(3);
    for (counter_row &counter : expected) {
      counter.low = counter.id == RX_64 ? row.low : 0;
      counter.high = counter.id == RX_64 ? row.high : 0;
    }
    EXPECT_EQ(get("/if/3/counters"), expected_counters(expected)) << row.value;
  }
  EXPECT_EQ(get("/if/4/counters"), expected_counters(counters_of(4)));
}

TEST_F(InterfaceCounterTest, EveryTypeOfInterfaceIsReadWithTheCountersThatItHas) {
  for (uint32_t ifNum : {55u, 56u, 120u}) {
    EXPECT_EQ(get("/if/" + std::to_string(ifNum) + "/counters"), expected_counters(counters_of(ifNum)))
        << ifNum;
  }
}

TEST_F(InterfaceCounterTest, CountersThatAnInterfaceDoesNotHaveLeaveNoGap) {
  std::vector<counter_row> all = counters_of(3);
  for (uint32_t absent : {uint32_t{RX_64}, uint32_t{TX_64}, 62u}) {
    std::vector<counter_row> others;
    for (const counter_row &row : all) {
      if (row.id != absent) others.push_back(row);
    }
    fault("rpcclt_openapiStatHighLowGet", OPEN_E_NOT_FOUND, 1, absent);
    EXPECT_EQ(call_xml(interface_api_handler, "GET", "/if/3/counters"), expected_counters(others).xml);
    fault("rpcclt_openapiStatHighLowGet", OPEN_E_NOT_FOUND, 1, absent);
    FakeRequest json("GET", "/if/3/counters", "format=json");
    EXPECT_EQ(interface_api_handler(handle, json.conn()), 1);
    EXPECT_EQ(answer_body(json, "json"), expected_counters(others).json);
  }
}

TEST_F(InterfaceCounterTest, InterfaceWithoutCountersHasAnEmptyList) {
  fault("rpcclt_openapiStatHighLowGet", OPEN_E_NOT_FOUND, 2 * OPEN_STAT_COUNTERS);
  EXPECT_EQ(get("/if/3/counters"), expected_counters({}));
}

TEST_F(InterfaceCounterTest, AnyOtherFailureOfACounterIsTheRequests) {
  for (open_error_t rc : all_platform_errors()) {
    if (rc == OPEN_E_NOT_FOUND) continue;
    for (unsigned id : {0u, 5u, 62u}) {
      fault("rpcclt_openapiStatHighLowGet", rc, 1, id);
      FakeRequest request("GET", "/if/3/counters");
      EXPECT_EQ(interface_api_handler(handle, request.conn()), 0);
      EXPECT_EQ(answer_body(request, "xml"), expected_platform_error(rc).xml) << rc << " " << id;
    }
  }
}

TEST_F(InterfaceCounterTest, NoCounterIsReadAfterAFailure) {
  fault("rpcclt_openapiStatHighLowGet", OPEN_E_FAIL, 2, 5);
  EXPECT_EQ(call_xml(interface_api_handler, "GET", "/if/3/counters"),
            expected_platform_error(OPEN_E_FAIL).xml);
  EXPECT_EQ(lab("fault list"), "rpcclt_openapiStatHighLowGet OPEN_E_FAIL 1 0\n");
  lab("fault clear");
}

TEST_F(InterfaceCounterTest, InterfacesThatDoNotExistHaveNoCounters) {
  for (const char *ifNum : {"0", "200", "226", "354", "2147483648"}) {
    EXPECT_EQ(get(std::string("/if/") + ifNum + "/counters"), expected_platform_error(OPEN_E_PARAM)) << ifNum;
  }
}

/* --- Resetting -------------------------------------------------------------------------------------------
 */

static const char RESET[] = "/if/3/counters/reset";

TEST_F(InterfaceCounterTest, OneCounterIsReset) {
  set_counter("0/3", RX_256_511, "4294967297");
  set_counter("0/3", RX_64, "7");
  set_counter("0/4", RX_256_511, "8");
  expect_done("PUT", RESET, "counter=5", "Reset the counter CTR_RX_256_511 of Interface 3 successfully.");
  expect_value(3, RX_256_511, 0, 0);
  expect_value(3, RX_64, 7, 0);
  expect_value(4, RX_256_511, 8, 0);
}

TEST_F(InterfaceCounterTest, AllCountersAreReset) {
  set_counter("0/3", RX_64, "7");
  set_counter("0/3", TX_64, "4294967297");
  set_counter("0/4", RX_64, "8");
  expect_done("PUT", RESET, "counter=-1", "Reset all counters of Interface 3 successfully.");
  for (const counter_row &row : counters_of(3)) {
    EXPECT_EQ(row.low, 0u) << row.id;
    EXPECT_EQ(row.high, 0u) << row.id;
  }
  expect_value(4, RX_64, 8, 0);
}

TEST_F(InterfaceCounterTest, EveryCounterOfAnInterfaceIsResetByItsId) {
  for (const counter_row &row : counters_of(3)) {
    set_counter("0/3", row.id, "9");
    expect_done("PUT", RESET, "counter=" + std::to_string(row.id),
                "Reset the counter " + counter_name(row.id) + " of Interface 3 successfully.");
    expect_value(3, row.id, 0, 0);
  }
}

TEST_F(InterfaceCounterTest, CountersThatDoNotExistAnswer99) {
  for (const char *counter : {"63", "1000", "-2", "-63", "2147483647", "4294967295", "99999999999"}) {
    EXPECT_EQ(put(RESET, std::string("counter=") + counter), expected_platform_error(OPEN_E_PARAM))
        << counter;
  }
}

TEST_F(InterfaceCounterTest, CounterThatIsMissingEmptyOrTooLongAnswers99) {
  fault("rpcclt_openapiStatReset", OPEN_E_EXISTS);
  fault("rpcclt_openapiInterfaceStatsReset", OPEN_E_EXISTS);
  for (const std::string &query :
       {std::string(), std::string("counter="), std::string("value=5"), "counter=" + std::string(256, '0')}) {
    EXPECT_EQ(put(RESET, query), expected_parameter_error()) << query;
  }
  EXPECT_EQ(lab("fault list"), "rpcclt_openapiInterfaceStatsReset OPEN_E_EXISTS 1 0\n"
                               "rpcclt_openapiStatReset OPEN_E_EXISTS 1 0\n");
  lab("fault clear");
}

TEST_F(InterfaceCounterTest, NumberOfTheCounterCountsAsFarAsItGoes) {
  set_counter("0/3", RX_256_511, "4");
  expect_done("PUT", RESET, "counter=5x", "Reset the counter CTR_RX_256_511 of Interface 3 successfully.");
  expect_value(3, RX_256_511, 0, 0);
  expect_done("PUT", RESET, "counter=-1x", "Reset all counters of Interface 3 successfully.");
}

TEST_F(InterfaceCounterTest, ResettingIsNoChangeOfTheConfiguration) {
  std::string before = lab("show running-config");
  hold_changes();
  set_counter("0/3", RX_64, "7");
  call_xml(interface_api_handler, "PUT", RESET, "counter=-1");
  EXPECT_EQ(get("/if/pendingChanges"), expected_pending_interfaces({}));
  EXPECT_EQ(lab("show running-config"), before);
  release_changes();
}

TEST_F(InterfaceCounterTest, InterfacesThatDoNotExistHaveNothingToReset) {
  for (const char *ifNum : {"0", "200", "354", "2147483648"}) {
    for (const char *counter : {"-1", "5"}) {
      EXPECT_EQ(put(std::string("/if/") + ifNum + "/counters/reset", std::string("counter=") + counter),
                expected_platform_error(OPEN_E_NOT_FOUND));
    }
  }
}
