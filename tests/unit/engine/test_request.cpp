/* Request variables, the URI's first segment, and buffers for the platform's texts. */
#include "engine/rest_common.h"
#include "engine/rest_request.h"
#include "engine/rest_settings.h"
#include "tests/support/answers.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

static request_method_t method_of(const char *http_method, const std::string &query,
                                  const std::string &body = "") {
  return parse_request_method(FakeRequest(http_method, "/vlans", query, body).conn());
}

TEST(RequestMethod, IsTheHttpMethodInAnyCaseAndByItsBeginning) {
  struct {
    const char *http_method;
    request_method_t method;
  } rows[] = {
      {"GET", REQUEST_METHOD_GET},       {"POST", REQUEST_METHOD_POST},   {"PUT", REQUEST_METHOD_PUT},
      {"DELETE", REQUEST_METHOD_DELETE}, {"get", REQUEST_METHOD_GET},     {"Deleted", REQUEST_METHOD_DELETE},
      {"getAll", REQUEST_METHOD_GET},    {"POSTER", REQUEST_METHOD_POST}, {"PATCH", REQUEST_METHOD_OTHER},
      {"HEAD", REQUEST_METHOD_OTHER},    {"", REQUEST_METHOD_OTHER},      {"GE", REQUEST_METHOD_OTHER},
      {"DELET", REQUEST_METHOD_OTHER},   {"XGET", REQUEST_METHOD_OTHER},
  };
  for (const auto &row : rows) EXPECT_EQ(method_of(row.http_method, ""), row.method) << row.http_method;
  FakeRequest request("GET", "/");
  request.conn()->request_method = nullptr;
  EXPECT_EQ(parse_request_method(request.conn()), REQUEST_METHOD_OTHER);
}

TEST(RequestMethod, VariableOverridesTheHttpMethod) {
  struct {
    const char *query;
    request_method_t method;
  } rows[] = {
      {"method=delete", REQUEST_METHOD_DELETE},
      {"method=Deleted", REQUEST_METHOD_DELETE},
      {"method=getAll", REQUEST_METHOD_GET},
      {"METHOD=PuT", REQUEST_METHOD_PUT},
      {"a=1&method=put", REQUEST_METHOD_PUT},
      {"method=%70ost", REQUEST_METHOD_POST},
      {"method=", REQUEST_METHOD_POST},
      {"method=patch", REQUEST_METHOD_POST},
      {"method=+get", REQUEST_METHOD_POST},
      {"xmethod=get", REQUEST_METHOD_POST},
      {"method=get&method=put", REQUEST_METHOD_GET},
  };
  for (const auto &row : rows) EXPECT_EQ(method_of("POST", row.query), row.method) << row.query;
}

TEST(RequestMethod, VariableMayStandInTheBodyAndTheQueryWins) {
  EXPECT_EQ(method_of("POST", "", "method=PUT"), REQUEST_METHOD_PUT);
  EXPECT_EQ(method_of("POST", "method=DELETE", "method=PUT"), REQUEST_METHOD_DELETE);
  EXPECT_EQ(method_of("POST", "method=" + std::string(255, 'x'), "method=PUT"), REQUEST_METHOD_POST);
  EXPECT_EQ(method_of("POST", "method=get" + std::string(253, 'x'), "method=PUT"), REQUEST_METHOD_PUT);
}

TEST(ReturnFormat, IsJsonOnlyForValuesThatBeginSo) {
  struct {
    const char *query;
    return_format_t format;
  } rows[] = {
      {"", RETURN_FORMAT_XML},
      {"format=", RETURN_FORMAT_XML},
      {"format=xml", RETURN_FORMAT_XML},
      {"format=json", RETURN_FORMAT_JSON},
      {"format=JSON", RETURN_FORMAT_JSON},
      {"format=JSONP", RETURN_FORMAT_JSON},
      {"format=jsonxml", RETURN_FORMAT_JSON},
      {"format=xmljson", RETURN_FORMAT_XML},
      {"format=html", RETURN_FORMAT_XML},
      {"format=jso", RETURN_FORMAT_XML},
      {"format=+json", RETURN_FORMAT_XML},
      {"Format=Json", RETURN_FORMAT_JSON},
      {"format=%6ason", RETURN_FORMAT_JSON},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(parse_return_format(FakeRequest("GET", "/", row.query).conn()), row.format) << row.query;
  }
  EXPECT_EQ(parse_return_format(FakeRequest("POST", "/", "", "format=json").conn()), RETURN_FORMAT_JSON);
}

TEST(SessionKey, KeepsAtMost32Characters) {
  const std::string key = "0123456789abcdef0123456789abcdef";
  struct {
    std::string query, body, key;
  } rows[] = {
      {"", "", ""},
      {"sessionkey=", "", ""},
      {"sessionkey=abc", "", "abc"},
      {"sessionkey=" + key, "", key},
      {"sessionKey=" + key, "", key},
      {"", "sessionkey=" + key, key},
      {"sessionkey=short", "sessionkey=" + key, "short"},
      {"", "sessionkey=" + key + "x", key}, /* what fits of a longer one */
      {"sessionkey=" + key + "x", "", ""},  /* too long in the query: the body is asked, which has none */
      {"sessionkey=" + key + "x", "sessionkey=body", "body"},
  };
  for (const auto &row : rows) {
    char text[SESSION_KEY_SIZE + 1];
    memset(text, 'g', sizeof text);
    EXPECT_EQ(parse_session_key(FakeRequest("POST", "/", row.query, row.body).conn(), text), RC_TRUE);
    EXPECT_EQ(std::string(text), row.key) << row.query << " " << row.body;
    EXPECT_EQ(text[SESSION_KEY_SIZE], 'g');
  }
  EXPECT_EQ(parse_session_key(FakeRequest("GET", "/").conn(), nullptr), RC_FALSE);
}

TEST(ModuleName, IsTheFirstSegmentOfTheUri) {
  struct {
    std::string uri, module_name;
  } rows[] = {
      {"/vlans", "vlans"},
      {"/vlans/10/name", "vlans"},
      {"/vlans/", "vlans"},
      {"/vlans /10", "vlans "},
      {"/vlans//", "vlans"},
      {"/", ""},
      {"//vlans", ""},
      {"", ""},
      {"*", ""},
      {"vlans", ""},
      {"http://host/vlans", ""},
      {"/%s%n", "%s%n"},
      {"/" + std::string(255, 'm'), std::string(255, 'm')},
      {"/" + std::string(256, 'm'), ""},
      {"/a/" + std::string(300, 'm'), "a"},
  };
  for (const auto &row : rows) {
    char module_name[REQUEST_URI_SIZE];
    memset(module_name, 'g', sizeof module_name);
    get_module_name(row.uri.c_str(), module_name);
    EXPECT_EQ(std::string(module_name), row.module_name) << row.uri;
  }
  char module_name[REQUEST_URI_SIZE] = "g";
  get_module_name(nullptr, module_name);
  EXPECT_STREQ(module_name, "");
}

TEST(RequestVariable, TellsAbsentEmptyAndTooLongApart) {
  std::string longest(255, 'v'), too_long(256, 'v');
  struct {
    std::string query, body, text;
    int length;
  } rows[] = {
      {"", "", "", -1},
      {"value=", "", "", 0},
      {"value=a+b%26c", "", "a b&c", 5},
      {"value=" + longest, "", longest, 255},
      {"value=" + too_long, "", "", -1}, /* the body is asked as well and has none */
      {"", "value=" + too_long, longest, -2},
      {"value=q", "value=b", "q", 1},
      {"", "value=b", "b", 1},
  };
  for (const auto &row : rows) {
    request_variable value = read_variable(FakeRequest("PUT", "/", row.query, row.body).conn(), "value");
    EXPECT_EQ(value.length, row.length) << row.query << " " << row.body;
    EXPECT_EQ(std::string(value.text), row.text) << row.query << " " << row.body;
  }
}

TEST(RequestVariable, ThatMustBeThereIsTakenAndNothingIsAnswered) {
  std::string longest(255, 'v');
  struct {
    std::string query, body, text;
  } rows[] = {
      {"value=x", "", "x"}, {"value=a+b%26c", "", "a b&c"}, {"value=" + longest, "", longest},
      {"", "value=b", "b"}, {"value=q", "value=b", "q"},    {"value=" + longest + "v", "value=b", "b"},
  };
  for (const auto &row : rows) {
    FakeRequest request("GET", "/", row.query, row.body);
    request_variable value;
    EXPECT_TRUE(variable_or_reply(request.conn(), "value", &value)) << row.query;
    EXPECT_EQ(std::string(value.text), row.text);
    EXPECT_EQ(value.length, static_cast<int>(row.text.size()));
    EXPECT_EQ(request.bytes(), "");
  }
}

/* Queries and bodies without a usable variable "value". */
static const struct {
  std::string query, body;
} UNUSABLE[] = {
    {"", ""},
    {"value=", ""},
    {"value", ""},
    {"values=1", ""},
    {"value=&value=1", ""},
    {"", "value="},
    {"value=" + std::string(256, '1'), ""},
    {"value=" + std::string(5000, '1'), ""},
    {"", "value=" + std::string(256, '1')},
};

TEST(RequestVariable, MissingEmptyOrTooLongIsAnsweredAsAWrongParameter) {
  for (const auto &row : UNUSABLE) {
    FakeRequest request("GET", "/", row.query, row.body);
    request_variable value;
    EXPECT_FALSE(variable_or_reply(request.conn(), "value", &value)) << row.query << " " << row.body;
    EXPECT_EQ(answer_body(request, "xml"), expected_platform_error(OPEN_E_PARAM).xml);
    FakeRequest json("GET", "/", with_format(row.query, "json"), row.body);
    EXPECT_FALSE(variable_or_reply(json.conn(), "value", &value));
    EXPECT_EQ(answer_body(json, "json"), expected_platform_error(OPEN_E_PARAM).json);
  }
}

TEST(RequestNumber, IsReadAsFarAsItGoes) {
  struct {
    const char *query;
    int32_t number;
  } rows[] = {
      {"value=3", 3},
      {"value=-1", -1},
      {"value=007", 7},
      {"value=%2B7", 7},
      {"value=+7", 7}, /* a blank */
      {"value=12abc", 12},
      {"value=10-20,30", 10},
      {"value=1.9", 1},
      {"value=0x10", 0},
      {"value=abc", 0},
      {"value=-", 0},
      {"value=2147483647", INT32_MAX},
      {"value=2147483648", INT32_MAX},
      {"value=4294967297", INT32_MAX},
      {"value=99999999999999999999", INT32_MAX},
      {"value=-2147483648", INT32_MIN},
      {"value=-99999999999999999999", INT32_MIN},
  };
  for (const auto &row : rows) {
    FakeRequest request("GET", "/", row.query);
    int32_t number = 4711;
    EXPECT_TRUE(number_or_reply(request.conn(), "value", &number)) << row.query;
    EXPECT_EQ(number, row.number) << row.query;
    EXPECT_EQ(request.bytes(), "");
  }
}

TEST(RequestNumber, MissingEmptyOrTooLongIsAnsweredAsAWrongParameter) {
  for (const auto &row : UNUSABLE) {
    FakeRequest request("GET", "/", row.query, row.body);
    int32_t number = 4711;
    EXPECT_FALSE(number_or_reply(request.conn(), "value", &number)) << row.query << " " << row.body;
    EXPECT_EQ(number, 4711);
    EXPECT_EQ(answer_body(request, "xml"), expected_platform_error(OPEN_E_PARAM).xml);
  }
}

TEST(PlatformTexts, MayLeaveTheTerminatorOut) {
  open_buffdesc desc = describe_characters("name");
  EXPECT_EQ(desc.size, 4u);
  EXPECT_STREQ(static_cast<char *>(desc.pstart), "name");
  EXPECT_EQ(describe_characters("").size, 0u);
}

TEST(PlatformTexts, CountTheTerminator) {
  open_buffdesc desc = describe_text("name");
  EXPECT_EQ(desc.size, 5u);
  EXPECT_STREQ(static_cast<char *>(desc.pstart), "name");
  EXPECT_EQ(describe_text("").size, 1u);
}

static uint32_t told_size;

static open_error_t tell_size(openapiClientHandle_t *, uint32_t *size) {
  *size = told_size;
  return OPEN_E_NONE;
}

/* Fills the buffer to its last byte, after checking that it was all zero, and leaves no terminator. */
static open_error_t fill_up(openapiClientHandle_t *, uint32_t id, open_buffdesc *text) {
  EXPECT_EQ(id, 7u);
  EXPECT_EQ(text->size, told_size);
  char *bytes = static_cast<char *>(text->pstart);
  EXPECT_TRUE(std::all_of(bytes, bytes + text->size, [](char byte) { return byte == 0; }));
  memset(bytes, 'x', text->size);
  return OPEN_E_NONE;
}

TEST(PlatformTexts, HeapBufferIsZeroFilledAndAlwaysEnds) {
  openapiClientHandle_t handle;
  for (uint32_t size : {0u, 1u, 33u, 5000u}) {
    told_size = size;
    platform_text text;
    ASSERT_EQ(text.read(&handle, tell_size, fill_up, 7), OPEN_E_NONE);
    EXPECT_EQ(text.text(), std::string(size, 'x'));
  }
}

TEST(PlatformTexts, StackBufferAlwaysEnds) {
  platform_text_256 text;
  EXPECT_EQ(text.desc.size, 256u);
  EXPECT_EQ(text.desc.pstart, text.text);
  memset(text.desc.pstart, 'x', text.desc.size);
  text.desc.size = UINT32_MAX; /* what stands behind the buffer is no terminator */
  EXPECT_EQ(text.text, std::string(256, 'x'));
}

TEST(PlatformTexts, FailureOfEitherCallIsTheResult) {
  openapiClientHandle_t handle;
  auto no_size = [](openapiClientHandle_t *, uint32_t *) { return OPEN_E_TIMEOUT; };
  auto no_text = [](openapiClientHandle_t *, uint32_t, open_buffdesc *) { return OPEN_E_NOT_FOUND; };
  told_size = 5;
  EXPECT_EQ(platform_text().read(&handle, no_size, fill_up, 7), OPEN_E_TIMEOUT);
  EXPECT_EQ(platform_text().read(&handle, tell_size, no_text, 7), OPEN_E_NOT_FOUND);
}

TEST(Settings, AreTheShippedOnesUnlessTheEnvironmentSaysOtherwise) {
  const char *names[] = {"KESTREL_ROOT", "KESTREL_LISTENING_PORT", "KESTREL_SESSION_FILE"};
  for (const char *name : names) unsetenv(name);
  reload_rest_settings();
  EXPECT_EQ(rest_settings().root, "/mnt/kestrel");
  EXPECT_EQ(rest_settings().listening_port, "8080,ssl://8446:/mnt/kestrel/ssl.pem");
  EXPECT_EQ(rest_settings().session_file, "/tmp/restsessionstatus");

  setenv("KESTREL_ROOT", "/srv/lab", 1);
  setenv("KESTREL_SESSION_FILE", "", 1);
  reload_rest_settings();
  EXPECT_EQ(rest_settings().listening_port, "8080,ssl://8446:/srv/lab/ssl.pem");
  EXPECT_EQ(rest_settings().session_file, "/tmp/restsessionstatus");
  setenv("KESTREL_LISTENING_PORT", "127.0.0.1:1234", 1);
  reload_rest_settings();
  EXPECT_EQ(rest_settings().listening_port, "127.0.0.1:1234");

  for (const char *name : names) unsetenv(name);
  reload_rest_settings();
}
