/* Threads of the switch's own services; see service_thread.h. */
#include "platform/softswitch/services/service_thread.h"

#include <signal.h>

namespace softswitch {

bool service_thread_start(pthread_t *thread, const char *name, void *(*run)(void *), void *argument) {
  static const int crash_signals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};
  sigset_t blocked, before;
  sigfillset(&blocked);
  for (int crash : crash_signals) sigdelset(&blocked, crash);
  /* A thread inherits the mask of its maker, so it never runs unmasked. */
  pthread_sigmask(SIG_SETMASK, &blocked, &before);
  bool started = pthread_create(thread, nullptr, run, argument) == 0;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  if (started) pthread_setname_np(*thread, name);
  return started;
}

} // namespace softswitch
