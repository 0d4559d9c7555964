/* Child processes: what a program finds when it starts, how it ends, and that none is left behind. */
#include "server/mg_child.h"
#include "tests/unit/server/program_harness.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

/* A child with the other end of its socket. */
struct Child {
  explicit Child(std::vector<std::string> words, const char *directory = nullptr,
                 std::vector<std::string> environment = {"PATH=/usr/bin:/bin"}) {
    std::vector<char *> argv, variables;
    for (std::string &word : words) argv.push_back(word.data());
    for (std::string &variable : environment) variables.push_back(variable.data());
    argv.push_back(nullptr);
    variables.push_back(nullptr);
    int sp[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sp), 0);
    pid = start_child(argv.data(), variables.data(), directory, sp[1]);
    error = errno;
    fd = sp[0];
    close(sp[1]);
  }
  ~Child() { close(fd); }
  Child(const Child &) = delete;
  Child &operator=(const Child &) = delete;

  std::string read_line() const {
    std::string line;
    for (char c; read(fd, &c, 1) == 1 && c != '\n';) line += c;
    return line;
  }
  std::string read_all() const {
    std::string text;
    for (char c; read(fd, &c, 1) == 1;) text += c;
    return text;
  }

  int fd;
  pid_t pid;
  int error;
};

static std::string output_of(const std::string &commands, const char *directory = nullptr,
                             const std::vector<std::string> &environment = {"PATH=/usr/bin:/bin"}) {
  const Child child({"/bin/sh", "-c", commands}, directory, environment);
  EXPECT_GT(child.pid, 0);
  std::string output = child.read_all();
  EXPECT_TRUE(all_children_end());
  return output;
}

/* --- Starting ------------------------------------------------------------------------------------------ */

TEST(ChildProcess, StandardInputAndOutputAreTheSocket) {
  const Child child({"/bin/cat"});
  ASSERT_EQ(write(child.fd, "hello", 5), 5);
  shutdown(child.fd, SHUT_WR);
  EXPECT_EQ(child.read_all(), "hello");
  EXPECT_TRUE(all_children_end());
}

TEST(ChildProcess, ASocketWithTheNumberOfAStandardStreamIsPassedOn) {
  for (const int number : {0, 1, 2}) {
    int sp[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sp), 0);
    const pid_t pid = fork();
    if (pid == 0) {
      dup3(sp[1], number, O_CLOEXEC);
      char program[] = "/bin/echo", word[] = "hello";
      char *const argv[] = {program, word, nullptr};
      _exit(start_child(argv, nullptr, nullptr, number) > 0 ? 0 : 1);
    }
    close(sp[1]);
    char text[16] = "";
    EXPECT_EQ(recv(sp[0], text, 6, MSG_WAITALL), 6) << number;
    EXPECT_STREQ(text, "hello\n");
    close(sp[0]);
    EXPECT_EQ(waitpid(pid, nullptr, 0), pid);
  }
}

TEST(ChildProcess, TheEnvironmentIsWhatWasGiven) {
  const Child child({"/usr/bin/env"}, nullptr, {"A=1", "B=a b"});
  EXPECT_EQ(child.read_all(), "A=1\nB=a b\n");
  EXPECT_TRUE(all_children_end());
}

TEST(ChildProcess, RunsInTheDirectoryGiven) {
  const TempDir dir;
  EXPECT_EQ(output_of("pwd -P", dir.path.c_str()), dir.path + "\n");
}

TEST(ChildProcess, IsTheLeaderOfItsOwnGroup) {
  EXPECT_EQ(output_of("read -r pid name state parent group rest < /proc/self/stat; echo $((group - $$))"),
            "0\n");
}

TEST(ChildProcess, SignalsAreAsByDefault) {
  signal(SIGPIPE, SIG_IGN);
  signal(SIGUSR2, SIG_IGN);
  sigset_t usr1, before;
  sigemptyset(&usr1);
  sigaddset(&usr1, SIGUSR1);
  pthread_sigmask(SIG_BLOCK, &usr1, &before);
  const Child child({"/bin/grep", "-E", "^Sig(Blk|Ign)", "/proc/self/status"});
  EXPECT_EQ(child.read_all(), "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
  EXPECT_TRUE(all_children_end());

  sigset_t now;
  pthread_sigmask(SIG_SETMASK, &before, &now);
  EXPECT_TRUE(sigismember(&now, SIGUSR1)) << "the caller's own mask stays";
  EXPECT_FALSE(sigismember(&now, SIGTERM));
  signal(SIGUSR2, SIG_DFL);
}

TEST(ChildProcess, NoOtherDescriptorIsPassedOn) {
  const int inherited = dup2(STDERR_FILENO, 100); /* not close-on-exec */
  ASSERT_EQ(inherited, 100);
  EXPECT_EQ(output_of("for fd in 0 1 2 100; do [ -e /proc/$$/fd/$fd ] && echo $fd; done"), "0\n1\n2\n");
  close(inherited);
}

static std::string failure(const std::string &command, int error) {
  return "Status: 500\r\n\r\n500 Server Error: " + command + ": " + strerror(error);
}

TEST(ChildProcess, WhatCannotBeExecutedPrintsAnAnswer) {
  const TempDir dir;
  const std::string plain = dir.file("plain"), no_format = dir.file("format");
  write_file(plain, "#!/bin/sh\n");
  write_script(no_format, "");
  write_file(no_format, "neither script nor program");
  const struct {
    std::vector<std::string> command;
    const char *directory;
    std::string output;
  } cases[] = {
      {{"/nowhere/program"}, nullptr, failure("/nowhere/program", ENOENT)},
      {{plain}, nullptr, failure(plain, EACCES)},
      {{no_format}, nullptr, failure(no_format, ENOEXEC)},
      {{"/nowhere/perl", "-w", "/a b"}, nullptr, failure("/nowhere/perl -w /a b", ENOENT)},
      {{"/bin/true"}, "/nowhere", failure("/bin/true", ENOENT)},
  };
  for (const auto &c : cases) {
    const Child child(c.command, c.directory);
    EXPECT_EQ(child.read_all(), c.output);
  }
  EXPECT_TRUE(all_children_end());
}

/* --- Ending -------------------------------------------------------------------------------------------- */

TEST(ChildProcess, AsksTheWholeGroupToEnd) {
  const Child child({"/bin/sh", "-c", "sleep 1000 & echo $!; wait"});
  const pid_t grandchild = atoi(child.read_line().c_str());
  ASSERT_TRUE(process_runs(grandchild));
  end_child(child.pid);
  EXPECT_TRUE(all_children_end());
  EXPECT_EQ(child.read_all(), "");
  EXPECT_TRUE(process_ends(grandchild));
}

TEST(ChildProcess, AChildMayTidyUpWhenItIsAskedToEnd) {
  const Child child(
      {"/bin/sh", "-c", "trap 'echo tidied up; exit' TERM; echo ready; while :; do sleep 0.01; done"});
  EXPECT_EQ(child.read_line(), "ready");
  end_child(child.pid);
  EXPECT_EQ(child.read_all(), "tidied up\n");
  EXPECT_TRUE(all_children_end());
}

TEST(ChildProcess, WhatIsLeftOfAGroupEndsWithItsLeader) {
  const Child child({"/bin/sh", "-c", "(trap '' TERM; echo ready; exec sleep 1000) & echo $!; wait"});
  std::string lines[] = {child.read_line(), child.read_line()};
  const pid_t stubborn = atoi((lines[0] == "ready" ? lines[1] : lines[0]).c_str());
  end_child(child.pid);
  EXPECT_TRUE(all_children_end());
  EXPECT_EQ(child.read_all(), "");
  EXPECT_TRUE(process_ends(stubborn));
}

TEST(ChildProcess, WhatIgnoresTheRequestEndsWithTheServer) {
  const Child child({"/bin/sh", "-c", "trap '' TERM; echo ready; while :; do sleep 0.01; done"});
  EXPECT_EQ(child.read_line(), "ready");
  end_child(child.pid);
  usleep(50000);
  reap_children();
  EXPECT_TRUE(is_running_child(child.pid));
  end_children_at_once();
  EXPECT_TRUE(all_children_end());
  EXPECT_FALSE(is_running_child(child.pid));
}

TEST(ChildProcess, AChildThatMayFinishDoes) {
  const Child child({"/bin/sh", "-c", "read line; echo $line"});
  let_child_finish(child.pid);
  end_children_at_once(); /* nobody asked it to end */
  ASSERT_EQ(write(child.fd, "done\n", 5), 5);
  EXPECT_EQ(child.read_all(), "done\n");
  EXPECT_TRUE(all_children_end());
}

TEST(ChildProcess, OtherProcessesAreLeftAlone) {
  const pid_t own = fork();
  if (own == 0) _exit(3);
  const pid_t running = fork();
  if (running == 0) {
    pause();
    _exit(0);
  }
  end_child(running);
  let_child_finish(running);
  end_child(0);
  end_child(-1);
  end_child(getpid());
  EXPECT_EQ(output_of("echo hello"), "hello\n"); /* reaps */
  int status = 0;
  EXPECT_EQ(waitpid(own, &status, 0), own);
  EXPECT_EQ(WEXITSTATUS(status), 3);
  EXPECT_TRUE(process_runs(running));
  kill(running, SIGKILL);
  EXPECT_EQ(waitpid(running, &status, 0), running);
}

TEST(ChildProcess, ChildrenThatTheSystemReapsAreForgotten) {
  signal(SIGCHLD, SIG_IGN);
  EXPECT_EQ(output_of("echo hello"), "hello\n");
  signal(SIGCHLD, SIG_DFL);
}

/* --- Bounds -------------------------------------------------------------------------------------------- */

TEST(ChildProcess, NoMoreThanTheMaximumRunAtATime) {
#ifdef KESTREL_SANITIZED
  GTEST_SKIP() << "so many forks of a program with sanitizers take long";
#endif
  std::vector<std::unique_ptr<Child>> children;
  for (int i = 0; i < MG_MAX_CHILDREN; i++) {
    children.push_back(std::make_unique<Child>(std::vector<std::string>{"/bin/cat"}));
    ASSERT_GT(children.back()->pid, 0);
  }
  EXPECT_EQ(running_children(), MG_MAX_CHILDREN);
  const Child refused({"/bin/cat"});
  EXPECT_EQ(refused.pid, -1);
  EXPECT_EQ(refused.error, EAGAIN);
  EXPECT_EQ(refused.read_all(), "");
  children.clear();
  EXPECT_TRUE(all_children_end());
  EXPECT_EQ(output_of("echo hello"), "hello\n");
}

TEST(ChildProcess, NothingIsLeftOfManyChildren) {
  for (int i = 0; i < 10; i++) {
    const Child child({"/bin/true"});
    ASSERT_GT(child.pid, 0);
    child.read_all();
    reap_children();
  }
  EXPECT_TRUE(all_children_end());
  EXPECT_EQ(own_children(), std::vector<pid_t>{});
}
