#include "tools/kestrelctl/completion.h"

#include "tools/kestrelctl/help_text.h"
#include "tools/kestrelctl/settings.h"
#include "tools/kestrelctl/text.h"

#include <algorithm>

/* How far a command line has come in one command. */
struct progress {
  const command *which;
  size_t segment; /* the next one */
  bool verb_said;
  std::vector<std::string> rest; /* words behind the command */
};

static const option_description *option_of(const std::string &word) {
  for (const option_description &option : option_descriptions)
    if (word.starts_with("--") && word.substr(2) == option.name) return &option;
  return nullptr;
}

/* Leaves out options and their values. Returns false when the word being typed is an option's value. */
static bool remove_options(std::vector<std::string> *words) {
  std::vector<std::string> kept;
  for (size_t i = 0; i + 1 < words->size(); i++) {
    const option_description *option = option_of((*words)[i]);
    if (option == nullptr && !(*words)[i].starts_with("--"))
      kept.push_back((*words)[i]);
    else if (option != nullptr && option->value != nullptr && ++i + 1 == words->size())
      return false;
  }
  kept.push_back(words->back());
  *words = kept;
  return true;
}

static void step(const std::vector<std::string> &words, size_t at, const progress &now,
                 std::vector<progress> *reached) {
  if (at + 1 == words.size()) return reached->push_back(now);
  const command &which = *now.which;
  if (now.segment > 0 && !now.verb_said && which.is_verb(words[at]))
    step(words, at + 1, {&which, now.segment, true, {}}, reached);
  if (now.segment < which.segments.size()) {
    if (segment_takes(which.segments[now.segment], words[at]))
      step(words, at + 1, {&which, now.segment + 1, now.verb_said, {}}, reached);
  } else if ((now.verb_said || which.verb_may_be_missing()) && !variables_of(*which.operation).empty()) {
    progress next = now;
    next.rest.assign(words.begin() + static_cast<ssize_t>(at), words.end() - 1);
    reached->push_back(next);
  }
}

static void add_choices(const api_parameter &parameter, const std::string &before,
                        std::vector<std::string> *found) {
  for (const parameter_choice &choice : parameter.choices) {
    const bool word = !choice.meaning.empty() && choice.meaning.find(' ') == std::string::npos;
    found->push_back(before + (word ? choice.meaning : choice.value));
  }
}

/* Variables that have not been given, and the values of the one that is being typed. */
static void add_variables(const progress &now, const std::string &typed, std::vector<std::string> *found) {
  std::vector<const api_parameter *> open = variables_of(*now.which->operation);
  std::erase_if(open, [&](const api_parameter *variable) {
    const auto names_it = [&](const std::string &word) { return word.starts_with(variable->name + "="); };
    return std::any_of(now.rest.begin(), now.rest.end(), names_it);
  });
  size_t required = 0;
  for (const api_parameter *variable : open) required += variable->required ? 1 : 0;
  const bool bare_given = std::any_of(now.rest.begin(), now.rest.end(),
                                      [](const std::string &word) { return word.find('=') == word.npos; });
  for (const api_parameter *variable : open) {
    const std::string named = variable->name + "=";
    if (bare_given && variable->required) continue;
    if (typed.starts_with(named))
      add_choices(*variable, named, found);
    else
      found->push_back(named);
    if (variable->required && required == 1) add_choices(*variable, "", found);
  }
}

/* The verb stands at its place, or later if it has not been said; the word behind that place follows it. */
static void add_next(const progress &now, const std::string &typed, std::vector<std::string> *found) {
  if (!now.rest.empty()) return add_variables(now, typed, found);
  const command &which = *now.which;
  const bool verb_open = !now.verb_said && !which.verb_is_word;
  if (verb_open && now.segment > 0 && now.segment >= which.verb_place)
    found->push_back(which.operation->verb);
  if (now.segment == which.segments.size()) {
    if (!verb_open || which.verb_may_be_missing()) add_variables(now, typed, found);
    return;
  }
  const command_segment &next = which.segments[now.segment];
  const bool wants_verb_first = verb_open && now.segment >= which.verb_place && !which.verb_may_be_missing();
  if (wants_verb_first) return;
  if (next.placeholder == nullptr)
    found->push_back(next.word);
  else
    add_choices(*next.placeholder, "", found);
}

static void add_first_words(std::vector<std::string> *found) {
  for (const own_command &own : own_commands) found->push_back(own.name);
}

static void add_options(std::vector<std::string> *found) {
  for (const option_description &option : option_descriptions)
    found->push_back(std::string("--") + option.name);
}

std::vector<std::string> complete(const std::vector<command> &commands, std::vector<std::string> words) {
  std::vector<std::string> found;
  if (words.empty() || !remove_options(&words)) return {};
  const std::string typed = words.back();
  if (words.size() > 1 && words[0] == "help") words.erase(words.begin());
  std::vector<progress> reached;
  for (const command &which : commands) {
    const bool module_named =
        words.size() > 1 && words[0] == which.module->name && which.segments[0].word != words[0];
    step(words, module_named ? 1 : 0, {&which, 0, false, {}}, &reached);
  }
  if (typed.starts_with("--"))
    add_options(&found);
  else if (words.size() == 1)
    add_first_words(&found);
  for (const progress &now : reached) add_next(now, typed, &found);
  std::erase_if(found, [&](const std::string &candidate) { return !candidate.starts_with(typed); });
  std::sort(found.begin(), found.end());
  found.erase(std::unique(found.begin(), found.end()), found.end());
  return found;
}
