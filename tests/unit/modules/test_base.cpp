/* The base module: versions, readiness, identity. */
#include "modules/rest_module_base.h"
#include "tests/support/platform_fixture.h"

class BaseTest : public PlatformTest {};

static Answers expected_info(const char *ready, int routes = 32) {
  std::string number = std::to_string(routes);
  return expected_answers(
      0, "Get data successfully.",
      std::string("<infomation><ORVA_version>") + TEST_OS_VERSION + "</ORVA_version><software_storage>" +
          TEST_STORAGE +
          "</software_storage><RESTful_API_version>0.0.00.11</RESTful_API_version><OPEN_API_version>"
          "<build_num>1</build_num><maint_level>0</maint_level><release>1</release><version>0</version>"
          "</OPEN_API_version><cpu_interface>55</cpu_interface><max_equal_cost_routes>" +
          number + "</max_equal_cost_routes><system_is_ready>" + ready + "</system_is_ready></infomation>",
      std::string("\"infomation\": { \"ORVA_version\": \"") + TEST_OS_VERSION +
          "\", \"software_storage\": \"" + TEST_STORAGE +
          "\", \"RESTful_API_version\": \"0.0.00.11\", \"OPEN_API_version\": { \"build_num\": 1, "
          "\"maint_level\": 0, \"release\": 1, \"version\": 0 }, \"cpu_interface\": 55, "
          "\"max_equal_cost_routes\": " +
          number + ", \"system_is_ready\": \"" + ready + "\" }");
}

TEST_F(BaseTest, InfoTellsVersionsAndReadiness) {
  EXPECT_EQ(call(base_api_handler, "GET", "/base"), expected_info("Yes"));
  lower_limit("equal-cost-routes", 4);
  EXPECT_EQ(call(base_api_handler, "GET", "/base"), expected_info("Yes", 4));
  lower_limit("equal-cost-routes", 32);
}

TEST_F(BaseTest, SwitchThatIsNotReadyStillAnswers) {
  lab("ready no");
  EXPECT_EQ(call(base_api_handler, "GET", "/base"), expected_info("No"));
  lab("ready yes");
  EXPECT_EQ(call(base_api_handler, "GET", "/base"), expected_info("Yes"));
}

TEST_F(BaseTest, IdentityIsThatOfTheChassis) {
  EXPECT_EQ(call(base_api_handler, "GET", "/base/idname"),
            expected_answers(0, "Get data successfully.",
                             std::string("<idname><sn>") + TEST_SERIAL + "</sn><mac>" + TEST_MAC +
                                 "</mac><blade_idx>0</blade_idx><product_type>" + TEST_MODEL +
                                 "</product_type><sys_desc>" + TEST_DESCRIPTION + "</sys_desc></idname>",
                             std::string("\"idname\": { \"sn\": \"") + TEST_SERIAL + "\", \"mac\": \"" +
                                 TEST_MAC + "\", \"blade_idx\": 0, \"product_type\": \"" + TEST_MODEL +
                                 "\", \"sys_desc\": \"" + TEST_DESCRIPTION + "\" }"));
}

static const char *const INFO_CALLS[] = {
    "rpcclt_openapiNetworkOSVersionGet", "rpcclt_openapiSwStorageGet",
    "rpcclt_openapiApiVersionGet",       "rpcclt_openapiCpuIntfGet",
    "openapiMaxInterfaceCountGet",       "rpcclt_openapiOspfEqualCostRoutesMax",
    "openapiSystemReadyStateGet",
};

static const char *const IDENTITY_CALLS[] = {
    "rpcclt_openapiSwDevInfoSerialNumGet",
    "rpcclt_openapiBurnedInMacAddrGet",
    "rpcclt_openapiMachineModelNameGet",
    "rpcclt_openapiSystemDescrGet",
};

TEST_F(BaseTest, EveryFailureOfEveryCallIsAnsweredAlone) {
  for (open_error_t rc : all_platform_errors()) {
    for (const char *function : INFO_CALLS) {
      fault(function, rc, 2);
      EXPECT_EQ(call(base_api_handler, "GET", "/base"), expected_platform_error(rc)) << function << " " << rc;
    }
    for (const char *function : IDENTITY_CALLS) {
      fault(function, rc, 2);
      EXPECT_EQ(call(base_api_handler, "GET", "/base/idname"), expected_platform_error(rc))
          << function << " " << rc;
    }
  }
  EXPECT_EQ(call(base_api_handler, "GET", "/base"), expected_info("Yes"));
}

/* The order shows in which of two failures is told, and in the second one still being due. */
TEST_F(BaseTest, NoCallIsMadeAfterTheFirstFailure) {
  auto check = [this](const char *uri, const char *const *calls, size_t count) {
    for (size_t i = 0; i + 1 < count; i++) {
      fault(calls[i], OPEN_E_EXISTS);
      fault(calls[i + 1], OPEN_E_FAIL);
      EXPECT_EQ(call_xml(base_api_handler, "GET", uri), expected_platform_error(OPEN_E_EXISTS).xml)
          << calls[i];
      EXPECT_EQ(lab("fault list"), std::string(calls[i + 1]) + " OPEN_E_FAIL 1 0\n");
      lab("fault clear");
    }
  };
  check("/base", INFO_CALLS, std::size(INFO_CALLS));
  check("/base/idname", IDENTITY_CALLS, std::size(IDENTITY_CALLS));
}

TEST_F(BaseTest, NothingElseIsServed) {
  for (const char *uri : {"/base/", "/base/idname/", "/base/idnam", "/base/i", "/base/idnamex",
                          "/base/IDNAME", "/Base", "/basex", "/base ", "/base/idname ", "/base/idname\n",
                          "/bas", "/", "", "/base%s", "/base/x", "/base//idname"}) {
    EXPECT_EQ(call(base_api_handler, "GET", uri), expected_bad_request()) << uri;
  }
  for (const char *method : {"POST", "PUT", "DELETE", "PATCH", "HEAD"}) {
    EXPECT_EQ(call(base_api_handler, method, "/base"), expected_bad_request()) << method;
    EXPECT_EQ(call(base_api_handler, method, "/base/idname"), expected_bad_request()) << method;
  }
  EXPECT_EQ(call(base_api_handler, "GET", "/base", "method=post"), expected_bad_request());
  EXPECT_EQ(call(base_api_handler, "POST", "/base", "method=getAll"), expected_info("Yes"));
}
