/* The clock for how long something takes. */
#ifndef KESTREL_SOFTSWITCH_CLOCK_H
#define KESTREL_SOFTSWITCH_CLOCK_H

#include <stdint.h>
#include <time.h>

namespace softswitch {

/* Milliseconds since some moment; they never run backwards. */
inline int64_t monotonic_ms() {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

} // namespace softswitch

#endif
