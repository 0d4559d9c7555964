/* The interface module when the platform fails: every call of every operation with every result. What has
 * rules of its own stands with its subject (counters, the ends of lists, the PVID of a port without link). */
#include "tests/unit/modules/failing_calls.h"
#include "tests/unit/modules/interface_fixture.h"

class InterfaceFailureTest : public InterfaceTest {
protected:
  InterfaceFailureTest() {
    create_vlans({10});
    wait_applied();
    before = lab("show running-config");
  }
  ~InterfaceFailureTest() override { EXPECT_EQ(lab("show running-config"), before); }

  std::string before;
};

static const operation_calls OPERATIONS[] = {
    {"DELETE", "/if/3/vlan/10", "", {"openapiVlanIfPvidGet", "rpcclt_openapiVlanIfParticipationSet"}},
    {"DELETE",
     "/if/3/trunk/vlan",
     "value=10",
     {"rpcclt_openapiDot1VlanMaxGet", "rpcclt_openapiIfSwitchportTrunkVlanSet"}},
    {"PUT", "/if/3/pvid", "value=10", {"rpcclt_openapiVlanIfPvidSet"}},
    {"PUT", "/if/3/acceptFrameType", "value=2", {"rpcclt_openapiVlanIfAcceptFrameTypeSet"}},
    {"PUT", "/if/3/adminState", "value=0", {"rpcclt_openapiIfAdminStateSet"}},
    {"PUT",
     "/if/48/autoNegMode",
     "value=0",
     {"rpcclt_openapiIfConnectorTypeGet", "rpcclt_openapiIfAutoNegSet"}},
    {"PUT", "/if/3/description", "value=x", {"rpcclt_openapiIfDescrSizeGet", "rpcclt_openapiIfDescrSet"}},
    {"PUT", "/if/3/mtuSize", "value=9000", {"rpcclt_openapiIfMtuSizeSet"}},
    {"PUT", "/if/3/speed", "value=7", {"rpcclt_openapiIfSpeedSet"}},
    {"PUT", "/if/3/vlan/10/taggingMode", "value=1", {"rpcclt_openapiVlanIfTaggingSet"}},
    {"PUT", "/if/3/counters/reset", "counter=-1", {"rpcclt_openapiInterfaceStatsReset"}},
    {"PUT", "/if/3/counters/reset", "counter=5", {"rpcclt_openapiStatReset"}},
    {"PUT", "/if/3/switchportMode", "value=3", {"rpcclt_openapiIfSwitchportModeSet"}},
    {"PUT",
     "/if/3/trunk/pvid",
     "value=10",
     {"rpcclt_openapiDot1VlanMaxGet", "rpcclt_openapiIfSwitchportTrunkNativeVlanSet"}},
    {"PUT",
     "/if/3/access/vlan",
     "value=10",
     {"rpcclt_openapiDot1VlanMaxGet", "rpcclt_openapiIfSwitchportAccessVlanSet"}},
    {"PUT",
     "/if/3/trunk/vlan",
     "value=10",
     {"rpcclt_openapiDot1VlanMaxGet", "rpcclt_openapiIfSwitchportTrunkVlanCreate"}},
    {"GET",
     "/if/3",
     "",
     {"openapiIfAdminStateGet", "openapiIfAutoNegGet", "rpcclt_openapiIfDescrGet", "openapiIfDuplexModeGet",
      "openapiIfLinkStateGet", "rpcclt_openapiIfMacAddrGet", "openapiIfMtuSizeGet", "openapiIfNameGet",
      "rpcclt_openapiIfSoftShutdownStateGet", "openapiIfSpeedGet", "openapiVlanIfPvidGet",
      "rpcclt_openapiVlanIfAcceptFrameTypeGet"},
     {"rpcclt_openapiRtrIntfIpAddrGet", "rpcclt_openapiRtrIntfSecIpAddrGet"}},
    {"GET", "/if", "", {"rpcclt_openapiIfFirstGet"}, {"rpcclt_openapiIfNextGet"}},
    {"GET", "/if/pendingChanges", "", {"rpcclt_openapiIfFirstGet"}, {"openapiIfNextChangedGet"}},
    {"GET", "/if/3/vlan/10", "", {"rpcclt_openapiVlanIfParticipationGet", "openapiVlanIfTaggingGet"}},
    {"GET", "/if/3/vlan", "", {"openapiVlanIfParticipationStatusGet"}, {"rpcclt_openapiVlanNextGet"}},
    {"GET", "/if/3/switchportMode", "", {"rpcclt_openapiIfSwitchportModeGet"}},
    {"POST", "/if/3/vlan/10", "", {"rpcclt_openapiVlanIfParticipationSet"}},
    {"POST",
     "/if/3/trunk/vlan",
     "value=10",
     {"rpcclt_openapiDot1VlanMaxGet", "rpcclt_openapiIfSwitchportTrunkVlanSet"}},
};

TEST_F(InterfaceFailureTest, EveryCallThatFailsIsAnsweredOnceAndEndsTheRequest) {
  for (const operation_calls &operation : OPERATIONS)
    expect_every_failure_answered(interface_api_handler, handle, operation);
}

TEST_F(InterfaceFailureTest, ParticipationListFailsInItsMiddleToo) {
  expect_failures_answered(interface_api_handler, handle, {"GET", "/if/3/vlan", "", {}},
                           "openapiVlanIfParticipationStatusGet", 1);
}

TEST_F(InterfaceFailureTest, SoftShutdownFailsWithThePlatformsResult) {
  expect_every_failure_answered(
      api_interface_update_soft_shutdown_state, handle,
      {"PUT", "/if/3/softShutdownState", "value=1", {"rpcclt_openapiIfSoftShutdownStateSet"}});
}

TEST_F(InterfaceFailureTest, NativeVlanIsKeptWithoutAskingFurther) {
  fault("rpcclt_openapiVlanIfParticipationSet", OPEN_E_EXISTS);
  EXPECT_EQ(call(interface_api_handler, "DELETE", "/if/3/vlan/1"),
            expected_answers(1, "Delete VLAN 1 failed. VLAN 1 is native vlan."));
  EXPECT_EQ(lab("fault list"), "rpcclt_openapiVlanIfParticipationSet OPEN_E_EXISTS 1 0\n");
  lab("fault clear");
}

TEST_F(InterfaceFailureTest, RefusedNegotiationAndVlanIdsDoNotReachThePlatform) {
  struct {
    const char *method, *uri, *query, *function;
    uint16_t code;
    const char *message;
  } rows[] = {
      {"PUT", "/if/3/autoNegMode", "value=1", "rpcclt_openapiIfAutoNegSet", 1,
       "Unable to update auto-negotiation mode of Interface 3."},
      {"PUT", "/if/3/description", "value=", "rpcclt_openapiIfDescrSet", 1,
       "The value of parameter is invalid."},
      {"PUT", "/if/3/access/vlan", "value=0", "rpcclt_openapiIfSwitchportAccessVlanSet", 2,
       "VLAN ID not valid."},
      {"PUT", "/if/3/trunk/pvid", "value=4095", "rpcclt_openapiIfSwitchportTrunkNativeVlanSet", 2,
       "VLAN ID not valid."},
      {"PUT", "/if/3/trunk/vlan", "value=0,5", "rpcclt_openapiIfSwitchportTrunkVlanCreate", 2,
       "VLAN ID not valid."},
      {"POST", "/if/3/trunk/vlan", "value=0,5", "rpcclt_openapiIfSwitchportTrunkVlanSet", 2,
       "VLAN ID not valid."},
      {"DELETE", "/if/3/trunk/vlan", "value=0,5", "rpcclt_openapiIfSwitchportTrunkVlanSet", 2,
       "VLAN ID not valid."},
  };
  for (const auto &row : rows) {
    fault(row.function, OPEN_E_EXISTS);
    EXPECT_EQ(call(interface_api_handler, row.method, row.uri, row.query),
              expected_answers(row.code, row.message));
    EXPECT_EQ(lab("fault list"), std::string(row.function) + " OPEN_E_EXISTS 1 0\n");
    lab("fault clear");
  }
}
