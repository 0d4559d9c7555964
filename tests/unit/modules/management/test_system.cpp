/* The system module. Operations that no request reaches: test_network_port.cpp. */
#include "modules/rest_module_system.h"
#include "tests/unit/modules/little_memory.h"
#include "tests/unit/modules/management/management_fixture.h"

class SystemTest : public ManagementTest {
protected:
  SystemTest() : ManagementTest(system_api_handler) {
    give("SystemHostnameSizeGet", 65);
    give("SystemHostnameGet", "leaf-7");
    give("SerialTimeoutGet", 5);
    give("TelnetServerAdminModeGet", 1);
    give("ServicePortMaskGet", 0xFFFFFF00);
  }
};

struct global_settings {
  std::string hostname = "leaf-7";
  int64_t timeout = 5;
  std::string mode = "enable";
  std::string mask = "255.255.255.0";
};

static Answers expected_settings(const global_settings &settings) {
  return expected_data(
      {branch("infomation",
              {text("hostname", settings.hostname), number("serial_timeout", settings.timeout),
               text("telnet_srver_admin_mode", settings.mode), text("service_port_mask", settings.mask)})});
}

static const char *const SETTINGS[] = {"/system/hostname", "/system/serialTimeout",
                                       "/system/telnetServerAdminMode"};

/* --- Reading -------------------------------------------------------------------------------------------- */

TEST_F(SystemTest, SettingsAreRead) {
  expect_served({"GET", "/system"}, expected_settings({}),
                {"SystemHostnameSizeGet", "SystemHostnameGet [65]", "SerialTimeoutGet",
                 "TelnetServerAdminModeGet", "ServicePortMaskGet"});
}

TEST_F(SystemTest, WholeAnswer) {
  Answers answers = get("/system");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<infomation><hostname>leaf-7</hostname><serial_timeout>5</serial_timeout>"
                         "<telnet_srver_admin_mode>enable</telnet_srver_admin_mode>"
                         "<service_port_mask>255.255.255.0</service_port_mask></infomation></rlt_data>"
                         "</result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"infomation\": { \"hostname\": \"leaf-7\", "
                          "\"serial_timeout\": 5, \"telnet_srver_admin_mode\": \"enable\", "
                          "\"service_port_mask\": \"255.255.255.0\" } } } }\n");
}

TEST_F(SystemTest, HostnameIsShownAsItIs) {
  for (const char *name : {"", "a", "a&b <c>", "%s%n%d", "\"quoted\"", "a\\b"}) {
    give("SystemHostnameGet", name);
    EXPECT_EQ(get("/system"), expected_settings({.hostname = name})) << name;
  }
}

TEST_F(SystemTest, HostnameThatFillsItsBufferEndsThere) {
  for (uint32_t size : {1u, 64u, 65u, 256u}) {
    give("SystemHostnameSizeGet", size);
    for (uint32_t length : {size, size + 1, 2 * size, 1000u}) {
      give("SystemHostnameGet", std::string(length, 'x'));
      EXPECT_EQ(get("/system"), expected_settings({.hostname = std::string(size, 'x')})) << size;
    }
    give("SystemHostnameGet", std::string(size - 1, 'x'));
    EXPECT_EQ(get("/system"), expected_settings({.hostname = std::string(size - 1, 'x')})) << size;
  }
}

TEST_F(SystemTest, HostnameWithoutRoomIsEmpty) {
  give("SystemHostnameSizeGet", 0);
  EXPECT_EQ(get("/system"), expected_settings({.hostname = ""}));
  EXPECT_EQ(calls_made()[1], "SystemHostnameGet [0]");
}

TEST_F(SystemTest, HostnameOf2000CharactersIsCut) {
  give("SystemHostnameSizeGet", 2001);
  give("SystemHostnameGet", std::string(2000, 'x'));
  EXPECT_EQ(get("/system"), expected_settings({.hostname = std::string(1023, 'x')}));
}

TEST_F(SystemTest, HostnameBeyondAllMemoryAnswers97AndEndsTheRequest) {
  little_memory limit;
  for (uint32_t size : {UINT32_MAX, UINT32_MAX - 1, 3u << 30}) {
    give("SystemHostnameSizeGet", size);
    EXPECT_EQ(get("/system"), expected_platform_error(OPEN_E_INTERNAL)) << size;
    EXPECT_EQ(calls_made(), call_list{"SystemHostnameSizeGet"});
  }
}

TEST_F(SystemTest, TimeoutIsShownAsASignedNumber) {
  const struct {
    uint32_t value;
    int64_t shown;
  } rows[] = {{0, 0}, {160, 160}, {INT32_MAX, INT32_MAX}, {1u << 31, INT32_MIN}, {UINT32_MAX, -1}};
  for (const auto &row : rows) {
    give("SerialTimeoutGet", row.value);
    EXPECT_EQ(get("/system"), expected_settings({.timeout = row.shown}));
  }
}

TEST_F(SystemTest, TelnetModeIsAWord) {
  give("TelnetServerAdminModeGet", 0);
  EXPECT_EQ(get("/system"), expected_settings({.mode = "disable"}));
  for (uint32_t mode : {2u, UINT32_MAX}) {
    give("TelnetServerAdminModeGet", mode);
    EXPECT_EQ(get("/system"), expected_settings({.mode = ""})) << mode;
  }
}

TEST_F(SystemTest, MaskIsShownWhateverItsFamily) {
  for (uint32_t family : {0u, 1u, 2u, 3u, 255u}) {
    give("ServicePortMaskGet family", family);
    EXPECT_EQ(get("/system"), expected_settings({})) << family;
  }
  give("ServicePortMaskGet", 0);
  EXPECT_EQ(get("/system"), expected_settings({.mask = "0.0.0.0"}));
  give("ServicePortMaskGet", UINT32_MAX);
  EXPECT_EQ(get("/system"), expected_settings({.mask = "255.255.255.255"}));
  give("ServicePortMaskGet", 0x01020304);
  EXPECT_EQ(get("/system"), expected_settings({.mask = "1.2.3.4"}));
}

/* --- Changing ------------------------------------------------------------------------------------------- */

TEST_F(SystemTest, HostnameIsGivenWithItsTerminator) {
  const Answers done = expected_answers(0, "Update system hostname successfully.");
  const struct {
    const char *query, *call;
  } rows[] = {
      {"value=leaf-8", "SystemHostnameSet 7:leaf-8"}, {"value=x", "SystemHostnameSet 2:x"},
      {"value=0", "SystemHostnameSet 2:0"},           {"value=-1", "SystemHostnameSet 3:-1"},
      {"value=a%20b+c", "SystemHostnameSet 6:a b c"}, {"value=%25s%25n", "SystemHostnameSet 5:%s%n"},
      {"value=a&value=b", "SystemHostnameSet 2:a"},   {"VALUE=a", "SystemHostnameSet 2:a"},
  };
  for (const auto &row : rows) expect_served({"PUT", "/system/hostname", row.query}, done, {row.call});
  expect_served({"PUT", "/system/hostname", "value=" + longest_value()}, done,
                {"SystemHostnameSet 256:" + longest_value()});
}

TEST_F(SystemTest, SerialTimeoutIsSetOrBroughtBackToItsDefault) {
  const struct {
    const char *value, *call;
  } rows[] = {
      {"0", "SerialTimeoutSet 0"},
      {"30", "SerialTimeoutSet 30"},
      {"160", "SerialTimeoutSet 160"},
      {"161", "SerialTimeoutSet 161"},
      {"abc", "SerialTimeoutSet 0"},
      {"30x", "SerialTimeoutSet 30"},
      {"%2030", "SerialTimeoutSet 30"},
      {"%2B30", "SerialTimeoutSet 30"},
      {"0x10", "SerialTimeoutSet 0"},
      {"-", "SerialTimeoutSet 0"},
      {"2147483647", "SerialTimeoutSet 2147483647"},
      {"-2", "SerialTimeoutSet 4294967294"}, /* for the platform to refuse */
      {"-2147483648", "SerialTimeoutSet 2147483648"},
  };
  for (const auto &row : rows) {
    expect_served({"PUT", "/system/serialTimeout", std::string("value=") + row.value},
                  expected_answers(0, "Update system serial timeout successfully."), {row.call});
  }
  for (const char *value : {"-1", "-1x", "-01", "%20-1", "-1.9"}) {
    expect_served({"PUT", "/system/serialTimeout", std::string("value=") + value},
                  expected_answers(0, "Update system serial timeout to default successfully."),
                  {"SerialTimeoutDefaultSet"});
  }
}

TEST_F(SystemTest, TelnetModeIsLeftToThePlatformToCheck) {
  const struct {
    const char *value, *call;
  } rows[] = {
      {"0", "TelnetServerAdminModeSet 0"},      {"1", "TelnetServerAdminModeSet 1"},
      {"2", "TelnetServerAdminModeSet 2"},      {"-1", "TelnetServerAdminModeSet 4294967295"},
      {"enable", "TelnetServerAdminModeSet 0"}, {"1enable", "TelnetServerAdminModeSet 1"},
  };
  for (const auto &row : rows) {
    expect_served({"PUT", "/system/telnetServerAdminMode", std::string("value=") + row.value},
                  expected_answers(0, "Update system telnet server admin mode successfully."), {row.call});
  }
}

TEST_F(SystemTest, ReloadIsStarted) {
  const Answers starting = expected_answers(0, "Reset the system is starting.");
  for (const char *mode : {"1", "2", "3"}) {
    expect_served({"POST", "/system/reload", std::string("value=") + mode}, starting,
                  {std::string("SystemReloadSet ") + mode});
  }
  expect_served({"POST", "/system/reload", "value=1x"}, starting, {"SystemReloadSet 1"});
  expect_served({"POST", "/system/reload", "value=%2003"}, starting, {"SystemReloadSet 3"});
}

TEST_F(SystemTest, ReloadInAnotherModeAnswers99AndDoesNothing) {
  for (const char *mode : {"0", "4", "5", "-1", "-3", "abc", "x1", "11", "257", "2147483647", "4294967297",
                           "18446744073709551617"}) {
    expect_refused({"POST", "/system/reload", std::string("value=") + mode}, expected_parameter_error());
  }
}

TEST_F(SystemTest, ChangesAnswerWithoutData) {
  Answers answers = serve({"PUT", "/system/serialTimeout", "value=-1"});
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Update system serial timeout to default "
                         "successfully.</rlt_mesg></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Update system serial timeout to "
                          "default successfully.\" } }\n");
}

TEST_F(SystemTest, ValueThatIsMissingOrEmptyOrTooLongAnswers99) {
  for (const std::string &query :
       {std::string(), std::string("value="), std::string("value"), std::string("values=1"),
        "value=" + std::string(256, '1'), "value=" + too_long_value()}) {
    for (const char *uri : SETTINGS) expect_refused({"PUT", uri, query}, expected_parameter_error());
    expect_refused({"POST", "/system/reload", query}, expected_parameter_error());
  }
}

TEST_F(SystemTest, LongestValueIsRead) {
  const std::string value = "value=" + std::string(254, '0') + "1";
  EXPECT_EQ(serve({"PUT", "/system/serialTimeout", value}),
            expected_answers(0, "Update system serial timeout successfully."));
  EXPECT_EQ(calls_made(), call_list{"SerialTimeoutSet 1"});
  EXPECT_EQ(serve({"POST", "/system/reload", value}), expected_answers(0, "Reset the system is starting."));
  EXPECT_EQ(calls_made(), call_list{"SystemReloadSet 1"});
}

/* A value in the body counts where the query has none. */
TEST_F(SystemTest, ValueMayStandInTheBody) {
  FakeRequest request("PUT", "/system/hostname", "", "value=spine-1");
  EXPECT_EQ(system_api_handler(scripted_handle(), request.conn()), 1);
  EXPECT_EQ(answer_body(request, "xml"), expected_answers(0, "Update system hostname successfully.").xml);
  EXPECT_EQ(take_calls(), call_list{"SystemHostnameSet 8:spine-1"});
}
