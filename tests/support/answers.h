/* Whole answers of a module's handler: calling it with a request of each format, and the documents that it is
 * to answer with. */
#ifndef KESTREL_TESTS_SUPPORT_ANSWERS_H
#define KESTREL_TESTS_SUPPORT_ANSWERS_H

#include "platform/api/openapi_common.h"
#include "tests/support/fake_request.h"

#include <string>
#include <vector>

/* A module's entry point or one of its operations. */
typedef int (*rest_handler_t)(openapiClientHandle_t *client_handle, mg_connection *conn);

/* One request and how it was answered in each of the formats. */
struct Answers {
  std::string xml;
  std::string json;
};

/* The result document in both formats, with the newline that ends a body. The data, when given, is the inside
 * of rlt_data: "<id>1</id>" and "\"id\": 1". */
Answers expected_answers(int code, const std::string &message, const std::string &xml_data = "",
                         const std::string &json_data = "");
/* A text as a JSON string, quotes included. */
std::string json_text(const std::string &text);
/* The answer to a platform failure. */
Answers expected_platform_error(open_error_t rc);
/* Every result that a platform call may have but success, and one that no header knows. */
const std::vector<open_error_t> &all_platform_errors();

/* 902. */
Answers expected_bad_request();

/* Adds "format=..." to a query. */
std::string with_format(const std::string &query, const std::string &format);

/* The body of the one answer that the request has got. Reports a failure when the reply's head is not exactly
 * what the engine sends, or when there is more than one answer. */
std::string answer_body(const FakeRequest &request, const std::string &format);

/* One request in one format, of which the handler must return 1 when it succeeds, else 0. Its answer. */
std::string checked_answer(rest_handler_t handler, openapiClientHandle_t *client_handle,
                           const std::string &method, const std::string &uri, const std::string &query,
                           const std::string &format);

/* Calls the handler once for each format, XML first, with a client handle of `client_handle`. */
Answers call_handler(rest_handler_t handler, openapiClientHandle_t *client_handle, const std::string &method,
                     const std::string &uri, const std::string &query = "");

bool operator==(const Answers &a, const Answers &b);
void PrintTo(const Answers &answers, std::ostream *os);

#endif
