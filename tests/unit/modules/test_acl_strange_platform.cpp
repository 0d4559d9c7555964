/* Access control lists when the platform answers what the software switch never does: values that nothing
 * names, counts beyond the arrays, texts without an end. */
#include "tests/unit/modules/acl_rule_nodes.h"

class AclStrangeTest : public AclRulesTest {
protected:
  Answers read_rule(const char *uri, const std::string &function, uint32_t value) const {
    bent_output bent(function.c_str(), value);
    return get(uri);
  }
};

/* --- Bindings --------------------------------------------------------------------------------------------
 */

struct bound_place {
  const char *uri, *function;
  bool is_vlan;
};

static const bound_place PLACES[] = {{"/acl/if/3", "rpcclt_openapiAclIntfDirListGet", false},
                                     {"/acl/vlan/1", "rpcclt_openapiAclVlanDirListGet", true}};

TEST_F(AclStrangeTest, TypeThatIsNoneOfTheThreeIsRefused) {
  create_list(IPV4_LIST, "a");
  create_list(IPV4_LIST, "b");
  for (uint32_t id : {1u, 2u}) {
    add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, id, id);
    add(rpcclt_openapiAclVlanDirAdd, 1, OPEN_ACL_DIRECTION_IN, id, id);
  }
  for (const bound_place &place : PLACES) {
    for (uint32_t type : {0u, 4u, 257u, 4294967295u}) {
      bent_output bent(place.function, type);
      EXPECT_EQ(refusal("GET", place.uri, "direction=in"), refused()) << type;
    }
  }
}

TEST_F(AclStrangeTest, CountBeyondTheArrayIsAsManyAsItHolds) {
  result_nodes nodes;
  for (uint32_t id = 1; id <= 100; id++) {
    std::string name = "list-" + std::to_string(id);
    create_list(MAC_LIST, name);
    add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, id, id);
    add(rpcclt_openapiAclVlanDirAdd, 1, OPEN_ACL_DIRECTION_IN, id, id);
    nodes.push_back(
        entry(id, "acl",
              {text("type", "MAC"), text("name", name), number("id", id), number("sequence_number", id)}));
  }
  for (const bound_place &place : PLACES) {
    EXPECT_EQ(get(place.uri, "direction=in"), expected_data({branch("acls", nodes)}));
    for (uint32_t count : {101u, 1024u, 4294967295u}) {
      bent_output bent((std::string(place.function) + " count").c_str(), count);
      EXPECT_EQ(get(place.uri, "direction=in"), expected_data({branch("acls", nodes)})) << count;
    }
  }
}

/* The entries behind the real ones are zero, and so is their type. */
TEST_F(AclStrangeTest, CountBeyondWhatIsBoundMeetsAnUnknownType) {
  create_list(MAC_LIST, "a");
  add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, 1u, 1u);
  add(rpcclt_openapiAclVlanDirAdd, 1, OPEN_ACL_DIRECTION_IN, 1u, 1u);
  for (const bound_place &place : PLACES) {
    for (uint32_t count : {2u, 100u, 101u, 4294967295u}) {
      bent_output bent((std::string(place.function) + " count").c_str(), count);
      EXPECT_EQ(refusal("GET", place.uri, "direction=in"), refused()) << count;
    }
  }
}

TEST_F(AclStrangeTest, AssignmentsBeyondTheArrayAreAsManyAsItHolds) {
  create_list(MAC_LIST, "a");
  add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, 1u, 1u);
  add(rpcclt_openapiAclVlanDirAdd, 1, OPEN_ACL_DIRECTION_OUT, 1u, 1u);
  std::vector<uint32_t> with_port(1024, 0), with_vlan(1024, 0), zeros(1024, 0);
  with_port[0] = 3;
  with_vlan[0] = 1;
  for (uint32_t count : {1024u, 1025u, 4294967295u}) {
    bent_output interfaces("rpcclt_openapiAclAssignedIntfDirListGet", count);
    bent_output vlans("rpcclt_openapiAclAssignedVlanDirListGet", count);
    result_nodes bindings = {bound("inbound", with_port, zeros), bound("outbound", zeros, with_vlan)};
    EXPECT_TRUE(get("/acl/mac/name/a") == expected_list("a", 1, {}, bindings)) << count;
    EXPECT_TRUE(get("/acl/mac") == expected_lists("mac", {{"a", 1, 0, bindings}})) << count;
  }
}

/* --- Texts -----------------------------------------------------------------------------------------------
 */

static const std::string NAME_FILLED(32, 'x');

TEST_F(AclStrangeTest, NameWithoutAnEndIsAsLongAsItsBuffer) {
  create_list(MAC_LIST, "a");
  create_list(MAC_LIST, "b");
  add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, 2u, 7u);
  bent_output bent("rpcclt_openapiAclNameGet", 'x');
  EXPECT_EQ(get("/acl/mac"),
            expected_lists("mac", {{NAME_FILLED, 1, 0},
                                   {NAME_FILLED, 2, 0, {bound("inbound", {3}), bound("outbound")}}}));
  EXPECT_EQ(get("/acl/if/3", "direction=in"),
            expected_data({branch("acls", {entry(1, "acl",
                                                 {text("type", "MAC"), text("name", NAME_FILLED),
                                                  number("id", 2), number("sequence_number", 7)})})}));
}

/* The rule's nodes with those of one platform function replaced. */
static result_nodes replaced(const std::vector<read_node> &nodes, const std::string &function,
                             const std::vector<result_node> &by) {
  result_nodes result;
  size_t used = 0;
  for (const read_node &read : nodes) {
    bool is_replaced = read.function == function;
    if (!is_replaced) result.push_back(read.node);
    if (is_replaced && used < by.size()) result.push_back(by[used++]);
  }
  EXPECT_EQ(used, by.size()) << function;
  return result;
}

static const std::string MATCH = "rpcclt_openapiAclRuleMatch";

TEST_F(AclStrangeTest, TextsOfRulesWithoutAnEndAreAsLongAsTheirBuffers) {
  full_mac_rule(create_list(MAC_LIST, "m"));
  full_ipv4_rule(create_list(IPV4_LIST, "four"));
  const std::string address(18, 'x'), long_text(256, 'x');
  struct {
    const char *uri, *function;
    result_node node;
  } rows[] = {
      {"/acl/mac/name/m", "MacSrcMacGet", mac_address("source", address, address)},
      {"/acl/mac/name/m", "MacDstMacGet", mac_address("destination", address, address)},
      {"/acl/mac/name/m", "TimeRangeGet", text("time_range", long_text)},
      {"/acl/ip/name/four", "TosGet", text("tos", "ToS Bits: " + long_text + ", ToS Mask: " + long_text)},
  };
  for (const auto &row : rows) {
    bool mac = row.uri == rows[0].uri;
    result_nodes nodes =
        replaced(mac ? mac_nodes() : joined(ipv4_ends(), ipv4_rest()), row.function, {row.node});
    EXPECT_EQ(read_rule(row.uri, MATCH + row.function, 'x'),
              expected_list(mac ? "m" : "four", mac ? 1 : 2, {rule_nodes(10, "Permit", "FALSE", nodes)}))
        << row.function;
  }
}

/* --- Values of rules -------------------------------------------------------------------------------------
 */

TEST_F(AclStrangeTest, ActionWithoutANameIsAFailure) {
  for (OPEN_ACL_TYPE_t type : {MAC_LIST, IPV4_LIST, IPV6_LIST}) add_rule(create_list(type, "x"));
  for (const char *uri : {"/acl/mac/name/x", "/acl/ip/name/x", "/acl/ipv6/name/x"}) {
    for (uint32_t action : {2u, 256u, 4294967295u}) {
      EXPECT_EQ(read_rule(uri, "rpcclt_openapiAclRuleActionGet", action), refused()) << uri << action;
    }
  }
}

TEST_F(AclStrangeTest, StatusWithoutANameIsLeftOut) {
  full_mac_rule(create_list(MAC_LIST, "m"));
  struct {
    uint32_t status;
    std::vector<result_node> nodes;
  } rows[] = {{0, {text("rule_status", "No State")}},
              {1, {text("rule_status", "Inactive")}},
              {2, {text("rule_status", "Active")}},
              {3, {}},
              {258, {}},
              {4294967295, {}}};
  for (const auto &row : rows) {
    EXPECT_EQ(read_rule("/acl/mac/name/m", MATCH + "TimeRangeStatusGet", row.status),
              expected_list("m", 1,
                            {rule_nodes(10, "Permit", "FALSE",
                                        replaced(mac_nodes(), "TimeRangeStatusGet", row.nodes))}))
        << row.status;
  }
}

TEST_F(AclStrangeTest, PortOperatorWithoutANameLeavesThePortOut) {
  full_ipv4_rule(create_list(IPV4_LIST, "four"));
  full_ipv6_rule(create_list(IPV6_LIST, "six"));
  for (const char *function : {"L4SrcPortGet", "L4DstPortGet"}) {
    for (uint32_t oper : {5u, 256u, 4294967295u}) {
      EXPECT_EQ(read_rule("/acl/ip/name/four", MATCH + function, oper),
                expected_list("four", 1,
                              {rule_nodes(10, "Permit", "FALSE",
                                          nodes_without("", joined(ipv4_ends(function), ipv4_rest())))}));
      EXPECT_EQ(read_rule("/acl/ipv6/name/six", MATCH + function, oper),
                expected_list("six", 2,
                              {rule_nodes(10, "Permit", "FALSE",
                                          nodes_without("", joined(ipv6_ends(function), ipv6_rest())))}));
    }
  }
}

TEST_F(AclStrangeTest, AnyVlanOperatorButEqualIsARange) {
  full_mac_rule(create_list(MAC_LIST, "m"));
  for (uint32_t oper : {0u, 1u, 2u, 4294967295u}) {
    result_node vlan = text("vlan", oper == 0 ? "10" : "10..20");
    EXPECT_EQ(read_rule("/acl/mac/name/m", MATCH + "MacVlanGet", oper),
              expected_list(
                  "m", 1, {rule_nodes(10, "Permit", "FALSE", replaced(mac_nodes(), "MacVlanGet", {vlan}))}));
  }
}

TEST_F(AclStrangeTest, EthertypeHasAtLeastFourDigits) {
  full_mac_rule(create_list(MAC_LIST, "m"));
  struct {
    uint32_t ethertype;
    const char *text;
  } rows[] = {
      {0, "0x0000"}, {1, "0x0001"}, {0xABC, "0x0ABC"}, {0x12345, "0x12345"}, {0xFFFFFFFF, "0xFFFFFFFF"}};
  for (const auto &row : rows) {
    result_node ethertype = text("ethertype", row.text);
    EXPECT_EQ(read_rule("/acl/mac/name/m", MATCH + "MacEtherTypeGet", row.ethertype),
              expected_list("m", 1,
                            {rule_nodes(10, "Permit", "FALSE",
                                        replaced(mac_nodes(), "MacEtherTypeGet", {ethertype}))}));
  }
}

TEST_F(AclStrangeTest, ProtocolBeyondTheRangeIsItsNumber) {
  add_rule(create_list(IPV4_LIST, "x"));
  for (uint32_t protocol : {256u, 300u, 2147483647u})
    EXPECT_EQ(read_rule("/acl/ip/name/x", MATCH + "ProtocolGet", protocol),
              expected_list("x", 1, {ip_rule_nodes(10, std::to_string(protocol))}));
}

/* Both texts of an address or neither. */
TEST_F(AclStrangeTest, AddressOfAnUnknownFamilyIsLeftOut) {
  full_ipv4_rule(create_list(IPV4_LIST, "four"));
  full_ipv6_rule(create_list(IPV6_LIST, "six"));
  for (const char *function : {"IpSrcMaskGet", "IpDstMaskGet"}) {
    Answers expected = expected_list(
        "four", 1,
        {rule_nodes(10, "Permit", "FALSE", nodes_without("", joined(ipv4_ends(function), ipv4_rest())))});
    for (const char *part : {"", " mask"})
      EXPECT_EQ(read_rule("/acl/ip/name/four", MATCH + function + part, OPEN_AF_NONE), expected)
          << function << part;
  }
  EXPECT_EQ(read_rule("/acl/ipv6/name/six", MATCH + "Ipv6SrcPfxGet", OPEN_AF_NONE),
            expected_list("six", 2,
                          {rule_nodes(10, "Permit", "FALSE",
                                      nodes_without("", joined(ipv6_ends("Ipv6SrcPfxGet"), ipv6_rest())))}));
}

TEST_F(AclStrangeTest, RuleNumberZeroIsNoRuleWhateverTheCallAnswers) {
  add_rule(create_list(MAC_LIST, "m"));
  result_nodes data = {text("acl_name", "m"), number("acl_id", 1),       bound("inbound"),
                       bound("outbound"),     number("rules_number", 1), branch("rules", {})};
  EXPECT_EQ(read_rule("/acl/mac/name/m", "rpcclt_openapiAclRuleGetFirst", 0),
            expected_data(data, "No rules have been configured for this ACL."));
}

TEST_F(AclStrangeTest, NumbersOfRulesAreUnsigned) {
  add_rule(create_list(MAC_LIST, "m"));
  result_nodes data = {text("acl_name", "m"),
                       number("acl_id", 1),
                       bound("inbound"),
                       bound("outbound"),
                       number("rules_number", 4294967295),
                       branch("rules", {entry(1, "rule", rule_nodes(10, "Permit", "FALSE"))})};
  EXPECT_EQ(read_rule("/acl/mac/name/m", "rpcclt_openapiAclRuleCountGet", 4294967295), expected_data(data));
}

TEST_F(AclStrangeTest, NumbersOfConditionsAndAttributesAreSignedButTheFlowLabel) {
  full_mac_rule(create_list(MAC_LIST, "m"));
  full_ipv6_rule(create_list(IPV6_LIST, "six"));
  struct {
    const char *function, *name;
    bool mac;
    int64_t value;
  } rows[] = {{"MacCosGet", "cos", true, -1},
              {"AssignQueueGet", "assign_queue", true, -1},
              {"MirrorGet", "mirror_intf", true, -1},
              {"RedirectGet", "redirect_intf", true, -1},
              {"DscpGet", "dscp", false, -1},
              {"PrecedenceGet", "precedence", false, -1},
              {"FlowLabelGet", "flow_lable", false, 4294967295}};
  for (const auto &row : rows) {
    result_nodes nodes = replaced(row.mac ? mac_nodes() : joined(ipv6_ends(), ipv6_rest()), row.function,
                                  {number(row.name, row.value)});
    EXPECT_EQ(
        read_rule(row.mac ? "/acl/mac/name/m" : "/acl/ipv6/name/six", MATCH + row.function, 4294967295),
        expected_list(row.mac ? "m" : "six", row.mac ? 1 : 2, {rule_nodes(10, "Permit", "FALSE", nodes)}))
        << row.function;
  }
}

TEST_F(AclStrangeTest, NumbersOfBindingsAreUnsigned) {
  create_list(MAC_LIST, "a");
  add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, 1u, 1u);
  add(rpcclt_openapiAclVlanDirAdd, 1, OPEN_ACL_DIRECTION_IN, 1u, 1u);
  for (const bound_place &place : PLACES) {
    bent_output sequence((std::string(place.function) + " seqNum").c_str(), 4294967295);
    bent_output id((std::string(place.function) + " aclId").c_str(), 4294967294);
    EXPECT_EQ(get(place.uri, "direction=in"), /* a list of this id has no name */
              expected_data({branch("acls", {entry(1, "acl",
                                                   {text("type", "MAC"), number("id", 4294967294),
                                                    number("sequence_number", 4294967295)})})}));
  }
}

TEST_F(AclStrangeTest, BurstSizeIsUnsigned) {
  full_mac_rule(create_list(MAC_LIST, "m"));
  result_nodes nodes = replaced(mac_nodes(), "RateLimitGet",
                                {number("rate_limit", 4294967295), number("burst_size", 4294967294)});
  EXPECT_EQ(read_rule("/acl/mac/name/m", MATCH + "RateLimitGet", 4294967294),
            expected_list("m", 1, {rule_nodes(10, "Permit", "FALSE", nodes)}));
}
