/* Whole requests through authorisation, dispatch and modules, with the switch's own log. */
#include "engine/rest_engine_session_hdr.h"
#include "engine/rest_web_request_hdr.h"
#include "tests/support/temporary_dir.h"
#include "tests/unit/modules/transfer_fixture.h"
#include "tests/unit/modules/vlan_fixture.h"

#include <string.h>

class RequestTest : public VlanTest {
protected:
  RequestTest() {
    client_handle = *handle;
    lines_before = log_lines().size();
  }
  static std::string serve(const std::string &method, const std::string &uri, const std::string &query = "",
                           const std::string &body = "") {
    FakeRequest request(method, uri, query, body);
    char *content = request.conn()->content;
    request.detach_body();
    evt_handler(request.conn(), MG_AUTH);
    request.conn()->content = content;
    evt_handler(request.conn(), MG_REQUEST);
    return answer_body(request, "xml");
  }
  std::string log_in() const {
    serve("POST", "/login", "", "user=admin&password=correct+horse");
    return session_table[0].session_key;
  }
  /* What the log has got since the test began. */
  std::vector<std::string> new_lines() const {
    std::vector<std::string> lines = log_lines();
    return std::vector<std::string>(lines.begin() + static_cast<long>(lines_before), lines.end());
  }

  size_t lines_before;
};

static const std::string AUDIT =
    "WARNING rest_common.c:129 RESTful API Engine: User from [127.0.0.1] accesses API ";

TEST_F(RequestTest, WholeScenarioIsServedAndAudited) {
  std::string key = log_in(), with_key = "sessionkey=" + key;
  EXPECT_EQ(serve("POST", "/vlans/10", with_key), expected_answers(0, "Create VLAN 10 successfully.").xml);
  EXPECT_EQ(serve("PUT", "/vlans/10/name", with_key, "value=servers"),
            expected_answers(0, "Update name of VLAN 10 successfully.").xml);
  EXPECT_EQ(serve("GET", "/vlans/10", with_key), expected_details(10, "servers", {}).xml);
  EXPECT_EQ(serve("GET", "/vlans/10", with_key + "&method=delete"),
            expected_answers(0, "Delete VLAN 10 successfully.").xml);
  EXPECT_EQ(serve("GET", "/vlans/10", with_key), expected_answers(1, "VLAN 10 does not exist.").xml);
  EXPECT_EQ(serve("DELETE", "/login", with_key), expected_answers(0, "Log out successfully.").xml);
  EXPECT_EQ(serve("GET", "/vlans", with_key),
            expected_answers(900, "Session time out or log out. Please log in again.").xml);
  EXPECT_EQ(new_lines(),
            (std::vector<std::string>{
                AUDIT + "[POST /login?]: Log in successfully. (0)",
                AUDIT + "[POST /vlans/10?" + with_key + "]: Create VLAN 10 successfully. (0)",
                AUDIT + "[PUT /vlans/10/name?" + with_key + "]: Update name of VLAN 10 successfully. (0)",
                AUDIT + "[DELETE /vlans/10?" + with_key + "&method=delete]: Delete VLAN 10 successfully. (0)",
                AUDIT + "[DELETE /login?" + with_key + "]: Log out successfully. (0)",
            }));
}

TEST_F(RequestTest, ChangesOfInterfacesLagsAndLocksAreAudited) {
  std::string key = "sessionkey=" + log_in();
  serve("PUT", "/if/3/mtuSize", key, "value=9000");
  serve("PUT", "/if/3/adminState", key + "&value=2");
  serve("POST", "/lag/1/port/5", key);
  serve("DELETE", "/pml/if/5/vlan/1/mac", key);
  std::string refused =
      "Operation failed. It was possibly caused by non-existent resource id in URI, invalid "
      "parameters, or the operation is not supported on the platform. (99)";
  std::vector<std::string> lines = new_lines();
  lines.erase(lines.begin()); /* the login */
  EXPECT_EQ(lines,
            (std::vector<std::string>{
                AUDIT + "[PUT /if/3/mtuSize?" + key + "]: Update MTU size of Interface 3 successfully. (0)",
                AUDIT + "[PUT /if/3/adminState?" + key + "&value=2]: " + refused,
                AUDIT + "[POST /lag/1/port/5?" + key + "]: Configure port 5 to LAG 1 successfully. (0)",
                AUDIT + "[DELETE /pml/if/5/vlan/1/mac?" + key + "]: " + refused,
            }));
}

/* The address with it: what a client wants to keep from the log it sends in the body. */
TEST_F(RequestTest, TransfersAndScriptsAreAudited) {
  startupcfg_root root;
  told_transfers platform;
  platform.fail("FileUpload", OPEN_E_UNAVAIL);
  std::string key = "sessionkey=" + log_in();
  serve("POST", "/download/script", key + "&url=tftp%3A%2F%2Fh%2Ff&scr=s.scr&act=n");
  serve("POST", "/download/config", key, "url=ftp://me:secret@h/f&cfg=2&auto=n");
  serve("POST", "/upload/script", key + "&url=u&scr=s.scr");
  serve("GET", "/upload/status", key);
  serve("POST", "/script/apply", key + "&scr=s.scr");
  serve("DELETE", "/script", key, "scr=s.scr");
  serve("GET", "/script/list", key);
  std::vector<std::string> lines = new_lines();
  lines.erase(lines.begin()); /* the login */
  EXPECT_EQ(lines, (std::vector<std::string>{
                       AUDIT + "[POST /download/script?" + key +
                           "&url=tftp%3A%2F%2Fh%2Ff&scr=s.scr&act=n]: File transfer is starting. (0)",
                       AUDIT + "[POST /download/config?" + key + "]: File transfer is starting. (0)",
                       AUDIT + "[POST /upload/script?" + key +
                           "&url=u&scr=s.scr]: Another Transfer is in Progress. (1)",
                       AUDIT + "[POST /script/apply?" + key + "&scr=s.scr]: Apply script successfully. (0)",
                       AUDIT + "[DELETE /script?" + key + "]: Delete the script file successfully. (0)",
                   }));
}

TEST_F(RequestTest, ChangesOfAccessControlListsAreAudited) {
  std::string key = "sessionkey=" + log_in();
  const std::string rule = key + "&action=deny&protocol=every";
  serve("POST", "/acl/ip/name", key, "name=web");
  serve("POST", "/acl/ip/name", key, "name=web");
  serve("POST", "/acl/ip/name/web/rule", rule);
  serve("POST", "/acl/ip/name/web/rule", rule);
  serve("POST", "/acl/if/3", key + "&direction=in&type=ip&name=web&sequence=1");
  serve("DELETE", "/acl/if/3", key + "&direction=in&type=ip&name=web");
  serve("DELETE", "/acl/ip/name", key, "name=web");
  serve("GET", "/acl/ip", key);
  std::vector<std::string> lines = new_lines();
  lines.erase(lines.begin()); /* the login */
  EXPECT_EQ(lines,
            (std::vector<std::string>{
                AUDIT + "[POST /acl/ip/name?" + key + "]: Create successfully. (0)",
                AUDIT + "[POST /acl/ip/name?" + key + "]: The ACL name already exists. (1)",
                AUDIT + "[POST /acl/ip/name/web/rule?" + rule + "]: Create successfully. (0)",
                AUDIT + "[POST /acl/ip/name/web/rule?" + rule +
                    "]: Failed to create the specified rule as it duplicates already existing one. (3)",
                AUDIT + "[POST /acl/if/3?" + key +
                    "&direction=in&type=ip&name=web&sequence=1]: The rule attachs successfully. (0)",
                AUDIT + "[DELETE /acl/if/3?" + key +
                    "&direction=in&type=ip&name=web]: The ACL detaches successfully. (0)",
                AUDIT + "[DELETE /acl/ip/name?" + key + "]: Delete successfully. (0)",
            }));
}

TEST_F(RequestTest, ChangesOfVxlanAreAudited) {
  std::string key = "sessionkey=" + log_in();
  serve("PUT", "/vxlan/1/mode", key + "&value=2");
  serve("PUT", "/vxlan/1/mode", key, "value=1");
  serve("POST", "/vxlan/1/tenant/5/vlan/1", key);
  serve("PUT", "/vxlan/1/multicastGroup", key + "&value=239.1.1.1");
  serve("PUT", "/vxlan/1/tenant/5/multicastGroup", key + "&value=239.1.1.1");
  serve("GET", "/vxlan/1/multicastGroup", key);
  std::vector<std::string> lines = new_lines();
  lines.erase(lines.begin()); /* the login */
  EXPECT_EQ(
      lines,
      (std::vector<std::string>{
          AUDIT + "[PUT /vxlan/1/mode?" + key + "&value=2]: Update VxLAN mode successfully. (0)",
          AUDIT + "[PUT /vxlan/1/mode?" + key + "]: Couldn't change vxlan mode if tunnel still running ! (2)",
          AUDIT + "[POST /vxlan/1/tenant/5/vlan/1?" + key + "]: Create VxLAN tenant 5 successfully. (0)",
          AUDIT + "[PUT /vxlan/1/multicastGroup?" + key +
              "&value=239.1.1.1]: Update VxLAN default multicast group successfully. (0)",
          AUDIT + "[PUT /vxlan/1/tenant/5/multicastGroup?" + key +
              "&value=239.1.1.1]:  Conflict with default multicast group!! (2)",
      }));
}

TEST_F(RequestTest, ChangesOfRoutingAndBgpAreAudited) {
  std::string key = "sessionkey=" + log_in();
  const std::string dhcp = key + "&addrType=2&extArg=0";
  serve("PUT", "/routing/ipv4/adminMode", key, "value=1");
  serve("DELETE", "/routing/if/3/ip", dhcp);
  serve("POST", "/bgp/ipv6/neighbor/fe80::1/scope/3", key, "asn=65002");
  serve("PUT", "/bgp/ipv6/neighbor/fe80::1/scope/3/activate", key, "value=2");
  serve("GET", "/routing", key);
  serve("GET", "/bgp", key);
  std::vector<std::string> lines = new_lines();
  lines.erase(lines.begin()); /* the login */
  EXPECT_EQ(
      lines,
      (std::vector<std::string>{
          AUDIT + "[PUT /routing/ipv4/adminMode?" + key +
              "]: Update routing admin mode for IPv4 successfully. (0)",
          AUDIT + "[DELETE /routing/if/3/ip?" + dhcp +
              "]: Operation failed. The interface is assigned an IP address by manual configuration, or "
              "DHCP client has already been disabled. (1)",
          AUDIT + "[POST /bgp/ipv6/neighbor/fe80::1/scope/3?" + key +
              "]: Set BGP IPv6 neighbor (ip address: fe80::1, scope: 3, AS number: 65002) successfully. (0)",
          AUDIT + "[PUT /bgp/ipv6/neighbor/fe80::1/scope/3/activate?" + key +
              "]: The value of parameter is invalid. (1)",
      }));
}

TEST_F(RequestTest, PasswordNeverReachesTheLog) {
  serve("POST", "/login", "user=admin&password=correct+horse");
  serve("GET", "/login", "method=post&user=admin&password=correct+horse");
  serve("POST", "/login", "", "user=admin&password=correct+horse");
  serve("POST", "/login/", "user=admin&password=correct+horse");
  for (const std::string &line : log_lines()) {
    EXPECT_EQ(line.find("horse"), std::string::npos) << line;
    EXPECT_EQ(line.find("user=admin"), std::string::npos) << line;
  }
  EXPECT_EQ(new_lines().size(), 4u);
}

TEST_F(RequestTest, PercentSignsAndLineBreaksStayWithinOneLine) {
  std::string key = log_in();
  serve("PUT", "/vlans/10/%n%s\n2026-01-01T00:00:00.000Z INFO forged", "value=%n%s%5000d&sessionkey=" + key);
  std::vector<std::string> lines = new_lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[1],
            AUDIT + "[PUT /vlans/10/%n%s 2026-01-01T00:00:00.000Z INFO forged?value=%n%s%5000d&sessionkey=" +
                key + "]: Bad Request. Please check your method and URI. (902)");
}

TEST_F(RequestTest, LongRequestsAreLoggedInOneLine) {
  serve("DELETE", "/vlans/1", "x=" + std::string(20000, 'x'));
  std::vector<std::string> lines = new_lines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].size(), strlen("WARNING rest_common.c:129 ") + 16383);
}

TEST_F(RequestTest, ReadingIsNeverLogged) {
  std::string key = log_in();
  size_t before = new_lines().size();
  for (const char *uri : {"/vlans", "/base", "/base/idname", "/login", "/login/RESTSessions", "/nothing",
                          "/vlans/", "/if", "/if/3", "/if/3/counters", "/lag", "/lag/1", "/pml/if/3/mac"}) {
    serve("GET", uri, "sessionkey=" + key);
    serve("GET", uri);
  }
  EXPECT_EQ(new_lines().size(), before);
}

TEST_F(RequestTest, EveryModuleIsReachedByItsName) {
  std::string key = log_in();
  EXPECT_EQ(serve("GET", "/vlans", "sessionkey=" + key), expected_list({1}).xml);
  EXPECT_EQ(serve("GET", "/acl", "sessionkey=" + key),
            expected_data({number("current_number", 0), number("max_number", 100)}).xml);
  for (const char *uri : {"/base/", "/vlans/", "/login/", "/if/", "/lag/", "/pml/", "/acl/if/7/extra",
                          "/routing/", "/bgp/", "/vxlan/1"}) {
    EXPECT_EQ(serve("GET", uri, "sessionkey=" + key), expected_bad_request().xml) << uri;
  }
}

TEST_F(RequestTest, AddressTextsAreThePlatformsToParse) {
  open_inet_addr_t address;
  EXPECT_EQ(convert_ip_string_to_inet_addr(handle, "10.0.0.2", &address), RC_TRUE);
  EXPECT_EQ(address.family, OPEN_AF_INET);
  EXPECT_EQ(address.addr.ipv4, 0x0a000002u);
  EXPECT_EQ(convert_ip_string_to_inet_addr(handle, "2001:db8::10", &address), RC_TRUE);
  char text[IP_TEXT_SIZE];
  EXPECT_EQ(convert_inet_addr_to_ip_string(handle, &address, text), RC_TRUE);
  EXPECT_STREQ(text, "2001:db8::10");
  for (const char *bad :
       {"", "10.0.0", "10.0.0.256", "10.0.0.2/24", " 10.0.0.2", "fe80::1%eth0", ":::", "host"}) {
    EXPECT_EQ(convert_ip_string_to_inet_addr(handle, bad, &address), RC_FALSE) << bad;
  }
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiInetAddrGet", rc);
    EXPECT_EQ(convert_ip_string_to_inet_addr(handle, "10.0.0.2", &address), RC_FALSE) << rc;
  }
}
