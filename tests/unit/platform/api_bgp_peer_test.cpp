/* Tests of the functions of the C interface about BGP peers, and of what holds for all settings of BGP: what
 * is stored, and what a full disk does. */
#include "tests/unit/platform/bgp_test_support.h"

#include "platform/api/openapi_lag.h"
#include "platform/api/openapi_routing.h"

namespace {

/* Interfaces of each kind; the VLAN routing interface is that of VLAN 10. */
constexpr uint32_t port = 3, lag = 56, loopback = 120, vlan10 = 226;

class BgpPeer : public BgpSwitch {
protected:
  void SetUp() override {
    BgpSwitch::SetUp();
    ASSERT_EQ(rpcclt_openapiVlanCreate(&handle, 10), OPEN_E_NONE);
    ASSERT_EQ(rpcclt_openapiRtrVlanIntfCreate(&handle, 10), OPEN_E_NONE);
  }

  /* The lines about BGP. */
  static std::string bgp_config() {
    std::string config = softswitch::running_config();
    size_t start = config.find("bgp ");
    if (start == std::string::npos) return "";
    return config.substr(config.compare(start - 3, 3, "no ") == 0 ? start - 3 : start);
  }

  /* Everything that can be asked about a peer. */
  std::vector<int64_t> everything(const peer_name &peer) {
    return {as_of(peer),
            active(peer, OPEN_AF_INET),
            active(peer, OPEN_AF_INET6),
            next_hop_self(peer, OPEN_AF_INET),
            next_hop_self(peer, OPEN_AF_INET6),
            update_source(peer)};
  }

  using values = std::vector<int64_t>;
  const peer_name ipv4 = {"10.0.0.2"}, global = {"2001:db8::2"}, linked = {"fe80::2", port};
};

TEST_F(BgpPeer, NewPeerIsInFactoryState) {
  EXPECT_EQ(set_as(ipv4, 65001), OPEN_E_NONE);
  EXPECT_EQ(set_as(global, 1), OPEN_E_NONE);
  EXPECT_EQ(set_as(linked, UINT32_MAX), OPEN_E_NONE);
  for (int round = 0; round < 2; round++) {
    EXPECT_EQ(everything(ipv4), (values{65001, 1, 0, 0, 0, 0}));
    EXPECT_EQ(everything(global), (values{1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(everything(linked), (values{UINT32_MAX, 0, 0, 0, 0, 0}));
    restart();
  }
  EXPECT_EQ(bgp_config(), "bgp neighbor 10.0.0.2 remote-as 65001\n"
                          "bgp neighbor 2001:db8::2 remote-as 1\n"
                          "bgp neighbor fe80::2%0/3 remote-as 4294967295\n");
}

TEST_F(BgpPeer, PeerIsKnownByItsAddressAndScope) {
  const peer_name peers[] = {{"fe80::2", port},     {"fe80::2", 4},      {"fe80::2", lag},
                             {"fe80::2", loopback}, {"fe80::2", vlan10}, {"2001:db8::2"},
                             {"2001:db8::2", port}, {"fe80::3", port},   {"10.0.0.2"}};
  uint32_t as = 100;
  for (const peer_name &peer : peers) EXPECT_EQ(set_as(peer, as++), OPEN_E_NONE) << peer;
  restart();
  as = 100;
  for (const peer_name &peer : peers) EXPECT_EQ(as_of(peer), as++) << peer;
  EXPECT_EQ(as_of({"fe80::2", 5}), OPEN_E_NOT_FOUND);
  EXPECT_EQ(as_of({"2001:db8::2", 4}), OPEN_E_NOT_FOUND);
  EXPECT_EQ(bgp_config(), "bgp neighbor 10.0.0.2 remote-as 108\n"
                          "bgp neighbor 2001:db8::2 remote-as 105\n"
                          "bgp neighbor 2001:db8::2%0/3 remote-as 106\n"
                          "bgp neighbor fe80::2%0/3 remote-as 100\n"
                          "bgp neighbor fe80::2%0/4 remote-as 101\n"
                          "bgp neighbor fe80::2%3/1 remote-as 102\n"
                          "bgp neighbor fe80::2%loopback0 remote-as 103\n"
                          "bgp neighbor fe80::2%vlan10 remote-as 104\n"
                          "bgp neighbor fe80::3%0/3 remote-as 107\n");
}

TEST_F(BgpPeer, AddressThatIsNoHostsIsRefusedEverywhere) {
  const peer_name bad[] = {
      {"0.0.0.0"},        {"0.1.2.3"},        {"127.0.0.1"}, {"224.0.0.1"}, {"255.255.255.255"},
      {"10.0.0.2", port}, {"10.0.0.2", 4711}, {"::"},        {"::1"},       {"::1", port},
      {"ff02::1"},        {"ff02::1", port},  {"fe80::2"},   {"febf::1"}};
  for (const peer_name &peer : bad) {
    EXPECT_EQ(set_as(peer, 1), OPEN_E_PARAM) << peer;
    EXPECT_EQ(everything(peer), values(6, OPEN_E_PARAM)) << peer;
    EXPECT_EQ(activate(peer, OPEN_AF_INET, 1), OPEN_E_PARAM) << peer;
    EXPECT_EQ(set_next_hop_self(peer, OPEN_AF_INET, 1), OPEN_E_PARAM) << peer;
    EXPECT_EQ(set_update_source(peer, port), OPEN_E_PARAM) << peer;
    EXPECT_EQ(set_update_source(peer, 0), OPEN_E_PARAM) << peer;
  }
  for (uint32_t family : {0u, 3u, UINT32_MAX}) {
    peer_name peer = ipv4;
    peer.address.family = family;
    EXPECT_EQ(set_as(peer, 1), OPEN_E_PARAM) << family;
    EXPECT_EQ(everything(peer), values(6, OPEN_E_PARAM)) << family;
  }
  EXPECT_EQ(bgp_config(), "");
}

TEST_F(BgpPeer, PeerThatIsNotThereIsNotFound) {
  for (const peer_name &peer : {ipv4, global, linked, peer_name("fe80::2", 55), peer_name("fe80::2", 4711)}) {
    EXPECT_EQ(everything(peer), values(6, OPEN_E_NOT_FOUND)) << peer;
    EXPECT_EQ(activate(peer, OPEN_AF_INET6, 1), OPEN_E_NOT_FOUND) << peer;
    EXPECT_EQ(set_next_hop_self(peer, OPEN_AF_INET6, 0), OPEN_E_NOT_FOUND) << peer;
    EXPECT_EQ(set_update_source(peer, port), OPEN_E_NOT_FOUND) << peer;
    EXPECT_EQ(set_update_source(peer, UINT32_MAX), OPEN_E_NOT_FOUND) << "the peer is looked for first";
  }
}

TEST_F(BgpPeer, ScopeIsAnInterfaceThatCanHaveAddresses) {
  for (uint32_t scope : {55u, 128u, 225u, 227u, 353u, 354u, UINT32_MAX}) {
    EXPECT_EQ(set_as({"fe80::2", scope}, 1), OPEN_E_NOT_FOUND) << scope;
    EXPECT_EQ(set_as({"2001:db8::2", scope}, 1), OPEN_E_NOT_FOUND) << scope;
  }
  ASSERT_EQ(commit("no lag 2"), OPEN_E_NONE);
  EXPECT_EQ(set_as({"fe80::2", 57}, 1), OPEN_E_NOT_FOUND) << "a LAG that was deleted";
  EXPECT_EQ(bgp_config(), "");
}

TEST_F(BgpPeer, RemoteAsIsChangedAndNeverZero) {
  EXPECT_EQ(set_as(ipv4, 0), OPEN_E_PARAM);
  EXPECT_EQ(as_of(ipv4), OPEN_E_NOT_FOUND);
  ASSERT_EQ(set_as(ipv4, 1), OPEN_E_NONE);
  ASSERT_EQ(activate(ipv4, OPEN_AF_INET, 0), OPEN_E_NONE);
  EXPECT_EQ(set_as(ipv4, 0), OPEN_E_PARAM);
  EXPECT_EQ(as_of(ipv4), 1);
  EXPECT_EQ(set_as(ipv4, UINT32_MAX), OPEN_E_NONE);
  EXPECT_EQ(everything(ipv4), (values{UINT32_MAX, 0, 0, 0, 0, 0})) << "the peer's other settings stay";
}

TEST_F(BgpPeer, FamilyIsIpv4OrIpv6) {
  ASSERT_EQ(set_as(ipv4, 1), OPEN_E_NONE);
  for (uint32_t family : {0u, 3u, UINT32_MAX}) {
    for (const peer_name &peer : {ipv4, global}) {
      EXPECT_EQ(active(peer, family), OPEN_E_PARAM) << family;
      EXPECT_EQ(activate(peer, family, 1), OPEN_E_PARAM) << family;
      EXPECT_EQ(next_hop_self(peer, family), OPEN_E_PARAM) << family;
      EXPECT_EQ(set_next_hop_self(peer, family, 1), OPEN_E_PARAM) << family;
    }
  }
}

TEST_F(BgpPeer, EachFamilyIsActivatedByItself) {
  for (const peer_name &peer : {ipv4, global, linked}) ASSERT_EQ(set_as(peer, 1), OPEN_E_NONE);
  for (uint32_t value : {1u, 0u, 2u, 0u, UINT32_MAX}) {
    for (const peer_name &peer : {ipv4, global, linked}) {
      ASSERT_EQ(activate(peer, OPEN_AF_INET, value), OPEN_E_NONE) << peer;
      ASSERT_EQ(activate(peer, OPEN_AF_INET6, value == 0 ? 1 : 0), OPEN_E_NONE) << peer;
    }
    restart();
    for (const peer_name &peer : {ipv4, global, linked}) {
      EXPECT_EQ(active(peer, OPEN_AF_INET), value == 0 ? 0 : 1) << peer;
      EXPECT_EQ(active(peer, OPEN_AF_INET6), value == 0 ? 1 : 0) << peer;
    }
  }
  EXPECT_EQ(bgp_config(), "bgp neighbor 10.0.0.2 remote-as 1\n"
                          "bgp neighbor 2001:db8::2 remote-as 1\n"
                          "bgp neighbor fe80::2%0/3 remote-as 1\n"
                          "bgp neighbor 2001:db8::2 activate ipv4\n"
                          "bgp neighbor fe80::2%0/3 activate ipv4\n");
}

TEST_F(BgpPeer, Ipv4PeerThatIsNotActiveIsPrintedSo) {
  ASSERT_EQ(set_as(ipv4, 1), OPEN_E_NONE);
  ASSERT_EQ(activate(ipv4, OPEN_AF_INET, 0), OPEN_E_NONE);
  EXPECT_EQ(bgp_config(), "bgp neighbor 10.0.0.2 remote-as 1\nno bgp neighbor 10.0.0.2 activate ipv4\n");
  restart();
  EXPECT_EQ(active(ipv4, OPEN_AF_INET), 0);
}

TEST_F(BgpPeer, NextHopSelfIsSetForEachFamily) {
  for (const peer_name &peer : {ipv4, linked}) ASSERT_EQ(set_as(peer, 1), OPEN_E_NONE);
  ASSERT_EQ(set_next_hop_self(ipv4, OPEN_AF_INET, 7), OPEN_E_NONE);
  ASSERT_EQ(set_next_hop_self(ipv4, OPEN_AF_INET6, 1), OPEN_E_NONE);
  ASSERT_EQ(set_next_hop_self(ipv4, OPEN_AF_INET6, 0), OPEN_E_NONE);
  ASSERT_EQ(set_next_hop_self(linked, OPEN_AF_INET6, UINT32_MAX), OPEN_E_NONE);
  restart();
  EXPECT_EQ(everything(ipv4), (values{1, 1, 0, 1, 0, 0}));
  EXPECT_EQ(everything(linked), (values{1, 0, 0, 0, 1, 0}));
}

TEST_F(BgpPeer, UpdateSourceIsAnInterfaceThatCanHaveAddresses) {
  for (const peer_name &peer : {ipv4, linked}) ASSERT_EQ(set_as(peer, 1), OPEN_E_NONE);
  for (uint32_t good : {port, lag, loopback, vlan10, 0u, 1u}) {
    for (const peer_name &peer : {ipv4, linked}) {
      EXPECT_EQ(set_update_source(peer, good), OPEN_E_NONE) << good;
      EXPECT_EQ(update_source(peer), good);
    }
    restart_keeps_configuration();
  }
  const refused_number bad[] = {{55, OPEN_E_UNAVAIL},      {227, OPEN_E_NOT_FOUND}, {353, OPEN_E_NOT_FOUND},
                                {128, OPEN_E_PARAM},       {225, OPEN_E_PARAM},     {354, OPEN_E_PARAM},
                                {UINT32_MAX, OPEN_E_PARAM}};
  for (const auto &[interface, result] : bad)
    EXPECT_EQ(set_update_source(ipv4, interface), result) << interface;
  EXPECT_EQ(update_source(ipv4), 1);
}

TEST_F(BgpPeer, RemovedPeerTakesItsSettingsAlong) {
  for (const peer_name &peer : {ipv4, linked}) ASSERT_EQ(set_as(peer, 1), OPEN_E_NONE);
  ASSERT_EQ(activate(linked, OPEN_AF_INET6, 1), OPEN_E_NONE);
  ASSERT_EQ(set_next_hop_self(linked, OPEN_AF_INET6, 1), OPEN_E_NONE);
  ASSERT_EQ(set_update_source(linked, loopback), OPEN_E_NONE);
  ASSERT_EQ(commit("no bgp neighbor fe80::2%0/3"), OPEN_E_NONE);
  EXPECT_EQ(as_of(linked), OPEN_E_NOT_FOUND);
  EXPECT_EQ(as_of(ipv4), 1);
  ASSERT_EQ(set_as(linked, 2), OPEN_E_NONE);
  EXPECT_EQ(everything(linked), (values{2, 0, 0, 0, 0, 0}));
}

TEST_F(BgpPeer, FullTableOfPeersRefusesOneMore) {
  for (uint32_t count = 1; count <= 128; count++)
    ASSERT_EQ(set_as(("10.0.0." + std::to_string(count)).c_str(), count), OPEN_E_NONE);
  EXPECT_EQ(set_as(global, 1), OPEN_E_FULL);
  EXPECT_EQ(set_as({"fe80::2", 4711}, 1), OPEN_E_NOT_FOUND);
  EXPECT_EQ(set_as(ipv4, 77), OPEN_E_NONE) << "what is there is not one more";
  EXPECT_EQ(as_of(ipv4), 77);
  ASSERT_EQ(commit("no bgp neighbor 10.0.0.3"), OPEN_E_NONE);
  EXPECT_EQ(set_as(global, 1), OPEN_E_NONE);
  EXPECT_FALSE(softswitch::set_limit("bgp-peers", 129));
  ASSERT_TRUE(softswitch::set_limit("bgp-peers", 0));
  EXPECT_EQ(set_as(linked, 1), OPEN_E_FULL);
}

/* --- Interfaces in use ---------------------------------------------------------------------------------- */

TEST_F(BgpPeer, InterfaceThatIsAScopeIsNotDeleted) {
  ASSERT_EQ(set_as({"fe80::2", lag}, 1), OPEN_E_NONE);
  ASSERT_EQ(set_as({"2001:db8::2", vlan10}, 1), OPEN_E_NONE);
  std::string before = softswitch::running_config();
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, lag), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 10), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_FAIL);
  EXPECT_EQ(softswitch::running_config(), before);
  ASSERT_EQ(commit("no bgp neighbor fe80::2%3/1"), OPEN_E_NONE);
  ASSERT_EQ(commit("no bgp neighbor 2001:db8::2%vlan10"), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, lag), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 10), OPEN_E_NONE);
}

TEST_F(BgpPeer, InterfaceThatIsAnUpdateSourceIsNotDeleted) {
  for (const peer_name &peer : {ipv4, global}) ASSERT_EQ(set_as(peer, 1), OPEN_E_NONE);
  ASSERT_EQ(set_update_source(ipv4, lag), OPEN_E_NONE);
  ASSERT_EQ(set_update_source(global, vlan10), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, lag), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 10), OPEN_E_FAIL);
  restart();
  ASSERT_EQ(set_update_source(ipv4, 0), OPEN_E_NONE);
  ASSERT_EQ(set_update_source(global, port), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, lag), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 10), OPEN_E_NONE);
}

TEST_F(BgpPeer, InterfaceOfNoPeerIsDeleted) {
  ASSERT_EQ(set_as({"fe80::2", lag}, 1), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiLagDeleteZYL(&handle, lag + 1), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiRtrVlanIntfDelete(&handle, 10), OPEN_E_NONE);
}

/* --- Storing -------------------------------------------------------------------------------------------- */

TEST_F(BgpPeer, NullPointersAreRefused) {
  const open_inet_addr_t *address = &ipv4.address;
  uint32_t value;
  ASSERT_EQ(set_as(ipv4, 1), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiBgpPeerRemoteASSet(&handle, nullptr, 0, 1), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBgpPeerRemoteASGet(&handle, nullptr, 0, &value), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBgpPeerRemoteASGet(&handle, address, 0, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBgpPeerActivateSet(&handle, nullptr, 0, 1, 1), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBgpPeerActivateGet(&handle, nullptr, 0, 1, &value), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBgpPeerActivateGet(&handle, address, 0, 1, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBgpPeerNextHopSelfModeSet(&handle, nullptr, 0, 1, 1), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBgpPeerNextHopSelfModeGet(&handle, nullptr, 0, 1, &value), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBgpPeerNextHopSelfModeGet(&handle, address, 0, 1, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBgpPeerUpdateSourceSet(&handle, nullptr, 0, 1), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBgpPeerUpdateSourceGet(&handle, nullptr, 0, &value), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBgpPeerUpdateSourceGet(&handle, address, 0, nullptr), OPEN_E_PARAM);
}

TEST_F(BgpPeer, HandleMustBeRegistered) {
  openapiClientHandle_t stranger = {};
  uint32_t value;
  EXPECT_EQ(rpcclt_openapiBgpLocalASSet(&stranger, 1), OPEN_E_RPC);
  EXPECT_EQ(rpcclt_openapiBgpLocalASGet(&stranger, &value), OPEN_E_RPC);
  EXPECT_EQ(rpcclt_openapiBgpPeerRemoteASSet(&stranger, &ipv4.address, 0, 1), OPEN_E_RPC);
  EXPECT_EQ(as_of(ipv4), OPEN_E_NOT_FOUND);
}

TEST_F(BgpPeer, SettingWhatIsSetAlreadyIsNoChange) {
  auto set_all = [&] {
    EXPECT_EQ(rpcclt_openapiBgpGlobalHoldTimeConfiguredSet(&handle, 9), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiBgpGlobalKeepAliveConfiguredSet(&handle, 3), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiBgpLocalASSet(&handle, 65000), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiBgpLocalIdSet(&handle, 1), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiBgpLocalPrefSet(&handle, 1), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiBgpLogNeighborChangesSet(&handle, 1), OPEN_E_NONE);
    EXPECT_EQ(originate("10.0.0.0", 8), OPEN_E_NONE);
    EXPECT_EQ(originate("11.0.0.0", 8, "map"), OPEN_E_NONE);
    EXPECT_EQ(set_as(ipv4, 1), OPEN_E_NONE);
    EXPECT_EQ(activate(ipv4, OPEN_AF_INET, 0), OPEN_E_NONE);
    EXPECT_EQ(activate(ipv4, OPEN_AF_INET6, 1), OPEN_E_NONE);
    EXPECT_EQ(set_next_hop_self(ipv4, OPEN_AF_INET, 1), OPEN_E_NONE);
    EXPECT_EQ(set_update_source(ipv4, port), OPEN_E_NONE);
    EXPECT_EQ(redistribute({.match_set = 1, .match_bits = 31, .metric_set = 1, .metric_value_set = 1}),
              OPEN_E_NONE);
  };
  set_all();
  take_and_hold();
  std::string journal = file_content(dir.path + "/journal-1");
  set_all();
  EXPECT_EQ(commit("no bgp neighbor 10.0.0.2 next-hop-self ipv6"), OPEN_E_NONE);
  EXPECT_EQ(file_content(dir.path + "/journal-1"), journal);
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
}

TEST_F(BgpPeer, NoSettingMakesAnInterfacePending) {
  take_and_hold();
  ASSERT_EQ(set_as(linked, 1), OPEN_E_NONE);
  ASSERT_EQ(set_update_source(linked, lag), OPEN_E_NONE);
  ASSERT_EQ(originate("10.0.0.0", 8), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
  EXPECT_EQ(pending_vlans(), std::vector<int>());
  softswitch::hold_apply(false);
  EXPECT_TRUE(softswitch::wait_applied(patience_ms));
}

TEST_F(BgpPeer, ChangeThatCannotBeStoredIsRefused) {
  ASSERT_EQ(set_as(ipv4, 1), OPEN_E_NONE);
  ASSERT_EQ(originate("10.0.0.0", 8), OPEN_E_NONE);
  ASSERT_EQ(redistribute({}), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiBgpLogNeighborChangesSet(&handle, 1), OPEN_E_NONE);
  take_and_hold();
  std::string before = softswitch::running_config();
  {
    full_disk full(file_content(dir.path + "/journal-1").size());
    EXPECT_EQ(rpcclt_openapiBgpGlobalHoldTimeConfiguredSet(&handle, 9), OPEN_E_FAIL);
    EXPECT_EQ(rpcclt_openapiBgpGlobalKeepAliveConfiguredSet(&handle, 3), OPEN_E_FAIL);
    EXPECT_EQ(rpcclt_openapiBgpLocalASSet(&handle, 65000), OPEN_E_FAIL);
    EXPECT_EQ(rpcclt_openapiBgpLocalIdSet(&handle, 1), OPEN_E_FAIL);
    EXPECT_EQ(rpcclt_openapiBgpLocalPrefSet(&handle, 1), OPEN_E_FAIL);
    EXPECT_EQ(rpcclt_openapiBgpLogNeighborChangesSet(&handle, 0), OPEN_E_FAIL);
    EXPECT_EQ(originate("11.0.0.0", 8), OPEN_E_FAIL);
    EXPECT_EQ(originate("10.0.0.0", 8, "map"), OPEN_E_FAIL);
    EXPECT_EQ(withdraw("10.0.0.0", 8), OPEN_E_FAIL);
    EXPECT_EQ(set_as(global, 1), OPEN_E_FAIL);
    EXPECT_EQ(activate(ipv4, OPEN_AF_INET, 0), OPEN_E_FAIL);
    EXPECT_EQ(set_next_hop_self(ipv4, OPEN_AF_INET, 1), OPEN_E_FAIL);
    EXPECT_EQ(set_update_source(ipv4, port), OPEN_E_FAIL);
    EXPECT_EQ(redistribute({.source = "rip"}), OPEN_E_FAIL);
    EXPECT_EQ(redistribute({.add = OPEN_FALSE}), OPEN_E_FAIL);
    EXPECT_EQ(rpcclt_openapiBgpLocalASSet(&handle, 0), OPEN_E_PARAM) << "what is refused anyway is so";
    EXPECT_EQ(set_as(ipv4, 1), OPEN_E_NONE) << "what is set already needs no room";
  }
  EXPECT_EQ(softswitch::running_config(), before);
  EXPECT_EQ(withdraw("10.0.0.0", 8), OPEN_E_NONE);
}

TEST_F(BgpPeer, ReloadReturnsToWhatWasSaved) {
  ASSERT_EQ(set_as({"fe80::2", vlan10}, 1), OPEN_E_NONE);
  ASSERT_EQ(originate("10.0.0.0", 8), OPEN_E_NONE);
  std::string error;
  ASSERT_TRUE(softswitch::save_startup_config(&error)) << error;
  std::string saved = softswitch::running_config();
  ASSERT_EQ(set_as(ipv4, 1), OPEN_E_NONE);
  ASSERT_EQ(withdraw("10.0.0.0", 8), OPEN_E_NONE);
  ASSERT_EQ(redistribute({}), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiBgpLocalASSet(&handle, 1), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_EQ(softswitch::running_config(), saved);
}

} // namespace
