/* The modules that manage the system, routes: which requests they serve and the many that they nearly do. */
#include "modules/rest_module_boxs.h"
#include "modules/rest_module_logging.h"
#include "modules/rest_module_process.h"
#include "modules/rest_module_ssh.h"
#include "modules/rest_module_system.h"
#include "tests/unit/modules/management/management_fixture.h"

#include <algorithm>

class ManagementRouteTest : public ManagementTest {
protected:
  ManagementRouteTest() : ManagementTest(nullptr) {}
};

struct served_route {
  rest_handler_t handler;
  const char *method, *uri;
  const char *first_call; /* of the platform, with "value=1" */
};

static const served_route SERVED[] = {
    {system_api_handler, "GET", "/system", "SystemHostnameSizeGet"},
    {system_api_handler, "PUT", "/system/hostname", "SystemHostnameSet 2:1"},
    {system_api_handler, "PUT", "/system/serialTimeout", "SerialTimeoutSet 1"},
    {system_api_handler, "PUT", "/system/telnetServerAdminMode", "TelnetServerAdminModeSet 1"},
    {system_api_handler, "POST", "/system/reload", "SystemReloadSet 1"},
    {boxs_api_handler, "GET", "/boxs", "BoxsNumOfTempSensorsGet"},
    {boxs_api_handler, "GET", "/boxs/fans", "BoxsNumOfFansGet"},
    {boxs_api_handler, "GET", "/boxs/powSupplies", "BoxsNumOfPowSuppliesGet"},
    {boxs_api_handler, "GET", "/boxs/tempSensors", "BoxsNumOfTempSensorsGet"},
    {boxs_api_handler, "GET", "/boxs/sfp", "IfFirstGet 0 4"},
    {logging_api_handler, "GET", "/logging", "CliCmdLoggingModeGet"},
    {logging_api_handler, "GET", "/logging/hosts", "LoggingHostMaxAddrLenGet"},
    {logging_api_handler, "GET", "/logging/hosts/a", "LoggingHostMaxAddrLenGet"},
    {logging_api_handler, "POST", "/logging/hosts/a", "LoggingHostMaxAddrLenGet"},
    {logging_api_handler, "DELETE", "/logging/hosts/a", "LoggingHostMaxAddrLenGet"},
    {logging_api_handler, "PUT", "/logging/cli/mode", "CliCmdLoggingModeSet 1"},
    {logging_api_handler, "PUT", "/logging/console/mode", "ConsoleLoggingModeSet 1"},
    {logging_api_handler, "PUT", "/logging/console/severityLevel", "ConsoleLoggingSeveritySet 1"},
    {logging_api_handler, "PUT", "/logging/syslog/mode", "SysLogModeSet 1"},
    {logging_api_handler, "PUT", "/logging/syslog/port", "SysLogPortSet 1"},
    {logging_api_handler, "PUT", "/logging/hosts/a/port", "LoggingHostMaxAddrLenGet"},
    {logging_api_handler, "PUT", "/logging/hosts/a/severityLevel", "LoggingHostMaxAddrLenGet"},
    {ssh_api_handler, "GET", "/ssh", "SSHAdminModeGet"},
    {ssh_api_handler, "PUT", "/ssh/adminMode", "SSHAdminModeSet 1"},
    {ssh_api_handler, "PUT", "/ssh/maxSessions", "SSHMaxSessionsSet 1"},
    {ssh_api_handler, "PUT", "/ssh/protoVersion", "SSHProtocolVersionSet 0"},
    {ssh_api_handler, "PUT", "/ssh/timeout", "SSHSessionTimeoutSet 1"},
    {process_api_handler, "GET", "/process/memory", "ProcMemInfoGet"},
    {process_api_handler, "GET", "/process/cpu", "ProcTotalCpuUtilGet [256]"},
};

static const char *const METHODS[] = {"GET", "POST", "PUT", "DELETE"};

static bool is_served(rest_handler_t handler, const std::string &method, const std::string &uri) {
  return std::any_of(std::begin(SERVED), std::end(SERVED), [&](const served_route &route) {
    return route.handler == handler && method == route.method && uri == route.uri;
  });
}

/* "/logging/hosts/x", which is served as "/logging/hosts/a" is. */
static bool names_a_host(const std::string &uri) {
  const std::string before = "/logging/hosts/";
  return uri.size() > before.size() && uri.compare(0, before.size(), before) == 0 &&
         uri.find('/', before.size()) == std::string::npos;
}

/* The route is known by its first call, which fails here. */
TEST_F(ManagementRouteTest, RoutesLeadToTheirOperations) {
  for (const served_route &route : SERVED) {
    take_calls();
    fail_call_at(0, OPEN_E_TIMEOUT);
    FakeRequest request(route.method, route.uri, "value=1");
    EXPECT_EQ(route.handler(scripted_handle(), request.conn()), 0);
    EXPECT_EQ(answer_body(request, "xml"), expected_platform_error(OPEN_E_TIMEOUT).xml) << route.uri;
    EXPECT_EQ(take_calls(), call_list{route.first_call}) << route.method << " " << route.uri;
  }
}

/* By HTTP method and by the variable "method", in any case and with more behind it. */
TEST_F(ManagementRouteTest, MethodVariableChoosesTheOperation) {
  for (const served_route &route : SERVED) {
    for (const char *http_method : {"GET", "POST", "PATCH"}) {
      std::string method = route.method;
      std::transform(method.begin(), method.end(), method.begin(), tolower);
      take_calls();
      fail_call_at(0, OPEN_E_TIMEOUT);
      FakeRequest request(http_method, route.uri, "method=" + method + "All&value=1");
      EXPECT_EQ(route.handler(scripted_handle(), request.conn()), 0);
      EXPECT_EQ(take_calls(), call_list{route.first_call}) << route.method << " " << route.uri;
    }
  }
}

TEST_F(ManagementRouteTest, OtherMethodsAreNotServed) {
  for (const served_route &route : SERVED) {
    for (const char *method : METHODS) {
      if (is_served(route.handler, method, route.uri)) continue;
      expect_refused({method, route.uri, "value=1", route.handler}, expected_bad_request());
      expect_refused({route.method, route.uri, std::string("value=1&method=") + method, route.handler},
                     expected_bad_request());
    }
    for (const char *method : {"PATCH", "HEAD", "OPTIONS", "", "x"})
      expect_refused({method, route.uri, "value=1", route.handler}, expected_bad_request());
  }
}

/* Each route with something before, behind or missing. "/logging/hosts/a" with more behind the "a" is another
 * host; test_logging_hosts.cpp has those. */
TEST_F(ManagementRouteTest, NearMissesAreNotServed) {
  for (const served_route &route : SERVED) {
    const std::string uri = route.uri;
    std::vector<std::string> misses = {"/" + uri,  " " + uri,  uri + "/",    uri + "//",
                                       uri + "/x", uri + "/1", uri.substr(1)};
    if (uri != "/logging/hosts/a") {
      for (const char *behind : {"x", "s", "1", "?", "%20", ".", "x/y"}) misses.push_back(uri + behind);
      misses.push_back(uri.substr(0, uri.size() - 1));
      std::string capital = uri;
      capital.back() = static_cast<char>(toupper(capital.back()));
      misses.push_back(capital);
    }
    for (size_t slash = uri.find('/', 1); slash != std::string::npos; slash = uri.find('/', slash + 2)) {
      std::string doubled = uri;
      misses.push_back(doubled.insert(slash, "/"));
    }
    std::string capital = uri;
    capital[1] = static_cast<char>(toupper(capital[1]));
    misses.push_back(capital);
    for (const std::string &miss : misses) {
      if (is_served(route.handler, route.method, miss) || names_a_host(miss)) continue;
      expect_refused({route.method, miss, "value=1", route.handler}, expected_bad_request());
    }
  }
}

TEST_F(ManagementRouteTest, ExactPathsDoNotOverlookBlanks) {
  for (const served_route &route : SERVED) {
    if (std::string(route.uri).find("/hosts/a") != std::string::npos) continue;
    for (const char *behind : {" ", "\t", "\n", " \r\n"})
      expect_refused({route.method, std::string(route.uri) + behind, "value=1", route.handler},
                     expected_bad_request());
  }
}

static const struct {
  rest_handler_t handler;
  const char *method, *uri;
} NOT_SERVED[] = {
    {system_api_handler, "GET", "/system/networkport"},
    {system_api_handler, "GET", "/system/networkport/ipv4"},
    {system_api_handler, "PUT", "/system/networkport/ipv4"},
    {system_api_handler, "DELETE", "/system/networkport/ipv4"},
    {system_api_handler, "PUT", "/system/networkport/ipv4/protocolMode"},
    {system_api_handler, "PUT", "/system/prompt"},
    {system_api_handler, "PUT", "/system/reload"},
    {system_api_handler, "GET", "/system/hostname"},
    {system_api_handler, "PUT", "/system/serialtimeout"},
    {system_api_handler, "PUT", "/system/telnetServer"},
    {system_api_handler, "GET", "/syste"},
    {system_api_handler, "GET", "/"},
    {system_api_handler, "GET", ""},
    {boxs_api_handler, "GET", "/boxs/fans/1"},
    {boxs_api_handler, "POST", "/boxs"},
    {boxs_api_handler, "GET", "/boxs/fan"},
    {boxs_api_handler, "GET", "/boxs/sfps"},
    {boxs_api_handler, "GET", "/boxs/sfp/1"},
    {boxs_api_handler, "GET", "/boxs/powsupplies"},
    {boxs_api_handler, "GET", "/boxs/tempSensor"},
    {boxs_api_handler, "GET", "/box"},
    {boxs_api_handler, "GET", "/boxes"},
    {logging_api_handler, "GET", "/logging/hosts/"},
    {logging_api_handler, "POST", "/logging/hosts"},
    {logging_api_handler, "POST", "/logging/hosts/"},
    {logging_api_handler, "DELETE", "/logging/hosts"},
    {logging_api_handler, "GET", "/logging/hosts/10.1.1.1/port"},
    {logging_api_handler, "GET", "/logging/hosts/10.1.1.1/severityLevel"},
    {logging_api_handler, "PUT", "/logging/hosts/a"},
    {logging_api_handler, "PUT", "/logging/hosts/a/"},
    {logging_api_handler, "PUT", "/logging/hosts/a/por"},
    {logging_api_handler, "PUT", "/logging/hosts/a/trop"},
    {logging_api_handler, "PUT", "/logging/hosts/a/pppp"},
    {logging_api_handler, "PUT", "/logging/hosts/a/portx"},
    {logging_api_handler, "PUT", "/logging/hosts/a/portp"},
    {logging_api_handler, "PUT", "/logging/hosts/a/port/x"},
    {logging_api_handler, "PUT", "/logging/hosts/a/port x"},
    {logging_api_handler, "PUT", "/logging/hosts/a/Port"},
    {logging_api_handler, "PUT", "/logging/hosts/a/severity"},
    {logging_api_handler, "PUT", "/logging/hosts/a/severityLeve"},
    {logging_api_handler, "PUT", "/logging/hosts/a/severitylevel"},
    {logging_api_handler, "PUT", "/logging/hosts/a/severityLevell"},
    {logging_api_handler, "PUT", "/logging/hosts/a/leveLytireves"},
    {logging_api_handler, "PUT", "/logging/hosts/a/severityLevel/x"},
    {logging_api_handler, "PUT", "/logging/hosts/a/mode"},
    {logging_api_handler, "PUT", "/logging/hosts//port"},
    {logging_api_handler, "PUT", "/logging/hosts/a/b/port"},
    {logging_api_handler, "PUT", "/logging/hosts/port"},
    {logging_api_handler, "GET", "/logging/hosts/a/b"},
    {logging_api_handler, "DELETE", "/logging/hosts/a/port"},
    {logging_api_handler, "POST", "/logging/hosts/a/port"},
    {logging_api_handler, "PUT", "/logging/cli/modex"},
    {logging_api_handler, "PUT", "/logging/cli"},
    {logging_api_handler, "PUT", "/logging/cli/port"},
    {logging_api_handler, "PUT", "/logging/console/severity"},
    {logging_api_handler, "PUT", "/logging/console/port"},
    {logging_api_handler, "PUT", "/logging/syslog/severityLevel"},
    {logging_api_handler, "PUT", "/logging"},
    {logging_api_handler, "PUT", "/logging/hosts"},
    {ssh_api_handler, "PUT", "/ssh"},
    {ssh_api_handler, "POST", "/ssh/adminMode"},
    {ssh_api_handler, "PUT", "/ssh/activeSessions"},
    {ssh_api_handler, "PUT", "/ssh/maxsessions"},
    {ssh_api_handler, "PUT", "/ssh/version"},
    {ssh_api_handler, "GET", "/sshd"},
    {process_api_handler, "GET", "/process"},
    {process_api_handler, "GET", "/process/"},
    {process_api_handler, "GET", "/process/mem"},
    {process_api_handler, "GET", "/process/cpus"},
    {process_api_handler, "GET", "/process/CPU"},
    {process_api_handler, "PUT", "/process/memory"},
};

TEST_F(ManagementRouteTest, NothingElseIsServed) {
  for (const auto &row : NOT_SERVED)
    expect_refused({row.method, row.uri, "value=1", row.handler}, expected_bad_request());
}

/* Blanks that nothing follows are skipped by what catches the rest behind a word. */
TEST_F(ManagementRouteTest, BlanksBehindTheWordOfAHostAreNotSeen) {
  give("LoggingHostMaxAddrLenGet", 46);
  for (const char *behind : {" ", "\t \n"}) {
    EXPECT_EQ(serve({"PUT", std::string("/logging/hosts/a/port") + behind, "value=1", logging_api_handler}),
              expected_answers(0, "Update port of logging host a successfully."));
    EXPECT_EQ(calls_made(), (call_list{"LoggingHostMaxAddrLenGet", "LoggingHostPortSet 46:a 1"}));
  }
}
