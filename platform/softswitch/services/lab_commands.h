/* The commands of lab control, as its parts need them: the command table and most handlers are lab.cpp, those
 * of the chassis lab_chassis.cpp, the socket that commands come in by lab_socket.cpp. */
#ifndef KESTREL_SOFTSWITCH_LAB_COMMANDS_H
#define KESTREL_SOFTSWITCH_LAB_COMMANDS_H

#include <charconv>
#include <stddef.h>
#include <string>
#include <string_view>
#include <vector>

namespace softswitch {

/* What came of a command so far. */
struct lab_outcome {
  enum { done, refused, waiting } kind;
  std::string text;     /* done: reply lines, each with its newline, or empty; refused: the reason */
  int milliseconds = 0; /* waiting: how long at most until no change is pending */
};

/* Carries out one command line without ever waiting: `wait` is left to the caller, who asks
 * softswitch::wait_applied() and ends with lab_wait_outcome(). */
lab_outcome lab_run(std::string_view line);

/* How a `wait` ends. */
lab_outcome lab_wait_outcome(bool applied);

/* The reply as the client gets it: the lines, then "ok" or "error: REASON". */
std::string lab_reply(const lab_outcome &outcome);

/* --- Commands ------------------------------------------------------------------------------------------- */

using arguments = std::vector<std::string_view>;

/* One command. The handler gets the words after `words`, as many as the row allows. */
struct command_row {
  const char *words;    /* "fault", "fault list" */
  const char *usage;    /* its arguments, for help and errors */
  size_t arguments_min; /* how many it takes at least and at most */
  size_t arguments_max;
  const char *purpose;
  lab_outcome (*run)(const command_row &row, const arguments &given);
};

/* How a command ends: carried out, with the lines that it prints; refused with a reason; refused as its
 * arguments are no such command's. */
lab_outcome done(std::string text = "");
lab_outcome refused(std::string reason);
lab_outcome misused(const command_row &row);

/* A decimal number of at most `max`; false for anything else. */
template <typename Number> bool number_from_text(std::string_view text, Number max, Number *number) {
  auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), *number);
  return failure == std::errc() && end == text.data() + text.size() && *number <= max;
}

/* The chassis: "fan NUMBER SETTING VALUE..." and the like. */
lab_outcome change_fan(const command_row &row, const arguments &given);
lab_outcome change_power_supply(const command_row &row, const arguments &given);
lab_outcome change_temperature_sensor(const command_row &row, const arguments &given);
lab_outcome put_transceiver_in(const command_row &row, const arguments &given);
lab_outcome take_transceiver_out(const command_row &row, const arguments &given);
lab_outcome change_identity(const command_row &row, const arguments &given);
lab_outcome show_chassis(const command_row &row, const arguments &given);

} // namespace softswitch

#endif
