/* What the running switch consists of, for the few files that keep it running: softswitch.cpp,
 * softswitch_configuration.cpp, softswitch_reload.cpp and the apply thread. Everybody else uses softswitch.h.
 */
#ifndef KESTREL_SOFTSWITCH_STATE_H
#define KESTREL_SOFTSWITCH_STATE_H

#include "platform/softswitch/config/journal.h"
#include "platform/softswitch/model/switch.h"
#include "platform/softswitch/services/settings.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <pthread.h>

namespace softswitch {

/* What the startup configuration was last compared with, and the outcome. */
struct comparison {
  bool known = false;
  uint64_t change = 0; /* of the model */
  struct limits limits;
  file_stamp startup;           /* of the startup configuration */
  bool startup_printed = false; /* that is word for word what the switch that it gives prints */
  bool unsaved = false;
};

/* `lock` guards everything below it except the settings, which do not change while the switch runs. */
struct running_switch {
  struct settings settings;
  std::shared_ptr<file_guard> dir_lock; /* what keeps other processes out of the state directory */
  pthread_t apply_thread, reload_thread;

  std::mutex lock;
  std::condition_variable wake;        /* for the apply thread: a change, release of held changes, the end */
  std::condition_variable idle;        /* changes were taken, or a compaction ended */
  std::condition_variable reload_wake; /* for the reload thread: a request, or the end */
  bool running = false;
  bool stopping = false;       /* the apply thread shall end */
  bool held = false;           /* changes are held back from the data plane */
  bool compacting = false;     /* a snapshot is being written without the lock; one at a time */
  bool reload_ending = false;  /* the reload thread shall end */
  uint32_t reload_request = 0; /* OPEN_RELOAD*: what is to be done; 0: nothing */
  switch_model model;
  shared_table<logging_table> logging; /* what the log service has been told of it */
  shared_table<system_table> system;   /* likewise, for the host name */
  struct journal journal;
  comparison compared;
};

/* The one switch. */
running_switch &the_switch();

/* Makes a changed copy of the model the model. Under the lock. */
void take_over(running_switch &sw, const switch_model &changed);

/* Tries a change on a copy of the model and makes that the configuration, as a generation of its own: all of
 * it or nothing survives a crash. `lock` is held, and given up for as long as the change and the printing
 * last; when the model has become another one meanwhile, the change is tried anew. False with the reason;
 * nothing has then been changed. */
using configuration_change = std::function<bool(switch_model &, std::string *error)>;
bool change_configuration(running_switch &sw, std::unique_lock<std::mutex> &lock,
                          const configuration_change &change, std::string *error);

} // namespace softswitch

#endif
