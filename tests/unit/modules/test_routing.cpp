/* The routing module: switching routing on and off, making and removing VLAN routing interfaces, and their
 * logical ids. */
#include "tests/unit/modules/routing_fixture.h"

#include <limits.h>
#include <string.h>

/* --- The switch as a router ----------------------------------------------------------------------------- */

TEST_F(RoutingTest, NeitherFamilyIsRoutedInFactoryState) {
  EXPECT_EQ(get("/routing").xml,
            "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data><infomation>"
            "<ipv4_admin_mode>disable</ipv4_admin_mode><ipv6_admin_mode>disable</ipv6_admin_mode>"
            "</infomation></rlt_data></result>\n");
  EXPECT_EQ(get("/routing").json,
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
            "\"infomation\": { \"ipv4_admin_mode\": \"disable\", \"ipv6_admin_mode\": \"disable\" } } } }\n");
  EXPECT_EQ(get("/routing"), expected_modes("disable", "disable"));
}

TEST_F(RoutingTest, EachFamilyIsSwitchedByItself) {
  for (const char *format : {"xml", "json"}) {
    expect_done("PUT", "/routing/ipv4/adminMode", "value=1",
                "Update routing admin mode for IPv4 successfully.", format);
    EXPECT_EQ(get("/routing"), expected_modes("enable", "disable"));
    expect_done("PUT", "/routing/ipv6/adminMode", "value=1",
                "Update routing admin mode for IPv6 successfully.", format);
    EXPECT_EQ(get("/routing"), expected_modes("enable", "enable"));
    expect_done("PUT", "/routing/ipv4/adminMode", "value=0",
                "Update routing admin mode for IPv4 successfully.", format);
    EXPECT_EQ(get("/routing"), expected_modes("disable", "enable"));
    expect_done("PUT", "/routing/ipv6/adminMode", "value=0",
                "Update routing admin mode for IPv6 successfully.", format);
  }
}

TEST_F(RoutingTest, ModeThatIsNeitherOnNorOffIsAnEmptyText) {
  for (uint32_t mode : {2u, 7u, 0xffffffffu}) {
    bent_output bent("rpcclt_openapiRtrAdminModeGet", mode);
    EXPECT_EQ(get("/routing"), expected_modes("", "")) << mode;
  }
}

struct mode_setting {
  const char *uri, *function, *of, *message;
};

static const mode_setting MODE_SETTINGS[] = {
    {"/routing/ipv4/adminMode", "rpcclt_openapiRtrAdminModeSet", "1 ",
     "Update routing admin mode for IPv4 successfully."},
    {"/routing/ipv6/adminMode", "rpcclt_openapiRtrAdminModeSet", "2 ",
     "Update routing admin mode for IPv6 successfully."},
    {"/routing/if/5/adminMode", "rpcclt_openapiRtrIntfRtrAdminModeSet", "5 ",
     "Update routing admin mode for this interface successfully."},
};

TEST_F(RoutingTest, MissingModeAnswers99) {
  for (const mode_setting &setting : MODE_SETTINGS) {
    for (const char *query : {"", "value", "value=", "Values=1", "val=1"}) {
      forget_calls();
      expect_refused("PUT", setting.uri, query, expected_platform_error(OPEN_E_PARAM));
      EXPECT_EQ(recorded_arguments(setting.function), "") << setting.uri << " " << query;
    }
  }
}

/* What is no mode is for the platform to refuse. */
TEST_F(RoutingTest, ModeIsReadAsANumberAndHandedOn) {
  const struct {
    const char *value, *handed_on;
  } rows[] = {{"1", "1"},
              {"0", "0"},
              {"01", "1"},
              {"1x", "1"},
              {"%201", "1"},
              {"x", "0"},
              {"2", "2"},
              {"-1", "4294967295"},
              {"enable", "0"},
              {"+1", "1"},
              {"99999999999", "2147483647"}};
  for (const mode_setting &setting : MODE_SETTINGS) {
    for (const auto &row : rows) {
      bool good = strlen(row.handed_on) == 1 && *row.handed_on < '2';
      EXPECT_EQ(request("PUT", setting.uri, std::string("value=") + row.value),
                good ? expected_answers(0, setting.message) : expected_platform_error(OPEN_E_PARAM))
          << setting.uri << " " << row.value;
      EXPECT_EQ(recorded_arguments(setting.function), std::string(setting.of) + row.handed_on) << row.value;
    }
  }
}

TEST_F(RoutingTest, ModeMayStandInTheBody) {
  FakeRequest request("PUT", "/routing/ipv4/adminMode", "", "value=1");
  EXPECT_EQ(routing_api_handler(handle, request.conn()), 1);
  EXPECT_EQ(get("/routing"), expected_modes("enable", "disable"));
}

/* --- Interfaces ----------------------------------------------------------------------------------------- */

TEST_F(RoutingTest, PortIsARoutingInterfaceWhileItsModeIsOn) {
  expect_done("PUT", "/routing/if/5/adminMode", "value=1",
              "Update routing admin mode for this interface successfully.");
  EXPECT_EQ(get("/routing/if"), expected_interfaces({{5}}));
  expect_done("PUT", "/routing/if/5/adminMode", "value=0",
              "Update routing admin mode for this interface successfully.", "json");
  EXPECT_EQ(get("/routing/if"), expected_no_interfaces());
}

TEST_F(RoutingTest, ModeOfAnInterfaceThatHasNoneAnswers99) {
  for (const char *ifNum : {"0", "55", "120", "226", "354", "1000", "99999999999"}) {
    expect_refused("PUT", std::string("/routing/if/") + ifNum + "/adminMode", "value=1",
                   expected_platform_error(OPEN_E_PARAM));
  }
}

TEST_F(RoutingTest, VlanRoutingInterfaceIsMadeAndRemoved) {
  EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
  for (const char *format : {"xml", "json"}) {
    expect_done("POST", "/routing/vlanRtrIf", "vlanId=10",
                "Create Vlan Routing Interface with VLAN 10 successfully.", format);
    EXPECT_EQ(recorded_arguments("rpcclt_openapiRtrVlanIntfCreate"), "10");
    EXPECT_EQ(get("/routing/vlanRtrIf"), expected_vlan_interfaces({{226}}));
    expect_done("DELETE", "/routing/vlanRtrIf", "vlanId=10",
                "Delete Vlan Routing Interface with VLAN 10 successfully.", format);
    EXPECT_EQ(recorded_arguments("rpcclt_openapiRtrVlanIntfDelete"), "10");
    EXPECT_EQ(get("/routing/vlanRtrIf"), expected_no_vlan_interfaces());
  }
}

TEST_F(RoutingTest, MissingVlanAnswers99) {
  for (const char *method : {"POST", "DELETE"}) {
    for (const char *query : {"", "vlanId", "vlanId=", "vlan=10", "value=10"})
      expect_refused(method, "/routing/vlanRtrIf", query, expected_platform_error(OPEN_E_PARAM));
  }
  EXPECT_EQ(recorded_arguments("rpcclt_openapiRtrVlanIntfCreate"), "");
  EXPECT_EQ(recorded_arguments("rpcclt_openapiRtrVlanIntfDelete"), "");
}

TEST_F(RoutingTest, VlanThatHasARoutingInterfaceAnswers98) {
  make_vlan_interface(10);
  expect_refused("POST", "/routing/vlanRtrIf", "vlanId=10", expected_platform_error(OPEN_E_EXISTS));
}

TEST_F(RoutingTest, VlanThatIsNoneAnswers99) {
  for (const char *method : {"POST", "DELETE"}) {
    for (const char *vlan : {"0", "10", "4095", "-1", "x", "99999999999"})
      expect_refused(method, "/routing/vlanRtrIf", std::string("vlanId=") + vlan,
                     expected_platform_error(OPEN_E_PARAM));
  }
  EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
  expect_refused("DELETE", "/routing/vlanRtrIf", "vlanId=10", expected_platform_error(OPEN_E_NOT_FOUND));
}

/* The message tells the number that was read, whatever was written. */
TEST_F(RoutingTest, VlanIsReadAsANumberAndTold) {
  EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
  expect_done("POST", "/routing/vlanRtrIf", "vlanId=0010x",
              "Create Vlan Routing Interface with VLAN 10 successfully.");
  expect_done("DELETE", "/routing/vlanRtrIf", "vlanId=%2010",
              "Delete Vlan Routing Interface with VLAN 10 successfully.");
  changes_not_carried_out idle;
  expect_done("POST", "/routing/vlanRtrIf", "vlanId=-1",
              "Create Vlan Routing Interface with VLAN -1 successfully.");
  EXPECT_EQ(recorded_arguments("rpcclt_openapiRtrVlanIntfCreate"), "4294967295");
}

TEST_F(RoutingTest, LowestFreeNumberIsTaken) {
  for (uint32_t vlan : {10, 20, 30}) make_vlan_interface(vlan);
  expect_done("DELETE", "/routing/vlanRtrIf", "vlanId=20",
              "Delete Vlan Routing Interface with VLAN 20 successfully.");
  EXPECT_EQ(get("/routing/vlanRtrIf"), expected_vlan_interfaces({{226}, {228}}));
  EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 40), OPEN_E_NONE);
  expect_done("POST", "/routing/vlanRtrIf", "vlanId=40",
              "Create Vlan Routing Interface with VLAN 40 successfully.");
  EXPECT_EQ(get("/routing/vlanRtrIf/2"), expected_vlan_interface(2, 227, "vlan40", 40));
}

/* --- Logical ids ---------------------------------------------------------------------------------------- */

static const char FIRST_OF_TYPE[] = "rpcclt_openapiIfFirstGet";
static const char TYPE_OF[] = "rpcclt_openapiRtrIntfTypeGet";

TEST_F(RoutingTest, LogicalIdsCountFromTheFirstInterface) {
  for (uint32_t vlan : {10, 20, 30}) make_vlan_interface(vlan);
  for (uint32_t id : {1u, 2u, 3u}) {
    EXPECT_EQ(get_logical_id_by_vlan_routing_interface_num(handle, 225 + id), static_cast<int32_t>(id));
    EXPECT_EQ(get_vlan_routing_interface_num_by_logical_id(handle, static_cast<int32_t>(id)),
              static_cast<int32_t>(225 + id));
  }
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(handle, 10), OPEN_E_NONE);
  EXPECT_EQ(get_logical_id_by_vlan_routing_interface_num(handle, 228), 2);
  EXPECT_EQ(get_vlan_routing_interface_num_by_logical_id(handle, 2), 228);
}

TEST_F(RoutingTest, InterfaceWhoseTypeIsNotToldHasNoLogicalId) {
  make_vlan_interface(10);
  for (uint32_t ifNum : {0u, 1u, 227u, 354u, 0x80000000u, 0xffffffffu})
    EXPECT_EQ(get_logical_id_by_vlan_routing_interface_num(handle, ifNum), -1) << ifNum;
  for (open_error_t rc : all_platform_errors()) {
    fault(TYPE_OF, rc);
    EXPECT_EQ(get_logical_id_by_vlan_routing_interface_num(handle, 226), -1) << rc;
  }
}

TEST_F(RoutingTest, InterfaceOfAnotherTypeHasNoLogicalId) {
  make_vlan_interface(10);
  route_port(5);
  EXPECT_EQ(get_logical_id_by_vlan_routing_interface_num(handle, 5), -2);
  EXPECT_EQ(get_logical_id_by_vlan_routing_interface_num(handle, 120), -2);
  for (uint32_t type : {0u, 1u, 2u, 4u, 0xffffffffu}) {
    bent_output bent(TYPE_OF, type);
    EXPECT_EQ(get_logical_id_by_vlan_routing_interface_num(handle, 226), -2) << type;
  }
}

TEST_F(RoutingTest, FirstInterfaceThatIsNotToldIs226) {
  EXPECT_EQ(get_vlan_routing_interface_num_by_logical_id(handle, 1), 226);
  EXPECT_EQ(get_vlan_routing_interface_num_by_logical_id(handle, 128), 353);
  for (uint32_t vlan : {10, 20}) make_vlan_interface(vlan);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(handle, 10), OPEN_E_NONE);
  for (open_error_t rc : all_platform_errors()) {
    fault(FIRST_OF_TYPE, rc, 2);
    EXPECT_EQ(get_logical_id_by_vlan_routing_interface_num(handle, 227), 2) << rc;
    EXPECT_EQ(get_vlan_routing_interface_num_by_logical_id(handle, 2), 227) << rc;
  }
}

TEST_F(RoutingTest, LogicalIdsHaveNoRange) {
  EXPECT_EQ(get_vlan_routing_interface_num_by_logical_id(handle, 0), 225);
  EXPECT_EQ(get_vlan_routing_interface_num_by_logical_id(handle, -225), 0);
  EXPECT_EQ(get_vlan_routing_interface_num_by_logical_id(handle, -226), -1);
  EXPECT_EQ(get_vlan_routing_interface_num_by_logical_id(handle, INT_MAX - 225), INT_MAX);
  EXPECT_EQ(get_vlan_routing_interface_num_by_logical_id(handle, INT_MAX), INT_MIN + 224);
  EXPECT_EQ(get_vlan_routing_interface_num_by_logical_id(handle, INT_MIN), INT_MIN + 225);
}

TEST_F(RoutingTest, NumbersBeyondAnyInterfaceWrapAround) {
  make_vlan_interface(10);
  {
    bent_output first(FIRST_OF_TYPE, 0xffffffffu);
    EXPECT_EQ(get_logical_id_by_vlan_routing_interface_num(handle, 226), 228);
    EXPECT_EQ(get_vlan_routing_interface_num_by_logical_id(handle, 1), -1);
  }
  bent_output first(FIRST_OF_TYPE, 300);
  EXPECT_EQ(get_logical_id_by_vlan_routing_interface_num(handle, 226), -73);
}
