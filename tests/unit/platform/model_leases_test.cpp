/* Tests of obtained addresses: what interfaces are offered, when it is in force, and interface identifiers.
 */
#include "tests/unit/platform/address_test_support.h"

#include <functional>

using namespace softswitch;

namespace {

class Leases : public testing::Test {
protected:
  open_error_t offer(uint32_t interface, const char *text) {
    return lease_offer(model, interface, prefix(text));
  }
  open_error_t set(uint32_t interface, const char *text) {
    return address_set_primary(model, interface, prefix(text));
  }
  open_error_t add_ipv6(uint32_t interface, const char *text) {
    return address_add_ipv6(model, interface, prefix(text));
  }
  std::string primary(uint32_t interface) {
    open_inet_pfx_t found = addresses_of(model, interface).primary;
    return found.ipAddr.family == OPEN_AF_NONE ? "none" : inet_prefix_text(found);
  }
  std::vector<std::string> ipv6(uint32_t interface) { return texts(addresses_of(model, interface).ipv6); }
  void settle() { changes_taken(model, model.change); }

  using list = std::vector<std::string>;
  switch_model model = make_switch(built_in_profile());
};

/* --- Offers --------------------------------------------------------------------------------------------- */

TEST_F(Leases, OnlyAddressesOfHostsAreOfferedToInterfacesThatCanHaveThem) {
  const std::pair<uint32_t, open_error_t> interfaces[] = {
      {1, OPEN_E_NONE},       {119, OPEN_E_NONE},      {127, OPEN_E_NONE},
      {55, OPEN_E_NOT_FOUND}, {226, OPEN_E_NOT_FOUND}, {0, OPEN_E_PARAM},
      {128, OPEN_E_PARAM},    {354, OPEN_E_PARAM},     {UINT32_MAX, OPEN_E_PARAM}};
  for (const auto &[interface, result] : interfaces) {
    EXPECT_EQ(offer(interface, "fe80::1/64"), result) << interface;
    open_inet_pfx_t ipv4 = prefix("10.0.0.1/32");
    ipv4.ipAddr.addr.ipv4 += interface;
    EXPECT_EQ(lease_offer(model, interface, ipv4), result) << interface;
  }
  for (const char *bad : {"10.1.0.0/24", "127.0.0.1/8", "10.1.0.1/0", "10.1.0.1/33", "::1/128", "ff02::1/64"})
    EXPECT_EQ(offer(2, bad), OPEN_E_PARAM) << bad;
  EXPECT_EQ(lease_of(model, 2).ipv4.ipAddr.family, OPEN_AF_NONE);
  EXPECT_EQ(inet_prefix_text(lease_of(model, 119).ipv4), "10.0.0.120/32");
}

TEST_F(Leases, OffersOfDifferentInterfacesDoNotOverlapButLinkLocalOnes) {
  ASSERT_EQ(offer(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(offer(1, "2001:db8::1/64"), OPEN_E_NONE);
  for (const char *taken : {"10.0.0.1/24", "10.0.0.9/30", "10.1.0.1/8", "2001:db8::2/64", "2001::1/16"}) {
    EXPECT_EQ(offer(2, taken), OPEN_E_EXISTS) << taken;
    EXPECT_EQ(lease_overlap(model, 2, prefix(taken)), 1u) << taken;
  }
  EXPECT_EQ(offer(1, "10.0.0.2/25"), OPEN_E_NONE) << "its own is replaced";
  EXPECT_EQ(offer(2, "10.0.0.129/25"), OPEN_E_NONE);
  EXPECT_EQ(offer(2, "2001:db8:0:1::1/64"), OPEN_E_NONE);
  EXPECT_EQ(offer(3, "fe80::1/64"), OPEN_E_NONE);
  EXPECT_EQ(offer(4, "fe80::1/64"), OPEN_E_NONE);
  lease_withdraw(model, 1);
  EXPECT_EQ(offer(3, "10.0.0.1/25"), OPEN_E_NONE);
}

TEST_F(Leases, OffersAreNoConfigurationAndNoChange) {
  uint64_t before = model.change;
  ASSERT_EQ(offer(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(offer(1, "2001:db8::1/64"), OPEN_E_NONE);
  ASSERT_EQ(offer(56, "10.0.1.1/24"), OPEN_E_NONE);
  lease_withdraw(model, 56);
  lease_withdraw(model, 57);
  EXPECT_EQ(model.change, before);
  EXPECT_EQ(model.leases->by_interface.size(), 1u);
  switch_model copy = model;
  lease_withdraw(copy, 1);
  switch_reset(model);
  EXPECT_EQ(inet_prefix_text(lease_of(model, 1).ipv4), "10.0.0.1/24");
  EXPECT_EQ(inet_prefix_text(lease_of(model, 1).ipv6), "2001:db8::1/64");
}

TEST_F(Leases, OffersGoWithTheInterface) {
  const std::function<void(switch_model &)> ends[] = {
      [](switch_model &changed) { ASSERT_EQ(interface_remove_vlan_routing(changed, 1), OPEN_E_NONE); },
      [](switch_model &changed) { switch_reset(changed); }};
  uint32_t number;
  ASSERT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  ASSERT_EQ(offer(number, "10.0.0.1/24"), OPEN_E_NONE);
  for (const auto &end : ends) {
    switch_model changed = model;
    end(changed);
    EXPECT_TRUE(changed.leases->by_interface.empty());
  }
  ASSERT_EQ(offer(56, "10.0.1.1/24"), OPEN_E_NONE);
  ASSERT_EQ(lag_delete(model, 56), OPEN_E_NONE);
  EXPECT_EQ(lease_of(model, 56).ipv4.ipAddr.family, OPEN_AF_NONE);
}

/* --- DHCP ----------------------------------------------------------------------------------------------- */

TEST_F(Leases, OfferIsThePrimaryAddressWhileDhcpIsOn) {
  ASSERT_EQ(offer(1, "10.0.0.1/24"), OPEN_E_NONE);
  EXPECT_EQ(primary(1), "none");
  ASSERT_EQ(address_set_dhcp(model, 1, true), OPEN_E_NONE);
  EXPECT_EQ(primary(1), "10.0.0.1/24");
  EXPECT_EQ(addresses_configured(model, 1).primary.ipAddr.family, OPEN_AF_NONE);
  ASSERT_EQ(offer(1, "10.0.0.2/25"), OPEN_E_NONE);
  EXPECT_EQ(primary(1), "10.0.0.2/25");
  lease_withdraw(model, 1);
  EXPECT_EQ(primary(1), "none");
  EXPECT_TRUE(addresses_of(model, 1).dhcp) << "it goes on asking";
  ASSERT_EQ(offer(1, "10.0.0.3/24"), OPEN_E_NONE);
  EXPECT_EQ(primary(1), "10.0.0.3/24");
  ASSERT_EQ(address_set_dhcp(model, 1, false), OPEN_E_NONE);
  EXPECT_EQ(primary(1), "none");
  EXPECT_TRUE(model.addresses->by_interface.empty());
}

TEST_F(Leases, DhcpAndGivenPrimaryAddressTakeEachOthersPlace) {
  ASSERT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(address_set_dhcp(model, 1, true), OPEN_E_NONE);
  EXPECT_EQ(primary(1), "none");
  EXPECT_EQ(set(2, "10.0.0.1/24"), OPEN_E_NONE) << "it is free";
  ASSERT_EQ(set(1, "10.1.0.1/24"), OPEN_E_NONE);
  EXPECT_FALSE(addresses_of(model, 1).dhcp);
  EXPECT_EQ(primary(1), "10.1.0.1/24");
}

TEST_F(Leases, SecondaryAddressesNeedAGivenPrimaryOne) {
  ASSERT_EQ(offer(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(address_set_dhcp(model, 1, true), OPEN_E_NONE);
  EXPECT_EQ(address_add_secondary(model, 1, prefix("10.0.0.2/24")), OPEN_E_FAIL);
  ASSERT_EQ(set(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(address_add_secondary(model, 1, prefix("10.0.0.2/24")), OPEN_E_NONE);
  EXPECT_EQ(address_set_dhcp(model, 1, true), OPEN_E_FAIL);
  EXPECT_EQ(address_set_dhcp(model, 1, false), OPEN_E_NONE) << "as it is already";
  EXPECT_EQ(primary(1), "10.0.0.1/24");
}

TEST_F(Leases, RemovingTheGivenPrimaryAddressLeavesDhcpOn) {
  ASSERT_EQ(address_set_dhcp(model, 1, true), OPEN_E_NONE);
  uint64_t before = model.change;
  EXPECT_EQ(address_remove_primary(model, 1), OPEN_E_NONE);
  EXPECT_EQ(model.change, before);
  EXPECT_TRUE(addresses_of(model, 1).dhcp);
}

/* --- Autoconfiguration ---------------------------------------------------------------------------------- */

TEST_F(Leases, OfferIsAmongTheIpv6AddressesInItsPlace) {
  ASSERT_EQ(add_ipv6(1, "2001:db8::1/64"), OPEN_E_NONE);
  ASSERT_EQ(add_ipv6(1, "fe80::1/64"), OPEN_E_NONE);
  ASSERT_EQ(offer(1, "2001:db8::2/64"), OPEN_E_NONE);
  EXPECT_EQ(ipv6(1), (list{"2001:db8::1/64", "fe80::1/64"}));
  ASSERT_EQ(address_set_autoconfiguration(model, 1, true), OPEN_E_NONE);
  EXPECT_EQ(ipv6(1), (list{"2001:db8::1/64", "2001:db8::2/64", "fe80::1/64"}));
  open_inet_pfx_t next;
  ASSERT_TRUE(address_next_ipv6(model, 1, prefix("2001:db8::1/64").ipAddr, &next));
  EXPECT_EQ(inet_prefix_text(next), "2001:db8::2/64");
  ASSERT_TRUE(address_next_ipv6(model, 1, next.ipAddr, &next));
  EXPECT_EQ(inet_prefix_text(next), "fe80::1/64");
  EXPECT_FALSE(address_next_ipv6(model, 1, next.ipAddr, &next));
  lease_withdraw(model, 1);
  EXPECT_EQ(ipv6(1), (list{"2001:db8::1/64", "fe80::1/64"}));
  ASSERT_EQ(address_set_autoconfiguration(model, 1, false), OPEN_E_NONE);
  EXPECT_EQ(ipv6(1), (list{"2001:db8::1/64", "fe80::1/64"}));
}

/* The text of an offer, and the addresses that a walk gives with it beside 2001:db8::2/64 and fe80::1/64. */
TEST_F(Leases, WalkGivesTheOfferWhereverItStands) {
  const std::pair<const char *, list> rows[] = {
      {"2001:db8::1/64", {"2001:db8::1/64", "2001:db8::2/64", "fe80::1/64"}},
      {"2001:db8::3/64", {"2001:db8::2/64", "2001:db8::3/64", "fe80::1/64"}},
      {"fe80::2/64", {"2001:db8::2/64", "fe80::1/64", "fe80::2/64"}},
      {"2001:db8::2/48", {"2001:db8::2/64", "fe80::1/64"}}, /* declined: it is given here */
      {"fe80::1/10", {"2001:db8::2/64", "fe80::1/64"}},
      {"2001:db8:1::1/64", {"2001:db8::2/64", "fe80::1/64"}}, /* declined: it overlaps with another's */
      {"2001:db8:1::1/32", {"2001:db8::2/64", "fe80::1/64"}},
  };
  ASSERT_EQ(add_ipv6(1, "2001:db8::2/64"), OPEN_E_NONE);
  ASSERT_EQ(add_ipv6(1, "fe80::1/64"), OPEN_E_NONE);
  ASSERT_EQ(add_ipv6(2, "2001:db8:1::2/64"), OPEN_E_NONE);
  ASSERT_EQ(address_set_autoconfiguration(model, 1, true), OPEN_E_NONE);
  for (const auto &[offered, expected] : rows) {
    ASSERT_EQ(offer(1, offered), OPEN_E_NONE) << offered;
    list walked;
    open_inet_pfx_t next = {};
    while (address_next_ipv6(model, 1, next.ipAddr, &next)) walked.push_back(inet_prefix_text(next));
    EXPECT_EQ(walked, expected) << offered;
    EXPECT_EQ(ipv6(1), expected) << offered;
  }
}

TEST_F(Leases, OfferComesBesidesAsManyAddressesAsTheInterfaceMayHave) {
  ASSERT_TRUE(limit_override(&model.limits, "ipv6-addresses", 1));
  ASSERT_EQ(add_ipv6(1, "2001:db8::1/64"), OPEN_E_NONE);
  ASSERT_EQ(offer(1, "2001:db8::2/64"), OPEN_E_NONE);
  ASSERT_EQ(address_set_autoconfiguration(model, 1, true), OPEN_E_NONE);
  EXPECT_EQ(ipv6(1), (list{"2001:db8::1/64", "2001:db8::2/64"}));
}

TEST_F(Leases, FamiliesDoNotMindEachOther) {
  ASSERT_EQ(offer(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(offer(1, "2001:db8::1/64"), OPEN_E_NONE);
  ASSERT_EQ(address_set_dhcp(model, 1, true), OPEN_E_NONE);
  EXPECT_EQ(ipv6(1), list());
  ASSERT_EQ(address_set_autoconfiguration(model, 1, true), OPEN_E_NONE);
  ASSERT_EQ(address_set_dhcp(model, 1, false), OPEN_E_NONE);
  EXPECT_EQ(primary(1), "none");
  EXPECT_EQ(ipv6(1), list{"2001:db8::1/64"});
  ASSERT_EQ(address_set_autoconfiguration(model, 1, false), OPEN_E_NONE);
  EXPECT_TRUE(model.addresses->by_interface.empty()) << "an interface without anything takes no room";
}

/* --- Offers that are declined --------------------------------------------------------------------------- */

TEST_F(Leases, OfferThatOverlapsWithAGivenPrefixIsDeclinedUntilThatIsGone) {
  ASSERT_EQ(offer(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(offer(1, "2001:db8::1/64"), OPEN_E_NONE);
  ASSERT_EQ(address_set_dhcp(model, 1, true), OPEN_E_NONE);
  ASSERT_EQ(address_set_autoconfiguration(model, 1, true), OPEN_E_NONE);
  EXPECT_EQ(set(2, "10.0.9.1/16"), OPEN_E_NONE) << "what is given is never refused because of an offer";
  EXPECT_EQ(add_ipv6(2, "2001:db8::1/128"), OPEN_E_NONE);
  EXPECT_EQ(primary(1), "none");
  EXPECT_EQ(ipv6(1), list());
  ASSERT_EQ(address_remove_primary(model, 2), OPEN_E_NONE);
  EXPECT_EQ(primary(1), "10.0.0.1/24");
  EXPECT_EQ(ipv6(1), list());
  ASSERT_EQ(address_remove_ipv6(model, 2, prefix("2001:db8::1/128")), OPEN_E_NONE);
  EXPECT_EQ(ipv6(1), list{"2001:db8::1/64"});
}

TEST_F(Leases, OfferOfAnAddressThatIsGivenHereIsDeclined) {
  ASSERT_EQ(offer(1, "2001:db8::1/64"), OPEN_E_NONE);
  ASSERT_EQ(address_set_autoconfiguration(model, 1, true), OPEN_E_NONE);
  EXPECT_EQ(add_ipv6(1, "2001:db8::1/128"), OPEN_E_NONE);
  EXPECT_EQ(ipv6(1), list{"2001:db8::1/128"});
  ASSERT_EQ(address_remove_ipv6(model, 1, prefix("2001:db8::1/128")), OPEN_E_NONE);
  EXPECT_EQ(ipv6(1), list{"2001:db8::1/64"});
}

TEST_F(Leases, LinkLocalOfferIsInForceBesideThoseOfOthers) {
  ASSERT_EQ(add_ipv6(2, "fe80::1/64"), OPEN_E_NONE);
  ASSERT_EQ(offer(1, "fe80::1/64"), OPEN_E_NONE);
  ASSERT_EQ(address_set_autoconfiguration(model, 1, true), OPEN_E_NONE);
  EXPECT_EQ(ipv6(1), list{"fe80::1/64"});
}

TEST_F(Leases, OnlyGivenPrefixesOverlapWithOthers) {
  ASSERT_EQ(offer(1, "10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(address_set_dhcp(model, 1, true), OPEN_E_NONE);
  EXPECT_EQ(address_overlap(model, 2, prefix("10.0.0.2/24")), 0u);
}

/* --- Changes -------------------------------------------------------------------------------------------- */

TEST_F(Leases, ObtainingIsAChangeOfTheInterfaceOnce) {
  const std::pair<const char *, std::function<open_error_t()>> steps[] = {
      {"dhcp", [&] { return address_set_dhcp(model, 1, true); }},
      {"autoconfiguration", [&] { return address_set_autoconfiguration(model, 1, true); }},
      {"no dhcp", [&] { return address_set_dhcp(model, 1, false); }},
      {"no autoconfiguration", [&] { return address_set_autoconfiguration(model, 1, false); }}};
  for (const auto &[name, step] : steps) {
    settle();
    EXPECT_EQ(step(), OPEN_E_NONE) << name;
    EXPECT_TRUE(is_pending(model, 1)) << name;
    EXPECT_FALSE(is_pending(model, 2)) << name;
    uint64_t before = model.change;
    EXPECT_EQ(step(), OPEN_E_NONE) << name;
    EXPECT_EQ(model.change, before) << name;
  }
}

TEST_F(Leases, InterfacesThatCannotHaveAddressesCannotObtainThem) {
  for (uint32_t interface : {55u, 226u}) {
    EXPECT_EQ(address_set_dhcp(model, interface, true), OPEN_E_NOT_FOUND) << interface;
    EXPECT_EQ(address_set_autoconfiguration(model, interface, true), OPEN_E_NOT_FOUND) << interface;
  }
  for (uint32_t interface : {0u, 128u, 354u}) {
    EXPECT_EQ(address_set_dhcp(model, interface, true), OPEN_E_PARAM) << interface;
    EXPECT_EQ(address_set_autoconfiguration(model, interface, true), OPEN_E_PARAM) << interface;
  }
}

TEST_F(Leases, RemovalAndResetEndObtaining) {
  uint32_t number;
  ASSERT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  for (uint32_t interface : {1u, number}) {
    ASSERT_EQ(address_set_dhcp(model, interface, true), OPEN_E_NONE);
    ASSERT_EQ(address_set_autoconfiguration(model, interface, true), OPEN_E_NONE);
  }
  ASSERT_EQ(interface_remove_vlan_routing(model, 1), OPEN_E_NONE);
  ASSERT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  EXPECT_FALSE(addresses_of(model, number).dhcp);
  EXPECT_FALSE(addresses_of(model, number).autoconfiguration);
  switch_reset(model);
  EXPECT_FALSE(addresses_of(model, 1).dhcp);
  EXPECT_FALSE(addresses_of(model, 1).autoconfiguration);
}

/* --- Interface identifiers ------------------------------------------------------------------------------ */

/* The picture of RFC 4291 appendix A: the bits of a MAC address, c of the maker, g the group bit, m of the
 * station, around ff:fe; the universal bit, 0 there, is 1. */
TEST(InterfaceIdentifier, IsTheMacAddressAroundFffeWithTheUniversalBitInverted) {
  const struct {
    const char *mac, *network, *address;
  } rows[] = {
      {"34:56:78:9A:BC:DE", "2001:db8::/64", "2001:db8::3656:78ff:fe9a:bcde"}, /* RFC 2464 section 4 */
      {"00:00:5E:00:00:01", "fe80::/64", "fe80::200:5eff:fe00:1"},
      {"02:00:5E:10:00:01", "2001:db8:1:2:ffff:ffff:ffff:ffff/64", "2001:db8:1:2:0:5eff:fe10:1"},
      {"FD:FF:FF:FF:FF:FF", "::/64", "::ffff:ffff:feff:ffff"},
      {"FC:00:00:00:00:00", "ffff:ffff:ffff:ffff::/64", "ffff:ffff:ffff:ffff:fe00:ff:fe00:0"},
  };
  for (const auto &row : rows) {
    mac_address mac;
    ASSERT_TRUE(mac_read(row.mac, &mac)) << row.mac;
    open_inet_addr_t address = prefix(row.network).ipAddr;
    inet_set_interface_id(&address, mac);
    EXPECT_EQ(inet_address_text(address), row.address) << row.mac;
  }
}

/* --- Prefixes as text ----------------------------------------------------------------------------------- */

TEST(InetPrefix, IsAnAddressAndADecimalNumber) {
  open_inet_pfx_t read = {};
  for (const char *good : {"10.0.0.1/24", "::/0", "2001:DB8::1/128", "::ffff:192.0.2.1/96"})
    EXPECT_TRUE(inet_prefix_read(good, &read)) << good;
  ASSERT_TRUE(inet_prefix_read("10.0.0.1/99999999999", &read));
  EXPECT_EQ(read.pfxLen, UINT32_MAX);
  for (const char *bad :
       {"", "/", "10.0.0.1", "10.0.0.1/", "/24", "10.0.0.1/024", "10.0.0.1/+1", "10.0.0.1/-1", "10.0.0.1/24 ",
        " 10.0.0.1/24", "10.0.0.1/24/24", "10.0.0/24", "fe80::1%1/64"})
    EXPECT_FALSE(inet_prefix_read(bad, &read)) << bad;
}

} // namespace
