/* Platform functions of which a test may bend the outputs to what the software switch never answers. These
 * programs bring functions of those names of their own, which go on to the library's. */
#ifndef KESTREL_TESTS_MODULES_BENT_PLATFORM_H
#define KESTREL_TESTS_MODULES_BENT_PLATFORM_H

#include "tests/unit/modules/little_memory.h"

#include <stdint.h>
#include <string>

/* While it lives, a number that a platform function puts out is `value`: which one say the lists in
 * bent_platform.cpp, bent_acl.cpp, bent_routing.cpp and recorded_bgp.cpp. Of a function that reads a text,
 * `value` is a character with which the whole buffer is filled, without a terminator. Reports a failure when
 * the function was never called. */
class bent_output {
public:
  bent_output(const char *function, uint32_t value);
  ~bent_output();
  bent_output(const bent_output &) = delete;
  bent_output &operator=(const bent_output &) = delete;

private:
  std::string function_;
};

#endif
