/* The VXLAN module, groups: the remote VTEPs of unicast mode, the default group and the tenants' own groups
 * of multicast mode. */
#include "tests/unit/modules/vxlan_fixture.h"

class VxlanGroupTest : public VxlanTest {
protected:
  Answers unicast() const { return get("/vxlan/1/unicastGroup"); }
  Answers multicast() const { return get("/vxlan/1/multicastGroup"); }
  static Answers expected_unicast(const std::vector<std::string> &addresses) {
    return expected_data({unicast_groups(addresses)});
  }
  static Answers expected_multicast(const std::string &default_group,
                                    const std::vector<listed_group> &groups) {
    return expected_data({multicast_groups(default_group, groups)});
  }
  void add_vtep(const std::string &address) const {
    expect_done("PUT", "/vxlan/1/unicastGroup", "value=" + address,
                "Update VxLAN unicast group successfully.");
  }
  void remove_vtep(const std::string &address) const {
    expect_done("DELETE", "/vxlan/1/unicastGroup", "value=" + address,
                "Delete VxLAN unicast group " + address + " successfully.");
  }
  void set_default(const std::string &address) const {
    expect_done("PUT", "/vxlan/1/multicastGroup", "value=" + address,
                "Update VxLAN default multicast group successfully.");
  }
  void set_group(unsigned tenantId, const std::string &address) const {
    expect_done("PUT", "/vxlan/1/tenant/" + std::to_string(tenantId) + "/multicastGroup", "value=" + address,
                "Update VxLAN multicast group successfully.");
  }
};

/* What is no IPv4 address at all, each as the value of a variable. */
static const char *const NO_ADDRESSES[] = {"x",
                                           "10.0.0",
                                           "10.0.0.256",
                                           "10.0.0.1/24",
                                           "+10.0.0.1",
                                           "2001:db8::1",
                                           "::ffff:10.0.0.1",
                                           "239.0.0.1.1",
                                           "111111111111111111111111111111111111111111111111",
                                           "%F0"};

/* --- Unicast -------------------------------------------------------------------------------------------- */

TEST_F(VxlanGroupTest, RemoteVtepsAreAddedListedAndRemoved) {
  begin_empty(UNICAST);
  once("POST", "/vxlan/1/tenant/5/vlan/10");
  add_vtep("10.0.0.2");
  add_vtep("192.168.255.254");
  add_vtep("10.0.0.1");
  EXPECT_EQ(unicast(), expected_unicast({"10.0.0.1", "10.0.0.2", "192.168.255.254"}));
  remove_vtep("10.0.0.1");
  EXPECT_EQ(unicast(), expected_unicast({"10.0.0.2", "192.168.255.254"}));
  remove_vtep("10.0.0.2");
  remove_vtep("192.168.255.254");
  EXPECT_EQ(unicast(), expected_unicast({}));
}

TEST_F(VxlanGroupTest, UnicastAnswersAreTheseDocuments) {
  begin(UNICAST);
  Answers answers = unicast();
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<unicastGroups><unicastGroup><address>10.0.0.1</address></unicastGroup>"
                         "<unicastGroup><address>10.0.0.2</address></unicastGroup></unicastGroups>"
                         "</rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"unicastGroups\": { \"1\": { \"address\": \"10.0.0.1\" }, \"2\": "
                          "{ \"address\": \"10.0.0.2\" } } } } }\n");
  set_mode(OFF);
  answers = unicast();
  EXPECT_EQ(answers.xml,
            "<result><rlt_code>2</rlt_code><rlt_mesg>VxLAN unicast mode is not enable.</rlt_mesg>"
            "<rlt_data><unicastGroups></unicastGroups></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 2, \"rlt_mesg\": \"VxLAN unicast mode is not "
                          "enable.\", \"rlt_data\": { \"unicastGroups\": { } } } }\n");
}

TEST_F(VxlanGroupTest, UnicastGroupWithoutTenantsAnswers99) {
  begin_empty(UNICAST);
  EXPECT_EQ(unicast(), expected_platform_error(OPEN_E_PARAM));
  /* The list of remote VTEPs is there all the same. */
  must(rpcclt_openapiL2oL3RemoteVtepAddAllTenant(handle, ipv4(10, 0, 0, 1)));
  EXPECT_EQ(unicast(), expected_platform_error(OPEN_E_PARAM));
  once("POST", "/vxlan/1/tenant/5/vlan/10");
  EXPECT_EQ(unicast(), expected_unicast({"10.0.0.1"}));
}

TEST_F(VxlanGroupTest, TenantsWithoutRemoteVtepsHaveAnEmptyUnicastGroup) {
  begin_empty(UNICAST);
  once("POST", "/vxlan/1/tenant/5/vlan/10");
  EXPECT_EQ(unicast(), expected_unicast({}));
}

TEST_F(VxlanGroupTest, FirstTenantStandsForAll) {
  begin(UNICAST);
  must(rpcclt_openapiL2oL3TenantRemoveAllVtep(handle, 6));
  EXPECT_EQ(unicast(), expected_unicast({"10.0.0.1", "10.0.0.2"}));
  must(rpcclt_openapiL2oL3TenantRemoveAllVtep(handle, 5));
  must(rpcclt_openapiL2oL3TenantAddAllVtep(handle, 6));
  EXPECT_EQ(unicast(), expected_unicast({}));
}

TEST_F(VxlanGroupTest, RemoteVtepsReachTenantsMadeLater) {
  begin(UNICAST);
  once("DELETE", "/vxlan/1/tenant/5/vlan/10");
  once("DELETE", "/vxlan/1/tenant/6/vlan/20");
  once("POST", "/vxlan/1/tenant/9/vlan/40");
  EXPECT_EQ(unicast(), expected_unicast({"10.0.0.1", "10.0.0.2"}));
}

TEST_F(VxlanGroupTest, TenantMustBeThereBeforeTheFirstRemoteVtep) {
  for (tunnel_mode mode : ALL_MODES) { /* it is looked for before the mode and the address */
    begin_empty(mode);
    for (const char *query : {"value=10.0.0.1", "value=x", "value=0.0.0.0"})
      EXPECT_EQ(serve("PUT", "/vxlan/1/unicastGroup", query), refused("Must set tenant firstly.")) << query;
  }
}

TEST_F(VxlanGroupTest, RemoteVtepMustBeGivenBeforeTenantsAreLookedFor) {
  for (tunnel_mode mode : ALL_MODES) {
    begin_empty(mode);
    for (const std::string &query : {std::string(), std::string("value="), "value=" + std::string(256, '1')})
      EXPECT_EQ(serve("PUT", "/vxlan/1/unicastGroup", query), expected_platform_error(OPEN_E_PARAM));
    EXPECT_EQ(calls_made(), std::vector<std::string>());
  }
}

TEST_F(VxlanGroupTest, RemoteVtepIsAnIpv4Address) {
  begin(UNICAST);
  for (const char *address : NO_ADDRESSES) {
    std::string query = std::string("value=") + address;
    EXPECT_EQ(serve("PUT", "/vxlan/1/unicastGroup", query), expected_platform_error(OPEN_E_PARAM)) << query;
    EXPECT_EQ(serve("DELETE", "/vxlan/1/unicastGroup", query), expected_platform_error(OPEN_E_PARAM))
        << query;
  }
  EXPECT_EQ(unicast(), expected_unicast({"10.0.0.1", "10.0.0.2"}));
}

/* The address is not looked at in another mode. */
TEST_F(VxlanGroupTest, UnicastModeIsAskedBeforeTheAddress) {
  for (tunnel_mode mode : {OFF, MULTICAST}) {
    begin(mode);
    EXPECT_EQ(serve("PUT", "/vxlan/1/unicastGroup", "value=x"), refused(NOT_UNICAST));
  }
}

TEST_F(VxlanGroupTest, AddressThatIsNoHostsIsThePlatformsToRefuse) {
  begin(UNICAST);
  for (const char *address : {"0.0.0.0", "255.255.255.255", "239.0.0.1", "127.0.0.1"}) {
    EXPECT_EQ(serve("PUT", "/vxlan/1/unicastGroup", std::string("value=") + address),
              expected_platform_error(OPEN_E_PARAM))
        << address;
  }
  EXPECT_EQ(unicast(), expected_unicast({"10.0.0.1", "10.0.0.2"}));
}

TEST_F(VxlanGroupTest, RemoteVtepIsListedOnceAndRemovedOnce) {
  begin(UNICAST);
  EXPECT_EQ(serve("PUT", "/vxlan/1/unicastGroup", "value=10.0.0.1"), expected_platform_error(OPEN_E_EXISTS));
  remove_vtep("10.0.0.1");
  EXPECT_EQ(serve("DELETE", "/vxlan/1/unicastGroup", "value=10.0.0.1"),
            expected_platform_error(OPEN_E_NOT_FOUND));
  EXPECT_EQ(unicast(), expected_unicast({"10.0.0.2"}));
}

TEST_F(VxlanGroupTest, NoMoreRemoteVtepsAreListedThanThereMayBe) {
  lower_limit("remote-vteps", 2);
  begin(UNICAST);
  EXPECT_EQ(serve("PUT", "/vxlan/1/unicastGroup", "value=10.0.0.3"), expected_platform_error(OPEN_E_FULL));
  remove_vtep("10.0.0.1");
  add_vtep("10.0.0.3");
  EXPECT_EQ(unicast(), expected_unicast({"10.0.0.2", "10.0.0.3"}));
  lower_limit("remote-vteps", 128);
}

TEST_F(VxlanGroupTest, RemoteVtepToRemoveMustBeGiven) {
  begin(UNICAST);
  EXPECT_EQ(serve("DELETE", "/vxlan/1/unicastGroup"), expected_platform_error(OPEN_E_PARAM));
  EXPECT_EQ(serve("DELETE", "/vxlan/1/unicastGroup", "value="), expected_platform_error(OPEN_E_PARAM));
  EXPECT_EQ(unicast(), expected_unicast({"10.0.0.1", "10.0.0.2"}));
}

/* --- Multicast: reading --------------------------------------------------------------------------------- */

TEST_F(VxlanGroupTest, MulticastAnswersAreTheseDocuments) {
  begin(MULTICAST);
  Answers answers = multicast();
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<multicastGroups><default_multicastGroup>239.0.0.1</default_multicastGroup>"
                         "<multicastGroup><tenantId>5</tenantId><address>239.1.1.1</address></multicastGroup>"
                         "</multicastGroups></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"multicastGroups\": { \"default_multicastGroup\": \"239.0.0.1\", "
                          "\"1\": { \"tenantId\": 5, \"address\": \"239.1.1.1\" } } } } }\n");
  set_mode(OFF);
  answers = multicast();
  EXPECT_EQ(answers.xml,
            "<result><rlt_code>2</rlt_code><rlt_mesg>VxLAN multicast mode is not enable.</rlt_mesg><rlt_data>"
            "<multicastGroups><default_multicastGroup>239.0.0.1</default_multicastGroup></multicastGroups>"
            "</rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 2, \"rlt_mesg\": \"VxLAN multicast mode is not "
                          "enable.\", \"rlt_data\": { \"multicastGroups\": { \"default_multicastGroup\": "
                          "\"239.0.0.1\" } } } }\n");
}

TEST_F(VxlanGroupTest, DefaultGroupThatIsNotSetIsNone) {
  for (tunnel_mode mode : {OFF, UNICAST}) {
    begin_empty(mode);
    EXPECT_EQ(multicast(), refused(NOT_MULTICAST, multicast_groups("none", {})));
  }
  begin_empty(MULTICAST);
  once("POST", "/vxlan/1/tenant/5/vlan/10");
  EXPECT_EQ(multicast(), expected_multicast("none", {}));
}

TEST_F(VxlanGroupTest, MulticastGroupWithoutTenantsAnswers99) {
  begin_empty(MULTICAST);
  EXPECT_EQ(multicast(), expected_platform_error(OPEN_E_PARAM));
  set_default("239.0.0.1");
  EXPECT_EQ(multicast(), expected_platform_error(OPEN_E_PARAM));
}

TEST_F(VxlanGroupTest, OnlyTenantsWithAGroupOfTheirOwnAreListed) {
  begin(MULTICAST);
  once("POST", "/vxlan/1/tenant/3/vlan/30");
  once("POST", "/vxlan/1/tenant/16777214/vlan/40");
  set_group(16777214, "239.255.255.255");
  EXPECT_EQ(multicast(), expected_multicast("239.0.0.1", {{5, "239.1.1.1"}, {16777214, "239.255.255.255"}}));
  expect_done("DELETE", "/vxlan/1/tenant/5/multicastGroup", "", "Delete VxLAN multicast group successfully.");
  EXPECT_EQ(multicast(), expected_multicast("239.0.0.1", {{16777214, "239.255.255.255"}}));
}

/* --- Multicast: the default group -------------------------------------------------------------------------
 */

TEST_F(VxlanGroupTest, DefaultGroupIsSetReplacedAndDeleted) {
  begin_empty(MULTICAST);
  once("POST", "/vxlan/1/tenant/5/vlan/10");
  set_default("239.0.0.1");
  EXPECT_EQ(multicast(), expected_multicast("239.0.0.1", {}));
  set_default("239.0.0.1");
  set_default("224.0.1.0");
  EXPECT_EQ(multicast(), expected_multicast("224.0.1.0", {}));
  for (int i = 0; i < 2; i++) {
    expect_done("DELETE", "/vxlan/1/multicastGroup", "",
                "Delete VxLAN default multicast group successfully.");
    EXPECT_EQ(multicast(), expected_multicast("none", {}));
  }
}

TEST_F(VxlanGroupTest, DefaultGroupIsNoTenantsOwn) {
  begin(MULTICAST);
  EXPECT_EQ(serve("PUT", "/vxlan/1/multicastGroup", "value=239.1.1.1"),
            refused("Conflict with VNI specific multicast group!!"));
  EXPECT_EQ(multicast(), expected_multicast("239.0.0.1", {{5, "239.1.1.1"}}));
  once("DELETE", "/vxlan/1/tenant/5/multicastGroup");
  set_default("239.1.1.1");
}

/* --- Multicast: groups of tenants -------------------------------------------------------------------------
 */

TEST_F(VxlanGroupTest, GroupOfATenantIsSetReplacedAndDeleted) {
  begin(MULTICAST);
  set_group(6, "239.1.1.1"); /* tenants may share one */
  set_group(6, "239.1.1.1");
  set_group(5, "239.1.1.5");
  EXPECT_EQ(multicast(), expected_multicast("239.0.0.1", {{5, "239.1.1.5"}, {6, "239.1.1.1"}}));
  for (int i = 0; i < 2; i++) {
    expect_done("DELETE", "/vxlan/1/tenant/0005/multicastGroup", "",
                "Delete VxLAN multicast group successfully.");
    EXPECT_EQ(multicast(), expected_multicast("239.0.0.1", {{6, "239.1.1.1"}}));
  }
}

TEST_F(VxlanGroupTest, GroupOfATenantIsNotTheDefaultOne) {
  begin(MULTICAST);
  Answers conflict = refused(" Conflict with default multicast group!!"); /* with the blank */
  EXPECT_EQ(serve("PUT", "/vxlan/1/tenant/5/multicastGroup", "value=239.0.0.1"), conflict);
  EXPECT_EQ(serve("PUT", "/vxlan/1/tenant/6/multicastGroup", "value=239.0.0.1"), conflict);
  /* Before it is known whether the tenant is there. */
  EXPECT_EQ(serve("PUT", "/vxlan/1/tenant/7/multicastGroup", "value=239.0.0.1"), conflict);
  EXPECT_EQ(multicast(), expected_multicast("239.0.0.1", {{5, "239.1.1.1"}}));
}

TEST_F(VxlanGroupTest, TenantThatIsNotThereHasNoGroup) {
  begin(MULTICAST);
  for (const char *id : {"7", "1", "16777214"}) {
    std::string uri = std::string("/vxlan/1/tenant/") + id + "/multicastGroup";
    Answers expected = refused(std::string("VxLAN tenant ") + id + " does not exist.");
    EXPECT_EQ(serve("PUT", uri, "value=239.1.1.2"), expected);
    EXPECT_EQ(serve("DELETE", uri), expected);
  }
}

TEST_F(VxlanGroupTest, TenantIdOutOfRangeIsRefusedBeforeTheMode) {
  for (tunnel_mode mode : ALL_MODES) {
    begin(mode);
    for (const char *id : {"0", "16777215", "2147483648", "4294967301"}) {
      std::string uri = std::string("/vxlan/1/tenant/") + id + "/multicastGroup";
      EXPECT_EQ(serve("PUT", uri, "value=239.1.1.2"), refused("Invalid tenant ID.")) << id;
      EXPECT_EQ(serve("DELETE", uri), refused("Invalid tenant ID.")) << id;
    }
    EXPECT_EQ(calls_made(), std::vector<std::string>());
  }
}

/* --- Multicast: values ---------------------------------------------------------------------------------- */

static const char *const MULTICAST_URIS[] = {"/vxlan/1/multicastGroup", "/vxlan/1/tenant/5/multicastGroup"};

TEST_F(VxlanGroupTest, MulticastGroupMustBeGiven) {
  begin(MULTICAST);
  for (const char *uri : MULTICAST_URIS) {
    for (const std::string &query : {std::string(), std::string("value="), "value=" + std::string(256, '1')})
      EXPECT_EQ(serve("PUT", uri, query), expected_platform_error(OPEN_E_PARAM)) << uri << " " << query;
  }
  EXPECT_EQ(calls_made(), std::vector<std::string>());
}

TEST_F(VxlanGroupTest, MulticastGroupIsAnIpv4Address) {
  begin(MULTICAST);
  for (const char *uri : MULTICAST_URIS) {
    for (const char *address : NO_ADDRESSES) {
      EXPECT_EQ(serve("PUT", uri, std::string("value=") + address), expected_platform_error(OPEN_E_PARAM))
          << uri << " " << address;
    }
  }
  EXPECT_EQ(multicast(), expected_multicast("239.0.0.1", {{5, "239.1.1.1"}}));
}

/* A group is deleted by DELETE only, not by setting none. */
TEST_F(VxlanGroupTest, NoAddressIsNoGroup) {
  begin_empty(MULTICAST);
  once("POST", "/vxlan/1/tenant/5/vlan/10");
  for (const char *default_group : {"none", "239.0.0.1"}) {
    for (const char *uri : MULTICAST_URIS)
      EXPECT_EQ(serve("PUT", uri, "value=0.0.0.0"), expected_platform_error(OPEN_E_PARAM)) << uri;
    EXPECT_EQ(multicast(), expected_multicast(default_group, {}));
    set_default("239.0.0.1");
  }
}

TEST_F(VxlanGroupTest, AddressThatIsNoGroupIsThePlatformsToRefuse) {
  begin(MULTICAST);
  for (const char *uri : MULTICAST_URIS) {
    for (const char *address : {"10.0.0.1", "224.0.0.1", "224.0.0.255", "240.0.0.1", "255.255.255.255"}) {
      EXPECT_EQ(serve("PUT", uri, std::string("value=") + address), expected_platform_error(OPEN_E_PARAM))
          << uri << " " << address;
    }
  }
  EXPECT_EQ(multicast(), expected_multicast("239.0.0.1", {{5, "239.1.1.1"}}));
}
