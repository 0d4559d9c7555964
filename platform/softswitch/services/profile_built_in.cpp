/* The built-in chassis; see profile.h. */
#include "platform/softswitch/services/profile.h"

namespace softswitch {

static std::vector<port_profile> built_in_ports() {
  std::vector<port_profile> ports;
  for (int number = 1; number <= 54; number++) {
    port_profile port;
    port.name = "0/" + std::to_string(number);
    port.speed_mbps = number <= 48 ? 10000 : 40000;
    ports.push_back(port);
  }
  return ports;
}

static temperature_sensor built_in_sensor(const char *description, int32_t temperature, int32_t warning) {
  return {description, temperature, sensor_state_auto, warning, warning + 10, warning + 20};
}

static constexpr struct {
  const char *port;
  OPEN_SFP_MODULE_TYPE_t module_type;
  const char *vendor_name, *vendor_revision;
  int32_t link_length_50um, link_length_62_5um;
  const char *serial_number, *part_number;
  int32_t nominal_signal_rate;
  const char *compliance;
} built_in_transceivers[] = {
    {"0/1", OPEN_SFP_TYPE_SFP_PLUS, "Sample Optics", "A1", 300, 33, "SO100001", "SO-10G-SR", 10300,
     "10GBASE-SR"},
    {"0/2", OPEN_SFP_TYPE_SFP_PLUS, "Sample Optics", "A1", 300, 33, "SO100002", "SO-10G-SR", 10300,
     "10GBASE-SR"},
    {"0/3", OPEN_SFP_TYPE_SFP_PLUS, "Sample Optics", "A1", 0, 0, "SO200001", "SO-10G-LR", 10300,
     "10GBASE-LR"},
    {"0/4", OPEN_SFP_TYPE_SFP, "Sample Optics", "A3", 550, 275, "SO300001", "SO-1G-SX", 1300, "1000BASE-SX"},
    {"0/5", OPEN_SFP_TYPE_DIRECT_ATTACH, "Sample Cables", "B2", 0, 0, "SC100001", "SC-10G-3M", 10300,
     "10GBASE-CR"},
    {"0/49", OPEN_SFP_TYPE_QSFP, "Sample Optics", "A1", 100, 0, "SO400001", "SO-40G-SR4", 41200,
     "40GBASE-SR4"},
    {"0/50", OPEN_SFP_TYPE_QSFP, "Sample Optics", "A2", 0, 0, "SO500001", "SO-40G-LR4", 41200, "40GBASE-LR4"},
    {"0/51", OPEN_SFP_TYPE_DIRECT_ATTACH, "Sample Cables", "B1", 0, 0, "SC400001", "SC-40G-1M", 41200,
     "40GBASE-CR4"},
};

static std::vector<transceiver_profile> built_in_transceiver_list() {
  std::vector<transceiver_profile> list;
  for (const auto &row : built_in_transceivers) {
    transceiver fitted = {static_cast<int32_t>(row.module_type),
                          row.vendor_name,
                          row.vendor_revision,
                          row.link_length_50um,
                          row.link_length_62_5um,
                          row.serial_number,
                          row.part_number,
                          row.nominal_signal_rate,
                          row.compliance};
    list.push_back({row.port, std::move(fitted)});
  }
  return list;
}

chassis_profile built_in_profile() {
  chassis_profile profile;
  profile.model = "Kestrel-Softswitch-54";
  profile.serial = "KS0000000001";
  profile.mac = "02:00:5E:10:00:01";
  profile.description = "Kestrel software switch, 48 x 10G SFP+ and 6 x 40G QSFP";
  profile.os_version = "0.1.0";
  profile.storage = "flash";
  profile.ports = built_in_ports();
  profile.fans.resize(5);
  profile.power_supplies.resize(2);
  profile.temperature_sensors = {
      built_in_sensor("Switch chip", 52, 85),
      built_in_sensor("Processor", 44, 75),
      built_in_sensor("Air inlet", 24, 45),
      built_in_sensor("Air outlet", 36, 65),
  };
  profile.transceivers = built_in_transceiver_list();
  return profile;
}

} // namespace softswitch
