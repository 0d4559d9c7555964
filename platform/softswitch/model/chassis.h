/* The chassis: fans, power supplies, temperature sensors and the transceivers in the ports, as they are now.
 * The profile says what there is at start, lab control changes it: like cables it is no configuration. What
 * the members may hold is said by the tables of chassis_fields.h. */
#ifndef KESTREL_SOFTSWITCH_MODEL_CHASSIS_H
#define KESTREL_SOFTSWITCH_MODEL_CHASSIS_H

#include "platform/api/openapi_boxs.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace softswitch {

struct switch_model;

inline constexpr size_t fans_max = 32;
inline constexpr size_t power_supplies_max = 8;
inline constexpr size_t temperature_sensors_max = 32;
/* Bytes of a sensor's description and of each text of a transceiver. */
inline constexpr size_t chassis_text_max = 64;

struct fan {
  int32_t type = OPEN_BOXS_ITEM_TYPE_REMOVABLE;     /* OPEN_BOXS_ITEM_TYPE_t */
  int32_t state = OPEN_BOXS_ITEM_STATE_OPERATIONAL; /* OPEN_BOXS_ITEM_STATE_t */
  int32_t speed = 7200;                             /* revolutions per minute */
  int32_t duty_cycle = 45;                          /* percent */
};

struct power_supply {
  int32_t type = OPEN_BOXS_ITEM_TYPE_REMOVABLE;     /* OPEN_BOXS_ITEM_TYPE_t */
  int32_t state = OPEN_BOXS_ITEM_STATE_OPERATIONAL; /* OPEN_BOXS_ITEM_STATE_t */
};

/* A sensor's state that follows from its temperature. */
inline constexpr int32_t sensor_state_auto = -1;

/* Temperatures are in degrees Celsius. */
struct temperature_sensor {
  std::string description;
  int32_t temperature = 40;
  int32_t state = sensor_state_auto; /* that, or an OPEN_BOXS_TEMP_STATE_t */
  int32_t warning = 70;              /* from here on the state is "warning", ... */
  int32_t critical = 80;
  int32_t shutdown = 90;
};

struct transceiver {
  int32_t module_type = OPEN_SFP_TYPE_SFP_PLUS; /* OPEN_SFP_MODULE_TYPE_t */
  std::string vendor_name;
  std::string vendor_revision;
  int32_t link_length_50um = 0; /* metres of 50 and of 62.5 micrometre multi-mode fibre; 0 = not for it */
  int32_t link_length_62_5um = 0;
  std::string serial_number;
  std::string part_number;
  int32_t nominal_signal_rate = 0; /* megabits per second */
  std::string compliance;          /* "10GBASE-SR" */
};

struct chassis_table {
  std::vector<fan> fans;
  std::vector<power_supply> power_supplies;
  std::vector<temperature_sensor> temperature_sensors;
  std::map<uint32_t, transceiver> transceivers; /* by the number of the port that it is in */
};

/* Fills a new model with what the profile has. */
void chassis_make(switch_model &model);

/* The state that a sensor reports, OPEN_BOXS_TEMP_STATE_t. */
OPEN_BOXS_TEMP_STATE_t sensor_state(const temperature_sensor &sensor);
/* Whether the thresholds rise from warning to shutdown, and what a sensor is refused with when they do not.
 */
bool sensor_thresholds_rise(const temperature_sensor &sensor);
inline constexpr char thresholds_rule[] =
    "must have thresholds that rise from warning to critical to shutdown";

/* Whether a transceiver can be put in: a port that is no copper connector. */
bool port_is_cage(const switch_model &model, uint32_t port);
/* The transceiver that the profile has for a port; null when it has none. */
const transceiver *transceiver_of_profile(const switch_model &model, uint32_t port);

} // namespace softswitch

#endif
