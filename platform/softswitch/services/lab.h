/* Lab control: plays the world outside the switch for tests and labs. Commands come in as lines on the Unix
 * socket `lab.sock` in the state directory (the tool kestrel-lab) or in process through
 * kestrel_lab_command(). They are split into words as lines of the configuration language are: a word with
 * blanks stands in double quotes. */
#ifndef KESTREL_SOFTSWITCH_LAB_H
#define KESTREL_SOFTSWITCH_LAB_H

#include <stddef.h>
#include <string>
#include <string_view>

namespace softswitch {

/* Opens the socket and starts its thread. False with the reason. */
bool lab_start(const std::string &state_dir, std::string *error);
void lab_stop();
/* Carries out one command line. The reply's last line is "ok" or "error: <reason>". */
std::string lab_command(std::string_view line);

} // namespace softswitch

/* The same for programs that hold the library in process: writes the reply, cut to `size`, into `reply`
 * (terminated). Returns 0 when the command was carried out, -1 when not. */
extern "C" int kestrel_lab_command(const char *line, char *reply, size_t size);

#endif
