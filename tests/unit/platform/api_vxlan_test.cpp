/* Tests of the VXLAN functions of the C interface that concern the instance: modes, UDP port, source
 * interface and default group; every result code, and what they do. */
#include "tests/unit/platform/vxlan_test_support.h"

namespace {

class VxlanInstance : public VxlanSwitch {
protected:
  /* A switch in factory state but for the mode: 0 off, 1 unicast, 2 multicast. */
  void begin_in_mode(int mode) {
    ASSERT_EQ(commit("no vxlan mode"), OPEN_E_NONE);
    if (mode == 1) {
      ASSERT_EQ(set_unicast(1), OPEN_E_NONE);
    }
    if (mode == 2) {
      ASSERT_EQ(set_multicast(1), OPEN_E_NONE);
    }
  }
};

TEST_F(VxlanInstance, FactoryStateIsOffWithNothingSet) {
  EXPECT_EQ(modes(), "0 0");
  EXPECT_EQ(udp_port(), 4789u);
  EXPECT_EQ(source(), 0u);
  EXPECT_EQ(default_group(), 0u);
  EXPECT_EQ(tenants(), list());
  EXPECT_EQ(softswitch::running_config(), "");
}

/* --- Modes ---------------------------------------------------------------------------------------------- */

TEST_F(VxlanInstance, EveryStateAnswersEveryChangeOfMode) {
  const struct {
    int mode;
    bool multicast; /* the flag that is set; otherwise the unicast one */
    uint32_t flag;
    open_error_t result;
    const char *modes;
  } rows[] = {
      {0, false, 0, OPEN_E_FAIL, "0 0"},  {0, false, 1, OPEN_E_NONE, "1 0"},
      {0, false, 2, OPEN_E_PARAM, "0 0"}, {0, true, 0, OPEN_E_NONE, "0 0"},
      {0, true, 1, OPEN_E_NONE, "0 1"},   {0, true, UINT32_MAX, OPEN_E_PARAM, "0 0"},
      {1, false, 0, OPEN_E_NONE, "0 0"},  {1, false, 1, OPEN_E_NONE, "1 0"},
      {1, false, 2, OPEN_E_PARAM, "1 0"}, {1, true, 0, OPEN_E_NONE, "1 0"},
      {1, true, 1, OPEN_E_FAIL, "1 0"},   {1, true, 2, OPEN_E_PARAM, "1 0"},
      {2, false, 0, OPEN_E_FAIL, "0 1"},  {2, false, 1, OPEN_E_FAIL, "0 1"},
      {2, false, 2, OPEN_E_PARAM, "0 1"}, {2, true, 0, OPEN_E_NONE, "0 0"},
      {2, true, 1, OPEN_E_NONE, "0 1"},   {2, true, 2, OPEN_E_PARAM, "0 1"},
  };
  for (const auto &row : rows) {
    begin_in_mode(row.mode);
    open_error_t result = row.multicast ? set_multicast(row.flag) : set_unicast(row.flag);
    EXPECT_EQ(result, row.result) << row.mode << row.multicast << row.flag;
    EXPECT_EQ(modes(), row.modes) << row.mode << row.multicast << row.flag;
  }
}

TEST_F(VxlanInstance, OtherTunnelTypesAreRefused) {
  begin_in_mode(1);
  for (uint32_t type : no_tunnel_types) {
    uint32_t mode;
    EXPECT_EQ(rpcclt_openapiL2oL3SwitchTunnelModeGet(&handle, type, &mode), OPEN_E_PARAM) << type;
    EXPECT_EQ(rpcclt_openapiL2oL3SwitchTunnelMultiModeGet(&handle, type, &mode), OPEN_E_PARAM) << type;
    for (uint32_t flag : {0u, 1u}) {
      EXPECT_EQ(rpcclt_openapiL2oL3SwitchTunnelModeSet(&handle, type, flag), OPEN_E_PARAM) << type;
      EXPECT_EQ(rpcclt_openapiL2oL3SwitchTunnelMultiModeSet(&handle, type, flag), OPEN_E_PARAM) << type;
    }
  }
  EXPECT_EQ(modes(), "1 0");
}

TEST_F(VxlanInstance, ModeIsKept) {
  begin_in_mode(1);
  EXPECT_EQ(softswitch::running_config(), "vxlan mode unicast\n");
  restart();
  EXPECT_EQ(modes(), "1 0");
  begin_in_mode(2);
  EXPECT_EQ(softswitch::running_config(), "vxlan mode multicast\n");
  restart();
  EXPECT_EQ(modes(), "0 1");
}

TEST_F(VxlanInstance, ChangeOfModeLeavesEverythingElse) {
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  ASSERT_EQ(set(5000, 10), OPEN_E_NONE);
  ASSERT_EQ(add_vtep(ip(10, 0, 0, 1)), OPEN_E_NONE);
  ASSERT_EQ(set_group(5000, ip(239, 1, 1, 1)), OPEN_E_NONE);
  ASSERT_EQ(set_default_group(ip(239, 1, 1, 2)), OPEN_E_NONE);
  ASSERT_EQ(set_source(120), OPEN_E_NONE);
  std::string before = softswitch::running_config();
  begin_in_mode(1);
  begin_in_mode(2);
  begin_in_mode(0);
  EXPECT_EQ(softswitch::running_config(), before);
}

/* --- UDP port ------------------------------------------------------------------------------------------- */

TEST_F(VxlanInstance, BothFormsSetTheOneUdpPort) {
  for (uint32_t port : {1u, 65535u, 4790u}) {
    ASSERT_EQ(set_udp_port(port), OPEN_E_NONE);
    EXPECT_EQ(udp_port(), port);
    ASSERT_EQ(set_udp_port_zyl(port == 1 ? 2 : port - 1), OPEN_E_NONE);
    EXPECT_EQ(udp_port(), port == 1 ? 2u : port - 1);
  }
  restart();
  EXPECT_EQ(udp_port(), 4789u);
  EXPECT_EQ(softswitch::running_config(), "") << "the port of factory state is not printed";
  ASSERT_EQ(set_udp_port(65535), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "vxlan udp-port 65535\n");
}

TEST_F(VxlanInstance, UdpPortOutOfRangeIsRefused) {
  for (uint32_t port : {0u, 65536u, UINT32_MAX}) {
    EXPECT_EQ(set_udp_port(port), OPEN_E_PARAM) << port;
    EXPECT_EQ(set_udp_port_zyl(port), OPEN_E_PARAM) << port;
  }
  EXPECT_EQ(udp_port(), 4789u);
}

/* --- Source interface ----------------------------------------------------------------------------------- */

TEST_F(VxlanInstance, WhatCanHaveAddressesCanBeTheSourceInterface) {
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  ASSERT_EQ(commit("vlan 10 routing interface 230"), OPEN_E_NONE);
  for (uint32_t interface : {1u, 54u, 56u, 119u, 120u, 127u, 230u}) {
    EXPECT_EQ(set_source(interface), OPEN_E_NONE) << interface;
    EXPECT_EQ(source(), interface);
    EXPECT_EQ(set_source_zyl(0), OPEN_E_NONE);
    EXPECT_EQ(source(), 0u);
    EXPECT_EQ(set_source_zyl(interface), OPEN_E_NONE) << interface;
    EXPECT_EQ(source(), interface);
    EXPECT_EQ(set_source(0), OPEN_E_NONE);
    EXPECT_EQ(source(), 0u);
  }
  ASSERT_EQ(set_source(230), OPEN_E_NONE);
  restart();
  EXPECT_EQ(source(), 230u);
}

TEST_F(VxlanInstance, OtherInterfacesAreRefusedAsSource) {
  ASSERT_EQ(set_source(120), OPEN_E_NONE);
  ASSERT_EQ(commit("no lag 3"), OPEN_E_NONE);
  const refused_number rows[] = {{55, OPEN_E_UNAVAIL},    {58, OPEN_E_NOT_FOUND},    {226, OPEN_E_NOT_FOUND},
                                 {353, OPEN_E_NOT_FOUND}, {128, OPEN_E_PARAM},       {225, OPEN_E_PARAM},
                                 {354, OPEN_E_PARAM},     {UINT32_MAX, OPEN_E_PARAM}};
  for (const auto &[interface, result] : rows) {
    EXPECT_EQ(set_source(interface), result) << interface;
    EXPECT_EQ(set_source_zyl(interface), result) << interface;
  }
  EXPECT_EQ(source(), 120u);
}

TEST_F(VxlanInstance, LagThatIsTheSourceInterfaceCannotBeDeleted) {
  ASSERT_EQ(set_source(60), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 60), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 61), OPEN_E_NONE);
  ASSERT_EQ(set_source(62), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 60), OPEN_E_NONE);
}

TEST_F(VxlanInstance, RoutingInterfaceThatIsTheSourceInterfaceCannotBeDeleted) {
  ASSERT_EQ(commit("vlan 10,20"), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 10), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 20), OPEN_E_NONE);
  uint32_t interface = 0;
  ASSERT_EQ(rpcclt_openapiRtrVlanIntfNumGetZYL(&handle, 10, &interface), OPEN_E_NONE);
  ASSERT_EQ(set_source(interface), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 10), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 20), OPEN_E_NONE);
  restart_keeps_configuration();
  ASSERT_EQ(set_source(0), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 10), OPEN_E_NONE);
}

/* --- Default group -------------------------------------------------------------------------------------- */

TEST_F(VxlanInstance, DefaultGroupIsAnyThatIsForwarded) {
  for (uint32_t group : {ip(224, 0, 1, 0), ip(239, 255, 255, 255), ip(232, 1, 2, 3)}) {
    EXPECT_EQ(set_default_group(group), OPEN_E_NONE) << group;
    EXPECT_EQ(default_group(), group);
    EXPECT_EQ(is_specific(group), 0u);
  }
  EXPECT_EQ(softswitch::running_config(), "vxlan multicast-group 232.1.2.3\n");
  for (uint32_t group : no_groups) EXPECT_EQ(set_default_group(group), OPEN_E_PARAM) << group;
  EXPECT_EQ(default_group(), ip(232, 1, 2, 3));
  restart();
  EXPECT_EQ(default_group(), ip(232, 1, 2, 3));
  EXPECT_EQ(set_default_group(0), OPEN_E_NONE);
  EXPECT_EQ(default_group(), 0u);
  EXPECT_EQ(set_default_group(0), OPEN_E_NONE) << "there is none already";
}

TEST_F(VxlanInstance, NoTenantHasTheDefaultGroupAsItsOwn) {
  ASSERT_EQ(create(1), OPEN_E_NONE);
  ASSERT_EQ(create(2), OPEN_E_NONE);
  ASSERT_EQ(set_default_group(ip(239, 1, 1, 1)), OPEN_E_NONE);
  EXPECT_EQ(set_group(1, ip(239, 1, 1, 1)), OPEN_E_EXISTS);
  EXPECT_EQ(set_group(1, ip(239, 1, 1, 2)), OPEN_E_NONE);
  EXPECT_EQ(set_group(2, ip(239, 1, 1, 2)), OPEN_E_NONE) << "tenants may share a group";
  EXPECT_EQ(set_default_group(ip(239, 1, 1, 2)), OPEN_E_EXISTS);
  EXPECT_EQ(default_group(), ip(239, 1, 1, 1));
  ASSERT_EQ(set_group(1, 0), OPEN_E_NONE);
  EXPECT_EQ(set_default_group(ip(239, 1, 1, 2)), OPEN_E_EXISTS) << "the other still has it";
  ASSERT_EQ(remove(2), OPEN_E_NONE);
  EXPECT_EQ(set_default_group(ip(239, 1, 1, 2)), OPEN_E_NONE);
  EXPECT_EQ(set_group(1, ip(239, 1, 1, 1)), OPEN_E_NONE) << "no longer the default one";
  ASSERT_EQ(set_default_group(0), OPEN_E_NONE);
  EXPECT_EQ(set_group(1, 0), OPEN_E_NONE) << "having none is no conflict with there being none";
}

/* --- What holds for all of them ------------------------------------------------------------------------- */

TEST_F(VxlanInstance, OtherInstancesAreRefused) {
  ASSERT_EQ(create(5), OPEN_E_NONE);
  std::string before = softswitch::running_config();
  for (uint32_t instance : no_instances) {
    uint32_t value = 0;
    open_l2oL3TenantConfig_t config;
    EXPECT_EQ(rpcclt_openapiL2oL3SwitchVxlanUdpDstPortGetZYL(&handle, instance, &value), OPEN_E_PARAM);
    EXPECT_EQ(set_udp_port_zyl(5000, instance), OPEN_E_PARAM);
    EXPECT_EQ(rpcclt_openapiL2oL3VxlanSourcePortGetZYL(&handle, instance, &value), OPEN_E_PARAM);
    EXPECT_EQ(set_source_zyl(1, instance), OPEN_E_PARAM);
    EXPECT_EQ(set_source_zyl(0, instance), OPEN_E_PARAM);
    EXPECT_EQ(create(6, instance), OPEN_E_PARAM);
    EXPECT_EQ(set(6, 1, 1, instance), OPEN_E_PARAM);
    EXPECT_EQ(set(5, 1, 0, instance), OPEN_E_PARAM);
    EXPECT_EQ(rpcclt_openapiL2oL3TenantFirstGet(&handle, instance, &value, &config), OPEN_E_PARAM);
    EXPECT_EQ(rpcclt_openapiL2oL3TenantNextGetZYL(&handle, instance, &value, &config), OPEN_E_PARAM);
    EXPECT_EQ(rpcclt_openapiL2oL3DefaultIPMCGetZYL(&handle, instance, &value), OPEN_E_PARAM);
    EXPECT_EQ(set_default_group(ip(239, 0, 0, 1), instance), OPEN_E_PARAM);
    EXPECT_EQ(set_default_group(0, instance), OPEN_E_PARAM);
    EXPECT_EQ(rpcclt_openapiL2oL3IPMCGet(&handle, instance, 5, &value), OPEN_E_PARAM);
    EXPECT_EQ(set_group(5, ip(239, 0, 0, 1), instance), OPEN_E_PARAM);
    EXPECT_EQ(set_group(5, 0, instance), OPEN_E_PARAM);
    EXPECT_EQ(rpcclt_openapiL2oL3IsVNISpecificIPMC(&handle, instance, 0, &value), OPEN_E_PARAM);
  }
  EXPECT_EQ(softswitch::running_config(), before);
}

TEST_F(VxlanInstance, SettingWhatIsSetAlreadyIsNoChange) {
  begin_in_mode(1);
  ASSERT_EQ(set_udp_port(5000), OPEN_E_NONE);
  ASSERT_EQ(set_source(120), OPEN_E_NONE);
  ASSERT_EQ(set_default_group(ip(239, 1, 1, 1)), OPEN_E_NONE);
  std::string before = journal();
  EXPECT_EQ(set_unicast(1), OPEN_E_NONE);
  EXPECT_EQ(set_multicast(0), OPEN_E_NONE);
  EXPECT_EQ(set_udp_port(5000), OPEN_E_NONE);
  EXPECT_EQ(set_udp_port_zyl(5000), OPEN_E_NONE);
  EXPECT_EQ(set_source(120), OPEN_E_NONE);
  EXPECT_EQ(set_source_zyl(120), OPEN_E_NONE);
  EXPECT_EQ(set_default_group(ip(239, 1, 1, 1)), OPEN_E_NONE);
  EXPECT_EQ(journal(), before);
}

TEST_F(VxlanInstance, ChangesOfTheInstanceAreListedNowhereAsPending) {
  take_and_hold();
  begin_in_mode(2);
  ASSERT_EQ(set_udp_port(5000), OPEN_E_NONE);
  ASSERT_EQ(set_source(1), OPEN_E_NONE);
  ASSERT_EQ(set_default_group(ip(239, 1, 1, 1)), OPEN_E_NONE);
  ASSERT_EQ(add_vtep(ip(10, 0, 0, 1)), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
  EXPECT_EQ(pending_vlans(), std::vector<int>());
}

} // namespace
