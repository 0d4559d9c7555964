/* The interface module, reading: details, the list, pending changes. Counters: test_interface_counters.cpp;
 * membership: test_interface_vlans.cpp. */
#include "tests/unit/modules/interface_fixture.h"

#include "platform/api/openapi_lag.h"

/* --- Details of each type --------------------------------------------------------------------------------
 */

TEST_F(InterfaceTest, PortIsDescribed) {
  Answers answers = get("/if/3");
  EXPECT_EQ(answers.xml,
            "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data><interface>"
            "<ifNum>3</ifNum><interfaceName>0/3</interfaceName><description>-</description>"
            "<adminState>enable</adminState><linkState>up</linkState><speed>full 10gsx</speed><pvid>1</pvid>"
            "<acceptFrameType>all</acceptFrameType><autoNegMode>disable</autoNegMode>"
            "<duplexMode>full</duplexMode><MAC_address>02:00:5E:00:00:45</MAC_address>"
            "<MTU_size>1518</MTU_size></interface></rlt_data></result>\n");
  EXPECT_EQ(answers.json,
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
            "\"interface\": { \"ifNum\": 3, \"interfaceName\": \"0\\/3\", \"description\": \"-\", "
            "\"adminState\": \"enable\", \"linkState\": \"up\", \"speed\": \"full 10gsx\", \"pvid\": 1, "
            "\"acceptFrameType\": \"all\", \"autoNegMode\": \"disable\", \"duplexMode\": \"full\", "
            "\"MAC_address\": \"02:00:5E:00:00:45\", \"MTU_size\": 1518 } } } }\n");
  EXPECT_EQ(answers, expected_details(port_details(3)));
}

TEST_F(InterfaceTest, PortsOfEverySpeedAndConnectorAreDescribed) {
  for (unsigned port : {1u, 46u, 47u, 48u, 49u, 54u}) {
    EXPECT_EQ(get("/if/" + std::to_string(port)), expected_details(port_details(port)));
  }
}

TEST_F(InterfaceTest, OtherTypesOfInterfacesAreDescribed) {
  interface_details cpu = {55, "cpu", TEST_MAC};
  cpu.speed = cpu.auto_neg = cpu.duplex = "unknown";
  cpu.pvid = 0;
  EXPECT_EQ(get("/if/55"), expected_details(cpu));

  interface_details lag = {56, "3/1", "02:00:5E:00:00:7A"};
  lag.speed = "LAG";
  lag.auto_neg = "unknown";
  lag.link = "down";
  EXPECT_EQ(get("/if/56"), expected_details(lag));
  lag.ifNum = 119;
  lag.name = "3/64";
  lag.mac = "02:00:5E:00:00:B9";
  EXPECT_EQ(get("/if/119"), expected_details(lag));

  interface_details loopback = cpu;
  loopback.ifNum = 120;
  loopback.name = "loopback0";
  EXPECT_EQ(get("/if/120"), expected_details(loopback));
  loopback.ifNum = 127;
  loopback.name = "loopback7";
  EXPECT_EQ(get("/if/127"), expected_details(loopback));
}

TEST_F(InterfaceTest, LagWithALinkIsUp) {
  ASSERT_EQ(rpcclt_openapiLagPortAdd(handle, 56, 3), OPEN_E_NONE);
  wait_applied();
  interface_details lag = {56, "3/1", "02:00:5E:00:00:7A"};
  lag.speed = "LAG";
  lag.auto_neg = "unknown";
  EXPECT_EQ(get("/if/56"), expected_details(lag));
  pull_cable("0/3");
  lag.link = "down";
  EXPECT_EQ(get("/if/56"), expected_details(lag));
}

TEST_F(InterfaceTest, InterfacesThatDoNotExistAnswer99) {
  for (const char *ifNum : {"0", "000", "128", "225", "226", "353", "354", "2147483647", "2147483648",
                            "4294967299", "99999999999999999999"}) {
    EXPECT_EQ(get(std::string("/if/") + ifNum), expected_platform_error(OPEN_E_NOT_FOUND)) << ifNum;
  }
}

TEST_F(InterfaceTest, LeadingZerosAndBlanksBehindTheNumberDoNotMatter) {
  EXPECT_EQ(get("/if/0003"), expected_details(port_details(3)));
  EXPECT_EQ(get("/if/3 \n"), expected_details(port_details(3)));
  EXPECT_EQ(get("/if/" + std::string(250, '0') + "3"), expected_details(port_details(3)));
  EXPECT_EQ(get("/if/" + std::string(251, '0') + "3"), expected_bad_request());
}

/* --- What the details show -------------------------------------------------------------------------------
 */

TEST_F(InterfaceTest, PortWithoutACableHasNoLink) {
  pull_cable("0/3");
  interface_details details = port_details(3);
  details.link = "down";
  EXPECT_EQ(get("/if/3"), expected_details(details));
  pull_cable("0/48");
  details = port_details(48);
  details.link = "down";
  details.duplex = "unknown"; /* nothing is negotiated */
  EXPECT_EQ(get("/if/48"), expected_details(details));
}

TEST_F(InterfaceTest, EverySettingShows) {
  create_vlans({10});
  put("/if/3/description", "value=up+to+%3Croof%3E+%26+%22sky%22");
  put("/if/3/adminState", "value=0");
  put("/if/3/speed", "value=7");
  put("/if/3/pvid", "value=10");
  put("/if/3/acceptFrameType", "value=2");
  put("/if/3/mtuSize", "value=9216");
  wait_applied();
  interface_details details = port_details(3);
  details.description = "up to <roof> & \"sky\"";
  details.admin = "disable";
  details.link = "down";
  details.speed = "full 1000sx";
  details.pvid = 10;
  details.accept_frames = "tagged";
  details.mtu = 9216;
  EXPECT_EQ(get("/if/3"), expected_details(details));
  EXPECT_EQ(get("/if/4"), expected_details(port_details(4)));
}

TEST_F(InterfaceTest, PortWhoseFarEndIsDownHasNoLink) {
  interface_details details = port_details(3);
  lab("link down 0/3");
  details.link = "down";
  EXPECT_EQ(get("/if/3"), expected_details(details));
  lab("link up 0/3");
  EXPECT_EQ(get("/if/3"), expected_details(port_details(3)));
}

struct word_row {
  uint32_t value;
  const char *word;
};

TEST_F(InterfaceTest, ValuesHaveWordsAndUnknownOnesNone) {
  struct {
    const char *function;
    std::string interface_details::*member;
    std::vector<word_row> rows;
  } tables[] = {
      {"openapiIfAdminStateGet", &interface_details::admin, {{0, "disable"}, {1, "enable"}, {2, ""}}},
      {"openapiIfAutoNegGet",
       &interface_details::auto_neg,
       {{0, "enable"}, {1, "disable"}, {65535, "unknown"}, {2, ""}, {65534, ""}}},
      {"openapiIfDuplexModeGet",
       &interface_details::duplex,
       {{0, "half"}, {1, "full"}, {65535, "unknown"}, {2, ""}}},
      {"openapiIfLinkStateGet", &interface_details::link, {{0, "up"}, {1, "down"}, {2, ""}}},
      {"rpcclt_openapiVlanIfAcceptFrameTypeGet",
       &interface_details::accept_frames,
       {{1, "all"}, {2, "tagged"}, {3, "untagged"}, {0, ""}, {4, ""}, {4294967295u, ""}}},
  };
  for (const auto &table : tables) {
    for (const word_row &row : table.rows) {
      bent_output bent(table.function, row.value);
      interface_details details = port_details(3);
      details.*table.member = row.word;
      EXPECT_EQ(get("/if/3"), expected_details(details)) << table.function << row.value;
    }
  }
}

static const word_row SPEEDS[] = {
    {1, "auto neg"},    {2, "half 100tx"},   {3, "full 100tx"}, {4, "half 10t"},   {5, "full 10t"},
    {6, "full 100fx"},  {7, "full 1000sx"},  {8, "full 10gsx"}, {9, "full 40gsx"}, {10, "full 25gsx"},
    {11, "full 50gsx"}, {12, "full 100gsx"}, {13, "AAL5 155"},  {14, "full 5fx"},  {128, "full 2P5fx"},
    {129, "LAG"},       {130, "unknown"},    {0, "-"},          {15, "-"},         {127, "-"},
    {131, "-"},         {4294967295u, "-"},
};

TEST_F(InterfaceTest, SpeedsHaveTexts) {
  for (const word_row &row : SPEEDS) {
    char speed[16];
    EXPECT_EQ(get_speed_string_by_eum(row.value, speed), RC_TRUE);
    EXPECT_STREQ(speed, row.word);
    bent_output bent("openapiIfSpeedGet", row.value);
    interface_details details = port_details(3);
    details.speed = row.word;
    EXPECT_EQ(get("/if/3"), expected_details(details));
  }
}

TEST_F(InterfaceTest, DescriptionOfOneCharacterIsShown) {
  put("/if/3/description", "value=x");
  interface_details details = port_details(3);
  details.description = "x";
  EXPECT_EQ(get("/if/3"), expected_details(details));
}

/* The platform counts the terminator. */
TEST_F(InterfaceTest, DescriptionOfASizeBelowTwoIsEmpty) {
  put("/if/3/description", "value=text");
  interface_details details = port_details(3);
  for (uint32_t size : {0u, 1u, 2u, 5u}) {
    bent_output bent("rpcclt_openapiIfDescrGet", size);
    details.description = size < 2 ? "-" : "text";
    EXPECT_EQ(get("/if/3"), expected_details(details)) << size;
  }
}

TEST_F(InterfaceTest, PvidThatCannotBeReadIsZeroWhileTheLinkIsDown) {
  pull_cable("0/3");
  interface_details details = port_details(3);
  details.link = "down";
  details.pvid = 0;
  for (open_error_t rc : all_platform_errors()) {
    fault("openapiVlanIfPvidGet", rc, 2);
    EXPECT_EQ(get("/if/3"), expected_details(details)) << rc;
  }
  /* Whatever the platform left in the place of the value. */
  fault("openapiVlanIfPvidGet", OPEN_E_FAIL, 2);
  bent_output bent("openapiVlanIfPvidGet", 4711);
  EXPECT_EQ(get("/if/3"), expected_details(details));
}

TEST_F(InterfaceTest, PvidThatCannotBeReadIsAFailureOfAnyOtherLink) {
  for (uint32_t link : {0u, 2u, 4294967295u}) {
    bent_output bent("openapiIfLinkStateGet", link);
    for (open_error_t rc : all_platform_errors()) {
      fault("openapiVlanIfPvidGet", rc, 2);
      EXPECT_EQ(get("/if/3"), expected_platform_error(rc)) << rc;
    }
  }
}

/* The soft shutdown state is read and not shown; its failure is one of the request
 * (test_interface_failures.cpp). */
TEST_F(InterfaceTest, SoftShutdownStateIsNotShown) {
  ASSERT_EQ(rpcclt_openapiIfSoftShutdownStateSet(handle, 3, 1), OPEN_E_NONE);
  wait_applied();
  interface_details details = port_details(3);
  details.link = "down";
  EXPECT_EQ(get("/if/3"), expected_details(details));
}

/* --- List ------------------------------------------------------------------------------------------------
 */

static Answers expected_ports(unsigned last) {
  std::vector<result_node> entries;
  for (unsigned port = 1; port <= last; port++)
    entries.push_back(entry(port, "interface", {number("ifNum", port)}));
  return expected_data({branch("interfaces", entries)});
}

TEST_F(InterfaceTest, ListHasEveryPortAndNothingElse) {
  EXPECT_EQ(get("/if"), expected_ports(54));
}

TEST_F(InterfaceTest, ListHasPortsWithoutLinkToo) {
  pull_cable("0/1");
  pull_cable("0/54");
  EXPECT_EQ(get("/if"), expected_ports(54));
}

TEST_F(InterfaceTest, ListEndsAtTheFirstFailOfTheNextInterface) {
  for (unsigned ports : {1u, 5u, 53u}) {
    fault("rpcclt_openapiIfNextGet", OPEN_E_FAIL, 1, ports - 1);
    EXPECT_EQ(call_xml(interface_api_handler, "GET", "/if"), expected_ports(ports).xml);
  }
}

/* Only that ends the list; any other answer goes on with whatever interface was named, here none. */
TEST_F(InterfaceTest, ListThatCannotGoOnAnswers99) {
  for (open_error_t rc : all_platform_errors()) {
    if (rc == OPEN_E_FAIL) continue;
    fault("rpcclt_openapiIfNextGet", rc, 1, 4);
    EXPECT_EQ(call_xml(interface_api_handler, "GET", "/if"), expected_platform_error(OPEN_E_NOT_FOUND).xml)
        << rc;
  }
}

/* --- Texts -----------------------------------------------------------------------------------------------
 */

TEST_F(InterfaceTest, NameAndMacMayFillTheirBuffersToTheLastByte) {
  bent_output name("openapiIfNameGet", 'n');
  bent_output mac("rpcclt_openapiIfMacAddrGet", 'm');
  interface_details details = port_details(3);
  details.name = std::string(256, 'n');
  details.mac = std::string(256, 'm');
  EXPECT_EQ(get("/if/3"), expected_details(details));
}

/* --- Pending changes -------------------------------------------------------------------------------------
 */

static const char PENDING[] = "/if/pendingChanges";

TEST_F(InterfaceTest, NothingIsPendingOnceChangesAreTaken) {
  put("/if/3/mtuSize", "value=9000");
  wait_applied();
  EXPECT_EQ(get(PENDING), expected_pending_interfaces({}));
}

TEST_F(InterfaceTest, HeldChangesOfAllTypesOfInterfacesArePending) {
  hold_changes();
  put("/if/54/mtuSize", "value=9000");
  put("/if/120/description", "value=x");
  put("/if/1/adminState", "value=0");
  ASSERT_EQ(rpcclt_openapiLagDeleteZYL(handle, 57), OPEN_E_NONE);
  EXPECT_EQ(get(PENDING), expected_pending_interfaces({{1, "pending change"},
                                                       {54, "pending change"},
                                                       {57, "pending deletion"},
                                                       {120, "pending change"}}));
  release_changes();
  wait_applied();
  EXPECT_EQ(get(PENDING), expected_pending_interfaces({}));
}

TEST_F(InterfaceTest, PendingTypeIsADeletionForOneOnly) {
  hold_changes();
  put("/if/3/mtuSize", "value=9000");
  for (uint32_t value : {0u, 1u, 2u, 4294967295u}) {
    bent_output bent("openapiIfNextChangedGet", value);
    const char *type = value == 1 ? "pending deletion" : "pending change";
    EXPECT_EQ(get(PENDING), expected_pending_interfaces({{3, type}}));
  }
  release_changes();
}

TEST_F(InterfaceTest, PendingListEndsQuietlyAtAnyFailure) {
  hold_changes();
  put("/if/3/mtuSize", "value=9000");
  put("/if/5/mtuSize", "value=9000");
  for (open_error_t rc : all_platform_errors()) {
    fault("openapiIfNextChangedGet", rc);
    EXPECT_EQ(call_xml(interface_api_handler, "GET", PENDING), expected_pending_interfaces({}).xml) << rc;
    fault("openapiIfNextChangedGet", rc, 1, 1);
    EXPECT_EQ(call_xml(interface_api_handler, "GET", PENDING),
              expected_pending_interfaces({{3, "pending change"}}).xml)
        << rc;
  }
  release_changes();
}
