/* Tests of what the data plane is given and what it reports back. */
#include "platform/softswitch/dataplane/driver.h"

#include "tests/unit/platform/softswitch_test_support.h"

using namespace softswitch;

namespace {

TEST(WantedState, HoldsWhatMovesPacketsAndNothingElse) {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  ASSERT_TRUE(apply_text(model,
                         "vlan 10,20\nvlan 10 name blue\n"
                         "interface 0/1 vlan 10 participation include\ninterface 0/1 vlan 10 tagging\n"
                         "interface 0/2 vlan 10 tagging\ninterface 3/1 vlan 20 participation include\n"
                         "interface 0/3 pvid 20\ninterface 0/3 accept-frames untagged\nno vlan 20\nvlan 30\n",
                         &error))
      << error;
  std::unique_ptr<const wanted_state> wanted = compile_wanted(model);
  ASSERT_EQ(wanted->vlans.size(), 3u);
  EXPECT_EQ(wanted->vlans[0].id, 1);
  EXPECT_EQ(wanted->vlans[0].members.count(), 54u + 64u);
  EXPECT_EQ(wanted->vlans[1].id, 10);
  EXPECT_EQ(wanted->vlans[1].members, member_set().set(1));
  EXPECT_EQ(wanted->vlans[1].tagged, member_set().set(1)) << "port 2 is tagged but no member";
  EXPECT_EQ(wanted->vlans[2].id, 30);
  EXPECT_EQ(wanted->vlans[2].members, member_set());
  EXPECT_EQ(wanted->ports[3].pvid, 1) << "VLAN 20 was deleted";
  EXPECT_EQ(wanted->ports[3].accept_frames, OPEN_DOT1Q_ADMIT_ONLY_VLAN_UNTAGGED);
  EXPECT_TRUE(wanted->ports[3].enabled);
  EXPECT_FALSE(wanted->ports[55].enabled);
}

TEST(WantedState, PortsInSoftShutdownAreNotEnabled) {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  ASSERT_TRUE(apply_text(model, "interface 0/2 soft-shutdown\ninterface 3/1 shutdown\n", &error)) << error;
  std::unique_ptr<const wanted_state> wanted = compile_wanted(model);
  EXPECT_TRUE(wanted->ports[1].enabled);
  EXPECT_FALSE(wanted->ports[2].enabled);
  EXPECT_FALSE(wanted->ports[56].enabled);
}

TEST(WantedState, FollowsSwitchportModesAndLags) {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  ASSERT_TRUE(
      apply_text(model,
                 "vlan 10,20\n"
                 "interface 0/1 switchport mode access\ninterface 0/1 switchport access vlan 10\n"
                 "interface 0/2 switchport mode trunk\ninterface 0/2 switchport trunk native vlan 20\n"
                 "interface 0/2 switchport trunk vlans add 10-30\n"
                 "interface 0/3 vlan 10 participation include\ninterface 0/3 lag 1\n"
                 "interface 0/4 switchport mode access\ninterface 0/4 lag 1\n"
                 "interface 3/1 vlan 10 participation include\ninterface 3/1 vlan 10 tagging\n"
                 "no lag 64\n",
                 &error))
      << error;
  std::unique_ptr<const wanted_state> wanted = compile_wanted(model);
  ASSERT_EQ(wanted->vlans.size(), 3u);
  EXPECT_EQ(wanted->vlans[0].members.count(), 54u + 64u - 5u) << "without 0/1 to 0/4 and 3/64";
  EXPECT_EQ(wanted->vlans[1].members, member_set().set(1).set(2).set(56));
  EXPECT_EQ(wanted->vlans[1].tagged, member_set().set(2).set(56));
  EXPECT_EQ(wanted->vlans[2].members, member_set().set(2));
  EXPECT_EQ(wanted->vlans[2].tagged, member_set());
  EXPECT_EQ(wanted->ports[1].pvid, 10);
  EXPECT_EQ(wanted->ports[2].pvid, 20);
  EXPECT_EQ(wanted->ports[2].lag, 0);
  EXPECT_EQ(wanted->ports[3].lag, 56);
  EXPECT_EQ(wanted->ports[4].lag, 56);
  EXPECT_TRUE(wanted->ports[56].enabled);
  EXPECT_FALSE(wanted->ports[119].enabled) << "there is no such LAG";
}

TEST(NoneDriver, LinkIsUpWhenPortIsEnabledAndConnected) {
  switch_model model = make_switch(built_in_profile());
  interface_edit(model, 2)->enabled = false;
  none_driver.take(compile_wanted(model));
  EXPECT_TRUE(none_driver.link_up(1, true));
  EXPECT_FALSE(none_driver.link_up(1, false));
  EXPECT_FALSE(none_driver.link_up(2, true));
  none_driver.take(nullptr);
  EXPECT_FALSE(none_driver.link_up(1, true)) << "a driver without a state moves nothing";
}

class Links : public SoftSwitch {
protected:
  static bool link_up(uint32_t port) {
    locked_switch model;
    return model->interfaces->at[port].link_up;
  }
};

TEST_F(Links, CabledPortsAreUpAtStart) {
  for (uint32_t port = 1; port <= 54; port++) EXPECT_TRUE(link_up(port)) << port;
}

TEST_F(Links, PullingTheCableTakesTheLinkDownAtOnceAndIsNoChange) {
  hold_apply(true);
  EXPECT_TRUE(set_cabled("0/7", false));
  EXPECT_FALSE(link_up(7));
  EXPECT_TRUE(link_up(8));
  EXPECT_TRUE(wait_applied(0)) << "nothing is pending";
  EXPECT_TRUE(set_cabled("0/7", true));
  EXPECT_TRUE(link_up(7));
}

TEST_F(Links, OnlyPortsHaveCables) {
  for (const char *name : {"", "0/55", "cpu", "3/1", "loopback0", "1"})
    EXPECT_FALSE(set_cabled(name, false)) << name;
}

TEST_F(Links, DisabledPortGoesDownWhenTheDataPlaneHasTakenTheChange) {
  hold_apply(true);
  ASSERT_EQ(commit("interface 0/9 shutdown"), OPEN_E_NONE);
  EXPECT_TRUE(link_up(9));
  hold_apply(false);
  ASSERT_TRUE(wait_applied(patience_ms));
  EXPECT_FALSE(link_up(9));
}

TEST_F(Links, CablesSurviveAReloadOfTheConfiguration) {
  std::string error;
  ASSERT_TRUE(set_cabled("0/7", false));
  ASSERT_TRUE(reload(&error)) << error;
  ASSERT_TRUE(wait_applied(patience_ms));
  EXPECT_FALSE(link_up(7));
  EXPECT_TRUE(link_up(8));
}

} // namespace
