/* The VXLAN module, tunnel modes: reading and changing the mode, and every operation in each of the modes. */
#include "tests/unit/modules/vxlan_fixture.h"

/* --- Reading -------------------------------------------------------------------------------------------- */

static constexpr char UNICAST_GET[] = "rpcclt_openapiL2oL3SwitchTunnelModeGet";
static constexpr char MULTICAST_GET[] = "rpcclt_openapiL2oL3SwitchTunnelMultiModeGet";

TEST_F(VxlanTest, ModeIsToldByTwoFlags) {
  for (tunnel_mode mode : ALL_MODES) {
    set_mode(mode);
    forget_calls();
    uint32_t number = 9;
    EXPECT_EQ(get_vxlan_mode(handle, &number), 0u);
    EXPECT_EQ(number, static_cast<uint32_t>(mode));
    EXPECT_EQ(recorded_calls(),
              (std::vector<std::string>{std::string(UNICAST_GET) + " 2", std::string(MULTICAST_GET) + " 2"}));
    EXPECT_EQ(get("/vxlan/1/mode"), expected_mode(mode));
  }
}

TEST_F(VxlanTest, ModeThatThePlatformDoesNotTellIsAFailure) {
  for (open_error_t rc : all_platform_errors()) {
    for (const char *function : {UNICAST_GET, MULTICAST_GET}) {
      uint32_t mode = 9;
      fault(function, rc);
      EXPECT_EQ(get_vxlan_mode(handle, &mode), 1u) << function << " " << rc;
    }
  }
}

TEST_F(VxlanTest, UnicastCountsBeforeMulticast) {
  bent_output unicast(UNICAST_GET, 1);
  for (uint32_t flag : {0u, 1u, 2u, UINT32_MAX}) {
    bent_output multicast(MULTICAST_GET, flag);
    uint32_t mode = 9;
    EXPECT_EQ(get_vxlan_mode(handle, &mode), 0u);
    EXPECT_EQ(mode, 1u) << flag;
  }
}

TEST_F(VxlanTest, MulticastCountsUnlessUnicastIsOn) {
  bent_output multicast(MULTICAST_GET, 1);
  for (uint32_t flag : {0u, 2u, UINT32_MAX}) {
    bent_output unicast(UNICAST_GET, flag);
    uint32_t mode = 9;
    EXPECT_EQ(get_vxlan_mode(handle, &mode), 0u);
    EXPECT_EQ(mode, 2u) << flag;
  }
}

TEST_F(VxlanTest, ModeIsLeftAloneByFlagsThatAreNeither0Nor1) {
  const struct {
    uint32_t unicast, multicast;
  } rows[] = {{0, 2}, {2, 0}, {2, 2}, {0, UINT32_MAX}, {UINT32_MAX, 0}};
  for (const auto &row : rows) {
    bent_output unicast(UNICAST_GET, row.unicast), multicast(MULTICAST_GET, row.multicast);
    uint32_t mode = 9;
    EXPECT_EQ(get_vxlan_mode(handle, &mode), 0u);
    EXPECT_EQ(mode, 9u) << row.unicast << " " << row.multicast;
    EXPECT_EQ(get("/vxlan/1/mode"), expected_mode(OFF));
    EXPECT_EQ(get("/vxlan/1/udpPort"), refused(NOT_ENABLED));
    EXPECT_EQ(serve("DELETE", "/vxlan/1/unicastGroup", "value=10.0.0.1"), refused(NOT_UNICAST));
  }
}

/* --- Changing ------------------------------------------------------------------------------------------- */

static const std::vector<std::string> NO_CALLS,
    CLEAR_UNICAST = {"SwitchTunnelModeSet 2 0"},
    CLEAR_BOTH = {"SwitchTunnelModeSet 2 0", "SwitchTunnelMultiModeSet 2 0"},
    SET_UNICAST = {"SwitchTunnelModeSet 2 1"}, SET_MULTICAST = {"SwitchTunnelMultiModeSet 2 1"};

TEST_F(VxlanTest, ModeIsChangedOnlyThroughOff) {
  const Answers done = expected_answers(0, "Update VxLAN mode successfully.");
  const Answers missing = expected_platform_error(OPEN_E_PARAM);
  const struct {
    tunnel_mode before;
    const char *query;
    Answers answers;
    tunnel_mode after;
    std::vector<std::string> calls;
  } rows[] = {
      {OFF, "", missing, OFF, NO_CALLS},
      {OFF, "value=", missing, OFF, NO_CALLS},
      /* Multicast is cleared only because unicast, which is off, cannot be. */
      {OFF, "value=0", done, OFF, CLEAR_BOTH},
      {OFF, "value=1", done, UNICAST, SET_UNICAST},
      {OFF, "value=2", done, MULTICAST, SET_MULTICAST},
      {OFF, "value=3", refused("Invalid mode."), OFF, NO_CALLS},
      {OFF, "value=-1", refused("Invalid mode."), OFF, NO_CALLS},
      {OFF, "value=10", refused("Invalid mode."), OFF, NO_CALLS},
      {OFF, "value=2147483647", refused("Invalid mode."), OFF, NO_CALLS},
      {OFF, "value=unicast", done, OFF, CLEAR_BOTH},
      {OFF, "value=1x", done, UNICAST, SET_UNICAST},
      {OFF, "value=+02", done, MULTICAST, SET_MULTICAST}, /* the plus sign is a blank */
      {UNICAST, "", missing, UNICAST, NO_CALLS},
      {UNICAST, "value=", missing, UNICAST, NO_CALLS},
      {UNICAST, "value=0", done, OFF, CLEAR_UNICAST},
      {UNICAST, "value=1", refused(MODE_RUNNING), UNICAST, NO_CALLS},
      {UNICAST, "value=2", refused(MODE_RUNNING), UNICAST, NO_CALLS},
      {UNICAST, "value=3", refused(MODE_RUNNING), UNICAST, NO_CALLS},
      {UNICAST, "value=-1", refused(MODE_RUNNING), UNICAST, NO_CALLS},
      {UNICAST, "value=unicast", done, OFF, CLEAR_UNICAST},
      {MULTICAST, "", missing, MULTICAST, NO_CALLS},
      {MULTICAST, "value=", missing, MULTICAST, NO_CALLS},
      {MULTICAST, "value=0", done, OFF, CLEAR_BOTH},
      {MULTICAST, "value=1", refused(MODE_RUNNING), MULTICAST, NO_CALLS},
      {MULTICAST, "value=2", refused(MODE_RUNNING), MULTICAST, NO_CALLS},
      {MULTICAST, "value=3", refused(MODE_RUNNING), MULTICAST, NO_CALLS},
      {MULTICAST, "value=-1", refused(MODE_RUNNING), MULTICAST, NO_CALLS},
      {MULTICAST, "value=multicast", done, OFF, CLEAR_BOTH},
  };
  for (const auto &row : rows) {
    for (const char *format : {"xml", "json"}) {
      SCOPED_TRACE(std::string(MODE_TEXTS[row.before]) + " " + row.query);
      set_mode(row.before);
      forget_calls();
      EXPECT_EQ(once("PUT", "/vxlan/1/mode", row.query, format),
                *format == 'x' ? row.answers.xml : row.answers.json);
      EXPECT_EQ(calls_made(), row.calls);
      EXPECT_EQ(get("/vxlan/1/mode"), expected_mode(row.after));
    }
  }
}

/* --- Every operation in each of the modes --------------------------------------------------------------- */

struct in_mode {
  Answers answers;
  std::vector<std::string> calls = {};
};

struct in_all_modes {
  vxlan_operation operation;
  in_mode off, unicast, multicast;
};

static Answers done(const std::string &message) {
  return expected_answers(0, message);
}

class VxlanModeTest : public VxlanTest {
protected:
  /* One row of the table, each mode and format from the same state. */
  void expect_row(const in_all_modes &row) const {
    const in_mode *const modes[] = {&row.off, &row.unicast, &row.multicast};
    for (tunnel_mode mode : ALL_MODES) {
      for (const char *format : {"xml", "json"}) {
        SCOPED_TRACE(std::string(row.operation.method) + " " + row.operation.uri + ": " + MODE_TEXTS[mode]);
        begin(mode);
        const Answers &answers = modes[mode]->answers;
        EXPECT_EQ(once(row.operation.method, std::string("/vxlan/1") + row.operation.uri, row.operation.query,
                       format),
                  *format == 'x' ? answers.xml : answers.json);
        EXPECT_EQ(calls_made(), modes[mode]->calls);
      }
    }
  }
  /* The operation of `uri`, found in the list of all. */
  static const vxlan_operation &operation(const std::string &method, const std::string &uri) {
    for (const vxlan_operation &listed : VXLAN_OPERATIONS) {
      if (method == listed.method && uri == listed.uri) return listed;
    }
    ADD_FAILURE() << method << " " << uri;
    return VXLAN_OPERATIONS[0];
  }

  const in_mode not_enabled = {refused(NOT_ENABLED)};
  const in_mode not_unicast = {refused(NOT_UNICAST)};
  const in_mode not_multicast = {refused(NOT_MULTICAST)};
};

TEST_F(VxlanModeTest, SettingsAreReadByTheCallsOfTheMode) {
  const in_all_modes rows[] = {
      {operation("GET", "/mode"), {expected_mode(OFF)}, {expected_mode(UNICAST)}, {expected_mode(MULTICAST)}},
      {operation("GET", "/udpPort"),
       not_enabled,
       {expected_udp_port(4789), {"SwitchVxlanUdpDestPortGet"}},
       {expected_udp_port(4789), {"SwitchVxlanUdpDstPortGetZYL 1"}}},
      {operation("GET", "/sourceIntf"),
       not_enabled,
       {expected_source("loopback", 0), {"VxlanSourcePortGet"}},
       {expected_source("loopback", 0), {"VxlanSourcePortGetZYL 1"}}},
  };
  for (const in_all_modes &row : rows) expect_row(row);
}

TEST_F(VxlanModeTest, TenantsAreReadByTheCallsOfTheMode) {
  const Answers tenants = expected_tenants({{5, 10}, {6, 20}});
  const in_all_modes rows[] = {
      {operation("GET", "/tenant/6"),
       not_enabled,
       {expected_tenant(6, 20), {"TenantGet 6"}},
       {expected_tenant(6, 20), {"TenantFirstGet 1", "TenantNextGetZYL 1 5"}}},
      {operation("GET", "/tenant"),
       not_enabled,
       {tenants, {"TenantFirstGet 1", "TenantNextGet 5", "TenantNextGet 6"}},
       {tenants, {"TenantFirstGet 1", "TenantNextGetZYL 1 5", "TenantNextGetZYL 1 6"}}},
  };
  for (const in_all_modes &row : rows) expect_row(row);
}

TEST_F(VxlanModeTest, GroupsAreReadInTheirOwnModeOnly) {
  begin(UNICAST);
  open_l2oL3TunnelInfo_t first = {}, second = {};
  must(rpcclt_openapiL2oL3TunnelGetNextTenant(handle, 5, 0, &first));
  must(rpcclt_openapiL2oL3TunnelGetNextTenant(handle, 5, first.tunnelId, &second));
  const std::string walk = "TunnelGetNextTenant 5 ";
  const in_mode no_unicast_groups = {refused(NOT_UNICAST, unicast_groups({}))};
  const in_mode default_only = {refused(NOT_MULTICAST, multicast_groups("239.0.0.1", {})),
                                {"DefaultIPMCGetZYL 1"}};
  const in_all_modes rows[] = {
      {operation("GET", "/unicastGroup"),
       no_unicast_groups,
       {expected_data({unicast_groups({"10.0.0.1", "10.0.0.2"})}),
        {"TenantNextGet 0", walk + "0", walk + std::to_string(first.tunnelId),
         walk + std::to_string(second.tunnelId)}},
       no_unicast_groups},
      {operation("GET", "/multicastGroup"),
       default_only,
       default_only,
       {expected_data({multicast_groups("239.0.0.1", {{5, "239.1.1.1"}})}),
        {"DefaultIPMCGetZYL 1", "TenantFirstGet 1", "IPMCGet 1 5", "TenantNextGetZYL 1 5", "IPMCGet 1 6",
         "TenantNextGetZYL 1 6"}}},
  };
  for (const in_all_modes &row : rows) expect_row(row);
}

TEST_F(VxlanModeTest, SettingsAreMadeByTheCallsOfTheMode) {
  const Answers source = done("Update VxLAN source port successfully.");
  const Answers mode = done("Update VxLAN mode successfully.");
  const in_all_modes rows[] = {
      {operation("PUT", "/mode"), {mode, CLEAR_BOTH}, {mode, CLEAR_UNICAST}, {mode, CLEAR_BOTH}},
      {operation("PUT", "/udpPort"),
       not_enabled,
       {done("Update VxLAN udp port successfully."), {"SwitchVxlanUdpDestPortSet 5000"}},
       {done("Update VxLAN udp port successfully."), {"SwitchVxlanUdpDstPortSetZYL 1 5000"}}},
      {operation("PUT", "/sourceIntf/if"),
       not_enabled,
       {source, {"VxlanSourcePortSet 3"}},
       {source, {"VxlanSourcePortSetZYL 1 3"}}},
      {operation("PUT", "/sourceIntf/loopback"),
       not_enabled,
       {source, {"VxlanSourcePortSet 121"}},
       {source, {"VxlanSourcePortSetZYL 1 121"}}},
      {operation("PUT", "/sourceIntf/vlan"),
       not_enabled,
       {source, {"VxlanSourcePortSet 226"}},
       {source, {"VxlanSourcePortSetZYL 1 226"}}},
      {operation("DELETE", "/sourceIntf"),
       not_enabled,
       {done("Delete VxLAN source port successfully."), {"VxlanSourcePortSet 0"}},
       {done("Delete VxLAN source port successfully."), {"VxlanSourcePortSetZYL 1 0"}}},
  };
  for (const in_all_modes &row : rows) expect_row(row);
}

TEST_F(VxlanModeTest, TenantsAreMadeAndDeletedByTheCallsOfTheMode) {
  const Answers created = done("Create VxLAN tenant 7 successfully.");
  const Answers deleted = done("Delete VxLAN tenant 5 successfully.");
  const in_all_modes rows[] = {
      {operation("POST", "/tenant/7/vlan/30"),
       not_enabled,
       {created,
        {"TenantGet 7", "TenantCreate 1 7 2 0", "TenantVlanAdd 7 2 30", "VxlanSourcePortGet",
         "VxlanSourcePortSet 120", "TenantAddAllVtep 7"}},
       {created, {"TenantSet 1 7 30 1"}}},
      {operation("DELETE", "/tenant/5/vlan/10"),
       not_enabled,
       {deleted, {"TenantVlanRemove 5 2 10", "TenantRemoveAllVtep 5", "TenantDelete 5"}},
       {deleted, {"TenantSet 1 5 10 0"}}},
  };
  for (const in_all_modes &row : rows) expect_row(row);
}

TEST_F(VxlanModeTest, UnicastGroupsAreChangedInUnicastModeOnly) {
  const in_all_modes rows[] = {
      {operation("PUT", "/unicastGroup"),
       {refused(NOT_UNICAST), {"TenantNextGet 0"}},
       {done("Update VxLAN unicast group successfully."),
        {"TenantNextGet 0", "RemoteVtepAddAllTenant " + std::to_string(ipv4(10, 0, 0, 3))}},
       {refused(NOT_UNICAST), {"TenantNextGet 0"}}},
      {operation("DELETE", "/unicastGroup"),
       not_unicast,
       {done("Delete VxLAN unicast group 10.0.0.1 successfully."),
        {"RemoteVtepRemoveAllTenant " + std::to_string(ipv4(10, 0, 0, 1))}},
       not_unicast},
  };
  for (const in_all_modes &row : rows) expect_row(row);
}

TEST_F(VxlanModeTest, MulticastGroupsAreChangedInMulticastModeOnly) {
  const std::string default_group = std::to_string(ipv4(239, 0, 0, 2));
  const in_all_modes rows[] = {
      {operation("PUT", "/multicastGroup"),
       not_multicast,
       not_multicast,
       {done("Update VxLAN default multicast group successfully."),
        {"IsVNISpecificIPMC 1 " + default_group, "DefaultIPMCSetZYL 1 " + default_group}}},
      {operation("PUT", "/tenant/5/multicastGroup"),
       not_multicast,
       not_multicast,
       {done("Update VxLAN multicast group successfully."),
        {"DefaultIPMCGetZYL 1", "IPMCSet 1 5 " + std::to_string(ipv4(239, 1, 1, 2))}}},
      {operation("DELETE", "/multicastGroup"),
       not_multicast,
       not_multicast,
       {done("Delete VxLAN default multicast group successfully."), {"DefaultIPMCSetZYL 1 0"}}},
      {operation("DELETE", "/tenant/5/multicastGroup"),
       not_multicast,
       not_multicast,
       {done("Delete VxLAN multicast group successfully."), {"IPMCSet 1 5 0"}}},
  };
  for (const in_all_modes &row : rows) expect_row(row);
}
