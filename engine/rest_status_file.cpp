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

bool same_version(const struct stat &a, const struct stat &b) {
  return a.st_nlink == b.st_nlink && a.st_size == b.st_size &&
         nanoseconds(a.st_mtim) == nanoseconds(b.st_mtim) && nanoseconds(a.st_ctim) == nanoseconds(b.st_ctim);
}

void remember(status_file *file, const struct stat &status) {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  file->seen = status;
  file->settled = nanoseconds(now) - nanoseconds(status.st_ctim) >= SETTLING_NANOSECONDS;
}

bool holds_text(int fd, const std::string &text) {
  std::string content(text.size() + 1, '\0'); /* one byte more, to notice a longer file */
  ssize_t length = pread(fd, content.data(), content.size(), 0);
  return length == static_cast<ssize_t>(text.size()) && memcmp(content.data(), text.data(), text.size()) == 0;
}

bool stands_at(const std::string &path, const struct stat &status) {
  struct stat there;
  return lstat(path.c_str(), &there) == 0 && there.st_dev == status.st_dev && there.st_ino == status.st_ino;
}

void forget(status_file *file) {
  if (file->fd >= 0) close(file->fd);
  file->fd = -1;
}

bool write_whole(int fd, const std::string &text, struct stat *status) {
  return fstat(fd, status) == 0 && S_ISREG(status->st_mode) && ftruncate(fd, 0) == 0 &&
         write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size()) && fstat(fd, status) == 0;
}

} // namespace

/* Removing the file or renaming another over it leaves ours without a name; renaming it away changes its
 * change time. So what stands at the path is known without walking the path. */
bool status_file_is_ours(status_file *file, const std::string &path) {
  struct stat status;
  if (file->fd < 0 || path != file->path || fstat(file->fd, &status) != 0) return false;
  if (!same_version(status, file->seen)) return false;
  if (file->settled) return true;
  if (!stands_at(path, status) || !holds_text(file->fd, file->text)) return false;
  remember(file, status);
  return true;
}

bool write_status_file(status_file *file, const std::string &path, const std::string &text) {
  forget(file); /* first: with all descriptors taken, its own is the one to be had */
  struct stat status;
  file->fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW, 0644);
  if (file->fd < 0 || !write_whole(file->fd, text, &status)) {
    forget(file);
    return false;
  }
  file->path = path;
  file->text = text;
  remember(file, status);
  return true;
}
