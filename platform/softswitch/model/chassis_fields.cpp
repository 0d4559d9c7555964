/* The fields of the chassis; see chassis_fields.h. */
#include "platform/softswitch/model/chassis_fields.h"

#include "platform/softswitch/model/mac_address.h"
#include "platform/softswitch/model/text.h"

namespace softswitch {

/* --- Rules ---------------------------------------------------------------------------------------------- */

static constexpr chassis_word item_types[] = {
    {"none", OPEN_BOXS_ITEM_TYPE_NONE},
    {"fixed", OPEN_BOXS_ITEM_TYPE_FIXED},
    {"removable", OPEN_BOXS_ITEM_TYPE_REMOVABLE},
};

static constexpr chassis_word item_states[] = {
    {"none", OPEN_BOXS_ITEM_STATE_NONE},
    {"not-present", OPEN_BOXS_ITEM_STATE_NOT_PRESENT},
    {"operational", OPEN_BOXS_ITEM_STATE_OPERATIONAL},
    {"failed", OPEN_BOXS_ITEM_STATE_FAILED},
    {"powering", OPEN_BOXS_ITEM_STATE_POWERING},
    {"not-powered", OPEN_BOXS_ITEM_STATE_NOT_POWERED},
    {"not-powering", OPEN_BOXS_ITEM_STATE_NOT_POWERING},
    {"incompatible", OPEN_BOXS_ITEM_STATE_INCOMPATIBLE},
};

static constexpr chassis_word sensor_states[] = {
    {"auto", sensor_state_auto},
    {"none", OPEN_BOXS_TEMP_STATE_NONE},
    {"normal", OPEN_BOXS_TEMP_STATE_NORMAL},
    {"warning", OPEN_BOXS_TEMP_STATE_WARNING},
    {"critical", OPEN_BOXS_TEMP_STATE_CRITICAL},
    {"shutdown", OPEN_BOXS_TEMP_STATE_SHUTDOWN},
    {"not-present", OPEN_BOXS_TEMP_STATE_NOT_PRESENT},
    {"not-operational", OPEN_BOXS_TEMP_STATE_NOT_OPERATIONAL},
};

static constexpr chassis_word module_types[] = {
    {"none", OPEN_SFP_TYPE_NONE},
    {"SFP", OPEN_SFP_TYPE_SFP},
    {"SFP+", OPEN_SFP_TYPE_SFP_PLUS},
    {"QSFP", OPEN_SFP_TYPE_QSFP},
    {"direct-attach", OPEN_SFP_TYPE_DIRECT_ATTACH},
    {"XFP-module", OPEN_SFP_TYPE_XFP_MODULE},
    {"stacking-module", OPEN_SFP_TYPE_STACKING_MODULE},
    {"SFP+-module", OPEN_SFP_TYPE_SFP_PLUS_MODULE},
    {"CX4-module", OPEN_SFP_TYPE_CX4_MODULE},
    {"copper-module", OPEN_SFP_TYPE_COPPER_MODULE},
};

using kind = field_rule::kind;
static constexpr field_rule item_type = {kind::word, 0, 0, item_types};
static constexpr field_rule item_state = {kind::word, 0, 0, item_states};
static constexpr field_rule sensor_state_rule = {kind::word, 0, 0, sensor_states};
static constexpr field_rule module_type = {kind::word, 0, 0, module_types};
static constexpr field_rule revolutions = {kind::number, 0, 100000, {}};
static constexpr field_rule percent = {kind::number, 0, 100, {}};
static constexpr field_rule celsius = {kind::number, -100, 300, {}};
static constexpr field_rule metres = {kind::number, 0, 100000, {}};
static constexpr field_rule megabits = {kind::number, 0, 1000000, {}};
static constexpr field_rule short_text = {kind::text, 0, chassis_text_max, {}};
/* Texts of the identity go out through 256-byte buffers, terminator included. */
static constexpr field_rule identity_text = {kind::text, 1, 255, {}};
static constexpr field_rule station_mac = {kind::mac, 0, 0, {}};

/* --- Fields --------------------------------------------------------------------------------------------- */

static constexpr chassis_field<fan> fan_rows[] = {
    {"type", item_type, &fan::type},
    {"state", item_state, &fan::state},
    {"speed", revolutions, &fan::speed},
    {"duty_cycle", percent, &fan::duty_cycle},
};

static constexpr chassis_field<power_supply> power_supply_rows[] = {
    {"type", item_type, &power_supply::type},
    {"state", item_state, &power_supply::state},
};

static constexpr chassis_field<temperature_sensor> temperature_sensor_rows[] = {
    {"description", short_text, &temperature_sensor::description},
    {"temperature", celsius, &temperature_sensor::temperature},
    {"state", sensor_state_rule, &temperature_sensor::state},
    {"warning", celsius, &temperature_sensor::warning},
    {"critical", celsius, &temperature_sensor::critical},
    {"shutdown", celsius, &temperature_sensor::shutdown},
};

static constexpr chassis_field<transceiver> transceiver_rows[] = {
    {"module_type", module_type, &transceiver::module_type},
    {"vendor_name", short_text, &transceiver::vendor_name},
    {"vendor_revision", short_text, &transceiver::vendor_revision},
    {"link_length_50um", metres, &transceiver::link_length_50um},
    {"link_length_62_5um", metres, &transceiver::link_length_62_5um},
    {"serial_number", short_text, &transceiver::serial_number},
    {"part_number", short_text, &transceiver::part_number},
    {"nominal_signal_rate", megabits, &transceiver::nominal_signal_rate},
    {"compliance", short_text, &transceiver::compliance},
};

static constexpr chassis_field<chassis_profile> identity_rows[] = {
    {"model", identity_text, &chassis_profile::model},
    {"serial", identity_text, &chassis_profile::serial},
    {"mac", station_mac, &chassis_profile::mac},
    {"description", identity_text, &chassis_profile::description},
    {"os_version", identity_text, &chassis_profile::os_version},
    {"storage", identity_text, &chassis_profile::storage},
};

const std::span<const chassis_field<fan>> fan_fields = fan_rows;
const std::span<const chassis_field<power_supply>> power_supply_fields = power_supply_rows;
const std::span<const chassis_field<temperature_sensor>> temperature_sensor_fields = temperature_sensor_rows;
const std::span<const chassis_field<transceiver>> transceiver_fields = transceiver_rows;
const std::span<const chassis_field<chassis_profile>> identity_fields = identity_rows;

/* --- Values --------------------------------------------------------------------------------------------- */

static std::string word_list(std::span<const chassis_word> words) {
  std::string list;
  for (const chassis_word &row : words) {
    if (&row != &words.front()) list += &row == &words.back() ? " or " : ", ";
    list += "\"" + std::string(row.word) + "\"";
  }
  return list;
}

std::string rule_reason(const field_rule &rule) {
  std::string range = std::to_string(rule.min) + " to " + std::to_string(rule.max);
  switch (rule.what) {
  case kind::number:
    return "must be a number from " + range;
  case kind::word:
    return "must be " + word_list(rule.words);
  case kind::text:
    return "must be a text of " + range + " bytes of UTF-8 without control characters";
  case kind::mac:
    break;
  }
  return "must be a station's MAC address like \"02:00:5E:10:00:01\"";
}

bool rule_read_text(const field_rule &rule, std::string_view given, std::string *text) {
  mac_address mac;
  if (rule.what == kind::mac) {
    bool good = station_mac_read(given, &mac);
    if (good) *text = mac_text(mac);
    return good;
  }
  auto size = static_cast<int32_t>(std::min<size_t>(given.size(), INT32_MAX));
  bool good = size >= rule.min && size <= rule.max && !has_control_character(given) && utf8_valid(given);
  if (good) *text = given;
  return good;
}

bool rule_read_word(const field_rule &rule, std::string_view given, int32_t *number) {
  for (const chassis_word &row : rule.words) {
    if (row.word != given) continue;
    *number = row.value;
    return true;
  }
  return false;
}

std::string rule_number_text(const field_rule &rule, int32_t number) {
  for (const chassis_word &row : rule.words) {
    if (row.value == number) return std::string(row.word);
  }
  return std::to_string(number);
}

} // namespace softswitch
