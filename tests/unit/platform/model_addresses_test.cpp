/* Tests of addresses and prefixes, and of the rules for the addresses of interfaces. */
#include "tests/unit/platform/address_test_support.h"

#include <functional>

using namespace softswitch;

namespace {

class Addresses : public testing::Test {
protected:
  open_error_t set(uint32_t interface, const char *text) {
    return address_set_primary(model, interface, prefix(text));
  }
  open_error_t add(uint32_t interface, const char *text) {
    return address_add_secondary(model, interface, prefix(text));
  }
  open_error_t add_ipv6(uint32_t interface, const char *text) {
    return address_add_ipv6(model, interface, prefix(text));
  }
  open_error_t remove(uint32_t interface, const char *text) {
    return address_remove_secondary(model, interface, prefix(text));
  }
  open_error_t remove_ipv6(uint32_t interface, const char *text) {
    return address_remove_ipv6(model, interface, prefix(text));
  }
  std::string primary(uint32_t interface) {
    const open_inet_pfx_t &found = addresses_of(model, interface).primary;
    return found.ipAddr.family == OPEN_AF_NONE ? "none" : inet_prefix_text(found);
  }
  /* Takes all changes so far; what changes from then on is pending. */
  void settle() { changes_taken(model, model.change); }

  switch_model model = make_switch(built_in_profile());
};

/* --- Addresses and prefixes ----------------------------------------------------------------------------- */

TEST(InetAddress, TextIsThatOfRfc5952) {
  const std::pair<const char *, const char *> rows[] = {
      {"10.0.0.1", "10.0.0.1"},
      {"255.255.255.255", "255.255.255.255"},
      {"2001:0DB8:0000:0000:0000:0000:0000:0001", "2001:db8::1"},
      {"2001:db8:0:1:1:1:1:1", "2001:db8:0:1:1:1:1:1"},
      {"2001:0:0:1:0:0:0:1", "2001:0:0:1::1"},
      {"2001:db8:0:0:1:0:0:1", "2001:db8::1:0:0:1"},
      {"2001:DB8::ABCD:0010", "2001:db8::abcd:10"},
      {"::", "::"},
      {"::1", "::1"},
      {"fe80:0:0:0:0:0:0:0", "fe80::"},
      {"::ffff:192.0.2.1", "::ffff:192.0.2.1"},
      {"2001:db8::192.0.2.33", "2001:db8::c000:221"},
  };
  for (const auto &[text, shown] : rows) {
    open_inet_addr_t address;
    ASSERT_TRUE(inet_address_read(text, &address)) << text;
    EXPECT_EQ(inet_address_text(address), shown) << text;
  }
}

TEST(InetAddress, HostsAreToldFromOtherAddressesByTheirPrefix) {
  const std::pair<const char *, bool> rows[] = {
      {"10.0.0.1/24", true},
      {"10.0.0.254/24", true},
      {"10.0.0.0/24", false},
      {"10.0.0.255/24", false},
      {"10.0.0.0/23", false},
      {"10.0.0.255/23", true},
      {"10.0.1.0/23", true},
      {"10.0.1.255/23", false},
      {"10.0.0.1/30", true},
      {"10.0.0.3/30", false},
      {"10.0.0.0/31", true},
      {"10.0.0.1/31", true},
      {"10.0.0.0/32", true},
      {"10.0.0.255/32", true},
      {"10.0.0.1/1", true},
      {"127.255.255.255/1", false},
      {"128.0.0.0/1", false},
      {"128.0.0.1/1", true},
      {"10.0.0.1/0", false},
      {"10.0.0.1/33", false},
      {"10.0.0.1/4294967295", false},
      {"0.0.0.0/32", false},
      {"0.255.255.255/32", false},
      {"1.0.0.0/32", true},
      {"126.255.255.255/32", true},
      {"127.0.0.0/32", false},
      {"127.255.255.255/32", false},
      {"223.255.255.255/32", true},
      {"224.0.0.0/32", false},
      {"240.0.0.1/8", false},
      {"255.255.255.255/32", false},
      {"2001:db8::1/64", true},
      {"2001:db8::/64", true},
      {"2001:db8::ffff:ffff:ffff:ffff/64", true},
      {"2001:db8::1/1", true},
      {"2001:db8::1/128", true},
      {"2001:db8::1/0", false},
      {"2001:db8::1/129", false},
      {"::/128", false},
      {"::1/128", false},
      {"::1/64", false},
      {"::2/128", true},
      {"::1:0/128", true},
      {"100::/128", true},
      {"fe80::1/64", true},
      {"feff:ffff::1/64", true},
      {"ff00::/128", false},
      {"ff02::1/64", false},
      {"ffff::1/64", false},
  };
  for (const auto &[text, host] : rows) EXPECT_EQ(inet_is_host(prefix(text)), host) << text;
  open_inet_pfx_t none = {};
  none.pfxLen = 24;
  EXPECT_FALSE(inet_is_host(none));
}

TEST(InetAddress, PrefixesOverlapWhenOneHoldsTheOther) {
  const struct {
    const char *one, *other;
    bool overlap;
  } rows[] = {
      {"10.0.0.1/24", "10.0.0.2/24", true},
      {"10.0.0.1/24", "10.0.1.1/24", false},
      {"10.0.0.1/23", "10.0.1.1/24", true},
      {"10.0.0.1/8", "10.255.0.1/32", true},
      {"10.0.0.1/8", "11.0.0.1/32", false},
      {"10.0.0.1/7", "11.0.0.1/32", true},
      {"10.0.0.1/1", "127.0.0.1/1", true},
      {"10.0.0.1/1", "128.0.0.1/1", false},
      {"10.0.0.0/31", "10.0.0.1/32", true},
      {"10.0.0.0/32", "10.0.0.1/32", false},
      {"10.0.0.1/32", "10.0.0.1/32", true},
      {"2001:db8::1/64", "2001:db8::2/64", true},
      {"2001:db8::1/64", "2001:db8:0:1::1/64", false},
      {"2001:db8::1/63", "2001:db8:0:1::1/64", true},
      {"2001:db8::1/128", "2001:db8::1/128", true},
      {"2001:db8::1/128", "2001:db8::2/128", false},
      {"2001:db8::2/127", "2001:db8::3/128", true},
      {"::a00:1/8", "10.0.0.1/8", false},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(inet_overlap(prefix(row.one), prefix(row.other)), row.overlap) << row.one << ", " << row.other;
    EXPECT_EQ(inet_overlap(prefix(row.other), prefix(row.one)), row.overlap) << row.other << ", " << row.one;
  }
}

TEST(InetAddress, MaskedPrefixHasZeroBitsBehindIt) {
  const std::pair<const char *, const char *> rows[] = {
      {"255.255.255.255/0", "0.0.0.0/0"},
      {"255.255.255.255/1", "128.0.0.0/1"},
      {"10.1.2.3/8", "10.0.0.0/8"},
      {"10.1.2.255/27", "10.1.2.224/27"},
      {"10.1.2.3/31", "10.1.2.2/31"},
      {"10.1.2.3/32", "10.1.2.3/32"},
      {"ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/0", "::/0"},
      {"ffff::1/1", "8000::/1"},
      {"2001:db8:ffff::1/33", "2001:db8:8000::/33"},
      {"2001:db8::ffff/120", "2001:db8::ff00/120"},
      {"2001:db8::ffff/127", "2001:db8::fffe/127"},
      {"2001:db8::ffff/128", "2001:db8::ffff/128"},
  };
  for (const auto &[text, expected] : rows) {
    open_inet_pfx_t prefix = {};
    ASSERT_TRUE(inet_prefix_read(text, &prefix)) << text;
    EXPECT_EQ(inet_prefix_text(inet_masked(prefix)), expected) << text;
  }
}

TEST(InetAddress, LinkLocalAddressesAreTheFirstTenBitsOfFe80) {
  for (const char *text : {"fe80::1/64", "febf:ffff::1/10"})
    EXPECT_TRUE(inet_link_local(prefix(text).ipAddr));
  for (const char *text : {"fec0::1/64", "fe7f::1/64", "fd80::1/64", "2001:db8::1/64", "169.254.0.1/16"})
    EXPECT_FALSE(inet_link_local(prefix(text).ipAddr)) << text;
}

/* --- Which interfaces ----------------------------------------------------------------------------------- */

/* The CPU interface is there, so that removing what it cannot have finds everything as wanted. */
TEST_F(Addresses, EveryInterfaceButTheCpuCanHaveThem) {
  uint32_t routed;
  ASSERT_EQ(interface_make_vlan_routing(model, 1, &routed), OPEN_E_NONE);
  const std::pair<uint32_t, open_error_t> rows[] = {
      {1, OPEN_E_NONE},        {54, OPEN_E_NONE},         {56, OPEN_E_NONE},   {119, OPEN_E_NONE},
      {120, OPEN_E_NONE},      {127, OPEN_E_NONE},        {226, OPEN_E_NONE},  {55, OPEN_E_NOT_FOUND},
      {227, OPEN_E_NOT_FOUND}, {0, OPEN_E_PARAM},         {128, OPEN_E_PARAM}, {225, OPEN_E_PARAM},
      {354, OPEN_E_PARAM},     {UINT32_MAX, OPEN_E_PARAM}};
  uint32_t network = 10 << 24;
  for (const auto &[interface, result] : rows) {
    open_inet_pfx_t ipv4 = prefix("10.0.0.1/24");
    ipv4.ipAddr.addr.ipv4 = (network += 256) + 1;
    EXPECT_EQ(address_set_primary(model, interface, ipv4), result) << interface;
    ipv4.ipAddr.addr.ipv4++;
    EXPECT_EQ(address_add_secondary(model, interface, ipv4), result) << interface;
    EXPECT_EQ(add_ipv6(interface, "fe80::1/64"), result) << interface;
    EXPECT_EQ(address_remove_secondary(model, interface, ipv4), result) << interface;
    EXPECT_EQ(remove_ipv6(interface, "fe80::1/64"), result) << interface;
    EXPECT_EQ(address_remove_primary(model, interface), interface == 55 ? OPEN_E_NONE : result) << interface;
  }
  EXPECT_TRUE(model.addresses->by_interface.empty());
}

TEST_F(Addresses, OnlyAddressesOfHostsOfTheFamilyAreTaken) {
  ASSERT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  settle();
  for (const char *bad : {"10.0.0.0/24", "10.0.0.255/24", "127.0.0.1/8", "224.0.0.1/32", "10.0.0.1/0",
                          "10.0.0.1/33", "2001:db8::1/32"}) {
    EXPECT_EQ(set(1, bad), OPEN_E_PARAM) << bad;
    EXPECT_EQ(add(1, bad), OPEN_E_PARAM) << bad;
  }
  for (const char *bad :
       {"::/64", "::1/128", "ff02::1/64", "2001:db8::1/0", "2001:db8::1/129", "10.0.1.1/24"})
    EXPECT_EQ(add_ipv6(1, bad), OPEN_E_PARAM) << bad;
  EXPECT_EQ(primary(1), "10.0.0.1/24");
  EXPECT_FALSE(is_pending(model, 1));
}

/* --- IPv4 ----------------------------------------------------------------------------------------------- */

TEST_F(Addresses, PrimaryAddressIsReplacedAndRemoved) {
  ASSERT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  EXPECT_EQ(set(1, "10.0.0.1/25"), OPEN_E_NONE) << "another length";
  EXPECT_EQ(primary(1), "10.0.0.1/25");
  EXPECT_EQ(set(1, "192.168.0.1/16"), OPEN_E_NONE);
  EXPECT_EQ(primary(1), "192.168.0.1/16");
  EXPECT_EQ(set(2, "10.0.0.1/24"), OPEN_E_NONE) << "the old one is free";
  EXPECT_EQ(address_remove_primary(model, 1), OPEN_E_NONE);
  EXPECT_EQ(primary(1), "none");
  EXPECT_EQ(primary(2), "10.0.0.1/24");
}

TEST_F(Addresses, SecondaryAddressesNeedAPrimaryOne) {
  EXPECT_EQ(add(1, "10.0.0.2/24"), OPEN_E_FAIL);
  ASSERT_EQ(add_ipv6(1, "2001:db8::1/64"), OPEN_E_NONE);
  EXPECT_EQ(add(1, "10.0.0.2/24"), OPEN_E_FAIL);
  ASSERT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  EXPECT_EQ(add(1, "10.0.0.2/24"), OPEN_E_NONE);
  EXPECT_EQ(address_remove_primary(model, 1), OPEN_E_FAIL);
  EXPECT_EQ(primary(1), "10.0.0.1/24");
  EXPECT_EQ(set(1, "10.0.0.3/24"), OPEN_E_NONE) << "replacing it is no removal";
  ASSERT_EQ(remove(1, "10.0.0.2/24"), OPEN_E_NONE);
  EXPECT_EQ(address_remove_primary(model, 1), OPEN_E_NONE);
}

TEST_F(Addresses, AddressIsOnItsInterfaceOnce) {
  ASSERT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, "10.0.0.2/24"), OPEN_E_NONE);
  EXPECT_EQ(add(1, "10.0.0.1/24"), OPEN_E_EXISTS) << "it is the primary one";
  EXPECT_EQ(add(1, "10.0.0.1/32"), OPEN_E_EXISTS);
  EXPECT_EQ(add(1, "10.0.0.2/25"), OPEN_E_EXISTS) << "another length";
  EXPECT_EQ(set(1, "10.0.0.2/24"), OPEN_E_EXISTS);
  EXPECT_EQ(set(1, "10.0.0.2/8"), OPEN_E_EXISTS);
  ASSERT_EQ(add_ipv6(1, "2001:db8::1/64"), OPEN_E_NONE);
  EXPECT_EQ(add_ipv6(1, "2001:db8::1/65"), OPEN_E_EXISTS);
  ASSERT_EQ(add_ipv6(1, "fe80::1/64"), OPEN_E_NONE);
  EXPECT_EQ(add_ipv6(1, "fe80::1/10"), OPEN_E_EXISTS);
  EXPECT_EQ(primary(1), "10.0.0.1/24");
  EXPECT_EQ(texts(addresses_of(model, 1).secondary), std::vector<std::string>{"10.0.0.2/24"});
  EXPECT_EQ(texts(addresses_of(model, 1).ipv6), (std::vector<std::string>{"2001:db8::1/64", "fe80::1/64"}));
}

TEST_F(Addresses, RemovingNeedsTheVeryAddressAndLength) {
  ASSERT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, "10.0.0.2/24"), OPEN_E_NONE);
  ASSERT_EQ(add_ipv6(1, "2001:db8::1/64"), OPEN_E_NONE);
  for (const char *absent : {"10.0.0.2/25", "10.0.0.3/24", "10.0.0.1/24"})
    EXPECT_EQ(remove(1, absent), OPEN_E_NOT_FOUND) << absent;
  for (const char *absent : {"2001:db8::1/65", "2001:db8::2/64"})
    EXPECT_EQ(remove_ipv6(1, absent), OPEN_E_NOT_FOUND) << absent;
  EXPECT_EQ(remove(2, "10.0.0.2/24"), OPEN_E_NOT_FOUND);
  EXPECT_EQ(remove(1, "10.0.0.2/24"), OPEN_E_NONE);
  EXPECT_EQ(remove_ipv6(1, "2001:db8::1/64"), OPEN_E_NONE);
}

/* --- Between interfaces --------------------------------------------------------------------------------- */

TEST_F(Addresses, PrefixesOfDifferentInterfacesDoNotOverlap) {
  ASSERT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, "10.1.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(set(2, "10.2.0.1/24"), OPEN_E_NONE);
  for (const char *taken :
       {"10.0.0.1/24", "10.0.0.2/24", "10.0.0.129/25", "10.3.0.1/8", "10.1.0.9/30", "10.1.0.1/32"}) {
    EXPECT_EQ(set(3, taken), OPEN_E_EXISTS) << taken;
    EXPECT_EQ(set(2, taken), OPEN_E_EXISTS) << taken;
    EXPECT_EQ(add(2, taken), OPEN_E_EXISTS) << taken;
    EXPECT_EQ(address_overlap(model, 2, prefix(taken)), 1u) << taken;
  }
  EXPECT_EQ(set(3, "10.0.1.1/24"), OPEN_E_NONE) << "the next network";
  EXPECT_EQ(primary(2), "10.2.0.1/24");
}

TEST_F(Addresses, PrefixesOfOneInterfaceMayOverlap) {
  ASSERT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  EXPECT_EQ(add(1, "10.0.0.2/24"), OPEN_E_NONE);
  EXPECT_EQ(add(1, "10.0.1.1/16"), OPEN_E_NONE);
  EXPECT_EQ(add_ipv6(1, "2001:db8::1/64"), OPEN_E_NONE);
  EXPECT_EQ(add_ipv6(1, "2001:db8::2/64"), OPEN_E_NONE);
  EXPECT_EQ(add_ipv6(1, "2001:db8::3/32"), OPEN_E_NONE);
}

TEST_F(Addresses, Ipv6PrefixesOfDifferentInterfacesDoNotOverlapButLinkLocalOnes) {
  ASSERT_EQ(add_ipv6(1, "2001:db8::1/64"), OPEN_E_NONE);
  ASSERT_EQ(add_ipv6(1, "fe80::1/64"), OPEN_E_NONE);
  for (const char *taken : {"2001:db8::1/64", "2001:db8::2/127", "2001:db8:1::1/32", "2001::1/3"})
    EXPECT_EQ(add_ipv6(2, taken), OPEN_E_EXISTS) << taken;
  EXPECT_EQ(add_ipv6(2, "2001:db8:0:1::1/64"), OPEN_E_NONE);
  EXPECT_EQ(add_ipv6(2, "fe80::1/64"), OPEN_E_NONE);
  EXPECT_EQ(add_ipv6(3, "fe80::1/10"), OPEN_E_NONE);
  EXPECT_EQ(add_ipv6(3, "fc00::1/6"), OPEN_E_NONE) << "holds fe80::/10, which takes no part in this";
  EXPECT_EQ(add_ipv6(4, "fd00::1/8"), OPEN_E_EXISTS);
}

/* --- Limits --------------------------------------------------------------------------------------------- */

TEST_F(Addresses, ThirtyOneSecondaryAndThirtyTwoIpv6AddressesFit) {
  ASSERT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  for (int n = 2; n < 2 + 31; n++)
    ASSERT_EQ(add(1, ("10.0.0." + std::to_string(n) + "/24").c_str()), OPEN_E_NONE) << n;
  EXPECT_EQ(add(1, "10.0.0.100/24"), OPEN_E_FULL);
  EXPECT_EQ(add(1, "10.0.0.2/24"), OPEN_E_NONE) << "what is there is not one more";
  for (int n = 1; n < 1 + 32; n++)
    ASSERT_EQ(add_ipv6(1, ("2001:db8::" + std::to_string(n) + "/64").c_str()), OPEN_E_NONE) << n;
  EXPECT_EQ(add_ipv6(1, "2001:db8::100/64"), OPEN_E_FULL);
  ASSERT_EQ(set(2, "10.0.1.1/24"), OPEN_E_NONE);
  EXPECT_EQ(add(2, "10.0.1.2/24"), OPEN_E_NONE) << "each interface has room of its own";
}

TEST_F(Addresses, LoweredLimitsRefuseOneMoreUntilOneIsRemoved) {
  ASSERT_TRUE(limit_override(&model.limits, "secondary-addresses", 1));
  ASSERT_TRUE(limit_override(&model.limits, "ipv6-addresses", 1));
  EXPECT_FALSE(limit_override(&model.limits, "secondary-addresses", 32));
  EXPECT_FALSE(limit_override(&model.limits, "ipv6-addresses", 33));
  ASSERT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, "10.0.0.2/24"), OPEN_E_NONE);
  EXPECT_EQ(add(1, "10.0.0.3/24"), OPEN_E_FULL);
  ASSERT_EQ(remove(1, "10.0.0.2/24"), OPEN_E_NONE);
  EXPECT_EQ(add(1, "10.0.0.3/24"), OPEN_E_NONE);
  ASSERT_EQ(add_ipv6(1, "2001:db8::1/64"), OPEN_E_NONE);
  EXPECT_EQ(add_ipv6(1, "fe80::1/64"), OPEN_E_FULL);
  ASSERT_EQ(remove_ipv6(1, "2001:db8::1/64"), OPEN_E_NONE);
  EXPECT_EQ(add_ipv6(1, "fe80::1/64"), OPEN_E_NONE);
}

/* --- Changes -------------------------------------------------------------------------------------------- */

TEST_F(Addresses, EachChangeMakesTheInterfacePending) {
  settle();
  const std::pair<const char *, std::function<open_error_t()>> steps[] = {
      {"set", [&] { return set(1, "10.0.0.1/24"); }},
      {"replace", [&] { return set(1, "10.0.0.9/24"); }},
      {"add", [&] { return add(1, "10.0.0.2/24"); }},
      {"add ipv6", [&] { return add_ipv6(1, "2001:db8::1/64"); }},
      {"remove", [&] { return remove(1, "10.0.0.2/24"); }},
      {"remove primary", [&] { return address_remove_primary(model, 1); }},
      {"remove ipv6", [&] { return remove_ipv6(1, "2001:db8::1/64"); }},
  };
  for (const auto &[name, step] : steps) {
    EXPECT_EQ(step(), OPEN_E_NONE) << name;
    EXPECT_TRUE(is_pending(model, 1)) << name;
    EXPECT_FALSE(is_pending(model, 2)) << name;
    settle();
  }
  EXPECT_TRUE(model.addresses->by_interface.empty()) << "an interface without addresses takes no room";
}

TEST_F(Addresses, WhatIsAsWantedAlreadyIsNoChange) {
  ASSERT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, "10.0.0.2/24"), OPEN_E_NONE);
  ASSERT_EQ(add_ipv6(1, "2001:db8::1/64"), OPEN_E_NONE);
  uint64_t before = model.change;
  EXPECT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  EXPECT_EQ(add(1, "10.0.0.2/24"), OPEN_E_NONE);
  EXPECT_EQ(add_ipv6(1, "2001:db8::1/64"), OPEN_E_NONE);
  EXPECT_EQ(address_remove_primary(model, 2), OPEN_E_NONE);
  addresses_forget(model, 2);
  EXPECT_EQ(model.change, before);
}

TEST_F(Addresses, ForgettingTakesEverythingFromOneInterface) {
  ASSERT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(add(1, "10.0.0.2/24"), OPEN_E_NONE);
  ASSERT_EQ(add_ipv6(1, "2001:db8::1/64"), OPEN_E_NONE);
  ASSERT_EQ(set(2, "10.0.1.1/24"), OPEN_E_NONE);
  settle();
  switch_model copy = model;
  addresses_forget(model, 1);
  EXPECT_EQ(primary(1), "none");
  EXPECT_TRUE(addresses_of(model, 1).secondary.empty());
  EXPECT_TRUE(addresses_of(model, 1).ipv6.empty());
  EXPECT_TRUE(is_pending(model, 1));
  EXPECT_EQ(primary(2), "10.0.1.1/24");
  EXPECT_FALSE(is_pending(model, 2));
  EXPECT_EQ(addresses_of(copy, 1).secondary.size(), 1u) << "a copy of the switch keeps its own";
}

TEST_F(Addresses, RemovingAVlanRoutingInterfaceTakesItsAddressesAlong) {
  uint32_t number;
  ASSERT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  ASSERT_EQ(set(number, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(add_ipv6(number, "2001:db8::1/64"), OPEN_E_NONE);
  ASSERT_EQ(interface_remove_vlan_routing(model, 1), OPEN_E_NONE);
  EXPECT_TRUE(model.addresses->by_interface.empty());
  ASSERT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  EXPECT_EQ(primary(number), "none") << "making it again brings nothing back";
  EXPECT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
}

TEST_F(Addresses, ResetTakesAllAddresses) {
  uint32_t number;
  ASSERT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  for (auto [interface, text] :
       {std::pair<uint32_t, const char *>{1, "10.0.0.1/24"}, {120, "10.0.1.1/32"}, {number, "10.0.2.1/24"}})
    ASSERT_EQ(set(interface, text), OPEN_E_NONE);
  settle();
  switch_reset(model);
  EXPECT_TRUE(model.addresses->by_interface.empty());
  for (uint32_t interface : {1u, 120u, number}) EXPECT_TRUE(is_pending(model, interface)) << interface;
}

} // namespace
