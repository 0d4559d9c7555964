/* Small files read and replaced as a whole, for the services that keep one: accounts, profile, what transfers
 * bring. */
#ifndef KESTREL_SOFTSWITCH_FILES_H
#define KESTREL_SOFTSWITCH_FILES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace softswitch {

/* A file descriptor that closes itself. */
class file_guard {
public:
  explicit file_guard(int descriptor = -1) : fd(descriptor) {}
  ~file_guard();
  file_guard(const file_guard &) = delete;
  file_guard &operator=(const file_guard &) = delete;
  const int fd;
};

/* Makes the reason "PATH: what errno says"; false, so that callers can return it. */
bool failed(const std::string &path, std::string *error);

/* Reads the rest of an open file into `text`. False with the reason ("PATH: reason") when it cannot be read
 * or holds more than `size_max` bytes. `path` is for the reason only. */
bool read_file(int fd, const std::string &path, size_t size_max, std::string *text, std::string *error);

/* Opens a file for reading, if it is a regular one: a link is not followed, and what others have to fill (a
 * FIFO) is not waited for. -1 with the reason ("PATH: reason") and errno, which is ENOENT where there is
 * nothing. */
int open_regular_file(const std::string &path, std::string *error);

/* Writes a text into an open file. False with errno set. */
bool write_all(int fd, std::string_view text);

/* Replaces (or makes) a file: writes `text` into PATH.new, syncs it, renames it over PATH and syncs the
 * directory. The file's mode is `mode`, whatever the umask. False with the reason; the old file is then
 * whole. */
bool replace_file(const std::string &path, std::string_view text, mode_t mode, std::string *error);

/* The second half of that for a file that has been written and synced already: renames it over PATH and syncs
 * the directory. False with the reason; both files are then as they were. */
bool move_into_place(const std::string &new_file, const std::string &path, std::string *error);

/* Removes a file and syncs the directory. That there is none is no failure; false with the reason for any
 * other. */
bool remove_file(const std::string &path, std::string *error);

/* What tells a file from what had its name before, and from itself after it was written to. */
struct file_stamp {
  bool operator==(const file_stamp &) const = default;

  uint64_t inode = 0; /* all zero where there is no file */
  int64_t size = 0;
  int64_t seconds = 0, nanoseconds = 0; /* of the last change */
};
file_stamp stamp_of(const std::string &path);

/* Makes a folder (mode 700) for the owner of the directory that it is in, when it is missing. False with the
 * reason when it cannot be made or something else has its name. */
bool make_private_folder(const std::string &path, std::string *error);

/* What root makes for a switch that runs as another user must be that user's: gives an open file to the owner
 * of the directory it is in. Does nothing for other users. As that owner may have put a link to somebody
 * else's file there, the file must be opened with O_NOFOLLOW, and one with a second name is left alone. */
void give_to_directory_owner(int fd, const std::string &path);

} // namespace softswitch

#endif
