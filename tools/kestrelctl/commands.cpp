#include "tools/kestrelctl/commands.h"

#include "tools/kestrelctl/text.h"

#include <algorithm>
#include <string_view>
#include <tuple>

/* --- The commands of the document ---------------------------------------------------------------------- */

static const api_parameter *placeholder_named(const api_operation &operation, std::string_view name) {
  for (const api_parameter &parameter : operation.parameters)
    if (parameter.in_uri && parameter.name == name) return &parameter;
  return nullptr;
}

static std::vector<command_segment> segments_of(const api_operation &operation) {
  std::vector<command_segment> segments;
  for (const std::string &word : split(std::string_view(operation.uri).substr(1), '/')) {
    const bool braces = word.starts_with('{') && word.ends_with('}');
    const std::string name = braces ? word.substr(1, word.size() - 2) : word;
    segments.push_back({name, braces ? placeholder_named(operation, name) : nullptr});
  }
  return segments;
}

/* The last literal word behind the first segment; the number of segments when there is none. */
static size_t last_literal(const std::vector<command_segment> &segments) {
  for (size_t i = segments.size(); i-- > 1;)
    if (segments[i].placeholder == nullptr) return i;
  return segments.size();
}

/* Logging in and out: the commands "login" and "logout" do it, with the password from the terminal. */
static bool opens_or_closes_sessions(const api_operation &operation) {
  return operation.uri == "/login" && operation.method != "GET";
}

std::vector<command> make_commands(const std::vector<api_module> &modules) {
  std::vector<command> commands;
  for (const api_module &module : modules) {
    for (const api_operation &operation : module.operations) {
      if (opens_or_closes_sessions(operation)) continue;
      command made{&module, &operation, segments_of(operation), 0, false};
      made.verb_place = last_literal(made.segments);
      made.verb_is_word = made.verb_place + 1 == made.segments.size() &&
                          made.segments[made.verb_place].word == operation.verb;
      commands.push_back(std::move(made));
    }
  }
  return commands;
}

static std::vector<std::string> words_of(const command &which) {
  std::vector<std::string> words;
  for (size_t i = 0; i <= which.segments.size(); i++) {
    if (i == which.verb_place && !which.verb_is_word) words.push_back(which.operation->verb);
    if (i == which.segments.size()) break;
    const command_segment &segment = which.segments[i];
    words.push_back(segment.placeholder ? "<" + segment.word + ">" : segment.word);
  }
  return words;
}

std::string command_words(const command &which) {
  return joined(words_of(which), " ");
}

std::string command_usage(const command &which) {
  static const ssize_t shown_optional = 4; /* more would hide the command behind them */
  std::string usage = command_words(which), optional;
  const std::vector<const api_parameter *> variables = variables_of(*which.operation);
  const auto is_required = [](const api_parameter *variable) { return variable->required; };
  const ssize_t required = std::count_if(variables.begin(), variables.end(), is_required);
  for (const api_parameter *variable : variables) {
    const std::string value = "<" + variable->name + ">", named = variable->name + "=" + value;
    if (variable->required)
      usage += " " + (required == 1 ? value : named);
    else
      optional += " [" + named + "]";
  }
  const bool many = static_cast<ssize_t>(variables.size()) - required > shown_optional;
  return usage + (many ? " [<variable>=<value>]..." : optional);
}

/* --- What somebody has typed --------------------------------------------------------------------------- */

bool segment_takes(const command_segment &segment, const std::string &word) {
  if (segment.placeholder == nullptr) return segment.word == word;
  return segment.placeholder->kind == parameter_kind::INTEGER ? only_digits(word) : !word.empty();
}

/* One way to read the words as a command. */
struct reading {
  const command *which;
  bool verb_said;
  std::string literals; /* for each segment "1" when it is a literal word, "0" when not: greater wins */
  std::vector<std::string> values; /* of all segments */
  std::vector<std::string> rest;   /* the words behind */
  std::vector<request_variable> variables;
  std::string complaint; /* what is wrong with the rest; empty when nothing is */

  auto rank() const { return std::make_tuple(complaint.empty(), verb_said, literals, -ssize_t(rest.size())); }
};

/* Adds the readings of words from `at` on, where `now` tells what has been read. */
static void read_on(const std::vector<std::string> &words, size_t at, const reading &now,
                    std::vector<reading> *found) {
  const command &which = *now.which;
  const size_t segment = now.values.size();
  if (at < words.size() && segment > 0 && !now.verb_said && which.is_verb(words[at])) {
    reading next = now;
    next.verb_said = true;
    read_on(words, at + 1, next, found);
  }
  if (segment < which.segments.size()) {
    if (at == words.size() || !segment_takes(which.segments[segment], words[at])) return;
    reading next = now;
    next.values.push_back(words[at]);
    next.literals += which.segments[segment].placeholder ? '0' : '1';
    read_on(words, at + 1, next, found);
  } else if (now.verb_said || which.verb_may_be_missing()) {
    found->push_back(now);
    found->back().rest.assign(words.begin() + static_cast<ssize_t>(at), words.end());
  }
}

static std::vector<reading> readings_of(const std::vector<command> &commands,
                                        const std::vector<std::string> &words) {
  std::vector<reading> found;
  for (const command &which : commands) {
    const bool module_named =
        !words.empty() && words[0] == which.module->name && which.segments[0].word != words[0];
    read_on(words, module_named ? 1 : 0, {&which, false, "", {}, {}, {}, ""}, &found);
  }
  for (reading &one : found)
    assign_variables(*one.which->operation, one.rest, &one.variables, &one.complaint);
  return found;
}

static std::string uri_of(const reading &one) {
  std::string uri;
  for (const std::string &value : one.values) uri += "/" + percent_encoded(value);
  return uri;
}

static std::string list_of(const std::vector<const command *> &commands) {
  std::string list;
  for (const command *which : commands) list += "\n  kestrelctl " + command_usage(*which);
  return list;
}

static std::string unknown_command(const std::vector<command> &commands,
                                   const std::vector<std::string> &words) {
  const std::vector<const command *> nearest = nearest_commands(commands, words);
  const std::string complaint = "unknown command \"" + printable(joined(words, " ")) + "\"; ";
  if (nearest.empty()) return complaint + "\"kestrelctl help\" tells what there is";
  return complaint + "the nearest are:" + list_of(nearest);
}

static understood_command none(const std::string &complaint) {
  return {nullptr, "", {}, {}, complaint};
}

understood_command understand(const std::vector<command> &commands, const std::vector<std::string> &words) {
  const std::vector<reading> found = readings_of(commands, words);
  const auto best = std::max_element(found.begin(), found.end(),
                                     [](const reading &a, const reading &b) { return a.rank() < b.rank(); });
  if (best == found.end()) return none(unknown_command(commands, words));
  for (const reading &other : found) {
    if (other.which == best->which || other.rank() != best->rank() || !best->complaint.empty()) continue;
    return none("more than one command is meant:" + list_of({best->which, other.which}));
  }
  if (best->complaint.empty()) return {best->which, uri_of(*best), best->values, best->variables, ""};
  /* Where nothing but the beginning fits, it is rather another command that is meant. */
  const bool begun_only = !best->verb_said && !best->which->verb_is_word && !best->rest.empty();
  if (begun_only && variables_of(*best->which->operation).empty())
    return none(unknown_command(commands, words));
  return none(best->complaint + "; usage:" + list_of({best->which}));
}

/* --- The nearest --------------------------------------------------------------------------------------- */

/* How far a typed word is from one of a command, 0 to 10. */
static size_t word_distance(const std::string &typed, const std::string &word) {
  if (word.starts_with('<')) return only_digits(typed) ? 0 : 3;
  const size_t longer = std::max(typed.size(), word.size());
  return longer == 0 ? 0 : edit_distance(typed, word) * 10 / longer;
}

/* How far typed words are from a command: the cost of the cheapest way to make one of the other. A word too
 * many at the end costs little, as it may be a variable's. */
static size_t command_distance(const std::vector<std::string> &typed, const command &which) {
  static const size_t missing_word = 4, word_too_many = 6, behind_the_end = 3;
  const std::vector<std::string> words = words_of(which);
  std::vector<size_t> row(words.size() + 1);
  for (size_t j = 0; j <= words.size(); j++) row[j] = j * missing_word;
  for (size_t i = 1; i <= typed.size(); i++) {
    size_t diagonal = row[0];
    row[0] = i * word_too_many;
    for (size_t j = 1; j <= words.size(); j++) {
      const size_t replaced = diagonal + word_distance(typed[i - 1], words[j - 1]);
      const size_t left_out = row[j] + (j == words.size() ? behind_the_end : word_too_many);
      diagonal = row[j];
      row[j] = std::min({replaced, left_out, row[j - 1] + missing_word});
    }
  }
  return row[words.size()];
}

/* How far a typed word is from the first of a command, 0 to 10. */
static size_t beginning_distance(const std::string &typed, const command &which) {
  return std::min(word_distance(typed, which.segments[0].word), word_distance(typed, which.module->name));
}

std::vector<const command *> nearest_commands(const std::vector<command> &commands,
                                              const std::vector<std::string> &words) {
  /* The first word says the module: where it is another, the others count for nothing. */
  static const size_t too_far = 6;
  std::vector<std::tuple<size_t, size_t, const command *>> all;
  for (const command &which : commands) {
    const size_t beginning = words.empty() ? too_far : beginning_distance(words[0], which);
    if (beginning < too_far) all.emplace_back(beginning, command_distance(words, which), &which);
  }
  std::stable_sort(all.begin(), all.end(), [](const auto &a, const auto &b) {
    return std::tie(std::get<0>(a), std::get<1>(a)) < std::tie(std::get<0>(b), std::get<1>(b));
  });
  std::vector<const command *> nearest;
  for (size_t i = 0; i < all.size() && i < 3; i++) nearest.push_back(std::get<2>(all[i]));
  return nearest;
}
