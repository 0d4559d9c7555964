/* The interface module: IP addresses in the details of an interface. */
#include "tests/unit/modules/interface_fixture.h"

static result_node primary(const std::string &address) {
  return text("primary_ip_address", address);
}

static result_node secondary(const std::vector<std::string> &addresses) {
  std::vector<result_node> leaves;
  for (const std::string &address : addresses)
    leaves.push_back(text(std::to_string(leaves.size() + 1), "secondary_ipv4_address", address));
  return branch("secondary_ip_addresses", leaves);
}

static result_node ipv6(const std::vector<std::string> &addresses) {
  std::vector<result_node> leaves;
  for (const std::string &address : addresses)
    leaves.push_back(text(std::to_string(leaves.size() + 1), "prefix_and_prefix_length", address));
  return branch("ipv6_addresses", leaves);
}

class InterfaceAddressTest : public InterfaceTest {
protected:
  void expect_addresses(const std::vector<result_node> &addresses) const {
    interface_details details = port_details(3);
    details.addresses = addresses;
    EXPECT_EQ(get("/if/3"), expected_details(details));
  }
};

TEST_F(InterfaceAddressTest, PrimaryAddressHasItsMask) {
  configure("interface 0/3 ip address 10.0.0.1/24\n");
  Answers answers = get("/if/3");
  EXPECT_NE(answers.xml.find("<MTU_size>1518</MTU_size><primary_ip_address>10.0.0.1/255.255.255.0"
                             "</primary_ip_address></interface>"),
            std::string::npos)
      << answers.xml;
  EXPECT_NE(
      answers.json.find("\"MTU_size\": 1518, \"primary_ip_address\": \"10.0.0.1\\/255.255.255.0\" } } } }"),
      std::string::npos)
      << answers.json;
  expect_addresses({primary("10.0.0.1/255.255.255.0")});
}

TEST_F(InterfaceAddressTest, MaskIsAsLongAsThePrefix) {
  configure("interface 0/3 ip address 10.0.0.1/24\n");
  struct {
    uint32_t length;
    const char *mask;
  } rows[] = {{0, "0.0.0.0"},          {1, "128.0.0.0"},        {8, "255.0.0.0"}, {20, "255.255.240.0"},
              {31, "255.255.255.254"}, {32, "255.255.255.255"}, {33, "0.0.0.0"}, /* is none */
              {4294967295u, "0.0.0.0"}};
  for (const auto &row : rows) {
    bent_output bent("rpcclt_openapiRtrIntfIpAddrGet", row.length);
    expect_addresses({primary(std::string("10.0.0.1/") + row.mask)});
  }
}

TEST_F(InterfaceAddressTest, SecondaryAddressesAreNumberedByThePlatform) {
  configure("interface 0/3 ip address 10.0.0.1/24\n"
            "interface 0/3 ip secondary-address 10.0.1.1/16\n"
            "interface 0/3 ip secondary-address 172.16.0.9/30\n"
            "interface 0/3 ip secondary-address 192.168.0.1/32\n");
  expect_addresses(
      {primary("10.0.0.1/255.255.255.0"),
       secondary({"10.0.1.1/255.255.0.0", "172.16.0.9/255.255.255.252", "192.168.0.1/255.255.255.255"})});
}

TEST_F(InterfaceAddressTest, Ipv6AddressesAreNumberedFromOne) {
  configure("interface 0/3 ipv6 address 2001:db8::1/64\n"
            "interface 0/3 ipv6 address 2001:db8:0:0:1::1/128\n"
            "interface 0/3 ipv6 address fd00::1/8\n");
  expect_addresses({ipv6({"2001:db8::1/64", "2001:db8::1:0:0:1/128", "fd00::1/8"})});
}

TEST_F(InterfaceAddressTest, AllKindsStandInTheirOrder) {
  configure("interface 0/3 ipv6 address 2001:db8::1/64\n"
            "interface 0/3 ip address 10.0.0.1/24\n"
            "interface 0/3 ip secondary-address 10.0.1.1/24\n"
            "interface 0/4 ip address 10.9.9.9/24\n");
  expect_addresses(
      {primary("10.0.0.1/255.255.255.0"), secondary({"10.0.1.1/255.255.255.0"}), ipv6({"2001:db8::1/64"})});
}

TEST_F(InterfaceAddressTest, LoopbackHasAddresses) {
  configure("interface loopback0 ip address 10.255.0.1/32\n"
            "interface loopback0 ipv6 address 2001:db8::ff/128\n");
  interface_details details = {120, "loopback0", TEST_MAC};
  details.speed = details.auto_neg = details.duplex = "unknown";
  details.pvid = 0;
  details.addresses = {primary("10.255.0.1/255.255.255.255"), ipv6({"2001:db8::ff/128"})};
  EXPECT_EQ(get("/if/120"), expected_details(details));
}

/* --- Failures --------------------------------------------------------------------------------------------
 */

class InterfaceAddressFailureTest : public InterfaceAddressTest {
protected:
  InterfaceAddressFailureTest() {
    configure("interface 0/3 ip address 10.0.0.1/24\n"
              "interface 0/3 ip secondary-address 10.0.1.1/24\n"
              "interface 0/3 ip secondary-address 10.0.2.1/24\n"
              "interface 0/3 ipv6 address 2001:db8::1/64\n"
              "interface 0/3 ipv6 address 2001:db8::2/64\n");
  }
  /* The answer in XML to GET /if/3 with these addresses: faults are good for one request. */
  void expect_xml(const std::vector<result_node> &addresses) const {
    interface_details details = port_details(3);
    details.addresses = addresses;
    EXPECT_EQ(call_xml(interface_api_handler, "GET", "/if/3"), expected_details(details).xml);
  }
};

static const result_node PRIMARY = primary("10.0.0.1/255.255.255.0");
static const result_node SECONDARY = secondary({"10.0.1.1/255.255.255.0", "10.0.2.1/255.255.255.0"});
static const result_node IPV6 = ipv6({"2001:db8::1/64", "2001:db8::2/64"});

TEST_F(InterfaceAddressFailureTest, PrimaryAddressThatCannotBeReadIsLeftOut) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiRtrIntfIpAddrGet", rc);
    expect_xml({SECONDARY, IPV6});
  }
}

TEST_F(InterfaceAddressFailureTest, SecondaryAddressesEndQuietlyAtAnyFailure) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiRtrIntfSecIpAddrGet", rc);
    expect_xml({PRIMARY, IPV6});
    fault("rpcclt_openapiRtrIntfSecIpAddrGet", rc, 1, 1);
    expect_xml({PRIMARY, secondary({"10.0.1.1/255.255.255.0"}), IPV6});
  }
}

TEST_F(InterfaceAddressFailureTest, Ipv6AddressesEndQuietlyAtAnyFailure) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiRtrIntfIpAddrGet", rc, 1, 1); /* the first call is for the primary address */
    expect_xml({PRIMARY, SECONDARY});
    fault("rpcclt_openapiRtrIntfIpAddrGet", rc, 1, 2);
    expect_xml({PRIMARY, SECONDARY, ipv6({"2001:db8::1/64"})});
  }
}
