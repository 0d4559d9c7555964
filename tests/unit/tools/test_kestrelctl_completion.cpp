/* What may come next on a command line. */
#include "tests/unit/tools/kestrelctl_sample.h"
#include "tools/kestrelctl/completion.h"
#include "tools/kestrelctl/text.h"

#include <gtest/gtest.h>

/* The candidates for the last word of a line, which is empty when a blank ends the line. */
static std::string candidates(const char *line) {
  return joined(complete(sample_commands(), split(line, ' ')), " ");
}

TEST(KestrelctlCompletion, FirstWord) {
  EXPECT_EQ(candidates(""), "acl download help if login logout script trust untrust vlans");
  EXPECT_EQ(candidates("l"), "login logout");
  EXPECT_EQ(candidates("nothing"), "");
}

TEST(KestrelctlCompletion, LiteralWordsAndVerbsAtTheirPlaces) {
  EXPECT_EQ(candidates("vlans "), "list pendingChanges");
  EXPECT_EQ(candidates("vlans 10 "), "create delete set show");
  EXPECT_EQ(candidates("vlans 10 s"), "set show");
  EXPECT_EQ(candidates("vlans 10 set "), "name");
  EXPECT_EQ(candidates("vlans set 10 "), "name");
  EXPECT_EQ(candidates("vlans 10 create "), "");
  EXPECT_EQ(candidates("script "), "apply delete");
  EXPECT_EQ(candidates("transfer "), "download");
  EXPECT_EQ(candidates("transfer download "), "show start status");
}

TEST(KestrelctlCompletion, ChoicesOfPlaceholders) {
  EXPECT_EQ(candidates("acl "), "ip mac");
}

TEST(KestrelctlCompletion, VariablesThatAreNotGiven) {
  EXPECT_EQ(candidates("acl ip name web add rule "), "action= log= protocol=");
  EXPECT_EQ(candidates("acl ip name web add rule log=yes p"), "protocol=");
  EXPECT_EQ(candidates("acl ip name web add rule action=permit "), "log= protocol=");
  EXPECT_EQ(candidates("script apply "), "scr=");
  EXPECT_EQ(candidates("script apply x "), "");
}

TEST(KestrelctlCompletion, ChoicesOfVariablesByTheirMeanings) {
  EXPECT_EQ(candidates("acl ip name web add rule action="), "action=deny action=permit");
  EXPECT_EQ(candidates("acl ip name web add rule log=y"), "log=yes");
  EXPECT_EQ(candidates("if 3 set adminState "), "disable enable value=");
  EXPECT_EQ(candidates("if 3 set adminState e"), "enable");
}

TEST(KestrelctlCompletion, OptionsAnywhereAndTheirValuesNowhere) {
  EXPECT_EQ(candidates("--s"), "--server");
  EXPECT_EQ(candidates("vlans --j"), "--json");
  EXPECT_EQ(candidates("--server "), "");
  EXPECT_EQ(candidates("--server host vlans 10 set "), "name");
  EXPECT_EQ(candidates("vlans --json 10 set "), "name");
  EXPECT_EQ(candidates("--server=host vlans 10 set "), "name");
}

TEST(KestrelctlCompletion, CommandsAsSubjectsOfHelp) {
  EXPECT_EQ(candidates("help vlans 10 set "), "name");
  EXPECT_EQ(candidates("help v"), "vlans");
}

TEST(KestrelctlCompletion, NothingForNothing) {
  EXPECT_TRUE(complete(sample_commands(), {}).empty());
}
