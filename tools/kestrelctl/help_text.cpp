#include "tools/kestrelctl/help_text.h"

#include "tools/kestrelctl/settings.h"
#include "tools/kestrelctl/text.h"

#include <algorithm>

const std::vector<own_command> own_commands = {
    {"login", "ask for the password, log in and keep the session"},
    {"logout", "end the session"},
    {"trust", "show the server's certificate, ask, and trust it from then on"},
    {"untrust", "forget the certificate that was trusted"},
    {"help", "describe the commands: help, help MODULE, help COMMAND..."},
};

static const size_t LINE_WIDTH = 80;

/* "  name  text", the text in lines of its own column. */
static std::string entry(const std::string &name, size_t name_width, const std::string &text) {
  const std::string indent(name_width + 4, ' ');
  std::string out, line = "  " + name + std::string(name_width + 2 - std::min(name_width, name.size()), ' ');
  bool empty = true;
  for (const std::string &word : split(text, ' ')) {
    if (!empty && column_count(line) + 1 + column_count(word) > LINE_WIDTH) {
      out += line + "\n";
      line = indent;
      empty = true;
    }
    line += (empty ? "" : " ") + word;
    empty = false;
  }
  return out + line + "\n";
}

/* --- The general help ---------------------------------------------------------------------------------- */

/* The words that the commands of a module begin with: "download, upload". */
static std::string first_words(const std::vector<command> &commands, const api_module *module) {
  std::vector<std::string> words;
  for (const command &which : commands) {
    const std::string &word = which.segments[0].word;
    if (which.module == module && std::find(words.begin(), words.end(), word) == words.end())
      words.push_back(word);
  }
  return joined(words, ", ");
}

static std::string module_entries(const std::vector<command> &commands) {
  static const size_t name_width = 16;
  std::string out;
  const api_module *last = nullptr;
  for (const command &which : commands) {
    if (which.module != last && which.module->name != "help")
      out += entry(first_words(commands, which.module), name_width, which.module->description);
    last = which.module;
  }
  return out;
}

static std::string option_entries() {
  std::string out;
  for (const option_description &option : option_descriptions) {
    const std::string name = std::string("--") + option.name;
    out += entry(option.value == nullptr ? name : name + " " + option.value, 20, option.meaning);
  }
  return out;
}

std::string general_help(const std::vector<command> &commands) {
  std::string out = "Usage: kestrelctl [OPTION]... COMMAND...\n"
                    "Reads and changes a switch through its RESTful API.\n\nSessions, trust and help:\n";
  for (const own_command &own : own_commands) out += entry(own.name, 16, own.meaning);
  out += "\nWhat the switch has; \"kestrelctl help MODULE\" lists the commands:\n" + module_entries(commands);
  out += "\nOptions:\n" + option_entries();
  return out +
         "\nExit status: 0 done; 1 the switch refused; 2 wrong usage; 3 not logged in; 4 the switch was\n"
         "not reached, or its certificate is not trusted; 5 the answer was not understood.\n";
}

/* --- The help on commands ------------------------------------------------------------------------------ */

/* The segment that a word stands for, from `at` on: the next literal word that it is, else the next segment
 * if that is a placeholder. The number of segments when there is none. */
static size_t find_segment(const command &which, size_t at, const std::string &word) {
  for (size_t i = at; i < which.segments.size(); i++)
    if (which.segments[i].placeholder == nullptr && which.segments[i].word == word) return i;
  const bool taken = at < which.segments.size() && which.segments[at].placeholder != nullptr &&
                     segment_takes(which.segments[at], word);
  return taken ? at : which.segments.size();
}

/* Whether a command has the words, in their order. */
static bool has_words(const command &which, std::vector<std::string> words) {
  const auto verb = std::find(words.begin() + 1, words.end(), which.operation->verb);
  if (verb != words.end() && !which.verb_is_word) words.erase(verb);
  if (words[0] != which.segments[0].word) {
    if (words[0] != which.module->name) return false;
    words.erase(words.begin());
  }
  size_t at = 0;
  for (const std::string &word : words) {
    at = find_segment(which, at, word) + 1;
    if (at > which.segments.size()) return false;
  }
  return true;
}

static std::string parameter_entries(const api_operation &operation) {
  std::vector<const api_parameter *> shown;
  for (const api_parameter &parameter : operation.parameters)
    if (parameter.in_uri) shown.push_back(&parameter);
  const std::vector<const api_parameter *> variables = variables_of(operation);
  shown.insert(shown.end(), variables.begin(), variables.end());
  size_t width = 0;
  for (const api_parameter *parameter : shown) width = std::max(width, parameter->name.size());
  std::string out;
  for (const api_parameter *parameter : shown) {
    const std::string text = (parameter->required ? "" : "Optional. ") + parameter->description;
    out += entry(parameter->name, width, text + " " + parameter->range);
  }
  return out.empty() ? "" : "\n" + out;
}

std::string command_help(const command &which) {
  const api_operation &operation = *which.operation;
  return "kestrelctl " + command_usage(which) + "\n" + operation.description + "\n" +
         parameter_entries(operation) + "\nRequest: " + operation.method + " " + operation.uri + "\n";
}

static std::string listed(const std::vector<const command *> &commands) {
  std::string out;
  const api_module *last = nullptr;
  for (const command *which : commands) {
    if (which->module != last) out += (out.empty() ? "" : "\n") + which->module->description + "\n\n";
    last = which->module;
    out += "  kestrelctl " + command_usage(*which) + "\n" + "      " + which->operation->name + "\n";
  }
  return out;
}

std::string topic_help(const std::vector<command> &commands, const std::vector<std::string> &words) {
  std::string own_text;
  for (const own_command &own : own_commands)
    if (words.size() == 1 && words[0] == own.name)
      own_text = "kestrelctl " + words[0] + "\n  " + own.meaning + "\n";
  std::vector<const command *> found;
  for (const command &which : commands)
    if (has_words(which, words)) found.push_back(&which);
  if (found.size() == 1 && own_text.empty()) return command_help(*found[0]);
  return own_text + (own_text.empty() || found.empty() ? "" : "\n") + listed(found);
}
