/* The apply thread; see apply.h. */
#include "platform/softswitch/dataplane/apply.h"

#include "platform/api/l7proc.h"
#include "platform/softswitch/config/language.h"
#include "platform/softswitch/dataplane/driver.h"
#include "platform/softswitch/services/service_thread.h"

#include <chrono>

namespace softswitch {

static const dataplane_driver &driver = none_driver;

void report_links(switch_model *model) {
  for (uint32_t port = port_first; port <= port_last; port++) {
    if (!interface_is_port(*model, port)) continue;
    const interface_entry &entry = model->interfaces->at[port];
    interface_set_link(*model, port, driver.link_up(port, entry.cabled && entry.far_end_up));
  }
}

void apply_initial(switch_model *model) {
  driver.take(compile_wanted(*model));
  changes_taken(*model, model->change);
  report_links(model);
}

/* --- Taking changes ------------------------------------------------------------------------------------- */

/* Waits for a change, then until the time is over in which others may follow it. False when the thread shall
 * end; true also when changes are held back meanwhile. */
static bool wait_for_changes(running_switch *sw, std::unique_lock<std::mutex> *lock) {
  auto stopping = [&] { return sw->stopping; };
  sw->wake.wait(*lock, [&] { return sw->stopping || (!sw->held && sw->model.change != sw->model.applied); });
  std::chrono::milliseconds settle(sw->model.limits.settle_milliseconds);
  return !sw->wake.wait_for(*lock, settle, stopping);
}

/* Brings the changes so far to disk and data plane. False when the disk refuses; they stay pending then. */
static bool take_changes(running_switch *sw, std::unique_lock<std::mutex> *lock) {
  switch_model copy = sw->model;
  std::shared_ptr<file_guard> file = sw->journal.file;
  lock->unlock();
  bool synced = journal_sync(*file);
  if (synced) driver.take(compile_wanted(copy));
  lock->lock();
  if (!synced) return false;
  changes_taken(sw->model, copy.change);
  report_links(&sw->model);
  sw->idle.notify_all();
  return true;
}

/* --- Compaction ----------------------------------------------------------------------------------------- */

/* Writes the running configuration as a new snapshot while changes go on, and goes over to it. */
static bool compact(running_switch *sw, std::unique_lock<std::mutex> *lock, std::string *error) {
  switch_model copy = sw->model;
  off_t offset = sw->journal.length;
  uint64_t past = sw->journal.generation;
  std::string dir = sw->journal.dir;
  sw->compacting = true;
  lock->unlock();
  bool done = snapshot_write(dir, past + 1, print_configuration(copy), error);
  lock->lock();
  done = done && snapshot_install(&sw->journal, offset, error);
  sw->compacting = false;
  sw->idle.notify_all();
  if (!done) return false;
  lock->unlock();
  journal_discard(dir, past);
  lock->lock();
  return true;
}

/* `compact_at` is the length of the journal at which to compact it. After a failure the next attempt comes
 * when it has grown as much again. */
static void compact_when_due(running_switch *sw, std::unique_lock<std::mutex> *lock, off_t *compact_at) {
  off_t step = sw->model.limits.journal_bytes;
  if (sw->compacting || sw->journal.length <= std::max(step, *compact_at)) return;
  std::string error;
  if (compact(sw, lock, &error)) {
    *compact_at = 0;
    return;
  }
  *compact_at = sw->journal.length + step;
  l7proc_logf(L7PROC_ERROR, 0, "apply.cpp", __LINE__, "the journal cannot be compacted: %s", error.c_str());
}

/* --- The thread ----------------------------------------------------------------------------------------- */

static void *apply_loop(void *argument) {
  running_switch *sw = static_cast<running_switch *>(argument);
  std::unique_lock lock(sw->lock);
  off_t compact_at = 0;
  while (wait_for_changes(sw, &lock)) {
    if (sw->held) continue;
    if (take_changes(sw, &lock)) {
      compact_when_due(sw, &lock, &compact_at);
    } else {
      l7proc_logf(L7PROC_ERROR, 0, "apply.cpp", __LINE__, "the journal cannot be synced: %m");
      sw->wake.wait_for(lock, std::chrono::seconds(1), [&] { return sw->stopping; });
    }
  }
  return nullptr;
}

bool apply_start(running_switch *sw) {
  sw->stopping = false;
  return service_thread_start(&sw->apply_thread, "switch-apply", apply_loop, sw);
}

void apply_stop(running_switch *sw) {
  {
    std::lock_guard guard(sw->lock);
    sw->stopping = true;
  }
  sw->wake.notify_all();
  pthread_join(sw->apply_thread, nullptr);
}

} // namespace softswitch
