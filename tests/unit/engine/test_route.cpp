/* Finding the operation of a request: the matcher against sscanf(3), and the numbers of a URI. */
#include "engine/rest_route.h"
#include "tests/support/answers.h"
#include "tests/support/route_reference.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <random>
#include <string.h>

/* --- The matcher -----------------------------------------------------------------------------------------
 */

static int first_operation(openapiClientHandle_t *, mg_connection *conn) {
  send_response(conn, 0, "first", nullptr);
  return 1;
}

static int second_operation(openapiClientHandle_t *, mg_connection *conn) {
  send_response(conn, 0, "second", nullptr);
  return 0;
}

static const rest_route vlan_routes[] = {
    {REQUEST_METHOD_GET, "/vlans%s", ROUTE_EXACT, nullptr, first_operation},
    {REQUEST_METHOD_GET, "/vlans/%[0-9]%s", 1, nullptr, second_operation},
    {REQUEST_METHOD_PUT, "/vlans/%[0-9]/%4[name]%s", 2, "name", first_operation},
};

static int handle_vlans(openapiClientHandle_t *handle, mg_connection *conn) {
  return handle_by_routes(vlan_routes, handle, conn);
}

static const rest_route *find(request_method_t method, const char *uri) {
  return find_route(vlan_routes, method, uri);
}

TEST(FindRoute, ExactPathsAllowNothingBehind) {
  EXPECT_EQ(find(REQUEST_METHOD_GET, "/vlans"), &vlan_routes[0]);
  for (const char *uri : {"", "/", "/vlan", "/vlanss", "/vlans/", "/vlans ", "/vlans\n", "/vlans/x", "/Vlans",
                          "vlans", "//vlans", "/vlans%s", "x/vlans"}) {
    EXPECT_EQ(find(REQUEST_METHOD_GET, uri), nullptr) << uri;
  }
}

TEST(FindRoute, NumbersAreWholeSegments) {
  for (const char *uri :
       {"/vlans/1", "/vlans/0010", "/vlans/99999999999999999999", "/vlans/10 ", "/vlans/10\n"}) {
    EXPECT_EQ(find(REQUEST_METHOD_GET, uri), &vlan_routes[1]) << uri;
  }
  for (const char *uri : {"/vlans/x", "/vlans/-1", "/vlans/ 1", "/vlans/1x", "/vlans/1/", "/vlans/+1",
                          "/vlans/1/name", "/vlans/\xd9\xa1", "/vlans/1%"}) {
    EXPECT_EQ(find(REQUEST_METHOD_GET, uri), nullptr) << uri;
  }
}

TEST(FindRoute, KeywordIsTheWholeWord) {
  EXPECT_EQ(find(REQUEST_METHOD_PUT, "/vlans/10/name"), &vlan_routes[2]);
  for (const char *uri : {"/vlans/10/nam", "/vlans/10/eman", "/vlans/10/names", "/vlans/10/namename",
                          "/vlans/10/Name", "/vlans/10/name/", "/vlans/10/namex", "/vlans/10/", "/vlans/10",
                          "/vlans//name", "/vlans/10//name", "/vlans/x/name"}) {
    EXPECT_EQ(find(REQUEST_METHOD_PUT, uri), nullptr) << uri;
  }
}

TEST(FindRoute, MethodMustBeTheRoutes) {
  for (request_method_t method : {REQUEST_METHOD_POST, REQUEST_METHOD_DELETE, REQUEST_METHOD_OTHER}) {
    EXPECT_EQ(find(method, "/vlans"), nullptr);
    EXPECT_EQ(find(method, "/vlans/10/name"), nullptr);
  }
  EXPECT_EQ(find(REQUEST_METHOD_PUT, "/vlans"), nullptr);
  EXPECT_EQ(find(REQUEST_METHOD_GET, "/vlans/10/name"), nullptr);
  EXPECT_EQ(find(REQUEST_METHOD_GET, nullptr), nullptr);
}

TEST(FindRoute, LongestUriIsServedAndOneMoreCharacterIsNot) {
  std::string uri = "/vlans/" + std::string(255 - 7, '1');
  EXPECT_EQ(find(REQUEST_METHOD_GET, uri.c_str()), &vlan_routes[1]);
  uri += "1";
  EXPECT_EQ(find(REQUEST_METHOD_GET, uri.c_str()), nullptr);
  EXPECT_EQ(find(REQUEST_METHOD_GET, std::string(100000, '1').insert(0, "/vlans/").c_str()), nullptr);
}

TEST(FindRoute, UriMayStopInsideARoute) {
  static const rest_route routes[] = {
      {REQUEST_METHOD_GET, "/acl/count%s", ROUTE_INSIDE, nullptr, first_operation},
      {REQUEST_METHOD_GET, "/acl/%s", 1, nullptr, second_operation},
      {REQUEST_METHOD_POST, "/acl/%[^/]/name%s", 1, nullptr, first_operation},
  };
  for (const char *uri : {"/acl/count", "/acl/coun", "/acl/c", "/acl/", "/acl", "/a", "/", "", "/acl/count ",
                          "/acl/count \n"}) {
    EXPECT_EQ(find_route(routes, REQUEST_METHOD_GET, uri), &routes[0]) << uri;
    EXPECT_EQ(find_route(routes, REQUEST_METHOD_PUT, uri), nullptr) << uri;
  }
  for (const char *uri : {"/acl/counts", "/acl/count/", "/acl/cx", "/acl/x", "/acl/cou nt"})
    EXPECT_EQ(find_route(routes, REQUEST_METHOD_GET, uri), &routes[1]) << uri;
  for (const char *uri : {"acl", "/x", "/acls", "/aclx/count", "/ac/count", "/Acl", " /acl"})
    EXPECT_EQ(find_route(routes, REQUEST_METHOD_GET, uri), nullptr) << uri;
  EXPECT_EQ(find_route(routes, REQUEST_METHOD_GET, nullptr), nullptr);
  std::string long_uri = "/acl/count" + std::string(245, ' ');
  EXPECT_EQ(find_route(routes, REQUEST_METHOD_GET, long_uri.c_str()), &routes[0]);
  EXPECT_EQ(find_route(routes, REQUEST_METHOD_GET, (long_uri + " ").c_str()), nullptr);
}

/* Nothing is looked at after the fields that are wanted, but that the end of the pattern finds nothing. */
TEST(FindRoute, TextBetweenFieldsAndEndStopsTheScanOnly) {
  static const rest_route routes[] = {
      {REQUEST_METHOD_POST, "/acl/%[^/]/name%s", 1, nullptr, first_operation},
  };
  for (const char *uri : {"/acl/ip/name", "/acl/ip", "/acl/ip/", "/acl/ip/na", "/acl/ip/x", "/acl/ip/nam/e",
                          "/acl/name", "/acl/ip//name", "/acl/ip/name "})
    EXPECT_EQ(find_route(routes, REQUEST_METHOD_POST, uri), &routes[0]) << uri;
  for (const char *uri : {"/acl/ip/names", "/acl/ip/name/", "/acl/ip/name/x", "/acl", "/acl/", "/acl//name"})
    EXPECT_EQ(find_route(routes, REQUEST_METHOD_POST, uri), nullptr) << uri;
}

TEST(HandleByRoutes, CallsTheOperationAndReturnsItsResult) {
  openapiClientHandle_t handle = {};
  EXPECT_EQ(call_handler(handle_vlans, &handle, "GET", "/vlans"), expected_answers(0, "first"));
  EXPECT_EQ(call_handler(handle_vlans, &handle, "GET", "/vlans/1"), expected_answers(0, "second"));
  EXPECT_EQ(call_handler(handle_vlans, &handle, "POST", "/vlans/10/name", "method=put"),
            expected_answers(0, "first"));
  EXPECT_EQ(handle_vlans(&handle, FakeRequest("GET", "/vlans").conn()), 1);
  EXPECT_EQ(handle_vlans(&handle, FakeRequest("GET", "/vlans/1").conn()), 0);
}

TEST(HandleByRoutes, AnythingElseIsABadRequest) {
  openapiClientHandle_t handle = {};
  EXPECT_EQ(call_handler(handle_vlans, &handle, "GET", "/vlans/"), expected_bad_request());
  EXPECT_EQ(call_handler(handle_vlans, &handle, "PATCH", "/vlans"), expected_bad_request());
  EXPECT_EQ(handle_vlans(&handle, FakeRequest("GET", "/other").conn()), 0);
  FakeRequest request("GET", "/vlans");
  request.conn()->uri = nullptr;
  EXPECT_EQ(handle_vlans(&handle, request.conn()), 0);
  EXPECT_EQ(answer_body(request, "xml"), expected_bad_request().xml);
}

/* --- Against sscanf --------------------------------------------------------------------------------------
 */

TEST(RouteReference, EveryPatternTakesAUriOfItsOwn) {
  struct {
    const char *uri;
    const char *pattern;
  } rows[] = {
      {"/vlans/10/name", "/vlans/%[0-9]/%4[name]%s"},
      {"/if/3/vlan/10/taggingMode", "/if/%[0-9]/vlan/%[0-9]/%11[taggingMode]%s"},
      {"/pml/if/3/vlan/10/sticky/1/mac", "/pml/if/%[0-9]/vlan/%[0-9]/sticky/%[0-1]/%3[mac]%s"},
      {"/bgp/ipv6/neighbor/fe80::1/scope/3/updateSource",
       "/bgp/ipv6/neighbor/%[^/]/scope/%[0-9]/%12[updateSource]%s"},
      {"/acl/ip/name/web/rule", "/acl/%[^/]/name/%[^/]/rule%s"},
      {"/routing/vlanRtrIf", "/routing/vlanRtrIf%s"},
  };
  for (const auto &row : rows) {
    for (const rest_route &route : all_api_routes()) {
      if (strcmp(route.pattern, row.pattern) != 0) continue;
      EXPECT_EQ(find_route({&route, 1}, REQUEST_METHOD_GET, row.uri), &route) << row.pattern;
    }
    EXPECT_EQ(find_disagreement(row.uri), "");
  }
}

/* A URI that a pattern nearly takes: its fields filled in, then a few characters changed. */
static std::string mutated_uri(std::mt19937 *random) {
  static const char *const FILLINGS[] = {"",    "1",       "10",  "4095", "99999999999",
                                         "web", "fe80::1", "x/y", " ",    "0"};
  static const char BYTES[] = "/0123456789azAZ %.-+_\t\n\r\x01\x7f\x80\xff";
  const std::vector<rest_route> &routes = all_api_routes();
  const rest_route &route = routes[(*random)() % routes.size()];
  std::string uri;
  for (const char *p = route.pattern; *p != '\0';) {
    if (*p != '%') {
      uri += *p++;
    } else if (p[1] == 's') {
      p += 2;
    } else {
      const char *end = strchr(p, ']');
      bool is_word = p[1] != '[';
      uri +=
          is_word && route.keyword != nullptr ? route.keyword : FILLINGS[(*random)() % std::size(FILLINGS)];
      p = end + 1;
    }
  }
  for (unsigned changes = (*random)() % 4; changes > 0; changes--) {
    size_t at = uri.empty() ? 0 : (*random)() % uri.size();
    char byte = BYTES[(*random)() % (sizeof BYTES - 1)];
    switch ((*random)() % 4) {
    case 0:
      uri.insert(at, 1, byte);
      break;
    case 1:
      uri.erase(at, 1);
      break;
    case 2:
      uri.resize(at);
      break;
    case 3:
      uri += byte;
      break;
    }
  }
  return uri;
}

TEST(RouteReference, MatcherAgreesWithSscanfOnNearMisses) {
  std::mt19937 random(20240229);
  for (int i = 0; i < 30000; i++) ASSERT_EQ(find_disagreement(mutated_uri(&random)), "");
}

TEST(RouteReference, MatcherAgreesWithSscanfOnLongUris) {
  std::mt19937 random(7);
  for (int i = 0; i < 300; i++) {
    std::string uri = mutated_uri(&random);
    uri.resize(250 + random() % 12, i % 2 == 0 ? '1' : 'n');
    ASSERT_EQ(find_disagreement(uri), "");
  }
}

TEST(RouteReference, MatcherAgreesWithSscanfOnEveryByteAtTheEnd) {
  for (int byte = 1; byte < 256; byte++) {
    for (const char *base : {"/vlans", "/vlans/", "/vlans/10", "/vlans/10/name", "/base/idname",
                             "/acl/ip/name/web", "", "/acl/count", "/acl/co", "/tcam/policy"}) {
      ASSERT_EQ(find_disagreement(std::string(base) + static_cast<char>(byte)), "");
    }
  }
}

TEST(RouteReference, MatcherAgreesWithSscanfOnRandomBytes) {
  std::mt19937 random(99);
  for (int i = 0; i < 3000; i++) {
    std::string uri = "/";
    for (unsigned length = random() % 40; length > 0; length--) uri += static_cast<char>(random());
    ASSERT_EQ(find_disagreement(uri), "");
  }
}

/* --- Numbers in the URI ----------------------------------------------------------------------------------
 */

static bool take_numbers(const std::string &uri, const char *pattern, uint32_t *first, uint32_t *second,
                         std::string *answer) {
  FakeRequest request("GET", uri);
  bool taken = second == nullptr ? uri_numbers_or_reply(request.conn(), pattern, {first})
                                 : uri_numbers_or_reply(request.conn(), pattern, {first, second});
  *answer = taken ? request.bytes() : answer_body(request, "xml");
  return taken;
}

TEST(UriNumbers, AreTakenInOrderAndNothingIsAnswered) {
  uint32_t first = 0, second = 0;
  std::string answer;
  EXPECT_TRUE(take_numbers("/if/3/vlan/0010", "/if/%[0-9]/vlan/%[0-9]", &first, &second, &answer));
  EXPECT_EQ(first, 3u);
  EXPECT_EQ(second, 10u);
  EXPECT_EQ(answer, "");
}

TEST(UriNumbers, BeyondAnIntAreTheLargestInt) {
  for (const char *number :
       {"2147483647", "2147483648", "4294967296", "4294967297", "99999999999999999999999"}) {
    uint32_t vid = 0;
    std::string answer;
    EXPECT_TRUE(take_numbers(std::string("/vlans/") + number, "/vlans/%[0-9]", &vid, nullptr, &answer));
    EXPECT_EQ(vid, 2147483647u) << number;
  }
}

TEST(UriNumbers, MissingOnesAreABadRequest) {
  uint32_t first = 0, second = 0;
  std::string answer;
  for (const char *uri : {"/vlans", "/vlans/", "/vlans/x", "/if/3"}) {
    EXPECT_FALSE(take_numbers(uri, "/vlans/%[0-9]", &first, nullptr, &answer)) << uri;
    EXPECT_EQ(answer, expected_bad_request().xml);
  }
  EXPECT_FALSE(take_numbers("/if/3/vlan/", "/if/%[0-9]/vlan/%[0-9]", &first, &second, &answer));
  EXPECT_EQ(answer, expected_bad_request().xml);
}

TEST(UriNumbers, MayBeTakenWithoutAnAnswer) {
  uint32_t first = 47, second = 11;
  FakeRequest whole("GET", "/if/3/vlan/0010/taggingMode");
  EXPECT_TRUE(uri_numbers(whole.conn(), "/if/%[0-9]/vlan/%[0-9]", {&first, &second}));
  EXPECT_EQ(first, 3u);
  EXPECT_EQ(second, 10u);
  EXPECT_EQ(whole.bytes(), "");
  first = 47;
  second = 11;
  std::string too_long = "/if/3/vlan/" + std::string(245, '1');
  for (const std::string &uri : {std::string("/if/3/vlan/"), std::string("/if/3"), std::string("/if//vlan/1"),
                                 std::string("/if/x/vlan/1"), std::string(), too_long}) {
    FakeRequest request("GET", uri);
    EXPECT_FALSE(uri_numbers(request.conn(), "/if/%[0-9]/vlan/%[0-9]", {&first, &second})) << uri;
    EXPECT_EQ(first, 47u) << uri;
    EXPECT_EQ(second, 11u) << uri;
    EXPECT_EQ(request.bytes(), "") << uri;
  }
}

TEST(UriNumbers, DigitsMayBeLimited) {
  uint32_t ifNum = 0, sticky = 47;
  FakeRequest one("GET", "/pml/if/5/sticky/1/mac");
  EXPECT_TRUE(uri_numbers(one.conn(), "/pml/if/%[0-9]/sticky/%[0-1]", {&ifNum, &sticky}));
  EXPECT_EQ(sticky, 1u);
  FakeRequest two("GET", "/pml/if/5/sticky/2/mac");
  EXPECT_FALSE(uri_numbers(two.conn(), "/pml/if/%[0-9]/sticky/%[0-1]", {&ifNum, &sticky}));
}

TEST(UriNumbers, UriOf256CharactersHoldsNone) {
  uint32_t vid = 0;
  std::string answer;
  EXPECT_TRUE(take_numbers("/vlans/" + std::string(248, '0'), "/vlans/%[0-9]", &vid, nullptr, &answer));
  EXPECT_EQ(vid, 0u);
  EXPECT_FALSE(take_numbers("/vlans/" + std::string(249, '0'), "/vlans/%[0-9]", &vid, nullptr, &answer));
}
