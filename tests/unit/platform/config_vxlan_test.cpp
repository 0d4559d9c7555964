/* Tests of the lines about VXLAN: good ones, near misses with their errors, and printing. */
#include "platform/softswitch/config/language.h"
#include "tests/unit/platform/config_test_support.h"

#include <gtest/gtest.h>
#include <string>

using namespace softswitch;

namespace {

const std::string vlans = "vlan 10,20,30\n";
const std::string base = vlans + "vxlan remote-vtep 10.0.0.1\n"
                                 "vxlan multicast-group 239.0.0.1\n"
                                 "vxlan tenant 7\n"
                                 "vxlan tenant 5000 vlan 10\n"
                                 "vxlan tenant 5000 multicast-group 239.0.0.2\n";

/* A switch with VLANs, tenant 5000 bound to VLAN 10 and tenant 7 that has nothing. */
switch_model prepared() {
  switch_model model = make_switch(built_in_profile());
  std::string error;
  EXPECT_TRUE(apply_text(model, base, &error)) << error;
  return model;
}

/* What is printed when these lines are applied to a factory switch with VLANs 10, 20 and 30. The print gives
 * the same switch. */
std::string printed_of(const std::string &lines) {
  switch_model model = make_switch(built_in_profile()), again = model;
  std::string error;
  EXPECT_TRUE(apply_text(model, vlans + lines, &error)) << error;
  std::string printed = print_configuration(model);
  EXPECT_TRUE(apply_text(again, printed, &error)) << error << "\n" << printed;
  EXPECT_EQ(print_configuration(again), printed);
  EXPECT_TRUE(printed.starts_with(vlans));
  return printed.substr(vlans.size());
}

TEST(VxlanLines, EachSettingIsPrintedAsItsLine) {
  for (const char *line :
       {"vxlan mode unicast\n", "vxlan mode multicast\n", "vxlan udp-port 1\n", "vxlan udp-port 65535\n",
        "vxlan source-interface 0/1\n", "vxlan source-interface 3/64\n", "vxlan source-interface loopback7\n",
        "vxlan remote-vtep 10.0.0.1\n", "vxlan multicast-group 224.0.1.0\n",
        "vxlan multicast-group 239.255.255.255\n", "vxlan tenant 1\n", "vxlan tenant 16777214\n",
        "vxlan tenant 1 vlan 1\n", "vxlan tenant 16777214 vlan 30\n",
        "vxlan tenant 5\nvxlan tenant 5 remote-vteps\n", "vxlan tenant 5\nvxlan tenant 5 vlan 10\n",
        "vxlan tenant 5\nvxlan tenant 5 multicast-group 239.1.1.1\n"}) {
    EXPECT_EQ(printed_of(line), line);
  }
}

TEST(VxlanLines, NoLinesBringFactoryStateBack) {
  for (const char *lines :
       {"vxlan mode unicast\nno vxlan mode", "no vxlan mode", "vxlan udp-port 5\nno vxlan udp-port",
        "no vxlan udp-port", "vxlan udp-port 4789", "vxlan source-interface 0/1\nno vxlan source-interface",
        "no vxlan source-interface", "vxlan remote-vtep 10.0.0.1\nno vxlan remote-vtep 10.0.0.1",
        "vxlan multicast-group 239.1.1.1\nno vxlan multicast-group", "no vxlan multicast-group",
        "vxlan tenant 5\nno vxlan tenant 5", "vxlan tenant 5 vlan 10\nno vxlan tenant 5"}) {
    EXPECT_EQ(printed_of(lines), "") << lines;
  }
}

TEST(VxlanLines, SettingsOfATenantAreTakenBackOneByOne) {
  const std::pair<const char *, const char *> rows[] = {
      {"vxlan tenant 5 vlan 10\nno vxlan tenant 5 vlan 10", "vxlan tenant 5\nvxlan tenant 5 remote-vteps\n"},
      {"vxlan tenant 5 vlan 10\nno vxlan tenant 5 remote-vteps", "vxlan tenant 5\nvxlan tenant 5 vlan 10\n"},
      {"vxlan tenant 5 vlan 10\nno vxlan tenant 5 remote-vteps\nno vxlan tenant 5 vlan 10",
       "vxlan tenant 5\n"},
      {"vxlan tenant 5\nvxlan tenant 5 remote-vteps\nvxlan tenant 5 vlan 10", "vxlan tenant 5 vlan 10\n"},
      {"vxlan tenant 5\nno vxlan tenant 5 remote-vteps", "vxlan tenant 5\n"},
      {"vxlan tenant 5 vlan 10\nvxlan tenant 5 multicast-group 239.1.1.1\nno vxlan tenant 5 multicast-group",
       "vxlan tenant 5 vlan 10\n"},
      {"vxlan tenant 5 vlan 10\nno vxlan tenant 5 multicast-group", "vxlan tenant 5 vlan 10\n"},
      {"vxlan tenant 5 vlan 10\nvxlan tenant 5", "vxlan tenant 5 vlan 10\n"},
      {"vxlan tenant 5 vlan 10\nvxlan tenant 5 vlan 10", "vxlan tenant 5 vlan 10\n"},
  };
  for (const auto &[lines, expected] : rows) EXPECT_EQ(printed_of(lines), expected) << lines;
}

TEST(VxlanLines, TenantsWithoutRemoteVtepsStaySoThroughAPrint) {
  EXPECT_EQ(printed_of("vxlan tenant 4 vlan 20\n"
                       "vxlan tenant 3\n"
                       "vxlan tenant 2 vlan 10\n"
                       "vxlan remote-vtep 10.0.0.2\n"
                       "vxlan remote-vtep 10.0.0.1\n"
                       "no vxlan tenant 2 remote-vteps\n"
                       "vxlan tenant 1\n"
                       "vxlan tenant 4 multicast-group 239.1.1.1\n"
                       "vxlan tenant 1 multicast-group 239.1.1.1\n"
                       "vxlan source-interface 0/1\n"
                       "vxlan udp-port 5000\n"
                       "vxlan mode multicast\n"),
            "vxlan mode multicast\n"
            "vxlan udp-port 5000\n"
            "vxlan source-interface 0/1\n"
            "vxlan remote-vtep 10.0.0.1\n"
            "vxlan remote-vtep 10.0.0.2\n"
            "vxlan tenant 1\n"
            "vxlan tenant 2\n"
            "vxlan tenant 3\n"
            "vxlan tenant 2 vlan 10\n"
            "vxlan tenant 4 vlan 20\n"
            "vxlan tenant 3 remote-vteps\n"
            "vxlan tenant 1 multicast-group 239.1.1.1\n"
            "vxlan tenant 4 multicast-group 239.1.1.1\n");
}

TEST(VxlanLines, NearMissesNameTheirReason) {
  const near_miss rows[] = {
      {"vxlan mode", OPEN_E_PARAM, "the line ends too early: unicast|multicast is missing"},
      {"vxlan mode off", OPEN_E_PARAM, "\"off\" is none of unicast|multicast"},
      {"no vxlan mode unicast", OPEN_E_PARAM, "\"unicast\" is not expected here"},
      {"vxlan udp-port 0", OPEN_E_PARAM, "UDP port out of range 1..65535"},
      {"vxlan udp-port 65536", OPEN_E_PARAM, "UDP port out of range 1..65535"},
      {"vxlan udp-port x", OPEN_E_PARAM, "\"x\" is not a number"},
      {"vxlan source-interface cpu", OPEN_E_UNAVAIL, "cpu cannot have IP addresses"},
      {"vxlan source-interface vlan10", OPEN_E_PARAM, "there is no interface \"vlan10\""},
      {"vxlan remote-vtep 239.1.1.1", OPEN_E_PARAM, "239.1.1.1 is not the address of a host"},
      {"vxlan remote-vtep 0.0.0.0", OPEN_E_PARAM, "0.0.0.0 is not the address of a host"},
      {"vxlan remote-vtep ::1", OPEN_E_PARAM, "\"::1\" is not an IPv4 address"},
      {"no vxlan remote-vtep 10.0.0.2", OPEN_E_NOT_FOUND, "10.0.0.2 is no remote VTEP"},
      {"vxlan multicast-group 224.0.0.255", OPEN_E_PARAM,
       "multicast group out of range 224.0.1.0..239.255.255.255"},
      {"vxlan multicast-group 240.0.0.0", OPEN_E_PARAM,
       "multicast group out of range 224.0.1.0..239.255.255.255"},
      {"vxlan multicast-group 0.0.0.0", OPEN_E_PARAM,
       "multicast group out of range 224.0.1.0..239.255.255.255"},
      {"vxlan multicast-group 239.0.0.2", OPEN_E_EXISTS,
       "239.0.0.2 is the multicast group of VXLAN tenant 5000"},
      {"vxlan tenant 0", OPEN_E_PARAM, "VXLAN tenant id out of range 1..16777214"},
      {"vxlan tenant 16777215", OPEN_E_PARAM, "VXLAN tenant id out of range 1..16777214"},
      {"vxlan tenant 16777215 vlan 10", OPEN_E_PARAM, "VXLAN tenant id out of range 1..16777214"},
      {"vxlan tenant 1 remote-vteps", OPEN_E_NOT_FOUND, "VXLAN tenant 1 does not exist"},
      {"no vxlan tenant 1 remote-vteps", OPEN_E_NOT_FOUND, "VXLAN tenant 1 does not exist"},
      {"no vxlan tenant 0 remote-vteps", OPEN_E_PARAM, "VXLAN tenant id out of range 1..16777214"},
      {"no vxlan tenant 1", OPEN_E_NOT_FOUND, "VXLAN tenant 1 does not exist"},
      {"no vxlan tenant 16777215", OPEN_E_PARAM, "VXLAN tenant id out of range 1..16777214"},
      {"vxlan tenant 7 vlan 40", OPEN_E_NOT_FOUND, "VLAN 40 does not exist"},
      {"vxlan tenant 7 vlan 4095", OPEN_E_PARAM, "VLAN id out of range 1..4094"},
      {"vxlan tenant 7 vlan 10,20", OPEN_E_PARAM, "\"10,20\" is not a VLAN id"},
      {"vxlan tenant 7 vlan 10", OPEN_E_FAIL, "VLAN 10 is bound to VXLAN tenant 5000"},
      {"vxlan tenant 8 vlan 10", OPEN_E_FAIL, "VLAN 10 is bound to VXLAN tenant 5000"},
      {"vxlan tenant 5000 vlan 20", OPEN_E_FAIL, "VLAN 10 is bound to VXLAN tenant 5000"},
      {"no vxlan tenant 5000 vlan 20", OPEN_E_NOT_FOUND, "VLAN 20 is not bound to VXLAN tenant 5000"},
      {"no vxlan tenant 1 vlan 10", OPEN_E_NOT_FOUND, "VXLAN tenant 1 does not exist"},
      {"vxlan tenant 7 multicast-group 239.0.0.1", OPEN_E_EXISTS, "239.0.0.1 is the default multicast group"},
      {"vxlan tenant 7 multicast-group 10.0.0.1", OPEN_E_PARAM,
       "multicast group out of range 224.0.1.0..239.255.255.255"},
      {"vxlan tenant 1 multicast-group 239.0.0.3", OPEN_E_NOT_FOUND, "VXLAN tenant 1 does not exist"},
      {"no vxlan tenant 1 multicast-group", OPEN_E_NOT_FOUND, "VXLAN tenant 1 does not exist"},
      {"no vlan 10", OPEN_E_FAIL, "VLAN 10 is bound to VXLAN tenant 5000"},
      {"no vlan 20,10", OPEN_E_FAIL, "VLAN 10 is bound to VXLAN tenant 5000"},
      {"vxlan tunnel", OPEN_E_PARAM, "\"tunnel\" is not expected here"},
  };
  expect_refused(prepared(), rows);
}

TEST(VxlanLines, OneModeIsTurnedOffBeforeTheOtherIsSet) {
  switch_model model = prepared();
  std::string error;
  ASSERT_EQ(apply_line(model, "vxlan mode unicast", &error), OPEN_E_NONE);
  EXPECT_EQ(apply_line(model, "vxlan mode multicast", &error), OPEN_E_FAIL);
  EXPECT_EQ(error, "the VXLAN mode is unicast: turn it off first");
  ASSERT_TRUE(apply_text(model, "no vxlan mode\nvxlan mode multicast\nvxlan mode multicast", &error));
  EXPECT_EQ(apply_line(model, "vxlan mode unicast", &error), OPEN_E_FAIL);
  EXPECT_EQ(error, "the VXLAN mode is multicast: turn it off first");
}

TEST(VxlanLines, FullTablesSayHowMuchThereIsRoomFor) {
  switch_model model = prepared();
  std::string error;
  ASSERT_TRUE(limit_override(&model.limits, "vxlan-tenants", 2));
  ASSERT_TRUE(limit_override(&model.limits, "remote-vteps", 1));
  EXPECT_EQ(apply_line(model, "vxlan tenant 8", &error), OPEN_E_FULL);
  EXPECT_EQ(error, "there is room for 2 VXLAN tenants only");
  EXPECT_EQ(apply_line(model, "vxlan tenant 8 vlan 20", &error), OPEN_E_FULL);
  EXPECT_EQ(error, "there is room for 2 VXLAN tenants only");
  EXPECT_EQ(apply_line(model, "vxlan remote-vtep 10.0.0.2", &error), OPEN_E_FULL);
  EXPECT_EQ(error, "there is room for 1 remote VTEPs only");
  EXPECT_EQ(apply_line(model, "vxlan tenant 7", &error), OPEN_E_NONE) << "what is there takes no room";
  EXPECT_EQ(apply_line(model, "vxlan remote-vtep 10.0.0.1", &error), OPEN_E_NONE);
}

TEST(VxlanLines, WhatIsTheSourceInterfaceIsSaidWhenItShallGo) {
  switch_model model = prepared();
  std::string error;
  ASSERT_TRUE(apply_text(model, "vlan 10 routing interface 226\nvxlan source-interface vlan10", &error))
      << error;
  EXPECT_EQ(apply_line(model, "no vlan 10 routing", &error), OPEN_E_FAIL);
  EXPECT_EQ(error, "vlan10 is the VXLAN source interface");
  ASSERT_EQ(apply_line(model, "vxlan source-interface 3/5", &error), OPEN_E_NONE);
  EXPECT_EQ(apply_line(model, "no lag 5", &error), OPEN_E_FAIL);
  EXPECT_EQ(error, "port-channel 5 is the VXLAN source interface");
  ASSERT_EQ(apply_line(model, "no vlan 10 routing", &error), OPEN_E_NONE) << error;
  ASSERT_EQ(apply_line(model, "no vxlan source-interface", &error), OPEN_E_NONE);
  EXPECT_EQ(apply_line(model, "no lag 5", &error), OPEN_E_NONE) << error;
}

/* A line that may or may not apply. Few tenants, VLANs and addresses, so that lines meet each other. */
std::string random_line(std::mt19937 &random) {
  static const char *const settings[] = {"mode unicast",
                                         "mode multicast",
                                         "udp-port 5000",
                                         "source-interface vlan2",
                                         "source-interface 3/64",
                                         "multicast-group 239.0.0.1",
                                         "multicast-group 239.0.0.2"};
  std::string vlan = std::to_string(1 + random() % 4);
  std::string tenant = "vxlan tenant " + std::to_string(1 + random() % 6);
  std::string no = random() % 3 == 0 ? "no " : "";
  switch (random() % 9) {
  case 0:
    return (random() % 6 == 0 ? "no vlan " : "vlan ") + vlan;
  case 1:
    return no + "vlan 2 routing";
  case 2:
    return std::string("vxlan ") + settings[random() % 7];
  case 3:
    return std::string("no vxlan ") + (random() % 2 ? "mode" : "source-interface");
  case 4:
    return no + "vxlan remote-vtep 10.0.0." + std::to_string(random() % 4);
  case 5:
    return no + tenant;
  case 6:
    return no + tenant + " vlan " + vlan;
  case 7:
    return no + tenant + " remote-vteps";
  default:
    return no.empty() ? tenant + " multicast-group 239.0.0." + std::to_string(1 + random() % 3)
                      : no + tenant + " multicast-group";
  }
}

TEST(VxlanLines, PrintAppliedToAFactorySwitchPrintsTheSame) {
  size_t most_tenants = 0;
  prints_come_back(100, 150, random_line, [&](const switch_model &model, const switch_model &again) {
    most_tenants = std::max(most_tenants, model.vxlan->tenants.size());
    for (const vxlan_tenant &tenant : model.vxlan->tenants) {
      const vxlan_tenant *found = vxlan_tenant_find(again, tenant.id);
      ASSERT_TRUE(found) << "tenant " << tenant.id;
      ASSERT_EQ(found->remote_vteps, tenant.remote_vteps) << "tenant " << tenant.id;
    }
  });
  EXPECT_EQ(most_tenants, 6u);
}

} // namespace
