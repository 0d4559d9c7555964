/* The record of the startup configuration and its file; see rest_startupcfg_info.h. */
#include "modules/rest_startupcfg_info.h"

#include "engine/rest_settings.h"

#include <fcntl.h>
#include <memory>
#include <stdio.h>
#include <string.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

startupcfg_info_t startupcfgInfo;

static const char KEY_TIME[] = "cfg_time";
static const char KEY_UPDATE[] = "cfg_update";

/* What one read of a line takes; what is longer comes in pieces. */
enum { LINE_SIZE = 256 };

struct close_file {
  void operator()(FILE *file) const { fclose(file); }
};
using file_guard = std::unique_ptr<FILE, close_file>;

static std::string folder() {
  return rest_settings().root + "/user-apps";
}

static std::string file_path() {
  return folder() + "/startupcfg_info_doc";
}

/* Opens a regular file; null for anything else. Nothing is waited for, as opening a FIFO would have it. */
static file_guard open_file(const std::string &path, int flags, const char *mode) {
  struct stat found;
  int fd = open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC, 0666);
  if (fd < 0) return nullptr;
  bool regular = fstat(fd, &found) == 0 && S_ISREG(found.st_mode);
  file_guard file(regular ? fdopen(fd, mode) : nullptr);
  if (!file) close(fd);
  return file;
}

/* --- Lines ---------------------------------------------------------------------------------------------- */

struct info_line {
  char key[LINE_SIZE] = {};   /* before the first ":"; empty when there is none */
  char value[LINE_SIZE] = {}; /* the first word after it */
};

static info_line read_line(const char *line) {
  info_line read;
  if (strchr(line, ':') == nullptr) return read;
  sscanf(line, "%255[^:]:%255s", read.key, read.value);
  return read;
}

/* A line break in a value would make a line of its own of the rest; a blank reads back the same. */
static void write_line(FILE *file, const char *key, const char *value) {
  std::string text(value);
  for (char &c : text) {
    if (c == '\n') c = ' ';
  }
  fprintf(file, "%s:%s\n", key, text.c_str());
}

/* --- The file ------------------------------------------------------------------------------------------- */

RC_t read_startupcfg_info_file(void) {
  file_guard file = open_file(file_path(), O_RDONLY, "r");
  if (!file) return RC_FALSE;
  char line[LINE_SIZE];
  bool at_start = true;
  while (fgets(line, sizeof line, file.get()) != nullptr) {
    info_line read = at_start ? read_line(line) : info_line();
    at_start = strchr(line, '\n') != nullptr;
    char *time = nullptr;
    if (strcmp(read.key, KEY_TIME) == 0) time = startupcfgInfo.cfgTime;
    if (strcmp(read.key, KEY_UPDATE) == 0) time = startupcfgInfo.cfgUpdateTime;
    if (time != nullptr) snprintf(time, STARTUPCFG_TIME_SIZE, "%.*s", STARTUPCFG_TIME_SIZE - 1, read.value);
  }
  return RC_TRUE;
}

/* Copies the old file into the new one, with the record's times. On purpose an update time is compared with
 * the creation time, not with the record's update time: a line that has the creation time stays. */
static void copy_lines(FILE *from, FILE *into) {
  const startupcfg_info_t &info = startupcfgInfo;
  bool time_seen = false, update_seen = false;
  bool at_start = true, dropping = false; /* dropping: what is left of a long line that was rewritten */
  char line[LINE_SIZE];
  while (fgets(line, sizeof line, from) != nullptr) {
    info_line read = at_start ? read_line(line) : info_line();
    bool is_time = strcmp(read.key, KEY_TIME) == 0, is_update = strcmp(read.key, KEY_UPDATE) == 0;
    bool rewrite = (is_time || is_update) && strcmp(read.value, info.cfgTime) != 0;
    if (at_start) dropping = rewrite;
    if (rewrite)
      write_line(into, read.key, is_time ? info.cfgTime : info.cfgUpdateTime);
    else if (!dropping)
      fputs(line, into);
    time_seen = time_seen || is_time;
    update_seen = update_seen || is_update;
    at_start = strchr(line, '\n') != nullptr;
  }
  bool key_missing = !time_seen || !update_seen;
  if (key_missing && !at_start && !dropping) fputc('\n', into);
  if (!time_seen) write_line(into, KEY_TIME, info.cfgTime);
  if (!update_seen) write_line(into, KEY_UPDATE, info.cfgUpdateTime);
}

/* Whether everything that was written is on disk. */
static bool is_stored(FILE *file) {
  return fflush(file) == 0 && ferror(file) == 0 && fsync(fileno(file)) == 0;
}

RC_t write_startupcfg_info_file(void) {
  const std::string path = file_path(), beside = path + ".tmp";
  mkdir(folder().c_str(), 0755);
  open_file(path, O_RDWR | O_CREAT, "r+");
  file_guard old = open_file(path, O_RDONLY, "r");
  if (!old) return RC_FALSE;
  /* A link that somebody has put there is not followed. */
  unlink(beside.c_str());
  file_guard made = open_file(beside, O_WRONLY | O_CREAT | O_EXCL, "w");
  if (!made) return RC_FALSE;
  copy_lines(old.get(), made.get());
  if (is_stored(made.get()) && rename(beside.c_str(), path.c_str()) == 0) return RC_TRUE;
  unlink(beside.c_str());
  return RC_FALSE;
}

RC_t initialize_transfer_variables(void) {
  startupcfgInfo = {};
  startupcfgInfo.hasUpdated = static_cast<RC_t>(1);
  return read_startupcfg_info_file() == RC_TRUE ? RC_TRUE : write_startupcfg_info_file();
}

/* --- Access --------------------------------------------------------------------------------------------- */

RC_t set_startup_config_has_updated_flag(RC_t updated) {
  startupcfgInfo.hasUpdated = updated;
  return RC_TRUE;
}

RC_t get_startup_config_has_updated_flag(RC_t *updated) {
  if (updated == nullptr) return RC_FALSE;
  *updated = startupcfgInfo.hasUpdated;
  return RC_TRUE;
}

RC_t set_startup_config_serial_number(uint32_t number) {
  startupcfgInfo.serialNum = number;
  return RC_TRUE;
}

RC_t get_startup_config_serial_number(uint32_t *number) {
  if (number == nullptr) return RC_FALSE;
  *number = startupcfgInfo.serialNum;
  return RC_TRUE;
}

static RC_t set_time(char *time, const char *text) {
  if (text == nullptr || text[0] == '\0') return RC_FALSE;
  if (strcmp(time, text) == 0) return RC_TRUE;
  snprintf(time, STARTUPCFG_TIME_SIZE, "%s", text);
  return write_startupcfg_info_file();
}

RC_t set_startup_config_time(const char *text) {
  return set_time(startupcfgInfo.cfgTime, text);
}

RC_t set_startup_config_update_time(const char *text) {
  return set_time(startupcfgInfo.cfgUpdateTime, text);
}

static RC_t get_time(const char *time, char *text) {
  if (text == nullptr) return RC_FALSE;
  text[0] = '\0';
  if (read_startupcfg_info_file() != RC_TRUE) return RC_FALSE;
  snprintf(text, STARTUPCFG_TIME_SIZE, "%s", time);
  return RC_TRUE;
}

RC_t get_startup_config_time(char *text) {
  return get_time(startupcfgInfo.cfgTime, text);
}

RC_t get_startup_config_update_time(char *text) {
  return get_time(startupcfgInfo.cfgUpdateTime, text);
}
