/* What every function about access control lists does with null pointers, unregistered handles, faults on
 * order, lists and rules that are not there and lists of another type; and how the trace shows addresses. */
#include "tests/unit/platform/acl_test_support.h"

#include <tuple>
#include <type_traits>

namespace {

/* What the functions are called with besides numbers. */
char first_text[64], second_text[64];
open_buffdesc first = {sizeof first_text, first_text}, second = {sizeof second_text, second_text};
open_buffdesc nowhere = {8, nullptr};
open_inet_addr_t address, mask;
uint32_t one, two, three;
OPEN_ACL_INTF_DIR_LIST_t bound_lists;
OPEN_ACL_ASSIGNED_INTF_LIST_t interfaces;
OPEN_ACL_ASSIGNED_VLAN_LIST_t vlans;

constexpr uint32_t with_ip = 1 << 1, with_mac = 1 << 2, with_ipv6 = 1 << 3;
constexpr uint32_t with_all = with_ip | with_mac | with_ipv6;

#define CALL(name, ...) visit(#name, name, __VA_ARGS__)

/* Calls `visit` with the name of each function that is about lists, the function and its arguments. */
template <typename Visit> void each_list_function(Visit visit) {
  CALL(rpcclt_openapiAclCountGet, &one);
  CALL(rpcclt_openapiAclMaxCountGet, &one);
  CALL(rpcclt_openapiAclCreate, 1, &first, &one);
  CALL(rpcclt_openapiAclDelete, 1);
  CALL(rpcclt_openapiAclGet, 1, &first, &one);
  CALL(rpcclt_openapiAclNameGet, 1, &first);
  CALL(rpcclt_openapiAclGetFirst, 1, &one);
  CALL(rpcclt_openapiAclGetNext, 1, 1, &one);
  CALL(rpcclt_openapiAclIntfDirAdd, 1, 0, 1, 0);
  CALL(rpcclt_openapiAclVlanDirAdd, 1, 0, 1, 0);
  CALL(rpcclt_openapiAclIntfDirDelete, 1, 0, 1);
  CALL(rpcclt_openapiAclVlanDirDelete, 1, 0, 1);
  CALL(rpcclt_openapiAclIntfDirListGet, 1, 0, &bound_lists);
  CALL(rpcclt_openapiAclVlanDirListGet, 1, 0, &bound_lists);
  CALL(rpcclt_openapiAclAssignedIntfDirListGet, 1, 0, &interfaces);
  CALL(rpcclt_openapiAclAssignedVlanDirListGet, 1, 0, &vlans);
  CALL(rpcclt_openapiAclRuleCountGet, 1, &one);
  CALL(rpcclt_openapiAclRuleActionAdd, 1, &one, 0);
  CALL(rpcclt_openapiAclRuleGetFirst, 1, &one);
  CALL(rpcclt_openapiAclRuleGetNext, 1, 10, &one);
}

/* Calls `visit` likewise for each function that is about a rule, with the types of lists whose rules have
 * what it is about, and the arguments behind list and rule. */
template <typename Visit> void each_rule_function(Visit visit) {
  CALL(rpcclt_openapiAclRuleActionGet, with_all, &one);
  CALL(rpcclt_openapiAclRuleDelete, with_all);
  CALL(rpcclt_openapiAclRuleDuplicateCheck, with_all, &one);
  CALL(rpcclt_openapiAclRuleMatchEveryAdd, with_all, 0);
  CALL(rpcclt_openapiAclRuleMatchEveryGet, with_all, &one);
  CALL(rpcclt_openapiAclRuleMatchMacSrcMacAdd, with_mac, &first, &second);
  CALL(rpcclt_openapiAclRuleMatchMacSrcMacGet, with_mac, &first, &second);
  CALL(rpcclt_openapiAclRuleMatchMacDstMacAdd, with_mac, &first, &second);
  CALL(rpcclt_openapiAclRuleMatchMacDstMacGet, with_mac, &first, &second);
  CALL(rpcclt_openapiAclRuleMatchMacEtherTypeAdd, with_mac, 2048);
  CALL(rpcclt_openapiAclRuleMatchMacEtherTypeGet, with_mac, &one);
  CALL(rpcclt_openapiAclRuleMatchMacVlanAdd, with_mac, 0, 5, 0);
  CALL(rpcclt_openapiAclRuleMatchMacVlanGet, with_mac, &one, &two, &three);
  CALL(rpcclt_openapiAclRuleMatchMacCosAdd, with_mac, 5);
  CALL(rpcclt_openapiAclRuleMatchMacCosGet, with_mac, &one);
  CALL(rpcclt_openapiAclRuleMatchProtocolAdd, with_ip | with_ipv6, 6);
  CALL(rpcclt_openapiAclRuleMatchProtocolGet, with_ip | with_ipv6, &one);
  CALL(rpcclt_openapiAclRuleMatchIpSrcMaskAdd, with_ip, address, mask);
  CALL(rpcclt_openapiAclRuleMatchIpSrcMaskGet, with_ip, &address, &mask);
  CALL(rpcclt_openapiAclRuleMatchIpDstMaskAdd, with_ip, address, mask);
  CALL(rpcclt_openapiAclRuleMatchIpDstMaskGet, with_ip, &address, &mask);
  CALL(rpcclt_openapiAclRuleMatchIpv6SrcPfxAdd, with_ipv6, address, 64);
  CALL(rpcclt_openapiAclRuleMatchIpv6SrcPfxGet, with_ipv6, &address, &one);
  CALL(rpcclt_openapiAclRuleMatchIpv6DstPfxAdd, with_ipv6, address, 64);
  CALL(rpcclt_openapiAclRuleMatchIpv6DstPfxGet, with_ipv6, &address, &one);
  CALL(rpcclt_openapiAclRuleMatchL4SrcPortAdd, with_ip | with_ipv6, 0, 80, 0);
  CALL(rpcclt_openapiAclRuleMatchL4SrcPortGet, with_ip | with_ipv6, &one, &two, &three);
  CALL(rpcclt_openapiAclRuleMatchL4DstPortAdd, with_ip | with_ipv6, 0, 80, 0);
  CALL(rpcclt_openapiAclRuleMatchL4DstPortGet, with_ip | with_ipv6, &one, &two, &three);
  CALL(rpcclt_openapiAclRuleMatchDscpAdd, with_ip | with_ipv6, 5);
  CALL(rpcclt_openapiAclRuleMatchDscpGet, with_ip | with_ipv6, &one);
  CALL(rpcclt_openapiAclRuleMatchPrecedenceAdd, with_ip | with_ipv6, 5);
  CALL(rpcclt_openapiAclRuleMatchPrecedenceGet, with_ip | with_ipv6, &one);
  CALL(rpcclt_openapiAclRuleMatchTosAdd, with_ip | with_ipv6, &first, &second);
  CALL(rpcclt_openapiAclRuleMatchTosGet, with_ip | with_ipv6, &first, &second);
  CALL(rpcclt_openapiAclRuleMatchIgmpTypeAdd, with_ip, 5);
  CALL(rpcclt_openapiAclRuleMatchIgmpTypeGet, with_ip, &one);
  CALL(rpcclt_openapiAclRuleMatchIcmpTypeCodeAdd, with_ip | with_ipv6, 1, 8, 0);
  CALL(rpcclt_openapiAclRuleMatchIcmpTypeCodeGet, with_ip | with_ipv6, 1, &one, &two);
  CALL(rpcclt_openapiAclRuleMatchTcpFlagsAdd, with_ip | with_ipv6, 2, 2);
  CALL(rpcclt_openapiAclRuleMatchTcpFlagsGet, with_ip | with_ipv6, &one, &two);
  CALL(rpcclt_openapiAclRuleMatchTcpEstablishedAdd, with_ip | with_ipv6, 1);
  CALL(rpcclt_openapiAclRuleMatchTcpEstablishedGet, with_ip | with_ipv6, &one);
  CALL(rpcclt_openapiAclRuleMatchFragmentsAdd, with_ip | with_ipv6, 1);
  CALL(rpcclt_openapiAclRuleMatchFragmentsGet, with_ip | with_ipv6, &one);
  CALL(rpcclt_openapiAclRuleMatchRoutingAdd, with_ipv6, 1);
  CALL(rpcclt_openapiAclRuleMatchRoutingGet, with_ipv6, &one);
  CALL(rpcclt_openapiAclRuleMatchFlowLabelAdd, with_ipv6, 1);
  CALL(rpcclt_openapiAclRuleMatchFlowLabelGet, with_ipv6, &one);
  CALL(rpcclt_openapiAclRuleMatchLoggingAdd, with_all, 1);
  CALL(rpcclt_openapiAclRuleMatchLoggingGet, with_all, &one);
  CALL(rpcclt_openapiAclRuleMatchAssignQueueAdd, with_all, 1);
  CALL(rpcclt_openapiAclRuleMatchAssignQueueGet, with_all, &one);
  CALL(rpcclt_openapiAclRuleMatchMirrorAdd, with_all, 1);
  CALL(rpcclt_openapiAclRuleMatchMirrorGet, with_all, &one);
  CALL(rpcclt_openapiAclRuleMatchRedirectAdd, with_all, 1);
  CALL(rpcclt_openapiAclRuleMatchRedirectGet, with_all, &one);
  CALL(rpcclt_openapiAclRuleMatchTimeRangeAdd, with_all, &first);
  CALL(rpcclt_openapiAclRuleMatchTimeRangeGet, with_all, &first);
  CALL(rpcclt_openapiAclRuleMatchTimeRangeStatusGet, with_all, &one);
  CALL(rpcclt_openapiAclRuleMatchRateLimitAdd, with_all, 1, 1);
  CALL(rpcclt_openapiAclRuleMatchRateLimitGet, with_all, &one, &two);
}

#undef CALL

/* The result of a call with one of its arguments made null: OPEN_E_PARAM is right, also for what is none. */
template <size_t At, typename Function, typename Arguments>
open_error_t call_with_null(Function function, openapiClientHandle_t *handle, Arguments arguments) {
  using argument = std::tuple_element_t<At, Arguments>;
  if constexpr (!std::is_pointer_v<argument>) return OPEN_E_PARAM;
  if constexpr (std::is_same_v<argument, open_buffdesc *>) {
    std::get<At>(arguments) = &nowhere;
    EXPECT_EQ(std::apply(function, std::tuple_cat(std::tuple(handle), arguments)), OPEN_E_PARAM);
  }
  if constexpr (std::is_pointer_v<argument>) std::get<At>(arguments) = nullptr;
  return std::apply(function, std::tuple_cat(std::tuple(handle), arguments));
}

template <typename Function, typename Arguments, size_t... At>
void check_nulls(const char *name, Function function, openapiClientHandle_t *handle,
                 const Arguments &arguments, std::index_sequence<At...>) {
  for (open_error_t rc : {OPEN_E_PARAM, call_with_null<At>(function, handle, arguments)...})
    EXPECT_EQ(rc, OPEN_E_PARAM) << name;
}

class AclArguments : public AclSwitch {
protected:
  void SetUp() override {
    AclSwitch::SetUp();
    address = address_of("10.1.2.3");
    mask = address_of("255.255.255.0");
    before = softswitch::running_config();
  }

  void TearDown() override {
    EXPECT_EQ(softswitch::running_config(), before) << "something was changed";
    AclSwitch::TearDown();
  }

  /* Calls a function wrongly in every way that is the same for all of them. */
  template <typename Function, typename... Arguments>
  void check(const char *name, Function function, Arguments... arguments) {
    openapiClientHandle_t unregistered = {};
    EXPECT_EQ(function(nullptr, arguments...), OPEN_E_PARAM) << name;
    EXPECT_EQ(function(&unregistered, arguments...), OPEN_E_RPC) << name;
    ASSERT_TRUE(softswitch::fault_order(name, OPEN_E_TIMEOUT, 1, 0)) << name;
    EXPECT_EQ(function(&handle, arguments...), OPEN_E_TIMEOUT) << name;
    check_nulls(name, function, &handle, std::tuple(arguments...), std::index_sequence_for<Arguments...>());
  }

  std::string before;
};

TEST_F(AclArguments, NullPointersAndUnregisteredHandlesAreRefusedAndFaultsCanBeOrdered) {
  each_list_function(
      [&](const char *name, auto function, auto... arguments) { check(name, function, arguments...); });
  each_rule_function([&](const char *name, auto function, uint32_t, auto... arguments) {
    check(name, function, 1u, 10u, arguments...);
  });
}

TEST_F(AclArguments, NumberCheckIsFalseForWhateverIsWrong) {
  openapiClientHandle_t unregistered = {};
  EXPECT_TRUE(rpcclt_openapiAclRuleNumCheckValid(&handle, ip, 20));
  EXPECT_FALSE(rpcclt_openapiAclRuleNumCheckValid(nullptr, ip, 20));
  EXPECT_FALSE(rpcclt_openapiAclRuleNumCheckValid(&unregistered, ip, 20));
  ASSERT_TRUE(softswitch::fault_order("rpcclt_openapiAclRuleNumCheckValid", OPEN_E_FAIL, 1, 0));
  EXPECT_FALSE(rpcclt_openapiAclRuleNumCheckValid(&handle, ip, 20));
  EXPECT_TRUE(rpcclt_openapiAclRuleNumCheckValid(&handle, ip, 20));
}

TEST_F(AclArguments, RulesAndListsThatAreNotThereAreNotFound) {
  each_rule_function([&](const char *name, auto function, uint32_t, auto... arguments) {
    for (uint32_t acl : {0u, 4u, 101u, UINT32_MAX})
      EXPECT_EQ(function(&handle, acl, 10, arguments...), OPEN_E_NOT_FOUND) << name << " of list " << acl;
    for (uint32_t acl : {ip, mac, ipv6}) {
      for (uint32_t rule : {0u, 9u, 11u, 2147483648u, UINT32_MAX})
        EXPECT_EQ(function(&handle, acl, rule, arguments...), OPEN_E_NOT_FOUND)
            << name << " of rule " << rule;
    }
  });
}

TEST_F(AclArguments, ListsOfAnotherTypeDoNotHaveIt) {
  each_rule_function([&](const char *name, auto function, uint32_t types, auto... arguments) {
    for (uint32_t type : {1u, 2u, 3u}) {
      if (types & (1u << type)) continue;
      EXPECT_EQ(function(&handle, type, 10, arguments...), OPEN_E_UNAVAIL)
          << name << " in a list of type " << type;
    }
  });
}

class AclTrace : public AclSwitch {};

TEST_F(AclTrace, AddressesAreShown) {
  setenv("KESTREL_TRACE", "platform", 1);
  restart();
  unsetenv("KESTREL_TRACE");
  testing::internal::CaptureStderr();
  open_inet_addr_t one_address, other;
  uint32_t length;
  rpcclt_openapiAclRuleMatchIpSrcMaskAdd(&handle, ip, 10, address_of("10.1.2.3"), address_of("255.255.0.0"));
  rpcclt_openapiAclRuleMatchIpSrcMaskGet(&handle, ip, 10, &one_address, &other);
  rpcclt_openapiAclRuleMatchIpv6DstPfxAdd(&handle, ipv6, 10, address_of("2001:db8::"), 32);
  rpcclt_openapiAclRuleMatchIpv6DstPfxGet(&handle, ipv6, 10, &one_address, &length);
  rpcclt_openapiAclIntfDirListGet(&handle, 1, 0, &bound_lists);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "platform: rpcclt_openapiAclRuleMatchIpSrcMaskAdd(1, 10, 10.1.2.3, 255.255.0.0) = 0\n"
            "platform: rpcclt_openapiAclRuleMatchIpSrcMaskGet(1, 10) = 0 -> 10.1.2.3, 255.255.0.0\n"
            "platform: rpcclt_openapiAclRuleMatchIpv6DstPfxAdd(3, 10, 2001:db8::, 32) = 0\n"
            "platform: rpcclt_openapiAclRuleMatchIpv6DstPfxGet(3, 10) = 0 -> 2001:db8::, 32\n"
            "platform: rpcclt_openapiAclIntfDirListGet(1, 0) = 0\n");
  restart();
}

} // namespace
