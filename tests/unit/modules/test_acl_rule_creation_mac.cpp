/* Making rules of MAC lists. What all types have in common: test_acl_rule_creation.cpp. */
#include "tests/unit/modules/acl_creation_fixture.h"

class AclMacCreationTest : public AclCreationTest {
protected:
  void expect_mac_rule(const std::string &query, const result_nodes &rest,
                       const char *match_all = "FALSE") const {
    expect_rule(mac_list(), "action=permit&" + query, rule_nodes(10, "Permit", match_all, rest));
  }
  void expect_no_mac_rule(const std::string &query) const {
    expect_no_rule(mac_list(), "action=permit&" + query);
  }
};

static const std::string ANY = "src_mac=any&dest_mac=any";
static const std::string SOURCE = "src_mac=02:00:5e:00:00:0a&src_mask=FF:FF:FF:00:00:00";
static const std::string DESTINATION = "dest_mac=02%3A00%3A5E%3A00%3A00%3A0B&dest_mask=ff:ff:ff:ff:ff:ff";
static const result_node SOURCE_NODE = mac_address("source", "02:00:5E:00:00:0A", "FF:FF:FF:00:00:00");
static const result_node DESTINATION_NODE =
    mac_address("destination", "02:00:5E:00:00:0B", "FF:FF:FF:FF:FF:FF");
static const result_node BPDU_NODE = mac_address("destination", "01:80:C2:00:00:00", "FF:FF:FF:00:00:00");

/* --- Source and destination ------------------------------------------------------------------------------
 */

TEST_F(AclMacCreationTest, AnyToAnyMatchesEveryPacket) {
  expect_mac_rule(ANY, {}, "TRUE");
  expect_mac_rule(ANY + "&ethertype=&vlan=&cos=", {}, "TRUE");
}

TEST_F(AclMacCreationTest, OneConditionMakesAnyToAnyNotEveryPacket) {
  expect_mac_rule(ANY + "&cos=0", {number("cos", 0)});
  expect_mac_rule(ANY + "&vlan=1", {text("vlan", "1")});
  expect_mac_rule(ANY + "&ethertype=arp", {text("ethertype", "0x0806")});
}

TEST_F(AclMacCreationTest, AddressesHaveMasks) {
  expect_mac_rule(SOURCE + "&dest_mac=any", {SOURCE_NODE});
  expect_mac_rule("src_mac=any&" + DESTINATION, {DESTINATION_NODE});
  expect_mac_rule(DESTINATION + "&" + SOURCE, {SOURCE_NODE, DESTINATION_NODE});
}

TEST_F(AclMacCreationTest, BpduHasItsOwnMask) {
  expect_mac_rule("src_mac=any&dest_mac=bpdu", {BPDU_NODE});
  expect_mac_rule("src_mac=any&dest_mac=bpdu&dest_mask=00:00:00:00:00:00", {BPDU_NODE});
  expect_mac_rule(SOURCE + "&dest_mac=bpdu&dest_mask=x", {SOURCE_NODE, BPDU_NODE});
}

TEST_F(AclMacCreationTest, MaskOfAnyIsNotRead) {
  expect_mac_rule(ANY + "&src_mask=x&dest_mask=" + std::string(300, 'x'), {}, "TRUE");
}

TEST_F(AclMacCreationTest, SourceAndDestinationMustBeGiven) {
  for (const char *query : {"", "src_mac=any", "dest_mac=any", "src_mac=&dest_mac=any",
                            "src_mac=any&dest_mac=", "dest_mac=bpdu", "cos=1&vlan=1"})
    expect_no_mac_rule(query);
}

TEST_F(AclMacCreationTest, AddressNeedsItsMask) {
  const std::string address = "02:00:5E:00:00:0A";
  expect_no_mac_rule("dest_mac=any&src_mac=" + address);
  expect_no_mac_rule("dest_mac=any&src_mask=&src_mac=" + address);
  expect_no_mac_rule("dest_mac=any&dest_mask=FF:FF:FF:FF:FF:FF&src_mac=" + address);
  expect_no_mac_rule("src_mac=any&dest_mac=" + address);
  expect_no_mac_rule("src_mac=any&dest_mask=&dest_mac=" + address);
  expect_no_mac_rule("src_mac=any&src_mask=FF:FF:FF:FF:FF:FF&dest_mac=" + address);
}

/* Texts go to the platform as they are, and it takes none of these. The last ones are longer than what it is
 * given, or than a request variable. */
TEST_F(AclMacCreationTest, TextsThatAreNoAddressesAreRefused) {
  const std::string mask = "FF:FF:FF:FF:FF:FF";
  for (const std::string &bad : {std::string("x"),
                                 std::string("ANY"),
                                 std::string("Any"),
                                 std::string("anyx"),
                                 std::string("BPDU"),
                                 std::string("02005E00000A"),
                                 std::string("02-00-5E-00-00-0A"),
                                 std::string("02:00:5E:00:00:0"),
                                 std::string("02:00:5E:00:00:0g"),
                                 std::string("2:0:5E:0:0:A"),
                                 std::string("02:00:5E:00:00"),
                                 std::string("02:00:5E:00:00:0A0"),
                                 std::string("02:00:5E:00:00:0A:"),
                                 std::string("02:00:5E:00:00:0A:0"),
                                 std::string("02:00:5E:00:00:0A:0B"),
                                 std::string("+02:00:5E:00:00:0A"),
                                 std::string(18, 'F'),
                                 std::string(19, 'F'),
                                 std::string(255, 'F'),
                                 std::string(256, 'F')}) {
    expect_no_mac_rule("dest_mac=any&src_mask=" + mask + "&src_mac=" + bad);
    expect_no_mac_rule("src_mac=any&dest_mask=" + mask + "&dest_mac=" + bad);
    expect_no_mac_rule("dest_mac=any&src_mac=02:00:5E:00:00:0A&src_mask=" + bad);
    expect_no_mac_rule("src_mac=any&dest_mac=02:00:5E:00:00:0A&dest_mask=" + bad);
  }
}

/* Only a destination may be "bpdu", and no mask may be a word. */
TEST_F(AclMacCreationTest, WordsStandWhereTheyBelong) {
  expect_no_mac_rule("dest_mac=any&src_mac=bpdu");
  expect_no_mac_rule("dest_mac=any&src_mac=bpdu&src_mask=FF:FF:FF:FF:FF:FF");
  expect_no_mac_rule("dest_mac=any&src_mac=02:00:5E:00:00:0A&src_mask=any");
  expect_no_mac_rule("src_mac=any&dest_mac=02:00:5E:00:00:0A&dest_mask=any");
}

/* --- Ethertype, VLAN and class of service ----------------------------------------------------------------
 */

TEST_F(AclMacCreationTest, EthertypeIsANumberOrAWord) {
  struct {
    const char *written, *read;
  } rows[] = {{"2054", "0x0806"},    {"arp", "0x0806"},       {"0000002054", "0x0806"},
              {"1536", "0x0600"},    {"65535", "0xFFFF"},     {"appletalk", "0x809B"},
              {"ibmsna", "0x80D5"},  {"ipv4", "0x0800"},      {"ipv6", "0x86DD"},
              {"ipx", "0x8037"},     {"mplsmcast", "0x8848"}, {"mplsucast", "0x8847"},
              {"netbios", "0x8191"}, {"novell", "0x8137"},    {"novell2", "0x8138"},
              {"pppoe", "0x8863"},   {"pppoe2", "0x8864"},    {"rarp", "0x8035"}};
  for (const auto &row : rows)
    expect_mac_rule(ANY + "&ethertype=" + row.written, {text("ethertype", row.read)});
}

TEST_F(AclMacCreationTest, VlanIsASingleOne) {
  expect_mac_rule(ANY + "&vlan=4094", {text("vlan", "4094")});
  expect_mac_rule(ANY + "&vlan=10&endvlan=20&end_vlan=20", {text("vlan", "10")});
}

TEST_F(AclMacCreationTest, AllConditionsTogether) {
  expect_mac_rule("cos=7&vlan=1&ethertype=ipv4&" + DESTINATION + "&" + SOURCE + "&log=1",
                  {SOURCE_NODE, DESTINATION_NODE, text("ethertype", "0x0800"), text("vlan", "1"),
                   number("cos", 7), text("log", "TRUE")});
}

TEST_F(AclMacCreationTest, BadConditionsAreRefused) {
  for (const char *condition : {"ethertype=0x0806",
                                "ethertype=ARP",
                                "ethertype=ip",
                                "ethertype=-1",
                                "ethertype=%20arp",
                                "ethertype=1535",
                                "ethertype=0",
                                "ethertype=65536",
                                "ethertype=4294967296",
                                "ethertype=00000002054",
                                "vlan=0",
                                "vlan=4095",
                                "vlan=4294967295",
                                "vlan=4294967296",
                                "vlan=-1",
                                "vlan=x",
                                "vlan=10-20",
                                "vlan=any",
                                "cos=8",
                                "cos=-1",
                                "cos=x",
                                "cos=4294967296",
                                "cos=1.0"}) {
    expect_no_mac_rule(ANY + "&" + condition);
    expect_no_mac_rule(SOURCE + "&" + DESTINATION + "&" + condition);
  }
}

TEST_F(AclMacCreationTest, ConditionThatIsTooLongIsNotThere) {
  for (const char *variable : {"ethertype", "vlan", "cos"})
    expect_mac_rule(ANY + "&" + variable + "=" + std::string(256, '1'), {}, "TRUE");
}

/* Those of IP lists mean nothing here. */
TEST_F(AclMacCreationTest, OtherVariablesAreNotRead) {
  expect_mac_rule(ANY + "&protocol=x&src_ip=x&dscp=x&fragments=2&tcp_syn=2&icmp_type=x&igmp_type=x&tos=x", {},
                  "TRUE");
}
