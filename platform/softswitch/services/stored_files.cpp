/* Stored files; see stored_files.h. */
#include "platform/softswitch/services/stored_files.h"

#include "platform/softswitch/services/files.h"

#include <algorithm>
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace softswitch {

static constexpr size_t script_name_max = 96;
/* Of the line beside an image; a URL is at most 1023 characters. */
static constexpr size_t image_info_max = 2048;

/* --- Names and places ----------------------------------------------------------------------------------- */

static bool is_script_name(std::string_view name) {
  static constexpr char allowed[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.";
  return name.size() <= script_name_max && name.ends_with(".scr") && name.front() != '.' &&
         name.find_first_not_of(allowed) == std::string_view::npos;
}

stored_kind stored_kind_of(std::string_view name) {
  if (name == "startup-config" || name == "backup-config") return stored_kind::configuration;
  if (name == "active" || name == "backup") return stored_kind::image;
  return is_script_name(name) ? stored_kind::script : stored_kind::none;
}

static std::string folder_of(const std::string &state_dir, stored_kind kind) {
  if (kind == stored_kind::script) return state_dir + "/scripts";
  return kind == stored_kind::image ? state_dir + "/images" : state_dir;
}

std::string stored_path(const std::string &state_dir, std::string_view name) {
  return folder_of(state_dir, stored_kind_of(name)) + "/" + std::string(name);
}

/* Whether a path is that of a regular file. A folder on the way that is a link leads to none. */
static bool is_file(const std::string &path) {
  struct stat folder, found;
  return lstat(path.substr(0, path.rfind('/')).c_str(), &folder) == 0 && !S_ISLNK(folder.st_mode) &&
         lstat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode);
}

bool stored_exists(const std::string &state_dir, std::string_view name) {
  return is_file(stored_path(state_dir, name));
}

/* --- Reading and installing ----------------------------------------------------------------------------- */

bool stored_read(const std::string &state_dir, std::string_view name, std::string *text, bool *exists,
                 std::string *error) {
  std::string path = stored_path(state_dir, name);
  *exists = is_file(path);
  if (!*exists) return true;
  file_guard file(open_regular_file(path, error));
  return file.fd >= 0 && read_file(file.fd, path, stored_text_max, text, error);
}

bool stored_install(const std::string &state_dir, std::string_view name, const std::string &new_file,
                    std::string *error) {
  stored_kind kind = stored_kind_of(name);
  std::string path = stored_path(state_dir, name);
  if (kind != stored_kind::configuration && !make_private_folder(folder_of(state_dir, kind), error))
    return false;
  /* No image stands beside the description of another one, also not after a crash. */
  if (kind == stored_kind::image && !remove_file(path + ".info", error)) return false;
  return move_into_place(new_file, path, error);
}

/* --- Scripts -------------------------------------------------------------------------------------------- */

bool scripts_list(const std::string &state_dir, std::vector<std::string> *names, std::string *error) {
  std::string path = folder_of(state_dir, stored_kind::script);
  names->clear();
  int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) return errno == ENOENT || failed(path, error);
  DIR *folder = fdopendir(fd);
  if (!folder) {
    failed(path, error);
    close(fd);
    return false;
  }
  errno = 0;
  while (const dirent *entry = readdir(folder)) {
    struct stat found;
    if (is_script_name(entry->d_name) && fstatat(fd, entry->d_name, &found, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(found.st_mode))
      names->push_back(entry->d_name);
    errno = 0;
  }
  bool whole = errno == 0 || failed(path, error);
  closedir(folder);
  std::sort(names->begin(), names->end());
  return whole;
}

bool script_remove(const std::string &state_dir, std::string_view name, bool *existed, std::string *error) {
  std::string path = stored_path(state_dir, name);
  *existed = is_file(path);
  return !*existed || unlink(path.c_str()) == 0 || failed(path, error);
}

/* --- Images --------------------------------------------------------------------------------------------- */

static std::string utc_now() {
  char text[sizeof "2026-01-31T12:34:56Z"];
  struct tm utc;
  time_t now = time(nullptr);
  gmtime_r(&now, &utc);
  strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
  return text;
}

bool image_describe(const std::string &state_dir, std::string_view name, uint64_t size,
                    std::string_view sha256, std::string_view from, std::string *error) {
  std::string line = std::to_string(size) + " ";
  line.append(sha256).append(" ").append(utc_now()).append(" ").append(from).append("\n");
  return replace_file(stored_path(state_dir, name) + ".info", line, 0600, error);
}

static std::string image_info(const std::string &path) {
  std::string text, error;
  file_guard file(open_regular_file(path, &error));
  if (file.fd < 0 || !read_file(file.fd, path, image_info_max, &text, &error)) return "unknown";
  return text.substr(0, text.find('\n'));
}

std::string image_list(const std::string &state_dir) {
  std::string text;
  for (const char *name : {"active", "backup"}) {
    std::string path = stored_path(state_dir, name);
    if (is_file(path)) text += std::string(name) + " " + image_info(path + ".info") + "\n";
  }
  return text;
}

/* --- Removing ------------------------------------------------------------------------------------------- */

/* Removes what is in a folder, and the folder. */
static void empty_folder(const std::string &path, std::string *error) {
  int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  DIR *folder = fd < 0 ? nullptr : fdopendir(fd);
  if (!folder) {
    if (fd >= 0) close(fd);
    /* A link, or a file of that name, is not followed but goes. */
    if (errno != ENOENT && unlink(path.c_str()) != 0 && error->empty()) failed(path, error);
    return;
  }
  while (const dirent *entry = readdir(folder)) {
    std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    if (unlinkat(fd, name.c_str(), 0) != 0 && error->empty()) failed(path + "/" + name, error);
  }
  closedir(folder);
  if (rmdir(path.c_str()) != 0 && error->empty()) failed(path, error);
}

bool stored_files_remove(const std::string &state_dir, std::string *error) {
  error->clear();
  empty_folder(folder_of(state_dir, stored_kind::script), error);
  empty_folder(folder_of(state_dir, stored_kind::image), error);
  for (const char *name : {"startup-config", "backup-config"}) {
    std::string reason;
    if (!remove_file(stored_path(state_dir, name), &reason) && error->empty()) *error = reason;
  }
  return error->empty();
}

} // namespace softswitch
