/* Random calls of the port MAC locking functions, with VLANs coming and going, against a small model of what
 * they should do: every result code and, from time to time and after restarts, everything that can be read.
 */
#include "platform/api/openapi_pml.h"

#include "tests/unit/platform/softswitch_test_support.h"

#include <map>
#include <random>
#include <set>

namespace {

constexpr size_t locks_per_interface = 3;

/* Port MAC locking as a textbook has it. */
struct expected_locking {
  using lock = std::pair<std::string, uint32_t>; /* address in upper case, VLAN */

  std::set<uint32_t> vlans = {1};
  std::set<uint32_t> sticky_mode;
  std::map<uint32_t, std::map<lock, uint32_t>> locks; /* by interface; the flag of each */

  static open_error_t check(uint32_t interface) {
    bool numbered = (interface >= 1 && interface <= 127) || (interface >= 226 && interface <= 353);
    if (!numbered) return OPEN_E_PARAM;
    return interface <= 119 && interface != 55 ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
  }

  /* The VLAN counts before the interface, and both before the address. */
  open_error_t check(uint32_t interface, const std::string &mac, uint32_t vlan) const {
    if (vlan < 1 || vlan > 4094) return OPEN_E_PARAM;
    if (!vlans.count(vlan)) return OPEN_E_NOT_FOUND;
    open_error_t rc = check(interface);
    return rc == OPEN_E_NONE && mac.size() != 17 ? OPEN_E_PARAM : rc;
  }

  open_error_t set_sticky_mode(uint32_t interface, uint32_t mode) {
    open_error_t rc = check(interface);
    if (rc != OPEN_E_NONE) return rc;
    sticky_mode.erase(interface);
    if (mode == 1) sticky_mode.insert(interface);
    return OPEN_E_NONE;
  }

  open_error_t add(uint32_t interface, const std::string &mac, uint32_t vlan, uint32_t sticky) {
    open_error_t rc = check(interface, mac, vlan);
    if (rc != OPEN_E_NONE) return rc;
    if (sticky > 1) return OPEN_E_PARAM;
    for (const auto &[number, here] : locks) {
      if (here.count({mac, vlan})) return OPEN_E_EXISTS;
    }
    if (locks[interface].size() >= locks_per_interface) return OPEN_E_FULL;
    locks[interface][{mac, vlan}] = sticky;
    return OPEN_E_NONE;
  }

  open_error_t remove(uint32_t interface, const std::string &mac, uint32_t vlan) {
    open_error_t rc = check(interface, mac, vlan);
    if (rc != OPEN_E_NONE) return rc;
    return locks[interface].erase({mac, vlan}) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
  }

  open_error_t remove_vlan(uint32_t vlan) {
    if (vlan < 1 || vlan > 4094) return OPEN_E_PARAM;
    if (vlan == 1) return OPEN_E_FAIL;
    if (!vlans.erase(vlan)) return OPEN_E_NOT_FOUND;
    for (auto &[number, here] : locks)
      std::erase_if(here, [&](const auto &entry) { return entry.first.second == vlan; });
    return OPEN_E_NONE;
  }
};

class RandomMacLocking : public SoftSwitch {
protected:
  template <typename T, size_t N> const T &one_of(const T (&values)[N]) { return values[random() % N]; }

  /* Makes one random call to both; the answers must agree. */
  void change() {
    static const uint32_t interfaces[] = {0, 1, 2, 54, 55, 56, 119, 120};
    static const uint32_t vlans[] = {0, 1, 2, 3, 4094, 4095};
    static const std::string macs[] = {"00:00:00:00:00:01", "00:00:00:00:00:0A", "02:AB:CD:EF:00:00",
                                       "FE:FF:FF:FF:FF:FF", "02:AB:CD:EF:00"};
    uint32_t interface = one_of(interfaces), vlan = one_of(vlans);
    uint32_t value = static_cast<uint32_t>(random() % 3);
    const std::string &mac = one_of(macs);
    std::string sent = mac;
    if (random() % 2) std::transform(sent.begin(), sent.end(), sent.begin(), ::tolower);
    open_buffdesc text = {static_cast<uint32_t>(sent.size() + random() % 2), sent.data()};
    switch (random() % 8) {
    case 0:
      return same(rpcclt_openapiPmlIntfStickyModeSet(&handle, interface, value),
                  expected.set_sticky_mode(interface, value));
    case 1:
      return same(rpcclt_openapiVlanDelete(&handle, vlan), expected.remove_vlan(vlan));
    case 2:
    case 3:
      if (rpcclt_openapiVlanCreate(&handle, vlan) == OPEN_E_NONE) expected.vlans.insert(vlan);
      return;
    case 4:
      return same(rpcclt_openapiPmlIntfStaticEntryDelete(&handle, interface, &text, vlan),
                  expected.remove(interface, mac, vlan));
    default:
      return same(rpcclt_openapiPmlIntfStaticEntryAdd(&handle, interface, &text, vlan, value),
                  expected.add(interface, mac, vlan, value));
    }
  }

  void same(open_error_t found, open_error_t wanted) {
    ASSERT_EQ(found, wanted);
    if (found == OPEN_E_NONE) done++;
  }

  std::map<expected_locking::lock, uint32_t> walk(uint32_t interface) {
    std::map<expected_locking::lock, uint32_t> found;
    char buffer[18];
    open_buffdesc text = {sizeof buffer, buffer};
    uint32_t vlan, sticky;
    open_error_t rc = rpcclt_openapiPmlIntfStaticEntryGetFirst(&handle, interface, &text, &vlan, &sticky);
    for (; rc == OPEN_E_NONE; text.size = sizeof buffer, rc = rpcclt_openapiPmlIntfStaticEntryGetNext(
                                                             &handle, interface, &text, &vlan, &sticky)) {
      expected_locking::lock lock = {buffer, vlan};
      EXPECT_TRUE(found.empty() || found.rbegin()->first < lock) << "out of order";
      found[lock] = sticky;
    }
    EXPECT_EQ(rc, OPEN_E_FAIL);
    return found;
  }

  void compare_all() {
    for (uint32_t interface = 1; interface <= 119; interface++) {
      uint32_t mode = 9;
      if (interface == 55) continue;
      ASSERT_EQ(rpcclt_openapiPmlIntfStickyModeGet(&handle, interface, &mode), OPEN_E_NONE);
      ASSERT_EQ(mode, expected.sticky_mode.count(interface)) << interface;
      ASSERT_EQ(walk(interface), expected.locks[interface]) << interface;
    }
  }

  void lower_limits() {
    ASSERT_TRUE(softswitch::set_limit("settle-milliseconds", 0));
    ASSERT_TRUE(softswitch::set_limit("static-macs", locks_per_interface));
  }

  std::mt19937 random{20260702};
  expected_locking expected;
  int done = 0;
};

TEST_F(RandomMacLocking, AgreesWithTheTextbookThroughRestarts) {
  change_through_restarts(
      20, 300, [&] { lower_limits(); }, [&] { change(); }, [&] { compare_all(); });
  EXPECT_GT(done, 500);
}

} // namespace
