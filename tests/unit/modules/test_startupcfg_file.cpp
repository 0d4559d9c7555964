/* The record of the startup configuration, writing its file. */
#include "tests/support/full_disk.h"
#include "tests/unit/modules/startupcfg_fixture.h"

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
