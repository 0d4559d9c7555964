/* The modules that manage the system, with the software switch behind them: every call that can fail, and
 * what the switch makes of the values that the modules leave to it. What they make of any platform:
 * management/test_*.cpp. */
#include "modules/rest_module_boxs.h"
#include "modules/rest_module_logging.h"
#include "modules/rest_module_process.h"
#include "modules/rest_module_ssh.h"
#include "modules/rest_module_system.h"
#include "tests/unit/modules/failing_calls.h"
#include "tests/unit/modules/logging_documents.h"

#include <unistd.h>

class ManagedSwitchTest : public PlatformTest {
protected:
  Answers serve(rest_handler_t handler, const std::string &method, const std::string &uri,
                const std::string &query = "") const {
    return call(handler, method, uri, query);
  }
  /* Once, for what cannot be done twice. */
  void expect_answer(rest_handler_t handler, const std::string &method, const std::string &uri,
                     const std::string &query, const Answers &answers) const {
    EXPECT_EQ(call_xml(handler, method, uri, query), answers.xml) << method << " " << uri << " " << query;
  }
};

static Answers done(const std::string &message) {
  return expected_answers(0, message);
}

static const Answers OUT_OF_RANGE = expected_platform_error(OPEN_E_PARAM);
static const Answers NOT_THERE = expected_platform_error(OPEN_E_NOT_FOUND);

/* --- Failures ------------------------------------------------------------------------------------------- */

TEST_F(ManagedSwitchTest, EveryCallForTheSystemThatFailsIsAnswered) {
  const operation_calls operations[] = {
      {"GET",
       "/system",
       "",
       {"rpcclt_openapiSystemHostnameSizeGet", "rpcclt_openapiSystemHostnameGet",
        "rpcclt_openapiSerialTimeoutGet", "rpcclt_openapiTelnetServerAdminModeGet",
        "rpcclt_openapiServicePortMaskGet"}},
      {"PUT", "/system/hostname", "value=a", {"rpcclt_openapiSystemHostnameSet"}},
      {"PUT", "/system/serialTimeout", "value=1", {"rpcclt_openapiSerialTimeoutSet"}},
      {"PUT", "/system/serialTimeout", "value=-1", {"rpcclt_openapiSerialTimeoutDefaultSet"}},
      {"PUT", "/system/telnetServerAdminMode", "value=1", {"rpcclt_openapiTelnetServerAdminModeSet"}},
      {"POST", "/system/reload", "value=1", {"rpcclt_openapiSystemReloadSet"}},
  };
  for (const operation_calls &operation : operations)
    expect_every_failure_answered(system_api_handler, handle, operation);
}

TEST_F(ManagedSwitchTest, EveryCallForTheChassisThatFailsIsAnswered) {
  const operation_calls operations[] = {
      {"GET",
       "/boxs",
       "",
       {"rpcclt_openapiBoxsNumOfTempSensorsGet", "rpcclt_openapiBoxsNumOfFansGet",
        "rpcclt_openapiBoxsNumOfPowSuppliesGet"}},
      {"GET",
       "/boxs/fans",
       "",
       {"rpcclt_openapiBoxsNumOfFansGet", "rpcclt_openapiBoxsFanStateGet", "rpcclt_openapiBoxsFanTypeGet",
        "rpcclt_openapiBoxsFanSpeedGet", "rpcclt_openapiBoxsFanDutyCycleGet"}},
      {"GET",
       "/boxs/powSupplies",
       "",
       {"rpcclt_openapiBoxsNumOfPowSuppliesGet", "rpcclt_openapiBoxsPowSupplyStateGet",
        "rpcclt_openapiBoxsPowSupplyTypeGet"}},
      {"GET",
       "/boxs/tempSensors",
       "",
       {"rpcclt_openapiBoxsNumOfTempSensorsGet", "rpcclt_openapiBoxsTempSensorStatusGet",
        "rpcclt_openapiBoxsTempGet", "rpcclt_openapiBoxsTempSensorDescripSizeGet",
        "rpcclt_openapiBoxsTempSensorDescripGet"}},
      {"GET",
       "/boxs/sfp",
       "",
       {"rpcclt_openapiIfFirstGet", "rpcclt_openapiBoxsSfpTypeGet", "rpcclt_openapiBoxsSfpVendorNameSizeGet",
        "rpcclt_openapiBoxsSfpVendorNameGet", "rpcclt_openapiBoxsSfpVendorRevSizeGet",
        "rpcclt_openapiBoxsSfpVendorRevisionGet", "rpcclt_openapiBoxsSfpLinkLength50umGet",
        "rpcclt_openapiBoxsSfpLinkLength62_5umGet", "rpcclt_openapiBoxsSfpSerialNumberSizeGet",
        "rpcclt_openapiBoxsSfpSerialNumberGet", "rpcclt_openapiBoxsSfpPartNumberSizeGet",
        "rpcclt_openapiBoxsSfpPartNumberGet", "rpcclt_openapiBoxsSfpComplianceSizeGet",
        "rpcclt_openapiBoxsSfpComplianceGet"}},
  };
  lab("transceiver in 0/1");
  for (const operation_calls &operation : operations)
    expect_every_failure_answered(boxs_api_handler, handle, operation);
}

TEST_F(ManagedSwitchTest, EveryCallForLoggingThatFailsIsAnswered) {
  const std::string length = "rpcclt_openapiLoggingHostMaxAddrLenGet";
  const operation_calls operations[] = {
      {"GET",
       "/logging",
       "",
       {"rpcclt_openapiCliCmdLoggingModeGet", "rpcclt_openapiConsoleLoggingModeGet",
        "rpcclt_openapiConsoleLoggingSeverityGet", "rpcclt_openapiSysLogModeGet",
        "rpcclt_openapiSysLogPortGet", "rpcclt_openapiMaxLoggingHostsSupportedGet"}},
      {"GET", "/logging/hosts", "", {length}, {"rpcclt_openapiLoggingHostIpAddrNextGet"}},
      {"GET",
       "/logging/hosts/a",
       "",
       {length, "rpcclt_openapiLoggingHostPortGet", "rpcclt_openapiLoggingHostSeverityGet"}},
      {"POST", "/logging/hosts/b", "", {length, "rpcclt_openapiLoggingHostAdd"}},
      {"DELETE", "/logging/hosts/a", "", {length, "rpcclt_openapiLoggingHostRemove"}},
      {"PUT", "/logging/cli/mode", "value=1", {"rpcclt_openapiCliCmdLoggingModeSet"}},
      {"PUT", "/logging/console/mode", "value=1", {"rpcclt_openapiConsoleLoggingModeSet"}},
      {"PUT", "/logging/console/severityLevel", "value=1", {"rpcclt_openapiConsoleLoggingSeveritySet"}},
      {"PUT", "/logging/syslog/mode", "value=0", {"rpcclt_openapiSysLogModeSet"}},
      {"PUT", "/logging/syslog/port", "value=1", {"rpcclt_openapiSysLogPortSet"}},
      {"PUT", "/logging/hosts/a/port", "value=1", {length, "rpcclt_openapiLoggingHostPortSet"}},
      {"PUT", "/logging/hosts/a/severityLevel", "value=1", {length, "rpcclt_openapiLoggingHostSeveritySet"}},
  };
  expect_answer(logging_api_handler, "POST", "/logging/hosts/a", "",
                done("Create a logging host a successfully."));
  for (const operation_calls &operation : operations)
    expect_every_failure_answered(logging_api_handler, handle, operation);
}

TEST_F(ManagedSwitchTest, EveryCallForSshAndProcessesThatFailsIsAnswered) {
  const operation_calls ssh_operations[] = {
      {"GET",
       "/ssh",
       "",
       {"rpcclt_openapiSSHAdminModeGet", "rpcclt_openapiSSHProtocolVersionGet",
        "rpcclt_openapiSSHActiveSessionsGet", "rpcclt_openapiSSHMaxSessionsGet",
        "rpcclt_openapiSSHSessionTimeoutGet"}},
      {"PUT", "/ssh/adminMode", "value=1", {"rpcclt_openapiSSHAdminModeSet"}},
      {"PUT", "/ssh/maxSessions", "value=1", {"rpcclt_openapiSSHMaxSessionsSet"}},
      {"PUT", "/ssh/maxSessions", "value=-1", {"rpcclt_openapiSSHMaxSessionsDefaultSet"}},
      {"PUT", "/ssh/protoVersion", "value=1", {"rpcclt_openapiSSHProtocolVersionSet"}},
      {"PUT", "/ssh/timeout", "value=1", {"rpcclt_openapiSSHSessionTimeoutSet"}},
  };
  for (const operation_calls &operation : ssh_operations)
    expect_every_failure_answered(ssh_api_handler, handle, operation);
  expect_every_failure_answered(process_api_handler, handle,
                                {"GET", "/process/memory", "", {"rpcclt_openapiProcMemInfoGet"}});
  expect_every_failure_answered(
      process_api_handler, handle,
      {"GET", "/process/cpu", "", {"rpcclt_openapiProcTotalCpuUtilGet", "rpcclt_openapiProcTaskCpuUtilGet"}});
}

/* --- The system ----------------------------------------------------------------------------------------- */

static Answers expected_system(const std::string &hostname, int64_t timeout, const std::string &telnet,
                               const std::string &mask) {
  return expected_data(
      {branch("infomation", {text("hostname", hostname), number("serial_timeout", timeout),
                             text("telnet_srver_admin_mode", telnet), text("service_port_mask", mask)})});
}

TEST_F(ManagedSwitchTest, SystemSettingsAreKeptByTheSwitch) {
  std::string mask = serve(system_api_handler, "GET", "/system").xml;
  mask = mask.substr(mask.find("<service_port_mask>") + 19);
  mask = mask.substr(0, mask.find('<'));
  const std::string longest(64, 'h');
  expect_answer(system_api_handler, "PUT", "/system/hostname", "value=" + longest,
                done("Update system hostname successfully."));
  expect_answer(system_api_handler, "PUT", "/system/serialTimeout", "value=30",
                done("Update system serial timeout successfully."));
  expect_answer(system_api_handler, "PUT", "/system/telnetServerAdminMode", "value=0",
                done("Update system telnet server admin mode successfully."));
  EXPECT_EQ(serve(system_api_handler, "GET", "/system"), expected_system(longest, 30, "disable", mask));
  expect_answer(system_api_handler, "PUT", "/system/serialTimeout", "value=-1",
                done("Update system serial timeout to default successfully."));
  expect_answer(system_api_handler, "PUT", "/system/telnetServerAdminMode", "value=1",
                done("Update system telnet server admin mode successfully."));
  EXPECT_EQ(serve(system_api_handler, "GET", "/system"), expected_system(longest, 5, "enable", mask));
  const struct {
    const char *uri;
    std::string value;
  } refused[] = {{"/system/hostname", longest + "h"},
                 {"/system/hostname", "a%20b"},
                 {"/system/hostname", "-a"},
                 {"/system/serialTimeout", "161"},
                 {"/system/serialTimeout", "-2"},
                 {"/system/telnetServerAdminMode", "2"},
                 {"/system/telnetServerAdminMode", "-1"}};
  for (const auto &row : refused)
    EXPECT_EQ(serve(system_api_handler, "PUT", row.uri, "value=" + row.value), OUT_OF_RANGE) << row.value;
  EXPECT_EQ(serve(system_api_handler, "GET", "/system"), expected_system(longest, 5, "enable", mask));
}

TEST_F(ManagedSwitchTest, NetworkPortIsKeptByTheSwitch) {
  expect_answer(api_system_update_networkport_ipv4_protocol_mode, "PUT", "/system", "value=1",
                done("Update network port IPv4 protocol mode successfully."));
  expect_answer(api_system_update_networkport_ipv4_parameters, "PUT", "/system",
                "ip=10.0.0.2&mask=255.255.255.0&gateway=10.0.0.1",
                done("Update network port IPv4 parameters successfully."));
  EXPECT_EQ(
      serve(api_system_get_networkport_ipv4, "GET", "/system"),
      expected_data({branch("infomation", {text("ip_address", "10.0.0.2"), text("netmask", "255.255.255.0"),
                                           text("gateway", "10.0.0.1"), text("protocol_mode", "None")})}));
  EXPECT_EQ(serve(api_system_update_networkport_ipv4_parameters, "PUT", "/system",
                  "ip=2001:db8::1&mask=255.255.255.0&gateway=10.0.0.1"),
            OUT_OF_RANGE);
  expect_answer(api_system_delete_networkport_ipv4_parameters, "DELETE", "/system", "",
                done("Delete network port IPv4 parameters successfully."));
  EXPECT_EQ(
      serve(api_system_get_networkport_ipv4, "GET", "/system"),
      expected_data({branch("infomation", {text("ip_address", "0.0.0.0"), text("netmask", "0.0.0.0"),
                                           text("gateway", "0.0.0.0"), text("protocol_mode", "None")})}));
  expect_answer(api_system_update_prompt, "PUT", "/system", "value=leaf%3E",
                done("Update system prompt successfully."));
  EXPECT_EQ(serve(api_system_update_prompt, "PUT", "/system", "value=" + std::string(65, 'p')), OUT_OF_RANGE);
}

/* --- Logging -------------------------------------------------------------------------------------------- */

class LoggingOnSwitchTest : public ManagedSwitchTest {
protected:
  Answers get(const std::string &uri) const { return serve(logging_api_handler, "GET", uri); }
  void change(const std::string &method, const std::string &uri, const std::string &value,
              const Answers &answers) const {
    expect_answer(logging_api_handler, method, uri, value.empty() ? "" : "value=" + value, answers);
  }
  void add(const std::string &host) const {
    change("POST", "/logging/hosts/" + host, "", done("Create a logging host " + host + " successfully."));
  }
};

TEST_F(LoggingOnSwitchTest, HostsAreListedInTheOrderOfTheirTexts) {
  EXPECT_EQ(get("/logging/hosts"), expected_hosts({}));
  for (const char *host : {"b.example", "10.0.0.2", "2001:db8::1", "10.0.0.10", "B.example"}) add(host);
  EXPECT_EQ(get("/logging/hosts"),
            expected_hosts({"10.0.0.10", "10.0.0.2", "2001:db8::1", "B.example", "b.example"}));
  change("DELETE", "/logging/hosts/10.0.0.2", "", done("Delete a logging host 10.0.0.2 successfully."));
  change("DELETE", "/logging/hosts/10.0.0.2", "", NOT_THERE);
  EXPECT_EQ(get("/logging/hosts"), expected_hosts({"10.0.0.10", "2001:db8::1", "B.example", "b.example"}));
}

TEST_F(LoggingOnSwitchTest, HostThatIsThereAnswers98AndTheNinth99) {
  add("h1");
  change("POST", "/logging/hosts/h1", "", expected_platform_error(OPEN_E_EXISTS));
  for (const char *host : {"h2", "h3", "h4", "h5", "h6", "h7", "h8"}) add(host);
  change("POST", "/logging/hosts/h9", "", expected_platform_error(OPEN_E_FULL));
  change("DELETE", "/logging/hosts/h4", "", done("Delete a logging host h4 successfully."));
  add("h9");
}

TEST_F(LoggingOnSwitchTest, HostFollowsThePortOfSyslogUntilItHasItsOwn) {
  add("a");
  change("PUT", "/logging/hosts/a/severityLevel", "3",
         done("Update severity level of logging host a successfully."));
  EXPECT_EQ(get("/logging/hosts/a"), expected_host("a", 514, "Error conditions."));
  change("PUT", "/logging/syslog/port", "65535", done("Update port of Syslog successfully."));
  EXPECT_EQ(get("/logging/hosts/a"), expected_host("a", 65535, "Error conditions."));
  change("PUT", "/logging/hosts/a/port", "1", done("Update port of logging host a successfully."));
  change("PUT", "/logging/syslog/port", "-1", done("Update port of Syslog to default successfully."));
  EXPECT_EQ(get("/logging/hosts/a"), expected_host("a", 1, "Error conditions."));
  change("PUT", "/logging/hosts/a/port", "-1",
         done("Update port of logging host a to default successfully."));
  EXPECT_EQ(get("/logging/hosts/a"), expected_host("a", 514, "Error conditions."));
}

TEST_F(LoggingOnSwitchTest, WhatIsNoAddressAnswers99) {
  for (const std::string &host :
       {std::string("a b"), std::string(" a"), std::string("a_b!"), std::string("%s"), std::string("-a"),
        std::string("a..b"), std::string(64, 'l')}) {
    for (const char *method : {"POST", "DELETE", "GET"})
      change(method, "/logging/hosts/" + host, "", OUT_OF_RANGE);
  }
  EXPECT_EQ(get("/logging/hosts"), expected_hosts({}));
}

TEST_F(LoggingOnSwitchTest, LongestNameThatFitsAUriIsAHost) {
  std::string host;
  while (host.size() < 240) host += host.size() % 60 == 59 ? '.' : 'h';
  host.back() = 'h';
  add(host);
  EXPECT_EQ(get("/logging/hosts"), expected_hosts({host}));
  change("DELETE", "/logging/hosts/" + host, "", done("Delete a logging host " + host + " successfully."));
}

TEST_F(LoggingOnSwitchTest, ValuesBeyondTheSwitchAnswer99) {
  add("a");
  const struct {
    const char *uri, *value;
  } rows[] = {{"/logging/console/mode", "2"},
              {"/logging/console/mode", "-1"},
              {"/logging/console/severityLevel", "8"},
              {"/logging/console/severityLevel", "-1"},
              {"/logging/syslog/mode", "2"},
              {"/logging/hosts/a/severityLevel", "8"},
              {"/logging/hosts/a/severityLevel", "-1"},
              {"/logging/cli/mode", "01"}};
  std::string before = get("/logging").xml + get("/logging/hosts/a").xml;
  for (const auto &row : rows) change("PUT", row.uri, row.value, OUT_OF_RANGE);
  for (const char *uri : {"/logging/hosts/b/port", "/logging/hosts/b/severityLevel"})
    change("PUT", uri, "1", NOT_THERE);
  EXPECT_EQ(get("/logging").xml + get("/logging/hosts/a").xml, before);
}

TEST_F(LoggingOnSwitchTest, SettingsAreKeptByTheSwitch) {
  change("PUT", "/logging/cli/mode", "1", done("Update mode of CLI logging successfully."));
  change("PUT", "/logging/console/mode", "0", done("Update mode of Console logging successfully."));
  change("PUT", "/logging/console/severityLevel", "7",
         done("Update severity level of Console logging successfully."));
  change("PUT", "/logging/syslog/mode", "0", done("Update mode of Syslog successfully."));
  change("PUT", "/logging/syslog/port", "1514", done("Update port of Syslog successfully."));
  EXPECT_EQ(get("/logging"),
            expected_data(
                {branch("logging", {branch("cli", {text("logging_mode", "enable")}),
                                    branch("console", {text("logging_mode", "disable"),
                                                       text("severity_level", "Debug-level messages.")}),
                                    branch("syslog", {text("logging_mode", "disable"), number("port", 1514)}),
                                    number("max_logging_hosts", 8)})}));
}

/* --- SSH ------------------------------------------------------------------------------------------------ */

static Answers expected_ssh(const std::string &mode, const std::string &version, int64_t max,
                            int64_t timeout) {
  return expected_data(
      {branch("infomation", {text("admin_mode", mode), text("version", version), number("active_sessions", 0),
                             number("max_sessions", max), number("timeout", timeout)})});
}

TEST_F(ManagedSwitchTest, SshSettingsAreKeptByTheSwitch) {
  const struct {
    const char *uri, *value;
    Answers then;
  } rows[] = {
      {"/ssh/adminMode", "1", expected_ssh("enable", "2", 5, 5)},
      {"/ssh/protoVersion", "3", expected_ssh("enable", "1 and 2", 5, 5)},
      {"/ssh/protoVersion", "1", expected_ssh("enable", "1", 5, 5)},
      {"/ssh/maxSessions", "0", expected_ssh("enable", "1", 0, 5)},
      {"/ssh/maxSessions", "-1", expected_ssh("enable", "1", 5, 5)},
      {"/ssh/timeout", "160", expected_ssh("enable", "1", 5, 160)},
      {"/ssh/adminMode", "abc", expected_ssh("disable", "1", 5, 160)},
  };
  call_xml(ssh_api_handler, "PUT", "/ssh/protoVersion", "value=2");
  for (const auto &row : rows) {
    FakeRequest request("PUT", row.uri, std::string("value=") + row.value);
    EXPECT_EQ(ssh_api_handler(handle, request.conn()), 1) << row.uri;
    EXPECT_EQ(serve(ssh_api_handler, "GET", "/ssh"), row.then) << row.uri << " " << row.value;
  }
  const struct {
    const char *uri, *value;
  } refused[] = {{"/ssh/maxSessions", "6"},  {"/ssh/maxSessions", "-2"}, {"/ssh/timeout", "0"},
                 {"/ssh/timeout", "161"},    {"/ssh/timeout", "-1"},     {"/ssh/protoVersion", "0"},
                 {"/ssh/protoVersion", "4"}, {"/ssh/adminMode", "2"}};
  for (const auto &row : refused)
    EXPECT_EQ(serve(ssh_api_handler, "PUT", row.uri, std::string("value=") + row.value), OUT_OF_RANGE)
        << row.uri << " " << row.value;
  EXPECT_EQ(serve(ssh_api_handler, "GET", "/ssh"), expected_ssh("disable", "1", 5, 160));
}

/* --- Processes ------------------------------------------------------------------------------------------ */

/* The number in an XML element. */
static int64_t number_in(const std::string &xml, const std::string &name) {
  size_t at = xml.find("<" + name + ">");
  EXPECT_NE(at, std::string::npos) << name << ": " << xml;
  return at == std::string::npos ? 0 : strtoll(xml.c_str() + at + name.size() + 2, nullptr, 10);
}

TEST_F(ManagedSwitchTest, MemoryIsThatOfTheMachine) {
  std::string xml = call_xml(process_api_handler, "GET", "/process/memory");
  int64_t total = number_in(xml, "total_memory"), alloc = number_in(xml, "alloc_memory");
  int64_t unused = number_in(xml, "free_memory");
  EXPECT_GT(total, 0);
  EXPECT_EQ(alloc + unused, total);
  EXPECT_EQ(xml, expected_data({number("total_memory", total), number("alloc_memory", alloc),
                                number("free_memory", unused)})
                     .xml);
}

/* "3.42%" becomes "N%". */
static std::string without_percentages(const std::string &text) {
  std::string result;
  for (char c : text) {
    if (c == '%') result.erase(result.find_last_not_of("0123456789.") + 1).push_back('N');
    result.push_back(c);
  }
  return result;
}

TEST_F(ManagedSwitchTest, CpuFiguresNameEachProcessAndPeriod) {
  std::string xml = without_percentages(call_xml(process_api_handler, "GET", "/process/cpu"));
  const std::string totals =
      "<rlt_data><total_CPU_utilization><last_5s>: N%</last_5s><last_60s>: N%</last_60s>"
      "<last_300s>: N%</last_300s></total_CPU_utilization>"
      "<processes_CPU_utilization><process><PID>";
  EXPECT_NE(xml.find(totals), std::string::npos) << xml;
  const std::string this_one = "<process><PID>" + std::to_string(getpid()) +
                               "</PID><name>module_tests</name><last_5s>N%</last_5s><last_60s>N%</last_60s>"
                               "<last_300s>N%</last_300s></process>";
  EXPECT_NE(xml.find(this_one), std::string::npos) << xml;
}
