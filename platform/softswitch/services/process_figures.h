/* Memory and CPU figures of the machine, from /proc. CPU use is measured over the last 5, 60 and 300 seconds:
 * a thread notes every 5 seconds how much CPU time was used so far, and a query compares the present with
 * what was noted then. While there are no notes as old as a period, the oldest one stands in. */
#ifndef KESTREL_SOFTSWITCH_PROCESS_FIGURES_H
#define KESTREL_SOFTSWITCH_PROCESS_FIGURES_H

#include "platform/softswitch/services/process_files.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace softswitch {

/* --- The service ---------------------------------------------------------------------------------------- */

/* Starts the thread. `proc` is the path of a directory like /proc. False when there is no thread. */
bool process_figures_start(const std::string &proc);
void process_figures_stop();

/* The following are false when the figures cannot be read. */
bool process_memory(memory_figures *memory);
/* "last_5s: 3.42%;last_60s: 1.10%;last_300s: 0.90%", of all CPUs. */
bool process_total_text(std::string *text);
/* One line "PID,NAME,last_5s:0.00%;last_60s:0.00%;last_300s:0.00%" for each process, in order of id, at most
 * `size_max` bytes: the least busy are left out. `count` is how many the text has. */
bool process_list_text(size_t size_max, std::string *text, uint32_t *count);

/* --- Measuring ------------------------------------------------------------------------------------------ */

struct cpu_period {
  const char *name;
  int64_t milliseconds;
};
inline constexpr cpu_period cpu_periods[] = {
    {"last_5s", 5 * 1000}, {"last_60s", 60 * 1000}, {"last_300s", 300 * 1000}};
inline constexpr size_t cpu_period_count = sizeof cpu_periods / sizeof *cpu_periods;

/* CPU time used so far, everything by everybody. */
struct cpu_reading {
  cpu_ticks all;
  std::vector<process_entry> processes; /* in order of id */
};
bool cpu_read(const std::string &proc, cpu_reading *reading);

/* What is kept of a reading. Numbers are cut to 32 bits, which still tell apart what lies minutes apart. */
struct cpu_sample {
  struct process {
    uint32_t pid;
    uint32_t started;
    uint32_t ticks;
  };
  int64_t at = 0; /* milliseconds of a clock that never runs backwards */
  cpu_ticks all;
  std::vector<process> processes; /* in order of id; those that have used nothing are not kept */
};

/* The samples that are needed, oldest first: one for each 5 seconds of the longest period, and one before. */
using cpu_history = std::deque<cpu_sample>;
void cpu_history_add(cpu_history *history, int64_t at, const cpu_reading &reading);

/* The texts described above for a reading at a time. The history is not empty. */
std::string cpu_total_text(const cpu_history &history, int64_t at, const cpu_reading &reading);
std::string cpu_list_text(const cpu_history &history, int64_t at, const cpu_reading &reading, size_t size_max,
                          uint32_t *count);

} // namespace softswitch

#endif
