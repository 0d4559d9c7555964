/* What "kestrelctl help" prints. */
#ifndef KESTREL_TOOLS_KESTRELCTL_HELP_TEXT_H
#define KESTREL_TOOLS_KESTRELCTL_HELP_TEXT_H

#include "tools/kestrelctl/commands.h"

#include <string>
#include <vector>

/* What kestrelctl does itself, besides the commands of the document. */
struct own_command {
  const char *name;
  const char *meaning;
};
extern const std::vector<own_command> own_commands;

/* Usage, the modules, the options. */
std::string general_help(const std::vector<command> &commands);

/* The commands of a module that have the words, any of which may be left out: with "if description" that of
 * "if <ifNum> set description <value>", described whole; with "vlans" a list. Empty when there are none. */
std::string topic_help(const std::vector<command> &commands, const std::vector<std::string> &words);

/* One command: how it is typed, what it does, what it takes. */
std::string command_help(const command &which);

#endif
