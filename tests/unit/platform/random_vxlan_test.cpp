/* Random calls of the VXLAN functions, with VLANs, LAGs and VLAN routing interfaces coming and going, against
 * a small model of what they should do: every result code and, from time to time and after restarts,
 * everything that can be read. */
#include "tests/unit/platform/vxlan_test_support.h"

#include <map>
#include <random>
#include <set>

namespace {

constexpr size_t tenant_limit = 4;
constexpr size_t vtep_limit = 3;

/* VXLAN as a textbook has it. */
struct expected_vxlan {
  struct tenant {
    uint32_t vlan = 0;
    uint32_t group = 0;
    bool vteps = false;
  };

  std::set<uint32_t> vlans = {1};
  std::set<uint32_t> sources = {1, 56, 120}; /* of the interfaces that the test names: those that can be it */
  std::string modes = "0 0";
  uint32_t port = 4789;
  uint32_t source = 0;
  uint32_t default_group = 0;
  std::set<uint32_t> vteps;
  std::map<uint32_t, tenant> tenants;

  static bool good_tenant(uint32_t id) { return id >= 1 && id <= last_tenant; }
  static bool good_vlan(uint32_t id) { return id >= 1 && id <= 4094; }
  static bool good_group(uint32_t group) {
    return group == 0 || (group >= ip(224, 0, 1, 0) && group < ip(240, 0, 0, 0));
  }

  open_error_t find(uint32_t id) const {
    if (!good_tenant(id)) return OPEN_E_PARAM;
    return tenants.count(id) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
  }

  bool vlan_is_taken(uint32_t vlan) const {
    for (const auto &[id, there] : tenants) {
      if (there.vlan == vlan) return true;
    }
    return false;
  }

  open_error_t set_flag(bool multicast, uint32_t flag) {
    std::string mine = multicast ? "0 1" : "1 0";
    if (flag > 1) return OPEN_E_PARAM;
    if (flag == 0 && modes != mine) return multicast ? OPEN_E_NONE : OPEN_E_FAIL;
    if (flag == 1 && modes != mine && modes != "0 0") return OPEN_E_FAIL;
    modes = flag == 1 ? mine : "0 0";
    return OPEN_E_NONE;
  }

  open_error_t set_source(uint32_t interface) {
    if (interface == 55) return OPEN_E_UNAVAIL;
    if (interface == 128) return OPEN_E_PARAM;
    if (interface != 0 && !sources.count(interface)) return OPEN_E_NOT_FOUND;
    source = interface;
    return OPEN_E_NONE;
  }

  open_error_t create(uint32_t id) {
    if (!good_tenant(id)) return OPEN_E_PARAM;
    if (tenants.count(id)) return OPEN_E_EXISTS;
    if (tenants.size() >= tenant_limit) return OPEN_E_FULL;
    tenants[id] = {};
    return OPEN_E_NONE;
  }

  open_error_t remove(uint32_t id) {
    open_error_t rc = find(id);
    if (rc == OPEN_E_NONE) tenants.erase(id);
    return rc;
  }

  /* `make`: the tenant is made when it is not there. */
  open_error_t bind(uint32_t id, uint32_t vlan, bool make) {
    if (!good_tenant(id) || !good_vlan(vlan)) return OPEN_E_PARAM;
    if (!tenants.count(id) && !make) return OPEN_E_NOT_FOUND;
    if (!vlans.count(vlan)) return OPEN_E_NOT_FOUND;
    if (tenants.count(id) && tenants[id].vlan == vlan) return OPEN_E_EXISTS;
    if (!tenants.count(id) && tenants.size() >= tenant_limit) return OPEN_E_FULL;
    if (vlan_is_taken(vlan) || (tenants.count(id) && tenants[id].vlan != 0)) return OPEN_E_FAIL;
    if (!tenants.count(id)) tenants[id].vteps = true;
    tenants[id].vlan = vlan;
    return OPEN_E_NONE;
  }

  open_error_t unbind(uint32_t id, uint32_t vlan, bool and_remove) {
    if (!good_tenant(id) || !good_vlan(vlan)) return OPEN_E_PARAM;
    if (!tenants.count(id)) return OPEN_E_NOT_FOUND;
    if (tenants[id].vlan != 0 && tenants[id].vlan != vlan) return OPEN_E_NOT_FOUND;
    tenants[id].vlan = 0;
    if (and_remove) tenants.erase(id);
    return OPEN_E_NONE;
  }

  open_error_t give(uint32_t id, bool has) {
    open_error_t rc = find(id);
    if (rc == OPEN_E_NONE) tenants[id].vteps = has;
    return rc;
  }

  open_error_t add_vtep(uint32_t address) {
    if (address == 0 || address >= ip(224, 0, 0, 0)) return OPEN_E_PARAM;
    if (vteps.count(address)) return OPEN_E_EXISTS;
    if (vteps.size() >= vtep_limit) return OPEN_E_FULL;
    vteps.insert(address);
    for (auto &[id, there] : tenants) there.vteps = true;
    return OPEN_E_NONE;
  }

  open_error_t set_default_group(uint32_t group) {
    if (!good_group(group)) return OPEN_E_PARAM;
    if (is_specific(group)) return OPEN_E_EXISTS;
    default_group = group;
    return OPEN_E_NONE;
  }

  open_error_t set_group(uint32_t id, uint32_t group) {
    if (!good_group(group)) return OPEN_E_PARAM;
    open_error_t rc = find(id);
    if (rc != OPEN_E_NONE) return rc;
    if (group != 0 && group == default_group) return OPEN_E_EXISTS;
    tenants[id].group = group;
    return OPEN_E_NONE;
  }

  bool is_specific(uint32_t group) const {
    for (const auto &[id, there] : tenants) {
      if (group != 0 && there.group == group) return true;
    }
    return false;
  }

  open_error_t remove_vlan(uint32_t vlan) {
    if (!good_vlan(vlan)) return OPEN_E_PARAM;
    if (!vlans.count(vlan)) return OPEN_E_NOT_FOUND;
    if (vlan == 1 || vlan_is_taken(vlan)) return OPEN_E_FAIL;
    vlans.erase(vlan);
    return OPEN_E_NONE;
  }

  /* LAG 56, or the routing interface 226 of VLAN 1. */
  open_error_t remove_interface(uint32_t interface) {
    if (!sources.count(interface)) return OPEN_E_NOT_FOUND;
    if (source == interface) return OPEN_E_FAIL;
    sources.erase(interface);
    return OPEN_E_NONE;
  }
};

class RandomVxlan : public VxlanSwitch {
protected:
  template <typename T, size_t N> const T &one_of(const T (&values)[N]) { return values[random() % N]; }

  void same(open_error_t found, open_error_t wanted) {
    ASSERT_EQ(found, wanted);
    if (found == OPEN_E_NONE) done++;
  }

  /* Each makes one random call to both; the answers must agree. */
  void change_instance() {
    static const uint32_t flags[] = {0, 1, 2};
    static const uint32_t ports[] = {0, 1, 4789, 65535, 65536};
    static const uint32_t interfaces[] = {0, 1, 55, 56, 120, 128, 226};
    uint32_t flag = one_of(flags), port = one_of(ports), interface = one_of(interfaces);
    open_error_t port_result = port >= 1 && port <= 65535 ? OPEN_E_NONE : OPEN_E_PARAM;
    switch (random() % 4) {
    case 0:
      return same(set_unicast(flag), expected.set_flag(false, flag));
    case 1:
      return same(set_multicast(flag), expected.set_flag(true, flag));
    case 2:
      if (port_result == OPEN_E_NONE) expected.port = port;
      return same(random() % 2 ? set_udp_port(port) : set_udp_port_zyl(port), port_result);
    default:
      return same(random() % 2 ? set_source(interface) : set_source_zyl(interface),
                  expected.set_source(interface));
    }
  }

  void change_tenant() {
    static const uint32_t ids[] = {0, 1, 2, 3, 5000, last_tenant, last_tenant + 1};
    static const uint32_t vlans[] = {0, 1, 2, 3, 4094, 4095};
    uint32_t id = one_of(ids), vlan = one_of(vlans);
    switch (random() % 8) {
    case 0:
      return same(create(id), expected.create(id));
    case 1:
      return same(remove(id), expected.remove(id));
    case 2:
    case 3:
      return same(set(id, vlan), expected.bind(id, vlan, true));
    case 4:
      return same(set(id, vlan, 0), expected.unbind(id, vlan, true));
    case 5:
      return same(add_vlan(id, vlan), expected.bind(id, vlan, false));
    case 6:
      return same(remove_vlan(id, vlan), expected.unbind(id, vlan, false));
    default:
      return random() % 2 ? same(give_vteps(id), expected.give(id, true))
                          : same(take_vteps(id), expected.give(id, false));
    }
  }

  void change_addresses() {
    static const uint32_t ids[] = {0, 1, 2, 3, 5000, last_tenant, last_tenant + 1};
    static const uint32_t hosts[] = {
        0, ip(10, 0, 0, 1), ip(10, 0, 0, 2), ip(9, 0, 0, 1), ip(223, 0, 0, 1), ip(224, 0, 0, 1)};
    static const uint32_t groups[] = {
        0, ip(224, 0, 1, 0), ip(239, 255, 255, 255), ip(230, 1, 1, 1), ip(224, 0, 0, 255), ip(240, 0, 0, 0)};
    uint32_t id = one_of(ids), host = one_of(hosts), group = one_of(groups);
    switch (random() % 4) {
    case 0:
      return same(add_vtep(host), expected.add_vtep(host));
    case 1:
      return same(remove_vtep(host), expected.vteps.erase(host) ? OPEN_E_NONE : OPEN_E_NOT_FOUND);
    case 2:
      return same(set_default_group(group), expected.set_default_group(group));
    default:
      return same(set_group(id, group), expected.set_group(id, group));
    }
  }

  /* What VXLAN refers to comes and goes. */
  void change_surroundings() {
    static const uint32_t vlans[] = {0, 1, 2, 3, 4094, 4095};
    uint32_t vlan = one_of(vlans);
    switch (random() % 6) {
    case 0:
      return same(rpcclt_openapiVlanDelete(&handle, vlan), expected.remove_vlan(vlan));
    case 1:
      if (rpcclt_openapiLagCreateZYL(&handle, 56) == OPEN_E_NONE) expected.sources.insert(56);
      return;
    case 2:
      return same(rpcclt_openapiLagDeleteZYL(&handle, 56), expected.remove_interface(56));
    case 3:
      if (rpcclt_openapiRtrVlanIntfCreate(&handle, 1) == OPEN_E_NONE) expected.sources.insert(226);
      return;
    case 4:
      return same(rpcclt_openapiRtrVlanIntfDelete(&handle, 1), expected.remove_interface(226));
    default:
      if (rpcclt_openapiVlanCreate(&handle, vlan) == OPEN_E_NONE) expected.vlans.insert(vlan);
    }
  }

  void change() {
    switch (random() % 5) {
    case 0:
      return change_instance();
    case 1:
      return change_addresses();
    case 2:
      return change_surroundings();
    default:
      return change_tenant();
    }
  }

  void compare_all() {
    ASSERT_EQ(modes(), expected.modes);
    ASSERT_EQ(udp_port(), expected.port);
    ASSERT_EQ(source(), expected.source);
    ASSERT_EQ(default_group(), expected.default_group);
    for (uint32_t group : {0u, ip(224, 0, 1, 0), ip(239, 255, 255, 255), ip(230, 1, 1, 1)})
      ASSERT_EQ(is_specific(group), expected.is_specific(group) ? 1u : 0u) << group;
    list wanted;
    addresses all(expected.vteps.begin(), expected.vteps.end());
    for (const auto &[id, there] : expected.tenants) {
      wanted.push_back(std::to_string(id) + " " + std::to_string(there.vlan));
      ASSERT_EQ(vlan_of(id), static_cast<int>(there.vlan)) << id;
      ASSERT_EQ(group_of(id), there.group) << id;
      ASSERT_EQ(tunnels(id), there.vteps ? all : addresses()) << id;
    }
    ASSERT_EQ(tenants(), wanted);
  }

  void lower_limits() {
    ASSERT_TRUE(softswitch::set_limit("settle-milliseconds", 0));
    ASSERT_TRUE(softswitch::set_limit("vxlan-tenants", tenant_limit));
    ASSERT_TRUE(softswitch::set_limit("remote-vteps", vtep_limit));
  }

  std::mt19937 random{20260705};
  expected_vxlan expected;
  int done = 0;
};

TEST_F(RandomVxlan, AgreesWithTheTextbookThroughRestarts) {
  change_through_restarts(
      20, 400, [&] { lower_limits(); }, [&] { change(); }, [&] { compare_all(); });
  EXPECT_GT(done, 1000);
}

} // namespace
