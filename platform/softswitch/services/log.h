/* The system log behind l7proc_logf: a file bounded in size (`log`, the older half in `log.1`) in the state
 * directory and the console, which is standard error. The console is written by a thread of its own with a
 * bounded queue, so that a terminal nobody reads never holds up a request. */
#ifndef KESTREL_SOFTSWITCH_LOG_H
#define KESTREL_SOFTSWITCH_LOG_H

#include <string>

namespace softswitch {

/* Opens the log file and starts the console thread. Lines logged before go to the console only. False with
 * the reason when the file cannot be opened. */
bool log_open(const std::string &state_dir, std::string *error);
/* Writes out what is queued and closes. */
void log_close();
/* Lines of this severity and the more severe ones (lower numbers) go to the console. */
void log_set_console_severity(int severity);

} // namespace softswitch

#endif
