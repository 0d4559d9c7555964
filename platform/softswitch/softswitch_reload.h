/* Reloading: the thread that carries out what request_reload() of softswitch.h orders, and the factory reset
 * that a crash cannot cut in two. */
#ifndef KESTREL_SOFTSWITCH_RELOAD_H
#define KESTREL_SOFTSWITCH_RELOAD_H

#include "platform/softswitch/softswitch_state.h"

namespace softswitch {

/* Starts and ends the thread. A reload that waits when the thread ends is not carried out; one that has begun
 * is. False when the system gives no thread. Without the lock. */
bool reload_start(running_switch *sw);
void reload_stop(running_switch *sw);

/* Before the configuration is read: completes a factory reset that a crash has cut short. False with the
 * reason. */
bool finish_factory_reset(const std::string &state_dir, std::string *error);

} // namespace softswitch

#endif
