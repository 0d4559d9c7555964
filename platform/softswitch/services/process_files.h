/* What /proc says about memory, CPUs and processes (proc(5)), read once. Used by process_figures.cpp. */
#ifndef KESTREL_SOFTSWITCH_PROCESS_FILES_H
#define KESTREL_SOFTSWITCH_PROCESS_FILES_H

#include <cstdint>
#include <string>
#include <vector>

namespace softswitch {

/* In kibibytes. */
struct memory_figures {
  uint64_t total = 0;
  uint64_t free =
      0; /* what programs can be given without swapping; caches that can be dropped are part of it */
};

/* All CPUs together since the machine came up, in clock ticks. */
struct cpu_ticks {
  uint64_t total = 0;
  uint64_t busy = 0;
};

struct process_entry {
  uint32_t pid = 0;
  uint64_t started = 0; /* clock ticks since the machine came up: tells processes of one id apart */
  uint64_t ticks = 0;   /* CPU time it has had, in user and kernel mode */
  std::string name;     /* as the kernel has it; may hold any byte */
};

/* `proc` is the path of a directory like /proc. False when what they want is not there. */
bool memory_read(const std::string &proc, memory_figures *memory);
bool cpu_ticks_read(const std::string &proc, cpu_ticks *ticks);
/* The processes that can be seen, in order of id. Those that end meanwhile or cannot be read are left out. */
bool processes_read(const std::string &proc, std::vector<process_entry> *processes);

} // namespace softswitch

#endif
