/* Tests of the lines about BGP: good ones, near misses with their errors, and printing. */
#include "platform/softswitch/config/language.h"
#include "tests/unit/platform/config_test_support.h"

#include <gtest/gtest.h>
#include <string>

using namespace softswitch;

namespace {

const std::string local = "bgp local-as 65000\n";
const std::string network = "bgp network 10.0.0.0/8\n";
const std::string mapped = "bgp network 2001:db8::/32 route-map out\n";
const std::string peer = "bgp neighbor 10.0.0.2 remote-as 65001\n";
const std::string linked = "bgp neighbor fe80::2%0/3 remote-as 65002\n";
const std::string peers = peer + linked;
const std::string active = "bgp neighbor fe80::2%0/3 activate ipv6\n";
const std::string ospf = "bgp redistribute ipv4 ospf match-internal metric 5\n";
const std::string base = local + network + mapped + peers + active + ospf;

switch_model prepared() {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  EXPECT_TRUE(apply_text(model, base, &error)) << error;
  return model;
}

TEST(BgpLines, GoodLinesGiveTheirConfiguration) {
  const std::string networks = network + mapped;
  const std::pair<std::string, std::string> rows[] = {
      {"bgp local-as 1", "bgp local-as 1\n" + networks + peers + active + ospf},
      {"no bgp local-as", networks + peers + active + ospf},
      {"bgp router-id 10.0.0.1", local + "bgp router-id 10.0.0.1\n" + networks + peers + active + ospf},
      {"no bgp router-id", base},
      {"bgp hold-time 0", local + "bgp hold-time 0\n" + networks + peers + active + ospf},
      {"bgp hold-time 90", base},
      {"no bgp hold-time", base},
      {"bgp keepalive-time 65535", local + "bgp keepalive-time 65535\n" + networks + peers + active + ospf},
      {"no bgp keepalive-time", base},
      {"bgp local-preference 0", local + "bgp local-preference 0\n" + networks + peers + active + ospf},
      {"no bgp local-preference", base},
      {"bgp log-neighbor-changes", local + "bgp log-neighbor-changes\n" + networks + peers + active + ospf},
      {"no bgp log-neighbor-changes", base},
      {"bgp network 10.1.2.3/8", base},
      {"bgp network \"10.1.2.3/8\" route-map \"in and out\"",
       local + "bgp network 10.0.0.0/8 route-map \"in and out\"\n" + mapped + peers + active + ospf},
      {"bgp network 2001:0DB8:0:0::1/32",
       local + network + "bgp network 2001:db8::/32\n" + peers + active + ospf},
      {"bgp network 0.0.0.0/0", local + "bgp network 0.0.0.0/0\n" + networks + peers + active + ospf},
      {"bgp network ::/0", local + network + "bgp network ::/0\n" + mapped + peers + active + ospf},
      {"bgp network 2001:db8:0:0:1:0:0:1/128",
       local + network + "bgp network 2001:db8::1:0:0:1/128\n" + mapped + peers + active + ospf},
      {"no bgp network 10.0.0.1/8", local + mapped + peers + active + ospf},
      {"no bgp network 2001:db8::/32", local + network + peers + active + ospf},
      {"bgp neighbor 10.0.0.2 remote-as 7",
       local + networks + "bgp neighbor 10.0.0.2 remote-as 7\n" + linked + active + ospf},
      {"bgp neighbor 2001:DB8:0:0:1:0:0:1%3/64 remote-as 7",
       local + networks + peer + "bgp neighbor 2001:db8::1:0:0:1%3/64 remote-as 7\n" + linked + active +
           ospf},
      {"bgp neighbor \"FE80:0::2%loopback0\" remote-as 7",
       local + networks + peers + "bgp neighbor fe80::2%loopback0 remote-as 7\n" + active + ospf},
      {"no bgp neighbor 10.0.0.2", local + networks + linked + active + ospf},
      {"no bgp neighbor fe80::2%0/3", local + networks + peer + ospf},
      {"bgp neighbor 10.0.0.2 activate ipv4", base},
      {"no bgp neighbor 10.0.0.2 activate ipv4",
       local + networks + peers + active + "no bgp neighbor 10.0.0.2 activate ipv4\n" + ospf},
      {"no bgp neighbor fe80::2%0/3 activate ipv6", local + networks + peers + ospf},
      {"bgp neighbor 10.0.0.2 next-hop-self ipv6",
       local + networks + peers + active + "bgp neighbor 10.0.0.2 next-hop-self ipv6\n" + ospf},
      {"no bgp neighbor 10.0.0.2 next-hop-self ipv4", base},
      {"bgp neighbor 10.0.0.2 update-source 3/1",
       local + networks + peers + active + "bgp neighbor 10.0.0.2 update-source 3/1\n" + ospf},
      {"no bgp neighbor 10.0.0.2 update-source", base},
      {"bgp redistribute ipv4 ospf", local + networks + peers + active + "bgp redistribute ipv4 ospf\n"},
      {"bgp redistribute ipv4 ospf metric 5 match-internal", base},
      {"bgp redistribute ipv4 ospf route-map out match-nssa-external-2 match-external-1 metric 4294967295 "
       "match-nssa-external-1 match-external-2",
       local + networks + peers + active +
           "bgp redistribute ipv4 ospf match-external-1 match-external-2 match-nssa-external-1 "
           "match-nssa-external-2 metric 4294967295 route-map out\n"},
      {"bgp redistribute ipv6 rip", base + "bgp redistribute ipv6 rip\n"},
      {"no bgp redistribute ipv4 ospf", local + networks + peers + active},
  };
  for (const auto &[line, expected] : rows) {
    switch_model model = prepared();
    std::string error;
    EXPECT_EQ(apply_line(model, line, &error), OPEN_E_NONE) << line << ": " << error;
    EXPECT_EQ(print_configuration(model), expected) << line;
  }
}

TEST(BgpLines, NearMissesNameTheirReason) {
  const std::string as_range = "AS number out of range 1..4294967295";
  const std::string hold_range = "the hold time is 0 or 3..65535";
  const std::string map_name = "the name of a route map is 1 to 31 bytes";
  const std::string long_name(32, 'x');
  const near_miss rows[] = {
      {"bgp", OPEN_E_PARAM, "the line ends too early: local-as is missing"},
      {"bgp local-as 0", OPEN_E_PARAM, as_range},
      {"bgp local-as 4294967296", OPEN_E_PARAM, "the number 4294967296 is too large"},
      {"bgp router-id 0.0.0.0", OPEN_E_PARAM, "the router id is not 0.0.0.0"},
      {"bgp router-id ::1", OPEN_E_PARAM, "\"::1\" is not an IPv4 address"},
      {"bgp hold-time 1", OPEN_E_PARAM, hold_range},
      {"bgp hold-time 2", OPEN_E_PARAM, hold_range},
      {"bgp hold-time 65536", OPEN_E_PARAM, hold_range},
      {"bgp keepalive-time 65536", OPEN_E_PARAM, "keepalive time out of range 0..65535"},
      {"bgp log-neighbor-changes on", OPEN_E_PARAM, "\"on\" is not expected here"},
      {"bgp network 10.0.0.0", OPEN_E_PARAM, "\"10.0.0.0\" is not an IP address with a prefix length"},
      {"bgp network 10.0.0.0/", OPEN_E_PARAM, "\"10.0.0.0/\" is not an IP address with a prefix length"},
      {"bgp network 10.0.0/8", OPEN_E_PARAM, "\"10.0.0/8\" is not an IP address with a prefix length"},
      {"bgp network 10.0.0.0/08", OPEN_E_PARAM, "\"10.0.0.0/08\" is not an IP address with a prefix length"},
      {"bgp network 10.0.0.0/33", OPEN_E_PARAM, "prefix length out of range 0..32"},
      {"bgp network 10.0.0.0/99999999999", OPEN_E_PARAM, "prefix length out of range 0..32"},
      {"bgp network ::/129", OPEN_E_PARAM, "prefix length out of range 0..128"},
      {"bgp network fe80::1%0/3/64", OPEN_E_PARAM,
       "\"fe80::1%0/3/64\" is not an IP address with a prefix length"},
      {"bgp network 224.0.0.1/4", OPEN_E_PARAM, "224.0.0.0/4 is not the address of a network"},
      {"bgp network fe80::1/64 route-map out", OPEN_E_PARAM, "fe80::/64 is not the address of a network"},
      {"bgp network 11.0.0.0/8 route-map \"\"", OPEN_E_PARAM, map_name},
      {"bgp network 11.0.0.0/8 route-map " + long_name, OPEN_E_PARAM, map_name},
      {"no bgp network 10.0.0.0/9", OPEN_E_NOT_FOUND, "there is no BGP network 10.0.0.0/9"},
      {"no bgp network 224.0.0.1/32", OPEN_E_PARAM, "there is no BGP network 224.0.0.1/32"},
      {"bgp neighbor 10.0.0 remote-as 1", OPEN_E_PARAM, "\"10.0.0\" is not an IP address"},
      {"bgp neighbor %0/3 remote-as 1", OPEN_E_PARAM, "\"%0/3\" is not an IP address"},
      {"bgp neighbor fe80::1% remote-as 1", OPEN_E_PARAM, "there is no interface \"\""},
      {"bgp neighbor fe80::1%3 remote-as 1", OPEN_E_PARAM, "there is no interface \"3\""},
      {"bgp neighbor fe80::1%0/99 remote-as 1", OPEN_E_PARAM, "there is no interface \"0/99\""},
      {"bgp neighbor fe80::1%vlan10 remote-as 1", OPEN_E_PARAM, "there is no interface \"vlan10\""},
      {"bgp neighbor fe80::1%0/1%0/2 remote-as 1", OPEN_E_PARAM, "there is no interface \"0/1%0/2\""},
      {"bgp neighbor fe80::1%cpu remote-as 1", OPEN_E_NOT_FOUND, "cpu cannot have IP addresses"},
      {"bgp neighbor fe80::1 remote-as 1", OPEN_E_PARAM,
       "fe80::1 is link-local: the interface stands behind it, as in fe80::1%0/1"},
      {"bgp neighbor 10.0.0.1%0/3 remote-as 1", OPEN_E_PARAM,
       "10.0.0.1 is an IPv4 address: no interface stands behind it"},
      {"bgp neighbor 127.0.0.1 remote-as 1", OPEN_E_PARAM, "127.0.0.1 is not the address of a host"},
      {"bgp neighbor ff02::1%0/1 remote-as 1", OPEN_E_PARAM, "ff02::1 is not the address of a host"},
      {"bgp neighbor 10.0.0.1 remote-as 0", OPEN_E_PARAM, as_range},
      {"no bgp neighbor 10.0.0.1", OPEN_E_NOT_FOUND, "there is no BGP neighbor 10.0.0.1"},
      {"no bgp neighbor fe80::2%0/4", OPEN_E_NOT_FOUND, "there is no BGP neighbor fe80::2%0/4"},
      {"bgp neighbor fe80::2 activate ipv4", OPEN_E_NOT_FOUND, "there is no BGP neighbor fe80::2"},
      {"no bgp neighbor 10.0.0.1 activate ipv4", OPEN_E_NOT_FOUND, "there is no BGP neighbor 10.0.0.1"},
      {"bgp neighbor 10.0.0.2 activate", OPEN_E_PARAM, "the line ends too early: ipv4|ipv6 is missing"},
      {"bgp neighbor 10.0.0.2 activate ipv5", OPEN_E_PARAM, "\"ipv5\" is none of ipv4|ipv6"},
      {"bgp neighbor 10.0.0.1 next-hop-self ipv4", OPEN_E_NOT_FOUND, "there is no BGP neighbor 10.0.0.1"},
      {"bgp neighbor 10.0.0.1 update-source 0/1", OPEN_E_NOT_FOUND, "there is no BGP neighbor 10.0.0.1"},
      {"no bgp neighbor 10.0.0.1 update-source", OPEN_E_NOT_FOUND, "there is no BGP neighbor 10.0.0.1"},
      {"bgp neighbor 10.0.0.2 update-source cpu", OPEN_E_UNAVAIL, "cpu cannot have IP addresses"},
      {"bgp neighbor 10.0.0.2 update-source 0/99", OPEN_E_PARAM, "there is no interface \"0/99\""},
      {"bgp redistribute ipv4 bgp", OPEN_E_PARAM, "\"bgp\" is none of connected|static|ospf|rip"},
      {"bgp redistribute ipv4 rip match-internal", OPEN_E_PARAM, "only OSPF routes can be matched"},
      {"bgp redistribute ipv4 ospf match-internal match-internal", OPEN_E_PARAM,
       "match-internal is there twice"},
      {"bgp redistribute ipv4 rip metric -1", OPEN_E_PARAM, "\"-1\" is not a number"},
      {"bgp redistribute ipv4 rip metric 4294967296", OPEN_E_PARAM, "the number 4294967296 is too large"},
      {"bgp redistribute ipv4 rip route-map " + long_name, OPEN_E_PARAM, map_name},
      {"bgp redistribute ipv4 rip route-map \"\"", OPEN_E_PARAM, map_name},
      {"bgp redistribute ipv4 rip always", OPEN_E_PARAM, "\"always\" is not expected here"},
      {"no bgp redistribute ipv6 ospf", OPEN_E_NOT_FOUND, "ipv6 routes from ospf are not redistributed"},
      {"no bgp redistribute ipv4 ospf metric 5", OPEN_E_PARAM, "\"metric\" is not expected here"},
  };
  expect_refused(prepared(), rows);
}

TEST(BgpLines, FullTableSaysHowMuchThereIsRoomFor) {
  switch_model model = prepared();
  std::string error;
  ASSERT_TRUE(limit_override(&model.limits, "bgp-networks", 2));
  ASSERT_TRUE(limit_override(&model.limits, "bgp-peers", 2));
  EXPECT_EQ(apply_line(model, "bgp network 11.0.0.0/8", &error), OPEN_E_FULL);
  EXPECT_EQ(error, "there is room for 2 BGP networks only");
  EXPECT_EQ(apply_line(model, "bgp neighbor 10.0.0.3 remote-as 1", &error), OPEN_E_FULL);
  EXPECT_EQ(error, "there is room for 2 BGP neighbors only");
  EXPECT_EQ(apply_line(model, "bgp network 10.0.0.0/8 route-map out", &error), OPEN_E_NONE);
  EXPECT_EQ(apply_line(model, "bgp neighbor 10.0.0.2 remote-as 1", &error), OPEN_E_NONE);
}

TEST(BgpLines, InterfaceOfANeighborIsInUse) {
  switch_model model = prepared();
  std::string error;
  ASSERT_TRUE(apply_text(model,
                         "vlan 10\nvlan 10 routing\n"
                         "bgp neighbor fe80::2%3/1 remote-as 1\n"
                         "bgp neighbor 10.0.0.2 update-source vlan10\n",
                         &error))
      << error;
  EXPECT_EQ(apply_line(model, "no lag 1", &error), OPEN_E_FAIL);
  EXPECT_EQ(error, "port-channel 1 is the scope or update source of a BGP neighbor");
  EXPECT_EQ(apply_line(model, "no vlan 10 routing", &error), OPEN_E_FAIL);
  EXPECT_EQ(error, "vlan10 is the scope or update source of a BGP neighbor");
  EXPECT_TRUE(apply_text(model,
                         "no bgp neighbor fe80::2%3/1\nno lag 1\n"
                         "no bgp neighbor 10.0.0.2 update-source\nno vlan 10 routing\n",
                         &error))
      << error;
  EXPECT_EQ(print_configuration(model), "vlan 10\nno lag 1\n" + base);
}

TEST(BgpLines, InterfaceWithAnOddNameIsReadAsItIsPrinted) {
  chassis_profile profile = built_in_profile();
  profile.ports[0].name = "port 1%a";
  switch_model model = make_switch(profile);
  std::string error;
  const std::string line = "bgp neighbor \"fe80::2%port 1%a\" remote-as 1\n";
  ASSERT_TRUE(apply_text(model, line, &error)) << error;
  EXPECT_EQ(print_configuration(model), line);
}

/* A line that may or may not apply. Few networks and neighbors, so that lines meet each other. */
std::string random_line(std::mt19937 &random) {
  auto pick = [&](auto &...words) {
    const char *const all[] = {words...};
    return std::string(all[random() % sizeof...(words)]);
  };
  std::string no = random() % 4 == 0 ? "no " : "";
  std::string family = pick("ipv4", "ipv6");
  std::string neighbor = "bgp neighbor " + pick("10.0.0.1", "10.0.0.2", "2001:db8::1", "2001:db8::1%0/1",
                                                "fe80::1%0/1", "fe80::1%3/1", "fe80::1%vlan10", "fe80::1");
  std::string map = pick(" route-map a", " route-map \"b c\"", "");
  switch (random() % 10) {
  case 0:
    return pick("vlan 10", "vlan 10 routing", "no vlan 10 routing", "no vlan 10", "no lag 1", "lag 1");
  case 1:
    return pick("bgp local-as 1", "no bgp local-as", "bgp router-id 1.2.3.4", "no bgp router-id",
                "bgp hold-time 3", "no bgp hold-time", "bgp keepalive-time 0", "bgp local-preference 1",
                "bgp log-neighbor-changes", "no bgp log-neighbor-changes");
  case 2:
    return no + "bgp network " + pick("10.0.0.0/8", "10.1.0.0/8", "10.0.0.0/9", "::/0", "2001:db8::/32") +
           (no.empty() ? map : "");
  case 3:
    return no + neighbor + " activate " + family;
  case 4:
    return no + neighbor + " next-hop-self " + family;
  case 5:
    return no + neighbor + " update-source" +
           (no.empty() ? pick(" 0/1", " 3/1", " loopback0", " vlan10", " cpu") : "");
  case 6:
    return no + "bgp redistribute " + family + pick(" ospf", " rip", " static") +
           (no.empty() ? pick("", " metric 5", " match-internal match-external-2") + map : "");
  case 7:
    return "no " + neighbor;
  default:
    return neighbor + " remote-as " + std::to_string(random() % 4);
  }
}

TEST(BgpLines, PrintAppliedToAFactorySwitchPrintsTheSame) {
  size_t peers_seen = 0;
  prints_come_back(100, 150, random_line, [&](const switch_model &model, const switch_model &) {
    peers_seen += model.bgp->peers.size();
  });
  EXPECT_GT(peers_seen, 200u);
}

} // namespace
