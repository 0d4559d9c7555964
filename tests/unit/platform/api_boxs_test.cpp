/* Tests of the chassis functions of the C interface: what each reads, and every result code. */
#include "platform/api/openapi_boxs.h"

#include "tests/unit/platform/softswitch_test_support.h"

namespace {

using softswitch::chassis_table;

constexpr char profile[] = R"({
  "ports": [{"name": "0/1", "speed_mbps": 1000, "copper": true}, {"name": "0/2"}, {"name": "0/3"}],
  "fans": [{}, {"type": "fixed", "state": "failed", "speed": 0, "duty_cycle": 100}],
  "power_supplies": [{"type": "fixed", "state": "not-powered"}, {}, {"type": "none", "state": "none"}],
  "temperature_sensors": [{"description": "here", "temperature": -40}],
  "transceivers": [{"port": "0/2", "module_type": "QSFP", "vendor_name": "Maker", "vendor_revision": "R7",
                    "link_length_50um": 150, "link_length_62_5um": 30, "serial_number": "S1",
                    "part_number": "P2", "nominal_signal_rate": 41200, "compliance": "40GBASE-SR4"}]})";

/* Ports 1..3, of which the first is copper and the second has a transceiver. */
class Boxs : public SoftSwitch {
protected:
  void SetUp() override {
    write_file(dir.path + "/profile.json", profile);
    setenv("KESTREL_PROFILE", (dir.path + "/profile.json").c_str(), 1);
    SoftSwitch::SetUp();
  }
  static chassis_table *chassis(softswitch::locked_switch &model) { return model->chassis.edit(); }
};

using number_get = open_error_t (*)(openapiClientHandle_t *, uint32_t, uint32_t *);
using text_get = open_error_t (*)(openapiClientHandle_t *, uint32_t, open_buffdesc *);
using size_get = open_error_t (*)(openapiClientHandle_t *, uint32_t *);

/* --- Counts and sizes ----------------------------------------------------------------------------------- */

TEST_F(Boxs, CountsAreThoseOfTheProfile) {
  const std::pair<size_get, uint32_t> rows[] = {{rpcclt_openapiBoxsNumOfTempSensorsGet, 1},
                                                {rpcclt_openapiBoxsNumOfFansGet, 2},
                                                {rpcclt_openapiBoxsNumOfPowSuppliesGet, 3}};
  for (const auto &[get, expected] : rows) {
    uint32_t count = 99;
    EXPECT_EQ(get(&handle, &count), OPEN_E_NONE);
    EXPECT_EQ(count, expected);
    EXPECT_EQ(get(&handle, nullptr), OPEN_E_PARAM);
    EXPECT_EQ(get(nullptr, &count), OPEN_E_PARAM);
  }
}

constexpr size_get sizes[] = {
    rpcclt_openapiBoxsTempSensorDescripSizeGet, rpcclt_openapiBoxsSfpVendorNameSizeGet,
    rpcclt_openapiBoxsSfpVendorRevSizeGet,      rpcclt_openapiBoxsSfpSerialNumberSizeGet,
    rpcclt_openapiBoxsSfpPartNumberSizeGet,     rpcclt_openapiBoxsSfpComplianceSizeGet};

TEST_F(Boxs, SizesHoldTheLongestTexts) {
  for (size_get get : sizes) {
    uint32_t size = 0;
    EXPECT_EQ(get(&handle, &size), OPEN_E_NONE);
    EXPECT_EQ(size, 65u);
    EXPECT_EQ(get(&handle, nullptr), OPEN_E_PARAM);
    EXPECT_EQ(get(nullptr, &size), OPEN_E_PARAM);
  }
}

/* --- Items of lists ------------------------------------------------------------------------------------- */

struct number_row {
  number_get get;
  std::vector<uint32_t> values; /* of all items there are */
};

const number_row item_numbers[] = {
    {rpcclt_openapiBoxsTempSensorStatusGet, {OPEN_BOXS_TEMP_STATE_NORMAL}},
    {rpcclt_openapiBoxsFanStateGet, {OPEN_BOXS_ITEM_STATE_OPERATIONAL, OPEN_BOXS_ITEM_STATE_FAILED}},
    {rpcclt_openapiBoxsFanTypeGet, {OPEN_BOXS_ITEM_TYPE_REMOVABLE, OPEN_BOXS_ITEM_TYPE_FIXED}},
    {rpcclt_openapiBoxsFanSpeedGet, {7200, 0}},
    {rpcclt_openapiBoxsFanDutyCycleGet, {45, 100}},
    {rpcclt_openapiBoxsPowSupplyStateGet,
     {OPEN_BOXS_ITEM_STATE_NOT_POWERED, OPEN_BOXS_ITEM_STATE_OPERATIONAL, OPEN_BOXS_ITEM_STATE_NONE}},
    {rpcclt_openapiBoxsPowSupplyTypeGet,
     {OPEN_BOXS_ITEM_TYPE_FIXED, OPEN_BOXS_ITEM_TYPE_REMOVABLE, OPEN_BOXS_ITEM_TYPE_NONE}},
};

TEST_F(Boxs, ItemsAreNumberedFromZeroToTheirCount) {
  for (const number_row &row : item_numbers) {
    uint32_t value = 99, count = static_cast<uint32_t>(row.values.size());
    for (uint32_t i = 0; i < count; i++) {
      EXPECT_EQ(row.get(&handle, i, &value), OPEN_E_NONE);
      EXPECT_EQ(value, row.values[i]) << &row - item_numbers << " " << i;
    }
    EXPECT_EQ(row.get(&handle, count, &value), OPEN_E_NOT_FOUND);
    EXPECT_EQ(row.get(&handle, UINT32_MAX, &value), OPEN_E_NOT_FOUND);
    EXPECT_EQ(row.get(&handle, 0, nullptr), OPEN_E_PARAM);
    EXPECT_EQ(row.get(nullptr, 0, &value), OPEN_E_PARAM);
  }
}

TEST_F(Boxs, TemperaturesMayBeBelowZero) {
  int32_t temperature = 99;
  EXPECT_EQ(rpcclt_openapiBoxsTempGet(&handle, 0, &temperature), OPEN_E_NONE);
  EXPECT_EQ(temperature, -40);
  EXPECT_EQ(rpcclt_openapiBoxsTempGet(&handle, 1, &temperature), OPEN_E_NOT_FOUND);
  EXPECT_EQ(rpcclt_openapiBoxsTempGet(&handle, 0, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBoxsTempGet(nullptr, 0, &temperature), OPEN_E_PARAM);
}

TEST_F(Boxs, StateOfASensorFollowsItsTemperatureUnlessItIsFixed) {
  const std::pair<int32_t, OPEN_BOXS_TEMP_STATE_t> rows[] = {
      {-100, OPEN_BOXS_TEMP_STATE_NORMAL}, {69, OPEN_BOXS_TEMP_STATE_NORMAL},
      {70, OPEN_BOXS_TEMP_STATE_WARNING},  {79, OPEN_BOXS_TEMP_STATE_WARNING},
      {80, OPEN_BOXS_TEMP_STATE_CRITICAL}, {89, OPEN_BOXS_TEMP_STATE_CRITICAL},
      {90, OPEN_BOXS_TEMP_STATE_SHUTDOWN}, {300, OPEN_BOXS_TEMP_STATE_SHUTDOWN}};
  uint32_t state;
  for (const auto &[temperature, expected] : rows) {
    softswitch::temperature_sensor sensor;
    sensor.temperature = temperature;
    EXPECT_EQ(softswitch::sensor_state(sensor), expected) << temperature;
    {
      softswitch::locked_switch model;
      chassis(model)->temperature_sensors[0].temperature = temperature;
    }
    EXPECT_EQ(rpcclt_openapiBoxsTempSensorStatusGet(&handle, 0, &state), OPEN_E_NONE);
    EXPECT_EQ(state, expected) << temperature;
  }
  for (int32_t fixed : {0, 1, 6, 99}) {
    {
      softswitch::locked_switch model;
      chassis(model)->temperature_sensors[0].state = fixed;
    }
    EXPECT_EQ(rpcclt_openapiBoxsTempSensorStatusGet(&handle, 0, &state), OPEN_E_NONE);
    EXPECT_EQ(state, static_cast<uint32_t>(fixed));
  }
}

TEST_F(Boxs, SwitchWithoutAnyOfThemSaysSo) {
  {
    softswitch::locked_switch model;
    *chassis(model) = chassis_table();
  }
  uint32_t number = 99;
  for (size_get get : {rpcclt_openapiBoxsNumOfTempSensorsGet, rpcclt_openapiBoxsNumOfFansGet,
                       rpcclt_openapiBoxsNumOfPowSuppliesGet}) {
    EXPECT_EQ(get(&handle, &number), OPEN_E_NONE);
    EXPECT_EQ(number, 0u);
  }
  for (const number_row &row : item_numbers) EXPECT_EQ(row.get(&handle, 0, &number), OPEN_E_NOT_FOUND);
  EXPECT_EQ(rpcclt_openapiBoxsSfpNominalSignalRate(&handle, 2, &number), OPEN_E_NOT_FOUND);
}

/* --- Texts ---------------------------------------------------------------------------------------------- */

struct text_row {
  text_get get;
  uint32_t number; /* of the sensor or port */
  std::string text;
  std::string *(*place)(chassis_table *); /* where the switch keeps it */
};

template <std::string softswitch::transceiver::*what> std::string *in_transceiver(chassis_table *chassis) {
  return &(chassis->transceivers.at(2).*what);
}

const text_row texts[] = {
    {rpcclt_openapiBoxsTempSensorDescripGet, 0, "here",
     [](chassis_table *chassis) { return &chassis->temperature_sensors[0].description; }},
    {rpcclt_openapiBoxsSfpVendorNameGet, 2, "Maker", in_transceiver<&softswitch::transceiver::vendor_name>},
    {rpcclt_openapiBoxsSfpVendorRevisionGet, 2, "R7",
     in_transceiver<&softswitch::transceiver::vendor_revision>},
    {rpcclt_openapiBoxsSfpSerialNumberGet, 2, "S1", in_transceiver<&softswitch::transceiver::serial_number>},
    {rpcclt_openapiBoxsSfpPartNumberGet, 2, "P2", in_transceiver<&softswitch::transceiver::part_number>},
    {rpcclt_openapiBoxsSfpComplianceGet, 2, "40GBASE-SR4",
     in_transceiver<&softswitch::transceiver::compliance>},
};

TEST_F(Boxs, TextsNeedABufferThatHoldsThemWithTheirTerminator) {
  for (const text_row &row : texts) {
    char buffer[65];
    auto length = static_cast<uint32_t>(row.text.size());
    for (uint32_t size : {65u, length + 1}) {
      open_buffdesc text = {size, buffer};
      EXPECT_EQ(row.get(&handle, row.number, &text), OPEN_E_NONE);
      EXPECT_EQ(text.size, length);
      EXPECT_STREQ(buffer, row.text.c_str());
    }
    for (uint32_t size : {0u, length}) {
      open_buffdesc text = {size, buffer};
      EXPECT_EQ(row.get(&handle, row.number, &text), OPEN_E_PARAM) << row.text << " " << size;
    }
    EXPECT_EQ(row.get(&handle, row.number, nullptr), OPEN_E_PARAM);
  }
}

TEST_F(Boxs, LongestAndEmptyTextsComeOutWhole) {
  for (const std::string &wanted : {std::string(softswitch::chassis_text_max, 'x'), std::string()}) {
    {
      softswitch::locked_switch model;
      for (const text_row &row : texts) *row.place(chassis(model)) = wanted;
    }
    for (const text_row &row : texts) {
      char buffer[65];
      open_buffdesc text = {sizeof buffer, buffer};
      EXPECT_EQ(row.get(&handle, row.number, &text), OPEN_E_NONE);
      EXPECT_EQ(std::string(buffer, text.size), wanted);
    }
  }
}

TEST_F(Boxs, DescriptionOfNoSensorIsNotFound) {
  char buffer[65];
  open_buffdesc text = {sizeof buffer, buffer};
  EXPECT_EQ(rpcclt_openapiBoxsTempSensorDescripGet(&handle, 1, &text), OPEN_E_NOT_FOUND);
  EXPECT_EQ(rpcclt_openapiBoxsTempSensorDescripGet(&handle, UINT32_MAX, &text), OPEN_E_NOT_FOUND);
}

/* --- Transceivers --------------------------------------------------------------------------------------- */

const std::pair<number_get, uint32_t> transceiver_numbers[] = {
    {rpcclt_openapiBoxsSfpTypeGet, OPEN_SFP_TYPE_QSFP},
    {rpcclt_openapiBoxsSfpLinkLength50umGet, 150},
    {rpcclt_openapiBoxsSfpLinkLength62_5umGet, 30},
    {rpcclt_openapiBoxsSfpNominalSignalRate, 41200},
};

TEST_F(Boxs, TransceiverSaysWhatItIs) {
  for (const auto &[get, expected] : transceiver_numbers) {
    uint32_t value = 99;
    EXPECT_EQ(get(&handle, 2, &value), OPEN_E_NONE);
    EXPECT_EQ(value, expected);
    EXPECT_EQ(get(&handle, 2, nullptr), OPEN_E_PARAM);
    EXPECT_EQ(get(nullptr, 2, &value), OPEN_E_PARAM);
  }
}

/* Interfaces without a transceiver, and numbers that are no interface's. */
constexpr refused_number without_transceiver[] = {
    {1, OPEN_E_NOT_FOUND},   {3, OPEN_E_NOT_FOUND},   {4, OPEN_E_NOT_FOUND},   {54, OPEN_E_NOT_FOUND},
    {55, OPEN_E_NOT_FOUND},  {56, OPEN_E_NOT_FOUND},  {119, OPEN_E_NOT_FOUND}, {120, OPEN_E_NOT_FOUND},
    {127, OPEN_E_NOT_FOUND}, {226, OPEN_E_NOT_FOUND}, {353, OPEN_E_NOT_FOUND}, {0, OPEN_E_PARAM},
    {128, OPEN_E_PARAM},     {225, OPEN_E_PARAM},     {354, OPEN_E_PARAM},     {UINT32_MAX, OPEN_E_PARAM}};

TEST_F(Boxs, InterfacesWithoutATransceiverAreRefused) {
  char buffer[65];
  for (const refused_number &row : without_transceiver) {
    for (const auto &[get, ignored] : transceiver_numbers) {
      uint32_t value;
      EXPECT_EQ(get(&handle, row.number, &value), row.result) << row.number;
    }
    for (const text_row &of : texts) {
      if (of.get == rpcclt_openapiBoxsTempSensorDescripGet) continue;
      open_buffdesc text = {sizeof buffer, buffer};
      EXPECT_EQ(of.get(&handle, row.number, &text), row.result) << row.number;
    }
  }
}

TEST_F(Boxs, WalkOverAllPortsFindsTheTransceiversThatAreIn) {
  std::vector<uint32_t> found;
  uint32_t port, rate;
  open_error_t rc = rpcclt_openapiIfFirstGet(&handle, OPEN_INTF_TYPE_PHY, 4, &port);
  for (; rc == OPEN_E_NONE; rc = rpcclt_openapiIfNextGet(&handle, OPEN_INTF_TYPE_PHY, 4, port, &port)) {
    if (rpcclt_openapiBoxsSfpNominalSignalRate(&handle, port, &rate) == OPEN_E_NONE) found.push_back(port);
  }
  EXPECT_EQ(found, std::vector<uint32_t>{2});
}

} // namespace
