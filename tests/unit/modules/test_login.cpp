/* The login module: sessions from the client's side. */
#include "engine/rest_engine_session_hdr.h"
#include "modules/rest_module_login.h"
#include "tests/support/platform_fixture.h"

#include <string.h>

class LoginTest : public PlatformTest {
protected:
  LoginTest() {
    now = 1700000000;
    rest_set_clock([] { return now; });
  }

  static std::string key_of(int slot) { return session_table[slot].session_key; }
  static int open_sessions() {
    int count = 0;
    for (const api_loginsession_t &session : session_table) count += session.session_id != 0;
    return count;
  }
  std::string log_in(const std::string &query = CREDENTIALS) const {
    return call_xml(login_api_handler, "POST", "/login", query);
  }
  std::string set_timeout(const std::string &query) const {
    return call_xml(login_api_handler, "PUT", "/login/RESTTimeout", query);
  }

  static constexpr char CREDENTIALS[] = "user=admin&password=correct+horse";
  inline static time_t now;
};

static const Answers REFUSED = expected_answers(1, "Authentication failed.");
static const Answers BAD_VALUE = expected_answers(1, "The value of parameter is invalid.");

/* --- Logging in ------------------------------------------------------------------------------------------
 */

TEST_F(LoginTest, LoggingInAnswersTheKey) {
  const std::string key = "6b492b19766758ba1c2574f13fbeeca0"; /* of 127.0.0.1 at 1700000000 */
  Answers expected = expected_answers(0, "Log in successfully.", "<sessionKey>" + key + "</sessionKey>",
                                      "\"sessionKey\": \"" + key + "\"");
  EXPECT_EQ(call(login_api_handler, "POST", "/login", CREDENTIALS), expected);
  EXPECT_EQ(open_sessions(), 2); /* once for each format, with one key */
  EXPECT_STREQ(session_table[0].user_name, "admin");
  EXPECT_STREQ(session_table[0].remote_ip, "127.0.0.1");
  EXPECT_EQ(session_table[0].remote_port, 40000);
}

TEST_F(LoginTest, CredentialsMayStandInTheBody) {
  FakeRequest request("POST", "/login", "", CREDENTIALS);
  login_api_handler(handle, request.conn());
  EXPECT_EQ(open_sessions(), 1);
  EXPECT_EQ(answer_body(request, "xml"),
            expected_answers(0, "Log in successfully.", "<sessionKey>" + key_of(0) + "</sessionKey>").xml);
}

TEST_F(LoginTest, WrongCredentialsAreRefused) {
  for (const char *query : {"user=admin&password=wrong", "user=nobody&password=correct+horse", "user=admin",
                            "password=correct+horse", "", "user=ADMIN&password=correct+horse"}) {
    EXPECT_EQ(log_in(query), REFUSED.xml) << query;
  }
  EXPECT_EQ(open_sessions(), 0);
}

TEST_F(LoginTest, EveryPlatformFailureIsARefusal) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiAuthenticateUser", rc, 2);
    EXPECT_EQ(call(login_api_handler, "POST", "/login", CREDENTIALS), REFUSED) << rc;
  }
  EXPECT_EQ(open_sessions(), 0);
}

TEST_F(LoginTest, SecondLoginWithTheKeyKeepsOneSession) {
  log_in();
  EXPECT_EQ(call(login_api_handler, "POST", "/login", std::string(CREDENTIALS) + "&sessionkey=" + key_of(0)),
            expected_answers(0, "You already logged in."));
  EXPECT_EQ(open_sessions(), 1);
}

TEST_F(LoginTest, SecondLoginWithoutTheKeyOpensASecondSession) {
  log_in();
  log_in();
  EXPECT_EQ(open_sessions(), 2);
  EXPECT_EQ(key_of(0), key_of(1));
  now++;
  log_in(std::string(CREDENTIALS) + "&sessionkey=0123");
  EXPECT_EQ(open_sessions(), 3);
  EXPECT_NE(key_of(2), key_of(0));
}

TEST_F(LoginTest, KeyOfAnotherAddressIsNotAnOpenSession) {
  log_in();
  FakeRequest request("POST", "/login", std::string(CREDENTIALS) + "&sessionkey=" + key_of(0));
  request.set_remote("10.0.0.2", 50000);
  login_api_handler(handle, request.conn());
  EXPECT_EQ(open_sessions(), 2);
  EXPECT_STREQ(session_table[1].remote_ip, "10.0.0.2");
}

TEST_F(LoginTest, WrongPasswordIsRefusedEvenWithAValidKey) {
  log_in();
  EXPECT_EQ(log_in("user=admin&password=wrong&sessionkey=" + key_of(0)), REFUSED.xml);
}

TEST_F(LoginTest, SixthLoginIsRefusedUntilASlotIsFree) {
  for (int i = 0; i < 5; i++, now++) log_in();
  EXPECT_EQ(open_sessions(), 5);
  EXPECT_EQ(call(login_api_handler, "POST", "/login", CREDENTIALS),
            expected_answers(2, "The Number of sessions has reached the upper limit. Please try later."));
  EXPECT_EQ(log_in(std::string(CREDENTIALS) + "&sessionkey=" + key_of(4)),
            expected_answers(0, "You already logged in.").xml);
  EXPECT_EQ(call_xml(login_api_handler, "DELETE", "/login", "sessionkey=" + key_of(2)),
            expected_answers(0, "Log out successfully.").xml);
  log_in();
  EXPECT_EQ(session_table[2].session_id, 6u);
}

TEST_F(LoginTest, LongCredentialsAreCutNotOverrun) {
  std::string name(300, 'u');
  FakeRequest request("POST", "/login", "", "user=" + name + "&password=" + std::string(5000, 'p'));
  login_api_handler(handle, request.conn());
  EXPECT_EQ(answer_body(request, "xml"), REFUSED.xml);
  EXPECT_EQ(authenticate_user(handle, name.c_str(), name.c_str()), RC_FALSE);
}

TEST_F(LoginTest, AuthenticateUserSaysYesOrNo) {
  EXPECT_EQ(authenticate_user(handle, "admin", ADMIN_PASSWORD), RC_TRUE);
  fault("rpcclt_openapiAuthenticateUser", OPEN_E_FAIL);
  EXPECT_EQ(authenticate_user(handle, "admin", ADMIN_PASSWORD), RC_FALSE);
}

/* --- Logging out -----------------------------------------------------------------------------------------
 */

TEST_F(LoginTest, LoggingOutEndsTheSession) {
  for (int i = 0; i < 2; i++) log_in();
  EXPECT_EQ(call(login_api_handler, "DELETE", "/login", "sessionkey=" + key_of(0)),
            expected_answers(0, "Log out successfully.")); /* both, since they share the key */
  EXPECT_EQ(open_sessions(), 0);
  log_in();
  EXPECT_EQ(call_xml(login_api_handler, "GET", "/login", "method=DELETE&sessionkey=" + key_of(0)),
            expected_answers(0, "Log out successfully.").xml);
  EXPECT_EQ(open_sessions(), 0);
}

TEST_F(LoginTest, LoggingOutOfAnUnknownSessionStillAnswers0) {
  log_in();
  for (const char *query : {"", "sessionkey=", "sessionkey=0123"}) {
    EXPECT_EQ(call(login_api_handler, "DELETE", "/login", query),
              expected_answers(0, "You never log in or the session already expired."));
  }
  FakeRequest elsewhere("DELETE", "/login", "sessionkey=" + key_of(0));
  elsewhere.set_remote("10.0.0.2", 1);
  login_api_handler(handle, elsewhere.conn());
  EXPECT_EQ(answer_body(elsewhere, "xml"),
            expected_answers(0, "You never log in or the session already expired.").xml);
  EXPECT_EQ(open_sessions(), 1);
}

/* A key without a session number cannot come from the outside; the table is broken by hand. */
TEST_F(LoginTest, LogoutThatFindsNoSlotOfItsNumberAnswers0) {
  log_in();
  session_table[0].session_id = 0;
  EXPECT_EQ(call(login_api_handler, "DELETE", "/login", "sessionkey=" + key_of(0)),
            expected_answers(0, "You never log in or the session already expired."));
}

/* --- State -----------------------------------------------------------------------------------------------
 */

TEST_F(LoginTest, InfoTellsTheTimeOutInWholeMinutes) {
  struct {
    uint32_t seconds;
    const char *minutes;
  } rows[] = {{300, "5"}, {60, "1"}, {9600, "160"}, {359, "5"}, {59, "0"}, {0, "0"}};
  for (const auto &row : rows) {
    session_timeout_seconds = row.seconds;
    EXPECT_EQ(call(login_api_handler, "GET", "/login"),
              expected_answers(0, "Get data successfully.",
                               std::string("<infomation><rest_session_max>5</rest_session_max>"
                                           "<rest_session_timeout_in_minutes>") +
                                   row.minutes + "</rest_session_timeout_in_minutes></infomation>",
                               std::string("\"infomation\": { \"rest_session_max\": 5, "
                                           "\"rest_session_timeout_in_minutes\": ") +
                                   row.minutes + " }"));
  }
}

struct listed_session {
  const char *user, *ip, *login_time, *idle_time;
};

static Answers expected_list(const std::vector<listed_session> &sessions) {
  std::string xml = "<rest_sessions>", json = "\"rest_sessions\": { ";
  int position = 0;
  for (const listed_session &session : sessions) {
    std::string key = std::to_string(++position);
    xml += std::string("<rest_session><user_name>") + session.user + "</user_name><remote_ip>" + session.ip +
           "</remote_ip><login_time>" + session.login_time + "</login_time><idle_time>" + session.idle_time +
           "</idle_time></rest_session>";
    json += std::string(position == 1 ? "" : ", ") + "\"" + key + "\": { \"user_name\": \"" + session.user +
            "\", \"remote_ip\": \"" + session.ip + "\", \"login_time\": \"" + session.login_time +
            "\", \"idle_time\": \"" + session.idle_time + "\" }";
  }
  return expected_answers(0, "Get data successfully.", xml + "</rest_sessions>", json + " }");
}

TEST_F(LoginTest, SessionsAreListedByNumberWithTheirTimes) {
  unsigned char key[SESSION_KEY_SIZE];
  create_session("first", "10.0.0.1", 1, key);
  create_session("second", "10.0.0.2", 2, key);
  create_session("third", "10.0.0.3", 3, key);
  session_timeout_seconds = 0;
  delete_session(1);
  now += 3723;
  log_in(); /* number 4 in the first slot */
  now += 59;
  update_last_activity_time(3);
  now += 3600 * 100;
  EXPECT_EQ(call(login_api_handler, "GET", "/login/RESTSessions", "sessionkey=" + key_of(0)),
            expected_list({{"second", "10.0.0.2", "101:03:02", "101:03:02"},
                           {"third", "10.0.0.3", "101:03:02", "100:00:00"},
                           {"admin", "127.0.0.1", "100:00:59", "00:00:00"}}));
}

TEST_F(LoginTest, ClockSetBackShowsNoTime) {
  log_in();
  now -= 1000;
  EXPECT_EQ(call(login_api_handler, "GET", "/login/RESTSessions", "sessionkey=" + key_of(0)),
            expected_list({{"admin", "127.0.0.1", "00:00:00", "00:00:00"}}));
}

TEST_F(LoginTest, ListingWithoutASessionOfOnesOwnAnswers99) {
  log_in();
  for (const char *query : {"", "sessionkey=0123"}) {
    EXPECT_EQ(call(login_api_handler, "GET", "/login/RESTSessions", query),
              expected_platform_error(OPEN_E_PARAM));
  }
}

/* --- Time-out --------------------------------------------------------------------------------------------
 */

TEST_F(LoginTest, TimeOutTakesOneTo160Minutes) {
  struct {
    const char *value;
    uint32_t seconds;
  } rows[] = {{"1", 60}, {"2", 120}, {"160", 9600}, {"007", 420}, {"0160", 9600}};
  for (const auto &row : rows) {
    EXPECT_EQ(call(login_api_handler, "PUT", "/login/RESTTimeout", std::string("value=") + row.value),
              expected_answers(0, "Update timeout value for REST Sessions successfully."));
    EXPECT_EQ(session_timeout_seconds, row.seconds) << row.value;
  }
}

TEST_F(LoginTest, MinusOneRestoresTheDefault) {
  for (const char *value : {"-1", "-01"}) {
    session_timeout_seconds = 60;
    EXPECT_EQ(call(login_api_handler, "PUT", "/login/RESTTimeout", std::string("value=") + value),
              expected_answers(0, "Update timeout value to default for REST Sessions successfully."));
    EXPECT_EQ(session_timeout_seconds, 300u);
  }
}

TEST_F(LoginTest, OtherTimeOutsAreRefused) {
  session_timeout_seconds = 120;
  const std::string long_zeros = "value=" + std::string(260, '0') + "5";
  for (const std::string &query :
       {std::string(), std::string("value="), std::string("value=0"), std::string("value=161"),
        std::string("value=-2"), std::string("value=-"), std::string("value=+5"), std::string("value=%205"),
        std::string("value=5+"), std::string("value=1.5"), std::string("value=five"),
        std::string("value=0x5"), std::string("value=4294967297"), std::string("value=-4294967297"),
        std::string("minutes=5"), long_zeros}) {
    EXPECT_EQ(call(login_api_handler, "PUT", "/login/RESTTimeout", query), BAD_VALUE) << query;
    EXPECT_EQ(session_timeout_seconds, 120u);
  }
}

TEST_F(LoginTest, NewTimeOutHoldsForSessionsThatAreOpen) {
  log_in();
  EXPECT_EQ(set_timeout("value=1"),
            expected_answers(0, "Update timeout value for REST Sessions successfully.").xml);
  now += 59;
  clear_expired_session();
  EXPECT_EQ(open_sessions(), 1);
  now += 1;
  clear_expired_session();
  EXPECT_EQ(open_sessions(), 0);
}

/* --- Routes ----------------------------------------------------------------------------------------------
 */

TEST_F(LoginTest, NothingElseIsServed) {
  struct {
    const char *method, *uri, *query;
  } rows[] = {
      {"GET", "/login/", ""},
      {"GET", "/login/RESTSessions/", ""},
      {"GET", "/login/restsessions", ""},
      {"GET", "/login/RESTSession", ""},
      {"GET", "/login/RESTSessionsx", ""},
      {"GET", "/login/RESTTimeout", ""},
      {"GET", "/loginx", ""},
      {"GET", "/Login", ""},
      {"GET", "/login ", ""},
      {"GET", "/login\n", ""},
      {"GET", "/login/RESTSessions ", ""},
      {"GET", "/login%00", ""},
      {"POST", "/login/", "user=admin&password=correct+horse"},
      {"POST", "/login/RESTSessions", ""},
      {"POST", "/login/RESTTimeout", ""},
      {"PUT", "/login", "value=5"},
      {"PUT", "/login/RESTTimeout/", "value=5"},
      {"PUT", "/login/resttimeout", "value=5"},
      {"DELETE", "/login/", ""},
      {"DELETE", "/login/RESTSessions", ""},
      {"PATCH", "/login", ""},
      {"HEAD", "/login", ""},
      {"GET", "", ""},
      {"GET", "/login", "method=put"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(call(login_api_handler, row.method, row.uri, row.query), expected_bad_request())
        << row.method << " " << row.uri;
  }
  EXPECT_EQ(open_sessions(), 0);
  EXPECT_EQ(call(login_api_handler, "GET", "/login/" + std::string(300, 'x')), expected_bad_request());
}
