/* A small file that always holds what we last wrote: writing it, and telling cheaply whether somebody has
 * removed, replaced or changed it since. */
#ifndef KESTREL_ENGINE_REST_STATUS_FILE_H
#define KESTREL_ENGINE_REST_STATUS_FILE_H

#include <string>
#include <sys/stat.h>

struct status_file {
  int fd = -1;           /* of the file written last; kept open, so that looking after it needs no path */
  std::string path;      /* where that is */
  std::string text;      /* what was written */
  struct stat seen = {}; /* its status when it was last known to hold the text */
  bool settled = false;  /* `seen` was taken long enough after its change time to tell any later change */
};

/* True while the file at `path` is the one written last, untouched. One fstat(2); for a moment after a write,
 * when the file's times cannot tell a change yet, path and content are looked at. */
bool status_file_is_ours(status_file *file, const std::string &path);
/* Writes the file, truncating what was there; never waits for a pipe's reader and follows no symbolic link.
 * False when it cannot be opened or written whole, or is no regular file. */
bool write_status_file(status_file *file, const std::string &path, const std::string &text);

#endif
