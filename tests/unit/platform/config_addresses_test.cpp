/* Tests of the lines about the IP addresses of interfaces: good ones, near misses with their errors, and
 * printing. */
#include "tests/unit/platform/config_test_support.h"

using namespace softswitch;

namespace {

const std::string primary = "interface 0/1 ip address 10.0.0.1/24\n";
const std::string secondary = "interface 0/1 ip secondary-address 10.0.0.2/24\n";
const std::string ipv6 = "interface 0/1 ipv6 address 2001:db8::1/64\n";
const std::string base = primary + secondary + ipv6;

/* A switch with addresses of each kind on 0/1. */
switch_model prepared() {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  EXPECT_TRUE(apply_text(model, base, &error)) << error;
  return model;
}

TEST(AddressLines, GoodLinesGiveTheirConfiguration) {
  const std::pair<std::string, std::string> rows[] = {
      {primary.substr(0, primary.size() - 1), base},
      {"interface 0/1 ip address 10.9.0.1/16", "interface 0/1 ip address 10.9.0.1/16\n" + secondary + ipv6},
      {"interface 0/2 ip address 10.0.1.0/31",
       primary + "interface 0/2 ip address 10.0.1.0/31\n" + secondary + ipv6},
      {"interface 3/64 ip address \"192.0.2.1/32\"",
       primary + "interface 3/64 ip address 192.0.2.1/32\n" + secondary + ipv6},
      {"interface loopback7 ip address 1.0.0.1/1", "interface loopback7 ip address 1.0.0.1/1\n"},
      {"interface 0/1 ip secondary-address 10.0.0.2/24", base},
      {"interface 0/1 ip secondary-address 192.0.2.1/32",
       primary + secondary + "interface 0/1 ip secondary-address 192.0.2.1/32\n" + ipv6},
      {"no interface 0/1 ip secondary-address 10.0.0.2/24", primary + ipv6},
      {"interface 0/1 ipv6 address 2001:0DB8:0:0::01/64", base},
      {"interface 0/1 ipv6 address 2001:DB8::/1", primary + secondary +
                                                      "interface 0/1 ipv6 address 2001:db8::/1\n"
                                                      "interface 0/1 ipv6 address 2001:db8::1/64\n"},
      {"interface loopback0 ipv6 address FE80:0:0:0:0:0:0:1/128",
       base + "interface loopback0 ipv6 address fe80::1/128\n"},
      {"interface 3/1 ipv6 address ::FFFF:192.0.2.1/96",
       base + "interface 3/1 ipv6 address ::ffff:192.0.2.1/96\n"},
      {"interface 3/1 ipv6 address 0:0:0:0:0:0:0:2/128", base + "interface 3/1 ipv6 address ::2/128\n"},
      {"interface 3/1 ipv6 address 2001:0DB8:0000:0001:0000:0000:0000:0001/64",
       base + "interface 3/1 ipv6 address 2001:db8:0:1::1/64\n"},
      {"interface 3/1 ipv6 address 2001:db8::1:1:1:1:1/64",
       base + "interface 3/1 ipv6 address 2001:db8:0:1:1:1:1:1/64\n"},
      {"no interface 0/1 ipv6 address 2001:db8:0::1/64", primary + secondary},
      {"no interface 0/2 ip address", base},
      {"no interface cpu ip address", base},
      {"interface 0/2 ip address dhcp", primary + "interface 0/2 ip address dhcp\n" + secondary + ipv6},
      {"no interface 0/1 ip address dhcp", base},
      {"interface 0/1 ipv6 address auto", base + "interface 0/1 ipv6 address auto\n"},
      {"no interface 0/1 ipv6 address auto", base},
  };
  for (const auto &[line, expected] : rows) {
    switch_model model = prepared();
    std::string error;
    if (line.find("loopback7") != std::string::npos) model = make_switch(built_in_profile());
    EXPECT_EQ(apply_line(model, line, &error), OPEN_E_NONE) << line << ": " << error;
    EXPECT_EQ(print_configuration(model), expected) << line;
  }
}

TEST(AddressLines, NearMissesNameTheirReason) {
  const std::string no_ipv4 = " is not an IPv4 address with a prefix length";
  const std::string no_ipv6 = " is not an IPv6 address with a prefix length";
  const near_miss rows[] = {
      {"interface 0/2 ip", OPEN_E_PARAM, "the line ends too early: address is missing"},
      {"interface 0/2 ip address", OPEN_E_PARAM, "the line ends too early: <ip-prefix> is missing"},
      {"interface 0/2 ip address 10.1.0.1", OPEN_E_PARAM, "\"10.1.0.1\"" + no_ipv4},
      {"interface 0/2 ip address 10.1.0.1 255.255.255.0", OPEN_E_PARAM, "\"10.1.0.1\"" + no_ipv4},
      {"interface 0/2 ip address 10.1.0.1/255.255.255.0", OPEN_E_PARAM,
       "\"10.1.0.1/255.255.255.0\"" + no_ipv4},
      {"interface 0/2 ip address 10.1.0.1/", OPEN_E_PARAM, "\"10.1.0.1/\"" + no_ipv4},
      {"interface 0/2 ip address /24", OPEN_E_PARAM, "\"/24\"" + no_ipv4},
      {"interface 0/2 ip address /", OPEN_E_PARAM, "\"/\"" + no_ipv4},
      {"interface 0/2 ip address \"\"", OPEN_E_PARAM, "\"\"" + no_ipv4},
      {"interface 0/2 ip address 10.1.0.1/24/24", OPEN_E_PARAM, "\"10.1.0.1/24/24\"" + no_ipv4},
      {"interface 0/2 ip address 10.1.0.1/+24", OPEN_E_PARAM, "\"10.1.0.1/+24\"" + no_ipv4},
      {"interface 0/2 ip address 10.1.0.1/-1", OPEN_E_PARAM, "\"10.1.0.1/-1\"" + no_ipv4},
      {"interface 0/2 ip address 10.1.0.1/024", OPEN_E_PARAM, "\"10.1.0.1/024\"" + no_ipv4},
      {"interface 0/2 ip address 10.1.0.1/0x18", OPEN_E_PARAM, "\"10.1.0.1/0x18\"" + no_ipv4},
      {"interface 0/2 ip address \"10.1.0.1 /24\"", OPEN_E_PARAM, "\"10.1.0.1 /24\"" + no_ipv4},
      {"interface 0/2 ip address 10.1.1/24", OPEN_E_PARAM, "\"10.1.1/24\"" + no_ipv4},
      {"interface 0/2 ip address 010.1.0.1/24", OPEN_E_PARAM, "\"010.1.0.1/24\"" + no_ipv4},
      {"interface 0/2 ip address 256.1.0.1/24", OPEN_E_PARAM, "\"256.1.0.1/24\"" + no_ipv4},
      {"interface 0/2 ip address 2001:db8:1::1/24", OPEN_E_PARAM, "\"2001:db8:1::1/24\"" + no_ipv4},
      {"interface 0/2 ip address 10.1.0.1/0", OPEN_E_PARAM, "prefix length out of range 1..32"},
      {"interface 0/2 ip address 10.1.0.1/33", OPEN_E_PARAM, "prefix length out of range 1..32"},
      {"interface 0/2 ip address 10.1.0.1/99999999999", OPEN_E_PARAM, "prefix length out of range 1..32"},
      {"interface 0/2 ip address 10.1.0.0/24", OPEN_E_PARAM, "10.1.0.0/24 is not the address of a host"},
      {"interface 0/2 ip address 127.0.0.1/8", OPEN_E_PARAM, "127.0.0.1/8 is not the address of a host"},
      {"interface 0/2 ip address 10.0.0.9/24", OPEN_E_EXISTS, "10.0.0.9/24 overlaps with a prefix of 0/1"},
      {"interface 0/1 ip address 10.0.0.2/24", OPEN_E_EXISTS, "0/1 has the address 10.0.0.2 already"},
      {"interface cpu ip address 10.1.0.1/24", OPEN_E_NOT_FOUND, "cpu cannot have IP addresses"},
      {"interface 0/99 ip address 10.1.0.1/24", OPEN_E_PARAM, "there is no interface \"0/99\""},
      {"interface vlan1 ip address 10.1.0.1/24", OPEN_E_PARAM, "there is no interface \"vlan1\""},
      {"no interface 0/1 ip address", OPEN_E_FAIL, "0/1 has secondary addresses"},
      {"no interface 0/1 ip address 10.0.0.1/24", OPEN_E_PARAM, "\"10.0.0.1/24\" is not expected here"},
      {"interface 0/2 ip secondary-address 10.1.0.1/24", OPEN_E_FAIL, "0/2 has no primary address"},
      {"interface 0/1 ip secondary-address 10.0.0.1/24", OPEN_E_EXISTS,
       "0/1 has the address 10.0.0.1 already"},
      {"interface 0/1 ip secondary-address 10.0.0.2/25", OPEN_E_EXISTS,
       "0/1 has the address 10.0.0.2 already"},
      {"interface 0/1 ip secondary-address 10.0.0.255/24", OPEN_E_PARAM,
       "10.0.0.255/24 is not the address of a host"},
      {"interface cpu ip secondary-address 10.1.0.1/24", OPEN_E_NOT_FOUND, "cpu cannot have IP addresses"},
      {"no interface 0/1 ip secondary-address", OPEN_E_PARAM,
       "the line ends too early: <ip-prefix> is missing"},
      {"no interface 0/1 ip secondary-address 10.0.0.2/25", OPEN_E_NOT_FOUND,
       "0/1 has no secondary address 10.0.0.2/25"},
      {"interface 0/2 ipv6 address 10.1.0.1/24", OPEN_E_PARAM, "\"10.1.0.1/24\"" + no_ipv6},
      {"interface 0/2 ipv6 address 2001:db8:1::1", OPEN_E_PARAM, "\"2001:db8:1::1\"" + no_ipv6},
      {"interface 0/2 ipv6 address 2001:db8::1::1/64", OPEN_E_PARAM, "\"2001:db8::1::1/64\"" + no_ipv6},
      {"interface 0/2 ipv6 address fe80::1%eth0/64", OPEN_E_PARAM, "\"fe80::1%eth0/64\"" + no_ipv6},
      {"interface 0/2 ipv6 address 2001:db8:1::1/0", OPEN_E_PARAM, "prefix length out of range 1..128"},
      {"interface 0/2 ipv6 address 2001:db8:1::1/129", OPEN_E_PARAM, "prefix length out of range 1..128"},
      {"interface 0/2 ipv6 address ff02::1/64", OPEN_E_PARAM, "ff02::1/64 is not the address of a host"},
      {"interface 0/2 ipv6 address 2001:db8::9/64", OPEN_E_EXISTS,
       "2001:db8::9/64 overlaps with a prefix of 0/1"},
      {"interface 0/1 ipv6 address 2001:db8::1/65", OPEN_E_EXISTS, "0/1 has the address 2001:db8::1 already"},
      {"interface cpu ipv6 address fe80::1/64", OPEN_E_NOT_FOUND, "cpu cannot have IP addresses"},
      {"interface 0/1 ip address dhcp", OPEN_E_FAIL, "0/1 has secondary addresses"},
      {"interface 0/2 ip address DHCP", OPEN_E_PARAM, "\"DHCP\"" + no_ipv4},
      {"interface 0/2 ip address \"dhcp\"", OPEN_E_PARAM, "\"dhcp\"" + no_ipv4},
      {"interface 0/2 ip address auto", OPEN_E_PARAM, "\"auto\"" + no_ipv4},
      {"interface 0/2 ip secondary-address dhcp", OPEN_E_PARAM, "\"dhcp\"" + no_ipv4},
      {"interface 0/2 ip address dhcp now", OPEN_E_PARAM, "\"now\" is not expected here"},
      {"interface 0/99 ip address dhcp", OPEN_E_PARAM, "there is no interface \"0/99\""},
      {"interface cpu ip address dhcp", OPEN_E_NOT_FOUND, "cpu cannot have IP addresses"},
      {"no interface cpu ip address dhcp", OPEN_E_NOT_FOUND, "cpu cannot have IP addresses"},
      {"interface 0/2 ipv6 address dhcp", OPEN_E_PARAM, "\"dhcp\"" + no_ipv6},
      {"interface cpu ipv6 address auto", OPEN_E_NOT_FOUND, "cpu cannot have IP addresses"},
      {"no interface 0/2 ipv6 address", OPEN_E_PARAM, "the line ends too early: <ipv6-prefix> is missing"},
      {"no interface 0/1 ipv6 address 2001:DB8::2/64", OPEN_E_NOT_FOUND,
       "0/1 has no IPv6 address 2001:db8::2/64"},
      {"interface 0/1 ipv6 secondary-address 2001:db8::2/64", OPEN_E_PARAM,
       "\"secondary-address\" is not expected here"},
  };
  expect_refused(prepared(), rows);
}

TEST(AddressLines, FullInterfaceSaysHowMuchThereIsRoomFor) {
  switch_model model = prepared();
  std::string error;
  ASSERT_TRUE(limit_override(&model.limits, "secondary-addresses", 1));
  ASSERT_TRUE(limit_override(&model.limits, "ipv6-addresses", 1));
  EXPECT_EQ(apply_line(model, "interface 0/1 ip secondary-address 10.0.0.3/24", &error), OPEN_E_FULL);
  EXPECT_EQ(error, "0/1: there is room for 1 secondary addresses only");
  EXPECT_EQ(apply_line(model, "interface 0/1 ipv6 address 2001:db8::2/64", &error), OPEN_E_FULL);
  EXPECT_EQ(error, "0/1: there is room for 1 IPv6 addresses only");
}

TEST(AddressLines, VlanRoutingInterfacesAreKnownByName) {
  switch_model model = prepared();
  std::string error;
  ASSERT_EQ(apply_line(model, "vlan 1 routing", &error), OPEN_E_NONE) << error;
  ASSERT_EQ(apply_line(model, "interface vlan1 ip address 10.1.0.1/24", &error), OPEN_E_NONE) << error;
  EXPECT_EQ(print_configuration(model), "vlan 1 routing interface 226\n" + primary +
                                            "interface vlan1 ip address 10.1.0.1/24\n" + secondary + ipv6);
}

/* A line that may or may not apply. Few interfaces and networks, so that lines meet each other. */
std::string random_line(std::mt19937 &random) {
  static const char *const interfaces[] = {"0/1", "0/54", "3/1", "loopback0"};
  static const char *const lengths[] = {"/24", "/25", "/31", "/32"};
  static const char *const ipv6_networks[] = {"2001:db8::", "2001:db8:0:1::", "fe80::", "2001:db8:0:2::"};
  std::string interface = std::string("interface ") + interfaces[random() % 4];
  std::string host = std::to_string(1 + random() % 9);
  std::string ipv4 = "10.0." + std::to_string(random() % 8) + "." + host + lengths[random() % 4];
  std::string ipv6_address = ipv6_networks[random() % 4] + host + (random() % 2 ? "/64" : "/128");
  switch (random() % 12) {
  case 0:
    return "no " + interface + " ip address";
  case 10:
    return (random() % 2 ? "no " : "") + interface + " ip address dhcp";
  case 11:
    return (random() % 2 ? "no " : "") + interface + " ipv6 address auto";
  case 1:
    return "no " + interface + " ip secondary-address " + ipv4;
  case 2:
    return "no " + interface + " ipv6 address " + ipv6_address;
  case 3:
  case 4:
    return interface + " ip address " + ipv4;
  case 5:
  case 6:
  case 7:
    return interface + " ip secondary-address " + ipv4;
  default:
    return interface + " ipv6 address " + ipv6_address;
  }
}

TEST(AddressLines, PrintAppliedToAFactorySwitchPrintsTheSame) {
  prints_come_back(100, 120, random_line, [](const switch_model &, const switch_model &) {});
}

} // namespace
