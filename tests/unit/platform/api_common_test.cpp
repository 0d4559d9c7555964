/* Tests of what holds for every function of the C interface, and of registration, addresses, system,
 * interface and user functions. */
#include "platform/api/openapi_if.h"
#include "platform/api/openapi_lag.h"
#include "platform/api/openapi_pml.h"
#include "platform/api/openapi_routing.h"
#include "platform/api/openapi_system.h"
#include "platform/api/openapi_user.h"
#include "tests/unit/platform/softswitch_test_support.h"

#include <functional>
#include <string.h>

namespace {

class Api : public SoftSwitch {};

/* One call of each function with good arguments, to VLAN 1 and port 1. */
struct good_call {
  const char *name;
  std::function<open_error_t(openapiClientHandle_t *)> call;
};

uint32_t number, number2;
char buffer[256];
open_buffdesc text;
open_inet_addr_t address;
open_inet_pfx_t prefix;
open_revision_data_t revision;
OPEN_LOGIN_ACCESS_LEVELS_t level;

/* A text going in; a text buffer to fill when nothing is given. */
open_buffdesc *with(const char *content = nullptr) {
  memset(buffer, 0, sizeof buffer);
  if (content) strcpy(buffer, content);
  text = {content ? static_cast<uint32_t>(strlen(content)) : static_cast<uint32_t>(sizeof buffer), buffer};
  return &text;
}

/* A locked address to walk on from, in a buffer with room for the next. */
open_buffdesc *after(const char *mac) {
  with(mac)->size = sizeof buffer;
  return &text;
}

const std::vector<good_call> &good_calls() {
  static char admin[] = "admin";
  static open_buffdesc user = {5, admin};
  static const std::vector<good_call> calls = {
      {"rpcclt_openapiConnectivityCheck", [](auto *h) { return rpcclt_openapiConnectivityCheck(h); }},
      {"rpcclt_openapiInetAddrGet",
       [](auto *h) { return rpcclt_openapiInetAddrGet(h, with("10.0.0.1"), &address); }},
      {"rpcclt_openapiAuthenticateUser",
       [](auto *h) { return rpcclt_openapiAuthenticateUser(h, &user, with("secret"), &level); }},
      {"rpcclt_openapiNetworkOSVersionGet",
       [](auto *h) { return rpcclt_openapiNetworkOSVersionGet(h, with()); }},
      {"rpcclt_openapiSwStorageGet", [](auto *h) { return rpcclt_openapiSwStorageGet(h, with()); }},
      {"rpcclt_openapiSwDevInfoSerialNumGet",
       [](auto *h) { return rpcclt_openapiSwDevInfoSerialNumGet(h, with()); }},
      {"rpcclt_openapiBurnedInMacAddrGet",
       [](auto *h) { return rpcclt_openapiBurnedInMacAddrGet(h, with()); }},
      {"rpcclt_openapiMachineModelNameGet",
       [](auto *h) { return rpcclt_openapiMachineModelNameGet(h, with()); }},
      {"rpcclt_openapiSystemDescrGet", [](auto *h) { return rpcclt_openapiSystemDescrGet(h, with()); }},
      {"rpcclt_openapiApiVersionGet", [](auto *h) { return rpcclt_openapiApiVersionGet(h, &revision); }},
      {"openapiSystemReadyStateGet", [](auto *h) { return openapiSystemReadyStateGet(h, &number); }},
      {"rpcclt_openapiOspfEqualCostRoutesMax",
       [](auto *h) { return rpcclt_openapiOspfEqualCostRoutesMax(h, &number); }},
      {"rpcclt_openapiPmlIntfStickyModeGet",
       [](auto *h) { return rpcclt_openapiPmlIntfStickyModeGet(h, 1, &number); }},
      {"rpcclt_openapiPmlIntfStickyModeSet",
       [](auto *h) { return rpcclt_openapiPmlIntfStickyModeSet(h, 1, 1); }},
      {"rpcclt_openapiPmlIntfStaticEntryAdd",
       [](auto *h) { return rpcclt_openapiPmlIntfStaticEntryAdd(h, 1, with("00:00:00:00:00:02"), 1, 1); }},
      {"rpcclt_openapiPmlIntfStaticEntryGetFirst",
       [](auto *h) { return rpcclt_openapiPmlIntfStaticEntryGetFirst(h, 1, with(), &number, &number2); }},
      {"rpcclt_openapiPmlIntfStaticEntryGetNext",
       [](auto *h) {
         number = 1;
         return rpcclt_openapiPmlIntfStaticEntryGetNext(h, 1, after("00:00:00:00:00:01"), &number, &number2);
       }},
      {"rpcclt_openapiPmlIntfStaticEntryDelete",
       [](auto *h) { return rpcclt_openapiPmlIntfStaticEntryDelete(h, 1, with("00:00:00:00:00:02"), 1); }},
      {"rpcclt_openapiRtrIntfIpAddrGet",
       [](auto *h) { return rpcclt_openapiRtrIntfIpAddrGet(h, OPEN_AF_INET, 1, &prefix); }},
      {"rpcclt_openapiRtrIntfSecIpAddrGet",
       [](auto *h) {
         number = 0;
         return rpcclt_openapiRtrIntfSecIpAddrGet(h, OPEN_AF_INET, 1, &prefix, &number);
       }},
      {"openapiMaxInterfaceCountGet", [](auto *h) { return openapiMaxInterfaceCountGet(h, &number); }},
      {"rpcclt_openapiCpuIntfGet", [](auto *h) { return rpcclt_openapiCpuIntfGet(h, &number); }},
      {"rpcclt_openapiIfFirstGet", [](auto *h) { return rpcclt_openapiIfFirstGet(h, 0, 4, &number); }},
      {"rpcclt_openapiIfNextGet", [](auto *h) { return rpcclt_openapiIfNextGet(h, 0, 4, 1, &number); }},
      {"openapiVlanCreatedCheck", [](auto *h) { return openapiVlanCreatedCheck(h, 1); }},
      {"rpcclt_openapiDot1VlanMaxGet", [](auto *h) { return rpcclt_openapiDot1VlanMaxGet(h, &number); }},
      {"rpcclt_openapiVlanCreate", [](auto *h) { return rpcclt_openapiVlanCreate(h, 10); }},
      {"rpcclt_openapiVlanNextGet", [](auto *h) { return rpcclt_openapiVlanNextGet(h, 0, &number); }},
      {"openapiVlanNextChangedGet",
       [](auto *h) { return openapiVlanNextChangedGet(h, 0, &number, &number2); }},
      {"rpcclt_openapiVlanDelete", [](auto *h) { return rpcclt_openapiVlanDelete(h, 10); }},
      {"rpcclt_openapiVlanNameLenGet", [](auto *h) { return rpcclt_openapiVlanNameLenGet(h, &number); }},
      {"rpcclt_openapiVlanNameGet", [](auto *h) { return rpcclt_openapiVlanNameGet(h, 1, with()); }},
      {"rpcclt_openapiVlanNameSet", [](auto *h) { return rpcclt_openapiVlanNameSet(h, 1, with("blue")); }},
      {"openapiVlanIfParticipationStatusGet",
       [](auto *h) { return openapiVlanIfParticipationStatusGet(h, 1, 1, &number); }},
      {"rpcclt_openapiVlanIfParticipationGet",
       [](auto *h) { return rpcclt_openapiVlanIfParticipationGet(h, 1, 1, &number); }},
      {"rpcclt_openapiVlanIfParticipationSet",
       [](auto *h) { return rpcclt_openapiVlanIfParticipationSet(h, 1, 1, 2); }},
      {"openapiVlanIfTaggingGet", [](auto *h) { return openapiVlanIfTaggingGet(h, 1, 1, &number); }},
      {"rpcclt_openapiVlanIfTaggingSet", [](auto *h) { return rpcclt_openapiVlanIfTaggingSet(h, 1, 1, 1); }},
      {"rpcclt_openapiIfSwitchportModeGet",
       [](auto *h) { return rpcclt_openapiIfSwitchportModeGet(h, 1, &number); }},
      {"rpcclt_openapiIfSwitchportModeSet",
       [](auto *h) { return rpcclt_openapiIfSwitchportModeSet(h, 1, 3); }},
      {"rpcclt_openapiIfSwitchportAccessVlanSet",
       [](auto *h) { return rpcclt_openapiIfSwitchportAccessVlanSet(h, 1, 1); }},
      {"rpcclt_openapiIfSwitchportTrunkNativeVlanSet",
       [](auto *h) { return rpcclt_openapiIfSwitchportTrunkNativeVlanSet(h, 1, 1); }},
      {"rpcclt_openapiIfSwitchportTrunkVlanSet",
       [](auto *h) { return rpcclt_openapiIfSwitchportTrunkVlanSet(h, 1, 1, with("10-20")); }},
      {"rpcclt_openapiIfSwitchportTrunkVlanCreate",
       [](auto *h) { return rpcclt_openapiIfSwitchportTrunkVlanCreate(h, 1, 1, with("10,30")); }},
      {"rpcclt_openapiLagPortChannelIdToIfNumZYL",
       [](auto *h) { return rpcclt_openapiLagPortChannelIdToIfNumZYL(h, 1, &number); }},
      {"rpcclt_openapiLagIfNumToPortChannelIdZYL",
       [](auto *h) { return rpcclt_openapiLagIfNumToPortChannelIdZYL(h, 56, &number); }},
      {"rpcclt_openapiLagDeleteZYL", [](auto *h) { return rpcclt_openapiLagDeleteZYL(h, 119); }},
      {"rpcclt_openapiLagCreateZYL", [](auto *h) { return rpcclt_openapiLagCreateZYL(h, 119); }},
      {"rpcclt_openapiLagNameMaxLengthGet",
       [](auto *h) { return rpcclt_openapiLagNameMaxLengthGet(h, &number); }},
      {"rpcclt_openapiLagNameGet", [](auto *h) { return rpcclt_openapiLagNameGet(h, 56, with()); }},
      {"rpcclt_openapiLagMaxMemberCountGet",
       [](auto *h) { return rpcclt_openapiLagMaxMemberCountGet(h, &number); }},
      {"rpcclt_openapiLagMembersGet",
       [](auto *h) { return rpcclt_openapiLagMembersGet(h, 56, &(number = 1), &number2); }},
      {"rpcclt_openapiLagPortAdd", [](auto *h) { return rpcclt_openapiLagPortAdd(h, 56, 1); }},
      {"rpcclt_openapiLagPortDelete", [](auto *h) { return rpcclt_openapiLagPortDelete(h, 56, 1); }},
      {"openapiVlanIfPvidGet", [](auto *h) { return openapiVlanIfPvidGet(h, 1, &number); }},
      {"rpcclt_openapiVlanIfPvidSet", [](auto *h) { return rpcclt_openapiVlanIfPvidSet(h, 1, 1); }},
      {"rpcclt_openapiVlanIfAcceptFrameTypeGet",
       [](auto *h) { return rpcclt_openapiVlanIfAcceptFrameTypeGet(h, 1, &number); }},
      {"rpcclt_openapiVlanIfAcceptFrameTypeSet",
       [](auto *h) { return rpcclt_openapiVlanIfAcceptFrameTypeSet(h, 1, 3); }},
  };
  return calls;
}

TEST_F(Api, EveryFunctionSucceedsWithGoodArguments) {
  softswitch::hold_apply(true);
  /* What can be read before there is a function that sets it. */
  ASSERT_EQ(commit("interface 0/1 ip address 10.0.0.1/24"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/1 ip secondary-address 10.0.0.2/24"), OPEN_E_NONE);
  for (const good_call &row : good_calls()) EXPECT_EQ(row.call(&handle), OPEN_E_NONE) << row.name;
}

TEST_F(Api, NullHandleIsRefusedByEveryFunction) {
  for (const good_call &row : good_calls()) EXPECT_EQ(row.call(nullptr), OPEN_E_PARAM) << row.name;
}

TEST_F(Api, HandleThatWasNeverRegisteredIsRefusedByEveryFunction) {
  openapiClientHandle_t stranger;
  memset(&stranger, 0x5a, sizeof stranger);
  for (const good_call &row : good_calls()) EXPECT_EQ(row.call(&stranger), OPEN_E_RPC) << row.name;
}

TEST_F(Api, StoppedSwitchAnswersNoConnection) {
  softswitch::stop();
  for (const good_call &row : good_calls()) EXPECT_EQ(row.call(&handle), OPEN_E_RPC) << row.name;
}

TEST_F(Api, OrderedFaultIsAnsweredByEveryFunctionAndChangesNothing) {
  for (const good_call &row : good_calls()) {
    std::string before = softswitch::running_config();
    ASSERT_TRUE(softswitch::fault_order(row.name, OPEN_E_TIMEOUT, 1, 0)) << row.name;
    EXPECT_EQ(row.call(&handle), OPEN_E_TIMEOUT) << row.name;
    EXPECT_EQ(softswitch::running_config(), before) << row.name;
  }
}

TEST_F(Api, NullPointersAreRefused) {
  open_buffdesc nowhere = {10, nullptr};
  openapiClientHandle_t *h = &handle;
  const open_error_t answers[] = {
      rpcclt_openapiInetAddrGet(h, nullptr, &address),
      rpcclt_openapiInetAddrGet(h, &nowhere, &address),
      rpcclt_openapiInetAddrGet(h, with("1.2.3.4"), nullptr),
      rpcclt_openapiAuthenticateUser(h, nullptr, with("x"), &level),
      rpcclt_openapiAuthenticateUser(h, with("x"), nullptr, &level),
      rpcclt_openapiAuthenticateUser(h, with("x"), &nowhere, &level),
      rpcclt_openapiAuthenticateUser(h, with("x"), with("x"), nullptr),
      rpcclt_openapiNetworkOSVersionGet(h, nullptr),
      rpcclt_openapiSwStorageGet(h, nullptr),
      rpcclt_openapiSwDevInfoSerialNumGet(h, nullptr),
      rpcclt_openapiBurnedInMacAddrGet(h, nullptr),
      rpcclt_openapiMachineModelNameGet(h, nullptr),
      rpcclt_openapiSystemDescrGet(h, &nowhere),
      rpcclt_openapiApiVersionGet(h, nullptr),
      openapiSystemReadyStateGet(h, nullptr),
      rpcclt_openapiOspfEqualCostRoutesMax(h, nullptr),
      rpcclt_openapiPmlIntfStickyModeGet(h, 1, nullptr),
      rpcclt_openapiPmlIntfStaticEntryAdd(h, 1, nullptr, 1, 0),
      rpcclt_openapiPmlIntfStaticEntryAdd(h, 1, &nowhere, 1, 0),
      rpcclt_openapiPmlIntfStaticEntryDelete(h, 1, nullptr, 1),
      rpcclt_openapiPmlIntfStaticEntryDelete(h, 1, &nowhere, 1),
      rpcclt_openapiPmlIntfStaticEntryGetFirst(h, 1, nullptr, &number, &number2),
      rpcclt_openapiPmlIntfStaticEntryGetFirst(h, 1, &nowhere, &number, &number2),
      rpcclt_openapiPmlIntfStaticEntryGetFirst(h, 1, with(), nullptr, &number2),
      rpcclt_openapiPmlIntfStaticEntryGetFirst(h, 1, with(), &number, nullptr),
      rpcclt_openapiPmlIntfStaticEntryGetNext(h, 1, nullptr, &number, &number2),
      rpcclt_openapiPmlIntfStaticEntryGetNext(h, 1, &nowhere, &number, &number2),
      rpcclt_openapiPmlIntfStaticEntryGetNext(h, 1, after("00:00:00:00:00:01"), nullptr, &number2),
      rpcclt_openapiPmlIntfStaticEntryGetNext(h, 1, after("00:00:00:00:00:01"), &number, nullptr),
      rpcclt_openapiRtrIntfIpAddrGet(h, OPEN_AF_INET, 1, nullptr),
      rpcclt_openapiRtrIntfSecIpAddrGet(h, OPEN_AF_INET, 1, nullptr, &number),
      rpcclt_openapiRtrIntfSecIpAddrGet(h, OPEN_AF_INET, 1, &prefix, nullptr),
      openapiMaxInterfaceCountGet(h, nullptr),
      rpcclt_openapiCpuIntfGet(h, nullptr),
      rpcclt_openapiIfFirstGet(h, 0, 4, nullptr),
      rpcclt_openapiIfNextGet(h, 0, 4, 1, nullptr),
      rpcclt_openapiDot1VlanMaxGet(h, nullptr),
      rpcclt_openapiVlanNextGet(h, 0, nullptr),
      openapiVlanNextChangedGet(h, 0, nullptr, &number),
      openapiVlanNextChangedGet(h, 0, &number, nullptr),
      rpcclt_openapiVlanNameLenGet(h, nullptr),
      rpcclt_openapiVlanNameGet(h, 1, nullptr),
      rpcclt_openapiVlanNameGet(h, 1, &nowhere),
      rpcclt_openapiVlanNameSet(h, 1, nullptr),
      rpcclt_openapiVlanNameSet(h, 1, &nowhere),
      openapiVlanIfParticipationStatusGet(h, 1, 1, nullptr),
      rpcclt_openapiVlanIfParticipationGet(h, 1, 1, nullptr),
      openapiVlanIfTaggingGet(h, 1, 1, nullptr),
      rpcclt_openapiIfSwitchportModeGet(h, 1, nullptr),
      rpcclt_openapiIfSwitchportTrunkVlanSet(h, 1, 1, nullptr),
      rpcclt_openapiIfSwitchportTrunkVlanSet(h, 1, 1, &nowhere),
      rpcclt_openapiIfSwitchportTrunkVlanCreate(h, 1, 1, nullptr),
      rpcclt_openapiIfSwitchportTrunkVlanCreate(h, 1, 1, &nowhere),
      rpcclt_openapiLagPortChannelIdToIfNumZYL(h, 1, nullptr),
      rpcclt_openapiLagIfNumToPortChannelIdZYL(h, 56, nullptr),
      rpcclt_openapiLagNameMaxLengthGet(h, nullptr),
      rpcclt_openapiLagNameGet(h, 56, nullptr),
      rpcclt_openapiLagNameGet(h, 56, &nowhere),
      rpcclt_openapiLagMaxMemberCountGet(h, nullptr),
      rpcclt_openapiLagMembersGet(h, 56, nullptr, &number),
      rpcclt_openapiLagMembersGet(h, 56, &number, nullptr),
      openapiVlanIfPvidGet(h, 1, nullptr),
      rpcclt_openapiVlanIfAcceptFrameTypeGet(h, 1, nullptr),
  };
  for (size_t row = 0; row < std::size(answers); row++)
    EXPECT_EQ(answers[row], OPEN_E_PARAM) << "row " << row;
}

/* --- Registration --------------------------------------------------------------------------------------- */

TEST_F(Api, RegisteringWantsANameOfOneTo63CharactersAndAHandle) {
  openapiClientHandle_t second;
  EXPECT_EQ(openapiClientRegister(nullptr, &second), OPEN_E_PARAM);
  EXPECT_EQ(openapiClientRegister("", &second), OPEN_E_PARAM);
  EXPECT_EQ(openapiClientRegister("x", nullptr), OPEN_E_PARAM);
  EXPECT_EQ(openapiClientRegister(std::string(64, 'x').c_str(), &second), OPEN_E_PARAM);
  EXPECT_EQ(openapiClientRegister(std::string(63, 'x').c_str(), &second), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiConnectivityCheck(&second), OPEN_E_NONE);
}

TEST_F(Api, RegisteringTwiceKeepsTheSwitchAsItIs) {
  ASSERT_EQ(rpcclt_openapiVlanCreate(&handle, 10), OPEN_E_NONE);
  ASSERT_EQ(openapiClientRegister("again", &handle), OPEN_E_NONE);
  EXPECT_EQ(openapiVlanCreatedCheck(&handle, 10), OPEN_E_NONE);
}

TEST_F(Api, OrderedFaultMakesRegisteringFail) {
  ASSERT_TRUE(softswitch::fault_order("openapiClientRegister", OPEN_E_FAIL, 1, 0));
  EXPECT_EQ(openapiClientRegister("again", &handle), OPEN_E_FAIL);
  EXPECT_EQ(openapiClientRegister("again", &handle), OPEN_E_NONE);
}

TEST_F(Api, RegisteringThatCannotStartTheSwitchSaysWhy) {
  softswitch::stop();
  setenv("KESTREL_STATE_DIR", (dir.path + "/accounts").c_str(), 1);
  testing::internal::CaptureStderr();
  EXPECT_EQ(openapiClientRegister("test", &handle), OPEN_E_FAIL);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "kestrel: the state directory " + dir.path + "/accounts: is not a directory\n");
  EXPECT_EQ(rpcclt_openapiConnectivityCheck(&handle), OPEN_E_RPC);
}

/* --- Addresses ------------------------------------------------------------------------------------------ */

TEST_F(Api, Ipv4AddressIsGivenInHostOrder) {
  ASSERT_EQ(rpcclt_openapiInetAddrGet(&handle, with("192.168.1.254"), &address), OPEN_E_NONE);
  EXPECT_EQ(address.family, OPEN_AF_INET);
  EXPECT_EQ(address.addr.ipv4, 0xc0a801feu);
}

TEST_F(Api, Ipv6AddressIsGivenInNetworkOrder) {
  const uint8_t expected[16] = {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x0a};
  ASSERT_EQ(rpcclt_openapiInetAddrGet(&handle, with("2001:DB8::a"), &address), OPEN_E_NONE);
  EXPECT_EQ(address.family, OPEN_AF_INET6);
  EXPECT_EQ(memcmp(address.addr.ipv6.addr8, expected, sizeof expected), 0);
}

TEST_F(Api, AddressesAreReadWithAndWithoutTheTerminatorCounted) {
  char ip[48] = "10.1.2.3";
  for (uint32_t size : {8u, 9u, 48u}) {
    open_buffdesc desc = {size, ip};
    ASSERT_EQ(rpcclt_openapiInetAddrGet(&handle, &desc, &address), OPEN_E_NONE) << size;
    EXPECT_EQ(address.addr.ipv4, 0x0a010203u);
  }
  open_buffdesc first = {6, ip};
  EXPECT_EQ(rpcclt_openapiInetAddrGet(&handle, &first, &address), OPEN_E_FAIL) << "10.1.2 alone";
}

TEST_F(Api, WhatIsNoAddressIsRefused) {
  for (const char *wrong : {"",
                            " ",
                            "1.2.3",
                            "1.2.3.4.5",
                            "1.2.3.256",
                            " 1.2.3.4",
                            "1.2.3.4 ",
                            "1.2.3.4/24",
                            "0x1.2.3.4",
                            "1.2.3.04",
                            "1..2.3",
                            "-1.2.3.4",
                            "::1%lo",
                            "::1/64",
                            "1:2:3:4:5:6:7",
                            "1:2:3:4:5:6:7:8:9",
                            "::1::",
                            "12345::",
                            ":",
                            "g::",
                            "localhost",
                            "[::1]",
                            "0000:0000:0000:0000:0000:0000:0000:0000:0000"}) {
    EXPECT_EQ(rpcclt_openapiInetAddrGet(&handle, with(wrong), &address), OPEN_E_FAIL) << wrong;
  }
  for (const char *right : {"0.0.0.0", "255.255.255.255", "::", "::1", "::ffff:1.2.3.4", "1:2:3:4:5:6:7:8"}) {
    EXPECT_EQ(rpcclt_openapiInetAddrGet(&handle, with(right), &address), OPEN_E_NONE) << right;
  }
}

/* --- System, interfaces, users -------------------------------------------------------------------------- */

TEST_F(Api, TextsAboutTheSwitchComeFromTheProfile) {
  softswitch::chassis_profile profile = softswitch::built_in_profile();
  const std::pair<open_error_t (*)(openapiClientHandle_t *, open_buffdesc *), std::string> texts[] = {
      {rpcclt_openapiNetworkOSVersionGet, profile.os_version},
      {rpcclt_openapiSwStorageGet, profile.storage},
      {rpcclt_openapiSwDevInfoSerialNumGet, profile.serial},
      {rpcclt_openapiBurnedInMacAddrGet, profile.mac},
      {rpcclt_openapiMachineModelNameGet, profile.model},
      {rpcclt_openapiSystemDescrGet, profile.description},
  };
  for (const auto &[get, expected] : texts) {
    ASSERT_EQ(get(&handle, with()), OPEN_E_NONE);
    EXPECT_EQ(std::string(buffer), expected);
    EXPECT_EQ(text.size, expected.size());
  }
}

TEST_F(Api, TextThatDoesNotFitIsRefusedAndNothingIsWritten) {
  std::string serial = softswitch::built_in_profile().serial;
  with()->size = static_cast<uint32_t>(serial.size());
  EXPECT_EQ(rpcclt_openapiSwDevInfoSerialNumGet(&handle, &text), OPEN_E_PARAM);
  EXPECT_EQ(buffer[0], 0);
  text.size = static_cast<uint32_t>(serial.size() + 1);
  EXPECT_EQ(rpcclt_openapiSwDevInfoSerialNumGet(&handle, &text), OPEN_E_NONE);
  EXPECT_EQ(text.size, serial.size());
  text.size = 0;
  EXPECT_EQ(rpcclt_openapiSwDevInfoSerialNumGet(&handle, &text), OPEN_E_PARAM);
}

TEST_F(Api, NumbersOfTheSwitchAreTheDocumentedOnes) {
  ASSERT_EQ(rpcclt_openapiApiVersionGet(&handle, &revision), OPEN_E_NONE);
  EXPECT_EQ(revision.release, 1);
  EXPECT_EQ(revision.version, 0);
  EXPECT_EQ(revision.maint_level, 0);
  EXPECT_EQ(revision.build_num, 1);
  EXPECT_EQ(rpcclt_openapiOspfEqualCostRoutesMax(&handle, &number), OPEN_E_NONE);
  EXPECT_EQ(number, 32u);
  EXPECT_EQ(openapiMaxInterfaceCountGet(&handle, &number), OPEN_E_NONE);
  EXPECT_EQ(number, 353u);
  EXPECT_EQ(rpcclt_openapiCpuIntfGet(&handle, &number), OPEN_E_NONE);
  EXPECT_EQ(number, 55u);
}

TEST_F(Api, ReadinessIsOneUnlessTheLabSaysOtherwise) {
  EXPECT_EQ(openapiSystemReadyStateGet(&handle, &number), OPEN_E_NONE);
  EXPECT_EQ(number, 1u);
  softswitch::set_ready(false);
  EXPECT_EQ(openapiSystemReadyStateGet(&handle, &number), OPEN_E_NONE);
  EXPECT_EQ(number, 0u);
}

TEST_F(Api, WalkOverInterfacesEndsWithFail) {
  ASSERT_EQ(rpcclt_openapiIfFirstGet(&handle, OPEN_INTF_TYPE_PHY, OPEN_INTF_STATE_ANY, &number), OPEN_E_NONE);
  EXPECT_EQ(number, 1u);
  for (uint32_t next = 2; next <= 54; next++) {
    ASSERT_EQ(rpcclt_openapiIfNextGet(&handle, 0, 4, number, &number), OPEN_E_NONE);
    EXPECT_EQ(number, next);
  }
  EXPECT_EQ(rpcclt_openapiIfNextGet(&handle, 0, 4, number, &number2), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiIfNextGet(&handle, OPEN_INTF_TYPE_LAG, 4, 0, &number), OPEN_E_NONE);
  EXPECT_EQ(number, 56u) << "the number to go on from need not be of the type";
  EXPECT_EQ(rpcclt_openapiIfNextGet(&handle, 0, 4, UINT32_MAX, &number), OPEN_E_FAIL);
}

TEST_F(Api, WalkRefusesUnknownSelectorsAndTypesWithoutInterfaces) {
  EXPECT_EQ(rpcclt_openapiIfFirstGet(&handle, 5, 4, &number), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiIfFirstGet(&handle, 0, 0, &number), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiIfNextGet(&handle, 5, 4, 1, &number), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiIfNextGet(&handle, 0, 5, 1, &number), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiIfFirstGet(&handle, OPEN_INTF_TYPE_VLAN_RTR, 4, &number), OPEN_E_FAIL);
}

TEST_F(Api, AuthenticationGivesTheLevelOrRefuses) {
  char admin[] = "admin", nobody[] = "nobody";
  open_buffdesc user = {6, admin}, stranger = {6, nobody};
  ASSERT_EQ(rpcclt_openapiAuthenticateUser(&handle, &user, with("secret"), &level), OPEN_E_NONE);
  EXPECT_EQ(level, OPEN_LOGIN_ACCESS_READ_WRITE);
  EXPECT_EQ(rpcclt_openapiAuthenticateUser(&handle, &user, with("Secret"), &level), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiAuthenticateUser(&handle, &stranger, with("secret"), &level), OPEN_E_FAIL);
}

TEST_F(Api, OverlongCredentialsAreRefused) {
  std::string endless(300, 'a');
  open_buffdesc credential = {300, endless.data()};
  char admin[] = "admin";
  open_buffdesc user = {5, admin};
  EXPECT_EQ(rpcclt_openapiAuthenticateUser(&handle, &credential, with("secret"), &level), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiAuthenticateUser(&handle, &user, &credential, &level), OPEN_E_FAIL);
}

/* --- Trace ---------------------------------------------------------------------------------------------- */

TEST_F(Api, TraceShowsEachCallItsArgumentsAndResult) {
  softswitch::stop();
  setenv("KESTREL_TRACE", "platform", 1);
  testing::internal::CaptureStderr();
  openapiClientRegister("tracer", &handle);
  rpcclt_openapiVlanCreate(&handle, 10);
  rpcclt_openapiVlanCreate(&handle, 10);
  rpcclt_openapiVlanNameSet(&handle, 10, with("a \"b\""));
  rpcclt_openapiVlanNameGet(&handle, 10, with());
  openapiVlanNextChangedGet(&handle, 2, &number, &number2);
  rpcclt_openapiVlanNextGet(&handle, 10, &number);
  rpcclt_openapiVlanNextGet(&handle, 10, nullptr);
  openapiVlanIsStatic(&handle, 10);
  char admin[] = "admin";
  open_buffdesc user = {5, admin};
  rpcclt_openapiAuthenticateUser(&handle, &user, with("secret"), &level);
  rpcclt_openapiInetAddrGet(&handle, with("x"), &address);
  std::string trace = testing::internal::GetCapturedStderr();
  unsetenv("KESTREL_TRACE");
  EXPECT_EQ(trace, "platform: openapiClientRegister(\"tracer\") = 0\n"
                   "platform: rpcclt_openapiVlanCreate(10) = 0\n"
                   "platform: rpcclt_openapiVlanCreate(10) = -24\n"
                   "platform: rpcclt_openapiVlanNameSet(10, \"a \\\"b\\\"\") = 0\n"
                   "platform: rpcclt_openapiVlanNameGet(10) = 0 -> \"a \\\"b\\\"\"\n"
                   "platform: openapiVlanNextChangedGet(2) = 0 -> 10, 0\n"
                   "platform: rpcclt_openapiVlanNextGet(10) = -26\n"
                   "platform: rpcclt_openapiVlanNextGet(10) = -22\n"
                   "platform: openapiVlanIsStatic(10) = 0 -> 1\n"
                   "platform: rpcclt_openapiAuthenticateUser(\"admin\", ***) = 0\n"
                   "platform: rpcclt_openapiInetAddrGet(\"x\") = -26\n");
}

TEST_F(Api, WithoutTraceNothingIsWritten) {
  testing::internal::CaptureStderr();
  rpcclt_openapiVlanCreate(&handle, 10);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
