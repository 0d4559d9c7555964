/* Lists when the platform never says that they are over: the daemon must neither hang nor fill its memory.
 * Each test makes a walk come back to where it has been. */
#include "engine/rest_request.h"
#include "modules/rest_module_acl.h"
#include "modules/rest_module_interface.h"
#include "modules/rest_module_lag.h"
#include "modules/rest_module_pml.h"
#include "modules/rest_module_vlan.h"
#include "platform/api/openapi_acl.h"
#include "platform/api/openapi_if.h"
#include "platform/api/openapi_pml.h"
#include "platform/api/openapi_vlan.h"
#include "tests/support/platform_fixture.h"
#include "tests/support/result_data.h"
#include "tests/unit/modules/bent_platform.h"

class EndlessWalkTest : public PlatformTest {
protected:
  void expect_given_up(rest_handler_t handler, const std::string &uri) const {
    EXPECT_EQ(call(handler, "GET", uri), expected_platform_error(OPEN_E_INTERNAL)) << uri;
  }
};

TEST_F(EndlessWalkTest, ListsOfInterfacesAreGivenUp) {
  EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
  {
    bent_output same_port("rpcclt_openapiIfNextGet", 5);
    expect_given_up(interface_api_handler, "/if");
    expect_given_up(vlan_api_handler, "/vlans/10");
  }
  bent_output same_lag("rpcclt_openapiIfNextGet", 57);
  expect_given_up(lag_api_handler, "/lag");
}

TEST_F(EndlessWalkTest, ListsOfVlansAreGivenUp) {
  EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
  bent_output first_again("rpcclt_openapiVlanNextGet", 1);
  expect_given_up(vlan_api_handler, "/vlans");
  expect_given_up(interface_api_handler, "/if/3/vlan");
}

TEST_F(EndlessWalkTest, ListsOfPendingChangesAreGivenUp) {
  hold_changes();
  EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiIfAdminStateSet(handle, 3, 0), OPEN_E_NONE);
  {
    bent_output before_the_first("openapiIfNextChangedGet nextIfNum", 0);
    expect_given_up(interface_api_handler, "/if/pendingChanges");
  }
  {
    bent_output before_the_first("openapiVlanNextChangedGet", 1);
    expect_given_up(vlan_api_handler, "/vlans/pendingChanges");
  }
  release_changes();
}

TEST_F(EndlessWalkTest, ListsOfLockedAddressesAreGivenUp) {
  EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
  for (const char *address : {"02:00:00:00:00:01", "02:00:00:00:00:02"}) {
    open_buffdesc mac = describe_characters(address);
    EXPECT_EQ(rpcclt_openapiPmlIntfStaticEntryAdd(handle, 5, &mac, 10, 0), OPEN_E_NONE);
  }
  bent_output before_this_entry("rpcclt_openapiPmlIntfStaticEntryGetNext", 1);
  expect_given_up(pml_api_handler, "/pml/if/5/mac");
}

TEST_F(EndlessWalkTest, AccessControlListsAreGivenUp) {
  struct {
    OPEN_ACL_TYPE_t type;
    const char *uri, *list_uri;
  } rows[] = {{OPEN_ACL_TYPE_MAC, "/acl/mac", "/acl/mac/name/x"},
              {OPEN_ACL_TYPE_IP, "/acl/ip", "/acl/ip/name/x"},
              {OPEN_ACL_TYPE_IPV6, "/acl/ipv6", "/acl/ipv6/name/x"}};
  for (const auto &row : rows) {
    uint32_t aclId = 0, ruleId = 7;
    open_buffdesc name = describe_characters("x");
    EXPECT_EQ(rpcclt_openapiAclCreate(handle, row.type, &name, &aclId), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiAclRuleActionAdd(handle, aclId, &ruleId, OPEN_ACL_ACTION_DENY), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiAclRuleActionAdd(handle, aclId, &(ruleId = 8), OPEN_ACL_ACTION_DENY),
              OPEN_E_NONE);
    bent_output before_this_rule("rpcclt_openapiAclRuleGetNext", 7);
    expect_given_up(acl_api_handler, row.list_uri);
    uint32_t other = 0;
    open_buffdesc other_name = describe_characters("y");
    EXPECT_EQ(rpcclt_openapiAclCreate(handle, row.type, &other_name, &other), OPEN_E_NONE);
    bent_output before_this_list("rpcclt_openapiAclGetNext", aclId);
    expect_given_up(acl_api_handler, row.uri);
  }
}

/* --- Addresses -------------------------------------------------------------------------------------------
 */

/* GET /if/120 of loopback0 with these addresses; that a list of them does not end is no failure. */
static std::string details_in_xml(const std::vector<result_node> &addresses) {
  std::vector<result_node> nodes = {
      number("ifNum", 120),
      text("interfaceName", "loopback0"),
      text("description", "-"),
      text("adminState", "enable"),
      text("linkState", "up"),
      text("speed", "unknown"),
      number("pvid", 0),
      text("acceptFrameType", "all"),
      text("autoNegMode", "unknown"),
      text("duplexMode", "unknown"),
      text("MAC_address", TEST_MAC),
      number("MTU_size", 1518),
  };
  nodes.insert(nodes.end(), addresses.begin(), addresses.end());
  return expected_data({branch("interface", nodes)}).xml;
}

TEST_F(EndlessWalkTest, SecondaryAddressesAreCutOff) {
  configure("interface loopback0 ip address 10.0.0.1/24\n"
            "interface loopback0 ip secondary-address 10.0.1.1/24\n");
  bent_output before_the_first("rpcclt_openapiRtrIntfSecIpAddrGet", 0);
  std::vector<result_node> leaves(MAX_LIST_ENTRIES,
                                  text("0", "secondary_ipv4_address", "10.0.1.1/255.255.255.0"));
  EXPECT_TRUE(call_xml(interface_api_handler, "GET", "/if/120") ==
              details_in_xml({text("primary_ip_address", "10.0.0.1/255.255.255.0"),
                              branch("secondary_ip_addresses", leaves)}));
}

TEST_F(EndlessWalkTest, Ipv6AddressesAreCutOff) {
  configure("interface loopback0 ipv6 address 2001:db8::1/64\n");
  /* An IPv4 address as cursor begins the walk again; these four bytes are those of 2001:db8:: */
  bent_output no_cursor("rpcclt_openapiRtrIntfIpAddrGet family", OPEN_AF_INET);
  std::vector<result_node> leaves(MAX_LIST_ENTRIES, text("1", "prefix_and_prefix_length", "184.13.1.32/64"));
  EXPECT_TRUE(call_xml(interface_api_handler, "GET", "/if/120") ==
              details_in_xml({branch("ipv6_addresses", leaves)}));
}
