/* The configuration as a whole: changing, saving and comparing it; see softswitch.h. All of this lasts when
 * the configuration is large, so it is done on copies of the model, without the lock. */
#include "platform/softswitch/config/language.h"
#include "platform/softswitch/services/log.h"
#include "platform/softswitch/softswitch.h"
#include "platform/softswitch/softswitch_state.h"

namespace softswitch {

/* --- Changing ------------------------------------------------------------------------------------------- */

/* How often a change is tried while others go on. The last attempt keeps the lock, so that it comes to an
 * end. */
static constexpr int change_attempts = 4;

/* Goes over to a generation whose snapshot has been written. Under the lock. */
static bool install(running_switch &sw, const switch_model &changed, std::string *error) {
  uint64_t past = sw.journal.generation;
  if (!snapshot_install(&sw.journal, sw.journal.length, error)) return false;
  journal_discard(sw.journal.dir, past);
  take_over(sw, changed);
  return true;
}

bool change_configuration(running_switch &sw, std::unique_lock<std::mutex> &lock,
                          const configuration_change &change, std::string *error) {
  for (int attempt = 1;; attempt++) {
    sw.idle.wait(lock, [&] { return !sw.compacting; });
    sw.compacting = true;
    const switch_model before = sw.model;
    switch_model changed = before;
    uint64_t generation = sw.journal.generation + 1;
    if (attempt < change_attempts) lock.unlock();
    bool good = change(changed, error) &&
                snapshot_write(sw.settings.state_dir, generation, print_configuration(changed), error);
    if (!lock.owns_lock()) lock.lock();
    bool overtaken = good && !(sw.model == before);
    good = good && !overtaken && install(sw, changed, error);
    sw.compacting = false;
    sw.idle.notify_all();
    if (!overtaken) return good;
  }
}

bool apply_configuration(std::string_view text, std::string *error) {
  running_switch &sw = the_switch();
  std::unique_lock lock(sw.lock);
  auto apply = [&](switch_model &model, std::string *reason) { return apply_text(model, text, reason); };
  bool logged = sw.model.logging->cli;
  if (!change_configuration(sw, lock, apply, error)) return false;
  logged |= sw.model.logging->cli;
  lock.unlock();
  if (logged) log_script(text);
  return true;
}

/* --- Printing and saving -------------------------------------------------------------------------------- */

static switch_model copy_of_model() {
  std::lock_guard guard(the_switch().lock);
  return the_switch().model;
}

std::string running_config() {
  return print_configuration(copy_of_model());
}

static std::string startup_path() {
  return the_switch().settings.state_dir + "/startup-config";
}

bool replace_startup_config(std::string_view text, std::string *error) {
  static std::mutex one_at_a_time; /* two would write to the same file beside it */
  std::lock_guard guard(one_at_a_time);
  return replace_file(startup_path(), text, 0600, error);
}

bool save_startup_config(std::string *error) {
  return replace_startup_config(running_config(), error);
}

/* --- What is not saved ---------------------------------------------------------------------------------- */

/* Whether the startup configuration gives another switch than this one. One that cannot be read or applied
 * gives none. One that is known to be a print, as it is after saving, need not be applied, which lasts much
 * longer than printing. */
static bool startup_differs(const switch_model &model, bool *printed) {
  std::string text, reason;
  bool exists;
  if (!read_config_file(the_switch().settings.state_dir, "startup-config", &text, &exists, &reason))
    return true;
  std::string running = print_configuration(model);
  if (text == running) *printed = true;
  if (*printed) return text != running;
  switch_model reloaded = model;
  switch_reset(reloaded);
  if (!apply_text(reloaded, text, &reason)) return true;
  std::string given = print_configuration(reloaded);
  *printed = given == text;
  return given != running;
}

/* The file's stamp is taken before it is read, so that what replaces it in between is noticed later. */
bool configuration_unsaved() {
  running_switch &sw = the_switch();
  file_stamp startup = stamp_of(startup_path());
  std::unique_lock lock(sw.lock);
  const switch_model model = sw.model;
  bool startup_known =
      sw.compared.known && sw.compared.limits == model.limits && sw.compared.startup == startup;
  if (startup_known && sw.compared.change == model.change) return sw.compared.unsaved;
  bool printed = startup_known && sw.compared.startup_printed;
  lock.unlock();
  bool unsaved = startup_differs(model, &printed);
  lock.lock();
  sw.compared = {true, model.change, model.limits, startup, printed, unsaved};
  return unsaved;
}

} // namespace softswitch
