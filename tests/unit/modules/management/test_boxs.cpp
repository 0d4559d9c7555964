/* The box services module: sensors, fans and power supplies. Transceivers: test_boxs_transceivers.cpp; texts:
 * test_boxs_texts.cpp. */
#include "modules/rest_module_boxs.h"
#include "tests/unit/modules/little_memory.h"
#include "tests/unit/modules/management/management_fixture.h"

/* Two of each: one that works and one that does not. */
class BoxsTest : public ManagementTest {
protected:
  BoxsTest() : ManagementTest(boxs_api_handler) {
    give("BoxsNumOfTempSensorsGet", 2);
    give("BoxsNumOfFansGet", 2);
    give("BoxsNumOfPowSuppliesGet", 2);
    give_fan(0, {2, 2, 9000, 45});
    give_fan(1, {3, 1, 8000, 40});
    give("BoxsPowSupplyStateGet 0", 2);
    give("BoxsPowSupplyTypeGet 0", 1);
    give("BoxsPowSupplyStateGet 1", 1);
    give("BoxsPowSupplyTypeGet 1", 2);
    give("BoxsTempSensorStatusGet 0", 1);
    give("BoxsTempGet 0", 38);
    give("BoxsTempSensorDescripGet 0", "Front panel");
    give("BoxsTempSensorStatusGet 1", 3);
    give("BoxsTempGet 1", static_cast<uint32_t>(-40));
    give("BoxsTempSensorDescripGet 1", "CPU <1>");
    give("BoxsTempSensorDescripSizeGet", 32);
  }

  struct fan {
    uint32_t state, type, speed, duty;
  };
  static void give_fan(unsigned index, const fan &fan) {
    std::string id = " " + std::to_string(index);
    give("BoxsFanStateGet" + id, fan.state);
    give("BoxsFanTypeGet" + id, fan.type);
    give("BoxsFanSpeedGet" + id, fan.speed);
    give("BoxsFanDutyCycleGet" + id, fan.duty);
  }
};

static result_node fan_entry(unsigned position, const std::string &state, const std::string &type,
                             const std::string &speed, const std::string &duty) {
  return entry(position, "fan",
               {text("state", state), text("type", type), text("speed", speed), text("duty_cycle", duty)});
}

static result_node supply_entry(unsigned position, const std::string &state, const std::string &type) {
  return entry(position, "power_supply", {text("state", state), text("type", type)});
}

static result_node sensor_entry(unsigned position, const std::string &state, int64_t temperature,
                                const std::string &description) {
  return entry(position, "temp_sensor",
               {text("state", state), number("temperature", temperature), text("description", description)});
}

static Answers expected_list(const std::string &name, const std::vector<result_node> &entries) {
  return expected_data({branch(name, entries)});
}

/* --- Summary -------------------------------------------------------------------------------------------- */

static Answers expected_summary(int64_t sensors, int64_t fans, int64_t supplies) {
  return expected_data(
      {branch("infomation", {number("temp_sensors_number", sensors), number("fans_number", fans),
                             number("power_supplies_number", supplies)})});
}

TEST_F(BoxsTest, NumbersAreRead) {
  give("BoxsNumOfTempSensorsGet", 4);
  give("BoxsNumOfFansGet", 5);
  expect_served({"GET", "/boxs"}, expected_summary(4, 5, 2),
                {"BoxsNumOfTempSensorsGet", "BoxsNumOfFansGet", "BoxsNumOfPowSuppliesGet"});
}

TEST_F(BoxsTest, WholeAnswerOfTheSummary) {
  Answers answers = get("/boxs");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<infomation><temp_sensors_number>2</temp_sensors_number><fans_number>2"
                         "</fans_number><power_supplies_number>2</power_supplies_number></infomation>"
                         "</rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"infomation\": { \"temp_sensors_number\": 2, "
                          "\"fans_number\": 2, \"power_supplies_number\": 2 } } } }\n");
}

TEST_F(BoxsTest, AnyNumberIsShownAsASignedOne) {
  give("BoxsNumOfTempSensorsGet", 0);
  give("BoxsNumOfFansGet", UINT32_MAX);
  give("BoxsNumOfPowSuppliesGet", 1u << 31);
  EXPECT_EQ(get("/boxs"), expected_summary(0, -1, INT32_MIN));
}

/* --- Fans ----------------------------------------------------------------------------------------------- */

TEST_F(BoxsTest, FansAreListed) {
  expect_served({"GET", "/boxs/fans"},
                expected_list("fans", {fan_entry(1, "Operational", "Removable", "9000", "45"),
                                       fan_entry(2, "Failed", "Fixed", "-", "-")}),
                {"BoxsNumOfFansGet", "BoxsFanStateGet 0", "BoxsFanTypeGet 0", "BoxsFanSpeedGet 0",
                 "BoxsFanDutyCycleGet 0", "BoxsFanStateGet 1", "BoxsFanTypeGet 1", "BoxsFanSpeedGet 1",
                 "BoxsFanDutyCycleGet 1"});
}

TEST_F(BoxsTest, WholeAnswerOfTheFans) {
  Answers answers = get("/boxs/fans");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<fans><fan><state>Operational</state><type>Removable</type><speed>9000</speed>"
                         "<duty_cycle>45</duty_cycle></fan><fan><state>Failed</state><type>Fixed</type>"
                         "<speed>-</speed><duty_cycle>-</duty_cycle></fan></fans></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"fans\": { \"1\": { \"state\": \"Operational\", "
                          "\"type\": \"Removable\", \"speed\": \"9000\", \"duty_cycle\": \"45\" }, "
                          "\"2\": { \"state\": \"Failed\", \"type\": \"Fixed\", \"speed\": \"-\", "
                          "\"duty_cycle\": \"-\" } } } } }\n");
}

TEST_F(BoxsTest, FanThatIsNotOperationalHasNoSpeedAndNoDutyCycle) {
  const char *const states[] = {"None",        "Not present",  "Operational",  "Failed", "Powering",
                                "Not powered", "Not powering", "Incompatible", "Unknown"};
  give("BoxsNumOfFansGet", 1);
  for (uint32_t state = 0; state <= 8; state++) {
    give_fan(0, {state, 0, 0, 100});
    bool works = state == 2;
    EXPECT_EQ(get("/boxs/fans"), expected_list("fans", {fan_entry(1, states[state], "None", works ? "0" : "-",
                                                                  works ? "100" : "-")}));
  }
  for (uint32_t state : {99u, 258u, UINT32_MAX}) {
    give_fan(0, {state, 1, 9000, 45});
    EXPECT_EQ(get("/boxs/fans"), expected_list("fans", {fan_entry(1, "Unknown", "Fixed", "-", "-")}));
  }
}

TEST_F(BoxsTest, SpeedIsWrittenAsASignedNumber) {
  const struct {
    uint32_t speed, duty;
    const char *speed_text, *duty_text;
  } rows[] = {{0, 0, "0", "0"},
              {INT32_MAX, 101, "2147483647", "101"},
              {1u << 31, UINT32_MAX, "-2147483648", "-1"},
              {UINT32_MAX, 1u << 31, "-1", "-2147483648"}};
  give("BoxsNumOfFansGet", 1);
  for (const auto &row : rows) {
    give_fan(0, {2, 3, row.speed, row.duty});
    EXPECT_EQ(get("/boxs/fans"),
              expected_list("fans", {fan_entry(1, "Operational", "Unknown", row.speed_text, row.duty_text)}));
  }
}

/* --- Power supplies ------------------------------------------------------------------------------------- */

TEST_F(BoxsTest, PowerSuppliesAreListed) {
  expect_served({"GET", "/boxs/powSupplies"},
                expected_list("power_supplies", {supply_entry(1, "Operational", "Fixed"),
                                                 supply_entry(2, "Not present", "Removable")}),
                {"BoxsNumOfPowSuppliesGet", "BoxsPowSupplyStateGet 0", "BoxsPowSupplyTypeGet 0",
                 "BoxsPowSupplyStateGet 1", "BoxsPowSupplyTypeGet 1"});
  give("BoxsNumOfPowSuppliesGet", 1);
  give("BoxsPowSupplyStateGet 0", 99);
  give("BoxsPowSupplyTypeGet 0", 99);
  EXPECT_EQ(get("/boxs/powSupplies"),
            expected_list("power_supplies", {supply_entry(1, "Unknown", "Unknown")}));
}

TEST_F(BoxsTest, WholeAnswerOfThePowerSupplies) {
  give("BoxsNumOfPowSuppliesGet", 1);
  Answers answers = get("/boxs/powSupplies");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<power_supplies><power_supply><state>Operational</state><type>Fixed</type>"
                         "</power_supply></power_supplies></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"power_supplies\": { \"1\": { \"state\": \"Operational\", "
                          "\"type\": \"Fixed\" } } } } }\n");
}

/* --- Temperature sensors -------------------------------------------------------------------------------- */

TEST_F(BoxsTest, SensorsAreListed) {
  expect_served({"GET", "/boxs/tempSensors"},
                expected_list("temp_sensors", {sensor_entry(1, "Normal", 38, "Front panel"),
                                               sensor_entry(2, "Critical", -40, "CPU <1>")}),
                {"BoxsNumOfTempSensorsGet", "BoxsTempSensorStatusGet 0", "BoxsTempGet 0",
                 "BoxsTempSensorDescripSizeGet", "BoxsTempSensorDescripGet 0 [32]",
                 "BoxsTempSensorStatusGet 1", "BoxsTempGet 1", "BoxsTempSensorDescripSizeGet",
                 "BoxsTempSensorDescripGet 1 [32]"});
}

TEST_F(BoxsTest, WholeAnswerOfTheSensors) {
  give("BoxsNumOfTempSensorsGet", 1);
  Answers answers = get("/boxs/tempSensors");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<temp_sensors><temp_sensor><state>Normal</state><temperature>38</temperature>"
                         "<description>Front panel</description></temp_sensor></temp_sensors></rlt_data>"
                         "</result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"temp_sensors\": { \"1\": { \"state\": \"Normal\", "
                          "\"temperature\": 38, \"description\": \"Front panel\" } } } } }\n");
}

TEST_F(BoxsTest, AnyTemperatureIsShown) {
  give("BoxsNumOfTempSensorsGet", 1);
  give("BoxsTempSensorStatusGet", 99);
  give("BoxsTempSensorStatusGet 0", 7);
  for (int32_t temperature : {0, -1, 1000, INT32_MIN, INT32_MAX}) {
    give("BoxsTempGet 0", static_cast<uint32_t>(temperature));
    EXPECT_EQ(get("/boxs/tempSensors"),
              expected_list("temp_sensors", {sensor_entry(1, "Unknown", temperature, "Front panel")}));
  }
}

TEST_F(BoxsTest, DescriptionThatFillsItsBufferEndsThere) {
  give("BoxsNumOfTempSensorsGet", 1);
  for (uint32_t size : {0u, 1u, 32u, 1000u}) {
    give("BoxsTempSensorDescripSizeGet", size);
    for (uint32_t length : {size, size + 1, 2 * size + 1}) {
      give("BoxsTempSensorDescripGet 0", std::string(length, 'x'));
      EXPECT_EQ(get("/boxs/tempSensors"),
                expected_list("temp_sensors", {sensor_entry(1, "Normal", 38, std::string(size, 'x'))}));
    }
  }
}

TEST_F(BoxsTest, DescriptionBeyondAllMemoryAnswers97) {
  little_memory limit;
  give("BoxsTempSensorDescripSizeGet", UINT32_MAX);
  EXPECT_EQ(get("/boxs/tempSensors"), expected_platform_error(OPEN_E_INTERNAL));
  EXPECT_EQ(calls_made().back(), "BoxsTempSensorDescripSizeGet");
}

/* --- Any list ------------------------------------------------------------------------------------------- */

static const struct {
  const char *uri, *count, *name;
} LISTS[] = {{"/boxs/fans", "BoxsNumOfFansGet", "fans"},
             {"/boxs/powSupplies", "BoxsNumOfPowSuppliesGet", "power_supplies"},
             {"/boxs/tempSensors", "BoxsNumOfTempSensorsGet", "temp_sensors"}};

TEST_F(BoxsTest, ListOfNoneIsEmpty) {
  for (const auto &list : LISTS) {
    give(list.count, 0);
    expect_served({"GET", list.uri}, expected_list(list.name, {}), {list.count});
  }
  Answers answers = get("/boxs/fans");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<fans></fans></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"fans\": { } } } }\n");
}

/* What a platform that counts wrongly would have. */
TEST_F(BoxsTest, ListBeyondAllSenseIsGivenUp) {
  for (const char *function :
       {"BoxsFanStateGet", "BoxsFanTypeGet", "BoxsFanSpeedGet", "BoxsFanDutyCycleGet",
        "BoxsPowSupplyStateGet", "BoxsPowSupplyTypeGet", "BoxsTempSensorStatusGet", "BoxsTempGet"})
    give(function, 0);
  give("BoxsTempSensorDescripGet", "");
  for (const auto &list : LISTS) {
    for (uint32_t count : {UINT32_MAX, 1u << 31, uint32_t{MAX_LIST_ENTRIES} + 1}) {
      give(list.count, count);
      EXPECT_EQ(get(list.uri), expected_platform_error(OPEN_E_INTERNAL)) << list.uri << " " << count;
    }
  }
}

TEST_F(BoxsTest, ListOf300HasThemAllInOrder) {
  give("BoxsNumOfPowSuppliesGet", 300);
  give("BoxsPowSupplyStateGet", 2);
  give("BoxsPowSupplyTypeGet", 1);
  give("BoxsPowSupplyTypeGet 1", 1);
  give("BoxsPowSupplyStateGet 1", 2);
  std::vector<result_node> entries;
  for (unsigned position = 1; position <= 300; position++)
    entries.push_back(supply_entry(position, "Operational", "Fixed"));
  EXPECT_EQ(get("/boxs/powSupplies"), expected_list("power_supplies", entries));
}
