/* Reading /proc; see process_files.h. */
#include "platform/softswitch/services/process_files.h"

#include "platform/softswitch/services/files.h"

#include <algorithm>
#include <charconv>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>

namespace softswitch {

/* Longer than any file that is read here: a line of /proc/stat for each CPU, and one for all interrupts. */
static constexpr size_t file_size_max = size_t{1024} * 1024;

static bool read_at(int dir, const std::string &name, std::string *text) {
  file_guard file(openat(dir, name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  std::string error;
  text->clear();
  return file.fd >= 0 && read_file(file.fd, name, file_size_max, text, &error);
}

/* Takes the next number off the front of a text, blanks before it included; false when there is none. */
static bool take_number(std::string_view *text, uint64_t *number) {
  text->remove_prefix(std::min(text->find_first_not_of(' '), text->size()));
  auto [end, failure] = std::from_chars(text->data(), text->data() + text->size(), *number);
  if (failure != std::errc()) return false;
  text->remove_prefix(static_cast<size_t>(end - text->data()));
  return true;
}

/* --- Memory --------------------------------------------------------------------------------------------- */

/* The value of a line "NAME:   12345 kB". */
static bool memory_line(std::string_view text, std::string_view name, uint64_t *kibibytes) {
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (!line.starts_with(name)) continue;
    line.remove_prefix(name.size());
    return take_number(&line, kibibytes);
  }
  return false;
}

bool memory_read(const std::string &proc, memory_figures *memory) {
  std::string text;
  if (!read_at(AT_FDCWD, proc + "/meminfo", &text)) return false;
  if (!memory_line(text, "MemTotal:", &memory->total)) return false;
  bool known =
      memory_line(text, "MemAvailable:", &memory->free) || memory_line(text, "MemFree:", &memory->free);
  memory->free = std::min(memory->free, memory->total);
  return known;
}

/* --- CPUs ----------------------------------------------------------------------------------------------- */

bool cpu_ticks_read(const std::string &proc, cpu_ticks *ticks) {
  /* The first line, "cpu  USER NICE SYSTEM IDLE IOWAIT IRQ SOFTIRQ STEAL GUEST GUEST-NICE": the last two are
   * parts of the first two. */
  static constexpr size_t columns = 8, idle = 3, iowait = 4;
  std::string text;
  if (!read_at(AT_FDCWD, proc + "/stat", &text) || !text.starts_with("cpu ")) return false;
  std::string_view line = std::string_view(text).substr(0, text.find('\n'));
  line.remove_prefix(std::string_view("cpu ").size());
  *ticks = {};
  for (size_t column = 0; column < columns; column++) {
    uint64_t number;
    /* Old kernels have fewer columns. */
    if (!take_number(&line, &number)) return column > idle;
    ticks->total += number;
    if (column != idle && column != iowait) ticks->busy += number;
  }
  return true;
}

/* --- Processes ------------------------------------------------------------------------------------------ */

/* Takes "PID (NAME) STATE ..." apart: the times are the 14th, 15th and 22nd field. A name may hold blanks and
 * parentheses. */
static bool process_parse(std::string_view text, process_entry *process) {
  size_t open = text.find('('), close = text.rfind(')');
  if (open == std::string_view::npos || close == std::string_view::npos || close < open) return false;
  process->name = text.substr(open + 1, close - open - 1);
  std::string_view rest = text.substr(close + 1);
  rest.remove_prefix(std::min(rest.find_first_not_of(' ') + 1, rest.size()));
  uint64_t fields[23] = {};
  for (size_t field = 4; field <= 22; field++) {
    rest.remove_prefix(std::min(rest.find_first_not_of(" -"), rest.size()));
    if (!take_number(&rest, &fields[field])) return false;
  }
  process->ticks = fields[14] + fields[15];
  process->started = fields[22];
  return true;
}

/* Whether the name of a directory is a process id. */
static bool read_pid(std::string_view name, uint32_t *pid) {
  auto [end, failure] = std::from_chars(name.data(), name.data() + name.size(), *pid);
  return failure == std::errc() && end == name.data() + name.size();
}

bool processes_read(const std::string &proc, std::vector<process_entry> *processes) {
  std::unique_ptr<DIR, int (*)(DIR *)> dir(opendir(proc.c_str()), closedir);
  if (!dir) return false;
  processes->clear();
  std::string text;
  while (const dirent *found = readdir(dir.get())) {
    process_entry process;
    if (!read_pid(found->d_name, &process.pid)) continue;
    if (!read_at(dirfd(dir.get()), std::string(found->d_name) + "/stat", &text)) continue;
    if (process_parse(text, &process)) processes->push_back(std::move(process));
  }
  std::sort(processes->begin(), processes->end(),
            [](const process_entry &a, const process_entry &b) { return a.pid < b.pid; });
  return true;
}

} // namespace softswitch
