/* The switch's files in transfers; see transfer_files.h. */
#include "platform/softswitch/services/transfer_files.h"

#include "platform/softswitch/config/language.h"
#include "platform/softswitch/services/files.h"
#include "platform/softswitch/services/stored_files.h"
#include "platform/softswitch/softswitch.h"

#include <errno.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace softswitch {

/* The names of what is sent and is no stored file. */
static constexpr std::string_view running_name = "running-config";
static constexpr std::string_view archive_name = "kestrel.cfg";

/* --- Sending -------------------------------------------------------------------------------------------- */

bool is_transfer_source(std::string_view name) {
  stored_kind kind = stored_kind_of(name);
  return name == running_name || name == archive_name || kind == stored_kind::configuration ||
         kind == stored_kind::script;
}

/* A file for the archive. */
struct named_text {
  std::string name;
  std::string text;
};

/* The files of an archive, which is made in memory. */
struct archive_content {
  std::vector<named_text> files;
  uint64_t room; /* bytes that more of them may have */
};

static bool add(archive_content *content, named_text file, std::string *error) {
  if (file.text.size() > content->room) {
    *error = "all files together are too large for an archive";
    return false;
  }
  content->room -= file.text.size();
  content->files.push_back(std::move(file));
  return true;
}

/* Adds a stored file, if it is there. */
static bool add_stored(archive_content *content, const std::string &state_dir, const std::string &folder,
                       const std::string &name, std::string *error) {
  named_text file = {folder + name, ""};
  bool exists;
  if (!stored_read(state_dir, name, &file.text, &exists, error)) return false;
  return !exists || add(content, std::move(file), error);
}

static uint64_t archive_room() {
  locked_switch model;
  return uint64_t{model->limits.transfer_archive_kib} * 1024;
}

static bool gather_all(const std::string &state_dir, archive_content *content, std::string *error) {
  std::vector<std::string> scripts;
  content->room = archive_room();
  if (!add(content, {std::string(running_name), running_config()}, error)) return false;
  for (const char *name : {"startup-config", "backup-config"}) {
    if (!add_stored(content, state_dir, "", name, error)) return false;
  }
  if (!scripts_list(state_dir, &scripts, error)) return false;
  for (const std::string &name : scripts) {
    if (!add_stored(content, state_dir, "scripts/", name, error)) return false;
  }
  return true;
}

static bool append_block(void *archive, const char *data, size_t size) {
  static_cast<std::string *>(archive)->append(data, size);
  return true;
}

static bool make_archive(const transfer_functions &library, const std::vector<named_text> &files,
                         std::string *archive, std::string *error) {
  std::vector<archive_file> list;
  for (const named_text &file : files)
    list.push_back({file.name.c_str(), file.text.data(), file.text.size()});
  if (library.archive(list.data(), list.size(), time(nullptr), append_block, archive)) return true;
  *error = "the archive cannot be made";
  return false;
}

bool transfer_gather(const transfer_functions &library, const std::string &state_dir, std::string_view source,
                     std::string *data, std::string *error) {
  if (source == running_name) {
    *data = running_config();
    return true;
  }
  if (source == archive_name) {
    archive_content content;
    return gather_all(state_dir, &content, error) && make_archive(library, content.files, data, error);
  }
  bool exists;
  if (!stored_read(state_dir, source, data, &exists, error)) return false;
  if (!exists) *error = "there is no such file";
  return exists;
}

/* --- Fetching ------------------------------------------------------------------------------------------- */

uint64_t transfer_size_max(const struct limits &limits, std::string_view target) {
  uint64_t kib = limits.transfer_config_kib;
  if (stored_kind_of(target) == stored_kind::image) kib = limits.transfer_image_kib;
  if (stored_kind_of(target) == stored_kind::script) kib = limits.transfer_script_kib;
  return kib * 1024;
}

static switch_model factory_model() {
  switch_model model;
  {
    locked_switch present;
    model = *present;
  }
  switch_reset(model);
  return model;
}

static off_t size_of(int fd) {
  struct stat found;
  return fstat(fd, &found) == 0 ? found.st_size : 0;
}

std::vector<std::string> transfer_faults(std::string_view target, const fetched_file &file,
                                         std::string *text) {
  std::string error;
  stored_kind kind = stored_kind_of(target);
  if (kind == stored_kind::image && size_of(file.fd) > 0) return {};
  if (kind == stored_kind::image) return {"the file is empty"};
  if (lseek(file.fd, 0, SEEK_SET) != 0) return {strerror(errno)};
  if (!read_file(file.fd, file.path, stored_text_max, text, &error)) return {error};
  if (text->find('\0') != std::string::npos) return {"this is no text"};
  switch_model factory = factory_model();
  return kind == stored_kind::configuration ? check_configuration(factory, *text)
                                            : check_lines(factory, *text);
}

bool transfer_store(const std::string &state_dir, std::string_view target, const fetched_file &file,
                    std::string_view text, std::string_view from, std::string *error) {
  /* Whether the configuration is saved hangs on this one, too. */
  if (target == "startup-config") return replace_startup_config(text, error);
  off_t size = size_of(file.fd);
  if (!stored_install(state_dir, target, file.path, error)) return false;
  return stored_kind_of(target) != stored_kind::image ||
         image_describe(state_dir, target, static_cast<uint64_t>(size), file.sha256, from, error);
}

} // namespace softswitch
