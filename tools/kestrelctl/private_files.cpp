#include "tools/kestrelctl/private_files.h"

#include "tools/kestrelctl/text.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

enum { LARGEST_FILE = 4096 };

/* A file descriptor that is closed at the end. */
struct open_file {
  int fd;
  explicit open_file(int opened) : fd(opened) {}
  open_file(const open_file &) = delete;
  open_file &operator=(const open_file &) = delete;
  ~open_file() {
    if (fd >= 0) close(fd);
  }
};

std::string state_folder() {
  const char *state = getenv("XDG_STATE_HOME"), *home = getenv("HOME");
  if (state != nullptr && state[0] == '/') return std::string(state) + "/kestrelctl";
  return home != nullptr && home[0] == '/' ? std::string(home) + "/.local/state/kestrelctl" : "";
}

static bool failed(const std::string &path, const std::string &what, std::string *error) {
  *error = path + ": " + what;
  return false;
}

static bool system_failed(const std::string &path, std::string *error) {
  return failed(path, strerror(errno), error);
}

/* Whether an opened file or folder is the user's alone. */
static bool is_private(int fd, mode_t type, const std::string &path, std::string *error) {
  struct stat status;
  if (fstat(fd, &status) != 0) return system_failed(path, error);
  if ((status.st_mode & S_IFMT) != type) return failed(path, "it is no plain file", error);
  if (status.st_uid != geteuid()) return failed(path, "it belongs to another user", error);
  if ((status.st_mode & 077) != 0)
    return failed(path, "others have rights to it; its mode must be 600, that of its folder 700", error);
  return true;
}

/* Makes a folder with those above it; what is there already stays. */
static void make_folder(const std::string &path) {
  for (size_t end = path.find('/', 1); end != path.npos; end = path.find('/', end + 1))
    mkdir(path.substr(0, end).c_str(), 0700);
  mkdir(path.c_str(), 0700);
}

/* Opens the folder; -1 with *error, which stays empty when there is no such folder. */
static int open_folder(const std::string &path, std::string *error) {
  if (path.empty()) return failed("HOME", "it is not set, so there is no place for session keys", error), -1;
  const int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd >= 0 && is_private(fd, S_IFDIR, path, error)) return fd;
  if (fd >= 0) return close(fd), -1;
  if (errno == ENOTDIR || errno == ELOOP)
    failed(path, "it is no folder, or a link", error);
  else if (errno != ENOENT)
    system_failed(path, error);
  return -1;
}

static bool read_all(int fd, const std::string &path, std::string *content, std::string *error) {
  char block[LARGEST_FILE];
  for (;;) {
    const ssize_t size = read(fd, block, sizeof block);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return system_failed(path, error);
    if (size == 0) return true;
    content->append(block, static_cast<size_t>(size));
    if (content->size() > LARGEST_FILE) return failed(path, "it is too large", error);
  }
}

bool read_private_file(const std::string &folder, const std::string &name, std::string *content,
                       std::string *error) {
  content->clear();
  const open_file place(open_folder(folder, error));
  if (place.fd < 0) return error->empty();
  const std::string path = folder + "/" + name;
  const open_file file(openat(place.fd, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (file.fd < 0 && errno == ENOENT) return true;
  if (file.fd < 0 && errno == ELOOP) return failed(path, "it is a link", error);
  if (file.fd < 0) return system_failed(path, error);
  return is_private(file.fd, S_IFREG, path, error) && read_all(file.fd, path, content, error);
}

static bool write_all(int fd, std::string_view rest) {
  while (!rest.empty()) {
    const ssize_t size = write(fd, rest.data(), rest.size());
    if (size < 0 && errno != EINTR) return false;
    if (size > 0) rest.remove_prefix(static_cast<size_t>(size));
  }
  return fsync(fd) == 0;
}

bool write_private_file(const std::string &folder, const std::string &name, const std::string &content,
                        std::string *error) {
  make_folder(folder);
  const open_file place(open_folder(folder, error));
  if (place.fd < 0) return error->empty() ? failed(folder, "the folder cannot be made", error) : false;
  const std::string beside = name + ".new-" + std::to_string(getpid()), path = folder + "/" + name;
  unlinkat(place.fd, beside.c_str(), 0); /* of a process of that number that was killed */
  const open_file file(
      openat(place.fd, beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (file.fd < 0) return system_failed(path, error);
  const bool written = fchmod(file.fd, 0600) == 0 && write_all(file.fd, content) &&
                       renameat(place.fd, beside.c_str(), place.fd, name.c_str()) == 0;
  if (written) return true;
  system_failed(path, error);
  unlinkat(place.fd, beside.c_str(), 0);
  return false;
}

bool remove_private_file(const std::string &folder, const std::string &name, std::string *error) {
  const open_file place(open_folder(folder, error));
  if (place.fd < 0) return error->empty();
  return unlinkat(place.fd, name.c_str(), 0) == 0 || errno == ENOENT ||
         system_failed(folder + "/" + name, error);
}
