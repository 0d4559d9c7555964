/* The commands: one for each operation of the API, made of the help document.
 *
 * A command is the words of the operation's URI with its verb before the last literal word, never before the
 * first, and at the end when there is no other literal word: "vlans list", "vlans <vlanId> create",
 * "vlans <vlanId> set name". A last word that is the verb itself is not said twice: "script apply". What
 * somebody types is taken more freely: the verb may stand anywhere behind the first word; without one GET is
 * meant; and the module's name in the document may stand before the URI ("transfer download status"). */
#ifndef KESTREL_TOOLS_KESTRELCTL_COMMANDS_H
#define KESTREL_TOOLS_KESTRELCTL_COMMANDS_H

#include "tools/api/api_description.h"
#include "tools/kestrelctl/variables.h"

#include <string>
#include <vector>

/* One word of a command's URI. */
struct command_segment {
  std::string word;                 /* the literal word, or the placeholder's name */
  const api_parameter *placeholder; /* null for a literal word */
};

struct command {
  const api_module *module;
  const api_operation *operation;
  std::vector<command_segment> segments;
  size_t verb_place; /* the verb stands before this segment; behind all when it is their number */
  bool verb_is_word; /* the last segment is the verb, which is not said besides */

  /* Whether a word is the verb that is said besides the segments. */
  bool is_verb(const std::string &word) const { return !verb_is_word && word == operation->verb; }
  /* Whether it is found without its verb. */
  bool verb_may_be_missing() const { return verb_is_word || operation->method == "GET"; }
};

/* The commands of all modules in the order of the document. Logging in and out are not among them: they are
 * what kestrelctl does itself. The modules must outlive them. */
std::vector<command> make_commands(const std::vector<api_module> &modules);

/* A command as it is typed, without variables: "vlans <vlanId> set name". */
std::string command_words(const command &which);
/* The same with its variables: "vlans <vlanId> set name <value>", "acl if <ifNum> add name=<name>
 * [seq=<seq>]". */
std::string command_usage(const command &which);

/* Whether a word may stand for a segment: literal words are compared, a placeholder takes any word but an
 * empty one, one for a number digits only, as the server does. */
bool segment_takes(const command_segment &segment, const std::string &word);

struct understood_command {
  const command *chosen;                   /* null when the words are none; the complaint then says why */
  std::string uri;                         /* the path, percent-encoded */
  std::vector<std::string> segment_values; /* the words that stand for the segments */
  std::vector<request_variable> variables;
  std::string complaint; /* for people, several lines, without a final line end */
};

/* Finds the one command that the words mean. A literal word wins over a placeholder, a verb over both. */
understood_command understand(const std::vector<command> &commands, const std::vector<std::string> &words);

/* The commands nearest to words that are none, the nearest first, at most three. */
std::vector<const command *> nearest_commands(const std::vector<command> &commands,
                                              const std::vector<std::string> &words);

#endif
