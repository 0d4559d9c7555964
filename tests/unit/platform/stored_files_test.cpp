/* Tests of the stored files: names and places, installing, images, removing all. */
#include "platform/softswitch/services/lab.h"
#include "platform/softswitch/services/stored_files.h"
#include "tests/unit/platform/softswitch_test_support.h"

#include <filesystem>

using namespace softswitch;

namespace {

class StoredFiles : public testing::Test {
protected:
  /* Installs a file with this content. */
  bool install(const std::string &name, const std::string &content) {
    write_file(dir.path + "/new", content);
    return stored_install(dir.path, name, dir.path + "/new", &error);
  }
  std::string content(const std::string &name) const { return file_content(dir.path + "/" + name); }

  temporary_directory dir;
  std::string error;
};

TEST_F(StoredFiles, WhatNamesStandFor) {
  EXPECT_EQ(stored_kind_of("startup-config"), stored_kind::configuration);
  EXPECT_EQ(stored_kind_of("backup-config"), stored_kind::configuration);
  EXPECT_EQ(stored_kind_of("active"), stored_kind::image);
  EXPECT_EQ(stored_kind_of("backup"), stored_kind::image);
  for (std::string name : {"a.scr", "A-b_c.9.scr", "-.scr", "_..scr", "a..scr"})
    EXPECT_EQ(stored_kind_of(name), stored_kind::script) << name;
  for (std::string name :
       {"", "scr", ".scr", "..scr", "a.SCR", "a.scr ", "a/.scr", "a\n.scr", "running-config"})
    EXPECT_EQ(stored_kind_of(name), stored_kind::none) << name;
  EXPECT_EQ(stored_kind_of(std::string_view("a\0.scr", 6)), stored_kind::none);
  EXPECT_EQ(stored_kind_of(std::string(92, 'x') + ".scr"), stored_kind::script);
  EXPECT_EQ(stored_kind_of(std::string(93, 'x') + ".scr"), stored_kind::none);
}

TEST_F(StoredFiles, InstalledIsReadAgain) {
  for (std::string name : {"startup-config", "backup-config", "a.scr"}) {
    std::string text;
    bool exists;
    EXPECT_TRUE(stored_read(dir.path, name, &text, &exists, &error));
    EXPECT_FALSE(exists);
    EXPECT_TRUE(install(name, "old")) << error;
    EXPECT_TRUE(install(name, "new")) << error;
    EXPECT_TRUE(stored_read(dir.path, name, &text, &exists, &error));
    EXPECT_TRUE(exists);
    EXPECT_EQ(text, "new");
  }
  EXPECT_FALSE(std::filesystem::exists(dir.path + "/new"));
}

TEST_F(StoredFiles, ALinkIsNoStoredFile) {
  write_file(dir.path + "/secret", "secret");
  std::filesystem::create_symlink(dir.path + "/secret", dir.path + "/startup-config");
  std::string text;
  bool exists;
  EXPECT_TRUE(stored_read(dir.path, "startup-config", &text, &exists, &error));
  EXPECT_FALSE(exists);
  EXPECT_FALSE(stored_exists(dir.path, "startup-config"));
  EXPECT_TRUE(install("startup-config", "mine")) << error;
  EXPECT_EQ(content("secret"), "secret");
  EXPECT_EQ(content("startup-config"), "mine");
}

TEST_F(StoredFiles, AnImageNeverStandsBesideAnothersDescription) {
  EXPECT_EQ(image_list(dir.path), "");
  ASSERT_TRUE(install("active", "first"));
  ASSERT_TRUE(image_describe(dir.path, "active", 5, "abc", "tftp://192.0.2.1/x", &error)) << error;
  std::string listed = image_list(dir.path);
  EXPECT_EQ(listed.substr(0, 13), "active 5 abc ");
  EXPECT_EQ(listed.substr(13 + 20), " tftp://192.0.2.1/x\n");
  ASSERT_TRUE(install("active", "second"));
  EXPECT_EQ(image_list(dir.path), "active unknown\n");
  ASSERT_TRUE(install("backup", "third"));
  EXPECT_EQ(image_list(dir.path), "active unknown\nbackup unknown\n");
}

TEST_F(StoredFiles, RemovingTakesAllOfThemAndNothingElse) {
  for (std::string name : {"startup-config", "backup-config", "a.scr", "active", "backup"}) {
    ASSERT_TRUE(install(name, "x")) << error;
  }
  ASSERT_TRUE(image_describe(dir.path, "active", 1, "abc", "tftp://192.0.2.1/x", &error));
  write_file(dir.path + "/scripts/other", "");
  write_file(dir.path + "/accounts", "");
  EXPECT_TRUE(stored_files_remove(dir.path, &error)) << error;
  EXPECT_TRUE(stored_files_remove(dir.path, &error)) << error;
  std::vector<std::string> left;
  for (const auto &entry : std::filesystem::directory_iterator(dir.path))
    left.push_back(entry.path().filename());
  EXPECT_EQ(left, std::vector<std::string>{"accounts"});
}

TEST_F(StoredFiles, RemovingDoesNotFollowLinks) {
  temporary_directory elsewhere;
  write_file(elsewhere.path + "/a.scr", "");
  std::filesystem::create_directory_symlink(elsewhere.path, dir.path + "/scripts");
  EXPECT_TRUE(stored_files_remove(dir.path, &error)) << error;
  EXPECT_TRUE(std::filesystem::exists(elsewhere.path + "/a.scr"));
  EXPECT_FALSE(std::filesystem::exists(dir.path + "/scripts"));
}

TEST_F(StoredFiles, RemovingGoesOnAfterAFailure) {
  ASSERT_TRUE(install("a.scr", "x"));
  ASSERT_TRUE(install("active", "x"));
  std::filesystem::create_directory(dir.path + "/scripts/folder");
  EXPECT_FALSE(stored_files_remove(dir.path, &error));
  EXPECT_EQ(error, dir.path + "/scripts/folder: Is a directory");
  EXPECT_FALSE(std::filesystem::exists(dir.path + "/scripts/a.scr"));
  EXPECT_FALSE(std::filesystem::exists(dir.path + "/images"));
}

class LabImages : public SoftSwitch {};

TEST_F(LabImages, AreShown) {
  EXPECT_EQ(lab_command("show images"), "ok\n");
  std::filesystem::create_directory(dir.path + "/images");
  write_file(dir.path + "/images/backup", "x");
  write_file(dir.path + "/images/backup.info", "1 abc 2026-01-31T12:34:56Z tftp://192.0.2.1/x\n");
  EXPECT_EQ(lab_command("show images"), "backup 1 abc 2026-01-31T12:34:56Z tftp://192.0.2.1/x\nok\n");
}

} // namespace
