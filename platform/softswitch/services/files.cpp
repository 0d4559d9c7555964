/* Reading and replacing small files; see files.h. */
#include "platform/softswitch/services/files.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

namespace softswitch {

file_guard::~file_guard() {
  if (fd >= 0) close(fd);
}

bool failed(const std::string &path, std::string *error) {
  *error = path + ": " + strerror(errno);
  return false;
}

bool read_file(int fd, const std::string &path, size_t size_max, std::string *text, std::string *error) {
  char block[8192];
  text->clear();
  for (;;) {
    ssize_t size = read(fd, block, sizeof block);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return failed(path, error);
    if (size == 0) return true;
    text->append(block, static_cast<size_t>(size));
    if (text->size() > size_max) {
      *error = path + ": larger than " + std::to_string(size_max) + " bytes";
      return false;
    }
  }
}

int open_regular_file(const std::string &path, std::string *error) {
  struct stat found;
  int fd = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) {
    failed(path, error);
    return -1;
  }
  if (fstat(fd, &found) == 0 && S_ISREG(found.st_mode)) return fd;
  close(fd);
  errno = EINVAL;
  *error = path + ": not a regular file";
  return -1;
}

static std::string directory_of(const std::string &path) {
  size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

void give_to_directory_owner(int fd, const std::string &path) {
  struct stat directory, file;
  if (geteuid() != 0 || stat(directory_of(path).c_str(), &directory) != 0 || fstat(fd, &file) != 0) return;
  if (!S_ISREG(file.st_mode) || file.st_nlink != 1) return;
  /* When it fails the file stays with root, which its reader then reports better than anybody here could. */
  if (fchown(fd, directory.st_uid, directory.st_gid) != 0) return;
}

bool write_all(int fd, std::string_view text) {
  while (!text.empty()) {
    ssize_t size = write(fd, text.data(), text.size());
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return false;
    text.remove_prefix(static_cast<size_t>(size));
  }
  return true;
}

static bool write_new_file(const std::string &path, std::string_view text, mode_t mode, std::string *error) {
  /* What a crash may have left is removed first, so that nobody who holds it open sees the new content. */
  unlink(path.c_str());
  file_guard file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
  if (file.fd < 0) return failed(path, error);
  give_to_directory_owner(file.fd, path);
  if (fchmod(file.fd, mode) == 0 && write_all(file.fd, text) && fsync(file.fd) == 0) return true;
  failed(path, error);
  unlink(path.c_str());
  return false;
}

/* Makes a rename in the file's directory last. A file system that cannot sync directories is no failure: the
 * new file is in place all the same. */
static void sync_directory_of(const std::string &path) {
  file_guard opened(open(directory_of(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.fd >= 0) fsync(opened.fd);
}

bool remove_file(const std::string &path, std::string *error) {
  if (unlink(path.c_str()) != 0) return errno == ENOENT || failed(path, error);
  sync_directory_of(path);
  return true;
}

file_stamp stamp_of(const std::string &path) {
  struct stat found;
  if (stat(path.c_str(), &found) != 0) return {};
  return {found.st_ino, found.st_size, found.st_ctim.tv_sec, found.st_ctim.tv_nsec};
}

bool move_into_place(const std::string &new_file, const std::string &path, std::string *error) {
  if (rename(new_file.c_str(), path.c_str()) != 0) return failed(path, error);
  sync_directory_of(path);
  return true;
}

bool replace_file(const std::string &path, std::string_view text, mode_t mode, std::string *error) {
  std::string beside = path + ".new";
  if (!write_new_file(beside, text, mode, error)) return false;
  if (move_into_place(beside, path, error)) return true;
  unlink(beside.c_str());
  return false;
}

bool make_private_folder(const std::string &path, std::string *error) {
  bool made = mkdir(path.c_str(), 0700) == 0;
  if (!made && errno != EEXIST) return failed(path, error);
  file_guard folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (folder.fd < 0) return failed(path, error);
  if (!made) return true;
  struct stat parent;
  bool given = geteuid() != 0 || (stat(directory_of(path).c_str(), &parent) == 0 &&
                                  fchown(folder.fd, parent.st_uid, parent.st_gid) == 0);
  if (!given) return failed(path, error);
  sync_directory_of(path);
  return true;
}

} // namespace softswitch
