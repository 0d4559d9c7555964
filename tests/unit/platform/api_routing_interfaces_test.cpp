/* Tests of the routing functions of the C interface about the switch as a router and its routing interfaces,
 * and of the functions about interfaces that routing needs. */
#include "platform/api/openapi_routing.h"

#include "tests/unit/platform/softswitch_test_support.h"

namespace {

class RoutingInterfaces : public SoftSwitch {
protected:
  uint32_t mode_of(uint32_t family) {
    uint32_t mode = 9;
    EXPECT_EQ(rpcclt_openapiRtrAdminModeGet(&handle, family, &mode), OPEN_E_NONE);
    return mode;
  }

  std::vector<uint32_t> walk() {
    std::vector<uint32_t> found;
    uint32_t number = 0;
    open_error_t rc = rpcclt_openapiRtrIntfNextGet(&handle, 0, &number);
    for (; rc == OPEN_E_NONE; rc = rpcclt_openapiRtrIntfNextGet(&handle, number, &number))
      found.push_back(number);
    EXPECT_EQ(rc, OPEN_E_FAIL);
    return found;
  }

  /* The number of a VLAN's routing interface; the code in its place when it has none. */
  int number_of(uint32_t vlan) {
    uint32_t number;
    open_error_t rc = rpcclt_openapiRtrVlanIntfNumGetZYL(&handle, vlan, &number);
    return rc == OPEN_E_NONE ? static_cast<int>(number) : rc;
  }

  void make_vlans() {
    for (uint32_t vlan : {10u, 20u, 30u}) ASSERT_EQ(rpcclt_openapiVlanCreate(&handle, vlan), OPEN_E_NONE);
  }

  std::string journal() { return file_content(dir.path + "/journal-1"); }
};

/* --- The switch ----------------------------------------------------------------------------------------- */

TEST_F(RoutingInterfaces, SwitchRoutesEachFamilyByItselfAndRemembersIt) {
  EXPECT_EQ(mode_of(OPEN_AF_INET), 0u);
  EXPECT_EQ(mode_of(OPEN_AF_INET6), 0u);
  EXPECT_EQ(rpcclt_openapiRtrAdminModeSet(&handle, OPEN_AF_INET, 0), OPEN_E_NONE);
  EXPECT_EQ(journal(), "") << "as it is already";
  EXPECT_EQ(rpcclt_openapiRtrAdminModeSet(&handle, OPEN_AF_INET6, 1), OPEN_E_NONE);
  EXPECT_EQ(mode_of(OPEN_AF_INET), 0u);
  EXPECT_EQ(mode_of(OPEN_AF_INET6), 1u);
  EXPECT_EQ(rpcclt_openapiRtrAdminModeSet(&handle, OPEN_AF_INET, 1), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrAdminModeSet(&handle, OPEN_AF_INET, 1), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrAdminModeSet(&handle, OPEN_AF_INET6, 0), OPEN_E_NONE);
  EXPECT_EQ(journal(), "ipv6 routing\nip routing\nno ipv6 routing\n");
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
  restart();
  EXPECT_EQ(mode_of(OPEN_AF_INET), 1u);
  EXPECT_EQ(mode_of(OPEN_AF_INET6), 0u);
}

TEST_F(RoutingInterfaces, UnknownFamiliesAndModesAreRefused) {
  uint32_t mode;
  for (uint32_t family : {0u, 3u, UINT32_MAX}) {
    EXPECT_EQ(rpcclt_openapiRtrAdminModeGet(&handle, family, &mode), OPEN_E_PARAM) << family;
    EXPECT_EQ(rpcclt_openapiRtrAdminModeSet(&handle, family, 1), OPEN_E_PARAM) << family;
  }
  for (uint32_t bad : {2u, UINT32_MAX}) {
    EXPECT_EQ(rpcclt_openapiRtrAdminModeSet(&handle, OPEN_AF_INET, bad), OPEN_E_PARAM) << bad;
    EXPECT_EQ(rpcclt_openapiRtrAdminModeSet(&handle, OPEN_AF_INET6, bad), OPEN_E_PARAM) << bad;
    EXPECT_EQ(rpcclt_openapiRtrIntfRtrAdminModeSet(&handle, 1, bad), OPEN_E_PARAM) << bad;
    EXPECT_EQ(rpcclt_openapiRtrIntfRtrAdminModeSet(&handle, 120, bad), OPEN_E_PARAM) << bad;
  }
  EXPECT_EQ(softswitch::running_config(), "");
}

/* --- Routing interfaces --------------------------------------------------------------------------------- */

TEST_F(RoutingInterfaces, RoutingOfAnInterfaceIsSetPendingAndRemembered) {
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 1), OPEN_E_NONE);
  take_and_hold();
  std::string before = journal();
  EXPECT_EQ(rpcclt_openapiRtrIntfRtrAdminModeSet(&handle, 1, 0), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrIntfRtrAdminModeSet(&handle, 226, 1), OPEN_E_NONE);
  EXPECT_EQ(journal(), before) << "as it is already";
  EXPECT_EQ(rpcclt_openapiRtrIntfRtrAdminModeSet(&handle, 1, 1), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrIntfRtrAdminModeSet(&handle, 56, 1), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrIntfRtrAdminModeSet(&handle, 226, 0), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), (std::vector<int>{1, 56, 226}));
  EXPECT_EQ(softswitch::running_config(), "vlan 1 routing interface 226\n"
                                          "interface 0/1 routing\n"
                                          "interface 3/1 routing\n"
                                          "no interface vlan1 routing\n");
  restart_keeps_configuration();
  EXPECT_EQ(rpcclt_openapiRtrIntfRtrAdminModeSet(&handle, 1, 0), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrIntfRtrAdminModeSet(&handle, 226, 1), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "vlan 1 routing interface 226\ninterface 3/1 routing\n");
}

TEST_F(RoutingInterfaces, OnlyPortsLagsAndVlanRoutingInterfacesCanBeSet) {
  const refused_number rows[] = {{55, OPEN_E_UNAVAIL},    {120, OPEN_E_UNAVAIL}, {127, OPEN_E_UNAVAIL},
                                 {226, OPEN_E_NOT_FOUND}, {0, OPEN_E_PARAM},     {128, OPEN_E_PARAM},
                                 {225, OPEN_E_PARAM},     {354, OPEN_E_PARAM},   {UINT32_MAX, OPEN_E_PARAM}};
  for (const auto &[number, result] : rows) {
    EXPECT_EQ(rpcclt_openapiRtrIntfRtrAdminModeSet(&handle, number, 1), result) << number;
    EXPECT_EQ(rpcclt_openapiRtrIntfRtrAdminModeSet(&handle, number, 0), result) << number;
  }
}

TEST_F(RoutingInterfaces, WalkGoesOverRoutingInterfacesByNumber) {
  std::vector<uint32_t> wanted = {120, 121, 122, 123, 124, 125, 126, 127};
  EXPECT_EQ(walk(), wanted);
  make_vlans();
  ASSERT_EQ(commit("vlan 10 routing interface 353"), OPEN_E_NONE);
  ASSERT_EQ(commit("vlan 20 routing"), OPEN_E_NONE);
  for (const char *name : {"0/1", "0/2", "3/64"})
    ASSERT_EQ(commit(std::string("interface ") + name + " routing"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/2 lag 1"), OPEN_E_NONE);
  wanted.insert(wanted.begin(), {1, 119});
  wanted.insert(wanted.end(), {226, 353});
  EXPECT_EQ(walk(), wanted) << "0/2 is in a LAG";
  uint32_t next;
  EXPECT_EQ(rpcclt_openapiRtrIntfNextGet(&handle, 1, &next), OPEN_E_NONE);
  EXPECT_EQ(next, 119u);
  EXPECT_EQ(rpcclt_openapiRtrIntfNextGet(&handle, 300, &next), OPEN_E_NONE);
  EXPECT_EQ(next, 353u);
  for (uint32_t after : {353u, 354u, UINT32_MAX})
    EXPECT_EQ(rpcclt_openapiRtrIntfNextGet(&handle, after, &next), OPEN_E_FAIL) << after;
}

TEST_F(RoutingInterfaces, TypeNameVlanAndLoopbackIdAreThoseOfTheInterface) {
  constexpr uint32_t none = 9999;
  ASSERT_EQ(rpcclt_openapiVlanCreate(&handle, 4094), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 4094), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/54 routing"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 3/64 routing"), OPEN_E_NONE);
  const struct {
    uint32_t number, type;
    const char *name;
    uint32_t vlan, loopback;
  } rows[] = {{54, OPEN_INTF_TYPE_PHY, "0/54", none, none},
              {119, OPEN_INTF_TYPE_LAG, "3/64", none, none},
              {120, OPEN_INTF_TYPE_LOOPBACK, "loopback0", none, 0},
              {127, OPEN_INTF_TYPE_LOOPBACK, "loopback7", none, 7},
              {226, OPEN_INTF_TYPE_VLAN_RTR, "vlan4094", 4094, none}};
  for (const auto &row : rows) {
    uint32_t type = none, vlan = none, loopback = none;
    char buffer[16];
    open_buffdesc name = {sizeof buffer, buffer};
    EXPECT_EQ(rpcclt_openapiRtrIntfTypeGet(&handle, row.number, &type), OPEN_E_NONE) << row.name;
    EXPECT_EQ(type, row.type) << row.name;
    EXPECT_EQ(rpcclt_openapiRtrIntfNameGet(&handle, row.number, &name), OPEN_E_NONE) << row.name;
    EXPECT_STREQ(buffer, row.name);
    EXPECT_EQ(name.size, strlen(row.name));
    EXPECT_EQ(rpcclt_openapiRtrIntfVlanIdGet(&handle, row.number, &vlan),
              row.vlan == none ? OPEN_E_NOT_FOUND : OPEN_E_NONE)
        << row.name;
    EXPECT_EQ(vlan, row.vlan) << row.name;
    EXPECT_EQ(rpcclt_openapiRtrIntfLoopbackIdGet(&handle, row.number, &loopback),
              row.loopback == none ? OPEN_E_NOT_FOUND : OPEN_E_NONE)
        << row.name;
    EXPECT_EQ(loopback, row.loopback) << row.name;
  }
}

TEST_F(RoutingInterfaces, WhatIsNoRoutingInterfaceIsNotFound) {
  ASSERT_EQ(commit("interface 0/2 routing"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/2 lag 1"), OPEN_E_NONE);
  const refused_number rows[] = {{1, OPEN_E_NOT_FOUND},  {2, OPEN_E_NOT_FOUND},     {55, OPEN_E_NOT_FOUND},
                                 {56, OPEN_E_NOT_FOUND}, {226, OPEN_E_NOT_FOUND},   {353, OPEN_E_NOT_FOUND},
                                 {0, OPEN_E_PARAM},      {128, OPEN_E_PARAM},       {225, OPEN_E_PARAM},
                                 {354, OPEN_E_PARAM},    {UINT32_MAX, OPEN_E_PARAM}};
  for (const auto &[number, result] : rows) {
    uint32_t value;
    char buffer[16];
    open_buffdesc name = {sizeof buffer, buffer};
    EXPECT_EQ(rpcclt_openapiRtrIntfTypeGet(&handle, number, &value), result) << number;
    EXPECT_EQ(rpcclt_openapiRtrIntfNameGet(&handle, number, &name), result) << number;
    EXPECT_EQ(rpcclt_openapiRtrIntfVlanIdGet(&handle, number, &value), result) << number;
    EXPECT_EQ(rpcclt_openapiRtrIntfLoopbackIdGet(&handle, number, &value), result) << number;
  }
}

TEST_F(RoutingInterfaces, NameThatDoesNotFitIsRefused) {
  char buffer[16] = "untouched";
  open_buffdesc name = {9, buffer};
  EXPECT_EQ(rpcclt_openapiRtrIntfNameGet(&handle, 120, &name), OPEN_E_PARAM);
  EXPECT_STREQ(buffer, "untouched");
  name.size = 10;
  EXPECT_EQ(rpcclt_openapiRtrIntfNameGet(&handle, 120, &name), OPEN_E_NONE);
  EXPECT_STREQ(buffer, "loopback0");
}

/* --- VLAN routing interfaces ---------------------------------------------------------------------------- */

TEST_F(RoutingInterfaces, VlanRoutingInterfaceIsMadeWithTheLowestFreeNumberAndRemoved) {
  make_vlans();
  take_and_hold();
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 20), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(number_of(20), 226);
  EXPECT_EQ(number_of(10), 227);
  EXPECT_EQ(pending_interfaces(), (std::vector<int>{226, 227}));
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 20), OPEN_E_NONE);
  EXPECT_EQ(number_of(20), OPEN_E_NOT_FOUND);
  EXPECT_EQ(pending_interfaces(), (std::vector<int>{-226, 227}));
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 30), OPEN_E_NONE);
  EXPECT_EQ(number_of(30), 226);
  EXPECT_EQ(pending_interfaces(), (std::vector<int>{226, 227}));
}

TEST_F(RoutingInterfaces, NumbersStayThroughDeletionsAndRestarts) {
  make_vlans();
  for (uint32_t vlan : {1u, 10u, 20u}) ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, vlan), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 1), OPEN_E_NONE);
  for (int time = 0; time < 3; time++) { /* from the journal, then from snapshots */
    restart();
    EXPECT_EQ(number_of(10), 227);
    EXPECT_EQ(number_of(20), 228);
  }
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 30), OPEN_E_NONE);
  EXPECT_EQ(number_of(30), 226);
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 10), OPEN_E_NONE);
  restart();
  EXPECT_EQ(number_of(20), 228);
  EXPECT_EQ(number_of(30), 226);
  std::string error;
  ASSERT_TRUE(softswitch::save_startup_config(&error)) << error;
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 30), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 1), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_EQ(number_of(1), OPEN_E_NOT_FOUND);
  EXPECT_EQ(number_of(20), 228);
  EXPECT_EQ(number_of(30), 226);
}

TEST_F(RoutingInterfaces, VlanMustExistAndHaveOneOrNone) {
  for (const auto &[vlan, result] : absent_vlans) {
    EXPECT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, vlan), result) << vlan;
    EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, vlan), result) << vlan;
    EXPECT_EQ(number_of(vlan), result) << vlan;
  }
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 1), OPEN_E_NOT_FOUND);
  EXPECT_EQ(number_of(1), OPEN_E_NOT_FOUND);
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 1), OPEN_E_NONE);
  std::string before = journal();
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 1), OPEN_E_EXISTS);
  EXPECT_EQ(journal(), before);
}

TEST_F(RoutingInterfaces, FullTableTakesNoMore) {
  make_vlans();
  ASSERT_TRUE(softswitch::set_limit("vlan-routing-interfaces", 2));
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 10), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 20), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 30), OPEN_E_FULL);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 20), OPEN_E_EXISTS);
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 30), OPEN_E_NONE);
}

TEST_F(RoutingInterfaces, VlanWithOneIsNotDeleted) {
  make_vlans();
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_FAIL);
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_NONE);
}

TEST_F(RoutingInterfaces, RemovalTakesAddressesAndRoutingModeAlong) {
  ASSERT_EQ(commit("vlan 1 routing"), OPEN_E_NONE);
  for (const char *line :
       {"no interface vlan1 routing", "interface vlan1 ip address 10.0.0.1/24",
        "interface vlan1 ip secondary-address 10.0.0.2/24", "interface vlan1 ipv6 address 2001:db8::1/64",
        "interface vlan1 ipv6 address auto"})
    ASSERT_EQ(commit(line), OPEN_E_NONE) << line;
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 1), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "");
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 1), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "vlan 1 routing interface 226\n");
}

/* --- Interfaces ----------------------------------------------------------------------------------------- */

TEST_F(RoutingInterfaces, ExistingInterfacesAreToldFromAbsentAndImpossibleOnes) {
  ASSERT_EQ(commit("no lag 1"), OPEN_E_NONE);
  ASSERT_EQ(commit("vlan 1 routing"), OPEN_E_NONE);
  for (uint32_t number : {1u, 54u, 55u, 57u, 119u, 120u, 127u, 226u})
    EXPECT_EQ(rpcclt_openapiIntfExistCheck(&handle, number), OPEN_E_NONE) << number;
  const refused_number rows[] = {{56, OPEN_E_NOT_FOUND}, {227, OPEN_E_NOT_FOUND},   {353, OPEN_E_NOT_FOUND},
                                 {0, OPEN_E_PARAM},      {128, OPEN_E_PARAM},       {225, OPEN_E_PARAM},
                                 {354, OPEN_E_PARAM},    {UINT32_MAX, OPEN_E_PARAM}};
  for (const auto &[number, result] : rows)
    EXPECT_EQ(rpcclt_openapiIntfExistCheck(&handle, number), result) << number;
}

TEST_F(RoutingInterfaces, LoopbacksAreNumberedByTheirIds) {
  uint32_t max = 99, number = 99;
  ASSERT_EQ(rpcclt_openapiDot1LoopbackIdMaxGet(&handle, &max), OPEN_E_NONE);
  EXPECT_EQ(max, 7u);
  for (uint32_t id = 0; id <= max; id++) {
    ASSERT_EQ(rpcclt_openapiLoopbackIfNumGet(&handle, id, &number), OPEN_E_NONE) << id;
    EXPECT_EQ(number, 120 + id);
  }
  for (uint32_t id : {8u, 120u, UINT32_MAX})
    EXPECT_EQ(rpcclt_openapiLoopbackIfNumGet(&handle, id, &number), OPEN_E_PARAM) << id;
}

TEST_F(RoutingInterfaces, NameSizeIsEnoughForEveryName) {
  uint32_t size = 0, longest = 0;
  softswitch::stop();
  write_file(dir.path + "/profile.json", R"({"ports": [{"name": "0/999"}]})");
  setenv("KESTREL_PROFILE", (dir.path + "/profile.json").c_str(), 1);
  ASSERT_EQ(openapiClientRegister("test", &handle), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiVlanCreate(&handle, 4094), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 4094), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiIntfNameSizeGet(&handle, &size), OPEN_E_NONE);
  std::vector<char> buffer(size);
  for (uint32_t number = 1; number <= 353; number++) {
    open_buffdesc name = {size, buffer.data()};
    if (rpcclt_openapiIntfExistCheck(&handle, number) != OPEN_E_NONE) continue;
    ASSERT_EQ(openapiIfNameGet(&handle, number, &name), OPEN_E_NONE) << number;
    longest = std::max(longest, name.size);
  }
  EXPECT_EQ(size, longest + 1);
}

/* --- Every function ------------------------------------------------------------------------------------- */

struct function_row {
  const char *name;
  open_error_t (*call)(openapiClientHandle_t *, uint32_t *);
};

open_inet_pfx_t address = {{OPEN_AF_INET, {0x0a000001}}, 24, 0};
char name_buffer[16];

const function_row reading[] = {
    {"rpcclt_openapiRtrAdminModeGet",
     [](openapiClientHandle_t *h, uint32_t *out) { return rpcclt_openapiRtrAdminModeGet(h, 1, out); }},
    {"rpcclt_openapiRtrIntfNextGet",
     [](openapiClientHandle_t *h, uint32_t *out) { return rpcclt_openapiRtrIntfNextGet(h, 0, out); }},
    {"rpcclt_openapiRtrIntfTypeGet",
     [](openapiClientHandle_t *h, uint32_t *out) { return rpcclt_openapiRtrIntfTypeGet(h, 120, out); }},
    {"rpcclt_openapiRtrIntfNameGet",
     [](openapiClientHandle_t *h, uint32_t *out) {
       open_buffdesc name = {sizeof name_buffer, out ? name_buffer : nullptr};
       return rpcclt_openapiRtrIntfNameGet(h, 120, &name);
     }},
    {"rpcclt_openapiRtrIntfVlanIdGet",
     [](openapiClientHandle_t *h, uint32_t *out) { return rpcclt_openapiRtrIntfVlanIdGet(h, 226, out); }},
    {"rpcclt_openapiRtrIntfLoopbackIdGet",
     [](openapiClientHandle_t *h, uint32_t *out) { return rpcclt_openapiRtrIntfLoopbackIdGet(h, 120, out); }},
    {"rpcclt_openapiRtrVlanIntfNumGetZYL",
     [](openapiClientHandle_t *h, uint32_t *out) { return rpcclt_openapiRtrVlanIntfNumGetZYL(h, 1, out); }},
    {"rpcclt_openapiRtrIntfIpAddrGet",
     [](openapiClientHandle_t *h, uint32_t *out) {
       open_inet_pfx_t prefix = {};
       return rpcclt_openapiRtrIntfIpAddrGet(h, OPEN_AF_INET, 226, out ? &prefix : nullptr);
     }},
    {"rpcclt_openapiRtrIntfSecIpAddrGet",
     [](openapiClientHandle_t *h, uint32_t *out) {
       open_inet_pfx_t prefix;
       if (out) *out = 0;
       return rpcclt_openapiRtrIntfSecIpAddrGet(h, OPEN_AF_INET, 226, &prefix, out);
     }},
    {"rpcclt_openapiDot1LoopbackIdMaxGet",
     [](openapiClientHandle_t *h, uint32_t *out) { return rpcclt_openapiDot1LoopbackIdMaxGet(h, out); }},
    {"rpcclt_openapiLoopbackIfNumGet",
     [](openapiClientHandle_t *h, uint32_t *out) { return rpcclt_openapiLoopbackIfNumGet(h, 0, out); }},
    {"rpcclt_openapiIntfNameSizeGet",
     [](openapiClientHandle_t *h, uint32_t *out) { return rpcclt_openapiIntfNameSizeGet(h, out); }},
};

/* In an order in which each succeeds after those before it. */
const function_row setting[] = {
    {"rpcclt_openapiRtrAdminModeSet",
     [](openapiClientHandle_t *h, uint32_t *) { return rpcclt_openapiRtrAdminModeSet(h, 1, 1); }},
    {"rpcclt_openapiRtrIntfRtrAdminModeSet",
     [](openapiClientHandle_t *h, uint32_t *) { return rpcclt_openapiRtrIntfRtrAdminModeSet(h, 1, 1); }},
    {"rpcclt_openapiRtrIntfIpAddrAdd",
     [](openapiClientHandle_t *h, uint32_t *) {
       return rpcclt_openapiRtrIntfIpAddrAdd(h, OPEN_AF_INET, 1, OPEN_INTF_IP_ADDR_AUTO, &address, 0);
     }},
    {"rpcclt_openapiRtrIntfIpAddrDel",
     [](openapiClientHandle_t *h, uint32_t *) {
       return rpcclt_openapiRtrIntfIpAddrDel(h, OPEN_AF_INET, 2, OPEN_INTF_IP_ADDR_AUTO, &address, 0);
     }},
    {"rpcclt_openapiRtrVlanIntfCreate",
     [](openapiClientHandle_t *h, uint32_t *) { return rpcclt_openapiRtrVlanIntfCreate(h, 10); }},
    {"rpcclt_openapiRtrVlanIntfDelete",
     [](openapiClientHandle_t *h, uint32_t *) { return rpcclt_openapiRtrVlanIntfDelete(h, 1); }},
};

/* What the functions above need: a routing interface of VLAN 1 with addresses, VLAN 10, and DHCP on 0/2. */
class EveryRoutingFunction : public SoftSwitch {
protected:
  void SetUp() override {
    SoftSwitch::SetUp();
    for (const char *line :
         {"vlan 10", "vlan 1 routing", "interface vlan1 ip address 10.9.0.1/24",
          "interface vlan1 ip secondary-address 10.9.0.2/24", "interface 0/2 ip address dhcp"})
      ASSERT_EQ(commit(line), OPEN_E_NONE) << line;
    before = softswitch::running_config();
  }
  std::string before;
};

TEST_F(EveryRoutingFunction, WantsHandleAndPointers) {
  openapiClientHandle_t unknown = {};
  uint32_t value;
  for (const function_row &row : reading) {
    EXPECT_EQ(row.call(&handle, &value), OPEN_E_NONE) << row.name;
    EXPECT_EQ(row.call(&unknown, &value), OPEN_E_RPC) << row.name;
    EXPECT_EQ(row.call(nullptr, &value), OPEN_E_PARAM) << row.name;
    EXPECT_EQ(row.call(&handle, nullptr), OPEN_E_PARAM) << row.name;
  }
  for (const function_row &row : setting) {
    EXPECT_EQ(row.call(&unknown, nullptr), OPEN_E_RPC) << row.name;
    EXPECT_EQ(row.call(nullptr, nullptr), OPEN_E_PARAM) << row.name;
  }
  EXPECT_EQ(rpcclt_openapiIntfExistCheck(&unknown, 1), OPEN_E_RPC);
  EXPECT_EQ(rpcclt_openapiIntfExistCheck(nullptr, 1), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiRtrIntfIpAddrAdd(&handle, OPEN_AF_INET, 1, OPEN_INTF_IP_ADDR_AUTO, nullptr, 0),
            OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiRtrIntfIpAddrDel(&handle, OPEN_AF_INET, 2, OPEN_INTF_IP_ADDR_AUTO, nullptr, 0),
            OPEN_E_PARAM);
  EXPECT_EQ(softswitch::running_config(), before);
}

TEST_F(EveryRoutingFunction, AnswersOrderedFaultsAndChangesNothing) {
  uint32_t value;
  for (const auto &rows : {std::vector<function_row>(std::begin(reading), std::end(reading)),
                           std::vector<function_row>(std::begin(setting), std::end(setting))}) {
    for (const function_row &row : rows) {
      ASSERT_TRUE(softswitch::fault_order(row.name, OPEN_E_INTERNAL, 1, 0)) << row.name;
      EXPECT_EQ(row.call(&handle, &value), OPEN_E_INTERNAL) << row.name;
    }
  }
  EXPECT_EQ(softswitch::running_config(), before);
}

TEST_F(EveryRoutingFunction, ChangesNothingThatCannotBeStored) {
  {
    full_disk full(file_content(dir.path + "/journal-1").size());
    for (const function_row &row : setting) EXPECT_EQ(row.call(&handle, nullptr), OPEN_E_FAIL) << row.name;
  }
  EXPECT_EQ(softswitch::running_config(), before);
  restart_keeps_configuration();
  for (const function_row &row : setting) EXPECT_EQ(row.call(&handle, nullptr), OPEN_E_NONE) << row.name;
  EXPECT_EQ(softswitch::running_config(), "vlan 10\n"
                                          "vlan 10 routing interface 227\n"
                                          "ip routing\n"
                                          "interface 0/1 routing\n"
                                          "interface 0/1 ip address dhcp\n");
}

} // namespace
