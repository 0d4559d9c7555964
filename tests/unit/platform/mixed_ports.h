/* A switch with ports of every kind, for tests of what depends on it: copper and cages of each speed. */
#ifndef KESTREL_TESTS_MIXED_PORTS_H
#define KESTREL_TESTS_MIXED_PORTS_H

#include "tests/unit/platform/softswitch_test_support.h"

inline constexpr char mixed_ports_profile[] = R"({"mac": "02:00:5E:FF:FF:F0", "ports": [
  {"name": "0/1", "speed_mbps": 100, "copper": true},
  {"name": "0/2", "speed_mbps": 1000, "copper": true},
  {"name": "0/3", "speed_mbps": 10000, "copper": true},
  {"name": "0/4", "speed_mbps": 40000, "copper": true},
  {"name": "0/5", "speed_mbps": 100},
  {"name": "0/6", "speed_mbps": 1000},
  {"name": "0/7", "speed_mbps": 10000},
  {"name": "0/8", "speed_mbps": 40000},
  {"name": "0/9", "speed_mbps": 1000, "copper": true, "cabled": false}]})";

/* That switch as a model. */
inline softswitch::switch_model mixed_ports_model() {
  softswitch::chassis_profile profile;
  std::string error;
  EXPECT_TRUE(softswitch::parse_profile(mixed_ports_profile, "profile", &profile, &error)) << error;
  return softswitch::make_switch(profile);
}

/* That switch running. Beyond the ports, which are 1..9, it has the CPU interface 55, LAGs from 56, loopbacks
 * from 120, and here a routing interface of VLAN 1, which is 226. */
class MixedPorts : public SoftSwitch {
protected:
  void SetUp() override {
    write_file(dir.path + "/profile.json", mixed_ports_profile);
    setenv("KESTREL_PROFILE", (dir.path + "/profile.json").c_str(), 1);
    write_file(dir.path + "/startup-config", routed_vlan);
    SoftSwitch::SetUp();
    softswitch::set_limit("settle-milliseconds", 0);
  }

  /* The running configuration without what every test begins with. */
  static std::string configured() {
    std::string all = softswitch::running_config();
    EXPECT_TRUE(all.starts_with(routed_vlan)) << all;
    return all.substr(routed_vlan.size());
  }

  inline static const std::string routed_vlan = "vlan 1 routing interface 226\n";
};

#endif
