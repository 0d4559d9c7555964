/* Access control lists when the platform fails: every call of reading, making, deleting and binding lists
 * with every result. Making rules: test_acl_rule_failures.cpp. */
#include "tests/unit/modules/acl_rule_nodes.h"
#include "tests/unit/modules/failing_calls.h"

#include <map>

class AclFailureTest : public AclRulesTest {
protected:
  AclFailureTest() {
    EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
    create_list(IPV4_LIST, "web");
    create_list(IPV4_LIST, "mail");
    for (uint32_t ruleId : {10u, 20u}) {
      add_rule(1, OPEN_ACL_ACTION_PERMIT, ruleId);
      add(rpcclt_openapiAclRuleMatchProtocolAdd, 1u, ruleId, 6u);
    }
    add(rpcclt_openapiAclIntfDirAdd, 3, OPEN_ACL_DIRECTION_IN, 1u, 1u);
    add(rpcclt_openapiAclVlanDirAdd, 10, OPEN_ACL_DIRECTION_IN, 1u, 1u);
  }
  /* A call of the function, after `skip` that succeed, fails with each error in turn: it is answered as the
   * error is, but for those in `otherwise`. */
  void expect_answers(const char *method, const std::string &uri, const std::string &query,
                      const std::string &function, unsigned skip,
                      const std::map<open_error_t, Answers> &otherwise = {}) const {
    for (open_error_t rc : all_platform_errors()) {
      auto special = otherwise.find(rc);
      Answers expected = special == otherwise.end() ? expected_platform_error(rc) : special->second;
      for (const char *format : {"xml", "json"}) {
        fault(function, rc, 1, skip);
        FakeRequest request(method, uri, with_format(query, format));
        acl_api_handler(handle, request.conn());
        EXPECT_EQ(answer_body(request, format), *format == 'x' ? expected.xml : expected.json)
            << method << " " << uri << ": " << function << " " << rc;
      }
    }
  }
  /* Whatever error the call answers, the request is answered so. */
  void expect_always(const std::string &uri, const std::string &function, unsigned skip,
                     const Answers &expected) const {
    std::map<open_error_t, Answers> always;
    for (open_error_t rc : all_platform_errors()) always[rc] = expected;
    expect_answers("GET", uri, "", function, skip, always);
  }
  Answers web_list(const result_nodes &bindings) const {
    return expected_list("web", 1, {ip_rule_nodes(10, "6(TCP)"), ip_rule_nodes(20, "6(TCP)")}, bindings);
  }
  static result_nodes web_bindings() { return {bound("inbound", {3}, {10}), bound("outbound")}; }
};

/* --- Reading ---------------------------------------------------------------------------------------------
 */

TEST_F(AclFailureTest, EveryCallOfAReadThatFailsIsAnsweredOnceAndEndsTheRequest) {
  const operation_calls operations[] = {
      {"GET", "/acl/count", "", {"rpcclt_openapiAclCountGet", "rpcclt_openapiAclMaxCountGet"}},
      {"GET", "/acl/if/3", "direction=in", {"rpcclt_openapiAclIntfDirListGet"}, {"rpcclt_openapiAclNameGet"}},
      {"GET",
       "/acl/vlan/10",
       "direction=in",
       {"rpcclt_openapiAclVlanDirListGet"},
       {"rpcclt_openapiAclNameGet"}},
      {"GET",
       "/acl/ip",
       "",
       {"rpcclt_openapiAclNameGet", "rpcclt_openapiAclRuleCountGet"},
       {"rpcclt_openapiAclAssignedIntfDirListGet", "rpcclt_openapiAclAssignedVlanDirListGet",
        "rpcclt_openapiAclGetNext"}},
      {"GET",
       "/acl/ip/name/web",
       "",
       {"rpcclt_openapiAclRuleCountGet", "rpcclt_openapiAclRuleActionGet",
        "rpcclt_openapiAclRuleMatchEveryGet", "rpcclt_openapiAclRuleMatchProtocolGet"},
       {"rpcclt_openapiAclRuleMatchIpSrcMaskGet", "rpcclt_openapiAclRuleMatchLoggingGet",
        "rpcclt_openapiAclRuleGetNext"}},
  };
  for (const operation_calls &operation : operations)
    expect_every_failure_answered(acl_api_handler, handle, operation);
}

/* Faults on order count calls: these tell which one of the walk it is. */
TEST_F(AclFailureTest, CallsOfAReadAreMadeInOrder) {
  expect_calls_end_at_a_failure(
      acl_api_handler, handle,
      {"GET",
       "/acl/ip",
       "",
       {"rpcclt_openapiAclGetFirst", "rpcclt_openapiAclNameGet", "rpcclt_openapiAclRuleCountGet",
        "rpcclt_openapiAclAssignedVlanDirListGet", "rpcclt_openapiAclGetNext"}},
      OPEN_E_PARAM);
  expect_calls_end_at_a_failure(
      acl_api_handler, handle,
      {"GET",
       "/acl/ip/name/web",
       "",
       {"rpcclt_openapiAclGet", "rpcclt_openapiAclAssignedVlanDirListGet", "rpcclt_openapiAclRuleCountGet"},
       {"rpcclt_openapiAclRuleGetFirst", "rpcclt_openapiAclRuleActionGet",
        "rpcclt_openapiAclRuleMatchEveryGet", "rpcclt_openapiAclRuleMatchProtocolGet",
        "rpcclt_openapiAclRuleGetNext"}},
      OPEN_E_PARAM);
}

TEST_F(AclFailureTest, WalkOverListsEndsAtAFailOnly) {
  listed_acl web = {"web", 1, 2, web_bindings()};
  expect_answers("GET", "/acl/ip", "", "rpcclt_openapiAclGetFirst", 0,
                 {{OPEN_E_FAIL, expected_lists("ip", {})}});
  expect_answers("GET", "/acl/ip", "", "rpcclt_openapiAclGetNext", 0,
                 {{OPEN_E_FAIL, expected_lists("ip", {web})}});
  expect_answers("GET", "/acl/ip", "", "rpcclt_openapiAclGetNext", 1,
                 {{OPEN_E_FAIL, expected_lists("ip", {web, {"mail", 2, 0}})}});
  for (const char *function : {"rpcclt_openapiAclNameGet", "rpcclt_openapiAclRuleCountGet"})
    expect_answers("GET", "/acl/ip", "", function, 1);
}

TEST_F(AclFailureTest, BindingsThatCannotBeReadAreEmptyAndOnlyABadArgumentIsAFailure) {
  result_nodes without_interfaces = {bound("inbound", {}, {10}), bound("outbound")};
  result_nodes without_vlans = {bound("inbound", {3}), bound("outbound")};
  listed_acl mail = {"mail", 2, 0};
  expect_always("/acl/ip", "rpcclt_openapiAclAssignedIntfDirListGet", 0,
                expected_lists("ip", {{"web", 1, 2, without_interfaces}, mail}));
  expect_always("/acl/ip/name/web", "rpcclt_openapiAclAssignedIntfDirListGet", 0,
                web_list(without_interfaces));
  for (open_error_t rc : all_platform_errors()) {
    for (unsigned skip : {0u, 1u}) { /* inbound, outbound */
      Answers list = web_list(skip == 0 ? without_vlans : web_bindings());
      Answers lists = expected_lists("ip", {{"web", 1, 2, skip == 0 ? without_vlans : web_bindings()}, mail});
      if (rc == OPEN_E_PARAM) list = lists = refused();
      fault("rpcclt_openapiAclAssignedVlanDirListGet", rc, 1, skip);
      EXPECT_EQ(call_xml(acl_api_handler, "GET", "/acl/ip/name/web"), list.xml) << rc;
      fault("rpcclt_openapiAclAssignedVlanDirListGet", rc, 1, skip);
      EXPECT_EQ(call_xml(acl_api_handler, "GET", "/acl/ip"), lists.xml) << rc;
    }
  }
}

TEST_F(AclFailureTest, ListThatIsNotFoundIsAnsweredInTheModulesWords) {
  result_node name = text("acl_name", "web");
  expect_answers("GET", "/acl/ip/name/web", "", "rpcclt_openapiAclGet", 0,
                 {{OPEN_E_NOT_FOUND, no_such_list(name.xml, name.json)}});
}

TEST_F(AclFailureTest, FailureThatNamesNoRuleMeansThatThereIsNone) {
  result_nodes data = {text("acl_name", "web"), number("acl_id", 1)};
  result_nodes bindings = web_bindings();
  data.insert(data.end(), bindings.begin(), bindings.end());
  data.push_back(number("rules_number", 2));
  data.push_back(branch("rules", {}));
  expect_always("/acl/ip/name/web", "rpcclt_openapiAclRuleGetFirst", 0,
                expected_data(data, "No rules have been configured for this ACL."));
}

TEST_F(AclFailureTest, FailureThatNamesARuleIsAFailure) {
  bent_output rule("rpcclt_openapiAclRuleGetFirst", 10);
  expect_answers("GET", "/acl/ip/name/web", "", "rpcclt_openapiAclRuleGetFirst", 0);
}

TEST_F(AclFailureTest, WalkOverRulesEndsAtAFailOnly) {
  Answers first = expected_data({text("acl_name", "web"), number("acl_id", 1), web_bindings()[0],
                                 web_bindings()[1], number("rules_number", 2),
                                 branch("rules", {entry(1, "rule", ip_rule_nodes(10, "6(TCP)"))})});
  expect_answers("GET", "/acl/ip/name/web", "", "rpcclt_openapiAclRuleGetNext", 0, {{OPEN_E_FAIL, first}});
  expect_answers("GET", "/acl/ip/name/web", "", "rpcclt_openapiAclRuleGetNext", 1,
                 {{OPEN_E_FAIL, web_list(web_bindings())}});
  for (const char *function : {"rpcclt_openapiAclRuleActionGet", "rpcclt_openapiAclRuleMatchEveryGet",
                               "rpcclt_openapiAclRuleMatchProtocolGet"})
    expect_answers("GET", "/acl/ip/name/web", "", function, 1); /* of the second rule: none is shown */
}

TEST_F(AclFailureTest, WalkOverRulesFailsAlikeInAllTypes) {
  struct {
    OPEN_ACL_TYPE_t type;
    const char *uri;
  } rows[] = {{MAC_LIST, "/acl/mac/name/x"}, {IPV6_LIST, "/acl/ipv6/name/x"}};
  for (const auto &row : rows) {
    uint32_t id = create_list(row.type, "x");
    add_rule(id);
    add_rule(id);
    for (const char *function : {"rpcclt_openapiAclRuleCountGet", "rpcclt_openapiAclRuleActionGet",
                                 "rpcclt_openapiAclRuleMatchEveryGet"})
      expect_answers("GET", row.uri, "", function, 0);
    expect_answers("GET", row.uri, "", "rpcclt_openapiAclRuleGetNext", 1,
                   {{OPEN_E_FAIL, call(acl_api_handler, "GET", row.uri)}});
  }
  expect_answers("GET", "/acl/ipv6/name/x", "", "rpcclt_openapiAclRuleMatchProtocolGet", 1);
}

/* --- Making, deleting and binding lists ------------------------------------------------------------------
 */

TEST_F(AclFailureTest, MakingAListFailsWithThePlatformsResult) {
  expect_answers("POST", "/acl/mac/name", "name=new", "rpcclt_openapiAclCreate", 0,
                 {{OPEN_E_EXISTS, expected_with_data(1, "The ACL name already exists.",
                                                     {text("acl_type", "mac"), text("acl_name", "new")})}});
  EXPECT_EQ(list_count(), 2u);
}

TEST_F(AclFailureTest, DeletingFailsWithThePlatformsResult) {
  const std::map<open_error_t, Answers> unknown = {{OPEN_E_NOT_FOUND, no_such_list()}};
  expect_answers("DELETE", "/acl/ip/name", "name=mail", "rpcclt_openapiAclGet", 0, unknown);
  expect_answers("DELETE", "/acl/ip/name", "name=mail", "rpcclt_openapiAclDelete", 0);
  expect_answers("DELETE", "/acl/ip/name/web/rule", "sequence=10", "rpcclt_openapiAclGet", 0, unknown);
  expect_answers("DELETE", "/acl/ip/name/web/rule", "sequence=10", "rpcclt_openapiAclRuleDelete", 0);
  expect_calls_end_at_a_failure(
      acl_api_handler, handle,
      {"DELETE", "/acl/ip/name", "name=mail", {"rpcclt_openapiAclGet", "rpcclt_openapiAclDelete"}},
      OPEN_E_PARAM);
  expect_calls_end_at_a_failure(acl_api_handler, handle,
                                {"DELETE",
                                 "/acl/ip/name/web/rule",
                                 "sequence=10",
                                 {"rpcclt_openapiAclGet", "rpcclt_openapiAclRuleDelete"}},
                                OPEN_E_PARAM);
  EXPECT_EQ(list_count(), 2u);
  EXPECT_EQ(rule_count(1), 2u);
}

TEST_F(AclFailureTest, BindingFailsWithThePlatformsResult) {
  const std::map<open_error_t, Answers> unknown = {{OPEN_E_NOT_FOUND, no_such_list()}};
  const std::map<open_error_t, Answers> attached = {
      {OPEN_E_EXISTS, expected_answers(0, "The rule has already attached.")}};
  const std::string query = "direction=out&type=ip&name=web&sequence=1";
  struct {
    const char *method, *uri, *function;
  } rows[] = {{"POST", "/acl/if/3", "rpcclt_openapiAclIntfDirAdd"},
              {"POST", "/acl/vlan/10", "rpcclt_openapiAclVlanDirAdd"},
              {"DELETE", "/acl/if/3", "rpcclt_openapiAclIntfDirDelete"},
              {"DELETE", "/acl/vlan/10", "rpcclt_openapiAclVlanDirDelete"}};
  for (const auto &row : rows) {
    bool attaches = *row.method == 'P';
    expect_answers(row.method, row.uri, query, "rpcclt_openapiAclGet", 0, unknown);
    expect_answers(row.method, row.uri, query, row.function, 0,
                   attaches ? attached : std::map<open_error_t, Answers>());
    expect_calls_end_at_a_failure(
        acl_api_handler, handle, {row.method, row.uri, query.c_str(), {"rpcclt_openapiAclGet", row.function}},
        OPEN_E_PARAM);
  }
  EXPECT_EQ(get("/acl/ip/name/web"), web_list(web_bindings()));
}

/* A request that is refused for what it says does not reach the platform. */
TEST_F(AclFailureTest, BadRequestsAskThePlatformNothing) {
  const std::string long_name(32, 'n');
  struct {
    const char *method;
    std::string uri, query;
  } rows[] = {
      {"POST", "/acl/ip/name", "name="},
      {"POST", "/acl/ip/name", "name=" + long_name},
      {"DELETE", "/acl/ip/name", "name=" + long_name},
      {"GET", "/acl/ip/name/" + long_name, ""},
      {"POST", "/acl/ip/name/" + long_name + "/rule", "action=permit&protocol=every"},
      {"DELETE", "/acl/ip/name/" + long_name + "/rule", "sequence=10"},
      {"POST", "/acl/if/3", "direction=in&type=ip&sequence=1&name=" + long_name},
      {"DELETE", "/acl/vlan/10", "direction=in&type=ip&name=" + long_name},
      {"POST", "/acl/ipx/name", "name=new"},
      {"DELETE", "/acl/ip/name", ""},
      {"DELETE", "/acl/ipx/name/web/rule", "sequence=10"},
      {"POST", "/acl/if/3", "direction=x&type=ip&name=web&sequence=1"},
      {"POST", "/acl/vlan/10", "direction=in&type=x&name=web&sequence=1"},
      {"DELETE", "/acl/if/3", "direction=in&type=ip"},
      {"GET", "/acl/if/3", ""},
      {"GET", "/acl/vlan/10", "direction=x"},
      {"GET", "/acl/ipx", ""},
  };
  const char *functions[] = {"AclCreate", "AclGet", "AclGetFirst", "AclIntfDirListGet", "AclVlanDirListGet"};
  std::string all;
  for (const char *function : functions) {
    fault(std::string("rpcclt_openapi") + function, OPEN_E_TIMEOUT);
    all += std::string("rpcclt_openapi") + function + " OPEN_E_TIMEOUT 1 0\n";
  }
  for (const auto &row : rows) {
    EXPECT_EQ(refusal(row.method, row.uri, row.query), refused()) << row.method << " " << row.uri;
    EXPECT_EQ(lab("fault list"), all) << row.method << " " << row.uri;
  }
  lab("fault clear");
}
