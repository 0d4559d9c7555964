/* Tests of port MAC locking in the model: what no function of the C interface reaches yet. */
#include "platform/softswitch/model/switch.h"

#include <gtest/gtest.h>

using namespace softswitch;

namespace {

constexpr mac_address one = {0, 0, 0, 0, 0, 1};
constexpr mac_address two = {0, 0, 0, 0, 0, 2};

/* A switch with nothing pending and something locked on 0/1, 3/1 and 3/2. */
switch_model prepared() {
  switch_model model = make_switch(built_in_profile());
  EXPECT_EQ(mac_lock_set(model, 1, one, 1, false), OPEN_E_NONE);
  EXPECT_EQ(mac_lock_set(model, 56, two, 1, true), OPEN_E_NONE);
  EXPECT_EQ(mac_locking_set_sticky_mode(model, 56, true), OPEN_E_NONE);
  EXPECT_EQ(mac_locking_set_sticky_mode(model, 57, true), OPEN_E_NONE);
  changes_taken(model, model.change);
  return model;
}

bool is_pending(const switch_model &model, uint32_t interface) {
  return model.interfaces->at[interface].changed > model.applied;
}

TEST(MacLocking, ForgettingAnInterfaceReturnsItAloneToFactoryState) {
  switch_model model = prepared();
  mac_locks_forget(model, 56);
  EXPECT_EQ(mac_lock_interface(model, two, 1), 0u);
  EXPECT_FALSE(model.mac_locking->sticky_mode[56]);
  EXPECT_TRUE(is_pending(model, 56));
  EXPECT_EQ(mac_lock_interface(model, one, 1), 1u);
  EXPECT_TRUE(model.mac_locking->sticky_mode[57]);
  mac_locks_forget(model, 57);
  EXPECT_FALSE(model.mac_locking->sticky_mode[57]) << "sticky mode alone is forgotten too";
  EXPECT_TRUE(is_pending(model, 57));
  EXPECT_FALSE(is_pending(model, 1));
}

TEST(MacLocking, ForgettingWhatHasNothingLockedIsNoChange) {
  switch_model model = prepared();
  uint64_t before = model.change;
  mac_locks_forget(model, 2);
  mac_locks_release_vlan(model, 10);
  EXPECT_EQ(model.change, before);
  EXPECT_EQ(mac_lock_interface(model, one, 1), 1u);
}

TEST(MacLocking, ResetReleasesEverything) {
  switch_model model = prepared();
  switch_reset(model);
  EXPECT_EQ(mac_lock_interface(model, one, 1), 0u);
  EXPECT_EQ(mac_lock_interface(model, two, 1), 0u);
  EXPECT_TRUE(model.mac_locking->sticky_mode.none());
  for (uint32_t interface : {1u, 56u, 57u}) EXPECT_TRUE(is_pending(model, interface)) << interface;
}

TEST(MacLocking, FlagOfALockedAddressIsReplaced) {
  switch_model model = prepared();
  limit_override(&model.limits, "static-macs", 1);
  ASSERT_EQ(mac_lock_set(model, 1, one, 1, true), OPEN_E_NONE) << "which takes no more room";
  EXPECT_TRUE(mac_lock_next(model, 1, mac_address{}, 0)->sticky);
  EXPECT_EQ(mac_lock_next(model, 1, one, 1), nullptr);
  EXPECT_TRUE(is_pending(model, 1));
  EXPECT_EQ(mac_lock_set(model, 2, one, 1, true), OPEN_E_EXISTS);
}

TEST(MacLocking, CopyOfTheSwitchKeepsItsLocks) {
  switch_model model = prepared(), copy = model;
  EXPECT_EQ(&*copy.mac_locking, &*model.mac_locking) << "shared until one of them changes";
  mac_locks_forget(model, 1);
  EXPECT_EQ(mac_lock_interface(copy, one, 1), 1u);
  EXPECT_EQ(mac_lock_interface(model, one, 1), 0u);
}

} // namespace
