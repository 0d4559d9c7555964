/* The process library as programs see it: l7proc_logf over log.cpp, and the crash record. */
#include "platform/api/l7proc.h"

#include "platform/softswitch/services/log.h"

#include <algorithm>
#include <errno.h>
#include <execinfo.h>
#include <poll.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>
#include <unwind.h>

using namespace softswitch;

void l7proc_logf(int severity, int, const char *file, int line, const char *format, ...) {
  /* Callers log between a failing call and looking at errno. */
  int errno_before = errno;
  char text[log_line_max];
  va_list arguments;
  va_start(arguments, format);
  int length = vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  const char *said = length < 0 ? format : text;
  severity = std::clamp<int>(severity, L7PROC_EMERGENCY, L7PROC_DEBUG);
  log_write(severity, log_format(severity, file ? file : "-", line, said));
  errno = errno_before;
}

/* --- The crash record ----------------------------------------------------------------------------------- */

/* Only async-signal-safe calls from here on (signal-safety(7)); walking the stack takes no memory. */

struct crash_signal {
  int number;
  const char *name;
};

static const crash_signal crash_signals[] = {
    {SIGSEGV, "SIGSEGV"}, {SIGBUS, "SIGBUS"}, {SIGILL, "SIGILL"}, {SIGFPE, "SIGFPE"}, {SIGABRT, "SIGABRT"}};

/* With 32 frames the record fits in what poll() promises a pipe to take. */
static constexpr int frames_max = 32;

static const char *signal_name(int number) {
  for (const crash_signal &known : crash_signals) {
    if (known.number == number) return known.name;
  }
  return "signal";
}

/* Appends to a bounded text without formatting functions. */
static void append_text(char *line, size_t size, const char *text) {
  size_t used = strlen(line);
  while (*text && used + 1 < size) line[used++] = *text++;
  line[used] = '\0';
}

static void append_number(char *line, size_t size, unsigned long long number) {
  char digits[24];
  size_t at = sizeof digits - 1;
  digits[at] = '\0';
  do {
    digits[--at] = static_cast<char>('0' + number % 10);
    number /= 10;
  } while (number > 0);
  append_text(line, size, digits + at);
}

static void write_record(int fd, const char *headline, void *const *frames, int count) {
  /* A terminal that nobody reads must not keep a dead program from going. */
  struct pollfd ready = {fd, POLLOUT, 0};
  if (fd < 0 || poll(&ready, 1, 1000) != 1 || !(ready.revents & POLLOUT)) return;
  if (write(fd, headline, strlen(headline)) < 0) return;
  backtrace_symbols_fd(frames, count, fd);
}

/* The stack, as the unwinder that is linked in sees it: backtrace(3) would load another one. */
struct call_stack {
  void *frames[frames_max];
  int count = 0;
};

static _Unwind_Reason_Code add_frame(_Unwind_Context *context, void *argument) {
  call_stack *stack = static_cast<call_stack *>(argument);
  if (stack->count == frames_max) return _URC_END_OF_STACK;
  stack->frames[stack->count++] = reinterpret_cast<void *>(_Unwind_GetIP(context));
  return _URC_NO_REASON;
}

static void record_crash(int number) {
  char headline[128] = "CRASH ";
  append_text(headline, sizeof headline, signal_name(number));
  append_text(headline, sizeof headline, " at ");
  append_number(headline, sizeof headline, static_cast<unsigned long long>(time(nullptr)));
  append_text(headline, sizeof headline, " seconds since 1970, called from\n");
  call_stack stack;
  _Unwind_Backtrace(add_frame, &stack);
  write_record(log_descriptor(), headline, stack.frames, stack.count);
  write_record(STDERR_FILENO, headline, stack.frames, stack.count);
  /* The default action is back already; the signal is delivered when this handler returns. */
  raise(number);
}

void l7proc_crashlog_register(void) {
  /* A stack overflow leaves no room for a handler on the stack itself. */
  static char alternate[64 * 1024];
  stack_t stack = {};
  stack.ss_sp = alternate;
  stack.ss_size = sizeof alternate;
  sigaltstack(&stack, nullptr);
  struct sigaction action = {};
  action.sa_handler = record_crash;
  action.sa_flags = SA_ONSTACK | static_cast<int>(SA_RESETHAND);
  for (const crash_signal &caught : crash_signals) sigaction(caught.number, &action, nullptr);
}
