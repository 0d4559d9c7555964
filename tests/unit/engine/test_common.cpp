/* The response writer: envelope, formats, error answers, result codes, audit line. */
#include "engine/rest_common.h"
#include "tests/support/answers.h"
#include "tests/unit/engine/captured_log.h"

#include <gtest/gtest.h>
#include <string.h>

/* Sends one response to a fresh request and returns the body. */
static std::string respond(const std::string &query, uint16_t code, const char *message, node_t *tree) {
  FakeRequest request("GET", "/vlans", query);
  send_response(request.conn(), code, message, tree);
  return answer_body(request, query == "format=json" ? "json" : "xml");
}

/* A text of `length` characters in nodes of 1000 at most, with 7 bytes of tags for each node. */
static node_t *tree_of_text(size_t length) {
  node_t *tree = new_tree();
  while (length > 0) {
    size_t part = length < 1000 ? length : 1000;
    append_tree_string(tree, "t", "t", std::string(part, 'x').c_str());
    length -= part;
  }
  return tree;
}

/* Seven texts of 1000 characters and a last one, each with a key of its own. */
static node_t *tree_of_keyed_texts(const std::string &last) {
  node_t *tree = new_tree();
  for (int i = 0; i < 7; i++)
    append_tree_string(tree, std::to_string(i).c_str(), "t", std::string(1000, 'x').c_str());
  append_tree_string(tree, "last", "t", last.c_str());
  return tree;
}

TEST(SendResponse, EnvelopeWithoutDataHasNoDataNode) {
  EXPECT_EQ(respond("", 905, "Null Session Key", nullptr), expected_answers(905, "Null Session Key").xml);
  EXPECT_EQ(respond("format=json", 905, "Null Session Key", nullptr),
            expected_answers(905, "Null Session Key").json);
}

TEST(SendResponse, EnvelopeHoldsTheModulesTree) {
  for (const char *query : {"", "format=json"}) {
    node_t *tree = new_tree();
    append_tree_int(append_branch(tree, "vlan"), "id", "id", 10);
    Answers expected =
        expected_answers(0, "Get data successfully.", "<vlan><id>10</id></vlan>", "\"vlan\": { \"id\": 10 }");
    EXPECT_EQ(respond(query, 0, "Get data successfully.", tree),
              *query == '\0' ? expected.xml : expected.json);
  }
}

TEST(SendResponse, EmptyTreeIsAnEmptyDataNode) {
  EXPECT_EQ(respond("", 0, "ok", new_tree()),
            "<result><rlt_code>0</rlt_code><rlt_mesg>ok</rlt_mesg><rlt_data></rlt_data></result>\n");
  EXPECT_EQ(respond("format=json", 0, "ok", new_tree()),
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"ok\", \"rlt_data\": { } } }\n");
}

TEST(SendResponse, LargestCodeStaysPositive) {
  EXPECT_EQ(respond("", 65535, "m", nullptr), expected_answers(65535, "m").xml);
}

TEST(SendResponse, MessageIsCutAfter1023CharactersAndIsNoFormat) {
  std::string message = "%s%n%d" + std::string(2000, 'm');
  EXPECT_EQ(respond("", 1, message.c_str(), nullptr), expected_answers(1, message.substr(0, 1023)).xml);
}

TEST(SendResponse, DataIsNoFormat) {
  node_t *tree = new_tree();
  append_tree_string(tree, "s", "s", "100%s%n%");
  EXPECT_EQ(respond("", 0, "ok", tree), expected_answers(0, "ok", "<s>100%s%n%</s>", "").xml);
}

TEST(TreeWord, IsTheTablesOrEmpty) {
  static const enum_text words[] = {{0, "up"}, {1, "down"}, {-1, "all"}};
  struct {
    uint32_t value;
    const char *word;
  } rows[] = {{0, "up"}, {1, "down"}, {4294967295u, "all"}, {2, ""}, {2147483648u, ""}};
  for (const auto &row : rows) {
    node_t *tree = new_tree();
    node_t *leaf = append_tree_word(tree, "linkState", words, row.value);
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(get_node_val_type(leaf), VAL_TYPE_STRING);
    std::string word = row.word;
    EXPECT_EQ(respond("", 0, "ok", tree),
              expected_answers(0, "ok", "<linkState>" + word + "</linkState>").xml)
        << row.value;
  }
  EXPECT_EQ(append_tree_word(nullptr, "linkState", words, 0), nullptr);
}

TEST(SendResponse, WithoutARequestTheTreeIsFreedAllTheSame) {
  node_t *tree = new_tree();
  append_tree_int(append_branch(tree, "vlan"), "id", "id", 10);
  send_response(nullptr, 0, "ok", tree); /* the leak check sees to the rest */
  EXPECT_TRUE(take_logged_lines().empty());
}

TEST(SendResponse, BodyIsOneChunkWhateverItsLength) {
  for (size_t length : {0u, 7000u, 9000u, 100000u}) {
    FakeRequest request("GET", "/vlans");
    send_response(request.conn(), 0, "ok", tree_of_text(length));
    std::string body = answer_body(request, "xml");
    char size_line[32];
    snprintf(size_line, sizeof size_line, "\r\n\r\n%zX\r\n", body.size());
    EXPECT_NE(request.bytes().find(size_line + body + "\r\n"), std::string::npos) << length;
  }
}

TEST(SendResponse, BodyOfExactly8192CharactersEndsWithAZeroByte) {
  static constexpr size_t QUIRK = 8192;
  size_t envelope = respond("", 0, "ok", tree_of_text(8000)).size() - 8000;
  for (size_t wanted : {QUIRK - 1, QUIRK, QUIRK + 1}) {
    std::string body =
        respond("", 0, "ok", tree_of_text(wanted - envelope - 7)); /* one node more: "<t></t>" */
    ASSERT_EQ(body.size(), wanted);
    std::string without_end = "</rlt_data></result>";
    EXPECT_EQ(body.substr(wanted - 1 - without_end.size(), without_end.size()), without_end);
    EXPECT_EQ(body.back(), wanted == QUIRK ? '\0' : '\n') << wanted;
  }
}

TEST(SendResponse, JsonBodyOfExactly8192CharactersEndsWithAZeroByte) {
  std::string message(300, 'm');
  for (size_t wanted : {8191u, 8192u, 8193u}) {
    size_t room = wanted - respond("format=json", 0, message.c_str(), tree_of_keyed_texts("")).size();
    std::string body =
        respond("format=json", 0, message.c_str(), tree_of_keyed_texts(std::string(room, 'y')));
    ASSERT_EQ(body.size(), wanted);
    EXPECT_EQ(body.substr(wanted - 8), wanted == 8192 ? std::string("\" } } }\0", 8) : "\" } } }\n");
  }
}

/* --- Standard error answers ------------------------------------------------------------------------------
 */

static node_t *some_data() {
  node_t *tree = new_tree();
  append_tree_string(append_branch(tree, "secret"), "s", "s", "partial data");
  return tree;
}

TEST(ErrorAnswers, AreTheEnginesOwnWithoutTheData) {
  struct {
    void (*send)(mg_connection *conn, node_t *tree);
    int code;
    const char *message;
  } rows[] = {
      {send_exception_error, 909, "General Error"},
      {send_bad_request, 902, "Bad Request. Please check your method and URI."},
      {send_file_help_doc_error, 903, "Open the file of help documents failed!"},
  };
  for (const auto &row : rows) {
    for (bool with_data : {false, true}) {
      FakeRequest request("GET", "/vlans");
      row.send(request.conn(), with_data ? some_data() : nullptr);
      EXPECT_EQ(answer_body(request, "xml"), expected_answers(row.code, row.message).xml);
    }
  }
}

TEST(ErrorAnswers, PlatformResultsMapToFourCodes) {
  struct {
    int result;
    int code;
  } rows[] = {{0, 99},   {-20, 99}, {-21, 97}, {-22, 99}, {-23, 99}, {-24, 98}, {-25, 97}, {-26, 96},
              {-27, 99}, {-28, 99}, {-29, 99}, {-30, 99}, {-31, 96}, {-7, 99},  {-1, 99},  {1, 99}};
  for (const auto &row : rows) {
    FakeRequest request("GET", "/vlans");
    open_error_t rc = static_cast<open_error_t>(row.result);
    send_open_error_response(request.conn(), rc, some_data());
    std::string body = answer_body(request, "xml");
    EXPECT_EQ(body, expected_platform_error(rc).xml) << row.result;
    EXPECT_EQ(body.substr(0, 21), "<result><rlt_code>" + std::to_string(row.code) + "<") << row.result;
  }
}

TEST(ErrorAnswers, PlatformResultsHaveNames) {
  struct {
    int result;
    const char *name;
  } rows[] = {{0, "OPEN_E_NONE"},      {-20, "OPEN_E_RPC"},       {-21, "OPEN_E_INTERNAL"},
              {-22, "OPEN_E_PARAM"},   {-23, "OPEN_E_FULL"},      {-24, "OPEN_E_EXISTS"},
              {-25, "OPEN_E_TIMEOUT"}, {-26, "OPEN_E_FAIL"},      {-27, "OPEN_E_DISABLED"},
              {-28, "OPEN_E_UNAVAIL"}, {-29, "OPEN_E_NOT_FOUND"}, {-30, "OPEN_E_EMPTY"},
              {-31, "OPEN_E_ERROR"}};
  char text[20];
  for (const auto &row : rows) {
    EXPECT_EQ(get_open_error_string_by_eum(static_cast<open_error_t>(row.result), text), RC_TRUE);
    EXPECT_STREQ(text, row.name);
  }
  for (int unknown : {-19, -1, 1, -32}) {
    EXPECT_EQ(get_open_error_string_by_eum(static_cast<open_error_t>(unknown), text), RC_FALSE);
    EXPECT_STREQ(text, "");
  }
  EXPECT_EQ(get_open_error_string_by_eum(OPEN_E_NONE, nullptr), RC_FALSE);
}

TEST(ErrorAnswers, ControlValuesHaveNames) {
  char text[8];
  EXPECT_EQ(get_control_string_by_eum(OPEN_ENABLE, text), RC_TRUE);
  EXPECT_STREQ(text, "enable");
  EXPECT_EQ(get_control_string_by_eum(OPEN_DISABLE, text), RC_TRUE);
  EXPECT_STREQ(text, "disable");
  EXPECT_EQ(get_control_string_by_eum(OPEN_ENABLE, nullptr), RC_FALSE);
}

TEST(OperationEnds, FormatTheMessageAndTellSuccessFromFailure) {
  FakeRequest request("GET", "/vlans");
  EXPECT_EQ(succeed(request.conn(), nullptr, "VLAN %d of %s.", 10, "a"), 1);
  EXPECT_EQ(answer_body(request, "xml"), expected_answers(0, "VLAN 10 of a.").xml);
  request.clear_reply();
  EXPECT_EQ(refuse(request.conn(), 2, "VLAN %u.", 4095u), 0);
  EXPECT_EQ(answer_body(request, "xml"), expected_answers(2, "VLAN 4095.").xml);
  request.clear_reply();
  EXPECT_EQ(fail(request.conn(), OPEN_E_EXISTS, some_data()), 0);
  EXPECT_EQ(answer_body(request, "xml"), expected_platform_error(OPEN_E_EXISTS).xml);
  request.clear_reply();
  std::string name(2000, 'n');
  EXPECT_EQ(refuse(request.conn(), 1, "%s", name.c_str()), 0);
  EXPECT_EQ(answer_body(request, "xml"), expected_answers(1, name.substr(0, 1023)).xml);
}

/* --- Audit line ------------------------------------------------------------------------------------------
 */

/* The one line that answering a request logs; empty when it logs none. */
static std::string audit_line(FakeRequest *request, uint16_t code = 0, const char *message = "ok") {
  take_logged_lines();
  send_response(request->conn(), code, message, nullptr);
  std::vector<LoggedLine> lines = take_logged_lines();
  if (lines.empty()) return "";
  EXPECT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].severity, 4);
  EXPECT_EQ(lines[0].file, "rest_common.c");
  EXPECT_EQ(lines[0].line, 129);
  return lines[0].text;
}

TEST(AuditLine, NamesClientRequestMessageAndCode) {
  FakeRequest request("DELETE", "/vlans/5", "sessionkey=K&format=json");
  request.set_remote("10.0.0.2", 50000);
  EXPECT_EQ(audit_line(&request, 1, "VLAN 5 does not exist."),
            "RESTful API Engine: User from [10.0.0.2] accesses API [DELETE "
            "/vlans/5?sessionkey=K&format=json]: VLAN 5 "
            "does not exist. (1)");
}

TEST(AuditLine, WithoutAQueryKeepsTheQuestionMark) {
  FakeRequest request("PUT", "/vlans/5/name", "", "value=x");
  EXPECT_EQ(audit_line(&request, 0, "ok"),
            "RESTful API Engine: User from [127.0.0.1] accesses API [PUT /vlans/5/name?]: ok (0)");
}

TEST(AuditLine, IsForPostPutAndDeleteOnly) {
  for (const char *method : {"GET", "get", "PATCH", "HEAD", "OPTIONS"}) {
    FakeRequest request(method, "/vlans/5");
    EXPECT_EQ(audit_line(&request, 909, "General Error"), "") << method;
  }
  for (const char *method : {"POST", "PUT", "DELETE"}) {
    FakeRequest request(method, "/vlans/5");
    EXPECT_EQ(audit_line(&request), std::string("RESTful API Engine: User from [127.0.0.1] accesses API [") +
                                        method + " /vlans/5?]: ok (0)");
  }
}

TEST(AuditLine, FollowsTheOverriddenMethod) {
  FakeRequest deleting("GET", "/vlans/5", "method=Deleted");
  EXPECT_EQ(
      audit_line(&deleting),
      "RESTful API Engine: User from [127.0.0.1] accesses API [DELETE /vlans/5?method=Deleted]: ok (0)");
  FakeRequest getting("POST", "/vlans/5", "method=getAll");
  EXPECT_EQ(audit_line(&getting), "");
  FakeRequest in_body("POST", "/vlans/5", "", "method=put");
  EXPECT_EQ(audit_line(&in_body),
            "RESTful API Engine: User from [127.0.0.1] accesses API [PUT /vlans/5?]: ok (0)");
}

TEST(AuditLine, PostOfALoginNeverShowsTheQuery) {
  for (const char *query : {"user=admin&password=secret", "password=x", "a=1", "pass", "PASSWORD=s&user=u"}) {
    for (const char *uri : {"/login", "/login/", "/login/x"}) {
      FakeRequest request("POST", uri, query);
      EXPECT_EQ(audit_line(&request),
                std::string("RESTful API Engine: User from [127.0.0.1] accesses API [POST ") + uri +
                    "?]: ok (0)");
    }
  }
  FakeRequest overridden("GET", "/login", "method=post&password=secret");
  EXPECT_EQ(audit_line(&overridden),
            "RESTful API Engine: User from [127.0.0.1] accesses API [POST /login?]: ok (0)");
  FakeRequest logout("DELETE", "/login", "sessionkey=K");
  EXPECT_EQ(audit_line(&logout),
            "RESTful API Engine: User from [127.0.0.1] accesses API [DELETE /login?sessionkey=K]: ok (0)");
}

TEST(AuditLine, PercentSignsAndLineBreaksAreNoFormat) {
  FakeRequest request("PUT", "/vlans/%n%s%d\n2026 forged", "value=%41%n%s%%");
  EXPECT_EQ(audit_line(&request, 1, "100%s %n"),
            "RESTful API Engine: User from [127.0.0.1] accesses API [PUT "
            "/vlans/%n%s%d\n2026 forged?value=%41%n%s%%]: 100%s %n (1)");
}

TEST(AuditLine, IsCutAt16383Characters) {
  FakeRequest request("PUT", "/vlans", "value=" + std::string(20000, 'q'));
  std::string line = audit_line(&request);
  EXPECT_EQ(line.size(), 16383u);
  EXPECT_EQ(line.substr(0, 80),
            "RESTful API Engine: User from [127.0.0.1] accesses API [PUT /vlans?value=qqqqqqq");
}

TEST(AuditLine, SurvivesARequestWithoutUri) {
  FakeRequest request("PUT", "/vlans");
  request.conn()->uri = nullptr;
  EXPECT_EQ(audit_line(&request), "RESTful API Engine: User from [127.0.0.1] accesses API [PUT ?]: ok (0)");
}

/* --- Masking ---------------------------------------------------------------------------------------------
 */

TEST(ReplacePassword, MasksTheValueOfThePasswordOnly) {
  struct {
    const char *query, *masked;
  } rows[] = {
      {"user=a&password=b&x=1", "user=a&password=**********&x=1"},
      {"password=b", "password=**********"},
      {"password=", "password=**********"},
      {"password=&x=1", "password=**********&x=1"},
      {"PassWord=secret&user=a", "PassWord=**********&user=a"},
      {"a=1&password=b=c%26d", "a=1&password=**********"},
      {"password=a&password=b", "password=**********&password=b"},
      {"xpassword=b", ""},
      {"passwords=b", ""},
      {"user=password", ""},
      {"password", ""},
      {"a=1", ""},
      {"xpassword=b&password=c", "xpassword=b&password=**********"},
  };
  for (const auto &row : rows) {
    char text[64];
    memset(text, 'g', sizeof text);
    replace_password(row.query, strlen(row.query), text, sizeof text);
    EXPECT_STREQ(text, row.masked) << row.query;
  }
}

TEST(ReplacePassword, LeavesNothingWhenTheTextDoesNotFit) {
  const char *query = "user=a&password=b&x=1";
  for (size_t size : {1u, 8u, 20u, 21u}) {
    char text[64];
    memset(text, 'g', sizeof text);
    replace_password(query, strlen(query), text, size);
    EXPECT_STREQ(text, "") << size;
    EXPECT_EQ(text[size], 'g');
  }
}

TEST(ReplacePassword, NeverWritesBeyondTheDestination) {
  const char *query = "password=b&x=1";
  char text[64];
  memset(text, 'g', sizeof text);
  replace_password(query, strlen(query), text, 15); /* fits as it is, but not with ten asterisks */
  EXPECT_STREQ(text, "password=*****");
  EXPECT_EQ(text[15], 'g');
}

TEST(ReplacePassword, NothingInGivesNothingOut) {
  char text[8] = "garbage";
  replace_password("password=b", 0, text, sizeof text);
  EXPECT_STREQ(text, "");
  strcpy(text, "garbage");
  replace_password(nullptr, 5, text, sizeof text);
  EXPECT_STREQ(text, "");
  strcpy(text, "garbage");
  replace_password("password=b", 10, text, 0);
  EXPECT_STREQ(text, "garbage");
  replace_password("password=b", 10, nullptr, 8);
}
