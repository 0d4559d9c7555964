/* What the module of access control lists hands to the platform, where no answer of the software switch
 * tells: sizes of buffers, and arguments that it does not look at. */
#include "tests/unit/modules/acl_creation_fixture.h"
#include "tests/unit/modules/recorded_calls.h"

class AclArgumentsTest : public AclCreationTest {
protected:
  /* What a function of rules is called with by a request that makes one. */
  std::string arguments(const rule_list &list, const std::string &query, const std::string &function) const {
    forget_calls();
    done("POST", list.uri(), "action=permit&" + query);
    delete_rule(list.id, 10);
    return recorded_arguments("rpcclt_openapiAclRuleMatch" + function);
  }
};

TEST_F(AclArgumentsTest, MacAddressesAndMasksAreTextsOf18BytesAsTheyWereGiven) {
  const std::string any = "src_mac=any&dest_mac=any";
  EXPECT_EQ(arguments(mac_list(), any, "MacSrcMacAdd"), "");
  EXPECT_EQ(arguments(mac_list(), any, "MacDstMacAdd"), "");
  EXPECT_EQ(arguments(mac_list(), "dest_mac=any&src_mac=02:00:5e:00:00:0A&src_mask=ff:FF:ff:00:00:00",
                      "MacSrcMacAdd"),
            "18:02:00:5e:00:00:0A 18:ff:FF:ff:00:00:00");
  EXPECT_EQ(arguments(mac_list(), "src_mac=any&dest_mac=02:00:5e:00:00:0A&dest_mask=ff:FF:ff:00:00:00",
                      "MacDstMacAdd"),
            "18:02:00:5e:00:00:0A 18:ff:FF:ff:00:00:00");
  EXPECT_EQ(arguments(mac_list(), "src_mac=any&dest_mac=bpdu&dest_mask=x", "MacDstMacAdd"),
            "18:01:80:C2:00:00:00 18:FF:FF:FF:00:00:00");
}

TEST_F(AclArgumentsTest, VlanIsHandedOnAsASingleOne) {
  EXPECT_EQ(arguments(mac_list(), "src_mac=any&dest_mac=any&vlan=5&endvlan=9", "MacVlanAdd"), "0 5 0");
}

TEST_F(AclArgumentsTest, TosAndItsMaskAreTextsWithTheirTerminators) {
  for (const rule_list &list : {ipv4_list(), ipv6_list()}) {
    std::string any = std::string(list.conditions).substr(strlen("action=permit&"));
    EXPECT_EQ(arguments(list, any + "&tos=A0", "TosAdd"), "3:A0 3:ff");
    EXPECT_EQ(arguments(list, any + "&tos=A0&tos_mask=0F", "TosAdd"), "3:A0 3:0F");
  }
}

TEST_F(AclArgumentsTest, TypesOfIcmpAreReadWithTheFlagOfTheFamilySet) {
  for (const rule_list &list : {ipv4_list(), ipv6_list()}) {
    add_rule(list.id);
    forget_calls();
    done("GET", list.list_uri(), "");
    EXPECT_EQ(recorded_arguments("rpcclt_openapiAclRuleMatchIcmpTypeCodeGet"), "1");
  }
}
