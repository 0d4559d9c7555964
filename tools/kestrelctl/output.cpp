#include "tools/kestrelctl/output.h"

#include "tools/kestrelctl/table.h"
#include "tools/kestrelctl/text.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

bool print_text(const std::string &text) {
  return fwrite(text.data(), 1, text.size(), stdout) == text.size() && fflush(stdout) == 0;
}

bool print_document(const std::string &document) {
  if (!isatty(STDOUT_FILENO)) return print_text(document);
  const bool line_end = document.ends_with('\n');
  const std::string_view text(document.data(), document.size() - (line_end ? 1 : 0));
  return print_text(printable(text) + "\n");
}

/* NO_COLOR and terminals that know nothing but text are respected. */
static bool may_be_bold() {
  const char *no_color = getenv("NO_COLOR"), *terminal = getenv("TERM");
  const bool plain = terminal == nullptr || *terminal == '\0' || strcmp(terminal, "dumb") == 0;
  return isatty(STDOUT_FILENO) && !plain && (no_color == nullptr || *no_color == '\0');
}

bool print_answer(const answer &result, bool *anything) {
  const std::string text = print_data(result.data, may_be_bold());
  *anything = !text.empty();
  return print_text(text);
}

std::string lost_output() {
  return std::string("standard output: ") + strerror(errno);
}
