/* A logger for tests: see captured_log.h. It takes the place of the platform's. */
#include "tests/unit/engine/captured_log.h"

#include "platform/api/l7proc.h"

#include <stdarg.h>
#include <stdio.h>

static std::vector<LoggedLine> logged;

extern "C" void l7proc_logf(int severity, int, const char *file, int line, const char *format, ...) {
  char text[32768];
  va_list ap;
  va_start(ap, format);
  vsnprintf(text, sizeof text, format, ap);
  va_end(ap);
  logged.push_back({severity, file, line, text});
}

std::vector<LoggedLine> take_logged_lines() {
  std::vector<LoggedLine> taken;
  taken.swap(logged);
  return taken;
}
