#include "engine/rest_status_file.h"

#include <fcntl.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

namespace {

/* A kernel stamps files with a clock that ticks every few milliseconds: two changes within one tick look the
 * same. After this time a change is certain to get another stamp. */
constexpr int64_t SETTLING_NANOSECONDS = 20 * 1000 * 1000;

int64_t nanoseconds(const timespec &time) {
  return int64_t{time.tv_sec} * 1000000000 + time.tv_nsec;
}

bool same_file(const struct stat &a, const struct stat &b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
         nanoseconds(a.st_mtim) == nanoseconds(b.st_mtim) && nanoseconds(a.st_ctim) == nanoseconds(b.st_ctim);
}

void remember(status_file *file, const struct stat &status) {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  file->seen = status;
  file->settled = nanoseconds(now) - nanoseconds(status.st_ctim) >= SETTLING_NANOSECONDS;
}

bool holds_text(const std::string &path, const std::string &text) {
  int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
  if (fd < 0) return false;
  std::string content(text.size() + 1, '\0'); /* one byte more, to notice a longer file */
  ssize_t length = read(fd, content.data(), content.size());
  close(fd);
  return length == static_cast<ssize_t>(text.size()) && memcmp(content.data(), text.data(), text.size()) == 0;
}

} // namespace

bool status_file_is_ours(status_file *file, const std::string &path) {
  struct stat status;
  if (path != file->path || lstat(path.c_str(), &status) != 0) return false;
  if (!S_ISREG(status.st_mode) || !same_file(status, file->seen)) return false;
  if (file->settled) return true;
  if (!holds_text(path, file->text)) return false;
  remember(file, status);
  return true;
}

bool write_status_file(status_file *file, const std::string &path, const std::string &text) {
  file->path.clear();
  int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW, 0644);
  if (fd < 0) return false;
  struct stat status;
  bool whole =
      write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size()) && fstat(fd, &status) == 0;
  close(fd);
  if (!whole) return false;
  file->path = path;
  file->text = text;
  remember(file, status);
  return true;
}
