/* The script module: every route, its refusals, its near misses and the platform's failures. */
#include "modules/rest_module_script.h"
#include "platform/api/openapi_script.h"
#include "tests/support/platform_fixture.h"
#include "tests/support/result_data.h"
#include "tests/unit/modules/recorded_calls.h"
#include "tests/unit/modules/told_transfers.h"

class ScriptTest : public PlatformTest {
protected:
  typedef std::vector<std::string> calls;

  /* One request of which the operation returns 1 when it succeeds, else 0. Its answer. */
  std::string once(const std::string &method, const std::string &uri, const std::string &query,
                   const std::string &format) const {
    return checked_answer(script_api_handler, handle, method, uri, query, format);
  }
  /* Both formats. What the second one calls is all that is recorded. */
  Answers serve(const std::string &method, const std::string &uri, const std::string &query = "") const {
    Answers answers;
    answers.json = once(method, uri, query, "json");
    forget_calls();
    answers.xml = once(method, uri, query, "xml");
    return answers;
  }

  static Answers expected_list(uint32_t count, const std::vector<std::string> &names) {
    std::vector<result_node> nodes = {number("count_of_files", count)};
    for (const std::string &name : names)
      nodes.push_back(entry(static_cast<unsigned>(nodes.size()), "script_file", {text("filename", name)}));
    return expected_data({branch("script_files", nodes)}, "Get script file list successfully.");
  }

  told_transfers platform;
};

/* The operations that change something. */
static const struct {
  const char *method, *uri, *message, *function;
} CHANGES[] = {
    {"POST", "/script/apply", "Apply script successfully.", "TxtCfgValidateAndApply"},
    {"DELETE", "/script", "Delete the script file successfully.", "TxtCfgFileDelete"},
};

static const char LIST[] = "TxtCfgFilesListGet";

/* --- Listing -------------------------------------------------------------------------------------------- */

TEST_F(ScriptTest, EmptyListHasACountOnly) {
  Answers answers = serve("GET", "/script/list");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get script file list successfully."
                         "</rlt_mesg><rlt_data><script_files><count_of_files>0</count_of_files>"
                         "</script_files></rlt_data></result>\n");
  EXPECT_EQ(answers.json,
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get script file list "
            "successfully.\", \"rlt_data\": { \"script_files\": { \"count_of_files\": 0 } } } }\n");
  EXPECT_EQ(recorded_calls(), calls{std::string(LIST) + " cleared"});
}

TEST_F(ScriptTest, ScriptsAreListedByTheirPositions) {
  platform.scripts = {"b.scr", "a.scr"};
  Answers answers = serve("GET", "/script/list");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get script file list successfully."
                         "</rlt_mesg><rlt_data><script_files><count_of_files>2</count_of_files>"
                         "<script_file><filename>b.scr</filename></script_file>"
                         "<script_file><filename>a.scr</filename></script_file>"
                         "</script_files></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get script file list "
                          "successfully.\", \"rlt_data\": { \"script_files\": { \"count_of_files\": 2, "
                          "\"1\": { \"filename\": \"b.scr\" }, \"2\": { \"filename\": \"a.scr\" } } } } }\n");
}

TEST_F(ScriptTest, HundredScriptsOfTheLongestNamesAreListed) {
  for (unsigned i = 0; i < OPEN_CLI_SCRIPT_FILES_MAX; i++) {
    platform.scripts.push_back(std::to_string(i + 100) + std::string(89, static_cast<char>('a' + i % 26)) +
                               ".scr");
  }
  ASSERT_EQ(platform.scripts[0].size(), 96u);
  EXPECT_EQ(serve("GET", "/script/list"), expected_list(100, platform.scripts));
}

TEST_F(ScriptTest, NamesAreToldAsTheyAre) {
  platform.scripts = {"", " ", "%s%n", "same", "same", "no extension"};
  EXPECT_EQ(serve("GET", "/script/list"), expected_list(6, platform.scripts));
}

/* A platform that counts more than there is room for. */
TEST_F(ScriptTest, NoMoreThanTheWholeListIsRead) {
  platform.scripts.assign(OPEN_CLI_SCRIPT_FILES_MAX, "x.scr");
  for (uint32_t more : {1u, UINT32_MAX / 2 - 100}) {
    platform.scripts_more = more;
    EXPECT_EQ(serve("GET", "/script/list"), expected_list(100 + more, platform.scripts));
  }
}

TEST_F(ScriptTest, NameWithoutATerminatorEndsWithItsPlace) {
  platform.scripts = {std::string(97, 'x'), "y"};
  EXPECT_EQ(serve("GET", "/script/list"), expected_list(2, {std::string(96, 'x'), "y"}));
}

TEST_F(ScriptTest, FailureToListIsAnswered) {
  platform.scripts = {"a.scr"};
  for (open_error_t rc : all_platform_errors()) {
    platform.fail(LIST, rc);
    EXPECT_EQ(serve("GET", "/script/list"), expected_platform_error(rc)) << rc;
  }
}

/* --- Applying and deleting ------------------------------------------------------------------------------ */

TEST_F(ScriptTest, ChangesAreToldWithEmptyData) {
  for (const auto &change : CHANGES) {
    Answers answers = serve(change.method, change.uri, "scr=a.scr");
    EXPECT_EQ(answers.xml, std::string("<result><rlt_code>0</rlt_code><rlt_mesg>") + change.message +
                               "</rlt_mesg><rlt_data></rlt_data></result>\n");
    EXPECT_EQ(answers.json, std::string("{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"") +
                                change.message + "\", \"rlt_data\": { } } }\n");
    EXPECT_EQ(recorded_calls(), calls{std::string(change.function) + " 6:a.scr"});
  }
}

TEST_F(ScriptTest, NameIsMissingEmptyOrTooLong) {
  for (const auto &change : CHANGES) {
    for (const std::string &query :
         {std::string(), std::string("scr"), std::string("scr="), std::string("xscr=a.scr"),
          std::string("name=a.scr"), "scr=" + std::string(97, 'x'), "scr=" + std::string(98, 'x'),
          "scr=" + std::string(93, 'x') + ".scr", "scr=" + std::string(5000, 'x')}) {
      EXPECT_EQ(serve(change.method, change.uri, query), expected_platform_error(OPEN_E_PARAM)) << query;
      EXPECT_EQ(recorded_calls(), calls()) << query;
    }
  }
}

TEST_F(ScriptTest, NameHasAtMost96Characters) {
  for (const auto &change : CHANGES) {
    for (size_t length : {1, 95, 96}) {
      const std::string name(length, 'x');
      EXPECT_EQ(serve(change.method, change.uri, "scr=" + name), expected_data({}, change.message));
      EXPECT_EQ(recorded_calls(),
                calls{std::string(change.function) + " " + std::to_string(length + 1) + ":" + name});
    }
  }
}

/* What is a name of a script is the platform's affair. */
TEST_F(ScriptTest, NameIsAnyText) {
  const std::pair<const char *, const char *> names[] = {{"a", "2:a"},
                                                         {"a.txt", "6:a.txt"},
                                                         {"%20", "2: "},
                                                         {"..%2F..%2Fetc", "10:../../etc"},
                                                         {"%25n", "3:%n"},
                                                         {"a.scr+b", "8:a.scr b"},
                                                         {"startup-config", "15:startup-config"}};
  for (const auto &change : CHANGES) {
    for (const auto &[sent, name] : names) {
      EXPECT_EQ(serve(change.method, change.uri, std::string("scr=") + sent),
                expected_data({}, change.message));
      EXPECT_EQ(recorded_calls(), calls{std::string(change.function) + " " + name});
    }
  }
}

TEST_F(ScriptTest, NameMayStandInTheBody) {
  for (const auto &change : CHANGES) {
    forget_calls();
    FakeRequest request(change.method, change.uri, "", "scr=a.scr");
    EXPECT_EQ(script_api_handler(handle, request.conn()), 1);
    EXPECT_EQ(answer_body(request, "xml"), expected_data({}, change.message).xml);
    EXPECT_EQ(recorded_calls(), calls{std::string(change.function) + " 6:a.scr"});
  }
}

TEST_F(ScriptTest, FailuresOfThePlatformAreAnswered) {
  for (const auto &change : CHANGES) {
    for (open_error_t rc : all_platform_errors()) {
      platform.fail(change.function, rc);
      EXPECT_EQ(serve(change.method, change.uri, "scr=a.scr"), expected_platform_error(rc)) << rc;
      EXPECT_EQ(recorded_calls(), calls{std::string(change.function) + " 6:a.scr"});
    }
  }
}

/* --- Routes --------------------------------------------------------------------------------------------- */

TEST_F(ScriptTest, MethodVariableChoosesTheOperation) {
  EXPECT_EQ(serve("GET", "/script", "method=delete&scr=a.scr"), expected_data({}, CHANGES[1].message));
  EXPECT_EQ(serve("GET", "/script/apply", "method=POST&scr=a.scr"), expected_data({}, CHANGES[0].message));
  EXPECT_EQ(serve("POST", "/script/list", "method=get"), expected_list(0, {}));
  EXPECT_EQ(serve("POST", "/script/apply", "method=put&scr=a.scr"), expected_bad_request());
}

TEST_F(ScriptTest, EveryOperationIsServedUnderItsMethodOnly) {
  const struct {
    const char *uri, *served;
  } rows[] = {{"/script/list", "GET"}, {"/script/apply", "POST"}, {"/script", "DELETE"}};
  for (const auto &row : rows) {
    for (const std::string method : {"GET", "POST", "PUT", "DELETE", "PATCH", "HEAD", ""}) {
      if (method == row.served) continue;
      EXPECT_EQ(serve(method, row.uri, "scr=a.scr"), expected_bad_request()) << method << " " << row.uri;
      EXPECT_EQ(recorded_calls(), calls());
    }
  }
}

TEST_F(ScriptTest, NearMissesAreBadRequests) {
  for (const char *uri : {"",
                          "/",
                          "/s",
                          "/scrip",
                          "/scripts",
                          "/Script",
                          "/script/",
                          "/script ",
                          "/script//",
                          "/script/x",
                          "/script/l",
                          "/script/lis",
                          "/script/lists",
                          "/script/List",
                          "/script/list/",
                          "/script/list/x",
                          "/script/list ",
                          "/script/listx",
                          "/script//list",
                          "/script/apply/",
                          "/script/apply/a.scr",
                          "/script/appl",
                          "/script/applyx",
                          "/script/Apply",
                          "/script/apply ",
                          "/script//apply",
                          "/script/a.scr",
                          "/scriptlist",
                          "/scriptapply",
                          "script",
                          "//script",
                          "/script/script",
                          "/list",
                          "/apply"}) {
    for (const char *method : {"GET", "POST", "PUT", "DELETE"}) {
      EXPECT_EQ(serve(method, uri, "scr=a.scr"), expected_bad_request()) << method << " " << uri;
      EXPECT_EQ(recorded_calls(), calls()) << method << " " << uri;
    }
  }
}
