/* Tests of the functions of the C interface that bind access control lists to interfaces and VLANs. */
#include "tests/unit/platform/acl_test_support.h"

namespace {

class AclBindings : public AclSwitch {
protected:
  void SetUp() override {
    AclSwitch::SetUp();
    ASSERT_EQ(commit("vlan 10,20"), OPEN_E_NONE);
  }
};

TEST_F(AclBindings, NothingIsBoundAtFirst) {
  for (uint32_t direction : {0u, 1u}) {
    EXPECT_EQ(bound_at(1, direction), "");
    EXPECT_EQ(bound_at_vlan(10, direction), "");
    EXPECT_EQ(bound_to(ip, direction), "interfaces vlans");
  }
}

TEST_F(AclBindings, BindingsCountInOrderOfTheirSequenceAndByDirection) {
  ASSERT_EQ(bind(1, 0, ip, 20), OPEN_E_NONE);
  ASSERT_EQ(bind(1, 0, mac, 5), OPEN_E_NONE);
  ASSERT_EQ(bind(1, 1, ipv6, UINT32_MAX), OPEN_E_NONE);
  ASSERT_EQ(bind(1, 0, ipv6, 10), OPEN_E_NONE);
  ASSERT_EQ(bind_vlan(10, 0, ip, 1), OPEN_E_NONE);
  for (int round = 0; round < 3; round++) {
    EXPECT_EQ(bound_at(1, 0), "5:type 2 acl 2, 10:type 3 acl 3, 20:type 1 acl 1");
    EXPECT_EQ(bound_at(1, 1), "4294967295:type 3 acl 3");
    EXPECT_EQ(bound_at(2, 0), "");
    EXPECT_EQ(bound_at_vlan(10, 0), "1:type 1 acl 1");
    EXPECT_EQ(bound_at_vlan(10, 1), "");
    restart(); /* first from the journal, then from the snapshot */
  }
}

TEST_F(AclBindings, SequenceZeroIsTheOneAfterTheLast) {
  ASSERT_EQ(bind(56, 0, ip), OPEN_E_NONE);
  ASSERT_EQ(bind(56, 0, mac, 41), OPEN_E_NONE);
  ASSERT_EQ(bind(56, 0, ipv6, 0), OPEN_E_NONE);
  EXPECT_EQ(bound_at(56, 0), "1:type 1 acl 1, 41:type 2 acl 2, 42:type 3 acl 3");
  ASSERT_EQ(bind_vlan(20, 1, ip, UINT32_MAX), OPEN_E_NONE);
  EXPECT_EQ(bind_vlan(20, 1, mac, 0), OPEN_E_FULL) << "there is no number after the last";
  EXPECT_EQ(bound_at_vlan(20, 1), "4294967295:type 1 acl 1");
  restart();
  EXPECT_EQ(bound_at(56, 0), "1:type 1 acl 1, 41:type 2 acl 2, 42:type 3 acl 3");
}

TEST_F(AclBindings, BoundListIsAnsweredExistsWhateverTheSequence) {
  ASSERT_EQ(bind(1, 0, ip, 5), OPEN_E_NONE);
  ASSERT_EQ(bind(1, 0, mac, 6), OPEN_E_NONE);
  ASSERT_EQ(bind_vlan(10, 0, ip, 5), OPEN_E_NONE);
  for (uint32_t sequence : {0u, 5u, 6u, 7u}) {
    EXPECT_EQ(bind(1, 0, ip, sequence), OPEN_E_EXISTS) << sequence;
    EXPECT_EQ(bind_vlan(10, 0, ip, sequence), OPEN_E_EXISTS) << sequence;
  }
  EXPECT_EQ(bound_at(1, 0), "5:type 1 acl 1, 6:type 2 acl 2");
}

TEST_F(AclBindings, SequenceOfAnotherListIsRefused) {
  ASSERT_EQ(bind(1, 0, ip, 5), OPEN_E_NONE);
  ASSERT_EQ(bind_vlan(10, 0, ip, 5), OPEN_E_NONE);
  EXPECT_EQ(bind(1, 0, mac, 5), OPEN_E_FAIL);
  EXPECT_EQ(bind_vlan(10, 0, mac, 5), OPEN_E_FAIL);
  EXPECT_EQ(bind(1, 1, mac, 5), OPEN_E_NONE) << "in the other direction it is free";
  EXPECT_EQ(bind(2, 0, mac, 5), OPEN_E_NONE);
  EXPECT_EQ(bind_vlan(20, 0, mac, 5), OPEN_E_NONE);
}

TEST_F(AclBindings, OnlyPortsAndLagsCanHaveLists) {
  for (const auto &[interface, result] : not_switching) {
    EXPECT_EQ(bind(interface, 0, ip), result) << interface;
    EXPECT_EQ(unbind(interface, 0, ip), result) << interface;
    EXPECT_EQ(bound_at(interface, 0), std::to_string(result)) << interface;
  }
  for (uint32_t interface : {1u, 54u, 56u, 119u}) EXPECT_EQ(bind(interface, 0, ip), OPEN_E_NONE) << interface;
  EXPECT_EQ(bound_to(ip, 0), "interfaces 1 54 56 119 vlans");
}

TEST_F(AclBindings, VlanMustExist) {
  for (const auto &[vlan, result] : absent_vlans) {
    EXPECT_EQ(bind_vlan(vlan, 0, ip), result) << vlan;
    EXPECT_EQ(unbind_vlan(vlan, 0, ip), result) << vlan;
    EXPECT_EQ(bound_at_vlan(vlan, 0), std::to_string(result)) << vlan;
  }
}

TEST_F(AclBindings, UnknownDirectionsAreRefused) {
  OPEN_ACL_ASSIGNED_INTF_LIST_t interfaces;
  OPEN_ACL_ASSIGNED_VLAN_LIST_t vlans;
  for (uint32_t direction : {2u, UINT32_MAX}) {
    EXPECT_EQ(bind(1, direction, ip), OPEN_E_PARAM);
    EXPECT_EQ(unbind(1, direction, ip), OPEN_E_PARAM);
    EXPECT_EQ(bind_vlan(10, direction, ip), OPEN_E_PARAM);
    EXPECT_EQ(unbind_vlan(10, direction, ip), OPEN_E_PARAM);
    EXPECT_EQ(bound_at(1, direction), std::to_string(OPEN_E_PARAM));
    EXPECT_EQ(bound_at_vlan(10, direction), std::to_string(OPEN_E_PARAM));
    EXPECT_EQ(rpcclt_openapiAclAssignedIntfDirListGet(&handle, ip, direction, &interfaces), OPEN_E_PARAM);
    EXPECT_EQ(rpcclt_openapiAclAssignedVlanDirListGet(&handle, ip, direction, &vlans), OPEN_E_PARAM);
  }
}

TEST_F(AclBindings, UnknownListsAreNotFound) {
  OPEN_ACL_ASSIGNED_INTF_LIST_t interfaces;
  OPEN_ACL_ASSIGNED_VLAN_LIST_t vlans;
  for (uint32_t acl : {0u, 4u, 101u, UINT32_MAX}) {
    EXPECT_EQ(bind(1, 0, acl), OPEN_E_NOT_FOUND);
    EXPECT_EQ(unbind(1, 0, acl), OPEN_E_NOT_FOUND);
    EXPECT_EQ(bind_vlan(10, 0, acl), OPEN_E_NOT_FOUND);
    EXPECT_EQ(unbind_vlan(10, 0, acl), OPEN_E_NOT_FOUND);
    EXPECT_EQ(rpcclt_openapiAclAssignedIntfDirListGet(&handle, acl, 0, &interfaces), OPEN_E_NOT_FOUND);
    EXPECT_EQ(rpcclt_openapiAclAssignedVlanDirListGet(&handle, acl, 0, &vlans), OPEN_E_NOT_FOUND);
  }
}

TEST_F(AclBindings, UnbindingNeedsTheListBoundHereInThisDirection) {
  ASSERT_EQ(bind(1, 0, ip), OPEN_E_NONE);
  ASSERT_EQ(bind_vlan(10, 1, ip), OPEN_E_NONE);
  EXPECT_EQ(unbind(1, 1, ip), OPEN_E_NOT_FOUND);
  EXPECT_EQ(unbind(2, 0, ip), OPEN_E_NOT_FOUND);
  EXPECT_EQ(unbind(10, 1, ip), OPEN_E_NOT_FOUND) << "interface 10 is not VLAN 10";
  EXPECT_EQ(unbind(1, 0, mac), OPEN_E_NOT_FOUND);
  EXPECT_EQ(unbind_vlan(10, 0, ip), OPEN_E_NOT_FOUND);
  EXPECT_EQ(unbind_vlan(1, 0, ip), OPEN_E_NOT_FOUND);
  EXPECT_EQ(unbind(1, 0, ip), OPEN_E_NONE);
  EXPECT_EQ(unbind(1, 0, ip), OPEN_E_NOT_FOUND);
  EXPECT_EQ(bound_to(ip, 1), "interfaces vlans 10");
  EXPECT_EQ(unbind_vlan(10, 1, ip), OPEN_E_NONE);
  EXPECT_EQ(bound_to(ip, 1), "interfaces vlans");
}

TEST_F(AclBindings, HundredListsFitOnAnInterfaceAndVlanAndDirection) {
  for (uint32_t id = 4; id <= 100; id++) ASSERT_EQ(make(1 + id % 3, "list" + std::to_string(id)), id);
  for (uint32_t id = 1; id <= 100; id++) {
    ASSERT_EQ(bind(3, 1, id), OPEN_E_NONE);
    ASSERT_EQ(bind_vlan(10, 0, id), OPEN_E_NONE);
  }
  OPEN_ACL_INTF_DIR_LIST_t list;
  ASSERT_EQ(rpcclt_openapiAclIntfDirListGet(&handle, 3, 1, &list), OPEN_E_NONE);
  ASSERT_EQ(list.count, 100u);
  EXPECT_EQ(list.listEntry[99].aclId, 100u);
  ASSERT_EQ(rpcclt_openapiAclVlanDirListGet(&handle, 10, 0, &list), OPEN_E_NONE);
  EXPECT_EQ(list.count, 100u);
}

TEST_F(AclBindings, FullInterfaceOrVlanRefusesOneMore) {
  EXPECT_FALSE(softswitch::set_limit("acl-bindings", 101));
  ASSERT_TRUE(softswitch::set_limit("acl-bindings", 2));
  for (uint32_t acl : {ip, mac}) {
    ASSERT_EQ(bind(1, 0, acl), OPEN_E_NONE);
    ASSERT_EQ(bind_vlan(10, 0, acl), OPEN_E_NONE);
  }
  EXPECT_EQ(bind(1, 0, ipv6), OPEN_E_FULL);
  EXPECT_EQ(bind_vlan(10, 0, ipv6), OPEN_E_FULL);
  EXPECT_EQ(bind(1, 0, ip), OPEN_E_EXISTS) << "what is bound is not one more";
  EXPECT_EQ(bind(1, 1, ipv6), OPEN_E_NONE) << "each direction has a table of its own";
  ASSERT_EQ(unbind(1, 0, ip), OPEN_E_NONE);
  EXPECT_EQ(bind(1, 0, ipv6), OPEN_E_NONE);
}

/* --- The TCAM ------------------------------------------------------------------------------------------- */

TEST_F(AclBindings, FullTcamRefusesListsToBeBound) {
  ASSERT_EQ(bind(1, 0, ip), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::set_limit("tcam-ingress-slices-512", 1));
  EXPECT_EQ(bind(1, 0, mac), OPEN_E_FULL);
  EXPECT_EQ(bind_vlan(10, 0, mac), OPEN_E_FULL);
  EXPECT_EQ(bound_to(mac, 0), "interfaces vlans");
  EXPECT_EQ(bind_vlan(10, 0, ip), OPEN_E_NONE) << "rules count once wherever their list is bound";
  EXPECT_EQ(bind(1, 1, mac), OPEN_E_NONE) << "each direction has a table of its own";
  ASSERT_EQ(unbind(1, 0, ip), OPEN_E_NONE);
  ASSERT_EQ(unbind_vlan(10, 0, ip), OPEN_E_NONE);
  EXPECT_EQ(bind(1, 0, mac), OPEN_E_NONE);
}

TEST_F(AclBindings, FullTcamRefusesRulesOfBoundLists) {
  for (int count = 1; count < 512; count++) ASSERT_GT(add_rule(ip, 0), 0) << count;
  ASSERT_EQ(bind(1, 0, ip), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::set_limit("tcam-ingress-slices-512", 1));
  EXPECT_EQ(add_rule(ip, 0), OPEN_E_FULL);
  EXPECT_EQ(add_rule(ip, 5), OPEN_E_FULL);
  EXPECT_EQ(rule_count(ip), 512u);
  EXPECT_TRUE(rpcclt_openapiAclRuleNumCheckValid(&handle, ip, 5)) << "the number is not at fault";
  EXPECT_EQ(rpcclt_openapiAclRuleMatchDscpAdd(&handle, ip, 10, 5), OPEN_E_NONE) << "which takes no room";
  EXPECT_EQ(add_rule(mac, 0), 20) << "a list that is bound nowhere takes none either";
  ASSERT_EQ(delete_rule(ip, 10), OPEN_E_NONE);
  EXPECT_EQ(add_rule(ip, 5), 5);
}

/* --- What else ends bindings, and pending changes ------------------------------------------------------- */

TEST_F(AclBindings, DeletingAVlanTakesItsBindingsAway) {
  ASSERT_EQ(bind_vlan(10, 0, ip), OPEN_E_NONE);
  ASSERT_EQ(bind_vlan(10, 1, mac), OPEN_E_NONE);
  ASSERT_EQ(bind_vlan(20, 0, ip), OPEN_E_NONE);
  ASSERT_EQ(bind(10, 0, ip), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(bound_to(ip, 0), "interfaces 10 vlans 20");
  EXPECT_EQ(bound_to(mac, 1), "interfaces vlans");
  ASSERT_EQ(rpcclt_openapiVlanCreate(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(bound_at_vlan(10, 0), "") << "creating it again brings nothing back";
}

TEST_F(AclBindings, DeletingALagTakesItsBindingsAway) {
  ASSERT_EQ(bind(60, 0, ip), OPEN_E_NONE);
  ASSERT_EQ(bind(60, 1, mac), OPEN_E_NONE);
  ASSERT_EQ(bind(61, 0, ip), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 60), OPEN_E_NONE);
  EXPECT_EQ(bound_to(ip, 0), "interfaces 61 vlans");
  EXPECT_EQ(bound_to(mac, 1), "interfaces vlans");
  ASSERT_EQ(rpcclt_openapiLagCreateZYL(&handle, 60), OPEN_E_NONE);
  EXPECT_EQ(bound_at(60, 0), "");
}

TEST_F(AclBindings, ChangesMakeTheirInterfaceOrVlanPending) {
  take_and_hold();
  ASSERT_EQ(bind(5, 0, ip), OPEN_E_NONE);
  ASSERT_EQ(bind(119, 1, mac), OPEN_E_NONE);
  ASSERT_EQ(bind_vlan(20, 1, mac), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), (std::vector<int>{5, 119}));
  EXPECT_EQ(pending_vlans(), std::vector<int>{20});
  take_and_hold();
  ASSERT_EQ(unbind(119, 1, mac), OPEN_E_NONE);
  ASSERT_EQ(unbind_vlan(20, 1, mac), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), std::vector<int>{119});
  EXPECT_EQ(pending_vlans(), std::vector<int>{20});
  take_and_hold();
  ASSERT_EQ(add_rule(ip, 20), 20);
  ASSERT_EQ(rpcclt_openapiAclDelete(&handle, mac), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), std::vector<int>()) << "lists and rules are no interface's settings";
  EXPECT_FALSE(softswitch::wait_applied(1)) << "but they are changes";
}

TEST_F(AclBindings, FirstThousandAndTwentyFourVlansAreListed) {
  std::string error, text = "vlan 2-1030\n";
  for (int vlan = 1; vlan <= 1030; vlan++)
    text += "vlan " + std::to_string(vlan) + " acl in ip ip-list sequence 1\n";
  ASSERT_TRUE(softswitch::apply_configuration(text, &error)) << error;
  OPEN_ACL_ASSIGNED_VLAN_LIST_t list;
  ASSERT_EQ(rpcclt_openapiAclAssignedVlanDirListGet(&handle, ip, 0, &list), OPEN_E_NONE);
  ASSERT_EQ(list.count, 1024u);
  for (uint32_t at = 0; at < list.count; at++) ASSERT_EQ(list.vlan[at], at + 1);
}

/* --- Mirror and redirect -------------------------------------------------------------------------------- */

TEST_F(AclBindings, ListIsNotBoundToTheTargetOfItsRules) {
  ASSERT_EQ(rpcclt_openapiAclRuleMatchMirrorAdd(&handle, ip, 10, 5), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiAclRuleMatchRedirectAdd(&handle, mac, 10, 60), OPEN_E_NONE);
  for (uint32_t direction : {0u, 1u}) {
    EXPECT_EQ(bind(5, direction, ip), OPEN_E_FAIL);
    EXPECT_EQ(bind(60, direction, mac), OPEN_E_FAIL);
  }
  EXPECT_EQ(bind(5, 0, mac), OPEN_E_NONE);
  EXPECT_EQ(bind(6, 0, ip), OPEN_E_NONE);
  EXPECT_EQ(bind_vlan(10, 0, ip), OPEN_E_NONE) << "a VLAN is no interface";
  ASSERT_EQ(delete_rule(ip, 10), OPEN_E_NONE);
  EXPECT_EQ(bind(5, 0, ip), OPEN_E_NONE);
}

TEST_F(AclBindings, RuleDoesNotMirrorOrRedirectToWhereItsListIsBound) {
  ASSERT_EQ(bind(5, 1, ip), OPEN_E_NONE);
  ASSERT_EQ(bind_vlan(10, 0, ip), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchMirrorAdd(&handle, ip, 10, 5), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchRedirectAdd(&handle, ip, 10, 5), OPEN_E_FAIL);
  EXPECT_EQ(describe(ip, 10), "permit every 0 protocol 255");
  EXPECT_EQ(rpcclt_openapiAclRuleMatchMirrorAdd(&handle, ip, 10, 10), OPEN_E_NONE) << "10 is a VLAN there";
  EXPECT_EQ(rpcclt_openapiAclRuleMatchRedirectAdd(&handle, mac, 10, 5), OPEN_E_NONE);
  ASSERT_EQ(unbind(5, 1, ip), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchMirrorAdd(&handle, ip, 10, 5), OPEN_E_NONE);
}

TEST_F(AclBindings, LagThatARuleSendsPacketsToIsNotDeleted) {
  ASSERT_EQ(rpcclt_openapiAclRuleMatchMirrorAdd(&handle, ip, 10, 60), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiAclRuleMatchRedirectAdd(&handle, mac, 10, 61), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 60), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 61), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 62), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiAclRuleMatchMirrorAdd(&handle, ip, 10, 1), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 60), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiAclDelete(&handle, mac), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 61), OPEN_E_NONE);
}

} // namespace
