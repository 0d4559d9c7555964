/* The logging module: its remote hosts. */
#include "modules/rest_module_logging.h"
#include "tests/unit/engine/captured_log.h"
#include "tests/unit/modules/little_memory.h"
#include "tests/unit/modules/logging_documents.h"
#include "tests/unit/modules/management/management_fixture.h"

static const char MAX_LENGTH[] = "LoggingHostMaxAddrLenGet";

class LoggingHostTest : public ManagementTest {
protected:
  LoggingHostTest() : ManagementTest(logging_api_handler) {
    give(MAX_LENGTH, 46);
    give("LoggingHostPortGet", 514);
    give("LoggingHostSeverityGet", 3);
  }

  /* Makes these the hosts, in their order. `room` is the size of the buffer that they are read with. */
  static void give_hosts(const call_list &hosts, uint32_t room) {
    std::string before;
    for (const std::string &host : hosts) {
      give(next_after(before, room), host);
      before = host;
    }
    fail_call(next_after(before, room), OPEN_E_FAIL);
  }
  static std::string next_after(const std::string &host, uint32_t room) {
    return "LoggingHostIpAddrNextGet " + std::to_string(room) + ":" + host;
  }
  static std::string read_after(const std::string &host, uint32_t room) {
    return next_after(host, room) + " [" + std::to_string(room) + "]";
  }

  /* A call for a host, and what follows the host in its arguments. */
  static std::string host_call(const std::string &function, const std::string &host,
                               const std::string &others = "") {
    return "LoggingHost" + function + " 46:" + host + others;
  }
};

/* --- The list ------------------------------------------------------------------------------------------- */

TEST_F(LoggingHostTest, HostsAreListedInThePlatformsOrder) {
  give_hosts({"10.0.0.2", "10.0.0.10", "2001:db8::1", "a.example"}, 46);
  EXPECT_EQ(get("/logging/hosts"), expected_hosts({"10.0.0.2", "10.0.0.10", "2001:db8::1", "a.example"}));
  EXPECT_EQ(calls_made(), (call_list{MAX_LENGTH, read_after("", 46), read_after("10.0.0.2", 46),
                                     read_after("10.0.0.10", 46), read_after("2001:db8::1", 46),
                                     read_after("a.example", 46)}));
}

TEST_F(LoggingHostTest, WholeAnswerOfTheList) {
  give_hosts({"10.0.0.2", "10.0.0.10"}, 46);
  Answers answers = get("/logging/hosts");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<logging_hosts><logging_host><address>10.0.0.2</address></logging_host>"
                         "<logging_host><address>10.0.0.10</address></logging_host></logging_hosts>"
                         "</rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"logging_hosts\": { \"1\": { \"address\": \"10.0.0.2\" }, "
                          "\"2\": { \"address\": \"10.0.0.10\" } } } } }\n");
}

TEST_F(LoggingHostTest, ListWithoutHostsIsEmpty) {
  give_hosts({}, 46);
  Answers answers = get("/logging/hosts");
  EXPECT_EQ(answers, expected_hosts({}));
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<logging_hosts></logging_hosts></rlt_data></result>\n");
  EXPECT_EQ(calls_made(), (call_list{MAX_LENGTH, read_after("", 46)}));
}

TEST_F(LoggingHostTest, ListEndsWhateverTheCallForTheNextHostFailsWith) {
  give_hosts({"10.0.0.2", "10.0.0.3"}, 46);
  for (open_error_t rc : all_platform_errors()) {
    fail_call(next_after("10.0.0.2", 46), rc);
    EXPECT_EQ(get("/logging/hosts"), expected_hosts({"10.0.0.2"})) << rc;
    EXPECT_EQ(calls_made(), (call_list{MAX_LENGTH, read_after("", 46), read_after("10.0.0.2", 46)})) << rc;
  }
}

TEST_F(LoggingHostTest, ListWhoseAddressesHaveNoLengthIsAFailure) {
  expect_failures_answered({"GET", "/logging/hosts"}, {MAX_LENGTH}, 0);
}

TEST_F(LoggingHostTest, ListWithoutMemoryForAnAddressAnswers97) {
  little_memory limit;
  give(MAX_LENGTH, UINT32_MAX);
  EXPECT_EQ(get("/logging/hosts"), expected_platform_error(OPEN_E_INTERNAL));
  EXPECT_EQ(calls_made(), call_list{MAX_LENGTH});
}

TEST_F(LoggingHostTest, ListWithoutAnEndIsGivenUp) {
  give(next_after("", 46), "10.0.0.1");
  give(next_after("10.0.0.1", 46), "10.0.0.2");
  give(next_after("10.0.0.2", 46), "10.0.0.1");
  EXPECT_EQ(get("/logging/hosts"), expected_platform_error(OPEN_E_INTERNAL));
}

TEST_F(LoggingHostTest, AddressThatFillsItsBufferEndsThere) {
  for (uint32_t room : {1u, 8u, 46u, 1000u}) {
    begin_script();
    give(MAX_LENGTH, room);
    give(next_after("", room), std::string(2 * room, 'x'));
    fail_call(next_after(std::string(room, 'x'), room), OPEN_E_FAIL);
    EXPECT_EQ(get("/logging/hosts"), expected_hosts({std::string(room, 'x')})) << room;
  }
}

TEST_F(LoggingHostTest, ListWhoseAddressesHaveNoRoomIsEmpty) {
  give(MAX_LENGTH, 0);
  fail_call(next_after("", 0), OPEN_E_PARAM);
  EXPECT_EQ(get("/logging/hosts"), expected_hosts({}));
}

TEST_F(LoggingHostTest, AddressesAreShownAsTheyAre) {
  give_hosts({"a&b", "<c>", "%s%n", " d "}, 46);
  EXPECT_EQ(get("/logging/hosts"), expected_hosts({"a&b", "<c>", "%s%n", " d "}));
}

/* --- One host ------------------------------------------------------------------------------------------- */

TEST_F(LoggingHostTest, HostIsRead) {
  expect_served({"GET", "/logging/hosts/10.1.1.1"}, expected_host("10.1.1.1", 514, "Error conditions."),
                {MAX_LENGTH, host_call("PortGet", "10.1.1.1"), host_call("SeverityGet", "10.1.1.1")});
}

TEST_F(LoggingHostTest, WholeAnswerOfAHost) {
  Answers answers = get("/logging/hosts/a.example");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<logging_host><address>a.example</address><port>514</port><severity_level>Error "
                         "conditions.</severity_level></logging_host></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"logging_host\": { \"address\": \"a.example\", \"port\": 514, "
                          "\"severity_level\": \"Error conditions.\" } } } }\n");
}

TEST_F(LoggingHostTest, SeverityMayBeUndefined) {
  give("LoggingHostSeverityGet", static_cast<uint32_t>(-1));
  give("LoggingHostPortGet", UINT32_MAX);
  EXPECT_EQ(get("/logging/hosts/a"), expected_host("a", -1, "Severity level undefined."));
  give("LoggingHostSeverityGet", 7);
  give("LoggingHostPortGet", 0);
  EXPECT_EQ(get("/logging/hosts/a"), expected_host("a", 0, "Debug-level messages."));
}

TEST_F(LoggingHostTest, SeverityWithoutATextAnswers97) {
  for (int32_t level : {-2, 8, INT32_MIN, INT32_MAX}) {
    give("LoggingHostSeverityGet", static_cast<uint32_t>(level));
    EXPECT_EQ(get("/logging/hosts/a"), expected_platform_error(OPEN_E_INTERNAL)) << level;
  }
}

TEST_F(LoggingHostTest, HostIsCreatedAndDeleted) {
  expect_served({"POST", "/logging/hosts/10.1.1.1"},
                expected_answers(0, "Create a logging host 10.1.1.1 successfully."),
                {MAX_LENGTH, host_call("Add", "10.1.1.1")});
  expect_served({"DELETE", "/logging/hosts/10.1.1.1"},
                expected_answers(0, "Delete a logging host 10.1.1.1 successfully."),
                {MAX_LENGTH, host_call("Remove", "10.1.1.1")});
}

TEST_F(LoggingHostTest, WholeAnswerOfACreation) {
  Answers answers = serve({"POST", "/logging/hosts/10.1.1.1"});
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Create a logging host 10.1.1.1 "
                         "successfully.</rlt_mesg></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Create a logging host 10.1.1.1 "
                          "successfully.\" } }\n");
}

/* --- Settings of a host --------------------------------------------------------------------------------- */

TEST_F(LoggingHostTest, PortIsSet) {
  for (const char *port : {"1", "514", "65535"}) {
    expect_served({"PUT", "/logging/hosts/10.1.1.1/port", std::string("value=") + port},
                  expected_answers(0, "Update port of logging host 10.1.1.1 successfully."),
                  {MAX_LENGTH, host_call("PortSet", "10.1.1.1", std::string(" ") + port)});
  }
  expect_served({"PUT", "/logging/hosts/10.1.1.1/port", "value=-1"},
                expected_answers(0, "Update port of logging host 10.1.1.1 to default successfully."),
                {MAX_LENGTH, host_call("PortSet", "10.1.1.1", " 0")});
}

TEST_F(LoggingHostTest, NoPortIsRefused) {
  for (const char *value :
       {"0", "65536", "-2", "abc", "-", "2147483647", "-2147483648", "4294967295", "4294967810"}) {
    EXPECT_EQ(serve({"PUT", "/logging/hosts/10.1.1.1/port", std::string("value=") + value}),
              expected_answers(1, "The value of parameter is invalid."))
        << value;
    EXPECT_EQ(calls_made(), call_list()) << value;
  }
}

TEST_F(LoggingHostTest, SeverityIsLeftToThePlatformToCheck) {
  const struct {
    const char *value, *argument;
  } rows[] = {{"0", " 0"},   {"7", " 7"},   {"8", " 8"},
              {"-1", " -1"}, {"abc", " 0"}, {"2147483648", " 2147483647"}};
  for (const auto &row : rows) {
    expect_served({"PUT", "/logging/hosts/a.example/severityLevel", std::string("value=") + row.value},
                  expected_answers(0, "Update severity level of logging host a.example successfully."),
                  {MAX_LENGTH, host_call("SeveritySet", "a.example", row.argument)});
  }
}

TEST_F(LoggingHostTest, ValueThatIsMissingOrEmptyOrTooLongAnswers99) {
  for (const char *uri : {"/logging/hosts/a/port", "/logging/hosts/a/severityLevel"}) {
    for (const std::string &query : {std::string(), std::string("value="), std::string("value"),
                                     "value=" + std::string(255, '0') + "1"}) {
      EXPECT_EQ(serve({"PUT", uri, query}), expected_parameter_error()) << uri << " " << query;
      EXPECT_EQ(calls_made(), call_list()) << uri << " " << query;
    }
  }
}

/* --- Addresses in the URI ------------------------------------------------------------------------------- */

TEST_F(LoggingHostTest, AddressIsGivenAsItStandsInTheUri) {
  for (const char *host :
       {"0",           "-1",           "a",    "port", "severityLevel", "hosts", "A.Example",
        "2001:DB8::1", "fe80::1%eth0", "a b",  " a",   "a?b",           "a=b&c", "..",
        "%s%n%d",      "\"",           "a\\b", ";",    "\xC3\xA9",      "\t",    " "}) {
    const std::string uri = std::string("/logging/hosts/") + host;
    EXPECT_EQ(serve({"POST", uri}),
              expected_answers(0, std::string("Create a logging host ") + host + " successfully."));
    EXPECT_EQ(calls_made(), (call_list{MAX_LENGTH, host_call("Add", host)}));
    EXPECT_EQ(get(uri), expected_host(host, 514, "Error conditions."));
    EXPECT_EQ(serve({"PUT", uri + "/port", "value=5"}),
              expected_answers(0, std::string("Update port of logging host ") + host + " successfully."));
    EXPECT_EQ(calls_made(), (call_list{MAX_LENGTH, host_call("PortSet", host, " 5")}));
  }
}

TEST_F(LoggingHostTest, AddressWithPercentSignsIsLoggedAsItIs) {
  take_logged_lines();
  serve({"DELETE", "/logging/hosts/%s%n"});
  std::vector<LoggedLine> lines = take_logged_lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].text, "RESTful API Engine: User from [127.0.0.1] accesses API [DELETE "
                           "/logging/hosts/%s%n?format=xml]: Delete a logging host %s%n successfully. (0)");
}

/* A URI has at most 255 characters. */
TEST_F(LoggingHostTest, LongestAddressIsServed) {
  give(MAX_LENGTH, 256);
  const std::string host(255 - 15, 'h');
  EXPECT_EQ(serve({"POST", "/logging/hosts/" + host}),
            expected_answers(0, "Create a logging host " + host + " successfully."));
  EXPECT_EQ(calls_made(), (call_list{MAX_LENGTH, "LoggingHostAdd 256:" + host}));
  EXPECT_EQ(get("/logging/hosts/" + host), expected_host(host, 514, "Error conditions."));
  const std::string shorter(255 - 15 - 14, 'h');
  EXPECT_EQ(serve({"PUT", "/logging/hosts/" + shorter + "/severityLevel", "value=1"}),
            expected_answers(0, "Update severity level of logging host " + shorter + " successfully."));
}

TEST_F(LoggingHostTest, AddressOneCharacterLongerIsNot) {
  const std::string host(256 - 15, 'h'), shorter(256 - 15 - 14, 'h');
  for (const std::string &uri :
       {"/logging/hosts/" + host, "/logging/hosts/" + host + std::string(5000, 'h')}) {
    for (const char *method : {"GET", "POST", "DELETE"})
      expect_refused({method, uri}, expected_bad_request());
  }
  expect_refused({"PUT", "/logging/hosts/" + shorter + "/severityLevel", "value=1"}, expected_bad_request());
}

/* Operations that are called directly, with a URI that names no host. */
TEST_F(LoggingHostTest, OperationWithoutAnAddressDoesNothing) {
  const struct {
    rest_handler_t operation;
    const char *method;
  } rows[] = {{api_logging_get_host_specified_addr, "GET"},
              {api_logging_create_host_specified_addr, "POST"},
              {api_logging_delete_host_specified_addr, "DELETE"},
              {api_logging_update_host_specified_addr_port, "PUT"},
              {api_logging_update_host_specified_addr_severity_level, "PUT"}};
  for (const auto &row : rows) {
    for (const std::string &uri : {std::string("/logging/hosts/"), std::string("/logging/hosts"),
                                   "/logging/hosts/" + std::string(241, 'h')})
      expect_refused({row.method, uri, "value=1", row.operation}, expected_bad_request());
  }
}

/* --- The longest address of the platform ---------------------------------------------------------------- */

/* All the bytes that the platform is told of are there, whatever it says its longest address is. */
TEST_F(LoggingHostTest, BufferIsThatOfThePlatformsLongestAddress) {
  for (uint32_t length : {0u, 1u, 4u, 8u, 9u, 255u, 256u, 257u, 1000u, 100000u}) {
    give(MAX_LENGTH, length);
    EXPECT_EQ(serve({"DELETE", "/logging/hosts/10.1.1.1"}),
              expected_answers(0, "Delete a logging host 10.1.1.1 successfully."))
        << length;
    EXPECT_EQ(calls_made()[1], "LoggingHostRemove " + std::to_string(length) + ":" +
                                   std::string("10.1.1.1").substr(0, length));
  }
}

TEST_F(LoggingHostTest, LengthBeyondAllMemoryAnswers97) {
  little_memory limit;
  give(MAX_LENGTH, UINT32_MAX);
  for (const char *method : {"GET", "POST", "DELETE"}) {
    EXPECT_EQ(serve({method, "/logging/hosts/10.1.1.1"}), expected_platform_error(OPEN_E_INTERNAL)) << method;
    EXPECT_EQ(calls_made(), call_list{MAX_LENGTH});
  }
}

TEST_F(LoggingHostTest, LengthIsReadFromThePlatform) {
  uint32_t length = 0;
  EXPECT_EQ(get_logging_host_addr_len_max(scripted_handle(), &length), OPEN_E_NONE);
  EXPECT_EQ(length, 46u);
  for (open_error_t rc : all_platform_errors()) {
    fail_call(MAX_LENGTH, rc);
    EXPECT_EQ(get_logging_host_addr_len_max(scripted_handle(), &length), rc);
  }
}
