/* The port MAC locking module: every route, its refusals and its near misses. Platform failures:
 * test_pml_failures.cpp. */
#include "tests/unit/modules/pml_fixture.h"

#include "platform/api/openapi_lag.h"

/* --- Sticky mode -----------------------------------------------------------------------------------------
 */

TEST_F(PmlTest, StickyModeIsUpdated) {
  EXPECT_EQ(get("/pml/if/5/sticky"), expected_sticky("disable"));
  for (const char *ifNum : {"5", "56"}) {
    std::string uri = std::string("/pml/if/") + ifNum + "/sticky";
    EXPECT_EQ(call(pml_api_handler, "PUT", uri, "value=1"),
              expected_data({}, "Update interface sticky mode to enable successfully."));
    EXPECT_EQ(get(uri), expected_sticky("enable"));
    EXPECT_EQ(call(pml_api_handler, "PUT", uri, "value=0"),
              expected_data({}, "Update interface sticky mode to disable successfully."));
    EXPECT_EQ(get(uri), expected_sticky("disable"));
  }
}

TEST_F(PmlTest, AnswerToAnUpdateOfTheStickyModeHasEmptyData) {
  EXPECT_EQ(done("PUT", "/pml/if/5/sticky", "value=0"),
            "<result><rlt_code>0</rlt_code><rlt_mesg>Update interface sticky mode to disable successfully."
            "</rlt_mesg><rlt_data></rlt_data></result>\n");
  EXPECT_EQ(done("PUT", "/pml/if/5/sticky", "value=1", "json"),
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Update interface sticky mode to enable "
            "successfully.\", \"rlt_data\": { } } }\n");
}

TEST_F(PmlTest, AnyNumberButOneIsOff) {
  for (const char *value : {"2", "-1", "11", "4294967297", "enable", "%201x0", "+"}) {
    bool on = std::string(value) == "%201x0"; /* a number counts as far as it goes */
    done("PUT", "/pml/if/5/sticky", "value=1");
    EXPECT_EQ(call(pml_api_handler, "PUT", "/pml/if/5/sticky", std::string("value=") + value),
              expected_data({}, std::string("Update interface sticky mode to ") +
                                    (on ? "enable" : "disable") + " successfully."))
        << value;
    EXPECT_EQ(get("/pml/if/5/sticky"), expected_sticky(on ? "enable" : "disable")) << value;
  }
}

TEST_F(PmlTest, StickyModeIsOnForOneOnly) {
  for (uint32_t mode : {0u, 1u, 2u, 4294967295u}) {
    bent_output bent("rpcclt_openapiPmlIntfStickyModeGet", mode);
    EXPECT_EQ(get("/pml/if/5/sticky"), expected_sticky(mode == 1 ? "enable" : "disable"));
  }
}

/* --- Locking and releasing -------------------------------------------------------------------------------
 */

static const char ADDRESS[] = "00:11:22:33:44:55";
static const std::string VALUE = std::string("value=") + ADDRESS;

TEST_F(PmlTest, AddressIsLockedAndReleased) {
  EXPECT_EQ(done("POST", "/pml/if/5/vlan/10/sticky/0/mac", VALUE),
            expected_answers(0, "Create interface static mac 00:11:22:33:44:55 vlan 10 successfully.").xml);
  EXPECT_EQ(done("POST", "/pml/if/5/vlan/1/sticky/1/mac", VALUE, "json"),
            expected_answers(0, "Create interface static mac 00:11:22:33:44:55 vlan 1 successfully.").json);
  Answers answers = get("/pml/if/5/mac");
  EXPECT_EQ(answers, expected_macs({{ADDRESS, 1, "enable"}, {ADDRESS, 10, "disable"}}));
  EXPECT_EQ(answers.xml,
            "<result><rlt_code>0</rlt_code><rlt_mesg>Get interface static mac successfully.</rlt_mesg>"
            "<rlt_data><interface><mac><macAddr>00:11:22:33:44:55</macAddr><vlan>1</vlan><sticky>enable"
            "</sticky></mac><mac><macAddr>00:11:22:33:44:55</macAddr><vlan>10</vlan><sticky>disable</sticky>"
            "</mac></interface></rlt_data></result>\n");
  EXPECT_EQ(answers.json,
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get interface static mac successfully.\", "
            "\"rlt_data\": { \"interface\": { \"1\": { \"macAddr\": \"00:11:22:33:44:55\", \"vlan\": 1, "
            "\"sticky\": \"enable\" }, \"2\": { \"macAddr\": \"00:11:22:33:44:55\", \"vlan\": 10, "
            "\"sticky\": \"disable\" } } } } }\n");
  EXPECT_EQ(done("DELETE", "/pml/if/5/vlan/10/mac", VALUE),
            expected_answers(0, "Delete interface static mac 00:11:22:33:44:55 vlan 10 successfully.").xml);
  EXPECT_EQ(get("/pml/if/5/mac"), expected_macs({{ADDRESS, 1, "enable"}}));
  EXPECT_EQ(done("DELETE", "/pml/if/5/vlan/1/mac", VALUE, "json"),
            expected_answers(0, "Delete interface static mac 00:11:22:33:44:55 vlan 1 successfully.").json);
  EXPECT_EQ(get("/pml/if/5/mac"), expected_platform_error(OPEN_E_FAIL));
}

TEST_F(PmlTest, AddressIsRepeatedAsItWasWrittenAndListedInUpperCase) {
  EXPECT_EQ(done("POST", "/pml/if/56/vlan/1/sticky/1/mac", "value=0a%3A0B:0c:0D:0e:0F"),
            expected_answers(0, "Create interface static mac 0a:0B:0c:0D:0e:0F vlan 1 successfully.").xml);
  EXPECT_EQ(get("/pml/if/56/mac"), expected_macs({{"0A:0B:0C:0D:0E:0F", 1, "enable"}}));
  EXPECT_EQ(done("DELETE", "/pml/if/56/vlan/1/mac", "value=0A:0b:0C:0d:0E:0f"),
            expected_answers(0, "Delete interface static mac 0A:0b:0C:0d:0E:0f vlan 1 successfully.").xml);
}

TEST_F(PmlTest, StickyDigitsMayBeMany) {
  struct {
    const char *digits, *sticky;
  } rows[] = {{"0", "disable"}, {"1", "enable"},  {"00", "disable"},
              {"01", "enable"}, {"10", "enable"}, {"111111111111111111111111", "enable"}};
  for (const auto &row : rows) {
    done("POST", std::string("/pml/if/5/vlan/1/sticky/") + row.digits + "/mac", VALUE);
    EXPECT_EQ(get("/pml/if/5/mac"), expected_macs({{ADDRESS, 1, row.sticky}})) << row.digits;
    done("DELETE", "/pml/if/5/vlan/1/mac", VALUE);
  }
}

TEST_F(PmlTest, EntriesAreListedByAddressAndThenByVlan) {
  lock(5, "02:00:00:00:00:0B", 1);
  lock(5, "02:00:00:00:00:0A", 10, 1);
  lock(5, "02:00:00:00:00:0A", 1);
  lock(5, "FE:FF:FF:FF:FF:FF", 1);
  lock(6, "02:00:00:00:00:0C", 1);
  EXPECT_EQ(get("/pml/if/5/mac"), expected_macs({{"02:00:00:00:00:0A", 1, "disable"},
                                                 {"02:00:00:00:00:0A", 10, "enable"},
                                                 {"02:00:00:00:00:0B", 1, "disable"},
                                                 {"FE:FF:FF:FF:FF:FF", 1, "disable"}}));
}

TEST_F(PmlTest, EntryIsStickyForOneOnly) {
  lock(5, ADDRESS, 1);
  for (uint32_t sticky : {0u, 1u, 2u, 4294967295u}) {
    bent_output bent("rpcclt_openapiPmlIntfStaticEntryGetFirst", sticky);
    EXPECT_EQ(get("/pml/if/5/mac"), expected_macs({{ADDRESS, 1, sticky == 1 ? "enable" : "disable"}}));
  }
}

/* --- Refusals --------------------------------------------------------------------------------------------
 */

TEST_F(PmlTest, InterfaceWithoutEntriesAnswersWithThePlatformsError) {
  EXPECT_EQ(get("/pml/if/5/mac"), expected_platform_error(OPEN_E_FAIL));
}

TEST_F(PmlTest, LockedAddressIsNotLockedAgain) {
  lock(5, ADDRESS, 1);
  for (const char *uri :
       {"/pml/if/5/vlan/1/sticky/0/mac", "/pml/if/5/vlan/1/sticky/1/mac", "/pml/if/6/vlan/1/sticky/0/mac"}) {
    EXPECT_EQ(call(pml_api_handler, "POST", uri, VALUE), expected_platform_error(OPEN_E_EXISTS)) << uri;
  }
  EXPECT_EQ(get("/pml/if/5/mac"), expected_macs({{ADDRESS, 1, "disable"}}));
}

TEST_F(PmlTest, AddressThatIsNotLockedThereCannotBeReleased) {
  lock(5, ADDRESS, 1);
  for (const char *uri : {"/pml/if/5/vlan/10/mac", "/pml/if/6/vlan/1/mac", "/pml/if/5/vlan/20/mac"}) {
    EXPECT_EQ(call(pml_api_handler, "DELETE", uri, VALUE), expected_platform_error(OPEN_E_NOT_FOUND)) << uri;
  }
  EXPECT_EQ(call(pml_api_handler, "DELETE", "/pml/if/5/vlan/1/mac", "value=00:11:22:33:44:56"),
            expected_platform_error(OPEN_E_NOT_FOUND));
  EXPECT_EQ(get("/pml/if/5/mac"), expected_macs({{ADDRESS, 1, "disable"}}));
}

TEST_F(PmlTest, FullInterfaceAnswers99) {
  lower_limit("static-macs", 2);
  lock(5, "02:00:00:00:00:01", 1);
  lock(5, "02:00:00:00:00:02", 1);
  EXPECT_EQ(call(pml_api_handler, "POST", "/pml/if/5/vlan/1/sticky/0/mac", VALUE),
            expected_platform_error(OPEN_E_FULL));
}

TEST_F(PmlTest, InterfaceHasRoomFor20Entries) {
  std::vector<static_mac> macs;
  for (unsigned i = 10; i < 30; i++) {
    macs.push_back({"02:00:00:00:00:" + std::to_string(i), 1, "disable"});
    lock(5, macs.back().address, 1);
  }
  EXPECT_EQ(get("/pml/if/5/mac"), expected_macs(macs));
  EXPECT_EQ(call(pml_api_handler, "POST", "/pml/if/5/vlan/1/sticky/0/mac", VALUE),
            expected_platform_error(OPEN_E_FULL));
}

TEST_F(PmlTest, TextsThatAreNoStationsAddressAnswer99) {
  for (const char *value :
       {"x", "00:11:22:33:44", "00:11:22:33:44:5", "00:11:22:33:44:55:66", "00-11-22-33-44-55",
        "001122334455", "00:11:22:33:44:5g", "00:00:00:00:00:00", "01:00:5E:00:00:01", "FF:FF:FF:FF:FF:FF",
        "+00:11:22:33:44:55", "00:11:22:33:44:55+", "%25s%25n"}) {
    std::string query = std::string("value=") + value;
    EXPECT_EQ(call(pml_api_handler, "POST", "/pml/if/5/vlan/1/sticky/0/mac", query),
              expected_platform_error(OPEN_E_PARAM))
        << value;
    EXPECT_EQ(call(pml_api_handler, "DELETE", "/pml/if/5/vlan/1/mac", query),
              expected_platform_error(OPEN_E_PARAM))
        << value;
  }
  EXPECT_EQ(get("/pml/if/5/mac"), expected_platform_error(OPEN_E_FAIL));
}

TEST_F(PmlTest, VlansThatDoNotExistAnswer99) {
  for (const char *vlanId : {"0", "2", "4094", "4095", "2147483647", "99999999999999999999"}) {
    std::string uri = std::string("/pml/if/5/vlan/") + vlanId;
    EXPECT_EQ(call(pml_api_handler, "POST", uri + "/sticky/0/mac", VALUE),
              expected_platform_error(OPEN_E_NOT_FOUND))
        << vlanId;
    EXPECT_EQ(call(pml_api_handler, "DELETE", uri + "/mac", VALUE), expected_platform_error(OPEN_E_NOT_FOUND))
        << vlanId;
  }
}

TEST_F(PmlTest, OnlyPortsAndLagsCanBeLocked) {
  for (const char *ifNum : {"0", "55", "120", "200", "226", "354", "2147483647", "4294967301"}) {
    std::string uri = std::string("/pml/if/") + ifNum;
    Answers refused = expected_platform_error(OPEN_E_NOT_FOUND);
    EXPECT_EQ(get(uri + "/sticky"), refused) << ifNum;
    EXPECT_EQ(call(pml_api_handler, "PUT", uri + "/sticky", "value=1"), refused) << ifNum;
    EXPECT_EQ(get(uri + "/mac"), refused) << ifNum;
    EXPECT_EQ(call(pml_api_handler, "POST", uri + "/vlan/1/sticky/0/mac", VALUE), refused) << ifNum;
    EXPECT_EQ(call(pml_api_handler, "DELETE", uri + "/vlan/1/mac", VALUE), refused) << ifNum;
  }
}

TEST_F(PmlTest, ValueThatIsMissingEmptyOrTooLongAnswers99AndThePlatformIsNotAsked) {
  struct {
    const char *method, *uri, *function;
  } rows[] = {
      {"PUT", "/pml/if/5/sticky", "rpcclt_openapiPmlIntfStickyModeSet"},
      {"POST", "/pml/if/5/vlan/1/sticky/0/mac", "rpcclt_openapiPmlIntfStaticEntryAdd"},
      {"DELETE", "/pml/if/5/vlan/1/mac", "rpcclt_openapiPmlIntfStaticEntryDelete"},
  };
  for (const auto &row : rows) {
    fault(row.function, OPEN_E_EXISTS, 2);
    for (const std::string &query : {std::string(), std::string("value="), std::string("mac=") + ADDRESS,
                                     "value=" + std::string(256, '1')}) {
      EXPECT_EQ(call(pml_api_handler, row.method, row.uri, query), expected_platform_error(OPEN_E_PARAM))
          << row.method << " " << query;
    }
    FakeRequest in_body(row.method, row.uri, "", "value=" + std::string(300, '1'));
    EXPECT_EQ(pml_api_handler(handle, in_body.conn()), 0);
    EXPECT_EQ(answer_body(in_body, "xml"), expected_platform_error(OPEN_E_PARAM).xml);
    EXPECT_EQ(lab("fault list"), std::string(row.function) + " OPEN_E_EXISTS 2 0\n");
    lab("fault clear");
  }
}

TEST_F(PmlTest, ValueMayStandInTheBody) {
  FakeRequest request("POST", "/pml/if/5/vlan/1/sticky/0/mac", "", VALUE);
  EXPECT_EQ(pml_api_handler(handle, request.conn()), 1);
  EXPECT_EQ(get("/pml/if/5/mac"), expected_macs({{ADDRESS, 1, "disable"}}));
}

/* --- What goes with what is locked -----------------------------------------------------------------------
 */

TEST_F(PmlTest, DeletedVlanReleasesItsEntries) {
  lock(5, ADDRESS, 1);
  lock(5, ADDRESS, 10);
  ASSERT_EQ(rpcclt_openapiVlanDelete(handle, 10), OPEN_E_NONE);
  EXPECT_EQ(get("/pml/if/5/mac"), expected_macs({{ADDRESS, 1, "disable"}}));
}

TEST_F(PmlTest, DeletedLagReleasesItsEntries) {
  lock(56, ADDRESS, 1);
  ASSERT_EQ(rpcclt_openapiLagDeleteZYL(handle, 56), OPEN_E_NONE);
  EXPECT_EQ(get("/pml/if/56/mac"), expected_platform_error(OPEN_E_NOT_FOUND));
  lock(5, ADDRESS, 1);
  ASSERT_EQ(rpcclt_openapiLagCreateZYL(handle, 56), OPEN_E_NONE);
  EXPECT_EQ(get("/pml/if/56/mac"), expected_platform_error(OPEN_E_FAIL));
}

/* --- Routes ----------------------------------------------------------------------------------------------
 */

TEST_F(PmlTest, NothingElseIsServed) {
  struct {
    const char *method, *uri;
  } rows[] = {
      {"GET", ""},
      {"GET", "/pml"},
      {"GET", "/pml/"},
      {"GET", "/pml/if"},
      {"GET", "/pml/if/"},
      {"GET", "/pml/if/5"},
      {"GET", "/pml/if/5/"},
      {"GET", "/pml/if//sticky"},
      {"GET", "/pml/if/x/sticky"},
      {"GET", "/pml/if/-5/sticky"},
      {"GET", "/pml/if/5//sticky"},
      {"GET", "/pml/if/5/stick"},
      {"GET", "/pml/if/5/stickyx"},
      {"GET", "/pml/if/5/stickyy"},
      {"GET", "/pml/if/5/sticky/"},
      {"GET", "/pml/if/5/Sticky"},
      {"GET", "/pml/if/5/ykcits"},
      {"GET", "/pml/IF/5/sticky"},
      {"GET", "/pml/5/sticky"},
      {"GET", "/pml/if//mac"},
      {"GET", "/pml/if/5/ma"},
      {"GET", "/pml/if/5/macs"},
      {"GET", "/pml/if/5/mac/"},
      {"GET", "/pml/if/5/cam"},
      {"GET", "/pml/if/5/MAC"},
      {"GET", "/pml/if/5/macmac"},
      {"GET", "/pml/if/5/vlan/1/mac"},
      {"GET", "/pml/if/5/vlan/1/sticky/0/mac"},
      {"PUT", "/pml/if/5"},
      {"PUT", "/pml/if/5/stick"},
      {"PUT", "/pml/if/5/stickyx"},
      {"PUT", "/pml/if/5/sticky/"},
      {"PUT", "/pml/if/5/sticky/1"},
      {"PUT", "/pml/if//sticky"},
      {"PUT", "/pml/if/5/mac"},
      {"PUT", "/pml/if/5/vlan/1/mac"},
      {"POST", "/pml/if/5/vlan/10/sticky/2/mac"},
      {"POST", "/pml/if/5/vlan/1/sticky/12/mac"},
      {"POST", "/pml/if/5/vlan/1/sticky/-1/mac"},
      {"POST", "/pml/if/5/vlan/1/sticky//mac"},
      {"POST", "/pml/if/5/vlan/1/sticky/x/mac"},
      {"POST", "/pml/if/5/vlan/1/sticky/0/ma"},
      {"POST", "/pml/if/5/vlan/1/sticky/0/macs"},
      {"POST", "/pml/if/5/vlan/1/sticky/0/mac/"},
      {"POST", "/pml/if/5/vlan/1/sticky/0/MAC"},
      {"POST", "/pml/if/5/vlan/1/sticky/0/cam"},
      {"POST", "/pml/if/5/vlan/1/sticky/0"},
      {"POST", "/pml/if/5/vlan/1/mac"},
      {"POST", "/pml/if/5/vlan//sticky/0/mac"},
      {"POST", "/pml/if//vlan/1/sticky/0/mac"},
      {"POST", "/pml/if/5/vlan/x/sticky/0/mac"},
      {"POST", "/pml/if/5/mac"},
      {"POST", "/pml/if/5/sticky"},
      {"DELETE", "/pml/if/5/mac"},
      {"DELETE", "/pml/if/5/vlan/1"},
      {"DELETE", "/pml/if/5/vlan/1/ma"},
      {"DELETE", "/pml/if/5/vlan/1/macs"},
      {"DELETE", "/pml/if/5/vlan/1/mac/"},
      {"DELETE", "/pml/if/5/vlan/1/cam"},
      {"DELETE", "/pml/if/5/vlan//mac"},
      {"DELETE", "/pml/if//vlan/1/mac"},
      {"DELETE", "/pml/if/5/vlan/1/sticky/0/mac"},
      {"DELETE", "/pml/if/5/sticky"},
      {"PATCH", "/pml/if/5/sticky"},
      {"HEAD", "/pml/if/5/mac"},
  };
  lock(5, ADDRESS, 1);
  for (const auto &row : rows) {
    EXPECT_EQ(call(pml_api_handler, row.method, row.uri, "value=00:11:22:33:44:55"), expected_bad_request())
        << row.method << " " << row.uri;
  }
  EXPECT_EQ(get("/pml/if/5/mac"), expected_macs({{ADDRESS, 1, "disable"}}));
  EXPECT_EQ(get("/pml/if/5/sticky"), expected_sticky("disable"));
}

TEST_F(PmlTest, MethodVariableChoosesTheOperation) {
  EXPECT_EQ(call_xml(pml_api_handler, "GET", "/pml/if/5/vlan/1/sticky/0/mac", "method=post&" + VALUE),
            expected_answers(0, "Create interface static mac 00:11:22:33:44:55 vlan 1 successfully.").xml);
  EXPECT_EQ(call(pml_api_handler, "POST", "/pml/if/5/mac", "method=GET"),
            expected_macs({{ADDRESS, 1, "disable"}}));
  EXPECT_EQ(call_xml(pml_api_handler, "GET", "/pml/if/5/vlan/1/mac", "method=delete&" + VALUE),
            expected_answers(0, "Delete interface static mac 00:11:22:33:44:55 vlan 1 successfully.").xml);
}

TEST_F(PmlTest, LongestUriIsServedAndOneMoreCharacterIsNot) {
  std::string uri = "/pml/if/" + std::string(255 - 16, '0') + "5/sticky";
  ASSERT_EQ(uri.size(), 255u);
  EXPECT_EQ(get(uri), expected_sticky("disable"));
  EXPECT_EQ(get(uri.insert(8, "0")), expected_bad_request());
}

/* No route lets such URIs through; the operations themselves stand on their own feet. */
TEST_F(PmlTest, NumbersThatAreMissingAnswer99) {
  struct {
    rest_handler_t operation;
    const char *uri;
  } rows[] = {
      {api_pml_get_sticky, "/pml/if/"},
      {api_pml_update_sticky, "/pml/if//sticky"},
      {api_pml_get_static_mac, "/pml/if//mac"},
      {api_pml_create_static_mac, "/pml/if//vlan/1/sticky/0/mac"},
      {api_pml_create_static_mac, "/pml/if/5/vlan//sticky/0/mac"},
      {api_pml_create_static_mac, "/pml/if/5/vlan/1/sticky//mac"},
      {api_pml_create_static_mac, "/pml/if/5/vlan/1/sticky/2/mac"},
      {api_pml_delete_static_mac, "/pml/if//vlan/1/mac"},
      {api_pml_delete_static_mac, "/pml/if/5/vlan//mac"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(call(row.operation, "PUT", row.uri, VALUE), expected_platform_error(OPEN_E_PARAM)) << row.uri;
  }
}
