/* A disk that is full, as far as the files of this process go. */
#ifndef KESTREL_TESTS_FULL_DISK_H
#define KESTREL_TESTS_FULL_DISK_H

#include <signal.h>
#include <sys/resource.h>

/* No file of this process can grow beyond a size while this lives. */
class full_disk {
public:
  explicit full_disk(rlim_t size) {
    getrlimit(RLIMIT_FSIZE, &before);
    before_handler = signal(SIGXFSZ, SIG_IGN);
    rlimit limited = {size, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limited);
  }
  ~full_disk() {
    setrlimit(RLIMIT_FSIZE, &before);
    signal(SIGXFSZ, before_handler);
  }
  full_disk(const full_disk &) = delete;
  full_disk &operator=(const full_disk &) = delete;

private:
  rlimit before;
  void (*before_handler)(int);
};

#endif
