/* Operations of the system module that no request reaches: the prompt and the network port. */
#include "modules/rest_module_system.h"
#include "tests/unit/modules/management/management_fixture.h"

class NetworkPortTest : public ManagementTest {
protected:
  NetworkPortTest() : ManagementTest(system_api_handler) {
    give("NetworkPortIPv4AddrGet address", 0x0A000001);
    give("NetworkPortIPv4AddrGet mask", 0xFFFF0000);
    give("NetworkPortGatewayIPv4AddrGet", 0x0A0000FE);
    give("NetworkPortIPv4ProtocolModeGet", 3);
  }

  static management_request reading() {
    return {"GET", "/system/networkport/ipv4", "", api_system_get_networkport_ipv4};
  }
  static management_request setting(const std::string &query) {
    return {"PUT", "/system/networkport/ipv4", query, api_system_update_networkport_ipv4_parameters};
  }
};

static Answers expected_port(const std::string &address, const std::string &mask, const std::string &gateway,
                             const std::string &mode) {
  return expected_data({branch("infomation", {text("ip_address", address), text("netmask", mask),
                                              text("gateway", gateway), text("protocol_mode", mode)})});
}

TEST_F(NetworkPortTest, PromptIsSet) {
  const Answers done = expected_answers(0, "Update system prompt successfully.");
  expect_served({"PUT", "/system/prompt", "value=leaf%3E", api_system_update_prompt}, done,
                {"SystemPromptSet 6:leaf>"});
  expect_served({"PUT", "/system/prompt", "value=" + longest_value(), api_system_update_prompt}, done,
                {"SystemPromptSet 256:" + longest_value()});
  for (const std::string &query : {std::string(), std::string("value="), "value=" + too_long_value()})
    expect_refused({"PUT", "/system/prompt", query, api_system_update_prompt}, expected_parameter_error());
}

TEST_F(NetworkPortTest, AddressesAndModeAreRead) {
  expect_served(
      reading(), expected_port("10.0.0.1", "255.255.0.0", "10.0.0.254", "DHCP"),
      {"NetworkPortIPv4AddrGet", "NetworkPortGatewayIPv4AddrGet", "NetworkPortIPv4ProtocolModeGet"});
  give("NetworkPortIPv4AddrGet address", 0);
  give("NetworkPortIPv4AddrGet mask", 0);
  give("NetworkPortGatewayIPv4AddrGet", 0);
  const char *const words[] = {"Invalid", "None", "BOOTP", "DHCP"};
  for (uint32_t mode = 0; mode <= 3; mode++) {
    give("NetworkPortIPv4ProtocolModeGet", mode);
    EXPECT_EQ(serve(reading()), expected_port("0.0.0.0", "0.0.0.0", "0.0.0.0", words[mode]));
  }
}

TEST_F(NetworkPortTest, ModeWithoutANameOrAddressWithoutAFamilyAnswers97) {
  for (uint32_t mode : {4u, UINT32_MAX}) {
    give("NetworkPortIPv4ProtocolModeGet", mode);
    EXPECT_EQ(serve(reading()), expected_platform_error(OPEN_E_INTERNAL)) << mode;
  }
  give("NetworkPortIPv4ProtocolModeGet", 1);
  for (const char *family : {"NetworkPortIPv4AddrGet address family", "NetworkPortIPv4AddrGet mask family",
                             "NetworkPortGatewayIPv4AddrGet family"}) {
    give(family, OPEN_AF_NONE);
    EXPECT_EQ(serve(reading()), expected_platform_error(OPEN_E_INTERNAL)) << family;
    give(family, OPEN_AF_INET);
  }
}

TEST_F(NetworkPortTest, ParametersAreDeleted) {
  expect_served({"DELETE", "/system/networkport/ipv4", "", api_system_delete_networkport_ipv4_parameters},
                expected_answers(0, "Delete network port IPv4 parameters successfully."),
                {"NetworkPortIPv4ParametersDelete"});
}

TEST_F(NetworkPortTest, ParametersAreSet) {
  expect_served(setting("ip=10.0.0.2&mask=255.0.0.0&gateway=10.0.0.3"),
                expected_answers(0, "Update network port IPv4 parameters successfully."),
                {"NetworkPortIPv4ParametersSet 1:10.0.0.2 1:255.0.0.0 1:10.0.0.3"});
  expect_served(setting("gateway=0.0.0.0&mask=255.255.255.255&ip=0.0.0.0"),
                expected_answers(0, "Update network port IPv4 parameters successfully."),
                {"NetworkPortIPv4ParametersSet 1:0.0.0.0 1:255.255.255.255 1:0.0.0.0"});
}

TEST_F(NetworkPortTest, ParameterThatIsMissingOrNoAddressAnswers99) {
  const std::string good[] = {"ip=10.0.0.2", "mask=255.0.0.0", "gateway=10.0.0.3"};
  const std::string names[] = {"ip=", "mask=", "gateway="};
  for (size_t bad = 0; bad < 3; bad++) {
    for (const std::string &replaced :
         {std::string("other=1"), names[bad], names[bad] + "x", names[bad] + "10.0.0.256",
          names[bad] + std::string(47, '1'), names[bad] + std::string(48, '1'),
          names[bad] + std::string(300, '1'), names[bad] + "10.0.0.1" + std::string(48, '%') + "20"}) {
      std::string query;
      for (size_t i = 0; i < 3; i++) query += (i == bad ? replaced : good[i]) + "&";
      expect_refused(setting(query), expected_parameter_error());
    }
  }
}

/* As with every variable that does not fit its buffer. */
TEST_F(NetworkPortTest, ParameterTooLongInTheQueryIsTakenFromTheBody) {
  const std::string good[] = {"ip=10.0.0.2", "mask=255.0.0.0", "gateway=10.0.0.3"};
  const std::string names[] = {"ip=", "mask=", "gateway="};
  for (size_t bad = 0; bad < 3; bad++) {
    for (size_t length : {48u, 255u, 256u}) {
      management_request request = setting("");
      request.body = good[bad];
      for (size_t i = 0; i < 3; i++)
        request.query += (i == bad ? names[i] + std::string(length, '1') : good[i]) + "&";
      EXPECT_EQ(serve(request), expected_answers(0, "Update network port IPv4 parameters successfully."));
      EXPECT_EQ(calls_made(), call_list{"NetworkPortIPv4ParametersSet 1:10.0.0.2 1:255.0.0.0 1:10.0.0.3"});
    }
    management_request request = setting("");
    request.body = good[bad];
    for (size_t i = 0; i < 3; i++)
      request.query += (i == bad ? names[i] + std::string(47, '1') : good[i]) + "&";
    expect_refused(request, expected_parameter_error());
  }
}

TEST_F(NetworkPortTest, ProtocolModeIsSet) {
  const Answers done = expected_answers(0, "Update network port IPv4 protocol mode successfully.");
  for (const char *value : {"0", "1", "2", "3", "4"}) {
    expect_served({"PUT", "/system/networkport/ipv4/protocolMode", std::string("value=") + value,
                   api_system_update_networkport_ipv4_protocol_mode},
                  done, {std::string("NetworkPortIPv4ProtocolModeSet ") + value});
  }
  for (const std::string &query : {std::string(), std::string("value="), "value=" + too_long_value()}) {
    expect_refused({"PUT", "/system/networkport/ipv4/protocolMode", query,
                    api_system_update_networkport_ipv4_protocol_mode},
                   expected_parameter_error());
  }
}

TEST_F(NetworkPortTest, ProtocolModesHaveNames) {
  const char *const words[] = {"Invalid", "None", "BOOTP", "DHCP"};
  for (uint32_t mode = 0; mode <= 3; mode++) {
    char name[8] = "#######";
    EXPECT_EQ(get_protocol_mode_string_by_eum(mode, name), RC_TRUE);
    EXPECT_STREQ(name, words[mode]);
  }
  for (uint32_t mode : {4u, 256u, uint32_t{INT32_MAX}, UINT32_MAX}) {
    char name[8] = "#######";
    EXPECT_EQ(get_protocol_mode_string_by_eum(mode, name), RC_FALSE) << mode;
    EXPECT_STREQ(name, "");
  }
  EXPECT_EQ(get_protocol_mode_string_by_eum(1, nullptr), RC_FALSE);
  EXPECT_EQ(get_protocol_mode_string_by_eum(4, nullptr), RC_FALSE);
}
