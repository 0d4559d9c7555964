/* Tests of the lines about port MAC locking: good ones, near misses with their errors, and printing. */
#include "platform/softswitch/config/language.h"
#include "tests/unit/platform/config_test_support.h"

#include <gtest/gtest.h>
#include <string>

using namespace softswitch;

namespace {

const std::string locked = "interface 0/1 mac-locking address 00:11:22:AA:BB:CC vlan 10 static\n";
const std::string base = "vlan 10,20\n" + locked;

/* A switch with VLANs 10 and 20 and an address locked on 0/1. */
switch_model prepared() {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  EXPECT_TRUE(apply_text(model, base, &error)) << error;
  return model;
}

TEST(MacLockingLines, GoodLinesGiveTheirConfiguration) {
  const std::pair<std::string, std::string> rows[] = {
      {"interface 0/2 mac-locking sticky", "vlan 10,20\ninterface 0/2 mac-locking sticky\n" + locked},
      {"no interface 0/2 mac-locking sticky", base},
      {"interface 0/1 mac-locking address 00:11:22:aa:bb:cc vlan 10 static", base},
      {"interface 0/1 mac-locking address 00:11:22:aa:bb:cc vlan 10 sticky",
       "vlan 10,20\ninterface 0/1 mac-locking address 00:11:22:AA:BB:CC vlan 10 sticky\n"},
      {"interface 3/64 mac-locking address \"fe:0a:0b:0c:0d:0e\" vlan 1 sticky",
       base + "interface 3/64 mac-locking address FE:0A:0B:0C:0D:0E vlan 1 sticky\n"},
      {"interface 0/2 mac-locking address 00:11:22:AA:BB:CC vlan 20 static",
       base + "interface 0/2 mac-locking address 00:11:22:AA:BB:CC vlan 20 static\n"},
      {"no interface 0/1 mac-locking address 00:11:22:aa:bb:cc vlan 10", "vlan 10,20\n"},
      {"no vlan 10", "vlan 20\n"},
      {"no vlan 20", "vlan 10\n" + locked},
  };
  for (const auto &[line, expected] : rows) {
    switch_model model = prepared();
    std::string error;
    EXPECT_EQ(apply_line(model, line, &error), OPEN_E_NONE) << line << ": " << error;
    EXPECT_EQ(print_configuration(model), expected) << line;
  }
}

TEST(MacLockingLines, NearMissesNameTheirReason) {
  const near_miss rows[] = {
      {"interface 0/1 mac-locking", OPEN_E_PARAM, "the line ends too early: sticky is missing"},
      {"interface 0/1 mac-locking sticky on", OPEN_E_PARAM, "\"on\" is not expected here"},
      {"interface 0/99 mac-locking sticky", OPEN_E_PARAM, "there is no port or LAG \"0/99\""},
      {"interface cpu mac-locking sticky", OPEN_E_PARAM, "there is no port or LAG \"cpu\""},
      {"interface 0/1 mac-locking address", OPEN_E_PARAM, "the line ends too early: <mac> is missing"},
      {"interface 0/1 mac-locking address 00:11:22:AA:BB vlan 10 static", OPEN_E_PARAM,
       "\"00:11:22:AA:BB\" is not the MAC address of a station"},
      {"interface 0/1 mac-locking address 00-11-22-AA-BB-CC vlan 10 static", OPEN_E_PARAM,
       "\"00-11-22-AA-BB-CC\" is not the MAC address of a station"},
      {"interface 0/1 mac-locking address 01:00:5E:00:00:01 vlan 10 static", OPEN_E_PARAM,
       "\"01:00:5E:00:00:01\" is not the MAC address of a station"},
      {"interface 0/1 mac-locking address 00:00:00:00:00:00 vlan 10 static", OPEN_E_PARAM,
       "\"00:00:00:00:00:00\" is not the MAC address of a station"},
      {"interface 0/1 mac-locking address \"\" vlan 10 static", OPEN_E_PARAM,
       "\"\" is not the MAC address of a station"},
      {"interface 0/1 mac-locking address 00:00:00:00:00:01 static", OPEN_E_PARAM,
       "\"static\" is not expected here"},
      {"interface 0/1 mac-locking address 00:00:00:00:00:01 vlan 0 static", OPEN_E_PARAM,
       "VLAN id out of range 1..4094"},
      {"interface 0/1 mac-locking address 00:00:00:00:00:01 vlan 10,20 static", OPEN_E_PARAM,
       "\"10,20\" is not a VLAN id"},
      {"interface 0/1 mac-locking address 00:00:00:00:00:01 vlan 30 static", OPEN_E_NOT_FOUND,
       "VLAN 30 does not exist"},
      {"interface 0/1 mac-locking address 00:00:00:00:00:01 vlan 10", OPEN_E_PARAM,
       "the line ends too early: static|sticky is missing"},
      {"interface 0/1 mac-locking address 00:00:00:00:00:01 vlan 10 maybe", OPEN_E_PARAM,
       "\"maybe\" is none of static|sticky"},
      {"interface 0/2 mac-locking address 00:11:22:aa:bb:cc vlan 10 static", OPEN_E_EXISTS,
       "00:11:22:AA:BB:CC is locked in VLAN 10 on 0/1"},
      {"no interface 0/2 mac-locking address 00:11:22:aa:bb:cc vlan 10", OPEN_E_NOT_FOUND,
       "00:11:22:AA:BB:CC is not locked in VLAN 10 on 0/2"},
      {"no interface 0/1 mac-locking address 00:11:22:aa:bb:cc vlan 20", OPEN_E_NOT_FOUND,
       "00:11:22:AA:BB:CC is not locked in VLAN 20 on 0/1"},
      {"no interface 0/1 mac-locking address 00:11:22:aa:bb:cc vlan 30", OPEN_E_NOT_FOUND,
       "00:11:22:AA:BB:CC is not locked in VLAN 30 on 0/1"},
      {"no interface 0/1 mac-locking address 00:11:22:aa:bb:cc vlan 10 static", OPEN_E_PARAM,
       "\"static\" is not expected here"},
  };
  expect_refused(prepared(), rows);
}

TEST(MacLockingLines, FullInterfaceSaysHowMuchThereIsRoomFor) {
  switch_model model = prepared();
  std::string error;
  ASSERT_TRUE(limit_override(&model.limits, "static-macs", 1));
  EXPECT_EQ(apply_line(model, "interface 0/1 mac-locking address 00:00:00:00:00:01 vlan 10 static", &error),
            OPEN_E_FULL);
  EXPECT_EQ(error, "0/1: there is room for 1 locked addresses only");
  EXPECT_EQ(apply_line(model, "interface 0/1 mac-locking address 00:11:22:AA:BB:CC vlan 10 sticky", &error),
            OPEN_E_NONE)
      << "marking what is locked takes no room";
}

/* A line that may or may not apply. Few addresses, VLANs and ports, so that lines meet each other. */
std::string random_line(std::mt19937 &random) {
  static const char *const ports[] = {"0/1", "0/2", "0/54", "3/1", "3/64"};
  std::string vlan = std::to_string(1 + random() % 4);
  std::string port = std::string("interface ") + ports[random() % 5] + " mac-locking ";
  std::string address = "address 00:00:00:00:00:0" + std::to_string(1 + random() % 9) + " vlan " + vlan;
  switch (random() % 8) {
  case 0:
    return "vlan " + vlan;
  case 1:
    return random() % 4 == 0 ? "no vlan " + vlan : port + "sticky";
  case 2:
    return "no " + port + "sticky";
  case 3:
    return "no " + port + address;
  case 4:
    return port + address + " sticky";
  default:
    return port + address + " static";
  }
}

TEST(MacLockingLines, PrintAppliedToAFactorySwitchPrintsTheSame) {
  prints_come_back(100, 120, random_line, [](const switch_model &model, const switch_model &) {
    ASSERT_GT(model.mac_locking->locks.size(), 5u);
  });
}

} // namespace
