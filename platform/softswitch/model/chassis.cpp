/* The chassis; see chassis.h. */
#include "platform/softswitch/model/chassis.h"

#include "platform/softswitch/model/switch.h"

namespace softswitch {

void chassis_make(switch_model &model) {
  chassis_table *chassis = model.chassis.edit();
  chassis->fans = model.profile->fans;
  chassis->power_supplies = model.profile->power_supplies;
  chassis->temperature_sensors = model.profile->temperature_sensors;
  for (const transceiver_profile &given : model.profile->transceivers)
    chassis->transceivers[interface_by_name(model, given.port)] = given.fitted;
}

OPEN_BOXS_TEMP_STATE_t sensor_state(const temperature_sensor &sensor) {
  if (sensor.state != sensor_state_auto) return static_cast<OPEN_BOXS_TEMP_STATE_t>(sensor.state);
  if (sensor.temperature >= sensor.shutdown) return OPEN_BOXS_TEMP_STATE_SHUTDOWN;
  if (sensor.temperature >= sensor.critical) return OPEN_BOXS_TEMP_STATE_CRITICAL;
  if (sensor.temperature >= sensor.warning) return OPEN_BOXS_TEMP_STATE_WARNING;
  return OPEN_BOXS_TEMP_STATE_NORMAL;
}

bool sensor_thresholds_rise(const temperature_sensor &sensor) {
  return sensor.warning < sensor.critical && sensor.critical < sensor.shutdown;
}

bool port_is_cage(const switch_model &model, uint32_t port) {
  return interface_is_port(model, port) && !model.profile->ports[port - port_first].copper;
}

const transceiver *transceiver_of_profile(const switch_model &model, uint32_t port) {
  for (const transceiver_profile &given : model.profile->transceivers) {
    if (given.port == interface_name(model, port)) return &given.fitted;
  }
  return nullptr;
}

} // namespace softswitch
