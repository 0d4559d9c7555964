/* Random calls of the functions about access control lists, with VLANs and LAGs coming and going, against a
 * small model of what they should do: every result code and, from time to time and after restarts, everything
 * that can be read. */
#include "tests/unit/platform/acl_test_support.h"

#include <map>
#include <random>
#include <set>

namespace {

constexpr size_t list_limit = 5, rule_limit = 4, binding_limit = 3;

/* What a rule of the textbook has: few parts, of which one needs another and one is for IP lists alone. */
struct expected_rule {
  uint32_t action = 0;
  uint32_t protocol = 255;
  uint32_t port = 99; /* 99: none */
  uint32_t mirror = 0;
  bool operator==(const expected_rule &) const = default;
};

struct expected_list {
  uint32_t type;
  std::string name;
  std::map<uint32_t, expected_rule> rules;
};

/* Interfaces as they are, VLANs with 1000 added; and the direction. */
using place = std::pair<uint32_t, uint32_t>;

/* Access lists as a textbook has them. */
struct expected_acls {
  std::map<uint32_t, expected_list> lists;
  std::map<place, std::map<uint32_t, uint32_t>> bindings; /* list by sequence number */
  std::set<uint32_t> vlans = {1};
  bool lag = true; /* number 60 */

  bool target_of(uint32_t acl, uint32_t interface) {
    for (const auto &[number, rule] : lists[acl].rules)
      if (rule.mirror == interface) return true;
    return false;
  }

  bool bound_anywhere(uint32_t acl) {
    for (const auto &[where, here] : bindings)
      for (const auto &[sequence, id] : here)
        if (id == acl) return true;
    return false;
  }

  open_error_t create(uint32_t type, const std::string &name, uint32_t *id) {
    for (const auto &[number, list] : lists)
      if (list.type == type && list.name == name) return OPEN_E_EXISTS;
    if (lists.size() >= list_limit) return OPEN_E_FULL;
    for (*id = 1; lists.count(*id); ++*id) continue;
    lists[*id] = {type, name, {}};
    return OPEN_E_NONE;
  }

  open_error_t remove(uint32_t acl) {
    if (!lists.count(acl)) return OPEN_E_NOT_FOUND;
    if (bound_anywhere(acl)) return OPEN_E_FAIL;
    lists.erase(acl);
    return OPEN_E_NONE;
  }

  open_error_t add_rule(uint32_t acl, uint32_t *number, uint32_t action) {
    if (!lists.count(acl)) return OPEN_E_NOT_FOUND;
    auto &rules = lists[acl].rules;
    if (*number == 0) *number = rules.empty() ? 10 : (rules.rbegin()->first / 10 + 1) * 10;
    if (rules.count(*number)) return OPEN_E_EXISTS;
    if (rules.size() >= rule_limit) return OPEN_E_FULL;
    if (action > 1) return OPEN_E_PARAM;
    rules[*number].action = action;
    return OPEN_E_NONE;
  }

  expected_rule *rule(uint32_t acl, uint32_t number) {
    if (!lists.count(acl) || !lists[acl].rules.count(number)) return nullptr;
    return &lists[acl].rules[number];
  }

  open_error_t set_protocol(uint32_t acl, uint32_t number, uint32_t protocol) {
    expected_rule *found = rule(acl, number);
    if (!found) return OPEN_E_NOT_FOUND;
    if (lists[acl].type == 2) return OPEN_E_UNAVAIL;
    if (found->port != 99 && protocol != 6 && protocol != 17) return OPEN_E_PARAM;
    found->protocol = protocol;
    return OPEN_E_NONE;
  }

  open_error_t set_port(uint32_t acl, uint32_t number, uint32_t port) {
    expected_rule *found = rule(acl, number);
    if (!found) return OPEN_E_NOT_FOUND;
    if (lists[acl].type == 2) return OPEN_E_UNAVAIL;
    if (found->protocol != 6 && found->protocol != 17) return OPEN_E_PARAM;
    found->port = port;
    return OPEN_E_NONE;
  }

  open_error_t set_mirror(uint32_t acl, uint32_t number, uint32_t interface) {
    expected_rule *found = rule(acl, number);
    if (!found || (interface == 60 && !lag)) return OPEN_E_NOT_FOUND;
    for (uint32_t direction : {0u, 1u})
      for (const auto &[sequence, id] : bindings[{interface, direction}])
        if (id == acl) return OPEN_E_FAIL;
    found->mirror = interface;
    return OPEN_E_NONE;
  }

  open_error_t check(const place &where) {
    if (where.first > 1000) return vlans.count(where.first - 1000) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
    return where.first == 60 && !lag ? OPEN_E_NOT_FOUND : OPEN_E_NONE;
  }

  open_error_t bind(const place &where, uint32_t acl, uint32_t sequence) {
    if (check(where) != OPEN_E_NONE || !lists.count(acl)) return OPEN_E_NOT_FOUND;
    auto &here = bindings[where];
    for (const auto &[number, id] : here)
      if (id == acl) return OPEN_E_EXISTS;
    if (sequence == 0) sequence = here.empty() ? 1 : here.rbegin()->first + 1;
    if (here.count(sequence) || target_of(acl, where.first)) return OPEN_E_FAIL;
    if (here.size() >= binding_limit) return OPEN_E_FULL;
    here[sequence] = acl;
    return OPEN_E_NONE;
  }

  open_error_t unbind(const place &where, uint32_t acl) {
    if (check(where) != OPEN_E_NONE) return OPEN_E_NOT_FOUND;
    return std::erase_if(bindings[where], [&](const auto &entry) { return entry.second == acl; })
               ? OPEN_E_NONE
               : OPEN_E_NOT_FOUND;
  }

  void forget(uint32_t where) {
    for (uint32_t direction : {0u, 1u}) bindings.erase({where, direction});
  }

  open_error_t remove_lag() {
    if (!lag) return OPEN_E_NOT_FOUND;
    for (const auto &[acl, list] : lists)
      if (target_of(acl, 60)) return OPEN_E_FAIL;
    lag = false;
    forget(60);
    return OPEN_E_NONE;
  }
};

class RandomAccessLists : public AclSwitch {
protected:
  void SetUp() override { SoftSwitch::SetUp(); }

  template <typename T, size_t N> const T &one_of(const T (&values)[N]) { return values[random() % N]; }
  uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random() % limit); }

  void same(open_error_t found, open_error_t wanted, const char *what) {
    ASSERT_EQ(found, wanted) << what;
    if (found == OPEN_E_NONE) done++;
  }

  /* --- Random calls to both; the answers must agree --- */

  void change_lists() {
    static const std::string names[] = {"a", "b", "c"};
    uint32_t type = 1 + below(3), acl = 1 + below(6), id = 0, wanted = 0;
    const std::string &name = one_of(names);
    if (below(4) == 0) return same(rpcclt_openapiAclDelete(&handle, acl), expected.remove(acl), "delete");
    open_error_t rc = expected.create(type, name, &wanted);
    same(create(type, name, &id), rc, "create");
    ASSERT_EQ(id, rc == OPEN_E_NONE ? wanted : 0);
  }

  void change_rules() {
    static const uint32_t numbers[] = {0, 0, 5, 10, 15, 20};
    uint32_t acl = 1 + below(6), number = one_of(numbers), wanted = number, action = below(9) / 4;
    if (below(4) == 0) {
      bool there = expected.rule(acl, number) != nullptr;
      if (there) expected.lists[acl].rules.erase(number);
      return same(delete_rule(acl, number), there ? OPEN_E_NONE : OPEN_E_NOT_FOUND, "delete a rule");
    }
    open_error_t rc = expected.add_rule(acl, &wanted, action);
    same(rpcclt_openapiAclRuleActionAdd(&handle, acl, &number, action), rc, "make a rule");
    if (rc != OPEN_E_NONE) return;
    ASSERT_EQ(number, wanted);
  }

  void change_parts() {
    static const uint32_t protocols[] = {1, 6, 6, 17, 17, 255}, targets[] = {1, 2, 60};
    uint32_t acl = 1 + below(6), number = 5 * (1 + below(4));
    uint32_t protocol = one_of(protocols), port = below(3), target = one_of(targets);
    switch (below(3)) {
    case 0:
      return same(set_protocol(acl, number, protocol), expected.set_protocol(acl, number, protocol),
                  "protocol");
    case 1:
      return same(rpcclt_openapiAclRuleMatchL4DstPortAdd(&handle, acl, number, 0, port, 0),
                  expected.set_port(acl, number, port), "port");
    default:
      return same(rpcclt_openapiAclRuleMatchMirrorAdd(&handle, acl, number, target),
                  expected.set_mirror(acl, number, target), "mirror");
    }
  }

  void change_bindings() {
    static const uint32_t places[] = {1, 2, 60, 1001, 1002};
    uint32_t where = one_of(places), direction = below(2), acl = 1 + below(6), sequence = below(5);
    bool vlan = where > 1000;
    if (below(3) == 0)
      return same(vlan ? unbind_vlan(where - 1000, direction, acl) : unbind(where, direction, acl),
                  expected.unbind({where, direction}, acl), "unbind");
    same(vlan ? bind_vlan(where - 1000, direction, acl, sequence) : bind(where, direction, acl, sequence),
         expected.bind({where, direction}, acl, sequence), "bind");
  }

  void change_places() {
    switch (below(4)) {
    case 0:
      if (expected.lag)
        return same(rpcclt_openapiLagDeleteZYL(&handle, 60), expected.remove_lag(), "delete the LAG");
      expected.lag = true;
      return same(rpcclt_openapiLagCreateZYL(&handle, 60), OPEN_E_NONE, "make the LAG");
    case 1:
      if (!expected.vlans.erase(2)) return;
      expected.forget(1002);
      return same(rpcclt_openapiVlanDelete(&handle, 2), OPEN_E_NONE, "delete the VLAN");
    default:
      if (!expected.vlans.insert(2).second) return;
      return same(rpcclt_openapiVlanCreate(&handle, 2), OPEN_E_NONE, "make the VLAN");
    }
  }

  void change() {
    uint32_t what = below(16);
    if (what < 3) return change_lists();
    if (what < 7) return change_rules();
    if (what < 11) return change_parts();
    if (what < 15) return change_bindings();
    change_places();
  }

  /* --- Comparing --- */

  static std::string text_of(const expected_list &list, const expected_rule &rule) {
    std::string text = rule.action == 1 ? "deny every 0" : "permit every 0";
    if (list.type != 2) text += " protocol " + std::to_string(rule.protocol);
    if (rule.mirror != 0) text += " mirror " + std::to_string(rule.mirror);
    if (rule.port != 99) text += " destination-port 0/" + std::to_string(rule.port) + "/0";
    return text;
  }

  std::string bindings_of(const place &where) {
    std::string text;
    for (const auto &[sequence, acl] : expected.bindings[where])
      text += (text.empty() ? "" : ", ") + std::to_string(sequence) + ":type " +
              std::to_string(expected.lists[acl].type) + " acl " + std::to_string(acl);
    return text;
  }

  void compare_all() {
    for (const auto &[acl, list] : expected.lists) {
      ASSERT_EQ(find(list.type, list.name), static_cast<int>(acl));
      std::vector<uint32_t> numbers;
      for (const auto &[number, rule] : list.rules) {
        numbers.push_back(number);
        ASSERT_EQ(describe(acl, number), text_of(list, rule)) << acl << " " << number;
      }
      ASSERT_EQ(rules(acl), numbers) << acl;
    }
    for (uint32_t direction : {0u, 1u}) {
      for (uint32_t interface : {1u, 2u, 60u}) {
        if (expected.check({interface, direction}) != OPEN_E_NONE) continue;
        ASSERT_EQ(bound_at(interface, direction), bindings_of({interface, direction})) << interface;
      }
      for (uint32_t vlan : expected.vlans)
        ASSERT_EQ(bound_at_vlan(vlan, direction), bindings_of({1000 + vlan, direction})) << vlan;
    }
  }

  void lower_limits() {
    ASSERT_TRUE(softswitch::set_limit("settle-milliseconds", 0));
    ASSERT_TRUE(softswitch::set_limit("acls", list_limit));
    ASSERT_TRUE(softswitch::set_limit("acl-rules", rule_limit));
    ASSERT_TRUE(softswitch::set_limit("acl-bindings", binding_limit));
  }

  std::mt19937 random{20260811};
  expected_acls expected;
  int done = 0;
};

TEST_F(RandomAccessLists, AgreeWithTheTextbookThroughRestarts) {
  change_through_restarts(
      40, 400, [&] { lower_limits(); }, [&] { change(); }, [&] { compare_all(); });
  EXPECT_GT(done, 1500);
}

} // namespace
