/* Random calls of the routing functions, with VLANs, LAG members and offers coming and going, against a small
 * model of what they should do: every result code and, from time to time and after restarts, everything that
 * can be read. */
#include "platform/api/openapi_lag.h"
#include "platform/api/openapi_routing.h"

#include "tests/unit/platform/address_test_support.h"
#include "tests/unit/platform/softswitch_test_support.h"

#include <map>
#include <random>
#include <set>

namespace {

constexpr uint32_t given = OPEN_INTF_IP_ADDR_PRIMARY, secondary = OPEN_INTF_IP_ADDR_SECONDARY,
                   automatic = OPEN_INTF_IP_ADDR_AUTO;
constexpr size_t vlan_interfaces_max = 3, secondary_max = 2, ipv6_max = 3;

/* An address of the test: network and host, each 1 to 9, with a prefix of the network (long) or of all
 * networks of its family. The text says everything. */
struct test_address {
  uint32_t family, network, host;
  bool wide;

  std::string text() const {
    std::string net = std::to_string(network), end = std::to_string(host);
    if (family == OPEN_AF_INET) return "10.0." + net + "." + end + (wide ? "/16" : "/24");
    return "2001:db8:0:" + net + "::" + end + (wide ? "/48" : "/64");
  }
  bool same_address(const test_address &other) const {
    return family == other.family && network == other.network && host == other.host;
  }
  bool operator==(const test_address &other) const { return same_address(other) && wide == other.wide; }
  bool overlaps(const test_address &other) const {
    return family == other.family && (wide || other.wide || network == other.network);
  }
};
using address_list = std::vector<test_address>;

struct expected_interface {
  bool dhcp = false, autoconfiguration = false;
  address_list primary; /* one or none */
  address_list secondary, ipv6;
  address_list offers; /* one of each family at most */
};

bool has_address(const address_list &list, const test_address &address) {
  return std::any_of(list.begin(), list.end(),
                     [&](const test_address &each) { return each.same_address(address); });
}
bool has(const address_list &list, const test_address &address) {
  return std::find(list.begin(), list.end(), address) != list.end();
}
bool any_overlaps(const address_list &list, const test_address &address) {
  return std::any_of(list.begin(), list.end(),
                     [&](const test_address &each) { return each.overlaps(address); });
}

/* Routing as a textbook has it. */
struct expected_routing {
  std::map<uint32_t, uint32_t> modes = {{OPEN_AF_INET, 0}, {OPEN_AF_INET6, 0}};
  std::map<uint32_t, bool> routing;          /* by interface, where it was set */
  std::map<uint32_t, uint32_t> vlan_of;      /* by VLAN routing interface */
  std::set<uint32_t> vlans = {1, 2, 3, 4};   /* which never go */
  std::map<uint32_t, expected_interface> of; /* by interface */
  bool port_in_lag = false;                  /* whether port 2 is in LAG 56 */

  open_error_t check(uint32_t interface) const {
    if (interface == 0 || interface == 128 || interface == 354) return OPEN_E_PARAM;
    return interface < 226 || vlan_of.count(interface) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
  }

  open_error_t set_mode(uint32_t family, uint32_t mode) {
    if (!modes.count(family) || mode > 1) return OPEN_E_PARAM;
    modes[family] = mode;
    return OPEN_E_NONE;
  }

  open_error_t set_interface_mode(uint32_t interface, uint32_t mode) {
    open_error_t rc = check(interface);
    if (rc != OPEN_E_NONE) return rc;
    if (mode > 1) return OPEN_E_PARAM;
    if (interface == 55 || interface == 120) return OPEN_E_UNAVAIL;
    routing[interface] = mode == 1;
    return OPEN_E_NONE;
  }

  uint32_t number_of(uint32_t vlan) const {
    for (const auto &[number, routed] : vlan_of) {
      if (routed == vlan) return number;
    }
    return 0;
  }

  open_error_t check_vlan(uint32_t vlan) const {
    if (vlan < 1 || vlan > 4094) return OPEN_E_PARAM;
    return vlans.count(vlan) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
  }

  open_error_t create(uint32_t vlan) {
    open_error_t rc = check_vlan(vlan);
    if (rc != OPEN_E_NONE) return rc;
    if (number_of(vlan) != 0) return OPEN_E_EXISTS;
    if (vlan_of.size() >= vlan_interfaces_max) return OPEN_E_FULL;
    uint32_t number = 226;
    while (vlan_of.count(number)) number++;
    vlan_of[number] = vlan;
    routing[number] = true;
    return OPEN_E_NONE;
  }

  open_error_t remove(uint32_t vlan) {
    open_error_t rc = check_vlan(vlan);
    if (rc != OPEN_E_NONE) return rc;
    uint32_t number = number_of(vlan);
    if (number == 0) return OPEN_E_NOT_FOUND;
    vlan_of.erase(number);
    routing.erase(number);
    of.erase(number);
    return OPEN_E_NONE;
  }

  bool taken_elsewhere(uint32_t interface, const test_address &address) const {
    for (const auto &[number, entry] : of) {
      if (number == interface) continue;
      if (any_overlaps(entry.primary, address) || any_overlaps(entry.secondary, address) ||
          any_overlaps(entry.ipv6, address))
        return true;
    }
    return false;
  }

  /* What holds for every address before anything else. */
  open_error_t check_address(uint32_t interface, uint32_t method, const test_address &address) const {
    if (address.family == OPEN_AF_INET6 && method == secondary) return OPEN_E_PARAM;
    open_error_t rc = check(interface);
    return rc == OPEN_E_NONE && interface == 55 ? OPEN_E_NOT_FOUND : rc;
  }

  open_error_t obtain(expected_interface &entry, uint32_t family) {
    if (family == OPEN_AF_INET6) {
      entry.autoconfiguration = true;
      return OPEN_E_NONE;
    }
    if (!entry.dhcp && !entry.secondary.empty()) return OPEN_E_FAIL;
    entry.dhcp = true;
    entry.primary.clear();
    return OPEN_E_NONE;
  }

  open_error_t add(uint32_t interface, uint32_t method, const test_address &address) {
    open_error_t rc = check_address(interface, method, address);
    if (rc != OPEN_E_NONE) return rc;
    expected_interface &entry = of[interface];
    if (method == automatic) return obtain(entry, address.family);
    bool ipv4 = address.family == OPEN_AF_INET;
    address_list &list = !ipv4 ? entry.ipv6 : method == secondary ? entry.secondary : entry.primary;
    if (method == secondary && entry.primary.empty()) return OPEN_E_FAIL;
    if (has(list, address)) return OPEN_E_NONE;
    bool replaces = ipv4 && method == given;
    if (has_address(entry.secondary, address) || has_address(entry.ipv6, address) ||
        (!replaces && has_address(entry.primary, address)) || taken_elsewhere(interface, address))
      return OPEN_E_EXISTS;
    if (!replaces && list.size() >= (ipv4 ? secondary_max : ipv6_max)) return OPEN_E_FULL;
    if (replaces) list.clear();
    if (replaces) entry.dhcp = false;
    list.push_back(address);
    return OPEN_E_NONE;
  }

  open_error_t take(uint32_t interface, uint32_t method, const test_address &address) {
    open_error_t rc = check_address(interface, method, address);
    if (rc != OPEN_E_NONE) return rc;
    expected_interface &entry = of[interface];
    bool ipv4 = address.family == OPEN_AF_INET;
    if (method == automatic) {
      bool &obtains = ipv4 ? entry.dhcp : entry.autoconfiguration;
      if (!obtains) return OPEN_E_ERROR;
      obtains = false;
      return OPEN_E_NONE;
    }
    address_list &list = !ipv4 ? entry.ipv6 : method == secondary ? entry.secondary : entry.primary;
    if (!has(list, address)) return OPEN_E_NOT_FOUND;
    if (ipv4 && method == given && !entry.secondary.empty()) return OPEN_E_FAIL;
    std::erase(list, address);
    return OPEN_E_NONE;
  }

  bool offer(uint32_t interface, const test_address &address) {
    if (check(interface) != OPEN_E_NONE || interface == 55) return false;
    for (const auto &[number, entry] : of) {
      if (number != interface && any_overlaps(entry.offers, address)) return false;
    }
    address_list &offers = of[interface].offers;
    std::erase_if(offers, [&](const test_address &each) { return each.family == address.family; });
    offers.push_back(address);
    return true;
  }

  /* What an interface shows: primary, secondary, IPv6 addresses in order. */
  std::vector<std::string> shown(uint32_t interface) {
    expected_interface entry = of[interface];
    for (const test_address &each : entry.offers) {
      bool ipv4 = each.family == OPEN_AF_INET;
      bool asked = ipv4 ? entry.dhcp : entry.autoconfiguration;
      if (!asked || has_address(entry.ipv6, each) || taken_elsewhere(interface, each)) continue;
      (ipv4 ? entry.primary : entry.ipv6).push_back(each);
    }
    std::sort(entry.ipv6.begin(), entry.ipv6.end(), [](const test_address &one, const test_address &other) {
      return std::pair(one.network, one.host) < std::pair(other.network, other.host);
    });
    std::vector<std::string> texts;
    for (const auto *list : {&entry.primary, &entry.secondary, &entry.ipv6}) {
      for (const test_address &each : *list) texts.push_back(each.text());
    }
    return texts;
  }

  std::vector<uint32_t> routing_interfaces() {
    std::vector<uint32_t> numbers;
    for (uint32_t number : {1u, 2u, 56u}) {
      if (routing[number] && !(number == 2 && port_in_lag)) numbers.push_back(number);
    }
    for (uint32_t number = 120; number <= 127; number++) numbers.push_back(number);
    for (const auto &[number, vlan] : vlan_of) numbers.push_back(number);
    return numbers;
  }
};

class RandomRouting : public SoftSwitch {
protected:
  template <typename T, size_t N> const T &one_of(const T (&values)[N]) { return values[random() % N]; }

  test_address random_address() {
    uint32_t family = random() % 2 ? OPEN_AF_INET : OPEN_AF_INET6;
    return {family, static_cast<uint32_t>(1 + random() % 8), static_cast<uint32_t>(1 + random() % 3),
            random() % 12 == 0};
  }

  /* Makes one random call to both; the answers must agree. */
  void change() {
    static const uint32_t vlans[] = {0, 1, 2, 3, 4, 5, 4095};
    static const uint32_t families[] = {0, OPEN_AF_INET, OPEN_AF_INET6, 3};
    uint32_t interface = one_of(interfaces), vlan = one_of(vlans), family = one_of(families);
    uint32_t mode = static_cast<uint32_t>(random() % 3);
    switch (random() % 16) {
    case 0:
      return same(rpcclt_openapiRtrAdminModeSet(&handle, family, mode), expected.set_mode(family, mode));
    case 1:
      return same(rpcclt_openapiRtrIntfRtrAdminModeSet(&handle, interface, mode),
                  expected.set_interface_mode(interface, mode));
    case 2:
      return same(rpcclt_openapiRtrVlanIntfCreate(&handle, vlan), expected.create(vlan));
    case 3:
      return same(rpcclt_openapiRtrVlanIntfDelete(&handle, vlan), expected.remove(vlan));
    case 4:
      return change_member();
    case 5:
    case 6:
      return change_offer(interface);
    default:
      return change_address(interface);
    }
  }

  void change_address(uint32_t interface) {
    static const uint32_t methods[] = {given, given, given, secondary, secondary, automatic};
    test_address address = random_address();
    uint32_t method = one_of(methods);
    open_inet_pfx_t sent = prefix(address.text());
    if (random() % 3)
      return same(rpcclt_openapiRtrIntfIpAddrAdd(&handle, address.family, interface, method, &sent, 0),
                  expected.add(interface, method, address));
    same(rpcclt_openapiRtrIntfIpAddrDel(&handle, address.family, interface, method, &sent, 0),
         expected.take(interface, method, address));
  }

  void change_member() {
    expected.port_in_lag = !expected.port_in_lag;
    same(commit(expected.port_in_lag ? "interface 0/2 lag 1" : "no interface 0/2 lag"), OPEN_E_NONE);
  }

  /* Lab control takes names, so that only interfaces that exist can be asked for. */
  void change_offer(uint32_t interface) {
    if (expected.check(interface) != OPEN_E_NONE) return;
    std::string name, error;
    {
      softswitch::locked_switch model;
      name = softswitch::interface_name(*model, interface);
    }
    if (random() % 4 == 0) {
      ASSERT_TRUE(softswitch::withdraw_lease(name, &error)) << error;
      expected.of[interface].offers.clear();
      return;
    }
    test_address offered = random_address();
    ASSERT_EQ(softswitch::offer_lease(name, offered.text(), &error), expected.offer(interface, offered))
        << error;
  }

  void same(open_error_t found, open_error_t wanted) {
    ASSERT_EQ(found, wanted);
    results[found]++;
  }

  std::vector<std::string> shown(uint32_t interface) {
    std::vector<std::string> found;
    open_inet_pfx_t read = {};
    uint32_t index = 0;
    if (rpcclt_openapiRtrIntfIpAddrGet(&handle, OPEN_AF_INET, interface, &read) == OPEN_E_NONE)
      found.push_back(softswitch::inet_prefix_text(read));
    while (rpcclt_openapiRtrIntfSecIpAddrGet(&handle, OPEN_AF_INET, interface, &read, &index) == OPEN_E_NONE)
      found.push_back(softswitch::inet_prefix_text(read));
    read = {};
    while (rpcclt_openapiRtrIntfIpAddrGet(&handle, OPEN_AF_INET6, interface, &read) == OPEN_E_NONE)
      found.push_back(softswitch::inet_prefix_text(read));
    return found;
  }

  void compare_vlan_interfaces() {
    std::map<uint32_t, uint32_t> found;
    for (uint32_t number = 226; number <= 353; number++) {
      uint32_t vlan;
      if (rpcclt_openapiRtrIntfVlanIdGet(&handle, number, &vlan) == OPEN_E_NONE) found[number] = vlan;
    }
    ASSERT_EQ(found, expected.vlan_of);
  }

  /* Whether routing is on shows only in the configuration. */
  void compare_routing_lines() {
    std::string config = softswitch::running_config();
    for (const auto &[number, vlan] : expected.vlan_of) {
      std::string line = "no interface vlan" + std::to_string(vlan) + " routing\n";
      ASSERT_EQ(config.find(line) == config.npos, expected.routing[number]) << config;
    }
    for (const auto &[number, name] : {std::pair<uint32_t, std::string>{1, "0/1"}, {2, "0/2"}, {56, "3/1"}})
      ASSERT_EQ(config.find("\ninterface " + name + " routing\n") != config.npos, expected.routing[number])
          << config;
  }

  void compare_all() {
    std::vector<uint32_t> walked;
    uint32_t number = 0, mode = 9;
    while (rpcclt_openapiRtrIntfNextGet(&handle, number, &number) == OPEN_E_NONE) walked.push_back(number);
    ASSERT_EQ(walked, expected.routing_interfaces());
    for (const auto &[family, wanted] : expected.modes) {
      ASSERT_EQ(rpcclt_openapiRtrAdminModeGet(&handle, family, &mode), OPEN_E_NONE);
      ASSERT_EQ(mode, wanted);
    }
    compare_vlan_interfaces();
    compare_routing_lines();
    for (uint32_t interface : interfaces) {
      if (expected.check(interface) != OPEN_E_NONE) continue;
      ASSERT_EQ(shown(interface), expected.shown(interface)) << interface;
    }
  }

  void prepare() {
    ASSERT_TRUE(softswitch::set_limit("settle-milliseconds", 0));
    ASSERT_TRUE(softswitch::set_limit("vlan-routing-interfaces", vlan_interfaces_max));
    ASSERT_TRUE(softswitch::set_limit("secondary-addresses", secondary_max));
    ASSERT_TRUE(softswitch::set_limit("ipv6-addresses", ipv6_max));
    ASSERT_EQ(commit("vlan 2-4"), OPEN_E_NONE);
    for (auto &[number, entry] : expected.of) entry.offers.clear(); /* a restart forgets them */
  }

  static constexpr uint32_t interfaces[] = {0, 1, 2, 55, 56, 120, 128, 226, 227, 228, 229, 354};
  std::mt19937 random{20260703};
  expected_routing expected;
  std::map<open_error_t, int> results;
};

TEST_F(RandomRouting, AgreesWithTheTextbookThroughRestarts) {
  change_through_restarts(
      24, 400, [&] { prepare(); }, [&] { change(); }, [&] { compare_all(); });
  for (open_error_t each : {OPEN_E_NONE, OPEN_E_PARAM, OPEN_E_NOT_FOUND, OPEN_E_EXISTS, OPEN_E_FULL,
                            OPEN_E_FAIL, OPEN_E_UNAVAIL, OPEN_E_ERROR})
    EXPECT_GT(results[each], 10) << each;
}

} // namespace
