/* kestrel-lab: sends one lab control command to a running software switch and prints the reply. The commands
 * and the socket they go to are platform/softswitch/services/lab.h; users read docs/lab-control.md. */
#include <errno.h>
#include <fcntl.h>
#include <getopt.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

enum exit_status { carried_out = 0, command_refused = 1, no_switch = 2 };

static const char usage[] =
    "Usage: kestrel-lab [-d STATE_DIR] COMMAND...\n"
    "Sends a lab control command to the software switch that runs on this machine.\n"
    "\n"
    "  -d, --state-dir STATE_DIR  state directory of the switch; otherwise KESTREL_STATE_DIR from the\n"
    "                             environment, otherwise /var/lib/kestrel\n"
    "      --help                 show this text\n"
    "\n"
    "Without a command the commands are listed.\n"
    "Exit status: 0 carried out, 1 refused, 2 the switch cannot be reached, or wrong usage.\n";

static int unreachable(const std::string &state_dir, const char *reason) {
  fprintf(stderr, "kestrel-lab: cannot reach the switch at %s/lab.sock: %s\n", state_dir.c_str(), reason);
  return no_switch;
}

static std::string default_state_dir() {
  const char *given = getenv("KESTREL_STATE_DIR");
  return given && *given ? given : "/var/lib/kestrel";
}

/* Connects by way of the open directory, as a path may be longer than a socket address can be. -1 with errno.
 */
static int connect_to(const std::string &state_dir) {
  int directory = open(state_dir.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  int fd = directory < 0 ? -1 : socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  struct sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/lab.sock", directory);
  int rc = connect(fd, reinterpret_cast<struct sockaddr *>(&address), sizeof address);
  return rc == 0 ? fd : -1;
}

static bool send_line(int fd, const std::string &line) {
  std::string_view rest = line;
  while (!rest.empty()) {
    ssize_t size = send(fd, rest.data(), rest.size(), MSG_NOSIGNAL);
    if (size < 0 && errno != EINTR) return false;
    if (size > 0) rest.remove_prefix(static_cast<size_t>(size));
  }
  return shutdown(fd, SHUT_WR) == 0;
}

/* Reads until the switch closes. */
static bool receive_reply(int fd, std::string *reply) {
  char block[8192];
  for (;;) {
    ssize_t size = recv(fd, block, sizeof block, 0);
    if (size == 0) return true;
    if (size < 0 && errno != EINTR) return false;
    if (size > 0) reply->append(block, static_cast<size_t>(size));
  }
}

/* Prints a reply. "ok" alone says nothing that the exit status does not, and after other lines it would only
 * be in the way of scripts, so it is left out; an error goes to standard error. */
static int print_reply(std::string_view reply) {
  if (reply.ends_with('\n')) reply.remove_suffix(1);
  size_t break_at = reply.rfind('\n');
  size_t last_start = break_at == reply.npos ? 0 : break_at + 1;
  std::string_view last = reply.substr(last_start);
  fwrite(reply.data(), 1, last_start, stdout);
  if (fflush(stdout) != 0) return fputs("kestrel-lab: the reply cannot be written\n", stderr), no_switch;
  if (last == "ok") return carried_out;
  fprintf(stderr, "kestrel-lab: %.*s\n", static_cast<int>(last.size()), last.data());
  return last.starts_with("error:") ? command_refused : no_switch;
}

static int run(const std::string &state_dir, const std::string &line) {
  int fd = connect_to(state_dir);
  if (fd < 0)
    return unreachable(state_dir, errno == ECONNREFUSED ? "no switch is running there" : strerror(errno));
  std::string reply;
  /* A switch that refuses a line may close before all of it is sent; its reply says why. */
  bool sent = send_line(fd, line);
  bool received = receive_reply(fd, &reply);
  if (reply.empty())
    return unreachable(state_dir, sent && received ? "it closed without an answer" : strerror(errno));
  return print_reply(reply);
}

/* A word as the switch reads it whole: in double quotes when it holds blanks, quotes or backslashes. */
static std::string quote_word(std::string_view word) {
  if (!word.empty() && word.find_first_of(" \t\"\\") == word.npos) return std::string(word);
  std::string quoted = "\"";
  for (char byte : word) {
    if (byte == '"' || byte == '\\') quoted += '\\';
    quoted += byte;
  }
  return quoted + '"';
}

/* The command as a line. A single word is a line already. */
static std::string command_line(int count, char **words) {
  if (count == 1) return words[0];
  std::string line;
  for (int i = 0; i < count; i++) line += (i > 0 ? " " : "") + quote_word(words[i]);
  return line;
}

int main(int argc, char **argv) {
  static const struct option options[] = {
      {"state-dir", required_argument, nullptr, 'd'}, {"help", no_argument, nullptr, 'h'}, {}};
  std::string state_dir = default_state_dir();
  int option;
  /* "+": what follows the command word is the command's own, dashes or not. */
  while ((option = getopt_long(argc, argv, "+d:", options, nullptr)) != -1) {
    if (option == 'h') return fputs(usage, stdout) < 0 ? no_switch : carried_out;
    if (option != 'd') return fputs(usage, stderr), no_switch;
    state_dir = optarg;
  }
  std::string line = command_line(argc - optind, argv + optind);
  if (line.find('\n') != line.npos) return fputs("kestrel-lab: a command is one line\n", stderr), no_switch;
  return run(state_dir, (line.empty() ? "help" : line) + "\n");
}
