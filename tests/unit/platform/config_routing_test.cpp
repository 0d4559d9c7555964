/* Tests of the lines about routing: good ones, near misses with their errors, and printing. */
#include "tests/unit/platform/config_test_support.h"

using namespace softswitch;

namespace {

const std::string base = "vlan 10,20,30\n"
                         "vlan 10 routing interface 226\n"
                         "vlan 20 routing interface 300\n";

/* A switch with routing interfaces of VLAN 10 and 20. */
switch_model prepared() {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  EXPECT_TRUE(apply_text(model, base, &error)) << error;
  return model;
}

TEST(RoutingLines, GoodLinesGiveTheirConfiguration) {
  const std::string vlan20 = "vlan 20 routing interface 300\n";
  const std::pair<const char *, std::string> rows[] = {
      {"vlan 10 routing", base},
      {"vlan 10 routing interface 226", base},
      {"vlan 30 routing",
       "vlan 10,20,30\nvlan 10 routing interface 226\nvlan 30 routing interface 227\n" + vlan20},
      {"vlan 30 routing interface 353", base + "vlan 30 routing interface 353\n"},
      {"vlan 1 routing",
       "vlan 10,20,30\nvlan 10 routing interface 226\nvlan 1 routing interface 227\n" + vlan20},
      {"no vlan 10 routing", "vlan 10,20,30\n" + vlan20},
      {"ip routing", base + "ip routing\n"},
      {"no ip routing", base},
      {"ipv6 routing", base + "ipv6 routing\n"},
      {"no ipv6 routing", base},
      {"interface 0/1 routing", base + "interface 0/1 routing\n"},
      {"no interface 0/1 routing", base},
      {"interface 3/64 routing", base + "interface 3/64 routing\n"},
      {"interface vlan10 routing", base},
      {"no interface vlan10 routing", base + "no interface vlan10 routing\n"},
  };
  for (const auto &[line, expected] : rows) {
    switch_model model = prepared();
    std::string error;
    EXPECT_EQ(apply_line(model, line, &error), OPEN_E_NONE) << line << ": " << error;
    EXPECT_EQ(print_configuration(model), expected) << line;
  }
}

TEST(RoutingLines, NearMissesNameTheirReason) {
  const std::string range = "number of a VLAN routing interface out of range 226..353";
  const struct {
    const char *line;
    open_error_t code;
    std::string error;
  } rows[] = {
      {"vlan 10 routing interface 227", OPEN_E_EXISTS, "vlan10 has the number 226"},
      {"vlan 30 routing interface 300", OPEN_E_EXISTS, "the number 300 is that of vlan20"},
      {"vlan 30 routing interface 225", OPEN_E_PARAM, range},
      {"vlan 30 routing interface 354", OPEN_E_PARAM, range},
      {"vlan 30 routing interface 0", OPEN_E_PARAM, range},
      {"vlan 40 routing interface 0", OPEN_E_PARAM, range},
      {"vlan 30 routing interface vlan30", OPEN_E_PARAM, "\"vlan30\" is not a number"},
      {"vlan 30 routing interface", OPEN_E_PARAM, "the line ends too early: <number> is missing"},
      {"vlan 30 routing on", OPEN_E_PARAM, "\"on\" is not expected here"},
      {"vlan 40 routing", OPEN_E_NOT_FOUND, "VLAN 40 does not exist"},
      {"vlan 40 routing interface 227", OPEN_E_NOT_FOUND, "VLAN 40 does not exist"},
      {"vlan 5000 routing", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"vlan 10,20 routing", OPEN_E_PARAM, "\"10,20\" is not a VLAN id"},
      {"no vlan 30 routing", OPEN_E_NOT_FOUND, "VLAN 30 has no routing interface"},
      {"no vlan 40 routing", OPEN_E_NOT_FOUND, "VLAN 40 has no routing interface"},
      {"no vlan 10 routing interface 226", OPEN_E_PARAM, "\"interface\" is not expected here"},
      {"no vlan 10", OPEN_E_FAIL, "VLAN 10 has a routing interface"},
      {"ip", OPEN_E_PARAM, "the line ends too early: routing is missing"},
      {"ip routing on", OPEN_E_PARAM, "\"on\" is not expected here"},
      {"ipv4 routing", OPEN_E_PARAM, "unknown command \"ipv4\""},
      {"interface cpu routing", OPEN_E_UNAVAIL, "cpu never routes"},
      {"no interface cpu routing", OPEN_E_UNAVAIL, "cpu never routes"},
      {"interface loopback0 routing", OPEN_E_UNAVAIL, "loopback0 always routes"},
      {"no interface loopback7 routing", OPEN_E_UNAVAIL, "loopback7 always routes"},
      {"interface vlan30 routing", OPEN_E_PARAM, "there is no interface \"vlan30\""},
      {"interface 0/99 routing", OPEN_E_PARAM, "there is no interface \"0/99\""},
      {"interface vlan10 shutdown", OPEN_E_UNAVAIL, "vlan10 is always enabled"},
      {"interface vlan10 description x", OPEN_E_UNAVAIL, "vlan10 has no description"},
      {"interface vlan10 mtu 9000", OPEN_E_UNAVAIL, "vlan10 has no MTU of its own"},
      {"interface vlan10 pvid 10", OPEN_E_PARAM, "there is no port or LAG \"vlan10\""},
      {"interface vlan10 lag 1", OPEN_E_PARAM, "there is no port or LAG \"vlan10\""},
  };
  for (const auto &row : rows) {
    switch_model model = prepared();
    std::string error;
    EXPECT_EQ(apply_line(model, row.line, &error), row.code) << row.line;
    EXPECT_EQ(error, row.error) << row.line;
    EXPECT_EQ(print_configuration(model), base) << row.line;
  }
}

TEST(RoutingLines, FullTableSaysHowMuchThereIsRoomFor) {
  switch_model model = prepared();
  std::string error;
  ASSERT_TRUE(limit_override(&model.limits, "vlan-routing-interfaces", 2));
  for (const char *line : {"vlan 30 routing", "vlan 30 routing interface 353"}) {
    EXPECT_EQ(apply_line(model, line, &error), OPEN_E_FULL) << line;
    EXPECT_EQ(error, "there is room for 2 VLAN routing interfaces only") << line;
  }
  EXPECT_EQ(apply_line(model, "vlan 10 routing", &error), OPEN_E_NONE) << "what is there is not one more";
}

/* Lines that name a VLAN routing interface come after the line that makes it. */
TEST(RoutingLines, EverythingOfAVlanRoutingInterfaceIsPrintedBehindIt) {
  const std::string text = "vlan 10\n"
                           "vlan 10 name office\n"
                           "vlan 10 routing interface 230\n"
                           "ip routing\n"
                           "ipv6 routing\n"
                           "interface 0/1 routing\n"
                           "interface 3/1 routing\n"
                           "no interface vlan10 routing\n"
                           "interface vlan10 ip address 10.0.0.1/24\n"
                           "interface 0/1 ip address dhcp\n"
                           "interface vlan10 ip secondary-address 10.0.0.2/24\n"
                           "interface vlan10 ipv6 address 2001:db8::1/64\n"
                           "interface vlan10 ipv6 address auto\n";
  switch_model model = make_switch(built_in_profile());
  std::string error;
  ASSERT_TRUE(apply_text(model, text, &error)) << error;
  EXPECT_EQ(print_configuration(model), text);
}

std::string random_line(std::mt19937 &random) {
  static const char *const interfaces[] = {"0/1", "0/2", "3/1", "vlan1", "vlan10", "vlan20", "loopback0"};
  static const char *const vlans[] = {"1", "10", "20"};
  static const char *const lines[] = {"ip routing", "ipv6 routing", "vlan 10,20", "lag 1"};
  static const char *const numbers[] = {"", " interface 226", " interface 227", " interface 353"};
  std::string no = random() % 3 == 0 ? "no " : "";
  std::string interface = no + "interface " + interfaces[random() % std::size(interfaces)];
  switch (random() % 6) {
  case 0:
    return no + lines[random() % std::size(lines)];
  case 1:
  case 2:
    return no + "vlan " + vlans[random() % 3] + " routing" + (no.empty() ? numbers[random() % 4] : "");
  case 3:
    return interface + " ip address" + (no.empty() ? " 10.0." + std::to_string(random() % 8) + ".1/24" : "");
  case 4:
    return random() % 2 ? interface + " ip address dhcp" : interface + " ipv6 address auto";
  default:
    return interface + " routing";
  }
}

TEST(RoutingLines, PrintAppliedToAFactorySwitchGivesTheSameSwitch) {
  prints_come_back(200, 80, random_line, [](const switch_model &first, const switch_model &second) {
    for (uint32_t vlan : {1u, 10u, 20u})
      ASSERT_EQ(interface_of_vlan(second, vlan), interface_of_vlan(first, vlan)) << vlan;
  });
}

} // namespace
