/* The engine tests bring a logger of their own, which keeps what is logged instead of writing it. */
#ifndef KESTREL_TESTS_ENGINE_CAPTURED_LOG_H
#define KESTREL_TESTS_ENGINE_CAPTURED_LOG_H

#include <string>
#include <vector>

struct LoggedLine {
  int severity;
  std::string file;
  int line;
  std::string text;
};

/* What has been logged since the last call. */
std::vector<LoggedLine> take_logged_lines();

#endif
