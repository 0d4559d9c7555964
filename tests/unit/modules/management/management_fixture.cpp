/* Requests to the modules that manage the system: see management_fixture.h. */
#include "tests/unit/modules/management/management_fixture.h"

static bool is_success(const std::string &answer) {
  return answer.find("<rlt_code>0</rlt_code>") != std::string::npos ||
         answer.find("\"rlt_code\": 0,") != std::string::npos;
}

static std::string text_of(const management_request &request) {
  return request.method + " " + request.uri + "?" + request.query;
}

std::string ManagementTest::serve_once(const management_request &request, const char *format) {
  FakeRequest http(request.method, request.uri, with_format(request.query, format), request.body);
  rest_handler_t operation = request.operation == nullptr ? handler_ : request.operation;
  int returned = operation(scripted_handle(), http.conn());
  std::string answer = answer_body(http, format);
  EXPECT_EQ(returned, is_success(answer) ? 1 : 0) << text_of(request);
  return answer;
}

Answers ManagementTest::serve(const management_request &request) {
  Answers answers;
  take_calls();
  answers.xml = serve_once(request, "xml");
  calls_made_ = take_calls();
  answers.json = serve_once(request, "json");
  EXPECT_EQ(take_calls(), calls_made_) << text_of(request);
  return answers;
}

void ManagementTest::expect_failures_answered(const management_request &request, const call_list &calls,
                                              size_t position) {
  SCOPED_TRACE(text_of(request) + ": " + calls[position]);
  const call_list calls_until_then(calls.begin(), calls.begin() + static_cast<long>(position) + 1);
  for (open_error_t rc : all_platform_errors()) {
    Answers expected = expected_platform_error(rc);
    fail_call_at(position, rc);
    EXPECT_EQ(serve_once(request, "xml"), expected.xml) << rc;
    EXPECT_EQ(take_calls(), calls_until_then) << rc;
    fail_call_at(position, rc);
    EXPECT_EQ(serve_once(request, "json"), expected.json) << rc;
    EXPECT_EQ(take_calls(), calls_until_then) << rc;
  }
}

void ManagementTest::expect_served(const management_request &request, const Answers &answers,
                                   const call_list &calls) {
  EXPECT_EQ(serve(request), answers) << text_of(request);
  EXPECT_EQ(calls_made(), calls) << text_of(request);
  for (size_t position = 0; position < calls.size(); position++)
    expect_failures_answered(request, calls, position);
}

void ManagementTest::expect_refused(const management_request &request, const Answers &answers) {
  EXPECT_EQ(serve(request), answers) << text_of(request);
  EXPECT_EQ(calls_made(), call_list()) << text_of(request);
}
