/* Platform failures, for the tests of all modules: an operation is told with the platform calls that it
 * makes, and each of them is failed in turn. */
#ifndef KESTREL_TESTS_MODULES_FAILING_CALLS_H
#define KESTREL_TESTS_MODULES_FAILING_CALLS_H

#include "tests/support/platform_fixture.h"

#include <string>
#include <vector>

struct operation_calls {
  const char *method, *uri, *query;
  /* The functions whose failure is the request's, in the order of their first calls. */
  std::vector<std::string> functions;
  /* Functions called after those, whose failure is told in another way or not at all. */
  std::vector<std::string> later = {};
};

/* The call of one function, after `skip` that succeed, fails with every error that there is: the request is
 * answered once, in both formats, with the code of that error. */
void expect_failures_answered(rest_handler_t handler, openapiClientHandle_t *client_handle,
                              const operation_calls &operation, const std::string &function,
                              unsigned skip = 0);

/* The functions are called in the order told, and none is called after one that failed: each answers `first`,
 * which must be the request's answer, and those after it OPEN_E_TIMEOUT. */
void expect_calls_end_at_a_failure(rest_handler_t handler, openapiClientHandle_t *client_handle,
                                   const operation_calls &operation, open_error_t first);

/* Both for every function of the operation. */
void expect_every_failure_answered(rest_handler_t handler, openapiClientHandle_t *client_handle,
                                   const operation_calls &operation);

#endif
