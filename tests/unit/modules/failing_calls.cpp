/* Platform failures: see failing_calls.h. */
#include "tests/unit/modules/failing_calls.h"

#include <algorithm>

static std::string text_of(const operation_calls &operation) {
  return std::string(operation.method) + " " + operation.uri + "?" + operation.query;
}

static void expect_error(rest_handler_t handler, openapiClientHandle_t *client_handle,
                         const operation_calls &operation, const std::string &format, open_error_t rc) {
  FakeRequest request(operation.method, operation.uri, with_format(operation.query, format));
  EXPECT_EQ(handler(client_handle, request.conn()), 0);
  Answers expected = expected_platform_error(rc);
  EXPECT_EQ(answer_body(request, format), format == "xml" ? expected.xml : expected.json);
}

void expect_failures_answered(rest_handler_t handler, openapiClientHandle_t *client_handle,
                              const operation_calls &operation, const std::string &function, unsigned skip) {
  for (open_error_t rc : all_platform_errors()) {
    for (const char *format : {"xml", "json"}) {
      SCOPED_TRACE(text_of(operation) + ": " + function + " " + std::to_string(rc));
      fault(function, rc, 1, skip);
      expect_error(handler, client_handle, operation, format, rc);
    }
  }
}

/* The first of the functions answers one error and all others another one: what is answered tells which came
 * first, and the faults that are left tell which were never called. */
static void expect_only_first_called(rest_handler_t handler, openapiClientHandle_t *client_handle,
                                     const operation_calls &operation,
                                     const std::vector<std::string> &functions, open_error_t first) {
  std::vector<std::string> left;
  fault(functions[0], first);
  for (size_t i = 1; i < functions.size(); i++) {
    fault(functions[i], OPEN_E_TIMEOUT);
    left.push_back(functions[i] + " OPEN_E_TIMEOUT 1 0\n");
  }
  expect_error(handler, client_handle, operation, "xml", first);
  std::sort(left.begin(), left.end());
  std::string expected;
  for (const std::string &line : left) expected += line;
  EXPECT_EQ(lab("fault list"), expected);
  lab("fault clear");
}

void expect_calls_end_at_a_failure(rest_handler_t handler, openapiClientHandle_t *client_handle,
                                   const operation_calls &operation, open_error_t first) {
  std::vector<std::string> functions = operation.functions;
  functions.insert(functions.end(), operation.later.begin(), operation.later.end());
  for (const std::string &function : operation.functions) {
    SCOPED_TRACE(text_of(operation) + ": " + function);
    expect_only_first_called(handler, client_handle, operation, functions, first);
    functions.erase(functions.begin());
  }
}

void expect_every_failure_answered(rest_handler_t handler, openapiClientHandle_t *client_handle,
                                   const operation_calls &operation) {
  for (const std::string &function : operation.functions) {
    SCOPED_TRACE(text_of(operation) + ": " + function);
    expect_failures_answered(handler, client_handle, operation, function);
  }
  expect_calls_end_at_a_failure(handler, client_handle, operation, OPEN_E_EXISTS);
}
