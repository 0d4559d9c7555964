/* Tests of the lines about TCAM policies: good ones, near misses with their errors, and printing. */
#include "platform/softswitch/config/language.h"
#include "tests/unit/platform/config_test_support.h"

#include <gtest/gtest.h>
#include <string>

using namespace softswitch;

namespace {

const std::string redirecting = "tcam policy 1 openflow policy-priority 5 redirect 3/2\n";
const std::string gen = "tcam policy 7 ipv6 destination-ipv6 2001:db8:: mask ffff:ffff:: to-cpu\n";
const std::string applied = "interface 0/1 tcam-policy 1\n";
const std::string base = redirecting + gen + applied;

switch_model prepared() {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  EXPECT_TRUE(apply_text(model, base, &error)) << error;
  return model;
}

/* Clauses and how they are printed. */
const std::pair<std::string, std::string> clauses[] = {
    {"", ""},
    {" policy-priority 4294967295", " policy-priority 4294967295"},
    {" policy-priority 0", ""},
    {" rule-number 7", " rule-number 7"},
    {" rule-priority 7", " rule-priority 7"},
    {" destination-mac ff:ff:ff:ff:ff:ff", " destination-mac FF:FF:FF:FF:FF:FF"},
    {" destination-mac 00:00:00:00:00:00", ""},
    {" source-mac 01:00:5e:00:00:01", " source-mac 01:00:5E:00:00:01"},
    {" vlan 4094", " vlan 4094"},
    {" vlan-priority 7", " vlan-priority 7"},
    {" ethertype 65535", " ethertype 65535"},
    {" destination-ip 10.0.0.0 mask 255.0.0.0", " destination-ip 10.0.0.0 mask 255.0.0.0"},
    {" destination-ip 0.0.0.0 mask 0.0.0.0", ""},
    {" destination-ip 0.0.0.0 mask 0.0.0.1", " destination-ip 0.0.0.0 mask 0.0.0.1"},
    {" source-ip 255.255.255.255 mask 0.0.0.0", " source-ip 255.255.255.255 mask 0.0.0.0"},
    {" protocol 255 mask 4294967295", " protocol 255 mask 4294967295"},
    {" protocol 0 mask 1", " protocol 0 mask 1"},
    {" dscp 63 mask 255", " dscp 63 mask 255"},
    {" source-port 65535 mask 65535", " source-port 65535 mask 65535"},
    {" destination-port 1 mask 0", " destination-port 1 mask 0"},
    {" drop", " drop"},
    {" redirect 0/54", " redirect 0/54"},
    {" redirect \"3/64\"", " redirect 3/64"},
    {" new-vlan 1", " new-vlan 1"},
    {" new-source-mac 00:00:00:00:00:00", " new-source-mac 00:00:00:00:00:00"},
    {" new-destination-mac 00:11:22:aa:bb:cc", " new-destination-mac 00:11:22:AA:BB:CC"},
    {" new-priority 0", " new-priority 0"},
    {" new-priority 7 new-dscp 63", " new-priority 7 new-dscp 63"},
    {" new-dscp 63", " new-priority 0 new-dscp 63"},
    {" new-priority 7 new-dscp 0", " new-priority 7"},
    {" new-tpid 0", " new-tpid 0"},
    {" new-tpid 65535", " new-tpid 65535"},
    {" to-cpu", " to-cpu"},
    {" to-cpu drop vlan 5 rule-number 3", " rule-number 3 vlan 5 drop to-cpu"},
};

TEST(TcamLines, ClausesArePrintedInOneOrderAndOnlyWhenTheySaySomething) {
  for (const char *type : {"openflow", "ipv6", "egress"}) {
    for (const auto &[given, printed] : clauses) {
      switch_model model = make_switch(built_in_profile());
      std::string error, line = "tcam policy 640 " + std::string(type);
      EXPECT_EQ(apply_line(model, line + given, &error), OPEN_E_NONE) << given << ": " << error;
      EXPECT_EQ(print_configuration(model), line + printed + "\n") << given;
    }
  }
}

TEST(TcamLines, Ipv6ClausesArePrintedInPoliciesOfTheirType) {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  const std::string line = "tcam policy 1 ipv6 source-ipv6 :: mask ::1 destination-ipv6 fe80::1 mask ::\n";
  ASSERT_TRUE(apply_text(model, line, &error)) << error;
  ASSERT_TRUE(apply_text(model, "tcam policy 2 egress source-ipv6 :: mask ::", &error)) << error;
  EXPECT_EQ(print_configuration(model), line + "tcam policy 2 egress\n");
}

TEST(TcamLines, GoodLinesGiveTheirConfiguration) {
  const std::pair<std::string, std::string> rows[] = {
      {"tcam policy 1 openflow redirect 3/2 policy-priority 5", base},
      {"tcam policy 2 egress drop", redirecting + "tcam policy 2 egress drop\n" + gen + applied},
      {"no tcam policy 1", gen},
      {"no tcam policy 7", redirecting + applied},
      {"no tcam policies", ""},
      {"interface 0/1 tcam-policy 1", base},
      {"interface 0/1 tcam-policy 7", base + "interface 0/1 tcam-policy 7\n"},
      {"interface 3/64 tcam-policy 1", base + "interface 3/64 tcam-policy 1\n"},
      {"no interface 0/1 tcam-policy 1", redirecting + gen},
      {"no lag 1", "no lag 1\n" + base},
  };
  for (const auto &[line, expected] : rows) {
    switch_model model = prepared();
    std::string error;
    EXPECT_EQ(apply_line(model, line, &error), OPEN_E_NONE) << line << ": " << error;
    EXPECT_EQ(print_configuration(model), expected) << line;
  }
}

TEST(TcamLines, DeletingALagTakesItsPoliciesOff) {
  switch_model model = prepared();
  std::string error;
  ASSERT_TRUE(apply_text(model, "interface 3/1 tcam-policy 1\ninterface 3/1 tcam-policy 7\nno lag 1\nlag 1\n",
                         &error))
      << error;
  EXPECT_EQ(print_configuration(model), base);
}

TEST(TcamLines, NearMissesNameTheirReason) {
  const near_miss rows[] = {
      {"tcam", OPEN_E_PARAM, "the line ends too early: policy is missing"},
      {"tcam policy", OPEN_E_PARAM, "the line ends too early: <number> is missing"},
      {"tcam policy 2", OPEN_E_PARAM, "the line ends too early: openflow|ipv6|egress is missing"},
      {"tcam policy x openflow", OPEN_E_PARAM, "\"x\" is not a number"},
      {"tcam policy 0 openflow", OPEN_E_PARAM, "policy number out of range 1..640"},
      {"tcam policy 641 openflow", OPEN_E_PARAM, "policy number out of range 1..640"},
      {"tcam policy 4294967297 openflow", OPEN_E_PARAM, "the number 4294967297 is too large"},
      {"tcam policy 2 gen", OPEN_E_PARAM, "\"gen\" is none of openflow|ipv6|egress"},
      {"tcam policy 1 openflow", OPEN_E_EXISTS, "TCAM policy 1 is there already and is another"},
      {"tcam policy 1 ipv6 policy-priority 5 redirect 3/2", OPEN_E_EXISTS,
       "TCAM policy 1 is there already and is another"},
      {"no tcam policy 2", OPEN_E_NOT_FOUND, "TCAM policy 2 does not exist"},
      {"no tcam policy 1 openflow", OPEN_E_PARAM, "\"openflow\" is not expected here"},
      {"no tcam policies 1", OPEN_E_PARAM, "\"1\" is not expected here"},
      {"interface 0/1 tcam-policy", OPEN_E_PARAM, "the line ends too early: <number> is missing"},
      {"interface 0/1 tcam-policy 2", OPEN_E_NOT_FOUND, "TCAM policy 2 does not exist"},
      {"interface 0/1 tcam-policy 0", OPEN_E_NOT_FOUND, "TCAM policy 0 does not exist"},
      {"interface 3/2 tcam-policy 1", OPEN_E_FAIL, "TCAM policy 1 redirects to 3/2"},
      {"interface 0/99 tcam-policy 1", OPEN_E_PARAM, "there is no port or LAG \"0/99\""},
      {"interface cpu tcam-policy 1", OPEN_E_PARAM, "there is no port or LAG \"cpu\""},
      {"no interface 0/1 tcam-policy 7", OPEN_E_NOT_FOUND, "TCAM policy 7 is not applied to 0/1"},
      {"no interface 0/2 tcam-policy 1", OPEN_E_NOT_FOUND, "TCAM policy 1 is not applied to 0/2"},
      {"no interface 0/1 tcam-policy 2", OPEN_E_NOT_FOUND, "TCAM policy 2 is not applied to 0/1"},
      {"no lag 2", OPEN_E_FAIL, "port-channel 2 is the target of TCAM policy 1"},
  };
  expect_refused(prepared(), rows);
}

TEST(TcamLines, NearMissesOfClausesNameTheirReason) {
  const near_miss rows[] = {
      {"tcam policy 2 openflow priority 5", OPEN_E_PARAM, "\"priority\" is not expected here"},
      {"tcam policy 2 openflow \"drop\"", OPEN_E_PARAM, "\"drop\" is not expected here"},
      {"tcam policy 2 openflow drop drop", OPEN_E_PARAM, "drop is there twice"},
      {"tcam policy 2 openflow vlan 1 drop vlan 1", OPEN_E_PARAM, "vlan is there twice"},
      {"tcam policy 2 openflow vlan", OPEN_E_PARAM, "the line ends too early: <vlan> is missing"},
      {"tcam policy 2 openflow vlan 0", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"tcam policy 2 openflow vlan 4095", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"tcam policy 2 openflow vlan-priority 8", OPEN_E_PARAM, "VLAN priority out of range 0..7"},
      {"tcam policy 2 openflow vlan-priority 256", OPEN_E_PARAM, "the number 256 is too large"},
      {"tcam policy 2 openflow vlan-priority -1", OPEN_E_PARAM, "\"-1\" is not a number"},
      {"tcam policy 2 openflow ethertype 65536", OPEN_E_PARAM, "the number 65536 is too large"},
      {"tcam policy 2 openflow destination-ip 10.0.0.0", OPEN_E_PARAM,
       "the line ends too early: mask is missing"},
      {"tcam policy 2 openflow destination-ip 10.0.0.0 255.0.0.0", OPEN_E_PARAM,
       "\"255.0.0.0\" is not expected here"},
      {"tcam policy 2 openflow destination-ip ::1 mask 255.0.0.0", OPEN_E_PARAM,
       "\"::1\" is not an IPv4 address"},
      {"tcam policy 2 openflow source-ip 10.0.0.0 mask 255.0.0", OPEN_E_PARAM,
       "\"255.0.0\" is not an IPv4 address"},
      {"tcam policy 2 openflow source-ip 10.0.0.0/8 mask 255.0.0.0", OPEN_E_PARAM,
       "\"10.0.0.0/8\" is not an IPv4 address"},
      {"tcam policy 2 ipv6 source-ipv6 10.0.0.0 mask ffff::", OPEN_E_PARAM,
       "\"10.0.0.0\" is not an IPv6 address"},
      {"tcam policy 2 openflow source-ipv6 ::1 mask ffff::", OPEN_E_PARAM,
       "only policies of type ipv6 match IPv6 addresses"},
      {"tcam policy 2 egress destination-ipv6 :: mask ::1", OPEN_E_PARAM,
       "only policies of type ipv6 match IPv6 addresses"},
      {"tcam policy 2 openflow protocol 256 mask 0", OPEN_E_PARAM, "protocol out of range 0..255"},
      {"tcam policy 2 openflow dscp 64 mask 63", OPEN_E_PARAM, "DSCP out of range 0..63"},
      {"tcam policy 2 openflow dscp 1 mask 256", OPEN_E_PARAM, "the number 256 is too large"},
      {"tcam policy 2 openflow source-port 65536 mask 1", OPEN_E_PARAM, "the number 65536 is too large"},
      {"tcam policy 2 openflow destination-port 1 mask 65536", OPEN_E_PARAM, "the number 65536 is too large"},
      {"tcam policy 2 openflow source-mac 00:11:22:33:44", OPEN_E_PARAM,
       "\"00:11:22:33:44\" is not a MAC address"},
      {"tcam policy 2 openflow redirect 0/99", OPEN_E_PARAM, "there is no port or LAG \"0/99\""},
      {"tcam policy 2 openflow redirect cpu", OPEN_E_PARAM, "there is no port or LAG \"cpu\""},
      {"tcam policy 2 openflow new-vlan 0", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"tcam policy 2 openflow new-vlan 4095", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"tcam policy 2 openflow new-priority 8", OPEN_E_PARAM, "new priority out of range 0..7"},
      {"tcam policy 2 openflow new-priority 263", OPEN_E_PARAM, "the number 263 is too large"},
      {"tcam policy 2 openflow new-dscp 64", OPEN_E_PARAM, "new DSCP out of range 0..63"},
      {"tcam policy 2 openflow new-tpid 65536", OPEN_E_PARAM, "new TPID out of range 0..65535"},
  };
  expect_refused(prepared(), rows);
}

TEST(TcamLines, FullStageSaysHowMuchThereIsRoomFor) {
  switch_model model = prepared();
  std::string error;
  ASSERT_TRUE(limit_override(&model.limits, "tcam-ingress-policies", 2));
  ASSERT_TRUE(limit_override(&model.limits, "tcam-egress-policies", 0));
  EXPECT_EQ(apply_line(model, "tcam policy 2 ipv6", &error), OPEN_E_FULL);
  EXPECT_EQ(error, "TCAM policy 2: there is room for 2 ingress policies only");
  EXPECT_EQ(apply_line(model, "tcam policy 2 egress", &error), OPEN_E_FULL);
  EXPECT_EQ(error, "TCAM policy 2: there is room for 0 egress policies only");
  EXPECT_EQ(apply_line(model, redirecting.substr(0, redirecting.size() - 1), &error), OPEN_E_NONE)
      << "what is there already takes no room";
}

TEST(TcamLines, FullTcamSaysSo) {
  switch_model model = prepared();
  std::string error;
  ASSERT_TRUE(limit_override(&model.limits, "tcam-egress-slices-256", 0));
  EXPECT_EQ(apply_line(model, "tcam policy 2 egress", &error), OPEN_E_FULL);
  EXPECT_EQ(error, "TCAM policy 2: there is no room in the TCAM");
}

/* --- Random lines --------------------------------------------------------------------------------------- */

std::string random_bytes(std::mt19937 &random) {
  char text[18];
  snprintf(text, sizeof text, "%02x:%02x:%02x:00:00:%02x", unsigned(random() % 256), unsigned(random() % 256),
           unsigned(random() % 3), unsigned(random() % 2));
  return text;
}

std::string random_ip(std::mt19937 &random) {
  return std::to_string(random() % 256) + "." + std::to_string(random() % 2) + ".0." +
         std::to_string(random() % 256);
}

std::string random_clauses(std::mt19937 &random, bool ipv6) {
  static const char *const ports[] = {"0/1", "0/2", "3/1", "3/2"};
  auto below = [&](uint32_t bound) { return std::to_string(random() % bound); };
  const std::string all[] = {
      " policy-priority " + below(UINT32_MAX),
      " rule-number " + below(3),
      " rule-priority " + below(3),
      " destination-mac " + random_bytes(random),
      " source-mac " + random_bytes(random),
      " vlan " + std::to_string(1 + random() % 4095),
      " vlan-priority " + below(9),
      " ethertype " + below(65536),
      " destination-ip " + random_ip(random) + " mask " + random_ip(random),
      " source-ip " + random_ip(random) + " mask " + random_ip(random),
      " protocol " + below(256) + " mask " + below(300),
      " dscp " + below(64) + " mask " + below(256),
      " source-port " + below(65536) + " mask " + below(2),
      " destination-port " + below(2) + " mask " + below(65536),
      " source-ipv6 2001:db8::" + below(5) + " mask ffff::" + below(2),
      " destination-ipv6 ::" + below(2) + " mask ::" + below(2),
      " drop",
      std::string(" redirect ") + ports[random() % 4],
      " new-vlan " + std::to_string(1 + random() % 4094),
      " new-source-mac " + random_bytes(random),
      " new-destination-mac " + random_bytes(random),
      " new-priority " + below(8),
      " new-dscp " + below(64),
      " new-tpid " + below(65536),
      " to-cpu",
  };
  std::string chosen;
  for (const std::string &clause : all) {
    if (random() % 3 == 0 && (ipv6 || clause.find("ipv6") == std::string::npos)) chosen += clause;
  }
  return chosen;
}

/* A line that may or may not apply. Few policies and ports, so that lines meet each other. */
std::string random_line(std::mt19937 &random) {
  static const char *const ports[] = {"0/1", "0/2", "3/1", "3/2"};
  static const char *const types[] = {"openflow", "ipv6", "egress"};
  std::string id = std::to_string(1 + random() % 12);
  std::string port = std::string("interface ") + ports[random() % 4] + " tcam-policy " + id;
  size_t type = random() % 3;
  switch (random() % 16) {
  case 0:
    return "no tcam policy " + id;
  case 1:
    return random() % 8 == 0 ? "no tcam policies" : "no tcam policy " + id;
  case 2:
    return "no " + port;
  case 3:
    return "no lag " + std::to_string(1 + random() % 2);
  case 4:
    return "lag " + std::to_string(1 + random() % 2);
  case 5:
  case 6:
  case 7:
    return port;
  default:
    return "tcam policy " + id + " " + types[type] + random_clauses(random, type == 1);
  }
}

TEST(TcamLines, PrintAppliedToAFactorySwitchPrintsTheSame) {
  size_t policies = 0;
  prints_come_back(100, 150, random_line, [&](const switch_model &model, const switch_model &) {
    policies += model.tcam->policies.size();
  });
  EXPECT_GT(policies, 500u) << "enough lines applied for this to mean something";
}

} // namespace
