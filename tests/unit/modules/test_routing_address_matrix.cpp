/* The routing module: which requests for an address are refused, and why. Every combination of good, bad and
 * missing variables is compared with the order of checks, written down once more and plainly. */
#include "tests/unit/modules/routing_fixture.h"

#include <map>
#include <optional>
#include <stdlib.h>

/* The variables of a request; one without a value is not sent. */
struct address_request {
  std::optional<std::string> type, address, length, ext;
};

struct address_operation {
  const char *method, *uri;
  uint32_t ifNum;
  bool type_must_have_a_value;
  const char *function, *success; /* the message up to the address */
};

static const address_operation OPERATIONS[] = {
    {"POST", "/routing/if/3/ip", 3, true, ADDRESS_ADD, "Create Routing Interface IP address (address: "},
    {"POST", "/routing/vlanRtrIf/2/ip", 227, false, ADDRESS_ADD,
     "Create Routing Vlan Interface IP address (address: "},
    {"DELETE", "/routing/if/3/ip", 3, false, ADDRESS_DELETE,
     "Delete Routing Interface IP address (address: "},
    {"DELETE", "/routing/vlanRtrIf/2/ip", 227, false, ADDRESS_DELETE,
     "Delete Routing Vlan Interface IP address (address: "},
};

static const std::string CHARACTERS_47(47, '1'), CHARACTERS_48(48, '1');

/* The texts that are addresses, with family and text as recorded. */
static const std::map<std::string, std::string> ADDRESSES = {{"10.0.0.1", "1:10.0.0.1"},
                                                             {"2001:DB8::1", "2:2001:db8::1"}};

/* --- The order of checks -------------------------------------------------------------------------------- */

struct address_outcome {
  open_error_t refusal;  /* OPEN_E_NONE: what follows counts */
  std::string arguments; /* that reach the platform */
  Answers answers;
};

static address_outcome refused(open_error_t refusal) {
  return {refusal, "", expected_platform_error(refusal)};
}

static bool has_value(const std::optional<std::string> &variable) {
  return variable && !variable->empty();
}

static Answers expected_success(const address_operation &operation, const address_request &request,
                                int method, int length) {
  bool ends_dhcp = method == 2 && std::string(operation.method) == "DELETE";
  if (ends_dhcp) return expected_answers(0, "Disable the DHCP client on the interface.");
  return expected_answers(0, operation.success + request.address.value_or("") +
                                 ", prefix length: " + std::to_string(length) + ") successfully.");
}

static address_outcome expected_outcome(const address_operation &operation, const address_request &request) {
  static const struct { int method, family; } types[] = {{0, 1}, {1, 1}, {2, 1}, {0, 2}, {2, 2}};

  if (!request.type) return refused(OPEN_E_NOT_FOUND);
  if (request.type->empty() && operation.type_must_have_a_value) return refused(OPEN_E_NOT_FOUND);
  int type = atoi(request.type->c_str());
  if (type < 0 || type > 4) return refused(OPEN_E_PARAM);
  auto [method, family] = types[type];
  bool given = method != 2;

  std::string address = "0:";
  if (given && !has_value(request.address)) return refused(OPEN_E_NOT_FOUND);
  if (has_value(request.address)) {
    auto parsed = ADDRESSES.find(*request.address);
    if (parsed == ADDRESSES.end()) return refused(OPEN_E_FAIL);
    address = parsed->second;
    if (given && address[0] != '0' + family) return refused(OPEN_E_PARAM);
  }

  int length = 0;
  if (given && !has_value(request.length)) return refused(OPEN_E_NOT_FOUND);
  if (has_value(request.length)) {
    length = atoi(request.length->c_str());
    if (length < 0 || length > (family == 1 ? 32 : 128)) return refused(OPEN_E_PARAM);
    if (given && length == 0) return refused(OPEN_E_PARAM);
  }

  if (!request.ext) return refused(OPEN_E_NOT_FOUND);
  int ext = atoi(request.ext->c_str());
  if (ext != 0 && ext != 1) return refused(OPEN_E_PARAM);
  std::string arguments = std::to_string(family) + " " + std::to_string(operation.ifNum) + " " +
                          std::to_string(method) + " " + address + " " + std::to_string(length) + " " +
                          std::to_string(ext);
  return {OPEN_E_NONE, arguments, expected_success(operation, request, method, length)};
}

/* --- Comparing ------------------------------------------------------------------------------------------ */

static void add_variable(std::string *query, const char *name, const std::optional<std::string> &value) {
  if (value) *query += (query->empty() ? "" : "&") + std::string(name) + "=" + *value;
}

static std::string query_of(const address_request &request) {
  std::string query;
  add_variable(&query, "extArg", request.ext);
  add_variable(&query, "pfxLen", request.length);
  add_variable(&query, "addr", request.address);
  add_variable(&query, "addrType", request.type);
  return query;
}

/* Every change succeeds without being carried out: what is refused is refused by the module. */
class RoutingAddressMatrixTest : public RoutingTest {
protected:
  /* Whether the request has come to what it should. */
  bool compare(const address_operation &operation, const address_request &request) {
    address_outcome outcome = expected_outcome(operation, request);
    const std::string query = query_of(request);
    outcomes[outcome.refusal]++;
    forget_calls();
    EXPECT_EQ(call(routing_api_handler, operation.method, operation.uri, query), outcome.answers)
        << operation.method << " " << operation.uri << "?" << query;
    EXPECT_EQ(recorded_arguments(operation.function), outcome.arguments)
        << operation.method << " " << operation.uri << "?" << query;
    return !HasFailure();
  }

  /* All lengths and last arguments. False at the first disagreement: one is enough to read. */
  bool compare_all(const address_operation &operation, address_request request) {
    const std::optional<std::string> lengths[] = {{},   "",    "0",   "1",  "24", "32",
                                                  "33", "128", "129", "-1", "x",  "99999999999"};
    const std::optional<std::string> exts[] = {{}, "", "0", "1", "2", "1x"};
    for (const auto &length : lengths) {
      for (const auto &ext : exts) {
        request.length = length;
        request.ext = ext;
        if (!compare(operation, request)) return false;
      }
    }
    return true;
  }

  std::map<open_error_t, unsigned> outcomes;
  changes_not_carried_out idle;
};

TEST_F(RoutingAddressMatrixTest, FirstCheckThatFailsAnswers) {
  const std::optional<std::string> types[] = {{}, "", "0", "1", "2", "3", "4", "5", "-1", "x", "99999999999"};
  const std::optional<std::string> addresses[] = {
      {}, "", "10.0.0.1", "2001:DB8::1", "10.0.0", CHARACTERS_47, CHARACTERS_48};
  for (const address_operation &operation : OPERATIONS) {
    for (const auto &type : types) {
      for (const auto &address : addresses) {
        if (!compare_all(operation, {type, address, {}, {}})) return;
      }
    }
  }
  for (open_error_t rc : {OPEN_E_NONE, OPEN_E_PARAM, OPEN_E_FAIL, OPEN_E_NOT_FOUND})
    EXPECT_GT(outcomes[rc], 100u) << rc;
}

/* A variable of more than 255 characters is as good as none. */
TEST_F(RoutingAddressMatrixTest, OverlongVariablesAreMissing) {
  const std::string overlong(300, '1'), rest = "&pfxLen=24&extArg=0";
  for (const address_operation &operation : OPERATIONS) {
    for (const std::string &query :
         {"addrType=" + overlong + "&addr=10.0.0.1" + rest, "addrType=0&addr=" + overlong + rest,
          "addrType=0&addr=10.0.0.1&extArg=0&pfxLen=" + overlong,
          "addrType=0&addr=10.0.0.1&pfxLen=24&extArg=" + overlong}) {
      expect_refused(operation.method, operation.uri, query, expected_platform_error(OPEN_E_NOT_FOUND));
      EXPECT_EQ(recorded_arguments(operation.function), "") << query;
    }
  }
}

/* --- One by one ----------------------------------------------------------------------------------------- */

TEST_F(RoutingAddressMatrixTest, RefusalsThatClientsMeetMost) {
  const struct {
    const char *query;
    open_error_t refusal;
  } rows[] = {
      {"addrType=0&addr=2001:db8::1&pfxLen=24&extArg=0", OPEN_E_PARAM},
      {"addrType=3&addr=10.0.0.1&pfxLen=24&extArg=0", OPEN_E_PARAM},
      {"addrType=3&addr=2001:db8::1&pfxLen=129&extArg=0", OPEN_E_PARAM},
      {"addrType=0&addr=10.0.0.1&pfxLen=33&extArg=0", OPEN_E_PARAM},
      {"addrType=0&addr=10.0.0.1&pfxLen=0&extArg=0", OPEN_E_PARAM},
      {"addrType=0&addr=10.0.0.1&pfxLen=24", OPEN_E_NOT_FOUND},
      {"addrType=2", OPEN_E_NOT_FOUND},
      {"addrType=5&addr=10.0.0&pfxLen=24&extArg=0", OPEN_E_PARAM},
      {"addrType=0&addr=10.0.0&pfxLen=33&extArg=2", OPEN_E_FAIL},
      {"addrType=2&addr=10.0.0&extArg=0", OPEN_E_FAIL},
      {"", OPEN_E_NOT_FOUND},
  };
  for (const address_operation &operation : OPERATIONS) {
    for (const auto &row : rows)
      expect_refused(operation.method, operation.uri, row.query, expected_platform_error(row.refusal));
  }
  EXPECT_EQ(recorded_arguments(ADDRESS_ADD) + recorded_arguments(ADDRESS_DELETE), "");
}

TEST_F(RoutingAddressMatrixTest, EmptyTypeIsType0ButWhereAPortIsGivenAnAddress) {
  const std::string query = "addrType=&addr=10.0.0.1&pfxLen=24&extArg=0";
  expect_refused("POST", "/routing/if/3/ip", query, expected_platform_error(OPEN_E_NOT_FOUND));
  expect_done(
      "POST", "/routing/vlanRtrIf/2/ip", query,
      "Create Routing Vlan Interface IP address (address: 10.0.0.1, prefix length: 24) successfully.");
  expect_done("DELETE", "/routing/if/3/ip", query,
              "Delete Routing Interface IP address (address: 10.0.0.1, prefix length: 24) successfully.");
  expect_done(
      "DELETE", "/routing/vlanRtrIf/2/ip", query,
      "Delete Routing Vlan Interface IP address (address: 10.0.0.1, prefix length: 24) successfully.");
}
