/* Shifts the clock of a program under test: preloaded into it, time() answers the real time plus the seconds
 * that stand as text in the file KESTREL_TEST_CLOCK. Writing that file lets sessions and idle connections
 * grow old without waiting for them (test_clock.py). */
#define _GNU_SOURCE
#include <stdlib.h>
#include <fcntl.h>
#include <time.h>
#include <unistd.h>

static time_t shift(void) {
  const char *path = getenv("KESTREL_TEST_CLOCK");
  char text[32] = "";
  int fd = path == NULL ? -1 : open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return 0;
  ssize_t length = read(fd, text, sizeof text - 1);
  close(fd);
  return length > 0 ? atol(text) : 0;
}

time_t time(time_t *out) {
  struct timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  time_t shifted = now.tv_sec + shift();
  if (out != NULL) *out = shifted;
  return shifted;
}
