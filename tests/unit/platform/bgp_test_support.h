/* The BGP functions of the C interface with addresses and names as texts, for its tests. */
#ifndef KESTREL_TESTS_BGP_TEST_SUPPORT_H
#define KESTREL_TESTS_BGP_TEST_SUPPORT_H

#include "platform/api/openapi_bgp.h"

#include "platform/softswitch/model/inet_address.h"
#include "tests/unit/platform/softswitch_test_support.h"

/* A peer by its address and the number of its scope. */
struct peer_name {
  peer_name(const char *text, uint32_t scope_number = 0) : scope(scope_number) {
    EXPECT_TRUE(softswitch::inet_address_read(text, &address)) << text;
  }
  open_inet_addr_t address;
  uint32_t scope;
};

inline std::ostream &operator<<(std::ostream &to, const peer_name &peer) {
  return to << softswitch::inet_address_text(peer.address) << '%' << peer.scope;
}

/* A redistribution as a caller asks for it: all flags unset. */
struct redistribution_call {
  OPEN_BOOL_t add = OPEN_TRUE;
  std::string source = "ospf";
  OPEN_BOOL_t match_set = OPEN_FALSE;
  uint32_t match_bits = 0;
  OPEN_BOOL_t metric_set = OPEN_FALSE;
  OPEN_BOOL_t metric_value_set = OPEN_FALSE;
  int64_t metric = 0;
  OPEN_BOOL_t route_map_set = OPEN_FALSE;
  uint32_t family = OPEN_AF_INET;
  std::string route_map = "";
};

class BgpSwitch : public SoftSwitch {
protected:
  open_error_t set_as(const peer_name &peer, uint32_t as) {
    return rpcclt_openapiBgpPeerRemoteASSet(&handle, &peer.address, peer.scope, as);
  }
  open_error_t activate(const peer_name &peer, uint32_t family, OPEN_BOOL_t on) {
    return rpcclt_openapiBgpPeerActivateSet(&handle, &peer.address, peer.scope, family, on);
  }
  open_error_t set_next_hop_self(const peer_name &peer, uint32_t family, OPEN_BOOL_t on) {
    return rpcclt_openapiBgpPeerNextHopSelfModeSet(&handle, &peer.address, peer.scope, family, on);
  }
  open_error_t set_update_source(const peer_name &peer, uint32_t interface) {
    return rpcclt_openapiBgpPeerUpdateSourceSet(&handle, &peer.address, peer.scope, interface);
  }

  /* What a peer has; the code, which is negative, in its place when there is none. */
  int64_t as_of(const peer_name &peer) {
    uint32_t as = 0;
    return either(rpcclt_openapiBgpPeerRemoteASGet(&handle, &peer.address, peer.scope, &as), as);
  }
  int64_t active(const peer_name &peer, uint32_t family) {
    uint32_t on = 99;
    return either(rpcclt_openapiBgpPeerActivateGet(&handle, &peer.address, peer.scope, family, &on), on);
  }
  int64_t next_hop_self(const peer_name &peer, uint32_t family) {
    uint32_t on = 99;
    return either(rpcclt_openapiBgpPeerNextHopSelfModeGet(&handle, &peer.address, peer.scope, family, &on),
                  on);
  }
  int64_t update_source(const peer_name &peer) {
    uint32_t interface = 99;
    return either(rpcclt_openapiBgpPeerUpdateSourceGet(&handle, &peer.address, peer.scope, &interface),
                  interface);
  }

  open_error_t network(const char *address, uint32_t length, OPEN_BOOL_t add, OPEN_BOOL_t use_route_map,
                       std::string route_map) {
    open_inet_addr_t parsed;
    EXPECT_TRUE(softswitch::inet_address_read(address, &parsed)) << address;
    open_buffdesc name = {static_cast<uint32_t>(route_map.size()), route_map.data()};
    return rpcclt_openapiBgpNetworkAddDelete(&handle, add, &parsed, length, use_route_map, &name);
  }
  open_error_t originate(const char *address, uint32_t length) {
    return network(address, length, OPEN_TRUE, OPEN_FALSE, "");
  }
  open_error_t originate(const char *address, uint32_t length, const std::string &route_map) {
    return network(address, length, OPEN_TRUE, OPEN_TRUE, route_map);
  }
  open_error_t withdraw(const char *address, uint32_t length) {
    return network(address, length, OPEN_FALSE, OPEN_FALSE, "");
  }

  open_error_t redistribute(redistribution_call call) {
    open_buffdesc source = {static_cast<uint32_t>(call.source.size()), call.source.data()};
    open_buffdesc route_map = {static_cast<uint32_t>(call.route_map.size()), call.route_map.data()};
    return rpcclt_openapiBgpRedistributionSet(&handle, call.add, &source, call.match_set, call.match_bits,
                                              call.metric_set, call.metric_value_set, call.metric,
                                              call.route_map_set, call.family, &route_map);
  }

private:
  static int64_t either(open_error_t rc, const uint32_t &value) {
    return rc == OPEN_E_NONE ? int64_t{value} : int64_t{rc};
  }
};

#endif
