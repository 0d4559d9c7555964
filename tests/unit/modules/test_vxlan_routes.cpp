/* The VXLAN module, routes: which requests it serves, and the many that it nearly does; and the instance that
 * every URI names. */
#include "tests/unit/modules/vxlan_fixture.h"

static const struct {
  const char *method, *uri;
} NOT_SERVED[] = {
    {"GET", ""},
    {"GET", "/vxlan"},
    {"GET", "/vxlan/"},
    {"GET", "/vxlan/1"},
    {"GET", "/vxlan/1/"},
    {"GET", "/vxlan//mode"},
    {"GET", "/vxlan/x/mode"},
    {"GET", "/vxlan/-1/mode"},
    {"GET", "/vxlan/+1/mode"},
    {"GET", "/vxlan/ 1/mode"},
    {"GET", "/vxlan/1 /mode"},
    {"GET", "/vxlan/1//mode"},
    {"GET", "//vxlan/1/mode"},
    {"GET", "/Vxlan/1/mode"},
    {"GET", "/vxlans/1/mode"},
    {"GET", "/vxlan/1/mod"},
    {"GET", "/vxlan/1/modem"},
    {"GET", "/vxlan/1/modes"},
    {"GET", "/vxlan/1/Mode"},
    {"GET", "/vxlan/1/edom"},
    {"GET", "/vxlan/1/mood"},
    {"GET", "/vxlan/1/mode/"},
    {"GET", "/vxlan/1/mode/x"},
    {"GET", "/vxlan/1/mode?"},
    {"GET", "/vxlan/1/udpport"},
    {"GET", "/vxlan/1/udpPor"},
    {"GET", "/vxlan/1/udpPortt"},
    {"GET", "/vxlan/1/pduPort"},
    {"GET", "/vxlan/1/udpPort/"},
    {"GET", "/vxlan/1/tenan"},
    {"GET", "/vxlan/1/tenants"},
    {"GET", "/vxlan/1/tnaent"},
    {"GET", "/vxlan/1/tenanttenant"},
    {"GET", "/vxlan/1/Tenant"},
    {"GET", "/vxlan/1/tenant/"},
    {"GET", "/vxlan/1/tenant/x"},
    {"GET", "/vxlan/1/tenant/-5"},
    {"GET", "/vxlan/1/tenant//5"},
    {"GET", "/vxlan/1/tenant/5/"},
    {"GET", "/vxlan/1/tenant/5x"},
    {"GET", "/vxlan/1/tenant/5/vlan"},
    {"GET", "/vxlan/1/tenant/5/vlan/10"},
    {"GET", "/vxlan/1/tenant/5/multicastGroup"},
    {"GET", "/vxlan/1/sourceIntf/"},
    {"GET", "/vxlan/1/sourceIntf/if"},
    {"GET", "/vxlan/1/sourceIntf/vlan"},
    {"GET", "/vxlan/1/sourceIntf/loopback"},
    {"GET", "/vxlan/1/sourceIntfs"},
    {"GET", "/vxlan/1/sourceIntff"},
    {"GET", "/vxlan/1/sourceintf"},
    {"GET", "/vxlan/1/sourceInt"},
    {"GET", "/vxlan/1/ftnIecruos"},
    {"GET", "/vxlan/1/unicastGrou"},
    {"GET", "/vxlan/1/unicastGroups"},
    {"GET", "/vxlan/1/unicastgroup"},
    {"GET", "/vxlan/1/unicastGroup/"},
    {"GET", "/vxlan/1/puorGtsacinu"},
    {"GET", "/vxlan/1/multicastGrou"},
    {"GET", "/vxlan/1/multicastGroups"},
    {"GET", "/vxlan/1/multicastgroup"},
    {"GET", "/vxlan/1/multicastGroup/"},
    {"GET", "/vxlan/1/puorGtsacitlum"},
    {"PUT", "/vxlan"},
    {"PUT", "/vxlan/1"},
    {"PUT", "/vxlan/1/edom"},
    {"PUT", "/vxlan/1/mode/"},
    {"PUT", "/vxlan/1/udpPorts"},
    {"PUT", "/vxlan/1/troPpdu"},
    {"PUT", "/vxlan/1/sourceIntf"},
    {"PUT", "/vxlan/1/sourceIntf/"},
    {"PUT", "/vxlan/1/sourceIntf/fi"},
    {"PUT", "/vxlan/1/sourceIntf/ff"},
    {"PUT", "/vxlan/1/sourceIntf/i"},
    {"PUT", "/vxlan/1/sourceIntf/iff"},
    {"PUT", "/vxlan/1/sourceIntf/if/3"},
    {"PUT", "/vxlan/1/sourceIntf/If"},
    {"PUT", "/vxlan/1/sourceintf/if"},
    {"PUT", "/vxlan/1/sourceIntf/kcabpool"},
    {"PUT", "/vxlan/1/sourceIntf/loopbac"},
    {"PUT", "/vxlan/1/sourceIntf/loopback0"},
    {"PUT", "/vxlan/1/sourceIntf/nalv"},
    {"PUT", "/vxlan/1/sourceIntf/vlans"},
    {"PUT", "/vxlan/1/sourceIntf/vlan/10"},
    {"PUT", "/vxlan/1/sourceIntf/lag"},
    {"PUT", "/vxlan/1/unicastGroup/10.0.0.1"},
    {"PUT", "/vxlan/1/multicastGroup/239.0.0.1"},
    {"PUT", "/vxlan/1/tenant"},
    {"PUT", "/vxlan/1/tenant/5"},
    {"PUT", "/vxlan/1/tenant/5/vlan/10"},
    {"PUT", "/vxlan/1/tenant/5/unicastGroup"},
    {"PUT", "/vxlan/1/tenant//multicastGroup"},
    {"PUT", "/vxlan/1/tenant/x/multicastGroup"},
    {"PUT", "/vxlan/1/tenant/5/multicastGroup/"},
    {"PUT", "/vxlan/1/tenant/5/puorGtsacitlum"},
    {"POST", "/vxlan"},
    {"POST", "/vxlan/1"},
    {"POST", "/vxlan/1/mode"},
    {"POST", "/vxlan/1/udpPort"},
    {"POST", "/vxlan/1/tenant"},
    {"POST", "/vxlan/1/tenant/5"},
    {"POST", "/vxlan/1/tenant/5/"},
    {"POST", "/vxlan/1/tenant/5/vlan"},
    {"POST", "/vxlan/1/tenant/5/vlan/"},
    {"POST", "/vxlan/1/tenant/5/vlan/x"},
    {"POST", "/vxlan/1/tenant/5/vlan/-10"},
    {"POST", "/vxlan/1/tenant/5/vlan/10/"},
    {"POST", "/vxlan/1/tenant/5/vlan/10x"},
    {"POST", "/vxlan/1/tenant//vlan/10"},
    {"POST", "/vxlan/1/tenant/x/vlan/10"},
    {"POST", "/vxlan/1/tenant/5/Vlan/10"},
    {"POST", "/vxlan//tenant/5/vlan/10"},
    {"POST", "/vxlan/1/unicastGroup"},
    {"POST", "/vxlan/1/multicastGroup"},
    {"POST", "/vxlan/1/sourceIntf/if"},
    {"DELETE", "/vxlan"},
    {"DELETE", "/vxlan/1"},
    {"DELETE", "/vxlan/1/mode"},
    {"DELETE", "/vxlan/1/udpPort"},
    {"DELETE", "/vxlan/1/tenant"},
    {"DELETE", "/vxlan/1/tenant/5"},
    {"DELETE", "/vxlan/1/tenant/5/vlan"},
    {"DELETE", "/vxlan/1/tenant/5/vlan/"},
    {"DELETE", "/vxlan/1/tenant/5/vlan/10/"},
    {"DELETE", "/vxlan/1/tenant/5/vlan/10/multicastGroup"},
    {"DELETE", "/vxlan/1/sourceIntf/"},
    {"DELETE", "/vxlan/1/sourceIntf/if"},
    {"DELETE", "/vxlan/1/ftnIecruos"},
    {"DELETE", "/vxlan/1/unicastGroup/"},
    {"DELETE", "/vxlan/1/puorGtsacinu"},
    {"DELETE", "/vxlan/1/multicastGroup/"},
    {"DELETE", "/vxlan/1/tenant/5/unicastGroup"},
    {"DELETE", "/vxlan/1/tenant/5/multicastGroup/"},
    {"DELETE", "/vxlan/1/tenant/5/puorGtsacitlum"},
    {"PATCH", "/vxlan/1/mode"},
    {"HEAD", "/vxlan/1/mode"},
};

TEST_F(VxlanTest, NothingElseIsServed) {
  for (tunnel_mode mode : ALL_MODES) {
    begin(mode);
    for (const auto &row : NOT_SERVED) {
      EXPECT_EQ(serve(row.method, row.uri, "value=1"), expected_bad_request())
          << row.method << " " << row.uri;
    }
    EXPECT_EQ(recorded_calls(), std::vector<std::string>());
  }
}

/* Blanks that nothing follows are skipped by what catches the rest of a URI. */
TEST_F(VxlanTest, BlanksAtTheEndAreNotSeen) {
  EXPECT_EQ(get("/vxlan/1/mode "), expected_mode(OFF));
  EXPECT_EQ(get("/vxlan/1/mode\t \n"), expected_mode(OFF));
  begin(UNICAST);
  EXPECT_EQ(get("/vxlan/1/tenant/6 "), expected_tenant(6, 20));
  EXPECT_EQ(get("/vxlan/1/tenant "), expected_tenants({{5, 10}, {6, 20}}));
  EXPECT_EQ(serve("DELETE", "/vxlan/1/sourceIntf "),
            expected_answers(0, "Delete VxLAN source port successfully."));
  EXPECT_EQ(get("/vxlan/1/mode x"), expected_bad_request());
  EXPECT_EQ(get("/vxlan/1/tenant/6 6"), expected_bad_request());
}

TEST_F(VxlanTest, MethodVariableChoosesTheOperation) {
  set_mode(UNICAST);
  EXPECT_EQ(once("GET", "/vxlan/1/udpPort", "method=put&value=5000"),
            expected_answers(0, "Update VxLAN udp port successfully.").xml);
  EXPECT_EQ(serve("DELETE", "/vxlan/1/udpPort", "method=GET"), expected_udp_port(5000));
  EXPECT_EQ(once("GET", "/vxlan/1/tenant/5/vlan/10", "method=post"),
            expected_answers(0, "Create VxLAN tenant 5 successfully.").xml);
  EXPECT_EQ(once("POST", "/vxlan/1/tenant/5/vlan/10", "method=delete"),
            expected_answers(0, "Delete VxLAN tenant 5 successfully.").xml);
}

TEST_F(VxlanTest, LongestUriIsServedAndOneMoreCharacterIsNot) {
  std::string uri = "/vxlan/" + std::string(255 - 13, '0') + "1/mode";
  ASSERT_EQ(uri.size(), 255u);
  EXPECT_EQ(get(uri), expected_mode(OFF));
  EXPECT_EQ(get(uri.insert(7, "0")), expected_bad_request());
}

/* --- Instance ------------------------------------------------------------------------------------------- */

static std::string text_of(const vxlan_operation &operation) {
  return std::string(operation.method) + " " + operation.uri;
}

TEST_F(VxlanTest, OnlyInstance1IsThere) {
  for (tunnel_mode mode : ALL_MODES) {
    begin(mode);
    for (const vxlan_operation &operation : VXLAN_OPERATIONS) {
      for (const char *id : {"0", "00", "2", "10", "11", "2147483647", "2147483648", "4294967297",
                             "18446744073709551617", "99999999999999999999"}) {
        EXPECT_EQ(serve(operation.method, std::string("/vxlan/") + id + operation.uri, operation.query).xml,
                  refused("Invalid vxlan ID.").xml)
            << text_of(operation) << " " << id;
      }
      EXPECT_EQ(serve(operation.method, std::string("/vxlan/2") + operation.uri, operation.query),
                refused("Invalid vxlan ID."));
    }
    EXPECT_EQ(recorded_calls(), std::vector<std::string>());
  }
}

TEST_F(VxlanTest, InstanceIsANumberHoweverItIsWritten) {
  for (const char *uri : {"/vxlan/01/mode", "/vxlan/0001/mode"}) EXPECT_EQ(get(uri), expected_mode(OFF));
  EXPECT_EQ(get("/vxlan/2/mode"), refused("Invalid vxlan ID."));
}

/* Whatever else is wrong with the request. */
TEST_F(VxlanTest, InstanceIsCheckedFirst) {
  const struct {
    const char *method, *uri, *query;
  } rows[] = {
      {"DELETE", "/vxlan/2/tenant/0/vlan/0", ""},
      {"DELETE", "/vxlan/2/unicastGroup", ""},
      {"DELETE", "/vxlan/2/unicastGroup", "value=x"},
      {"DELETE", "/vxlan/2/tenant/0/multicastGroup", ""},
      {"PUT", "/vxlan/2/mode", ""},
      {"PUT", "/vxlan/2/mode", "value=3"},
      {"PUT", "/vxlan/2/udpPort", ""},
      {"PUT", "/vxlan/2/udpPort", "value=0"},
      {"PUT", "/vxlan/2/sourceIntf/if", ""},
      {"PUT", "/vxlan/2/sourceIntf/if", "value=999"},
      {"PUT", "/vxlan/2/sourceIntf/loopback", "value=99"},
      {"PUT", "/vxlan/2/sourceIntf/vlan", "value=0"},
      {"PUT", "/vxlan/2/unicastGroup", ""},
      {"PUT", "/vxlan/2/unicastGroup", "value=x"},
      {"PUT", "/vxlan/2/multicastGroup", ""},
      {"PUT", "/vxlan/2/tenant/0/multicastGroup", "value=x"},
      {"GET", "/vxlan/2/tenant/0", ""},
      {"GET", "/vxlan/2/tenant/16777215", ""},
      {"POST", "/vxlan/2/tenant/0/vlan/0", ""},
      {"POST", "/vxlan/2/tenant/5/vlan/50", ""},
  };
  for (const auto &row : rows)
    EXPECT_EQ(serve(row.method, row.uri, row.query), refused("Invalid vxlan ID.")) << row.method << row.uri;
}

TEST_F(VxlanTest, OperationWithoutAnInstanceAnswers99) {
  begin(UNICAST);
  for (const vxlan_operation &operation : VXLAN_OPERATIONS) {
    for (const char *uri : {"/vxlan", "/vxlan/", "/vxlan/x", "/vxlan//tenant/5/vlan/10"}) {
      EXPECT_EQ(call(operation.operation, operation.method, uri, operation.query),
                expected_platform_error(OPEN_E_PARAM))
          << text_of(operation) << " " << uri;
    }
  }
  EXPECT_EQ(recorded_calls(), std::vector<std::string>());
}
