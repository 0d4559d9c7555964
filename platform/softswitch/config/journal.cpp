/* Snapshot and journal; see journal.h. */
#include "platform/softswitch/config/journal.h"

#include "platform/api/l7proc.h"
#include "platform/softswitch/config/language.h"

#include <charconv>
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace softswitch {

static constexpr char snapshot_name[] = "running-config";
static constexpr char next_snapshot_name[] = "running-config.next";
static constexpr std::string_view journal_prefix = "journal-";
static constexpr std::string_view generation_prefix = "! generation ";
/* No configuration comes near this (that of 100 access lists with 1023 long rules each is 60 MiB); whatever
 * is larger is no configuration. */
static constexpr size_t config_file_max = size_t{256} * 1024 * 1024;
/* What only lines that take something back may use of the disk. */
static constexpr off_t undo_reserve = 512;
/* The journal gets its room on disk in such steps. */
static constexpr off_t allocation_step = off_t{64} * 1024;

static std::string path_of(const std::string &dir, std::string_view name) {
  return dir + '/' + std::string(name);
}

static std::string journal_path(const std::string &dir, uint64_t generation) {
  return path_of(dir, journal_prefix) + std::to_string(generation);
}

/* Opens a file for reading and writing, made for this user alone when it is missing; -1 with errno. */
static int open_or_make(const std::string &path, int more_flags = 0) {
  int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | more_flags, 0600);
  if (fd >= 0) give_to_directory_owner(fd, path);
  return fd;
}

/* --- Opening -------------------------------------------------------------------------------------------- */

bool state_dir_take(const std::string &dir, std::shared_ptr<file_guard> *lock, std::string *error) {
  bool usable = access(dir.c_str(), R_OK | W_OK | X_OK) == 0;
  int fd = usable ? open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
  auto opened = std::make_shared<file_guard>(fd);
  if (fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) == 0) {
    *lock = opened;
    return true;
  }
  *error = "the state directory " + dir;
  *error += errno == EWOULDBLOCK ? " is in use by another process"
                                 : " cannot be used: " + std::string(strerror(errno));
  return false;
}

bool read_config_file(const std::string &dir, const std::string &name, std::string *text, bool *exists,
                      std::string *error) {
  std::string path = path_of(dir, name);
  file_guard file(open_regular_file(path, error));
  *exists = file.fd >= 0;
  if (!*exists) return errno == ENOENT;
  return read_file(file.fd, path, config_file_max, text, error);
}

/* Applies a text, naming its file when it does not apply. */
static bool apply_file(switch_model *model, const std::string &path, std::string_view text,
                       std::string *error) {
  std::string reason;
  if (apply_text(*model, text, &reason)) return true;
  *error = path + ", " + reason;
  return false;
}

static bool read_generation(std::string_view text, uint64_t *generation) {
  if (!text.starts_with(generation_prefix)) return false;
  text.remove_prefix(generation_prefix.size());
  std::from_chars_result read = std::from_chars(text.data(), text.data() + text.size(), *generation);
  return read.ec == std::errc() && read.ptr != text.data() + text.size() && *read.ptr == '\n';
}

/* Loads what the journal builds on: the snapshot, or without one the startup configuration, or nothing. */
static bool load_base(journal *journal, switch_model *model, bool *has_snapshot, std::string *error) {
  std::string text;
  if (!read_config_file(journal->dir, snapshot_name, &text, has_snapshot, error)) return false;
  std::string path = path_of(journal->dir, snapshot_name);
  if (!*has_snapshot) {
    bool exists;
    if (!read_config_file(journal->dir, "startup-config", &text, &exists, error)) return false;
    path = path_of(journal->dir, "startup-config");
  } else if (!read_generation(text, &journal->generation)) {
    *error = path + ", line 1: not a snapshot: \"! generation N\" is missing";
    return false;
  }
  return apply_file(model, path, text, error);
}

/* Cuts off what a crash left of the last line. */
static bool drop_torn_line(journal *journal, const std::string &path, size_t size, std::string *error) {
  if (size == static_cast<size_t>(journal->length)) return true;
  l7proc_logf(L7PROC_WARNING, 0, "journal.cpp", __LINE__,
              "%s: the last line was not written to its end and is dropped (%zu bytes)", path.c_str(),
              size - static_cast<size_t>(journal->length));
  return ftruncate(journal->file->fd, journal->length) == 0 || failed(path, error);
}

/* Opens the journal of the present generation and replays it. A snapshot never stands without its journal
 * unless somebody copied or removed one of them, which may have been on purpose. */
static bool replay(journal *journal, switch_model *model, bool has_snapshot, std::string *error) {
  std::string path = journal_path(journal->dir, journal->generation);
  if (has_snapshot && access(path.c_str(), F_OK) != 0) {
    l7proc_logf(L7PROC_WARNING, 0, "journal.cpp", __LINE__, "%s is missing; going on with the snapshot alone",
                path.c_str());
  }
  journal->file = std::make_shared<file_guard>(open_or_make(path));
  if (journal->file->fd < 0) return failed(path, error);
  std::string text;
  if (!read_file(journal->file->fd, path, config_file_max, &text, error)) return false;
  size_t whole_lines = text.rfind('\n') + 1; /* npos + 1 is 0 */
  journal->length = static_cast<off_t>(whole_lines);
  if (!apply_file(model, path, std::string_view(text).substr(0, whole_lines), error)) return false;
  return drop_torn_line(journal, path, text.size(), error);
}

static bool is_remains(const journal &journal, std::string_view name) {
  if (name.starts_with(next_snapshot_name)) return true;
  if (!name.starts_with(journal_prefix)) return false;
  name.remove_prefix(journal_prefix.size());
  bool numbered = !name.empty() && name.find_first_not_of("0123456789") == std::string_view::npos;
  return numbered && name != std::to_string(journal.generation);
}

/* Removes what is of another generation: what a crash in the middle of a compaction left. */
static void remove_remains(const journal &journal) {
  DIR *dir = opendir(journal.dir.c_str());
  if (!dir) return;
  while (const dirent *entry = readdir(dir)) {
    if (is_remains(journal, entry->d_name)) unlinkat(dirfd(dir), entry->d_name, 0);
  }
  closedir(dir);
}

bool journal_remove(const std::string &dir, std::string *error) {
  journal none;
  none.dir = dir;
  none.generation = UINT64_MAX;
  remove_remains(none);
  return remove_file(path_of(dir, snapshot_name), error);
}

/* Begins with a fresh generation. A full disk does not keep a switch with a snapshot from starting. */
static bool begin_generation(journal *journal, const switch_model &model, bool has_snapshot,
                             std::string *error) {
  if (has_snapshot && journal->length == 0) return true;
  std::string reason;
  uint64_t past = journal->generation;
  if (snapshot_write(journal->dir, past + 1, print_configuration(model), &reason) &&
      snapshot_install(journal, journal->length, &reason)) {
    journal_discard(journal->dir, past);
    return true;
  }
  if (!has_snapshot) {
    *error = reason;
    return false;
  }
  l7proc_logf(L7PROC_WARNING, 0, "journal.cpp", __LINE__, "%s; going on with the old journal",
              reason.c_str());
  return true;
}

bool journal_open(journal *journal, const std::string &dir, switch_model *model, std::string *error) {
  bool has_snapshot;
  *journal = {};
  journal->dir = dir;
  if (!load_base(journal, model, &has_snapshot, error) || !replay(journal, model, has_snapshot, error))
    return false;
  remove_remains(*journal);
  return begin_generation(journal, *model, has_snapshot, error);
}

/* --- Changes -------------------------------------------------------------------------------------------- */

/* Whether a file may grow to this size, as far as the process is limited. */
static bool size_allowed(off_t size) {
  rlimit limit;
  return getrlimit(RLIMIT_FSIZE, &limit) != 0 || static_cast<rlim_t>(size) <= limit.rlim_cur;
}

/* Makes sure that the disk has room for a journal of this size, which keeps its length. File systems that
 * cannot tell are taken at their word later, when it is written. */
static bool allocate(journal *journal, off_t size) {
  if (!size_allowed(size)) return false;
  if (size <= journal->allocated) return true;
  for (off_t wanted : {size + allocation_step, size}) {
    if (fallocate(journal->file->fd, FALLOC_FL_KEEP_SIZE, 0, wanted) == 0) {
      journal->allocated = wanted;
      return true;
    }
    if (errno != ENOSPC && errno != EDQUOT && errno != EFBIG) return true;
  }
  return false;
}

/* Cuts off what a failed write left, and with it the room that the disk kept behind the lines. */
static bool cut_off(journal *journal) {
  journal->allocated = 0;
  journal->torn = ftruncate(journal->file->fd, journal->length) != 0;
  return !journal->torn;
}

bool journal_append(journal *journal, std::string_view line) {
  int fd = journal->file->fd;
  if (journal->torn && !cut_off(journal)) return false;
  std::string text = std::string(line) + '\n';
  off_t needed = journal->length + static_cast<off_t>(text.size()) + undo_reserve;
  if (!line.starts_with("no ") && !allocate(journal, needed)) return false;
  ssize_t written = pwrite(fd, text.data(), text.size(), journal->length);
  if (written != static_cast<ssize_t>(text.size())) {
    cut_off(journal);
    return false;
  }
  journal->length += written;
  return true;
}

bool journal_sync(const file_guard &file) {
  return fdatasync(file.fd) == 0;
}

/* --- New generations ------------------------------------------------------------------------------------ */

bool snapshot_write(const std::string &dir, uint64_t generation, const std::string &configuration,
                    std::string *error) {
  std::string text = std::string(generation_prefix) + std::to_string(generation) + '\n' + configuration;
  return replace_file(path_of(dir, next_snapshot_name), text, 0600, error);
}

/* Copies the lines from `offset` on into the new journal. They are pending still, so that syncing them, for
 * which requests would wait here, is left to the apply thread. */
static bool copy_tail(const journal &journal, off_t offset, int into) {
  std::string tail(static_cast<size_t>(journal.length - offset), '\0');
  ssize_t size = static_cast<ssize_t>(tail.size());
  if (size == 0) return true;
  if (pread(journal.file->fd, tail.data(), tail.size(), offset) != size) return false;
  return pwrite(into, tail.data(), tail.size(), 0) == size;
}

bool snapshot_install(journal *journal, off_t offset, std::string *error) {
  std::string path = journal_path(journal->dir, journal->generation + 1);
  auto file = std::make_shared<file_guard>(open_or_make(path, O_TRUNC));
  if (file->fd < 0) return failed(path, error);
  std::string beside = path_of(journal->dir, next_snapshot_name);
  std::string place = path_of(journal->dir, snapshot_name);
  if (!copy_tail(*journal, offset, file->fd) || rename(beside.c_str(), place.c_str()) != 0) {
    failed(path, error);
    unlink(path.c_str());
    return false;
  }
  journal->generation++;
  journal->file = file;
  journal->length -= offset;
  journal->allocated = 0;
  journal->torn = false;
  return true;
}

void journal_discard(const std::string &dir, uint64_t generation) {
  file_guard opened(open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.fd >= 0) fsync(opened.fd);
  unlink(journal_path(dir, generation).c_str());
}

} // namespace softswitch
