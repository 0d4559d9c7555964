/* The chassis in profiles: fans, power supplies, temperature sensors and transceivers. */
#include "platform/softswitch/model/chassis_fields.h"
#include "platform/softswitch/services/profile.h"
#include "tests/unit/platform/services_test_support.h"

using namespace softswitch;

namespace {

template <class item> std::string fields_text(std::span<const chassis_field<item>> fields, const item &of) {
  std::string text;
  for (const auto &field : fields) text += "|" + field_text(field, of);
  return text + "\n";
}

/* The chassis of a profile in one text, a line for each item. */
std::string chassis_text(const chassis_profile &profile) {
  std::string text;
  for (const fan &each : profile.fans) text += "fan" + fields_text(fan_fields, each);
  for (const power_supply &each : profile.power_supplies)
    text += "power" + fields_text(power_supply_fields, each);
  for (const temperature_sensor &each : profile.temperature_sensors)
    text += "sensor" + fields_text(temperature_sensor_fields, each);
  for (const transceiver_profile &each : profile.transceivers)
    text += each.port + fields_text(transceiver_fields, each.fitted);
  return text;
}

std::string parsed(const std::string &text) {
  chassis_profile profile;
  std::string error;
  EXPECT_TRUE(parse_profile(text, "p", &profile, &error)) << error << "\n" << text;
  return chassis_text(profile);
}

const std::string built_in_fan = "fan|removable|operational|7200|45\n";
const std::string built_in_supply = "power|removable|operational\n";
const std::string built_in_sensors = "sensor|Switch chip|52|auto|85|95|105\n"
                                     "sensor|Processor|44|auto|75|85|95\n"
                                     "sensor|Air inlet|24|auto|45|55|65\n"
                                     "sensor|Air outlet|36|auto|65|75|85\n";
const std::string built_in_ten_gigabit =
    "0/1|SFP+|Sample Optics|A1|300|33|SO100001|SO-10G-SR|10300|10GBASE-SR\n"
    "0/2|SFP+|Sample Optics|A1|300|33|SO100002|SO-10G-SR|10300|10GBASE-SR\n"
    "0/3|SFP+|Sample Optics|A1|0|0|SO200001|SO-10G-LR|10300|10GBASE-LR\n"
    "0/4|SFP|Sample Optics|A3|550|275|SO300001|SO-1G-SX|1300|1000BASE-SX\n"
    "0/5|direct-attach|Sample Cables|B2|0|0|SC100001|SC-10G-3M|10300|10GBASE-CR\n";
const std::string built_in_forty_gigabit =
    "0/49|QSFP|Sample Optics|A1|100|0|SO400001|SO-40G-SR4|41200|40GBASE-SR4\n"
    "0/50|QSFP|Sample Optics|A2|0|0|SO500001|SO-40G-LR4|41200|40GBASE-LR4\n"
    "0/51|direct-attach|Sample Cables|B1|0|0|SC400001|SC-40G-1M|41200|40GBASE-CR4\n";
const std::string built_in_items = built_in_fan + built_in_fan + built_in_fan + built_in_fan + built_in_fan +
                                   built_in_supply + built_in_supply + built_in_sensors;

/* --- What is taken -------------------------------------------------------------------------------------- */

TEST(ProfileChassis, BuiltInSwitchHasItemsOfEveryKindAndAllAreWell) {
  EXPECT_EQ(chassis_text(built_in_profile()), built_in_items + built_in_ten_gigabit + built_in_forty_gigabit);
  for (const temperature_sensor &sensor : built_in_profile().temperature_sensors)
    EXPECT_EQ(sensor_state(sensor), OPEN_BOXS_TEMP_STATE_NORMAL) << sensor.description;
}

/* What is built in passes the rules that files are held to. */
TEST(ProfileChassis, BuiltInValuesKeepTheRules) {
  chassis_profile profile = built_in_profile();
  auto check = [](auto fields, auto of) {
    for (const auto &field : fields) {
      auto copy = of;
      bool number = field.rule.what == field_rule::kind::number;
      EXPECT_TRUE(number ? field_set_number(field, of.*field.number, &copy)
                         : field_set_text(field, field_text(field, of), &copy))
          << field.name;
    }
  };
  check(identity_fields, profile);
  for (const fan &each : profile.fans) check(fan_fields, each);
  for (const power_supply &each : profile.power_supplies) check(power_supply_fields, each);
  for (const temperature_sensor &each : profile.temperature_sensors) {
    check(temperature_sensor_fields, each);
    EXPECT_TRUE(sensor_thresholds_rise(each));
  }
  for (const transceiver_profile &each : profile.transceivers) check(transceiver_fields, each.fitted);
}

TEST(ProfileChassis, ListsReplaceTheBuiltInOnesAsAWholeAndMayBeEmpty) {
  EXPECT_EQ(parsed(R"({"fans": [], "power_supplies": [], "temperature_sensors": [], "transceivers": []})"),
            "");
  EXPECT_EQ(parsed(R"({"power_supplies": [], "temperature_sensors": [], "transceivers": [],
                       "fans": [{"state": "failed"}]})"),
            "fan|removable|failed|7200|45\n");
}

TEST(ProfileChassis, EveryMemberIsTaken) {
  EXPECT_EQ(parsed(R"({
    "transceivers": [
      {"port": "0/20", "module_type": "QSFP", "vendor_name": "A", "vendor_revision": "B",
       "link_length_50um": 1, "link_length_62_5um": 2, "serial_number": "C", "part_number": "D",
       "nominal_signal_rate": 3, "compliance": "E"},
      {"port": "0/7"}],
    "fans": [{"type": "fixed", "state": "powering", "speed": 0, "duty_cycle": 100}, {}],
    "power_supplies": [{"type": "none", "state": "incompatible"}, {}],
    "temperature_sensors": [
      {"description": "\u00e4", "temperature": -100, "state": "shutdown",
       "warning": -99, "critical": 0, "shutdown": 300},
      {}]})"),
            "fan|fixed|powering|0|100\n" + built_in_fan + "power|none|incompatible\n" + built_in_supply +
                "sensor|\xc3\xa4|-100|shutdown|-99|0|300\nsensor||40|auto|70|80|90\n"
                "0/20|QSFP|A|B|1|2|C|D|3|E\n0/7|SFP+|||0|0|||0|\n");
}

std::string list_of(const std::string &name, size_t count, const std::string &entry) {
  std::string list = "{\"" + name + "\": [";
  for (size_t i = 0; i < count; i++) list += (i > 0 ? "," : "") + entry;
  return list + "]}";
}

TEST(ProfileChassis, LongestListsTextsAndLargestNumbersAreTaken) {
  EXPECT_EQ(lines_of(parsed(list_of("fans", 32, "{}"))).size(), 32u + 2 + 4 + 8);
  EXPECT_EQ(lines_of(parsed(list_of("power_supplies", 8, "{}"))).size(), 5u + 8 + 4 + 8);
  EXPECT_EQ(lines_of(parsed(list_of("temperature_sensors", 32, "{}"))).size(), 5u + 2 + 32 + 8);
  const std::string longest(64, 'x');
  std::string everywhere = "{\"transceivers\": [";
  for (int i = 1; i <= 54; i++)
    everywhere += std::string(i > 1 ? "," : "") + "{\"port\": \"0/" + std::to_string(i) +
                  "\", \"vendor_name\": \"" + longest +
                  "\", \"serial_number\": \"\", \"link_length_50um\": 100000,"
                  "\"nominal_signal_rate\": 1000000}";
  EXPECT_NE(parsed(everywhere + "]}").find("0/54|SFP+|" + longest + "||100000|0|||1000000|\n"),
            std::string::npos);
}

/* --- Transceivers and ports ----------------------------------------------------------------------------- */

TEST(ProfileChassis, BuiltInTransceiversStayWhereOwnPortsAreLikeTheBuiltInOnes) {
  const std::string none = built_in_items;
  EXPECT_EQ(parsed(R"({"ports": [{"name": "0/1"}, {"name": "0/2", "copper": true},
                                 {"name": "0/3", "speed_mbps": 1000}, {"name": "0/4", "speed_mbps": 40000},
                                 {"name": "0/49"}, {"name": "0/51", "speed_mbps": 40000}]})"),
            none + lines_of(built_in_ten_gigabit)[0] + "\n" + lines_of(built_in_forty_gigabit)[2] + "\n");
  EXPECT_EQ(parsed(R"({"ports": [{"name": "0/9"}]})"), none);
  EXPECT_EQ(parsed(R"({"serial": "S"})"), none + built_in_ten_gigabit + built_in_forty_gigabit);
}

TEST(ProfileChassis, TransceiversMayComeBeforeThePorts) {
  EXPECT_EQ(parsed(R"({"transceivers": [{"port": "0/7"}], "fans": [], "power_supplies": [],
                       "temperature_sensors": [], "ports": [{"name": "0/7", "speed_mbps": 100}]})"),
            "0/7|SFP+|||0|0|||0|\n");
}

/* --- What is refused ------------------------------------------------------------------------------------ */

struct refused_profile {
  std::string text, error;
};

void expect_refused(const std::vector<refused_profile> &rows) {
  for (const refused_profile &row : rows) {
    chassis_profile profile;
    std::string error;
    EXPECT_FALSE(parse_profile(row.text, "p", &profile, &error)) << row.text;
    EXPECT_EQ(error, "p:" + row.error) << row.text;
    EXPECT_TRUE(profile.model.empty() && chassis_text(profile).empty()) << row.text;
  }
}

TEST(ProfileChassis, WrongListsAreRefusedWithTheirLine) {
  expect_refused({
      {"{\n\"fans\": {}}", "2: fans must be a list of at most 32 fans"},
      {"{\"fans\": null}", "1: fans must be a list of at most 32 fans"},
      {list_of("fans", 33, "{}"), "1: fans must be a list of at most 32 fans"},
      {list_of("power_supplies", 9, "{}"), "1: power_supplies must be a list of at most 8 power supplies"},
      {list_of("temperature_sensors", 33, "{}"),
       "1: temperature_sensors must be a list of at most 32 temperature sensors"},
      {list_of("transceivers", 55, "{}"), "1: transceivers must be a list of at most 54 transceivers"},
      {"{\"transceivers\": 7}", "1: transceivers must be a list of at most 54 transceivers"},
      {"{\"fans\": [{},\n7]}", "2: fans[1] must be an object"},
      {"{\"fans\": [\nnull]}", "2: fans[0] must be an object"},
      {"{\"power_supplies\": [[]]}", "1: power_supplies[0] must be an object"},
      {"{\"temperature_sensors\": [\"hot\"]}", "1: temperature_sensors[0] must be an object"},
      {"{\"transceivers\": [true]}", "1: transceivers[0] must be an object"},
      {"{\"fan\": []}", "1: fan is not known here"},
      {"{\"fans\": [],\n\"fans\": []}", "2: fans is given twice"},
  });
}

TEST(ProfileChassis, WrongFansAndPowerSuppliesAreRefusedWithTheirLine) {
  const std::string states = " must be \"none\", \"not-present\", \"operational\", \"failed\", \"powering\", "
                             "\"not-powered\", \"not-powering\" or \"incompatible\"";
  const std::string types = " must be \"none\", \"fixed\" or \"removable\"";
  expect_refused({
      {"{\"fans\": [{\n\"speed_rpm\": 7}]}", "2: fans[0].speed_rpm is not known here"},
      {"{\"fans\": [{\"duty-cycle\": 7}]}", "1: fans[0].duty-cycle is not known here"},
      {"{\"fans\": [{\"state\": \"failed\",\n\"state\": \"failed\"}]}", "2: fans[0].state is given twice"},
      {"{\"fans\": [{\"state\":\n\"broken\"}]}", "1: fans[0].state" + states},
      {"{\"fans\": [{\"state\": 2}]}", "1: fans[0].state" + states},
      {"{\"fans\": [{\"state\": null}]}", "1: fans[0].state" + states},
      {"{\"fans\": [{\"state\": \"\"}]}", "1: fans[0].state" + states},
      {"{\"fans\": [{\"state\": \"failed\\u0000\"}]}", "1: fans[0].state" + states},
      {"{\"fans\": [{},{\"type\": \"Fixed\"}]}", "1: fans[1].type" + types},
      {"{\"fans\": [{\"speed\": -1}]}", "1: fans[0].speed must be a number from 0 to 100000"},
      {"{\"fans\": [{\"speed\": 100001}]}", "1: fans[0].speed must be a number from 0 to 100000"},
      {"{\"fans\": [{\"speed\": 4294967296}]}", "1: fans[0].speed must be a number from 0 to 100000"},
      {"{\"fans\": [{\"speed\": 18446744073709551616}]}",
       "1: fans[0].speed must be a number from 0 to 100000"},
      {"{\"fans\": [{\"speed\": 7.0}]}", "1: fans[0].speed must be a number from 0 to 100000"},
      {"{\"fans\": [{\"speed\": \"7\"}]}", "1: fans[0].speed must be a number from 0 to 100000"},
      {"{\"fans\": [{\"duty_cycle\": 101}]}", "1: fans[0].duty_cycle must be a number from 0 to 100"},
      {"{\"fans\": [{\"duty_cycle\": true}]}", "1: fans[0].duty_cycle must be a number from 0 to 100"},
      {"{\"power_supplies\": [{\"speed\": 1}]}", "1: power_supplies[0].speed is not known here"},
      {"{\"power_supplies\": [{\"type\": []}]}", "1: power_supplies[0].type" + types},
      {"{\"power_supplies\": [{\n\n\"state\": \"on\"}]}", "3: power_supplies[0].state" + states},
  });
}

TEST(ProfileChassis, WrongTemperatureSensorsAreRefusedWithTheirLine) {
  const std::string rising = " must have thresholds that rise from warning to critical to shutdown";
  const std::string text = " must be a text of 0 to 64 bytes of UTF-8 without control characters";
  const std::string celsius = " must be a number from -100 to 300";
  const std::string first = "1: temperature_sensors[0]";
  auto sensor = [](const std::string &members) { return "{\"temperature_sensors\": [{" + members + "}]}"; };
  expect_refused({
      {sensor("\"description\": \"" + std::string(65, 'x') + "\""), first + ".description" + text},
      {sensor("\"description\": \"a\\tb\""), first + ".description" + text},
      {sensor("\"description\": \"\\u0000\""), first + ".description" + text},
      {sensor("\"description\": 7"), first + ".description" + text},
      {sensor("\"temperature\": -101"), first + ".temperature" + celsius},
      {sensor("\"temperature\": 301"), first + ".temperature" + celsius},
      {sensor("\"temperature\": 20.5"), first + ".temperature" + celsius},
      {sensor("\"warning\": 301"), first + ".warning" + celsius},
      {sensor("\"critical\": \"80\""), first + ".critical" + celsius},
      {sensor("\"shutdown\": null"), first + ".shutdown" + celsius},
      {sensor("\"state\": -1"),
       first + ".state must be \"auto\", \"none\", \"normal\", \"warning\", \"critical\", \"shutdown\", "
               "\"not-present\" or \"not-operational\""},
      {sensor("\"warning\": 80"), first + rising},
      {sensor("\"critical\": 70"), first + rising},
      {sensor("\"shutdown\": 80"), first + rising},
      {"{\"temperature_sensors\": [{},\n{\"critical\": 95,\n\"state\": \"normal\"}]}",
       "2: temperature_sensors[1]" + rising},
  });
}

TEST(ProfileChassis, WrongTransceiversAreRefusedWithTheirLine) {
  const std::string text = " must be a text of 0 to 64 bytes of UTF-8 without control characters";
  const std::string first = "1: transceivers[0]";
  auto with = [](const std::string &members) {
    return "{\"transceivers\": [{\"port\": \"0/1\", " + members + "}]}";
  };
  auto too_long = [&](const std::string &member) {
    return with("\"" + member + "\": \"" + std::string(65, 'x') + "\"");
  };
  expect_refused({
      {"{\"transceivers\": [\n{\"module_type\": \"SFP\"}]}", "2: transceivers[0] must have a port"},
      {"{\"transceivers\": [{\"port\": 1}]}", first + ".port must be \"0/1\" to \"0/999\""},
      {"{\"transceivers\": [{\"port\": \"\"}]}", first + ".port must be \"0/1\" to \"0/999\""},
      {"{\"transceivers\": [{\"port\": \"3/1\"}]}", first + ".port must be \"0/1\" to \"0/999\""},
      {"{\"transceivers\": [{\n\"port\": \"0/55\"}]}",
       "2: transceivers[0].port is \"0/55\", which is no transceiver cage"},
      {"{\"transceivers\": [{\"port\": \"0/1\"},\n{\n\"port\": \"0/2\"}],\n\"ports\": [{\"name\": \"0/1\"}, "
       "{\"name\": \"0/2\", \"copper\": true}]}",
       "3: transceivers[1].port is \"0/2\", which is no transceiver cage"},
      {"{\"transceivers\": [{\"port\": \"0/1\"}, {\"port\": \"0/2\"},\n{\"port\": \"0/1\"}]}",
       "2: transceivers[2].port is \"0/1\", as another transceiver's"},
      {with("\"name\": \"x\""), first + ".name is not known here"},
      {with("\"module_type\": 1"),
       first +
           ".module_type must be \"none\", \"SFP\", \"SFP+\", \"QSFP\", \"direct-attach\", \"XFP-module\", "
           "\"stacking-module\", \"SFP+-module\", \"CX4-module\" or \"copper-module\""},
      {too_long("vendor_name"), first + ".vendor_name" + text},
      {too_long("vendor_revision"), first + ".vendor_revision" + text},
      {too_long("serial_number"), first + ".serial_number" + text},
      {too_long("part_number"), first + ".part_number" + text},
      {too_long("compliance"), first + ".compliance" + text},
      {with("\"link_length_50um\": -1"), first + ".link_length_50um must be a number from 0 to 100000"},
      {with("\"link_length_62_5um\": 100001"),
       first + ".link_length_62_5um must be a number from 0 to 100000"},
      {with("\"nominal_signal_rate\": 1000001"),
       first + ".nominal_signal_rate must be a number from 0 to 1000000"},
      {with("\"nominal_signal_rate\": 1e3"),
       first + ".nominal_signal_rate must be a number from 0 to 1000000"},
  });
}

} // namespace
