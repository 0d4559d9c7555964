/* The commands of lab control, as its socket (lab_socket.cpp) needs them. The command table is in lab.cpp. */
#ifndef KESTREL_SOFTSWITCH_LAB_COMMANDS_H
#define KESTREL_SOFTSWITCH_LAB_COMMANDS_H

#include <string>
#include <string_view>

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

} // namespace softswitch

#endif
