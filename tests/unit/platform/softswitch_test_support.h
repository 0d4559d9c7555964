/* What the tests of the switch's core share: a switch of their own that runs in a fresh state directory, and
 * the C interface with texts as strings. */
#ifndef KESTREL_TESTS_SOFTSWITCH_TEST_SUPPORT_H
#define KESTREL_TESTS_SOFTSWITCH_TEST_SUPPORT_H

#include "platform/api/openapi_if.h"
#include "platform/api/openapi_vlan.h"
#include "platform/softswitch/config/language.h"
#include "platform/softswitch/services/accounts.h"
#include "platform/softswitch/services/faults.h"
#include "platform/softswitch/softswitch.h"
#include "tests/support/full_disk.h"
#include "tests/unit/platform/services_test_support.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

/* Long enough for any machine; nothing waits as long unless it fails. */
inline constexpr int patience_ms = 20000;

/* An accounts file made once, so that not every switch of every test hashes a password. */
inline const std::string &prepared_accounts() {
  static const std::string content = [] {
    temporary_directory dir;
    std::string error;
    EXPECT_TRUE(softswitch::accounts_set(dir.path, "admin", "secret", 15, &error)) << error;
    return file_content(dir.path + "/accounts");
  }();
  return content;
}

/* A number and what it is refused with. */
struct refused_number {
  uint32_t number;
  open_error_t result;
};

/* Neither ports nor LAGs: other interfaces, and numbers that are no interface's. */
inline constexpr refused_number not_switching[] = {
    {55, OPEN_E_NOT_FOUND},  {120, OPEN_E_NOT_FOUND},   {127, OPEN_E_NOT_FOUND}, {226, OPEN_E_NOT_FOUND},
    {353, OPEN_E_NOT_FOUND}, {0, OPEN_E_PARAM},         {128, OPEN_E_PARAM},     {225, OPEN_E_PARAM},
    {354, OPEN_E_PARAM},     {UINT32_MAX, OPEN_E_PARAM}};
inline constexpr refused_number absent_vlans[] = {{2, OPEN_E_NOT_FOUND},
                                                  {4094, OPEN_E_NOT_FOUND},
                                                  {0, OPEN_E_PARAM},
                                                  {4095, OPEN_E_PARAM},
                                                  {UINT32_MAX, OPEN_E_PARAM}};

/* A running switch in factory state with a registered client. Every test ends with a restart that must give
 * the same running configuration. */
class SoftSwitch : public testing::Test {
protected:
  void SetUp() override {
    write_file(dir.path + "/accounts", prepared_accounts());
    setenv("KESTREL_STATE_DIR", dir.path.c_str(), 1);
    ASSERT_EQ(openapiClientRegister("test", &handle), OPEN_E_NONE);
  }

  void TearDown() override {
    softswitch::fault_clear_all();
    if (softswitch::is_running()) restart_keeps_configuration();
    softswitch::stop();
    unsetenv("KESTREL_STATE_DIR");
    unsetenv("KESTREL_PROFILE");
  }

  void restart() {
    std::string error;
    softswitch::stop();
    ASSERT_TRUE(softswitch::start(&error)) << error;
  }

  void restart_keeps_configuration() {
    std::string before = softswitch::running_config();
    restart();
    EXPECT_EQ(softswitch::running_config(), before);
  }

  /* Applies a line of the configuration language as a change. */
  static open_error_t commit(const std::string &line) {
    softswitch::locked_switch model;
    return softswitch::commit_line(*model, line);
  }

  std::string name_of(uint32_t vlan) {
    char buffer[64];
    open_buffdesc name = {sizeof buffer, buffer};
    EXPECT_EQ(rpcclt_openapiVlanNameGet(&handle, vlan, &name), OPEN_E_NONE);
    return std::string(buffer, name.size);
  }

  open_error_t set_name(uint32_t vlan, std::string text) {
    open_buffdesc name = {static_cast<uint32_t>(text.size()), text.data()};
    return rpcclt_openapiVlanNameSet(&handle, vlan, &name);
  }

  /* Ids of the VLANs with pending changes, deletions negative. */
  std::vector<int> pending_vlans() {
    std::vector<int> pending;
    uint32_t vlan = 0, deleted;
    while (openapiVlanNextChangedGet(&handle, vlan, &vlan, &deleted) == OPEN_E_NONE) {
      pending.push_back(deleted ? -static_cast<int>(vlan) : static_cast<int>(vlan));
    }
    return pending;
  }

  /* Numbers of the interfaces with pending changes, removals negative. */
  std::vector<int> pending_interfaces() {
    std::vector<int> pending;
    uint32_t interface = 0, removed;
    while (openapiIfNextChangedGet(&handle, interface, &interface, &removed) == OPEN_E_NONE) {
      pending.push_back(removed ? -static_cast<int>(interface) : static_cast<int>(interface));
    }
    return pending;
  }

  /* Lets the data plane take everything so far, and holds back what follows. */
  static void take_and_hold() {
    softswitch::hold_apply(false);
    ASSERT_TRUE(softswitch::wait_applied(patience_ms));
    softswitch::hold_apply(true);
  }

  /* The frame of random tests: rounds of changes, each round followed by a comparison, every fourth also by a
   * restart and another. `begin` prepares the switch after each start, the one before the first round too. */
  void change_through_restarts(int rounds, int steps, const std::function<void()> &begin,
                               const std::function<void()> &change, const std::function<void()> &compare) {
    begin();
    for (int round = 0; round < rounds; round++) {
      for (int step = 0; step < steps; step++) {
        change();
        if (HasFatalFailure()) FAIL() << "round " << round << ", step " << step;
      }
      compare();
      if (HasFatalFailure()) FAIL() << "after round " << round;
      if (round % 4 != 3) continue;
      restart();
      begin();
      compare();
      if (HasFatalFailure()) FAIL() << "after the restart of round " << round;
    }
  }

  temporary_directory dir;
  openapiClientHandle_t handle;
};

#endif
