/* Random calls of the VLAN functions against a small model of what they should do: every result code and,
 * from time to time and after restarts, everything that can be read. */
#include "tests/unit/platform/softswitch_test_support.h"

#include <map>
#include <random>
#include <set>

namespace {

struct expected_vlan {
  std::string name;
  std::map<uint32_t, uint32_t> participation; /* by interface, where it is not the default */
  std::set<uint32_t> tagged;
};

/* The switch as a textbook has it. */
struct expected_switch {
  std::map<uint32_t, expected_vlan> vlans = {{1, {"default", {}, {}}}};
  std::map<uint32_t, uint32_t> pvid, accept_frames; /* by interface, where it is not 1 */

  static bool is_member_port(uint32_t interface) {
    return interface >= 1 && interface <= 119 && interface != 55;
  }
  bool has(uint32_t vlan) const { return vlans.count(vlan) != 0; }

  open_error_t check(uint32_t vlan) const {
    if (vlan < 1 || vlan > 4094) return OPEN_E_PARAM;
    return has(vlan) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
  }
  static open_error_t check_interface(uint32_t interface) {
    bool numbered = (interface >= 1 && interface <= 127) || (interface >= 226 && interface <= 353);
    if (!numbered) return OPEN_E_PARAM;
    return is_member_port(interface) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
  }
  open_error_t check(uint32_t vlan, uint32_t interface) const {
    open_error_t rc = check(vlan);
    return rc == OPEN_E_NONE ? check_interface(interface) : rc;
  }

  open_error_t create(uint32_t vlan) {
    if (vlan < 1 || vlan > 4094) return OPEN_E_PARAM;
    return vlans.try_emplace(vlan).second ? OPEN_E_NONE : OPEN_E_EXISTS;
  }
  open_error_t remove(uint32_t vlan) {
    open_error_t rc = check(vlan);
    if (rc != OPEN_E_NONE) return rc;
    if (vlan == 1) return OPEN_E_FAIL;
    vlans.erase(vlan);
    std::erase_if(pvid, [&](const auto &entry) { return entry.second == vlan; });
    return OPEN_E_NONE;
  }
  open_error_t set_name(uint32_t vlan, const std::string &name) {
    open_error_t rc = check(vlan);
    if (rc != OPEN_E_NONE) return rc;
    if (name.size() > 32 || name.find('\n') != std::string::npos) return OPEN_E_PARAM;
    vlans[vlan].name = name;
    return OPEN_E_NONE;
  }
  open_error_t set_participation(uint32_t vlan, uint32_t interface, uint32_t mode) {
    open_error_t rc = check(vlan, interface);
    if (rc != OPEN_E_NONE) return rc;
    if (mode > 2) return OPEN_E_PARAM;
    vlans[vlan].participation[interface] = mode;
    return OPEN_E_NONE;
  }
  open_error_t set_tagging(uint32_t interface, uint32_t vlan, uint32_t tagged) {
    open_error_t rc = check(vlan, interface);
    if (rc != OPEN_E_NONE) return rc;
    if (tagged > 1) return OPEN_E_PARAM;
    if (tagged)
      vlans[vlan].tagged.insert(interface);
    else
      vlans[vlan].tagged.erase(interface);
    return OPEN_E_NONE;
  }
  open_error_t set_pvid(uint32_t interface, uint32_t vlan) {
    open_error_t rc = check(vlan, interface);
    if (rc != OPEN_E_NONE) return rc;
    pvid[interface] = vlan;
    return OPEN_E_NONE;
  }
  open_error_t set_accept_frames(uint32_t interface, uint32_t type) {
    open_error_t rc = check_interface(interface);
    if (rc != OPEN_E_NONE) return rc;
    if (type < 1 || type > 3) return OPEN_E_PARAM;
    accept_frames[interface] = type;
    return OPEN_E_NONE;
  }
};

class RandomChanges : public SoftSwitch {
protected:
  template <size_t N> uint32_t one_of(const uint32_t (&values)[N]) {
    return values[std::uniform_int_distribution<size_t>(0, N - 1)(random)];
  }

  /* Makes one random call to both; the answers must agree. */
  void change() {
    static const uint32_t vlans[] = {0, 1, 2, 3, 10, 11, 12, 4093, 4094, 4095};
    static const uint32_t interfaces[] = {0, 1, 2, 54, 55, 56, 119, 120, 353, 9999};
    static const uint32_t values[] = {0, 1, 2, 3, 4};
    static const std::string names[] = {
        "", "a", "two words", "\"\\", std::string(32, 'x'), std::string(33, 'x'), "\n"};
    uint32_t vlan = one_of(vlans), interface = one_of(interfaces), value = one_of(values);
    const std::string &name = names[random() % std::size(names)];
    switch (random() % 7) {
    case 0:
      return same(rpcclt_openapiVlanCreate(&handle, vlan), expected.create(vlan));
    case 1:
      return same(rpcclt_openapiVlanDelete(&handle, vlan), expected.remove(vlan));
    case 2:
      return same(set_name(vlan, name), expected.set_name(vlan, name));
    case 3:
      return same(rpcclt_openapiVlanIfParticipationSet(&handle, vlan, interface, value),
                  expected.set_participation(vlan, interface, value));
    case 4:
      return same(rpcclt_openapiVlanIfTaggingSet(&handle, interface, vlan, value),
                  expected.set_tagging(interface, vlan, value));
    case 5:
      return same(rpcclt_openapiVlanIfPvidSet(&handle, interface, vlan), expected.set_pvid(interface, vlan));
    default:
      return same(rpcclt_openapiVlanIfAcceptFrameTypeSet(&handle, interface, value),
                  expected.set_accept_frames(interface, value));
    }
  }

  void same(open_error_t found, open_error_t wanted) { ASSERT_EQ(found, wanted); }

  void compare_vlan(uint32_t vlan, const expected_vlan &wanted) {
    ASSERT_EQ(name_of(vlan), wanted.name);
    for (uint32_t interface = 1; interface <= 119; interface++) {
      if (interface == 55) continue;
      uint32_t mode = 9, member = 9, tagged = 9;
      auto set = wanted.participation.find(interface);
      uint32_t wanted_mode = set == wanted.participation.end() ? (vlan == 1 ? 0 : 1) : set->second;
      ASSERT_EQ(rpcclt_openapiVlanIfParticipationGet(&handle, vlan, interface, &mode), OPEN_E_NONE);
      ASSERT_EQ(openapiVlanIfParticipationStatusGet(&handle, vlan, interface, &member), OPEN_E_NONE);
      ASSERT_EQ(openapiVlanIfTaggingGet(&handle, interface, vlan, &tagged), OPEN_E_NONE);
      ASSERT_EQ(mode, wanted_mode);
      ASSERT_EQ(member, wanted_mode == 0 ? 1u : 0u);
      ASSERT_EQ(tagged, wanted.tagged.count(interface));
    }
  }

  void compare_all() {
    std::vector<uint32_t> found, wanted;
    uint32_t vlan = 0;
    while (rpcclt_openapiVlanNextGet(&handle, vlan, &vlan) == OPEN_E_NONE) found.push_back(vlan);
    for (const auto &[id, entry] : expected.vlans) wanted.push_back(id);
    ASSERT_EQ(found, wanted);
    for (const auto &[id, entry] : expected.vlans) compare_vlan(id, entry);
    for (uint32_t interface = 1; interface <= 119; interface++) {
      uint32_t pvid, type;
      if (interface == 55) continue;
      ASSERT_EQ(openapiVlanIfPvidGet(&handle, interface, &pvid), OPEN_E_NONE);
      ASSERT_EQ(rpcclt_openapiVlanIfAcceptFrameTypeGet(&handle, interface, &type), OPEN_E_NONE);
      ASSERT_EQ(pvid, expected.pvid.count(interface) ? expected.pvid[interface] : 1u);
      ASSERT_EQ(type, expected.accept_frames.count(interface) ? expected.accept_frames[interface] : 1u);
    }
  }

  std::mt19937 random{20260701};
  expected_switch expected;
};

TEST_F(RandomChanges, AgreeWithTheTextbookThroughRestarts) {
  change_through_restarts(
      20, 400, [&] { ASSERT_TRUE(softswitch::set_limit("settle-milliseconds", 0)); }, [&] { change(); },
      [&] { compare_all(); });
  ASSERT_TRUE(softswitch::wait_applied(patience_ms));
  EXPECT_EQ(pending_vlans(), std::vector<int>());
}

} // namespace
