/* The interface module, settings of an interface by itself. */
#include "tests/unit/modules/interface_fixture.h"

/* --- All of them -----------------------------------------------------------------------------------------
 */

struct setting_row {
  const char *method, *uri, *function;
};

/* Every operation that takes `value`, with the last platform function that it calls. */
static const setting_row SETTINGS[] = {
    {"PUT", "/if/3/pvid", "rpcclt_openapiVlanIfPvidSet"},
    {"PUT", "/if/3/acceptFrameType", "rpcclt_openapiVlanIfAcceptFrameTypeSet"},
    {"PUT", "/if/3/adminState", "rpcclt_openapiIfAdminStateSet"},
    {"PUT", "/if/48/autoNegMode", "rpcclt_openapiIfAutoNegSet"},
    {"PUT", "/if/3/mtuSize", "rpcclt_openapiIfMtuSizeSet"},
    {"PUT", "/if/3/speed", "rpcclt_openapiIfSpeedSet"},
    {"PUT", "/if/3/vlan/1/taggingMode", "rpcclt_openapiVlanIfTaggingSet"},
    {"PUT", "/if/3/switchportMode", "rpcclt_openapiIfSwitchportModeSet"},
    {"PUT", "/if/3/access/vlan", "rpcclt_openapiIfSwitchportAccessVlanSet"},
    {"PUT", "/if/3/trunk/pvid", "rpcclt_openapiIfSwitchportTrunkNativeVlanSet"},
    {"PUT", "/if/3/trunk/vlan", "rpcclt_openapiIfSwitchportTrunkVlanCreate"},
    {"POST", "/if/3/trunk/vlan", "rpcclt_openapiIfSwitchportTrunkVlanSet"},
    {"DELETE", "/if/3/trunk/vlan", "rpcclt_openapiIfSwitchportTrunkVlanSet"},
};

TEST_F(InterfaceTest, ValueThatIsMissingEmptyOrTooLongAnswers99AndThePlatformIsNotAsked) {
  for (const setting_row &row : SETTINGS) {
    fault(row.function, OPEN_E_EXISTS, 2); /* would answer 98 */
    for (const std::string &query : {std::string(), std::string("value="), std::string("values=1"),
                                     std::string("counter=1"), "value=" + std::string(256, '1')}) {
      EXPECT_EQ(call(interface_api_handler, row.method, row.uri, query), expected_parameter_error())
          << row.method << " " << row.uri << " " << query;
    }
    FakeRequest in_body(row.method, row.uri, "", "value=" + std::string(300, '1'));
    EXPECT_EQ(interface_api_handler(handle, in_body.conn()), 0);
    EXPECT_EQ(answer_body(in_body, "xml"), expected_parameter_error().xml) << row.uri;
    EXPECT_EQ(lab("fault list"), std::string(row.function) + " OPEN_E_EXISTS 2 0\n");
    lab("fault clear");
  }
}

TEST_F(InterfaceTest, ValueMayStandInTheBody) {
  for (const setting_row &row : SETTINGS) {
    FakeRequest in_body(row.method, row.uri, "", "value=1");
    fault(row.function, OPEN_E_EXISTS); /* reached */
    EXPECT_EQ(interface_api_handler(handle, in_body.conn()), 0);
    EXPECT_EQ(answer_body(in_body, "xml"), expected_platform_error(OPEN_E_EXISTS).xml) << row.uri;
  }
}

TEST_F(InterfaceTest, InterfacesThatDoNotExistHaveNoSettings) {
  struct {
    const char *method, *behind;
  } rows[] = {
      {"PUT", "/pvid"},           {"PUT", "/acceptFrameType"},
      {"PUT", "/adminState"},     {"PUT", "/autoNegMode"},
      {"PUT", "/description"},    {"PUT", "/mtuSize"},
      {"PUT", "/speed"},          {"PUT", "/vlan/1/taggingMode"},
      {"PUT", "/switchportMode"}, {"PUT", "/access/vlan"},
      {"PUT", "/trunk/pvid"},     {"PUT", "/trunk/vlan"},
      {"POST", "/trunk/vlan"},    {"DELETE", "/trunk/vlan"},
      {"POST", "/vlan/1"},        {"DELETE", "/vlan/1"},
      {"GET", "/vlan/1"},         {"GET", "/vlan"},
      {"GET", "/switchportMode"},
  };
  for (const auto &row : rows) {
    for (const char *ifNum : {"0", "200", "226", "354", "2147483647", "4294967299"}) {
      std::string uri = std::string("/if/") + ifNum + row.behind;
      EXPECT_EQ(call(interface_api_handler, row.method, uri, "value=1"),
                expected_platform_error(OPEN_E_NOT_FOUND))
          << row.method << " " << uri;
    }
  }
}

/* Numbers that no setting takes go to the platform, which refuses them. */
TEST_F(InterfaceTest, NumbersOutOfRangeAreThePlatformsRefusal) {
  struct {
    const char *uri;
    std::vector<const char *> values;
  } rows[] = {
      {"/if/3/pvid", {"0", "-1", "4095", "99999999999", "abc"}},
      {"/if/3/acceptFrameType", {"0", "4", "-1", "99999999999", "all"}},
      {"/if/3/adminState", {"2", "-1", "99999999999"}},
      {"/if/3/mtuSize", {"0", "1517", "12271", "-1", "99999999999", "jumbo"}},
      {"/if/3/speed", {"0", "15", "127", "131", "-1", "99999999999", "fast"}},
      {"/if/3/vlan/1/taggingMode", {"2", "-1", "99999999999"}},
      {"/if/3/switchportMode", {"0", "4", "-1", "99999999999", "trunk"}},
  };
  std::string before = lab("show running-config");
  for (const auto &row : rows) {
    for (const char *value : row.values) {
      EXPECT_EQ(put(row.uri, std::string("value=") + value), expected_platform_error(OPEN_E_PARAM))
          << row.uri << " " << value;
    }
  }
  EXPECT_EQ(lab("show running-config"), before);
}

/* --- PVID, accepted frames -------------------------------------------------------------------------------
 */

TEST_F(InterfaceTest, PvidIsUpdated) {
  create_vlans({10, 4094});
  for (unsigned pvid : {10u, 4094u, 1u}) {
    expect_done("PUT", "/if/3/pvid", "value=" + std::to_string(pvid),
                "Update PVID of Interface 3 successfully.");
    interface_details details = port_details(3);
    details.pvid = pvid;
    EXPECT_EQ(get("/if/3"), expected_details(details));
  }
}

TEST_F(InterfaceTest, PvidOfAVlanThatDoesNotExistAnswers99) {
  EXPECT_EQ(put("/if/3/pvid", "value=10"), expected_platform_error(OPEN_E_NOT_FOUND));
  EXPECT_EQ(get("/if/3"), expected_details(port_details(3)));
}

TEST_F(InterfaceTest, AcceptedFrameTypesAreUpdated) {
  const char *words[] = {"all", "tagged", "untagged"};
  for (int type : {2, 3, 1}) {
    expect_done("PUT", "/if/3/acceptFrameType", "value=" + std::to_string(type),
                "Update acceptFrameType of Interface 3 successfully.");
    interface_details details = port_details(3);
    details.accept_frames = words[type - 1];
    EXPECT_EQ(get("/if/3"), expected_details(details));
  }
}

/* --- Administrative state --------------------------------------------------------------------------------
 */

TEST_F(InterfaceTest, AdministrativeStateIsUpdated) {
  interface_details details = port_details(3);
  expect_done("PUT", "/if/3/adminState", "value=0",
              "Update administrative state of Interface 3 successfully.");
  wait_applied();
  details.admin = "disable";
  details.link = "down";
  EXPECT_EQ(get("/if/3"), expected_details(details));
  expect_done("PUT", "/if/3/adminState", "value=1",
              "Update administrative state of Interface 3 successfully.");
  wait_applied();
  EXPECT_EQ(get("/if/3"), expected_details(port_details(3)));
}

TEST_F(InterfaceTest, TextWithoutANumberCountsAsZero) {
  expect_done("PUT", "/if/3/adminState", "value=enable",
              "Update administrative state of Interface 3 successfully.");
  wait_applied();
  interface_details details = port_details(3);
  details.admin = "disable";
  details.link = "down";
  EXPECT_EQ(get("/if/3"), expected_details(details));
  expect_done("PUT", "/if/3/adminState", "value=1x",
              "Update administrative state of Interface 3 successfully.");
  wait_applied();
  EXPECT_EQ(get("/if/3"), expected_details(port_details(3)));
}

TEST_F(InterfaceTest, CpuInterfaceCannotBeChanged) {
  for (const char *setting : {"adminState", "mtuSize", "speed", "description"}) {
    std::string value = std::string(setting) == "mtuSize" ? "9000"
                        : std::string(setting) == "speed" ? "7"
                                                          : "0";
    EXPECT_EQ(put(std::string("/if/55/") + setting, "value=" + value),
              expected_platform_error(OPEN_E_UNAVAIL))
        << setting;
  }
}

/* --- Auto-negotiation ------------------------------------------------------------------------------------
 */

TEST_F(InterfaceTest, AutoNegotiationOfCopperPortsIsUpdated) {
  interface_details details = port_details(48);
  expect_done("PUT", "/if/48/autoNegMode", "value=0",
              "Update auto-negotiation mode of Interface 48 successfully.");
  details.auto_neg = "disable";
  details.speed = "full 1000sx";
  EXPECT_EQ(get("/if/48"), expected_details(details));
  expect_done("PUT", "/if/48/autoNegMode", "value=1",
              "Update auto-negotiation mode of Interface 48 successfully.");
  EXPECT_EQ(get("/if/48"), expected_details(port_details(48)));
}

TEST_F(InterfaceTest, AutoNegotiationTakesTheNumbersZeroAndOneInAnyWriting) {
  for (const char *value : {"00", "-0", "-", "000000000000000000000"}) {
    expect_done("PUT", "/if/48/autoNegMode", std::string("value=") + value,
                "Update auto-negotiation mode of Interface 48 successfully.");
    uint32_t mode = 9;
    EXPECT_EQ(openapiIfAutoNegGet(handle, 48, &mode), OPEN_E_NONE);
    EXPECT_EQ(mode, OPEN_PORT_AUTO_NEGOTIATE_DISABLE) << value;
  }
  expect_done("PUT", "/if/48/autoNegMode", "value=01",
              "Update auto-negotiation mode of Interface 48 successfully.");
  EXPECT_EQ(get("/if/48"), expected_details(port_details(48)));
}

TEST_F(InterfaceTest, AutoNegotiationOfAnythingElseAnswers99BeforeThePortIsLookedAt) {
  fault("rpcclt_openapiIfConnectorTypeGet", OPEN_E_EXISTS);
  for (const char *value :
       {"2", "-1", "1x", "x", "+1", "%2B1", "1.0", "%201", "1%20", "enable", "4294967297"}) {
    EXPECT_EQ(put("/if/48/autoNegMode", std::string("value=") + value), expected_parameter_error()) << value;
    EXPECT_EQ(put("/if/3/autoNegMode", std::string("value=") + value), expected_parameter_error()) << value;
  }
  EXPECT_EQ(lab("fault list"), "rpcclt_openapiIfConnectorTypeGet OPEN_E_EXISTS 1 0\n");
  lab("fault clear");
  EXPECT_EQ(get("/if/48"), expected_details(port_details(48)));
}

TEST_F(InterfaceTest, OnlyCopperPortsNegotiate) {
  for (const char *ifNum : {"1", "49", "55", "56", "120"}) {
    for (const char *value : {"0", "1"}) {
      EXPECT_EQ(put(std::string("/if/") + ifNum + "/autoNegMode", std::string("value=") + value),
                expected_answers(1, std::string("Unable to update auto-negotiation mode of Interface ") +
                                        ifNum + "."));
    }
  }
  EXPECT_EQ(get("/if/1"), expected_details(port_details(1)));
}

/* --- Description -----------------------------------------------------------------------------------------
 */

class InterfaceDescriptionTest : public InterfaceTest {
protected:
  InterfaceDescriptionTest() { EXPECT_EQ(rpcclt_openapiIfDescrSizeGet(handle, 3, &length_max), OPEN_E_NONE); }
  void expect_taken(const std::string &text) const {
    expect_done("PUT", "/if/3/description", "value=" + text,
                "Update description of Interface 3 successfully.");
    interface_details details = port_details(3);
    details.description = text;
    EXPECT_EQ(get("/if/3"), expected_details(details));
  }

  const Answers refused = expected_answers(1, "The value of parameter is invalid.");
  uint32_t length_max = 0;
};

TEST_F(InterfaceDescriptionTest, MayBeAsLongAsThePlatformAllows) {
  ASSERT_GT(length_max, 1u);
  for (uint32_t length : {1u, 2u, length_max - 1, length_max}) expect_taken(std::string(length, 'd'));
}

TEST_F(InterfaceDescriptionTest, OfAnyOtherLengthIsRefused) {
  put("/if/3/description", "value=before");
  for (const std::string &query :
       {std::string(), std::string("value="), "value=" + std::string(length_max + 1, 'd'),
        "value=" + std::string(256, 'd'), "value=" + std::string(5000, 'd'), std::string("description=x")}) {
    EXPECT_EQ(put("/if/3/description", query), refused) << query;
  }
  FakeRequest in_body("PUT", "/if/3/description", "", "value=" + std::string(300, 'd'));
  EXPECT_EQ(interface_api_handler(handle, in_body.conn()), 0);
  EXPECT_EQ(answer_body(in_body, "xml"), refused.xml);
  interface_details details = port_details(3);
  details.description = "before";
  EXPECT_EQ(get("/if/3"), expected_details(details));
}

TEST_F(InterfaceDescriptionTest, LimitIsThePlatformsAtThatMoment) {
  {
    bent_output bent("rpcclt_openapiIfDescrSizeGet", 3);
    EXPECT_EQ(put("/if/3/description", "value=four"), refused);
    expect_taken("one");
  }
  bent_output bent("rpcclt_openapiIfDescrSizeGet", 0);
  EXPECT_EQ(put("/if/3/description", "value=x"), refused);
}

TEST_F(InterfaceDescriptionTest, LimitIsReadBeforeTheValue) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiIfDescrSizeGet", rc, 2);
    EXPECT_EQ(put("/if/3/description", ""), expected_platform_error(rc)) << rc;
  }
}

TEST_F(InterfaceDescriptionTest, ControlCharactersAreThePlatformsRefusal) {
  for (const char *text : {"a%0Ab", "%01", "a%7Fb"}) {
    EXPECT_EQ(put("/if/3/description", std::string("value=") + text), expected_platform_error(OPEN_E_PARAM))
        << text;
  }
  EXPECT_EQ(get("/if/3"), expected_details(port_details(3)));
}

TEST_F(InterfaceDescriptionTest, PercentSignsAndQuotesAreText) {
  put("/if/3/description", "value=%25s%25n+%22%5C%22+%2F");
  interface_details details = port_details(3);
  details.description = "%s%n \"\\\" /";
  EXPECT_EQ(get("/if/3"), expected_details(details));
}

/* --- MTU, speed ------------------------------------------------------------------------------------------
 */

TEST_F(InterfaceTest, MtuSizeIsUpdated) {
  for (unsigned mtu : {9000u, 12270u, 1518u}) {
    expect_done("PUT", "/if/3/mtuSize", "value=" + std::to_string(mtu),
                "Update MTU size of Interface 3 successfully.");
    interface_details details = port_details(3);
    details.mtu = mtu;
    EXPECT_EQ(get("/if/3"), expected_details(details));
  }
}

TEST_F(InterfaceTest, SpeedIsUpdated) {
  interface_details details = port_details(3);
  for (const char *speed : {"7", "8"}) {
    expect_done("PUT", "/if/3/speed", std::string("value=") + speed,
                "Update speed of Interface 3 successfully.");
    details.speed = *speed == '7' ? "full 1000sx" : "full 10gsx";
    EXPECT_EQ(get("/if/3"), expected_details(details));
  }
}

TEST_F(InterfaceTest, SpeedAndNegotiationOfCopperPortsEndEachOther) {
  interface_details details = port_details(48);
  expect_done("PUT", "/if/48/speed", "value=2", "Update speed of Interface 48 successfully.");
  details.speed = "half 100tx";
  details.auto_neg = "disable";
  details.duplex = "half";
  EXPECT_EQ(get("/if/48"), expected_details(details));
  expect_done("PUT", "/if/48/speed", "value=1", "Update speed of Interface 48 successfully.");
  EXPECT_EQ(get("/if/48"), expected_details(port_details(48)));
}

TEST_F(InterfaceTest, SpeedsThatAPortDoesNotHaveAnswer99) {
  for (const char *speed : {"1", "2", "9", "12", "129", "130"}) {
    EXPECT_EQ(put("/if/3/speed", std::string("value=") + speed), expected_platform_error(OPEN_E_UNAVAIL))
        << speed;
  }
  EXPECT_EQ(get("/if/3"), expected_details(port_details(3)));
}

/* --- Soft shutdown ---------------------------------------------------------------------------------------
 */

TEST_F(InterfaceTest, SoftShutdownIsNotServed) {
  for (const char *method : {"PUT", "GET", "POST", "DELETE"}) {
    EXPECT_EQ(call(interface_api_handler, method, "/if/3/softShutdownState", "value=1"),
              expected_bad_request());
  }
}

TEST_F(InterfaceTest, SoftShutdownOperationItselfWorks) {
  for (uint32_t state : {1u, 0u}) {
    FakeRequest request("PUT", "/if/3/softShutdownState", "value=" + std::to_string(state));
    EXPECT_EQ(api_interface_update_soft_shutdown_state(handle, request.conn()), 1);
    EXPECT_EQ(answer_body(request, "xml"),
              expected_answers(0, "Update soft-shutdown state of Interface 3 successfully.").xml);
    uint32_t read = 9;
    EXPECT_EQ(rpcclt_openapiIfSoftShutdownStateGet(handle, 3, &read), OPEN_E_NONE);
    EXPECT_EQ(read, state);
  }
  EXPECT_EQ(call(api_interface_update_soft_shutdown_state, "PUT", "/if/3/softShutdownState"),
            expected_parameter_error());
  EXPECT_EQ(call(api_interface_update_soft_shutdown_state, "PUT", "/if/3/softShutdownState", "value=2"),
            expected_platform_error(OPEN_E_PARAM));
}
