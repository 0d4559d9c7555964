/* Whole answers of a module's handler: see answers.h. */
#include "tests/support/answers.h"

#include <gtest/gtest.h>
#include <json-c/json.h>

std::string json_text(const std::string &text) {
  json_object *object = json_object_new_string(text.c_str());
  std::string printed = json_object_to_json_string(object);
  json_object_put(object);
  return printed;
}

Answers expected_answers(int code, const std::string &message, const std::string &xml_data,
                         const std::string &json_data) {
  Answers answers;
  answers.xml =
      "<result><rlt_code>" + std::to_string(code) + "</rlt_code><rlt_mesg>" + message + "</rlt_mesg>";
  if (!xml_data.empty()) answers.xml += "<rlt_data>" + xml_data + "</rlt_data>";
  answers.xml += "</result>\n";
  answers.json =
      "{ \"result\": { \"rlt_code\": " + std::to_string(code) + ", \"rlt_mesg\": " + json_text(message);
  if (!json_data.empty()) answers.json += ", \"rlt_data\": { " + json_data + " }";
  answers.json += " } }\n";
  return answers;
}

Answers expected_platform_error(open_error_t rc) {
  switch (static_cast<int>(rc)) {
  case -31:
  case -26:
    return expected_answers(
        96, "The operation was failed or some error happened, please send the correct request "
            "or check the limitation of feature.");
  case -25:
  case -21:
    return expected_answers(97, "There is some internal fault happened, please try again.");
  case -24:
    return expected_answers(98, "The same setting is already set.");
  default:
    return expected_answers(99,
                            "Operation failed. It was possibly caused by non-existent resource id in URI, "
                            "invalid parameters, or the operation is not supported on the platform.");
  }
}

const std::vector<open_error_t> &all_platform_errors() {
  static const std::vector<open_error_t> errors = {OPEN_E_RPC,
                                                   OPEN_E_INTERNAL,
                                                   OPEN_E_PARAM,
                                                   OPEN_E_FULL,
                                                   OPEN_E_EXISTS,
                                                   OPEN_E_TIMEOUT,
                                                   OPEN_E_FAIL,
                                                   OPEN_E_DISABLED,
                                                   OPEN_E_UNAVAIL,
                                                   OPEN_E_NOT_FOUND,
                                                   OPEN_E_EMPTY,
                                                   OPEN_E_ERROR,
                                                   static_cast<open_error_t>(-7)};
  return errors;
}

Answers expected_bad_request() {
  return expected_answers(902, "Bad Request. Please check your method and URI.");
}

std::string with_format(const std::string &query, const std::string &format) {
  return query.empty() ? "format=" + format : query + "&format=" + format;
}

std::string answer_body(const FakeRequest &request, const std::string &format) {
  const char *type = format == "json" ? "application/json" : "text/xml";
  FakeReply reply = request.reply();
  EXPECT_TRUE(reply.well_formed) << request.bytes();
  EXPECT_EQ(reply.head, std::string("HTTP/1.1 200 OK\r\nContent-Type: ") + type +
                            "; charset=utf-8\r\nTransfer-Encoding: chunked\r\n\r\n");
  return reply.body;
}

static std::string call_once(rest_handler_t handler, openapiClientHandle_t *client_handle,
                             const std::string &method, const std::string &uri, const std::string &query,
                             const std::string &format) {
  FakeRequest request(method, uri, with_format(query, format));
  handler(client_handle, request.conn());
  return answer_body(request, format);
}

std::string checked_answer(rest_handler_t handler, openapiClientHandle_t *client_handle,
                           const std::string &method, const std::string &uri, const std::string &query,
                           const std::string &format) {
  FakeRequest request(method, uri, with_format(query, format));
  int returned = handler(client_handle, request.conn());
  std::string answer = answer_body(request, format);
  const char *success = format == "xml" ? "<result><rlt_code>0</rlt_code>" : "\"rlt_code\": 0,";
  EXPECT_EQ(returned, answer.find(success) != std::string::npos ? 1 : 0) << method << " " << uri;
  return answer;
}

Answers call_handler(rest_handler_t handler, openapiClientHandle_t *client_handle, const std::string &method,
                     const std::string &uri, const std::string &query) {
  Answers answers;
  answers.xml = call_once(handler, client_handle, method, uri, query, "xml");
  answers.json = call_once(handler, client_handle, method, uri, query, "json");
  return answers;
}

bool operator==(const Answers &a, const Answers &b) {
  return a.xml == b.xml && a.json == b.json;
}

void PrintTo(const Answers &answers, std::ostream *os) {
  *os << answers.xml << answers.json;
}
