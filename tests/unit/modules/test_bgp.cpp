/* The BGP module: the speaker's own settings and the networks that it originates. */
#include "tests/unit/modules/bgp_fixture.h"

/* --- The speaker ---------------------------------------------------------------------------------------- */

TEST_F(BgpTest, SettingsInFactoryState) {
  EXPECT_EQ(get("/bgp").xml,
            "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data><infomation>"
            "<hold_time>90</hold_time><keep_alive_time>30</keep_alive_time><local_AS_number>0"
            "</local_AS_number><local_router_id>0.0.0.0</local_router_id><local_preference>100"
            "</local_preference><log_neighbor_changes>Disable</log_neighbor_changes></infomation></rlt_data>"
            "</result>\n");
  EXPECT_EQ(get("/bgp").json,
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
            "\"infomation\": { \"hold_time\": 90, \"keep_alive_time\": 30, \"local_AS_number\": 0, "
            "\"local_router_id\": \"0.0.0.0\", \"local_preference\": 100, "
            "\"log_neighbor_changes\": \"Disable\" } } } }\n");
  EXPECT_EQ(get("/bgp"), expected_settings({}));
}

struct speaker_setting {
  const char *uri, *function, *message;
};

static const speaker_setting HOLD_TIME = {"/bgp/holdTime", "rpcclt_openapiBgpGlobalHoldTimeConfiguredSet",
                                          "Update hold time for all peers successfully."};
static const speaker_setting KEEP_ALIVE_TIME = {"/bgp/keepAliveTime",
                                                "rpcclt_openapiBgpGlobalKeepAliveConfiguredSet",
                                                "Update keep alive time for all peers successfully."};
static const speaker_setting LOCAL_AS = {"/bgp/localAS", "rpcclt_openapiBgpLocalASSet",
                                         "Update local Autonomous System (AS) number successfully."};
static const speaker_setting ROUTER_ID = {"/bgp/routerId", "rpcclt_openapiBgpLocalIdSet",
                                          "Update BGP router ID successfully."};
static const speaker_setting LOCAL_PREFERENCE = {
    "/bgp/localPref", "rpcclt_openapiBgpLocalPrefSet",
    "Update the value of local preference attribute successfully."};
static const speaker_setting LOG_CHANGES = {"/bgp/logNeighborChanges",
                                            "rpcclt_openapiBgpLogNeighborChangesSet",
                                            "Update the log neighbor changes parameter successfully."};

class BgpSettingTest : public BgpTest {
protected:
  /* The value reaches the platform as this number, whatever that says to it. */
  void expect_handed_on(const speaker_setting &setting, const std::string &value,
                        const std::string &number) const {
    changes_not_carried_out idle;
    forget_calls();
    expect_done("PUT", setting.uri, "value=" + value, setting.message);
    EXPECT_EQ(recorded_arguments(setting.function), number) << setting.uri << " " << value;
  }
  /* The value is refused and never reaches the platform. */
  void expect_refused_value(const speaker_setting &setting, const std::string &value) const {
    forget_calls();
    expect_refused("PUT", setting.uri, "value=" + value, expected_parameter_error());
    EXPECT_EQ(recorded_arguments(setting.function), "") << setting.uri << " " << value;
  }
};

TEST_F(BgpSettingTest, EverySettingIsUpdatedByItself) {
  bgp_settings settings;
  expect_done("PUT", HOLD_TIME.uri, "value=180", HOLD_TIME.message);
  settings.hold_time = 180;
  EXPECT_EQ(get("/bgp"), expected_settings(settings));
  expect_done("PUT", KEEP_ALIVE_TIME.uri, "value=60", KEEP_ALIVE_TIME.message);
  settings.keep_alive_time = 60;
  EXPECT_EQ(get("/bgp"), expected_settings(settings));
  expect_done("PUT", LOCAL_AS.uri, "value=65001", LOCAL_AS.message);
  settings.local_as = 65001;
  EXPECT_EQ(get("/bgp"), expected_settings(settings));
  expect_done("PUT", ROUTER_ID.uri, "value=10.0.0.1", ROUTER_ID.message);
  settings.router_id = "10.0.0.1";
  EXPECT_EQ(get("/bgp"), expected_settings(settings));
  expect_done("PUT", LOCAL_PREFERENCE.uri, "value=200", LOCAL_PREFERENCE.message);
  settings.local_preference = 200;
  EXPECT_EQ(get("/bgp"), expected_settings(settings));
  expect_done("PUT", LOG_CHANGES.uri, "value=1", LOG_CHANGES.message);
  settings.log_changes = "Enable";
  EXPECT_EQ(get("/bgp"), expected_settings(settings));
  expect_done("PUT", LOG_CHANGES.uri, "value=0", LOG_CHANGES.message);
  settings.log_changes = "Disable";
  EXPECT_EQ(get("/bgp"), expected_settings(settings));
}

TEST_F(BgpSettingTest, MissingValueAnswers99) {
  const std::string overlong = "value=" + std::string(256, '1');
  for (const speaker_setting &setting :
       {HOLD_TIME, KEEP_ALIVE_TIME, LOCAL_AS, ROUTER_ID, LOCAL_PREFERENCE, LOG_CHANGES}) {
    for (const std::string &query : {std::string(), std::string("value"), std::string("value="),
                                     std::string("values=1"), std::string("asn=1"), overlong}) {
      expect_refused("PUT", setting.uri, query, expected_parameter_error());
      EXPECT_EQ(recorded_arguments(setting.function), "") << setting.uri << " " << query;
    }
  }
  EXPECT_EQ(get("/bgp"), expected_settings({}));
}

TEST_F(BgpSettingTest, TimesAreReadAsNumbersAndHandedOn) {
  const struct {
    const char *value, *number;
  } rows[] = {{"0", "0"},
              {"3", "3"},
              {"65535", "65535"},
              {"65536", "65536"},
              {"x", "0"},
              {"12x", "12"},
              {"%207", "7"},
              {"+7", "7"},
              {"007", "7"},
              {"-1", "4294967295"},
              {"2147483647", "2147483647"},
              {"1.9", "1"},
              {"99999999999", "2147483647"}};
  for (const auto &row : rows) {
    expect_handed_on(HOLD_TIME, row.value, row.number);
    expect_handed_on(KEEP_ALIVE_TIME, row.value, row.number);
  }
}

TEST_F(BgpSettingTest, TimesOutOfRangeAnswer99) {
  for (const char *value : {"1", "2", "65536", "-1", "99999999999"})
    expect_refused("PUT", HOLD_TIME.uri, std::string("value=") + value, expected_parameter_error());
  for (const char *value : {"65536", "-1", "99999999999"})
    expect_refused("PUT", KEEP_ALIVE_TIME.uri, std::string("value=") + value, expected_parameter_error());
  EXPECT_EQ(get("/bgp"), expected_settings({}));
}

/* Numbers of autonomous systems have 32 bits, and results are signed. */
TEST_F(BgpSettingTest, LocalAsIsReadAsANumber) {
  expect_handed_on(LOCAL_AS, "1", "1");
  expect_handed_on(LOCAL_AS, "65536x", "65536");
  expect_handed_on(LOCAL_AS, "x", "0");
  expect_handed_on(LOCAL_AS, "2147483647", "2147483647");
  expect_handed_on(LOCAL_AS, "4200000001", "4200000001");
  expect_handed_on(LOCAL_AS, "4294967295", "4294967295");
  expect_refused_value(LOCAL_AS, "4294967296");
  expect_refused_value(LOCAL_AS, "99999999999999999999");
  expect_refused("PUT", LOCAL_AS.uri, "value=0", expected_parameter_error());

  expect_done("PUT", LOCAL_AS.uri, "value=4294967295", LOCAL_AS.message);
  bgp_settings settings;
  settings.local_as = -1;
  EXPECT_EQ(get("/bgp"), expected_settings(settings));
}

TEST_F(BgpSettingTest, RouterIdIsAnIpv4Address) {
  expect_handed_on(ROUTER_ID, "10.0.0.1", "167772161");
  expect_handed_on(ROUTER_ID, "255.255.255.255", "4294967295");
  expect_handed_on(ROUTER_ID, "0.0.0.0", "0");
  for (const char *value : {"10.0.0", "10.0.0.256", "10.0.0.1/24", "%2010.0.0.1", "x", "1", "2001:db8::1",
                            "::ffff:10.0.0.1", "111111111111111111111111111111111111111111111111"})
    expect_refused_value(ROUTER_ID, value);
  expect_refused("PUT", ROUTER_ID.uri, "value=0.0.0.0", expected_parameter_error());
}

TEST_F(BgpSettingTest, RouterIdThatThePlatformCannotParseAnswers99) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiInetAddrGet", rc, 3);
    expect_refused("PUT", ROUTER_ID.uri, "value=10.0.0.1", expected_parameter_error());
  }
  EXPECT_EQ(recorded_arguments(ROUTER_ID.function), "");
}

TEST_F(BgpSettingTest, LocalPreferenceIsAnUnsignedNumber) {
  expect_handed_on(LOCAL_PREFERENCE, "0", "0");
  expect_handed_on(LOCAL_PREFERENCE, "0000000001", "1");
  expect_handed_on(LOCAL_PREFERENCE, "2147483648", "2147483648");
  expect_handed_on(LOCAL_PREFERENCE, "4294967295", "4294967295");
  for (const char *value : {"4294967296", "5000000000", "-1", "12a", "%201", "+1", "1.5", "00000000001", "x"})
    expect_refused_value(LOCAL_PREFERENCE, value);

  expect_done("PUT", LOCAL_PREFERENCE.uri, "value=4294967295", LOCAL_PREFERENCE.message);
  bgp_settings settings;
  settings.local_preference = -1;
  EXPECT_EQ(get("/bgp"), expected_settings(settings));
}

TEST_F(BgpSettingTest, AnyNumberButZeroLogsChanges) {
  for (const char *value : {"1", "2", "-1", "07", "1x", "99999999999"})
    expect_handed_on(LOG_CHANGES, value, "1");
  for (const char *value : {"0", "x", "-0", "00", "Enable"}) expect_handed_on(LOG_CHANGES, value, "0");
}

TEST_F(BgpSettingTest, HugeNumbersAreWrittenSigned) {
  bent_output hold("rpcclt_openapiBgpGlobalHoldTimeConfiguredGet", 0x80000000u);
  bent_output keep_alive("rpcclt_openapiBgpGlobalKeepAliveConfiguredGet", 0xffffffffu);
  bent_output local_as("rpcclt_openapiBgpLocalASGet", 0x7fffffffu);
  bent_output id("rpcclt_openapiBgpLocalIdGet", 0xfffefdfcu);
  bent_output preference("rpcclt_openapiBgpLocalPrefGet", 0xfffffffeu);
  bent_output log("rpcclt_openapiBgpLogNeighborChangesGet", 1);
  EXPECT_EQ(get("/bgp"),
            expected_settings({-2147483647 - 1, -1, 2147483647, "255.254.253.252", -2, "Enable"}));
}

/* --- Originated networks -------------------------------------------------------------------------------- */

static std::string network_message(const char *action, const std::string &address,
                                   const std::string &length) {
  return std::string(action) + " BGP originated network (ip address: " + address +
         ", prefix length: " + length + ") successfully.";
}

TEST_F(BgpTest, NetworkIsOriginatedAndEnded) {
  expect_done("POST", "/bgp/originatedNetwork", "addr=10.1.0.0&pfxLen=16&routeMap=blue",
              network_message("Set", "10.1.0.0", "16"));
  EXPECT_EQ(recorded_arguments(NETWORK), "1 1:10.1.0.0 16 1 5:blue");
  expect_done_once("DELETE", "/bgp/originatedNetwork", "addr=10.1.0.0&pfxLen=16",
                   network_message("Delete", "10.1.0.0", "16"));
  EXPECT_EQ(recorded_arguments(NETWORK).substr(0, 17), "0 1:10.1.0.0 16 0");
  expect_refused("DELETE", "/bgp/originatedNetwork", "addr=10.1.0.0&pfxLen=16",
                 expected_platform_error(OPEN_E_NOT_FOUND));
}

TEST_F(BgpTest, Ipv6NetworkIsOriginatedAndEnded) {
  expect_done("POST", "/bgp/originatedNetwork", "addr=2001:DB8::&pfxLen=032&routeMap=blue",
              network_message("Set", "2001:DB8::", "32"));
  EXPECT_EQ(recorded_arguments(NETWORK), "1 2:2001:db8:: 32 1 5:blue");
  expect_done_once("DELETE", "/bgp/originatedNetwork", "addr=2001:db8::&pfxLen=32",
                   network_message("Delete", "2001:db8::", "32"), "json");
}

/* The name of the route map handed on for deleting is empty. */
TEST_F(BgpTest, NetworkIsEndedWithoutARouteMap) {
  changes_not_carried_out idle;
  expect_done_once("DELETE", "/bgp/originatedNetwork", "addr=10.1.0.0&pfxLen=16&routeMap=blue",
                   network_message("Delete", "10.1.0.0", "16"));
  std::string arguments = recorded_arguments(NETWORK);
  EXPECT_TRUE(arguments == "0 1:10.1.0.0 16 0 0:" || arguments == "0 1:10.1.0.0 16 0 1:") << arguments;
}

TEST_F(BgpTest, NetworkNeedsAddressLengthAndRouteMap) {
  const char *queries[] = {
      "",
      "pfxLen=16&routeMap=blue",
      "addr=&pfxLen=16&routeMap=blue",
      "addr=10.1.0.0&routeMap=blue",
      "addr=10.1.0.0&pfxLen=16",
      "addr=10.1.0.0&pfxLen=16&routeMap=",
      "addr=10.1.0.0&pfxLen=-1&routeMap=blue",
      "addr=10.1.0.0&pfxLen=16x&routeMap=blue",
      "addr=10.1.0.0&pfxLen=4294967296&routeMap=blue",
      "addr=10.1.0&pfxLen=16&routeMap=blue",
      "addr=10.1.0.0/16&pfxLen=16&routeMap=blue",
      "addr=111111111111111111111111111111111111111111111111&pfxLen=16&routeMap=blue",
  };
  for (const char *query : queries) {
    expect_refused("POST", "/bgp/originatedNetwork", query, expected_parameter_error());
    EXPECT_EQ(recorded_arguments(NETWORK), "") << query;
  }
}

TEST_F(BgpTest, EndedNetworkNeedsAddressAndLength) {
  for (const char *query : {"", "pfxLen=16", "addr=&pfxLen=16", "addr=10.1.0.0", "addr=10.1.0&pfxLen=16",
                            "addr=x&pfxLen=16", "routeMap=blue"}) {
    expect_refused("DELETE", "/bgp/originatedNetwork", query, expected_parameter_error());
    EXPECT_EQ(recorded_arguments(NETWORK), "") << query;
  }
}

/* Making a network takes an unsigned number, ending it whatever reads as one. */
TEST_F(BgpTest, LengthOfAnEndedNetworkIsReadAsANumber) {
  const struct {
    const char *value, *number, *told;
  } rows[] = {{"16x", "16", "16"},
              {"x", "0", "0"},
              {"-1", "4294967295", "-1"},
              {"99999999999", "2147483647", "2147483647"}};
  for (const auto &row : rows) {
    changes_not_carried_out idle;
    expect_done("DELETE", "/bgp/originatedNetwork", std::string("addr=10.1.0.0&pfxLen=") + row.value,
                network_message("Delete", "10.1.0.0", row.told));
    EXPECT_EQ(recorded_arguments(NETWORK).find(std::string("0 1:10.1.0.0 ") + row.number + " 0 "), 0u);
  }
}

TEST_F(BgpTest, NameOfANetworksRouteMapHas31Characters) {
  const std::string longest(31, 'r'), query = "addr=10.1.0.0&pfxLen=16&routeMap=";
  expect_done("POST", "/bgp/originatedNetwork", query + longest, network_message("Set", "10.1.0.0", "16"));
  EXPECT_EQ(recorded_arguments(NETWORK), "1 1:10.1.0.0 16 1 32:" + longest);
  forget_calls();
  for (size_t length : {32, 33, 255, 300})
    expect_refused("POST", "/bgp/originatedNetwork", query + std::string(length, 'r'),
                   expected_parameter_error());
  EXPECT_EQ(recorded_arguments(NETWORK), "");
}

TEST_F(BgpTest, NetworkThatThePlatformCannotParseAnswers99) {
  for (open_error_t rc : all_platform_errors()) {
    for (const char *method : {"POST", "DELETE"}) {
      fault("rpcclt_openapiInetAddrGet", rc, 3);
      expect_refused(method, "/bgp/originatedNetwork", "addr=10.1.0.0&pfxLen=16&routeMap=blue",
                     expected_parameter_error());
    }
  }
  EXPECT_EQ(recorded_arguments(NETWORK), "");
}

TEST_F(BgpTest, NetworkThatThePlatformRefusesAnswers99) {
  for (const char *query :
       {"addr=10.1.0.0&pfxLen=33&routeMap=blue", "addr=2001:db8::&pfxLen=129&routeMap=blue",
        "addr=127.0.0.0&pfxLen=8&routeMap=blue", "addr=fe80::&pfxLen=10&routeMap=blue"})
    expect_refused("POST", "/bgp/originatedNetwork", query, expected_parameter_error());
  expect_refused("POST", "/bgp/originatedNetwork", "addr=10.1.0.0&pfxLen=4294967295&routeMap=blue",
                 expected_parameter_error());
}
