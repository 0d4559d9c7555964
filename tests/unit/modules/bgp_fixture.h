/* Tests of the BGP module: the documents it answers with. */
#ifndef KESTREL_TESTS_MODULES_BGP_FIXTURE_H
#define KESTREL_TESTS_MODULES_BGP_FIXTURE_H

#include "modules/rest_module_bgp.h"
#include "platform/api/openapi_bgp.h"
#include "platform/api/openapi_routing.h"
#include "platform/api/openapi_vlan.h"
#include "tests/support/platform_fixture.h"
#include "tests/support/result_data.h"
#include "tests/unit/modules/bent_platform.h"
#include "tests/unit/modules/recorded_calls.h"

/* What is recorded of the platform's functions (recorded_bgp.cpp). */
inline constexpr char NETWORK[] = "rpcclt_openapiBgpNetworkAddDelete";
inline constexpr char REDISTRIBUTION[] = "rpcclt_openapiBgpRedistributionSet";
inline constexpr char REMOTE_AS[] = "rpcclt_openapiBgpPeerRemoteASSet";
inline constexpr char ACTIVATE[] = "rpcclt_openapiBgpPeerActivateSet";
inline constexpr char NEXT_HOP_SELF[] = "rpcclt_openapiBgpPeerNextHopSelfModeSet";
inline constexpr char UPDATE_SOURCE[] = "rpcclt_openapiBgpPeerUpdateSourceSet";

/* --- Documents ------------------------------------------------------------------------------------------ */

/* GET /bgp; the defaults are the factory state. */
struct bgp_settings {
  int hold_time = 90, keep_alive_time = 30, local_as = 0;
  std::string router_id = "0.0.0.0";
  int local_preference = 100;
  std::string log_changes = "Disable";
};

inline Answers expected_settings(const bgp_settings &settings) {
  return expected_data(
      {branch("infomation",
              {number("hold_time", settings.hold_time), number("keep_alive_time", settings.keep_alive_time),
               number("local_AS_number", settings.local_as), text("local_router_id", settings.router_id),
               number("local_preference", settings.local_preference),
               text("log_neighbor_changes", settings.log_changes)})});
}

/* GET of a neighbour; `activate` is empty for IPv4. */
struct neighbor_info {
  std::string address;
  int remote_as;
  std::string activate = "", next_hop_self = "disable", update_source = "none";
};

inline Answers expected_neighbor(const neighbor_info &info) {
  std::vector<result_node> nodes = {text("remote_address", info.address),
                                    number("remote_as", info.remote_as)};
  if (!info.activate.empty()) nodes.push_back(text("activate", info.activate));
  nodes.push_back(text("next_hop_self_mode", info.next_hop_self));
  nodes.push_back(text("update_source", info.update_source));
  return expected_data({branch("neighbor_info", nodes)});
}

/* How bad values of neighbours' settings are refused. */
inline Answers expected_invalid_value() {
  return expected_answers(1, "The value of parameter is invalid.");
}

inline Answers expected_parameter_error() {
  return expected_platform_error(OPEN_E_PARAM);
}

/* --- Requests ------------------------------------------------------------------------------------------- */

class BgpTest : public PlatformTest {
protected:
  BgpTest() { forget_calls(); }

  Answers get(const std::string &uri) const { return call(bgp_api_handler, "GET", uri); }
  Answers request(const char *method, const std::string &uri, const std::string &query = "") const {
    return call(bgp_api_handler, method, uri, query);
  }
  /* The request is answered with success and this message, and the operation returns 1, in both formats and
   * as often as it is made. */
  void expect_done(const char *method, const std::string &uri, const std::string &query,
                   const std::string &message) const {
    for (const char *format : {"xml", "json"}) expect_done_once(method, uri, query, message, format);
  }
  void expect_done_once(const char *method, const std::string &uri, const std::string &query,
                        const std::string &message, const char *format = "xml",
                        rest_handler_t handler = bgp_api_handler) const {
    FakeRequest request(method, uri, with_format(query, format));
    EXPECT_EQ(handler(handle, request.conn()), 1) << method << " " << uri << " " << query;
    Answers expected = expected_answers(0, message);
    EXPECT_EQ(answer_body(request, format), *format == 'x' ? expected.xml : expected.json)
        << method << " " << uri << " " << query;
  }
  void expect_refused(const char *method, const std::string &uri, const std::string &query,
                      const Answers &answers) const {
    EXPECT_EQ(request(method, uri, query), answers) << method << " " << uri << " " << query;
    FakeRequest request(method, uri, query);
    EXPECT_EQ(bgp_api_handler(handle, request.conn()), 0) << method << " " << uri << " " << query;
  }

  void make_peer(const std::string &address, uint32_t scopeId, uint32_t asn) const {
    open_inet_addr_t parsed = {};
    EXPECT_EQ(convert_ip_string_to_inet_addr(handle, address.c_str(), &parsed), RC_TRUE) << address;
    EXPECT_EQ(rpcclt_openapiBgpPeerRemoteASSet(handle, &parsed, scopeId, asn), OPEN_E_NONE) << address;
  }
  /* A VLAN with its routing interface; the first one has the number 226. */
  void make_vlan_interface(uint32_t vlanId) const {
    EXPECT_EQ(rpcclt_openapiVlanCreate(handle, vlanId), OPEN_E_NONE) << vlanId;
    EXPECT_EQ(rpcclt_openapiRtrVlanIntfCreate(handle, vlanId), OPEN_E_NONE) << vlanId;
  }
};

#endif
