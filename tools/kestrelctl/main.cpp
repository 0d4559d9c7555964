/* kestrelctl: the API of a switch as commands. Users read docs/kestrelctl.md; exit statuses are in actions.h.
 */
#include "tools/api/api_description.h"
#include "tools/kestrelctl/actions.h"
#include "tools/kestrelctl/commands.h"
#include "tools/kestrelctl/completion.h"
#include "tools/kestrelctl/help_text.h"
#include "tools/kestrelctl/output.h"
#include "tools/kestrelctl/settings.h"
#include "tools/kestrelctl/text.h"

#include <curl/curl.h>
#include <string>
#include <vector>

static int print_lines(const std::string &text) {
  return print_text(text) ? DONE : complain(NOT_UNDERSTOOD, lost_output());
}

/* For the shells: "kestrelctl __complete WORD...", the last word being the one that is typed. */
static int print_completions(const std::vector<command> &commands, const std::vector<std::string> &words) {
  std::string lines;
  for (const std::string &candidate : complete(commands, words)) lines += candidate + "\n";
  return print_lines(lines);
}

static int print_help(const std::vector<command> &commands, std::vector<std::string> words) {
  if (!words.empty() && words[0] == "help") words.erase(words.begin());
  if (words.empty()) return print_lines(general_help(commands));
  const std::string text = topic_help(commands, words);
  if (!text.empty()) return print_lines(text);
  const understood_command command = understand(commands, words);
  return command.chosen != nullptr ? print_lines(command_help(*command.chosen))
                                   : complain(WRONG_USAGE, command.complaint);
}

/* The words are one word, which is the name of one of kestrelctl's own commands. */
static bool is_own(const settings &given, const char *name) {
  return given.words.size() == 1 && given.words[0] == name;
}

static int run(const std::vector<command> &commands, const settings &given) {
  if (given.version) return print_lines("kestrelctl " KESTREL_VERSION "\n");
  if (given.help || (!given.words.empty() && given.words[0] == "help"))
    return print_help(commands, given.words);
  if (given.words.empty())
    return complain(WRONG_USAGE, "no command is given; \"kestrelctl help\" describes them");
  if (is_own(given, "login")) return log_in(given);
  if (is_own(given, "logout")) return log_out(given);
  if (is_own(given, "trust")) return trust_server(given);
  if (is_own(given, "untrust")) return untrust_server(given);
  const understood_command command = understand(commands, given.words);
  return command.chosen != nullptr ? carry_out(given, command) : complain(WRONG_USAGE, command.complaint);
}

int main(int argc, char **argv) {
  const std::vector<std::string> arguments(argv + 1, argv + (argc > 1 ? argc : 1));
  const std::vector<command> commands = make_commands(api_modules());
  if (!arguments.empty() && arguments[0] == "__complete")
    return print_completions(commands, {arguments.begin() + 1, arguments.end()});
  settings given;
  std::string error;
  curl_global_init(CURL_GLOBAL_DEFAULT);
  const bool read = read_settings(arguments, &given, &error);
  const int status = read ? run(commands, given) : complain(WRONG_USAGE, error);
  curl_global_cleanup();
  return status;
}
