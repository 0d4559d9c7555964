/* Tests of the functions of the C interface about access control lists as such: making, finding, walking and
 * deleting them, and what a restart keeps. */
#include "tests/unit/platform/acl_test_support.h"

namespace {

class AccessLists : public SoftSwitch {};

using AclLists = AclSwitch;
using ids = std::vector<uint32_t>;

TEST_F(AccessLists, FactorySwitchHasNone) {
  uint32_t count = 9, max = 9, id;
  EXPECT_EQ(rpcclt_openapiAclCountGet(&handle, &count), OPEN_E_NONE);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(rpcclt_openapiAclMaxCountGet(&handle, &max), OPEN_E_NONE);
  EXPECT_EQ(max, 100u);
  for (uint32_t type : {1u, 2u, 3u}) {
    EXPECT_EQ(rpcclt_openapiAclGetFirst(&handle, type, &id), OPEN_E_FAIL);
    EXPECT_EQ(rpcclt_openapiAclGetNext(&handle, type, 0, &id), OPEN_E_FAIL);
  }
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(AclLists, ListHasNameAndIdAndKeepsThemThroughARestart) {
  EXPECT_EQ(ip, 1u);
  EXPECT_EQ(mac, 2u);
  EXPECT_EQ(ipv6, 3u);
  EXPECT_EQ(softswitch::running_config(),
            "acl ip ip-list id 1\nacl mac mac-list id 2\nacl ipv6 ipv6-list id 3\n"
            "acl ip ip-list rule 10 permit\nacl mac mac-list rule 10 permit\n"
            "acl ipv6 ipv6-list rule 10 permit\n");
  restart();
  EXPECT_EQ(list_name(1), "ip-list");
  EXPECT_EQ(list_name(2), "mac-list");
  EXPECT_EQ(find(OPEN_ACL_TYPE_IPV6, "ipv6-list"), 3);
}

TEST_F(AclLists, NamesAreOfATypeEach) {
  EXPECT_EQ(find(OPEN_ACL_TYPE_IP, "mac-list"), OPEN_E_NOT_FOUND);
  EXPECT_EQ(make(OPEN_ACL_TYPE_IP, "mac-list"), 4u);
  EXPECT_EQ(find(OPEN_ACL_TYPE_IP, "mac-list"), 4);
  EXPECT_EQ(find(OPEN_ACL_TYPE_MAC, "mac-list"), 2);
  uint32_t id = 77;
  EXPECT_EQ(create(OPEN_ACL_TYPE_MAC, "mac-list", &id), OPEN_E_EXISTS);
  EXPECT_EQ(find(OPEN_ACL_TYPE_MAC, "MAC-list"), OPEN_E_NOT_FOUND) << "case counts";
}

TEST_F(AclLists, NameIsOneTo31BytesWithoutBlanksSlashesAndControlCharacters) {
  uint32_t id;
  for (const std::string &good : {std::string("x"), std::string(31, 'n'), std::string("a\"b\\c"),
                                  std::string("Büro!"), std::string("!")}) {
    ASSERT_EQ(create(OPEN_ACL_TYPE_IP, good, &id), OPEN_E_NONE) << good;
    EXPECT_EQ(list_name(id), good);
    EXPECT_EQ(find(OPEN_ACL_TYPE_IP, good), static_cast<int>(id));
  }
  std::string before = softswitch::running_config();
  for (const std::string &bad :
       {std::string(""), std::string(32, 'n'), std::string("a b"), std::string(" "), std::string("a/b"),
        std::string("a\tb"), std::string("a\nb"), std::string("\x7f"), std::string("\x01")}) {
    EXPECT_EQ(create(OPEN_ACL_TYPE_IP, bad, &id), OPEN_E_PARAM) << bad;
    EXPECT_EQ(find(OPEN_ACL_TYPE_IP, bad), OPEN_E_NOT_FOUND) << bad;
  }
  EXPECT_EQ(softswitch::running_config(), before);
}

TEST_F(AclLists, NameNeedsRoomForItsTerminator) {
  make(OPEN_ACL_TYPE_IP, std::string(31, 'n'));
  char buffer[OPEN_ACL_NAME_SIZE] = "untouched";
  open_buffdesc name = {31, buffer};
  EXPECT_EQ(rpcclt_openapiAclNameGet(&handle, 4, &name), OPEN_E_PARAM);
  EXPECT_STREQ(buffer, "untouched");
  name.size = 32;
  EXPECT_EQ(rpcclt_openapiAclNameGet(&handle, 4, &name), OPEN_E_NONE);
  EXPECT_EQ(name.size, 31u);
  EXPECT_EQ(buffer, std::string(31, 'n'));
}

TEST_F(AclLists, NameIsReadWithAndWithoutTheTerminatorCounted) {
  char buffer[OPEN_ACL_NAME_SIZE] = "ip-list";
  for (uint32_t size : {7u, 8u, 32u}) {
    open_buffdesc name = {size, buffer};
    uint32_t id = 0;
    EXPECT_EQ(rpcclt_openapiAclGet(&handle, OPEN_ACL_TYPE_IP, &name, &id), OPEN_E_NONE) << size;
    EXPECT_EQ(id, ip);
  }
}

TEST_F(AclLists, UnknownTypesAreRefused) {
  uint32_t id;
  for (uint32_t type : {0u, 4u, UINT32_MAX}) {
    EXPECT_EQ(create(type, "new", &id), OPEN_E_PARAM) << type;
    EXPECT_EQ(find(type, "ip-list"), OPEN_E_PARAM) << type;
    EXPECT_EQ(rpcclt_openapiAclGetFirst(&handle, type, &id), OPEN_E_PARAM) << type;
    EXPECT_EQ(rpcclt_openapiAclGetNext(&handle, type, 0, &id), OPEN_E_PARAM) << type;
  }
}

TEST_F(AclLists, UnknownListsAreNotFound) {
  for (uint32_t id : {0u, 4u, 100u, 101u, UINT32_MAX}) {
    EXPECT_EQ(list_name(id), std::to_string(OPEN_E_NOT_FOUND)) << id;
    EXPECT_EQ(rpcclt_openapiAclDelete(&handle, id), OPEN_E_NOT_FOUND) << id;
  }
}

TEST_F(AclLists, NewListTakesTheLowestFreeId) {
  ASSERT_EQ(rpcclt_openapiAclDelete(&handle, 2), OPEN_E_NONE);
  restart();
  EXPECT_EQ(lists(OPEN_ACL_TYPE_IPV6), ids{3}) << "others keep theirs";
  EXPECT_EQ(make(OPEN_ACL_TYPE_IP, "second"), 2u);
  EXPECT_EQ(make(OPEN_ACL_TYPE_IP, "fourth"), 4u);
  ASSERT_EQ(rpcclt_openapiAclDelete(&handle, 1), OPEN_E_NONE);
  EXPECT_EQ(make(OPEN_ACL_TYPE_MAC, "first"), 1u);
}

TEST_F(AclLists, WalkGoesByIdWithinTheType) {
  make(OPEN_ACL_TYPE_IP, "b");
  make(OPEN_ACL_TYPE_MAC, "c");
  make(OPEN_ACL_TYPE_IP, "a");
  EXPECT_EQ(lists(OPEN_ACL_TYPE_IP), (ids{1, 4, 6}));
  EXPECT_EQ(lists(OPEN_ACL_TYPE_MAC), (ids{2, 5}));
  EXPECT_EQ(lists(OPEN_ACL_TYPE_IPV6), ids{3});
  uint32_t next;
  EXPECT_EQ(rpcclt_openapiAclGetNext(&handle, OPEN_ACL_TYPE_IP, 3, &next), OPEN_E_NONE);
  EXPECT_EQ(next, 4u) << "after a list of another type";
  ASSERT_EQ(rpcclt_openapiAclDelete(&handle, 4), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiAclGetNext(&handle, OPEN_ACL_TYPE_IP, 4, &next), OPEN_E_NONE);
  EXPECT_EQ(next, 6u) << "after one that is gone";
  EXPECT_EQ(rpcclt_openapiAclGetNext(&handle, OPEN_ACL_TYPE_IP, UINT32_MAX, &next), OPEN_E_FAIL);
}

TEST_F(AclLists, DeletingAListDeletesItsRules) {
  ASSERT_EQ(rpcclt_openapiAclDelete(&handle, ip), OPEN_E_NONE);
  uint32_t count;
  EXPECT_EQ(rpcclt_openapiAclRuleCountGet(&handle, ip, &count), OPEN_E_NOT_FOUND);
  EXPECT_EQ(make(OPEN_ACL_TYPE_IP, "ip-list"), ip);
  EXPECT_EQ(rule_count(ip), 0u);
}

TEST_F(AclLists, BoundListIsNotDeletedUntilItIsUnboundEverywhere) {
  ASSERT_EQ(bind(1, 0, ip), OPEN_E_NONE);
  ASSERT_EQ(bind_vlan(1, 1, ip), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiAclDelete(&handle, ip), OPEN_E_FAIL);
  ASSERT_EQ(unbind(1, 0, ip), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiAclDelete(&handle, ip), OPEN_E_FAIL);
  EXPECT_EQ(rule_count(ip), 1u);
  EXPECT_EQ(rpcclt_openapiAclDelete(&handle, mac), OPEN_E_NONE) << "others can be";
  ASSERT_EQ(unbind_vlan(1, 1, ip), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiAclDelete(&handle, ip), OPEN_E_NONE);
}

TEST_F(AclLists, HundredListsFit) {
  for (int count = 4; count <= 100; count++)
    ASSERT_EQ(make(1 + count % 3, "list" + std::to_string(count)), static_cast<uint32_t>(count));
  uint32_t id, count = 0;
  EXPECT_EQ(create(OPEN_ACL_TYPE_IP, "more", &id), OPEN_E_FULL);
  EXPECT_EQ(create(OPEN_ACL_TYPE_IP, "ip-list", &id), OPEN_E_EXISTS);
  EXPECT_EQ(rpcclt_openapiAclCountGet(&handle, &count), OPEN_E_NONE);
  EXPECT_EQ(count, 100u);
  ASSERT_EQ(rpcclt_openapiAclDelete(&handle, 50), OPEN_E_NONE);
  EXPECT_EQ(make(OPEN_ACL_TYPE_IP, "more"), 50u);
}

TEST_F(AclLists, LimitCanBeLoweredByName) {
  EXPECT_FALSE(softswitch::set_limit("acls", 101));
  ASSERT_TRUE(softswitch::set_limit("acls", 3));
  uint32_t id, max = 0;
  EXPECT_EQ(create(OPEN_ACL_TYPE_IP, "more", &id), OPEN_E_FULL);
  EXPECT_EQ(rpcclt_openapiAclMaxCountGet(&handle, &max), OPEN_E_NONE);
  EXPECT_EQ(max, 3u);
  ASSERT_EQ(rpcclt_openapiAclDelete(&handle, 3), OPEN_E_NONE);
  EXPECT_EQ(make(OPEN_ACL_TYPE_IP, "more"), 3u);
}

/* --- What every change has ------------------------------------------------------------------------------ */

TEST_F(AclLists, ChangeThatCannotBeStoredIsRefusedAndChangesNothing) {
  ASSERT_EQ(bind(2, 0, mac), OPEN_E_NONE);
  take_and_hold();
  std::string before = softswitch::running_config();
  {
    full_disk full(file_content(dir.path + "/journal-1").size());
    uint32_t id;
    EXPECT_EQ(create(OPEN_ACL_TYPE_IP, "new", &id), OPEN_E_FAIL);
    EXPECT_EQ(rpcclt_openapiAclDelete(&handle, ip), OPEN_E_FAIL);
    EXPECT_EQ(add_rule(ip, 20), OPEN_E_FAIL);
    EXPECT_EQ(delete_rule(ip, 10), OPEN_E_FAIL);
    EXPECT_EQ(rpcclt_openapiAclRuleMatchDscpAdd(&handle, ip, 10, 5), OPEN_E_FAIL);
    EXPECT_EQ(bind(1, 0, ip), OPEN_E_FAIL);
    EXPECT_EQ(bind_vlan(1, 0, ip), OPEN_E_FAIL);
    EXPECT_EQ(unbind(2, 0, mac), OPEN_E_FAIL);
  }
  EXPECT_EQ(softswitch::running_config(), before);
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
  EXPECT_EQ(unbind(2, 0, mac), OPEN_E_NONE);
}

TEST_F(AclLists, SettingWhatIsSetAlreadyIsNoChange) {
  ASSERT_EQ(rpcclt_openapiAclRuleMatchDscpAdd(&handle, ip, 10, 5), OPEN_E_NONE);
  ASSERT_EQ(bind(2, 0, mac, 7), OPEN_E_NONE);
  take_and_hold();
  std::string journal = file_content(dir.path + "/journal-1");
  EXPECT_EQ(rpcclt_openapiAclRuleMatchDscpAdd(&handle, ip, 10, 5), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchEveryAdd(&handle, ip, 10, 0), OPEN_E_NONE);
  EXPECT_EQ(set_protocol(ip, 10, 255), OPEN_E_NONE);
  EXPECT_EQ(commit("acl ip ip-list"), OPEN_E_NONE);
  EXPECT_EQ(commit("acl ip ip-list id 1"), OPEN_E_NONE);
  EXPECT_EQ(commit("acl ip ip-list rule 10 permit protocol 255 dscp 5"), OPEN_E_NONE);
  EXPECT_EQ(commit("interface 0/2 acl in mac mac-list sequence 7"), OPEN_E_NONE);
  EXPECT_EQ(file_content(dir.path + "/journal-1"), journal);
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
}

TEST_F(AclLists, ReloadReturnsToWhatWasSaved) {
  ASSERT_EQ(bind(2, 0, mac, 7), OPEN_E_NONE);
  std::string error;
  ASSERT_TRUE(softswitch::save_startup_config(&error)) << error;
  std::string saved = describe_all();
  ASSERT_EQ(unbind(2, 0, mac), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiAclDelete(&handle, mac), OPEN_E_NONE);
  ASSERT_EQ(add_rule(ip, 20), 20);
  ASSERT_EQ(bind(3, 1, ip), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_EQ(describe_all(), saved);
}

} // namespace
