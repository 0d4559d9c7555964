/* Tests of what survives: kills at any moment, full disks, compaction while changes go on, saving and
 * reloading. */
#include "tests/support/full_disk.h"
#include "tests/unit/platform/softswitch_test_support.h"

#include <random>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace softswitch;

namespace {

/* The generation of the snapshot on disk. */
uint64_t generation_in(const std::string &dir) {
  uint64_t generation = 0;
  sscanf(file_content(dir + "/running-config").c_str(), "! generation %lu\n", &generation);
  return generation;
}

/* The n-th line of an endless sequence of which each applies after those before. */
std::string line_number(unsigned n) {
  unsigned round = n / 4;
  std::string vlan = std::to_string(2 + round % 300), port = "0/" + std::to_string(1 + round % 54);
  switch (n % 4) {
  case 0:
    return "vlan " + vlan;
  case 1:
    return "vlan " + vlan + " name \"change " + std::to_string(n) + "\"";
  case 2:
    return "interface " + port + " pvid " + vlan;
  default:
    return round % 3 == 0 ? "no vlan " + vlan : "interface " + port + " vlan 1," + vlan + " tagging";
  }
}

/* --- Killed at any moment ------------------------------------------------------------------------------- */

class Killed : public testing::Test {
protected:
  void SetUp() override {
    write_file(dir.path + "/accounts", prepared_accounts());
    setenv("KESTREL_STATE_DIR", dir.path.c_str(), 1);
  }
  void TearDown() override {
    stop();
    unsetenv("KESTREL_STATE_DIR");
  }
  temporary_directory dir;
};

/* What the child does until it is killed: change after change, each told when it was acknowledged. */
[[noreturn]] void change_endlessly(unsigned first, int acknowledged) {
  std::string error;
  if (!start(&error)) _exit(1);
  set_limit("settle-milliseconds", 0);
  set_limit("journal-bytes", 100);
  for (unsigned n = first;; n++) {
    {
      locked_switch model;
      if (commit_line(*model, line_number(n)) != OPEN_E_NONE) _exit(2);
    }
    if (write(acknowledged, "+", 1) != 1) _exit(3);
    /* Once in a while everything is taken, which lets the thread get to compacting. */
    if (n % 16 == 0) wait_applied(patience_ms);
  }
}

/* Lets a child make changes from number `first` on and kills it at a random moment. Says how many it told of.
 */
unsigned acknowledged_before_kill(unsigned first, std::mt19937 &random) {
  int ends[2];
  if (pipe(ends) != 0) return 0;
  pid_t child = fork();
  if (child == 0) change_endlessly(first, ends[1]);
  close(ends[1]);
  unsigned count = 0, wanted = std::uniform_int_distribution<unsigned>(1, 80)(random);
  char told[4096];
  ssize_t size;
  while (count < wanted && (size = read(ends[0], told, 1)) > 0) count++;
  usleep(std::uniform_int_distribution<unsigned>(0, 1500)(random));
  kill(child, SIGKILL);
  while ((size = read(ends[0], told, sizeof told)) > 0) count += static_cast<unsigned>(size);
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status)) << "the child ended by itself with " << WEXITSTATUS(status);
  return count;
}

TEST_F(Killed, EveryAcknowledgedChangeIsThereAfterwards) {
  std::mt19937 random(4711);
  switch_model expected = make_switch(built_in_profile());
  std::string error;
  unsigned done = 0;
  for (int round = 0; round < 25; round++) {
    unsigned count = acknowledged_before_kill(done, random);
    ASSERT_GT(count, 0u);
    for (; count > 0; count--)
      ASSERT_EQ(apply_line(expected, line_number(done++), &error), OPEN_E_NONE) << error;
    ASSERT_TRUE(start(&error)) << error;
    std::string found = running_config();
    stop();
    if (found == print_configuration(expected)) continue;
    /* The change under way may have been stored before the kill came. */
    ASSERT_EQ(apply_line(expected, line_number(done++), &error), OPEN_E_NONE) << error;
    ASSERT_EQ(found, print_configuration(expected)) << "round " << round << ", " << done << " changes";
  }
  EXPECT_GT(generation_in(dir.path), 35u)
      << "not only the 25 starts here began a generation, children did too";
}

/* --- Full disk ------------------------------------------------------------------------------------------ */

class Persistence : public SoftSwitch {
protected:
  std::string journal() {
    return file_content(dir.path + "/journal-" + std::to_string(generation_in(dir.path)));
  }

  /* Makes changes until the snapshot on disk is newer than `generation`. */
  void change_until_compacted(uint64_t generation) {
    for (int attempt = 0; generation_in(dir.path) <= generation; attempt++) {
      ASSERT_LT(attempt, patience_ms) << "never compacted";
      ASSERT_EQ(commit(attempt % 2 ? "vlan 99 name odd" : "vlan 99 name even"), OPEN_E_NONE);
      usleep(1000);
    }
  }
};

TEST_F(Persistence, FullDiskRefusesChangesAndLosesNothing) {
  ASSERT_EQ(rpcclt_openapiVlanCreate(&handle, 10), OPEN_E_NONE);
  ASSERT_TRUE(wait_applied(patience_ms));
  hold_apply(true);
  std::string before = running_config(), stored = journal();
  for (rlim_t room : {0, 1, 7}) {
    full_disk full(stored.size() + room);
    EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 2000), OPEN_E_FAIL) << room;
    EXPECT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_FAIL) << room;
    EXPECT_EQ(set_name(10, "a long name"), OPEN_E_FAIL) << room;
    EXPECT_EQ(rpcclt_openapiVlanIfParticipationSet(&handle, 10, 1, 0), OPEN_E_FAIL) << room;
    EXPECT_EQ(rpcclt_openapiVlanIfTaggingSet(&handle, 1, 10, 1), OPEN_E_FAIL) << room;
    EXPECT_EQ(rpcclt_openapiVlanIfPvidSet(&handle, 1, 10), OPEN_E_FAIL) << room;
    EXPECT_EQ(rpcclt_openapiVlanIfAcceptFrameTypeSet(&handle, 1, 2), OPEN_E_FAIL) << room;
    EXPECT_EQ(running_config(), before);
    EXPECT_EQ(pending_vlans(), std::vector<int>());
    EXPECT_EQ(journal(), stored) << "what was written of a line is cut off again";
  }
  ASSERT_EQ(rpcclt_openapiVlanCreate(&handle, 2000), OPEN_E_NONE) << "there is room again";
  EXPECT_EQ(journal(), stored + "vlan 2000\n");
}

TEST_F(Persistence, WhatWasBegunOnAnAlmostFullDiskCanBeTakenBack) {
  ASSERT_EQ(rpcclt_openapiVlanCreate(&handle, 10), OPEN_E_NONE);
  std::string stored = journal();
  for (rlim_t room = 0; room < 1200; room++) {
    full_disk full(stored.size() + room);
    if (rpcclt_openapiVlanCreate(&handle, 2000) != OPEN_E_NONE) continue;
    unsigned changes = 1;
    while (set_name(2000, changes % 2 == 1 ? "odd" : "even") == OPEN_E_NONE) changes++;
    ASSERT_LT(changes, 100u) << "the disk is not full";
    ASSERT_EQ(rpcclt_openapiVlanDelete(&handle, 2000), OPEN_E_NONE) << room;
    ASSERT_EQ(running_config(), "vlan 10\n");
    return; /* the journal has grown: other rooms are those of another test */
  }
  FAIL() << "no room for one change";
}

TEST_F(Persistence, RoomForTakingBackIsKeptAgainAfterAFailedWrite) {
  struct stat journal;
  std::string path = dir.path + "/journal-1";
  hold_apply(true);
  /* Until the last lines' block has no room for more than they need. */
  for (int id = 2; stat(path.c_str(), &journal) == 0 && journal.st_size % 4096 < 4000; id++)
    ASSERT_EQ(commit("vlan " + std::to_string(id)), OPEN_E_NONE);
  if (journal.st_blocks * 512 < journal.st_size + 512) GTEST_SKIP() << "this file system keeps no room";
  {
    full_disk full(static_cast<rlim_t>(journal.st_size));
    ASSERT_EQ(commit("no vlan 2"), OPEN_E_FAIL);
  }
  ASSERT_EQ(commit("vlan 4000"), OPEN_E_NONE);
  ASSERT_EQ(stat(path.c_str(), &journal), 0);
  EXPECT_GE(journal.st_blocks * 512, journal.st_size + 512);
}

TEST_F(Persistence, FullDiskWhileCompactingKeepsTheJournal) {
  for (int id = 100; id < 150; id++) ASSERT_EQ(commit("vlan " + std::to_string(id)), OPEN_E_NONE);
  for (int id = 100; id < 150; id++)
    ASSERT_EQ(set_name(static_cast<uint32_t>(id), std::string(32, 'n')), OPEN_E_NONE);
  restart();
  uint64_t generation = generation_in(dir.path);
  ASSERT_TRUE(set_limit("settle-milliseconds", 0));
  ASSERT_TRUE(set_limit("journal-bytes", 10));
  {
    full_disk full(1000);
    ASSERT_EQ(commit("vlan 99"), OPEN_E_NONE);
    ASSERT_EQ(commit("vlan 99 name blue"), OPEN_E_NONE);
    for (int waited = 0; file_content(dir.path + "/log").find("cannot be compacted") == std::string::npos;
         waited++) {
      ASSERT_LT(waited, patience_ms);
      usleep(1000);
    }
    EXPECT_EQ(generation_in(dir.path), generation);
  }
  change_until_compacted(generation);
}

TEST_F(Persistence, FullDiskAtStartDoesNotKeepTheSwitchFromStarting) {
  for (int id = 100; id < 150; id++) ASSERT_EQ(commit("vlan " + std::to_string(id)), OPEN_E_NONE);
  for (int id = 100; id < 150; id++)
    ASSERT_EQ(set_name(static_cast<uint32_t>(id), std::string(32, 'n')), OPEN_E_NONE);
  std::string before = running_config(), error;
  stop();
  {
    full_disk full(100);
    ASSERT_TRUE(start(&error)) << error;
    EXPECT_EQ(running_config(), before);
    EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 10), OPEN_E_FAIL);
  }
  EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 10), OPEN_E_NONE);
}

TEST_F(Persistence, FullDiskRefusesSavingAndReloadingAndKeepsTheFiles) {
  std::string error;
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  ASSERT_TRUE(save_startup_config(&error)) << error;
  ASSERT_EQ(commit("vlan 20,30,40,50"), OPEN_E_NONE);
  std::string before = running_config();
  {
    full_disk full(1);
    EXPECT_FALSE(save_startup_config(&error));
    EXPECT_NE(error, "");
    EXPECT_FALSE(reload(&error));
    EXPECT_FALSE(apply_configuration("vlan 60\n", &error));
  }
  EXPECT_EQ(file_content(dir.path + "/startup-config"), "vlan 10\n");
  EXPECT_EQ(running_config(), before);
}

/* --- Compaction ----------------------------------------------------------------------------------------- */

TEST_F(Persistence, JournalIsCompactedWhileChangesGoOn) {
  ASSERT_TRUE(set_limit("settle-milliseconds", 0));
  ASSERT_TRUE(set_limit("journal-bytes", 500));
  switch_model expected = make_switch(built_in_profile());
  std::string error;
  for (unsigned n = 0; n < 4000; n++) {
    ASSERT_EQ(commit(line_number(n)), OPEN_E_NONE);
    ASSERT_EQ(apply_line(expected, line_number(n), &error), OPEN_E_NONE);
  }
  do {
    change_until_compacted(generation_in(dir.path));
  } while (generation_in(dir.path) <= 3 && !HasFatalFailure());
  ASSERT_EQ(apply_line(expected, "vlan 99", &error), OPEN_E_NONE);
  ASSERT_EQ(commit("no vlan 99 name"), OPEN_E_NONE);
  ASSERT_EQ(apply_line(expected, "no vlan 99 name", &error), OPEN_E_NONE);
  EXPECT_EQ(running_config(), print_configuration(expected));
}

TEST_F(Persistence, ReloadsAndScriptsMeetCompactionsSafely) {
  ASSERT_TRUE(set_limit("settle-milliseconds", 0));
  ASSERT_TRUE(set_limit("journal-bytes", 100));
  std::string error;
  ASSERT_EQ(commit("vlan 3000"), OPEN_E_NONE);
  ASSERT_TRUE(save_startup_config(&error)) << error;
  for (int round = 0; round < 30; round++) {
    for (unsigned n = 0; n < 30; n++) ASSERT_EQ(commit(line_number(n)), OPEN_E_NONE);
    ASSERT_TRUE(apply_configuration("vlan 3001\n", &error)) << error;
    std::string script_applied = running_config();
    EXPECT_NE(script_applied.find("3000-3001"), std::string::npos) << script_applied;
    ASSERT_TRUE(reload(&error)) << error;
    ASSERT_EQ(running_config(), "vlan 3000\n");
  }
}

/* --- Saving, reloading, scripts ------------------------------------------------------------------------- */

TEST_F(Persistence, SavingWritesTheRunningConfigurationAsStartupConfiguration) {
  std::string error;
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  ASSERT_TRUE(save_startup_config(&error)) << error;
  EXPECT_EQ(file_content(dir.path + "/startup-config"), "vlan 10\n");
  ASSERT_EQ(commit("no vlan 10"), OPEN_E_NONE);
  ASSERT_TRUE(save_startup_config(&error)) << error;
  EXPECT_EQ(file_content(dir.path + "/startup-config"), "");
}

TEST_F(Persistence, ReloadReturnsToTheStartupConfiguration) {
  std::string error;
  ASSERT_EQ(commit("vlan 10,20"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/1 pvid 10"), OPEN_E_NONE);
  ASSERT_TRUE(save_startup_config(&error)) << error;
  ASSERT_EQ(commit("no vlan 10"), OPEN_E_NONE);
  ASSERT_EQ(commit("vlan 30"), OPEN_E_NONE);
  ASSERT_EQ(commit("vlan 1 name x"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/2 accept-frames tagged"), OPEN_E_NONE);
  ASSERT_TRUE(wait_applied(patience_ms));
  hold_apply(true);
  ASSERT_TRUE(reload(&error)) << error;
  EXPECT_EQ(running_config(), "vlan 10,20\ninterface 0/1 pvid 10\n");
  EXPECT_EQ(pending_vlans(), (std::vector<int>{1, 10, 20, -30}));
}

TEST_F(Persistence, ReloadWithoutStartupConfigurationGoesToFactoryState) {
  std::string error;
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  ASSERT_EQ(commit("vlan 10 name x"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 3/1 vlan 1 participation exclude"), OPEN_E_NONE);
  ASSERT_TRUE(reload(&error)) << error;
  EXPECT_EQ(running_config(), "");
}

TEST_F(Persistence, ReloadRefusesABadStartupConfigurationAndChangesNothing) {
  std::string error;
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  write_file(dir.path + "/startup-config", "vlan 20\nvlan 10 name\n");
  EXPECT_FALSE(reload(&error));
  EXPECT_EQ(error, dir.path + "/startup-config, line 2: the line ends too early: <text> is missing");
  EXPECT_EQ(running_config(), "vlan 10\n");
}

TEST_F(Persistence, ScriptIsAppliedWholeOrNotAtAll) {
  std::string error;
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  EXPECT_FALSE(apply_configuration("vlan 20\nno vlan 10\nvlan 30 name x\nvlan 40\n", &error));
  EXPECT_EQ(error, "line 3: VLAN 30 does not exist");
  EXPECT_EQ(running_config(), "vlan 10\n");
  ASSERT_TRUE(apply_configuration("! step 1\r\nvlan 20\r\nno vlan 10\r\n", &error)) << error;
  EXPECT_EQ(running_config(), "vlan 20\n");
}

TEST_F(Persistence, ChangesAfterAReloadAreJournalledAsUsual) {
  std::string error;
  ASSERT_TRUE(reload(&error)) << error;
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  EXPECT_EQ(journal(), "vlan 10\n");
}

TEST_F(Persistence, SettingsSurviveARestartInEveryCombination) {
  ASSERT_EQ(commit("vlan 10-20,30"), OPEN_E_NONE);
  ASSERT_EQ(commit("vlan 10 name \"say \\\"hi\\\"\""), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 3/64 vlan 10-20 participation include"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 3/64 vlan 10-20 tagging"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/54 vlan 1 participation exclude"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/54 pvid 30"), OPEN_E_NONE);
  ASSERT_EQ(commit("interface 0/54 accept-frames untagged"), OPEN_E_NONE);
  restart_keeps_configuration();
  ASSERT_EQ(commit("no vlan 30"), OPEN_E_NONE);
  restart_keeps_configuration();
  ASSERT_EQ(commit("no vlan 10-20"), OPEN_E_NONE);
}

/* --- Start and stop ------------------------------------------------------------------------------------- */

TEST_F(Persistence, StartingARunningSwitchDoesNothing) {
  std::string error;
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  EXPECT_TRUE(start(&error)) << error;
  EXPECT_EQ(running_config(), "vlan 10\n");
}

TEST_F(Persistence, StoppingTwiceAndStoppingWithHeldChangesIsFine) {
  hold_apply(true);
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  stop();
  stop();
  std::string error;
  ASSERT_TRUE(start(&error)) << error;
  EXPECT_EQ(running_config(), "vlan 10\n");
  EXPECT_TRUE(wait_applied(0)) << "a start takes everything over, and holds nothing";
}

TEST_F(Persistence, LimitsReturnToTheirBuiltInValuesAtAStart) {
  ASSERT_TRUE(set_limit("vlans", 1));
  EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 10), OPEN_E_FULL);
  restart();
  EXPECT_EQ(rpcclt_openapiVlanCreate(&handle, 10), OPEN_E_NONE);
}

TEST_F(Persistence, ProfileShapesTheSwitchAndItsConfigurationIsChecked) {
  stop();
  write_file(dir.path + "/profile.json", R"({"ports": [{"name": "0/7"}, {"name": "0/9", "cabled": false}]})");
  setenv("KESTREL_PROFILE", (dir.path + "/profile.json").c_str(), 1);
  std::string error;
  ASSERT_TRUE(start(&error)) << error;
  EXPECT_EQ(commit("interface 0/9 vlan 1 tagging"), OPEN_E_NONE);
  EXPECT_EQ(commit("interface 0/1 vlan 1 tagging"), OPEN_E_PARAM);
  uint32_t value;
  EXPECT_EQ(openapiVlanIfPvidGet(&handle, 3, &value), OPEN_E_NOT_FOUND);
  EXPECT_EQ(running_config(), "interface 0/9 vlan 1 tagging\n");
  restart_keeps_configuration();
}

} // namespace
