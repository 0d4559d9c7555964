/* Reading access control lists: how many there are, the lists of a type, what is bound to an interface or
 * VLAN, and a list by its name. The rules of a list: test_acl_queries_rules.cpp. */
#include "tests/unit/modules/acl_fixture.h"

static const std::string NAME_OF_31(31, 'n');
static const std::string NAME_OF_32(32, 'n');
static const Answers NONE_CONFIGURED = expected_data({}, "No ACLs are configured.");

/* --- Count -----------------------------------------------------------------------------------------------
 */

static Answers count_of(uint32_t lists) {
  return expected_data({number("current_number", lists), number("max_number", 100)});
}

TEST_F(AclTest, CountTellsHowManyListsThereAreAndMayBe) {
  EXPECT_EQ(get("/acl/count"), count_of(0));
  create_list(IPV4_LIST, "a");
  create_list(MAC_LIST, "b");
  create_list(IPV6_LIST, "c");
  EXPECT_EQ(done("GET", "/acl/count", ""), count_of(3).xml);
  EXPECT_EQ(done("GET", "/acl/count", "", "json"),
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
            "\"current_number\": 3, \"max_number\": 100 } } }\n");
}

TEST_F(AclTest, CountsAreUnsigned) {
  bent_output count("rpcclt_openapiAclCountGet", 4294967295u),
      max("rpcclt_openapiAclMaxCountGet", 2147483648u);
  EXPECT_EQ(get("/acl/count"),
            expected_data({number("current_number", 4294967295), number("max_number", 2147483648)}));
}

/* --- Lists of a type -------------------------------------------------------------------------------------
 */

TEST_F(AclTest, TypeWithoutListsIsNoFailure) {
  for (const char *type : {"ip", "mac", "ipv6"}) {
    EXPECT_EQ(get(std::string("/acl/") + type), expected_lists(type, {}));
    EXPECT_EQ(done("GET", std::string("/acl/") + type, ""),
              std::string("<result><rlt_code>0</rlt_code><rlt_mesg>No ACLs are configured.</rlt_mesg>"
                          "<rlt_data><acls><acl_type>") +
                  type + "</acl_type></acls></rlt_data></result>\n");
  }
}

TEST_F(AclTest, ListsOfATypeAreThoseOfThatTypeOnlyInTheOrderOfTheirIds) {
  create_list(MAC_LIST, "z");
  create_list(IPV4_LIST, "m");
  create_list(MAC_LIST, "a");
  create_list(IPV6_LIST, "a");
  create_list(MAC_LIST, NAME_OF_31);
  add_rule(3);
  add_rule(3);
  EXPECT_EQ(get("/acl/mac"), expected_lists("mac", {{"z", 1, 0}, {"a", 3, 2}, {NAME_OF_31, 5, 0}}));
  EXPECT_EQ(get("/acl/ip"), expected_lists("ip", {{"m", 2, 0}}));
  EXPECT_EQ(get("/acl/ipv6"), expected_lists("ipv6", {{"a", 4, 0}}));
}

TEST_F(AclTest, ListedListIsWrittenSo) {
  uint32_t id = create_list(IPV4_LIST, "web");
  add_rule(id);
  add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, id, 1u);
  add(rpcclt_openapiAclVlanDirAdd, 1, OPEN_ACL_DIRECTION_OUT, id, 1u);
  EXPECT_EQ(done("GET", "/acl/ip", ""),
            "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data><acls>"
            "<acl_type>ip</acl_type><acl><name>web</name><id>1</id><rules_number>1</rules_number><inbound>"
            "<interfaces><if>3</if></interfaces><vlans></vlans></inbound><outbound><interfaces></interfaces>"
            "<vlans><vlan>1</vlan></vlans></outbound></acl></acls></rlt_data></result>\n");
  EXPECT_EQ(done("GET", "/acl/ip", "", "json"),
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
            "\"acls\": { \"acl_type\": \"ip\", \"1\": { \"name\": \"web\", \"id\": 1, \"rules_number\": 1, "
            "\"inbound\": { \"interfaces\": { \"1\": 3 }, \"vlans\": { } }, \"outbound\": { \"interfaces\": "
            "{ }, \"vlans\": { \"1\": 1 } } } } } } }\n");
}

TEST_F(AclTest, ListedListsHaveAllTheirBindings) {
  for (uint32_t vlanId : {10u, 20u, 30u}) EXPECT_EQ(rpcclt_openapiVlanCreate(handle, vlanId), OPEN_E_NONE);
  uint32_t first = create_list(MAC_LIST, "first"), second = create_list(MAC_LIST, "second");
  for (uint32_t ifNum : {56u, 3u, 54u})
    add(rpcclt_openapiAclIntfDirAdd, ifNum, OPEN_ACL_DIRECTION_IN, first, 1u);
  for (uint32_t vlanId : {30u, 10u})
    add(rpcclt_openapiAclVlanDirAdd, vlanId, OPEN_ACL_DIRECTION_IN, first, 1u);
  add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_OUT, first, 1u);
  add(rpcclt_openapiAclVlanDirAdd, 20, OPEN_ACL_DIRECTION_OUT, second, 1u);
  result_nodes of_first = {bound("inbound", {3, 54, 56}, {10, 30}), bound("outbound", {3})};
  result_nodes of_second = {bound("inbound"), bound("outbound", {}, {20})};
  EXPECT_EQ(get("/acl/mac"),
            expected_lists("mac", {{"first", first, 0, of_first}, {"second", second, 0, of_second}}));
  EXPECT_EQ(get("/acl/mac/name/first"), expected_list("first", first, {}, of_first));
  EXPECT_EQ(get("/acl/mac/name/second"), expected_list("second", second, {}, of_second));
}

TEST_F(AclTest, AllHundredListsAreListed) {
  std::vector<listed_acl> lists;
  for (uint32_t id = 1; id <= 100; id++) {
    lists.push_back({"list-" + std::to_string(id), id, 0});
    EXPECT_EQ(create_list(IPV6_LIST, lists.back().name), id);
  }
  EXPECT_EQ(get("/acl/ipv6"), expected_lists("ipv6", lists));
  EXPECT_EQ(get("/acl/count"), count_of(100));
}

TEST_F(AclTest, UnknownTypesAreRefused) {
  for (const char *type : {"ipx", "ipv4", "IP", "Mac", "i", "ipv66", "1", "%73", "macip"})
    EXPECT_EQ(refusal("GET", std::string("/acl/") + type), refused()) << type;
}

/* A scan with %s passes over blanks: what is left is the type. */
TEST_F(AclTest, BlanksAroundTheTypeArePassedOver) {
  create_list(IPV4_LIST, "web");
  for (const char *uri : {"/acl/ ip", "/acl/ip ", "/acl/\tip\n", "/acl/ip mac"})
    EXPECT_EQ(get(uri), expected_lists("ip", {{"web", 1, 0}})) << uri;
}

/* --- A list by its name ----------------------------------------------------------------------------------
 */

TEST_F(AclTest, ListWithoutRulesIsNoFailure) {
  create_list(MAC_LIST, "m");
  create_list(IPV4_LIST, "i");
  create_list(IPV6_LIST, "s");
  EXPECT_EQ(get("/acl/mac/name/m"), expected_list("m", 1, {}));
  EXPECT_EQ(get("/acl/ip/name/i"), expected_list("i", 2, {}));
  EXPECT_EQ(get("/acl/ipv6/name/s"), expected_list("s", 3, {}));
  EXPECT_EQ(done("GET", "/acl/mac/name/m", ""),
            "<result><rlt_code>0</rlt_code><rlt_mesg>No rules have been configured for this ACL.</rlt_mesg>"
            "<rlt_data><acl_name>m</acl_name><acl_id>1</acl_id><inbound><interfaces></interfaces><vlans>"
            "</vlans></inbound><outbound><interfaces></interfaces><vlans></vlans></outbound><rules_number>0"
            "</rules_number><rules></rules></rlt_data></result>\n");
}

TEST_F(AclTest, UnknownListIsAnsweredWithItsName) {
  create_list(MAC_LIST, "web");
  struct {
    const char *type, *name;
  } rows[] = {{"ip", "web"}, {"ipv6", "web"}, {"mac", "we"}, {"mac", "webs"}, {"mac", "Web"}, {"mac", "%s"}};
  for (const auto &row : rows) {
    result_node name = text("acl_name", row.name);
    std::string uri = std::string("/acl/") + row.type + "/name/" + row.name;
    EXPECT_EQ(refusal("GET", uri), no_such_list(name.xml, name.json)) << uri;
  }
}

TEST_F(AclTest, NameMayHave31CharactersAndNoMore) {
  struct {
    const char *type;
    OPEN_ACL_TYPE_t list_type;
  } rows[] = {{"mac", MAC_LIST}, {"ip", IPV4_LIST}, {"ipv6", IPV6_LIST}};
  for (const auto &row : rows) {
    std::string uri = std::string("/acl/") + row.type + "/name/";
    result_node name = text("acl_name", NAME_OF_31);
    EXPECT_EQ(refusal("GET", uri + NAME_OF_31), no_such_list(name.xml, name.json));
    uint32_t id = create_list(row.list_type, NAME_OF_31);
    EXPECT_EQ(get(uri + NAME_OF_31), expected_list(NAME_OF_31, id, {}));
    EXPECT_EQ(refusal("GET", uri + NAME_OF_32), refused());
    EXPECT_EQ(refusal("GET", uri + std::string(200, 'n')), refused());
  }
}

TEST_F(AclTest, ListsOfOneNameAreKeptApartByTheirType) {
  add_rule(create_list(MAC_LIST, "same"), OPEN_ACL_ACTION_DENY, 7);
  create_list(IPV4_LIST, "same");
  EXPECT_EQ(get("/acl/mac/name/same"), expected_list("same", 1, {rule_nodes(7, "Deny", "FALSE")}));
  EXPECT_EQ(get("/acl/ip/name/same"), expected_list("same", 2, {}));
}

/* --- What is bound to an interface or VLAN ---------------------------------------------------------------
 */

struct bound_acl {
  const char *type;
  std::string name;
  uint32_t id;
  uint32_t sequence;
};

static Answers expected_bound(const std::vector<bound_acl> &lists) {
  result_nodes nodes;
  for (const bound_acl &list : lists) {
    nodes.push_back(entry(static_cast<unsigned>(nodes.size()) + 1, "acl",
                          {text("type", list.type), text("name", list.name), number("id", list.id),
                           number("sequence_number", list.sequence)}));
  }
  return expected_data({branch("acls", nodes)});
}

/* The same for interfaces and VLANs. */
class AclBindingTest : public AclTest {
protected:
  AclBindingTest() {
    EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
    web = create_list(IPV4_LIST, "web");
    mac = create_list(MAC_LIST, NAME_OF_31);
    six = create_list(IPV6_LIST, "six");
  }
  uint32_t web, mac, six;
};

TEST_F(AclBindingTest, WithoutListsAnswerIsEmpty) {
  for (const char *uri : {"/acl/if/3", "/acl/if/56", "/acl/vlan/1", "/acl/vlan/10"}) {
    for (const char *query : {"direction=in", "direction=out"})
      EXPECT_EQ(get(uri, query), NONE_CONFIGURED) << uri << query;
  }
  EXPECT_EQ(done("GET", "/acl/if/3", "direction=in"),
            "<result><rlt_code>0</rlt_code><rlt_mesg>No ACLs are configured.</rlt_mesg><rlt_data></rlt_data>"
            "</result>\n");
}

TEST_F(AclBindingTest, ListsAreInTheOrderOfTheirSequenceNumbers) {
  auto attach = {rpcclt_openapiAclIntfDirAdd, rpcclt_openapiAclVlanDirAdd};
  for (auto attach_to : attach) {
    add(attach_to, 10, OPEN_ACL_DIRECTION_IN, web, 30u);
    add(attach_to, 10, OPEN_ACL_DIRECTION_IN, mac, 7u);
    add(attach_to, 10, OPEN_ACL_DIRECTION_IN, six, 2147483647u);
    add(attach_to, 10, OPEN_ACL_DIRECTION_OUT, six, 1u);
  }
  for (const char *uri : {"/acl/if/10", "/acl/vlan/10"}) {
    EXPECT_EQ(get(uri, "direction=in"),
              expected_bound(
                  {{"MAC", NAME_OF_31, mac, 7}, {"IPv4", "web", web, 30}, {"IPv6", "six", six, 2147483647}}))
        << uri;
    EXPECT_EQ(get(uri, "direction=out"), expected_bound({{"IPv6", "six", six, 1}})) << uri;
    EXPECT_EQ(done("GET", uri, "direction=out", "json"),
              "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
              "\"acls\": { \"1\": { \"type\": \"IPv6\", \"name\": \"six\", \"id\": 3, \"sequence_number\": 1 "
              "} } } } }\n");
  }
}

TEST_F(AclBindingTest, DirectionMustBeGiven) {
  add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, web, 1u);
  for (const char *uri : {"/acl/if/3", "/acl/vlan/10", "/acl/if/999", "/acl/vlan/999"}) {
    for (const std::string &query :
         {std::string(), std::string("direction="), std::string("direction=both"),
          std::string("direction=IN"), std::string("direction=In"), std::string("direction=inbound"),
          std::string("direction=i"), std::string("direction=0"), std::string("direction=+in"),
          std::string("direction=in+"), std::string("dir=in"), "direction=" + std::string(256, 'i')}) {
      EXPECT_EQ(refusal("GET", uri, query), refused()) << uri << query;
    }
  }
}

TEST_F(AclBindingTest, DirectionMayStandInTheBody) {
  FakeRequest request("GET", "/acl/if/3", "", "direction=in");
  EXPECT_EQ(acl_api_handler(handle, request.conn()), 1);
  EXPECT_EQ(answer_body(request, "xml"), NONE_CONFIGURED.xml);
}

TEST_F(AclBindingTest, InterfacesAndVlansThatDoNotExistAreThePlatformsRefusal) {
  for (const char *uri : {"/acl/if/0", "/acl/if/99999", "/acl/if/2147483647", "/acl/if/99999999999999999999",
                          "/acl/vlan/0", "/acl/vlan/11", "/acl/vlan/4095", "/acl/vlan/4294967306"}) {
    EXPECT_EQ(refusal("GET", uri, "direction=in"), refused()) << uri;
  }
}

TEST_F(AclBindingTest, UnboundListIsGoneFromTheAnswer) {
  add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, web, 1u);
  add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, mac, 2u);
  EXPECT_EQ(rpcclt_openapiAclIntfDirDelete(handle, 3, OPEN_ACL_DIRECTION_IN, web), OPEN_E_NONE);
  EXPECT_EQ(get("/acl/if/3", "direction=in"), expected_bound({{"MAC", NAME_OF_31, mac, 2}}));
}

TEST_F(AclBindingTest, NameThatCannotBeReadIsLeftOut) {
  add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, web, 1u);
  add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, mac, 2u);
  Answers expected = expected_data({branch(
      "acls", {entry(1, "acl", {text("type", "IPv4"), number("id", web), number("sequence_number", 1)}),
               entry(2, "acl",
                     {text("type", "MAC"), text("name", NAME_OF_31), number("id", mac),
                      number("sequence_number", 2)})})});
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiAclNameGet", rc);
    EXPECT_EQ(done("GET", "/acl/if/3", "direction=in"), expected.xml) << rc;
    fault("rpcclt_openapiAclNameGet", rc);
    EXPECT_EQ(done("GET", "/acl/if/3", "direction=in", "json"), expected.json) << rc;
  }
}

/* --- Bindings of a list on their own ---------------------------------------------------------------------
 */

class AppendedBindings {
public:
  AppendedBindings() : tree_(new_tree()) {}
  ~AppendedBindings() { free_tree(tree_); }
  AppendedBindings(const AppendedBindings &) = delete;
  AppendedBindings &operator=(const AppendedBindings &) = delete;
  node_t *tree() { return tree_; }
  std::string xml() const {
    char *printed = nullptr;
    print_tree_by_xml(tree_, &printed);
    std::string text = printed;
    free(printed);
    return text;
  }

private:
  node_t *tree_;
};

TEST_F(AclBindingTest, AppendedBindingsAnswerForTheVlansOnly) {
  add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_OUT, web, 1u);
  add(rpcclt_openapiAclVlanDirAdd, 10, OPEN_ACL_DIRECTION_OUT, web, 1u);
  for (open_error_t rc : all_platform_errors()) {
    AppendedBindings without_interfaces, without_vlans;
    fault("rpcclt_openapiAclAssignedIntfDirListGet", rc);
    EXPECT_EQ(append_acl_bounded_interfaces_vlans(handle, web, 1, without_interfaces.tree()), OPEN_E_NONE);
    EXPECT_EQ(without_interfaces.xml(), bound("outbound", {}, {10}).xml) << rc;
    fault("rpcclt_openapiAclAssignedVlanDirListGet", rc);
    EXPECT_EQ(append_acl_bounded_interfaces_vlans(handle, web, 1, without_vlans.tree()), rc);
    EXPECT_EQ(without_vlans.xml(), bound("outbound", {3}).xml) << rc;
  }
}

TEST_F(AclBindingTest, AppendedBindingsNeedATree) {
  EXPECT_EQ(append_acl_bounded_interfaces_vlans(handle, web, 0, nullptr), OPEN_E_PARAM);
}
