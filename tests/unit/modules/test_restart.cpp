/* What a restart of the daemon leaves: each life of the switch is a process of its own (the death tests start
 * this program anew), which ends without any farewell. */
#include "engine/rest_engine_session_hdr.h"
#include "modules/rest_module_bgp.h"
#include "modules/rest_module_logging.h"
#include "modules/rest_module_routing.h"
#include "modules/rest_module_ssh.h"
#include "modules/rest_module_system.h"
#include "tests/support/temporary_dir.h"
#include "tests/unit/modules/interface_fixture.h"
#include "tests/unit/modules/lag_fixture.h"
#include "tests/unit/modules/pml_fixture.h"
#include "tests/unit/modules/tcam_fixture.h"
#include "tests/unit/modules/vlan_fixture.h"
#include "tests/unit/modules/vxlan_fixture.h"

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
  /* Requests of any module by their first segment; each must succeed. */
  static std::string serve(const char *method, const std::string &uri, const std::string &query = "") {
    FakeRequest request(method, uri, query);
    EXPECT_EQ(module_of(uri)(start(), request.conn()), 1) << method << " " << uri;
    return answer_body(request, "xml");
  }
  static rest_handler_t module_of(const std::string &uri) {
    if (uri.compare(0, 4, "/if/") == 0) return interface_api_handler;
    if (uri.compare(0, 4, "/lag") == 0) return lag_api_handler;
    if (uri.compare(0, 5, "/tcam") == 0) return tcam_api_handler;
    if (uri.compare(0, 8, "/routing") == 0) return routing_api_handler;
    if (uri.compare(0, 4, "/bgp") == 0) return bgp_api_handler;
    if (uri.compare(0, 6, "/vxlan") == 0) return vxlan_api_handler;
    if (uri.compare(0, 7, "/system") == 0) return system_api_handler;
    if (uri.compare(0, 8, "/logging") == 0) return logging_api_handler;
    if (uri.compare(0, 4, "/ssh") == 0) return ssh_api_handler;
    return uri.compare(0, 4, "/pml") == 0 ? pml_api_handler : vlan_api_handler;
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

static const struct {
  const char *method, *uri, *query;
} CHANGES[] = {
    {"POST", "/vlans/10", ""},
    {"POST", "/vlans/20", ""},
    {"PUT", "/vlans/20/name", "value=servers"},
    {"POST", "/if/3/vlan/10", ""},
    {"PUT", "/if/3/vlan/10/taggingMode", "value=1"},
    {"PUT", "/if/3/pvid", "value=10"},
    {"DELETE", "/if/3/vlan/1", ""},
    {"PUT", "/if/3/acceptFrameType", "value=3"},
    {"PUT", "/if/3/description", "value=up%20%22link%22%20%5C%20%3C1%3E"},
    {"PUT", "/if/3/mtuSize", "value=9216"},
    {"PUT", "/if/3/speed", "value=7"},
    {"PUT", "/if/4/adminState", "value=0"},
    {"PUT", "/if/48/autoNegMode", "value=0"},
    {"PUT", "/if/47/speed", "value=5"},
    {"PUT", "/if/56/description", "value=to+the+roof"},
    {"PUT", "/if/120/description", "value=router"},
    {"PUT", "/if/8/access/vlan", "value=20"},
    {"PUT", "/if/8/switchportMode", "value=2"},
    {"PUT", "/if/9/trunk/vlan", "value=10-30"},
    {"POST", "/if/9/trunk/vlan", "value=40,50"},
    {"DELETE", "/if/9/trunk/vlan", "value=10"},
    {"PUT", "/if/9/trunk/pvid", "value=10"},
    {"PUT", "/if/9/switchportMode", "value=3"},
    {"PUT", "/if/10/trunk/vlan", "value=20"}, /* kept while the mode is general */
    {"POST", "/lag/1/port/5", ""},
    {"POST", "/lag/1/port/7", ""},
    {"POST", "/lag/64/port/6", ""},
    {"DELETE", "/lag/1/port/7", ""},
    {"PUT", "/pml/if/5/sticky", "value=1"},
    {"POST", "/pml/if/5/vlan/10/sticky/1/mac", "value=02:00:00:00:00:0a"},
    {"POST", "/pml/if/5/vlan/1/sticky/0/mac", "value=02:00:00:00:00:0b"},
    {"POST", "/tcam/policy", "actionDrop=1"},
    {"POST", "/tcam/policy", "policyType=3&matchVlanId=10&matchDstIp=10.0.0.0&matchDstIpMask=255.0.0.0"},
    {"POST", "/tcam/policy", "policyType=2&matchSrcMac=1:2:3:4:5:6&actionRedirPort=56&actionNewVlanPrio=0"},
    {"POST", "/tcam/policy/2/port/5", ""},
    {"POST", "/tcam/policy/3/port/5", ""},
    {"DELETE", "/tcam/policy/1", ""},
    {"PUT", "/routing/ipv4/adminMode", "value=1"},
    {"POST", "/routing/vlanRtrIf", "vlanId=10"},
    {"POST", "/routing/vlanRtrIf", "vlanId=20"},
    {"DELETE", "/routing/vlanRtrIf", "vlanId=10"},
    {"POST", "/routing/vlanRtrIf/1/ip", "addrType=0&addr=10.0.0.1&pfxLen=24&extArg=0"},
    {"POST", "/routing/vlanRtrIf/1/ip", "addrType=1&addr=10.0.1.1&pfxLen=24&extArg=0"},
    {"POST", "/routing/vlanRtrIf/1/ip", "addrType=3&addr=2001:db8::1&pfxLen=64&extArg=0"},
    {"PUT", "/routing/if/11/adminMode", "value=1"},
    {"POST", "/routing/if/11/ip", "addrType=3&addr=2001:db8:11::&pfxLen=64&extArg=1"},
    {"PUT", "/routing/if/12/adminMode", "value=1"},
    {"POST", "/routing/if/12/ip", "addrType=2&extArg=0"},
    {"PUT", "/bgp/holdTime", "value=180"},
    {"PUT", "/bgp/keepAliveTime", "value=60"},
    {"PUT", "/bgp/localAS", "value=4200000001"},
    {"PUT", "/bgp/routerId", "value=10.0.0.1"},
    {"PUT", "/bgp/localPref", "value=200"},
    {"PUT", "/bgp/logNeighborChanges", "value=1"},
    {"POST", "/bgp/originatedNetwork", "addr=10.0.0.0&pfxLen=8&routeMap=blue+%25+%22green%22"},
    {"POST", "/bgp/ipv4/neighbor/10.0.0.2", "asn=65002"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/nextHopSelfMode", "value=1"},
    {"PUT", "/bgp/ipv4/neighbor/10.0.0.2/updateSource", "type=1&value=20"},
    {"POST", "/bgp/ipv6/neighbor/fe80::1/scope/3", "asn=65003"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/activate", "value=1"},
    {"PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/updateSource", "type=2&value=120"},
    {"POST", "/bgp/ipv4/redistribution/ospf", "metric=10&routeMap=blue&matchExt2=1&matchInternal=1"},
    {"POST", "/bgp/ipv6/redistribution/static", ""},
    {"PUT", "/system/hostname", "value=leaf-7"},
    {"PUT", "/system/serialTimeout", "value=30"},
    {"PUT", "/system/telnetServerAdminMode", "value=1"},
    {"POST", "/logging/hosts/10.0.0.1", ""},
    {"POST", "/logging/hosts/10.0.0.2", ""},
    {"POST", "/logging/hosts/2001:db8::1", ""},
    {"PUT", "/logging/hosts/10.0.0.1/port", "value=1514"},
    {"PUT", "/logging/hosts/2001:db8::1/severityLevel", "value=7"},
    {"DELETE", "/logging/hosts/10.0.0.2", ""},
    {"PUT", "/logging/cli/mode", "value=1"},
    {"PUT", "/logging/console/mode", "value=0"},
    {"PUT", "/logging/console/severityLevel", "value=5"},
    {"PUT", "/logging/syslog/port", "value=65535"},
    {"PUT", "/ssh/adminMode", "value=1"},
    {"PUT", "/ssh/maxSessions", "value=0"},
    {"PUT", "/ssh/protoVersion", "value=3"},
    {"PUT", "/ssh/timeout", "value=160"},
};

/* What the switch answers about everything that was changed. */
static std::string all_answers(std::string (*serve)(const char *, const std::string &, const std::string &)) {
  std::string answers;
  for (int ifNum : {3, 4, 5, 6, 7, 8, 9, 10, 47, 48, 56, 119, 120})
    answers += serve("GET", "/if/" + std::to_string(ifNum), "");
  for (int ifNum : {3, 5, 7, 8, 9, 10, 56}) {
    std::string uri = "/if/" + std::to_string(ifNum);
    answers += serve("GET", uri + "/vlan", "") + serve("GET", uri + "/switchportMode", "");
    for (const char *vlan : {"/vlan/1", "/vlan/10", "/vlan/20"}) answers += serve("GET", uri + vlan, "");
  }
  for (const char *uri : {"/lag",
                          "/lag/1",
                          "/lag/64",
                          "/pml/if/5/sticky",
                          "/pml/if/6/sticky",
                          "/pml/if/5/mac",
                          "/tcam/policy",
                          "/tcam/policy/2",
                          "/tcam/policy/3",
                          "/tcam/groupStats",
                          "/vlans",
                          "/vlans/1",
                          "/vlans/10",
                          "/vlans/20",
                          "/routing",
                          "/routing/if",
                          "/routing/vlanRtrIf",
                          "/routing/vlanRtrIf/1",
                          "/bgp",
                          "/bgp/ipv4/neighbor/10.0.0.2",
                          "/bgp/ipv6/neighbor/fe80::1/scope/3",
                          "/system",
                          "/logging",
                          "/logging/hosts",
                          "/logging/hosts/10.0.0.1",
                          "/logging/hosts/2001:db8::1",
                          "/ssh"})
    answers += serve("GET", uri, "");
  return answers;
}

TEST_F(RestartTest, EveryAnswerIsTheSameAfterwards) {
  std::string file = std::string(getenv(VARIABLE)) + "/answers";
  EXPECT_EXIT(
      {
        start();
        std::string factory = serve("GET", "/if/3") + serve("GET", "/lag/1");
        for (const auto &change : CHANGES) serve(change.method, change.uri, change.query);
        wait_applied();
        EXPECT_NE(serve("GET", "/if/3") + serve("GET", "/lag/1"), factory);
        overwrite_file(file, all_answers(serve));
        die();
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        start();
        wait_applied();
        EXPECT_EQ(all_answers(serve), read_file(file));
        serve("DELETE", "/tcam/policy/2/port/5");
        serve("DELETE", "/tcam/policy/3/port/5");
        serve("DELETE", "/routing/if/12/ip", "addrType=2&extArg=0");
        serve("DELETE", "/bgp/originatedNetwork", "addr=10.0.0.0&pfxLen=8");
        serve("DELETE", "/bgp/ipv4/redistribution/ospf");
        serve("DELETE", "/bgp/ipv6/redistribution/static");
        serve("PUT", "/if/9/switchportMode", "value=1");
        serve("PUT", "/if/10/switchportMode", "value=3");
        EXPECT_EQ(serve("GET", "/if/10/vlan"), expected_participations({{0, 1}, {2, 20}}).xml);
        die();
      },
      testing::ExitedWithCode(0), "");
}

/* Both kinds of groups are configured, each in its mode; what is not in force stays as well. */
static const struct {
  const char *method, *uri, *query;
} VXLAN_CHANGES[] = {
    {"POST", "/vlans/10", ""},
    {"POST", "/vlans/20", ""},
    {"POST", "/vlans/30", ""},
    {"PUT", "/vxlan/1/mode", "value=1"},
    {"PUT", "/vxlan/1/udpPort", "value=5000"},
    {"PUT", "/vxlan/1/sourceIntf/loopback", "value=3"},
    {"POST", "/vxlan/1/tenant/16777214/vlan/10", ""},
    {"POST", "/vxlan/1/tenant/5/vlan/20", ""},
    {"POST", "/vxlan/1/tenant/6/vlan/30", ""},
    {"PUT", "/vxlan/1/unicastGroup", "value=10.0.0.2"},
    {"PUT", "/vxlan/1/unicastGroup", "value=10.0.0.1"},
    {"PUT", "/vxlan/1/unicastGroup", "value=10.0.0.3"},
    {"DELETE", "/vxlan/1/unicastGroup", "value=10.0.0.2"},
    {"DELETE", "/vxlan/1/tenant/6/vlan/30", ""},
    {"PUT", "/vxlan/1/mode", "value=0"},
    {"PUT", "/vxlan/1/mode", "value=2"},
    {"PUT", "/vxlan/1/multicastGroup", "value=239.0.0.1"},
    {"PUT", "/vxlan/1/tenant/5/multicastGroup", "value=239.1.1.5"},
    {"PUT", "/vxlan/1/tenant/16777214/multicastGroup", "value=239.1.1.6"},
    {"DELETE", "/vxlan/1/tenant/16777214/multicastGroup", ""},
};

TEST_F(RestartTest, VxlanSurvivesWholeWhateverTheMode) {
  const Answers tenants = expected_tenants({{5, 20}, {16777214, 10}});
  const Answers multicast = expected_data({multicast_groups("239.0.0.1", {{5, "239.1.1.5"}})});
  const Answers unicast = expected_data({unicast_groups({"10.0.0.1", "10.0.0.3"})});
  EXPECT_EXIT(
      {
        start();
        for (const auto &change : VXLAN_CHANGES) serve(change.method, change.uri, change.query);
        die();
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        EXPECT_EQ(serve("GET", "/vxlan/1/mode"), expected_mode(MULTICAST).xml);
        EXPECT_EQ(serve("GET", "/vxlan/1/udpPort"), expected_udp_port(5000).xml);
        EXPECT_EQ(serve("GET", "/vxlan/1/sourceIntf"), expected_source("loopback", 3).xml);
        EXPECT_EQ(serve("GET", "/vxlan/1/tenant"), tenants.xml);
        EXPECT_EQ(serve("GET", "/vxlan/1/multicastGroup"), multicast.xml);
        serve("PUT", "/vxlan/1/mode", "value=0");
        serve("PUT", "/vxlan/1/mode", "value=1");
        die();
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        EXPECT_EQ(serve("GET", "/vxlan/1/mode"), expected_mode(UNICAST).xml);
        EXPECT_EQ(serve("GET", "/vxlan/1/unicastGroup"), unicast.xml);
        serve("PUT", "/vxlan/1/mode", "value=0");
        die();
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        EXPECT_EQ(serve("GET", "/vxlan/1/mode"), expected_mode(OFF).xml);
        die();
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(RestartTest, CountersBeginAnew) {
  EXPECT_EXIT(
      {
        start();
        lab("counter set 0/3 CTR_RX_64 7");
        EXPECT_NE(serve("GET", "/if/3/counters"), serve("GET", "/if/4/counters"));
        die();
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        EXPECT_EQ(serve("GET", "/if/3/counters"), serve("GET", "/if/4/counters"));
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
