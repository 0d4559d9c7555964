/* Lab control of the chassis and the identity. Settings are the fields of chassis_fields.h, with hyphens
 * where those have underscores: "duty-cycle 60". A command changes all that it names or nothing. */
#include "platform/softswitch/services/lab_commands.h"

#include "platform/softswitch/config/tokens.h"
#include "platform/softswitch/model/chassis_fields.h"
#include "platform/softswitch/softswitch.h"

#include <optional>

namespace softswitch {

/* --- Settings ------------------------------------------------------------------------------------------- */

/* The name of a field as commands have it. */
template <class item> static std::string setting_name(const chassis_field<item> &field) {
  std::string name(field.name);
  std::replace(name.begin(), name.end(), '_', '-');
  return name;
}

/* Numbers that words stand for may be given themselves, also those that no word stands for: what a client
 * makes of a state that it does not know can be seen so. */
static constexpr int32_t unnamed_max = 255;

template <class item>
static bool set_from_word(const chassis_field<item> &field, std::string_view word, item *target) {
  if (field_set_text(field, word, target)) return true;
  int32_t number;
  if (!field.number || !number_from_text(word, INT32_MAX, &number)) return false;
  if (field.rule.what == field_rule::kind::number) return field_set_number(field, number, target);
  bool good = number >= 0 && number <= unnamed_max;
  if (good) target->*field.number = number;
  return good;
}

/* Changes an item by the settings and values from `at` on. How that was refused, if it was; the item may then
 * be half changed. */
template <class item>
static std::optional<lab_outcome> apply_settings(const command_row &row, const arguments &given, size_t at,
                                                 std::span<const chassis_field<item>> fields, item *target) {
  if ((given.size() - at) % 2 != 0) return misused(row);
  for (; at < given.size(); at += 2) {
    auto field = std::find_if(fields.begin(), fields.end(),
                              [&](const auto &each) { return setting_name(each) == given[at]; });
    if (field == fields.end()) return refused("there is no setting \"" + std::string(given[at]) + "\"");
    if (!set_from_word(*field, given[at + 1], target))
      return refused(setting_name(*field) + " " + rule_reason(field->rule));
  }
  return std::nullopt;
}

/* All settings of an item with their values, as a command takes them. */
template <class item>
static std::string settings_text(std::span<const chassis_field<item>> fields, const item &of) {
  std::string text;
  for (const auto &field : fields)
    text += " " + setting_name(field) + " " + quote_token(field_text(field, of));
  return text + "\n";
}

/* --- Fans, power supplies, temperature sensors ---------------------------------------------------------- */

/* What an item as a whole breaks, null when nothing. */
template <class item> static const char *broken_rule(const item &) {
  return nullptr;
}

static const char *broken_rule(const temperature_sensor &sensor) {
  return sensor_thresholds_rise(sensor) ? nullptr : thresholds_rule;
}

/* Changes the item of a list that the first argument numbers, from 1. */
template <class item>
static lab_outcome change_item(const command_row &row, const arguments &given,
                               std::vector<item> chassis_table::*list,
                               std::span<const chassis_field<item>> fields) {
  uint32_t number;
  if (!number_from_text(given[0], UINT32_MAX, &number)) return misused(row);
  locked_switch sw;
  const std::vector<item> &items = (*sw->chassis).*list;
  if (number < 1 || number > items.size())
    return refused("there is no " + std::string(row.words) + " " + std::to_string(number));
  item changed = items[number - 1];
  if (auto refusal = apply_settings(row, given, 1, fields, &changed)) return *refusal;
  if (const char *rule = broken_rule(changed)) return refused("the " + std::string(row.words) + " " + rule);
  (sw->chassis.edit()->*list)[number - 1] = changed;
  return done();
}

lab_outcome change_fan(const command_row &row, const arguments &given) {
  return change_item(row, given, &chassis_table::fans, fan_fields);
}

lab_outcome change_power_supply(const command_row &row, const arguments &given) {
  return change_item(row, given, &chassis_table::power_supplies, power_supply_fields);
}

lab_outcome change_temperature_sensor(const command_row &row, const arguments &given) {
  return change_item(row, given, &chassis_table::temperature_sensors, temperature_sensor_fields);
}

/* --- Transceivers and identity -------------------------------------------------------------------------- */

static lab_outcome no_cage(std::string_view port) {
  return refused("there is no transceiver cage \"" + std::string(port) + "\"");
}

lab_outcome put_transceiver_in(const command_row &row, const arguments &given) {
  locked_switch sw;
  uint32_t port = interface_by_name(*sw, given[0]);
  if (!port_is_cage(*sw, port)) return no_cage(given[0]);
  const transceiver *own = transceiver_of_profile(*sw, port);
  transceiver fitted = own ? *own : transceiver();
  if (auto refusal = apply_settings(row, given, 1, transceiver_fields, &fitted)) return *refusal;
  sw->chassis.edit()->transceivers[port] = fitted;
  return done();
}

lab_outcome take_transceiver_out(const command_row &, const arguments &given) {
  locked_switch sw;
  uint32_t port = interface_by_name(*sw, given[0]);
  if (!port_is_cage(*sw, port)) return no_cage(given[0]);
  sw->chassis.edit()->transceivers.erase(port);
  return done();
}

lab_outcome change_identity(const command_row &row, const arguments &given) {
  locked_switch sw;
  chassis_profile changed = *sw->profile;
  if (auto refusal = apply_settings(row, given, 0, identity_fields, &changed)) return *refusal;
  sw->profile = std::make_shared<const chassis_profile>(std::move(changed));
  return done();
}

/* --- The list ------------------------------------------------------------------------------------------- */

template <class item>
static std::string list_text(const char *command, const std::vector<item> &list,
                             std::span<const chassis_field<item>> fields) {
  std::string text;
  for (size_t i = 0; i < list.size(); i++)
    text += std::string(command) + " " + std::to_string(i + 1) + settings_text(fields, list[i]);
  return text;
}

lab_outcome show_chassis(const command_row &, const arguments &) {
  locked_switch sw;
  const chassis_table &chassis = *sw->chassis;
  std::string text = "identity" + settings_text(identity_fields, *sw->profile) +
                     list_text("fan", chassis.fans, fan_fields) +
                     list_text("power-supply", chassis.power_supplies, power_supply_fields) +
                     list_text("temperature-sensor", chassis.temperature_sensors, temperature_sensor_fields);
  for (const auto &[port, fitted] : chassis.transceivers)
    text += "transceiver in " + interface_name(*sw, port) + settings_text(transceiver_fields, fitted);
  return done(std::move(text));
}

} // namespace softswitch
