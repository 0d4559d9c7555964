/* The software switch in this process: see platform_fixture.h. */
#include "tests/support/platform_fixture.h"

#include "engine/rest_engine_session_hdr.h"
#include "engine/rest_settings.h"
#include "tests/support/temporary_dir.h"

#include <sstream>
#include <stdlib.h>
#include <unistd.h>

extern "C" int kestrel_lab_command(const char *line, char *reply, size_t size);

/* Ports 0/47 and 0/48 are copper, of 10 Gbit/s and 1 Gbit/s; the others are the built-in ones. */
static std::string port_profile(int port) {
  std::string name = "{ \"name\": \"0/" + std::to_string(port) + "\"";
  if (port == 47) return name + ", \"copper\": true }";
  if (port == 48) return name + ", \"copper\": true, \"speed_mbps\": 1000 }";
  return name + (port > 48 ? ", \"speed_mbps\": 40000 }" : " }");
}

/* What TEST_SERIAL and the others of platform_fixture.h say. */
static std::string chassis_profile() {
  std::string text = std::string("{ \"model\": \"") + TEST_MODEL + "\", \"serial\": \"" + TEST_SERIAL +
                     "\", \"mac\": \"" + TEST_MAC + "\", \"description\": \"" + TEST_DESCRIPTION +
                     "\", \"os_version\": \"" + TEST_OS_VERSION + "\", \"storage\": \"" + TEST_STORAGE +
                     "\", \"ports\": [ " + port_profile(1);
  for (int port = 2; port <= 54; port++) text += ",\n" + port_profile(port);
  return text + " ] }\n";
}

static std::string state_dir_in_use;

openapiClientHandle_t *start_platform(const std::string &state_dir) {
  static openapiClientHandle_t handle;
  if (!state_dir_in_use.empty()) return &handle;
  setenv("KESTREL_STATE_DIR", state_dir.c_str(), 1);
  setenv("KESTREL_ADMIN_PASSWORD", ADMIN_PASSWORD, 1);
  setenv("KESTREL_SESSION_FILE", (state_dir + "/sessions").c_str(), 1);
  setenv("KESTREL_PROFILE", (state_dir + "/profile.json").c_str(), 1);
  overwrite_file(state_dir + "/profile.json", chassis_profile());
  reload_rest_settings();
  if (openapiClientRegister("restful_api_engine", &handle) != OPEN_E_NONE) abort();
  state_dir_in_use = state_dir;
  lower_limit("settle-milliseconds", 0); /* tests wait for changes to be taken all the time */
  return &handle;
}

std::string lab(const std::string &line) {
  static char reply[1024 * 1024];
  EXPECT_EQ(kestrel_lab_command(line.c_str(), reply, sizeof reply), 0) << line << ": " << reply;
  std::string text = reply;
  size_t end = text.rfind("ok");
  return end == std::string::npos ? text : text.substr(0, end);
}

void configure(const std::string &lines) {
  std::string path = state_dir_in_use + "/startup-config";
  overwrite_file(path, lines);
  lab("reload");
  unlink(path.c_str());
  wait_applied();
}

void fault(const std::string &function, open_error_t code, unsigned count, unsigned skip) {
  lab("fault " + function + " " + std::to_string(static_cast<int>(code)) + " " + std::to_string(count) + " " +
      std::to_string(skip));
}

void hold_changes() {
  lab("hold");
}

void release_changes() {
  lab("release");
}

void wait_applied() {
  lab("wait");
}

void lower_limit(const std::string &name, uint32_t value) {
  lab("limit " + name + " " + std::to_string(value));
}

std::vector<std::string> log_lines() {
  std::istringstream text(read_file(state_dir_in_use + "/log"));
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line.substr(line.find(' ') + 1));
  return lines;
}

PlatformTest::PlatformTest() {
  static TemporaryDir state_dir; /* removed at the end of the process */
  handle = start_platform(state_dir.path());
  lab("release");
  lab("reload");
  lab("ready yes");
  lower_limit("vlans", 4094);
  wait_applied();
  for (api_loginsession_t &session : session_table) session = {};
  next_ssid = 1;
  session_timeout_seconds = SESSION_TIMEOUT_DEFAULT;
}

PlatformTest::~PlatformTest() {
  EXPECT_EQ(lab("fault list"), "");
  lab("fault clear");
  rest_set_clock(nullptr);
}

std::string PlatformTest::call_xml(rest_handler_t handler, const std::string &method, const std::string &uri,
                                   const std::string &query) const {
  FakeRequest request(method, uri, query);
  handler(handle, request.conn());
  return answer_body(request, "xml");
}
