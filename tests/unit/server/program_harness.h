/* What the tests of CGI and server-side includes share: programs in a temporary directory, and what is left
 * of processes. */
#ifndef KESTREL_TESTS_UNIT_SERVER_PROGRAM_HARNESS_H
#define KESTREL_TESTS_UNIT_SERVER_PROGRAM_HARNESS_H

#include "tests/unit/server/server_harness.h"

#include <sys/types.h>

void write_file(const std::string &path, const std::string &content);
/* Writes a shell script that can be executed. */
void write_script(const std::string &path, const std::string &commands);
/* Whether a process exists and has not ended; one that has ended may still wait to be reaped by its parent.
 */
bool process_runs(pid_t pid);
/* Waits until it does not run any more; false when that does not come to pass. */
bool process_ends(pid_t pid);
/* Processes that this one has started and not waited for, whether they run or not. */
std::vector<pid_t> own_children();
/* Reaps until no child runs any more; false when that does not come to pass. */
bool all_children_end();

#endif
