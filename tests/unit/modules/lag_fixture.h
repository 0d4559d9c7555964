/* Tests of the link aggregation module: the documents it answers with. */
#ifndef KESTREL_TESTS_MODULES_LAG_FIXTURE_H
#define KESTREL_TESTS_MODULES_LAG_FIXTURE_H

#include "modules/rest_module_lag.h"
#include "platform/api/openapi_lag.h"
#include "tests/support/platform_fixture.h"
#include "tests/support/result_data.h"
#include "tests/unit/modules/bent_platform.h"

/* Interface number of port-channel 1; those of the others follow. */
inline constexpr uint32_t FIRST_LAG = 56;
inline constexpr unsigned LAGS = 64;

/* GET /lag/{lagId}. */
inline Answers expected_lag(unsigned id, const std::vector<unsigned> &members) {
  std::vector<result_node> entries;
  for (unsigned port : members)
    entries.push_back(entry(static_cast<unsigned>(entries.size()) + 1, "member", {number("portNum", port)}));
  return expected_data({branch("lag_interface", {number("id", id), text("name", "lag" + std::to_string(id)),
                                                 branch("members", entries)})});
}

/* GET /lag. */
inline Answers expected_lags(const std::vector<unsigned> &ids) {
  std::vector<result_node> entries;
  for (unsigned id : ids)
    entries.push_back(entry(static_cast<unsigned>(entries.size()) + 1, "lag_interface", {number("id", id)}));
  return expected_data({branch("lag_interfaces", entries)});
}

/* The ids from `first` to `last`. */
inline std::vector<unsigned> ids_between(unsigned first, unsigned last) {
  std::vector<unsigned> ids;
  for (unsigned id = first; id <= last; id++) ids.push_back(id);
  return ids;
}

class LagTest : public PlatformTest {
protected:
  LagTest() { lower_limit("lag-members", 32); }

  Answers get(const std::string &uri) const { return call(lag_api_handler, "GET", uri); }
  /* One request, in XML, of which the operation returns 1 and says this. */
  void expect_done(rest_handler_t handler, const char *method, const std::string &uri,
                   const std::string &message, const char *format = "xml") const {
    FakeRequest request(method, uri, std::string("format=") + format);
    EXPECT_EQ(handler(handle, request.conn()), 1) << method << " " << uri;
    Answers expected = expected_answers(0, message);
    EXPECT_EQ(answer_body(request, format), *format == 'x' ? expected.xml : expected.json);
  }
  void add(unsigned id, unsigned port) const {
    EXPECT_EQ(rpcclt_openapiLagPortAdd(handle, FIRST_LAG + id - 1, port), OPEN_E_NONE) << port;
  }
};

#endif
