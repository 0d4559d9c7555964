/* Authorisation and dispatch, as the server drives them: MG_AUTH with the body not attached, then MG_REQUEST.
 */
#include "engine/rest_web_request_hdr.h"
#include "tests/support/answers.h"
#include "tests/unit/engine/captured_log.h"
#include "tests/unit/engine/session_fixture.h"

#include <string.h>

class DispatchTest : public SessionTest {
protected:
  DispatchTest() { key = open_session("admin", "127.0.0.1"); }

  /* Both events of one request; the answer's body. */
  static std::string serve(FakeRequest *request, const std::string &format = "xml") {
    mg_connection *conn = request->conn();
    char *content = conn->content;
    request->detach_body();
    EXPECT_EQ(evt_handler(conn, MG_AUTH), MG_TRUE);
    EXPECT_EQ(request->bytes(), "") << "nothing is answered before the body has arrived";
    conn->content = content;
    EXPECT_EQ(evt_handler(conn, MG_REQUEST), MG_TRUE);
    return answer_body(*request, format);
  }
  static std::string serve(const std::string &method, const std::string &uri, const std::string &query = "",
                           const std::string &body = "") {
    FakeRequest request(method, uri, query, body);
    return serve(&request);
  }
  std::string with_key(const std::string &query = "") const {
    return "sessionkey=" + key + (query.empty() ? "" : "&" + query);
  }
  static uint32_t last_activity(int slot) { return session_table[slot].last_activity_time; }

  std::string key;
};

static const std::string LOGIN_INFO =
    expected_answers(0, "Get data successfully.",
                     "<infomation><rest_session_max>5</rest_session_max><rest_session_timeout_in_minutes>5"
                     "</rest_session_timeout_in_minutes></infomation>",
                     "")
        .xml;
static const std::string NO_KEY = expected_answers(905, "Null Session Key").xml;
static const std::string ENDED =
    expected_answers(900, "Session time out or log out. Please log in again.").xml;
static const std::string UNKNOWN = expected_answers(901, "The module name dose not exist.").xml;

TEST_F(DispatchTest, ValidKeyReachesTheModule) {
  EXPECT_EQ(serve("GET", "/login", with_key()), LOGIN_INFO);
  FakeRequest json("GET", "/login", with_key("format=json"));
  EXPECT_EQ(
      serve(&json, "json"),
      expected_answers(0, "Get data successfully.", "",
                       "\"infomation\": { \"rest_session_max\": 5, \"rest_session_timeout_in_minutes\": 5 }")
          .json);
}

TEST_F(DispatchTest, WithoutAKeyEverythingButLoggingInAnswers905) {
  for (const char *uri : {"/login", "/login/RESTSessions", "/vlans", "/base", "/nothing", "/", "", "*",
                          "/Help", "/helps", "/login/x"}) {
    for (const char *method : {"GET", "PUT", "DELETE", "PATCH"})
      EXPECT_EQ(serve(method, uri), NO_KEY) << method << uri;
  }
  EXPECT_EQ(serve("POST", "/vlans/10"), NO_KEY);
  EXPECT_EQ(serve("GET", "/vlans", "sessionkey="), NO_KEY);
}

TEST_F(DispatchTest, KeysThatOpenNothingAnswer900) {
  for (const std::string &query : {std::string("sessionkey=x"), "sessionkey=" + std::string(32, '0'),
                                   "sessionkey=" + key.substr(1), "sessionkey=+" + key.substr(1)}) {
    EXPECT_EQ(serve("GET", "/login", query), ENDED) << query;
  }
}

TEST_F(DispatchTest, KeyFromAnotherAddressAnswers900) {
  FakeRequest request("GET", "/login", with_key());
  request.set_remote("127.0.0.2", 40000);
  EXPECT_EQ(serve(&request), ENDED);
  FakeRequest other_port("GET", "/login", with_key());
  other_port.set_remote("127.0.0.1", 1);
  EXPECT_EQ(serve(&other_port), LOGIN_INFO);
}

TEST_F(DispatchTest, KeyOfMoreThan32CharactersInTheQueryCountsAsNone) {
  EXPECT_EQ(serve("GET", "/login", "sessionkey=" + key + "x"), NO_KEY);
}

/* The body is not there yet when the session is looked for. */
TEST_F(DispatchTest, KeyThatStandsInTheBodyOnlyAnswers900) {
  EXPECT_EQ(serve("PUT", "/login/RESTTimeout", "value=10", "sessionkey=" + key), ENDED);
  EXPECT_EQ(serve("PUT", "/login/RESTTimeout", "", "value=10&sessionkey=" + key), ENDED);
  EXPECT_EQ(session_timeout_seconds, 300u);
  EXPECT_EQ(serve("PUT", "/login/RESTTimeout", with_key(), "value=10"),
            expected_answers(0, "Update timeout value for REST Sessions successfully.").xml);
  EXPECT_EQ(session_timeout_seconds, 600u);
}

TEST_F(DispatchTest, UnknownModulesAnswer901) {
  for (const char *uri : {"/", "//vlans", "/Vlans", "/vlan", "/vlansx", "/vlans%2f", "/vlans ", "/LOGIN",
                          "/%s%n%s", "/\n", "/.", "*", "", "http://127.0.0.1/vlans", "/login\x01"}) {
    EXPECT_EQ(serve("GET", uri, with_key()), UNKNOWN) << uri;
  }
}

TEST_F(DispatchTest, LongestModuleNamesAnswer901) {
  for (size_t length : {254u, 255u, 256u, 300u, 5000u}) {
    EXPECT_EQ(serve("GET", "/" + std::string(length, 'm'), with_key()), UNKNOWN) << length;
    EXPECT_EQ(serve("GET", "/vlans" + std::string(length, 'm') + "/10", with_key()), UNKNOWN) << length;
  }
  EXPECT_EQ(serve("GET", "/vlans/" + std::string(5000, '1'), with_key()), expected_bad_request().xml);
}

TEST_F(DispatchTest, RequestWithoutUriAnswers905Or901) {
  FakeRequest without_key("GET", "/");
  without_key.conn()->uri = nullptr;
  EXPECT_EQ(serve(&without_key), NO_KEY);
  FakeRequest request("GET", "/", with_key());
  request.conn()->uri = nullptr;
  EXPECT_EQ(serve(&request), UNKNOWN);
}

TEST_F(DispatchTest, PathsThatAModuleDoesNotServeAnswer902) {
  EXPECT_EQ(serve("GET", "/login/", with_key()), expected_bad_request().xml);
  EXPECT_EQ(serve("PATCH", "/login", with_key()), expected_bad_request().xml);
}

TEST_F(DispatchTest, PostOfLoginAndAllOfHelpAreOpen) {
  struct {
    const char *method, *uri, *query;
    int32_t auth_pass;
  } rows[] = {
      {"POST", "/login", "", 0},
      {"POST", "/login/x", "", 0},
      {"post", "/login", "", 0},
      {"GET", "/login", "method=Post", 0},
      {"POST", "/login", "method=get", 1},
      {"GET", "/login", "", 1},
      {"POST", "/Login", "", 1},
      {"POST", "/logins", "", 1},
      {"POST", "/vlans", "", 1},
      {"GET", "/help", "", 0},
      {"DELETE", "/help/vlans", "", 0},
      {"GET", "/help/", "", 0},
      {"GET", "/helpx", "", 1},
      {"GET", "/Help", "", 1},
  };
  for (const auto &row : rows) {
    auth_pass = 2;
    EXPECT_EQ(auth_session(FakeRequest(row.method, row.uri, row.query).conn()), 1);
    EXPECT_EQ(auth_pass, row.auth_pass) << row.method << row.uri << row.query;
  }
}

/* A body may hold a method that the authorisation did not see. */
TEST_F(DispatchTest, MethodInTheBodyOfALoginOpensNothingElse) {
  EXPECT_EQ(serve("POST", "/login", "", "method=GET"), NO_KEY);
  EXPECT_EQ(serve("POST", "/login/RESTTimeout", "", "method=PUT&value=160"), NO_KEY);
  EXPECT_EQ(serve("POST", "/login/RESTSessions", "", "method=GET"), NO_KEY);
  EXPECT_EQ(session_timeout_seconds, 300u);
  EXPECT_EQ(serve("POST", "/login", "sessionkey=x", "method=GET"),
            expected_answers(1, "Authentication failed.").xml);
  EXPECT_EQ(serve("POST", "/login", "", "method=GET&sessionkey=" + key), LOGIN_INFO);
}

TEST_F(DispatchTest, SessionThatEndsBetweenTheEventsAnswers1) {
  FakeRequest request("GET", "/login", with_key());
  EXPECT_EQ(evt_handler(request.conn(), MG_AUTH), MG_TRUE);
  EXPECT_EQ(auth_pass, 0);
  delete_session(1);
  EXPECT_EQ(evt_handler(request.conn(), MG_REQUEST), MG_TRUE);
  EXPECT_EQ(answer_body(request, "xml"), expected_answers(1, "Authentication failed.").xml);
}

TEST_F(DispatchTest, AuthorisationOfOneRequestIsNotTheNextOnes) {
  EXPECT_EQ(serve("GET", "/login", with_key()), LOGIN_INFO);
  EXPECT_EQ(serve("GET", "/login"), NO_KEY);
  EXPECT_EQ(serve("GET", "/login", with_key()), LOGIN_INFO);
}

/* While one request's body is on its way the server serves other clients. */
TEST_F(DispatchTest, RequestsInBetweenLendAndTakeNoAuthorisation) {
  FakeRequest stranger("PUT", "/login/RESTTimeout", "value=160"), owner("GET", "/login", with_key());
  evt_handler(stranger.conn(), MG_AUTH);
  evt_handler(owner.conn(), MG_AUTH);
  evt_handler(stranger.conn(), MG_REQUEST);
  EXPECT_EQ(answer_body(stranger, "xml"), NO_KEY);
  EXPECT_EQ(session_timeout_seconds, 300u);
  stranger.clear_reply();
  evt_handler(stranger.conn(), MG_AUTH);
  evt_handler(owner.conn(), MG_REQUEST);
  EXPECT_EQ(answer_body(owner, "xml"), LOGIN_INFO);
}

TEST_F(DispatchTest, OtherEventsAreLeftToTheServer) {
  FakeRequest request("GET", "/login", with_key());
  for (mg_event event :
       {MG_POLL, MG_CONNECT, MG_REPLY, MG_RECV, MG_CLOSE, MG_WS_HANDSHAKE, MG_WS_CONNECT, MG_HTTP_ERROR}) {
    EXPECT_EQ(evt_handler(request.conn(), event), MG_FALSE) << event;
  }
  EXPECT_EQ(request.bytes(), "");
}

/* --- Idle time -------------------------------------------------------------------------------------------
 */

TEST_F(DispatchTest, RequestsToModulesRefreshTheSession) {
  struct {
    const char *method, *uri;
  } rows[] = {{"GET", "/login"}, {"GET", "/login/"}, {"PUT", "/login/RESTTimeout"}, {"GET", "/nothing"}};
  for (const auto &row : rows) {
    now += 100;
    serve(row.method, row.uri, with_key());
    EXPECT_EQ(last_activity(0), static_cast<uint32_t>(now)) << row.uri;
  }
}

TEST_F(DispatchTest, HelpAndRefusedRequestsRefreshNothing) {
  now += 100;
  serve("GET", "/help", with_key());
  serve("GET", "/login");
  FakeRequest elsewhere("GET", "/login", with_key());
  elsewhere.set_remote("10.0.0.9", 1);
  serve(&elsewhere);
  EXPECT_EQ(last_activity(0), 1700000000u);
}

TEST_F(DispatchTest, EveryRequestSweepsFirst) {
  now += 299;
  EXPECT_EQ(serve("GET", "/login", with_key()), LOGIN_INFO); /* refreshed */
  now += 299;
  EXPECT_EQ(serve("GET", "/login", with_key()), LOGIN_INFO);
  now += 300;
  EXPECT_EQ(serve("GET", "/login", with_key()), ENDED);
  EXPECT_EQ(session_table[0].session_id, 0u);
  EXPECT_EQ(status(), "");
}

TEST_F(DispatchTest, OpenRequestsSweepToo) {
  now += 300;
  serve("GET", "/help");
  EXPECT_EQ(session_table[0].session_id, 0u);
}

TEST_F(DispatchTest, NothingExpiresWhileTheTimeOutIsZero) {
  set_session_timeout(0);
  now += 100000;
  EXPECT_NE(serve("GET", "/login", with_key()), ENDED);
}

TEST_F(DispatchTest, SessionsOfTwoAddressesDoNotMix) {
  std::string other = open_session("oper", "10.0.0.2");
  now += 10;
  FakeRequest request("GET", "/login", "sessionkey=" + other);
  request.set_remote("10.0.0.2", 50000);
  EXPECT_EQ(serve(&request), LOGIN_INFO);
  EXPECT_EQ(last_activity(0), 1700000000u);
  EXPECT_EQ(last_activity(1), 1700000010u);
}

/* --- Audit ------------------------------------------------------------------------------------------------
 */

TEST_F(DispatchTest, RefusalsAreAuditedLikeAnswers) {
  take_logged_lines();
  serve("DELETE", "/vlans/5", "sessionkey=K");
  std::vector<LoggedLine> lines = take_logged_lines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].text,
            "RESTful API Engine: User from [127.0.0.1] accesses API [DELETE /vlans/5?sessionkey=K]: "
            "Session time out or log out. Please log in again. (900)");
  serve("GET", "/vlans/5");
  EXPECT_TRUE(take_logged_lines().empty());
}

/* --- Start-up ---------------------------------------------------------------------------------------------
 */

TEST(Engine, HandleBeforeStartUpIsEmpty) {
  openapiClientHandle_t zero = {};
  EXPECT_EQ(memcmp(&client_handle, &zero, sizeof zero), 0);
}
