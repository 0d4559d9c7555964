/* Making and deleting access control lists, deleting their rules, and binding lists to interfaces and VLANs.
 */
#include "tests/unit/modules/acl_fixture.h"

static const std::string NAME_OF_31(31, 'n');
static const Answers DELETED = expected_answers(0, "Delete successfully.");
static const Answers ATTACHED = expected_answers(0, "The rule attachs successfully.");
static const Answers ATTACHED_BEFORE = expected_answers(0, "The rule has already attached.");
static const Answers DETACHED = expected_answers(0, "The ACL detaches successfully.");

static result_nodes type_and_name(const std::string &type, const std::string &name) {
  return {text("acl_type", type), text("acl_name", name)};
}

static Answers created(const std::string &type, const std::string &name) {
  return expected_data(type_and_name(type, name), "Create successfully.");
}

static std::string uri_of(const std::string &type) {
  return "/acl/" + type + "/name";
}

/* Texts that are no names of lists. */
static const std::vector<std::string> &bad_names() {
  static const std::vector<std::string> names = {"",
                                                 "name=",
                                                 "name=" + std::string(32, 'n'),
                                                 "name=" + std::string(255, 'n'),
                                                 "name=" + std::string(256, 'n'),
                                                 "acl_name=web"};
  return names;
}

/* --- Making lists ----------------------------------------------------------------------------------------
 */

TEST_F(AclTest, ListIsMade) {
  for (const char *type : {"ip", "mac", "ipv6"}) {
    EXPECT_EQ(done("POST", uri_of(type), "name=web"), created(type, "web").xml);
    EXPECT_EQ(done("POST", uri_of(type), "name=a", "json"), created(type, "a").json);
    EXPECT_EQ(done("POST", uri_of(type), "name=" + NAME_OF_31), created(type, NAME_OF_31).xml);
  }
  EXPECT_EQ(get("/acl/ip"), expected_lists("ip", {{"web", 1, 0}, {"a", 2, 0}, {NAME_OF_31, 3, 0}}));
  EXPECT_EQ(get("/acl/mac"), expected_lists("mac", {{"web", 4, 0}, {"a", 5, 0}, {NAME_OF_31, 6, 0}}));
  EXPECT_EQ(get("/acl/ipv6"), expected_lists("ipv6", {{"web", 7, 0}, {"a", 8, 0}, {NAME_OF_31, 9, 0}}));
}

TEST_F(AclTest, MadeListIsAnsweredSo) {
  EXPECT_EQ(done("POST", "/acl/mac/name", "name=web"),
            "<result><rlt_code>0</rlt_code><rlt_mesg>Create successfully.</rlt_mesg><rlt_data><acl_type>mac"
            "</acl_type><acl_name>web</acl_name></rlt_data></result>\n");
  EXPECT_EQ(
      failed("POST", "/acl/mac/name", "name=web", "json"),
      "{ \"result\": { \"rlt_code\": 1, \"rlt_mesg\": \"The ACL name already exists.\", \"rlt_data\": { "
      "\"acl_type\": \"mac\", \"acl_name\": \"web\" } } }\n");
}

TEST_F(AclTest, NameMayStandInTheBody) {
  FakeRequest request("POST", "/acl/mac/name", "", "name=web");
  EXPECT_EQ(acl_api_handler(handle, request.conn()), 1);
  EXPECT_EQ(answer_body(request, "xml"), created("mac", "web").xml);
}

TEST_F(AclTest, NameIsTakenOnceInEachType) {
  for (const char *type : {"ip", "mac", "ipv6"}) {
    done("POST", uri_of(type), "name=web");
    EXPECT_EQ(refusal("POST", uri_of(type), "name=web"),
              expected_with_data(1, "The ACL name already exists.", type_and_name(type, "web")));
    EXPECT_EQ(done("POST", uri_of(type), "name=Web"), created(type, "Web").xml);
  }
  EXPECT_EQ(list_count(), 6u);
}

TEST_F(AclTest, ListNeedsAName) {
  for (const char *type : {"ip", "mac", "ipv6"}) {
    for (const std::string &query : bad_names())
      EXPECT_EQ(refusal("POST", uri_of(type), query), refused()) << query;
  }
  EXPECT_EQ(list_count(), 0u);
}

TEST_F(AclTest, NamesThatThePlatformDoesNotTakeAreRefused) {
  for (const char *name : {"a%20b", "a+b", "a/b", "%2f", "%01", "a%0a", "%20"})
    EXPECT_EQ(refusal("POST", "/acl/ip/name", std::string("name=") + name), refused()) << name;
  EXPECT_EQ(list_count(), 0u);
}

TEST_F(AclTest, FullTableTakesNoList) {
  lower_limit("acls", 2);
  create_list(IPV4_LIST, "a");
  create_list(MAC_LIST, "a");
  EXPECT_EQ(refusal("POST", "/acl/ipv6/name", "name=a"), expected_platform_error(OPEN_E_FULL));
  EXPECT_EQ(refusal("POST", "/acl/ip/name", "name=a"),
            expected_with_data(1, "The ACL name already exists.", type_and_name("ip", "a")));
}

/* --- Deleting lists --------------------------------------------------------------------------------------
 */

TEST_F(AclTest, ListIsDeletedWithItsRules) {
  struct {
    const char *type;
    OPEN_ACL_TYPE_t list_type;
  } rows[] = {{"ip", IPV4_LIST}, {"mac", MAC_LIST}, {"ipv6", IPV6_LIST}};
  for (const auto &row : rows) {
    for (const char *format : {"xml", "json"}) {
      add_rule(create_list(row.list_type, NAME_OF_31));
      EXPECT_EQ(done("DELETE", uri_of(row.type), "name=" + NAME_OF_31, format),
                *format == 'x' ? DELETED.xml : DELETED.json);
      EXPECT_EQ(list_count(), 0u);
      EXPECT_EQ(rule_count(create_list(row.list_type, NAME_OF_31)), 0u);
      done("DELETE", uri_of(row.type), "name=" + NAME_OF_31);
    }
  }
}

TEST_F(AclTest, OnlyTheNamedListIsDeleted) {
  create_list(IPV4_LIST, "web");
  create_list(MAC_LIST, "web");
  create_list(IPV4_LIST, "mail");
  done("DELETE", "/acl/ip/name", "name=web");
  EXPECT_EQ(get("/acl/ip"), expected_lists("ip", {{"mail", 3, 0}}));
  EXPECT_EQ(get("/acl/mac"), expected_lists("mac", {{"web", 2, 0}}));
}

TEST_F(AclTest, UnknownListIsNotDeleted) {
  create_list(IPV4_LIST, "web");
  for (const char *name : {"webs", "we", "WEB", "mail"})
    EXPECT_EQ(refusal("DELETE", "/acl/ip/name", std::string("name=") + name), no_such_list()) << name;
  for (const char *type : {"mac", "ipv6"})
    EXPECT_EQ(refusal("DELETE", uri_of(type), "name=web"), no_such_list());
  for (const std::string &query : bad_names())
    EXPECT_EQ(refusal("DELETE", "/acl/ip/name", query), refused()) << query;
  EXPECT_EQ(list_count(), 1u);
}

TEST_F(AclTest, BoundListIsNotDeleted) {
  uint32_t id = create_list(IPV4_LIST, "web");
  add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, id, 1u);
  EXPECT_EQ(refusal("DELETE", "/acl/ip/name", "name=web"), expected_platform_error(OPEN_E_FAIL));
  EXPECT_EQ(rpcclt_openapiAclIntfDirDelete(handle, 3, OPEN_ACL_DIRECTION_IN, id), OPEN_E_NONE);
  EXPECT_EQ(done("DELETE", "/acl/ip/name", "name=web"), DELETED.xml);
}

/* --- Deleting rules --------------------------------------------------------------------------------------
 */

TEST_F(AclTest, RuleIsDeletedByItsNumber) {
  struct {
    const char *type;
    OPEN_ACL_TYPE_t list_type;
  } rows[] = {{"ip", IPV4_LIST}, {"mac", MAC_LIST}, {"ipv6", IPV6_LIST}};
  for (const auto &row : rows) {
    uint32_t id = create_list(row.list_type, NAME_OF_31);
    for (uint32_t ruleId : {5u, 7u, 2147483647u}) add_rule(id, OPEN_ACL_ACTION_PERMIT, ruleId);
    std::string uri = uri_of(row.type) + "/" + NAME_OF_31;
    EXPECT_EQ(done("DELETE", uri + "/rule", "sequence=7"), DELETED.xml);
    EXPECT_EQ(refusal("DELETE", uri + "/rule", "sequence=7"), expected_platform_error(OPEN_E_NOT_FOUND));
    EXPECT_EQ(done("DELETE", uri, "sequence=2147483647", "json"), DELETED.json);
    EXPECT_EQ(rule_count(id), 1u);
    EXPECT_EQ(done("DELETE", uri + "/rule", "sequence=0000000005"), DELETED.xml);
    EXPECT_EQ(get("/acl/" + (row.type + ("/name/" + NAME_OF_31))), expected_list(NAME_OF_31, id, {}));
  }
}

TEST_F(AclTest, RuleNeedsItsNumber) {
  uint32_t id = create_list(MAC_LIST, "m");
  for (uint32_t ruleId : {1u, 5u}) add_rule(id, OPEN_ACL_ACTION_PERMIT, ruleId);
  for (const char *query : {"", "sequence=", "sequence=x", "sequence=5x", "sequence=-5", "sequence=%205",
                            "sequence=5.0", "sequence=0", "sequence=6", "sequence=4294967295",
                            "sequence=4294967301", "sequence=00000000005", "rule=5", "sequence=5,1"})
    EXPECT_EQ(refusal("DELETE", "/acl/mac/name/m/rule", query), refused()) << query;
  EXPECT_EQ(refusal("DELETE", "/acl/mac/name/m/rule", "sequence=" + std::string(256, '5')), refused());
  EXPECT_EQ(rule_count(id), 2u);
}

/* The list is looked up before the number is looked at. */
TEST_F(AclTest, RuleOfAnUnknownListIsNotDeleted) {
  add_rule(create_list(MAC_LIST, "m"), OPEN_ACL_ACTION_PERMIT, 5);
  for (const char *query : {"sequence=5", "", "sequence=x"}) {
    EXPECT_EQ(refusal("DELETE", "/acl/mac/name/other/rule", query), no_such_list()) << query;
    EXPECT_EQ(refusal("DELETE", "/acl/ip/name/m/rule", query), no_such_list()) << query;
    EXPECT_EQ(refusal("DELETE", "/acl/ipx/name/m/rule", query), refused()) << query;
    EXPECT_EQ(refusal("DELETE", "/acl/mac/name/" + std::string(32, 'n') + "/rule", query), refused())
        << query;
    EXPECT_EQ(refusal("DELETE", "/acl/mac/name/" + NAME_OF_31 + "/rule", query), no_such_list()) << query;
  }
  EXPECT_EQ(rule_count(1), 1u);
}

/* --- Binding ---------------------------------------------------------------------------------------------
 */

/* An interface or a VLAN. */
struct place {
  std::string uri;
  bool is_vlan;
};

static void PrintTo(const place &where, std::ostream *os) {
  *os << where.uri;
}

class AclAttachTest : public AclTest, public testing::WithParamInterface<place> {
protected:
  AclAttachTest() {
    EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
    create_list(IPV4_LIST, "web");
    create_list(MAC_LIST, NAME_OF_31);
    create_list(IPV6_LIST, "web");
  }
  const std::string &uri() const { return GetParam().uri; }
  result_node bound_here(const char *direction) const {
    uint32_t id = static_cast<uint32_t>(std::stoul(uri().substr(uri().rfind('/') + 1)));
    return GetParam().is_vlan ? bound(direction, {}, {id}) : bound(direction, {id});
  }
  void expect_nothing_bound() const {
    for (const char *query : {"direction=in", "direction=out"})
      EXPECT_EQ(get(uri(), query), expected_data({}, "No ACLs are configured."));
  }
};

TEST_P(AclAttachTest, ListIsAttachedAndDetached) {
  struct {
    const char *query;
    const char *list;
    uint32_t id;
    bool in;
  } rows[] = {{"type=ip&name=web", "/acl/ip/name/web", 1, true},
              {"type=mac&name=nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn",
               "/acl/mac/name/nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn", 2, false},
              {"type=ipv6&name=web", "/acl/ipv6/name/web", 3, true}};
  for (const auto &row : rows) {
    std::string query = std::string(row.query) + (row.in ? "&direction=in" : "&direction=out");
    std::string name = row.id == 2 ? NAME_OF_31 : "web";
    result_nodes bindings = {row.in ? bound_here("inbound") : bound("inbound"),
                             row.in ? bound("outbound") : bound_here("outbound")};
    EXPECT_EQ(done("POST", uri(), query + "&sequence=7"), ATTACHED.xml);
    EXPECT_EQ(get(row.list), expected_list(name, row.id, {}, bindings));
    EXPECT_EQ(done("DELETE", uri(), query, "json"), DETACHED.json);
    EXPECT_EQ(get(row.list), expected_list(name, row.id, {}));
    EXPECT_EQ(done("POST", uri(), query + "&sequence=7", "json"), ATTACHED.json);
    EXPECT_EQ(done("DELETE", uri(), query + "&sequence=x"), DETACHED.xml); /* the number is not read */
  }
  expect_nothing_bound();
}

static Answers bound_lists(const std::vector<std::pair<uint32_t, uint32_t>> &ids_and_sequences) {
  static const char *const types[] = {"IPv4", "MAC", "IPv6"};
  result_nodes nodes;
  for (const auto &[id, sequence] : ids_and_sequences) {
    nodes.push_back(entry(static_cast<unsigned>(nodes.size()) + 1, "acl",
                          {text("type", types[id - 1]), text("name", id == 2 ? NAME_OF_31 : "web"),
                           number("id", id), number("sequence_number", sequence)}));
  }
  return expected_data({branch("acls", nodes)});
}

TEST_P(AclAttachTest, SequenceNumberIsPassedThrough) {
  done("POST", uri(), "direction=in&type=ip&name=web&sequence=9");
  done("POST", uri(), "direction=in&type=ipv6&name=web&sequence=0000000003");
  done("POST", uri(), "direction=in&type=mac&name=" + NAME_OF_31 + "&sequence=0");
  EXPECT_EQ(get(uri(), "direction=in"), bound_lists({{3, 3}, {1, 9}, {2, 10}}));
  done("DELETE", uri(), "direction=in&type=ip&name=web");
  EXPECT_EQ(get(uri(), "direction=in"), bound_lists({{3, 3}, {2, 10}}));
}

TEST_P(AclAttachTest, RepeatedAttachmentIsASuccess) {
  const std::string query = "direction=in&type=ip&name=web&sequence=";
  EXPECT_EQ(done("POST", uri(), query + "7"), ATTACHED.xml);
  EXPECT_EQ(done("POST", uri(), query + "7"), ATTACHED_BEFORE.xml);
  EXPECT_EQ(done("POST", uri(), query + "8", "json"), ATTACHED_BEFORE.json);
  EXPECT_EQ(get(uri(), "direction=in"), bound_lists({{1, 7}}));
  EXPECT_EQ(done("POST", uri(), "direction=out&type=ip&name=web&sequence=7"), ATTACHED.xml);
}

TEST_P(AclAttachTest, SequenceNumberThatIsTakenIsThePlatformsRefusal) {
  done("POST", uri(), "direction=in&type=ip&name=web&sequence=7");
  EXPECT_EQ(refusal("POST", uri(), "direction=in&type=ipv6&name=web&sequence=7"),
            expected_platform_error(OPEN_E_FAIL));
  EXPECT_EQ(get(uri(), "direction=in"), bound_lists({{1, 7}}));
}

TEST_P(AclAttachTest, FullPlaceTakesNoList) {
  lower_limit("acl-bindings", 1);
  done("POST", uri(), "direction=in&type=ip&name=web&sequence=1");
  EXPECT_EQ(refusal("POST", uri(), "direction=in&type=ipv6&name=web&sequence=2"),
            expected_platform_error(OPEN_E_FULL));
}

TEST_P(AclAttachTest, ListThatIsNotAttachedThereCannotBeDetached) {
  done("POST", uri(), "direction=in&type=ip&name=web&sequence=7");
  for (const char *query : {"direction=out&type=ip&name=web", "direction=in&type=ipv6&name=web"})
    EXPECT_EQ(refusal("DELETE", uri(), query), expected_platform_error(OPEN_E_NOT_FOUND)) << query;
  EXPECT_EQ(get(uri(), "direction=in"), bound_lists({{1, 7}}));
}

TEST_P(AclAttachTest, DirectionTypeAndNameMustBeGiven) {
  const std::string whole = "&sequence=7";
  for (const std::string &query :
       {std::string(), std::string("type=ip&name=web"), std::string("direction=in&name=web"),
        std::string("direction=in&type=ip"), std::string("direction=&type=ip&name=web"),
        std::string("direction=both&type=ip&name=web"), std::string("direction=IN&type=ip&name=web"),
        std::string("direction=inbound&type=ip&name=web"), std::string("direction=0&type=ip&name=web"),
        std::string("direction=in&type=&name=web"), std::string("direction=in&type=ipx&name=web"),
        std::string("direction=in&type=IP&name=web"), std::string("direction=in&type=1&name=web"),
        std::string("direction=in&type=ip&name="), "direction=in&type=ip&name=" + std::string(32, 'n'),
        "direction=in&type=ip&name=" + std::string(256, 'n'),
        "name=web&type=ip&direction=" + std::string(256, 'i'),
        "name=web&direction=in&type=" + std::string(256, 'i')}) {
    EXPECT_EQ(refusal("POST", uri(), query + whole), refused()) << query;
    EXPECT_EQ(refusal("DELETE", uri(), query + whole), refused()) << query;
  }
  expect_nothing_bound();
}

TEST_P(AclAttachTest, AttachingNeedsASequenceNumber) {
  const std::string query = "direction=in&type=ip&name=web";
  for (const char *sequence : {"", "&sequence=", "&sequence=x", "&sequence=-1", "&sequence=7x",
                               "&sequence=%207", "&sequence=4294967296", "&sequence=00000000007"})
    EXPECT_EQ(refusal("POST", uri(), query + sequence), refused()) << sequence;
  EXPECT_EQ(refusal("POST", uri(), query + "&sequence=" + std::string(256, '7')), refused());
  expect_nothing_bound();
}

/* The list is looked up after direction, type and name and before the sequence number. */
TEST_P(AclAttachTest, UnknownListIsNotBound) {
  for (const char *list : {"type=ip&name=other", "type=mac&name=web", "type=ip&name=Web"}) {
    std::string query = std::string("direction=in&") + list;
    for (const char *sequence : {"&sequence=7", "", "&sequence=x"}) {
      EXPECT_EQ(refusal("POST", uri(), query + sequence), no_such_list()) << query << sequence;
      EXPECT_EQ(refusal("DELETE", uri(), query + sequence), no_such_list()) << query << sequence;
    }
    EXPECT_EQ(refusal("POST", uri(), std::string("direction=x&sequence=7&") + list), refused());
  }
  expect_nothing_bound();
}

TEST_P(AclAttachTest, BindingsSurviveSavingAndReloading) {
  done("POST", uri(), "direction=out&type=ip&name=web&sequence=7");
  configure(lab("show running-config"));
  EXPECT_EQ(get(uri(), "direction=out"), bound_lists({{1, 7}}));
}

INSTANTIATE_TEST_SUITE_P(Places, AclAttachTest,
                         testing::Values(place{"/acl/if/3", false}, place{"/acl/if/56", false},
                                         place{"/acl/vlan/10", true}));

TEST_F(AclTest, PlacesThatDoNotExistAreThePlatformsRefusal) {
  create_list(IPV4_LIST, "web");
  for (const char *uri :
       {"/acl/if/0", "/acl/if/55", "/acl/if/999", "/acl/if/2147483647", "/acl/if/99999999999999999999",
        "/acl/if/4294967299", "/acl/vlan/0", "/acl/vlan/2", "/acl/vlan/4095", "/acl/vlan/4294967297"}) {
    EXPECT_EQ(refusal("POST", uri, "direction=in&type=ip&name=web&sequence=1"), refused()) << uri;
    EXPECT_EQ(refusal("DELETE", uri, "direction=in&type=ip&name=web"), refused()) << uri;
  }
  EXPECT_EQ(get("/acl/ip/name/web"), expected_list("web", 1, {}));
}
