/* The system log behind l7proc_logf: a file bounded in size (`log`, the older half in `log.1`) in the state
 * directory, the console, which is standard error, and remote hosts (syslog.h). Console and hosts have
 * threads of their own with bounded queues, so that a terminal nobody reads and a host nobody reaches never
 * hold up a request. */
#ifndef KESTREL_SOFTSWITCH_LOG_H
#define KESTREL_SOFTSWITCH_LOG_H

#include <cstddef>
#include <string>
#include <string_view>

namespace softswitch {

/* Opens the log file and starts the console thread. Lines logged before go to the console only. False with
 * the reason when the file cannot be opened. */
bool log_open(const std::string &state_dir, std::string *error);
/* Writes out what is queued and closes. */
void log_close();

/* Lines of this severity and the more severe ones (lower numbers) go to the console. Holds until it is called
 * again or the configuration says something new. */
void log_set_console_severity(int severity);
/* What the configuration says: whether anything goes to the console, and down to which severity. The same as
 * at the last call changes nothing. Until the first call, and after log_close(), it is as if on and
 * L7PROC_WARNING had been said. */
void log_configure_console(bool on, int severity);

/* Logs each line of a script that has been applied, as "CLI: LINE"; not those that are empty or comments. */
void log_script(std::string_view text);

/* A severity's word in a log line ("WARNING"), and back: the word in any case or the number "0".."7". */
const char *log_severity_word(int severity);
bool log_severity_from_text(std::string_view text, int *severity);

/* --- For l7proc_logf and the crash record -------------------------------------------------------------- */

/* The longest line, its newline included. What l7proc_logf is given beyond that is cut. */
inline constexpr size_t log_line_max = size_t{20} * 1024;
/* Builds a line: "2026-01-31T12:34:56.789Z WARNING rest_common.c:129 text", time in UTC, newline at the end.
 * Control characters become blanks, so that no text can pass for a line of its own; credentials in URLs are
 * hidden (log_redaction.h); what goes beyond log_line_max is cut. */
std::string log_format(int severity, std::string_view file, int line, std::string_view text);
/* Writes one finished line, which ends with a newline, to the file and, when severe enough, to the console
 * and the remote hosts. A line that cannot be written to the file is counted, and the count logged once the
 * file can be written again. */
void log_write(int severity, std::string_view line);
/* The descriptor of the log file, -1 while it is not open. Safe to call in a signal handler. */
int log_descriptor();

} // namespace softswitch

#endif
