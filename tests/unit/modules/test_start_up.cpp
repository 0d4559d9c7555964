/* Start-up: registration, the wait for the configuration service, the first log line, the listeners. */
#include "engine/rest_settings.h"
#include "engine/rest_web_request_hdr.h"
#include "tests/support/platform_fixture.h"
#include "tests/unit/modules/transfer_fixture.h"

#include <stdlib.h>

class StartUpTest : public PlatformTest {
protected:
  StartUpTest() {
    setenv("KESTREL_LISTENING_PORT", "127.0.0.1:0", 1);
    setenv("KESTREL_ROOT", "/nowhere", 1);
    reload_rest_settings();
    lines_before = log_lines().size();
  }
  ~StartUpTest() override {
    mg_destroy_server(&server);
    unsetenv("KESTREL_LISTENING_PORT");
    unsetenv("KESTREL_ROOT");
    reload_rest_settings();
  }
  /* Starts the engine and returns what it printed. */
  std::string start() {
    testing::internal::CaptureStdout();
    server = start_engine();
    return testing::internal::GetCapturedStdout();
  }
  std::vector<std::string> new_lines() const {
    std::vector<std::string> lines = log_lines();
    return std::vector<std::string>(lines.begin() + static_cast<long>(lines_before), lines.end());
  }

  mg_server *server = nullptr;
  size_t lines_before;
};

static const std::string STARTING = "INFO rest_web_request_hdr.c:251 Starting RESTful API Engine application";

TEST_F(StartUpTest, LogsPrintsANewlineAndListens) {
  EXPECT_EQ(start(), "\n");
  ASSERT_NE(server, nullptr);
  EXPECT_EQ(new_lines(), (std::vector<std::string>{STARTING}));
  EXPECT_NE(std::string(mg_get_option(server, "listening_port")), "");
  EXPECT_STREQ(mg_get_option(server, "document_root"), "/nowhere");
  EXPECT_EQ(rpcclt_openapiConnectivityCheck(&client_handle), OPEN_E_NONE);
}

TEST_F(StartUpTest, ReadsTheRecordOfTheStartupConfigurationAndMakesItsFile) {
  startupcfg_root root;
  startupcfgInfo = {42, RC_TRUE, "before", "before"};
  EXPECT_EQ(start(), "\n");
  EXPECT_EQ(root.content(), "cfg_time:\ncfg_update:\n");
  EXPECT_EQ(startupcfgInfo.serialNum, 0u);
  EXPECT_EQ(startupcfgInfo.hasUpdated, RC_FALSE);
  mg_destroy_server(&server);
  root.write("cfg_time:c\ncfg_update:u\n");
  start();
  EXPECT_STREQ(startupcfgInfo.cfgTime, "c");
  EXPECT_STREQ(startupcfgInfo.cfgUpdateTime, "u");
}

TEST_F(StartUpTest, RefusedRegistrationIsPrintedAndEndsIt) {
  for (open_error_t rc : all_platform_errors()) {
    fault("openapiClientRegister", rc);
    EXPECT_EQ(start(), "\nFailed to initialize RPC to OpEN. Exiting (result = " + std::to_string(rc) + ")\n");
    EXPECT_EQ(server, nullptr);
  }
  EXPECT_TRUE(new_lines().empty());
}

TEST_F(StartUpTest, WaitsUntilTheConfigurationServiceAnswers) {
  fault("rpcclt_openapiConnectivityCheck", OPEN_E_RPC);
  EXPECT_EQ(start(), "\n");
  EXPECT_NE(server, nullptr);
  EXPECT_EQ(new_lines(), (std::vector<std::string>{STARTING}));
}

TEST_F(StartUpTest, PortThatCannotBeBoundIsLoggedAndTheEngineGoesOn) {
  setenv("KESTREL_LISTENING_PORT", "127.0.0.1:99999", 1);
  reload_rest_settings();
  EXPECT_EQ(start(), "\n");
  ASSERT_NE(server, nullptr);
  std::vector<std::string> lines = new_lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], STARTING);
  std::string text = "Cannot bind to port: listening_port=127.0.0.1:99999";
  EXPECT_EQ(lines[1].find("ERROR rest_web_request_hdr.c:"), 0u);
  EXPECT_EQ(lines[1].substr(lines[1].size() - text.size()), text);
}
