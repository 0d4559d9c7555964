/* See program_harness.h. */
#include "tests/unit/server/program_harness.h"

#include "server/mg_child.h"

#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

void write_file(const std::string &path, const std::string &content) {
  std::ofstream(path, std::ios::binary) << content;
}

void write_script(const std::string &path, const std::string &commands) {
  write_file(path, "#!/bin/sh\n" + commands);
  chmod(path.c_str(), 0755);
}

/* The letter of the process's state follows its name in parentheses. */
bool process_runs(pid_t pid) {
  const std::string stat = read_file("/proc/" + std::to_string(pid) + "/stat");
  const size_t end = stat.rfind(") ");
  return end != std::string::npos && stat[end + 2] != 'Z' && stat[end + 2] != 'X';
}

bool process_ends(pid_t pid) {
  for (int i = 0; i < 10000 && process_runs(pid); i++) usleep(1000);
  return !process_runs(pid);
}

std::vector<pid_t> own_children() {
  std::istringstream in(read_file("/proc/self/task/" + std::to_string(gettid()) + "/children"));
  std::vector<pid_t> pids;
  for (pid_t pid; in >> pid;) pids.push_back(pid);
  return pids;
}

bool all_children_end() {
  for (int i = 0; i < 10000 && running_children() > 0; i++) {
    usleep(1000);
    reap_children();
  }
  return running_children() == 0;
}
