/* What the tests of VXLAN share: the C interface with outputs as results. */
#ifndef KESTREL_TESTS_VXLAN_TEST_SUPPORT_H
#define KESTREL_TESTS_VXLAN_TEST_SUPPORT_H

#include "platform/api/openapi_lag.h"
#include "platform/api/openapi_routing.h"
#include "platform/api/openapi_vxlan.h"
#include "tests/unit/platform/softswitch_test_support.h"

/* The address a.b.c.d as the interface takes it. */
constexpr uint32_t ip(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
  return a << 24 | b << 16 | c << 8 | d;
}

inline constexpr uint32_t last_tenant = 16777214;
inline constexpr uint32_t no_instances[] = {0, 2, UINT32_MAX};
inline constexpr uint32_t no_tunnel_types[] = {0, 1, 3, UINT32_MAX};
inline constexpr refused_number absent_tenants[] = {{1, OPEN_E_NOT_FOUND},
                                                    {last_tenant, OPEN_E_NOT_FOUND},
                                                    {0, OPEN_E_PARAM},
                                                    {last_tenant + 1, OPEN_E_PARAM},
                                                    {UINT32_MAX, OPEN_E_PARAM}};
/* Neither groups nor 0, which means none. */
inline constexpr uint32_t no_groups[] = {1,
                                         ip(10, 0, 0, 1),
                                         ip(223, 255, 255, 255),
                                         ip(224, 0, 0, 0),
                                         ip(224, 0, 0, 255),
                                         ip(240, 0, 0, 0),
                                         ip(255, 255, 255, 255)};
inline constexpr uint32_t no_hosts[] = {0,
                                        ip(0, 0, 0, 1),
                                        ip(0, 255, 255, 255),
                                        ip(127, 0, 0, 1),
                                        ip(127, 255, 255, 255),
                                        ip(224, 0, 0, 0),
                                        ip(239, 1, 1, 1),
                                        ip(240, 0, 0, 0),
                                        ip(255, 255, 255, 255)};

class VxlanSwitch : public SoftSwitch {
protected:
  /* --- The instance ------------------------------------------------------------------------------------- */

  open_error_t set_unicast(uint32_t flag) {
    return rpcclt_openapiL2oL3SwitchTunnelModeSet(&handle, OPEN_L2OL3_TUNNEL_VXLAN, flag);
  }

  open_error_t set_multicast(uint32_t flag) {
    return rpcclt_openapiL2oL3SwitchTunnelMultiModeSet(&handle, OPEN_L2OL3_TUNNEL_VXLAN, flag);
  }

  /* Both flags as "unicast multicast". */
  std::string modes() {
    uint32_t unicast = 9, multicast = 9;
    EXPECT_EQ(rpcclt_openapiL2oL3SwitchTunnelModeGet(&handle, 2, &unicast), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiL2oL3SwitchTunnelMultiModeGet(&handle, 2, &multicast), OPEN_E_NONE);
    return std::to_string(unicast) + " " + std::to_string(multicast);
  }

  open_error_t set_udp_port(uint32_t port) {
    return rpcclt_openapiL2oL3SwitchVxlanUdpDestPortSet(&handle, port);
  }

  open_error_t set_udp_port_zyl(uint32_t port, uint32_t instance = 1) {
    return rpcclt_openapiL2oL3SwitchVxlanUdpDstPortSetZYL(&handle, instance, port);
  }

  /* As both forms of the call read it. */
  uint32_t udp_port() {
    uint32_t plain = 0, zyl = 0;
    EXPECT_EQ(rpcclt_openapiL2oL3SwitchVxlanUdpDestPortGet(&handle, &plain), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiL2oL3SwitchVxlanUdpDstPortGetZYL(&handle, 1, &zyl), OPEN_E_NONE);
    EXPECT_EQ(plain, zyl);
    return plain;
  }

  open_error_t set_source(uint32_t interface) {
    return rpcclt_openapiL2oL3VxlanSourcePortSet(&handle, interface);
  }

  open_error_t set_source_zyl(uint32_t interface, uint32_t instance = 1) {
    return rpcclt_openapiL2oL3VxlanSourcePortSetZYL(&handle, instance, interface);
  }

  uint32_t source() {
    uint32_t plain = 999, zyl = 999;
    EXPECT_EQ(rpcclt_openapiL2oL3VxlanSourcePortGet(&handle, &plain), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiL2oL3VxlanSourcePortGetZYL(&handle, 1, &zyl), OPEN_E_NONE);
    EXPECT_EQ(plain, zyl);
    return plain;
  }

  /* --- Tenants ------------------------------------------------------------------------------------------ */

  open_error_t create(uint32_t tenant, uint32_t instance = 1) {
    open_l2oL3TenantConfig_t config = {OPEN_L2OL3_TUNNEL_VXLAN, 0, {}};
    return rpcclt_openapiL2oL3TenantCreate(&handle, instance, tenant, &config);
  }

  open_error_t remove(uint32_t tenant) { return rpcclt_openapiL2oL3TenantDelete(&handle, tenant); }

  open_error_t set(uint32_t tenant, uint32_t vlan, uint32_t on = 1, uint32_t instance = 1) {
    return rpcclt_openapiL2oL3TenantSet(&handle, instance, tenant, vlan, on);
  }

  open_error_t add_vlan(uint32_t tenant, uint32_t vlan, uint32_t type = OPEN_L2OL3_TUNNEL_VXLAN) {
    return rpcclt_openapiL2oL3TenantVlanAdd(&handle, tenant, type, vlan);
  }

  open_error_t remove_vlan(uint32_t tenant, uint32_t vlan, uint32_t type = OPEN_L2OL3_TUNNEL_VXLAN) {
    return rpcclt_openapiL2oL3TenantVlanRemove(&handle, tenant, type, vlan);
  }

  /* The VLAN of a tenant; the code in its place when it cannot be read. */
  int vlan_of(uint32_t tenant) {
    open_l2oL3TenantConfig_t config = unset();
    open_error_t rc = rpcclt_openapiL2oL3TenantGet(&handle, tenant, &config);
    return rc == OPEN_E_NONE ? checked_vlan(config) : static_cast<int>(rc);
  }

  /* What follows a tenant as "id vlan", the same from both forms of the call; the code when nothing does. */
  std::string next(uint32_t after) {
    open_l2oL3TenantConfig_t config = unset();
    uint32_t id = 0;
    open_error_t rc = rpcclt_openapiL2oL3TenantNextGet(&handle, after, &id, &config);
    std::string plain = shown(rc, id, config);
    id = after;
    config = unset();
    rc = rpcclt_openapiL2oL3TenantNextGetZYL(&handle, 1, &id, &config);
    EXPECT_EQ(shown(rc, id, config), plain);
    return plain;
  }

  std::string first() {
    open_l2oL3TenantConfig_t config = unset();
    uint32_t id = 0;
    open_error_t rc = rpcclt_openapiL2oL3TenantFirstGet(&handle, 1, &id, &config);
    return shown(rc, id, config);
  }

  std::vector<std::string> tenants() {
    std::vector<std::string> found;
    for (std::string entry = first(); entry != end; entry = next(static_cast<uint32_t>(std::stoul(entry)))) {
      found.push_back(entry);
    }
    return found;
  }

  /* --- Remote VTEPs and groups -------------------------------------------------------------------------- */

  open_error_t add_vtep(uint32_t address) {
    return rpcclt_openapiL2oL3RemoteVtepAddAllTenant(&handle, address);
  }

  open_error_t remove_vtep(uint32_t address) {
    return rpcclt_openapiL2oL3RemoteVtepRemoveAllTenant(&handle, address);
  }

  open_error_t give_vteps(uint32_t tenant) { return rpcclt_openapiL2oL3TenantAddAllVtep(&handle, tenant); }

  open_error_t take_vteps(uint32_t tenant) { return rpcclt_openapiL2oL3TenantRemoveAllVtep(&handle, tenant); }

  open_error_t next_tunnel(uint32_t tenant, uint32_t after, open_l2oL3TunnelInfo_t *tunnel) {
    return rpcclt_openapiL2oL3TunnelGetNextTenant(&handle, tenant, after, tunnel);
  }

  /* The remote VTEPs of a tenant, in the order of a walk over its tunnels. */
  std::vector<uint32_t> tunnels(uint32_t tenant) {
    std::vector<uint32_t> found;
    open_l2oL3TunnelInfo_t tunnel = {0, 0};
    open_error_t rc;
    while ((rc = next_tunnel(tenant, tunnel.tunnelId, &tunnel)) == OPEN_E_NONE) {
      EXPECT_NE(tunnel.tunnelId, 0u);
      found.push_back(tunnel.remoteAddress);
    }
    EXPECT_EQ(rc, OPEN_E_FAIL);
    return found;
  }

  open_error_t set_default_group(uint32_t group, uint32_t instance = 1) {
    return rpcclt_openapiL2oL3DefaultIPMCSetZYL(&handle, instance, group);
  }

  uint32_t default_group() {
    uint32_t group = 1;
    EXPECT_EQ(rpcclt_openapiL2oL3DefaultIPMCGetZYL(&handle, 1, &group), OPEN_E_NONE);
    return group;
  }

  open_error_t set_group(uint32_t tenant, uint32_t group, uint32_t instance = 1) {
    return rpcclt_openapiL2oL3IPMCSet(&handle, instance, tenant, group);
  }

  uint32_t group_of(uint32_t tenant) {
    uint32_t group = 1;
    EXPECT_EQ(rpcclt_openapiL2oL3IPMCGet(&handle, 1, tenant, &group), OPEN_E_NONE);
    return group;
  }

  uint32_t is_specific(uint32_t group) {
    OPEN_BOOL_t specific = 9;
    EXPECT_EQ(rpcclt_openapiL2oL3IsVNISpecificIPMC(&handle, 1, group, &specific), OPEN_E_NONE);
    return specific;
  }

  std::string journal() { return file_content(dir.path + "/journal-1"); }

  using list = std::vector<std::string>;
  using addresses = std::vector<uint32_t>;
  const std::string end = std::to_string(OPEN_E_FAIL);

private:
  /* A record of whose members none is as a call leaves it. */
  static open_l2oL3TenantConfig_t unset() { return {9, 9999, {9, 9, 9, 9, 9, 9}}; }

  static int checked_vlan(const open_l2oL3TenantConfig_t &config) {
    EXPECT_EQ(config.tunnelType, uint32_t{OPEN_L2OL3_TUNNEL_VXLAN});
    for (uint32_t reserved : config.reserved) EXPECT_EQ(reserved, 0u);
    return static_cast<int>(config.vlanId);
  }

  static std::string shown(open_error_t rc, uint32_t id, const open_l2oL3TenantConfig_t &config) {
    if (rc != OPEN_E_NONE) return std::to_string(rc);
    return std::to_string(id) + " " + std::to_string(checked_vlan(config));
  }
};

#endif
