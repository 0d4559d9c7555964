/* Tests of the routing functions of the C interface that read the addresses of interfaces. */
#include "platform/api/openapi_routing.h"

#include "tests/unit/platform/softswitch_test_support.h"

#include <string.h>

namespace {

class InterfaceAddresses : public SoftSwitch {
protected:
  void SetUp() override {
    SoftSwitch::SetUp();
    clear();
  }

  void clear() { memset(&prefix, 0, sizeof prefix); }

  open_error_t get(uint32_t family, uint32_t interface) {
    return rpcclt_openapiRtrIntfIpAddrGet(&handle, family, interface, &prefix);
  }

  open_error_t get_secondary(uint32_t interface, uint32_t *index) {
    return rpcclt_openapiRtrIntfSecIpAddrGet(&handle, OPEN_AF_INET, interface, &prefix, index);
  }

  std::string text() { return softswitch::inet_prefix_text(prefix); }

  /* All IPv6 addresses, as a client walks over them. */
  std::vector<std::string> walk_ipv6(uint32_t interface) {
    std::vector<std::string> found;
    clear();
    open_error_t rc = get(OPEN_AF_INET6, interface);
    for (; rc == OPEN_E_NONE; rc = get(OPEN_AF_INET6, interface)) found.push_back(text());
    EXPECT_EQ(rc, OPEN_E_FAIL);
    return found;
  }

  /* All secondary addresses, each with its index. */
  std::vector<std::string> walk_secondary(uint32_t interface) {
    std::vector<std::string> found;
    uint32_t index = 0;
    clear();
    open_error_t rc = get_secondary(interface, &index);
    for (; rc == OPEN_E_NONE; rc = get_secondary(interface, &index))
      found.push_back(std::to_string(index) + " " + text());
    EXPECT_EQ(rc, OPEN_E_FAIL);
    return found;
  }

  /* The IPv6 address after this one; the code in its place when there is none. */
  std::string after(const char *address, uint32_t interface) {
    clear();
    EXPECT_TRUE(softswitch::inet_address_read(address, &prefix.ipAddr)) << address;
    open_error_t rc = get(OPEN_AF_INET6, interface);
    return rc == OPEN_E_NONE ? text() : std::to_string(rc);
  }

  using list = std::vector<std::string>;
  open_inet_pfx_t prefix;
};

TEST_F(InterfaceAddresses, FactorySwitchHasNone) {
  for (uint32_t interface = 1; interface <= 127; interface++) {
    uint32_t index = 0;
    EXPECT_EQ(get(OPEN_AF_INET, interface), OPEN_E_NOT_FOUND) << interface;
    EXPECT_EQ(get(OPEN_AF_INET6, interface), OPEN_E_FAIL) << interface;
    EXPECT_EQ(get_secondary(interface, &index), OPEN_E_FAIL) << interface;
  }
}

TEST_F(InterfaceAddresses, UnknownFamiliesAreRefused) {
  ASSERT_EQ(commit("interface 0/1 ip address 10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/1 ip secondary-address 10.0.0.2/24"), OPEN_E_NONE);
  uint32_t index = 0;
  for (uint32_t family : {0u, 3u, UINT32_MAX}) {
    EXPECT_EQ(get(family, 1), OPEN_E_PARAM) << family;
    EXPECT_EQ(rpcclt_openapiRtrIntfSecIpAddrGet(&handle, family, 1, &prefix, &index), OPEN_E_PARAM);
  }
  EXPECT_EQ(rpcclt_openapiRtrIntfSecIpAddrGet(&handle, OPEN_AF_INET6, 1, &prefix, &index), OPEN_E_PARAM)
      << "no IPv6 address is a secondary one";
}

TEST_F(InterfaceAddresses, AbsentInterfacesAreToldFromImpossibleOnes) {
  const std::pair<uint32_t, open_error_t> rows[] = {
      {226, OPEN_E_NOT_FOUND}, {353, OPEN_E_NOT_FOUND}, {0, OPEN_E_PARAM},         {128, OPEN_E_PARAM},
      {225, OPEN_E_PARAM},     {354, OPEN_E_PARAM},     {UINT32_MAX, OPEN_E_PARAM}};
  for (const auto &[interface, result] : rows) {
    uint32_t index = 0;
    EXPECT_EQ(get(OPEN_AF_INET, interface), result) << interface;
    EXPECT_EQ(get(OPEN_AF_INET6, interface), result) << interface;
    EXPECT_EQ(get_secondary(interface, &index), result) << interface;
  }
}

TEST_F(InterfaceAddresses, PrimaryAddressComesWholeWhateverThePrefixHeld) {
  ASSERT_EQ(commit("interface loopback7 ip address 192.168.1.2/30"), OPEN_E_NONE);
  open_inet_pfx_t wanted;
  memset(&wanted, 0, sizeof wanted);
  wanted.ipAddr.family = OPEN_AF_INET;
  wanted.ipAddr.addr.ipv4 = 0xc0a80102;
  wanted.pfxLen = 30;
  for (int garbage : {0, 0x5a, 0xff}) {
    memset(&prefix, garbage, sizeof prefix);
    ASSERT_EQ(get(OPEN_AF_INET, 127), OPEN_E_NONE);
    EXPECT_EQ(memcmp(&prefix, &wanted, sizeof prefix), 0) << text();
  }
  EXPECT_EQ(get(OPEN_AF_INET, 127), OPEN_E_NONE) << "there is no walk: it comes each time";
  restart();
  clear();
  ASSERT_EQ(get(OPEN_AF_INET, 127), OPEN_E_NONE);
  EXPECT_EQ(memcmp(&prefix, &wanted, sizeof prefix), 0) << text();
}

TEST_F(InterfaceAddresses, Ipv6AddressComesWhole) {
  ASSERT_EQ(commit("interface 0/1 ipv6 address 2001:db8::a:1/127"), OPEN_E_NONE);
  open_inet_pfx_t wanted;
  memset(&wanted, 0, sizeof wanted);
  wanted.ipAddr.family = OPEN_AF_INET6;
  const uint8_t bytes[16] = {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x0a, 0, 0x01};
  memcpy(wanted.ipAddr.addr.ipv6.addr8, bytes, sizeof bytes);
  wanted.pfxLen = 127;
  ASSERT_EQ(get(OPEN_AF_INET6, 1), OPEN_E_NONE);
  EXPECT_EQ(memcmp(&prefix, &wanted, sizeof prefix), 0) << text();
}

TEST_F(InterfaceAddresses, SecondaryAddressesComeInOrderOfConfigurationCountedFromOne) {
  ASSERT_EQ(commit("interface 0/1 ip address 10.0.0.1/24"), OPEN_E_NONE);
  EXPECT_EQ(walk_secondary(1), list());
  for (const char *each : {"10.0.0.9/24", "10.0.0.3/25", "172.16.0.1/16"})
    ASSERT_EQ(commit(std::string("interface 0/1 ip secondary-address ") + each), OPEN_E_NONE) << each;
  ASSERT_EQ(commit("interface 0/2 ip address 10.0.1.1/24"), OPEN_E_NONE);
  EXPECT_EQ(walk_secondary(1), (list{"1 10.0.0.9/24", "2 10.0.0.3/25", "3 172.16.0.1/16"}));
  EXPECT_EQ(walk_secondary(2), list());
  ASSERT_EQ(commit("no interface 0/1 ip secondary-address 10.0.0.9/24"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/1 ip secondary-address 10.0.0.2/24"), OPEN_E_NONE);
  EXPECT_EQ(walk_secondary(1), (list{"1 10.0.0.3/25", "2 172.16.0.1/16", "3 10.0.0.2/24"}));
  restart();
  EXPECT_EQ(walk_secondary(1), (list{"1 10.0.0.3/25", "2 172.16.0.1/16", "3 10.0.0.2/24"}));
}

TEST_F(InterfaceAddresses, IndexBeyondTheLastSecondaryAddressEndsTheWalk) {
  ASSERT_EQ(commit("interface 0/1 ip address 10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/1 ip secondary-address 10.0.0.2/24"), OPEN_E_NONE);
  for (uint32_t start : {1u, 2u, UINT32_MAX - 1, UINT32_MAX}) {
    uint32_t index = start;
    EXPECT_EQ(get_secondary(1, &index), OPEN_E_FAIL) << start;
    EXPECT_EQ(index, start);
  }
}

TEST_F(InterfaceAddresses, Ipv6AddressesComeInAscendingOrder) {
  for (const char *each : {"fe80::1/64", "2001:db8:0:2::1/64", "2001:db8::ff/64", "2001:db8::1/64",
                           "fc00::1/7", "::2/128", "2001:db8::100/120"})
    ASSERT_EQ(commit(std::string("interface 3/1 ipv6 address ") + each), OPEN_E_NONE) << each;
  ASSERT_EQ(commit("interface 3/2 ipv6 address fe80::1/64"), OPEN_E_NONE);
  const list all = {"::2/128",           "2001:db8::1/64",     "2001:db8::ff/64",
                    "2001:db8::100/120", "2001:db8:0:2::1/64", "fc00::1/7",
                    "fe80::1/64"};
  EXPECT_EQ(walk_ipv6(56), all);
  EXPECT_EQ(walk_ipv6(57), list{"fe80::1/64"});
  EXPECT_EQ(walk_ipv6(58), list());
  restart();
  EXPECT_EQ(walk_ipv6(56), all);
}

TEST_F(InterfaceAddresses, Ipv6WalkGoesOnAfterAnAddressThatIsGoneOrWasNever) {
  for (const char *each : {"2001:db8::1/64", "2001:db8::2/64", "2001:db8::3/64"})
    ASSERT_EQ(commit(std::string("interface 0/1 ipv6 address ") + each), OPEN_E_NONE) << each;
  ASSERT_EQ(commit("no interface 0/1 ipv6 address 2001:db8::2/64"), OPEN_E_NONE);
  EXPECT_EQ(after("2001:db8::2", 1), "2001:db8::3/64");
  EXPECT_EQ(after("::", 1), "2001:db8::1/64");
  EXPECT_EQ(after("2001:db8::", 1), "2001:db8::1/64");
  EXPECT_EQ(after("2001:db8::1", 1), "2001:db8::3/64");
  EXPECT_EQ(after("2001:db8::3", 1), std::to_string(OPEN_E_FAIL));
  EXPECT_EQ(after("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", 1), std::to_string(OPEN_E_FAIL));
}

TEST_F(InterfaceAddresses, Ipv6WalkBeginsWhenThePrefixHoldsAnIpv4Address) {
  ASSERT_EQ(commit("interface 0/1 ip address 192.0.2.255/16"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/1 ipv6 address 2001:db8::1/64"), OPEN_E_NONE);
  ASSERT_EQ(get(OPEN_AF_INET, 1), OPEN_E_NONE);
  ASSERT_EQ(get(OPEN_AF_INET6, 1), OPEN_E_NONE);
  EXPECT_EQ(text(), "2001:db8::1/64");
}

TEST_F(InterfaceAddresses, FailedReadLeavesThePrefixAsItWas) {
  ASSERT_EQ(commit("interface 0/1 ip address 10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/1 ipv6 address 2001:db8::1/64"), OPEN_E_NONE);
  uint32_t index = 0;
  clear();
  ASSERT_EQ(get(OPEN_AF_INET6, 1), OPEN_E_NONE);
  open_inet_pfx_t before = prefix;
  EXPECT_EQ(get(OPEN_AF_INET6, 1), OPEN_E_FAIL);
  EXPECT_EQ(get(OPEN_AF_INET, 2), OPEN_E_NOT_FOUND);
  EXPECT_EQ(get(OPEN_AF_NONE, 1), OPEN_E_PARAM);
  EXPECT_EQ(get_secondary(1, &index), OPEN_E_FAIL);
  EXPECT_EQ(memcmp(&prefix, &before, sizeof prefix), 0);
  EXPECT_EQ(index, 0u);
}

TEST_F(InterfaceAddresses, RefusedLineIsNoChange) {
  ASSERT_EQ(commit("interface 0/1 ip address 10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::wait_applied(patience_ms));
  softswitch::hold_apply(true);
  std::string journal = file_content(dir.path + "/journal-1");
  EXPECT_EQ(commit("interface 0/1 ip address 10.0.0.1/24"), OPEN_E_NONE) << "as it is already";
  EXPECT_EQ(commit("interface 0/1 ip secondary-address 10.0.0.1/25"), OPEN_E_EXISTS);
  EXPECT_EQ(commit("interface 0/2 ip address 10.0.0.2/24"), OPEN_E_EXISTS);
  EXPECT_EQ(commit("interface 0/2 ip secondary-address 10.0.9.2/24"), OPEN_E_FAIL);
  EXPECT_EQ(commit("interface cpu ip address 10.0.9.2/24"), OPEN_E_NOT_FOUND);
  EXPECT_EQ(commit("interface 0/1 ipv6 address ::1/128"), OPEN_E_PARAM);
  EXPECT_EQ(commit("no interface 0/1 ipv6 address 2001:db8::1/64"), OPEN_E_NOT_FOUND);
  EXPECT_EQ(file_content(dir.path + "/journal-1"), journal);
  EXPECT_TRUE(softswitch::wait_applied(0)) << "nothing is pending";
}

TEST_F(InterfaceAddresses, ReloadReturnsToWhatWasSaved) {
  std::string error;
  ASSERT_EQ(commit("interface 0/1 ip address 10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::save_startup_config(&error)) << error;
  ASSERT_EQ(commit("interface 0/1 ip address 10.0.0.2/24"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/1 ip secondary-address 10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/2 ipv6 address 2001:db8::1/64"), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_EQ(softswitch::running_config(), "interface 0/1 ip address 10.0.0.1/24\n");
}

} // namespace
