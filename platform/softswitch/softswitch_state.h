/* What the running switch consists of, for the few files that keep it running: softswitch.cpp and the apply
 * thread. Everybody else uses softswitch.h. */
#ifndef KESTREL_SOFTSWITCH_STATE_H
#define KESTREL_SOFTSWITCH_STATE_H

#include "platform/softswitch/config/journal.h"
#include "platform/softswitch/model/switch.h"
#include "platform/softswitch/services/settings.h"

#include <condition_variable>
#include <mutex>
#include <pthread.h>

namespace softswitch {

/* `lock` guards everything below it except the settings, which do not change while the switch runs. */
struct running_switch {
  struct settings settings;
  std::shared_ptr<file_guard> dir_lock; /* what keeps other processes out of the state directory */
  pthread_t apply_thread;

  std::mutex lock;
  std::condition_variable wake; /* for the apply thread: a change, release of held changes, the end */
  std::condition_variable idle; /* changes were taken, or a compaction ended */
  bool running = false;
  bool stopping = false;   /* the apply thread shall end */
  bool held = false;       /* changes are held back from the data plane */
  bool compacting = false; /* a snapshot is being written without the lock */
  switch_model model;
  shared_table<logging_table> logging; /* what the log service has been told of it */
  struct journal journal;
};

} // namespace softswitch

#endif
