#include "tools/kestrelctl/variables.h"

#include "tools/kestrelctl/text.h"

#include <algorithm>
#include <charconv>

std::vector<const api_parameter *> variables_of(const api_operation &operation) {
  std::vector<const api_parameter *> found;
  for (const api_parameter &parameter : operation.parameters) {
    const bool added_by_us = parameter.name == "sessionkey" || parameter.name == "format";
    if (!parameter.in_uri && !added_by_us) found.push_back(&parameter);
  }
  return found;
}

static const api_parameter *find_variable(const std::vector<const api_parameter *> &known,
                                          std::string_view name) {
  for (const api_parameter *variable : known)
    if (variable->name == name) return variable;
  return nullptr;
}

static bool is_given(const std::vector<request_variable> &given, const std::string &name) {
  return std::any_of(given.begin(), given.end(), [&](const request_variable &v) { return v.name == name; });
}

/* The name in front of a "=": letters, digits, "_" and "-" only, as anything else is no name and so part of a
 * value.
 */
static std::string_view name_in(std::string_view word) {
  const std::string_view name = word.substr(0, word.find('='));
  if (name.size() == word.size() || name.empty()) return {};
  static const char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-";
  return name.find_first_not_of(letters) == name.npos ? name : std::string_view{};
}

static std::string names_of(const std::vector<const api_parameter *> &variables) {
  std::vector<std::string> names;
  for (const api_parameter *variable : variables) names.push_back(variable->name);
  return joined(names, ", ");
}

/* Takes the words of the form name=value; the others are left in *bare. */
static bool take_named(const std::vector<const api_parameter *> &known, const std::vector<std::string> &words,
                       std::vector<request_variable> *out, std::vector<std::string> *bare,
                       std::string *complaint) {
  for (const std::string &word : words) {
    const std::string name(name_in(word));
    if (name.empty()) {
      bare->push_back(word);
      continue;
    }
    const api_parameter *variable = find_variable(known, name);
    if (variable == nullptr) {
      *complaint = "unknown variable \"" + printable(name) + "\"";
      if (!known.empty()) *complaint += "; there are: " + names_of(known);
      if (known.size() == 1) *complaint += " (to give it a text with \"=\": " + known[0]->name + "=...)";
      return false;
    }
    if (is_given(*out, name)) return *complaint = "variable \"" + name + "\" is given twice", false;
    out->push_back({name, sent_value(*variable, word.substr(name.size() + 1))});
  }
  return true;
}

static std::string unexpected(const std::string &word, const std::vector<const api_parameter *> &known) {
  const std::string complaint = "\"" + printable(word) + "\" is not expected";
  return known.empty() ? complaint + ", as there are no variables"
                       : complaint + "; a text with blanks needs quotes";
}

bool assign_variables(const api_operation &operation, const std::vector<std::string> &words,
                      std::vector<request_variable> *out, std::string *complaint) {
  const std::vector<const api_parameter *> known = variables_of(operation);
  std::vector<std::string> bare;
  if (!take_named(known, words, out, &bare, complaint)) return false;
  std::vector<const api_parameter *> missing;
  for (const api_parameter *variable : known)
    if (variable->required && !is_given(*out, variable->name)) missing.push_back(variable);
  if (bare.size() > missing.size()) return *complaint = unexpected(bare[missing.size()], known), false;
  if (!bare.empty() && bare.size() < missing.size())
    return *complaint = "it is not clear which variable \"" + printable(bare[0]) + "\" is for", false;
  if (bare.empty() && !missing.empty()) return *complaint = names_of(missing) + " missing", false;
  for (size_t i = 0; i < bare.size(); i++)
    out->push_back({missing[i]->name, sent_value(*missing[i], bare[i])});
  return true;
}

static std::string_view without_article(std::string_view meaning) {
  return meaning.starts_with("the ") ? meaning.substr(4) : meaning;
}

std::string sent_value(const api_parameter &parameter, const std::string &text) {
  const auto &choices = parameter.choices;
  const auto is_value = [&](const parameter_choice &choice) { return choice.value == text; };
  if (std::any_of(choices.begin(), choices.end(), is_value)) return text;
  for (const parameter_choice &choice : choices)
    if (!choice.meaning.empty() && equal_without_case(choice.meaning, text)) return choice.value;
  const std::string_view special = without_article(parameter.special_meaning);
  if (parameter.special && !special.empty() && equal_without_case(special, text))
    return std::to_string(*parameter.special);
  return text;
}

/* Characters, not bytes: those that go on with a character of UTF-8 do not count. */
static size_t character_count(std::string_view text) {
  return static_cast<size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xc0) != 0x80; }));
}

static bool is_documented_integer(const api_parameter &parameter, const std::string &value) {
  int64_t number = 0;
  const char *end = value.data() + value.size();
  const auto [stopped, error] = std::from_chars(value.data(), end, number);
  if (error != std::errc() || stopped != end) return false;
  if (parameter.special && number == *parameter.special) return true;
  return number >= parameter.minimum.value_or(INT64_MIN) && number <= parameter.maximum.value_or(INT64_MAX);
}

static bool is_documented(const api_parameter &parameter, const std::string &value) {
  const size_t length = character_count(value);
  switch (parameter.kind) {
  case parameter_kind::INTEGER:
    return is_documented_integer(parameter, value);
  case parameter_kind::CHOICE:
    return std::any_of(parameter.choices.begin(), parameter.choices.end(),
                       [&](const parameter_choice &choice) { return choice.value == value; });
  case parameter_kind::TEXT:
    return length >= parameter.min_length && (parameter.max_length == 0 || length <= parameter.max_length);
  }
  return true;
}

std::string doubt_about(const api_parameter &parameter, const std::string &value) {
  if (is_documented(parameter, value)) return "";
  std::string range = parameter.range;
  if (range.starts_with('[') && range.ends_with(']')) range = range.substr(1, range.size() - 2);
  return parameter.name + ": " + range;
}
