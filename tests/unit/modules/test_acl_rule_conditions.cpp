/* Making rules of IPv4 and IPv6 lists: all conditions but protocols, addresses and ports, which are
 * test_acl_rule_creation_ip.cpp. */
#include "tests/unit/modules/acl_creation_fixture.h"

class AclConditionTest : public AclCreationTest {
protected:
  static std::string query_of(const rule_list &list, const std::string &protocol, const std::string &more) {
    return "action=permit&protocol=" + protocol +
           (list.id == ipv4_list().id ? "&src_ip=any&dest_ip=any&" : "&src_prefix=any&dest_prefix=any&") +
           more;
  }
  /* A rule of this protocol from any to any, with these nodes after the ends. */
  void expect_condition(const rule_list &list, const std::string &protocol, const std::string &protocol_text,
                        const std::string &more, const result_nodes &rest) const {
    expect_rule(list, query_of(list, protocol, more), ip_rule_nodes(10, protocol_text, rest));
  }
  void expect_tcp_condition(const std::string &more, const result_nodes &rest) const {
    expect_condition(ipv4_list(), "tcp", "6(TCP)", more, rest);
    expect_condition(ipv6_list(), "tcp", "6(TCP)", more, rest);
  }
  void expect_bad(const rule_list &list, const std::string &protocol, const std::string &more) const {
    expect_no_rule(list, query_of(list, protocol, more));
  }
  void expect_bad_tcp(const std::string &more) const {
    expect_bad(ipv4_list(), "tcp", more);
    expect_bad(ipv6_list(), "tcp", more);
  }
};

/* --- What does not depend on the protocol ----------------------------------------------------------------
 */

struct condition_row {
  const char *query;
  result_nodes nodes;
};

static const condition_row GOOD_CONDITIONS[] = {
    {"dscp=0", {number("dscp", 0)}},
    {"dscp=63", {number("dscp", 63)}},
    {"dscp=0000000046", {number("dscp", 46)}},
    {"precedence=0", {number("precedence", 0)}},
    {"precedence=7", {number("precedence", 7)}},
    {"tos=a0", {text("tos", "ToS Bits: a0, ToS Mask: ff")}},
    {"tos=A0&tos_mask=F0", {text("tos", "ToS Bits: a0, ToS Mask: f0")}},
    {"tos=00&tos_mask=", {text("tos", "ToS Bits: 00, ToS Mask: ff")}},
    {"tos_mask=f0", {}},
    {"tos=&tos_mask=x", {}},
    {"fragments=1", {text("fragments", "TRUE")}},
    {"fragments=0", {text("fragments", "FALSE")}},
    {"dscp=&precedence=&tos=&fragments=&src_l4_port=&dest_l4_port=&icmp_message=&icmp_type=&tcp_fin=&tcp_urg="
     "&tcp_established=",
     {}},
    {"icmp_code=3", {}}, /* goes with a type only */
    {"fragments=1&tos=01&precedence=2&dscp=3",
     {number("dscp", 3), number("precedence", 2), text("tos", "ToS Bits: 01, ToS Mask: ff"),
      text("fragments", "TRUE")}},
};

TEST_F(AclConditionTest, ConditionsOfAnyProtocolAreAdded) {
  for (const condition_row &row : GOOD_CONDITIONS) {
    expect_condition(ipv4_list(), "50", "50", row.query, row.nodes);
    expect_condition(ipv6_list(), "50", "50", row.query, row.nodes);
  }
}

TEST_F(AclConditionTest, OneConditionMakesAnyToAnyNotEveryPacket) {
  for (const condition_row &row : GOOD_CONDITIONS) {
    if (row.nodes.empty()) continue;
    expect_condition(ipv4_list(), "ip", "255(IP)", row.query, row.nodes);
    expect_condition(ipv6_list(), "ipv6", "255(IP)", row.query, row.nodes);
  }
}

TEST_F(AclConditionTest, ConditionWithoutValueLeavesAnyToAnyEveryPacket) {
  for (const condition_row &row : GOOD_CONDITIONS) {
    if (!row.nodes.empty()) continue;
    expect_rule(ipv4_list(), query_of(ipv4_list(), "ip", row.query), rule_nodes(10, "Permit", "TRUE"));
    expect_rule(ipv6_list(), query_of(ipv6_list(), "ipv6", row.query), rule_nodes(10, "Permit", "TRUE"));
  }
}

TEST_F(AclConditionTest, ConditionThatIsTooLongIsNotThere) {
  for (const char *variable :
       {"dscp", "precedence", "tos", "fragments", "src_l4_port", "dest_l4_port", "icmp_message", "icmp_type",
        "tcp_fin", "tcp_syn", "tcp_rst", "tcp_psh", "tcp_ack", "tcp_urg", "tcp_established"}) {
    std::string more = variable + ("=" + std::string(256, '1'));
    expect_condition(ipv4_list(), "50", "50", more, {});
    expect_condition(ipv6_list(), "50", "50", more, {});
  }
}

TEST_F(AclConditionTest, BadConditionsAreRefused) {
  for (const char *query : {"dscp=64",
                            "dscp=-1",
                            "dscp=x",
                            "dscp=%201",
                            "dscp=4294967296",
                            "dscp=0x10",
                            "precedence=8",
                            "precedence=-1",
                            "precedence=x",
                            "tos=x",
                            "tos=100",
                            "tos=1",
                            "tos=0g",
                            "tos=-1",
                            "tos=a0&tos_mask=x",
                            "tos=a0&tos_mask=100",
                            "tos=a0&tos_mask=%20ff",
                            "fragments=2",
                            "fragments=x",
                            "fragments=-1",
                            "fragments=4294967297",
                            "fragments=TRUE"}) {
    for (const char *protocol : {"255", "6", "50"}) {
      expect_bad(ipv4_list(), protocol, query);
      expect_bad(ipv6_list(), protocol, query);
    }
  }
  std::string long_tos = "tos=" + std::string(255, 'f');
  expect_bad(ipv4_list(), "tcp", long_tos);
  expect_bad(ipv4_list(), "tcp", "tos=ff&tos_mask=" + std::string(255, 'f'));
}

/* --- IPv6 alone ------------------------------------------------------------------------------------------
 */

TEST_F(AclConditionTest, RoutingAndFlowLabelAreThoseOfIpv6) {
  expect_condition(ipv6_list(), "ipv6", "255(IP)", "routing=1", {text("routing", "TRUE")});
  expect_condition(ipv6_list(), "ipv6", "255(IP)", "routing=0", {text("routing", "FALSE")});
  expect_condition(ipv6_list(), "ipv6", "255(IP)", "flow_lable=0", {number("flow_lable", 0)});
  expect_condition(ipv6_list(), "tcp", "6(TCP)", "flow_lable=1048575&routing=1&fragments=0",
                   {text("fragments", "FALSE"), text("routing", "TRUE"), number("flow_lable", 1048575)});
  for (const char *query : {"routing=2", "routing=x", "routing=-1", "flow_lable=1048576", "flow_lable=x",
                            "flow_lable=-1", "flow_lable=4294967296"})
    expect_bad(ipv6_list(), "ipv6", query);
}

TEST_F(AclConditionTest, VariablesOfTheOtherFamilyAreNotRead) {
  expect_rule(ipv4_list(), query_of(ipv4_list(), "ip", "routing=2&flow_lable=x&flow_label=1&src_prefix=x"),
              rule_nodes(10, "Permit", "TRUE"));
  expect_rule(ipv6_list(), query_of(ipv6_list(), "ipv6", "igmp_type=x&flow_label=1&src_ip=x&src_mask=x"),
              rule_nodes(10, "Permit", "TRUE"));
}

/* --- IGMP and ICMP ---------------------------------------------------------------------------------------
 */

TEST_F(AclConditionTest, IgmpTypeIsThatOfIgmp) {
  for (int type : {0, 22, 255})
    expect_condition(ipv4_list(), "igmp", "2(IGMP)", "igmp_type=" + std::to_string(type),
                     {number("igmp_type", type)});
  for (const char *protocol : {"ip", "tcp", "icmp", "1", "3", "50"})
    expect_bad(ipv4_list(), protocol, "igmp_type=22");
  for (const char *type : {"256", "-1", "x", "%2022", "4294967296"})
    expect_bad(ipv4_list(), "igmp", std::string("igmp_type=") + type);
}

static result_nodes icmp_nodes(int type, int code) {
  return {number("icmp_type", type), number("icmp_code", code)};
}

static constexpr int ANY_CODE = 256;

TEST_F(AclConditionTest, MessagesOfIcmp) {
  struct {
    const char *message;
    int type, code;
  } rows[] = {{"echo", 8, 0},
              {"echo-reply", 0, 0},
              {"packet-too-big", 3, 4},
              {"redirect", 5, ANY_CODE},
              {"router-advertisement", 9, ANY_CODE},
              {"unreachable", 3, ANY_CODE},
              {"host-redirect", 5, 1}};
  for (const auto &row : rows) {
    expect_condition(ipv4_list(), "icmp", "1(ICMP)", std::string("icmp_message=") + row.message,
                     icmp_nodes(row.type, row.code));
    expect_condition(ipv4_list(), "1", "1(ICMP)", std::string("icmp_code=9&icmp_message=") + row.message,
                     icmp_nodes(row.type, row.code));
  }
}

TEST_F(AclConditionTest, MessagesOfIcmpv6) {
  struct {
    const char *message;
    int type, code;
  } rows[] = {
      {"echo-request", 128, 0},         {"port-unreachable", 1, 4}, {"router-renumbering", 138, ANY_CODE},
      {"router-advertisement", 134, 0}, {"next-header", 4, 1},      {"nd-ns", 135, 0}};
  for (const auto &row : rows)
    expect_condition(ipv6_list(), "icmpv6", "58(ICMPv6)", std::string("icmp_message=") + row.message,
                     icmp_nodes(row.type, row.code));
}

TEST_F(AclConditionTest, TypesOfIcmpMayHaveACode) {
  struct {
    const char *query;
    int type, code;
  } rows[] = {{"icmp_type=8", 8, ANY_CODE},
              {"icmp_type=8&icmp_code=0", 8, 0},
              {"icmp_type=0&icmp_code=", 0, ANY_CODE},
              {"icmp_type=255&icmp_code=255", 255, 255},
              {"icmp_message=&icmp_type=3", 3, ANY_CODE}};
  for (const auto &row : rows) {
    expect_condition(ipv4_list(), "icmp", "1(ICMP)", row.query, icmp_nodes(row.type, row.code));
    expect_condition(ipv6_list(), "icmpv6", "58(ICMPv6)", row.query, icmp_nodes(row.type, row.code));
  }
}

TEST_F(AclConditionTest, MessageAndTypeExcludeEachOther) {
  for (const char *query :
       {"icmp_message=echo-reply&icmp_type=0", "icmp_type=0&icmp_code=0&icmp_message=echo-reply",
        "icmp_message=unreachable&icmp_type=x"}) {
    expect_bad(ipv4_list(), "icmp", query);
    expect_bad(ipv6_list(), "icmpv6", query);
  }
}

TEST_F(AclConditionTest, IcmpIsThatOfItsOwnProtocol) {
  for (const char *query : {"icmp_message=echo-reply", "icmp_type=8", "icmp_message=x", "icmp_type=x"}) {
    for (const char *protocol : {"ip", "tcp", "udp", "igmp", "58", "0"})
      expect_bad(ipv4_list(), protocol, query);
    for (const char *protocol : {"ipv6", "tcp", "udp", "1", "0"}) expect_bad(ipv6_list(), protocol, query);
  }
}

TEST_F(AclConditionTest, BadMessagesTypesAndCodesAreRefused) {
  for (const char *query :
       {"icmp_message=x", "icmp_message=ECHO-REPLY", "icmp_message=8", "icmp_message=%20echo-reply",
        "icmp_type=256", "icmp_type=-1", "icmp_type=x", "icmp_type=echo", "icmp_type=4294967296",
        "icmp_type=8&icmp_code=256", "icmp_type=8&icmp_code=-1", "icmp_type=8&icmp_code=x",
        "icmp_type=8&icmp_code=4294967296"}) {
    expect_bad(ipv4_list(), "icmp", query);
    expect_bad(ipv6_list(), "icmpv6", query);
  }
  for (const char *message : {"echo-request", "nd-na", "no-route"})
    expect_bad(ipv4_list(), "icmp", std::string("icmp_message=") + message);
  for (const char *message : {"echo", "redirect", "ttl-exceeded"})
    expect_bad(ipv6_list(), "icmpv6", std::string("icmp_message=") + message);
}

/* --- TCP -------------------------------------------------------------------------------------------------
 */

static const char *const FLAGS[] = {"tcp_fin", "tcp_syn", "tcp_rst", "tcp_psh", "tcp_ack", "tcp_urg"};

TEST_F(AclConditionTest, EachFlagIsSetOrClear) {
  for (size_t i = 0; i < std::size(FLAGS); i++) {
    std::vector<const char *> words(std::size(FLAGS), "ignore");
    words[i] = "set";
    expect_tcp_condition(std::string(FLAGS[i]) + "=1", {tcp_flags(words)});
    words[i] = "clear";
    expect_tcp_condition(std::string(FLAGS[i]) + "=0", {tcp_flags(words)});
  }
}

TEST_F(AclConditionTest, FlagsAreAddedTogether) {
  expect_tcp_condition("tcp_fin=1&tcp_syn=0",
                       {tcp_flags({"set", "clear", "ignore", "ignore", "ignore", "ignore"})});
  expect_tcp_condition("tcp_urg=1&tcp_ack=01&tcp_psh=1&tcp_rst=1&tcp_syn=1&tcp_fin=0000000001",
                       {tcp_flags({"set", "set", "set", "set", "set", "set"})});
  expect_tcp_condition("tcp_fin=0&tcp_syn=0&tcp_rst=0&tcp_psh=0&tcp_ack=0&tcp_urg=0",
                       {tcp_flags({"clear", "clear", "clear", "clear", "clear", "clear"})});
}

TEST_F(AclConditionTest, BadFlagsAreRefused) {
  for (const char *flag : FLAGS) {
    for (const char *value : {"2", "x", "-1", "%201", "set", "257", "4294967297"})
      expect_bad_tcp(std::string(flag) + "=" + value);
    for (const char *protocol : {"udp", "icmp", "ip", "5", "0"})
      expect_bad(ipv4_list(), protocol, std::string(flag) + "=1");
    for (const char *protocol : {"udp", "icmpv6", "ipv6", "5", "0"})
      expect_bad(ipv6_list(), protocol, std::string(flag) + "=0");
  }
  expect_bad_tcp("tcp_fin=1&tcp_urg=2");
}

/* A rule without flags of its own shows "established" nowhere: it goes in with the flags. */
TEST_F(AclConditionTest, EstablishedIsReadWithFlagsOnly) {
  expect_tcp_condition("tcp_established=1", {});
  expect_tcp_condition("tcp_established=0", {});
  expect_tcp_condition(
      "tcp_established=1&tcp_fin=0&tcp_syn=0&tcp_psh=1&tcp_urg=1",
      {tcp_flags({"clear", "clear", "ignore", "set", "ignore", "set"}, {established(true)})});
}

TEST_F(AclConditionTest, EstablishedIsAddedToTheRule) {
  for (const rule_list &list : {ipv4_list(), ipv6_list()}) {
    for (uint32_t wanted : {0u, 1u}) {
      uint32_t value = 47;
      done("POST", list.uri(), query_of(list, "tcp", "tcp_established=" + std::to_string(wanted)));
      EXPECT_EQ(rpcclt_openapiAclRuleMatchTcpEstablishedGet(handle, list.id, 10, &value), OPEN_E_NONE);
      EXPECT_EQ(value, wanted);
      delete_rule(list.id, 10);
    }
  }
}

TEST_F(AclConditionTest, EstablishedExcludesRstAndAck) {
  for (const char *flag :
       {"tcp_ack=1", "tcp_ack=0", "tcp_rst=1", "tcp_rst=0", "tcp_rst=1&tcp_ack=1", "tcp_syn=1&tcp_ack=1"}) {
    expect_bad_tcp(std::string(flag) + "&tcp_established=1");
    expect_bad_tcp(std::string("tcp_established=01&") + flag);
  }
  expect_tcp_condition(
      "tcp_established=0&tcp_ack=1&tcp_rst=0",
      {tcp_flags({"ignore", "ignore", "clear", "ignore", "set", "ignore"}, {established(false)})});
}

TEST_F(AclConditionTest, BadEstablishedIsRefused) {
  for (const char *value : {"2", "x", "-1", "%201", "yes", "4294967297"})
    expect_bad_tcp(std::string("tcp_established=") + value);
  for (const char *protocol : {"udp", "icmp", "ip", "5"})
    expect_bad(ipv4_list(), protocol, "tcp_established=0");
  for (const char *protocol : {"udp", "icmpv6", "ipv6", "5"})
    expect_bad(ipv6_list(), protocol, "tcp_established=1");
}

/* --- All together ----------------------------------------------------------------------------------------
 */

TEST_F(AclConditionTest, RuleMayHaveAllConditionsAtOnce) {
  const std::string common = "&log=1&assign_queue=5&mirror_intf=7&redirect_intf=56&time_range=work"
                             "&rate_limit=4294967295&burst_size=128";
  const std::string tcp = "&dscp=46&precedence=5&tos=A0&fragments=1&tcp_fin=1&tcp_syn=0&tcp_established=1";
  std::vector<read_node> ipv4 = joined(ipv4_ends(), ipv4_rest()), ipv6 = joined(ipv6_ends(), ipv6_rest());
  expect_rule(ipv4_list(),
              "action=permit&protocol=tcp&src_ip=10.0.0.0&src_mask=255.0.0.0&dest_ip=192.0.2.1"
              "&dest_mask=255.255.255.255&src_l4_port=gt:1023&dest_l4_port=range:1000:2000" +
                  tcp + common,
              rule_nodes(10, "Permit", "FALSE", nodes_without("", ipv4)));
  expect_rule(ipv6_list(),
              "action=permit&protocol=tcp&src_prefix=2001:db8::&src_prefix_length=32&dest_prefix=fe80::1"
              "&dest_prefix_length=128&src_l4_port=eq:80&dest_l4_port=neq:22&routing=1&flow_lable=1048575" +
                  tcp + common,
              rule_nodes(10, "Permit", "FALSE", nodes_without("", ipv6)));
}
