/* Measuring CPU use; see process_figures.h. */
#include "platform/softswitch/services/process_figures.h"

#include "platform/softswitch/services/clock.h"
#include "platform/softswitch/services/service_thread.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace softswitch {

static constexpr int64_t sample_ms = 5 * 1000;
static constexpr size_t samples_max = cpu_periods[cpu_period_count - 1].milliseconds / sample_ms + 1;

/* --- Samples -------------------------------------------------------------------------------------------- */

bool cpu_read(const std::string &proc, cpu_reading *reading) {
  return cpu_ticks_read(proc, &reading->all) && processes_read(proc, &reading->processes);
}

void cpu_history_add(cpu_history *history, int64_t at, const cpu_reading &reading) {
  auto used = [](const process_entry &process) { return process.ticks != 0; };
  cpu_sample sample;
  sample.at = at;
  sample.all = reading.all;
  sample.processes.reserve(
      static_cast<size_t>(std::count_if(reading.processes.begin(), reading.processes.end(), used)));
  for (const process_entry &process : reading.processes) {
    if (used(process))
      sample.processes.push_back(
          {process.pid, static_cast<uint32_t>(process.started), static_cast<uint32_t>(process.ticks)});
  }
  if (history->size() == samples_max) history->pop_front();
  history->push_back(std::move(sample));
}

/* What a period is measured from: the newest sample that is old enough, else the oldest. */
static const cpu_sample &base_of(const cpu_history &history, int64_t at, const cpu_period &period) {
  auto base = std::find_if(history.rbegin(), history.rend(),
                           [&](const cpu_sample &sample) { return sample.at <= at - period.milliseconds; });
  return base == history.rend() ? history.front() : *base;
}

/* --- Shares --------------------------------------------------------------------------------------------- */

/* A part of a whole in hundredths of a percent. Counters of the kernel need not agree to the tick, so that a
 * part may seem larger than the whole. */
static uint32_t share_of(uint64_t part, uint64_t whole) {
  if (whole == 0) return 0;
  return static_cast<uint32_t>((std::min(part, whole) * 10000 + whole / 2) / whole);
}

/* How much has been counted since; nothing when the counter seems to have run backwards. */
static uint64_t since(uint64_t before, uint64_t now) {
  return now > before ? now - before : 0;
}

static uint64_t ticks_since(const cpu_sample &base, const process_entry &process) {
  auto before =
      std::lower_bound(base.processes.begin(), base.processes.end(), process.pid,
                       [](const cpu_sample::process &sampled, uint32_t pid) { return sampled.pid < pid; });
  bool same = before != base.processes.end() && before->pid == process.pid &&
              before->started == static_cast<uint32_t>(process.started);
  if (!same) return process.ticks;
  uint32_t used = static_cast<uint32_t>(process.ticks) - before->ticks;
  return used <= INT32_MAX ? used : 0;
}

static std::string percent(uint32_t share) {
  std::string hundredths = std::to_string(share % 100);
  if (hundredths.size() == 1) hundredths.insert(0, "0");
  return std::to_string(share / 100) + "." + hundredths + "%";
}

/* --- Texts ---------------------------------------------------------------------------------------------- */

std::string cpu_total_text(const cpu_history &history, int64_t at, const cpu_reading &reading) {
  std::string text;
  for (const cpu_period &period : cpu_periods) {
    const cpu_sample &base = base_of(history, at, period);
    uint64_t whole = since(base.all.total, reading.all.total);
    if (!text.empty()) text += ";";
    text += period.name;
    text += ": " + percent(share_of(since(base.all.busy, reading.all.busy), whole));
  }
  return text;
}

/* A name without what means something in the text, or in a document that it becomes part of. */
static std::string plain_name(const std::string &name) {
  std::string plain = name.empty() ? "_" : name;
  std::replace_if(
      plain.begin(), plain.end(),
      [](char byte) {
        return byte < ' ' || byte > '~' || std::string_view(",;<>&\"'").find(byte) != std::string_view::npos;
      },
      '_');
  return plain;
}

/* A process as a line of the text. */
struct process_line {
  std::string text;
  uint32_t busiest = 0; /* its share in the period in which that is largest */
};

/* What shares are measured from. */
struct period_base {
  const cpu_sample *sample;
  uint64_t whole; /* ticks of all CPUs since then */
};
using period_bases = std::array<period_base, cpu_period_count>;

static process_line line_of(const period_bases &bases, const process_entry &process) {
  process_line line;
  line.text = std::to_string(process.pid) + "," + plain_name(process.name);
  for (size_t period = 0; period < cpu_period_count; period++) {
    uint32_t share = share_of(ticks_since(*bases[period].sample, process), bases[period].whole);
    line.text += period == 0 ? "," : ";";
    line.text += cpu_periods[period].name;
    line.text += ":" + percent(share);
    line.busiest = std::max(line.busiest, share);
  }
  line.text += "\n";
  return line;
}

/* Leaves out the least busy lines, of equally busy ones the later, until the others fit. */
static void fit_lines(std::vector<process_line> *lines, size_t size_max) {
  std::vector<process_line *> by_use;
  for (process_line &line : *lines) by_use.push_back(&line);
  std::stable_sort(by_use.begin(), by_use.end(),
                   [](const process_line *a, const process_line *b) { return a->busiest > b->busiest; });
  size_t size = 0;
  bool fits = true;
  for (process_line *line : by_use) {
    size += line->text.size();
    fits = fits && size <= size_max;
    if (!fits) line->text.clear();
  }
}

std::string cpu_list_text(const cpu_history &history, int64_t at, const cpu_reading &reading, size_t size_max,
                          uint32_t *count) {
  period_bases bases;
  for (size_t period = 0; period < cpu_period_count; period++) {
    const cpu_sample &sample = base_of(history, at, cpu_periods[period]);
    bases[period] = {&sample, since(sample.all.total, reading.all.total)};
  }
  std::vector<process_line> lines;
  for (const process_entry &process : reading.processes) lines.push_back(line_of(bases, process));
  fit_lines(&lines, size_max);
  std::string text;
  *count = 0;
  for (const process_line &line : lines) {
    if (!line.text.empty()) ++*count;
    text += line.text;
  }
  return text;
}

/* --- The service ---------------------------------------------------------------------------------------- */

struct running_figures {
  std::mutex lock;
  std::condition_variable changed;
  pthread_t thread;
  std::string proc;
  bool stopping = false;
  cpu_history history;
};

/* Never destroyed, so that its thread may run until the process is gone. */
static running_figures &running() {
  static running_figures &only = *new running_figures;
  return only;
}

/* Reads without the lock, so that the end and queries need not wait. A sample that cannot be had is missing.
 */
static void *take_samples(void *) {
  running_figures &figures = running();
  std::unique_lock<std::mutex> hold(figures.lock);
  while (!figures.stopping) {
    std::string proc = figures.proc;
    hold.unlock();
    cpu_reading reading;
    bool good = cpu_read(proc, &reading);
    hold.lock();
    if (good) cpu_history_add(&figures.history, monotonic_ms(), reading);
    reading = {};
    figures.changed.wait_for(hold, std::chrono::milliseconds(sample_ms), [&] { return figures.stopping; });
  }
  return nullptr;
}

bool process_figures_start(const std::string &proc) {
  running_figures &figures = running();
  figures.proc = proc;
  figures.stopping = false;
  figures.history.clear();
  return service_thread_start(&figures.thread, "kestrel-figures", take_samples, nullptr);
}

void process_figures_stop() {
  running_figures &figures = running();
  {
    std::lock_guard<std::mutex> hold(figures.lock);
    figures.stopping = true;
  }
  figures.changed.notify_all();
  pthread_join(figures.thread, nullptr);
}

bool process_memory(memory_figures *memory) {
  return memory_read(running().proc, memory);
}

/* Makes a text of a fresh reading and the history, which before the first sample is that reading alone. */
template <typename Make> static void make_text(const cpu_reading &reading, Make make) {
  running_figures &figures = running();
  int64_t now = monotonic_ms();
  std::lock_guard<std::mutex> hold(figures.lock);
  if (!figures.history.empty()) return make(figures.history, now);
  cpu_history begun;
  cpu_history_add(&begun, now, reading);
  make(begun, now);
}

bool process_total_text(std::string *text) {
  cpu_reading reading; /* without the processes, each of which is a file to read */
  if (!cpu_ticks_read(running().proc, &reading.all)) return false;
  make_text(reading,
            [&](const cpu_history &history, int64_t now) { *text = cpu_total_text(history, now, reading); });
  return true;
}

bool process_list_text(size_t size_max, std::string *text, uint32_t *count) {
  cpu_reading reading;
  if (!cpu_read(running().proc, &reading)) return false;
  make_text(reading, [&](const cpu_history &history, int64_t now) {
    *text = cpu_list_text(history, now, reading, size_max, count);
  });
  return true;
}

} // namespace softswitch
