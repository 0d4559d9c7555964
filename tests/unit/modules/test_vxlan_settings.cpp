/* The VXLAN module, settings of the instance: the UDP port and the source interface. */
#include "platform/api/openapi_lag.h"
#include "tests/unit/modules/vxlan_fixture.h"

/* --- UDP port ------------------------------------------------------------------------------------------- */

TEST_F(VxlanTest, UdpPortIsTheSameInBothModes) {
  const char done[] = "Update VxLAN udp port successfully.";
  set_mode(UNICAST);
  EXPECT_EQ(get("/vxlan/1/udpPort"), expected_udp_port(4789));
  expect_done("PUT", "/vxlan/1/udpPort", "value=1", done);
  EXPECT_EQ(get("/vxlan/1/udpPort"), expected_udp_port(1));
  set_mode(MULTICAST);
  EXPECT_EQ(get("/vxlan/1/udpPort"), expected_udp_port(1));
  expect_done("PUT", "/vxlan/1/udpPort", "value=65535", done);
  expect_done("PUT", "/vxlan/1/udpPort", "value=65535", done);
  EXPECT_EQ(get("/vxlan/1/udpPort"), expected_udp_port(65535));
}

TEST_F(VxlanTest, UdpPortIsBetween1And65535) {
  for (tunnel_mode mode : ALL_MODES) { /* it is looked at before the mode */
    begin_empty(mode);
    for (const char *value : {"0", "00", "65536", "-1", "x", "70000", "2147483648", "4294967297",
                              "4294972085", "99999999999999999999"}) {
      EXPECT_EQ(serve("PUT", "/vxlan/1/udpPort", std::string("value=") + value), refused("Invalid udp port."))
          << value;
    }
    EXPECT_EQ(calls_made(), std::vector<std::string>());
  }
}

/* --- Source interface ----------------------------------------------------------------------------------- */

class VxlanSourceTest : public VxlanTest {
protected:
  VxlanSourceTest() {
    must(rpcclt_openapiRtrVlanIntfCreate(handle, 10));
    must(rpcclt_openapiRtrVlanIntfCreate(handle, 20));
  }
  void set(const std::string &kind, const std::string &value) const {
    expect_done("PUT", "/vxlan/1/sourceIntf/" + kind, "value=" + value,
                "Update VxLAN source port successfully.");
  }
  Answers source() const { return get("/vxlan/1/sourceIntf"); }
  /* Each of the values is answered so, and before the mode is looked at. */
  void expect_refused(const std::string &kind, const std::vector<std::string> &values,
                      const Answers &answers) const {
    for (tunnel_mode mode : ALL_MODES) {
      set_mode(mode);
      forget_calls();
      for (const std::string &value : values)
        EXPECT_EQ(serve("PUT", "/vxlan/1/sourceIntf/" + kind, "value=" + value), answers) << value;
      EXPECT_EQ(recorded_calls(), std::vector<std::string>());
    }
  }
};

TEST_F(VxlanSourceTest, EachKindOfSourceIsToldByItsOwnId) {
  for (tunnel_mode mode : {UNICAST, MULTICAST}) {
    set_mode(mode);
    EXPECT_EQ(source(), expected_source("none", 0));
    set("if", "3");
    EXPECT_EQ(source(), expected_source("interface", 3));
    set("if", "0054");
    EXPECT_EQ(source(), expected_source("interface", 54));
    set("loopback", "0");
    EXPECT_EQ(source(), expected_source("loopback", 0));
    set("loopback", "7");
    EXPECT_EQ(source(), expected_source("loopback", 7));
    set("vlan", "10");
    EXPECT_EQ(source(), expected_source("vlan", 10));
    set("vlan", "20");
    EXPECT_EQ(source(), expected_source("vlan", 20));
    set("if", "56"); /* a LAG */
    EXPECT_EQ(source(), expected_source("interface", 56));
    set("if", "56");
    expect_done("DELETE", "/vxlan/1/sourceIntf", "", "Delete VxLAN source port successfully.");
    EXPECT_EQ(source(), expected_source("none", 0));
    expect_done("DELETE", "/vxlan/1/sourceIntf", "", "Delete VxLAN source port successfully.");
  }
}

TEST_F(VxlanSourceTest, LoopbacksAndVlansCanBeNamedAsInterfacesToo) {
  set_mode(UNICAST);
  set("if", "127");
  EXPECT_EQ(source(), expected_source("loopback", 7));
  set("if", "227");
  EXPECT_EQ(source(), expected_source("vlan", 20));
}

TEST_F(VxlanSourceTest, SourceIsTheSameInBothModes) {
  set_mode(UNICAST);
  set("vlan", "20");
  set_mode(MULTICAST);
  EXPECT_EQ(source(), expected_source("vlan", 20));
}

TEST_F(VxlanSourceTest, InterfaceMustExistWhateverTheMode) {
  must(rpcclt_openapiLagDeleteZYL(handle, 57));
  expect_refused("if", {"0", "-1", "x", "57", "228", "400", "2147483648", "4294967299"},
                 expected_platform_error(OPEN_E_NOT_FOUND));
}

TEST_F(VxlanSourceTest, CpuInterfaceIsNoSource) {
  for (tunnel_mode mode : {UNICAST, MULTICAST}) {
    set_mode(mode);
    EXPECT_EQ(serve("PUT", "/vxlan/1/sourceIntf/if", "value=55"), expected_platform_error(OPEN_E_UNAVAIL));
    EXPECT_EQ(source(), expected_source("none", 0));
  }
}

TEST_F(VxlanSourceTest, LoopbackIsOneOfTheSwitch) {
  expect_refused("loopback", {"8", "-1", "120", "2147483648", "4294967296"}, refused("Invalid loopback id."));
}

TEST_F(VxlanSourceTest, VlanIsBetween1And4094) {
  expect_refused("vlan", {"0", "-1", "4095", "x", "2147483648", "4294967306"}, refused("VLAN ID not valid."));
}

TEST_F(VxlanSourceTest, VlanWithoutARoutingInterfaceIsNoSource) {
  expect_refused("vlan", {"30", "50", "4094"}, /* VLAN 30 exists */
                 expected_platform_error(OPEN_E_NOT_FOUND));
}

TEST_F(VxlanSourceTest, ValueMustBeThere) {
  for (tunnel_mode mode : ALL_MODES) {
    begin(mode);
    for (const char *uri : {"/vxlan/1/udpPort", "/vxlan/1/sourceIntf/if", "/vxlan/1/sourceIntf/loopback",
                            "/vxlan/1/sourceIntf/vlan"}) {
      for (const std::string &query :
           {std::string(), std::string("value="), "value=" + std::string(256, '1')})
        EXPECT_EQ(serve("PUT", uri, query), expected_platform_error(OPEN_E_PARAM)) << uri << " " << query;
    }
    EXPECT_EQ(calls_made(), std::vector<std::string>());
  }
}

TEST_F(VxlanSourceTest, ValueMayStandInTheBody) {
  set_mode(UNICAST);
  FakeRequest request("PUT", "/vxlan/1/sourceIntf/vlan", "", "value=10");
  EXPECT_EQ(vxlan_api_handler(handle, request.conn()), 1);
  EXPECT_EQ(source(), expected_source("vlan", 10));
}
