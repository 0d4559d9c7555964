/* Tests of the routing module: the documents it answers with. */
#ifndef KESTREL_TESTS_MODULES_ROUTING_FIXTURE_H
#define KESTREL_TESTS_MODULES_ROUTING_FIXTURE_H

#include "modules/rest_module_routing.h"
#include "platform/api/openapi_if.h"
#include "platform/api/openapi_routing.h"
#include "platform/api/openapi_vlan.h"
#include "tests/support/platform_fixture.h"
#include "tests/support/result_data.h"
#include "tests/unit/modules/bent_platform.h"
#include "tests/unit/modules/recorded_calls.h"

/* Interface number of the first VLAN routing interface; those of the others follow. */
inline constexpr uint32_t FIRST_VLAN_INTERFACE = 226;
/* What makes and what removes an address. */
inline constexpr char ADDRESS_ADD[] = "rpcclt_openapiRtrIntfIpAddrAdd";
inline constexpr char ADDRESS_DELETE[] = "rpcclt_openapiRtrIntfIpAddrDel";

/* --- Documents ------------------------------------------------------------------------------------------ */

typedef std::vector<result_node> result_nodes;

/* An interface in a list with its addresses. */
struct listed_interface {
  unsigned ifNum;
  result_nodes addresses = {};
};

inline result_nodes listed_ipv4(const std::string &address, const std::string &mask) {
  return {text("ipv4_address", address), text("subnet_mask", mask)};
}

inline result_node listed_ipv6(const std::vector<std::string> &prefixes) {
  result_nodes leaves;
  for (const std::string &prefix : prefixes)
    leaves.push_back(text(std::to_string(leaves.size() + 1), "prefix_and_prefix_length", prefix));
  return branch("ipv6_addresses", leaves);
}

inline result_nodes operator+(result_nodes first, const result_nodes &others) {
  first.insert(first.end(), others.begin(), others.end());
  return first;
}

/* GET /routing/vlanRtrIf. */
inline Answers expected_vlan_interfaces(const std::vector<listed_interface> &interfaces,
                                        unsigned first = FIRST_VLAN_INTERFACE) {
  result_nodes entries;
  for (const listed_interface &listed : interfaces) {
    entries.push_back(entry(static_cast<unsigned>(entries.size()) + 1, "vlan_routing_interface",
                            result_nodes{number("logical_interface_id", listed.ifNum - first + 1),
                                         number("vlan_routing_interface_num", listed.ifNum)} +
                                listed.addresses));
  }
  return expected_data({branch("vlan_routing_interfaces", entries)});
}

inline Answers expected_no_vlan_interfaces() {
  result_node empty = branch("vlan_routing_interfaces", {});
  return expected_answers(1, "VLAN Routing interface doesn't exist.", empty.xml, empty.json);
}

/* GET /routing/if. */
inline Answers expected_interfaces(const std::vector<listed_interface> &interfaces) {
  result_nodes entries;
  for (const listed_interface &listed : interfaces) {
    entries.push_back(entry(static_cast<unsigned>(entries.size()) + 1, "interface",
                            result_nodes{number("ifNum", listed.ifNum)} + listed.addresses));
  }
  return expected_data({branch("interfaces", entries)});
}

inline Answers expected_no_interfaces() {
  result_node empty = branch("interfaces", {});
  return expected_answers(1, "Physical routing interface doesn't exist.", empty.xml, empty.json);
}

/* GET /routing/vlanRtrIf/{logicalId}. */
inline Answers expected_vlan_interface(int logical_id, unsigned ifNum, const std::string &name,
                                       unsigned vlanId, const result_nodes &addresses = {}) {
  return expected_data({branch(
      "vlan_routing_interface",
      result_nodes{number("logical_interface_id", logical_id), number("vlan_routing_interface_num", ifNum),
                   text("vlan_routing_interface_name", name), number("vlan_id", vlanId)} +
          addresses)});
}

inline result_node primary_ipv4(const std::string &address) {
  return text("primary_ipv4_address", address);
}

inline result_node secondary_ipv4(const std::vector<std::string> &addresses) {
  result_nodes leaves;
  for (const std::string &address : addresses)
    leaves.push_back(text(std::to_string(leaves.size() + 1), "secondary_ipv4_address", address));
  return branch("secondary_ipv4_addresses", leaves);
}

/* GET /routing. */
inline Answers expected_modes(const std::string &ipv4, const std::string &ipv6) {
  return expected_data(
      {branch("infomation", {text("ipv4_admin_mode", ipv4), text("ipv6_admin_mode", ipv6)})});
}

/* --- Requests ------------------------------------------------------------------------------------------- */

class RoutingTest : public PlatformTest {
protected:
  RoutingTest() { forget_calls(); }

  Answers get(const std::string &uri) const { return call(routing_api_handler, "GET", uri); }
  Answers request(const char *method, const std::string &uri, const std::string &query = "") const {
    return call(routing_api_handler, method, uri, query);
  }
  /* One request that succeeds, with what the operation returns for it. Its answer in XML is this message. */
  void expect_done(const char *method, const std::string &uri, const std::string &query,
                   const std::string &message, const char *format = "xml") const {
    FakeRequest request(method, uri, with_format(query, format));
    EXPECT_EQ(routing_api_handler(handle, request.conn()), 1) << method << " " << uri << " " << query;
    Answers expected = expected_answers(0, message);
    EXPECT_EQ(answer_body(request, format), *format == 'x' ? expected.xml : expected.json)
        << method << " " << uri << " " << query;
  }
  void expect_refused(const char *method, const std::string &uri, const std::string &query,
                      const Answers &answers) const {
    EXPECT_EQ(request(method, uri, query), answers) << method << " " << uri << " " << query;
    FakeRequest request(method, uri, query);
    EXPECT_EQ(routing_api_handler(handle, request.conn()), 0) << method << " " << uri << " " << query;
  }

  /* A VLAN with its routing interface. */
  void make_vlan_interface(uint32_t vlanId) const {
    EXPECT_EQ(rpcclt_openapiVlanCreate(handle, vlanId), OPEN_E_NONE) << vlanId;
    EXPECT_EQ(rpcclt_openapiRtrVlanIntfCreate(handle, vlanId), OPEN_E_NONE) << vlanId;
  }
  void route_port(uint32_t ifNum) const {
    EXPECT_EQ(rpcclt_openapiRtrIntfRtrAdminModeSet(handle, ifNum, OPEN_ENABLE), OPEN_E_NONE) << ifNum;
  }
  /* Gives an interface the address of a text like "10.0.0.1/24". */
  void give(uint32_t ifNum, const std::string &prefix, uint32_t method = OPEN_INTF_IP_ADDR_PRIMARY) const {
    open_inet_pfx_t parsed = {};
    size_t slash = prefix.find('/');
    EXPECT_EQ(convert_ip_string_to_inet_addr(handle, prefix.substr(0, slash).c_str(), &parsed.ipAddr),
              RC_TRUE);
    parsed.pfxLen = static_cast<uint32_t>(atoi(prefix.c_str() + slash + 1));
    EXPECT_EQ(rpcclt_openapiRtrIntfIpAddrAdd(handle, parsed.ipAddr.family, ifNum, method, &parsed, 0),
              OPEN_E_NONE)
        << prefix;
  }
};

#endif
