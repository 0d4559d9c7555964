/* Tests of the configuration language: good lines, near misses with their errors, printing, and that printing
 * and applying are each other's inverse. */
#include "platform/softswitch/config/language.h"

#include "platform/softswitch/config/tokens.h"
#include "tests/unit/platform/config_test_support.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace softswitch;

static switch_model factory() {
  return make_switch(built_in_profile());
}

/* A switch with VLANs 10, 20 and 30. */
static switch_model prepared() {
  switch_model model = factory();
  std::string error;
  EXPECT_TRUE(apply_text(model, "vlan 10,20,30\n", &error)) << error;
  return model;
}

/* --- Tokens --------------------------------------------------------------------------------------------- */

TEST(Tokens, LinesAreSplitAtBlanksOutsideQuotes) {
  const struct {
    std::string line;
    std::vector<std::string> tokens;
  } rows[] = {
      {"", {}},
      {"  \t ", {}},
      {"! a comment \"", {}},
      {"  ! vlan 10", {}},
      {"a b", {"a", "b"}},
      {"\ta  \t b ", {"a", "b"}},
      {"a \"b c\" d", {"a", "b c", "d"}},
      {"\"\"", {""}},
      {R"("\"" "\\")", {"\"", "\\"}},
      {"a !b", {"a", "!b"}},
      {"\"! no comment\"", {"! no comment"}},
      {"\xc3\xa4 \xff", {"\xc3\xa4", "\xff"}},
  };
  for (const auto &row : rows) {
    std::vector<token> tokens;
    std::string error;
    ASSERT_TRUE(split_line(row.line, &tokens, &error)) << row.line << ": " << error;
    std::vector<std::string> texts;
    for (const token &one : tokens) texts.push_back(one.text);
    EXPECT_EQ(texts, row.tokens) << row.line;
  }
}

TEST(Tokens, WrongQuotesAndControlCharactersAreRefused) {
  const std::pair<std::string, std::string> rows[] = {
      {"\"", "the closing quote is missing"},
      {"\"a", "the closing quote is missing"},
      {"\"a\\", "the closing quote is missing"},
      {"\"a\\\"", "the closing quote is missing"},
      {"\"a\\n\"", "only \\\" and \\\\ are known after a backslash"},
      {"\"a\"b", "a blank is missing after the closing quote"},
      {"\"a\"\"b\"", "a blank is missing after the closing quote"},
      {"a\"b\"", "a text with quotes or backslashes stands in double quotes"},
      {"a\\b", "a text with quotes or backslashes stands in double quotes"},
      {"a\x01", "the line holds a control character"},
      {"! \x7f", "the line holds a control character"},
      {std::string("a\0b", 3), "the line holds a control character"},
      {"a\nb", "the line holds a control character"},
      {std::string(16385, 'a'), "the line is longer than 16384 bytes"},
  };
  for (const auto &[line, reason] : rows) {
    std::vector<token> tokens;
    std::string error;
    EXPECT_FALSE(split_line(line, &tokens, &error)) << line;
    EXPECT_EQ(error, reason) << line;
  }
}

TEST(Tokens, LongestLineIsRead) {
  std::vector<token> tokens;
  std::string error;
  ASSERT_TRUE(split_line(std::string(16384, 'a'), &tokens, &error)) << error;
  EXPECT_EQ(tokens[0].text.size(), 16384u);
}

TEST(Tokens, EveryTextComesBackFromItsToken) {
  for (const std::string &text :
       {std::string(), std::string("plain"), std::string("two words"), std::string("\"\\ !"),
        std::string("0/1"), std::string("\xc3\xa4"), std::string("|<>")}) {
    std::vector<token> tokens;
    std::string error;
    ASSERT_TRUE(split_line(quote_token(text), &tokens, &error)) << text << ": " << error;
    ASSERT_EQ(tokens.size(), 1u) << text;
    EXPECT_EQ(tokens[0].text, text);
  }
  EXPECT_EQ(quote_token("0/1"), "0/1");
  EXPECT_EQ(quote_token("!x"), "\"!x\"");
}

/* --- Lines ---------------------------------------------------------------------------------------------- */

TEST(Language, GoodLinesGiveTheirConfiguration) {
  const std::string vlans = "vlan 10,20,30\n";
  const std::pair<std::string, std::string> rows[] = {
      {"", vlans},
      {"! remark", vlans},
      {"vlan 1", vlans},
      {"vlan 10", vlans},
      {"vlan 11", "vlan 10-11,20,30\n"},
      {"vlan 11-19,40,40,12", "vlan 10-20,30,40\n"},
      {"  vlan\t4094  ", "vlan 10,20,30,4094\n"},
      {"vlan 7-7", "vlan 7,10,20,30\n"},
      {"vlan 31-4094", "vlan 10,20,30-4094\n"},
      {"no vlan 10", "vlan 20,30\n"},
      {"no vlan 10,20,30", ""},
      {"vlan 10 name blue", vlans + "vlan 10 name blue\n"},
      {"vlan 10 name \"blue\"", vlans + "vlan 10 name blue\n"},
      {"vlan 10 name \"deep blue\"", vlans + "vlan 10 name \"deep blue\"\n"},
      {R"(vlan 10 name "a\"b\\c")", vlans + "vlan 10 name \"a\\\"b\\\\c\"\n"},
      {"vlan 10 name name", vlans + "vlan 10 name name\n"},
      {"vlan 10 name !x", vlans + "vlan 10 name \"!x\"\n"},
      {"vlan 10 name \"\"", vlans},
      {"no vlan 10 name", vlans},
      {"vlan 1 name \"\"", vlans + "vlan 1 name \"\"\n"},
      {"no vlan 1 name", vlans},
      {"interface 0/1 vlan 10 participation include",
       vlans + "interface 0/1 vlan 10 participation include\n"},
      {"interface \"0/1\" vlan 10,20 participation exclude",
       vlans + "interface 0/1 vlan 10,20 participation exclude\n"},
      {"interface 3/64 vlan 1 participation auto", vlans + "interface 3/64 vlan 1 participation auto\n"},
      {"interface 0/1 vlan 10 participation auto", vlans},
      {"interface 0/1 vlan 1 participation include", vlans},
      {"no interface 0/1 vlan 1,10 participation", vlans},
      {"interface 0/54 vlan 20-20,10 tagging", vlans + "interface 0/54 vlan 10,20 tagging\n"},
      {"no interface 0/54 vlan 10 tagging", vlans},
      {"interface 3/1 pvid 30", vlans + "interface 3/1 pvid 30\n"},
      {"interface 3/1 pvid 1", vlans},
      {"no interface 3/1 pvid", vlans},
      {"interface 0/9 accept-frames tagged", vlans + "interface 0/9 accept-frames tagged\n"},
      {"interface 0/9 accept-frames untagged", vlans + "interface 0/9 accept-frames untagged\n"},
      {"interface 0/9 accept-frames all", vlans},
      {"no interface 0/9 accept-frames", vlans},
      {"lag 1", vlans},
      {"no lag 64", vlans + "no lag 64\n"},
      {"interface 0/1 lag 64", vlans + "interface 0/1 lag 64\n"},
      {"no interface 0/1 lag", vlans},
      {"interface 0/1 switchport mode trunk", vlans + "interface 0/1 switchport mode trunk\n"},
      {"interface 3/1 switchport mode access", vlans + "interface 3/1 switchport mode access\n"},
      {"interface 0/1 switchport mode general", vlans},
      {"no interface 0/1 switchport mode", vlans},
      {"interface 0/1 switchport access vlan 10", vlans + "interface 0/1 switchport access vlan 10\n"},
      {"interface 0/1 switchport access vlan 1", vlans},
      {"no interface 0/1 switchport access vlan", vlans},
      {"interface 0/1 switchport trunk native vlan 10",
       vlans + "interface 0/1 switchport trunk native vlan 10\n"},
      {"no interface 0/1 switchport trunk native vlan", vlans},
      {"interface 0/1 switchport trunk vlans add 4094,1-3,2",
       vlans + "interface 0/1 switchport trunk vlans add 1-3,4094\n"},
      {"interface 3/64 switchport trunk vlans only 40",
       vlans + "interface 3/64 switchport trunk vlans add 40\n"},
      {"interface 0/1 switchport trunk vlans remove 1-4094", vlans},
      {"no interface 0/1 switchport trunk vlans", vlans},
  };
  for (const auto &[line, expected] : rows) {
    switch_model model = prepared();
    std::string error;
    EXPECT_EQ(apply_line(model, line, &error), OPEN_E_NONE) << line << ": " << error;
    EXPECT_EQ(print_configuration(model), expected) << line;
  }
}

TEST(Language, UndoLinesTakeBackWhatTheirLinesSet) {
  const std::pair<const char *, const char *> rows[] = {
      {"vlan 11-14", "no vlan 11-14"},
      {"vlan 10 name blue", "no vlan 10 name"},
      {"vlan 1 name blue", "no vlan 1 name"},
      {"interface 0/1 vlan 1,10 participation exclude", "no interface 0/1 vlan 1,10 participation"},
      {"interface 0/1 vlan 1,10 tagging", "no interface 0/1 vlan 1,10 tagging"},
      {"interface 0/1 pvid 10", "no interface 0/1 pvid"},
      {"interface 0/1 accept-frames tagged", "no interface 0/1 accept-frames"},
      {"no lag 5", "lag 5"},
      {"interface 0/1 lag 5", "no interface 0/1 lag"},
      {"interface 0/1 switchport mode access", "no interface 0/1 switchport mode"},
      {"interface 0/1 switchport access vlan 10", "no interface 0/1 switchport access vlan"},
      {"interface 0/1 switchport trunk native vlan 10", "no interface 0/1 switchport trunk native vlan"},
      {"interface 0/1 switchport trunk vlans add 10-20", "no interface 0/1 switchport trunk vlans"},
      {"interface 0/1 switchport trunk vlans add 10-20", "interface 0/1 switchport trunk vlans remove 10-20"},
  };
  for (const auto &[line, undo] : rows) {
    switch_model model = prepared();
    std::string before = print_configuration(model), error;
    ASSERT_EQ(apply_line(model, line, &error), OPEN_E_NONE) << line << ": " << error;
    EXPECT_NE(print_configuration(model), before) << line;
    ASSERT_EQ(apply_line(model, undo, &error), OPEN_E_NONE) << undo << ": " << error;
    EXPECT_EQ(print_configuration(model), before) << undo;
  }
}

TEST(Language, NearMissesNameTheirReason) {
  const near_miss rows[] = {
      {"foo", OPEN_E_PARAM, "unknown command \"foo\""},
      {"VLAN 10", OPEN_E_PARAM, "unknown command \"VLAN\""},
      {"\"vlan\" 10", OPEN_E_PARAM, "unknown command \"vlan\""},
      {"vlan", OPEN_E_PARAM, "the line ends too early: <vlan-list> is missing"},
      {"no", OPEN_E_PARAM, "the line ends too early: hostname is missing"},
      {"no no vlan 10", OPEN_E_PARAM, "\"no\" is not expected here"},
      {"vlan 0", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"vlan 4095", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"vlan 99999999999999999999", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"vlan 10-4095", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"vlan 0-10", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"vlan x", OPEN_E_PARAM, "\"x\" is not a VLAN id"},
      {"vlan -1", OPEN_E_PARAM, "\"\" is not a VLAN id"},
      {"vlan +1", OPEN_E_PARAM, "\"+1\" is not a VLAN id"},
      {"vlan 010", OPEN_E_PARAM, "\"010\" is not a VLAN id"},
      {"vlan 0x10", OPEN_E_PARAM, "\"0x10\" is not a VLAN id"},
      {"vlan 1.0", OPEN_E_PARAM, "\"1.0\" is not a VLAN id"},
      {"vlan 10,", OPEN_E_PARAM, "\"\" is not a VLAN id"},
      {"vlan ,10", OPEN_E_PARAM, "\"\" is not a VLAN id"},
      {"vlan 10,,20", OPEN_E_PARAM, "\"\" is not a VLAN id"},
      {"vlan 10-", OPEN_E_PARAM, "\"\" is not a VLAN id"},
      {"vlan 10-20-30", OPEN_E_PARAM, "\"20-30\" is not a VLAN id"},
      {"vlan 20-10", OPEN_E_PARAM, "the range 20-10 runs backwards"},
      {"vlan 10 20", OPEN_E_PARAM, "\"20\" is not expected here"},
      {"vlan 10, 20", OPEN_E_PARAM, "\"\" is not a VLAN id"},
      {"vlan 10 Name x", OPEN_E_PARAM, "\"Name\" is not expected here"},
      {"vlan 10 name", OPEN_E_PARAM, "the line ends too early: <text> is missing"},
      {"vlan 10 name a b", OPEN_E_PARAM, "\"b\" is not expected here"},
      {"vlan 10 name 123456789012345678901234567890123", OPEN_E_PARAM, "the name is longer than 32 bytes"},
      {"vlan 10-20 name x", OPEN_E_PARAM, "\"10-20\" is not a VLAN id"},
      {"vlan 11 name x", OPEN_E_NOT_FOUND, "VLAN 11 does not exist"},
      {"no vlan 11 name", OPEN_E_NOT_FOUND, "VLAN 11 does not exist"},
      {"no vlan 10 name x", OPEN_E_PARAM, "\"x\" is not expected here"},
      {"no vlan 11", OPEN_E_NOT_FOUND, "VLAN 11 does not exist"},
      {"no vlan 10-11", OPEN_E_NOT_FOUND, "VLAN 11 does not exist"},
      {"no vlan 1", OPEN_E_FAIL, "VLAN 1 cannot be deleted"},
      {"interface", OPEN_E_PARAM, "the line ends too early: <port> is missing"},
      {"interface 0/55 pvid 1", OPEN_E_PARAM, "there is no port or LAG \"0/55\""},
      {"interface cpu pvid 1", OPEN_E_PARAM, "there is no port or LAG \"cpu\""},
      {"interface loopback0 pvid 1", OPEN_E_PARAM, "there is no port or LAG \"loopback0\""},
      {"interface \"\" pvid 1", OPEN_E_PARAM, "there is no port or LAG \"\""},
      {"interface 1 pvid 1", OPEN_E_PARAM, "there is no port or LAG \"1\""},
      {"interface 0/1", OPEN_E_PARAM, "the line ends too early: vlan is missing"},
      {"interface 0/1 pvid", OPEN_E_PARAM, "the line ends too early: <vlan> is missing"},
      {"interface 0/1 pvid 10,20", OPEN_E_PARAM, "\"10,20\" is not a VLAN id"},
      {"interface 0/1 pvid 11", OPEN_E_NOT_FOUND, "VLAN 11 does not exist"},
      {"interface 0/1 pvid 4095", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"no interface 0/1 pvid 10", OPEN_E_PARAM, "\"10\" is not expected here"},
      {"interface 0/1 vlan 10 participation", OPEN_E_PARAM,
       "the line ends too early: include|auto|exclude is missing"},
      {"interface 0/1 vlan 10 participation maybe", OPEN_E_PARAM,
       "\"maybe\" is none of include|auto|exclude"},
      {"interface 0/1 vlan 10 participation \"auto\"", OPEN_E_PARAM,
       "\"auto\" is none of include|auto|exclude"},
      {"interface 0/1 vlan 10 participation include|auto", OPEN_E_PARAM,
       "\"include|auto\" is none of include|auto|exclude"},
      {"interface 0/1 vlan 10 participation \"\"", OPEN_E_PARAM, "\"\" is none of include|auto|exclude"},
      {"interface 0/1 vlan 10,11 participation include", OPEN_E_NOT_FOUND, "VLAN 11 does not exist"},
      {"no interface 0/1 vlan 11 participation", OPEN_E_NOT_FOUND, "VLAN 11 does not exist"},
      {"interface 0/1 vlan 10 tagging on", OPEN_E_PARAM, "\"on\" is not expected here"},
      {"interface 0/1 vlan 11 tagging", OPEN_E_NOT_FOUND, "VLAN 11 does not exist"},
      {"no interface 0/1 vlan 11 tagging", OPEN_E_NOT_FOUND, "VLAN 11 does not exist"},
      {"interface 0/1 accept-frames", OPEN_E_PARAM,
       "the line ends too early: all|tagged|untagged is missing"},
      {"interface 0/1 accept-frames none", OPEN_E_PARAM, "\"none\" is none of all|tagged|untagged"},
      {"vlan \"10", OPEN_E_PARAM, "the closing quote is missing"},
      {"lag", OPEN_E_PARAM, "the line ends too early: <port-channel> is missing"},
      {"lag 0", OPEN_E_PARAM, "port-channel id out of range 1..64"},
      {"no lag 65", OPEN_E_PARAM, "port-channel id out of range 1..64"},
      {"lag 99999999999999999999", OPEN_E_PARAM, "port-channel id out of range 1..64"},
      {"lag 01", OPEN_E_PARAM, "\"01\" is not a port-channel id"},
      {"lag 3/1", OPEN_E_PARAM, "\"3/1\" is not a port-channel id"},
      {"lag 1-2", OPEN_E_PARAM, "\"1-2\" is not a port-channel id"},
      {"interface 0/1 lag", OPEN_E_PARAM, "the line ends too early: <port-channel> is missing"},
      {"interface 3/1 lag 2", OPEN_E_NOT_FOUND, "3/1 is a LAG itself"},
      {"no interface 3/1 lag", OPEN_E_NOT_FOUND, "3/1 is a LAG itself"},
      {"no interface 0/1 lag 1", OPEN_E_PARAM, "\"1\" is not expected here"},
      {"interface 0/1 switchport", OPEN_E_PARAM, "the line ends too early: mode is missing"},
      {"interface 0/1 switchport mode", OPEN_E_PARAM,
       "the line ends too early: general|access|trunk is missing"},
      {"interface 0/1 switchport mode Trunk", OPEN_E_PARAM, "\"Trunk\" is none of general|access|trunk"},
      {"interface 0/1 switchport access vlan 11", OPEN_E_NOT_FOUND, "VLAN 11 does not exist"},
      {"interface 0/1 switchport access vlan 0", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"interface 0/1 switchport trunk native vlan 11", OPEN_E_NOT_FOUND, "VLAN 11 does not exist"},
      {"interface 0/1 switchport trunk vlans 10", OPEN_E_PARAM, "\"10\" is none of add|remove|only"},
      {"interface 0/1 switchport trunk vlans add", OPEN_E_PARAM,
       "the line ends too early: <vlan-list> is missing"},
      {"interface 0/1 switchport trunk vlans add \"\"", OPEN_E_PARAM, "\"\" is not a VLAN id"},
      {"interface cpu switchport mode trunk", OPEN_E_PARAM, "there is no port or LAG \"cpu\""},
  };
  expect_refused(prepared(), rows);
}

TEST(Language, FullTableSaysHowMuchThereIsRoomFor) {
  switch_model model = prepared();
  std::string error;
  ASSERT_TRUE(limit_override(&model.limits, "vlans", 5));
  EXPECT_EQ(apply_line(model, "vlan 10,40-41", &error), OPEN_E_FULL);
  EXPECT_EQ(error, "VLAN 41: there is room for 5 VLANs only");
}

TEST(Language, LinesThatNameADeletedLagAreRefused) {
  const struct {
    const char *line;
    open_error_t code;
    const char *error;
  } rows[] = {
      {"no lag 1", OPEN_E_NOT_FOUND, "port-channel 1 does not exist"},
      {"interface 0/1 lag 1", OPEN_E_NOT_FOUND, "port-channel 1 does not exist"},
      {"interface 3/1 pvid 1", OPEN_E_PARAM, "there is no port or LAG \"3/1\""},
      {"interface 3/1 vlan 10 tagging", OPEN_E_PARAM, "there is no port or LAG \"3/1\""},
      {"interface 3/1 switchport mode trunk", OPEN_E_PARAM, "there is no port or LAG \"3/1\""},
      {"no interface 3/1 switchport trunk vlans", OPEN_E_PARAM, "there is no port or LAG \"3/1\""},
  };
  switch_model model = prepared();
  std::string error;
  ASSERT_EQ(apply_line(model, "no lag 1", &error), OPEN_E_NONE) << error;
  for (const auto &row : rows) {
    EXPECT_EQ(apply_line(model, row.line, &error), row.code) << row.line;
    EXPECT_EQ(error, row.error) << row.line;
  }
  EXPECT_EQ(print_configuration(model), "vlan 10,20,30\nno lag 1\n");
}

TEST(Language, PortThatCannotJoinALagIsToldWhy) {
  switch_model model = prepared();
  std::string error;
  ASSERT_TRUE(limit_override(&model.limits, "lag-members", 1));
  ASSERT_EQ(apply_line(model, "interface 0/1 lag 5", &error), OPEN_E_NONE) << error;
  EXPECT_EQ(apply_line(model, "interface 0/1 lag 5", &error), OPEN_E_NONE) << "it is one already";
  EXPECT_EQ(apply_line(model, "interface 0/1 lag 6", &error), OPEN_E_FAIL);
  EXPECT_EQ(error, "0/1 is a member of port-channel 5");
  EXPECT_EQ(apply_line(model, "interface 0/2 lag 5", &error), OPEN_E_FULL);
  EXPECT_EQ(error, "port-channel 5: there is room for 1 members only");
}

TEST(Language, LongListsOfATrunkAreCutIntoSeveralLinesThatAdd) {
  switch_model model = factory();
  std::string error;
  ASSERT_EQ(
      apply_line(model, "interface 0/1 switchport trunk vlans only 1,3,5,7,9,11,13,15,17,19-4094", &error),
      OPEN_E_NONE)
      << error;
  EXPECT_EQ(print_configuration(model), "interface 0/1 switchport trunk vlans add 1,3,5,7,9,11,13,15\n"
                                        "interface 0/1 switchport trunk vlans add 17,19-4094\n");
}

TEST(Language, VlanWithARoutingInterfaceIsNotDeleted) {
  switch_model model = prepared();
  std::string error;
  uint32_t number;
  ASSERT_EQ(interface_make_vlan_routing(model, 20, &number), OPEN_E_NONE);
  EXPECT_EQ(apply_line(model, "no vlan 20", &error), OPEN_E_FAIL);
  EXPECT_EQ(error, "VLAN 20 has a routing interface");
}

TEST(Language, PortNamesOfTheProfileMayNeedQuotes) {
  chassis_profile profile = built_in_profile();
  profile.ports[0].name = "wan port";
  switch_model model = make_switch(profile);
  std::string error;
  ASSERT_EQ(apply_line(model, "interface \"wan port\" vlan 1 tagging", &error), OPEN_E_NONE) << error;
  EXPECT_EQ(print_configuration(model), "interface \"wan port\" vlan 1 tagging\n");
}

/* --- Texts ---------------------------------------------------------------------------------------------- */

TEST(Language, TextMayEndItsLinesEitherWay) {
  for (const char *text : {"vlan 10\nvlan 20\n", "vlan 10\r\n\r\nvlan 20\r\n", "! x\n\n\nvlan 10\nvlan 20",
                           "vlan 20\nno vlan 20\nvlan 10,20\n"}) {
    switch_model model = factory();
    std::string error;
    EXPECT_TRUE(apply_text(model, text, &error)) << text << error;
    EXPECT_EQ(print_configuration(model), "vlan 10,20\n") << text;
  }
}

TEST(Language, ErrorInATextNamesItsLine) {
  const std::pair<const char *, const char *> rows[] = {
      {"vlan 10\n! ok\n\nvlan 4095\nvlan x\n", "line 4: VLAN id out of range 1..4094"},
      {"foo", "line 1: unknown command \"foo\""},
      {"vlan 10\r\nvlan 10 name\r\n", "line 2: the line ends too early: <text> is missing"},
      {"vlan 10\rvlan 20\n", "line 1: the line holds a control character"},
      {"vlan 10 name x\nvlan 10\n", "line 1: VLAN 10 does not exist"},
  };
  for (const auto &[text, reason] : rows) {
    switch_model model = factory();
    std::string error;
    EXPECT_FALSE(apply_text(model, text, &error)) << text;
    EXPECT_EQ(error, reason);
  }
}

/* --- Printing ------------------------------------------------------------------------------------------- */

TEST(Language, LongListsAreCutIntoSeveralLines) {
  switch_model model = factory();
  std::string error, text;
  for (int id = 2; id <= 40; id += 2) text += "vlan " + std::to_string(id) + "\n";
  ASSERT_TRUE(apply_text(model, text + "vlan 1000-2000\n", &error)) << error;
  EXPECT_EQ(print_configuration(model), "vlan 2,4,6,8,10,12,14,16\n"
                                        "vlan 18,20,22,24,26,28,30,32\n"
                                        "vlan 34,36,38,40,1000-2000\n");
}

TEST(Language, ConfigurationIsPrintedInTheOrderOfTheTable) {
  switch_model model = factory();
  std::string error;
  const char *text = "vlan 10,20\n"
                     "vlan 10 name blue\n"
                     "no lag 2\n"
                     "no lag 63\n"
                     "interface 0/2 vlan 20 participation include\n"
                     "interface 0/2 vlan 1 participation auto\n"
                     "interface 0/2 vlan 10 participation exclude\n"
                     "interface 3/1 vlan 10 participation include\n"
                     "interface 0/1 vlan 10,20 tagging\n"
                     "interface 0/1 pvid 10\n"
                     "interface 0/3 accept-frames untagged\n"
                     "interface 0/1 switchport mode access\n"
                     "interface 3/1 switchport mode trunk\n"
                     "interface 0/2 switchport access vlan 10\n"
                     "interface 0/1 switchport trunk native vlan 20\n"
                     "interface 0/1 switchport trunk vlans add 10-4094\n"
                     "interface 0/5 lag 3\n"
                     "interface 0/6 lag 1\n";
  ASSERT_TRUE(apply_text(model, text, &error)) << error;
  EXPECT_EQ(print_configuration(model), text);
}

static int random_number(std::mt19937 &random, int low, int high) {
  return std::uniform_int_distribution<int>(low, high)(random);
}

/* A line that may or may not apply. Few VLANs and ports, so that lines meet each other. */
static std::string random_line(std::mt19937 &random) {
  static const char *const ports[] = {"0/1", "0/2", "0/54", "3/1", "3/64"};
  static const char *const names[] = {"x", "\"a b\"", "\"\\\"\\\\\"", "\"\"", "default"};
  static const char *const modes[] = {"include", "auto", "exclude"};
  static const char *const frames[] = {"all", "tagged", "untagged"};
  std::string first = std::to_string(random_number(random, 1, 40));
  std::string list = first + "," + std::to_string(random_number(random, 1, 40));
  std::string port = ports[random_number(random, 0, 4)];
  switch (random_number(random, 0, 10)) {
  case 0:
    return "no vlan " + first;
  case 1:
    return "vlan " + first + " name " + names[random_number(random, 0, 4)];
  case 2:
    return "no vlan " + first + " name";
  case 3:
    return "interface " + port + " vlan " + list + " participation " + modes[random_number(random, 0, 2)];
  case 4:
    return "no interface " + port + " vlan " + list + " participation";
  case 5:
    return "interface " + port + " vlan " + list + " tagging";
  case 6:
    return "no interface " + port + " vlan " + list + " tagging";
  case 7:
    return "interface " + port + " pvid " + first;
  case 8:
    return "interface " + port + " accept-frames " + frames[random_number(random, 0, 2)];
  default:
    return "vlan " + list;
  }
}

TEST(Language, PrintAppliedToAFactorySwitchPrintsTheSame) {
  for (unsigned seed = 0; seed < 200; seed++) {
    std::mt19937 random(seed);
    switch_model model = factory();
    int applied = 0;
    for (int line = 0; line < 120; line++) {
      switch_model changed = model;
      std::string error;
      if (apply_line(changed, random_line(random), &error) != OPEN_E_NONE) continue;
      model = changed;
      applied++;
    }
    ASSERT_GT(applied, 20) << "seed " << seed;
    std::string printed = print_configuration(model), error;
    switch_model again = factory();
    ASSERT_TRUE(apply_text(again, printed, &error)) << "seed " << seed << ": " << error << "\n" << printed;
    ASSERT_EQ(print_configuration(again), printed) << "seed " << seed;
  }
}
