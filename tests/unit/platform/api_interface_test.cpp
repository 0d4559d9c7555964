/* Tests of the functions of the C interface about what an interface is by itself: every result code of every
 * function, every type of interface, and what they do. */
#include "tests/unit/platform/interface_test_support.h"

namespace {

/* --- What holds for all functions ----------------------------------------------------------------------- */

class EveryInterfaceFunction : public MixedPorts {};

TEST_F(EveryInterfaceFunction, RefusesInterfacesThatDoNotExist) {
  const std::pair<uint32_t, open_error_t> absent[] = {
      {0, OPEN_E_PARAM},      {128, OPEN_E_PARAM},        {225, OPEN_E_PARAM},
      {354, OPEN_E_PARAM},    {UINT32_MAX, OPEN_E_PARAM}, {10, OPEN_E_NOT_FOUND},
      {54, OPEN_E_NOT_FOUND}, {227, OPEN_E_NOT_FOUND},    {353, OPEN_E_NOT_FOUND},
  };
  for (const auto &[interface, result] : absent) {
    for (const function_row &row : reading)
      EXPECT_EQ(row.call(&handle, interface), result) << row.name << interface;
    for (const function_row &row : setting)
      EXPECT_EQ(row.call(&handle, interface), result) << row.name << interface;
  }
  EXPECT_EQ(configured(), "");
}

TEST_F(EveryInterfaceFunction, ReadsOfEveryTypeOfInterface) {
  for (uint32_t interface : one_of_each_type) {
    for (const function_row &row : reading)
      EXPECT_EQ(row.call(&handle, interface), OPEN_E_NONE) << row.name << interface;
  }
}

TEST_F(EveryInterfaceFunction, WantsARegisteredHandle) {
  handle_t never = {};
  for (const function_row &row : reading) {
    EXPECT_EQ(row.call(&never, copper_port), OPEN_E_RPC) << row.name;
    EXPECT_EQ(row.call(nullptr, copper_port), OPEN_E_PARAM) << row.name;
  }
  for (const function_row &row : setting) {
    EXPECT_EQ(row.call(&never, copper_port), OPEN_E_RPC) << row.name;
    EXPECT_EQ(row.call(nullptr, copper_port), OPEN_E_PARAM) << row.name;
  }
  EXPECT_EQ(openapiIfNextChangedGet(&never, 0, &value, &value2), OPEN_E_RPC);
}

TEST_F(EveryInterfaceFunction, AnswersOrderedFaultsAndChangesNothing) {
  for (const function_row &row : reading) {
    ASSERT_TRUE(softswitch::fault_order(row.name, OPEN_E_TIMEOUT, 1, 0)) << row.name;
    EXPECT_EQ(row.call(&handle, copper_port), OPEN_E_TIMEOUT) << row.name;
    EXPECT_EQ(row.call(&handle, copper_port), OPEN_E_NONE) << row.name;
  }
  for (const function_row &row : setting) {
    ASSERT_TRUE(softswitch::fault_order(row.name, OPEN_E_FULL, 1, 0)) << row.name;
    EXPECT_EQ(row.call(&handle, copper_port), OPEN_E_FULL) << row.name;
  }
  EXPECT_EQ(configured(), "");
  ASSERT_TRUE(softswitch::fault_order("openapiIfNextChangedGet", OPEN_E_FULL, 1, 0));
  EXPECT_EQ(openapiIfNextChangedGet(&handle, 0, &value, &value2), OPEN_E_FULL);
  for (const function_row &row : setting) EXPECT_EQ(row.call(&handle, copper_port), OPEN_E_NONE) << row.name;
}

TEST_F(EveryInterfaceFunction, RefusesNullPointers) {
  open_buffdesc nowhere = {10, nullptr};
  for (read_function read :
       {rpcclt_openapiIfDescrSizeGet, openapiIfAdminStateGet, rpcclt_openapiIfSoftShutdownStateGet,
        openapiIfLinkStateGet, openapiIfSpeedGet, openapiIfDuplexModeGet, openapiIfAutoNegGet,
        rpcclt_openapiIfConnectorTypeGet, openapiIfMtuSizeGet})
    EXPECT_EQ(read(&handle, copper_port, nullptr), OPEN_E_PARAM);
  for (text_function pass :
       {openapiIfNameGet, rpcclt_openapiIfMacAddrGet, rpcclt_openapiIfDescrGet, rpcclt_openapiIfDescrSet}) {
    EXPECT_EQ(pass(&handle, copper_port, nullptr), OPEN_E_PARAM);
    EXPECT_EQ(pass(&handle, copper_port, &nowhere), OPEN_E_PARAM);
  }
  EXPECT_EQ(openapiIfNextChangedGet(&handle, 0, nullptr, &value), OPEN_E_PARAM);
  EXPECT_EQ(openapiIfNextChangedGet(&handle, 0, &value, nullptr), OPEN_E_PARAM);
}

TEST_F(EveryInterfaceFunction, ChangesNothingThatCannotBeStored) {
  {
    full_disk full(0);
    for (const function_row &row : setting)
      EXPECT_EQ(row.call(&handle, copper_port), OPEN_E_FAIL) << row.name;
  }
  EXPECT_EQ(configured(), "");
}

/* --- Values --------------------------------------------------------------------------------------------- */

constexpr uint32_t up_ = OPEN_LINK_UP, down_ = OPEN_LINK_DOWN, full = OPEN_PORT_DUPLEX_FULL, unknown = 65535;

TEST_F(Interface, FactoryStateIsAsTypeAndProfileSay) {
  const std::pair<uint32_t, shown> factory[] = {
      {1, {"0/1", "02:00:5E:FF:FF:F1", "", 1, 0, up_, OPEN_PORT_AUTO_NEG, full, 0, 1, 1518}},
      {2, {"0/2", "02:00:5E:FF:FF:F2", "", 1, 0, up_, OPEN_PORT_AUTO_NEG, full, 0, 1, 1518}},
      {3, {"0/3", "02:00:5E:FF:FF:F3", "", 1, 0, up_, OPEN_PORT_AUTO_NEG, full, 0, 1, 1518}},
      {4, {"0/4", "02:00:5E:FF:FF:F4", "", 1, 0, up_, OPEN_PORT_AUTO_NEG, full, 0, 1, 1518}},
      {5, {"0/5", "02:00:5E:FF:FF:F5", "", 1, 0, up_, OPEN_PORT_FULL_100FX, full, 1, 2, 1518}},
      {6, {"0/6", "02:00:5E:FF:FF:F6", "", 1, 0, up_, OPEN_PORT_FULL_1000SX, full, 1, 2, 1518}},
      {7, {"0/7", "02:00:5E:FF:FF:F7", "", 1, 0, up_, OPEN_PORT_FULL_10GSX, full, 1, 2, 1518}},
      {8, {"0/8", "02:00:5E:FF:FF:F8", "", 1, 0, up_, OPEN_PORT_FULL_40GSX, full, 1, 2, 1518}},
      {9, {"0/9", "02:00:5E:FF:FF:F9", "", 1, 0, down_, OPEN_PORT_AUTO_NEG, unknown, 0, 1, 1518}},
      {cpu, {"cpu", "02:00:5E:FF:FF:F0", "", 1, 0, up_, OPEN_PORT_UNKNOWN, unknown, unknown, 0, 1518}},
      {lag, {"3/1", "02:00:5E:00:00:28", "", 1, 0, down_, OPEN_PORT_LAG, full, unknown, 0, 1518}},
      {119, {"3/64", "02:00:5E:00:00:67", "", 1, 0, down_, OPEN_PORT_LAG, full, unknown, 0, 1518}},
      {loopback,
       {"loopback0", "02:00:5E:FF:FF:F0", "", 1, 0, up_, OPEN_PORT_UNKNOWN, unknown, unknown, 0, 1518}},
      {vlan_routing,
       {"vlan1", "02:00:5E:FF:FF:F0", "", 1, 0, up_, OPEN_PORT_UNKNOWN, unknown, unknown, 0, 1518}},
  };
  for (const auto &[interface, wanted] : factory) EXPECT_EQ(all_of(interface), wanted) << interface;
  EXPECT_EQ(configured(), "");
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
}

class BuiltInSwitch : public Interface {
protected:
  void SetUp() override { SoftSwitch::SetUp(); }
};

TEST_F(BuiltInSwitch, HasCagesOfTenAndFortyGigabits) {
  for (uint32_t port = 1; port <= 54; port++) {
    EXPECT_EQ(read(openapiIfSpeedGet, port), port <= 48 ? OPEN_PORT_FULL_10GSX : OPEN_PORT_FULL_40GSX);
    EXPECT_EQ(read(rpcclt_openapiIfConnectorTypeGet, port), OPEN_CONNECTOR_CAGE);
    EXPECT_TRUE(up(port));
  }
  EXPECT_EQ(read_text(rpcclt_openapiIfMacAddrGet, cpu), "02:00:5E:10:00:01");
  EXPECT_EQ(read_text(rpcclt_openapiIfMacAddrGet, 1), "02:00:5E:10:00:02");
  EXPECT_EQ(read_text(rpcclt_openapiIfMacAddrGet, 54), "02:00:5E:10:00:37");
  EXPECT_EQ(read_text(rpcclt_openapiIfMacAddrGet, lag), "02:00:5E:10:00:39");
}

TEST_F(Interface, MacAddressesOfPortsAndLagsAreTheirOwn) {
  std::vector<std::string> seen = {read_text(rpcclt_openapiIfMacAddrGet, cpu)};
  for (uint32_t interface = 1; interface <= 119; interface++) {
    if (openapiIfAdminStateGet(&handle, interface, &value) != OPEN_E_NONE || interface == cpu) continue;
    seen.push_back(read_text(rpcclt_openapiIfMacAddrGet, interface));
    EXPECT_EQ(seen.back().substr(0, 8), "02:00:5E") << "counting stays in the last three bytes";
  }
  size_t count = seen.size();
  EXPECT_EQ(count, 1u + 9 + 64);
  std::sort(seen.begin(), seen.end());
  seen.erase(std::unique(seen.begin(), seen.end()), seen.end());
  EXPECT_EQ(seen.size(), count);
}

TEST_F(Interface, TextThatDoesNotFitTheBufferIsRefusedAndNothingIsWritten) {
  ASSERT_EQ(describe(copper_port, "uplink"), OPEN_E_NONE);
  const struct {
    text_function get;
    std::string content;
    uint32_t size_read;
  } rows[] = {{openapiIfNameGet, "0/2", 3},
              {rpcclt_openapiIfMacAddrGet, "02:00:5E:FF:FF:F2", 17},
              {rpcclt_openapiIfDescrGet, "uplink", 7}};
  for (const auto &row : rows) {
    uint32_t needed = static_cast<uint32_t>(row.content.size()) + 1;
    for (uint32_t size : {0u, 1u, needed - 1}) {
      strcpy(buffer, "as before");
      text = {size, buffer};
      EXPECT_EQ(row.get(&handle, copper_port, &text), OPEN_E_PARAM) << row.content << size;
      EXPECT_STREQ(buffer, "as before");
    }
    text = {needed, buffer};
    EXPECT_EQ(row.get(&handle, copper_port, &text), OPEN_E_NONE) << row.content;
    EXPECT_EQ(buffer, row.content);
    EXPECT_EQ(text.size, row.size_read) << row.content;
  }
}

/* --- Description ---------------------------------------------------------------------------------------- */

TEST_F(Interface, DescriptionsSizeCountsTheTerminatorSoThatEmptyIsBelowTwo) {
  ASSERT_EQ(rpcclt_openapiIfDescrGet(&handle, copper_port, with()), OPEN_E_NONE);
  EXPECT_EQ(text.size, 1u);
  ASSERT_EQ(describe(copper_port, "x"), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiIfDescrGet(&handle, copper_port, with()), OPEN_E_NONE);
  EXPECT_EQ(text.size, 2u);
}

TEST_F(Interface, DescriptionsHoldUpTo64Bytes) {
  for (uint32_t interface : one_of_each_type)
    EXPECT_EQ(read(rpcclt_openapiIfDescrSizeGet, interface), 64u) << interface;
  for (uint32_t interface : {copper_port, cage, lag, loopback}) {
    EXPECT_EQ(describe(interface, std::string(64, 'd')), OPEN_E_NONE) << interface;
    EXPECT_EQ(describe(interface, std::string(65, 'x')), OPEN_E_PARAM) << interface;
    EXPECT_EQ(describe(interface, std::string(20000, 'x')), OPEN_E_PARAM) << interface;
    EXPECT_EQ(description(interface), std::string(64, 'd')) << interface;
    restart_keeps_configuration();
    EXPECT_EQ(description(interface), std::string(64, 'd')) << interface;
    EXPECT_EQ(describe(interface, ""), OPEN_E_NONE) << interface;
    EXPECT_EQ(description(interface), "") << interface;
  }
  EXPECT_EQ(configured(), "");
}

TEST_F(Interface, DescriptionsOfCpuAndVlanRoutingInterfacesAreUnavailable) {
  for (uint32_t interface : {cpu, vlan_routing}) {
    EXPECT_EQ(describe(interface, "x"), OPEN_E_UNAVAIL) << interface;
    EXPECT_EQ(describe(interface, ""), OPEN_E_UNAVAIL) << interface;
    EXPECT_EQ(description(interface), "");
  }
}

TEST_F(Interface, DescriptionIsReadWithAndWithoutTheTerminatorCounted) {
  for (uint32_t size : {6u, 7u}) {
    ASSERT_EQ(describe(lag, ""), OPEN_E_NONE);
    char content[] = "uplink";
    open_buffdesc in = {size, content};
    ASSERT_EQ(rpcclt_openapiIfDescrSet(&handle, lag, &in), OPEN_E_NONE);
    EXPECT_EQ(description(lag), "uplink");
  }
  std::string longest(64, 'n');
  open_buffdesc in = {65, longest.data()};
  EXPECT_EQ(rpcclt_openapiIfDescrSet(&handle, lag, &in), OPEN_E_NONE);
}

TEST_F(Interface, AnyCharactersButControlOnesMakeADescription) {
  for (const char *good : {" ", "a b", "\"", "\\", "\\\"", "!x", "no", "shutdown", "B\xc3\xbcro \xe2\x82\xac",
                           "a,b|<c>", "\xff\xfe", "<number>"}) {
    EXPECT_EQ(describe(loopback, good), OPEN_E_NONE) << good;
    EXPECT_EQ(description(loopback), good);
    restart_keeps_configuration();
    EXPECT_EQ(description(loopback), good);
  }
  for (const char *bad : {"\t", "a\nb", "\x01", "\x7f", "a\r", "\x1b[2J"}) {
    EXPECT_EQ(describe(loopback, bad), OPEN_E_PARAM);
    EXPECT_EQ(description(loopback), "<number>");
  }
}

/* --- Administrative state, soft shutdown, link ---------------------------------------------------------- */

TEST_F(Interface, PortsLagsAndLoopbacksCanBeDisabled) {
  for (uint32_t interface : {copper_port, cage, lag, 119u, loopback, 127u}) {
    ASSERT_EQ(rpcclt_openapiIfAdminStateSet(&handle, interface, OPEN_DISABLE), OPEN_E_NONE) << interface;
    EXPECT_EQ(read(openapiIfAdminStateGet, interface), OPEN_DISABLE);
    settle();
    EXPECT_FALSE(up(interface)) << interface;
    ASSERT_EQ(rpcclt_openapiIfAdminStateSet(&handle, interface, OPEN_ENABLE), OPEN_E_NONE) << interface;
    EXPECT_EQ(read(openapiIfAdminStateGet, interface), OPEN_ENABLE);
    settle();
    EXPECT_EQ(up(interface), interface != lag && interface != 119) << interface;
  }
  ASSERT_EQ(rpcclt_openapiIfAdminStateSet(&handle, cage, OPEN_DISABLE), OPEN_E_NONE);
  EXPECT_EQ(configured(), "interface 0/8 shutdown\n");
}

TEST_F(Interface, CpuAndVlanRoutingInterfacesAreAlwaysEnabled) {
  for (uint32_t interface : {cpu, vlan_routing}) {
    for (uint32_t state : {OPEN_DISABLE, OPEN_ENABLE})
      EXPECT_EQ(rpcclt_openapiIfAdminStateSet(&handle, interface, state), OPEN_E_UNAVAIL) << interface;
    EXPECT_EQ(read(openapiIfAdminStateGet, interface), OPEN_ENABLE);
  }
}

TEST_F(Interface, StatesAreZeroOrOne) {
  for (uint32_t state : {2u, 3u, UINT32_MAX}) {
    for (uint32_t interface : one_of_each_type) {
      EXPECT_EQ(rpcclt_openapiIfAdminStateSet(&handle, interface, state), OPEN_E_PARAM) << interface;
      EXPECT_EQ(rpcclt_openapiIfSoftShutdownStateSet(&handle, interface, state), OPEN_E_PARAM) << interface;
    }
  }
  EXPECT_EQ(configured(), "");
}

TEST_F(Interface, SoftShutdownTakesTheLinkDownAndLeavesTheAdministrativeState) {
  ASSERT_EQ(rpcclt_openapiIfSoftShutdownStateSet(&handle, cage, OPEN_ENABLE), OPEN_E_NONE);
  settle();
  EXPECT_EQ(read(rpcclt_openapiIfSoftShutdownStateGet, cage), OPEN_ENABLE);
  EXPECT_EQ(read(openapiIfAdminStateGet, cage), OPEN_ENABLE);
  EXPECT_FALSE(up(cage));
  EXPECT_EQ(configured(), "interface 0/8 soft-shutdown\n");
  restart_keeps_configuration();
  EXPECT_FALSE(up(cage));
  ASSERT_EQ(rpcclt_openapiIfSoftShutdownStateSet(&handle, cage, OPEN_DISABLE), OPEN_E_NONE);
  settle();
  EXPECT_TRUE(up(cage));
}

TEST_F(Interface, OnlyPortsHaveASoftShutdown) {
  for (uint32_t interface : {cpu, lag, loopback, vlan_routing}) {
    for (uint32_t state : {OPEN_DISABLE, OPEN_ENABLE})
      EXPECT_EQ(rpcclt_openapiIfSoftShutdownStateSet(&handle, interface, state), OPEN_E_UNAVAIL) << interface;
    EXPECT_EQ(read(rpcclt_openapiIfSoftShutdownStateGet, interface), 0u);
  }
}

TEST_F(Interface, LinkNeedsCableFarEndAndAPortThatIsNotShut) {
  for (int missing = 0; missing < 16; missing++) {
    softswitch::set_cabled("0/6", !(missing & 1));
    softswitch::set_far_end("0/6", !(missing & 2));
    ASSERT_EQ(rpcclt_openapiIfAdminStateSet(&handle, 6, !(missing & 4)), OPEN_E_NONE);
    ASSERT_EQ(rpcclt_openapiIfSoftShutdownStateSet(&handle, 6, (missing & 8) != 0), OPEN_E_NONE);
    settle();
    EXPECT_EQ(up(6), missing == 0) << missing;
  }
}

TEST_F(Interface, LagIsUpWhenItIsEnabledAndAMemberHasLink) {
  ASSERT_EQ(commit("interface 0/6 lag 1"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/9 lag 1"), OPEN_E_NONE); /* without a cable */
  ASSERT_EQ(commit("interface 0/7 lag 2"), OPEN_E_NONE);
  EXPECT_TRUE(up(lag));
  EXPECT_TRUE(up(57));
  EXPECT_FALSE(up(58));
  softswitch::set_far_end("0/6", false);
  EXPECT_FALSE(up(lag));
  softswitch::set_cabled("0/9", true);
  EXPECT_TRUE(up(lag));
  ASSERT_EQ(rpcclt_openapiIfAdminStateSet(&handle, lag, OPEN_DISABLE), OPEN_E_NONE);
  EXPECT_FALSE(up(lag));
  EXPECT_TRUE(up(57));
}

TEST_F(Interface, VlanRoutingInterfaceIsUpWhenAMemberOfItsVlanHasLink) {
  const uint32_t number = 227;
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  ASSERT_EQ(commit("vlan 10 routing"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/7 lag 1"), OPEN_E_NONE);
  EXPECT_FALSE(up(number)) << "no member";
  ASSERT_EQ(commit("interface 0/9 vlan 10 participation include"), OPEN_E_NONE);
  EXPECT_FALSE(up(number)) << "the member has no link";
  softswitch::set_cabled("0/9", true);
  EXPECT_TRUE(up(number));
  softswitch::set_far_end("0/9", false);
  EXPECT_FALSE(up(number));
  ASSERT_EQ(commit("interface 3/1 vlan 10 participation include"), OPEN_E_NONE);
  EXPECT_TRUE(up(number)) << "a LAG is a member as well";
  ASSERT_EQ(commit("interface 3/1 shutdown"), OPEN_E_NONE);
  EXPECT_FALSE(up(number));
}

/* --- Speed ---------------------------------------------------------------------------------------------- */

constexpr uint32_t every_speed[] = {OPEN_PORT_HALF_100TX, OPEN_PORT_FULL_100TX,  OPEN_PORT_HALF_10T,
                                    OPEN_PORT_FULL_10T,   OPEN_PORT_FULL_100FX,  OPEN_PORT_FULL_1000SX,
                                    OPEN_PORT_FULL_10GSX, OPEN_PORT_FULL_40GSX,  OPEN_PORT_FULL_25GSX,
                                    OPEN_PORT_FULL_50GSX, OPEN_PORT_FULL_100GSX, OPEN_PORT_FULL_5FX,
                                    OPEN_PORT_FULL_2P5FX};

TEST_F(Interface, PortsHaveTheSpeedsOfTheirConnector) {
  const std::vector<uint32_t> slow = {OPEN_PORT_HALF_100TX, OPEN_PORT_FULL_100TX, OPEN_PORT_HALF_10T,
                                      OPEN_PORT_FULL_10T};
  std::vector<std::vector<uint32_t>> wanted(9, slow);
  for (uint32_t copper : {2, 3, 4}) wanted[copper].push_back(OPEN_PORT_FULL_1000SX);
  for (uint32_t copper : {3, 4}) wanted[copper].push_back(OPEN_PORT_FULL_10GSX);
  wanted[4].push_back(OPEN_PORT_FULL_40GSX);
  wanted[4].push_back(OPEN_PORT_FULL_25GSX);
  for (uint32_t copper : {3, 4}) wanted[copper].push_back(OPEN_PORT_FULL_5FX);
  for (uint32_t copper : {3, 4}) wanted[copper].push_back(OPEN_PORT_FULL_2P5FX);
  wanted[5] = {OPEN_PORT_FULL_100FX};
  wanted[6] = {OPEN_PORT_FULL_1000SX};
  wanted[7] = {OPEN_PORT_FULL_1000SX, OPEN_PORT_FULL_10GSX};
  wanted[8] = {OPEN_PORT_FULL_40GSX};
  for (uint32_t port = 1; port <= 8; port++) {
    std::vector<uint32_t> accepted;
    for (uint32_t speed : every_speed) {
      open_error_t rc = rpcclt_openapiIfSpeedSet(&handle, port, speed);
      EXPECT_TRUE(rc == OPEN_E_NONE || rc == OPEN_E_UNAVAIL) << port << ' ' << speed;
      if (rc != OPEN_E_NONE) continue;
      accepted.push_back(speed);
      EXPECT_EQ(read(openapiIfSpeedGet, port), speed);
      bool half = speed == OPEN_PORT_HALF_10T || speed == OPEN_PORT_HALF_100TX;
      EXPECT_EQ(read(openapiIfDuplexModeGet, port), half ? OPEN_PORT_DUPLEX_HALF : OPEN_PORT_DUPLEX_FULL);
    }
    EXPECT_EQ(accepted, wanted[port]) << port;
  }
}

TEST_F(Interface, WhatIsNoSpeedIsRefused) {
  for (uint32_t speed : {0u, 13u, 15u, 127u, 129u, 130u, 131u, UINT32_MAX}) {
    for (uint32_t interface : one_of_each_type)
      EXPECT_EQ(rpcclt_openapiIfSpeedSet(&handle, interface, speed), OPEN_E_PARAM) << interface;
  }
}

TEST_F(Interface, OnlyPortsHaveASpeedAndOnlyCopperPortsNegotiate) {
  for (uint32_t interface : {cpu, lag, loopback, vlan_routing}) {
    for (uint32_t speed : every_speed)
      EXPECT_EQ(rpcclt_openapiIfSpeedSet(&handle, interface, speed), OPEN_E_UNAVAIL) << interface;
  }
  for (uint32_t interface : {cage, cpu, lag, loopback, vlan_routing}) {
    EXPECT_EQ(rpcclt_openapiIfSpeedSet(&handle, interface, OPEN_PORT_AUTO_NEG), OPEN_E_UNAVAIL) << interface;
    for (uint32_t mode : {OPEN_PORT_AUTO_NEGOTIATE_ENABLE, OPEN_PORT_AUTO_NEGOTIATE_DISABLE})
      EXPECT_EQ(rpcclt_openapiIfAutoNegSet(&handle, interface, mode), OPEN_E_UNAVAIL) << interface;
  }
  EXPECT_EQ(configured(), "");
}

TEST_F(Interface, AutoNegotiationIsEnableOrDisable) {
  for (uint32_t mode : {2u, 65535u, UINT32_MAX})
    EXPECT_EQ(rpcclt_openapiIfAutoNegSet(&handle, copper_port, mode), OPEN_E_PARAM) << mode;
  EXPECT_EQ(read(openapiIfAutoNegGet, copper_port), OPEN_PORT_AUTO_NEGOTIATE_ENABLE);
}

TEST_F(Interface, FixedSpeedEndsAutoNegotiationAndIsKeptWhileItIsOn) {
  ASSERT_EQ(rpcclt_openapiIfSpeedSet(&handle, copper_port, OPEN_PORT_HALF_100TX), OPEN_E_NONE);
  EXPECT_EQ(read(openapiIfAutoNegGet, copper_port), OPEN_PORT_AUTO_NEGOTIATE_DISABLE);
  EXPECT_EQ(read(openapiIfDuplexModeGet, copper_port), OPEN_PORT_DUPLEX_HALF);
  EXPECT_EQ(configured(), "interface 0/2 speed 100-half\n");
  ASSERT_EQ(rpcclt_openapiIfSpeedSet(&handle, copper_port, OPEN_PORT_AUTO_NEG), OPEN_E_NONE);
  EXPECT_EQ(read(openapiIfAutoNegGet, copper_port), OPEN_PORT_AUTO_NEGOTIATE_ENABLE);
  EXPECT_EQ(read(openapiIfSpeedGet, copper_port), OPEN_PORT_AUTO_NEG);
  EXPECT_EQ(read(openapiIfDuplexModeGet, copper_port), OPEN_PORT_DUPLEX_FULL);
  EXPECT_EQ(configured(), "interface 0/2 speed 100-half\n"
                          "interface 0/2 auto-negotiation on\n");
  restart_keeps_configuration();
  ASSERT_EQ(rpcclt_openapiIfAutoNegSet(&handle, copper_port, OPEN_PORT_AUTO_NEGOTIATE_DISABLE), OPEN_E_NONE);
  EXPECT_EQ(read(openapiIfSpeedGet, copper_port), OPEN_PORT_HALF_100TX);
}

TEST_F(Interface, WithoutAutoNegotiationTheSpeedIsThePortsOwnAtFirst) {
  const std::pair<uint32_t, uint32_t> own[] = {{1, OPEN_PORT_FULL_100TX},
                                               {2, OPEN_PORT_FULL_1000SX},
                                               {3, OPEN_PORT_FULL_10GSX},
                                               {4, OPEN_PORT_FULL_40GSX}};
  for (const auto &[port, speed] : own) {
    ASSERT_EQ(rpcclt_openapiIfAutoNegSet(&handle, port, OPEN_PORT_AUTO_NEGOTIATE_DISABLE), OPEN_E_NONE);
    EXPECT_EQ(read(openapiIfSpeedGet, port), speed) << port;
  }
  EXPECT_EQ(configured(), "interface 0/1 auto-negotiation off\n"
                          "interface 0/2 auto-negotiation off\n"
                          "interface 0/3 auto-negotiation off\n"
                          "interface 0/4 auto-negotiation off\n");
}

TEST_F(Interface, DuplexOfAPortThatNegotiatesIsUnknownWithoutALink) {
  softswitch::set_far_end("0/2", false);
  EXPECT_EQ(read(openapiIfDuplexModeGet, copper_port), OPEN_PORT_DUPLEX_UNKNOWN);
  ASSERT_EQ(rpcclt_openapiIfSpeedSet(&handle, copper_port, OPEN_PORT_HALF_10T), OPEN_E_NONE);
  EXPECT_EQ(read(openapiIfDuplexModeGet, copper_port), OPEN_PORT_DUPLEX_HALF);
}

/* --- MTU ------------------------------------------------------------------------------------------------ */

TEST_F(Interface, MtuIs1518To12270) {
  for (uint32_t interface : {copper_port, cage, lag}) {
    for (uint32_t mtu : {1519u, 9000u, 12270u, 1518u}) {
      EXPECT_EQ(rpcclt_openapiIfMtuSizeSet(&handle, interface, mtu), OPEN_E_NONE) << mtu;
      EXPECT_EQ(read(openapiIfMtuSizeGet, interface), mtu);
    }
  }
  EXPECT_EQ(configured(), "");
  ASSERT_EQ(rpcclt_openapiIfMtuSizeSet(&handle, lag, 12270), OPEN_E_NONE);
  for (uint32_t mtu : {0u, 1u, 1517u, 12271u, 65536u + 1518, UINT32_MAX}) {
    for (uint32_t interface : one_of_each_type)
      EXPECT_EQ(rpcclt_openapiIfMtuSizeSet(&handle, interface, mtu), OPEN_E_PARAM) << mtu;
  }
  EXPECT_EQ(read(openapiIfMtuSizeGet, lag), 12270u);
}

TEST_F(Interface, OnlyPortsAndLagsHaveAnMtuOfTheirOwn) {
  for (uint32_t interface : {cpu, loopback, vlan_routing}) {
    for (uint32_t mtu : {1518u, 9000u})
      EXPECT_EQ(rpcclt_openapiIfMtuSizeSet(&handle, interface, mtu), OPEN_E_UNAVAIL) << interface;
    EXPECT_EQ(read(openapiIfMtuSizeGet, interface), 1518u);
  }
}

/* --- Changes -------------------------------------------------------------------------------------------- */

TEST_F(Interface, ChangedInterfacesArePendingUntilTaken) {
  softswitch::hold_apply(true);
  for (const function_row &row : setting) {
    ASSERT_EQ(row.call(&handle, copper_port), OPEN_E_NONE) << row.name;
    EXPECT_EQ(pending_interfaces(), std::vector<int>{2}) << row.name;
  }
  ASSERT_EQ(describe(119, "x"), OPEN_E_NONE);
  ASSERT_EQ(describe(127, "x"), OPEN_E_NONE);
  ASSERT_EQ(commit("no vlan 1 routing"), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), (std::vector<int>{2, 119, 127, -226}));
  ASSERT_EQ(openapiIfNextChangedGet(&handle, 3, &value, &value2), OPEN_E_NONE);
  EXPECT_EQ(value, 119u);
  EXPECT_EQ(value2, 0u);
  EXPECT_EQ(openapiIfNextChangedGet(&handle, 226, &value, &value2), OPEN_E_FAIL);
  EXPECT_EQ(openapiIfNextChangedGet(&handle, UINT32_MAX, &value, &value2), OPEN_E_FAIL);
  softswitch::hold_apply(false);
  settle();
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
}

TEST_F(Interface, SettingWhatIsSetAlreadyIsNoChange) {
  for (const function_row &row : setting) ASSERT_EQ(row.call(&handle, copper_port), OPEN_E_NONE) << row.name;
  settle();
  softswitch::hold_apply(true);
  std::string journal = file_content(dir.path + "/journal-1");
  EXPECT_EQ(journal, "interface 0/2 description x\n"
                     "interface 0/2 shutdown\n"
                     "interface 0/2 soft-shutdown\n"
                     "interface 0/2 speed 10-half\n"
                     "interface 0/2 mtu 9000\n");
  for (const function_row &row : setting) EXPECT_EQ(row.call(&handle, copper_port), OPEN_E_NONE) << row.name;
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
  EXPECT_EQ(file_content(dir.path + "/journal-1"), journal);
}

TEST_F(Interface, LinksAndCablesAreNoConfiguration) {
  softswitch::hold_apply(true);
  softswitch::set_cabled("0/6", false);
  softswitch::set_far_end("0/7", false);
  EXPECT_FALSE(up(6));
  EXPECT_FALSE(up(7));
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
  EXPECT_EQ(configured(), "");
  EXPECT_EQ(file_content(dir.path + "/journal-1"), "");
}

TEST_F(Interface, ReloadReturnsSettingsToFactoryStateAndKeepsTheWorldOutside) {
  for (const function_row &row : setting) ASSERT_EQ(row.call(&handle, copper_port), OPEN_E_NONE) << row.name;
  softswitch::set_cabled("0/6", false);
  softswitch::set_far_end("0/7", false);
  softswitch::hold_apply(true);
  std::string error;
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_FALSE(up(6));
  EXPECT_FALSE(up(7));
  EXPECT_TRUE(up(8));
  softswitch::hold_apply(false);
  settle();
  EXPECT_EQ(all_of(2),
            (shown{"0/2", "02:00:5E:FF:FF:F2", "", 1, 0, up_, OPEN_PORT_AUTO_NEG, full, 0, 1, 1518}));
  EXPECT_FALSE(up(6));
  EXPECT_FALSE(up(7));
}

TEST_F(Interface, ConfigurationComesBackAfterARestart) {
  for (const function_row &row : setting) ASSERT_EQ(row.call(&handle, copper_port), OPEN_E_NONE) << row.name;
  ASSERT_EQ(rpcclt_openapiIfAutoNegSet(&handle, copper_port, OPEN_PORT_AUTO_NEGOTIATE_ENABLE), OPEN_E_NONE);
  shown before = all_of(copper_port);
  settle();
  before.link = down_;
  before.duplex = unknown;
  restart_keeps_configuration();
  EXPECT_EQ(all_of(copper_port), before);
}

} // namespace
