/* Making rules of IPv4 and IPv6 lists: protocols, addresses and ports. Their other conditions:
 * test_acl_rule_conditions.cpp. What all types have in common: test_acl_rule_creation.cpp. */
#include "tests/unit/modules/acl_creation_fixture.h"

class AclIpCreationTest : public AclCreationTest {
protected:
  /* A rule with these nodes after "match_all". */
  void expect_ip_rule(const rule_list &list, const std::string &query, const result_nodes &rest) const {
    expect_rule(list, "action=permit&" + query, rule_nodes(10, "Permit", "FALSE", rest));
  }
  void expect_every_packet(const rule_list &list, const std::string &query,
                           const result_nodes &rest = {}) const {
    expect_rule(list, "action=permit&" + query, rule_nodes(10, "Permit", "TRUE", rest));
  }
  void expect_none(const rule_list &list, const std::string &query) const {
    expect_no_rule(list, "action=permit&" + query);
  }
};

static const std::string ANY = "&src_ip=any&dest_ip=any";
static const std::string ANY6 = "&src_prefix=any&dest_prefix=any";

static const std::string &any_of(const rule_list &list) {
  return list.id == ipv4_list().id ? ANY : ANY6;
}

static result_nodes with_ends(const std::string &protocol, const result_nodes &source,
                              const result_nodes &destination) {
  return {text("protocol", protocol), branch("source", source), branch("destination", destination)};
}

/* --- Protocol --------------------------------------------------------------------------------------------
 */

struct protocol_row {
  const char *written, *read;
};

TEST_F(AclIpCreationTest, ProtocolsOfIpv4Rules) {
  const protocol_row rows[] = {{"tcp", "6(TCP)"},
                               {"udp", "17(UDP)"},
                               {"icmp", "1(ICMP)"},
                               {"igmp", "2(IGMP)"},
                               {"gre", "47(GRE)"},
                               {"eigrp", "88(EIGRP)"},
                               {"ipinip", "94(IPINIP)"},
                               {"ospf", "89(OSPF)"},
                               {"pim", "103(PIM)"},
                               {"0", "0"},
                               {"6", "6(TCP)"},
                               {"0000000006", "6(TCP)"},
                               {"50", "50"},
                               {"58", "58(ICMPv6)"},
                               {"254", "254"}};
  for (const protocol_row &row : rows)
    expect_ip_rule(ipv4_list(), std::string("protocol=") + row.written + ANY, with_ends(row.read, {}, {}));
}

TEST_F(AclIpCreationTest, ProtocolsOfIpv6Rules) {
  const protocol_row rows[] = {{"tcp", "6(TCP)"}, {"udp", "17(UDP)"},   {"icmpv6", "58(ICMPv6)"},
                               {"0", "0"},        {"58", "58(ICMPv6)"}, {"1", "1(ICMP)"},
                               {"254", "254"}};
  for (const protocol_row &row : rows)
    expect_ip_rule(ipv6_list(), std::string("protocol=") + row.written + ANY6, with_ends(row.read, {}, {}));
}

TEST_F(AclIpCreationTest, ProtocolMustBeGivenBeforeTheRuleIsMade) {
  for (const rule_list &list : {ipv4_list(), ipv6_list()}) {
    for (const char *protocol :
         {"", "protocol=", "protocol=TCP", "protocol=sctp", "protocol=-1", "protocol=%206", "protocol=tcp+",
          "protocol=0x6", "protocol=4294967296", "protocol=any"})
      expect_none_begun(list, "action=permit&" + (protocol + any_of(list)));
    expect_none_begun(list, "action=permit&protocol=" + std::string(256, '6') + any_of(list));
  }
  for (const char *protocol : {"ipv6", "icmpv6"})
    expect_none_begun(ipv4_list(), std::string("action=permit&protocol=") + protocol + ANY);
  for (const char *protocol : {"ip", "icmp", "igmp", "gre", "eigrp", "ipinip", "ospf", "pim"})
    expect_none_begun(ipv6_list(), std::string("action=permit&protocol=") + protocol + ANY6);
}

/* The platform refuses them once the rule is made. */
TEST_F(AclIpCreationTest, ProtocolNumbersThatDoNotExistAreRefused) {
  for (const rule_list &list : {ipv4_list(), ipv6_list()}) {
    for (const char *protocol : {"257", "262", "65536", "4294967295"})
      expect_none(list, std::string("protocol=") + protocol + any_of(list));
  }
}

TEST_F(AclIpCreationTest, EveryIgnoresAllConditions) {
  const std::string bad = "&src_ip=x&dest_ip=x&src_prefix=x&src_mask=x&dscp=99&precedence=9&tos=x&fragments=2"
                          "&routing=2&flow_lable=x&src_l4_port=80&dest_l4_port=x&igmp_type=x&icmp_message=x"
                          "&icmp_type=x&icmp_code=x&tcp_syn=2&tcp_established=1";
  for (const rule_list &list : {ipv4_list(), ipv6_list()}) {
    for (const char *protocol : {"protocol=every", "protocol=256", "protocol=0000000256"}) {
      expect_every_packet(list, protocol);
      expect_every_packet(list, protocol + bad);
      expect_every_packet(list, protocol + bad + "&log=1&assign_queue=2",
                          {text("log", "TRUE"), number("assign_queue", 2)});
    }
    expect_none(list, "protocol=every&log=2");
  }
}

TEST_F(AclIpCreationTest, AnyProtocolFromAnyToAnyIsEveryPacket) {
  for (const char *protocol : {"ip", "255"})
    expect_every_packet(ipv4_list(), std::string("protocol=") + protocol + ANY);
  for (const char *protocol : {"ipv6", "255"})
    expect_every_packet(ipv6_list(), std::string("protocol=") + protocol + ANY6);
}

TEST_F(AclIpCreationTest, AnyProtocolWithAConditionIsNotEveryPacket) {
  expect_ip_rule(
      ipv4_list(), "protocol=ip&dscp=10" + ANY,
      {text("protocol", "255(IP)"), branch("source", {}), branch("destination", {}), number("dscp", 10)});
  expect_ip_rule(ipv4_list(), "protocol=ip&src_ip=10.0.0.1&src_mask=255.255.255.255&dest_ip=any",
                 with_ends("255(IP)", {text("ip", "10.0.0.1"), text("mask", "255.255.255.255")}, {}));
  expect_ip_rule(ipv6_list(), "protocol=ipv6&flow_lable=0" + ANY6,
                 {text("protocol", "255(IP)"), branch("source", {}), branch("destination", {}),
                  number("flow_lable", 0)});
  expect_ip_rule(ipv6_list(), "protocol=ipv6&src_prefix=any&dest_prefix=::1&dest_prefix_length=128",
                 with_ends("255(IP)", {}, {text("ipv6", "::1"), number("prefix_length", 128)}));
}

/* --- Addresses -------------------------------------------------------------------------------------------
 */

TEST_F(AclIpCreationTest, Ipv4AddressesHaveMasks) {
  struct {
    const char *address, *mask;
  } rows[] = {{"10.0.0.0", "255.0.0.0"},
              {"192.0.2.1", "255.255.255.255"},
              {"0.0.0.0", "0.0.0.0"},
              {"255.255.255.255", "0.255.0.255"}};
  for (const auto &row : rows) {
    result_nodes nodes = {text("ip", row.address), text("mask", row.mask)};
    std::string source = std::string("src_ip=") + row.address + "&src_mask=" + row.mask;
    std::string destination = std::string("dest_ip=") + row.address + "&dest_mask=" + row.mask;
    expect_ip_rule(ipv4_list(), "protocol=udp&dest_ip=any&" + source, with_ends("17(UDP)", nodes, {}));
    expect_ip_rule(ipv4_list(), "protocol=udp&src_ip=any&" + destination, with_ends("17(UDP)", {}, nodes));
    expect_ip_rule(ipv4_list(), "protocol=udp&" + source + "&" + destination,
                   with_ends("17(UDP)", nodes, nodes));
  }
}

TEST_F(AclIpCreationTest, Ipv6PrefixesHaveLengths) {
  struct {
    const char *written, *read;
    int length;
  } rows[] = {{"2001:DB8::", "2001:db8::", 32},
              {"::", "::", 1},
              {"fe80:0:0:0:0:0:0:1", "fe80::1", 128},
              {"::ffff:192.0.2.0", "::ffff:192.0.2.0", 120}};
  for (const auto &row : rows) {
    result_nodes nodes = {text("ipv6", row.read), number("prefix_length", row.length)};
    std::string length = std::to_string(row.length);
    std::string source = std::string("src_prefix=") + row.written + "&src_prefix_length=" + length;
    std::string destination = std::string("dest_prefix=") + row.written + "&dest_prefix_length=" + length;
    expect_ip_rule(ipv6_list(), "protocol=udp&dest_prefix=any&" + source, with_ends("17(UDP)", nodes, {}));
    expect_ip_rule(ipv6_list(), "protocol=udp&src_prefix=any&" + destination,
                   with_ends("17(UDP)", {}, nodes));
    expect_ip_rule(ipv6_list(), "protocol=udp&" + source + "&" + destination,
                   with_ends("17(UDP)", nodes, nodes));
  }
}

TEST_F(AclIpCreationTest, MaskOrLengthOfAnyIsNotRead) {
  expect_every_packet(ipv4_list(), "protocol=ip&src_mask=x&dest_mask=x" + ANY);
  expect_every_packet(ipv6_list(), "protocol=ipv6&src_prefix_length=x&dest_prefix_length=x" + ANY6);
}

TEST_F(AclIpCreationTest, SourceAndDestinationMustBeGiven) {
  for (const char *query : {"", "&src_ip=any", "&dest_ip=any", "&src_ip=&dest_ip=any",
                            "&src_ip=any&dest_ip=", "&src_prefix=any&dest_prefix=any", "&dscp=1"}) {
    for (const char *protocol : {"protocol=ip", "protocol=tcp"})
      expect_none(ipv4_list(), protocol + std::string(query));
  }
  for (const char *query : {"", "&src_prefix=any", "&dest_prefix=any", "&src_prefix=&dest_prefix=any",
                            "&src_prefix=any&dest_prefix=", "&src_ip=any&dest_ip=any", "&dscp=1"}) {
    for (const char *protocol : {"protocol=ipv6", "protocol=tcp"})
      expect_none(ipv6_list(), protocol + std::string(query));
  }
  expect_none(ipv4_list(), "protocol=ip&dest_ip=any&src_ip=" + std::string(256, '1'));
}

TEST_F(AclIpCreationTest, TextsThatAreNoIpv4AddressesAreRefused) {
  for (const std::string &bad :
       {std::string("x"), std::string("ANY"), std::string("host"), std::string("10.0.0"),
        std::string("10.0.0.256"), std::string("10.0.0.1/8"), std::string("2001:db8::1"), std::string("::"),
        std::string("%2010.0.0.1"), std::string("-1"), std::string(47, '1'), std::string(48, '1'),
        std::string(255, '1'), std::string(256, '1')}) {
    expect_none(ipv4_list(), "protocol=ip&dest_ip=any&src_mask=255.0.0.0&src_ip=" + bad);
    expect_none(ipv4_list(), "protocol=ip&src_ip=any&dest_mask=255.0.0.0&dest_ip=" + bad);
    expect_none(ipv4_list(), "protocol=ip&dest_ip=any&src_ip=10.0.0.0&src_mask=" + bad);
    expect_none(ipv4_list(), "protocol=ip&src_ip=any&dest_ip=10.0.0.0&dest_mask=" + bad);
  }
  for (const char *mask : {"", "&src_mask=", "&dest_mask=255.0.0.0", "&src_mask=8", "&src_mask=any"})
    expect_none(ipv4_list(), std::string("protocol=ip&dest_ip=any&src_ip=10.0.0.0") + mask);
  for (const char *mask : {"", "&dest_mask=", "&src_mask=255.0.0.0", "&dest_mask=8", "&dest_mask=any"})
    expect_none(ipv4_list(), std::string("protocol=ip&src_ip=any&dest_ip=10.0.0.0") + mask);
}

TEST_F(AclIpCreationTest, TextsThatAreNoIpv6PrefixesAreRefused) {
  for (const std::string &bad :
       {std::string("x"), std::string("ANY"), std::string("10.0.0.1"), std::string("2001:db8::/32"),
        std::string("1::2::3"), std::string("fe80::1%25eth0"), std::string("%20::1"), std::string(47, ':'),
        std::string(48, '1'), std::string(255, '1'), std::string(256, '1')}) {
    expect_none(ipv6_list(), "protocol=ipv6&dest_prefix=any&src_prefix_length=64&src_prefix=" + bad);
    expect_none(ipv6_list(), "protocol=ipv6&src_prefix=any&dest_prefix_length=64&dest_prefix=" + bad);
  }
  for (const char *length : {"", "=", "=x", "=-1", "=0", "=129", "=64%20", "=4294967296", "=any", "=/64"}) {
    expect_none(ipv6_list(),
                std::string("protocol=ipv6&dest_prefix=any&src_prefix=::&src_prefix_length") + length);
    expect_none(ipv6_list(),
                std::string("protocol=ipv6&src_prefix=any&dest_prefix=::&dest_prefix_length") + length);
  }
}

/* --- Ports -----------------------------------------------------------------------------------------------
 */

TEST_F(AclIpCreationTest, PortsAreThoseOfTcpAndUdp) {
  struct {
    const char *written, *read;
  } rows[] = {
      {"eq:80", "equal to 80"},         {"neq:22", "not equal to 22"},     {"lt:1024", "less than 1024"},
      {"gt:1023", "greater than 1023"}, {"range:1000:2000", "1000..2000"}, {"range:7:7", "7..7"},
      {"eq:0", "equal to 0"},           {"eq:65535", "equal to 65535"},    {"range:0:65535", "0..65535"},
      {"eq%3A80", "equal to 80"}};
  for (const rule_list &list : {ipv4_list(), ipv6_list()}) {
    for (const auto &row : rows) {
      std::string source = std::string("&src_l4_port=") + row.written;
      std::string destination = std::string("&dest_l4_port=") + row.written;
      result_nodes port = {text("l4_port", row.read)};
      expect_ip_rule(list, "protocol=tcp" + source + any_of(list), with_ends("6(TCP)", port, {}));
      expect_ip_rule(list, "protocol=17" + destination + any_of(list), with_ends("17(UDP)", {}, port));
      expect_ip_rule(list, "protocol=udp" + source + destination + any_of(list),
                     with_ends("17(UDP)", port, port));
    }
  }
}

TEST_F(AclIpCreationTest, PortFollowsTheAddress) {
  expect_ip_rule(
      ipv4_list(),
      "protocol=tcp&src_ip=10.0.0.0&src_mask=255.0.0.0&dest_ip=any&src_l4_port=eq:80&dest_l4_port=lt:9",
      with_ends("6(TCP)", {text("ip", "10.0.0.0"), text("mask", "255.0.0.0"), text("l4_port", "equal to 80")},
                {text("l4_port", "less than 9")}));
}

TEST_F(AclIpCreationTest, PortsOfOtherProtocolsAreRefused) {
  const char *ipv4[] = {"icmp", "igmp", "ip", "gre", "0", "7", "16", "18", "255"};
  const char *ipv6[] = {"icmpv6", "ipv6", "0", "7", "255"};
  for (const char *variable : {"&src_l4_port=eq:80", "&dest_l4_port=eq:80", "&src_l4_port=x"}) {
    for (const char *protocol : ipv4) expect_none(ipv4_list(), "protocol=" + (protocol + ANY) + variable);
    for (const char *protocol : ipv6) expect_none(ipv6_list(), "protocol=" + (protocol + ANY6) + variable);
  }
}

TEST_F(AclIpCreationTest, BadPortsAreRefused) {
  for (const rule_list &list : {ipv4_list(), ipv6_list()}) {
    for (const char *port :
         {"80", "eq", "=80", "eq:x", "eq:-1", "eq:65536", "eq:4294967296", "EQ:80", "ge:80", "range:1000",
          "range:1000:", "range::2000", "range:1:2:3", "range:1000-2000", "range:2000:1000", "range:1:65536",
          "range:x:2", "%20eq:80"}) {
      expect_none(list, "protocol=tcp" + any_of(list) + "&src_l4_port=" + port);
      expect_none(list, "protocol=tcp" + any_of(list) + "&dest_l4_port=" + port);
    }
    expect_none(list, "protocol=tcp" + any_of(list) + "&src_l4_port=eq:" + std::string(200, '0'));
  }
}
