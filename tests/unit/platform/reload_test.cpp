/* Tests of reloading: what each mode brings, what goes on meanwhile, what a crash or a full disk leaves; and
 * of whether anything is unsaved. */
#include "platform/api/openapi_stat.h"
#include "platform/api/openapi_system.h"
#include "platform/softswitch/softswitch_state.h"
#include "tests/unit/platform/softswitch_test_support.h"

#include <atomic>
#include <random>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace softswitch;

namespace {

constexpr uint32_t counter_id = 13; /* CTR_RX_UCAST_FRAMES */

class Reload : public SoftSwitch {
protected:
  void SetUp() override {
    SoftSwitch::SetUp();
    ASSERT_TRUE(set_limit("reload-milliseconds", 0));
  }

  uint32_t ready() {
    uint32_t value = 9;
    EXPECT_EQ(openapiSystemReadyStateGet(&handle, &value), OPEN_E_NONE);
    return value;
  }

  void wait_until_ready() {
    for (int waited = 0; ready() == 0; waited++) {
      ASSERT_LT(waited, patience_ms) << "never ready again";
      usleep(1000);
    }
  }

  void order(uint32_t mode) { ASSERT_EQ(rpcclt_openapiSystemReloadSet(&handle, mode), OPEN_E_NONE); }

  void order_and_wait(uint32_t mode) {
    order(mode);
    wait_until_ready();
  }

  uint32_t unsaved() {
    OPEN_BOOL_t value = 9;
    EXPECT_EQ(rpcclt_openapiSystemUnsavedConfigStatusGet(&handle, &value), OPEN_E_NONE);
    return value;
  }

  void save() {
    std::string error;
    ASSERT_TRUE(save_startup_config(&error)) << error;
  }

  bool exists(const std::string &name) { return access((dir.path + "/" + name).c_str(), F_OK) == 0; }

  const std::string startup = "vlan 10,20\ninterface 0/1 pvid 10\n";
};

/* --- The modes ------------------------------------------------------------------------------------------ */

TEST_F(Reload, OtherModesAreRefusedAndNothingHappens) {
  for (uint32_t mode : {0u, 4u, UINT32_MAX}) {
    std::string error;
    EXPECT_EQ(rpcclt_openapiSystemReloadSet(&handle, mode), OPEN_E_PARAM) << mode;
    EXPECT_FALSE(reload(&error, mode)) << mode;
    EXPECT_EQ(error, "no mode of reloading");
  }
  EXPECT_EQ(ready(), 1u);
  EXPECT_EQ(file_content(dir.path + "/log").find("reload"), std::string::npos);
}

TEST_F(Reload, ReloadBringsTheStartupConfigurationBack) {
  ASSERT_EQ(commit("vlan 30"), OPEN_E_NONE);
  write_file(dir.path + "/startup-config", startup);
  order_and_wait(OPEN_RELOAD);
  EXPECT_EQ(running_config(), startup);
  restart_keeps_configuration();
}

TEST_F(Reload, ReloadWithoutStartupConfigurationGivesFactoryState) {
  ASSERT_EQ(commit("vlan 30"), OPEN_E_NONE);
  ASSERT_EQ(commit("hostname leaf1"), OPEN_E_NONE);
  ASSERT_EQ(commit("ssh server"), OPEN_E_NONE);
  order_and_wait(OPEN_RELOAD);
  EXPECT_EQ(running_config(), "");
}

TEST_F(Reload, WarmReloadHandsTheRunningConfigurationToTheDataPlaneAnew) {
  write_file(dir.path + "/startup-config", startup);
  ASSERT_EQ(commit("vlan 30"), OPEN_E_NONE);
  take_and_hold();
  order_and_wait(OPEN_RELOAD_WARM);
  EXPECT_EQ(running_config(), "vlan 30\n");
  EXPECT_FALSE(wait_applied(0)) << "the data plane has not taken it yet";
  EXPECT_EQ(pending_vlans(), std::vector<int>()) << "no VLAN has changed";
  hold_apply(false);
  EXPECT_TRUE(wait_applied(patience_ms));
  EXPECT_EQ(file_content(dir.path + "/startup-config"), startup);
}

TEST_F(Reload, FactoryResetRemovesWhatIsStoredAndKeepsAccountsAndLog) {
  std::string accounts = file_content(dir.path + "/accounts");
  for (const char *folder : {"/scripts", "/images"}) mkdir((dir.path + folder).c_str(), 0700);
  for (const char *name : {"startup-config", "backup-config", "scripts/a.scr", "images/active"})
    write_file(dir.path + "/" + name, startup);
  ASSERT_EQ(commit("vlan 30"), OPEN_E_NONE);
  order_and_wait(OPEN_RELOAD_FACTORY);
  EXPECT_EQ(running_config(), "");
  for (const char *name :
       {"startup-config", "backup-config", "scripts/a.scr", "images/active", "factory-reset"})
    EXPECT_FALSE(exists(name)) << name;
  EXPECT_EQ(file_content(dir.path + "/accounts"), accounts);
  EXPECT_NE(file_content(dir.path + "/log"), "");
  restart_keeps_configuration();
}

TEST_F(Reload, WhatIsNoConfigurationStays) {
  std::string error;
  ASSERT_TRUE(set_cabled("0/7", false));
  ASSERT_TRUE(set_time_range("night", 1));
  ASSERT_TRUE(offer_lease("0/2", "10.0.0.1/24", &error)) << error;
  ASSERT_TRUE(set_ssh_sessions(3));
  ASSERT_TRUE(change_counter("0/1", "CTR_RX_UCAST_FRAMES", counter_set, 42, &error)) << error;
  for (uint32_t mode : {OPEN_RELOAD, OPEN_RELOAD_WARM, OPEN_RELOAD_FACTORY}) {
    order_and_wait(mode);
    locked_switch model;
    EXPECT_FALSE(model->interfaces->at[7].cabled) << mode;
    EXPECT_EQ(model->time_ranges->states.size(), 1u) << mode;
    EXPECT_EQ(model->leases->by_interface.size(), 1u) << mode;
    EXPECT_EQ(model->ssh_sessions, 3u) << mode;
    EXPECT_EQ(counter_at(*model, 1, counter_id, 0).value, 42u) << mode;
    EXPECT_EQ(model->limits.reload_milliseconds, 0u) << mode;
  }
}

TEST_F(Reload, BadStartupConfigurationLeavesTheRunningOneAndIsLogged) {
  ASSERT_EQ(commit("vlan 30"), OPEN_E_NONE);
  write_file(dir.path + "/startup-config", "vlan 10\nvlan 20 name x\n");
  order_and_wait(OPEN_RELOAD);
  EXPECT_EQ(running_config(), "vlan 30\n");
  EXPECT_NE(
      file_content(dir.path + "/log")
          .find("the switch cannot reload: " + dir.path + "/startup-config, line 2: VLAN 20 does not exist"),
      std::string::npos);
}

TEST_F(Reload, EachReloadIsLogged) {
  order_and_wait(OPEN_RELOAD);
  order_and_wait(OPEN_RELOAD_WARM);
  order_and_wait(OPEN_RELOAD_FACTORY);
  std::string log = file_content(dir.path + "/log");
  size_t at = 0;
  for (const char *with : {"the startup configuration", "the running configuration", "factory state"}) {
    for (const char *what : {"a reload is ordered with ", "reloading with ", "reloaded with "}) {
      at = log.find(std::string(what) + with, at);
      ASSERT_NE(at, std::string::npos) << what << with << "\n" << log;
    }
  }
}

/* --- Meanwhile ------------------------------------------------------------------------------------------ */

/* A reload that has begun and goes on when the test says so. */
class ReloadUnderWay : public Reload {
protected:
  /* Begins a reload, which cannot end while, so it seems, a snapshot is being written. */
  void begin_reload() {
    write_file(dir.path + "/startup-config", startup);
    set_compacting(true);
    order(OPEN_RELOAD);
    while (waits()) usleep(1000);
  }

  void let_go_on() { set_compacting(false); }

private:
  void set_compacting(bool compacting) {
    running_switch &sw = the_switch();
    std::lock_guard guard(sw.lock);
    sw.compacting = compacting;
    sw.idle.notify_all();
  }

  /* Whether a reload waits for its time. */
  bool waits() {
    std::lock_guard guard(the_switch().lock);
    return the_switch().reload_request != 0;
  }
};

TEST_F(ReloadUnderWay, SwitchIsNotReadyAndWorksOn) {
  begin_reload();
  EXPECT_EQ(ready(), 0u);
  EXPECT_EQ(commit("vlan 30"), OPEN_E_NONE);
  EXPECT_EQ(running_config(), "vlan 30\n");
  EXPECT_EQ(ready(), 0u);
  let_go_on();
  wait_until_ready();
  EXPECT_EQ(running_config(), startup);
}

TEST_F(ReloadUnderWay, FurtherOneIsCarriedOutAfterIt) {
  begin_reload();
  order(OPEN_RELOAD_FACTORY);
  let_go_on();
  wait_until_ready();
  EXPECT_EQ(running_config(), "");
  EXPECT_FALSE(exists("startup-config"));
  EXPECT_NE(file_content(dir.path + "/log").find("reloaded with the startup configuration"),
            std::string::npos);
}

TEST_F(ReloadUnderWay, OfThoseThatWaitTheLastCounts) {
  begin_reload();
  order(OPEN_RELOAD_FACTORY);
  order(OPEN_RELOAD_WARM);
  let_go_on();
  wait_until_ready();
  EXPECT_EQ(running_config(), startup);
  EXPECT_TRUE(exists("startup-config"));
  std::string log = file_content(dir.path + "/log");
  EXPECT_EQ(log.find("reloaded with factory state"), std::string::npos);
  EXPECT_NE(log.find("reloaded with the running configuration"), std::string::npos);
}

TEST_F(ReloadUnderWay, StoppingWaitsForItsEnd) {
  begin_reload();
  std::thread helper([&] {
    while (is_running()) usleep(1000);
    let_go_on();
  });
  stop();
  helper.join();
  unlink((dir.path + "/startup-config").c_str());
  std::string error;
  ASSERT_TRUE(start(&error)) << error;
  EXPECT_EQ(running_config(), startup);
}

TEST_F(Reload, OneThatWaitsWhenTheSwitchStopsIsNotCarriedOut) {
  ASSERT_EQ(commit("vlan 30"), OPEN_E_NONE);
  {
    running_switch &sw = the_switch();
    std::lock_guard guard(sw.lock);
    sw.reload_request = OPEN_RELOAD_FACTORY;
    sw.reload_ending = true;
    sw.reload_wake.notify_all();
  }
  restart();
  EXPECT_EQ(running_config(), "vlan 30\n");
  EXPECT_EQ(ready(), 1u);
}

/* Changes of the configuration and of the world outside, one after the other, until it goes. */
class busy_world {
public:
  busy_world() : thread([this] { run(); }) {}
  ~busy_world() { end(); }
  void end() {
    ending = true;
    if (thread.joinable()) thread.join();
  }
  std::atomic<int> rounds{0};

private:
  void run() {
    std::string error;
    while (!ending) {
      std::string vlan = std::to_string(2 + rounds % 2000);
      locked_switch model;
      EXPECT_EQ(commit_line(*model, "vlan " + vlan), OPEN_E_NONE);
      EXPECT_EQ(counter_add(*model, 1, counter_id, 1, 0), OPEN_E_NONE);
      rounds++;
    }
  }
  std::atomic<bool> ending{false};
  std::thread thread;
};

TEST_F(Reload, ScriptsLoseNoChangeThatIsMadeMeanwhile) {
  busy_world world;
  int scripts = 0;
  for (; scripts < 8 || (world.rounds <= 8 && scripts < 1000); scripts++) {
    std::string error, vlan = std::to_string(3000 + scripts);
    ASSERT_TRUE(apply_configuration("vlan " + vlan + "\nvlan " + vlan + " name script\n", &error)) << error;
  }
  world.end();
  ASSERT_GT(world.rounds, 8);
  locked_switch model;
  EXPECT_EQ(counter_at(*model, 1, counter_id, 0).value, static_cast<uint64_t>(world.rounds.load()));
  for (int round = 0; round < scripts; round++)
    EXPECT_TRUE(vlan_exists(*model, static_cast<uint32_t>(3000 + round))) << round;
  for (int made = 0; made < std::min(world.rounds.load(), 2000); made++)
    ASSERT_TRUE(vlan_exists(*model, static_cast<uint32_t>(2 + made))) << made;
}

TEST_F(Reload, ReloadsComeToAnEndWhileChangesGoOn) {
  write_file(dir.path + "/startup-config", startup);
  ASSERT_TRUE(set_limit("settle-milliseconds", 0));
  ASSERT_TRUE(set_limit("journal-bytes", 100));
  busy_world world;
  for (int round = 0; round < 3; round++) {
    for (uint32_t mode : {OPEN_RELOAD, OPEN_RELOAD_WARM}) order_and_wait(mode);
    unsaved();
  }
  world.end();
  locked_switch model;
  EXPECT_TRUE(vlan_exists(*model, 10));
  EXPECT_EQ(counter_at(*model, 1, counter_id, 0).value, static_cast<uint64_t>(world.rounds.load()));
}

/* --- Crashes and full disks ----------------------------------------------------------------------------- */

TEST_F(Reload, FactoryResetThatWasCutShortIsCompletedAtTheNextStart) {
  ASSERT_EQ(commit("vlan 30"), OPEN_E_NONE);
  save();
  write_file(dir.path + "/backup-config", startup);
  stop();
  write_file(dir.path + "/factory-reset", "");
  std::string error;
  ASSERT_TRUE(start(&error)) << error;
  EXPECT_EQ(running_config(), "");
  for (const char *name : {"startup-config", "backup-config", "factory-reset"})
    EXPECT_FALSE(exists(name)) << name;
  EXPECT_EQ(commit("vlan 40"), OPEN_E_NONE);
  restart_keeps_configuration();
}

/* What the child does until it is killed. */
[[noreturn]] void reset_and_wait(int begun) {
  std::string error;
  if (!start(&error)) _exit(1);
  {
    locked_switch model;
    if (commit_line(*model, "vlan 30") != OPEN_E_NONE) _exit(2);
  }
  if (!save_startup_config(&error) || write(begun, "+", 1) != 1) _exit(3);
  reload(&error, OPEN_RELOAD_FACTORY);
  for (;;) pause();
}

TEST_F(Reload, KilledInAFactoryResetTheSwitchIsAsBeforeOrAsAfter) {
  std::mt19937 random(7);
  int before = 0;
  stop();
  for (int round = 0; round < 12; round++) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    pid_t child = fork();
    if (child == 0) reset_and_wait(ends[1]);
    close(ends[1]);
    char told;
    ASSERT_EQ(read(ends[0], &told, 1), 1);
    close(ends[0]);
    usleep(std::uniform_int_distribution<unsigned>(0, 4000)(random));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the child ended by itself with " << WEXITSTATUS(status);
    std::string error;
    ASSERT_TRUE(start(&error)) << error;
    bool as_before = running_config() == "vlan 30\n";
    before += as_before;
    EXPECT_EQ(running_config(), as_before ? "vlan 30\n" : "");
    EXPECT_EQ(exists("startup-config"), as_before) << "round " << round;
    EXPECT_FALSE(exists("factory-reset"));
    stop();
  }
  std::string error;
  ASSERT_TRUE(start(&error)) << error;
  RecordProperty("as_before", before);
}

TEST_F(Reload, FullDiskLeavesEverythingAsItWas) {
  ASSERT_EQ(commit("vlan 30"), OPEN_E_NONE);
  write_file(dir.path + "/startup-config", startup);
  {
    full_disk full(1);
    for (uint32_t mode : {OPEN_RELOAD, OPEN_RELOAD_FACTORY}) {
      std::string error;
      EXPECT_FALSE(reload(&error, mode)) << mode;
      EXPECT_NE(error, "");
      order_and_wait(mode);
      EXPECT_EQ(running_config(), "vlan 30\n") << mode;
      EXPECT_FALSE(exists("factory-reset"));
    }
  }
  EXPECT_EQ(file_content(dir.path + "/startup-config"), startup);
  restart_keeps_configuration();
}

/* --- What is not saved ---------------------------------------------------------------------------------- */

TEST_F(Reload, FactoryStateIsSaved) {
  EXPECT_EQ(unsaved(), 0u);
  write_file(dir.path + "/startup-config", "! nothing\n");
  EXPECT_EQ(unsaved(), 0u);
}

TEST_F(Reload, ChangesAreUnsavedUntilTheyAreSavedOrTakenBack) {
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  EXPECT_EQ(unsaved(), 1u);
  EXPECT_EQ(unsaved(), 1u) << "asked again";
  save();
  EXPECT_EQ(unsaved(), 0u);
  ASSERT_EQ(commit("hostname leaf1"), OPEN_E_NONE);
  EXPECT_EQ(unsaved(), 1u);
  ASSERT_EQ(commit("no hostname"), OPEN_E_NONE);
  EXPECT_EQ(unsaved(), 0u);
  restart();
  EXPECT_EQ(unsaved(), 0u);
  ASSERT_EQ(commit("vlan 20"), OPEN_E_NONE);
  restart();
  EXPECT_EQ(unsaved(), 1u);
}

TEST_F(Reload, StartupConfigurationCountsByWhatItGives) {
  ASSERT_EQ(commit("vlan 10,20"), OPEN_E_NONE);
  const std::pair<const char *, uint32_t> rows[] = {
      {"vlan 10,20\n", 0},
      {"! by hand\nvlan 20\nvlan 10\n", 0},
      {"vlan 10-30\r\nno vlan 21-30,11-19", 0},
      {"vlan 10\n", 1},
      {"vlan 10,20,30\n", 1},
      {"vlan 10,20\nhostname leaf1\n", 1},
      {"vlan 10,20\nno such line\n", 1},
      {"", 1},
  };
  for (const auto &[text, expected] : rows) {
    write_file(dir.path + "/startup-config", text);
    EXPECT_EQ(unsaved(), expected) << text;
    std::string error;
    ASSERT_TRUE(replace_startup_config(text, &error)) << error;
    EXPECT_EQ(unsaved(), expected) << text;
  }
  unlink((dir.path + "/startup-config").c_str());
  EXPECT_EQ(unsaved(), 1u);
}

TEST_F(Reload, StartupConfigurationThatCannotBeReadGivesNothing) {
  ASSERT_EQ(mkdir((dir.path + "/startup-config").c_str(), 0700), 0);
  EXPECT_EQ(unsaved(), 1u);
}

TEST_F(Reload, WhatIsNoRegularFileIsNoStartupConfiguration) {
  temporary_directory elsewhere;
  std::string path = dir.path + "/startup-config", error;
  write_file(elsewhere.path + "/text", "vlan 10\n");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(unsaved(), 1u);
  EXPECT_FALSE(reload(&error));
  EXPECT_EQ(error, path + ": not a regular file");
  ASSERT_EQ(unlink(path.c_str()), 0);
  ASSERT_EQ(symlink((elsewhere.path + "/text").c_str(), path.c_str()), 0);
  EXPECT_EQ(unsaved(), 1u);
  EXPECT_FALSE(reload(&error));
  EXPECT_EQ(error, path + ": Too many levels of symbolic links");
  EXPECT_EQ(running_config(), "");
}

TEST_F(Reload, LoweredLimitCountsToo) {
  ASSERT_EQ(commit("vlan 10,20"), OPEN_E_NONE);
  write_file(dir.path + "/startup-config", "vlan 10,20,30\nno vlan 30\n");
  EXPECT_EQ(unsaved(), 0u);
  ASSERT_TRUE(set_limit("vlans", 3));
  EXPECT_EQ(unsaved(), 1u) << "there is no room for VLAN 30 on the way";
}

TEST_F(Reload, AfterAReloadNothingIsUnsaved) {
  for (uint32_t mode : {OPEN_RELOAD, OPEN_RELOAD_FACTORY}) {
    write_file(dir.path + "/startup-config", startup);
    ASSERT_EQ(commit("vlan 30"), OPEN_E_NONE);
    order_and_wait(mode);
    EXPECT_EQ(unsaved(), 0u) << mode;
  }
}

TEST_F(Reload, WarmReloadSavesNothing) {
  ASSERT_EQ(commit("vlan 30"), OPEN_E_NONE);
  order_and_wait(OPEN_RELOAD_WARM);
  EXPECT_EQ(unsaved(), 1u);
}

} // namespace
