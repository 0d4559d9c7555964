/* The system log: lines, the bounded file, the console, crash records. */
#include "platform/softswitch/services/log.h"

#include "platform/api/l7proc.h"
#include "platform/softswitch/services/service_thread.h"
#include "tests/unit/platform/services_test_support.h"

#include <errno.h>
#include <fcntl.h>
#include <regex>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace softswitch;

namespace {

class Log : public testing::Test {
protected:
  void TearDown() override {
    log_close();
    log_set_console_severity(L7PROC_WARNING);
  }
  void open() { ASSERT_TRUE(log_open(directory.path, &error)) << error; }
  std::string file() const { return directory.path + "/log"; }
  /* Lines of the log file without their times. */
  std::vector<std::string> logged() const { return without_times(file_content(file())); }
  static std::vector<std::string> without_times(const std::string &text) {
    std::vector<std::string> lines;
    for (const std::string &line : lines_of(text)) lines.push_back(line.size() > 25 ? line.substr(25) : line);
    return lines;
  }
  temporary_directory directory;
  std::string error;
};

using texts = std::vector<std::string>;

/* --- Lines -----------------------------------------------------------------------------------------------
 */

TEST_F(Log, LineHasUtcTimeSeverityPlaceAndText) {
  open();
  l7proc_logf(L7PROC_INFO, 0, "rest_common.c", 129, "%s %d", "text", 7);
  std::string line = file_content(file());
  EXPECT_TRUE(std::regex_match(
      line,
      std::regex("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z INFO rest_common\\.c:129 text 7\n")))
      << line;
}

TEST_F(Log, EverySeverityHasItsWord) {
  open();
  testing::internal::CaptureStderr();
  for (int severity = -1; severity <= 8; severity++) l7proc_logf(severity, 0, "f", 1, "x");
  log_close();
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(logged(),
            (texts{"EMERGENCY f:1 x", "EMERGENCY f:1 x", "ALERT f:1 x", "CRITICAL f:1 x", "ERROR f:1 x",
                   "WARNING f:1 x", "NOTICE f:1 x", "INFO f:1 x", "DEBUG f:1 x", "DEBUG f:1 x"}));
}

TEST_F(Log, SeverityTextsAreWordsOfAnyCaseOrNumbers) {
  for (int severity = 0; severity <= 7; severity++) {
    int read = -1;
    EXPECT_TRUE(log_severity_from_text(log_severity_word(severity), &read));
    EXPECT_EQ(read, severity);
    EXPECT_TRUE(log_severity_from_text(std::to_string(severity), &read));
    EXPECT_EQ(read, severity);
  }
  int read = -1;
  EXPECT_TRUE(log_severity_from_text("wArNiNg", &read));
  EXPECT_EQ(read, 4);
  for (std::string_view bad : {"", "8", "-1", "04", "warn", "WARNING ", "all"}) {
    read = -1;
    EXPECT_FALSE(log_severity_from_text(bad, &read)) << bad;
    EXPECT_EQ(read, -1);
  }
}

TEST_F(Log, NobodyCanForgeALine) {
  open();
  l7proc_logf(L7PROC_INFO, 0, "a\nb", 1,
              "one\r\n2026-01-31T12:34:56.789Z INFO x:1 forged\t\x1b[2J\x7f end\n");
  EXPECT_EQ(logged(), (texts{"INFO a b:1 one  2026-01-31T12:34:56.789Z INFO x:1 forged  [2J  end "}));
}

TEST_F(Log, TextBeyondAsciiIsKept) {
  open();
  l7proc_logf(L7PROC_INFO, 0, "f", 1, "%s", "K\xc3\xa4stchen \xe2\x9c\x93");
  EXPECT_EQ(logged(), (texts{"INFO f:1 K\xc3\xa4stchen \xe2\x9c\x93"}));
}

TEST_F(Log, PercentSignsInArgumentsMeanNothing) {
  open();
  l7proc_logf(L7PROC_INFO, 0, "f", 1, "%s", "100%n%s%d");
  EXPECT_EQ(logged(), (texts{"INFO f:1 100%n%s%d"}));
}

TEST_F(Log, LongLinesAreCutAtTheLimit) {
  open();
  std::string just_fits(log_line_max - 25 - strlen("INFO f:1 ") - 1, 'x');
  l7proc_logf(L7PROC_INFO, 0, "f", 1, "%s", just_fits.c_str());
  l7proc_logf(L7PROC_INFO, 0, "f", 1, "%sy", just_fits.c_str());
  l7proc_logf(L7PROC_INFO, 0, "f", 1, "%s", std::string(100000, 'x').c_str());
  EXPECT_EQ(logged(), (texts{"INFO f:1 " + just_fits, "INFO f:1 " + just_fits, "INFO f:1 " + just_fits}));
}

TEST_F(Log, LoggingKeepsErrno) {
  open();
  errno = EXDEV;
  l7proc_logf(L7PROC_INFO, 0, nullptr, 1, "x");
  EXPECT_EQ(errno, EXDEV);
  EXPECT_EQ(logged(), (texts{"INFO -:1 x"}));
}

TEST_F(Log, LinesOfManyThreadsStayWhole) {
  open();
  std::vector<std::thread> writers;
  for (int i = 0; i < 4; i++)
    writers.emplace_back([i] {
      std::string text(200, static_cast<char>('a' + i));
      for (int n = 0; n < 500; n++) l7proc_logf(L7PROC_INFO, 0, "f", 1, "%s", text.c_str());
    });
  for (std::thread &writer : writers) writer.join();
  int counts[4] = {};
  for (const std::string &line : logged()) {
    ASSERT_EQ(line.size(), 209u) << line;
    int who = line[9] - 'a';
    ASSERT_EQ(line, "INFO f:1 " + std::string(200, static_cast<char>('a' + who)));
    counts[who]++;
  }
  for (int count : counts) EXPECT_EQ(count, 500);
}

/* --- The file --------------------------------------------------------------------------------------------
 */

TEST_F(Log, FileIsForItsOwnerOnlyAndGoesOnAfterARestart) {
  mode_t before = umask(0);
  open();
  umask(before);
  l7proc_logf(L7PROC_INFO, 0, "f", 1, "one");
  log_close();
  l7proc_logf(L7PROC_INFO, 0, "f", 1, "lost");
  open();
  l7proc_logf(L7PROC_INFO, 0, "f", 1, "two");
  EXPECT_EQ(mode_of(file()), 0600u);
  EXPECT_EQ(logged(), (texts{"INFO f:1 one", "INFO f:1 two"}));
}

TEST_F(Log, FullFileBecomesTheOlderHalf) {
  open();
  const std::string text(10000, 'x');
  for (int i = 0; i < 350; i++) l7proc_logf(L7PROC_INFO, 0, "f", i, "%s", text.c_str());
  EXPECT_LE(std::filesystem::file_size(file()), 1024u * 1024);
  EXPECT_LE(std::filesystem::file_size(file() + ".1"), 1024u * 1024);
  EXPECT_EQ(mode_of(file() + ".1"), 0600u);
  /* 104 lines fill a file: the third and fourth are left, without a gap. */
  texts lines = without_times(file_content(file() + ".1") + file_content(file()));
  ASSERT_EQ(lines.size(), 350u - 208u);
  for (size_t i = 0; i < lines.size(); i++)
    ASSERT_EQ(lines[i], "INFO f:" + std::to_string(208 + i) + " " + text);
}

TEST_F(Log, BoundHoldsWhenTheOldFileCannotBeRenamed) {
  open();
  ASSERT_EQ(mkdir((file() + ".1").c_str(), 0700), 0);
  const std::string text(10000, 'x');
  for (int i = 0; i < 150; i++) l7proc_logf(L7PROC_INFO, 0, "f", i, "%s", text.c_str());
  EXPECT_LE(std::filesystem::file_size(file()), 1024u * 1024);
  EXPECT_EQ(logged().back(), "INFO f:149 " + text);
}

TEST_F(Log, OpeningFailsWithAReason) {
  EXPECT_FALSE(log_open(directory.path + "/none", &error));
  EXPECT_EQ(error, directory.path + "/none/log: No such file or directory");
  ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
  EXPECT_FALSE(log_open(directory.path, &error));
  EXPECT_EQ(error, file() + ": No such device or address");
}

/* Sets how large a file may grow, which is what a full disk looks like to a writer. */
void limit_file_size(rlim_t size) {
  struct rlimit limit;
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = size;
  setrlimit(RLIMIT_FSIZE, &limit);
}

/* Runs `body` in a child process; its wait status. */
template <class body_type> int status_of_child(body_type body) {
  pid_t child = fork();
  if (child == 0) {
    body();
    _exit(0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

/* Fills the disk after `room` bytes, logs on, and makes room again; the lines that are in the log then. */
texts lines_of_full_disk(const std::string &directory, rlim_t room) {
  int status = status_of_child([&] {
    std::string error;
    signal(SIGXFSZ, SIG_DFL);
    if (!log_open(directory, &error)) _exit(1);
    limit_file_size(room);
    for (int i = 0; i < 20; i++) {
      errno = EXDEV;
      l7proc_logf(L7PROC_INFO, 0, "f", i, "%s", std::string(200, 'x').c_str());
      if (errno != EXDEV) _exit(2);
    }
    limit_file_size(RLIM_INFINITY);
    l7proc_logf(L7PROC_INFO, 0, "f", 20, "room again");
    l7proc_logf(L7PROC_INFO, 0, "f", 21, "and on");
  });
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  texts lines = lines_of(file_content(directory + "/log"));
  for (std::string &line : lines) line.erase(0, 25);
  return lines;
}

TEST_F(Log, FullDiskLosesLinesButNeitherTearsNorKills) {
  /* A line has 235 bytes: room for four of them, and for four and a piece. */
  for (rlim_t room : {940, 1000}) {
    unlink(file().c_str());
    texts lines = lines_of_full_disk(directory.path, room);
    ASSERT_EQ(lines.size(), 7u);
    for (size_t i = 0; i < 4; i++)
      EXPECT_EQ(lines[i], "INFO f:" + std::to_string(i) + " " + std::string(200, 'x'));
    EXPECT_TRUE(std::regex_match(
        lines[4], std::regex("WARNING log\\.cpp:\\d+ 16 lines were dropped: the log could not be written")))
        << lines[4];
    EXPECT_EQ(lines[5], "INFO f:20 room again");
    EXPECT_EQ(lines[6], "INFO f:21 and on");
  }
}

/* --- The console -----------------------------------------------------------------------------------------
 */

TEST_F(Log, ConsoleShowsWarningsAndWorseUnlessToldOtherwise) {
  open();
  testing::internal::CaptureStderr();
  l7proc_logf(L7PROC_ERROR, 0, "f", 1, "error");
  l7proc_logf(L7PROC_WARNING, 0, "f", 2, "warning");
  l7proc_logf(L7PROC_NOTICE, 0, "f", 3, "notice");
  log_set_console_severity(L7PROC_DEBUG);
  l7proc_logf(L7PROC_DEBUG, 0, "f", 4, "debug");
  log_set_console_severity(L7PROC_EMERGENCY);
  l7proc_logf(L7PROC_ALERT, 0, "f", 5, "alert");
  log_close();
  EXPECT_EQ(without_times(testing::internal::GetCapturedStderr()),
            (texts{"ERROR f:1 error", "WARNING f:2 warning", "DEBUG f:4 debug"}));
}

TEST_F(Log, LinesBeforeOpeningGoToTheConsoleOnly) {
  testing::internal::CaptureStderr();
  l7proc_logf(L7PROC_ERROR, 0, "f", 1, "early");
  open();
  log_close();
  EXPECT_EQ(without_times(testing::internal::GetCapturedStderr()), (texts{"ERROR f:1 early"}));
  EXPECT_EQ(file_content(file()), "");
}

TEST_F(Log, ProgramThatExitsAtOnceStillGetsItsLineOut) {
  int pipe_ends[2];
  ASSERT_EQ(pipe(pipe_ends), 0);
  pid_t child = fork();
  if (child == 0) {
    dup2(pipe_ends[1], STDERR_FILENO);
    l7proc_logf(L7PROC_ERROR, 0, "f", 1, "cannot start");
    exit(2);
  }
  close(pipe_ends[1]);
  std::string text;
  char block[4096];
  for (ssize_t size; (size = read(pipe_ends[0], block, sizeof block)) > 0;) text.append(block, size);
  close(pipe_ends[0]);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 2) << status;
  EXPECT_EQ(without_times(text), (texts{"ERROR f:1 cannot start"}));
}

/* Puts a pipe in the place of standard error for its lifetime. */
class piped_stderr {
public:
  piped_stderr() {
    int ends[2];
    if (pipe(ends) != 0) abort();
    reader = ends[0];
    before = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    close(ends[1]);
  }
  ~piped_stderr() {
    dup2(before, STDERR_FILENO);
    close(before);
    close(reader);
  }
  int reader;

private:
  int before;
};

/* What the console thread writes up to its note of dropped lines. */
std::string read_until_dropped_note(int reader) {
  std::string seen;
  char block[65536];
  while (seen.find(" lines were dropped") == seen.npos || seen.back() != '\n') {
    ssize_t size = read(reader, block, sizeof block);
    if (size <= 0) return "";
    seen.append(block, static_cast<size_t>(size));
  }
  return seen;
}

TEST_F(Log, TerminalThatNobodyReadsHoldsUpNobody) {
  open();
  const std::string text(1000, 'x');
  std::string seen;
  {
    piped_stderr terminal;
    /* More than the pipe and the queue hold together; the test ends only if no call waits. */
    for (int i = 0; i < 1000; i++) l7proc_logf(L7PROC_WARNING, 0, "f", i, "%s", text.c_str());
    EXPECT_EQ(logged().size(), 1000u);
    seen = read_until_dropped_note(terminal.reader);
    log_close();
  }
  texts lines = without_times(seen);
  size_t written = lines.size() - 1;
  for (size_t i = 0; i < written; i++) ASSERT_EQ(lines[i], "WARNING f:" + std::to_string(i) + " " + text);
  std::string note = std::to_string(1000 - written) + " lines were dropped: the console was not read";
  EXPECT_TRUE(lines.back().starts_with("WARNING console.cpp:") && lines.back().ends_with(" " + note))
      << lines.back();
}

TEST_F(Log, ClosingDoesNotWaitForAStuckTerminal) {
  piped_stderr terminal;
  for (int i = 0; i < 500; i++) l7proc_logf(L7PROC_WARNING, 0, "f", i, "%s", std::string(1000, 'x').c_str());
  log_close();
  /* Reached at all: nobody had read a byte. What is left to the thread comes once somebody does. */
  EXPECT_NE(read_until_dropped_note(terminal.reader), "");
}

/* --- The threads of the services ------------------------------------------------------------------------ */

void *read_signal_mask(void *mask) {
  pthread_sigmask(SIG_BLOCK, nullptr, static_cast<sigset_t *>(mask));
  return nullptr;
}

TEST(ServiceThread, TakesNoSignalsButThoseOfACrashAndLeavesItsMakersAlone) {
  sigset_t before, inside, after;
  pthread_t thread;
  pthread_sigmask(SIG_BLOCK, nullptr, &before);
  ASSERT_TRUE(service_thread_start(&thread, "test", read_signal_mask, &inside));
  pthread_join(thread, nullptr);
  pthread_sigmask(SIG_BLOCK, nullptr, &after);
  for (int blocked : {SIGTERM, SIGINT, SIGHUP, SIGPIPE, SIGCHLD, SIGALRM, SIGUSR1})
    EXPECT_TRUE(sigismember(&inside, blocked)) << blocked;
  for (int open : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT})
    EXPECT_FALSE(sigismember(&inside, open)) << open;
  for (int number = 1; number < 32; number++)
    EXPECT_EQ(sigismember(&after, number), sigismember(&before, number)) << number;
}

/* --- Crash records ---------------------------------------------------------------------------------------
 */

void die_of(int number) {
  raise(number);
}

/* A record's headline, and how many addresses follow it. */
void expect_crash_record(const std::string &text, const std::string &name) {
  texts lines = lines_of(text);
  ASSERT_GE(lines.size(), 2u) << text;
  EXPECT_TRUE(
      std::regex_match(lines[0], std::regex("CRASH " + name + " at \\d{10} seconds since 1970, called from")))
      << lines[0];
  for (size_t i = 1; i < lines.size(); i++) EXPECT_NE(lines[i].find("[0x"), std::string::npos) << lines[i];
}

TEST_F(Log, EveryCrashLeavesARecordInTheLogAndOnTheConsoleAndKills) {
  const struct {
    int number;
    const char *name;
  } table[] = {
      {SIGSEGV, "SIGSEGV"}, {SIGBUS, "SIGBUS"}, {SIGILL, "SIGILL"}, {SIGFPE, "SIGFPE"}, {SIGABRT, "SIGABRT"}};
  for (const auto &row : table) {
    unlink(file().c_str());
    int status = status_of_child([&] {
      l7proc_crashlog_register();
      if (!log_open(directory.path, &error)) _exit(1);
      int console = ::open((directory.path + "/console").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      dup2(console, STDERR_FILENO);
      die_of(row.number);
    });
    ASSERT_TRUE(WIFSIGNALED(status)) << row.name << " status " << status;
    EXPECT_EQ(WTERMSIG(status), row.number);
    expect_crash_record(file_content(file()), row.name);
    EXPECT_EQ(file_content(directory.path + "/console"), file_content(file()));
  }
}

TEST_F(Log, CrashBeforeTheLogIsOpenIsRecordedOnTheConsole) {
  int status = status_of_child([&] {
    int console = ::open((directory.path + "/console").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(console, STDERR_FILENO);
    l7proc_crashlog_register();
    abort();
  });
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGABRT);
  expect_crash_record(file_content(directory.path + "/console"), "SIGABRT");
}

/* Recursion that the compiler cannot turn into a loop. */
int overflow_stack(volatile char *above) {
  volatile char here[4096];
  here[0] = above ? above[0] : 1;
  return here[0] == 2 ? 0 : overflow_stack(here) + here[0];
}

TEST_F(Log, StackOverflowIsRecordedToo) {
  int status = status_of_child([&] {
    l7proc_crashlog_register();
    if (!log_open(directory.path, &error)) _exit(1);
    close(STDERR_FILENO);
    _exit(overflow_stack(nullptr));
  });
  ASSERT_TRUE(WIFSIGNALED(status)) << status;
  EXPECT_EQ(WTERMSIG(status), SIGSEGV);
  expect_crash_record(file_content(file()), "SIGSEGV");
}

TEST_F(Log, StuckTerminalDoesNotKeepACrashedProgramAlive) {
  int status = status_of_child([&] {
    piped_stderr terminal;
    fcntl(STDERR_FILENO, F_SETFL, O_NONBLOCK);
    while (write(STDERR_FILENO, "x", 1) == 1) continue;
    fcntl(STDERR_FILENO, F_SETFL, 0);
    l7proc_crashlog_register();
    if (!log_open(directory.path, &error)) _exit(1);
    die_of(SIGSEGV);
  });
  ASSERT_TRUE(WIFSIGNALED(status)) << status;
  EXPECT_EQ(WTERMSIG(status), SIGSEGV);
  expect_crash_record(file_content(file()), "SIGSEGV");
}

} // namespace
