/* The software switch as one object: starting it, the lock around its model, and what lab control and the
 * configuration files do to it as a whole. The C interface in api/ is a thin shell over the model; everything
 * else of the switch reaches the model through here.
 *
 * There is one switch per process. The functions take its lock themselves unless they say otherwise. */
#ifndef KESTREL_SOFTSWITCH_SOFTSWITCH_H
#define KESTREL_SOFTSWITCH_SOFTSWITCH_H

#include "platform/api/openapi_system.h"
#include "platform/softswitch/config/placeholders.h"
#include "platform/softswitch/model/switch.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace softswitch {

/* Brings the switch up: reads settings, profile, accounts and configuration, takes the state directory,
 * starts the threads. Calling it again does nothing. On failure says why in `error` and leaves nothing
 * running. */
bool start(std::string *error);
/* Ends the threads, closes the state directory and forgets the model, so that start() begins anew from the
 * files. What a restart of the process does, for tests. */
void stop();
/* Whether it is up. */
bool is_running();
/* The path of the directory that its files are in. */
std::string state_directory();

/* Holds the lock for its lifetime and gives access to the model. */
class locked_switch {
public:
  locked_switch();
  ~locked_switch();
  locked_switch(const locked_switch &) = delete;
  locked_switch &operator=(const locked_switch &) = delete;
  switch_model *operator->() const;
  switch_model &operator*() const;
};

/* Applies one line of the configuration language as a change: checks it, appends it to the journal and takes
 * it over. What every setter of the C interface comes down to. The caller holds the lock.
 * Results are those of the setting's own rules; OPEN_E_FAIL when it cannot be stored (nothing changed). */
open_error_t commit_line(switch_model &, std::string_view line);
/* The same with the line given as a pattern of the command table and its arguments (config/language.h), which
 * must be printable: interfaces among them exist. */
open_error_t commit(switch_model &, std::string_view pattern, const std::vector<argument> &arguments);

/* --- Configuration as a whole --------------------------------------------------------------------------- */

/* The running configuration in the configuration language. */
std::string running_config();
/* Applies a whole text (a script) as one change: every line is checked before anything is taken over, while
 * the switch goes on. False with the reason, which begins with "line N: "; nothing has then been changed. */
bool apply_configuration(std::string_view text, std::string *error);
/* Replaces the startup configuration by the running one; false with the reason when it cannot be written. */
bool save_startup_config(std::string *error);
/* The same by any text, which nobody looks at before the next reload. */
bool replace_startup_config(std::string_view text, std::string *error);
/* Whether the running configuration is not what the startup configuration (factory state when there is none)
 * gives. */
bool configuration_unsaved();

/* Lets the switch begin anew as a mode of platform/api/openapi_system.h says (OPEN_RELOAD*). What is no
 * configuration (cables, counters, leases, ...) stays, save what goes with its interface. False with the
 * reason; the switch then goes on as it was. It waits until all is done. */
bool reload(std::string *error, uint32_t mode = OPEN_RELOAD);
/* Orders a reload and returns at once. The switch is not ready until it is over, which begins after
 * limits.reload_milliseconds; a request that comes before takes the place of the one that waits, one that
 * comes later is carried out after it. What comes of it is logged. False for what is no mode. */
bool request_reload(uint32_t mode);

/* --- Lab control ---------------------------------------------------------------------------------------- */

/* Holds back or releases the data plane's taking over of changes. */
void hold_apply(bool hold);
/* Waits until no change is pending. False when `milliseconds` pass before (or changes are held). */
bool wait_applied(int milliseconds);
/* Pulls the cable out of a port or plugs it in. False when there is no such port. */
bool set_cabled(std::string_view interface_name, bool cabled);
/* Takes the far end of a port's cable up or down. False when there is no such port. */
bool set_far_end(std::string_view interface_name, bool up);
/* Changes a counter by one of the functions of model/counters.h. `counter` is an id or a name. False with the
 * reason when there is no such interface or counter. */
using counter_change = open_error_t (*)(switch_model &, uint32_t interface, uint32_t id, uint64_t amount,
                                        int64_t now);
bool change_counter(std::string_view interface_name, std::string_view counter, counter_change change,
                    uint64_t amount, std::string *error);
/* Reads all counters that an interface has, by id. False with the reason when there is no such interface. */
bool read_counters(std::string_view interface_name, std::map<uint32_t, counter> *counters,
                   std::string *error);
/* Defines a time range with its state (OPEN_ACL_RULE_STATUS_t), or makes it undefined. False for what is no
 * name of one. */
bool set_time_range(std::string_view name, uint32_t state);
/* The time ranges that are defined, with their states. */
std::map<std::string, uint32_t, std::less<>> time_ranges();
/* Offers an address to an interface that obtains its own, or withdraws what is offered to it. False with the
 * reason when that cannot be. */
bool offer_lease(std::string_view interface_name, std::string_view prefix, std::string *error);
bool withdraw_lease(std::string_view interface_name, std::string *error);
/* One line per offer: interface and prefix. */
std::string lease_list();
/* What openapiSystemReadyStateGet answers, until the end of the next reload. */
void set_ready(bool ready);
/* Says how many SSH sessions are open. False for more than there can be. */
bool set_ssh_sessions(uint32_t sessions);
/* Overrides a limit by name (see model/limits.h). False for an unknown name or a value above the built-in. */
bool set_limit(std::string_view name, uint32_t value);

} // namespace softswitch

#endif
