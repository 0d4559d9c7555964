/* What a restart of the daemon leaves: each life of the switch is a process of its own (the death tests start
 * this program anew), which ends without any farewell. */
#include "engine/rest_engine_session_hdr.h"
#include "tests/support/temporary_dir.h"
#include "tests/unit/modules/vlan_fixture.h"

#include <memory>
#include <stdlib.h>
#include <unistd.h>

/* The state directory that the lives of one test share. The first process makes it and removes it at the end.
 */
class RestartTest : public testing::Test {
protected:
  RestartTest() {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    if (getenv(VARIABLE) != nullptr) return;
    dir = std::make_unique<TemporaryDir>();
    setenv(VARIABLE, dir->path().c_str(), 1);
  }
  ~RestartTest() override {
    if (dir != nullptr) unsetenv(VARIABLE);
  }

  static openapiClientHandle_t *start() { return start_platform(getenv(VARIABLE)); }
  static Answers call(const char *method, const std::string &uri, const std::string &query = "") {
    return call_handler(vlan_api_handler, start(), method, uri, query);
  }
  static void call_once(const char *method, const std::string &uri, const std::string &query = "") {
    FakeRequest request(method, uri, query);
    EXPECT_EQ(vlan_api_handler(start(), request.conn()), 1) << uri;
  }
  static std::string status_file() { return read_file(std::string(getenv(VARIABLE)) + "/sessions"); }
  [[noreturn]] static void die() { _exit(HasFailure() ? 1 : 0); }

  static constexpr char VARIABLE[] = "KESTREL_TEST_RESTART_DIR";
  std::unique_ptr<TemporaryDir> dir;
};

TEST_F(RestartTest, AcknowledgedChangesOfVlansSurvive) {
  EXPECT_EXIT(
      {
        for (const char *uri : {"/vlans/10", "/vlans/20", "/vlans/30"}) call_once("POST", uri);
        call_once("PUT", "/vlans/10/name", "value=servers+%22a%22");
        call_once("PUT", "/vlans/1/name", "value=ground");
        call_once("DELETE", "/vlans/20");
        die();
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        EXPECT_EQ(call("GET", "/vlans"), expected_list({1, 10, 30}));
        EXPECT_EQ(call("GET", "/vlans/30"), expected_details(30, "", {}));
        EXPECT_NE(call("GET", "/vlans/10").xml.find("<name>servers \"a\"</name>"), std::string::npos);
        EXPECT_NE(call("GET", "/vlans/1").xml.find("<name>ground</name>"), std::string::npos);
        die();
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(RestartTest, ChangesHeldBackFromTheDataPlaneSurviveAndAreTakenThen) {
  EXPECT_EXIT(
      {
        start();
        hold_changes();
        call_once("POST", "/vlans/10");
        EXPECT_EQ(call("GET", "/vlans/pendingChanges"), expected_pending({{10, "pending change"}}));
        die();
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        start();
        wait_applied();
        EXPECT_EQ(call("GET", "/vlans"), expected_list({1, 10}));
        EXPECT_EQ(call("GET", "/vlans/pendingChanges"), expected_pending({}));
        die();
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(RestartTest, SessionsDoNotSurviveThoughTheirFileIsThere) {
  EXPECT_EXIT(
      {
        start();
        unsigned char key[SESSION_KEY_SIZE];
        EXPECT_EQ(create_session("admin", "10.0.0.2", 1, key), RC_TRUE);
        die();
      },
      testing::ExitedWithCode(0), "");
  EXPECT_NE(status_file(), "");
  EXPECT_EXIT(
      {
        start();
        clear_expired_session();
        EXPECT_EQ(status_file(), "");
        die();
      },
      testing::ExitedWithCode(0), "");
}
