/* Tests of checking texts of the configuration language before they are applied: what no state can make
 * right, and what a whole configuration needs. */
#include "platform/softswitch/config/language.h"

#include <gtest/gtest.h>

using namespace softswitch;

namespace {

using strings = std::vector<std::string>;

const switch_model &factory() {
  static const switch_model model = make_switch(built_in_profile());
  return model;
}

/* --- Lines ---------------------------------------------------------------------------------------------- */

TEST(CheckLines, WhatOtherLinesOrChangesMayMakeIsRight) {
  for (const char *line : {"vlan 10 name x",
                           "no vlan 10",
                           "vlan 10 routing",
                           "interface 0/1 pvid 10",
                           "interface vlan10 mtu 1600",
                           "interface vlan4094 ip address 10.0.0.1/24",
                           "no interface vlan10 ip address",
                           "interface 0/1 lag 5",
                           "no lag 5",
                           "interface 3/5 shutdown",
                           "no acl ip web",
                           "acl ip web rule 1 permit every",
                           "interface 0/1 acl in ip web sequence 1",
                           "vxlan tenant 7 vlan 10",
                           "bgp neighbor fe80::1%vlan10 remote-as 65000",
                           "interface \"vlan10\" shutdown",
                           "vxlan source-interface vlan10",
                           "! comment",
                           "",
                           "  "}) {
    EXPECT_EQ(check_lines(factory(), line), strings()) << line;
  }
}

TEST(CheckLines, WhatNoStateMakesRightIsWrong) {
  struct wrong_line {
    const char *line, *reason;
  };
  for (const wrong_line &row : {
           wrong_line{"nonsense", "line 1: unknown command \"nonsense\""},
           wrong_line{"vlan 0", "line 1: VLAN id out of range 1..4094"},
           wrong_line{"interface vlan5000 shutdown", "line 1: there is no interface \"vlan5000\""},
           wrong_line{"interface vlan shutdown", "line 1: there is no interface \"vlan\""},
           wrong_line{"interface vlan01 shutdown", "line 1: there is no interface \"vlan01\""},
           wrong_line{"interface 9/9 shutdown", "line 1: there is no interface \"9/9\""},
           wrong_line{"interface vlan10 pvid 1", "line 1: there is no port or LAG \"vlan10\""},
           wrong_line{"interface 0/1 mtu 1", "line 1: MTU out of range 1518..12270"},
           wrong_line{"vlan 10 name \"x", "line 1: the closing quote is missing"},
           wrong_line{"vlan\t10\x01", "line 1: the line holds a control character"},
       }) {
    EXPECT_EQ(check_lines(factory(), row.line), strings{row.reason}) << row.line;
  }
}

TEST(CheckLines, LinesAreNumberedAndTenAreSaidAtMost) {
  EXPECT_EQ(check_lines(factory(), "vlan 10\r\nx\n\n! x\nvlan 11\ny"),
            (strings{"line 2: unknown command \"x\"", "line 6: unknown command \"y\""}));
  std::string many;
  for (int i = 0; i < 20; i++) many += "x\n";
  EXPECT_EQ(check_lines(factory(), many).size(), 10u);
}

TEST(CheckLines, ManyVlanInterfacesAreNoMatter) {
  std::string text;
  for (int vlan = 1; vlan <= 300; vlan++) text += "interface vlan" + std::to_string(vlan) + " shutdown\n";
  EXPECT_EQ(check_lines(factory(), text), strings());
}

/* --- Configurations ------------------------------------------------------------------------------------- */

TEST(CheckConfiguration, MustApplyWhole) {
  EXPECT_EQ(check_configuration(factory(), "vlan 10\nvlan 10 name x\n"), strings());
  EXPECT_EQ(check_configuration(factory(), ""), strings());
  EXPECT_EQ(check_configuration(factory(), "vlan 10 name x\nvlan 10\nvlan 10 name y\nx\n"),
            (strings{"line 1: VLAN 10 does not exist", "line 4: unknown command \"x\""}));
}

} // namespace
