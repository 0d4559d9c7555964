/* The file that mirrors the session table. */
#include "engine/rest_status_file.h"
#include "tests/unit/engine/session_fixture.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

class StatusFileTest : public SessionTest {
protected:
  struct stat file_status() const {
    struct stat status = {};
    EXPECT_EQ(lstat(status_path.c_str(), &status), 0);
    return status;
  }
  /* Gives the file a time of modification that a rewrite changes. */
  void make_old() const {
    timespec times[2] = {{1000000000, 0}, {1000000000, 0}};
    EXPECT_EQ(utimensat(AT_FDCWD, status_path.c_str(), times, 0), 0);
  }
  bool is_old() const { return file_status().st_mtim.tv_sec == 1000000000; }
  static void let_file_times_settle() { usleep(40 * 1000); }
};

TEST_F(StatusFileTest, HasALineForEachOpenSessionInSlotOrder) {
  std::string first = open_session("admin", "10.0.0.2");
  now = 1700000100;
  std::string second = open_session("oper", "10.0.0.3");
  EXPECT_EQ(status(), "1;" + first + ";admin;10.0.0.2;1700000000;1700000000\n" + "2;" + second +
                          ";oper;10.0.0.3;1700000100;1700000100\n");
  update_last_activity_time(1);
  EXPECT_EQ(status(), "1;" + first + ";admin;10.0.0.2;1700000000;1700000100\n" + "2;" + second +
                          ";oper;10.0.0.3;1700000100;1700000100\n");
  delete_session(1);
  EXPECT_EQ(status(), "2;" + second + ";oper;10.0.0.3;1700000100;1700000100\n");
  std::string third = open_session("admin", "10.0.0.4");
  EXPECT_EQ(status(), "3;" + third + ";admin;10.0.0.4;1700000100;1700000100\n" + "2;" + second +
                          ";oper;10.0.0.3;1700000100;1700000100\n");
}

TEST_F(StatusFileTest, EmptyTableIsAnEmptyFile) {
  EXPECT_EQ(output_session_file(), RC_TRUE);
  EXPECT_EQ(status(), "");
  open_session("admin", "10.0.0.2");
  now += 300;
  clear_expired_session();
  EXPECT_EQ(status(), "");
}

TEST_F(StatusFileTest, LongestNamesAreWrittenWhole) {
  std::string user(255, 'u'), address(47, 'a');
  std::string key = open_session(user.c_str(), address.c_str());
  EXPECT_EQ(status(), "1;" + key + ";" + user + ";" + address + ";1700000000;1700000000\n");
}

TEST_F(StatusFileTest, WordsOfTheUserNameAreNoFormat) {
  std::string key = open_session("%s%n%d;x", "10.0.0.2");
  EXPECT_EQ(status(), "1;" + key + ";%s%n%d;x;10.0.0.2;1700000000;1700000000\n");
}

TEST_F(StatusFileTest, IsReplacedWhole) {
  overwrite_file(status_path, std::string(5000, 'x'));
  std::string key = open_session("admin", "10.0.0.2");
  EXPECT_EQ(status(), "1;" + key + ";admin;10.0.0.2;1700000000;1700000000\n");
}

TEST_F(StatusFileTest, IsNotWrittenAgainWhenNothingHasChanged) {
  open_session("admin", "10.0.0.2");
  let_file_times_settle();
  EXPECT_EQ(output_session_file(), RC_TRUE);
  struct stat before = file_status();
  clear_expired_session();
  update_last_activity_time(1); /* within the same second */
  EXPECT_EQ(output_session_file(), RC_TRUE);
  struct stat after = file_status();
  EXPECT_EQ(before.st_mtim.tv_sec, after.st_mtim.tv_sec);
  EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
  EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(StatusFileTest, IsWrittenAgainWhenItWasRemoved) {
  std::string key = open_session("admin", "10.0.0.2");
  std::string text = status();
  for (int settled = 0; settled < 2; settled++) {
    unlink(status_path.c_str());
    clear_expired_session();
    EXPECT_EQ(status(), text);
    let_file_times_settle();
    clear_expired_session();
  }
}

TEST_F(StatusFileTest, IsWrittenAgainWhenSomebodyChangedIt) {
  std::string key = open_session("admin", "10.0.0.2");
  std::string text = status(), same_length = text;
  same_length[0] = '7';
  for (const std::string &content : {std::string(), std::string("x"), same_length, text + "more\n"}) {
    overwrite_file(status_path, content); /* at once: the file's times need not tell the change */
    clear_expired_session();
    EXPECT_EQ(status(), text) << content;
    let_file_times_settle();
    clear_expired_session();
    overwrite_file(status_path, content);
    clear_expired_session();
    EXPECT_EQ(status(), text) << content;
  }
}

TEST_F(StatusFileTest, IsWrittenAgainWhenAnotherFileTookItsPlace) {
  open_session("admin", "10.0.0.2");
  std::string text = status(), other = text;
  other[0] = '9';
  overwrite_file(dir.file("other"), other);
  let_file_times_settle();
  clear_expired_session();
  ASSERT_EQ(rename(dir.file("other").c_str(), status_path.c_str()), 0);
  clear_expired_session();
  EXPECT_EQ(status(), text);
}

TEST_F(StatusFileTest, IsWrittenAgainWhenItWasRenamedAway) {
  open_session("admin", "10.0.0.2");
  std::string text = status();
  for (int settled = 0; settled < 2; settled++) {
    ASSERT_EQ(rename(status_path.c_str(), dir.file("moved").c_str()), 0);
    clear_expired_session();
    EXPECT_EQ(status(), text);
    let_file_times_settle();
    clear_expired_session();
  }
}

TEST_F(StatusFileTest, FollowsTheSettingToAnotherFile) {
  open_session("admin", "10.0.0.2");
  std::string text = status();
  setenv("KESTREL_SESSION_FILE", dir.file("moved").c_str(), 1);
  reload_rest_settings();
  EXPECT_EQ(output_session_file(), RC_TRUE);
  EXPECT_EQ(read_file(dir.file("moved")), text);
}

TEST_F(StatusFileTest, SweepLeavesItUntouchedWhileTheTimeOutIsZero) {
  open_session("admin", "10.0.0.2");
  set_session_timeout(0);
  overwrite_file(status_path, "somebody else's");
  clear_expired_session();
  EXPECT_EQ(status(), "somebody else's");
  unlink(status_path.c_str());
  clear_expired_session();
  EXPECT_EQ(status(), "(none)");
  update_last_activity_time(1); /* a change of the table is written all the same */
  EXPECT_NE(status(), "(none)");
}

TEST_F(StatusFileTest, SymbolicLinkIsNotFollowed) {
  overwrite_file(dir.file("target"), "precious");
  ASSERT_EQ(symlink(dir.file("target").c_str(), status_path.c_str()), 0);
  EXPECT_NE(open_session("admin", "10.0.0.2"), ""); /* logging in works all the same */
  EXPECT_EQ(output_session_file(), RC_FALSE);
  EXPECT_EQ(read_file(dir.file("target")), "precious");
  unlink(status_path.c_str());
  EXPECT_EQ(output_session_file(), RC_TRUE);
  EXPECT_NE(status(), "(none)");
}

TEST_F(StatusFileTest, LinkThatTakesTheFilesPlaceLaterIsNotFollowedEither) {
  open_session("admin", "10.0.0.2");
  std::string text = status();
  overwrite_file(dir.file("target"), text);
  unlink(status_path.c_str());
  ASSERT_EQ(symlink(dir.file("target").c_str(), status_path.c_str()), 0);
  EXPECT_EQ(output_session_file(), RC_FALSE);
  EXPECT_EQ(delete_session(1), RC_TRUE);
  EXPECT_EQ(read_file(dir.file("target")), text);
}

TEST_F(StatusFileTest, PipeInItsPlaceNeverBlocks) {
  ASSERT_EQ(mkfifo(status_path.c_str(), 0600), 0);
  EXPECT_NE(open_session("admin", "10.0.0.2"), "");
  EXPECT_EQ(output_session_file(), RC_FALSE);
  int reader = open(status_path.c_str(), O_RDONLY | O_NONBLOCK);
  ASSERT_GE(reader, 0);
  for (int i = 0; i < 2000; i++) { /* more than a pipe holds, and nobody reads */
    update_last_activity_time(1);
    now++;
  }
  close(reader);
  EXPECT_EQ(delete_session(1), RC_TRUE);
}

TEST_F(StatusFileTest, DirectoryOrMissingFolderIsAnErrorThatHarmsNothing) {
  ASSERT_EQ(mkdir(status_path.c_str(), 0700), 0);
  EXPECT_NE(open_session("admin", "10.0.0.2"), "");
  EXPECT_EQ(output_session_file(), RC_FALSE);
  setenv("KESTREL_SESSION_FILE", dir.file("missing/status").c_str(), 1);
  reload_rest_settings();
  EXPECT_NE(open_session("admin", "10.0.0.3"), "");
  EXPECT_EQ(output_session_file(), RC_FALSE);
  EXPECT_EQ(get_session_id("10.0.0.3", session_table[1].session_key), 2u);
}

TEST_F(StatusFileTest, TimesSetByHandAreNoticed) {
  open_session("admin", "10.0.0.2");
  let_file_times_settle();
  clear_expired_session();
  make_old();
  clear_expired_session();
  EXPECT_FALSE(is_old());
}
