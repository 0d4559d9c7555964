/* Tests of the modules that manage the system: requests, what they are answered with and which calls of the
 * scripted platform they make. */
#ifndef KESTREL_TESTS_MODULES_MANAGEMENT_FIXTURE_H
#define KESTREL_TESTS_MODULES_MANAGEMENT_FIXTURE_H

#include "tests/support/result_data.h"
#include "tests/unit/modules/management/scripted_platform.h"

#include <gtest/gtest.h>

typedef std::vector<std::string> call_list;

struct management_request {
  std::string method, uri;
  std::string query = "";
  rest_handler_t operation = nullptr; /* called directly; null: by the module's handler */
  std::string body = "";
};

class ManagementTest : public testing::Test {
protected:
  explicit ManagementTest(rest_handler_t handler) : handler_(handler) { begin_script(); }

  /* The answer in both formats. Expects that 1 is returned when its code is 0, else 0, and that both formats
   * make the same calls of the platform, which calls_made() then tells. */
  Answers serve(const management_request &request);
  Answers get(const std::string &uri) { return serve({"GET", uri}); }
  const call_list &calls_made() const { return calls_made_; }

  /* The request is answered so after these calls; and when one of the calls fails, with whatever result, that
   * is answered and no other call is made. */
  void expect_served(const management_request &request, const Answers &answers, const call_list &calls);
  /* The request is answered so without a call of the platform. */
  void expect_refused(const management_request &request, const Answers &answers);
  /* The call at this position fails with every result in turn: that is answered, and it was the last one. */
  void expect_failures_answered(const management_request &request, const call_list &calls, size_t position);

private:
  std::string serve_once(const management_request &request, const char *format);

  rest_handler_t handler_;
  call_list calls_made_;
};

/* The longest value of a variable, and what is one character longer. */
inline std::string longest_value() {
  return std::string(255, '7');
}
inline std::string too_long_value() {
  return std::string(256, '7');
}

/* 99, which is also the answer to a value that is not there. */
inline Answers expected_parameter_error() {
  return expected_platform_error(OPEN_E_PARAM);
}

#endif
