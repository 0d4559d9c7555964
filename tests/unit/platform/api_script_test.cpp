/* Tests of the script calls: listing, applying, deleting. */
#include "tests/unit/platform/transfer_test_support.h"

#include <filesystem>

using namespace softswitch;

namespace {

class Script : public TransferTest {
protected:
  void SetUp() override {
    TransferTest::SetUp();
    std::filesystem::create_directory(folder());
  }
  std::string folder() const { return dir.path + "/scripts"; }
  void store(const std::string &name, const std::string &content) {
    write_file(folder() + "/" + name, content);
  }
  open_error_t apply(const std::string &name) { return call(rpcclt_openapiTxtCfgValidateAndApply, name); }
  open_error_t remove(const std::string &name) { return call(rpcclt_openapiTxtCfgFileDelete, name); }

  std::vector<std::string> list() {
    static OPEN_CLI_SCRIPT_FILE_LIST_t found;
    memset(&found, 0xff, sizeof found);
    EXPECT_EQ(rpcclt_openapiTxtCfgFilesListGet(&handle, &found), OPEN_E_NONE);
    return {found.filelist, found.filelist + found.count};
  }
};

TEST_F(Script, WithoutAFolderThereAreNone) {
  std::filesystem::remove(folder());
  EXPECT_EQ(list(), std::vector<std::string>());
}

TEST_F(Script, ListedInTheOrderOfTheirNames) {
  for (const char *name : {"b.scr", "A.scr", "a.scr", "10.scr", "9.scr", "a-1_.x.scr"}) store(name, "");
  EXPECT_EQ(list(), (std::vector<std::string>{"10.scr", "9.scr", "A.scr", "a-1_.x.scr", "a.scr", "b.scr"}));
}

TEST_F(Script, OnlyRegularFilesWithNamesOfScriptsAreListed) {
  std::string longest = std::string(92, 'x') + ".scr";
  for (const std::string &name : {longest, "x" + longest, std::string("a.txt"), std::string(".a.scr"),
                                  std::string("a b.scr"), std::string(".scr")})
    store(name, "");
  std::filesystem::create_directory(folder() + "/folder.scr");
  std::filesystem::create_symlink(dir.path + "/accounts", folder() + "/link.scr");
  ASSERT_EQ(mkfifo((folder() + "/fifo.scr").c_str(), 0600), 0);
  EXPECT_EQ(list(), std::vector<std::string>{longest});
  for (const char *name : {"folder.scr", "link.scr", "fifo.scr"}) {
    EXPECT_EQ(apply(name), OPEN_E_NOT_FOUND) << name;
    EXPECT_EQ(remove(name), OPEN_E_NOT_FOUND) << name;
    EXPECT_EQ(upload("http://127.0.0.1:1/x", name), OPEN_E_ERROR) << name;
  }
  EXPECT_FALSE(stored("accounts").empty());
}

TEST_F(Script, AHundredAtMostAreListed) {
  for (int i = 100; i < 201; i++) store(std::to_string(i) + ".scr", "");
  std::vector<std::string> found = list();
  ASSERT_EQ(found.size(), 100u);
  EXPECT_EQ(found.front(), "100.scr");
  EXPECT_EQ(found.back(), "199.scr");
}

TEST_F(Script, AFolderThatCannotBeReadFails) {
  std::filesystem::remove(folder());
  write_file(folder(), "");
  OPEN_CLI_SCRIPT_FILE_LIST_t found;
  EXPECT_EQ(rpcclt_openapiTxtCfgFilesListGet(&handle, &found), OPEN_E_FAIL);
  EXPECT_EQ(logged("/scripts: Not a directory").size(), 1u);
}

TEST_F(Script, AppliesAsOneChange) {
  store("a.scr", "vlan 10\r\n! a name\nvlan 10 name x");
  EXPECT_EQ(apply("a.scr"), OPEN_E_NONE);
  EXPECT_EQ(running_config(), "vlan 10\nvlan 10 name x\n");
}

TEST_F(Script, AWrongLineChangesNothingAndIsLogged) {
  store("a.scr", "vlan 10\n\nvlan 11 name x\n");
  EXPECT_EQ(apply("a.scr"), OPEN_E_FAIL);
  EXPECT_EQ(running_config(), "");
  EXPECT_EQ(logged("scripts/a.scr"),
            std::vector<std::string>{"WARNING scripts/a.scr, line 3: VLAN 11 does not exist"});
}

TEST_F(Script, AFullDiskChangesNothing) {
  store("a.scr", "vlan 10\n");
  {
    full_disk full(0);
    EXPECT_EQ(apply("a.scr"), OPEN_E_FAIL);
  }
  EXPECT_EQ(running_config(), "");
}

TEST_F(Script, DeletedIsGone) {
  store("a.scr", "");
  store("b.scr", "");
  EXPECT_EQ(remove("a.scr"), OPEN_E_NONE);
  EXPECT_EQ(remove("a.scr"), OPEN_E_NOT_FOUND);
  EXPECT_EQ(apply("a.scr"), OPEN_E_NOT_FOUND);
  EXPECT_EQ(list(), std::vector<std::string>{"b.scr"});
}

TEST_F(Script, NamesThatAreNone) {
  for (std::string name : {"", "a", "a.txt", ".scr", ".a.scr", "a/b.scr", "../startup-config", "a b.scr",
                           "\xc3\xa4.scr", "startup-config", "active"}) {
    EXPECT_EQ(apply(name), OPEN_E_PARAM) << name;
    EXPECT_EQ(remove(name), OPEN_E_PARAM) << name;
  }
  EXPECT_EQ(apply(std::string(93, 'x') + ".scr"), OPEN_E_PARAM);
  EXPECT_EQ(apply(std::string(92, 'x') + ".scr"), OPEN_E_NOT_FOUND);
}

} // namespace
