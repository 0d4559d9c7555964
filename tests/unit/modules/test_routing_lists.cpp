/* The routing module: lists of routing interfaces and the details of one, with their addresses. */
#include "tests/unit/modules/routing_fixture.h"

static const char VLAN_OF[] = "rpcclt_openapiRtrIntfVlanIdGet";
static const char NEXT[] = "rpcclt_openapiRtrIntfNextGet";
static const char TYPE_OF[] = "rpcclt_openapiRtrIntfTypeGet";
static const char ADDRESS_OF[] = "rpcclt_openapiRtrIntfIpAddrGet";
static const char SECONDARY_OF[] = "rpcclt_openapiRtrIntfSecIpAddrGet";

/* --- VLAN routing interfaces ---------------------------------------------------------------------------- */

TEST_F(RoutingTest, SwitchWithoutVlanRoutingInterfacesSaysSo) {
  EXPECT_EQ(get("/routing/vlanRtrIf").xml,
            "<result><rlt_code>1</rlt_code><rlt_mesg>VLAN Routing interface doesn't exist.</rlt_mesg>"
            "<rlt_data><vlan_routing_interfaces></vlan_routing_interfaces></rlt_data></result>\n");
  EXPECT_EQ(get("/routing/vlanRtrIf").json,
            "{ \"result\": { \"rlt_code\": 1, \"rlt_mesg\": \"VLAN Routing interface doesn't exist.\", "
            "\"rlt_data\": { \"vlan_routing_interfaces\": { } } } }\n");
  EXPECT_EQ(get("/routing/vlanRtrIf"), expected_no_vlan_interfaces());
}

TEST_F(RoutingTest, VlanRoutingInterfacesAreListedWithTheirAddresses) {
  for (uint32_t vlan : {10, 20, 30, 40}) make_vlan_interface(vlan);
  give(226, "10.0.0.1/24");
  give(226, "10.0.1.1/24", OPEN_INTF_IP_ADDR_SECONDARY);
  give(228, "2001:db8:1::1/64");
  give(228, "fd00::1/8");
  give(229, "10.9.0.1/16");
  give(229, "2001:db8:2::1/126");
  EXPECT_EQ(get("/routing/vlanRtrIf"),
            expected_vlan_interfaces({{226, listed_ipv4("10.0.0.1", "255.255.255.0")},
                                      {227},
                                      {228, {listed_ipv6({"2001:db8:1::1/64", "fd00::1/8"})}},
                                      {229, listed_ipv4("10.9.0.1", "255.255.0.0") +
                                                result_nodes{listed_ipv6({"2001:db8:2::1/126"})}}}));
}

TEST_F(RoutingTest, ListedAddressesAreWholeInBothFormats) {
  make_vlan_interface(10);
  give(226, "10.0.0.1/24");
  give(226, "2001:db8::1/64");
  EXPECT_EQ(get("/routing/vlanRtrIf").xml,
            "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
            "<vlan_routing_interfaces><vlan_routing_interface><logical_interface_id>1</logical_interface_id>"
            "<vlan_routing_interface_num>226</vlan_routing_interface_num>"
            "<ipv4_address>10.0.0.1</ipv4_address><subnet_mask>255.255.255.0</subnet_mask>"
            "<ipv6_addresses><prefix_and_prefix_length>2001:db8::1/64</prefix_and_prefix_length>"
            "</ipv6_addresses></vlan_routing_interface></vlan_routing_interfaces></rlt_data></result>\n");
  EXPECT_EQ(get("/routing/vlanRtrIf").json,
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
            "\"vlan_routing_interfaces\": { \"1\": { \"logical_interface_id\": 1, "
            "\"vlan_routing_interface_num\": 226, \"ipv4_address\": \"10.0.0.1\", "
            "\"subnet_mask\": \"255.255.255.0\", \"ipv6_addresses\": { "
            "\"1\": \"2001:db8::1\\/64\" } } } } } }\n");
}

TEST_F(RoutingTest, LogicalIdsOfAListCountFromItsFirstInterface) {
  for (uint32_t vlan : {10, 20, 30}) make_vlan_interface(vlan);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(handle, 10), OPEN_E_NONE);
  EXPECT_EQ(get("/routing/vlanRtrIf"), expected_vlan_interfaces({{227}, {228}}, 227));
}

TEST_F(RoutingTest, AllVlanRoutingInterfacesThatThereMayBeAreListed) {
  std::vector<listed_interface> interfaces;
  for (uint32_t ifNum = 226; ifNum <= 353; ifNum++) {
    make_vlan_interface(ifNum);
    interfaces.push_back({ifNum});
  }
  EXPECT_EQ(get("/routing/vlanRtrIf"), expected_vlan_interfaces(interfaces));
  EXPECT_EQ(get("/routing/vlanRtrIf/128"), expected_vlan_interface(128, 353, "vlan353", 353));
  EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 400), OPEN_E_NONE);
  expect_refused("POST", "/routing/vlanRtrIf", "vlanId=400", expected_platform_error(OPEN_E_FULL));
}

TEST_F(RoutingTest, FirstVlanRoutingInterfaceThatIsNotToldMeansNone) {
  for (uint32_t vlan : {10, 20}) make_vlan_interface(vlan);
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiIfFirstGet", rc, 2);
    EXPECT_EQ(get("/routing/vlanRtrIf"), expected_no_vlan_interfaces()) << rc;
  }
}

/* Positions count what is listed. */
TEST_F(RoutingTest, InterfaceWhoseVlanIsNotToldIsSkipped) {
  for (uint32_t vlan : {10, 20, 30}) make_vlan_interface(vlan);
  for (open_error_t rc : all_platform_errors()) {
    fault(VLAN_OF, rc);
    EXPECT_EQ(call_xml(routing_api_handler, "GET", "/routing/vlanRtrIf"),
              expected_vlan_interfaces({{227}, {228}}).xml);
    fault(VLAN_OF, rc, 1, 1);
    EXPECT_EQ(call_xml(routing_api_handler, "GET", "/routing/vlanRtrIf"),
              expected_vlan_interfaces({{226}, {228}}).xml);
    fault(VLAN_OF, rc, 6);
    EXPECT_EQ(get("/routing/vlanRtrIf"), expected_no_vlan_interfaces());
  }
}

TEST_F(RoutingTest, VlanListEndsWhereTheNextInterfaceOrItsTypeIsNotTold) {
  for (uint32_t vlan : {10, 20, 30}) make_vlan_interface(vlan);
  for (open_error_t rc : all_platform_errors()) {
    for (const char *function : {NEXT, TYPE_OF}) {
      fault(function, rc, 1, 1);
      EXPECT_EQ(call_xml(routing_api_handler, "GET", "/routing/vlanRtrIf"),
                expected_vlan_interfaces({{226}, {227}}).xml)
          << function << " " << rc;
    }
  }
}

TEST_F(RoutingTest, VlanListEndsAtAnInterfaceOfAnotherType) {
  for (uint32_t vlan : {10, 20, 30}) make_vlan_interface(vlan);
  for (uint32_t type : {0u, 1u, 2u, 4u, 0xffffffffu}) {
    bent_output bent(TYPE_OF, type);
    EXPECT_EQ(get("/routing/vlanRtrIf"), expected_vlan_interfaces({{226}})) << type;
  }
}

/* --- Physical interfaces -------------------------------------------------------------------------------- */

TEST_F(RoutingTest, SwitchWithoutPhysicalRoutingInterfacesSaysSo) {
  EXPECT_EQ(get("/routing/if").xml,
            "<result><rlt_code>1</rlt_code><rlt_mesg>Physical routing interface doesn't exist.</rlt_mesg>"
            "<rlt_data><interfaces></interfaces></rlt_data></result>\n");
  EXPECT_EQ(get("/routing/if"), expected_no_interfaces());
  make_vlan_interface(10);
  EXPECT_EQ(get("/routing/if"), expected_no_interfaces());
}

TEST_F(RoutingTest, PhysicalRoutingInterfacesAreListedWithTheirAddresses) {
  for (uint32_t port : {3, 5, 54}) route_port(port);
  give(3, "192.168.0.1/30");
  give(5, "2001:db8:5::1/64");
  give(54, "10.54.0.1/8");
  give(54, "2001:db8:54::1/127");
  give(7, "172.16.0.1/16"); /* does not route */
  EXPECT_EQ(get("/routing/if"),
            expected_interfaces({{3, listed_ipv4("192.168.0.1", "255.255.255.252")},
                                 {5, {listed_ipv6({"2001:db8:5::1/64"})}},
                                 {54, listed_ipv4("10.54.0.1", "255.0.0.0") +
                                          result_nodes{listed_ipv6({"2001:db8:54::1/127"})}}}));
}

TEST_F(RoutingTest, LagsAndLoopbacksAreNotAmongThePhysicalInterfaces) {
  for (uint32_t ifNum : {3, 57}) route_port(ifNum);
  EXPECT_EQ(get("/routing/if"), expected_interfaces({{3}}));
  EXPECT_EQ(rpcclt_openapiRtrIntfRtrAdminModeSet(handle, 3, OPEN_DISABLE), OPEN_E_NONE);
  EXPECT_EQ(get("/routing/if"), expected_no_interfaces());
}

TEST_F(RoutingTest, PhysicalListEndsWhereTheNextInterfaceOrItsTypeIsNotTold) {
  for (uint32_t port : {3, 5, 7}) route_port(port);
  for (open_error_t rc : all_platform_errors()) {
    for (const char *function : {NEXT, TYPE_OF}) {
      fault(function, rc, 1, 2);
      EXPECT_EQ(call_xml(routing_api_handler, "GET", "/routing/if"), expected_interfaces({{3}, {5}}).xml)
          << function << " " << rc;
    }
    fault(TYPE_OF, rc, 2);
    EXPECT_EQ(get("/routing/if"), expected_no_interfaces()) << rc;
  }
}

TEST_F(RoutingTest, PhysicalListEndsAtAnInterfaceOfAnotherType) {
  for (uint32_t port : {3, 5}) route_port(port);
  for (uint32_t type : {1u, 2u, 3u, 4u, 0xffffffffu}) {
    bent_output bent(TYPE_OF, type);
    EXPECT_EQ(get("/routing/if"), expected_no_interfaces()) << type;
  }
}

/* --- One VLAN routing interface --------------------------------------------------------------------------
 */

TEST_F(RoutingTest, LogicalId1IsTheFirstVlanRoutingInterface) {
  make_vlan_interface(10);
  EXPECT_EQ(get("/routing/vlanRtrIf/1").xml,
            "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
            "<vlan_routing_interface><logical_interface_id>1</logical_interface_id>"
            "<vlan_routing_interface_num>226</vlan_routing_interface_num>"
            "<vlan_routing_interface_name>vlan10</vlan_routing_interface_name><vlan_id>10</vlan_id>"
            "</vlan_routing_interface></rlt_data></result>\n");
  EXPECT_EQ(get("/routing/vlanRtrIf/1").json,
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
            "\"vlan_routing_interface\": { \"logical_interface_id\": 1, \"vlan_routing_interface_num\": 226, "
            "\"vlan_routing_interface_name\": \"vlan10\", \"vlan_id\": 10 } } } }\n");
  EXPECT_EQ(get("/routing/vlanRtrIf/001"), expected_vlan_interface(1, 226, "vlan10", 10));
}

TEST_F(RoutingTest, DetailsHaveAllAddressesInTheirOrder) {
  for (uint32_t vlan : {10, 20}) make_vlan_interface(vlan);
  give(227, "2001:db8::1/64");
  give(227, "fe80::1/64");
  give(227, "10.0.0.1/24");
  give(227, "10.0.1.1/16", OPEN_INTF_IP_ADDR_SECONDARY);
  give(227, "192.168.0.1/32", OPEN_INTF_IP_ADDR_SECONDARY);
  EXPECT_EQ(get("/routing/vlanRtrIf/2"),
            expected_vlan_interface(2, 227, "vlan20", 20,
                                    {primary_ipv4("10.0.0.1/255.255.255.0"),
                                     secondary_ipv4({"10.0.1.1/255.255.0.0", "192.168.0.1/255.255.255.255"}),
                                     listed_ipv6({"2001:db8::1/64", "fe80::1/64"})}));
  EXPECT_EQ(get("/routing/vlanRtrIf/1"), expected_vlan_interface(1, 226, "vlan10", 10));
}

TEST_F(RoutingTest, LogicalIdWithoutAnInterfaceAnswers99) {
  for (const char *id : {"0", "1", "2", "127", "129", "100000", "2147483647", "99999999999"})
    EXPECT_EQ(get(std::string("/routing/vlanRtrIf/") + id), expected_platform_error(OPEN_E_NOT_FOUND)) << id;
  make_vlan_interface(10);
  for (const char *id : {"0", "2", "2147483647"})
    EXPECT_EQ(get(std::string("/routing/vlanRtrIf/") + id), expected_platform_error(OPEN_E_NOT_FOUND)) << id;
}

TEST_F(RoutingTest, LogicalIdThatIsNotToldIsANegativeNumber) {
  make_vlan_interface(10);
  for (open_error_t rc : all_platform_errors()) {
    fault(TYPE_OF, rc, 2);
    EXPECT_EQ(get("/routing/vlanRtrIf/1"), expected_vlan_interface(-1, 226, "vlan10", 10)) << rc;
  }
  bent_output port(TYPE_OF, 0);
  EXPECT_EQ(get("/routing/vlanRtrIf/1"), expected_vlan_interface(-2, 226, "vlan10", 10));
}

TEST_F(RoutingTest, VlanOfTheDetailsIsThePlatforms) {
  make_vlan_interface(10);
  bent_output bent(VLAN_OF, 4000);
  EXPECT_EQ(get("/routing/vlanRtrIf/1"), expected_vlan_interface(1, 226, "vlan10", 4000));
}

/* --- Addresses ------------------------------------------------------------------------------------------ */

TEST_F(RoutingTest, MaskIsAsLongAsThePrefix) {
  route_port(3);
  make_vlan_interface(10);
  give(3, "10.0.0.1/24");
  give(226, "10.1.0.1/24");
  const struct {
    uint32_t length;
    const char *mask;
  } rows[] = {{0, "0.0.0.0"},          {1, "128.0.0.0"},        {8, "255.0.0.0"}, {20, "255.255.240.0"},
              {31, "255.255.255.254"}, {32, "255.255.255.255"}, {33, "0.0.0.0"}, /* is none */
              {4294967295u, "0.0.0.0"}};
  for (const auto &row : rows) {
    bent_output bent(ADDRESS_OF, row.length);
    EXPECT_EQ(get("/routing/if"), expected_interfaces({{3, listed_ipv4("10.0.0.1", row.mask)}}));
    EXPECT_EQ(get("/routing/vlanRtrIf"),
              expected_vlan_interfaces({{226, listed_ipv4("10.1.0.1", row.mask)}}));
    EXPECT_EQ(
        get("/routing/vlanRtrIf/1"),
        expected_vlan_interface(1, 226, "vlan10", 10, {primary_ipv4(std::string("10.1.0.1/") + row.mask)}));
  }
}

TEST_F(RoutingTest, Ipv6AddressesAreWrittenShort) {
  const struct {
    std::string given, listed;
    const char *length;
  } rows[] = {
      {"2001:DB8::A", "2001:db8::a", "64"},
      {"2001:0db8:0000:0000:0000:0000:0000:0001", "2001:db8::1", "128"},
      {"2001:db8:0:0:1:0:0:1", "2001:db8::1:0:0:1", "64"},
      {"2001:0:0:1:0:0:0:1", "2001:0:0:1::1", "64"},
      {"2001:db8:0:1:1:1:1:1", "2001:db8:0:1:1:1:1:1", "64"},
      {"2001:db8::192.0.2.33", "2001:db8::c000:221", "96"},
      {"fe80:0:0:0:0:0:0:1", "fe80::1", "10"},
  };
  route_port(3);
  for (const auto &row : rows) {
    const std::string length = row.length, rest = ", prefix length: " + length + ") successfully.",
                      query = "addrType=3&extArg=0&pfxLen=" + length + "&addr=";
    expect_done("POST", "/routing/if/3/ip", query + row.given,
                "Create Routing Interface IP address (address: " + row.given + rest);
    EXPECT_EQ(get("/routing/if"), expected_interfaces({{3, {listed_ipv6({row.listed + "/" + length})}}}));
    expect_done("DELETE", "/routing/if/3/ip", query + row.listed,
                "Delete Routing Interface IP address (address: " + row.listed + rest);
  }
}

class RoutingAddressFailureTest : public RoutingTest {
protected:
  RoutingAddressFailureTest() {
    make_vlan_interface(10);
    route_port(3);
    give(226, "10.0.0.1/24");
    give(226, "10.0.1.1/24", OPEN_INTF_IP_ADDR_SECONDARY);
    give(226, "10.0.2.1/24", OPEN_INTF_IP_ADDR_SECONDARY);
    give(226, "2001:db8::1/64");
    give(226, "2001:db8::2/64");
    give(3, "10.3.0.1/24");
    give(3, "2001:db8:3::1/64");
  }
  /* The answers in XML: faults are good for one request. */
  void expect_details(const result_nodes &addresses) const {
    EXPECT_EQ(call_xml(routing_api_handler, "GET", "/routing/vlanRtrIf/1"),
              expected_vlan_interface(1, 226, "vlan10", 10, addresses).xml);
  }
  void expect_listed(const result_nodes &addresses) const {
    EXPECT_EQ(call_xml(routing_api_handler, "GET", "/routing/vlanRtrIf"),
              expected_vlan_interfaces({{226, addresses}}).xml);
  }
};

static const result_node PRIMARY = primary_ipv4("10.0.0.1/255.255.255.0");
static const result_node SECONDARY = secondary_ipv4({"10.0.1.1/255.255.255.0", "10.0.2.1/255.255.255.0"});
static const result_node IPV6 = listed_ipv6({"2001:db8::1/64", "2001:db8::2/64"});
static const result_nodes IPV4 = listed_ipv4("10.0.0.1", "255.255.255.0");

TEST_F(RoutingAddressFailureTest, AddressesThatCannotBeReadAreLeftOutOfTheDetails) {
  expect_details({PRIMARY, SECONDARY, IPV6});
  for (open_error_t rc : all_platform_errors()) {
    fault(ADDRESS_OF, rc);
    expect_details({SECONDARY, IPV6});
    fault(SECONDARY_OF, rc);
    expect_details({PRIMARY, IPV6});
    fault(SECONDARY_OF, rc, 1, 1);
    expect_details({PRIMARY, secondary_ipv4({"10.0.1.1/255.255.255.0"}), IPV6});
    fault(ADDRESS_OF, rc, 1, 1);
    expect_details({PRIMARY, SECONDARY});
    fault(ADDRESS_OF, rc, 1, 2);
    expect_details({PRIMARY, SECONDARY, listed_ipv6({"2001:db8::1/64"})});
  }
}

TEST_F(RoutingAddressFailureTest, AddressesThatCannotBeReadAreLeftOutOfTheLists) {
  expect_listed(IPV4 + result_nodes{IPV6});
  for (open_error_t rc : all_platform_errors()) {
    fault(ADDRESS_OF, rc);
    expect_listed({IPV6});
    fault(ADDRESS_OF, rc, 1, 1);
    expect_listed(IPV4);
    fault(ADDRESS_OF, rc, 1, 2);
    expect_listed(IPV4 + result_nodes{listed_ipv6({"2001:db8::1/64"})});
    fault(ADDRESS_OF, rc, 2);
    EXPECT_EQ(call_xml(routing_api_handler, "GET", "/routing/if"), expected_interfaces({{3}}).xml);
  }
}
