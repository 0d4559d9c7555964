/* Tests of what a start makes of the files in the state directory, good and bad. */
#include "tests/unit/platform/softswitch_test_support.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace softswitch;

namespace {

/* A state directory for tests that start the switch themselves. */
class StateDirectory : public testing::Test {
protected:
  void SetUp() override {
    write("accounts", prepared_accounts());
    setenv("KESTREL_STATE_DIR", dir.path.c_str(), 1);
  }
  void TearDown() override {
    stop();
    unsetenv("KESTREL_STATE_DIR");
  }

  std::string path(const std::string &name) const { return dir.path + "/" + name; }
  void write(const std::string &name, const std::string &content) { write_file(path(name), content); }
  std::string content(const std::string &name) { return file_content(path(name)); }
  bool exists(const std::string &name) { return access(path(name).c_str(), F_OK) == 0; }

  /* Starts the switch; what it says when it cannot, empty when it could. */
  static std::string start_error() {
    std::string error;
    return start(&error) ? "" : error;
  }

  static open_error_t commit(const std::string &line) {
    locked_switch model;
    return commit_line(*model, line);
  }

  /* Lines of the log that contain this. */
  size_t logged(const std::string &words) {
    size_t count = 0;
    for (const std::string &line : lines_of(content("log"))) count += line.find(words) != std::string::npos;
    return count;
  }

  temporary_directory dir;
};

/* --- Generations ---------------------------------------------------------------------------------------- */

TEST_F(StateDirectory, FirstStartMakesGenerationOne) {
  ASSERT_EQ(start_error(), "");
  EXPECT_EQ(content("running-config"), "! generation 1\n");
  EXPECT_EQ(content("journal-1"), "");
  EXPECT_FALSE(exists("journal-0"));
  EXPECT_FALSE(exists("startup-config"));
}

TEST_F(StateDirectory, EveryChangeIsALineOfTheJournalAsSoonAsItIsAcknowledged) {
  ASSERT_EQ(start_error(), "");
  hold_apply(true);
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  ASSERT_EQ(commit("vlan 10 name \"a b\""), OPEN_E_NONE);
  ASSERT_EQ(commit("vlan 5000"), OPEN_E_PARAM);
  ASSERT_EQ(commit("! nothing"), OPEN_E_NONE);
  EXPECT_EQ(content("journal-1"), "vlan 10\nvlan 10 name \"a b\"\n");
}

TEST_F(StateDirectory, StartFoldsTheJournalIntoANewSnapshot) {
  ASSERT_EQ(start_error(), "");
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  ASSERT_EQ(commit("vlan 10 name blue"), OPEN_E_NONE);
  stop();
  ASSERT_EQ(start_error(), "");
  EXPECT_EQ(content("running-config"), "! generation 2\nvlan 10\nvlan 10 name blue\n");
  EXPECT_EQ(content("journal-2"), "");
  EXPECT_FALSE(exists("journal-1"));
}

TEST_F(StateDirectory, StartWithNothingJournalledLeavesTheGeneration) {
  write("running-config", "! generation 7\nvlan 10\n");
  write("journal-7", "");
  ASSERT_EQ(start_error(), "");
  EXPECT_EQ(content("running-config"), "! generation 7\nvlan 10\n");
  EXPECT_EQ(running_config(), "vlan 10\n");
  EXPECT_EQ(logged("WARNING"), 0u);
}

TEST_F(StateDirectory, OnlyTheJournalOfTheSnapshotsGenerationCounts) {
  write("running-config", "! generation 7\nvlan 10\n");
  write("journal-6", "vlan 6\n");
  write("journal-7", "vlan 7\n");
  write("journal-8", "vlan 8\n");
  write("running-config.next", "! generation 8\nvlan 8\n");
  write("running-config.next.new", "! gen");
  write("journal-notes", "somebody's own\n");
  ASSERT_EQ(start_error(), "");
  EXPECT_EQ(running_config(), "vlan 7,10\n");
  EXPECT_EQ(content("running-config"), "! generation 8\nvlan 7,10\n");
  EXPECT_EQ(content("journal-8"), "");
  EXPECT_FALSE(exists("journal-6"));
  EXPECT_FALSE(exists("journal-7"));
  EXPECT_FALSE(exists("running-config.next"));
  EXPECT_FALSE(exists("running-config.next.new"));
  EXPECT_EQ(content("journal-notes"), "somebody's own\n");
}

TEST_F(StateDirectory, SnapshotWithoutItsJournalIsUsedWithAWarning) {
  write("running-config", "! generation 7\nvlan 10\n");
  ASSERT_EQ(start_error(), "");
  EXPECT_EQ(running_config(), "vlan 10\n");
  EXPECT_EQ(logged("journal-7 is missing; going on with the snapshot alone"), 1u);
}

TEST_F(StateDirectory, StartupConfigurationIsUsedWhenThereIsNoSnapshot) {
  write("startup-config", "! made by hand\nvlan 20\n");
  ASSERT_EQ(start_error(), "");
  EXPECT_EQ(running_config(), "vlan 20\n");
  ASSERT_EQ(commit("no vlan 20"), OPEN_E_NONE);
  stop();
  ASSERT_EQ(start_error(), "");
  EXPECT_EQ(running_config(), "") << "from now on the snapshot counts";
}

/* --- Torn and damaged files ----------------------------------------------------------------------------- */

TEST_F(StateDirectory, TornLastLineIsDroppedWithOneWarning) {
  for (const char *torn : {"v", "vlan 30", "vlan 30 name \"x"}) {
    write("running-config", "! generation 1\n");
    write("journal-1", std::string("vlan 10\nvlan 20\n") + torn);
    write("log", "");
    ASSERT_EQ(start_error(), "") << torn;
    EXPECT_EQ(running_config(), "vlan 10,20\n");
    stop();
    EXPECT_EQ(logged("the last line was not written to its end and is dropped"), 1u) << content("log");
    ASSERT_EQ(start_error(), "");
    stop();
    EXPECT_EQ(logged("WARNING"), 1u) << content("log");
  }
}

TEST_F(StateDirectory, JournalOfOneTornLineIsEmpty) {
  write("running-config", "! generation 1\n");
  write("journal-1", "vlan 10");
  ASSERT_EQ(start_error(), "");
  EXPECT_EQ(running_config(), "");
  EXPECT_EQ(content("journal-1"), "");
}

TEST_F(StateDirectory, BadLineInTheJournalStopsTheStartAndTouchesNothing) {
  const std::pair<std::string, std::string> rows[] = {
      {"vlan 10\nvlan x\nvlan 20\n", "line 2: \"x\" is not a VLAN id"},
      {"vlan 10\nno vlan 20\n", "line 2: VLAN 20 does not exist"},
      {std::string("vlan 10\n\0\0\0\0\nvlan 20\n", 21), "line 2: the line holds a control character"},
      {"interface 0/99 pvid 1\n", "line 1: there is no port or LAG \"0/99\""},
      {"foo\nvlan 1", "line 1: unknown command \"foo\""},
  };
  for (const auto &[journal, reason] : rows) {
    write("running-config", "! generation 1\n");
    write("journal-1", journal);
    write("journal-2", "kept while somebody looks into it\n");
    EXPECT_EQ(start_error(), path("journal-1") + ", " + reason);
    EXPECT_FALSE(is_running());
    EXPECT_EQ(content("running-config"), "! generation 1\n");
    EXPECT_EQ(content("journal-1"), journal);
    EXPECT_TRUE(exists("journal-2"));
  }
}

TEST_F(StateDirectory, BadSnapshotStopsTheStart) {
  const std::string header = ", line 1: not a snapshot: \"! generation N\" is missing";
  const std::pair<std::string, std::string> rows[] = {
      {"", header},
      {"vlan 10\n", header},
      {"! generation\n", header},
      {"! generation x\n", header},
      {"! generation -1\n", header},
      {"! generation 1", header},
      {"! generation 1 \n", header},
      {"! generation 99999999999999999999\n", header},
      {"! generation 1\nvlan 10\nvlan 10 nam", ", line 3: \"nam\" is not expected here"},
  };
  for (const auto &[snapshot, reason] : rows) {
    write("running-config", snapshot);
    EXPECT_EQ(start_error(), path("running-config") + reason);
    EXPECT_EQ(content("running-config"), snapshot);
  }
}

TEST_F(StateDirectory, BadStartupConfigurationStopsTheFirstStart) {
  write("startup-config", "vlan 10\nvlan 0\n");
  EXPECT_EQ(start_error(), path("startup-config") + ", line 2: VLAN id out of range 1..4094");
  EXPECT_FALSE(exists("running-config"));
}

TEST_F(StateDirectory, FailedStartLeavesNothingBehindForTheNext) {
  write("running-config", "nonsense\n");
  ASSERT_NE(start_error(), "");
  write("running-config", "! generation 1\nvlan 10\n");
  ASSERT_EQ(start_error(), "");
  EXPECT_EQ(running_config(), "vlan 10\n");
}

/* --- The directory itself ------------------------------------------------------------------------------- */

TEST_F(StateDirectory, MissingDirectoryIsMadeForTheUserAlone) {
  setenv("KESTREL_STATE_DIR", path("new").c_str(), 1);
  ASSERT_EQ(start_error(), "");
  EXPECT_EQ(mode_of(path("new")), 0700u);
  EXPECT_EQ(mode_of(path("new/running-config")), 0600u);
  EXPECT_EQ(mode_of(path("new/journal-1")), 0600u);
}

TEST_F(StateDirectory, DirectoryThatCannotBeMadeIsNamed) {
  setenv("KESTREL_STATE_DIR", path("a/b").c_str(), 1);
  EXPECT_EQ(start_error(), "the state directory " + path("a/b") + ": No such file or directory");
  setenv("KESTREL_STATE_DIR", path("accounts").c_str(), 1);
  EXPECT_EQ(start_error(), "the state directory " + path("accounts") + ": is not a directory");
}

TEST_F(StateDirectory, DirectoryOfAnotherProcessIsLeftAlone) {
  int lock = open(dir.path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(flock(lock, LOCK_EX), 0);
  EXPECT_EQ(start_error(), "the state directory " + dir.path + " is in use by another process");
  EXPECT_FALSE(exists("running-config"));
  close(lock);
  EXPECT_EQ(start_error(), "");
}

TEST_F(StateDirectory, RunningSwitchKeepsTheDirectoryForItself) {
  ASSERT_EQ(start_error(), "");
  int lock = open(dir.path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  EXPECT_EQ(flock(lock, LOCK_EX | LOCK_NB), -1);
  stop();
  EXPECT_EQ(flock(lock, LOCK_EX | LOCK_NB), 0);
  close(lock);
}

TEST_F(StateDirectory, DirectoriesInThePlaceOfFilesAreNamed) {
  mkdir(path("running-config").c_str(), 0700);
  EXPECT_EQ(start_error(), path("running-config") + ": not a regular file");
  rmdir(path("running-config").c_str());
  write("running-config", "! generation 1\n");
  mkdir(path("journal-1").c_str(), 0700);
  EXPECT_EQ(start_error(), path("journal-1") + ": Is a directory");
}

TEST_F(StateDirectory, LinkInThePlaceOfTheJournalIsNotFollowed) {
  write("running-config", "! generation 1\n");
  write("target", "vlan 10\n");
  ASSERT_EQ(symlink("target", path("journal-1").c_str()), 0);
  EXPECT_EQ(start_error(), path("journal-1") + ": " + strerror(ELOOP));
  EXPECT_EQ(content("target"), "vlan 10\n");
}

/* Starts the switch as a user without privileges, in a process of its own; what it says. */
std::string start_error_of_plain_user() {
  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  pid_t child = fork();
  if (child == 0) {
    std::string error;
    bool dropped = geteuid() != 0 || (setgid(65534) == 0 && setuid(65534) == 0);
    if (dropped && start(&error)) error = "started";
    bool told = write(ends[1], error.data(), error.size()) == static_cast<ssize_t>(error.size());
    _exit(told ? 0 : 1);
  }
  close(ends[1]);
  char buffer[512];
  ssize_t size = read(ends[0], buffer, sizeof buffer);
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return std::string(buffer, size > 0 ? static_cast<size_t>(size) : 0);
}

TEST_F(StateDirectory, DirectoryWithoutPermissionIsNamed) {
  const std::string refused = "the state directory " + dir.path + " cannot be used: Permission denied";
  for (mode_t mode : {0000, 0444, 0555, 0333}) {
    chmod(dir.path.c_str(), mode);
    EXPECT_EQ(start_error_of_plain_user(), refused) << std::oct << mode;
  }
  chmod(dir.path.c_str(), 0700);
}

} // namespace
