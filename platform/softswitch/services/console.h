/* The console, which is standard error: lines are queued and written by a thread of their own, so that a
 * terminal or pipe that nobody reads holds up nobody but that thread. Used by log.cpp, which decides what
 * goes there. */
#ifndef KESTREL_SOFTSWITCH_CONSOLE_H
#define KESTREL_SOFTSWITCH_CONSOLE_H

#include <string_view>

namespace softswitch {

/* Queues a line. Returns at once; when the queue is full the line is dropped, and one line tells later how
 * many were. The thread starts with the first line and ends with console_stop() or the program. */
void console_write(std::string_view line);

/* Gives the queue a second to be written out and ends the thread. */
void console_stop();

} // namespace softswitch

#endif
