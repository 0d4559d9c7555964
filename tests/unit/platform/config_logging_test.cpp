/* Tests of the lines about logging: good ones, near misses with their errors, and printing. */
#include "tests/unit/platform/config_test_support.h"

using namespace softswitch;

namespace {

const std::string base = "logging host 10.0.0.1\n"
                         "logging host log.example\n"
                         "logging host log.example port 1514\n"
                         "logging host log.example severity 3\n";

/* A switch with two hosts. */
switch_model prepared() {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  EXPECT_TRUE(apply_text(model, base, &error)) << error;
  return model;
}

TEST(LoggingLines, GoodLinesGiveTheirConfiguration) {
  const std::string other = "logging host 10.0.0.1\n", named = base.substr(other.size());
  const std::string both = other + "logging host log.example\n";
  const std::pair<const char *, std::string> rows[] = {
      {"logging cli", "logging cli\n" + base},
      {"no logging cli", base},
      {"logging console", base},
      {"no logging console", "no logging console\n" + base},
      {"logging console severity 0", "logging console severity 0\n" + base},
      {"logging console severity 4", base},
      {"logging console severity 7", "logging console severity 7\n" + base},
      {"no logging console severity", base},
      {"logging syslog", "logging syslog\n" + base},
      {"no logging syslog", base},
      {"logging syslog port 1", "logging syslog port 1\n" + base},
      {"logging syslog port 514", base},
      {"logging syslog port 65535", "logging syslog port 65535\n" + base},
      {"no logging syslog port", base},
      {"logging host log.example", base},
      {"logging host \"10.0.0.1\"", base},
      {"logging host 2001:db8::1", other + "logging host 2001:db8::1\n" + named},
      {"logging host port", both + "logging host port\n" + base.substr(both.size())},
      {"no logging host log.example", other},
      {"logging host 10.0.0.1 port 514",
       both + "logging host 10.0.0.1 port 514\n" + base.substr(both.size())},
      {"no logging host 10.0.0.1 port", base},
      {"no logging host log.example port", both + "logging host log.example severity 3\n"},
      {"logging host 10.0.0.1 severity 7",
       both + "logging host log.example port 1514\nlogging host 10.0.0.1 severity 7\n"
              "logging host log.example severity 3\n"},
      {"logging host log.example severity 6", both + "logging host log.example port 1514\n"},
      {"no logging host log.example severity", both + "logging host log.example port 1514\n"},
  };
  for (const auto &[line, expected] : rows) {
    switch_model model = prepared();
    std::string error;
    uint64_t before = model.change;
    EXPECT_EQ(apply_line(model, line, &error), OPEN_E_NONE) << line << ": " << error;
    EXPECT_EQ(print_configuration(model), expected) << line;
    EXPECT_EQ(model.change != before, expected != base) << line;
  }
}

TEST(LoggingLines, NoFormsTakeBackWhatWasSet) {
  const std::pair<const char *, const char *> rows[] = {
      {"logging cli", "no logging cli"},
      {"no logging console", "logging console"},
      {"logging console severity 0", "no logging console severity"},
      {"logging syslog", "no logging syslog"},
      {"logging syslog port 9", "no logging syslog port"},
      {"logging host a", "no logging host a"},
  };
  for (const auto &[line, undo] : rows) {
    switch_model model = prepared();
    std::string error;
    ASSERT_EQ(apply_line(model, line, &error), OPEN_E_NONE) << line << ": " << error;
    EXPECT_NE(print_configuration(model), base) << line;
    ASSERT_EQ(apply_line(model, undo, &error), OPEN_E_NONE) << undo << ": " << error;
    EXPECT_EQ(print_configuration(model), base) << undo;
  }
}

TEST(LoggingLines, NearMissesNameTheirReason) {
  const std::string severity = "severity out of range 0..7", port = "UDP port out of range 1..65535";
  const std::string absent = "there is no logging host 10.0.0.2";
  const near_miss rows[] = {
      {"logging", OPEN_E_PARAM, "the line ends too early: cli is missing"},
      {"logging cli on", OPEN_E_PARAM, "\"on\" is not expected here"},
      {"logging console severity 8", OPEN_E_PARAM, severity},
      {"logging console severity 4294967295", OPEN_E_PARAM, severity},
      {"logging console severity warning", OPEN_E_PARAM, "\"warning\" is not a number"},
      {"logging syslog port 0", OPEN_E_PARAM, port},
      {"logging syslog port 65536", OPEN_E_PARAM, port},
      {"logging host 10.0.0.256", OPEN_E_PARAM,
       "\"10.0.0.256\" is neither an IP address nor the name of a host"},
      {"logging host \"\"", OPEN_E_PARAM, "\"\" is neither an IP address nor the name of a host"},
      {"no logging host a_b", OPEN_E_PARAM, "\"a_b\" is neither an IP address nor the name of a host"},
      {"no logging host 10.0.0.2", OPEN_E_NOT_FOUND, absent},
      {"logging host 10.0.0.2 port 5", OPEN_E_NOT_FOUND, absent},
      {"no logging host 10.0.0.2 port", OPEN_E_NOT_FOUND, absent},
      {"logging host 10.0.0.2 severity 9", OPEN_E_NOT_FOUND, absent},
      {"no logging host 10.0.0.2 severity", OPEN_E_NOT_FOUND, absent},
      {"logging host 10.0.0.1 port 0", OPEN_E_PARAM, port},
      {"logging host 10.0.0.1 port 65536", OPEN_E_PARAM, port},
      {"logging host 10.0.0.1 severity 8", OPEN_E_PARAM, severity},
      {"logging host 10.0.0.1 severity", OPEN_E_PARAM, "the line ends too early: <number> is missing"},
      {"no logging host 10.0.0.1 port 5", OPEN_E_PARAM, "\"5\" is not expected here"},
  };
  expect_refused(prepared(), rows);
  switch_model full = prepared();
  full.limits.logging_hosts = 2;
  const near_miss full_rows[] = {
      {"logging host a", OPEN_E_FULL, "there is room for 2 logging hosts only"},
  };
  expect_refused(full, full_rows);
}

TEST(LoggingLines, WhatIsPrintedGivesTheSameSwitch) {
  auto line = [](std::mt19937 &random) {
    const char *const hosts[] = {"10.0.0.1", "a", "::1", "log.example", "LOG.example", "10.0.0.300"};
    std::string host = hosts[random() % 6], number = std::to_string(random() % 9);
    const std::string lines[] = {"logging cli",
                                 "logging console",
                                 "logging console severity",
                                 "logging syslog",
                                 "logging syslog port",
                                 "logging host " + host,
                                 "logging host " + host + " port",
                                 "logging host " + host + " severity"};
    const std::string &chosen = lines[random() % 8];
    if (random() % 3 == 0) return "no " + chosen;
    bool numbered = chosen.ends_with("port") || chosen.ends_with("severity");
    return numbered ? chosen + " " + number : chosen;
  };
  prints_come_back(20, 80, line, [](const switch_model &first, const switch_model &second) {
    const logging_table &a = *first.logging, &b = *second.logging;
    EXPECT_EQ(a.cli, b.cli);
    EXPECT_EQ(a.console, b.console);
    EXPECT_EQ(a.console_severity, b.console_severity);
    EXPECT_EQ(a.syslog, b.syslog);
    EXPECT_EQ(a.syslog_port, b.syslog_port);
    ASSERT_EQ(a.hosts.size(), b.hosts.size());
    for (const auto &[address, host] : a.hosts) {
      ASSERT_TRUE(b.hosts.contains(address)) << address;
      EXPECT_EQ(host.port, b.hosts.at(address).port);
      EXPECT_EQ(host.severity, b.hosts.at(address).severity);
    }
  });
}

TEST(LoggingLines, ResetTakesEverythingBack) {
  switch_model model = prepared();
  std::string error;
  ASSERT_TRUE(apply_text(model, "logging cli\nno logging console\nlogging syslog\n", &error)) << error;
  switch_reset(model);
  EXPECT_EQ(print_configuration(model), "");
}

} // namespace
