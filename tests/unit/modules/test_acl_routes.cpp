/* The routes of access control lists. URIs are taken as sscanf(3) scans them: one that ends early, or goes on
 * with other text once it has converted what it must, has a meaning of its own. */
#include "tests/unit/modules/acl_fixture.h"

class AclRouteTest : public AclTest {
protected:
  AclRouteTest() {
    create_list(IPV4_LIST, "web");
    create_list(MAC_LIST, "web");
    create_list(IPV6_LIST, "web");
  }
  void expect_bad(const char *method, const std::vector<std::string> &uris) const {
    for (const std::string &uri : uris) {
      EXPECT_EQ(refusal(method, uri, EVERYTHING), expected_bad_request()) << method << " " << uri;
    }
    EXPECT_EQ(list_count(), 3u);
  }
  /* Every variable that any operation reads, each of them good. */
  static constexpr char EVERYTHING[] =
      "name=new&type=ip&direction=in&sequence=7&action=permit&protocol=every&src_mac=any&dest_mac=any";
};

static Answers count_of(uint32_t lists) {
  return expected_data({number("current_number", lists), number("max_number", 100)});
}

/* --- GET -------------------------------------------------------------------------------------------------
 */

TEST_F(AclRouteTest, UriThatStopsInsideCountIsCount) {
  const std::string whole = "/acl/count";
  for (size_t length = 0; length <= whole.size(); length++)
    EXPECT_EQ(get(whole.substr(0, length)), count_of(3)) << whole.substr(0, length);
}

TEST_F(AclRouteTest, OtherSingleWordsAreTypes) {
  EXPECT_EQ(get("/acl/ip"), expected_lists("ip", {{"web", 1, 0}}));
  EXPECT_EQ(get("/acl/mac"), expected_lists("mac", {{"web", 2, 0}}));
  EXPECT_EQ(get("/acl/ipv6"), expected_lists("ipv6", {{"web", 3, 0}}));
  for (const char *uri :
       {"/acl/ipx", "/acl/countx", "/acl/counts", "/acl/x", "/acl/IP", "/acl/ipv4", "/acl/i", "/acl/ma",
        "/acl/ipv", "/acl/macs", "/acl/if", "/acl/vlan", "/acl/name"}) {
    EXPECT_EQ(refusal("GET", uri), refused()) << uri;
  }
}

TEST_F(AclRouteTest, ListsAreReadByTypeAndName) {
  EXPECT_EQ(get("/acl/ip/name/web"), expected_list("web", 1, {}));
  EXPECT_EQ(get("/acl/mac/name/web"), expected_list("web", 2, {}));
  EXPECT_EQ(get("/acl/ipv6/name/web"), expected_list("web", 3, {}));
}

/* Whatever follows "/name/" up to a blank is the name; no list has one with a slash. */
TEST_F(AclRouteTest, NameIsAllThatFollows) {
  EXPECT_EQ(get("/acl/ip/name/ web x"), expected_list("web", 1, {}));
  for (const char *name : {"web/rule", "web/", "/", "name/web"}) {
    result_node data = text("acl_name", name);
    EXPECT_EQ(refusal("GET", std::string("/acl/ip/name/") + name), no_such_list(data.xml, data.json)) << name;
  }
}

TEST_F(AclRouteTest, BindingsAreReadByNumber) {
  for (const char *uri : {"/acl/if/7", "/acl/if/007", "/acl/vlan/1", "/acl/vlan/0001"})
    EXPECT_EQ(get(uri, "direction=in"), expected_data({}, "No ACLs are configured.")) << uri;
}

TEST_F(AclRouteTest, NothingElseIsRead) {
  expect_bad("GET", {"/acl/if/7/extra",
                     "/acl/if/7x",
                     "/acl/if/7/",
                     "/acl/if/x",
                     "/acl/if/-7",
                     "/acl/vlan/7/extra",
                     "/acl/vlan/7x",
                     "/acl/vlan/7/",
                     "/acl/vlan/x",
                     "/acl/xyz/name/web",
                     "/acl/ipx/name/web",
                     "/acl/if/7/name/web",
                     "/acl/IP/name/web",
                     "/acl/mac/names/web",
                     "/acl/mac/nam/web",
                     "/acl/ip/web",
                     "/acl/ip/Name/web",
                     "/acl//name/web",
                     "/acl/ip//name/web",
                     "/acl/count/",
                     "/acl/count/x",
                     "/aclx",
                     "/ACL",
                     "/acls/ip",
                     "acl",
                     "/vlans"});
}

/* --- POST ------------------------------------------------------------------------------------------------
 */

static Answers created_list(const std::string &type, const std::string &name) {
  return expected_data({text("acl_type", type), text("acl_name", name)}, "Create successfully.");
}

TEST_F(AclRouteTest, UriThatStopsInsideNameMakesAList) {
  const std::string whole = "/acl/mac/name";
  unsigned lists = 3;
  for (size_t length = strlen("/acl/mac"); length <= whole.size(); length++) {
    std::string uri = whole.substr(0, length), name = "list-" + std::to_string(length);
    EXPECT_EQ(done("POST", uri, "name=" + name), created_list("mac", name).xml) << uri;
    EXPECT_EQ(list_count(), ++lists) << uri;
  }
}

/* What stands in the way of "/name" once the type has been converted stops the scan and is not looked at. */
TEST_F(AclRouteTest, UriWithOtherTextAfterTheTypeMakesAList) {
  unsigned lists = 3;
  for (const char *uri : {"/acl/mac/x", "/acl/mac/nam/e", "/acl/mac/rule/name", "/acl/mac//name"}) {
    std::string name = "list-" + std::to_string(lists);
    EXPECT_EQ(done("POST", uri, "name=" + name), created_list("mac", name).xml) << uri;
    EXPECT_EQ(list_count(), ++lists) << uri;
  }
}

TEST_F(AclRouteTest, UnknownTypeMakesNoList) {
  for (const char *uri : {"/acl/count", "/acl/xyz", "/acl/xyz/name", "/acl/MAC/name", "/acl/if", "/acl/if/",
                          "/acl/if/x", "/acl/if/7/extra", "/acl/vlan", "/acl/vlan/", "/acl/vlan/7/extra"}) {
    EXPECT_EQ(refusal("POST", uri, EVERYTHING), refused()) << uri;
  }
  EXPECT_EQ(list_count(), 3u);
}

static Answers created_rule(const std::string &type, uint32_t id, uint32_t sequence) {
  return expected_data({text("acl_type", type), text("acl_name", "web"), number("acl_id", id),
                        number("sequence_number", sequence)},
                       "Create successfully.");
}

TEST_F(AclRouteTest, UriThatStopsAfterTheNameOrInsideRuleMakesARule) {
  struct {
    const char *type, *conditions;
    uint32_t id;
  } rows[] = {{"ip", "protocol=tcp&src_ip=any&dest_ip=any&dscp=", 1},
              {"mac", "src_mac=any&dest_mac=any&vlan=", 2},
              {"ipv6", "protocol=tcp&src_prefix=any&dest_prefix=any&dscp=", 3}};
  for (const auto &row : rows) {
    uint32_t rules = 0;
    for (const char *end : {"", "/", "/r", "/ru", "/rul", "/rule", "/x", "/r/ule"}) {
      std::string uri = std::string("/acl/") + row.type + "/name/web" + end;
      rules++;
      EXPECT_EQ(done("POST", uri, std::string("action=deny&") + row.conditions + std::to_string(rules)),
                created_rule(row.type, row.id, 10 * rules).xml)
          << uri;
      EXPECT_EQ(rule_count(row.id), rules) << uri;
    }
  }
}

TEST_F(AclRouteTest, ListsAreBoundUnderInterfacesAndVlans) {
  EXPECT_EQ(done("POST", "/acl/if/7", "direction=in&type=ip&name=web&sequence=1"),
            expected_answers(0, "The rule attachs successfully.").xml);
  EXPECT_EQ(done("POST", "/acl/vlan/1", "direction=out&type=mac&name=web&sequence=1"),
            expected_answers(0, "The rule attachs successfully.").xml);
  EXPECT_EQ(get("/acl/ip/name/web"), expected_list("web", 1, {}, {bound("inbound", {7}), bound("outbound")}));
  EXPECT_EQ(get("/acl/mac/name/web"),
            expected_list("web", 2, {}, {bound("inbound"), bound("outbound", {}, {1})}));
}

TEST_F(AclRouteTest, NothingElseIsMade) {
  expect_bad("POST", {"", "/", "/acl", "/acl/", "/acl//name", "/acl/mac/name/", "/acl/mac/names",
                      "/acl/mac/name/x/rules", "/acl/mac/name/web/rule/", "/acl/mac/name/web/rule/1",
                      "/acl/xyz/name/web/rule", "/acl/MAC/name/web/rule", "/acl/xyz/name/web",
                      "/acl/mac/name//rule", "/aclx/mac/name"});
  for (uint32_t id : {1u, 2u, 3u}) EXPECT_EQ(rule_count(id), 0u);
}

/* --- DELETE ----------------------------------------------------------------------------------------------
 */

static const Answers DELETED = expected_answers(0, "Delete successfully.");

TEST_F(AclRouteTest, UriThatStopsInsideNameDeletesAList) {
  const std::string whole = "/acl/mac/name";
  for (size_t length = strlen("/acl/mac"); length <= whole.size(); length++) {
    std::string uri = whole.substr(0, length);
    create_list(MAC_LIST, "gone");
    EXPECT_EQ(done("DELETE", uri, "name=gone"), DELETED.xml) << uri;
    EXPECT_EQ(list_count(), 3u) << uri;
  }
  create_list(MAC_LIST, "gone");
  EXPECT_EQ(done("DELETE", "/acl/mac/x", "name=gone"), DELETED.xml);
  EXPECT_EQ(list_count(), 3u);
}

TEST_F(AclRouteTest, UriThatStopsAfterTheNameOrInsideRuleDeletesARule) {
  for (const char *type : {"ip", "mac", "ipv6"}) {
    uint32_t id = *type == 'm' ? 2 : strcmp(type, "ip") == 0 ? 1 : 3;
    for (const char *end : {"", "/", "/r", "/ru", "/rul", "/rule", "/x"}) {
      std::string uri = std::string("/acl/") + type + "/name/web" + end;
      add_rule(id, OPEN_ACL_ACTION_DENY, 5);
      EXPECT_EQ(done("DELETE", uri, "sequence=5"), DELETED.xml) << uri;
      EXPECT_EQ(rule_count(id), 0u) << uri;
    }
  }
}

TEST_F(AclRouteTest, UnknownTypeDeletesNothing) {
  for (const char *uri :
       {"/acl/xyz/name/web/rule", "/acl/xyz/name/web", "/acl/xyz/name", "/acl/xyz", "/acl/count", "/acl/if",
        "/acl/if/x", "/acl/if/7/extra", "/acl/vlan/7/extra", "/acl/MAC/name/web"}) {
    EXPECT_EQ(refusal("DELETE", uri, "name=web&sequence=5"), refused()) << uri;
  }
  EXPECT_EQ(list_count(), 3u);
}

TEST_F(AclRouteTest, ListsAreUnboundUnderInterfacesAndVlans) {
  add(rpcclt_openapiAclIntfDirAdd, 7, OPEN_ACL_DIRECTION_IN, 1u, 1u);
  add(rpcclt_openapiAclVlanDirAdd, 1, OPEN_ACL_DIRECTION_OUT, 2u, 1u);
  EXPECT_EQ(done("DELETE", "/acl/if/7", "direction=in&type=ip&name=web"),
            expected_answers(0, "The ACL detaches successfully.").xml);
  EXPECT_EQ(done("DELETE", "/acl/vlan/1", "direction=out&type=mac&name=web"),
            expected_answers(0, "The ACL detaches successfully.").xml);
  EXPECT_EQ(get("/acl/ip/name/web"), expected_list("web", 1, {}));
  EXPECT_EQ(get("/acl/mac/name/web"), expected_list("web", 2, {}));
}

TEST_F(AclRouteTest, NothingElseIsDeleted) {
  expect_bad("DELETE", {"", "/", "/acl", "/acl/", "/acl//name", "/acl/mac/name/", "/acl/mac/names",
                        "/acl/mac/name/web/rules", "/acl/mac/name/web/rule/", "/acl/mac/name/web/rule/5",
                        "/acl/mac/name//rule", "/aclx/mac/name"});
}

/* --- Other methods ---------------------------------------------------------------------------------------
 */

TEST_F(AclRouteTest, OtherMethodsAreServedNowhere) {
  for (const char *method : {"PUT", "PATCH", "HEAD", "OPTIONS"})
    expect_bad(method, {"", "/acl", "/acl/", "/acl/count", "/acl/ip", "/acl/ip/name", "/acl/ip/name/web",
                        "/acl/ip/name/web/rule", "/acl/if/7", "/acl/vlan/1"});
}

TEST_F(AclRouteTest, MethodVariableChoosesTheOperation) {
  EXPECT_EQ(done("GET", "/acl/mac/name", "method=post&name=new"), created_list("mac", "new").xml);
  EXPECT_EQ(call(acl_api_handler, "POST", "/acl", "method=get"), count_of(4));
  EXPECT_EQ(done("POST", "/acl/mac/name", "method=delete&name=new"), DELETED.xml);
  EXPECT_EQ(refusal("GET", "/acl", "method=put"), expected_bad_request());
}

TEST_F(AclRouteTest, LongestUriIsServedAndOneMoreCharacterIsNot) {
  std::string uri = "/acl/if/" + std::string(255 - 9, '0') + "7";
  ASSERT_EQ(uri.size(), 255u);
  EXPECT_EQ(get(uri, "direction=in"), expected_data({}, "No ACLs are configured."));
  EXPECT_EQ(get(uri + "7", "direction=in"), expected_bad_request());
  std::string long_name = "/acl/ip/name/" + std::string(255 - 13, 'n');
  EXPECT_EQ(get(long_name), refused());
  EXPECT_EQ(get(long_name + "n"), expected_bad_request());
}

/* --- Operations on their own -----------------------------------------------------------------------------
 */

static int attach_to_interface(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return api_acl_attach_detach_acl_to_specified_interface(client_handle, conn, 0);
}
static int detach_from_interface(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return api_acl_attach_detach_acl_to_specified_interface(client_handle, conn, 1);
}
static int attach_to_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return api_acl_attach_detach_acl_to_specified_vlan(client_handle, conn, 0);
}
static int detach_from_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return api_acl_attach_detach_acl_to_specified_vlan(client_handle, conn, 1);
}

/* No route lets such URIs through; the operations themselves stand on their own feet. */
TEST_F(AclRouteTest, UriWithoutWhatAnOperationNeedsIsRefused) {
  struct {
    rest_handler_t operation;
    std::vector<std::string> uris;
  } rows[] = {
      {api_acl_get_by_type, {"/acl", "/acl/", "/acl/xyz"}},
      {api_acl_get_mac_acl_by_name, {"/acl/mac/name/", "/acl/mac/name", "/acl"}},
      {api_acl_get_ip_acl_by_name, {"/acl/ip/name/", "/acl/ip/name", "/acl"}},
      {api_acl_get_ipv6_acl_by_name, {"/acl/ipv6/name/", "/acl/ipv6/name", "/acl"}},
      {api_acl_get_specified_interface, {"/acl/if/", "/acl/if", "/acl/if/x"}},
      {api_acl_get_specified_vlan, {"/acl/vlan/", "/acl/vlan", "/acl/vlan/x"}},
      {api_acl_create_mac_acl_match_rule,
       {"/acl/mac/name/", "/acl/mac/name/web/rules", "/acl/xyz/name/web/rule"}},
      {api_acl_create_ip_acl_match_rule,
       {"/acl/ip/name/", "/acl/ip/name/web/rules", "/acl/xyz/name/web/rule"}},
      {api_acl_create_ipv6_acl_match_rule,
       {"/acl/ipv6/name/", "/acl/ip/name/web/rules", "/acl/xyz/name/web/rule"}},
      {api_acl_create_new_acl, {"/acl/", "/acl/mac/names", "/acl/xyz/name"}},
      {api_acl_delete_acl_by_name, {"/acl/", "/acl/mac/names", "/acl/xyz/name"}},
      {api_acl_delete_acl_match_rule,
       {"/acl/mac/name/", "/acl/mac/name/web/rules", "/acl/xyz/name/web/rule"}},
      {attach_to_interface, {"/acl/if/", "/acl/if/7/extra", "/acl/if/x"}},
      {detach_from_interface, {"/acl/if/", "/acl/if/7/extra", "/acl/if/x"}},
      {attach_to_vlan, {"/acl/vlan/", "/acl/vlan/7/extra", "/acl/vlan/x"}},
      {detach_from_vlan, {"/acl/vlan/", "/acl/vlan/7/extra", "/acl/vlan/x"}},
  };
  for (const auto &row : rows) {
    for (const std::string &uri : row.uris)
      EXPECT_EQ(call(row.operation, "GET", uri, EVERYTHING), refused()) << uri;
  }
  EXPECT_EQ(list_count(), 3u);
}
