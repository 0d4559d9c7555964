/* Tests of the configuration lines about what an interface is by itself: what they print, their undoing,
 * their errors, and that printing and applying are each other's inverse. */
#include "platform/softswitch/config/interface_lines.h"

#include "tests/unit/platform/mixed_ports.h"

#include <random>

using namespace softswitch;

namespace {

/* The switch of mixed_ports.h with a routing interface of VLAN 1. */
switch_model prepared() {
  switch_model model = mixed_ports_model();
  uint32_t number;
  EXPECT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  return model;
}

TEST(InterfaceLines, GoodLinesGiveTheirConfiguration) {
  const std::pair<std::string, std::string> rows[] = {
      {"interface 0/1 shutdown", "interface 0/1 shutdown\n"},
      {"interface 3/64 shutdown", "interface 3/64 shutdown\n"},
      {"interface loopback7 shutdown", "interface loopback7 shutdown\n"},
      {"interface 0/9 soft-shutdown", "interface 0/9 soft-shutdown\n"},
      {"interface 0/1 description uplink", "interface 0/1 description uplink\n"},
      {"interface 0/1 description \"to the core\"", "interface 0/1 description \"to the core\"\n"},
      {R"(interface 3/1 description "a\"b\\c")", "interface 3/1 description \"a\\\"b\\\\c\"\n"},
      {"interface loopback0 description shutdown", "interface loopback0 description shutdown\n"},
      {"interface 0/1 description \"\"", ""},
      {"interface 0/1 description no", "interface 0/1 description no\n"},
      {"interface 0/1 mtu 9000", "interface 0/1 mtu 9000\n"},
      {"interface 3/1 mtu 12270", "interface 3/1 mtu 12270\n"},
      {"interface 0/1 mtu 1518", ""},
      {"interface 0/1 speed 10-half", "interface 0/1 speed 10-half\n"},
      {"interface 0/2 speed 10-full", "interface 0/2 speed 10-full\n"},
      {"interface 0/2 speed 100-half", "interface 0/2 speed 100-half\n"},
      {"interface 0/2 speed 100-full", "interface 0/2 speed 100-full\n"},
      {"interface 0/2 speed 1000", "interface 0/2 auto-negotiation off\n"},
      {"interface 0/3 speed 2500", "interface 0/3 speed 2500\n"},
      {"interface 0/3 speed 5000", "interface 0/3 speed 5000\n"},
      {"interface 0/3 speed \"1000\"", "interface 0/3 speed 1000\n"},
      {"interface 0/4 speed 10000", "interface 0/4 speed 10000\n"},
      {"interface 0/4 speed 25000", "interface 0/4 speed 25000\n"},
      {"interface 0/4 speed 40000", "interface 0/4 auto-negotiation off\n"},
      {"interface 0/5 speed 100-fx", ""},
      {"interface 0/6 speed 1000", ""},
      {"interface 0/7 speed 1000", "interface 0/7 speed 1000\n"},
      {"interface 0/8 speed 40000", ""},
      {"interface 0/1 auto-negotiation off", "interface 0/1 auto-negotiation off\n"},
      {"interface 0/1 auto-negotiation on", ""},
      {"no interface 0/1 shutdown", ""},
      {"no interface 0/1 soft-shutdown", ""},
      {"no interface 0/1 description", ""},
      {"no interface 0/1 mtu", ""},
      {"no interface 0/8 speed", ""},
      {"no interface 0/1 auto-negotiation", ""},
  };
  for (const auto &[line, expected] : rows) {
    switch_model model = mixed_ports_model();
    std::string error;
    EXPECT_EQ(apply_line(model, line, &error), OPEN_E_NONE) << line << ": " << error;
    EXPECT_EQ(print_configuration(model), expected) << line;
    switch_model again = mixed_ports_model();
    EXPECT_TRUE(apply_text(again, expected, &error)) << error;
    EXPECT_EQ(print_configuration(again), expected);
  }
}

TEST(InterfaceLines, UndoLinesTakeBackWhatTheirLinesSet) {
  const std::pair<const char *, const char *> rows[] = {
      {"interface 0/1 shutdown", "no interface 0/1 shutdown"},
      {"interface 0/1 soft-shutdown", "no interface 0/1 soft-shutdown"},
      {"interface loopback3 description x", "no interface loopback3 description"},
      {"interface 3/2 mtu 2000", "no interface 3/2 mtu"},
      {"interface 0/1 speed 10-half", "no interface 0/1 speed"},
      {"interface 0/1 speed 100-full", "no interface 0/1 speed"},
      {"interface 0/7 speed 1000", "no interface 0/7 speed"},
      {"interface 0/2 auto-negotiation off", "no interface 0/2 auto-negotiation"},
      {"interface 0/2 auto-negotiation off", "no interface 0/2 speed"},
  };
  for (const auto &[line, undo] : rows) {
    switch_model model = mixed_ports_model();
    std::string error;
    ASSERT_EQ(apply_line(model, line, &error), OPEN_E_NONE) << line << ": " << error;
    EXPECT_NE(print_configuration(model), "") << line;
    ASSERT_EQ(apply_line(model, undo, &error), OPEN_E_NONE) << undo << ": " << error;
    EXPECT_EQ(print_configuration(model), "") << undo;
    uint64_t change = model.change;
    ASSERT_EQ(apply_line(model, undo, &error), OPEN_E_NONE) << undo << ": " << error;
    EXPECT_EQ(model.change, change) << "undoing twice is no change: " << undo;
  }
}

/* A fixed speed that negotiation hides for now must come back with its print. */
TEST(InterfaceLines, FixedSpeedIsKeptWhileAutoNegotiationIsOn) {
  switch_model model = mixed_ports_model();
  std::string error;
  const char *text = "interface 0/3 speed 100-half\ninterface 0/3 auto-negotiation on\n";
  ASSERT_TRUE(apply_text(model, text, &error)) << error;
  EXPECT_EQ(print_configuration(model), text);
  ASSERT_EQ(apply_line(model, "interface 0/3 auto-negotiation off", &error), OPEN_E_NONE);
  EXPECT_EQ(print_configuration(model), "interface 0/3 speed 100-half\n");
}

TEST(InterfaceLines, NearMissesNameTheirReason) {
  const std::string always = " is always enabled", soft = " is no port: only ports have a soft shutdown",
                    speed = " is no port: only ports have a speed",
                    copper = " is no copper port: only copper ports have auto-negotiation",
                    speeds =
                        " is no speed; there are 10-half 10-full 100-half 100-full 100-fx 1000 2500 5000 "
                        "10000 25000 40000 50000 100000";
  const struct {
    std::string line;
    open_error_t code;
    std::string error;
  } rows[] = {
      {"interface 0/10 shutdown", OPEN_E_PARAM, "there is no interface \"0/10\""},
      {"interface vlan2 mtu 1518", OPEN_E_PARAM, "there is no interface \"vlan2\""},
      {"interface loopback8 description x", OPEN_E_PARAM, "there is no interface \"loopback8\""},
      {"no interface 0/10 speed", OPEN_E_PARAM, "there is no interface \"0/10\""},
      {"interface cpu shutdown", OPEN_E_UNAVAIL, "cpu" + always},
      {"no interface cpu shutdown", OPEN_E_UNAVAIL, "cpu" + always},
      {"interface vlan1 shutdown", OPEN_E_UNAVAIL, "vlan1" + always},
      {"interface 0/1 shutdown now", OPEN_E_PARAM, "\"now\" is not expected here"},
      {"interface 0/1 \"shutdown\"", OPEN_E_PARAM, "\"shutdown\" is not expected here"},
      {"interface 0/1 Shutdown", OPEN_E_PARAM, "\"Shutdown\" is not expected here"},
      {"interface 3/1 soft-shutdown", OPEN_E_UNAVAIL, "3/1" + soft},
      {"no interface cpu soft-shutdown", OPEN_E_UNAVAIL, "cpu" + soft},
      {"interface loopback0 soft-shutdown", OPEN_E_UNAVAIL, "loopback0" + soft},
      {"interface cpu description x", OPEN_E_UNAVAIL, "cpu has no description"},
      {"no interface vlan1 description", OPEN_E_UNAVAIL, "vlan1 has no description"},
      {"interface 0/1 description", OPEN_E_PARAM, "the line ends too early: <text> is missing"},
      {"interface 0/1 description a b", OPEN_E_PARAM, "\"b\" is not expected here"},
      {"interface 0/1 description " + std::string(65, 'x'), OPEN_E_PARAM,
       "the description is longer than 64 bytes"},
      {"interface 0/1 description \"a\tb\"", OPEN_E_PARAM, "the description holds a control character"},
      {"interface 0/1 mtu", OPEN_E_PARAM, "the line ends too early: <number> is missing"},
      {"interface 0/1 mtu big", OPEN_E_PARAM, "\"big\" is not a number"},
      {"interface 0/1 mtu -1", OPEN_E_PARAM, "\"-1\" is not a number"},
      {"interface 0/1 mtu +9000", OPEN_E_PARAM, "\"+9000\" is not a number"},
      {"interface 0/1 mtu 09000", OPEN_E_PARAM, "\"09000\" is not a number"},
      {"interface 0/1 mtu 0x2000", OPEN_E_PARAM, "\"0x2000\" is not a number"},
      {"interface 0/1 mtu \"\"", OPEN_E_PARAM, "\"\" is not a number"},
      {"interface 0/1 mtu 1517", OPEN_E_PARAM, "MTU out of range 1518..12270"},
      {"interface 0/1 mtu 12271", OPEN_E_PARAM, "MTU out of range 1518..12270"},
      {"interface 0/1 mtu 4294968814", OPEN_E_PARAM, "the number 4294968814 is too large"},
      {"interface cpu mtu 0", OPEN_E_PARAM, "MTU out of range 1518..12270"},
      {"interface cpu mtu 1518", OPEN_E_UNAVAIL, "cpu has no MTU of its own"},
      {"no interface loopback0 mtu", OPEN_E_UNAVAIL, "loopback0 has no MTU of its own"},
      {"interface 0/1 speed", OPEN_E_PARAM, "the line ends too early: <speed> is missing"},
      {"interface 0/1 speed fast", OPEN_E_PARAM, "\"fast\"" + speeds},
      {"interface 0/1 speed 100", OPEN_E_PARAM, "\"100\"" + speeds},
      {"interface 0/1 speed auto", OPEN_E_PARAM, "\"auto\"" + speeds},
      {"interface 0/1 speed \"\"", OPEN_E_PARAM, "\"\"" + speeds},
      {"interface 0/1 speed 1000", OPEN_E_UNAVAIL, "0/1 does not have the speed 1000"},
      {"interface 0/2 speed 100-fx", OPEN_E_UNAVAIL, "0/2 does not have the speed 100-fx"},
      {"interface 0/4 speed 50000", OPEN_E_UNAVAIL, "0/4 does not have the speed 50000"},
      {"interface 0/5 speed 100-full", OPEN_E_UNAVAIL, "0/5 does not have the speed 100-full"},
      {"interface 0/7 speed 2500", OPEN_E_UNAVAIL, "0/7 does not have the speed 2500"},
      {"interface 0/8 speed 10000", OPEN_E_UNAVAIL, "0/8 does not have the speed 10000"},
      {"interface 3/1 speed 1000", OPEN_E_UNAVAIL, "3/1 does not have the speed 1000"},
      {"no interface 3/1 speed", OPEN_E_UNAVAIL, "3/1" + speed},
      {"no interface cpu speed", OPEN_E_UNAVAIL, "cpu" + speed},
      {"interface 0/1 auto-negotiation", OPEN_E_PARAM, "the line ends too early: on|off is missing"},
      {"interface 0/1 auto-negotiation yes", OPEN_E_PARAM, "\"yes\" is none of on|off"},
      {"interface 0/8 auto-negotiation off", OPEN_E_UNAVAIL, "0/8" + copper},
      {"interface 3/1 auto-negotiation on", OPEN_E_UNAVAIL, "3/1" + copper},
      {"no interface 0/8 auto-negotiation", OPEN_E_UNAVAIL, "0/8" + copper},
  };
  for (const auto &row : rows) {
    switch_model model = prepared();
    std::string error;
    EXPECT_EQ(apply_line(model, row.line, &error), row.code) << row.line;
    EXPECT_EQ(error, row.error) << row.line;
    EXPECT_EQ(print_configuration(model), print_configuration(prepared())) << row.line;
  }
}

/* The words of a line say which line is meant, so that what is wrong between them is named. */
TEST(InterfaceLines, ErrorIsThatOfTheLineWhoseKeywordsAreThere) {
  const std::pair<const char *, const char *> rows[] = {
      {"interface cpu pvid 1", "there is no port or LAG \"cpu\""},
      {"interface 0/99 pvid 1", "there is no port or LAG \"0/99\""},
      {"interface 0/99 mtu 9000", "there is no interface \"0/99\""},
      {"interface 0/99 mtu", "there is no port or LAG \"0/99\""},
      {"interface cpu nonsense", "\"nonsense\" is not expected here"},
      {"interface cpu", "the line ends too early: shutdown is missing"},
  };
  for (const auto &[line, reason] : rows) {
    switch_model model = prepared();
    std::string error;
    EXPECT_EQ(apply_line(model, line, &error), OPEN_E_PARAM) << line;
    EXPECT_EQ(error, reason) << line;
  }
}

TEST(InterfaceLines, ConfigurationIsPrintedInTheOrderOfTheTable) {
  switch_model model = mixed_ports_model();
  std::string error;
  const char *text = "vlan 10\n"
                     "interface 0/9 pvid 10\n"
                     "interface 0/2 shutdown\n"
                     "interface loopback1 shutdown\n"
                     "interface 0/3 soft-shutdown\n"
                     "interface 0/1 description one\n"
                     "interface 3/1 description \"a LAG\"\n"
                     "interface 0/1 mtu 2000\n"
                     "interface 0/2 speed 100-full\n"
                     "interface 0/3 speed 10-half\n"
                     "interface 0/1 auto-negotiation off\n"
                     "interface 0/3 auto-negotiation on\n";
  ASSERT_TRUE(apply_text(model, text, &error)) << error;
  EXPECT_EQ(print_configuration(model), text);
}

std::string random_line(std::mt19937 &random) {
  static const char *const interfaces[] = {"0/1", "0/2", "0/3", "0/7", "3/1", "loopback0", "cpu"};
  static const char *const settings[] = {"shutdown",
                                         "soft-shutdown",
                                         "description x",
                                         "description \"\\\"\\\\ \xc3\xa9\"",
                                         "description \"\"",
                                         "mtu 1518",
                                         "mtu 9000",
                                         "mtu 12271",
                                         "speed 10-half",
                                         "speed 100-full",
                                         "speed 1000",
                                         "speed 10000",
                                         "auto-negotiation on",
                                         "auto-negotiation off"};
  static const char *const undone[] = {"shutdown", "soft-shutdown", "description",
                                       "mtu",      "speed",         "auto-negotiation"};
  std::string interface = std::string("interface ") + interfaces[random() % std::size(interfaces)] + " ";
  if (random() % 3 == 0) return "no " + interface + undone[random() % std::size(undone)];
  return interface + settings[random() % std::size(settings)];
}

TEST(InterfaceLines, PrintAppliedToAFactorySwitchGivesTheSameSwitch) {
  for (unsigned seed = 0; seed < 200; seed++) {
    std::mt19937 random(seed);
    switch_model model = mixed_ports_model();
    int applied = 0;
    for (int line = 0; line < 60; line++) {
      switch_model changed = model;
      std::string error;
      if (apply_line(changed, random_line(random), &error) != OPEN_E_NONE) continue;
      model = changed;
      applied++;
    }
    ASSERT_GT(applied, 10) << "seed " << seed;
    std::string printed = print_configuration(model), error;
    switch_model again = mixed_ports_model();
    ASSERT_TRUE(apply_text(again, printed, &error)) << "seed " << seed << ": " << error << "\n" << printed;
    ASSERT_EQ(print_configuration(again), printed) << "seed " << seed;
    for (uint32_t port = 1; port <= 9; port++) {
      ASSERT_EQ(again.interfaces->at[port].speed, model.interfaces->at[port].speed) << printed;
      ASSERT_EQ(again.interfaces->at[port].auto_negotiation, model.interfaces->at[port].auto_negotiation)
          << printed;
    }
  }
}

/* A profile with other ports than the configuration was made for is found out at the start. */
class ReplacedPorts : public MixedPorts {};

TEST_F(ReplacedPorts, SpeedThatAPortDoesNotHaveAnyMoreStopsTheStart) {
  ASSERT_EQ(commit("interface 0/2 speed 10-half"), OPEN_E_NONE);
  stop();
  unsetenv("KESTREL_PROFILE");
  std::string error;
  EXPECT_FALSE(start(&error));
  EXPECT_EQ(error, dir.path + "/journal-1, line 1: 0/2 does not have the speed 10-half");
}

} // namespace
