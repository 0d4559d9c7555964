/* The routing module: giving interfaces addresses and taking them away, on the real switch. Which requests
 * are refused: test_routing_address_matrix.cpp. */
#include "tests/unit/modules/routing_fixture.h"

static const char NO_CLIENT[] = "Operation failed. The interface is assigned an IP address by manual "
                                "configuration, or DHCP client has already been disabled.";

/* The two kinds of interfaces that addresses are given to: a port, and the second VLAN routing interface. */
struct address_target {
  const char *uri;
  unsigned ifNum;
  const char *kind; /* in messages */
};

static const address_target TARGETS[] = {{"/routing/if/5/ip", 5, "Routing Interface"},
                                         {"/routing/vlanRtrIf/2/ip", 227, "Routing Vlan Interface"}};

static std::string said(const std::string &action, const address_target &target, const std::string &address,
                        const std::string &length) {
  return action + " " + target.kind + " IP address (address: " + address + ", prefix length: " + length +
         ") successfully.";
}

class RoutingAddressTest : public RoutingTest {
protected:
  RoutingAddressTest() {
    for (uint32_t vlan : {10, 20}) make_vlan_interface(vlan);
    route_port(5);
    forget_calls();
  }
  /* The target in its list, with these addresses. */
  void expect_listed(const address_target &target, const result_nodes &addresses) const {
    bool port = target.ifNum == 5;
    EXPECT_EQ(get(port ? "/routing/if" : "/routing/vlanRtrIf"),
              port ? expected_interfaces({{5, addresses}})
                   : expected_vlan_interfaces({{226}, {227, addresses}}));
  }
};

TEST_F(RoutingAddressTest, Ipv4AddressIsGivenAndTaken) {
  for (const address_target &target : TARGETS) {
    for (const char *format : {"xml", "json"}) {
      const std::string ifNum = std::to_string(target.ifNum);
      expect_done("POST", target.uri, "addrType=0&addr=10.0.0.1&pfxLen=24&extArg=0",
                  said("Create", target, "10.0.0.1", "24"), format);
      EXPECT_EQ(recorded_arguments(ADDRESS_ADD), "1 " + ifNum + " 0 1:10.0.0.1 24 0");
      expect_listed(target, listed_ipv4("10.0.0.1", "255.255.255.0"));
      expect_done("DELETE", target.uri, "addrType=0&addr=10.0.0.1&pfxLen=24&extArg=0",
                  said("Delete", target, "10.0.0.1", "24"), format);
      EXPECT_EQ(recorded_arguments(ADDRESS_DELETE), "1 " + ifNum + " 0 1:10.0.0.1 24 0");
      expect_listed(target, {});
    }
  }
}

TEST_F(RoutingAddressTest, AddressOfMethod1IsGivenAndTaken) {
  give(227, "10.0.0.1/24");
  expect_done("POST", "/routing/vlanRtrIf/2/ip", "addrType=1&addr=10.0.1.1&pfxLen=24&extArg=0",
              said("Create", TARGETS[1], "10.0.1.1", "24"));
  EXPECT_EQ(recorded_arguments(ADDRESS_ADD), "1 227 1 1:10.0.1.1 24 0");
  EXPECT_EQ(get("/routing/vlanRtrIf/2"),
            expected_vlan_interface(
                2, 227, "vlan20", 20,
                {primary_ipv4("10.0.0.1/255.255.255.0"), secondary_ipv4({"10.0.1.1/255.255.255.0"})}));
  expect_done("DELETE", "/routing/vlanRtrIf/2/ip", "addrType=1&addr=10.0.1.1&pfxLen=24&extArg=0",
              said("Delete", TARGETS[1], "10.0.1.1", "24"));
  EXPECT_EQ(recorded_arguments(ADDRESS_DELETE), "1 227 1 1:10.0.1.1 24 0");
  EXPECT_EQ(get("/routing/vlanRtrIf/2"),
            expected_vlan_interface(2, 227, "vlan20", 20, {primary_ipv4("10.0.0.1/255.255.255.0")}));
}

/* The address stands in the message as it was written. */
TEST_F(RoutingAddressTest, Ipv6AddressIsGivenAndTaken) {
  for (const address_target &target : TARGETS) {
    const std::string ifNum = std::to_string(target.ifNum);
    expect_done("POST", target.uri, "addrType=3&addr=2001:DB8:0::1&pfxLen=064&extArg=0",
                said("Create", target, "2001:DB8:0::1", "64"));
    EXPECT_EQ(recorded_arguments(ADDRESS_ADD), "2 " + ifNum + " 0 2:2001:db8::1 64 0");
    expect_listed(target, {listed_ipv6({"2001:db8::1/64"})});
    expect_done("DELETE", target.uri, "addrType=3&addr=2001:db8::1&pfxLen=64&extArg=0",
                said("Delete", target, "2001:db8::1", "64"));
    EXPECT_EQ(recorded_arguments(ADDRESS_DELETE), "2 " + ifNum + " 0 2:2001:db8::1 64 0");
    expect_listed(target, {});
  }
}

TEST_F(RoutingAddressTest, DhcpNeedsNeitherAddressNorLength) {
  for (const address_target &target : TARGETS) {
    for (const char *format : {"xml", "json"}) {
      const std::string ifNum = std::to_string(target.ifNum);
      expect_done("POST", target.uri, "addrType=2&extArg=0", said("Create", target, "", "0"), format);
      EXPECT_EQ(recorded_arguments(ADDRESS_ADD), "1 " + ifNum + " 2 0: 0 0");
      expect_done("DELETE", target.uri, "addrType=2&extArg=0", "Disable the DHCP client on the interface.",
                  format);
      EXPECT_EQ(recorded_arguments(ADDRESS_DELETE), "1 " + ifNum + " 2 0: 0 0");
    }
  }
}

TEST_F(RoutingAddressTest, Ipv6IsObtainedWithoutAnAddress) {
  for (const address_target &target : TARGETS) {
    const std::string ifNum = std::to_string(target.ifNum);
    expect_done("POST", target.uri, "addrType=4&extArg=1", said("Create", target, "", "0"));
    EXPECT_EQ(recorded_arguments(ADDRESS_ADD), "2 " + ifNum + " 2 0: 0 1");
    expect_done("DELETE", target.uri, "addrType=4&extArg=1", "Disable the DHCP client on the interface.");
    EXPECT_EQ(recorded_arguments(ADDRESS_DELETE), "2 " + ifNum + " 2 0: 0 1");
  }
}

/* Whatever else is given with DHCP is told in the message and handed on; the switch does not look at it. */
TEST_F(RoutingAddressTest, DhcpMayBeGivenAnAddress) {
  expect_done("POST", "/routing/if/5/ip", "addrType=2&addr=2001:db8::1&pfxLen=0&extArg=0",
              said("Create", TARGETS[0], "2001:db8::1", "0"));
  EXPECT_EQ(recorded_arguments(ADDRESS_ADD), "1 5 2 2:2001:db8::1 0 0");
  expect_done("POST", "/routing/if/5/ip", "addrType=2&pfxLen=32&extArg=0",
              said("Create", TARGETS[0], "", "32"));
  EXPECT_EQ(recorded_arguments(ADDRESS_ADD), "1 5 2 0: 32 0");
}

TEST_F(RoutingAddressTest, InterfaceWithoutDhcpCannotEndIt) {
  for (const address_target &target : TARGETS) {
    for (const char *type : {"2", "4"})
      expect_refused("DELETE", target.uri, std::string("addrType=") + type + "&extArg=0",
                     expected_answers(1, NO_CLIENT));
  }
  give(5, "10.0.0.1/24");
  expect_refused("DELETE", "/routing/if/5/ip", "addrType=2&extArg=0", expected_answers(1, NO_CLIENT));
  expect_listed(TARGETS[0], listed_ipv4("10.0.0.1", "255.255.255.0"));
}

TEST_F(RoutingAddressTest, OnlyTheAnswerErrorOfDhcpIsTheOneOfNoClient) {
  for (const address_target &target : TARGETS) {
    for (open_error_t rc : all_platform_errors()) {
      for (const char *type : {"0", "1", "2", "3", "4"}) {
        bool dhcp = *type == '2' || *type == '4';
        std::string query = std::string("addrType=") + type +
                            "&pfxLen=24&extArg=0&addr=" + (*type < '3' ? "10.0.0.1" : "2001:db8::1");
        fault(ADDRESS_DELETE, rc, 3);
        expect_refused("DELETE", target.uri, query,
                       dhcp && rc == OPEN_E_ERROR ? expected_answers(1, NO_CLIENT)
                                                  : expected_platform_error(rc));
        fault(ADDRESS_ADD, rc, 3);
        expect_refused("POST", target.uri, query, expected_platform_error(rc));
      }
    }
  }
}

TEST_F(RoutingAddressTest, InterfaceThatHasNoAddressesAnswers99) {
  const std::string query = "addrType=0&addr=10.0.0.1&pfxLen=24&extArg=0";
  for (const char *uri :
       {"/routing/if/0/ip", "/routing/if/55/ip", "/routing/if/1000/ip", "/routing/if/99999999999/ip",
        "/routing/vlanRtrIf/3/ip", "/routing/vlanRtrIf/2147483647/ip", "/routing/vlanRtrIf/99999999999/ip"}) {
    expect_refused("POST", uri, query, expected_platform_error(OPEN_E_NOT_FOUND));
    expect_refused("DELETE", uri, query, expected_platform_error(OPEN_E_NOT_FOUND));
  }
}

TEST_F(RoutingAddressTest, LogicalIdCountsFrom226WhenTheFirstInterfaceIsNotTold) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiIfFirstGet", rc, 2);
    request("POST", "/routing/vlanRtrIf/3/ip", "addrType=2&extArg=0");
    EXPECT_EQ(recorded_arguments(ADDRESS_ADD), "1 228 2 0: 0 0") << rc;
    fault("rpcclt_openapiIfFirstGet", rc, 2);
    request("DELETE", "/routing/vlanRtrIf/3/ip", "addrType=2&extArg=0");
    EXPECT_EQ(recorded_arguments(ADDRESS_DELETE), "1 228 2 0: 0 0") << rc;
  }
}

TEST_F(RoutingAddressTest, AddressThatTheInterfaceDoesNotHaveAnswers99) {
  for (const address_target &target : TARGETS) {
    for (const char *query :
         {"addrType=0&addr=10.0.0.1&pfxLen=24&extArg=0", "addrType=3&addr=2001:db8::1&pfxLen=64&extArg=0"})
      expect_refused("DELETE", target.uri, query, expected_platform_error(OPEN_E_NOT_FOUND));
  }
}

TEST_F(RoutingAddressTest, LastArgumentIsHandedOn) {
  expect_done("POST", "/routing/if/5/ip", "addrType=3&addr=2001:db8::&pfxLen=64&extArg=1",
              said("Create", TARGETS[0], "2001:db8::", "64"));
  EXPECT_EQ(recorded_arguments(ADDRESS_ADD), "2 5 0 2:2001:db8:: 64 1");
}

TEST_F(RoutingAddressTest, TextThatThePlatformCannotParseAnswers96) {
  const std::string query = "addr=10.0.0.1&pfxLen=24&extArg=0&addrType=";
  for (const address_target &target : TARGETS) {
    for (const char *method : {"POST", "DELETE"}) {
      for (open_error_t rc : all_platform_errors()) {
        for (const char *type : {"0", "2"}) {
          fault("rpcclt_openapiInetAddrGet", rc, 3);
          expect_refused(method, target.uri, query + type, expected_platform_error(OPEN_E_FAIL));
        }
      }
    }
  }
  EXPECT_EQ(recorded_arguments(ADDRESS_ADD) + recorded_arguments(ADDRESS_DELETE), "");
}
