/* Tests of BGP in the model: what no function of the C interface reaches. */
#include "platform/softswitch/model/switch.h"

#include <gtest/gtest.h>

using namespace softswitch;

namespace {

const bgp_peer_id one = {inet_ipv4(0x0a000002), 0};

/* A switch with nothing pending and something of everything in BGP. */
switch_model prepared() {
  switch_model model = make_switch(built_in_profile());
  EXPECT_EQ(bgp_set(model, &bgp_speaker::local_as, 65000), OPEN_E_NONE);
  EXPECT_EQ(bgp_add_network(model, {inet_ipv4(0x0a000000), 8, 0}, "out"), OPEN_E_NONE);
  EXPECT_EQ(bgp_set_remote_as(model, one, 65001), OPEN_E_NONE);
  EXPECT_EQ(bgp_set_update_source(model, one, 56), OPEN_E_NONE);
  EXPECT_EQ(bgp_redistribute(model, OPEN_AF_INET6, bgp_source_ospf, {}), OPEN_E_NONE);
  changes_taken(model, model.change);
  return model;
}

TEST(BgpModel, ResetReturnsEverythingToFactoryState) {
  switch_model model = prepared();
  switch_reset(model);
  EXPECT_EQ(model.bgp->speaker.local_as, 0u);
  EXPECT_TRUE(model.bgp->networks.empty());
  EXPECT_TRUE(model.bgp->peers.empty());
  for (const auto &family : model.bgp->redistributions) {
    for (const auto &source : family) EXPECT_FALSE(source);
  }
  EXPECT_FALSE(bgp_uses_interface(model, 56));
  EXPECT_FALSE(interface_in_use(model, 56));
}

TEST(BgpModel, CopyOfTheSwitchKeepsItsPeers) {
  switch_model model = prepared(), copy = model;
  EXPECT_EQ(&*copy.bgp, &*model.bgp) << "shared until one of them changes";
  ASSERT_EQ(bgp_remove_peer(model, one), OPEN_E_NONE);
  EXPECT_EQ(bgp_peer_find(model, one), nullptr);
  EXPECT_NE(bgp_peer_find(copy, one), nullptr);
}

TEST(BgpModel, OnlyAChangeIsCounted) {
  switch_model model = prepared();
  uint64_t before = model.change;
  EXPECT_EQ(bgp_set(model, &bgp_speaker::local_as, 65000), OPEN_E_NONE);
  EXPECT_EQ(bgp_add_network(model, {inet_ipv4(0x0a010203), 8, 0}, "out"), OPEN_E_NONE);
  EXPECT_EQ(bgp_set_remote_as(model, one, 65001), OPEN_E_NONE);
  EXPECT_EQ(bgp_set_update_source(model, one, 56), OPEN_E_NONE);
  EXPECT_EQ(bgp_redistribute(model, OPEN_AF_INET6, bgp_source_ospf, {}), OPEN_E_NONE);
  bgp_restore(model, &bgp_speaker::hold_time);
  EXPECT_EQ(model.change, before);
  bgp_restore(model, &bgp_speaker::local_as);
  EXPECT_EQ(model.change, before + 1);
}

TEST(BgpModel, InterfaceIsUsedAsScopeAndAsUpdateSource) {
  switch_model model = prepared();
  bgp_peer_id linked = {};
  ASSERT_TRUE(inet_address_read("fe80::2", &linked.address));
  linked.scope = 57;
  ASSERT_EQ(bgp_set_remote_as(model, linked, 1), OPEN_E_NONE);
  for (uint32_t interface = 1; interface <= interface_last; interface++) {
    bool used = interface == 56 || interface == 57;
    EXPECT_EQ(bgp_uses_interface(model, interface), used) << interface;
    EXPECT_EQ(interface_in_use(model, interface), used) << interface;
  }
}

/* --- Masks ---------------------------------------------------------------------------------------------- */

TEST(InetMasked, BitsBehindThePrefixAreZero) {
  const std::pair<const char *, const char *> rows[] = {
      {"255.255.255.255/0", "0.0.0.0/0"},
      {"255.255.255.255/1", "128.0.0.0/1"},
      {"10.1.2.3/8", "10.0.0.0/8"},
      {"10.1.2.255/27", "10.1.2.224/27"},
      {"10.1.2.3/31", "10.1.2.2/31"},
      {"10.1.2.3/32", "10.1.2.3/32"},
      {"ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/0", "::/0"},
      {"ffff::1/1", "8000::/1"},
      {"2001:db8:ffff::1/33", "2001:db8:8000::/33"},
      {"2001:db8::ffff/120", "2001:db8::ff00/120"},
      {"2001:db8::ffff/127", "2001:db8::fffe/127"},
      {"2001:db8::ffff/128", "2001:db8::ffff/128"},
  };
  for (const auto &[text, expected] : rows) {
    open_inet_pfx_t prefix = {};
    ASSERT_TRUE(inet_prefix_read(text, &prefix)) << text;
    EXPECT_EQ(inet_prefix_text(inet_masked(prefix)), expected) << text;
  }
}

} // namespace
