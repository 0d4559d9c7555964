/* Long random sequences of everything that bears on VLAN membership. Through the C interface against a small
 * model of its own: every result code, and everything that can be read. And on the model of the switch: what
 * reads differently after a change is pending, the data plane is told what management reads, and what is
 * printed gives the same switch. */
#include "platform/softswitch/dataplane/driver.h"
#include "tests/unit/platform/membership_test_support.h"

#include <map>
#include <random>
#include <set>

namespace {

/* --- The expectation ------------------------------------------------------------------------------------ */

using ids = std::set<uint32_t>;

struct expected_interface {
  uint32_t mode = 1, access = 1, native = 1, pvid = 1, frames = 1;
  uint32_t lag = 0;
  ids list;
  std::map<uint32_t, uint32_t> participation; /* by VLAN, where it was set */
  ids tagged;
};

/* The switch as the headers of the platform describe it. */
struct expected_switch {
  static constexpr size_t lag_room = 2;
  ids vlans = {1};
  std::map<uint32_t, expected_interface> interfaces; /* ports and LAGs that exist */

  expected_switch() {
    for (uint32_t number = 1; number <= 119; number++) {
      if (number != 55) interfaces[number] = {};
    }
  }

  static open_error_t absent(uint32_t interface) {
    bool numbered = (interface >= 1 && interface <= 127) || (interface >= 226 && interface <= 353);
    return numbered ? OPEN_E_NOT_FOUND : OPEN_E_PARAM;
  }
  open_error_t check_interface(uint32_t interface) const {
    return interfaces.count(interface) ? OPEN_E_NONE : absent(interface);
  }
  open_error_t check_vlan(uint32_t vlan) const {
    if (vlan < 1 || vlan > 4094) return OPEN_E_PARAM;
    return vlans.count(vlan) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
  }
  open_error_t check(uint32_t vlan, uint32_t interface) const {
    open_error_t rc = check_vlan(vlan);
    return rc == OPEN_E_NONE ? check_interface(interface) : rc;
  }

  open_error_t create_vlan(uint32_t vlan) {
    if (vlan < 1 || vlan > 4094) return OPEN_E_PARAM;
    return vlans.insert(vlan).second ? OPEN_E_NONE : OPEN_E_EXISTS;
  }
  open_error_t delete_vlan(uint32_t vlan) {
    open_error_t rc = check_vlan(vlan);
    if (rc != OPEN_E_NONE) return rc;
    if (vlan == 1) return OPEN_E_FAIL;
    vlans.erase(vlan);
    for (auto &[number, entry] : interfaces) {
      for (uint32_t *id : {&entry.access, &entry.native, &entry.pvid}) *id = *id == vlan ? 1 : *id;
      entry.participation.erase(vlan);
      entry.tagged.erase(vlan);
    }
    return OPEN_E_NONE;
  }

  open_error_t set_participation(uint32_t vlan, uint32_t interface, uint32_t mode) {
    open_error_t rc = check(vlan, interface);
    if (rc == OPEN_E_NONE && mode > 2) rc = OPEN_E_PARAM;
    if (rc == OPEN_E_NONE) interfaces[interface].participation[vlan] = mode;
    return rc;
  }
  open_error_t set_tagging(uint32_t vlan, uint32_t interface, uint32_t tagged) {
    open_error_t rc = check(vlan, interface);
    if (rc == OPEN_E_NONE && tagged > 1) rc = OPEN_E_PARAM;
    if (rc != OPEN_E_NONE) return rc;
    interfaces[interface].tagged.erase(vlan);
    if (tagged) interfaces[interface].tagged.insert(vlan);
    return OPEN_E_NONE;
  }
  open_error_t set_pvid(uint32_t vlan, uint32_t interface) {
    open_error_t rc = check(vlan, interface);
    if (rc == OPEN_E_NONE) interfaces[interface].pvid = vlan;
    return rc;
  }
  open_error_t set_frames(uint32_t interface, uint32_t type) {
    open_error_t rc = check_interface(interface);
    if (rc == OPEN_E_NONE && (type < 1 || type > 3)) rc = OPEN_E_PARAM;
    if (rc == OPEN_E_NONE) interfaces[interface].frames = type;
    return rc;
  }
  open_error_t set_mode(uint32_t interface, uint32_t mode) {
    open_error_t rc = check_interface(interface);
    if (rc == OPEN_E_NONE && (mode < 1 || mode > 3)) rc = OPEN_E_PARAM;
    if (rc == OPEN_E_NONE) interfaces[interface].mode = mode;
    return rc;
  }
  /* Access and native VLAN: the interface is looked at first. */
  open_error_t set_vlan(uint32_t interface, uint32_t vlan, uint32_t expected_interface::*which) {
    open_error_t rc = check_interface(interface);
    if (rc == OPEN_E_NONE) rc = check_vlan(vlan);
    if (rc == OPEN_E_NONE) interfaces[interface].*which = vlan;
    return rc;
  }
  open_error_t change_list(uint32_t interface, uint32_t how, bool readable, const ids &vlans_of_text) {
    open_error_t rc = check_interface(interface);
    if (rc == OPEN_E_NONE && ((how != 1 && how != 3) || !readable)) rc = OPEN_E_PARAM;
    if (rc != OPEN_E_NONE) return rc;
    for (uint32_t vlan : vlans_of_text) {
      interfaces[interface].list.erase(vlan);
      if (how == 1) interfaces[interface].list.insert(vlan);
    }
    return OPEN_E_NONE;
  }
  open_error_t replace_list(uint32_t interface, uint32_t how, bool readable, const ids &vlans_of_text) {
    open_error_t rc = check_interface(interface);
    if (rc == OPEN_E_NONE && (how != 1 || !readable)) rc = OPEN_E_PARAM;
    if (rc == OPEN_E_NONE) interfaces[interface].list = vlans_of_text;
    return rc;
  }

  static bool is_lag(uint32_t number) { return number >= 56 && number <= 119; }
  open_error_t check_lag(uint32_t lag) const {
    return is_lag(lag) && interfaces.count(lag) ? OPEN_E_NONE : absent(lag);
  }
  open_error_t check_members(uint32_t lag, uint32_t port) const {
    open_error_t rc = check_lag(lag);
    if (rc != OPEN_E_NONE) return rc;
    return port >= 1 && port <= 54 ? OPEN_E_NONE : absent(port);
  }
  std::vector<uint32_t> members(uint32_t lag) const {
    std::vector<uint32_t> found;
    for (const auto &[number, entry] : interfaces) {
      if (entry.lag == lag) found.push_back(number);
    }
    return found;
  }
  open_error_t add_port(uint32_t lag, uint32_t port) {
    open_error_t rc = check_members(lag, port);
    if (rc != OPEN_E_NONE) return rc;
    uint32_t &present = interfaces[port].lag;
    if (present != 0) return present == lag ? OPEN_E_EXISTS : OPEN_E_FAIL;
    if (members(lag).size() >= lag_room) return OPEN_E_FULL;
    present = lag;
    return OPEN_E_NONE;
  }
  open_error_t remove_port(uint32_t lag, uint32_t port) {
    open_error_t rc = check_members(lag, port);
    if (rc == OPEN_E_NONE && interfaces[port].lag != lag) rc = OPEN_E_NOT_FOUND;
    if (rc == OPEN_E_NONE) interfaces[port].lag = 0;
    return rc;
  }
  open_error_t delete_lag(uint32_t lag) {
    open_error_t rc = check_lag(lag);
    if (rc != OPEN_E_NONE) return rc;
    for (uint32_t port : members(lag)) interfaces[port].lag = 0;
    interfaces.erase(lag);
    return OPEN_E_NONE;
  }
  open_error_t create_lag(uint32_t lag) {
    if (!is_lag(lag)) return absent(lag);
    return interfaces.try_emplace(lag).second ? OPEN_E_NONE : OPEN_E_EXISTS;
  }

  part part_in(uint32_t vlan, const expected_interface &entry) const {
    if (entry.lag != 0) return excluded;
    if (entry.mode == 2) return vlan == entry.access ? untagged_member : excluded;
    if (entry.mode == 3 && vlan == entry.native) return untagged_member;
    if (entry.mode == 3) return entry.list.count(vlan) ? tagged_member : excluded;
    auto set = entry.participation.find(vlan);
    uint32_t participation = vlan == 1 ? 0 : 1;
    if (set != entry.participation.end()) participation = set->second;
    return {participation, participation == 0, static_cast<uint32_t>(entry.tagged.count(vlan))};
  }
  static uint32_t pvid(const expected_interface &entry) {
    if (entry.mode == 2) return entry.access;
    return entry.mode == 3 ? entry.native : entry.pvid;
  }
};

/* --- Through the C interface ---------------------------------------------------------------------------- */

struct list_text {
  const char *text;
  bool readable;
  ids vlans;
};

ids from_to(uint32_t first, uint32_t last) {
  ids all;
  for (; first <= last; first++) all.insert(first);
  return all;
}

const list_text list_texts[] = {
    {"1", true, {1}},
    {"2-3", true, {2, 3}},
    {"3,10,4094", true, {3, 10, 4094}},
    {"10,10,2", true, {2, 10}},
    {"1-4094", true, from_to(1, 4094)},
    {"2,1-2", true, {1, 2}},
    {"", false, {}},
    {"3-2", false, {}},
    {"1,4095", false, {}},
    {"2, 3", false, {}},
};

class Membership : public MembershipTest {
protected:
  template <size_t N> uint32_t one_of(const uint32_t (&values)[N]) { return values[random() % N]; }

  /* Makes one random call to both; the answers must agree. */
  void change() {
    static const uint32_t vlans[] = {1, 1, 2, 2, 3, 3, 10, 10, 4094, 4094, 0, 4095};
    static const uint32_t interfaces[] = {1, 1, 2, 2, 54, 54, 56, 56, 119, 119, 0, 55, 120, 9999};
    uint32_t vlan = one_of(vlans), interface = one_of(interfaces), value = random() % 5;
    switch (random() % 10) {
    case 0:
      return same(rpcclt_openapiVlanCreate(&handle, vlan), expected.create_vlan(vlan));
    case 1:
      return same(rpcclt_openapiVlanDelete(&handle, vlan), expected.delete_vlan(vlan));
    case 2:
      return change_general(vlan, interface, value);
    case 3:
    case 4:
      return same(set_mode(interface, value), expected.set_mode(interface, value));
    case 5:
      return same(set_access(interface, vlan),
                  expected.set_vlan(interface, vlan, &expected_interface::access));
    case 6:
      return same(set_native(interface, vlan),
                  expected.set_vlan(interface, vlan, &expected_interface::native));
    case 7:
      return change_trunk(interface, value, list_texts[random() % std::size(list_texts)]);
    default:
      return change_lag();
    }
  }

  void change_general(uint32_t vlan, uint32_t interface, uint32_t value) {
    switch (random() % 4) {
    case 0:
      return same(rpcclt_openapiVlanIfParticipationSet(&handle, vlan, interface, value),
                  expected.set_participation(vlan, interface, value));
    case 1:
      return same(rpcclt_openapiVlanIfTaggingSet(&handle, interface, vlan, value),
                  expected.set_tagging(vlan, interface, value));
    case 2:
      return same(rpcclt_openapiVlanIfPvidSet(&handle, interface, vlan), expected.set_pvid(vlan, interface));
    default:
      return same(rpcclt_openapiVlanIfAcceptFrameTypeSet(&handle, interface, value),
                  expected.set_frames(interface, value));
    }
  }

  void change_trunk(uint32_t interface, uint32_t how, const list_text &list) {
    if (random() % 3 == 0)
      return same(replace_list(interface, list.text, how),
                  expected.replace_list(interface, how, list.readable, list.vlans));
    return same(MembershipTest::change_list(interface, how, list.text),
                expected.change_list(interface, how, list.readable, list.vlans));
  }

  void change_lag() {
    static const uint32_t lags[] = {56, 56, 57, 119, 119, 55, 128};
    static const uint32_t ports[] = {1, 1, 2, 2, 3, 3, 54, 54, 0, 55, 56};
    uint32_t lag = one_of(lags), port = one_of(ports);
    switch (random() % 8) {
    case 0:
      return same(rpcclt_openapiLagDeleteZYL(&handle, lag), expected.delete_lag(lag));
    case 1:
    case 2:
      return same(rpcclt_openapiLagCreateZYL(&handle, lag), expected.create_lag(lag));
    case 3:
    case 4:
      return same(remove_port(lag, port), expected.remove_port(lag, port));
    default:
      return same(add_port(lag, port), expected.add_port(lag, port));
    }
  }

  void same(open_error_t found, open_error_t wanted) {
    answers[wanted]++;
    ASSERT_EQ(found, wanted);
  }

  void compare_interface(uint32_t number, const expected_interface &wanted) {
    ASSERT_EQ(mode(number), wanted.mode) << number;
    ASSERT_EQ(pvid(number), expected_switch::pvid(wanted)) << number;
    ASSERT_EQ(accept_frames(number), wanted.frames) << number;
    for (uint32_t vlan : expected.vlans)
      ASSERT_EQ(part_in(vlan, number), expected.part_in(vlan, wanted)) << number << " in VLAN " << vlan;
    if (expected_switch::is_lag(number)) {
      ASSERT_EQ(members(number), expected.members(number)) << number;
    }
  }

  void compare_all() {
    ids found;
    uint32_t vlan = 0, nothing;
    while (rpcclt_openapiVlanNextGet(&handle, vlan, &vlan) == OPEN_E_NONE) found.insert(vlan);
    ASSERT_EQ(found, expected.vlans);
    for (uint32_t number = 1; number <= 119; number++) {
      auto entry = expected.interfaces.find(number);
      if (entry != expected.interfaces.end()) {
        compare_interface(number, entry->second);
      } else {
        ASSERT_EQ(rpcclt_openapiIfSwitchportModeGet(&handle, number, &nothing), OPEN_E_NOT_FOUND) << number;
        ASSERT_EQ(openapiVlanIfParticipationStatusGet(&handle, 1, number, &nothing), OPEN_E_NOT_FOUND);
      }
      if (HasFatalFailure()) return;
    }
  }

  void begin() {
    softswitch::set_limit("lag-members", expected_switch::lag_room);
    softswitch::set_limit("settle-milliseconds", 0);
  }

  std::mt19937 random;
  expected_switch expected;
  std::map<open_error_t, int> answers; /* how often each was expected */
};

TEST_F(Membership, AgreesWithItsDescriptionThroughRestarts) {
  random.seed(20260702);
  change_through_restarts(
      40, 250, [&] { begin(); }, [&] { change(); }, [&] { compare_all(); });
  for (open_error_t code :
       {OPEN_E_NONE, OPEN_E_PARAM, OPEN_E_NOT_FOUND, OPEN_E_EXISTS, OPEN_E_FAIL, OPEN_E_FULL})
    EXPECT_GT(answers[code], 10) << "the sequence must meet code " << code;
  ASSERT_TRUE(softswitch::wait_applied(patience_ms));
  EXPECT_EQ(pending_vlans(), std::vector<int>());
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
}

/* --- On the model --------------------------------------------------------------------------------------- */

using namespace softswitch;

/* One line of random content; it may or may not apply. */
std::string random_line(std::mt19937 &random) {
  static const char *const ports[] = {"0/1", "0/2", "0/54", "3/1", "3/64"};
  static const char *const lists[] = {"1", "2", "3,10", "2-10", "1-4094", "4000-4094"};
  std::string vlan = std::to_string(random() % 6 + 1);
  std::string list = lists[random() % std::size(lists)];
  std::string lag = random() % 2 == 0 ? "1" : "64";
  std::string port = std::string("interface ") + ports[random() % std::size(ports)];
  const std::string lines[] = {
      "vlan " + vlan,
      "vlan 2-10",
      "no vlan " + vlan,
      port + " vlan " + vlan + " participation include",
      port + " vlan " + vlan + " participation exclude",
      port + " vlan " + vlan + " tagging",
      "no " + port + " vlan " + vlan + " tagging",
      port + " pvid " + vlan,
      port + " switchport mode general",
      port + " switchport mode access",
      port + " switchport mode trunk",
      "no " + port + " switchport mode",
      port + " switchport access vlan " + vlan,
      "no " + port + " switchport access vlan",
      port + " switchport trunk native vlan " + vlan,
      "no " + port + " switchport trunk native vlan",
      port + " switchport trunk vlans add " + list,
      port + " switchport trunk vlans remove " + list,
      port + " switchport trunk vlans only " + list,
      "no " + port + " switchport trunk vlans",
      port + " lag " + lag,
      "no " + port + " lag",
      "lag " + lag,
      "no lag " + lag,
  };
  return lines[random() % std::size(lines)];
}

/* What can be read of all interfaces in all VLANs: (VLAN, interface) -> bit 0 tagging, bit 1 membership, the
 * rest participation; and (0, interface) -> port VLAN id. */
std::map<std::pair<uint32_t, uint32_t>, uint32_t> readable(const switch_model &model) {
  std::map<std::pair<uint32_t, uint32_t>, uint32_t> all;
  each_switching_interface(model, [&](uint32_t interface) {
    all[{0, interface}] = pvid_in_force(model, interface);
    for (const vlan_entry &vlan : model.vlans->entries) {
      if (!vlan.exists) continue;
      uint32_t &value = all[{vlan.id, interface}];
      value = vlan_participation_in_force(model, vlan, interface) << 2;
      if (vlan_has_member(model, vlan, interface)) value |= 2;
      if (vlan_tagging_in_force(model, vlan, interface)) value |= 1;
    }
  });
  return all;
}

bool is_pending(const switch_model &model, uint32_t vlan, uint32_t interface) {
  uint32_t found, deleted;
  if (interface_next_changed(model, interface - 1, &found, &deleted) != OPEN_E_NONE || found != interface)
    return false;
  if (vlan == 0) return true;
  return vlan_next_changed(model, vlan - 1, &found, &deleted) == OPEN_E_NONE && found == vlan;
}

/* Whether a change of what is readable there is one that the data plane must hear of. That participation is
 * auto or exclude makes no difference to it. */
bool concerns_the_data_plane(uint32_t vlan, uint32_t was, uint32_t is) {
  return vlan == 0 ? was != is : (was & 3) != (is & 3);
}

/* Whatever is another membership, tagging or port VLAN id must be pending: the interface, and the VLAN. Who
 * has no part in a VLAN (0) is not touched when that comes or goes. */
void expect_changes_are_pending(const switch_model &before, const switch_model &after) {
  auto old = readable(before), now = readable(after), all = old;
  all.insert(now.begin(), now.end());
  for (const auto &[where, value] : all) {
    if (!concerns_the_data_plane(where.first, old[where], now[where])) continue;
    ASSERT_TRUE(is_pending(after, where.first, where.second))
        << "VLAN " << where.first << ", interface " << where.second;
  }
}

/* The data plane is told what management reads. */
void expect_wanted_is_what_is_read(const switch_model &model) {
  std::unique_ptr<const wanted_state> wanted = compile_wanted(model);
  for (const wanted_vlan &vlan : wanted->vlans) {
    const vlan_entry *entry = vlan_find(model, vlan.id);
    for (uint32_t interface = 1; interface <= lag_last; interface++) {
      bool member = vlan_has_member(model, *entry, interface);
      ASSERT_EQ(vlan.members[interface], member) << vlan.id << ", " << interface;
      bool tagged = member && vlan_tagging_in_force(model, *entry, interface);
      ASSERT_EQ(vlan.tagged[interface], tagged) << vlan.id << ", " << interface;
    }
  }
  each_switching_interface(model, [&](uint32_t interface) {
    ASSERT_EQ(wanted->ports[interface].pvid, pvid_in_force(model, interface));
    ASSERT_EQ(wanted->ports[interface].lag, model.interfaces->at[interface].lag);
  });
}

void expect_print_gives_the_same(const switch_model &model) {
  std::string printed = print_configuration(model), error;
  switch_model again = make_switch(built_in_profile());
  ASSERT_TRUE(apply_text(again, printed, &error)) << error << "\n" << printed;
  ASSERT_EQ(print_configuration(again), printed);
  ASSERT_EQ(readable(again), readable(model)) << printed;
}

TEST(MembershipChanges, ArePendingWhereTheyShowAndReachTheDataPlane) {
  for (unsigned seed = 0; seed < 5; seed++) {
    std::mt19937 random(seed);
    switch_model model = make_switch(built_in_profile());
    int applied = 0;
    for (int step = 0; step < 250; step++) {
      changes_taken(model, model.change);
      switch_model changed = model;
      std::string line = random_line(random), error;
      SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step) + ": " + line);
      if (apply_line(changed, line, &error) != OPEN_E_NONE) {
        ASSERT_NE(error, "");
        continue;
      }
      bool prints_the_same = print_configuration(changed) == print_configuration(model);
      ASSERT_EQ(changed.change == model.change, prints_the_same);
      expect_changes_are_pending(model, changed);
      expect_wanted_is_what_is_read(changed);
      if (testing::Test::HasFatalFailure()) return;
      model = changed;
      if (applied++ % 10 != 0) continue;
      expect_print_gives_the_same(model);
      if (testing::Test::HasFatalFailure()) return;
    }
    ASSERT_GT(applied, 100);
  }
}

} // namespace
