/* Threads of the switch's own services. */
#ifndef KESTREL_SOFTSWITCH_SERVICE_THREAD_H
#define KESTREL_SOFTSWITCH_SERVICE_THREAD_H

#include <pthread.h>

namespace softswitch {

/* Starts a thread with all signals blocked save those of a crash, so that the program's own signals reach the
 * program's own threads. `name` is 15 characters at most. False when the system gives no thread. */
bool service_thread_start(pthread_t *thread, const char *name, void *(*run)(void *), void *argument);

} // namespace softswitch

#endif
