/* Tests of the record of the startup configuration: the record, its file in a root of the test's own, and
 * what becomes of both. */
#ifndef KESTREL_TESTS_MODULES_STARTUPCFG_FIXTURE_H
#define KESTREL_TESTS_MODULES_STARTUPCFG_FIXTURE_H

#include "tests/unit/modules/transfer_fixture.h"

#include <gtest/gtest.h>
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

#endif
