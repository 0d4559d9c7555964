/* Memory that runs out: see little_memory.h. */
#include "tests/unit/modules/little_memory.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#if defined(__SANITIZE_ADDRESS__)
#define KESTREL_TESTS_WITH_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KESTREL_TESTS_WITH_ASAN 1
#endif
#endif

#ifdef KESTREL_TESTS_WITH_ASAN

/* AddressSanitizer needs the address space for itself; it has a limit of its own. */
extern "C" const char *__asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=3000";
}

little_memory::little_memory() {}
little_memory::~little_memory() {}

#else

static void set_soft_limit(rlim_t bytes) {
  rlimit limit;
  ASSERT_EQ(getrlimit(RLIMIT_AS, &limit), 0);
  limit.rlim_cur = bytes < limit.rlim_max ? bytes : limit.rlim_max;
  ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
}

little_memory::little_memory() {
  set_soft_limit(rlim_t{3} << 30);
}
little_memory::~little_memory() {
  set_soft_limit(RLIM_INFINITY);
}

#endif
