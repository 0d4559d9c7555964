/* The configuration language: the switch's only persistent form. Flat text, every line complete in itself;
 * docs/configuration-language.md is its manual. One table (commands.cpp) drives reading, applying and
 * printing.
 *
 * To add a line: one row in the table of commands.cpp, with an apply and a print function in the family's own
 * file (vlan_lines.cpp is the example). */
#ifndef KESTREL_SOFTSWITCH_CONFIG_LANGUAGE_H
#define KESTREL_SOFTSWITCH_CONFIG_LANGUAGE_H

#include "platform/softswitch/config/placeholders.h"
#include "platform/softswitch/model/switch.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace softswitch {

/* What a print function puts its lines into. */
struct config_printer {
  const switch_model &model;
  std::string_view pattern; /* of the row that is being printed */
  std::string *text;

  /* Adds the row's line with these arguments. */
  void line(const std::vector<argument> &arguments) const;
};

struct command {
  /* Keywords and placeholders, separated by single blanks. */
  std::string_view pattern;
  /* Makes the change that the line asks for. On failure gives the code and the reason in words; the model may
   * then be half changed (the callers work on a copy). */
  open_error_t (*apply)(switch_model &, std::span<const argument>, std::string *error);
  /* Prints what differs from factory state; nullptr for lines that only bring factory state back. */
  void (*print)(const config_printer &);
};

/* All lines there are, in the order in which the configuration is printed. */
std::span<const command> commands();

/* Applies one line to a copy of the model that the caller throws away on failure. OPEN_E_PARAM when the line
 * cannot be understood, otherwise what the setting's rules say; the reason in `error`. */
open_error_t apply_line(switch_model &model, std::string_view line, std::string *error);

/* Applies a whole text likewise; the reason begins with "line N: ". Line breaks are LF or CR LF. */
bool apply_text(switch_model &model, std::string_view text, std::string *error);

/* What is wrong with a text that has to apply whole to a model, as "line N: reason", ten lines at most; empty
 * when nothing is. */
std::vector<std::string> check_configuration(switch_model model, std::string_view text);

/* The same for a text that is to be applied to a switch in whatever state that is then (a script). Only what
 * no state can make right is wrong; `factory` is a switch of this make in factory state. */
std::vector<std::string> check_lines(const switch_model &factory, std::string_view text);

/* The line of a pattern with its placeholders filled in. */
std::string format_line(const switch_model &model, std::string_view pattern,
                        std::span<const argument> arguments);

/* Everything that differs from factory state, in a stable order. Applied to a switch in factory state it
 * gives the same switch. */
std::string print_configuration(const switch_model &model);

} // namespace softswitch

#endif
