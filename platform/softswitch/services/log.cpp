/* The log file and the console threshold; see log.h. Lines come from l7proc.cpp; the console is console.cpp,
 * remote hosts are syslog.cpp. */
#include "platform/softswitch/services/log.h"

#include "platform/api/l7proc.h"
#include "platform/softswitch/services/console.h"
#include "platform/softswitch/services/log_redaction.h"
#include "platform/softswitch/services/syslog.h"

#include <algorithm>
#include <atomic>
#include <errno.h>
#include <fcntl.h>
#include <mutex>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <strings.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace softswitch {

/* Some ten thousand lines; two files of this size are kept. */
static constexpr off_t file_size_max = off_t{1024} * 1024;

/* Words of L7PROC_EMERGENCY..L7PROC_DEBUG. */
static const char *const severity_words[] = {"EMERGENCY", "ALERT",  "CRITICAL", "ERROR",
                                             "WARNING",   "NOTICE", "INFO",     "DEBUG"};

static std::mutex lock; /* around the file */
static std::string path;
static off_t file_size;
static unsigned long dropped; /* lines that could not be written since the last that could */
static int configured_severity = L7PROC_WARNING; /* what the configuration said last */
static std::atomic<int> descriptor{-1};
static std::atomic<int> console_severity{L7PROC_WARNING};

/* The threshold that no line passes. */
static constexpr int nothing = L7PROC_EMERGENCY - 1;

/* --- Severities and lines ------------------------------------------------------------------------------- */

const char *log_severity_word(int severity) {
  if (severity < L7PROC_EMERGENCY) severity = L7PROC_EMERGENCY;
  if (severity > L7PROC_DEBUG) severity = L7PROC_DEBUG;
  return severity_words[severity];
}

bool log_severity_from_text(std::string_view text, int *severity) {
  std::string terminated(text);
  for (int i = L7PROC_EMERGENCY; i <= L7PROC_DEBUG; i++) {
    if (terminated != std::to_string(i) && strcasecmp(terminated.c_str(), severity_words[i]) != 0) continue;
    *severity = i;
    return true;
  }
  return false;
}

static std::string time_now() {
  struct timespec now;
  struct tm utc;
  char text[40];
  clock_gettime(CLOCK_REALTIME, &now);
  gmtime_r(&now.tv_sec, &utc);
  size_t size = strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
  snprintf(text + size, sizeof text - size, ".%03ldZ", now.tv_nsec / 1000000);
  return text;
}

std::string log_format(int severity, std::string_view file, int line, std::string_view text) {
  std::string made = time_now() + " " + log_severity_word(severity) + " ";
  made.append(file).append(":").append(std::to_string(line)).append(" ");
  append_redacted(&made, text);
  if (made.size() > log_line_max - 1) made.resize(log_line_max - 1);
  for (char &c : made) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = ' ';
  }
  made.push_back('\n');
  return made;
}

/* --- The console threshold ------------------------------------------------------------------------------ */

void log_set_console_severity(int severity) {
  console_severity.store(severity, std::memory_order_relaxed);
}

void log_configure_console(bool on, int severity) {
  int configured = on ? severity : nothing;
  std::lock_guard<std::mutex> hold(lock);
  if (configured == configured_severity) return;
  configured_severity = configured;
  log_set_console_severity(configured);
}

/* --- The file ------------------------------------------------------------------------------------------- */

/* Opens the log file, emptied or as it is, in the place of the one that is open. */
static bool open_file(int extra_flags) {
  /* The log holds what was asked of the switch and by whom: for its owner only. */
  int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | extra_flags, 0600);
  struct stat found;
  if (fd < 0) return false;
  if (fstat(fd, &found) != 0 || !S_ISREG(found.st_mode)) {
    close(fd);
    errno = EINVAL;
    return false;
  }
  file_size = found.st_size;
  int before = descriptor.exchange(fd);
  if (before >= 0) close(before);
  return true;
}

/* Begins a new file. When the old one cannot be renamed it is emptied, for the bound holds in any case. */
static bool rotate() {
  rename(path.c_str(), (path + ".1").c_str());
  return open_file(O_TRUNC);
}

/* Writes a line with one call, so that lines of several writers never mix. A line that goes in only partly is
 * taken back. */
static bool append(std::string_view line) {
  if (file_size + static_cast<off_t>(line.size()) > file_size_max && !rotate()) return false;
  int fd = descriptor.load();
  ssize_t size = write(fd, line.data(), line.size());
  if (size == static_cast<ssize_t>(line.size())) {
    file_size += size;
    return true;
  }
  if (size > 0 && ftruncate(fd, file_size) != 0) file_size += size;
  return false;
}

/* Tells of lines that were dropped, once there is room again. */
static bool report_dropped() {
  if (dropped == 0) return true;
  std::string text = std::to_string(dropped) + " lines were dropped: the log could not be written";
  if (!append(log_format(L7PROC_WARNING, "log.cpp", __LINE__, text))) return false;
  dropped = 0;
  return true;
}

void log_write(int severity, std::string_view line) {
  if (severity <= console_severity.load(std::memory_order_relaxed)) console_write(line);
  if (severity <= syslog_severity()) syslog_write(severity, line);
  std::lock_guard<std::mutex> hold(lock);
  if (descriptor.load() < 0) return;
  if (!report_dropped() || !append(line)) dropped++;
}

int log_descriptor() {
  return descriptor.load(std::memory_order_relaxed);
}

bool log_open(const std::string &state_dir, std::string *error) {
  /* A file size limit must make a write fail, not kill the program. */
  struct sigaction action;
  if (sigaction(SIGXFSZ, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) signal(SIGXFSZ, SIG_IGN);
  std::lock_guard<std::mutex> hold(lock);
  path = state_dir + "/log";
  dropped = 0;
  /* Non-blocking: opening a FIFO in the file's place fails instead of waiting for a reader. */
  if (open_file(O_NONBLOCK)) return true;
  *error = path + ": " + strerror(errno);
  return false;
}

void log_close() {
  syslog_stop();
  {
    std::lock_guard<std::mutex> hold(lock);
    int fd = descriptor.exchange(-1);
    if (fd >= 0) close(fd);
    configured_severity = L7PROC_WARNING;
    log_set_console_severity(L7PROC_WARNING);
  }
  console_stop();
}

/* --- Scripts -------------------------------------------------------------------------------------------- */

void log_script(std::string_view text) {
  while (!text.empty()) {
    std::string line(text.substr(0, text.find('\n')));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    size_t begin = line.find_first_not_of(" \t\r");
    if (begin == std::string::npos || line[begin] == '!') continue;
    line.erase(line.find_last_not_of(" \t\r") + 1);
    l7proc_logf(L7PROC_NOTICE, 0, "log.cpp", __LINE__, "CLI: %s", line.c_str() + begin);
  }
}

} // namespace softswitch
