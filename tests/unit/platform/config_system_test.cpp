/* Tests of the lines about the switch as a whole and its SSH server: good ones, near misses with their
 * errors, and printing. */
#include "tests/unit/platform/config_test_support.h"

using namespace softswitch;

namespace {

/* What is printed when these lines are applied to a switch in factory state. The print gives the same switch.
 */
std::string printed_of(const std::string &lines) {
  switch_model model = make_switch(built_in_profile()), again = model;
  std::string error;
  EXPECT_TRUE(apply_text(model, lines, &error)) << error;
  std::string printed = print_configuration(model);
  EXPECT_TRUE(apply_text(again, printed, &error)) << error << "\n" << printed;
  EXPECT_EQ(print_configuration(again), printed);
  return printed;
}

TEST(SystemLines, EachSettingIsPrintedAsItsLine) {
  const std::string longest(64, 'a');
  for (const std::string &line : {std::string("hostname a"),
                                  std::string("hostname 0-_.Z"),
                                  "hostname " + longest,
                                  std::string("prompt \">\""),
                                  std::string("prompt \"~ \\\"\\\\ !\""),
                                  std::string("prompt \" \""),
                                  "prompt " + longest,
                                  std::string("serial timeout 0"),
                                  std::string("serial timeout 160"),
                                  std::string("telnet server"),
                                  std::string("network-port ip address 10.0.0.1/1"),
                                  std::string("network-port ip address 10.0.0.1/31"),
                                  std::string("network-port ip address 10.0.0.1/24 gateway 10.0.0.254"),
                                  std::string("network-port ip address 10.0.0.0/31 gateway 10.0.0.1"),
                                  std::string("network-port protocol bootp"),
                                  std::string("network-port protocol dhcp"),
                                  std::string("ssh server"),
                                  std::string("ssh protocol 1"),
                                  std::string("ssh protocol both"),
                                  std::string("ssh max-sessions 0"),
                                  std::string("ssh max-sessions 4"),
                                  std::string("ssh timeout 1"),
                                  std::string("ssh timeout 160")}) {
    EXPECT_EQ(printed_of(line), line + "\n");
  }
}

TEST(SystemLines, FactoryStateIsNotPrinted) {
  const std::string address = "network-port ip address 10.0.0.1/24 gateway 10.0.0.254\n";
  for (const std::string &lines : {std::string("hostname kestrel"),
                                   std::string("no hostname"),
                                   std::string("hostname a\nno hostname"),
                                   std::string("prompt a\nno prompt"),
                                   std::string("no prompt"),
                                   std::string("serial timeout 5"),
                                   std::string("serial timeout 9\nno serial timeout"),
                                   std::string("telnet server\nno telnet server"),
                                   std::string("no telnet server"),
                                   address + "no network-port ip address",
                                   std::string("no network-port ip address"),
                                   std::string("no network-port protocol"),
                                   std::string("network-port protocol dhcp\nno network-port protocol"),
                                   std::string("ssh server\nno ssh server"),
                                   std::string("ssh protocol 2"),
                                   std::string("ssh protocol 1\nno ssh protocol"),
                                   std::string("ssh max-sessions 5"),
                                   std::string("ssh max-sessions 1\nno ssh max-sessions"),
                                   std::string("ssh timeout 5"),
                                   std::string("ssh timeout 6\nno ssh timeout"),
                                   address + "network-port protocol dhcp\nno network-port protocol"}) {
    EXPECT_EQ(printed_of(lines), "") << lines;
  }
}

TEST(SystemLines, TheyArePrintedBeforeEverythingElse) {
  const std::string text = "hostname leaf1\n"
                           "prompt \"leaf1> \"\n"
                           "serial timeout 10\n"
                           "telnet server\n"
                           "network-port ip address 10.0.0.1/24 gateway 10.0.0.254\n"
                           "ssh server\n"
                           "ssh protocol both\n"
                           "ssh max-sessions 2\n"
                           "ssh timeout 30\n";
  EXPECT_EQ(printed_of("vlan 10\n" + text), text + "vlan 10\n");
}

TEST(SystemLines, AddressOfTheNetworkPortIsReplacedWithItsGateway) {
  const std::string address = "network-port ip address 10.0.0.1/24", gateway = " gateway 10.0.0.254";
  const std::pair<std::string, std::string> rows[] = {
      {address + gateway + "\n" + address, address + "\n"},
      {address + "\n" + address + gateway, address + gateway + "\n"},
      {address + gateway + "\n" + address + " gateway 0.0.0.0", address + "\n"},
      {address + gateway + "\nnetwork-port ip address 11.0.0.1/8", "network-port ip address 11.0.0.1/8\n"},
      {address + gateway + "\nnetwork-port protocol bootp", "network-port protocol bootp\n"},
      {"network-port protocol bootp\nnetwork-port protocol dhcp", "network-port protocol dhcp\n"},
      {"network-port protocol bootp\nno network-port ip address", "network-port protocol bootp\n"},
      {address + "\nno network-port protocol", address + "\n"},
  };
  for (const auto &[lines, expected] : rows) EXPECT_EQ(printed_of(lines), expected) << lines;
}

TEST(SystemLines, NearMissesNameTheirReason) {
  const std::string hostname =
      "a host name is 1 to 64 letters, digits, \"-\", \"_\" and \".\" and begins with a letter or digit";
  const std::string prompt = "a prompt is 1 to 64 printable ASCII characters";
  const near_miss rows[] = {
      {"hostname", OPEN_E_PARAM, "the line ends too early: <text> is missing"},
      {"hostname \"\"", OPEN_E_PARAM, hostname},
      {"hostname -a", OPEN_E_PARAM, hostname},
      {"hostname .a", OPEN_E_PARAM, hostname},
      {"hostname _a", OPEN_E_PARAM, hostname},
      {"hostname a/b", OPEN_E_PARAM, hostname},
      {"hostname \"a b\"", OPEN_E_PARAM, hostname},
      {"hostname \xc3\xa4", OPEN_E_PARAM, hostname},
      {"hostname " + std::string(65, 'a'), OPEN_E_PARAM, hostname},
      {"hostname a b", OPEN_E_PARAM, "\"b\" is not expected here"},
      {"no hostname a", OPEN_E_PARAM, "\"a\" is not expected here"},
      {"prompt \"\"", OPEN_E_PARAM, prompt},
      {"prompt \xc3\xa4", OPEN_E_PARAM, prompt},
      {"prompt " + std::string(65, '>'), OPEN_E_PARAM, prompt},
      {"serial timeout 161", OPEN_E_PARAM, "serial timeout out of range 0..160"},
      {"serial timeout 4294967295", OPEN_E_PARAM, "serial timeout out of range 0..160"},
      {"serial timeout -1", OPEN_E_PARAM, "\"-1\" is not a number"},
      {"serial timeout", OPEN_E_PARAM, "the line ends too early: <number> is missing"},
      {"telnet", OPEN_E_PARAM, "the line ends too early: server is missing"},
      {"network-port ip address 10.0.0.1", OPEN_E_PARAM,
       "\"10.0.0.1\" is not an IPv4 address with a prefix length"},
      {"network-port ip address 10.0.0.1/0", OPEN_E_PARAM, "prefix length out of range 1..32"},
      {"network-port ip address 10.0.0.1/32", OPEN_E_PARAM, "prefix length out of range 1..31"},
      {"network-port ip address 10.0.0.0/24", OPEN_E_PARAM, "10.0.0.0/24 is not the address of a host"},
      {"network-port ip address 10.0.0.255/24", OPEN_E_PARAM, "10.0.0.255/24 is not the address of a host"},
      {"network-port ip address 127.0.0.1/8", OPEN_E_PARAM, "127.0.0.1/8 is not the address of a host"},
      {"network-port ip address 10.0.0.1/24 gateway 10.0.1.1", OPEN_E_PARAM,
       "10.0.1.1 is not a host of the network of 10.0.0.1/24"},
      {"network-port ip address 10.0.0.1/24 gateway 10.0.0.255", OPEN_E_PARAM,
       "10.0.0.255 is not a host of the network of 10.0.0.1/24"},
      {"network-port ip address 10.0.0.1/24 gateway ::1", OPEN_E_PARAM, "\"::1\" is not an IPv4 address"},
      {"network-port protocol none", OPEN_E_PARAM, "\"none\" is none of bootp|dhcp"},
      {"ssh", OPEN_E_PARAM, "the line ends too early: server is missing"},
      {"ssh protocol 3", OPEN_E_PARAM, "\"3\" is none of 1|2|both"},
      {"ssh max-sessions 6", OPEN_E_PARAM, "number of SSH sessions out of range 0..5"},
      {"ssh timeout 0", OPEN_E_PARAM, "SSH timeout out of range 1..160"},
      {"ssh timeout 161", OPEN_E_PARAM, "SSH timeout out of range 1..160"},
      {"no ssh", OPEN_E_PARAM, "the line ends too early: server is missing"},
  };
  expect_refused(make_switch(built_in_profile()), rows);
}

TEST(SystemLines, NetworkPortThatObtainsItsAddressTakesNone) {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  ASSERT_TRUE(apply_text(model, "network-port protocol dhcp", &error)) << error;
  const std::string reason = "the network port obtains its address by a protocol";
  const near_miss rows[] = {
      {"network-port ip address 10.0.0.1/24", OPEN_E_FAIL, reason},
      {"network-port ip address 10.0.0.1/24 gateway 10.0.0.254", OPEN_E_FAIL, reason},
      {"network-port ip address 10.0.0.0/24", OPEN_E_PARAM, "10.0.0.0/24 is not the address of a host"},
  };
  expect_refused(model, rows);
}

/* --- In the model --------------------------------------------------------------------------------------- */

/* Lines that together change every setting. */
const std::string everything = "hostname leaf1\n"
                               "prompt leaf1\n"
                               "serial timeout 10\n"
                               "telnet server\n"
                               "network-port ip address 10.0.0.1/24 gateway 10.0.0.254\n"
                               "ssh server\n"
                               "ssh protocol both\n"
                               "ssh max-sessions 2\n"
                               "ssh timeout 30\n";

TEST(SystemLines, WhatIsAsWantedIsNoChange) {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  uint64_t change = model.change;
  ASSERT_TRUE(apply_text(model, everything, &error)) << error;
  EXPECT_EQ(model.change, change + 9) << "each line is one change";
  change = model.change;
  ASSERT_TRUE(apply_text(model, everything + "no network-port protocol\n", &error)) << error;
  EXPECT_EQ(model.change, change);
  ASSERT_TRUE(apply_text(model, "network-port protocol dhcp\n", &error)) << error;
  change = model.change;
  ASSERT_TRUE(apply_text(model, "network-port protocol dhcp\nno network-port ip address\n", &error)) << error;
  EXPECT_EQ(model.change, change);
}

TEST(SystemLines, ResetReturnsEverythingToFactoryState) {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  ASSERT_TRUE(apply_text(model, everything, &error)) << error;
  model.ssh_sessions = 3;
  changes_taken(model, model.change);
  switch_reset(model);
  EXPECT_EQ(print_configuration(model), "");
  EXPECT_EQ(model.system->hostname, "kestrel");
  EXPECT_EQ(model.ssh->sessions_max, 5u);
  EXPECT_EQ(model.ssh_sessions, 3u) << "that is no configuration";
  EXPECT_GT(model.change, model.applied);
}

/* --- Random lines --------------------------------------------------------------------------------------- */

std::string random_line(std::mt19937 &random) {
  static const char *const lines[] = {"hostname leaf",
                                      "hostname kestrel",
                                      "hostname -",
                                      "no hostname",
                                      "prompt \"a > \"",
                                      "prompt \"\\\\\\\"\"",
                                      "no prompt",
                                      "serial timeout 0",
                                      "serial timeout 160",
                                      "no serial timeout",
                                      "telnet server",
                                      "no telnet server",
                                      "network-port ip address 10.0.0.1/24",
                                      "network-port ip address 10.0.0.2/24 gateway 10.0.0.1",
                                      "network-port ip address 10.0.0.2/31 gateway 10.0.0.3",
                                      "network-port ip address 10.0.0.2/31 gateway 10.0.0.1",
                                      "no network-port ip address",
                                      "network-port protocol bootp",
                                      "network-port protocol dhcp",
                                      "no network-port protocol",
                                      "ssh server",
                                      "no ssh server",
                                      "ssh protocol 1",
                                      "ssh protocol 2",
                                      "ssh protocol both",
                                      "ssh max-sessions 0",
                                      "ssh max-sessions 6",
                                      "no ssh max-sessions",
                                      "ssh timeout 1",
                                      "no ssh timeout"};
  return lines[random() % std::size(lines)];
}

TEST(SystemLines, PrintAppliedToAFactorySwitchGivesTheSameSwitch) {
  prints_come_back(100, 60, random_line, [](const switch_model &first, const switch_model &second) {
    ASSERT_EQ(second.system->hostname, first.system->hostname);
    ASSERT_EQ(second.system->prompt, first.system->prompt);
    ASSERT_EQ(second.system->network_port.gateway, first.system->network_port.gateway);
    ASSERT_EQ(second.system->network_port.protocol, first.system->network_port.protocol);
    ASSERT_EQ(second.ssh->protocol, first.ssh->protocol);
  });
}

} // namespace
