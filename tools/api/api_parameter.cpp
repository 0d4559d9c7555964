/* A description has the form `Optional. Sentences, in the URI. [Integer from 1 to 4094]`, of which "Optional.
 * " and ", in the URI" may be missing. */
#include "tools/api/api_parameter.h"

#include "tools/api/text_forms.h"

#include <charconv>

/* --- Pieces of a text ---------------------------------------------------------------------------------- */

/* Take something from the beginning of a text; when it is not there, the text stays as it was. */
static bool take(std::string_view *text, std::string_view words) {
  if (!text->starts_with(words)) return false;
  text->remove_prefix(words.size());
  return true;
}

template <typename number_t> static bool take_number(std::string_view *text, number_t *number) {
  const char *begin = text->data();
  const auto [end, error] = std::from_chars(begin, begin + text->size(), *number);
  if (error != std::errc()) return false;
  text->remove_prefix(static_cast<size_t>(end - begin));
  return true;
}

/* The same from its end. */
static bool take_end(std::string_view *text, std::string_view words) {
  if (!text->ends_with(words)) return false;
  text->remove_suffix(words.size());
  return true;
}

/* --- Brackets ------------------------------------------------------------------------------------------ */

/* Behind "Integer from ": "1 to 160", or "1 to 160, or -1 for the default". */
static bool read_integer_range(std::string_view text, api_parameter *parameter) {
  int64_t minimum = 0, maximum = 0, special = 0;
  if (!take_number(&text, &minimum) || !take(&text, " to ") || !take_number(&text, &maximum)) return false;
  if (minimum > maximum) return false;
  parameter->minimum = minimum;
  parameter->maximum = maximum;
  if (text.empty()) return true;
  if (!take(&text, ", or ") || !take_number(&text, &special) || !take(&text, " for ")) return false;
  parameter->special = special;
  parameter->special_meaning = text;
  return !text.empty() && (special < minimum || special > maximum);
}

/* Behind "String ": "up to 32 characters", "from 2 to 32 characters" or "of 32 characters". */
static bool read_length(std::string_view text, api_parameter *parameter) {
  unsigned minimum = 0, maximum = 0;
  if (!take_end(&text, " characters")) return false;
  if (take(&text, "up to ")) {
    if (!take_number(&text, &maximum)) return false;
  } else if (take(&text, "from ")) {
    if (!take_number(&text, &minimum) || !take(&text, " to ") || !take_number(&text, &maximum)) return false;
  } else if (take(&text, "of ")) {
    if (!take_number(&text, &maximum)) return false;
    minimum = maximum;
  }
  parameter->min_length = minimum;
  parameter->max_length = maximum;
  return text.empty() && minimum <= maximum && maximum > 0;
}

static bool is_interface_number(std::string_view text) {
  return text == "Interface number" || text == "Interface number of a port" ||
         text == "Interface number of a port or LAG";
}

/* What stands between "[" and "]". */
static std::string read_type(std::string_view text, api_parameter *parameter) {
  bool right;
  if (take(&text, "Integer from ")) {
    parameter->kind = parameter_kind::INTEGER;
    right = read_integer_range(text, parameter);
  } else if (is_interface_number(text)) {
    parameter->kind = parameter_kind::INTEGER;
    right = true;
  } else {
    parameter->kind = parameter_kind::TEXT;
    right = find_text_form(parameter->range) != nullptr ||
            (take(&text, "String ") && read_length(text, parameter));
  }
  return right ? "" : "the bracket has no known form";
}

/* Values differ from each other, meanings too, and either all values have one or none. */
static std::string check_choices(const std::vector<parameter_choice> &choices) {
  for (const parameter_choice &choice : choices) {
    if (choice.value.empty()) return "a choice is empty";
    if (choice.value.find(' ') != std::string::npos) return "the value of a choice holds a blank";
    if (choice.meaning.empty() != choices[0].meaning.empty()) return "only some choices have a meaning";
    for (const parameter_choice *other = &choices[0]; other != &choice; ++other) {
      if (choice.value == other->value) return "a choice stands twice";
      if (!choice.meaning.empty() && choice.meaning == other->meaning) return "two choices mean the same";
    }
  }
  return "";
}

/* What stands between "{" and "}": "xml | json" or "0 = disable | 1 = enable". */
static std::string read_choices(std::string_view text, api_parameter *parameter) {
  parameter->kind = parameter_kind::CHOICE;
  for (bool more = true; more;) {
    const size_t bar = text.find(" | ");
    const std::string_view choice = text.substr(0, bar);
    const size_t equals = choice.find(" = ");
    const bool has_meaning = equals != std::string_view::npos;
    if (has_meaning && equals + 3 == choice.size()) return "a choice has an empty meaning";
    parameter->choices.push_back(
        {std::string(choice.substr(0, equals)), std::string(has_meaning ? choice.substr(equals + 3) : "")});
    more = bar != std::string_view::npos;
    if (more) text.remove_prefix(bar + 3);
  }
  return check_choices(parameter->choices);
}

/* --- The whole ----------------------------------------------------------------------------------------- */

static bool begins_like_a_sentence(std::string_view text) {
  if (text.empty() || text == "Optional" || text.back() == ' ') return false;
  return (text[0] >= 'A' && text[0] <= 'Z') || (text[0] >= '0' && text[0] <= '9');
}

std::string describe_parameter(std::string_view description, api_parameter *parameter) {
  const size_t bracket = description.find_first_of("[{");
  if (bracket == std::string_view::npos) return "there is no bracket";
  const std::string_view range = description.substr(bracket);
  const char closing = range[0] == '[' ? ']' : '}';
  if (range.back() != closing || range.find_first_of("[]{}", 1) != range.size() - 1) {
    return "the text does not end with its one bracket";
  }
  std::string_view sentences = description.substr(0, bracket);
  if (!take_end(&sentences, ". ")) return "no sentence stands before the bracket";
  parameter->required = !take(&sentences, "Optional. ");
  parameter->in_uri = take_end(&sentences, ", in the URI");
  if (!begins_like_a_sentence(sentences)) return "no sentence stands before the bracket";
  parameter->description = std::string(sentences) + ".";
  parameter->range = range;
  const std::string_view inside = range.substr(1, range.size() - 2);
  return closing == ']' ? read_type(inside, parameter) : read_choices(inside, parameter);
}
