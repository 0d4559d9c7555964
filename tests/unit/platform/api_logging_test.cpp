/* Tests of the logging functions of the C interface: every result code, and what they change. */
#include "platform/api/openapi_logging.h"

#include "tests/unit/platform/softswitch_test_support.h"

#include <string.h>

namespace {

class Logging : public SoftSwitch {
protected:
  using mode_getter = open_error_t (*)(openapiClientHandle_t *, OPEN_CONTROL_t *);
  using mode_setter = open_error_t (*)(openapiClientHandle_t *, OPEN_CONTROL_t);

  static open_buffdesc text_of(std::string &text) {
    return {static_cast<uint32_t>(text.size()), text.data()};
  }

  open_error_t add(std::string address) {
    open_buffdesc text = text_of(address);
    return rpcclt_openapiLoggingHostAdd(&handle, &text);
  }

  open_error_t remove(std::string address) {
    open_buffdesc text = text_of(address);
    return rpcclt_openapiLoggingHostRemove(&handle, &text);
  }

  open_error_t set_port(std::string address, uint32_t port) {
    open_buffdesc text = text_of(address);
    return rpcclt_openapiLoggingHostPortSet(&handle, &text, port);
  }

  open_error_t set_severity(std::string address, OPEN_LOG_SEVERITY_t severity) {
    open_buffdesc text = text_of(address);
    return rpcclt_openapiLoggingHostSeveritySet(&handle, &text, severity);
  }

  /* "PORT SEVERITY", or the code when either is refused, with which the other then is as well. */
  std::string host(std::string address) {
    open_buffdesc text = text_of(address);
    uint32_t port = 0;
    OPEN_LOG_SEVERITY_t severity = -2;
    open_error_t rc = rpcclt_openapiLoggingHostPortGet(&handle, &text, &port);
    EXPECT_EQ(rpcclt_openapiLoggingHostSeverityGet(&handle, &text, &severity), rc) << address;
    return rc == OPEN_E_NONE ? std::to_string(port) + " " + std::to_string(severity) : std::to_string(rc);
  }

  /* All hosts, as a client walks over them. */
  std::vector<std::string> hosts() {
    std::vector<std::string> found;
    char buffer[256] = "";
    open_error_t rc;
    for (;;) {
      open_buffdesc text = {sizeof buffer, buffer};
      rc = rpcclt_openapiLoggingHostIpAddrNextGet(&handle, &text);
      if (rc != OPEN_E_NONE) break;
      EXPECT_EQ(text.size, strlen(buffer));
      found.push_back(buffer);
    }
    EXPECT_EQ(rc, OPEN_E_FAIL);
    return found;
  }

  uint32_t syslog_port() {
    uint32_t port = 0;
    EXPECT_EQ(rpcclt_openapiSysLogPortGet(&handle, &port), OPEN_E_NONE);
    return port;
  }

  std::string journal() { return file_content(dir.path + "/journal-1"); }

  using list = std::vector<std::string>;
  const std::string not_found = std::to_string(OPEN_E_NOT_FOUND);
  const std::string invalid = std::to_string(OPEN_E_PARAM);
};

TEST_F(Logging, FactoryStateLogsWarningsToTheConsoleAndNothingElsewhere) {
  OPEN_CONTROL_t mode = 9;
  OPEN_LOG_SEVERITY_t severity = -2;
  uint32_t number = 0;
  EXPECT_EQ(rpcclt_openapiCliCmdLoggingModeGet(&handle, &mode), OPEN_E_NONE);
  EXPECT_EQ(mode, OPEN_CONTROL_t{OPEN_DISABLE});
  EXPECT_EQ(rpcclt_openapiConsoleLoggingModeGet(&handle, &mode), OPEN_E_NONE);
  EXPECT_EQ(mode, OPEN_CONTROL_t{OPEN_ENABLE});
  EXPECT_EQ(rpcclt_openapiConsoleLoggingSeverityGet(&handle, &severity), OPEN_E_NONE);
  EXPECT_EQ(severity, OPEN_LOG_SEVERITY_t{OPEN_LOG_SEVERITY_WARNING});
  EXPECT_EQ(rpcclt_openapiSysLogModeGet(&handle, &mode), OPEN_E_NONE);
  EXPECT_EQ(mode, OPEN_CONTROL_t{OPEN_DISABLE});
  EXPECT_EQ(syslog_port(), 514u);
  EXPECT_EQ(rpcclt_openapiMaxLoggingHostsSupportedGet(&handle, &number), OPEN_E_NONE);
  EXPECT_EQ(number, 8u);
  EXPECT_EQ(rpcclt_openapiLoggingHostMaxAddrLenGet(&handle, &number), OPEN_E_NONE);
  EXPECT_EQ(number, 256u);
  EXPECT_EQ(hosts(), list());
  EXPECT_EQ(softswitch::running_config(), "");
}

/* --- Modes and thresholds ------------------------------------------------------------------------------- */

TEST_F(Logging, ModesAreSetKeptAndOnlyJournalledWhenTheyChange) {
  const struct {
    mode_getter get;
    mode_setter set;
    OPEN_CONTROL_t factory;
    std::string line; /* of the other mode */
  } rows[] = {
      {rpcclt_openapiCliCmdLoggingModeGet, rpcclt_openapiCliCmdLoggingModeSet, OPEN_DISABLE, "logging cli\n"},
      {rpcclt_openapiConsoleLoggingModeGet, rpcclt_openapiConsoleLoggingModeSet, OPEN_ENABLE,
       "no logging console\n"},
      {rpcclt_openapiSysLogModeGet, rpcclt_openapiSysLogModeSet, OPEN_DISABLE, "logging syslog\n"},
  };
  std::string lines;
  for (const auto &row : rows) {
    std::string before = journal();
    EXPECT_EQ(row.set(&handle, row.factory), OPEN_E_NONE) << row.line;
    for (OPEN_CONTROL_t bad : {2u, 9u, UINT32_MAX})
      EXPECT_EQ(row.set(&handle, bad), OPEN_E_PARAM) << row.line;
    EXPECT_EQ(journal(), before) << row.line;
    EXPECT_EQ(row.set(&handle, 1 - row.factory), OPEN_E_NONE) << row.line;
    EXPECT_EQ(row.set(&handle, 1 - row.factory), OPEN_E_NONE) << row.line;
    EXPECT_EQ(journal(), before + row.line);
    EXPECT_EQ(softswitch::running_config(), lines += row.line);
  }
  restart();
  for (const auto &row : rows) {
    OPEN_CONTROL_t mode = 9;
    EXPECT_EQ(row.get(&handle, &mode), OPEN_E_NONE) << row.line;
    EXPECT_EQ(mode, 1 - row.factory) << row.line;
    EXPECT_EQ(row.set(&handle, row.factory), OPEN_E_NONE) << row.line;
  }
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Logging, ConsoleSeverityIsZeroToSeven) {
  OPEN_LOG_SEVERITY_t severity = -2;
  for (OPEN_LOG_SEVERITY_t good = 0; good <= 7; good++) {
    EXPECT_EQ(rpcclt_openapiConsoleLoggingSeveritySet(&handle, good), OPEN_E_NONE) << good;
    EXPECT_EQ(rpcclt_openapiConsoleLoggingSeverityGet(&handle, &severity), OPEN_E_NONE);
    EXPECT_EQ(severity, good);
  }
  for (OPEN_LOG_SEVERITY_t bad : {-1, 8, INT32_MIN, INT32_MAX})
    EXPECT_EQ(rpcclt_openapiConsoleLoggingSeveritySet(&handle, bad), OPEN_E_PARAM) << bad;
  EXPECT_EQ(softswitch::running_config(), "logging console severity 7\n");
}

TEST_F(Logging, SyslogPortIsAnyPortAndZeroBringsTheDefaultBack) {
  for (uint32_t port : {1u, 514u, 65535u}) {
    EXPECT_EQ(rpcclt_openapiSysLogPortSet(&handle, port), OPEN_E_NONE);
    EXPECT_EQ(syslog_port(), port);
  }
  for (uint32_t bad : {65536u, UINT32_MAX})
    EXPECT_EQ(rpcclt_openapiSysLogPortSet(&handle, bad), OPEN_E_PARAM) << bad;
  EXPECT_EQ(softswitch::running_config(), "logging syslog port 65535\n");
  EXPECT_EQ(rpcclt_openapiSysLogPortSet(&handle, 0), OPEN_E_NONE);
  EXPECT_EQ(syslog_port(), 514u);
  EXPECT_EQ(softswitch::running_config(), "");
}

/* --- Hosts ---------------------------------------------------------------------------------------------- */

TEST_F(Logging, HostsAreWalkedInTheOrderOfTheirTexts) {
  for (const char *address : {"log.example", "10.0.0.9", "2001:db8::1", "10.0.0.10", "LOG.example"})
    EXPECT_EQ(add(address), OPEN_E_NONE) << address;
  EXPECT_EQ(hosts(), (list{"10.0.0.10", "10.0.0.9", "2001:db8::1", "LOG.example", "log.example"}));
  EXPECT_EQ(remove("10.0.0.9"), OPEN_E_NONE);
  EXPECT_EQ(hosts(), (list{"10.0.0.10", "2001:db8::1", "LOG.example", "log.example"}));
  restart();
  EXPECT_EQ(hosts(), (list{"10.0.0.10", "2001:db8::1", "LOG.example", "log.example"}));
}

TEST_F(Logging, WalkGoesOnFromATextThatIsNoHostAndNeedsRoom) {
  ASSERT_EQ(add("10.0.0.1"), OPEN_E_NONE);
  ASSERT_EQ(add("a.example"), OPEN_E_NONE);
  char buffer[256] = "5 is no address";
  open_buffdesc text = {sizeof buffer, buffer};
  EXPECT_EQ(rpcclt_openapiLoggingHostIpAddrNextGet(&handle, &text), OPEN_E_NONE);
  EXPECT_STREQ(buffer, "a.example");
  strcpy(buffer, "");
  text.size = sizeof "10.0.0.1" - 1;
  EXPECT_EQ(rpcclt_openapiLoggingHostIpAddrNextGet(&handle, &text), OPEN_E_PARAM);
  text.size = sizeof "10.0.0.1";
  EXPECT_EQ(rpcclt_openapiLoggingHostIpAddrNextGet(&handle, &text), OPEN_E_NONE);
  EXPECT_STREQ(buffer, "10.0.0.1");
}

TEST_F(Logging, NewHostFollowsSyslogsPortAndTakesInformationalLines) {
  ASSERT_EQ(add("10.0.0.1"), OPEN_E_NONE);
  EXPECT_EQ(host("10.0.0.1"), "514 6");
  ASSERT_EQ(rpcclt_openapiSysLogPortSet(&handle, 1514), OPEN_E_NONE);
  EXPECT_EQ(host("10.0.0.1"), "1514 6");
  ASSERT_EQ(set_port("10.0.0.1", 1514), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiSysLogPortSet(&handle, 0), OPEN_E_NONE);
  EXPECT_EQ(host("10.0.0.1"), "1514 6") << "its own port stays, though it was the same";
  ASSERT_EQ(set_port("10.0.0.1", 0), OPEN_E_NONE);
  EXPECT_EQ(host("10.0.0.1"), "514 6");
}

TEST_F(Logging, HostsHavePortAndSeverityOfTheirOwn) {
  ASSERT_EQ(add("10.0.0.1"), OPEN_E_NONE);
  ASSERT_EQ(add("log.example"), OPEN_E_NONE);
  for (uint32_t port : {1u, 514u, 65535u}) {
    EXPECT_EQ(set_port("10.0.0.1", port), OPEN_E_NONE);
    EXPECT_EQ(host("10.0.0.1"), std::to_string(port) + " 6");
  }
  for (OPEN_LOG_SEVERITY_t severity = 0; severity <= 7; severity++) {
    EXPECT_EQ(set_severity("log.example", severity), OPEN_E_NONE);
    EXPECT_EQ(host("log.example"), "514 " + std::to_string(severity));
  }
  for (uint32_t bad : {65536u, UINT32_MAX}) EXPECT_EQ(set_port("10.0.0.1", bad), OPEN_E_PARAM) << bad;
  for (OPEN_LOG_SEVERITY_t bad : {-1, 8}) EXPECT_EQ(set_severity("10.0.0.1", bad), OPEN_E_PARAM) << bad;
  EXPECT_EQ(softswitch::running_config(), "logging host 10.0.0.1\nlogging host log.example\n"
                                          "logging host 10.0.0.1 port 65535\n"
                                          "logging host log.example severity 7\n");
  EXPECT_EQ(remove("10.0.0.1"), OPEN_E_NONE);
  EXPECT_EQ(add("10.0.0.1"), OPEN_E_NONE);
  EXPECT_EQ(host("10.0.0.1"), "514 6") << "nothing is left of the host that was removed";
}

TEST_F(Logging, HostsThatAreNotThereAreNotFound) {
  ASSERT_EQ(add("10.0.0.1"), OPEN_E_NONE);
  std::string before = journal();
  for (const char *absent : {"10.0.0.2", "10.0.0", "localhost", "::1"}) {
    bool is_address = strcmp(absent, "10.0.0") != 0;
    open_error_t code = is_address ? OPEN_E_NOT_FOUND : OPEN_E_PARAM;
    EXPECT_EQ(host(absent), is_address ? not_found : invalid) << absent;
    EXPECT_EQ(remove(absent), code) << absent;
    EXPECT_EQ(set_port(absent, 0), code) << absent;
    EXPECT_EQ(set_port(absent, 70000), code) << absent;
    EXPECT_EQ(set_severity(absent, 9), code) << absent;
  }
  EXPECT_EQ(add("10.0.0.1"), OPEN_E_EXISTS);
  EXPECT_EQ(journal(), before);
}

TEST_F(Logging, AddressesAreLiteralsAndHostNames) {
  const std::string label(63, 'a');
  const std::string longest = label + "." + label + "." + label + "." + std::string(61, 'a');
  ASSERT_EQ(longest.size(), 253u);
  const std::string good[] = {
      "0.0.0.0", "255.255.255.255", "::",          "::ffff:10.0.0.1", "2001:db8::1", "localhost", "a",
      "3com",    "1.2.3.4.example", "a--b.c-1.X9", longest,           "0x7g",        "10.0.0.a"};
  for (const std::string &address : good) {
    EXPECT_EQ(add(address), OPEN_E_NONE) << address;
    EXPECT_EQ(host(address), "514 6") << address;
    EXPECT_EQ(remove(address), OPEN_E_NONE) << address;
  }
  const std::string bad[] = {"",
                             " ",
                             "10.0.0.256",
                             "10.0.0",
                             "010.0.0.1",
                             "1",
                             "a.1",
                             "0x7f000001",
                             "0X7f.0xA",
                             "0x",
                             "10.0.0.1 ",
                             "10.0.0.1/24",
                             "10.0.0.1:514",
                             "fe80::1%eth0",
                             ":::",
                             "2001:db8::g",
                             "[::1]",
                             ".",
                             "a.",
                             ".a",
                             "a..b",
                             "-a",
                             "a-",
                             "a.-b",
                             "a_b",
                             "a b",
                             "a\nb",
                             "k\xc3\xa4se",
                             "*",
                             label + "a",
                             longest + "a",
                             std::string(255, 'a'),
                             std::string(5000, 'a')};
  for (const std::string &address : bad) {
    EXPECT_EQ(add(address), OPEN_E_PARAM) << address;
    EXPECT_EQ(host(address), invalid) << address;
  }
  EXPECT_EQ(hosts(), list());
}

TEST_F(Logging, TextsMayCountTheirTerminatorOrStandInALargerBuffer) {
  char buffer[256] = "10.0.0.1";
  open_buffdesc text = {sizeof buffer, buffer};
  EXPECT_EQ(rpcclt_openapiLoggingHostAdd(&handle, &text), OPEN_E_NONE);
  text.size = sizeof "10.0.0.1";
  EXPECT_EQ(rpcclt_openapiLoggingHostPortSet(&handle, &text, 99), OPEN_E_NONE);
  text.size = sizeof "10.0.0.1" - 1;
  EXPECT_EQ(rpcclt_openapiLoggingHostSeveritySet(&handle, &text, 3), OPEN_E_NONE);
  EXPECT_EQ(host("10.0.0.1"), "99 3");
}

TEST_F(Logging, FullTableTakesNoOtherHost) {
  for (int i = 1; i <= 8; i++) EXPECT_EQ(add("10.0.0." + std::to_string(i)), OPEN_E_NONE);
  EXPECT_EQ(add("10.0.0.9"), OPEN_E_FULL);
  EXPECT_EQ(add("10.0.0.8"), OPEN_E_EXISTS);
  EXPECT_EQ(remove("10.0.0.1"), OPEN_E_NONE);
  EXPECT_EQ(add("10.0.0.9"), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::set_limit("logging-hosts", 2));
  EXPECT_EQ(hosts().size(), 8u) << "what is beyond a lowered limit stays";
  uint32_t max = 0;
  EXPECT_EQ(rpcclt_openapiMaxLoggingHostsSupportedGet(&handle, &max), OPEN_E_NONE);
  EXPECT_EQ(max, 2u);
}

/* --- The whole ------------------------------------------------------------------------------------------ */

TEST_F(Logging, ReloadBringsFactoryStateBack) {
  for (const char *line : {"logging cli", "no logging console", "logging console severity 1",
                           "logging syslog port 1", "logging host a", "logging host a port 2"})
    ASSERT_EQ(commit(line), OPEN_E_NONE) << line;
  std::string error;
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_EQ(softswitch::running_config(), "");
  EXPECT_EQ(hosts(), list());
}

TEST_F(Logging, ChangeThatCannotBeStoredIsRefused) {
  ASSERT_EQ(add("10.0.0.1"), OPEN_E_NONE);
  std::string before = softswitch::running_config();
  {
    full_disk disk(std::filesystem::file_size(dir.path + "/journal-1"));
    EXPECT_EQ(rpcclt_openapiCliCmdLoggingModeSet(&handle, OPEN_ENABLE), OPEN_E_FAIL);
    EXPECT_EQ(rpcclt_openapiConsoleLoggingSeveritySet(&handle, 1), OPEN_E_FAIL);
    EXPECT_EQ(rpcclt_openapiSysLogPortSet(&handle, 1), OPEN_E_FAIL);
    EXPECT_EQ(add("10.0.0.2"), OPEN_E_FAIL);
    EXPECT_EQ(set_port("10.0.0.1", 1), OPEN_E_FAIL);
    EXPECT_EQ(set_severity("10.0.0.1", 1), OPEN_E_FAIL);
  }
  EXPECT_EQ(softswitch::running_config(), before);
}

TEST_F(Logging, NullPointersAndUnknownClientsAreRefused) {
  uint32_t number;
  OPEN_LOG_SEVERITY_t severity;
  open_buffdesc nowhere = {8, nullptr};
  char buffer[256] = "10.0.0.1";
  open_buffdesc text = {sizeof buffer, buffer};
  openapiClientHandle_t stranger = {};
  EXPECT_EQ(rpcclt_openapiCliCmdLoggingModeGet(&handle, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiConsoleLoggingModeGet(&handle, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiConsoleLoggingSeverityGet(&handle, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiSysLogModeGet(&handle, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiSysLogPortGet(&handle, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiMaxLoggingHostsSupportedGet(&handle, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiLoggingHostMaxAddrLenGet(&handle, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiLoggingHostAdd(&handle, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiLoggingHostAdd(&handle, &nowhere), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiLoggingHostRemove(&handle, &nowhere), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiLoggingHostIpAddrNextGet(&handle, &nowhere), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiLoggingHostPortGet(&handle, &text, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiLoggingHostSeverityGet(&handle, &text, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiSysLogPortGet(&stranger, &number), OPEN_E_RPC);
  EXPECT_EQ(rpcclt_openapiConsoleLoggingSeverityGet(&stranger, &severity), OPEN_E_RPC);
  EXPECT_EQ(rpcclt_openapiLoggingHostAdd(&stranger, &text), OPEN_E_RPC);
}

} // namespace
