/* Making rules of random variables with good and bad values: each request is answered with one whole
 * document, and the list has one rule more when that says so and otherwise as many as before. Seeds are
 * fixed. */
#include "tests/unit/modules/acl_creation_fixture.h"

#include <json-c/json.h>
#include <random>

/* Values for each variable, good ones first. */
struct variable_values {
  const char *name;
  std::vector<std::string> good, bad;
};

static const std::vector<variable_values> &variables() {
  static const std::vector<variable_values> all = {
      {"sequence", {"1", "7", "1000"}, {"0", "x", "4294967296"}},
      {"action", {"permit", "deny"}, {"Permit", "", "x"}},
      {"src_mac", {"any", "02:00:5E:00:00:0A"}, {"x", "bpdu", "02:00:5E:00:00:0A:0B"}},
      {"src_mask", {"FF:FF:FF:FF:FF:FF", "255.0.0.0"}, {"x", ""}},
      {"dest_mac", {"any", "bpdu", "01:80:C2:00:00:00"}, {"", "any "}},
      {"dest_mask", {"ff:ff:00:00:00:00", "255.255.255.255"}, {"any", "::"}},
      {"ethertype", {"arp", "2054"}, {"0x0806", "5", "ip"}},
      {"vlan", {"1", "4094"}, {"0", "4095", "x"}},
      {"cos", {"0", "7"}, {"8", "-1"}},
      {"protocol", {"tcp", "udp", "every", "255", "6", "58", "1"}, {"x", "300", ""}},
      {"src_ip", {"any", "10.0.0.1"}, {"10.0.0", "::1"}},
      {"dest_ip", {"any", "192.0.2.0"}, {"x", ""}},
      {"src_prefix", {"any", "2001:db8::"}, {"10.0.0.1", "x"}},
      {"src_prefix_length", {"32", "128"}, {"129", "x"}},
      {"dest_prefix", {"any", "fe80::1"}, {"", "x"}},
      {"dest_prefix_length", {"1", "64"}, {"0", "-1"}},
      {"dscp", {"0", "63"}, {"64", "x"}},
      {"precedence", {"0", "7"}, {"8", "x"}},
      {"tos", {"a0", "FF"}, {"x", "100"}},
      {"tos_mask", {"ff", "0f"}, {"x", "1"}},
      {"fragments", {"0", "1"}, {"2", "x"}},
      {"routing", {"0", "1"}, {"2", "x"}},
      {"flow_lable", {"0", "1048575"}, {"1048576", "x"}},
      {"src_l4_port", {"eq:80", "range:1:2"}, {"80", "range:1"}},
      {"dest_l4_port", {"gt:0", "neq:65535"}, {"eq:65536", "eq:"}},
      {"igmp_type", {"22"}, {"256"}},
      {"icmp_message", {"echo-reply", "unreachable"}, {"x"}},
      {"icmp_type", {"0", "255"}, {"256", "x"}},
      {"icmp_code", {"0", "255"}, {"256", "x"}},
      {"tcp_fin", {"0", "1"}, {"2"}},
      {"tcp_syn", {"0", "1"}, {"x"}},
      {"tcp_rst", {"0", "1"}, {"2"}},
      {"tcp_ack", {"0", "1"}, {"2"}},
      {"tcp_established", {"0", "1"}, {"2"}},
      {"log", {"0", "1"}, {"2"}},
      {"assign_queue", {"0", "7"}, {"8", "x"}},
      {"mirror_intf", {"1", "56"}, {"999", "x"}},
      {"redirect_intf", {"2", "57"}, {"0", "x"}},
      {"time_range", {"work"}, {"12345678901234567890123456789012"}},
      {"rate_limit", {"1", "1000"}, {"0", "x"}},
      {"burst_size", {"1", "128"}, {"129", "x"}},
  };
  return all;
}

class RandomRules {
public:
  RandomRules(unsigned seed, const rule_list &list) : random_(seed), list_(list) {}

  /* A request that would be good, with some variables left out, added, spoilt or given at random. */
  std::string query() {
    std::string text = chance(2) ? list_.plain : list_.conditions;
    if (chance(10)) text = "action=permit";
    for (const variable_values &variable : variables()) {
      if (!chance(10)) continue;
      const std::vector<std::string> &values = chance(20) ? variable.bad : variable.good;
      /* The first of several with one name counts. */
      std::string pair = variable.name + ("=" + values[random_() % values.size()]);
      text = chance(2) ? pair + "&" + text : text + "&" + pair;
    }
    return text;
  }
  bool chance(unsigned of) { return random_() % of == 0; }

private:
  std::mt19937 random_;
  const rule_list &list_;
};

static bool is_whole_json(const std::string &text) {
  int length = static_cast<int>(text.size()) - 1; /* without the newline that ends a body */
  json_tokener *tokener = json_tokener_new();
  json_object *object = json_tokener_parse_ex(tokener, text.c_str(), length);
  bool whole = object != nullptr && json_tokener_get_parse_end(tokener) == text.size() - 1;
  json_object_put(object);
  json_tokener_free(tokener);
  return whole && text.back() == '\n';
}

/* Every element that begins also ends, in order, around one root. */
static bool is_whole_xml(const std::string &text) {
  std::vector<std::string> open;
  for (size_t at = 0; (at = text.find('<', at)) != std::string::npos;) {
    size_t end = text.find('>', at);
    if (end == std::string::npos) return false;
    bool closes = text[at + 1] == '/';
    std::string name = text.substr(at + (closes ? 2 : 1), end - at - (closes ? 2 : 1));
    if (closes && (open.empty() || open.back() != name)) return false;
    if (closes) open.pop_back();
    if (!closes) open.push_back(name);
    at = end + 1;
    if (open.empty()) return text.substr(at) == "\n";
  }
  return false;
}

class AclRandomTest : public AclAnyCreationTest {
protected:
  /* Whether the request made a rule. */
  bool make(const std::string &query, const char *format) const {
    uint32_t before = rule_count(GetParam().id);
    FakeRequest request("POST", GetParam().uri(), with_format(query, format));
    bool returned = acl_api_handler(handle, request.conn()) == 1;
    std::string answer = answer_body(request, format);
    bool made = answer.find("Create successfully.") != std::string::npos;
    EXPECT_EQ(returned, made) << query;
    EXPECT_EQ(rule_count(GetParam().id), before + (made ? 1 : 0)) << query << "\n" << answer;
    EXPECT_TRUE(*format == 'x' ? is_whole_xml(answer) : is_whole_json(answer)) << query << "\n" << answer;
    return made;
  }
  /* Leaves two rules for later requests to meet as duplicates. */
  void delete_oldest() const {
    if (rule_count(GetParam().id) < 3) return;
    uint32_t ruleId = 0;
    EXPECT_EQ(rpcclt_openapiAclRuleGetFirst(handle, GetParam().id, &ruleId), OPEN_E_NONE);
    delete_rule(GetParam().id, ruleId);
  }
};

TEST_P(AclRandomTest, RequestMakesOneRuleOrNone) {
  unsigned made = 0, requests = 3000;
  for (unsigned seed : {1u, 20240229u}) {
    RandomRules random(seed, GetParam());
    for (unsigned i = 0; i < requests / 2 && !HasFailure(); i++) {
      made += make(random.query(), random.chance(2) ? "xml" : "json");
      delete_oldest();
    }
  }
  RecordProperty("made", static_cast<int>(made));
  /* Neither outcome is rare. */
  EXPECT_GT(made, requests / 20);
  EXPECT_LT(made, requests - requests / 20);
  Answers before = get(GetParam().list_uri());
  configure(lab("show running-config"));
  EXPECT_EQ(get(GetParam().list_uri()), before);
}

INSTANTIATE_TEST_SUITE_P(Lists, AclRandomTest, testing::Values(mac_list(), ipv4_list(), ipv6_list()));
