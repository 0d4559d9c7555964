/* See mg_child.h. Between fork and exec the child calls only what is safe after a signal, as other threads of
 * the process may have held any lock at the moment of the fork; all that takes memory is prepared before. */
#include "server/mg_child.h"

#include <errno.h>
#include <fcntl.h>
#include <mutex>
#include <signal.h>
#include <string.h>
#include <string>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

/* --- The table ----------------------------------------------------------------------------------------- */

struct child {
  pid_t pid;
  bool ended;      /* it was asked to end, so nothing of its group is to stay */
  time_t deadline; /* monotonic seconds; still running then it is killed. 0: it may run on */
};

static struct child children[MG_MAX_CHILDREN];
static int child_count = 0;
static std::mutex table_lock; /* servers of one process may be polled by different threads */

static struct child *find_child(pid_t pid) {
  for (int i = 0; i < child_count; i++) {
    if (children[i].pid == pid) return &children[i];
  }
  return nullptr;
}

static time_t monotonic_seconds(void) {
  struct timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec;
}

int running_children(void) {
  const std::lock_guard<std::mutex> guard(table_lock);
  return child_count;
}

bool is_running_child(pid_t pid) {
  const std::lock_guard<std::mutex> guard(table_lock);
  return find_child(pid) != nullptr;
}

/* --- Starting ------------------------------------------------------------------------------------------ */

/* What the child needs between fork and exec. */
struct program {
  char *const *argv;
  char *const *environment;
  const char *directory;
  int sock;
  std::string complaint; /* what is printed before the reason when the program cannot be executed */
};

static std::string complaint_about(char *const argv[]) {
  std::string text = "Status: 500\r\n\r\n500 Server Error: ";
  for (int i = 0; argv[i] != nullptr; i++) text.append(i == 0 ? "" : " ").append(argv[i]);
  return text + ": ";
}

static void reset_signals(void) {
  struct sigaction by_default = {};
  by_default.sa_handler = SIG_DFL;
  for (int sig = 1; sig < NSIG; sig++) sigaction(sig, &by_default, nullptr);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

/* Standard input and output become `sock`, also when it has one of their numbers already; dup2() then leaves
 * the descriptor as it is, to be closed at exec. */
static void take_standard_streams(int sock) {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO}) {
    dup2(sock, fd);
    fcntl(fd, F_SETFD, 0);
  }
  close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
}

static void print(const char *text, size_t len) {
  if (write(STDOUT_FILENO, text, len) < 0) _exit(EXIT_FAILURE);
}

[[noreturn]] static void become(const struct program *program) {
  setpgid(0, 0);
  reset_signals();
  take_standard_streams(program->sock);
  if (program->directory == nullptr || chdir(program->directory) == 0) {
    execve(program->argv[0], program->argv, program->environment);
  }
  const char *reason = strerrordesc_np(errno);
  print(program->complaint.data(), program->complaint.size());
  if (reason != nullptr) print(reason, strlen(reason));
  _exit(EXIT_FAILURE);
}

/* Signals wait until the child is itself, so that no handler of the server runs in it. */
static pid_t fork_into(const struct program *program) {
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  const pid_t pid = fork();
  if (pid == 0) become(program);
  const int error = errno;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  errno = error;
  return pid;
}

pid_t start_child(char *const argv[], char *const environment[], const char *directory, int sock) {
  const struct program program = {argv, environment == nullptr ? environ : environment, directory, sock,
                                  complaint_about(argv)};
  const std::lock_guard<std::mutex> guard(table_lock);
  if (child_count == MG_MAX_CHILDREN) {
    errno = EAGAIN;
    return -1;
  }
  const pid_t pid = fork_into(&program);
  if (pid == -1) return -1;
  setpgid(pid, pid); /* both do, as either may come first */
  children[child_count++] = {pid, false, 0};
  return pid;
}

/* --- Ending -------------------------------------------------------------------------------------------- */

void end_child(pid_t pid) {
  const std::lock_guard<std::mutex> guard(table_lock);
  struct child *child = find_child(pid);
  if (child == nullptr) return;
  kill(-pid, SIGTERM);
  child->ended = true;
  child->deadline = monotonic_seconds() + MG_CHILD_GRACE_SECONDS;
}

void let_child_finish(pid_t pid) {
  const std::lock_guard<std::mutex> guard(table_lock);
  struct child *child = find_child(pid);
  if (child != nullptr && child->deadline == 0) {
    child->deadline = monotonic_seconds() + MG_CHILD_GRACE_SECONDS;
  }
}

/* Returns whether the child has ended. While it has not been reaped its pid is nobody else's, so what is left
 * of its group can be killed safely before. */
static bool reap(const struct child *child, time_t now) {
  siginfo_t info = {};
  const int result = waitid(P_PID, static_cast<id_t>(child->pid), &info, WEXITED | WNOHANG | WNOWAIT);
  if (result != 0) return errno == ECHILD; /* the application has all children reaped by the system */
  const bool runs = info.si_pid == 0;
  if (runs && child->deadline != 0 && now >= child->deadline) kill(-child->pid, SIGKILL);
  if (runs) return false;
  if (child->ended) kill(-child->pid, SIGKILL);
  waitpid(child->pid, nullptr, WNOHANG);
  return true;
}

static void reap_all(time_t now) {
  for (int i = 0; i < child_count;) {
    if (reap(&children[i], now)) {
      children[i] = children[--child_count];
    } else {
      i++;
    }
  }
}

void reap_children(void) {
  const std::lock_guard<std::mutex> guard(table_lock);
  if (child_count > 0) reap_all(monotonic_seconds());
}

void end_children_at_once(void) {
  const std::lock_guard<std::mutex> guard(table_lock);
  for (int i = 0; i < child_count; i++) {
    if (children[i].ended) kill(-children[i].pid, SIGKILL);
  }
  reap_all(0);
}
