/* The logging module: its settings. Hosts: test_logging_hosts.cpp. */
#include "modules/rest_module_logging.h"
#include "tests/unit/modules/management/management_fixture.h"

class LoggingTest : public ManagementTest {
protected:
  LoggingTest() : ManagementTest(logging_api_handler) {
    give("CliCmdLoggingModeGet", 0);
    give("ConsoleLoggingModeGet", 1);
    give("ConsoleLoggingSeverityGet", 4);
    give("SysLogModeGet", 0);
    give("SysLogPortGet", 514);
    give("MaxLoggingHostsSupportedGet", 8);
  }
};

struct logging_info {
  std::string cli_mode = "disable", console_mode = "enable", console_severity = "Warning conditions.";
  std::string syslog_mode = "disable";
  int64_t port = 514, max_hosts = 8;
};

static Answers expected_info(const logging_info &info) {
  return expected_data({branch(
      "logging", {branch("cli", {text("logging_mode", info.cli_mode)}),
                  branch("console", {text("logging_mode", info.console_mode),
                                     text("severity_level", info.console_severity)}),
                  branch("syslog", {text("logging_mode", info.syslog_mode), number("port", info.port)}),
                  number("max_logging_hosts", info.max_hosts)})});
}

static const char *const SEVERITIES[] = {"Emergency conditions.",   "Alert conditions.",
                                         "Critical conditions.",    "Error conditions.",
                                         "Warning conditions.",     "Normal but significant conditions.",
                                         "Informational messages.", "Debug-level messages."};

static const char *const SETTINGS[] = {"/logging/cli/mode", "/logging/console/mode",
                                       "/logging/console/severityLevel", "/logging/syslog/mode",
                                       "/logging/syslog/port"};

/* --- Reading -------------------------------------------------------------------------------------------- */

TEST_F(LoggingTest, SettingsAreRead) {
  expect_served({"GET", "/logging"}, expected_info({}),
                {"CliCmdLoggingModeGet", "ConsoleLoggingModeGet", "ConsoleLoggingSeverityGet",
                 "SysLogModeGet", "SysLogPortGet", "MaxLoggingHostsSupportedGet"});
}

TEST_F(LoggingTest, WholeAnswer) {
  Answers answers = get("/logging");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<logging><cli><logging_mode>disable</logging_mode></cli><console><logging_mode>"
                         "enable</logging_mode><severity_level>Warning conditions.</severity_level></console>"
                         "<syslog><logging_mode>disable</logging_mode><port>514</port></syslog>"
                         "<max_logging_hosts>8</max_logging_hosts></logging></rlt_data></result>\n");
  EXPECT_EQ(answers.json,
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
            "\"logging\": { \"cli\": { \"logging_mode\": \"disable\" }, \"console\": { "
            "\"logging_mode\": \"enable\", \"severity_level\": \"Warning conditions.\" }, \"syslog\": { "
            "\"logging_mode\": \"disable\", \"port\": 514 }, \"max_logging_hosts\": 8 } } } }\n");
}

TEST_F(LoggingTest, EachModeIsItsOwn) {
  give("CliCmdLoggingModeGet", 1);
  EXPECT_EQ(get("/logging"), expected_info({.cli_mode = "enable"}));
  give("CliCmdLoggingModeGet", 2);
  EXPECT_EQ(get("/logging"), expected_info({.cli_mode = ""}));
  give("CliCmdLoggingModeGet", 0);
  give("ConsoleLoggingModeGet", 0);
  EXPECT_EQ(get("/logging"), expected_info({.console_mode = "disable"}));
  give("ConsoleLoggingModeGet", UINT32_MAX);
  EXPECT_EQ(get("/logging"), expected_info({.console_mode = ""}));
  give("ConsoleLoggingModeGet", 1);
  give("SysLogModeGet", 1);
  EXPECT_EQ(get("/logging"), expected_info({.syslog_mode = "enable"}));
  give("SysLogModeGet", 2);
  EXPECT_EQ(get("/logging"), expected_info({.syslog_mode = ""}));
}

TEST_F(LoggingTest, EachSeverityIsASentence) {
  for (uint32_t level = 0; level <= 7; level++) {
    give("ConsoleLoggingSeverityGet", level);
    EXPECT_EQ(get("/logging"), expected_info({.console_severity = SEVERITIES[level]}));
  }
  give("ConsoleLoggingSeverityGet", static_cast<uint32_t>(-1));
  EXPECT_EQ(get("/logging"), expected_info({.console_severity = "Severity level undefined."}));
}

TEST_F(LoggingTest, SeverityWithoutATextAnswers97AndEndsTheRequest) {
  for (int32_t level : {-2, 8, 100, INT32_MIN, INT32_MAX}) {
    give("ConsoleLoggingSeverityGet", static_cast<uint32_t>(level));
    EXPECT_EQ(get("/logging"), expected_platform_error(OPEN_E_INTERNAL)) << level;
    EXPECT_EQ(calls_made(),
              (call_list{"CliCmdLoggingModeGet", "ConsoleLoggingModeGet", "ConsoleLoggingSeverityGet"}));
  }
}

TEST_F(LoggingTest, NumbersAreShownAsSignedOnes) {
  give("SysLogPortGet", 0);
  give("MaxLoggingHostsSupportedGet", UINT32_MAX);
  EXPECT_EQ(get("/logging"), expected_info({.port = 0, .max_hosts = -1}));
  give("SysLogPortGet", 1u << 31);
  give("MaxLoggingHostsSupportedGet", 0);
  EXPECT_EQ(get("/logging"), expected_info({.port = INT32_MIN, .max_hosts = 0}));
}

TEST_F(LoggingTest, SeveritiesHaveSentences) {
  for (int32_t level = -1; level <= 7; level++) {
    char sentence[36] = "untouched";
    EXPECT_EQ(get_log_severity_level_string_by_eum(level, sentence), RC_TRUE) << level;
    EXPECT_STREQ(sentence, level == -1 ? "Severity level undefined." : SEVERITIES[level]);
  }
  for (int32_t level : {-2, 8, 255, INT32_MIN, INT32_MAX}) {
    char sentence[36] = "untouched";
    EXPECT_EQ(get_log_severity_level_string_by_eum(level, sentence), RC_FALSE) << level;
    EXPECT_STREQ(sentence, "");
  }
  EXPECT_EQ(get_log_severity_level_string_by_eum(3, nullptr), RC_FALSE);
  EXPECT_EQ(get_log_severity_level_string_by_eum(8, nullptr), RC_FALSE);
}

/* --- Changing ------------------------------------------------------------------------------------------- */

TEST_F(LoggingTest, ModesAndSeverityAreSet) {
  const struct {
    const char *uri, *value, *message, *call;
  } rows[] = {
      {"/logging/cli/mode", "0", "Update mode of CLI logging successfully.", "CliCmdLoggingModeSet 0"},
      {"/logging/cli/mode", "1", "Update mode of CLI logging successfully.", "CliCmdLoggingModeSet 1"},
      {"/logging/console/mode", "0", "Update mode of Console logging successfully.",
       "ConsoleLoggingModeSet 0"},
      {"/logging/console/mode", "1", "Update mode of Console logging successfully.",
       "ConsoleLoggingModeSet 1"},
      {"/logging/console/mode", "01", "Update mode of Console logging successfully.",
       "ConsoleLoggingModeSet 1"},
      {"/logging/console/mode", "2", "Update mode of Console logging successfully.",
       "ConsoleLoggingModeSet 2"},
      {"/logging/console/mode", "-1", "Update mode of Console logging successfully.",
       "ConsoleLoggingModeSet 4294967295"},
      {"/logging/console/mode", "any+text", "Update mode of Console logging successfully.",
       "ConsoleLoggingModeSet 0"},
      {"/logging/console/severityLevel", "0", "Update severity level of Console logging successfully.",
       "ConsoleLoggingSeveritySet 0"},
      {"/logging/console/severityLevel", "7", "Update severity level of Console logging successfully.",
       "ConsoleLoggingSeveritySet 7"},
      {"/logging/console/severityLevel", "8", "Update severity level of Console logging successfully.",
       "ConsoleLoggingSeveritySet 8"},
      {"/logging/console/severityLevel", "-1", "Update severity level of Console logging successfully.",
       "ConsoleLoggingSeveritySet -1"},
      {"/logging/console/severityLevel", "debug", "Update severity level of Console logging successfully.",
       "ConsoleLoggingSeveritySet 0"},
      {"/logging/console/severityLevel", "3rd", "Update severity level of Console logging successfully.",
       "ConsoleLoggingSeveritySet 3"},
      {"/logging/syslog/mode", "0", "Update mode of Syslog successfully.", "SysLogModeSet 0"},
      {"/logging/syslog/mode", "1", "Update mode of Syslog successfully.", "SysLogModeSet 1"},
      {"/logging/syslog/mode", "2", "Update mode of Syslog successfully.", "SysLogModeSet 2"},
      {"/logging/syslog/mode", "abc", "Update mode of Syslog successfully.", "SysLogModeSet 0"},
      {"/logging/syslog/mode", "-2147483648", "Update mode of Syslog successfully.",
       "SysLogModeSet 2147483648"},
  };
  for (const auto &row : rows)
    expect_served({"PUT", row.uri, std::string("value=") + row.value}, expected_answers(0, row.message),
                  {row.call});
}

/* Unlike that of the console. */
TEST_F(LoggingTest, CliModeTakesOnlyTheExactTexts0And1) {
  for (const char *value : {"01", "00", "2", "-1", "-0", "%2B1", "%201", "1%20", "+1", "1+", "1x", "0x0",
                            "on", "enable", "10", "11", "1.0"})
    expect_refused({"PUT", "/logging/cli/mode", std::string("value=") + value}, expected_parameter_error());
}

TEST_F(LoggingTest, PortOfSyslogIsSet) {
  const struct {
    const char *value, *call;
  } rows[] = {{"1", "SysLogPortSet 1"},         {"514", "SysLogPortSet 514"},
              {"65535", "SysLogPortSet 65535"}, {"65534", "SysLogPortSet 65534"},
              {"0514", "SysLogPortSet 514"},    {"%20514", "SysLogPortSet 514"}};
  for (const auto &row : rows)
    expect_served({"PUT", "/logging/syslog/port", std::string("value=") + row.value},
                  expected_answers(0, "Update port of Syslog successfully."), {row.call});
}

TEST_F(LoggingTest, PortOfSyslogIsBroughtBackToItsDefault) {
  for (const char *value : {"-1", "-01"})
    expect_served({"PUT", "/logging/syslog/port", std::string("value=") + value},
                  expected_answers(0, "Update port of Syslog to default successfully."), {"SysLogPortSet 0"});
}

TEST_F(LoggingTest, NoPortIsRefused) {
  for (const char *value : {"0", "65536", "65537", "131071", "-2", "-65535", "abc", "-", "%20", "x514",
                            "2147483647", "-2147483648", "4294967295", "4294967297", "4294967810",
                            "18446744073709551615", "18446744073709552130"})
    expect_refused({"PUT", "/logging/syslog/port", std::string("value=") + value},
                   expected_answers(1, "The value of parameter is invalid."));
}

TEST_F(LoggingTest, ValueThatIsMissingOrEmptyOrTooLongAnswers99) {
  for (const char *uri : SETTINGS) {
    for (const std::string &query : {std::string(), std::string("value="), std::string("value"),
                                     std::string("val=1"), "value=" + std::string(255, '0') + "1"})
      expect_refused({"PUT", uri, query}, expected_parameter_error());
  }
}

TEST_F(LoggingTest, LongestValueIsRead) {
  const std::string query = "value=" + std::string(254, '0') + "1";
  EXPECT_EQ(serve({"PUT", "/logging/syslog/port", query}),
            expected_answers(0, "Update port of Syslog successfully."));
  EXPECT_EQ(calls_made(), call_list{"SysLogPortSet 1"});
  EXPECT_EQ(serve({"PUT", "/logging/console/mode", query}),
            expected_answers(0, "Update mode of Console logging successfully."));
  EXPECT_EQ(calls_made(), call_list{"ConsoleLoggingModeSet 1"});
}
