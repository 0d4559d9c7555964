/* Fuzzes making rules of access control lists, against the software switch in process. The input is the type
 * of list and the format (one byte) and the query string. Whatever it says, the answer is one of those that
 * there are, whole, and the list has one rule more when it says so and otherwise as many as before. */
#include "tests/support/temporary_dir.h"
#include "tests/unit/modules/acl_creation_fixture.h"

#include <stdint.h>
#include <stdlib.h>

static void require(bool condition) {
  if (!condition) abort();
}

static openapiClientHandle_t *client_handle;

struct fuzzed_list {
  const rule_list &list;
  OPEN_ACL_TYPE_t type;
  rest_handler_t create_rule;
};

static const fuzzed_list LISTS[] = {
    {mac_list(), OPEN_ACL_TYPE_MAC, api_acl_create_mac_acl_match_rule},
    {ipv4_list(), OPEN_ACL_TYPE_IP, api_acl_create_ip_acl_match_rule},
    {ipv6_list(), OPEN_ACL_TYPE_IPV6, api_acl_create_ipv6_acl_match_rule},
};

static uint32_t rule_count(const fuzzed_list &fuzzed) {
  uint32_t count = 0;
  require(rpcclt_openapiAclRuleCountGet(client_handle, fuzzed.list.id, &count) == OPEN_E_NONE);
  return count;
}

/* The lists, each with the rule that matches every packet, for others to duplicate. */
static void make_lists() {
  for (const fuzzed_list &fuzzed : LISTS) {
    uint32_t aclId = 0;
    std::string text = fuzzed.list.name;
    open_buffdesc name = {static_cast<uint32_t>(text.size()), text.data()};
    require(rpcclt_openapiAclCreate(client_handle, fuzzed.type, &name, &aclId) == OPEN_E_NONE);
    require(aclId == fuzzed.list.id);
    FakeRequest request("POST", fuzzed.list.uri(), fuzzed.list.plain);
    require(fuzzed.create_rule(client_handle, request.conn()) == 1);
  }
}

static bool is_refusal(const rule_list &list, const std::string &body) {
  std::vector<Answers> refusals = {refused_as_full(list), refused_as_duplicate(list)};
  for (open_error_t rc : all_platform_errors()) refusals.push_back(expected_platform_error(rc));
  for (const Answers &refusal : refusals) {
    if (body == refusal.xml || body == refusal.json) return true;
  }
  return false;
}

/* The one rule besides the first, number 10. */
static uint32_t new_rule(const rule_list &list) {
  uint32_t ruleId = 0;
  require(rpcclt_openapiAclRuleGetFirst(client_handle, list.id, &ruleId) == OPEN_E_NONE);
  if (ruleId == 10) require(rpcclt_openapiAclRuleGetNext(client_handle, list.id, 10, &ruleId) == OPEN_E_NONE);
  return ruleId;
}

static void check_request(const fuzzed_list &fuzzed, FakeRequest *request) {
  bool made = fuzzed.create_rule(client_handle, request->conn()) == 1;
  FakeReply reply = request->reply();
  require(reply.well_formed);
  require(rule_count(fuzzed) == (made ? 2 : 1));
  if (!made) {
    require(is_refusal(fuzzed.list, reply.body));
    return;
  }
  uint32_t ruleId = new_rule(fuzzed.list);
  Answers success = created(fuzzed.list, ruleId);
  require(reply.body == success.xml || reply.body == success.json);
  require(rpcclt_openapiAclRuleDelete(client_handle, fuzzed.list.id, ruleId) == OPEN_E_NONE);
}

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  static TemporaryDir state_dir;
  client_handle = start_platform(state_dir.path());
  lab("log emergency"); /* each request has a line */
  make_lists();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1) return 0;
  const fuzzed_list &fuzzed = LISTS[data[0] % std::size(LISTS)];
  const bool json = data[0] / std::size(LISTS) % 2 != 0;
  const std::string input(reinterpret_cast<const char *>(data + 1), size - 1);
  FakeRequest in_query("POST", fuzzed.list.uri(), (json ? "format=json&" : "") + input);
  check_request(fuzzed, &in_query);
  FakeRequest in_body("POST", fuzzed.list.uri(), json ? "format=json" : "", input);
  check_request(fuzzed, &in_body);
  return 0;
}
