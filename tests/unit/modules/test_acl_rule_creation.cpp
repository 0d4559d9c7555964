/* Making rules: what MAC, IPv4 and IPv6 lists have in common, from the URI to the list, the sequence number
 * and the action, and from the attributes to the check for duplicates. */
#include "tests/unit/modules/acl_creation_fixture.h"

INSTANTIATE_TEST_SUITE_P(Lists, AclAnyCreationTest, testing::Values(mac_list(), ipv4_list(), ipv6_list()));

/* --- The list --------------------------------------------------------------------------------------------
 */

TEST_P(AclAnyCreationTest, RuleIsMadeAndRead) {
  expect_rule(GetParam(), plain(), rule_nodes(10, "Permit", "TRUE"));
  expect_rule(GetParam(), conditions(), rule_nodes(10, "Permit", "FALSE", GetParam().rule));
}

TEST_P(AclAnyCreationTest, AnswerIsWrittenSo) {
  std::string type = GetParam().type, name = GetParam().name, id = std::to_string(GetParam().id);
  EXPECT_EQ(done("POST", GetParam().uri(), plain()),
            "<result><rlt_code>0</rlt_code><rlt_mesg>Create successfully.</rlt_mesg><rlt_data><acl_type>" +
                type + "</acl_type><acl_name>" + name + "</acl_name><acl_id>" + id +
                "</acl_id><sequence_number>10</sequence_number></rlt_data></result>\n");
  EXPECT_EQ(done("POST", GetParam().uri(), conditions(), "json"),
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Create successfully.\", \"rlt_data\": { "
            "\"acl_type\": \"" +
                type + "\", \"acl_name\": \"" + name + "\", \"acl_id\": " + id +
                ", \"sequence_number\": 20 } } }\n");
}

TEST_P(AclAnyCreationTest, VariablesMayStandInTheBody) {
  FakeRequest request("POST", GetParam().uri(), "format=xml", plain());
  EXPECT_EQ(acl_api_handler(handle, request.conn()), 1);
  EXPECT_EQ(answer_body(request, "xml"), created(GetParam(), 10).xml);
}

TEST_P(AclAnyCreationTest, UnknownListIsAnsweredWithTypeAndName) {
  for (const char *name : {"other", "Four", "fourx", "mm", "si"}) {
    Answers expected = expected_with_data(1, "There is no ACL configured with the name.",
                                          {text("acl_type", GetParam().type), text("acl_name", name)});
    std::string uri = std::string("/acl/") + GetParam().type + "/name/" + name + "/rule";
    for (const std::string &query : {plain(), std::string(), plain("&sequence=x"), std::string("action=x")})
      EXPECT_EQ(refusal("POST", uri, query), expected) << uri << query;
  }
}

TEST_P(AclAnyCreationTest, NameMayHave31CharactersAndNoMore) {
  std::string name(31, 'n'), uri = std::string("/acl/") + GetParam().type + "/name/";
  EXPECT_EQ(refusal("POST", uri + name + "/rule", plain()),
            expected_with_data(1, "There is no ACL configured with the name.",
                               {text("acl_type", GetParam().type), text("acl_name", name)}));
  EXPECT_EQ(refusal("POST", uri + name + "n/rule", plain()), refused());
  EXPECT_EQ(refusal("POST", uri + name + "n", plain()), refused());
  EXPECT_EQ(refusal("POST", uri + std::string(200, 'n') + "/rule", plain()), refused());
}

/* --- Sequence number -------------------------------------------------------------------------------------
 */

TEST_P(AclAnyCreationTest, SequenceNumberIsTaken) {
  expect_rule(GetParam(), plain("&sequence=7"), rule_nodes(7, "Permit", "TRUE"), 7);
  expect_rule(GetParam(), plain("&sequence=0000000007"), rule_nodes(7, "Permit", "TRUE"), 7);
  expect_rule(GetParam(), plain("&sequence=1"), rule_nodes(1, "Permit", "TRUE"), 1);
  expect_rule(GetParam(), plain("&sequence=2147483647"), rule_nodes(2147483647, "Permit", "TRUE"),
              2147483647);
}

TEST_P(AclAnyCreationTest, WithoutSequenceNumberThePlatformChooses) {
  expect_rule(GetParam(), plain("&sequence="), rule_nodes(10, "Permit", "TRUE"));
  add_rule(GetParam().id, OPEN_ACL_ACTION_DENY, 25);
  EXPECT_EQ(done("POST", GetParam().uri(), plain()), created(GetParam(), 30).xml);
}

TEST_P(AclAnyCreationTest, SequenceNumberThatIsNotAvailableIsRefusedWithData) {
  add_rule(GetParam().id, OPEN_ACL_ACTION_DENY, 7);
  for (const char *sequence : {"7", "07", "0", "2147483648", "4294967295"}) {
    std::string query = std::string("&sequence=") + sequence;
    expect_no_rule(GetParam(), plain(query), refused_as_full(GetParam()));
    expect_no_rule(GetParam(), query, refused_as_full(GetParam())); /* before the action is looked at */
    expect_no_rule(GetParam(), query + "&action=x&protocol=x", refused_as_full(GetParam()));
  }
}

TEST_P(AclAnyCreationTest, SequenceNumberThatIsNoNumberIsRefused) {
  for (const char *sequence :
       {"x", "7x", "-7", "%2B7", "+7", "7.0", "0x7", "4294967296", "00000000007", "%20"})
    expect_none_begun(GetParam(), plain(std::string("&sequence=") + sequence));
}

TEST_P(AclAnyCreationTest, FullListIsRefusedWithData) {
  lower_limit("acl-rules", 2);
  add_rule(GetParam().id, OPEN_ACL_ACTION_DENY, 1);
  add_rule(GetParam().id, OPEN_ACL_ACTION_PERMIT, 2);
  expect_no_rule(GetParam(), plain(), refused_as_full(GetParam()));
  expect_no_rule(GetParam(), plain("&sequence=3"), refused_as_full(GetParam()));
  expect_none_begun(GetParam(), plain("&sequence=x"));
  EXPECT_EQ(refused_as_full(GetParam()).xml,
            std::string("<result><rlt_code>2</rlt_code><rlt_mesg>The ACL rules count is full or the sequence "
                        "number is not available.</rlt_mesg><rlt_data><acl_type>") +
                GetParam().type + "</acl_type><acl_name>" + GetParam().name + "</acl_name><acl_id>" +
                std::to_string(GetParam().id) + "</acl_id></rlt_data></result>\n");
}

/* --- Action ----------------------------------------------------------------------------------------------
 */

TEST_P(AclAnyCreationTest, ActionIsTaken) {
  std::string query = plain();
  query.replace(query.find("permit"), 6, "deny");
  expect_rule(GetParam(), query, rule_nodes(10, "Deny", "TRUE"));
}

TEST_P(AclAnyCreationTest, ActionMustBeGiven) {
  std::string rest = plain().substr(strlen("action=permit"));
  for (const char *action : {"", "action=", "action=Permit", "action=DENY", "action=allow", "action=0",
                             "action=1", "action=permit+", "action=permits", "action=perm"})
    expect_none_begun(GetParam(), action + rest);
  expect_none_begun(GetParam(), "action=" + std::string(256, 'p') + rest);
}

/* --- Attributes ------------------------------------------------------------------------------------------
 */

struct attribute_row {
  const char *query;
  result_nodes nodes;
};

static const attribute_row GOOD_ATTRIBUTES[] = {
    {"&log=1", {text("log", "TRUE")}},
    {"&log=0", {text("log", "FALSE")}},
    {"&log=01", {text("log", "TRUE")}},
    {"&log=", {}},
    {"&assign_queue=0", {number("assign_queue", 0)}},
    {"&assign_queue=7", {number("assign_queue", 7)}},
    {"&mirror_intf=1", {number("mirror_intf", 1)}},
    {"&redirect_intf=56", {number("redirect_intf", 56)}},
    {"&time_range=work", {text("time_range", "work"), text("rule_status", "No State")}},
    {"&rate_limit=1&burst_size=128", {number("rate_limit", 1), number("burst_size", 128)}},
    {"&rate_limit=4294967295&burst_size=1", {number("rate_limit", 4294967295), number("burst_size", 1)}},
    {"&burst_size=64", {}},
    {"&burst_size=x&rate_limit=", {}},
    {"&redirect_agent=1", {}},
    {"&burst_size=1&rate_limit=2&time_range=t&redirect_intf=3&mirror_intf=4&assign_queue=5&log=0",
     {text("log", "FALSE"), number("assign_queue", 5), number("mirror_intf", 4), number("redirect_intf", 3),
      text("time_range", "t"), text("rule_status", "No State"), number("rate_limit", 2),
      number("burst_size", 1)}},
};

TEST_P(AclAnyCreationTest, AttributesAreAdded) {
  for (const attribute_row &row : GOOD_ATTRIBUTES) {
    expect_rule(GetParam(), plain(row.query), rule_nodes(10, "Permit", "TRUE", row.nodes));
    result_nodes rule = GetParam().rule;
    rule.insert(rule.end(), row.nodes.begin(), row.nodes.end());
    expect_rule(GetParam(), conditions(row.query), rule_nodes(10, "Permit", "FALSE", rule));
  }
}

TEST_P(AclAnyCreationTest, VariableThatIsTooLongIsNotThere) {
  for (const char *variable :
       {"sequence", "log", "assign_queue", "mirror_intf", "redirect_intf", "time_range", "rate_limit"})
    expect_rule(GetParam(), plain(std::string("&") + variable + "=" + std::string(256, '1')),
                rule_nodes(10, "Permit", "TRUE"));
}

static const char *const BAD_ATTRIBUTES[] = {
    "&log=2",
    "&log=x",
    "&log=-1",
    "&log=true",
    "&log=4294967297",
    "&log=%201",
    "&assign_queue=8",
    "&assign_queue=x",
    "&assign_queue=-1",
    "&assign_queue=4294967296",
    "&mirror_intf=0",
    "&mirror_intf=999",
    "&mirror_intf=x",
    "&mirror_intf=0/1",
    "&mirror_intf=-1",
    "&redirect_intf=0",
    "&redirect_intf=999",
    "&redirect_intf=x",
    "&redirect_intf=4294967297",
    "&time_range=12345678901234567890123456789012",
    "&time_range=a%20b",
    "&rate_limit=1000",
    "&rate_limit=1000&burst_size=",
    "&rate_limit=1000&burst_size=x",
    "&rate_limit=1000&burst_size=-1",
    "&rate_limit=1000&burst_size=0",
    "&rate_limit=1000&burst_size=129",
    "&rate_limit=x&burst_size=64",
    "&rate_limit=-1&burst_size=64",
    "&rate_limit=0&burst_size=64",
    "&rate_limit=4294967296&burst_size=64",
};

TEST_P(AclAnyCreationTest, AttributeThatIsRefusedLeavesNoRule) {
  for (const char *query : BAD_ATTRIBUTES) {
    expect_no_rule(GetParam(), plain(query));
    expect_no_rule(GetParam(), conditions(query));
  }
  std::string burst(256, '1'); /* too long: not there */
  expect_no_rule(GetParam(), plain("&rate_limit=1000&burst_size=" + burst));
}

TEST_P(AclAnyCreationTest, RefusedRequestLeavesTheOtherRulesAlone) {
  add_rule(GetParam().id, OPEN_ACL_ACTION_DENY, 5);
  add_rule(GetParam().id, OPEN_ACL_ACTION_PERMIT, 15);
  Answers before = get(GetParam().list_uri());
  expect_no_rule(GetParam(), plain("&log=2"));
  expect_no_rule(GetParam(), plain("&sequence=7&log=2"));
  EXPECT_EQ(get(GetParam().list_uri()), before);
}

/* The step on its own: it answers for the first failure and neither replies nor deletes. */
TEST_F(AclCreationTest, AttributeStepAnswersTheFirstFailure) {
  struct {
    const char *query;
    open_error_t result;
  } rows[] = {
      {"", OPEN_E_NONE},
      {"log=1&assign_queue=3&mirror_intf=4&redirect_intf=5&time_range=x&rate_limit=1&burst_size=1",
       OPEN_E_NONE},
      {"log=2&mirror_intf=999", OPEN_E_PARAM},
      {"mirror_intf=119&assign_queue=x", OPEN_E_PARAM},
      {"assign_queue=1&redirect_intf=x", OPEN_E_PARAM},
      {"time_range=x&rate_limit=5", OPEN_E_PARAM},
  };
  uint32_t ruleId = add_rule(1);
  for (const auto &row : rows) {
    FakeRequest request("POST", "/acl", row.query);
    EXPECT_EQ(check_and_add_acl_common_rules(handle, request.conn(), 1, ruleId), row.result) << row.query;
    EXPECT_EQ(request.bytes(), "") << row.query;
    EXPECT_EQ(rule_count(1), 1u) << row.query;
  }
  for (const char *function :
       {"LoggingAdd", "AssignQueueAdd", "MirrorAdd", "RedirectAdd", "TimeRangeAdd", "RateLimitAdd"}) {
    FakeRequest request("POST", "/acl", rows[1].query);
    fault(std::string("rpcclt_openapiAclRuleMatch") + function, OPEN_E_TIMEOUT);
    EXPECT_EQ(check_and_add_acl_common_rules(handle, request.conn(), 1, ruleId), OPEN_E_TIMEOUT) << function;
  }
}

/* --- Duplicates ------------------------------------------------------------------------------------------
 */

TEST_P(AclAnyCreationTest, DuplicateIsRefusedWithDataAndDeleted) {
  for (const std::string &query : {plain(), conditions(), plain("&log=1&assign_queue=3")}) {
    done("POST", GetParam().uri(), query);
    expect_no_rule(GetParam(), query, refused_as_duplicate(GetParam()));
    expect_no_rule(GetParam(), query + "&sequence=5", refused_as_duplicate(GetParam()));
    EXPECT_EQ(rule_count(GetParam().id), 1u);
    delete_rule(GetParam().id, 10);
  }
}

TEST_P(AclAnyCreationTest, RuleThatDiffersIsNoDuplicate) {
  done("POST", GetParam().uri(), plain());
  std::string other = plain();
  other.replace(other.find("permit"), 6, "deny");
  EXPECT_EQ(done("POST", GetParam().uri(), other), created(GetParam(), 20).xml);
  EXPECT_EQ(done("POST", GetParam().uri(), plain("&log=1")), created(GetParam(), 30).xml);
  EXPECT_EQ(done("POST", GetParam().uri(), plain("&log=0")), created(GetParam(), 40).xml);
}

TEST_P(AclAnyCreationTest, CheckThatFailsFindsNoDuplicate) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiAclRuleDuplicateCheck", rc);
    done("POST", GetParam().uri(), plain());
  }
  EXPECT_EQ(rule_count(GetParam().id), all_platform_errors().size());
}

TEST_P(AclAnyCreationTest, DuplicateIsWhatThePlatformAnswersOneFor) {
  for (uint32_t answer : {0u, 2u, 4294967295u}) {
    bent_output duplicate("rpcclt_openapiAclRuleDuplicateCheck", answer);
    done("POST", GetParam().uri(), plain());
  }
  EXPECT_EQ(rule_count(GetParam().id), 3u);
  bent_output duplicate("rpcclt_openapiAclRuleDuplicateCheck", 1);
  expect_no_rule(GetParam(), conditions(), refused_as_duplicate(GetParam()));
}

/* A check that fails says nothing, whatever it has put out. */
TEST_P(AclAnyCreationTest, OutputOfACheckThatFailsIsNotLookedAt) {
  bent_output duplicate("rpcclt_openapiAclRuleDuplicateCheck", 1);
  fault("rpcclt_openapiAclRuleDuplicateCheck", OPEN_E_FAIL);
  EXPECT_EQ(done("POST", GetParam().uri(), plain()), created(GetParam(), 10).xml);
}

/* --- Restart ---------------------------------------------------------------------------------------------
 */

TEST_P(AclAnyCreationTest, RuleSurvivesSavingAndReloading) {
  done("POST", GetParam().uri(), conditions("&log=1&rate_limit=10&burst_size=20&time_range=work"));
  Answers before = get(GetParam().list_uri());
  configure(lab("show running-config"));
  EXPECT_EQ(get(GetParam().list_uri()), before);
}
