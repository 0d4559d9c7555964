/* The software switch as one object; see softswitch.h. */
#include "platform/softswitch/softswitch.h"

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/config/language.h"
#include "platform/softswitch/dataplane/apply.h"
#include "platform/softswitch/services/accounts.h"
#include "platform/softswitch/services/clock.h"
#include "platform/softswitch/services/lab.h"
#include "platform/softswitch/services/log.h"
#include "platform/softswitch/services/transfer.h"
#include "platform/softswitch/softswitch_reload.h"

#include <charconv>
#include <chrono>

namespace softswitch {

/* Never destroyed, so that its threads may run until the process is gone. */
running_switch &the_switch() {
  static running_switch *const only = new running_switch;
  return *only;
}

/* --- Starting and stopping ------------------------------------------------------------------------------ */

static bool take_directory(running_switch &sw, std::string *error) {
  const std::string &dir = sw.settings.state_dir;
  if (make_state_dir(dir, error)) return state_dir_take(dir, &sw.dir_lock, error);
  *error = "the state directory " + *error;
  return false;
}

static void release_directory(running_switch &sw) {
  sw.dir_lock.reset();
}

static bool open_log(running_switch &sw, std::string *error) {
  return log_open(sw.settings.state_dir, error);
}

static void close_log(running_switch &) {
  log_close();
}

static bool make_model(running_switch &sw, std::string *error) {
  chassis_profile profile = built_in_profile();
  if (!sw.settings.profile.empty() && !load_profile(sw.settings.profile, &profile, error)) return false;
  sw.model = make_switch(profile);
  return true;
}

static void forget_model(running_switch &sw) {
  sw.model = switch_model();
}

static bool open_accounts(running_switch &sw, std::string *error) {
  return accounts_open(sw.settings.state_dir, sw.settings.admin_password, error);
}

static void close_accounts(running_switch &) {
  accounts_close();
}

static bool load_configuration(running_switch &sw, std::string *error) {
  if (!finish_factory_reset(sw.settings.state_dir, error)) return false;
  switch_model loaded = sw.model;
  if (!journal_open(&sw.journal, sw.settings.state_dir, &loaded, error)) return false;
  apply_initial(&loaded);
  sw.compared = {};
  take_over(sw, loaded);
  return true;
}

static void close_journal(running_switch &sw) {
  sw.journal = journal();
}

static bool start_applying(running_switch &sw, std::string *error) {
  sw.held = false;
  if (apply_start(&sw)) return true;
  *error = "no thread for applying changes";
  return false;
}

static void stop_applying(running_switch &sw) {
  apply_stop(&sw);
}

static bool start_reloading(running_switch &sw, std::string *error) {
  if (reload_start(&sw)) return true;
  *error = "no thread for reloading";
  return false;
}

static void stop_reloading(running_switch &sw) {
  reload_stop(&sw);
}

static bool open_transfers(running_switch &sw, std::string *) {
  transfers_open(sw.settings.state_dir);
  return true;
}

static void close_transfers(running_switch &) {
  transfers_close();
}

static bool start_lab(running_switch &sw, std::string *error) {
  return lab_start(sw.settings.state_dir, error);
}

static void stop_lab(running_switch &) {
  lab_stop();
}

struct start_step {
  bool (*begin)(running_switch &, std::string *error);
  void (*end)(running_switch &);
};

/* In order; the end is the same backwards. */
static constexpr start_step start_steps[] = {
    {take_directory, release_directory},
    {open_log, close_log},
    {make_model, forget_model},
    {open_accounts, close_accounts},
    {load_configuration, close_journal},
    {start_applying, stop_applying},
    {start_reloading, stop_reloading},
    {open_transfers, close_transfers},
    {start_lab, stop_lab},
};
static constexpr size_t start_step_count = sizeof start_steps / sizeof *start_steps;

/* Undoes the first `begun` steps. */
static void end_steps(running_switch &sw, size_t begun) {
  while (begun > 0) start_steps[--begun].end(sw);
}

bool is_running() {
  std::lock_guard guard(the_switch().lock);
  return the_switch().running;
}

static void set_running(running_switch &sw, bool running) {
  std::lock_guard guard(sw.lock);
  sw.running = running;
}

bool start(std::string *error) {
  running_switch &sw = the_switch();
  if (is_running()) return true;
  sw.settings = read_settings();
  trace_calls(sw.settings.trace_platform);
  for (size_t step = 0; step < start_step_count; step++) {
    if (start_steps[step].begin(sw, error)) continue;
    end_steps(sw, step);
    return false;
  }
  set_running(sw, true);
  return true;
}

void stop() {
  running_switch &sw = the_switch();
  if (!is_running()) return;
  set_running(sw, false);
  end_steps(sw, start_step_count);
}

std::string state_directory() {
  return the_switch().settings.state_dir;
}

/* --- The model ------------------------------------------------------------------------------------------ */

locked_switch::locked_switch() {
  the_switch().lock.lock();
}

locked_switch::~locked_switch() {
  the_switch().lock.unlock();
}

switch_model *locked_switch::operator->() const {
  return &the_switch().model;
}

switch_model &locked_switch::operator*() const {
  return the_switch().model;
}

void take_over(running_switch &sw, const switch_model &changed) {
  sw.model = changed;
  sw.wake.notify_all();
}

open_error_t commit_line(switch_model &model, std::string_view line) {
  running_switch &sw = the_switch();
  switch_model changed = model;
  std::string reason;
  open_error_t rc = apply_line(changed, line, &reason);
  if (rc != OPEN_E_NONE) return rc;
  /* What is as wanted already, and a comment, are not worth a line in the journal. */
  if (changed.change == model.change) return OPEN_E_NONE;
  if (!journal_append(&sw.journal, line)) return OPEN_E_FAIL;
  take_over(sw, changed);
  return OPEN_E_NONE;
}

open_error_t commit(switch_model &model, std::string_view pattern, const std::vector<argument> &arguments) {
  return commit_line(model, format_line(model, pattern, arguments));
}

/* --- Lab control ---------------------------------------------------------------------------------------- */

void hold_apply(bool hold) {
  std::lock_guard guard(the_switch().lock);
  the_switch().held = hold;
  the_switch().wake.notify_all();
}

bool wait_applied(int milliseconds) {
  running_switch &sw = the_switch();
  std::unique_lock lock(sw.lock);
  return sw.idle.wait_for(lock, std::chrono::milliseconds(milliseconds),
                          [&] { return sw.model.applied == sw.model.change; });
}

bool set_cabled(std::string_view interface_name, bool cabled) {
  locked_switch sw;
  uint32_t number = interface_by_name(*sw, interface_name);
  if (interface_set_cabled(*sw, number, cabled) != OPEN_E_NONE) return false;
  report_links(&*sw);
  return true;
}

bool set_far_end(std::string_view interface_name, bool up) {
  locked_switch sw;
  uint32_t number = interface_by_name(*sw, interface_name);
  if (interface_set_far_end(*sw, number, up) != OPEN_E_NONE) return false;
  report_links(&*sw);
  return true;
}

static std::string no_interface(std::string_view name) {
  return "there is no interface \"" + std::string(name) + "\"";
}

/* The id of a counter that is given by id or name. */
static bool counter_from_text(std::string_view text, uint32_t *id) {
  auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), *id);
  bool number = failure == std::errc() && end == text.data() + text.size();
  return number ? *id < OPEN_STAT_COUNTERS : counter_by_name(text, id);
}

bool change_counter(std::string_view interface_name, std::string_view counter, counter_change change,
                    uint64_t amount, std::string *error) {
  locked_switch sw;
  uint32_t number = interface_by_name(*sw, interface_name), id;
  if (number == 0) {
    *error = no_interface(interface_name);
    return false;
  }
  if (!counter_from_text(counter, &id)) {
    *error = "there is no counter \"" + std::string(counter) + "\"; \"counter names\" lists them";
    return false;
  }
  if (change(*sw, number, id, amount, monotonic_ms()) == OPEN_E_NONE) return true;
  *error = std::string(interface_name) + " has no counter " + std::string(counter_name(id));
  return false;
}

bool read_counters(std::string_view interface_name, std::map<uint32_t, counter> *counters,
                   std::string *error) {
  locked_switch sw;
  uint32_t number = interface_by_name(*sw, interface_name);
  if (number == 0) {
    *error = no_interface(interface_name);
    return false;
  }
  for (uint32_t id = 0; id < OPEN_STAT_COUNTERS; id++) {
    if (counter_check(*sw, number, id) == OPEN_E_NONE)
      (*counters)[id] = counter_at(*sw, number, id, monotonic_ms());
  }
  return true;
}

bool set_time_range(std::string_view name, uint32_t state) {
  locked_switch sw;
  return time_range_set(*sw, name, state);
}

std::map<std::string, uint32_t, std::less<>> time_ranges() {
  locked_switch sw;
  return sw->time_ranges->states;
}

/* Why an offer was refused. */
static std::string lease_refusal(const switch_model &model, open_error_t rc, uint32_t interface,
                                 const open_inet_pfx_t &offer) {
  std::string shown = inet_prefix_text(offer);
  if (rc == OPEN_E_PARAM) return shown + " is not the address of a host";
  if (rc == OPEN_E_NOT_FOUND) return interface_name(model, interface) + " cannot have IP addresses";
  return shown + " overlaps with what " + interface_name(model, lease_overlap(model, interface, offer)) +
         " is offered";
}

bool offer_lease(std::string_view interface_name, std::string_view prefix, std::string *error) {
  locked_switch sw;
  uint32_t number = interface_by_name(*sw, interface_name);
  open_inet_pfx_t offer = {};
  if (number == 0) {
    *error = no_interface(interface_name);
    return false;
  }
  if (!inet_prefix_read(std::string(prefix), &offer)) {
    *error = "\"" + std::string(prefix) + "\" is not an address with a prefix length";
    return false;
  }
  open_error_t rc = lease_offer(*sw, number, offer);
  if (rc != OPEN_E_NONE) *error = lease_refusal(*sw, rc, number, offer);
  return rc == OPEN_E_NONE;
}

bool withdraw_lease(std::string_view interface_name, std::string *error) {
  locked_switch sw;
  uint32_t number = interface_by_name(*sw, interface_name);
  if (number == 0) {
    *error = no_interface(interface_name);
    return false;
  }
  lease_withdraw(*sw, number);
  return true;
}

std::string lease_list() {
  locked_switch sw;
  std::string text;
  for (const auto &[number, offered] : sw->leases->by_interface) {
    for (const open_inet_pfx_t &offer : {offered.ipv4, offered.ipv6}) {
      if (offer.ipAddr.family != OPEN_AF_NONE)
        text += interface_name(*sw, number) + " " + inet_prefix_text(offer) + "\n";
    }
  }
  return text;
}

void set_ready(bool ready) {
  locked_switch sw;
  sw->ready = ready;
}

bool set_ssh_sessions(uint32_t sessions) {
  if (sessions > ssh_sessions_max) return false;
  locked_switch sw;
  sw->ssh_sessions = sessions;
  return true;
}

bool set_limit(std::string_view name, uint32_t value) {
  locked_switch sw;
  return limit_override(&sw->limits, name, value);
}

} // namespace softswitch
