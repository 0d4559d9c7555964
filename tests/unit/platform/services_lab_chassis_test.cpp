/* Lab control of the chassis and the identity. */
#include "platform/softswitch/services/lab.h"

#include "platform/api/openapi_boxs.h"
#include "platform/api/openapi_system.h"
#include "platform/softswitch/model/text.h"
#include "tests/unit/platform/mixed_ports.h"

#include <algorithm>

using namespace softswitch;

namespace {

using lines = std::vector<std::string>;

/* What "chassis" lists at start: the switch of mixed_ports.h, whose ports fit no built-in transceiver. */
const std::string identity_line =
    "identity model Kestrel-Softswitch-54 serial KS0000000001 mac 02:00:5E:FF:FF:F0 description \"Kestrel "
    "software switch, 48 x 10G SFP+ and 6 x 40G QSFP\" os-version 0.1.0 storage flash\n";
const std::string fan_settings = " type removable state operational speed 7200 duty-cycle 45\n";
const std::string supply_settings = " type removable state operational\n";
const std::string sensor_lines =
    "temperature-sensor 1 description \"Switch chip\" temperature 52 state auto warning 85 critical 95 "
    "shutdown 105\n"
    "temperature-sensor 2 description Processor temperature 44 state auto warning 75 critical 85 shutdown "
    "95\n"
    "temperature-sensor 3 description \"Air inlet\" temperature 24 state auto warning 45 critical 55 "
    "shutdown 65\n"
    "temperature-sensor 4 description \"Air outlet\" temperature 36 state auto warning 65 critical 75 "
    "shutdown 85\n";

std::string listed_at_start() {
  std::string text = identity_line;
  for (int i = 1; i <= 5; i++) text += "fan " + std::to_string(i) + fan_settings;
  for (int i = 1; i <= 2; i++) text += "power-supply " + std::to_string(i) + supply_settings;
  return text + sensor_lines;
}

class LabChassis : public MixedPorts {
protected:
  /* The lines that "chassis" now has and did not have at start. */
  static std::vector<std::string> changed_lines() {
    std::vector<std::string> before = lines_of(listed_at_start()), changed;
    for (const std::string &line : lines_of(lab_command("chassis"))) {
      if (line != "ok" && std::find(before.begin(), before.end(), line) == before.end())
        changed.push_back(line);
    }
    return changed;
  }
  static std::string list() { return lab_command("chassis"); }
  uint32_t number(open_error_t (*get)(openapiClientHandle_t *, uint32_t, uint32_t *), uint32_t item) {
    uint32_t value = 12345;
    EXPECT_EQ(get(&handle, item, &value), OPEN_E_NONE);
    return value;
  }
  std::string text(open_error_t (*get)(openapiClientHandle_t *, open_buffdesc *)) {
    char buffer[256];
    open_buffdesc got = {sizeof buffer, buffer};
    EXPECT_EQ(get(&handle, &got), OPEN_E_NONE);
    return buffer;
  }
};

/* --- The list ------------------------------------------------------------------------------------------- */

TEST_F(LabChassis, ListShowsTheWholeChassisAtStart) {
  EXPECT_EQ(list(), listed_at_start() + "ok\n");
}

TEST_F(LabChassis, LinesOfTheListAreTheCommandsThatMakeItSo) {
  for (const char *line :
       {"identity model \"a b\" description \"say \\\"x\\\" \\\\ \xc3\xa4\" mac 0a:0b:0c:0d:0e:0f",
        "fan 2 type none state failed speed 0", "power-supply 1 state 77",
        "temperature-sensor 4 description \"\" temperature -5 state not-present",
        "transceiver in 0/8 module-type QSFP vendor-name \"x y\" nominal-signal-rate 41200"})
    ASSERT_EQ(lab_command(line), "ok\n") << line;
  std::string changed = list();
  restart();
  ASSERT_NE(list(), changed);
  lines commands = lines_of(changed);
  ASSERT_EQ(commands.back(), "ok");
  commands.pop_back();
  for (const std::string &line : commands) EXPECT_EQ(lab_command(line), "ok\n") << line;
  EXPECT_EQ(list(), changed);
}

TEST_F(LabChassis, ChassisIsNoConfiguration) {
  hold_apply(true);
  std::string configuration = running_config();
  EXPECT_EQ(lab_command("fan 1 state failed"), "ok\n");
  EXPECT_EQ(lab_command("transceiver in 0/7 serial-number X1"), "ok\n");
  EXPECT_EQ(lab_command("identity model Other"), "ok\n");
  EXPECT_TRUE(wait_applied(0)) << "nothing is pending";
  EXPECT_EQ(running_config(), configuration);
  std::string changed = list(), error;
  hold_apply(false);
  ASSERT_TRUE(reload(&error)) << error;
  EXPECT_EQ(list(), changed) << "a reload keeps it";
  restart();
  EXPECT_EQ(list(), listed_at_start() + "ok\n") << "a restart begins with the profile";
}

/* --- Fans and power supplies ---------------------------------------------------------------------------- */

TEST_F(LabChassis, FansAreCountedFromOne) {
  EXPECT_EQ(lab_command("fan 1 state failed"), "ok\n");
  EXPECT_EQ(number(rpcclt_openapiBoxsFanStateGet, 0), OPEN_BOXS_ITEM_STATE_FAILED);
  EXPECT_EQ(lab_command("fan 5 speed 100000 duty-cycle 100 type fixed"), "ok\n");
  EXPECT_EQ(number(rpcclt_openapiBoxsFanSpeedGet, 4), 100000u);
  EXPECT_EQ(number(rpcclt_openapiBoxsFanDutyCycleGet, 4), 100u);
  EXPECT_EQ(number(rpcclt_openapiBoxsFanTypeGet, 4), OPEN_BOXS_ITEM_TYPE_FIXED);
  EXPECT_EQ(changed_lines(), (lines{"fan 1 type removable state failed speed 7200 duty-cycle 45",
                                    "fan 5 type fixed state operational speed 100000 duty-cycle 100"}));
}

TEST_F(LabChassis, EveryStateHasAWordAndANumber) {
  const char *words[] = {"none",     "not-present", "operational",  "failed",
                         "powering", "not-powered", "not-powering", "incompatible"};
  for (uint32_t state = 0; state < 8; state++) {
    EXPECT_EQ(lab_command(std::string("power-supply 2 state ") + words[state]), "ok\n");
    EXPECT_EQ(number(rpcclt_openapiBoxsPowSupplyStateGet, 1), state);
    EXPECT_EQ(lab_command("fan 3 state " + std::to_string(state)), "ok\n");
    EXPECT_EQ(number(rpcclt_openapiBoxsFanStateGet, 2), state);
    EXPECT_NE(list().find("fan 3 type removable state " + std::string(words[state]) + " "),
              std::string::npos);
  }
  EXPECT_EQ(lab_command("power-supply 2 state 99 type fixed"), "ok\n") << "what no client knows";
  EXPECT_EQ(number(rpcclt_openapiBoxsPowSupplyStateGet, 1), 99u);
  EXPECT_EQ(number(rpcclt_openapiBoxsPowSupplyTypeGet, 1), OPEN_BOXS_ITEM_TYPE_FIXED);
  EXPECT_NE(list().find("power-supply 2 type fixed state 99\n"), std::string::npos);
}

/* --- Temperature sensors -------------------------------------------------------------------------------- */

TEST_F(LabChassis, SensorFollowsItsTemperatureUntilItsStateIsFixed) {
  const std::pair<std::string, uint32_t> steps[] = {
      {"temperature 44", OPEN_BOXS_TEMP_STATE_NORMAL},
      {"temperature 45", OPEN_BOXS_TEMP_STATE_WARNING},
      {"temperature 55", OPEN_BOXS_TEMP_STATE_CRITICAL},
      {"temperature 300", OPEN_BOXS_TEMP_STATE_SHUTDOWN},
      {"state not-operational", OPEN_BOXS_TEMP_STATE_NOT_OPERATIONAL},
      {"state not-present", OPEN_BOXS_TEMP_STATE_NOT_PRESENT},
      {"state normal", OPEN_BOXS_TEMP_STATE_NORMAL},
      {"state warning", OPEN_BOXS_TEMP_STATE_WARNING},
      {"state critical", OPEN_BOXS_TEMP_STATE_CRITICAL},
      {"state shutdown", OPEN_BOXS_TEMP_STATE_SHUTDOWN},
      {"state none", OPEN_BOXS_TEMP_STATE_NONE},
      {"state 255", 255},
      {"temperature -100", 255},
      {"state auto", OPEN_BOXS_TEMP_STATE_NORMAL},
      {"shutdown -97 warning -99 critical -98", OPEN_BOXS_TEMP_STATE_NORMAL},
      {"temperature -98", OPEN_BOXS_TEMP_STATE_CRITICAL},
  };
  for (const auto &[settings, state] : steps) {
    EXPECT_EQ(lab_command("temperature-sensor 3 " + settings), "ok\n") << settings;
    EXPECT_EQ(number(rpcclt_openapiBoxsTempSensorStatusGet, 2), state) << settings;
  }
  int32_t temperature;
  EXPECT_EQ(rpcclt_openapiBoxsTempGet(&handle, 2, &temperature), OPEN_E_NONE);
  EXPECT_EQ(temperature, -98);
}

/* --- Transceivers --------------------------------------------------------------------------------------- */

TEST_F(LabChassis, TransceiverGoesInWithItsDataAndOutAgain) {
  EXPECT_EQ(lab_command("transceiver in 0/8 module-type CX4-module vendor-name \"A B\" vendor-revision r "
                        "link-length-50um 1 link-length-62-5um 2 serial-number s part-number p "
                        "nominal-signal-rate 3 compliance \"\""),
            "ok\n");
  EXPECT_EQ(number(rpcclt_openapiBoxsSfpTypeGet, 8), OPEN_SFP_TYPE_CX4_MODULE);
  EXPECT_EQ(changed_lines(),
            lines{"transceiver in 0/8 module-type CX4-module vendor-name \"A B\" vendor-revision r "
                  "link-length-50um 1 link-length-62-5um 2 serial-number s part-number p "
                  "nominal-signal-rate 3 compliance \"\""});
  EXPECT_EQ(lab_command("transceiver in 0/8"), "ok\n") << "another one takes its place";
  EXPECT_EQ(changed_lines(),
            lines{"transceiver in 0/8 module-type SFP+ vendor-name \"\" vendor-revision \"\" "
                  "link-length-50um 0 link-length-62-5um 0 serial-number \"\" part-number \"\" "
                  "nominal-signal-rate 0 compliance \"\""});
  EXPECT_EQ(lab_command("transceiver out 0/8"), "ok\n");
  EXPECT_EQ(lab_command("transceiver out 0/8"), "ok\n") << "out is out";
  EXPECT_EQ(changed_lines(), lines{});
  uint32_t rate;
  EXPECT_EQ(rpcclt_openapiBoxsSfpNominalSignalRate(&handle, 8, &rate), OPEN_E_NOT_FOUND);
}

TEST_F(LabChassis, EveryModuleTypeHasAWord) {
  const char *words[] = {
      "none",        "SFP",        "SFP+",         "QSFP", "direct-attach", "XFP-module", "stacking-module",
      "SFP+-module", "CX4-module", "copper-module"};
  for (uint32_t type = 0; type < 10; type++) {
    EXPECT_EQ(lab_command(std::string("transceiver in 0/5 module-type ") + words[type]), "ok\n");
    EXPECT_EQ(number(rpcclt_openapiBoxsSfpTypeGet, 5), type);
  }
}

TEST_F(LabChassis, TransceiverDoesNotMoveTheLink) {
  uint32_t state = 99;
  EXPECT_EQ(openapiIfLinkStateGet(&handle, 8, &state), OPEN_E_NONE);
  EXPECT_EQ(state, static_cast<uint32_t>(OPEN_LINK_UP));
}

/* --- Identity ------------------------------------------------------------------------------------------- */

TEST_F(LabChassis, IdentityIsWhatTheSwitchSays) {
  EXPECT_EQ(lab_command(
                "identity model M1 serial \"S 2\" description \"d \\\"e\\\" f\" os-version 9.9 storage disk "
                "mac 0a:0b:0c:0d:0e:0f"),
            "ok\n");
  EXPECT_EQ(text(rpcclt_openapiMachineModelNameGet), "M1");
  EXPECT_EQ(text(rpcclt_openapiSwDevInfoSerialNumGet), "S 2");
  EXPECT_EQ(text(rpcclt_openapiSystemDescrGet), "d \"e\" f");
  EXPECT_EQ(text(rpcclt_openapiNetworkOSVersionGet), "9.9");
  EXPECT_EQ(text(rpcclt_openapiSwStorageGet), "disk");
  EXPECT_EQ(text(rpcclt_openapiBurnedInMacAddrGet), "0A:0B:0C:0D:0E:0F");
  EXPECT_EQ(lab_command("identity model " + std::string(255, 'x')), "ok\n");
  EXPECT_EQ(text(rpcclt_openapiMachineModelNameGet), std::string(255, 'x'));
  EXPECT_EQ(text(rpcclt_openapiSwStorageGet), "disk") << "the rest stays";
}

/* --- Refusals ------------------------------------------------------------------------------------------- */

struct refusal {
  std::string line, reply;
};

class LabChassisRefusals : public LabChassis {
protected:
  /* Nothing of a refused command is carried out. */
  void TearDown() override {
    EXPECT_EQ(list(), listed_at_start() + "ok\n");
    LabChassis::TearDown();
  }
  static void expect(const std::vector<refusal> &rows) {
    for (const refusal &row : rows)
      EXPECT_EQ(lab_command(row.line), "error: " + row.reply + "\n") << row.line;
  }
};

TEST_F(LabChassisRefusals, OfFansAndPowerSupplies) {
  const std::string fan = "usage: fan NUMBER SETTING VALUE ...",
                    supply = "usage: power-supply NUMBER SETTING VALUE ...";
  const std::string states =
      "state must be \"none\", \"not-present\", \"operational\", \"failed\", \"powering\", "
      "\"not-powered\", \"not-powering\" or \"incompatible\"";
  expect({
      {"fan", fan},
      {"fan 1", fan},
      {"fan 1 state", fan},
      {"fan 1 state failed speed", fan},
      {"fan one state failed", fan},
      {"fan -1 state failed", fan},
      {"fan 0 state failed", "there is no fan 0"},
      {"fan 6 state failed", "there is no fan 6"},
      {"fan 4294967295 state failed", "there is no fan 4294967295"},
      {"fan 1 colour red", "there is no setting \"colour\""},
      {"fan 1 duty_cycle 7", "there is no setting \"duty_cycle\""},
      {"fan 1 state", fan},
      {"fan 1 state broken", states},
      {"fan 1 state Failed", states},
      {"fan 1 state \"\"", states},
      {"fan 1 state 256", states},
      {"fan 1 state -1", states},
      {"fan 1 type 2 type plugged", "type must be \"none\", \"fixed\" or \"removable\""},
      {"fan 1 speed fast", "speed must be a number from 0 to 100000"},
      {"fan 1 speed -1", "speed must be a number from 0 to 100000"},
      {"fan 1 speed 100001", "speed must be a number from 0 to 100000"},
      {"fan 1 speed 99999999999", "speed must be a number from 0 to 100000"},
      {"fan 1 speed 1.5", "speed must be a number from 0 to 100000"},
      {"fan 1 state failed duty-cycle 101", "duty-cycle must be a number from 0 to 100"},
      {"power-supply 1 state", supply},
      {"power-supply 3 state failed", "there is no power-supply 3"},
      {"power-supply 1 speed 7", "there is no setting \"speed\""},
      {"power-supply 1 state hot", states},
  });
}

TEST_F(LabChassisRefusals, OfTemperatureSensors) {
  const std::string celsius = " must be a number from -100 to 300",
                    rising = "the temperature-sensor must have thresholds that rise from warning to critical "
                             "to shutdown";
  expect({
      {"temperature-sensor 1 state", "usage: temperature-sensor NUMBER SETTING VALUE ..."},
      {"temperature-sensor 5 temperature 1", "there is no temperature-sensor 5"},
      {"temperature-sensor 1 temperature -101", "temperature" + celsius},
      {"temperature-sensor 1 temperature 301", "temperature" + celsius},
      {"temperature-sensor 1 warning hot", "warning" + celsius},
      {"temperature-sensor 1 state -1", "state must be \"auto\", \"none\", \"normal\", \"warning\", "
                                        "\"critical\", \"shutdown\", \"not-present\" "
                                        "or \"not-operational\""},
      {"temperature-sensor 1 temperature 90 warning 95", rising},
      {"temperature-sensor 1 critical 105", rising},
      {"temperature-sensor 1 shutdown 80", rising},
      {"temperature-sensor 1 description " + std::string(65, 'x'),
       "description must be a text of 0 to 64 bytes of UTF-8 without control characters"},
  });
}

TEST_F(LabChassisRefusals, OfTransceivers) {
  const std::string in = "usage: transceiver in PORT [SETTING VALUE ...]",
                    none = "no such command; \"help\" lists them";
  expect({
      {"transceiver", none},
      {"transceiver up 0/8", none},
      {"transceiver in", in},
      {"transceiver in 0/8 serial-number", in},
      {"transceiver out", "usage: transceiver out PORT"},
      {"transceiver out 0/8 now", "usage: transceiver out PORT"},
      {"transceiver in 0/1", "there is no transceiver cage \"0/1\""},
      {"transceiver out 0/1", "there is no transceiver cage \"0/1\""},
      {"transceiver in 0/10", "there is no transceiver cage \"0/10\""},
      {"transceiver in 3/1", "there is no transceiver cage \"3/1\""},
      {"transceiver in cpu", "there is no transceiver cage \"cpu\""},
      {"transceiver in \"\"", "there is no transceiver cage \"\""},
      {"transceiver in 0/8 port 0/7", "there is no setting \"port\""},
      {"transceiver in 0/8 link-length-50um -1", "link-length-50um must be a number from 0 to 100000"},
      {"transceiver in 0/8 link-length-62-5um 100001",
       "link-length-62-5um must be a number from 0 to 100000"},
      {"transceiver in 0/8 nominal-signal-rate 1000001",
       "nominal-signal-rate must be a number from 0 to 1000000"},
      {"transceiver in 0/8 vendor-name " + std::string(65, 'x'),
       "vendor-name must be a text of 0 to 64 bytes of UTF-8 without control characters"},
      {"transceiver in 0/8 module-type sfp",
       "module-type must be \"none\", \"SFP\", \"SFP+\", \"QSFP\", \"direct-attach\", \"XFP-module\", "
       "\"stacking-module\", \"SFP+-module\", \"CX4-module\" or \"copper-module\""},
  });
}

TEST_F(LabChassisRefusals, OfTheIdentityAndOfWrongQuotes) {
  const std::string usage = "usage: identity SETTING VALUE ...",
                    rule = " must be a text of 1 to 255 bytes of UTF-8 without control characters",
                    mac = "mac must be a station's MAC address like \"02:00:5E:10:00:01\"";
  expect({
      {"identity", usage},
      {"identity model", usage},
      {"identity model a serial", usage},
      {"identity ports 7", "there is no setting \"ports\""},
      {"identity model \"\"", "model" + rule},
      {"identity serial " + std::string(256, 'x'), "serial" + rule},
      {"identity storage ok description \"\xff\"", "description" + rule},
      {"identity mac 01:00:5E:00:00:01", mac},
      {"identity mac 00:00:00:00:00:00", mac},
      {"identity mac 02:00:5E:10:00", mac},
      {"identity model \"a", "the closing quote is missing"},
      {"identity model \"a\"b", "a blank is missing after the closing quote"},
      {"identity model \"a\\n\"", "only \\\" and \\\\ are known after a backslash"},
      {"identity model a\"b", "a text with quotes or backslashes stands in double quotes"},
      {"identity model \"a\tb\"", "model" + rule},
      {"chassis all", "usage: chassis"},
  });
}

/* --- With the built-in chassis -------------------------------------------------------------------------- */

TEST_F(SoftSwitch, TransceiverOfTheProfileGoesBackIntoItsPort) {
  const std::string
      at_start = lab_command("chassis"),
      sr = "transceiver in 0/1 module-type SFP+ vendor-name \"Sample Optics\" vendor-revision A1 "
           "link-length-50um 300 link-length-62-5um 33 serial-number ",
      rest = " part-number SO-10G-SR nominal-signal-rate 10300 compliance 10GBASE-SR\n";
  EXPECT_NE(at_start.find(sr + "SO100001" + rest), std::string::npos) << at_start;
  EXPECT_EQ(lab_command("transceiver out 0/1"), "ok\n");
  EXPECT_EQ(lab_command("chassis").find("transceiver in 0/1 "), std::string::npos);
  EXPECT_EQ(lab_command("transceiver in 0/1"), "ok\n");
  EXPECT_EQ(lab_command("chassis"), at_start);
  EXPECT_EQ(lab_command("transceiver in 0/1 serial-number SO100099"), "ok\n");
  EXPECT_NE(lab_command("chassis").find(sr + "SO100099" + rest), std::string::npos);
}

/* --- Texts ---------------------------------------------------------------------------------------------- */

TEST(Utf8, WellFormedTextsAloneAreTaken) {
  for (const char *good :
       {"", "a", "\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf", "\xee\x80\x80",
        "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf", "a\xc3\xa4z"})
    EXPECT_TRUE(utf8_valid(good)) << good;
  for (const char *bad : {"\x80", "\xbf", "a\xc3", "\xc3z", "\xc0\x80", "\xc1\xbf", "\xe0\x9f\xbf",
                          "\xed\xa0\x80", "\xed\xbf\xbf", "\xe2\x82", "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80",
                          "\xf8\x88\x80\x80\x80", "\xff", "\xfe", "\xf0\x90\x80z"})
    EXPECT_FALSE(utf8_valid(bad)) << bad;
}

} // namespace
