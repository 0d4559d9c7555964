/* Tests of the lines about access control lists: good ones, near misses with their errors, and printing. */
#include "platform/softswitch/config/language.h"
#include "tests/unit/platform/config_test_support.h"

#include <gtest/gtest.h>
#include <string>

using namespace softswitch;

namespace {

const std::string lists = "acl ip web id 1\nacl mac web id 2\nacl ipv6 six id 3\n";
const std::string base = "vlan 10\n" + lists +
                         "acl ip web rule 10 permit\n"
                         "interface 0/1 acl in ip web sequence 5\n"
                         "vlan 10 acl out mac web sequence 1\n";

/* A switch with a list of each type, a rule and two bindings. */
switch_model prepared() {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  EXPECT_TRUE(apply_text(model, base, &error)) << error;
  return model;
}

/* What is printed instead of `base` after a line. */
std::string after(const std::string &from, const std::string &to) {
  std::string text = base;
  size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

TEST(AclLines, GoodLinesGiveTheirConfiguration) {
  const std::string bindings = "interface 0/1 acl in ip web sequence 5\nvlan 10 acl out mac web sequence 1\n";
  const std::pair<std::string, std::string> rows[] = {
      {"acl ip web", base},
      {"acl ip web id 1", base},
      {"acl mac new", after(lists, lists + "acl mac new id 4\n")},
      {"acl mac new id 7", after(lists, lists + "acl mac new id 7\n")},
      {"acl ip \"a\\\"b\" id 4", after(lists, lists + "acl ip \"a\\\"b\" id 4\n")},
      {"acl ip rule", after(lists, lists + "acl ip rule id 4\n")},
      {"no acl ipv6 six", after("acl ipv6 six id 3\n", "")},
      {"no acl ip web rule 10", after("acl ip web rule 10 permit\n", "")},
      {"acl ip web rule 10 deny every", after("10 permit", "10 deny every")},
      {"acl ip web rule 10 permit protocol 255", base},
      {"acl ip web rule 2147483647 deny",
       after("10 permit\n", "10 permit\nacl ip web rule 2147483647 deny\n")},
      {"acl ip web rule 1 deny", after("acl ip web rule", "acl ip web rule 1 deny\nacl ip web rule")},
      {"interface 0/1 acl in mac web sequence 4",
       after("interface 0/1", "interface 0/1 acl in mac web sequence 4\ninterface 0/1")},
      {"interface 3/1 acl out ip web sequence 4294967295",
       after("vlan 10 acl", "interface 3/1 acl out ip web sequence 4294967295\nvlan 10 acl")},
      {"interface 0/1 acl in ip web sequence 5", base},
      {"no interface 0/1 acl in ip web", after("interface 0/1 acl in ip web sequence 5\n", "")},
      {"vlan 1 acl in ip web sequence 9",
       after("vlan 10 acl", "vlan 1 acl in ip web sequence 9\nvlan 10 acl")},
      {"no vlan 10 acl out mac web", after("vlan 10 acl out mac web sequence 1\n", "")},
      {"no vlan 10", lists + "acl ip web rule 10 permit\ninterface 0/1 acl in ip web sequence 5\n"},
  };
  for (const auto &[line, expected] : rows) {
    switch_model model = prepared();
    std::string error;
    EXPECT_EQ(apply_line(model, line, &error), OPEN_E_NONE) << line << ": " << error;
    EXPECT_EQ(print_configuration(model), expected) << line;
  }
}

TEST(AclLines, ClausesPrintInTheirOrderWhateverOrderTheyHad) {
  const struct {
    const char *list, *clauses, *printed;
  } rows[] = {
      {"ip", "log on dscp 63 protocol 6 established off source 10.0.0.1 mask 255.0.0.0",
       "protocol 6 source 10.0.0.1 mask 255.0.0.0 dscp 63 established off log on"},
      {"ip", "destination 1.2.3.4 mask 0.0.0.0 precedence 7 tos AB mask fF",
       "destination 1.2.3.4 mask 0.0.0.0 precedence 7 tos ab mask ff"},
      {"ip", "icmp-code 0 icmp-type 8 protocol 1", "protocol 1 icmp-type 8 icmp-code 0"},
      {"ip", "protocol 2 igmp-type 17 fragments on", "protocol 2 igmp-type 17 fragments on"},
      {"ip", "destination-port-range 0 65535 source-port greater 1023 protocol 17",
       "protocol 17 source-port greater 1023 destination-port-range 0 65535"},
      {"ip", "protocol 6 source-port-range 1 1 destination-port less 2 tcp-flags 2 mask 18",
       "protocol 6 source-port-range 1 1 destination-port less 2 tcp-flags 2 mask 18"},
      {"ip", "protocol 6 source-port equal 1 destination-port not-equal 2",
       "protocol 6 source-port equal 1 destination-port not-equal 2"},
      {"mac", "vlan 5 source-mac 00:11:22:aa:bb:cc mask ff:ff:ff:ff:ff:ff",
       "source-mac 00:11:22:AA:BB:CC mask FF:FF:FF:FF:FF:FF vlan 5"},
      {"mac", "vlan-range 5 9 cos 0 ethertype 1536 destination-mac 01:00:5E:00:00:00 mask 00:00:00:00:00:00",
       "destination-mac 01:00:5E:00:00:00 mask 00:00:00:00:00:00 ethertype 1536 vlan-range 5 9 cos 0"},
      {"mac",
       "rate-limit 4294967295 burst 128 time-range \"a,\\\"b\" redirect 3/64 mirror 0/1 queue 7 log off "
       "every",
       "every log off queue 7 mirror 0/1 redirect 3/64 time-range \"a,\\\"b\" rate-limit 4294967295 burst "
       "128"},
      {"ipv6", "routing off flow-label 1048575 source-prefix 2001:DB8:0::1/1 destination-prefix ::/128",
       "source-prefix 2001:db8::1/1 destination-prefix ::/128 routing off flow-label 1048575"},
      {"ipv6", "protocol 58 icmp-type 255", "protocol 58 icmp-type 255"},
  };
  for (const auto &row : rows) {
    switch_model model = make_switch(built_in_profile());
    std::string list = std::string("acl ") + row.list + " x", error;
    ASSERT_EQ(apply_line(model, list, &error), OPEN_E_NONE);
    EXPECT_EQ(apply_line(model, list + " rule 5 deny " + row.clauses, &error), OPEN_E_NONE)
        << row.clauses << ": " << error;
    EXPECT_EQ(print_configuration(model), list + " id 1\n" + list + " rule 5 deny " + row.printed + "\n");
  }
}

TEST(AclLines, NearMissesNameTheirReason) {
  const near_miss rows[] = {
      {"acl ip", OPEN_E_PARAM, "the line ends too early: <text> is missing"},
      {"acl ipx web", OPEN_E_PARAM, "\"ipx\" is none of ip|mac|ipv6"},
      {"acl ip \"a b\"", OPEN_E_PARAM,
       "the name of an access list is 1 to 31 bytes without blanks and \"/\""},
      {"acl ip a/b", OPEN_E_PARAM, "the name of an access list is 1 to 31 bytes without blanks and \"/\""},
      {"acl ip \"\" id 5", OPEN_E_PARAM,
       "the name of an access list is 1 to 31 bytes without blanks and \"/\""},
      {"acl ip new id 0", OPEN_E_PARAM, "id out of range 1..100"},
      {"acl ip new id 101", OPEN_E_PARAM, "id out of range 1..100"},
      {"acl ip new id 2", OPEN_E_EXISTS, "another access list has the id 2"},
      {"acl ip web id 4", OPEN_E_EXISTS, "IP list web has the id 1"},
      {"no acl ip none", OPEN_E_NOT_FOUND, "there is no IP list none"},
      {"no acl ip web", OPEN_E_FAIL, "IP list web is bound to an interface or VLAN"},
      {"no acl mac web", OPEN_E_FAIL, "MAC list web is bound to an interface or VLAN"},
      {"acl ip web rule 10", OPEN_E_PARAM, "the line ends too early: permit|deny is missing"},
      {"acl ip web rule 10 allow", OPEN_E_PARAM, "\"allow\" is none of permit|deny"},
      {"acl ip none rule 10 permit", OPEN_E_NOT_FOUND, "there is no IP list none"},
      {"acl ip web rule 0 permit", OPEN_E_PARAM, "rule number out of range 1..2147483647"},
      {"acl ip web rule 2147483648 permit", OPEN_E_PARAM, "rule number out of range 1..2147483647"},
      {"no acl ip web rule 11", OPEN_E_NOT_FOUND, "IP list web has no rule 11"},
      {"no acl ip none rule 10", OPEN_E_NOT_FOUND, "there is no IP list none"},
      {"interface cpu acl in ip web sequence 1", OPEN_E_PARAM, "there is no port or LAG \"cpu\""},
      {"interface 0/1 acl both ip web sequence 1", OPEN_E_PARAM, "\"both\" is none of in|out"},
      {"interface 0/2 acl in ip web sequence 0", OPEN_E_PARAM, "sequence number out of range 1..4294967295"},
      {"interface 0/2 acl in ip none sequence 1", OPEN_E_NOT_FOUND, "there is no IP list none"},
      {"interface 0/1 acl in ip web sequence 6", OPEN_E_EXISTS,
       "web is bound to 0/1 in with sequence number 5"},
      {"interface 0/1 acl in mac web sequence 5", OPEN_E_FAIL,
       "0/1 in: another access list has the sequence number 5"},
      {"no interface 0/1 acl out ip web", OPEN_E_NOT_FOUND, "web is not bound to 0/1 out"},
      {"no interface 0/1 acl in ip none", OPEN_E_NOT_FOUND, "there is no IP list none"},
      {"vlan 20 acl in ip web sequence 1", OPEN_E_NOT_FOUND, "VLAN 20 does not exist"},
      {"no vlan 20 acl in ip web", OPEN_E_NOT_FOUND, "VLAN 20 does not exist"},
      {"vlan 10 acl out mac web sequence 2", OPEN_E_EXISTS,
       "web is bound to VLAN 10 out with sequence number 1"},
      {"vlan 10 acl out ip web sequence 1", OPEN_E_FAIL,
       "VLAN 10 out: another access list has the sequence number 1"},
      {"no vlan 10 acl in mac web", OPEN_E_NOT_FOUND, "web is not bound to VLAN 10 in"},
      {"acl ip web rule 10 permit mirror 0/1", OPEN_E_FAIL, "web is bound to 0/1 itself"},
      {"acl ip web rule 10 permit redirect 0/1", OPEN_E_FAIL, "web is bound to 0/1 itself"},
  };
  expect_refused(prepared(), rows);
}

TEST(AclLines, WrongClausesNameTheirReason) {
  near_miss rows[] = {
      {"ip web rule 9 permit 5", OPEN_E_PARAM, "\"5\" is not expected here"},
      {"ip web rule 9 permit \"every\"", OPEN_E_PARAM, "\"every\" is not expected here"},
      {"ip web rule 9 permit every every", OPEN_E_PARAM, "every is there twice"},
      {"ip web rule 9 permit dscp 1 log on dscp 1", OPEN_E_PARAM, "dscp is there twice"},
      {"ip web rule 9 permit dscp", OPEN_E_PARAM, "the line ends too early: <number> is missing"},
      {"ip web rule 9 permit dscp x", OPEN_E_PARAM, "\"x\" is not a number"},
      {"ip web rule 9 permit dscp 64", OPEN_E_PARAM, "DSCP out of range 0..63"},
      {"ip web rule 9 permit precedence 8", OPEN_E_PARAM, "precedence out of range 0..7"},
      {"ip web rule 9 permit protocol 256", OPEN_E_PARAM, "protocol out of range 0..255"},
      {"ip web rule 9 permit protocol 2 igmp-type 256", OPEN_E_PARAM, "IGMP type out of range 0..255"},
      {"ip web rule 9 permit protocol 1 icmp-type 256", OPEN_E_PARAM, "ICMP type out of range 0..255"},
      {"ip web rule 9 permit protocol 1 icmp-type 8 icmp-code 256", OPEN_E_PARAM,
       "ICMP code out of range 0..255"},
      {"ip web rule 9 permit protocol 1 icmp-code 8", OPEN_E_PARAM, "ICMP code only with an ICMP type"},
      {"ip web rule 9 permit icmp-type 8", OPEN_E_PARAM, "ICMP type only with protocol 1"},
      {"ipv6 six rule 9 permit protocol 1 icmp-type 8", OPEN_E_PARAM, "ICMP type only with protocol 58"},
      {"ip web rule 9 permit igmp-type 8", OPEN_E_PARAM, "IGMP type only with protocol 2"},
      {"ip web rule 9 permit protocol 17 tcp-flags 1 mask 1", OPEN_E_PARAM, "TCP flags only with protocol 6"},
      {"ip web rule 9 permit established on", OPEN_E_PARAM, "\"established\" only with protocol 6"},
      {"ip web rule 9 permit source-port equal 80", OPEN_E_PARAM, "source port only with protocol 6 or 17"},
      {"ip web rule 9 permit protocol 1 destination-port equal 80", OPEN_E_PARAM,
       "destination port only with protocol 6 or 17"},
      {"ip web rule 9 permit protocol 6 source-port 80", OPEN_E_PARAM,
       "\"80\" is none of equal|not-equal|less|greater"},
      {"ip web rule 9 permit protocol 6 source-port equal 65536", OPEN_E_PARAM,
       "source port out of range 0..65535"},
      {"ip web rule 9 permit protocol 6 destination-port-range 1 65536", OPEN_E_PARAM,
       "destination port out of range 0..65535"},
      {"ip web rule 9 permit protocol 6 source-port-range 9 8", OPEN_E_PARAM,
       "the range of source ports runs backwards"},
      {"ip web rule 9 permit protocol 6 source-port equal 1 source-port-range 8 9", OPEN_E_PARAM,
       "source-port-range does not go with source-port"},
      {"mac web rule 9 permit vlan-range 8 9 vlan 8", OPEN_E_PARAM, "vlan does not go with vlan-range"},
      {"mac web rule 9 permit vlan 4095", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"mac web rule 9 permit vlan-range 9 8", OPEN_E_PARAM, "the range of VLANs runs backwards"},
      {"mac web rule 9 permit ethertype 1535", OPEN_E_PARAM, "ethertype out of range 1536..65535"},
      {"mac web rule 9 permit cos 8", OPEN_E_PARAM, "CoS out of range 0..7"},
      {"mac web rule 9 permit source-mac 00:11:22:33:44 mask FF:FF:FF:FF:FF:FF", OPEN_E_PARAM,
       "\"00:11:22:33:44\" is not a MAC address"},
      {"ip web rule 9 permit source 10.0.0.1 255.0.0.0", OPEN_E_PARAM, "\"255.0.0.0\" is not expected here"},
      {"ip web rule 9 permit source 10.0.0.1 mask ::", OPEN_E_PARAM, "\"::\" is not an IPv4 address"},
      {"ip web rule 9 permit tos 5 mask ff", OPEN_E_PARAM, "\"5\" is not two hexadecimal digits"},
      {"ip web rule 9 permit protocol 6 tcp-flags 64 mask 64", OPEN_E_PARAM, "TCP flags out of range 0..63"},
      {"ip web rule 9 permit protocol 6 tcp-flags 3 mask 1", OPEN_E_PARAM,
       "the TCP flags go beyond their mask"},
      {"ipv6 six rule 9 permit source-prefix 2001:db8::/0", OPEN_E_PARAM,
       "prefix length out of range 1..128"},
      {"ipv6 six rule 9 permit flow-label 1048576", OPEN_E_PARAM, "flow label out of range 0..1048575"},
      {"ip web rule 9 permit queue 8", OPEN_E_PARAM, "queue out of range 0..7"},
      {"ip web rule 9 permit mirror cpu", OPEN_E_PARAM, "there is no port or LAG \"cpu\""},
      {"ip web rule 9 permit log maybe", OPEN_E_PARAM, "\"maybe\" is none of on|off"},
      {"ip web rule 9 permit time-range \"a b\"", OPEN_E_PARAM,
       "the name of a time range is 1 to 31 bytes without blanks and \"/\""},
      {"ip web rule 9 permit time-range \"\"", OPEN_E_PARAM,
       "the name of a time range is 1 to 31 bytes without blanks and \"/\""},
      {"ip web rule 9 permit rate-limit 0 burst 1", OPEN_E_PARAM, "rate limit out of range 1..4294967295"},
      {"ip web rule 9 permit rate-limit 4294967296 burst 1", OPEN_E_PARAM,
       "the number 4294967296 is too large"},
      {"ip web rule 9 permit rate-limit 1 burst 129", OPEN_E_PARAM, "burst out of range 1..128"},
      {"ip web rule 9 permit rate-limit 1", OPEN_E_PARAM, "the line ends too early: burst is missing"},
      {"ip web rule 9 permit every dscp 1", OPEN_E_PARAM,
       "a rule that matches every packet has no other condition"},
      {"mac web rule 9 permit dscp 1", OPEN_E_UNAVAIL, "a rule of a MAC list has no DSCP"},
      {"mac web rule 9 permit protocol 255", OPEN_E_UNAVAIL, "a rule of a MAC list has no protocol"},
      {"ip web rule 9 permit cos 1", OPEN_E_UNAVAIL, "a rule of an IP list has no CoS"},
      {"ipv6 six rule 9 permit igmp-type 1", OPEN_E_UNAVAIL, "a rule of an IPv6 list has no IGMP type"},
      {"ip web rule 9 permit routing on", OPEN_E_UNAVAIL, "a rule of an IP list has no \"routing\""},
  };
  for (near_miss &row : rows) row.line = "acl " + row.line;
  expect_refused(prepared(), rows);
}

TEST(AclLines, FullTablesSayHowMuchThereIsRoomFor) {
  const struct {
    const char *limit, *line, *error;
  } rows[] = {
      {"acls", "acl ip new", "there is room for 0 access lists only"},
      {"acl-rules", "acl ip web rule 11 permit", "there is room for 0 rules only"},
      {"acl-bindings", "interface 0/2 acl in ip web sequence 1",
       "0/2 in: there is room for 0 access lists only"},
      {"tcam-ingress-slices-512", "acl ip web rule 11 permit", "the TCAM has no room for another rule"},
      {"tcam-ingress-slices-512", "vlan 1 acl in ip web sequence 1",
       "the TCAM has no room for the rules of web"},
  };
  for (const auto &row : rows) {
    switch_model model = prepared();
    std::string error;
    ASSERT_TRUE(limit_override(&model.limits, row.limit, 0));
    EXPECT_EQ(apply_line(model, row.line, &error), OPEN_E_FULL) << row.line;
    EXPECT_EQ(error, row.error) << row.line;
  }
}

TEST(AclLines, ReasonOutlivesTheCopiesOfTheSwitch) {
  switch_model model = prepared();
  { switch_model copy = model; }
  std::string error;
  ASSERT_TRUE(limit_override(&model.limits, "tcam-ingress-slices-512", 0));
  EXPECT_EQ(apply_line(model, "vlan 1 acl in ip web sequence 1", &error), OPEN_E_FULL);
  EXPECT_EQ(error, "the TCAM has no room for the rules of web") << "also when the tables were shared before";
}

TEST(AclLines, BindingToATargetAndDeletingOneIsRefusedInWords) {
  switch_model model = prepared();
  std::string error;
  ASSERT_EQ(apply_line(model, "acl ipv6 six rule 1 permit mirror 3/5", &error), OPEN_E_NONE);
  EXPECT_EQ(apply_line(model, "interface 3/5 acl in ipv6 six sequence 1", &error), OPEN_E_FAIL);
  EXPECT_EQ(error, "a rule of six mirrors or redirects to 3/5");
  EXPECT_EQ(apply_line(model, "no lag 5", &error), OPEN_E_FAIL);
  EXPECT_EQ(error, "port-channel 5 is the target of an access list's rule");
}

/* --- Random lines --------------------------------------------------------------------------------------- */

std::string pick(std::mt19937 &random, std::initializer_list<const char *> texts) {
  return texts.begin()[random() % texts.size()];
}

std::string random_clauses(std::mt19937 &random, const std::string &type) {
  std::string text;
  for (unsigned count = static_cast<unsigned>(random() % 5); count > 0; count--) {
    if (random() % 3 == 0)
      text += pick(random, {" log on", " log off", " queue 3", " mirror 0/3", " redirect 3/2",
                            " time-range \"b\\\\c\"", " rate-limit 5 burst 6"});
    else if (type == "mac")
      text += pick(random, {" vlan 7", " vlan-range 7 8", " cos 0", " ethertype 2048",
                            " source-mac 00:00:00:00:00:0a mask FF:FF:FF:FF:FF:FF",
                            " destination-mac 01:00:00:00:00:00 mask 01:00:00:00:00:00", " every"});
    else
      text += pick(random,
                   {" protocol 6", " protocol 17", " source-port equal 80", " destination-port-range 5 6",
                    " dscp 0", " precedence 3", " tos 0a mask ff", " tcp-flags 2 mask 3", " established off",
                    " fragments on", " routing off", " flow-label 9", " source 10.0.0.1 mask 255.0.0.0",
                    " destination-prefix 2001:db8::/32", " icmp-type 8"});
  }
  return text;
}

/* A line that may or may not apply. Few lists, rules and places, so that lines meet each other. */
std::string random_line(std::mt19937 &random) {
  std::string type = pick(random, {"ip", "mac", "ipv6"});
  std::string list = type + " " + pick(random, {"a", "b", "\"c,\\\"d\""});
  std::string acl = "acl " + list, rule = acl + " rule " + std::to_string(1 + random() % 6);
  std::string place = pick(random, {"interface 0/1", "interface 0/3", "interface 3/2", "vlan 1", "vlan 2"});
  std::string binding = place + " acl " + pick(random, {"in ", "out "}) + list;
  switch (random() % 12) {
  case 0:
    return random() % 4 == 0 ? "no " + acl : acl;
  case 1:
    return acl + " id " + std::to_string(random() % 12);
  case 2:
    return "no " + rule;
  case 3:
    return pick(random, {"vlan 2", "vlan 2", "no vlan 2", "no lag 2", "lag 2", "lag 2"});
  case 4:
    return "no " + binding;
  case 5:
  case 6:
    return binding + " sequence " + std::to_string(1 + random() % 4);
  default:
    return rule + pick(random, {" permit", " deny"}) + random_clauses(random, type);
  }
}

TEST(AclLines, PrintAppliedToAFactorySwitchPrintsTheSame) {
  prints_come_back(60, 300, random_line, [](const switch_model &model, const switch_model &) {
    ASSERT_GT(model.acls->lists.size(), 2u);
    ASSERT_FALSE(model.acls->bindings->empty());
  });
}

} // namespace
