/* kestrel-passwd: sets passwords in the accounts file of the software switch. The file and its rules are
 * platform/softswitch/services/accounts.h; a running switch takes changes up by itself. */
#include "platform/softswitch/services/accounts.h"
#include "platform/softswitch/services/settings.h"

#include <getopt.h>
#include <stdio.h>
#include <string.h>
#include <string>
#include <termios.h>
#include <unistd.h>

static const char usage[] =
    "Usage: kestrel-passwd [-d STATE_DIR] [-l LEVEL] USER\n"
    "       kestrel-passwd [-d STATE_DIR] --delete USER\n"
    "Sets the password of an account of the software switch, or adds the account. The password is asked for\n"
    "twice on a terminal; otherwise it is one line of standard input.\n"
    "\n"
    "  -d, --state-dir STATE_DIR  state directory of the switch; otherwise KESTREL_STATE_DIR from the\n"
    "                             environment, otherwise /var/lib/kestrel\n"
    "  -l, --level LEVEL          15 read and write (default), 1 read\n"
    "      --delete               take the account away instead\n"
    "      --help                 show this text\n"
    "\n"
    "Exit status: 0 done, 1 refused or failed, 2 wrong usage.\n";

enum exit_status { done = 0, failed = 1, misused = 2 };

struct wish {
  std::string state_dir;
  std::string user;
  int level = 15;
  bool remove = false;
};

/* Turns the terminal's echo off for its lifetime. Does nothing when standard input is no terminal. */
class silent_terminal {
public:
  silent_terminal() {
    is_terminal = tcgetattr(STDIN_FILENO, &before) == 0;
    struct termios silent = before;
    /* Without ISIG too: an interrupt here would leave the user's terminal without echo. */
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG);
    if (is_terminal) tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
  }
  ~silent_terminal() {
    if (is_terminal) tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
  }
  silent_terminal(const silent_terminal &) = delete;
  silent_terminal &operator=(const silent_terminal &) = delete;

private:
  struct termios before = {};
  bool is_terminal;
};

static int complain(const std::string &reason) {
  fprintf(stderr, "kestrel-passwd: %s\n", reason.c_str());
  return failed;
}

/* Reads one line of standard input without its newline. False at the end of input. */
static bool read_line(std::string *line) {
  line->clear();
  int c;
  while ((c = getchar()) != EOF && c != '\n') line->push_back(static_cast<char>(c));
  return c == '\n' || !line->empty();
}

static bool ask(const char *prompt, std::string *password) {
  fputs(prompt, stderr);
  bool read;
  {
    silent_terminal silence;
    read = read_line(password);
  }
  fputc('\n', stderr);
  return read;
}

static bool read_password(std::string *password, std::string *error) {
  *error = "no password was given";
  if (!isatty(STDIN_FILENO)) return read_line(password) && !password->empty();
  std::string again;
  if (!ask("New password: ", password) || password->empty()) return false;
  if (!ask("Once more: ", &again)) return false;
  *error = "the two passwords differ";
  return *password == again;
}

static int carry_out(const wish &wanted) {
  std::string error;
  if (wanted.remove) {
    if (!softswitch::accounts_remove(wanted.state_dir, wanted.user, &error)) return complain(error);
    return done;
  }
  if (!softswitch::make_state_dir(wanted.state_dir, &error)) return complain(error);
  std::string password;
  if (!read_password(&password, &error)) return complain(error);
  bool set = softswitch::accounts_set(wanted.state_dir, wanted.user, password, wanted.level, &error);
  explicit_bzero(password.data(), password.size());
  return set ? done : complain(error);
}

static bool level_from_text(const std::string &text, int *level) {
  *level = text == "1" ? 1 : 15;
  return text == "1" || text == "15";
}

int main(int argc, char **argv) {
  static const struct option options[] = {{"state-dir", required_argument, nullptr, 'd'},
                                          {"level", required_argument, nullptr, 'l'},
                                          {"delete", no_argument, nullptr, 'D'},
                                          {"help", no_argument, nullptr, 'h'},
                                          {}};
  wish wanted;
  wanted.state_dir = softswitch::read_settings().state_dir;
  bool good = true;
  int option;
  while ((option = getopt_long(argc, argv, "d:l:", options, nullptr)) != -1) {
    if (option == 'h') return fputs(usage, stdout) < 0 ? failed : done;
    if (option == 'd') wanted.state_dir = optarg;
    if (option == 'l') good = level_from_text(optarg, &wanted.level) && good;
    if (option == 'D') wanted.remove = true;
    if (option == '?') good = false;
  }
  if (!good || argc - optind != 1) return fputs(usage, stderr), misused;
  wanted.user = argv[optind];
  return carry_out(wanted);
}
