/* Chassis profiles and settings. */
#include "platform/softswitch/services/profile.h"

#include "platform/softswitch/services/json_lines.h"
#include "platform/softswitch/services/settings.h"
#include "tests/unit/platform/services_test_support.h"

#include <string.h>

using namespace softswitch;

namespace {

/* Everything of a profile in one text, so that whole profiles can be compared. */
std::string text_of(const chassis_profile &profile) {
  std::string text = profile.model + "|" + profile.serial + "|" + profile.mac + "|" + profile.description +
                     "|" + profile.os_version + "|" + profile.storage;
  for (const port_profile &port : profile.ports)
    text += "\n" + port.name + " " + std::to_string(port.speed_mbps) + (port.copper ? " copper" : "") +
            (port.cabled ? " cabled" : "");
  return text;
}

chassis_profile marked_profile() {
  chassis_profile profile;
  profile.model = "untouched";
  return profile;
}

std::string long_list(int ports) {
  std::string list = "{\"ports\": [";
  for (int i = 1; i <= ports; i++)
    list += std::string(i > 1 ? "," : "") + "{\"name\":\"0/" + std::to_string(i) + "\"}";
  return list + "]}";
}

TEST(Profile, BuiltInSwitchHas48TenAndSixFortyGigabitCages) {
  chassis_profile profile = built_in_profile();
  ASSERT_EQ(profile.ports.size(), 54u);
  for (int i = 0; i < 54; i++) {
    const port_profile &port = profile.ports[static_cast<size_t>(i)];
    EXPECT_EQ(port.name, "0/" + std::to_string(i + 1));
    EXPECT_EQ(port.speed_mbps, i < 48 ? 10000u : 40000u);
    EXPECT_FALSE(port.copper);
    EXPECT_TRUE(port.cabled);
  }
  EXPECT_EQ(profile.mac, "02:00:5E:10:00:01");
}

TEST(Profile, EmptyProfileIsAsBuiltIn) {
  chassis_profile profile;
  std::string error;
  ASSERT_TRUE(parse_profile(" {}\n", "p", &profile, &error)) << error;
  EXPECT_EQ(text_of(profile), text_of(built_in_profile()));
}

TEST(Profile, ExampleOfTheDocumentationIsGood) {
  std::string source = __FILE__;
  std::string root = source.substr(0, source.rfind("/tests/unit/"));
  chassis_profile profile;
  std::string error;
  ASSERT_TRUE(load_profile(root + "/docs/examples/small-switch.json", &profile, &error)) << error;
  EXPECT_EQ(text_of(profile),
            "Lab-Switch-8|LAB0000000042|02:00:5E:20:00:01|Small lab switch, 4 x 1G copper, 3 x 10G "
            "SFP+ and 1 x 40G QSFP|0.1.0|flash\n"
            "0/1 1000 copper cabled\n0/2 1000 copper cabled\n0/3 1000 copper cabled\n"
            "0/4 1000 copper\n0/5 10000 cabled\n0/6 10000 cabled\n0/7 10000\n0/8 40000 cabled");
}

TEST(Profile, WhatIsLeftOutIsAsBuiltIn) {
  chassis_profile profile, expected = built_in_profile();
  std::string error;
  expected.serial = "X1";
  expected.mac = "0A:0B:0C:0D:0E:0F";
  expected.ports = {{"0/7", 10000, false, true}, {"0/3", 100, true, false}};
  ASSERT_TRUE(
      parse_profile("{\"serial\": \"X1\", \"mac\": \"0a:0b:0C:0d:0e:0f\", \"ports\": [{\"name\": \"0/7\"},"
                    "{\"name\": \"0/3\", \"speed_mbps\": 100, \"copper\": true, \"cabled\": false}]}",
                    "p", &profile, &error))
      << error;
  EXPECT_EQ(text_of(profile), text_of(expected));
}

TEST(Profile, GoodTextsAreTaken) {
  for (const std::string &text : {std::string("{\"model\": \"") + std::string(255, 'x') + "\"}",
                                  std::string("{\"storage\": \"\\u00e4 \\\" /\"}"), long_list(1),
                                  long_list(54), std::string("{\"ports\": [{\"name\": \"0/999\"}]}"),
                                  std::string("\r\n\t {\"mac\": \"FE:ff:FF:ff:FF:ff\"}\r\n\t ")}) {
    chassis_profile profile;
    std::string error;
    EXPECT_TRUE(parse_profile(text, "p", &profile, &error)) << error << "\n" << text;
  }
}

TEST(Profile, ServicePortHasAnyNetworkMask) {
  EXPECT_EQ(built_in_profile().service_port_mask, 0xffffff00);
  const std::pair<const char *, uint32_t> rows[] = {
      {"128.0.0.0", 0x80000000}, {"255.255.252.0", 0xfffffc00}, {"255.255.255.255", 0xffffffff}};
  for (const auto &[text, mask] : rows) {
    chassis_profile profile;
    std::string error;
    ASSERT_TRUE(
        parse_profile(std::string("{\"service_port_mask\": \"") + text + "\"}", "p", &profile, &error))
        << error;
    EXPECT_EQ(profile.service_port_mask, mask) << text;
  }
}

struct bad_profile {
  std::string text;
  std::string error;
};

void expect_refused(const bad_profile &row) {
  chassis_profile profile = marked_profile();
  std::string error;
  EXPECT_FALSE(parse_profile(row.text, "p", &profile, &error)) << row.text;
  EXPECT_EQ(error, row.error) << row.text;
  EXPECT_EQ(text_of(profile), text_of(marked_profile())) << row.text;
}

TEST(Profile, WrongValuesAreRefusedWithTheirLineAndChangeNothing) {
  const std::string text_rule = " must be a text of 1 to 255 bytes without control characters";
  const std::string mac_rule = " must be a station's MAC address like \"02:00:5E:10:00:01\"";
  const std::string mask_rule = " must be a network mask like \"255.255.255.0\"";
  const std::string name_rule = " must be \"0/1\" to \"0/999\"";
  const std::string speed_rule = " must be 100, 1000, 10000 or 40000";
  const bad_profile table[] = {
      {"[]", "p:1: the profile must be an object"},
      {"null", "p:1: the profile must be an object"},
      {"\n7", "p:2: the profile must be an object"},
      {"{\n\"colour\": 1}", "p:2: colour is not known here"},
      {"{\n\"\": 1}", "p:2: a member's name must stand in double quotes, not empty and without escapes"},
      {"{\"Model\": \"x\"}", "p:1: Model is not known here"},
      {"{\"mod\\u0065l\": \"x\"}",
       "p:1: a member's name must stand in double quotes, not empty and without escapes"},
      {"{\n'model': \"x\"}",
       "p:2: a member's name must stand in double quotes, not empty and without escapes"},
      {"{\"model\": 7}", "p:1: model" + text_rule},
      {"{\"model\": null}", "p:1: model" + text_rule},
      {"{\"model\": \"\"}", "p:1: model" + text_rule},
      {"{\"model\":\n\n\"a\\nb\"}", "p:1: model" + text_rule},
      {"{\"serial\": \"a\\u0000b\"}", "p:1: serial" + text_rule},
      {"{\"description\": \"" + std::string(256, 'x') + "\"}", "p:1: description" + text_rule},
      {"{\"os_version\": true}", "p:1: os_version" + text_rule},
      {"{\"storage\": {}}", "p:1: storage" + text_rule},
      {"{\"service_port_mask\": 24}", "p:1: service_port_mask" + text_rule},
      {"{\"service_port_mask\": \"0.0.0.0\"}", "p:1: service_port_mask" + mask_rule},
      {"{\"service_port_mask\": \"255.0.255.0\"}", "p:1: service_port_mask" + mask_rule},
      {"{\"service_port_mask\": \"255.255.255\"}", "p:1: service_port_mask" + mask_rule},
      {"{\"service_port_mask\": \"ffff::\"}", "p:1: service_port_mask" + mask_rule},
      {"{\"mac\": 2}", "p:1: mac" + text_rule},
      {"{\"mac\": \"02:00:5E:10:00\"}", "p:1: mac" + mac_rule},
      {"{\"mac\": \"02:00:5E:10:00:0g\"}", "p:1: mac" + mac_rule},
      {"{\"mac\": \"02-00-5E-10-00-01\"}", "p:1: mac" + mac_rule},
      {"{\"mac\": \"02:00:5E:10:00:01 \"}", "p:1: mac" + mac_rule},
      {"{\"mac\": \"00:00:00:00:00:00\"}", "p:1: mac" + mac_rule},
      {"{\"mac\": \"01:00:5E:10:00:01\"}", "p:1: mac" + mac_rule},
      {"{\"mac\": \"FF:FF:FF:FF:FF:FF\"}", "p:1: mac" + mac_rule},
      {"{\"model\": \"a\",\n\"serial\": \"b\",\n\"model\": \"c\"}", "p:3: model is given twice"},
      {"{\"ports\": {}}", "p:1: ports must be a list of 1 to 54 ports"},
      {"{\"ports\": []}", "p:1: ports must be a list of 1 to 54 ports"},
      {long_list(55), "p:1: ports must be a list of 1 to 54 ports"},
      {"{\"ports\": [\n7]}", "p:2: ports[0] must be an object"},
      {"{\"ports\": [\n{}]}", "p:2: ports[0] must have a name"},
      {"{\"ports\": [{\"name\": \"0/1\"},\n{\"speed_mbps\": 100}]}", "p:2: ports[1] must have a name"},
      {"{\"ports\": [{\"name\": \"0/1\"},\n{\n\"name\": \"0/1\"}]}",
       "p:3: ports[1].name is \"0/1\", as another port's"},
      {"{\"ports\": [{\"name\": \"0/1\",\n\"name\": \"0/2\"}]}", "p:2: ports[0].name is given twice"},
      {"{\"ports\": [{\"name\": \"0/1\",\n\"colour\": 1}]}", "p:2: ports[0].colour is not known here"},
      {"{\"ports\": [{\"name\": \"0/0\"}]}", "p:1: ports[0].name" + name_rule},
      {"{\"ports\": [{\"name\": \"0/01\"}]}", "p:1: ports[0].name" + name_rule},
      {"{\"ports\": [{\"name\": \"0/\"}]}", "p:1: ports[0].name" + name_rule},
      {"{\"ports\": [{\"name\": \"0/1000\"}]}", "p:1: ports[0].name" + name_rule},
      {"{\"ports\": [{\"name\": \"3/1\"}]}", "p:1: ports[0].name" + name_rule},
      {"{\"ports\": [{\"name\": \"0/1 \"}]}", "p:1: ports[0].name" + name_rule},
      {"{\"ports\": [{\"name\": 1}]}", "p:1: ports[0].name" + text_rule},
      {"{\"ports\": [{\"name\": \"0/1\", \"speed_mbps\": 0}]}", "p:1: ports[0].speed_mbps" + speed_rule},
      {"{\"ports\": [{\"name\": \"0/1\", \"speed_mbps\": 10001}]}", "p:1: ports[0].speed_mbps" + speed_rule},
      {"{\"ports\": [{\"name\": \"0/1\", \"speed_mbps\": -100}]}", "p:1: ports[0].speed_mbps" + speed_rule},
      {"{\"ports\": [{\"name\": \"0/1\", \"speed_mbps\": 4294977296}]}",
       "p:1: ports[0].speed_mbps" + speed_rule},
      {"{\"ports\": [{\"name\": \"0/1\", \"speed_mbps\": 100.0}]}", "p:1: ports[0].speed_mbps" + speed_rule},
      {"{\"ports\": [{\"name\": \"0/1\", \"speed_mbps\": \"100\"}]}",
       "p:1: ports[0].speed_mbps" + speed_rule},
      {"{\"ports\": [{\"name\": \"0/1\", \"copper\": 1}]}", "p:1: ports[0].copper must be true or false"},
      {"{\"ports\": [{\"name\": \"0/1\", \"cabled\": \"yes\"}]}",
       "p:1: ports[0].cabled must be true or false"},
      {"{\"ports\": [{\"name\": \"0/1\", \"cabled\": null}]}", "p:1: ports[0].cabled must be true or false"},
  };
  for (const bad_profile &row : table) expect_refused(row);
}

TEST(Profile, TextThatIsNoJsonIsRefusedWithItsLine) {
  const struct {
    std::string text;
    const char *place;
  } table[] = {
      {"", "p:1: no JSON: "},
      {" \n \n", "p:3: no JSON: "},
      {"{", "p:1: no JSON: "},
      {"{\n\n\"model\": \"x\",\n}", "p:4: no JSON: "},
      {"{\n\"model\" \"x\"}", "p:2: no JSON: "},
      {"{\n/* comment */\n}", "p:2: no JSON: "},
      {"{}\n{}", "p:2: no JSON: "},
      {"{}\n\nx", "p:3: no JSON: "},
      {std::string("{}\0", 3), "p:1: no JSON: "},
      {std::string("{\n\"model\": \0\"x\"}", 16), "p:2: no JSON: "},
      {"{\"model\": \"\xff\"}", "p:1: no JSON: "},
      {std::string(100, '['), "p:1: no JSON: "},
  };
  for (const auto &row : table) {
    chassis_profile profile = marked_profile();
    std::string error;
    EXPECT_FALSE(parse_profile(row.text, "p", &profile, &error)) << row.text;
    EXPECT_TRUE(error.starts_with(row.place) && error.size() > strlen(row.place)) << error << "\n"
                                                                                  << row.text;
    EXPECT_EQ(text_of(profile), text_of(marked_profile())) << row.text;
  }
}

TEST(Profile, FilesThatCannotBeReadAreRefusedByName) {
  temporary_directory directory;
  chassis_profile profile = marked_profile();
  std::string error;
  EXPECT_FALSE(load_profile(directory.path + "/none", &profile, &error));
  EXPECT_EQ(error, directory.path + "/none: No such file or directory");
  EXPECT_FALSE(load_profile(directory.path, &profile, &error));
  EXPECT_EQ(error, directory.path + ": Is a directory");
  write_file(directory.path + "/large", "{}" + std::string(128 * 1024, ' '));
  EXPECT_FALSE(load_profile(directory.path + "/large", &profile, &error));
  EXPECT_EQ(error, directory.path + "/large: larger than 131072 bytes");
  write_file(directory.path + "/bad", "{\n\"ports\": 7}");
  EXPECT_FALSE(load_profile(directory.path + "/bad", &profile, &error));
  EXPECT_EQ(error, directory.path + "/bad:2: ports must be a list of 1 to 54 ports");
  EXPECT_EQ(text_of(profile), text_of(marked_profile()));
}

TEST(JsonLines, EveryValueHasItsLine) {
  json_line_index index =
      index_json_lines("\n{\"a\": [1,\n \"x]\\\"}\", {\"b\":\ntrue}],\n\"c\": {\"d\": null}}\n");
  std::map<std::string, size_t> expected = {{"", 2},     {"a", 2},      {"a[0]", 2}, {"a[1]", 3},
                                            {"a[2]", 3}, {"a[2].b", 3}, {"c", 5},    {"c.d", 5}};
  EXPECT_EQ(index.lines, expected);
  EXPECT_EQ(index.duplicate_line, 0u);
}

/* --- Settings --------------------------------------------------------------------------------------------
 */

/* The settings' variables as they are to be for one test. */
class clean_environment {
public:
  clean_environment() {
    for (const char *name : names) {
      const char *value = getenv(name);
      before.push_back(value ? value : "");
      unsetenv(name);
    }
  }
  ~clean_environment() {
    for (size_t i = 0; i < before.size(); i++) {
      if (before[i].empty())
        unsetenv(names[i]);
      else
        setenv(names[i], before[i].c_str(), 1);
    }
  }

private:
  static constexpr const char *names[] = {"KESTREL_STATE_DIR", "KESTREL_PROFILE", "KESTREL_ADMIN_PASSWORD",
                                          "KESTREL_TRACE"};
  std::vector<std::string> before;
};

TEST(Settings, DefaultsHoldWithNothingSetAndWithEmptyVariables) {
  clean_environment clean;
  for (int round = 0; round < 2; round++) {
    settings read = read_settings();
    EXPECT_EQ(read.state_dir, "/var/lib/kestrel");
    EXPECT_EQ(read.profile, "");
    EXPECT_EQ(read.admin_password, "");
    EXPECT_FALSE(read.trace_platform);
    for (const char *name :
         {"KESTREL_STATE_DIR", "KESTREL_PROFILE", "KESTREL_ADMIN_PASSWORD", "KESTREL_TRACE"})
      setenv(name, "", 1);
  }
}

TEST(Settings, VariablesOverrideTheDefaults) {
  clean_environment clean;
  setenv("KESTREL_STATE_DIR", "/x", 1);
  setenv("KESTREL_PROFILE", "/y", 1);
  setenv("KESTREL_ADMIN_PASSWORD", "z", 1);
  setenv("KESTREL_TRACE", "platform", 1);
  settings read = read_settings();
  EXPECT_EQ(read.state_dir, "/x");
  EXPECT_EQ(read.profile, "/y");
  EXPECT_EQ(read.admin_password, "z");
  EXPECT_TRUE(read.trace_platform);
  setenv("KESTREL_TRACE", "other", 1);
  EXPECT_FALSE(read_settings().trace_platform);
}

TEST(Settings, StateDirectoryIsMadeForItsOwnerOnly) {
  temporary_directory directory;
  std::string error;
  mode_t before = umask(0);
  EXPECT_TRUE(make_state_dir(directory.path + "/state", &error)) << error;
  umask(before);
  EXPECT_EQ(mode_of(directory.path + "/state"), 0700u);
  EXPECT_TRUE(make_state_dir(directory.path + "/state", &error)) << error;
  write_file(directory.path + "/file", "");
  EXPECT_FALSE(make_state_dir(directory.path + "/file", &error));
  EXPECT_EQ(error, directory.path + "/file: is not a directory");
  EXPECT_FALSE(make_state_dir(directory.path + "/none/state", &error));
  EXPECT_EQ(error, directory.path + "/none/state: No such file or directory");
}

} // namespace
