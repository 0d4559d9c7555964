/* Archives by libarchive; see tar_archive.h. */
#include "platform/softswitch/transfer/tar_archive.h"

#include <archive.h>
#include <archive_entry.h>

namespace softswitch {

class archive_guard {
public:
  archive_guard() : handle(archive_write_new()) {}
  ~archive_guard() { archive_write_free(handle); }
  archive_guard(const archive_guard &) = delete;
  archive_guard &operator=(const archive_guard &) = delete;
  struct archive *const handle;
};

class entry_guard {
public:
  entry_guard() : handle(archive_entry_new()) {}
  ~entry_guard() { archive_entry_free(handle); }
  entry_guard(const entry_guard &) = delete;
  entry_guard &operator=(const entry_guard &) = delete;
  struct archive_entry *const handle;
};

struct archive_sink {
  bool (*put)(void *context, const char *data, size_t size);
  void *context;
};

static la_ssize_t put_block(struct archive *, void *sink, const void *data, size_t size) {
  const archive_sink *into = static_cast<archive_sink *>(sink);
  return into->put(into->context, static_cast<const char *>(data), size) ? static_cast<la_ssize_t>(size) : -1;
}

static bool add_file(struct archive *archive, const archive_file &file, int64_t time) {
  entry_guard entry;
  if (!entry.handle) return false;
  archive_entry_set_pathname(entry.handle, file.name);
  archive_entry_set_filetype(entry.handle, AE_IFREG);
  archive_entry_set_perm(entry.handle, 0600);
  archive_entry_set_size(entry.handle, static_cast<la_int64_t>(file.size));
  archive_entry_set_mtime(entry.handle, static_cast<time_t>(time), 0);
  return archive_write_header(archive, entry.handle) == ARCHIVE_OK &&
         archive_write_data(archive, file.data, file.size) == static_cast<la_ssize_t>(file.size);
}

bool tar_archive_write(const archive_file *files, size_t count, int64_t time,
                       bool (*put)(void *context, const char *data, size_t size), void *context) {
  archive_sink sink = {put, context};
  archive_guard archive;
  if (!archive.handle || archive_write_set_format_ustar(archive.handle) != ARCHIVE_OK ||
      archive_write_open(archive.handle, &sink, nullptr, put_block, nullptr) != ARCHIVE_OK)
    return false;
  for (size_t i = 0; i < count; i++) {
    if (!add_file(archive.handle, files[i], time)) return false;
  }
  return archive_write_close(archive.handle) == ARCHIVE_OK;
}

} // namespace softswitch
