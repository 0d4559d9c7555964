/* The box services module: the transceivers in the ports. */
#include "modules/rest_module_boxs.h"
#include "tests/unit/modules/little_memory.h"
#include "tests/unit/modules/management/management_fixture.h"

#include <algorithm>

static const char *const TEXTS[] = {"VendorName", "VendorRev", "SerialNumber", "PartNumber", "Compliance"};
static const char *const TEXT_GETTERS[] = {"BoxsSfpVendorNameGet", "BoxsSfpVendorRevisionGet",
                                           "BoxsSfpSerialNumberGet", "BoxsSfpPartNumberGet",
                                           "BoxsSfpComplianceGet"};
static const char *const TEXT_KEYS[] = {"vendor_name", "vendor_revision", "serial_number", "part_number",
                                        "compliance"};

/* Ports 1, 2, 5 and 9, with transceivers in 2 and 9. */
class TransceiverTest : public ManagementTest {
protected:
  TransceiverTest() : ManagementTest(boxs_api_handler) {
    give_ports({1, 2, 5, 9});
    for (const char *empty : {"1", "5"})
      fail_call(std::string("BoxsSfpNominalSignalRate ") + empty, OPEN_E_NOT_FOUND);
    const uint32_t sizes[] = {17, 5, 18, 19, 64};
    for (size_t i = 0; i < 5; i++) give(std::string("BoxsSfp") + TEXTS[i] + "SizeGet", sizes[i]);
    for (const char *id : {"2", "9"}) {
      for (size_t i = 0; i < 5; i++)
        give(std::string(TEXT_GETTERS[i]) + " " + id, std::string(1, static_cast<char>('a' + i)) + id);
    }
    give("BoxsSfpTypeGet", 2);
    give("BoxsSfpTypeGet 9", 3);
    give("BoxsSfpLinkLength50umGet", 300);
    give("BoxsSfpLinkLength62_5umGet", 33);
    give("BoxsSfpNominalSignalRate", 10300);
    give("BoxsSfpNominalSignalRate 9", 40000);
  }

  static void give_ports(const std::vector<uint32_t> &ports) {
    give("IfFirstGet 0 4", ports[0]);
    for (size_t i = 1; i < ports.size(); i++) {
      give(next_after(ports[i - 1]), ports[i]);
      fail_call(next_after(ports[i - 1]), OPEN_E_NONE);
    }
    fail_call(next_after(ports.back()), OPEN_E_FAIL);
  }
  static std::string next_after(uint32_t port) { return "IfNextGet 0 4 " + std::to_string(port); }
};

/* What one transceiver is listed as. */
struct listed_transceiver {
  int64_t port;
  std::string type = "SFP+";
  std::string texts[5] = {};
  int64_t length_50um = 300, length_62_5um = 33, rate = 10300;
};

static result_node transceiver_entry(unsigned position, const listed_transceiver &transceiver) {
  const std::string *texts = transceiver.texts;
  return entry(position, "sfp",
               {number("port", transceiver.port), text("module_type", transceiver.type),
                text("vendor_name", texts[0]), text("vendor_revision", texts[1]),
                number("link_length_50um", transceiver.length_50um),
                number("link_length_62_5um", transceiver.length_62_5um), text("serial_number", texts[2]),
                text("part_number", texts[3]), number("nominal_signal_rate", transceiver.rate),
                text("compliance", texts[4])});
}

static Answers expected_transceivers(const std::vector<listed_transceiver> &transceivers) {
  std::vector<result_node> entries;
  for (const listed_transceiver &transceiver : transceivers)
    entries.push_back(transceiver_entry(static_cast<unsigned>(entries.size()) + 1, transceiver));
  return expected_data({branch("sfp_transceivers", entries)});
}

static const listed_transceiver IN_PORT_2 = {2, "SFP+", {"a2", "b2", "c2", "d2", "e2"}};
static const listed_transceiver IN_PORT_9 = {9, "QSFP", {"a9", "b9", "c9", "d9", "e9"}, 300, 33, 40000};

/* The calls that read a transceiver's data, in their order. */
static call_list calls_of(const std::string &port) {
  return {"BoxsSfpNominalSignalRate " + port,
          "BoxsSfpTypeGet " + port,
          "BoxsSfpVendorNameSizeGet",
          "BoxsSfpVendorNameGet " + port + " [17]",
          "BoxsSfpVendorRevSizeGet",
          "BoxsSfpVendorRevisionGet " + port + " [5]",
          "BoxsSfpLinkLength50umGet " + port,
          "BoxsSfpLinkLength62_5umGet " + port,
          "BoxsSfpSerialNumberSizeGet",
          "BoxsSfpSerialNumberGet " + port + " [18]",
          "BoxsSfpPartNumberSizeGet",
          "BoxsSfpPartNumberGet " + port + " [19]",
          "BoxsSfpNominalSignalRate " + port,
          "BoxsSfpComplianceSizeGet",
          "BoxsSfpComplianceGet " + port + " [64]"};
}

static call_list joined(const std::vector<call_list> &lists) {
  call_list all;
  for (const call_list &list : lists) all.insert(all.end(), list.begin(), list.end());
  return all;
}

TEST_F(TransceiverTest, PortsWithTransceiversAreListed) {
  EXPECT_EQ(get("/boxs/sfp"), expected_transceivers({IN_PORT_2, IN_PORT_9}));
  EXPECT_EQ(calls_made(), joined({{"IfFirstGet 0 4", "BoxsSfpNominalSignalRate 1", "IfNextGet 0 4 1"},
                                  calls_of("2"),
                                  {"IfNextGet 0 4 2", "BoxsSfpNominalSignalRate 5", "IfNextGet 0 4 5"},
                                  calls_of("9"),
                                  {"IfNextGet 0 4 9"}}));
}

TEST_F(TransceiverTest, WholeAnswer) {
  give_ports({2});
  Answers answers = get("/boxs/sfp");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<sfp_transceivers><sfp><port>2</port><module_type>SFP+</module_type><vendor_name>a2"
                         "</vendor_name><vendor_revision>b2</vendor_revision><link_length_50um>300"
                         "</link_length_50um><link_length_62_5um>33</link_length_62_5um><serial_number>c2"
                         "</serial_number><part_number>d2</part_number><nominal_signal_rate>10300"
                         "</nominal_signal_rate><compliance>e2</compliance></sfp></sfp_transceivers>"
                         "</rlt_data></result>\n");
  EXPECT_EQ(answers.json,
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
            "\"rlt_data\": { \"sfp_transceivers\": { \"1\": { \"port\": 2, \"module_type\": \"SFP+\", "
            "\"vendor_name\": \"a2\", \"vendor_revision\": \"b2\", \"link_length_50um\": 300, "
            "\"link_length_62_5um\": 33, \"serial_number\": \"c2\", \"part_number\": \"d2\", "
            "\"nominal_signal_rate\": 10300, \"compliance\": \"e2\" } } } } }\n");
}

/* All but finding out whether there is a transceiver, and the next port: those failures mean other things. */
TEST_F(TransceiverTest, EveryCallForATransceiverThatFailsIsAnswered) {
  give_ports({9, 2});
  const call_list calls = joined({{"IfFirstGet 0 4"}, calls_of("9"), {"IfNextGet 0 4 9"}, calls_of("2")});
  const size_t first_try = 1, next = 16, second_try = 17;
  ASSERT_EQ(calls[next], "IfNextGet 0 4 9");
  for (size_t position = 0; position < calls.size(); position++) {
    if (position != first_try && position != next && position != second_try)
      expect_failures_answered({"GET", "/boxs/sfp"}, calls, position);
  }
}

TEST_F(TransceiverTest, PortIsSkippedWhateverTheFirstReadingOfItsRateFailsWith) {
  give_ports({1, 2, 5});
  for (open_error_t rc : all_platform_errors()) {
    fail_call("BoxsSfpNominalSignalRate 1", rc);
    fail_call("BoxsSfpNominalSignalRate 5", rc);
    EXPECT_EQ(get("/boxs/sfp"), expected_transceivers({IN_PORT_2})) << rc;
  }
}

TEST_F(TransceiverTest, ListEndsWhateverTheCallForTheNextPortFailsWith) {
  for (open_error_t rc : all_platform_errors()) {
    fail_call(next_after(2), rc);
    EXPECT_EQ(get("/boxs/sfp"), expected_transceivers({IN_PORT_2})) << rc;
    EXPECT_EQ(calls_made().back(), next_after(2));
  }
}

TEST_F(TransceiverTest, FirstPortThatCannotBeFoundIsAFailure) {
  expect_failures_answered({"GET", "/boxs/sfp"}, {"IfFirstGet 0 4"}, 0);
}

TEST_F(TransceiverTest, SwitchWithoutTransceiversAnswersAnEmptyList) {
  fail_call("BoxsSfpNominalSignalRate", OPEN_E_NOT_FOUND);
  EXPECT_EQ(get("/boxs/sfp"), expected_transceivers({}));
  Answers answers = get("/boxs/sfp");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<sfp_transceivers></sfp_transceivers></rlt_data></result>\n");
  EXPECT_EQ(calls_made(),
            (call_list{"IfFirstGet 0 4", "BoxsSfpNominalSignalRate 1", "IfNextGet 0 4 1",
                       "BoxsSfpNominalSignalRate 2", "IfNextGet 0 4 2", "BoxsSfpNominalSignalRate 5",
                       "IfNextGet 0 4 5", "BoxsSfpNominalSignalRate 9", "IfNextGet 0 4 9"}));
}

TEST_F(TransceiverTest, LastPortIsListed) {
  give_ports({9});
  EXPECT_EQ(get("/boxs/sfp"), expected_transceivers({IN_PORT_9}));
}

TEST_F(TransceiverTest, PortsWithoutAnEndAreGivenUp) {
  fail_call(next_after(1), OPEN_E_NONE);
  give(next_after(1), 1); /* no transceiver */
  EXPECT_EQ(get("/boxs/sfp"), expected_platform_error(OPEN_E_INTERNAL));
  give_ports({1, 3, 4, 5, 6, 7, 8, 10, 11, 2, 1}); /* port 2 has a transceiver */
  fail_call(next_after(1), OPEN_E_NONE);
  fail_call("BoxsSfpNominalSignalRate", OPEN_E_NOT_FOUND);
  fail_call("BoxsSfpNominalSignalRate 2", OPEN_E_NONE);
  EXPECT_EQ(get("/boxs/sfp"), expected_platform_error(OPEN_E_INTERNAL));
}

TEST_F(TransceiverTest, NumbersAreShownAsSignedOnes) {
  const struct {
    uint32_t value;
    int64_t shown;
  } rows[] = {{0, 0}, {INT32_MAX, INT32_MAX}, {1u << 31, INT32_MIN}, {UINT32_MAX, -1}};
  for (const auto &row : rows) {
    give_ports({2});
    give("BoxsSfpLinkLength50umGet", row.value);
    give("BoxsSfpLinkLength62_5umGet", row.value);
    give("BoxsSfpNominalSignalRate", row.value);
    listed_transceiver expected = IN_PORT_2;
    expected.length_50um = expected.length_62_5um = expected.rate = row.shown;
    EXPECT_EQ(get("/boxs/sfp"), expected_transceivers({expected}));
  }
}

TEST_F(TransceiverTest, EachTypeHasItsText) {
  give_ports({2});
  const char *const types[] = {"None", "SFP", "SFP+", "QSFP", "Direct Attach Cable"};
  for (uint32_t type = 0; type <= 4; type++) {
    give("BoxsSfpTypeGet", type);
    listed_transceiver expected = IN_PORT_2;
    expected.type = types[type];
    EXPECT_EQ(get("/boxs/sfp"), expected_transceivers({expected}));
  }
  for (uint32_t type = 5; type <= 10; type++) {
    char name[256];
    give("BoxsSfpTypeGet", type);
    get_open_sfp_module_type_string_by_enum(type, name, sizeof name);
    listed_transceiver expected = IN_PORT_2;
    expected.type = name;
    EXPECT_EQ(get("/boxs/sfp"), expected_transceivers({expected}));
  }
}

/* --- Texts ---------------------------------------------------------------------------------------------- */

TEST_F(TransceiverTest, TextThatFillsItsBufferEndsThere) {
  for (size_t i = 0; i < 5; i++) {
    give_ports({2});
    listed_transceiver expected = IN_PORT_2;
    for (uint32_t size : {0u, 1u, 16u, 300u}) {
      give(std::string("BoxsSfp") + TEXTS[i] + "SizeGet", size);
      expected.texts[i] = std::string(size, 'x');
      for (uint32_t length : {size, size + 1, 2 * size + 1}) {
        give(std::string(TEXT_GETTERS[i]) + " 2", std::string(length, 'x'));
        EXPECT_EQ(get("/boxs/sfp"), expected_transceivers({expected})) << TEXT_KEYS[i] << " " << size;
      }
    }
    give(std::string("BoxsSfp") + TEXTS[i] + "SizeGet", 20);
    give(std::string(TEXT_GETTERS[i]) + " 2", IN_PORT_2.texts[i]);
  }
}

TEST_F(TransceiverTest, TextBeyondAllMemoryAnswers97AndEndsTheRequest) {
  little_memory limit;
  for (size_t i = 0; i < 5; i++) {
    std::string size_call = std::string("BoxsSfp") + TEXTS[i] + "SizeGet";
    give(size_call, UINT32_MAX);
    EXPECT_EQ(get("/boxs/sfp"), expected_platform_error(OPEN_E_INTERNAL)) << TEXT_KEYS[i];
    EXPECT_EQ(calls_made().back(), size_call);
    give(size_call, 20);
  }
}

TEST_F(TransceiverTest, TextsAreShownAsTheyAre) {
  give_ports({2});
  for (const char *strange : {"", "a&b", "<x/>", "%s%n", "\"", "blank  inside ", "\xC3\xA9"}) {
    listed_transceiver expected = IN_PORT_2;
    for (size_t i = 0; i < 5; i++) {
      give(std::string("BoxsSfp") + TEXTS[i] + "SizeGet", 20);
      give(std::string(TEXT_GETTERS[i]) + " 2", strange);
      expected.texts[i] = strange;
    }
    EXPECT_EQ(get("/boxs/sfp"), expected_transceivers({expected})) << strange;
  }
}
