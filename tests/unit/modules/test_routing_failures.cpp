/* The routing module when the platform fails, and when it answers what the software switch never does. */
#include "tests/unit/modules/failing_calls.h"
#include "tests/unit/modules/routing_fixture.h"

class RoutingFailureTest : public RoutingTest {
protected:
  RoutingFailureTest() {
    for (uint32_t vlan : {10, 20}) make_vlan_interface(vlan);
    EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 30), OPEN_E_NONE);
    route_port(5);
    give(5, "10.0.0.1/24");
    give(227, "2001:db8::1/64");
  }
};

TEST_F(RoutingFailureTest, EveryCallThatFailsIsAnsweredOnceAndEndsTheRequest) {
  const operation_calls operations[] = {
      {"DELETE", "/routing/vlanRtrIf", "vlanId=10", {"rpcclt_openapiRtrVlanIntfDelete"}},
      {"DELETE", "/routing/if/5/ip", "addrType=0&addr=10.0.0.1&pfxLen=24&extArg=0", {ADDRESS_DELETE}},
      {"DELETE",
       "/routing/vlanRtrIf/2/ip",
       "addrType=3&addr=2001:db8::1&pfxLen=64&extArg=0",
       {ADDRESS_DELETE}},
      {"PUT", "/routing/ipv4/adminMode", "value=1", {"rpcclt_openapiRtrAdminModeSet"}},
      {"PUT", "/routing/ipv6/adminMode", "value=1", {"rpcclt_openapiRtrAdminModeSet"}},
      {"PUT", "/routing/if/5/adminMode", "value=0", {"rpcclt_openapiRtrIntfRtrAdminModeSet"}},
      {"GET", "/routing", "", {"rpcclt_openapiRtrAdminModeGet"}},
      {"GET",
       "/routing/vlanRtrIf/1",
       "",
       {"rpcclt_openapiIntfNameSizeGet", "rpcclt_openapiRtrIntfNameGet", "rpcclt_openapiRtrIntfVlanIdGet"},
       {"rpcclt_openapiRtrIntfIpAddrGet", "rpcclt_openapiRtrIntfSecIpAddrGet"}},
      {"GET",
       "/routing/if",
       "",
       {"rpcclt_openapiRtrIntfNextGet"},
       {"rpcclt_openapiRtrIntfTypeGet", "rpcclt_openapiRtrIntfIpAddrGet"}},
      {"POST", "/routing/vlanRtrIf", "vlanId=30", {"rpcclt_openapiRtrVlanIntfCreate"}},
      {"POST", "/routing/if/5/ip", "addrType=0&addr=10.5.0.1&pfxLen=24&extArg=0", {ADDRESS_ADD}},
      {"POST", "/routing/vlanRtrIf/2/ip", "addrType=4&extArg=0", {ADDRESS_ADD}},
  };
  for (const operation_calls &operation : operations)
    expect_every_failure_answered(routing_api_handler, handle, operation);
  EXPECT_EQ(get("/routing"), expected_modes("disable", "disable"));
  EXPECT_EQ(get("/routing/if"), expected_interfaces({{5, listed_ipv4("10.0.0.1", "255.255.255.0")}}));
  EXPECT_EQ(get("/routing/vlanRtrIf"),
            expected_vlan_interfaces({{226}, {227, {listed_ipv6({"2001:db8::1/64"})}}}));
}

TEST_F(RoutingFailureTest, FailureAtTheSecondFamilyIsAnsweredWithoutTheFirst) {
  expect_failures_answered(routing_api_handler, handle, {"GET", "/routing", "", {}},
                           "rpcclt_openapiRtrAdminModeGet", 1);
}

/* Nothing of the tree that was begun is sent with an error. */
TEST_F(RoutingFailureTest, LogicalIdIsNotAskedForWithoutAName) {
  fault("rpcclt_openapiRtrIntfTypeGet", OPEN_E_EXISTS);
  fault("rpcclt_openapiRtrIntfNameGet", OPEN_E_TIMEOUT);
  EXPECT_EQ(call_xml(routing_api_handler, "GET", "/routing/vlanRtrIf/1"),
            expected_platform_error(OPEN_E_TIMEOUT).xml);
  EXPECT_EQ(lab("fault list"), "rpcclt_openapiRtrIntfTypeGet OPEN_E_EXISTS 1 0\n");
  lab("fault clear");
}

/* --- Buffers -------------------------------------------------------------------------------------------- */

TEST_F(RoutingFailureTest, NameMayFillTheBufferToTheLastByte) {
  for (uint32_t size : {7u, 8u, 5000u}) { /* "vlan10" and its end */
    bent_output bent("rpcclt_openapiIntfNameSizeGet", size);
    EXPECT_EQ(get("/routing/vlanRtrIf/1"), expected_vlan_interface(1, 226, "vlan10", 10)) << size;
  }
  for (uint32_t size : {0u, 6u}) { /* the platform refuses a buffer that is too small */
    bent_output bent("rpcclt_openapiIntfNameSizeGet", size);
    EXPECT_EQ(get("/routing/vlanRtrIf/1"), expected_platform_error(OPEN_E_PARAM)) << size;
  }
}

TEST_F(RoutingFailureTest, NameWithoutAnEndIsAsLongAsItsBuffer) {
  bent_output size("rpcclt_openapiIntfNameSizeGet", 40);
  bent_output name("rpcclt_openapiRtrIntfNameGet", 'x');
  EXPECT_EQ(get("/routing/vlanRtrIf/1"), expected_vlan_interface(1, 226, std::string(40, 'x'), 10));
}

TEST_F(RoutingFailureTest, NameThatThereIsNoMemoryForAnswers97) {
  little_memory limit;
  bent_output size("rpcclt_openapiIntfNameSizeGet", 0xffffffffu);
  EXPECT_EQ(get("/routing/vlanRtrIf/1"), expected_platform_error(OPEN_E_INTERNAL));
}

/* --- Numbers -------------------------------------------------------------------------------------------- */

/* Numbers of the platform are unsigned, those of results are not. */
TEST_F(RoutingFailureTest, HugeNumbersAreWrittenSigned) {
  bent_output bent("rpcclt_openapiRtrIntfVlanIdGet", 0xffffffffu);
  EXPECT_EQ(
      get("/routing/vlanRtrIf/1"),
      expected_data({branch("vlan_routing_interface",
                            {number("logical_interface_id", 1), number("vlan_routing_interface_num", 226),
                             text("vlan_routing_interface_name", "vlan10"), number("vlan_id", -1)})}));
}

TEST_F(RoutingFailureTest, PrefixesOfUnknownFamilyHaveNoAddress) {
  bent_output family("rpcclt_openapiRtrIntfIpAddrGet family", 7);
  EXPECT_EQ(get("/routing/if"), expected_interfaces({{5, listed_ipv4("", "255.255.255.0")}}));
}

/* --- Walks without an end ------------------------------------------------------------------------------- */

TEST_F(RoutingFailureTest, ListsThatDoNotEndAreGivenUp) {
  {
    bent_output same_again("rpcclt_openapiRtrIntfNextGet", 5);
    EXPECT_EQ(get("/routing/if"), expected_platform_error(OPEN_E_INTERNAL));
  }
  bent_output same_again("rpcclt_openapiRtrIntfNextGet", 226);
  EXPECT_EQ(get("/routing/vlanRtrIf"), expected_platform_error(OPEN_E_INTERNAL));
}

/* Addresses are no reason to fail. */
TEST_F(RoutingFailureTest, AddressesThatDoNotEndAreCutOff) {
  {
    give(226, "10.226.0.1/24");
    give(226, "10.226.1.1/24", OPEN_INTF_IP_ADDR_SECONDARY);
    bent_output before_the_first("rpcclt_openapiRtrIntfSecIpAddrGet", 0);
    result_nodes leaves(MAX_LIST_ENTRIES, text("0", "secondary_ipv4_address", "10.226.1.1/255.255.255.0"));
    EXPECT_TRUE(call_xml(routing_api_handler, "GET", "/routing/vlanRtrIf/1") ==
                expected_vlan_interface(
                    1, 226, "vlan10", 10,
                    {primary_ipv4("10.226.0.1/255.255.255.0"), branch("secondary_ipv4_addresses", leaves)})
                    .xml);
  }
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(handle, 10), OPEN_E_NONE);
  /* An IPv4 address as cursor begins the walk again; these four bytes are those of 2001:db8:: */
  bent_output no_cursor("rpcclt_openapiRtrIntfIpAddrGet family", OPEN_AF_INET);
  result_nodes leaves;
  for (int key = 1; key <= MAX_LIST_ENTRIES; key++)
    leaves.push_back(text(std::to_string(key), "prefix_and_prefix_length", "184.13.1.32/64"));
  EXPECT_TRUE(get("/routing/vlanRtrIf") ==
              expected_vlan_interfaces({{227, {branch("ipv6_addresses", leaves)}}}, 227));
}

/* Interfaces that are skipped count as well. */
TEST_F(RoutingFailureTest, ListThatDoesNotEndIsGivenUpThoughNothingIsListed) {
  fault("rpcclt_openapiRtrIntfVlanIdGet", OPEN_E_NOT_FOUND, 1000000);
  bent_output same_again("rpcclt_openapiRtrIntfNextGet", 226);
  EXPECT_EQ(get("/routing/vlanRtrIf"), expected_platform_error(OPEN_E_INTERNAL));
  lab("fault clear");
}
