/* Tests of the routing functions of the C interface that give addresses to interfaces and take them away, and
 * of lab control's offers to interfaces that obtain theirs. */
#include "platform/api/openapi_routing.h"

#include "platform/softswitch/services/lab.h"
#include "tests/unit/platform/address_test_support.h"
#include "tests/unit/platform/softswitch_test_support.h"

using softswitch::lab_command;

namespace {

constexpr uint32_t given = OPEN_INTF_IP_ADDR_PRIMARY, secondary = OPEN_INTF_IP_ADDR_SECONDARY,
                   automatic = OPEN_INTF_IP_ADDR_AUTO;

class RoutingAddresses : public SoftSwitch {
protected:
  open_error_t add(uint32_t interface, uint32_t method, const std::string &text, uint32_t ext_arg = 0) {
    open_inet_pfx_t address = prefix(text);
    return rpcclt_openapiRtrIntfIpAddrAdd(&handle, address.ipAddr.family, interface, method, &address,
                                          ext_arg);
  }
  open_error_t remove(uint32_t interface, uint32_t method, const std::string &text, uint32_t ext_arg = 0) {
    open_inet_pfx_t address = prefix(text);
    return rpcclt_openapiRtrIntfIpAddrDel(&handle, address.ipAddr.family, interface, method, &address,
                                          ext_arg);
  }
  /* AUTO looks at no prefix. */
  open_error_t obtain(uint32_t interface, uint32_t family) {
    open_inet_pfx_t garbage;
    memset(&garbage, 0xa5, sizeof garbage);
    return rpcclt_openapiRtrIntfIpAddrAdd(&handle, family, interface, automatic, &garbage, 0);
  }
  open_error_t obtain_no_more(uint32_t interface, uint32_t family) {
    open_inet_pfx_t garbage;
    memset(&garbage, 0xa5, sizeof garbage);
    return rpcclt_openapiRtrIntfIpAddrDel(&handle, family, interface, automatic, &garbage, 1);
  }

  /* The primary address and the secondary ones, then the IPv6 addresses, as a client reads them. */
  std::string shown(uint32_t interface) {
    std::string text;
    open_inet_pfx_t read = {};
    uint32_t index = 0;
    if (rpcclt_openapiRtrIntfIpAddrGet(&handle, OPEN_AF_INET, interface, &read) == OPEN_E_NONE)
      text += softswitch::inet_prefix_text(read);
    while (rpcclt_openapiRtrIntfSecIpAddrGet(&handle, OPEN_AF_INET, interface, &read, &index) == OPEN_E_NONE)
      text += " +" + softswitch::inet_prefix_text(read);
    read = {};
    while (rpcclt_openapiRtrIntfIpAddrGet(&handle, OPEN_AF_INET6, interface, &read) == OPEN_E_NONE)
      text += " " + softswitch::inet_prefix_text(read);
    return text;
  }

  std::string journal() { return file_content(dir.path + "/journal-1"); }
};

/* --- Arguments ------------------------------------------------------------------------------------------ */

TEST_F(RoutingAddresses, FamilyAndMethodMustGoTogether) {
  const open_inet_pfx_t ipv4 = prefix("10.0.0.1/24"), ipv6 = prefix("2001:db8::1/64");
  ASSERT_EQ(add(2, given, "10.0.1.1/24"), OPEN_E_NONE); /* so that it can have a secondary one */
  const struct {
    uint32_t family, method;
    bool good;
  } rows[] = {
      {OPEN_AF_NONE, given, false},
      {OPEN_AF_NONE, automatic, false},
      {OPEN_AF_INET, given, true},
      {OPEN_AF_INET, secondary, true},
      {OPEN_AF_INET, automatic, true},
      {OPEN_AF_INET, 3, false},
      {OPEN_AF_INET, UINT32_MAX, false},
      {OPEN_AF_INET6, given, true},
      {OPEN_AF_INET6, secondary, false},
      {OPEN_AF_INET6, automatic, true},
      {OPEN_AF_INET6, 3, false},
      {3, given, false},
      {3, automatic, false},
      {UINT32_MAX, UINT32_MAX, false},
  };
  for (const auto &row : rows) {
    const open_inet_pfx_t &right = row.family == OPEN_AF_INET6 ? ipv6 : ipv4;
    for (uint32_t ext_arg : {0u, 1u, 2u, UINT32_MAX}) {
      uint32_t interface = row.method == secondary ? 2 : 1;
      open_error_t wanted = row.good && ext_arg <= 1 ? OPEN_E_NONE : OPEN_E_PARAM;
      EXPECT_EQ(rpcclt_openapiRtrIntfIpAddrAdd(&handle, row.family, interface, row.method, &right, ext_arg),
                wanted)
          << row.family << " " << row.method << " " << ext_arg;
      EXPECT_EQ(rpcclt_openapiRtrIntfIpAddrDel(&handle, row.family, interface, row.method, &right, ext_arg),
                wanted)
          << row.family << " " << row.method << " " << ext_arg;
    }
  }
  EXPECT_EQ(softswitch::running_config(), "interface 0/2 ip address 10.0.1.1/24\n");
}

TEST_F(RoutingAddresses, PrefixIsThatOfAHostOfTheFamily) {
  ASSERT_EQ(add(1, given, "10.0.0.1/24"), OPEN_E_NONE);
  std::string before = softswitch::running_config();
  open_inet_pfx_t none = prefix("10.0.0.9/24");
  none.ipAddr.family = OPEN_AF_NONE;
  for (uint32_t method : {given, secondary}) {
    for (const char *bad : {"10.0.0.0/24", "10.0.0.255/24", "127.0.0.1/8", "10.0.0.9/0", "10.0.0.9/33"}) {
      EXPECT_EQ(add(1, method, bad), OPEN_E_PARAM) << bad;
      EXPECT_EQ(remove(1, method, bad), OPEN_E_PARAM) << bad;
    }
    EXPECT_EQ(rpcclt_openapiRtrIntfIpAddrAdd(&handle, OPEN_AF_INET, 1, method, &none, 0), OPEN_E_PARAM);
    open_inet_pfx_t other = prefix("2001:db8::1/24");
    EXPECT_EQ(rpcclt_openapiRtrIntfIpAddrAdd(&handle, OPEN_AF_INET, 1, method, &other, 0), OPEN_E_PARAM);
    EXPECT_EQ(rpcclt_openapiRtrIntfIpAddrDel(&handle, OPEN_AF_INET, 1, method, &other, 0), OPEN_E_PARAM);
  }
  for (const char *bad : {"::/64", "::1/128", "ff02::1/64", "2001:db8::1/0", "2001:db8::1/129"})
    EXPECT_EQ(add(1, given, bad), OPEN_E_PARAM) << bad;
  open_inet_pfx_t other = prefix("10.0.0.9/24");
  EXPECT_EQ(rpcclt_openapiRtrIntfIpAddrAdd(&handle, OPEN_AF_INET6, 1, given, &other, 0), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiRtrIntfIpAddrAdd(&handle, OPEN_AF_INET6, 1, given, &other, 1), OPEN_E_PARAM);
  EXPECT_EQ(softswitch::running_config(), before);
}

TEST_F(RoutingAddresses, InterfacesThatCannotHaveAddressesAreRefused) {
  const refused_number rows[] = {{55, OPEN_E_NOT_FOUND}, {226, OPEN_E_NOT_FOUND},   {353, OPEN_E_NOT_FOUND},
                                 {0, OPEN_E_PARAM},      {128, OPEN_E_PARAM},       {225, OPEN_E_PARAM},
                                 {354, OPEN_E_PARAM},    {UINT32_MAX, OPEN_E_PARAM}};
  for (const auto &[number, result] : rows) {
    for (const char *text : {"10.0.0.1/24", "2001:db8::1/64"}) {
      EXPECT_EQ(add(number, given, text), result) << number;
      EXPECT_EQ(add(number, given, text, 1), result) << number;
      EXPECT_EQ(remove(number, given, text), result) << number;
      EXPECT_EQ(add(number, automatic, text), result) << number;
      EXPECT_EQ(remove(number, automatic, text), result) << number;
    }
    EXPECT_EQ(add(number, secondary, "10.0.0.1/24"), result) << number;
    EXPECT_EQ(remove(number, secondary, "10.0.0.1/24"), result) << number;
  }
}

/* --- Given addresses ------------------------------------------------------------------------------------ */

TEST_F(RoutingAddresses, AddressesAreGivenAndTakenOnEveryKindOfInterface) {
  ASSERT_EQ(commit("vlan 1 routing"), OPEN_E_NONE);
  uint32_t net = 0;
  for (uint32_t interface : {1u, 56u, 120u, 226u}) {
    std::string network = "10.0." + std::to_string(net++) + ".";
    std::string ipv6 = "2001:db8:0:" + std::to_string(net) + "::1/64";
    EXPECT_EQ(add(interface, given, network + "1/24"), OPEN_E_NONE);
    EXPECT_EQ(add(interface, secondary, network + "2/24"), OPEN_E_NONE);
    EXPECT_EQ(add(interface, given, ipv6), OPEN_E_NONE);
    EXPECT_EQ(shown(interface), network + "1/24 +" + network + "2/24 " + ipv6);
    restart();
    EXPECT_EQ(shown(interface), network + "1/24 +" + network + "2/24 " + ipv6);
    EXPECT_EQ(remove(interface, given, network + "1/24"), OPEN_E_FAIL) << "there is a secondary one";
    EXPECT_EQ(remove(interface, secondary, network + "2/24"), OPEN_E_NONE);
    EXPECT_EQ(remove(interface, given, network + "1/24"), OPEN_E_NONE);
    EXPECT_EQ(remove(interface, given, ipv6), OPEN_E_NONE);
    EXPECT_EQ(shown(interface), "");
  }
}

TEST_F(RoutingAddresses, WhatIsSetAlreadyIsNeitherErrorNorChange) {
  ASSERT_EQ(add(1, given, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, secondary, "10.0.0.2/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, given, "2001:db8::1/64"), OPEN_E_NONE);
  ASSERT_EQ(obtain(2, OPEN_AF_INET), OPEN_E_NONE);
  ASSERT_EQ(obtain(2, OPEN_AF_INET6), OPEN_E_NONE);
  take_and_hold();
  std::string before = journal();
  EXPECT_EQ(add(1, given, "10.0.0.1/24"), OPEN_E_NONE);
  EXPECT_EQ(add(1, secondary, "10.0.0.2/24"), OPEN_E_NONE);
  EXPECT_EQ(add(1, given, "2001:db8::1/64"), OPEN_E_NONE);
  EXPECT_EQ(obtain(2, OPEN_AF_INET), OPEN_E_NONE);
  EXPECT_EQ(obtain(2, OPEN_AF_INET6), OPEN_E_NONE);
  EXPECT_EQ(journal(), before);
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
}

TEST_F(RoutingAddresses, ConflictsAreToldApart) {
  ASSERT_EQ(add(1, given, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, secondary, "10.0.0.2/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, given, "2001:db8::1/64"), OPEN_E_NONE);
  EXPECT_EQ(add(1, given, "10.0.0.2/24"), OPEN_E_EXISTS) << "it is a secondary one";
  EXPECT_EQ(add(1, secondary, "10.0.0.1/24"), OPEN_E_EXISTS) << "it is the primary one";
  EXPECT_EQ(add(1, secondary, "10.0.0.2/25"), OPEN_E_EXISTS) << "another length";
  EXPECT_EQ(add(1, given, "2001:db8::1/65"), OPEN_E_EXISTS);
  EXPECT_EQ(add(2, given, "10.0.0.3/24"), OPEN_E_EXISTS) << "another interface's prefix";
  EXPECT_EQ(add(2, given, "2001:db8::2/64"), OPEN_E_EXISTS);
  EXPECT_EQ(add(2, secondary, "10.1.0.1/24"), OPEN_E_FAIL) << "without a primary one";
  EXPECT_EQ(add(1, given, "10.0.0.3/24"), OPEN_E_NONE) << "the primary one is replaced";
  EXPECT_EQ(shown(1), "10.0.0.3/24 +10.0.0.2/24 2001:db8::1/64");
}

TEST_F(RoutingAddresses, OnlyWhatIsThereIsRemoved) {
  ASSERT_EQ(add(1, given, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, secondary, "10.0.0.2/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, given, "2001:db8::1/64"), OPEN_E_NONE);
  std::string before = softswitch::running_config();
  for (const char *absent : {"10.0.0.1/25", "10.0.0.2/24", "10.0.0.3/24"})
    EXPECT_EQ(remove(1, given, absent), OPEN_E_NOT_FOUND) << absent;
  for (const char *absent : {"10.0.0.2/25", "10.0.0.1/24", "10.0.0.3/24"})
    EXPECT_EQ(remove(1, secondary, absent), OPEN_E_NOT_FOUND) << absent;
  for (const char *absent : {"2001:db8::1/65", "2001:db8::2/64"})
    EXPECT_EQ(remove(1, given, absent), OPEN_E_NOT_FOUND) << absent;
  EXPECT_EQ(remove(2, given, "10.0.0.1/24"), OPEN_E_NOT_FOUND);
  EXPECT_EQ(softswitch::running_config(), before);
}

TEST_F(RoutingAddresses, FullInterfaceTakesNoMore) {
  ASSERT_TRUE(softswitch::set_limit("secondary-addresses", 1));
  ASSERT_TRUE(softswitch::set_limit("ipv6-addresses", 1));
  ASSERT_EQ(add(1, given, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, secondary, "10.0.0.2/24"), OPEN_E_NONE);
  EXPECT_EQ(add(1, secondary, "10.0.0.3/24"), OPEN_E_FULL);
  ASSERT_EQ(add(1, given, "2001:db8::1/64"), OPEN_E_NONE);
  EXPECT_EQ(add(1, given, "2001:db8::2/64"), OPEN_E_FULL);
}

TEST_F(RoutingAddresses, OnlyAddressAndLengthOfThePrefixCount) {
  open_inet_pfx_t ipv4 = prefix("10.0.0.1/24");
  ipv4.reserved = 0xdeadbeef;
  memset(ipv4.ipAddr.addr.ipv6.addr8 + 4, 0xff, 12);
  ASSERT_EQ(rpcclt_openapiRtrIntfIpAddrAdd(&handle, OPEN_AF_INET, 1, given, &ipv4, 0), OPEN_E_NONE);
  open_inet_pfx_t read, wanted = prefix("10.0.0.1/24");
  memset(&read, 0x5a, sizeof read);
  ASSERT_EQ(rpcclt_openapiRtrIntfIpAddrGet(&handle, OPEN_AF_INET, 1, &read), OPEN_E_NONE);
  EXPECT_EQ(memcmp(&read, &wanted, sizeof read), 0);
  EXPECT_EQ(remove(1, given, "10.0.0.1/24"), OPEN_E_NONE);
}

/* --- Interface identifiers ------------------------------------------------------------------------------ */

TEST_F(RoutingAddresses, Ipv6AddressIsMadeFromTheMacAddress) {
  ASSERT_EQ(commit("vlan 1 routing"), OPEN_E_NONE);
  /* The built-in switch has 02:00:5E:10:00:01; ports and LAGs count on from it. */
  const struct {
    uint32_t interface;
    const char *address;
  } rows[] = {{1, "2001:db8:0:1:0:5eff:fe10:2/64"},
              {119, "2001:db8:0:77:0:5eff:fe10:78/64"},
              {120, "2001:db8:0:78:0:5eff:fe10:1/64"},
              {226, "2001:db8:0:e2:0:5eff:fe10:1/64"}};
  for (const auto &row : rows) {
    std::string network =
        "2001:db8:0:" + softswitch::inet_address_text(prefix(row.address).ipAddr).substr(11);
    network = network.substr(0, network.find(':', 11)) + "::1/64";
    EXPECT_EQ(add(row.interface, given, network, 1), OPEN_E_NONE) << network;
    EXPECT_EQ(shown(row.interface), std::string(" ") + row.address);
    EXPECT_EQ(add(row.interface, given, network, 1), OPEN_E_NONE) << "as it is already";
    EXPECT_EQ(add(row.interface, given, row.address), OPEN_E_NONE) << "the resulting address is what counts";
  }
  restart();
  EXPECT_EQ(shown(1), " 2001:db8:0:1:0:5eff:fe10:2/64");
  EXPECT_EQ(remove(1, given, "2001:db8:0:1::/64"), OPEN_E_NOT_FOUND);
  EXPECT_EQ(remove(1, given, "2001:db8:0:1::/64", 1), OPEN_E_NONE);
  EXPECT_EQ(remove(119, given, rows[1].address), OPEN_E_NONE);
  EXPECT_EQ(shown(1), "");
  EXPECT_EQ(shown(119), "");
}

TEST_F(RoutingAddresses, InterfaceIdentifierNeedsAPrefixOf64BitsAtMost) {
  for (const char *bad : {"2001:db8::/65", "2001:db8::/128", "2001:db8::/0", "2001:db8::/129", "ff02::/64"}) {
    EXPECT_EQ(add(1, given, bad, 1), OPEN_E_PARAM) << bad;
    EXPECT_EQ(remove(1, given, bad, 1), OPEN_E_PARAM) << bad;
  }
  EXPECT_EQ(add(1, given, "::/64", 1), OPEN_E_NONE) << "no address itself, but it becomes one";
  EXPECT_EQ(add(1, given, "2001:db8:0:ffff::/48", 1), OPEN_E_NONE);
  EXPECT_EQ(shown(1), " ::5eff:fe10:2/64 2001:db8:0:ffff:0:5eff:fe10:2/48");
}

TEST_F(RoutingAddresses, ExtArgMeansNothingForOtherAddresses) {
  EXPECT_EQ(add(1, given, "10.0.0.1/24", 1), OPEN_E_NONE);
  EXPECT_EQ(add(1, secondary, "10.0.0.2/24", 1), OPEN_E_NONE);
  EXPECT_EQ(shown(1), "10.0.0.1/24 +10.0.0.2/24");
  EXPECT_EQ(remove(1, secondary, "10.0.0.2/24", 1), OPEN_E_NONE);
  EXPECT_EQ(remove(1, given, "10.0.0.1/24", 1), OPEN_E_NONE);
  EXPECT_EQ(add(1, automatic, "10.0.0.1/24", 1), OPEN_E_NONE);
  EXPECT_EQ(remove(1, automatic, "10.0.0.1/24", 1), OPEN_E_NONE);
}

/* --- Obtained addresses --------------------------------------------------------------------------------- */

TEST_F(RoutingAddresses, ObtainingIsSetAndEndedEachFamilyByItself) {
  EXPECT_EQ(obtain_no_more(1, OPEN_AF_INET), OPEN_E_ERROR);
  EXPECT_EQ(obtain_no_more(1, OPEN_AF_INET6), OPEN_E_ERROR);
  EXPECT_EQ(obtain(1, OPEN_AF_INET), OPEN_E_NONE);
  EXPECT_EQ(obtain_no_more(1, OPEN_AF_INET6), OPEN_E_ERROR);
  EXPECT_EQ(obtain(1, OPEN_AF_INET6), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "interface 0/1 ip address dhcp\ninterface 0/1 ipv6 address auto\n");
  EXPECT_EQ(shown(1), "") << "nothing is offered";
  restart();
  EXPECT_EQ(obtain_no_more(1, OPEN_AF_INET), OPEN_E_NONE);
  EXPECT_EQ(obtain_no_more(1, OPEN_AF_INET), OPEN_E_ERROR);
  EXPECT_EQ(softswitch::running_config(), "interface 0/1 ipv6 address auto\n");
  EXPECT_EQ(obtain_no_more(1, OPEN_AF_INET6), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(RoutingAddresses, DhcpAndGivenAddressesInIpv4) {
  ASSERT_EQ(add(1, given, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, secondary, "10.0.0.2/24"), OPEN_E_NONE);
  EXPECT_EQ(obtain(1, OPEN_AF_INET), OPEN_E_FAIL) << "there are secondary ones";
  ASSERT_EQ(remove(1, secondary, "10.0.0.2/24"), OPEN_E_NONE);
  EXPECT_EQ(obtain(1, OPEN_AF_INET), OPEN_E_NONE);
  EXPECT_EQ(shown(1), "") << "the given one is gone";
  EXPECT_EQ(remove(1, given, "10.0.0.1/24"), OPEN_E_NOT_FOUND);
  EXPECT_EQ(add(1, secondary, "10.0.0.2/24"), OPEN_E_FAIL);
  EXPECT_EQ(add(1, given, "10.0.0.1/24"), OPEN_E_NONE);
  EXPECT_EQ(obtain_no_more(1, OPEN_AF_INET), OPEN_E_ERROR) << "the given one ended it";
  EXPECT_EQ(softswitch::running_config(), "interface 0/1 ip address 10.0.0.1/24\n");
}

/* --- Offers --------------------------------------------------------------------------------------------- */

TEST_F(RoutingAddresses, OfferIsReadWhileTheInterfaceObtainsItsAddress) {
  EXPECT_EQ(lab_command("lease 0/1 10.0.0.5/24"), "ok\n");
  EXPECT_EQ(lab_command("lease 0/1 2001:DB8:0::5/64"), "ok\n");
  EXPECT_EQ(shown(1), "");
  ASSERT_EQ(obtain(1, OPEN_AF_INET), OPEN_E_NONE);
  ASSERT_EQ(obtain(1, OPEN_AF_INET6), OPEN_E_NONE);
  ASSERT_EQ(add(1, given, "2001:db8::1/64"), OPEN_E_NONE);
  ASSERT_EQ(add(1, given, "2001:db8::9/64"), OPEN_E_NONE);
  EXPECT_EQ(shown(1), "10.0.0.5/24 2001:db8::1/64 2001:db8::5/64 2001:db8::9/64");
  EXPECT_EQ(remove(1, given, "10.0.0.5/24"), OPEN_E_NOT_FOUND) << "it is not given";
  EXPECT_EQ(remove(1, given, "2001:db8::5/64"), OPEN_E_NOT_FOUND);
  EXPECT_EQ(softswitch::running_config(), "interface 0/1 ip address dhcp\n"
                                          "interface 0/1 ipv6 address 2001:db8::1/64\n"
                                          "interface 0/1 ipv6 address 2001:db8::9/64\n"
                                          "interface 0/1 ipv6 address auto\n");
  EXPECT_EQ(lab_command("lease 0/1 none"), "ok\n");
  EXPECT_EQ(shown(1), " 2001:db8::1/64 2001:db8::9/64");
}

TEST_F(RoutingAddresses, OffersAreNoConfiguration) {
  std::string error;
  ASSERT_EQ(obtain(1, OPEN_AF_INET), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::save_startup_config(&error)) << error;
  take_and_hold();
  std::string before = journal();
  EXPECT_EQ(lab_command("lease 0/1 10.0.0.5/24"), "ok\n");
  EXPECT_EQ(lab_command("lease 0/2 10.0.1.5/24"), "ok\n");
  EXPECT_EQ(lab_command("lease 0/2 none"), "ok\n");
  EXPECT_EQ(journal(), before);
  EXPECT_TRUE(softswitch::wait_applied(0)) << "nothing is pending";
  softswitch::hold_apply(false);
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_EQ(shown(1), "10.0.0.5/24") << "a reload leaves it as it is";
  restart();
  EXPECT_EQ(shown(1), "") << "a restart does not";
}

TEST_F(RoutingAddresses, OfferThatAGivenPrefixOverlapsIsDeclined) {
  EXPECT_EQ(lab_command("lease 0/1 10.0.0.5/24"), "ok\n");
  ASSERT_EQ(obtain(1, OPEN_AF_INET), OPEN_E_NONE);
  EXPECT_EQ(add(2, given, "10.0.0.1/24"), OPEN_E_NONE);
  EXPECT_EQ(shown(1), "");
  EXPECT_EQ(shown(2), "10.0.0.1/24");
  ASSERT_EQ(remove(2, given, "10.0.0.1/24"), OPEN_E_NONE);
  EXPECT_EQ(shown(1), "10.0.0.5/24");
}

TEST_F(RoutingAddresses, ListShowsAllOffersByInterface) {
  ASSERT_EQ(commit("vlan 1 routing"), OPEN_E_NONE);
  EXPECT_EQ(lab_command("lease list"), "ok\n");
  EXPECT_EQ(lab_command("lease vlan1 10.0.2.1/24"), "ok\n");
  EXPECT_EQ(lab_command("lease 0/2 2001:db8::2/64"), "ok\n");
  EXPECT_EQ(lab_command("lease 0/2 10.0.0.2/24"), "ok\n");
  EXPECT_EQ(lab_command("lease loopback0 192.0.2.1/32"), "ok\n");
  EXPECT_EQ(lab_command("lease loopback0 192.0.2.2/32"), "ok\n");
  EXPECT_EQ(lab_command("lease list"), "0/2 10.0.0.2/24\n"
                                       "0/2 2001:db8::2/64\n"
                                       "loopback0 192.0.2.2/32\n"
                                       "vlan1 10.0.2.1/24\n"
                                       "ok\n");
  ASSERT_EQ(commit("no vlan 1 routing"), OPEN_E_NONE);
  EXPECT_EQ(lab_command("lease 0/2 none"), "ok\n");
  EXPECT_EQ(lab_command("lease list"), "loopback0 192.0.2.2/32\nok\n");
}

TEST_F(RoutingAddresses, RefusedOffersNameTheirReason) {
  EXPECT_EQ(lab_command("lease 0/2 10.0.0.2/24"), "ok\n");
  const std::string usage = "error: usage: lease INTERFACE PREFIX|none\n",
                    no_prefix = "\" is not an address with a prefix length\n";
  const std::pair<const char *, std::string> rows[] = {
      {"lease", usage},
      {"lease 0/1", usage},
      {"lease 0/1 10.0.1.1/24 10.0.1.2/24", usage},
      {"lease list 0/1", "error: usage: lease list\n"},
      {"lease 0/99 10.0.1.1/24", "error: there is no interface \"0/99\"\n"},
      {"lease 0/99 none", "error: there is no interface \"0/99\"\n"},
      {"lease vlan1 10.0.1.1/24", "error: there is no interface \"vlan1\"\n"},
      {"lease 0/1 10.0.1.1", "error: \"10.0.1.1" + no_prefix},
      {"lease 0/1 None", "error: \"None" + no_prefix},
      {"lease 0/1 10.0.1.0/24", "error: 10.0.1.0/24 is not the address of a host\n"},
      {"lease 0/1 10.0.1.1/33", "error: 10.0.1.1/33 is not the address of a host\n"},
      {"lease 0/1 ff02::1/64", "error: ff02::1/64 is not the address of a host\n"},
      {"lease cpu 10.0.1.1/24", "error: cpu cannot have IP addresses\n"},
      {"lease 0/1 10.0.0.1/16", "error: 10.0.0.1/16 overlaps with what 0/2 is offered\n"},
  };
  for (const auto &[line, reply] : rows) EXPECT_EQ(lab_command(line), reply) << line;
  EXPECT_EQ(lab_command("lease list"), "0/2 10.0.0.2/24\nok\n");
  EXPECT_EQ(lab_command("lease cpu none"), "ok\n") << "as it is already";
}

} // namespace
