/* The console's queue and thread; see console.h. */
#include "platform/softswitch/services/console.h"

#include "platform/api/l7proc.h"
#include "platform/softswitch/services/log.h"
#include "platform/softswitch/services/service_thread.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <errno.h>
#include <memory>
#include <mutex>
#include <stdlib.h>
#include <string>
#include <unistd.h>

namespace softswitch {

/* A burst of some thousand ordinary lines. */
static constexpr size_t queue_bytes_max = size_t{256} * 1024;

/* Shared by the thread and the rest, so that a thread that is stuck in the terminal can be left to itself. */
struct console_state {
  std::mutex lock;
  std::condition_variable changed;
  std::deque<std::string> lines;
  size_t bytes = 0;
  unsigned long dropped = 0;
  bool stopping = false;
  bool finished = false;
};

struct running_console {
  std::mutex lock;
  std::shared_ptr<console_state> state; /* null while no thread runs */
  pthread_t thread;
  bool exit_registered = false;
};

/* Never destroyed, as other threads may log while the program ends. */
static running_console &running() {
  static running_console &only = *new running_console;
  return only;
}

static void write_line(std::string_view line) {
  while (!line.empty()) {
    ssize_t size = write(STDERR_FILENO, line.data(), line.size());
    if (size < 0 && errno != EINTR) return;
    if (size > 0) line.remove_prefix(static_cast<size_t>(size));
  }
}

/* Waits for the next line to write. False when there is none left and the thread is to end. */
static bool take_line(console_state &state, std::string *line) {
  std::unique_lock<std::mutex> hold(state.lock);
  state.changed.wait(hold, [&] { return state.stopping || !state.lines.empty() || state.dropped > 0; });
  if (!state.lines.empty()) {
    *line = std::move(state.lines.front());
    state.lines.pop_front();
    state.bytes -= line->size();
    return true;
  }
  if (state.dropped > 0) {
    std::string text = std::to_string(state.dropped) + " lines were dropped: the console was not read";
    *line = log_format(L7PROC_WARNING, "console.cpp", __LINE__, text);
    state.dropped = 0;
    return true;
  }
  return false;
}

static void *write_lines(void *argument) {
  std::unique_ptr<std::shared_ptr<console_state>> owned(
      static_cast<std::shared_ptr<console_state> *>(argument));
  console_state &state = **owned;
  std::string line;
  while (take_line(state, &line)) write_line(line);
  std::lock_guard<std::mutex> hold(state.lock);
  state.finished = true;
  state.changed.notify_all();
  return nullptr;
}

/* Starts the thread when none runs; the caller holds the lock of `console`. */
static bool ensure_thread(running_console &console) {
  if (console.state) return true;
  auto state = std::make_shared<console_state>();
  auto for_thread = std::make_unique<std::shared_ptr<console_state>>(state);
  if (!service_thread_start(&console.thread, "kestrel-console", write_lines, for_thread.get())) return false;
  for_thread.release();
  console.state = state;
  /* A program that reports why it cannot start and exits at once must still get its line out. */
  if (!console.exit_registered) console.exit_registered = atexit(console_stop) == 0;
  return true;
}

void console_write(std::string_view line) {
  running_console &console = running();
  std::lock_guard<std::mutex> hold_console(console.lock);
  if (!ensure_thread(console)) return;
  console_state &state = *console.state;
  std::lock_guard<std::mutex> hold(state.lock);
  /* Once lines are missing, none is queued before the gap has been told. */
  if (state.dropped > 0 || state.bytes + line.size() > queue_bytes_max) {
    state.dropped++;
  } else {
    state.lines.emplace_back(line);
    state.bytes += line.size();
  }
  state.changed.notify_all();
}

void console_stop() {
  running_console &console = running();
  std::lock_guard<std::mutex> hold_console(console.lock);
  if (!console.state) return;
  std::shared_ptr<console_state> state = std::move(console.state);
  std::unique_lock<std::mutex> hold(state->lock);
  state->stopping = true;
  state->changed.notify_all();
  bool finished = state->changed.wait_for(hold, std::chrono::seconds(1), [&] { return state->finished; });
  hold.unlock();
  if (finished)
    pthread_join(console.thread, nullptr);
  else
    pthread_detach(console.thread);
}

} // namespace softswitch
