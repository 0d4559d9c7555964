#include "tools/kestrelctl/password.h"

#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

/* Signals that end or stop a program that waits at a prompt. */
static const int caught[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};
static const size_t caught_count = sizeof caught / sizeof caught[0];

static volatile sig_atomic_t came;

static void note(int number) {
  came = number;
}

/* Signals are noted instead of ending the program, until the guard is released, and come only while
 * wait_for_input() waits: one that came just before would go unnoticed while it does. */
struct signal_guard {
  struct sigaction before[caught_count];
  sigset_t mask_before;

  signal_guard() {
    struct sigaction noting = {};
    sigset_t blocked;
    noting.sa_handler = note;
    came = 0;
    sigemptyset(&blocked);
    for (int number : caught) sigaddset(&blocked, number);
    sigprocmask(SIG_BLOCK, &blocked, &mask_before);
    for (size_t i = 0; i < caught_count; i++) sigaction(caught[i], &noting, &before[i]);
  }
  signal_guard(const signal_guard &) = delete;
  signal_guard &operator=(const signal_guard &) = delete;
  ~signal_guard() {
    for (size_t i = 0; i < caught_count; i++) sigaction(caught[i], &before[i], nullptr);
    sigprocmask(SIG_SETMASK, &mask_before, nullptr);
  }
};

/* The terminal does not echo until the guard is released. */
struct echo_guard {
  int fd;
  struct termios before;
  bool changed;

  explicit echo_guard(int terminal) : fd(terminal), before(), changed(false) {
    if (tcgetattr(fd, &before) != 0) return;
    struct termios silent = before;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
    changed = tcsetattr(fd, TCSAFLUSH, &silent) == 0;
  }
  echo_guard(const echo_guard &) = delete;
  echo_guard &operator=(const echo_guard &) = delete;
  ~echo_guard() {
    if (changed) tcsetattr(fd, TCSAFLUSH, &before);
  }
};

enum { LONGEST_LINE = 1024 };

/* Waits until there is something to read, with the given mask of signals unless it is null. False at a
 * signal. */
static bool wait_for_input(int fd, const sigset_t *mask) {
  struct pollfd input = {fd, POLLIN, 0};
  while (ppoll(&input, 1, nullptr, mask) < 0)
    if (errno != EINTR || came != 0) return false;
  return true;
}

/* Reads up to a line end or the end of input. False at an error, a signal, and when nothing has come at all.
 */
static bool read_line(int fd, const sigset_t *mask, std::string *line) {
  char byte;
  for (;;) {
    if (!wait_for_input(fd, mask)) return false;
    const ssize_t size = read(fd, &byte, 1);
    if (size < 0) return false;
    if (size == 0) return !line->empty();
    if (byte == '\n') break;
    if (line->size() == LONGEST_LINE) return false;
    *line += byte;
  }
  if (line->ends_with('\r')) line->pop_back();
  return true;
}

/* Prompts once. What signal has ended it stays in `came`. */
static bool prompt_once(const std::string &prompt, std::string *password) {
  const signal_guard signals;
  const echo_guard silence(STDIN_FILENO);
  fputs(prompt.c_str(), stderr);
  const bool read = silence.changed && read_line(STDIN_FILENO, &signals.mask_before, password);
  fputc('\n', stderr);
  return read;
}

static bool prompt_for(const std::string &prompt, std::string *password) {
  for (;;) {
    const bool read = prompt_once(prompt, password);
    if (came == 0) return read;
    password->clear();
    raise(came); /* ends the program, or stops it until it is continued */
  }
}

bool read_password(const std::string &prompt, std::string *password, std::string *error) {
  const char *given = getenv("KESTRELCTL_PASSWORD");
  if (given != nullptr) return *password = given, true;
  const bool read =
      isatty(STDIN_FILENO) ? prompt_for(prompt, password) : read_line(STDIN_FILENO, nullptr, password);
  if (!read)
    *error =
        "there is no password: it is read from the terminal, from standard input or from KESTRELCTL_PASSWORD";
  return read;
}

bool confirm(const std::string &question) {
  std::string line;
  fputs(question.c_str(), stderr);
  return read_line(STDIN_FILENO, nullptr, &line) && (line.starts_with('y') || line.starts_with('Y'));
}
