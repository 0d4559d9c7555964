/* What may be said of the members of the chassis: one table of fields per noun, a row for each member with
 * its name, where it is kept and what it may be. The profile is read by these tables, lab control changes and
 * lists by them, so that all three know the same names, words and limits. */
#ifndef KESTREL_SOFTSWITCH_MODEL_CHASSIS_FIELDS_H
#define KESTREL_SOFTSWITCH_MODEL_CHASSIS_FIELDS_H

#include "platform/softswitch/services/profile.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

namespace softswitch {

/* A word and the number that it stands for. */
struct chassis_word {
  std::string_view word;
  int32_t value;
};

/* What the value of a field may be. */
struct field_rule {
  enum class kind { number, word, text, mac } what;
  int32_t min, max;                    /* numbers: the range; texts: how many bytes */
  std::span<const chassis_word> words; /* words: all there are */
};

/* A member of an item: a number, which `rule` may spell as a word, or a text. */
template <class item> struct chassis_field {
  std::string_view name; /* "duty_cycle" in the profile, "duty-cycle" in lab control */
  const field_rule &rule;
  int32_t item::*number;
  std::string item::*text;

  constexpr chassis_field(std::string_view called, const field_rule &may, int32_t item::*kept)
      : name(called), rule(may), number(kept), text(nullptr) {}
  constexpr chassis_field(std::string_view called, const field_rule &may, std::string item::*kept)
      : name(called), rule(may), number(nullptr), text(kept) {}
};

extern const std::span<const chassis_field<fan>> fan_fields;
extern const std::span<const chassis_field<power_supply>> power_supply_fields;
extern const std::span<const chassis_field<temperature_sensor>> temperature_sensor_fields;
extern const std::span<const chassis_field<transceiver>> transceiver_fields;
/* The identity of the switch. */
extern const std::span<const chassis_field<chassis_profile>> identity_fields;

/* What a value that breaks a rule is refused with: "must be a number from 0 to 100". */
std::string rule_reason(const field_rule &rule);

/* Reads a text by a rule of texts, texts that are MAC addresses included; false when it breaks the rule. */
bool rule_read_text(const field_rule &rule, std::string_view given, std::string *text);
/* Reads a word; false for one that the rule does not know. */
bool rule_read_word(const field_rule &rule, std::string_view given, int32_t *number);
/* The number as a rule of words or numbers spells it. One that no word stands for is given in digits. */
std::string rule_number_text(const field_rule &rule, int32_t number);

/* Sets a field that is a number; false, with nothing changed, when it is none or out of range. */
template <class item> bool field_set_number(const chassis_field<item> &field, int64_t number, item *target) {
  bool good =
      field.rule.what == field_rule::kind::number && number >= field.rule.min && number <= field.rule.max;
  if (good) target->*field.number = static_cast<int32_t>(number);
  return good;
}

/* Sets a field that is a word or a text; false, with nothing changed, when it is none or breaks the rule. */
template <class item>
bool field_set_text(const chassis_field<item> &field, std::string_view text, item *target) {
  if (field.number) return rule_read_word(field.rule, text, &(target->*field.number));
  return rule_read_text(field.rule, text, &(target->*field.text));
}

/* The value of a field as it is written. */
template <class item> std::string field_text(const chassis_field<item> &field, const item &from) {
  return field.number ? rule_number_text(field.rule, from.*field.number) : from.*field.text;
}

} // namespace softswitch

#endif
