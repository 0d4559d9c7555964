/* The SSH module. */
#include "modules/rest_module_ssh.h"
#include "tests/unit/modules/management/management_fixture.h"

class SshTest : public ManagementTest {
protected:
  SshTest() : ManagementTest(ssh_api_handler) {
    give("SSHAdminModeGet", 1);
    give("SSHProtocolVersionGet", 2);
    give("SSHActiveSessionsGet", 3);
    give("SSHMaxSessionsGet", 4);
    give("SSHSessionTimeoutGet", 160);
  }

  /* Successful changes come with empty data. */
  static Answers changed(const std::string &message) { return expected_data({}, message); }
};

static Answers expected_settings(const std::string &mode, const std::string &version, int64_t active,
                                 int64_t max, int64_t timeout) {
  return expected_data({branch("infomation", {text("admin_mode", mode), text("version", version),
                                              number("active_sessions", active), number("max_sessions", max),
                                              number("timeout", timeout)})});
}

static const char *const SETTINGS[] = {"/ssh/adminMode", "/ssh/maxSessions", "/ssh/protoVersion",
                                       "/ssh/timeout"};

TEST_F(SshTest, SettingsAreRead) {
  expect_served({"GET", "/ssh"}, expected_settings("enable", "1 and 2", 3, 4, 160),
                {"SSHAdminModeGet", "SSHProtocolVersionGet", "SSHActiveSessionsGet", "SSHMaxSessionsGet",
                 "SSHSessionTimeoutGet"});
  give("SSHAdminModeGet", 0);
  give("SSHActiveSessionsGet", 0);
  give("SSHMaxSessionsGet", 0);
  give("SSHSessionTimeoutGet", 0);
  EXPECT_EQ(get("/ssh"), expected_settings("disable", "1 and 2", 0, 0, 0));
}

TEST_F(SshTest, WholeAnswer) {
  Answers answers = get("/ssh");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<infomation><admin_mode>enable</admin_mode><version>1 and 2</version>"
                         "<active_sessions>3</active_sessions><max_sessions>4</max_sessions>"
                         "<timeout>160</timeout></infomation></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"infomation\": { \"admin_mode\": \"enable\", "
                          "\"version\": \"1 and 2\", \"active_sessions\": 3, \"max_sessions\": 4, "
                          "\"timeout\": 160 } } } }\n");
}

TEST_F(SshTest, EachVersionHasItsText) {
  const char *const texts[] = {"1", "2", "1 and 2"};
  for (uint32_t version = 0; version <= 2; version++) {
    give("SSHProtocolVersionGet", version);
    EXPECT_EQ(get("/ssh"), expected_settings("enable", texts[version], 3, 4, 160));
  }
}

TEST_F(SshTest, VersionWithoutATextAnswers97AndEndsTheRequest) {
  for (uint32_t version : {3u, 4u, 256u, uint32_t{INT32_MAX}, 1u << 31, UINT32_MAX}) {
    give("SSHProtocolVersionGet", version);
    EXPECT_EQ(get("/ssh"), expected_platform_error(OPEN_E_INTERNAL)) << version;
    EXPECT_EQ(calls_made(), (call_list{"SSHAdminModeGet", "SSHProtocolVersionGet"}));
  }
}

TEST_F(SshTest, ModeWithoutATextIsEmpty) {
  for (uint32_t mode : {2u, UINT32_MAX}) {
    give("SSHAdminModeGet", mode);
    EXPECT_EQ(get("/ssh"), expected_settings("", "1 and 2", 3, 4, 160)) << mode;
  }
}

TEST_F(SshTest, NumbersAreShownAsSignedOnes) {
  give("SSHActiveSessionsGet", UINT32_MAX);
  give("SSHMaxSessionsGet", 1u << 31);
  give("SSHSessionTimeoutGet", INT32_MAX);
  EXPECT_EQ(get("/ssh"), expected_settings("enable", "1 and 2", -1, INT32_MIN, INT32_MAX));
}

TEST_F(SshTest, SettingsAreChanged) {
  const struct {
    const char *uri, *value, *message, *call;
  } rows[] = {
      {"/ssh/adminMode", "0", "Update SSH admin mode successfully.", "SSHAdminModeSet 0"},
      {"/ssh/adminMode", "1", "Update SSH admin mode successfully.", "SSHAdminModeSet 1"},
      {"/ssh/adminMode", "1x", "Update SSH admin mode successfully.", "SSHAdminModeSet 1"},
      {"/ssh/adminMode", "%201", "Update SSH admin mode successfully.", "SSHAdminModeSet 1"},
      {"/ssh/adminMode", "001", "Update SSH admin mode successfully.", "SSHAdminModeSet 1"},
      {"/ssh/adminMode", "abc", "Update SSH admin mode successfully.", "SSHAdminModeSet 0"},
      {"/ssh/maxSessions", "-1", "Update SSH maximum sessions successfully.", "SSHMaxSessionsDefaultSet"},
      {"/ssh/maxSessions", "0", "Update SSH maximum sessions successfully.", "SSHMaxSessionsSet 0"},
      {"/ssh/maxSessions", "abc", "Update SSH maximum sessions successfully.", "SSHMaxSessionsSet 0"},
      {"/ssh/maxSessions", "5", "Update SSH maximum sessions successfully.", "SSHMaxSessionsSet 5"},
      {"/ssh/maxSessions", "2147483647", "Update SSH maximum sessions successfully.",
       "SSHMaxSessionsSet 2147483647"},
      {"/ssh/protoVersion", "1", "Update SSH protocol version successfully.", "SSHProtocolVersionSet 0"},
      {"/ssh/protoVersion", "2", "Update SSH protocol version successfully.", "SSHProtocolVersionSet 1"},
      {"/ssh/protoVersion", "3", "Update SSH protocol version successfully.", "SSHProtocolVersionSet 2"},
      {"/ssh/timeout", "0", "Update SSH session timeout successfully.", "SSHSessionTimeoutSet 0"},
      {"/ssh/timeout", "abc", "Update SSH session timeout successfully.", "SSHSessionTimeoutSet 0"},
      {"/ssh/timeout", "5", "Update SSH session timeout successfully.", "SSHSessionTimeoutSet 5"},
      {"/ssh/timeout", "161", "Update SSH session timeout successfully.", "SSHSessionTimeoutSet 161"},
  };
  for (const auto &row : rows) {
    expect_served({"PUT", row.uri, std::string("value=") + row.value}, changed(row.message), {row.call});
  }
}

/* The envelope of a change holds an empty rlt_data, unlike that of other modules. */
TEST_F(SshTest, WholeAnswerOfAChange) {
  Answers answers = serve({"PUT", "/ssh/timeout", "value=5"});
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Update SSH session timeout successfully."
                         "</rlt_mesg><rlt_data></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Update SSH session timeout "
                          "successfully.\", \"rlt_data\": { } } }\n");
}

TEST_F(SshTest, ValuesOutsideTheAcceptedSetAnswer99) {
  const struct {
    const char *uri;
    std::vector<std::string> values;
  } rows[] = {
      {"/ssh/adminMode", {"-1", "2", "10", "256", "2147483647", "-2147483648"}},
      {"/ssh/maxSessions", {"-2", "-10", "-2147483648", "-99999999999"}},
      {"/ssh/protoVersion", {"0", "4", "-1", "abc", "13", "257", "2147483647"}},
      {"/ssh/timeout", {"-1", "-2", "-2147483648"}},
  };
  for (const auto &row : rows) {
    for (const std::string &value : row.values)
      expect_refused({"PUT", row.uri, "value=" + value}, expected_parameter_error());
  }
}

TEST_F(SshTest, ValueThatIsMissingOrEmptyOrTooLongAnswers99) {
  for (const char *uri : SETTINGS) {
    for (const std::string &query : {std::string(), std::string("value="), std::string("Value2=1"),
                                     "value=" + std::string(256, '1'), "value=" + std::string(256, '0')})
      expect_refused({"PUT", uri, query}, expected_parameter_error());
  }
}

TEST_F(SshTest, LongestValueIsRead) {
  for (const char *uri : SETTINGS) {
    Answers answers = serve({"PUT", uri, "value=1"});
    call_list calls = calls_made();
    expect_served({"PUT", uri, "value=" + std::string(254, '0') + "1"}, answers, calls);
  }
}
