/* The record of the startup configuration: its beginning, its numbers, reading the file, setting the times.
 * Writing the file: test_startupcfg_file.cpp. */
#include "tests/unit/modules/startupcfg_fixture.h"

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
