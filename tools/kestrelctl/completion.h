/* What could come next in a command line that is being typed. */
#ifndef KESTREL_TOOLS_KESTRELCTL_COMPLETION_H
#define KESTREL_TOOLS_KESTRELCTL_COMPLETION_H

#include "tools/kestrelctl/commands.h"

#include <string>
#include <vector>

/* The words, without that of the program, up to the one that is being typed, which is the last and may be
 * empty. Returns what that one may become, sorted: words, verbs, "name=" of variables, values that are
 * choices, options. */
std::vector<std::string> complete(const std::vector<command> &commands, std::vector<std::string> words);

#endif
