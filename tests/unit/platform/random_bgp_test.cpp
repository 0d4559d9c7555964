/* Random calls of the BGP functions, with LAGs and VLAN routing interfaces coming and going, against a small
 * model of what they should do: every result code and, from time to time and after restarts, everything that
 * can be read. */
#include "tests/unit/platform/bgp_test_support.h"

#include "platform/api/openapi_lag.h"
#include "platform/api/openapi_routing.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>

namespace {

constexpr size_t peer_limit = 6, network_limit = 3;
constexpr uint32_t lag = 56, vlan10 = 226;

/* A peer's address as a word of the configuration, with what makes it one. */
struct address_row {
  const char *text;
  bool host, ipv6, link_local;
};
constexpr address_row addresses[] = {{"10.0.0.1", true, false, false},   {"10.0.0.2", true, false, false},
                                     {"224.0.0.1", false, false, false}, {"2001:db8::1", true, true, false},
                                     {"fe80::1", true, true, true},      {"::1", false, true, false}};

struct expected_peer {
  uint32_t as = 0, update_source = 0;
  uint32_t active[2] = {0, 0}, next_hop_self[2] = {0, 0}; /* IPv4, IPv6 */
};

/* BGP as a textbook has it. */
struct expected_bgp {
  using peer_key = std::pair<size_t, uint32_t>; /* index of the address, scope */

  std::map<peer_key, expected_peer> peers;
  std::map<std::string, std::string> networks;        /* the line's rest by the network */
  std::map<std::string, std::string> redistributions; /* the line's rest by family and source */
  uint32_t hold_time = 90, local_as = 0;
  std::set<uint32_t> interfaces = {1, lag};

  bool uses(uint32_t interface) const {
    return std::any_of(peers.begin(), peers.end(), [&](const auto &entry) {
      return entry.first.second == interface || entry.second.update_source == interface;
    });
  }

  static open_error_t check_id(const peer_key &key) {
    const address_row &address = addresses[key.first];
    bool scope_fits = address.ipv6 ? key.second != 0 || !address.link_local : key.second == 0;
    return address.host && scope_fits ? OPEN_E_NONE : OPEN_E_PARAM;
  }
  open_error_t check_peer(const peer_key &key) const {
    open_error_t rc = check_id(key);
    return rc == OPEN_E_NONE && !peers.count(key) ? OPEN_E_NOT_FOUND : rc;
  }

  open_error_t set_as(const peer_key &key, uint32_t as) {
    open_error_t rc = check_id(key);
    if (rc != OPEN_E_NONE) return rc;
    if (key.second != 0 && !interfaces.count(key.second)) return OPEN_E_NOT_FOUND;
    if (as == 0) return OPEN_E_PARAM;
    bool is_new = !peers.count(key);
    if (is_new && peers.size() >= peer_limit) return OPEN_E_FULL;
    peers[key].as = as;
    if (is_new) peers[key].active[0] = addresses[key.first].ipv6 ? 0 : 1;
    return OPEN_E_NONE;
  }

  open_error_t set_family(const peer_key &key, uint32_t family, uint32_t (expected_peer::*what)[2],
                          uint32_t on) {
    if (family < 1 || family > 2) return OPEN_E_PARAM;
    open_error_t rc = check_peer(key);
    if (rc == OPEN_E_NONE) (peers[key].*what)[family - 1] = on != 0;
    return rc;
  }

  open_error_t set_update_source(const peer_key &key, uint32_t interface) {
    open_error_t rc = check_peer(key);
    if (rc != OPEN_E_NONE) return rc;
    if (interface == 55) return OPEN_E_UNAVAIL;
    if (interface == 354) return OPEN_E_PARAM;
    if (interface != 0 && !interfaces.count(interface)) return OPEN_E_NOT_FOUND;
    peers[key].update_source = interface;
    return OPEN_E_NONE;
  }

  /* Whether an interface is in use, then takes it away. */
  open_error_t remove_interface(uint32_t interface) {
    if (!interfaces.count(interface)) return OPEN_E_NOT_FOUND;
    if (uses(interface)) return OPEN_E_FAIL;
    interfaces.erase(interface);
    return OPEN_E_NONE;
  }
};

class RandomBgp : public BgpSwitch {
protected:
  template <typename T, size_t N> const T &one_of(const T (&values)[N]) { return values[random() % N]; }

  /* Makes one random call to both; the answers must agree. */
  void change() {
    switch (random() % 10) {
    case 0:
      return change_interfaces();
    case 1:
      return change_network();
    case 2:
      return change_redistribution();
    case 3:
      return change_speaker();
    default:
      return change_peer();
    }
  }

  void change_peer() {
    static const uint32_t scopes[] = {0, 0, 1, lag, vlan10, 55, 4711}, families[] = {0, 1, 2, 1, 2};
    static const uint32_t sources[] = {0, 1, lag, vlan10, 55, 354};
    expected_bgp::peer_key key = {random() % std::size(addresses), one_of(scopes)};
    peer_name peer(addresses[key.first].text, key.second);
    uint32_t family = one_of(families), value = static_cast<uint32_t>(random() % 3);
    std::string scope = key.second == vlan10 ? "%vlan10" : key.second == lag ? "%3/1" : "%0/1";
    switch (random() % 8) {
    case 0:
      return same(activate(peer, family, value),
                  expected.set_family(key, family, &expected_peer::active, value));
    case 1:
      return same(set_next_hop_self(peer, family, value),
                  expected.set_family(key, family, &expected_peer::next_hop_self, value));
    case 2: {
      uint32_t source = one_of(sources);
      return same(set_update_source(peer, source), expected.set_update_source(key, source));
    }
    case 3:
      if (!expected.peers.count(key)) return;
      ASSERT_EQ(commit(std::string("no bgp neighbor ") + addresses[key.first].text +
                       (key.second == 0 ? "" : scope)),
                OPEN_E_NONE);
      expected.peers.erase(key);
      return;
    default:
      return same(set_as(peer, value), expected.set_as(key, value));
    }
  }

  void change_interfaces() {
    switch (random() % 4) {
    case 0:
      return same(rpcclt_openapiLagDeleteZYL(&handle, lag), expected.remove_interface(lag));
    case 1:
      return same(rpcclt_openapiRtrVlanIntfDelete(&handle, 10), expected.remove_interface(vlan10));
    case 2:
      if (commit("lag 1") == OPEN_E_NONE) expected.interfaces.insert(lag);
      return;
    default:
      if (rpcclt_openapiRtrVlanIntfCreate(&handle, 10) == OPEN_E_NONE) expected.interfaces.insert(vlan10);
      return;
    }
  }

  void change_network() {
    static const char *const networks[] = {"10.0.0.0", "11.0.0.0", "2001:db8::", "2001:db9::", "12.0.0.0"};
    const char *address = one_of(networks);
    std::string key = address + std::string("/32");
    bool mapped = random() % 2 == 0, is_new = !expected.networks.count(key);
    if (random() % 3 == 0) {
      open_error_t wanted = expected.networks.erase(key) != 0 ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
      return same(withdraw(address, 32), wanted);
    }
    open_error_t wanted = is_new && expected.networks.size() >= network_limit ? OPEN_E_FULL : OPEN_E_NONE;
    if (wanted == OPEN_E_NONE) expected.networks[key] = mapped ? " route-map out" : "";
    same(mapped ? originate(address, 32, "out") : originate(address, 32), wanted);
  }

  void change_redistribution() {
    static const char *const sources[] = {"ospf", "rip"};
    redistribution_call call = {.source = one_of(sources)};
    call.family = 1 + random() % 2;
    std::string key = (call.family == 1 ? "ipv4 " : "ipv6 ") + call.source;
    if (random() % 3 == 0) {
      call.add = OPEN_FALSE;
      bool there = expected.redistributions.erase(key) != 0;
      return same(redistribute(call), there ? OPEN_E_NONE : OPEN_E_NOT_FOUND);
    }
    call.match_set = random() % 2;
    call.match_bits = 1;
    call.metric_set = call.metric_value_set = random() % 2;
    call.metric = static_cast<int64_t>(random() % 5) - 1;
    bool bad = (call.match_set && call.source == "rip") || (call.metric_set && call.metric < 0);
    if (!bad)
      expected.redistributions[key] = (call.match_set ? " match-internal" : "") +
                                      (call.metric_set ? " metric " + std::to_string(call.metric) : "");
    same(redistribute(call), bad ? OPEN_E_PARAM : OPEN_E_NONE);
  }

  void change_speaker() {
    uint32_t value = static_cast<uint32_t>(random() % 5);
    bool good_hold_time = value == 0 || value >= 3;
    same(rpcclt_openapiBgpGlobalHoldTimeConfiguredSet(&handle, value),
         good_hold_time ? OPEN_E_NONE : OPEN_E_PARAM);
    if (good_hold_time) expected.hold_time = value;
    same(rpcclt_openapiBgpLocalASSet(&handle, value), value != 0 ? OPEN_E_NONE : OPEN_E_PARAM);
    if (value != 0) expected.local_as = value;
  }

  void same(open_error_t found, open_error_t wanted) {
    ASSERT_EQ(found, wanted);
    if (found == OPEN_E_NONE) done++;
  }

  void compare_peer(const expected_bgp::peer_key &key) {
    peer_name peer(addresses[key.first].text, key.second);
    open_error_t rc = expected.check_peer(key);
    if (rc != OPEN_E_NONE) {
      ASSERT_EQ(as_of(peer), rc) << peer;
      return;
    }
    const expected_peer &wanted = expected.peers[key];
    ASSERT_EQ(as_of(peer), wanted.as) << peer;
    ASSERT_EQ(update_source(peer), wanted.update_source) << peer;
    for (uint32_t family : {1u, 2u}) {
      ASSERT_EQ(active(peer, family), wanted.active[family - 1]) << peer;
      ASSERT_EQ(next_hop_self(peer, family), wanted.next_hop_self[family - 1]) << peer;
    }
  }

  /* Networks and redistributions can be read as lines alone. */
  void compare_lines(const char *keyword, const std::map<std::string, std::string> &wanted) {
    std::multiset<std::string> found, lines;
    std::string config = softswitch::running_config(), beginning = std::string("bgp ") + keyword + " ";
    for (size_t start = 0, end; start < config.size(); start = end + 1) {
      end = config.find('\n', start);
      if (config.compare(start, beginning.size(), beginning) == 0)
        found.insert(config.substr(start, end - start));
    }
    for (const auto &[key, rest] : wanted) lines.insert(beginning + key + rest);
    ASSERT_EQ(found, lines);
  }

  void compare_all() {
    for (size_t address = 0; address < std::size(addresses); address++) {
      for (uint32_t scope : {0u, 1u, lag, vlan10, 55u}) compare_peer({address, scope});
    }
    compare_lines("network", expected.networks);
    compare_lines("redistribute", expected.redistributions);
    uint32_t hold_time = 0, local_as = 0;
    ASSERT_EQ(rpcclt_openapiBgpGlobalHoldTimeConfiguredGet(&handle, &hold_time), OPEN_E_NONE);
    ASSERT_EQ(rpcclt_openapiBgpLocalASGet(&handle, &local_as), OPEN_E_NONE);
    ASSERT_EQ(hold_time, expected.hold_time);
    ASSERT_EQ(local_as, expected.local_as);
  }

  void lower_limits() {
    ASSERT_TRUE(softswitch::set_limit("settle-milliseconds", 0));
    ASSERT_TRUE(softswitch::set_limit("bgp-peers", peer_limit));
    ASSERT_TRUE(softswitch::set_limit("bgp-networks", network_limit));
  }

  std::mt19937 random{20260705};
  expected_bgp expected;
  int done = 0;
};

TEST_F(RandomBgp, AgreesWithTheTextbookThroughRestarts) {
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  change_through_restarts(
      20, 300, [&] { lower_limits(); }, [&] { change(); }, [&] { compare_all(); });
  EXPECT_GT(done, 500);
}

} // namespace
