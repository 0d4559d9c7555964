/* Tests of the VXLAN module: every operation, the documents it answers with, and a switch with some of
 * everything. */
#ifndef KESTREL_TESTS_MODULES_VXLAN_FIXTURE_H
#define KESTREL_TESTS_MODULES_VXLAN_FIXTURE_H

#include "modules/rest_module_vxlan.h"
#include "platform/api/openapi_if.h"
#include "platform/api/openapi_routing.h"
#include "platform/api/openapi_vlan.h"
#include "platform/api/openapi_vxlan.h"
#include "tests/support/platform_fixture.h"
#include "tests/support/result_data.h"
#include "tests/unit/modules/bent_platform.h"
#include "tests/unit/modules/recorded_calls.h"

enum tunnel_mode { OFF, UNICAST, MULTICAST };
inline constexpr tunnel_mode ALL_MODES[] = {OFF, UNICAST, MULTICAST};
inline constexpr const char *MODE_TEXTS[] = {"disable", "unicast", "multicast"};

/* Interface numbers. */
enum { CPU_INTERFACE = 55, FIRST_LOOPBACK = 120, FIRST_VLAN_INTERFACE = 226 };

inline constexpr char NOT_ENABLED[] = "Vxlan is not enable.";
inline constexpr char NOT_UNICAST[] = "VxLAN unicast mode is not enable.";
inline constexpr char NOT_MULTICAST[] = "VxLAN multicast mode is not enable.";
inline constexpr char MODE_RUNNING[] = "Couldn't change vxlan mode if tunnel still running !";

/* Every operation, with a request that is right but for the mode. `uri` is what follows the instance. */
struct vxlan_operation {
  rest_handler_t operation;
  const char *method, *uri, *query;
};
inline const vxlan_operation VXLAN_OPERATIONS[] = {
    {api_vxlan_delete_specified_tenant, "DELETE", "/tenant/5/vlan/10", ""},
    {api_vxlan_delete_src, "DELETE", "/sourceIntf", ""},
    {api_vxlan_delete_unicast_group, "DELETE", "/unicastGroup", "value=10.0.0.1"},
    {api_vxlan_delete_default_multicast_group, "DELETE", "/multicastGroup", ""},
    {api_vxlan_delete_multicast_group, "DELETE", "/tenant/5/multicastGroup", ""},
    {api_vxlan_update_mode, "PUT", "/mode", "value=0"},
    {api_vxlan_update_udp_port, "PUT", "/udpPort", "value=5000"},
    {api_vxlan_update_src_if, "PUT", "/sourceIntf/if", "value=3"},
    {api_vxlan_update_src_loopback, "PUT", "/sourceIntf/loopback", "value=1"},
    {api_vxlan_update_src_vlan, "PUT", "/sourceIntf/vlan", "value=10"},
    {api_vxlan_update_unicast_group, "PUT", "/unicastGroup", "value=10.0.0.3"},
    {api_vxlan_update_default_multicast_group, "PUT", "/multicastGroup", "value=239.0.0.2"},
    {api_vxlan_update_multicast_group, "PUT", "/tenant/5/multicastGroup", "value=239.1.1.2"},
    {api_vxlan_get_mode, "GET", "/mode", ""},
    {api_vxlan_get_udp_port, "GET", "/udpPort", ""},
    {api_vxlan_get_specified_tenant, "GET", "/tenant/6", ""},
    {api_vxlan_get_tenant_list, "GET", "/tenant", ""},
    {api_vxlan_get_src, "GET", "/sourceIntf", ""},
    {api_vxlan_get_unicast_group, "GET", "/unicastGroup", ""},
    {api_vxlan_get_multicast_group, "GET", "/multicastGroup", ""},
    {api_vxlan_create_tenant, "POST", "/tenant/7/vlan/30", ""},
};

/* --- Documents ------------------------------------------------------------------------------------------ */

/* A refusal in the module's own words. */
inline Answers refused(const std::string &message) {
  return expected_answers(2, message);
}
/* The same with data. */
inline Answers refused(const std::string &message, const result_node &data) {
  return expected_answers(2, message, data.xml, data.json);
}

inline Answers expected_mode(tunnel_mode mode) {
  return expected_data({text("mode", MODE_TEXTS[mode])});
}

inline Answers expected_udp_port(int64_t port) {
  return expected_data({number("udpPort", port)});
}

inline Answers expected_tenant(int64_t tenantId, int64_t vlanId) {
  return expected_data({branch("tenant", {number("tenantId", tenantId), number("vlan", vlanId)})});
}

struct listed_tenant {
  int64_t tenantId, vlanId;
};

inline Answers expected_tenants(const std::vector<listed_tenant> &tenants) {
  std::vector<result_node> entries;
  for (const listed_tenant &tenant : tenants) {
    entries.push_back(entry(static_cast<unsigned>(entries.size()) + 1, "tenant",
                            {number("tenantId", tenant.tenantId), number("vlan", tenant.vlanId)}));
  }
  return expected_data({branch("tenants", entries)});
}

inline Answers expected_source(const std::string &type, int64_t id) {
  return expected_data({branch("sourceInterface", {text("type", type), number("id", id)})});
}

inline result_node unicast_groups(const std::vector<std::string> &addresses) {
  std::vector<result_node> entries;
  for (const std::string &address : addresses) {
    entries.push_back(
        entry(static_cast<unsigned>(entries.size()) + 1, "unicastGroup", {text("address", address)}));
  }
  return branch("unicastGroups", entries);
}

struct listed_group {
  unsigned tenantId;
  const char *address;
};

inline result_node multicast_groups(const std::string &default_group,
                                    const std::vector<listed_group> &groups) {
  std::vector<result_node> nodes = {text("default_multicastGroup", default_group)};
  for (const listed_group &group : groups) {
    nodes.push_back(entry(static_cast<unsigned>(nodes.size()), "multicastGroup",
                          {number("tenantId", group.tenantId), text("address", group.address)}));
  }
  return branch("multicastGroups", nodes);
}

/* --- Fixture -------------------------------------------------------------------------------------------- */

/* A.b.c.d in host byte order. */
inline constexpr uint32_t ipv4(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
  return a << 24 | b << 16 | c << 8 | d;
}

/* VLANs 10, 20, 30 and 40; nothing of VXLAN. */
class VxlanTest : public PlatformTest {
protected:
  VxlanTest() { begin_empty(OFF); }

  void begin_empty(tunnel_mode mode) const {
    lab("reload");
    for (uint32_t vlanId : {10u, 20u, 30u, 40u}) must(rpcclt_openapiVlanCreate(handle, vlanId));
    set_mode(mode);
    forget_calls();
  }
  /* Tenants 5 and 6 of VLANs 10 and 20, a group of tenant 5's own, two remote VTEPs, loopback 0 as source,
   * and a routing interface for VLAN 10. */
  void begin(tunnel_mode mode) const {
    begin_empty(OFF);
    must(rpcclt_openapiRtrVlanIntfCreate(handle, 10));
    must(rpcclt_openapiL2oL3VxlanSourcePortSet(handle, FIRST_LOOPBACK));
    must(rpcclt_openapiL2oL3TenantSet(handle, 1, 5, 10, 1));
    must(rpcclt_openapiL2oL3TenantSet(handle, 1, 6, 20, 1));
    must(rpcclt_openapiL2oL3RemoteVtepAddAllTenant(handle, ipv4(10, 0, 0, 1)));
    must(rpcclt_openapiL2oL3RemoteVtepAddAllTenant(handle, ipv4(10, 0, 0, 2)));
    must(rpcclt_openapiL2oL3DefaultIPMCSetZYL(handle, 1, ipv4(239, 0, 0, 1)));
    must(rpcclt_openapiL2oL3IPMCSet(handle, 1, 5, ipv4(239, 1, 1, 1)));
    set_mode(mode);
    forget_calls();
  }
  /* From whatever mode it is in. */
  void set_mode(tunnel_mode mode) const {
    uint32_t unicast = 0;
    must(rpcclt_openapiL2oL3SwitchTunnelModeGet(handle, OPEN_L2OL3_TUNNEL_VXLAN, &unicast));
    if (unicast == 1) must(rpcclt_openapiL2oL3SwitchTunnelModeSet(handle, OPEN_L2OL3_TUNNEL_VXLAN, 0));
    must(rpcclt_openapiL2oL3SwitchTunnelMultiModeSet(handle, OPEN_L2OL3_TUNNEL_VXLAN, mode == MULTICAST));
    if (mode == UNICAST) must(rpcclt_openapiL2oL3SwitchTunnelModeSet(handle, OPEN_L2OL3_TUNNEL_VXLAN, 1));
  }

  Answers get(const std::string &uri) const { return call(vxlan_api_handler, "GET", uri); }
  Answers serve(const std::string &method, const std::string &uri, const std::string &query = "") const {
    return call(vxlan_api_handler, method, uri, query);
  }
  /* One request of which the operation returns 1 when it succeeds, else 0. Its answer. */
  std::string once(const std::string &method, const std::string &uri, const std::string &query = "",
                   const std::string &format = "xml") const {
    return checked_answer(vxlan_api_handler, handle, method, uri, query, format);
  }
  /* The request succeeds and says this. */
  void expect_done(const std::string &method, const std::string &uri, const std::string &query,
                   const std::string &message) const {
    EXPECT_EQ(once(method, uri, query), expected_answers(0, message).xml) << method << " " << uri;
  }

  /* The recorded calls but those that read the mode, without the beginning that their names share; and
   * forgets them. */
  static std::vector<std::string> calls_made() {
    const std::string beginning = "rpcclt_openapiL2oL3";
    std::vector<std::string> calls;
    for (const std::string &call : recorded_calls()) {
      if (call == beginning + "SwitchTunnelModeGet 2" || call == beginning + "SwitchTunnelMultiModeGet 2")
        continue;
      calls.push_back(call.compare(0, beginning.size(), beginning) == 0 ? call.substr(beginning.size())
                                                                        : call);
    }
    forget_calls();
    return calls;
  }

  static void must(open_error_t rc) { EXPECT_EQ(rc, OPEN_E_NONE); }
};

#endif
