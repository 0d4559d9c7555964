/* Reloading; see softswitch.h and softswitch_reload.h. */
#include "platform/softswitch/softswitch_reload.h"

#include "platform/api/l7proc.h"
#include "platform/softswitch/config/language.h"
#include "platform/softswitch/services/service_thread.h"
#include "platform/softswitch/services/stored_files.h"
#include "platform/softswitch/services/transfer.h"
#include "platform/softswitch/softswitch.h"

#include <algorithm>
#include <chrono>
#include <unistd.h>
#include <utility>

namespace softswitch {

/* --- The startup configuration -------------------------------------------------------------------------- */

static bool reload_startup(running_switch &sw, std::string *error) {
  const std::string &dir = sw.settings.state_dir;
  std::string text;
  bool exists;
  if (!read_config_file(dir, "startup-config", &text, &exists, error)) return false;
  auto begin_anew = [&](switch_model &model, std::string *failure) {
    std::string reason;
    switch_reset(model);
    if (apply_text(model, text, &reason)) return true;
    *failure = dir + "/startup-config, " + reason;
    return false;
  };
  std::unique_lock lock(sw.lock);
  return change_configuration(sw, lock, begin_anew, error);
}

/* --- The running configuration -------------------------------------------------------------------------- */

/* The data plane is given all there is whenever something has changed; here nothing has. */
static bool reload_running(running_switch &sw, std::string *) {
  std::lock_guard guard(sw.lock);
  next_change(sw.model);
  sw.wake.notify_all();
  return true;
}

/* --- Factory state -------------------------------------------------------------------------------------- */

/* While this file is there, a factory reset is under way. */
static std::string reset_mark(const std::string &state_dir) {
  return state_dir + "/factory-reset";
}

bool finish_factory_reset(const std::string &state_dir, std::string *error) {
  std::string mark = reset_mark(state_dir);
  if (access(mark.c_str(), F_OK) != 0) return true;
  l7proc_logf(L7PROC_NOTICE, 0, "softswitch_reload.cpp", __LINE__, "completing a factory reset");
  return journal_remove(state_dir, error) && stored_files_remove(state_dir, error) &&
         remove_file(mark, error);
}

/* The lock is held from the moment that factory state is in force until the mark is gone: a change that is
 * acknowledged in between would be lost with a crash. */
static bool reload_factory(running_switch &sw, std::string *error) {
  const std::string &dir = sw.settings.state_dir;
  std::string mark = reset_mark(dir);
  if (!replace_file(mark, "", 0600, error)) return false;
  auto reset = [](switch_model &model, std::string *) {
    switch_reset(model);
    return true;
  };
  std::unique_lock lock(sw.lock);
  bool done = change_configuration(sw, lock, reset, error) && stored_files_remove(dir, error);
  std::string reason;
  if (remove_file(mark, &reason) || !done) return done;
  *error = reason;
  return false;
}

/* --- Any reload ----------------------------------------------------------------------------------------- */

struct reload_mode {
  uint32_t mode;
  const char *with;
  bool (*run)(running_switch &, std::string *error);
};

static constexpr reload_mode reload_modes[] = {
    {OPEN_RELOAD, "the startup configuration", reload_startup},
    {OPEN_RELOAD_WARM, "the running configuration", reload_running},
    {OPEN_RELOAD_FACTORY, "factory state", reload_factory},
};

/* nullptr for what is no mode. */
static const reload_mode *find_mode(uint32_t mode) {
  auto row = std::find_if(std::begin(reload_modes), std::end(reload_modes),
                          [&](const reload_mode &candidate) { return candidate.mode == mode; });
  return row == std::end(reload_modes) ? nullptr : row;
}

static void log_notice(const char *what, const reload_mode &mode) {
  l7proc_logf(L7PROC_NOTICE, 0, "softswitch_reload.cpp", __LINE__, "%s with %s", what, mode.with);
}

bool reload(std::string *error, uint32_t mode) {
  /* One at a time: those on order, and those of lab control. */
  static std::mutex one_at_a_time;
  std::lock_guard guard(one_at_a_time);
  const reload_mode *wanted = find_mode(mode);
  if (!wanted) {
    *error = "no mode of reloading";
    return false;
  }
  transfer_cancel();
  log_notice("reloading", *wanted);
  if (!wanted->run(the_switch(), error)) return false;
  log_notice("reloaded", *wanted);
  return true;
}

/* --- Reloads on order ----------------------------------------------------------------------------------- */

bool request_reload(uint32_t mode) {
  const reload_mode *wanted = find_mode(mode);
  if (!wanted) return false;
  log_notice("a reload is ordered", *wanted);
  running_switch &sw = the_switch();
  std::lock_guard guard(sw.lock);
  sw.model.ready = false;
  sw.reload_request = mode;
  sw.reload_wake.notify_all();
  return true;
}

/* Waits for a request, then until its time has come. False when the thread shall end. */
static bool wait_for_request(running_switch *sw, std::unique_lock<std::mutex> *lock) {
  auto ending = [&] { return sw->reload_ending; };
  sw->reload_wake.wait(*lock, [&] { return sw->reload_ending || sw->reload_request != 0; });
  std::chrono::milliseconds delay(sw->model.limits.reload_milliseconds);
  return !sw->reload_wake.wait_for(*lock, delay, ending);
}

static void *reload_loop(void *argument) {
  running_switch *sw = static_cast<running_switch *>(argument);
  std::unique_lock lock(sw->lock);
  while (wait_for_request(sw, &lock)) {
    uint32_t mode = std::exchange(sw->reload_request, 0);
    lock.unlock();
    std::string error;
    if (!reload(&error, mode))
      l7proc_logf(L7PROC_ERROR, 0, "softswitch_reload.cpp", __LINE__, "the switch cannot reload: %s",
                  error.c_str());
    lock.lock();
    sw->model.ready = sw->reload_request == 0;
  }
  return nullptr;
}

bool reload_start(running_switch *sw) {
  sw->reload_ending = false;
  sw->reload_request = 0;
  return service_thread_start(&sw->reload_thread, "switch-reload", reload_loop, sw);
}

void reload_stop(running_switch *sw) {
  {
    std::lock_guard guard(sw->lock);
    sw->reload_ending = true;
  }
  sw->reload_wake.notify_all();
  pthread_join(sw->reload_thread, nullptr);
}

} // namespace softswitch
