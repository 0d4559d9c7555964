/* The record of the startup configuration and its file. */
#include "tests/support/full_disk.h"
#include "tests/unit/modules/transfer_fixture.h"

#include <gtest/gtest.h>
#include <string.h>
#include <sys/stat.h>

class StartupcfgInfoTest : public testing::Test {
protected:
  /* The record as the program has it when it comes to the file. */
  static void record(const std::string &time, const std::string &update) {
    startupcfgInfo = {0, RC_FALSE, "", ""};
    time.copy(startupcfgInfo.cfgTime, STARTUPCFG_TIME_SIZE - 1);
    update.copy(startupcfgInfo.cfgUpdateTime, STARTUPCFG_TIME_SIZE - 1);
  }
  static void expect_record(const std::string &time, const std::string &update) {
    EXPECT_EQ(std::string(startupcfgInfo.cfgTime), time);
    EXPECT_EQ(std::string(startupcfgInfo.cfgUpdateTime), update);
  }
  /* The file as it is after it had `before` and the record's times are written. */
  std::string rewritten(const std::string &before) const {
    root.write(before);
    EXPECT_EQ(write_startupcfg_info_file(), RC_TRUE) << before;
    EXPECT_FALSE(std::filesystem::exists(root.temporary_file())) << before;
    return root.content();
  }
  /* Which file it is: another one once it has been replaced. */
  ino_t identity() const {
    struct stat status = {};
    EXPECT_EQ(stat(root.file().c_str(), &status), 0);
    return status.st_ino;
  }
  std::string read_time() const {
    char text[STARTUPCFG_TIME_SIZE] = "before";
    EXPECT_EQ(get_startup_config_time(text), RC_TRUE);
    return text;
  }
  std::string read_update_time() const {
    char text[STARTUPCFG_TIME_SIZE] = "before";
    EXPECT_EQ(get_startup_config_update_time(text), RC_TRUE);
    return text;
  }

  startupcfg_root root;
};

/* --- Beginning ------------------------------------------------------------------------------------------ */

TEST_F(StartupcfgInfoTest, FirstStartMakesTheFileWithEmptyValues) {
  EXPECT_EQ(initialize_transfer_variables(), RC_TRUE);
  EXPECT_EQ(root.content(), "cfg_time:\ncfg_update:\n");
  EXPECT_FALSE(std::filesystem::exists(root.temporary_file()));
  expect_record("", "");
}

TEST_F(StartupcfgInfoTest, StartBeginsTheRecordAnewAndReadsTheTimes) {
  root.write("cfg_time:c\ncfg_update:u\n");
  startupcfgInfo = {42, RC_TRUE, "old", "older"};
  EXPECT_EQ(initialize_transfer_variables(), RC_TRUE);
  EXPECT_EQ(startupcfgInfo.serialNum, 0u);
  EXPECT_EQ(startupcfgInfo.hasUpdated, RC_FALSE);
  expect_record("c", "u");
  EXPECT_EQ(root.content(), "cfg_time:c\ncfg_update:u\n");
}

TEST_F(StartupcfgInfoTest, StartLeavesAFileThatItCanOpenAsItIs) {
  for (const std::string &content : {std::string(), std::string("x"), std::string("cfg_update:u\n")}) {
    root.write(content);
    const ino_t before = identity();
    startupcfgInfo = {42, RC_TRUE, "old", "older"};
    EXPECT_EQ(initialize_transfer_variables(), RC_TRUE);
    EXPECT_EQ(root.content(), content);
    EXPECT_EQ(identity(), before);
    expect_record("", content.size() > 1 ? "u" : "");
  }
}

/* The program starts all the same. */
TEST_F(StartupcfgInfoTest, StartThatCannotMakeTheFileIsAFailureAndAnEmptyRecord) {
  root.block_folder();
  startupcfgInfo = {42, RC_TRUE, "old", "older"};
  EXPECT_EQ(initialize_transfer_variables(), RC_FALSE);
  EXPECT_TRUE(root.is_folder_blocked());
  EXPECT_EQ(startupcfgInfo.serialNum, 0u);
  EXPECT_EQ(startupcfgInfo.hasUpdated, RC_FALSE);
  expect_record("", "");
}

TEST_F(StartupcfgInfoTest, FirstStartMakesTheFolderToo) {
  root.remove_folder();
  EXPECT_EQ(initialize_transfer_variables(), RC_TRUE);
  EXPECT_EQ(root.content(), "cfg_time:\ncfg_update:\n");
}

TEST_F(StartupcfgInfoTest, TimesSurviveARestartAndNumbersDoNot) {
  EXPECT_EQ(initialize_transfer_variables(), RC_TRUE);
  EXPECT_EQ(set_startup_config_time("2026-01-02"), RC_TRUE);
  EXPECT_EQ(set_startup_config_update_time("2026-03-04"), RC_TRUE);
  EXPECT_EQ(set_startup_config_serial_number(42), RC_TRUE);
  EXPECT_EQ(set_startup_config_has_updated_flag(RC_TRUE), RC_TRUE);
  EXPECT_EQ(initialize_transfer_variables(), RC_TRUE);
  expect_record("2026-01-02", "2026-03-04");
  EXPECT_EQ(startupcfgInfo.serialNum, 0u);
  EXPECT_EQ(startupcfgInfo.hasUpdated, RC_FALSE);
}

/* --- The numbers ---------------------------------------------------------------------------------------- */

TEST_F(StartupcfgInfoTest, SerialNumberIsKeptAndRead) {
  for (uint32_t number : {1u, 0u, 2147483648u, UINT32_MAX}) {
    uint32_t read = 7;
    EXPECT_EQ(set_startup_config_serial_number(number), RC_TRUE);
    EXPECT_EQ(startupcfgInfo.serialNum, number);
    EXPECT_EQ(get_startup_config_serial_number(&read), RC_TRUE);
    EXPECT_EQ(read, number);
  }
  EXPECT_EQ(get_startup_config_serial_number(nullptr), RC_FALSE);
}

TEST_F(StartupcfgInfoTest, FlagIsKeptAndRead) {
  for (RC_t flag : {RC_TRUE, RC_FALSE}) {
    RC_t read = flag == RC_TRUE ? RC_FALSE : RC_TRUE;
    EXPECT_EQ(set_startup_config_has_updated_flag(flag), RC_TRUE);
    EXPECT_EQ(startupcfgInfo.hasUpdated, flag);
    EXPECT_EQ(get_startup_config_has_updated_flag(&read), RC_TRUE);
    EXPECT_EQ(read, flag);
  }
  EXPECT_EQ(get_startup_config_has_updated_flag(nullptr), RC_FALSE);
}

TEST_F(StartupcfgInfoTest, NumbersHaveNoFile) {
  set_startup_config_serial_number(1);
  set_startup_config_has_updated_flag(RC_TRUE);
  EXPECT_EQ(root.content(), "(none)");
}

/* --- Reading -------------------------------------------------------------------------------------------- */

TEST_F(StartupcfgInfoTest, ValueIsTheFirstWordBehindTheKey) {
  const struct {
    std::string line, value;
  } rows[] = {
      {"cfg_time:c\n", "c"},
      {"cfg_time:c", "c"},
      {"cfg_time:\n", ""},
      {"cfg_time:", ""},
      {"cfg_time: \n", ""},
      {"cfg_time:c d\n", "c"},
      {"cfg_time: c d\n", "c"},
      {"cfg_time:\t c\td\n", "c"},
      {"cfg_time:c\r\n", "c"},
      {"cfg_time:10:20:30\n", "10:20:30"},
      {"cfg_time::\n", ":"},
      {"cfg_time:%s%n\n", "%s%n"},
      {"cfg_time:cfg_update:x\n", "cfg_update:x"},
      {"cfg_time:" + std::string(23, 'c') + "\n", std::string(23, 'c')},
      {"cfg_time:" + std::string(24, 'c') + "\n", std::string(23, 'c')},
      {"cfg_time:" + std::string(246, 'c') + "\n", std::string(23, 'c')},
      {"cfg_time:" + std::string(243, ' ') + "c\n", "c"},
  };
  for (const auto &row : rows) {
    record("old", "older");
    root.write(row.line);
    EXPECT_EQ(read_startupcfg_info_file(), RC_TRUE);
    expect_record(row.value, "older");
    std::string line = row.line;
    line.replace(line.find("cfg_time"), 8, "cfg_update");
    record("old", "older");
    root.write(line);
    EXPECT_EQ(read_startupcfg_info_file(), RC_TRUE);
    expect_record("old", row.line.find("cfg_update") == std::string::npos ? row.value : "cfg_update:x");
  }
}

TEST_F(StartupcfgInfoTest, TimeWhoseKeyIsAbsentStays) {
  const struct {
    const char *content, *time, *update;
  } rows[] = {
      {"", "old", "older"},
      {"\n\n", "old", "older"},
      {"cfg_time:c\n", "c", "older"},
      {"cfg_update:u\n", "old", "u"},
      {"cfg_update:u\ncfg_time:c\n", "c", "u"},
      {"x:1\ncfg_time:c\n\n:2\ny\ncfg_update:u\nz:3\n", "c", "u"},
      {"cfg_times:c\ncfg_updat:u\n", "old", "older"},
      {"xcfg_time:c\nycfg_update:u\n", "old", "older"},
      {" cfg_time:c\n cfg_update:u\n", "old", "older"},
      {"cfg_time :c\ncfg_update\t:u\n", "old", "older"},
      {"CFG_TIME:c\nCfg_update:u\n", "old", "older"},
      {"cfg_time\ncfg_update\n", "old", "older"},
      {"cfg_time=c\ncfg_update u\n", "old", "older"},
      {":cfg_time:c\n:cfg_update:u\n", "old", "older"},
      {"#cfg_time:c\nkey:cfg_update:u\n", "old", "older"},
      {"cfg_time\n:c\n", "old", "older"},
      {"cfg_time", "old", "older"},
      {"cfg_update", "old", "older"},
  };
  for (const auto &row : rows) {
    record("old", "older");
    root.write(row.content);
    EXPECT_EQ(read_startupcfg_info_file(), RC_TRUE) << row.content;
    expect_record(row.time, row.update);
  }
}

TEST_F(StartupcfgInfoTest, LongLinesAreNoObstacle) {
  for (size_t length : {254, 255, 256, 257, 300, 5000}) {
    record("old", "older");
    root.write(std::string(length, 'x') + "\ncfg_time:c\n" + std::string(length, 'y') + ":z\ncfg_update:u\n");
    EXPECT_EQ(read_startupcfg_info_file(), RC_TRUE);
    expect_record("c", "u");
  }
}

TEST_F(StartupcfgInfoTest, FileThatCannotBeOpenedIsAFailureAndTheRecordStays) {
  record("old", "older");
  EXPECT_EQ(read_startupcfg_info_file(), RC_FALSE);
  root.block_folder();
  EXPECT_EQ(read_startupcfg_info_file(), RC_FALSE);
  expect_record("old", "older");
}

TEST_F(StartupcfgInfoTest, ReadingWritesNothing) {
  root.write("cfg_time:c d\nx");
  const ino_t before = identity();
  EXPECT_EQ(read_startupcfg_info_file(), RC_TRUE);
  EXPECT_EQ(read_time(), "c");
  EXPECT_EQ(root.content(), "cfg_time:c d\nx");
  EXPECT_EQ(identity(), before);
}

TEST_F(StartupcfgInfoTest, GettersReadTheFileAgain) {
  record("old", "older");
  root.write("cfg_time:c\ncfg_update:u\n");
  EXPECT_EQ(read_time(), "c");
  root.write("cfg_time:d\ncfg_update:v\n");
  EXPECT_EQ(read_update_time(), "v");
  expect_record("d", "v");
  root.write("");
  EXPECT_EQ(read_time(), "d");
  EXPECT_EQ(read_update_time(), "v");
  root.write("cfg_time:" + std::string(23, 't') + "\ncfg_update:" + std::string(30, 'u') + "\n");
  EXPECT_EQ(read_time(), std::string(23, 't'));
  EXPECT_EQ(read_update_time(), std::string(23, 'u'));
}

TEST_F(StartupcfgInfoTest, GettersLeaveAnEmptyTextWhenTheFileCannotBeOpened) {
  record("old", "older");
  root.block_folder();
  char time[STARTUPCFG_TIME_SIZE] = "before", update[STARTUPCFG_TIME_SIZE] = "before";
  EXPECT_EQ(get_startup_config_time(time), RC_FALSE);
  EXPECT_STREQ(time, "");
  EXPECT_EQ(get_startup_config_update_time(update), RC_FALSE);
  EXPECT_STREQ(update, "");
  expect_record("old", "older");
}

TEST_F(StartupcfgInfoTest, GettersNeedABuffer) {
  root.write("cfg_time:c\ncfg_update:u\n");
  record("old", "older");
  EXPECT_EQ(get_startup_config_time(nullptr), RC_FALSE);
  EXPECT_EQ(get_startup_config_update_time(nullptr), RC_FALSE);
  expect_record("old", "older");
}

/* --- Writing -------------------------------------------------------------------------------------------- */

TEST_F(StartupcfgInfoTest, LinesOfTheKeysAreRewrittenWhereTheyStand) {
  record("c", "u");
  const struct {
    const char *before, *after;
  } rows[] = {
      {"", "cfg_time:c\ncfg_update:u\n"},
      {"cfg_time:\ncfg_update:\n", "cfg_time:c\ncfg_update:u\n"},
      {"cfg_time:x\ncfg_update:y\n", "cfg_time:c\ncfg_update:u\n"},
      {"cfg_update:y\ncfg_time:x\n", "cfg_update:u\ncfg_time:c\n"},
      {"cfg_time:x y z\ncfg_update: y\n", "cfg_time:c\ncfg_update:u\n"},
      {"a:1\ncfg_update:y\nb\n\ncfg_time:x\nc:3\n", "a:1\ncfg_update:u\nb\n\ncfg_time:c\nc:3\n"},
      {"cfg_time:C\ncfg_update:U\n", "cfg_time:c\ncfg_update:u\n"},
      {"cfg_time:cc\ncfg_update:uu\n", "cfg_time:c\ncfg_update:u\n"},
      {"cfg_time:x", "cfg_time:c\ncfg_update:u\n"},
      {"cfg_time:x\ncfg_update:y", "cfg_time:c\ncfg_update:u\n"},
  };
  for (const auto &row : rows) EXPECT_EQ(rewritten(row.before), row.after) << row.before;
}

TEST_F(StartupcfgInfoTest, KeysThatAreMissingAreAppendedInTheirOrder) {
  record("c", "u");
  const struct {
    const char *before, *after;
  } rows[] = {
      {"cfg_time:c\n", "cfg_time:c\ncfg_update:u\n"},
      {"cfg_update:u\n", "cfg_update:u\ncfg_time:c\n"},
      {"a:1\n", "a:1\ncfg_time:c\ncfg_update:u\n"},
      {"cfg_times:c\ncfg_updat:u\n", "cfg_times:c\ncfg_updat:u\ncfg_time:c\ncfg_update:u\n"},
      {" cfg_time:c\ncfg_update :u\n", " cfg_time:c\ncfg_update :u\ncfg_time:c\ncfg_update:u\n"},
      {"cfg_time\ncfg_update\n", "cfg_time\ncfg_update\ncfg_time:c\ncfg_update:u\n"},
      {"CFG_TIME:c\n", "CFG_TIME:c\ncfg_time:c\ncfg_update:u\n"},
      {":\n::\n", ":\n::\ncfg_time:c\ncfg_update:u\n"},
  };
  for (const auto &row : rows) EXPECT_EQ(rewritten(row.before), row.after) << row.before;
}

/* What is compared is the first word; the line of a time that is the same keeps the rest of it, too. */
TEST_F(StartupcfgInfoTest, LineOfTheSameTimeStaysAsItWas) {
  record("c", "u");
  for (const char *line : {"cfg_time:c\n", "cfg_time:c d\n", "cfg_time:  c\n", "cfg_time:c\t\r\n"})
    EXPECT_EQ(rewritten(std::string(line) + "cfg_update:u\n"), std::string(line) + "cfg_update:u\n");
}

/* The update line is compared with the creation time: one that has it stays, whatever the update time is. */
TEST_F(StartupcfgInfoTest, UpdateLineWithTheCreationTimeStaysAsItWas) {
  record("c", "u");
  EXPECT_EQ(rewritten("cfg_time:x\ncfg_update:c\n"), "cfg_time:c\ncfg_update:c\n");
  EXPECT_EQ(rewritten("cfg_update:c d\ncfg_time:x\n"), "cfg_update:c d\ncfg_time:c\n");
  EXPECT_EQ(rewritten("cfg_update: u d\n"), "cfg_update:u\ncfg_time:c\n");
  record("", "u");
  EXPECT_EQ(rewritten("cfg_time:x\ncfg_update:\n"), "cfg_time:\ncfg_update:\n");
  record("c", "c");
  EXPECT_EQ(rewritten("cfg_time:c\ncfg_update:u\n"), "cfg_time:c\ncfg_update:c\n");
}

TEST_F(StartupcfgInfoTest, UpdateTimeOfARecordWithoutACreationTimeDoesNotReachTheFile) {
  EXPECT_EQ(initialize_transfer_variables(), RC_TRUE);
  EXPECT_EQ(set_startup_config_update_time("u"), RC_TRUE);
  EXPECT_EQ(root.content(), "cfg_time:\ncfg_update:\n");
  expect_record("", "u");
  EXPECT_EQ(read_update_time(), "");
  expect_record("", "");
}

TEST_F(StartupcfgInfoTest, UpdateTimeThatWasTheCreationTimeCannotBeReplaced) {
  root.write("cfg_time:c\ncfg_update:c\n");
  EXPECT_EQ(initialize_transfer_variables(), RC_TRUE);
  EXPECT_EQ(set_startup_config_update_time("u"), RC_TRUE);
  EXPECT_EQ(root.content(), "cfg_time:c\ncfg_update:c\n");
  EXPECT_EQ(set_startup_config_time("d"), RC_TRUE);
  EXPECT_EQ(root.content(), "cfg_time:d\ncfg_update:u\n"); /* another creation time lets it through */
}

TEST_F(StartupcfgInfoTest, UnknownLinesAreKept) {
  record("c", "u");
  const std::string unknown[] = {"a:1\n", "b: 2 3 \n", "\n",   "no colon\n",
                                 ":\n",   "%s%n%d\n",  "\t\n", "d:\r\n"};
  std::string all;
  for (const std::string &line : unknown) {
    all += line;
    EXPECT_EQ(rewritten(line), line + "cfg_time:c\ncfg_update:u\n") << line;
  }
  EXPECT_EQ(rewritten(all), all + "cfg_time:c\ncfg_update:u\n");
  EXPECT_EQ(rewritten(all + "cfg_update:x\n" + all + "cfg_time:x\n" + all),
            all + "cfg_update:u\n" + all + "cfg_time:c\n" + all);
}

TEST_F(StartupcfgInfoTest, LongLinesAreKept) {
  record("c", "u");
  for (size_t length : {253, 254, 255, 256, 257, 509, 510, 511, 512, 1000, 10000}) {
    const std::string line = std::string(length, 'x') + "\n", with_key = "k:" + line;
    EXPECT_EQ(rewritten(line), line + "cfg_time:c\ncfg_update:u\n") << length;
    EXPECT_EQ(rewritten("cfg_time:x\n" + line + with_key + "cfg_update:x\n"),
              "cfg_time:c\n" + line + with_key + "cfg_update:u\n")
        << length;
  }
}

/* A last line that does not end is not what the next one is made part of. */
TEST_F(StartupcfgInfoTest, AppendedKeysStandInLinesOfTheirOwn) {
  record("c", "u");
  const std::string long_line(300, 'x');
  EXPECT_EQ(rewritten("a:1"), "a:1\ncfg_time:c\ncfg_update:u\n");
  EXPECT_EQ(rewritten("cfg_time"), "cfg_time\ncfg_time:c\ncfg_update:u\n");
  EXPECT_EQ(rewritten(long_line), long_line + "\ncfg_time:c\ncfg_update:u\n");
  EXPECT_EQ(rewritten("cfg_time:c"), "cfg_time:c\ncfg_update:u\n");
  EXPECT_EQ(rewritten("cfg_update:c"), "cfg_update:c\ncfg_time:c\n");
  EXPECT_EQ(rewritten("cfg_time:x\ncfg_update:x\na:1"), "cfg_time:c\ncfg_update:u\na:1");
}

/* What begins like a key behind the 255th character is not at the start of a line. */
TEST_F(StartupcfgInfoTest, RestOfALongLineIsNoLine) {
  for (size_t length : {254, 255, 256, 510}) {
    const std::string line = std::string(length, 'x') + "cfg_time:y\n";
    record("old", "u");
    root.write(line);
    EXPECT_EQ(read_startupcfg_info_file(), RC_TRUE);
    expect_record("old", "u");
    EXPECT_EQ(rewritten(line), line + "cfg_time:old\ncfg_update:u\n") << length;
  }
}

TEST_F(StartupcfgInfoTest, LongLineOfAKeyIsRewrittenWhole) {
  record("c", "u");
  for (size_t length : {245, 246, 247, 255, 300, 2000}) {
    const std::string rest(length, 'x');
    EXPECT_EQ(rewritten("cfg_time:" + rest + "\ncfg_update:" + rest + "\na:1\n"),
              "cfg_time:c\ncfg_update:u\na:1\n")
        << length;
    EXPECT_EQ(rewritten("cfg_time:" + rest), "cfg_time:c\ncfg_update:u\n") << length;
    /* The same word, and more behind it: it stays. */
    const std::string same = "cfg_time:c " + rest + "\n";
    EXPECT_EQ(rewritten(same + "a:1\n"), same + "a:1\ncfg_update:u\n") << length;
  }
}

TEST_F(StartupcfgInfoTest, OfTwoLinesOfAKeyTheLastCounts) {
  record("c", "u");
  EXPECT_EQ(rewritten("cfg_time:x\ncfg_update:x\ncfg_time:c\ncfg_update:y\n"),
            "cfg_time:c\ncfg_update:u\ncfg_time:c\ncfg_update:u\n");
  root.write("cfg_time:c1\ncfg_update:u1\ncfg_time:c2\ncfg_update:u2\n");
  EXPECT_EQ(read_startupcfg_info_file(), RC_TRUE);
  expect_record("c2", "u2");
}

/* A value cannot bring a line of its own: no client writes other keys, or a second time. */
TEST_F(StartupcfgInfoTest, LineBreakInATimeIsABlankInTheFile) {
  record("c\ncfg_update:x", "u\n\nv");
  EXPECT_EQ(rewritten(""), "cfg_time:c cfg_update:x\ncfg_update:u  v\n");
  EXPECT_EQ(rewritten("cfg_time:x\ncfg_update:x\n"), "cfg_time:c cfg_update:x\ncfg_update:u  v\n");
  EXPECT_EQ(read_time(), "c");
  EXPECT_EQ(read_update_time(), "u");
}

TEST_F(StartupcfgInfoTest, WritingTwiceGivesTheSame) {
  record("2026-01-02 10:20", "2026-03-04 11:21");
  const std::string once = rewritten("a:1\ncfg_update:x\n");
  EXPECT_EQ(once, "a:1\ncfg_update:2026-03-04 11:21\ncfg_time:2026-01-02 10:20\n");
  EXPECT_EQ(rewritten(once), once);
}

TEST_F(StartupcfgInfoTest, FileThatIsMissingIsMade) {
  record("c", "u");
  EXPECT_EQ(write_startupcfg_info_file(), RC_TRUE);
  EXPECT_EQ(root.content(), "cfg_time:c\ncfg_update:u\n");
}

TEST_F(StartupcfgInfoTest, WhatALostRunHasLeftInTheTemporaryFileIsOverwritten) {
  record("c", "u");
  overwrite_file(root.temporary_file(), std::string(1000, 'x') + "\n");
  EXPECT_EQ(rewritten("a:1\n"), "a:1\ncfg_time:c\ncfg_update:u\n");
}

TEST_F(StartupcfgInfoTest, FileIsReplacedWhole) {
  record("c", "u");
  root.write("cfg_time:x\n");
  std::filesystem::create_hard_link(root.file(), root.file() + ".before");
  EXPECT_EQ(write_startupcfg_info_file(), RC_TRUE);
  EXPECT_EQ(read_file(root.file() + ".before"), "cfg_time:x\n");
  EXPECT_EQ(root.content(), "cfg_time:c\ncfg_update:u\n");
}

TEST_F(StartupcfgInfoTest, FolderThatIsMissingIsMade) {
  record("c", "u");
  root.remove_folder();
  EXPECT_EQ(read_startupcfg_info_file(), RC_FALSE);
  EXPECT_FALSE(std::filesystem::exists(root.folder())); /* not by reading */
  EXPECT_EQ(write_startupcfg_info_file(), RC_TRUE);
  EXPECT_EQ(root.content(), "cfg_time:c\ncfg_update:u\n");
}

/* --- Files that cannot be written ----------------------------------------------------------------------- */

TEST_F(StartupcfgInfoTest, WritingWhereNoFolderCanBeIsAFailure) {
  root.block_folder();
  EXPECT_EQ(write_startupcfg_info_file(), RC_FALSE);
  EXPECT_TRUE(root.is_folder_blocked());
}

/* A link to itself can be opened in no way. */
TEST_F(StartupcfgInfoTest, FileThatCannotBeOpenedIsAFailure) {
  std::filesystem::create_symlink(root.file(), root.file());
  EXPECT_EQ(write_startupcfg_info_file(), RC_FALSE);
  EXPECT_TRUE(std::filesystem::is_symlink(root.file()));
  EXPECT_FALSE(std::filesystem::exists(root.temporary_file()));
  EXPECT_EQ(initialize_transfer_variables(), RC_FALSE);
}

/* Opening a FIFO would wait for its other end. */
TEST_F(StartupcfgInfoTest, WhatIsNoFileIsAFailure) {
  ASSERT_EQ(mkfifo(root.file().c_str(), 0600), 0);
  EXPECT_EQ(read_startupcfg_info_file(), RC_FALSE);
  EXPECT_EQ(write_startupcfg_info_file(), RC_FALSE);
  EXPECT_TRUE(std::filesystem::is_fifo(root.file()));
}

TEST_F(StartupcfgInfoTest, LinkInThePlaceOfTheTemporaryFileIsNotFollowed) {
  record("c", "u");
  root.write("a:1\n");
  overwrite_file(root.folder() + "/other", "stays\n");
  std::filesystem::create_symlink(root.folder() + "/other", root.temporary_file());
  EXPECT_EQ(write_startupcfg_info_file(), RC_TRUE);
  EXPECT_EQ(root.content(), "a:1\ncfg_time:c\ncfg_update:u\n");
  EXPECT_EQ(read_file(root.folder() + "/other"), "stays\n");
}

TEST_F(StartupcfgInfoTest, TemporaryFileThatCannotBeOpenedIsAFailureAndTheFileStays) {
  record("c", "u");
  root.block_writing();
  root.write("cfg_time:x\n");
  const ino_t before = identity();
  EXPECT_EQ(write_startupcfg_info_file(), RC_FALSE);
  EXPECT_EQ(root.content(), "cfg_time:x\n");
  EXPECT_EQ(identity(), before);
}

TEST_F(StartupcfgInfoTest, FullDiskIsAFailureAndTheFileStays) {
  record("c", "u");
  for (const std::string &content :
       {std::string("cfg_time:x\n"), std::string("a:1\n"), std::string(100000, 'x') + "\ncfg_update:x\n"}) {
    root.write(content);
    for (rlim_t room : {0, 1, 5, 15}) {
      full_disk full(room);
      EXPECT_EQ(write_startupcfg_info_file(), RC_FALSE) << room;
      EXPECT_EQ(root.content(), content) << room;
    }
    EXPECT_EQ(write_startupcfg_info_file(), RC_TRUE);
  }
}

TEST_F(StartupcfgInfoTest, FullDiskLeavesNothingBehind) {
  record("c", "u");
  root.write("cfg_time:x\n");
  {
    full_disk full(0);
    EXPECT_EQ(write_startupcfg_info_file(), RC_FALSE);
  }
  EXPECT_FALSE(std::filesystem::exists(root.temporary_file()));
}

/* --- Setters -------------------------------------------------------------------------------------------- */

TEST_F(StartupcfgInfoTest, SettersStoreAndWrite) {
  EXPECT_EQ(initialize_transfer_variables(), RC_TRUE);
  EXPECT_EQ(set_startup_config_time("c"), RC_TRUE);
  EXPECT_EQ(root.content(), "cfg_time:c\ncfg_update:\n");
  expect_record("c", "");
  EXPECT_EQ(set_startup_config_update_time("u"), RC_TRUE);
  EXPECT_EQ(root.content(), "cfg_time:c\ncfg_update:u\n");
  expect_record("c", "u");
  EXPECT_EQ(set_startup_config_time("d"), RC_TRUE);
  EXPECT_EQ(root.content(), "cfg_time:d\ncfg_update:u\n");
  expect_record("d", "u");
}

TEST_F(StartupcfgInfoTest, SettersRefuseNoTextAndAnEmptyOne) {
  root.write("cfg_time:c\ncfg_update:u\n");
  EXPECT_EQ(initialize_transfer_variables(), RC_TRUE);
  const ino_t before = identity();
  for (const char *text : {static_cast<const char *>(nullptr), ""}) {
    EXPECT_EQ(set_startup_config_time(text), RC_FALSE);
    EXPECT_EQ(set_startup_config_update_time(text), RC_FALSE);
    expect_record("c", "u");
  }
  EXPECT_EQ(identity(), before);
  record("", "");
  EXPECT_EQ(set_startup_config_time(""), RC_FALSE); /* though it is the record's */
  EXPECT_EQ(set_startup_config_update_time(""), RC_FALSE);
}

TEST_F(StartupcfgInfoTest, SameTimeDoesNotTouchTheFile) {
  root.write("cfg_time:x\ncfg_update:y\n");
  record("c", "u");
  EXPECT_EQ(set_startup_config_time("c"), RC_TRUE);
  EXPECT_EQ(set_startup_config_update_time("u"), RC_TRUE);
  EXPECT_EQ(root.content(), "cfg_time:x\ncfg_update:y\n");
  expect_record("c", "u");
  root.block_folder();
  EXPECT_EQ(set_startup_config_time("c"), RC_TRUE);
  EXPECT_EQ(set_startup_config_update_time("u"), RC_TRUE);
  EXPECT_TRUE(root.is_folder_blocked());
}

TEST_F(StartupcfgInfoTest, TimesAreComparedWhole) {
  root.write("");
  record("cc", "uu");
  for (const char *text : {"c", "ccc", "CC", "cc "}) {
    record("cc", "uu");
    EXPECT_EQ(set_startup_config_time(text), RC_TRUE);
    expect_record(text, "uu");
  }
  EXPECT_EQ(set_startup_config_update_time("u"), RC_TRUE);
  expect_record("cc ", "u");
  EXPECT_EQ(set_startup_config_time("uu"), RC_TRUE);
  EXPECT_EQ(set_startup_config_update_time("uu"), RC_TRUE);
  expect_record("uu", "uu");
}

TEST_F(StartupcfgInfoTest, SettersThatCannotWriteKeepTheTimeInTheRecord) {
  root.block_writing();
  root.write("cfg_time:x\ncfg_update:y\n");
  record("x", "y");
  EXPECT_EQ(set_startup_config_time("c"), RC_FALSE);
  EXPECT_EQ(set_startup_config_update_time("u"), RC_FALSE);
  expect_record("c", "u");
  EXPECT_EQ(root.content(), "cfg_time:x\ncfg_update:y\n");
  EXPECT_EQ(set_startup_config_time("c"), RC_TRUE); /* the same one */
  EXPECT_EQ(root.content(), "cfg_time:x\ncfg_update:y\n");
}

/* They are written as they were given, and read back up to a blank. */
TEST_F(StartupcfgInfoTest, TimesWithBlanksAreReadBackCut) {
  root.write("");
  EXPECT_EQ(set_startup_config_time("2026-01-02 10:20:30"), RC_TRUE);
  EXPECT_EQ(set_startup_config_update_time("Mon Mar 4"), RC_TRUE);
  EXPECT_EQ(root.content(), "cfg_time:2026-01-02 10:20:30\ncfg_update:Mon Mar 4\n");
  expect_record("2026-01-02 10:20:30", "Mon Mar 4");
  EXPECT_EQ(read_time(), "2026-01-02");
  EXPECT_EQ(read_update_time(), "Mon");
  expect_record("2026-01-02", "Mon");
}

TEST_F(StartupcfgInfoTest, LongestTimeHas23Characters) {
  root.write("");
  const std::string c(23, 'c'), u(23, 'u');
  EXPECT_EQ(set_startup_config_time(c.c_str()), RC_TRUE);
  EXPECT_EQ(set_startup_config_update_time(u.c_str()), RC_TRUE);
  EXPECT_EQ(root.content(), "cfg_time:" + c + "\ncfg_update:" + u + "\n");
  EXPECT_EQ(read_time(), c);
  EXPECT_EQ(read_update_time(), u);
  EXPECT_EQ(startupcfgInfo.hasUpdated, RC_FALSE);
}
