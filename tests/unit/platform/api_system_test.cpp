/* Tests of the functions of the C interface for the settings of the switch as a whole and its SSH server:
 * every range and result code, and that they last. Reloading is reload_test.cpp. */
#include "platform/api/openapi_ssh.h"
#include "platform/api/openapi_system.h"
#include "platform/softswitch/api/call.h"
#include "tests/unit/platform/softswitch_test_support.h"

namespace {

using getter = open_error_t (*)(openapiClientHandle_t *, uint32_t *);
using setter = open_error_t (*)(openapiClientHandle_t *, uint32_t);

open_inet_addr_t ipv4(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
  open_inet_addr_t address = {};
  address.family = OPEN_AF_INET;
  address.addr.ipv4 = a << 24 | b << 16 | c << 8 | d;
  return address;
}

open_inet_addr_t ipv6() {
  open_inet_addr_t address = {};
  address.family = OPEN_AF_INET6;
  address.addr.ipv6.addr8[0] = 0x20;
  return address;
}

class SystemSettings : public SoftSwitch {
protected:
  uint32_t number(getter get) {
    uint32_t value = 999;
    EXPECT_EQ(get(&handle, &value), OPEN_E_NONE);
    return value;
  }

  std::string hostname() {
    char buffer[65];
    open_buffdesc name = {sizeof buffer, buffer};
    EXPECT_EQ(rpcclt_openapiSystemHostnameGet(&handle, &name), OPEN_E_NONE);
    EXPECT_EQ(name.size, strlen(buffer));
    return buffer;
  }

  open_error_t set_hostname(std::string text, uint32_t terminator = 0) {
    open_buffdesc name = {static_cast<uint32_t>(text.size()) + terminator, text.data()};
    return rpcclt_openapiSystemHostnameSet(&handle, &name);
  }

  open_error_t set_prompt(std::string text) {
    open_buffdesc prompt = {static_cast<uint32_t>(text.size()), text.data()};
    return rpcclt_openapiSystemPromptSet(&handle, &prompt);
  }

  open_error_t set_port(const open_inet_addr_t &address, const open_inet_addr_t &mask,
                        const open_inet_addr_t &gateway) {
    return rpcclt_openapiNetworkPortIPv4ParametersSet(&handle, &address, &mask, &gateway);
  }

  open_error_t set_protocol(uint32_t protocol) {
    return rpcclt_openapiNetworkPortIPv4ProtocolModeSet(&handle, protocol);
  }

  /* Address, mask, gateway, protocol. */
  std::string port() {
    open_inet_addr_t address = ipv6(), mask = ipv6(), gateway = ipv6();
    EXPECT_EQ(rpcclt_openapiNetworkPortIPv4AddrGet(&handle, &address, &mask), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiNetworkPortGatewayIPv4AddrGet(&handle, &gateway), OPEN_E_NONE);
    for (const open_inet_addr_t &one : {address, mask, gateway}) EXPECT_EQ(one.family, OPEN_AF_INET);
    return softswitch::inet_address_text(address) + " " + softswitch::inet_address_text(mask) + " " +
           softswitch::inet_address_text(gateway) + " " +
           std::to_string(number(rpcclt_openapiNetworkPortIPv4ProtocolModeGet));
  }

  std::string journal() { return file_content(dir.path + "/journal-1"); }
};

TEST_F(SystemSettings, FactoryStateIsTheDocumentedOne) {
  EXPECT_EQ(hostname(), "kestrel");
  EXPECT_EQ(number(rpcclt_openapiSystemHostnameSizeGet), 65u);
  EXPECT_EQ(number(rpcclt_openapiSerialTimeoutGet), 5u);
  EXPECT_EQ(number(rpcclt_openapiTelnetServerAdminModeGet), 0u);
  EXPECT_EQ(port(), "0.0.0.0 0.0.0.0 0.0.0.0 1");
  EXPECT_EQ(number(rpcclt_openapiSSHAdminModeGet), 0u);
  EXPECT_EQ(number(rpcclt_openapiSSHProtocolVersionGet), 1u);
  EXPECT_EQ(number(rpcclt_openapiSSHActiveSessionsGet), 0u);
  EXPECT_EQ(number(rpcclt_openapiSSHMaxSessionsGet), 5u);
  EXPECT_EQ(number(rpcclt_openapiSSHSessionTimeoutGet), 5u);
}

/* --- Numbers -------------------------------------------------------------------------------------------- */

TEST_F(SystemSettings, NumbersAreTakenInTheirRangesAndLast) {
  const struct {
    setter set;
    getter get;
    std::vector<uint32_t> good, bad; /* the last good one is not that of factory state */
  } rows[] = {
      {rpcclt_openapiSerialTimeoutSet, rpcclt_openapiSerialTimeoutGet, {0, 160, 5, 1}, {161, UINT32_MAX}},
      {rpcclt_openapiTelnetServerAdminModeSet,
       rpcclt_openapiTelnetServerAdminModeGet,
       {1, 0, 1},
       {2, UINT32_MAX}},
      {rpcclt_openapiSSHAdminModeSet, rpcclt_openapiSSHAdminModeGet, {1, 0, 1}, {2, UINT32_MAX}},
      {rpcclt_openapiSSHProtocolVersionSet, rpcclt_openapiSSHProtocolVersionGet, {0, 1, 2}, {3, UINT32_MAX}},
      {rpcclt_openapiSSHMaxSessionsSet, rpcclt_openapiSSHMaxSessionsGet, {0, 5, 3}, {6, UINT32_MAX}},
      {rpcclt_openapiSSHSessionTimeoutSet,
       rpcclt_openapiSSHSessionTimeoutGet,
       {1, 5, 160},
       {0, 161, UINT32_MAX}},
      {rpcclt_openapiNetworkPortIPv4ProtocolModeSet,
       rpcclt_openapiNetworkPortIPv4ProtocolModeGet,
       {1, 2, 3},
       {0, 4, UINT32_MAX}},
  };
  for (const auto &row : rows) {
    for (uint32_t value : row.good) {
      EXPECT_EQ(row.set(&handle, value), OPEN_E_NONE) << value;
      EXPECT_EQ(number(row.get), value);
      std::string before = journal();
      EXPECT_EQ(row.set(&handle, value), OPEN_E_NONE) << value;
      EXPECT_EQ(journal(), before) << "what is set already is no change";
    }
    for (uint32_t value : row.bad) EXPECT_EQ(row.set(&handle, value), OPEN_E_PARAM) << value;
    EXPECT_EQ(number(row.get), row.good.back());
  }
  restart();
  for (const auto &row : rows) EXPECT_EQ(number(row.get), row.good.back());
}

TEST_F(SystemSettings, DefaultsAreSetByTheirOwnFunctions) {
  ASSERT_EQ(rpcclt_openapiSerialTimeoutSet(&handle, 30), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiSSHMaxSessionsSet(&handle, 1), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiSerialTimeoutDefaultSet(&handle), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiSSHMaxSessionsDefaultSet(&handle), OPEN_E_NONE);
  EXPECT_EQ(number(rpcclt_openapiSerialTimeoutGet), 5u);
  EXPECT_EQ(number(rpcclt_openapiSSHMaxSessionsGet), 5u);
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(SystemSettings, OpenSessionsStayWhenFewerAreAllowed) {
  ASSERT_TRUE(softswitch::set_ssh_sessions(4));
  ASSERT_EQ(rpcclt_openapiSSHMaxSessionsSet(&handle, 2), OPEN_E_NONE);
  EXPECT_EQ(number(rpcclt_openapiSSHActiveSessionsGet), 4u);
  EXPECT_FALSE(softswitch::set_ssh_sessions(6));
  EXPECT_EQ(number(rpcclt_openapiSSHActiveSessionsGet), 4u);
  restart();
  EXPECT_EQ(number(rpcclt_openapiSSHActiveSessionsGet), 0u) << "sessions are no configuration";
  EXPECT_EQ(number(rpcclt_openapiSSHMaxSessionsGet), 2u);
}

/* --- Texts ---------------------------------------------------------------------------------------------- */

TEST_F(SystemSettings, GoodHostNamesAreTaken) {
  for (const std::string &name : {std::string("a"), std::string("0"), std::string("Leaf-1_a.example"),
                                  std::string(64, 'z'), std::string("no"), std::string("hostname")}) {
    EXPECT_EQ(set_hostname(name), OPEN_E_NONE) << name;
    EXPECT_EQ(hostname(), name);
    restart();
    EXPECT_EQ(hostname(), name);
  }
  EXPECT_EQ(set_hostname("leaf", 1), OPEN_E_NONE) << "the terminator may be counted";
  EXPECT_EQ(hostname(), "leaf");
}

TEST_F(SystemSettings, OtherHostNamesAreRefused) {
  for (const std::string &name :
       {std::string(""), std::string("-a"), std::string("_a"), std::string(".a"), std::string("a b"),
        std::string("a\n"), std::string("a\nvlan 10"), std::string("a\t"), std::string("\"a\""),
        std::string("\xc3\xa4"), std::string("a/b"), std::string(65, 'z'), std::string(20000, 'z')})
    EXPECT_EQ(set_hostname(name), OPEN_E_PARAM) << name;
  EXPECT_EQ(hostname(), "kestrel");
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(SystemSettings, HostNameThatDoesNotFitIsRefused) {
  char buffer[8];
  open_buffdesc name = {7, buffer};
  EXPECT_EQ(rpcclt_openapiSystemHostnameGet(&handle, &name), OPEN_E_PARAM);
  name.size = 8;
  EXPECT_EQ(rpcclt_openapiSystemHostnameGet(&handle, &name), OPEN_E_NONE);
  EXPECT_STREQ(buffer, "kestrel");
}

TEST_F(SystemSettings, PromptIsPrintableAsciiOf64CharactersAtMost) {
  for (const std::string &prompt : {std::string("(leaf) > "), std::string(" "), std::string("\"\\!"),
                                    std::string("~"), std::string(64, '#')})
    EXPECT_EQ(set_prompt(prompt), OPEN_E_NONE) << prompt;
  EXPECT_EQ(softswitch::running_config(), "prompt \"" + std::string(64, '#') + "\"\n");
  for (const std::string &prompt : {std::string(""), std::string("a\n"), std::string("\x7f"),
                                    std::string("\xc3\xa4"), std::string(65, '#')})
    EXPECT_EQ(set_prompt(prompt), OPEN_E_PARAM) << prompt;
  EXPECT_EQ(softswitch::running_config(), "prompt \"" + std::string(64, '#') + "\"\n");
}

/* --- The network port ----------------------------------------------------------------------------------- */

TEST_F(SystemSettings, NetworkPortHasWhatItWasGiven) {
  ASSERT_EQ(set_port(ipv4(10, 0, 0, 1), ipv4(255, 255, 255, 0), ipv4(10, 0, 0, 254)), OPEN_E_NONE);
  EXPECT_EQ(port(), "10.0.0.1 255.255.255.0 10.0.0.254 1");
  restart();
  EXPECT_EQ(port(), "10.0.0.1 255.255.255.0 10.0.0.254 1");
  ASSERT_EQ(set_port(ipv4(10, 0, 0, 1), ipv4(128, 0, 0, 0), ipv4(0, 0, 0, 0)), OPEN_E_NONE);
  EXPECT_EQ(port(), "10.0.0.1 128.0.0.0 0.0.0.0 1");
  ASSERT_EQ(set_port(ipv4(10, 0, 0, 0), ipv4(255, 255, 255, 254), ipv4(10, 0, 0, 1)), OPEN_E_NONE);
  EXPECT_EQ(port(), "10.0.0.0 255.255.255.254 10.0.0.1 1");
  ASSERT_EQ(rpcclt_openapiNetworkPortIPv4ParametersDelete(&handle), OPEN_E_NONE);
  EXPECT_EQ(port(), "0.0.0.0 0.0.0.0 0.0.0.0 1");
  EXPECT_EQ(rpcclt_openapiNetworkPortIPv4ParametersDelete(&handle), OPEN_E_NONE) << "there is none already";
}

TEST_F(SystemSettings, OtherParametersAreRefused) {
  const open_inet_addr_t host = ipv4(10, 0, 0, 1), mask = ipv4(255, 255, 255, 0), none = ipv4(0, 0, 0, 0);
  const struct {
    open_inet_addr_t address, mask, gateway;
  } rows[] = {
      {none, mask, none},
      {ipv4(10, 0, 0, 0), mask, none},
      {ipv4(10, 0, 0, 255), mask, none},
      {ipv4(127, 0, 0, 1), mask, none},
      {ipv4(224, 0, 0, 1), mask, none},
      {host, none, none},
      {host, ipv4(255, 255, 255, 255), none},
      {host, ipv4(255, 0, 255, 0), none},
      {host, ipv4(0, 0, 0, 255), none},
      {host, mask, ipv4(10, 0, 1, 1)},
      {host, mask, ipv4(10, 0, 0, 0)},
      {host, mask, ipv4(10, 0, 0, 255)},
      {host, mask, ipv4(0, 0, 0, 1)},
      {ipv6(), mask, none},
      {host, ipv6(), none},
      {host, mask, ipv6()},
      {host, mask, open_inet_addr_t()},
  };
  for (size_t row = 0; row < std::size(rows); row++)
    EXPECT_EQ(set_port(rows[row].address, rows[row].mask, rows[row].gateway), OPEN_E_PARAM) << "row " << row;
  EXPECT_EQ(port(), "0.0.0.0 0.0.0.0 0.0.0.0 1");
}

TEST_F(SystemSettings, ProtocolTakesThePlaceOfTheAddress) {
  const open_inet_addr_t host = ipv4(10, 0, 0, 1), mask = ipv4(255, 255, 255, 0), none = ipv4(0, 0, 0, 0);
  ASSERT_EQ(set_port(host, mask, ipv4(10, 0, 0, 254)), OPEN_E_NONE);
  ASSERT_EQ(set_protocol(OPEN_NETWORK_PROTOCOL_NONE), OPEN_E_NONE);
  EXPECT_EQ(port(), "10.0.0.1 255.255.255.0 10.0.0.254 1");
  ASSERT_EQ(set_protocol(OPEN_NETWORK_PROTOCOL_DHCP), OPEN_E_NONE);
  EXPECT_EQ(port(), "0.0.0.0 0.0.0.0 0.0.0.0 3");
  EXPECT_EQ(set_port(host, mask, none), OPEN_E_FAIL);
  EXPECT_EQ(set_port(host, none, none), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiNetworkPortIPv4ParametersDelete(&handle), OPEN_E_NONE);
  ASSERT_EQ(set_protocol(OPEN_NETWORK_PROTOCOL_NONE), OPEN_E_NONE);
  EXPECT_EQ(port(), "0.0.0.0 0.0.0.0 0.0.0.0 1") << "the address does not come back";
  EXPECT_EQ(set_port(host, mask, none), OPEN_E_NONE);
}

TEST_F(SystemSettings, MaskOfTheServicePortIsThatOfTheProfile) {
  open_inet_addr_t mask = ipv6();
  ASSERT_EQ(rpcclt_openapiServicePortMaskGet(&handle, &mask), OPEN_E_NONE);
  EXPECT_EQ(mask.family, OPEN_AF_INET);
  EXPECT_EQ(softswitch::inet_address_text(mask), "255.255.255.0");
  write_file(dir.path + "/profile.json", "{\"service_port_mask\": \"255.255.252.0\"}");
  setenv("KESTREL_PROFILE", (dir.path + "/profile.json").c_str(), 1);
  restart();
  ASSERT_EQ(rpcclt_openapiServicePortMaskGet(&handle, &mask), OPEN_E_NONE);
  EXPECT_EQ(softswitch::inet_address_text(mask), "255.255.252.0");
}

/* --- What holds for all of them ------------------------------------------------------------------------- */

/* Every function with good arguments; what it writes goes nowhere. */
struct any_call {
  const char *name;
  std::function<open_error_t(openapiClientHandle_t *)> call;
};

std::vector<any_call> all_calls() {
  static char content[256];
  static open_buffdesc text;
  static uint32_t number;
  static open_inet_addr_t address, mask, gateway;
  strcpy(content, "leaf");
  text = {sizeof content, content};
  address = ipv4(10, 0, 0, 1);
  mask = ipv4(255, 255, 255, 0);
  gateway = ipv4(10, 0, 0, 2);
  using h = openapiClientHandle_t *;
  return {
      {"rpcclt_openapiSystemHostnameSizeGet",
       [](h c) { return rpcclt_openapiSystemHostnameSizeGet(c, &number); }},
      {"rpcclt_openapiSystemHostnameSet", [](h c) { return rpcclt_openapiSystemHostnameSet(c, &text); }},
      {"rpcclt_openapiSystemPromptSet", [](h c) { return rpcclt_openapiSystemPromptSet(c, &text); }},
      {"rpcclt_openapiSystemHostnameGet", [](h c) { return rpcclt_openapiSystemHostnameGet(c, &text); }},
      {"rpcclt_openapiSerialTimeoutGet", [](h c) { return rpcclt_openapiSerialTimeoutGet(c, &number); }},
      {"rpcclt_openapiSerialTimeoutSet", [](h c) { return rpcclt_openapiSerialTimeoutSet(c, 7); }},
      {"rpcclt_openapiSerialTimeoutDefaultSet", rpcclt_openapiSerialTimeoutDefaultSet},
      {"rpcclt_openapiTelnetServerAdminModeGet",
       [](h c) { return rpcclt_openapiTelnetServerAdminModeGet(c, &number); }},
      {"rpcclt_openapiTelnetServerAdminModeSet",
       [](h c) { return rpcclt_openapiTelnetServerAdminModeSet(c, 1); }},
      {"rpcclt_openapiServicePortMaskGet", [](h c) { return rpcclt_openapiServicePortMaskGet(c, &mask); }},
      {"rpcclt_openapiNetworkPortIPv4ParametersSet",
       [](h c) { return rpcclt_openapiNetworkPortIPv4ParametersSet(c, &address, &mask, &gateway); }},
      {"rpcclt_openapiNetworkPortIPv4AddrGet",
       [](h c) { return rpcclt_openapiNetworkPortIPv4AddrGet(c, &address, &mask); }},
      {"rpcclt_openapiNetworkPortGatewayIPv4AddrGet",
       [](h c) { return rpcclt_openapiNetworkPortGatewayIPv4AddrGet(c, &gateway); }},
      {"rpcclt_openapiNetworkPortIPv4ParametersDelete", rpcclt_openapiNetworkPortIPv4ParametersDelete},
      {"rpcclt_openapiNetworkPortIPv4ProtocolModeGet",
       [](h c) { return rpcclt_openapiNetworkPortIPv4ProtocolModeGet(c, &number); }},
      {"rpcclt_openapiNetworkPortIPv4ProtocolModeSet",
       [](h c) { return rpcclt_openapiNetworkPortIPv4ProtocolModeSet(c, 2); }},
      {"rpcclt_openapiSystemUnsavedConfigStatusGet",
       [](h c) { return rpcclt_openapiSystemUnsavedConfigStatusGet(c, &number); }},
      {"rpcclt_openapiSystemReloadSet", [](h c) { return rpcclt_openapiSystemReloadSet(c, 2); }},
      {"rpcclt_openapiSSHAdminModeGet", [](h c) { return rpcclt_openapiSSHAdminModeGet(c, &number); }},
      {"rpcclt_openapiSSHAdminModeSet", [](h c) { return rpcclt_openapiSSHAdminModeSet(c, 1); }},
      {"rpcclt_openapiSSHProtocolVersionGet",
       [](h c) { return rpcclt_openapiSSHProtocolVersionGet(c, &number); }},
      {"rpcclt_openapiSSHProtocolVersionSet", [](h c) { return rpcclt_openapiSSHProtocolVersionSet(c, 2); }},
      {"rpcclt_openapiSSHActiveSessionsGet",
       [](h c) { return rpcclt_openapiSSHActiveSessionsGet(c, &number); }},
      {"rpcclt_openapiSSHMaxSessionsGet", [](h c) { return rpcclt_openapiSSHMaxSessionsGet(c, &number); }},
      {"rpcclt_openapiSSHMaxSessionsSet", [](h c) { return rpcclt_openapiSSHMaxSessionsSet(c, 1); }},
      {"rpcclt_openapiSSHMaxSessionsDefaultSet", rpcclt_openapiSSHMaxSessionsDefaultSet},
      {"rpcclt_openapiSSHSessionTimeoutGet",
       [](h c) { return rpcclt_openapiSSHSessionTimeoutGet(c, &number); }},
      {"rpcclt_openapiSSHSessionTimeoutSet", [](h c) { return rpcclt_openapiSSHSessionTimeoutSet(c, 9); }},
  };
}

TEST_F(SystemSettings, EveryFunctionChecksItsHandleAndAnswersFaultsOnOrder) {
  openapiClientHandle_t stranger = {};
  std::string before = softswitch::running_config();
  for (const any_call &row : all_calls()) {
    EXPECT_EQ(row.call(nullptr), OPEN_E_PARAM) << row.name;
    EXPECT_EQ(row.call(&stranger), OPEN_E_RPC) << row.name;
    ASSERT_TRUE(softswitch::fault_order(row.name, OPEN_E_TIMEOUT, 1, 0)) << row.name;
    EXPECT_EQ(row.call(&handle), OPEN_E_TIMEOUT) << row.name;
  }
  EXPECT_EQ(softswitch::running_config(), before);
  for (const any_call &row : all_calls()) EXPECT_EQ(row.call(&handle), OPEN_E_NONE) << row.name;
}

TEST_F(SystemSettings, NullPointersAreRefused) {
  const open_inet_addr_t some = ipv4(10, 0, 0, 1);
  open_inet_addr_t out;
  const open_error_t answers[] = {
      rpcclt_openapiSystemHostnameSizeGet(&handle, nullptr),
      rpcclt_openapiSystemHostnameGet(&handle, nullptr),
      rpcclt_openapiSystemHostnameSet(&handle, nullptr),
      rpcclt_openapiSystemPromptSet(&handle, nullptr),
      rpcclt_openapiSerialTimeoutGet(&handle, nullptr),
      rpcclt_openapiTelnetServerAdminModeGet(&handle, nullptr),
      rpcclt_openapiServicePortMaskGet(&handle, nullptr),
      rpcclt_openapiNetworkPortIPv4AddrGet(&handle, nullptr, &out),
      rpcclt_openapiNetworkPortIPv4AddrGet(&handle, &out, nullptr),
      rpcclt_openapiNetworkPortGatewayIPv4AddrGet(&handle, nullptr),
      rpcclt_openapiNetworkPortIPv4ParametersSet(&handle, nullptr, &some, &some),
      rpcclt_openapiNetworkPortIPv4ParametersSet(&handle, &some, nullptr, &some),
      rpcclt_openapiNetworkPortIPv4ParametersSet(&handle, &some, &some, nullptr),
      rpcclt_openapiNetworkPortIPv4ProtocolModeGet(&handle, nullptr),
      rpcclt_openapiSystemUnsavedConfigStatusGet(&handle, nullptr),
      rpcclt_openapiSSHAdminModeGet(&handle, nullptr),
      rpcclt_openapiSSHProtocolVersionGet(&handle, nullptr),
      rpcclt_openapiSSHActiveSessionsGet(&handle, nullptr),
      rpcclt_openapiSSHMaxSessionsGet(&handle, nullptr),
      rpcclt_openapiSSHSessionTimeoutGet(&handle, nullptr),
  };
  for (size_t row = 0; row < std::size(answers); row++)
    EXPECT_EQ(answers[row], OPEN_E_PARAM) << "row " << row;
}

TEST_F(SystemSettings, FullDiskRefusesChanges) {
  ASSERT_TRUE(softswitch::wait_applied(patience_ms));
  full_disk full(0);
  EXPECT_EQ(set_hostname("leaf"), OPEN_E_FAIL);
  EXPECT_EQ(set_prompt("leaf"), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiSerialTimeoutSet(&handle, 9), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiTelnetServerAdminModeSet(&handle, 1), OPEN_E_FAIL);
  EXPECT_EQ(set_port(ipv4(10, 0, 0, 1), ipv4(255, 0, 0, 0), ipv4(0, 0, 0, 0)), OPEN_E_FAIL);
  EXPECT_EQ(set_protocol(3), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiSSHAdminModeSet(&handle, 1), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiSSHProtocolVersionSet(&handle, 0), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiSSHMaxSessionsSet(&handle, 0), OPEN_E_FAIL);
  EXPECT_EQ(rpcclt_openapiSSHSessionTimeoutSet(&handle, 9), OPEN_E_FAIL);
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(SystemSettings, ChangesAreListedNowhereAsPending) {
  take_and_hold();
  ASSERT_EQ(set_hostname("leaf"), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiSSHAdminModeSet(&handle, 1), OPEN_E_NONE);
  EXPECT_FALSE(softswitch::wait_applied(0));
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
  EXPECT_EQ(pending_vlans(), std::vector<int>());
}

TEST_F(SystemSettings, TraceShowsTextsAndAddresses) {
  const open_inet_addr_t host = ipv4(10, 0, 0, 1), mask = ipv4(255, 0, 0, 0), none = ipv4(0, 0, 0, 0);
  softswitch::trace_calls(true);
  testing::internal::CaptureStderr();
  set_hostname("leaf");
  set_port(host, mask, none);
  port();
  rpcclt_openapiSSHMaxSessionsSet(&handle, 6);
  std::string trace = testing::internal::GetCapturedStderr();
  softswitch::trace_calls(false);
  EXPECT_EQ(trace, "platform: rpcclt_openapiSystemHostnameSet(\"leaf\") = 0\n"
                   "platform: rpcclt_openapiNetworkPortIPv4ParametersSet(10.0.0.1, 255.0.0.0, 0.0.0.0) = 0\n"
                   "platform: rpcclt_openapiNetworkPortIPv4AddrGet() = 0 -> 10.0.0.1, 255.0.0.0\n"
                   "platform: rpcclt_openapiNetworkPortGatewayIPv4AddrGet() = 0 -> 0.0.0.0\n"
                   "platform: rpcclt_openapiNetworkPortIPv4ProtocolModeGet() = 0 -> 1\n"
                   "platform: rpcclt_openapiSSHMaxSessionsSet(6) = -22\n");
}

} // namespace
